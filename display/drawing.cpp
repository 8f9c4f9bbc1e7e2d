// Draw callbacks by phase, the simulator's drawing codes, and window drawing.
#include <vector>

#include "display/display.h"
#include "loader/enabling.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"

TOKAResourceList<TOKADrawCallbackRecord> gDrawCallbacks;

// Phase in which plugin windows are drawn.
static const int kWindowPhase = 50;

static bool SameDrawCallback(const TOKADrawCallbackRecord* record, TOKADrawCallback_f callback,
                             int phase, int before, void* refcon) {
  return record->callback == callback && record->phase == phase && record->before == before &&
         record->refcon == refcon;
}

// The owner is not compared: a second plugin registering the very same
// callback is refused.
static TOKADrawCallbackRecord* FindDrawCallback(TOKADrawCallback_f callback, int phase, int before,
                                                void* refcon) {
  for (TOKADrawCallbackRecord* record = gDrawCallbacks.BeginIterate(); record;
       record = record->get_next())
    if (SameDrawCallback(record, callback, phase, before, refcon)) return record;
  return nullptr;
}

TOKA_API int TOKARegisterDrawCallback(TOKADrawCallback_f callback, int phase, int isBefore,
                                      void* refcon) {
  TOKA_NOTE_CALL();
  TOKADrawCallbackRecord* existing = FindDrawCallback(callback, phase, isBefore, refcon);
  gDrawCallbacks.EndIterate();
  if (existing) return 0;
  TOKADrawCallbackRecord* record = new TOKADrawCallbackRecord;
  record->callback = callback;
  record->plugin = TOKAGetDispatchedPlugin();
  record->phase = phase;
  record->before = isBefore;
  record->refcon = refcon;
  gDrawCallbacks.Add(record);
  return 1;
}

// Called from a draw callback, the removal is reclaimed by the EndIterate
// that closes the search, before the drawing walk moves on.
TOKA_API int TOKAUnregisterDrawCallback(TOKADrawCallback_f callback, int phase, int isBefore,
                                        void* refcon) {
  TOKA_NOTE_CALL();
  TOKADrawCallbackRecord* record = FindDrawCallback(callback, phase, isBefore, refcon);
  if (record) gDrawCallbacks.Remove(record);
  gDrawCallbacks.EndIterate();
  return record ? 1 : 0;
}

void TOKARemovePluginDrawCallbacks(int plugin) { TOKARemovePluginRecords(gDrawCallbacks, plugin); }

// What each simulator drawing code (1 to 26) runs. The irregular rows are
// what plugins were built against: codes 12 and 18 never let a before
// callback skip the phase while 1 and 13 do, phase 55 comes ahead of 50, and
// phase 101 ahead of 100.
struct HostPhaseCode {
  int phase;
  bool before;        // runs the before callbacks
  bool after;         // runs the after callbacks
  bool reportBefore;  // returns the before result rather than 1
};

static constexpr int kHostPhaseCodeCount = 26;
static constexpr HostPhaseCode kHostPhaseCodes[kHostPhaseCodeCount] = {
    {0, true, true, true},               // 1
    {5, true, false, true},              // 2
    {5, false, true, false},             // 3
    {10, true, false, true},             // 4
    {10, false, true, false},            // 5
    {15, true, false, true},             // 6
    {15, false, true, false},            // 7
    {20, true, false, true},             // 8
    {20, false, true, false},            // 9
    {25, true, false, true},             // 10
    {25, false, true, false},            // 11
    {30, true, true, false},             // 12
    {35, true, true, true},              // 13
    {40, true, false, true},             // 14
    {40, false, true, false},            // 15
    {45, true, false, true},             // 16
    {45, false, true, false},            // 17
    {55, true, true, false},             // 18
    {kWindowPhase, true, false, true},   // 19
    {kWindowPhase, false, true, false},  // 20: windows first
    {101, true, false, true},            // 21
    {101, false, true, false},           // 22
    {100, true, false, true},            // 23
    {100, false, true, false},           // 24
    {102, true, false, true},            // 25
    {102, false, true, false},           // 26
};

static const int kWindowCode = 20;

// A phase's place in the index: the first drawing code that runs it. Only
// the phases of the table are ever dispatched.
static constexpr int DrawnPhaseSlot(int phase) {
  for (int code = 0; code < kHostPhaseCodeCount; ++code)
    if (kHostPhaseCodes[code].phase == phase) return code;
  return -1;
}

// Each drawing code's slot, worked out once rather than on each of a
// frame's thirty walks.
struct CodeSlots {
  int slot[kHostPhaseCodeCount];
};
static constexpr CodeSlots MakeCodeSlots() {
  CodeSlots slots = {};
  for (int code = 0; code < kHostPhaseCodeCount; ++code)
    slots.slot[code] = DrawnPhaseSlot(kHostPhaseCodes[code].phase);
  return slots;
}
static constexpr CodeSlots kCodeSlots = MakeCodeSlots();

