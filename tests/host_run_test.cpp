// The reference host running the real library: start-up, the frame loop,
// aircraft and scenery plugins, the trace, and toka-host itself on the
// example plugins.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "harness/plugin_script.h"
#include "harness/temp_tree.h"
#include "host/config.h"
#include "host/library.h"
#include "host/output.h"
#include "host/run.h"
#include "host/scenario/scenario.h"
#include "host/services.h"
#include "host/world/world.h"
#include "toka/TOKA.h"

using namespace toka_host;
using namespace toka_test;

namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream in(path);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

class HostRun : public ::testing::Test {
protected:
  TempTree tree;
  std::string output;

  void SetUp() override {
    SetOutputCapture(&output);
    Events().clear();
  }
  void TearDown() override { SetOutputCapture(nullptr); }

  HostOptions Options() {
    HostOptions options;
    options.config.root = tree.root();
    options.library = TOKA_LIBRARY_FILE;
    options.render = false;  // no pixels are looked at here
    return options;
  }
  PluginScript& AddPlugin(const std::string& relativePath, const std::string& name) {
    PluginScript& script = Script(tree.AddPlugin(relativePath, "scripted"));
    script.name = name;
    script.signature = "test." + name;
    return script;
  }
  void Start(const HostOptions& options) {
    std::string error;
    ASSERT_TRUE(StartHost(options, error)) << error;
  }
};

TEST_F(HostRun, StartUpLoadsAircraftAndSceneryPluginsAndTellsEveryPlugin) {
  std::string model, file;
  AddPlugin("Resources/plugins/alpha.orv", "alpha").onEnable = [&] {
    char name[512], path[512];
    TOKAGetNthAircraftModel(0, name, path);
    file = name;
    model = path;
    TOKADebugString("alpha: enabled\n");
  };
  AddPlugin("Aircraft/Trainer/plugins/avionics/lin.orv", "avionics");
  AddPlugin("Custom Scenery/Alps/plugins/lights/lin.orv", "lights");
  // Where "Custom Scenery/.." would be a package: no plugin loads from here.
  AddPlugin("plugins/stray/lin.orv", "stray");
  Start(Options());

  EXPECT_EQ(tree.root() + "Aircraft/Trainer/trainer.acf", model);
  EXPECT_EQ("trainer.acf", file);
  // The airport, the user's aircraft (whose plugins load), two more
  // aircraft, the scenery package (whose plugins load) and the end of the
  // scenery load, in that order.
  EXPECT_EQ((std::vector<std::string>{
                "alpha.start@1", "alpha.enable@1", "alpha.message(0,103,0)@1",
                "alpha.message(0,102,0)@1", "avionics.start@2", "avionics.enable@2",
                "alpha.message(0,102,1)@1", "avionics.message(0,102,1)@2",
                "alpha.message(0,102,2)@1", "avionics.message(0,102,2)@2", "lights.start@3",
                "lights.enable@3", "alpha.message(0,104,0)@1", "avionics.message(0,104,0)@2",
                "lights.message(0,104,0)@3"}),
            Events());
  EXPECT_EQ(0u, output.find("Fetching plugins for " + tree.plugins() + "\n\n"));
  for (std::string line : {"alpha: enabled\n", "[progress] Loading Plugin: alpha.orv\n",
                           "Loaded: Aircraft/Trainer/plugins/avionics/lin.orv.\n\n",
                           "Loaded: Custom Scenery/Alps/plugins/lights/lin.orv.\n\n"}) {
    if (line.compare(0, 8, "Loaded: ") == 0) line.insert(8, tree.root());
    EXPECT_NE(std::string::npos, output.find(line)) << line;
  }
  Events().clear();
  StopHost();
  EXPECT_EQ((std::vector<std::string>{"alpha.disable@1", "avionics.disable@2", "lights.disable@3",
                                      "alpha.stop@1", "avionics.stop@2", "lights.stop@3"}),
            Events());
}

