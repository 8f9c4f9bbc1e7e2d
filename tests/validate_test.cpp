// toka-validate, run as a plugin author runs it: its options, its report in
// text and JSON, the deliberately broken plugins each caught by the one
// check meant for it, and the examples passing every check.
#include <unistd.h>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <regex>

#include "harness/host_program.h"
#include "harness/temp_tree.h"

using namespace toka_test;

namespace {

ProgramRun Validate(const std::string& arguments) {
  return RunProgram(TOKA_VALIDATE_BINARY, arguments);
}

std::string Broken(const std::string& name) {
  return std::string(TOKA_BROKEN_DIR) + "/" + name + ".orv";
}

// The report's lines that keep keeps; those that start with word ("FAIL",
// "PASS", ...); those of one check's results ("PASS cost ...").
std::vector<std::string> Lines(const std::string& report, const std::function<bool(const std::string&)>& keep) {
  std::vector<std::string> lines;
  for (size_t at = 0, end; at < report.size(); at = end + 1) {
    end = std::min(report.find('\n', at), report.size());
    std::string line = report.substr(at, end - at);
    if (keep(line)) lines.push_back(line);
  }
  return lines;
}
std::vector<std::string> Lines(const std::string& report, const std::string& word) {
  return Lines(report, [&](const std::string& line) { return line.compare(0, word.size(), word) == 0; });
}
std::vector<std::string> OfCheck(const std::string& report, const std::string& check) {
  return Lines(report, [&](const std::string& line) { return line.find(" " + check + " ") == 4; });
}

std::string Own(const std::string& name) {
  return std::string(TOKA_VALIDATE_PLUGIN_DIR) + "/" + name + ".orv";
}

}  // namespace

TEST(ValidateOptions, BadOptionsStopWithOneLineAndTheHelpListsEveryOption) {
  const std::pair<const char*, const char*> cases[] = {
      {"--level 6 x.orv", "toka-validate: --level takes a number from 1 to 5, not \"6\"\n"},
      {"--repeat -1 x.orv", "toka-validate: --repeat takes a number from 0 to 1000, not \"-1\"\n"},
      {"--seed 12ab x.orv",
       "toka-validate: --seed takes a whole number from 0 to 18446744073709551615, not \"12ab\"\n"},
      {"--bogus x.orv", "toka-validate: unknown option --bogus\n"},
      {"--frames", "toka-validate: --frames needs a value\n"},
      {"--only nope x.orv", "toka-validate: unknown check \"nope\" (--list-checks lists them)\n"},
      {"", "toka-validate: no plugin or folder given\n"},
      {"/nowhere/x.orv", "toka-validate: no such plugin or folder: /nowhere/x.orv\n"},
  };
  for (const auto& [arguments, error] : cases) {
    ProgramRun run = Validate(arguments);
    EXPECT_EQ(101, run.status) << arguments;
    EXPECT_EQ(error, run.err) << arguments;
    EXPECT_EQ("", run.out) << arguments;
  }
  ProgramRun help = Validate("--help");
  EXPECT_EQ(0, help.status);
  ExpectInOrder(help.out, {"usage: toka-validate [options] PLUGIN.orv|FOLDER", "--level 1..5",
                           "--repeat N", "--frames N", "--seed S", "--json FILE", "--only CHECK",
                           "--list-checks", "  5      240     8       5        2 ms    16.7 ms  500\n"});
  ProgramRun list = Validate("--list-checks");
  EXPECT_EQ(0, list.status);
  ExpectInOrder(list.out, {"entry-points  ", "\nlifecycle     ", "\ncleanup       ", "\nhandles       ",
                           "\ncost          ", "\ninput         "});
}

