// Plugin windows: the window list with its front-to-back order, the window
// calls, and the display steps of disabling and unloading a plugin.
#include "display/display.h"
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"

TOKAResourceList<TOKAWindowCallbackRecord> gWindows;
TOKAWindowCallbackRecord* gFocusWindow = nullptr;
TOKAWindowCallbackRecord* gDragWindow = nullptr;

// Plugins fill in the parameter block's natural size: twelve 32-bit words,
// 48, in the 32-bit library; 72 in the 64-bit one.
static const int kCreateWindowSize = (int)sizeof(TOKACreateWindow_t);
static_assert(sizeof(void*) != 4 || kCreateWindowSize == 48,
              "the window parameter block is twelve words");

TOKAWindowCallbackRecord* TOKAWindowIsValid(TOKAWindowID window, void*) {
  TOKAWindowCallbackRecord* found = nullptr;
  for (TOKAWindowCallbackRecord* record = gWindows.BeginIterate(); record;
       record = record->get_next()) {
    if (record == window) {
      found = record;
      break;
    }
  }
  // A dead window still answers the search, but the EndIterate below
  // reclaims it: the caller must not be handed a record that is gone.
  bool reclaimed = found && found->is_dead();
  gWindows.EndIterate();
  return reclaimed ? nullptr : found;
}

void TOKARemoveWindow(TOKAWindowCallbackRecord* window) {
  if (gFocusWindow == window) gFocusWindow = nullptr;
  if (gDragWindow == window) gDragWindow = nullptr;
  gWindows.Remove(window);
}

static TOKAWindowCallbackRecord* NewWindow(int left, int top, int right, int bottom, int visible,
                                           void* refcon) {
  TOKAWindowCallbackRecord* record = new TOKAWindowCallbackRecord;
  record->left = left;
  record->top = top;
  record->right = right;
  record->bottom = bottom;
  record->visible = visible;
  record->plugin = TOKAGetDispatchedPlugin();
  record->refcon = refcon;
  TOKA_NOTE_ISSUED(kHandleWindow, record);
  return record;
}

TOKA_API TOKAWindowID TOKACreateWindow(int left, int top, int right, int bottom, int visible,
                                       TOKADrawWindow_f draw, TOKAHandleKey_f key,
                                       TOKAHandleMouseClick_f mouse, void* refcon) {
  TOKA_NOTE_CALL();
  TOKAWindowCallbackRecord* record = NewWindow(left, top, right, bottom, visible, refcon);
  record->draw_func = draw;
  record->key_func = key;
  record->mouse_func = mouse;
  gWindows.Add(record);
  return record;
}

TOKA_API TOKAWindowID TOKACreateWindowEx(TOKACreateWindow_t* params) {
  TOKA_NOTE_CALL();
  if (!params || params->structSize != kCreateWindowSize) return nullptr;
  TOKAWindowCallbackRecord* record = NewWindow(params->left, params->top, params->right,
                                               params->bottom, params->visible, params->refcon);
  record->draw_func = params->drawWindowFunc;
  record->key_func = params->handleKeyFunc;
  record->mouse_func = params->handleMouseClickFunc;
  record->cursor_func = params->handleCursorFunc;
  record->wheel_func = params->handleMouseWheelFunc;
  gWindows.Add(record);
  return record;
}

TOKA_API void TOKADestroyWindow(TOKAWindowID window) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleWindow, window);
  TOKAWindowCallbackRecord* record = TOKAWindowIsValid(window, nullptr);
  if (!record) return;
  // The window is told that it loses the focus, and may destroy itself
  // while it hears it: the hold keeps the record readable until we know.
  TOKAResourceHold<TOKAWindowCallbackRecord> hold(gWindows);
  if (gFocusWindow == record) TOKATakeKeyboardFocus(nullptr);
  if (record->is_dead()) return;
  if (gDragWindow == record) gDragWindow = nullptr;
  TOKARemoveWindow(record);
}

TOKA_API void TOKAGetScreenSize(int* outWidth, int* outHeight) {
  TOKA_NOTE_CALL();
  gHostServices->GetScreenSize(outWidth, outHeight);
}

TOKA_API void TOKAGetMouseLocation(int* outX, int* outY) {
  TOKA_NOTE_CALL();
  // 1 tells the simulator that a plugin is asking, not the library itself.
  gHostServices->GetMouseLocation(outX, outY, 1);
}

