// toka-host: a headless stand-in for the simulator. It loads libtoka.so as
// the simulator does, hands it a host services table, runs a number of
// frames and shuts the library down, so that plugins can run without the
// simulator.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "toka/TOKAHost.h"

namespace {

struct Options {
  std::string root = "./";
  std::string library = "libtoka.so";
  int frames = 60;
  double step = 1.0 / 60.0;
};

double gElapsed = 0;
int gMouseX = 0, gMouseY = 0;

void Usage(FILE* out) {
  std::fputs(
      "usage: toka-host [options]\n"
      "Runs the plugins below a simulator folder tree without the simulator.\n"
      "\n"
      "  --root DIR      simulator root folder; plugins are found in\n"
      "                  DIR/Resources/plugins (default: ./)\n"
      "  --library FILE  the plugin manager library to load (default: libtoka.so)\n"
      "  --frames N      number of frames to run (default: 60)\n"
      "  --step SECONDS  simulated time per frame (default: 1/60)\n"
      "  --help          show this text\n",
      out);
}

bool ParseOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    auto value = [&](const char* name) -> const char* {
      if (i + 1 >= argc) {
        std::fprintf(stderr, "toka-host: %s needs a value\n", name);
        std::exit(2);
      }
      return argv[++i];
    };
    if (arg == "--help" || arg == "-h") {
      Usage(stdout);
      std::exit(0);
    } else if (arg == "--root") {
      options.root = value("--root");
      if (options.root.empty() || options.root.back() != '/') options.root += '/';
    } else if (arg == "--library") {
      options.library = value("--library");
    } else if (arg == "--frames") {
      options.frames = std::atoi(value("--frames"));
    } else if (arg == "--step") {
      options.step = std::atof(value("--step"));
    } else {
      std::fprintf(stderr, "toka-host: unknown option %s\n", arg.c_str());
      Usage(stderr);
      return false;
    }
  }
  return true;
}

// ---- host services -------------------------------------------------------

