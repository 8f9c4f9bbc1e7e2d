// A plugin that crashes the host in the way the word in the file "crash"
// beside it says; without that file it only starts. It is named after the
// word (signature test.crash.WORD):
//   reader         its flight loop reads test/crash/value through TOKAGetDataf
//   null-accessor  publishes test/crash/value, whose reader dereferences null
//   wild-pointer   hands TOKAGetVersions a pointer to nothing when enabled
//   abort          calls abort() when enabled
//   overflow       recurses without end when enabled
//   null-call      calls a null function pointer when enabled
//   thread         when enabled, waits for a thread of its own that
//                  dereferences null outside any dispatch
#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "self_path.h"
#include "toka/TOKA.h"

namespace {

std::string gRole;
void (*volatile gNothing)() = nullptr;

std::string ReadRole() {
  std::string file = SelfPath();
  file = file.substr(0, file.rfind('/') + 1) + "crash";
  char word[64] = "";
  if (FILE* in = std::fopen(file.c_str(), "r")) {
    if (std::fscanf(in, "%63s", word) != 1) word[0] = 0;
    std::fclose(in);
  }
  return word;
}

// The fault itself is the point: the sanitizer's null check would end the
// process before the fault did.
__attribute__((no_sanitize("undefined"))) int LoadFrom(volatile int* where) { return *where; }

float ReadNull(void*) { return (float)LoadFrom(nullptr); }

float ReadValue(float, float, int, void*) {
  std::printf("reader: %g\n", TOKAGetDataf(TOKAFindDataRef("test/crash/value")));
  return -1;
}

int Recurse(volatile int depth) {
  volatile char frame[256];
  frame[0] = (char)depth;
  return depth < 0 ? 0 : Recurse(depth + 1) + frame[0];
}

void* CrashOutsideDispatch(void*) {
  LoadFrom(nullptr);
  return nullptr;
}

}  // namespace

TOKA_PLUGIN_EXPORT int OrvanePluginStart(char* name, char* signature, char* description) {
  gRole = ReadRole();
  std::snprintf(name, 256, "%s", gRole.empty() ? "crashes" : gRole.c_str());
  std::snprintf(signature, 256, "test.crash.%s", gRole.c_str());
  std::strcpy(description, "Crashes the host as the file beside it says.");
  // The loader numbers plugins in the order it finds their folders.
  char line[128];
  std::snprintf(line, sizeof line, "crashes: %s is plugin %d\n", gRole.c_str(), TOKAGetMyID());
  TOKADebugString(line);
  if (gRole == "reader") TOKARegisterFlightLoopCallback(ReadValue, -1, nullptr);
  if (gRole == "null-accessor")
    TOKARegisterDataAccessor("test/crash/value", DataTypeFloat, 0, nullptr, nullptr, ReadNull, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr);
  return 1;
}

TOKA_PLUGIN_EXPORT int OrvanePluginEnable(void) {
  if (gRole == "wild-pointer") {
    int host, toka;
    TOKAGetVersions(&host, &toka, (int*)16);
  }
  if (gRole == "abort") std::abort();
  if (gRole == "overflow") Recurse(0);
  if (gRole == "null-call") gNothing();
  if (gRole == "thread") {
    pthread_t thread;
    if (pthread_create(&thread, nullptr, CrashOutsideDispatch, nullptr) == 0)
      pthread_join(thread, nullptr);
  }
  return 1;
}

TOKA_PLUGIN_EXPORT void OrvanePluginStop(void) {}
TOKA_PLUGIN_EXPORT void OrvanePluginDisable(void) {}
