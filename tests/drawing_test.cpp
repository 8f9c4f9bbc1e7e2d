// Draw callbacks by phase, the simulator's drawing codes and window drawing.
#include <deque>
#include <set>

#include "harness/display_scripts.h"

using namespace toka_test;

namespace {

class Drawing : public DisplayTest {
protected:
  Calls Frame(int code = 20) {
    return During([code] { TOKADoDrawingHook(code, 0); });
  }
};

TEST_F(Drawing, AWholeFrameServesEachPhaseAtItsCodeAndDrawsWindowsAtTwenty) {
  Start();
  // Before callbacks of these phases ask to skip the phase; after callbacks
  // all answer 0, which no code may report.
  const std::set<int> skipped = {0, 5, 15, 30, 35, 50, 55, 100, 102};
  std::deque<ScriptedCallback> callbacks;
  for (int phase : {0, 5, 10, 15, 20, 25, 30, 35, 40, 45, 50, 55, 100, 101, 102}) {
    callbacks.push_back({"b" + std::to_string(phase), skipped.count(phase) ? 0 : 1});
    Draw(alpha, callbacks.back(), phase, 1);
    callbacks.push_back({"a" + std::to_string(phase), 0});
    Draw(beta, callbacks.back(), phase, 0);
  }
  ScriptedWindow back{"back"}, hidden{"hidden"}, front{"front"};
  OpenWindow(alpha, back, 0, 100, 100, 0);
  OpenWindow(beta, hidden, 0, 100, 100, 0, 0);
  OpenWindow(beta, front, 50, 100, 150, 0);
  EXPECT_EQ(0, TOKAMouseClickHook(120, 10, 1));  // front becomes the drag window
  MouseAt(33, 44);
  host.ClearRecords();

  auto B = [&](int phase) {
    return "b" + std::to_string(phase) + ".draw(" + std::to_string(phase) + ",1)" + At(alpha);
  };
  auto A = [&](int phase) {
    return "a" + std::to_string(phase) + ".draw(" + std::to_string(phase) + ",0)" + At(beta);
  };
  // The drag poll, then the windows back to front, then after phase 50.
  const Calls windows = {"front.mouse(33,44,2)" + At(beta), "back.draw()" + At(alpha),
                         "front.draw()" + At(beta), A(50)};
  struct Code {
    int code;
    int result;
    Calls calls;
  };
  const std::vector<Code> frame = {
      {1, 0, {B(0), A(0)}},
      {2, 0, {B(5)}},
      {3, 1, {A(5)}},
      {4, 1, {B(10)}},
      {5, 1, {A(10)}},
      {6, 0, {B(15)}},
      {7, 1, {A(15)}},
      {8, 1, {B(20)}},
      {9, 1, {A(20)}},
      {10, 1, {B(25)}},
      {11, 1, {A(25)}},
      {12, 1, {B(30), A(30)}},
      {13, 0, {B(35), A(35)}},
      {14, 1, {B(40)}},
      {15, 1, {A(40)}},
      {16, 1, {B(45)}},
      {17, 1, {A(45)}},
      {18, 1, {B(55), A(55)}},
      {19, 0, {B(50)}},
      {20, 1, windows},
      {21, 1, {B(101)}},
      {22, 1, {A(101)}},
      {23, 0, {B(100)}},
      {24, 1, {A(100)}},
      {25, 0, {B(102)}},
      {26, 1, {A(102)}},
  };
  for (const Code& code : frame) {
    DisplayCalls().clear();
    EXPECT_EQ(code.result, TOKADoDrawingHook(code.code, 0)) << "code " << code.code;
    EXPECT_EQ(code.calls, DisplayCalls()) << "code " << code.code;
  }
  for (int code : {0, 27, -1}) {
    DisplayCalls().clear();
    EXPECT_EQ(1, TOKADoDrawingHook(code, 0));
    EXPECT_TRUE(DisplayCalls().empty()) << "code " << code;
  }
  // The drag poll asked where the mouse is as the library itself.
  std::vector<HostCall> polls = host.CallsTo(3);
  ASSERT_EQ(1u, polls.size());
  EXPECT_EQ(0u, polls[0].words[2]);
}

TEST_F(Drawing, BeforeResultsAreAndedBitwiseOverEveryCallbackThatRan) {
  Start();
  ScriptedCallback x{"x", 3}, y{"y", 0}, z{"z", 5};
  Draw(alpha, x, 5, 1);
  Draw(beta, y, 5, 1);
  Draw(alpha, z, 5, 1);
  EXPECT_EQ(0, TOKADoDrawingHook(2, 0));
  EXPECT_EQ((Calls{"z.draw(5,1)" + At(alpha), "y.draw(5,1)" + At(beta), "x.draw(5,1)" + At(alpha)}),
            DisplayCalls());
  // A refused call leaves the result alone.
  TOKADisablePlugin(beta);
  DisplayCalls().clear();
  EXPECT_EQ(1, TOKADoDrawingHook(2, 0));
  EXPECT_EQ((Calls{"z.draw(5,1)" + At(alpha), "x.draw(5,1)" + At(alpha)}), DisplayCalls());
  // 2 is not "draw": 1 & 2 is 0.
  ScriptedCallback w{"w", 2};
  Draw(alpha, w, 5, 1);
  EXPECT_EQ(0, TOKADoDrawingHook(2, 0));

  // The owner is not part of a registration's identity.
  RunAs(alpha, [&] {
    EXPECT_EQ(0, TOKARegisterDrawCallback(DrawThunk, 5, 1, &y));
    EXPECT_EQ(1, TOKAUnregisterDrawCallback(DrawThunk, 5, 1, &y));
    EXPECT_EQ(0, TOKAUnregisterDrawCallback(DrawThunk, 5, 1, &y));
    EXPECT_EQ(0, TOKAUnregisterDrawCallback(DrawThunk, 5, 0, &w));
    EXPECT_EQ(1, TOKAUnregisterDrawCallback(DrawThunk, 5, 1, &w));
  });
  TOKAEnablePlugin(beta);
  EXPECT_EQ(1, TOKADoDrawingHook(2, 0));
}

TEST_F(Drawing, ReflectionPassesCallOnlyPluginsThatAskForThem) {
  Start();
  RunAs(alpha, [] { TOKAEnableFeature("TOKA_WANTS_REFLECTIONS", 1); });
  ScriptedCallback a{"a"}, b{"b"};
  Draw(alpha, a, 10, 0);
  Draw(beta, b, 10, 0);
  EXPECT_EQ((Calls{"a.draw(10,0)" + At(alpha)}), [&] {
    DisplayCalls().clear();
    TOKADoDrawingHook(5, 1);
    return DisplayCalls();
  }());
  for (int flag : {0, 2}) {
    DisplayCalls().clear();
    TOKADoDrawingHook(5, flag);
    EXPECT_EQ((Calls{"b.draw(10,0)" + At(beta), "a.draw(10,0)" + At(alpha)}), DisplayCalls())
        << "flag " << flag;
  }
}

TEST_F(Drawing, DrawCallbacksRemovedWhileTheirPhaseRunsAreNotCalledAgain) {
  Start();
  ScriptedCallback a{"a"}, b{"b"}, c{"c"}, d{"d"};
  Draw(beta, d, 20, 1);
  Draw(beta, c, 20, 1);
  Draw(alpha, b, 20, 1);
  Draw(alpha, a, 20, 1);
  a.onCall = [&] { EXPECT_EQ(1, TOKAUnregisterDrawCallback(DrawThunk, 20, 1, &a)); };
  std::vector<int> removed;
  b.onCall = [&] { removed.push_back(TOKAUnregisterDrawCallback(DrawThunk, 20, 1, &c)); };
  EXPECT_EQ(
      (Calls{"a.draw(20,1)" + At(alpha), "b.draw(20,1)" + At(alpha), "d.draw(20,1)" + At(beta)}),
      Frame(8));
  EXPECT_EQ((Calls{"b.draw(20,1)" + At(alpha), "d.draw(20,1)" + At(beta)}), Frame(8));
  EXPECT_EQ((std::vector<int>{1, 0}), removed);
}

TEST_F(Drawing, WindowsDestroyedWhileDrawingAreNotDrawnOrFoundAgain) {
  Start();
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
  EXPECT_EQ((Calls{"back.draw()" + At(alpha), "front.draw()" + At(alpha)}), Frame());
  EXPECT_EQ((Calls{"front.draw()" + At(alpha)}), Frame());
  front.onDraw = [&] { TOKADestroyWindow(front.id); };
  EXPECT_EQ((Calls{"front.draw()" + At(alpha)}), Frame());
  EXPECT_EQ(Calls{}, Frame());
}

TEST_F(Drawing, AWindowBroughtToFrontWhileDrawnEndsTheFrameAndIsOnTopAfterwards) {
  Start();
  ScriptedWindow back{"back"}, middle{"middle"}, front{"front"};
  OpenWindow(alpha, back, 0, 10, 10, 0);
  OpenWindow(alpha, middle, 0, 10, 10, 0);
  OpenWindow(beta, front, 0, 10, 10, 0);
  middle.onDraw = [&] { TOKABringWindowToFront(middle.id); };
  // The move is immediate: the walk back to front stops at the moved window.
  EXPECT_EQ((Calls{"back.draw()" + At(alpha), "middle.draw()" + At(alpha)}), Frame());
  middle.onDraw = nullptr;
  EXPECT_EQ(
      (Calls{"back.draw()" + At(alpha), "front.draw()" + At(beta), "middle.draw()" + At(alpha)}),
      Frame());
  EXPECT_EQ(1, TOKAIsWindowInFront(middle.id));
}

}  // namespace
