// The entry points by which the loader and the host hooks reach each
// subsystem: its handlers for host hooks, and its per-plugin disable and
// clean-up steps.
#ifndef TOKA_LOADER_SUBSYSTEMS_H
#define TOKA_LOADER_SUBSYSTEMS_H

#include "toka/TOKADefs.h"

// Commands (utilities/commands.cpp).
void TOKACommandCleanupHook(int plugin);
int TOKADispatchCommandHook(TOKACommandRef command, int isBegin, int isEnd, int isBefore);
void TOKACommandRepeatHook();
void TOKADoRepeatedButtons();

// Display and input (display/).
void TOKADisplayCleanupHook(int plugin);
void TOKADisplayDisableHook(int plugin);
int TOKADisplayKeyPressHook(char key, int flags, char virtualKey);
int TOKADisplayMouseClickHook(int x, int y, int status);
int TOKADisplayCursorHook(int x, int y);
int TOKADisplayScrollWheelHook(int x, int y, int wheel, int clicks);
int TOKADisplayDoDrawingHook(int phaseCode, int reflection);

// Flight loops (processing/).
int TOKADoFlightLoopProcessing(float elapsed, int phase);
void TOKAProcessingCleanupHook(int plugin);

// Camera (world/camera.cpp).
void TOKAReleaseCamera();
int TOKAAdjustCamera(float* x, float* y, float* z, float* pitch, float* heading, float* roll,
                     float* zoom);
void TOKACameraCleanupHook(int plugin);
void TOKACameraDisableHook(int plugin);

// Menus (menus/).
void TOKAInitMenus();
void TOKAMenuCleanupHook(int plugin);
int TOKAHandleMenuItemPick(int hostItemID);
int TOKAHandleMenuItemEnable(int hostMenuID, int index);
int TOKAHandleMenuItemCheck(int hostMenuID, int index, int* outChecked);

// Other aircraft (world/planes.cpp).
int TOKAHandleGetNumberPlanesToHandle(int count, int flag);
int TOKAHandleUpdatePlaneNameAndPath(int index, char* outName, char* outPath);
void TOKAPlaneDisableHook(int plugin);
void TOKAPlaneCleanupHook(int plugin);

// Data access (data/).
void TOKADataRefsCleanupHook(int plugin);

// Scenery (world/scenery.cpp).
void TOKASceneryCleanupHook(int plugin);

#endif
