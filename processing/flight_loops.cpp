// The flight loop scheduler: plugin callbacks run from the simulator's two
// processing calls per frame, every so many seconds or every so many cycles,
// and the plugin reload that a plugin asked for, run once a pass is over.
#include <cfloat>
#include <cmath>

#include "loader/enabling.h"
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "loader/loading.h"
#include "loader/plugin_records.h"
#include "loader/resource_list.h"
#include "loader/subsystems.h"
#include "toka/TOKAProcessing.h"

// The record's address is the flight loop ID handed to the plugin.
struct TOKAFlightLoopRecord : TOKAResource_t<TOKAFlightLoopRecord> {
  float lastTime = 0;  // elapsed time of the last run, or the base set at creation / rescheduling
  int lastCycle = 0;   // cycle counter at the last run, or at creation
  float interval = 0;  // > 0 seconds, < 0 cycles, 0 not scheduled
  int phase = 0;
  TOKAFlightLoop_f callback = nullptr;
  int owner = 0;
  void* refcon = nullptr;
};

// Plugins fill in the structure's natural size: 16 in the 32-bit library,
// whose plugins have always passed 16, and 24 in the 64-bit one.
static const int kCreateFlightLoopSize = (int)sizeof(TOKACreateFlightLoop_t);
static_assert(sizeof(void*) != 4 || kCreateFlightLoopSize == 16, "plugins pass a structSize of 16");

// Newest first: a loop created during a pass is not run in that pass.
static TOKAResourceList<TOKAFlightLoopRecord> gFlightLoops;
// Advanced by every processing call, whatever its phase.
static int gLastCallNumber = 0;
// Read as the time of the previous pass but never assigned, so callbacks get
// the absolute elapsed time as their second argument. Plugins have always
// received that value there and compute with it; it must stay 0.
static float gLastCallTime = 0.0f;

// The x87 unit keeps intermediate results in extended precision; storing
// through a volatile float gives the rounding that plugins compute with.
// Where float arithmetic is done in float (SSE, the 64-bit build) the
// conversion alone gives it, without the trip through memory that every
// flight-loop test would otherwise pay.
static inline float RoundToFloat(double value) {
#if FLT_EVAL_METHOD == 0
  return (float)value;
#else
  volatile float rounded = (float)value;
  return rounded;
#endif
}

TOKA_API float TOKAGetElapsedTime(void) {
  TOKA_NOTE_CALL();
  return RoundToFloat(gHostServices->GetElapsedTime());
}

TOKA_API int TOKAGetCycleNumber(void) {
  TOKA_NOTE_CALL();
  return gLastCallNumber;
}

// The earliest time and cycle at which a loop of each phase can be due,
// never after the earliest due loop's. A pass that is before both has
// nothing to run and does not test the loops one by one, however many wait:
// every walk recomputes them, and every change to a schedule lowers them.
struct NextDue {
  float time;
  double cycle;
};
static const NextDue kWalkEveryPass = {-INFINITY, -INFINITY};
static NextDue gNextDue[2] = {kWalkEveryPass, kWalkEveryPass};

static bool MayBeDue(const NextDue& next, float elapsed) {
  return elapsed >= next.time || (double)gLastCallNumber >= next.cycle;
}

// Lowers the phase's next due time or cycle to the loop's, if it is
// scheduled. Loops of other phases than 0 and 1 never run.
static inline __attribute__((always_inline)) void NoteSchedule(
    const TOKAFlightLoopRecord* record) {
  if (record->phase != 0 && record->phase != 1) return;
  NextDue& next = gNextDue[record->phase];
  if (record->interval > 0) {
    float due = RoundToFloat(record->lastTime + record->interval);
    if (due < next.time) next.time = due;
  } else if (record->interval < 0) {
    double due = (double)record->lastCycle - (double)record->interval;
    if (due < next.cycle) next.cycle = due;
  }
}

// The loop an ID designates, or null for an ID that is no longer (or never
// was) in the list. Plugins keep IDs of loops that are gone; reading through
// them would read freed memory. The list is never walked backwards, so head
// is its first record.
static TOKAFlightLoopRecord* FindFlightLoop(TOKAFlightLoopID id) {
  for (TOKAFlightLoopRecord* record = gFlightLoops.head; record; record = record->get_next())
    if (record == id) return record;
  return nullptr;
}

