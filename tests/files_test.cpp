// Directory listings into plugin buffers, path splitting, the host's folders
// and the data-file checks.
#include "harness/harness.h"

#include <cstring>

using namespace toka_test;

namespace {

std::vector<std::string>& Errors() {
  static std::vector<std::string> errors;
  return errors;
}
void RecordError(const char* message) { Errors().push_back(message); }

// A folder with the files a, bb and ccc, listed into a buffer and an index
// array that are larger than the sizes passed, so that writes beyond the
// sizes show up as changed sentinels.
class DirectoryListing : public TokaTest {
protected:
  std::string folder;
  std::vector<std::string> order;  // a, bb, ccc in the file system's order
  char buffer[64];
  char* indices[8];
  char sentinel = 0;
  int total = -7, returned = -7;

  void SetUp() override {
    for (const char* name : {"a", "bb", "ccc"}) tree.AddFile(std::string("listing/") + name);
    folder = tree.root() + "listing";
    order = TempTree::Listing(folder);
    ASSERT_EQ(3u, order.size());
    Reset();
  }
  void Reset() {
    std::memset(buffer, 'Z', sizeof buffer);
    for (char*& entry : indices) entry = &sentinel;
    total = returned = -7;
  }
  int List(int first, int bufferSize, int indexCount, bool withIndices = true) {
    Reset();
    return TOKAGetDirectoryContents(folder.c_str(), first, buffer, bufferSize,
                                    withIndices ? indices : nullptr, indexCount, &total, &returned);
  }
  // The names from `first` on as they must lie in the buffer, and where each
  // one starts.
  std::string Packed(size_t first, size_t count, std::vector<int>* offsets = nullptr) {
    std::string packed;
    for (size_t i = first; i < first + count; ++i) {
      if (offsets) offsets->push_back((int)packed.size());
      packed += order[i] + '\0';
    }
    return packed;
  }
  void ExpectCopied(size_t first, size_t count) {
    std::vector<int> offsets;
    std::string packed = Packed(first, count, &offsets);
    EXPECT_EQ(packed, std::string(buffer, packed.size()));
    for (size_t i = 0; i < count; ++i) EXPECT_EQ(buffer + offsets[i], indices[i]) << i;
  }
};

TEST_F(DirectoryListing, RoomToSpareGivesAllNamesAnExtraTerminatorAndANullEntry) {
  EXPECT_EQ(1, List(0, 10, 4));
  EXPECT_EQ(3, total);
  EXPECT_EQ(3, returned);
  ExpectCopied(0, 3);
  EXPECT_EQ(0, buffer[9]);
  EXPECT_EQ('Z', buffer[10]);
  EXPECT_EQ(nullptr, indices[3]);
  EXPECT_EQ(&sentinel, indices[4]);

  // Without an index array only the buffer counts.
  EXPECT_EQ(1, List(0, 10, 0, false));
  EXPECT_EQ(Packed(0, 3) + '\0', std::string(buffer, 10));
  EXPECT_EQ(3, returned);
}

TEST_F(DirectoryListing, FillingTheBufferOrTheArrayExactlyReportsIncomplete) {
  EXPECT_EQ(0, List(0, 9, 4));  // every name copied, no room for the terminator
  EXPECT_EQ(3, returned);
  ExpectCopied(0, 3);
  EXPECT_EQ('Z', buffer[9]);
  EXPECT_EQ(&sentinel, indices[3]);

  EXPECT_EQ(0, List(0, 10, 3));  // no room for the null entry
  EXPECT_EQ(3, returned);
  ExpectCopied(0, 3);
  EXPECT_EQ('Z', buffer[9]);
  EXPECT_EQ(&sentinel, indices[3]);

  EXPECT_EQ(0, List(0, 9, 0, false));
  EXPECT_EQ(3, returned);
  EXPECT_EQ('Z', buffer[9]);

  // Too small an array stops the listing at the first name without an entry.
  EXPECT_EQ(0, List(0, 64, 2));
  EXPECT_EQ(3, total);
  EXPECT_EQ(2, returned);
  ExpectCopied(0, 2);
  EXPECT_EQ('Z', buffer[Packed(0, 2).size()]);
  EXPECT_EQ(&sentinel, indices[2]);

  // A buffer that holds the first name exactly: the second no longer fits.
  EXPECT_EQ(0, List(0, (int)order[0].size() + 1, 8));
  EXPECT_EQ(1, returned);
  ExpectCopied(0, 1);
  EXPECT_EQ(&sentinel, indices[1]);
}

TEST_F(DirectoryListing, NullBufferOnlyCounts) {
  EXPECT_EQ(0, TOKAGetDirectoryContents(folder.c_str(), 0, nullptr, 100, indices, 8, &total,
                                        &returned));
  EXPECT_EQ(3, total);
  EXPECT_EQ(0, returned);
  EXPECT_EQ(&sentinel, indices[0]);
  // Nothing to return and still no buffer to put a terminator in.
  EXPECT_EQ(0, TOKAGetDirectoryContents(folder.c_str(), 3, nullptr, 100, nullptr, 0, &total,
                                        &returned));
  EXPECT_EQ(3, total);
  // Both counts are optional.
  EXPECT_EQ(1, TOKAGetDirectoryContents(folder.c_str(), 0, buffer, 64, nullptr, 0, nullptr,
                                        nullptr));
}

TEST_F(DirectoryListing, FirstIndexSkipsNamesButNotTheTotal) {
  EXPECT_EQ(1, List(1, 64, 8));
  EXPECT_EQ(3, total);
  EXPECT_EQ(2, returned);
  ExpectCopied(1, 2);
  EXPECT_EQ(nullptr, indices[2]);

  for (int first : {3, 5, -1}) {
    EXPECT_EQ(1, List(first, 1, 1)) << first;
    EXPECT_EQ(3, total);
    EXPECT_EQ(0, returned);
    EXPECT_EQ(0, buffer[0]);
    EXPECT_EQ('Z', buffer[1]);
    EXPECT_EQ(nullptr, indices[0]);
  }
  EXPECT_EQ(0, List(3, 0, 1));  // not even room for the terminator
  EXPECT_EQ('Z', buffer[0]);
}

TEST(PathSplitting, LastSeparatorSplitsFolderFromFileName) {
  struct Case {
    const char* path;
    const char* folder;    // what the buffer holds afterwards
    const char* file;      // what the result points at
    int fileOffset;
  } cases[] = {
      {"dir/sub/file", "dir/sub", "file", 8},
      {"dir/sub/", "dir", "sub", 4},       // a trailing separator goes first
      {"/file", "", "file", 1},
      {"file.txt", "file.txt", "file.txt", 0},  // no separator: left whole
      {"a/", "a", "a", 0},
      {"/", "", "", 0},
  };
  EXPECT_STREQ("/", TOKAGetDirectorySeparator());
  for (const Case& c : cases) {
    char path[64];
    std::strcpy(path, c.path);
    char* file = TOKAExtractFileAndPath(path);
    EXPECT_STREQ(c.folder, path) << c.path;
    EXPECT_STREQ(c.file, file) << c.path;
    EXPECT_EQ(path + c.fileOffset, file) << c.path;
  }
}

class HostPaths : public TokaTest {};

TEST_F(HostPaths, ConvertedPathsAreCutToTheirBufferUnlessThePluginWantsNativePaths) {
  AddScripted("native.orv", "native");
  Initialize();
  int plugin = TOKAFindPluginBySignature("test.native");
  std::string hostPath;
  for (int slot : {25, 26})
    host.onCall[slot] = [&hostPath](const HostCall& call) -> intptr_t {
      std::strcpy(call.arg<char*>(0), hostPath.c_str());
      return 0;
    };
  typedef void (*PathService)(char*);
  struct {
    PathService service;
    int slot;
  } services[] = {{TOKAGetSystemPath, 25}, {TOKAGetPrefsPath, 26}};

  for (const auto& s : services) {
    char path[1024];
    for (size_t length : {511u, 512u, 700u}) {
      hostPath = std::string(length - 1, 'p') + "/";
      host.ClearRecords();
      s.service(path);
      EXPECT_EQ(hostPath.substr(0, 511), path) << s.slot << " " << length;
      ASSERT_EQ(1u, host.calls.size());
      EXPECT_EQ(s.slot, host.calls[0].slot);
    }
    RunAs(plugin, [&] {
      TOKAEnableFeature("TOKA_USE_NATIVE_PATHS", 1);
      s.service(path);
    });
    EXPECT_EQ(hostPath, path) << s.slot;
  }
}

class DataFiles : public TokaTest {};

TEST_F(DataFiles, BadArgumentsAreReportedAndNeverReachTheHost) {
  AddScripted("files.orv", "files");
  Initialize();
  host.onCall[68] = [](const HostCall& call) -> intptr_t { return 680 + call.arg<int>(0); };
  host.onCall[69] = [](const HostCall& call) -> intptr_t { return 690 + call.arg<int>(0); };
  host.ClearRecords();
  std::vector<int> results;
  RunAs(TOKAFindPluginBySignature("test.files"), [&] {
    TOKASetErrorCallback(RecordError);
    results = {TOKASaveDataFile(1, nullptr), TOKASaveDataFile(3, nullptr),
               TOKASaveDataFile(0, "a.sit"),  TOKASaveDataFile(3, "a.sit"),
               TOKALoadDataFile(0, "a.sit"),  TOKALoadDataFile(3, "a.sit"),
               TOKALoadDataFile(-1, nullptr)};
  });
  EXPECT_EQ(std::vector<int>(7, 0), results);
  EXPECT_EQ((std::vector<std::string>{
                "Null file path passed to TOKASaveDataFile.",
                "Null file path passed to TOKASaveDataFile.",
                "Illegal file type passed to TOKASaveDataFile.",
                "Illegal file type passed to TOKASaveDataFile.",
                "Illegal file type passed to TOKALoadDataFile.",
                "Illegal file type passed to TOKALoadDataFile.",
                "Illegal file type passed to TOKALoadDataFile.",
            }),
            Errors());
  EXPECT_EQ(0u, host.CountCalls(68));
  EXPECT_EQ(0u, host.CountCalls(69));

  // Both types reach the host in both directions.
  Errors().clear();
  RunAs(TOKAFindPluginBySignature("test.files"), [&] {
    results = {TOKASaveDataFile(1, "a.sit"), TOKASaveDataFile(2, "b.sit"),
               TOKALoadDataFile(1, "c.sit"), TOKALoadDataFile(2, "d.sit")};
  });
  EXPECT_EQ((std::vector<int>{691, 692, 681, 682}), results);
  EXPECT_TRUE(Errors().empty());
}

}  // namespace
