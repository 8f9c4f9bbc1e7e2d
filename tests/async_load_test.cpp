// Asynchronous object loads: handed to the requesting plugin when the
// simulator finishes, held while it is disabled, undone once it is unloaded.
#include "harness/world.h"

using namespace toka_test;

namespace {

using Lines = std::vector<std::string>;

class AsyncLoad : public TokaTest {
protected:
  void SetUp() override {
    AddScripted("alpha.orv", "alpha");        // files load before folders: ID 1
    AddScriptedFolder("beta", "beta");        // ID 2
    Initialize();
    RecordUnloads(host);
    Events().clear();
    host.ClearRecords();
  }
  HostCall Request(size_t n) { return host.CallsTo(70).at(n); }
};

TEST_F(AsyncLoad, FinishedLoadReachesTheRequesterWhichThenOwnsTheObject) {
  RequestLoad(1, "objects/tree.obj", "tree");
  RequestLoad(1, "objects/missing.obj", "missing");
  ASSERT_EQ(2u, host.CountCalls(70));
  EXPECT_EQ(Lines{"objects/tree.obj"}, Request(0).strings);
  EXPECT_TRUE(Events().empty());

  CompleteLoad(Request(0), Object(0xa1));  // the simulator calls from its own context
  CompleteLoad(Request(1), nullptr);       // a failed load is reported too
  EXPECT_EQ(0, TOKAGetMyID());

  RecordErrorsOf(2);
  RunAs(2, [] { TOKAUnloadObject(Object(0xa1)); });
  RunAs(1, [] { TOKAUnloadObject(Object(0xa1)); });
  EXPECT_EQ((Lines{"loaded(0xa1,tree)@1", "loaded(null,missing)@1",
                   "error(Unknown object for TOKAUnloadObject)@2", "unload(0xa1)"}),
            Events());
}

TEST_F(AsyncLoad, SimulatorMayFinishInsideTheRequest) {
  host.onCall[70] = [](const HostCall& call) -> intptr_t {
    CompleteLoad(call, Object(0xa1));
    return 0;
  };
  RequestLoad(1, "now.obj", "now");
  EXPECT_EQ(Lines{"loaded(0xa1,now)@1"}, Events());
}

// The older load finishing first cuts the newer one out of the queue; both
// must still arrive, and nothing may later reach the freed older one.
TEST_F(AsyncLoad, LoadsFinishedInRequestOrderBothArriveAndTheQueueStaysSound) {
  RequestLoad(1, "a.obj", "first");
  RequestLoad(1, "b.obj", "second");
  CompleteLoad(Request(0), Object(0xa1));
  CompleteLoad(Request(1), Object(0xa2));
  RequestLoad(1, "c.obj", "third");
  CompleteLoad(Request(2), Object(0xa3));
  EXPECT_EQ((Lines{"loaded(0xa1,first)@1", "loaded(0xa2,second)@1", "loaded(0xa3,third)@1"}),
            Events());

  Events().clear();
  TOKAShutdownPlugins();
  EXPECT_EQ((Lines{"alpha.disable@1", "beta.disable@2", "alpha.stop@1", "unload(0xa1)",
                   "unload(0xa2)", "unload(0xa3)", "beta.stop@2"}),
            Events());
}

TEST_F(AsyncLoad, HeldWhileDisabledThenDeliveredNewestFirstOnEnable) {
  RequestLoad(1, "a.obj", "first");
  RequestLoad(1, "b.obj", "second");
  RequestLoad(1, "c.obj", "third");
  TOKADisablePlugin(1);
  CompleteLoad(Request(0), Object(0xa1));
  CompleteLoad(Request(2), Object(0xa3));
  CompleteLoad(Request(1), nullptr);
  EXPECT_EQ(Lines{"alpha.disable@1"}, Events());

  TOKAEnablePlugin(1);
  TOKADisablePlugin(1);  // handed over once only
  TOKAEnablePlugin(1);
  EXPECT_EQ((Lines{"alpha.disable@1", "alpha.enable@1", "loaded(null,second)@1",
                   "loaded(0xa3,third)@1", "loaded(0xa1,first)@1", "alpha.disable@1",
                   "alpha.enable@1"}),
            Events());
  EXPECT_EQ(0u, host.CountCalls(66));
}

TEST_F(AsyncLoad, UnloadUndoesHeldLoadsAtOnceAndPendingOnesWhenTheyFinish) {
  RequestLoad(1, "p.obj", "pending1");
  RequestLoad(1, "q.obj", "pending2");
  RequestLoad(1, "h.obj", "held");
  TOKADisablePlugin(1);
  CompleteLoad(Request(2), Object(0xa3));
  Events().clear();

  TOKAShutdownPlugins();
  EXPECT_EQ((Lines{"beta.disable@2", "unload(0xa3)", "alpha.stop@1", "beta.stop@2"}), Events());

  Events().clear();
  CompleteLoad(Request(0), Object(0xa1));
  CompleteLoad(Request(1), Object(0xa2));
  EXPECT_EQ((Lines{"unload(0xa1)", "unload(0xa2)"}), Events());
}

// A load cut out of the queue (an older one finished first) is still owed to
// its plugin; once that plugin is gone and its ID belongs to another, it must
// be undone, not handed to the newcomer.
TEST_F(AsyncLoad, LoadOfAnUnloadedPluginNeverReachesTheNextPluginWithItsID) {
  Script(tree.AddPlugin("Aircraft/C172/plugins/gps/lin.orv", "scripted")).name = "gps";
  Script(tree.AddPlugin("Aircraft/Piper/plugins/nav/lin.orv", "scripted")).name = "nav";
  UserAircraftAt(host, tree.root() + "Aircraft/C172/c172.acf");
  TOKAEventHook(3, 0, 0, 0);
  RequestLoad(3, "a.obj", "first");
  RequestLoad(3, "b.obj", "second");
  CompleteLoad(Request(0), Object(0xa1));
  TOKAEventHook(8, 0, 0, 0);
  UserAircraftAt(host, tree.root() + "Aircraft/Piper/piper.acf");
  TOKAEventHook(3, 0, 0, 0);
  RecordErrorsOf(3);
  Events().clear();

  CompleteLoad(Request(1), Object(0xa2));
  RunAs(3, [] { TOKAUnloadObject(Object(0xa2)); });
  EXPECT_EQ((Lines{"unload(0xa2)", "error(Unknown object for TOKAUnloadObject)@3"}), Events());
}

TEST_F(AsyncLoad, LoadAskedForWithNoPluginRecordIsUndoneWhenItFinishes) {
  TOKAShutdownPlugins();
  Events().clear();
  // No record is left, not even the simulator's: nobody can own the object.
  TOKALoadObjectAsync("late.obj", RecordLoaded, const_cast<char*>("late"));
  ASSERT_EQ(1u, host.CountCalls(70));
  CompleteLoad(Request(0), Object(0xa9));
  EXPECT_EQ(Lines{"unload(0xa9)"}, Events());
}

}  // namespace
