// Finding, loading, starting and rejecting plugins, and the load log.
#include "harness/harness.h"

#include <unistd.h>

#include <cstdio>

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
  std::string Duplicate(const std::string& path, const std::string& signature) {
    return "Warning: " + path + " Signature: " + signature +
           ". (A version of this plugin is already loaded.)\n";
  }
  std::string NoSymbol(const std::string& path, const char* symbol) {
    return "dlerror:" + path + ": undefined symbol: " + symbol + "\n";
  }
  std::string Fetching() { return "Fetching plugins for " + tree.plugins() + "\n\n"; }
};

TEST_F(Loading, LoadsHostAdminFilesThenFoldersAndLogsEachStep) {
  AddScriptedFolder("PluginAdmin", "admin");
  AddScripted("alpha.orv", "alpha");
  AddScripted("Beta.ORV", "beta");              // case does not matter
  AddScripted("PluginAdminTools.orv", "tools");  // never loaded: its name says PluginAdmin
  AddScriptedFolder("gamma", "gamma");
  tree.AddFolder("Resources/plugins/empty");     // no lin.orv: silently passed over
  tree.AddFile("Resources/plugins/readme.txt");

  // Files come in the file system's own listing order.
  std::string expected = Fetching() + Loaded(tree.plugins() + "/PluginAdmin/lin.orv");
  Lines names = {"Orvane", "admin"}, progress;
  for (const std::string& name : TempTree::Listing(tree.plugins())) {
    if (name != "alpha.orv" && name != "Beta.ORV") continue;
    expected += Loaded(tree.plugins() + "/" + name);
    names.push_back(name == "alpha.orv" ? "alpha" : "beta");
    progress.push_back("Loading Plugin: " + name);
  }
  expected += Loaded(tree.plugins() + "/gamma/lin.orv");
  names.push_back("gamma");

  EXPECT_EQ(17, Initialize());
  EXPECT_EQ(expected, host.log);
  Lines shown;
  for (const HostCall& call : host.CallsTo(54)) shown.push_back(call.strings.at(0));
  EXPECT_EQ(progress, shown);

  ASSERT_EQ((int)names.size(), TOKACountPlugins());
  Lines events;
  for (int id = 0; id < TOKACountPlugins(); ++id) {
    char name[256];
    TOKAGetPluginInfo(id, name, nullptr, nullptr, nullptr);
    EXPECT_EQ(names[id], name) << id;
    EXPECT_EQ(1, TOKAIsPluginEnabled(id)) << id;
    if (id) events.insert(events.begin() + id - 1, names[id] + ".start" + At(id));
    if (id) events.push_back(names[id] + ".enable" + At(id));
  }
  // Each plugin starts and is enabled under its own ID; the simulator's
  // context comes back afterwards.
  EXPECT_EQ(events, Events());
  EXPECT_EQ(0, TOKAGetMyID());
}

TEST_F(Loading, RecordsWhatThePluginReportedAndFindsIt) {
  AddScripted("alpha.orv", "alpha").description = std::string(300, 'd');
  AddScriptedFolder("beta", "beta").description = std::string(255, 'b');
  Initialize();

  char name[256], path[256], signature[256], description[256];
  TOKAGetPluginInfo(1, name, path, signature, description);
  EXPECT_EQ((Lines{"alpha", tree.plugins() + "/alpha.orv", "test.alpha", std::string(255, 'd')}),
            (Lines{name, path, signature, description}));
  TOKAGetPluginInfo(2, nullptr, nullptr, nullptr, description);
  EXPECT_EQ(std::string(255, 'b'), description);
  TOKAGetPluginInfo(0, name, path, signature, description);
  EXPECT_EQ((Lines{"Orvane", "dravik.orvane.orvane", "", "Orvane flight simulator"}),
            (Lines{name, path, signature, description}));

  EXPECT_EQ(1, TOKAFindPluginBySignature("test.alpha"));
  EXPECT_EQ(-1, TOKAFindPluginBySignature("TEST.ALPHA"));
  EXPECT_EQ(-1, TOKAFindPluginBySignature("dravik.orvane.orvane"));
  EXPECT_EQ(0, TOKAFindPluginBySignature(""));
  EXPECT_EQ(0, TOKAFindPluginByPath("dravik.orvane.orvane"));
  EXPECT_EQ(1, TOKAFindPluginByPath((tree.plugins() + "/alpha.orv").c_str()));
  EXPECT_EQ(-1, TOKAFindPluginByPath("alpha.orv"));
  EXPECT_EQ(0, TOKAIsPluginEnabled(-1));
  EXPECT_EQ(0, TOKAIsPluginEnabled(TOKACountPlugins()));
}

