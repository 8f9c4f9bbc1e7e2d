#include "harness/display_scripts.h"

#include <map>

namespace toka_test {

namespace {

std::map<TOKAWindowID, std::string>& WindowNames() {
  static std::map<TOKAWindowID, std::string> names;
  return names;
}

std::string List(std::initializer_list<int> values) {
  std::string text;
  for (int value : values) text += (text.empty() ? "" : ",") + std::to_string(value);
  return "(" + text + ")";
}

ScriptedWindow& Of(void* refcon) { return *static_cast<ScriptedWindow*>(refcon); }
ScriptedCallback& Callback(void* refcon) { return *static_cast<ScriptedCallback*>(refcon); }

void Draw(TOKAWindowID, void* refcon) {
  Log(Of(refcon).name + ".draw()");
  if (Of(refcon).onDraw) Of(refcon).onDraw();
}

void Key(TOKAWindowID window, char key, int flags, char virtualKey, void* refcon, int losing) {
  std::string other = window ? (WindowNames().count(window) ? WindowNames()[window] : "?") : "0";
  std::string keys = List({key, flags, virtualKey});
  Log(Of(refcon).name + ".key" + keys.erase(keys.size() - 1) + "," + other + "," +
      std::to_string(losing) + ")");
  if (Of(refcon).onKey) Of(refcon).onKey(losing);
}

int Mouse(TOKAWindowID, int x, int y, int status, void* refcon) {
  ScriptedWindow& window = Of(refcon);
  Log(window.name + ".mouse" + List({x, y, status}));
  int result = window.mouseResult;  // the script may destroy the window
  if (window.onMouse) window.onMouse(status);
  return result;
}

int Cursor(TOKAWindowID, int x, int y, void* refcon) {
  Log(Of(refcon).name + ".cursor" + List({x, y}));
  return Of(refcon).cursorResult;
}

int Wheel(TOKAWindowID, int x, int y, int wheel, int clicks, void* refcon) {
  Log(Of(refcon).name + ".wheel" + List({x, y, wheel, clicks}));
  return Of(refcon).wheelResult;
}

void HotKeyThunk(void* refcon) { Callback(refcon).Run(".hotkey()"); }

}  // namespace

int DrawThunk(int phase, int before, void* refcon) {
  return Callback(refcon).Run(".draw" + List({phase, before}));
}

int SnifferThunk(char key, int flags, char virtualKey, void* refcon) {
  return Callback(refcon).Run(".sniff" + List({key, flags, virtualKey}));
}

TOKAWindowID DisplayTest::OpenWindow(int plugin, ScriptedWindow& window, int left, int top,
                                     int right, int bottom, int visible, bool full) {
  TOKACreateWindow_t params = {sizeof(TOKACreateWindow_t), left, top, right, bottom, visible,
                               toka_test::Draw, Mouse, Key, full ? Cursor : nullptr,
                               full ? Wheel : nullptr, &window};
  RunAs(plugin, [&] { window.id = TOKACreateWindowEx(&params); });
  WindowNames()[window.id] = window.name;
  return window.id;
}

void DisplayTest::MouseAt(int x, int y) {
  host.onCall[3] = [x, y](const HostCall& call) -> intptr_t {
    *call.arg<int*>(0) = x;
    *call.arg<int*>(1) = y;
    return 0;
  };
}

void DisplayTest::Draw(int plugin, ScriptedCallback& callback, int phase, int before) {
  RunAs(plugin,
        [&] { EXPECT_EQ(1, TOKARegisterDrawCallback(DrawThunk, phase, before, &callback)); });
}

void DisplayTest::Sniff(int plugin, ScriptedCallback& callback, int beforeWindows) {
  RunAs(plugin,
        [&] { EXPECT_EQ(1, TOKARegisterKeySniffer(SnifferThunk, beforeWindows, &callback)); });
}

TOKAHotKeyID DisplayTest::HotKey(int plugin, ScriptedCallback& callback, char virtualKey,
                                 int flags, const char* description) {
  TOKAHotKeyID id = nullptr;
  RunAs(plugin,
        [&] { id = TOKARegisterHotKey(virtualKey, flags, description, HotKeyThunk, &callback); });
  return id;
}

}  // namespace toka_test