// Mistakes are only reported: plugins that pass them have always had their
// loop created, and rely on it.
static void ReportCreationMistakes(const TOKACreateFlightLoop_t* params) {
  if (!TOKAHasError()) return;
  if (params->structSize != kCreateFlightLoopSize)
    TOKASendError("Illegal struct size for TOKACreateFlightLoop");
  if (params->phase != 0 && params->phase != 1)
    TOKASendError("Illegal phase type for TOKACreateFlightLoop");
  if (!params->callback) TOKASendError("Null callback for TOKACreateFlightLoop");
}

TOKA_API TOKAFlightLoopID TOKACreateFlightLoop(TOKACreateFlightLoop_t* params) {
  TOKA_NOTE_CALL();
  if (!params) return nullptr;
  ReportCreationMistakes(params);
  TOKAFlightLoopRecord* record = new TOKAFlightLoopRecord;
  record->lastTime = TOKAGetElapsedTime();
  record->lastCycle = gLastCallNumber;
  record->interval = 0;
  record->phase = params->phase;
  record->callback = params->callback;
  record->refcon = params->refcon;
  record->owner = TOKAGetDispatchedPlugin();
  gFlightLoops.Add(record);
  TOKA_NOTE_ISSUED(kHandleFlightLoop, record);
  return record;
}

TOKA_API void TOKAScheduleFlightLoop(TOKAFlightLoopID loop, float interval, int relativeToNow) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleFlightLoop, loop);
  TOKAFlightLoopRecord* record = FindFlightLoop(loop);
  if (!record) return;
  if (record->owner != TOKAGetDispatchedPlugin()) {
    TOKASendError("Attempt to schedule a flight loop callback owned by another plugin.");
    return;
  }
  // Only the time base moves: a cycle interval keeps counting from the last
  // run or the creation, which plugins that schedule by cycles expect.
  if (relativeToNow) record->lastTime = TOKAGetElapsedTime();
  record->interval = interval;
  NoteSchedule(record);
}

TOKA_API void TOKADestroyFlightLoop(TOKAFlightLoopID loop) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleFlightLoop, loop);
  TOKAFlightLoopRecord* record = FindFlightLoop(loop);
  if (!record) return;
  if (record->owner != TOKAGetDispatchedPlugin()) {
    TOKASendError("Attempt to remove a flight loop callback owned by another plugin.");
    return;
  }
  gFlightLoops.Remove(record);
}

TOKA_API void TOKARegisterFlightLoopCallback(TOKAFlightLoop_f callback, float interval,
                                             void* refcon) {
  TOKA_NOTE_CALL();
  TOKACreateFlightLoop_t params = {kCreateFlightLoopSize, 0, callback, refcon};
  TOKAScheduleFlightLoop(TOKACreateFlightLoop(&params), interval, 0);
}

// The older interface names loops by (callback, refcon) alone, so it acts on
// any plugin's loops.
TOKA_API void TOKAUnregisterFlightLoopCallback(TOKAFlightLoop_f callback, void* refcon) {
  TOKA_NOTE_CALL();
  for (TOKAFlightLoopRecord* record = gFlightLoops.BeginIterate(); record;
       record = record->get_next()) {
    if (record->callback == callback && record->refcon == refcon) {
      gFlightLoops.Remove(record);
      break;
    }
  }
  gFlightLoops.EndIterate();
}

TOKA_API void TOKASetFlightLoopCallbackInterval(TOKAFlightLoop_f callback, float interval,
                                                int relativeToNow, void* refcon) {
  TOKA_NOTE_CALL();
  for (TOKAFlightLoopRecord* record = gFlightLoops.BeginIterate(); record;
       record = record->get_next()) {
    if (record->callback != callback || record->refcon != refcon) continue;
    record->interval = interval;
    if (relativeToNow) record->lastTime = TOKAGetElapsedTime();
    NoteSchedule(record);
  }
  gFlightLoops.EndIterate();
}

// Seconds compare against the float-rounded sum, as the plugin itself would
// compute its next run. Cycles compare exactly, fractions included: an
// interval of -1.5 runs every second cycle.
static bool IsDue(const TOKAFlightLoopRecord* record, float elapsed) {
  if (record->interval > 0) return elapsed >= RoundToFloat(record->lastTime + record->interval);
  if (record->interval < 0)
    return (double)gLastCallNumber >= (double)record->lastCycle - (double)record->interval;
  return false;  // 0 or not a number: not scheduled
}

