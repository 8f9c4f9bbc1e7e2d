// The other aircraft: who holds them, who waits, what the simulator is told.
#include "harness/harness.h"

#include <cstring>

using namespace toka_test;

namespace {

// The simulator's "ai_loc" switches, registered as the simulator's own
// datarefs before start-up: index -> values written, in order.
std::map<int, std::vector<int>> gAILoc;
void WriteAILoc(void* refcon, int value) { gAILoc[(int)(intptr_t)refcon].push_back(value); }

std::vector<std::string> gTold;
void RecordTold(void* refcon) {
  gTold.push_back(std::string((const char*)refcon) + "@" + std::to_string(TOKAGetMyID()));
}

class Planes : public TokaTest {
protected:
  void SetUp() override {
    gAILoc.clear();
    gTold.clear();
    for (int i = 1; i < 8; ++i) {
      std::string name = "sim/private/net_disables/ai_loc[" + std::to_string(i) + "]";
      TOKARegisterDataAccessor(name.c_str(), DataTypeInt, 1, nullptr, WriteAILoc, nullptr,
                               nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, (void*)(intptr_t)i);
    }
    for (const char* name : {"a", "b", "c"}) AddScriptedFolder(name, name);
    Initialize();
    for (const char* name : {"a", "b", "c"})
      id[name] = TOKAFindPluginBySignature((std::string("test.") + name).c_str());
  }
  int Acquire(const std::string& plugin, char** paths, const char* tag) {
    int result = -1;
    RunAs(id[plugin], [&] {
      result = TOKAAcquirePlanes(paths, tag ? RecordTold : nullptr, (void*)tag);
    });
    return result;
  }
  int Controller() {
    int controller = -2;
    TOKACountAircraft(nullptr, nullptr, &controller);
    return controller;
  }
  std::string Told(const std::string& tag, const std::string& plugin) {
    return tag + "@" + std::to_string(id[plugin]);
  }
  std::map<std::string, int> id;
};

TEST_F(Planes, OnePluginHoldsTheAircraftAndEveryoneWhoAskedIsToldOnRelease) {
  EXPECT_EQ(-1, Controller());
  EXPECT_EQ(1, Acquire("a", nullptr, "a-wants"));
  EXPECT_EQ(1, Acquire("a", nullptr, nullptr));  // already the holder
  EXPECT_EQ(0, Acquire("b", nullptr, "b-first"));
  EXPECT_EQ(0, Acquire("c", nullptr, nullptr));  // no callback: not queued
  EXPECT_EQ(0, Acquire("b", nullptr, "b-again"));  // asking twice queues twice
  EXPECT_EQ(id["a"], Controller());

  RunAs(id["b"], [] { TOKAReleasePlanes(); });  // only the holder can release
  EXPECT_EQ(id["a"], Controller());
  EXPECT_TRUE(gTold.empty());

  // The host reports 4 aircraft; the release hands 1 to 3 back to its AI.
  TOKAGetNumberPlanesToHandle(4, 0);
  // The first one told takes the aircraft; the next one finds them taken
  // and queues again.
  RunAs(id["a"], [&] { TOKAReleasePlanes(); });
  EXPECT_EQ((std::vector<std::string>{Told("b-first", "b"), Told("b-again", "b")}), gTold);
  EXPECT_EQ(-1, Controller());
  EXPECT_EQ((std::map<int, std::vector<int>>{{1, {0}}, {2, {0}}, {3, {0}}}), gAILoc);
}

TEST_F(Planes, WaitingPluginThatAcquiresWhenToldLeavesTheOthersWaitingAgain) {
  Acquire("a", nullptr, nullptr);
  // b takes the aircraft as soon as it is told; c, told after it, queues again.
  RunAs(id["b"], [] {
    TOKAAcquirePlanes(nullptr, [](void*) { TOKAAcquirePlanes(nullptr, nullptr, nullptr); }, nullptr);
  });
  Acquire("c", nullptr, "c-wants");
  RunAs(id["c"], [] {
    TOKAAcquirePlanes(nullptr,
                      [](void*) {
                        gTold.push_back("c-retry@" + std::to_string(TOKAGetMyID()));
                        TOKAAcquirePlanes(nullptr, RecordTold, (void*)"c-queued-again");
                      },
                      nullptr);
  });
  RunAs(id["a"], [] { TOKAReleasePlanes(); });
  EXPECT_EQ(id["b"], Controller());
  EXPECT_EQ((std::vector<std::string>{Told("c-wants", "c"), "c-retry@" + std::to_string(id["c"])}),
            gTold);
  gTold.clear();
  RunAs(id["b"], [] { TOKAReleasePlanes(); });
  EXPECT_EQ((std::vector<std::string>{Told("c-queued-again", "c")}), gTold);
}

TEST_F(Planes, DisablingOrUnloadingTheHolderReleasesAndDropsItsRequests) {
  Acquire("a", nullptr, nullptr);
  Acquire("b", nullptr, "b-wants");
  Acquire("c", nullptr, "c-wants");
  Events().clear();
  TOKADisablePlugin(id["a"]);
  // Released while a still counted as enabled, before its disable entry.
  EXPECT_EQ((std::vector<std::string>{Told("b-wants", "b"), Told("c-wants", "c")}), gTold);
  EXPECT_EQ(std::vector<std::string>{"a.disable@" + std::to_string(id["a"])}, Events());
  EXPECT_EQ(-1, Controller());

  // A disabled waiter is passed over.
  gTold.clear();
  TOKAEnablePlugin(id["a"]);
  Acquire("a", nullptr, nullptr);
  Acquire("b", nullptr, "b-wants");
  Acquire("c", nullptr, "c-wants");
  TOKADisablePlugin(id["b"]);
  RunAs(id["a"], [] { TOKAReleasePlanes(); });
  EXPECT_EQ((std::vector<std::string>{Told("c-wants", "c")}), gTold);

  // An unloaded waiter (the user's aircraft plugin) is forgotten.
  gTold.clear();
  std::string acf = tree.root() + "Aircraft/C172/c172.acf";
  Script(tree.AddPlugin("Aircraft/C172/plugins/gps/lin.orv", "scripted")).name = "gps";
  host.onCall[18] = [acf](const HostCall& call) -> intptr_t {
    std::strcpy(call.arg<char*>(1), acf.c_str());
    std::strcpy(call.arg<char*>(2), "c172.acf");
    return 0;
  };
  TOKAEventHook(3, 0, 0, 0);
  id["gps"] = TOKACountPlugins() - 1;
  Acquire("a", nullptr, nullptr);
  Acquire("gps", nullptr, "gps-wants");
  TOKAEventHook(8, 0, 0, 0);
  RunAs(id["a"], [] { TOKAReleasePlanes(); });
  EXPECT_TRUE(gTold.empty());
  EXPECT_EQ(-1, Controller());
}

TEST_F(Planes, SimulatorHooksFollowTheHoldersWishes) {
  char* wishes[] = {(char*)"Aircraft/user.acf", (char*)"Aircraft/one.acf", nullptr};
  Acquire("a", wishes, nullptr);
  char name[64] = "name", path[64] = "untouched";
  // The user's aircraft (0) is never changed through the hook.
  TOKAUpdatePlaneNameAndPath(0, name, path);
  EXPECT_STREQ("untouched", path);
  TOKAUpdatePlaneNameAndPath(1, name, path);
  EXPECT_STREQ("Aircraft/one.acf", path);
  EXPECT_STREQ("name", name);

  // The host does not know its count yet: the wish is kept, nothing loads.
  RunAs(id["a"], [] { TOKASetAircraftModel(5, "Aircraft/five.acf"); });
  EXPECT_EQ(0u, host.CountCalls(17));
  std::strcpy(path, "untouched");
  TOKAUpdatePlaneNameAndPath(3, name, path);  // between the wishes: empty
  EXPECT_STREQ("untouched", path);
  TOKAUpdatePlaneNameAndPath(5, name, path);
  EXPECT_STREQ("Aircraft/five.acf", path);

  RunAs(id["a"], [] { TOKASetActiveAircraftCount(3); });
  RunAs(id["b"], [] { TOKASetActiveAircraftCount(1); });  // not the holder
  EXPECT_EQ(3, TOKAGetNumberPlanesToHandle(10, 0));
  EXPECT_EQ(10, TOKAGetNumberPlanesToHandle(10, 1));
  host.onCall[19] = [](const HostCall&) -> intptr_t { return 10; };
  int total = 0, active = 0, controller = 0;
  TOKACountAircraft(&total, &active, &controller);
  EXPECT_EQ(10, total);
  EXPECT_EQ(3, active);
  EXPECT_EQ(id["a"], controller);

  // While the library itself loads a model the host gets its own count and
  // no wishes.
  std::vector<int> answersDuringLoad;
  host.onCall[17] = [&](const HostCall& call) -> intptr_t {
    answersDuringLoad.push_back(TOKAGetNumberPlanesToHandle(10, 0));
    char during[64] = "untouched";
    TOKAUpdatePlaneNameAndPath(2, nullptr, during);
    EXPECT_STREQ("untouched", during);
    return 0;
  };
  RunAs(id["a"], [] { TOKASetAircraftModel(2, "Aircraft/two.acf"); });
  auto loads = host.CallsTo(17);
  ASSERT_EQ(1u, loads.size());
  EXPECT_EQ(2u, loads[0].words[0]);
  EXPECT_EQ((std::vector<std::string>{"Aircraft/two.acf", "Aircraft/two.acf"}), loads[0].strings);
  EXPECT_EQ(std::vector<int>{10}, answersDuringLoad);
  EXPECT_EQ(3, TOKAGetNumberPlanesToHandle(10, 0));
}

TEST_F(Planes, HolderOnlyServicesAndTheUsersAircraft) {
  Acquire("a", nullptr, nullptr);
  RunAs(id["b"], [] {
    TOKADrawAircraft(1, 1, 2, 3, 4, 5, 6, 1, nullptr);
    TOKAReinitUsersPlane();
  });
  EXPECT_EQ(0u, host.CountCalls(16));
  RunAs(id["a"], [] { TOKADrawAircraft(1, 1.5f, 2, 3, 4, 5, 6.25f, 1, (void*)0x1234); });
  auto draws = host.CallsTo(16);
  ASSERT_EQ(1u, draws.size());
  EXPECT_EQ(1, draws[0].arg<int>(0));
  EXPECT_EQ(1.5f, draws[0].arg<float>(1));
  EXPECT_EQ(6.25f, draws[0].arg<float>(6));
  EXPECT_EQ((void*)0x1234, draws[0].arg<void*>(8));

  host.table.version = 283;
  RunAs(id["a"], [] { TOKAReinitUsersPlane(); });
  EXPECT_EQ(0u, host.CountCalls(34));
  host.table.version = 284;
  RunAs(id["a"], [] { TOKAReinitUsersPlane(); });
  auto reinit = host.CallsTo(34);
  ASSERT_EQ(1u, reinit.size());
  EXPECT_EQ((std::vector<uint32_t>{208, 201}), reinit[0].words);

  // Anyone may change the user's aircraft, switch off an AI or move the user.
  RunAs(id["c"], [] {
    TOKASetUsersAircraft("Aircraft/Cessna/c172.acf");
    TOKASetUsersAircraft("c172.acf");
    TOKADisableAIForPlane(2);
    TOKAPlaceUserAtAirport("KSEA");
  });
  auto users = host.CallsTo(17);
  ASSERT_EQ(2u, users.size());
  EXPECT_EQ((std::vector<std::string>{"Aircraft/Cessna/c172.acf", "c172.acf"}), users[0].strings);
  // Without a separator the name loses its first character.
  EXPECT_EQ((std::vector<std::string>{"c172.acf", "172.acf"}), users[1].strings);
  EXPECT_EQ(0u, users[1].words[0]);
  EXPECT_EQ((std::map<int, std::vector<int>>{{2, {1}}}), gAILoc);
  EXPECT_EQ(std::vector<std::string>{"KSEA"}, host.CallsTo(20).at(0).strings);
}

}  // namespace
