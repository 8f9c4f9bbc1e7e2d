// Enabling and disabling plugins, features and error reporting.
#include "loader/enabling.h"

#include <cstring>

#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"
#include "toka/TOKAPlugins.h"
#include "toka/TOKAUtilities.h"

static const char* const kFeatureNames[2] = {"TOKA_WANTS_REFLECTIONS", "TOKA_USE_NATIVE_PATHS"};

static void DeliverHeld(PluginRecord& record, int id) {
  StDispatchCallback context(id);
  while (TOKADelivery* delivery = TOKAPopDelivery(&record.held))
    delivery->DeliverToPlugin(false);
}

TOKA_API int TOKAEnablePlugin(TOKAPluginID plugin) {
  TOKA_NOTE_CALL();
  if (plugin <= 0 || plugin >= (int)gAllPlugins.size()) return 0;
  PluginRecord& record = gAllPlugins[plugin];
  if (!record.enabled) {
    if (record.enable) {
      // The plugin is not enabled yet, so the context refuses; its enable
      // entry is exactly the call that may make it so.
      StDispatchCallback context(plugin);
      gAllPlugins.SetEnabled(plugin, record.enable() != 0);
    } else {
      gAllPlugins.SetEnabled(plugin, true);
    }
  }
  if (record.enabled) DeliverHeld(record, plugin);
  return record.enabled ? 1 : 0;
}

TOKA_API void TOKADisablePlugin(TOKAPluginID plugin) {
  TOKA_NOTE_CALL();
  if (plugin <= 0 || plugin >= (int)gAllPlugins.size()) return;
  if (!gAllPlugins[plugin].enabled) return;
  // The subsystems withdraw focus, drag, camera and planes while the plugin
  // still counts as enabled, so that it is told what it loses.
  TOKADisplayDisableHook(plugin);
  TOKACameraDisableHook(plugin);
  TOKAPlaneDisableHook(plugin);
  PluginRecord& record = gAllPlugins[plugin];
  gAllPlugins.SetEnabled(plugin, false);
  if (record.disable) {
    StDispatchCallback context(plugin);
    record.disable();
  }
}

// Both directions run in ascending ID order; plugins rely on the host and
// the plugin-admin plugin being handled first in either case.
void TOKAEnableAllPlugins() {
  for (int id = 0; id < (int)gAllPlugins.size(); ++id) TOKAEnablePlugin(id);
}

void TOKADisableAllPlugins() {
  for (int id = 0; id < (int)gAllPlugins.size(); ++id) TOKADisablePlugin(id);
}

void TOKAEnableACFPlugins() {
  std::vector<int> ids = gCurrentAircraftPluginIDS;
  for (int id : ids) TOKAEnablePlugin(id);
}

void TOKADisableACFPlugins() {
  std::vector<int> ids = gCurrentAircraftPluginIDS;
  for (int id : ids) TOKADisablePlugin(id);
}

// A null name is no feature's name.
int TOKAFeatureToID(const char* name) {
  if (!name) return -1;
  for (int id = 0; id < 2; ++id)
    if (std::strcmp(name, kFeatureNames[id]) == 0) return id;
  return -1;
}

TOKA_API int TOKAHasFeature(const char* feature) {
  TOKA_NOTE_CALL();
  return TOKAFeatureToID(feature) != -1 ? 1 : 0;
}

TOKA_API int TOKAIsFeatureEnabled(const char* feature) {
  TOKA_NOTE_CALL();
  int id = TOKAFeatureToID(feature);
  if (id == -1) {
    // The text names the enable call: plugins match on it as it stands.
    TOKASendError("Illegal feature name passed to TOKAEnableFeature");
    return 0;
  }
  int plugin = TOKAGetDispatchedPlugin();
  if (!TOKAIsValidPluginID(plugin)) return 0;
  return gAllPlugins[plugin].features[id];
}

TOKA_API void TOKAEnableFeature(const char* feature, int enable) {
  TOKA_NOTE_CALL();
  int id = TOKAFeatureToID(feature);
  if (id == -1) {
    TOKASendError("Illegal feature name passed to TOKAEnableFeature");
    return;
  }
  int plugin = TOKAGetDispatchedPlugin();
  if (TOKAIsValidPluginID(plugin)) gAllPlugins[plugin].features[id] = enable;
}

TOKA_API void TOKAEnumerateFeatures(TOKAFeatureEnumerator_f callback, void* refcon) {
  TOKA_NOTE_CALL();
  if (!callback) return;
  for (const char* name : kFeatureNames) callback(name, refcon);
}

int TOKAHasFeatureInternal(int plugin, int feature) {
  if (!TOKAIsValidPluginID(plugin)) return 0;
  return gAllPlugins[plugin].features[feature];
}

int TOKANeedPathConvert() {
  return !TOKAHasFeatureInternal(TOKAGetDispatchedPlugin(), TOKAFeatureUseNativePaths);
}

TOKA_API void TOKASetErrorCallback(TOKAError_f callback) {
  TOKA_NOTE_CALL();
  int plugin = TOKAGetDispatchedPlugin();
  if (TOKAIsValidPluginID(plugin)) gAllPlugins[plugin].errorCallback = callback;
}

void TOKASendError(const char* message) {
  int plugin = TOKAGetDispatchedPlugin();
  if (!TOKAIsValidPluginID(plugin)) return;
  if (TOKAErrorCallback_f callback = gAllPlugins[plugin].errorCallback) callback(message);
}

int TOKAHasError() {
  int plugin = TOKAGetDispatchedPlugin();
  return TOKAIsValidPluginID(plugin) && gAllPlugins[plugin].errorCallback ? 1 : 0;
}

TOKA_API void TOKALogPluginWarning(const char* text) {
  TOKA_NOTE_CALL();
  int plugin = TOKAGetDispatchedPlugin();
  if (TOKAIsValidPluginID(plugin)) {
    TOKADebugString("[");
    TOKADebugString(gAllPlugins[plugin].name.c_str());
    TOKADebugString("]: ");
  } else {
    TOKADebugString("[unknown]: ");
  }
  TOKADebugString(text);
  TOKADebugString("\n");
}
