// Commands: handler dispatch through the simulator's command hook, buttons,
// and the "sim/" naming rule.
#include "harness/harness.h"

using namespace toka_test;

namespace {

// Handlers log "name:phase"; their refcon is a ScriptedCallback.
int RunHandler(TOKACommandRef, int phase, void* refcon) {
  return static_cast<ScriptedCallback*>(refcon)->Run(":" + std::to_string(phase));
}

TOKACommandRef const kCommand = (TOKACommandRef)0x5000;

class Commands : public TokaTest {
protected:
  void SetUp() override { StartTwo(); }
  // The hook's result, then the handlers it ran.
  Lines Dispatch(int isBegin, int isEnd, int isBefore, int expected) {
    return During(
        [=] { EXPECT_EQ(expected, TOKACommandHook(kCommand, isBegin, isEnd, isBefore)); });
  }
};

TEST_F(Commands, HandlersRunBeforeNewestFirstAfterOldestFirstUntilOneStops) {
  ScriptedCallback a1("a1"), a2("a2"), b1("b1"), a3("a3"), a4("a4"), b2("b2");
  auto add = [](ScriptedCallback& handler, int before) {
    TOKARegisterCommandHandler(kCommand, RunHandler, before, &handler);
  };
  RunAs(1, [&] { add(a1, 1); add(a3, 0); });
  RunAs(2, [&] { add(b1, 1); add(b2, 0); });
  RunAs(1, [&] { add(a2, 1); add(a4, 0); });

  EXPECT_EQ((Lines{"a2:0@1", "b1:0@2", "a1:0@1"}), Dispatch(1, 0, 1, 1));
  EXPECT_EQ((Lines{"a3:1@1", "b2:1@2", "a4:1@1"}), Dispatch(0, 0, 0, 1));
  // Begin and end in one report is an end; a 0 result stops the list.
  b1.result = 0;
  EXPECT_EQ((Lines{"a2:2@1", "b1:2@2"}), Dispatch(1, 1, 1, 0));
  // A disabled plugin's handlers are passed over, so nothing stops.
  TOKADisablePlugin(2);
  EXPECT_EQ((Lines{"beta.disable@2"}), TakeEvents());
  EXPECT_EQ((Lines{"a2:2@1", "a1:2@1"}), Dispatch(0, 1, 1, 1));
}

TEST_F(Commands, HandlersChangedDuringADispatchTakeEffectAtTheRightCall) {
  // a runs first; it unregisters b and itself and registers c (beta's).
  ScriptedCallback a("a"), b("b"), c("c"), d("d");
  RunAs(2, [&] { TOKARegisterCommandHandler(kCommand, RunHandler, 1, &d); });
  RunAs(1, [&] {
    TOKARegisterCommandHandler(kCommand, RunHandler, 1, &b);
    TOKARegisterCommandHandler(kCommand, RunHandler, 1, &a);
  });
  a.onCall = [&] {
    TOKAUnregisterCommandHandler(kCommand, RunHandler, 1, &b);
    TOKAUnregisterCommandHandler(kCommand, RunHandler, 1, &a);
    RunAs(2, [&] { TOKARegisterCommandHandler(kCommand, RunHandler, 1, &c); });
  };
  // The removed handler is not called; the new one waits for the next
  // dispatch, where it runs first.
  EXPECT_EQ((Lines{"a:0@1", "d:0@2"}), Dispatch(1, 0, 1, 1));
  EXPECT_EQ((Lines{"c:2@2", "d:2@2"}), Dispatch(0, 1, 1, 1));
}

TEST_F(Commands, SimPrefixedNamesWarnButAreCreatedAndLookupsCreateNothing) {
  host.onCall[55] = [](const HostCall& call) -> intptr_t { return 0x7000 + call.arg<int>(2); };
  std::vector<TOKACommandRef> made;
  RunAs(1, [&] {
    // Each report with the number of log writes made before it.
    TOKASetErrorCallback([](const char* text) {
      Log(text + (" after " + std::to_string(FakeHost::Get().CountCalls(29))));
    });
    for (const char* name : {"sim/foo", "simx/foo"}) made.push_back(TOKACreateCommand(name, "foo"));
    made.push_back(TOKAFindCommand("sim/foo"));
  });
  EXPECT_EQ((Lines{"Plugin is illegally registering a command with the prefix sim/ after 0@1"}),
            Events());
  EXPECT_EQ("[alpha]: It is illegal to register a command starting with sim/\n", host.log);
  EXPECT_EQ((Lines{"sim/foo", "foo"}), host.CallsTo(55).at(0).strings);
  auto created = (TOKACommandRef)0x7001, found = (TOKACommandRef)0x7000;
  EXPECT_EQ((std::vector<TOKACommandRef>{created, created, found}), made);
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
  TOKACommandButtonRelease(9);  // never pressed: still sent
  EXPECT_EQ((Lines{"0/0:5", "0/1:5", "0/0:7", "0/1:7", "1/0:9", "1/1:9"}), sent);
  sent.clear();
  TOKAEventHook(0, 1.0f, 0, 0);
  EXPECT_EQ((Lines{"0/1:5,7"}), sent);
}

TEST_F(Commands, HeldCommandsContinueOnEveryRepeatEventWhileTheirPluginIsEnabled) {
  TOKACommandRef other = (TOKACommandRef)0x6000;
  RunAs(1, [&] {
    TOKACommandBegin(kCommand);
    TOKACommandBegin(other);
    TOKACommandEnd(other);
  });
  auto continued = [&] {
    host.ClearRecords();
    TOKAEventHook(9, 0, 0, 0);
    std::vector<TOKACommandRef> commands;
    for (const HostCall& call : host.CallsTo(57)) commands.push_back(call.arg<TOKACommandRef>(0));
    return commands;
  };
  const std::vector<TOKACommandRef> held = {kCommand}, none = {};
  EXPECT_EQ(held, continued());
  EXPECT_EQ(held, continued());
  // Disabling pauses the repeat without ending the command.
  TOKADisablePlugin(1);
  EXPECT_EQ(none, continued());
  EXPECT_EQ(0u, host.CountCalls(58));
  TOKAEnablePlugin(1);
  EXPECT_EQ(held, continued());
  // Only its holder ends it.
  RunAs(2, [&] { TOKACommandEnd(kCommand); });
  EXPECT_EQ(held, continued());
  RunAs(1, [&] { TOKACommandEnd(kCommand); });
  EXPECT_EQ(none, continued());
}

}  // namespace
