/* Toka: windows, input, drawing phases and hot keys.
 *
 * Screen coordinates grow upwards: a window's top is greater than its bottom.
 * A window contains a point when it is visible and left <= x < right and
 * bottom <= y < top. Every callback runs as the plugin that registered it,
 * and only while that plugin is enabled. */
#ifndef TOKA_DISPLAY_H
#define TOKA_DISPLAY_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Mouse status passed to window mouse callbacks. */
enum { TOKA_MOUSE_DOWN = 1, TOKA_MOUSE_DRAG = 2, TOKA_MOUSE_UP = 3 };

/* ---- Windows ------------------------------------------------------------ */

/* Draws the window (phase 50, back to front). */
typedef void (*TOKADrawWindow_f)(TOKAWindowID window, void* refcon);
/* A keystroke for the focus window (losingFocus 0), or the news that the
 * focus moves away (key, flags and virtual key 0, losingFocus 1, window = the
 * window that takes the focus, or 0). */
typedef void (*TOKAHandleKey_f)(TOKAWindowID window, char key, int flags, char virtualKey,
                                void* refcon, int losingFocus);
/* A mouse event; return non-zero to take it. The window that takes a mouse
 * down receives every drag and the up, wherever the mouse goes. */
typedef int (*TOKAHandleMouseClick_f)(TOKAWindowID window, int x, int y, int mouseStatus,
                                      void* refcon);
/* The cursor the window wants at (x, y); 0 lets the windows behind it answer. */
typedef int (*TOKAHandleCursor_f)(TOKAWindowID window, int x, int y, void* refcon);
/* A scroll-wheel event; return non-zero to take it. */
typedef int (*TOKAHandleMouseWheel_f)(TOKAWindowID window, int x, int y, int wheel, int clicks,
                                      void* refcon);

/* Parameters of TOKACreateWindowEx: twelve 32-bit words in the 32-bit
 * library. structSize must be sizeof(TOKACreateWindow_t): 48 (in the 64-bit
 * library: 72). Note the mouse callback before the key callback. The draw
 * and mouse callbacks must not be null; the cursor and wheel callbacks may
 * be. */
typedef struct TOKACreateWindow_t {
  int structSize;
  int left;
  int top;
  int right;
  int bottom;
  int visible;
  TOKADrawWindow_f drawWindowFunc;
  TOKAHandleMouseClick_f handleMouseClickFunc;
  TOKAHandleKey_f handleKeyFunc;
  TOKAHandleCursor_f handleCursorFunc;
  TOKAHandleMouseWheel_f handleMouseWheelFunc;
  void* refcon;
} TOKACreateWindow_t;

/* Creates a window owned by the calling plugin, in front of all others,
 * without cursor or wheel callbacks. Nothing is checked: a window without a
 * draw callback draws nothing, and one without a mouse callback passes
 * clicks on to the windows behind it. The handle is valid until
 * TOKADestroyWindow or until the plugin is unloaded. */
TOKA_API TOKAWindowID TOKACreateWindow(int left, int top, int right, int bottom, int visible,
                                       TOKADrawWindow_f draw, TOKAHandleKey_f key,
                                       TOKAHandleMouseClick_f mouse, void* refcon);

/* The same with all five callbacks. Returns null, creating nothing, when
 * params is null or its structSize is not sizeof(TOKACreateWindow_t). */
TOKA_API TOKAWindowID TOKACreateWindowEx(TOKACreateWindow_t* params);

/* Destroys a window. A focused window is first told that it loses the focus;
 * a drag in progress ends without a mouse up. From inside a callback the
 * window stops being drawn and hit at once and is freed when the library is
 * done with it. Unknown handles are ignored. */
TOKA_API void TOKADestroyWindow(TOKAWindowID window);

/* The screen size in pixels, from the simulator. */
TOKA_API void TOKAGetScreenSize(int* outWidth, int* outHeight);

/* The mouse position in screen coordinates, from the simulator. */
TOKA_API void TOKAGetMouseLocation(int* outX, int* outY);

/* Writes each edge into its out pointer, if not null. Unknown handle:
 * nothing written. */
TOKA_API void TOKAGetWindowGeometry(TOKAWindowID window, int* outLeft, int* outTop,
                                    int* outRight, int* outBottom);

/* Moves and resizes the window; the rectangle is not checked. */
TOKA_API void TOKASetWindowGeometry(TOKAWindowID window, int left, int top, int right,
                                    int bottom);

/* Non-zero if the window is visible; 0 for an unknown handle. */
TOKA_API int TOKAGetWindowIsVisible(TOKAWindowID window);

