// The reference host and the real library together, in the test's process:
// start-up and the frame loop, and scripted plugins asking for the
// simulator's services through the library's functions while the test
// checks what the host's world answered or how it changed.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <regex>

#include "harness/host_program.h"
#include "host/commands.h"
#include "host/config.h"
#include "host/library.h"
#include "host/menus.h"
#include "host/render/render.h"
#include "host/services.h"
#include "host/system.h"
#include "host/world/aircraft.h"
#include "host/world/navigation.h"
#include "host/world/world.h"

using namespace toka_host;
using namespace toka_test;

namespace {

using Strings = std::vector<std::string>;

// Plugin callbacks are plain functions with a refcon; these hand the call on
// to the std::function the refcon points to.
using DrawFn = std::function<int(int phase, int before)>;
using CommandFn = std::function<int(int phase)>;
using LoopFn = std::function<float(float sinceLastLoop)>;
int DrawThunk(int phase, int before, void* refcon) { return (*static_cast<DrawFn*>(refcon))(phase, before); }
int CommandThunk(TOKACommandRef, int phase, void* refcon) { return (*static_cast<CommandFn*>(refcon))(phase); }
float LoopThunk(float, float since, int, void* refcon) { return (*static_cast<LoopFn*>(refcon))(since); }

using HostIntegration = HostTest;

// Start-up loads the plugins of the user's aircraft and of the scenery and
// tells every plugin; a new user aircraft's plugins replace the old one's,
// and a plugin that acquires the planes decides what the host flies.
TEST_F(HostIntegration, StartUpLoadsAircraftAndSceneryPluginsAndPluginsDecideWhatTheHostFlies) {
  std::string model;
  tester->onEnable = [&] {
    char name[512], path[512];
    TOKAGetNthAircraftModel(0, name, path);
    model = path + std::string(" ") + name;
    TOKADebugString("tester: enabled\n");
  };
  AddPlugin("Aircraft/Trainer/plugins/avionics/lin.orv", "avionics");
  AddPlugin("Aircraft/Jet/plugins/fms/lin.orv", "jetfms");
  AddPlugin("Custom Scenery/Alps/plugins/lights/lin.orv", "lights");
  // Where "Custom Scenery/.." would be a package: no plugin loads from here.
  AddPlugin("plugins/stray/lin.orv", "stray");
  // The root relative to the working folder, as a user may give it.
  std::string parent = tree.root().substr(0, tree.root().rfind('/', tree.root().size() - 2) + 1);
  ASSERT_EQ(0, chdir(parent.c_str()));
  options.config.root = "./" + tree.root().substr(parent.size());
  Start();
  const std::string root = gConfig.root;  // the host's full path of it
  ASSERT_EQ(tree.root(), root);
  EXPECT_EQ(root + "Aircraft/Trainer/trainer.acf trainer.acf", model);
  // The airport, the user's aircraft (whose plugins load), two more
  // aircraft, the scenery package (whose plugins load) and the end of the
  // scenery load, in that order.
  EXPECT_EQ((Strings{"tester.start@1", "tester.enable@1", "tester.message(0,103,0)@1",
                     "tester.message(0,102,0)@1", "avionics.start@2", "avionics.enable@2",
                     "tester.message(0,102,1)@1", "avionics.message(0,102,1)@2",
                     "tester.message(0,102,2)@1", "avionics.message(0,102,2)@2", "lights.start@3",
                     "lights.enable@3", "tester.message(0,104,0)@1", "avionics.message(0,104,0)@2",
                     "lights.message(0,104,0)@3"}),
            Events());
  EXPECT_EQ(0u, output.find("Fetching plugins for " + tree.plugins() + "\n\n"));
  ExpectInOrder(output, {"[progress] Loading Plugin: tester.orv\n", "tester: enabled\n",
                         "Loaded: " + root + "Aircraft/Trainer/plugins/avionics/lin.orv.\n\n",
                         "Loaded: " + root + "Custom Scenery/Alps/plugins/lights/lin.orv.\n\n"});

  // A new user aircraft, given below the root: its plugins replace the old
  // one's on the next frame; the scenery's plugin keeps its ID, so they take
  // the next.
  AsTester([&] { TOKASetUsersAircraft("Aircraft/Jet/jet.acf"); });
  Events().clear();
  Frames(1);
  EXPECT_EQ((Strings{"avionics.disable@2", "avionics.stop@2", "jetfms.start@4", "jetfms.enable@4"}), Lifecycle());
  EXPECT_EQ(root + "Aircraft/Jet/jet.acf", gAircraft[0].path);

  char heavy[] = "Aircraft/Traffic/Heavy/heavy.acf", ignored[] = "ignored.acf";
  char* wishes[] = {ignored, heavy, nullptr};
  AsTester([&] {
    ASSERT_EQ(1, TOKAAcquirePlanes(wishes, nullptr, nullptr));
    TOKASetActiveAircraftCount(2);
    TOKADisableAIForPlane(1);
  });
  std::vector<Aircraft> before = gAircraft;
  Frames(1);
  EXPECT_EQ(root + heavy, gAircraft[1].path);
  EXPECT_EQ(before[2].path, gAircraft[2].path);
  EXPECT_FALSE(gAircraft[2].active);
  EXPECT_TRUE(gAircraft[1].aiDisabled);
  EXPECT_EQ(before[1].latitude, gAircraft[1].latitude);  // flown by the plugin, not the host
  EXPECT_NE(before[0].latitude, gAircraft[0].latitude);
  Events().clear();
  Frames(1);
  EXPECT_TRUE(Received(105, 0));  // the number of aircraft changed
  EXPECT_TRUE(Received(106, 1));  // aircraft 1 got a new model

  AsTester([&] {
    int total, active, controller;
    TOKACountAircraft(&total, &active, &controller);
    EXPECT_EQ(3 * 100 + 2 * 10 + id, total * 100 + active * 10 + controller);
  });
}

// The events the host raises, noted and passed on to the library.
int (*gRealEventHook)(int, float, int, intptr_t);
Strings gEvents;
std::vector<float> gEventTimes;
int gCompletionsAtEvent = -1;
int* gCompletions = nullptr;
int NoteEvent(int event, float elapsed, int unused, intptr_t param) {
  gEvents.push_back("event " + std::to_string(event));
  gEventTimes.push_back(elapsed);
  if (gCompletionsAtEvent == -1 && gCompletions) gCompletionsAtEvent = *gCompletions;
  return gRealEventHook(event, elapsed, unused, param);
}

void Completed(TOKAObjectRef object, void* refcon) { *static_cast<int*>(refcon) += object != nullptr; }

TEST_F(HostIntegration, EachFrameRaisesTheSimulatorsEventsInOrderWithAFixedStep) {
  options.config.step = 0.05;
  At(3, "key P");
  At(5, "scenery load \"Custom Scenery/Alps\"");
  tree.AddFolder("Custom Scenery/Alps");
  tree.AddFile("Resources/objects/tower.obj");
  Start();
  gRealEventHook = gLibrary.EventHook;
  gLibrary.EventHook = NoteEvent;
  // An object loaded in the background is there before the next frame's
  // first event.
  int completions = 0;
  gCompletions = &completions;
  HostServices()->LoadObjectAsync("Resources/objects/tower.obj", Completed, &completions);
  EXPECT_EQ(0, completions);
  Frames(2);
  EXPECT_EQ(1, gCompletionsAtEvent);
  gCompletions = nullptr;
  // The flight loops, the held commands, the second flight loop pass.
  EXPECT_EQ((Strings{"event 0", "event 9", "event 10", "event 0", "event 9", "event 10"}), gEvents);
  EXPECT_EQ((std::vector<float>{0.05f, 0.05f, 0.05f, 0.1f, 0.1f, 0.1f}), gEventTimes);

  // What the world raised during a frame reaches the library first thing in
  // the next one.
  gEvents.clear();
  HostServices()->PlaceUserAtAirport("KBFI");
  Frames(1);
  EXPECT_EQ((Strings{"event 1", "event 4", "event 0", "event 9", "event 10"}), gEvents);
  EXPECT_TRUE(gPaused);  // P went past the plugins to the simulator's key map
  gEvents.clear();
  Frames(1);
  EXPECT_EQ("event 13", gEvents.at(0));
  // A package loaded at start-up and loaded again is announced again.
  Frames(1);
  gEvents.clear();
  Frames(1);
  EXPECT_EQ((Strings{"event 12", "event 6"}), Strings(gEvents.begin(), gEvents.begin() + 2));
  // A scan finds no package it has not loaded yet: the folder holds only
  // Alps (and its own "." and "..").
  HostServices()->ReloadScenery();
  gEvents.clear();
  Frames(1);
  EXPECT_EQ("event 6", gEvents.at(0));
}

TEST_F(HostIntegration, PluginsReadAndWriteTheWorldThroughItsDataRefsEveryFrame) {
  options.config.step = 0.1;
  Start();
  struct Sample {
    float elapsed, sinceLastLoop;
    double latitude;
  };
  std::vector<Sample> samples;
  TOKADataRef latitude = nullptr;
  LoopFn loop = [&](float sinceLastLoop) {
    samples.push_back({TOKAGetElapsedTime(), sinceLastLoop, TOKAGetDatad(latitude)});
    return -1.0f;
  };
  AsTester([&] {
    // The library stamped its build date and time into the host's dataref.
    char stamp[256] = {0};
    TOKAGetDatab(TOKAFindDataRef("sim/version/toka_build_string"), stamp, 0, sizeof stamp - 1);
    EXPECT_TRUE(std::regex_match(std::string(stamp),
                                 std::regex(R"([A-Z][a-z]{2} [ 1-3]\d \d{4} \d\d:\d\d:\d\d)")))
        << stamp;
    latitude = TOKAFindDataRef("sim/flightmodel/position/latitude");
    TOKARegisterFlightLoopCallback(LoopThunk, -1, &loop);
  });
  Frames(30);
  ASSERT_EQ(30u, samples.size());
  for (int i : {0, 29}) {
    EXPECT_EQ((float)((i + 1) * 0.1), samples[i].elapsed) << i;
    EXPECT_EQ(samples[i].elapsed, samples[i].sinceLastLoop) << i;
  }
  EXPECT_NE(samples[0].latitude, samples[29].latitude);  // the user flies on

  // Written by a plugin: the aircraft moves, and a pause reaches every
  // plugin as an event on the next frame and stops the flight clock.
  AsTester([&] {
    TOKASetDatad(latitude, 47.0);
    TOKASetDatai(TOKAFindDataRef("sim/time/paused"), 1);
  });
  EXPECT_EQ(47.0, gAircraft[0].latitude);
  Events().clear();
  Frames(2);
  EXPECT_TRUE(Received(108, 1));
  EXPECT_EQ(47.0, samples.back().latitude);
  AsTester([&] {
    EXPECT_NEAR(30 * 0.1, TOKAGetDataf(TOKAFindDataRef("sim/time/total_flight_time_sec")), 1e-5);
    EXPECT_NEAR(32 * 0.1, TOKAGetDatad(TOKAFindDataRef("sim/time/total_running_time_sec")), 1e-9);
  });
}

Strings gPicks;
void NotePick(void* menuRef, void* itemRef) {
  gPicks.push_back(std::string((const char*)menuRef) + "/" + (const char*)itemRef + "@" +
                   std::to_string(TOKAGetMyID()));
}

// Commands, whether a plugin or the user's key runs them, and the user's
// picks in the menu bar, which shows the plugins' menus.
TEST_F(HostIntegration, CommandsAndMenuPicksReachTheirHandlersInTheSimulatorsOrder) {
  static char menuRef[] = "tester", alpha[] = "alpha", beta[] = "beta";
  TOKAMenuID menu = nullptr;
  tester->onEnable = [&] {
    menu = TOKACreateMenu("Tester", nullptr, 0, NotePick, menuRef);
    TOKAAppendMenuItem(menu, "Alpha", alpha, 0);
    TOKAAppendMenuSeparator(menu);
    TOKAAppendMenuItem(menu, "Beta", beta, 0);
    TOKACheckMenuItem(menu, 0, TOKA_MENU_CHECKED);
    TOKACheckMenuItem(menu, 2, TOKA_MENU_UNCHECKED);
    TOKAEnableMenuItem(menu, 2, 0);
  };
  At(1, "key P");
  At(1, "menu \"Plugins/Tester/Alpha\"");
  At(1, "menu \"Plugins/Tester/Beta\"");
  Start();
  EXPECT_NE(std::string::npos, MenuTreeText().find("Plugins >\n  Tester >\n    Alpha [x]\n    ----\n"
                                                   "    Beta [ ] (disabled)\n"))
      << MenuTreeText();
  Strings seen;
  auto note = [&](const std::string& who, int phase) {
    seen.push_back(who + " " + std::to_string(phase) + (gPaused ? " paused" : " running"));
  };
  CommandFn before = [&](int phase) { note("before", phase); return 1; };
  CommandFn after = [&](int phase) { note("after", phase); return 1; };
  CommandFn consume = [&](int phase) { note("consume", phase); return 0; };
  CommandFn held = [&](int phase) { note("held", phase); return 1; };
  TOKACommandRef pause = nullptr, hold = nullptr;
  AsTester([&] {
    pause = TOKAFindCommand("sim/operation/pause_toggle");
    TOKARegisterCommandHandler(pause, CommandThunk, 1, &before);
    TOKARegisterCommandHandler(pause, CommandThunk, 0, &after);
    TOKACommandOnce(pause);
  });
  EXPECT_EQ((Strings{"before 0 running", "after 0 paused", "before 2 paused", "after 2 paused"}), seen);
  // The user's key goes the same way.
  seen.clear();
  Frames(1);
  EXPECT_EQ((Strings{"before 0 paused", "after 0 running", "before 2 running", "after 2 running"}), seen);
  EXPECT_EQ(Strings{"tester/alpha@1"}, gPicks);
  EXPECT_EQ(1, ScenarioFailures());  // the pick of the disabled Beta was refused
  // A before-handler that consumes the command stops the simulator and the
  // after-handlers; it runs first, being the newest.
  seen.clear();
  AsTester([&] {
    TOKARegisterCommandHandler(pause, CommandThunk, 1, &consume);
    TOKACommandOnce(pause);
  });
  EXPECT_EQ((Strings{"consume 0 running", "consume 2 running"}), seen);
  EXPECT_FALSE(gPaused);

  // A plugin's own command, held for three frames, repeats once per frame.
  seen.clear();
  AsTester([&] {
    hold = TOKACreateCommand("tester/hold", "Held down.");
    EXPECT_EQ(hold, TOKAFindCommand("tester/hold"));
    TOKARegisterCommandHandler(hold, CommandThunk, 0, &held);
    TOKACommandBegin(hold);
  });
  EXPECT_TRUE(IsCommandHeld(hold));
  Frames(3);
  AsTester([&] { TOKACommandEnd(hold); });
  EXPECT_FALSE(IsCommandHeld(hold));
  EXPECT_EQ((Strings{"held 0 running", "held 1 running", "held 1 running", "held 1 running",
                     "held 2 running"}),
            seen);

  // Removing an item moves the later ones up; the pick still finds its own.
  AsTester([&] {
    TOKARemoveMenuItem(menu, 0);
    TOKAEnableMenuItem(menu, 1, 1);
    TOKASetMenuItemName(menu, 1, "Gamma", 0);
  });
  gPicks.clear();
  EXPECT_TRUE(PickMenuItem("Plugins/Tester/Gamma"));
  EXPECT_FALSE(PickMenuItem("Plugins/Tester/Alpha"));
  EXPECT_EQ(Strings{"tester/beta@1"}, gPicks);
  Stop();  // the plugin's menu and its item in the Plugins menu go with it
  EXPECT_EQ(std::string::npos, MenuTreeText().find("Tester")) << MenuTreeText();
  EXPECT_NE(std::string::npos, MenuTreeText().find("Plugins >\n"));
}


// Every argument and buffer has to arrive through the library in its place.
TEST_F(HostIntegration, NavaidsSystemServicesSituationFilesAndReloadsReachTheSimulator) {
  Start();
  AsTester([&] {
    float lat = 48.3f, lon = -122.95f;
    TOKANavRef nearest = TOKAFindNavAid(nullptr, "r", &lat, &lon, nullptr, kNavNDB | kNavVOR);
    const NavAid* truth = NavAidAt(nearest);
    ASSERT_TRUE(truth);
    int type, frequency, altitude;
    char navID[32], name[256];
    float height;
    ASSERT_EQ(1, TOKAGetNavAidInfo(nearest, &type, &lat, &lon, &height, &frequency, nullptr, navID,
                                   name, nullptr));
    EXPECT_EQ(std::string(truth->id) + " " + truth->name, navID + std::string(" ") + name);
    EXPECT_EQ((float)truth->longitude + truth->elevation, lon + height);
    EXPECT_EQ(nearest, TOKAFindNavAid(nullptr, nullptr, nullptr, nullptr, &frequency, type));
    EXPECT_EQ(kNavVOR, NavAidAt(TOKAFindLastNavAidOfType(kNavVOR))->type);

    // A flight plan of a navaid and a bare position; the GPS flies to the
    // destination entry.
    EXPECT_EQ(1, TOKASetFMSEntryInfo(0, nearest, 5000));
    EXPECT_EQ(1, TOKASetFMSEntryLatLon(3, 47.25f, -122.75f, 3000));
    EXPECT_EQ(4, TOKACountFMSEntries());
    TOKANavRef ref;
    ASSERT_EQ(1, TOKAGetFMSEntryInfo(0, &type, navID, &ref, &altitude, &lat, &lon));
    EXPECT_EQ(std::string(truth->id) + " 5000", navID + std::string(" ") + std::to_string(altitude));
    EXPECT_EQ(nearest, ref);
    EXPECT_EQ(1, TOKASetDestinationFMSEntry(0));
    EXPECT_EQ(1, TOKASetDisplayedFMSEntry(3));
    EXPECT_EQ(nearest, TOKAGetGPSDestination());
    EXPECT_EQ(0, TOKAGetDestinationFMSEntry());
    EXPECT_EQ(3, TOKAGetDisplayedFMSEntry());

    char path[512];
    TOKAGetPrefsPath(path);
    EXPECT_EQ(tree.root() + "Output/preferences/", path);
    TOKASpeakString("Gear down");
    TOKASimulateKeyPress(1, 65);
    TOKACommandButtonPress(7);
    EXPECT_EQ(1, TOKASaveDataFile(1, "flights/test.sit"));
  });
  EXPECT_TRUE(std::ifstream(tree.root() + "Output/preferences/flights/test.sit").good());
  Aircraft saved = gAircraft[0];
  Frames(3);
  AsTester([&] {
    EXPECT_EQ(3, reinterpret_cast<int (*)()>(TOKAFindSymbol("HostFrameNumber"))());
    TOKACommandButtonRelease(7);
    EXPECT_EQ(1, TOKALoadDataFile(1, "flights/test.sit"));
  });
  EXPECT_EQ(saved.latitude, gAircraft[0].latitude);
  // The held button repeated once per frame, besides its press.
  int repeats = 0;
  for (const RecordedInput& input : gRecordedInputs)
    repeats += input.slot == 24 && input.values == std::vector<int>{0, 1, 7};
  EXPECT_EQ(1 + 3, repeats);
  ExpectInOrder(output, {"[speech] Gear down\n[key] type 1 key 65\n[button] down 7\n", "[button] up 7\n"});

  // A scenery package that appeared meanwhile loads with its plugins on the
  // next frame; the situation loaded above reaches the plugins too.
  AddPlugin("Custom Scenery/Late/plugins/lamp/lin.orv", "lamp");
  Events().clear();
  AsTester([&] { TOKAReloadScenery(); });
  Frames(1);
  EXPECT_TRUE(Received(107, 0));
  EXPECT_NE(Events().end(), std::find(Events().begin(), Events().end(), "lamp.enable@2"));

  // A reload of every plugin, asked for by a plugin, runs at the end of the
  // next flight loop pass and tells the user.
  AsTester([] { TOKAReloadPlugins(); });
  Events().clear();
  Frames(1);
  EXPECT_NE(std::string::npos, output.find("[message] Please place your new plugin in the plugins "
                                           "folder.\n[message] I will then reload all plugins.\n"));
  Strings lifecycle;
  for (const std::string& e : Lifecycle())
    if (e.compare(0, 7, "tester.") == 0) lifecycle.push_back(e);
  EXPECT_EQ((Strings{"tester.disable@1", "tester.stop@1", "tester.start@1", "tester.enable@1"}), lifecycle);
}

Strings gClicks;
int NoteClick(TOKAWindowID, int x, int y, int status, void*) {
  gClicks.push_back("(" + std::to_string(x) + "," + std::to_string(y) + "," + std::to_string(status) + ")" +
                    At(TOKAGetMyID()));
  return 1;
}
void DrawGreeting(TOKAWindowID window, void*) {
  float green[3] = {0, 1, 0};
  int left, bottom;
  TOKAGetWindowGeometry(window, &left, nullptr, nullptr, &bottom);
  TOKADrawString(green, left + 10, bottom + 20, "HELLO", nullptr, 1);
}

TEST_F(HostIntegration, PluginsDrawInPhasesAndWindowsAndTheUsersClicksReachThem) {
  options.config.screenWidth = 320;
  options.config.screenHeight = 240;
  options.render = true;
  At(1, "click 50 80");
  At(1, "click 300 200");
  Start();
  int width = gConfig.screenWidth, height = gConfig.screenHeight;
  std::vector<int> phases;
  DrawFn skip = [&](int phase, int) {
    phases.push_back(phase);
    return 0;
  };
  int charWidth = 0, charHeight = 0;
  float measured = 0;
  AsTester([&] {
    TOKARegisterDrawCallback(DrawThunk, 5, 1, &skip);   // sky and ground
    TOKARegisterDrawCallback(DrawThunk, 20, 1, &skip);  // the aircraft
    TOKACreateWindow(20, 120, 220, 40, 1, DrawGreeting, nullptr, NoteClick, nullptr);
    TOKAGetFontDimensions(1, &charWidth, &charHeight, nullptr);
    measured = TOKAMeasureString(1, "HELLO", 5);
  });
  Frames(1);
  EXPECT_EQ((std::vector<int>{5, 20}), phases);
  EXPECT_EQ((Strings{"(50,80," + std::to_string(TOKA_MOUSE_DOWN) + ")" + toka_test::At(id),
                     "(50,80," + std::to_string(TOKA_MOUSE_UP) + ")" + toka_test::At(id)}),
            gClicks);
  // Nothing of the sky or the aircraft, only the plugin's text in the large
  // font (cells of 12 x 20 pixels), in the cells its metrics promise.
  EXPECT_EQ(12, charWidth);
  EXPECT_EQ(20, charHeight);
  EXPECT_EQ(5 * charWidth, measured);
  int left = width, right = -1, bottom = height, top = -1;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (PixelAt(x, y) == 0x00FF00) {
        left = std::min(left, x), right = std::max(right, x);
        bottom = std::min(bottom, y), top = std::max(top, y);
      }
  EXPECT_EQ(30, left);
  EXPECT_TRUE(right < 30 + measured && right >= 30 + measured - charWidth) << right;
  EXPECT_TRUE(bottom >= 60 && top < 60 + charHeight && top >= 60 + charHeight / 2) << bottom << " " << top;
  for (int x = 0; x < width; ++x) ASSERT_EQ(0u, PixelAt(x, height - 1)) << x;
  for (const Marker& marker : gMarkers) EXPECT_NE('A', marker.kind);

  AsTester([&] {
    TOKAUnregisterDrawCallback(DrawThunk, 5, 1, &skip);
    TOKAUnregisterDrawCallback(DrawThunk, 20, 1, &skip);
  });
  Frames(1);
  for (int x = 0; x < width; ++x) ASSERT_NE(0u, PixelAt(x, height - 1)) << x;
}

}  // namespace
