// Scenarios of the reference host: the language read from a file, and
// toka-host running scenarios on a plugin with a window, a hot key, a menu, a
// command and datarefs (tests/plugins/host_panel.cpp).
#include <dirent.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "harness/host_program.h"
#include "harness/temp_tree.h"
#include "host/keys.h"
#include "host/run.h"
#include "host/scenario/scenario.h"
#include "toka/TOKAUtilities.h"

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

TEST(ScenarioParser, EveryStepReadsIntoWhatTheRunNeeds) {
  std::vector<ScenarioStep> steps = Parse(
      "# input\n"
      "key F1\n"
      "key a shift\n"
      "\tkey \"Page Up\" control alt 16\r\n"
      "key numpad-enter\n"
      "\n"
      "click 10 20\n"
      "drag 1 2 3 -4\n"
      "scroll 5 6 -3\n"
      "move 7 8\n"
      "at 3\n"
      "menu \"Plugins/Panel/Show panel\"\n"
      "command sim/operation/pause_toggle begin\n"
      "dataref my/value = -2.5\n"
      "dataref my/title = \"a \\\"b\\\"\"\n"
      "aircraft load \"Aircraft/My Jet/jet.acf\"\n"
      "aircraft unload\n"
      "scenery load \"Custom Scenery/Alps\"\n"
      "message 102 3\n"
      "message 108\n"
      "camera release\n"
      "pause\n"
      "airport kolm\n"
      "enable Panel\n"
      "disable \"Hello World\"\n"
      "reload\n"
      "at 2.5 s\n"
      "expect log contains \"a\\tb\\n\"\n"
      "expect log matches /x\\/y\\d/\n"
      "expect dataref my/value == 3 within 0.5\n"
      "expect dataref my/title == \"hi\"\n"
      "expect window at 1 2\n"
      "expect no window at 3 4\n"
      "expect plugin Panel absent\n"
      "expect menu \"Sim/Pause\" disabled\n"
      "expect host-call DrawString count 2\n"
      "expect host-call SpeakString\n"
      "expect pixel 10 -20 #A0b0C0 within 7\n"
      "expect screenshot matches \"ref dir/a.png\" within 2.5%\n"
      "at 26\n"
      "screenshot \"out dir/a.png\"\n");
  struct Expected {
    int frame;
    StepKind kind;
    std::vector<int> numbers;
    std::string name, word;
  };
  const std::vector<Expected> expected = {
      {0, StepKind::Key, {0x70, 0, 0}, "", ""},
      {0, StepKind::Key, {'A', 'A', 1}, "", ""},
      {0, StepKind::Key, {0x21, 0, 22}, "", ""},
      {0, StepKind::Key, {0xBC, '\r', 0}, "", ""},
      {0, StepKind::Click, {10, 20}, "", ""},
      {0, StepKind::Drag, {1, 2, 3, -4}, "", ""},
      {0, StepKind::Scroll, {5, 6, -3}, "", ""},
      {0, StepKind::Move, {7, 8}, "", ""},
      {3, StepKind::Menu, {}, "Plugins/Panel/Show panel", ""},
      {3, StepKind::Command, {}, "sim/operation/pause_toggle", "begin"},
      {3, StepKind::SetDataRef, {}, "my/value", ""},
      {3, StepKind::SetDataRef, {}, "my/title", ""},
      {3, StepKind::AircraftLoad, {}, "Aircraft/My Jet/jet.acf", ""},
      {3, StepKind::AircraftUnload, {}, "", ""},
      {3, StepKind::SceneryLoad, {}, "Custom Scenery/Alps", ""},
      // The message, the event that makes the library send it, its parameter.
      {3, StepKind::Message, {102, 3, 3}, "", ""},
      {3, StepKind::Message, {108, 13, 0}, "", ""},
      {3, StepKind::CameraRelease, {}, "", ""},
      {3, StepKind::Pause, {}, "", ""},
      {3, StepKind::Airport, {}, "kolm", ""},
      {3, StepKind::Enable, {}, "Panel", ""},
      {3, StepKind::Disable, {}, "Hello World", ""},
      {3, StepKind::Reload, {}, "", ""},
      {25, StepKind::ExpectLogContains, {}, "a\tb\n", ""},
      {25, StepKind::ExpectLogMatches, {}, "x/y\\d", ""},
      {25, StepKind::ExpectDataRef, {}, "my/value", ""},
      {25, StepKind::ExpectDataRef, {}, "my/title", ""},
      {25, StepKind::ExpectWindow, {1, 2}, "", ""},
      {25, StepKind::ExpectNoWindow, {3, 4}, "", ""},
      {25, StepKind::ExpectPlugin, {}, "Panel", "absent"},
      {25, StepKind::ExpectMenu, {}, "Sim/Pause", "disabled"},
      {25, StepKind::ExpectHostCall, {}, "DrawString", ""},
      {25, StepKind::ExpectHostCall, {}, "SpeakString", ""},
      {25, StepKind::ExpectPixel, {10, -20, 0xA0B0C0}, "", ""},
      {25, StepKind::ExpectScreenshot, {}, "ref dir/a.png", ""},
      {26, StepKind::Screenshot, {}, "out dir/a.png", ""},
  };
  ASSERT_EQ(expected.size(), steps.size());
  for (size_t i = 0; i < steps.size(); ++i) {
    SCOPED_TRACE(steps[i].text);
    EXPECT_EQ(expected[i].frame, steps[i].frame);
    EXPECT_EQ(expected[i].kind, steps[i].kind);
    EXPECT_EQ(expected[i].numbers, steps[i].numbers);
    EXPECT_EQ(expected[i].name, steps[i].name);
    EXPECT_EQ(expected[i].word, steps[i].word);
  }
  EXPECT_EQ("s.scenario:4", steps[2].where);
  EXPECT_EQ("key \"Page Up\" control alt 16", steps[2].text);
  EXPECT_EQ(-2.5, steps[10].value);
  EXPECT_FALSE(steps[10].isText);
  EXPECT_TRUE(steps[11].isText);
  EXPECT_EQ("a \"b\"", steps[11].textValue);
  EXPECT_EQ(3, steps[25].value);
  EXPECT_EQ(0.5, steps[25].tolerance);
  EXPECT_EQ(-1, steps[26].tolerance);
  EXPECT_EQ("hi", steps[26].textValue);
  EXPECT_TRUE(steps[31].hasCount);
  EXPECT_EQ(2, steps[31].value);
  EXPECT_FALSE(steps[32].hasCount);
  EXPECT_EQ(7, steps[33].tolerance);
  EXPECT_EQ(2.5, steps[34].tolerance);
}

