// toka-validate's command line and what each level means.
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "host/run.h"
#include "validate/validate.h"

namespace toka_validate {

namespace {

// A 60 Hz frame lasts 16.7 ms, and the simulator has most of it: a plugin
// that takes a few milliseconds of every frame is felt.
const Level kLevels[5] = {
    {10, 1, 1, 10.0, 50.0, 5000},
    {30, 2, 2, 8.0, 33.0, 3000},
    {60, 3, 3, 5.0, 25.0, 2000},
    {120, 5, 4, 4.0, 16.7, 1000},
    {240, 8, 5, 2.0, 16.7, 500},
};

std::string LevelTable() {
  std::string table = "  level  frames  cycles  actions  median  slowest  calls\n";
  for (int level = 1; level <= 5; ++level) {
    const Level& l = kLevels[level - 1];
    char row[128], median[16], worst[16];
    std::snprintf(median, sizeof median, "%g ms", l.medianMs);
    std::snprintf(worst, sizeof worst, "%g ms", l.worstMs);
    std::snprintf(row, sizeof row, "  %-6d %-7d %-7d %-8d %-7s %-8s %d\n", level, l.frames,
                  l.repeat, l.actions, median, worst, l.callsPerFrame);
    table += row;
  }
  return table;
}

bool ToNumber(const std::string& text, long long low, long long high, long long& value) {
  if (text.empty() || text[0] == '-' || text[0] == '+') return false;
  char* end = nullptr;
  errno = 0;
  unsigned long long parsed = std::strtoull(text.c_str(), &end, 10);
  if (*end || errno || parsed < (unsigned long long)low || parsed > (unsigned long long)high)
    return false;
  value = (long long)parsed;
  return true;
}

bool ToSeed(const std::string& text, uint64_t& seed) {
  if (text.empty() || text[0] == '-' || text[0] == '+') return false;
  char* end = nullptr;
  errno = 0;
  seed = std::strtoull(text.c_str(), &end, 10);
  return !*end && !errno;
}

}  // namespace

const Level& LevelSettings(int level) { return kLevels[level - 1]; }

std::string Usage() {
  return "usage: toka-validate [options] PLUGIN.orv|FOLDER...\n"
         "Runs each plugin in the reference host's world, outside the simulator, and\n"
         "reports each check as PASS, FAIL or SKIP with a one-line reason. A FOLDER\n"
         "stands for its plugins: *.orv and */lin.orv. Each check runs in a process of\n"
         "its own: a plugin that crashes fails that check, naming the signal.\n"
         "\n"
         "  --level 1..5     how hard to try (default 3): higher levels run more frames\n"
         "                   and cycles and tolerate less (see below)\n"
         "  --repeat N       warm cycles (disable, enable) and cold cycles (unload, load)\n"
         "                   of the lifecycle check (default: the level's)\n"
         "  --frames N       frames each run of the plugin lasts (default: the level's)\n"
         "  --seed S         every randomised step draws from S; the report prints the\n"
         "                   seed, and --seed S repeats a run exactly (default: from the\n"
         "                   clock)\n"
         "  --json FILE      write the report as JSON to FILE too\n"
         "  --only CHECK     run one check\n"
         "  --list-checks    list the checks and exit\n"
         "  --help           show this text\n"
         "\n"
         "Levels: frames, cycles, the input check's actions per frame, and the\n"
         "thresholds of the cost check: the time spent in the plugin's code per frame\n"
         "(median above: FAIL; the slowest frame above: a warning) and the library calls\n"
         "it makes per frame (above: a warning).\n"
         "Things a plugin leaves to the library's clean-up at unload fail from level 3\n"
         "on; what still runs after its disable entry returns is a warning at levels 3\n"
         "and 4 and a failure at level 5.\n"
         "\n" +
         LevelTable() +
         "\n"
         "Exit status: the number of failed checks (at most 100); 101 for bad options.\n";
}

bool ParseOptions(int argc, char** argv, Options& options, std::string& error) {
  bool seedGiven = false;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    auto value = [&](std::string& out) {
      return toka_host::OptionValue(argc, argv, i, out, error);
    };
    auto number = [&](long long low, long long high, int& out) {
      std::string text;
      if (!value(text)) return false;
      long long parsed = 0;
      if (!ToNumber(text, low, high, parsed)) {
        error = arg + " takes a number from " + std::to_string(low) + " to " +
                std::to_string(high) + ", not \"" + text + "\"";
        return false;
      }
      out = (int)parsed;
      return true;
    };
    if (arg == "--level") {
      if (!number(1, 5, options.level)) return false;
    } else if (arg == "--repeat") {
      if (!number(0, 1000, options.repeat)) return false;
    } else if (arg == "--frames") {
      if (!number(1, 100000, options.frames)) return false;
    } else if (arg == "--seed") {
      std::string text;
      if (!value(text)) return false;
      if (!ToSeed(text, options.seed)) {
        error = "--seed takes a whole number from 0 to 18446744073709551615, not \"" + text + "\"";
        return false;
      }
      seedGiven = true;
    } else if (arg == "--json") {
      if (!value(options.json)) return false;
    } else if (arg == "--only") {
      if (!value(options.only)) return false;
      bool known = false;
      for (const Check& check : AllChecks()) known = known || options.only == check.name;
      if (!known) {
        error = "unknown check \"" + options.only + "\" (--list-checks lists them)";
        return false;
      }
    } else if (arg == "--list-checks") {
      options.listChecks = true;
    } else if (arg.size() > 1 && arg[0] == '-') {
      error = "unknown option " + arg;
      return false;
    } else {
      options.targets.push_back(arg);
    }
  }
  if (options.targets.empty() && !options.listChecks) {
    error = "no plugin or folder given";
    return false;
  }
  if (!seedGiven)
    options.seed = (uint64_t)std::chrono::system_clock::now().time_since_epoch().count() % 1000000000;
  return true;
}

Options Resolved(const Options& options) {
  Options resolved = options;
  const Level& level = LevelSettings(options.level);
  if (resolved.frames < 0) resolved.frames = level.frames;
  if (resolved.repeat < 0) resolved.repeat = level.repeat;
  return resolved;
}

// splitmix64: small, and the same everywhere.
uint64_t Random::Next() {
  uint64_t z = (mState += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}

int Random::Between(int low, int high) {
  return low + (int)(Next() % (uint64_t)(high - low + 1));
}

// Each check of each plugin draws from its own stream, so that --only
// repeats exactly what the full run did.
uint64_t MixSeed(uint64_t seed, const std::string& salt) {
  uint64_t hash = 1469598103934665603ull;  // FNV-1a
  for (unsigned char c : salt) hash = (hash ^ c) * 1099511628211ull;
  Random random(seed ^ hash);
  return random.Next();
}

}  // namespace toka_validate
