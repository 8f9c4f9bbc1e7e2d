// The host's output: everything the simulator shows in its log or on screen
// as text.
#ifndef TOKA_HOST_OUTPUT_H
#define TOKA_HOST_OUTPUT_H

#include <string>

namespace toka_host {

// Text goes to standard output, or to the capture string when one is set.
// The log keeps all of it since it was last cleared (when the world is
// reset), for scenarios to look through.
void HostPrint(const std::string& text);
void SetOutputCapture(std::string* capture);
const std::string& HostLog();
void ClearHostLog();

}  // namespace toka_host

#endif
