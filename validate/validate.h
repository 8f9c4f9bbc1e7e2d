// toka-validate: runs plugins in the reference host's world, each check in a
// child process of its own, and reports what it found.
#ifndef TOKA_VALIDATE_VALIDATE_H
#define TOKA_VALIDATE_VALIDATE_H

#include <cstdint>
#include <string>
#include <vector>

namespace toka_validate {

// Exit status for options that make no sense; otherwise the number of
// failed checks, at most kMaxFailureStatus.
constexpr int kBadOptionsStatus = 101;
constexpr int kMaxFailureStatus = 100;

struct Options {
  int level = 3;
  int repeat = -1;  // -1: the level's
  int frames = -1;  // -1: the level's
  uint64_t seed = 0;
  std::string json;  // the report as JSON too, or none
  std::string only;  // one check, or all
  bool listChecks = false;
  std::vector<std::string> targets;  // PLUGIN.orv files and folders, as given
};

// What each level runs and tolerates.
struct Level {
  int frames;
  int repeat;
  int actions;      // the input check's actions per frame
  double medianMs;  // time in the plugin's code per frame: above, the check fails
  double worstMs;   // the slowest frame: above, a warning
  int callsPerFrame;  // library calls per frame: above, a warning
};
const Level& LevelSettings(int level);

std::string Usage();
// False with a one-line reason for options that make no sense.
bool ParseOptions(int argc, char** argv, Options& options, std::string& error);
// The options with the level's defaults filled in.
Options Resolved(const Options& options);

enum class Status { Pass, Fail, Skip };
const char* StatusName(Status status);

struct CheckResult {
  std::string plugin;  // the file as given
  std::string check;
  Status status = Status::Pass;
  std::string reason;  // one line
  std::vector<std::string> details;  // lines that say more
  std::string signature;  // the plugin's, when the check learnt it
  // What ended the plugin's run ("signal 11", "exception: TEXT"), so that a
  // later check that meets the lifecycle check's fault again can say so.
  std::string fault;
};

// Everything a check's child needs.
struct CheckInput {
  Options options;  // resolved
  std::string plugin;  // the plugin file
  uint64_t seed;  // this check's own, drawn from the run's seed
  std::vector<std::string> earlierSignatures;  // of the plugins validated before this one
};

// One check: the body runs in a child process and fills the result.
struct Check {
  const char* name;
  const char* summary;
  void (*run)(const CheckInput& input, CheckResult& result);
};
const std::vector<Check>& AllChecks();

// Runs the check in a child process: its result, or a failure naming the
// signal that killed it or the way it ended without a result.
CheckResult RunInChild(const Check& check, const CheckInput& input);
std::string SignalName(int signal);

// The plugin files a target stands for: the file itself, or the plugins of
// a folder (*.orv and */lin.orv) in name order.
bool ExpandTargets(const std::vector<std::string>& targets, std::vector<std::string>& plugins,
                   std::string& error);

std::string ReportHeader(const Options& options);
// The report in text is the header, the results' lines as they come, and the
// summary.
std::string ResultText(const CheckResult& result);
std::string ReportSummary(const Options& options, const std::vector<CheckResult>& results);
std::string ReportJson(const Options& options, const std::vector<CheckResult>& results);

// The checks' bodies.
void CheckEntryPoints(const CheckInput& input, CheckResult& result);
void CheckLifecycle(const CheckInput& input, CheckResult& result);
void CheckCleanup(const CheckInput& input, CheckResult& result);
void CheckHandles(const CheckInput& input, CheckResult& result);
void CheckCost(const CheckInput& input, CheckResult& result);
void CheckExercisedInput(const CheckInput& input, CheckResult& result);

// A reproducible stream of numbers drawn from a seed.
class Random {
public:
  explicit Random(uint64_t seed) : mState(seed) {}
  uint64_t Next();
  int Between(int low, int high);  // both included
private:
  uint64_t mState;
};
uint64_t MixSeed(uint64_t seed, const std::string& salt);

}  // namespace toka_validate

#endif
