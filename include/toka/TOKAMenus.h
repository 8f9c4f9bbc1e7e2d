/* Toka: menus and menu items.
 *
 * The simulator owns the real menus; a plugin builds its own under the
 * simulator's menu bar with these calls. A menu ID stays valid until
 * TOKADestroyMenu, or until the plugin that created it is unloaded. An item
 * is named by its index in its menu (0 for the first item appended); removing
 * an item moves every item behind it down by one index.
 *
 * A menu ID that is null, destroyed or never returned is ignored by every
 * call below, without an error: nothing is changed or written, and the
 * calls that return something return null or -1. */
#ifndef TOKA_MENUS_H
#define TOKA_MENUS_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Check states of a menu item. */
#define TOKA_MENU_NO_CHECK 0
#define TOKA_MENU_UNCHECKED 1
#define TOKA_MENU_CHECKED 2

/* Called, in the context of the plugin that created the menu, when the user
 * picks an enabled item: the menu's refcon and the item's refcon. */
typedef void (*TOKAMenuHandler_f)(void* menuRef, void* itemRef);

/* The "Plugins" menu of the simulator's menu bar (null before start-up).
 * Any plugin may append items to it. */
TOKA_API TOKAMenuID TOKAFindPluginsMenu(void);

/* Creates a menu owned by the calling plugin. With a parent, the menu
 * becomes the submenu of the parent's item parentItem; without one (null),
 * an item named `name` is appended to the Plugins menu for it and the menu
 * hangs there (that item goes when the plugin is unloaded). handler may be
 * null. Returns the new menu, or null when parentMenu is not a menu. */
TOKA_API TOKAMenuID TOKACreateMenu(const char* name, TOKAMenuID parentMenu, int parentItem,
                                   TOKAMenuHandler_f handler, void* menuRef);

/* Appends an item (enabled, no check mark) to any plugin's menu; the calling
 * plugin owns it. forceEnglish is passed to the simulator. Returns the
 * item's index, or -1 when menu is not a menu. */
TOKA_API int TOKAAppendMenuItem(TOKAMenuID menu, const char* name, void* itemRef,
                                int forceEnglish);

/* Appends a separator line; returns its index (-1 as above). */
TOKA_API int TOKAAppendMenuSeparator(TOKAMenuID menu);

/* Renames an item in the simulator's menu. */
TOKA_API void TOKASetMenuItemName(TOKAMenuID menu, int index, const char* name,
                                  int forceEnglish);

/* Enables (non-zero) or disables (0) an item: a disabled item is shown
 * greyed and its picks reach no handler. An index that names no item changes
 * nothing, without an error. */
TOKA_API void TOKAEnableMenuItem(TOKAMenuID menu, int index, int enabled);

/* Sets an item's check state (TOKA_MENU_...); for an index that names no
 * item, nothing. */
TOKA_API void TOKACheckMenuItem(TOKAMenuID menu, int index, int check);

/* Writes an item's check state into outCheck; for an index that names no
 * item (or a null outCheck), writes nothing. */
TOKA_API void TOKACheckMenuItemState(TOKAMenuID menu, int index, int* outCheck);

/* Removes an item; the items behind it move down by one index. Reports
 * "TOKARemoveMenuItem was passed an out of range item index." for an index
 * below 0 or not below the item count, and does nothing then. */
TOKA_API void TOKARemoveMenuItem(TOKAMenuID menu, int index);

/* Empties a menu of the calling plugin (another plugin's menu is left as
 * is). The simulator's items are renamed to "" rather than removed. */
TOKA_API void TOKAClearAllMenuItems(TOKAMenuID menu);

/* Clears and destroys a menu of the calling plugin; unknown menus and
 * other plugins' menus are ignored. Its submenus stay. The menu ID is
 * invalid afterwards. */
TOKA_API void TOKADestroyMenu(TOKAMenuID menu);

TOKA_END_DECLS

#endif
