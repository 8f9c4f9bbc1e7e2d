// Key names, versions, language, debug output and other small services of
// the host.
//
// The exported one-argument TOKAFindSymbol lives here, in a file that does
// not see the loader's two-argument TOKAFindSymbol (a module handle and a
// name) of loader/platform.h: the two are unrelated functions.
#include <cstdarg>
#include <cstdio>

#include "loader/host_interface.h"
#include "loader/survey.h"
#include "toka/TOKAUtilities.h"

// This library's own version, as plugins read it from TOKAGetVersions.
static const int kTokaVersion = 210;

// TOKA_dprintf formats into this one buffer; it is not reentrant.
static char gDebugText[8192];

struct VirtualKeyName {
  unsigned char code;
  const char* name;
};

// Searched from the top; codes missing here are "Unknown".
static const VirtualKeyName gVirtualKeyNames[] = {
    {0x08, "Backspace"}, {0x09, "Tab"},      {0x0C, "Clear"},      {0x0D, "Return"},
    {0x1B, "Escape"},    {0x20, "Space"},    {0x21, "Page Up"},    {0x22, "Page Down"},
    {0x23, "End"},       {0x24, "Home"},     {0x25, "Left"},       {0x26, "Up"},
    {0x27, "Right"},     {0x28, "Down"},     {0x29, "Select"},     {0x2A, "Print"},
    {0x2B, "Execute"},   {0x2C, "Snapshot"}, {0x2D, "Insert"},     {0x2E, "Delete"},
    {0x2F, "Help"},

    {0x30, "0"}, {0x31, "1"}, {0x32, "2"}, {0x33, "3"}, {0x34, "4"},
    {0x35, "5"}, {0x36, "6"}, {0x37, "7"}, {0x38, "8"}, {0x39, "9"},

    {0x41, "A"}, {0x42, "B"}, {0x43, "C"}, {0x44, "D"}, {0x45, "E"}, {0x46, "F"}, {0x47, "G"},
    {0x48, "H"}, {0x49, "I"}, {0x4A, "J"}, {0x4B, "K"}, {0x4C, "L"}, {0x4D, "M"}, {0x4E, "N"},
    {0x4F, "O"}, {0x50, "P"}, {0x51, "Q"}, {0x52, "R"}, {0x53, "S"}, {0x54, "T"}, {0x55, "U"},
    {0x56, "V"}, {0x57, "W"}, {0x58, "X"}, {0x59, "Y"}, {0x5A, "Z"},

    {0x60, "Numpad-0"}, {0x61, "Numpad-1"}, {0x62, "Numpad-2"}, {0x63, "Numpad-3"},
    {0x64, "Numpad-4"}, {0x65, "Numpad-5"}, {0x66, "Numpad-6"}, {0x67, "Numpad-7"},
    {0x68, "Numpad-8"}, {0x69, "Numpad-9"}, {0x6A, "Numpad-*"}, {0x6B, "Numpad-+"},
    {0x6D, "Numpad--"}, {0x6E, "Numpad-."}, {0x6F, "Numpad-/"},

    {0x70, "F1"},  {0x71, "F2"},  {0x72, "F3"},  {0x73, "F4"},  {0x74, "F5"},  {0x75, "F6"},
    {0x76, "F7"},  {0x77, "F8"},  {0x78, "F9"},  {0x79, "F10"}, {0x7A, "F11"}, {0x7B, "F12"},
    {0x7C, "F13"}, {0x7D, "F14"}, {0x7E, "F15"}, {0x7F, "F16"}, {0x80, "F17"}, {0x81, "F18"},
    {0x82, "F19"}, {0x83, "F20"}, {0x84, "F21"}, {0x85, "F22"}, {0x86, "F23"}, {0x87, "F24"},

    {0xB0, "="},     {0xB1, "-"},     {0xB2, "]"},     {0xB3, "["},     {0xB4, "'"},
    {0xB5, ";"},     {0xB6, "\\"},    {0xB7, ","},     {0xB8, "/"},     {0xB9, "."},
    {0xBA, "`"},     {0xBB, "Enter"}, {0xBC, "Numpad-Enter"},           {0xBD, "Numpad-="},
};

TOKA_API const char* TOKAGetVirtualKeyDescription(char virtualKey) {
  TOKA_NOTE_CALL();
  // Codes above 0x7F arrive as negative chars.
  const unsigned char code = (unsigned char)virtualKey;
  for (const VirtualKeyName& row : gVirtualKeyNames)
    if (row.code == code) return row.name;
  return "Unknown";
}

TOKA_API void TOKAGetVersions(int* outHostVersion, int* outTokaVersion, int* outHostSecond) {
  TOKA_NOTE_CALL();
  int hostVersion = 0, hostSecond = 0;
  gHostServices->GetVersions(&hostVersion, &hostSecond);
  if (outHostSecond) *outHostSecond = hostSecond;
  if (outHostVersion) *outHostVersion = hostVersion;
  if (outTokaVersion) *outTokaVersion = kTokaVersion;
}

TOKA_API int TOKAGetLanguage(void) {
  TOKA_NOTE_CALL();
  return gHostServices->GetLanguage();
}

TOKA_API void TOKADebugString(const char* text) {
  TOKA_NOTE_CALL();
  gHostServices->DebugString(text);
}

TOKA_API int TOKA_dprintf(const char* format, ...) {
  TOKA_NOTE_CALL();
  va_list args;
  va_start(args, format);
  std::vsnprintf(gDebugText, sizeof gDebugText, format, args);
  va_end(args);
  // Plugins may print from their static constructors, before the host has
  // handed over its table: that output has nowhere to go.
  if (gHostServices) gHostServices->DebugString(gDebugText);
  return 0;
}

TOKA_API void TOKASpeakString(const char* text) {
  TOKA_NOTE_CALL();
  gHostServices->SpeakString(text);
}

TOKA_API void TOKASimulateKeyPress(int keyType, int key) {
  TOKA_NOTE_CALL();
  gHostServices->SimulateKeyPress(keyType, key);
}

TOKA_API void TOKAReloadScenery(void) {
  TOKA_NOTE_CALL();
  gHostServices->ReloadScenery();
}

TOKA_API int TOKAInitialized(void) {
  TOKA_NOTE_CALL();
  return gHostServices != nullptr ? 1 : 0;
}

TOKA_API void* TOKAFindSymbol(const char* symbolName) {
  TOKA_NOTE_CALL();
  return gHostServices->FindSymbol(symbolName);
}
