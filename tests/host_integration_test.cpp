// The reference host and the real library together: a scripted plugin asks
// for the simulator's services through the library's functions, and the test
// checks what the host's world answered or how it changed.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <regex>

#include "harness/harness.h"
#include "host/commands.h"
#include "host/config.h"
#include "host/menus.h"
#include "host/output.h"
#include "host/render/render.h"
#include "host/run.h"
#include "host/scenario/scenario.h"
#include "host/services.h"
#include "host/system.h"
#include "host/world/aircraft.h"
#include "host/world/navigation.h"
#include "host/world/world.h"

using namespace toka_host;
using namespace toka_test;

namespace {

constexpr double kPi = 3.14159265358979323846;

double Haversine(double lat1, double lon1, double lat2, double lon2) {
  double p1 = lat1 * kPi / 180, p2 = lat2 * kPi / 180;
  double dp = p2 - p1, dl = (lon2 - lon1) * kPi / 180;
  double a = std::sin(dp / 2) * std::sin(dp / 2) +
             std::cos(p1) * std::cos(p2) * std::sin(dl / 2) * std::sin(dl / 2);
  return 2 * 6371008.8 * std::asin(std::sqrt(a));
}

// Plugin callbacks are plain functions with a refcon; these hand the call on
// to the std::function the refcon points to.
template <class F>
F& Target(void* refcon) {
  return *static_cast<F*>(refcon);
}
using DrawFn = std::function<int(int phase, int before)>;
int DrawThunk(int phase, int before, void* refcon) { return Target<DrawFn>(refcon)(phase, before); }
using CommandFn = std::function<int(int phase)>;
int CommandThunk(TOKACommandRef, int phase, void* refcon) { return Target<CommandFn>(refcon)(phase); }
using LoopFn = std::function<float(float sinceLastLoop)>;
float LoopThunk(float, float sinceLastLoop, int, void* refcon) {
  return Target<LoopFn>(refcon)(sinceLastLoop);
}
using CameraFn = std::function<int(TOKACameraPosition_t*, int losing)>;
int CameraThunk(TOKACameraPosition_t* position, int losing, void* refcon) {
  return Target<CameraFn>(refcon)(position, losing);
}
using LoadedFn = std::function<void(TOKAObjectRef)>;
void LoadedThunk(TOKAObjectRef object, void* refcon) { Target<LoadedFn>(refcon)(object); }

class HostIntegration : public ::testing::Test {
protected:
  TempTree tree;
  std::string output;
  HostOptions options;
  PluginScript* tester = nullptr;
  int id = -1;  // the tester's plugin ID
  bool running = false;

  void SetUp() override {
    SetOutputCapture(&output);
    Events().clear();
    options.config.root = tree.root();
    options.library = TOKA_LIBRARY_FILE;
    options.render = false;  // the drawing test asks for pixels
    tester = &AddPlugin("Resources/plugins/tester.orv", "tester");
  }
  void TearDown() override {
    Stop();
    SetOutputCapture(nullptr);
  }

