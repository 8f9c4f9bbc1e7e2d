// Keys, keyboard focus, mouse clicks, drags, cursor and scroll wheel, as the
// simulator sends them through its hooks.
#include "harness/display_scripts.h"

using namespace toka_test;

namespace {

class Input : public DisplayTest {};

TEST_F(Input, KeysGoToEarlySniffersHotKeysTheFocusWindowAndLateSniffersInOrder) {
  Start();
  ScriptedCallback early{"early"}, late{"late"}, hot{"hot"};
  Sniff(alpha, early, 1);
  Sniff(beta, late, 0);
  HotKey(beta, hot, 'K', 2);
  ScriptedWindow window{"w"};
  OpenWindow(alpha, window, 0, 10, 10, 0);
  std::string sniffed = "(97,0,65)";

  EXPECT_EQ(Calls{}, During([] { EXPECT_EQ(1, TOKAKeyPressHook(0, 0, 0)); }));
  EXPECT_EQ((Calls{"early.sniff" + sniffed + At(alpha), "late.sniff" + sniffed + At(beta)}),
            During([] { EXPECT_EQ(1, TOKAKeyPressHook('a', 0, 'A')); }));

  RunAs(alpha, [&] { TOKATakeKeyboardFocus(window.id); });
  EXPECT_EQ((Calls{"early.sniff" + sniffed + At(alpha), "w.key(97,0,65,w,0)" + At(alpha)}),
            During([] { EXPECT_EQ(0, TOKAKeyPressHook('a', 0, 'A')); }));
  // The hot key takes its exact combination before the focus window.
  EXPECT_EQ((Calls{"early.sniff(107,2,75)" + At(alpha), "hot.hotkey()" + At(beta)}),
            During([] { EXPECT_EQ(0, TOKAKeyPressHook('k', 2, 'K')); }));
  EXPECT_EQ((Calls{"early.sniff(107,3,75)" + At(alpha), "w.key(107,3,75,w,0)" + At(alpha)}),
            During([] { EXPECT_EQ(0, TOKAKeyPressHook('k', 3, 'K')); }));
  early.result = 0;
  EXPECT_EQ((Calls{"early.sniff(107,2,75)" + At(alpha)}),
            During([] { EXPECT_EQ(0, TOKAKeyPressHook('k', 2, 'K')); }));

  // A disabled plugin's window loses the focus and its sniffer is passed over.
  EXPECT_EQ((Calls{"w.key(0,0,0,0,1)" + At(alpha)}), During([&] { TOKADisablePlugin(alpha); }));
  late.result = 0;
  EXPECT_EQ((Calls{"late.sniff" + sniffed + At(beta)}),
            During([] { EXPECT_EQ(0, TOKAKeyPressHook('a', 0, 'A')); }));
}

TEST_F(Input, FocusMovesTellTheLosingWindowWhoTakesIt) {
  Start();
  ScriptedWindow one{"one"}, two{"two"}, three{"three"};
  OpenWindow(alpha, one, 0, 10, 10, 0);
  OpenWindow(beta, two, 0, 10, 10, 0);
  OpenWindow(alpha, three, 0, 10, 10, 0);
  EXPECT_EQ(Calls{}, During([&] { RunAs(alpha, [&] { TOKATakeKeyboardFocus(one.id); }); }));
  EXPECT_EQ((Calls{"one.key(0,0,0,two,1)" + At(alpha)}),
            During([&] { TOKATakeKeyboardFocus(two.id); }));
  EXPECT_EQ(Calls{}, During([&] { TOKATakeKeyboardFocus(two.id); }));
  EXPECT_EQ((Calls{"two.key(0,0,0,0,1)" + At(beta)}),
            During([] { TOKATakeKeyboardFocus(nullptr); }));
  EXPECT_EQ(1, TOKAKeyPressHook('a', 0, 'A'));

  // Hiding or destroying the focus window takes its focus away first.
  TOKATakeKeyboardFocus(one.id);
  EXPECT_EQ((Calls{"one.key(0,0,0,0,1)" + At(alpha)}),
            During([&] { TOKASetWindowIsVisible(one.id, 0); }));
  TOKATakeKeyboardFocus(three.id);
  EXPECT_EQ((Calls{"three.key(0,0,0,0,1)" + At(alpha)}),
            During([&] { TOKADestroyWindow(three.id); }));
  EXPECT_EQ(1, TOKAKeyPressHook('a', 0, 'A'));

  // A window of a disabled plugin cannot take the focus.
  TOKATakeKeyboardFocus(one.id);
  TOKADisablePlugin(beta);
  EXPECT_EQ(Calls{}, During([&] { TOKATakeKeyboardFocus(two.id); }));
  EXPECT_EQ((Calls{"one.key(97,0,65,one,0)" + At(alpha)}),
            During([] { TOKAKeyPressHook('a', 0, 'A'); }));
}

TEST_F(Input, WindowsDestroyedWhileFocusMovesNeverKeepTheFocus) {
  Start();
  ScriptedWindow window{"w"};
  OpenWindow(alpha, window, 0, 10, 10, 0);
  int heard = 0;
  window.onKey = [&](int losing) {
    if (losing && ++heard == 1) TOKADestroyWindow(window.id);
  };
  TOKATakeKeyboardFocus(window.id);
  EXPECT_EQ((Calls{"w.key(0,0,0,0,1)" + At(alpha), "w.key(0,0,0,0,1)" + At(alpha)}),
            During([&] { TOKADestroyWindow(window.id); }));
  EXPECT_EQ(0, TOKAGetWindowIsVisible(window.id));
  EXPECT_EQ(Calls{}, During([] {
              EXPECT_EQ(1, TOKAKeyPressHook('a', 0, 'A'));
              TOKADoDrawingHook(20, 0);
            }));

  // The window taking the focus is destroyed by the one losing it.
  ScriptedWindow loser{"loser"}, taker{"taker"};
  OpenWindow(beta, loser, 0, 10, 10, 0);
  OpenWindow(beta, taker, 0, 10, 10, 0);
  loser.onKey = [&](int) { TOKADestroyWindow(taker.id); };
  TOKATakeKeyboardFocus(loser.id);
  EXPECT_EQ((Calls{"loser.key(0,0,0,taker,1)" + At(beta)}),
            During([&] { TOKATakeKeyboardFocus(taker.id); }));
  EXPECT_EQ(Calls{}, During([] { EXPECT_EQ(1, TOKAKeyPressHook('a', 0, 'A')); }));
}

TEST_F(Input, MouseDownsGoFrontToBackAndTheTakerGetsDragAndUpAnywhere) {
  Start();
  ScriptedWindow back{"back"}, front{"front"}, hidden{"hidden"};
  OpenWindow(alpha, back, 0, 100, 100, 0);
  OpenWindow(beta, front, 50, 150, 150, 50);
  OpenWindow(beta, hidden, 0, 200, 200, 0, 0);
  front.mouseResult = 0;
  EXPECT_EQ((Calls{"front.mouse(60,60,1)" + At(beta), "back.mouse(60,60,1)" + At(alpha)}),
            During([] { EXPECT_EQ(0, TOKAMouseClickHook(60, 60, 5)); }));
  MouseAt(500, -20);
  EXPECT_EQ((Calls{"back.mouse(500,-20,2)" + At(alpha), "back.draw()" + At(alpha),
                   "front.draw()" + At(beta)}),
            During([] { TOKADoDrawingHook(20, 0); }));
  EXPECT_EQ((Calls{"back.mouse(700,700,3)" + At(alpha)}),
            During([] { EXPECT_EQ(0, TOKAMouseClickHook(700, 700, 0)); }));
  EXPECT_EQ(Calls{}, During([] { EXPECT_EQ(1, TOKAMouseClickHook(700, 700, 0)); }));

  // Left and bottom edges are inside, right and top edges outside.
  back.mouseResult = 0;
  const int inside[][2] = {{0, 0}, {49, 99}, {99, 49}};
  const int outside[][2] = {{100, 10}, {10, 100}, {-1, 10}, {10, -1}};
  for (const auto& at : inside)
    EXPECT_EQ((Calls{"back.mouse(" + std::to_string(at[0]) + "," + std::to_string(at[1]) + ",1)" +
                     At(alpha)}),
              During([&] { EXPECT_EQ(1, TOKAMouseClickHook(at[0], at[1], 1)); }));
  for (const auto& at : outside)
    EXPECT_EQ(Calls{}, During([&] { EXPECT_EQ(1, TOKAMouseClickHook(at[0], at[1], 1)); }));

  // A disabled plugin's window is passed over.
  TOKADisablePlugin(beta);
  EXPECT_EQ((Calls{"back.mouse(60,60,1)" + At(alpha)}),
            During([] { TOKAMouseClickHook(60, 60, 1); }));
}

TEST_F(Input, CursorAndWheelAskTheWindowsUnderTheMouseUntilOneAnswers) {
  Start();
  ScriptedWindow back{"back"}, middle{"middle"}, front{"front"};
  OpenWindow(alpha, back, 0, 100, 100, 0);
  OpenWindow(beta, middle, 0, 100, 100, 0);
  OpenWindow(alpha, front, 0, 100, 100, 0, 1, false);  // no cursor or wheel callback
  back.cursorResult = 7;
  back.wheelResult = 1;
  EXPECT_EQ((Calls{"middle.cursor(5,6)" + At(beta), "back.cursor(5,6)" + At(alpha)}),
            During([] { EXPECT_EQ(7, TOKACursorHook(5, 6)); }));
  EXPECT_EQ((Calls{"middle.wheel(5,6,1,-3)" + At(beta), "back.wheel(5,6,1,-3)" + At(alpha)}),
            During([] { EXPECT_EQ(0, TOKAScrollWheelHook(5, 6, 1, -3)); }));
  middle.cursorResult = 2;
  middle.wheelResult = 1;
  EXPECT_EQ((Calls{"middle.cursor(5,6)" + At(beta)}),
            During([] { EXPECT_EQ(2, TOKACursorHook(5, 6)); }));
  EXPECT_EQ((Calls{"middle.wheel(5,6,0,1)" + At(beta)}),
            During([] { EXPECT_EQ(0, TOKAScrollWheelHook(5, 6, 0, 1)); }));
  back.cursorResult = 0;
  back.wheelResult = 0;
  TOKADisablePlugin(beta);
  EXPECT_EQ(0, TOKACursorHook(5, 6));
  EXPECT_EQ(1, TOKAScrollWheelHook(5, 6, 0, 1));
  EXPECT_EQ(Calls{}, During([] { EXPECT_EQ(0, TOKACursorHook(100, 6)); }));
}

TEST_F(Input, DisablingAPluginReleasesItsFocusAndEndsItsDragWhereTheMouseIs) {
  Start();
  ScriptedWindow window{"w"};
  OpenWindow(beta, window, 0, 10, 10, 0);
  EXPECT_EQ(0, TOKAMouseClickHook(1, 1, 1));
  RunAs(beta, [&] { TOKATakeKeyboardFocus(window.id); });
  MouseAt(-4, 30);
  host.ClearRecords();
  Events().clear();
  EXPECT_EQ((Calls{"w.key(0,0,0,0,1)" + At(beta), "w.mouse(-4,30,3)" + At(beta)}),
            During([&] { TOKADisablePlugin(beta); }));
  EXPECT_EQ(Calls{"beta.disable@" + std::to_string(beta)}, Events());
  std::vector<HostCall> polls = host.CallsTo(3);
  ASSERT_EQ(1u, polls.size());
  EXPECT_EQ(0u, polls[0].words[2]);
  // No drag is left to poll; the window stays but is not drawn.
  EXPECT_EQ(Calls{}, During([] { TOKADoDrawingHook(20, 0); }));
  EXPECT_EQ(1u, host.CallsTo(3).size());
  EXPECT_EQ(1, TOKAGetWindowIsVisible(window.id));
}

TEST_F(Input, AWindowThatDestroysItselfWhileTakingAMouseDownIsNotDragged) {
  Start();
  ScriptedWindow back{"back"}, front{"front"};
  OpenWindow(alpha, back, 0, 10, 10, 0);
  OpenWindow(alpha, front, 0, 10, 10, 0);
  front.onMouse = [&](int) { TOKADestroyWindow(front.id); };
  EXPECT_EQ((Calls{"front.mouse(2,2,1)" + At(alpha)}),
            During([] { EXPECT_EQ(0, TOKAMouseClickHook(2, 2, 1)); }));
  host.ClearRecords();
  EXPECT_EQ((Calls{"back.draw()" + At(alpha)}), During([] { TOKADoDrawingHook(20, 0); }));
  EXPECT_EQ(0u, host.CallsTo(3).size());
  EXPECT_EQ(Calls{}, During([] { EXPECT_EQ(1, TOKAMouseClickHook(2, 2, 0)); }));
  // A drag window that destroys itself on a drag gets no up.
  back.onMouse = [&](int status) {
    if (status == 2) TOKADestroyWindow(back.id);
  };
  TOKAMouseClickHook(2, 2, 1);
  MouseAt(3, 4);
  EXPECT_EQ((Calls{"back.mouse(3,4,2)" + At(alpha)}), During([] { TOKADoDrawingHook(20, 0); }));
  EXPECT_EQ(Calls{}, During([] { EXPECT_EQ(1, TOKAMouseClickHook(2, 2, 0)); }));
}

TEST_F(Input, SniffersRemovedWhileKeysAreDispatchedAreNotCalledAgain) {
  Start();
  ScriptedCallback first{"first"}, second{"second"}, third{"third"}, last{"last"}, later{"later"};
  Sniff(alpha, later, 0);
  Sniff(beta, last, 0);
  Sniff(alpha, third, 1);
  Sniff(beta, second, 1);
  Sniff(alpha, first, 1);
  RunAs(beta, [&] { EXPECT_EQ(0, TOKARegisterKeySniffer(SnifferThunk, 1, &first)); });
  first.onCall = [&] { EXPECT_EQ(1, TOKAUnregisterKeySniffer(SnifferThunk, 1, &first)); };
  std::vector<int> removed;
  second.onCall = [&] { removed.push_back(TOKAUnregisterKeySniffer(SnifferThunk, 1, &third)); };
  last.onCall = [&] {
    EXPECT_EQ(1, TOKAUnregisterKeySniffer(SnifferThunk, 0, &last));
    EXPECT_EQ(1, TOKAUnregisterKeySniffer(SnifferThunk, 0, &later));
  };
  std::string key = ".sniff(97,0,65)";
  EXPECT_EQ((Calls{"first" + key + At(alpha), "second" + key + At(beta), "last" + key + At(beta)}),
            During([] { EXPECT_EQ(1, TOKAKeyPressHook('a', 0, 'A')); }));
  EXPECT_EQ((Calls{"second" + key + At(beta)}),
            During([] { EXPECT_EQ(1, TOKAKeyPressHook('a', 0, 'A')); }));
  EXPECT_EQ((std::vector<int>{1, 0}), removed);
  EXPECT_EQ(0, TOKAUnregisterKeySniffer(SnifferThunk, 0, &later));
}

}  // namespace
