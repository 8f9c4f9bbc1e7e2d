// Finding plugin files, loading them, starting them, unloading and reloading.
#include "loader/loading.h"

#include <cstring>
#include <vector>

#include "loader/enabling.h"
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "loader/platform.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"
#include "toka/TOKAPlanes.h"
#include "toka/TOKAPlugins.h"
#include "toka/TOKAUtilities.h"

int gReloadScheduled = 0;

static void Log(const char* a, const std::string& b, const char* c) {
  TOKADebugString(a);
  TOKADebugString(b.c_str());
  TOKADebugString(c);
}

static bool Contains(const std::string& name, const char* part) {
  return name.find(part) != std::string::npos;
}

static void AppendHostRecord() {
  // The simulator's identifier sits in the file-path field and its signature
  // stays empty: plugins find the simulator by path, never by signature.
  gAllPlugins.emplace_back();
  PluginRecord& host = gAllPlugins.back();
  host.name = "Orvane";
  host.path = "dravik.orvane.orvane";
  host.description = "Orvane flight simulator";
  gAllPlugins.SetEnabled(0, true);
}

void TOKAFindAndLoadPlugins(const char* rootFolder) {
  AppendHostRecord();

  std::string folder = std::string(rootFolder) + "Resources/plugins";
  Log("Fetching plugins for ", folder, "\n\n");

  std::vector<std::string> names;
  TOKAFetchDirectoryContents(folder.c_str(), "*.orv", names);

  // The plugin-admin plugin always gets the first ID after the host.
  LoadOnePlugin(folder + "/PluginAdmin/" + "lin.orv", true);

  for (const std::string& name : names) {
    if (Contains(name, "PluginAdmin")) continue;
    if (gHostServices->revision > 3)
      gHostServices->ShowLoadingProgress(("Loading Plugin: " + name).c_str());
    LoadOnePlugin(folder + "/" + name, true);
  }

  names.clear();
  TOKAFetchDirectoryContents(folder.c_str(), "DIR", names);
  for (const std::string& name : names) {
    if (Contains(name, "PluginAdmin") || Contains(name, "TOKA.framework") ||
        Contains(name, "OrvaneWidgets.framework"))
      continue;
    LoadOnePlugin(folder + "/" + name + "/" + "lin.orv", false);
  }
}

// Loads "lin.orv" from every sub-folder of folder; returns the new IDs.
static std::vector<int> LoadPluginFolders(const std::string& folder) {
  std::vector<int> ids;
  std::vector<std::string> names;
  TOKAFetchDirectoryContents(folder.c_str(), "DIR", names);
  if (names.empty()) return ids;
  Log("Fetching plugins for ", folder, "\n\n");
  for (const std::string& name : names) {
    int id = LoadOnePlugin(folder + "/" + name + "/" + "lin.orv", false);
    if (id != -1) ids.push_back(id);
  }
  return ids;
}

void TOKAFindAndLoadSceneryPlugins(const char* packageFolder) {
  std::vector<int> ids = LoadPluginFolders(std::string(packageFolder) + "plugins");
  for (int id : ids) TOKAEnablePlugin(id);
}

void TOKAFindAndLoadAcfPlugins(const char* aircraftFolder) {
  std::vector<int> ids = LoadPluginFolders(std::string(aircraftFolder) + "/plugins");
  gCurrentAircraftPluginIDS.insert(gCurrentAircraftPluginIDS.end(), ids.begin(), ids.end());
}

// Moves the plugin's pending deliveries to the orphans (cancelled when they
// complete) and cancels the held ones at once.
static void ReleaseDeliveries(int id) {
  PluginRecord& record = gAllPlugins[id];
  while (TOKADelivery* delivery = TOKAPopDelivery(&record.pending)) {
    delivery->plugin = -1;
    TOKAEnqueueDelivery(&orphaned, delivery);
  }
  while (TOKADelivery* delivery = TOKAPopDelivery(&record.held)) {
    delivery->plugin = -1;
    delivery->DeliverToPlugin(true);
  }
  TOKAForgetCutDeliveries(id);
}

