// The input check: the plugin's life with the user and the simulator acting
// on it: keys, clicks, drags, the wheel and the cursor (often over its own
// windows), picks of its menu items, its commands begun, held and ended,
// its datarefs read and written with every type they declare, messages 101
// to 108, and an aircraft and a scenery package loaded and unloaded. Every
// choice is drawn from the check's seed.
#include <algorithm>
#include <map>
#include <stdexcept>

#include "data/datarefs.h"
#include "display/display.h"
#include "host/commands.h"
#include "host/config.h"
#include "host/menus.h"
#include "host/scenario/scenario.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "toka/TOKA.h"
#include "validate/validate.h"
#include "validate/world.h"

namespace toka_validate {

namespace {

const char* const kAircraft = "Aircraft/Validator/validator.acf";
const char* const kScenery = "Custom Scenery/Validator";

const char* const kKeys[] = {"A", "Z", "P", "0", "9", "F1", "F6", "F8", "F12", "Space",
                             "Return", "Escape", "Tab", "Up", "Down", "Left", "Right",
                             "\"Page Up\"", "Numpad-5", "="};

struct Exerciser {
  Random& random;
  int plugin;
  std::map<std::string, int> counts;  // what was done, for the report
  std::vector<void*> held;            // commands begun and not yet ended
  bool aircraftLoaded = false;

  // A point inside one of the plugin's windows half of the time, anywhere
  // on the screen otherwise.
  std::pair<int, int> Point() {
    std::vector<const TOKAWindowCallbackRecord*> windows;
    for (const TOKAWindowCallbackRecord* w = gWindows.head; w; w = w->get_next())
      if (!w->is_dead() && w->plugin == plugin && w->right > w->left && w->top > w->bottom)
        windows.push_back(w);
    if (!windows.empty() && random.Between(0, 1)) {
      const TOKAWindowCallbackRecord* w = windows[random.Between(0, (int)windows.size() - 1)];
      return {random.Between(w->left, w->right - 1), random.Between(w->bottom, w->top - 1)};
    }
    return {random.Between(0, toka_host::gConfig.screenWidth - 1),
            random.Between(0, toka_host::gConfig.screenHeight - 1)};
  }

  // The step runs in the coming frame, as the user's would.
  void Step(const std::string& text, const std::string& what) {
    toka_host::ScenarioStep step;
    std::string error;
    if (!toka_host::ParseScenarioStep(text, toka_host::gFrame + 1, "input", step, error))
      throw std::logic_error("the step \"" + text + "\" does not parse: " + error);
    toka_host::AddLiveStep(step);
    ++counts[what];
  }

  void MenuLeaves(const std::string& path, std::vector<std::string>& leaves) {
    for (const toka_host::ShownMenuItem& item : toka_host::MenuItemsAt(path)) {
      if (item.separator || item.name.empty()) continue;
      std::string below = path + "/" + item.name;
      if (item.opensMenu) MenuLeaves(below, leaves);
      else if (item.enabled) leaves.push_back(below);
    }
  }

  std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (char c : text) {
      if (c == '"' || c == '\\') quoted += '\\';
      quoted += c;
    }
    return quoted + "\"";
  }

  void Key() {
    std::string text = std::string("key ") + kKeys[random.Between(0, 19)];
    int flags = random.Between(0, 7);
    if (flags) text += " " + std::to_string(flags);
    Step(text, "keys");
  }

  void Mouse() {
    auto [x, y] = Point();
    std::string at = std::to_string(x) + " " + std::to_string(y);
    switch (random.Between(0, 3)) {
      case 0: Step("click " + at, "clicks"); break;
      case 1: {
        auto [x2, y2] = Point();
        Step("drag " + at + " " + std::to_string(x2) + " " + std::to_string(y2), "drags");
        break;
      }
      case 2: Step("scroll " + at + " " + std::to_string(random.Between(-3, 3)), "wheel turns"); break;
      default: Step("move " + at, "cursor moves"); break;
    }
  }

  void Menu() {
    std::vector<std::string> leaves;
    MenuLeaves("Plugins", leaves);
    if (leaves.empty()) return;
    Step("menu " + Quoted(leaves[random.Between(0, (int)leaves.size() - 1)]), "menu picks");
  }

  // Begun, held over frames, ended; or once.
  void Command() {
    std::vector<void*> commands = TOKAPluginCommands(plugin);
    if (!held.empty() && random.Between(0, 1)) {
      toka_host::ReleaseCommand(held.back());
      held.pop_back();
      ++counts["commands ended"];
      return;
    }
    if (commands.empty()) return;
    void* command = commands[random.Between(0, (int)commands.size() - 1)];
    if (random.Between(0, 1)) {
      toka_host::RunCommandOnce(command);
      ++counts["commands run once"];
    } else if (!toka_host::IsCommandHeld(command)) {
      toka_host::PressCommand(command);
      held.push_back(command);
      ++counts["commands begun"];
    }
  }