TEST_F(HostRun, ANewUserAircraftSwapsTheAircraftPluginsOnTheNextFrame) {
  AddPlugin("Aircraft/Trainer/plugins/avionics/lin.orv", "trainer");
  std::string seen;
  AddPlugin("Aircraft/Jet/plugins/fms/lin.orv", "jet").onEnable = [&] {
    char name[512], path[512];
    TOKAGetNthAircraftModel(0, name, path);
    seen = path;
  };
  Start(Options());
  Events().clear();
  std::string jet = tree.root() + "Aircraft/Jet/jet.acf";
  HostServices()->SetAircraftModel(0, jet.c_str(), "jet.acf");
  EXPECT_TRUE(Events().empty());
  RunFrame();
  EXPECT_EQ((std::vector<std::string>{"trainer.message(0,106,0)@1", "trainer.disable@1",
                                      "trainer.stop@1", "jet.start@1", "jet.enable@1"}),
            Events());
  EXPECT_EQ(jet, seen);
  StopHost();
}

// Hooks that note each call and pass it on to the library.
HostLibrary gReal;
std::vector<std::string> gHookCalls;
std::vector<float> gEventTimes;
int gCompletionsAtEvent = -1;
int* gCompletions = nullptr;

int NoteEvent(int event, float elapsed, int unused, intptr_t param) {
  gHookCalls.push_back("event " + std::to_string(event));
  gEventTimes.push_back(elapsed);
  if (gCompletionsAtEvent == -1 && gCompletions) gCompletionsAtEvent = *gCompletions;
  return gReal.EventHook(event, elapsed, unused, param);
}
int NoteDrawing(int code, int reflection) {
  gHookCalls.push_back("draw " + std::to_string(code) + (reflection ? " reflection" : ""));
  return gReal.DoDrawingHook(code, reflection);
}
int NoteCamera(float* x, float* y, float* z, float* pitch, float* heading, float* roll, float* zoom) {
  gHookCalls.push_back("camera");
  return gReal.CameraHook(x, y, z, pitch, heading, roll, zoom);
}
int NoteCursor(int x, int y) {
  gHookCalls.push_back("cursor " + std::to_string(x) + "," + std::to_string(y));
  return gReal.CursorHook(x, y);
}
int NotePlanes(int count, int flag) {
  gHookCalls.push_back("planes " + std::to_string(count) + " " + std::to_string(flag));
  return gReal.GetNumberPlanesToHandle(count, flag);
}
int NotePlane(int index, char* name, char* path) {
  gHookCalls.push_back("plane " + std::to_string(index));
  return gReal.UpdatePlaneNameAndPath(index, name, path);
}
void NoteHooks() {
  gReal = gLibrary;
  gLibrary.EventHook = NoteEvent;
  gLibrary.DoDrawingHook = NoteDrawing;
  gLibrary.CameraHook = NoteCamera;
  gLibrary.CursorHook = NoteCursor;
  gLibrary.GetNumberPlanesToHandle = NotePlanes;
  gLibrary.UpdatePlaneNameAndPath = NotePlane;
}

std::vector<std::string> FrameCalls(int cursorX, int cursorY) {
  std::vector<std::string> calls = {"planes 3 0", "plane 1",  "plane 2",  "event 0",
                                    "event 9",    "event 10", "camera",
                                    "cursor " + std::to_string(cursorX) + "," + std::to_string(cursorY)};
  for (int code = 1; code <= 26; ++code) calls.push_back("draw " + std::to_string(code));
  return calls;
}

