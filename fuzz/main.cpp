// The fuzzer's entry: each input is a program run from start-up to shutdown
// of the library, with three scripted plugins whose entry points and
// callbacks carry out the program's operations.
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "fuzz/driver.h"

Slot slots[kSlots];
int depth;

static const uint8_t* input;
static size_t input_left;
static int ops_left;          // bounds the work of one input, loops included
static unsigned refcons;
static std::vector<Handle> pools[kPools];
static char never_issued[256];  // an address the library never gave out
// The callback running, by the pool of its record and its refcon.
struct Walked {
  Pool pool;
  void* refcon;
};
static Walked walked = {kPools, nullptr};

[[noreturn]] void check_failed(const char* file, int line, const char* what) {
  std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, what);
  std::abort();
}

int next_byte() {
  if (!input_left) return 0;
  --input_left;
  return *input++;
}
int pick(int n) { return n > 0 ? next_byte() % n : 0; }
int next_int(int lo, int hi) { return lo + pick(hi - lo + 1); }

// ---- plugins ---------------------------------------------------------------------

static int slot_of_path(const char* path) {
  for (int i = 0; i < kSlots; ++i)
    if (slots[i].path == path) return i;
  check_failed(__FILE__, __LINE__, path);
}

int me() {
  int id = TOKAGetMyID();
  for (int i = 0; i < kSlots; ++i)
    if (id > 0 && slots[i].id == id) return i;
  return -1;
}

// A refcon carries its slot in its low bits and a serial number above them;
// serials below kFirstSerial are the few refcons plugins share.
constexpr unsigned kFirstSerial = 16;
void* new_refcon(int slot) { return (void*)(uintptr_t)((++refcons << 2) | (unsigned)slot); }
int refcon_slot(void* refcon) { return (int)((uintptr_t)refcon & 3); }

void run_ops(int count) {
  if (depth >= 4 || me() < 0) return;
  ++depth;
  while (count-- > 0 && input_left && ops_left-- > 0) {
    int before = TOKAGetMyID();
    int op = pick(core_op_count + world_op_count);
    if (op < core_op_count)
      core_ops[op]();
    else
      world_ops[op - core_op_count]();
    // Whatever the call did, the caller is the dispatched plugin again.
    CHECK(TOKAGetMyID() == before);
  }
  --depth;
}

void expect_errors(int slot, std::vector<std::string> expected) {
  if (!slots[slot].error_callback) expected.clear();
  if (slots[slot].errors != expected) {
    std::fprintf(stderr, "plugin %c was told:\n", 'a' + slot);
    for (const std::string& text : slots[slot].errors) std::fprintf(stderr, "  %s\n", text.c_str());
    std::fprintf(stderr, "expected:\n");
    for (const std::string& text : expected) std::fprintf(stderr, "  %s\n", text.c_str());
    check_failed(__FILE__, __LINE__, "the errors reported");
  }
  slots[slot].errors.clear();
}

extern "C" int FuzzStart(const char* path, const FuzzModule* module, char* name, char* signature,
                         char* description) {
  int i = slot_of_path(path);
  Slot& slot = slots[i];
  std::sprintf(name, "fuzz %c", 'a' + i);
  std::sprintf(signature, "fuzz.%c", 'a' + i);
  // The aircraft's plugin loaded again while it is loaded is the same module
  // under a second ID, which the loader unloads at once as a duplicate.
  if (slot.id > 0) return 1;
  slot.module = module;
  slot.id = TOKAGetMyID();
  slot.first_serial = refcons + 1;
  slot.error_callback = false;
  slot.errors.clear();
  std::strcpy(description, "a plugin the fuzzer scripts");
  // Its record takes its names once it has started.
  slot.starting = true;
  run_ops(pick(4));
  slot.starting = false;
  return 1;
}

// What the library hands back: the plugin it calls must be the one that owns
// the callback, dispatched while it runs.
static void check_owner(int slot, void* refcon) {
  int owner = refcon_slot(refcon);
  CHECK(owner == slot);
  CHECK(TOKAGetMyID() == slots[owner].id);
  // Nothing registered by an earlier load of the plugin is called: its code
  // was unloaded (a new load may lie at the same address).
  unsigned serial = (unsigned)((uintptr_t)refcon >> 2);
  CHECK(serial < kFirstSerial || serial >= slots[owner].first_serial);
}

extern "C" int FuzzCallback(const char* path, int kind, void* refcon, const void* data,
                            int value) {
  int i = slot_of_path(path);
  Slot& slot = slots[i];
  // A plugin enabled again while every plugin was being disabled is still
  // enabled when it is unloaded: the camera's release, after its stop
  // entry, tells it that it loses the camera. Nothing else calls it then.
  if (kind == kCamera && value == 1 && slot.id < 0 && slot.stopped_id > 0 &&
      TOKAGetMyID() == slot.stopped_id && refcon_slot(refcon) == i)
    return 0;
  switch (kind) {
    case kError:
      CHECK(TOKAGetMyID() == slot.id);
      slot.errors.push_back((const char*)data);
      return 0;
    case kFeature:
    case kObjectFound:
      check_owner(i, refcon);
      return 0;
    case kMessage:
      CHECK(TOKAGetMyID() == slot.id);
      run_ops(value == 0x7A0A ? (int)(intptr_t)refcon : pick(3));
      return 0;
    case kEnable:
      CHECK(TOKAGetMyID() == slot.id);
      run_ops(pick(3));
      return pick(8) != 0;
    case kDisable:
      CHECK(TOKAGetMyID() == slot.id);
      run_ops(pick(3));
      return 0;
    case kStop:
      if (TOKAGetMyID() != slot.id) return 0;  // the duplicate going

      run_ops(pick(3));
      // The library withdraws everything the plugin owns and closes it.
      kill_owned(i);
      slot.module = nullptr;
      slot.stopped_id = slot.id;
      slot.id = -1;
      return 0;
    case kObjectLoaded:
      check_owner(i, refcon);
      run_ops(pick(3));
      // The object is the plugin's once its callback has returned.
      if (data) add_handle(kObjects, (void*)data, i);
      return 0;
    default: {
      check_owner(i, refcon);
      // The record being walked is the likeliest handle of its callback's
      // operations, so that they destroy it, or its neighbours, mid-walk.
      Pool pool = kind == kFlightLoop ? kLoops : kind == kHotKey ? kHotKeys : kWindows;
      Walked outer = walked;
      walked = {pool, refcon};
      run_ops(pick(3));
      walked = outer;
      // Flight loops: the next interval, in quarters (negative: cycles).
      return kind == kFlightLoop ? next_int(-2, 3) : pick(2);
    }
  }
}

