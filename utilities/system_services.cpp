// Versions, language, debug output and other small services of the host.
#include "loader/host_interface.h"
#include "toka/TOKAUtilities.h"

TOKA_API void TOKADebugString(const char* text) {
  gHostServices->DebugString(text);
}

TOKA_API int TOKAInitialized(void) {
  return gHostServices != nullptr ? 1 : 0;
}