  PluginScript& AddPlugin(const std::string& relativePath, const std::string& name) {
    PluginScript& script = Script(tree.AddPlugin(relativePath, "scripted"));
    script.name = name;
    script.signature = "test." + name;
    return script;
  }
  // Input the user gives at a frame, as scenario steps.
  void At(int frame, const std::string& text) {
    ScenarioStep step;
    std::string error;
    ASSERT_TRUE(ParseScenarioStep(text, frame, "--at", step, error)) << text << ": " << error;
    options.steps.push_back(step);
  }
  void Start() {
    std::string error;
    ASSERT_TRUE(StartHost(options, error)) << error;
    running = true;
    id = TOKAFindPluginBySignature("test.tester");
    ASSERT_NE(-1, id);
  }
  void Stop() {
    if (running) StopHost();
    running = false;
  }
  void Frames(int count) {
    for (int i = 0; i < count; ++i) RunFrame();
  }
  void AsTester(const std::function<void()>& fn) {
    bool ran = false;
    RunAs(id, [&] {
      ran = true;
      fn();
    });
    EXPECT_TRUE(ran) << "the tester did not run the code";
  }
  bool Received(int message, int param) {
    std::string wanted = "tester.message(0," + std::to_string(message) + "," +
                         std::to_string(param) + ")@" + std::to_string(id);
    return std::find(Events().begin(), Events().end(), wanted) != Events().end();
  }
};

struct NavInfo {
  TOKANavRef ref;
  int type = 0, frequency = 0;
  float latitude = 0, longitude = 0;
  std::string id;
};

// The host's own searches are tested with its services; here every
// argument and buffer has to arrive through the library in its place.
TEST_F(HostIntegration, NavaidsFmsAndGpsAnswerFromTheHostsDatabase) {
  Start();
  AsTester([&] {
    std::vector<NavInfo> all;
    for (TOKANavRef ref = TOKAGetFirstNavAid(); ref != -1; ref = TOKAGetNextNavAid(ref)) {
      NavInfo info;
      info.ref = ref;
      char navID[32], name[256], region;
      float height, heading;
      ASSERT_EQ(1, TOKAGetNavAidInfo(ref, &info.type, &info.latitude, &info.longitude, &height,
                                     &info.frequency, &heading, navID, name, &region));
      info.id = navID;
      const NavAid* truth = NavAidAt(ref);
      ASSERT_TRUE(truth);
      EXPECT_EQ(truth->id, info.id);
      EXPECT_EQ(truth->name, std::string(name));
      EXPECT_EQ(truth->type, info.type);
      EXPECT_EQ(truth->frequency, info.frequency);
      EXPECT_EQ((float)truth->latitude, info.latitude);
      EXPECT_EQ((float)truth->longitude, info.longitude);
      EXPECT_EQ(truth->elevation, height);
      EXPECT_EQ(truth->heading, heading);
      all.push_back(info);
    }
    ASSERT_EQ(nullptr, NavAidAt((TOKANavRef)all.size()));
    EXPECT_EQ(all.front().ref, TOKAFindFirstNavAidOfType(all.front().type));
    EXPECT_EQ(all.back().ref, TOKAFindLastNavAidOfType(all.back().type));

    // The nearest VOR or NDB to a point, of those with a fragment of "R" in
    // their ID, against a search of our own.
    float lat = 48.3f, lon = -122.95f;
    const NavInfo* nearest = nullptr;
    for (const NavInfo& n : all)
      if ((n.type == kNavNDB || n.type == kNavVOR) && n.id.find('R') != std::string::npos &&
          (!nearest || Haversine(lat, lon, n.latitude, n.longitude) <
                           Haversine(lat, lon, nearest->latitude, nearest->longitude)))
        nearest = &n;
    ASSERT_TRUE(nearest);
    EXPECT_EQ(nearest->ref, TOKAFindNavAid(nullptr, "r", &lat, &lon, nullptr, kNavNDB | kNavVOR));
    int frequency = nearest->frequency;
    EXPECT_EQ(nearest->ref, TOKAFindNavAid(nullptr, nullptr, nullptr, nullptr, &frequency, nearest->type));

    // A flight plan of a navaid and a bare position; the GPS flies to the
    // destination entry.
    EXPECT_EQ(1, TOKASetFMSEntryInfo(0, nearest->ref, 5000));
    EXPECT_EQ(1, TOKASetFMSEntryLatLon(3, 47.25f, -122.75f, 3000));
    EXPECT_EQ(4, TOKACountFMSEntries());
    int type, altitude;
    char entryID[32];
    TOKANavRef ref;
    float entryLat, entryLon;
    ASSERT_EQ(1, TOKAGetFMSEntryInfo(0, &type, entryID, &ref, &altitude, &entryLat, &entryLon));
    EXPECT_EQ(nearest->type, type);
    EXPECT_EQ(nearest->id, entryID);
    EXPECT_EQ(nearest->ref, ref);
    EXPECT_EQ(5000, altitude);
    EXPECT_EQ(nearest->latitude, entryLat);
    EXPECT_EQ(nearest->longitude, entryLon);
    ASSERT_EQ(1, TOKAGetFMSEntryInfo(3, &type, entryID, &ref, &altitude, &entryLat, &entryLon));
    EXPECT_EQ(kNavLatLon, type);
    EXPECT_EQ(3000, altitude);
    EXPECT_EQ(47.25f, entryLat);
    EXPECT_EQ(-122.75f, entryLon);
    EXPECT_EQ(1, TOKASetDestinationFMSEntry(0));
    EXPECT_EQ(1, TOKASetDisplayedFMSEntry(3));
    EXPECT_EQ(nearest->type, TOKAGetGPSDestinationType());
    EXPECT_EQ(nearest->ref, TOKAGetGPSDestination());
    EXPECT_EQ(0, TOKAGetDestinationFMSEntry());
    EXPECT_EQ(3, TOKAGetDisplayedFMSEntry());
    EXPECT_EQ(1, TOKAClearFMSEntry(3));
    EXPECT_EQ(1, TOKACountFMSEntries());
  });
}

TEST_F(HostIntegration, CoordinatesRoundTripAndProbesFindTheFlatGroundWithinItsExtent) {
  options.config.airport = "KOLM";
  options.config.groundElevation = 120;
  options.config.terrainExtent = 5000;
  Start();
  const Airport& airport = *FindAirport("KOLM");
  AsTester([&] {
    double x, y, z;
    TOKAWorldToLocal(airport.latitude, airport.longitude, 120, &x, &y, &z);
    EXPECT_NEAR(0, std::hypot(x, z), 1e-6);
    EXPECT_NEAR(120, y, 1e-6);
    for (double d : {-0.4, 0.6}) {
      double lat = airport.latitude + d, lon = airport.longitude - d / 2, la, lo, el;
      TOKAWorldToLocal(lat, lon, 3000 * d, &x, &y, &z);
      TOKALocalToWorld(x, y, z, &la, &lo, &el);
      EXPECT_NEAR(lat, la, 1e-6);
      EXPECT_NEAR(lon, lo, 1e-6);
      EXPECT_NEAR(3000 * d, el, 1e-3);
    }

    TOKAProbeRef probe = TOKACreateProbe(TOKA_ProbeY);
    TOKAProbeInfo_t info;
    info.structSize = sizeof info;
    ASSERT_EQ(TOKA_ProbeHitTerrain, TOKAProbeTerrainXYZ(probe, 1200, 800, -2500, &info));
    double qLat, qLon, qEl, lat, lon, el;
    TOKALocalToWorld(1200, 800, -2500, &qLat, &qLon, &qEl);
    TOKALocalToWorld(info.locationX, info.locationY, info.locationZ, &lat, &lon, &el);
    EXPECT_NEAR(120, el, 0.01);  // on the ground, straight below the query
    EXPECT_NEAR(qLat, lat, 1e-6);
    EXPECT_NEAR(qLon, lon, 1e-6);
    EXPECT_NEAR(1, info.normalY, 1e-3);
    EXPECT_EQ(0, info.isWet);
    EXPECT_EQ(TOKA_ProbeMissed, TOKAProbeTerrainXYZ(probe, 4000, 0, 3500, &info));  // 5315 m out
    TOKADestroyProbe(probe);
  });
}

TEST_F(HostIntegration, PluginsReadAndWriteTheWorldThroughItsDataRefsEveryFrame) {
  options.config.step = 0.1;
  Start();
  struct Sample {
    int frame;
    float elapsed, sinceLastLoop;
    double latitude, longitude;
  };
  std::vector<Sample> samples;
  TOKADataRef latitude = nullptr, longitude = nullptr;
  LoopFn loop = [&](float sinceLastLoop) {
    samples.push_back({gFrame, TOKAGetElapsedTime(), sinceLastLoop, TOKAGetDatad(latitude),
                       TOKAGetDatad(longitude)});
    return -1.0f;
  };
  AsTester([&] {
    // The library stamped its build date and time into the host's dataref.
    char stamp[256] = {0};
    TOKADataRef build = TOKAFindDataRef("sim/version/toka_build_string");
    ASSERT_TRUE(build);
    int length = TOKAGetDatab(build, stamp, 0, sizeof stamp);
    EXPECT_GT(length, (int)std::strlen(stamp));
    EXPECT_TRUE(std::regex_match(std::string(stamp),
                                 std::regex(R"([A-Z][a-z]{2} [ 1-3]\d \d{4} \d\d:\d\d:\d\d)")))
        << stamp;
    latitude = TOKAFindDataRef("sim/flightmodel/position/latitude");
    longitude = TOKAFindDataRef("sim/flightmodel/position/longitude");
    TOKARegisterFlightLoopCallback(LoopThunk, -1, &loop);
  });
  Frames(30);
  ASSERT_EQ(30u, samples.size());
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(i + 1, samples[i].frame);
    EXPECT_EQ((float)((i + 1) * 0.1), samples[i].elapsed) << i;
    EXPECT_EQ(samples[i].elapsed, samples[i].sinceLastLoop) << i;
  }
  // The user flies straight at its ground speed.
  float speed = 0;
  AsTester([&] { speed = TOKAGetDataf(TOKAFindDataRef("sim/flightmodel/position/groundspeed")); });
  EXPECT_GT(speed, 0);
  EXPECT_NEAR(speed * 29 * 0.1, Haversine(samples[0].latitude, samples[0].longitude,
                                          samples[29].latitude, samples[29].longitude), 0.01);

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

TEST_F(HostIntegration, CommandsRunBeforeHandlersTheSimulatorAndAfterHandlersInOrder) {
  At(1, "key P");
  Start();
  std::vector<std::string> seen;
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
    ASSERT_TRUE(pause);
    TOKARegisterCommandHandler(pause, CommandThunk, 1, &before);
    TOKARegisterCommandHandler(pause, CommandThunk, 0, &after);
    TOKACommandOnce(pause);
  });
  std::vector<std::string> toggled = {"before 0 running", "after 0 paused", "before 2 paused",
                                      "after 2 paused"};
  EXPECT_EQ(toggled, seen);
  // The user's key goes the same way.
  seen.clear();
  Frames(1);
  EXPECT_EQ((std::vector<std::string>{"before 0 paused", "after 0 running", "before 2 running",
                                      "after 2 running"}),
            seen);
  // A before-handler that consumes the command stops the simulator and the
  // after-handlers; it runs first, being the newest.
  seen.clear();
  AsTester([&] {
    TOKARegisterCommandHandler(pause, CommandThunk, 1, &consume);
    TOKACommandOnce(pause);
  });
  EXPECT_EQ((std::vector<std::string>{"consume 0 running", "consume 2 running"}), seen);
  EXPECT_FALSE(gPaused);

  // A plugin's own command, held for three frames, repeats once per frame.
  seen.clear();
  AsTester([&] {
    hold = TOKACreateCommand("tester/hold", "Held down.");
    ASSERT_TRUE(hold);
    EXPECT_EQ(hold, TOKAFindCommand("tester/hold"));
    TOKARegisterCommandHandler(hold, CommandThunk, 0, &held);
    TOKACommandBegin(hold);
  });
  EXPECT_TRUE(IsCommandHeld(hold));
  Frames(3);
  AsTester([&] { TOKACommandEnd(hold); });
  EXPECT_FALSE(IsCommandHeld(hold));
  EXPECT_EQ((std::vector<std::string>{"held 0 running", "held 1 running", "held 1 running",
                                      "held 1 running", "held 2 running"}),
            seen);
}

