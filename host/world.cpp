// The world's clock, its start, the host's output, and the simulator events
// that the world raises for the library.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <set>

#include "host/host.h"

namespace toka_host {

HostConfig gConfig;
int gFrame = 0;
double gRunningTime = 0;
double gFlightTime = 0;
bool gPaused = false;
bool gQuitRequested = false;

namespace {

std::string* gCapture = nullptr;
std::string gLog;

struct PendingEvent {
  int code;
  int param;
  std::string folder;  // event 12 passes a folder; it must live through the call
};
std::vector<PendingEvent> gPendingEvents;
std::set<std::string> gLoadedPackages;

std::vector<std::string> SubfoldersOf(const std::string& folder) {
  std::vector<std::string> names;
  DIR* dir = opendir(folder.c_str());
  if (!dir) return names;
  while (dirent* entry = readdir(dir)) {
    std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    struct stat info;
    if (stat((folder + name).c_str(), &info) == 0 && S_ISDIR(info.st_mode)) names.push_back(name);
  }
  closedir(dir);
  // Sorted, so that runs on different file systems load in the same order.
  std::sort(names.begin(), names.end());
  return names;
}

// The simulator knows its folder as a full path, and so does every path it
// hands out below it; a relative root would make a path the host reports
// look like one to be resolved below the root again.
std::string FullFolderPath(std::string folder) {
  if (folder.empty() || folder.back() != '/') folder += '/';
  if (folder[0] == '/') return folder;
  while (folder.compare(0, 2, "./") == 0) folder.erase(0, 2);
  char* cwd = getcwd(nullptr, 0);
  std::string full = cwd ? std::string(cwd) : std::string(".");
  std::free(cwd);
  if (full.back() != '/') full += '/';
  return full + folder;
}

}  // namespace

void HostPrint(const std::string& text) {
  gLog += text;
  if (gCapture) {
    *gCapture += text;
    return;
  }
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

void SetOutputCapture(std::string* capture) { gCapture = capture; }

const std::string& HostLog() { return gLog; }

void QueueEvent(int code, int param) { gPendingEvents.push_back({code, param, ""}); }

void QueueSceneryPackage(const std::string& folder) {
  if (gLoadedPackages.insert(folder).second) gPendingEvents.push_back({12, 0, folder});
}

void QueueSceneryScan() {
  std::string packages = gConfig.root + "Custom Scenery/";
  for (const std::string& name : SubfoldersOf(packages)) QueueSceneryPackage(packages + name + "/");
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

void ResetWorld(const HostConfig& config) {
  gConfig = config;
  gConfig.root = FullFolderPath(gConfig.root);
  gFrame = 0;
  gRunningTime = gFlightTime = 0;
  gPaused = false;
  gQuitRequested = false;
  gLog.clear();
  ResetServiceCallCounts();
  ResetEvents();
  ResetSystem();
  CreateAircraft();
  PlaceAircraftAtStart();
  ResetTerrain();
  ResetScreen();
  ResetMenus();
  ResetCommands();
  ResetObjects();
  ResetFms();
}

}  // namespace toka_host
