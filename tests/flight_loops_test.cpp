// Flight loops: scheduling by time and by cycle, ownership, callbacks that
// change the loops while a pass runs them, and the reload run after a pass.
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
  // Creates and schedules a loop owned by plugin (0: the caller).
  void Create(int plugin, Loop& loop, int phase, float interval) {
    auto create = [&] {
      TOKACreateFlightLoop_t params = {sizeof(TOKACreateFlightLoop_t), phase, RunLoop, &loop};
      loop.id = TOKACreateFlightLoop(&params);
      TOKAScheduleFlightLoop(loop.id, interval, 0);
    };
    plugin ? RunAs(plugin, create) : create();
  }
  Lines Pass(float elapsed, int event = 0) {
    return During([=] { TOKAEventHook(event, elapsed, 0, 0); });
  }
  // The names of the loops a pass runs.
  Lines Order(float elapsed) {
    Lines names;
    for (const std::string& run : Pass(elapsed)) names.push_back(run.substr(0, run.find(' ')));
    return names;
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

  RunAs(beta, [&] { TOKAScheduleFlightLoop(b.id, 0, 0); });
  // The old interface reschedules any plugin's loop, relative to now...
  now = 200.00000001;
  EXPECT_EQ(200.0f, TOKAGetElapsedTime());
  TOKASetFlightLoopCallbackInterval(RunLoop, 0.25f, 1, &a);
  EXPECT_EQ((Lines{"a 0.25 200.25 #15@1"}), Frames({200.125f, 200.25f}));
  // ...or relative to its last run.
  TOKASetFlightLoopCallbackInterval(RunLoop, 1, 0, &a);
  EXPECT_EQ((Lines{"a 1 201.25 #19@1"}), Frames({201, 201.25f, 201.5f}));
}

TEST_F(FlightLoops, CyclesCountFromTheLastRunAndSecondsDueAtTheFloatSum) {
  for (int t = 1; t <= 5; ++t) Pass(t);
  now = 5;
  Loop l{"l", {-1.5f, -1.5f, 0, 1e-8f, 0}};
  Create(alpha, l, 0, 0);
  for (int t = 6; t <= 9; ++t) EXPECT_EQ(Lines{}, Pass(t)) << "not scheduled";

  // Relative to now moves the time base only: the cycles still count from
  // the creation (cycle 5), so the loop is overdue.
  now = 9.5;
  RunAs(alpha, [&] { TOKAScheduleFlightLoop(l.id, -3, 1); });
  Lines runs;
  for (int t = 10; t <= 15; ++t)
    for (const std::string& run : Pass(t)) runs.push_back(run);
  EXPECT_EQ((Lines{"l 0.5 10 #10@1", "l 2 12 #12@1", "l 2 14 #14@1"}), runs);

  RunAs(alpha, [&] { TOKAScheduleFlightLoop(l.id, 2, 0); });
  EXPECT_EQ(Lines{}, Pass(15.5f));
  EXPECT_EQ((Lines{"l 2 16 #17@1"}), Pass(16));
  // 16 + 1e-8 is 16 as a float: due without the clock moving.
  EXPECT_EQ((Lines{"l 0 16 #18@1"}), Pass(16));
  EXPECT_EQ(Lines{}, Pass(17));
}

TEST_F(FlightLoops, DisabledPluginsLoopsStandStillAndRunOnceEnabledAgain) {
  Loop seconds{"s"}, cycles{"c"};
  Create(alpha, seconds, 0, 1);
  Create(alpha, cycles, 0, -2);
  TOKADisablePlugin(alpha);
  for (int t = 1; t <= 3; ++t) EXPECT_EQ(Lines{}, Pass(t));
  TOKAEnablePlugin(alpha);
  EXPECT_EQ((Lines{"c 3.5 3.5 #4@1", "s 3.5 3.5 #4@1"}), Pass(3.5f));
}

TEST_F(FlightLoops, OwnershipAndCreationMistakesAreReportedToTheCaller) {
  // Without an error callback nothing is checked or reported.
  Loop quiet{"quiet"};
  RunAs(alpha, [&] {
    TOKACreateFlightLoop_t bad = {12, 2, RunLoop, &quiet};
    quiet.id = TOKACreateFlightLoop(&bad);
  });
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

  // (callback, refcon) pairs reach any plugin's loops, without a word.
  Loop d{"d"};
  now = 1;
  RunAs(alpha, [&] { TOKARegisterFlightLoopCallback(RunLoop, -1, &d); });
  now = 2;
  RunAs(alpha, [&] { TOKARegisterFlightLoopCallback(RunLoop, -1, &d); });
  RunAs(beta, [&] {
    TOKAUnregisterFlightLoopCallback([](float, float, int, void*) { return 0.0f; }, &d);
    TOKAUnregisterFlightLoopCallback(RunLoop, &d);
    TOKASetFlightLoopCallbackInterval(RunLoop, 0, 0, &a);
  });
  EXPECT_EQ((Lines{"d 2 3 #3@1"}), Pass(3));  // the older one (since 1) stays
  EXPECT_EQ(Lines{}, Pass(3, 10));
}

TEST_F(FlightLoops, CallbacksChangeTheLoopsOfTheRunningPass) {
  Loop z{"z"}, y{"y"}, x{"x"}, w{"w"};
  Create(alpha, z, 0, -1);
  Create(beta, y, 0, -1);
  Create(alpha, x, 0, -1);
  Create(alpha, w, 0, -1);
  EXPECT_EQ((Lines{"w", "x", "y", "z"}), Order(1));  // newest first

  w.action = [&] { TOKADestroyFlightLoop(w.id); };
  x.action = [&] {
    TOKAUnregisterFlightLoopCallback(RunLoop, &x);  // itself
    TOKAUnregisterFlightLoopCallback(RunLoop, &y);  // another plugin's, not yet run
  };
  EXPECT_EQ((Lines{"w", "x", "z"}), Order(2));
  EXPECT_EQ((Lines{"z"}), Order(3));

  Loop n1{"n1"}, n2{"n2"};
  z.action = [&] {
    if (n1.id) return;
    Create(0, n1, 0, -1);  // inside z: owned by alpha
    Create(0, n2, 0, -1);
  };
  EXPECT_EQ((Lines{"z"}), Order(4));
  EXPECT_EQ((Lines{"n2", "n1", "z"}), Order(5));

  n2.action = [&] { for (Loop* loop : {&n2, &n1, &z}) TOKADestroyFlightLoop(loop->id); };
  EXPECT_EQ((Lines{"n2"}), Order(6));
  EXPECT_EQ(Lines{}, Order(7));

  // A loop the pass has already passed, far from due, brought forward by a
  // later one's callback: the next pass runs it.
  Loop early{"early"}, late{"late", {1000}};
  Create(alpha, early, 0, -1);
  Create(alpha, late, 0, 1000);
  early.action = [&] { TOKAScheduleFlightLoop(late.id, -1, 0); };
  EXPECT_EQ((Lines{"early"}), Order(8));
  early.action = nullptr;
  EXPECT_EQ((Lines{"late", "early"}), Order(9));
  EXPECT_EQ((Lines{"early"}), Order(10));  // late asked for 1000 s
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

}  // namespace
