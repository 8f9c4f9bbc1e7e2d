// A plugin that refuses to start, whatever its script says.
#include "harness/plugin_script.h"
#include "self_path.h"
#include "toka/TOKADefs.h"

using namespace toka_test;

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  PluginStart(SelfPath(), name, signature, description);
  return 0;
}
TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) { PluginStop(SelfPath()); }
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) { return PluginEnable(SelfPath()); }
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) { PluginDisable(SelfPath()); }
TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(int from, int message, void* param) {
  PluginReceiveMessage(SelfPath(), from, message, param);
}
