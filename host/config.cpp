// The configuration in force and the world's clock; the run sets them
// (ResetWorld) and advances the clock frame by frame.
#include "host/config.h"

namespace toka_host {

HostConfig gConfig;
int gFrame = 0;
double gRunningTime = 0;
double gFlightTime = 0;
bool gPaused = false;
bool gQuitRequested = false;
double gSecondsBehind = 0;

}  // namespace toka_host
