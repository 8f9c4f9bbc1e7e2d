// Start-up, the hook entry points the simulator calls, and shutdown.
#include "loader/host_interface.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "loader/enabling.h"
#include "loader/survey.h"
#include "loader/loading.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"
#include "toka/TOKAData.h"
#include "toka/TOKAPlugins.h"

TOKAHostServices* gHostServices = nullptr;
char gDirSeparator[2] = "/";
static intptr_t gHostSelf = 0;

static void WriteBuildStamp() {
  char stamp[64];
  std::snprintf(stamp, sizeof stamp, "%s %s", __DATE__, __TIME__);
  if (TOKADataRef ref = TOKAFindDataRef("sim/version/toka_build_string"))
    TOKASetDatab(ref, stamp, 0, (int)std::strlen(stamp) + 1);
}

TOKA_API int TOKAInitializePlugins(const char* rootFolder, TOKAHostServices* services,
                                   intptr_t self) {
  TOKA_NOTE_CALL();
  gHostSelf = self;
  gHostServices = services;
  std::strcpy(gDirSeparator, "/");
  TOKAInitMenus();
  WriteBuildStamp();
  TOKAFindAndLoadPlugins(rootFolder);
  TOKAEnableAllPlugins();
  return 17;
}

TOKA_API void TOKAShutdownPlugins(void) {
  TOKA_NOTE_CALL();
  TOKADisableAllPlugins();
  TOKAUnloadPlugins();
}

// Simulator events reach the plugins as messages from the simulator itself.
static void Broadcast(int message, intptr_t param) {
  StDispatchCallback context(0);
  TOKASendMessageToPlugin(-1, message, (void*)param);
}

static void LoadUserAircraftPlugins() {
  char path[256] = {0}, name[256] = {0};
  gHostServices->GetNthAircraftModel(0, path, name);
  char* slash = std::strrchr(path, '/');
  if (!slash) return;
  *slash = 0;
  TOKAFindAndLoadAcfPlugins(path);
  TOKAEnableACFPlugins();
}

TOKA_API int TOKAEventHook(int event, float elapsed, int unused, intptr_t param) {
  TOKA_NOTE_CALL();
  switch ((unsigned)event) {
    case 0:
      TOKADoRepeatedButtons();
      return TOKADoFlightLoopProcessing(elapsed, 0);
    case 1:
      TOKAReleaseCamera();
      return 1;
    case 2:
      Broadcast(101, 0);
      return 1;
    case 3:
      Broadcast(102, param);
      if (param == 0) LoadUserAircraftPlugins();
      return 1;
    case 4:
      Broadcast(103, 0);
      return 1;
    case 6:
      Broadcast(104, 0);
      return 1;
    case 7:
      Broadcast(105, 0);
      return 1;
    case 8:
      Broadcast(106, param);
      if (param == 0) {
        TOKADisableACFPlugins();
        TOKAUnloadAcfPlugin();
      }
      return 1;
    case 9:
      TOKACommandRepeatHook();
      return 1;
    case 10:
      return TOKADoFlightLoopProcessing(elapsed, 10);
    case 11:
      Broadcast(107, 0);
      return 1;
    case 12:
      TOKAFindAndLoadSceneryPlugins((const char*)param);
      return 1;
    case 13:
      Broadcast(108, param);
      return 1;
    default:
      return 1;
  }
}

TOKA_API int TOKADoDrawingHook(int phaseCode, int reflection) {
  TOKA_NOTE_CALL();
  return TOKADisplayDoDrawingHook(phaseCode, reflection);
}

TOKA_API int TOKAKeyPressHook(char key, int flags, char virtualKey) {
  TOKA_NOTE_CALL();
  return TOKADisplayKeyPressHook(key, flags, virtualKey);
}

TOKA_API int TOKAMouseClickHook(int x, int y, int pressed) {
  TOKA_NOTE_CALL();
  // The host reports only down and up; drags are made by the library.
  return TOKADisplayMouseClickHook(x, y, pressed ? 1 : 3);
}

TOKA_API int TOKACursorHook(int x, int y) {
  TOKA_NOTE_CALL();
  return TOKADisplayCursorHook(x, y);
}

TOKA_API int TOKAScrollWheelHook(int x, int y, int wheel, int clicks) {
  TOKA_NOTE_CALL();
  return TOKADisplayScrollWheelHook(x, y, wheel, clicks);
}

TOKA_API int TOKAMenuHook(int hostItemID) {
  TOKA_NOTE_CALL();
  return TOKAHandleMenuItemPick(hostItemID);
}

TOKA_API int TOKACheckMenuHook(int hostMenuID, int index, int* outChecked) {
  TOKA_NOTE_CALL();
  return TOKAHandleMenuItemCheck(hostMenuID, index, outChecked);
}

TOKA_API int TOKAMenuItemEnabled(int hostMenuID, int index) {
  TOKA_NOTE_CALL();
  return TOKAHandleMenuItemEnable(hostMenuID, index);
}

TOKA_API int TOKACameraHook(float* x, float* y, float* z, float* pitch, float* heading,
                            float* roll, float* zoom) {
  TOKA_NOTE_CALL();
  return TOKAAdjustCamera(x, y, z, pitch, heading, roll, zoom);
}

TOKA_API int TOKACommandHook(TOKACommandRef command, int isBegin, int isEnd, int isBefore) {
  TOKA_NOTE_CALL();
  return TOKADispatchCommandHook(command, isBegin, isEnd, isBefore);
}

TOKA_API int TOKAGetNumberPlanesToHandle(int count, int flag) {
  TOKA_NOTE_CALL();
  return TOKAHandleGetNumberPlanesToHandle(count, flag);
}

TOKA_API int TOKAUpdatePlaneNameAndPath(int index, char* outName, char* outPath) {
  TOKA_NOTE_CALL();
  return TOKAHandleUpdatePlaneNameAndPath(index, outName, outPath);
}
