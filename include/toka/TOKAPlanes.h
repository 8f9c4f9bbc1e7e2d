/* Toka: the user's aircraft and the other aircraft. */
#ifndef TOKA_PLANES_H
#define TOKA_PLANES_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Writes the model file name and the full path of aircraft index (0 = the
 * user's aircraft) into two caller buffers of 512 bytes. */
TOKA_API void TOKAGetNthAircraftModel(int index, char* outFileName, char* outPath);

TOKA_END_DECLS

#endif
