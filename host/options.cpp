// toka-host's command line.
#include "host/run.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>

#include "host/config.h"
#include "host/scenario/scenario.h"
#include "host/world/aircraft.h"

namespace toka_host {

namespace {

bool ToInt(const std::string& text, int& value) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  long parsed = std::strtol(text.c_str(), &end, 10);
  if (*end || errno || parsed < -2147483647L || parsed > 2147483647L) return false;
  value = (int)parsed;
  return true;
}

bool ToDouble(const std::string& text, double& value) {
  if (text.empty()) return false;
  char* end = nullptr;
  value = std::strtod(text.c_str(), &end);
  return !*end && std::isfinite(value);
}

}  // namespace

std::string HostUsage() {
  return "usage: toka-host [options]\n"
         "Runs the plugins below a simulator folder tree without the simulator: loads the\n"
         "plugin manager library, runs a number of frames of a small simulated world and\n"
         "shuts the plugins down.\n"
         "\n"
         "  --root DIR              simulator root folder; plugins are found in\n"
         "                          DIR/Resources/plugins, scenery packages in\n"
         "                          DIR/Custom Scenery (default: ./)\n"
         "  --library FILE          the plugin manager library to load (default: libtoka.so)\n"
         "  --frames N              number of frames to run (default: 60, or as many as\n"
         "                          the scenario's steps need)\n"
         "  --seconds S             run S simulated seconds instead of a number of frames\n"
         "  --step SECONDS          simulated time per frame (default: 1/60)\n"
         "  --screen WxH            screen size in pixels (default: 1280x800)\n"
         "  --airport ICAO          where the flight starts: KSEA, KBFI, KPAE, KOLM or CYVR\n"
         "                          (default: KSEA)\n"
         "  --aircraft PATH         the user's aircraft model, below the root\n"
         "                          (default: Aircraft/Trainer/trainer.acf); FlightGear\n"
         "                          flies the aircraft of the file's name without its\n"
         "                          extension (default: c172p)\n"
         "  --traffic N             number of other aircraft (default: 2)\n"
         "  --ground-elevation M    elevation of the flat ground in metres (default: 0)\n"
         "  --terrain-extent M      distance from the airport beyond which terrain probes\n"
         "                          find nothing, in metres (default: 100000)\n"
         "  --trace FILE            write every host service the library calls to FILE,\n"
         "                          one line per call: frame, slot, service, arguments,\n"
         "                          result\n"
         "  --print-menus           print the menu bar after the last frame\n"
         "  --screenshot FILE       save the last frame as a PNG picture\n"
         "  --render gl|none        draw every frame with OpenGL in an offscreen context\n"
         "                          (gl, the default), or draw nothing: the plugins and\n"
         "                          their draw callbacks run, their GL calls find no\n"
         "                          context; no screenshots or pixel expectations\n"
         "  --window                show every frame in a window, paced in real time, and\n"
         "                          take the user's mouse and keys as scenario steps;\n"
         "                          without --frames or --seconds the run goes on until\n"
         "                          the window is closed (or SIGINT, SIGTERM)\n"
         "  --record FILE           with --window: write what the user did to FILE as\n"
         "                          scenario steps at their frames, to replay headless\n"
         "  --watch                 reload the plugins when one of their files is rebuilt;\n"
         "                          paces the run in real time\n"
         "  --scenario FILE         run the steps of a scenario file (see the README):\n"
         "                          input, simulator events and expectations, frame by\n"
         "                          frame; the exit status is the number of failed steps\n"
         "                          (at most 100), 101 when the run cannot start\n"
         "  --at FRAME:STEP         one scenario step at a frame (may be repeated), for\n"
         "                          example --at '10:key P' or '20:menu \"Sim/Pause\"'\n"
         "  --world builtin|flightgear[=HOST:PORT]\n"
         "                          the world the plugins fly in: the host's own (builtin,\n"
         "                          the default), or a FlightGear the host starts, or the\n"
         "                          one whose property server is at HOST:PORT, started\n"
         "                          with the options --flightgear-options prints; its\n"
         "                          frames are paced in real time on FlightGear's clock\n"
         "  --flightgear-args ARGS  more options for the FlightGear the host starts\n"
         "  --flightgear-timeout S  how long to wait for it to fly (default: 300)\n"
         "  --flightgear-log FILE   its output (default: a file in $TMPDIR or /tmp, named\n"
         "                          in the host's log)\n"
         "  --flightgear-options    print the options a FlightGear started by hand needs\n"
         "                          for --world flightgear=localhost:5401, and exit\n"
         "  --help                  show this text\n"
         "\n"
         "A run that crashes (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT) prints a crash\n"
         "report on standard error, naming the plugin whose code was running, the\n"
         "module of the faulting code and the innermost call into the library still\n"
         "active, with a backtrace, and exits with status 102.\n";
}

bool OptionValue(int argc, char** argv, int& i, std::string& out, std::string& error) {
  if (i + 1 >= argc) {
    error = std::string(argv[i]) + " needs a value";
    return false;
  }
  out = argv[++i];
  return true;
}

