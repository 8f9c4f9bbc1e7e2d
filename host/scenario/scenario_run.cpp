// Running a scenario: its actions at the point of each frame where the
// user's input arrives, its expectations and screenshots once the frame is
// drawn, and a report of every step that failed.
#include "host/scenario/scenario.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <regex>

#include "host/commands.h"
#include "host/config.h"
#include "host/flightgear/flightgear.h"
#include "host/keys.h"
#include "host/library.h"
#include "host/menus.h"
#include "host/output.h"
#include "host/render/render.h"
#include "host/services.h"
#include "host/system.h"
#include "host/windows.h"
#include "host/world/aircraft.h"
#include "host/world/world.h"

namespace toka_host {

namespace {

std::vector<ScenarioStep> gSteps;
std::vector<bool> gReached;
int gFailures = 0;
bool gDragging = false;  // the button is down since a drag of the previous frame
FILE* gRecording = nullptr;
int gRecordedFrame = -1;  // the frame of the last "at" written
constexpr int kSlotCount = 71;
long gCallsAtFrameStart[kSlotCount];

constexpr int kIntType = 1, kFloatType = 2, kDoubleType = 4, kFloatArrayType = 8,
              kIntArrayType = 16, kDataType = 32;

std::string Quote(const std::string& text) {
  std::string out = "\"";
  for (char c : text) out += c == '\n' ? "\\n" : c == '"' ? "\\\"" : std::string(1, c);
  return out + "\"";
}

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.9g", value);
  return text;
}

std::string Point(int x, int y) { return "(" + std::to_string(x) + ", " + std::to_string(y) + ")"; }

void Fail(const ScenarioStep& step, const std::string& expected, const std::string& found) {
  if (step.where != kLiveStepWhere) ++gFailures;
  std::fprintf(stderr, "%s: frame %d: %s\n  expected: %s\n  found:    %s\n", step.where.c_str(),
               step.frame, step.text.c_str(), expected.c_str(), found.c_str());
  std::fflush(stderr);
}

int LogLines() { return (int)std::count(HostLog().begin(), HostLog().end(), '\n'); }

// ---- plugins ---------------------------------------------------------------

// By name or signature; the newest record when several match.
int FindPlugin(const std::string& name) {
  if (!gLibrary.CountPlugins || !gLibrary.GetPluginInfo) return -1;
  for (int id = gLibrary.CountPlugins() - 1; id > 0; --id) {
    char pluginName[256] = "", signature[256] = "";
    gLibrary.GetPluginInfo(id, pluginName, nullptr, signature, nullptr);
    if (name == pluginName || name == signature) return id;
  }
  return -1;
}

std::string PluginState(int id) {
  if (id < 0) return "absent";
  bool enabled = gLibrary.IsPluginEnabled && gLibrary.IsPluginEnabled(id);
  return enabled ? "loaded and enabled" : "loaded and disabled";
}

// ---- datarefs --------------------------------------------------------------

struct DataRefTarget {
  void* ref = nullptr;
  int types = 0;
  int index = -1;  // an element of an array dataref, named as NAME[INDEX]
};

bool FindTarget(const std::string& name, DataRefTarget& target, std::string& problem) {
  if (!gLibrary.FindDataRef || !gLibrary.GetDataRefTypes) {
    problem = "a library without datarefs";
    return false;
  }
  // Some names end in brackets of their own ("ai_loc[1]"): the whole name
  // first, then an element of an array.
  target.ref = gLibrary.FindDataRef(name.c_str());
  size_t open = name.rfind('[');
  if (!target.ref && open != std::string::npos && name.back() == ']') {
    std::string index = name.substr(open + 1, name.size() - open - 2);
    char* end = nullptr;
    long value = std::strtol(index.c_str(), &end, 10);
    if (!index.empty() && !*end && value >= 0 && value < 1000000) {
      target.ref = gLibrary.FindDataRef(name.substr(0, open).c_str());
      target.index = (int)value;
    }
  }
  if (!target.ref) {
    problem = "no dataref " + name;
    return false;
  }
  target.types = gLibrary.GetDataRefTypes(target.ref);
  bool isArray = target.types & (kIntArrayType | kFloatArrayType);
  if (target.index >= 0 && !isArray) {
    problem = name.substr(0, open) + " is not an array";
    return false;
  }
  if (target.index < 0 && isArray && !(target.types & (kIntType | kFloatType | kDoubleType))) {
    problem = name + " is an array: name an element, as " + name + "[0]";
    return false;
  }
  return true;
}

struct DataRefValue {
  bool isText = false;
  std::string text;
  double number = 0;
  bool isFloat = false;
};

bool ReadTarget(const DataRefTarget& target, DataRefValue& value, std::string& problem) {
  if (target.index >= 0) {
    int count = 0;
    if (target.types & kIntArrayType) {
      int element = 0;
      count = gLibrary.GetDatavi(target.ref, &element, target.index, 1);
      value.number = element;
    } else {
      float element = 0;
      count = gLibrary.GetDatavf(target.ref, &element, target.index, 1);
      value.number = element;
      value.isFloat = true;
    }
    if (count < 1) problem = "no element " + std::to_string(target.index);
    return count >= 1;
  }
  if (target.types & (kDoubleType | kFloatType)) {
    value.number = target.types & kDoubleType ? gLibrary.GetDatad(target.ref)
                                              : gLibrary.GetDataf(target.ref);
    value.isFloat = true;
  } else if (target.types & kIntType) {
    value.number = gLibrary.GetDatai(target.ref);
  } else if (target.types & kDataType) {
    int size = std::max(0, gLibrary.GetDatab(target.ref, nullptr, 0, 0));
    std::vector<char> bytes((size_t)size + 1, 0);
    int read = std::max(0, gLibrary.GetDatab(target.ref, bytes.data(), 0, size));
    value.text.assign(bytes.data(), strnlen(bytes.data(), (size_t)std::min(read, size)));
    value.isText = true;
  } else {
    problem = "a dataref of no type the host reads";
    return false;
  }
  return true;
}

bool WriteTarget(const DataRefTarget& target, const ScenarioStep& step, std::string& problem) {
  if (gLibrary.CanWriteDataRef && !gLibrary.CanWriteDataRef(target.ref)) {
    problem = step.name + " is read-only";
    return false;
  }
  bool holdsText = target.index < 0 && (target.types & kDataType) &&
                   !(target.types & (kIntType | kFloatType | kDoubleType));
  if (step.isText != holdsText) {
    problem = step.name + (holdsText ? " holds text" : " holds numbers");
    return false;
  }
  if (step.isText) {
    std::string bytes = step.textValue;
    gLibrary.SetDatab(target.ref, &bytes[0], 0, (int)bytes.size() + 1);
  } else if (target.index >= 0 && (target.types & kIntArrayType)) {
    int element = (int)std::lround(step.value);
    gLibrary.SetDatavi(target.ref, &element, target.index, 1);
  } else if (target.index >= 0) {
    float element = (float)step.value;
    gLibrary.SetDatavf(target.ref, &element, target.index, 1);
  } else if (target.types & kDoubleType) {
    gLibrary.SetDatad(target.ref, step.value);
  } else if (target.types & kFloatType) {
    gLibrary.SetDataf(target.ref, (float)step.value);
  } else {
    gLibrary.SetDatai(target.ref, (int)std::lround(step.value));
  }
  return true;
}

void CheckDataRef(const ScenarioStep& step) {
  std::string expected = step.name + " == " + (step.isText ? Quote(step.textValue) : Number(step.value));
  DataRefTarget target;
  DataRefValue value;
  std::string problem;
  if (!FindTarget(step.name, target, problem) || !ReadTarget(target, value, problem))
    return Fail(step, expected, problem);
  if (value.isText || step.isText) {
    if (value.isText && step.isText && value.text == step.textValue) return;
    return Fail(step, expected, value.isText ? Quote(value.text) : Number(value.number));
  }
  // Floats hold within a hundred-thousandth of the value unless the step
  // says how close; ints must be equal.
  double tolerance = step.tolerance >= 0 ? step.tolerance
                     : value.isFloat     ? 1e-5 * std::max(1.0, std::fabs(step.value))
                                         : 0;
  if (tolerance > 0) expected += " within " + Number(tolerance);
  if (std::fabs(value.number - step.value) > tolerance) Fail(step, expected, Number(value.number));
}

// ---- the steps -------------------------------------------------------------

void PickMenu(const ScenarioStep& step) {
  int checked;
  bool enabled;
  if (!MenuItemState(step.name, checked, enabled))
    return Fail(step, "a menu item " + Quote(step.name), "no such item");
  if (!enabled) return Fail(step, "an enabled menu item " + Quote(step.name), "it is disabled");
  PickMenuItem(step.name);
}

void RunCommand(const ScenarioStep& step) {
  TOKACommandRef command = FindHostCommand(step.name);
  if (!command) return Fail(step, "a command " + step.name, "no such command");
  if (step.word == "begin") PressCommand(command);
  else if (step.word == "end") ReleaseCommand(command);
  else RunCommandOnce(command);
}

void SetDataRef(const ScenarioStep& step) {
  DataRefTarget target;
  std::string problem;
  if (!FindTarget(step.name, target, problem) || !WriteTarget(target, step, problem))
    Fail(step, "a writable dataref " + step.name, problem);
}

void SetPluginEnabled(const ScenarioStep& step, bool enable) {
  int id = FindPlugin(step.name);
  if (id < 0) return Fail(step, "a plugin " + Quote(step.name), "absent");
  if (enable && gLibrary.EnablePlugin) gLibrary.EnablePlugin(id);
  if (!enable && gLibrary.DisablePlugin) gLibrary.DisablePlugin(id);
}

void SendEvent(int event, int param) {
  if (gLibrary.EventHook) gLibrary.EventHook(event, (float)gRunningTime, 0, param);
}

void Act(const ScenarioStep& step) {
  const std::vector<int>& n = step.numbers;
  switch (step.kind) {
    case StepKind::Key: PressKey((char)n[1], n[2], (unsigned char)n[0]); break;
    case StepKind::Click:
      gMouseX = n[0], gMouseY = n[1];
      gLibrary.MouseClickHook(gMouseX, gMouseY, 1);
      gLibrary.MouseClickHook(gMouseX, gMouseY, 0);
      break;
    case StepKind::Drag:
      // Down here; the library sends the drag where the mouse is when the
      // frame is drawn; the button comes up at the start of the next frame.
      gMouseX = n[0], gMouseY = n[1];
      gLibrary.MouseClickHook(gMouseX, gMouseY, 1);
      gMouseX = n[2], gMouseY = n[3];
      gDragging = true;
      break;
    case StepKind::Scroll:
      gMouseX = n[0], gMouseY = n[1];
      gLibrary.ScrollWheelHook(gMouseX, gMouseY, 0, n[2]);
      break;
    case StepKind::Move: gMouseX = n[0], gMouseY = n[1]; break;
    // A button held over several frames: the library sends the drags where
    // the mouse is when each frame is drawn.
    case StepKind::Press:
    case StepKind::Release:
      gMouseX = n[0], gMouseY = n[1];
      gLibrary.MouseClickHook(gMouseX, gMouseY, step.kind == StepKind::Press ? 1 : 0);
      break;
    case StepKind::Menu: PickMenu(step); break;
    case StepKind::Command: RunCommand(step); break;
    case StepKind::SetDataRef: SetDataRef(step); break;
    case StepKind::AircraftLoad: {
      if (FlightGearWorld())
        return Fail(step, "an aircraft model loaded",
                    "FlightGear flies its own aircraft: choose it with --aircraft when it starts");
      std::string path = ResolveUnderRoot(step.name);
      if (!IsFile(path)) return Fail(step, "an aircraft model " + path, "no such file");
      LoadAircraftModel(0, path);
      break;
    }
    case StepKind::AircraftUnload:
      gAircraft[0].path.clear();
      HostPrint("[aircraft] 0 unloaded\n");
      QueueEvent(8, 0);
      break;
    case StepKind::SceneryLoad: {
      std::string folder = ResolveUnderRoot(step.name);
      if (folder.back() != '/') folder += '/';
      if (!IsFolder(folder)) return Fail(step, "a scenery folder " + folder, "no such folder");
      QueueSceneryPackage(folder, true);
      QueueEvent(6, 0);
      break;
    }
    case StepKind::Message: SendEvent(n[1], n[2]); break;
    case StepKind::CameraRelease: SendEvent(1, 0); break;
    case StepKind::Pause: RunCommandOnce(FindHostCommand("sim/operation/pause_toggle")); break;
    case StepKind::Airport: PlaceUserAtAirport(step.name.c_str()); break;
    case StepKind::Enable: SetPluginEnabled(step, true); break;
    case StepKind::Disable: SetPluginEnabled(step, false); break;
    case StepKind::Reload:
      if (gLibrary.ReloadPlugins) gLibrary.ReloadPlugins();
      break;
    default: break;
  }
}

void CheckLog(const ScenarioStep& step) {
  if (step.kind == StepKind::ExpectLogContains) {
    if (HostLog().find(step.name) == std::string::npos)
      Fail(step, "the log to contain " + Quote(step.name),
           "no such text in " + std::to_string(LogLines()) + " lines of log");
    return;
  }
  std::regex regex(step.name, std::regex::ECMAScript | std::regex::multiline);
  if (!std::regex_search(HostLog(), regex))
    Fail(step, "a match for /" + step.name + "/ in the log",
         "none in " + std::to_string(LogLines()) + " lines of log");
}

void CheckWindow(const ScenarioStep& step) {
  int x = step.numbers[0], y = step.numbers[1];
  SeenWindow window;
  bool found = WindowAt(x, y, window);
  if (step.kind == StepKind::ExpectWindow && !found)
    Fail(step, "a visible plugin window at " + Point(x, y), "none there");
  if (step.kind == StepKind::ExpectNoWindow && found)
    Fail(step, "no visible plugin window at " + Point(x, y),
         "a window of " + (window.plugin.empty() ? "the host" : window.plugin) + " from " +
             Point(window.left, window.bottom) + " to " + Point(window.right, window.top));
}

void CheckPlugin(const ScenarioStep& step) {
  int id = FindPlugin(step.name);
  bool enabled = id >= 0 && gLibrary.IsPluginEnabled && gLibrary.IsPluginEnabled(id);
  bool holds = step.word == "absent"    ? id < 0
               : step.word == "loaded"  ? id >= 0
               : step.word == "enabled" ? enabled
                                        : id >= 0 && !enabled;
  if (!holds) Fail(step, "plugin " + Quote(step.name) + " " + step.word, PluginState(id));
}

void CheckMenu(const ScenarioStep& step) {
  int checked;
  bool enabled;
  std::string expected = "menu item " + Quote(step.name) + " " + step.word;
  if (!MenuItemState(step.name, checked, enabled)) return Fail(step, expected, "no such item");
  bool holds = step.word == "checked"     ? checked == 1
               : step.word == "unchecked" ? checked != 1
               : step.word == "enabled"   ? enabled
                                          : !enabled;
  std::string found = checked == 1 ? "checked" : checked == 0 ? "unchecked" : "without a check mark";
  if (!holds) Fail(step, expected, found + (enabled ? ", enabled" : ", disabled"));
}

void CheckHostCall(const ScenarioStep& step) {
  int slot = ServiceSlot(step.name);
  long calls = ServiceCallCount(slot) - gCallsAtFrameStart[slot];
  bool holds = step.hasCount ? calls == (long)step.value : calls > 0;
  if (holds) return;
  std::string times = step.hasCount ? " " + Number(step.value) + " times" : "";
  Fail(step, step.name + " called" + times + " in frame " + std::to_string(step.frame),
       "called " + std::to_string(calls) + " times");
}

std::string Colour(uint32_t rgb) {
  char text[8];
  std::snprintf(text, sizeof text, "#%06X", rgb & 0xFFFFFF);
  return text;
}

void CheckPixel(const ScenarioStep& step) {
  int x = step.numbers[0], y = step.numbers[1];
  int tolerance = step.tolerance >= 0 ? (int)step.tolerance : kPixelTolerance;
  uint32_t pixel = PixelAt(x, y);
  if (PixelMatches(pixel, (uint32_t)step.numbers[2], tolerance)) return;
  Fail(step, Colour((uint32_t)step.numbers[2]) + " within " + std::to_string(tolerance) + " at (" +
                 std::to_string(x) + ", " + std::to_string(y) + ")",
       Colour(pixel));
}

void CheckScreenshot(const ScenarioStep& step) {
  std::string found;
  if (CompareScreen(step.name, step.tolerance, found)) return;
  std::string expected = "the frame as in " + step.name;
  if (step.tolerance >= 0) expected += " but for " + Number(step.tolerance) + "% of its pixels";
  Fail(step, expected, found);
}

void Check(const ScenarioStep& step) {
  switch (step.kind) {
    case StepKind::ExpectLogContains:
    case StepKind::ExpectLogMatches: CheckLog(step); break;
    case StepKind::ExpectDataRef: CheckDataRef(step); break;
    case StepKind::ExpectWindow:
    case StepKind::ExpectNoWindow: CheckWindow(step); break;
    case StepKind::ExpectPlugin: CheckPlugin(step); break;
    case StepKind::ExpectMenu: CheckMenu(step); break;
    case StepKind::ExpectHostCall: CheckHostCall(step); break;
    case StepKind::ExpectPixel: CheckPixel(step); break;
    case StepKind::ExpectScreenshot: CheckScreenshot(step); break;
    case StepKind::Screenshot:
      if (!SaveScreen(step.name)) Fail(step, "a picture in " + step.name, "cannot write the file");
      break;
    default: break;
  }
}

void EndDrag() {
  if (!gDragging) return;
  gDragging = false;
  gLibrary.MouseClickHook(gMouseX, gMouseY, 0);
}

}  // namespace