std::vector<std::string> gPicks;
void NotePick(void* menuRef, void* itemRef) {
  gPicks.push_back(std::string((const char*)menuRef) + "/" + (const char*)itemRef + "@" +
                   std::to_string(TOKAGetMyID()));
}

TEST_F(HostIntegration, PluginMenusShowInTheMenuBarAndTheUsersPicksReachTheirHandler) {
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
  At(1, "menu \"Plugins/Tester/Alpha\"");
  At(1, "menu \"Plugins/Tester/Beta\"");
  At(2, "menu \"Plugins/Tester/Alpha\"");
  Start();
  EXPECT_NE(std::string::npos,
            MenuTreeText().find("Plugins >\n  Tester >\n    Alpha [x]\n    ----\n"
                                "    Beta [ ] (disabled)\n"))
      << MenuTreeText();
  Frames(1);
  EXPECT_EQ(std::vector<std::string>{"tester/alpha@" + std::to_string(id)}, gPicks);
  EXPECT_EQ(1, ScenarioFailures());  // the pick of the disabled Beta was refused

  // Removing an item moves the later ones up; the pick still finds its own.
  AsTester([&] {
    TOKARemoveMenuItem(menu, 0);
    TOKAEnableMenuItem(menu, 1, 1);
    TOKASetMenuItemName(menu, 1, "Gamma", 0);
  });
  gPicks.clear();
  EXPECT_TRUE(PickMenuItem("Plugins/Tester/Gamma"));
  Frames(1);  // Alpha is gone
  EXPECT_EQ(std::vector<std::string>{"tester/beta@" + std::to_string(id)}, gPicks);
  EXPECT_EQ(2, ScenarioFailures());  // and so was the pick of the removed Alpha

  Stop();  // the plugin's menu and its item in the Plugins menu go with it
  EXPECT_EQ(std::string::npos, MenuTreeText().find("Tester")) << MenuTreeText();
  EXPECT_NE(std::string::npos, MenuTreeText().find("Plugins >\n"));
}

