// The earth, the local frame around the origin and the terrain: services 8,
// 9 (coordinate conversion), 14 (time), 59 and 60 (terrain probes).
//
// Positions are converted through earth-centred coordinates on the WGS 84
// ellipsoid, so the local frame is a true tangent plane and a conversion
// there and back loses nothing a plugin could notice.
#include "host/world/world.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "host/config.h"
#include "host/services.h"

namespace toka_host {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kSemiMajor = 6378137.0;
constexpr double kFlattening = 1 / 298.257223563;
constexpr double kEccentricity2 = kFlattening * (2 - kFlattening);
constexpr double kMeanRadius = 6371008.8;

double Radians(double degrees) { return degrees * kPi / 180; }
double Degrees(double radians) { return radians * 180 / kPi; }

struct Origin {
  double latitude = 0, longitude = 0;
  double ecef[3] = {kSemiMajor, 0, 0};
  // Rows: east, north, up, in earth-centred coordinates.
  double east[3] = {0, 1, 0}, north[3] = {0, 0, 1}, up[3] = {1, 0, 0};
};
Origin gOrigin;

void ToEarthCentred(double latitude, double longitude, double elevation, double out[3]) {
  double phi = Radians(latitude), lambda = Radians(longitude);
  double n = kSemiMajor / std::sqrt(1 - kEccentricity2 * std::sin(phi) * std::sin(phi));
  out[0] = (n + elevation) * std::cos(phi) * std::cos(lambda);
  out[1] = (n + elevation) * std::cos(phi) * std::sin(lambda);
  out[2] = (n * (1 - kEccentricity2) + elevation) * std::sin(phi);
}

void FromEarthCentred(const double p[3], double& latitude, double& longitude, double& elevation) {
  double lambda = std::atan2(p[1], p[0]);
  double r = std::hypot(p[0], p[1]);
  double phi = std::atan2(p[2], r * (1 - kEccentricity2));
  double h = 0;
  // Converges to well below a micrometre in a few rounds away from the poles.
  for (int round = 0; round < 8; ++round) {
    double sinPhi = std::sin(phi);
    double n = kSemiMajor / std::sqrt(1 - kEccentricity2 * sinPhi * sinPhi);
    h = std::fabs(phi) < Radians(60) ? r / std::cos(phi) - n
                                      : p[2] / sinPhi - n * (1 - kEccentricity2);
    phi = std::atan2(p[2], r * (1 - kEccentricity2 * n / (n + h)));
  }
  latitude = Degrees(phi);
  longitude = Degrees(lambda);
  elevation = h;
}

double Dot(const double a[3], const double b[3]) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// ---- services --------------------------------------------------------------

void WorldToLocal(double latitude, double longitude, double altitude, double* outX, double* outY,
                  double* outZ) {
  double x, y, z;
  WorldToLocalPoint(latitude, longitude, altitude, x, y, z);
  if (outX) *outX = x;
  if (outY) *outY = y;
  if (outZ) *outZ = z;
}

void LocalToWorld(double x, double y, double z, double* outLatitude, double* outLongitude,
                  double* outAltitude) {
  double latitude, longitude, elevation;
  LocalToWorldPoint(x, y, z, latitude, longitude, elevation);
  if (outLatitude) *outLatitude = latitude;
  if (outLongitude) *outLongitude = longitude;
  if (outAltitude) *outAltitude = elevation;
}

double GetElapsedTime() { return gRunningTime; }

// Probes are plain numbers; the host keeps no state per probe beyond knowing
// that it handed the number out.
std::set<int> gProbes;
int gNextProbe = 1;

int CreateProbe() {
  gProbes.insert(gNextProbe);
  return gNextProbe++;
}

// The ground is flat at one elevation above the ellipsoid; a probe finds it
// straight below (or above) the query point, within the terrain's extent.
int ProbeTerrain(int probe, float* query, float* outLocation, float* outNormal, float* outVelocity,
                 int* outIsWet) {
  if (!gProbes.count(probe) || !query) return 0;
  if (std::hypot((double)query[0], (double)query[2]) > gConfig.terrainExtent) return 0;
  double latitude, longitude, elevation;
  LocalToWorldPoint(query[0], query[1], query[2], latitude, longitude, elevation);
  double x, y, z, up[3];
  WorldToLocalPoint(latitude, longitude, gConfig.groundElevation, x, y, z);
  LocalUpAt(latitude, longitude, up);
  if (outLocation) outLocation[0] = (float)x, outLocation[1] = (float)y, outLocation[2] = (float)z;
  if (outNormal) outNormal[0] = (float)up[0], outNormal[1] = (float)up[1], outNormal[2] = (float)up[2];
  if (outVelocity) outVelocity[0] = outVelocity[1] = outVelocity[2] = 0;
  if (outIsWet) *outIsWet = 0;
  return 1;
}

}  // namespace

