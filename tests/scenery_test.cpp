// Terrain probes and scenery objects: result codes, ownership, drawing
// checks, the order of values handed to the simulator, and asynchronous
// loads, held while their plugin is disabled and undone once it is unloaded.
#include "harness/harness.h"

using namespace toka_test;

namespace {

static_assert(sizeof(TOKAProbeInfo_t) == 44, "the simulator fills a 44-byte probe result");
static_assert(sizeof(TOKADrawInfo_t) == 28, "plugins pass 28-byte draw positions");

void RecordLoaded(TOKAObjectRef object, void* tag) {
  Log("loaded(" + ObjectName(object) + "," + static_cast<const char*>(tag) + ")");
}

class Scenery : public TokaTest {
protected:
  void SetUp() override {
    StartTwo();
    host.onCall[59] = [](const HostCall&) -> intptr_t { return 101; };   // a probe
    host.onCall[64] = [](const HostCall&) -> intptr_t { return 0xb1; };  // an object
    RecordUnloads(host);
    RecordErrorsOf(1);
    RecordErrorsOf(2);
  }
  void DrawAs(int plugin, TOKAObjectRef object, int count, TOKADrawInfo_t* at) {
    RunAs(plugin, [=] { TOKADrawObjects(object, count, at, 1, 0); });
  }
};

TEST_F(Scenery, ProbesAnswerWithTheirResultCodesAndRefuseAWrongSize) {
  TOKAProbeRef probe = TOKACreateProbe(0);
  int answer = 7;
  host.onCall[60] = [&](const HostCall& call) -> intptr_t {
    EXPECT_EQ(101, call.arg<int>(0));
    EXPECT_EQ(1.5f, call.arg<float*>(1)[0]);
    call.arg<float*>(2)[2] = 9.5f;
    return answer;
  };
  TOKAProbeInfo_t info{};
  info.structSize = sizeof info;
  EXPECT_EQ(0, TOKAProbeTerrainXYZ(probe, 1.5f, -2.0f, 3.25f, &info));
  EXPECT_EQ(9.5f, info.locationZ);
  answer = 0;
  EXPECT_EQ(2, TOKAProbeTerrainXYZ(probe, 1.5f, 0, 0, &info));
  // Refused without asking the simulator: a wrong size, a destroyed probe.
  info.structSize = 40;
  EXPECT_EQ(1, TOKAProbeTerrainXYZ(probe, 0, 0, 0, &info));
  info.structSize = sizeof info;
  TOKADestroyProbe(probe);
  EXPECT_EQ(1, TOKAProbeTerrainXYZ(probe, 0, 0, 0, &info));
  EXPECT_EQ(2u, host.CountCalls(60));
}

TEST_F(Scenery, OnlyTheLoadingPluginDrawsOrUnloadsAnObjectAndHeadingComesBeforePitch) {
  TOKAObjectRef house = As(1, [] { return TOKALoadObject("house.obj"); });
  EXPECT_EQ(Lines{"house.obj"}, host.CallsTo(64).at(0).strings);
  TOKADrawInfo_t at[2] = {{28, 1, 2, 3, 4, 5, 6}, {40, 7, 8, 9, 10, 11, 12}};
  DrawAs(2, house, 1, at);
  DrawAs(1, house, 2, at);  // the second size is wrong: not even the first is drawn
  EXPECT_EQ(0u, host.CountCalls(65));
  DrawAs(1, house, 1, at);
  auto drawn = host.CallsTo(65);
  ASSERT_EQ(1u, drawn.size());
  std::vector<float> values;
  for (int i = 1; i <= 6; ++i) values.push_back(drawn[0].arg<float>(i));
  EXPECT_EQ((std::vector<float>{1, 2, 3, 5, 4, 6}), values);

  RunAs(2, [=] { TOKAUnloadObject(house); });
  RunAs(1, [=] { TOKAUnloadObject(house); });
  RunAs(1, [=] { TOKAUnloadObject(house); });
  const std::string unknown = "error(Unknown object for TOKAUnloadObject)";
  EXPECT_EQ((Lines{"error(Illegal object, or object not owned by this plugin.)@2",
                   "error(Struct size mismatch for TOKADrawObjects)@1", unknown + "@2",
                   "unload(0xb1)", unknown + "@1"}),
            Events());
}

TEST_F(Scenery, AsyncLoadsAreHeldWhileDisabledThenDeliveredAndUndoneOnUnload) {
  for (const char* tag : {"first", "second", "pending"})
    RunAs(1, [=] { TOKALoadObjectAsync("a.obj", RecordLoaded, const_cast<char*>(tag)); });
  // The simulator finishes the loads of its recorded calls.
  auto complete = [this](size_t n, TOKAObjectRef object) {
    HostCall request = host.CallsTo(70).at(n);
    request.arg<TOKAObjectLoaded_f>(1)(object, request.arg<void*>(2));
  };
  TOKADisablePlugin(1);
  complete(0, Object(0xa1));
  complete(1, Object(0xa2));
  TOKAEnablePlugin(1);
  EXPECT_EQ((Lines{"alpha.disable@1", "alpha.enable@1", "loaded(0xa2,second)@1",
                   "loaded(0xa1,first)@1"}),
            TakeEvents());
  // Unloading undoes what it owns at once and what is pending when it finishes.
  EXPECT_EQ((Lines{"alpha.disable@1", "beta.disable@2", "alpha.stop@1", "unload(0xa2)",
                   "unload(0xa1)", "beta.stop@2"}),
            During(TOKAShutdownPlugins));
  EXPECT_EQ(Lines{"unload(0xa3)"}, During([&] { complete(2, Object(0xa3)); }));
}

}  // namespace
