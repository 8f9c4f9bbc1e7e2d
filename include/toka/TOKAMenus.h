/* Toka: menus and menu items. */
#ifndef TOKA_MENUS_H
#define TOKA_MENUS_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

TOKA_END_DECLS

#endif
