// The navigation database of the small world and its searches: services 36
// to 41. A navaid reference is the navaid's index in the database, which is
// ordered by type and then by identifier, so that the navaids of one type
// form one run from the first of the type to the last.
#include "host/world/navigation.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "host/config.h"
#include "host/services.h"
#include "host/world/aircraft.h"
#include "host/world/world.h"

namespace toka_host {

namespace {

// Frequencies: VOR, ILS and DME in units of 10 kHz (11420 is 114.20 MHz),
// NDB in kHz. Airports and fixes have none.
const NavAid kRadioAids[] = {
    {kNavNDB, "BF", "Boeing NDB", 47.5200, -122.2950, 10, 362, 0},
    {kNavNDB, "PA", "Paine NDB", 47.8900, -122.2700, 180, 411, 0},
    {kNavNDB, "VR", "Vancouver NDB", 49.1700, -123.1000, 5, 276, 0},
    {kNavNDB, "OL", "Olympia NDB", 46.9800, -122.9100, 60, 338, 0},
    {kNavVOR, "ORV", "Orvane VOR", 47.4700, -122.2500, 100, 11420, 0},
    {kNavVOR, "PUG", "Puget VOR", 47.7000, -122.5000, 50, 11340, 0},
    {kNavVOR, "TUM", "Tumwater VOR", 46.9600, -122.8600, 70, 11510, 0},
    {kNavVOR, "STR", "Strait VOR", 48.6000, -123.0000, 30, 11270, 0},
    {kNavILS, "ISEA", "KSEA 16L ILS", 47.4310, -122.3080, 120, 11030, 164},
    {kNavILS, "IBFI", "KBFI 13R ILS", 47.5200, -122.2930, 6, 10990, 134},
    {kNavILS, "IPAE", "KPAE 16R ILS", 47.8950, -122.2790, 180, 10930, 160},
    {kNavFix, "ALDER", "ALDER", 47.6000, -122.1000, 0, 0, 0},
    {kNavFix, "CEDAR", "CEDAR", 47.3000, -122.5000, 0, 0, 0},
    {kNavFix, "MAPLE", "MAPLE", 48.1000, -122.4000, 0, 0, 0},
    {kNavFix, "SPRUC", "SPRUC", 47.0000, -122.4000, 0, 0, 0},
    {kNavFix, "HEMLK", "HEMLK", 48.4000, -122.8000, 0, 0, 0},
    {kNavDME, "ORV", "Orvane DME", 47.4700, -122.2500, 100, 11420, 0},
    {kNavDME, "STR", "Strait DME", 48.6000, -123.0000, 30, 11270, 0},
};

std::vector<NavAid> gNavAids;

void BuildDatabase() {
  if (!gNavAids.empty()) return;
  for (int i = 0; i < AirportCount(); ++i) {
    const Airport& airport = AirportAt(i);
    gNavAids.push_back({kNavAirport, airport.id, airport.name, airport.latitude,
                        airport.longitude, (float)airport.elevation, 0, 0});
  }
  gNavAids.insert(gNavAids.end(), std::begin(kRadioAids), std::end(kRadioAids));
  std::stable_sort(gNavAids.begin(), gNavAids.end(), [](const NavAid& a, const NavAid& b) {
    return a.type != b.type ? a.type < b.type : std::strcmp(a.id, b.id) < 0;
  });
}

bool ContainsIgnoringCase(const char* text, const char* fragment) {
  std::string haystack = text, needle = fragment;
  for (char& c : haystack) c = (char)std::toupper((unsigned char)c);
  for (char& c : needle) c = (char)std::toupper((unsigned char)c);
  return haystack.find(needle) != std::string::npos;
}

void CopyOut(char* out, const char* text, size_t size) {
  if (!out) return;
  std::strncpy(out, text, size - 1);
  out[size - 1] = 0;
}

// ---- services --------------------------------------------------------------

TOKANavRef GetFirstNavAid() {
  BuildDatabase();
  return gNavAids.empty() ? -1 : 0;
}

TOKANavRef GetNextNavAid(TOKANavRef navAid) {
  BuildDatabase();
  return navAid >= 0 && navAid + 1 < (int)gNavAids.size() ? navAid + 1 : -1;
}

TOKANavRef FindFirstNavAidOfType(int type) {
  BuildDatabase();
  for (size_t i = 0; i < gNavAids.size(); ++i)
    if (gNavAids[i].type == type) return (TOKANavRef)i;
  return -1;
}

TOKANavRef FindLastNavAidOfType(int type) {
  BuildDatabase();
  for (size_t i = gNavAids.size(); i-- > 0;)
    if (gNavAids[i].type == type) return (TOKANavRef)i;
  return -1;
}

// Every criterion given narrows the search: types (a mask of type bits; 0
// means any type), a fragment of the name and of the identifier (ignoring
// case), an exact frequency. With a position the nearest navaid that passes
// is the answer, else the first one in database order.
TOKANavRef FindNavAid(const char* nameFragment, const char* idFragment, float* latitude,
                      float* longitude, int* frequency, int type) {
  BuildDatabase();
  bool byPosition = latitude && longitude;
  TOKANavRef best = -1;
  double bestDistance = 0;
  for (size_t i = 0; i < gNavAids.size(); ++i) {
    const NavAid& aid = gNavAids[i];
    if (type != 0 && !(aid.type & type)) continue;
    if (nameFragment && !ContainsIgnoringCase(aid.name, nameFragment)) continue;
    if (idFragment && !ContainsIgnoringCase(aid.id, idFragment)) continue;
    if (frequency && aid.frequency != *frequency) continue;
    if (!byPosition) return (TOKANavRef)i;
    double distance = DistanceMetres(*latitude, *longitude, aid.latitude, aid.longitude);
    if (best == -1 || distance < bestDistance) {
      best = (TOKANavRef)i;
      bestDistance = distance;
    }
  }
  return best;
}

// The ID buffer takes 32 bytes and the name buffer 256; the region flag is
// one byte: 1 when the navaid lies within the terrain around the origin.
int GetNavAidInfo(TOKANavRef navAid, int* outType, float* outLatitude, float* outLongitude,
                  float* outHeight, int* outFrequency, float* outHeading, char* outID,
                  char* outName, char* outReg) {
  const NavAid* aid = NavAidAt(navAid);
  if (!aid) {
    CopyOut(outID, "", 32);
    CopyOut(outName, "", 256);
    return 0;
  }
  if (outType) *outType = aid->type;
  if (outLatitude) *outLatitude = (float)aid->latitude;
  if (outLongitude) *outLongitude = (float)aid->longitude;
  if (outHeight) *outHeight = aid->elevation;
  if (outFrequency) *outFrequency = aid->frequency;
  if (outHeading) *outHeading = aid->heading;
  CopyOut(outID, aid->id, 32);
  CopyOut(outName, aid->name, 256);
  if (outReg) {
    double x, y, z;
    WorldToLocalPoint(aid->latitude, aid->longitude, aid->elevation, x, y, z);
    *outReg = std::hypot(x, z) <= gConfig.terrainExtent ? 1 : 0;
  }
  return 1;
}

}  // namespace

const NavAid* NavAidAt(TOKANavRef navAid) {
  BuildDatabase();
  return navAid >= 0 && navAid < (int)gNavAids.size() ? &gNavAids[navAid] : nullptr;
}

void AddNavigationServices(TOKAHostServices& table) {
  table.GetFirstNavAid = GetFirstNavAid;
  table.GetNextNavAid = GetNextNavAid;
  table.FindFirstNavAidOfType = FindFirstNavAidOfType;
  table.FindLastNavAidOfType = FindLastNavAidOfType;
  table.FindNavAid = FindNavAid;
  table.GetNavAidInfo = GetNavAidInfo;
}

}  // namespace toka_host
