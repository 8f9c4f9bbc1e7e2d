#include "harness/plugin_script.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>

#include "toka/TOKAPlugins.h"

namespace toka_test {

namespace {

std::string RealPath(const std::string& path) {
  char resolved[PATH_MAX];
  return realpath(path.c_str(), resolved) ? std::string(resolved) : path;
}

std::map<std::string, PluginScript>& Scripts() {
  static std::map<std::string, PluginScript> scripts;
  return scripts;
}

void Record(const PluginScript& script, const std::string& entry) {
  Events().push_back(script.name + "." + entry + "@" + std::to_string(TOKAGetMyID()));
}

void CopyOut(char* buffer, const std::string& text) {
  std::strncpy(buffer, text.c_str(), 255);
  buffer[255] = 0;
}

}  // namespace

// An unscripted plugin is named after its file.
PluginScript& Script(const std::string& path) {
  PluginScript& script = Scripts()[RealPath(path)];
  if (script.name.empty()) {
    script.name = path.substr(path.rfind('/') + 1);
    script.signature = "test." + path;
  }
  return script;
}

std::vector<std::string>& Events() {
  static std::vector<std::string> events;
  return events;
}

int PluginStart(const char* selfPath, char* outName, char* outSignature, char* outDescription) {
  PluginScript& script = Script(selfPath);
  Record(script, "start");
  CopyOut(outName, script.name);
  CopyOut(outSignature, script.signature);
  CopyOut(outDescription, script.description);
  if (script.onStart) script.onStart();
  return script.startResult;
}

void PluginStop(const char* selfPath) {
  PluginScript& script = Script(selfPath);
  Record(script, "stop");
  if (script.onStop) script.onStop();
}

int PluginEnable(const char* selfPath) {
  PluginScript& script = Script(selfPath);
  Record(script, "enable");
  if (script.onEnable) script.onEnable();
  return script.enableResult;
}

void PluginDisable(const char* selfPath) {
  PluginScript& script = Script(selfPath);
  Record(script, "disable");
  if (script.onDisable) script.onDisable();
}

void PluginReceiveMessage(const char* selfPath, int from, int message, void* param) {
  if (message == 0x7A0A) {  // kRunAsMessage
    (*static_cast<std::function<void()>*>(param))();
    return;
  }
  PluginScript& script = Script(selfPath);
  Record(script, "message(" + std::to_string(from) + "," + std::to_string(message) + "," +
                     std::to_string((intptr_t)param) + ")");
  if (script.onMessage) script.onMessage(from, message, param);
}

}  // namespace toka_test
