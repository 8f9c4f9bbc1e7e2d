// A build of the plugin of the --watch test whose start entry refuses to
// start.
#define WATCH_VERSION 5
#define WATCH_START_RESULT 0
#include "watch_plugin.h"
