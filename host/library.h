// The plugin manager library as the host has loaded it: its entry points,
// resolved at run time as the simulator resolves them. The host knows the
// library only through include/toka/ and these.
#ifndef TOKA_HOST_LIBRARY_H
#define TOKA_HOST_LIBRARY_H

#include <cstdint>
#include <string>

#include "toka/TOKAHost.h"

namespace toka_host {

typedef void* (*RegisterDataAccessor_f)(
    const char* name, int types, int writable, int (*readInt)(void*),
    void (*writeInt)(void*, int), float (*readFloat)(void*), void (*writeFloat)(void*, float),
    double (*readDouble)(void*), void (*writeDouble)(void*, double),
    int (*readIntArray)(void*, int*, int, int), void (*writeIntArray)(void*, int*, int, int),
    int (*readFloatArray)(void*, float*, int, int), void (*writeFloatArray)(void*, float*, int, int),
    int (*readData)(void*, void*, int, int), void (*writeData)(void*, void*, int, int),
    void* readRefcon, void* writeRefcon);

// The library's entry points. Each stays null until LoadHostLibrary finds it;
// the services treat a null hook as "no plugin took the event".
struct HostLibrary {
  void* handle = nullptr;
  int (*InitializePlugins)(const char*, TOKAHostServices*, intptr_t) = nullptr;
  void (*ShutdownPlugins)() = nullptr;
  int (*EventHook)(int, float, int, intptr_t) = nullptr;
  int (*DoDrawingHook)(int, int) = nullptr;
  int (*KeyPressHook)(char, int, char) = nullptr;
  int (*MouseClickHook)(int, int, int) = nullptr;
  int (*CursorHook)(int, int) = nullptr;
  int (*ScrollWheelHook)(int, int, int, int) = nullptr;
  int (*MenuHook)(int) = nullptr;
  int (*CheckMenuHook)(int, int, int*) = nullptr;
  int (*MenuItemEnabled)(int, int) = nullptr;
  int (*CameraHook)(float*, float*, float*, float*, float*, float*, float*) = nullptr;
  int (*CommandHook)(TOKACommandRef, int, int, int) = nullptr;
  int (*GetNumberPlanesToHandle)(int, int) = nullptr;
  int (*UpdatePlaneNameAndPath)(int, char*, char*) = nullptr;
  // Plugin-facing, optional: older libraries lack it.
  RegisterDataAccessor_f RegisterDataAccessor = nullptr;
  // Plugin-facing functions a scenario uses to look at and steer the
  // plugins as a user of the simulator would (its plugin admin, its dataref
  // viewer); null when the library lacks them.
  int (*CountPlugins)() = nullptr;
  void (*GetPluginInfo)(int, char*, char*, char*, char*) = nullptr;
  int (*IsPluginEnabled)(int) = nullptr;
  int (*EnablePlugin)(int) = nullptr;
  void (*DisablePlugin)(int) = nullptr;
  void (*ReloadPlugins)() = nullptr;
  int (*GetMyID)() = nullptr;
  void* (*FindDataRef)(const char*) = nullptr;
  int (*CanWriteDataRef)(void*) = nullptr;
  int (*GetDataRefTypes)(void*) = nullptr;
  int (*GetDatai)(void*) = nullptr;
  void (*SetDatai)(void*, int) = nullptr;
  float (*GetDataf)(void*) = nullptr;
  void (*SetDataf)(void*, float) = nullptr;
  double (*GetDatad)(void*) = nullptr;
  void (*SetDatad)(void*, double) = nullptr;
  int (*GetDatavi)(void*, int*, int, int) = nullptr;
  void (*SetDatavi)(void*, int*, int, int) = nullptr;
  int (*GetDatavf)(void*, float*, int, int) = nullptr;
  void (*SetDatavf)(void*, float*, int, int) = nullptr;
  int (*GetDatab)(void*, void*, int, int) = nullptr;
  void (*SetDatab)(void*, void*, int, int) = nullptr;
  void (*GetWindowGeometry)(void*, int*, int*, int*, int*) = nullptr;
  int (*GetWindowIsVisible)(void*) = nullptr;
};

extern HostLibrary gLibrary;

// dlopen(RTLD_NOW | RTLD_GLOBAL) so that plugins resolve the library's
// functions, then resolves every hook. An empty path: the program itself. False with a reason when the file
// cannot be loaded or a hook is missing.
bool LoadHostLibrary(const std::string& path, std::string& error);

}  // namespace toka_host

#endif
