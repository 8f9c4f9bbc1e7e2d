/* Toka: datarefs and shared data. */
#ifndef TOKA_DATA_H
#define TOKA_DATA_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* The handle of a registered dataref, or null. */
TOKA_API TOKADataRef TOKAFindDataRef(const char* name);

/* Writes count bytes at offset through the owner's byte accessor. */
TOKA_API void TOKASetDatab(TOKADataRef ref, void* values, int offset, int count);

TOKA_END_DECLS

#endif
