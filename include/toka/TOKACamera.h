/* Toka: camera control. */
#ifndef TOKA_CAMERA_H
#define TOKA_CAMERA_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

TOKA_END_DECLS

#endif