TEST_F(HostIntegration, ObjectsLoadInTheBackgroundUntilTheNextFrameAndAreDrawnAsMarkers) {
  std::string tower = tree.AddFile("Resources/objects/tower.obj");
  tree.AddFile("Resources/objects/mast.obj");
  Start();
  std::vector<std::string> loads;
  std::vector<TOKAObjectRef> objects;
  LoadedFn loaded = [&](TOKAObjectRef object) {
    loads.push_back(std::string(object ? "object" : "null") + " frame " + std::to_string(gFrame) +
                    " @" + std::to_string(TOKAGetMyID()));
    if (object) objects.push_back(object);
  };
  TOKADrawInfo_t where[2] = {{sizeof(TOKADrawInfo_t), 15, 120, -400, 0, 0, 0},
                             {sizeof(TOKADrawInfo_t), -25, 110, -600, 0, 90, 0}};
  DrawFn draw = [&](int, int) {
    for (TOKAObjectRef object : objects) TOKADrawObjects(object, 2, where, 1, 0);
    return 1;
  };
  std::vector<std::string> found;
  AsTester([&] {
    TOKALoadObjectAsync("Resources/objects/tower.obj", LoadedThunk, &loaded);
    TOKALoadObjectAsync("Resources/objects/missing.obj", LoadedThunk, &loaded);
    TOKARegisterDrawCallback(DrawThunk, 20, 0, &draw);
    auto collect = [](const char* path, void* refcon) {
      static_cast<std::vector<std::string>*>(refcon)->push_back(path);
    };
    EXPECT_EQ(2, TOKALookupObjects("Resources/objects/t*.obj", 47, -122, collect, &found) +
                     TOKALookupObjects("Resources/objects/m*", 47, -122, nullptr, nullptr));
  });
  EXPECT_EQ(std::vector<std::string>{tower}, found);
  EXPECT_TRUE(loads.empty());
  Frames(1);
  std::string me = " @" + std::to_string(id);
  EXPECT_EQ((std::vector<std::string>{"object frame 1" + me, "null frame 1" + me}), loads);
  EXPECT_EQ(1, LoadedObjectCount());
  std::vector<Marker> drawn;
  for (const Marker& marker : gMarkers)
    if (marker.kind == 'O') drawn.push_back(marker);
  ASSERT_EQ(2u, drawn.size());
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(where[i].x, drawn[i].x);
    EXPECT_EQ(where[i].y, drawn[i].y);
    EXPECT_EQ(where[i].z, drawn[i].z);
  }

  // A load still under way when the plugin goes is undone, and its
  // callback never runs; the plugin's loaded object is unloaded with it.
  AsTester([&] { TOKALoadObjectAsync("Resources/objects/mast.obj", LoadedThunk, &loaded); });
  Stop();
  EXPECT_EQ(2u, loads.size());
  EXPECT_EQ(0, LoadedObjectCount());
}

