// The plugin operations of the services the simulator carries out: files,
// paths and system services, scenery, aircraft, camera, graphics and
// navigation. The library keeps the owners of probes, objects, aircraft and
// the camera; the rest it passes on.
#include <cstring>

#include "fuzz/driver.h"

static const FuzzModule& module() { return *slots[me()].module; }
static bool live(const Picked& picked) { return picked.handle && picked.handle->live; }

// ---- files, paths and system services -------------------------------------------------

static void directory_contents() {
  char names[256];
  char* indices[8];
  int total = -1, returned = -1;
  std::string folder = root + (pick(2) ? "Resources/plugins" : "no such folder");
  TOKAGetDirectoryContents(folder.c_str(), pick(3), names, pick(4) ? sizeof names : 8,
                           pick(4) ? indices : nullptr, 8, &total, &returned);
}
static void directory_separator() { CHECK(std::strcmp(TOKAGetDirectorySeparator(), "/") == 0); }
static void extract_file_and_path() {
  char path[64];
  std::strcpy(path, pick(2) ? "/sim/Aircraft/plane.acf" : pick(2) ? "plane.acf" : "/sim/");
  TOKAExtractFileAndPath(path);
}
static void system_path() {
  char path[512];
  TOKAGetSystemPath(path);
  CHECK(root == path);
}
static void prefs_path() {
  char path[512];
  TOKAGetPrefsPath(path);
}
static void save_data_file() { TOKASaveDataFile(1 + pick(3), "situation.sit"); }
static void load_data_file() { TOKALoadDataFile(1 + pick(3), "situation.sit"); }
static void key_description() { CHECK(TOKAGetVirtualKeyDescription((char)next_byte()) != nullptr); }
static void versions() {
  int host = 0, toka = 0, second = 0;
  TOKAGetVersions(&host, &toka, &second);
  CHECK(toka == 210);
}
static void language() { TOKAGetLanguage(); }
static void debug_string() { TOKADebugString("fuzz\n"); }
static void dprintf_() { TOKA_dprintf("%s %d\n", "fuzz", next_byte()); }
static void speak() { TOKASpeakString("fuzz"); }
static void simulate_key() { TOKASimulateKeyPress(pick(4), next_byte()); }
static void reload_scenery() { TOKAReloadScenery(); }
static void initialized() { CHECK(TOKAInitialized() == 1); }
static void find_symbol() { CHECK(TOKAFindSymbol("NoSuchFunction") == nullptr); }

// ---- scenery ------------------------------------------------------------------------

static void create_probe() {
  TOKAProbeRef probe = TOKACreateProbe(pick(4) ? 0 : 1);
  CHECK(probe);
  add_handle(kProbes, probe, me());
}
static void destroy_probe() {
  Picked probe = pick_handle(kProbes);
  TOKADestroyProbe(probe.value);
  if (probe.handle) probe.handle->live = false;
}
static void probe_terrain() {
  Picked probe = pick_handle(kProbes);
  TOKAProbeInfo_t info = {};
  info.structSize = pick(4) ? (int)sizeof info : 4;
  int result = TOKAProbeTerrainXYZ(probe.value, 1, 2, 3, &info);
  // A probe the library does not know answers as a bad probe.
  if (!live(probe)) CHECK(result == TOKA_ProbeError);
}
static void load_object() {
  TOKAObjectRef object = TOKALoadObject(pick(4) ? "hangar.obj" : "");
  if (object) add_handle(kObjects, object, me());
}
static void load_object_async() {
  TOKALoadObjectAsync("hangar.obj", module().object_loaded, new_refcon(me()));
}
// Only the plugin's own objects can be unloaded; others are reported.
static void unload_object() {
  Picked object = pick_handle(kObjects);
  bool mine = live(object) && object.handle->owner == me();
  slots[me()].errors.clear();
  TOKAUnloadObject(object.value);
  expect_errors(me(), mine ? std::vector<std::string>{}
                           : std::vector<std::string>{"Unknown object for TOKAUnloadObject"});
  if (mine) object.handle->live = false;
}
static void draw_objects() {
  TOKADrawInfo_t at[2] = {{(int)sizeof(TOKADrawInfo_t), 1, 2, 3, 4, 5, 6},
                          {pick(4) ? (int)sizeof(TOKADrawInfo_t) : 0, 1, 2, 3, 4, 5, 6}};
  TOKADrawObjects(pick_handle(kObjects).value, pick(3), at, pick(2), pick(2));
}
static void lookup_objects() {
  TOKALookupObjects("lib/hangar", 47, -122, pick(4) ? module().object_found : nullptr,
                    new_refcon(me()));
}

// ---- aircraft and camera -------------------------------------------------------------

