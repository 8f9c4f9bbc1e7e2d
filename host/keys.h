// The simulator's keyboard: its virtual keys and what a key press does.
#ifndef TOKA_HOST_KEYS_H
#define TOKA_HOST_KEYS_H

#include <string>
#include <vector>

namespace toka_host {

// The simulator's virtual keys, named as the plugins' key-name table names
// them, with the character a press of the key types (0 for none).
struct VirtualKey {
  std::string name;
  unsigned char code;
  char character;
};
const std::vector<VirtualKey>& VirtualKeys();
const VirtualKey* FindVirtualKey(const std::string& name);  // any case; null when unknown

// Modifier flags of a key press. A press is one call, with no down or up bit.
constexpr int kShiftFlag = 1, kAltFlag = 2, kControlFlag = 4;

// A key press as the simulator handles it: the plugins first, then, if they
// leave it, the simulator's own key map.
void PressKey(char character, int flags, unsigned char virtualKey);

}  // namespace toka_host

#endif
