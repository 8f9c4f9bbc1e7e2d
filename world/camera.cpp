// Placeholder until camera control lands.
#include "loader/subsystems.h"

void TOKAReleaseCamera() {}
int TOKAAdjustCamera(float*, float*, float*, float*, float*, float*, float*) { return 1; }
void TOKACameraCleanupHook(int) {}
void TOKACameraDisableHook(int) {}
