// The dataref registry: records, lookup by name, handle validation,
// registration, the typed accessors and the clean-up at plugin unload.
#include "data/datarefs.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "loader/enabling.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"

namespace {

// Records are carved from blocks that are never freed while the library is
// in use, so a handle stays valid however many datarefs come later, and a
// handle can be checked by address arithmetic alone. The blocks form a chain
// in the order they were made; beside it, an index of where each block lies
// lets a check find the one block a handle can be in without walking the
// chain, however long it has grown.
struct TOKADataBlock {
  TOKADataBlock* next;
  int32_t capacity;
  int32_t used;
};
static_assert(sizeof(TOKADataBlock) % alignof(TOKAData_t) == 0,
              "records must start aligned right after the block header");

const int kDataBlockCapacity = 32;

constexpr size_t PowerOfTwoAtLeast(size_t n) {
  size_t p = 1;
  while (p < n) p <<= 1;
  return p;
}
// Every block starts at a multiple of its own size, so the block an address
// would lie in is the address rounded down.
constexpr size_t kDataBlockBytes =
    PowerOfTwoAtLeast(sizeof(TOKADataBlock) + kDataBlockCapacity * sizeof(TOKAData_t));

TOKAData_t* FirstRecord(TOKADataBlock* block) {
  return reinterpret_cast<TOKAData_t*>(reinterpret_cast<char*>(block) + sizeof(TOKADataBlock));
}

// The addresses of the blocks: an open-addressing hash set, at most half
// full, that only grows.
class DataBlockIndex {
public:
  ~DataBlockIndex() {
    delete[] mSlots;
    mSlots = nullptr;  // a check made while the library unloads finds nothing
  }

  void Insert(uintptr_t block) {
    if ((mCount + 1) * 2 > mCapacity) Grow();
    Place(block);
    ++mCount;
  }

  bool Contains(uintptr_t block) const {
    if (!mSlots) return false;
    for (size_t i = Hash(block);; i = (i + 1) & (mCapacity - 1)) {
      if (mSlots[i] == block) return true;
      if (mSlots[i] == 0) return false;
    }
  }

private:
  size_t Hash(uintptr_t block) const {
    return (size_t)(((uint64_t)(block / kDataBlockBytes) * 0x9E3779B97F4A7C15ull) >> 32) &
           (mCapacity - 1);
  }
  void Place(uintptr_t block) {
    size_t i = Hash(block);
    while (mSlots[i]) i = (i + 1) & (mCapacity - 1);
    mSlots[i] = block;
  }
  void Grow() {
    uintptr_t* old = mSlots;
    size_t oldCapacity = mCapacity;
    mCapacity = mCapacity ? mCapacity * 2 : 16;
    mSlots = new uintptr_t[mCapacity]();
    for (size_t i = 0; i < oldCapacity; ++i)
      if (old[i]) Place(old[i]);
    delete[] old;
  }

  uintptr_t* mSlots = nullptr;
  size_t mCapacity = 0;
  size_t mCount = 0;
};

}  // namespace

TOKADataRefMap gDataRefs;
static TOKADataBlock* gDataBlock = nullptr;  // first block of the chain
static TOKADataBlock* gDataFree = nullptr;   // last block, where new records come from
static DataBlockIndex gDataBlockIndex;
static int gDataCount = 0;

// The records go only when the library itself goes, at process exit: until
// then plugins may hold handles to any of them.
static struct DataBlockRelease {
  ~DataBlockRelease() {
    while (TOKADataBlock* block = gDataBlock) {
      gDataBlock = block->next;
      TOKAData_t* records = FirstRecord(block);
      for (int i = 0; i < block->used; ++i) records[i].~TOKAData_t();
      std::free(block);
    }
    gDataFree = nullptr;
  }
} gDataBlockRelease;

static void AllocDataBlock() {
  void* memory = std::aligned_alloc(kDataBlockBytes, kDataBlockBytes);
  if (!memory) throw std::bad_alloc();
  std::memset(memory, 0, kDataBlockBytes);
  TOKADataBlock* block = static_cast<TOKADataBlock*>(memory);
  block->capacity = kDataBlockCapacity;
  gDataBlockIndex.Insert(reinterpret_cast<uintptr_t>(block));
  if (gDataFree) gDataFree->next = block;
  gDataFree = block;
  if (!gDataBlock) gDataBlock = block;
}

