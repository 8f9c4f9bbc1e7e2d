// Commands: creation and triggering forwarded to the host, the plugins'
// command handlers, commands held down by plugins, and the older button
// interface.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <list>
#include <map>
#include <set>
#include <vector>

#include "loader/enabling.h"
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "loader/plugin_records.h"
#include "loader/subsystems.h"
#include "toka/TOKACommands.h"
#include "toka/TOKAPlugins.h"

// One registered command handler.
struct TOKACommandCB_t {
  TOKACommandCallback_f callback;
  int plugin;
  void* refcon;

  bool operator==(const TOKACommandCB_t& other) const {
    return callback == other.callback && plugin == other.plugin && refcon == other.refcon;
  }
};

typedef std::list<TOKACommandCB_t> TOKACommandCBList;
typedef std::map<TOKACommandRef, TOKACommandCBList> TOKACommandHookMap;

// Handlers run before and after the host's own handling of a command. An
// entry, once made for a command, stays even when its list empties.
static TOKACommandHookMap gPreHooks;
static TOKACommandHookMap gPostHooks;
// Commands each plugin has begun and not yet ended.
static std::map<int, std::set<TOKACommandRef>> gCommandMap;
// Buttons held down, in press order; a code may be held more than once.
static std::vector<int> gButtons;

// A handler may unregister handlers of the command being dispatched, itself
// included. While any dispatch runs, unregistered records are moved here
// rather than freed, so that the dispatch can still tell them apart from the
// records that are registered, and their nodes cannot be reused for new
// registrations made in the meantime.
static int gDispatchDepth = 0;
static TOKACommandCBList gRetiredHandlers;

class StCommandDispatch {
public:
  StCommandDispatch() { ++gDispatchDepth; }
  ~StCommandDispatch() {
    if (--gDispatchDepth == 0) gRetiredHandlers.clear();
  }
  StCommandDispatch(const StCommandDispatch&) = delete;
  StCommandDispatch& operator=(const StCommandDispatch&) = delete;
};

static void EraseHandler(TOKACommandCBList& list, TOKACommandCBList::iterator record) {
  if (gDispatchDepth > 0)
    gRetiredHandlers.splice(gRetiredHandlers.end(), list, record);
  else
    list.erase(record);
}

static bool IsRegistered(const TOKACommandCBList& list, const TOKACommandCB_t* record) {
  for (const TOKACommandCB_t& registered : list)
    if (&registered == record) return true;
  return false;
}

static TOKACommandHookMap& HooksFor(int before) {
  return before ? gPreHooks : gPostHooks;
}

TOKA_API TOKACommandRef TOKACreateCommand(const char* name, const char* description) {
  TOKA_NOTE_CALL();
  if (!name) {
    TOKASendError("Null command name passed to TOKACreateCommand.");
    return nullptr;
  }
  // "sim/" names are the simulator's own. Plugins have long shipped such
  // commands, so the author is warned and the command is created anyway.
  if (std::strncmp(name, "sim/", 4) == 0) {
    TOKASendError("Plugin is illegally registering a command with the prefix sim/");
    TOKALogPluginWarning("It is illegal to register a command starting with sim/");
  }
  TOKACommandRef command = gHostServices->CreateCommand(name, description, 1);
  TOKA_NOTE_ISSUED(kHandleCommand, command);
  return command;
}

TOKA_API TOKACommandRef TOKAFindCommand(const char* name) {
  TOKA_NOTE_CALL();
  // No name names no command; the simulator is not asked.
  if (!name) return nullptr;
  TOKACommandRef command = gHostServices->CreateCommand(name, nullptr, 0);
  TOKA_NOTE_ISSUED(kHandleCommand, command);
  return command;
}

TOKA_API void TOKACommandBegin(TOKACommandRef command) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleCommand, command);
  gCommandMap[TOKAGetDispatchedPlugin()].insert(command);
  gHostServices->CommandBegin(command);
}

TOKA_API void TOKACommandEnd(TOKACommandRef command) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleCommand, command);
  gHostServices->CommandEnd(command);
  gCommandMap[TOKAGetDispatchedPlugin()].erase(command);
}

TOKA_API void TOKACommandOnce(TOKACommandRef command) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleCommand, command);
  gHostServices->CommandBegin(command);
  gHostServices->CommandEnd(command);
}

TOKA_API void TOKARegisterCommandHandler(TOKACommandRef command, TOKACommandCallback_f handler,
                                         int before, void* refcon) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleCommand, command);
  // Before-handlers go to the front and after-handlers to the back: the
  // newest before-handler sees the command first and the oldest
  // after-handler sees it first, and plugins rely on both.
  TOKACommandCB_t record = {handler, TOKAGetDispatchedPlugin(), refcon};
  TOKACommandCBList& list = HooksFor(before)[command];
  if (before)
    list.push_front(record);
  else
    list.push_back(record);
}

TOKA_API void TOKAUnregisterCommandHandler(TOKACommandRef command,
                                           TOKACommandCallback_f handler, int before,
                                           void* refcon) {
  TOKA_NOTE_CALL();
  TOKA_CHECK_HANDLE(kHandleCommand, command);
  TOKACommandCB_t record = {handler, TOKAGetDispatchedPlugin(), refcon};
  TOKACommandCBList& list = HooksFor(before)[command];
  auto found = std::find(list.begin(), list.end(), record);
  if (found != list.end()) EraseHandler(list, found);
}

