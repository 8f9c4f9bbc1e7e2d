// Keys, hot keys, keyboard focus, mouse clicks and drags, as the simulator
// sends them through its hooks.
#include "harness/display_scripts.h"

using namespace toka_test;

namespace {

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

  EXPECT_EQ((Lines{"early.sniff(97,0,65)@1", "late.sniff(97,0,65)@2"}), Key('a', 0, 'A', 1));
  RunAs(alpha, [&] { TOKATakeKeyboardFocus(window.id); });
  EXPECT_EQ((Lines{"early.sniff(97,0,65)@1", "w.key(97,0,65,w,0)@1"}), Key('a', 0, 'A', 0));
  // The hot key takes its exact combination before the focus window.
  EXPECT_EQ((Lines{"early.sniff(107,2,75)@1", "hot.hotkey()@2"}), Key('k', 2, 'K', 0));
  early.result = 0;
  EXPECT_EQ((Lines{"early.sniff(107,2,75)@1"}), Key('k', 2, 'K', 0));

  // A disabled plugin's window loses the focus and its sniffer is passed over.
  EXPECT_EQ((Lines{"w.key(0,0,0,0,1)@1", "alpha.disable@1"}),
            During([&] { TOKADisablePlugin(alpha); }));
  EXPECT_EQ((Lines{"late.sniff(97,0,65)@2"}), Key('a', 0, 'A', 1));
}

TEST_F(Input, FocusMovesTellTheLosingWindowWhoTakesItAndNeverStayOnAGoneWindow) {
  ScriptedWindow one{"one"}, two{"two"}, three{"three"};
  OpenWindow(alpha, one, 0, 10, 10, 0);
  OpenWindow(beta, two, 0, 10, 10, 0);
  OpenWindow(alpha, three, 0, 10, 10, 0);
  TOKATakeKeyboardFocus(one.id);
  EXPECT_EQ((Lines{"one.key(0,0,0,two,1)@1"}), During([&] { TOKATakeKeyboardFocus(two.id); }));
  EXPECT_EQ((Lines{"two.key(0,0,0,0,1)@2"}), During([] { TOKATakeKeyboardFocus(nullptr); }));
  // Hiding or destroying the focus window takes its focus away first.
  TOKATakeKeyboardFocus(one.id);
  EXPECT_EQ((Lines{"one.key(0,0,0,0,1)@1"}), During([&] { TOKASetWindowIsVisible(one.id, 0); }));
  TOKATakeKeyboardFocus(three.id);
  EXPECT_EQ((Lines{"three.key(0,0,0,0,1)@1"}), During([&] { TOKADestroyWindow(three.id); }));
  EXPECT_EQ(Lines{}, Key('a', 0, 'A', 1));
}

TEST_F(Input, MouseDownsGoFrontToBackAndTheTakerGetsDragAndUpAnywhere) {
  ScriptedWindow back{"back"}, front{"front"};
  OpenWindow(alpha, back, 0, 100, 100, 0);
  OpenWindow(beta, front, 50, 150, 150, 50);
  front.mouseResult = 0;
  EXPECT_EQ((Lines{"front.mouse(60,60,1)@2", "back.mouse(60,60,1)@1"}), Click(60, 60, 5, 0));
  MouseAt(500, -20);
  EXPECT_EQ((Lines{"back.mouse(500,-20,2)@1", "back.draw()@1", "front.draw()@2"}),
            During([] { TOKADoDrawingHook(20, 0); }));
  EXPECT_EQ((Lines{"back.mouse(700,700,3)@1"}), Click(700, 700, 0, 0));
  EXPECT_EQ(Lines{}, Click(700, 700, 0, 1));

  // Left and bottom edges are inside, right and top edges outside.
  back.mouseResult = 0;
  EXPECT_EQ((Lines{"back.mouse(0,0,1)@1"}), Click(0, 0, 1, 1));
  for (int x : {100, 10}) EXPECT_EQ(Lines{}, Click(x, 110 - x, 1, 1));
}

TEST_F(Input, TheNewestEnabledHotKeyOfTheExactCombinationWins) {
  ScriptedCallback older{"older"}, newer{"newer"};
  std::string description(600, 'd');
  description[510] = 'e';
  TOKAHotKeyID olderID = HotKey(alpha, older, 'A', 1, description.c_str());
  HotKey(beta, newer, 'A', 1);
  EXPECT_EQ(olderID, TOKAGetNthHotKey(1));  // listed newest first
  char key = 0, text[600] = {};
  int flags = 0, plugin = 0;
  TOKAGetHotKeyInfo(olderID, &key, &flags, text, &plugin);
  EXPECT_EQ((std::vector<int>{'A', 1, alpha}), (std::vector<int>{key, flags, plugin}));
  EXPECT_EQ(description.substr(0, 511), text);  // cut to 511 characters and a terminator

  ScriptedWindow window{"w"};
  OpenWindow(alpha, window, 0, 10, 10, 0);
  TOKATakeKeyboardFocus(window.id);
  EXPECT_EQ((Lines{"newer.hotkey()@2"}), Key('x', 1, 'A', 0));
  EXPECT_EQ((Lines{"w.key(120,3,65,w,0)@1"}), Key('x', 3, 'A', 0));
  TOKADisablePlugin(beta);
  EXPECT_EQ((Lines{"older.hotkey()@1"}), Key('x', 1, 'A', 0));
  TOKASetHotKeyCombination(olderID, 'B', 0);
  EXPECT_EQ((Lines{"w.key(120,1,65,w,0)@1"}), Key('x', 1, 'A', 0));
  EXPECT_EQ((Lines{"older.hotkey()@1"}), Key('x', 0, 'B', 0));
}

// Sniffers that unregister themselves and others while a key is dispatched.
TEST_F(Input, SniffersRemovedWhileKeysAreDispatchedAreNotCalledAgain) {
  ScriptedCallback first{"first"}, second{"second"}, third{"third"}, late{"late"};
  Sniff(alpha, late, 0);
  Sniff(alpha, third, 1);
  Sniff(beta, second, 1);
  Sniff(alpha, first, 1);
  first.onCall = [&] { EXPECT_EQ(1, TOKAUnregisterKeySniffer(SnifferThunk, 1, &first)); };
  second.onCall = [&] {
    TOKAUnregisterKeySniffer(SnifferThunk, 1, &third);
    TOKAUnregisterKeySniffer(SnifferThunk, 0, &late);
  };
  EXPECT_EQ((Lines{"first.sniff(97,0,65)@1", "second.sniff(97,0,65)@2"}), Key('a', 0, 'A', 1));
  EXPECT_EQ((Lines{"second.sniff(97,0,65)@2"}), Key('a', 0, 'A', 1));
}

}  // namespace
