// toka-host live: a real window under the X server of the test's display
// (scripts/test.sh runs the suite under xvfb-run), driven with xdotool as a
// user would, recorded, ended with SIGINT and replayed headless. The fixture
// plugin (tests/plugins/host_panel.cpp) logs every click, drag, key and
// menu pick: the replay must give it the same calls and the same pixels.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "harness/host_program.h"
#include "harness/picture.h"
#include "harness/temp_tree.h"
#include "host/run.h"

extern char** environ;

using namespace toka_test;

namespace {

std::string Lines(const std::string& text, const std::vector<std::string>& prefixes) {
  std::string kept;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(start, end - start);
    for (const std::string& prefix : prefixes)
      if (line.compare(0, prefix.size(), prefix) == 0) kept += line + "\n";
    start = end + 1;
  }
  return kept;
}

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

// Waits until the host has taken the user's action: its step is in the
// recording (a 32-bit host under an emulator draws a frame in seconds).
bool Recorded(const std::string& recording, const std::string& step) {
  for (int i = 0; i < 600; ++i) {
    if (ReadFile(recording).find("\n" + step) != std::string::npos) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return false;
}

class Window : public ::testing::Test {
protected:
  TempTree tree;
  std::string arguments;

  void SetUp() override {
    tree.AddPlugin("Resources/plugins/host_panel.orv", "host_panel");
    arguments = "--root '" + tree.root() + "' --library '" + TOKA_LIBRARY_FILE + "' --traffic 0";
  }
};

TEST_F(Window, WithoutADisplayOneLineSaysSo) {
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  ProgramRun run = RunProgram(TOKA_HOST_BINARY, arguments + " --window");
  EXPECT_EQ(toka_host::kCannotRunStatus, run.status);
  EXPECT_EQ("toka-host: --window needs a display (X11: The DISPLAY environment variable is missing)\n",
            run.err);
  EXPECT_EQ("", run.out);  // no plugin was loaded
}

// A click on the panel, a key, a drag across it, a pick in the menu bar and
// Print, in a window; the recording replayed headless calls the plugin the
// same way in the same frames and draws the same picture.
TEST_F(Window, WhatTheUserDidIsRecordedAndReplaysHeadless) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "no display: scripts/test.sh runs this under xvfb-run";
  std::string recording = tree.root() + "session.scenario";
  std::string command = "exec '" + std::string(TOKA_HOST_BINARY) + "' " + arguments +
                        " --window --record '" + recording + "' >'" + tree.root() + "live.out' 2>'" +
                        tree.root() + "live.err'";
  pid_t host;
  const char* argv[] = {"/bin/sh", "-c", command.c_str(), nullptr};
  ASSERT_EQ(0, posix_spawn(&host, "/bin/sh", nullptr, nullptr, const_cast<char**>(argv), environ));

  // The window is named after the simulator folder.
  std::string root = tree.root().substr(0, tree.root().size() - 1);
  std::string title = "toka-host " + root.substr(root.rfind('/') + 1);
  std::string window;
  int status = -1;
  for (int i = 0; i < 600 && window.empty(); ++i) {
    window = Shell("xdotool search --onlyvisible --name '^" + title + "$' 2>/dev/null | head -n 1");
    ASSERT_EQ(0, waitpid(host, &status, WNOHANG)) << "toka-host ended: " << status << "\n"
                                                   << ReadFile(tree.root() + "live.err");
    if (window.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  ASSERT_FALSE(window.empty()) << "no window titled " << title << "\n" << Shell("xdotool search --name toka");
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
    ASSERT_TRUE(Recorded(recording, action.second)) << action.first << "\n" << ReadFile(recording);
  }
  kill(host, SIGINT);
  waitpid(host, &status, 0);
  ASSERT_TRUE(WIFEXITED(status)) << status;
  EXPECT_EQ(0, WEXITSTATUS(status)) << ReadFile(tree.root() + "live.err");

  std::string steps = ReadFile(recording);
  size_t shot = steps.find("session-frame-");
  ASSERT_NE(std::string::npos, shot);
  std::string picture = tree.root() + steps.substr(shot, steps.find('"', shot) - shot);
  ASSERT_EQ(0, std::rename(picture.c_str(), (tree.root() + "live.png").c_str()));

  ProgramRun replay = RunProgram(TOKA_HOST_BINARY, arguments + " --scenario '" + recording + "'");
  EXPECT_EQ(0, replay.status) << replay.err;
  std::vector<std::string> calls = {"panel:", "[menu]"};
  std::string live = Lines(ReadFile(tree.root() + "live.out"), calls);
  EXPECT_NE(std::string::npos, live.find("panel: mouse 2 at ")) << live;  // the drag
  EXPECT_NE(std::string::npos, live.find("[menu] Plugins/Panel/Show panel\npanel: hidden\n")) << live;
  EXPECT_EQ(live, Lines(replay.out, calls));

  Picture shown, replayed;
  ASSERT_TRUE(shown.Read(tree.root() + "live.png"));
  ASSERT_TRUE(replayed.Read(picture));
  ASSERT_EQ(shown.width, replayed.width);
  ASSERT_EQ(shown.height, replayed.height);
  // Every pixel but the status line's, which says how far behind real time
  // the window was.
  int different = 0;
  for (int y = 16; y < shown.height; ++y)
    for (int x = 0; x < shown.width; ++x) different += shown.At(x, y) != replayed.At(x, y);
  EXPECT_EQ(0, different);
  EXPECT_NE(0u, shown.At(640, 400));  // a frame was drawn, not a black picture
}

}  // namespace
