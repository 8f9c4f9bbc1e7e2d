#include "harness/fake_host.h"

#include <cstring>
#include <type_traits>

namespace toka_test {

namespace {

void Push(HostCall& call, const char* text) {
  call.words.push_back((uint32_t)(uintptr_t)text);
  if (text) call.strings.push_back(text);
}
void Push(HostCall& call, double value) {
  uint32_t pair[2];
  std::memcpy(pair, &value, 8);
  call.words.push_back(pair[0]);
  call.words.push_back(pair[1]);
}
void Push(HostCall& call, float value) {
  uint32_t word;
  std::memcpy(&word, &value, 4);
  call.words.push_back(word);
}
template <class T>
void Push(HostCall& call, T value) {
  static_assert(sizeof(T) == 4, "one word");
  uint32_t word;
  std::memcpy(&word, &value, 4);
  call.words.push_back(word);
}

intptr_t DefaultAnswer(const HostCall& call) {
  switch (call.slot) {
    case 18:
      call.arg<char*>(1)[0] = 0;
      call.arg<char*>(2)[0] = 0;
      break;
    case 25:
    case 26:
      call.arg<char*>(0)[0] = 0;
      break;
  }
  return 0;
}

template <class R, class... A>
R Service(int slot, A... args) {
  FakeHost& host = FakeHost::Get();
  HostCall call;
  call.slot = slot;
  (Push(call, args), ...);
  host.calls.push_back(call);
  if (slot == 29 && !call.strings.empty()) host.log += call.strings[0];
  if constexpr (std::is_floating_point_v<R>) {
    return host.onFloatCall[slot] ? (R)host.onFloatCall[slot](call) : R(0);
  } else {
    intptr_t answer = host.onCall[slot] ? host.onCall[slot](call) : DefaultAnswer(call);
    if constexpr (std::is_pointer_v<R>) return (R)answer;
    else if constexpr (!std::is_void_v<R>) return (R)answer;
  }
}

}  // namespace

#define TOKA_SERVICE(slot, R, member, params, ...)                     \
  table.member = [] params -> R { return Service<R>(slot, ##__VA_ARGS__); }

FakeHost::FakeHost() {
  table.revision = 4;
  table.version = 300;
  TOKA_SERVICE(2, void, GetScreenSize, (int* a, int* b), a, b);
  TOKA_SERVICE(3, void, GetMouseLocation, (int* a, int* b, int c), a, b, c);
  TOKA_SERVICE(4, void, SetGraphicsState, (int a, int b, int c, int d, int e, int f, int g), a, b,
               c, d, e, f, g);
  TOKA_SERVICE(5, void, BindTexture2d, (int a, int b), a, b);
  TOKA_SERVICE(6, void, GenerateTextureNumbers, (int* a, int b), a, b);
  TOKA_SERVICE(7, int, GetTexture, (int a), a);
  TOKA_SERVICE(8, void, WorldToLocal, (double a, double b, double c, double* d, double* e, double* f),
               a, b, c, d, e, f);
  TOKA_SERVICE(9, void, LocalToWorld, (double a, double b, double c, double* d, double* e, double* f),
               a, b, c, d, e, f);
  TOKA_SERVICE(10, void, DrawTranslucentDarkBox, (int a, int b, int c, int d), a, b, c, d);
  TOKA_SERVICE(11, void, DrawString, (float* a, int b, int c, const char* d, int* e, int f), a, b, c,
               d, e, f);
  TOKA_SERVICE(12, void, DrawNumber,
               (float* a, int b, int c, double d, int e, int f, int g, int h), a, b, c, d, e, f, g, h);
  TOKA_SERVICE(13, void, GetFontDimensions, (int a, int* b, int* c, int* d), a, b, c, d);
  TOKA_SERVICE(14, double, GetElapsedTime, ());
  TOKA_SERVICE(15, void, ReadCameraPosition,
               (float* a, float* b, float* c, float* d, float* e, float* f, float* g), a, b, c, d, e,
               f, g);
  TOKA_SERVICE(16, void, DrawAircraft,
               (int a, float b, float c, float d, float e, float f, float g, int h, void* i), a, b, c,
               d, e, f, g, h, i);
  TOKA_SERVICE(17, void, SetAircraftModel, (int a, const char* b, const char* c), a, b, c);
  TOKA_SERVICE(18, void, GetNthAircraftModel, (int a, char* b, char* c), a, b, c);
  TOKA_SERVICE(19, int, CountAircraft, ());
  TOKA_SERVICE(20, void, PlaceUserAtAirport, (const char* a), a);
  TOKA_SERVICE(21, void, SimulateKeyPress, (int a, int b), a, b);
  TOKA_SERVICE(22, void, SpeakString, (const char* a), a);
  TOKA_SERVICE(23, void, CommandKeyStroke, (int a), a);
  TOKA_SERVICE(24, void, CommandButton, (int* a, int b, int c), a, b, c);
  TOKA_SERVICE(25, void, GetSystemPath, (char* a), a);
  TOKA_SERVICE(26, void, GetPrefsPath, (char* a), a);
  TOKA_SERVICE(27, void, GetVersions, (int* a, int* b), a, b);
  TOKA_SERVICE(28, int, GetLanguage, ());
  TOKA_SERVICE(29, void, DebugString, (const char* a), a);
  TOKA_SERVICE(30, int, CreateMenu, (int a, int b, const char* c), a, b, c);
  TOKA_SERVICE(31, int, AppendMenuItem, (int a, int b, const char* c, int d), a, b, c, d);
  TOKA_SERVICE(32, void, SetMenuItemName, (int a, int b, const char* c, int d), a, b, c, d);
  TOKA_SERVICE(33, void, DestroyMenu, (int a), a);
  TOKA_SERVICE(34, void, ReinitUsersPlane, (int a, int b), a, b);
  TOKA_SERVICE(35, void, ReloadScenery, ());
  TOKA_SERVICE(36, TOKANavRef, GetFirstNavAid, ());
  TOKA_SERVICE(37, TOKANavRef, GetNextNavAid, (TOKANavRef a), a);
  TOKA_SERVICE(38, TOKANavRef, FindFirstNavAidOfType, (int a), a);
  TOKA_SERVICE(39, TOKANavRef, FindLastNavAidOfType, (int a), a);
  TOKA_SERVICE(40, TOKANavRef, FindNavAid,
               (const char* a, const char* b, float* c, float* d, int* e, int f), a, b, c, d, e, f);
  TOKA_SERVICE(41, int, GetNavAidInfo,
               (TOKANavRef a, int* b, float* c, float* d, float* e, int* f, float* g, char* h,
                char* i, char* j),
               a, b, c, d, e, f, g, h, i, j);
  TOKA_SERVICE(42, int, CountFMSEntries, ());
  TOKA_SERVICE(43, int, GetDisplayedFMSEntry, ());
  TOKA_SERVICE(44, int, GetDestinationFMSEntry, ());
  TOKA_SERVICE(45, int, SetDisplayedFMSEntry, (int a), a);
  TOKA_SERVICE(46, int, SetDestinationFMSEntry, (int a), a);
  TOKA_SERVICE(47, int, GetFMSEntryInfo,
               (int a, int* b, char* c, TOKANavRef* d, int* e, float* f, float* g), a, b, c, d, e,
               f, g);
  TOKA_SERVICE(48, int, SetFMSEntryInfo, (int a, TOKANavRef b, int c), a, b, c);
  TOKA_SERVICE(49, int, SetFMSEntryLatLon, (int a, float b, float c, int d), a, b, c, d);
  TOKA_SERVICE(50, int, ClearFMSEntry, (int a), a);
  TOKA_SERVICE(51, int, GetGPSDestinationType, ());
  TOKA_SERVICE(52, int, GetGPSDestination, ());
  TOKA_SERVICE(53, void, ShowUserMessage, (const char* a, const char* b, const char* c, const char* d),
               a, b, c, d);
  TOKA_SERVICE(54, void, ShowLoadingProgress, (const char* a), a);
  TOKA_SERVICE(55, TOKACommandRef, CreateCommand, (const char* a, const char* b, int c), a, b, c);
  TOKA_SERVICE(56, void, CommandBegin, (TOKACommandRef a), a);
  TOKA_SERVICE(57, void, CommandContinue, (TOKACommandRef a), a);
  TOKA_SERVICE(58, void, CommandEnd, (TOKACommandRef a), a);
  TOKA_SERVICE(59, int, CreateProbe, ());
  TOKA_SERVICE(60, int, ProbeTerrain, (int a, float* b, float* c, float* d, float* e, int* f), a, b,
               c, d, e, f);
  TOKA_SERVICE(61, void*, FindSymbol, (const char* a), a);
  TOKA_SERVICE(62, float, MeasureString, (int a, const char* b, int c), a, b, c);
  TOKA_SERVICE(63, void, RemoveMenuItem, (int a, int b), a, b);
  TOKA_SERVICE(64, TOKAObjectRef, LoadObject, (const char* a), a);
  TOKA_SERVICE(65, void, DrawObjectInstance,
               (TOKAObjectRef a, float b, float c, float d, float e, float f, float g, int h, int i),
               a, b, c, d, e, f, g, h, i);
  TOKA_SERVICE(66, void, UnloadObject, (TOKAObjectRef a), a);
  TOKA_SERVICE(67, int, LookupObjects,
               (const char* a, float b, float c, TOKAObjectLibraryEnumerator_f d, void* e), a, b, c,
               d, e);
  TOKA_SERVICE(68, int, LoadDataFile, (int a, const char* b), a, b);
  TOKA_SERVICE(69, int, SaveDataFile, (int a, const char* b), a, b);
  TOKA_SERVICE(70, void, LoadObjectAsync, (const char* a, TOKAObjectLoaded_f b, void* c), a, b, c);
}

FakeHost& FakeHost::Get() {
  static FakeHost host;
  return host;
}

std::vector<HostCall> FakeHost::CallsTo(int slot) const {
  std::vector<HostCall> result;
  for (const HostCall& call : calls)
    if (call.slot == slot) result.push_back(call);
  return result;
}

size_t FakeHost::CountCalls(int slot) const {
  size_t count = 0;
  for (const HostCall& call : calls) count += call.slot == slot;
  return count;
}

void FakeHost::ClearRecords() {
  calls.clear();
  log.clear();
}

}  // namespace toka_test
