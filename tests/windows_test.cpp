// The window calls, draw callbacks by phase and the simulator's drawing
// codes, and what disabling and unloading a plugin withdraw from the display.
#include "harness/display_scripts.h"

#include <deque>

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

TEST_F(Windows, CreationChecksTheParameterBlocksSizeAndTakesMouseBeforeKey) {
  const int size = (int)sizeof(TOKACreateWindow_t);  // 48 in the 32-bit library
  TOKACreateWindow_t params = {size, 0, 10, 10, 0, 1, CountDraw, CountClick, CountKey,
                               nullptr, nullptr, (void*)7};
  TOKAWindowID window = nullptr;
  for (int wrong : {size - 4, size + 4}) {
    params.structSize = wrong;
    RunAs(alpha, [&] { EXPECT_EQ(nullptr, TOKACreateWindowEx(&params)); });
  }
  params.structSize = size;
  RunAs(alpha, [&] { window = TOKACreateWindowEx(&params); });
  EXPECT_EQ((void*)7, TOKAGetWindowRefCon(window));
  EXPECT_EQ(0, TOKAMouseClickHook(5, 5, 1));
  TOKATakeKeyboardFocus(window);
  EXPECT_EQ(0, TOKAKeyPressHook('a', 0, 'A'));
  TOKADoDrawingHook(20, 0);  // a drag, then the drawing
  EXPECT_EQ((Lines{"click1@1", "key0@1", "click2@1", "draw@1"}), TakeEvents());
  TOKAMouseClickHook(5, 5, 0);
  // A window made without callbacks, in front, draws nothing and passes the
  // click on.
  RunAs(beta, [] { TOKACreateWindow(0, 10, 10, 0, 1, nullptr, nullptr, nullptr, nullptr); });
  TakeEvents();
  EXPECT_EQ(0, TOKAMouseClickHook(5, 5, 1));
  TOKADoDrawingHook(20, 0);
  EXPECT_EQ((Lines{"click1@1", "click2@1", "draw@1"}), Events());
}

TEST_F(Windows, UnloadingAPluginWithdrawsItsDisplayRecordsAndReleasesFocusAndDrag) {
  AddAircraftPlugin("gps");
  TOKAEventHook(3, 0, 0, 0);
  const int gps = 3;
  ScriptedCallback draw{"draw"}, sniffer{"sniffer"}, hot{"hot"};
  ScriptedWindow window{"w"};
  Draw(gps, draw, 0, 1);
  Sniff(gps, sniffer, 0);
  HotKey(gps, hot, 'H', 0);
  OpenWindow(gps, window, 0, 10, 10, 0);
  EXPECT_EQ(0, TOKAMouseClickHook(1, 1, 1));
  RunAs(gps, [&] { TOKATakeKeyboardFocus(window.id); });
  MouseAt(8, 9);

  EXPECT_EQ((Lines{"alpha.message(0,106,0)@1", "beta.message(0,106,0)@2",
                   "gps.message(0,106,0)@3", "w.key(0,0,0,0,1)@3", "w.mouse(8,9,3)@3",
                   "gps.disable@3", "gps.stop@3"}),
            During([] { TOKAEventHook(8, 0, 0, 0); }));
  EXPECT_EQ(0, TOKACountHotKeys());
  EXPECT_EQ(0, TOKAGetWindowIsVisible(window.id));
  // The records are gone, not merely refused: the same registrations are new.
  RunAs(alpha, [&] {
    EXPECT_EQ(1, TOKARegisterDrawCallback(DrawThunk, 0, 1, &draw));
    EXPECT_EQ(1, TOKARegisterKeySniffer(SnifferThunk, 0, &sniffer));
  });
}

class Drawing : public DisplayTest {
protected:
  Lines Frame(int code = 20, int expected = 1) {
    return During([=] { EXPECT_EQ(expected, TOKADoDrawingHook(code, 0)) << code; });
  }
};

TEST_F(Drawing, TwentyDrawsTheVisibleWindowsBackToFrontAheadOfItsCallbacks) {
  ScriptedCallback after{"after"};
  Draw(alpha, after, 50, 0);
  ScriptedWindow back{"back"}, hidden{"hidden"}, front{"front"};
  OpenWindow(alpha, back, 0, 100, 100, 0);
  OpenWindow(beta, hidden, 0, 100, 100, 0, 0);
  OpenWindow(beta, front, 50, 100, 150, 0);
  EXPECT_EQ((Lines{"back.draw()@1", "front.draw()@2", "after.draw(50,0)@1"}), Frame(20));
}

