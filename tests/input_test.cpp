// Keys, keyboard focus, mouse clicks, drags, cursor and scroll wheel, as the
// simulator sends them through its hooks.
#include "harness/display_scripts.h"

using namespace toka_test;

namespace {

using Point = std::pair<int, int>;

class Input : public DisplayTest {
protected:
  // A key press and its result, then the calls it caused.
  Lines Key(char key, int flags, char virtualKey, int expected) {
    return During([=] { EXPECT_EQ(expected, TOKAKeyPressHook(key, flags, virtualKey)); });
  }
  Lines Click(int x, int y, int pressed, int expected) {
    return During([=] { EXPECT_EQ(expected, TOKAMouseClickHook(x, y, pressed)); });
  }
};

TEST_F(Input, KeysGoToEarlySniffersHotKeysTheFocusWindowAndLateSniffersInOrder) {
  ScriptedCallback early{"early"}, late{"late"}, hot{"hot"};
  Sniff(alpha, early, 1);
  Sniff(beta, late, 0);
  HotKey(beta, hot, 'K', 2);
  ScriptedWindow window{"w"};
  OpenWindow(alpha, window, 0, 10, 10, 0);

  EXPECT_EQ(Lines{}, Key(0, 0, 0, 1));
  EXPECT_EQ((Lines{"early.sniff(97,0,65)@1", "late.sniff(97,0,65)@2"}), Key('a', 0, 'A', 1));
  RunAs(alpha, [&] { TOKATakeKeyboardFocus(window.id); });
  EXPECT_EQ((Lines{"early.sniff(97,0,65)@1", "w.key(97,0,65,w,0)@1"}), Key('a', 0, 'A', 0));
  // The hot key takes its exact combination before the focus window.
  EXPECT_EQ((Lines{"early.sniff(107,2,75)@1", "hot.hotkey()@2"}), Key('k', 2, 'K', 0));
  EXPECT_EQ((Lines{"early.sniff(107,3,75)@1", "w.key(107,3,75,w,0)@1"}), Key('k', 3, 'K', 0));
  early.result = 0;
  EXPECT_EQ((Lines{"early.sniff(107,2,75)@1"}), Key('k', 2, 'K', 0));

  // A disabled plugin's window loses the focus and its sniffer is passed over.
  EXPECT_EQ((Lines{"w.key(0,0,0,0,1)@1", "alpha.disable@1"}),
            During([&] { TOKADisablePlugin(alpha); }));
  late.result = 0;
  EXPECT_EQ((Lines{"late.sniff(97,0,65)@2"}), Key('a', 0, 'A', 0));
}

TEST_F(Input, FocusMovesTellTheLosingWindowWhoTakesItAndNeverStayOnAGoneWindow) {
  ScriptedWindow one{"one"}, two{"two"}, three{"three"};
  OpenWindow(alpha, one, 0, 10, 10, 0);
  OpenWindow(beta, two, 0, 10, 10, 0);
  OpenWindow(alpha, three, 0, 10, 10, 0);
  EXPECT_EQ(Lines{}, During([&] { RunAs(alpha, [&] { TOKATakeKeyboardFocus(one.id); }); }));
  EXPECT_EQ((Lines{"one.key(0,0,0,two,1)@1"}), During([&] { TOKATakeKeyboardFocus(two.id); }));
  EXPECT_EQ(Lines{}, During([&] { TOKATakeKeyboardFocus(two.id); }));
  EXPECT_EQ((Lines{"two.key(0,0,0,0,1)@2"}), During([] { TOKATakeKeyboardFocus(nullptr); }));
  EXPECT_EQ(Lines{}, Key('a', 0, 'A', 1));

  // Hiding or destroying the focus window takes its focus away first.
  TOKATakeKeyboardFocus(one.id);
  EXPECT_EQ((Lines{"one.key(0,0,0,0,1)@1"}), During([&] { TOKASetWindowIsVisible(one.id, 0); }));
  TOKATakeKeyboardFocus(three.id);
  EXPECT_EQ((Lines{"three.key(0,0,0,0,1)@1"}), During([&] { TOKADestroyWindow(three.id); }));
  EXPECT_EQ(Lines{}, Key('a', 0, 'A', 1));

  // A window of a disabled plugin cannot take the focus.
  TOKATakeKeyboardFocus(one.id);
  TOKADisablePlugin(beta);
  EXPECT_EQ(Lines{}, During([&] { TOKATakeKeyboardFocus(two.id); }));
  EXPECT_EQ((Lines{"one.key(97,0,65,one,0)@1"}), Key('a', 0, 'A', 0));

  // A window that destroys itself while it hears that it loses the focus.
  int heard = 0;
  one.onKey = [&](int losing) { if (losing && ++heard == 1) TOKADestroyWindow(one.id); };
  EXPECT_EQ((Lines{"one.key(0,0,0,0,1)@1", "one.key(0,0,0,0,1)@1"}),
            During([&] { TOKADestroyWindow(one.id); }));
  EXPECT_EQ(0, TOKAGetWindowIsVisible(one.id));
  EXPECT_EQ(Lines{}, Key('a', 0, 'A', 1));

  // The window taking the focus is destroyed by the one losing it.
  ScriptedWindow loser{"loser"}, taker{"taker"};
  OpenWindow(alpha, loser, 0, 10, 10, 0);
  OpenWindow(alpha, taker, 0, 10, 10, 0);
  loser.onKey = [&](int) { TOKADestroyWindow(taker.id); };
  TOKATakeKeyboardFocus(loser.id);
  EXPECT_EQ((Lines{"loser.key(0,0,0,taker,1)@1"}),
            During([&] { TOKATakeKeyboardFocus(taker.id); }));
  EXPECT_EQ(Lines{}, Key('a', 0, 'A', 1));
}

TEST_F(Input, MouseDownsGoFrontToBackAndTheTakerGetsDragAndUpAnywhere) {
  ScriptedWindow back{"back"}, front{"front"}, hidden{"hidden"};
  OpenWindow(alpha, back, 0, 100, 100, 0);
  OpenWindow(beta, front, 50, 150, 150, 50);
  OpenWindow(beta, hidden, 0, 200, 200, 0, 0);
  front.mouseResult = 0;
  EXPECT_EQ((Lines{"front.mouse(60,60,1)@2", "back.mouse(60,60,1)@1"}), Click(60, 60, 5, 0));
  MouseAt(500, -20);
  EXPECT_EQ((Lines{"back.mouse(500,-20,2)@1", "back.draw()@1", "front.draw()@2"}),
            During([] { TOKADoDrawingHook(20, 0); }));
  EXPECT_EQ((Lines{"back.mouse(700,700,3)@1"}), Click(700, 700, 0, 0));
  EXPECT_EQ(Lines{}, Click(700, 700, 0, 1));

  // Left and bottom edges are inside, right and top edges outside.
  back.mouseResult = 0;
  for (Point at : {Point{0, 0}, Point{49, 99}, Point{99, 49}})
    EXPECT_EQ((Lines{"back.mouse(" + std::to_string(at.first) + "," + std::to_string(at.second) +
                     ",1)@1"}),
              Click(at.first, at.second, 1, 1));
  for (Point at : {Point{100, 10}, Point{10, 100}, Point{-1, 10}, Point{10, -1}})
    EXPECT_EQ(Lines{}, Click(at.first, at.second, 1, 1));

  // A disabled plugin's window is passed over.
  TOKADisablePlugin(beta);
  EXPECT_EQ((Lines{"back.mouse(60,60,1)@1"}), Click(60, 60, 1, 1));
}

TEST_F(Input, CursorAndWheelAskTheWindowsUnderTheMouseUntilOneAnswers) {
  ScriptedWindow back{"back"}, middle{"middle"}, front{"front"};
  OpenWindow(alpha, back, 0, 100, 100, 0);
  OpenWindow(beta, middle, 0, 100, 100, 0);
  OpenWindow(alpha, front, 0, 100, 100, 0, 1, false);  // no cursor or wheel callback
  back.cursorResult = 7;
  back.wheelResult = 1;
  EXPECT_EQ((Lines{"middle.cursor(5,6)@2", "back.cursor(5,6)@1"}),
            During([] { EXPECT_EQ(7, TOKACursorHook(5, 6)); }));
  EXPECT_EQ((Lines{"middle.wheel(5,6,1,-3)@2", "back.wheel(5,6,1,-3)@1"}),
            During([] { EXPECT_EQ(0, TOKAScrollWheelHook(5, 6, 1, -3)); }));
  middle.cursorResult = 2;
  middle.wheelResult = 1;
  EXPECT_EQ((Lines{"middle.cursor(5,6)@2"}), During([] { EXPECT_EQ(2, TOKACursorHook(5, 6)); }));
  EXPECT_EQ((Lines{"middle.wheel(5,6,0,1)@2"}),
            During([] { EXPECT_EQ(0, TOKAScrollWheelHook(5, 6, 0, 1)); }));
  back.cursorResult = 0;
  back.wheelResult = 0;
  TOKADisablePlugin(beta);
  EXPECT_EQ(0, TOKACursorHook(5, 6));
  EXPECT_EQ(1, TOKAScrollWheelHook(5, 6, 0, 1));
  EXPECT_EQ(Lines{}, During([] { EXPECT_EQ(0, TOKACursorHook(100, 6)); }));
}

TEST_F(Input, AWindowThatDestroysItselfWhileTakingAMouseDownIsNotDragged) {
  ScriptedWindow back{"back"}, front{"front"};
  OpenWindow(alpha, back, 0, 10, 10, 0);
  OpenWindow(alpha, front, 0, 10, 10, 0);
  front.onMouse = [&](int) { TOKADestroyWindow(front.id); };
  EXPECT_EQ((Lines{"front.mouse(2,2,1)@1"}), Click(2, 2, 1, 0));
  host.ClearRecords();
  EXPECT_EQ((Lines{"back.draw()@1"}), During([] { TOKADoDrawingHook(20, 0); }));
  EXPECT_EQ(0u, host.CountCalls(3));
  EXPECT_EQ(Lines{}, Click(2, 2, 0, 1));
  // A drag window that destroys itself on a drag gets no up.
  back.onMouse = [&](int status) { if (status == 2) TOKADestroyWindow(back.id); };
  TOKAMouseClickHook(2, 2, 1);
  MouseAt(3, 4);
  EXPECT_EQ((Lines{"back.mouse(3,4,2)@1"}), During([] { TOKADoDrawingHook(20, 0); }));
  EXPECT_EQ(Lines{}, Click(2, 2, 0, 1));
}

TEST_F(Input, SniffersRemovedWhileKeysAreDispatchedAreNotCalledAgain) {
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
  EXPECT_EQ((Lines{"first.sniff(97,0,65)@1", "second.sniff(97,0,65)@2", "last.sniff(97,0,65)@2"}),
            Key('a', 0, 'A', 1));
  EXPECT_EQ((Lines{"second.sniff(97,0,65)@2"}), Key('a', 0, 'A', 1));
  EXPECT_EQ((std::vector<int>{1, 0}), removed);
  EXPECT_EQ(0, TOKAUnregisterKeySniffer(SnifferThunk, 0, &later));
}

}  // namespace