void SetScenario(const std::vector<ScenarioStep>& steps) {
  gSteps = steps;
  // Steps given on the command line join those of the file at their frame.
  std::stable_sort(gSteps.begin(), gSteps.end(),
                   [](const ScenarioStep& a, const ScenarioStep& b) { return a.frame < b.frame; });
  gReached.assign(gSteps.size(), false);
  gFailures = 0;
  gDragging = false;
  NoteFrameStart();
}

void NoteFrameStart() {
  for (int slot = 0; slot < kSlotCount; ++slot) gCallsAtFrameStart[slot] = ServiceCallCount(slot);
}

void RunScenarioActions(int frame) {
  EndDrag();
  for (size_t i = 0; i < gSteps.size(); ++i)
    if (gSteps[i].frame == frame && !IsCheck(gSteps[i].kind)) {
      gReached[i] = true;
      Act(gSteps[i]);
    }
}

void RunScenarioChecks(int frame) {
  for (size_t i = 0; i < gSteps.size(); ++i)
    if (gSteps[i].frame == frame && IsCheck(gSteps[i].kind)) {
      gReached[i] = true;
      Check(gSteps[i]);
    }
  // The user's steps are done with once their frame is: a long session in
  // the window must not make every frame walk all it ever did.
  size_t kept = 0;
  for (size_t i = 0; i < gSteps.size(); ++i) {
    if (gSteps[i].where == kLiveStepWhere && gSteps[i].frame <= frame) continue;
    if (kept != i) {
      gSteps[kept] = std::move(gSteps[i]);
      gReached[kept] = gReached[i];
    }
    ++kept;
  }
  gSteps.resize(kept);
  gReached.resize(kept);
}

