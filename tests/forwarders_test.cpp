// Every service that goes straight to the host reaches its slot with the
// caller's argument words unchanged (doubles as both their words, pointers as
// they were) and hands the host's result back unchanged.
#include "harness/harness.h"

#include <cstring>
#include <fstream>
#include <set>
#include <type_traits>

using namespace toka_test;

namespace {

// The host answers every call to slot s with this value, or kWidth for the
// one float service.
uint32_t Answer(int slot) { return 0x5EED0000u + (uint32_t)slot * 0x101u; }
const float kWidth = 123.456f;

struct Forwarder {
  std::string name;
  int slot;
  std::vector<HostWord> words;     // what the slot must receive
  bool hasResult;
  std::function<uint32_t()> call;  // the result's bits
};

template <class T>
struct Same {
  using type = T;
};

template <class R, class... P>
Forwarder Row(const char* name, int slot, R (*fn)(P...), typename Same<P>::type... args) {
  Forwarder row{name, slot, {}, !std::is_void_v<R>, nullptr};
  (PushWords(row.words, args), ...);
  row.call = [=]() -> uint32_t {
    uint32_t bits = 0;
    if constexpr (std::is_void_v<R>) fn(args...);
    else {
      R result = fn(args...);
      std::memcpy(&bits, &result, 4);
    }
    return bits;
  };
  return row;
}

// The same when the slot receives other words than the caller passed.
Forwarder Words(Forwarder row, std::vector<HostWord> words) {
  row.words = std::move(words);
  return row;
}

template <class T>
T* Fake(uintptr_t address) { return reinterpret_cast<T*>(address); }

// Values a float or double cannot carry the other way: any narrowing shows.
const double kLat = 51.47792812345678, kLon = -0.00153987654321, kAlt = 4512.000000123;

char gPathBuffer[512] = "Orvane/";

std::vector<Forwarder> Forwarders() {
  return {
      Row("TOKASetGraphicsState", 4, TOKASetGraphicsState, 1, 2, 0, 4, 5, 0, 7),
      Row("TOKABindTexture2d", 5, TOKABindTexture2d, 811, 3),
      Row("TOKAGenerateTextureNumbers", 6, TOKAGenerateTextureNumbers, Fake<int>(0x1000), 12),
      Row("TOKAGetTexture", 7, TOKAGetTexture, 9),
      Row("TOKAWorldToLocal", 8, TOKAWorldToLocal, kLat, kLon, kAlt, Fake<double>(0x2000),
          Fake<double>(0x2008), Fake<double>(0x2010)),
      Row("TOKALocalToWorld", 9, TOKALocalToWorld, -kAlt, kLat * 3, kLon, Fake<double>(0x2100),
          Fake<double>(0x2108), Fake<double>(0x2110)),
      Row("TOKADrawTranslucentDarkBox", 10, TOKADrawTranslucentDarkBox, 10, 400, 300, -20),
      Row("TOKADrawString", 11, TOKADrawString, Fake<float>(0x3000), 15, 25, "Hello",
          Fake<int>(0x3010), 18),
      Row("TOKADrawNumber", 12, TOKADrawNumber, Fake<float>(0x3100), -5, 60, kLat, 6, 3, 1, 2),
      Row("TOKAGetFontDimensions", 13, TOKAGetFontDimensions, 18, Fake<int>(0x3200),
          Fake<int>(0x3204), Fake<int>(0x3208)),
      Row("TOKAMeasureString", 62, TOKAMeasureString, 18, "Width", 4),

      Row("TOKAGetFirstNavAid", 36, TOKAGetFirstNavAid),
      Row("TOKAGetNextNavAid", 37, TOKAGetNextNavAid, 4001),
      Row("TOKAFindFirstNavAidOfType", 38, TOKAFindFirstNavAidOfType, 8),
      Row("TOKAFindLastNavAidOfType", 39, TOKAFindLastNavAidOfType, 16),
      Row("TOKAFindNavAid", 40, TOKAFindNavAid, "Heath", "LHR", Fake<float>(0x4000),
          Fake<float>(0x4004), Fake<int>(0x4008), 4),
      Row("TOKAGetNavAidInfo", 41, TOKAGetNavAidInfo, 4002, Fake<int>(0x4100),
          Fake<float>(0x4104), Fake<float>(0x4108), Fake<float>(0x410C), Fake<int>(0x4110),
          Fake<float>(0x4114), Fake<char>(0x4118), Fake<char>(0x4200), Fake<char>(0x4300)),
      Row("TOKACountFMSEntries", 42, TOKACountFMSEntries),
      Row("TOKAGetDisplayedFMSEntry", 43, TOKAGetDisplayedFMSEntry),
      Row("TOKAGetDestinationFMSEntry", 44, TOKAGetDestinationFMSEntry),
      Row("TOKASetDisplayedFMSEntry", 45, TOKASetDisplayedFMSEntry, 3),
      Row("TOKASetDestinationFMSEntry", 46, TOKASetDestinationFMSEntry, 5),
      Row("TOKAGetFMSEntryInfo", 47, TOKAGetFMSEntryInfo, 7, Fake<int>(0x5000),
          Fake<char>(0x5004), Fake<TOKANavRef>(0x5040), Fake<int>(0x5044), Fake<float>(0x5048),
          Fake<float>(0x504C)),
      Row("TOKASetFMSEntryInfo", 48, TOKASetFMSEntryInfo, 8, 4003, 3500),
      Row("TOKASetFMSEntryLatLon", 49, TOKASetFMSEntryLatLon, 9, 47.4647f, -122.3088f, 12000),
      Row("TOKAClearFMSEntry", 50, TOKAClearFMSEntry, 11),
      Row("TOKAGetGPSDestinationType", 51, TOKAGetGPSDestinationType),
      Row("TOKAGetGPSDestination", 52, TOKAGetGPSDestination),

      Row("TOKAGetScreenSize", 2, TOKAGetScreenSize, Fake<int>(0x6000), Fake<int>(0x6004)),
      // 1 tells the host that a plugin is asking (the library's own drag
      // polls pass 0).
      Words(Row("TOKAGetMouseLocation", 3, TOKAGetMouseLocation, Fake<int>(0x6008),
                Fake<int>(0x600C)),
            {0x6008, 0x600C, 1}),
      Words(Row("TOKAReadCameraPosition", 15, TOKAReadCameraPosition,
                Fake<TOKACameraPosition_t>(0x7000)),
            {0x7000, 0x7004, 0x7008, 0x700C, 0x7010, 0x7014, 0x7018}),
      // The simulator holds the other aircraft, so it may draw them.
      Row("TOKADrawAircraft", 16, TOKADrawAircraft, 1, 1.5f, 2.0f, 3.0f, 4.0f, 5.0f, 6.25f, 1,
          Fake<void>(0x1234)),
      Row("TOKAPlaceUserAtAirport", 20, TOKAPlaceUserAtAirport, "KSEA"),
      Row("TOKASimulateKeyPress", 21, TOKASimulateKeyPress, 2, 0x41),
      Row("TOKASpeakString", 22, TOKASpeakString, "Gear down"),
      Row("TOKACommandKeyStroke", 23, TOKACommandKeyStroke, 77),
      Row("TOKAGetSystemPath", 25, TOKAGetSystemPath, gPathBuffer),
      Row("TOKAGetPrefsPath", 26, TOKAGetPrefsPath, gPathBuffer),
      Row("TOKAGetLanguage", 28, TOKAGetLanguage),
      Row("TOKADebugString", 29, TOKADebugString, "note\n"),
      Words(Row("TOKAReinitUsersPlane", 34, TOKAReinitUsersPlane), {208, 201}),
      Row("TOKAReloadScenery", 35, TOKAReloadScenery),
      Row("TOKAFindSymbol", 61, TOKAFindSymbol, "HostFunction"),
      Row("TOKALookupObjects", 67, TOKALookupObjects, "lib/tree.obj", 47.5f, -122.25f,
          (TOKAObjectLibraryEnumerator_f)0x8000, Fake<void>(0x8100)),
      Row("TOKALoadDataFile", 68, TOKALoadDataFile, 1, "Output/flight.fdr"),
      Row("TOKALoadDataFile", 68, TOKALoadDataFile, 2, nullptr),  // no path check when loading
      Row("TOKASaveDataFile", 69, TOKASaveDataFile, 2, "Output/situation.sit"),
  };
}

TEST(Forwarding, EachServiceReachesItsSlotWithItsArgumentsAndReturnsTheHostsResult) {
  TempTree tree;
  TOKAInitializePlugins(tree.root().c_str(), HostTable(), 0);
  ASSERT_EQ(1, TOKAAcquirePlanes(nullptr, nullptr, nullptr));
  FakeHost& host = FakeHost::Get();
  std::vector<Forwarder> rows = Forwarders();
  for (const Forwarder& row : rows)
    host.onCall[row.slot] = [](const HostCall& call) -> intptr_t { return Answer(call.slot); };
  host.onFloatCall[62] = [](const HostCall&) -> double { return kWidth; };

  for (const Forwarder& row : rows) {
    host.ClearRecords();
    uint32_t result = row.call();
    ASSERT_EQ(1u, host.calls.size()) << row.name;
    EXPECT_EQ(row.slot, host.calls[0].slot) << row.name;
    EXPECT_EQ(row.words, host.calls[0].words) << row.name;
    uint32_t expected = Answer(row.slot);
    if (row.slot == 62) std::memcpy(&expected, &kWidth, 4);
    EXPECT_EQ(row.hasResult ? expected : 0u, result) << row.name;
  }
  EXPECT_STREQ("Orvane/", gPathBuffer);  // the paths were converted in place, unchanged

  // No graphics or navigation service is left out of the table.
  std::set<std::string> covered;
  for (const Forwarder& row : rows) covered.insert(row.name);
  std::ifstream in(TOKA_EXPORTS_LIST);
  bool inside = false;
  int names = 0;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line[0] == '#') inside = line == "# Graphics" || line == "# Navigation";
    else if (inside && !line.empty()) {
      EXPECT_TRUE(covered.count(line)) << line;
      ++names;
    }
  }
  EXPECT_EQ(11 + 17, names);
}

}  // namespace
