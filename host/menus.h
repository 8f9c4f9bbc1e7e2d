// The simulator's menu bar, as the user sees and picks it.
#ifndef TOKA_HOST_MENUS_H
#define TOKA_HOST_MENUS_H

#include <string>

namespace toka_host {

void ResetMenus();
std::string MenuTreeText();  // the menu bar as the user sees it
// Picks an item by its path of names ("Plugins/Hello/Say hi"). False when no
// such item exists or it is disabled.
bool PickMenuItem(const std::string& path);
// What the user sees of an item: false when there is no such item; checked
// is 1 checked, 0 unchecked, -1 without a check mark.
bool MenuItemState(const std::string& path, int& checked, bool& enabled);

}  // namespace toka_host

#endif
