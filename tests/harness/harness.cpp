#include "harness/harness.h"

namespace toka_test {

void RunAs(int plugin, const std::function<void()>& fn) {
  std::function<void()> copy = fn;
  TOKASendMessageToPlugin(plugin, kRunAsMessage, &copy);
}

PluginScript& TokaTest::AddScripted(const std::string& fileName, const std::string& name,
                                    const std::string& fixture) {
  std::string path = tree.AddPlugin("Resources/plugins/" + fileName, fixture);
  PluginScript& script = Script(path);
  script.name = name;
  script.signature = "test." + name;
  return script;
}

PluginScript& TokaTest::AddScriptedFolder(const std::string& folder, const std::string& name) {
  return AddScripted(folder + "/lin.orv", name);
}

}  // namespace toka_test
