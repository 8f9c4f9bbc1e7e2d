// The reference host's world alone, through the services table it hands to
// the library: coordinates, terrain, the aircraft and their motion, and the
// simulator's datarefs.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>

#include "harness/host_program.h"
#include "host/config.h"
#include "host/datarefs.h"
#include "host/services.h"
#include "host/world/aircraft.h"

using namespace toka_host;
using toka_test::Haversine;
using toka_test::TempTree;

namespace {

constexpr double kPi = 3.14159265358979323846;

class HostWorld : public ::testing::Test {
protected:
  TempTree tree;
  std::string output;
  TOKAHostServices* services = nullptr;

  void SetUp() override {
    HostConfig config;
    config.root = tree.root();
    config.airport = "KPAE";
    config.otherAircraft = 3;
    config.groundElevation = 250;
    config.terrainExtent = 20000;
    ResetWorld(config);
    SetOutputCapture(&output);
    services = HostServices();
  }
  void TearDown() override { SetOutputCapture(nullptr); }
};

TEST_F(HostWorld, CoordinatesMeasureTrueMetresAndProbesFindTheFlatGround) {
  const Airport& origin = *FindAirport(gConfig.airport);
  for (double d : {-1.5, 0.37, 2.0}) {
    double lat = origin.latitude + d, lon = origin.longitude - d, x, y, z, la, lo, el;
    services->WorldToLocal(lat, lon, 4000 * d, &x, &y, &z);
    services->LocalToWorld(x, y, z, &la, &lo, &el);
    EXPECT_NEAR(lat, la, 1e-6);
    EXPECT_NEAR(lon, lo, 1e-6);
    EXPECT_NEAR(4000 * d, el, 1e-3);
  }
  // Small steps north and east measure the ellipsoid's radii of curvature:
  // north is -z, east is +x, and the origin's elevation is y.
  const double a = 6378137, f = 1 / 298.257223563, e2 = f * (2 - f);
  double s = std::sin(origin.latitude * kPi / 180);
  double step = 0.001, x, y, z;
  services->WorldToLocal(origin.latitude + step, origin.longitude, 0, &x, &y, &z);
  EXPECT_NEAR(-a * (1 - e2) / std::pow(1 - e2 * s * s, 1.5) * step * kPi / 180, z, 0.01);
  services->WorldToLocal(origin.latitude, origin.longitude + step, 0, &x, &y, &z);
  EXPECT_NEAR(a / std::sqrt(1 - e2 * s * s) * std::cos(origin.latitude * kPi / 180) * step * kPi / 180, x, 0.01);
  services->WorldToLocal(origin.latitude, origin.longitude, 131, &x, &y, &z);
  EXPECT_NEAR(131, y, 1e-6);

  // Probes find the ground straight below or above the query, within the
  // terrain's extent; the normal points from the ground to the query.
  int probe = services->CreateProbe();
  for (float height : {900.0f, -600.0f}) {
    float query[3] = {1500, height, -2500}, location[3], normal[3], velocity[3] = {9, 9, 9};
    int wet = 7;
    ASSERT_EQ(1, services->ProbeTerrain(probe, query, location, normal, velocity, &wet));
    double qLat, qLon, qEl, lat, lon, el;
    services->LocalToWorld(query[0], query[1], query[2], &qLat, &qLon, &qEl);
    services->LocalToWorld(location[0], location[1], location[2], &lat, &lon, &el);
    EXPECT_NEAR(gConfig.groundElevation, el, 0.01);
    EXPECT_NEAR(qLat, lat, 1e-7);
    EXPECT_NEAR(qLon, lon, 1e-7);
    double d[3] = {query[0] - location[0], query[1] - location[1], query[2] - location[2]};
    double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]) * (height > 0 ? 1 : -1);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(d[i] / length, normal[i], 1e-4);
    EXPECT_EQ(0, velocity[0] + velocity[1] + velocity[2] + wet);
  }
  float outside[3] = {15000, 0, -15000}, out[3];
  EXPECT_EQ(0, services->ProbeTerrain(probe, outside, out, out, out, nullptr));
  float inside[3] = {0, 0, 0};
  EXPECT_EQ(0, services->ProbeTerrain(probe + 100, inside, out, out, out, nullptr));

  // Placed at an airport, the user is at the origin, standing still.
  const Airport& field = *FindAirport("KBFI");
  services->PlaceUserAtAirport("kbfi");
  services->WorldToLocal(field.latitude, field.longitude, gConfig.groundElevation, &x, &y, &z);
  EXPECT_NEAR(0, std::hypot(x, z), 1e-6);
  EXPECT_EQ(field.latitude, gAircraft[0].latitude);
  EXPECT_EQ(0, gAircraft[0].groundSpeed);
  services->PlaceUserAtAirport("ZZZZ");
  EXPECT_EQ(field.latitude, gAircraft[0].latitude);
  EXPECT_EQ("[aircraft] placed at KBFI Boeing Field King Co Intl\n[aircraft] no airport ZZZZ\n", output);
}

// The library's registration function, as the host calls it.
struct Registered {
  int (*readInt)(void*);
  void (*writeInt)(void*, int);
  double (*readDouble)(void*);
  void (*writeDouble)(void*, double);
  int (*readData)(void*, void*, int, int);
  void (*writeData)(void*, void*, int, int);
  void *readRefcon, *writeRefcon;
};
std::map<std::string, Registered> gRegistered;

