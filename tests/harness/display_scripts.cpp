#include "harness/display_scripts.h"

#include <map>

#include "harness/harness.h"

namespace toka_test {

namespace {

std::map<TOKAWindowID, std::string>& WindowNames() {
  static std::map<TOKAWindowID, std::string> names;
  return names;
}

void Record(const std::string& name, const std::string& call) {
  DisplayCalls().push_back(name + "." + call + "@" + std::to_string(TOKAGetMyID()));
}

std::string List(std::initializer_list<int> values) {
  std::string text;
  for (int value : values) text += (text.empty() ? "" : ",") + std::to_string(value);
  return "(" + text + ")";
}

ScriptedWindow& Of(void* refcon) { return *static_cast<ScriptedWindow*>(refcon); }

void Draw(TOKAWindowID, void* refcon) {
  Record(Of(refcon).name, "draw()");
  if (Of(refcon).onDraw) Of(refcon).onDraw();
}

void Key(TOKAWindowID window, char key, int flags, char virtualKey, void* refcon, int losing) {
  std::string other = "0";
  if (window) other = WindowNames().count(window) ? WindowNames()[window] : "?";
  Record(Of(refcon).name, "key(" + std::to_string(key) + "," + std::to_string(flags) + "," +
                              std::to_string(virtualKey) + "," + other + "," +
                              std::to_string(losing) + ")");
  if (Of(refcon).onKey) Of(refcon).onKey(losing);
}

int Mouse(TOKAWindowID, int x, int y, int status, void* refcon) {
  Record(Of(refcon).name, "mouse" + List({x, y, status}));
  ScriptedWindow& window = Of(refcon);
  int result = window.mouseResult;  // the script may destroy the window
  if (window.onMouse) window.onMouse(status);
  return result;
}

int Cursor(TOKAWindowID, int x, int y, void* refcon) {
  Record(Of(refcon).name, "cursor" + List({x, y}));
  return Of(refcon).cursorResult;
}

int Wheel(TOKAWindowID, int x, int y, int wheel, int clicks, void* refcon) {
  Record(Of(refcon).name, "wheel" + List({x, y, wheel, clicks}));
  return Of(refcon).wheelResult;
}

ScriptedCallback& Callback(void* refcon) { return *static_cast<ScriptedCallback*>(refcon); }

}  // namespace

std::vector<std::string>& DisplayCalls() {
  static std::vector<std::string> calls;
  return calls;
}

TOKAWindowID OpenWindow(int plugin, ScriptedWindow& window, int left, int top, int right,
                        int bottom, int visible, bool full) {
  TOKACreateWindow_t params = {48,
                               left,
                               top,
                               right,
                               bottom,
                               visible,
                               Draw,
                               Mouse,
                               Key,
                               full ? Cursor : nullptr,
                               full ? Wheel : nullptr,
                               &window};
  RunAs(plugin, [&] { window.id = TOKACreateWindowEx(&params); });
  WindowNames()[window.id] = window.name;
  return window.id;
}

int DrawThunk(int phase, int before, void* refcon) {
  ScriptedCallback& callback = Callback(refcon);
  Record(callback.name, "draw" + List({phase, before}));
  int result = callback.result;
  if (callback.onCall) callback.onCall();
  return result;
}

int SnifferThunk(char key, int flags, char virtualKey, void* refcon) {
  ScriptedCallback& callback = Callback(refcon);
  Record(callback.name, "sniff" + List({key, flags, virtualKey}));
  int result = callback.result;
  if (callback.onCall) callback.onCall();
  return result;
}

void HotKeyThunk(void* refcon) {
  Record(Callback(refcon).name, "hotkey()");
  if (Callback(refcon).onCall) Callback(refcon).onCall();
}

void DisplayTest::Start() {
  AddScripted("alpha.orv", "alpha");
  AddScripted("beta.orv", "beta");
  Initialize();
  alpha = TOKAFindPluginBySignature("test.alpha");
  beta = TOKAFindPluginBySignature("test.beta");
  Events().clear();
  DisplayCalls().clear();
  host.ClearRecords();
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

TOKAHotKeyID DisplayTest::HotKey(int plugin, ScriptedCallback& callback, char virtualKey, int flags,
                                 const char* description) {
  TOKAHotKeyID id = nullptr;
  RunAs(plugin,
        [&] { id = TOKARegisterHotKey(virtualKey, flags, description, HotKeyThunk, &callback); });
  return id;
}

}  // namespace toka_test
