// The simulator's menu bar, as the user sees and picks it.
#ifndef TOKA_HOST_MENUS_H
#define TOKA_HOST_MENUS_H

#include <string>
#include <vector>

namespace toka_host {

void ResetMenus();
std::string MenuTreeText();  // the menu bar as the user sees it
// Picks an item by its path of names ("Plugins/Hello/Say hi"). False when no
// such item exists or it is disabled.
bool PickMenuItem(const std::string& path);
// What the user sees of an item: false when there is no such item; checked
// is 1 checked, 0 unchecked, -1 without a check mark.
bool MenuItemState(const std::string& path, int& checked, bool& enabled);

// The items of the menu that a path of names opens ("" for the menu bar,
// "Plugins/Hello" for a plugin's menu), as the user sees them; empty when
// the path opens no menu.
struct ShownMenuItem {
  std::string name;
  bool separator;
  bool opensMenu;
  int checked;  // 1 checked, 0 unchecked, -1 without a check mark
  bool enabled;
};
std::vector<ShownMenuItem> MenuItemsAt(const std::string& path);

}  // namespace toka_host

#endif
