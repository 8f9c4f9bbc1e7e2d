// The reference host's world around one plugin, run through the validator's
// own copy of the library.
#ifndef TOKA_VALIDATE_WORLD_H
#define TOKA_VALIDATE_WORLD_H

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "validate/validate.h"

namespace toka_validate {

// The validator's own failure, not the plugin's: the check cannot run.
struct WorldError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A simulator folder of its own for the plugin (Resources/plugins holds a
// link to it), made in the temporary folder, which is the check's scratch
// folder: the validator removes it when the check's process ends.
class World {
public:
  explicit World(const std::string& plugin, int frames);
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  // Starts the host, which starts and enables the plugins. Throws a
  // WorldError when the world cannot be made; what the plugin throws goes
  // through.
  void Start();
  void RunFrames(int count);
  void Stop();
  bool running() const { return mRunning; }

  // The plugin's ID, or -1 when the library has not loaded it.
  int PluginID() const;
  // The name the plugin gave itself, remembered from its last start (or its
  // file's name).
  std::string PluginName() const;
  // Before Start: an empty file or a folder below the simulator folder
  // (parents made as needed), for the plugin to be shown, as an aircraft
  // model or a scenery package.
  void AddFile(const std::string& relative);
  void AddFolder(const std::string& relative);
  // The plugin's path as the library knows it.
  const std::string& linkPath() const { return mLink; }
  // Everything the host printed, the library's log among it.
  const std::string& log() const { return mLog; }
  // The log lines that name the plugin ("Failed: ...", "Warning: ...").
  std::string LogAbout() const;
  // Why a check that needs the plugin running cannot go on: it did not load,
  // which the entry points check reports.
  std::string NotLoaded() const;

private:
  bool MakeRoot(std::string& error);
  void MakePath(const std::string& relative, bool file);

  std::string mPlugin, mRoot, mLink, mLog;
  std::vector<std::pair<std::string, bool>> mWanted;  // AddFile (true) and AddFolder
  mutable std::string mName;
  int mFrames;
  bool mRunning = false;
};

// Makes a new folder "toka-validate-XXXXXX" in $TMPDIR (or /tmp); false,
// with the reason, when it cannot.
bool MakeTempFolder(std::string& folder, std::string& error);

// Runs the plugin through start, frames, disable, enable, frames, disable
// and stop, telling watch before (true) and after (false) each frame. False,
// with the result a SKIP saying why, when an exception ends that or the
// plugin does not load.
typedef std::function<void(int plugin, bool before)> FrameWatch;
bool RunThroughLife(World& world, int frames, CheckResult& result, const FrameWatch& watch);

// Runs body; false with the exception's text when one escapes it. A
// WorldError goes on to the check's process, which reports it.
bool Guarded(const std::function<void()>& body, std::string& what);

// Starts the world of a check that needs its plugin running: false, with
// the check skipped and the reason, when start-up threw (the entry-points
// check's finding) or the plugin was not loaded; else the plugin's ID.
bool StartOrSkip(World& world, CheckResult& result, int& id);



}  // namespace toka_validate

#endif
