// The window calls, and what unloading a plugin withdraws from the display.
#include <cstring>

#include "harness/display_scripts.h"

using namespace toka_test;

namespace {

class Windows : public DisplayTest {};

int gDrawn = 0, gKeys = 0, gClicks = 0;
void CountDraw(TOKAWindowID, void*) { ++gDrawn; }
void CountKey(TOKAWindowID, char, int, char, void*, int) { ++gKeys; }
int CountClick(TOKAWindowID, int, int, int, void*) { return ++gClicks; }

TEST_F(Windows, CreationTakesTheMouseCallbackBeforeTheKeyCallbackInTheParameterBlock) {
  Start();
  // The block as a plugin lays it out: twelve words.
  void* words[12] = {
      (void*)48,       0, (void*)10, (void*)10, 0, (void*)1, (void*)CountDraw, (void*)CountClick,
      (void*)CountKey, 0, 0,         (void*)7};
  TOKAWindowID window = nullptr;
  for (intptr_t size : {44, 52}) {
    words[0] = (void*)size;
    RunAs(alpha, [&] { EXPECT_EQ(nullptr, TOKACreateWindowEx((TOKACreateWindow_t*)words)); });
  }
  EXPECT_EQ(nullptr, TOKACreateWindowEx(nullptr));
  EXPECT_EQ(1, TOKAMouseClickHook(5, 5, 1));
  words[0] = (void*)48;
  RunAs(alpha, [&] { window = TOKACreateWindowEx((TOKACreateWindow_t*)words); });
  EXPECT_EQ((void*)7, TOKAGetWindowRefCon(window));
  EXPECT_EQ(0, TOKAMouseClickHook(5, 5, 1));  // the click went to the mouse callback
  EXPECT_EQ(1, gClicks);
  TOKATakeKeyboardFocus(window);
  EXPECT_EQ(0, TOKAKeyPressHook('a', 0, 'A'));
  EXPECT_EQ(1, gKeys);
  TOKADoDrawingHook(20, 0);  // a drag, then the drawing
  EXPECT_EQ(2, gClicks);
  EXPECT_EQ(1, gDrawn);

  // The plain call takes draw, key, mouse, and has no cursor or wheel.
  RunAs(beta, [&] {
    window = TOKACreateWindow(0, 10, 10, 0, 1, CountDraw, CountKey, CountClick, nullptr);
  });
  EXPECT_EQ(0, TOKAMouseClickHook(5, 5, 1));
  EXPECT_EQ(3, gClicks);
  TOKATakeKeyboardFocus(window);  // the first window hears that it loses the focus
  EXPECT_EQ(0, TOKAKeyPressHook('a', 0, 'A'));
  EXPECT_EQ(3, gKeys);
  EXPECT_EQ(0, TOKACursorHook(5, 5));
  EXPECT_EQ(1, TOKAScrollWheelHook(5, 5, 1, 1));
}

TEST_F(Windows, GeometryVisibilityRefconAndOrderAreKeptPerWindow) {
  Start();
  ScriptedWindow back{"back"}, front{"front"};
  OpenWindow(alpha, back, 1, 20, 30, 4);
  OpenWindow(alpha, front, 0, 10, 10, 0);
  int unknown = 0;
  int left = -1, top = -1, right = -1, bottom = -1;
  TOKASetWindowGeometry(&unknown, 7, 7, 7, 7);
  TOKAGetWindowGeometry(&unknown, &left, &top, &right, &bottom);
  TOKASetWindowRefCon(&unknown, &back);
  EXPECT_EQ((std::vector<int>{0, -1, -1, -1, -1}),
            (std::vector<int>{unknown, left, top, right, bottom}));
  TOKAGetWindowGeometry(back.id, &left, &top, &right, &bottom);
  EXPECT_EQ((std::vector<int>{1, 20, 30, 4}), (std::vector<int>{left, top, right, bottom}));
  TOKASetWindowGeometry(back.id, 5, 2, 3, 9);  // not checked
  TOKAGetWindowGeometry(back.id, &left, nullptr, nullptr, &bottom);
  EXPECT_EQ((std::vector<int>{5, 9}), (std::vector<int>{left, bottom}));
  TOKASetWindowRefCon(front.id, &unknown);
  EXPECT_EQ(&unknown, TOKAGetWindowRefCon(front.id));
  EXPECT_EQ(&back, TOKAGetWindowRefCon(back.id));
  EXPECT_EQ(nullptr, TOKAGetWindowRefCon(&unknown));

  EXPECT_EQ(1, TOKAIsWindowInFront(front.id));
  EXPECT_EQ(0, TOKAIsWindowInFront(back.id));
  TOKASetWindowIsVisible(front.id, 0);
  EXPECT_EQ(0, TOKAGetWindowIsVisible(front.id));
  EXPECT_EQ(0, TOKAIsWindowInFront(front.id));
  EXPECT_EQ(1, TOKAIsWindowInFront(back.id));
  TOKASetWindowIsVisible(front.id, 5);
  EXPECT_EQ(5, TOKAGetWindowIsVisible(front.id));
  TOKABringWindowToFront(back.id);
  EXPECT_EQ(1, TOKAIsWindowInFront(back.id));
  EXPECT_EQ(0, TOKAIsWindowInFront(&unknown));
  TOKADestroyWindow(&unknown);
  TOKADestroyWindow(back.id);
  EXPECT_EQ(0, TOKAGetWindowIsVisible(back.id));
  EXPECT_EQ(1, TOKAIsWindowInFront(front.id));
}

TEST_F(Windows, ScreenSizeAndMouseLocationComeFromTheSimulator) {
  Start();
  host.onCall[2] = [](const HostCall& call) -> intptr_t {
    *call.arg<int*>(0) = 1024;
    *call.arg<int*>(1) = 768;
    return 0;
  };
  MouseAt(12, 34);
  int width = 0, height = 0, x = 0, y = 0;
  TOKAGetScreenSize(&width, &height);
  TOKAGetMouseLocation(&x, &y);
  EXPECT_EQ((std::vector<int>{1024, 768, 12, 34}), (std::vector<int>{width, height, x, y}));
  std::vector<HostCall> mouse = host.CallsTo(3);
  ASSERT_EQ(1u, mouse.size());
  EXPECT_EQ(1u, mouse[0].words[2]);  // a plugin is asking
}

TEST_F(Windows, UnloadingAPluginWithdrawsItsDisplayRecordsAndReleasesFocusAndDrag) {
  AddScripted("alpha.orv", "alpha");
  Initialize();
  alpha = TOKAFindPluginBySignature("test.alpha");
  std::string aircraft = tree.root() + "Aircraft/C172/c172.acf";
  tree.AddPlugin("Aircraft/C172/plugins/gps/lin.orv", "scripted");
  PluginScript& gpsScript = Script(tree.root() + "Aircraft/C172/plugins/gps/lin.orv");
  gpsScript.name = "gps";
  gpsScript.signature = "test.gps";
  host.onCall[18] = [aircraft](const HostCall& call) -> intptr_t {
    std::strcpy(call.arg<char*>(1), aircraft.c_str());
    std::strcpy(call.arg<char*>(2), "c172.acf");
    return 0;
  };
  TOKAEventHook(3, 0, 0, 0);
  int gps = TOKAFindPluginBySignature("test.gps");
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
  DisplayCalls().clear();

  TOKAEventHook(8, 0, 0, 0);
  EXPECT_EQ((Calls{"w.key(0,0,0,0,1)" + At(gps), "w.mouse(8,9,3)" + At(gps)}), DisplayCalls());
  EXPECT_EQ(1, TOKACountHotKeys());
  EXPECT_EQ(0, TOKAGetWindowIsVisible(window.id));
  // The records are gone, not merely refused: the same registrations are new.
  RunAs(alpha, [&] {
    EXPECT_EQ(1, TOKARegisterDrawCallback(DrawThunk, 0, 1, &draw));
    EXPECT_EQ(1, TOKARegisterKeySniffer(SnifferThunk, 0, &sniffer));
  });
  DisplayCalls().clear();
  EXPECT_EQ(1, TOKAKeyPressHook('h', 0, 'H'));
  TOKADoDrawingHook(1, 0);
  TOKADoDrawingHook(20, 0);
  EXPECT_EQ((Calls{"sniffer.sniff(104,0,72)" + At(alpha), "draw.draw(0,1)" + At(alpha),
                   "other.draw()" + At(alpha)}),
            DisplayCalls());
}

}  // namespace
