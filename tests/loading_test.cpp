// Finding, loading, starting and rejecting plugins, and the load log.
#include "harness/harness.h"

using namespace toka_test;

namespace {

class Loading : public TokaTest {
protected:
  std::string Loaded(const std::string& path) { return "Loaded: " + path + ".\n\n"; }
  std::string Missing(const std::string& path) {
    return "Failed: " + path +
           ".  (This file is missing, not a DLL or could not be loaded due to another missing "
           "DLL.)\n\n";
  }
  std::string Fetching() { return "Fetching plugins for " + tree.plugins() + "\n\n"; }
};

TEST_F(Loading, LoadsHostAdminFilesThenFoldersAndRecordsWhatEachReported) {
  AddScriptedFolder("PluginAdmin", "admin");
  AddScripted("alpha.orv", "alpha");
  AddScripted("PluginAdminTools.orv", "tools");  // never loaded: its name says PluginAdmin
  AddScriptedFolder("gamma", "gamma");
  tree.AddFolder("Resources/plugins/empty");     // no lin.orv: silently passed over
  tree.AddFile("Resources/plugins/readme.txt");

  EXPECT_EQ(17, Initialize());
  EXPECT_EQ(Fetching() + Loaded(tree.plugins() + "/PluginAdmin/lin.orv") +
                Loaded(tree.plugins() + "/alpha.orv") + Loaded(tree.plugins() + "/gamma/lin.orv"),
            host.log);
  EXPECT_EQ((Lines{"Loading Plugin: alpha.orv"}), host.CallsTo(54).at(0).strings);
  // Each plugin starts and is enabled under its own ID; the simulator's
  // context comes back afterwards.
  EXPECT_EQ((Lines{"admin.start@1", "alpha.start@2", "gamma.start@3", "admin.enable@1",
                   "alpha.enable@2", "gamma.enable@3"}),
            Events());
  EXPECT_EQ(0, TOKAGetMyID());

  char name[256], path[256], signature[256], description[256];
  TOKAGetPluginInfo(2, name, path, signature, description);
  EXPECT_EQ((Lines{"alpha", tree.plugins() + "/alpha.orv", "test.alpha", "test plugin"}),
            (Lines{name, path, signature, description}));
  EXPECT_EQ(3, TOKAFindPluginBySignature("test.gamma"));
  EXPECT_EQ(2, TOKAFindPluginByPath((tree.plugins() + "/alpha.orv").c_str()));
}

TEST_F(Loading, FailuresAreLoggedAndLeaveNoRecord) {
  tree.AddPlugin("Resources/plugins/a_nostart.orv", "no_start");
  Script(tree.AddPlugin("Resources/plugins/b_refuses.orv", "refuses_start")).name = "refuses";
  Script(tree.AddPlugin("Resources/plugins/c_fixed.orv", "fixed_signature")).name = "c_fixed";
  Script(tree.AddPlugin("Resources/plugins/d_fixed.orv", "fixed_signature")).name = "d_fixed";
  tree.AddFile("Resources/plugins/f_broken.orv", std::string(512, 'x'));
  Initialize();

  // The first of two equal signatures stays; the second is stopped under the
  // ID it would have had. The refusal is never stopped.
  std::string expected = Fetching() + Missing(tree.plugins() + "/PluginAdmin/lin.orv"), kept;
  for (const std::string& name : TempTree::Listing(tree.plugins())) {
    std::string path = tree.plugins() + "/" + name, dl = "dlerror:" + path;
    if (name == "a_nostart.orv")
      expected += dl + ": undefined symbol: OrvanePluginStart\n" + dl +
                  ": undefined symbol: OrvanePluginDisable\n" + dl +
                  ": undefined symbol: OrvanePluginReceiveMessage\nFailed: " + path +
                  ".  (This file is a loadable DLL but is missing the OrvanePluginStart "
                  "callback.)\n\n";
    if (name == "b_refuses.orv")
      expected += "Failed: " + path +
                  ". (The plugin refused to start by returning 0 from OrvanePluginStart.)\n\n";
    if (name[1] == '_' && name.find("fixed") != std::string::npos)
      expected += !kept.empty() ? "Warning: " + path + " Signature: toka.test.fixed. (A version "
                                                       "of this plugin is already loaded.)\n"
                                : (kept = name.substr(0, 7), Loaded(path));
    if (name == "f_broken.orv") expected += dl + ": invalid ELF header\n" + Missing(path);
  }
  EXPECT_EQ(expected, host.log);
  ASSERT_EQ(2, TOKACountPlugins());
  EXPECT_EQ(1, TOKAFindPluginBySignature("toka.test.fixed"));
  Lines stops;
  for (const std::string& event : Events())
    if (event.find(".stop@") != std::string::npos) stops.push_back(event);
  EXPECT_EQ((Lines{(kept == "c_fixed" ? "d_fixed" : "c_fixed") + std::string(".stop@2")}), stops);
}

}  // namespace
