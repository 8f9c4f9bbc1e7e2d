// Camera control: given up by the holder, taken away by a view change, by
// disable and by unload.
#include <algorithm>
#include <cstring>

#include "harness/harness.h"

using namespace toka_test;

namespace {

// What the camera callbacks answer; they log every call as
// "camera(<values|null>,<isLosingControl>,<refcon>)".
int gAnswer = 1;

int CameraCallback(TOKACameraPosition_t* position, int isLosingControl, void* refcon) {
  Log(std::string("camera(") + (position ? "values" : "null") + "," +
      std::to_string(isLosingControl) + "," + static_cast<const char*>(refcon) + ")");
  if (position) position->zoom = 9;
  return gAnswer;
}

class Camera : public TokaTest {
protected:
  void SetUp() override {
    gAnswer = 1;
    StartTwo();
  }
  void TakeAs(int plugin, int howLong, const char* tag) {
    RunAs(plugin, [=] { TOKAControlCamera(howLong, CameraCallback, const_cast<char*>(tag)); });
  }
  // One camera update from the simulator; its values end up in `camera`.
  int Update() {
    float* v = camera;
    return TOKACameraHook(v, v + 1, v + 2, v + 3, v + 4, v + 5, v + 6);
  }
  // The how-long value while the camera is held, 0 while it is free.
  int Controlled() {
    int howLong = 0;
    return TOKAIsCameraBeingControlled(&howLong) ? howLong : 0;
  }
  float camera[7] = {10, 20, 30, 1, 2, 3, 60};
};

TEST_F(Camera, HolderWritesTheCameraUntilItReturnsZero) {
  EXPECT_EQ(1, Update());  // nobody holds it
  TakeAs(1, 2, "a");
  EXPECT_EQ(2, Controlled());
  EXPECT_EQ(0, Update());
  EXPECT_EQ(9.0f, camera[6]);
  gAnswer = 0;
  camera[6] = 60;
  EXPECT_EQ(1, Update());
  EXPECT_EQ(60.0f, camera[6]);  // not written back
  EXPECT_EQ(0, Controlled());
  EXPECT_EQ(1, Update());
  EXPECT_EQ((Lines{"camera(values,0,a)@1", "camera(values,0,a)@1"}), Events());
}

TEST_F(Camera, ViewChangeEndsOnlyControlTakenUntilThenAndDisablingOrUnloadingEndsAny) {
  TakeAs(1, 2, "forever");
  TOKAEventHook(1, 0, 0, 0);
  EXPECT_EQ(2, Controlled());
  TakeAs(1, 1, "view");
  TOKAEventHook(1, 0, 0, 0);
  EXPECT_EQ(0, Controlled());
  EXPECT_EQ(Lines{"camera(null,1,view)@1"}, TakeEvents());

  TakeAs(2, 2, "b");
  TOKADisablePlugin(1);  // not the holder
  TOKADisablePlugin(2);
  EXPECT_EQ(0, Controlled());
  EXPECT_EQ((Lines{"alpha.disable@1", "camera(null,1,b)@2", "beta.disable@2"}), TakeEvents());

  // Taken from the stop entry: unloading takes it back without calling.
  Script(tree.plugins() + "/beta/lin.orv").onStop = [] {
    TOKAControlCamera(2, CameraCallback, const_cast<char*>("stop"));
  };
  TOKAShutdownPlugins();
  EXPECT_EQ(0, Controlled());
  EXPECT_EQ((Lines{"alpha.stop@1", "beta.stop@2"}), Events());
}

// A plugin that another plugin's disable entry enables again is still
// enabled when a reload unloads it: it hears that it loses the camera after
// its stop entry, and what it makes then must go with its module, not run
// as the next plugin of its ID.
float Leftover(float, float, int, void*) {
  Log("leftover");
  return -1;
}

int RegisterWhenLosing(TOKACameraPosition_t* position, int isLosingControl, void* refcon) {
  Log("camera(" + std::to_string(isLosingControl) + ")");
  if (isLosingControl) TOKARegisterFlightLoopCallback(Leftover, -1, nullptr);
  return 1;
}

TEST_F(Camera, WhatAPluginMakesAsItLosesTheCameraAtUnloadGoesWithIt) {
  Script(tree.plugins() + "/alpha.orv").onEnable = [] {
    TOKAControlCamera(2, RegisterWhenLosing, nullptr);
  };
  Script(tree.plugins() + "/beta/lin.orv").onDisable = [] { TOKAEnablePlugin(1); };
  std::string root = tree.root();
  host.onCall[25] = [root](const HostCall& call) -> intptr_t {  // the system path
    std::strcpy(call.arg<char*>(0), root.c_str());
    return 0;
  };
  RunAs(1, [] { TOKAReloadPlugins(); });
  TOKAEventHook(0, 1, 0, 0);  // the reload runs at the end of this pass
  Lines reload = TakeEvents();
  EXPECT_NE(reload.end(), std::find(reload.begin(), reload.end(), "camera(1)@1")) << ::testing::PrintToString(reload);
  TOKAEventHook(0, 2, 0, 0);
  for (const std::string& event : Events()) EXPECT_EQ(std::string::npos, event.find("leftover"));
}

}  // namespace
