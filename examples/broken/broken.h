// What every deliberately broken plugin shares: entry points that do their
// part right, so that each plugin breaks in one way only.
#ifndef TOKA_EXAMPLES_BROKEN_H
#define TOKA_EXAMPLES_BROKEN_H

#include <cstring>

#include "toka/TOKA.h"

inline int StartAs(const char* name, const char* signature, char* outName, char* outSignature,
                   char* outDescription) {
  std::strcpy(outName, name);
  std::strcpy(outSignature, signature);
  std::strcpy(outDescription, "A deliberately broken plugin, for toka-validate.");
  return 1;
}

#endif
