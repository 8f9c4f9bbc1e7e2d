// The first build of the plugin of the --watch test.
#define WATCH_VERSION 1
#include "watch_plugin.h"
