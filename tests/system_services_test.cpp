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
  std::string longText(10000, 'x');
  EXPECT_EQ(0, TOKA_dprintf("%s!", longText.c_str()));
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
  EXPECT_EQ(11020, host1);
  EXPECT_EQ(210, toka);
  EXPECT_EQ(105, host2);

  host.ClearRecords();
  toka = 0;
  TOKAGetVersions(nullptr, &toka, nullptr);
  TOKAGetVersions(nullptr, nullptr, nullptr);
  EXPECT_EQ(210, toka);
  EXPECT_EQ(2u, host.CountCalls(27));

  // The third output is written first and the library's version last.
  int shared = 0;
  TOKAGetVersions(&shared, nullptr, &shared);
  EXPECT_EQ(11020, shared);
  TOKAGetVersions(&shared, &shared, &shared);
  EXPECT_EQ(210, shared);
}

// The key names as plugin authors know them, built from their ranges.
std::map<int, std::string> KeyNames() {
  std::map<int, std::string> names = {
      {0x08, "Backspace"}, {0x09, "Tab"},       {0x0C, "Clear"},   {0x0D, "Return"},
      {0x1B, "Escape"},    {0x20, "Space"},     {0x21, "Page Up"}, {0x22, "Page Down"},
      {0x23, "End"},       {0x24, "Home"},      {0x25, "Left"},    {0x26, "Up"},
      {0x27, "Right"},     {0x28, "Down"},      {0x29, "Select"},  {0x2A, "Print"},
      {0x2B, "Execute"},   {0x2C, "Snapshot"},  {0x2D, "Insert"},  {0x2E, "Delete"},
      {0x2F, "Help"},      {0x6A, "Numpad-*"},  {0x6B, "Numpad-+"}, {0x6D, "Numpad--"},
      {0x6E, "Numpad-."},  {0x6F, "Numpad-/"},  {0xB0, "="},       {0xB1, "-"},
      {0xB2, "]"},         {0xB3, "["},         {0xB4, "'"},       {0xB5, ";"},
      {0xB6, "\\"},        {0xB7, ","},         {0xB8, "/"},       {0xB9, "."},
      {0xBA, "`"},         {0xBB, "Enter"},     {0xBC, "Numpad-Enter"}, {0xBD, "Numpad-="},
  };
  for (char c = '0'; c <= '9'; ++c) names[c] = std::string(1, c);
  for (char c = 'A'; c <= 'Z'; ++c) names[c] = std::string(1, c);
  for (int digit = 0; digit <= 9; ++digit) names[0x60 + digit] = "Numpad-" + std::to_string(digit);
  for (int f = 1; f <= 24; ++f) names[0x6F + f] = "F" + std::to_string(f);
  return names;
}

TEST(VirtualKeys, EveryCodeHasItsNameOrUnknown) {
  std::map<int, std::string> names = KeyNames();
  ASSERT_EQ(110u, names.size());
  for (int code = 0; code < 256; ++code) {
    auto found = names.find(code);
    const char* expected = found == names.end() ? "Unknown" : found->second.c_str();
    const char* name = TOKAGetVirtualKeyDescription((char)code);
    EXPECT_STREQ(expected, name) << std::hex << code;
    EXPECT_EQ(name, TOKAGetVirtualKeyDescription((char)code)) << "not static: " << code;
  }
}

}  // namespace
