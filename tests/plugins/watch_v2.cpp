// A second build of the plugin of the --watch test.
#define WATCH_VERSION 2
#include "watch_plugin.h"
