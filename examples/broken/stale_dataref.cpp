// Broken: renames its dataref but goes on reading the old one through the
// handle it kept, which nobody serves any more.
#include "broken.h"

namespace {
int gValue = 7;
TOKADataRef gOld = nullptr;
TOKADataRef gNew = nullptr;
int gRead = 0;
int ReadValue(void*) { return gValue; }
float Tick(float, float, int, void*) {
  gRead = TOKAGetDatai(gOld);  // should be gNew
  return -1;
}
TOKADataRef Publish(const char* name) {
  return TOKARegisterDataAccessor(name, DataTypeInt, 0, ReadValue, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr);
}
}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  gOld = Publish("toka/broken/stale/value");
  TOKAUnregisterDataAccessor(gOld);
  gNew = Publish("toka/broken/stale/value_v2");
  TOKARegisterFlightLoopCallback(Tick, 0, nullptr);
  return StartAs("Stale dataref", "toka.broken.stale-dataref", name, signature, description);
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop() {
  TOKAUnregisterFlightLoopCallback(Tick, nullptr);
  TOKAUnregisterDataAccessor(gNew);
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() {
  TOKASetFlightLoopCallbackInterval(Tick, -1, 1, nullptr);
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable() {
  TOKASetFlightLoopCallbackInterval(Tick, 0, 1, nullptr);
}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID, int, void*) {}
