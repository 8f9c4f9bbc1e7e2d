// Heading hold: a small autopilot. Engaged from its menu item, it flies the
// user's aircraft to a heading given by a dataref it publishes, banking into
// the turn and rolling out level, and keeps the altitude it was engaged at.
// It flies anything the host's world flies; it is meant for a run of
// toka-host in FlightGear (--world flightgear), where the aircraft answers
// its controls.
//
// What it shows a plugin author:
//   - reading the simulator's flight state and writing its controls through
//     datarefs, from a flight loop (TOKARegisterFlightLoopCallback);
//   - publishing a writable dataref that other plugins, or a scenario, set;
//   - a menu item with a check mark for a mode that is on or off.
#include <cmath>
#include <cstring>

#include "toka/TOKA.h"

namespace {

const char* const kTargetName = "toka/examples/heading_hold/target_deg";

// The loop runs 20 times a second of the simulator's time: the controls
// need no more, and FlightGear's values change about that often.
constexpr float kInterval = 0.05f;
// The turn: a bank of 1 degree per degree of heading still to go, at most
// 20 degrees; the ailerons turn the bank error into a roll rate.
constexpr float kBankPerDegree = 1.0f, kMaxBank = 20.0f, kAileronPerDegree = 0.03f;
// The height: the elevator holds the vertical speed at 0, proportionally
// and through a trim that builds up against a steady climb or sink.
constexpr float kElevatorPerMetreSecond = 0.04f, kTrimPerMetre = 0.01f, kMaxTrim = 0.4f;

struct Ref {
  const char* name;
  TOKADataRef ref;
};
enum { kHeading, kRoll, kVerticalSpeed, kYokeRoll, kYokePitch, kRefCount };
Ref gRefs[kRefCount] = {
    {"sim/flightmodel/position/heading", nullptr},
    {"sim/flightmodel/position/roll", nullptr},
    {"sim/flightmodel/position/vertical_speed", nullptr},
    {"sim/cockpit/controls/yoke_roll", nullptr},
    {"sim/cockpit/controls/yoke_pitch", nullptr},
};

TOKADataRef gTarget = nullptr;
TOKAMenuID gMenu = nullptr;
int gEngageItem = 0;
bool gEngaged = false;
float gTargetHeading = 0;
float gTrim = 0;

float Clamp(float value, float limit) { return std::fmax(-limit, std::fmin(limit, value)); }

float ReadTarget(void* refcon) { return gTargetHeading; }
void WriteTarget(void* refcon, float value) {
  gTargetHeading = std::fmod(std::fmod(value, 360.0f) + 360.0f, 360.0f);
}

float Fly(float sinceLastCall, float elapsedTime, int counter, void* refcon) {
  float heading = TOKAGetDataf(gRefs[kHeading].ref);
  float roll = TOKAGetDataf(gRefs[kRoll].ref);
  float climb = TOKAGetDataf(gRefs[kVerticalSpeed].ref);
  // The shorter way round: -180 to 180 degrees, right turns positive.
  float togo = std::fmod(gTargetHeading - heading + 540.0f, 360.0f) - 180.0f;
  float bank = Clamp(kBankPerDegree * togo, kMaxBank);
  TOKASetDataf(gRefs[kYokeRoll].ref, Clamp(kAileronPerDegree * (bank - roll), 1));
  // Pulling the yoke (negative) raises the nose.
  gTrim = Clamp(gTrim + kTrimPerMetre * climb * sinceLastCall, kMaxTrim);
  TOKASetDataf(gRefs[kYokePitch].ref, Clamp(gTrim + kElevatorPerMetreSecond * climb, 1));
  return kInterval;
}

void Engage(bool engage) {
  if (engage == gEngaged) return;
  gEngaged = engage;
  TOKACheckMenuItem(gMenu, gEngageItem, engage ? TOKA_MENU_CHECKED : TOKA_MENU_UNCHECKED);
  if (engage) {
    gTrim = TOKAGetDataf(gRefs[kYokePitch].ref);
    TOKARegisterFlightLoopCallback(Fly, kInterval, nullptr);
    TOKA_dprintf("heading-hold: engaged, heading %.0f\n", gTargetHeading);
  } else {
    TOKAUnregisterFlightLoopCallback(Fly, nullptr);
    // The controls go back to the pilot centred.
    TOKASetDataf(gRefs[kYokeRoll].ref, 0);
    TOKASetDataf(gRefs[kYokePitch].ref, 0);
    TOKADebugString("heading-hold: disengaged\n");
  }
}

void HandleMenu(void* menuRef, void* itemRef) { Engage(!gEngaged); }

}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  std::strcpy(outName, "Heading hold");
  std::strcpy(outSignature, "toka.examples.heading-hold");
  std::strcpy(outDescription, "Flies the aircraft to a heading and holds its altitude.");
  gTarget = TOKARegisterDataAccessor(kTargetName, DataTypeFloat, 1, nullptr, nullptr, ReadTarget,
                                     WriteTarget, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     nullptr, nullptr, nullptr, nullptr, nullptr);
  gMenu = TOKACreateMenu("Heading hold", nullptr, 0, HandleMenu, nullptr);
  gEngageItem = TOKAAppendMenuItem(gMenu, "Engage", nullptr, 1);
  TOKACheckMenuItem(gMenu, gEngageItem, TOKA_MENU_UNCHECKED);
  return 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  // The simulator's datarefs exist before any plugin starts.
  for (Ref& ref : gRefs) ref.ref = TOKAFindDataRef(ref.name);
  // Until someone asks for another, the heading flown now.
  gTargetHeading = TOKAGetDataf(gRefs[kHeading].ref);
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) { Engage(false); }

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {
  TOKADestroyMenu(gMenu);
  TOKAUnregisterDataAccessor(gTarget);
  gMenu = gTarget = nullptr;
}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {}
