// A plugin whose disable and message entries throw once they have been
// recorded (test code it is asked to run does not).
#include <stdexcept>

#include "harness/plugin_script.h"
#include "self_path.h"
#include "toka/TOKADefs.h"

using namespace toka_test;

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  return PluginStart(SelfPath(), name, signature, description);
}
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) { return PluginEnable(SelfPath()); }
TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) { PluginStop(SelfPath()); }
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {
  PluginDisable(SelfPath());
  throw std::runtime_error("disable failed");
}
TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(int from, int message, void* param) {
  PluginReceiveMessage(SelfPath(), from, message, param);
  if (message != 0x7A0A) throw std::runtime_error("message failed");
}
