// The example plugins, built as plugin authors will copy them, loaded from
// their build folder into a simulator tree and driven frame by frame through
// the host hooks, with the fake simulator playing its part (time, menus,
// commands, camera, terrain).
#include <cmath>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "harness/data_harness.h"

using namespace toka_test;

namespace {

using Lines = std::vector<std::string>;

// The aircraft position the fake simulator publishes, when a test asks it to.
float gAircraft[3] = {0, 0, 0};

float ReadPositionf(void* refcon) { return gAircraft[(intptr_t)refcon]; }
double ReadPositiond(void* refcon) { return gAircraft[(intptr_t)refcon]; }

class Examples : public TokaTest {
protected:
  double now = 0;  // the simulator's elapsed time
  std::map<std::string, int> menus;                // host menu ID by name
  std::map<std::string, int> menuParents;          // host ID of its parent menu by name
  std::map<std::pair<int, std::string>, int> items;  // host item ID by menu and name

  void SetUp() override {
    host.onFloatCall[14] = [this](const HostCall&) { return now; };
    host.onCall[30] = [this](const HostCall& call) -> intptr_t {
      menuParents[call.strings.at(0)] = call.arg<int>(0);
      return menus[call.strings.at(0)] = 100 + (int)menus.size();
    };
    host.onCall[31] = [this](const HostCall& call) -> intptr_t {
      return items[{call.arg<int>(0), call.strings.at(0)}] = 1000 + (int)items.size();
    };
    // A font of 8 by 14 pixels.
    host.onCall[13] = [](const HostCall& call) -> intptr_t {
      *call.arg<int*>(1) = 8;
      *call.arg<int*>(2) = 14;
      *call.arg<int*>(3) = 0;
      return 0;
    };
  }

  // Copies the built example to root + relativePath.
  void AddExample(const std::string& name, const std::string& relativePath) {
    std::ifstream in(std::string(TOKA_EXAMPLES_DIR) + "/" + name + ".orv", std::ios::binary);
    ASSERT_TRUE(in) << "example " << name << " was not built";
    std::stringstream bytes;
    bytes << in.rdbuf();
    tree.AddFile(relativePath, bytes.str());
  }
  void AddExample(const std::string& name) {
    AddExample(name, "Resources/plugins/" + name + ".orv");
  }

  // Frames of `step` seconds until the elapsed time reaches `until`: both
  // processing phases, then the windows.
  void RunUntil(double until, double step = 0.5) {
    while (now + step <= until + 1e-9) {
      now += step;
      TOKAEventHook(0, (float)now, 0, 0);
      TOKAEventHook(10, (float)now, 0, 0);
    }
  }

  // The log lines (without their newline) that start with prefix; taken
  // lines are forgotten, so each call returns what came since the last.
  Lines LogLines(const std::string& prefix) {
    Lines lines;
    std::istringstream log(host.log);
    for (std::string line; std::getline(log, line);)
      if (line.compare(0, prefix.size(), prefix) == 0) lines.push_back(line);
    Lines fresh(lines.begin() + std::min(lines.size(), seen[prefix]), lines.end());
    seen[prefix] = lines.size();
    return fresh;
  }

  // Presses the one hot key that `signature` registered; returns the hook's
  // result (0: consumed).
  int PressHotKeyOf(const char* signature) {
    TOKAPluginID plugin = TOKAFindPluginBySignature(signature);
    for (int i = 0; i < TOKACountHotKeys(); ++i) {
      char key = 0;
      int flags = 0;
      TOKAPluginID owner = -1;
      TOKAGetHotKeyInfo(TOKAGetNthHotKey(i), &key, &flags, nullptr, &owner);
      if (owner == plugin) return TOKAKeyPressHook(0, flags, key);
    }
    ADD_FAILURE() << signature << " has no hot key";
    return -1;
  }

