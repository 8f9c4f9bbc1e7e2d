/* Toka: files, paths, key names, versions and messages to the simulator. */
#ifndef TOKA_UTILITIES_H
#define TOKA_UTILITIES_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Writes text to the simulator's log as it stands (add your own newline). */
TOKA_API void TOKADebugString(const char* text);

/* 1 once the simulator has started the library, else 0. */
TOKA_API int TOKAInitialized(void);

TOKA_END_DECLS

#endif
