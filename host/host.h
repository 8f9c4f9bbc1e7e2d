// toka-host's world and services: what the source files of the reference host
// share. The host knows the library only through include/toka/ and the entry
// points it resolves at run time, as the simulator does.
#ifndef TOKA_HOST_HOST_H
#define TOKA_HOST_HOST_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "toka/TOKAHost.h"

namespace toka_host {

// ---- configuration ---------------------------------------------------------

struct HostConfig {
  std::string root = "./";  // the simulator folder, ending in "/"
  int screenWidth = 1280;
  int screenHeight = 800;
  double step = 1.0 / 60.0;  // simulated seconds per frame
  std::string airport = "KSEA";  // where the flight starts; also the local origin
  std::string userAircraft = "Aircraft/Trainer/trainer.acf";  // below the root, or absolute
  int otherAircraft = 2;
  double groundElevation = 0;     // metres above the ellipsoid, the same everywhere
  double terrainExtent = 100000;  // metres from the origin beyond which probes miss
};

extern HostConfig gConfig;

// What the host tells the library about itself.
constexpr int kTableRevision = 4;    // > 3: the library shows which plugin it loads
constexpr int kHostVersion = 1100;   // also the first number of GetVersions
constexpr int kHostID = 1;           // the second number of GetVersions: the reference host
constexpr int kLanguageEnglish = 0;

// Puts the whole world back to its starting state for a configuration.
void ResetWorld(const HostConfig& config);

// ---- output ----------------------------------------------------------------

// Everything the simulator shows in its log or on screen as text goes here:
// standard output, or the capture string when one is set. The log keeps all
// of it since the world was last reset, for scenarios to look through.
void HostPrint(const std::string& text);
void SetOutputCapture(std::string* capture);
const std::string& HostLog();

// ---- the loaded library ----------------------------------------------------

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
// functions, then resolves every hook. False with a reason when the file
// cannot be loaded or a hook is missing.
bool LoadHostLibrary(const std::string& path, std::string& error);

// ---- the services table ----------------------------------------------------

// The table handed to the library; the same object for the life of the process.
TOKAHostServices* HostServices();

// Each group fills its slots of the table.
void AddScreenServices(TOKAHostServices& table);
void AddWorldServices(TOKAHostServices& table);
void AddAircraftServices(TOKAHostServices& table);
void AddSystemServices(TOKAHostServices& table);
void AddMenuServices(TOKAHostServices& table);
void AddNavigationServices(TOKAHostServices& table);
void AddFmsServices(TOKAHostServices& table);
void AddCommandServices(TOKAHostServices& table);
void AddObjectServices(TOKAHostServices& table);

// Trace of every service call, one line each, to file (null stops tracing).
void TraceServicesTo(FILE* file);
// Every service call is counted by slot, traced or not.
int ServiceSlot(const std::string& name);  // the slot of a service named as in the trace, or -1
const char* ServiceName(int slot);
long ServiceCallCount(int slot);  // calls since the last reset
void ResetServiceCallCounts();

// ---- time ------------------------------------------------------------------

extern int gFrame;            // 0 during start-up, then 1, 2, ...
extern double gRunningTime;   // seconds since start, what slot 14 answers
extern double gFlightTime;    // seconds the simulation ran unpaused
extern bool gPaused;
extern bool gQuitRequested;

// ---- coordinates and terrain -----------------------------------------------

// The local frame: metres from the origin (a point on the ellipsoid at the
// origin's latitude and longitude), x east, y up, z south.
void SetLocalOrigin(double latitude, double longitude);
void WorldToLocalPoint(double latitude, double longitude, double elevation, double& x, double& y,
                       double& z);
void LocalToWorldPoint(double x, double y, double z, double& latitude, double& longitude,
                       double& elevation);
// The local direction of "up" (the ellipsoid normal) at a world position.
void LocalUpAt(double latitude, double longitude, double up[3]);
// Great-circle distance in metres on the mean sphere.
double DistanceMetres(double lat1, double lon1, double lat2, double lon2);
void ResetTerrain();

// ---- aircraft --------------------------------------------------------------

struct Aircraft {
  std::string path;  // full path of the model file
  double latitude = 0, longitude = 0, elevation = 0;  // degrees, metres
  float heading = 0;      // degrees true
  float groundSpeed = 0;  // metres per second
  float turnRate = 0;     // degrees per second; 0 flies straight
  bool aiDisabled = false;  // a plugin flies it: the host leaves it where it is
  bool active = true;       // within the count the plugins let the host handle
};

extern std::vector<Aircraft> gAircraft;  // index 0 is the user's
extern int gNav1Frequency;               // 10 kHz units

struct Airport {
  const char* id;
  const char* name;
  double latitude, longitude, elevation;
  float runwayHeading;
};
const Airport* FindAirport(const std::string& id);
int AirportCount();
const Airport& AirportAt(int index);

// Builds the aircraft of the configuration, with their models.
void CreateAircraft();

// Where every aircraft starts, around the configured airport.
void PlaceAircraftAtStart();
// Back to the start of the flight (the reset-flight command).
void ResetFlight();
// On the ground at an airport, which becomes the local origin.
void PlaceUserAtAirport(const char* code);
// Moves the aircraft that the host flies by one step of the kinematic model.
void MoveAircraft(double seconds);
// Loads a model for an aircraft as the simulator does: the controlling plugin
// may substitute its own model first; then the library hears of it on the
// next frame (events 8 and 3).
void LoadAircraftModel(int index, const std::string& path);
// Ends the flight when the user's aircraft is below the ground (event 2).
void CheckForCrash();
// Asks the library how many aircraft the host may handle and which models
// the controlling plugin wants; called once per frame.
void UpdateTrafficFromPlugins();

// The host's camera: x, y, z, pitch, heading, roll, zoom.
extern float gCamera[7];
void UpdateCamera();

// ---- screen ----------------------------------------------------------------

extern int gMouseX, gMouseY;
extern std::vector<uint32_t> gFramebuffer;  // 0xRRGGBB, row 0 at the top
uint32_t PixelAt(int x, int y);  // screen coordinates, y up
void ResetScreen();
void ClearScreen();
void DrawHostPhase(int code);   // what the host draws itself when a phase is not skipped
bool SaveScreen(const std::string& path);  // PNG

struct Marker {
  char kind;  // 'A' aircraft, 'O' object instance
  int index;  // aircraft index, or object number
  float x, y, z;
  bool onScreen;
  int screenX, screenY;
};
extern std::vector<Marker> gMarkers;  // drawn this frame
void DrawMarker(char kind, int index, float x, float y, float z);
// Projects a local point through the camera; false when behind it.
bool ProjectToScreen(double x, double y, double z, double& screenX, double& screenY);

// The built-in bitmap font: cell size per font, glyph rows per character.
void FontCell(int font, int& width, int& height);
const uint8_t* GlyphRows(unsigned char c);  // 7 rows of 5 bits, bit 4 leftmost
constexpr int kGlyphRows = 7;

// ---- menus -----------------------------------------------------------------

void ResetMenus();
std::string MenuTreeText();  // the menu bar as the user sees it
// Picks an item by its path of names ("Plugins/Hello/Say hi"). False when no
// such item exists or it is disabled.
bool PickMenuItem(const std::string& path);
// What the user sees of an item: false when there is no such item; checked
// is 1 checked, 0 unchecked, -1 without a check mark.
bool MenuItemState(const std::string& path, int& checked, bool& enabled);

// ---- commands --------------------------------------------------------------

void ResetCommands();
TOKACommandRef FindHostCommand(const std::string& name);
bool IsCommandHeld(TOKACommandRef command);
void RunCommandOnce(TOKACommandRef command);
void PressCommand(TOKACommandRef command);    // held down until released
void ReleaseCommand(TOKACommandRef command);

// ---- objects ---------------------------------------------------------------

void ResetObjects();
// Completes the asynchronous loads asked for before this call.
void CompletePendingObjectLoads();
int LoadedObjectCount();

// ---- navigation and FMS ----------------------------------------------------

enum NavType {
  kNavAirport = 1,
  kNavNDB = 2,
  kNavVOR = 4,
  kNavILS = 8,
  kNavFix = 16,
  kNavDME = 32,
  kNavLatLon = 64,
};
struct NavAid {
  int type;
  const char* id;
  const char* name;
  double latitude, longitude;
  float elevation;  // metres
  int frequency;    // VOR, ILS, DME: 10 kHz units; NDB: kHz; else 0
  float heading;    // the localizer's course for an ILS, else 0
};
const NavAid* NavAidAt(TOKANavRef navAid);  // null for a reference outside the database
constexpr int kFmsEntries = 100;
void ResetFms();

// ---- system ----------------------------------------------------------------

void ResetSystem();
std::string PrefsFolder();  // root + "Output/preferences/", created on demand
std::string ResolveUnderRoot(const std::string& path);
void* FindHostSymbol(const std::string& name);

struct RecordedInput {
  int slot;
  std::vector<int> values;
  std::string text;
};
extern std::vector<RecordedInput> gRecordedInputs;  // keys, speech, buttons

// Situation files: 1 the whole world, 2 the user's aircraft only.
bool SaveSituation(int type, const std::string& path);
bool LoadSituation(int type, const std::string& path);

// ---- world events ----------------------------------------------------------

// Events reach the library at the start of the next frame, never from
// inside a service a plugin called.
void QueueEvent(int code, int param);
void QueueSceneryPackage(const std::string& folder);  // event 12
void QueueSceneryScan();  // every package of "Custom Scenery" not loaded yet
void SendQueuedEvents();
void ResetEvents();

// ---- graphics state --------------------------------------------------------

extern int gGraphicsState[7];
extern int gBoundTextures[4];

// ---- host datarefs ---------------------------------------------------------

// Registers the host's datarefs through the library's registration function.
// Returns how many were registered.
int RegisterHostDataRefs(RegisterDataAccessor_f registerAccessor);
extern char gBuildString[256];

// ---- keyboard --------------------------------------------------------------

// The simulator's virtual keys, named as the plugins' key-name table names
// them, with the character a press of the key types (0 for none).
struct VirtualKey {
  std::string name;
  unsigned char code;
  char character;
};
const std::vector<VirtualKey>& VirtualKeys();
const VirtualKey* FindVirtualKey(const std::string& name);  // any case; null when unknown

// Modifier flags of a key press. A press is one call, with no down or up bit.
constexpr int kShiftFlag = 1, kAltFlag = 2, kControlFlag = 4;

// A key press as the simulator handles it: the plugins first, then, if they
// leave it, the simulator's own key map.
void PressKey(char character, int flags, unsigned char virtualKey);

// ---- plugin windows --------------------------------------------------------

struct SeenWindow {
  void* handle;
  std::string plugin;  // the name of the plugin that created it
  int left, top, right, bottom;
  int pluginID;  // the ID of the plugin that created it
};
// A visible plugin window that covers a point (left and bottom edges inside,
// right and top outside), the newest when several do; false when none does.
bool WindowAt(int x, int y, SeenWindow& window);

// ---- scenarios -------------------------------------------------------------

// Expectations and output come last: IsCheck tells them by their place.
enum class StepKind {
  // input
  Key, Click, Drag, Scroll, Move,
  // the simulator
  Menu, Command, SetDataRef, AircraftLoad, AircraftUnload, SceneryLoad, Message, CameraRelease,
  Pause, Airport,
  // the plugins
  Enable, Disable, Reload,
  // expectations
  ExpectLogContains, ExpectLogMatches, ExpectDataRef, ExpectWindow, ExpectNoWindow,
  ExpectPlugin, ExpectMenu, ExpectHostCall,
  // output
  Screenshot,
};

// Expectations and screenshots look at a frame once it is drawn; the other
// steps act at the point of the frame where the user's input arrives.
bool IsCheck(StepKind kind);

struct ScenarioStep {
  StepKind kind;
  int frame = 0;      // 0: right after start-up, before the first frame
  std::string where;  // "FILE:LINE", or "--at" for a step given on the command line
  std::string text;   // the step as written
  std::vector<int> numbers;  // coordinates, clicks, key code, character and flags, message
  std::string name;  // dataref, command, plugin, menu path, file, text, regex, service, airport
  std::string word;  // begin|end|once, a plugin or menu state
  bool isText = false;      // a dataref value in double quotes...
  std::string textValue;    // ...is this text
  double value = 0;         // a dataref value, or the count of a host call
  double tolerance = -1;    // "within": -1 when not given
  bool hasCount = false;
};

// Parses a whole scenario file's text. Frames of "at SECONDS s" are counted
// with the time step. False with "FILE:LINE:COLUMN: message" on the first
// malformed line.
bool ParseScenario(const std::string& text, const std::string& file, double step,
                   std::vector<ScenarioStep>& steps, std::string& error);
// Parses one step (not "at") for a frame. False with "COLUMN: message".
bool ParseScenarioStep(const std::string& line, int frame, const std::string& where,
                       ScenarioStep& step, std::string& error);

// Running a scenario's steps in the frame loop.
void SetScenario(const std::vector<ScenarioStep>& steps);
void RunScenarioActions(int frame);   // and ends a drag of the previous frame
void RunScenarioChecks(int frame);
void NoteFrameStart();                // host calls are counted per frame
void FinishScenario(int lastFrame);   // steps the run never reached fail
int ScenarioFailures();
int ScenarioStepCount();

// ---- the run ---------------------------------------------------------------

struct HostOptions {
  HostConfig config;
  std::string library = "libtoka.so";
  int frames = 60;
  bool lengthGiven = false;  // --frames or --seconds; else a scenario sets the length
  std::string trace;       // trace file, or none
  std::string screenshot;  // picture of the last frame, or none
  bool printMenus = false;
  std::string scenario;    // the scenario file, or none
  std::vector<ScenarioStep> steps;  // its steps, then those of --at
};

// Exit status of a run that could not start: bad options, a malformed
// scenario, a library that cannot be used. A run that starts exits with the
// number of failed steps, at most kMaxFailureStatus.
constexpr int kCannotRunStatus = 101;
constexpr int kMaxFailureStatus = 100;

std::string HostUsage();
// False with a reason for options that do not make sense.
bool ParseHostOptions(int argc, char** argv, HostOptions& options, std::string& error);
// Reads the scenario file, if any, and sets the length of a run that was not
// given one: the frame of the last step. False with the error to print as it
// stands ("FILE:LINE:COLUMN: message" for a malformed line).
bool LoadScenario(HostOptions& options, std::string& error);

// Loads the library, publishes the host's datarefs, starts the plugins and
// loads the aircraft and scenery. False with a reason when the library
// cannot be used.
bool StartHost(const HostOptions& options, std::string& error);
void RunFrame();
void StopHost();
// The whole run: start, the frames, stop. The process's exit status.
int RunHost(const HostOptions& options);

}  // namespace toka_host

#endif
