// Placeholder until windows, input and drawing land.
#include "loader/subsystems.h"

void TOKADisplayCleanupHook(int) {}
void TOKADisplayDisableHook(int) {}
int TOKADisplayKeyPressHook(char, int, char) { return 1; }
int TOKADisplayMouseClickHook(int, int, int) { return 1; }
int TOKADisplayCursorHook(int, int) { return 0; }
int TOKADisplayScrollWheelHook(int, int, int, int) { return 1; }
int TOKADisplayDoDrawingHook(int, int) { return 1; }
