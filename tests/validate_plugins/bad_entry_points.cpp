// Starts with an empty name and a description longer than its buffer.
#include <cstring>

#include "toka/TOKA.h"

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  name[0] = 0;
  std::strcpy(signature, "toka.test.bad-entry-points");
  std::memset(description, 'x', 299);
  description[299] = 0;
  return 1;
}
