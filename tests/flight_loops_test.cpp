// Flight loops: scheduling by time and by cycle, ownership, callbacks that
// change the loops while a pass runs them, and the reload run after a pass.
#include "harness/harness.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <stdexcept>

using namespace toka_test;

namespace {

using Lines = std::vector<std::string>;

// A scripted flight loop; its address is the refcon.
struct Loop {
  explicit Loop(std::string name, std::vector<float> results = {-1})
      : name(std::move(name)), results(std::move(results)) {}
  std::string name;
  std::vector<float> results;      // returned in turn, the last one repeated
  std::function<void()> action;    // runs inside the callback
  TOKAFlightLoopID id = nullptr;
  size_t runs = 0;
};

Lines gRuns;   // "<loop>@<plugin> <sinceLastCall> <sinceLastLoop> #<counter>"
Lines gOrder;  // loop names only
Lines gErrors;

std::string CallerName() {
  char name[256];
  TOKAGetPluginInfo(TOKAGetMyID(), name, nullptr, nullptr, nullptr);
  return name;
}

float RunLoop(float sinceLastCall, float sinceLastLoop, int counter, void* refcon) {
  Loop& loop = *static_cast<Loop*>(refcon);
  std::ostringstream line;
  line << loop.name << "@" << CallerName() << " " << sinceLastCall << " " << sinceLastLoop << " #"
       << counter;
  gRuns.push_back(line.str());
  gOrder.push_back(loop.name);
  float result = loop.results[std::min(loop.runs++, loop.results.size() - 1)];
  if (loop.action) loop.action();
  return result;
}

float OtherLoop(float sinceLastCall, float sinceLastLoop, int counter, void* refcon) {
  return RunLoop(sinceLastCall, sinceLastLoop, counter, refcon);
}

void RecordError(const char* message) { gErrors.push_back(CallerName() + ": " + message); }

class FlightLoops : public TokaTest {
protected:
  double now = 0;  // the simulator's elapsed time, as its service reports it
  int alpha = 0, beta = 0;

  void SetUp() override {
    host.onFloatCall[14] = [this](const HostCall&) { return now; };
    AddScripted("a.orv", "alpha");
    AddScripted("b.orv", "beta");
    Initialize();
    alpha = TOKAFindPluginBySignature("test.alpha");
    beta = TOKAFindPluginBySignature("test.beta");
  }
  // Creates and schedules a loop owned by plugin (0: the simulator).
  void Create(int plugin, Loop& loop, int phase, float interval) {
    auto create = [&] {
      TOKACreateFlightLoop_t params = {16, phase, RunLoop, &loop};
      loop.id = TOKACreateFlightLoop(&params);
      TOKAScheduleFlightLoop(loop.id, interval, 0);
    };
    plugin ? RunAs(plugin, create) : create();
  }
  Lines Pass(float elapsed, int event = 0) {
    gRuns.clear();
    gOrder.clear();
    TOKAEventHook(event, elapsed, 0, 0);
    return gRuns;
  }
  Lines Order(float elapsed) {
    Pass(elapsed);
    return gOrder;
  }
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
  EXPECT_EQ((Lines{"b@beta 0.5 100.5 #2", "a@alpha 1 101 #3", "b@beta 0.5 101 #4",
                   "b@beta 0.25 101.25 #6", "a@alpha 0.5 101.5 #7", "b@beta 0.25 101.5 #8",
                   "a@alpha 0.5 102 #9", "b@beta 0.5 102 #10", "b@beta 1 103 #12"}),
            Frames({100.5f, 101, 101.25f, 101.5f, 102, 103}));
  EXPECT_EQ(12, TOKAGetCycleNumber());

  RunAs(beta, [&] { TOKAScheduleFlightLoop(b.id, 0, 0); });
  // The old interface reschedules any plugin's loop, relative to now...
  now = 200.00000001;
  EXPECT_EQ(200.0f, TOKAGetElapsedTime());
  TOKASetFlightLoopCallbackInterval(RunLoop, 0.25f, 1, &a);
  EXPECT_EQ((Lines{"a@alpha 0.25 200.25 #15"}), Frames({200.125f, 200.25f}));
  // ...or relative to its last run.
  TOKASetFlightLoopCallbackInterval(RunLoop, 1, 0, &a);
  EXPECT_EQ((Lines{"a@alpha 1 201.25 #19"}), Frames({201, 201.25f, 201.5f}));
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
  EXPECT_EQ((Lines{"l@alpha 0.5 10 #10", "l@alpha 2 12 #12", "l@alpha 2 14 #14"}), runs);

