// Plugin menus: mirror records of the menus plugins create in the host's
// menu bar, the Plugins menu, and the answers to the host's menu queries.
#include <algorithm>
#include <vector>

#include "loader/enabling.h"
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"
#include "toka/TOKAMenus.h"
#include "toka/TOKAPlugins.h"

// One menu a plugin created. The five item vectors run in parallel: an
// item's index is its position in them.
struct TOKAMenuInfo_t {
  int hostMenuID = 0;
  void* menuRef = nullptr;
  std::vector<int> itemHostIDs;
  std::vector<void*> itemRefs;
  std::vector<int> itemChecks;
  std::vector<int> itemEnabled;
  std::vector<int> itemOwners;
  TOKAMenuHandler_f handler = nullptr;
  int plugin = -1;
};

// Every menu, in order of creation.
static std::vector<TOKAMenuInfo_t*> gMenus;
static TOKAMenuInfo_t* gPluginsMenu = nullptr;

// The list owns its records; those still listed go with the library.
static struct MenuListOwner {
  ~MenuListOwner() {
    for (TOKAMenuInfo_t* menu : gMenus) delete menu;
    gMenus.clear();
    gPluginsMenu = nullptr;
  }
} gMenuListOwner;

// The host's menu destruction service exists from this host version on;
// older hosts keep their menus, renamed empty.
static bool HostCanDestroyMenus() {
  return gHostServices->version > 283u;
}

static TOKAMenuInfo_t* AsMenu(TOKAMenuID menu) {
  return static_cast<TOKAMenuInfo_t*>(menu);
}

static bool IsListed(TOKAMenuInfo_t* menu) {
  return std::find(gMenus.begin(), gMenus.end(), menu) != gMenus.end();
}

// The calls that take a menu do nothing with one that is not listed (null,
// destroyed, or never made): a plugin that keeps a menu past its
// destruction must not write into freed memory of the simulator's process.
// They report nothing either, as they never have; toka-validate names such
// handles.
static TOKAMenuInfo_t* ListedMenu(TOKAMenuID menu) {
  TOKAMenuInfo_t* record = AsMenu(menu);
  return IsListed(record) ? record : nullptr;
}

// Enabling and checking an item take the index on trust, without an error
// for a bad one; an index past the items changes and answers nothing.
static bool HasItem(const TOKAMenuInfo_t* menu, int index) {
  return index >= 0 && index < (int)menu->itemHostIDs.size();
}

static void EraseItem(TOKAMenuInfo_t* menu, int index) {
  menu->itemHostIDs.erase(menu->itemHostIDs.begin() + index);
  menu->itemRefs.erase(menu->itemRefs.begin() + index);
  menu->itemChecks.erase(menu->itemChecks.begin() + index);
  menu->itemEnabled.erase(menu->itemEnabled.begin() + index);
  menu->itemOwners.erase(menu->itemOwners.begin() + index);
}

static void RemoveItem(TOKAMenuInfo_t* menu, int index) {
  gHostServices->RemoveMenuItem(menu->hostMenuID, index);
  EraseItem(menu, index);
}

// The host has no call to remove all items at once; its items are renamed
// to "" instead, which plugins see as an emptied menu.
static void BlankHostItems(TOKAMenuInfo_t* menu) {
  for (int index = 0; index < (int)menu->itemHostIDs.size(); ++index)
    gHostServices->SetMenuItemName(menu->hostMenuID, index, "", 0);
}

static void ClearItems(TOKAMenuInfo_t* menu) {
  BlankHostItems(menu);
  menu->itemHostIDs.clear();
  menu->itemRefs.clear();
  menu->itemChecks.clear();
  menu->itemEnabled.clear();
  menu->itemOwners.clear();
}

// Frees a record that is already out of the menu list. The host itself may
// destroy the Plugins menu; later plugin menus then go to the top level.
static void FreeMenu(TOKAMenuInfo_t* menu) {
  if (menu == gPluginsMenu) gPluginsMenu = nullptr;
  delete menu;
}

static void EraseFromList(TOKAMenuInfo_t* menu) {
  gMenus.erase(std::find(gMenus.begin(), gMenus.end(), menu));
}

