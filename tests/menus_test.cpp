// Plugin menus through the simulator's menu hooks: building, picks,
// removals, destruction and withdrawal on unload.
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
  };
  AddScriptedFolder("b", "beta").onStart = [this] {
    EXPECT_EQ(3, TOKAAppendMenuItem(alpha, "b3", Ref("b3"), 1));
  };
  Initialize();
  // The Plugins menu is made before any plugin loads; top-level plugin
  // menus hang from items of their own in it.
  EXPECT_EQ((Lines{"30(0,0,Plugins)", "alpha.start@1", "31(100,0,Alpha,1)", "30(100,0,Alpha)",
                   "31(101,0,a0,0)", "31(101,1,a1,0)", "31(101,2,a2,0)", "beta.start@2",
                   "31(101,3,b3,1)", "alpha.enable@1", "beta.enable@2"}),
            TakeEvents());

  // Picks arrive by host item ID and run the menu owner's handler as it.
  EXPECT_EQ(0, TOKAMenuHook(1003));
  EXPECT_EQ(0, TOKAMenuHook(1004));  // beta's item in alpha's menu
  EXPECT_EQ(1, TOKAMenuHook(999));
  EXPECT_EQ((Lines{"pick(A/a2)@1", "pick(A/b3)@1"}), TakeEvents());

  RunAs(1, [&] {
    TOKARemoveMenuItem(alpha, 0);
    TOKARemoveMenuItem(alpha, 3);  // the count after the removal
  });
  EXPECT_EQ(
      (Lines{"63(101,0)", "error(TOKARemoveMenuItem was passed an out of range item index.)@1"}),
      TakeEvents());
  // Former items 1..3 are now 0..2, under the same host IDs.
  TOKAEnableMenuItem(alpha, 1, 0);  // former a2
  EXPECT_EQ(0, TOKAMenuHook(1003));
  EXPECT_EQ(0, TOKAMenuHook(1004));
  EXPECT_EQ((Lines{"pick(A/b3)@1"}), Events());
}

// A menu kept past its destruction, and item indexes past the items, reach
// neither the simulator nor the records: nothing changes, nothing is written,
// and the plugin is told nothing, as it never was.
TEST_F(Menus, ADestroyedMenuAndMissingItemsChangeNothing) {
  TOKAMenuID gone = nullptr;
  AddScripted("a.orv", "alpha").onStart = [&] {
    TOKASetErrorCallback(RecordError);
    alpha = TOKACreateMenu("Alpha", nullptr, 0, RecordPick, Ref("A"));
    TOKAAppendMenuItem(alpha, "a0", Ref("a0"), 0);
    gone = TOKACreateMenu("Gone", alpha, 0, nullptr, nullptr);
    TOKADestroyMenu(gone);
  };
  Initialize();
  Events().clear();
  int state = 7;
  RunAs(1, [&] {
    EXPECT_EQ(-1, TOKAAppendMenuItem(gone, "x", nullptr, 0));
    EXPECT_EQ(-1, TOKAAppendMenuSeparator(nullptr));
    EXPECT_EQ(nullptr, TOKACreateMenu("Sub", gone, 0, nullptr, nullptr));
    TOKASetMenuItemName(gone, 0, "x", 0);
    TOKARemoveMenuItem(gone, 0);
    TOKAClearAllMenuItems(gone);
    TOKADestroyMenu(gone);
    TOKAEnableMenuItem(gone, 0, 0);
    TOKACheckMenuItem(gone, 0, TOKA_MENU_CHECKED);
    TOKACheckMenuItemState(gone, 0, &state);
    for (int index : {-1, 1}) {
      TOKAEnableMenuItem(alpha, index, 0);
      TOKACheckMenuItem(alpha, index, TOKA_MENU_CHECKED);
      TOKACheckMenuItemState(alpha, index, &state);
    }
  });
  EXPECT_EQ(7, state);
  EXPECT_EQ(Lines{}, Events());
  // Alpha's one item is as it was: enabled, without a check mark.
  int checked = 5;
  EXPECT_EQ(0, TOKACheckMenuHook(101, 0, &checked));
  EXPECT_EQ(-1, checked);
  EXPECT_EQ(0, TOKAMenuHook(1001));
  EXPECT_EQ(Lines{"pick(A/a0)@1"}, Events());
}

class MenuUnload : public Menus, public ::testing::WithParamInterface<uint32_t> {};

TEST_P(MenuUnload, DestroyingAndUnloadingWithdrawMenusAndPluginsMenuItems) {
  const bool destroys = GetParam() > 283;
  host.table.version = GetParam();
  AddScripted("a.orv", "alpha").onStart = [&] {
    alpha = TOKACreateMenu("Alpha", nullptr, 0, RecordPick, Ref("A"));
    TOKAAppendMenuItem(alpha, "a0", Ref("a0"), 0);
    TOKAAppendMenuItem(TOKAFindPluginsMenu(), "Alpha extra", nullptr, 0);
  };
  AddScriptedFolder("b", "beta");
  Initialize();
  // Plugins menu (100): Alpha, Alpha extra. Alpha (101): a0.
  Events().clear();
  RunAs(2, [&] { TOKADestroyMenu(alpha); });  // only the owner may destroy a menu
  EXPECT_EQ(Lines{}, Events());
  TOKAShutdownPlugins();
  // Alpha's menu goes, then its two items of the Plugins menu, last first.
  Lines expected = {"alpha.disable@1", "beta.disable@2", "alpha.stop@1", "32(101,0,,0)"};
  if (destroys) expected.push_back("33(101)");
  expected.insert(expected.end(), {"63(100,1)", "63(100,0)", "beta.stop@2"});
  EXPECT_EQ(expected, Events());
  EXPECT_EQ(1, TOKAMenuHook(1001));  // whatever the host version, the menu no longer answers
}

INSTANTIATE_TEST_SUITE_P(HostVersion, MenuUnload, ::testing::Values(283u, 284u));

}  // namespace
