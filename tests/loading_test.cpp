// Finding, loading, starting and rejecting plugins, and the load log.
#include "harness/harness.h"

#include <algorithm>

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
  std::string NoSymbol(const std::string& path, const char* symbol) {
    return "dlerror:" + path + ": undefined symbol: " + symbol + "\n";
  }
};

TEST_F(Loading, LoadsHostAdminFilesThenFoldersAndLogsEachStep) {
  AddScriptedFolder("PluginAdmin", "admin");
  AddScripted("alpha.orv", "alpha");
  AddScripted("Beta.ORV", "beta");              // case does not matter
  AddScripted("PluginAdminTools.orv", "tools");  // never loaded: its name says PluginAdmin
  AddScriptedFolder("gamma", "gamma");
  tree.AddFolder("Resources/plugins/empty");     // no lin.orv: silently passed over
  tree.AddFile("Resources/plugins/readme.txt");

  // The expected order is the file system's own listing order.
  std::string expected = Fetching() + Loaded(tree.plugins() + "/PluginAdmin/lin.orv");
  std::vector<std::string> expectedNames = {"Orvane", "admin"};
  std::vector<std::string> progress;
  for (const std::string& name : TempTree::Listing(tree.plugins())) {
    if (name == "alpha.orv" || name == "Beta.ORV") {
      expected += Loaded(tree.plugins() + "/" + name);
      expectedNames.push_back(name == "alpha.orv" ? "alpha" : "beta");
    }
    if (name == "alpha.orv" || name == "Beta.ORV" || name == "PluginAdminTools.orv")
      if (name != "PluginAdminTools.orv") progress.push_back("Loading Plugin: " + name);
  }
  expected += Loaded(tree.plugins() + "/gamma/lin.orv");
  expectedNames.push_back("gamma");

  EXPECT_EQ(17, Initialize());
  EXPECT_EQ(expected, host.log);

  ASSERT_EQ((int)expectedNames.size(), TOKACountPlugins());
  for (int id = 0; id < TOKACountPlugins(); ++id) {
    char name[256];
    TOKAGetPluginInfo(id, name, nullptr, nullptr, nullptr);
    EXPECT_EQ(expectedNames[id], name) << "ID " << id;
    EXPECT_EQ(1, TOKAIsPluginEnabled(id)) << "ID " << id;
  }

  std::vector<std::string> shown;
  for (const HostCall& call : host.CallsTo(54)) shown.push_back(call.strings.at(0));
  EXPECT_EQ(progress, shown);
  // Each plugin started and was enabled under its own ID.
  EXPECT_NE(Events().end(), std::find(Events().begin(), Events().end(), "admin.start@1"));
  EXPECT_NE(Events().end(), std::find(Events().begin(), Events().end(), "admin.enable@1"));
  EXPECT_EQ(0, TOKAGetMyID());
}

TEST_F(Loading, RecordsWhatThePluginReportedAndFindsIt) {
  PluginScript& alpha = AddScripted("alpha.orv", "alpha");
  alpha.description = std::string(300, 'd');
  Initialize();

  char name[256], path[256], signature[256], description[256];
  TOKAGetPluginInfo(1, name, path, signature, description);
  EXPECT_STREQ("alpha", name);
  EXPECT_EQ(tree.plugins() + "/alpha.orv", path);
  EXPECT_STREQ("test.alpha", signature);
  EXPECT_EQ(std::string(255, 'd'), description);

  TOKAGetPluginInfo(0, name, path, signature, description);
  EXPECT_STREQ("Orvane", name);
  EXPECT_STREQ("dravik.orvane.orvane", path);
  EXPECT_STREQ("", signature);
  EXPECT_STREQ("Orvane flight simulator", description);

  EXPECT_EQ(1, TOKAFindPluginBySignature("test.alpha"));
  EXPECT_EQ(-1, TOKAFindPluginBySignature("TEST.ALPHA"));
  EXPECT_EQ(-1, TOKAFindPluginBySignature("dravik.orvane.orvane"));
  EXPECT_EQ(0, TOKAFindPluginBySignature(""));
  EXPECT_EQ(0, TOKAFindPluginByPath("dravik.orvane.orvane"));
  EXPECT_EQ(1, TOKAFindPluginByPath((tree.plugins() + "/alpha.orv").c_str()));
  EXPECT_EQ(-1, TOKAFindPluginByPath("alpha.orv"));
  EXPECT_EQ(7, TOKAGetNthPlugin(7));
  EXPECT_EQ(0, TOKAIsPluginEnabled(-1));
  EXPECT_EQ(0, TOKAIsPluginEnabled(TOKACountPlugins()));
}

TEST_F(Loading, DescriptionOf255CharactersComesBackWhole) {
  AddScripted("alpha.orv", "alpha").description = std::string(255, 'x');
  Initialize();
  char description[256];
  TOKAGetPluginInfo(1, nullptr, nullptr, nullptr, description);
  EXPECT_EQ(std::string(255, 'x'), description);
}

