// The run: start-up, the frame loop and shutdown, in the order the
// simulator follows, with a fixed time step so that every run of the same
// plugins with the same options does the same things.
#include <cctype>
#include <cstdlib>

#include "host/host.h"

namespace toka_host {

namespace {

HostOptions gOptions;
FILE* gTrace = nullptr;

std::vector<int> Numbers(const std::string& text) {
  std::vector<int> numbers;
  size_t start = 0;
  while (start <= text.size()) {
    size_t comma = text.find(',', start);
    if (comma == std::string::npos) comma = text.size();
    numbers.push_back(std::atoi(text.substr(start, comma - start).c_str()));
    start = comma + 1;
  }
  return numbers;
}

// A key the plugins leave alone reaches the simulator's own key map.
void PressKey(char key) {
  char virtualKey = (char)std::toupper((unsigned char)key);
  if (gLibrary.KeyPressHook(key, 0, virtualKey) == 0) return;
  if (virtualKey == 'P') RunCommandOnce(FindHostCommand("sim/operation/pause_toggle"));
}

void Perform(const ScheduledAction& action) {
  const std::string& name = action.action;
  std::vector<int> numbers = Numbers(action.argument);
  if (name == "mouse") {
    gMouseX = numbers[0];
    gMouseY = numbers[1];
  } else if (name == "click") {
    gMouseX = numbers[0];
    gMouseY = numbers[1];
    gLibrary.MouseClickHook(gMouseX, gMouseY, 1);
    gLibrary.MouseClickHook(gMouseX, gMouseY, 0);
  } else if (name == "scroll") {
    gMouseX = numbers[0];
    gMouseY = numbers[1];
    gLibrary.ScrollWheelHook(gMouseX, gMouseY, 0, numbers[2]);
  } else if (name == "key") {
    PressKey(action.argument[0]);
  } else if (name == "command") {
    TOKACommandRef command = FindHostCommand(action.argument);
    if (command) RunCommandOnce(command);
    else HostPrint("[command] no command " + action.argument + "\n");
  } else if (name == "pick") {
    if (!PickMenuItem(action.argument)) HostPrint("[menu] no item " + action.argument + "\n");
  } else if (name == "place") {
    PlaceUserAtAirport(action.argument.c_str());
  } else if (name == "event" && numbers[0] == 12) {
    QueueSceneryScan();
  } else if (name == "event") {
    gLibrary.EventHook(numbers[0], (float)gRunningTime, 0, numbers.size() > 1 ? numbers[1] : 0);
  } else if (name == "menus") {
    HostPrint(MenuTreeText());
  }
}

void CloseTrace() {
  TraceServicesTo(nullptr);
  if (gTrace) std::fclose(gTrace);
  gTrace = nullptr;
}

}  // namespace

bool StartHost(const HostOptions& options, std::string& error) {
  gOptions = options;
  ResetWorld(options.config);
  if (!LoadHostLibrary(options.library, error)) return false;
  if (!options.trace.empty()) {
    gTrace = std::fopen(options.trace.c_str(), "w");
    if (!gTrace) {
      error = "cannot write the trace to " + options.trace;
      return false;
    }
    TraceServicesTo(gTrace);
  }
  // The host's datarefs exist before any plugin starts, as the simulator's do.
  if (gLibrary.RegisterDataAccessor)
    RegisterHostDataRefs(gLibrary.RegisterDataAccessor);
  else
    std::fprintf(stderr,
                 "toka-host: warning: the library lacks TOKARegisterDataAccessor; the "
                 "simulator's datarefs are not published\n");
  gLibrary.InitializePlugins(gConfig.root.c_str(), HostServices(), 0);
  // With the plugins running, the simulator loads the airport, the aircraft
  // and the scenery, and tells the plugins.
  QueueEvent(4, 0);
  for (size_t i = 0; i < gAircraft.size(); ++i) QueueEvent(3, (int)i);
  QueueSceneryScan();
  SendQueuedEvents();
  return true;
}

void RunFrame() {
  ++gFrame;
  gRunningTime += gConfig.step;
  if (!gPaused) gFlightTime += gConfig.step;
  // What the previous frame asked for arrives first.
  CompletePendingObjectLoads();
  SendQueuedEvents();
  for (const ScheduledAction& action : gOptions.actions)
    if (action.frame == gFrame) Perform(action);

  UpdateTrafficFromPlugins();
  if (!gPaused) MoveAircraft(gConfig.step);
  CheckForCrash();
  float elapsed = (float)gRunningTime;
  gLibrary.EventHook(0, elapsed, 0, 0);
  gLibrary.EventHook(9, elapsed, 0, 0);
  gLibrary.EventHook(10, elapsed, 0, 0);

  UpdateCamera();
  gLibrary.CursorHook(gMouseX, gMouseY);
  ClearScreen();
  // The host draws its part of a phase unless a plugin's before-callback
  // asked it not to.
  for (int code = 1; code <= 26; ++code)
    if (gLibrary.DoDrawingHook(code, 0)) DrawHostPhase(code);
}

void StopHost() {
  if (gOptions.printMenus) HostPrint(MenuTreeText());
  if (!gOptions.screenshot.empty() && !SaveScreen(gOptions.screenshot))
    std::fprintf(stderr, "toka-host: cannot save the screen to %s\n", gOptions.screenshot.c_str());
  gLibrary.ShutdownPlugins();
  // Loads still under way belong to plugins that are gone now; finishing
  // them lets the library undo them.
  CompletePendingObjectLoads();
  CloseTrace();
}

int RunHost(const HostOptions& options) {
  std::string error;
  if (!StartHost(options, error)) {
    std::fprintf(stderr, "toka-host: %s\n", error.c_str());
    CloseTrace();
    return 1;
  }
  for (int frame = 0; frame < options.frames && !gQuitRequested; ++frame) RunFrame();
  StopHost();
  return 0;
}

}  // namespace toka_host
