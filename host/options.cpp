// toka-host's command line.
#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "host/host.h"

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

// "A,B" or "A,B,C" as integers.
bool ToInts(const std::string& text, std::vector<int>& values, size_t count) {
  values.clear();
  size_t start = 0;
  while (true) {
    size_t comma = text.find(',', start);
    int value;
    if (!ToInt(text.substr(start, comma == std::string::npos ? std::string::npos : comma - start),
               value))
      return false;
    values.push_back(value);
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return values.size() == count;
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
         "  --frames N              number of frames to run (default: 60)\n"
         "  --seconds S             run S simulated seconds instead of a number of frames\n"
         "  --step SECONDS          simulated time per frame (default: 1/60)\n"
         "  --screen WxH            screen size in pixels (default: 1280x800)\n"
         "  --airport ICAO          where the flight starts: KSEA, KBFI, KPAE, KOLM or CYVR\n"
         "                          (default: KSEA)\n"
         "  --aircraft PATH         the user's aircraft model, below the root\n"
         "                          (default: Aircraft/Trainer/trainer.acf)\n"
         "  --traffic N             number of other aircraft (default: 2)\n"
         "  --ground-elevation M    elevation of the flat ground in metres (default: 0)\n"
         "  --terrain-extent M      distance from the airport beyond which terrain probes\n"
         "                          find nothing, in metres (default: 100000)\n"
         "  --trace FILE            write every host service the library calls to FILE,\n"
         "                          one line per call: frame, slot, service, arguments,\n"
         "                          result\n"
         "  --print-menus           print the menu bar after the last frame\n"
         "  --screenshot FILE       save the last frame as a PPM picture\n"
         "  --at FRAME:ACTION       do something at a frame (may be repeated):\n"
         "                            mouse=X,Y      move the mouse\n"
         "                            click=X,Y      press and release the mouse button there\n"
         "                            scroll=X,Y,N   turn the scroll wheel N clicks there\n"
         "                            key=C          press the key C\n"
         "                            command=NAME   run a command once\n"
         "                            pick=PATH      pick a menu item, as Plugins/Name/Item\n"
         "                            place=ICAO     put the user's aircraft on an airport\n"
         "                            event=CODE[,PARAM]  send a simulator event (12 looks for\n"
         "                                           new scenery packages)\n"
         "                            menus          print the menu bar\n"
         "  --help                  show this text\n";
}

bool CheckAction(const ScheduledAction& action, std::string& error) {
  std::vector<int> values;
  const std::string& name = action.action;
  bool good;
  if (name == "mouse" || name == "click") good = ToInts(action.argument, values, 2);
  else if (name == "scroll") good = ToInts(action.argument, values, 3);
  else if (name == "event") good = ToInts(action.argument, values, 1) || ToInts(action.argument, values, 2);
  else if (name == "key") good = action.argument.size() == 1;
  else if (name == "command" || name == "pick") good = !action.argument.empty();
  else if (name == "place") good = FindAirport(action.argument) != nullptr;
  else if (name == "menus") good = action.argument.empty();
  else good = false;
  if (!good) error = "bad action " + name + (action.argument.empty() ? "" : "=" + action.argument);
  return good;
}

bool ParseHostOptions(int argc, char** argv, HostOptions& options, std::string& error) {
  double seconds = -1;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    auto value = [&](std::string& out) {
      if (i + 1 >= argc) {
        error = arg + " needs a value";
        return false;
      }
      out = argv[++i];
      return true;
    };
    std::string text;
    HostConfig& config = options.config;
    if (arg == "--print-menus") {
      options.printMenus = true;
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
    } else if (arg == "--seconds") {
      good = ToDouble(text, seconds) && seconds >= 0;
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
    } else if (arg == "--traffic") {
      good = ToInt(text, config.otherAircraft) && config.otherAircraft >= 0 &&
             config.otherAircraft <= 64;
    } else if (arg == "--ground-elevation") {
      good = ToDouble(text, config.groundElevation);
    } else if (arg == "--terrain-extent") {
      good = ToDouble(text, config.terrainExtent) && config.terrainExtent > 0;
    } else if (arg == "--trace") {
      options.trace = text;
    } else if (arg == "--screenshot") {
      options.screenshot = text;
    } else if (arg == "--at") {
      size_t colon = text.find(':');
      ScheduledAction action;
      good = colon != std::string::npos && ToInt(text.substr(0, colon), action.frame) &&
             action.frame >= 1;
      if (good) {
        std::string what = text.substr(colon + 1);
        size_t equals = what.find('=');
        action.action = what.substr(0, equals);
        action.argument = equals == std::string::npos ? "" : what.substr(equals + 1);
        if (!CheckAction(action, error)) return false;
        options.actions.push_back(action);
      }
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
  return true;
}

}  // namespace toka_host