// The same folder as a path relative to the working folder, as a user may
// give the root on the command line.
std::string RelativeToWorkingFolder(const std::string& folder) {
  char* cwd = getcwd(nullptr, 0);
  std::string up;
  for (const char* c = cwd; *c; ++c)
    if (*c == '/' && c[1]) up += "../";
  std::free(cwd);
  return up + folder.substr(1);
}

TEST_F(HostIntegration, APluginThatAcquiresThePlanesDecidesWhatTheHostFlies) {
  AddPlugin("Aircraft/Trainer/plugins/panel/lin.orv", "panel");
  AddPlugin("Aircraft/Jet/plugins/fms/lin.orv", "jetfms");
  options.config.root = RelativeToWorkingFolder(tree.root());
  Start();
  const std::string root = gConfig.root;  // the host's full path of it
  ASSERT_EQ('/', root[0]);
  // A new user aircraft, given below the root: its plugins replace the old
  // one's on the next frame.
  AsTester([&] { TOKASetUsersAircraft("Aircraft/Jet/jet.acf"); });
  Events().clear();
  Frames(1);
  EXPECT_EQ((std::vector<std::string>{"panel.disable@2", "panel.stop@2", "jetfms.start@2",
                                      "jetfms.enable@2"}),
            [] {
              std::vector<std::string> lifecycle;
              for (const std::string& e : Events())
                if (e.find(".message(") == std::string::npos) lifecycle.push_back(e);
              return lifecycle;
            }());
  AsTester([&] {
    char name[512], path[512];
    TOKAGetNthAircraftModel(0, name, path);
    EXPECT_EQ(root + "Aircraft/Jet/jet.acf", std::string(path));
    EXPECT_STREQ("jet.acf", name);
  });

  char heavy[] = "Aircraft/Traffic/Heavy/heavy.acf", ignored[] = "ignored.acf";
  char* wishes[] = {ignored, heavy, nullptr};
  AsTester([&] {
    ASSERT_EQ(1, TOKAAcquirePlanes(wishes, nullptr, nullptr));
    TOKASetActiveAircraftCount(2);
    TOKADisableAIForPlane(1);
  });
  std::vector<Aircraft> before = gAircraft;
  Events().clear();
  Frames(1);
  EXPECT_EQ(root + heavy, gAircraft[1].path);
  EXPECT_EQ(before[0].path, gAircraft[0].path);
  EXPECT_EQ(before[2].path, gAircraft[2].path);
  EXPECT_FALSE(gAircraft[2].active);
  EXPECT_TRUE(gAircraft[1].aiDisabled);
  EXPECT_NEAR(gAircraft[0].groundSpeed * gConfig.step,
              Haversine(before[0].latitude, before[0].longitude, gAircraft[0].latitude,
                        gAircraft[0].longitude),
              1e-3);
  for (int i : {1, 2}) {
    EXPECT_EQ(before[i].latitude, gAircraft[i].latitude) << i;
    EXPECT_EQ(before[i].longitude, gAircraft[i].longitude) << i;
  }
  std::vector<int> shown;
  for (const Marker& marker : gMarkers)
    if (marker.kind == 'A') shown.push_back(marker.index);
  EXPECT_EQ((std::vector<int>{0, 1}), shown);
  Frames(1);
  EXPECT_TRUE(Received(105, 0));  // the number of aircraft changed
  EXPECT_TRUE(Received(106, 1));  // aircraft 1 got a new model
  EXPECT_TRUE(Received(102, 1));

  std::string small = root + "Aircraft/Traffic/Small/small.acf";
  AsTester([&] {
    int total, active, controller;
    TOKACountAircraft(&total, &active, &controller);
    EXPECT_EQ((int)gAircraft.size(), total);
    EXPECT_EQ(2, active);
    EXPECT_EQ(id, controller);
    TOKASetAircraftModel(2, small.c_str());  // the host knows 3 aircraft: loaded at once
    EXPECT_EQ(small, gAircraft[2].path);
    TOKAReleasePlanes();
  });
  EXPECT_FALSE(gAircraft[1].aiDisabled);
  before = gAircraft;
  Frames(1);
  for (const Aircraft& plane : gAircraft) EXPECT_TRUE(plane.active);
  EXPECT_NE(before[1].latitude, gAircraft[1].latitude);
  EXPECT_EQ(small, gAircraft[2].path);  // released: the wishes are gone, the models stay
}

