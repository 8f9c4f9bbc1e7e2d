// A plugin whose signature is always the same, so that two copies of it are
// two versions of one plugin.
#include <cstring>

#include "harness/plugin_script.h"
#include "self_path.h"
#include "toka/TOKADefs.h"

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  int result = toka_test::PluginStart(SelfPath(), name, signature, description);
  std::strcpy(signature, "toka.test.fixed");
  return result;
}
TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) { toka_test::PluginStop(SelfPath()); }
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) { return toka_test::PluginEnable(SelfPath()); }
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) { toka_test::PluginDisable(SelfPath()); }
