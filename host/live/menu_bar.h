// The simulator's menu bar in the frame, as the user of the window sees it:
// a bar across the top of the screen while the mouse is in its strip, with
// the simulator's and the plugins' menus, opened and picked with clicks.
#ifndef TOKA_HOST_LIVE_MENU_BAR_H
#define TOKA_HOST_LIVE_MENU_BAR_H

#include <string>

namespace toka_host {

constexpr int kMenuBarHeight = 20;

void ResetMenuBar();
// After the frame's drawing codes: the bar while the mouse is in its strip
// or a menu is open, and the open menus below it.
void DrawMenuBar();
// A press of the button at a point. True when the bar takes it (any press in
// its strip): it opens or closes a menu, or picks an item, whose path of
// names is then in picked. Any press closes an open menu, and that press is
// the bar's too.
bool MenuBarPress(int x, int y, std::string& picked);

}  // namespace toka_host

#endif
