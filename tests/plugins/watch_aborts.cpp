// A build of the plugin of the --watch test that aborts as soon as it is
// loaded, before any entry point runs.
#define WATCH_VERSION 6
#define WATCH_ABORTS_WHEN_LOADED
#include "watch_plugin.h"