void TOKAInitMenus() {
  // A host that starts the library again after shutting it down finds the
  // menus of the first start-up withdrawn, as the host's own: the
  // simulator record is never unloaded, so nothing else would, and every
  // start-up would add a Plugins menu that answers the menu hooks first.
  TOKAMenuCleanupHook(0);
  // Start-up runs before the plugin list exists; the menu is the host's.
  StDispatchCallback context(0);
  gPluginsMenu = nullptr;
  gPluginsMenu = AsMenu(TOKACreateMenu("Plugins", nullptr, 0, nullptr, nullptr));
}

TOKA_API TOKAMenuID TOKAFindPluginsMenu(void) {
  TOKA_NOTE_CALL();
  return gPluginsMenu;
}

TOKA_API TOKAMenuID TOKACreateMenu(const char* name, TOKAMenuID parentMenu, int parentItem,
                                   TOKAMenuHandler_f handler, void* menuRef) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE_OR_NULL(kHandleMenu, parentMenu);
  TOKAMenuInfo_t* parent = AsMenu(parentMenu);
  if (parent && !IsListed(parent)) return nullptr;
  if (!parent && gPluginsMenu) {
    // A top-level plugin menu hangs from an item of its own in the Plugins
    // menu, whose name is fixed by the plugin and never translated.
    parentItem = TOKAAppendMenuItem(gPluginsMenu, name, nullptr, 1);
    parent = gPluginsMenu;
  }
  int parentHostID = parent ? parent->hostMenuID : 0;

  TOKAMenuInfo_t* menu = new TOKAMenuInfo_t;
  menu->hostMenuID = gHostServices->CreateMenu(parentHostID, parentItem, name);
  menu->menuRef = menuRef;
  menu->handler = handler;
  menu->plugin = TOKAGetDispatchedPlugin();
  gMenus.push_back(menu);
  TOKA_NOTE_ISSUED(kHandleMenu, menu);
  return menu;
}

TOKA_API int TOKAAppendMenuItem(TOKAMenuID menuID, const char* name, void* itemRef,
                                int forceEnglish) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleMenu, menuID);
  // Any plugin may add to any menu (plugins share the Plugins menu this
  // way); the item belongs to the plugin that added it.
  TOKAMenuInfo_t* menu = ListedMenu(menuID);
  if (!menu) return -1;
  int index = (int)menu->itemHostIDs.size();
  int hostItemID = gHostServices->AppendMenuItem(menu->hostMenuID, index, name, forceEnglish);
  menu->itemHostIDs.push_back(hostItemID);
  menu->itemRefs.push_back(itemRef);
  menu->itemChecks.push_back(TOKA_MENU_NO_CHECK);
  menu->itemEnabled.push_back(1);
  menu->itemOwners.push_back(TOKAGetDispatchedPlugin());
  return index;
}

TOKA_API int TOKAAppendMenuSeparator(TOKAMenuID menu) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleMenu, menu);
  return TOKAAppendMenuItem(menu, "-", nullptr, 0);
}

TOKA_API void TOKASetMenuItemName(TOKAMenuID menuID, int index, const char* name,
                                  int forceEnglish) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleMenu, menuID);
  if (TOKAMenuInfo_t* menu = ListedMenu(menuID))
    gHostServices->SetMenuItemName(menu->hostMenuID, index, name, forceEnglish);
}

TOKA_API void TOKAEnableMenuItem(TOKAMenuID menuID, int index, int enabled) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleMenu, menuID);
  TOKAMenuInfo_t* menu = ListedMenu(menuID);
  if (menu && HasItem(menu, index)) menu->itemEnabled[index] = enabled;
}

TOKA_API void TOKACheckMenuItem(TOKAMenuID menuID, int index, int check) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleMenu, menuID);
  TOKAMenuInfo_t* menu = ListedMenu(menuID);
  if (menu && HasItem(menu, index)) menu->itemChecks[index] = check;
}

TOKA_API void TOKACheckMenuItemState(TOKAMenuID menuID, int index, int* outCheck) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleMenu, menuID);
  TOKAMenuInfo_t* menu = ListedMenu(menuID);
  if (menu && HasItem(menu, index) && outCheck) *outCheck = menu->itemChecks[index];
}

TOKA_API void TOKARemoveMenuItem(TOKAMenuID menuID, int index) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleMenu, menuID);
  TOKAMenuInfo_t* menu = ListedMenu(menuID);
  if (!menu) return;
  if (!HasItem(menu, index)) {
    TOKASendError("TOKARemoveMenuItem was passed an out of range item index.");
    return;
  }
  RemoveItem(menu, index);
}

