// A plugin whose signature is always the same, so that two copies of it are
// two versions of one plugin.
#include <cstring>

#include "harness/plugin_script.h"
#include "self_path.h"
#include "toka/TOKADefs.h"

using namespace toka_test;

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  int result = PluginStart(SelfPath(), name, signature, description);
  std::strcpy(signature, "toka.test.fixed");
  return result;
}
TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) { PluginStop(SelfPath()); }
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) { return PluginEnable(SelfPath()); }
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) { PluginDisable(SelfPath()); }
TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(int from, int message, void* param) {
  PluginReceiveMessage(SelfPath(), from, message, param);
}