TEST_F(Loading, FailuresAreLoggedAndLeaveNoRecord) {
  // No PluginAdmin folder at all.
  tree.AddPlugin("Resources/plugins/a_nostart.orv", "no_start");
  Script(tree.AddPlugin("Resources/plugins/b_refuses.orv", "refuses_start")).name = "refuses";
  Script(tree.AddPlugin("Resources/plugins/c_fixed.orv", "fixed_signature")).name = "c_fixed";
  Script(tree.AddPlugin("Resources/plugins/d_fixed.orv", "fixed_signature")).name = "d_fixed";
  AddScripted("e_empty.orv", "empty").signature = "";
  tree.AddFile("Resources/plugins/f_broken.orv", std::string(512, 'x'));
  // A folder whose name ends in "dir" is listed twice: the second load is
  // a duplicate of the first.
  AddScriptedFolder("Tooldir", "tool");
  Initialize();

  // A rejected copy is stopped under the ID it had: the next free one. The
  // refusal is never stopped.
  std::string expected = Fetching() + Missing(tree.plugins() + "/PluginAdmin/lin.orv");
  Lines stops;
  int next = 1;
  for (const std::string& name : TempTree::Listing(tree.plugins())) {
    std::string path = tree.plugins() + "/" + name;
    if (name == "a_nostart.orv")
      expected += NoSymbol(path, "OrvanePluginStart") + NoSymbol(path, "OrvanePluginDisable") +
                  NoSymbol(path, "OrvanePluginReceiveMessage") + "Failed: " + path +
                  ".  (This file is a loadable DLL but is missing the OrvanePluginStart "
                  "callback.)\n\n";
    if (name == "b_refuses.orv")
      expected += "Failed: " + path +
                  ". (The plugin refused to start by returning 0 from OrvanePluginStart.)\n\n";
    if (name == "c_fixed.orv" || name == "d_fixed.orv") {
      expected += next == 1 ? Loaded(path) : Duplicate(path, "toka.test.fixed");
      if (next == 1) ++next;
      else stops.push_back(name.substr(0, 7) + ".stop" + At(next));
    }
    if (name == "e_empty.orv") {
      expected += Duplicate(path, "");
      stops.push_back("empty.stop" + At(next));
    }
    if (name == "f_broken.orv")
      expected += "dlerror:" + path + ": invalid ELF header\n" + Missing(path);
  }
  std::string tool = tree.plugins() + "/Tooldir/lin.orv";
  expected += Loaded(tool) + Duplicate(tool, "test.tool");
  stops.push_back("tool.stop@3");
  EXPECT_EQ(expected, host.log);

  // Only the host, the first of the two equal signatures and the tool remain.
  ASSERT_EQ(3, TOKACountPlugins());
  EXPECT_EQ(1, TOKAFindPluginBySignature("toka.test.fixed"));
  EXPECT_EQ(2, ID("tool"));
  EXPECT_EQ(1, TOKAIsPluginEnabled(2));  // the module both loads share stays usable
  EXPECT_EQ(0, TOKAGetMyID());
  Lines stopped;
  for (const std::string& event : Events())
    if (event.find(".stop@") != std::string::npos) stopped.push_back(event);
  EXPECT_EQ(stops, stopped);
}

TEST_F(Loading, FolderEntryThatCannotBeExaminedIsReportedOnStandardOutput) {
  tree.AddFolder("Resources/plugins");
  ASSERT_EQ(0, symlink("nowhere", (tree.plugins() + "/dangling").c_str()));
  testing::internal::CaptureStdout();
  Initialize();
  std::fflush(stdout);
  EXPECT_EQ("name dangling, errno 2\n", testing::internal::GetCapturedStdout());
  EXPECT_EQ(1, TOKACountPlugins());
}

}  // namespace
