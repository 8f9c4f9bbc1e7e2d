// Hello: a small window with a greeting, shown and hidden with a hot key or
// with an item of the Plugins menu. It also says hello through the
// simulator's log at each step of its life.
//
// What it shows a plugin author:
//   - the five entry points and what belongs in each;
//   - a window (TOKACreateWindowEx) that draws itself with the simulator's
//     dark box and text;
//   - a hot key (TOKARegisterHotKey);
//   - a menu of its own under the Plugins menu, with a check mark that
//     follows the window.
#include <cstdio>
#include <cstring>

#include "toka/TOKA.h"

namespace {

// Screen coordinates grow upwards: a window's top is above its bottom.
const int kLeft = 50;
const int kTop = 750;
const int kRight = 410;
const int kBottom = 680;

// Virtual key codes are the simulator's; TOKAGetVirtualKeyDescription names
// them. 0x75 is "F6". Flags 0: the key alone, without modifiers.
const char kToggleKey = 0x75;
const int kToggleFlags = 0;

// The simulator's basic font.
const int kFont = 0;

TOKAWindowID gWindow = nullptr;
TOKAHotKeyID gHotKey = nullptr;
TOKAMenuID gMenu = nullptr;
int gShowItem = -1;  // index of "Show window" in gMenu
int gShowWhenEnabled = 1;  // whether the window shows when the plugin is enabled

// The second line of the window, naming the key as the simulator does.
char gHint[128];

// The menu item carries a check mark while the window is visible, so that
// the menu tells the truth whichever way the window was toggled.
void UpdateCheckMark() {
  int visible = TOKAGetWindowIsVisible(gWindow);
  TOKACheckMenuItem(gMenu, gShowItem, visible ? TOKA_MENU_CHECKED : TOKA_MENU_UNCHECKED);
}

void ToggleWindow() {
  TOKASetWindowIsVisible(gWindow, !TOKAGetWindowIsVisible(gWindow));
  UpdateCheckMark();
}

// Windows draw in their own callback, where the simulator has set up its
// screen coordinates. Read the geometry each time rather than using the
// constants: another plugin may have moved the window.
void DrawWindow(TOKAWindowID window, void* refcon) {
  int left = 0, top = 0, right = 0, bottom = 0;
  TOKAGetWindowGeometry(window, &left, &top, &right, &bottom);
  TOKADrawTranslucentDarkBox(left, top, right, bottom);

  int charWidth = 8, charHeight = 12, digitsOnly = 0;
  TOKAGetFontDimensions(kFont, &charWidth, &charHeight, &digitsOnly);
  float white[3] = {1.0f, 1.0f, 1.0f};
  float grey[3] = {0.7f, 0.7f, 0.7f};
  // Text is placed by its baseline's left end.
  int x = left + 10;
  int y = top - 10 - charHeight;
  TOKADrawString(white, x, y, "Hello, world!", nullptr, kFont);
  TOKADrawString(grey, x, y - 2 * charHeight, gHint, nullptr, kFont);
}

// Taking the clicks that land on the window keeps them from reaching the
// simulator's panel underneath.
int HandleMouse(TOKAWindowID window, int x, int y, int mouseStatus, void* refcon) { return 1; }

// The window never asks for the keyboard focus, so it gets no keys.
void HandleKey(TOKAWindowID window, char key, int flags, char virtualKey, void* refcon,
               int losingFocus) {}

void ToggleFromHotKey(void* refcon) { ToggleWindow(); }

// The menu's handler gets the menu's refcon and the refcon of the item that
// was picked; this menu has one item, but a handler usually tells them
// apart by the item refcon.
void HandleMenu(void* menuRef, void* itemRef) {
  if (itemRef == &gShowItem) ToggleWindow();
}

}  // namespace

// Start: say who we are and create what we need. Everything created here is
// owned by this plugin; the library would withdraw it on unload anyway, but
// Stop gives it back explicitly, which keeps a reload clean.
TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  // Each buffer holds 256 bytes. The signature must be unique and non-empty.
  std::strcpy(outName, "Hello");
  std::strcpy(outSignature, "toka.examples.hello");
  std::strcpy(outDescription, "A window that says hello, toggled by F6 or the Plugins menu.");
  TOKADebugString("hello: started\n");

  std::snprintf(gHint, sizeof gHint, "%s or Plugins > Hello shows and hides me.",
                TOKAGetVirtualKeyDescription(kToggleKey));

  TOKACreateWindow_t params;
  std::memset(&params, 0, sizeof params);
  params.structSize = sizeof params;
  params.left = kLeft;
  params.top = kTop;
  params.right = kRight;
  params.bottom = kBottom;
  params.visible = 1;
  params.drawWindowFunc = DrawWindow;
  params.handleMouseClickFunc = HandleMouse;
  params.handleKeyFunc = HandleKey;
  gWindow = TOKACreateWindowEx(&params);

  // Without a parent the menu hangs from a new "Hello" item of the Plugins
  // menu. Items appended to the Plugins menu directly would reach no
  // handler: picks go to the handler of the menu that holds the item.
  gMenu = TOKACreateMenu("Hello", nullptr, 0, HandleMenu, nullptr);
  gShowItem = TOKAAppendMenuItem(gMenu, "Show window", &gShowItem, 1);
  UpdateCheckMark();
  return 1;
}

// Enable and Disable come in pairs, possibly many times between Start and
// Stop. While disabled nothing of the plugin shows or runs: the window is
// hidden (and shown again as it was), the hot key goes. The menu stays; its
// picks reach no disabled plugin.
TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  gHotKey = TOKARegisterHotKey(kToggleKey, kToggleFlags, "Hello: show or hide the window",
                               ToggleFromHotKey, nullptr);
  TOKASetWindowIsVisible(gWindow, gShowWhenEnabled);
  UpdateCheckMark();
  TOKADebugString("hello: enabled\n");
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {
  TOKAUnregisterHotKey(gHotKey);
  gHotKey = nullptr;
  gShowWhenEnabled = TOKAGetWindowIsVisible(gWindow);
  TOKASetWindowIsVisible(gWindow, 0);
  UpdateCheckMark();
  TOKADebugString("hello: disabled\n");
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {
  TOKADestroyMenu(gMenu);
  TOKADestroyWindow(gWindow);
  gMenu = gHotKey = gWindow = nullptr;
  TOKADebugString("hello: stopped\n");
}

// Messages from the simulator (101 and up) and from other plugins.
TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {}
