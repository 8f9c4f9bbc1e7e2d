// Shared data: values stored by the library under an agreed name, published
// as datarefs owned by the simulator, with change notification for every
// plugin that shares the name.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "data/datarefs.h"
#include "loader/enabling.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"

struct TOKASharedDataSubscriber {
  TOKADataChanged_f callback;
  void* refcon;
  int plugin;

  bool operator==(const TOKASharedDataSubscriber& other) const {
    return callback == other.callback && refcon == other.refcon && plugin == other.plugin;
  }
};

struct TOKASharedDataRecord {
  std::string name;
  int type = 0;
  void* buffer = nullptr;
  int size = 0;  // bytes
  std::vector<TOKASharedDataSubscriber> subscribers;  // in order of subscription

  TOKASharedDataRecord() = default;
  TOKASharedDataRecord(const TOKASharedDataRecord&) = delete;
  TOKASharedDataRecord& operator=(const TOKASharedDataRecord&) = delete;
  ~TOKASharedDataRecord() { std::free(buffer); }
};

// Items live as long as the process (their datarefs are the simulator's and
// stay registered); they go only with the library, at exit.
static std::vector<std::unique_ptr<TOKASharedDataRecord>> gSharedData;

static TOKASharedDataRecord* FindSharedData(const char* name) {
  for (auto& record : gSharedData)
    if (record->name == name) return record.get();
  return nullptr;
}

// Every subscriber hears of every write, the writer included, each as its
// own plugin. A callback may write again (notifying again, recursively) or
// share and unshare, which can move or shrink the array: the walk re-reads
// the array by index and copies each entry before calling it.
static void NotifySubscribers(TOKASharedDataRecord* record) {
  for (size_t i = 0; i < record->subscribers.size(); ++i) {
    TOKASharedDataSubscriber subscriber = record->subscribers[i];
    StDispatchCallback context(subscriber.plugin);
    if (context()) subscriber.callback(subscriber.refcon);
  }
}

// Makes room for `needed` bytes. The buffer never shrinks, and what lies
// between the old end and the written part is left as it was.
static bool GrowSharedData(TOKASharedDataRecord* record, long long needed) {
  if (needed <= record->size) return true;
  if (needed > 0x7fffffff) return false;
  void* grown = std::realloc(record->buffer, (size_t)needed);
  if (!grown) return false;
  record->buffer = grown;
  record->size = (int)needed;
  return true;
}

template <class T>
static T* SharedValue(void* refcon) {
  return static_cast<T*>(static_cast<TOKASharedDataRecord*>(refcon)->buffer);
}

// Scalars.

template <class T>
static T GetScalar(void* refcon, int type) {
  TOKASharedDataRecord* record = static_cast<TOKASharedDataRecord*>(refcon);
  if (record->type != type) return T(0);
  return *SharedValue<T>(refcon);
}

template <class T>
static void SetScalar(void* refcon, int type, T value) {
  TOKASharedDataRecord* record = static_cast<TOKASharedDataRecord*>(refcon);
  if (record->type != type) return;
  *SharedValue<T>(refcon) = value;
  NotifySubscribers(record);
}

static int TOKASharedDataGeti(void* refcon) {
  return GetScalar<int>(refcon, DataTypeInt);
}
static void TOKASharedDataSeti(void* refcon, int value) {
  SetScalar<int>(refcon, DataTypeInt, value);
}
static float TOKASharedDataGetf(void* refcon) {
  return GetScalar<float>(refcon, DataTypeFloat);
}
static void TOKASharedDataSetf(void* refcon, float value) {
  SetScalar<float>(refcon, DataTypeFloat, value);
}
static double TOKASharedDataGetd(void* refcon) {
  return GetScalar<double>(refcon, DataTypeDouble);
}
static void TOKASharedDataSetd(void* refcon, double value) {
  SetScalar<double>(refcon, DataTypeDouble, value);
}

// Arrays and bytes, counted in elements of sizeof(T).

// A null values pointer asks for the stored element count. Otherwise up to
// max elements from offset are copied; the comparison is signed, so an
// offset past the end copies nothing and returns the (negative) shortfall,
// a result plugins rely on as it stands.
template <class T>
static int GetElements(void* refcon, int type, void* values, int offset, int max) {
  TOKASharedDataRecord* record = static_cast<TOKASharedDataRecord*>(refcon);
  if (record->type != type) return 0;
  int count = record->size / (int)sizeof(T);
  if (!values) return count;
  // A negative offset would read in front of the buffer.
  if (offset < 0) return 0;
  int n = max <= count - offset ? max : count - offset;
  if (n > 0) std::memcpy(values, SharedValue<T>(refcon) + offset, n * sizeof(T));
  return n;
}

template <class T>
static void SetElements(void* refcon, int type, const void* values, int offset, int count) {
  TOKASharedDataRecord* record = static_cast<TOKASharedDataRecord*>(refcon);
  if (record->type != type) return;
  // Negative positions would write outside the buffer.
  if (offset < 0 || count < 0) return;
  if (!GrowSharedData(record, ((long long)offset + count) * (long long)sizeof(T))) return;
  if (count > 0) std::memcpy(SharedValue<T>(refcon) + offset, values, count * sizeof(T));
  NotifySubscribers(record);
}

