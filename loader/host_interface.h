// The host services table and the state kept from start-up.
#ifndef TOKA_LOADER_HOST_INTERFACE_H
#define TOKA_LOADER_HOST_INTERFACE_H

#include "toka/TOKAHost.h"

// Null until TOKAInitializePlugins. Read on every use: slots are never cached.
extern TOKAHostServices* gHostServices;
// The directory separator handed to plugins, "/" from start-up on.
extern char gDirSeparator[2];

#endif
