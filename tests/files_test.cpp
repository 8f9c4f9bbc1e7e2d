// Directory listings into plugin buffers, path splitting, the host's folders
// and the data-file checks.
#include "harness/harness.h"

#include <cstring>

using namespace toka_test;

namespace {

class Files : public TokaTest {};

TEST_F(Files, ListingsFillTheBufferAndIndexArrayAndNeedRoomForTheirEnds) {
  for (const char* name : {"a", "bb", "ccc"}) tree.AddFile(std::string("listing/") + name);
  const std::string folder = tree.root() + "listing";
  const Lines order = TempTree::Listing(folder);  // the file system's order
  ASSERT_EQ(3u, order.size());
  const int firstFits = (int)order[0].size() + 1;

  // A buffer and an index array larger than the sizes passed, so that
  // writes beyond the sizes show up as changed sentinels.
  char buffer[64], sentinel = 0;
  char* indices[8];
  struct Case {
    int first, bufferSize, indexCount;
    bool withIndices;
    int result, returned;
  } cases[] = {
      {0, 10, 4, true, 1, 3},         // room to spare: a terminator and a null entry
      {0, 10, 0, false, 1, 3},        // without an index array only the buffer counts
      {0, 9, 4, true, 0, 3},          // every name, but no room for the terminator
      {0, 10, 3, true, 0, 3},         // no room for the null entry
      {0, 9, 0, false, 0, 3},
      {0, 64, 2, true, 0, 2},         // the array stops the listing
      {0, firstFits, 8, true, 0, 1},  // the buffer stops it
      {1, 64, 8, true, 1, 2},         // skipped names still count in the total
      {3, 1, 1, true, 1, 0},
      {5, 1, 1, true, 1, 0},
      {-1, 1, 1, true, 1, 0},
      {3, 0, 1, true, 0, 0},          // not even room for the terminator
  };
  for (const Case& c : cases) {
    std::memset(buffer, 'Z', sizeof buffer);
    for (char*& entry : indices) entry = &sentinel;
    int total = -7, returned = -7;
    EXPECT_EQ(c.result, TOKAGetDirectoryContents(folder.c_str(), c.first, buffer, c.bufferSize,
                                                 c.withIndices ? indices : nullptr, c.indexCount,
                                                 &total, &returned))
        << c.first << "/" << c.bufferSize << "/" << c.indexCount;
    EXPECT_EQ(3, total);
    ASSERT_EQ(c.returned, returned);
    std::string packed;
    for (int i = 0; i < c.returned; ++i) {
      EXPECT_EQ(c.withIndices ? buffer + packed.size() : &sentinel, indices[i]);
      packed += order[c.first + i] + '\0';
    }
    EXPECT_EQ(packed, std::string(buffer, packed.size()));
    EXPECT_EQ(c.result ? 0 : 'Z', buffer[packed.size()]);
    EXPECT_EQ('Z', buffer[packed.size() + 1]);
    EXPECT_EQ(c.result && c.withIndices ? nullptr : &sentinel, indices[c.returned]);
    EXPECT_EQ(&sentinel, indices[c.returned + 1]);
  }

  // A null buffer only counts; both counts are optional.
  int total = -7, returned = -7;
  EXPECT_EQ(0, TOKAGetDirectoryContents(folder.c_str(), 0, nullptr, 100, indices, 8, &total,
                                        &returned));
  EXPECT_EQ((std::vector<int>{3, 0}), (std::vector<int>{total, returned}));
  EXPECT_EQ(&sentinel, indices[0]);
  EXPECT_EQ(0, TOKAGetDirectoryContents(folder.c_str(), 3, nullptr, 100, nullptr, 0, nullptr,
                                        nullptr));
  EXPECT_EQ(1, TOKAGetDirectoryContents(folder.c_str(), 0, buffer, 64, nullptr, 0, nullptr,
                                        nullptr));
}

TEST(PathSplitting, LastSeparatorSplitsFolderFromFileName) {
  struct Case {
    const char* path;
    const char* folder;  // what the buffer holds afterwards
    int fileOffset;      // where the result points
  } cases[] = {
      {"dir/sub/file", "dir/sub", 8}, {"dir/sub/", "dir", 4},  // a trailing separator goes first
      {"/file", "", 1},               {"file.txt", "file.txt", 0},  // no separator: left whole
      {"a/", "a", 0},                 {"/", "", 0},
  };
  EXPECT_STREQ("/", TOKAGetDirectorySeparator());
  for (const Case& c : cases) {
    char path[64];
    std::strcpy(path, c.path);
    char* file = TOKAExtractFileAndPath(path);
    EXPECT_STREQ(c.folder, path) << c.path;
    EXPECT_EQ(path + c.fileOffset, file) << c.path;
  }
}

TEST_F(Files, ConvertedPathsAreCutToTheirBufferUnlessThePluginWantsNativePaths) {
  StartTwo();
  std::string hostPath;
  for (int slot : {25, 26})
    host.onCall[slot] = [&hostPath](const HostCall& call) -> intptr_t {
      std::strcpy(call.arg<char*>(0), hostPath.c_str());
      return 0;
    };
  for (auto service : {TOKAGetSystemPath, TOKAGetPrefsPath}) {
    char path[1024];
    for (size_t length : {511u, 512u, 700u}) {
      hostPath = std::string(length - 1, 'p') + "/";
      service(path);
      EXPECT_EQ(hostPath.substr(0, 511), path) << length;
    }
    RunAs(1, [&] {
      TOKAEnableFeature("TOKA_USE_NATIVE_PATHS", 1);
      service(path);
      TOKAEnableFeature("TOKA_USE_NATIVE_PATHS", 0);
    });
    EXPECT_EQ(hostPath, path);
  }
}

TEST_F(Files, BadDataFileArgumentsAreReportedAndNeverReachTheHost) {
  StartTwo();
  RecordErrorsOf(1);
  std::vector<int> results;
  RunAs(1, [&] {
    results = {TOKASaveDataFile(1, nullptr), TOKASaveDataFile(3, nullptr),
               TOKASaveDataFile(0, "a.sit"),  TOKASaveDataFile(3, "a.sit"),
               TOKALoadDataFile(0, "a.sit"),  TOKALoadDataFile(3, "a.sit"),
               TOKALoadDataFile(-1, nullptr)};
  });
  EXPECT_EQ(std::vector<int>(7, 0), results);
  const std::string save = "error(Null file path passed to TOKASaveDataFile.)@1",
                    type = "error(Illegal file type passed to TOKASaveDataFile.)@1",
                    load = "error(Illegal file type passed to TOKALoadDataFile.)@1";
  EXPECT_EQ((Lines{save, save, type, type, load, load, load}), Events());
  EXPECT_EQ(0u, host.CountCalls(68) + host.CountCalls(69));
}

}  // namespace
