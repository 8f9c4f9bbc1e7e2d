// The plugins' windows, as far as the host can see them.
#ifndef TOKA_HOST_WINDOWS_H
#define TOKA_HOST_WINDOWS_H

#include <string>

namespace toka_host {

struct SeenWindow {
  void* handle;
  std::string plugin;  // the name of the plugin that created it
  int left, top, right, bottom;
  int pluginID;  // the ID of the plugin that created it
};
// A visible plugin window that covers a point (left and bottom edges inside,
// right and top outside), the newest when several do; false when none does.
bool WindowAt(int x, int y, SeenWindow& window);

}  // namespace toka_host

#endif
