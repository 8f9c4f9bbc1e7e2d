// Scenarios of the reference host: the language, toka-host running
// scenarios on a plugin with a window, a hot key, a menu, a command and
// datarefs (tests/plugins/host_panel.cpp), toka-host on the example plugins
// and their scenarios, and its options.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "harness/host_program.h"
#include "harness/temp_tree.h"
#include "host/run.h"
#include "host/scenario/scenario.h"

using namespace toka_host;
using namespace toka_test;

namespace {

std::vector<ScenarioStep> Parse(const std::string& text, double step = 0.1) {
  std::vector<ScenarioStep> steps;
  std::string error;
  EXPECT_TRUE(ParseScenario(text, "s.scenario", step, steps, error)) << error;
  return steps;
}

std::string ErrorOf(const std::string& text, double step = 1.0 / 60) {
  std::vector<ScenarioStep> steps;
  std::string error;
  EXPECT_FALSE(ParseScenario(text, "s.scenario", step, steps, error)) << text;
  return error;
}

TEST(ScenarioParser, AMalformedLineStopsWithFileLineAndColumnAndSecondsCountInFrames) {
  std::string badRegex;
  try {
    std::regex("(");
  } catch (const std::regex_error& problem) {
    badRegex = problem.what();
  }
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"click 10 2O", "s.scenario:1:10: bad number \"2O\""},
      {"pause\n  push F1", "s.scenario:2:3: unknown step \"push\""},
      {"menu \"Plugins/Panel", "s.scenario:1:6: unterminated string"},
      {"at 10\n\nat 5", "s.scenario:3:4: time goes backwards: frame 5 is before frame 10"},
      {"at 2 s later", "s.scenario:1:8: unexpected \"later\""},
      {"key F25", "s.scenario:1:5: unknown key \"F25\""},
      {"message 99", "s.scenario:1:9: the simulator sends messages 101 to 108, not 99"},
      {"expect sky blue",
       "s.scenario:1:8: expected \"log\", \"dataref\", \"window\", \"no\", \"plugin\", \"menu\", "
       "\"host-call\", \"pixel\" or \"screenshot\", found \"sky\""},
      {"expect pixel 1 2 #12345", "s.scenario:1:18: expected a colour #RRGGBB, found \"#12345\""},
      {"expect log matches /(/", "s.scenario:1:20: bad regular expression: " + badRegex},
      {"at 3\nexpect window at 1 1\n  key F1",
       "s.scenario:3:3: \"key\" acts after an expectation of frame 3 (a frame's actions come "
       "before its expectations)"},
  };
  for (const auto& entry : cases) EXPECT_EQ(entry.second, ErrorOf(entry.first)) << entry.first;
  // A new frame may act again.
  EXPECT_EQ(3u, Parse("at 3\nexpect window at 1 1\nat 4\nkey F1\nexpect window at 1 1\n").size());
  // A time is reached in the frame whose end reaches it.
  EXPECT_EQ(60, Parse("at 1 s\npause\n", 1.0 / 60).at(0).frame);
  EXPECT_EQ(3, Parse("at 0.25s\npause\n", 0.1).at(0).frame);
  EXPECT_EQ(5, Parse("at 0.5 s\nat 5\npause\n", 0.1).at(0).frame);
}

// ---- toka-host running scenarios ---------------------------------------------

class ScenarioRun : public ::testing::Test {
protected:
  TempTree tree;

  void SetUp() override {
    tree.AddPlugin("Resources/plugins/host_panel.orv", "host_panel");
    tree.AddFile("Aircraft/Jet/jet.acf");
    tree.AddFolder("Custom Scenery/Alps");
  }
  ProgramRun Run(const std::string& scenario) {
    std::string file = tree.AddFile("test.scenario", scenario);
    return RunHost(tree.root(), "--traffic 0 --render none --scenario '" + file + "'");
  }
};

