// The flight management system, 100 entries long, and the GPS that flies to
// its destination entry: services 42 to 52.
#include "host/world/navigation.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "host/services.h"

namespace toka_host {

namespace {

struct FmsEntry {
  int type = 0;  // 0: empty; else a navaid type, or kNavLatLon for a bare position
  std::string id;
  TOKANavRef navAid = -1;
  int altitude = 0;  // feet
  float latitude = 0, longitude = 0;
};

FmsEntry gEntries[kFmsEntries];
int gDisplayed = 0;
int gDestination = 0;

bool ValidEntry(int index) { return index >= 0 && index < kFmsEntries; }

// ---- services --------------------------------------------------------------

// The flight plan runs up to its last entry in use.
int CountFMSEntries() {
  for (int i = kFmsEntries; i-- > 0;)
    if (gEntries[i].type != 0) return i + 1;
  return 0;
}

int GetDisplayedFMSEntry() { return gDisplayed; }
int GetDestinationFMSEntry() { return gDestination; }

int SetDisplayedFMSEntry(int index) {
  if (!ValidEntry(index)) return 0;
  gDisplayed = index;
  return 1;
}

int SetDestinationFMSEntry(int index) {
  if (!ValidEntry(index)) return 0;
  gDestination = index;
  return 1;
}

// The ID buffer takes 32 bytes. An index outside the 100 entries writes an
// empty ID and nothing else, and returns 0.
int GetFMSEntryInfo(int index, int* outType, char* outID, TOKANavRef* outRef, int* outAltitude,
                    float* outLatitude, float* outLongitude) {
  if (!ValidEntry(index)) {
    if (outID) outID[0] = 0;
    return 0;
  }
  const FmsEntry& entry = gEntries[index];
  if (outType) *outType = entry.type;
  if (outID) {
    std::strncpy(outID, entry.id.c_str(), 31);
    outID[31] = 0;
  }
  if (outRef) *outRef = entry.navAid;
  if (outAltitude) *outAltitude = entry.altitude;
  if (outLatitude) *outLatitude = entry.latitude;
  if (outLongitude) *outLongitude = entry.longitude;
  return 1;
}

int SetFMSEntryInfo(int index, TOKANavRef navAid, int altitude) {
  const NavAid* aid = NavAidAt(navAid);
  if (!ValidEntry(index) || !aid) return 0;
  FmsEntry& entry = gEntries[index];
  entry.type = aid->type;
  entry.id = aid->id;
  entry.navAid = navAid;
  entry.altitude = altitude;
  entry.latitude = (float)aid->latitude;
  entry.longitude = (float)aid->longitude;
  return 1;
}

int SetFMSEntryLatLon(int index, float latitude, float longitude, int altitude) {
  if (!ValidEntry(index)) return 0;
  FmsEntry& entry = gEntries[index];
  char id[32];
  std::snprintf(id, sizeof id, "%+.3f/%+.3f", latitude, longitude);
  entry.type = kNavLatLon;
  entry.id = id;
  entry.navAid = -1;
  entry.altitude = altitude;
  entry.latitude = latitude;
  entry.longitude = longitude;
  return 1;
}

int ClearFMSEntry(int index) {
  if (!ValidEntry(index)) return 0;
  gEntries[index] = FmsEntry();
  return 1;
}

int GetGPSDestinationType() { return gEntries[gDestination].type; }

int GetGPSDestination() { return gEntries[gDestination].navAid; }

}  // namespace

void ResetFms() {
  for (FmsEntry& entry : gEntries) entry = FmsEntry();
  gDisplayed = gDestination = 0;
}

void AddFmsServices(TOKAHostServices& table) {
  table.CountFMSEntries = CountFMSEntries;
  table.GetDisplayedFMSEntry = GetDisplayedFMSEntry;
  table.GetDestinationFMSEntry = GetDestinationFMSEntry;
  table.SetDisplayedFMSEntry = SetDisplayedFMSEntry;
  table.SetDestinationFMSEntry = SetDestinationFMSEntry;
  table.GetFMSEntryInfo = GetFMSEntryInfo;
  table.SetFMSEntryInfo = SetFMSEntryInfo;
  table.SetFMSEntryLatLon = SetFMSEntryLatLon;
  table.ClearFMSEntry = ClearFMSEntry;
  table.GetGPSDestinationType = GetGPSDestinationType;
  table.GetGPSDestination = GetGPSDestination;
}

}  // namespace toka_host
