// The window calls, and what disabling and unloading a plugin withdraw from
// the display.
#include "harness/display_scripts.h"

using namespace toka_test;

namespace {

class Windows : public DisplayTest {};

void CountDraw(TOKAWindowID, void*) { Log("draw"); }
void CountKey(TOKAWindowID, char, int, char, void*, int losing) {
  Log("key" + std::to_string(losing));
}
int CountClick(TOKAWindowID, int, int, int status, void*) {
  Log("click" + std::to_string(status));
  return 1;
}

TEST_F(Windows, CreationTakesTheMouseCallbackBeforeTheKeyCallbackInTheParameterBlock) {
  const int size = (int)sizeof(TOKACreateWindow_t);  // 48 in the 32-bit library
  TOKACreateWindow_t params = {size, 0, 10, 10, 0, 1, CountDraw, CountClick, CountKey,
                               nullptr, nullptr, (void*)7};
  TOKAWindowID window = nullptr;
  for (int wrong : {size - 4, size + 4}) {
    params.structSize = wrong;
    RunAs(alpha, [&] { EXPECT_EQ(nullptr, TOKACreateWindowEx(&params)); });
  }
  EXPECT_EQ(nullptr, TOKACreateWindowEx(nullptr));
  EXPECT_EQ(1, TOKAMouseClickHook(5, 5, 1));
  params.structSize = size;
  RunAs(alpha, [&] { window = TOKACreateWindowEx(&params); });
  EXPECT_EQ((void*)7, TOKAGetWindowRefCon(window));
  EXPECT_EQ(0, TOKAMouseClickHook(5, 5, 1));
  TOKATakeKeyboardFocus(window);
  EXPECT_EQ(0, TOKAKeyPressHook('a', 0, 'A'));
  TOKADoDrawingHook(20, 0);  // a drag, then the drawing
  EXPECT_EQ((Lines{"click1@1", "key0@1", "click2@1", "draw@1"}), TakeEvents());

  // The plain call takes draw, key, mouse, and has no cursor or wheel.
  RunAs(beta, [&] {
    window = TOKACreateWindow(0, 10, 10, 0, 1, CountDraw, CountKey, CountClick, nullptr);
  });
  EXPECT_EQ(0, TOKAMouseClickHook(5, 5, 1));
  TOKATakeKeyboardFocus(window);  // the first window hears that it loses the focus
  EXPECT_EQ(0, TOKAKeyPressHook('a', 0, 'A'));
  EXPECT_EQ(0, TOKACursorHook(5, 5));
  EXPECT_EQ(1, TOKAScrollWheelHook(5, 5, 1, 1));
  EXPECT_EQ((Lines{"click1@2", "key1@1", "key0@2"}), Events());
}

TEST_F(Windows, UnknownHandlesAreIgnoredAndTheFrontWindowIsTheFirstVisibleOne) {
  ScriptedWindow back{"back"}, front{"front"};
  OpenWindow(alpha, back, 1, 20, 30, 4);
  OpenWindow(alpha, front, 0, 10, 10, 0);
  int unknown = 0, left = -1;
  TOKASetWindowGeometry(&unknown, 7, 7, 7, 7);
  TOKAGetWindowGeometry(&unknown, &left, nullptr, nullptr, nullptr);
  TOKASetWindowRefCon(&unknown, &back);
  TOKADestroyWindow(&unknown);
  EXPECT_EQ((std::vector<int>{0, -1}), (std::vector<int>{unknown, left}));
  EXPECT_EQ(nullptr, TOKAGetWindowRefCon(&unknown));
  EXPECT_EQ(0, TOKAIsWindowInFront(&unknown));

  EXPECT_EQ((std::vector<int>{1, 0}),
            (std::vector<int>{TOKAIsWindowInFront(front.id), TOKAIsWindowInFront(back.id)}));
  TOKASetWindowIsVisible(front.id, 0);
  EXPECT_EQ((std::vector<int>{0, 1}),
            (std::vector<int>{TOKAIsWindowInFront(front.id), TOKAIsWindowInFront(back.id)}));
  TOKASetWindowIsVisible(front.id, 5);
  TOKABringWindowToFront(back.id);
  EXPECT_EQ(1, TOKAIsWindowInFront(back.id));
  TOKADestroyWindow(back.id);
  EXPECT_EQ(0, TOKAGetWindowIsVisible(back.id));
  EXPECT_EQ(5, TOKAGetWindowIsVisible(front.id));
  EXPECT_EQ(1, TOKAIsWindowInFront(front.id));
}

TEST_F(Windows, UnloadingAPluginWithdrawsItsDisplayRecordsAndReleasesFocusAndDrag) {
  AddAircraftPlugin("gps");
  TOKAEventHook(3, 0, 0, 0);
  const int gps = 3;
  ASSERT_EQ(1, TOKAIsPluginEnabled(gps));

  ScriptedCallback draw{"draw"}, sniffer{"sniffer"}, hot{"hot"}, kept{"kept"};
  ScriptedWindow window{"w"}, other{"other"};
  Draw(gps, draw, 0, 1);
  Sniff(gps, sniffer, 0);
  HotKey(gps, hot, 'H', 0);
  HotKey(alpha, kept, 'K', 0);
  OpenWindow(alpha, other, 0, 10, 10, 0);
  OpenWindow(gps, window, 0, 10, 10, 0);
  EXPECT_EQ(0, TOKAMouseClickHook(1, 1, 1));
  RunAs(gps, [&] { TOKATakeKeyboardFocus(window.id); });
  MouseAt(8, 9);
  host.ClearRecords();

  EXPECT_EQ((Lines{"alpha.message(0,106,0)@1", "beta.message(0,106,0)@2",
                   "gps.message(0,106,0)@3", "w.key(0,0,0,0,1)@3", "w.mouse(8,9,3)@3",
                   "gps.disable@3", "gps.stop@3"}),
            During([] { TOKAEventHook(8, 0, 0, 0); }));
  ASSERT_EQ(1u, host.CountCalls(3));
  EXPECT_EQ(0u, host.CallsTo(3)[0].words[2]);  // the library itself asks where the mouse is
  EXPECT_EQ(1, TOKACountHotKeys());
  EXPECT_EQ(0, TOKAGetWindowIsVisible(window.id));
  // The records are gone, not merely refused: the same registrations are new.
  RunAs(alpha, [&] {
    EXPECT_EQ(1, TOKARegisterDrawCallback(DrawThunk, 0, 1, &draw));
    EXPECT_EQ(1, TOKARegisterKeySniffer(SnifferThunk, 0, &sniffer));
  });
  EXPECT_EQ((Lines{"sniffer.sniff(104,0,72)@1", "draw.draw(0,1)@1", "other.draw()@1"}),
            During([] {
              EXPECT_EQ(1, TOKAKeyPressHook('h', 0, 'H'));
              TOKADoDrawingHook(1, 0);
              TOKADoDrawingHook(20, 0);  // no drag is left to poll
            }));
  EXPECT_EQ(1u, host.CountCalls(3));
}

}  // namespace
