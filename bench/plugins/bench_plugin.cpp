// The plugin that the loading benchmark copies a hundred times: a start that
// names it after its own file, and the four other entry points doing nothing.
#include <dlfcn.h>

#include <cstdio>

#include "toka/TOKADefs.h"

static const char* SelfPath() {
  Dl_info info;
  dladdr((void*)&SelfPath, &info);
  return info.dli_fname;
}

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  std::snprintf(name, 256, "bench");
  std::snprintf(signature, 256, "bench.%s", SelfPath());
  std::snprintf(description, 256, "a plugin of the loading benchmark");
  return 1;
}
TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {}
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) { return 1; }
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {}
TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(int, int, void*) {}
