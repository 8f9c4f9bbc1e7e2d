// The checks of a plugin's entry points and of its life: started, enabled,
// run, disabled, enabled again, stopped, and loaded again.
#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <cstring>
#include <stdexcept>

#include "loader/survey.h"
#include "toka/TOKAPlugins.h"
#include "validate/validate.h"
#include "validate/world.h"

namespace toka_validate {

const std::vector<Check>& AllChecks() {
  static const std::vector<Check> checks = {
      {"entry-points", "start present, its texts non-empty, within their buffers and its "
                       "signature unique; the other entry points functions; no exception "
                       "escaping any",
       CheckEntryPoints},
      {"lifecycle", "start, enable, frames, disable, enable, frames, disable, stop; then warm "
                    "(disable, enable) and cold (unload, load) cycles",
       CheckLifecycle},
      {"cleanup", "nothing left to the library's clean-up at unload, nothing running after "
                  "disable, nothing at all after the clean-up",
       CheckCleanup},
      {"handles", "every handle it passes (datarefs, flight loops, windows, hot keys, menus, "
                  "commands, probes, objects) live and of its kind",
       CheckHandles},
      {"cost", "time in its code per frame (median and slowest) and library calls per frame, "
               "against the level's thresholds",
       CheckCost},
      {"input", "keys, clicks, drags, the wheel and the cursor, its menu items, its commands, "
                "its datarefs of every type, messages 101 to 108, an aircraft and scenery "
                "loaded and unloaded",
       CheckExercisedInput},
  };
  return checks;
}

namespace {

struct StartTexts {
  bool seen = false;
  std::string name, signature, description;
  int overran = 0;  // bit 0 name, 1 signature, 2 description
};
StartTexts gStart;
bool gStopThrew = false;

void NoteStart(const char* name, const char* signature, const char* description, int overran) {
  gStart.seen = true;
  gStart.name = name;
  gStart.signature = signature;
  gStart.description = description;
  gStart.overran = overran;
}

void NoteMoment(int moment, int) {
  if (moment == kMomentStopThrew) gStopThrew = true;
}

const char* const kEntryNames[5] = {"OrvanePluginStart", "OrvanePluginStop", "OrvanePluginEnable",
                                    "OrvanePluginDisable", "OrvanePluginReceiveMessage"};

// Whether the plugin exports name, and as a function: a variable of that
// name would be called as one.
enum class Entry { Absent, Function, NotFunction };
Entry FindEntry(void* module, const char* name) {
  void* address = dlsym(module, name);
  if (!address) return Entry::Absent;
  Dl_info info;
  const ElfW(Sym)* symbol = nullptr;
  if (!dladdr1(address, &info, (void**)&symbol, RTLD_DL_SYMENT) || !symbol) return Entry::Function;
  int type = ELF64_ST_TYPE(symbol->st_info);
  return type == STT_FUNC || type == STT_GNU_IFUNC ? Entry::Function : Entry::NotFunction;
}

void Fail(CheckResult& result, const std::string& reason) {
  if (result.status == Status::Fail) {
    result.details.push_back(reason);
    return;
  }
  result.status = Status::Fail;
  result.reason = reason;
}

// Looks at the plugin's exported entry points; false when it cannot be
// loaded or has no start entry, which ends the check.
bool CheckExports(const std::string& plugin, CheckResult& result, std::string& present) {
  void* module = dlopen(plugin.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (!module) {
    const char* why = dlerror();
    Fail(result, std::string("cannot be loaded: ") + (why ? why : "unknown reason"));
    return false;
  }
  bool ok = true;
  for (int i = 0; i < 5; ++i) {
    Entry entry = FindEntry(module, kEntryNames[i]);
    if (entry == Entry::Function) {
      present += present.empty() ? "" : ", ";
      present += kEntryNames[i] + 12;  // without "OrvanePlugin"
    } else if (entry == Entry::NotFunction) {
      Fail(result, std::string(kEntryNames[i]) + " is exported but is not a function");
      ok = false;
    } else if (i == 0) {
      Fail(result, "OrvanePluginStart is missing");
      ok = false;
    }
  }
  dlclose(module);
  return ok;
}

void CheckStartTexts(const CheckInput& input, CheckResult& result) {
  static const char* const kTexts[3] = {"name", "signature", "description"};
  const std::string* texts[3] = {&gStart.name, &gStart.signature, &gStart.description};
  for (int i = 0; i < 3; ++i) {
    if (gStart.overran & (1 << i))
      Fail(result, std::string("its start entry wrote past the 256 bytes of the ") + kTexts[i] +
                       " buffer");
    else if (texts[i]->empty())
      Fail(result, std::string("its start entry left the ") + kTexts[i] + " empty");
  }
  result.signature = gStart.signature;
  for (const std::string& earlier : input.earlierSignatures)
    if (!gStart.signature.empty() && earlier == gStart.signature)
      Fail(result, "its signature \"" + gStart.signature + "\" is that of a plugin before it");
}

}  // namespace

void CheckEntryPoints(const CheckInput& input, CheckResult& result) {
  std::string present;
  if (!CheckExports(input.plugin, result, present)) return;
  TOKASetStartObserver(NoteStart);
  TOKASetSurveyObserver(NoteMoment);
  World world(input.plugin, input.options.frames);
  std::string what;
  bool started = Guarded([&] { world.Start(); }, what);
  if (!started && !gStart.seen) {
    Fail(result, "an exception escaped OrvanePluginStart: " + what);
    return;
  }
  if (!started) {
    Fail(result, "an exception escaped start-up after the start entry returned: " + what);
    return;
  }
  if (!gStart.seen) {
    Fail(result, "not started: " + world.LogAbout());
    return;
  }
  CheckStartTexts(input, result);
  int id = world.PluginID();
  if (id < 0) {
    std::string log = world.LogAbout();
    Fail(result, "not loaded: " + (log.empty() ? std::string("its start entry refused") : log));
    return;
  }
  const char* step = "";
  bool ran = Guarded([&] {
    step = "OrvanePluginDisable";
    TOKADisablePlugin(id);
    step = "OrvanePluginEnable";
    if (!TOKAEnablePlugin(id)) throw std::runtime_error("it refused to be enabled again");
    step = "OrvanePluginDisable";
    TOKADisablePlugin(id);
    step = "OrvanePluginStop";
    world.Stop();
  }, what);
  if (!ran) Fail(result, std::string("an exception escaped ") + step + ": " + what);
  if (gStopThrew) Fail(result, "an exception escaped OrvanePluginStop");
  if (result.status == Status::Pass)
    result.reason = present + " present; texts within their buffers; signature \"" +
                    gStart.signature + "\" unique";
}

namespace {

// One step of the lifecycle, named for the report.
struct Lifecycle {
  World& world;
  CheckResult& result;
  std::string step;
  int id = -1;

