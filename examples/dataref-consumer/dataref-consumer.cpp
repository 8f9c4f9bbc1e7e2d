// Dataref consumer: the partner of dataref-publisher. It is told of every
// beat the publisher writes into their shared item, and every two seconds a
// flight loop reads the publisher's uptime and the beat and logs them.
//
// What it shows a plugin author:
//   - finding another plugin's dataref, also when it is published late;
//   - subscribing to shared data with a notification callback;
//   - a flight loop of the newer interface (TOKACreateFlightLoop), in the
//     simulator's second processing phase.
#include <cstring>

#include "toka/TOKA.h"

namespace {

const char* const kUptimeName = "toka/examples/publisher/uptime";
const char* const kBeatName = "toka/examples/shared/beat";

TOKADataRef gUptime = nullptr;
TOKADataRef gBeat = nullptr;
TOKAFlightLoopID gLoop = nullptr;

// Called after every write of the shared item, by anyone.
void BeatChanged(void* refcon) {
  TOKA_dprintf("dataref-consumer: beat %d\n", TOKAGetDatai(gBeat));
}

float ReadAndLog(float sinceLastCall, float elapsedTime, int counter, void* refcon) {
  // A dataref that is not there yet gives a null handle: look it up again
  // later rather than giving up, since its publisher may be loaded after us
  // (with an aircraft, say).
  if (!gUptime) gUptime = TOKAFindDataRef(kUptimeName);
  if (!gUptime) {
    TOKADebugString("dataref-consumer: nobody publishes toka/examples/publisher/uptime\n");
    return 2.0f;
  }
  TOKA_dprintf("dataref-consumer: uptime %.1f s, beat %d\n", TOKAGetDataf(gUptime),
               TOKAGetDatai(gBeat));
  return 2.0f;  // seconds until the next call
}

}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  std::strcpy(outName, "Dataref consumer");
  std::strcpy(outSignature, "toka.examples.dataref-consumer");
  std::strcpy(outDescription, "Reads what dataref-publisher publishes and logs it.");
  return 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  // Every plugin has been started before any is enabled, so a dataref that
  // another plugin registers at start is found here.
  gUptime = TOKAFindDataRef(kUptimeName);

  // Sharing the name subscribes BeatChanged, and creates the item if the
  // publisher has not yet done so; either plugin may come first.
  TOKAShareData(kBeatName, DataTypeInt, BeatChanged, nullptr);
  gBeat = TOKAFindDataRef(kBeatName);

  // Phase 1 runs after every phase-0 loop of the same frame, so the
  // publisher's beat of this frame (phase 0) is already written when we read.
  TOKACreateFlightLoop_t params;
  params.structSize = sizeof params;
  params.phase = 1;
  params.callback = ReadAndLog;
  params.refcon = nullptr;
  gLoop = TOKACreateFlightLoop(&params);
  // A new loop does not run until it is scheduled. Relative to now: the
  // first call comes two seconds from here.
  TOKAScheduleFlightLoop(gLoop, 2.0f, 1);
  return 1;
}

// Undo what Enable did, so that the next enable starts afresh.
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {
  TOKADestroyFlightLoop(gLoop);
  gLoop = nullptr;
  TOKAUnshareData(kBeatName, DataTypeInt, BeatChanged, nullptr);
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {}
