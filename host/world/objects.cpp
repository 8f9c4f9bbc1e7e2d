// Scenery objects (services 64 to 67 and 70) and the scenery reload (35).
// An object is a file below the simulator folder; loading the same file
// again shares the object, which goes away with its last unload.
#include "host/world/world.h"

#include <fnmatch.h>
#include <sys/stat.h>

#include <map>
#include <memory>
#include <vector>

#include "host/output.h"
#include "host/render/render.h"
#include "host/services.h"
#include "host/system.h"

namespace toka_host {

namespace {

struct HostObject {
  std::string path;
  int number;
  int references = 1;
};

std::map<std::string, std::unique_ptr<HostObject>> gObjects;  // by full path
int gNextObjectNumber = 1;

struct PendingLoad {
  std::string path;
  TOKAObjectLoaded_f completion;
  void* record;
};
std::vector<PendingLoad> gPendingLoads;

HostObject* Known(TOKAObjectRef ref) {
  for (const auto& entry : gObjects)
    if (entry.second.get() == ref) return entry.second.get();
  return nullptr;
}

// Every file below folder (which ends in "/"), sorted; symbolic links to
// folders are not followed, so a loop in the tree cannot hold the host up.
void CollectFiles(const std::string& folder, std::vector<std::string>& files) {
  for (const std::string& name : ListFolder(folder)) {
    std::string path = folder + name;
    struct stat info;
    if (lstat(path.c_str(), &info) != 0) continue;
    if (S_ISDIR(info.st_mode)) CollectFiles(path + "/", files);
    else if (IsFile(path)) files.push_back(path);
  }
}

// ---- services --------------------------------------------------------------

TOKAObjectRef LoadObject(const char* path) {
  if (!path || !*path) return nullptr;
  std::string full = ResolveUnderRoot(path);
  auto found = gObjects.find(full);
  if (found != gObjects.end()) {
    found->second->references++;
    return found->second.get();
  }
  if (!IsFile(full)) return nullptr;
  auto object = std::make_unique<HostObject>();
  object->path = full;
  object->number = gNextObjectNumber++;
  TOKAObjectRef ref = object.get();
  gObjects[full] = std::move(object);
  return ref;
}

void DrawObjectInstance(TOKAObjectRef ref, float x, float y, float z, float heading, float pitch,
                        float roll, int lighting, int earthRelative) {
  if (HostObject* object = Known(ref)) DrawMarker('O', object->number, x, y, z);
}

void UnloadObject(TOKAObjectRef ref) {
  HostObject* object = Known(ref);
  if (object && --object->references == 0) gObjects.erase(object->path);
}

// The pattern is a path below the simulator folder (or an absolute one)
// whose names may hold shell wildcards; a wildcard never matches a "/". The
// world has one object library, so the position does not narrow the search.
int LookupObjects(const char* path, float latitude, float longitude,
                  TOKAObjectLibraryEnumerator_f enumerator, void* refcon) {
  if (!path || !*path) return 0;
  std::string pattern = ResolveUnderRoot(path);
  size_t wildcard = pattern.find_first_of("*?[");
  size_t folderEnd = pattern.rfind('/', wildcard == std::string::npos ? pattern.size() : wildcard);
  std::vector<std::string> files;
  CollectFiles(pattern.substr(0, folderEnd + 1), files);
  int count = 0;
  for (const std::string& file : files) {
    if (fnmatch(pattern.c_str(), file.c_str(), FNM_PATHNAME) != 0) continue;
    ++count;
    if (enumerator) enumerator(file.c_str(), refcon);
  }
  return count;
}

// The load is finished at the start of the next frame, where the simulator
// finishes its background loads.
void LoadObjectAsync(const char* path, TOKAObjectLoaded_f completion, void* record) {
  gPendingLoads.push_back({path ? path : "", completion, record});
}

void ReloadScenery() {
  HostPrint("[scenery] reload\n");
  QueueSceneryScan();
}

}  // namespace

void CompletePendingObjectLoads() {
  std::vector<PendingLoad> loads;
  loads.swap(gPendingLoads);
  for (const PendingLoad& load : loads) {
    TOKAObjectRef object = LoadObject(load.path.c_str());
    if (load.completion) load.completion(object, load.record);
  }
}

int LoadedObjectCount() { return (int)gObjects.size(); }

void ResetObjects() {
  gObjects.clear();
  gPendingLoads.clear();
  gNextObjectNumber = 1;
}

void AddObjectServices(TOKAHostServices& table) {
  table.LoadObject = LoadObject;
  table.DrawObjectInstance = DrawObjectInstance;
  table.UnloadObject = UnloadObject;
  table.LookupObjects = LookupObjects;
  table.LoadObjectAsync = LoadObjectAsync;
  table.ReloadScenery = ReloadScenery;
}

}  // namespace toka_host
