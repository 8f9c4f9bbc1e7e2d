// The simulator's event hook: broadcasts, aircraft and scenery plugins, reload.
#include "harness/harness.h"

#include <cstring>

using namespace toka_test;

namespace {

class EventHook : public TokaTest {
protected:
  // The host reports the user's aircraft at `relativePath` below the root.
  void UserAircraftAt(const std::string& relativePath) {
    std::string path = tree.root() + relativePath;
    host.onCall[18] = [path](const HostCall& call) -> intptr_t {
      std::strcpy(call.arg<char*>(1), path.c_str());
      std::strcpy(call.arg<char*>(2), "c172.acf");
      return 0;
    };
  }
  std::vector<std::string> MessagesOnly() {
    std::vector<std::string> messages;
    for (const std::string& event : Events())
      if (event.find(".message(") != std::string::npos) messages.push_back(event);
    return messages;
  }
};

TEST_F(EventHook, SimulatorEventsReachEnabledPluginsAsMessagesFromTheSimulator) {
  AddScripted("a.orv", "alpha");
  AddScriptedFolder("b", "beta");
  tree.AddPlugin("Resources/plugins/c/lin.orv", "start_only");  // no message entry
  Initialize();
  int alpha = TOKAFindPluginBySignature("test.alpha");
  int beta = TOKAFindPluginBySignature("test.beta");
  TOKADisablePlugin(beta);
  Events().clear();

  const int codes[][3] = {{2, 0, 101}, {3, 7, 102}, {4, 0, 103}, {6, 0, 104},
                          {7, 0, 105}, {8, 7, 106}, {11, 0, 107}, {13, 9, 108}};
  std::vector<std::string> expected;
  for (const auto& code : codes) {
    EXPECT_EQ(1, TOKAEventHook(code[0], 1.5f, 0, code[1]));
    std::string param = code[1] ? std::to_string(code[1]) : "0";
    expected.push_back("alpha.message(0," + std::to_string(code[2]) + "," + param + ")@" +
                       std::to_string(alpha));
  }
  EXPECT_EQ(expected, MessagesOnly());
  EXPECT_EQ(0, TOKAGetMyID());
}

TEST_F(EventHook, UnknownCodesDoNothing) {
  AddScripted("a.orv", "alpha");
  Initialize();
  Events().clear();
  host.ClearRecords();
  for (int code : {5, 14, 99, -1}) EXPECT_EQ(1, TOKAEventHook(code, 0, 0, 0)) << code;
  EXPECT_TRUE(Events().empty());
  EXPECT_TRUE(host.calls.empty());
}

TEST_F(EventHook, UserAircraftPluginsLoadOnEvent3AndUnloadOnEvent8) {
  AddScripted("a.orv", "alpha");
  Initialize();
  std::string acfPlugins = tree.root() + "Aircraft/C172/plugins";
  tree.AddPlugin("Aircraft/C172/plugins/gps/lin.orv", "scripted");
  Script(acfPlugins + "/gps/lin.orv").name = "gps";
  UserAircraftAt("Aircraft/C172/c172.acf");
  host.ClearRecords();
  Events().clear();

  // Another aircraft (param 1) only broadcasts.
  TOKAEventHook(3, 0, 0, 1);
  EXPECT_EQ(2, TOKACountPlugins());

  TOKAEventHook(3, 0, 0, 0);
  EXPECT_EQ("Fetching plugins for " + acfPlugins + "\n\n" + "Loaded: " + acfPlugins +
                "/gps/lin.orv.\n\n",
            host.log);
  ASSERT_EQ(3, TOKACountPlugins());
  EXPECT_EQ(1, TOKAIsPluginEnabled(2));
  auto calls = host.CallsTo(18);
  ASSERT_EQ(1u, calls.size());
  EXPECT_EQ(0u, calls[0].words[0]);
  // The broadcast happened before the load: the new plugin did not get 102.
  EXPECT_EQ((std::vector<std::string>{"alpha.message(0,102,1)@1", "alpha.message(0,102,0)@1",
                                      "gps.start@2", "gps.enable@2"}),
            Events());

  Events().clear();
  TOKAEventHook(8, 0, 0, 0);
  EXPECT_EQ((std::vector<std::string>{"alpha.message(0,106,0)@1", "gps.message(0,106,0)@2",
                                      "gps.disable@2", "gps.stop@2"}),
            Events());
  // The trailing aircraft record is gone; its ID is free again.
  EXPECT_EQ(2, TOKACountPlugins());
}

TEST_F(EventHook, AircraftRecordFollowedByAnotherStaysUnloaded) {
  Initialize();
  tree.AddPlugin("Aircraft/C172/plugins/gps/lin.orv", "scripted");
  Script(tree.AddPlugin("Custom Scenery/Alps/plugins/lights/lin.orv", "scripted")).name = "lights";
  UserAircraftAt("Aircraft/C172/c172.acf");
  TOKAEventHook(3, 0, 0, 0);
  std::string package = tree.root() + "Custom Scenery/Alps/";
  TOKAEventHook(12, 0, 0, (int)(intptr_t)package.c_str());
  ASSERT_EQ(3, TOKACountPlugins());
  EXPECT_EQ(1, TOKAIsPluginEnabled(2));  // scenery plugins are enabled at once

  TOKAEventHook(8, 0, 0, 0);
  EXPECT_EQ(3, TOKACountPlugins());  // the aircraft record (1) stays, unloaded
  EXPECT_EQ(0, TOKAIsPluginEnabled(1));
  // Shutting down unloads it a second time without calling into it.
  Events().clear();
  TOKAShutdownPlugins();
  EXPECT_EQ((std::vector<std::string>{"lights.disable@2", "lights.stop@2"}), Events());
}

TEST_F(EventHook, AircraftPathWithoutSlashLoadsNothing) {
  Initialize();
  host.onCall[18] = [](const HostCall& call) -> intptr_t {
    std::strcpy(call.arg<char*>(1), "c172.acf");
    call.arg<char*>(2)[0] = 0;
    return 0;
  };
  host.ClearRecords();
  TOKAEventHook(3, 0, 0, 0);
  EXPECT_EQ("", host.log);
  EXPECT_EQ(1, TOKACountPlugins());
}

TEST_F(EventHook, SceneryPackageWithoutPluginFoldersLogsNothing) {
  Initialize();
  tree.AddFolder("Custom Scenery/Empty/plugins");
  std::string package = tree.root() + "Custom Scenery/Empty/";
  host.ClearRecords();
  TOKAEventHook(12, 0, 0, (int)(intptr_t)package.c_str());
  EXPECT_EQ("", host.log);
}

TEST_F(EventHook, ReloadRequestedFromAPluginRunsAfterTheNextProcessingEvent) {
  PluginScript& alpha = AddScripted("a.orv", "alpha");
  alpha.onMessage = [](int, int message, void*) {
    if (message == 42) TOKAReloadPlugins();
  };
  Initialize();
  tree.AddPlugin("Aircraft/C172/plugins/gps/lin.orv", "scripted");
  Script(tree.root() + "Aircraft/C172/plugins/gps/lin.orv").name = "gps";
  UserAircraftAt("Aircraft/C172/c172.acf");
  TOKAEventHook(3, 0, 0, 0);
  std::string root = tree.root();
  host.onCall[25] = [root](const HostCall& call) -> intptr_t {
    std::strcpy(call.arg<char*>(0), root.c_str());
    return 0;
  };

  TOKASendMessageToPlugin(1, 42, nullptr);
  EXPECT_EQ(3, TOKACountPlugins());  // nothing happens inside the request
  Events().clear();
  host.ClearRecords();

  TOKAEventHook(10, 1.0f, 0, 0);
  EXPECT_EQ((std::vector<std::string>{"alpha.disable@1", "gps.disable@2", "gps.stop@2",
                                      "alpha.stop@1", "alpha.start@1", "gps.start@2",
                                      "alpha.enable@1", "gps.enable@2"}),
            Events());
  auto notices = host.CallsTo(53);
  ASSERT_EQ(1u, notices.size());
  EXPECT_EQ((std::vector<std::string>{"Please place your new plugin in the plugins folder.",
                                      "I will then reload all plugins.", "", ""}),
            notices[0].strings);
  EXPECT_EQ(3, TOKACountPlugins());

  // Only one reload per request.
  Events().clear();
  TOKAEventHook(0, 2.0f, 0, 0);
  EXPECT_TRUE(Events().empty());
}

TEST_F(EventHook, ReloadNoticeNeedsTableRevisionAbove2) {
  AddScripted("a.orv", "alpha");
  host.table.revision = 2;
  Initialize();
  TOKAReloadPlugins();
  TOKAEventHook(0, 1.0f, 0, 0);
  EXPECT_EQ(0u, host.CountCalls(53));
  EXPECT_EQ(0u, host.CountCalls(54));
}

}  // namespace
