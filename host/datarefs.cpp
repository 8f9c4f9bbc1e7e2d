// The simulator's own datarefs: the world's state published through the
// library, registered as the simulator (plugin 0) before any plugin loads.
#include "host/datarefs.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "host/config.h"
#include "host/flightgear/flightgear.h"
#include "host/world/aircraft.h"
#include "host/world/world.h"

namespace toka_host {

char gBuildString[256];

namespace {

constexpr int kInt = 1, kFloat = 2, kDouble = 4, kData = 32;

enum Field {
  kRunningTime,
  kFlightTime,
  kFramePeriod,
  kPaused,
  kLatitude,
  kLongitude,
  kElevation,
  kHeading,
  kGroundSpeed,
  kTrueAirspeed,
  kNav1Frequency,
  kLocalX,
  kLocalY,
  kLocalZ,
  kPitch,
  kRoll,
  kIndicatedAirspeed,
  kVerticalSpeed,
  kEngineRpm,
  kThrottle,
  kYokePitch,
  kYokeRoll,
};

// The user's position in the local frame, one axis at a time.
double LocalAxis(const Aircraft& user, Field axis) {
  double local[3];
  WorldToLocalPoint(user.latitude, user.longitude, user.elevation, local[0], local[1], local[2]);
  return local[axis - kLocalX];
}

Field FieldOf(void* refcon) { return (Field)(intptr_t)refcon; }

double ReadDouble(void* refcon) {
  const Aircraft& user = gAircraft[0];
  switch (FieldOf(refcon)) {
    case kRunningTime: return gRunningTime;
    case kFlightTime: return gFlightTime;
    case kFramePeriod: return gConfig.step;
    case kLatitude: return user.latitude;
    case kLongitude: return user.longitude;
    case kElevation: return user.elevation;
    case kHeading: return user.heading;
    case kGroundSpeed: return user.groundSpeed;
    case kTrueAirspeed: return user.trueAirspeed;
    case kPitch: return user.pitch;
    case kRoll: return user.roll;
    case kIndicatedAirspeed: return user.indicatedAirspeed;
    case kVerticalSpeed: return user.verticalSpeed;
    case kEngineRpm: return user.engineRpm;
    case kThrottle: return user.throttle;
    case kYokePitch: return user.yokePitch;
    case kYokeRoll: return user.yokeRoll;
    case kLocalX:
    case kLocalY:
    case kLocalZ: return LocalAxis(user, FieldOf(refcon));
    default: return 0;
  }
}

float ReadFloat(void* refcon) { return (float)ReadDouble(refcon); }

// In the flightgear world a write goes on to FlightGear too.
void WriteDouble(void* refcon, double value) {
  Aircraft& user = gAircraft[0];
  switch (FieldOf(refcon)) {
    case kLatitude:
      user.latitude = std::max(-89.9, std::min(89.9, value));
      WriteToFlightGear(kFgLatitude, user.latitude);
      break;
    case kLongitude: WriteToFlightGear(kFgLongitude, user.longitude = value); break;
    case kElevation: WriteToFlightGear(kFgAltitude, user.elevation = value); break;
    case kHeading: WriteToFlightGear(kFgHeading, user.heading = (float)value); break;
    case kThrottle:
      WriteToFlightGear(kFgThrottle, user.throttle = (float)std::max(0.0, std::min(1.0, value)));
      break;
    case kYokePitch:
      WriteToFlightGear(kFgYokePitch, user.yokePitch = (float)std::max(-1.0, std::min(1.0, value)));
      break;
    case kYokeRoll:
      WriteToFlightGear(kFgYokeRoll, user.yokeRoll = (float)std::max(-1.0, std::min(1.0, value)));
      break;
    default: break;
  }
}

void WriteFloat(void* refcon, float value) { WriteDouble(refcon, value); }

int ReadInt(void* refcon) {
  switch (FieldOf(refcon)) {
    case kPaused: return gPaused ? 1 : 0;
    case kNav1Frequency: return gNav1Frequency;
    default: return 0;
  }
}

void WriteInt(void* refcon, int value) {
  switch (FieldOf(refcon)) {
    case kPaused:
      if (gPaused != (value != 0)) {
        gPaused = value != 0;
        QueueEvent(13, gPaused ? 1 : 0);
        WriteToFlightGear(kFgFrozen, gPaused ? 1 : 0);
      }
      break;
    case kNav1Frequency: gNav1Frequency = value; break;
    default: break;
  }
}

// "ai_loc[i]" set to 1 means a plugin flies aircraft i: the host stops
// moving it. The refcon is the aircraft index.
int ReadAiDisabled(void* refcon) {
  size_t index = (size_t)(intptr_t)refcon;
  return index < gAircraft.size() && gAircraft[index].aiDisabled ? 1 : 0;
}

void WriteAiDisabled(void* refcon, int value) {
  size_t index = (size_t)(intptr_t)refcon;
  if (index < gAircraft.size()) gAircraft[index].aiDisabled = value != 0;
}

// Bytes of the build string, the way every byte dataref answers: a null
// buffer asks for the size.
int ReadBuildString(void* refcon, void* values, int offset, int max) {
  if (!values) return (int)sizeof gBuildString;
  if (offset < 0 || offset >= (int)sizeof gBuildString || max <= 0) return 0;
  int count = std::min(max, (int)sizeof gBuildString - offset);
  std::memcpy(values, gBuildString + offset, (size_t)count);
  return count;
}

void WriteBuildString(void* refcon, void* values, int offset, int count) {
  if (!values || offset < 0 || offset >= (int)sizeof gBuildString || count <= 0) return;
  count = std::min(count, (int)sizeof gBuildString - offset);
  std::memcpy(gBuildString + offset, values, (size_t)count);
  gBuildString[sizeof gBuildString - 1] = 0;
}

struct NumberDataRef {
  const char* name;
  int types;
  int writable;
  Field field;
};

const NumberDataRef kNumberDataRefs[] = {
    {"sim/time/total_running_time_sec", kFloat | kDouble, 0, kRunningTime},
    {"sim/time/total_flight_time_sec", kFloat | kDouble, 0, kFlightTime},
    {"sim/operation/misc/frame_rate_period", kFloat | kDouble, 0, kFramePeriod},
    {"sim/time/paused", kInt, 1, kPaused},
    {"sim/flightmodel/position/latitude", kFloat | kDouble, 1, kLatitude},
    {"sim/flightmodel/position/longitude", kFloat | kDouble, 1, kLongitude},
    {"sim/flightmodel/position/elevation", kFloat | kDouble, 1, kElevation},
    {"sim/flightmodel/position/heading", kFloat | kDouble, 1, kHeading},
    {"sim/flightmodel/position/groundspeed", kFloat | kDouble, 0, kGroundSpeed},
    {"sim/flightmodel/position/true_airspeed", kFloat | kDouble, 0, kTrueAirspeed},
    {"sim/cockpit/radios/nav1_freq", kInt, 1, kNav1Frequency},
    {"sim/flightmodel/position/local_x", kFloat | kDouble, 0, kLocalX},
    {"sim/flightmodel/position/local_y", kFloat | kDouble, 0, kLocalY},
    {"sim/flightmodel/position/local_z", kFloat | kDouble, 0, kLocalZ},
    {"sim/flightmodel/position/pitch", kFloat | kDouble, 0, kPitch},
    {"sim/flightmodel/position/roll", kFloat | kDouble, 0, kRoll},
    {"sim/flightmodel/position/indicated_airspeed", kFloat | kDouble, 0, kIndicatedAirspeed},
    {"sim/flightmodel/position/vertical_speed", kFloat | kDouble, 0, kVerticalSpeed},
    {"sim/flightmodel/engine/rpm", kFloat | kDouble, 0, kEngineRpm},
    {"sim/cockpit/controls/throttle", kFloat | kDouble, 1, kThrottle},
    {"sim/cockpit/controls/yoke_pitch", kFloat | kDouble, 1, kYokePitch},
    {"sim/cockpit/controls/yoke_roll", kFloat | kDouble, 1, kYokeRoll},
};

}  // namespace

int RegisterHostDataRefs(RegisterDataAccessor_f registerAccessor) {
  if (!registerAccessor) return 0;
  int count = 0;
  // Writable, so that the library can stamp its build into it at start-up.
  registerAccessor("sim/version/toka_build_string", kData, 1, nullptr, nullptr, nullptr, nullptr,
                   nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, ReadBuildString,
                   WriteBuildString, nullptr, nullptr);
  ++count;
  for (const NumberDataRef& ref : kNumberDataRefs) {
    void* refcon = (void*)(intptr_t)ref.field;
    bool isInt = ref.types & kInt, writes = ref.writable != 0;
    registerAccessor(ref.name, ref.types, ref.writable, isInt ? ReadInt : nullptr,
                     isInt && writes ? WriteInt : nullptr, isInt ? nullptr : ReadFloat,
                     !isInt && writes ? WriteFloat : nullptr, isInt ? nullptr : ReadDouble,
                     !isInt && writes ? WriteDouble : nullptr, nullptr, nullptr, nullptr, nullptr,
                     nullptr, nullptr, refcon, refcon);
    ++count;
  }
  for (size_t i = 1; i < gAircraft.size(); ++i) {
    char name[64];
    std::snprintf(name, sizeof name, "sim/private/net_disables/ai_loc[%d]", (int)i);
    void* refcon = (void*)(intptr_t)i;
    registerAccessor(name, kInt, 1, ReadAiDisabled, WriteAiDisabled, nullptr, nullptr, nullptr,
                     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, refcon, refcon);
    ++count;
  }
  return count;
}

}  // namespace toka_host
