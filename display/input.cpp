// Input dispatch: key sniffers, keyboard focus, and the routing of keys,
// mouse clicks, drags, cursor queries and scroll-wheel events to plugins.
// Results for the simulator: 1 = not consumed (it handles the event itself),
// 0 = a plugin consumed it.
#include "display/display.h"
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"
#include "toka/TOKAPlugins.h"

TOKAResourceList<TOKAKeyCallbackRecord> gKeySniffers;

static bool SameSniffer(const TOKAKeyCallbackRecord* record, TOKAKeySniffer_f callback,
                        int beforeWindows, void* refcon) {
  return record->callback == callback && record->before_windows == beforeWindows &&
         record->refcon == refcon;
}

// The owner is not compared: a second plugin registering the very same
// sniffer is refused.
static TOKAKeyCallbackRecord* FindSniffer(TOKAKeySniffer_f callback, int beforeWindows,
                                          void* refcon) {
  for (TOKAKeyCallbackRecord* record = gKeySniffers.BeginIterate(); record;
       record = record->get_next())
    if (SameSniffer(record, callback, beforeWindows, refcon)) return record;
  return nullptr;
}

TOKA_API int TOKARegisterKeySniffer(TOKAKeySniffer_f callback, int beforeWindows, void* refcon) {
  TOKA_NOTE_CALL();
  TOKAKeyCallbackRecord* existing = FindSniffer(callback, beforeWindows, refcon);
  gKeySniffers.EndIterate();
  if (existing) return 0;
  TOKAKeyCallbackRecord* record = new TOKAKeyCallbackRecord;
  record->callback = callback;
  record->plugin = TOKAGetDispatchedPlugin();
  record->before_windows = beforeWindows;
  record->refcon = refcon;
  gKeySniffers.Add(record);
  return 1;
}

// The key dispatcher's walks are never ended, so this removal is deferred,
// and the EndIterate that closes the search reclaims it before returning.
TOKA_API int TOKAUnregisterKeySniffer(TOKAKeySniffer_f callback, int beforeWindows, void* refcon) {
  TOKA_NOTE_CALL();
  TOKAKeyCallbackRecord* record = FindSniffer(callback, beforeWindows, refcon);
  if (record) gKeySniffers.Remove(record);
  gKeySniffers.EndIterate();
  return record ? 1 : 0;
}

void TOKARemovePluginKeySniffers(int plugin) { TOKARemovePluginRecords(gKeySniffers, plugin); }

TOKA_API void TOKATakeKeyboardFocus(TOKAWindowID window) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE_OR_NULL(kHandleWindow, window);
  TOKAWindowCallbackRecord* taker = TOKAWindowIsValid(window, nullptr);
  if (taker == gFocusWindow) return;
  if (taker && !TOKAIsPluginEnabled(taker->plugin)) return;
  // The losing window's callback may destroy either window.
  TOKAResourceHold<TOKAWindowCallbackRecord> hold(gWindows);
  if (TOKAWindowCallbackRecord* loser = gFocusWindow) {
    StDispatchCallback context(loser->plugin);
    // Plugins are handed the window that takes the focus, not their own.
    if (context() && loser->key_func) loser->key_func(window, 0, 0, 0, loser->refcon, 1);
  }
  gFocusWindow = taker && !taker->is_dead() ? taker : nullptr;
}

// Offers the key to one sniffer: true if it was called and consumed it.
static bool SnifferConsumes(TOKAKeyCallbackRecord* record, char key, int flags, char virtualKey) {
  StDispatchCallback context(record->plugin);
  return context() && record->callback(key, flags, virtualKey, record->refcon) == 0;
}

