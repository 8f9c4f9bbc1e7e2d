// The library exports exactly the names of its export list, with C linkage.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <set>
#include <string>

TEST(Exports, LibraryExportsExactlyTheListedNames) {
  std::set<std::string> listed, exported;
  std::ifstream in(TOKA_EXPORTS_LIST);
  for (std::string line; std::getline(in, line);)
    if (!line.empty() && line[0] != '#') {
      EXPECT_TRUE(listed.insert(line).second) << line << " is listed twice";
    }
  ASSERT_FALSE(listed.empty());

  FILE* pipe = popen((std::string("nm -D --defined-only ") + TOKA_LIBRARY_FILE).c_str(), "r");
  ASSERT_NE(nullptr, pipe);
  char address[64], type[8], name[512];
  while (std::fscanf(pipe, "%63s %7s %511s", address, type, name) == 3) exported.insert(name);
  pclose(pipe);
  // A name listed but not exported may have C++ linkage.
  EXPECT_EQ(listed, exported);
}
