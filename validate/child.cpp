// Each check runs in a child process, so that a plugin that crashes, or
// leaves the world in pieces, ends that check only.
#include <fcntl.h>
#include <ftw.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host/crash.h"
#include "toka/TOKAPlugins.h"
#include "validate/validate.h"
#include "validate/world.h"

#ifdef __SANITIZE_ADDRESS__
// A plugin that crashes is the validator's finding: its check's process
// must end by the signal, which the report names, rather than by the
// sanitizer's report and exit status. Exported to the sanitizer's runtime
// (see CMakeLists.txt).
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
  return "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0";
}
#endif

namespace toka_validate {

namespace {

// A check of a plugin that never returns ends after this long.
constexpr unsigned kCheckSeconds = 600;

// The result crosses the pipe as tagged lines; texts are one line each.
std::string OneLine(std::string text) {
  for (char& c : text)
    if (c == '\n' || c == '\r') c = ' ';
  return text;
}

std::string Serialize(const CheckResult& result) {
  std::string text = std::string("S ") + StatusName(result.status) + "\n";
  text += "R " + OneLine(result.reason) + "\n";
  for (const std::string& detail : result.details) text += "D " + OneLine(detail) + "\n";
  if (!result.signature.empty()) text += "G " + OneLine(result.signature) + "\n";
  if (!result.fault.empty()) text += "F " + OneLine(result.fault) + "\n";
  text += "E\n";
  return text;
}

// False when the text is not a whole result (the child died writing it).
bool Deserialize(const std::string& text, CheckResult& result) {
  size_t at = 0;
  bool ended = false;
  while (at < text.size()) {
    size_t end = text.find('\n', at);
    if (end == std::string::npos) return false;
    std::string line = text.substr(at, end - at);
    at = end + 1;
    std::string value = line.size() > 2 ? line.substr(2) : "";
    switch (line[0]) {
      case 'S':
        result.status = value == "PASS" ? Status::Pass : value == "SKIP" ? Status::Skip : Status::Fail;
        break;
      case 'R': result.reason = value; break;
      case 'D': result.details.push_back(value); break;
      case 'G': result.signature = value; break;
      case 'F': result.fault = value; break;
      case 'E': ended = true; break;
    }
  }
  return ended;
}

void WriteAll(int fd, const std::string& text) {
  for (size_t done = 0; done < text.size();) {
    ssize_t written = write(fd, text.data() + done, text.size() - done);
    if (written <= 0) return;
    done += (size_t)written;
  }
}

std::string ReadAll(int fd) {
  std::string text;
  char buffer[4096];
  for (;;) {
    ssize_t got = read(fd, buffer, sizeof buffer);
    if (got > 0) {
      text.append(buffer, (size_t)got);
    } else if (got < 0 && errno == EINTR) {
      continue;
    } else {
      return text;
    }
  }
}

// What a check makes on disk, its worlds and whatever the plugin writes to
// the temporary folder, lands in a scratch folder of the check's own (made
// by MakeTempFolder), which the validator removes when the check's process
// has ended. A plugin that crashes or hangs ends its process before any
// clean-up of the process's own could run, and a plugin author validates
// many times a day.
int RemoveEntry(const char* path, const struct stat*, int, struct FTW*) {
  remove(path);
  return 0;
}

// Links are removed, never followed: the plugin's own file stays.
void RemoveScratch(const std::string& folder) {
  nftw(folder.c_str(), RemoveEntry, 16, FTW_DEPTH | FTW_PHYS);
}

[[noreturn]] void RunChild(const Check& check, const CheckInput& input, const std::string& scratch,
                           int out) {
  setenv("TMPDIR", scratch.c_str(), 1);
  // What plugins print is theirs, not the report's.
  int null = open("/dev/null", O_WRONLY);
  if (null >= 0) dup2(null, STDOUT_FILENO);
  alarm(kCheckSeconds);
  // A crash report on standard error names the running plugin, the
  // faulting module, the library entry point and the backtrace; the process
  // then ends by the signal, which the check's result names.
  toka_host::InstallCrashReport("toka-validate", {TOKAGetMyID, TOKACountPlugins, TOKAGetPluginInfo},
                                true);
  CheckResult result;
  result.plugin = input.plugin;
  result.check = check.name;
  try {
    check.run(input, result);
  } catch (const WorldError& error) {
    result.status = Status::Fail;
    result.reason = std::string("cannot run the plugin: ") + error.what();
    result.details.clear();
  }
  WriteAll(out, Serialize(result));
  std::fflush(stderr);
  _exit(0);
}

}  // namespace

std::string SignalName(int signal) {
  const char* abbreviation = sigabbrev_np(signal);
  const char* description = strsignal(signal);
  std::string name = abbreviation ? std::string("SIG") + abbreviation : std::to_string(signal);
  return description ? name + " (" + description + ")" : name;
}

CheckResult RunInChild(const Check& check, const CheckInput& input) {
  CheckResult result;
  result.plugin = input.plugin;
  result.check = check.name;
  std::string scratch, error;
  if (!MakeTempFolder(scratch, error)) {
    result.status = Status::Fail;
    result.reason = "cannot start the check: " + error;
    return result;
  }
  int pipeEnds[2];
  if (pipe(pipeEnds) != 0) {
    RemoveScratch(scratch);
    result.status = Status::Fail;
    result.reason = "cannot start the check: no pipe";
    return result;
  }
  std::fflush(stdout);
  std::fflush(stderr);
  pid_t child = fork();
  if (child == 0) {
    close(pipeEnds[0]);
    RunChild(check, input, scratch, pipeEnds[1]);
  }
  close(pipeEnds[1]);
  if (child < 0) {
    close(pipeEnds[0]);
    RemoveScratch(scratch);
    result.status = Status::Fail;
    result.reason = "cannot start the check: no process";
    return result;
  }
  std::string text = ReadAll(pipeEnds[0]);
  close(pipeEnds[0]);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  RemoveScratch(scratch);
  CheckResult got = result;
  if (WIFSIGNALED(status)) {
    result.status = Status::Fail;
    result.fault = "signal " + std::to_string(WTERMSIG(status));
    result.reason = WTERMSIG(status) == SIGALRM
                        ? "did not finish within " + std::to_string(kCheckSeconds) + " s"
                        : "killed by signal " + SignalName(WTERMSIG(status));
    return result;
  }
  if (!Deserialize(text, got)) {
    result.status = Status::Fail;
    result.reason = "the plugin ended the process (exit status " +
                    std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -1) + ")";
    return result;
  }
  return got;
}

}  // namespace toka_validate
