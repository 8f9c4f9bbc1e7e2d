/* Toka: terrain probes and scenery objects. */
#ifndef TOKA_SCENERY_H
#define TOKA_SCENERY_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

TOKA_END_DECLS

#endif
