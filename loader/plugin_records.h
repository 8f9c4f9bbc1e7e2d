// Plugin records, the plugin list and the dispatch context.
#ifndef TOKA_LOADER_PLUGIN_RECORDS_H
#define TOKA_LOADER_PLUGIN_RECORDS_H

#include <deque>
#include <string>
#include <vector>

#include "loader/deliveries.h"
#include "loader/survey.h"
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

// The plugin list, index = plugin ID. Records never move (a deque holds
// them): deliveries queued for a plugin point at the queue heads inside its
// record. Beside them, their addresses by ID, and one flag per ID saying
// whether the plugin's callbacks may run, so that the dispatch context,
// around every call into a plugin, decides in one load.
class PluginList {
public:
  PluginRecord& operator[](size_t id) { return *mByID[id]; }
  const PluginRecord& operator[](size_t id) const { return *mByID[id]; }
  size_t size() const { return mByID.size(); }
  bool empty() const { return mByID.empty(); }
  PluginRecord& back() { return *mByID.back(); }
  void emplace_back() {
    mRecords.emplace_back();
    mByID.push_back(&mRecords.back());
    SyncCallable();
  }
  void pop_back() {
    mByID.pop_back();
    mRecords.pop_back();
    SyncCallable();
  }
  void clear() {
    mByID.clear();
    mRecords.clear();
    SyncCallable();
  }
  // The only way a record's enabled flag changes.
  void SetEnabled(size_t id, bool enabled) {
    mByID[id]->enabled = enabled;
    mCallable[id] = enabled;
  }
  // Whether a callback of the plugin may run: it must be enabled, or be the
  // host while no plugin record exists yet.
  bool MayCall(int id) const { return (unsigned)id < mCallable.size() && mCallable[id]; }

private:
  void SyncCallable() {
    mCallable.resize(mByID.empty() ? 1 : mByID.size());
    mCallable.back() = mByID.empty() || mByID.back()->enabled;
  }

  std::deque<PluginRecord> mRecords;
  std::vector<PluginRecord*> mByID;
  std::vector<unsigned char> mCallable = {1};
};
extern PluginList gAllPlugins;
// IDs of the plugins loaded for the user's aircraft, in load order.
extern std::vector<int> gCurrentAircraftPluginIDS;

inline bool TOKAIsValidPluginID(int id) {
  return id >= 0 && id < (int)gAllPlugins.size();
}

// The dispatched plugin: the plugin whose code runs on this thread. It is
// read and written around every call into a plugin (every accessor, flight
// loop, draw and input callback), so it is a plain thread-local variable,
// which costs one memory access; the platform's thread-specific data calls
// would cost a library call each.
// Outside any callback, and in every new thread, it is the host, 0.
extern __thread int gDispatchedPlugin __attribute__((tls_model("initial-exec")));

inline int TOKAGetDispatchedPlugin() { return gDispatchedPlugin; }
inline void TOKASetDispatchedPlugin(int id) { gDispatchedPlugin = id; }

inline bool TOKAMayCallPlugin(int id) { return gAllPlugins.MayCall(id); }

// Scoped switch of the dispatched plugin around a call into plugin code.
// operator() says whether the plugin may be called (TOKAMayCallPlugin).
class StDispatchCallback {
public:
  explicit StDispatchCallback(int id)
      : mMayCall(TOKAMayCallPlugin(id)), mPrevious(TOKAGetDispatchedPlugin()) {
    TOKA_NOTE_DISPATCH_SWITCH(mPrevious);
    TOKASetDispatchedPlugin(id);
  }
  ~StDispatchCallback() {
    TOKA_NOTE_DISPATCH_SWITCH(TOKAGetDispatchedPlugin());
    TOKASetDispatchedPlugin(mPrevious);
  }
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
