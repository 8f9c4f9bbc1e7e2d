// Terrain probes and scenery objects: pooling, result codes, ownership,
// drawing checks and the order of values handed to the simulator.
#include "harness/harness.h"

using namespace toka_test;

namespace {

static_assert(sizeof(TOKAProbeInfo_t) == 44, "the simulator fills a 44-byte probe result");
static_assert(sizeof(TOKADrawInfo_t) == 28, "plugins pass 28-byte draw positions");

class Scenery : public TokaTest {
protected:
  void SetUp() override {
    StartTwo();
    // Probes 101, 102, ... and objects 0xb1, 0xb2, ...; "missing.obj" fails.
    host.onCall[59] = [this](const HostCall&) -> intptr_t { return 100 + ++probesMade; };
    host.onCall[64] = [this](const HostCall& call) -> intptr_t {
      return call.strings.at(0) == "missing.obj" ? 0 : 0xb0 + ++objectsMade;
    };
    RecordUnloads(host);
  }
  // The simulator's probe behind a probe handle, as the probe service sees it.
  int HostProbeOf(TOKAProbeRef probe) {
    TOKAProbeInfo_t info{};
    info.structSize = sizeof info;
    TOKAProbeTerrainXYZ(probe, 0, 0, 0, &info);
    return host.CallsTo(60).back().arg<int>(0);
  }
  TOKAObjectRef LoadAs(int plugin, const char* path) {
    return As(plugin, [=] { return TOKALoadObject(path); });
  }
  void DrawAs(int plugin, TOKAObjectRef object, int count, TOKADrawInfo_t* at) {
    RunAs(plugin, [=] { TOKADrawObjects(object, count, at, 1, 0); });
  }
  int probesMade = 0, objectsMade = 0;
};

TEST_F(Scenery, ProbesArePooledAndAnswerWithTheirResultCodes) {
  TOKAProbeRef a = TOKACreateProbe(0), b = TOKACreateProbe(0), c = TOKACreateProbe(0);
  EXPECT_EQ(101, HostProbeOf(a));
  EXPECT_EQ(103, HostProbeOf(c));
  TOKADestroyProbe(c);
  TOKADestroyProbe(a);
  int notAProbe = 0;
  TOKADestroyProbe(&notAProbe);
  TOKAProbeRef d = TOKACreateProbe(0), e = TOKACreateProbe(0), f = TOKACreateProbe(0);
  // The simulator's probes come back smallest first.
  EXPECT_EQ((std::vector<int>{101, 103, 104, 102}),
            (std::vector<int>{HostProbeOf(d), HostProbeOf(e), HostProbeOf(f), HostProbeOf(b)}));
  EXPECT_EQ(4u, host.CountCalls(59));

  int answer = 7;
  std::vector<float> query;
  host.onCall[60] = [&](const HostCall& call) -> intptr_t {
    const float* xyz = call.arg<float*>(1);
    query.assign(xyz, xyz + 3);
    call.arg<float*>(2)[2] = 9.5f;
    call.arg<int*>(5)[0] = 1;
    return answer;
  };
  host.ClearRecords();
  TOKAProbeInfo_t info{};
  info.structSize = sizeof info;
  EXPECT_EQ(0, TOKAProbeTerrainXYZ(d, 1.5f, -2.0f, 3.25f, &info));
  EXPECT_EQ((std::vector<float>{1.5f, -2.0f, 3.25f}), query);
  EXPECT_EQ(&info.velocityX, host.CallsTo(60).at(0).arg<float*>(4));
  EXPECT_EQ(9.5f, info.locationZ);
  EXPECT_EQ(1, info.isWet);
  answer = 0;
  EXPECT_EQ(2, TOKAProbeTerrainXYZ(d, 0, 0, 0, &info));

  // Refused without asking the simulator: a wrong size, another probe type,
  // a destroyed probe.
  info.structSize = 40;
  EXPECT_EQ(1, TOKAProbeTerrainXYZ(d, 0, 0, 0, &info));
  info.structSize = sizeof info;
  EXPECT_EQ(1, TOKAProbeTerrainXYZ(TOKACreateProbe(1), 0, 0, 0, &info));
  TOKADestroyProbe(d);
  EXPECT_EQ(1, TOKAProbeTerrainXYZ(d, 0, 0, 0, &info));
  EXPECT_EQ(2u, host.CountCalls(60));
}

TEST_F(Scenery, OnlyTheLoadingPluginMayUnloadAnObject) {
  TOKAObjectRef house = LoadAs(1, "house.obj");
  EXPECT_EQ(Object(0xb1), house);
  EXPECT_EQ(Lines{"house.obj"}, host.CallsTo(64).at(0).strings);
  EXPECT_EQ(nullptr, LoadAs(1, "missing.obj"));
  RecordErrorsOf(1);
  RecordErrorsOf(2);
  RunAs(2, [=] { TOKAUnloadObject(house); });
  RunAs(1, [=] { TOKAUnloadObject(house); });
  RunAs(1, [=] { TOKAUnloadObject(house); });
  RunAs(1, [=] { TOKAUnloadObject(nullptr); });  // failed loads are not recorded
  const std::string unknown = "error(Unknown object for TOKAUnloadObject)";
  EXPECT_EQ((Lines{unknown + "@2", "unload(0xb1)", unknown + "@1", unknown + "@1"}), Events());
}

TEST_F(Scenery, DrawingIsCheckedOnlyWithAnErrorCallbackAndPassesHeadingBeforePitch) {
  TOKAObjectRef house = LoadAs(1, "house.obj");
  TOKADrawInfo_t at[2] = {{28, 1, 2, 3, 4, 5, 6}, {40, 7, 8, 9, 10, 11, 12}};

  // Without an error callback anything is drawn: another plugin's object,
  // a wrong structure size.
  DrawAs(2, house, 2, at);
  auto drawn = host.CallsTo(65);
  ASSERT_EQ(2u, drawn.size());
  std::vector<float> values;
  for (int i = 1; i <= 6; ++i) values.push_back(drawn[1].arg<float>(i));
  EXPECT_EQ((std::vector<float>{7, 8, 9, 11, 10, 12}), values);
  EXPECT_EQ(house, drawn[1].arg<TOKAObjectRef>(0));
  EXPECT_EQ((std::vector<HostWord>{1, 0}), (std::vector<HostWord>{drawn[1].words[7],
                                                                  drawn[1].words[8]}));

  host.ClearRecords();
  RecordErrorsOf(1);
  RecordErrorsOf(2);
  DrawAs(2, house, 1, at);
  DrawAs(1, house, 2, at);  // the second size is wrong: not even the first is drawn
  DrawAs(1, Object(0xb9), 0, at);
  DrawAs(1, house, -1, at);  // a count below 1 draws nothing and passes
  EXPECT_EQ((Lines{"error(Illegal object, or object not owned by this plugin.)@2",
                   "error(Struct size mismatch for TOKADrawObjects)@1",
                   "error(Illegal object, or object not owned by this plugin.)@1"}),
            Events());
  EXPECT_EQ(0u, host.CountCalls(65));
  DrawAs(1, house, 1, at);
  EXPECT_EQ(1u, host.CountCalls(65));
}

}  // namespace
