// A build of the plugin of the --watch test that calls a function nothing
// defines: the dynamic loader refuses it.
#define WATCH_VERSION 4
#define WATCH_MISSING_FUNCTION
#include "watch_plugin.h"
