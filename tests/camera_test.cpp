// Camera control: handed between plugins, given up by the holder, taken away
// by a view change, by disable and by unload.
#include "harness/harness.h"

using namespace toka_test;

namespace {

// What the camera callbacks answer; they log every call as
// "camera(<values|null>,<isLosingControl>,<refcon>)".
int gAnswer = 1;

int CameraCallback(TOKACameraPosition_t* position, int isLosingControl, void* refcon) {
  Log(std::string("camera(") + (position ? "values" : "null") + "," +
      std::to_string(isLosingControl) + "," + static_cast<const char*>(refcon) + ")");
  if (position) {
    position->x += 1;
    position->zoom = 9;
  }
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
  // The how-long value while the camera is held; 0 while it is free, when
  // the out-value must be left alone.
  int Controlled() {
    int howLong = -7;
    int controlled = TOKAIsCameraBeingControlled(&howLong);
    EXPECT_EQ(controlled, TOKAIsCameraBeingControlled(nullptr));
    return controlled ? howLong : (howLong == -7 ? 0 : -99);
  }
  float camera[7] = {10, 20, 30, 1, 2, 3, 60};
  std::vector<float> Values() { return std::vector<float>(camera, camera + 7); }
};

TEST_F(Camera, HolderWritesTheCameraUntilItReturnsZero) {
  EXPECT_EQ(1, Update());  // nobody holds it
  EXPECT_EQ(0, Controlled());
  TakeAs(1, 2, "a");
  EXPECT_EQ(2, Controlled());
  EXPECT_EQ(0, Update());
  EXPECT_EQ((std::vector<float>{11, 20, 30, 1, 2, 3, 9}), Values());
  gAnswer = 5;  // passed on as 1 - 5
  EXPECT_EQ(-4, Update());
  EXPECT_EQ(12.0f, camera[0]);

  gAnswer = 0;
  EXPECT_EQ(1, Update());
  EXPECT_EQ(12.0f, camera[0]);  // not written back
  EXPECT_EQ(0, Controlled());
  EXPECT_EQ(1, Update());
  TOKAEventHook(1, 0, 0, 0);  // not told again
  EXPECT_EQ((Lines{"camera(values,0,a)@1", "camera(values,0,a)@1", "camera(values,0,a)@1"}),
            Events());
  EXPECT_EQ(0, TOKAGetMyID());
}

TEST_F(Camera, AnyPluginTakesOrGivesBackTheCameraWithoutTellingTheHolder) {
  TakeAs(1, 2, "a");
  TakeAs(2, 2, "b");
  Update();
  RunAs(1, [] { TOKADontControlCamera(); });
  EXPECT_EQ(1, Update());
  EXPECT_EQ(0, Controlled());
  TOKADisablePlugin(2);  // no longer the holder: not told
  EXPECT_EQ((Lines{"camera(values,0,b)@2", "beta.disable@2"}), Events());
}

TEST_F(Camera, ViewChangeEndsOnlyControlTakenUntilThenAndDisablingEndsAny) {
  TakeAs(1, 2, "forever");
  TOKAEventHook(1, 0, 0, 0);
  EXPECT_EQ(2, Controlled());
  TakeAs(1, 1, "view");
  TOKAEventHook(1, 0, 0, 0);
  TOKAEventHook(1, 0, 0, 0);
  EXPECT_EQ(0, Controlled());
  EXPECT_EQ(1, Update());
  EXPECT_EQ(Lines{"camera(null,1,view)@1"}, TakeEvents());

  TakeAs(2, 2, "b");
  TOKADisablePlugin(1);  // not the holder
  TOKADisablePlugin(2);
  EXPECT_EQ(0, Controlled());
  EXPECT_EQ((Lines{"alpha.disable@1", "camera(null,1,b)@2", "beta.disable@2"}), Events());
}

TEST_F(Camera, HolderThatMayNoLongerBeCalledLosesTheCameraSilently) {
  // Taken from the disable entry, after the camera was withdrawn: the next
  // update finds the holder disabled.
  Script(tree.plugins() + "/alpha.orv").onDisable = [] {
    TOKAControlCamera(2, CameraCallback, const_cast<char*>("late"));
  };
  TOKADisablePlugin(1);
  EXPECT_EQ(2, Controlled());
  EXPECT_EQ(1, Update());
  EXPECT_EQ(0, Controlled());
  EXPECT_EQ((std::vector<float>{10, 20, 30, 1, 2, 3, 60}), Values());

  // Taken from the stop entry: unloading takes it back without calling.
  Script(tree.plugins() + "/beta/lin.orv").onStop = [] {
    TOKAControlCamera(2, CameraCallback, const_cast<char*>("stop"));
  };
  TOKAShutdownPlugins();
  EXPECT_EQ(0, Controlled());
  EXPECT_EQ((Lines{"alpha.disable@1", "beta.disable@2", "alpha.stop@1", "beta.stop@2"}),
            Events());
}

}  // namespace
