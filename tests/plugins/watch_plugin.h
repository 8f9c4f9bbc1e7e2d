// The plugin of the --watch test, in versions that stand for successive
// builds of one plugin file; it logs each entry point as "watch: version N
// <entry>". Each source sets WATCH_VERSION and may set WATCH_NO_START (a
// build the library cannot use), WATCH_MISSING_FUNCTION (one the dynamic
// loader refuses), WATCH_START_RESULT 0 (one that refuses to start) or
// WATCH_ABORTS_WHEN_LOADED (one that ends the process that loads it).
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "toka/TOKA.h"

#ifndef WATCH_START_RESULT
#define WATCH_START_RESULT 1
#endif

#ifdef WATCH_MISSING_FUNCTION
extern "C" void WatchMissingFunction(void);
#endif

namespace {

void Log(const char* entry) {
  char line[64];
  std::snprintf(line, sizeof line, "watch: version %d %s\n", WATCH_VERSION, entry);
  TOKADebugString(line);
}

#ifdef WATCH_ABORTS_WHEN_LOADED
struct AbortWhenLoaded {
  AbortWhenLoaded() { std::abort(); }
} gAbortWhenLoaded;
#endif

}  // namespace

#ifndef WATCH_NO_START
TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  std::strcpy(name, "Watched");
  std::strcpy(signature, "test.host.watched");
  std::strcpy(description, "One build of a plugin that is rebuilt under toka-host --watch.");
#ifdef WATCH_MISSING_FUNCTION
  WatchMissingFunction();
#endif
  Log("started");
  return WATCH_START_RESULT;
}
#endif

TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  Log("enabled");
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) { Log("disabled"); }

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) { Log("stopped"); }
