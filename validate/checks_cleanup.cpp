// The cleanup check: what a plugin leaves behind. Its stop entry should have
// withdrawn everything it made; its disable entry should have stopped
// everything that runs on its own; and after the library's clean-up nothing
// of it may remain, or the library is at fault.
#include <stdexcept>

#include "loader/survey.h"
#include "toka/TOKAPlugins.h"
#include "validate/validate.h"
#include "validate/world.h"

namespace toka_validate {

namespace {

struct Seen {
  int plugin = -1;
  bool stopped = false, cleaned = false;
  TOKASurvey atStop, afterCleanup;
};
Seen gSeen;

void NoteMoment(int moment, int plugin) {
  if (plugin != gSeen.plugin) return;
  if (moment == kMomentStopped) {
    gSeen.atStop = TOKASurveyPlugin(plugin);
    gSeen.stopped = true;
  } else if (moment == kMomentCleaned) {
    gSeen.afterCleanup = TOKASurveyPlugin(plugin);
    gSeen.cleaned = true;
  }
}

// "windows 1, hot keys 2", or empty when every count is 0. A plugin is not
// asked to withdraw the Plugins menu item of its top-level menu: it cannot,
// and the library does.
std::string Owned(const TOKASurvey& survey, bool byThePlugin) {
  std::string text;
  for (int kind = 0; kind < kSurveyKindCount; ++kind) {
    if (!survey.owned[kind] || (byThePlugin && kind == kSurveyPluginsMenuItems)) continue;
    if (!text.empty()) text += ", ";
    text += std::string(TOKASurveyKindName(kind)) + " " + std::to_string(survey.owned[kind]);
  }
  return text;
}

std::string Running(const TOKASurvey& survey) {
  std::string text;
  for (int kind = 0; kind < kRunningKindCount; ++kind) {
    if (!survey.running[kind]) continue;
    if (!text.empty()) text += ", ";
    text += std::string(TOKARunningKindName(kind)) + " " + std::to_string(survey.running[kind]);
  }
  return text;
}

void Add(CheckResult& result, Status status, const std::string& text) {
  if (status == Status::Fail && result.status != Status::Fail) {
    // A failure leads; what was said before follows it.
    if (!result.reason.empty()) result.details.insert(result.details.begin(), result.reason);
    result.status = Status::Fail;
    result.reason = text;
  } else if (result.reason.empty()) {
    result.reason = text;
  } else {
    result.details.push_back(text);
  }
}

}  // namespace

void CheckCleanup(const CheckInput& input, CheckResult& result) {
  int level = input.options.level;
  World world(input.plugin, input.options.frames);
  int id;
  if (!StartOrSkip(world, result, id)) return;
  if (!TOKAIsPluginEnabled(id)) {
    result.status = Status::Skip;
    result.reason = "not enabled (see lifecycle)";
    return;
  }
  gSeen.plugin = id;
  TOKASetSurveyObserver(NoteMoment);
  TOKASurvey afterDisable;
  std::string what;
  if (!Guarded([&] {
        TOKADisablePlugin(id);
        afterDisable = TOKASurveyPlugin(id);
        world.Stop();
      }, what)) {
    result.status = Status::Skip;
    result.reason = "an exception escaped its disable or stop entry: " + what;
    return;
  }
  std::string running = Running(afterDisable);
  std::string left = Owned(gSeen.atStop, true);
  std::string remains = Owned(gSeen.afterCleanup, false);
  if (!left.empty())
    Add(result, level >= 3 ? Status::Fail : Status::Pass,
        std::string(level >= 3 ? "" : "warning: ") + "left to the library's clean-up at unload: " +
            left);
  if (!running.empty() && level >= 3)
    Add(result, level >= 5 ? Status::Fail : Status::Pass,
        std::string(level >= 5 ? "" : "warning: ") + "still running after its disable entry: " +
            running);
  if (!remains.empty())
    Add(result, Status::Fail, "a fault of the library: its clean-up left " + remains);
  if (!gSeen.stopped || !gSeen.cleaned)
    Add(result, Status::Fail, "a fault of the library: the plugin was never unloaded");
  if (result.reason.empty())
    result.reason = "nothing left at unload, nothing running after disable";
}

}  // namespace toka_validate
