// Shared data: items stored by the library, read and written through
// datarefs, with change notification for every subscriber.
#include <cstring>

#include "harness/data_harness.h"

using namespace toka_test;

namespace {

void Changed(void* refcon) { LogCall("changed(" + std::to_string((intptr_t)refcon) + ")"); }
void* R(int n) { return (void*)(intptr_t)n; }

class SharedData : public TokaTest {
protected:
  int a = 0, b = 0, c = 0;
  void StartThree() {
    AddScripted("a.orv", "alpha");
    AddScripted("b.orv", "beta");
    AddScripted("c.orv", "gamma");
    Initialize();
    a = TOKAFindPluginBySignature("test.alpha");
    b = TOKAFindPluginBySignature("test.beta");
    c = TOKAFindPluginBySignature("test.gamma");
  }
  int ShareAs(int plugin, const char* name, int type, TOKADataChanged_f callback, void* refcon) {
    int result = -1;
    RunAs(plugin, [&] { result = TOKAShareData(name, type, callback, refcon); });
    return result;
  }
  int UnshareAs(int plugin, const char* name, int type, TOKADataChanged_f callback, void* refcon) {
    int result = -1;
    RunAs(plugin, [&] { result = TOKAUnshareData(name, type, callback, refcon); });
    return result;
  }
  std::string At(int plugin) { return "@" + std::to_string(plugin); }
};

TEST_F(SharedData, FirstShareCreatesASimulatorOwnedDatarefServingOnlyItsType) {
  StartThree();
  EXPECT_EQ(1, ShareAs(a, "shared/f", DataTypeFloat, Changed, R(1)));
  EXPECT_EQ(0, ShareAs(b, "shared/f", DataTypeInt, Changed, R(2)));  // type clash
  EXPECT_EQ(1, ShareAs(b, "shared/f", DataTypeFloat, nullptr, nullptr));
  TOKADataRef ref = TOKAFindDataRef("shared/f");
  ASSERT_NE(nullptr, ref);
  EXPECT_EQ(DataTypeFloat, TOKAGetDataRefTypes(ref));
  EXPECT_EQ(1, TOKACanWriteDataRef(ref));

  RunAs(b, [&] { TOKASetDataf(ref, 2.5f); });
  EXPECT_EQ(2.5f, TOKAGetDataf(ref));
  EXPECT_EQ((std::vector<std::string>{"changed(1)" + At(a)}), Calls());
  // No other accessor is served, so nothing else reads or writes the item.
  TOKASetDatai(ref, 7);
  TOKASetDatad(ref, 7);
  EXPECT_EQ(0, TOKAGetDatai(ref));
  EXPECT_EQ(0.0, TOKAGetDatad(ref));
  EXPECT_EQ(2.5f, TOKAGetDataf(ref));
  EXPECT_EQ(1u, Calls().size());

  // The item belongs to the simulator, not to the plugin that shared it.
  RunAs(a, [&] {
    TOKASetErrorCallback(RecordError);
    TOKAUnregisterDataAccessor(ref);
  });
  const std::string notYours = "Dataref is not owned by you - you cannot unregsiter.";
  EXPECT_EQ((std::vector<std::string>{notYours + At(a)}), Errors());

  ShareAs(c, "shared/d", DataTypeDouble, nullptr, nullptr);
  ShareAs(c, "shared/i", DataTypeInt, nullptr, nullptr);
  TOKASetDatad(TOKAFindDataRef("shared/d"), 1e300);
  TOKASetDatai(TOKAFindDataRef("shared/i"), -123456);
  EXPECT_EQ(1e300, TOKAGetDatad(TOKAFindDataRef("shared/d")));
  EXPECT_EQ(-123456, TOKAGetDatai(TOKAFindDataRef("shared/i")));
}

TEST_F(SharedData, ArraysAndBytesGrowOnWriteAndNeverShrink) {
  StartThree();
  ShareAs(a, "shared/vf", DataTypeFloatArray, nullptr, nullptr);
  ShareAs(a, "shared/vi", DataTypeIntArray, nullptr, nullptr);
  ShareAs(a, "shared/b", DataTypeData, nullptr, nullptr);
  TOKADataRef vf = TOKAFindDataRef("shared/vf"), vi = TOKAFindDataRef("shared/vi"),
              bytes = TOKAFindDataRef("shared/b");
  EXPECT_EQ(1, TOKAGetDatavf(vf, nullptr, 0, 0));
  EXPECT_EQ(1, TOKAGetDatavi(vi, nullptr, 0, 0));
  EXPECT_EQ(1, TOKAGetDatab(bytes, nullptr, 0, 0));

  float nine = 9.0f, outf[3] = {-1, -1, -1};
  TOKASetDatavf(vf, &nine, 10, 1);
  EXPECT_EQ(11, TOKAGetDatavf(vf, nullptr, 0, 0));
  EXPECT_EQ(1, TOKAGetDatavf(vf, outf, 10, 3));
  EXPECT_EQ(9.0f, outf[0]);
  EXPECT_EQ(-1.0f, outf[1]);

  int four[4] = {1, 2, 3, 4}, out[6] = {0, 0, 0, 0, 0, 0}, seven = 7;
  TOKASetDatavi(vi, four, 0, 4);
  EXPECT_EQ(2, TOKAGetDatavi(vi, out, 2, 5));
  EXPECT_EQ((std::vector<int>{3, 4, 0}), std::vector<int>(out, out + 3));
  EXPECT_EQ(4, TOKAGetDatavi(vi, out, 0, 4));
  // An offset past the end copies nothing and says by how much it missed.
  out[0] = -9;
  EXPECT_EQ(-2, TOKAGetDatavi(vi, out, 6, 5));
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
  StartThree();
  ShareAs(a, "shared/n", DataTypeInt, Changed, R(1));
  ShareAs(b, "shared/n", DataTypeInt, Changed, R(2));
  ShareAs(c, "shared/n", DataTypeInt, Changed, R(3));
  ShareAs(a, "shared/n", DataTypeInt, Changed, R(4));
  ShareAs(a, "shared/n", DataTypeInt, Changed, R(1));  // a second subscription
  TOKADisablePlugin(c);
  TOKADataRef ref = TOKAFindDataRef("shared/n");
  const std::vector<std::string> all = {"changed(1)" + At(a), "changed(2)" + At(b),
                                        "changed(4)" + At(a), "changed(1)" + At(a)};
  RunAs(b, [&] {
    TOKASetDatai(ref, 5);
    TOKASetDatai(ref, 5);  // unchanged, announced all the same
    EXPECT_EQ(b, TOKAGetMyID());
  });
  std::vector<std::string> twice = all;
  twice.insert(twice.end(), all.begin(), all.end());
  EXPECT_EQ(twice, Calls());

  EXPECT_EQ(0, UnshareAs(b, "shared/n", DataTypeInt, Changed, R(1)));  // a's, not b's
  EXPECT_EQ(0, UnshareAs(a, "shared/n", DataTypeFloat, Changed, R(1)));
  EXPECT_EQ(0, UnshareAs(a, "shared/n", DataTypeInt, nullptr, R(1)));
  EXPECT_EQ(0, UnshareAs(a, "shared/none", DataTypeInt, Changed, R(1)));
  EXPECT_EQ(1, UnshareAs(a, "shared/n", DataTypeInt, Changed, R(1)));
  EXPECT_EQ(1, UnshareAs(b, "shared/n", DataTypeInt, Changed, R(2)));
  EXPECT_EQ(0, UnshareAs(b, "shared/n", DataTypeInt, Changed, R(2)));
  TOKAEnablePlugin(c);
  Calls().clear();
  TOKASetDatai(ref, 6);
  EXPECT_EQ((std::vector<std::string>{"changed(3)" + At(c), "changed(4)" + At(a),
                                      "changed(1)" + At(a)}),
            Calls());
  EXPECT_EQ(6, TOKAGetDatai(ref));  // the last subscriber leaving keeps the value
}

// Writes the item again from its own notification until it reaches 3.
TOKADataRef gDepth = nullptr;
void CountUp(void* refcon) {
  int value = TOKAGetDatai(gDepth);
  LogCall("up" + std::to_string(value));
  if (value < 3) TOKASetDatai(gDepth, value + 1);
}
void Watch(void* refcon) { LogCall("watch" + std::to_string(TOKAGetDatai(gDepth))); }
// Subscribes a crowd (moving the subscriber array) and leaves.
void Crowd(void* refcon) {
  LogCall("crowd");
  for (int i = 0; i < 40; ++i) TOKAShareData("shared/crowd", DataTypeInt, Changed, R(100 + i));
  TOKAUnshareData("shared/crowd", DataTypeInt, Crowd, refcon);
}

TEST_F(SharedData, NotificationsMayWriteShareAndUnshareAgain) {
  StartThree();
  ShareAs(a, "shared/depth", DataTypeInt, CountUp, nullptr);
  ShareAs(b, "shared/depth", DataTypeInt, Watch, nullptr);
  gDepth = TOKAFindDataRef("shared/depth");
  TOKASetDatai(gDepth, 1);
  // Each write notifies everyone again before the outer walk goes on.
  EXPECT_EQ((std::vector<std::string>{"up1" + At(a), "up2" + At(a), "up3" + At(a),
                                      "watch3" + At(b), "watch3" + At(b), "watch3" + At(b)}),
            Calls());

  ShareAs(a, "shared/crowd", DataTypeInt, Crowd, nullptr);
  ShareAs(b, "shared/crowd", DataTypeInt, Changed, R(2));
  TOKADataRef crowd = TOKAFindDataRef("shared/crowd");
  TOKASetDatai(crowd, 1);
  Calls().clear();
  TOKASetDatai(crowd, 2);
  std::vector<std::string> expected = {"changed(2)" + At(b)};
  for (int i = 100; i < 140; ++i) expected.push_back("changed(" + std::to_string(i) + ")" + At(a));
  EXPECT_EQ(expected, Calls());
}

TEST_F(SharedData, UnloadEndsThePluginsSubscriptionsButTheItemStays) {
  AddScripted("a.orv", "alpha");
  PluginScript& gps = AddAircraftPlugin(tree, "gps");
  gps.onStart = [] { TOKAShareData("shared/gps", DataTypeInt, Changed, R(5)); };
  Initialize();
  TOKAEventHook(3, 0, 0, 0);
  ASSERT_EQ(3, TOKACountPlugins());
  ShareAs(1, "shared/gps", DataTypeInt, Changed, R(6));

  TOKAEventHook(8, 0, 0, 0);
  TOKADataRef ref = TOKAFindDataRef("shared/gps");
  ASSERT_NE(nullptr, ref);
  EXPECT_EQ(1, TOKAIsDataRefGood(ref));
  Calls().clear();
  RunAs(1, [&] { TOKASetDatai(ref, 7); });
  EXPECT_EQ(7, TOKAGetDatai(ref));
  EXPECT_EQ((std::vector<std::string>{"changed(6)@1"}), Calls());

  // The aircraft plugin comes back under the same ID and subscribes anew:
  // once, after the subscription that stayed.
  TOKAEventHook(3, 0, 0, 0);
  ASSERT_EQ(3, TOKACountPlugins());
  Calls().clear();
  TOKASetDatai(ref, 8);
  EXPECT_EQ((std::vector<std::string>{"changed(6)@1", "changed(5)@2"}), Calls());
}

}  // namespace
