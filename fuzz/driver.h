// The fuzzer's own state, shared by its files: the program being read, the
// three plugins, the pools of handles and the checks.
#ifndef TOKA_FUZZ_DRIVER_H
#define TOKA_FUZZ_DRIVER_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/fuzz.h"
#include "toka/TOKAHost.h"

// A check that fails ends the run as a crash, with its place and text.
#define CHECK(cond)                                                             \
  do {                                                                          \
    if (!(cond)) check_failed(__FILE__, __LINE__, #cond);                       \
  } while (0)
[[noreturn]] void check_failed(const char* file, int line, const char* what);

// ---- the program ------------------------------------------------------------
int next_byte();                      // the next byte of the input, 0 past its end
int pick(int n);                      // a number below n, from the next byte
int next_int(int lo, int hi);         // a number from lo to hi
void run_ops(int count);              // count plugin operations, in the calling plugin
extern int depth;                     // how deep in callbacks the program is

// ---- the plugins --------------------------------------------------------------
constexpr int kSlots = 3;             // a and b in the plugins folder, c the aircraft's
struct Slot {
  std::string path;                   // where the loader finds it
  const FuzzModule* module = nullptr; // its callbacks while loaded
  int id = -1;                        // its plugin ID while loaded
  int stopped_id = -1;                // its ID from its stop entry on
  unsigned first_serial = 0;          // of the refcons made since it started
  bool starting = false;              // inside its start entry
  bool error_callback = false;        // whether it installed its error callback
  std::vector<std::string> errors;    // what its error callback was told
};
extern Slot slots[kSlots];
int me();                             // the slot of the dispatched plugin, or -1
void* new_refcon(int slot);           // a refcon of slot's, never seen before
int refcon_slot(void* refcon);        // the slot a refcon was made for

// ---- handles -------------------------------------------------------------------
enum Pool { kDataRefs, kLoops, kWindows, kHotKeys, kMenus, kCommands, kObjects, kProbes, kPools };
struct Handle {
  void* value;
  int owner;       // slot, or -1 for the simulator's
  bool live;
  void* refcon;    // what the handle's callbacks are given
};
// How a handle was chosen.
enum Choice { kLive, kForeign, kStale, kNull, kMisaligned, kNeverIssued };
struct Picked {
  void* value;
  Choice choice;
  Handle* handle;  // the pool entry of a live or stale handle
};
void add_handle(Pool pool, void* value, int owner, void* refcon = nullptr);
void kill_handle(Pool pool, void* value);
void kill_owned(int slot);            // everything a plugin's unloading withdraws
Handle* find_handle(Pool pool, void* value);
// Any kind of handle, or (for calls that do not validate) a live or null one.
Picked pick_handle(Pool pool, bool validated = true);
void clear_pools();

// Errors reported to the calling plugin by the call: checked against expected
// (nothing without an error callback).
void expect_errors(int slot, std::vector<std::string> expected);

// ---- the simulator -------------------------------------------------------------
extern TOKAHostServices host_table;
extern std::string root;              // the simulator's folder, ending in '/'
extern double elapsed;
extern std::vector<int> host_items;   // menu item IDs the simulator gave out
void reset_host();
void complete_loads(bool all);        // finishes asynchronous object loads
void run_host_op();                   // one call of a host entry point

void share_items();                   // the shared data items the program uses

// The plugin operations, one per exported plugin function and then some.
using Op = void (*)();
extern const Op core_ops[];
extern const int core_op_count;
extern const Op world_ops[];
extern const int world_op_count;

#endif
