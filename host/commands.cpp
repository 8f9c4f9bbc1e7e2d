// The simulator's command table (services 55 to 58). Every phase of a
// command goes through the library before and after the host's own handling,
// as in the simulator: a plugin's before-handler that consumes the phase
// stops the host's handling and the after-handlers.
#include "host/commands.h"

#include <map>
#include <memory>
#include <vector>

#include "host/config.h"
#include "host/flightgear/flightgear.h"
#include "host/library.h"
#include "host/output.h"
#include "host/services.h"
#include "host/world/aircraft.h"
#include "host/world/world.h"

namespace toka_host {

namespace {

struct HostCommand {
  std::string name;
  std::string description;
  bool held = false;
  void (*action)() = nullptr;  // the host's own handling, run when the command goes down
};

// Commands are never deleted: their addresses are the references plugins hold.
std::vector<std::unique_ptr<HostCommand>> gCommands;
std::map<std::string, HostCommand*> gCommandsByName;

HostCommand* AddCommand(const std::string& name, const std::string& description,
                        void (*action)() = nullptr) {
  gCommands.push_back(std::make_unique<HostCommand>());
  HostCommand* command = gCommands.back().get();
  command->name = name;
  command->description = description;
  command->action = action;
  gCommandsByName[name] = command;
  return command;
}

// Plugins may pass any pointer; only the host's own records are acted on.
HostCommand* Known(TOKACommandRef ref) {
  for (const auto& command : gCommands)
    if (command.get() == ref) return command.get();
  return nullptr;
}

void Dispatch(HostCommand* command, int isBegin, int isEnd) {
  if (gLibrary.CommandHook && gLibrary.CommandHook(command, isBegin, isEnd, 1) == 0) return;
  if (isBegin && command->action) command->action();
  if (gLibrary.CommandHook) gLibrary.CommandHook(command, isBegin, isEnd, 0);
}

// ---- the host's own commands -----------------------------------------------

void TogglePause() {
  FlightGearCommand("pause");
  gPaused = !gPaused;
  HostPrint(gPaused ? "[sim] paused\n" : "[sim] running\n");
  QueueEvent(13, gPaused ? 1 : 0);
}

void Quit() {
  HostPrint("[sim] quit\n");
  FlightGearCommand("quit");
  gQuitRequested = true;
}

void DefaultView() { QueueEvent(1, 0); }

// NAV1 tunes in 50 kHz steps across the band 108.00 to 117.95 MHz.
void TuneNav1(int steps) {
  int channel = (gNav1Frequency - 10800) / 5 + steps;
  channel = (channel % 200 + 200) % 200;
  gNav1Frequency = 10800 + channel * 5;
}
void Nav1Up() { TuneNav1(1); }
void Nav1Down() { TuneNav1(-1); }

// ---- services --------------------------------------------------------------

TOKACommandRef CreateCommand(const char* name, const char* description, int create) {
  if (!name) return nullptr;
  auto found = gCommandsByName.find(name);
  if (found != gCommandsByName.end()) return found->second;
  if (!create) return nullptr;
  return AddCommand(name, description ? description : "");
}

void CommandBegin(TOKACommandRef ref) {
  if (HostCommand* command = Known(ref)) {
    command->held = true;
    Dispatch(command, 1, 0);
  }
}

void CommandContinue(TOKACommandRef ref) {
  if (HostCommand* command = Known(ref)) Dispatch(command, 0, 0);
}

void CommandEnd(TOKACommandRef ref) {
  if (HostCommand* command = Known(ref)) {
    command->held = false;
    Dispatch(command, 0, 1);
  }
}

}  // namespace

void ResetCommands() {
  gCommands.clear();
  gCommandsByName.clear();
  AddCommand("sim/operation/pause_toggle", "Pause or resume the simulation.", TogglePause);
  AddCommand("sim/operation/reset_flight", "Start the flight again.", ResetFlight);
  AddCommand("sim/operation/quit", "Quit the simulator.", Quit);
  AddCommand("sim/view/default_view", "Go back to the default view.", DefaultView);
  AddCommand("sim/radios/nav1_up", "NAV1 frequency up 50 kHz.", Nav1Up);
  AddCommand("sim/radios/nav1_down", "NAV1 frequency down 50 kHz.", Nav1Down);
}

TOKACommandRef FindHostCommand(const std::string& name) {
  auto found = gCommandsByName.find(name);
  return found == gCommandsByName.end() ? nullptr : found->second;
}

bool IsCommandHeld(TOKACommandRef ref) {
  HostCommand* command = Known(ref);
  return command && command->held;
}

void RunCommandOnce(TOKACommandRef ref) {
  CommandBegin(ref);
  CommandEnd(ref);
}

void PressCommand(TOKACommandRef ref) { CommandBegin(ref); }

void ReleaseCommand(TOKACommandRef ref) { CommandEnd(ref); }

void AddCommandServices(TOKAHostServices& table) {
  table.CreateCommand = CreateCommand;
  table.CommandBegin = CommandBegin;
  table.CommandContinue = CommandContinue;
  table.CommandEnd = CommandEnd;
}

}  // namespace toka_host
