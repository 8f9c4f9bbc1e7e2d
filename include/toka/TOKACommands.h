/* Toka: commands and their handlers. */
#ifndef TOKA_COMMANDS_H
#define TOKA_COMMANDS_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

TOKA_END_DECLS

#endif
