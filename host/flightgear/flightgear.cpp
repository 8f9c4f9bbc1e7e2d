// The flightgear world. FlightGear sends the values of the mapping table as
// a stream once per frame of its own; the host takes the newest at the start
// of each of its frames. Writes go through the property server once per
// frame, the newest value of each field, and every reply is checked.
#include "host/flightgear/flightgear.h"

#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "host/config.h"
#include "host/flightgear/link.h"
#include "host/flightgear/process.h"
#include "host/output.h"
#include "host/world/aircraft.h"
#include "host/world/world.h"

namespace toka_host {

namespace {

using Clock = std::chrono::steady_clock;

// A FlightGear the user starts serves its properties here and streams to
// the port after it.
constexpr int kDefaultPropertyPort = 5401;
// How long the value a plugin wrote stands before the stream's is taken
// again: FlightGear applies a write within a frame of its own, and its
// frames on a machine without a graphics card can be a fifth of a second.
constexpr double kWriteStandsSeconds = 0.5;
constexpr double kReplySeconds = 10;

bool gActive = false;
bool gStartedByHost = false;
FlightGearOptions gOptions;
FlightGearStream gStream;
PropertyServer gServer;
double gValues[kFgFieldCount];
double gStandsUntil[kFgFieldCount];  // FlightGear's time until which a write sent stands
bool gPending[kFgFieldCount];        // written, to be sent at the end of the frame
Clock::time_point gLastPacket;
std::string gLogFile;
// Where the flight started, for the reset-flight command.
double gStartValues[kFgFieldCount];

std::string Seconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3g s", seconds);
  return text;
}

std::string SeeLog() { return gLogFile.empty() ? "" : "; see its log " + gLogFile; }

// The values into the world: the user's aircraft, the time, the pause.
void Apply(const double values[kFgFieldCount]) {
  double elapsed = values[kFgElapsed];
  for (int i = 0; i < kFgFieldCount; ++i)
    if (!gPending[i] && elapsed >= gStandsUntil[i]) gValues[i] = values[i];
  double last = gRunningTime;
  gRunningTime = elapsed;
  bool frozen = gValues[kFgFrozen] != 0;
  if (!frozen && elapsed > last) gFlightTime += elapsed - last;
  if (frozen != gPaused) {
    gPaused = frozen;
    HostPrint(gPaused ? "[sim] paused\n" : "[sim] running\n");
    QueueEvent(13, gPaused ? 1 : 0);
  }
  Aircraft& user = gAircraft[0];
  user.latitude = gValues[kFgLatitude];
  user.longitude = gValues[kFgLongitude];
  user.elevation = gValues[kFgAltitude];
  user.heading = (float)gValues[kFgHeading];
  user.pitch = (float)gValues[kFgPitch];
  user.roll = (float)gValues[kFgRoll];
  user.groundSpeed = (float)gValues[kFgGroundSpeed];
  user.trueAirspeed = (float)gValues[kFgTrueAirspeed];
  user.indicatedAirspeed = (float)gValues[kFgIndicatedAirspeed];
  user.verticalSpeed = (float)gValues[kFgVerticalSpeed];
  user.engineRpm = (float)gValues[kFgEngineRpm];
  user.throttle = (float)gValues[kFgThrottle];
  user.yokePitch = (float)gValues[kFgYokePitch];
  user.yokeRoll = (float)gValues[kFgYokeRoll];
  // Terrain probes find FlightGear's ground under the aircraft.
  gConfig.groundElevation = gValues[kFgGroundElevation];
}

bool Parse(const std::string& address, std::string& host, int& port) {
  size_t colon = address.rfind(':');
  if (colon == std::string::npos || colon == 0) return false;
  host = address.substr(0, colon);
  char* end = nullptr;
  long value = std::strtol(address.c_str() + colon + 1, &end, 10);
  port = (int)value;
  return *end == 0 && value > 0 && value < 65535;
}

// FlightGear flies once its clock runs: two packets, the later one later.
bool WaitUntilFlying(double seconds, std::string& error) {
  auto start = Clock::now(), nextLine = start + std::chrono::seconds(10);
  double firstElapsed = -1;
  double values[kFgFieldCount];
  for (;;) {
    double waited = std::chrono::duration<double>(Clock::now() - start).count();
    std::string how;
    if (gStartedByHost && FlightGearProcessEnded(how)) {
      error = "FlightGear exited while starting (" + how + ")" + SeeLog();
      return false;
    }
    if (gStream.Receive(values) && values[kFgElapsed] > 0) {
      if (firstElapsed < 0) firstElapsed = values[kFgElapsed];
      else if (values[kFgElapsed] > firstElapsed) {
        for (int i = 0; i < kFgFieldCount; ++i) gValues[i] = gStartValues[i] = values[i];
        return true;
      }
    }
    if (waited > seconds) {
      error = (firstElapsed < 0 ? "FlightGear sent nothing to the stream's port " +
                                      std::to_string(gStream.Port())
                                : std::string("FlightGear's clock did not run")) +
              " within " + Seconds(seconds) +
              (gStartedByHost ? SeeLog() + ", or give it longer with --flightgear-timeout"
                              : "; was it started with the options toka-host "
                                "--flightgear-options prints?");
      return false;
    }
    if (Clock::now() >= nextLine) {
      std::fprintf(stderr, "toka-host: waiting for FlightGear to fly: %s of at most %s\n",
                   Seconds(waited).c_str(), Seconds(seconds).c_str());
      nextLine += std::chrono::seconds(10);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

bool ConnectServer(const std::string& host, int port, double seconds, std::string& error) {
  auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                std::chrono::duration<double>(seconds));
  for (;;) {
    if (gServer.Connect(host, port, 5, error)) return true;
    if (Clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
  }
}

std::string DefaultLog() {
  const char* folder = std::getenv("TMPDIR");
  return std::string(folder && *folder ? folder : "/tmp") + "/toka-host-flightgear-" +
         std::to_string(getpid()) + ".log";
}

bool StartOwn(const FlightGearOptions& options, const std::string& airport, double heading,
              int& propertyPort, std::string& error) {
  std::string program = FindFlightGearProgram();
  const char* chosen = std::getenv("TOKA_FGFS");
  if (program.empty() && chosen) {
    error = std::string("TOKA_FGFS is set to ") + chosen + ", which is not a program";
    return false;
  }
  if (program.empty()) {
    error = "FlightGear is not installed: no fgfs in /usr/games or on the PATH (apt-get install "
            "--no-install-recommends flightgear, which scripts/setup.sh does; or set TOKA_FGFS)";
    return false;
  }
  std::vector<std::string> arguments, extra;
  if (!PrepareFlightGearRoot(arguments, error)) return false;
  if (!SplitArguments(options.arguments, extra)) {
    error = "--flightgear-args has an unclosed quote";
    return false;
  }
  // The property server's port: the stream's socket holds its own number
  // on UDP, so the same number on TCP is one nobody else of ours uses.
  propertyPort = gStream.Port();
  for (const std::string& option : FlightGearLinkOptions(propertyPort, gStream.Port()))
    arguments.push_back(option);
  char headingText[32];
  std::snprintf(headingText, sizeof headingText, "--heading=%.0f", heading);
  // A small window and the cheapest drawing: FlightGear streams once per
  // frame it draws, so its frame rate is the stream's.
  std::vector<std::string> own = {
      "--aircraft=" + options.aircraft, "--airport=" + airport, "--in-air", "--altitude=3000",
      "--vc=100", headingText, "--timeofday=noon", "--disable-sound", "--disable-ai-traffic",
      "--disable-real-weather-fetch", "--disable-terrasync", "--geometry=160x120",
      "--disable-clouds", "--fog-fastest", "--disable-specular-highlight"};
  arguments.insert(arguments.end(), own.begin(), own.end());
  // The user's come last: FlightGear takes the last of an option given twice.
  arguments.insert(arguments.end(), extra.begin(), extra.end());
  gLogFile = options.log.empty() ? DefaultLog() : options.log;
  if (!StartFlightGearProcess(program, arguments, gLogFile, error)) return false;
  gStartedByHost = true;
  HostPrint("[flightgear] started " + program + ", its output in " + gLogFile + "\n");
  std::fprintf(stderr, "toka-host: starting FlightGear (its output in %s)\n", gLogFile.c_str());
  return true;
}

}  // namespace

bool FlightGearWorld() { return gActive; }

bool ConnectFlightGear(const FlightGearOptions& options, const std::string& airport,
                       double runwayHeading, std::string& error) {
  gOptions = options;
  gStartedByHost = false;
  gLogFile.clear();
  for (int i = 0; i < kFgFieldCount; ++i) gStandsUntil[i] = -1, gPending[i] = false;
  std::string host = "localhost";
  int port = kDefaultPropertyPort;
  if (!options.address.empty() && !Parse(options.address, host, port)) {
    error = "bad FlightGear address " + options.address + " (HOST:PORT)";
    return false;
  }
  bool opened = options.address.empty() ? gStream.Open(0, error) : gStream.Open(port + 1, error);
  if (!opened) return false;
  if (options.address.empty() && !StartOwn(options, airport, runwayHeading, port, error)) {
    StopFlightGear();
    return false;
  }
  double seconds = options.address.empty() ? options.startSeconds : kReplySeconds;
  auto start = Clock::now();
  bool flying = WaitUntilFlying(seconds, error);
  double left = seconds - std::chrono::duration<double>(Clock::now() - start).count();
  if (flying && !ConnectServer(host, port, std::max(left, 5.0), error))
    error = "FlightGear's property server does not answer: " + error + SeeLog();
  if (!flying || !gServer.Connected()) {
    StopFlightGear();
    return false;
  }
  gActive = true;
  gLastPacket = Clock::now();
  HostPrint("[flightgear] flying, property server " + host + ":" + std::to_string(port) +
            ", stream on 127.0.0.1:" + std::to_string(gStream.Port()) + "\n");
  std::fprintf(stderr, "toka-host: FlightGear flies\n");
  Apply(gValues);
  SetLocalOrigin(gValues[kFgLatitude], gValues[kFgLongitude]);
  return true;
}

bool UpdateFromFlightGear(std::string& error) {
  std::string how;
  if (gStartedByHost && FlightGearProcessEnded(how)) {
    error = "FlightGear exited during the run (" + how + ")" + SeeLog();
    return false;
  }
  double values[kFgFieldCount];
  if (gStream.Receive(values)) {
    gLastPacket = Clock::now();
    Apply(values);
  } else if (std::chrono::duration<double>(Clock::now() - gLastPacket).count() >
             gOptions.silentSeconds) {
    error = "FlightGear stopped answering: nothing on the stream for " +
            Seconds(gOptions.silentSeconds) + SeeLog();
    return false;
  }
  return gServer.Collect(kReplySeconds, error) || (error += SeeLog(), false);
}

void WriteToFlightGear(FlightGearField field, double value) {
  if (!gActive) return;
  gValues[field] = value;
  gPending[field] = true;
}

bool SendWritesToFlightGear(std::string& error) {
  for (int i = 0; i < kFgFieldCount; ++i) {
    if (!gPending[i]) continue;
    gPending[i] = false;
    gStandsUntil[i] = gRunningTime + kWriteStandsSeconds;
    FlightGearField field = (FlightGearField)i;
    if (!gServer.Send(std::string("set ") + FlightGearMapping(field).property + " " +
                          FlightGearPropertyText(field, gValues[i]),
                      error))
      return false;
  }
  return true;
}

namespace {

// Moves the aircraft in flight: wings level, at the speed the flight
// started with. (FlightGear's own reset and repositioning rebuild its whole
// world, which takes minutes without a graphics card.)
void PlaceFlying(double latitude, double longitude, double elevation, double heading) {
  WriteToFlightGear(kFgLatitude, latitude);
  WriteToFlightGear(kFgLongitude, longitude);
  WriteToFlightGear(kFgAltitude, elevation);
  WriteToFlightGear(kFgHeading, heading);
  std::string error, speed = FlightGearPropertyText(kFgTrueAirspeed, gStartValues[kFgTrueAirspeed]);
  gServer.Send("set /orientation/roll-deg 0", error);
  gServer.Send("set /orientation/pitch-deg 0", error);
  gServer.Send("set /velocities/airspeed-kt " + speed, error);
}

}  // namespace

void FlightGearCommand(const std::string& command) {
  if (!gActive) return;
  std::string error;
  if (command == "pause") {
    WriteToFlightGear(kFgFrozen, gPaused ? 0 : 1);
  } else if (command == "reset") {
    PlaceFlying(gStartValues[kFgLatitude], gStartValues[kFgLongitude], gStartValues[kFgAltitude],
                gStartValues[kFgHeading]);
  } else if (command == "quit") {
    gServer.Send("run exit", error);
  }
}

void FlightGearAirport(double latitude, double longitude, double elevation, double heading) {
  if (!gActive) return;
  PlaceFlying(latitude, longitude, elevation, heading);
}

void StopFlightGear() {
  gActive = false;
  gServer.Close();
  gStream.Close();
  if (gStartedByHost) {
    StopFlightGearProcess();
    HostPrint("[flightgear] stopped\n");
  }
  gStartedByHost = false;
}

bool FlightGearOptionsText(std::string& text, std::string& error) {
  std::vector<std::string> options;
  if (!PrepareFlightGearRoot(options, error)) return false;
  for (const std::string& option : FlightGearLinkOptions(kDefaultPropertyPort, kDefaultPropertyPort + 1))
    options.push_back(option);
  text.clear();
  for (const std::string& option : options) text += option + "\n";
  return true;
}

}  // namespace toka_host
