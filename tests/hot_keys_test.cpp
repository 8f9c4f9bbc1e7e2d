// Hot keys: listing, re-binding and dispatch against the focus window.
#include <cstring>

#include "harness/display_scripts.h"

using namespace toka_test;

namespace {

class HotKeys : public DisplayTest {
protected:
  Lines Press(char virtualKey, int flags, int expected) {
    return During([=] { EXPECT_EQ(expected, TOKAKeyPressHook('x', flags, virtualKey)); });
  }
};

TEST_F(HotKeys, AreListedNewestFirstAndCanBeReadAndRebound) {
  ScriptedCallback one{"one"}, two{"two"}, three{"three"};
  std::string longText(600, 'd');
  longText[510] = 'e';
  TOKAHotKeyID first = HotKey(alpha, one, 'A', 1, "first");
  TOKAHotKeyID second = HotKey(beta, two, 'A', 1, longText.c_str());
  TOKAHotKeyID third = HotKey(alpha, three, 'B', 0, "third");
  ASSERT_EQ(3, TOKACountHotKeys());
  EXPECT_EQ((std::vector<TOKAHotKeyID>{third, second, first, nullptr}),
            (std::vector<TOKAHotKeyID>{TOKAGetNthHotKey(0), TOKAGetNthHotKey(1),
                                       TOKAGetNthHotKey(2), TOKAGetNthHotKey(3)}));

  char key = 0, text[600];
  int flags = 0, plugin = 0;
  std::memset(text, 'z', sizeof text);
  TOKAGetHotKeyInfo(second, &key, &flags, text, &plugin);
  EXPECT_EQ((std::vector<int>{'A', 1, beta}), (std::vector<int>{key, flags, plugin}));
  EXPECT_EQ(longText.substr(0, 511), text);  // cut to 511 characters and a terminator
  EXPECT_EQ('z', text[512]);

  int unknown = 0;
  TOKAGetHotKeyInfo(&unknown, &key, &flags, text, &plugin);
  TOKASetHotKeyCombination(&unknown, 'Q', 9);
  EXPECT_EQ((std::vector<int>{'A', 0}), (std::vector<int>{key, unknown}));

  TOKAUnregisterHotKey(second);  // freed at once: no longer counted
  EXPECT_EQ(2, TOKACountHotKeys());
  EXPECT_EQ(first, TOKAGetNthHotKey(1));
  TOKAUnregisterHotKey(&unknown);
  EXPECT_EQ(2, TOKACountHotKeys());
}

TEST_F(HotKeys, TheNewestEnabledBindingOfTheExactCombinationWins) {
  ScriptedCallback older{"older"}, newer{"newer"};
  TOKAHotKeyID olderID = HotKey(alpha, older, 'A', 1);
  HotKey(beta, newer, 'A', 1);
  ScriptedWindow window{"w"};
  OpenWindow(alpha, window, 0, 10, 10, 0);
  TOKATakeKeyboardFocus(window.id);

  EXPECT_EQ((Lines{"newer.hotkey()@2"}), Press('A', 1, 0));
  EXPECT_EQ((Lines{"w.key(120,3,65,w,0)@1"}), Press('A', 3, 0));
  EXPECT_EQ((Lines{"w.key(120,0,65,w,0)@1"}), Press('A', 0, 0));
  TOKADisablePlugin(beta);
  EXPECT_EQ((Lines{"older.hotkey()@1"}), Press('A', 1, 0));
  TOKASetHotKeyCombination(olderID, 'B', 0);
  EXPECT_EQ((Lines{"w.key(120,1,65,w,0)@1"}), Press('A', 1, 0));
  EXPECT_EQ((Lines{"older.hotkey()@1"}), Press('B', 0, 0));
}

TEST_F(HotKeys, AHotKeyCanUnregisterItselfAndOthersFromItsCallback) {
  ScriptedCallback one{"one"}, two{"two"};
  TOKAHotKeyID oneID = HotKey(alpha, one, 'A', 0);
  TOKAHotKeyID twoID = HotKey(beta, two, 'A', 0);
  two.onCall = [&] {
    TOKAUnregisterHotKey(twoID);
    TOKAUnregisterHotKey(oneID);
    EXPECT_EQ(0, TOKACountHotKeys());
  };
  EXPECT_EQ((Lines{"two.hotkey()@2"}), Press('A', 0, 0));
  EXPECT_EQ(Lines{}, Press('A', 0, 1));
  EXPECT_EQ(nullptr, TOKAGetNthHotKey(0));
}

}  // namespace
