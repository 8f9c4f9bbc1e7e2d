// Broken: reports the signature of another plugin (draw_null, which comes
// before it in the folder), so that the simulator refuses whichever of the
// two it loads second.
#include "broken.h"

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  return StartAs("Duplicate signature", "toka.broken.draw-null", name, signature, description);
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop() {}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() { return 1; }

TOKA_PLUGIN_EXPORT void OrvanePluginDisable() {}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID, int, void*) {}
