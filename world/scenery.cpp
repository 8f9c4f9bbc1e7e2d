// Terrain probes and scenery objects: who owns which probe and object, and
// the asynchronous object load handed back to the plugin that asked for it.
#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "loader/deliveries.h"
#include "loader/enabling.h"
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"
#include "toka/TOKAScenery.h"

namespace {

struct TOKAProbeRecord {
  int plugin;     // owner: the plugin that created it
  int type;       // as the plugin gave it
  int hostProbe;  // the simulator's probe behind it
};

// A completed asynchronous load, owed to the plugin that asked for it.
class TOKAObjectCompletion_t final : public TOKADelivery {
public:
  TOKAObjectCompletion_t(int owner, TOKAObjectLoaded_f callback, void* refcon)
      : callback(callback), refcon(refcon) {
    plugin = owner;
  }

  TOKAObjectLoaded_f callback;
  void* refcon;
  TOKAObjectRef object = nullptr;  // null until the simulator has finished

  void DeliverToPlugin(bool pluginGone) override;
  // The completion routine the simulator calls when the load has finished.
  static void AsyncCB(TOKAObjectRef object, void* record);
};

}  // namespace

// Live probes by address; the handle a plugin holds is the record's address.
static std::map<const TOKAProbeRecord*, std::unique_ptr<TOKAProbeRecord>> gProbes;
// Simulator probes of destroyed probes. The simulator has no way to take a
// probe back, so they are kept and handed out again, smallest first.
static std::set<int> gFreeProbes;
// The objects each plugin has loaded and not unloaded, in load order.
static std::map<int, std::vector<TOKAObjectRef>> gObjects;

static std::vector<TOKAObjectRef>& ObjectsOf(int plugin) {
  return gObjects[plugin];
}

static int TakeHostProbe() {
  if (gFreeProbes.empty()) return gHostServices->CreateProbe();
  int hostProbe = *gFreeProbes.begin();
  gFreeProbes.erase(gFreeProbes.begin());
  return hostProbe;
}

static TOKAProbeRecord* FindProbe(TOKAProbeRef handle) {
  auto found = gProbes.find(static_cast<const TOKAProbeRecord*>(handle));
  return found == gProbes.end() ? nullptr : found->second.get();
}

TOKA_API TOKAProbeRef TOKACreateProbe(int probeType) {
  TOKA_NOTE_CALL();
  auto record = std::make_unique<TOKAProbeRecord>();
  record->plugin = TOKAGetDispatchedPlugin();
  record->type = probeType;
  record->hostProbe = TakeHostProbe();
  TOKAProbeRecord* handle = record.get();
  gProbes[handle] = std::move(record);
  TOKA_NOTE_ISSUED(kHandleProbe, handle);
  return handle;
}

TOKA_API void TOKADestroyProbe(TOKAProbeRef probe) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleProbe, probe);
  TOKAProbeRecord* record = FindProbe(probe);
  if (!record) return;
  gFreeProbes.insert(record->hostProbe);
  gProbes.erase(record);
}

TOKA_API int TOKAProbeTerrainXYZ(TOKAProbeRef probe, float x, float y, float z,
                                 TOKAProbeInfo_t* info) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleProbe, probe);
  // A destroyed probe's record is gone: it answers like a bad probe rather
  // than being read after it was freed.
  TOKAProbeRecord* record = FindProbe(probe);
  if (!record || record->type != TOKA_ProbeY || info->structSize != (int)sizeof(TOKAProbeInfo_t))
    return TOKA_ProbeError;
  float query[3] = {x, y, z};
  int hit = gHostServices->ProbeTerrain(record->hostProbe, query, &info->locationX,
                                        &info->normalX, &info->velocityX, &info->isWet);
  return hit ? TOKA_ProbeHitTerrain : TOKA_ProbeMissed;
}

TOKA_API TOKAObjectRef TOKALoadObject(const char* path) {
  TOKA_NOTE_CALL();
  TOKAObjectRef object = gHostServices->LoadObject(path);
  if (object) ObjectsOf(TOKAGetDispatchedPlugin()).push_back(object);
  TOKA_NOTE_ISSUED(kHandleObject, object);
  return object;
}

void TOKAObjectCompletion_t::DeliverToPlugin(bool pluginGone) {
  std::unique_ptr<TOKAObjectCompletion_t> self(this);
  if (pluginGone) {
    // The plugin's code may be unloaded: the object goes back without it.
    gHostServices->UnloadObject(object);
    return;
  }
  // A failed load is reported too, with a null object, so the plugin stops
  // waiting for it. The object becomes the plugin's once its callback has
  // returned, or thrown: either way it was handed over, and it goes back to
  // the simulator with the plugin.
  try {
    callback(object, refcon);
  } catch (...) {
    if (object) ObjectsOf(plugin).push_back(object);
    throw;
  }
  if (object) ObjectsOf(plugin).push_back(object);
}

