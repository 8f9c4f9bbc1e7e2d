// Broken: creates a window and never destroys it, leaving it to the
// library's clean-up when it is unloaded. It hides it while disabled, as it
// should.
#include "broken.h"

namespace {
TOKAWindowID gWindow = nullptr;
void Draw(TOKAWindowID, void*) {}
void Key(TOKAWindowID, char, int, char, void*, int) {}
int Mouse(TOKAWindowID, int, int, int, void*) { return 1; }
}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  gWindow = TOKACreateWindow(100, 400, 300, 300, 0, Draw, Key, Mouse, nullptr);
  return StartAs("Leaves a window", "toka.broken.leaves-window", name, signature, description);
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop() {}  // the window stays

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() {
  TOKASetWindowIsVisible(gWindow, 1);
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable() { TOKASetWindowIsVisible(gWindow, 0); }

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID, int, void*) {}