int StepsIn(const std::string& scenario) {
  std::regex step("^(?!at )\\S", std::regex::ECMAScript | std::regex::multiline);
  return (int)std::distance(std::sregex_iterator(scenario.begin(), scenario.end(), step),
                            std::sregex_iterator());
}

TEST_F(ScenarioRun, EveryStepReachesThePluginsAndTheExpectationsHold) {
  const std::string scenario =
      "expect plugin Panel enabled\n"
      "expect window at 100 600\n"
      "expect no window at 300 650\n"
      "expect no window at 150 700\n"
      "expect menu \"Plugins/Panel/Show panel\" checked\n"
      "expect menu \"Plugins/Panel/Never\" disabled\n"
      "at 1\n"
      "key F1\n"
      "expect no window at 150 650\n"
      "expect menu \"Plugins/Panel/Show panel\" unchecked\n"
      "expect dataref test/panel/visible == 0\n"
      "at 2\n"
      "menu \"Plugins/Panel/Show panel\"\n"
      "expect window at 299 699\n"
      "at 3\n"
      "command test/panel/toggle once\n"
      "dataref test/panel/visible = 1\n"
      "dataref test/panel/scale = 2.5\n"
      "click 150 650\n"
      "scroll 150 650 3\n"
      "expect dataref test/panel/scale == 2.5\n"
      "expect dataref test/panel/mouse[0] == 1\n"
      "expect dataref test/panel/mouse[3] == 1\n"
      "expect dataref test/panel/title == \"Panel 42\"\n"
      "expect host-call DrawTranslucentDarkBox count 1\n"
      "at 4\n"
      "drag 150 650 400 100\n"
      "at 5\n"
      "key \"page up\" shift control\n"
      "key a shift\n"
      "message 102 1\n"
      "camera release\n"
      "pause\n"
      "expect dataref test/panel/mouse[1] == 1\n"
      "expect dataref test/panel/mouse[2] == 2\n"
      "expect dataref sim/time/paused == 1\n"
      "expect log contains \"panel: mouse 3 at 400 100\\n\"\n"
      "expect log matches /^panel: key 0 flags 5 virtual 33$/\n"
      "expect log contains \"panel: key 65 flags 1 virtual 65\"\n"
      "expect log contains \"panel: message 102 from 0 param 1\"\n"
      "at 6\n"
      "disable Panel\n"
      "expect plugin Panel disabled\n"
      "expect host-call DrawTranslucentDarkBox count 0\n"
      "at 7\n"
      "enable test.host.panel\n"
      "aircraft load Aircraft/Jet/jet.acf\n"
      "scenery load \"Custom Scenery/Alps\"\n"
      "airport KOLM\n"
      "expect plugin Panel enabled\n"
      "at 8\n"
      "reload\n"
      "aircraft unload\n"
      "expect log matches /panel: enabled[^]*panel: enabled[^]*panel: enabled/\n"
      "expect window at 150 650\n"
      "expect plugin Nobody absent\n"
      "at 9\n"
      "expect log contains \"panel: message 106 from 0 param 0\\n\"\n"
      "expect dataref sim/cockpit/radios/nav1_freq == 11420\n"
      "expect host-call DebugString count 1\n";
  ProgramRun run = Run(scenario);
  EXPECT_EQ(0, run.status);
  EXPECT_EQ("toka-host: all " + std::to_string(StepsIn(scenario)) + " steps passed\n", run.err);
  ExpectInOrder(run.out, {"panel: hidden\n", "[menu] Plugins/Panel/Show panel\n", "panel: shown\n",
                          "panel: command phase 0\n", "panel: hidden\n", "panel: command phase 2\n",
                          "panel: shown\n", "panel: mouse 1 at 150 650\n",
                          "panel: mouse 3 at 150 650\n", "panel: wheel 3 at 150 650\n",
                          "panel: mouse 1 at 150 650\n", "panel: mouse 2 at 400 100\n",
                          "panel: mouse 3 at 400 100\n", "[sim] paused\n", "panel: disabled\n",
                          "panel: enabled\n", "[aircraft] 0 loads " + tree.root() +
                          "Aircraft/Jet/jet.acf\n", "[aircraft] placed at KOLM Olympia Regional\n",
                          "panel: message 106 from 0 param 0\n", "panel: message 102 from 0 param 0\n",
                          "panel: message 104 from 0 param 0\n",
                          "[aircraft] 0 unloaded\n", "[message] I will then reload all plugins.\n",
                          "panel: enabled\n"});
}

