// The user's aircraft and the other aircraft: one plugin at a time may take
// the other aircraft (it "acquires the planes"); the others wait in line.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "loader/enabling.h"
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"
#include "toka/TOKAData.h"
#include "toka/TOKAPlanes.h"
#include "toka/TOKAUtilities.h"
#include "utilities/paths.h"

namespace {

struct TOKAPlaneRequest {
  TOKAPlanesAvailable_f callback;
  void* refcon;
  int plugin;
};

int gOwner = -1;
int gPlaneLimit = -1;
int gHostPlaneCount = -1;
char gIsSelfLoading = 0;
std::vector<std::string> gRequestedPlanes;
std::vector<TOKAPlaneRequest> gQueue;

bool CallerOwnsPlanes() {
  return TOKAGetDispatchedPlugin() == gOwner;
}

std::string ToUTF8(const char* path) {
  std::string converted(path);
  if (TOKANeedPathConvert()) TOKAOldToUTF8(converted);
  return converted;
}

// Calls the host's model loader; the host asks the plane hooks while it
// loads, and must then get its own answers rather than the owner's wishes.
void LoadModel(int index, const char* path, const char* name) {
  gIsSelfLoading = 1;
  gHostServices->SetAircraftModel(index, path, name);
  gIsSelfLoading = 0;
}

void SetAIDisabled(int index, int disabled) {
  char name[64];
  std::snprintf(name, sizeof name, "sim/private/net_disables/ai_loc[%d]", index);
  TOKASetDatai(TOKAFindDataRef(name), disabled);
}

}  // namespace

TOKA_API int TOKAAcquirePlanes(char** paths, TOKAPlanesAvailable_f callback, void* refcon) {
  TOKA_NOTE_CALL();
  int caller = TOKAGetDispatchedPlugin();
  if (caller == gOwner) return 1;
  if (gOwner == -1) {
    gRequestedPlanes.clear();
    gPlaneLimit = -1;
    gOwner = caller;
    if (paths)
      for (char** path = paths; *path; ++path) gRequestedPlanes.push_back(ToUTF8(*path));
    return 1;
  }
  if (callback) gQueue.push_back({callback, refcon, caller});
  return 0;
}

TOKA_API void TOKAReleasePlanes(void) {
  TOKA_NOTE_CALL();
  if (!CallerOwnsPlanes()) return;
  gPlaneLimit = -1;
  gOwner = -1;
  gRequestedPlanes.clear();
  std::vector<TOKAPlaneRequest> waiting;
  waiting.swap(gQueue);
  for (int i = 1; i < gHostPlaneCount; ++i) SetAIDisabled(i, 0);
  // Everyone who asked is told; the first to acquire again wins and the
  // rest find the planes taken.
  for (const TOKAPlaneRequest& request : waiting) {
    StDispatchCallback context(request.plugin);
    if (context()) request.callback(request.refcon);
  }
}

TOKA_API void TOKASetActiveAircraftCount(int count) {
  TOKA_NOTE_CALL();
  if (CallerOwnsPlanes()) gPlaneLimit = count;
}

TOKA_API void TOKASetAircraftModel(int index, const char* path) {
  TOKA_NOTE_CALL();
  if (!CallerOwnsPlanes()) return;
  // The wish list is indexed by aircraft; a negative index names no aircraft.
  if (index < 0) return;
  std::string converted = ToUTF8(path);
  while ((unsigned)index >= gRequestedPlanes.size()) gRequestedPlanes.emplace_back();
  gRequestedPlanes[index] = converted;
  if (gHostPlaneCount != -1 && index < gHostPlaneCount)
    // The host takes the path as the model's name as well.
    LoadModel(index, converted.c_str(), converted.c_str());
}

TOKA_API void TOKADisableAIForPlane(int index) {
  TOKA_NOTE_CALL();
  SetAIDisabled(index, 1);
}

TOKA_API void TOKADrawAircraft(int index, float x, float y, float z, float pitch, float roll,
                               float yaw, int fullDraw, void* drawStateInfo) {
  TOKA_NOTE_CALL();
  if (CallerOwnsPlanes())
    gHostServices->DrawAircraft(index, x, y, z, pitch, roll, yaw, fullDraw, drawStateInfo);
}

