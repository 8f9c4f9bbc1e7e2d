// Broken: its flight loop stays scheduled while it is disabled; it destroys
// the loop only when it stops.
#include "broken.h"

namespace {
TOKAFlightLoopID gLoop = nullptr;
float Tick(float, float, int, void*) { return -1; }
}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  TOKACreateFlightLoop_t params = {sizeof(params), 0, Tick, nullptr};
  gLoop = TOKACreateFlightLoop(&params);
  return StartAs("Loop after disable", "toka.broken.loop-after-disable", name, signature,
                 description);
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop() { TOKADestroyFlightLoop(gLoop); }

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() {
  TOKAScheduleFlightLoop(gLoop, -1, 1);
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable() {}  // the loop stays scheduled

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID, int, void*) {}
