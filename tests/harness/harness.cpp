#include "harness/harness.h"

#include <cstdio>
#include <cstring>

namespace toka_test {

void RunAs(int plugin, const std::function<void()>& fn) {
  std::function<void()> copy = fn;
  TOKASendMessageToPlugin(plugin, kRunAsMessage, &copy);
}

void Log(const std::string& text) { Events().push_back(text + At(TOKAGetMyID())); }

Lines TakeEvents() {
  Lines events;
  events.swap(Events());
  return events;
}

Lines During(const std::function<void()>& fn) {
  Events().clear();
  fn();
  return TakeEvents();
}

int ScriptedCallback::Run(const std::string& call) {
  Log(name + call);
  int answer = result;  // the script may free the callback
  if (onCall) onCall();
  return answer;
}

void RecordError(const char* message) { Log("error(" + std::string(message) + ")"); }

void RecordErrorsOf(int plugin) {
  RunAs(plugin, [] { TOKASetErrorCallback(RecordError); });
}

std::string ObjectName(TOKAObjectRef object) {
  char text[32] = "null";
  if (object) std::snprintf(text, sizeof text, "%#lx", (unsigned long)(uintptr_t)object);
  return text;
}

void RecordUnloads(FakeHost& host) {
  host.onCall[66] = [](const HostCall& call) -> intptr_t {
    Events().push_back("unload(" + ObjectName(call.arg<TOKAObjectRef>(0)) + ")");
    return 0;
  };
}

PluginScript& TokaTest::AddScripted(const std::string& fileName, const std::string& name) {
  PluginScript& script = Script(tree.AddPlugin("Resources/plugins/" + fileName, "scripted"));
  script.name = name;
  script.signature = "test." + name;
  return script;
}

PluginScript& TokaTest::AddScriptedFolder(const std::string& folder, const std::string& name) {
  return AddScripted(folder + "/lin.orv", name);
}

PluginScript& TokaTest::AddAircraftPlugin(const std::string& name, const std::string& aircraft) {
  std::string folder = "Aircraft/" + aircraft;
  UserAircraftAt(tree, folder + "/" + aircraft + ".acf");
  PluginScript& script =
      Script(tree.AddPlugin(folder + "/plugins/" + name + "/lin.orv", "scripted"));
  script.name = name;
  script.signature = "test." + name;
  return script;
}

void UserAircraftAt(const TempTree& tree, const std::string& relativePath) {
  std::string path = tree.root() + relativePath;
  FakeHost::Get().onCall[18] = [path](const HostCall& call) -> intptr_t {
    std::strcpy(call.arg<char*>(1), path.c_str());
    std::strcpy(call.arg<char*>(2), path.substr(path.rfind('/') + 1).c_str());
    return 0;
  };
}

void TokaTest::StartTwo() {
  AddScripted("alpha.orv", "alpha");
  AddScriptedFolder("beta", "beta");
  Initialize();
  Events().clear();
  host.ClearRecords();
}

}  // namespace toka_test
