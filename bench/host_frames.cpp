// Frames per second of the reference host: a headless run of 600 frames at
// 1024x768 with the hello and gl-gauge examples, drawn through OpenGL
// (--render gl) and drawn not at all (--render none), each the median of
// three runs of the toka-host program, start-up and shutdown included. The
// GL run must be at least five times faster than real time at 60 frames a
// second, so that scenarios in CI cost a fraction of what they simulate.
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

extern char** environ;

namespace {

constexpr int kFrames = 600;
constexpr int kRuns = 3;
constexpr double kRealTimeRate = 60;  // frames per second of the simulator
constexpr double kTarget = 5;         // times faster than real time

bool Copy(const std::string& from, const std::string& to) {
  std::ifstream in(from, std::ios::binary);
  std::ofstream out(to, std::ios::binary);
  out << in.rdbuf();
  return in.good() && out.good();
}

// Seconds of one run, or a negative number when it fails.
double TimeRun(const std::string& root, const std::string& render) {
  std::vector<std::string> words = {TOKA_HOST_BINARY, "--root", root, "--library", TOKA_LIBRARY_FILE,
                                    "--frames", std::to_string(kFrames), "--screen", "1024x768",
                                    "--render", render};
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(&word[0]);
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  auto start = std::chrono::steady_clock::now();
  pid_t child;
  int status = -1;
  if (posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ) == 0)
    waitpid(child, &status, 0);
  posix_spawn_file_actions_destroy(&actions);
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? seconds : -1;
}

double FramesPerSecond(const std::string& root, const std::string& render) {
  std::vector<double> times;
  for (int run = 0; run < kRuns; ++run) {
    double seconds = TimeRun(root, render);
    if (seconds < 0) return -1;
    times.push_back(seconds);
  }
  std::sort(times.begin(), times.end());
  return kFrames / times[kRuns / 2];
}

}  // namespace

int main() {
  char folder[] = "/tmp/toka-host-frames-XXXXXX";
  if (!mkdtemp(folder)) return 2;
  std::string root = std::string(folder) + "/";
  mkdir((root + "Resources").c_str(), 0755);
  mkdir((root + "Resources/plugins").c_str(), 0755);
  for (const char* plugin : {"hello.orv", "gl-gauge.orv"})
    if (!Copy(std::string(TOKA_EXAMPLES_DIR) + "/" + plugin, root + "Resources/plugins/" + plugin)) {
      std::fprintf(stderr, "host_frames: the example %s was not built\n", plugin);
      return 2;
    }
  double none = FramesPerSecond(root, "none"), gl = FramesPerSecond(root, "gl");
  std::system(("rm -rf '" + root + "'").c_str());
  if (none < 0 || gl < 0) {
    std::fprintf(stderr, "host_frames: a run of toka-host failed\n");
    return 2;
  }
  bool holds = gl / kRealTimeRate >= kTarget;
  std::printf("toka-host, %d frames of 1024x768, hello and gl-gauge:\n", kFrames);
  std::printf("  --render none  %7.0f frames/s\n", none);
  std::printf("  --render gl    %7.0f frames/s: %.1fx real time at 60 frames/s (target %.0fx): %s\n",
              gl, gl / kRealTimeRate, kTarget, holds ? "holds" : "does not hold");
  return holds ? 0 : 1;
}
