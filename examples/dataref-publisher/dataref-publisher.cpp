// Dataref publisher: publishes a value of its own as a dataref, and beats a
// counter once a second into an item of shared data. Its partner,
// dataref-consumer, reads both.
//
// What it shows a plugin author:
//   - publishing a dataref with accessors (TOKARegisterDataAccessor): the
//     library keeps no value, every read calls the owner's accessor;
//   - writing shared data (TOKAShareData): a value that belongs to no
//     plugin, read and written through the ordinary dataref calls;
//   - a flight loop of the older interface (TOKARegisterFlightLoopCallback).
#include <cstring>

#include "toka/TOKA.h"

namespace {

// Dataref names are shared by everyone: prefix them with something that is
// yours. Both plugins agree on these two names.
const char* const kUptimeName = "toka/examples/publisher/uptime";
const char* const kBeatName = "toka/examples/shared/beat";

TOKADataRef gUptime = nullptr;
TOKADataRef gBeat = nullptr;
float gEnabledAt = 0;
int gBeats = 0;

// Read accessor of the published dataref: seconds of simulator time since
// this plugin was last enabled. It runs as this plugin, whoever reads.
float ReadUptime(void* refcon) { return TOKAGetElapsedTime() - gEnabledAt; }

// Once a second: the next beat. Every write of a shared item notifies all
// its subscribers, the writer's own included.
float Beat(float sinceLastCall, float elapsedTime, int counter, void* refcon) {
  TOKASetDatai(gBeat, ++gBeats);
  return 1.0f;
}

}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* outName, char* outSignature, char* outDescription) {
  std::strcpy(outName, "Dataref publisher");
  std::strcpy(outSignature, "toka.examples.dataref-publisher");
  std::strcpy(outDescription, "Publishes its uptime and a shared beat for dataref-consumer.");

  // Register datarefs at start, so that every plugin can find them when it
  // is enabled. Only the float read accessor is given: the dataref serves
  // floats only, and with writable 0 nobody can set it.
  gUptime = TOKARegisterDataAccessor(kUptimeName, DataTypeFloat, 0, nullptr, nullptr, ReadUptime,
                                     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     nullptr, nullptr, nullptr, nullptr, nullptr);
  return 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  gEnabledAt = TOKAGetElapsedTime();
  // The first plugin to share a name creates the item, and its storage
  // starts out uncleared; writing it at once gives readers a defined value
  // whichever of the two plugins came first. No callback: the publisher
  // does not need to hear of the writes.
  TOKAShareData(kBeatName, DataTypeInt, nullptr, nullptr);
  gBeat = TOKAFindDataRef(kBeatName);
  gBeats = 0;
  TOKASetDatai(gBeat, gBeats);
  TOKARegisterFlightLoopCallback(Beat, 1.0f, nullptr);
  TOKADebugString("dataref-publisher: publishing toka/examples/publisher/uptime\n");
  return 1;
}

// A disabled plugin's flight loops and accessors are not called; remove the
// loop all the same, so that enabling again does not register a second one.
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {
  TOKAUnregisterFlightLoopCallback(Beat, nullptr);
}

// Withdrawing the accessors leaves other plugins' handles safe to use: their
// reads give 0 until someone registers the name again.
TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {
  TOKAUnregisterDataAccessor(gUptime);
  gUptime = nullptr;
}

TOKA_PLUGIN_EXPORT void OrvanePluginReceiveMessage(TOKAPluginID from, int message, void* param) {}