  RunAs(alpha, [&] { TOKAScheduleFlightLoop(l.id, 2, 0); });
  EXPECT_EQ(Lines{}, Pass(15.5f));
  EXPECT_EQ((Lines{"l@alpha 2 16 #17"}), Pass(16));
  // 16 + 1e-8 is 16 as a float: due without the clock moving.
  EXPECT_EQ((Lines{"l@alpha 0 16 #18"}), Pass(16));
  EXPECT_EQ(Lines{}, Pass(17));
}

TEST_F(FlightLoops, DisabledPluginsLoopsStandStillAndRunOnceEnabledAgain) {
  Loop seconds{"s"}, cycles{"c"};
  Create(alpha, seconds, 0, 1);
  Create(alpha, cycles, 0, -2);
  TOKADisablePlugin(alpha);
  for (int t = 1; t <= 3; ++t) EXPECT_EQ(Lines{}, Pass(t));
  TOKAEnablePlugin(alpha);
  EXPECT_EQ((Lines{"c@alpha 3.5 3.5 #4", "s@alpha 3.5 3.5 #4"}), Pass(3.5f));
}

TEST_F(FlightLoops, OwnershipAndCreationMistakesAreReportedToTheCaller) {
  for (int plugin : {alpha, beta}) RunAs(plugin, [] { TOKASetErrorCallback(RecordError); });
  Loop a{"a"};
  RunAs(alpha, [&] {
    TOKACreateFlightLoop_t bad = {12, 2, nullptr, nullptr};
    TOKACreateFlightLoop(&bad);
    TOKACreateFlightLoop_t shortStruct = {12, 1, RunLoop, &a};
    a.id = TOKACreateFlightLoop(&shortStruct);
    TOKAScheduleFlightLoop(a.id, -1, 0);
  });
  EXPECT_EQ((Lines{"alpha: Illegal struct size for TOKACreateFlightLoop",
                   "alpha: Illegal phase type for TOKACreateFlightLoop",
                   "alpha: Null callback for TOKACreateFlightLoop",
                   "alpha: Illegal struct size for TOKACreateFlightLoop"}),
            gErrors);
  EXPECT_EQ((Lines{"a@alpha 1 1 #1"}), Pass(1, 10));  // created all the same

  gErrors.clear();
  RunAs(beta, [&] {
    TOKAScheduleFlightLoop(a.id, 0, 1);
    TOKADestroyFlightLoop(a.id);
  });
  EXPECT_EQ((Lines{"beta: Attempt to schedule a flight loop callback owned by another plugin.",
                   "beta: Attempt to remove a flight loop callback owned by another plugin."}),
            gErrors);
  EXPECT_EQ((Lines{"a@alpha 1 2 #2"}), Pass(2, 10));

  // (callback, refcon) pairs reach any plugin's loops, without a word.
  gErrors.clear();
  Loop d{"d"};
  now = 1;
  RunAs(alpha, [&] { TOKARegisterFlightLoopCallback(RunLoop, -1, &d); });
  now = 2;
  RunAs(alpha, [&] { TOKARegisterFlightLoopCallback(RunLoop, -1, &d); });
  RunAs(beta, [&] {
    TOKAUnregisterFlightLoopCallback(OtherLoop, &d);
    TOKAUnregisterFlightLoopCallback(RunLoop, &d);
    TOKASetFlightLoopCallbackInterval(RunLoop, 0, 0, &a);
  });
  EXPECT_EQ((Lines{"d@alpha 2 3 #3"}), Pass(3));  // the older one (since 1) stays
  EXPECT_EQ(Lines{}, Pass(3, 10));
  EXPECT_EQ(Lines{}, gErrors);
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

  n2.action = [&] {
    for (Loop* loop : {&n2, &n1, &z}) TOKADestroyFlightLoop(loop->id);
  };
  EXPECT_EQ((Lines{"n2"}), Order(6));
  EXPECT_EQ(Lines{}, Order(7));
}

TEST_F(FlightLoops, ReloadAskedForByALoopRunsAfterThePassAndTakesThePluginsLoops) {
  std::string root = tree.root();
  host.onCall[25] = [root](const HostCall& call) -> intptr_t {
    std::strcpy(call.arg<char*>(0), root.c_str());
    return 0;
  };
  Loop h{"h"}, b{"b"}, a{"a"};
  Create(0, h, 0, -1);
  Create(beta, b, 0, -1);
  Create(alpha, a, 0, -1);
  a.action = [] { TOKAReloadPlugins(); };
  Events().clear();
  EXPECT_EQ((Lines{"a", "b", "h"}), Order(1));
  // The IDs follow the folder's listing order.
  std::string first = alpha == 1 ? "alpha" : "beta", second = alpha == 1 ? "beta" : "alpha";
  Lines reload;
  for (const char* entry : {".disable@", ".stop@", ".start@", ".enable@"})
    for (const std::string& id : {first + entry + "1", second + entry + "2"}) reload.push_back(id);
  EXPECT_EQ(reload, Events());
  EXPECT_EQ((Lines{"h"}), Order(2));  // the simulator's loop outlives the reload
}

TEST_F(FlightLoops, ThrowingCallbackLeavesTheCallerDispatchedAndItsLoopUnchanged) {
  Loop b{"b"}, a{"a"};
  Create(alpha, b, 0, -1);
  Create(alpha, a, 0, -1);
  a.action = [] { throw std::runtime_error("loop failed"); };
  EXPECT_THROW(Pass(1), std::runtime_error);
  EXPECT_EQ(0, TOKAGetMyID());
  a.action = nullptr;
  EXPECT_EQ((Lines{"a@alpha 2 2 #2", "b@alpha 2 2 #2"}), Pass(2));
}

}  // namespace