TEST_F(ScenarioRun, BrokenExpectationsPrintFrameStepExpectedAndFoundAndCountInTheStatus) {
  ProgramRun run = Run(
      "expect plugin Panel disabled\n"
      "expect window at 99 650\n"
      "expect no window at 100 600\n"
      "expect menu \"Plugins/Panel/Show panel\" unchecked\n"
      "at 2\n"
      "key F1\n"
      "expect dataref test/panel/scale == 1.5\n"
      "expect dataref test/panel/title == \"Panel 43\"\n"
      "expect log contains \"panel: shown\"\n"
      "expect log matches /^panel: hidden$\\npanel: shown\\/1/\n"
      "expect host-call DebugString count 3\n"
      "at 3\n"
      "menu \"Plugins/Panel/Never\"\n"
      "command no/such/command once\n"
      "dataref sim/time/total_running_time_sec = 5\n"
      "aircraft load Aircraft/None/none.acf\n");
  std::string file = tree.root() + "test.scenario";
  EXPECT_EQ(13, run.status);
  // The log at frame 2 ends with the panel hiding.
  size_t hidden = run.out.find("panel: hidden\n");
  ASSERT_NE(std::string::npos, hidden);
  std::string lines = std::to_string(std::count(run.out.begin(), run.out.begin() + hidden, '\n') + 1);
  EXPECT_EQ(
      file + ":1: frame 0: expect plugin Panel disabled\n"
      "  expected: plugin \"Panel\" disabled\n"
      "  found:    loaded and enabled\n" +
      file + ":2: frame 0: expect window at 99 650\n"
      "  expected: a visible plugin window at (99, 650)\n"
      "  found:    none there\n" +
      file + ":3: frame 0: expect no window at 100 600\n"
      "  expected: no visible plugin window at (100, 600)\n"
      "  found:    a window of Panel from (100, 600) to (300, 700)\n" +
      file + ":4: frame 0: expect menu \"Plugins/Panel/Show panel\" unchecked\n"
      "  expected: menu item \"Plugins/Panel/Show panel\" unchecked\n"
      "  found:    checked, enabled\n" +
      file + ":7: frame 2: expect dataref test/panel/scale == 1.5\n"
      "  expected: test/panel/scale == 1.5 within 1.5e-05\n"
      "  found:    1\n" +
      file + ":8: frame 2: expect dataref test/panel/title == \"Panel 43\"\n"
      "  expected: test/panel/title == \"Panel 43\"\n"
      "  found:    \"Panel 42\"\n" +
      file + ":9: frame 2: expect log contains \"panel: shown\"\n"
      "  expected: the log to contain \"panel: shown\"\n"
      "  found:    no such text in " + lines + " lines of log\n" +
      file + ":10: frame 2: expect log matches /^panel: hidden$\\npanel: shown\\/1/\n"
      "  expected: a match for /^panel: hidden$\\npanel: shown/1/ in the log\n"
      "  found:    none in " + lines + " lines of log\n" +
      file + ":11: frame 2: expect host-call DebugString count 3\n"
      "  expected: DebugString called 3 times in frame 2\n"
      "  found:    called 2 times\n" +
      file + ":13: frame 3: menu \"Plugins/Panel/Never\"\n"
      "  expected: an enabled menu item \"Plugins/Panel/Never\"\n"
      "  found:    it is disabled\n" +
      file + ":14: frame 3: command no/such/command once\n"
      "  expected: a command no/such/command\n"
      "  found:    no such command\n" +
      file + ":15: frame 3: dataref sim/time/total_running_time_sec = 5\n"
      "  expected: a writable dataref sim/time/total_running_time_sec\n"
      "  found:    sim/time/total_running_time_sec is read-only\n" +
      file + ":16: frame 3: aircraft load Aircraft/None/none.acf\n"
      "  expected: an aircraft model " + tree.root() + "Aircraft/None/none.acf\n"
      "  found:    no such file\n"
      "toka-host: 13 of 14 steps failed\n",
      run.err);
}

