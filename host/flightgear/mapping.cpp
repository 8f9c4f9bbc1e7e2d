// The host's datarefs in FlightGear. The stream's protocol file (toka.xml
// beside this file) lists the same properties in the same order; a test
// holds the two together.
#include "host/flightgear/mapping.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace toka_host {

namespace {

constexpr double kFeet = 0.3048;
constexpr double kKnots = 1852.0 / 3600.0;

const FlightGearValue kMapping[kFgFieldCount] = {
    {"sim/time/total_running_time_sec", "/sim/time/elapsed-sec", 1, false},
    {"sim/time/paused", "/sim/freeze/master", 1, true},
    {"sim/flightmodel/position/latitude", "/position/latitude-deg", 1, true},
    {"sim/flightmodel/position/longitude", "/position/longitude-deg", 1, true},
    {"sim/flightmodel/position/elevation", "/position/altitude-ft", kFeet, true},
    {"sim/flightmodel/position/heading", "/orientation/heading-deg", 1, true},
    {"sim/flightmodel/position/pitch", "/orientation/pitch-deg", 1, false},
    {"sim/flightmodel/position/roll", "/orientation/roll-deg", 1, false},
    {"sim/flightmodel/position/groundspeed", "/velocities/groundspeed-kt", kKnots, false},
    {"sim/flightmodel/position/true_airspeed", "/velocities/airspeed-kt", kKnots, false},
    {"sim/flightmodel/position/indicated_airspeed",
     "/instrumentation/airspeed-indicator/indicated-speed-kt", kKnots, false},
    {"sim/flightmodel/position/vertical_speed", "/velocities/vertical-speed-fps", kFeet, false},
    {"sim/flightmodel/engine/rpm", "/engines/engine/rpm", 1, false},
    {"", "/position/ground-elev-m", 1, false},  // the ground under the aircraft, for probes
    {"sim/cockpit/controls/throttle", "/controls/engines/engine/throttle", 1, true},
    {"sim/cockpit/controls/yoke_pitch", "/controls/flight/elevator", 1, true},
    {"sim/cockpit/controls/yoke_roll", "/controls/flight/aileron", 1, true},
};

}  // namespace

const FlightGearValue& FlightGearMapping(FlightGearField field) { return kMapping[field]; }

bool ParseFlightGearLine(const std::string& line, double values[kFgFieldCount]) {
  const char* at = line.c_str();
  for (int i = 0; i < kFgFieldCount; ++i) {
    char* end = nullptr;
    errno = 0;
    double value = std::strtod(at, &end);
    if (end == at || errno || !std::isfinite(value)) return false;
    bool last = i == kFgFieldCount - 1;
    if (last ? (*end != '\n' && *end != 0) : *end != '\t') return false;
    values[i] = value * kMapping[i].factor;
    at = end + 1;
  }
  return true;
}

std::string FlightGearPropertyText(FlightGearField field, double value) {
  if (field == kFgFrozen) return value != 0 ? "true" : "false";
  char text[64];
  std::snprintf(text, sizeof text, "%.10g", value / kMapping[field].factor);
  return text;
}

}  // namespace toka_host
