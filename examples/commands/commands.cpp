// Commands: creates a command of its own, handles it before and after the
// simulator does, and issues it from a hot key and from a menu item.
//
// What it shows a plugin author:
//   - creating a command (TOKACreateCommand) that the simulator, key
//     bindings and other plugins can issue like any of its own;
//   - handlers before and after the simulator's handling, and the phases
//     they are called with;
//   - issuing a command (TOKACommandOnce) from a hot key and from a menu.
#include <cstring>

#include "toka/TOKA.h"

namespace {

// "sim/" names belong to the simulator; a plugin's commands carry a prefix
// of their own.
const char* const kCommandName = "toka/examples/commands/say_hello";

// 0x76 is the virtual key "F7"; flags 0: without modifiers.
const char kKey = 0x76;
const int kKeyFlags = 0;

TOKACommandRef gCommand = nullptr;
TOKAHotKeyID gHotKey = nullptr;
TOKAMenuID gMenu = nullptr;
int gTimesIssued = 0;

const char* PhaseName(int phase) {
  switch (phase) {
    case TOKA_COMMAND_BEGIN: return "begin";
    case TOKA_COMMAND_CONTINUE: return "continue";
    case TOKA_COMMAND_END: return "end";
  }
  return "unknown phase";
}

// A before-handler sees the command first. Returning 0 would consume it:
// neither the simulator nor the after-handlers would see it. This one lets
// it through.
int BeforeSimulator(TOKACommandRef command, int phase, void* refcon) {
  if (phase == TOKA_COMMAND_BEGIN) ++gTimesIssued;
  TOKA_dprintf("commands: before the simulator, %s (%d)\n", PhaseName(phase), gTimesIssued);
  return 1;
}

// An after-handler runs once the simulator has handled the command.
int AfterSimulator(TOKACommandRef command, int phase, void* refcon) {
  TOKA_dprintf("commands: after the simulator, %s\n", PhaseName(phase));
  return 1;
}

// Both the key and the menu issue the command rather than doing the work
// themselves, so that the command stays the one place where it happens:
// anything bound to the command (a joystick button, another plugin) gets the
// same result. TOKACommandOnce presses and releases it at once.
void IssueFromHotKey(void* refcon) {
  TOKADebugString("commands: hot key pressed\n");
  TOKACommandOnce(gCommand);
}

void IssueFromMenu(void* menuRef, void* itemRef) {
  TOKADebugString("commands: menu item picked\n");
  TOKACommandOnce(gCommand);
}

}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  std::strcpy(outName, "Commands");
  std::strcpy(outSignature, "toka.examples.commands");
  std::strcpy(outDescription, "A command of its own, handled before and after the simulator.");

  gCommand = TOKACreateCommand(kCommandName, "Say hello through the command's handlers");
  TOKARegisterCommandHandler(gCommand, BeforeSimulator, 1, nullptr);
  TOKARegisterCommandHandler(gCommand, AfterSimulator, 0, nullptr);

  gMenu = TOKACreateMenu("Commands", nullptr, 0, IssueFromMenu, nullptr);
  TOKAAppendMenuItem(gMenu, "Say hello", nullptr, 1);
  return 1;
}

// The hot key is there while the plugin is enabled.
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  gHotKey = TOKARegisterHotKey(kKey, kKeyFlags, "Commands: say hello", IssueFromHotKey, nullptr);
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {
  TOKAUnregisterHotKey(gHotKey);
  gHotKey = nullptr;
}

// The command itself stays with the simulator for the life of the process;
// only our handlers and menu go.
TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {
  TOKAUnregisterCommandHandler(gCommand, BeforeSimulator, 1, nullptr);
  TOKAUnregisterCommandHandler(gCommand, AfterSimulator, 0, nullptr);
  TOKADestroyMenu(gMenu);
}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {}
