// Records and lists shared by windows, input dispatch, drawing and hot keys.
#ifndef TOKA_DISPLAY_DISPLAY_H
#define TOKA_DISPLAY_DISPLAY_H

#include <string>

#include "loader/resource_list.h"
#include "toka/TOKADisplay.h"

struct TOKAWindowCallbackRecord : TOKAResource_t<TOKAWindowCallbackRecord> {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  int visible = 0;
  TOKADrawWindow_f draw_func = nullptr;
  TOKAHandleKey_f key_func = nullptr;
  TOKAHandleMouseClick_f mouse_func = nullptr;
  TOKAHandleCursor_f cursor_func = nullptr;
  TOKAHandleMouseWheel_f wheel_func = nullptr;
  int plugin = 0;
  void* refcon = nullptr;
};

struct TOKAKeyCallbackRecord : TOKAResource_t<TOKAKeyCallbackRecord> {
  TOKAKeySniffer_f callback = nullptr;
  int plugin = 0;
  int before_windows = 0;
  void* refcon = nullptr;
};

struct TOKADrawCallbackRecord : TOKAResource_t<TOKADrawCallbackRecord> {
  TOKADrawCallback_f callback = nullptr;
  int plugin = 0;
  int phase = 0;
  int before = 0;
  void* refcon = nullptr;
};

struct TOKAHotKeyInfoRecord : TOKAResource_t<TOKAHotKeyInfoRecord> {
  int plugin = 0;
  char virtual_key = 0;
  int flags = 0;
  std::string description;
  TOKAHotKey_f callback = nullptr;
  void* refcon = nullptr;
};

// Forward order is front to back: the first window is the front-most.
extern TOKAResourceList<TOKAWindowCallbackRecord> gWindows;
// The window that receives keystrokes, and the window that took the last
// mouse down and gets the drags and the up. Neither ever designates a window
// that has been removed from the list.
extern TOKAWindowCallbackRecord* gFocusWindow;
extern TOKAWindowCallbackRecord* gDragWindow;

extern TOKAResourceList<TOKAKeyCallbackRecord> gKeySniffers;
extern TOKAResourceList<TOKADrawCallbackRecord> gDrawCallbacks;
extern TOKAResourceList<TOKAHotKeyInfoRecord> gHotKeys;

// The record of a window handle, or null when it is not in the list. A
// window destroyed during a walk that is still open is reclaimed by this
// lookup's own EndIterate, and so is reported as gone.
TOKAWindowCallbackRecord* TOKAWindowIsValid(TOKAWindowID window, void* unused);
// Unlinks a window (deferred during a walk), dropping focus and drag first.
void TOKARemoveWindow(TOKAWindowCallbackRecord* window);
// Sends the drag window a drag at the current mouse position, once a frame.
void TOKADisplayMouseDragHook();

// The hot key record of an ID, or null; also stored into *outRecord if given.
TOKAHotKeyInfoRecord* TOKAValidateHotKey(TOKAHotKeyID hotKey, TOKAHotKeyInfoRecord** outRecord);
// Runs the newest hot key bound to the combination: 1 if one ran, else 0.
int TOKADispatchHotKey(char virtualKey, int flags);

// Per-family steps of the display clean-up when a plugin is unloaded.
void TOKARemovePluginDrawCallbacks(int plugin);
void TOKARemovePluginKeySniffers(int plugin);
void TOKARemovePluginHotKeys(int plugin);

// True when record was unlinked while its list was held: it is gone for
// every purpose and only waits for the walkers to finish with it.
template <class T>
bool TOKAIsParked(const TOKAResourceList<T>& list, const T* record) {
  for (const T* parked = list.parked; parked; parked = parked->parked_next)
    if (parked == record) return true;
  return false;
}

// Removes every record of plugin from list. The walk is bracketed like any
// other, so the records go at its end even if a dispatcher is running.
template <class T>
void TOKARemovePluginRecords(TOKAResourceList<T>& list, int plugin) {
  TOKAResourceHold<T> hold(list);
  for (T* record = list.BeginIterate(); record; record = record->get_next())
    if (record->plugin == plugin) list.Remove(record);
  list.EndIterate();
}

#endif
