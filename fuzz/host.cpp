// The simulator as the fuzzer plays it: a host services table that answers
// plainly, and the host entry points called as the program says.
#include <cstring>
#include <map>

#include "fuzz/driver.h"

TOKAHostServices host_table;
std::string root;
double elapsed;
std::vector<int> host_items;

static int next_host_id;
static std::map<std::string, TOKACommandRef> commands;
// The simulator's commands and objects, 16 bytes apart: an address a few
// bytes past one is never another.
static char command_records[16][16];
static char object_records[4096][16];
static int objects_loaded;
struct Load {
  TOKAObjectLoaded_f done;
  void* record;
};
static std::vector<Load> loads;

// Every service not named below answers 0 and writes nothing.
template <class R, class... A>
static void serve_nothing(R (*&service)(A...)) {
  service = [](A...) -> R { return R(); };
}

static void copy(char* out, const std::string& text) { std::strcpy(out, text.c_str()); }

static void install_answers() {
  TOKAHostServices& t = host_table;
  t.GetScreenSize = [](int* w, int* h) { *w = 1024, *h = 768; };
  t.GetMouseLocation = [](int* x, int* y, int) { *x = 150, *y = 200; };
  t.GetElapsedTime = [] { return elapsed; };
  t.GetNthAircraftModel = [](int index, char* path, char* file) {
    copy(path, index == 0 ? root + "Aircraft/Plane/plane.acf" : "");
    copy(file, index == 0 ? "plane.acf" : "");
  };
  t.CountAircraft = [] { return 3; };
  t.GetSystemPath = [](char* out) { copy(out, root); };
  t.GetPrefsPath = [](char* out) { copy(out, root + "prefs.txt"); };
  t.CreateMenu = [](int, int, const char*) { return ++next_host_id; };
  t.AppendMenuItem = [](int, int, const char*, int) {
    host_items.push_back(++next_host_id);
    return next_host_id;
  };
  t.CreateCommand = [](const char* name, const char*, int create) -> TOKACommandRef {
    auto found = commands.find(name);
    if (found != commands.end()) return found->second;
    if (!create || commands.size() == 16) return nullptr;
    return commands[name] = command_records[commands.size()];
  };
  t.CreateProbe = [] { return ++next_host_id; };
  t.MeasureString = [](int, const char*, int count) { return 8.0f * (float)count; };
  t.LoadObject = [](const char* path) -> TOKAObjectRef {
    if (!*path) return nullptr;
    return object_records[objects_loaded++ % 4096];
  };
  t.LookupObjects = [](const char*, float, float, TOKAObjectLibraryEnumerator_f found,
                       void* refcon) {
    if (found) found("objects/hangar.obj", refcon);
    return 1;
  };
  t.LoadObjectAsync = [](const char*, TOKAObjectLoaded_f done, void* record) {
    loads.push_back({done, record});
  };
}

void reset_host() {
  static bool installed = false;
  if (!installed) {
    installed = true;
    host_table.revision = 4;
    host_table.version = 300;
    TOKAHostServices& t = host_table;
    serve_nothing(t.GetScreenSize); serve_nothing(t.GetMouseLocation);
    serve_nothing(t.SetGraphicsState); serve_nothing(t.BindTexture2d);
    serve_nothing(t.GenerateTextureNumbers); serve_nothing(t.GetTexture);
    serve_nothing(t.WorldToLocal); serve_nothing(t.LocalToWorld);
    serve_nothing(t.DrawTranslucentDarkBox); serve_nothing(t.DrawString);
    serve_nothing(t.DrawNumber); serve_nothing(t.GetFontDimensions);
    serve_nothing(t.GetElapsedTime); serve_nothing(t.ReadCameraPosition);
    serve_nothing(t.DrawAircraft); serve_nothing(t.SetAircraftModel);
    serve_nothing(t.GetNthAircraftModel); serve_nothing(t.CountAircraft);
    serve_nothing(t.PlaceUserAtAirport); serve_nothing(t.SimulateKeyPress);
    serve_nothing(t.SpeakString); serve_nothing(t.CommandKeyStroke);
    serve_nothing(t.CommandButton); serve_nothing(t.GetSystemPath);
    serve_nothing(t.GetPrefsPath); serve_nothing(t.GetVersions); serve_nothing(t.GetLanguage);
    serve_nothing(t.DebugString); serve_nothing(t.CreateMenu); serve_nothing(t.AppendMenuItem);
    serve_nothing(t.SetMenuItemName); serve_nothing(t.DestroyMenu);
    serve_nothing(t.ReinitUsersPlane); serve_nothing(t.ReloadScenery);
    serve_nothing(t.GetFirstNavAid); serve_nothing(t.GetNextNavAid);
    serve_nothing(t.FindFirstNavAidOfType); serve_nothing(t.FindLastNavAidOfType);
    serve_nothing(t.FindNavAid); serve_nothing(t.GetNavAidInfo);
    serve_nothing(t.CountFMSEntries); serve_nothing(t.GetDisplayedFMSEntry);
    serve_nothing(t.GetDestinationFMSEntry); serve_nothing(t.SetDisplayedFMSEntry);
    serve_nothing(t.SetDestinationFMSEntry); serve_nothing(t.GetFMSEntryInfo);
    serve_nothing(t.SetFMSEntryInfo); serve_nothing(t.SetFMSEntryLatLon);
    serve_nothing(t.ClearFMSEntry); serve_nothing(t.GetGPSDestinationType);
    serve_nothing(t.GetGPSDestination); serve_nothing(t.ShowUserMessage);
    serve_nothing(t.ShowLoadingProgress); serve_nothing(t.CreateCommand);
    serve_nothing(t.CommandBegin); serve_nothing(t.CommandContinue); serve_nothing(t.CommandEnd);
    serve_nothing(t.CreateProbe); serve_nothing(t.ProbeTerrain); serve_nothing(t.FindSymbol);
    serve_nothing(t.MeasureString); serve_nothing(t.RemoveMenuItem); serve_nothing(t.LoadObject);
    serve_nothing(t.DrawObjectInstance); serve_nothing(t.UnloadObject);
    serve_nothing(t.LookupObjects); serve_nothing(t.LoadDataFile); serve_nothing(t.SaveDataFile);
    serve_nothing(t.LoadObjectAsync);
    install_answers();
  }
  elapsed = 0;
  next_host_id = 0;
  host_items.clear();
  objects_loaded = 0;
}

