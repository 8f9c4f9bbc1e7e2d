// The fuzzer of the whole interface: declarations shared by the executable
// and the plugin module it loads three times.
//
// The plugin module holds every callback a plugin can hand the library, as
// small trampolines into the executable. Callbacks live in the module, not
// in the executable, so that a call the library makes into a plugin after
// unloading it lands in unmapped code and fails at once.
#ifndef TOKA_FUZZ_H
#define TOKA_FUZZ_H

#include "toka/TOKA.h"

// What a callback is, as the trampolines tell the executable.
enum FuzzKind {
  kFlightLoop, kDrawWindow, kKey, kMouse, kCursor, kWheel, kSniffer, kDraw, kHotKey,
  kMenu, kCommand, kReadInt, kWriteInt, kReadFloat, kWriteFloat, kReadDouble, kWriteDouble,
  kReadInts, kWriteInts, kReadFloats, kWriteFloats, kReadBytes, kWriteBytes, kDataChanged,
  kFeature, kError, kObjectLoaded, kObjectFound, kPlanes, kCamera,
  kStart, kEnable, kDisable, kStop, kMessage, kKindCount
};

// The callbacks of one loaded copy of the module.
struct FuzzModule {
  TOKAFlightLoop_f flight_loop;
  TOKADrawWindow_f draw_window;
  TOKAHandleKey_f key;
  TOKAHandleMouseClick_f mouse;
  TOKAHandleCursor_f cursor;
  TOKAHandleMouseWheel_f wheel;
  TOKAKeySniffer_f sniffer;
  TOKADrawCallback_f draw;
  TOKAHotKey_f hot_key;
  TOKAMenuHandler_f menu;
  TOKACommandCallback_f command;
  TOKAGetDatai_f read_int;
  TOKASetDatai_f write_int;
  TOKAGetDataf_f read_float;
  TOKASetDataf_f write_float;
  TOKAGetDatad_f read_double;
  TOKASetDatad_f write_double;
  TOKAGetDatavi_f read_ints;
  TOKASetDatavi_f write_ints;
  TOKAGetDatavf_f read_floats;
  TOKASetDatavf_f write_floats;
  TOKAGetDatab_f read_bytes;
  TOKASetDatab_f write_bytes;
  TOKADataChanged_f data_changed;
  TOKAFeatureEnumerator_f feature;
  TOKAError_f error;
  TOKAObjectLoaded_f object_loaded;
  TOKAObjectLibraryEnumerator_f object_found;
  TOKAPlanesAvailable_f planes;
  TOKACameraControl_f camera;
};

// Implemented by the executable (exported to the modules).
extern "C" {
// A callback of the module at path ran; returns what the callback returns.
// refcon is the callback's refcon (a message's param); data is the error,
// feature or file text, or the loaded object; value is a message's number.
TOKA_PLUGIN_EXPORT int FuzzCallback(const char* path, int kind, void* refcon, const void* data,
                                    int value);
// The module at path starts: it hands over its callbacks.
TOKA_PLUGIN_EXPORT int FuzzStart(const char* path, const FuzzModule* module, char* name,
                                 char* signature, char* description);
}

#endif
