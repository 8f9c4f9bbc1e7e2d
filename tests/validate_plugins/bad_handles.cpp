// Passes the library one handle of each sort that is wrong, and the handles
// that are right to pass as null, when it is first enabled.
#include <cstring>

#include "toka/TOKA.h"

namespace {
int gNotAHandle = 0;
void Draw(TOKAWindowID, void*) {}
void Key(TOKAWindowID, char, int, char, void*, int) {}
int Mouse(TOKAWindowID, int, int, int, void*) { return 1; }
float Tick(float, float, int, void*) { return 0; }
void Pressed(void*) {}
}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  std::strcpy(name, "Bad handles");
  std::strcpy(signature, "toka.test.bad-handles");
  std::strcpy(description, "Passes wrong handles.");
  return 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() {
  static bool done = false;
  if (done) return 1;
  done = true;
  TOKAGetDatai(nullptr);

  TOKACreateFlightLoop_t params = {sizeof(params), 0, Tick, nullptr};
  TOKAFlightLoopID loop = TOKACreateFlightLoop(&params);
  TOKADestroyFlightLoop(loop);
  TOKAScheduleFlightLoop(loop, 1, 1);

  TOKAWindowID window = TOKACreateWindow(0, 100, 100, 0, 0, Draw, Key, Mouse, nullptr);
  TOKADestroyWindow(window);
  TOKAGetWindowIsVisible(window);
  TOKAGetWindowIsVisible(window);

  TOKAHotKeyID hotKey = TOKARegisterHotKey(0x76, 0, "", Pressed, nullptr);
  TOKASetWindowIsVisible(hotKey, 1);
  TOKAUnregisterHotKey(hotKey);

  TOKADestroyMenu(&gNotAHandle);

  // Null is right for these.
  TOKATakeKeyboardFocus(nullptr);
  TOKAMenuID menu = TOKACreateMenu("Bad handles", nullptr, 0, nullptr, nullptr);
  TOKADestroyMenu(menu);
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginDisable() {}
TOKA_PLUGIN_EXPORT void OrvanePluginStop() {}
