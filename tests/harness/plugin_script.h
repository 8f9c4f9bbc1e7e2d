// Scripts for the test plugins: what each plugin's five entry points do.
//
// A test copies a fixture plugin (tests/plugins/*.cpp, built as ".orv") to a
// path of its choosing and scripts it by that path. The plugin's entry points
// call into this harness (exported by the test executable), which records the
// call in Events() and runs the script.
#ifndef TOKA_TEST_PLUGIN_SCRIPT_H
#define TOKA_TEST_PLUGIN_SCRIPT_H

#include <functional>
#include <string>
#include <vector>

namespace toka_test {

struct PluginScript {
  // What the start entry writes into its three buffers. An unscripted plugin
  // writes its file name, the signature "test." + its file path, and
  // "test plugin".
  std::string name;
  std::string signature;
  std::string description = "test plugin";
  int startResult = 1;
  int enableResult = 1;

  // Extra work done inside each entry point (calls into the library, throws).
  std::function<void()> onStart;
  std::function<void()> onEnable;
  std::function<void()> onDisable;
  std::function<void()> onStop;
  std::function<void(int from, int message, void* param)> onMessage;
};

// The script of the plugin at path (created on first use). Register it after
// copying the plugin there: scripts are found by the file's real path.
PluginScript& Script(const std::string& path);

// Every entry point call, in order, as "<name>.<entry>@<dispatched ID>",
// with "(from,message,param)" after "message".
std::vector<std::string>& Events();

// Entry points of the fixture plugins; selfPath is the plugin's own file.
int PluginStart(const char* selfPath, char* outName, char* outSignature, char* outDescription);
void PluginStop(const char* selfPath);
int PluginEnable(const char* selfPath);
void PluginDisable(const char* selfPath);
void PluginReceiveMessage(const char* selfPath, int from, int message, void* param);

}  // namespace toka_test

#endif
