// Enabling and disabling, features, error callbacks and plugin warnings.
#include "harness/harness.h"

using namespace toka_test;

namespace {

std::vector<std::string> gErrors;
void RecordError(const char* message) { gErrors.push_back(message); }

class Enabling : public TokaTest {
protected:
  void SetUp() override { gErrors.clear(); }
};

TEST_F(Enabling, EnableEntryDecidesAndRepeatedEnablesDoNotCallItAgain) {
  PluginScript& shy = AddScripted("shy.orv", "shy");
  shy.enableResult = 0;
  AddScripted("bold.orv", "bold");
  Initialize();
  int shyID = TOKAFindPluginBySignature("test.shy");
  int boldID = TOKAFindPluginBySignature("test.bold");
  EXPECT_EQ(0, TOKAIsPluginEnabled(shyID));
  EXPECT_EQ(1, TOKAIsPluginEnabled(boldID));
  host.ClearRecords();
  Events().clear();

  EXPECT_EQ(0, TOKAEnablePlugin(shyID));  // asked again, refuses again; nothing logged
  shy.enableResult = 1;
  EXPECT_EQ(1, TOKAEnablePlugin(shyID));
  EXPECT_EQ(1, TOKAEnablePlugin(shyID));  // already enabled: the entry is not called
  EXPECT_EQ(1, TOKAEnablePlugin(boldID));
  EXPECT_EQ((std::vector<std::string>{"shy.enable@" + std::to_string(shyID),
                                      "shy.enable@" + std::to_string(shyID)}),
            Events());
  EXPECT_EQ("", host.log);

  // The simulator's record and IDs out of range cannot be switched.
  EXPECT_EQ(0, TOKAEnablePlugin(0));
  EXPECT_EQ(0, TOKAEnablePlugin(TOKACountPlugins()));
  TOKADisablePlugin(0);
  EXPECT_EQ(1, TOKAIsPluginEnabled(0));

  Events().clear();
  TOKADisablePlugin(boldID);
  TOKADisablePlugin(boldID);  // already disabled: nothing
  EXPECT_EQ((std::vector<std::string>{"bold.disable@" + std::to_string(boldID)}), Events());
  // A disabled plugin receives no messages.
  TOKASendMessageToPlugin(boldID, 5, nullptr);
  EXPECT_EQ(1u, Events().size());
}

TEST_F(Enabling, FeaturesAreKeptPerPluginAndStoredUnchanged) {
  AddScripted("a.orv", "a");
  AddScripted("b.orv", "b");
  Initialize();
  std::vector<std::string> names;
  TOKAEnumerateFeatures(
      [](const char* name, void* refcon) {
        static_cast<std::vector<std::string>*>(refcon)->push_back(name);
      },
      &names);
  EXPECT_EQ((std::vector<std::string>{"TOKA_WANTS_REFLECTIONS", "TOKA_USE_NATIVE_PATHS"}), names);
  EXPECT_EQ(1, TOKAHasFeature("TOKA_USE_NATIVE_PATHS"));
  EXPECT_EQ(0, TOKAHasFeature("toka_use_native_paths"));

  RunAs(1, [] {
    TOKASetErrorCallback(RecordError);
    TOKAEnableFeature("TOKA_USE_NATIVE_PATHS", 5);
    EXPECT_EQ(5, TOKAIsFeatureEnabled("TOKA_USE_NATIVE_PATHS"));
    EXPECT_EQ(0, TOKAIsFeatureEnabled("TOKA_WANTS_REFLECTIONS"));
    EXPECT_EQ(0, TOKAIsFeatureEnabled("toka_wants_reflections"));
    TOKAEnableFeature("TOKA_NOTHING", 1);
  });
  RunAs(2, [] { EXPECT_EQ(0, TOKAIsFeatureEnabled("TOKA_USE_NATIVE_PATHS")); });
  EXPECT_EQ((std::vector<std::string>{"Illegal feature name passed to TOKAEnableFeature",
                                      "Illegal feature name passed to TOKAEnableFeature"}),
            gErrors);
  // Flags survive a disable.
  TOKADisablePlugin(1);
  TOKAEnablePlugin(1);
  RunAs(1, [] { EXPECT_EQ(5, TOKAIsFeatureEnabled("TOKA_USE_NATIVE_PATHS")); });
}

TEST_F(Enabling, ErrorsGoOnlyToTheCallingPluginsCallback) {
  AddScripted("a.orv", "a");
  AddScripted("b.orv", "b");
  Initialize();
  RunAs(1, [] { TOKASetErrorCallback(RecordError); });
  RunAs(2, [] { TOKAEnableFeature("bad", 1); });  // b has no callback: nothing anywhere
  EXPECT_TRUE(gErrors.empty());
  RunAs(1, [] { TOKAEnableFeature("bad", 1); });
  EXPECT_EQ(1u, gErrors.size());
  RunAs(1, [] { TOKASetErrorCallback(nullptr); });
  RunAs(1, [] { TOKAEnableFeature("bad", 1); });
  EXPECT_EQ(1u, gErrors.size());
}

TEST_F(Enabling, WarningsNameThePluginInBrackets) {
  AddScripted("a.orv", "alpha");
  Initialize();
  host.ClearRecords();
  RunAs(1, [] { TOKALogPluginWarning("careful"); });
  TOKALogPluginWarning("from the host");
  EXPECT_EQ("[alpha]: careful\n[Orvane]: from the host\n", host.log);
  // Piece by piece through the debug-string service.
  EXPECT_EQ(10u, host.CountCalls(29));
  TOKAShutdownPlugins();
  host.ClearRecords();
  TOKALogPluginWarning("late");
  EXPECT_EQ("[unknown]: late\n", host.log);
}

TEST_F(Enabling, StartRunShutdownCallsEveryEntryInOrder) {
  AddScriptedFolder("PluginAdmin", "admin");
  AddScriptedFolder("one", "one");
  Initialize();
  TOKAEventHook(2, 0, 0, 0);
  TOKADisablePlugin(2);
  TOKAEventHook(4, 0, 0, 0);
  TOKAEnablePlugin(2);
  TOKAShutdownPlugins();
  EXPECT_EQ((std::vector<std::string>{
                "admin.start@1", "one.start@2", "admin.enable@1", "one.enable@2",
                "admin.message(0,101,0)@1", "one.message(0,101,0)@2", "one.disable@2",
                "admin.message(0,103,0)@1", "one.enable@2", "admin.disable@1", "one.disable@2",
                "admin.stop@1", "one.stop@2"}),
            Events());
  std::string plugins = tree.plugins();
  EXPECT_EQ("Fetching plugins for " + plugins + "\n\nLoaded: " + plugins +
                "/PluginAdmin/lin.orv.\n\nLoaded: " + plugins + "/one/lin.orv.\n\n",
            host.log);
}

}  // namespace
