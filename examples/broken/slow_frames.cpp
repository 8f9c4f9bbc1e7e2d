// Broken: its flight loop takes 20 ms of every frame, more than the
// simulator can spare.
#include <chrono>
#include <thread>

#include "broken.h"

namespace {
float Tick(float, float, int, void*) {
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  return -1;
}
}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  TOKARegisterFlightLoopCallback(Tick, 0, nullptr);
  return StartAs("Slow frames", "toka.broken.slow-frames", name, signature, description);
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop() { TOKAUnregisterFlightLoopCallback(Tick, nullptr); }

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() {
  TOKASetFlightLoopCallbackInterval(Tick, -1, 1, nullptr);
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable() {
  TOKASetFlightLoopCallbackInterval(Tick, 0, 1, nullptr);
}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID, int, void*) {}
