// Keys, speech and buttons (services 21 to 24), paths, versions, language
// and the log (25 to 29), messages to the user (53, 54), the host's symbol
// table (61) and situation files (68, 69).
#include "host/system.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>

#include "host/config.h"
#include "host/menus.h"
#include "host/output.h"
#include "host/render/render.h"
#include "host/services.h"
#include "host/world/aircraft.h"
#include "host/world/world.h"

namespace toka_host {

std::vector<RecordedInput> gRecordedInputs;

namespace {

void CopyOut(char* out, const std::string& text, size_t size) {
  if (!out) return;
  size_t length = std::min(text.size(), size - 1);
  std::memcpy(out, text.data(), length);
  out[length] = 0;
}

void MakeFolders(const std::string& path) {
  for (size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1))
    mkdir(path.substr(0, at).c_str(), 0755);
}

std::string DataFilePath(const std::string& path) {
  return !path.empty() && path[0] == '/' ? path : PrefsFolder() + path;
}

// ---- functions the host offers by name -------------------------------------

int HostFrameNumber() { return gFrame; }
void HostPrintMenus() { HostPrint(MenuTreeText()); }
int HostSaveScreen(const char* path) { return path && SaveScreen(path) ? 1 : 0; }

// ---- services --------------------------------------------------------------

void SimulateKeyPress(int keyType, int key) {
  gRecordedInputs.push_back({21, {keyType, key}, ""});
  HostPrint("[key] type " + std::to_string(keyType) + " key " + std::to_string(key) + "\n");
}

void SpeakString(const char* text) {
  gRecordedInputs.push_back({22, {}, text ? text : ""});
  HostPrint(std::string("[speech] ") + (text ? text : "") + "\n");
}

void CommandKeyStroke(int keyCommand) {
  gRecordedInputs.push_back({23, {keyCommand}, ""});
  HostPrint("[key command] " + std::to_string(keyCommand) + "\n");
}

// Held buttons repeat every frame at stage 1; only the presses and releases
// (stage 0) go to the log, so that it stays readable.
void CommandButton(int* buttons, int up, int stage) {
  RecordedInput input{24, {up, stage}, ""};
  std::string codes;
  for (int i = 0; buttons && buttons[i] != 0; ++i) {
    input.values.push_back(buttons[i]);
    codes += " " + std::to_string(buttons[i]);
  }
  gRecordedInputs.push_back(input);
  if (stage == 0) HostPrint(std::string("[button] ") + (up ? "up" : "down") + codes + "\n");
}

void GetSystemPath(char* outPath) { CopyOut(outPath, gConfig.root, 512); }

void GetPrefsPath(char* outPath) { CopyOut(outPath, PrefsFolder(), 512); }

void GetVersions(int* outFirst, int* outSecond) {
  if (outFirst) *outFirst = kHostVersion;
  if (outSecond) *outSecond = kHostID;
}

int GetLanguage() { return kLanguageEnglish; }

void DebugString(const char* text) {
  if (text) HostPrint(text);
}

void ShowUserMessage(const char* line1, const char* line2, const char* a, const char* b) {
  for (const char* line : {line1, line2, a, b})
    if (line && *line) HostPrint(std::string("[message] ") + line + "\n");
}

void ShowLoadingProgress(const char* text) {
  HostPrint(std::string("[progress] ") + (text ? text : "") + "\n");
}

void* FindSymbol(const char* name) { return name ? FindHostSymbol(name) : nullptr; }

int LoadDataFile(int fileType, const char* path) {
  return path && LoadSituation(fileType, DataFilePath(path)) ? 1 : 0;
}

int SaveDataFile(int fileType, const char* path) {
  return path && SaveSituation(fileType, DataFilePath(path)) ? 1 : 0;
}

void WriteAircraft(std::ostream& out, size_t index) {
  const Aircraft& plane = gAircraft[index];
  out.precision(17);  // doubles come back exactly
  out << "aircraft " << index << " " << plane.latitude << " " << plane.longitude << " "
      << plane.elevation << " " << plane.heading << " " << plane.groundSpeed << " "
      << plane.turnRate << " " << plane.path << "\n";
}

struct SavedAircraft {
  size_t index;
  Aircraft state;
};

bool ReadAircraft(std::istringstream& line, SavedAircraft& saved) {
  Aircraft& state = saved.state;
  if (!(line >> saved.index >> state.latitude >> state.longitude >> state.elevation >>
        state.heading >> state.groundSpeed >> state.turnRate))
    return false;
  std::getline(line >> std::ws, state.path);
  return true;
}

void ApplyAircraft(const SavedAircraft& saved) {
  if (saved.index >= gAircraft.size()) return;  // the file had more traffic than this world
  Aircraft& plane = gAircraft[saved.index];
  std::string oldPath = plane.path;
  bool aiDisabled = plane.aiDisabled, active = plane.active;
  plane = saved.state;
  plane.path = oldPath;
  plane.aiDisabled = aiDisabled;
  plane.active = active;
  if (!saved.state.path.empty() && saved.state.path != oldPath)
    LoadAircraftModel((int)saved.index, saved.state.path);
}

}  // namespace

