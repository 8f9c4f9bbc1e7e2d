// Broken: registers a hot key and never unregisters it.
#include "broken.h"

namespace {
void Pressed(void*) {}
}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  TOKARegisterHotKey(0x76, 0, "Nothing at all", Pressed, nullptr);  // F7
  return StartAs("Keeps a hot key", "toka.broken.keeps-hot-key", name, signature, description);
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop() {}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() { return 1; }

TOKA_PLUGIN_EXPORT void OrvanePluginDisable() {}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID, int, void*) {}
