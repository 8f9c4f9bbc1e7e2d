/* Toka: terrain probes and scenery objects.
 *
 * The terrain test, the object files and their drawing belong to the
 * simulator; the library records which plugin owns each probe and object and
 * withdraws them when that plugin is unloaded. */
#ifndef TOKA_SCENERY_H
#define TOKA_SCENERY_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Probe types. Only the straight-down probe exists. */
enum { TOKA_ProbeY = 0 };

/* Results of TOKAProbeTerrainXYZ. */
enum {
  TOKA_ProbeHitTerrain = 0, /* the result structure was filled */
  TOKA_ProbeError = 1,      /* bad probe type, size field or handle: nothing was asked */
  TOKA_ProbeMissed = 2      /* the simulator found no terrain there */
};

/* Result of a terrain probe (44 bytes). The caller sets structSize to
 * sizeof(TOKAProbeInfo_t); the simulator fills the rest. */
typedef struct TOKAProbeInfo_t {
  int structSize;
  float locationX, locationY, locationZ;
  float normalX, normalY, normalZ;
  float velocityX, velocityY, velocityZ;
  int isWet;
} TOKAProbeInfo_t;

/* Position of one object instance to draw (28 bytes). The caller sets
 * structSize to sizeof(TOKADrawInfo_t). */
typedef struct TOKADrawInfo_t {
  int structSize;
  float x, y, z;
  float pitch, heading, roll;
} TOKADrawInfo_t;

/* Creates a probe of the given type owned by the calling plugin. The handle
 * stays valid until TOKADestroyProbe or until the plugin is unloaded. */
TOKA_API TOKAProbeRef TOKACreateProbe(int probeType);

/* Destroys a probe of any plugin. Unknown handles are ignored. */
TOKA_API void TOKADestroyProbe(TOKAProbeRef probe);

/* Asks the simulator for the terrain below (x, y, z), local coordinates.
 * info->structSize must be sizeof(TOKAProbeInfo_t). Returns one of the
 * TOKA_Probe... results above. */
TOKA_API int TOKAProbeTerrainXYZ(TOKAProbeRef probe, float x, float y, float z,
                                 TOKAProbeInfo_t* info);

/* Loads an object file now. Returns the object, owned by the calling
 * plugin, or null if the simulator could not load it. */
TOKA_API TOKAObjectRef TOKALoadObject(const char* path);

/* Starts loading an object file in the background. When the simulator has
 * finished, callback(object, refcon) runs in the calling plugin: at once if
 * the plugin is enabled, else when it is next enabled. A failed load passes
 * a null object. The object is then owned by the plugin as after
 * TOKALoadObject. If the plugin is unloaded first, the object is unloaded
 * again and the callback never runs. */
TOKA_API void TOKALoadObjectAsync(const char* path, TOKAObjectLoaded_f callback, void* refcon);

/* Unloads an object the calling plugin loaded. Reports "Unknown object for
 * TOKAUnloadObject" for any other object and leaves it alone. */
TOKA_API void TOKAUnloadObject(TOKAObjectRef object);

/* Draws count instances of an object at the given positions. Only while the
 * calling plugin has an error callback are the arguments checked: an object
 * it does not own reports "Illegal object, or object not owned by this
 * plugin." and a position with a wrong structSize reports "Struct size
 * mismatch for TOKADrawObjects"; either way nothing is drawn. */
TOKA_API void TOKADrawObjects(TOKAObjectRef object, int count, TOKADrawInfo_t* locations,
                              int lighting, int earthRelative);

/* Asks the simulator for the object files that a library path stands for
 * near (latitude, longitude); enumerator(filePath, refcon) is called by the
 * simulator for each. Returns the simulator's count. */
TOKA_API int TOKALookupObjects(const char* path, float latitude, float longitude,
                               TOKAObjectLibraryEnumerator_f enumerator, void* refcon);

TOKA_END_DECLS

#endif
