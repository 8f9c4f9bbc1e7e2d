// The host services table handed to the library, with a count of the calls to
// each service (what a scenario's "expect host-call" looks at) and the trace
// that shows a plugin author every service the plugins made the library ask
// for.
#include "host/services.h"

#include <cinttypes>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "host/config.h"

namespace toka_host {

namespace {

// Every service slot, by number and by its name in the table.
#define TOKA_HOST_SERVICE_SLOTS(X)                                                                \
  X(2, GetScreenSize) X(3, GetMouseLocation) X(4, SetGraphicsState) X(5, BindTexture2d)           \
  X(6, GenerateTextureNumbers) X(7, GetTexture) X(8, WorldToLocal) X(9, LocalToWorld)             \
  X(10, DrawTranslucentDarkBox) X(11, DrawString) X(12, DrawNumber) X(13, GetFontDimensions)      \
  X(14, GetElapsedTime) X(15, ReadCameraPosition) X(16, DrawAircraft) X(17, SetAircraftModel)     \
  X(18, GetNthAircraftModel) X(19, CountAircraft) X(20, PlaceUserAtAirport)                       \
  X(21, SimulateKeyPress) X(22, SpeakString) X(23, CommandKeyStroke) X(24, CommandButton)         \
  X(25, GetSystemPath) X(26, GetPrefsPath) X(27, GetVersions) X(28, GetLanguage)                  \
  X(29, DebugString) X(30, CreateMenu) X(31, AppendMenuItem) X(32, SetMenuItemName)               \
  X(33, DestroyMenu) X(34, ReinitUsersPlane) X(35, ReloadScenery) X(36, GetFirstNavAid)           \
  X(37, GetNextNavAid) X(38, FindFirstNavAidOfType) X(39, FindLastNavAidOfType)                   \
  X(40, FindNavAid) X(41, GetNavAidInfo) X(42, CountFMSEntries) X(43, GetDisplayedFMSEntry)       \
  X(44, GetDestinationFMSEntry) X(45, SetDisplayedFMSEntry) X(46, SetDestinationFMSEntry)         \
  X(47, GetFMSEntryInfo) X(48, SetFMSEntryInfo) X(49, SetFMSEntryLatLon) X(50, ClearFMSEntry)     \
  X(51, GetGPSDestinationType) X(52, GetGPSDestination) X(53, ShowUserMessage)                    \
  X(54, ShowLoadingProgress) X(55, CreateCommand) X(56, CommandBegin) X(57, CommandContinue)      \
  X(58, CommandEnd) X(59, CreateProbe) X(60, ProbeTerrain) X(61, FindSymbol)                      \
  X(62, MeasureString) X(63, RemoveMenuItem) X(64, LoadObject) X(65, DrawObjectInstance)          \
  X(66, UnloadObject) X(67, LookupObjects) X(68, LoadDataFile) X(69, SaveDataFile)                \
  X(70, LoadObjectAsync)

TOKAHostServices gDirect;    // the services themselves
TOKAHostServices gServices;  // what the library calls: counting and tracing in front of gDirect
FILE* gTraceFile = nullptr;
constexpr int kSlots = 71;
long gCallCounts[kSlots];
bool gBuffersHoldText = false;  // set while formatting a call whose buffers the host filled

// ---- formatting of arguments and results -----------------------------------

std::string Quoted(const char* text) {
  if (!text) return "null";
  std::string out = "\"";
  for (const char* c = text; *c; ++c) {
    switch (*c) {
      case '\n': out += "\\n"; break;
      case '\t': out += "\\t"; break;
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      default:
        if ((unsigned char)*c < 0x20) {
          char escaped[8];
          std::snprintf(escaped, sizeof escaped, "\\x%02x", (unsigned char)*c);
          out += escaped;
        } else {
          out += *c;
        }
    }
  }
  return out + "\"";
}

std::string Address(const void* pointer) {
  if (!pointer) return "null";
  char text[32];
  std::snprintf(text, sizeof text, "0x%" PRIxPTR, (uintptr_t)pointer);
  return text;
}

std::string Format(int value) { return std::to_string(value); }
std::string Format(float value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.7g", value);
  return text;
}
std::string Format(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.12g", value);
  return text;
}
std::string Format(const char* text) { return Quoted(text); }
// Buffers the service fills: their address only, for a buffer that was not
// filled may hold anything; the path services always fill theirs, and what
// they wrote is what the plugin author wants to see.
std::string Format(char* buffer) {
  return gBuffersHoldText && buffer ? "=" + Quoted(buffer) : Address(buffer);
}
// Values the service reads or writes through a pointer: what the pointer
// holds after the call (the first element of an array).
std::string Format(int* value) { return value ? "*" + Format(*value) : "null"; }
std::string Format(float* value) { return value ? "*" + Format(*value) : "null"; }
std::string Format(double* value) { return value ? "*" + Format(*value) : "null"; }
template <class T>
std::string Format(T* pointer) {
  return Address(reinterpret_cast<const void*>(reinterpret_cast<uintptr_t>(pointer)));
}

template <class... A>
std::string FormatArguments(A... args) {
  std::string text;
  ((text += (text.empty() ? "" : ", ") + Format(args)), ...);
  return text;
}

void WriteTraceLine(int slot, const std::string& arguments, const std::string& result) {
  if (!gTraceFile) return;
  std::fprintf(gTraceFile, "frame %d slot %d %s(%s)%s%s\n", gFrame, slot, ServiceName(slot),
               arguments.c_str(), result.empty() ? "" : " -> ", result.c_str());
  std::fflush(gTraceFile);
}

// Stands in front of a service: counts the call and, while tracing, writes
// its line. The line is written when the service returns, so that it shows
// what the service answered; calls made while a service runs (the handlers
// of a command, a plugin's choice of model) come before it.
template <int Slot, auto Member>
struct Observed;
template <int Slot, class R, class... A, R (*TOKAHostServices::*Member)(A...)>
struct Observed<Slot, Member> {
  // Aircraft model (18), system path (25) and preferences path (26).
  static constexpr bool kFillsText = Slot == 18 || Slot == 25 || Slot == 26;
  static std::string Arguments(A... args) {
    gBuffersHoldText = kFillsText;
    std::string text = FormatArguments(args...);
    gBuffersHoldText = false;
    return text;
  }
  static R Call(A... args) {
    ++gCallCounts[Slot];
    if constexpr (std::is_void_v<R>) {
      (gDirect.*Member)(args...);
      if (gTraceFile) WriteTraceLine(Slot, Arguments(args...), "");
    } else {
      R result = (gDirect.*Member)(args...);
      if (gTraceFile) WriteTraceLine(Slot, Arguments(args...), Format(result));
      return result;
    }
  }
};

void BuildDirectTable() {
  static bool built = false;
  if (built) return;
  built = true;
  gDirect.revision = kTableRevision;
  gDirect.version = kHostVersion;
  AddScreenServices(gDirect);
  AddWorldServices(gDirect);
  AddAircraftServices(gDirect);
  AddSystemServices(gDirect);
  AddMenuServices(gDirect);
  AddNavigationServices(gDirect);
  AddFmsServices(gDirect);
  AddCommandServices(gDirect);
  AddObjectServices(gDirect);
  gServices = gDirect;
#define TOKA_OBSERVE_SLOT(slot, name) \
  gServices.name = &Observed<slot, &TOKAHostServices::name>::Call;
  TOKA_HOST_SERVICE_SLOTS(TOKA_OBSERVE_SLOT)
#undef TOKA_OBSERVE_SLOT
}

}  // namespace

TOKAHostServices* HostServices() {
  BuildDirectTable();
  return &gServices;
}

void TraceServicesTo(FILE* file) {
  BuildDirectTable();
  gTraceFile = file;
}

const char* ServiceName(int slot) {
  switch (slot) {
#define TOKA_SLOT_NAME(slot, name) \
  case slot:                       \
    return #name;
    TOKA_HOST_SERVICE_SLOTS(TOKA_SLOT_NAME)
#undef TOKA_SLOT_NAME
    default:
      return "?";
  }
}

int ServiceSlot(const std::string& name) {
  for (int slot = 2; slot < kSlots; ++slot)
    if (name == ServiceName(slot)) return slot;
  return -1;
}

long ServiceCallCount(int slot) { return slot >= 0 && slot < kSlots ? gCallCounts[slot] : 0; }

void ResetServiceCallCounts() { std::memset(gCallCounts, 0, sizeof gCallCounts); }

}  // namespace toka_host