TEST_F(HostRun, EachFrameRunsTheSimulatorsStepsInOrderWithAFixedStep) {
  HostOptions options = Options();
  options.config.step = 0.05;
  options.steps.resize(3);
  std::string error;
  ASSERT_TRUE(ParseScenarioStep("move 10 20", 3, "--at", options.steps[0], error)) << error;
  ASSERT_TRUE(ParseScenarioStep("key P", 3, "--at", options.steps[1], error)) << error;
  ASSERT_TRUE(ParseScenarioStep("scenery load \"Custom Scenery/Alps\"", 5, "--at", options.steps[2],
                                error))
      << error;
  tree.AddFolder("Custom Scenery/Alps");
  Start(options);
  NoteHooks();
  RunFrame();
  RunFrame();
  std::vector<std::string> expected = FrameCalls(gConfig.screenWidth / 2, gConfig.screenHeight / 2);
  std::vector<std::string> twice = expected;
  twice.insert(twice.end(), expected.begin(), expected.end());
  EXPECT_EQ(twice, gHookCalls);
  ASSERT_EQ(6u, gEventTimes.size());
  for (int i = 0; i < 6; ++i) EXPECT_FLOAT_EQ((float)((i / 3 + 1) * 0.05), gEventTimes[i]);

  // What the world raised during a frame reaches the library first thing in
  // the next one, before the input of that frame.
  gHookCalls.clear();
  HostServices()->PlaceUserAtAirport("KBFI");
  RunFrame();
  expected = FrameCalls(10, 20);
  expected.insert(expected.begin(), {"event 1", "event 4"});
  EXPECT_EQ(expected, gHookCalls);
  EXPECT_TRUE(gPaused);  // P went past the plugins to the simulator's key map
  gHookCalls.clear();
  RunFrame();
  EXPECT_EQ("event 13", gHookCalls.at(0));
  EXPECT_NEAR(4 * 0.05, gRunningTime, 1e-12);
  EXPECT_NEAR(3 * 0.05, gFlightTime, 1e-12);  // paused by the input of frame 3
  // A package loaded at start-up and loaded again is announced again.
  RunFrame();
  gHookCalls.clear();
  RunFrame();
  EXPECT_EQ("event 12", gHookCalls.at(0));
  EXPECT_EQ("event 6", gHookCalls.at(1));
  // A scan finds no package it has not loaded yet: the folder holds only
  // Alps (and its own "." and "..").
  HostServices()->ReloadScenery();
  gHookCalls.clear();
  RunFrame();
  EXPECT_EQ("event 6", gHookCalls.at(0));
  StopHost();
}

struct Completion {
  int calls = 0;
  TOKAObjectRef object = nullptr;
};
void Completed(TOKAObjectRef object, void* refcon) {
  static_cast<Completion*>(refcon)->calls++;
  static_cast<Completion*>(refcon)->object = object;
}

TEST_F(HostRun, AsynchronousLoadsCompleteAtTheStartOfTheNextFrame) {
  tree.AddFile("Resources/objects/tower.obj");
  Start(Options());
  NoteHooks();
  Completion completion;
  gCompletions = &completion.calls;
  HostServices()->LoadObjectAsync("Resources/objects/tower.obj", Completed, &completion);
  EXPECT_EQ(0, completion.calls);
  RunFrame();
  EXPECT_EQ(1, gCompletionsAtEvent);  // done before the frame's first event
  EXPECT_TRUE(completion.object);
  EXPECT_EQ(1, LoadedObjectCount());
  gCompletions = nullptr;
  StopHost();
}

