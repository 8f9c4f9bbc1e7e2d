// Starting and stopping a FlightGear of the host's own: its program, the
// root folder it reads the stream's protocol from, and its process.
#ifndef TOKA_HOST_FLIGHTGEAR_PROCESS_H
#define TOKA_HOST_FLIGHTGEAR_PROCESS_H

#include <string>
#include <vector>

namespace toka_host {

// FlightGear's program: $TOKA_FGFS when set, else fgfs in /usr/games or on
// the PATH; empty when there is none.
std::string FindFlightGearProgram();

// FlightGear reads protocol files only from its root folder. The host gives
// it a root of its own that is FlightGear's (every entry a link to the
// installed one) plus the stream's protocol file, so that nothing installed
// is changed. Its options: --fg-root and the read permission for the links'
// targets that FlightGear's scripts need.
bool PrepareFlightGearRoot(std::vector<std::string>& options, std::string& error);

// Options that make FlightGear stream to the host and serve its properties.
std::vector<std::string> FlightGearLinkOptions(int propertyPort, int streamPort);

// Splits --flightgear-args as a shell would split plain words and quotes.
bool SplitArguments(const std::string& text, std::vector<std::string>& words);

// Starts FlightGear with arguments, its output into log, in a process group
// of its own; under a virtual display and a session bus of its own when the
// environment has none. False with the reason when a program is missing.
bool StartFlightGearProcess(const std::string& program, const std::vector<std::string>& arguments,
                            const std::string& log, std::string& error);
// Whether the FlightGear started has exited, with how it ended.
bool FlightGearProcessEnded(std::string& how);
// Stops it and everything it started; waits at most a few seconds.
void StopFlightGearProcess();

}  // namespace toka_host

#endif
