// toka-host --watch: plugins reloaded between frames when their files are
// rebuilt, so that a plugin author sees a new build without restarting.
#ifndef TOKA_HOST_LIVE_WATCH_H
#define TOKA_HOST_LIVE_WATCH_H

namespace toka_host {

// Starts watching the files of the plugins loaded now.
void WatchPlugins();
// Between frames: when a watched file was rewritten and has stopped
// changing, reloads the plugins through the library's own reload path.
void ReloadRebuiltPlugins();

}  // namespace toka_host

#endif
