// Probe: once a second, asks the simulator where the terrain is under the
// user's aircraft and publishes the aircraft's height above it as the
// dataref "toka/examples/probe/height_agl" (metres).
//
// What it shows a plugin author:
//   - a terrain probe (TOKACreateProbe, TOKAProbeTerrainXYZ) and its result;
//   - doing work every so often from a flight loop;
//   - publishing a computed value as a read-only dataref.
#include <cstring>

#include "toka/TOKA.h"

namespace {

TOKAProbeRef gProbe = nullptr;
TOKADataRef gHeightRef = nullptr;
float gHeight = 0;      // the last height measured: what the dataref serves
bool gMissed = false;   // whether the last probe found no terrain
bool gToldNoPosition = false;

// The aircraft's position in the simulator's local coordinates (metres,
// y up).
TOKADataRef gX = nullptr;
TOKADataRef gY = nullptr;
TOKADataRef gZ = nullptr;

// A dataref serves the types its owner chose: ask rather than assume.
double ReadNumber(TOKADataRef ref) {
  TOKADataTypeID types = TOKAGetDataRefTypes(ref);
  if (types & DataTypeDouble) return TOKAGetDatad(ref);
  if (types & DataTypeFloat) return TOKAGetDataf(ref);
  if (types & DataTypeInt) return TOKAGetDatai(ref);
  return 0;
}

float ReadHeight(void* refcon) { return gHeight; }

bool FindAircraftPosition() {
  if (!gX) gX = TOKAFindDataRef("sim/flightmodel/position/local_x");
  if (!gY) gY = TOKAFindDataRef("sim/flightmodel/position/local_y");
  if (!gZ) gZ = TOKAFindDataRef("sim/flightmodel/position/local_z");
  return gX && gY && gZ;
}

float ProbeUnderAircraft(float sinceLastCall, float elapsedTime, int counter, void* refcon) {
  if (!FindAircraftPosition()) {
    if (!gToldNoPosition) TOKADebugString("probe: the simulator publishes no aircraft position\n");
    gToldNoPosition = true;
    return 1.0f;
  }
  float x = (float)ReadNumber(gX);
  float y = (float)ReadNumber(gY);
  float z = (float)ReadNumber(gZ);

  // The caller sets the size field; the simulator fills in the rest. A
  // straight-down probe reports the terrain's location below (x, y, z).
  TOKAProbeInfo_t info;
  std::memset(&info, 0, sizeof info);
  info.structSize = sizeof info;
  int result = TOKAProbeTerrainXYZ(gProbe, x, y, z, &info);
  if (result == TOKA_ProbeHitTerrain) {
    gHeight = y - info.locationY;
    gMissed = false;
  } else if (!gMissed) {
    // Over the edge of the loaded scenery, say. Keep serving the last
    // height and say so once, not every second.
    TOKADebugString("probe: no terrain below the aircraft\n");
    gMissed = true;
  }
  return 1.0f;  // again in a second
}

}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  std::strcpy(outName, "Probe");
  std::strcpy(outSignature, "toka.examples.probe");
  std::strcpy(outDescription, "Publishes the user's aircraft's height above the terrain.");
  // One probe serves every query: create it once rather than each second.
  gProbe = TOKACreateProbe(TOKA_ProbeY);
  gHeightRef = TOKARegisterDataAccessor("toka/examples/probe/height_agl", DataTypeFloat, 0,
                                        nullptr, nullptr, ReadHeight, nullptr, nullptr, nullptr,
                                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                        nullptr, nullptr);
  // The loop belongs to the plugin; it runs while the plugin is enabled.
  TOKARegisterFlightLoopCallback(ProbeUnderAircraft, 1.0f, nullptr);
  return 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  TOKASetFlightLoopCallbackInterval(ProbeUnderAircraft, 1.0f, 1, nullptr);
  return 1;
}

// A disabled plugin's loop is not called, but it is unscheduled all the
// same: nothing of a disabled plugin is left running.
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {
  TOKASetFlightLoopCallbackInterval(ProbeUnderAircraft, 0, 1, nullptr);
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {
  TOKAUnregisterFlightLoopCallback(ProbeUnderAircraft, nullptr);
  TOKAUnregisterDataAccessor(gHeightRef);
  TOKADestroyProbe(gProbe);
}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {}
