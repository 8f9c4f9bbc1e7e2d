/* Toka: navigation, FMS and GPS services of the simulator.
 *
 * Each call goes straight to the simulator, with its arguments unchanged and
 * its result returned as the simulator gave it; nothing is checked. Navaid
 * types, the fields behind the out pointers and the result codes are the
 * simulator's. A TOKANavRef stays valid while the simulator's navigation
 * data is loaded. */
#ifndef TOKA_NAVIGATION_H
#define TOKA_NAVIGATION_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Walking the navigation database: the first navaid, the one after navAid,
 * and the first or last navaid of a type. */
TOKA_API TOKANavRef TOKAGetFirstNavAid(void);
TOKA_API TOKANavRef TOKAGetNextNavAid(TOKANavRef navAid);
TOKA_API TOKANavRef TOKAFindFirstNavAidOfType(int type);
TOKA_API TOKANavRef TOKAFindLastNavAidOfType(int type);

/* Searches for a navaid by fragments of its name and ID, near a position,
 * by frequency and by type. */
TOKA_API TOKANavRef TOKAFindNavAid(const char* nameFragment, const char* idFragment,
                                   float* latitude, float* longitude, int* frequency, int type);

/* Fills the out pointers that are not null with what the simulator knows of
 * navAid. */
TOKA_API int TOKAGetNavAidInfo(TOKANavRef navAid, int* outType, float* outLatitude,
                               float* outLongitude, float* outHeight, int* outFrequency,
                               float* outHeading, char* outID, char* outName, char* outReg);

/* The flight management system's entries: how many there are, which one is
 * displayed and which one is the destination. */
TOKA_API int TOKACountFMSEntries(void);
TOKA_API int TOKAGetDisplayedFMSEntry(void);
TOKA_API int TOKAGetDestinationFMSEntry(void);
TOKA_API int TOKASetDisplayedFMSEntry(int index);
TOKA_API int TOKASetDestinationFMSEntry(int index);

/* Reads, sets and clears one entry. */
TOKA_API int TOKAGetFMSEntryInfo(int index, int* outType, char* outID, TOKANavRef* outRef,
                                 int* outAltitude, float* outLatitude, float* outLongitude);
TOKA_API int TOKASetFMSEntryInfo(int index, TOKANavRef navAid, int altitude);
TOKA_API int TOKASetFMSEntryLatLon(int index, float latitude, float longitude, int altitude);
TOKA_API int TOKAClearFMSEntry(int index);

/* The GPS destination and its type. */
TOKA_API int TOKAGetGPSDestinationType(void);
TOKA_API int TOKAGetGPSDestination(void);

TOKA_END_DECLS

#endif
