// Its enable entry throws the second time, its stop entry always.
#include <cstring>
#include <stdexcept>

#include "toka/TOKA.h"

namespace {
int gEnables = 0;
}

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  std::strcpy(name, "Throws from entries");
  std::strcpy(signature, "toka.test.throws-from-entries");
  std::strcpy(description, "Throws from its enable and stop entries.");
  return 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() {
  if (++gEnables == 2) throw std::runtime_error("enabled twice");
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable() {}
TOKA_PLUGIN_EXPORT void OrvanePluginStop() { throw std::runtime_error("stopping"); }
