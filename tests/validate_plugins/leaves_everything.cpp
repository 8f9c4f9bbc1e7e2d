// Makes one thing of every kind a plugin can own and withdraws none of it,
// leaving everything to the library's clean-up; while disabled its loop
// stays scheduled, its window visible, its hot key and key sniffer there.
#include <cstring>

#include "toka/TOKA.h"

namespace {
int gShared = 0;
void DrawWindow(TOKAWindowID, void*) {}
void Key(TOKAWindowID, char, int, char, void*, int) {}
int Mouse(TOKAWindowID, int, int, int, void*) { return 1; }
int Draw(int, int, void*) { return 1; }
int Sniff(char, int, char, void*) { return 1; }
void Pressed(void*) {}
float Tick(float, float, int, void*) { return 1; }
int Handle(TOKACommandRef, int, void*) { return 1; }
int Read(void*) { return 1; }
void Changed(void*) {}
}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  std::strcpy(name, "Leaves everything");
  std::strcpy(signature, "toka.test.leaves-everything");
  std::strcpy(description, "Owns one of everything and never lets go.");
  TOKACreateWindow(0, 100, 100, 0, 1, DrawWindow, Key, Mouse, nullptr);
  TOKARegisterDrawCallback(Draw, 40, 0, nullptr);
  TOKARegisterKeySniffer(Sniff, 0, nullptr);
  TOKARegisterHotKey(0x76, 0, "", Pressed, nullptr);
  TOKARegisterFlightLoopCallback(Tick, 1, nullptr);
  TOKAMenuID menu = TOKACreateMenu("Leaves everything", nullptr, 0, nullptr, nullptr);
  TOKAAppendMenuItem(menu, "Item", nullptr, 1);
  TOKACommandRef command = TOKACreateCommand("toka/test/leaves_everything", "");
  TOKARegisterCommandHandler(command, Handle, 1, nullptr);
  TOKACommandBegin(command);
  TOKARegisterDataAccessor("toka/test/leaves_everything", DataTypeInt, 0, Read, nullptr, nullptr,
                           nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr, nullptr);
  TOKAShareData("toka/test/leaves_everything/shared", DataTypeInt, Changed, &gShared);
  TOKACreateProbe(TOKA_ProbeY);
  return 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable() { return 1; }
TOKA_PLUGIN_EXPORT void OrvanePluginDisable() {}
TOKA_PLUGIN_EXPORT void OrvanePluginStop() {}
