// Enabling and disabling, features, error callbacks, plugin warnings, and
// messages between plugins.
#include "harness/harness.h"

#include <climits>

using namespace toka_test;

namespace {

class Enabling : public TokaTest {};

TEST_F(Enabling, EnableEntryDecidesAndTheSimulatorCannotBeSwitched) {
  AddScripted("shy.orv", "shy").enableResult = 0;
  AddScriptedFolder("bold", "bold");
  Initialize();
  EXPECT_EQ(0, TOKAIsPluginEnabled(1));
  EXPECT_EQ(1, TOKAIsPluginEnabled(2));
  Events().clear();
  EXPECT_EQ(0, TOKAEnablePlugin(1));  // asked again, refuses again
  Script(tree.plugins() + "/shy.orv").enableResult = 1;
  EXPECT_EQ(1, TOKAEnablePlugin(1));
  EXPECT_EQ(1, TOKAEnablePlugin(1));  // already enabled: the entry is not called
  EXPECT_EQ((Lines{"shy.enable@1", "shy.enable@1"}), Events());
  TOKADisablePlugin(0);
  EXPECT_EQ(1, TOKAIsPluginEnabled(0));
}

TEST_F(Enabling, FeaturesErrorsAndWarningsBelongToTheCallingPlugin) {
  StartTwo();
  RecordErrorsOf(1);
  RunAs(1, [] {
    TOKAEnableFeature("TOKA_USE_NATIVE_PATHS", 5);  // stored as given
    EXPECT_EQ(5, TOKAIsFeatureEnabled("TOKA_USE_NATIVE_PATHS"));
    TOKAEnableFeature("TOKA_USE_NATIVE_PATHS", 0);
    EXPECT_EQ(0, TOKAIsFeatureEnabled("TOKA_USE_NATIVE_PATHS"));
    TOKAEnableFeature("TOKA_NOTHING", 1);
  });
  // Beta has no error callback: its mistakes are reported nowhere.
  RunAs(2, [] { TOKAEnableFeature("bad", 1); });
  EXPECT_EQ((Lines{"error(Illegal feature name passed to TOKAEnableFeature)@1"}), TakeEvents());

  // Warnings go to the log under the caller's name.
  RunAs(1, [] { TOKALogPluginWarning("careful"); });
  TOKALogPluginWarning("from the host");
  EXPECT_EQ("[alpha]: careful\n[Orvane]: from the host\n", host.log);
}

class Messages : public TokaTest {};

TEST_F(Messages, BroadcastReachesEveryEnabledPluginInIDOrderAndNestedSendsRestoreIDs) {
  AddScriptedFolder("PluginAdmin", "a");  // 1
  AddScripted("b.orv", "b");              // 2
  AddScriptedFolder("c", "c");            // 3
  Initialize();
  TOKADisablePlugin(2);
  Events().clear();
  RunAs(3, [] { TOKASendMessageToPlugin(-1, 101, (void*)7); });
  EXPECT_EQ((Lines{"a.message(3,101,7)@1", "c.message(3,101,7)@3"}), TakeEvents());
  // A plugin without a message entry, from a scenery package: 4.
  tree.AddPlugin("Custom Scenery/z/plugins/z/lin.orv", "start_only");
  std::string package = tree.root() + "Custom Scenery/z/";
  TOKAEventHook(12, 0, 0, (intptr_t)package.c_str());
  Events().clear();
  // The simulator, a plugin without a message entry, a disabled plugin and
  // targets out of range get nothing, and nothing breaks.
  ASSERT_EQ(5, TOKACountPlugins());
  for (int target : {4, 0, 2, 5, -7, INT_MAX}) TOKASendMessageToPlugin(target, 1, nullptr);
  EXPECT_EQ(Lines{}, Events());

  TOKAEnablePlugin(2);
  Script(tree.plugins() + "/PluginAdmin/lin.orv").onMessage = [](int, int message, void*) {
    if (message != 1) return;
    Log("a before");
    TOKASendMessageToPlugin(2, 2, nullptr);
    Log("a after");
  };
  Script(tree.plugins() + "/b.orv").onMessage = [](int, int message, void*) {
    if (message == 2) TOKASendMessageToPlugin(-1, 3, nullptr);  // reaches a inside its entry
  };
  RunAs(3, [] { TOKASendMessageToPlugin(1, 1, nullptr); });
  EXPECT_EQ((Lines{"b.enable@2", "a.message(3,1,0)@1", "a before@1", "b.message(1,2,0)@2",
                   "a.message(2,3,0)@1", "b.message(2,3,0)@2", "c.message(2,3,0)@3", "a after@1"}),
            Events());
  EXPECT_EQ(0, TOKAGetMyID());
}

}  // namespace