  bool Run(const std::string& name, const std::function<void()>& body) {
    step = name;
    std::string what;
    if (Guarded(body, what)) return true;
    Fail(result, "an exception escaped " + name + ": " + what);
    result.fault = "exception: " + what;
    return false;
  }
  bool Load(const std::string& when) {
    if (!Run(when, [&] { world.Start(); })) return false;
    id = world.PluginID();
    if (id < 0 && when == "start-up") {
      // A plugin that never starts is the entry points check's finding.
      result.status = Status::Skip;
      result.reason = world.NotLoaded();
      return false;
    }
    if (id < 0) {
      std::string log = world.LogAbout();
      Fail(result, "not loaded at " + when + (log.empty() ? "" : ": " + log));
      return false;
    }
    if (!TOKAIsPluginEnabled(id)) {
      Fail(result, "not enabled at " + when);
      return false;
    }
    return true;
  }
  bool Enable(const std::string& when) {
    bool enabled = false;
    if (!Run(when, [&] { enabled = TOKAEnablePlugin(id) != 0; })) return false;
    if (!enabled) Fail(result, "refused to be enabled at " + when);
    return enabled;
  }
  bool Disable(const std::string& when) {
    return Run(when, [&] { TOKADisablePlugin(id); });
  }
  bool Frames(int count, const std::string& when) {
    for (int frame = 1; frame <= count; ++frame)
      if (!Run(when + ", frame " + std::to_string(frame), [&] { world.RunFrames(1); }))
        return false;
    return true;
  }
  bool Unload(const std::string& when) {
    if (!Run(when, [&] { world.Stop(); })) return false;
    if (gStopThrew) {
      Fail(result, "an exception escaped OrvanePluginStop at " + when);
      return false;
    }
    return true;
  }
};

}  // namespace

void CheckLifecycle(const CheckInput& input, CheckResult& result) {
  TOKASetSurveyObserver(NoteMoment);
  const Options& options = input.options;
  Random random(input.seed);
  World world(input.plugin, options.frames);
  Lifecycle life{world, result, "", -1};
  int frames = options.frames;
  if (!life.Load("start-up") || !life.Frames(frames, "the first run") ||
      !life.Disable("the first disable") || !life.Enable("the second enable") ||
      !life.Frames(frames, "the second run") || !life.Disable("the second disable"))
    return;
  for (int cycle = 1; cycle <= options.repeat; ++cycle) {
    std::string name = "warm cycle " + std::to_string(cycle);
    if (!life.Enable(name) || !life.Frames(random.Between(1, frames), name) ||
        !life.Disable(name))
      return;
  }
  if (!life.Unload("the first stop")) return;
  for (int cycle = 1; cycle <= options.repeat; ++cycle) {
    std::string name = "cold cycle " + std::to_string(cycle);
    if (!life.Load(name) || !life.Frames(random.Between(1, frames), name) || !life.Unload(name))
      return;
  }
  result.reason = "2 runs of " + std::to_string(frames) + " frames, " +
                  std::to_string(options.repeat) + " warm and " + std::to_string(options.repeat) +
                  " cold cycles";
}

}  // namespace toka_validate
