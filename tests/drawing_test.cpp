// Draw callbacks by phase, the simulator's drawing codes and window drawing.
#include <deque>
#include <set>
#include <sstream>

#include "harness/display_scripts.h"

using namespace toka_test;

namespace {

class Drawing : public DisplayTest {
protected:
  Lines Frame(int code = 20, int expected = 1) {
    return During([=] { EXPECT_EQ(expected, TOKADoDrawingHook(code, 0)) << code; });
  }
};

TEST_F(Drawing, AWholeFrameServesEachPhaseAtItsCodeAndDrawsWindowsAtTwenty) {
  // Before callbacks (alpha's) of these phases ask to skip the phase; after
  // callbacks (beta's) all answer 0, which no code may report.
  const std::set<int> skipped = {0, 5, 15, 30, 35, 50, 55, 100, 102};
  std::deque<ScriptedCallback> callbacks;
  for (int phase : {0, 5, 10, 15, 20, 25, 30, 35, 40, 45, 50, 55, 100, 101, 102}) {
    callbacks.push_back({"B" + std::to_string(phase), skipped.count(phase) ? 0 : 1});
    Draw(alpha, callbacks.back(), phase, 1);
    callbacks.push_back({"A" + std::to_string(phase), 0});
    Draw(beta, callbacks.back(), phase, 0);
  }
  ScriptedWindow back{"back"}, hidden{"hidden"}, front{"front"};
  OpenWindow(alpha, back, 0, 100, 100, 0);
  OpenWindow(beta, hidden, 0, 100, 100, 0, 0);
  OpenWindow(beta, front, 50, 100, 150, 0);
  EXPECT_EQ(0, TOKAMouseClickHook(120, 10, 1));  // front becomes the drag window
  MouseAt(33, 44);
  host.ClearRecords();

  // Each code with its result and the callbacks it runs; W is the drag poll
  // and the windows, back to front.
  const std::vector<std::pair<int, const char*>> frame = {
      {0, "B0 A0"}, {0, "B5"},   {1, "A5"},   {1, "B10"},  {1, "A10"},  {0, "B15"},
      {1, "A15"},   {1, "B20"},  {1, "A20"},  {1, "B25"},  {1, "A25"},  {1, "B30 A30"},
      {0, "B35 A35"}, {1, "B40"}, {1, "A40"},  {1, "B45"},  {1, "A45"},  {1, "B55 A55"},
      {0, "B50"},   {1, "W A50"}, {1, "B101"}, {1, "A101"}, {0, "B100"}, {1, "A100"},
      {0, "B102"},  {1, "A102"}};
  for (int code = 1; code <= 26; ++code) {
    Lines expected;
    std::istringstream calls(frame[code - 1].second);
    for (std::string call; calls >> call;) {
      if (call == "W")
        expected.insert(expected.end(),
                        {"front.mouse(33,44,2)@2", "back.draw()@1", "front.draw()@2"});
      else
        expected.push_back(call + ".draw(" + call.substr(1) + "," +
                           (call[0] == 'B' ? "1)@1" : "0)@2"));
    }
    EXPECT_EQ(expected, Frame(code, frame[code - 1].first)) << "code " << code;
  }
  for (int code : {0, 27, -1}) EXPECT_EQ(Lines{}, Frame(code));
  // The drag poll asked where the mouse is as the library itself.
  ASSERT_EQ(1u, host.CountCalls(3));
  EXPECT_EQ(0u, host.CallsTo(3)[0].words[2]);
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

  // The owner is not part of a registration's identity.
  RunAs(alpha, [&] {
    EXPECT_EQ(0, TOKARegisterDrawCallback(DrawThunk, 5, 1, &y));
    EXPECT_EQ(1, TOKAUnregisterDrawCallback(DrawThunk, 5, 1, &y));
    EXPECT_EQ(0, TOKAUnregisterDrawCallback(DrawThunk, 5, 1, &y));
    EXPECT_EQ(0, TOKAUnregisterDrawCallback(DrawThunk, 5, 0, &w));
    EXPECT_EQ(1, TOKAUnregisterDrawCallback(DrawThunk, 5, 1, &w));
  });
  TOKAEnablePlugin(beta);
  Frame(2, 1);
}

TEST_F(Drawing, ReflectionPassesCallOnlyPluginsThatAskForThem) {
  RunAs(alpha, [] { TOKAEnableFeature("TOKA_WANTS_REFLECTIONS", 1); });
  ScriptedCallback a{"a"}, b{"b"};
  Draw(alpha, a, 10, 0);
  Draw(beta, b, 10, 0);
  EXPECT_EQ((Lines{"a.draw(10,0)@1"}), During([] { TOKADoDrawingHook(5, 1); }));
  for (int flag : {0, 2})
    EXPECT_EQ((Lines{"b.draw(10,0)@2", "a.draw(10,0)@1"}),
              During([=] { TOKADoDrawingHook(5, flag); }))
        << "flag " << flag;
}

TEST_F(Drawing, DrawCallbacksRemovedWhileTheirPhaseRunsAreNotCalledAgain) {
  ScriptedCallback a{"a"}, b{"b"}, c{"c"}, d{"d"};
  Draw(beta, d, 20, 1);
  Draw(beta, c, 20, 1);
  Draw(alpha, b, 20, 1);
  Draw(alpha, a, 20, 1);
  a.onCall = [&] { EXPECT_EQ(1, TOKAUnregisterDrawCallback(DrawThunk, 20, 1, &a)); };
  std::vector<int> removed;
  ScriptedCallback e{"e"};
  b.onCall = [&] {
    removed.push_back(TOKAUnregisterDrawCallback(DrawThunk, 20, 1, &c));
    // A registration, then a drawing code run from inside the walk: the walk
    // goes on as it started, and the new callback waits for the next frame.
    if (removed.size() == 1) Draw(alpha, e, 20, 1);
    TOKADoDrawingHook(9, 0);
  };
  EXPECT_EQ((Lines{"a.draw(20,1)@1", "b.draw(20,1)@1", "d.draw(20,1)@2"}), Frame(8));
  EXPECT_EQ((Lines{"e.draw(20,1)@1", "b.draw(20,1)@1", "d.draw(20,1)@2"}), Frame(8));
  EXPECT_EQ((std::vector<int>{1, 0}), removed);
}

TEST_F(Drawing, WindowsDestroyedWhileDrawingAreNotDrawnOrFoundAgain) {
  ScriptedWindow back{"back"}, middle{"middle"}, front{"front"};
  OpenWindow(alpha, back, 0, 10, 10, 0);
  OpenWindow(beta, middle, 0, 10, 10, 0);
  OpenWindow(alpha, front, 0, 10, 10, 0);
  // The window list is reclaimed by the lookup while the drawing walk
  // stands on the destroyed back window.
  back.onDraw = [&] {
    TOKADestroyWindow(back.id);
    TOKADestroyWindow(middle.id);
    EXPECT_EQ(0, TOKAGetWindowIsVisible(middle.id));
    EXPECT_EQ(nullptr, TOKAGetWindowRefCon(back.id));
    EXPECT_EQ(&front, TOKAGetWindowRefCon(front.id));
  };
  EXPECT_EQ((Lines{"back.draw()@1", "front.draw()@1"}), Frame());
  EXPECT_EQ((Lines{"front.draw()@1"}), Frame());
  front.onDraw = [&] { TOKADestroyWindow(front.id); };
  EXPECT_EQ((Lines{"front.draw()@1"}), Frame());
  EXPECT_EQ(Lines{}, Frame());
}

TEST_F(Drawing, AWindowBroughtToFrontWhileDrawnEndsTheFrameAndIsOnTopAfterwards) {
  ScriptedWindow back{"back"}, middle{"middle"}, front{"front"};
  OpenWindow(alpha, back, 0, 10, 10, 0);
  OpenWindow(alpha, middle, 0, 10, 10, 0);
  OpenWindow(beta, front, 0, 10, 10, 0);
  middle.onDraw = [&] { TOKABringWindowToFront(middle.id); };
  // The move is immediate: the walk back to front stops at the moved window.
  EXPECT_EQ((Lines{"back.draw()@1", "middle.draw()@1"}), Frame());
  middle.onDraw = nullptr;
  EXPECT_EQ((Lines{"back.draw()@1", "front.draw()@2", "middle.draw()@1"}), Frame());
  EXPECT_EQ(1, TOKAIsWindowInFront(middle.id));
}

}  // namespace