bool ParseHostOptions(int argc, char** argv, HostOptions& options, std::string& error) {
  double seconds = -1;
  bool aircraftGiven = false;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    auto value = [&](std::string& out) { return OptionValue(argc, argv, i, out, error); };
    std::string text;
    HostConfig& config = options.config;
    // The options without a value.
    bool* flag = arg == "--print-menus" ? &options.printMenus
                 : arg == "--window"    ? &options.window
                 : arg == "--watch"     ? &options.watch
                 : arg == "--flightgear-options" ? &options.printFlightGearOptions
                                        : nullptr;
    if (flag) {
      *flag = true;
      continue;
    }
    if (!value(text)) return false;
    bool good = true;
    if (arg == "--root") {
      config.root = text.empty() || text.back() == '/' ? text : text + "/";
    } else if (arg == "--library") {
      options.library = text;
    } else if (arg == "--frames") {
      good = ToInt(text, options.frames) && options.frames >= 0;
      options.lengthGiven = true;
    } else if (arg == "--seconds") {
      good = ToDouble(text, seconds) && seconds >= 0;
      options.lengthGiven = true;
    } else if (arg == "--step") {
      good = ToDouble(text, config.step) && config.step > 0;
    } else if (arg == "--screen") {
      size_t x = text.find('x');
      good = x != std::string::npos && ToInt(text.substr(0, x), config.screenWidth) &&
             ToInt(text.substr(x + 1), config.screenHeight) && config.screenWidth > 0 &&
             config.screenHeight > 0 && config.screenWidth <= 8192 && config.screenHeight <= 8192;
    } else if (arg == "--airport") {
      good = FindAirport(text) != nullptr;
      config.airport = text;
    } else if (arg == "--aircraft") {
      good = !text.empty();
      config.userAircraft = text;
      aircraftGiven = true;
    } else if (arg == "--traffic") {
      good = ToInt(text, config.otherAircraft) && config.otherAircraft >= 0 &&
             config.otherAircraft <= 64;
    } else if (arg == "--ground-elevation") {
      good = ToDouble(text, config.groundElevation);
    } else if (arg == "--terrain-extent") {
      good = ToDouble(text, config.terrainExtent) && config.terrainExtent > 0;
    } else if (arg == "--world") {
      FlightGearOptions& flightgear = options.flightgear;
      flightgear.enabled = text.compare(0, 10, "flightgear") == 0;
      flightgear.address = text.size() > 11 ? text.substr(11) : "";
      good = text == "builtin" || text == "flightgear" ||
             (flightgear.enabled && text[10] == '=' && text.find(':') != std::string::npos);
    } else if (arg == "--flightgear-args") {
      options.flightgear.arguments = text;
    } else if (arg == "--flightgear-timeout") {
      good = ToDouble(text, options.flightgear.startSeconds) && options.flightgear.startSeconds > 0;
    } else if (arg == "--flightgear-log") {
      good = !text.empty();
      options.flightgear.log = text;
    } else if (arg == "--trace") {
      options.trace = text;
    } else if (arg == "--screenshot") {
      options.screenshot = text;
    } else if (arg == "--render") {
      good = text == "gl" || text == "none";
      options.render = text == "gl";
    } else if (arg == "--record") {
      good = !text.empty();
      options.record = text;
    } else if (arg == "--scenario") {
      good = !text.empty() && options.scenario.empty();
      options.scenario = text;
    } else if (arg == "--at") {
      size_t colon = text.find(':');
      int frame = 0;
      good = colon != std::string::npos && ToInt(text.substr(0, colon), frame) && frame >= 0;
      ScenarioStep step;
      std::string problem;
      if (good && !ParseScenarioStep(text.substr(colon + 1), frame, "--at", step, problem)) {
        // The column counts from the start of the step, after "FRAME:".
        error = "bad value for --at: " + text + ": column " + problem;
        return false;
      }
      if (good) options.steps.push_back(step);
    } else {
      error = "unknown option " + arg;
      return false;
    }
    if (!good) {
      error = "bad value for " + arg + ": " + text;
      return false;
    }
  }
  if (seconds >= 0) options.frames = (int)std::ceil(seconds / options.config.step - 1e-9);
  if (aircraftGiven) {
    // FlightGear names its aircraft by their folder: the model file's name.
    std::string name = options.config.userAircraft.substr(options.config.userAircraft.rfind('/') + 1);
    options.flightgear.aircraft = name.substr(0, name.rfind('.'));
  }
  return true;
}

bool LoadScenario(HostOptions& options, std::string& error) {
  if (!options.scenario.empty()) {
    std::ifstream in(options.scenario, std::ios::binary);
    std::stringstream text;
    if (in.is_open()) text << in.rdbuf();
    if (!in.is_open() || in.bad()) {
      error = "toka-host: cannot read the scenario " + options.scenario;
      return false;
    }
    std::vector<ScenarioStep> steps;
    if (!ParseScenario(text.str(), options.scenario, options.config.step, steps, error))
      return false;
    // The file's steps come first at a frame, then those of --at.
    options.steps.insert(options.steps.begin(), steps.begin(), steps.end());
  }
  if (!options.record.empty() && !options.window) {
    error = "toka-host: --record needs --window";
    return false;
  }
  if (!options.render) {
    // Refused before the run rather than failing at its end.
    if (options.window) {
      error = "toka-host: --window needs --render gl";
      return false;
    }
    const char* refusal = "toka-host: --render none draws no pictures: ";
    if (!options.screenshot.empty()) {
      error = refusal + std::string("--screenshot needs --render gl");
      return false;
    }
    for (const ScenarioStep& step : options.steps)
      if (NeedsPictures(step.kind)) {
        error = refusal + step.where + ": " + step.text + " needs --render gl";
        return false;
      }
  }
  if (!options.lengthGiven && !options.steps.empty()) {
    options.frames = 0;
    for (const ScenarioStep& step : options.steps) options.frames = std::max(options.frames, step.frame);
  }
  // A live run goes on until the window is closed or a signal ends it.
  if (!options.lengthGiven && (options.window || options.watch))
    options.frames = std::numeric_limits<int>::max();
  return true;
}

}  // namespace toka_host