// Each broken plugin fails the one check that is about its fault, with the
// reason a plugin author reads; its other checks pass. The plugins link
// libtoka.so, which the loader brings in beside the validator: the window
// and the hot key are seen only because their calls reach the validator's
// own copy of the library.
TEST(ValidateBroken, EachBrokenPluginFailsItsOwnCheckOnly) {
  ProgramRun needs = RunProgram("readelf", "-d '" + Broken("leaves_window") + "'");
  ASSERT_NE(std::string::npos, needs.out.find("[libtoka.so]")) << needs.out;

  std::string dir = TOKA_BROKEN_DIR;
  TempTree tmp;
  setenv("TMPDIR", tmp.root().c_str(), 1);
  ProgramRun run = Validate("--seed 1 --frames 20 '" + dir + "'");
  EXPECT_EQ(7, run.status) << run.out << run.err;
  // Nothing stays in the temporary folder, not even from the checks whose
  // process a plugin crashed.
  EXPECT_EQ(std::vector<std::string>{}, TempTree::Listing(tmp.root()));
  // The crash's own report, from the check's process: the plugin whose draw
  // callback faulted, inside the drawing hook.
  ExpectInOrder(run.err, {"toka-validate: crashed: SIGSEGV (invalid memory access) at address 0x0\n"
                          "toka-validate: faulting code: /",
                          "/Resources/plugins/draw_null.orv (",
                          "\"Draws through null\" toka.broken.draw-null\n",
                          "the signal came): TOKADoDrawingHook\n"});
  std::vector<std::string> failures = {
      "FAIL lifecycle " + dir + "/draw_null.orv: killed by signal SIGSEGV (Segmentation fault)",
      "FAIL entry-points " + dir + "/duplicate_signature.orv: its signature "
      "\"toka.broken.draw-null\" is that of a plugin before it",
      "FAIL cleanup " + dir + "/keeps_hot_key.orv: left to the library's clean-up at unload: "
      "hot keys 1",
      "FAIL cleanup " + dir + "/leaves_window.orv: left to the library's clean-up at unload: "
      "windows 1",
      "FAIL cost " + dir + "/slow_frames.orv: too slow: median 20.",
      "FAIL handles " + dir + "/stale_dataref.orv: Stale dataref: TOKAGetDatai was given a stale "
      "handle: dataref \"toka/broken/stale/value\", which it no longer serves (40 times)",
      "FAIL lifecycle " + dir + "/throws_in_loop.orv: an exception escaped the first run, "
      "frame 3: the third run of the flight loop",
  };
  // The time measured varies from run to run: the slow plugin's line is
  // matched to its measurements' form.
  std::vector<std::string> found = Lines(run.out, "FAIL");
  ASSERT_EQ(failures.size(), found.size()) << run.out;
  const std::regex slow(
      "FAIL cost .*/slow_frames.orv: too slow: median 2\\d\\.\\d\\d ms, slowest \\d+\\.\\d\\d ms "
      "per frame in its code; 0\\.0 library calls per frame \\(at most 0\\); the median may be "
      "at most 5\\.0 ms at level 3");
  EXPECT_TRUE(std::regex_match(found[4], slow)) << found[4];
  found[4] = failures[4];
  EXPECT_EQ(failures, found);
  EXPECT_EQ(35u, Lines(run.out, "PASS").size());
  // The crash and the exception are the lifecycle check's; the checks that
  // run the same frames meet them again and say so.
  std::string crash = "killed by signal SIGSEGV (Segmentation fault) (see lifecycle)";
  std::string thrown =
      "an exception escaped the plugin's life (see lifecycle): the third run of the flight loop";
  EXPECT_EQ((std::vector<std::string>{
                "SKIP handles " + dir + "/draw_null.orv: " + crash,
                "SKIP cost " + dir + "/draw_null.orv: " + crash,
                "SKIP input " + dir + "/draw_null.orv: " + crash,
                "SKIP handles " + dir + "/throws_in_loop.orv: " + thrown,
                "SKIP cost " + dir + "/throws_in_loop.orv: " + thrown,
                "SKIP input " + dir + "/throws_in_loop.orv: an exception escaped frame 3: the "
                "third run of the flight loop (see lifecycle)"}),
            Lines(run.out, "SKIP"));
  ExpectInOrder(run.out, {"toka-validate: seed 1, level 3, 20 frames, 3 cycles\n",
                          "hot keys 1\n    warning: still running after its disable entry: "
                          "hot keys 1\n",
                          "PASS cleanup " + dir + "/loop_after_disable.orv: warning: still "
                          "running after its disable entry: scheduled flight loops 1\n",
                          "toka-validate: 35 passed, 7 failed, 6 skipped (seed 1)\n"});

  // Below level 3 neither what still runs after disable nor what is left at
  // unload fails.
  ProgramRun lenient = Validate("--level 2 --only cleanup '" + Broken("leaves_window") + "'");
  EXPECT_EQ(0, lenient.status);
  EXPECT_EQ(std::vector<std::string>{"PASS cleanup " + Broken("leaves_window") +
                                     ": warning: left to the library's clean-up at unload: "
                                     "windows 1"},
            Lines(lenient.out, "PASS"));
}

TEST(ValidateExamples, EveryExamplePassesEveryCheckAtTheStrictestLevel) {
  ProgramRun run = Validate("--level 5 --seed 5 '" TOKA_EXAMPLES_ROOT "Resources/plugins'");
  EXPECT_EQ(0, run.status) << run.out << run.err;
  EXPECT_TRUE(Lines(run.out, "FAIL").empty()) << run.out;
  EXPECT_TRUE(Lines(run.out, "SKIP").empty()) << run.out;
  EXPECT_EQ(9u * 6u, Lines(run.out, "PASS").size()) << run.out;
  // The input reaches what each plugin offers: the commands example's menu
  // and command, the gauge's writable dataref.
  ExpectInOrder(run.out, {"PASS input ", "/commands.orv: 240 frames: ", " commands begun, ",
                          " commands ended, ", " commands run once, ", " menu picks, ",
                          "PASS input ", "/gl-gauge.orv: 240 frames: ", " datarefs written, "});
}

