// What each plugin owns, kind by kind, the moments of its life at which
// toka-validate looks, and the checks of the handles plugins pass. Compiled
// into toka-validate's own copy of the library only (TOKA_VALIDATOR): in
// libtoka.so the notes below expand to nothing and the counting functions do
// not exist, so its exported functions and per-frame paths stay as they are.
#ifndef TOKA_LOADER_SURVEY_H
#define TOKA_LOADER_SURVEY_H

#ifdef TOKA_VALIDATOR

#include <vector>

// The kinds of things a plugin can own, in the order a report lists them.
enum TOKASurveyKind {
  kSurveyWindows,
  kSurveyDrawCallbacks,
  kSurveyKeySniffers,
  kSurveyHotKeys,
  kSurveyFlightLoops,
  kSurveyMenus,
  kSurveyMenuItems,
  // TOKACreateMenu without a parent adds an item to the Plugins menu whose
  // index the plugin never learns, so menus/menus.cpp removes it at unload.
  // Nothing there tells that item from ones the plugin appended itself, so
  // Plugins-menu items are not counted against a plugin at unload; one left
  // after menus.cpp's clean-up is a fault of menus.cpp.
  kSurveyPluginsMenuItems,
  kSurveyCommandHandlers,
  kSurveyHeldCommands,
  kSurveyDataRefs,
  kSurveySharedData,
  kSurveyProbes,
  kSurveyObjects,
  kSurveyPendingLoads,
  kSurveyCamera,
  kSurveyPlanes,
  kSurveyKindCount
};

// What still runs for a disabled plugin.
enum TOKARunningKind {
  kRunningFlightLoops,  // scheduled, though they are not called
  kRunningWindows,      // visible
  kRunningHotKeys,
  kRunningKeySniffers,
  kRunningKindCount
};

struct TOKASurvey {
  int owned[kSurveyKindCount] = {};
  int running[kRunningKindCount] = {};
};

// "windows", "flight loops", ... as a report names them.
const char* TOKASurveyKindName(int kind);
const char* TOKARunningKindName(int kind);

// Counts everything the plugin owns now.
TOKASurvey TOKASurveyPlugin(int plugin);

// The commands the plugin handles, in the order the library keeps them.
std::vector<void*> TOKAPluginCommands(int plugin);

// Counting is done where the records live (processing/, menus/, utilities/
// for commands, data/, world/ for scenery, camera and planes), but for the
// display's, which survey.cpp counts through display/display.h.
void TOKASurveyDisplay(int plugin, TOKASurvey& out);
void TOKASurveyFlightLoops(int plugin, TOKASurvey& out);
void TOKASurveyMenus(int plugin, TOKASurvey& out);
void TOKASurveyCommands(int plugin, TOKASurvey& out);
void TOKASurveyDataRefs(int plugin, TOKASurvey& out);
void TOKASurveySharedData(int plugin, TOKASurvey& out);
void TOKASurveyScenery(int plugin, TOKASurvey& out);
void TOKASurveyCamera(int plugin, TOKASurvey& out);
void TOKASurveyPlanes(int plugin, TOKASurvey& out);

// Moments of a plugin's unloading at which the validator looks.
enum TOKASurveyMoment {
  kMomentStopped,    // its stop entry has returned (or it has none); nothing withdrawn yet
  kMomentStopThrew,  // its stop entry threw; the library swallows that
  kMomentCleaned,    // the library has withdrawn everything it owned
};
typedef void (*TOKASurveyObserver_f)(int moment, int plugin);
void TOKASetSurveyObserver(TOKASurveyObserver_f observer);
void TOKANoteSurveyMoment(int moment, int plugin);

// The start entry's three buffers get a guard zone beyond their 256 bytes;
// the validator is told whether the plugin wrote there.
enum { kStartGuardSize = 64 };
void TOKAFillStartGuards(char* name, char* signature, char* description);
typedef void (*TOKAStartObserver_f)(const char* name, const char* signature,
                                    const char* description, int overran);
void TOKASetStartObserver(TOKAStartObserver_f observer);
void TOKANoteStartTexts(const char* name, const char* signature, const char* description);