TEST_F(Loading, FailuresAreLoggedAndLeaveNoRecord) {
  // No PluginAdmin folder at all.
  std::string noStart = tree.AddPlugin("Resources/plugins/a_nostart.orv", "no_start");
  std::string refuses = tree.AddPlugin("Resources/plugins/b_refuses.orv", "refuses_start");
  std::string first = tree.AddPlugin("Resources/plugins/c_fixed.orv", "fixed_signature");
  std::string second = tree.AddPlugin("Resources/plugins/d_fixed.orv", "fixed_signature");
  PluginScript& empty = AddScripted("e_empty.orv", "empty");
  empty.signature = "";
  std::string broken = tree.AddFile("Resources/plugins/f_broken.orv", std::string(512, 'x'));

  Initialize();

  std::map<std::string, std::string> lineFor;
  lineFor["a_nostart.orv"] = NoSymbol(noStart, "OrvanePluginStart") +
                             NoSymbol(noStart, "OrvanePluginDisable") +
                             NoSymbol(noStart, "OrvanePluginReceiveMessage") + "Failed: " + noStart +
                             ".  (This file is a loadable DLL but is missing the OrvanePluginStart "
                             "callback.)\n\n";
  lineFor["b_refuses.orv"] =
      NoSymbol(refuses, "OrvanePluginEnable") + NoSymbol(refuses, "OrvanePluginDisable") +
      NoSymbol(refuses, "OrvanePluginReceiveMessage") + "Failed: " + refuses +
      ". (The plugin refused to start by returning 0 from OrvanePluginStart.)\n\n";
  std::string expected = Fetching() + Missing(tree.plugins() + "/PluginAdmin/lin.orv");
  bool fixedSeen = false;
  for (const std::string& name : TempTree::Listing(tree.plugins())) {
    if (name == "c_fixed.orv" || name == "d_fixed.orv") {
      std::string path = tree.plugins() + "/" + name;
      expected += NoSymbol(path, "OrvanePluginReceiveMessage");
      expected += fixedSeen ? "Warning: " + path +
                                  " Signature: toka.test.fixed. (A version of this plugin is "
                                  "already loaded.)\n"
                            : Loaded(path);
      fixedSeen = true;
    } else if (name == "e_empty.orv") {
      std::string path = tree.plugins() + "/" + name;
      expected += "Warning: " + path +
                  " Signature: . (A version of this plugin is already loaded.)\n";
    } else if (name == "f_broken.orv") {
      std::string path = tree.plugins() + "/" + name;
      expected += "dlerror:" + path + ": invalid ELF header\n" + Missing(path);
    } else {
      expected += lineFor[name];
    }
  }
  EXPECT_EQ(expected, host.log);

  // Only the host and the first of the two equal signatures remain.
  ASSERT_EQ(2, TOKACountPlugins());
  EXPECT_EQ(1, TOKAFindPluginBySignature("toka.test.fixed"));
  EXPECT_EQ(0, TOKAGetMyID());
  // The rejected copy and the empty signature were started, then stopped
  // under their own IDs; the refusal was never stopped.
  std::vector<std::string> stops;
  for (const std::string& event : Events())
    if (event.find(".stop@") != std::string::npos) stops.push_back(event);
  EXPECT_EQ(2u, stops.size());
  for (const std::string& event : stops) EXPECT_EQ("@2", event.substr(event.size() - 2)) << event;
}

TEST_F(Loading, PluginSeesItsOwnIDInEveryEntryAndAfterNestedCalls) {
  PluginScript& alpha = AddScripted("a.orv", "alpha");
  PluginScript& beta = AddScripted("b.orv", "beta");
  std::vector<int> seen;
  alpha.onEnable = [&] {
    int beta = TOKAFindPluginBySignature("test.beta");
    seen.push_back(TOKAGetMyID());
    TOKASendMessageToPlugin(beta, 5, nullptr);
    seen.push_back(TOKAGetMyID());
  };
  beta.onMessage = [&](int from, int, void*) { seen.push_back(TOKAGetMyID()); };
  Initialize();

  int a = TOKAFindPluginBySignature("test.alpha"), b = TOKAFindPluginBySignature("test.beta");
  // Beta is not enabled yet when alpha comes first, and then gets nothing.
  if (a < b)
    EXPECT_EQ((std::vector<int>{a, a}), seen);
  else
    EXPECT_EQ((std::vector<int>{a, b, a}), seen);
  for (const std::string& event : Events()) {
    std::string id = event.substr(event.find('@') + 1);
    EXPECT_EQ(event.rfind("alpha", 0) == 0 ? std::to_string(a) : std::to_string(b), id) << event;
  }
  EXPECT_EQ(0, TOKAGetMyID());
}

TEST_F(Loading, FolderWhoseNameEndsInDirIsListedTwice) {
  AddScriptedFolder("Tooldir", "tool");
  Initialize();
  std::string path = tree.plugins() + "/Tooldir/lin.orv";
  EXPECT_EQ(Fetching() + Missing(tree.plugins() + "/PluginAdmin/lin.orv") + Loaded(path) +
                "Warning: " + path +
                " Signature: test.tool. (A version of this plugin is already loaded.)\n",
            host.log);
  EXPECT_EQ(2, TOKACountPlugins());
  // The module is shared by both loads; the survivor is still enabled and callable.
  EXPECT_EQ(1, TOKAIsPluginEnabled(1));
}

TEST_F(Loading, ProgressTextsNeedTableRevisionAbove3) {
  AddScripted("a.orv", "alpha");
  host.table.revision = 3;
  Initialize();
  EXPECT_EQ(0u, host.CountCalls(54));
  EXPECT_EQ(2, TOKACountPlugins());
}

TEST_F(Loading, ShutdownDisablesThenStopsInAscendingOrderAndAllowsAnotherStart) {
  AddScripted("a.orv", "alpha");
  AddScriptedFolder("f", "beta");
  Initialize();
  Events().clear();
  TOKAShutdownPlugins();
  EXPECT_EQ((std::vector<std::string>{"alpha.disable@1", "beta.disable@2", "alpha.stop@1",
                                      "beta.stop@2"}),
            Events());
  EXPECT_EQ(0, TOKACountPlugins());

  Events().clear();
  EXPECT_EQ(17, Initialize());
  EXPECT_EQ(3, TOKACountPlugins());
  EXPECT_EQ((std::vector<std::string>{"alpha.start@1", "beta.start@2", "alpha.enable@1",
                                      "beta.enable@2"}),
            Events());
}

}  // namespace
