// A module without the start entry.
#include "toka/TOKA.h"

TOKA_PLUGIN_EXPORT void OrvanePluginStop() {}