TEST_F(ScenarioRun, TheStatusStopsAtAHundredStepsNeverReachedFailAndMalformedOnesNeverStart) {
  std::string scenario;
  for (int i = 0; i < 105; ++i) scenario += "expect plugin Nobody loaded\n";
  ProgramRun run = Run(scenario);
  EXPECT_EQ(100, run.status);
  EXPECT_NE(std::string::npos, run.err.find("toka-host: 105 of 105 steps failed\n"));

  // The plugin (here the scenario) quits the simulator at frame 2.
  run = Run("at 2\ncommand sim/operation/quit once\nat 5\nexpect plugin Panel enabled\n");
  EXPECT_EQ(1, run.status);
  EXPECT_EQ(tree.root() + "test.scenario:4: frame 5: expect plugin Panel enabled\n"
            "  expected: the run to reach this step\n"
            "  found:    the run ended at frame 2\n"
            "toka-host: 1 of 2 steps failed\n",
            run.err);

  // A malformed scenario never starts.
  run = Run("expect plugin Panel enabled\nclick 10 x\n");
  EXPECT_EQ(kCannotRunStatus, run.status);
  EXPECT_EQ(tree.root() + "test.scenario:2:10: bad number \"x\"\n", run.err);
  EXPECT_EQ("", run.out);  // no plugin was loaded
  run = RunProgram(TOKA_HOST_BINARY, "--scenario '" + tree.root() + "none.scenario'");
  EXPECT_EQ(kCannotRunStatus, run.status);
  EXPECT_EQ("toka-host: cannot read the scenario " + tree.root() + "none.scenario\n", run.err);
}

// Each example's scenario holds on the built examples, and none holds
// vacuously: on a simulator folder without plugins every one fails, with
// one report per failed step and as many as the exit status says.
TEST(ExampleScenarios, EveryExamplesScenarioPassesAndFailsWithoutTheExamples) {
  TempTree empty;
  std::vector<std::string> scenarios;
  std::string examples = TOKA_EXAMPLES_SOURCE;
  for (const std::string& folder : TempTree::Listing(examples)) {
    if (folder[0] == '.') continue;
    for (const std::string& name : TempTree::Listing(examples + folder)) {
      if (name.size() < 10 || name.compare(name.size() - 9, 9, ".scenario") != 0) continue;
      std::string scenario = examples + folder + "/" + name;
      // Those that fly in FlightGear run in its own test.
      if (ReadFile(scenario).compare(0, 20, "# world: flightgear\n") == 0) continue;
      scenarios.push_back(folder + "/" + name);
      // Only scenarios that look at pixels pay for drawing them.
      bool pixels = std::regex_search(ReadFile(scenario), std::regex("\n(expect )?(pixel|screenshot) "));
      std::string arguments = "--scenario '" + scenario + "'" + (pixels ? "" : " --render none");
      ProgramRun run = RunHost(TOKA_EXAMPLES_ROOT, arguments);
      EXPECT_EQ(0, run.status) << scenario << "\n" << run.err;
      EXPECT_NE(std::string::npos, run.err.find(" steps passed\n")) << run.err;

      run = RunHost(empty.root(), arguments);
      int reports = Count(run.err, "\n  expected: ");
      EXPECT_GT(reports, 0) << scenario << " holds without its plugins";
      EXPECT_EQ(std::min(reports, kMaxFailureStatus), run.status) << run.err;
      EXPECT_NE(std::string::npos, run.err.find("toka-host: " + std::to_string(reports) + " of ")) << run.err;
      if (name == "hello.scenario") {
        EXPECT_EQ(0u, run.err.find(scenario + ":4: frame 0: expect plugin Hello enabled\n"
                                   "  expected: plugin \"Hello\" enabled\n"
                                   "  found:    absent\n"))
            << run.err;
      }
    }
  }
  EXPECT_EQ(7u, scenarios.size());  // one beside each example of the builtin world
}

