#include "harness/data_harness.h"

#include <cstring>

namespace toka_test {

std::vector<std::string>& Calls() {
  static std::vector<std::string> calls;
  return calls;
}

void LogCall(const std::string& text) {
  Calls().push_back(text + "@" + std::to_string(TOKAGetMyID()));
}

std::vector<std::string>& Errors() {
  static std::vector<std::string> errors;
  return errors;
}

void RecordError(const char* message) {
  Errors().push_back(std::string(message) + "@" + std::to_string(TOKAGetMyID()));
}

void UserAircraftAt(const TempTree& tree, const std::string& relativePath) {
  std::string path = tree.root() + relativePath;
  FakeHost::Get().onCall[18] = [path](const HostCall& call) -> intptr_t {
    std::strcpy(call.arg<char*>(1), path.c_str());
    std::strcpy(call.arg<char*>(2), "test.acf");
    return 0;
  };
}

PluginScript& AddAircraftPlugin(TempTree& tree, const std::string& name) {
  UserAircraftAt(tree, "Aircraft/Test/test.acf");
  PluginScript& script =
      Script(tree.AddPlugin("Aircraft/Test/plugins/" + name + "/lin.orv", "scripted"));
  script.name = name;
  script.signature = "test." + name;
  return script;
}

}  // namespace toka_test
