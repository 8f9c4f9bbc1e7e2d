// A plugin that refuses to start, whatever its script says.
#include "harness/plugin_script.h"
#include "self_path.h"
#include "toka/TOKADefs.h"

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  toka_test::PluginStart(SelfPath(), name, signature, description);
  return 0;
}
TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) { toka_test::PluginStop(SelfPath()); }
