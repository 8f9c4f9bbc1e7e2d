// A run of toka-host: its command line, the reset of the whole world it
// starts from, start-up, the frames and shutdown.
#ifndef TOKA_HOST_RUN_H
#define TOKA_HOST_RUN_H

#include <string>
#include <vector>

#include "host/config.h"
#include "host/flightgear/flightgear.h"
#include "host/scenario/scenario.h"

namespace toka_host {

struct HostOptions {
  HostConfig config;
  std::string library = "libtoka.so";
  int frames = 60;
  bool lengthGiven = false;  // --frames or --seconds; else a scenario sets the length
  std::string trace;       // trace file, or none
  std::string screenshot;  // picture of the last frame, or none
  bool render = true;      // --render gl; false: --render none, nothing is drawn
  bool window = false;     // --window: frames shown in a window, the user's input taken
  std::string record;      // --record FILE: the user's input written as scenario steps
  bool watch = false;      // --watch: plugins reloaded when their files are rebuilt
  bool printMenus = false;
  std::string scenario;    // the scenario file, or none
  std::vector<ScenarioStep> steps;  // its steps, then those of --at
  FlightGearOptions flightgear;     // --world flightgear
  bool printFlightGearOptions = false;
  // Called once the library is loaded, before it starts the plugins: the
  // program's crash report learns the library's functions there.
  void (*libraryLoaded)() = nullptr;
};

// Exit status of a run that could not start: bad options, a malformed
// scenario, a library that cannot be used. A run that starts exits with the
// number of failed steps, at most kMaxFailureStatus.
constexpr int kCannotRunStatus = 101;
constexpr int kMaxFailureStatus = 100;
// Exit status of a run that crashed, after the crash report (host/crash.h).
constexpr int kCrashStatus = 102;

std::string HostUsage();
// The value after the option argv[i], into out, with i moved onto it; false
// with "<option> needs a value" when the option ends the command line.
bool OptionValue(int argc, char** argv, int& i, std::string& out, std::string& error);
// False with a reason for options that do not make sense.
bool ParseHostOptions(int argc, char** argv, HostOptions& options, std::string& error);
// Reads the scenario file, if any, and sets the length of a run that was not
// given one: the frame of the last step. False with the error to print as it
// stands ("FILE:LINE:COLUMN: message" for a malformed line).
// Refuses, with the error to print, pictures asked of a run that draws none
// (--render none).
bool LoadScenario(HostOptions& options, std::string& error);

// Puts the whole world back to its starting state for a configuration.
void ResetWorld(const HostConfig& config);

// Loads the library, publishes the host's datarefs, starts the plugins and
// loads the aircraft and scenery. False with a reason when the library
// cannot be used.
bool StartHost(const HostOptions& options, std::string& error);
void RunFrame();
// Why the world cannot go on (FlightGear exited or stopped answering), or
// empty while it can; a frame that finds it so does nothing else.
const std::string& WorldFailure();
void StopHost();
// SIGINT and SIGTERM end a run as its last frame would: the frame under way
// finishes, then the plugins are stopped and everything written is complete.
// The calling thread, and every thread it starts after, holds them blocked:
// a child process the host starts must unblock them itself.
void EndRunOnSignals();
bool RunEndRequested();
void EndRun();  // the same from within: the window was closed
// The whole run: start, the frames, stop. The process's exit status.
int RunHost(const HostOptions& options);

}  // namespace toka_host

#endif
