// The validator's checks of the handles plugins pass (see survey.h). Empty
// in libtoka.so.
#ifdef TOKA_VALIDATOR

#include <cstdio>
#include <map>
#include <set>
#include <string>

#include "data/datarefs.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"

namespace {

const char* const kHandleNames[kHandleKindCount] = {"dataref", "flight loop", "window", "hot key",
                                                     "menu",    "command",     "probe",  "object"};

// Who was given a handle, and which of its handles of that kind it was.
struct Issued {
  int kind;
  int plugin;
  int ordinal;  // 1 for the plugin's first handle of the kind
  long long order;  // of all handles given out
};
long long gIssuedTotal = 0;
std::map<const void*, Issued> gIssued;
std::map<std::pair<int, int>, int> gIssuedCount;  // (plugin, kind) -> handles given
// Datarefs each plugin served and then stopped serving.
std::set<std::pair<int, const void*>> gRetiredDataRefs;
// The simulator's commands live as long as it does: every one handed out is.
std::set<const void*> gCommands;

TOKAHandleObserver_f gHandleObserver = nullptr;

bool IsLive(int kind, const void* handle) {
  switch (kind) {
    case kHandleDataRef: return TOKAIsLiveDataRef(handle);
    case kHandleFlightLoop: return TOKAIsLiveFlightLoop(handle);
    case kHandleWindow: return TOKAIsLiveWindow(handle);
    case kHandleHotKey: return TOKAIsLiveHotKey(handle);
    case kHandleMenu: return TOKAIsLiveMenu(handle);
    case kHandleCommand: return TOKAIsLiveCommand(handle);
    case kHandleProbe: return TOKAIsLiveProbe(handle);
    case kHandleObject: return TOKAIsLiveObject(handle);
  }
  return false;
}

std::string PluginName(int plugin) {
  if (!TOKAIsValidPluginID(plugin)) return "plugin " + std::to_string(plugin);
  return gAllPlugins[plugin].name;
}

std::string Ordinal(int n) {
  int tens = n % 100, units = n % 10;
  const char* suffix = (tens >= 11 && tens <= 13) ? "th"
                       : units == 1               ? "st"
                       : units == 2               ? "nd"
                       : units == 3               ? "rd"
                                                  : "th";
  return std::to_string(n) + suffix;
}

// A dataref by its name; another handle by whose it was and which, since
// an address differs from run to run.
std::string Describe(int kind, const void* handle, int caller) {
  if (kind == kHandleDataRef) {
    if (TOKAData_t* record = DataIsValid(const_cast<void*>(handle)))
      return "dataref \"" + record->name + "\"";
  }
  auto issued = gIssued.find(handle);
  if (issued != gIssued.end() && issued->second.kind == kind) {
    std::string whose = issued->second.plugin == caller ? std::string("its")
                                                       : PluginName(issued->second.plugin) + "'s";
    return whose + " " + Ordinal(issued->second.ordinal) + " " + kHandleNames[kind];
  }
  char address[32];
  std::snprintf(address, sizeof address, "%p", handle);
  return std::string(kHandleNames[kind]) + " " + address;
}

void Report(int plugin, const char* function, const std::string& problem) {
  if (gHandleObserver) gHandleObserver(plugin, function, problem.c_str());
}

}  // namespace

bool TOKAIsLiveCommand(const void* handle) { return gCommands.count(handle) != 0; }

void TOKASetHandleObserver(TOKAHandleObserver_f observer) { gHandleObserver = observer; }

void TOKANoteIssuedHandle(int kind, const void* handle) {
  if (!handle) return;
  if (kind == kHandleCommand) gCommands.insert(handle);
  int plugin = TOKAGetDispatchedPlugin();
  if (kind == kHandleDataRef) gRetiredDataRefs.erase({plugin, handle});
  auto issued = gIssued.find(handle);
  // Finding the same dataref or command again hands out nothing new.
  if (issued != gIssued.end() && issued->second.kind == kind && issued->second.plugin == plugin &&
      (kind == kHandleDataRef || kind == kHandleCommand))
    return;
  gIssued[handle] = {kind, plugin, ++gIssuedCount[{plugin, kind}], ++gIssuedTotal};
}

long long TOKAIssueOrder(const void* handle) {
  auto issued = gIssued.find(handle);
  return issued == gIssued.end() ? 0 : issued->second.order;
}

void TOKANoteRetiredDataRef(const void* handle) {
  gRetiredDataRefs.insert({TOKAGetDispatchedPlugin(), handle});
}

void TOKACheckSharedDataName(const char* name, const char* function) {
  int plugin = TOKAGetDispatchedPlugin();
  if (plugin > 0 && !name) Report(plugin, function, "a null shared data name");
}

void TOKACheckHandle(int kind, const void* handle, const char* function, bool nullAllowed) {
  int plugin = TOKAGetDispatchedPlugin();
  if (plugin <= 0) return;  // the simulator's own calls
  const std::string kind_name = kHandleNames[kind];
  if (!handle) {
    if (!nullAllowed) Report(plugin, function, "a null " + kind_name + " handle");
    return;
  }
  if (IsLive(kind, handle)) {
    // Datarefs never go away; one the plugin itself stopped serving, and
    // nobody serves now, is stale for it.
    if (kind == kHandleDataRef && gRetiredDataRefs.count({plugin, handle}) &&
        static_cast<const TOKAData_t*>(handle)->owner == -1)
      Report(plugin, function,
             "a stale handle: " + Describe(kind, handle, plugin) + ", which it no longer serves");
    return;
  }
  for (int other = 0; other < kHandleKindCount; ++other)
    if (other != kind && IsLive(other, handle)) {
      Report(plugin, function,
             "a foreign handle: " + Describe(other, handle, plugin) + " for a " + kind_name);
      return;
    }
  auto issued = gIssued.find(handle);
  if (issued != gIssued.end() && issued->second.kind == kind) {
    Report(plugin, function, "a stale handle: " + Describe(kind, handle, plugin) + ", destroyed");
    return;
  }
  Report(plugin, function, "a never-issued handle: " + Describe(kind, handle, plugin));
}

#endif
