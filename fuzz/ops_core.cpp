// The plugin operations of the library's own bookkeeping: plugins and
// messages, datarefs and shared data, flight loops, windows, input,
// drawing, hot keys, menus and commands. Each reads its arguments from the
// program and, where the library validates what it is given, checks the
// documented answer.
#include <cstring>

#include "fuzz/driver.h"

static const FuzzModule& module() { return *slots[me()].module; }
static int plugin_id() {
  static const int extra[] = {-1, 0, 7, -5, 1000};
  int n = pick(kSlots + 5);
  return n < kSlots ? slots[n].id : extra[n - kSlots];
}
// Runs call as the calling plugin and checks the errors it was told.
template <class F>
static void expecting(std::vector<std::string> errors, F call) {
  slots[me()].errors.clear();
  call();
  expect_errors(me(), errors);
}

// Sniffers, draw callbacks, command handlers and subscriptions are named by
// their values: the refcon picks one of four per plugin.
static void* small_refcon() { return (void*)(uintptr_t)(((1 + pick(4)) << 2) | me()); }

// ---- plugins, messages, features, errors -------------------------------------------

static void get_my_id() { CHECK(TOKAGetMyID() == slots[me()].id); }
static void count_plugins() { CHECK(TOKACountPlugins() > slots[me()].id); }
static void get_nth_plugin() {
  int n = next_int(-3, 300);
  CHECK(TOKAGetNthPlugin(n) == n);
}
// Whether plugin n is loaded and named, and so found by its path and signature.
static bool settled(int n) { return n < 2 && slots[n].id > 0 && !slots[n].starting; }
static void find_by_path() {
  int n = pick(kSlots);
  int id = TOKAFindPluginByPath(slots[n].path.c_str());
  // Unloaded records stay in the list until all go (an aircraft plugin's
  // may come before its next load).
  if (settled(n)) CHECK(id == slots[n].id);
  CHECK(TOKAFindPluginByPath("dravik.orvane.orvane") == 0);
}
static void find_by_signature() {
  int n = pick(kSlots);
  char signature[16];
  std::sprintf(signature, "fuzz.%c", 'a' + n);
  if (settled(n)) CHECK(TOKAFindPluginBySignature(signature) == slots[n].id);
  CHECK(TOKAFindPluginBySignature("fuzz.none") == -1);
}
static void get_plugin_info() {
  // The ID is not checked: the caller must pass one that exists.
  char name[256], path[256], signature[256], description[256];
  TOKAGetPluginInfo(pick(TOKACountPlugins()), name, pick(2) ? path : nullptr, signature,
                    description);
  TOKAGetPluginInfo(slots[me()].id, name, nullptr, nullptr, nullptr);
  if (!slots[me()].starting) CHECK(name[0] == 'f' && name[5] == 'a' + me());
}
static void is_enabled() {
  int id = plugin_id();
  int enabled = TOKAIsPluginEnabled(id);
  if (id < 0 || id >= TOKACountPlugins()) CHECK(enabled == 0);
}
static void enable_plugin() { TOKAEnablePlugin(plugin_id()); }
static void disable_plugin() { TOKADisablePlugin(pick(3) ? plugin_id() : slots[me()].id); }
static void reload_plugins() { TOKAReloadPlugins(); }
static void send_message() {
  TOKASendMessageToPlugin(plugin_id(), pick(2) ? 0x7A0A : next_byte(),
                          (void*)(intptr_t)pick(3));
}
static const char* feature_name() {
  static const char* const names[] = {"TOKA_WANTS_REFLECTIONS", "TOKA_USE_NATIVE_PATHS",
                                      "TOKA_NO_SUCH_FEATURE", ""};
  return names[pick(4)];
}
static void has_feature() {
  const char* name = feature_name();
  CHECK(TOKAHasFeature(name) == (std::strncmp(name, "TOKA_", 5) == 0 && name[5] != 'N'));
}
static const char* const kBadFeature = "Illegal feature name passed to TOKAEnableFeature";
static void is_feature_enabled() {
  const char* name = feature_name();
  bool known = TOKAHasFeature(name);
  expecting(known ? std::vector<std::string>{} : std::vector<std::string>{kBadFeature}, [&] {
    int enabled = TOKAIsFeatureEnabled(name);
    if (!known) CHECK(enabled == 0);
  });
}
static void enable_feature() {
  const char* name = feature_name();
  int value = pick(3);
  bool known = TOKAHasFeature(name);
  expecting(known ? std::vector<std::string>{} : std::vector<std::string>{kBadFeature},
            [&] { TOKAEnableFeature(name, value); });
  if (known) CHECK(TOKAIsFeatureEnabled(name) == value);
}
static void enumerate_features() { TOKAEnumerateFeatures(module().feature, new_refcon(me())); }
static void set_error_callback() {
  bool install = pick(4) != 0;
  TOKASetErrorCallback(install ? module().error : nullptr);
  slots[me()].error_callback = install;
}
static void log_warning() { TOKALogPluginWarning(pick(2) ? "careful" : ""); }

