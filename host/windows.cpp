// The plugins' windows, as far as the host can see them.
//
// The library keeps its window list to itself: a simulator is never told
// which windows exist. To answer "is there a window here?" the host stands in
// front of the two functions that create windows. toka-host exports them
// (see host/CMakeLists.txt), and since the executable comes first in the
// process's symbol search order, a plugin's call reaches these, which pass it
// on to the library's own and note the handle. Whether a noted window still
// exists, where it is and whether it is visible are then asked of the library,
// which checks every handle against its list: a destroyed window, or one whose
// plugin is gone, is simply no longer found.
#include "host/windows.h"

#include <algorithm>
#include <dlfcn.h>

#include <climits>
#include <vector>

#include "host/library.h"
#include "toka/TOKADisplay.h"

namespace toka_host {

namespace {

std::vector<SeenWindow> gSeenWindows;  // newest last

template <class F>
F LibraryFunction(const char* name) {
  // The next definition after the executable's is the library's.
  void* function = dlsym(RTLD_NEXT, name);
  if (!function && gLibrary.handle) function = dlsym(gLibrary.handle, name);
  return reinterpret_cast<F>(function);
}

// Windows are noted with their creator's ID and named when asked about: a
// plugin that creates its windows while it starts, as most do, has no name
// yet (the library knows it by its file name until its start returns).
std::string PluginName(int id) {
  if (!gLibrary.GetPluginInfo || !gLibrary.CountPlugins) return "";
  if (id < 0 || id >= gLibrary.CountPlugins()) return "";
  char name[256] = "";
  gLibrary.GetPluginInfo(id, name, nullptr, nullptr, nullptr);
  return name;
}

void NoteWindow(void* handle) {
  if (!handle) return;
  // A new window may reuse the address of a destroyed one.
  gSeenWindows.erase(std::remove_if(gSeenWindows.begin(), gSeenWindows.end(),
                                    [handle](const SeenWindow& w) { return w.handle == handle; }),
                     gSeenWindows.end());
  int creator = gLibrary.GetMyID ? gLibrary.GetMyID() : -1;
  gSeenWindows.push_back({handle, "", 0, 0, 0, 0, creator});
}

// Refreshes the geometry of a noted window from the library; false when the
// library no longer knows the handle (it leaves the outputs alone then).
bool StillExists(SeenWindow& window) {
  if (!gLibrary.GetWindowGeometry) return false;
  int left = INT_MIN, top = INT_MIN, right = INT_MIN, bottom = INT_MIN;
  gLibrary.GetWindowGeometry(window.handle, &left, &top, &right, &bottom);
  if (left == INT_MIN && top == INT_MIN && right == INT_MIN && bottom == INT_MIN) return false;
  window.left = left, window.top = top, window.right = right, window.bottom = bottom;
  return true;
}

}  // namespace

bool WindowAt(int x, int y, SeenWindow& found) {
  for (size_t i = gSeenWindows.size(); i-- > 0;) {
    SeenWindow& window = gSeenWindows[i];
    if (!StillExists(window)) {
      gSeenWindows.erase(gSeenWindows.begin() + i);
      continue;
    }
    if (!gLibrary.GetWindowIsVisible || !gLibrary.GetWindowIsVisible(window.handle)) continue;
    if (window.left <= x && x < window.right && window.bottom <= y && y < window.top) {
      found = window;
      found.plugin = PluginName(window.pluginID);
      return true;
    }
  }
  return false;
}

}  // namespace toka_host

extern "C" {

__attribute__((visibility("default"))) TOKAWindowID TOKACreateWindow(
    int left, int top, int right, int bottom, int visible, TOKADrawWindow_f draw,
    TOKAHandleKey_f key, TOKAHandleMouseClick_f mouse, void* refcon) {
  static auto create = toka_host::LibraryFunction<decltype(&TOKACreateWindow)>("TOKACreateWindow");
  if (!create) return nullptr;
  TOKAWindowID window = create(left, top, right, bottom, visible, draw, key, mouse, refcon);
  toka_host::NoteWindow(window);
  return window;
}

__attribute__((visibility("default"))) TOKAWindowID TOKACreateWindowEx(TOKACreateWindow_t* params) {
  static auto create =
      toka_host::LibraryFunction<decltype(&TOKACreateWindowEx)>("TOKACreateWindowEx");
  if (!create) return nullptr;
  TOKAWindowID window = create(params);
  toka_host::NoteWindow(window);
  return window;
}

}  // extern "C"
