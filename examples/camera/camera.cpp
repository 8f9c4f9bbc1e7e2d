// Camera: a hot key takes the simulator's camera and flies it in a circle
// around the user's aircraft; the same key gives it back.
//
// What it shows a plugin author:
//   - taking and giving back the camera (TOKAControlCamera,
//     TOKADontControlCamera) and noticing when the simulator takes it away;
//   - writing the seven camera values on every camera update;
//   - reading the simulator's datarefs whatever type they are served as.
#include <cmath>
#include <cstring>

#include "toka/TOKA.h"

namespace {

// 0x77 is the virtual key "F8"; flags 0: without modifiers.
const char kKey = 0x77;
const int kKeyFlags = 0;

const float kRadius = 50.0f;          // metres from the aircraft
const float kHeight = 15.0f;          // metres above it
const float kDegreesPerSecond = 30.0f;
const float kPi = 3.14159265f;

TOKAHotKeyID gHotKey = nullptr;
bool gHolding = false;  // whether we believe the camera is ours
float gTakenAt = 0;     // elapsed time when we took it: the orbit starts there

// The aircraft's position in the simulator's local coordinates (metres; y
// up, north towards -z). Null when the simulator does not publish them.
TOKADataRef gX = nullptr;
TOKADataRef gY = nullptr;
TOKADataRef gZ = nullptr;

// A dataref serves the types its owner chose: ask rather than assume.
double ReadNumber(TOKADataRef ref) {
  if (!ref) return 0;
  TOKADataTypeID types = TOKAGetDataRefTypes(ref);
  if (types & DataTypeDouble) return TOKAGetDatad(ref);
  if (types & DataTypeFloat) return TOKAGetDataf(ref);
  if (types & DataTypeInt) return TOKAGetDatai(ref);
  return 0;
}

// Called on every camera update while we hold the camera. Return 1 to keep
// it (the values we wrote are used), 0 to give it up. When the camera is
// taken from us we are called once more, with no position, to say so.
int Orbit(TOKACameraPosition_t* camera, int isLosingControl, void* refcon) {
  if (isLosingControl || !camera) {
    gHolding = false;
    TOKADebugString("camera: the camera was taken back\n");
    return 0;
  }
  float degrees = std::fmod((TOKAGetElapsedTime() - gTakenAt) * kDegreesPerSecond, 360.0f);
  float radians = degrees * kPi / 180.0f;
  // On the circle at `degrees` from north, looking back at the aircraft.
  camera->x = (float)ReadNumber(gX) + kRadius * std::sin(radians);
  camera->y = (float)ReadNumber(gY) + kHeight;
  camera->z = (float)ReadNumber(gZ) - kRadius * std::cos(radians);
  camera->heading = std::fmod(degrees + 180.0f, 360.0f);
  camera->pitch = -std::atan2(kHeight, kRadius) * 180.0f / kPi;
  camera->roll = 0;
  camera->zoom = 1;
  return 1;
}

void Toggle(void* refcon) {
  // Another plugin may give the camera back to the simulator without our
  // being told; then the key takes it again rather than doing nothing.
  if (gHolding && TOKAIsCameraBeingControlled(nullptr)) {
    // Giving the camera back does not call Orbit: forget it ourselves.
    TOKADontControlCamera();
    gHolding = false;
    TOKADebugString("camera: camera given back\n");
    return;
  }
  // Look the datarefs up each time: an aircraft may have been loaded since.
  gX = TOKAFindDataRef("sim/flightmodel/position/local_x");
  gY = TOKAFindDataRef("sim/flightmodel/position/local_y");
  gZ = TOKAFindDataRef("sim/flightmodel/position/local_z");
  if (!gX || !gY || !gZ) {
    gX = gY = gZ = nullptr;
    TOKADebugString("camera: no aircraft position, orbiting the origin\n");
  } else {
    TOKADebugString("camera: orbiting the aircraft\n");
  }
  gTakenAt = TOKAGetElapsedTime();
  gHolding = true;
  // Until the view changes: when the user picks another view, the
  // simulator takes the camera back and Orbit hears of it.
  TOKAControlCamera(TOKA_ControlCameraUntilViewChanges, Orbit, nullptr);
}

}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  std::strcpy(outName, "Camera");
  std::strcpy(outSignature, "toka.examples.camera");
  std::strcpy(outDescription, "F8 orbits the camera around the user's aircraft.");
  return 1;
}

// The hot key is there while the plugin is enabled.
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  gHotKey = TOKARegisterHotKey(kKey, kKeyFlags, "Camera: orbit the aircraft", Toggle, nullptr);
  return 1;
}

// Disabling a plugin takes the camera from it (Orbit is told) before this
// runs.
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {
  TOKAUnregisterHotKey(gHotKey);
  gHotKey = nullptr;
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {
  // Another plugin may have taken the camera without our knowing; only give
  // it back if it is still ours as far as we can tell.
  if (gHolding && TOKAIsCameraBeingControlled(nullptr)) TOKADontControlCamera();
  gHolding = false;
}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {}
