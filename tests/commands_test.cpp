// Commands: handler dispatch through the simulator's command hook, held
// commands, buttons, and the "sim/" naming rule.
#include "harness/harness.h"

using namespace toka_test;

namespace {

// Handlers log "name:phase"; their refcon is a ScriptedCallback.
int RunHandler(TOKACommandRef, int phase, void* refcon) {
  return static_cast<ScriptedCallback*>(refcon)->Run(":" + std::to_string(phase));
}

TOKACommandRef const kCommand = (TOKACommandRef)0x5000;

void Register(ScriptedCallback& handler, int before, TOKACommandRef command = kCommand) {
  TOKARegisterCommandHandler(command, RunHandler, before, &handler);
}
void Unregister(ScriptedCallback& handler, int before) {
  TOKAUnregisterCommandHandler(kCommand, RunHandler, before, &handler);
}

class Commands : public TokaTest {
protected:
  void SetUp() override { StartTwo(); }
  // The hook's result, then the handlers it ran.
  Lines Dispatch(int isBegin, int isEnd, int isBefore, int expected,
                 TOKACommandRef command = kCommand) {
    return During([=] { EXPECT_EQ(expected, TOKACommandHook(command, isBegin, isEnd, isBefore)); });
  }
  std::vector<void*> CommandsTo(int slot) {
    std::vector<void*> commands;
    for (const HostCall& call : host.CallsTo(slot)) commands.push_back(call.arg<void*>(0));
    return commands;
  }
};

TEST_F(Commands, HandlersRunBeforeNewestFirstAfterOldestFirstUntilOneStops) {
  ScriptedCallback a1("a1"), a2("a2"), b1("b1"), a3("a3"), a4("a4"), b2("b2");
  RunAs(1, [&] { Register(a1, 1); Register(a3, 0); });
  RunAs(2, [&] { Register(b1, 1); Register(b2, 0); });
  RunAs(1, [&] { Register(a2, 1); Register(a4, 0); });

  EXPECT_EQ((Lines{"a2:0@1", "b1:0@2", "a1:0@1"}), Dispatch(1, 0, 1, 1));
  EXPECT_EQ((Lines{"a3:1@1", "b2:1@2", "a4:1@1"}), Dispatch(0, 0, 0, 1));
  EXPECT_EQ(0, TOKAGetMyID());
  // Begin and end in one report is an end; a 0 result stops the list.
  b1.result = 0;
  EXPECT_EQ((Lines{"a2:2@1", "b1:2@2"}), Dispatch(1, 1, 1, 0));
  // A disabled plugin's handlers are passed over, so nothing stops.
  TOKADisablePlugin(2);
  EXPECT_EQ((Lines{"beta.disable@2"}), TakeEvents());
  EXPECT_EQ((Lines{"a2:2@1", "a1:2@1"}), Dispatch(0, 1, 1, 1));
  EXPECT_EQ(Lines{}, Dispatch(1, 0, 1, 1, (TOKACommandRef)0x6000));
}

TEST_F(Commands, UnregisteringRemovesOneRegistrationOfTheCallerOnlyEvenWhileDispatching) {
  ScriptedCallback a("a"), other("other");
  RunAs(1, [&] {
    Register(a, 0);
    Register(a, 0);
    Unregister(other, 0);  // another refcon
    Unregister(a, 1);      // the other list
  });
  RunAs(2, [&] { Unregister(a, 0); });  // another plugin
  EXPECT_EQ((Lines{"a:0@1", "a:0@1"}), Dispatch(1, 0, 0, 1));
  RunAs(1, [&] { Unregister(a, 0); });
  EXPECT_EQ((Lines{"a:0@1"}), Dispatch(1, 0, 0, 1));
  RunAs(1, [&] { Unregister(a, 0); });
  EXPECT_EQ(Lines{}, Dispatch(1, 0, 0, 1));  // an emptied list

  // Before-list x, y, w: x removes itself and y, then registers z in front;
  // z, new to the list, waits for the next dispatch.
  ScriptedCallback x("x"), y("y"), w("w"), z("z");
  x.onCall = [&] {
    Unregister(x, 1);
    Unregister(y, 1);
    Register(z, 1);
  };
  RunAs(1, [&] { Register(w, 1); Register(y, 1); Register(x, 1); });
  EXPECT_EQ((Lines{"x:0@1", "w:0@1"}), Dispatch(1, 0, 1, 1));
  // z stops the next dispatch after removing w, which was still due.
  z.result = 0;
  z.onCall = [&] { Unregister(w, 1); };
  EXPECT_EQ((Lines{"z:1@1"}), Dispatch(0, 0, 1, 0));
  z.result = 1;
  z.onCall = nullptr;
  EXPECT_EQ((Lines{"z:2@1"}), Dispatch(0, 1, 1, 1));
}

TEST_F(Commands, SimPrefixedNamesWarnButAreCreated) {
  host.onCall[55] = [](const HostCall& call) -> intptr_t { return 0x7000 + call.arg<int>(2); };
  std::vector<TOKACommandRef> made;
  RunAs(1, [&] {
    // Each report with the number of log writes made before it.
    TOKASetErrorCallback([](const char* text) {
      Log(text + (" after " + std::to_string(FakeHost::Get().CountCalls(29))));
    });
    for (const char* name : {"sim/foo", "Sim/foo", "sim", "simx/foo"})
      made.push_back(TOKACreateCommand(name, "does foo"));
    made.push_back(TOKAFindCommand("sim/foo"));
  });
  EXPECT_EQ((Lines{"Plugin is illegally registering a command with the prefix sim/ after 0@1"}),
            Events());
  EXPECT_EQ("[alpha]: It is illegal to register a command starting with sim/\n", host.log);
  auto creates = host.CallsTo(55);
  ASSERT_EQ(5u, creates.size());
  EXPECT_EQ((Lines{"sim/foo", "does foo"}), creates[0].strings);
  EXPECT_EQ(0u, creates[4].words[1]);  // a lookup passes no description
  auto created = (TOKACommandRef)0x7001, found = (TOKACommandRef)0x7000;
  EXPECT_EQ((std::vector<TOKACommandRef>{created, created, created, created, found}), made);
}

TEST_F(Commands, HeldCommandsRepeatWhileTheirPluginIsEnabled) {
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
}

TEST_F(Commands, HeldButtonsRepeatInOneCallOnEachProcessingPass) {
  Lines sent;
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
  EXPECT_EQ((Lines{"0/0:5", "0/1:5", "0/0:7", "0/1:7", "0/0:5", "0/1:5", "1/0:5", "1/1:5",
                   "1/0:9", "1/1:9"}),
            sent);
  sent.clear();
  TOKAEventHook(0, 1.0f, 0, 0);
  EXPECT_EQ((Lines{"0/1:7,5"}), sent);

  TOKACommandButtonRelease(7);
  TOKACommandButtonRelease(5);
  sent.clear();
  TOKAEventHook(0, 1.0f, 0, 0);
  EXPECT_EQ(Lines{}, sent);
}

}  // namespace
