// Messages between plugins: order, sender and receiver IDs, nesting, disabled
// receivers, and plugins that throw.
#include "harness/harness.h"

#include <stdexcept>

using namespace toka_test;

namespace {

class Messages : public TokaTest {
protected:
  void SetUp() override {
    for (const char* name : {"a", "b", "c"}) AddScriptedFolder(name, name);
    PluginScript& z = Script(tree.AddPlugin("Resources/plugins/z/lin.orv", "start_only"));
    z.name = "z";
    z.signature = "test.z";
    Initialize();
    for (const char* name : {"a", "b", "c"})
      id[name] = TOKAFindPluginBySignature((std::string("test.") + name).c_str());
    Events().clear();
  }
  std::map<std::string, int> id;
  std::string At(const std::string& name) { return "@" + std::to_string(id[name]); }
};

TEST_F(Messages, BroadcastReachesEveryEnabledPluginInIDOrderTheSenderIncluded) {
  TOKADisablePlugin(id["c"]);
  Events().clear();
  RunAs(id["b"], [] { TOKASendMessageToPlugin(-1, 101, (void*)7); });

  std::vector<std::pair<int, std::string>> expected = {{id["a"], "a"}, {id["b"], "b"}};
  std::sort(expected.begin(), expected.end());
  std::vector<std::string> wanted;
  for (auto& [pluginID, name] : expected)
    wanted.push_back(name + ".message(" + std::to_string(id["b"]) + ",101,7)" + At(name));
  EXPECT_EQ(wanted, Events());
  EXPECT_EQ(0, TOKAGetMyID());
}

TEST_F(Messages, PluginsWithoutMessageEntryAndTargetsOutOfRangeGetNothing) {
  // Messages to the simulator, to a plugin without a message entry and past
  // the last plugin reach nobody and break nothing.
  ASSERT_EQ(5, TOKACountPlugins());
  int z = TOKAFindPluginBySignature("test.z");
  ASSERT_EQ(1, TOKAIsPluginEnabled(z));
  TOKASendMessageToPlugin(z, 1, nullptr);
  TOKASendMessageToPlugin(0, 1, nullptr);
  TOKASendMessageToPlugin(TOKACountPlugins(), 1, nullptr);
  TOKASendMessageToPlugin(-7, 1, nullptr);
  EXPECT_TRUE(Events().empty());
}

TEST_F(Messages, NestedSendsRestoreEachSendersID) {
  std::vector<std::string> seen;
  Script(tree.plugins() + "/a/lin.orv").onMessage = [&](int from, int message, void*) {
    if (message != 1) return;
    seen.push_back("a before " + std::to_string(TOKAGetMyID()));
    TOKASendMessageToPlugin(id["b"], 2, nullptr);
    seen.push_back("a after " + std::to_string(TOKAGetMyID()));
  };
  Script(tree.plugins() + "/b/lin.orv").onMessage = [&](int from, int message, void*) {
    if (message != 2) return;
    seen.push_back("b from " + std::to_string(from) + " as " + std::to_string(TOKAGetMyID()));
    TOKASendMessageToPlugin(-1, 3, nullptr);  // a is called again from inside its own entry
  };
  RunAs(id["c"], [&] { TOKASendMessageToPlugin(id["a"], 1, nullptr); });

  EXPECT_EQ((std::vector<std::string>{"a before " + std::to_string(id["a"]),
                                      "b from " + std::to_string(id["a"]) + " as " +
                                          std::to_string(id["b"]),
                                      "a after " + std::to_string(id["a"])}),
            seen);
  int threes = 0;
  for (const std::string& event : Events())
    if (event.find(",3,") != std::string::npos) {
      ++threes;
      EXPECT_NE(std::string::npos, event.find("message(" + std::to_string(id["b"]) + ",3,0)"));
    }
  EXPECT_EQ(3, threes);
  EXPECT_EQ(0, TOKAGetMyID());
}

TEST(MessagesThrowing, ThrowingEntriesLeaveTheDispatchedPluginRestored) {
  FakeHost& host = FakeHost::Get();
  TempTree tree;
  std::string path = tree.AddPlugin("Resources/plugins/t/lin.orv", "throws");
  Script(path).name = "t";
  Script(tree.AddPlugin("Resources/plugins/u/lin.orv", "scripted")).name = "u";
  TOKAInitializePlugins(tree.root().c_str(), &host.table, 0);
  int t = TOKAFindPluginByPath(path.c_str());
  int u = t == 1 ? 2 : 1;

  RunAs(u, [&] {
    EXPECT_THROW(TOKASendMessageToPlugin(t, 9, nullptr), std::runtime_error);
    EXPECT_EQ(u, TOKAGetMyID());
  });
  EXPECT_THROW(TOKAEventHook(2, 0, 0, 0), std::runtime_error);
  EXPECT_EQ(0, TOKAGetMyID());

  // A disable entry that throws leaves the plugin disabled and the library usable.
  EXPECT_THROW(TOKADisablePlugin(t), std::runtime_error);
  EXPECT_EQ(0, TOKAGetMyID());
  EXPECT_EQ(0, TOKAIsPluginEnabled(t));
  EXPECT_EQ(1, TOKAEnablePlugin(t));
  EXPECT_EQ(1, TOKAIsPluginEnabled(u));
}

}  // namespace
