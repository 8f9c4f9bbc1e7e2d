// The user's aircraft and the other aircraft.
#include <string>

#include "loader/enabling.h"
#include "loader/host_interface.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"
#include "toka/TOKAPlanes.h"

TOKA_API void TOKAGetNthAircraftModel(int index, char* outFileName, char* outPath) {
  gHostServices->GetNthAircraftModel(index, outPath, outFileName);
  if (TOKANeedPathConvert()) {
    std::string path(outPath);
    TOKAUTF8ToOld(path);
    strcpytrunc(outPath, path, 512);
  }
}

// Placeholders until aircraft control lands.
int TOKAHandleGetNumberPlanesToHandle(int count, int) { return count; }
int TOKAHandleUpdatePlaneNameAndPath(int, char*, char*) { return 0; }
void TOKAPlaneDisableHook(int) {}
void TOKAPlaneCleanupHook(int) {}