TEST(ScenarioParser, SecondsCountInFramesOfTheTimeStep) {
  // A time is reached in the frame whose end reaches it.
  EXPECT_EQ(60, Parse("at 1 s\npause\n", 1.0 / 60).at(0).frame);
  EXPECT_EQ(3, Parse("at 0.25s\npause\n", 0.1).at(0).frame);
  EXPECT_EQ(0, Parse("at 0 s\npause\n", 0.1).at(0).frame);
  EXPECT_EQ(5, Parse("at 0.5 s\nat 5\npause\n", 0.1).at(0).frame);
}

TEST(ScenarioParser, KeyNamesAreTheLibrarysOwn) {
  int named = 0;
  for (int code = 0; code < 256; ++code) {
    std::string name = TOKAGetVirtualKeyDescription((char)code);
    if (name == "Unknown") continue;
    ++named;
    const VirtualKey* key = FindVirtualKey(name);
    ASSERT_TRUE(key) << name;
    EXPECT_EQ(code, key->code) << name;
  }
  EXPECT_EQ(110, named);
  EXPECT_EQ(110u, VirtualKeys().size());
}

TEST(ScenarioParser, AMalformedLineStopsWithFileLineAndColumn) {
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
      {"at 1 s\nat 59", "s.scenario:2:4: time goes backwards: frame 59 is before frame 60"},
      {"at -1", "s.scenario:1:4: bad number \"-1\""},
      {"at", "s.scenario:1:3: expected a frame number or a time in seconds"},
      {"at 2 s later", "s.scenario:1:8: unexpected \"later\""},
      {"click 10", "s.scenario:1:9: expected Y"},
      {"scroll 1 2 lots", "s.scenario:1:12: bad number \"lots\""},
      {"key F25", "s.scenario:1:5: unknown key \"F25\""},
      {"key A hyper", "s.scenario:1:7: unknown key flag \"hyper\""},
      {"menu Sim/Pause", "s.scenario:1:6: expected a menu path in double quotes, found \"Sim/Pause\""},
      {"command x hold", "s.scenario:1:11: expected \"begin\", \"end\" or \"once\", found \"hold\""},
      {"dataref x 1", "s.scenario:1:11: expected \"=\", found \"1\""},
      {"dataref x = one", "s.scenario:1:13: bad number \"one\""},
      {"aircraft fly", "s.scenario:1:10: expected \"load\" or \"unload\", found \"fly\""},
      {"message 99", "s.scenario:1:9: the simulator sends messages 101 to 108, not 99"},
      {"airport KXYZ", "s.scenario:1:9: unknown airport \"KXYZ\""},
      {"pause now", "s.scenario:1:7: unexpected \"now\""},
      {"expect sky blue",
       "s.scenario:1:8: expected \"log\", \"dataref\", \"window\", \"no\", \"plugin\", \"menu\", "
       "\"host-call\", \"pixel\" or \"screenshot\", found \"sky\""},
      {"expect pixel 1 2 #12345", "s.scenario:1:18: expected a colour #RRGGBB, found \"#12345\""},
      {"expect pixel 1 2 #-12345", "s.scenario:1:18: expected a colour #RRGGBB, found \"#-12345\""},
      {"expect pixel 1 2 #123456 within", "s.scenario:1:32: expected a tolerance per channel"},
      {"expect screenshot matches a.png within 5",
       "s.scenario:1:40: expected a share of the pixels such as 0.5%, found \"5\""},
      {"expect screenshot like a.png", "s.scenario:1:19: expected \"matches\", found \"like\""},
      {"expect log matches /(/", "s.scenario:1:20: bad regular expression: " + badRegex},
      {"expect log matches /abc", "s.scenario:1:20: unterminated regular expression"},
      {"expect dataref x = 1", "s.scenario:1:18: expected \"==\", found \"=\""},
      {"expect dataref x == 1 within -2", "s.scenario:1:30: bad number \"-2\""},
      {"expect plugin Panel sleeping",
       "s.scenario:1:21: expected \"enabled\", \"disabled\", \"loaded\" or \"absent\", found "
       "\"sleeping\""},
      {"expect host-call Foo", "s.scenario:1:18: unknown host service \"Foo\""},
      {"expect host-call DrawString count -1", "s.scenario:1:35: bad number \"-1\""},
      {"screenshot a.ppm", "s.scenario:1:12: expected a file name ending in .png, found \"a.ppm\""},
      {"at 3\nexpect window at 1 1\n  key F1",
       "s.scenario:3:3: \"key\" acts after an expectation of frame 3 (a frame's actions come "
       "before its expectations)"},
  };
  for (const auto& entry : cases) EXPECT_EQ(entry.second, ErrorOf(entry.first)) << entry.first;
  // A new frame may act again.
  EXPECT_EQ(3u, Parse("at 3\nexpect window at 1 1\nat 4\nkey F1\nexpect window at 1 1\n").size());
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
  ProgramRun Run(const std::string& scenario, const std::string& more = "") {
    std::string file = tree.AddFile("test.scenario", scenario);
    return RunProgram(TOKA_HOST_BINARY, "--root '" + tree.root() + "' --library '" +
                                            TOKA_LIBRARY_FILE + "' --traffic 0 --render none --scenario '" +
                                            file + "' " + more);
  }
};

