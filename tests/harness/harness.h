// The shared test harness: fake host, plugin scripts, temporary trees.
#ifndef TOKA_TEST_HARNESS_H
#define TOKA_TEST_HARNESS_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "harness/fake_host.h"
#include "harness/plugin_script.h"
#include "harness/temp_tree.h"
#include "toka/TOKA.h"

namespace toka_test {

// A message that makes a scripted plugin run a function (passed as param)
// inside its own dispatch context; it is not recorded in Events().
constexpr int kRunAsMessage = 0x7A0A;

// Runs fn as plugin `plugin` (which must be enabled and scripted).
void RunAs(int plugin, const std::function<void()>& fn);

class TokaTest : public ::testing::Test {
protected:
  FakeHost& host = FakeHost::Get();
  TempTree tree;

  // Copies the scripted fixture to Resources/plugins/fileName and names it
  // (signature "test." + name).
  PluginScript& AddScripted(const std::string& fileName, const std::string& name,
                            const std::string& fixture = "scripted");
  // The same in a folder of its own: Resources/plugins/folder/lin.orv.
  PluginScript& AddScriptedFolder(const std::string& folder, const std::string& name);

  int Initialize() { return TOKAInitializePlugins(tree.root().c_str(), HostTable(), 0); }
};

}  // namespace toka_test

#endif
