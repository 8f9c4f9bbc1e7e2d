// Plugins reloaded when their files are rebuilt (--watch).
//
// A build seldom writes into the old file: the linker unlinks it and creates
// a new one, or renames a finished temporary over it. A watch on the file's
// inode would be lost at the first build, so the host watches the folders
// that hold the plugins and picks the plugins' names out of their events.
#include "host/live/watch.h"

#include <dlfcn.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/library.h"
#include "host/live/probe.h"
#include "host/output.h"
#include "host/run.h"

namespace toka_host {

namespace {

using Clock = std::chrono::steady_clock;

// A build writes its output in several steps; the file is taken once no
// event has come for it this long, in real time.
constexpr std::chrono::milliseconds kQuietTime(300);

// Every way a new build arrives: created and written, written in place,
// or renamed into the folder; and a build deleted, which the plugin does
// not survive either.
constexpr uint32_t kRebuildEvents =
    IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_MOVED_TO | IN_DELETE | IN_MOVED_FROM;

int gInotify = -1;
std::string gLibraryFile;
std::map<int, std::string> gFolders;  // watch descriptor -> folder, ending in '/'
std::set<std::string> gFiles;         // the plugin files whose events count
// Rebuilds that did not load: watched until a build of theirs loads, since
// the library no longer lists them.
std::set<std::string> gFailed;
std::map<std::string, Clock::time_point> gChanging;  // file -> its last event
// The rebuilt files of the reload under way, and whether their probe loaded
// them (those that did not are reported already).
std::map<std::string, bool> gReloading;
// Builds whose loading ends the process that loads them, with the reason.
std::map<std::string, std::string> gHarmful;

void Report(const std::string& text) { HostPrint("toka-host: " + text + "\n"); }

// The plugins' files as the library lists them now (record 0 is the
// simulator itself).
std::set<std::string> LoadedPluginFiles() {
  std::set<std::string> files;
  for (int id = 1; id < gLibrary.CountPlugins(); ++id) {
    char path[256] = "";
    gLibrary.GetPluginInfo(id, nullptr, path, nullptr, nullptr);
    if (path[0]) files.insert(path);
  }
  return files;
}

// The probe loads the library the host loaded, wherever the dynamic loader
// found it.
std::string LoadedLibraryFile() {
  Dl_info info;
  if (dladdr((void*)gLibrary.ReloadPlugins, &info) && info.dli_fname) return info.dli_fname;
  return "libtoka.so";
}

// A folder added again keeps its descriptor, and folders that no longer
// hold a plugin stay watched: their events are simply not looked for.
void WatchFolderOf(const std::string& file) {
  std::string folder = file.substr(0, file.rfind('/') + 1);
  if (folder.empty()) return;
  int watch = inotify_add_watch(gInotify, folder.c_str(), kRebuildEvents);
  if (watch >= 0)
    gFolders[watch] = folder;
  else
    std::fprintf(stderr, "toka-host: warning: cannot watch %s: %s\n", folder.c_str(),
                 std::strerror(errno));
}

// The plugins as they are now, and the failed rebuilds that are not among
// them.
void FollowPlugins(const std::set<std::string>& loaded) {
  gFiles = loaded;
  gFiles.insert(gFailed.begin(), gFailed.end());
  for (const std::string& file : gFiles) WatchFolderOf(file);
}

void NoteEvent(const struct inotify_event& event) {
  auto folder = gFolders.find(event.wd);
  if (folder == gFolders.end() || event.len == 0) return;
  std::string file = folder->second + event.name;
  if (gFiles.count(file)) gChanging[file] = Clock::now();
}

// Reads what has come without waiting: a frame never waits for a build.
void ReadEvents() {
  alignas(struct inotify_event) char buffer[4096];
  ssize_t length;
  while ((length = read(gInotify, buffer, sizeof buffer)) > 0) {
    for (char* at = buffer; at < buffer + length;) {
      const auto* event = reinterpret_cast<const struct inotify_event*>(at);
      NoteEvent(*event);
      at += sizeof(struct inotify_event) + event->len;
    }
  }
}

std::vector<std::string> SettledFiles() {
  std::vector<std::string> settled;
  Clock::time_point now = Clock::now();
  for (auto file = gChanging.begin(); file != gChanging.end();) {
    if (now - file->second < kQuietTime) {
      ++file;
      continue;
    }
    settled.push_back(file->first);
    file = gChanging.erase(file);
  }
  return settled;
}

struct Rebuild {
  std::string file;
  bool removed = false;
  PluginFile state = PluginFile::kDoesNotLoad;
  std::string reason;
};

// Each file loaded in a child first; those whose loading would end the host
// are noted until their next build.
std::vector<Rebuild> ProbeRebuilds(const std::vector<std::string>& files) {
  std::vector<Rebuild> rebuilds;
  for (const std::string& file : files) {
    Rebuild rebuild;
    rebuild.file = file;
    rebuild.removed = access(file.c_str(), F_OK) != 0;
    if (!rebuild.removed) rebuild.state = ProbePluginFile(file, gLibraryFile, rebuild.reason);
    gHarmful.erase(file);
    if (rebuild.state == PluginFile::kEndsTheHost) gHarmful[file] = rebuild.reason;
    rebuilds.push_back(rebuild);
  }
  return rebuilds;
}

void AnnounceRebuild(const Rebuild& rebuild) {
  const std::string& file = rebuild.file;
  Report("reloading the plugins: " + file + (rebuild.removed ? " was removed" : " was rebuilt"));
  if (rebuild.state == PluginFile::kDoesNotLoad && !rebuild.removed)
    Report(file + " cannot be loaded, running without it: " + rebuild.reason);
  // Only a build that loads and is missing after the reload is news then.
  gReloading[file] = rebuild.state == PluginFile::kLoads;
}

// The library reloads every plugin at the end of the next frame's flight
// loops, between frames as far as the plugins can tell. A build the library
// turns away is reloaded all the same: the old build is gone from the disk,
// and the host runs without the plugin until a build of it loads. A build
// whose loading crashes, exits or hangs would take the host with it: while
// one is on the disk, nothing is reloaded.
void StartReload(const std::vector<std::string>& files) {
  std::vector<Rebuild> rebuilds = ProbeRebuilds(files);
  // Ctrl-C reaches the probe's child too: its end says nothing then.
  if (RunEndRequested()) return;
  for (const auto& harmful : gHarmful)
    Report("not reloading the plugins: " + harmful.first + " cannot be loaded: " + harmful.second);
  if (!gHarmful.empty()) return;
  for (const Rebuild& rebuild : rebuilds) AnnounceRebuild(rebuild);
  gLibrary.ReloadPlugins();
}

// After the reload frame: a rebuild that loaded yet is missing from the list
// did not start (its start entry returned 0, or the library refused it and
// said why in its own lines).
void FinishReload() {
  std::set<std::string> loaded = LoadedPluginFiles();
  for (const auto& rebuilt : gReloading) {
    const std::string& file = rebuilt.first;
    if (loaded.count(file)) continue;
    gFailed.insert(file);
    if (rebuilt.second)
      Report(file + " cannot be loaded, running without it: it did not start (see the library's "
                    "lines above)");
  }
  gReloading.clear();
  for (auto file = gFailed.begin(); file != gFailed.end();)
    file = loaded.count(*file) ? gFailed.erase(file) : std::next(file);
  FollowPlugins(loaded);
}

}  // namespace

void WatchPlugins() {
  if (!gLibrary.CountPlugins || !gLibrary.GetPluginInfo || !gLibrary.ReloadPlugins) {
    std::fprintf(stderr, "toka-host: warning: the library cannot list or reload its plugins; "
                         "--watch reloads nothing\n");
    return;
  }
  if (gInotify >= 0) close(gInotify);
  gFolders.clear();
  gFailed.clear();
  gChanging.clear();
  gReloading.clear();
  gHarmful.clear();
  // Not inherited by the probe's child.
  gInotify = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (gInotify < 0) {
    std::fprintf(stderr, "toka-host: warning: cannot watch the plugins' files: %s\n",
                 std::strerror(errno));
    return;
  }
  gLibraryFile = LoadedLibraryFile();
  FollowPlugins(LoadedPluginFiles());
  size_t count = gFiles.size();
  Report("watching " + std::to_string(count) + (count == 1 ? " plugin file" : " plugin files") +
         " for rebuilds");
}

void ReloadRebuiltPlugins() {
  if (gInotify < 0) return;
  // The frame just run carried out the reload asked for after the last one.
  if (!gReloading.empty()) FinishReload();
  ReadEvents();
  std::vector<std::string> settled = SettledFiles();
  if (!settled.empty()) StartReload(settled);
}

}  // namespace toka_host