// The report names its seed, and the same seed gives the same report, in
// text and in JSON, but for the times measured; --only runs one check of
// the same run.
TEST(ValidateReport, TheSameSeedGivesTheSameReportAndJsonSaysTheSame) {
  TempTree scratch;
  std::string dir = TOKA_BROKEN_DIR;
  std::string first = scratch.root() + "first.json", second = scratch.root() + "second.json";
  std::string options = "--seed 42 --repeat 4 --frames 10 ";
  ProgramRun a = Validate(options + "--json '" + first + "' '" + dir + "'");
  ProgramRun b = Validate(options + "--json '" + second + "' '" + dir + "'");
  // Everything but the cost check's measurements.
  auto withoutCost = [](const std::string& line) { return line.find(" cost ") != 4; };
  EXPECT_EQ(Lines(a.out, withoutCost), Lines(b.out, withoutCost));
  EXPECT_NE(std::string::npos, a.out.find(" cost "));
  ExpectInOrder(a.out, {"toka-validate: seed 42, level 3, 10 frames, 4 cycles\n",
                        "4 warm and 4 cold cycles", "(seed 42)\n"});

  nlohmann::json report = nlohmann::json::parse(ReadFile(first));
  nlohmann::json again = nlohmann::json::parse(ReadFile(second));
  for (nlohmann::json* json : {&report, &again})
    for (nlohmann::json& check : (*json)["checks"])
      if (check["check"] == "cost") check["reason"] = "";
  EXPECT_EQ(report, again);
  EXPECT_EQ(42u, report["seed"]);
  EXPECT_EQ(7, report["failed"]);
  EXPECT_EQ(35, report["passed"]);
  EXPECT_EQ(6, report["skipped"]);
  ASSERT_EQ(48u, report["checks"].size());
  const nlohmann::json& crash = report["checks"][1];
  EXPECT_EQ(dir + "/draw_null.orv", crash["plugin"]);
  EXPECT_EQ("lifecycle", crash["check"]);
  EXPECT_EQ("FAIL", crash["status"]);
  EXPECT_EQ("killed by signal SIGSEGV (Segmentation fault)", crash["reason"]);
  EXPECT_EQ("toka.broken.draw-null", report["checks"][0]["signature"]);

  ProgramRun only = Validate(options + "--only lifecycle '" + dir + "'");
  EXPECT_EQ(OfCheck(a.out, "lifecycle"), OfCheck(only.out, "lifecycle"));
  EXPECT_EQ(8u, OfCheck(only.out, "lifecycle").size());
  EXPECT_EQ(2, only.status);

  // Another seed, other input.
  std::string hello = "'" TOKA_EXAMPLES_ROOT "Resources/plugins/hello.orv'";
  ProgramRun one = Validate("--only input --seed 1 " + hello);
  ProgramRun two = Validate("--only input --seed 2 " + hello);
  ASSERT_EQ(1u, Lines(one.out, "PASS input").size());
  EXPECT_NE(Lines(one.out, "PASS input"), Lines(two.out, "PASS input"));
}

// What the entry points check finds, and the checks after it standing back
// when the plugin never starts.
TEST(ValidateChecks, EntryPointFaultsAreNamedAndAPluginThatNeverStartsIsSkipped) {
  ProgramRun run = Validate("--only entry-points '" TOKA_VALIDATE_PLUGIN_DIR "'");
  EXPECT_EQ(4, run.status);
  EXPECT_EQ((std::vector<std::string>{
                "FAIL entry-points " + Own("bad_entry_points") + ": its start entry left the name empty",
                "FAIL entry-points " + Own("no_start") + ": OrvanePluginStart is missing",
                "FAIL entry-points " + Own("throws_from_entries") +
                    ": an exception escaped OrvanePluginEnable: enabled twice",
                "FAIL entry-points " + Own("variable_entry") +
                    ": OrvanePluginEnable is exported but is not a function"}),
            Lines(run.out, "FAIL"));
  ExpectInOrder(run.out, {": its start entry left the name empty\n"
                          "    its start entry wrote past the 256 bytes of the description buffer\n",
                          "\ntoka-validate: 2 passed, 4 failed"});

  ProgramRun missing = Validate("'" + Own("no_start") + "'");
  EXPECT_EQ(1, missing.status);
  std::string notLoaded = ": not loaded (see entry-points): Failed: " + Own("no_start") +
                          ".  (This file is a loadable DLL but is missing the OrvanePluginStart "
                          "callback.)";
  std::vector<std::string> skipped;
  for (const char* check : {"lifecycle", "cleanup", "handles", "cost", "input"})
    skipped.push_back(std::string("SKIP ") + check + " " + Own("no_start") + notLoaded);
  EXPECT_EQ(skipped, Lines(missing.out, "SKIP"));
}

