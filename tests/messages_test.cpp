// Messages between plugins: order, sender and receiver IDs, nesting, disabled
// receivers, and plugins that throw.
#include "harness/harness.h"

#include <stdexcept>

using namespace toka_test;

namespace {

class Messages : public TokaTest {
protected:
  void SetUp() override {
    AddScriptedFolder("PluginAdmin", "a");  // 1
    AddScripted("b.orv", "b");              // 2
    AddScriptedFolder("c", "c");            // 3
    Initialize();
    // A plugin without a message entry, from a scenery package: 4.
    Script(tree.AddPlugin("Custom Scenery/z/plugins/z/lin.orv", "start_only")).name = "z";
    std::string package = tree.root() + "Custom Scenery/z/";
    TOKAEventHook(12, 0, 0, (intptr_t)package.c_str());
    Events().clear();
  }
};

TEST_F(Messages, BroadcastReachesEveryEnabledPluginInIDOrderTheSenderIncluded) {
  TOKADisablePlugin(3);
  Events().clear();
  RunAs(2, [] { TOKASendMessageToPlugin(-1, 101, (void*)7); });
  EXPECT_EQ((Lines{"a.message(2,101,7)@1", "b.message(2,101,7)@2"}), TakeEvents());

  // The simulator, a plugin without a message entry and targets out of
  // range get nothing, and nothing breaks.
  ASSERT_EQ(5, TOKACountPlugins());
  ASSERT_EQ(1, TOKAIsPluginEnabled(4));
  for (int target : {4, 0, 5, -7}) TOKASendMessageToPlugin(target, 1, nullptr);
  EXPECT_EQ(Lines{}, Events());
}

TEST_F(Messages, NestedSendsRestoreEachSendersID) {
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
  EXPECT_EQ((Lines{"a.message(3,1,0)@1", "a before@1", "b.message(1,2,0)@2",
                   "a.message(2,3,0)@1", "b.message(2,3,0)@2", "c.message(2,3,0)@3", "a after@1"}),
            Events());
  EXPECT_EQ(0, TOKAGetMyID());
}

class Throwing : public TokaTest {};

TEST_F(Throwing, ThrowingEntriesLeaveTheDispatchedPluginRestored) {
  Script(tree.AddPlugin("Resources/plugins/t.orv", "throws")).name = "t";  // 1
  AddScriptedFolder("u", "u");                                             // 2
  Initialize();
  RunAs(2, [] {
    EXPECT_THROW(TOKASendMessageToPlugin(1, 9, nullptr), std::runtime_error);
    EXPECT_EQ(2, TOKAGetMyID());
  });
  EXPECT_THROW(TOKAEventHook(2, 0, 0, 0), std::runtime_error);
  EXPECT_EQ(0, TOKAGetMyID());
  // A disable entry that throws leaves the plugin disabled and the library usable.
  EXPECT_THROW(TOKADisablePlugin(1), std::runtime_error);
  EXPECT_EQ(0, TOKAGetMyID());
  EXPECT_EQ(0, TOKAIsPluginEnabled(1));
  EXPECT_EQ(1, TOKAEnablePlugin(1));
  EXPECT_EQ(1, TOKAIsPluginEnabled(2));
}

}  // namespace
