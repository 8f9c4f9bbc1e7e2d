// The smallest useful plugin: it says hello through the simulator's log at
// each step of its life.
#include <cstring>

#include "toka/TOKAPlugins.h"
#include "toka/TOKAUtilities.h"

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  // Each buffer holds 256 bytes. The signature must be unique and non-empty.
  std::strcpy(outName, "Hello");
  std::strcpy(outSignature, "toka.examples.hello");
  std::strcpy(outDescription, "Says hello at each step of its life.");
  TOKADebugString("hello: started\n");
  return 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  TOKADebugString("hello: enabled\n");
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {
  TOKADebugString("hello: disabled\n");
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {
  TOKADebugString("hello: stopped\n");
}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {}
