/* Toka: the whole plugin interface. Plugins include this header, or only
 * the families they use. */
#ifndef TOKA_H
#define TOKA_H

#include "TOKADefs.h"
#include "TOKAPlugins.h"
#include "TOKAData.h"
#include "TOKAProcessing.h"
#include "TOKADisplay.h"
#include "TOKAMenus.h"
#include "TOKACommands.h"
#include "TOKAUtilities.h"
#include "TOKAScenery.h"
#include "TOKAPlanes.h"
#include "TOKACamera.h"
#include "TOKAGraphics.h"
#include "TOKANavigation.h"

#endif
