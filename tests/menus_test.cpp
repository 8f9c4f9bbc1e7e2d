// Plugin menus through the simulator's menu hooks: building, picks,
// enable and check queries, destruction and withdrawal on unload.
#include "harness/harness.h"

using namespace toka_test;

namespace {

// Logs a pick as "pick(menuRef/itemRef)"; refcons are names.
void RecordPick(void* menuRef, void* itemRef) {
  Log("pick(" + std::string((const char*)menuRef) + "/" +
      (itemRef ? (const char*)itemRef : "null") + ")");
}

void* Ref(const char* name) { return (void*)name; }

class Menus : public TokaTest {
protected:
  int nextMenu = 100, nextItem = 1000;
  TOKAMenuID alpha = nullptr;

  // The host's menu services log "slot(arguments)"; it numbers its menus
  // from 100 and its items from 1000.
  void SetUp() override {
    for (int slot : {30, 31, 32, 33, 63})
      host.onCall[slot] = [this](const HostCall& c) -> intptr_t {
        std::string text = std::to_string(c.slot) + "(";
        for (size_t i = 0; i < c.words.size(); ++i)
          text += (i ? "," : "") + (i == 2 && c.slot <= 32 ? c.strings[0]
                                                          : std::to_string(c.arg<int>(i)));
        Events().push_back(text + ")");
        return c.slot == 30 ? nextMenu++ : c.slot == 31 ? nextItem++ : 0;
      };
  }
};

TEST_F(Menus, TwoPluginsBuildATreeAndPicksFollowRemovals) {
  AddScripted("a.orv", "alpha").onStart = [this] {
    TOKASetErrorCallback(RecordError);
    alpha = TOKACreateMenu("Alpha", nullptr, 0, RecordPick, Ref("A"));
    for (const char* name : {"a0", "a1", "a2"}) TOKAAppendMenuItem(alpha, name, Ref(name), 0);
    TOKAAppendMenuSeparator(TOKACreateMenu("Sub", alpha, 1, RecordPick, Ref("S")));
  };
  AddScriptedFolder("b", "beta").onStart = [this] {
    TOKACreateMenu("Beta", nullptr, 0, nullptr, nullptr);
    EXPECT_EQ(3, TOKAAppendMenuItem(alpha, "b3", Ref("b3"), 1));
  };
  Initialize();

  // The Plugins menu is made before any plugin loads; top-level plugin
  // menus hang from items of their own in it.
  EXPECT_NE(nullptr, TOKAFindPluginsMenu());
  EXPECT_EQ((Lines{"30(0,0,Plugins)", "alpha.start@1", "31(100,0,Alpha,1)", "30(100,0,Alpha)",
                   "31(101,0,a0,0)", "31(101,1,a1,0)", "31(101,2,a2,0)", "30(101,1,Sub)",
                   "31(102,0,-,0)", "beta.start@2", "31(100,1,Beta,1)", "30(100,1,Beta)",
                   "31(101,3,b3,1)", "alpha.enable@1", "beta.enable@2"}),
            TakeEvents());

  // Picks arrive by host item ID and run the menu owner's handler as it.
  EXPECT_EQ(0, TOKAMenuHook(1003));
  EXPECT_EQ(0, TOKAMenuHook(1006));  // beta's item in alpha's menu
  EXPECT_EQ(0, TOKAMenuHook(1004));  // the separator: a null item refcon
  EXPECT_EQ(0, TOKAMenuHook(1000));  // found in the Plugins menu, which has no handler
  EXPECT_EQ(1, TOKAMenuHook(999));
  EXPECT_EQ((Lines{"pick(A/a2)@1", "pick(A/b3)@1", "pick(S/null)@1"}), TakeEvents());

  RunAs(1, [&] {
    TOKARemoveMenuItem(alpha, 0);
    TOKARemoveMenuItem(alpha, -1);
    TOKARemoveMenuItem(alpha, 3);  // the count after the removal
  });
  const std::string outOfRange =
      "error(TOKARemoveMenuItem was passed an out of range item index.)@1";
  EXPECT_EQ((Lines{"63(101,0)", outOfRange, outOfRange}), TakeEvents());

  // Former items 1..3 are now 0..2, under the same host IDs.
  EXPECT_EQ(1, TOKAMenuHook(1001));
  EXPECT_EQ(0, TOKAMenuHook(1003));
  TOKAEnableMenuItem(alpha, 1, 0);  // former a2
  EXPECT_EQ(0, TOKAMenuHook(1003));
  EXPECT_EQ(0, TOKAMenuHook(1006));
  EXPECT_EQ((Lines{"pick(A/a2)@1", "pick(A/b3)@1"}), Events());
}

TEST_F(Menus, EnableAndCheckQueriesAnswerForDisabledPlugins) {
  AddScripted("a.orv", "alpha").onStart = [this] {
    alpha = TOKACreateMenu("Alpha", nullptr, 0, RecordPick, Ref("A"));
    for (const char* name : {"i0", "i1", "i2", "i3"}) TOKAAppendMenuItem(alpha, name, Ref(name), 0);
    TOKAEnableMenuItem(alpha, 1, 0);
    TOKACheckMenuItem(alpha, 0, TOKA_MENU_UNCHECKED);
    TOKACheckMenuItem(alpha, 1, TOKA_MENU_CHECKED);
    TOKACheckMenuItem(alpha, 3, 7);  // not a state the host knows
  };
  Initialize();
  Events().clear();

  // {enabled, check result, check state written} for host menu and item.
  auto query = [](std::vector<std::pair<int, int>> items) {
    std::vector<std::vector<int>> answers;
    for (auto [menu, index] : items) {
      int checked = 77;
      int result = TOKACheckMenuHook(menu, index, &checked);
      answers.push_back({TOKAMenuItemEnabled(menu, index), result, checked});
    }
    return answers;
  };
  EXPECT_EQ((std::vector<std::vector<int>>{
                {1, 0, 0}, {0, 0, 1}, {1, 0, -1}, {1, 1, 77}, {1, 1, 77}, {1, 1, 77}}),
            query({{101, 0}, {101, 1}, {101, 2}, {101, 3}, {101, 4}, {555, 0}}));
  EXPECT_EQ(0, TOKAMenuHook(1002));  // disabled item: handled, nothing called

  // A disabled plugin's items all read as disabled; the Plugins menu's do not.
  TOKADisablePlugin(1);
  EXPECT_EQ((std::vector<std::vector<int>>{{0, 0, 0}, {0, 0, 1}, {1, 1, 77}, {1, 0, -1}}),
            query({{101, 0}, {101, 1}, {101, 4}, {100, 0}}));
  EXPECT_EQ(0, TOKAMenuHook(1001));
  EXPECT_EQ((Lines{"alpha.disable@1"}), Events());
}

class MenuUnload : public Menus, public ::testing::WithParamInterface<uint32_t> {};

TEST_P(MenuUnload, DestroyingAndUnloadingWithdrawMenusAndPluginsMenuItems) {
  const bool destroys = GetParam() > 283;
  host.table.version = GetParam();
  TOKAMenuID temp = nullptr;
  AddScripted("a.orv", "alpha").onStart = [&] {
    alpha = TOKACreateMenu("Alpha", nullptr, 0, RecordPick, Ref("A"));
    TOKAAppendMenuItem(alpha, "a0", Ref("a0"), 0);
    TOKAAppendMenuItem(TOKACreateMenu("Sub", alpha, 0, RecordPick, Ref("S")), "s0", nullptr, 0);
    TOKAAppendMenuItem(TOKAFindPluginsMenu(), "Alpha extra", nullptr, 0);
    temp = TOKACreateMenu("Temp", alpha, 0, nullptr, nullptr);
    TOKAAppendMenuItem(temp, "t0", nullptr, 0);
  };
  AddScriptedFolder("b", "beta").onStart = [&] {
    TOKAAppendMenuItem(TOKACreateMenu("Beta", nullptr, 0, RecordPick, Ref("B")), "b0", nullptr, 0);
    TOKAAppendMenuItem(alpha, "b-in-alpha", Ref("x"), 0);
  };
  Initialize();
  // Plugins menu (100): Alpha, Alpha extra (alpha's), Beta (beta's).
  // Alpha (101): a0, b-in-alpha. Sub (102): s0. Temp (103): t0. Beta (104): b0.
  TOKACheckMenuItem(alpha, 0, TOKA_MENU_CHECKED);
  Events().clear();

  // Only the owner may clear or destroy a menu.
  RunAs(2, [&] {
    TOKAClearAllMenuItems(alpha);
    TOKADestroyMenu(alpha);
    TOKADestroyMenu(temp);
  });
  EXPECT_EQ(Lines{}, Events());
  RunAs(1, [&] {
    TOKADestroyMenu(temp);
    TOKADestroyMenu(temp);  // no longer a menu
  });
  Lines expected = {"32(103,0,,0)"};
  if (destroys) expected.push_back("33(103)");
  EXPECT_EQ(expected, TakeEvents());
  int checked = 0;
  EXPECT_EQ(1, TOKACheckMenuHook(103, 0, &checked));

  TOKAShutdownPlugins();
  // Alpha's menus go, with beta's item in one of them; then its two items
  // of the Plugins menu, last first. Then beta's.
  expected = {"alpha.disable@1", "beta.disable@2", "alpha.stop@1", "32(101,0,,0)", "32(101,1,,0)"};
  if (destroys) expected.push_back("33(101)");
  expected.push_back("32(102,0,,0)");
  if (destroys) expected.push_back("33(102)");
  expected.insert(expected.end(), {"63(100,1)", "63(100,0)", "beta.stop@2", "32(104,0,,0)"});
  if (destroys) expected.push_back("33(104)");
  expected.push_back("63(100,0)");
  EXPECT_EQ(expected, Events());

  // Whatever the host version, the menus no longer answer.
  EXPECT_EQ(1, TOKACheckMenuHook(101, 0, &checked));
  EXPECT_EQ(1, TOKAMenuHook(1001));
  EXPECT_EQ(1, TOKAMenuItemEnabled(100, 0));
}

INSTANTIATE_TEST_SUITE_P(HostVersion, MenuUnload, ::testing::Values(283u, 284u));

}  // namespace