void complete_loads(bool all) {
  while (!loads.empty()) {
    Load load = loads.front();
    loads.erase(loads.begin());
    char path[2] = {(char)('a' + pick(2)), 0};
    load.done(pick(4) ? host_table.LoadObject(path) : nullptr, load.record);
    if (!all) return;
  }
}

// ---- host entry points ---------------------------------------------------------

// The simulator's events as the event hook takes them: flight loops (0, 10)
// most often, and the codes it ignores.
static void event() {
  static const int codes[] = {0, 0, 0, 10, 1, 2, 3, 3, 4, 5, 6, 7, 8, 8, 9, 11, 12, 13, 14, -1};
  int code = codes[pick(sizeof codes / sizeof *codes)];
  intptr_t param = pick(2);
  static std::string scenery;
  if (code == 12) {
    scenery = root + "Custom Scenery/Airport/";
    param = (intptr_t)scenery.c_str();
  }
  if (code == 0 || code == 10) elapsed += pick(4) * 0.25;
  TOKAEventHook(code, (float)elapsed, 0, param);
}

// Somewhere on screen where the program's windows often are.
static int screen_x() { return 100 + 50 * pick(6); }
static int screen_y() { return 100 + 50 * pick(6); }

static void enter_plugin() {
  Slot& slot = slots[pick(kSlots)];
  if (slot.id <= 0) return;
  if (!TOKAIsPluginEnabled(slot.id) && !TOKAEnablePlugin(slot.id)) return;
  TOKASendMessageToPlugin(slot.id, 0x7A0A, (void*)(intptr_t)(1 + pick(7)));
}

static void drawing() { TOKADoDrawingHook(pick(30), pick(2)); }
static void key_press() { TOKAKeyPressHook((char)next_byte(), pick(16), (char)next_byte()); }
static void mouse_click() { TOKAMouseClickHook(screen_x(), screen_y(), pick(2)); }
static void cursor() { TOKACursorHook(screen_x(), screen_y()); }
static void scroll() { TOKAScrollWheelHook(screen_x(), screen_y(), pick(2), next_int(-2, 2)); }
static int host_item() {
  return host_items.empty() ? pick(8) : host_items[pick(host_items.size())];
}
static void menu_pick() { TOKAMenuHook(host_item()); }
static void menu_check() {
  int checked = 7;
  TOKACheckMenuHook(pick(next_host_id + 2), pick(4), &checked);
}
static void menu_enabled() { TOKAMenuItemEnabled(pick(next_host_id + 2), pick(4)); }
static void camera() {
  float p[7] = {1, 2, 3, 4, 5, 6, 1};
  TOKACameraHook(p, p + 1, p + 2, p + 3, p + 4, p + 5, p + 6);
}
static void command() {
  int bits = next_byte();
  TOKACommandHook(pick_handle(kCommands).value, bits & 1, (bits >> 1) & 1, (bits >> 2) & 1);
}
static void planes() { TOKAGetNumberPlanesToHandle(pick(4), pick(2)); }
static void plane_name() {
  char name[512] = "", path[512] = "";
  TOKAUpdatePlaneNameAndPath(pick(4), name, path);
}
static void load_one() { complete_loads(false); }

static const Op host_ops[] = {
    enter_plugin, enter_plugin, enter_plugin, enter_plugin, event,    event,       event,
    drawing,      drawing,      key_press,    mouse_click,  cursor,   scroll,      menu_pick,
    menu_check,   menu_enabled, camera,       command,      planes,   plane_name,  load_one};

void run_host_op() {
  host_ops[pick(sizeof host_ops / sizeof *host_ops)]();
  // Whatever the plugins did, the simulator is dispatched again afterwards.
  CHECK(TOKAGetMyID() == 0);
}
