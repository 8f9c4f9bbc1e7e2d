// The simulator's own datarefs, published through the library.
#ifndef TOKA_HOST_DATAREFS_H
#define TOKA_HOST_DATAREFS_H

#include "host/library.h"

namespace toka_host {

// Registers the host's datarefs through the library's registration function.
// Returns how many were registered.
int RegisterHostDataRefs(RegisterDataAccessor_f registerAccessor);
extern char gBuildString[256];

}  // namespace toka_host

#endif