TEST_F(Drawing, EachCodeServesItsOwnPhaseAndPositionsAndReportsAsPluginsExpect) {
  // Every drawn phase has a before and an after callback, both answering 0.
  std::deque<ScriptedCallback> callbacks;
  for (int phase : {0, 5, 10, 15, 20, 25, 30, 35, 40, 45, 50, 55, 100, 101, 102})
    for (int before : {1, 0}) {
      callbacks.emplace_back((before ? "b" : "a") + std::to_string(phase), 0);
      Draw(alpha, callbacks.back(), phase, before);
    }
  auto both = [](int phase) {
    std::string p = std::to_string(phase);
    return Lines{"b" + p + ".draw(" + p + ",1)@1", "a" + p + ".draw(" + p + ",0)@1"};
  };
  auto before = [](int phase) {
    std::string p = std::to_string(phase);
    return Lines{"b" + p + ".draw(" + p + ",1)@1"};
  };
  auto after = [](int phase) {
    std::string p = std::to_string(phase);
    return Lines{"a" + p + ".draw(" + p + ",0)@1"};
  };
  // Codes 12 and 18 never let the before callbacks skip their phase, 55 comes
  // ahead of 50 and 101 ahead of 100; codes outside 1 to 26 draw nothing.
  const std::vector<std::pair<Lines, int>> expected = {
      {{}, 1},          {both(0), 0},     {before(5), 0},  {after(5), 1},    {before(10), 0},
      {after(10), 1},   {before(15), 0},  {after(15), 1},  {before(20), 0},  {after(20), 1},
      {before(25), 0},  {after(25), 1},   {both(30), 1},   {both(35), 0},    {before(40), 0},
      {after(40), 1},   {before(45), 0},  {after(45), 1},  {both(55), 1},    {before(50), 0},
      {after(50), 1},   {before(101), 0}, {after(101), 1}, {before(100), 0}, {after(100), 1},
      {before(102), 0}, {after(102), 1},  {{}, 1}};
  for (int code = 0; code < (int)expected.size(); ++code)
    EXPECT_EQ(expected[code].first, Frame(code, expected[code].second)) << "code " << code;
}

TEST_F(Drawing, BeforeResultsAreAndedBitwiseOverEveryCallbackThatRan) {
  ScriptedCallback x{"x", 3}, y{"y", 0}, z{"z", 5};
  Draw(alpha, x, 5, 1);
  Draw(beta, y, 5, 1);
  Draw(alpha, z, 5, 1);
  EXPECT_EQ((Lines{"z.draw(5,1)@1", "y.draw(5,1)@2", "x.draw(5,1)@1"}), Frame(2, 0));
  // A refused call leaves the result alone.
  TOKADisablePlugin(beta);
  EXPECT_EQ((Lines{"z.draw(5,1)@1", "x.draw(5,1)@1"}), Frame(2, 1));
  // 2 is not "draw": 1 & 2 is 0.
  ScriptedCallback w{"w", 2};
  Draw(alpha, w, 5, 1);
  Frame(2, 0);
}

TEST_F(Drawing, ReflectionPassesCallOnlyPluginsThatAskForThem) {
  RunAs(alpha, [] { TOKAEnableFeature("TOKA_WANTS_REFLECTIONS", 1); });
  ScriptedCallback a{"a"}, b{"b"};
  Draw(alpha, a, 10, 0);
  Draw(beta, b, 10, 0);
  EXPECT_EQ((Lines{"a.draw(10,0)@1"}), During([] { TOKADoDrawingHook(5, 1); }));
  EXPECT_EQ((Lines{"b.draw(10,0)@2", "a.draw(10,0)@1"}), During([] { TOKADoDrawingHook(5, 0); }));
}

// Callbacks that remove draw callbacks and windows while the drawing walk
// stands on them: the removed are not called or found again, a callback
// registered during the walk waits for the next frame.
TEST_F(Drawing, CallbacksAndWindowsRemovedWhileDrawingAreNotCalledAgain) {
  ScriptedCallback a{"a"}, b{"b"}, c{"c"}, e{"e"};
  Draw(beta, c, 20, 1);
  Draw(alpha, b, 20, 1);
  Draw(alpha, a, 20, 1);
  a.onCall = [&] { EXPECT_EQ(1, TOKAUnregisterDrawCallback(DrawThunk, 20, 1, &a)); };
  b.onCall = [&] {
    TOKAUnregisterDrawCallback(DrawThunk, 20, 1, &c);
    if (!e.onCall) Draw(alpha, e, 20, 1);
    e.onCall = [] {};
  };
  EXPECT_EQ((Lines{"a.draw(20,1)@1", "b.draw(20,1)@1"}), Frame(8));
  EXPECT_EQ((Lines{"e.draw(20,1)@1", "b.draw(20,1)@1"}), Frame(8));

  ScriptedWindow back{"back"}, middle{"middle"}, front{"front"};
  OpenWindow(alpha, back, 0, 10, 10, 0);
  OpenWindow(beta, middle, 0, 10, 10, 0);
  OpenWindow(alpha, front, 0, 10, 10, 0);
  back.onDraw = [&] {
    TOKADestroyWindow(back.id);
    TOKADestroyWindow(middle.id);
    EXPECT_EQ(nullptr, TOKAGetWindowRefCon(back.id));
  };
  EXPECT_EQ((Lines{"back.draw()@1", "front.draw()@1"}), Frame());
  front.onDraw = [&] { TOKADestroyWindow(front.id); };
  EXPECT_EQ((Lines{"front.draw()@1"}), Frame());
  EXPECT_EQ(Lines{}, Frame());
  // A phase with nothing to draw draws what a callback has since registered.
  ScriptedCallback sky{"sky"}, late{"late"};
  Draw(alpha, sky, 5, 1);
  sky.onCall = [&] { Draw(beta, late, 45, 0); };
  EXPECT_EQ(Lines{}, Frame(17));
  EXPECT_EQ((Lines{"sky.draw(5,1)@1"}), Frame(2));
  EXPECT_EQ((Lines{"late.draw(45,0)@2"}), Frame(17));
}

}  // namespace
