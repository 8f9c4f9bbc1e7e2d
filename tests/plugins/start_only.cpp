// A plugin with a start entry and none of the four optional ones.
#include "harness/plugin_script.h"
#include "self_path.h"
#include "toka/TOKADefs.h"

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  return toka_test::PluginStart(SelfPath(), name, signature, description);
}
