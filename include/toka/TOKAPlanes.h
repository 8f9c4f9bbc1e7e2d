/* Toka: the user's aircraft and the other aircraft.
 *
 * Aircraft index 0 is the user's aircraft; 1 and up are the others. One
 * plugin at a time may acquire the other aircraft: it then chooses their
 * models, how many the simulator keeps active, and draws them. */
#ifndef TOKA_PLANES_H
#define TOKA_PLANES_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Called once the other aircraft are released, for a plugin that asked for
 * them while another plugin held them. */
typedef void (*TOKAPlanesAvailable_f)(void* refcon);

/* Takes the other aircraft for the calling plugin. paths (may be null) is a
 * null-terminated array of model paths for aircraft 0, 1, ... that the
 * simulator picks up as it loads them. Returns 1 if the caller holds the
 * aircraft (also when it already did: paths are then ignored). Returns 0 when
 * another plugin holds them; callback (if not null) is then called with
 * refcon once they are released. */
TOKA_API int TOKAAcquirePlanes(char** paths, TOKAPlanesAvailable_f callback, void* refcon);

/* Gives the other aircraft back to the simulator (only the holder can) and
 * tells every plugin that asked for them meanwhile, in the order they asked. */
TOKA_API void TOKAReleasePlanes(void);

/* The holder limits the number of aircraft the simulator keeps active. */
TOKA_API void TOKASetActiveAircraftCount(int count);

/* The holder chooses the model of aircraft index; the simulator loads it at
 * once if it handles that many aircraft, else when it does. */
TOKA_API void TOKASetAircraftModel(int index, const char* path);

/* Turns the simulator's own control of aircraft index off (through the
 * dataref "sim/private/net_disables/ai_loc[index]"). */
TOKA_API void TOKADisableAIForPlane(int index);

/* The holder draws aircraft index at a position and attitude. */
TOKA_API void TOKADrawAircraft(int index, float x, float y, float z, float pitch, float roll,
                               float yaw, int fullDraw, void* drawStateInfo);

/* Writes the number of aircraft, the number active (the holder's limit, if
 * lower) and the holding plugin (-1 for none) into each non-null pointer. */
TOKA_API void TOKACountAircraft(int* outTotal, int* outActive, int* outController);

/* Writes the model file name and the full path of aircraft index (0 = the
 * user's aircraft) into two caller buffers of 512 bytes; a null buffer is
 * left out. */
TOKA_API void TOKAGetNthAircraftModel(int index, char* outFileName, char* outPath);

/* Loads a new model for the user's aircraft. A null path reports "Null
 * aircraft path passed to TOKASetUsersAircraft." and loads nothing. */
TOKA_API void TOKASetUsersAircraft(const char* path);

/* The holder re-initialises the user's aircraft (simulators of version 284
 * and later). */
TOKA_API void TOKAReinitUsersPlane(void);

/* Places the user's aircraft at an airport, by its code. */
TOKA_API void TOKAPlaceUserAtAirport(const char* airportCode);

TOKA_END_DECLS

#endif
