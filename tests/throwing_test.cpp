// Plugins that throw from every kind of entry point and callback: the
// dispatched plugin is restored, the lists being walked stay whole, the
// exception reaches the host, and a stop entry that throws still has all its
// plugin owned withdrawn.
#include <dlfcn.h>

#include <cstring>
#include <stdexcept>

#include "harness/harness.h"

using namespace toka_test;

namespace {

// A callback's refcon: it logs the name and throws while throws is positive.
struct Thrower {
  std::string name;
  int throws = 0;
};
void Hit(void* refcon) {
  auto& thrower = *static_cast<Thrower*>(refcon);
  Log(thrower.name);
  if (thrower.throws > 0 && thrower.throws--) throw std::runtime_error(thrower.name);
}
float Loop(float, float, int, void* r) { return Hit(r), -1; }
int Draw(int, int, void* r) { return Hit(r), 1; }
void DrawWindow(TOKAWindowID, void* r) { Hit(r); }
void Key(TOKAWindowID, char, int, char, void* r, int losing) { losing ? void() : Hit(r); }
int Mouse(TOKAWindowID, int, int, int, void* r) { return Hit(r), 1; }
int Sniff(char, int, char, void* r) { return Hit(r), 1; }
void HotKey(void* r) { Hit(r); }
void Menu(void* r, void*) { Hit(r); }
int Command(TOKACommandRef, int, void* r) { return Hit(r), 1; }
int Read(void* r) { return Hit(r), 7; }
void Loaded(TOKAObjectRef, void* r) { Hit(r); }

using Add = std::function<void(Thrower&)>;

class Throwing : public TokaTest {
protected:
  Thrower a{"a"}, b{"b"};
  PluginScript* scripts[3] = {};
  int items = 0;

