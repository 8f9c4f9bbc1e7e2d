// Exports a variable under the name of an entry point, which the simulator
// would call.
#include <cstring>

#include "toka/TOKA.h"

extern "C" {
__attribute__((visibility("default"))) int OrvanePluginEnable = 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  std::strcpy(name, "Variable entry");
  std::strcpy(signature, "toka.test.variable-entry");
  std::strcpy(description, "Its enable entry is a variable.");
  return 1;
}
