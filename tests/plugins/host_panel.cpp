// The plugin that the scenario, screenshot and window tests of toka-host run:
// a window (100, 600)-(300, 700) drawing a dark box and "Panel 42"; F1, the
// item "Plugins/Panel/Show panel" and the command "test/panel/toggle" show or
// hide it; it logs and counts mouse events ("test/panel/mouse": down, drag,
// up, wheel), keys it sniffs and messages.
#include <cstdio>
#include <cstring>

#include "toka/TOKA.h"

namespace {

TOKAWindowID gWindow = nullptr;
TOKAMenuID gMenu = nullptr;
TOKACommandRef gToggle = nullptr;
float gScale = 1;
int gMouse[4];
const char kTitle[] = "Panel 42";

void Log(const char* format, int a = 0, int b = 0, int c = 0, int d = 0) {
  char line[256];
  std::snprintf(line, sizeof line, format, a, b, c, d);
  TOKADebugString(line);
}

void Show(int visible) {
  TOKASetWindowIsVisible(gWindow, visible);
  TOKACheckMenuItem(gMenu, 0, visible ? TOKA_MENU_CHECKED : TOKA_MENU_UNCHECKED);
  Log(visible ? "panel: shown\n" : "panel: hidden\n");
}

void Toggle() { Show(!TOKAGetWindowIsVisible(gWindow)); }

void Draw(TOKAWindowID window, void*) {
  int left, top, right, bottom;
  TOKAGetWindowGeometry(window, &left, &top, &right, &bottom);
  TOKADrawTranslucentDarkBox(left, top, right, bottom);
  float white[3] = {1, 1, 1};
  TOKADrawString(white, left + 5, top - 15, kTitle, nullptr, 0);
}

int Mouse(TOKAWindowID, int x, int y, int status, void*) {
  if (status >= 1 && status <= 3) gMouse[status - 1]++;
  Log("panel: mouse %d at %d %d\n", status, x, y);
  return 1;
}

int Wheel(TOKAWindowID, int x, int y, int wheel, int clicks, void*) {
  gMouse[3]++;
  Log("panel: wheel %d at %d %d\n", clicks, x, y);
  return 1;
}

void Key(TOKAWindowID, char, int, char, void*, int) {}

int Sniff(char key, int flags, char virtualKey, void*) {
  Log("panel: key %d flags %d virtual %d\n", (unsigned char)key, flags, (unsigned char)virtualKey);
  return 1;
}

void HotKey(void*) { Toggle(); }

void MenuPicked(void*, void* item) {
  if (item == (void*)1) Toggle();
}

int ToggleCommand(TOKACommandRef, int phase, void*) {
  Log("panel: command phase %d\n", phase);
  if (phase == TOKA_COMMAND_BEGIN) Toggle();
  return 1;
}

int ReadVisible(void*) { return TOKAGetWindowIsVisible(gWindow); }
void WriteVisible(void*, int value) { Show(value != 0); }
float ReadScale(void*) { return gScale; }
void WriteScale(void*, float value) { gScale = value; }
int ReadMouse(void*, int* values, int offset, int max) {
  if (!values) return 4;
  int count = 0;
  for (; count < max && offset + count < 4; ++count) values[count] = gMouse[offset + count];
  return count;
}
int ReadTitle(void*, void* values, int offset, int max) {
  if (!values) return (int)sizeof kTitle;
  int count = offset < (int)sizeof kTitle ? (int)sizeof kTitle - offset : 0;
  if (count > max) count = max;
  if (count > 0) std::memcpy(values, kTitle + offset, (size_t)count);
  return count;
}

// Everything is made once, on the first enable, when the plugin's name is
// known to the library.
void SetUp() {
  TOKACreateWindow_t params = {sizeof(TOKACreateWindow_t), 100, 700, 300, 600, 1, Draw, Mouse, Key, nullptr, Wheel, nullptr};
  gWindow = TOKACreateWindowEx(&params);
  TOKARegisterHotKey(0x70, 0, "Show or hide the panel", HotKey, nullptr);
  TOKARegisterKeySniffer(Sniff, 1, nullptr);
  gMenu = TOKACreateMenu("Panel", nullptr, 0, MenuPicked, nullptr);
  TOKAAppendMenuItem(gMenu, "Show panel", (void*)1, 0);
  TOKAAppendMenuItem(gMenu, "Never", (void*)2, 0);
  TOKACheckMenuItem(gMenu, 0, TOKA_MENU_CHECKED);
  TOKAEnableMenuItem(gMenu, 1, 0);
  gToggle = TOKACreateCommand("test/panel/toggle", "Show or hide the panel");
  TOKARegisterCommandHandler(gToggle, ToggleCommand, 1, nullptr);
  TOKARegisterDataAccessor("test/panel/visible", 1, 1, ReadVisible, WriteVisible, nullptr,
                           nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr);
  TOKARegisterDataAccessor("test/panel/scale", 2, 1, nullptr, nullptr, ReadScale, WriteScale,
                           nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr);
  TOKARegisterDataAccessor("test/panel/mouse", 16, 0, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, ReadMouse, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr);
  TOKARegisterDataAccessor("test/panel/title", 32, 0, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, ReadTitle,
                           nullptr, nullptr, nullptr);
}

}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  std::strcpy(outName, "Panel");
  std::strcpy(outSignature, "test.host.panel");
  std::strcpy(outDescription, "A window, a hot key, a menu, a command and datarefs.");
  return 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  if (!gWindow) SetUp();
  Log("panel: enabled\n");
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) { Log("panel: disabled\n"); }

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {
  Log("panel: message %d from %d param %d\n", message, from, (int)(intptr_t)param);
}