void* Register(const char* name, int types, int writable, int (*readInt)(void*),
               void (*writeInt)(void*, int), float (*)(void*), void (*)(void*, float),
               double (*readDouble)(void*), void (*writeDouble)(void*, double),
               int (*)(void*, int*, int, int), void (*)(void*, int*, int, int),
               int (*)(void*, float*, int, int), void (*)(void*, float*, int, int),
               int (*readData)(void*, void*, int, int), void (*writeData)(void*, void*, int, int),
               void* readRefcon, void* writeRefcon) {
  EXPECT_FALSE(gRegistered.count(name)) << name;
  gRegistered[name] = {readInt, writeInt, readDouble, writeDouble, readData, writeData, readRefcon, writeRefcon};
  return &gRegistered[name];
}

// Reads and writes of a registered dataref, as the library makes them.
int GetInt(const std::string& n) { return gRegistered.at(n).readInt(gRegistered.at(n).readRefcon); }
double GetDouble(const std::string& n) { return gRegistered.at(n).readDouble(gRegistered.at(n).readRefcon); }
void SetInt(const std::string& n, int v) { gRegistered.at(n).writeInt(gRegistered.at(n).writeRefcon, v); }
void SetDouble(const std::string& n, double v) { gRegistered.at(n).writeDouble(gRegistered.at(n).writeRefcon, v); }

TEST_F(HostWorld, DataRefsFollowTheWorldAndWritesChangeIt) {
  int count = RegisterHostDataRefs(Register);
  EXPECT_EQ(count, (int)gRegistered.size());

  // The byte dataref the library stamps its build into: a null buffer asks
  // the size, a write past the end is clipped.
  const Registered& stamp = gRegistered.at("sim/version/toka_build_string");
  char tail[40], back[64];
  std::memset(tail, 'x', sizeof tail);
  int size = stamp.readData(stamp.readRefcon, nullptr, 0, 0);
  stamp.writeData(stamp.writeRefcon, tail, size - 10, (int)sizeof tail);
  EXPECT_EQ(10, stamp.readData(stamp.readRefcon, back, size - 10, 64));

  // Flying with the datarefs: the user straight on, ground speed times time
  // being the distance between the positions they report; the traffic in
  // circles around the airport.
  const Airport& airport = *FindAirport(gConfig.airport);
  std::vector<double> radius;
  for (const Aircraft& plane : gAircraft)
    radius.push_back(Haversine(airport.latitude, airport.longitude, plane.latitude, plane.longitude));
  double lat0 = GetDouble("sim/flightmodel/position/latitude");
  double lon0 = GetDouble("sim/flightmodel/position/longitude");
  for (int i = 0; i < 3600; ++i) MoveAircraft(gConfig.step);
  double flown = Haversine(lat0, lon0, GetDouble("sim/flightmodel/position/latitude"),
                           GetDouble("sim/flightmodel/position/longitude"));
  EXPECT_NEAR(GetDouble("sim/flightmodel/position/groundspeed") * 3600 * gConfig.step, flown, 0.5);
  for (size_t i = 1; i < gAircraft.size(); ++i) {
    const Aircraft& plane = gAircraft[i];
    EXPECT_NEAR(radius[i], Haversine(airport.latitude, airport.longitude, plane.latitude, plane.longitude), 5);
  }

  // Heading written as east: the latitude stays, the longitude grows.
  SetDouble("sim/flightmodel/position/heading", 90);
  double lat1 = GetDouble("sim/flightmodel/position/latitude");
  double lon1 = GetDouble("sim/flightmodel/position/longitude");
  for (int i = 0; i < 60; ++i) MoveAircraft(gConfig.step);
  EXPECT_NEAR(lat1, GetDouble("sim/flightmodel/position/latitude"), 1e-9);
  EXPECT_GT(GetDouble("sim/flightmodel/position/longitude"), lon1);

  // A plugin that flies aircraft 2 stops the host moving it, and only it.
  SetInt("sim/private/net_disables/ai_loc[2]", 1);
  Aircraft one = gAircraft[1], two = gAircraft[2];
  MoveAircraft(1);
  EXPECT_EQ(two.latitude, gAircraft[2].latitude);
  EXPECT_NE(one.latitude, gAircraft[1].latitude);

  // NAV1 and pause, as written and as the commands change them; the band
  // wraps around.
  SetInt("sim/cockpit/radios/nav1_freq", 11795);
  services->CommandBegin(services->CreateCommand("sim/radios/nav1_up", nullptr, 0));
  EXPECT_EQ(10800, GetInt("sim/cockpit/radios/nav1_freq"));
  SetInt("sim/time/paused", 1);
  EXPECT_TRUE(gPaused);
  services->CommandBegin(services->CreateCommand("sim/operation/pause_toggle", nullptr, 0));
  EXPECT_EQ(0, GetInt("sim/time/paused"));

  // Put below the ground, the aircraft crashes and the flight starts again.
  SetDouble("sim/flightmodel/position/elevation", gConfig.groundElevation - 10);
  CheckForCrash();
  EXPECT_GT(GetDouble("sim/flightmodel/position/elevation"), gConfig.groundElevation);
  EXPECT_EQ("[sim] running\n[aircraft] crashed\n", output);
}

}  // namespace