TEST_F(HostRun, TheTraceHasOneLinePerServiceCallWithItsArgumentsAndResult) {
  AddPlugin("Resources/plugins/alpha.orv", "alpha").onEnable = [] {
    TOKADebugString("alpha: \"hi\"\n");
  };
  HostOptions options = Options();
  options.trace = tree.root() + "trace.txt";
  Start(options);
  RunFrame();
  EXPECT_EQ(3, HostServices()->CountAircraft());
  StopHost();

  std::istringstream lines(ReadFile(options.trace));
  std::regex format(R"(frame (\d+) slot (\d+) (\w+)\((.*)\)( -> .+)?)");
  int lastFrame = 0, count = 0;
  std::vector<std::string> all;
  for (std::string line; std::getline(lines, line); ++count) {
    std::smatch match;
    ASSERT_TRUE(std::regex_match(line, match, format)) << line;
    EXPECT_GE(std::stoi(match[1]), lastFrame);
    lastFrame = std::stoi(match[1]);
    all.push_back(line);
  }
  auto has = [&](const std::string& wanted) {
    return std::find(all.begin(), all.end(), wanted) != all.end();
  };
  EXPECT_TRUE(has(R"(frame 0 slot 29 DebugString("alpha: \"hi\"\n"))"));
  EXPECT_TRUE(has(R"(frame 0 slot 54 ShowLoadingProgress("Loading Plugin: alpha.orv"))"));
  EXPECT_TRUE(has("frame 1 slot 19 CountAircraft() -> 3"));
  // The aircraft model the library asked for on event 3, shown as answered.
  EXPECT_EQ(1, std::count(all.begin(), all.end(),
                          "frame 0 slot 18 GetNthAircraftModel(0, =\"" + tree.root() +
                              "Aircraft/Trainer/trainer.acf\", =\"trainer.acf\")"));
}

// ---- toka-host itself ------------------------------------------------------

struct ProgramRun {
  int status;
  std::string out, err;
};

ProgramRun RunProgram(const std::string& arguments) {
  TempTree scratch;
  std::string out = scratch.root() + "out", err = scratch.root() + "err";
  std::string command = std::string("'") + TOKA_HOST_BINARY + "' " + arguments + " >'" + out +
                        "' 2>'" + err + "'";
  int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(out), ReadFile(err)};
}

std::string ExampleArguments() {
  return std::string("--root '") + TOKA_EXAMPLES_ROOT + "' --library '" + TOKA_LIBRARY_FILE +
         "' --render none";
}

void ExpectNoSanitizerReport(const std::string& err) {
  for (const char* report : {"AddressSanitizer", "LeakSanitizer", "runtime error"})
    EXPECT_EQ(std::string::npos, err.find(report)) << err;
}

TEST(HostProgram, RunsTheExamplePluginsThroughTheirWholeLife) {
  ProgramRun run = RunProgram(ExampleArguments() + " --frames 30");
  ASSERT_EQ(0, run.status) << run.err;
  ExpectNoSanitizerReport(run.err);
  std::string plugins = std::string(TOKA_EXAMPLES_ROOT) + "Resources/plugins";
  int examples = 0;
  for (const std::string& name : TempTree::Listing(plugins)) {
    if (name.size() < 4 || name.compare(name.size() - 4, 4, ".orv") != 0) continue;
    ++examples;
    EXPECT_NE(std::string::npos, run.out.find("Loaded: " + plugins + "/" + name + ".\n\n")) << name;
  }
  EXPECT_GE(examples, 1);
  size_t at = 0;
  std::vector<std::string> steps = {"hello: started\n", "Loaded: " + plugins + "/hello.orv.\n\n",
                                    "hello: enabled\n", "hello: disabled\n", "hello: stopped\n"};
  for (const std::string& step : steps) {
    size_t found = run.out.find(step, at);
    ASSERT_NE(std::string::npos, found) << step << " in\n" << run.out;
    at = found + step.size();
  }
}

