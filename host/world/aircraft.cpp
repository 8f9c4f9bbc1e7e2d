// The user's aircraft and the traffic around it, the airports they start
// from, and the camera that follows the user: services 15, 17 to 20 and 34.
#include "host/world/aircraft.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>

#include "host/config.h"
#include "host/flightgear/flightgear.h"
#include "host/library.h"
#include "host/output.h"
#include "host/services.h"
#include "host/system.h"
#include "host/world/world.h"

namespace toka_host {

std::vector<Aircraft> gAircraft;
int gNav1Frequency = 11420;
float gCamera[7] = {0, 0, 0, 0, 0, 0, 1};

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kMeanRadius = 6371008.8;

// The airports of the small world. Elevations are what the charts give; the
// terrain itself is flat at the configured elevation.
const Airport kAirports[] = {
    {"KSEA", "Seattle Tacoma Intl", 47.4490, -122.3093, 131, 164},
    {"KBFI", "Boeing Field King Co Intl", 47.5300, -122.3020, 6, 134},
    {"KPAE", "Snohomish Co Paine Fld", 47.9063, -122.2816, 185, 160},
    {"KOLM", "Olympia Regional", 46.9694, -122.9025, 63, 170},
    {"CYVR", "Vancouver Intl", 49.1939, -123.1844, 4, 80},
};

const char* const kTrafficModels[] = {
    "Aircraft/Traffic/Airliner/airliner.acf",
    "Aircraft/Traffic/Bizjet/bizjet.acf",
    "Aircraft/Traffic/Glider/glider.acf",
};

// Flight state of the user's aircraft when a flight starts or is reset.
constexpr double kUserHeightAboveGround = 500;
constexpr float kUserSpeed = 60;
constexpr float kCruiseRpm = 2400, kCruiseThrottle = 0.75f, kIdleRpm = 700;
// Traffic circles the airport, each aircraft on a wider and higher circle.
constexpr float kTrafficSpeed = 50;

void CopyOut(char* out, const std::string& text, size_t size) {
  if (!out) return;
  size_t length = std::min(text.size(), size - 1);
  std::memcpy(out, text.data(), length);
  out[length] = 0;
}

std::string FileNameOf(const std::string& path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

void PlaceTrafficAround(const Airport& airport) {
  for (size_t i = 1; i < gAircraft.size(); ++i) {
    Aircraft& plane = gAircraft[i];
    double radius = 2000 + 1000.0 * i;
    double bearing = 90.0 * i;
    double north = radius * std::cos(bearing * kPi / 180);
    double east = radius * std::sin(bearing * kPi / 180);
    plane.latitude = airport.latitude + north / kMeanRadius * 180 / kPi;
    plane.longitude =
        airport.longitude + east / (kMeanRadius * std::cos(airport.latitude * kPi / 180)) * 180 / kPi;
    plane.elevation = gConfig.groundElevation + 600 + 150.0 * i;
    plane.heading = (float)std::fmod(bearing + 90, 360);
    plane.groundSpeed = kTrafficSpeed;
    plane.turnRate = (float)(kTrafficSpeed / radius * 180 / kPi);
  }
}

void PlaceUserInFlightOver(const Airport& airport) {
  Aircraft& user = gAircraft[0];
  user.latitude = airport.latitude;
  user.longitude = airport.longitude;
  user.elevation = gConfig.groundElevation + kUserHeightAboveGround;
  user.heading = airport.runwayHeading;
  user.groundSpeed = kUserSpeed;
  // No wind blows in this world: the air moves with the ground.
  user.trueAirspeed = user.indicatedAirspeed = kUserSpeed;
  user.engineRpm = kCruiseRpm;
  user.throttle = kCruiseThrottle;
  user.turnRate = 0;
}

const Airport& StartAirport() {
  const Airport* airport = FindAirport(gConfig.airport);
  return airport ? *airport : kAirports[0];
}

// ---- services --------------------------------------------------------------

void ReadCameraPosition(float* x, float* y, float* z, float* pitch, float* heading, float* roll,
                        float* zoom) {
  float* out[7] = {x, y, z, pitch, heading, roll, zoom};
  for (int i = 0; i < 7; ++i)
    if (out[i]) *out[i] = gCamera[i];
}

void SetAircraftModel(int index, const char* path, const char* name) {
  if (index < 0 || index >= (int)gAircraft.size() || !path || !*path) return;
  LoadAircraftModel(index, path);
}

void GetNthAircraftModel(int index, char* outPath, char* outFileName) {
  // Both buffers hold 256 bytes.
  std::string path = index >= 0 && index < (int)gAircraft.size() ? gAircraft[index].path : "";
  CopyOut(outPath, path, 256);
  CopyOut(outFileName, FileNameOf(path), 256);
}

int CountAircraft() { return (int)gAircraft.size(); }

void ReinitUsersPlane(int first, int second) {
  PlaceUserInFlightOver(StartAirport());
  HostPrint("[aircraft] user's aircraft re-initialised (" + std::to_string(first) + ", " +
            std::to_string(second) + ")\n");
}

}  // namespace

void PlaceUserAtAirport(const char* code) {
  const Airport* airport = code ? FindAirport(code) : nullptr;
  if (!airport) {
    HostPrint(std::string("[aircraft] no airport ") + (code ? code : "(null)") + "\n");
    return;
  }
  // The local frame follows the user, as the simulator's does, so that local
  // coordinates stay small; the airport-loaded event tells plugins so.
  SetLocalOrigin(airport->latitude, airport->longitude);
  if (FlightGearWorld()) {
    // FlightGear's aircraft cannot be set down on a runway at speed: it
    // flies on over the airport, as a flight that starts there does.
    FlightGearAirport(airport->latitude, airport->longitude,
                      airport->elevation + kUserHeightAboveGround, airport->runwayHeading);
    PlaceTrafficAround(*airport);
    HostPrint(std::string("[aircraft] flying over ") + airport->id + " " + airport->name + "\n");
    QueueEvent(1, 0);
    QueueEvent(4, 0);
    return;
  }
  Aircraft& user = gAircraft[0];
  user.latitude = airport->latitude;
  user.longitude = airport->longitude;
  user.elevation = gConfig.groundElevation;
  user.heading = airport->runwayHeading;
  user.groundSpeed = user.trueAirspeed = user.indicatedAirspeed = 0;
  user.engineRpm = kIdleRpm;
  user.throttle = 0;
  user.turnRate = 0;
  PlaceTrafficAround(*airport);
  HostPrint(std::string("[aircraft] placed at ") + airport->id + " " + airport->name + "\n");
  QueueEvent(1, 0);
  QueueEvent(4, 0);
}

int AirportCount() { return (int)(sizeof kAirports / sizeof kAirports[0]); }
const Airport& AirportAt(int index) { return kAirports[index]; }

const Airport* FindAirport(const std::string& id) {
  for (const Airport& airport : kAirports) {
    if (id.size() != std::strlen(airport.id)) continue;
    bool same = true;
    for (size_t i = 0; i < id.size(); ++i)
      same = same && std::toupper((unsigned char)id[i]) == airport.id[i];
    if (same) return &airport;
  }
  return nullptr;
}

void CreateAircraft() {
  gAircraft.assign(1 + std::max(0, gConfig.otherAircraft), Aircraft());
  gAircraft[0].path = ResolveUnderRoot(gConfig.userAircraft);
  for (size_t i = 1; i < gAircraft.size(); ++i)
    gAircraft[i].path = gConfig.root + kTrafficModels[(i - 1) % 3];
  gNav1Frequency = 11420;
}

void PlaceAircraftAtStart() {
  const Airport& airport = StartAirport();
  SetLocalOrigin(airport.latitude, airport.longitude);
  PlaceUserInFlightOver(airport);
  PlaceTrafficAround(airport);
}

void MoveAircraft(double seconds) {
  for (Aircraft& plane : gAircraft) {
    if (plane.aiDisabled || !plane.active) continue;
    if (&plane == &gAircraft[0] && FlightGearWorld()) continue;  // FlightGear flies it
    // Turn half the step, move along the mean heading, turn the rest: a
    // circle stays a circle however long the run.
    double heading = plane.heading + plane.turnRate * seconds / 2;
    double distance = plane.groundSpeed * seconds;
    double north = distance * std::cos(heading * kPi / 180);
    double east = distance * std::sin(heading * kPi / 180);
    plane.latitude += north / kMeanRadius * 180 / kPi;
    plane.longitude += east / (kMeanRadius * std::cos(plane.latitude * kPi / 180)) * 180 / kPi;
    plane.heading = (float)std::fmod(plane.heading + plane.turnRate * seconds + 360, 360);
  }
}

void LoadAircraftModel(int index, const std::string& path) {
  std::string chosen = path;
  if (index > 0 && gLibrary.UpdatePlaneNameAndPath) {
    // The library copies a plugin's wish into the path buffer without a
    // bound, so the buffer is as long as any path can be.
    std::vector<char> name(256), buffer(4096);
    CopyOut(name.data(), FileNameOf(path), name.size());
    CopyOut(buffer.data(), path, buffer.size());
    gLibrary.UpdatePlaneNameAndPath(index, name.data(), buffer.data());
    chosen = buffer.data();
  }
  // Plugins may name a model below the simulator folder, as the user does;
  // the host reports full paths, from which the library finds the folder of
  // the aircraft's plugins.
  chosen = ResolveUnderRoot(chosen);
  gAircraft[index].path = chosen;
  HostPrint("[aircraft] " + std::to_string(index) + " loads " + chosen + "\n");
  // The old model goes away and the new one arrives: the library unloads and
  // loads the user's aircraft plugins on these.
  QueueEvent(8, index);
  QueueEvent(3, index);
}

void UpdateTrafficFromPlugins() {
  int total = (int)gAircraft.size();
  int active = total;
  if (gLibrary.GetNumberPlanesToHandle)
    active = std::max(1, std::min(total, gLibrary.GetNumberPlanesToHandle(total, 0)));
  int wasActive = 0;
  for (const Aircraft& plane : gAircraft) wasActive += plane.active;
  for (int i = 0; i < total; ++i) gAircraft[i].active = i < active;
  if (active != wasActive) QueueEvent(7, 0);
  if (!gLibrary.UpdatePlaneNameAndPath) return;
  for (int i = 1; i < total; ++i) {
    std::vector<char> name(256), buffer(4096);
    CopyOut(name.data(), FileNameOf(gAircraft[i].path), name.size());
    CopyOut(buffer.data(), gAircraft[i].path, buffer.size());
    gLibrary.UpdatePlaneNameAndPath(i, name.data(), buffer.data());
    std::string wanted = ResolveUnderRoot(buffer.data());
    if (gAircraft[i].path != wanted) {
      gAircraft[i].path = wanted;
      HostPrint("[aircraft] " + std::to_string(i) + " loads " + gAircraft[i].path + "\n");
      QueueEvent(8, i);
      QueueEvent(3, i);
    }
  }
}

void CheckForCrash() {
  // FlightGear has crashes of its own.
  if (FlightGearWorld()) return;
  Aircraft& user = gAircraft[0];
  if (user.elevation >= gConfig.groundElevation - 0.5) return;
  // Below the ground (a plugin wrote the elevation): the flight ends and
  // starts again, as after a crash in the simulator.
  HostPrint("[aircraft] crashed\n");
  QueueEvent(2, 0);
  ResetFlight();
}

void UpdateCamera() {
  // A chase view: 40 m behind the user's aircraft and 10 m above, looking
  // along its heading and a little down.
  const Aircraft& user = gAircraft[0];
  double x, y, z;
  WorldToLocalPoint(user.latitude, user.longitude, user.elevation, x, y, z);
  double h = user.heading * kPi / 180;
  float values[7] = {(float)(x - 40 * std::sin(h)), (float)(y + 10), (float)(z + 40 * std::cos(h)),
                     -10, user.heading, 0, 1};
  if (gLibrary.CameraHook)
    gLibrary.CameraHook(&values[0], &values[1], &values[2], &values[3], &values[4], &values[5],
                        &values[6]);
  std::memcpy(gCamera, values, sizeof gCamera);
}

void ResetFlight() {
  if (FlightGearWorld()) {
    PlaceTrafficAround(StartAirport());
    FlightGearCommand("reset");
  } else {
    PlaceAircraftAtStart();
  }
  QueueEvent(1, 0);
}

void AddAircraftServices(TOKAHostServices& table) {
  table.ReadCameraPosition = ReadCameraPosition;
  table.SetAircraftModel = SetAircraftModel;
  table.GetNthAircraftModel = GetNthAircraftModel;
  table.CountAircraft = CountAircraft;
  table.PlaceUserAtAirport = PlaceUserAtAirport;
  table.ReinitUsersPlane = ReinitUsersPlane;
}

}  // namespace toka_host