TOKA_API void TOKAGetWindowGeometry(TOKAWindowID window, int* outLeft, int* outTop, int* outRight,
                                    int* outBottom) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleWindow, window);
  TOKAWindowCallbackRecord* record = TOKAWindowIsValid(window, nullptr);
  if (!record) return;
  if (outLeft) *outLeft = record->left;
  if (outTop) *outTop = record->top;
  if (outRight) *outRight = record->right;
  if (outBottom) *outBottom = record->bottom;
}

TOKA_API void TOKASetWindowGeometry(TOKAWindowID window, int left, int top, int right, int bottom) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleWindow, window);
  TOKAWindowCallbackRecord* record = TOKAWindowIsValid(window, nullptr);
  if (!record) return;
  record->left = left;
  record->top = top;
  record->right = right;
  record->bottom = bottom;
}

TOKA_API int TOKAGetWindowIsVisible(TOKAWindowID window) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleWindow, window);
  TOKAWindowCallbackRecord* record = TOKAWindowIsValid(window, nullptr);
  return record ? record->visible : 0;
}

TOKA_API void TOKASetWindowIsVisible(TOKAWindowID window, int visible) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleWindow, window);
  TOKAWindowCallbackRecord* record = TOKAWindowIsValid(window, nullptr);
  if (!record) return;
  // The focus callback may destroy the window; the value then lands in a
  // record that is on its way out, which is harmless while it is held.
  TOKAResourceHold<TOKAWindowCallbackRecord> hold(gWindows);
  if (record->visible && visible == 0 && gFocusWindow == record) TOKATakeKeyboardFocus(nullptr);
  record->visible = visible;
}

TOKA_API void* TOKAGetWindowRefCon(TOKAWindowID window) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleWindow, window);
  TOKAWindowCallbackRecord* record = TOKAWindowIsValid(window, nullptr);
  return record ? record->refcon : nullptr;
}

TOKA_API void TOKASetWindowRefCon(TOKAWindowID window, void* refcon) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleWindow, window);
  if (TOKAWindowCallbackRecord* record = TOKAWindowIsValid(window, nullptr))
    record->refcon = refcon;
}

TOKA_API void TOKABringWindowToFront(TOKAWindowID window) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleWindow, window);
  if (TOKAWindowCallbackRecord* record = TOKAWindowIsValid(window, nullptr))
    gWindows.MoveToFront(record);
}

TOKA_API int TOKAIsWindowInFront(TOKAWindowID window) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleWindow, window);
  TOKAWindowCallbackRecord* record = TOKAWindowIsValid(window, nullptr);
  if (!record) return 0;
  for (TOKAWindowCallbackRecord* front = gWindows.head; front; front = front->get_next())
    if (front->visible) return front == record ? 1 : 0;
  return 0;
}

// Windows go third: after the plugin's draw callbacks and key sniffers, and
// before its hot keys.
static void RemovePluginWindows(int plugin) {
  TOKAResourceHold<TOKAWindowCallbackRecord> hold(gWindows);
  for (TOKAWindowCallbackRecord* record = gWindows.BeginIterate(); record;
       record = record->get_next()) {
    if (record->plugin != plugin || record->is_dead()) continue;
    if (gFocusWindow == record) TOKATakeKeyboardFocus(nullptr);
    if (gDragWindow == record) gDragWindow = nullptr;
    TOKARemoveWindow(record);
  }
  gWindows.EndIterate();
  // A window that the walk cannot reach any more (the list lost track of it)
  // must still never be called once its plugin's code is gone.
  if (gFocusWindow && gFocusWindow->plugin == plugin) gFocusWindow = nullptr;
  if (gDragWindow && gDragWindow->plugin == plugin) gDragWindow = nullptr;
}

// The plugin's windows that the list lost track of go with it.
static void FreeLostPluginWindows(int plugin) {
  gWindows.FreeUnreachable(
      [plugin](TOKAWindowCallbackRecord* record) { return record->plugin == plugin; });
}

void TOKADisplayCleanupHook(int plugin) {
  TOKARemovePluginDrawCallbacks(plugin);
  TOKARemovePluginKeySniffers(plugin);
  RemovePluginWindows(plugin);
  FreeLostPluginWindows(plugin);
  TOKARemovePluginHotKeys(plugin);
}

// Runs while the plugin still counts as enabled, so that its window hears
// that it loses the focus and gets the mouse up that ends its drag.
void TOKADisplayDisableHook(int plugin) {
  if (gFocusWindow && gFocusWindow->plugin == plugin) TOKATakeKeyboardFocus(nullptr);
  if (gDragWindow && gDragWindow->plugin == plugin) {
    int x = 0, y = 0;
    gHostServices->GetMouseLocation(&x, &y, 0);
    TOKADisplayMouseClickHook(x, y, TOKA_MOUSE_UP);
  }
}