static int TOKASharedDataGetvi(void* refcon, int* values, int offset, int max) {
  return GetElements<int>(refcon, DataTypeIntArray, values, offset, max);
}
static void TOKASharedDataSetvi(void* refcon, int* values, int offset, int count) {
  SetElements<int>(refcon, DataTypeIntArray, values, offset, count);
}
static int TOKASharedDataGetvf(void* refcon, float* values, int offset, int max) {
  return GetElements<float>(refcon, DataTypeFloatArray, values, offset, max);
}
static void TOKASharedDataSetvf(void* refcon, float* values, int offset, int count) {
  SetElements<float>(refcon, DataTypeFloatArray, values, offset, count);
}
static int TOKASharedDataGetb(void* refcon, void* values, int offset, int max) {
  return GetElements<unsigned char>(refcon, DataTypeData, values, offset, max);
}
static void TOKASharedDataSetb(void* refcon, void* values, int offset, int count) {
  SetElements<unsigned char>(refcon, DataTypeData, values, offset, count);
}

// One element to start with: a new array reports a count of 1 and a new
// byte item one byte until something larger is written, as plugins expect.
static int InitialSharedDataSize(int type) {
  switch (type) {
    case DataTypeDouble:
      return 8;
    case DataTypeData:
      return 1;
    default:
      return 4;
  }
}

// The item's dataref belongs to the simulator, so that it outlives the
// plugin that shared the name first. Only the accessor pair of the item's
// own type is served.
static void RegisterSharedDataRef(TOKASharedDataRecord* record) {
  StDispatchCallback context(0);
  const char* name = record->name.c_str();
  int type = record->type;
  TOKARegisterDataAccessor(
      name, type, 1, type == DataTypeInt ? TOKASharedDataGeti : nullptr,
      type == DataTypeInt ? TOKASharedDataSeti : nullptr,
      type == DataTypeFloat ? TOKASharedDataGetf : nullptr,
      type == DataTypeFloat ? TOKASharedDataSetf : nullptr,
      type == DataTypeDouble ? TOKASharedDataGetd : nullptr,
      type == DataTypeDouble ? TOKASharedDataSetd : nullptr,
      type == DataTypeIntArray ? TOKASharedDataGetvi : nullptr,
      type == DataTypeIntArray ? TOKASharedDataSetvi : nullptr,
      type == DataTypeFloatArray ? TOKASharedDataGetvf : nullptr,
      type == DataTypeFloatArray ? TOKASharedDataSetvf : nullptr,
      type == DataTypeData ? TOKASharedDataGetb : nullptr,
      type == DataTypeData ? TOKASharedDataSetb : nullptr, record, record);
}

static TOKASharedDataRecord* CreateSharedData(const char* name, int type) {
  std::unique_ptr<TOKASharedDataRecord> record(new TOKASharedDataRecord);
  record->name = name;
  record->type = type;
  record->size = InitialSharedDataSize(type);
  record->buffer = std::malloc(record->size);
  gSharedData.push_back(std::move(record));
  return gSharedData.back().get();
}

TOKA_API int TOKAShareData(const char* name, TOKADataTypeID type, TOKADataChanged_f callback,
                           void* refcon) {
  TOKA_NOTE_CALL();
  if (!name) {
    TOKASendError("Null name passed to TOKAShareData.");
    return 0;
  }
  TOKA_CHECK_SHARED_DATA_NAME(name);
  TOKASharedDataRecord* record = FindSharedData(name);
  if (record && record->type != type) return 0;
  if (!record) {
    record = CreateSharedData(name, type);
    RegisterSharedDataRef(record);
  }
  // Sharing twice with the same callback subscribes twice.
  if (callback) record->subscribers.push_back({callback, refcon, TOKAGetDispatchedPlugin()});
  return 1;
}

TOKA_API int TOKAUnshareData(const char* name, TOKADataTypeID type, TOKADataChanged_f callback,
                             void* refcon) {
  TOKA_NOTE_CALL();
  if (!name) return 0;
  TOKA_CHECK_SHARED_DATA_NAME(name);
  if (!callback) return 0;
  TOKASharedDataRecord* record = FindSharedData(name);
  if (!record || record->type != type) return 0;
  const TOKASharedDataSubscriber wanted = {callback, refcon, TOKAGetDispatchedPlugin()};
  for (auto it = record->subscribers.begin(); it != record->subscribers.end(); ++it) {
    if (*it == wanted) {
      record->subscribers.erase(it);
      return 1;
    }
  }
  return 0;
}

void TOKASharedDataCleanupHook(int plugin) {
  for (auto& record : gSharedData) {
    auto& subscribers = record->subscribers;
    for (size_t i = 0; i < subscribers.size();) {
      if (subscribers[i].plugin == plugin)
        subscribers.erase(subscribers.begin() + i);
      else
        ++i;
    }
  }
}

#ifdef TOKA_VALIDATOR
void TOKASurveySharedData(int plugin, TOKASurvey& out) {
  for (const auto& record : gSharedData)
    for (const TOKASharedDataSubscriber& subscriber : record->subscribers)
      if (subscriber.plugin == plugin) ++out.owned[kSurveySharedData];
}
#endif
