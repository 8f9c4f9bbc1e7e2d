#include "harness/fake_host.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace toka_test {

namespace {

void Push(HostCall& call, const char* text) {
  call.words.push_back((HostWord)text);
  if (text) call.strings.push_back(text);
}
template <class T>
void Push(HostCall& call, T value) {
  PushWords(call.words, value);
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

// Every service records its call, then answers as the test says.
template <int Slot, class R, class... A>
R Service(A... args) {
  FakeHost& host = FakeHost::Get();
  HostCall call;
  call.slot = Slot;
  (Push(call, args), ...);
  host.calls.push_back(call);
  if (Slot == 29 && !call.strings.empty()) host.log += call.strings[0];
  if constexpr (std::is_floating_point_v<R>) {
    return host.onFloatCall[Slot] ? (R)host.onFloatCall[Slot](call) : R(0);
  } else {
    intptr_t answer = host.onCall[Slot] ? host.onCall[Slot](call) : DefaultAnswer(call);
    if constexpr (!std::is_void_v<R>) return (R)answer;
  }
}

// Fills a slot with the service of the slot's own type.
template <int Slot, class R, class... A>
void Install(R (*&service)(A...)) {
  service = &Service<Slot, R, A...>;
}

}  // namespace

// The slot of a service is its member's word in the table: two 32-bit
// numbers, then pointer-sized words.
constexpr int SlotAt(size_t offset) {
  return (int)(2 + (offset - offsetof(TOKAHostServices, GetScreenSize)) / sizeof(void*));
}
static_assert(SlotAt(offsetof(TOKAHostServices, LoadObjectAsync)) == 70, "71 words");
#define TOKA_SERVE(member) Install<SlotAt(offsetof(TOKAHostServices, member))>(table.member)

FakeHost::FakeHost() {
  table.revision = 4;
  table.version = 300;
  TOKA_SERVE(GetScreenSize); TOKA_SERVE(GetMouseLocation); TOKA_SERVE(SetGraphicsState);
  TOKA_SERVE(BindTexture2d); TOKA_SERVE(GenerateTextureNumbers); TOKA_SERVE(GetTexture);
  TOKA_SERVE(WorldToLocal); TOKA_SERVE(LocalToWorld); TOKA_SERVE(DrawTranslucentDarkBox);
  TOKA_SERVE(DrawString); TOKA_SERVE(DrawNumber); TOKA_SERVE(GetFontDimensions);
  TOKA_SERVE(GetElapsedTime); TOKA_SERVE(ReadCameraPosition); TOKA_SERVE(DrawAircraft);
  TOKA_SERVE(SetAircraftModel); TOKA_SERVE(GetNthAircraftModel); TOKA_SERVE(CountAircraft);
  TOKA_SERVE(PlaceUserAtAirport); TOKA_SERVE(SimulateKeyPress); TOKA_SERVE(SpeakString);
  TOKA_SERVE(CommandKeyStroke); TOKA_SERVE(CommandButton); TOKA_SERVE(GetSystemPath);
  TOKA_SERVE(GetPrefsPath); TOKA_SERVE(GetVersions); TOKA_SERVE(GetLanguage);
  TOKA_SERVE(DebugString); TOKA_SERVE(CreateMenu); TOKA_SERVE(AppendMenuItem);
  TOKA_SERVE(SetMenuItemName); TOKA_SERVE(DestroyMenu); TOKA_SERVE(ReinitUsersPlane);
  TOKA_SERVE(ReloadScenery); TOKA_SERVE(GetFirstNavAid); TOKA_SERVE(GetNextNavAid);
  TOKA_SERVE(FindFirstNavAidOfType); TOKA_SERVE(FindLastNavAidOfType); TOKA_SERVE(FindNavAid);
  TOKA_SERVE(GetNavAidInfo); TOKA_SERVE(CountFMSEntries); TOKA_SERVE(GetDisplayedFMSEntry);
  TOKA_SERVE(GetDestinationFMSEntry); TOKA_SERVE(SetDisplayedFMSEntry);
  TOKA_SERVE(SetDestinationFMSEntry); TOKA_SERVE(GetFMSEntryInfo); TOKA_SERVE(SetFMSEntryInfo);
  TOKA_SERVE(SetFMSEntryLatLon); TOKA_SERVE(ClearFMSEntry); TOKA_SERVE(GetGPSDestinationType);
  TOKA_SERVE(GetGPSDestination); TOKA_SERVE(ShowUserMessage); TOKA_SERVE(ShowLoadingProgress);
  TOKA_SERVE(CreateCommand); TOKA_SERVE(CommandBegin); TOKA_SERVE(CommandContinue);
  TOKA_SERVE(CommandEnd); TOKA_SERVE(CreateProbe); TOKA_SERVE(ProbeTerrain);
  TOKA_SERVE(FindSymbol); TOKA_SERVE(MeasureString); TOKA_SERVE(RemoveMenuItem);
  TOKA_SERVE(LoadObject); TOKA_SERVE(DrawObjectInstance); TOKA_SERVE(UnloadObject);
  TOKA_SERVE(LookupObjects); TOKA_SERVE(LoadDataFile); TOKA_SERVE(SaveDataFile);
  TOKA_SERVE(LoadObjectAsync);
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
