// Flight loops: scheduling by time and by cycle, phases, ownership, and
// callbacks that throw.
#include "harness/harness.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

using namespace toka_test;

namespace {

// A scripted flight loop; its address is the refcon.
struct Loop {
  explicit Loop(std::string name, std::vector<float> results = {-1})
      : name(std::move(name)), results(std::move(results)) {}
  std::string name;
  std::vector<float> results;    // returned in turn, the last one repeated
  std::function<void()> action;  // runs inside the callback
  TOKAFlightLoopID id = nullptr;
  size_t runs = 0;
};

// Logs "<loop> <sinceLastCall> <sinceLastLoop> #<counter>".
float RunLoop(float sinceLastCall, float sinceLastLoop, int counter, void* refcon) {
  Loop& loop = *static_cast<Loop*>(refcon);
  std::ostringstream line;
  line << loop.name << " " << sinceLastCall << " " << sinceLastLoop << " #" << counter;
  Log(line.str());
  float result = loop.results[std::min(loop.runs++, loop.results.size() - 1)];
  if (loop.action) loop.action();
  return result;
}

class FlightLoops : public TokaTest {
protected:
  double now = 0;  // the simulator's elapsed time, as its service reports it
  const int alpha = 1, beta = 2;

  void SetUp() override {
    host.onFloatCall[14] = [this](const HostCall&) { return now; };
    StartTwo();
  }
  // Creates and schedules a loop owned by plugin.
  void Create(int plugin, Loop& loop, int phase, float interval) {
    RunAs(plugin, [&] {
      TOKACreateFlightLoop_t params = {sizeof(TOKACreateFlightLoop_t), phase, RunLoop, &loop};
      loop.id = TOKACreateFlightLoop(&params);
      TOKAScheduleFlightLoop(loop.id, interval, 0);
    });
  }
  Lines Pass(float elapsed, int event = 0) {
    return During([=] { TOKAEventHook(event, elapsed, 0, 0); });
  }
  // Events 0 and 10 at each time.
  Lines Frames(std::initializer_list<float> times) {
    Lines runs;
    for (float t : times)
      for (int event : {0, 10})
        for (const std::string& run : Pass(t, event)) runs.push_back(run);
    return runs;
  }
};

TEST_F(FlightLoops, RunByTimeAndByCycleInTheirOwnPhaseWithTheirArguments) {
  now = 100;
  Loop a{"a", {0.5f, -2, 0}}, b{"b"};
  RunAs(alpha, [&] { TOKARegisterFlightLoopCallback(RunLoop, 1.0f, &a); });
  Create(beta, b, 1, -1);
  // Event 0 runs phase 0, event 10 phase 1; each advances the counter. The
  // second argument is the absolute elapsed time.
  EXPECT_EQ((Lines{"b 0.5 100.5 #2@2", "a 1 101 #3@1", "b 0.5 101 #4@2", "b 0.25 101.25 #6@2",
                   "a 0.5 101.5 #7@1", "b 0.25 101.5 #8@2", "a 0.5 102 #9@1", "b 0.5 102 #10@2",
                   "b 1 103 #12@2"}),
            Frames({100.5f, 101, 101.25f, 101.5f, 102, 103}));
  EXPECT_EQ(12, TOKAGetCycleNumber());
}

TEST_F(FlightLoops, SecondsCompareWithTheFloatSumAndCyclesKeepTheirFractions) {
  now = 0;
  // After a run at 1 that asks for 0.3 s more, the loop is due at 1.3f,
  // which lies below the exact sum of 1 and 0.3f: the sum is taken in float,
  // as the plugin computes it, in every build.
  Loop seconds{"s", {0.3f, 0}}, cycles{"c", {-1.5f}};
  Create(alpha, seconds, 1, 1.0f);
  Create(beta, cycles, 1, -1.5f);
  Lines runs;
  for (float t : {1.0f, 1.3f, 1.4f, 1.5f, 1.6f})
    for (const std::string& run : Pass(t, 10)) runs.push_back(run);
  // -1.5 cycles is every second pass, not every one.
  EXPECT_EQ((Lines{"s 1 1 #1@1", "c 1.3 1.3 #2@2", "s 0.3 1.3 #2@1", "c 0.2 1.5 #4@2"}), runs);
}

TEST_F(FlightLoops, OwnershipAndCreationMistakesAreReportedToTheCaller) {
  RecordErrorsOf(alpha);
  RecordErrorsOf(beta);
  Loop a{"a"};
  RunAs(alpha, [&] {
    TOKACreateFlightLoop_t bad = {12, 2, nullptr, nullptr};
    TOKACreateFlightLoop(&bad);
    TOKACreateFlightLoop_t shortStruct = {12, 1, RunLoop, &a};
    a.id = TOKACreateFlightLoop(&shortStruct);
    TOKAScheduleFlightLoop(a.id, -1, 0);
  });
  const std::string size = "error(Illegal struct size for TOKACreateFlightLoop)@1";
  EXPECT_EQ((Lines{size, "error(Illegal phase type for TOKACreateFlightLoop)@1",
                   "error(Null callback for TOKACreateFlightLoop)@1", size}),
            Events());
  EXPECT_EQ((Lines{"a 1 1 #1@1"}), Pass(1, 10));  // created all the same

  RunAs(beta, [&] {
    TOKAScheduleFlightLoop(a.id, 0, 1);
    TOKADestroyFlightLoop(a.id);
  });
  EXPECT_EQ((Lines{"error(Attempt to schedule a flight loop callback owned by another plugin.)@2",
                   "error(Attempt to remove a flight loop callback owned by another plugin.)@2"}),
            TakeEvents());
  EXPECT_EQ((Lines{"a 1 2 #2@1"}), Pass(2, 10));
}

TEST_F(FlightLoops, ThrowingCallbackLeavesTheCallerDispatchedAndItsLoopUnchanged) {
  Loop b{"b"}, a{"a"};
  Create(alpha, b, 0, -1);
  Create(alpha, a, 0, -1);
  a.action = [] { throw std::runtime_error("loop failed"); };
  EXPECT_THROW(Pass(1), std::runtime_error);
  EXPECT_EQ(0, TOKAGetMyID());
  a.action = nullptr;
  EXPECT_EQ((Lines{"a 2 2 #2@1", "b 2 2 #2@1"}), Pass(2));
}

// Callbacks that destroy, unregister and create loops while the pass walks
// them: what was removed never runs again, what was created waits for the
// next pass.
TEST_F(FlightLoops, CallbacksChangeTheLoopsOfTheRunningPass) {
  Loop z{"z"}, y{"y"}, x{"x"}, w{"w"}, n{"n"};
  Create(alpha, z, 0, -1);
  Create(beta, y, 0, -1);
  Create(alpha, x, 0, -1);
  Create(alpha, w, 0, -1);
  w.action = [&] { TOKADestroyFlightLoop(w.id); };
  x.action = [&] {
    TOKAUnregisterFlightLoopCallback(RunLoop, &x);  // itself
    TOKAUnregisterFlightLoopCallback(RunLoop, &y);  // another plugin's, not yet run
  };
  z.action = [&] { if (!n.id) Create(alpha, n, 0, -1); };
  EXPECT_EQ((Lines{"w 1 1 #1@1", "x 1 1 #1@1", "z 1 1 #1@1"}), Pass(1));
  n.action = [&] { for (Loop* loop : {&n, &z}) TOKADestroyFlightLoop(loop->id); };
  EXPECT_EQ((Lines{"n 2 2 #2@1"}), Pass(2));
  EXPECT_EQ(Lines{}, Pass(3));
}

}  // namespace
