// The shared test harness: fake host, plugin scripts, temporary trees, and
// one log of everything the library calls (Events()).
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

using Lines = std::vector<std::string>;

// A message that makes a scripted plugin run a function (passed as param)
// inside its own dispatch context; it is not recorded in Events().
constexpr int kRunAsMessage = 0x7A0A;

// Runs fn as plugin `plugin` (which must be enabled and scripted); As also
// returns what fn returns.
void RunAs(int plugin, const std::function<void()>& fn);
template <class F>
auto As(int plugin, F fn) {
  decltype(fn()) result{};
  RunAs(plugin, [&] { result = fn(); });
  return result;
}

// "@" and the plugin ID, as logged events end.
inline std::string At(int plugin) { return "@" + std::to_string(plugin); }
// Appends "<text>@<dispatched ID>" to Events(), as the entry points do.
void Log(const std::string& text);
Lines TakeEvents();                              // Events() so far, then forgotten
Lines During(const std::function<void()>& fn);  // the events fn caused

// A plugin callback whose refcon says what it answers and what else it does.
struct ScriptedCallback {
  ScriptedCallback(std::string callbackName, int answer = 1)
      : name(std::move(callbackName)), result(answer) {}
  std::string name;
  int result;
  std::function<void()> onCall;  // runs after the call is logged
  // Logs name + call and returns result.
  int Run(const std::string& call);
};

// An error callback that logs "error(<message>)", and its installation as
// the error callback of plugin `plugin`.
void RecordError(const char* message);
void RecordErrorsOf(int plugin);

// Object handles as the fake simulator hands them out, and as logged:
// "0x..." for an object, "null" for none.
inline TOKAObjectRef Object(uintptr_t value) { return reinterpret_cast<TOKAObjectRef>(value); }
std::string ObjectName(TOKAObjectRef object);
// Makes the simulator's unload-object service (slot 66) log
// "unload(<object>)", without a plugin ID.
void RecordUnloads(FakeHost& host);

// Makes the fake host report the user's aircraft at tree's root +
// relativePath (slot 18), as aircraft loading (event 3) asks for it.
void UserAircraftAt(const TempTree& tree, const std::string& relativePath);

class TokaTest : public ::testing::Test {
protected:
  FakeHost& host = FakeHost::Get();
  TempTree tree;

  // Copies the scripted fixture to Resources/plugins/fileName and names it
  // (signature "test." + name).
  PluginScript& AddScripted(const std::string& fileName, const std::string& name);
  // The same in a folder of its own: Resources/plugins/folder/lin.orv.
  PluginScript& AddScriptedFolder(const std::string& folder, const std::string& name);
  // A scripted plugin of the aircraft folder Aircraft/<aircraft>, which the
  // host then reports as the user's aircraft: TOKAEventHook(3, ..., 0) loads
  // it, TOKAEventHook(8, ..., 0) unloads it.
  PluginScript& AddAircraftPlugin(const std::string& name, const std::string& aircraft = "C172");

  int Initialize() { return TOKAInitializePlugins(tree.root().c_str(), HostTable(), 0); }
  // Starts the scripted plugins alpha (ID 1: files load before folders) and
  // beta (ID 2), then forgets the events and host calls so far.
  void StartTwo();
  // The ID of the scripted plugin `name`, or -1.
  static int ID(const std::string& name) {
    return TOKAFindPluginBySignature(("test." + name).c_str());
  }
};

}  // namespace toka_test

#endif