void ExpectInOrder(const std::string& text, const std::vector<std::string>& lines) {
  size_t at = 0;
  for (const std::string& line : lines) {
    size_t found = text.find(line, at);
    ASSERT_NE(std::string::npos, found) << line << " in\n" << text;
    at = found + line.size();
  }
}

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
      "key \"Page Up\" shift control\n"
      "key A shift\n"
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
      "expect menu \"Plugins/Panel/Nothing\" checked\n"
      "at 2\n"
      "key F1\n"
      "expect window at 150 650\n"
      "expect dataref test/panel/visible == 1\n"
      "expect dataref test/panel/scale == 1.5\n"
      "expect dataref test/panel/title == \"Panel 43\"\n"
      "expect dataref test/panel/mouse[7] == 0\n"
      "expect dataref no/such/ref == 0\n"
      "expect log contains \"panel: shown\"\n"
      "expect log matches /^panel: hidden$\\npanel: shown/\n"
      "expect host-call DrawTranslucentDarkBox\n"
      "expect host-call DebugString count 3\n"
      "at 3\n"
      "menu \"Plugins/Panel/Never\"\n"
      "command no/such/command once\n"
      "dataref sim/time/total_running_time_sec = 5\n"
      "enable Nobody\n"
      "aircraft load Aircraft/None/none.acf\n");
  std::string file = tree.root() + "test.scenario";
  EXPECT_EQ(20, run.status);
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
      file + ":5: frame 0: expect menu \"Plugins/Panel/Nothing\" checked\n"
      "  expected: menu item \"Plugins/Panel/Nothing\" checked\n"
      "  found:    no such item\n" +
      file + ":8: frame 2: expect window at 150 650\n"
      "  expected: a visible plugin window at (150, 650)\n"
      "  found:    none there\n" +
      file + ":9: frame 2: expect dataref test/panel/visible == 1\n"
      "  expected: test/panel/visible == 1\n"
      "  found:    0\n" +
      file + ":10: frame 2: expect dataref test/panel/scale == 1.5\n"
      "  expected: test/panel/scale == 1.5 within 1.5e-05\n"
      "  found:    1\n" +
      file + ":11: frame 2: expect dataref test/panel/title == \"Panel 43\"\n"
      "  expected: test/panel/title == \"Panel 43\"\n"
      "  found:    \"Panel 42\"\n" +
      file + ":12: frame 2: expect dataref test/panel/mouse[7] == 0\n"
      "  expected: test/panel/mouse[7] == 0\n"
      "  found:    no element 7\n" +
      file + ":13: frame 2: expect dataref no/such/ref == 0\n"
      "  expected: no/such/ref == 0\n"
      "  found:    no dataref no/such/ref\n" +
      file + ":14: frame 2: expect log contains \"panel: shown\"\n"
      "  expected: the log to contain \"panel: shown\"\n"
      "  found:    no such text in " + lines + " lines of log\n" +
      file + ":15: frame 2: expect log matches /^panel: hidden$\\npanel: shown/\n"
      "  expected: a match for /^panel: hidden$\\npanel: shown/ in the log\n"
      "  found:    none in " + lines + " lines of log\n" +
      file + ":16: frame 2: expect host-call DrawTranslucentDarkBox\n"
      "  expected: DrawTranslucentDarkBox called in frame 2\n"
      "  found:    called 0 times\n" +
      file + ":17: frame 2: expect host-call DebugString count 3\n"
      "  expected: DebugString called 3 times in frame 2\n"
      "  found:    called 2 times\n" +
      file + ":19: frame 3: menu \"Plugins/Panel/Never\"\n"
      "  expected: an enabled menu item \"Plugins/Panel/Never\"\n"
      "  found:    it is disabled\n" +
      file + ":20: frame 3: command no/such/command once\n"
      "  expected: a command no/such/command\n"
      "  found:    no such command\n" +
      file + ":21: frame 3: dataref sim/time/total_running_time_sec = 5\n"
      "  expected: a writable dataref sim/time/total_running_time_sec\n"
      "  found:    sim/time/total_running_time_sec is read-only\n" +
      file + ":22: frame 3: enable Nobody\n"
      "  expected: a plugin \"Nobody\"\n"
      "  found:    absent\n" +
      file + ":23: frame 3: aircraft load Aircraft/None/none.acf\n"
      "  expected: an aircraft model " + tree.root() + "Aircraft/None/none.acf\n"
      "  found:    no such file\n"
      "toka-host: 20 of 21 steps failed\n",
      run.err);
}

