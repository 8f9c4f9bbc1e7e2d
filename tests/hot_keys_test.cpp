// Hot keys: listing, re-binding and dispatch against sniffers and windows.
#include <cstring>

#include "harness/display_scripts.h"

using namespace toka_test;

namespace {

class HotKeys : public DisplayTest {
protected:
  Calls Press(char virtualKey, int flags, int expected) {
    DisplayCalls().clear();
    EXPECT_EQ(expected, TOKAKeyPressHook('x', flags, virtualKey));
    return DisplayCalls();
  }
};

TEST_F(HotKeys, AreListedNewestFirstAndCanBeReadAndRebound) {
  Start();
  ScriptedCallback one{"one"}, two{"two"}, three{"three"};
  std::string longText(600, 'd');
  longText[510] = 'e';
  TOKAHotKeyID first = HotKey(alpha, one, 'A', 1, "first");
  TOKAHotKeyID second = HotKey(beta, two, 'A', 1, longText.c_str());
  TOKAHotKeyID third = HotKey(alpha, three, 'B', 0, "third");
  ASSERT_EQ(3, TOKACountHotKeys());
  EXPECT_EQ(third, TOKAGetNthHotKey(0));
  EXPECT_EQ(second, TOKAGetNthHotKey(1));
  EXPECT_EQ(first, TOKAGetNthHotKey(2));
  EXPECT_EQ(nullptr, TOKAGetNthHotKey(3));

  char key = 0;
  int flags = 0, plugin = 0;
  char text[600];
  std::memset(text, 'z', sizeof text);
  TOKAGetHotKeyInfo(second, &key, &flags, text, &plugin);
  EXPECT_EQ('A', key);
  EXPECT_EQ(1, flags);
  EXPECT_EQ(longText.substr(0, 511), text);
  EXPECT_EQ('z', text[512]);
  EXPECT_EQ(beta, plugin);

  TOKASetHotKeyCombination(first, 'C', 4);
  TOKAGetHotKeyInfo(first, &key, &flags, nullptr, nullptr);
  EXPECT_EQ('C', key);
  EXPECT_EQ(4, flags);
  int unknown = 0;
  TOKAGetHotKeyInfo(&unknown, &key, &flags, text, &plugin);
  TOKASetHotKeyCombination(&unknown, 'Q', 9);
  EXPECT_EQ('C', key);
  EXPECT_EQ(0, unknown);

  TOKAUnregisterHotKey(second);
  EXPECT_EQ(2, TOKACountHotKeys());
  EXPECT_EQ(first, TOKAGetNthHotKey(1));
  TOKAUnregisterHotKey(&unknown);
  EXPECT_EQ(2, TOKACountHotKeys());
}

TEST_F(HotKeys, TheNewestEnabledBindingOfTheExactCombinationWins) {
  Start();
  ScriptedCallback older{"older"}, newer{"newer"};
  TOKAHotKeyID olderID = HotKey(alpha, older, 'A', 1);
  HotKey(beta, newer, 'A', 1);
  ScriptedWindow window{"w"};
  OpenWindow(alpha, window, 0, 10, 10, 0);
  TOKATakeKeyboardFocus(window.id);

  EXPECT_EQ((Calls{"newer.hotkey()" + At(beta)}), Press('A', 1, 0));
  EXPECT_EQ((Calls{"w.key(120,3,65,w,0)" + At(alpha)}), Press('A', 3, 0));
  TOKADisablePlugin(beta);
  EXPECT_EQ((Calls{"older.hotkey()" + At(alpha)}), Press('A', 1, 0));
  TOKASetHotKeyCombination(olderID, 'B', 0);
  EXPECT_EQ((Calls{"w.key(120,1,65,w,0)" + At(alpha)}), Press('A', 1, 0));
  EXPECT_EQ((Calls{"older.hotkey()" + At(alpha)}), Press('B', 0, 0));
}

TEST_F(HotKeys, AHotKeyCanUnregisterItselfAndOthersFromItsCallback) {
  Start();
  ScriptedCallback one{"one"}, two{"two"};
  TOKAHotKeyID oneID = HotKey(alpha, one, 'A', 0);
  TOKAHotKeyID twoID = HotKey(beta, two, 'A', 0);
  two.onCall = [&] {
    TOKAUnregisterHotKey(twoID);
    TOKAUnregisterHotKey(oneID);
    EXPECT_EQ(0, TOKACountHotKeys());
  };
  EXPECT_EQ((Calls{"two.hotkey()" + At(beta)}), Press('A', 0, 0));
  EXPECT_EQ(Calls{}, Press('A', 0, 1));
  EXPECT_EQ(nullptr, TOKAGetNthHotKey(0));
}

}  // namespace