// ---- datarefs and shared data ------------------------------------------------------

static const char* const kDataNames[] = {"fuzz/int", "fuzz/float", "fuzz/array", "fuzz/bytes"};
static const char* const kSharedNames[] = {"fuzz/shared/int",    "fuzz/shared/float",
                                           "fuzz/shared/double", "fuzz/shared/floats",
                                           "fuzz/shared/ints",   "fuzz/shared/bytes"};
static const int kSharedTypes[] = {1, 2, 4, 8, 16, 32};

// Shared data outlives every plugin: the program's items are made with the
// library, so that each input starts from the same state.
void share_items() {
  for (int n = 0; n < 6; ++n)
    CHECK(TOKAShareData(kSharedNames[n], kSharedTypes[n], nullptr, nullptr));
}

static void find_dataref() {
  int n = pick(10);
  const char* name = n < 4 ? kDataNames[n] : kSharedNames[n - 4];
  TOKADataRef ref = TOKAFindDataRef(name);
  Handle* handle = ref ? find_handle(kDataRefs, ref) : nullptr;
  if (n >= 4) {
    CHECK(ref);
    if (!handle) add_handle(kDataRefs, ref, -1);
  }
  // A name the program registered is found exactly while it has an owner.
  if (n < 4 && handle) CHECK(handle->live);
}
static void register_dataref() {
  int i = me();
  const FuzzModule& m = module();
  const char* name = kDataNames[pick(4)];
  TOKADataRef before = TOKAFindDataRef(name);
  bool some = pick(4) != 0;  // some callbacks, or none at all
  TOKADataRef ref;
  expecting(before ? std::vector<std::string>{"Dataref is already registered by someone else."}
                   : std::vector<std::string>{},
            [&] {
              ref = TOKARegisterDataAccessor(
                  name, pick(64), pick(2), some ? m.read_int : nullptr,
                  some ? m.write_int : nullptr,
                  some ? m.read_float : nullptr, some ? m.write_float : nullptr,
                  some ? m.read_double : nullptr, some ? m.write_double : nullptr,
                  some ? m.read_ints : nullptr, some ? m.write_ints : nullptr,
                  some ? m.read_floats : nullptr, some ? m.write_floats : nullptr,
                  some ? m.read_bytes : nullptr, some ? m.write_bytes : nullptr, new_refcon(i),
                  new_refcon(i));
            });
  if (before) {
    CHECK(ref == before);
  } else {
    CHECK(ref && TOKAIsDataRefGood(ref));
    add_handle(kDataRefs, ref, i);
  }
}
static const char* const kIllegalDataRef = "Dataref is illegal and cannot be unregistered.";
static const char* const kNotYours = "Dataref is not owned by you - you cannot unregsiter.";
static void unregister_dataref() {
  Picked ref = pick_handle(kDataRefs);
  const char* error = nullptr;
  if (!ref.handle)
    error = kIllegalDataRef;
  else if (!ref.handle->live || ref.handle->owner != me())
    error = kNotYours;
  expecting(error ? std::vector<std::string>{error} : std::vector<std::string>{},
            [&] { TOKAUnregisterDataAccessor(ref.value); });
  if (!error) ref.handle->live = false;
}
static void is_dataref_good() {
  Picked ref = pick_handle(kDataRefs);
  CHECK(TOKAIsDataRefGood(ref.value) == (ref.handle && ref.handle->live));
}
// The typed calls and the two below read the record behind the handle
// without looking it up (they are the busiest calls of all): they are given
// handles the library gave out, live or unregistered (records are never
// freed), or null.
static TOKADataRef dataref() {
  int n = pick(6);
  if (n == 0) return nullptr;
  if (TOKADataRef ref = TOKAFindDataRef(n < 4 ? kDataNames[pick(4)] : kSharedNames[pick(6)]))
    return ref;
  Picked any = pick_handle(kDataRefs);
  return any.handle ? any.value : nullptr;
}
static void can_write() {
  TOKADataRef ref = dataref();
  int writable = TOKACanWriteDataRef(ref);
  if (!ref) CHECK(writable == 0);
}
static void get_types() {
  TOKADataRef ref = dataref();
  int types = TOKAGetDataRefTypes(ref);
  if (!ref) CHECK(types == 0);
}
static void get_int() {
  TOKADataRef ref = dataref();
  int value = TOKAGetDatai(ref);
  if (!ref) CHECK(value == 0);
}
static void set_int() { TOKASetDatai(dataref(), next_byte()); }
static void get_float() {
  TOKADataRef ref = dataref();
  float value = TOKAGetDataf(ref);
  if (!ref) CHECK(value == 0);
}
static void set_float() { TOKASetDataf(dataref(), next_byte() / 4.0f); }
static void get_double() {
  TOKADataRef ref = dataref();
  double value = TOKAGetDatad(ref);
  if (!ref) CHECK(value == 0);
}
static void set_double() { TOKASetDatad(dataref(), next_byte() / 8.0); }
static void get_ints() {
  int values[8];
  TOKAGetDatavi(dataref(), pick(4) ? values : nullptr, pick(8), pick(9));
}
static void set_ints() {
  int values[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  TOKASetDatavi(dataref(), values, pick(8), pick(9));
}
static void get_floats() {
  float values[8];
  TOKAGetDatavf(dataref(), pick(4) ? values : nullptr, pick(8), pick(9));
}
static void set_floats() {
  float values[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  TOKASetDatavf(dataref(), values, pick(8), pick(9));
}
static void get_bytes() {
  char values[32];
  TOKAGetDatab(dataref(), pick(4) ? values : nullptr, pick(32), pick(33));
}
static void set_bytes() {
  char values[32] = "thirty-one bytes of plain text.";
  TOKASetDatab(dataref(), values, pick(32), pick(33));
}
// A subscription's refcon is one of four per plugin.
static void share_data() {
  int n = pick(6);
  int type = pick(4) ? kSharedTypes[n] : kSharedTypes[pick(6)];
  int shared = TOKAShareData(kSharedNames[n], type, pick(4) ? module().data_changed : nullptr,
                             small_refcon());
  CHECK(shared == (type == kSharedTypes[n]));
}
static void unshare_data() {
  int n = pick(6);
  TOKAUnshareData(kSharedNames[n], kSharedTypes[n], module().data_changed, small_refcon());
}

// ---- flight loops --------------------------------------------------------------------

static void elapsed_time() { CHECK(TOKAGetElapsedTime() == (float)elapsed); }
static void cycle_number() { CHECK(TOKAGetCycleNumber() >= 0); }
static void create_loop() {
  int bits = next_byte();
  TOKACreateFlightLoop_t params = {(int)sizeof params, bits & 1, module().flight_loop,
                                   new_refcon(me())};
  std::vector<std::string> errors;
  if (bits & 2) params.structSize = 16 + 8 * (sizeof(void*) == 4);
  if (bits & 4) params.phase = 2;
  if (bits & 8) params.callback = nullptr;
  if (params.structSize != (int)sizeof params)
    errors.push_back("Illegal struct size for TOKACreateFlightLoop");
  if (bits & 4) errors.push_back("Illegal phase type for TOKACreateFlightLoop");
  if (bits & 8) errors.push_back("Null callback for TOKACreateFlightLoop");
  TOKAFlightLoopID loop;
  expecting(errors, [&] { loop = TOKACreateFlightLoop(&params); });
  CHECK(loop);
  // A loop without a callback is not one the older calls can name.
  add_handle(kLoops, loop, me(), params.callback ? params.refcon : nullptr);
}
// Another plugin's loop is refused with a report; a handle the library does
// not know (any more) is ignored.
static void schedule_loop() {
  Picked loop = pick_handle(kLoops);
  bool foreign = loop.handle && loop.handle->live && loop.handle->owner != me();
  expecting(foreign ? std::vector<std::string>{"Attempt to schedule a flight loop callback owned "
                                               "by another plugin."}
                    : std::vector<std::string>{},
            [&] { TOKAScheduleFlightLoop(loop.value, next_int(-2, 3) / 4.0f, pick(2)); });
}
static void destroy_loop() {
  Picked loop = pick_handle(kLoops);
  bool live = loop.handle && loop.handle->live;
  bool foreign = live && loop.handle->owner != me();
  expecting(foreign ? std::vector<std::string>{"Attempt to remove a flight loop callback owned "
                                               "by another plugin."}
                    : std::vector<std::string>{},
            [&] { TOKADestroyFlightLoop(loop.value); });
  if (live && !foreign) loop.handle->live = false;
}
static void register_loop() {
  void* refcon = new_refcon(me());
  TOKARegisterFlightLoopCallback(module().flight_loop, next_int(-2, 3) / 4.0f, refcon);
}
// The older calls name a loop by its callback and refcon, of any plugin: the
// owner's module has the callback.
static Handle* loop_by_refcon() {
  Picked loop = pick_handle(kLoops);
  bool named = loop.handle && loop.handle->refcon && slots[loop.handle->owner].module;
  return named ? loop.handle : nullptr;
}
static void unregister_loop() {
  if (Handle* loop = loop_by_refcon()) {
    TOKAUnregisterFlightLoopCallback(slots[loop->owner].module->flight_loop, loop->refcon);
    loop->live = false;
  } else {
    TOKAUnregisterFlightLoopCallback(module().flight_loop, nullptr);
  }
}
static void set_loop_interval() {
  Handle* loop = loop_by_refcon();
  TOKASetFlightLoopCallbackInterval(loop ? slots[loop->owner].module->flight_loop : nullptr,
                                    next_int(-2, 3) / 4.0f, pick(2),
                                    loop ? loop->refcon : nullptr);
}

// ---- windows -----------------------------------------------------------------------

static void create_window() {
  int left = 100 + 50 * pick(4), bottom = 100 + 50 * pick(4);
  void* refcon = new_refcon(me());
  TOKAWindowID window;
  if (pick(2)) {
    window = TOKACreateWindow(left, bottom + 100, left + 100, bottom, pick(4) != 0,
                              module().draw_window, module().key, module().mouse, refcon);
  } else {
    const FuzzModule& m = module();
    TOKACreateWindow_t params = {(int)sizeof params, left, bottom + 100, left + 100, bottom,
                                 pick(4) != 0, m.draw_window, m.mouse, m.key,
                                 pick(2) ? m.cursor : nullptr, pick(2) ? m.wheel : nullptr,
                                 refcon};
    window = TOKACreateWindowEx(&params);
  }
  CHECK(window);
  add_handle(kWindows, window, me(), refcon);
}
static bool live(const Picked& picked) { return picked.handle && picked.handle->live; }
static void destroy_window() {
  Picked window = pick_handle(kWindows);
  TOKADestroyWindow(window.value);
  if (window.handle) window.handle->live = false;
  CHECK(TOKAGetWindowRefCon(window.value) == nullptr);
}
static void screen_size() {
  int width = 0, height = 0;
  TOKAGetScreenSize(&width, &height);
  CHECK(width == 1024 && height == 768);
}
static void mouse_location() {
  int x, y;
  TOKAGetMouseLocation(&x, &y);
}
static void get_geometry() {
  Picked window = pick_handle(kWindows);
  int edges[4] = {-7, -7, -7, -7};
  TOKAGetWindowGeometry(window.value, &edges[0], pick(2) ? &edges[1] : nullptr, &edges[2],
                        &edges[3]);
  if (!live(window)) CHECK(edges[0] == -7 && edges[1] == -7 && edges[2] == -7 && edges[3] == -7);
}
static void set_geometry() {
  TOKASetWindowGeometry(pick_handle(kWindows).value, 100, 300, 300, 100 + 50 * pick(3));
}
static void get_visible() {
  Picked window = pick_handle(kWindows);
  int visible = TOKAGetWindowIsVisible(window.value);
  if (!live(window)) CHECK(visible == 0);
}
static void set_visible() { TOKASetWindowIsVisible(pick_handle(kWindows).value, pick(2)); }
static void get_refcon() {
  Picked window = pick_handle(kWindows);
  void* refcon = TOKAGetWindowRefCon(window.value);
  // A window created after the windows were drawn (a walk from back to
  // front) and before any other walk cuts the older windows out of the list,
  // as it always has: the library knows them no more than destroyed ones.
  if (live(window) && !refcon) window.handle->live = false;
  CHECK(refcon == (live(window) ? window.handle->refcon : nullptr));
}
static void set_refcon() {
  Picked window = pick_handle(kWindows);
  // The window's callbacks are its owner's: so is the refcon.
  void* refcon = new_refcon(window.handle ? window.handle->owner : me());
  TOKASetWindowRefCon(window.value, refcon);
  if (live(window)) window.handle->refcon = refcon;
}
static void take_focus() { TOKATakeKeyboardFocus(pick_handle(kWindows).value); }
static void bring_to_front() {
  Picked window = pick_handle(kWindows);
  TOKABringWindowToFront(window.value);
  if (!live(window)) CHECK(TOKAIsWindowInFront(window.value) == 0);
}
static void is_in_front() {
  Picked window = pick_handle(kWindows);
  int front = TOKAIsWindowInFront(window.value);
  if (!live(window)) CHECK(front == 0);
}

// ---- key sniffers, draw callbacks, hot keys ----------------------------------------------

static void register_sniffer() {
  TOKARegisterKeySniffer(module().sniffer, pick(2), small_refcon());
}
static void unregister_sniffer() {
  TOKAUnregisterKeySniffer(module().sniffer, pick(2), small_refcon());
}
static void register_draw() {
  TOKARegisterDrawCallback(module().draw, pick(30), pick(2), small_refcon());
}
static void unregister_draw() {
  TOKAUnregisterDrawCallback(module().draw, pick(30), pick(2), small_refcon());
}
static void register_hot_key() {
  void* refcon = new_refcon(me());
  TOKAHotKeyID key = TOKARegisterHotKey((char)pick(4), pick(4), pick(2) ? "fuzz key" : "",
                                        module().hot_key, refcon);
  CHECK(key);
  add_handle(kHotKeys, key, me(), refcon);
}
static void unregister_hot_key() {
  Picked key = pick_handle(kHotKeys);
  TOKAUnregisterHotKey(key.value);
  if (key.handle) key.handle->live = false;
}
static void count_hot_keys() { CHECK(TOKACountHotKeys() >= 0); }
static void nth_hot_key() {
  int count = TOKACountHotKeys();
  int n = pick(count + 2);
  TOKAHotKeyID key = TOKAGetNthHotKey(n);
  if (n >= count) CHECK(key == nullptr);
}
static void hot_key_info() {
  Picked key = pick_handle(kHotKeys);
  char virtual_key = 9, description[512] = "untouched";
  int flags = -9, owner = -9;
  TOKAGetHotKeyInfo(key.value, &virtual_key, &flags, description, &owner);
  if (!key.handle) CHECK(virtual_key == 9 && flags == -9 && owner == -9);
  // A live key answers with its owner.
  if (live(key)) CHECK(owner == slots[key.handle->owner].id);
}
static void set_hot_key() {
  TOKASetHotKeyCombination(pick_handle(kHotKeys).value, (char)pick(4), pick(4));
}

// ---- menus ----------------------------------------------------------------------------

// Menu calls look their menu up: one that is not a menu (null, destroyed,
// misaligned, never issued) changes nothing, and the calls that answer give
// -1 or null. A destroyed menu's record may have been reused for a newer
// one (the pool then holds the newer one), so what a handle stands for is
// found by its value.
static Handle* live_menu(void* value) {
  Handle* handle = find_handle(kMenus, value);
  return handle && handle->live ? handle : nullptr;
}
static bool is_menu(TOKAMenuID m) {
  return m && (m == TOKAFindPluginsMenu() || live_menu(m));
}
static TOKAMenuID menu() {
  Picked picked = pick_handle(kMenus);
  // A null pick stands for the menu every plugin may use.
  return picked.choice == kNull && pick(2) ? TOKAFindPluginsMenu() : picked.value;
}
static void find_plugins_menu() { CHECK(TOKAFindPluginsMenu() != nullptr); }
static void create_menu() {
  TOKAMenuID parent = pick(2) ? menu() : nullptr;
  void* refcon = new_refcon(me());
  TOKAMenuID created = TOKACreateMenu("Fuzz", parent, pick(3), pick(4) ? module().menu : nullptr,
                                      refcon);
  CHECK(!parent || is_menu(parent) ? created != nullptr : created == nullptr);
  if (created) add_handle(kMenus, created, me(), refcon);
}
static void append_item() {
  TOKAMenuID m = menu();
  int index = TOKAAppendMenuItem(m, "Item", nullptr, pick(2));
  CHECK(is_menu(m) ? index >= 0 : index == -1);
}
static void append_separator() {
  TOKAMenuID m = menu();
  int index = TOKAAppendMenuSeparator(m);
  CHECK(is_menu(m) ? index >= 0 : index == -1);
}
static void set_item_name() { TOKASetMenuItemName(menu(), pick(4), "Renamed", pick(2)); }
// The item appended first gives the count of the menu's items; the index
// picked may lie one past them, which enabling and checking ignore.
static void with_item(void (*call)(TOKAMenuID, int, bool)) {
  TOKAMenuID m = menu();
  int count = TOKAAppendMenuItem(m, "Item", nullptr, 0) + 1;
  int index = pick(count + 1);
  call(m, index, index < count);
}
static void enable_item() {
  with_item([](TOKAMenuID m, int index, bool) { TOKAEnableMenuItem(m, index, pick(2)); });
}
static void check_item() {
  with_item([](TOKAMenuID m, int index, bool item) {
    int check = pick(4);
    TOKACheckMenuItem(m, index, check);
    int state = -1;
    TOKACheckMenuItemState(m, index, &state);
    CHECK(state == (item ? check : -1));
  });
}
static void remove_item() {
  TOKAMenuID m = menu();
  int count = TOKAAppendMenuItem(m, "Item", nullptr, 0) + 1;
  int index = next_int(-1, count);
  bool bad = is_menu(m) && (index < 0 || index >= count);
  expecting(bad ? std::vector<std::string>{"TOKARemoveMenuItem was passed an out of range item "
                                           "index."}
                : std::vector<std::string>{},
            [&] { TOKARemoveMenuItem(m, index); });
}
static void clear_menu() { TOKAClearAllMenuItems(menu()); }
static void destroy_menu() {
  Picked m = pick_handle(kMenus);
  TOKADestroyMenu(m.value);
  Handle* handle = live_menu(m.value);
  if (handle && handle->owner == me()) handle->live = false;
}

// ---- commands -------------------------------------------------------------------------

static void create_command() {
  bool sim = pick(4) == 0;
  TOKACommandRef command;
  expecting(sim ? std::vector<std::string>{"Plugin is illegally registering a command with the "
                                           "prefix sim/"}
                : std::vector<std::string>{},
            [&] { command = TOKACreateCommand(sim ? "sim/fuzz" : pick(2) ? "fuzz/a" : "fuzz/b",
                                              "a command"); });
  if (command) add_handle(kCommands, command, -1);
}
static void find_command() {
  TOKACommandRef command = TOKAFindCommand(pick(2) ? "fuzz/a" : "fuzz/none");
  if (command) add_handle(kCommands, command, -1);
}
static void command_begin() { TOKACommandBegin(pick_handle(kCommands).value); }
static void command_end() { TOKACommandEnd(pick_handle(kCommands).value); }
static void command_once() { TOKACommandOnce(pick_handle(kCommands).value); }
static void register_handler() {
  TOKARegisterCommandHandler(pick_handle(kCommands).value, module().command, pick(2),
                             small_refcon());
}
static void unregister_handler() {
  TOKAUnregisterCommandHandler(pick_handle(kCommands).value, module().command, pick(2),
                               small_refcon());
}
static void key_stroke() { TOKACommandKeyStroke(pick(8)); }
static void button_press() { TOKACommandButtonPress(pick(4)); }
static void button_release() { TOKACommandButtonRelease(pick(4)); }

const Op core_ops[] = {
    get_my_id, count_plugins, get_nth_plugin, find_by_path, find_by_signature, get_plugin_info,
    is_enabled, enable_plugin, disable_plugin, reload_plugins, send_message, send_message,
    has_feature, is_feature_enabled, enable_feature, enumerate_features, set_error_callback,
    log_warning,
    find_dataref, register_dataref, unregister_dataref, is_dataref_good, can_write, get_types,
    get_int, set_int, get_float, set_float, get_double, set_double, get_ints, set_ints,
    get_floats, set_floats, get_bytes, set_bytes, share_data, unshare_data,
    elapsed_time, cycle_number, create_loop, schedule_loop, destroy_loop, register_loop,
    unregister_loop, set_loop_interval,
    create_window, create_window, destroy_window, screen_size, mouse_location, get_geometry,
    set_geometry, get_visible, set_visible, get_refcon, set_refcon, take_focus, bring_to_front,
    is_in_front,
    register_sniffer, unregister_sniffer, register_draw, unregister_draw, register_hot_key,
    unregister_hot_key, count_hot_keys, nth_hot_key, hot_key_info, set_hot_key,
    find_plugins_menu, create_menu, append_item, append_separator, set_item_name, enable_item,
    check_item, remove_item, clear_menu, destroy_menu,
    create_command, find_command, command_begin, command_end, command_once, register_handler,
    unregister_handler, key_stroke, button_press, button_release};
const int core_op_count = sizeof core_ops / sizeof *core_ops;
