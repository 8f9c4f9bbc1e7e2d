// Placeholder until the flight loop scheduler lands.
#include "loader/loading.h"
#include "loader/subsystems.h"

int TOKADoFlightLoopProcessing(float, int) {
  if (gReloadScheduled) TOKAReloadPluginsInternal();
  return 1;
}
void TOKAProcessingCleanupHook(int) {}