void GetScreenSize(int* w, int* h) {
  if (w) *w = 1280;
  if (h) *h = 800;
}
void GetMouseLocation(int* x, int* y, int) {
  if (x) *x = gMouseX;
  if (y) *y = gMouseY;
}
void SetGraphicsState(int, int, int, int, int, int, int) {}
void BindTexture2d(int, int) {}
void GenerateTextureNumbers(int* ids, int count) {
  static int next = 1;
  for (int i = 0; i < count; ++i) ids[i] = next++;
}
int GetTexture(int) { return 0; }
void WorldToLocal(double lat, double lon, double alt, double* x, double* y, double* z) {
  *x = lon;
  *y = alt;
  *z = -lat;
}
void LocalToWorld(double x, double y, double z, double* lat, double* lon, double* alt) {
  *lat = -z;
  *lon = x;
  *alt = y;
}
void DrawTranslucentDarkBox(int, int, int, int) {}
void DrawString(float*, int, int, const char*, int*, int) {}
void DrawNumber(float*, int, int, double, int, int, int, int) {}
void GetFontDimensions(int, int* w, int* h, int* digitsOnly) {
  if (w) *w = 8;
  if (h) *h = 12;
  if (digitsOnly) *digitsOnly = 0;
}
double GetElapsedTime() { return gElapsed; }
void ReadCameraPosition(float* x, float* y, float* z, float* p, float* h, float* r, float* zoom) {
  *x = *y = *z = *p = *h = *r = 0;
  *zoom = 1;
}
void DrawAircraft(int, float, float, float, float, float, float, int, void*) {}
void SetAircraftModel(int, const char*, const char*) {}
void GetNthAircraftModel(int, char* path, char* name) {
  path[0] = 0;
  name[0] = 0;
}
int CountAircraft() { return 1; }
void PlaceUserAtAirport(const char*) {}
void SimulateKeyPress(int, int) {}
void SpeakString(const char* text) { std::printf("[speech] %s\n", text); }
void CommandKeyStroke(int) {}
void CommandButton(int*, int, int) {}
std::string gRoot;
void GetSystemPath(char* out) { std::snprintf(out, 512, "%s", gRoot.c_str()); }
void GetPrefsPath(char* out) { std::snprintf(out, 512, "%sOutput/preferences/", gRoot.c_str()); }
void GetVersions(int* first, int* second) {
  if (first) *first = 1000;
  if (second) *second = 1;
}
int GetLanguage() { return 0; }
void DebugString(const char* text) {
  std::fputs(text, stdout);
  std::fflush(stdout);
}
int CreateMenu(int, int, const char*) {
  static int next = 1;
  return next++;
}
int AppendMenuItem(int, int, const char*, int) {
  static int next = 1000;
  return next++;
}
void SetMenuItemName(int, int, const char*, int) {}
void DestroyMenu(int) {}
void ReinitUsersPlane(int, int) {}
void ReloadScenery() {}
TOKANavRef GetFirstNavAid() { return -1; }
TOKANavRef GetNextNavAid(TOKANavRef) { return -1; }
TOKANavRef FindFirstNavAidOfType(int) { return -1; }
TOKANavRef FindLastNavAidOfType(int) { return -1; }
TOKANavRef FindNavAid(const char*, const char*, float*, float*, int*, int) { return -1; }
int GetNavAidInfo(TOKANavRef, int*, float*, float*, float*, int*, float*, char*, char*, char*) {
  return 0;
}
int CountFMSEntries() { return 0; }
int GetDisplayedFMSEntry() { return 0; }
int GetDestinationFMSEntry() { return 0; }
int SetDisplayedFMSEntry(int) { return 0; }
int SetDestinationFMSEntry(int) { return 0; }
int GetFMSEntryInfo(int, int*, char*, TOKANavRef*, int*, float*, float*) { return 0; }
int SetFMSEntryInfo(int, TOKANavRef, int) { return 0; }
int SetFMSEntryLatLon(int, float, float, int) { return 0; }
int ClearFMSEntry(int) { return 0; }
int GetGPSDestinationType() { return 0; }
int GetGPSDestination() { return -1; }
void ShowUserMessage(const char* a, const char* b, const char*, const char*) {
  std::printf("[message] %s %s\n", a, b);
}
void ShowLoadingProgress(const char* text) { std::printf("[progress] %s\n", text); }
TOKACommandRef CreateCommand(const char*, const char*, int) { return nullptr; }
void CommandBegin(TOKACommandRef) {}
void CommandContinue(TOKACommandRef) {}
void CommandEnd(TOKACommandRef) {}
int CreateProbe() {
  static int next = 1;
  return next++;
}
int ProbeTerrain(int, float*, float*, float*, float*, int*) { return 0; }
void* FindSymbol(const char*) { return nullptr; }
float MeasureString(int, const char*, int count) { return 8.0f * (float)count; }
void RemoveMenuItem(int, int) {}
TOKAObjectRef LoadObject(const char*) { return nullptr; }
void DrawObjectInstance(TOKAObjectRef, float, float, float, float, float, float, int, int) {}
void UnloadObject(TOKAObjectRef) {}
int LookupObjects(const char*, float, float, TOKAObjectLibraryEnumerator_f, void*) { return 0; }
int LoadDataFile(int, const char*) { return 0; }
int SaveDataFile(int, const char*) { return 0; }
void LoadObjectAsync(const char*, TOKAObjectLoaded_f done, void* record) { done(nullptr, record); }

