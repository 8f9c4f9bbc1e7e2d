// The flightgear world: the user's aircraft, the simulator's time and pause
// come from a running FlightGear every frame, and what plugins write to its
// datarefs goes back to it.
#ifndef TOKA_HOST_FLIGHTGEAR_FLIGHTGEAR_H
#define TOKA_HOST_FLIGHTGEAR_FLIGHTGEAR_H

#include <string>

#include "host/flightgear/mapping.h"

namespace toka_host {

struct FlightGearOptions {
  bool enabled = false;       // --world flightgear
  std::string address;        // HOST:PORT of a FlightGear running; empty: the host starts one
  std::string aircraft = "c172p";
  std::string arguments;      // --flightgear-args, passed through
  double startSeconds = 300;  // how long the host waits for the one it starts
  double silentSeconds = 10;  // how long FlightGear may say nothing during the run
  std::string log;            // its output; empty: a file in the temporary folder
};

// Whether the run flies in FlightGear.
bool FlightGearWorld();

// Starts FlightGear (or connects to the one at options.address), waits until
// it flies and takes the user's aircraft from it. False with one line saying
// what went wrong and what to try.
bool ConnectFlightGear(const FlightGearOptions& options, const std::string& airport,
                       double runwayHeading, std::string& error);
// The newest values into the world, at the start of a frame. False with the
// reason when FlightGear exited or stopped answering.
bool UpdateFromFlightGear(std::string& error);
// A plugin's write: the host shows the value at once, and FlightGear gets
// it at the end of the frame.
void WriteToFlightGear(FlightGearField field, double value);
// Sends the frame's writes. False with the reason when FlightGear is gone.
bool SendWritesToFlightGear(std::string& error);
// The simulator's commands in FlightGear: "pause", "reset" (back to where
// the flight started), "quit".
void FlightGearCommand(const std::string& command);
// The user's aircraft flying over an airport, wings level.
void FlightGearAirport(double latitude, double longitude, double elevation, double heading);
// Stops the FlightGear the host started, or leaves the one it connected to.
void StopFlightGear();
// The options a FlightGear started by the user needs for --world
// flightgear=HOST:PORT, one a line.
bool FlightGearOptionsText(std::string& text, std::string& error);

}  // namespace toka_host

#endif