std::string ResolveUnderRoot(const std::string& path) {
  return !path.empty() && path[0] == '/' ? path : gConfig.root + path;
}

std::string PrefsFolder() {
  std::string folder = gConfig.root + "Output/preferences/";
  MakeFolders(folder);
  return folder;
}

void* FindHostSymbol(const std::string& name) {
  if (name == "HostFrameNumber") return (void*)&HostFrameNumber;
  if (name == "HostPrintMenus") return (void*)&HostPrintMenus;
  if (name == "HostSaveScreen") return (void*)&HostSaveScreen;
  return nullptr;
}

bool SaveSituation(int type, const std::string& path) {
  if (type != 1 && type != 2) return false;
  MakeFolders(path);
  std::ofstream out(path);
  if (!out) return false;
  out << "toka-host situation " << type << "\n";
  if (type == 1) {
    out.precision(17);  // doubles come back exactly
    out << "flight_time " << gFlightTime << "\n";
    out << "paused " << (gPaused ? 1 : 0) << "\n";
    out << "nav1 " << gNav1Frequency << "\n";
  }
  for (size_t i = 0; i < (type == 1 ? gAircraft.size() : 1); ++i) WriteAircraft(out, i);
  return (bool)out;
}

// A situation file of the wrong type, or one that does not parse, changes
// nothing. Loading a whole situation tells the plugins (event 11).
bool LoadSituation(int type, const std::string& path) {
  std::ifstream in(path);
  std::string header;
  if (!in || !std::getline(in, header) || header != "toka-host situation " + std::to_string(type))
    return false;
  std::vector<SavedAircraft> aircraft;
  double flightTime = gFlightTime;
  int paused = gPaused ? 1 : 0, nav1 = gNav1Frequency;
  for (std::string text; std::getline(in, text);) {
    std::istringstream line(text);
    std::string key;
    line >> key;
    bool parsed = true;
    if (key == "aircraft") {
      aircraft.emplace_back();
      parsed = ReadAircraft(line, aircraft.back());
    } else if (type == 1 && key == "flight_time") {
      parsed = (bool)(line >> flightTime);
    } else if (type == 1 && key == "paused") {
      parsed = (bool)(line >> paused);
    } else if (type == 1 && key == "nav1") {
      parsed = (bool)(line >> nav1);
    }
    if (!parsed) return false;
  }
  for (const SavedAircraft& saved : aircraft) ApplyAircraft(saved);
  if (type == 1) {
    gFlightTime = flightTime;
    gPaused = paused != 0;
    gNav1Frequency = nav1;
    QueueEvent(11, 0);
  }
  return true;
}

void ResetSystem() { gRecordedInputs.clear(); }

void AddSystemServices(TOKAHostServices& table) {
  table.SimulateKeyPress = SimulateKeyPress;
  table.SpeakString = SpeakString;
  table.CommandKeyStroke = CommandKeyStroke;
  table.CommandButton = CommandButton;
  table.GetSystemPath = GetSystemPath;
  table.GetPrefsPath = GetPrefsPath;
  table.GetVersions = GetVersions;
  table.GetLanguage = GetLanguage;
  table.DebugString = DebugString;
  table.ShowUserMessage = ShowUserMessage;
  table.ShowLoadingProgress = ShowLoadingProgress;
  table.FindSymbol = FindSymbol;
  table.LoadDataFile = LoadDataFile;
  table.SaveDataFile = SaveDataFile;
}

bool IsFolder(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool IsFile(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

std::vector<std::string> ListFolder(const std::string& folder) {
  std::vector<std::string> names;
  DIR* dir = opendir(folder.c_str());
  if (!dir) return names;
  while (dirent* entry = readdir(dir))
    if (std::strcmp(entry->d_name, ".") && std::strcmp(entry->d_name, ".."))
      names.push_back(entry->d_name);
  closedir(dir);
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace toka_host
