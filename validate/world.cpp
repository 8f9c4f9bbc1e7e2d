// The validator's world: toka-host's own, started on a folder that holds the
// plugin alone, with the library linked into the program instead of loaded
// from a file.
#include "validate/world.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <sys/stat.h>
#include <unistd.h>

#include "display/display.h"
#include "host/library.h"
#include "host/output.h"
#include "host/run.h"
#include "host/windows.h"
#include "loader/plugin_records.h"

namespace toka_validate {

namespace {

std::string AbsolutePath(const std::string& path) {
  char resolved[PATH_MAX];
  if (realpath(path.c_str(), resolved)) return resolved;
  return path;
}

std::string BaseName(const std::string& path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// A plugin in a folder of its own ("NAME/lin.orv") keeps that layout.
std::string PlaceInRoot(const std::string& plugin) {
  std::string base = BaseName(plugin);
  if (base != "lin.orv") return base;
  std::string folder = plugin.substr(0, plugin.size() - base.size());
  while (!folder.empty() && folder.back() == '/') folder.pop_back();
  std::string name = BaseName(folder);
  return (name.empty() ? std::string("plugin") : name) + "/lin.orv";
}

}  // namespace

World::World(const std::string& plugin, int frames) : mPlugin(plugin), mFrames(frames) {}

// The root goes with the check's scratch folder (see child.cpp), whatever
// the plugin wrote into it.
World::~World() {
  if (mRunning) Stop();
  toka_host::SetOutputCapture(nullptr);
}

void World::AddFile(const std::string& relative) { mWanted.push_back({relative, true}); }
void World::AddFolder(const std::string& relative) { mWanted.push_back({relative, false}); }

// Makes each missing folder of the path, and the file at its end.
void World::MakePath(const std::string& relative, bool file) {
  for (size_t slash = relative.find('/'); slash != std::string::npos;
       slash = relative.find('/', slash + 1))
    mkdir((mRoot + "/" + relative.substr(0, slash)).c_str(), 0755);
  std::string path = mRoot + "/" + relative;
  if (file) {
    if (FILE* made = std::fopen(path.c_str(), "wx")) std::fclose(made);
  } else {
    mkdir(path.c_str(), 0755);
  }
}

bool MakeTempFolder(std::string& folder, std::string& error) {
  const char* tmp = std::getenv("TMPDIR");
  std::string base = tmp && *tmp ? tmp : "/tmp";
  std::string pattern = base + "/toka-validate-XXXXXX";
  if (!mkdtemp(&pattern[0])) {
    error = "cannot make a folder in " + base;
    return false;
  }
  folder = pattern;
  return true;
}

bool World::MakeRoot(std::string& error) {
  if (!MakeTempFolder(mRoot, error)) return false;
  std::string place = "Resources/plugins/" + PlaceInRoot(mPlugin);
  MakePath(place.substr(0, place.rfind('/')), false);
  mLink = mRoot + "/" + place;
  if (symlink(AbsolutePath(mPlugin).c_str(), mLink.c_str()) != 0) {
    error = "cannot link " + mPlugin + " into " + mRoot;
    return false;
  }
  for (const auto& wanted : mWanted) MakePath(wanted.first, wanted.second);
  return true;
}

void World::Start() {
  std::string error;
  if (mRoot.empty() && !MakeRoot(error)) throw WorldError(error);
  toka_host::HostOptions options;
  options.config.root = mRoot + "/";
  options.library = "";  // the program itself
  options.frames = mFrames;
  options.render = false;
  toka_host::SetOutputCapture(&mLog);
  if (!toka_host::StartHost(options, error)) throw WorldError(error);
  mRunning = true;
}

void World::RunFrames(int count) {
  for (int i = 0; i < count; ++i) toka_host::RunFrame();
}

void World::Stop() {
  mRunning = false;
  toka_host::StopHost();
}

int World::PluginID() const {
  for (int id = 1; id < (int)gAllPlugins.size(); ++id)
    if (gAllPlugins[id].path == mLink && gAllPlugins[id].module) {
      mName = gAllPlugins[id].name;
      return id;
    }
  return -1;
}

std::string World::PluginName() const {
  int id = PluginID();
  if (id > 0) mName = gAllPlugins[id].name;
  return mName.empty() ? BaseName(mPlugin) : mName;
}

// The library's own lines about the plugin, its path in them the one the
// user gave rather than the run's folder.
std::string World::LogAbout() const {
  const std::string& log = toka_host::HostLog();
  std::string found;
  for (size_t at = log.find(mLink); at != std::string::npos; at = log.find(mLink, at + 1)) {
    size_t start = log.rfind('\n', at);
    start = start == std::string::npos ? 0 : start + 1;
    size_t end = log.find('\n', at);
    std::string line = log.substr(start, end == std::string::npos ? std::string::npos : end - start);
    if (line.rfind("Failed: ", 0) != 0 && line.rfind("Warning: ", 0) != 0) continue;
    for (size_t link = line.find(mLink); link != std::string::npos; link = line.find(mLink))
      line.replace(link, mLink.size(), mPlugin);
    if (!found.empty()) found += " ";
    found += line;
  }
  return found;
}

std::string World::NotLoaded() const {
  std::string log = LogAbout();
  return "not loaded (see entry-points)" + (log.empty() ? "" : ": " + log);
}

bool Guarded(const std::function<void()>& body, std::string& what) {
  try {
    body();
    return true;
  } catch (const WorldError&) {
    throw;
  } catch (const std::exception& exception) {
    what = exception.what();
  } catch (...) {
    what = "an exception that is not a std::exception";
  }
  return false;
}

bool StartOrSkip(World& world, CheckResult& result, int& id) {
  std::string what;
  if (!Guarded([&] { world.Start(); }, what)) {
    result.status = Status::Skip;
    result.reason = "an exception escaped start-up (see entry-points): " + what;
    return false;
  }
  id = world.PluginID();
  if (id >= 0) return true;
  result.status = Status::Skip;
  result.reason = world.NotLoaded();
  return false;
}

}  // namespace toka_validate

namespace toka_host {

// toka-host learns of windows by standing in front of the functions that
// create them; here the library is part of the program and its window list
// is at hand, front to back.
bool WindowAt(int x, int y, SeenWindow& found) {
  for (const TOKAWindowCallbackRecord* window = gWindows.head; window; window = window->get_next()) {
    if (window->is_dead() || !window->visible) continue;
    if (window->left <= x && x < window->right && window->bottom <= y && y < window->top) {
      found = {const_cast<TOKAWindowCallbackRecord*>(window), "", window->left, window->top,
               window->right, window->bottom, window->plugin};
      if (TOKAIsValidPluginID(window->plugin)) found.plugin = gAllPlugins[window->plugin].name;
      return true;
    }
  }
  return false;
}

}  // namespace toka_host