void SetLocalOrigin(double latitude, double longitude) {
  gOrigin.latitude = latitude;
  gOrigin.longitude = longitude;
  ToEarthCentred(latitude, longitude, 0, gOrigin.ecef);
  double phi = Radians(latitude), lambda = Radians(longitude);
  double east[3] = {-std::sin(lambda), std::cos(lambda), 0};
  double north[3] = {-std::sin(phi) * std::cos(lambda), -std::sin(phi) * std::sin(lambda),
                     std::cos(phi)};
  double up[3] = {std::cos(phi) * std::cos(lambda), std::cos(phi) * std::sin(lambda),
                  std::sin(phi)};
  for (int i = 0; i < 3; ++i) {
    gOrigin.east[i] = east[i];
    gOrigin.north[i] = north[i];
    gOrigin.up[i] = up[i];
  }
}

void WorldToLocalPoint(double latitude, double longitude, double elevation, double& x, double& y,
                       double& z) {
  double p[3];
  ToEarthCentred(latitude, longitude, elevation, p);
  double d[3] = {p[0] - gOrigin.ecef[0], p[1] - gOrigin.ecef[1], p[2] - gOrigin.ecef[2]};
  x = Dot(d, gOrigin.east);
  y = Dot(d, gOrigin.up);
  z = -Dot(d, gOrigin.north);
}

void LocalToWorldPoint(double x, double y, double z, double& latitude, double& longitude,
                       double& elevation) {
  double p[3];
  for (int i = 0; i < 3; ++i)
    p[i] = gOrigin.ecef[i] + x * gOrigin.east[i] + y * gOrigin.up[i] - z * gOrigin.north[i];
  FromEarthCentred(p, latitude, longitude, elevation);
}

void LocalUpAt(double latitude, double longitude, double up[3]) {
  double phi = Radians(latitude), lambda = Radians(longitude);
  double normal[3] = {std::cos(phi) * std::cos(lambda), std::cos(phi) * std::sin(lambda),
                      std::sin(phi)};
  up[0] = Dot(normal, gOrigin.east);
  up[1] = Dot(normal, gOrigin.up);
  up[2] = -Dot(normal, gOrigin.north);
}

double DistanceMetres(double lat1, double lon1, double lat2, double lon2) {
  double dPhi = Radians(lat2 - lat1), dLambda = Radians(lon2 - lon1);
  double a = std::sin(dPhi / 2) * std::sin(dPhi / 2) +
             std::cos(Radians(lat1)) * std::cos(Radians(lat2)) * std::sin(dLambda / 2) *
                 std::sin(dLambda / 2);
  return 2 * kMeanRadius * std::asin(std::min(1.0, std::sqrt(a)));
}

void ResetTerrain() {
  gProbes.clear();
  gNextProbe = 1;
}

void AddWorldServices(TOKAHostServices& table) {
  table.WorldToLocal = WorldToLocal;
  table.LocalToWorld = LocalToWorld;
  table.GetElapsedTime = GetElapsedTime;
  table.CreateProbe = CreateProbe;
  table.ProbeTerrain = ProbeTerrain;
}

}  // namespace toka_host
