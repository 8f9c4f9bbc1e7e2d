// The cost check: what the plugin costs the simulator each frame, in time
// spent in its code (its flight loops, draw and window callbacks, the
// accessors it serves, its message handlers) and in calls into the library.
#include <algorithm>
#include <cstdio>

#include "loader/survey.h"
#include "validate/validate.h"
#include "validate/world.h"

namespace toka_validate {

namespace {

std::string Milliseconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f ms", seconds * 1000);
  return text;
}

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  return text;
}

}  // namespace

void CheckCost(const CheckInput& input, CheckResult& result) {
  const Level& level = LevelSettings(input.options.level);
  std::vector<double> seconds;
  std::vector<long long> calls;
  TOKACost before;
  World world(input.plugin, input.options.frames);
  bool ran = RunThroughLife(world, input.options.frames, result, [&](int plugin, bool starting) {
    TOKACost now = TOKAPluginCost(plugin);
    if (starting) {
      before = now;
      return;
    }
    seconds.push_back(now.seconds - before.seconds);
    calls.push_back(now.calls - before.calls);
  });
  if (!ran) return;
  std::vector<double> sorted = seconds;
  std::sort(sorted.begin(), sorted.end());
  double median = sorted[sorted.size() / 2], worst = sorted.back();
  long long totalCalls = 0, mostCalls = 0;
  for (long long count : calls) {
    totalCalls += count;
    mostCalls = std::max(mostCalls, count);
  }
  double meanCalls = (double)totalCalls / (double)calls.size();
  std::string measured = "median " + Milliseconds(median) + ", slowest " + Milliseconds(worst) +
                         " per frame in its code; " + Number(meanCalls) +
                         " library calls per frame (at most " + std::to_string(mostCalls) + ")";
  if (median * 1000 > level.medianMs) {
    result.status = Status::Fail;
    result.reason = "too slow: " + measured + "; the median may be at most " +
                    Number(level.medianMs) + " ms at level " + std::to_string(input.options.level);
    return;
  }
  result.reason = measured;
  if (worst * 1000 > level.worstMs)
    result.details.push_back("warning: its slowest frame took over " + Number(level.worstMs) +
                             " ms");
  if (meanCalls > level.callsPerFrame)
    result.details.push_back("warning: over " + std::to_string(level.callsPerFrame) +
                             " library calls per frame");
}

}  // namespace toka_validate
