// Commands: handler dispatch through the simulator's command hook, held
// commands, buttons, and the "sim/" naming rule.
#include "harness/harness.h"

using namespace toka_test;

namespace {

std::vector<std::string> gRuns;

// What one registered handler does; its address is the refcon.
struct Handler {
  explicit Handler(const char* handlerName) : name(handlerName) {}
  const char* name;
  int result = 1;
  std::function<void()> action;
};

// Records "name:phase@dispatched plugin", does the handler's action and
// returns its result.
int RunHandler(TOKACommandRef, int phase, void* refcon) {
  Handler* handler = static_cast<Handler*>(refcon);
  gRuns.push_back(std::string(handler->name) + ":" + std::to_string(phase) + "@" +
                  std::to_string(TOKAGetMyID()));
  if (handler->action) handler->action();
  return handler->result;
}

void Register(TOKACommandRef command, Handler& handler, int before) {
  TOKARegisterCommandHandler(command, RunHandler, before, &handler);
}
void Unregister(TOKACommandRef command, Handler& handler, int before) {
  TOKAUnregisterCommandHandler(command, RunHandler, before, &handler);
}

TOKACommandRef const kCommand = (TOKACommandRef)0x5000;

class Commands : public TokaTest {
protected:
  void SetUp() override {
    gRuns.clear();
    AddScripted("a.orv", "alpha");
    AddScriptedFolder("b", "beta");
    Initialize();
  }
  std::vector<std::string> Runs() {
    std::vector<std::string> runs;
    runs.swap(gRuns);
    return runs;
  }
  std::vector<void*> CommandsTo(int slot) {
    std::vector<void*> commands;
    for (const HostCall& call : host.CallsTo(slot)) commands.push_back(call.arg<void*>(0));
    return commands;
  }
};

TEST_F(Commands, HandlersRunBeforeNewestFirstAfterOldestFirstUntilOneStops) {
  Handler a1("a1"), a2("a2"), b1("b1"), a3("a3"), a4("a4"), b2("b2");
  RunAs(1, [&] { Register(kCommand, a1, 1); Register(kCommand, a3, 0); });
  RunAs(2, [&] { Register(kCommand, b1, 1); Register(kCommand, b2, 0); });
  RunAs(1, [&] { Register(kCommand, a2, 1); Register(kCommand, a4, 0); });

  EXPECT_EQ(1, TOKACommandHook(kCommand, 1, 0, 1));
  EXPECT_EQ((std::vector<std::string>{"a2:0@1", "b1:0@2", "a1:0@1"}), Runs());
  EXPECT_EQ(1, TOKACommandHook(kCommand, 0, 0, 0));
  EXPECT_EQ((std::vector<std::string>{"a3:1@1", "b2:1@2", "a4:1@1"}), Runs());
  EXPECT_EQ(0, TOKAGetMyID());

  // Begin and end in one report is an end; a 0 result stops the list.
  b1.result = 0;
  EXPECT_EQ(0, TOKACommandHook(kCommand, 1, 1, 1));
  EXPECT_EQ((std::vector<std::string>{"a2:2@1", "b1:2@2"}), Runs());

  // A disabled plugin's handlers are passed over, so nothing stops.
  TOKADisablePlugin(2);
  EXPECT_EQ(1, TOKACommandHook(kCommand, 0, 1, 1));
  EXPECT_EQ((std::vector<std::string>{"a2:2@1", "a1:2@1"}), Runs());

  EXPECT_EQ(1, TOKACommandHook((TOKACommandRef)0x6000, 1, 0, 1));
  EXPECT_TRUE(Runs().empty());
}

TEST_F(Commands, UnregisteringRemovesOneRegistrationOfTheCallerOnly) {
  Handler a("a"), other("other");
  RunAs(1, [&] {
    Register(kCommand, a, 0);
    Register(kCommand, a, 0);
    Unregister(kCommand, other, 0);  // another refcon
    Unregister(kCommand, a, 1);      // the other list
  });
  RunAs(2, [&] { Unregister(kCommand, a, 0); });  // another plugin
  TOKACommandHook(kCommand, 1, 0, 0);
  EXPECT_EQ((std::vector<std::string>{"a:0@1", "a:0@1"}), Runs());

  RunAs(1, [&] { Unregister(kCommand, a, 0); });
  TOKACommandHook(kCommand, 1, 0, 0);
  EXPECT_EQ((std::vector<std::string>{"a:0@1"}), Runs());
  RunAs(1, [&] { Unregister(kCommand, a, 0); });
  EXPECT_EQ(1, TOKACommandHook(kCommand, 1, 0, 0));
  EXPECT_TRUE(Runs().empty());
}

TEST_F(Commands, HandlersMayRegisterAndUnregisterHandlersOfTheCommandTheyRun) {
  Handler x("x"), y("y"), w("w"), z("z");
  // Before-list: x, y, w. x removes itself and y, then registers z in
  // front; z, new to the list, waits for the next dispatch.
  x.action = [&] {
    Unregister(kCommand, x, 1);
    Unregister(kCommand, y, 1);
    Register(kCommand, z, 1);
  };
  RunAs(1, [&] { Register(kCommand, w, 1); Register(kCommand, y, 1); Register(kCommand, x, 1); });

  EXPECT_EQ(1, TOKACommandHook(kCommand, 1, 0, 1));
  EXPECT_EQ((std::vector<std::string>{"x:0@1", "w:0@1"}), Runs());

  // z stops the next dispatch after removing w, which was still due.
  z.result = 0;
  z.action = [&] { Unregister(kCommand, w, 1); };
  EXPECT_EQ(0, TOKACommandHook(kCommand, 0, 0, 1));
  EXPECT_EQ((std::vector<std::string>{"z:1@1"}), Runs());
  z.result = 1;
  z.action = nullptr;
  EXPECT_EQ(1, TOKACommandHook(kCommand, 0, 1, 1));
  EXPECT_EQ((std::vector<std::string>{"z:2@1"}), Runs());
}

TEST_F(Commands, SimPrefixedNamesWarnButAreCreated) {
  // Each report, with the number of log writes made before it.
  static std::vector<std::string> errors;
  host.onCall[55] = [](const HostCall& call) -> intptr_t { return 0x7000 + call.arg<int>(2); };
  host.ClearRecords();
  std::vector<TOKACommandRef> made;
  RunAs(1, [&] {
    TOKASetErrorCallback([](const char* text) {
      errors.push_back(text + (" after " + std::to_string(FakeHost::Get().CountCalls(29))));
    });
    for (const char* name : {"sim/foo", "Sim/foo", "sim", "simx/foo"})
      made.push_back(TOKACreateCommand(name, "does foo"));
    made.push_back(TOKAFindCommand("sim/foo"));
  });
  EXPECT_EQ((std::vector<std::string>{
                "Plugin is illegally registering a command with the prefix sim/ after 0"}),
            errors);
  EXPECT_EQ("[alpha]: It is illegal to register a command starting with sim/\n", host.log);
  auto creates = host.CallsTo(55);
  ASSERT_EQ(5u, creates.size());
  EXPECT_EQ((std::vector<std::string>{"sim/foo", "does foo"}), creates[0].strings);
  EXPECT_EQ(0u, creates[4].words[1]);  // a lookup passes no description
  auto created = (TOKACommandRef)0x7001, found = (TOKACommandRef)0x7000;
  EXPECT_EQ((std::vector<TOKACommandRef>{created, created, created, created, found}), made);
}

TEST_F(Commands, HeldCommandsRepeatWhileEnabledAndEndWhenThePluginGoes) {
  void *c1 = (void*)0x100, *c2 = (void*)0x200, *c3 = (void*)0x300;
  RunAs(1, [&] {
    TOKACommandBegin(c2);
    TOKACommandBegin(c1);
    TOKACommandBegin(c2);
  });
  RunAs(2, [&] {
    TOKACommandBegin(c3);
    TOKACommandOnce(c1);
  });
  EXPECT_EQ((std::vector<void*>{c2, c1, c2, c3, c1}), CommandsTo(56));
  EXPECT_EQ((std::vector<void*>{c1}), CommandsTo(58));

  host.ClearRecords();
  EXPECT_EQ(1, TOKAEventHook(9, 0, 0, 0));
  EXPECT_EQ((std::vector<void*>{c1, c2, c3}), CommandsTo(57));

  // Disabling pauses the repeat; the commands stay held.
  TOKADisablePlugin(1);
  host.ClearRecords();
  TOKAEventHook(9, 0, 0, 0);
  EXPECT_EQ((std::vector<void*>{c3}), CommandsTo(57));
  TOKAEnablePlugin(1);
  RunAs(1, [&] { TOKACommandEnd(c1); });
  host.ClearRecords();
  TOKAEventHook(9, 0, 0, 0);
  EXPECT_EQ((std::vector<void*>{c2, c3}), CommandsTo(57));

  // Unloading ends the held commands and drops the handlers, even though
  // the plugins loaded next get the same IDs.
  Handler a("a");
  RunAs(1, [&] { Register(c1, a, 1); });
  host.ClearRecords();
  TOKAShutdownPlugins();
  EXPECT_EQ((std::vector<void*>{c2, c3}), CommandsTo(58));
  Initialize();
  ASSERT_EQ(1, TOKAIsPluginEnabled(1));
  host.ClearRecords();
  TOKAEventHook(9, 0, 0, 0);
  EXPECT_EQ(0u, host.CountCalls(57));
  EXPECT_EQ(1, TOKACommandHook(c1, 1, 0, 1));
  EXPECT_TRUE(Runs().empty());
}

TEST_F(Commands, HeldButtonsRepeatInOneCallOnEachProcessingPass) {
  std::vector<std::string> sent;
  host.onCall[24] = [&sent](const HostCall& call) -> intptr_t {
    std::string codes;
    for (const int* code = call.arg<int*>(0); *code; ++code)
      codes += (codes.empty() ? "" : ",") + std::to_string(*code);
    sent.push_back(std::to_string(call.arg<int>(1)) + "/" + std::to_string(call.arg<int>(2)) +
                   ":" + codes);
    return 0;
  };
  TOKACommandButtonPress(5);
  TOKACommandButtonPress(7);
  TOKACommandButtonPress(5);
  TOKACommandButtonRelease(5);
  TOKACommandButtonRelease(9);  // never pressed: still sent
  EXPECT_EQ((std::vector<std::string>{"0/0:5", "0/1:5", "0/0:7", "0/1:7", "0/0:5", "0/1:5",
                                      "1/0:5", "1/1:5", "1/0:9", "1/1:9"}),
            sent);

  sent.clear();
  TOKAEventHook(0, 1.0f, 0, 0);
  EXPECT_EQ((std::vector<std::string>{"0/1:7,5"}), sent);

  TOKACommandButtonRelease(7);
  TOKACommandButtonRelease(5);
  sent.clear();
  TOKAEventHook(0, 1.0f, 0, 0);
  EXPECT_TRUE(sent.empty());
}

}  // namespace
