// FlightGear as a child of the host. It runs in a process group of its own
// so that its virtual display and session bus stop with it.
#include "host/flightgear/process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

#include "host/system.h"

#ifndef TOKA_FLIGHTGEAR_PROTOCOL
#define TOKA_FLIGHTGEAR_PROTOCOL ""
#endif

namespace toka_host {

namespace {

pid_t gChild = -1;

bool IsProgram(const std::string& path) { return access(path.c_str(), X_OK) == 0 && IsFile(path); }

std::string OnPath(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::stringstream folders(path ? path : "");
  std::string folder;
  while (std::getline(folders, folder, ':'))
    if (!folder.empty() && IsProgram(folder + "/" + name)) return folder + "/" + name;
  return "";
}

std::string ProgramFolder() {
  char path[4096];
  ssize_t size = readlink("/proc/self/exe", path, sizeof path - 1);
  if (size <= 0) return "";
  path[size] = 0;
  std::string text = path;
  return text.substr(0, text.rfind('/') + 1);
}

// The protocol file installed beside the host, or the one of the sources it
// was built from.
std::string ProtocolFile() {
  std::string installed = ProgramFolder() + "../share/toka/flightgear/toka.xml";
  return IsFile(installed) ? installed : std::string(TOKA_FLIGHTGEAR_PROTOCOL);
}

std::string InstalledRoot() {
  const char* root = std::getenv("FG_ROOT");
  return root && *root ? root : "/usr/share/games/flightgear";
}

bool MakeFolder(const std::string& path) { return mkdir(path.c_str(), 0755) == 0 || errno == EEXIST; }

// A link at path to target, replacing whatever was there.
bool Link(const std::string& target, const std::string& path) {
  char current[4096];
  ssize_t size = readlink(path.c_str(), current, sizeof current - 1);
  if (size > 0 && std::string(current, (size_t)size) == target) return true;
  unlink(path.c_str());
  if (symlink(target.c_str(), path.c_str()) == 0) return true;
  // Another host preparing the same folder at the same time made it.
  size = readlink(path.c_str(), current, sizeof current - 1);
  return size > 0 && std::string(current, (size_t)size) == target;
}

bool CopyFile(const std::string& from, const std::string& to) {
  std::ifstream in(from, std::ios::binary);
  std::string temporary = to + "." + std::to_string(getpid());
  std::ofstream out(temporary, std::ios::binary);
  if (!in || !out) return false;
  out << in.rdbuf();
  out.close();
  return out && std::rename(temporary.c_str(), to.c_str()) == 0;
}

}  // namespace

std::string FindFlightGearProgram() {
  const char* chosen = std::getenv("TOKA_FGFS");
  if (chosen) return IsProgram(chosen) ? chosen : "";
  if (IsProgram("/usr/games/fgfs")) return "/usr/games/fgfs";
  return OnPath("fgfs");
}

bool PrepareFlightGearRoot(std::vector<std::string>& options, std::string& error) {
  std::string installed = InstalledRoot();
  if (!IsFile(installed + "/version")) {
    error = "FlightGear's data is not in " + installed +
            " (set FG_ROOT to the folder that holds its \"version\" file)";
    return false;
  }
  std::string protocol = ProtocolFile();
  if (!IsFile(protocol)) {
    error = "the stream's protocol file is missing (looked for " + protocol + ")";
    return false;
  }
  const char* cache = std::getenv("XDG_CACHE_HOME");
  const char* home = std::getenv("HOME");
  std::string base = cache && *cache ? cache : std::string(home ? home : "/tmp") + "/.cache";
  // The same folder every run: FlightGear keeps caches keyed by its root.
  std::string root = base + "/toka/flightgear-root";
  bool made = MakeFolder(base) && MakeFolder(base + "/toka") && MakeFolder(root) &&
              MakeFolder(root + "/Protocol");
  for (const std::string& entry : ListFolder(installed))
    if (made && entry != "Protocol") made = Link(installed + "/" + entry, root + "/" + entry);
  for (const std::string& entry : ListFolder(installed + "/Protocol"))
    if (made && entry != "toka.xml")
      made = Link(installed + "/Protocol/" + entry, root + "/Protocol/" + entry);
  if (!made || !CopyFile(protocol, root + "/Protocol/toka.xml")) {
    error = "cannot prepare FlightGear's root folder in " + root + ": " + std::strerror(errno);
    return false;
  }
  options = {"--fg-root=" + root, "--allow-nasal-read=" + installed};
  return true;
}

std::vector<std::string> FlightGearLinkOptions(int propertyPort, int streamPort) {
  // 60 Hz: FlightGear serves both once per frame of its own at most.
  return {"--telnet=socket,bi,60,localhost," + std::to_string(propertyPort) + ",tcp",
          "--generic=socket,out,60,127.0.0.1," + std::to_string(streamPort) + ",udp,toka"};
}

bool SplitArguments(const std::string& text, std::vector<std::string>& words) {
  words.clear();
  std::string word;
  bool inWord = false;
  char quote = 0;
  for (char c : text) {
    if (quote) {
      if (c == quote) quote = 0;
      else word += c;
    } else if (c == '"' || c == '\'') {
      quote = c;
      inWord = true;
    } else if (c == ' ' || c == '\t' || c == '\n') {
      if (inWord) words.push_back(word);
      word.clear();
      inWord = false;
    } else {
      word += c;
      inWord = true;
    }
  }
  if (inWord) words.push_back(word);
  return quote == 0;
}

bool StartFlightGearProcess(const std::string& program, const std::vector<std::string>& arguments,
                            const std::string& log, std::string& error) {
  std::vector<std::string> command;
  // FlightGear aborts without a session bus, and draws into a display.
  const char* display = std::getenv("DISPLAY");
  if (!display || !*display) {
    std::string xvfb = OnPath("xvfb-run");
    if (xvfb.empty()) {
      error = "there is no display and no xvfb-run to make one (apt-get install xvfb xauth)";
      return false;
    }
    command = {xvfb, "-a", "-s", "-screen 0 1024x768x24"};
  }
  const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (!bus || !*bus) {
    std::string session = OnPath("dbus-run-session");
    if (session.empty()) {
      error = "FlightGear needs a session bus and there is no dbus-run-session (apt-get install dbus)";
      return false;
    }
    command.insert(command.end(), {session, "--"});
  }
  command.push_back(program);
  command.insert(command.end(), arguments.begin(), arguments.end());
  int out = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (out < 0) {
    error = "cannot write FlightGear's log " + log + ": " + std::strerror(errno);
    return false;
  }
  std::vector<char*> argv;
  for (std::string& word : command) argv.push_back(&word[0]);
  argv.push_back(nullptr);
  pid_t child = fork();
  if (child == 0) {
    // The host holds its ending signals blocked; FlightGear must not.
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    setpgid(0, 0);
    int in = open("/dev/null", O_RDONLY);
    dup2(in, 0);
    dup2(out, 1);
    dup2(out, 2);
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(out);
  if (child < 0) {
    error = std::string("cannot start FlightGear: ") + std::strerror(errno);
    return false;
  }
  setpgid(child, child);
  gChild = child;
  return true;
}

bool FlightGearProcessEnded(std::string& how) {
  if (gChild < 0) return false;
  int status = 0;
  if (waitpid(gChild, &status, WNOHANG) != gChild) return false;
  gChild = -1;
  how = WIFSIGNALED(status) ? "killed by signal " + std::to_string(WTERMSIG(status))
                            : "exit status " + std::to_string(WEXITSTATUS(status));
  return true;
}

void StopFlightGearProcess() {
  pid_t group = gChild;
  gChild = -1;
  if (group <= 0) return;
  kill(-group, SIGTERM);
  bool ended = false;
  for (int i = 0; i < 100 && !ended; ++i) {
    ended = waitpid(group, nullptr, WNOHANG) == group;
    if (!ended) std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  // What is left of the group (a display server that outlived it) goes too.
  kill(-group, SIGKILL);
  if (!ended) waitpid(group, nullptr, 0);
}

}  // namespace toka_host
