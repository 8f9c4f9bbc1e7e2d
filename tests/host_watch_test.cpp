// toka-host --watch with a plugin rebuilt under it, as a plugin author's
// build does it: each build that loads replaces the running one between
// frames, a build that does not is reported with the reason while the host
// runs on without it (or with the running build, when loading the new one
// would end the host), and SIGTERM ends the run as its last frame would.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "harness/host_program.h"
#include "harness/temp_tree.h"

extern char** environ;

using namespace toka_test;

namespace {

// Generous, for 32-bit builds run under an emulator; a passing run waits far
// less.
constexpr std::chrono::seconds kPatience(20);

size_t Count(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// The built toka-host running in the background, its output going to files.
class WatchingHost {
public:
  explicit WatchingHost(const TempTree& tree) : mOut(tree.root() + "out"), mErr(tree.root() + "err") {
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 1, mOut.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&files, 2, mErr.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const char* argv[] = {TOKA_HOST_BINARY, "--root", tree.root().c_str(), "--library",
                          TOKA_LIBRARY_FILE, "--watch", "--render", "none", nullptr};
    if (posix_spawn(&mPid, TOKA_HOST_BINARY, &files, nullptr, (char**)argv, environ) != 0) mPid = -1;
    posix_spawn_file_actions_destroy(&files);
  }
  ~WatchingHost() {
    if (mPid <= 0) return;
    kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
  }

  std::string Output() const { return ReadFile(mOut); }
  std::string Errors() const { return ReadFile(mErr); }

  // Waits until text is printed after what was waited for before.
  ::testing::AssertionResult Await(const std::string& text) {
    auto deadline = std::chrono::steady_clock::now() + kPatience;
    do {
      std::string output = Output();
      size_t at = output.find(text, mSeen);
      if (at != std::string::npos) {
        mSeen = at + text.size();
        return ::testing::AssertionSuccess();
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    } while (mPid > 0 && std::chrono::steady_clock::now() < deadline);
    return ::testing::AssertionFailure() << "no \"" << text << "\" after byte " << mSeen
                                         << " of the output:\n" << Output() << Errors();
  }

  // SIGTERM; the exit status, or -1 when the host did not exit by itself.
  int Terminate() {
    kill(mPid, SIGTERM);
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

// A linker's way: the new build is written next to the plugin, under a name
// the library does not load, and renamed over it.
void Rebuild(TempTree& tree, const std::string& plugin, const std::string& fixture) {
  std::string part = tree.AddPlugin("Resources/plugins/watched.part", fixture);
  ASSERT_EQ(0, std::rename(part.c_str(), plugin.c_str()));
}

}  // namespace

TEST(HostWatch, ReloadsRebuiltPluginsAndRunsWithoutBuildsThatCannotLoad) {
  TempTree tree;
  std::string plugin = tree.AddPlugin("Resources/plugins/watched.orv", "watch_v1");
  WatchingHost host(tree);
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

  EXPECT_EQ(0, host.Terminate());
  ASSERT_TRUE(host.Await("watch: version 1 disabled\nwatch: version 1 stopped\n"));
  std::string output = host.Output();
  // Neither the part files nor the reload itself count as rebuilds.
  EXPECT_EQ(5u, Count(output, "toka-host: reloading the plugins: ")) << output;
  EXPECT_EQ(3u, Count(output, without)) << output;
  EXPECT_EQ("", host.Errors());
}
