/* Toka: flight loops. */
#ifndef TOKA_PROCESSING_H
#define TOKA_PROCESSING_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

TOKA_END_DECLS

#endif