  // The simulator publishes the aircraft position as floats or doubles.
  void PublishAircraftPosition(bool asDouble) {
    const char* names[3] = {"sim/flightmodel/position/local_x",
                            "sim/flightmodel/position/local_y",
                            "sim/flightmodel/position/local_z"};
    for (intptr_t i = 0; i < 3; ++i)
      TOKARegisterDataAccessor(names[i], asDouble ? DataTypeDouble : DataTypeFloat, 0, nullptr,
                               nullptr, asDouble ? nullptr : ReadPositionf, nullptr,
                               asDouble ? ReadPositiond : nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, nullptr, (void*)i, nullptr);
  }

private:
  std::map<std::string, size_t> seen;
};

// ---- hello ----------------------------------------------------------------

class HelloExample : public Examples {
protected:
  struct Drawn {
    std::vector<int> box;  // left, top, right, bottom; empty when not drawn
    Lines texts;
    std::vector<std::pair<int, int>> at;  // where each text starts
  };
  Drawn Draw() {
    size_t from = host.calls.size();
    EXPECT_EQ(1, TOKADoDrawingHook(20, 0));
    Drawn drawn;
    for (size_t i = from; i < host.calls.size(); ++i) {
      const HostCall& call = host.calls[i];
      if (call.slot == 10)
        for (int i = 0; i < 4; ++i) drawn.box.push_back(call.arg<int>(i));
      if (call.slot == 11) {
        drawn.texts.push_back(call.strings.at(0));
        drawn.at.push_back({call.arg<int>(1), call.arg<int>(2)});
      }
    }
    return drawn;
  }
  int Checked() {
    int checked = -5;
    EXPECT_EQ(0, TOKACheckMenuHook(menus.at("Hello"), 0, &checked));
    return checked;
  }
  // A click in the middle of a rectangle: 0 when a window took it.
  int ClickAt(const std::vector<int>& box) {
    int x = (box[0] + box[2]) / 2, y = (box[1] + box[3]) / 2;
    int result = TOKAMouseClickHook(x, y, 1);
    TOKAMouseClickHook(x, y, 0);
    return result;
  }
};

TEST_F(HelloExample, WindowWithTextComesAndGoesWithTheHotKeyAndTheMenuItem) {
  AddExample("hello");
  Initialize();
  EXPECT_EQ((Lines{"hello: started", "hello: enabled"}), LogLines("hello: "));

  Drawn shown = Draw();
  ASSERT_EQ(4u, shown.box.size());
  const std::vector<int> box = shown.box;
  EXPECT_LT(box[0], box[2]);
  EXPECT_GT(box[1], box[3]);
  // The text names the key that really toggles the window, and every line
  // of it (baseline plus the font's height) lies inside the dark box.
  char key = 0;
  TOKAGetHotKeyInfo(TOKAGetNthHotKey(0), &key, nullptr, nullptr, nullptr);
  ASSERT_EQ(2u, shown.texts.size());
  EXPECT_EQ("Hello, world!", shown.texts[0]);
  EXPECT_EQ(0u, shown.texts[1].find(std::string(TOKAGetVirtualKeyDescription(key)) + " or "))
      << shown.texts[1];
  for (auto [x, y] : shown.at) {
    EXPECT_TRUE(x >= box[0] && x < box[2] && y >= box[3] && y + 14 <= box[1]) << x << "," << y;
  }
  EXPECT_LT(shown.at[1].second, shown.at[0].second);  // the hint is below
  EXPECT_EQ(0, ClickAt(box));  // the window covers the box
  EXPECT_EQ(1, Checked());

  // The hot key hides it and shows it again.
  EXPECT_EQ(0, PressHotKeyOf("toka.examples.hello"));
  Drawn hidden = Draw();
  EXPECT_TRUE(hidden.box.empty());
  EXPECT_TRUE(hidden.texts.empty());
  EXPECT_EQ(1, ClickAt(box));
  EXPECT_EQ(0, Checked());
  EXPECT_EQ(0, PressHotKeyOf("toka.examples.hello"));
  EXPECT_EQ(box, Draw().box);
  EXPECT_EQ(1, Checked());

  // So does the menu item under Plugins > Hello.
  EXPECT_EQ(menus.at("Plugins"), menuParents.at("Hello"));
  int item = items.at({menus.at("Hello"), "Show window"});
  EXPECT_EQ(0, TOKAMenuHook(item));
  EXPECT_TRUE(Draw().texts.empty());
  EXPECT_EQ(0, Checked());
  EXPECT_EQ(0, TOKAMenuHook(item));
  EXPECT_EQ(shown.texts, Draw().texts);
  EXPECT_EQ(1, Checked());

  TOKAShutdownPlugins();
  EXPECT_EQ((Lines{"hello: disabled", "hello: stopped"}), LogLines("hello: "));
}

// ---- commands -------------------------------------------------------------

TEST_F(Examples, CommandHandlersRunAroundTheSimulatorOnTheKeyAndTheMenu) {
  TOKACommandRef const made = (TOKACommandRef)0x5000;
  host.onCall[55] = [&](const HostCall& call) -> intptr_t {
    return call.strings.at(0) == "toka/examples/commands/say_hello" && call.arg<int>(2) == 1
               ? (intptr_t)made : 0;
  };
  // The simulator runs a command as plugins expect: the before-handlers,
  // its own handling unless they consumed the command, the after-handlers.
  auto simulate = [this, made](const char* phase, int isBegin, int isEnd) {
    return [=](const HostCall& call) -> intptr_t {
      EXPECT_EQ(made, call.arg<TOKACommandRef>(0));
      if (TOKACommandHook(call.arg<TOKACommandRef>(0), isBegin, isEnd, 1)) {
        host.log += std::string("commands: (the simulator runs ") + phase + ")\n";
        TOKACommandHook(call.arg<TOKACommandRef>(0), isBegin, isEnd, 0);
      }
      return 0;
    };
  };
  host.onCall[56] = simulate("begin", 1, 0);
  host.onCall[58] = simulate("end", 0, 1);
  AddExample("commands");
  Initialize();

  auto once = [](const char* how, const char* count) {
    return Lines{how,
                 std::string("commands: before the simulator, begin ") + count,
                 "commands: (the simulator runs begin)",
                 "commands: after the simulator, begin",
                 std::string("commands: before the simulator, end ") + count,
                 "commands: (the simulator runs end)",
                 "commands: after the simulator, end"};
  };
  EXPECT_EQ(0, PressHotKeyOf("toka.examples.commands"));
  EXPECT_EQ(once("commands: hot key pressed", "(1)"), LogLines("commands: "));
  EXPECT_EQ(0, TOKAMenuHook(items.at({menus.at("Commands"), "Say hello"})));
  EXPECT_EQ(once("commands: menu item picked", "(2)"), LogLines("commands: "));
  EXPECT_EQ(2u, host.CountCalls(56));
  EXPECT_EQ(2u, host.CountCalls(58));

  // Held down by someone else (a joystick button): begin, repeats, end.
  TOKACommandHook(made, 1, 0, 1);
  TOKACommandHook(made, 0, 0, 1);
  TOKACommandHook(made, 0, 0, 0);
  EXPECT_EQ((Lines{"commands: before the simulator, begin (3)",
                   "commands: before the simulator, continue (3)",
                   "commands: after the simulator, continue"}),
            LogLines("commands: "));
}

// ---- datarefs and shared data --------------------------------------------

TEST_F(Examples, ConsumerReadsWhatThePublisherPublishes) {
  AddExample("dataref-publisher");                                         // ID 1
  AddExample("dataref-consumer", "Resources/plugins/consumer/lin.orv");  // ID 2
  Initialize();
  TOKADataRef uptime = TOKAFindDataRef("toka/examples/publisher/uptime");
  TOKADataRef beat = TOKAFindDataRef("toka/examples/shared/beat");
  ASSERT_TRUE(uptime && beat);

  // Every beat is heard at once; every two seconds the consumer logs the
  // two values, which must be what anyone reads at that moment.
  Lines expected;
  for (int second = 1; second <= 6; ++second) {
    RunUntil(second);
    EXPECT_FLOAT_EQ((float)second, TOKAGetDataf(uptime));
    EXPECT_EQ(second, TOKAGetDatai(beat));
    expected.push_back("dataref-consumer: beat " + std::to_string(second));
    if (second % 2 == 0)
      expected.push_back("dataref-consumer: uptime " + std::to_string(second) + ".0 s, beat " +
                         std::to_string(second));
  }
  EXPECT_EQ(expected, LogLines("dataref-consumer: "));

  // Disabling and enabling either plugin leaves one loop and one
  // subscription each: nothing is heard or logged twice.
  TOKADisablePlugin(2);
  TOKAEnablePlugin(2);
  TOKADisablePlugin(1);
  TOKAEnablePlugin(1);  // at 6 s: the uptime and the beats start again
  RunUntil(8);
  EXPECT_EQ((Lines{"dataref-consumer: beat 0", "dataref-consumer: beat 1",
                   "dataref-consumer: beat 2", "dataref-consumer: uptime 2.0 s, beat 2"}),
            LogLines("dataref-consumer: "));
}

TEST_F(Examples, ConsumerFindsAPublisherThatComesLaterWithTheAircraft) {
  AddExample("dataref-consumer");
  AddExample("dataref-publisher", "Aircraft/Test/plugins/publisher/lin.orv");
  UserAircraftAt(tree, "Aircraft/Test/test.acf");
  Initialize();
  RunUntil(2);
  EXPECT_EQ((Lines{"dataref-consumer: nobody publishes toka/examples/publisher/uptime"}),
            LogLines("dataref-consumer: "));

  TOKAEventHook(3, (float)now, 0, 0);  // the user's aircraft and its plugins arrive
  ASSERT_EQ(1, TOKAIsPluginEnabled(TOKAFindPluginBySignature("toka.examples.dataref-publisher")));
  RunUntil(4);
  EXPECT_EQ((Lines{"dataref-consumer: beat 0", "dataref-consumer: beat 1",
                   "dataref-consumer: beat 2", "dataref-consumer: uptime 2.0 s, beat 2"}),
            LogLines("dataref-consumer: "));
}

// ---- camera ---------------------------------------------------------------

class CameraExample : public Examples {
protected:
  float camera[7] = {1, 2, 3, 4, 5, 6, 7};
  int Update() {
    float* v = camera;
    return TOKACameraHook(v, v + 1, v + 2, v + 3, v + 4, v + 5, v + 6);
  }
  int HowLong() {
    int howLong = 0;
    return TOKAIsCameraBeingControlled(&howLong) ? howLong : 0;
  }
  // Checks that the camera is on a circle around (cx, cy, cz), above it and
  // facing it, and returns its radius.
  float CheckFacing(float cx, float cy, float cz) {
    float dx = cx - camera[0], dz = cz - camera[2];
    EXPECT_GT(camera[1], cy);
    EXPECT_LT(camera[3], 0);  // looking down
    // Heading: degrees clockwise from north (-z) towards east (+x).
    float towards = std::atan2(dx, -dz) * 180.0f / 3.14159265f;
    float off = std::fmod(towards - camera[4] + 720.0f, 360.0f);
    EXPECT_TRUE(off < 0.1f || off > 359.9f) << "heading " << camera[4] << ", aircraft at "
                                            << towards;
    return std::hypot(dx, dz);
  }
};

TEST_F(CameraExample, OrbitsTheAircraftFromItsHotKeyUntilTheSameKeyGivesTheCameraBack) {
  gAircraft[0] = 1000, gAircraft[1] = 200, gAircraft[2] = -3000;
  PublishAircraftPosition(true);
  AddExample("camera");
  Initialize();
  RunUntil(1);
  EXPECT_EQ(1, Update());  // the simulator's own camera
  EXPECT_EQ(1.0f, camera[0]);

  EXPECT_EQ(0, PressHotKeyOf("toka.examples.camera"));
  EXPECT_EQ(1, HowLong());
  EXPECT_EQ((Lines{"camera: orbiting the aircraft"}), LogLines("camera: "));
  float radius = 0;
  std::vector<float> headings;
  for (int frame = 0; frame < 4; ++frame) {
    RunUntil(now + 0.5);
    if (frame == 2) gAircraft[0] += 100, gAircraft[2] -= 40;  // it flies on
    ASSERT_EQ(0, Update());
    float r = CheckFacing(gAircraft[0], gAircraft[1], gAircraft[2]);
    if (frame == 0) radius = r;
    EXPECT_NEAR(radius, r, 0.01f);
    headings.push_back(camera[4]);
  }
  EXPECT_GT(radius, 1.0f);
  for (size_t i = 1; i < headings.size(); ++i) EXPECT_NE(headings[i - 1], headings[i]);

  EXPECT_EQ(0, PressHotKeyOf("toka.examples.camera"));
  EXPECT_EQ(0, HowLong());
  camera[0] = 1;
  EXPECT_EQ(1, Update());
  EXPECT_EQ(1.0f, camera[0]);
  EXPECT_EQ((Lines{"camera: camera given back"}), LogLines("camera: "));
}

TEST_F(CameraExample, WithoutAnAircraftOrbitsTheOriginAndNoticesWhenTheCameraIsTaken) {
  AddExample("camera");
  Initialize();
  EXPECT_EQ(0, PressHotKeyOf("toka.examples.camera"));
  RunUntil(0.5);
  ASSERT_EQ(0, Update());
  float radius = CheckFacing(0, 0, 0);
  RunUntil(1.5);
  ASSERT_EQ(0, Update());
  EXPECT_NEAR(radius, CheckFacing(0, 0, 0), 0.01f);

  TOKAEventHook(1, (float)now, 0, 0);  // the user picks another view
  EXPECT_EQ(0, HowLong());
  EXPECT_EQ(0, PressHotKeyOf("toka.examples.camera"));  // takes it again
  EXPECT_EQ(1, HowLong());
  TOKADontControlCamera();  // the simulator's own menu, say: nobody is told
  EXPECT_EQ(0, PressHotKeyOf("toka.examples.camera"));  // takes it again
  EXPECT_EQ(1, HowLong());
  EXPECT_EQ((Lines{"camera: no aircraft position, orbiting the origin",
                   "camera: the camera was taken back",
                   "camera: no aircraft position, orbiting the origin",
                   "camera: no aircraft position, orbiting the origin"}),
            LogLines("camera: "));
}

// ---- probe ----------------------------------------------------------------

TEST_F(Examples, ProbePublishesTheHeightAboveTheTerrainEverySecond) {
  float terrain = 120;
  bool hit = true;
  std::vector<std::vector<float>> queries;
  host.onCall[60] = [&](const HostCall& call) -> intptr_t {
    float* query = call.arg<float*>(1);
    queries.push_back({query[0], query[1], query[2]});
    if (!hit) return 0;
    float* location = call.arg<float*>(2);
    location[0] = query[0], location[1] = terrain, location[2] = query[2];
    return 1;
  };
  AddExample("probe");
  Initialize();
  TOKADataRef height = TOKAFindDataRef("toka/examples/probe/height_agl");
  ASSERT_TRUE(height);

  // Without the aircraft's position there is nothing to probe.
  RunUntil(2);
  EXPECT_TRUE(queries.empty());
  EXPECT_EQ((Lines{"probe: the simulator publishes no aircraft position"}),
            LogLines("probe: "));

  gAircraft[0] = 10, gAircraft[1] = 500, gAircraft[2] = -20;
  PublishAircraftPosition(false);
  RunUntil(4, 0.25);  // probes at 3 and 4 s, under the aircraft
  EXPECT_EQ((std::vector<std::vector<float>>{{10, 500, -20}, {10, 500, -20}}), queries);
  EXPECT_FLOAT_EQ(380, TOKAGetDataf(height));

  terrain = 150, gAircraft[1] = 700;
  RunUntil(4.75, 0.25);  // not yet probed again
  EXPECT_FLOAT_EQ(380, TOKAGetDataf(height));
  RunUntil(5, 0.25);
  EXPECT_FLOAT_EQ(550, TOKAGetDataf(height));
  EXPECT_EQ(3u, queries.size());

  // A miss keeps the last height and is told once, until terrain is found.
  hit = false;
  RunUntil(7);
  EXPECT_FLOAT_EQ(550, TOKAGetDataf(height));
  hit = true, terrain = 200;
  RunUntil(8);
  EXPECT_FLOAT_EQ(500, TOKAGetDataf(height));
  EXPECT_EQ((Lines{"probe: no terrain below the aircraft"}), LogLines("probe: "));
  EXPECT_EQ(6u, queries.size());
}

// ---- the template, and all of them together --------------------------------

TEST_F(Examples, TemplateLogsItsLifeAndItsLoop) {
  AddExample("my_plugin");
  Initialize();
  RunUntil(10);
  TOKAShutdownPlugins();
  EXPECT_EQ((Lines{"my_plugin: started", "my_plugin: enabled",
                   "my_plugin: 5.0 seconds since the last call",
                   "my_plugin: 5.0 seconds since the last call", "my_plugin: disabled",
                   "my_plugin: stopped"}),
            LogLines("my_plugin: "));
}

TEST_F(Examples, AllLoadSideBySideWithKeysOfTheirOwn) {
  const char* names[] = {"hello", "dataref-publisher", "dataref-consumer", "commands",
                         "camera", "probe", "my_plugin"};
  for (const char* name : names) AddExample(name);
  Initialize();
  ASSERT_EQ(8, TOKACountPlugins());
  std::set<std::string> signatures;
  for (int id = 1; id < 8; ++id) {
    char signature[256];
    TOKAGetPluginInfo(id, nullptr, nullptr, signature, nullptr);
    signatures.insert(signature);
    EXPECT_EQ(1, TOKAIsPluginEnabled(id)) << signature;
  }
  EXPECT_EQ(7u, signatures.size());
  std::set<std::pair<char, int>> combinations;
  for (int i = 0; i < TOKACountHotKeys(); ++i) {
    char key = 0;
    int flags = 0;
    TOKAGetHotKeyInfo(TOKAGetNthHotKey(i), &key, &flags, nullptr, nullptr);
    combinations.insert({key, flags});
  }
  EXPECT_EQ(3, TOKACountHotKeys());
  EXPECT_EQ(3u, combinations.size());
  RunUntil(3);
  TOKAShutdownPlugins();
  EXPECT_EQ(0, TOKACountPlugins());
}

}  // namespace
