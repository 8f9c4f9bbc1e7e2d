// What each plugin owns, kind by kind, and the moments of its life at which
// a validator looks: compiled into toka-validate's own copy of the library
// only (TOKA_VALIDATOR). In libtoka.so the notes below expand to nothing and
// the counting functions do not exist, so the library's exported interface
// and its per-frame paths are exactly what they are without them.
#ifndef TOKA_LOADER_INSPECT_H
#define TOKA_LOADER_INSPECT_H

#ifdef TOKA_VALIDATOR

// The kinds of things a plugin can own, in the order a report lists them.
enum TOKAInspectKind {
  kInspectWindows,
  kInspectDrawCallbacks,
  kInspectKeySniffers,
  kInspectHotKeys,
  kInspectFlightLoops,
  kInspectMenus,
  kInspectMenuItems,
  // The item of the Plugins menu that holds a plugin's top-level menu is the
  // library's to withdraw at unload: the plugin never learns its index.
  kInspectPluginsMenuItems,
  kInspectCommandHandlers,
  kInspectHeldCommands,
  kInspectDataRefs,
  kInspectSharedData,
  kInspectProbes,
  kInspectObjects,
  kInspectPendingLoads,
  kInspectCamera,
  kInspectPlanes,
  kInspectKindCount
};

// What still runs for a disabled plugin.
enum TOKARunningKind {
  kRunningFlightLoops,  // scheduled, though they are not called
  kRunningWindows,      // visible
  kRunningHotKeys,
  kRunningKeySniffers,
  kRunningKindCount
};

struct TOKAInspection {
  int owned[kInspectKindCount] = {};
  int running[kRunningKindCount] = {};
};

// "windows", "flight loops", ... as a report names them.
const char* TOKAInspectKindName(int kind);
const char* TOKARunningKindName(int kind);

// Counts everything the plugin owns now.
TOKAInspection TOKAInspectPlugin(int plugin);

// Each family counts its own records.
void TOKAInspectDisplay(int plugin, TOKAInspection& out);
void TOKAInspectFlightLoops(int plugin, TOKAInspection& out);
void TOKAInspectMenus(int plugin, TOKAInspection& out);
void TOKAInspectCommands(int plugin, TOKAInspection& out);
void TOKAInspectDataRefs(int plugin, TOKAInspection& out);
void TOKAInspectSharedData(int plugin, TOKAInspection& out);
void TOKAInspectScenery(int plugin, TOKAInspection& out);
void TOKAInspectCamera(int plugin, TOKAInspection& out);
void TOKAInspectPlanes(int plugin, TOKAInspection& out);

// Moments of a plugin's unloading at which the validator looks.
enum TOKAInspectMoment {
  kMomentStopped,    // its stop entry has returned (or it has none); nothing withdrawn yet
  kMomentStopThrew,  // its stop entry threw; the library swallows that
  kMomentCleaned,    // the library has withdrawn everything it owned
};
typedef void (*TOKAInspectObserver_f)(int moment, int plugin);
void TOKASetInspectObserver(TOKAInspectObserver_f observer);
void TOKANoteInspectMoment(int moment, int plugin);

// The start entry's three buffers get a guard zone beyond the size the
// plugin is promised; the validator is told whether the plugin wrote there.
enum { kStartGuardSize = 64 };
void TOKAFillStartGuards(char* name, char* signature, char* description);
typedef void (*TOKAStartObserver_f)(const char* name, const char* signature,
                                    const char* description, int overran);
void TOKASetStartObserver(TOKAStartObserver_f observer);
void TOKANoteStartTexts(const char* name, const char* signature, const char* description);

#define TOKA_INSPECT_MOMENT(moment, plugin) TOKANoteInspectMoment(moment, plugin)
#define TOKA_START_GUARD kStartGuardSize
#define TOKA_INSPECT_BEFORE_START(n, s, d) TOKAFillStartGuards(n, s, d)
#define TOKA_INSPECT_AFTER_START(n, s, d) TOKANoteStartTexts(n, s, d)

#else

#define TOKA_INSPECT_MOMENT(moment, plugin) ((void)0)
#define TOKA_START_GUARD 0
#define TOKA_INSPECT_BEFORE_START(n, s, d) ((void)0)
#define TOKA_INSPECT_AFTER_START(n, s, d) ((void)0)

#endif

#endif
