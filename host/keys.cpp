// The simulator's keyboard: its virtual keys, under the names plugins get
// from the library's key-name table, and what a key press does.
#include "host/keys.h"

#include <cctype>

#include "host/commands.h"
#include "host/library.h"

namespace toka_host {

namespace {

std::vector<VirtualKey> BuildKeys() {
  std::vector<VirtualKey> keys = {
      {"Backspace", 0x08, '\b'}, {"Tab", 0x09, '\t'},    {"Clear", 0x0C, 0},
      {"Return", 0x0D, '\r'},    {"Escape", 0x1B, 0x1B}, {"Space", 0x20, ' '},
      {"Page Up", 0x21, 0},      {"Page Down", 0x22, 0}, {"End", 0x23, 0},
      {"Home", 0x24, 0},         {"Left", 0x25, 0},      {"Up", 0x26, 0},
      {"Right", 0x27, 0},        {"Down", 0x28, 0},      {"Select", 0x29, 0},
      {"Print", 0x2A, 0},        {"Execute", 0x2B, 0},   {"Snapshot", 0x2C, 0},
      {"Insert", 0x2D, 0},       {"Delete", 0x2E, 0x7F}, {"Help", 0x2F, 0},
  };
  for (char c = '0'; c <= '9'; ++c) keys.push_back({std::string(1, c), (unsigned char)c, c});
  // Letters type in lower case; shift makes them capitals (PressKey).
  for (char c = 'A'; c <= 'Z'; ++c)
    keys.push_back({std::string(1, c), (unsigned char)c, (char)std::tolower(c)});
  for (int i = 0; i <= 9; ++i)
    keys.push_back({"Numpad-" + std::to_string(i), (unsigned char)(0x60 + i), (char)('0' + i)});
  keys.insert(keys.end(), {{"Numpad-*", 0x6A, '*'},
                           {"Numpad-+", 0x6B, '+'},
                           {"Numpad--", 0x6D, '-'},
                           {"Numpad-.", 0x6E, '.'},
                           {"Numpad-/", 0x6F, '/'}});
  for (int i = 1; i <= 24; ++i)
    keys.push_back({"F" + std::to_string(i), (unsigned char)(0x6F + i), 0});
  keys.insert(keys.end(), {{"=", 0xB0, '='},
                           {"-", 0xB1, '-'},
                           {"]", 0xB2, ']'},
                           {"[", 0xB3, '['},
                           {"'", 0xB4, '\''},
                           {";", 0xB5, ';'},
                           {"\\", 0xB6, '\\'},
                           {",", 0xB7, ','},
                           {"/", 0xB8, '/'},
                           {".", 0xB9, '.'},
                           {"`", 0xBA, '`'},
                           {"Enter", 0xBB, '\r'},
                           {"Numpad-Enter", 0xBC, '\r'},
                           {"Numpad-=", 0xBD, '='}});
  return keys;
}

bool SameIgnoringCase(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (std::tolower((unsigned char)a[i]) != std::tolower((unsigned char)b[i])) return false;
  return true;
}

}  // namespace

const std::vector<VirtualKey>& VirtualKeys() {
  static const std::vector<VirtualKey> keys = BuildKeys();
  return keys;
}

const VirtualKey* FindVirtualKey(const std::string& name) {
  for (const VirtualKey& key : VirtualKeys())
    if (SameIgnoringCase(key.name, name)) return &key;
  return nullptr;
}

void PressKey(char character, int flags, unsigned char virtualKey) {
  if (gLibrary.KeyPressHook && gLibrary.KeyPressHook(character, flags, (char)virtualKey) == 0)
    return;
  // The simulator's own key map: P pauses.
  if (virtualKey == 'P' && flags == 0)
    RunCommandOnce(FindHostCommand("sim/operation/pause_toggle"));
}

}  // namespace toka_host