// Neither sniffer walk is ended. Removals from the sniffer list are thus
// always deferred and reclaimed by the next registration or unregistration,
// which is when plugins have always seen them take effect.
int TOKADisplayKeyPressHook(char key, int flags, char virtualKey) {
  if (flags == 0 && key == 0 && virtualKey == 0) return 1;
  TOKAResourceHold<TOKAKeyCallbackRecord> hold(gKeySniffers);

  for (TOKAKeyCallbackRecord* record = gKeySniffers.BeginIterate(); record;
       record = record->get_next()) {
    if (record->is_dead() || !record->before_windows) continue;
    if (SnifferConsumes(record, key, flags, virtualKey)) return 0;
  }

  if (TOKADispatchHotKey(virtualKey, flags)) return 0;

  if (TOKAWindowCallbackRecord* focus = gFocusWindow) {
    StDispatchCallback context(focus->plugin);
    if (context()) {
      // The focus window consumes every key it is given.
      if (focus->key_func) focus->key_func(focus, key, flags, virtualKey, focus->refcon, 0);
      return 0;
    }
  }

  // This walk calls dead sniffers too; only one that has already been
  // reclaimed (it unregistered during this walk) is really gone.
  for (TOKAKeyCallbackRecord* record = gKeySniffers.BeginIterate(); record;
       record = record->get_next()) {
    if (record->before_windows || TOKAIsParked(gKeySniffers, record)) continue;
    if (SnifferConsumes(record, key, flags, virtualKey)) return 0;
  }
  return 1;
}

static bool Contains(const TOKAWindowCallbackRecord* window, int x, int y) {
  return window->visible && window->left <= x && x < window->right && window->bottom <= y &&
         y < window->top;
}

// A mouse down goes to the windows under the mouse, front to back, until one
// takes it; that window gets the following drags and the up.
static int MouseDown(int x, int y) {
  TOKAResourceHold<TOKAWindowCallbackRecord> hold(gWindows);
  for (TOKAWindowCallbackRecord* record = gWindows.BeginIterate(); record;
       record = record->get_next()) {
    // A window made without a mouse callback cannot take the click: the
    // windows behind it are offered it, as when a callback declines.
    if (record->is_dead() || !Contains(record, x, y) || !record->mouse_func) continue;
    StDispatchCallback context(record->plugin);
    if (!context()) continue;
    if (record->mouse_func(record, x, y, TOKA_MOUSE_DOWN, record->refcon) == 0) continue;
    // A window that destroyed itself while taking the click cannot be
    // dragged: it is gone once this walk ends.
    if (!record->is_dead()) gDragWindow = record;
    gWindows.EndIterate();
    return 0;
  }
  gWindows.EndIterate();
  return 1;
}

int TOKADisplayMouseClickHook(int x, int y, int status) {
  if (status == TOKA_MOUSE_DOWN) return MouseDown(x, y);
  TOKAWindowCallbackRecord* drag = gDragWindow;
  if (!drag) return 1;
  int result = 1;
  {
    StDispatchCallback context(drag->plugin);
    if (context()) {
      drag->mouse_func(drag, x, y, status, drag->refcon);
      result = 0;
    }
  }
  if (status == TOKA_MOUSE_UP) gDragWindow = nullptr;
  return result;
}

void TOKADisplayMouseDragHook() {
  if (!gDragWindow) return;
  int x = 0, y = 0;
  gHostServices->GetMouseLocation(&x, &y, 0);
  TOKADisplayMouseClickHook(x, y, TOKA_MOUSE_DRAG);
}

int TOKADisplayCursorHook(int x, int y) {
  TOKAResourceHold<TOKAWindowCallbackRecord> hold(gWindows);
  int cursor = 0;
  for (TOKAWindowCallbackRecord* record = gWindows.BeginIterate(); record && !cursor;
       record = record->get_next()) {
    if (record->is_dead() || !Contains(record, x, y) || !record->cursor_func) continue;
    StDispatchCallback context(record->plugin);
    if (context()) cursor = record->cursor_func(record, x, y, record->refcon);
  }
  gWindows.EndIterate();
  return cursor;
}

int TOKADisplayScrollWheelHook(int x, int y, int wheel, int clicks) {
  TOKAResourceHold<TOKAWindowCallbackRecord> hold(gWindows);
  int taken = 0;
  for (TOKAWindowCallbackRecord* record = gWindows.BeginIterate(); record && !taken;
       record = record->get_next()) {
    if (record->is_dead() || !Contains(record, x, y) || !record->wheel_func) continue;
    StDispatchCallback context(record->plugin);
    if (context()) taken = record->wheel_func(record, x, y, wheel, clicks, record->refcon);
  }
  gWindows.EndIterate();
  return taken ? 0 : 1;
}
