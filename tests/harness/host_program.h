// Running the built toka-host as a plugin author's CI job does, and reading
// what it wrote; for the host's own tests (which link its world), the host
// started in the test's process on the real library.
#ifndef TOKA_TEST_HOST_PROGRAM_H
#define TOKA_TEST_HOST_PROGRAM_H

#include <string>
#include <vector>

namespace toka_test {

struct ProgramRun {
  int status;  // the exit status, or -1 when the program did not exit
  std::string out, err;
};

// Runs binary with arguments (already quoted for the shell), capturing its
// standard output and error.
ProgramRun RunProgram(const std::string& binary, const std::string& arguments);

std::string ReadFile(const std::string& path);

// Each of lines is found in text, in that order.
void ExpectInOrder(const std::string& text, const std::vector<std::string>& lines);
// How often part is found in text.
int Count(const std::string& text, const std::string& part);

// Great-circle distance in metres on a sphere of the earth's mean radius.
double Haversine(double lat1, double lon1, double lat2, double lon2);

}  // namespace toka_test

#ifdef TOKA_HOST_BINARY
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "harness/harness.h"
#include "host/output.h"
#include "host/run.h"
#include "host/scenario/scenario.h"
#include "toka/TOKA.h"

namespace toka_test {

// Runs the built toka-host on the simulator folder root and the library
// under test, with more arguments.
inline ProgramRun RunHost(const std::string& root, const std::string& arguments) {
  return RunProgram(TOKA_HOST_BINARY, "--root '" + root + "' --library '" TOKA_LIBRARY_FILE "' " + arguments);
}

// The host on the real library, in this process, with a scripted plugin
// "tester" (signature test.tester) that runs code the test hands it. Nothing
// is drawn unless a test sets options.render.
class HostTest : public ::testing::Test {
protected:
  TempTree tree;
  std::string output;  // what the host printed
  toka_host::HostOptions options;
  PluginScript* tester = nullptr;
  int id = -1;  // the tester's plugin ID
  bool running = false;

  void SetUp() override {
    toka_host::SetOutputCapture(&output);
    Events().clear();
    options.config.root = tree.root();
    options.library = TOKA_LIBRARY_FILE;
    options.render = false;
    tester = &AddPlugin("Resources/plugins/tester.orv", "tester");
  }
  void TearDown() override {
    Stop();
    toka_host::SetOutputCapture(nullptr);
  }
  PluginScript& AddPlugin(const std::string& relativePath, const std::string& name) {
    PluginScript& script = Script(tree.AddPlugin(relativePath, "scripted"));
    script.name = name;
    script.signature = "test." + name;
    return script;
  }
  // Input the user gives at a frame, as scenario steps.
  void At(int frame, const std::string& text) {
    toka_host::ScenarioStep step;
    std::string error;
    ASSERT_TRUE(toka_host::ParseScenarioStep(text, frame, "--at", step, error)) << text << ": " << error;
    options.steps.push_back(step);
  }
  void Start() {
    std::string error;
    ASSERT_TRUE(toka_host::StartHost(options, error)) << error;
    running = true;
    id = TOKAFindPluginBySignature("test.tester");
  }
  void Stop() {
    if (running) toka_host::StopHost();
    running = false;
  }
  void Frames(int count) {
    for (int i = 0; i < count; ++i) toka_host::RunFrame();
  }
  // Runs fn as the tester, inside the library's dispatch to it.
  void AsTester(const std::function<void()>& fn) {
    bool ran = false;
    RunAs(id, [&] {
      ran = true;
      fn();
    });
    EXPECT_TRUE(ran) << "the tester did not run the code";
  }
  // Events() without the plugins' messages.
  static std::vector<std::string> Lifecycle() {
    std::vector<std::string> kept;
    for (const std::string& e : Events())
      if (e.find(".message(") == std::string::npos) kept.push_back(e);
    return kept;
  }
  // Whether the tester (ID 1) got the simulator's message.
  bool Received(int message, int param) {
    std::string wanted = "tester.message(0," + std::to_string(message) + "," + std::to_string(param) + ")@1";
    return std::find(Events().begin(), Events().end(), wanted) != Events().end();
  }
};

}  // namespace toka_test
#endif

#endif
