// toka-validate, run as a plugin author runs it: its options, its report in
// text and JSON, the deliberately broken plugins each caught by the one
// check meant for it, and the examples passing every check.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

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

// The report's lines that start with word ("FAIL", "PASS", ...).
std::vector<std::string> Lines(const std::string& report, const std::string& word) {
  std::vector<std::string> lines;
  size_t at = 0;
  while (at < report.size()) {
    size_t end = report.find('\n', at);
    std::string line = report.substr(at, end - at);
    if (line.compare(0, word.size(), word) == 0) lines.push_back(line);
    at = end == std::string::npos ? report.size() : end + 1;
  }
  return lines;
}

}  // namespace

TEST(ValidateOptions, BadOptionsStopWithOneLineAndTheHelpListsEveryOption) {
  struct Case {
    const char* arguments;
    const char* error;
  } cases[] = {
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
  for (const Case& c : cases) {
    ProgramRun run = Validate(c.arguments);
    EXPECT_EQ(101, run.status) << c.arguments;
    EXPECT_EQ(c.error, run.err) << c.arguments;
    EXPECT_EQ("", run.out) << c.arguments;
  }
  ProgramRun help = Validate("--help");
  EXPECT_EQ(0, help.status);
  ExpectInOrder(help.out, {"usage: toka-validate [options] PLUGIN.orv|FOLDER", "--level 1..5",
                           "--repeat N", "--frames N", "--seed S", "--json FILE", "--only CHECK",
                           "--list-checks", "  5      240     8       2 ms    16.7 ms  500\n"});
  ProgramRun list = Validate("--list-checks");
  EXPECT_EQ(0, list.status);
  ExpectInOrder(list.out, {"entry-points  ", "\nlifecycle     ", "\ncleanup       ", "\nhandles       "});
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
  ProgramRun run = Validate("--seed 1 '" + dir + "'");
  EXPECT_EQ(6, run.status) << run.out << run.err;
  std::vector<std::string> failures = {
      "FAIL lifecycle " + dir + "/draw_null.orv: killed by signal SIGSEGV (Segmentation fault)",
      "FAIL entry-points " + dir + "/duplicate_signature.orv: its signature "
      "\"toka.broken.draw-null\" is that of a plugin before it",
      "FAIL cleanup " + dir + "/keeps_hot_key.orv: left to the library's clean-up at unload: "
      "hot keys 1",
      "FAIL cleanup " + dir + "/leaves_window.orv: left to the library's clean-up at unload: "
      "windows 1",
      "FAIL handles " + dir + "/stale_dataref.orv: Stale dataref: TOKAGetDatai was given a stale "
      "handle: dataref \"toka/broken/stale/value\", which it no longer serves (120 times)",
      "FAIL lifecycle " + dir + "/throws_in_loop.orv: an exception escaped the first run, "
      "frame 3: the third run of the flight loop",
  };
  EXPECT_EQ(failures, Lines(run.out, "FAIL"));
  EXPECT_EQ(20u, Lines(run.out, "PASS").size());
  // The crash and the exception are the lifecycle check's; the handles
  // check, which runs the same frames, meets them again and says so.
  EXPECT_EQ((std::vector<std::string>{
                "SKIP handles " + dir + "/draw_null.orv: killed by signal SIGSEGV (Segmentation "
                "fault) (see lifecycle)",
                "SKIP handles " + dir + "/throws_in_loop.orv: an exception escaped the plugin's "
                "life (see lifecycle): the third run of the flight loop"}),
            Lines(run.out, "SKIP"));
  ExpectInOrder(run.out, {"toka-validate: seed 1, level 3, 60 frames, 3 cycles\n",
                          "hot keys 1\n    warning: still running after its disable entry: "
                          "hot keys 1\n",
                          "PASS cleanup " + dir + "/loop_after_disable.orv: warning: still "
                          "running after its disable entry: scheduled flight loops 1\n",
                          "toka-validate: 20 passed, 6 failed, 2 skipped (seed 1)\n"});

  // What still runs after disable fails at the strictest level; below level
  // 3 neither it nor what is left at unload fails.
  ProgramRun strict = Validate("--level 5 --only cleanup '" + Broken("loop_after_disable") + "'");
  EXPECT_EQ(1, strict.status);
  EXPECT_EQ(std::vector<std::string>{"FAIL cleanup " + Broken("loop_after_disable") +
                                     ": still running after its disable entry: scheduled "
                                     "flight loops 1"},
            Lines(strict.out, "FAIL"));
  ProgramRun lenient = Validate("--level 2 --only cleanup '" + Broken("leaves_window") + "'");
  EXPECT_EQ(0, lenient.status);
  EXPECT_EQ(std::vector<std::string>{"PASS cleanup " + Broken("leaves_window") +
                                     ": warning: left to the library's clean-up at unload: "
                                     "windows 1"},
            Lines(lenient.out, "PASS"));
}

TEST(ValidateExamples, EveryExamplePassesEveryCheckAtTheStrictestLevel) {
  ProgramRun run = Validate("--level 5 '" TOKA_EXAMPLES_ROOT "Resources/plugins'");
  EXPECT_EQ(0, run.status) << run.out << run.err;
  EXPECT_TRUE(Lines(run.out, "FAIL").empty()) << run.out;
  EXPECT_TRUE(Lines(run.out, "SKIP").empty()) << run.out;
  EXPECT_EQ(8u * 4u, Lines(run.out, "PASS").size()) << run.out;
}

// The report names its seed, and the same seed gives the same report, in
// text and in JSON; --only runs one check of the same run.
TEST(ValidateReport, TheSameSeedGivesTheSameReportAndJsonSaysTheSame) {
  TempTree scratch;
  std::string dir = TOKA_BROKEN_DIR;
  std::string first = scratch.root() + "first.json", second = scratch.root() + "second.json";
  ProgramRun a = Validate("--seed 42 --repeat 4 --json '" + first + "' '" + dir + "'");
  ProgramRun b = Validate("--seed 42 --repeat 4 --json '" + second + "' '" + dir + "'");
  EXPECT_EQ(a.out, b.out);
  EXPECT_EQ(ReadFile(first), ReadFile(second));
  ExpectInOrder(a.out, {"toka-validate: seed 42, level 3, 60 frames, 4 cycles\n",
                        "4 warm and 4 cold cycles", "(seed 42)\n"});

  nlohmann::json report = nlohmann::json::parse(ReadFile(first));
  EXPECT_EQ(42u, report["seed"]);
  EXPECT_EQ(6, report["failed"]);
  EXPECT_EQ(20, report["passed"]);
  EXPECT_EQ(2, report["skipped"]);
  ASSERT_EQ(28u, report["checks"].size());
  const nlohmann::json& crash = report["checks"][1];
  EXPECT_EQ(dir + "/draw_null.orv", crash["plugin"]);
  EXPECT_EQ("lifecycle", crash["check"]);
  EXPECT_EQ("FAIL", crash["status"]);
  EXPECT_EQ("killed by signal SIGSEGV (Segmentation fault)", crash["reason"]);
  EXPECT_EQ("toka.broken.draw-null", report["checks"][0]["signature"]);

  ProgramRun only = Validate("--seed 42 --repeat 4 --only lifecycle '" + dir + "'");
  std::vector<std::string> lifecycle;
  for (const std::string& line : Lines(a.out, ""))
    if (line.find(" lifecycle ") == 4) lifecycle.push_back(line);
  std::vector<std::string> onlyLines;
  for (const std::string& line : Lines(only.out, ""))
    if (line.find(" lifecycle ") == 4) onlyLines.push_back(line);
  EXPECT_EQ(lifecycle, onlyLines);
  EXPECT_EQ(7u, onlyLines.size());
  EXPECT_EQ(2, only.status);
}
