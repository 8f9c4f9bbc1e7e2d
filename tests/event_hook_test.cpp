// The simulator's event hook: broadcasts, aircraft and scenery plugins, reload.
#include "harness/harness.h"

#include <cstring>

using namespace toka_test;

namespace {

class EventHook : public TokaTest {};

TEST_F(EventHook, SimulatorEventsReachEnabledPluginsAsMessagesFromTheSimulator) {
  AddScripted("a.orv", "alpha");
  AddScriptedFolder("b", "beta");
  tree.AddPlugin("Resources/plugins/c/lin.orv", "start_only");  // no message entry
  Initialize();
  TOKADisablePlugin(ID("beta"));
  Events().clear();
  host.ClearRecords();

  const int codes[][3] = {{2, 0, 101}, {3, 7, 102}, {4, 0, 103}, {6, 0, 104},
                          {7, 0, 105}, {8, 7, 106}, {11, 0, 107}, {13, 9, 108}};
  Lines expected;
  for (const auto& code : codes) {
    EXPECT_EQ(1, TOKAEventHook(code[0], 1.5f, 0, code[1]));
    expected.push_back("alpha.message(0," + std::to_string(code[2]) + "," +
                       std::to_string(code[1]) + ")@1");
  }
  // Unknown codes do nothing at all.
  for (int code : {5, 14, 99, -1}) EXPECT_EQ(1, TOKAEventHook(code, 0, 0, 0)) << code;
  EXPECT_EQ(expected, Events());
  EXPECT_TRUE(host.calls.empty());
  EXPECT_EQ(0, TOKAGetMyID());
}

// Callbacks that log their calls.
int Read(void*) { return Log("read"), 5; }
int Handle(TOKACommandRef, int, void*) { return Log("handler"), 1; }
float Loop(float, float, int, void*) { return Log("loop"), -1; }

TEST_F(EventHook, UnloadingAPluginWithdrawsWhatItOwnedAndNothingElse) {
  StartTwo();
  int probes = 100, objects = 0xb0;
  host.onCall[59] = [&](const HostCall&) -> intptr_t { return ++probes; };
  host.onCall[64] = [&](const HostCall&) -> intptr_t { return ++objects; };
  RecordUnloads(host);
  // The host may call back in while it ends a command: the plugin's hot key
  // is still there then, and gone by the time its menu goes.
  for (int slot : {33, 58, 63})
    host.onCall[slot] = [](const HostCall& call) -> intptr_t {
      Events().push_back("slot" + std::to_string(call.slot) + ":" +
                         std::to_string(TOKACountHotKeys()));
      return 0;
    };
  TOKACommandRef commands[] = {(TOKACommandRef)0x100, (TOKACommandRef)0x200};
  auto registerAll = [&](const char* dataref) {
    TOKARegisterDataAccessor(dataref, DataTypeInt, 1, Read, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr);
    TOKACreateProbe(0);
    TOKALoadObject("tower.obj");
  };
  RunAs(1, [&] { registerAll("test/alpha"); });
  AddAircraftPlugin("gps").onStart = [&] {
    registerAll("test/gps");
    for (TOKACommandRef command : commands) TOKACommandBegin(command);
    TOKARegisterCommandHandler(commands[0], Handle, 1, nullptr);
    TOKARegisterFlightLoopCallback(Loop, -1, nullptr);
    TOKACreateMenu("GPS", nullptr, 0, nullptr, nullptr);
    TOKARegisterHotKey('G', 0, "gps", [](void*) {}, nullptr);
  };
  TOKAEventHook(3, 0, 0, 0);
  TOKADataRef gps = TOKAFindDataRef("test/gps"), alpha = TOKAFindDataRef("test/alpha");
  ASSERT_NE(nullptr, gps);
  Events().clear();

  // The clean-up runs commands, display, ..., menus, ..., scenery, in that
  // order.
  TOKAEventHook(8, 0, 0, 0);
  EXPECT_EQ((Lines{"alpha.message(0,106,0)@1", "beta.message(0,106,0)@2",
                   "gps.message(0,106,0)@3", "gps.disable@3", "gps.stop@3", "slot58:1", "slot58:1",
                   "slot33:0", "slot63:0", "unload(0xb2)"}),
            TakeEvents());

  // Another aircraft plugin comes under the same ID; nothing of gps's is
  // called in its name, and gps's simulator probe is free again.
  AddAircraftPlugin("nav", "Piper");
  TOKAEventHook(3, 0, 0, 0);
  ASSERT_EQ(3, ID("nav"));
  host.ClearRecords();
  EXPECT_EQ((Lines{"read@1"}), During([&] {
              EXPECT_EQ(0, TOKAGetDatai(gps));
              TOKAGetDatai(alpha);
              TOKAEventHook(0, 1, 0, 0);
              TOKAEventHook(9, 0, 0, 0);
              TOKACommandHook(commands[0], 1, 0, 1);
              TOKACreateProbe(0);
              TOKACreateProbe(0);
            }));
  EXPECT_EQ(nullptr, TOKAFindDataRef("test/gps"));
  EXPECT_EQ(0u, host.CountCalls(57));
  EXPECT_EQ(1u, host.CountCalls(59));
}

// The reload notice (slot 53) needs a table revision above 2, the loading
// progress texts (slot 54) one above 3.
class Reload : public TokaTest, public ::testing::WithParamInterface<int> {};

float ReloadingLoop(float, float, int, void* refcon) {
  Log("loop");
  if (refcon) TOKAReloadPlugins();
  return -1;
}

TEST_P(Reload, AskedForInAFlightLoopItRunsAfterThePassAndTakesThePluginsLoops) {
  host.table.revision = GetParam();
  AddScripted("a.orv", "alpha");
  Initialize();
  AddAircraftPlugin("gps");
  TOKAEventHook(3, 0, 0, 0);
  std::string root = tree.root();
  host.onCall[25] = [root](const HostCall& call) -> intptr_t {
    std::strcpy(call.arg<char*>(0), root.c_str());
    return 0;
  };
  TOKARegisterFlightLoopCallback(ReloadingLoop, -1, nullptr);  // the simulator's own
  RunAs(1, [] { TOKARegisterFlightLoopCallback(ReloadingLoop, -1, (void*)1); });
  RunAs(2, [] { TOKARegisterFlightLoopCallback(ReloadingLoop, -1, nullptr); });
  Events().clear();
  host.ClearRecords();

  // The reload waits until the pass is over.
  TOKAEventHook(0, 1.0f, 0, 0);
  EXPECT_EQ((Lines{"loop@2", "loop@1", "loop@0", "alpha.disable@1", "gps.disable@2",
                   "gps.stop@2", "alpha.stop@1", "alpha.start@1", "gps.start@2",
                   "alpha.enable@1", "gps.enable@2"}),
            TakeEvents());
  EXPECT_EQ(3, TOKACountPlugins());
  Lines notices;
  for (const HostCall& call : host.CallsTo(53))
    notices.insert(notices.end(), call.strings.begin(), call.strings.end());
  const Lines notice = {"Please place your new plugin in the plugins folder.",
                       "I will then reload all plugins.", "", ""};
  EXPECT_EQ(GetParam() > 2 ? notice : Lines{}, notices);
  EXPECT_EQ(GetParam() > 3 ? 1u : 0u, host.CountCalls(54));

  // Only one reload per request; the plugins' loops went with them.
  TOKAEventHook(0, 2.0f, 0, 0);
  EXPECT_EQ(Lines{"loop@0"}, Events());
}

INSTANTIATE_TEST_SUITE_P(TableRevision, Reload, ::testing::Values(2, 3, 4));

}  // namespace