// A frame runs some thirty phase walks over one list of every plugin's draw
// callbacks. The index keeps, for each drawn phase and position, the records
// that a walk of the whole list would meet there, in the same order, dead
// ones included; it is rebuilt after any change to the list. A walk that a
// callback's registration makes stale goes on over the index it started
// with, which lives until the last walk over it ends.
struct DrawIndex {
  unsigned changes = 0;
  int walks = 0;
  std::vector<TOKADrawCallbackRecord*> records[kHostPhaseCodeCount][2];
};
static DrawIndex* gDrawIndex = nullptr;
static struct DrawIndexRelease {
  ~DrawIndexRelease() { delete gDrawIndex; }
} gDrawIndexRelease;

static DrawIndex* BuildDrawIndex(TOKADrawCallbackRecord* first) {
  DrawIndex* index = new DrawIndex;
  index->changes = gDrawCallbacks.changes;
  for (TOKADrawCallbackRecord* record = first; record; record = record->get_next()) {
    int slot = DrawnPhaseSlot(record->phase);
    if (slot >= 0 && (record->before == 0 || record->before == 1))
      index->records[slot][record->before].push_back(record);
  }
  return index;
}

// Pins the current index for one walk, first rebuilding it if the list has
// changed since it was built.
class StDrawIndexWalk {
public:
  explicit StDrawIndexWalk(TOKADrawCallbackRecord* first) {
    if (!gDrawIndex || gDrawIndex->changes != gDrawCallbacks.changes) {
      if (gDrawIndex && gDrawIndex->walks == 0) delete gDrawIndex;
      gDrawIndex = BuildDrawIndex(first);
    }
    mIndex = gDrawIndex;
    ++mIndex->walks;
  }
  ~StDrawIndexWalk() {
    if (--mIndex->walks == 0 && mIndex != gDrawIndex) delete mIndex;
  }
  const std::vector<TOKADrawCallbackRecord*>& Records(int slot, int before) const {
    return mIndex->records[slot][before];
  }
  StDrawIndexWalk(const StDrawIndexWalk&) = delete;
  StDrawIndexWalk& operator=(const StDrawIndexWalk&) = delete;

private:
  DrawIndex* mIndex;
};

// Calls every callback registered for the phase and position. In a
// reflection pass (flag 1) only plugins that asked for reflections are
// called. The result is the bitwise AND of the results of the calls made:
// 0 asks the simulator to skip its own drawing of the phase.
__attribute__((noinline)) static int WalkPhase(int phase, int slot, int before, int reflection) {
  TOKAResourceHold<TOKADrawCallbackRecord> hold(gDrawCallbacks);
  int result = 1;
  {
    StDrawIndexWalk walk(gDrawCallbacks.BeginIterate());
    for (TOKADrawCallbackRecord* record : walk.Records(slot, before)) {
      if (record->is_dead()) continue;
      if (reflection == 1 && !TOKAHasFeatureInternal(record->plugin, TOKAFeatureWantsReflections))
        continue;
      StDispatchCallback context(record->plugin);
      if (context()) result &= record->callback(phase, before, record->refcon);
    }
  }
  gDrawCallbacks.EndIterate();
  return result;
}

// Nobody draws here and no removal waits for a walk to end: a walk would
// change nothing. Most phases of most frames are such, so this test comes
// before anything else, without the walk's set-up.
static inline int DispatchPhase(int phase, int slot, int before, int reflection) {
  const DrawIndex* index = gDrawIndex;
  if (!gDrawCallbacks.needs_clean && index && index->changes == gDrawCallbacks.changes &&
      index->records[slot][before].empty())
    return 1;
  return WalkPhase(phase, slot, before, reflection);
}

// Back to front, so that the front window ends up on top.
static void DrawWindows() {
  TOKAResourceHold<TOKAWindowCallbackRecord> hold(gWindows);
  for (TOKAWindowCallbackRecord* record = gWindows.BeginReverseIterate(); record;
       record = record->get_prev()) {
    // A window made without a draw callback has nothing to draw.
    if (record->is_dead() || !record->visible || !record->draw_func) continue;
    StDispatchCallback context(record->plugin);
    if (context()) record->draw_func(record, record->refcon);
  }
  gWindows.EndIterate();
}


int TOKADisplayDoDrawingHook(int phaseCode, int reflection) {
  if (phaseCode < 1 || phaseCode > kHostPhaseCodeCount) return 1;
  const HostPhaseCode& code = kHostPhaseCodes[phaseCode - 1];
  if (phaseCode == kWindowCode) {
    TOKADisplayMouseDragHook();
    DrawWindows();
  }
  int beforeResult = 1;
  const int slot = kCodeSlots.slot[phaseCode - 1];
  if (code.before) beforeResult = DispatchPhase(code.phase, slot, 1, reflection);
  if (code.after) DispatchPhase(code.phase, slot, 0, reflection);
  return code.reportBefore ? beforeResult : 1;
}
