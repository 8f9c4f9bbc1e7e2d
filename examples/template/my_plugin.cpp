// My plugin: the starting point of a new Toka plugin. Rename it, give it a
// signature of your own and put your work where the comments say.
#include <cstring>

#include "toka/TOKA.h"

namespace {

// Runs every few seconds of simulator time once the plugin is enabled.
float EveryFewSeconds(float sinceLastCall, float elapsedTime, int counter, void* refcon) {
  TOKA_dprintf("my_plugin: %.1f seconds since the last call\n", sinceLastCall);
  return 5.0f;  // seconds until the next call; 0 stops the loop
}

}  // namespace

// Called once, when the simulator loads the plugin. Fill in the three
// buffers (256 bytes each) and create what the plugin needs: datarefs,
// windows, menus, commands, flight loops. Return 0 to refuse to load.
TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  std::strcpy(outName, "My plugin");
  // The signature tells plugins apart: make it unique, e.g. a reversed
  // domain name of yours.
  std::strcpy(outSignature, "com.example.my_plugin");
  std::strcpy(outDescription, "A plugin built from the Toka template.");
  TOKARegisterFlightLoopCallback(EveryFewSeconds, 5.0f, nullptr);
  TOKADebugString("my_plugin: started\n");
  return 1;
}

// Called after Start and whenever the plugin is switched on again. Return 0
// to stay disabled.
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  TOKASetFlightLoopCallbackInterval(EveryFewSeconds, 5.0f, 1, nullptr);
  TOKADebugString("my_plugin: enabled\n");
  return 1;
}

// While disabled the plugin's callbacks are not called; stop what runs by
// itself all the same (an interval of 0 unschedules the loop), so that
// nothing of the plugin is left running.
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {
  TOKASetFlightLoopCallbackInterval(EveryFewSeconds, 0, 1, nullptr);
  TOKADebugString("my_plugin: disabled\n");
}

// Called once, before the plugin is unloaded. What the plugin created is
// withdrawn by the library afterwards; free here what you allocated yourself.
TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {
  TOKAUnregisterFlightLoopCallback(EveryFewSeconds, nullptr);
  TOKADebugString("my_plugin: stopped\n");
}

// Messages from the simulator (101 and up) and from other plugins
// (TOKASendMessageToPlugin).
TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {}
