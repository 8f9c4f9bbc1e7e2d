// The configuration a run starts from and the world's clock: what nearly
// every part of the reference host reads.
#ifndef TOKA_HOST_CONFIG_H
#define TOKA_HOST_CONFIG_H

#include <string>

namespace toka_host {

struct HostConfig {
  std::string root = "./";  // the simulator folder, ending in "/"
  int screenWidth = 1280;
  int screenHeight = 800;
  double step = 1.0 / 60.0;  // simulated seconds per frame
  std::string airport = "KSEA";  // where the flight starts; also the local origin
  std::string userAircraft = "Aircraft/Trainer/trainer.acf";  // below the root, or absolute
  int otherAircraft = 2;
  double groundElevation = 0;     // metres above the ellipsoid, the same everywhere
  double terrainExtent = 100000;  // metres from the origin beyond which probes miss
};

extern HostConfig gConfig;

extern int gFrame;            // 0 during start-up, then 1, 2, ...
extern double gRunningTime;   // seconds since start, what slot 14 answers
extern double gFlightTime;    // seconds the simulation ran unpaused
extern bool gPaused;
extern bool gQuitRequested;
// How far a run paced in real time (--window, --watch) is behind it, in
// seconds; 0 when it keeps up or is not paced. The status line shows it.
extern double gSecondsBehind;

}  // namespace toka_host

#endif
