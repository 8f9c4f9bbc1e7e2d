// Scripted display callbacks: windows, draw callbacks, key sniffers and hot
// keys whose refcon is a script saying what they answer and what else they
// do, and which record every call the library makes into them.
#ifndef TOKA_TEST_DISPLAY_SCRIPTS_H
#define TOKA_TEST_DISPLAY_SCRIPTS_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "harness/harness.h"
#include "toka/TOKADisplay.h"

namespace toka_test {

// Every call into a scripted display callback, in order, as
// "<name>.<what>(<arguments>)@<dispatched ID>".
std::vector<std::string>& DisplayCalls();

struct ScriptedWindow {
  ScriptedWindow(std::string windowName) : name(std::move(windowName)) {}
  std::string name;
  int mouseResult = 1;   // answer to mouse events
  int cursorResult = 0;  // answer to cursor queries
  int wheelResult = 0;   // answer to wheel events
  // Extra work done inside the callbacks, after recording the call.
  std::function<void()> onDraw;
  std::function<void(int status)> onMouse;
  std::function<void(int losingFocus)> onKey;
  TOKAWindowID id = nullptr;
};

// Creates the window as plugin `plugin` (which must be enabled) with
// TOKACreateWindowEx; without cursor and wheel callbacks when `full` is
// false. Records "name.draw()", "name.key(key,flags,virtualKey,<window>,
// losing)" where <window> is the name of the window handed over or 0,
// "name.mouse(x,y,status)", "name.cursor(x,y)", "name.wheel(x,y,wheel,clicks)".
TOKAWindowID OpenWindow(int plugin, ScriptedWindow& window, int left, int top, int right,
                        int bottom, int visible = 1, bool full = true);

struct ScriptedCallback {
  ScriptedCallback(std::string callbackName, int answer = 1)
      : name(std::move(callbackName)), result(answer) {}
  std::string name;
  int result = 1;
  std::function<void()> onCall;
};

// Refcons are ScriptedCallback pointers. Draw callbacks record
// "name.draw(phase,before)", sniffers "name.sniff(key,flags,virtualKey)", hot keys
// "name.hotkey()".
int DrawThunk(int phase, int before, void* refcon);
int SnifferThunk(char key, int flags, char virtualKey, void* refcon);
void HotKeyThunk(void* refcon);

using Calls = std::vector<std::string>;

class DisplayTest : public TokaTest {
protected:
  int alpha = 0;
  int beta = 0;

  // "@" and the plugin ID, as call records end.
  static std::string At(int plugin) { return "@" + std::to_string(plugin); }
  // Runs fn and returns the display calls it caused.
  template <class F>
  static Calls During(F fn) {
    DisplayCalls().clear();
    fn();
    return DisplayCalls();
  }

  // Loads and enables the scripted plugins alpha and beta, then forgets the
  // calls made so far.
  void Start();
  // The simulator reports the mouse at (x, y) (service 3).
  void MouseAt(int x, int y);
  // Registers a draw callback, sniffer or hot key as plugin.
  void Draw(int plugin, ScriptedCallback& callback, int phase, int before);
  void Sniff(int plugin, ScriptedCallback& callback, int beforeWindows);
  TOKAHotKeyID HotKey(int plugin, ScriptedCallback& callback, char virtualKey, int flags,
                      const char* description = "");
};

}  // namespace toka_test

#endif