TEST(HostProgram, ThousandsOfFramesWithUserInputEndCleanly) {
  TempTree scratch;
  std::string trace = scratch.root() + "trace.txt";
  ProgramRun run = RunProgram(
      ExampleArguments() + " --frames 3000 --trace '" + trace +
      "' --at '10:move 100 100' --at '20:click 200 300' --at '30:key P'"
      " --at '40:command sim/operation/pause_toggle once' --at '50:menu \"Sim/Pause\"'"
      " --at '60:airport KOLM' --at '70:scroll 5 5 2' --at '80:message 101'"
      " --at '90:command sim/operation/reset_flight once' --at '100:menu \"Plugins/None\"'");
  // The one step that cannot be carried out is the only failure.
  ASSERT_EQ(1, run.status) << run.err;
  ExpectNoSanitizerReport(run.err);
  EXPECT_EQ("--at: frame 100: menu \"Plugins/None\"\n"
            "  expected: a menu item \"Plugins/None\"\n"
            "  found:    no such item\n"
            "toka-host: 1 of 10 steps failed\n",
            run.err);
  size_t at = 0;
  for (std::string step : {"[sim] paused\n", "[sim] running\n", "[menu] Sim/Pause\n[sim] paused\n",
                           "[aircraft] placed at KOLM Olympia Regional\n", "hello: stopped\n"}) {
    size_t found = run.out.find(step, at);
    ASSERT_NE(std::string::npos, found) << step << " in\n" << run.out;
    at = found + step.size();
  }
  EXPECT_NE(std::string::npos,
            ReadFile(trace).find("frame 3000 slot 29 DebugString(\"hello: stopped\\n\")\n"));
}

TEST(HostProgram, HelpDocumentsEveryOptionAndEachIsUnderstood) {
  ProgramRun run = RunProgram("--help");
  ASSERT_EQ(0, run.status);
  EXPECT_EQ(HostUsage(), run.out);
  const std::map<std::string, std::string> examples = {
      {"--root", "sim/"},        {"--library", "lib.so"},       {"--frames", "5"},
      {"--seconds", "1.5"},      {"--step", "0.02"},            {"--screen", "640x480"},
      {"--airport", "KOLM"},     {"--aircraft", "a/b.acf"},     {"--traffic", "4"},
      {"--ground-elevation", "12"}, {"--terrain-extent", "5000"}, {"--trace", "t.txt"},
      {"--screenshot", "s.png"}, {"--at", "3:key X"},           {"--print-menus", ""},
      {"--scenario", "s.scenario"}, {"--render", "none"}, {"--window", ""}, {"--watch", ""},
      {"--record", "r.scenario"}};
  std::regex option(R"(\n  (--[a-z-]+))");
  int documented = 0;
  for (std::sregex_iterator it(run.out.begin(), run.out.end(), option), end; it != end; ++it) {
    std::string name = (*it)[1];
    if (name == "--help") continue;
    ++documented;
    ASSERT_TRUE(examples.count(name)) << name << " is documented but not tried here";
    std::vector<std::string> words = {"toka-host", name};
    if (!examples.at(name).empty()) words.push_back(examples.at(name));
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(&word[0]);
    HostOptions options;
    std::string error;
    EXPECT_TRUE(ParseHostOptions((int)argv.size(), argv.data(), options, error)) << name << ": " << error;
  }
  EXPECT_EQ((int)examples.size(), documented);

  const char* words[] = {"toka-host", "--seconds", "1.5", "--step", "0.02"};
  HostOptions options;
  std::string error;
  ASSERT_TRUE(ParseHostOptions(5, const_cast<char**>(words), options, error));
  EXPECT_EQ((int)std::ceil(1.5 / 0.02 - 1e-9), options.frames);

  run = RunProgram("--screen 0x10");
  EXPECT_EQ(kCannotRunStatus, run.status);
  EXPECT_EQ(0u, run.err.find("toka-host: bad value for --screen: 0x10\n"));
  run = RunProgram("--at '5:fly high'");
  EXPECT_EQ(kCannotRunStatus, run.status);
  EXPECT_EQ(0u, run.err.find("toka-host: bad value for --at: 5:fly high: column 1: unknown step \"fly\"\n"));
  run = RunProgram("--at 'x:pause'");
  EXPECT_EQ(kCannotRunStatus, run.status);
  EXPECT_EQ(0u, run.err.find("toka-host: bad value for --at: x:pause\n"));
}

}  // namespace