static TOKAData_t* AllocDataRef(const char* name) {
  if (!gDataFree || gDataFree->used == gDataFree->capacity) AllocDataBlock();
  TOKAData_t* slot = FirstRecord(gDataFree) + gDataFree->used;
  ++gDataFree->used;
  TOKAData_t* record = new (slot) TOKAData_t();  // every field but the name zero
  record->name = name;
  ++gDataCount;
  return record;
}

TOKAData_t* DataIsValid(void* handle) {
  if (!handle) return nullptr;
  uintptr_t address = reinterpret_cast<uintptr_t>(handle);
  uintptr_t base = address & ~(uintptr_t)(kDataBlockBytes - 1);
  if (!gDataBlockIndex.Contains(base)) return nullptr;
  TOKADataBlock* block = reinterpret_cast<TOKADataBlock*>(base);
  uintptr_t first = reinterpret_cast<uintptr_t>(FirstRecord(block));
  uintptr_t end = first + block->used * sizeof(TOKAData_t);
  if (address < first || address >= end) return nullptr;
  if ((address - first) % sizeof(TOKAData_t) != 0) return nullptr;
  return static_cast<TOKAData_t*>(handle);
}

const char* DebugDataRefName(void* handle) {
  if (!handle) return "(null dataref)";
  TOKAData_t* record = DataIsValid(handle);
  if (!record) return "(invalid dataref)";
  return record->name.c_str();
}

TOKA_API TOKADataRef TOKAFindDataRef(const char* name) {
  TOKA_NOTE_CALL();
  if (!name) return nullptr;
  auto found = gDataRefs.find(std::string_view(name));
  if (found == gDataRefs.end() || found->second->owner == -1) return nullptr;
  TOKA_NOTE_ISSUED(kHandleDataRef, found->second);
  return found->second;
}

TOKA_API TOKADataRef TOKARegisterDataAccessor(
    const char* name, TOKADataTypeID types, int writable, TOKAGetDatai_f readInt,
    TOKASetDatai_f writeInt, TOKAGetDataf_f readFloat, TOKASetDataf_f writeFloat,
    TOKAGetDatad_f readDouble, TOKASetDatad_f writeDouble, TOKAGetDatavi_f readIntArray,
    TOKASetDatavi_f writeIntArray, TOKAGetDatavf_f readFloatArray,
    TOKASetDatavf_f writeFloatArray, TOKAGetDatab_f readData, TOKASetDatab_f writeData,
    void* readRefcon, void* writeRefcon) {
  TOKA_NOTE_CALL();
  if (!name) {
    TOKASendError("Null dataref name passed to TOKARegisterDataAccessor.");
    return nullptr;
  }
  TOKAData_t* record;
  auto found = gDataRefs.find(std::string_view(name));
  if (found != gDataRefs.end()) {
    record = found->second;
    if (record->owner != -1) {
      // The live owner's handle, not null: plugins that publish a name the
      // simulator or another plugin already serves go on to use that handle.
      TOKASendError("Dataref is already registered by someone else.");
      return record;
    }
    // An orphaned name comes back to life in the same record, so that
    // handles other plugins kept from before work again.
  } else {
    record = AllocDataRef(name);
    gDataRefs.emplace(std::string_view(record->name), record);
  }
  record->types = types;
  record->writable = writable;
  record->owner = TOKAGetDispatchedPlugin();
  record->readInt = readInt;
  record->writeInt = writeInt;
  record->readFloat = readFloat;
  record->writeFloat = writeFloat;
  record->readDouble = readDouble;
  record->writeDouble = writeDouble;
  record->readIntArray = readIntArray;
  record->writeIntArray = writeIntArray;
  record->readFloatArray = readFloatArray;
  record->writeFloatArray = writeFloatArray;
  record->readData = readData;
  record->writeData = writeData;
  record->readRefcon = readRefcon;
  record->writeRefcon = writeRefcon;
  TOKA_NOTE_ISSUED(kHandleDataRef, record);
  return record;
}

TOKA_API void TOKAUnregisterDataAccessor(TOKADataRef ref) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  TOKAData_t* record = DataIsValid(ref);
  if (!record) {
    TOKASendError("Dataref is illegal and cannot be unregistered.");
    return;
  }
  if (record->owner != TOKAGetDispatchedPlugin()) {
    // "unregsiter" as it stands: plugins compare the text they are given.
    TOKASendError("Dataref is not owned by you - you cannot unregsiter.");
    return;
  }
  // Only the owner goes; everything else stays for a later registration.
  record->owner = -1;
  TOKA_NOTE_RETIRED_DATAREF(record);
}