TOKAHostServices MakeServices() {
  TOKAHostServices s;
  s.revision = 4;
  s.version = 1000;
  s.GetScreenSize = GetScreenSize;
  s.GetMouseLocation = GetMouseLocation;
  s.SetGraphicsState = SetGraphicsState;
  s.BindTexture2d = BindTexture2d;
  s.GenerateTextureNumbers = GenerateTextureNumbers;
  s.GetTexture = GetTexture;
  s.WorldToLocal = WorldToLocal;
  s.LocalToWorld = LocalToWorld;
  s.DrawTranslucentDarkBox = DrawTranslucentDarkBox;
  s.DrawString = DrawString;
  s.DrawNumber = DrawNumber;
  s.GetFontDimensions = GetFontDimensions;
  s.GetElapsedTime = GetElapsedTime;
  s.ReadCameraPosition = ReadCameraPosition;
  s.DrawAircraft = DrawAircraft;
  s.SetAircraftModel = SetAircraftModel;
  s.GetNthAircraftModel = GetNthAircraftModel;
  s.CountAircraft = CountAircraft;
  s.PlaceUserAtAirport = PlaceUserAtAirport;
  s.SimulateKeyPress = SimulateKeyPress;
  s.SpeakString = SpeakString;
  s.CommandKeyStroke = CommandKeyStroke;
  s.CommandButton = CommandButton;
  s.GetSystemPath = GetSystemPath;
  s.GetPrefsPath = GetPrefsPath;
  s.GetVersions = GetVersions;
  s.GetLanguage = GetLanguage;
  s.DebugString = DebugString;
  s.CreateMenu = CreateMenu;
  s.AppendMenuItem = AppendMenuItem;
  s.SetMenuItemName = SetMenuItemName;
  s.DestroyMenu = DestroyMenu;
  s.ReinitUsersPlane = ReinitUsersPlane;
  s.ReloadScenery = ReloadScenery;
  s.GetFirstNavAid = GetFirstNavAid;
  s.GetNextNavAid = GetNextNavAid;
  s.FindFirstNavAidOfType = FindFirstNavAidOfType;
  s.FindLastNavAidOfType = FindLastNavAidOfType;
  s.FindNavAid = FindNavAid;
  s.GetNavAidInfo = GetNavAidInfo;
  s.CountFMSEntries = CountFMSEntries;
  s.GetDisplayedFMSEntry = GetDisplayedFMSEntry;
  s.GetDestinationFMSEntry = GetDestinationFMSEntry;
  s.SetDisplayedFMSEntry = SetDisplayedFMSEntry;
  s.SetDestinationFMSEntry = SetDestinationFMSEntry;
  s.GetFMSEntryInfo = GetFMSEntryInfo;
  s.SetFMSEntryInfo = SetFMSEntryInfo;
  s.SetFMSEntryLatLon = SetFMSEntryLatLon;
  s.ClearFMSEntry = ClearFMSEntry;
  s.GetGPSDestinationType = GetGPSDestinationType;
  s.GetGPSDestination = GetGPSDestination;
  s.ShowUserMessage = ShowUserMessage;
  s.ShowLoadingProgress = ShowLoadingProgress;
  s.CreateCommand = CreateCommand;
  s.CommandBegin = CommandBegin;
  s.CommandContinue = CommandContinue;
  s.CommandEnd = CommandEnd;
  s.CreateProbe = CreateProbe;
  s.ProbeTerrain = ProbeTerrain;
  s.FindSymbol = FindSymbol;
  s.MeasureString = MeasureString;
  s.RemoveMenuItem = RemoveMenuItem;
  s.LoadObject = LoadObject;
  s.DrawObjectInstance = DrawObjectInstance;
  s.UnloadObject = UnloadObject;
  s.LookupObjects = LookupObjects;
  s.LoadDataFile = LoadDataFile;
  s.SaveDataFile = SaveDataFile;
  s.LoadObjectAsync = LoadObjectAsync;
  return s;
}

template <class F>
F Resolve(void* library, const char* name) {
  void* symbol = dlsym(library, name);
  if (!symbol) {
    std::fprintf(stderr, "toka-host: the library lacks %s\n", name);
    std::exit(1);
  }
  return reinterpret_cast<F>(symbol);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ParseOptions(argc, argv, options)) return 2;
  gRoot = options.root;

  // Plugins resolve the library's functions from the global scope.
  void* library = dlopen(options.library.c_str(), RTLD_NOW | RTLD_GLOBAL);
  if (!library) {
    std::fprintf(stderr, "toka-host: cannot load %s: %s\n", options.library.c_str(), dlerror());
    return 1;
  }
  auto initialize = Resolve<int (*)(const char*, TOKAHostServices*, int)>(library,
                                                                           "TOKAInitializePlugins");
  auto eventHook = Resolve<int (*)(int, float, int, int)>(library, "TOKAEventHook");
  auto shutdown = Resolve<void (*)()>(library, "TOKAShutdownPlugins");

  static TOKAHostServices services = MakeServices();
  initialize(options.root.c_str(), &services, 0);
  for (int frame = 0; frame < options.frames; ++frame) {
    gElapsed += options.step;
    eventHook(0, (float)gElapsed, 0, 0);
    eventHook(10, (float)gElapsed, 0, 0);
  }
  shutdown();
  return 0;
}
