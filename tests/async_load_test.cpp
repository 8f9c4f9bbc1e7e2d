// Asynchronous object loads: handed to the requesting plugin when the
// simulator finishes, held while it is disabled, undone once it is unloaded.
#include "harness/harness.h"

using namespace toka_test;

namespace {

void RecordLoaded(TOKAObjectRef object, void* tag) {
  Log("loaded(" + ObjectName(object) + "," + static_cast<const char*>(tag) + ")");
}

// Asks for an asynchronous load of path as plugin `plugin` (the caller for
// -1); its completion logs "loaded(<object>,<tag>)".
void RequestLoad(int plugin, const char* path, const char* tag) {
  auto load = [=] { TOKALoadObjectAsync(path, RecordLoaded, const_cast<char*>(tag)); };
  plugin < 0 ? load() : RunAs(plugin, load);
}

// The simulator finishes the load of its recorded slot-70 call.
void CompleteLoad(const HostCall& request, TOKAObjectRef object) {
  request.arg<TOKAObjectLoaded_f>(1)(object, request.arg<void*>(2));
}

class AsyncLoad : public TokaTest {
protected:
  void SetUp() override {
    StartTwo();
    RecordUnloads(host);
  }
  HostCall Request(size_t n) { return host.CallsTo(70).at(n); }
};

TEST_F(AsyncLoad, FinishedLoadReachesTheRequesterWhichThenOwnsTheObject) {
  RequestLoad(1, "objects/tree.obj", "tree");
  RequestLoad(1, "objects/missing.obj", "missing");
  ASSERT_EQ(2u, host.CountCalls(70));
  EXPECT_EQ(Lines{"objects/tree.obj"}, Request(0).strings);
  EXPECT_EQ(Lines{}, Events());

  CompleteLoad(Request(0), Object(0xa1));  // the simulator calls from its own context
  CompleteLoad(Request(1), nullptr);       // a failed load is reported too
  EXPECT_EQ(0, TOKAGetMyID());
  RecordErrorsOf(2);
  RunAs(2, [] { TOKAUnloadObject(Object(0xa1)); });
  RunAs(1, [] { TOKAUnloadObject(Object(0xa1)); });
  EXPECT_EQ((Lines{"loaded(0xa1,tree)@1", "loaded(null,missing)@1",
                   "error(Unknown object for TOKAUnloadObject)@2", "unload(0xa1)"}),
            TakeEvents());

  // The simulator may also finish inside the request.
  host.onCall[70] = [](const HostCall& call) -> intptr_t {
    CompleteLoad(call, Object(0xa2));
    return 0;
  };
  RequestLoad(1, "now.obj", "now");
  EXPECT_EQ(Lines{"loaded(0xa2,now)@1"}, Events());
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
            TakeEvents());
  EXPECT_EQ((Lines{"alpha.disable@1", "beta.disable@2", "alpha.stop@1", "unload(0xa1)",
                   "unload(0xa2)", "unload(0xa3)", "beta.stop@2"}),
            During(TOKAShutdownPlugins));
}

TEST_F(AsyncLoad, HeldWhileDisabledThenDeliveredNewestFirstOnEnable) {
  RequestLoad(1, "a.obj", "first");
  RequestLoad(1, "b.obj", "second");
  RequestLoad(1, "c.obj", "third");
  TOKADisablePlugin(1);
  CompleteLoad(Request(0), Object(0xa1));
  CompleteLoad(Request(2), Object(0xa3));
  CompleteLoad(Request(1), nullptr);
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
  EXPECT_EQ((Lines{"beta.disable@2", "unload(0xa3)", "alpha.stop@1", "beta.stop@2"}),
            During(TOKAShutdownPlugins));
  EXPECT_EQ((Lines{"unload(0xa1)", "unload(0xa2)"}), During([this] {
              CompleteLoad(Request(0), Object(0xa1));
              CompleteLoad(Request(1), Object(0xa2));
            }));

  // With no record left, not even the simulator's, nobody can own a load.
  RequestLoad(-1, "late.obj", "late");
  EXPECT_EQ(Lines{"unload(0xa9)"}, During([this] { CompleteLoad(Request(3), Object(0xa9)); }));
}

// A load cut out of the queue (an older one finished first) is still owed to
// its plugin; once that plugin is gone and its ID belongs to another, it must
// be undone, not handed to the newcomer.
TEST_F(AsyncLoad, LoadOfAnUnloadedPluginNeverReachesTheNextPluginWithItsID) {
  AddAircraftPlugin("nav", "Piper");
  AddAircraftPlugin("gps", "C172");
  TOKAEventHook(3, 0, 0, 0);
  RequestLoad(3, "a.obj", "first");
  RequestLoad(3, "b.obj", "second");
  CompleteLoad(Request(0), Object(0xa1));
  TOKAEventHook(8, 0, 0, 0);
  UserAircraftAt(tree, "Aircraft/Piper/Piper.acf");
  TOKAEventHook(3, 0, 0, 0);
  RecordErrorsOf(3);
  Events().clear();

  CompleteLoad(Request(1), Object(0xa2));
  RunAs(3, [] { TOKAUnloadObject(Object(0xa2)); });
  EXPECT_EQ((Lines{"unload(0xa2)", "error(Unknown object for TOKAUnloadObject)@3"}), Events());
}

}  // namespace
