// Shared data: items stored by the library, read and written through
// datarefs, with change notification for every subscriber.
#include "harness/harness.h"

using namespace toka_test;

namespace {

void Changed(void* refcon) { Log("changed(" + std::to_string((intptr_t)refcon) + ")"); }
void* R(int n) { return (void*)(intptr_t)n; }

class SharedData : public TokaTest {
protected:
  const int a = 1, b = 2, c = 3;
  void SetUp() override {
    AddScriptedFolder("PluginAdmin", "alpha");
    AddScripted("b.orv", "beta");
    AddScriptedFolder("c", "gamma");
    Initialize();
    Events().clear();
  }
  // TOKAShareData or TOKAUnshareData as plugin.
  template <class F = decltype(TOKAShareData)>
  int Share(int plugin, const char* name, int type, TOKADataChanged_f callback, void* refcon,
            F* call = TOKAShareData) {
    return As(plugin, [=] { return call(name, type, callback, refcon); });
  }
};

TEST_F(SharedData, FirstShareCreatesASimulatorOwnedDatarefServingOnlyItsType) {
  EXPECT_EQ(1, Share(a, "shared/f", DataTypeFloat, Changed, R(1)));
  EXPECT_EQ(0, Share(b, "shared/f", DataTypeInt, Changed, R(2)));  // type clash
  EXPECT_EQ(1, Share(b, "shared/f", DataTypeFloat, nullptr, nullptr));
  TOKADataRef ref = TOKAFindDataRef("shared/f");
  ASSERT_NE(nullptr, ref);
  EXPECT_EQ((std::vector<int>{DataTypeFloat, 1}),
            (std::vector<int>{TOKAGetDataRefTypes(ref), TOKACanWriteDataRef(ref)}));

  RunAs(b, [&] { TOKASetDataf(ref, 2.5f); });
  EXPECT_EQ(2.5f, TOKAGetDataf(ref));
  // No other accessor is served, so nothing else reads or writes the item.
  TOKASetDatai(ref, 7);
  TOKASetDatad(ref, 7);
  EXPECT_EQ((std::vector<double>{0, 0, 2.5}),
            (std::vector<double>{(double)TOKAGetDatai(ref), TOKAGetDatad(ref), TOKAGetDataf(ref)}));
  // The item belongs to the simulator, not to the plugin that shared it.
  RecordErrorsOf(a);
  RunAs(a, [&] { TOKAUnregisterDataAccessor(ref); });
  EXPECT_EQ((Lines{"changed(1)@1",
                   "error(Dataref is not owned by you - you cannot unregsiter.)@1"}),
            Events());

  Share(c, "shared/d", DataTypeDouble, nullptr, nullptr);
  Share(c, "shared/i", DataTypeInt, nullptr, nullptr);
  TOKASetDatad(TOKAFindDataRef("shared/d"), 1e300);
  TOKASetDatai(TOKAFindDataRef("shared/i"), -123456);
  EXPECT_EQ(1e300, TOKAGetDatad(TOKAFindDataRef("shared/d")));
  EXPECT_EQ(-123456, TOKAGetDatai(TOKAFindDataRef("shared/i")));
}

TEST_F(SharedData, ArraysAndBytesGrowOnWriteAndNeverShrink) {
  Share(a, "shared/vf", DataTypeFloatArray, nullptr, nullptr);
  Share(a, "shared/vi", DataTypeIntArray, nullptr, nullptr);
  Share(a, "shared/b", DataTypeData, nullptr, nullptr);
  TOKADataRef vf = TOKAFindDataRef("shared/vf"), vi = TOKAFindDataRef("shared/vi"),
              bytes = TOKAFindDataRef("shared/b");
  EXPECT_EQ(1, TOKAGetDatavf(vf, nullptr, 0, 0));
  EXPECT_EQ(1, TOKAGetDatavi(vi, nullptr, 0, 0));
  EXPECT_EQ(1, TOKAGetDatab(bytes, nullptr, 0, 0));

  float nine = 9.0f, outf[3] = {-1, -1, -1};
  TOKASetDatavf(vf, &nine, 10, 1);
  EXPECT_EQ(11, TOKAGetDatavf(vf, nullptr, 0, 0));
  EXPECT_EQ(1, TOKAGetDatavf(vf, outf, 10, 3));
  EXPECT_EQ((std::vector<float>{9, -1}), std::vector<float>(outf, outf + 2));

  int four[4] = {1, 2, 3, 4}, out[6] = {0, 0, 0, 0, 0, 0}, seven = 7;
  TOKASetDatavi(vi, four, 0, 4);
  EXPECT_EQ(2, TOKAGetDatavi(vi, out, 2, 5));
  EXPECT_EQ((std::vector<int>{3, 4, 0}), std::vector<int>(out, out + 3));
  EXPECT_EQ(4, TOKAGetDatavi(vi, out, 0, 4));
  // An offset past the end copies nothing and says by how much it missed.
  out[0] = -9;
  EXPECT_EQ(-2, TOKAGetDatavi(vi, out, 6, 5));
  EXPECT_EQ(0, TOKAGetDatavi(vi, out, -1, 2));  // nor does one before the start
  EXPECT_EQ(-9, out[0]);
  TOKASetDatavi(vi, &seven, 0, 1);
  EXPECT_EQ(4, TOKAGetDatavi(vi, nullptr, 0, 0));
  EXPECT_EQ(4, TOKAGetDatavi(vi, out, 0, 6));
  EXPECT_EQ((std::vector<int>{7, 2, 3, 4}), std::vector<int>(out, out + 4));

  char hello[] = "hello", jay[] = "J", text[16] = {0};
  TOKASetDatab(bytes, hello, 0, 6);
  TOKASetDatab(bytes, jay, 0, 1);
  EXPECT_EQ(6, TOKAGetDatab(bytes, nullptr, 0, 0));
  EXPECT_EQ(6, TOKAGetDatab(bytes, text, 0, sizeof text));
  EXPECT_STREQ("Jello", text);
  EXPECT_EQ(3, TOKAGetDatab(bytes, text, 3, sizeof text));
  EXPECT_STREQ("lo", text);
}

TEST_F(SharedData, EveryWriteNotifiesEverySubscriberInOrderAsItself) {
  Share(a, "shared/n", DataTypeInt, Changed, R(1));
  Share(b, "shared/n", DataTypeInt, Changed, R(2));
  Share(c, "shared/n", DataTypeInt, Changed, R(3));
  Share(a, "shared/n", DataTypeInt, Changed, R(4));
  Share(a, "shared/n", DataTypeInt, Changed, R(1));  // a second subscription
  TOKADisablePlugin(c);
  TOKADataRef ref = TOKAFindDataRef("shared/n");
  const Lines all = {"changed(1)@1", "changed(2)@2", "changed(4)@1", "changed(1)@1"};
  Lines twice = all;
  twice.insert(twice.end(), all.begin(), all.end());
  EXPECT_EQ(twice, During([&] {
              RunAs(b, [&] {
                TOKASetDatai(ref, 5);
                TOKASetDatai(ref, 5);  // unchanged, announced all the same
                EXPECT_EQ(b, TOKAGetMyID());
              });
            }));

  EXPECT_EQ(0, Share(b, "shared/n", DataTypeInt, Changed, R(1), TOKAUnshareData));  // a's, not b's
  EXPECT_EQ(0, Share(a, "shared/n", DataTypeFloat, Changed, R(1), TOKAUnshareData));
  EXPECT_EQ(0, Share(a, "shared/n", DataTypeInt, nullptr, R(1), TOKAUnshareData));
  EXPECT_EQ(0, Share(a, "shared/none", DataTypeInt, Changed, R(1), TOKAUnshareData));
  EXPECT_EQ(1, Share(a, "shared/n", DataTypeInt, Changed, R(1), TOKAUnshareData));
  EXPECT_EQ(1, Share(b, "shared/n", DataTypeInt, Changed, R(2), TOKAUnshareData));
  EXPECT_EQ(0, Share(b, "shared/n", DataTypeInt, Changed, R(2), TOKAUnshareData));
  TOKAEnablePlugin(c);
  EXPECT_EQ((Lines{"changed(3)@3", "changed(4)@1", "changed(1)@1"}),
            During([&] { TOKASetDatai(ref, 6); }));
  EXPECT_EQ(6, TOKAGetDatai(ref));  // the last subscriber leaving keeps the value
}

// Writes the item again from its own notification until it reaches 3.
TOKADataRef gDepth = nullptr;
void CountUp(void*) {
  int value = TOKAGetDatai(gDepth);
  Log("up" + std::to_string(value));
  if (value < 3) TOKASetDatai(gDepth, value + 1);
}
void Watch(void*) { Log("watch" + std::to_string(TOKAGetDatai(gDepth))); }
// Subscribes a crowd (moving the subscriber array) and leaves.
void Crowd(void* refcon) {
  Log("crowd");
  for (int i = 0; i < 40; ++i) TOKAShareData("shared/crowd", DataTypeInt, Changed, R(100 + i));
  TOKAUnshareData("shared/crowd", DataTypeInt, Crowd, refcon);
}

TEST_F(SharedData, NotificationsMayWriteShareAndUnshareAgain) {
  Share(a, "shared/depth", DataTypeInt, CountUp, nullptr);
  Share(b, "shared/depth", DataTypeInt, Watch, nullptr);
  gDepth = TOKAFindDataRef("shared/depth");
  // Each write notifies everyone again before the outer walk goes on.
  EXPECT_EQ((Lines{"up1@1", "up2@1", "up3@1", "watch3@2", "watch3@2", "watch3@2"}),
            During([] { TOKASetDatai(gDepth, 1); }));

  Share(a, "shared/crowd", DataTypeInt, Crowd, nullptr);
  Share(b, "shared/crowd", DataTypeInt, Changed, R(2));
  TOKADataRef crowd = TOKAFindDataRef("shared/crowd");
  TOKASetDatai(crowd, 1);
  Lines expected = {"changed(2)@2"};
  for (int i = 100; i < 140; ++i) expected.push_back("changed(" + std::to_string(i) + ")@1");
  EXPECT_EQ(expected, During([&] { TOKASetDatai(crowd, 2); }));
}

}  // namespace