TOKA_API void TOKACountAircraft(int* outTotal, int* outActive, int* outController) {
  TOKA_NOTE_CALL();
  int total = gHostServices->CountAircraft();
  int active = total;
  if (gPlaneLimit != -1 && gPlaneLimit < total) active = gPlaneLimit;
  if (outTotal) *outTotal = total;
  if (outActive) *outActive = active;
  if (outController) *outController = gOwner;
}

TOKA_API void TOKAGetNthAircraftModel(int index, char* outFileName, char* outPath) {
  TOKA_NOTE_CALL();
  // A buffer the plugin did not pass is one of ours: the simulator fills both.
  char scratchName[kPathBufferSize], scratchPath[kPathBufferSize];
  outFileName = PathBufferOrScratch(outFileName, scratchName);
  outPath = PathBufferOrScratch(outPath, scratchPath);
  gHostServices->GetNthAircraftModel(index, outPath, outFileName);
  TOKAConvertHostPath(outPath);  // the file name is passed on as it is
}

TOKA_API void TOKASetUsersAircraft(const char* path) {
  TOKA_NOTE_CALL();
  if (!path) {
    TOKASendError("Null aircraft path passed to TOKASetUsersAircraft.");
    return;
  }
  std::string converted = ToUTF8(path);
  // The name is looked for in the path as the plugin gave it. Without any
  // separator the search stops at the first character and the name starts
  // one past it; plugins that pass bare names have always seen that.
  const char separator = TOKAGetDirectorySeparator()[0];
  size_t position = std::strlen(path);
  while (position > 0 && path[position] != separator) --position;
  LoadModel(0, converted.c_str(), path + position + 1);
}

TOKA_API void TOKAReinitUsersPlane(void) {
  TOKA_NOTE_CALL();
  if (CallerOwnsPlanes() && gHostServices->version > 283)
    gHostServices->ReinitUsersPlane(208, 201);
}

TOKA_API void TOKAPlaceUserAtAirport(const char* airportCode) {
  TOKA_NOTE_CALL();
  gHostServices->PlaceUserAtAirport(airportCode);
}

int TOKAHandleGetNumberPlanesToHandle(int count, int flag) {
  gHostPlaneCount = count;
  if (flag == 0 && !gIsSelfLoading && gOwner != -1 && gPlaneLimit != -1)
    return gPlaneLimit < count ? gPlaneLimit : count;
  return count;
}

int TOKAHandleUpdatePlaneNameAndPath(int index, char* outName, char* outPath) {
  if (gOwner == -1 || gIsSelfLoading || index == 0) return 0;
  if (index < 0 || index >= (int)gRequestedPlanes.size()) return 0;
  const std::string& wanted = gRequestedPlanes[index];
  if (wanted.empty()) return 0;
  std::strcpy(outPath, wanted.c_str());
  return 0;
}

void TOKAPlaneDisableHook(int plugin) {
  if (plugin != gOwner) return;
  StDispatchCallback context(plugin);
  TOKAReleasePlanes();
}

void TOKAPlaneCleanupHook(int plugin) {
  std::vector<TOKAPlaneRequest> kept;
  for (const TOKAPlaneRequest& request : gQueue)
    if (request.plugin != plugin) kept.push_back(request);
  gQueue.swap(kept);
  // No context of its own: the release counts only when the unload runs as
  // the owner (a plugin rejected while starting, for one). An owner unloaded
  // at shutdown or reload has given the planes up when it was disabled.
  if (plugin == gOwner) TOKAReleasePlanes();
}

#ifdef TOKA_VALIDATOR
// The planes themselves, or a place in the line for them.
void TOKASurveyPlanes(int plugin, TOKASurvey& out) {
  if (gOwner == plugin) ++out.owned[kSurveyPlanes];
  for (const TOKAPlaneRequest& request : gQueue)
    if (request.plugin == plugin) ++out.owned[kSurveyPlanes];
}
#endif
