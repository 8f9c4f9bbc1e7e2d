// What the host's datarefs are in FlightGear: one table, the one the README
// shows, from which the stream's protocol file and every write are made.
#ifndef TOKA_HOST_FLIGHTGEAR_MAPPING_H
#define TOKA_HOST_FLIGHTGEAR_MAPPING_H

#include <string>

namespace toka_host {

// The values of FlightGear's world, in the order of the stream's fields.
enum FlightGearField {
  kFgElapsed,
  kFgFrozen,
  kFgLatitude,
  kFgLongitude,
  kFgAltitude,
  kFgHeading,
  kFgPitch,
  kFgRoll,
  kFgGroundSpeed,
  kFgTrueAirspeed,
  kFgIndicatedAirspeed,
  kFgVerticalSpeed,
  kFgEngineRpm,
  kFgGroundElevation,
  kFgThrottle,
  kFgYokePitch,
  kFgYokeRoll,
  kFgFieldCount
};

struct FlightGearValue {
  const char* dataref;   // the host's dataref; empty for a value the host uses itself
  const char* property;  // FlightGear's property
  double factor;         // the host's value is the property's times this
  bool writable;         // the host's dataref is writable, and writes go to FlightGear
};

const FlightGearValue& FlightGearMapping(FlightGearField field);

// One line of the stream, "v0\tv1\t...\n", into the host's units. False when
// the line does not have a number for every field.
bool ParseFlightGearLine(const std::string& line, double values[kFgFieldCount]);
// The text a property server's "set" sends for a host value of a field.
std::string FlightGearPropertyText(FlightGearField field, double value);

}  // namespace toka_host

#endif