TOKA_API void TOKACommandKeyStroke(int keyCommand) {
  TOKA_NOTE_CALL();
  gHostServices->CommandKeyStroke(keyCommand);
}

// The host takes a 0-terminated list of codes, in two stages.
static void SendButton(int button, int up) {
  int codes[2] = {button, 0};
  gHostServices->CommandButton(codes, up, 0);
  gHostServices->CommandButton(codes, up, 1);
}

TOKA_API void TOKACommandButtonPress(int button) {
  TOKA_NOTE_CALL();
  SendButton(button, 0);
  gButtons.push_back(button);
}

TOKA_API void TOKACommandButtonRelease(int button) {
  TOKA_NOTE_CALL();
  SendButton(button, 1);
  auto found = std::find(gButtons.begin(), gButtons.end(), button);
  if (found != gButtons.end()) gButtons.erase(found);
}

void TOKADoRepeatedButtons() {
  if (gButtons.empty()) return;
  // All held buttons go in one call, ended by 0 (so code 0 cannot be held).
  // The host reads a copy: it may press or release buttons while it works.
  std::vector<int> codes = gButtons;
  codes.push_back(0);
  gHostServices->CommandButton(codes.data(), 0, 1);
}

int TOKADispatchCommandHook(TOKACommandRef command, int isBegin, int isEnd, int isBefore) {
  TOKACommandHookMap& hooks = HooksFor(isBefore);
  auto entry = hooks.find(command);
  if (entry == hooks.end()) return 1;

  int phase = TOKA_COMMAND_CONTINUE;
  if (isBegin) phase = TOKA_COMMAND_BEGIN;
  if (isEnd) phase = TOKA_COMMAND_END;  // a press and release in one report ends it

  // The handlers registered when the dispatch starts run in list order;
  // one unregistered by an earlier handler is skipped, and one registered
  // meanwhile waits for the next dispatch.
  TOKACommandCBList& list = entry->second;
  StCommandDispatch dispatching;
  std::vector<const TOKACommandCB_t*> snapshot;
  for (const TOKACommandCB_t& record : list) snapshot.push_back(&record);
  for (const TOKACommandCB_t* record : snapshot) {
    if (!IsRegistered(list, record)) continue;
    StDispatchCallback context(record->plugin);
    if (!context()) continue;
    if (record->callback(command, phase, record->refcon) == 0) return 0;
  }
  return 1;
}

// Sends continue for the held commands of one plugin. The host may run
// command handlers inside each call, and they may begin or end commands, so
// the walk finds its place again after every call.
static void RepeatHeldCommands(int plugin) {
  auto entry = gCommandMap.find(plugin);
  if (entry == gCommandMap.end()) return;
  auto held = entry->second.begin();
  while (held != entry->second.end()) {
    TOKACommandRef command = *held;
    gHostServices->CommandContinue(command);
    entry = gCommandMap.find(plugin);
    if (entry == gCommandMap.end()) return;
    held = entry->second.upper_bound(command);
  }
}

void TOKACommandRepeatHook() {
  // A disabled plugin's commands stay held but are not repeated.
  auto entry = gCommandMap.begin();
  while (entry != gCommandMap.end()) {
    const int plugin = entry->first;
    if (TOKAIsPluginEnabled(plugin)) RepeatHeldCommands(plugin);
    entry = gCommandMap.upper_bound(plugin);
  }
}

static void DropHandlers(TOKACommandHookMap& hooks, int plugin) {
  for (auto& entry : hooks) {
    TOKACommandCBList& list = entry.second;
    for (auto record = list.begin(); record != list.end();) {
      auto next = std::next(record);
      if (record->plugin == plugin) EraseHandler(list, record);
      record = next;
    }
  }
}

void TOKACommandCleanupHook(int plugin) {
  // Commands a plugin still holds are released for it; its copy of the set
  // is walked, since the host may run handlers inside each end call.
  const std::set<TOKACommandRef> held = gCommandMap[plugin];
  for (TOKACommandRef command : held) gHostServices->CommandEnd(command);
  gCommandMap.erase(plugin);
  DropHandlers(gPreHooks, plugin);
  DropHandlers(gPostHooks, plugin);
}

#ifdef TOKA_VALIDATOR
std::vector<void*> TOKAPluginCommands(int plugin) {
  std::vector<void*> commands;
  for (const TOKACommandHookMap* hooks : {&gPreHooks, &gPostHooks})
    for (const auto& entry : *hooks)
      for (const TOKACommandCB_t& handler : entry.second)
        if (handler.plugin == plugin &&
            std::find(commands.begin(), commands.end(), entry.first) == commands.end())
          commands.push_back(entry.first);
  std::sort(commands.begin(), commands.end(), [](void* a, void* b) {
    return TOKAIssueOrder(a) < TOKAIssueOrder(b);
  });
  return commands;
}

void TOKASurveyCommands(int plugin, TOKASurvey& out) {
  for (const TOKACommandHookMap* hooks : {&gPreHooks, &gPostHooks})
    for (const auto& entry : *hooks)
      for (const TOKACommandCB_t& handler : entry.second)
        if (handler.plugin == plugin) ++out.owned[kSurveyCommandHandlers];
  auto held = gCommandMap.find(plugin);
  if (held != gCommandMap.end()) out.owned[kSurveyHeldCommands] += (int)held->second.size();
}
#endif
