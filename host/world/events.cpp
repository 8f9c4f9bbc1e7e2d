// The simulator events that the world raises for the library, held until the
// start of the next frame, and the scenery packages they announce.
#include "host/world/world.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "host/config.h"
#include "host/library.h"
#include "host/system.h"

namespace toka_host {

namespace {

struct PendingEvent {
  int code;
  int param;
  std::string folder;  // event 12 passes a folder; it must live through the call
};
std::vector<PendingEvent> gPendingEvents;
std::set<std::string> gLoadedPackages;

std::vector<std::string> SubfoldersOf(const std::string& folder) {
  std::vector<std::string> names;
  for (const std::string& name : ListFolder(folder))
    if (IsFolder(folder + name)) names.push_back(name);
  return names;
}

}  // namespace

void QueueEvent(int code, int param) { gPendingEvents.push_back({code, param, ""}); }

void QueueSceneryPackage(const std::string& folder, bool evenIfLoaded) {
  if (gLoadedPackages.insert(folder).second || evenIfLoaded) gPendingEvents.push_back({12, 0, folder});
}

void QueueSceneryScan() {
  std::string packages = gConfig.root + "Custom Scenery/";
  for (const std::string& name : SubfoldersOf(packages)) QueueSceneryPackage(packages + name + "/", false);
  QueueEvent(6, 0);
}

void SendQueuedEvents() {
  // Events raised while these are handled wait for the next frame.
  std::vector<PendingEvent> events;
  events.swap(gPendingEvents);
  if (!gLibrary.EventHook) return;
  for (const PendingEvent& event : events) {
    intptr_t param = event.code == 12 ? (intptr_t)event.folder.c_str() : event.param;
    gLibrary.EventHook(event.code, (float)gRunningTime, 0, param);
  }
}

void ResetEvents() {
  gPendingEvents.clear();
  gLoadedPackages.clear();
}

}  // namespace toka_host