  void SetUp() override {
    host.onCall[31] = [this](const HostCall&) -> intptr_t { return ++items; };
    host.onCall[55] = [](const HostCall&) -> intptr_t { return 0x7000; };
    scripts[1] = &AddScripted("alpha.orv", "alpha");
    scripts[2] = &AddScriptedFolder("beta", "beta");
    Initialize();
    Events().clear();
  }
  // a's callback is alpha's and b's beta's. What the trigger calls without a
  // throw, it calls again after the first of them threw through it.
  void Check(const Add& add, const std::function<void()>& trigger) {
    RunAs(1, [&] { add(a); });
    RunAs(2, [&] { add(b); });
    Lines calls = During(trigger);
    ASSERT_FALSE(calls.empty());
    a.throws = b.throws = 1;
    EXPECT_THROW(trigger(), std::runtime_error);
    EXPECT_EQ(0, TOKAGetMyID());
    a.throws = b.throws = 0;
    EXPECT_EQ(calls, During(trigger));
  }
};

TEST_F(Throwing, EveryCallbackHookPassesTheExceptionAndKeepsItsList) {
  float now = 0;
  Check([](Thrower& t) { TOKARegisterFlightLoopCallback(Loop, -1, &t); },
        [&] { TOKAEventHook(0, now += 1, 0, 0); });
  Check([](Thrower& t) { TOKARegisterDrawCallback(Draw, 50, 0, &t); },
        [] { TOKADoDrawingHook(20, 0); });
  Check([](Thrower& t) { TOKACreateWindow(0, 100, 100, 0, 1, DrawWindow, Key, Mouse, &t); },
        [] { TOKADoDrawingHook(20, 0); });
  Check([](Thrower& t) { TOKATakeKeyboardFocus(TOKACreateWindow(0, 0, 0, 0, 0, DrawWindow, Key,
                                                                 Mouse, &t)); },
        [] { TOKAKeyPressHook('k', 0, 'K'); });
  Check([](Thrower& t) { TOKACreateWindow(200, 300, 300, 200, 1, DrawWindow, Key, Mouse, &t); },
        [] { TOKAMouseClickHook(250, 250, 1), TOKAMouseClickHook(250, 250, 0); });
  Check([](Thrower& t) { TOKARegisterKeySniffer(Sniff, 1, &t); },
        [] { TOKAKeyPressHook('s', 0, 'S'); });
  Check([](Thrower& t) { TOKARegisterHotKey('H', 1, "", HotKey, &t); },
        [] { TOKAKeyPressHook(0, 1, 'H'); });
  Check([](Thrower& t) { TOKAAppendMenuItem(TOKACreateMenu("m", nullptr, 0, Menu, &t), "i",
                                            nullptr, 0); },
        [this] { for (int item = 1; item <= items; ++item) TOKAMenuHook(item); });
  Check([](Thrower& t) { TOKARegisterCommandHandler(TOKACreateCommand("t/c", ""), Command, 1,
                                                    &t); },
        [] { TOKACommandHook((TOKACommandRef)0x7000, 1, 0, 1); });
  Check([](Thrower& t) { TOKARegisterDataAccessor(("t/" + t.name).c_str(), 1, 0, Read, nullptr, nullptr,
                                                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                  nullptr, nullptr, nullptr, &t, nullptr); },
        [] { TOKAGetDatai(TOKAFindDataRef("t/a")), TOKAGetDatai(TOKAFindDataRef("t/b")); });
  auto message = [this](Thrower& t) {
    scripts[TOKAGetMyID()]->onMessage = [&t](int, int, void*) { Hit(&t); };
  };
  Check(message, [] { TOKAEventHook(2, 0, 0, 0); });
}

// The object is the plugin's all the same: its unloading gives it back.
TEST_F(Throwing, AThrowingLoadCompletionStillLeavesTheObjectToThePlugin) {
  std::function<void(TOKAObjectRef)> complete;
  host.onCall[70] = [&](const HostCall& call) -> intptr_t {
    auto done = call.arg<TOKAObjectLoaded_f>(1);
    void* record = call.arg<void*>(2);
    complete = [=](TOKAObjectRef object) { done(object, record); };
    return 0;
  };
  RecordUnloads(host);
  a.throws = 1;
  RunAs(1, [&] { TOKALoadObjectAsync("a.obj", Loaded, &a); });
  EXPECT_THROW(complete(Object(0xa1)), std::runtime_error);
  EXPECT_EQ(0, TOKAGetMyID());
  TOKADisablePlugin(1);
  TOKAShutdownPlugins();
  EXPECT_EQ((Lines{"a@1", "alpha.disable@1", "beta.disable@2", "alpha.stop@1", "unload(0xa1)",
                   "beta.stop@2"}),
            TakeEvents());
}

TEST_F(Throwing, StartEnableAndDisableThrowToTheHostWithTheirPluginInOrder) {
  PluginScript& gamma = AddAircraftPlugin("gamma");
  gamma.onStart = [] {
    TOKARegisterHotKey('G', 0, "", HotKey, nullptr);
    throw std::runtime_error("start");
  };
  EXPECT_THROW(TOKAEventHook(3, 0, 0, 0), std::runtime_error);
  EXPECT_EQ(0, TOKAGetMyID());
  EXPECT_EQ(3, TOKACountPlugins());  // gamma and its hot key are gone
  EXPECT_EQ(0, TOKACountHotKeys());

  gamma.onStart = nullptr;
  int enables = 0;
  gamma.onEnable = [&] {
    if (!enables++) throw std::runtime_error("enable");
  };
  EXPECT_THROW(TOKAEventHook(3, 0, 0, 0), std::runtime_error);
  EXPECT_EQ(0, TOKAGetMyID());
  EXPECT_EQ(0, TOKAIsPluginEnabled(3));
  EXPECT_EQ(1, TOKAEnablePlugin(3));

  gamma.onDisable = [] { throw std::runtime_error("disable"); };
  EXPECT_THROW(TOKADisablePlugin(3), std::runtime_error);
  EXPECT_EQ(0, TOKAGetMyID());
  EXPECT_EQ(0, TOKAIsPluginEnabled(3));

  // A shutdown that a disable entry interrupts stops there; a second one
  // finishes it.
  TOKAEnablePlugin(3);
  scripts[1]->onDisable = [] { throw std::runtime_error("disable"); };
  EXPECT_THROW(TOKAShutdownPlugins(), std::runtime_error);
  EXPECT_EQ(0, TOKAIsPluginEnabled(1));
  EXPECT_EQ(1, TOKAIsPluginEnabled(2) && TOKAIsPluginEnabled(3));
  gamma.onDisable = nullptr;
  EXPECT_NO_THROW(TOKAShutdownPlugins());
  EXPECT_EQ(0, TOKACountPlugins());
}

// What a plugin whose stop entry threw owned is withdrawn before its module
// is closed, the plugins after it are stopped too, and the host sees nothing.
TEST_F(Throwing, AThrowingStopStillWithdrawsEverythingAndClosesThePlugin) {
  TOKAWindowID window = nullptr;
  RunAs(1, [&] {
    window = TOKACreateWindow(0, 100, 100, 0, 1, DrawWindow, Key, Mouse, &a);
    TOKARegisterHotKey('H', 0, "", HotKey, &a);
    TOKARegisterDataAccessor("t/a", 1, 0, Read, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &a, nullptr);
    TOKARegisterFlightLoopCallback(Loop, -1, &a);
  });
  scripts[1]->onStop = [] { throw std::runtime_error("stop"); };
  std::string root = tree.root();
  host.onCall[25] = [root](const HostCall& call) -> intptr_t {
    return std::strcpy(call.arg<char*>(0), root.c_str()), 0;
  };
  TOKAReloadPlugins();
  EXPECT_NO_THROW(TOKAEventHook(0, 1, 0, 0));
  EXPECT_EQ((Lines{"a@1", "alpha.disable@1", "beta.disable@2", "alpha.stop@1", "beta.stop@2",
                   "alpha.start@1", "beta.start@2", "alpha.enable@1", "beta.enable@2"}),
            TakeEvents());
  EXPECT_EQ(nullptr, TOKAGetWindowRefCon(window));
  EXPECT_EQ(0, TOKACountHotKeys());
  EXPECT_EQ(nullptr, TOKAFindDataRef("t/a"));
  TOKAEventHook(0, 2, 0, 0);
  EXPECT_EQ(Lines{}, TakeEvents());

  std::string path = tree.root() + "Resources/plugins/alpha.orv";
  EXPECT_NO_THROW(TOKAShutdownPlugins());
  EXPECT_EQ(nullptr, dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD));
}

}  // namespace
