// The fuzzer's plugin: five entry points and every kind of callback, each a
// trampoline into the executable that loaded it.
#include <dlfcn.h>

#include "fuzz/fuzz.h"

static const char* self() {
  Dl_info info;
  dladdr((void*)&self, &info);
  return info.dli_fname;
}

static int call(int kind, void* refcon, const void* data = nullptr, int value = 0) {
  return FuzzCallback(self(), kind, refcon, data, value);
}

static float flight_loop(float, float, int, void* r) { return (float)call(kFlightLoop, r) / 4; }
static void draw_window(TOKAWindowID, void* r) { call(kDrawWindow, r); }
static void key(TOKAWindowID, char, int, char, void* r, int) { call(kKey, r); }
static int mouse(TOKAWindowID, int, int, int, void* r) { return call(kMouse, r); }
static int cursor(TOKAWindowID, int, int, void* r) { return call(kCursor, r); }
static int wheel(TOKAWindowID, int, int, int, int, void* r) { return call(kWheel, r); }
static int sniffer(char, int, char, void* r) { return call(kSniffer, r); }
static int draw(int, int, void* r) { return call(kDraw, r); }
static void hot_key(void* r) { call(kHotKey, r); }
static void menu(void* r, void*) { call(kMenu, r); }
static int command(TOKACommandRef, int, void* r) { return call(kCommand, r); }
static int read_int(void* r) { return call(kReadInt, r); }
static void write_int(void* r, int) { call(kWriteInt, r); }
static float read_float(void* r) { return (float)call(kReadFloat, r); }
static void write_float(void* r, float) { call(kWriteFloat, r); }
static double read_double(void* r) { return call(kReadDouble, r); }
static void write_double(void* r, double) { call(kWriteDouble, r); }
static int read_ints(void* r, int*, int, int) { return call(kReadInts, r); }
static void write_ints(void* r, int*, int, int) { call(kWriteInts, r); }
static int read_floats(void* r, float*, int, int) { return call(kReadFloats, r); }
static void write_floats(void* r, float*, int, int) { call(kWriteFloats, r); }
static int read_bytes(void* r, void*, int, int) { return call(kReadBytes, r); }
static void write_bytes(void* r, void*, int, int) { call(kWriteBytes, r); }
static void data_changed(void* r) { call(kDataChanged, r); }
static void feature(const char* name, void* r) { call(kFeature, r, name); }
static void error(const char* text) { call(kError, nullptr, text); }
static void object_loaded(TOKAObjectRef object, void* r) { call(kObjectLoaded, r, object); }
static void object_found(const char* path, void* r) { call(kObjectFound, r, path); }
static void planes(void* r) { call(kPlanes, r); }
static int camera(TOKACameraPosition_t* p, int losing, void* r) { return call(kCamera, r, p, losing); }

static const FuzzModule module = {
    flight_loop, draw_window, key,        mouse,         cursor,       wheel,
    sniffer,     draw,        hot_key,    menu,          command,      read_int,
    write_int,   read_float,  write_float, read_double,  write_double, read_ints,
    write_ints,  read_floats, write_floats, read_bytes,  write_bytes,  data_changed,
    feature,     error,       object_loaded, object_found, planes,     camera};

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  return FuzzStart(self(), &module, name, signature, description);
}
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) { return call(kEnable, nullptr); }
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) { call(kDisable, nullptr); }
TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) { call(kStop, nullptr); }
TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(int, int message, void* param) {
  call(kMessage, param, nullptr, message);
}