// ---- toka-host on the example plugins, and its options ----------------------

// Every example loads, lives through thousands of frames of the user's input
// and ends cleanly; the one step that cannot be carried out is the only
// failure.
TEST(HostProgram, RunsTheExamplePluginsThroughTheirWholeLifeWithUserInput) {
  TempTree scratch;
  std::string trace = scratch.root() + "trace.txt";
  ProgramRun run = RunHost(
      TOKA_EXAMPLES_ROOT,
      "--render none --frames 3000 --trace '" + trace +
          "' --at '10:move 100 100' --at '20:click 200 300' --at '30:key P'"
          " --at '40:command sim/operation/pause_toggle once' --at '50:menu \"Sim/Pause\"'"
          " --at '60:airport KOLM' --at '70:scroll 5 5 2' --at '80:message 101'"
          " --at '90:command sim/operation/reset_flight once' --at '100:menu \"Plugins/None\"'");
  EXPECT_EQ(1, run.status);
  EXPECT_EQ("--at: frame 100: menu \"Plugins/None\"\n"
            "  expected: a menu item \"Plugins/None\"\n"
            "  found:    no such item\n"
            "toka-host: 1 of 10 steps failed\n",
            run.err);
  std::string plugins = std::string(TOKA_EXAMPLES_ROOT) + "Resources/plugins";
  int examples = 0;
  for (const std::string& name : TempTree::Listing(plugins)) {
    if (name.size() < 4 || name.compare(name.size() - 4, 4, ".orv") != 0) continue;
    ++examples;
    EXPECT_NE(std::string::npos, run.out.find("Loaded: " + plugins + "/" + name + ".\n\n")) << name;
  }
  EXPECT_GE(examples, 1);
  ExpectInOrder(run.out, {"hello: started\n", "Loaded: " + plugins + "/hello.orv.\n\n", "hello: enabled\n",
                          "[sim] paused\n", "[sim] running\n", "[menu] Sim/Pause\n[sim] paused\n",
                          "[aircraft] placed at KOLM Olympia Regional\n", "hello: disabled\n",
                          "hello: stopped\n"});
  EXPECT_NE(std::string::npos,
            ReadFile(trace).find("frame 3000 slot 29 DebugString(\"hello: stopped\\n\")\n"));
}

TEST(HostProgram, HelpDocumentsTheOptionsAndBadValuesAreRefused) {
  ProgramRun run = RunProgram(TOKA_HOST_BINARY, "--help");
  EXPECT_EQ(0, run.status);
  EXPECT_EQ(HostUsage(), run.out);
  const char* words[] = {"toka-host", "--seconds", "1.5", "--step", "0.02"};
  HostOptions options;
  std::string error;
  ASSERT_TRUE(ParseHostOptions(5, const_cast<char**>(words), options, error));
  EXPECT_EQ(75, options.frames);
  for (auto bad : std::vector<std::pair<std::string, std::string>>{
           {"--screen 0x10", "--screen: 0x10"},
           {"--at '5:fly high'", "--at: 5:fly high: column 1: unknown step \"fly\""},
           {"--at 'x:pause'", "--at: x:pause"}}) {
    run = RunProgram(TOKA_HOST_BINARY, bad.first);
    EXPECT_EQ(kCannotRunStatus, run.status);
    EXPECT_EQ(0u, run.err.find("toka-host: bad value for " + bad.second + "\n")) << run.err;
  }
}

}  // namespace