TOKA_API void TOKAClearAllMenuItems(TOKAMenuID menuID) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleMenu, menuID);
  TOKAMenuInfo_t* menu = ListedMenu(menuID);
  if (!menu || menu->plugin != TOKAGetDispatchedPlugin()) return;
  ClearItems(menu);
}

TOKA_API void TOKADestroyMenu(TOKAMenuID menuID) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleMenu, menuID);
  TOKAMenuInfo_t* menu = ListedMenu(menuID);
  if (!menu || menu->plugin != TOKAGetDispatchedPlugin()) return;
  ClearItems(menu);
  if (HostCanDestroyMenus()) gHostServices->DestroyMenu(menu->hostMenuID);
  EraseFromList(menu);
  FreeMenu(menu);
}

int TOKAHandleMenuItemPick(int hostItemID) {
  for (TOKAMenuInfo_t* menu : gMenus) {
    for (size_t index = 0; index < menu->itemHostIDs.size(); ++index) {
      if (menu->itemHostIDs[index] != hostItemID) continue;
      // A pick of an item found is handled, whether or not a handler ran.
      // The walk ends here, so the handler may create, destroy or change
      // menus freely.
      if (menu->handler && menu->itemEnabled[index]) {
        StDispatchCallback context(menu->plugin);
        if (context()) menu->handler(menu->menuRef, menu->itemRefs[index]);
      }
      return 0;
    }
  }
  return 1;
}

int TOKAHandleMenuItemEnable(int hostMenuID, int index) {
  auto found = std::find_if(gMenus.begin(), gMenus.end(), [hostMenuID](TOKAMenuInfo_t* menu) {
    return menu->hostMenuID == hostMenuID;
  });
  if (found == gMenus.end()) return 1;
  TOKAMenuInfo_t* menu = *found;
  if (!HasItem(menu, index)) return 1;
  // The items of a disabled plugin's menu are all shown greyed.
  if (menu->plugin >= 0 && !TOKAIsPluginEnabled(menu->plugin)) return 0;
  return menu->itemEnabled[index];
}

int TOKAHandleMenuItemCheck(int hostMenuID, int index, int* outChecked) {
  for (TOKAMenuInfo_t* menu : gMenus) {
    if (menu->hostMenuID != hostMenuID) continue;
    if (!HasItem(menu, index)) continue;
    switch (menu->itemChecks[index]) {
      case TOKA_MENU_UNCHECKED:
        *outChecked = 0;
        return 0;
      case TOKA_MENU_CHECKED:
        *outChecked = 1;
        return 0;
      case TOKA_MENU_NO_CHECK:
        *outChecked = -1;
        return 0;
      default:
        break;  // not a state the host knows; a later menu may answer
    }
  }
  return 1;
}

// Withdraws the menus of a plugin that goes away, then the items it put in
// the Plugins menu (its top-level menus hang there). Items it appended to
// other plugins' menus stay.
void TOKAMenuCleanupHook(int plugin) {
  std::vector<TOKAMenuInfo_t*> owned;
  for (TOKAMenuInfo_t* menu : gMenus)
    if (menu->plugin == plugin) owned.push_back(menu);
  for (TOKAMenuInfo_t* menu : owned) {
    BlankHostItems(menu);
    if (HostCanDestroyMenus()) gHostServices->DestroyMenu(menu->hostMenuID);
    EraseFromList(menu);
    FreeMenu(menu);
  }

  if (!gPluginsMenu) return;
  for (int index = (int)gPluginsMenu->itemOwners.size() - 1; index >= 0; --index)
    if (gPluginsMenu->itemOwners[index] == plugin) RemoveItem(gPluginsMenu, index);
}

#ifdef TOKA_VALIDATOR
bool TOKAIsLiveMenu(const void* handle) {
  return IsListed(AsMenu(const_cast<void*>(handle)));
}

// Items count where they stand in another's menu; those of the plugin's own
// menus go with them.
void TOKASurveyMenus(int plugin, TOKASurvey& out) {
  for (const TOKAMenuInfo_t* menu : gMenus) {
    if (menu->plugin == plugin) {
      ++out.owned[kSurveyMenus];
      continue;
    }
    int kind = menu == gPluginsMenu ? kSurveyPluginsMenuItems : kSurveyMenuItems;
    for (int owner : menu->itemOwners)
      if (owner == plugin) ++out.owned[kind];
  }
}
#endif
