/* Toka: navigation, FMS and GPS services of the simulator. */
#ifndef TOKA_NAVIGATION_H
#define TOKA_NAVIGATION_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

TOKA_END_DECLS

#endif