// Handles: every handle a plugin gives the library is checked against the
// live records of its kind before the call goes on as it always does. What
// is wrong with it (null where that is not allowed, stale, of another kind,
// never issued) is reported to the observer, naming the calling plugin and
// the function; the host's own calls are not checked.
enum TOKAHandleKind {
  kHandleDataRef,
  kHandleFlightLoop,
  kHandleWindow,
  kHandleHotKey,
  kHandleMenu,
  kHandleCommand,
  kHandleProbe,
  kHandleObject,
  kHandleKindCount
};
typedef void (*TOKAHandleObserver_f)(int plugin, const char* function, const char* problem);
void TOKASetHandleObserver(TOKAHandleObserver_f observer);
void TOKACheckHandle(int kind, const void* handle, const char* function, bool nullAllowed);
// Shared data is named rather than handed out: the name must be there.
void TOKACheckSharedDataName(const char* name, const char* function);
// A handle given out to the calling plugin, so that it can be told stale
// later; a dataref the calling plugin stops serving.
void TOKANoteIssuedHandle(int kind, const void* handle);
void TOKANoteRetiredDataRef(const void* handle);
// When a handle was first given out, counted over every kind: 0 for one
// never given out. Handles sort by it the same way in every run, whatever
// their addresses.
long long TOKAIssueOrder(const void* handle);

// Whether a handle is a live record, asked of the source file that keeps
// records of that kind.
bool TOKAIsLiveDataRef(const void* handle);
bool TOKAIsLiveFlightLoop(const void* handle);
bool TOKAIsLiveWindow(const void* handle);
bool TOKAIsLiveHotKey(const void* handle);
bool TOKAIsLiveMenu(const void* handle);
bool TOKAIsLiveCommand(const void* handle);
bool TOKAIsLiveProbe(const void* handle);
bool TOKAIsLiveObject(const void* handle);

// Cost: each plugin's calls of the library's exported functions, and the
// time spent while it is the dispatched plugin (in its code, and in the
// library on its behalf), since the library was loaded.
struct TOKACost {
  long long calls = 0;
  double seconds = 0;
};
void TOKANoteCall();
// The dispatched plugin changes: the time since the last change was from's.
void TOKANoteDispatchSwitch(int from);
TOKACost TOKAPluginCost(int plugin);

#define TOKA_NOTE_CALL() TOKANoteCall()
#define TOKA_NOTE_DISPATCH_SWITCH(from) TOKANoteDispatchSwitch(from)
#define TOKA_CHECK_HANDLE(kind, handle) TOKACheckHandle(kind, handle, __func__, false)
#define TOKA_CHECK_HANDLE_OR_NULL(kind, handle) TOKACheckHandle(kind, handle, __func__, true)
#define TOKA_CHECK_SHARED_DATA_NAME(name) TOKACheckSharedDataName(name, __func__)
#define TOKA_NOTE_ISSUED(kind, handle) TOKANoteIssuedHandle(kind, handle)
#define TOKA_NOTE_RETIRED_DATAREF(handle) TOKANoteRetiredDataRef(handle)
#define TOKA_SURVEY_MOMENT(moment, plugin) TOKANoteSurveyMoment(moment, plugin)
#define TOKA_START_GUARD kStartGuardSize
#define TOKA_SURVEY_BEFORE_START(n, s, d) TOKAFillStartGuards(n, s, d)
#define TOKA_SURVEY_AFTER_START(n, s, d) TOKANoteStartTexts(n, s, d)

#else

#define TOKA_NOTE_CALL() ((void)0)
#define TOKA_NOTE_DISPATCH_SWITCH(from) ((void)0)
#define TOKA_CHECK_HANDLE(kind, handle) ((void)0)
#define TOKA_CHECK_HANDLE_OR_NULL(kind, handle) ((void)0)
#define TOKA_CHECK_SHARED_DATA_NAME(name) ((void)0)
#define TOKA_NOTE_ISSUED(kind, handle) ((void)0)
#define TOKA_NOTE_RETIRED_DATAREF(handle) ((void)0)
#define TOKA_SURVEY_MOMENT(moment, plugin) ((void)0)
#define TOKA_START_GUARD 0
#define TOKA_SURVEY_BEFORE_START(n, s, d) ((void)0)
#define TOKA_SURVEY_AFTER_START(n, s, d) ((void)0)

#endif

#endif
