// Placeholder until commands land.
#include "loader/subsystems.h"

void TOKACommandCleanupHook(int) {}
int TOKADispatchCommandHook(TOKACommandRef, int, int, int) { return 1; }
void TOKACommandRepeatHook() {}
void TOKADoRepeatedButtons() {}
