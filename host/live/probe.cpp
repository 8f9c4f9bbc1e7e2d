// A plugin file loaded in a child process, to tell why a build cannot be
// loaded without risking the host.
#include "host/live/probe.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

extern char** environ;

namespace toka_host {

namespace {

// Loading that takes longer is stuck (a static constructor that waits for
// something): the host does not wait for it.
constexpr std::chrono::seconds kProbeTime(15);
// The child's exit status when the file does not load, and when the child
// cannot tell.
constexpr int kDoesNotLoad = 1, kNoAnswer = 2;
// The answer is the child's last line, marked: a plugin's static
// constructors may print before it, or end the child before it is given.
const std::string kAnswerMark = "toka-host probe: ";

[[noreturn]] void Answer(const std::string& text, int status) {
  std::printf("\n%s%s\n", kAnswerMark.c_str(), text.c_str());
  std::fflush(stdout);
  // Neither the plugin's destructors nor the library's may change the answer.
  _exit(status);
}

// The loader's text starts with the file's path, which the report names
// already.
std::string WithoutFile(std::string text, const std::string& file) {
  std::string prefix = file + ": ";
  if (text.compare(0, prefix.size(), prefix) == 0) text.erase(0, prefix.size());
  return text;
}

// The child is this program itself: a plugin may use the functions the host
// exports to plugins. Its path comes through readlink, which qemu's
// emulator answers with the emulated program rather than itself.
std::string ThisProgram() {
  char path[4096];
  ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  if (length <= 0) return "/proc/self/exe";
  path[length] = 0;
  return access(path, X_OK) == 0 ? path : "/proc/self/exe";
}

std::string LastLine(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  size_t start = text.rfind('\n');
  return start == std::string::npos ? text : text.substr(start + 1);
}

// Everything the child writes until it closes its output, or false when it
// takes too long.
bool ReadUntilClosed(int fd, std::string& text) {
  auto deadline = std::chrono::steady_clock::now() + kProbeTime;
  char buffer[1024];
  while (std::chrono::steady_clock::now() < deadline) {
    struct pollfd ready = {fd, POLLIN, 0};
    if (poll(&ready, 1, 100) <= 0) continue;
    ssize_t length = read(fd, buffer, sizeof buffer);
    if (length == 0) return true;
    if (length > 0) text.append(buffer, (size_t)length);
    else if (errno != EINTR) return true;
  }
  return false;
}

// The child, its output on a pipe; -1 when none could be started.
pid_t StartProbe(const std::string& file, const std::string& library, int& output) {
  int out[2];
  if (pipe2(out, O_CLOEXEC) != 0) return -1;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  // What the plugin or an emulator says while it loads goes with the
  // answer rather than into the host's own errors.
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_adddup2(&actions, out[1], 2);
  std::string program = ThisProgram();
  const char* argv[] = {"toka-host", "--probe-plugin", file.c_str(), "--library", library.c_str(), nullptr};
  // The host holds SIGINT and SIGTERM blocked (EndRunOnSignals); the child
  // must not inherit that.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  pid_t child;
  int error = posix_spawn(&child, program.c_str(), &actions, &attributes, (char**)argv, environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);
  if (error) {
    close(out[0]);
    return -1;
  }
  output = out[0];
  return child;
}

int WaitForChild(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

}  // namespace

bool IsPluginProbe(int argc, char** argv) {
  return argc == 5 && !std::strcmp(argv[1], "--probe-plugin") && !std::strcmp(argv[3], "--library");
}

void ProbePlugin(const std::string& file, const std::string& library) {
  // A build that crashes while it loads leaves no core file behind.
  struct rlimit noCore = {0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  // As the host loads the library, so that the plugin finds its functions.
  if (!dlopen(library.c_str(), RTLD_NOW | RTLD_GLOBAL))
    Answer(std::string("the library cannot be loaded: ") + dlerror(), kNoAnswer);
  void* plugin = dlopen(file.c_str(), RTLD_NOW);
  if (!plugin) Answer(WithoutFile(dlerror(), file), kDoesNotLoad);
  if (!dlsym(plugin, "OrvanePluginStart")) Answer("no start entry OrvanePluginStart", kDoesNotLoad);
  Answer("loads", 0);
}

PluginFile ProbePluginFile(const std::string& file, const std::string& library, std::string& reason) {
  int output;
  pid_t child = StartProbe(file, library, output);
  if (child < 0) return PluginFile::kLoads;
  std::string text;
  bool finished = ReadUntilClosed(output, text);
  close(output);
  if (!finished) kill(child, SIGKILL);
  int status = WaitForChild(child);
  std::string answer = LastLine(text);
  bool answered = answer.compare(0, kAnswerMark.size(), kAnswerMark) == 0;
  if (!finished) {
    reason = "loading it did not finish in " + std::to_string(kProbeTime.count()) + " s";
  } else if (WIFSIGNALED(status)) {
    reason = std::string("loading it crashed (") + strsignal(WTERMSIG(status)) + ")";
  } else if (!answered) {
    reason = "loading it ended the process (exit status " + std::to_string(WEXITSTATUS(status)) + ")";
  } else if (WEXITSTATUS(status) == kDoesNotLoad) {
    reason = answer.substr(kAnswerMark.size());
    return PluginFile::kDoesNotLoad;
  } else {
    return PluginFile::kLoads;
  }
  return PluginFile::kEndsTheHost;
}

}  // namespace toka_host