TEST_F(HostIntegration, APluginDrivesTheCameraTheHostDrawsWithUntilTheViewChanges) {
  At(2, "command sim/view/default_view once");
  Start();
  // The plugin puts the camera 300 m behind the user's aircraft at its
  // height, looking along its heading: the aircraft is in the middle of
  // the screen (x east, z south, heading clockwise from north).
  TOKACameraPosition_t given{};
  std::vector<std::string> calls;
  CameraFn control = [&](TOKACameraPosition_t* position, int losing) {
    calls.push_back((losing ? "losing " : "adjust ") + std::to_string(gFrame) +
                    (position ? "" : " null"));
    if (!position) return 1;
    const Aircraft& user = gAircraft[0];
    double x, y, z, h = user.heading * kPi / 180;
    TOKAWorldToLocal(user.latitude, user.longitude, user.elevation, &x, &y, &z);
    given = {(float)(x - 300 * std::sin(h)), (float)y, (float)(z + 300 * std::cos(h)), 0,
             user.heading, 0, 2};
    *position = given;
    return 1;
  };
  AsTester([&] { TOKAControlCamera(TOKA_ControlCameraUntilViewChanges, CameraThunk, &control); });
  Frames(1);
  const float* expected = &given.x;
  for (int i = 0; i < 7; ++i) EXPECT_EQ(expected[i], gCamera[i]) << i;
  AsTester([&] {
    TOKACameraPosition_t read;
    TOKAReadCameraPosition(&read);
    EXPECT_EQ(0, std::memcmp(&given, &read, sizeof read));
  });
  auto user = std::find_if(gMarkers.begin(), gMarkers.end(),
                           [](const Marker& m) { return m.kind == 'A' && m.index == 0; });
  ASSERT_NE(gMarkers.end(), user);
  EXPECT_TRUE(user->onScreen);
  EXPECT_NEAR(gConfig.screenWidth / 2, user->screenX, 1);
  EXPECT_NEAR(gConfig.screenHeight / 2, user->screenY, 1);

  // The default view (frame 2) ends control taken until the view changes;
  // the host's own chase view is back on the next frame.
  Frames(2);
  EXPECT_EQ((std::vector<std::string>{"adjust 1", "adjust 2", "losing 3 null"}), calls);
  EXPECT_EQ(gAircraft[0].heading, gCamera[4]);
  EXPECT_EQ(1, gCamera[6]);
  AsTester([&] { EXPECT_EQ(0, TOKAIsCameraBeingControlled(nullptr)); });
}

