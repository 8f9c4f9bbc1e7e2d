// The simulator's command table, as the user (a key, a menu item, a
// scenario) runs its commands.
#ifndef TOKA_HOST_COMMANDS_H
#define TOKA_HOST_COMMANDS_H

#include <string>

#include "toka/TOKADefs.h"

namespace toka_host {

void ResetCommands();
TOKACommandRef FindHostCommand(const std::string& name);
bool IsCommandHeld(TOKACommandRef command);
void RunCommandOnce(TOKACommandRef command);
void PressCommand(TOKACommandRef command);    // held down until released
void ReleaseCommand(TOKACommandRef command);

}  // namespace toka_host

#endif
