// Loading the plugin manager library as the simulator does.
#include "host/library.h"

#include <dlfcn.h>

namespace toka_host {

HostLibrary gLibrary;

namespace {

template <class F>
void ResolveOptional(void* handle, const char* name, F& out) {
  out = reinterpret_cast<F>(dlsym(handle, name));
}

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
  // An empty path is the program itself, for a program that links the
  // library's code in (toka-validate).
  void* handle = dlopen(path.empty() ? nullptr : path.c_str(), RTLD_NOW | RTLD_GLOBAL);
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
  ResolveOptional(handle, "TOKACountPlugins", library.CountPlugins);
  ResolveOptional(handle, "TOKAGetPluginInfo", library.GetPluginInfo);
  ResolveOptional(handle, "TOKAIsPluginEnabled", library.IsPluginEnabled);
  ResolveOptional(handle, "TOKAEnablePlugin", library.EnablePlugin);
  ResolveOptional(handle, "TOKADisablePlugin", library.DisablePlugin);
  ResolveOptional(handle, "TOKAReloadPlugins", library.ReloadPlugins);
  ResolveOptional(handle, "TOKAGetMyID", library.GetMyID);
  ResolveOptional(handle, "TOKAFindDataRef", library.FindDataRef);
  ResolveOptional(handle, "TOKACanWriteDataRef", library.CanWriteDataRef);
  ResolveOptional(handle, "TOKAGetDataRefTypes", library.GetDataRefTypes);
  ResolveOptional(handle, "TOKAGetDatai", library.GetDatai);
  ResolveOptional(handle, "TOKASetDatai", library.SetDatai);
  ResolveOptional(handle, "TOKAGetDataf", library.GetDataf);
  ResolveOptional(handle, "TOKASetDataf", library.SetDataf);
  ResolveOptional(handle, "TOKAGetDatad", library.GetDatad);
  ResolveOptional(handle, "TOKASetDatad", library.SetDatad);
  ResolveOptional(handle, "TOKAGetDatavi", library.GetDatavi);
  ResolveOptional(handle, "TOKASetDatavi", library.SetDatavi);
  ResolveOptional(handle, "TOKAGetDatavf", library.GetDatavf);
  ResolveOptional(handle, "TOKASetDatavf", library.SetDatavf);
  ResolveOptional(handle, "TOKAGetDatab", library.GetDatab);
  ResolveOptional(handle, "TOKASetDatab", library.SetDatab);
  ResolveOptional(handle, "TOKAGetWindowGeometry", library.GetWindowGeometry);
  ResolveOptional(handle, "TOKAGetWindowIsVisible", library.GetWindowIsVisible);
  gLibrary = library;
  return true;
}

}  // namespace toka_host
