// Scripted display callbacks: windows, draw callbacks, key sniffers and hot
// keys whose refcon is a script saying what they answer and what else they
// do. Every call the library makes into them is logged in Events().
#ifndef TOKA_TEST_DISPLAY_SCRIPTS_H
#define TOKA_TEST_DISPLAY_SCRIPTS_H

#include <functional>
#include <string>
#include <utility>

#include "harness/harness.h"
#include "toka/TOKADisplay.h"

namespace toka_test {

// Logs "name.draw()", "name.key(key,flags,virtualKey,<window>,losing)" where
// <window> is the name of the window handed over or 0,
// "name.mouse(x,y,status)", "name.cursor(x,y)", "name.wheel(x,y,wheel,clicks)".
struct ScriptedWindow {
  ScriptedWindow(std::string windowName) : name(std::move(windowName)) {}
  std::string name;
  int mouseResult = 1;   // answer to mouse events
  int cursorResult = 0;  // answer to cursor queries
  int wheelResult = 0;   // answer to wheel events
  // Extra work done inside the callbacks, after logging the call.
  std::function<void()> onDraw;
  std::function<void(int status)> onMouse;
  std::function<void(int losingFocus)> onKey;
  TOKAWindowID id = nullptr;
};

// Refcons are ScriptedCallback pointers: draw callbacks log
// "name.draw(phase,before)", sniffers "name.sniff(key,flags,virtualKey)" and
// hot keys "name.hotkey()".
int DrawThunk(int phase, int before, void* refcon);
int SnifferThunk(char key, int flags, char virtualKey, void* refcon);

class DisplayTest : public TokaTest {
protected:
  const int alpha = 1, beta = 2;

  void SetUp() override { StartTwo(); }
  // Creates the window as plugin `plugin` with TOKACreateWindowEx; without
  // cursor and wheel callbacks when `full` is false.
  TOKAWindowID OpenWindow(int plugin, ScriptedWindow& window, int left, int top, int right,
                          int bottom, int visible = 1, bool full = true);
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
