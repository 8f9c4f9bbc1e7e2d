// toka-host live: a window on the user's desktop showing every frame as it
// is drawn, and the user's mouse and keys turned into scenario steps of the
// frame they happen in (and written to the --record file), so that they
// reach the plugins exactly as a scenario's would.
#ifndef TOKA_HOST_LIVE_WINDOW_H
#define TOKA_HOST_LIVE_WINDOW_H

#include <string>

#include "host/run.h"

namespace toka_host {

// Opens the window (and the recording); false with one line to print when
// there is no display.
bool OpenWindow(const HostOptions& options, std::string& error);
// Before a frame: what the user did since the last one becomes the frame's
// steps; closing the window ends the run.
void TakeWindowInput();
// After a frame: the frame as drawn.
void ShowFrame();
void CloseWindow();  // and the recording; nothing when no window is open

}  // namespace toka_host

#endif
