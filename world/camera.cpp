// Camera control: one plugin at a time drives the simulator's camera.
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"
#include "toka/TOKACamera.h"

static int gIsControlled = 0;
static int gControlDuration = 0;
static TOKACameraControl_f gCurrentControlFunc = nullptr;
static int gCurrentControlPlugin = -1;
static void* gCameraControlRef = nullptr;

// Taking the camera needs no permission and tells the previous holder
// nothing: plugins that hand the camera back and forth rely on both.
TOKA_API void TOKAControlCamera(int howLong, TOKACameraControl_f callback, void* refcon) {
  TOKA_NOTE_CALL();
  gIsControlled = 1;
  gControlDuration = howLong;
  gCurrentControlFunc = callback;
  gCurrentControlPlugin = TOKAGetDispatchedPlugin();
  gCameraControlRef = refcon;
}

// Any plugin may give the camera back, and the holder is not told; the
// holder's ID is kept, which is harmless since nothing is called while the
// camera is not held.
TOKA_API void TOKADontControlCamera(void) {
  TOKA_NOTE_CALL();
  gIsControlled = 0;
}

TOKA_API int TOKAIsCameraBeingControlled(int* outHowLong) {
  TOKA_NOTE_CALL();
  if (gIsControlled && outHowLong) *outHowLong = gControlDuration;
  return gIsControlled;
}

TOKA_API void TOKAReadCameraPosition(TOKACameraPosition_t* outPosition) {
  TOKA_NOTE_CALL();
  gHostServices->ReadCameraPosition(&outPosition->x, &outPosition->y, &outPosition->z,
                                    &outPosition->pitch, &outPosition->heading,
                                    &outPosition->roll, &outPosition->zoom);
}

// Takes the camera away from its holder, telling the holder if it may still
// be called. Unless forced, only a camera taken until the view changes goes.
static void TOKAReleaseCameraInternal(bool force) {
  if (!gIsControlled) return;
  if (!force && gControlDuration != TOKA_ControlCameraUntilViewChanges) return;
  if (gCurrentControlFunc) {
    StDispatchCallback context(gCurrentControlPlugin);
    if (context()) gCurrentControlFunc(nullptr, 1, gCameraControlRef);
  }
  gIsControlled = 0;
  gCurrentControlPlugin = -1;
}

// The simulator's view changed.
void TOKAReleaseCamera() {
  TOKAReleaseCameraInternal(false);
}

int TOKAAdjustCamera(float* x, float* y, float* z, float* pitch, float* heading, float* roll,
                     float* zoom) {
  if (!gIsControlled) return 1;
  TOKACameraPosition_t position = {*x, *y, *z, *pitch, *heading, *roll, *zoom};
  int result;
  {
    StDispatchCallback context(gCurrentControlPlugin);
    if (!context()) {
      gIsControlled = 0;
      gCurrentControlPlugin = -1;
      result = 0;
    } else {
      // A holder without a callback cannot write the camera: it loses it as
      // if its callback had returned 0.
      result = gCurrentControlFunc ? gCurrentControlFunc(&position, 0, gCameraControlRef) : 0;
      // The holder gave the camera up itself, so it is not told again.
      if (result == 0) gIsControlled = 0;
    }
    if (result != 0) {
      *x = position.x;
      *y = position.y;
      *z = position.z;
      *pitch = position.pitch;
      *heading = position.heading;
      *roll = position.roll;
      *zoom = position.zoom;
    }
  }
  // Not normalised: plugins that return values other than 0 and 1 have
  // always had 1 minus their value passed on to the simulator.
  // Computed unsigned so that even the most negative value wraps instead of
  // overflowing.
  return (int)(1u - (unsigned)result);
}

void TOKACameraCleanupHook(int plugin) {
  if (plugin == gCurrentControlPlugin) TOKAReleaseCameraInternal(true);
}

void TOKACameraDisableHook(int plugin) {
  if (plugin == gCurrentControlPlugin) TOKAReleaseCameraInternal(true);
}

#ifdef TOKA_VALIDATOR
void TOKASurveyCamera(int plugin, TOKASurvey& out) {
  if (gIsControlled && gCurrentControlPlugin == plugin) ++out.owned[kSurveyCamera];
}
#endif