// Runs one due loop in its owner's context and reschedules it from the
// result. A disabled owner's loop is left exactly as it was, so that it runs
// at the first pass after the plugin is enabled again.
static void RunFlightLoop(TOKAFlightLoopRecord* record, float elapsed) {
  StDispatchCallback context(record->owner);
  // A loop created without a callback is kept (creation is lenient) but
  // there is nothing to call.
  if (!context() || !record->callback) return;
  float next = record->callback(elapsed - record->lastTime, elapsed - gLastCallTime,
                                gLastCallNumber, record->refcon);
  // The callback may have unregistered its own loop; the record then waits
  // in the list's parking until the pass lets go of the list, so these
  // stores land in memory that is still ours and change nothing.
  record->interval = next;
  record->lastTime = elapsed;
  record->lastCycle = gLastCallNumber;
}

// Closes the pass's iteration however the pass ends, a throwing callback
// included, so that later removals are not deferred for ever.
class StFlightLoopIteration {
public:
  StFlightLoopIteration() : mFirst(gFlightLoops.BeginIterate()) {}
  ~StFlightLoopIteration() { gFlightLoops.EndIterate(); }
  TOKAFlightLoopRecord* first() const { return mFirst; }
  StFlightLoopIteration(const StFlightLoopIteration&) = delete;
  StFlightLoopIteration& operator=(const StFlightLoopIteration&) = delete;

private:
  TOKAFlightLoopRecord* mFirst;
};

// Recomputes the phase's next due time and cycle over a walk: from nothing,
// with every loop the walk leaves behind and every schedule changed while it
// runs. A walk that a throwing callback cuts short leaves them where every
// pass walks, since the loops it did not reach were not counted.
class StNextDueRecount {
public:
  explicit StNextDueRecount(int phase) : mNext(gNextDue[phase]) {
    mNext = {INFINITY, INFINITY};
  }
  ~StNextDueRecount() {
    if (!mDone) mNext = kWalkEveryPass;
  }
  void Done() { mDone = true; }
  StNextDueRecount(const StNextDueRecount&) = delete;
  StNextDueRecount& operator=(const StNextDueRecount&) = delete;

private:
  NextDue& mNext;
  bool mDone = false;
};

static void RunDueFlightLoops(float elapsed, int phase) {
  // The hold outlives the iteration: records freed by the iteration's end,
  // or by an unregistration inside a callback, are released only after the
  // walk has stepped past them.
  TOKAResourceHold<TOKAFlightLoopRecord> hold(gFlightLoops);
  StFlightLoopIteration iteration;
  if (!MayBeDue(gNextDue[phase], elapsed)) return;
  StNextDueRecount recount(phase);
  for (TOKAFlightLoopRecord* record = iteration.first(); record; record = record->get_next()) {
    if (record->is_dead() || record->phase != phase) continue;
    if (IsDue(record, elapsed)) RunFlightLoop(record, elapsed);
    NoteSchedule(record);
  }
  recount.Done();
}

int TOKADoFlightLoopProcessing(float elapsed, int phase) {
  phase = phase ? 1 : 0;
  ++gLastCallNumber;
  RunDueFlightLoops(elapsed, phase);
  // The reload unloads the plugins whose loops the pass was running, so it
  // waits until the pass has let go of the list.
  if (gReloadScheduled) TOKAReloadPluginsInternal();
  return 1;
}

void TOKAProcessingCleanupHook(int plugin) {
  for (TOKAFlightLoopRecord* record = gFlightLoops.BeginIterate(); record;
       record = record->get_next()) {
    if (record->owner == plugin) gFlightLoops.Remove(record);
  }
  gFlightLoops.EndIterate();
}

#ifdef TOKA_VALIDATOR
bool TOKAIsLiveFlightLoop(const void* handle) {
  const TOKAFlightLoopRecord* record = FindFlightLoop(const_cast<void*>(handle));
  return record && !record->is_dead();
}

void TOKASurveyFlightLoops(int plugin, TOKASurvey& out) {
  for (const TOKAFlightLoopRecord* record = gFlightLoops.head; record; record = record->get_next()) {
    if (record->is_dead() || record->owner != plugin) continue;
    ++out.owned[kSurveyFlightLoops];
    if (record->interval != 0) ++out.running[kRunningFlightLoops];
  }
}
#endif
