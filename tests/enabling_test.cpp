// Enabling and disabling, features, error callbacks and plugin warnings.
#include "harness/harness.h"

using namespace toka_test;

namespace {

class Enabling : public TokaTest {};

TEST_F(Enabling, EnableEntryDecidesAndRepeatedEnablesDoNotCallItAgain) {
  AddScripted("shy.orv", "shy").enableResult = 0;
  AddScriptedFolder("bold", "bold");
  Initialize();
  const int shy = 1, bold = 2;
  EXPECT_EQ(0, TOKAIsPluginEnabled(shy));
  EXPECT_EQ(1, TOKAIsPluginEnabled(bold));
  host.ClearRecords();
  Events().clear();

  EXPECT_EQ(0, TOKAEnablePlugin(shy));  // asked again, refuses again; nothing logged
  Script(tree.plugins() + "/shy.orv").enableResult = 1;
  EXPECT_EQ(1, TOKAEnablePlugin(shy));
  EXPECT_EQ(1, TOKAEnablePlugin(shy));  // already enabled: the entry is not called
  EXPECT_EQ(1, TOKAEnablePlugin(bold));
  EXPECT_EQ((Lines{"shy.enable@1", "shy.enable@1"}), TakeEvents());
  EXPECT_EQ("", host.log);

  // The simulator's record and IDs out of range cannot be switched.
  EXPECT_EQ(0, TOKAEnablePlugin(0));
  EXPECT_EQ(0, TOKAEnablePlugin(TOKACountPlugins()));
  TOKADisablePlugin(0);
  EXPECT_EQ(1, TOKAIsPluginEnabled(0));

  TOKADisablePlugin(bold);
  TOKADisablePlugin(bold);  // already disabled: nothing
  TOKASendMessageToPlugin(bold, 5, nullptr);  // a disabled plugin hears nothing
  EXPECT_EQ((Lines{"bold.disable@2"}), Events());
}

TEST_F(Enabling, FeaturesErrorsAndWarningsBelongToTheCallingPlugin) {
  StartTwo();
  Lines names;
  TOKAEnumerateFeatures(
      [](const char* name, void* refcon) { static_cast<Lines*>(refcon)->push_back(name); },
      &names);
  EXPECT_EQ((Lines{"TOKA_WANTS_REFLECTIONS", "TOKA_USE_NATIVE_PATHS"}), names);
  EXPECT_EQ(1, TOKAHasFeature("TOKA_USE_NATIVE_PATHS"));
  EXPECT_EQ(0, TOKAHasFeature("toka_use_native_paths"));

  RecordErrorsOf(1);
  RunAs(1, [] {
    TOKAEnableFeature("TOKA_USE_NATIVE_PATHS", 5);  // stored as given
    EXPECT_EQ(5, TOKAIsFeatureEnabled("TOKA_USE_NATIVE_PATHS"));
    EXPECT_EQ(0, TOKAIsFeatureEnabled("TOKA_WANTS_REFLECTIONS"));
    EXPECT_EQ(0, TOKAIsFeatureEnabled("toka_wants_reflections"));
    TOKAEnableFeature("TOKA_NOTHING", 1);
  });
  // Beta has no error callback: its mistakes are reported nowhere.
  RunAs(2, [] {
    EXPECT_EQ(0, TOKAIsFeatureEnabled("TOKA_USE_NATIVE_PATHS"));
    TOKAEnableFeature("bad", 1);
  });
  const std::string illegal = "error(Illegal feature name passed to TOKAEnableFeature)@1";
  EXPECT_EQ((Lines{illegal, illegal}), TakeEvents());
  EXPECT_EQ("", host.log);
  RunAs(1, [] {
    TOKASetErrorCallback(nullptr);
    TOKAEnableFeature("bad", 1);
  });
  EXPECT_EQ(Lines{}, Events());
  // Flags survive a disable.
  TOKADisablePlugin(1);
  TOKAEnablePlugin(1);
  RunAs(1, [] { EXPECT_EQ(5, TOKAIsFeatureEnabled("TOKA_USE_NATIVE_PATHS")); });

  // Warnings go to the log piece by piece, under the caller's name.
  RunAs(1, [] { TOKALogPluginWarning("careful"); });
  TOKALogPluginWarning("from the host");
  EXPECT_EQ("[alpha]: careful\n[Orvane]: from the host\n", host.log);
  EXPECT_EQ(10u, host.CountCalls(29));
  TOKAShutdownPlugins();
  host.ClearRecords();
  TOKALogPluginWarning("late");
  EXPECT_EQ("[unknown]: late\n", host.log);
}

TEST_F(Enabling, StartRunShutdownCallsEveryEntryInOrderAndTheLibraryStartsAgain) {
  AddScriptedFolder("PluginAdmin", "admin");
  AddScriptedFolder("one", "one");
  Initialize();
  TOKAEventHook(2, 0, 0, 0);
  TOKADisablePlugin(2);
  TOKAEventHook(4, 0, 0, 0);
  TOKAEnablePlugin(2);
  TOKAShutdownPlugins();
  EXPECT_EQ((Lines{"admin.start@1", "one.start@2", "admin.enable@1", "one.enable@2",
                   "admin.message(0,101,0)@1", "one.message(0,101,0)@2", "one.disable@2",
                   "admin.message(0,103,0)@1", "one.enable@2", "admin.disable@1",
                   "one.disable@2", "admin.stop@1", "one.stop@2"}),
            TakeEvents());
  std::string plugins = tree.plugins();
  EXPECT_EQ("Fetching plugins for " + plugins + "\n\nLoaded: " + plugins +
                "/PluginAdmin/lin.orv.\n\nLoaded: " + plugins + "/one/lin.orv.\n\n",
            host.log);
  EXPECT_EQ(0, TOKACountPlugins());

  EXPECT_EQ(17, Initialize());
  EXPECT_EQ(3, TOKACountPlugins());
  EXPECT_EQ((Lines{"admin.start@1", "one.start@2", "admin.enable@1", "one.enable@2"}), Events());
}

}  // namespace
