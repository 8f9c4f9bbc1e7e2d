// The navigation database of the world and the flight management system
// that flies through it.
#ifndef TOKA_HOST_WORLD_NAVIGATION_H
#define TOKA_HOST_WORLD_NAVIGATION_H

#include "toka/TOKADefs.h"

namespace toka_host {

enum NavType {
  kNavAirport = 1,
  kNavNDB = 2,
  kNavVOR = 4,
  kNavILS = 8,
  kNavFix = 16,
  kNavDME = 32,
  kNavLatLon = 64,
};
struct NavAid {
  int type;
  const char* id;
  const char* name;
  double latitude, longitude;
  float elevation;  // metres
  int frequency;    // VOR, ILS, DME: 10 kHz units; NDB: kHz; else 0
  float heading;    // the localizer's course for an ILS, else 0
};
const NavAid* NavAidAt(TOKANavRef navAid);  // null for a reference outside the database
constexpr int kFmsEntries = 100;
void ResetFms();

}  // namespace toka_host

#endif