  // Every type the dataref declares is read, and written when it may be.
  void DataRef() {
    std::vector<TOKAData_t*> published;
    for (const auto& entry : gDataRefs)
      if (entry.second->owner == plugin) published.push_back(entry.second);
    if (published.empty()) return;
    std::sort(published.begin(), published.end(),
              [](const TOKAData_t* a, const TOKAData_t* b) { return a->name < b->name; });
    TOKAData_t* ref = published[random.Between(0, (int)published.size() - 1)];
    bool write = ref->writable && random.Between(0, 1);
    int types = ref->types;
    int ints[8];
    float floats[8];
    char bytes[16];
    int count = random.Between(1, 8);
    for (int i = 0; i < 8; ++i) {
      ints[i] = random.Between(-1000, 1000);
      floats[i] = (float)random.Between(-100000, 100000) / 100.0f;
    }
    for (char& byte : bytes) byte = (char)random.Between(32, 126);
    if (types & DataTypeInt) write ? TOKASetDatai(ref, ints[0]) : (void)TOKAGetDatai(ref);
    if (types & DataTypeFloat) write ? TOKASetDataf(ref, floats[0]) : (void)TOKAGetDataf(ref);
    if (types & DataTypeDouble) write ? TOKASetDatad(ref, floats[0]) : (void)TOKAGetDatad(ref);
    if (types & DataTypeIntArray)
      write ? TOKASetDatavi(ref, ints, 0, count) : (void)TOKAGetDatavi(ref, ints, 0, 8);
    if (types & DataTypeFloatArray)
      write ? TOKASetDatavf(ref, floats, 0, count) : (void)TOKAGetDatavf(ref, floats, 0, 8);
    if (types & DataTypeData)
      write ? TOKASetDatab(ref, bytes, 0, count) : (void)TOKAGetDatab(ref, bytes, 0, 16);
    ++counts[write ? "datarefs written" : "datarefs read"];
  }

  void Message() {
    int message = random.Between(101, 108);
    Step("message " + std::to_string(message) + " " + std::to_string(random.Between(0, 3)),
         "messages");
  }

  void World() {
    if (random.Between(0, 1)) {
      Step(std::string("scenery load ") + Quoted(kScenery), "scenery loads");
    } else if (aircraftLoaded) {
      Step("aircraft unload", "aircraft unloads");
      aircraftLoaded = false;
    } else {
      Step(std::string("aircraft load ") + kAircraft, "aircraft loads");
      aircraftLoaded = true;
    }
  }

  void Act() {
    switch (random.Between(0, 9)) {
      case 0: case 1: Key(); break;
      case 2: case 3: case 4: Mouse(); break;
      case 5: Menu(); break;
      case 6: Command(); break;
      case 7: DataRef(); break;
      case 8: Message(); break;
      default: World(); break;
    }
  }
};

std::string Counts(const std::map<std::string, int>& counts) {
  std::string text;
  for (const auto& count : counts) {
    if (!text.empty()) text += ", ";
    text += std::to_string(count.second) + " " + count.first;
  }
  return text.empty() ? "nothing to exercise" : text;
}

}  // namespace

void CheckExercisedInput(const CheckInput& input, CheckResult& result) {
  Random random(input.seed);
  World world(input.plugin, input.options.frames);
  world.AddFile(kAircraft);
  world.AddFolder(kScenery);
  int id;
  if (!StartOrSkip(world, result, id)) return;
  int perFrame = LevelSettings(input.options.level).actions;
  Exerciser exerciser{random, id, {}, {}, false};
  int frame = 0;
  std::string what;
  bool ran = Guarded([&] {
    for (frame = 1; frame <= input.options.frames; ++frame) {
      for (int i = 0; i < perFrame; ++i) exerciser.Act();
      world.RunFrames(1);
    }
    for (void* command : exerciser.held) toka_host::ReleaseCommand(command);
    world.Stop();
  }, what);
  if (!ran) {
    result.status = Status::Fail;
    result.reason = "an exception escaped frame " + std::to_string(frame) + ": " + what;
    result.fault = "exception: " + what;
    result.details.push_back("after " + Counts(exerciser.counts) + "; --seed " +
                             std::to_string(input.options.seed) + " repeats it");
    return;
  }
  result.reason = std::to_string(input.options.frames) + " frames: " + Counts(exerciser.counts);
}

}  // namespace toka_validate
