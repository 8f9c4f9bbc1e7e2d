// Graphics and navigation services go straight to the host: each reaches its
// slot with the caller's argument words unchanged (doubles as both their
// words, pointers as they were).
#include "harness/harness.h"


using namespace toka_test;

namespace {

struct Forwarder {
  std::string name;
  int slot;
  std::vector<HostWord> words;  // what the slot must receive
  std::function<void()> call;
};

template <class T>
struct Same {
  using type = T;
};

template <class R, class... P>
Forwarder Row(const char* name, int slot, R (*fn)(P...), typename Same<P>::type... args) {
  Forwarder row{name, slot, {}, [=] { fn(args...); }};
  (PushWords(row.words, args), ...);
  return row;
}

template <class T>
T* Fake(uintptr_t address) { return reinterpret_cast<T*>(address); }

// Values a float or double cannot carry the other way: any narrowing shows.
const double kLat = 51.47792812345678, kLon = -0.00153987654321, kAlt = 4512.000000123;

std::vector<Forwarder> Forwarders() {
  return {
      Row("TOKASetGraphicsState", 4, TOKASetGraphicsState, 1, 2, 0, 4, 5, 0, 7),
      Row("TOKABindTexture2d", 5, TOKABindTexture2d, 811, 3),
      Row("TOKAWorldToLocal", 8, TOKAWorldToLocal, kLat, kLon, kAlt, Fake<double>(0x2000),
          Fake<double>(0x2008), Fake<double>(0x2010)),
      Row("TOKALocalToWorld", 9, TOKALocalToWorld, -kAlt, kLat * 3, kLon, Fake<double>(0x2100),
          Fake<double>(0x2108), Fake<double>(0x2110)),
      Row("TOKADrawTranslucentDarkBox", 10, TOKADrawTranslucentDarkBox, 10, 400, 300, -20),
      Row("TOKADrawString", 11, TOKADrawString, Fake<float>(0x3000), 15, 25, "Hello",
          Fake<int>(0x3010), 18),
      Row("TOKADrawNumber", 12, TOKADrawNumber, Fake<float>(0x3100), -5, 60, kLat, 6, 3, 1, 2),
      Row("TOKAMeasureString", 62, TOKAMeasureString, 18, "Width", 4),
      Row("TOKAFindFirstNavAidOfType", 38, TOKAFindFirstNavAidOfType, 8),
      Row("TOKAFindLastNavAidOfType", 39, TOKAFindLastNavAidOfType, 16),
      Row("TOKAFindNavAid", 40, TOKAFindNavAid, "Heath", "LHR", Fake<float>(0x4000),
          Fake<float>(0x4004), Fake<int>(0x4008), 4),
      Row("TOKAGetDisplayedFMSEntry", 43, TOKAGetDisplayedFMSEntry),
      Row("TOKAGetDestinationFMSEntry", 44, TOKAGetDestinationFMSEntry),
      Row("TOKASetDisplayedFMSEntry", 45, TOKASetDisplayedFMSEntry, 3),
      Row("TOKASetDestinationFMSEntry", 46, TOKASetDestinationFMSEntry, 5),
      Row("TOKAGetFMSEntryInfo", 47, TOKAGetFMSEntryInfo, 7, Fake<int>(0x5000),
          Fake<char>(0x5004), Fake<TOKANavRef>(0x5040), Fake<int>(0x5044), Fake<float>(0x5048),
          Fake<float>(0x504C)),
      Row("TOKASetFMSEntryLatLon", 49, TOKASetFMSEntryLatLon, 9, 47.4647f, -122.3088f, 12000),
      Row("TOKAGenerateTextureNumbers", 6, TOKAGenerateTextureNumbers, Fake<int>(0x6000), 3),
      Row("TOKAGetTexture", 7, TOKAGetTexture, 17),
      Row("TOKAGetFontDimensions", 13, TOKAGetFontDimensions, 18, Fake<int>(0x6100),
          Fake<int>(0x6104), Fake<int>(0x6108)),
      Row("TOKAGetFirstNavAid", 36, TOKAGetFirstNavAid),
      Row("TOKAGetNextNavAid", 37, TOKAGetNextNavAid, 0x6200),
      Row("TOKAGetNavAidInfo", 41, TOKAGetNavAidInfo, 0x6300, Fake<int>(0x6304),
          Fake<float>(0x6308), Fake<float>(0x630C), Fake<float>(0x6310), Fake<int>(0x6314),
          Fake<float>(0x6318), Fake<char>(0x6320), Fake<char>(0x6340), Fake<char>(0x6380)),
      Row("TOKACountFMSEntries", 42, TOKACountFMSEntries),
      Row("TOKASetFMSEntryInfo", 48, TOKASetFMSEntryInfo, 11, 0x6400, 9000),
      Row("TOKAClearFMSEntry", 50, TOKAClearFMSEntry, 13),
      Row("TOKAGetGPSDestinationType", 51, TOKAGetGPSDestinationType),
      Row("TOKAGetGPSDestination", 52, TOKAGetGPSDestination),
  };
}

TEST(Forwarding, EachServiceReachesItsSlotWithItsArgumentsUnchanged) {
  TempTree tree;
  TOKAInitializePlugins(tree.root().c_str(), HostTable(), 0);
  FakeHost& host = FakeHost::Get();
  for (const Forwarder& row : Forwarders()) {
    host.ClearRecords();
    row.call();
    ASSERT_EQ(1u, host.calls.size()) << row.name;
    EXPECT_EQ(row.slot, host.calls[0].slot) << row.name;
    EXPECT_EQ(row.words, host.calls[0].words) << row.name;
  }
}

}  // namespace