TOKA_API int TOKAIsDataRefGood(TOKADataRef ref) {
  TOKA_NOTE_CALL();
  TOKAData_t* record = DataIsValid(ref);
  return record && record->owner != -1 ? 1 : 0;
}

TOKA_API int TOKACanWriteDataRef(TOKADataRef ref) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  return ref ? static_cast<TOKAData_t*>(ref)->writable : 0;
}

TOKA_API TOKADataTypeID TOKAGetDataRefTypes(TOKADataRef ref) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  return ref ? static_cast<TOKAData_t*>(ref)->types : 0;
}

// The typed accessors are the busiest calls plugins make, many per frame: a
// null test, the owner's dispatch context and one indirect call, with no
// lookup and no walk of the blocks.
namespace {

template <class R, class Callback, class... Args>
inline R ReadThrough(TOKADataRef ref, Callback TOKAData_t::*callback, Args... args) {
  TOKAData_t* record = static_cast<TOKAData_t*>(ref);
  if (!record || !(record->*callback)) return R(0);
  StDispatchCallback context(record->owner);
  if (!context()) return R(0);
  return (record->*callback)(record->readRefcon, args...);
}

template <class Callback, class... Args>
inline void WriteThrough(TOKADataRef ref, Callback TOKAData_t::*callback, Args... args) {
  TOKAData_t* record = static_cast<TOKAData_t*>(ref);
  if (!record || !record->writable || !(record->*callback)) return;
  StDispatchCallback context(record->owner);
  if (context()) (record->*callback)(record->writeRefcon, args...);
}

}  // namespace

TOKA_API int TOKAGetDatai(TOKADataRef ref) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  return ReadThrough<int>(ref, &TOKAData_t::readInt);
}

TOKA_API void TOKASetDatai(TOKADataRef ref, int value) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  WriteThrough(ref, &TOKAData_t::writeInt, value);
}

TOKA_API float TOKAGetDataf(TOKADataRef ref) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  return ReadThrough<float>(ref, &TOKAData_t::readFloat);
}

TOKA_API void TOKASetDataf(TOKADataRef ref, float value) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  WriteThrough(ref, &TOKAData_t::writeFloat, value);
}

TOKA_API double TOKAGetDatad(TOKADataRef ref) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  return ReadThrough<double>(ref, &TOKAData_t::readDouble);
}

TOKA_API void TOKASetDatad(TOKADataRef ref, double value) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  WriteThrough(ref, &TOKAData_t::writeDouble, value);
}

TOKA_API int TOKAGetDatavi(TOKADataRef ref, int* values, int offset, int max) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  return ReadThrough<int>(ref, &TOKAData_t::readIntArray, values, offset, max);
}

TOKA_API void TOKASetDatavi(TOKADataRef ref, int* values, int offset, int count) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  WriteThrough(ref, &TOKAData_t::writeIntArray, values, offset, count);
}

TOKA_API int TOKAGetDatavf(TOKADataRef ref, float* values, int offset, int max) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  return ReadThrough<int>(ref, &TOKAData_t::readFloatArray, values, offset, max);
}

TOKA_API void TOKASetDatavf(TOKADataRef ref, float* values, int offset, int count) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  WriteThrough(ref, &TOKAData_t::writeFloatArray, values, offset, count);
}

TOKA_API int TOKAGetDatab(TOKADataRef ref, void* values, int offset, int max) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  return ReadThrough<int>(ref, &TOKAData_t::readData, values, offset, max);
}

TOKA_API void TOKASetDatab(TOKADataRef ref, void* values, int offset, int count) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleDataRef, ref);
  WriteThrough(ref, &TOKAData_t::writeData, values, offset, count);
}

void TOKADataRefsCleanupHook(int plugin) {
  // The records stay, with their names and callbacks: handles held by other
  // plugins read 0 until the name is registered again.
  for (auto& entry : gDataRefs)
    if (entry.second->owner == plugin) entry.second->owner = -1;
  TOKASharedDataCleanupHook(plugin);
}

#ifdef TOKA_VALIDATOR
bool TOKAIsLiveDataRef(const void* handle) {
  return DataIsValid(const_cast<void*>(handle)) != nullptr;
}

void TOKASurveyDataRefs(int plugin, TOKASurvey& out) {
  for (const auto& entry : gDataRefs)
    if (entry.second->owner == plugin) ++out.owned[kSurveyDataRefs];
}
#endif