TEST_F(ScenarioRun, TheStatusStopsAtAHundredAndStepsNeverReachedFail) {
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
  // A run told to be shorter than the scenario ends where it is told.
  run = Run("at 5\nexpect plugin Panel enabled\n", "--frames 3");
  EXPECT_EQ(1, run.status);
  EXPECT_NE(std::string::npos, run.err.find("  found:    the run ended at frame 3\n"));
  // --at steps join the file's.
  run = Run("at 5\nexpect plugin Panel disabled\n", "--at '5:disable Panel'");
  EXPECT_EQ(0, run.status) << run.err;
}

TEST_F(ScenarioRun, AMalformedScenarioNeverStarts) {
  ProgramRun run = Run("expect plugin Panel enabled\nclick 10 x\n");
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
      scenarios.push_back(folder + "/" + name);
      // Only scenarios that look at pixels pay for drawing them.
      std::string text = ReadFile(scenario);
      bool pixels = text.find("\nexpect pixel ") != std::string::npos ||
                    text.find("\nexpect screenshot ") != std::string::npos ||
                    text.find("\nscreenshot ") != std::string::npos;
      std::string arguments = "' --library '" + std::string(TOKA_LIBRARY_FILE) + "' --scenario '" +
                              scenario + "'" + (pixels ? "" : " --render none");
      ProgramRun run = RunProgram(TOKA_HOST_BINARY, "--root '" + std::string(TOKA_EXAMPLES_ROOT) +
                                                        arguments);
      EXPECT_EQ(0, run.status) << scenario << "\n" << run.err;
      EXPECT_NE(std::string::npos, run.err.find(" steps passed\n")) << run.err;

      run = RunProgram(TOKA_HOST_BINARY, "--root '" + empty.root() + arguments);
      int reports = 0;
      for (size_t at = run.err.find("\n  expected: "); at != std::string::npos;
           at = run.err.find("\n  expected: ", at + 1))
        ++reports;
      EXPECT_GT(reports, 0) << scenario << " holds without its plugins";
      EXPECT_EQ(std::min(reports, kMaxFailureStatus), run.status) << run.err;
      EXPECT_NE(std::string::npos,
                run.err.find("toka-host: " + std::to_string(reports) + " of "))
          << run.err;
      if (name == "hello.scenario") {
        EXPECT_EQ(0u, run.err.find(scenario + ":4: frame 0: expect plugin Hello enabled\n"
                                   "  expected: plugin \"Hello\" enabled\n"
                                   "  found:    absent\n"))
            << run.err;
      }
    }
  }
  std::sort(scenarios.begin(), scenarios.end());
  EXPECT_EQ((std::vector<std::string>{"camera/camera.scenario", "commands/commands.scenario",
                                      "dataref-consumer/dataref-consumer.scenario",
                                      "gl-gauge/gl-gauge.scenario", "hello/hello.scenario", "probe/probe.scenario",
                                      "template/my_plugin.scenario"}),
            scenarios);
}

}  // namespace
