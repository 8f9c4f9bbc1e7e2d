// The run: the world put back to its start, start-up, the frame loop and
// shutdown, in the order the simulator follows, with a fixed time step so
// that every run of the same plugins with the same options does the same
// things.
#include "host/run.h"

#include <unistd.h>

#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "host/commands.h"
#include "host/config.h"
#include "host/datarefs.h"
#include "host/library.h"
#include "host/live/menu_bar.h"
#include "host/live/watch.h"
#include "host/live/window.h"
#include "host/menus.h"
#include "host/output.h"
#include "host/render/gl.h"
#include "host/render/render.h"
#include "host/scenario/scenario.h"
#include "host/services.h"
#include "host/system.h"
#include "host/world/aircraft.h"
#include "host/world/navigation.h"
#include "host/world/world.h"

namespace toka_host {

namespace {

HostOptions gOptions;
FILE* gTrace = nullptr;
std::string gWorldFailure;

void CloseTrace() {
  TraceServicesTo(nullptr);
  if (gTrace) std::fclose(gTrace);
  gTrace = nullptr;
}

// The simulator knows its folder as a full path, and so does every path it
// hands out below it; a relative root would make a path the host reports
// look like one to be resolved below the root again.
std::string FullFolderPath(std::string folder) {
  if (folder.empty() || folder.back() != '/') folder += '/';
  if (folder[0] == '/') return folder;
  while (folder.compare(0, 2, "./") == 0) folder.erase(0, 2);
  char* cwd = getcwd(nullptr, 0);
  std::string full = cwd ? std::string(cwd) : std::string(".");
  std::free(cwd);
  if (full.back() != '/') full += '/';
  return full + folder;
}

}  // namespace

void ResetWorld(const HostConfig& config) {
  gConfig = config;
  gConfig.root = FullFolderPath(gConfig.root);
  gFrame = 0;
  gRunningTime = gFlightTime = 0;
  gPaused = false;
  gQuitRequested = false;
  gSecondsBehind = 0;
  ClearHostLog();
  ResetServiceCallCounts();
  ResetEvents();
  ResetSystem();
  CreateAircraft();
  PlaceAircraftAtStart();
  ResetTerrain();
  ResetScreen();
  ResetMenus();
  ResetMenuBar();
  ResetCommands();
  ResetObjects();
  ResetFms();
}

bool StartHost(const HostOptions& options, std::string& error) {
  gOptions = options;
  // The context exists before the plugins start: they make their textures
  // in their start and enable entry points.
  if (options.render) {
    if (!OpenRenderer(options.config.screenWidth, options.config.screenHeight, error)) return false;
    CreateHostTextures();
  } else {
    StopRendering();
  }
  ResetWorld(options.config);
  gWorldFailure.clear();
  // The user's aircraft comes from FlightGear before any plugin starts.
  if (options.flightgear.enabled) {
    const Airport* airport = FindAirport(gConfig.airport);
    if (!ConnectFlightGear(options.flightgear, gConfig.airport, airport ? airport->runwayHeading : 0,
                           error))
      return false;
  }
  if (!LoadHostLibrary(options.library, error)) return false;
  if (options.libraryLoaded) options.libraryLoaded();
  if (!options.trace.empty()) {
    gTrace = std::fopen(options.trace.c_str(), "w");
    if (!gTrace) {
      error = "cannot write the trace to " + options.trace;
      return false;
    }
    TraceServicesTo(gTrace);
  }
  SetScenario(options.steps);
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
  NoteFrameStart();
  // FlightGear's clock is the world's there; else each frame is one step.
  if (FlightGearWorld()) {
    if (!UpdateFromFlightGear(gWorldFailure)) return;
  } else {
    gRunningTime += gConfig.step;
    if (!gPaused) gFlightTime += gConfig.step;
  }
  // What the previous frame asked for arrives first.
  CompletePendingObjectLoads();
  SendQueuedEvents();
  RunScenarioActions(gFrame);

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
  for (int code = 1; code <= 26; ++code) {
    PrepareDrawingCode(code);
    if (gLibrary.DoDrawingHook(code, 0)) DrawHostPhase(code);
  }
  DrawMenuBar();
  EndFrame();
  RunScenarioChecks(gFrame);
  if (FlightGearWorld()) SendWritesToFlightGear(gWorldFailure);
}

const std::string& WorldFailure() { return gWorldFailure; }

void StopHost() {
  if (gOptions.printMenus) HostPrint(MenuTreeText());
  if (!gOptions.screenshot.empty() && !SaveScreen(gOptions.screenshot))
    std::fprintf(stderr, "toka-host: cannot save the screen to %s\n", gOptions.screenshot.c_str());
  gLibrary.ShutdownPlugins();
  // Loads still under way belong to plugins that are gone now; finishing
  // them lets the library undo them.
  CompletePendingObjectLoads();
  StopFlightGear();
  CloseTrace();
}

namespace {

bool gEndRequested = false;

sigset_t EndSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

// Frame k of a paced run starts k steps after the first; a frame that
// starts late is not waited for, and the lag is shown.
class Pacer {
public:
  explicit Pacer(bool paced) : mPaced(paced), mStart(std::chrono::steady_clock::now()) {}
  void WaitForFrame(int frame) {
    if (!mPaced) return;
    auto due = mStart + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                            std::chrono::duration<double>(frame * gConfig.step));
    auto now = std::chrono::steady_clock::now();
    if (now < due) std::this_thread::sleep_until(due);
    double behind = std::chrono::duration<double>(now - due).count();
    gSecondsBehind = behind > gConfig.step ? behind : 0;
  }

private:
  bool mPaced;
  std::chrono::steady_clock::time_point mStart;
};

}  // namespace

