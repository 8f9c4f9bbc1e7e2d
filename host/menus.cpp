// The simulator's menu bar: its own menus and those the library builds for
// plugins (services 30 to 33 and 63), shown as text and picked by path.
#include "host/menus.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include "host/commands.h"
#include "host/library.h"
#include "host/output.h"
#include "host/services.h"

namespace toka_host {

namespace {

struct MenuItem {
  int hostID;
  std::string name;
  int forceEnglish = 0;
  int submenu = -1;     // the menu this item opens, if any
  std::string command;  // the host's own items run a command
};

struct HostMenu {
  std::string name;
  std::vector<MenuItem> items;
};

constexpr int kMenuBar = 0;  // its items are the top-level menus
std::map<int, HostMenu> gMenus;
int gNextMenu = 1;
int gNextItem = 1;

HostMenu* MenuOf(int menu) {
  auto found = gMenus.find(menu);
  return found == gMenus.end() ? nullptr : &found->second;
}

MenuItem* ItemOf(int menu, int index) {
  HostMenu* record = MenuOf(menu);
  return record && index >= 0 && index < (int)record->items.size() ? &record->items[index] : nullptr;
}

int NewMenu(const std::string& name) {
  int id = gNextMenu++;
  gMenus[id].name = name;
  return id;
}

int AddItem(int menu, size_t index, const std::string& name, int forceEnglish) {
  HostMenu& record = gMenus[menu];
  MenuItem item{gNextItem++, name, forceEnglish, -1, ""};
  index = std::min(index, record.items.size());
  record.items.insert(record.items.begin() + index, item);
  return item.hostID;
}

void AddHostMenu(const std::string& name,
                 const std::vector<std::pair<std::string, std::string>>& items) {
  int menu = NewMenu(name);
  gMenus[kMenuBar].items.push_back({gNextItem++, name, 0, menu, ""});
  for (const auto& item : items) {
    AddItem(menu, SIZE_MAX, item.first, 0);
    gMenus[menu].items.back().command = item.second;
  }
}

// Items cleared by the library keep their place as empty names; the user
// does not see them.
void AppendMenuText(int menu, int depth, std::string& text) {
  HostMenu* record = MenuOf(menu);
  if (!record) return;
  for (size_t i = 0; i < record->items.size(); ++i) {
    const MenuItem& item = record->items[i];
    if (item.name.empty()) continue;
    std::string line(depth * 2, ' ');
    line += item.name == "-" ? "----" : item.name;
    int checked = -1;
    if (gLibrary.CheckMenuHook && gLibrary.CheckMenuHook(menu, (int)i, &checked) == 0 && checked >= 0)
      line += checked ? " [x]" : " [ ]";
    if (gLibrary.MenuItemEnabled && !gLibrary.MenuItemEnabled(menu, (int)i)) line += " (disabled)";
    if (item.submenu != -1) line += " >";
    text += line + "\n";
    if (item.submenu != -1) AppendMenuText(item.submenu, depth + 1, text);
  }
}

// ---- services --------------------------------------------------------------

// A menu whose parent is the menu bar (0) becomes a top-level menu; any
// other parent opens it from the given item.
int CreateMenu(int parentMenu, int parentItem, const char* name) {
  if (parentMenu != kMenuBar && !MenuOf(parentMenu)) return 0;
  int menu = NewMenu(name ? name : "");
  if (parentMenu == kMenuBar)
    gMenus[kMenuBar].items.push_back({gNextItem++, name ? name : "", 0, menu, ""});
  else if (MenuItem* item = ItemOf(parentMenu, parentItem))
    item->submenu = menu;
  return menu;
}

int AppendMenuItem(int menu, int index, const char* name, int forceEnglish) {
  if (menu == kMenuBar || !MenuOf(menu)) return 0;
  return AddItem(menu, index < 0 ? SIZE_MAX : (size_t)index, name ? name : "", forceEnglish);
}

void SetMenuItemName(int menu, int index, const char* name, int forceEnglish) {
  if (MenuItem* item = menu == kMenuBar ? nullptr : ItemOf(menu, index)) {
    item->name = name ? name : "";
    item->forceEnglish = forceEnglish;
  }
}

void DestroyMenu(int menu) {
  if (menu == kMenuBar || !gMenus.erase(menu)) return;
  // The item that opened it stays (the library removes it separately), and
  // in the menu bar the menu's title goes with it.
  for (auto& entry : gMenus) {
    std::vector<MenuItem>& items = entry.second.items;
    for (size_t i = items.size(); i-- > 0;) {
      if (items[i].submenu != menu) continue;
      if (entry.first == kMenuBar) items.erase(items.begin() + i);
      else items[i].submenu = -1;
    }
  }
}

void RemoveMenuItem(int menu, int index) {
  HostMenu* record = menu == kMenuBar ? nullptr : MenuOf(menu);
  if (record && index >= 0 && index < (int)record->items.size())
    record->items.erase(record->items.begin() + index);
}

}  // namespace

void ResetMenus() {
  gMenus.clear();
  gMenus[kMenuBar].name = "";
  gNextMenu = 1;
  gNextItem = 1;
  AddHostMenu("Sim", {{"Pause", "sim/operation/pause_toggle"},
                      {"Reset flight", "sim/operation/reset_flight"},
                      {"Quit", "sim/operation/quit"}});
  AddHostMenu("View", {{"Default view", "sim/view/default_view"}});
}

std::string MenuTreeText() {
  std::string text;
  AppendMenuText(kMenuBar, 0, text);
  return text;
}

namespace {

// The first item of a menu with the name; -1 when there is none. A path
// names the first of items of the same name.
int ItemNamed(const HostMenu& menu, const std::string& name) {
  for (size_t i = 0; i < menu.items.size(); ++i)
    if (menu.items[i].name == name) return (int)i;
  return -1;
}

// The menu a path of names opens ("" for the menu bar), each name an item
// that opens a menu; -1 when there is none.
int MenuOpenedBy(const std::string& path) {
  int menu = kMenuBar;
  for (size_t start = 0; !path.empty() && start <= path.size();) {
    size_t end = path.find('/', start);
    if (end == std::string::npos) end = path.size();
    HostMenu* record = MenuOf(menu);
    int index = record ? ItemNamed(*record, path.substr(start, end - start)) : -1;
    if (index < 0) return -1;
    menu = record->items[index].submenu;
    if (menu == -1) return -1;
    start = end + 1;
  }
  return menu;
}

// Follows a path of names from the menu bar to an item that opens no menu,
// in a menu below the bar.
MenuItem* FindPickableItem(const std::string& path, int& menu, int& index) {
  size_t slash = path.rfind('/');
  if (slash == std::string::npos) return nullptr;
  menu = MenuOpenedBy(path.substr(0, slash));
  HostMenu* record = menu == kMenuBar || menu == -1 ? nullptr : MenuOf(menu);
  index = record ? ItemNamed(*record, path.substr(slash + 1)) : -1;
  if (index < 0 || record->items[index].submenu != -1) return nullptr;
  return &record->items[index];
}

bool IsEnabled(int menu, int index) {
  return !gLibrary.MenuItemEnabled || gLibrary.MenuItemEnabled(menu, index);
}

}  // namespace

bool PickMenuItem(const std::string& path) {
  int menu, index;
  MenuItem* item = FindPickableItem(path, menu, index);
  if (!item) return false;
  // The user cannot pick what the menu shows greyed out.
  if (!IsEnabled(menu, index)) {
    HostPrint("[menu] " + path + " is disabled\n");
    return false;
  }
  HostPrint("[menu] " + path + "\n");
  // The library answers 0 when a plugin's item was picked; the rest is ours.
  std::string command = item->command;
  if (gLibrary.MenuHook && gLibrary.MenuHook(item->hostID) == 0) return true;
  if (!command.empty()) RunCommandOnce(FindHostCommand(command));
  return true;
}

std::vector<ShownMenuItem> MenuItemsAt(const std::string& path) {
  std::vector<ShownMenuItem> items;
  int menu = MenuOpenedBy(path);
  HostMenu* record = menu == -1 ? nullptr : MenuOf(menu);
  for (size_t i = 0; record && i < record->items.size(); ++i) {
    const MenuItem& item = record->items[i];
    if (item.name.empty()) continue;  // cleared by the library: not shown
    ShownMenuItem shown{item.name, item.name == "-", item.submenu != -1, -1, true};
    if (menu != kMenuBar) {
      if (gLibrary.CheckMenuHook && gLibrary.CheckMenuHook(menu, (int)i, &shown.checked) != 0)
        shown.checked = -1;
      shown.enabled = IsEnabled(menu, (int)i);
    }
    items.push_back(shown);
  }
  return items;
}

bool MenuItemState(const std::string& path, int& checked, bool& enabled) {
  int menu, index;
  if (!FindPickableItem(path, menu, index)) return false;
  checked = -1;
  if (gLibrary.CheckMenuHook && gLibrary.CheckMenuHook(menu, index, &checked) != 0) checked = -1;
  enabled = IsEnabled(menu, index);
  return true;
}

void AddMenuServices(TOKAHostServices& table) {
  table.CreateMenu = CreateMenu;
  table.AppendMenuItem = AppendMenuItem;
  table.SetMenuItemName = SetMenuItemName;
  table.DestroyMenu = DestroyMenu;
  table.RemoveMenuItem = RemoveMenuItem;
}

}  // namespace toka_host
