// Plugin records, the plugin list and the dispatch context.
#ifndef TOKA_LOADER_PLUGIN_RECORDS_H
#define TOKA_LOADER_PLUGIN_RECORDS_H

#include <deque>
#include <string>
#include <vector>

#include "loader/deliveries.h"
#include "toka/TOKADefs.h"

typedef void (*TOKAErrorCallback_f)(const char*);

struct PluginRecord {
  void* module = nullptr;
  std::string name;
  std::string path;          // UTF-8
  std::string signature;
  std::string description;
  TOKAPluginStop_f stop = nullptr;
  TOKAPluginEnable_f enable = nullptr;
  TOKAPluginDisable_f disable = nullptr;
  TOKAPluginReceiveMessage_f message = nullptr;
  TOKAErrorCallback_f errorCallback = nullptr;
  bool enabled = false;
  int features[2] = {0, 0};
  TOKADeliveryHead pending;  // queued, waiting for the host to complete them
  TOKADeliveryHead held;     // completed while the plugin was disabled

  PluginRecord() = default;
  PluginRecord(const PluginRecord& other);
  PluginRecord& operator=(const PluginRecord& other);
  ~PluginRecord() = default;
};

// Index = plugin ID. A deque, so that records never move: deliveries queued
// for a plugin point at the queue heads inside its record.
extern std::deque<PluginRecord> gAllPlugins;
// IDs of the plugins loaded for the user's aircraft, in load order.
extern std::vector<int> gCurrentAircraftPluginIDS;

inline bool TOKAIsValidPluginID(int id) {
  return id >= 0 && id < (int)gAllPlugins.size();
}

int TOKAGetDispatchedPlugin();
void TOKASetDispatchedPlugin(int id);
// Creates the thread-local key of the dispatched plugin (once per process).
void TOKACreateDispatchKey();

// Scoped switch of the dispatched plugin around a call into plugin code.
// operator() says whether the plugin may be called: it must be enabled, or be
// the host while no plugin record exists yet.
class StDispatchCallback {
public:
  explicit StDispatchCallback(int id);
  ~StDispatchCallback();
  bool operator()() const { return mMayCall; }
  StDispatchCallback(const StDispatchCallback&) = delete;
  StDispatchCallback& operator=(const StDispatchCallback&) = delete;

private:
  bool mMayCall;
  int mPrevious;
};

const char* DebugCurrentPluginName();
void strcpytrunc(char* dst, const std::string& src, int size);
const char* StripPath(const char* path);
void TOKAOldToUTF8(std::string& path);
void TOKAUTF8ToOld(std::string& path);

#endif