// The clean-up hooks that run before the camera's.
static void RunHooksBeforeCamera(int id) {
  TOKACommandCleanupHook(id);
  TOKADisplayCleanupHook(id);
  TOKAProcessingCleanupHook(id);
}

static void RunCleanupHooks(int id) {
  RunHooksBeforeCamera(id);
  TOKACameraCleanupHook(id);
  TOKAMenuCleanupHook(id);
  TOKAPlaneCleanupHook(id);
  TOKADataRefsCleanupHook(id);
  TOKASceneryCleanupHook(id);
}

// Clears every pointer into the module, so that a record unloaded once
// (an aircraft record that stays in the list) never calls into it again.
static void ForgetModule(PluginRecord& record) {
  record.module = nullptr;
  record.stop = nullptr;
  record.enable = nullptr;
  record.disable = nullptr;
  record.message = nullptr;
  record.errorCallback = nullptr;
}

void UnloadOnePlugin(int id) {
  ReleaseDeliveries(id);
  if (TOKAPluginStop_f stop = gAllPlugins[id].stop) {
    // The plugin is disabled by now; it is stopped all the same. A stop
    // entry that throws still has everything it owns withdrawn and its
    // module closed. Its exception ends here: the module that threw it (and
    // may hold its type and destructor) is closed before anyone could catch
    // it, and the plugins unloaded after this one must still be unloaded.
    StDispatchCallback context(id);
    try {
      stop();
    } catch (...) {
      TOKA_SURVEY_MOMENT(kMomentStopThrew, id);
    }
  }
  TOKA_SURVEY_MOMENT(kMomentStopped, id);
  RunCleanupHooks(id);
  // A plugin that another plugin's disable entry enabled again is still
  // enabled here, and the camera's release above called it to say it loses
  // the camera. What it made in that call, after the commands, display and
  // processing hooks had run, goes too: its module is about to close.
  RunHooksBeforeCamera(id);  // once more
  // What the stop entry queued (an object load it asked for) must not reach
  // the plugin either: its code is about to go.
  ReleaseDeliveries(id);
  TOKA_SURVEY_MOMENT(kMomentCleaned, id);
  PluginRecord& record = gAllPlugins[id];
  if (record.module) TOKAUnloadDLL(record.module);
  ForgetModule(record);
}

// A plugin that refused to start may have registered things from its start
// entry; they go with it, since its ID is handed to the next plugin.
static void DiscardRefusedPlugin(int id) {
  ReleaseDeliveries(id);
  RunCleanupHooks(id);
  void* module = gAllPlugins[id].module;
  gAllPlugins.pop_back();
  TOKASetDispatchedPlugin(0);
  TOKAUnloadDLL(module);
}

