// Placeholder until the dataref registry lands.
#include "loader/subsystems.h"
#include "toka/TOKAData.h"

TOKA_API TOKADataRef TOKAFindDataRef(const char*) { return nullptr; }
TOKA_API void TOKASetDatab(TOKADataRef, void*, int, int) {}
void TOKADataRefsCleanupHook(int) {}