void FinishScenario(int lastFrame) {
  EndDrag();
  for (size_t i = 0; i < gSteps.size(); ++i)
    if (!gReached[i])
      Fail(gSteps[i], "the run to reach this step",
           "the run ended at frame " + std::to_string(lastFrame));
}

int ScenarioFailures() { return gFailures; }

int ScenarioStepCount() {
  return (int)std::count_if(gSteps.begin(), gSteps.end(),
                            [](const ScenarioStep& step) { return step.where != kLiveStepWhere; });
}

void AddLiveStep(const ScenarioStep& step) {
  gSteps.push_back(step);
  gReached.push_back(false);
  if (!gRecording) return;
  if (step.frame != gRecordedFrame) std::fprintf(gRecording, "at %d\n", step.frame);
  gRecordedFrame = step.frame;
  std::fprintf(gRecording, "%s\n", step.text.c_str());
  // Complete after every step: a run that ends by a signal loses nothing.
  std::fflush(gRecording);
}

bool StartRecording(const std::string& file, std::string& error) {
  gRecording = std::fopen(file.c_str(), "w");
  if (!gRecording) {
    error = "cannot write the recording to " + file;
    return false;
  }
  std::fprintf(gRecording, "# What the user did in toka-host's window, frame by frame.\n");
  gRecordedFrame = -1;
  return true;
}

void StopRecording() {
  if (gRecording) std::fclose(gRecording);
  gRecording = nullptr;
}

}  // namespace toka_host
