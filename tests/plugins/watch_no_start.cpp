// A build of the plugin of the --watch test that lost its start entry.
#define WATCH_VERSION 3
#define WATCH_NO_START
#include "watch_plugin.h"
