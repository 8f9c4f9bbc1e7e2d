// Versions, formatted debug output and the names of virtual keys.
#include "harness/harness.h"

#include <map>

using namespace toka_test;

namespace {

class SystemServices : public TokaTest {};

TEST_F(SystemServices, FormattedOutputWaitsForTheHostAndIsCutToItsBuffer) {
  EXPECT_EQ(0, TOKAInitialized());
  EXPECT_EQ(0, TOKA_dprintf("early %d\n", 1));
  EXPECT_TRUE(host.calls.empty());

  Initialize();
  EXPECT_EQ(1, TOKAInitialized());
  host.ClearRecords();
  EXPECT_EQ(0, TOKA_dprintf("%s=%d;%.2f\n", "alt", 4500, 1.5));
  EXPECT_EQ("alt=4500;1.50\n", host.log);
  EXPECT_EQ(1u, host.CountCalls(29));
  host.ClearRecords();
  EXPECT_EQ(0, TOKA_dprintf("%s!", std::string(10000, 'x').c_str()));
  EXPECT_EQ(std::string(8191, 'x'), host.log);
}

TEST_F(SystemServices, VersionsPlaceTheHostsNumbersAroundTheLibrarysOwn) {
  Initialize();
  host.onCall[27] = [](const HostCall& call) -> intptr_t {
    *call.arg<int*>(0) = 11020;
    *call.arg<int*>(1) = 105;
    return 0;
  };
  int host1 = 0, toka = 0, host2 = 0;
  TOKAGetVersions(&host1, &toka, &host2);
  EXPECT_EQ((std::vector<int>{11020, 210, 105}), (std::vector<int>{host1, toka, host2}));
  // Every output is optional.
  toka = 0;
  TOKAGetVersions(nullptr, &toka, nullptr);
  TOKAGetVersions(nullptr, nullptr, nullptr);
  EXPECT_EQ(210, toka);
}

TEST(VirtualKeys, EveryCodeHasItsNameOrUnknown) {
  // The names as plugin authors know them, built from their ranges.
  std::map<int, std::string> names;
  const char* singles[] = {"Backspace", "Tab", "Clear", "Return", "Escape", "Space", "Page Up",
                           "Page Down", "End", "Home", "Left", "Up", "Right", "Down", "Select",
                           "Print", "Execute", "Snapshot", "Insert", "Delete", "Help"};
  const int singleCodes[] = {0x08, 0x09, 0x0C, 0x0D, 0x1B, 0x20, 0x21, 0x22, 0x23, 0x24, 0x25,
                             0x26, 0x27, 0x28, 0x29, 0x2A, 0x2B, 0x2C, 0x2D, 0x2E, 0x2F};
  for (int i = 0; i < 21; ++i) names[singleCodes[i]] = singles[i];
  for (char c = '0'; c <= '9'; ++c) names[c] = std::string(1, c);
  for (char c = 'A'; c <= 'Z'; ++c) names[c] = std::string(1, c);
  for (int digit = 0; digit <= 9; ++digit) names[0x60 + digit] = "Numpad-" + std::to_string(digit);
  for (int code : {0x6A, 0x6B, 0x6D, 0x6E, 0x6F})
    names[code] = std::string("Numpad-") + "*+?-./"[code - 0x6A];
  for (int f = 1; f <= 24; ++f) names[0x6F + f] = "F" + std::to_string(f);
  const char* symbols[] = {"=", "-", "]", "[", "'", ";", "\\", ",", "/", ".", "`",
                           "Enter", "Numpad-Enter", "Numpad-="};
  for (int i = 0; i < 14; ++i) names[0xB0 + i] = symbols[i];
  ASSERT_EQ(110u, names.size());

  for (int code = 0; code < 256; ++code) {
    auto found = names.find(code);
    const char* name = TOKAGetVirtualKeyDescription((char)code);
    EXPECT_STREQ(found == names.end() ? "Unknown" : found->second.c_str(), name)
        << std::hex << code;
    EXPECT_EQ(name, TOKAGetVirtualKeyDescription((char)code)) << "not static: " << code;
  }
}

}  // namespace