static void acquire_planes() {
  char model[] = "Aircraft/Other/other.acf";
  char* paths[] = {model, nullptr};
  TOKAAcquirePlanes(pick(2) ? paths : nullptr, pick(4) ? module().planes : nullptr,
                    new_refcon(me()));
}
static void release_planes() { TOKAReleasePlanes(); }
static void active_aircraft() { TOKASetActiveAircraftCount(pick(4)); }
static void aircraft_model() { TOKASetAircraftModel(1 + pick(3), "Aircraft/Other/other.acf"); }
static void disable_ai() { TOKADisableAIForPlane(pick(4)); }
static void draw_aircraft() { TOKADrawAircraft(1 + pick(3), 1, 2, 3, 4, 5, 6, pick(2), nullptr); }
static void count_aircraft() {
  int total = -1, active = -1, controller = -9;
  TOKACountAircraft(&total, &active, &controller);
  CHECK(total == 3);
}
static void nth_aircraft() {
  char file[512], path[512];
  TOKAGetNthAircraftModel(pick(3), file, path);
}
static void users_aircraft() { TOKASetUsersAircraft("Aircraft/Plane/plane.acf"); }
static void reinit_plane() { TOKAReinitUsersPlane(); }
static void place_user() { TOKAPlaceUserAtAirport("KSEA"); }
static void control_camera() {
  TOKAControlCamera(1 + pick(2), pick(4) ? module().camera : nullptr, new_refcon(me()));
}
static void dont_control_camera() { TOKADontControlCamera(); }
static void camera_controlled() {
  int how_long = -9;
  int held = TOKAIsCameraBeingControlled(pick(2) ? &how_long : nullptr);
  if (!held) CHECK(how_long == -9);
}
static void camera_position() {
  TOKACameraPosition_t position;
  TOKAReadCameraPosition(&position);
}

// ---- graphics ----------------------------------------------------------------------

static void graphics_state() {
  int b = next_byte();
  TOKASetGraphicsState(b & 1, b >> 1 & 3, b >> 3 & 1, b >> 4 & 1, b >> 5 & 1, b >> 6 & 1, b >> 7);
}
static void bind_texture() { TOKABindTexture2d(pick(8), pick(4)); }
static void texture_numbers() {
  int ids[4];
  TOKAGenerateTextureNumbers(ids, pick(5));
}
static void get_texture() { TOKAGetTexture(pick(8)); }
static void world_to_local() {
  double x, y, z;
  TOKAWorldToLocal(47, -122, 100, &x, &y, &z);
}
static void local_to_world() {
  double lat, lon, alt;
  TOKALocalToWorld(1, 2, 3, &lat, &lon, &alt);
}
static void dark_box() { TOKADrawTranslucentDarkBox(10, 50, 60, 10); }
static void draw_string() {
  float rgb[3] = {1, 1, 1};
  int width = 100;
  TOKADrawString(rgb, 10, 10, "fuzz", pick(2) ? &width : nullptr, pick(3));
}
static void draw_number() {
  float rgb[3] = {1, 1, 1};
  TOKADrawNumber(rgb, 10, 10, next_byte() / 3.0, 4, 2, pick(2), pick(3));
}
static void font_dimensions() {
  int width, height, digits;
  TOKAGetFontDimensions(pick(3), &width, &height, &digits);
}
static void measure_string() { CHECK(TOKAMeasureString(0, "fuzz", 4) == 32.0f); }

// ---- navigation ----------------------------------------------------------------------

static void first_navaid() { TOKAGetFirstNavAid(); }
static void next_navaid() { TOKAGetNextNavAid(pick(8)); }
static void first_of_type() { TOKAFindFirstNavAidOfType(1 << pick(8)); }
static void last_of_type() { TOKAFindLastNavAidOfType(1 << pick(8)); }
static void find_navaid() {
  float lat = 47, lon = -122;
  int frequency = 11000;
  TOKAFindNavAid("SEA", nullptr, pick(2) ? &lat : nullptr, &lon, &frequency, 1 << pick(8));
}
static void navaid_info() {
  int type, frequency;
  float lat, lon, height, heading;
  char id[32], name[256], reg[8];
  TOKAGetNavAidInfo(pick(8), &type, &lat, &lon, &height, &frequency, &heading, id, name, reg);
}
static void count_fms() { TOKACountFMSEntries(); }
static void displayed_fms() { TOKAGetDisplayedFMSEntry(); }
static void destination_fms() { TOKAGetDestinationFMSEntry(); }
static void set_displayed_fms() { TOKASetDisplayedFMSEntry(pick(8)); }
static void set_destination_fms() { TOKASetDestinationFMSEntry(pick(8)); }
static void fms_info() {
  int type, altitude;
  char id[32];
  TOKANavRef ref;
  float lat, lon;
  TOKAGetFMSEntryInfo(pick(8), &type, id, &ref, &altitude, &lat, &lon);
}
static void set_fms_info() { TOKASetFMSEntryInfo(pick(8), pick(8), 3000); }
static void set_fms_position() { TOKASetFMSEntryLatLon(pick(8), 47, -122, 3000); }
static void clear_fms() { TOKAClearFMSEntry(pick(8)); }
static void gps_type() { TOKAGetGPSDestinationType(); }
static void gps_destination() { TOKAGetGPSDestination(); }

const Op world_ops[] = {
    directory_contents, directory_separator, extract_file_and_path, system_path, prefs_path,
    save_data_file, load_data_file, key_description, versions, language, debug_string, dprintf_,
    speak, simulate_key, reload_scenery, initialized, find_symbol,
    create_probe, destroy_probe, probe_terrain, load_object, load_object_async, unload_object,
    draw_objects, lookup_objects,
    acquire_planes, release_planes, active_aircraft, aircraft_model, disable_ai, draw_aircraft,
    count_aircraft, nth_aircraft, users_aircraft, reinit_plane, place_user,
    control_camera, dont_control_camera, camera_controlled, camera_position,
    graphics_state, bind_texture, texture_numbers, get_texture, world_to_local, local_to_world,
    dark_box, draw_string, draw_number, font_dimensions, measure_string,
    first_navaid, next_navaid, first_of_type, last_of_type, find_navaid, navaid_info, count_fms,
    displayed_fms, destination_fms, set_displayed_fms, set_destination_fms, fms_info,
    set_fms_info, set_fms_position, clear_fms, gps_type, gps_destination};
const int world_op_count = sizeof world_ops / sizeof *world_ops;
