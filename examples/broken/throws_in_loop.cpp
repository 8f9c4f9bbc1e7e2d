// Broken: its flight loop throws on its third run, and the exception
// escapes into the simulator.
#include <stdexcept>

#include "broken.h"

namespace {
TOKAFlightLoopID gLoop = nullptr;
int gRuns = 0;
float Tick(float, float, int, void*) {
  if (++gRuns == 3) throw std::runtime_error("the third run of the flight loop");
  return -1;
}
}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  return StartAs("Throws in a loop", "toka.broken.throws-in-loop", name, signature, description);
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop() {}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() {
  TOKACreateFlightLoop_t params = {sizeof(params), 0, Tick, nullptr};
  gLoop = TOKACreateFlightLoop(&params);
  TOKAScheduleFlightLoop(gLoop, -1, 1);
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable() { TOKADestroyFlightLoop(gLoop); }

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID, int, void*) {}