TEST_F(HostIntegration, SystemServicesSituationFilesAndReloadsReachTheSimulator) {
  Start();
  std::string situation = tree.root() + "Output/preferences/flights/test.sit";
  AsTester([&] {
    char path[512];
    TOKAGetSystemPath(path);
    EXPECT_EQ(tree.root(), path);
    TOKAGetPrefsPath(path);
    EXPECT_EQ(tree.root() + "Output/preferences/", path);
    int host = 0, toka = 0, second = 0;
    TOKAGetVersions(&host, &toka, &second);
    EXPECT_EQ(kHostVersion, host);
    EXPECT_EQ(kHostID, second);
    TOKASpeakString("Gear down");
    TOKASimulateKeyPress(1, 65);
    TOKACommandButtonPress(7);
    EXPECT_EQ(1, TOKASaveDataFile(1, "flights/test.sit"));
  });
  EXPECT_TRUE(std::ifstream(situation).good());
  Aircraft saved = gAircraft[0];
  Frames(3);
  AsTester([&] {
    auto frameNumber = reinterpret_cast<int (*)()>(TOKAFindSymbol("HostFrameNumber"));
    ASSERT_TRUE(frameNumber);
    EXPECT_EQ(3, frameNumber());
    EXPECT_EQ(nullptr, TOKAFindSymbol("main"));
    TOKACommandButtonRelease(7);
    EXPECT_EQ(1, TOKALoadDataFile(1, "flights/test.sit"));
  });
  EXPECT_EQ(saved.latitude, gAircraft[0].latitude);
  EXPECT_EQ(saved.longitude, gAircraft[0].longitude);
  // The held button repeated once per frame, besides its press.
  int repeats = 0;
  for (const RecordedInput& input : gRecordedInputs)
    repeats += input.slot == 24 && input.values == std::vector<int>{0, 1, 7};
  EXPECT_EQ(1 + 3, repeats);
  EXPECT_NE(std::string::npos,
            output.find("[speech] Gear down\n[key] type 1 key 65\n[button] down 7\n"));
  EXPECT_NE(std::string::npos, output.find("[button] up 7\n"));

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
  std::vector<std::string> tester;
  for (const std::string& e : Events())
    if (e.compare(0, 7, "tester.") == 0 && e.find(".message(") == std::string::npos)
      tester.push_back(e);
  EXPECT_EQ((std::vector<std::string>{"tester.disable@1", "tester.stop@1", "tester.start@1",
                                      "tester.enable@1"}),
            tester);
}