/* Shows or hides the window. Hiding the focus window first takes its focus
 * away (it is told so). */
TOKA_API void TOKASetWindowIsVisible(TOKAWindowID window, int visible);

/* The window's refcon; null for an unknown handle. */
TOKA_API void* TOKAGetWindowRefCon(TOKAWindowID window);

/* Replaces the refcon handed to the window's callbacks. */
TOKA_API void TOKASetWindowRefCon(TOKAWindowID window, void* refcon);

/* Gives the keyboard focus to window, or to no window for 0 (or an unknown
 * handle). The window losing the focus is told first. A window of a disabled
 * plugin cannot take the focus. */
TOKA_API void TOKATakeKeyboardFocus(TOKAWindowID window);

/* Moves the window in front of all others, at once. */
TOKA_API void TOKABringWindowToFront(TOKAWindowID window);

/* 1 if the window is the front-most visible window, else 0. */
TOKA_API int TOKAIsWindowInFront(TOKAWindowID window);

/* ---- Key sniffers ------------------------------------------------------- */

/* Sees a keystroke; return 0 to consume it, non-zero to pass it on. */
typedef int (*TOKAKeySniffer_f)(char key, int flags, char virtualKey, void* refcon);

/* Registers a key sniffer for the calling plugin. beforeWindows non-zero:
 * it sees keys before hot keys and the focus window; 0: only keys that no
 * window took. The newest sniffer runs first. Returns 0, registering
 * nothing, if the same callback, beforeWindows and refcon are registered
 * already (by any plugin), else 1. */
TOKA_API int TOKARegisterKeySniffer(TOKAKeySniffer_f callback, int beforeWindows, void* refcon);

/* Removes the first sniffer with these three values (of any plugin).
 * Returns 1, or 0 if there is none. */
TOKA_API int TOKAUnregisterKeySniffer(TOKAKeySniffer_f callback, int beforeWindows,
                                      void* refcon);

/* ---- Draw callbacks ----------------------------------------------------- */

/* Called before (isBefore 1) or after (0) the simulator draws a phase. A
 * before callback returns 0 to ask the simulator to skip the phase. Plugin
 * windows are drawn in phase 50. */
typedef int (*TOKADrawCallback_f)(int phase, int isBefore, void* refcon);

/* Registers a draw callback for the calling plugin. In reflection passes
 * only plugins with "TOKA_WANTS_REFLECTIONS" enabled are called. The newest
 * callback of a phase runs first. Returns 0, registering nothing, if the
 * same four values are registered already (by any plugin), else 1. */
TOKA_API int TOKARegisterDrawCallback(TOKADrawCallback_f callback, int phase, int isBefore,
                                      void* refcon);

/* Removes the first draw callback with these four values (of any plugin).
 * Returns 1, or 0 if there is none. */
TOKA_API int TOKAUnregisterDrawCallback(TOKADrawCallback_f callback, int phase, int isBefore,
                                        void* refcon);

/* ---- Hot keys ----------------------------------------------------------- */

/* Called when the hot key's combination is pressed. */
typedef void (*TOKAHotKey_f)(void* refcon);

/* Registers a hot key for the calling plugin: the virtual key with exactly
 * these modifier flags. The description is copied. When two hot keys share
 * a combination the newer one wins. The ID is valid until
 * TOKAUnregisterHotKey or until the plugin is unloaded. */
TOKA_API TOKAHotKeyID TOKARegisterHotKey(char virtualKey, int flags, const char* description,
                                         TOKAHotKey_f callback, void* refcon);

/* Removes a hot key (of any plugin); unknown IDs are ignored. */
TOKA_API void TOKAUnregisterHotKey(TOKAHotKeyID hotKey);

/* The number of hot keys of all plugins. */
TOKA_API int TOKACountHotKeys(void);

/* The hot key at index (0 = newest), or null past the last one. */
TOKA_API TOKAHotKeyID TOKAGetNthHotKey(int index);

/* Writes the hot key's combination, description (truncated to 511 bytes and
 * a terminator: a buffer of 512) and owner into each non-null pointer.
 * Unknown ID: nothing written. */
TOKA_API void TOKAGetHotKeyInfo(TOKAHotKeyID hotKey, char* outVirtualKey, int* outFlags,
                                char* outDescription, TOKAPluginID* outPlugin);

/* Binds the hot key to another combination; its callback stays. */
TOKA_API void TOKASetHotKeyCombination(TOKAHotKeyID hotKey, char virtualKey, int flags);

TOKA_END_DECLS

#endif
