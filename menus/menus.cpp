// Placeholder until menus land.
#include "loader/subsystems.h"

void TOKAInitMenus() {}
void TOKAMenuCleanupHook(int) {}
int TOKAHandleMenuItemPick(int) { return 1; }
int TOKAHandleMenuItemEnable(int, int) { return 1; }
int TOKAHandleMenuItemCheck(int, int, int*) { return 1; }
