/* Toka: graphics services of the simulator. */
#ifndef TOKA_GRAPHICS_H
#define TOKA_GRAPHICS_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

TOKA_END_DECLS

#endif