// ---- handles ---------------------------------------------------------------------

void add_handle(Pool pool, void* value, int owner, void* refcon) {
  std::vector<Handle>& handles = pools[pool];
  // A stale handle whose address is given out again is live again.
  for (size_t i = 0; i < handles.size();)
    if (handles[i].value == value)
      handles.erase(handles.begin() + i);
    else
      ++i;
  if (handles.size() == 24) handles.erase(handles.begin());
  handles.push_back({value, owner, true, refcon});
}

Handle* find_handle(Pool pool, void* value) {
  for (Handle& handle : pools[pool])
    if (handle.value == value) return &handle;
  return nullptr;
}

void kill_handle(Pool pool, void* value) {
  if (Handle* handle = find_handle(pool, value)) handle->live = false;
}

void kill_owned(int slot) {
  for (int pool = 0; pool < kPools; ++pool)
    for (Handle& handle : pools[pool])
      if (handle.owner == slot && pool != kCommands) handle.live = false;
}

void clear_pools() {
  for (std::vector<Handle>& handles : pools) handles.clear();
}

static Handle* pick_from(Pool pool, bool live, int not_owner) {
  std::vector<Handle*> found;
  for (Handle& handle : pools[pool])
    if (handle.live == live && (not_owner < 0 || handle.owner != not_owner))
      found.push_back(&handle);
  return found.empty() ? nullptr : found[pick(found.size())];
}

Picked pick_handle(Pool pool, bool validated) {
  Choice choice = validated ? (Choice)pick(6) : pick(4) ? kLive : kNull;
  Handle* handle = nullptr;
  switch (choice) {
    case kLive:
      if (walked.pool == pool && pick(2))
        for (Handle& walking : pools[pool])
          if (walking.live && walking.refcon == walked.refcon)
            return {walking.value, kLive, &walking};
      handle = pick_from(pool, true, -1);
      break;
    case kForeign: handle = pick_from(pool, true, me()); break;
    case kStale: handle = pick_from(pool, false, -1); break;
    case kMisaligned:
      if (Handle* live = pick_from(pool, true, -1))
        return {(char*)live->value + 1 + pick(3), choice, nullptr};
      return {never_issued + 1, choice, nullptr};
    case kNeverIssued: return {never_issued + 8 * pick(32), choice, nullptr};
    case kNull: break;
  }
  if (!handle) return {nullptr, kNull, nullptr};
  return {handle->value, choice, handle};
}

// ---- the run ---------------------------------------------------------------------

static void write_file(const std::string& path, const std::string& from) {
  std::ifstream in(from, std::ios::binary);
  std::ofstream out(path, std::ios::binary);
  out << in.rdbuf();
  CHECK(in && out);
}

static void make_tree(const char* plugin) {
  char folder[] = "/tmp/toka-fuzz-XXXXXX";
  CHECK(mkdtemp(folder));
  root = std::string(folder) + "/";
  for (const char* dir : {"Resources", "Resources/plugins", "Resources/plugins/b", "Aircraft",
                          "Aircraft/Plane", "Aircraft/Plane/plugins", "Aircraft/Plane/plugins/c",
                          "Custom Scenery", "Custom Scenery/Airport"})
    mkdir((root + dir).c_str(), 0755);
  slots[0].path = root + "Resources/plugins/a.orv";
  slots[1].path = root + "Resources/plugins/b/lin.orv";
  slots[2].path = root + "Aircraft/Plane/plugins/c/lin.orv";
  for (Slot& slot : slots) write_file(slot.path, plugin);
  std::atexit([] { std::filesystem::remove_all(root); });
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The plugin module is built beside the fuzzer.
  Dl_info info;
  dladdr((void*)&LLVMFuzzerInitialize, &info);
  std::string self = info.dli_fname;
  make_tree((self.substr(0, self.rfind('/') + 1) + "fuzz_plugin.orv").c_str());
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  input = data;
  input_left = size;
  ops_left = 3000;
  depth = 0;
  refcons = kFirstSerial;
  walked = {kPools, nullptr};
  reset_host();
  for (Slot& slot : slots) {
    std::string path = slot.path;
    slot = Slot();
    slot.path = path;
  }
  CHECK(TOKAInitializePlugins(root.c_str(), &host_table, 0) == 17);
  share_items();
  while (input_left && ops_left-- > 0) run_host_op();
  TOKAShutdownPlugins();
  // The simulator finishes the loads it was asked for, plugins gone or not.
  complete_loads(true);
  clear_pools();
  return 0;
}