int LoadOnePlugin(const std::string& path, bool verbose) {
  void* module = TOKALoadDLL(path.c_str());
  if (!module) {
    if (verbose)
      Log("Failed: ", path,
          ".  (This file is missing, not a DLL or could not be loaded due to another missing "
          "DLL.)\n\n");
    return -1;
  }

  auto start = (TOKAPluginStart_f)TOKAFindSymbol(module, "OrvanePluginStart");
  auto stop = (TOKAPluginStop_f)TOKAFindSymbol(module, "OrvanePluginStop");
  auto enable = (TOKAPluginEnable_f)TOKAFindSymbol(module, "OrvanePluginEnable");
  auto disable = (TOKAPluginDisable_f)TOKAFindSymbol(module, "OrvanePluginDisable");
  auto message = (TOKAPluginReceiveMessage_f)TOKAFindSymbol(module, "OrvanePluginReceiveMessage");
  if (!start) {
    Log("Failed: ", path,
        ".  (This file is a loadable DLL but is missing the OrvanePluginStart callback.)\n\n");
    TOKAUnloadDLL(module);
    return -1;
  }

  // The record exists before the plugin starts, so that the calls it makes
  // from its start entry are attributed to it.
  const int id = (int)gAllPlugins.size();
  TOKASetDispatchedPlugin(id);
  gAllPlugins.emplace_back();
  {
    PluginRecord& record = gAllPlugins.back();
    record.module = module;
    record.stop = stop;
    record.enable = enable;
    record.disable = disable;
    record.message = message;
    record.name = StripPath(path.c_str());
    record.path = path;
    record.description = path;
  }

  char name[256 + TOKA_START_GUARD] = {0}, signature[256 + TOKA_START_GUARD] = {0},
       description[256 + TOKA_START_GUARD] = {0};
  TOKA_SURVEY_BEFORE_START(name, signature, description);
  int started;
  try {
    started = start(name, signature, description);
  } catch (...) {
    DiscardRefusedPlugin(id);
    throw;
  }
  TOKA_SURVEY_AFTER_START(name, signature, description);
  if (!started) {
    // One space after the full stop here, two in the other two lines: log
    // readers match these lines as they stand.
    Log("Failed: ", path,
        ". (The plugin refused to start by returning 0 from OrvanePluginStart.)\n\n");
    DiscardRefusedPlugin(id);
    return -1;
  }
  TOKASetDispatchedPlugin(0);

  // The new record's signature is still empty, like the host's: a plugin
  // that reports an empty signature is taken for a duplicate.
  for (int other = 0; other < (int)gAllPlugins.size(); ++other) {
    if (gAllPlugins[other].signature != signature) continue;
    TOKASetDispatchedPlugin(id);
    UnloadOnePlugin(id);
    TOKASetDispatchedPlugin(0);
    gAllPlugins.pop_back();
    TOKADebugString("Warning: ");
    TOKADebugString(path.c_str());
    TOKADebugString(" Signature: ");
    TOKADebugString(signature);
    TOKADebugString(". (A version of this plugin is already loaded.)\n");
    return -1;
  }

  PluginRecord& record = gAllPlugins[id];
  record.name = name;
  record.path = path;
  record.signature = signature;
  record.description = description;
  Log("Loaded: ", path, ".\n\n");
  return id;
}

void TOKAUnloadPlugins() {
  for (int id = 1; id < (int)gAllPlugins.size(); ++id) UnloadOnePlugin(id);
  gAllPlugins.clear();
  // The aircraft list names records that no longer exist.
  gCurrentAircraftPluginIDS.clear();
}

static bool IsAircraftPlugin(int id) {
  for (int aircraftID : gCurrentAircraftPluginIDS)
    if (aircraftID == id) return true;
  return false;
}

void TOKAUnloadAcfPlugin() {
  std::vector<int> ids = gCurrentAircraftPluginIDS;
  for (int id : ids) UnloadOnePlugin(id);
  // Only trailing records go: every other plugin keeps its ID.
  while (!gAllPlugins.empty() && IsAircraftPlugin((int)gAllPlugins.size() - 1))
    gAllPlugins.pop_back();
  gCurrentAircraftPluginIDS.clear();
}

TOKA_API void TOKAReloadPlugins(void) {
  TOKA_NOTE_CALL();
  gReloadScheduled = 1;
}

void TOKAReloadPluginsInternal() {
  gReloadScheduled = 0;
  TOKADisableAllPlugins();
  TOKAUnloadAcfPlugin();
  TOKAUnloadPlugins();
  if (gHostServices->revision > 2)
    gHostServices->ShowUserMessage("Please place your new plugin in the plugins folder.",
                                   "I will then reload all plugins.", "", "");

  char systemPath[1024] = {0};
  gHostServices->GetSystemPath(systemPath);
  TOKAFindAndLoadPlugins(systemPath);

  char fileName[512] = {0}, aircraftPath[512] = {0};
  TOKAGetNthAircraftModel(0, fileName, aircraftPath);
  if (char* slash = std::strrchr(aircraftPath, '/')) {
    *slash = 0;
    TOKAFindAndLoadAcfPlugins(aircraftPath);
  }
  TOKAEnableAllPlugins();
}
