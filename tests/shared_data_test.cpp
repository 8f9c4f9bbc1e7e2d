// Shared data: items stored by the library, read and written through
// datarefs, with change notification for every subscriber.
#include "harness/harness.h"

using namespace toka_test;

namespace {

void Changed(void* refcon) { Log("changed(" + std::to_string((intptr_t)refcon) + ")"); }
void* R(int n) { return (void*)(intptr_t)n; }

class SharedData : public TokaTest {
protected:
  const int a = 1, b = 2;
  void SetUp() override { StartTwo(); }
  int Share(int plugin, const char* name, int type, TOKADataChanged_f callback, void* refcon) {
    return As(plugin, [=] { return TOKAShareData(name, type, callback, refcon); });
  }
};

TEST_F(SharedData, FirstShareSetsTheTypeAndEveryWriteNotifiesEverySubscriberAsItself) {
  EXPECT_EQ(1, Share(a, "shared/n", DataTypeInt, Changed, R(1)));
  EXPECT_EQ(0, Share(b, "shared/n", DataTypeFloat, Changed, R(9)));  // type clash
  EXPECT_EQ(1, Share(b, "shared/n", DataTypeInt, Changed, R(2)));
  EXPECT_EQ(1, Share(a, "shared/n", DataTypeInt, Changed, R(3)));
  TOKADataRef ref = TOKAFindDataRef("shared/n");
  EXPECT_EQ(DataTypeInt, TOKAGetDataRefTypes(ref));
  const Lines all = {"changed(1)@1", "changed(2)@2", "changed(3)@1"};
  EXPECT_EQ(all, During([&] {
              RunAs(b, [&] {
                TOKASetDatai(ref, 5);
                EXPECT_EQ(b, TOKAGetMyID());
              });
            }));
  EXPECT_EQ(5, TOKAGetDatai(ref));
  EXPECT_EQ(0.0f, TOKAGetDataf(ref));  // no other accessor is served

  EXPECT_EQ(1, As(a, [&] { return TOKAUnshareData("shared/n", DataTypeInt, Changed, R(1)); }));
  EXPECT_EQ(0, As(b, [&] { return TOKAUnshareData("shared/n", DataTypeInt, Changed, R(3)); }));
  EXPECT_EQ((Lines{"changed(2)@2", "changed(3)@1"}), During([&] { TOKASetDatai(ref, 6); }));
}

// The first notification writes the item again and subscribes beta a
// second time, which may move the subscriber array under the walk.
int gRewrites = 0;
void WriteAgain(void*) {
  Log("rewrite");
  if (gRewrites++) return;
  RunAs(2, [] { TOKAShareData("shared/r", DataTypeInt, Changed, R(3)); });
  TOKASetDatai(TOKAFindDataRef("shared/r"), 2);
}

TEST_F(SharedData, ANotificationThatWritesAgainNotifiesEveryoneWithinIt) {
  Share(a, "shared/r", DataTypeInt, WriteAgain, nullptr);
  Share(b, "shared/r", DataTypeInt, Changed, R(2));
  TOKADataRef ref = TOKAFindDataRef("shared/r");
  // The nested write is heard by all three first; the outer walk then goes
  // on to the subscriber added during it.
  EXPECT_EQ((Lines{"rewrite@1", "rewrite@1", "changed(2)@2", "changed(3)@2", "changed(2)@2",
                   "changed(3)@2"}),
            During([&] { RunAs(a, [&] { TOKASetDatai(ref, 1); }); }));
  EXPECT_EQ(2, TOKAGetDatai(ref));
}

TEST_F(SharedData, ArraysAndBytesGrowOnWriteAndReadsStayWithinThem) {
  Share(a, "shared/vi", DataTypeIntArray, nullptr, nullptr);
  Share(a, "shared/b", DataTypeData, nullptr, nullptr);
  TOKADataRef vi = TOKAFindDataRef("shared/vi"), bytes = TOKAFindDataRef("shared/b");
  EXPECT_EQ(1, TOKAGetDatavi(vi, nullptr, 0, 0));

  int four[4] = {1, 2, 3, 4}, out[6] = {0, 0, 0, 0, 0, 0}, seven = 7;
  TOKASetDatavi(vi, four, 0, 4);
  EXPECT_EQ(2, TOKAGetDatavi(vi, out, 2, 5));
  EXPECT_EQ((std::vector<int>{3, 4, 0}), std::vector<int>(out, out + 3));
  // An offset past the end copies nothing and says by how much it missed.
  out[0] = -9;
  EXPECT_EQ(-2, TOKAGetDatavi(vi, out, 6, 5));
  EXPECT_EQ(0, TOKAGetDatavi(vi, out, -1, 2));  // nor does one before the start
  EXPECT_EQ(-9, out[0]);
  TOKASetDatavi(vi, &seven, 0, 1);  // never shrinks
  EXPECT_EQ(4, TOKAGetDatavi(vi, out, 0, 6));
  EXPECT_EQ((std::vector<int>{7, 2, 3, 4}), std::vector<int>(out, out + 4));

  char hello[] = "hello", jay[] = "J", text[16] = {0};
  TOKASetDatab(bytes, hello, 0, 6);
  TOKASetDatab(bytes, jay, 0, 1);
  EXPECT_EQ(6, TOKAGetDatab(bytes, text, 0, sizeof text));
  EXPECT_STREQ("Jello", text);
  EXPECT_EQ(3, TOKAGetDatab(bytes, text, 3, sizeof text));
  EXPECT_STREQ("lo", text);
}

}  // namespace