struct Click {
  int x, y, status, plugin;
  bool operator==(const Click& o) const {
    return x == o.x && y == o.y && status == o.status && plugin == o.plugin;
  }
};
std::vector<Click> gClicks;
int NoteClick(TOKAWindowID, int x, int y, int status, void*) {
  gClicks.push_back({x, y, status, TOKAGetMyID()});
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
  EXPECT_EQ((std::vector<Click>{{50, 80, TOKA_MOUSE_DOWN, id}, {50, 80, TOKA_MOUSE_UP, id}}), gClicks);
  // Nothing of the sky or the aircraft, only the plugin's text, in the
  // cells the font's metrics promise.
  int left = width, right = -1, bottom = height, top = -1;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (PixelAt(x, y) == 0x00FF00) {
        left = std::min(left, x), right = std::max(right, x);
        bottom = std::min(bottom, y), top = std::max(top, y);
      }
  EXPECT_EQ(30, left);
  EXPECT_LT(right, 30 + measured);
  EXPECT_GE(right, 30 + measured - charWidth);
  EXPECT_GE(bottom, 60);
  EXPECT_LT(top, 60 + charHeight);
  EXPECT_EQ(5 * charWidth, measured);
  for (int x = 0; x < width; ++x) ASSERT_EQ(0u, PixelAt(x, height - 1)) << x;
  for (const Marker& marker : gMarkers) EXPECT_NE('A', marker.kind);

  AsTester([&] {
    TOKAUnregisterDrawCallback(DrawThunk, 5, 1, &skip);
    TOKAUnregisterDrawCallback(DrawThunk, 20, 1, &skip);
  });
  Frames(1);
  for (int x = 0; x < width; ++x) ASSERT_NE(0u, PixelAt(x, height - 1)) << x;
  EXPECT_EQ(gAircraft.size(), (size_t)std::count_if(gMarkers.begin(), gMarkers.end(),
                                                    [](const Marker& m) { return m.kind == 'A'; }));
}

}  // namespace
