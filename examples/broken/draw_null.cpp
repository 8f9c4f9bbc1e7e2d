// Broken: its draw callback reads through a null pointer, and the simulator
// crashes in its first frame.
#include "broken.h"

namespace {
// A phase the simulator draws every frame.
const int kPhase = 40;
int* volatile gNothing = nullptr;
int Draw(int, int, void*) { return *gNothing; }
}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  return StartAs("Draws through null", "toka.broken.draw-null", name, signature, description);
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop() {}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() {
  TOKARegisterDrawCallback(Draw, kPhase, 0, nullptr);
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable() {
  TOKAUnregisterDrawCallback(Draw, kPhase, 0, nullptr);
}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID, int, void*) {}
