// toka-validate's view of each plugin: the records it owns, the time and
// library calls it costs, and what its OrvanePluginStart wrote into the
// name, signature and description buffers. Compiled only into
// toka-validate's copy of the library.
#ifdef TOKA_VALIDATOR

#include "loader/survey.h"

#include <chrono>
#include <cstring>
#include <vector>

#include "display/display.h"
#include "loader/plugin_records.h"

static const char* const kKindNames[kSurveyKindCount] = {
    "windows",       "draw callbacks",     "key sniffers",     "hot keys",
    "flight loops",  "menus",              "menu items",       "Plugins menu items",
    "command handlers", "held commands",   "datarefs",         "shared data",
    "probes",        "objects",            "pending loads",    "camera",
    "planes"};

static const char* const kRunningNames[kRunningKindCount] = {
    "scheduled flight loops", "visible windows", "hot keys", "key sniffers"};

const char* TOKASurveyKindName(int kind) { return kKindNames[kind]; }
const char* TOKARunningKindName(int kind) { return kRunningNames[kind]; }

// Removed records wait on the list until the walk that removed them ends;
// they are gone for the plugin.
template <class T, class Count>
static void CountRecords(const TOKAResourceList<T>& list, Count count) {
  for (const T* record = list.head; record; record = record->get_next())
    if (!record->is_dead() && !TOKAIsParked(list, record)) count(*record);
}

void TOKASurveyDisplay(int plugin, TOKASurvey& out) {
  CountRecords(gWindows, [&](const TOKAWindowCallbackRecord& window) {
    if (window.plugin != plugin) return;
    ++out.owned[kSurveyWindows];
    if (window.visible) ++out.running[kRunningWindows];
  });
  CountRecords(gDrawCallbacks, [&](const TOKADrawCallbackRecord& draw) {
    if (draw.plugin == plugin) ++out.owned[kSurveyDrawCallbacks];
  });
  CountRecords(gKeySniffers, [&](const TOKAKeyCallbackRecord& sniffer) {
    if (sniffer.plugin != plugin) return;
    ++out.owned[kSurveyKeySniffers];
    ++out.running[kRunningKeySniffers];
  });
  CountRecords(gHotKeys, [&](const TOKAHotKeyInfoRecord& hotKey) {
    if (hotKey.plugin != plugin) return;
    ++out.owned[kSurveyHotKeys];
    ++out.running[kRunningHotKeys];
  });
}

template <class T>
static bool IsListed(const TOKAResourceList<T>& list, const void* handle) {
  bool found = false;
  CountRecords(list, [&](const T& record) { found = found || &record == handle; });
  return found;
}

bool TOKAIsLiveWindow(const void* handle) { return IsListed(gWindows, handle); }
bool TOKAIsLiveHotKey(const void* handle) { return IsListed(gHotKeys, handle); }

static int CountQueue(const TOKADeliveryHead& head) {
  int count = 0;
  for (const TOKADelivery* delivery = head.next; delivery; delivery = delivery->next) ++count;
  return count;
}

TOKASurvey TOKASurveyPlugin(int plugin) {
  TOKASurvey out;
  TOKASurveyDisplay(plugin, out);
  TOKASurveyFlightLoops(plugin, out);
  TOKASurveyMenus(plugin, out);
  TOKASurveyCommands(plugin, out);
  TOKASurveyDataRefs(plugin, out);
  TOKASurveySharedData(plugin, out);
  TOKASurveyScenery(plugin, out);
  TOKASurveyCamera(plugin, out);
  TOKASurveyPlanes(plugin, out);
  if (TOKAIsValidPluginID(plugin))
    out.owned[kSurveyPendingLoads] +=
        CountQueue(gAllPlugins[plugin].pending) + CountQueue(gAllPlugins[plugin].held);
  return out;
}

// Indexed by plugin ID, grown as IDs appear.
static std::vector<TOKACost> gCosts;
static std::chrono::steady_clock::time_point gLastSwitch = std::chrono::steady_clock::now();

static TOKACost& CostOf(int plugin) {
  if (plugin >= (int)gCosts.size()) gCosts.resize(plugin + 1);
  return gCosts[plugin];
}

void TOKANoteCall() {
  int plugin = TOKAGetDispatchedPlugin();
  if (plugin >= 0) ++CostOf(plugin).calls;
}

void TOKANoteDispatchSwitch(int from) {
  auto now = std::chrono::steady_clock::now();
  if (from >= 0) CostOf(from).seconds += std::chrono::duration<double>(now - gLastSwitch).count();
  gLastSwitch = now;
}

TOKACost TOKAPluginCost(int plugin) {
  return plugin >= 0 && plugin < (int)gCosts.size() ? gCosts[plugin] : TOKACost();
}

static TOKASurveyObserver_f gSurveyObserver = nullptr;
static TOKAStartObserver_f gStartObserver = nullptr;

void TOKASetSurveyObserver(TOKASurveyObserver_f observer) { gSurveyObserver = observer; }
void TOKASetStartObserver(TOKAStartObserver_f observer) { gStartObserver = observer; }

void TOKANoteSurveyMoment(int moment, int plugin) {
  if (gSurveyObserver) gSurveyObserver(moment, plugin);
}

// The guard is a byte a text never ends in, and ends in a zero, so that a
// text that runs into it still ends somewhere the library may read.
static const char kGuardByte = (char)0xA5;
static const int kBufferSize = 256;  // what each start buffer holds

static void FillGuard(char* buffer) {
  std::memset(buffer + kBufferSize, kGuardByte, kStartGuardSize - 1);
  buffer[kBufferSize + kStartGuardSize - 1] = 0;
}

static bool GuardTouched(const char* buffer) {
  if (std::memchr(buffer, 0, kBufferSize) == nullptr) return true;
  for (int i = 0; i < kStartGuardSize - 1; ++i)
    if (buffer[kBufferSize + i] != kGuardByte) return true;
  return false;
}

void TOKAFillStartGuards(char* name, char* signature, char* description) {
  FillGuard(name);
  FillGuard(signature);
  FillGuard(description);
}

void TOKANoteStartTexts(const char* name, const char* signature, const char* description) {
  int overran = GuardTouched(name) | GuardTouched(signature) << 1 | GuardTouched(description) << 2;
  if (gStartObserver) gStartObserver(name, signature, description, overran);
}

#endif
