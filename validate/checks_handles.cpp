// The handles check: the plugin runs through its whole life while the
// library checks every handle it passes; each wrong one is a failure that
// names the plugin, the function and the handle.
#include <map>
#include <stdexcept>

#include "loader/survey.h"
#include "toka/TOKAPlugins.h"
#include "validate/validate.h"
#include "validate/world.h"

namespace toka_validate {

namespace {

// Each distinct mistake once, in the order first made, with how often.
struct Mistake {
  std::string text;
  int count;
};
std::vector<Mistake> gMistakes;
std::map<std::string, size_t> gMistakeIndex;

void NoteMistake(int plugin, const char* function, const char* problem) {
  std::string text = std::string(function) + " was given " + problem;
  auto found = gMistakeIndex.find(text);
  if (found != gMistakeIndex.end()) {
    ++gMistakes[found->second].count;
    return;
  }
  gMistakeIndex[text] = gMistakes.size();
  gMistakes.push_back({text, 1});
}

std::string Times(int count) {
  return count == 1 ? "once" : std::to_string(count) + " times";
}

}  // namespace

// A check that runs the plugin's frames: an exception from them is the
// lifecycle check's finding, and this check cannot say more.
bool RunThroughLife(World& world, int frames, CheckResult& result, const FrameWatch& watch) {
  std::string what;
  int id = -1;
  auto run = [&] {
    for (int frame = 0; frame < frames; ++frame) {
      if (watch) watch(id, true);
      world.RunFrames(1);
      if (watch) watch(id, false);
    }
  };
  bool ran = Guarded([&] {
    world.Start();
    id = world.PluginID();
    if (id < 0) return;
    run();
    TOKADisablePlugin(id);
    TOKAEnablePlugin(id);
    run();
    TOKADisablePlugin(id);
    world.Stop();
  }, what);
  if (!ran) {
    result.status = Status::Skip;
    result.reason = "an exception escaped the plugin's life (see lifecycle): " + what;
    return false;
  }
  if (id < 0) {
    result.status = Status::Skip;
    result.reason = world.NotLoaded();
    return false;
  }
  return true;
}

void CheckHandles(const CheckInput& input, CheckResult& result) {
  TOKASetHandleObserver(NoteMistake);
  World world(input.plugin, input.options.frames);
  if (!RunThroughLife(world, input.options.frames, result, nullptr)) return;
  if (gMistakes.empty()) {
    result.reason = "every handle it passed was live and of its kind";
    return;
  }
  result.status = Status::Fail;
  std::string name = world.PluginName();
  result.reason = name + ": " + gMistakes[0].text + " (" + Times(gMistakes[0].count) + ")";
  for (size_t i = 1; i < gMistakes.size(); ++i)
    result.details.push_back(name + ": " + gMistakes[i].text + " (" + Times(gMistakes[i].count) +
                             ")");
}

}  // namespace toka_validate
