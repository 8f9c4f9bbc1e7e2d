// The other aircraft: who holds them, who waits, what the simulator is told.
#include "harness/harness.h"

#include <cstring>

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
  int Acquire(int plugin, const char* tag, char** paths = nullptr) {
    return As(plugin, [=] { return TOKAAcquirePlanes(paths, tag ? Told : nullptr, (void*)tag); });
  }
  void Release(int plugin) { RunAs(plugin, [] { TOKAReleasePlanes(); }); }
  int Controller() {
    int controller = -2;
    TOKACountAircraft(nullptr, nullptr, &controller);
    return controller;
  }
};

TEST_F(Planes, OnePluginHoldsTheAircraftAndEveryoneWhoAskedIsToldOnRelease) {
  EXPECT_EQ(-1, Controller());
  EXPECT_EQ(1, Acquire(a, "a"));
  EXPECT_EQ(1, Acquire(a, nullptr));    // already the holder
  EXPECT_EQ(0, Acquire(b, "b-first"));
  EXPECT_EQ(0, Acquire(c, nullptr));    // no callback: not queued
  EXPECT_EQ(0, Acquire(b, "b-again"));  // asking twice queues twice
  Release(b);                           // only the holder can release
  EXPECT_EQ(a, Controller());
  EXPECT_EQ(Lines{}, Events());

  // The host reports 4 aircraft; the release hands 1 to 3 back to its AI
  // before the waiting plugins are told.
  TOKAGetNumberPlanesToHandle(4, 0);
  Release(a);
  EXPECT_EQ((Lines{"ai_loc[1]=0@0", "ai_loc[2]=0@0", "ai_loc[3]=0@0", "told(b-first)@2",
                   "told(b-again)@2"}),
            TakeEvents());
  EXPECT_EQ(-1, Controller());

  // The first one told takes the aircraft; the next one finds them taken
  // and queues again.
  Acquire(a, nullptr);
  RunAs(b, [] {
    TOKAAcquirePlanes(nullptr, [](void*) { TOKAAcquirePlanes(nullptr, nullptr, nullptr); },
                      nullptr);
  });
  RunAs(c, [] {
    TOKAAcquirePlanes(nullptr, [](void*) {
      Log("retry");
      TOKAAcquirePlanes(nullptr, Told, (void*)"c-again");
    }, nullptr);
  });
  TOKAGetNumberPlanesToHandle(1, 0);
  Release(a);
  EXPECT_EQ(b, Controller());
  Release(b);
  EXPECT_EQ((Lines{"retry@3", "told(c-again)@3"}), Events());
}

TEST_F(Planes, DisablingOrUnloadingTheHolderReleasesAndDropsItsRequests) {
  Acquire(a, nullptr);
  Acquire(b, "b");
  Acquire(c, "c");
  TOKADisablePlugin(a);
  // Released while a still counts as enabled, before its disable entry.
  EXPECT_EQ((Lines{"told(b)@2", "told(c)@3", "a.disable@1"}), TakeEvents());
  EXPECT_EQ(-1, Controller());

  // A disabled waiter is passed over.
  TOKAEnablePlugin(a);
  Acquire(a, nullptr);
  Acquire(b, "b");
  Acquire(c, "c");
  TOKADisablePlugin(b);
  Release(a);
  EXPECT_EQ((Lines{"a.enable@1", "b.disable@2", "told(c)@3"}), TakeEvents());
}

TEST_F(Planes, SimulatorHooksFollowTheHoldersWishes) {
  char* wishes[] = {(char*)"Aircraft/user.acf", (char*)"Aircraft/one.acf", nullptr};
  Acquire(a, nullptr, wishes);
  char name[64] = "name", path[64] = "untouched";
  TOKAUpdatePlaneNameAndPath(0, name, path);  // the user's aircraft never changes
  EXPECT_STREQ("untouched", path);
  TOKAUpdatePlaneNameAndPath(1, name, path);
  EXPECT_EQ((Lines{"name", "Aircraft/one.acf"}), (Lines{name, path}));

  // The host does not know its count yet: the wish is kept, nothing loads.
  RunAs(a, [] { TOKASetAircraftModel(5, "Aircraft/five.acf"); });
  EXPECT_EQ(0u, host.CountCalls(17));
  std::strcpy(path, "untouched");
  TOKAUpdatePlaneNameAndPath(3, name, path);  // between the wishes: empty
  EXPECT_STREQ("untouched", path);
  TOKAUpdatePlaneNameAndPath(5, name, path);
  EXPECT_STREQ("Aircraft/five.acf", path);

  RunAs(a, [] { TOKASetActiveAircraftCount(3); });
  RunAs(b, [] { TOKASetActiveAircraftCount(1); });  // not the holder
  EXPECT_EQ(3, TOKAGetNumberPlanesToHandle(10, 0));
  EXPECT_EQ(10, TOKAGetNumberPlanesToHandle(10, 1));
  host.onCall[19] = [](const HostCall&) -> intptr_t { return 10; };
  int total = 0, active = 0, controller = 0;
  TOKACountAircraft(&total, &active, &controller);
  EXPECT_EQ((std::vector<int>{10, 3, a}), (std::vector<int>{total, active, controller}));

  // While the library itself loads a model the host gets its own count and
  // no wishes.
  host.onCall[17] = [](const HostCall&) -> intptr_t {
    char during[64] = "untouched";
    TOKAUpdatePlaneNameAndPath(2, nullptr, during);
    Log(std::to_string(TOKAGetNumberPlanesToHandle(10, 0)) + " " + during);
    return 0;
  };
  RunAs(a, [] { TOKASetAircraftModel(2, "Aircraft/two.acf"); });
  ASSERT_EQ(1u, host.CountCalls(17));
  EXPECT_EQ(2u, host.CallsTo(17)[0].words[0]);
  EXPECT_EQ((Lines{"Aircraft/two.acf", "Aircraft/two.acf"}), host.CallsTo(17)[0].strings);
  EXPECT_EQ((Lines{"10 untouched@1"}), Events());
  EXPECT_EQ(3, TOKAGetNumberPlanesToHandle(10, 0));
}

TEST_F(Planes, HolderOnlyServicesAndTheUsersAircraft) {
  Acquire(a, nullptr);
  RunAs(b, [] {  // not the holder
    TOKADrawAircraft(1, 1, 2, 3, 4, 5, 6, 1, nullptr);
    TOKAReinitUsersPlane();
  });
  host.table.version = 283;  // too old to re-initialise the user's aircraft
  RunAs(a, [] { TOKAReinitUsersPlane(); });
  EXPECT_EQ(0u, host.CountCalls(16) + host.CountCalls(34));

  // Anyone may change the user's aircraft or switch off an AI.
  RunAs(c, [] {
    TOKASetUsersAircraft("Aircraft/Cessna/c172.acf");
    TOKASetUsersAircraft("c172.acf");
    TOKADisableAIForPlane(2);
  });
  auto users = host.CallsTo(17);
  ASSERT_EQ(2u, users.size());
  EXPECT_EQ((Lines{"Aircraft/Cessna/c172.acf", "c172.acf"}), users[0].strings);
  // Without a separator the name loses its first character.
  EXPECT_EQ((Lines{"c172.acf", "172.acf"}), users[1].strings);
  EXPECT_EQ(0u, users[1].words[0]);
  EXPECT_EQ((Lines{"ai_loc[2]=1@0"}), Events());
}

}  // namespace