void TOKAObjectCompletion_t::AsyncCB(TOKAObjectRef object, void* record) {
  auto* completion = static_cast<TOKAObjectCompletion_t*>(record);
  completion->object = object;
  TOKASendDelivery(completion);
}

TOKA_API void TOKALoadObjectAsync(const char* path, TOKAObjectLoaded_f callback, void* refcon) {
  TOKA_NOTE_CALL();
  auto* completion = new TOKAObjectCompletion_t(TOKAGetDispatchedPlugin(), callback, refcon);
  // The simulator is asked even when the owner could not be queued: its
  // completion then finds nobody to deliver to and unloads the object.
  TOKAQueueDelivery(completion);
  gHostServices->LoadObjectAsync(path, &TOKAObjectCompletion_t::AsyncCB, completion);
}

TOKA_API void TOKAUnloadObject(TOKAObjectRef object) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleObject, object);
  std::vector<TOKAObjectRef>& objects = ObjectsOf(TOKAGetDispatchedPlugin());
  auto found = std::find(objects.begin(), objects.end(), object);
  if (found == objects.end()) {
    TOKASendError("Unknown object for TOKAUnloadObject");
    return;
  }
  objects.erase(found);
  gHostServices->UnloadObject(object);
}

// Checks made only for plugins with an error callback; plugins without one
// have always been able to draw any object with any structure.
static bool DrawArgumentsAreValid(TOKAObjectRef object, int count, const TOKADrawInfo_t* locations) {
  const std::vector<TOKAObjectRef>& objects = ObjectsOf(TOKAGetDispatchedPlugin());
  if (std::find(objects.begin(), objects.end(), object) == objects.end()) {
    TOKASendError("Illegal object, or object not owned by this plugin.");
    return false;
  }
  for (int i = 0; i < count; ++i) {
    if (locations[i].structSize != (int)sizeof(TOKADrawInfo_t)) {
      TOKASendError("Struct size mismatch for TOKADrawObjects");
      return false;
    }
  }
  return true;
}

TOKA_API void TOKADrawObjects(TOKAObjectRef object, int count, TOKADrawInfo_t* locations,
                              int lighting, int earthRelative) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleObject, object);
  if (TOKAHasError() && !DrawArgumentsAreValid(object, count, locations)) return;
  for (int i = 0; i < count; ++i) {
    const TOKADrawInfo_t& at = locations[i];
    // The simulator takes heading before pitch.
    gHostServices->DrawObjectInstance(object, at.x, at.y, at.z, at.heading, at.pitch, at.roll,
                                      lighting, earthRelative);
  }
}

TOKA_API int TOKALookupObjects(const char* path, float latitude, float longitude,
                               TOKAObjectLibraryEnumerator_f enumerator, void* refcon) {
  TOKA_NOTE_CALL();
  // The simulator calls the enumerator itself; what it reports is not owned
  // by anybody.
  return gHostServices->LookupObjects(path, latitude, longitude, enumerator, refcon);
}

void TOKASceneryCleanupHook(int plugin) {
  std::vector<const TOKAProbeRecord*> probes;
  for (const auto& entry : gProbes) probes.push_back(entry.first);
  for (const TOKAProbeRecord* probe : probes)
    if (probe->plugin == plugin) TOKADestroyProbe(const_cast<TOKAProbeRecord*>(probe));

  // Loads still in flight are not touched: the delivery queue cancels them
  // when they complete.
  // The array is emptied before the simulator is called, so that nothing the
  // simulator does meanwhile can change it under the walk.
  std::vector<TOKAObjectRef> objects;
  objects.swap(ObjectsOf(plugin));
  for (TOKAObjectRef object : objects) gHostServices->UnloadObject(object);
}

#ifdef TOKA_VALIDATOR
bool TOKAIsLiveProbe(const void* handle) {
  return gProbes.count(static_cast<const TOKAProbeRecord*>(handle)) != 0;
}

bool TOKAIsLiveObject(const void* handle) {
  for (const auto& entry : gObjects)
    for (TOKAObjectRef object : entry.second)
      if (object == handle) return true;
  return false;
}

void TOKASurveyScenery(int plugin, TOKASurvey& out) {
  for (const auto& entry : gProbes)
    if (entry.second->plugin == plugin) ++out.owned[kSurveyProbes];
  auto objects = gObjects.find(plugin);
  if (objects != gObjects.end()) out.owned[kSurveyObjects] += (int)objects->second.size();
}
#endif
