// Hot keys: key combinations bound to plugin callbacks, offered every key
// that the before-windows sniffers let through, ahead of the focus window.
// Any plugin may list and re-bind them (key-binding screens do).
//
// The counting, lookup and validation walks begin an iteration of the list
// and never end it, and registering ends one it never began. Plugins that
// list hot keys see removals take effect exactly when those unpaired calls
// let the list reclaim them, so the pairing stays as it is.
#include "display/display.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"

TOKAResourceList<TOKAHotKeyInfoRecord> gHotKeys;

// Room for a description in TOKAGetHotKeyInfo, terminator included.
static const int kDescriptionSize = 512;

TOKA_API TOKAHotKeyID TOKARegisterHotKey(char virtualKey, int flags, const char* description,
                                         TOKAHotKey_f callback, void* refcon) {
  TOKA_NOTE_CALL();
  TOKAHotKeyInfoRecord* record = new TOKAHotKeyInfoRecord;
  record->plugin = TOKAGetDispatchedPlugin();
  record->virtual_key = virtualKey;
  record->flags = flags;
  if (description) record->description = description;
  record->callback = callback;
  record->refcon = refcon;
  gHotKeys.Add(record);
  gHotKeys.EndIterate();
  TOKA_NOTE_ISSUED(kHandleHotKey, record);
  return record;
}

TOKAHotKeyInfoRecord* TOKAValidateHotKey(TOKAHotKeyID hotKey, TOKAHotKeyInfoRecord** outRecord) {
  TOKAHotKeyInfoRecord* record = gHotKeys.BeginIterate();
  while (record && record != hotKey) record = record->get_next();
  if (outRecord) *outRecord = record;
  return record;
}

TOKA_API void TOKAUnregisterHotKey(TOKAHotKeyID hotKey) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleHotKey, hotKey);
  if (TOKAHotKeyInfoRecord* record = TOKAValidateHotKey(hotKey, nullptr)) gHotKeys.Remove(record);
  gHotKeys.EndIterate();
}

TOKA_API int TOKACountHotKeys(void) {
  TOKA_NOTE_CALL();
  int count = 0;
  for (TOKAHotKeyInfoRecord* record = gHotKeys.BeginIterate(); record; record = record->get_next())
    ++count;
  return count;
}

TOKA_API TOKAHotKeyID TOKAGetNthHotKey(int index) {
  TOKA_NOTE_CALL();
  TOKAHotKeyInfoRecord* record = gHotKeys.BeginIterate();
  for (int at = 0; record && at < index; ++at) record = record->get_next();
  return index < 0 ? nullptr : record;
}

TOKA_API void TOKAGetHotKeyInfo(TOKAHotKeyID hotKey, char* outVirtualKey, int* outFlags,
                                char* outDescription, TOKAPluginID* outPlugin) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleHotKey, hotKey);
  TOKAHotKeyInfoRecord* record = TOKAValidateHotKey(hotKey, nullptr);
  if (!record) return;
  if (outVirtualKey) *outVirtualKey = record->virtual_key;
  if (outFlags) *outFlags = record->flags;
  if (outDescription) strcpytrunc(outDescription, record->description, kDescriptionSize);
  if (outPlugin) *outPlugin = record->plugin;
}

TOKA_API void TOKASetHotKeyCombination(TOKAHotKeyID hotKey, char virtualKey, int flags) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleHotKey, hotKey);
  TOKAHotKeyInfoRecord* record = TOKAValidateHotKey(hotKey, nullptr);
  if (!record) return;
  record->virtual_key = virtualKey;
  record->flags = flags;
}

// The newest binding of a combination wins; a hot key of a disabled plugin
// lets older bindings of the same combination answer.
int TOKADispatchHotKey(char virtualKey, int flags) {
  TOKAResourceHold<TOKAHotKeyInfoRecord> hold(gHotKeys);
  for (TOKAHotKeyInfoRecord* record = gHotKeys.BeginIterate(); record;
       record = record->get_next()) {
    if (record->is_dead() || record->virtual_key != virtualKey || record->flags != flags) continue;
    StDispatchCallback context(record->plugin);
    if (!context()) continue;
    record->callback(record->refcon);
    return 1;
  }
  gHotKeys.EndIterate();
  return 0;
}

void TOKARemovePluginHotKeys(int plugin) { TOKARemovePluginRecords(gHotKeys, plugin); }