// The signals are blocked before the GL driver starts its threads, which
// inherit the mask, and taken between frames: no thread is ever interrupted
// in the middle of the driver's work (under an emulator an interrupted wait
// there aborts the process).
void EndRunOnSignals() {
  gEndRequested = false;
  sigset_t signals = EndSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

bool RunEndRequested() {
  sigset_t signals = EndSignals();
  timespec now = {0, 0};
  if (!gEndRequested && sigtimedwait(&signals, nullptr, &now) > 0) gEndRequested = true;
  return gEndRequested || gQuitRequested;
}

void EndRun() { gEndRequested = true; }

int RunHost(const HostOptions& options) {
  std::string error;
  EndRunOnSignals();
  // Without a display there is nothing to run in: no plugin starts.
  if (options.window && !OpenWindow(options, error)) {
    std::fprintf(stderr, "toka-host: %s\n", error.c_str());
    return kCannotRunStatus;
  }
  if (!StartHost(options, error)) {
    std::fprintf(stderr, "toka-host: %s\n", error.c_str());
    // A library that could not be used leaves a FlightGear already started.
    StopFlightGear();
    CloseTrace();
    CloseWindow();
    return kCannotRunStatus;
  }
  if (options.watch) WatchPlugins();
  // Steps of frame 0 see the plugins just started.
  RunScenarioActions(0);
  RunScenarioChecks(0);
  Pacer pacer(options.window || options.watch || options.flightgear.enabled);
  for (int frame = 0; frame < options.frames && !RunEndRequested(); ++frame) {
    pacer.WaitForFrame(frame);
    if (options.window) TakeWindowInput();
    RunFrame();
    if (!gWorldFailure.empty()) break;
    if (options.window) ShowFrame();
    if (options.watch) ReloadRebuiltPlugins();
  }
  // A world that failed is one failed step more, after those it left unreached.
  bool worldFailed = !gWorldFailure.empty();
  if (worldFailed) std::fprintf(stderr, "toka-host: %s\n", gWorldFailure.c_str());
  FinishScenario(gFrame);
  StopHost();
  CloseWindow();
  int failures = ScenarioFailures() + worldFailed, steps = ScenarioStepCount() + worldFailed;
  if (failures)
    std::fprintf(stderr, "toka-host: %d of %d steps failed\n", failures, steps);
  else if (steps)
    std::fprintf(stderr, "toka-host: all %d steps passed\n", steps);
  return std::min(failures, kMaxFailureStatus);
}

}  // namespace toka_host
