// Placeholder until scenery lands.
#include "loader/subsystems.h"

void TOKASceneryCleanupHook(int) {}
