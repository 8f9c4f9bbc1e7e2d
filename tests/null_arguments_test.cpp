// Names, paths, buffers and callbacks passed as null: a call that would
// publish or act on a name refuses with an error text, a look-up finds
// nothing, and no call reads or writes through the null.
#include "harness/harness.h"

#include "toka/TOKA.h"

using namespace toka_test;

namespace {

class NullArguments : public TokaTest {};

TEST_F(NullArguments, AreRefusedOrFindNothingAndNeverReachTheHost) {
  StartTwo();
  RecordErrorsOf(1);
  std::vector<long> results;
  RunAs(1, [&] {
    results = {
        (long)(TOKARegisterDataAccessor(nullptr, DataTypeInt, 1, nullptr, nullptr, nullptr,
                                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                        nullptr, nullptr, nullptr, nullptr, nullptr) != nullptr),
        TOKAShareData(nullptr, DataTypeInt, nullptr, nullptr),
        (long)(TOKACreateCommand(nullptr, "nothing") != nullptr),
        (long)(TOKAFindCommand(nullptr) != nullptr),
        TOKAFindPluginByPath(nullptr),
        TOKAFindPluginBySignature(nullptr),
        TOKAHasFeature(nullptr),
        TOKAIsFeatureEnabled(nullptr),
        (long)(TOKAExtractFileAndPath(nullptr) != nullptr),
    };
    TOKAEnableFeature(nullptr, 1);
    TOKASetUsersAircraft(nullptr);
    // No callback to call, no buffer to convert a path in.
    TOKAEnumerateFeatures(nullptr, nullptr);
    TOKAGetSystemPath(nullptr);
    TOKAGetPrefsPath(nullptr);
    TOKAGetNthAircraftModel(0, nullptr, nullptr);
  });
  EXPECT_EQ((std::vector<long>{0, 0, 0, 0, -1, -1, 0, 0, 0}), results);
  EXPECT_EQ((Lines{"error(Null dataref name passed to TOKARegisterDataAccessor.)@1",
                   "error(Null name passed to TOKAShareData.)@1",
                   "error(Null command name passed to TOKACreateCommand.)@1",
                   "error(Illegal feature name passed to TOKAEnableFeature)@1",
                   "error(Illegal feature name passed to TOKAEnableFeature)@1",
                   "error(Null aircraft path passed to TOKASetUsersAircraft.)@1"}),
            Events());
  // Neither the command services nor the aircraft loader were asked.
  EXPECT_EQ(0u, host.CountCalls(55) + host.CountCalls(17));

  // Unsharing a null name with shared data in place compares no name.
  EXPECT_EQ(1, As(2, [] { return TOKAShareData("test/shared", DataTypeInt, nullptr, nullptr); }));
  EXPECT_EQ(0, As(2, [] {
              return TOKAUnshareData(nullptr, DataTypeInt, [](void*) {}, nullptr);
            }));
}

TEST_F(NullArguments, ANullFolderListsNothingAndABadPluginIDGivesNothing) {
  StartTwo();
  char buffer[16] = "unchanged";
  char* indices[2] = {buffer, buffer};
  int total = -1, returned = -1;
  EXPECT_EQ(1, As(1, [&] {
              return TOKAGetDirectoryContents(nullptr, 0, buffer, sizeof buffer, indices, 2,
                                              &total, &returned);
            }));
  EXPECT_EQ(0, total);
  EXPECT_EQ(0, returned);
  EXPECT_EQ(nullptr, indices[0]);

  // Nor does an ID that names no plugin give anything.
  char info[256] = "unchanged";
  for (int id : {-1, 3}) {
    TOKAGetPluginInfo(id, info, info, info, info);
    EXPECT_STREQ("unchanged", info) << id;
  }
}

}  // namespace
