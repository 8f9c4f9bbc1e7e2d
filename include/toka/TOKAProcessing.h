/* Toka: flight loops.
 *
 * A flight loop is a callback that the simulator's processing runs every so
 * many seconds of simulator time or every so many processing cycles. The
 * simulator processes twice per frame: phase 0, then phase 1; each processing
 * call advances the cycle counter by one, whatever its phase.
 *
 * Two interfaces work on the same loops: the older one names a loop by its
 * (callback, refcon) pair, the newer one by the flight loop ID returned at
 * creation. A loop belongs to the plugin that created it; it is withdrawn when
 * that plugin is unloaded, and its ID stops being valid then or when the loop
 * is destroyed or unregistered. While its plugin is disabled a loop is not
 * run, and its timing stands still: a loop that fell due meanwhile runs at the
 * first processing call after the plugin is enabled again. */
#ifndef TOKA_PROCESSING_H
#define TOKA_PROCESSING_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* A flight loop callback.
 *   sinceLastCall: seconds since the loop last ran (or since it was created,
 *                  or rescheduled relative to now);
 *   sinceLastLoop: the simulator's elapsed time at this call (seconds);
 *   counter:       the cycle counter at this call;
 *   refcon:        the value given at registration, unchanged.
 * Returns when to run next: > 0 seconds from now, < 0 that many cycles from
 * now (-1: every processing call of its phase), 0 not until rescheduled. */
typedef float (*TOKAFlightLoop_f)(float sinceLastCall, float sinceLastLoop, int counter,
                                  void* refcon);

/* Creation parameters of TOKACreateFlightLoop. */
typedef struct {
  int structSize;            /* sizeof(TOKACreateFlightLoop_t): 16 (64-bit: 24) */
  int phase;                 /* 0 or 1: the processing phase that runs the loop */
  TOKAFlightLoop_f callback;
  void* refcon;              /* handed back to the callback */
} TOKACreateFlightLoop_t;

/* The simulator's elapsed time in seconds. */
TOKA_API float TOKAGetElapsedTime(void);

/* The cycle counter: the number of processing calls so far (both phases). */
TOKA_API int TOKAGetCycleNumber(void);

/* Creates a flight loop for the calling plugin, not yet scheduled: it runs
 * only once TOKAScheduleFlightLoop gives it an interval. Returns its ID.
 * If the plugin has an error callback, mistakes in params are reported (the
 * loop is created all the same): "Illegal struct size for
 * TOKACreateFlightLoop", "Illegal phase type for TOKACreateFlightLoop",
 * "Null callback for TOKACreateFlightLoop". A loop of any phase but 0 or 1
 * never runs. */
TOKA_API TOKAFlightLoopID TOKACreateFlightLoop(TOKACreateFlightLoop_t* params);

/* Schedules one of the calling plugin's loops: interval > 0 seconds, < 0
 * cycles, 0 stops it. With relativeToNow non-zero the seconds count from now;
 * otherwise, and always for cycles, they count from the loop's last run (or
 * its creation). Reports "Attempt to schedule a flight loop callback owned by
 * another plugin." for another plugin's loop and changes nothing. An ID that
 * is no longer valid is ignored. */
TOKA_API void TOKAScheduleFlightLoop(TOKAFlightLoopID loop, float interval, int relativeToNow);

/* Destroys one of the calling plugin's loops; its ID is invalid afterwards.
 * Reports "Attempt to remove a flight loop callback owned by another
 * plugin." for another plugin's loop and changes nothing; an ID that is no
 * longer valid is ignored. A loop may destroy itself from its own callback:
 * it is not run again. */
TOKA_API void TOKADestroyFlightLoop(TOKAFlightLoopID loop);

/* Creates a phase-0 loop for the calling plugin and schedules it at once;
 * a positive interval first falls due that many seconds after this call. */
TOKA_API void TOKARegisterFlightLoopCallback(TOKAFlightLoop_f callback, float interval,
                                             void* refcon);

/* Removes the newest loop registered with this (callback, refcon) pair,
 * whichever plugin owns it; older loops with the same pair stay. */
TOKA_API void TOKAUnregisterFlightLoopCallback(TOKAFlightLoop_f callback, void* refcon);

/* Reschedules every loop registered with this (callback, refcon) pair,
 * whichever plugin owns it, as TOKAScheduleFlightLoop does. */
TOKA_API void TOKASetFlightLoopCallbackInterval(TOKAFlightLoop_f callback, float interval,
                                                int relativeToNow, void* refcon);

TOKA_END_DECLS

#endif
