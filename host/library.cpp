// Loading the plugin manager library as the simulator does.
#include <dlfcn.h>

#include "host/host.h"

namespace toka_host {

HostLibrary gLibrary;

namespace {

template <class F>
bool Resolve(void* handle, const char* name, F& out, std::string& error) {
  out = reinterpret_cast<F>(dlsym(handle, name));
  if (!out && error.empty()) error = std::string("the library lacks ") + name;
  return out != nullptr;
}

}  // namespace

bool LoadHostLibrary(const std::string& path, std::string& error) {
  // Global symbols: plugins link against the library's functions and find
  // them in the process, not through a path of their own.
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (!handle) {
    const char* reason = dlerror();
    error = "cannot load " + path + ": " + (reason ? reason : "unknown error");
    return false;
  }
  HostLibrary library;
  library.handle = handle;
  error.clear();
  Resolve(handle, "TOKAInitializePlugins", library.InitializePlugins, error);
  Resolve(handle, "TOKAShutdownPlugins", library.ShutdownPlugins, error);
  Resolve(handle, "TOKAEventHook", library.EventHook, error);
  Resolve(handle, "TOKADoDrawingHook", library.DoDrawingHook, error);
  Resolve(handle, "TOKAKeyPressHook", library.KeyPressHook, error);
  Resolve(handle, "TOKAMouseClickHook", library.MouseClickHook, error);
  Resolve(handle, "TOKACursorHook", library.CursorHook, error);
  Resolve(handle, "TOKAScrollWheelHook", library.ScrollWheelHook, error);
  Resolve(handle, "TOKAMenuHook", library.MenuHook, error);
  Resolve(handle, "TOKACheckMenuHook", library.CheckMenuHook, error);
  Resolve(handle, "TOKAMenuItemEnabled", library.MenuItemEnabled, error);
  Resolve(handle, "TOKACameraHook", library.CameraHook, error);
  Resolve(handle, "TOKACommandHook", library.CommandHook, error);
  Resolve(handle, "TOKAGetNumberPlanesToHandle", library.GetNumberPlanesToHandle, error);
  Resolve(handle, "TOKAUpdatePlaneNameAndPath", library.UpdatePlaneNameAndPath, error);
  if (!error.empty()) {
    dlclose(handle);
    return false;
  }
  // Optional: a library without it runs, only without the host's datarefs.
  library.RegisterDataAccessor =
      reinterpret_cast<RegisterDataAccessor_f>(dlsym(handle, "TOKARegisterDataAccessor"));
  gLibrary = library;
  return true;
}

}  // namespace toka_host