// Every sort of wrong handle, each once however often it is passed, named
// by whose it is; null where null is right is no mistake.
TEST(ValidateChecks, EveryWrongHandleIsNamedWithThePluginAndTheFunction) {
  ProgramRun run = Validate("--only handles '" + Own("bad_handles") + "'");
  EXPECT_EQ(1, run.status);
  std::string at = "\nFAIL handles " + Own("bad_handles") + ": Bad handles: ";
  ExpectInOrder(run.out,
                {at + "TOKAGetDatai was given a null dataref handle (once)\n",
                 "    Bad handles: TOKAScheduleFlightLoop was given a stale handle: its 1st flight "
                 "loop, destroyed (once)\n",
                 "    Bad handles: TOKAGetWindowIsVisible was given a stale handle: its 1st window, "
                 "destroyed (2 times)\n",
                 "    Bad handles: TOKASetWindowIsVisible was given a foreign handle: its 1st hot "
                 "key for a window (once)\n",
                 "    Bad handles: TOKADestroyMenu was given a never-issued handle: menu 0x"});
  EXPECT_TRUE(std::regex_search(run.out, std::regex("handle: menu 0x[0-9a-f]+ \\(once\\)\n"
                                                    "toka-validate: 0 passed, 1 failed")))
      << run.out;
}

// A folder stands for its *.orv files and */lin.orv, in name order; other
// files are not plugins. The exit status counts the failed checks up to a
// hundred; a report that cannot be written as JSON is said so, and the run's
// status stands.
TEST(ValidateChecks, AFolderStandsForItsPluginsInNameOrderAndTheStatusStopsAtAHundred) {
  TempTree tree;
  std::string folder = tree.AddFolder("plugins");
  tree.AddFile("plugins/notes.txt");
  tree.AddFolder("plugins/empty");
  ASSERT_EQ(0, symlink(Own("bad_entry_points").c_str(), (folder + "/b.orv").c_str()));
  tree.AddFolder("plugins/a");
  ASSERT_EQ(0, symlink(Own("no_start").c_str(), (folder + "/a/lin.orv").c_str()));
  for (int i = 0; i < 100; ++i) {
    std::string link = folder + "/p" + std::to_string(1000 + i) + ".orv";
    ASSERT_EQ(0, symlink(Own("no_start").c_str(), link.c_str()));
  }
  ProgramRun run = Validate("--only entry-points --json /nowhere/report.json '" + folder + "'");
  EXPECT_EQ(100, run.status);
  std::vector<std::string> found = Lines(run.out, "FAIL");
  ASSERT_EQ(102u, found.size()) << run.out;
  EXPECT_EQ("FAIL entry-points " + folder + "/a/lin.orv: OrvanePluginStart is missing", found[0]);
  EXPECT_EQ("FAIL entry-points " + folder + "/b.orv: its start entry left the name empty", found[1]);
  EXPECT_EQ("FAIL entry-points " + folder + "/p1000.orv: OrvanePluginStart is missing", found[2]);
  ExpectInOrder(run.out, {"toka-validate: 0 passed, 102 failed, 0 skipped"});
  EXPECT_EQ("toka-validate: cannot write /nowhere/report.json\n", run.err);

  ProgramRun none = Validate("'" + folder + "/empty'");
  EXPECT_EQ(101, none.status);
  EXPECT_EQ("toka-validate: no plugins in " + folder + "/empty\n", none.err);
}

// Each kind a plugin can own is counted where it is, at unload and after
// disable; the library's clean-up leaves nothing of any of them.
TEST(ValidateChecks, EveryKindLeftBehindIsCountedAndTheCleanUpLeavesNothing) {
  std::string plugin = Own("leaves_everything");
  ProgramRun run = Validate("--only cleanup --level 5 '" + plugin + "'");
  EXPECT_EQ(1, run.status);
  ExpectInOrder(run.out,
                {"\nFAIL cleanup " + plugin +
                 ": left to the library's clean-up at unload: windows 1, draw callbacks 1, key "
                 "sniffers 1, hot keys 1, flight loops 1, menus 1, command "
                 "handlers 1, held commands 1, datarefs 1, shared data 1, probes 1\n"
                 "    still running after its disable entry: scheduled flight loops 1, visible "
                 "windows 1, hot keys 1, key sniffers 1\n"
                 "toka-validate: 0 passed, 1 failed"});
}
