// A thousand start-ups of every example and fixture plugin, each run for a
// few frames, reloaded and shut down: nothing may leak (the sanitizer build
// checks at exit) and the resident memory may not grow once warmed up.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "harness/harness.h"

using namespace toka_test;
namespace fs = std::filesystem;

#ifdef __SANITIZE_ADDRESS__
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

long ResidentKiB() {
  long pages = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// What the process holds. Under AddressSanitizer the resident memory also
// holds the sanitizer's own records, among them the stack trace of every
// allocation, which a plugin loaded at a new address makes new each cycle:
// there the heap in use is what the library and its plugins hold.
struct Memory {
  long resident = ResidentKiB();
#ifdef __SANITIZE_ADDRESS__
  long held = (long)(__sanitizer_get_current_allocated_bytes() / 1024);
#else
  long held = resident;
#endif
};

class Soak : public TokaTest {
protected:
  double now = 0;

  void Frames(int count) {
    for (int frame = 0; frame < count; ++frame) {
      now += 0.25;
      TOKAEventHook(0, (float)now, 0, 0);
      TOKADoDrawingHook(20, 0);
      TOKAKeyPressHook('a', 0, 'A');
      TOKAMouseClickHook(150, 650, frame & 1);
    }
  }
  // Loads, starts and enables everything, runs frames, reloads (disabling,
  // stopping and unloading all first), runs frames and shuts down.
  void Cycle() {
    Initialize();
    TOKAEventHook(3, 0, 0, 0);
    Frames(2);
    TOKAReloadPlugins();
    Frames(2);
    TOKAShutdownPlugins();
    host.ClearRecords();
    Events().clear();
  }
};

TEST_F(Soak, AThousandCyclesLeakNothingAndKeepTheirMemory) {
#if UINTPTR_MAX == 0xFFFFFFFFu
  GTEST_SKIP() << "the 64-bit builds soak: leak checks and memory figures come from them";
#endif
  tree.AddFolder("Resources/plugins");
  for (const auto& example : fs::directory_iterator(TOKA_EXAMPLES_DIR))
    fs::copy_file(example.path(), tree.plugins() + "/" + example.path().filename().string());
  // watch_aborts ends the process that loads it.
  std::istringstream fixtures(TOKA_FIXTURE_NAMES);
  for (std::string name; fixtures >> name;)
    if (name != "watch_aborts") tree.AddPlugin("Resources/plugins/" + name + "/lin.orv", name);
  AddAircraftPlugin("pilot");
  std::string root = tree.root();
  host.onCall[25] = [root](const HostCall& call) -> intptr_t {
    return std::strcpy(call.arg<char*>(0), root.c_str()), 0;
  };
  host.onFloatCall[14] = [this](const HostCall&) { return now; };

  Memory at100;
  for (int cycle = 1; cycle <= 1000; ++cycle) {
    Cycle();
    if (cycle == 100) at100 = Memory();
  }
  Memory at1000;
  std::printf("soak: resident memory after cycle 100: %ld KiB, after cycle 1000: %ld KiB\n",
              at100.resident, at1000.resident);
#ifdef __SANITIZE_ADDRESS__
  std::printf("soak: heap in use after cycle 100: %ld KiB, after cycle 1000: %ld KiB\n",
              at100.held, at1000.held);
#endif
  EXPECT_LE(std::labs(at1000.held - at100.held), 1024);
  EXPECT_EQ(0, TOKACountPlugins());
}

}  // namespace
