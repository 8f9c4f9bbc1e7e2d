// toka-host live, in the background as a user runs it: a real window (under
// the xvfb-run of scripts/test.sh) driven with xdotool, recorded and replayed
// headless to the same calls and pixels; and --watch with a plugin rebuilt
// under it, as a plugin author's build does it.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <sstream>
#include <thread>

#include "harness/host_program.h"
#include "harness/picture.h"

extern char** environ;

using namespace toka_test;

namespace {

// Generous, for 32-bit builds run under an emulator, where a frame takes
// seconds; a passing run waits far less.
constexpr std::chrono::seconds kPatience(60);

// toka-host on the tree's plugins in the background, its output going to
// files in the tree.
class LiveHost {
public:
  LiveHost(const TempTree& tree, const std::string& arguments)
      : mOut(tree.root() + "live.out"), mErr(tree.root() + "live.err") {
    std::string command = "exec '" + std::string(TOKA_HOST_BINARY) + "' --root '" + tree.root() +
                          "' --library '" + TOKA_LIBRARY_FILE + "' " + arguments + " >'" + mOut +
                          "' 2>'" + mErr + "'";
    const char* argv[] = {"/bin/sh", "-c", command.c_str(), nullptr};
    if (posix_spawn(&mPid, "/bin/sh", nullptr, nullptr, const_cast<char**>(argv), environ) != 0) mPid = -1;
  }
  ~LiveHost() {
    if (mPid <= 0) return;
    kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
  }
  std::string Output() const { return ReadFile(mOut); }
  std::string Errors() const { return ReadFile(mErr); }

  // Waits until done() holds, while the host runs.
  ::testing::AssertionResult Until(const std::function<bool()>& done, const std::string& what) {
    auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!done()) {
      if (mPid <= 0 || waitpid(mPid, nullptr, WNOHANG) != 0 || std::chrono::steady_clock::now() > deadline)
        return ::testing::AssertionFailure() << "no " << what << "; the output:\n" << Output() << Errors();
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return ::testing::AssertionSuccess();
  }
  // Waits until text is printed after what was waited for before.
  ::testing::AssertionResult Await(const std::string& text) {
    return Until([&] {
      size_t at = Output().find(text, mSeen);
      if (at != std::string::npos) mSeen = at + text.size();
      return at != std::string::npos;
    }, "\"" + text + "\" after byte " + std::to_string(mSeen));
  }
  // Sends the signal; the exit status, or -1 when the host did not exit by
  // itself.
  int End(int signal) {
    kill(mPid, signal);
    auto deadline = std::chrono::steady_clock::now() + kPatience;
    int status = 0;
    while (waitpid(mPid, &status, WNOHANG) == 0) {
      if (std::chrono::steady_clock::now() > deadline) return -1;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    mPid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

private:
  std::string mOut, mErr;
  pid_t mPid = -1;
  size_t mSeen = 0;
};

// Runs a shell command, for xdotool; its output, trimmed.
std::string Shell(const std::string& command) {
  std::string output;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[256];
    while (fgets(buffer, sizeof buffer, pipe)) output += buffer;
    pclose(pipe);
  }
  while (!output.empty() && (output.back() == '\n' || output.back() == ' ')) output.pop_back();
  return output;
}

// The panel's lines and the menu picks of the host's output.
std::string PanelLines(const std::string& text) {
  std::string kept;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);)
    if (line.rfind("panel:", 0) == 0 || line.rfind("[menu]", 0) == 0) kept += line + "\n";
  return kept;
}

