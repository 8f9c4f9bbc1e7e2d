// The library exports exactly the names of its export list, with C linkage.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

static std::set<std::string> ListedNames(std::vector<std::string>& duplicates) {
  std::set<std::string> names;
  std::ifstream in(TOKA_EXPORTS_LIST);
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    if (!names.insert(line).second) duplicates.push_back(line);
  }
  return names;
}

static std::set<std::string> ExportedNames() {
  std::set<std::string> names;
  std::string command = std::string("nm -D --defined-only ") + TOKA_LIBRARY_FILE;
  FILE* pipe = popen(command.c_str(), "r");
  char line[1024];
  while (pipe && std::fgets(line, sizeof line, pipe)) {
    std::istringstream fields(line);
    std::string address, type, name;
    fields >> address >> type >> name;
    if (!name.empty()) names.insert(name);
  }
  if (pipe) pclose(pipe);
  return names;
}

TEST(Exports, LibraryExportsExactlyTheListedNames) {
  std::vector<std::string> duplicates;
  std::set<std::string> listed = ListedNames(duplicates);
  EXPECT_TRUE(duplicates.empty()) << "listed twice: " << duplicates.front();
  ASSERT_FALSE(listed.empty());

  std::set<std::string> exported = ExportedNames();
  for (const std::string& name : listed)
    EXPECT_TRUE(exported.count(name)) << name << " is listed but not exported (missing, or C++ linkage)";
  for (const std::string& name : exported)
    EXPECT_TRUE(listed.count(name)) << name << " is exported but not listed";
}
