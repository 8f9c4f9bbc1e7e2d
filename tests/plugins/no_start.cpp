// A loadable module that lacks the required start entry.
#include "harness/plugin_script.h"
#include "self_path.h"
#include "toka/TOKADefs.h"

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) { toka_test::PluginStop(SelfPath()); }
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) { return toka_test::PluginEnable(SelfPath()); }