// A click on the panel, a key, a drag across it, a pick in the menu bar and
// Print, in a window; the recording replayed headless calls the plugin the
// same way in the same frames and draws the same picture.
TEST(HostWindow, WhatTheUserDidIsRecordedAndReplaysHeadless) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "no display: scripts/test.sh runs this under xvfb-run";
  TempTree tree;
  tree.AddPlugin("Resources/plugins/host_panel.orv", "host_panel");
  std::string recording = tree.root() + "session.scenario";
  LiveHost host(tree, "--traffic 0 --window --record '" + recording + "'");

  // The window is named after the simulator folder.
  std::string root = tree.root().substr(0, tree.root().size() - 1);
  std::string title = "toka-host " + root.substr(root.rfind('/') + 1);
  std::string window;
  ASSERT_TRUE(host.Until([&] {
    window = Shell("xdotool search --onlyvisible --name '^" + title + "$' 2>/dev/null | head -n 1");
    return !window.empty();
  }, "window titled " + title));
  // Window rows run down from the top of the 800-row screen: row 149 is y 650.
  std::string at = "xdotool mousemove --window " + window + " ";
  const std::vector<std::pair<std::string, std::string>> actions = {
      // The host takes the pointer before anything is clicked.
      {at + "640 400", "move 640 399"},
      {at + "150 149 click 1", "click 150 650"},
      {"xdotool windowfocus " + window + " key a", "key \"A\""},
      {at + "150 149 mousedown 1", "press 150 650"},
      {at + "180 139", "move 180 660"},
      {at + "200 129 mouseup 1", "release 200 670"},
      // The bar shows while the pointer is in the top strip: Plugins, then
      // its Panel menu, then the item.
      {at + "90 10 click 1", "move 90 789"},
      {at + "90 27 click 1", "move 90 772"},
      {at + "140 27 click 1", "menu \"Plugins/Panel/Show panel\""},
      {"xdotool key Print", "screenshot \"" + tree.root() + "session-frame-"},
  };
  for (const auto& action : actions) {
    Shell(action.first);
    // Taken once the step is in the recording.
    ASSERT_TRUE(host.Until([&] { return ReadFile(recording).find("\n" + action.second) != std::string::npos; },
                           action.second + " recorded after " + action.first + ":\n" + ReadFile(recording)));
  }
  EXPECT_EQ(0, host.End(SIGINT)) << host.Errors();

  std::string steps = ReadFile(recording);
  size_t shot = steps.find("session-frame-");
  std::string picture = tree.root() + steps.substr(shot, steps.find('"', shot) - shot);
  ASSERT_EQ(0, std::rename(picture.c_str(), (tree.root() + "shown.png").c_str()));
  ProgramRun replay = RunHost(tree.root(), "--traffic 0 --scenario '" + recording + "'");
  EXPECT_EQ(0, replay.status) << replay.err;
  std::string live = PanelLines(host.Output());
  EXPECT_NE(std::string::npos, live.find("panel: mouse 2 at ")) << live;  // the drag
  EXPECT_NE(std::string::npos, live.find("[menu] Plugins/Panel/Show panel\npanel: hidden\n")) << live;
  EXPECT_EQ(live, PanelLines(replay.out));

  Picture shown, replayed;
  ASSERT_TRUE(shown.Read(tree.root() + "shown.png"));
  ASSERT_TRUE(replayed.Read(picture));
  ASSERT_EQ(shown.width * 10000 + shown.height, replayed.width * 10000 + replayed.height);
  // Every pixel but the status line's, which says how far behind real time
  // the window was.
  int different = 0;
  for (int y = 16; y < shown.height; ++y)
    for (int x = 0; x < shown.width; ++x) different += shown.At(x, y) != replayed.At(x, y);
  EXPECT_EQ(0, different);
  EXPECT_NE(0u, shown.At(640, 400));  // a frame was drawn, not a black picture
}

// A linker's way: the new build is written next to the plugin, under a name
// the library does not load, and renamed over it.
void Rebuild(TempTree& tree, const std::string& plugin, const std::string& fixture) {
  std::string part = tree.AddPlugin("Resources/plugins/watched.part", fixture);
  ASSERT_EQ(0, std::rename(part.c_str(), plugin.c_str()));
}

TEST(HostWatch, ReloadsRebuiltPluginsAndRunsWithoutBuildsThatCannotLoad) {
  TempTree tree;
  std::string plugin = tree.AddPlugin("Resources/plugins/watched.orv", "watch_v1");
  LiveHost host(tree, "--watch --render none");
  ASSERT_TRUE(host.Await("watch: version 1 enabled\n"));
  // Rebuilds before the watch starts would go unseen.
  ASSERT_TRUE(host.Await("toka-host: watching 1 plugin file for rebuilds\n"));
  const std::string reloading = "toka-host: reloading the plugins: " + plugin + " was rebuilt\n";
  const std::string without = "toka-host: " + plugin + " cannot be loaded, running without it: ";

  Rebuild(tree, plugin, "watch_v2");
  ASSERT_TRUE(host.Await(reloading));
  ASSERT_TRUE(host.Await("watch: version 1 disabled\nwatch: version 1 stopped\n"));
  ASSERT_TRUE(host.Await("watch: version 2 started\n"));
  ASSERT_TRUE(host.Await("watch: version 2 enabled\n"));

  // A build whose loading aborts would end the host in the reload: the
  // running build stays until the next one.
  Rebuild(tree, plugin, "watch_aborts");
  ASSERT_TRUE(host.Await("toka-host: not reloading the plugins: " + plugin +
                         " cannot be loaded: loading it crashed (Aborted)\n"));

  // Builds the library turns away replace the one before and are reported
  // once each.
  Rebuild(tree, plugin, "watch_no_start");
  ASSERT_TRUE(host.Await(reloading + without + "no start entry OrvanePluginStart\n"));
  ASSERT_TRUE(host.Await("watch: version 2 disabled\nwatch: version 2 stopped\n"));
  Rebuild(tree, plugin, "watch_undefined");
  ASSERT_TRUE(host.Await(reloading + without + "undefined symbol: WatchMissingFunction\n"));
  Rebuild(tree, plugin, "watch_refused");
  ASSERT_TRUE(host.Await(reloading));
  ASSERT_TRUE(host.Await("watch: version 5 started\n"));
  ASSERT_TRUE(host.Await(without + "it did not start (see the library's lines above)\n"));

  Rebuild(tree, plugin, "watch_v1");
  ASSERT_TRUE(host.Await(reloading));
  ASSERT_TRUE(host.Await("watch: version 1 started\n"));
  ASSERT_TRUE(host.Await("watch: version 1 enabled\n"));

  // SIGTERM ends the run as its last frame would.
  EXPECT_EQ(0, host.End(SIGTERM));
  ASSERT_TRUE(host.Await("watch: version 1 disabled\nwatch: version 1 stopped\n"));
  // Neither the part files nor the reload itself count as rebuilds.
  EXPECT_EQ(5, Count(host.Output(), "toka-host: reloading the plugins: ")) << host.Output();
  EXPECT_EQ(3, Count(host.Output(), without)) << host.Output();
  EXPECT_EQ("", host.Errors());
}

}  // namespace
