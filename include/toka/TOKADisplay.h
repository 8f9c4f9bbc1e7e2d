/* Toka: windows, input, drawing phases and hot keys. */
#ifndef TOKA_DISPLAY_H
#define TOKA_DISPLAY_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

TOKA_END_DECLS

#endif
