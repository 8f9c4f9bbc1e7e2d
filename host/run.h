// A run of toka-host: its command line, the reset of the whole world it
// starts from, start-up, the frames and shutdown.
#ifndef TOKA_HOST_RUN_H
#define TOKA_HOST_RUN_H

#include <string>
#include <vector>

#include "host/config.h"
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
  bool printMenus = false;
  std::string scenario;    // the scenario file, or none
  std::vector<ScenarioStep> steps;  // its steps, then those of --at
};

// Exit status of a run that could not start: bad options, a malformed
// scenario, a library that cannot be used. A run that starts exits with the
// number of failed steps, at most kMaxFailureStatus.
constexpr int kCannotRunStatus = 101;
constexpr int kMaxFailureStatus = 100;

std::string HostUsage();
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
void StopHost();
// The whole run: start, the frames, stop. The process's exit status.
int RunHost(const HostOptions& options);

}  // namespace toka_host

#endif
