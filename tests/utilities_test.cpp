// The utilities: directory listings into plugin buffers, the data-file
// checks, the versions of the host and the library, and the UTF-8 and UTF-16
// helpers on the cases that decide each encoding length.
#include "harness/harness.h"

#include <cstring>
#include <tuple>

#include "utilities/UTL_unicode.h"

using namespace toka_test;

namespace {

class Files : public TokaTest {};

TEST_F(Files, ListingsFillTheBufferAndIndexArrayAndNeedRoomForTheirEnds) {
  for (const char* name : {"a", "bb", "ccc"}) tree.AddFile(std::string("listing/") + name);
  const std::string folder = tree.root() + "listing";
  const Lines order = TempTree::Listing(folder);  // the file system's order

  // A buffer and an index array larger than the sizes passed, so that
  // writes beyond the sizes show up as changed sentinels.
  char buffer[64], sentinel = 0;
  char* indices[8];
  struct Case {
    int first, bufferSize, indexCount, result, returned;
  } cases[] = {
      {0, 10, 4, 1, 3},  // room to spare: a terminator and a null entry
      {0, 9, 4, 0, 3},   // every name, but no room for the terminator
      {0, 10, 3, 0, 3},  // no room for the null entry
      {0, 64, 2, 0, 2},  // the array stops the listing
      {1, 64, 8, 1, 2},  // skipped names still count in the total
      {5, 1, 1, 1, 0},
  };
  for (const Case& c : cases) {
    std::memset(buffer, 'Z', sizeof buffer);
    for (char*& entry : indices) entry = &sentinel;
    int total = -7, returned = -7;
    EXPECT_EQ(c.result, TOKAGetDirectoryContents(folder.c_str(), c.first, buffer, c.bufferSize,
                                                 indices, c.indexCount, &total, &returned))
        << c.first << "/" << c.bufferSize << "/" << c.indexCount;
    EXPECT_EQ(3, total);
    ASSERT_EQ(c.returned, returned);
    std::string packed;
    for (int i = 0; i < c.returned; ++i) {
      EXPECT_EQ(buffer + packed.size(), indices[i]);
      packed += order[c.first + i] + '\0';
    }
    EXPECT_EQ(packed, std::string(buffer, packed.size()));
    EXPECT_EQ(c.result ? 0 : 'Z', buffer[packed.size()]);
    EXPECT_EQ(c.result ? nullptr : &sentinel, indices[c.returned]);
    EXPECT_EQ(&sentinel, indices[c.returned + 1]);
  }
}

TEST_F(Files, BadDataFileArgumentsAreReportedAndNeverReachTheHost) {
  StartTwo();
  RecordErrorsOf(1);
  std::vector<int> results;
  RunAs(1, [&] {
    results = {TOKASaveDataFile(1, nullptr), TOKASaveDataFile(3, "a.sit"),
               TOKALoadDataFile(0, "a.sit"), TOKALoadDataFile(3, "a.sit")};
  });
  EXPECT_EQ(std::vector<int>(4, 0), results);
  EXPECT_EQ((Lines{"error(Null file path passed to TOKASaveDataFile.)@1",
                   "error(Illegal file type passed to TOKASaveDataFile.)@1",
                   "error(Illegal file type passed to TOKALoadDataFile.)@1",
                   "error(Illegal file type passed to TOKALoadDataFile.)@1"}),
            Events());
  EXPECT_EQ(0u, host.CountCalls(68) + host.CountCalls(69));
}

class SystemServices : public TokaTest {};

TEST_F(SystemServices, VersionsPlaceTheHostsNumbersAroundTheLibrarysOwn) {
  Initialize();
  host.onCall[27] = [](const HostCall& call) -> intptr_t {
    *call.arg<int*>(0) = 11020;
    *call.arg<int*>(1) = 105;
    return 0;
  };
  int host1 = 0, toka = 0, host2 = 0;
  TOKAGetVersions(&host1, &toka, &host2);
  EXPECT_EQ((std::vector<int>{11020, 210, 105}), (std::vector<int>{host1, toka, host2}));
  TOKAGetVersions(nullptr, nullptr, nullptr);  // every output is optional
}

using Units = std::vector<int>;

TEST(Unicode, EncodersWriteEachLengthUpToItsBoundaryAndDecodeBack) {
  // Code point, its UTF-8 bytes, its UTF-16 units.
  const std::vector<std::tuple<UTF32, Units, Units>> cases = {
      {0x7F, {0x7F}, {0x7F}},
      {0x80, {0xC2, 0x80}, {0x80}},
      {0x7FF, {0xDF, 0xBF}, {0x7FF}},
      {0x800, {0xE0, 0xA0, 0x80}, {0x800}},
      {0xFFFF, {0xEF, 0xBF, 0xBF}, {0xFFFF}},
      {0x10000, {0xF0, 0x90, 0x80, 0x80}, {0xD800, 0xDC00}},
      {0x10FFFF, {0xF4, 0x8F, 0xBF, 0xBF}, {0xDBFF, 0xDFFF}},
  };
  for (const auto& [c, bytes, units] : cases) {
    UTF8 out8[5] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    UTF16 out16[3] = {0xEEEE, 0xEEEE, 0xEEEE};
    EXPECT_EQ(bytes, Units(out8, out8 + UTF8_encode(c, out8))) << std::hex << c;
    EXPECT_EQ(0xEE, out8[bytes.size()]) << std::hex << c;
    EXPECT_EQ(units, Units(out16, out16 + UTF16_encode(c, out16))) << std::hex << c;
    EXPECT_EQ(c, UTF8_decode(out8)) << std::hex << c;
  }
}

}  // namespace
