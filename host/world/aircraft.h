// The aircraft of the world, the airports they start from, and the camera
// that follows the user's.
#ifndef TOKA_HOST_WORLD_AIRCRAFT_H
#define TOKA_HOST_WORLD_AIRCRAFT_H

#include <string>
#include <vector>

namespace toka_host {

struct Aircraft {
  std::string path;  // full path of the model file
  double latitude = 0, longitude = 0, elevation = 0;  // degrees, metres
  float heading = 0;      // degrees true
  float groundSpeed = 0;  // metres per second
  float pitch = 0, roll = 0;  // degrees, nose up and right wing down positive
  float trueAirspeed = 0, indicatedAirspeed = 0, verticalSpeed = 0;  // metres per second
  float engineRpm = 0;
  float throttle = 0;                // 0 to 1
  float yokePitch = 0, yokeRoll = 0;  // -1 to 1
  float turnRate = 0;     // degrees per second; 0 flies straight
  bool aiDisabled = false;  // a plugin flies it: the host leaves it where it is
  bool active = true;       // within the count the plugins let the host handle
};

extern std::vector<Aircraft> gAircraft;  // index 0 is the user's
extern int gNav1Frequency;               // 10 kHz units

struct Airport {
  const char* id;
  const char* name;
  double latitude, longitude, elevation;
  float runwayHeading;
};
const Airport* FindAirport(const std::string& id);
int AirportCount();
const Airport& AirportAt(int index);

// Builds the aircraft of the configuration, with their models.
void CreateAircraft();

// Where every aircraft starts, around the configured airport.
void PlaceAircraftAtStart();
// Back to the start of the flight (the reset-flight command).
void ResetFlight();
// On the ground at an airport, which becomes the local origin.
void PlaceUserAtAirport(const char* code);
// Moves the aircraft that the host flies by one step of the kinematic model.
void MoveAircraft(double seconds);
// Loads a model for an aircraft as the simulator does: the controlling plugin
// may substitute its own model first; then the library hears of it on the
// next frame (events 8 and 3).
void LoadAircraftModel(int index, const std::string& path);
// Ends the flight when the user's aircraft is below the ground (event 2).
void CheckForCrash();
// Asks the library how many aircraft the host may handle and which models
// the controlling plugin wants; called once per frame.
void UpdateTrafficFromPlugins();

// The host's camera: x, y, z, pitch, heading, roll, zoom.
extern float gCamera[7];
void UpdateCamera();

}  // namespace toka_host

#endif
