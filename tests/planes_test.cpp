// The other aircraft: who holds them, who waits, what the simulator is told.
#include "harness/harness.h"

using namespace toka_test;

namespace {

// The simulator's "ai_loc" switches log "ai_loc[<index>]=<value>".
void WriteAILoc(void* index, int value) {
  Log("ai_loc[" + std::to_string((intptr_t)index) + "]=" + std::to_string(value));
}
// Waiting plugins are told through this; the tag is the refcon.
void Told(void* tag) { Log("told(" + std::string((const char*)tag) + ")"); }

class Planes : public TokaTest {
protected:
  const int a = 1, b = 2, c = 3;
  void SetUp() override {
    // The simulator registers its datarefs before it starts the library.
    for (intptr_t i = 1; i < 8; ++i)
      TOKARegisterDataAccessor(
          ("sim/private/net_disables/ai_loc[" + std::to_string(i) + "]").c_str(), DataTypeInt, 1,
          nullptr, WriteAILoc, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
          nullptr, nullptr, nullptr, nullptr, (void*)i);
    AddScriptedFolder("PluginAdmin", "a");
    AddScripted("b.orv", "b");
    AddScriptedFolder("c", "c");
    Initialize();
    Events().clear();
  }
  int Acquire(int plugin, const char* tag) {
    return As(plugin, [=] { return TOKAAcquirePlanes(nullptr, tag ? Told : nullptr, (void*)tag); });
  }
  void Release(int plugin) { RunAs(plugin, [] { TOKAReleasePlanes(); }); }
};

TEST_F(Planes, OnePluginHoldsTheAircraftAndEveryoneWhoAskedIsToldOnRelease) {
  EXPECT_EQ(1, Acquire(a, "a"));
  EXPECT_EQ(0, Acquire(b, "b-first"));
  EXPECT_EQ(0, Acquire(c, nullptr));    // no callback: not queued
  EXPECT_EQ(0, Acquire(b, "b-again"));  // asking twice queues twice
  Release(b);                           // only the holder can release
  EXPECT_EQ(Lines{}, Events());

  // The host reports 4 aircraft; the release hands 1 to 3 back to its AI
  // before the waiting plugins are told.
  TOKAGetNumberPlanesToHandle(4, 0);
  Release(a);
  EXPECT_EQ((Lines{"ai_loc[1]=0@0", "ai_loc[2]=0@0", "ai_loc[3]=0@0", "told(b-first)@2",
                   "told(b-again)@2"}),
            Events());
}

TEST_F(Planes, OnlyTheHolderDrawsAndLimitsTheAircraft) {
  Acquire(a, nullptr);
  RunAs(b, [] {
    TOKADrawAircraft(1, 1, 2, 3, 4, 5, 6, 1, nullptr);
    TOKASetActiveAircraftCount(1);
  });
  EXPECT_EQ(0u, host.CountCalls(16));
  RunAs(a, [] { TOKASetActiveAircraftCount(3); });
  EXPECT_EQ(3, TOKAGetNumberPlanesToHandle(10, 0));
  host.onCall[19] = [](const HostCall&) -> intptr_t { return 10; };
  int total = 0, active = 0, controller = 0;
  TOKACountAircraft(&total, &active, &controller);
  EXPECT_EQ((std::vector<int>{10, 3, a}), (std::vector<int>{total, active, controller}));
}

}  // namespace
