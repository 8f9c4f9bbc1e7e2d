// Loading: start-up with 100 plugins in the plugin folder, from
// TOKAInitializePlugins until all are enabled, then TOKAShutdownPlugins;
// against opening the same 100 files with dlopen, looking up the five entry
// points with dlsym and closing them again. Both open the files as plugins
// must be opened, with their symbols global (RTLD_GLOBAL), which makes the
// dynamic loader's own work grow with the number of plugins open.
#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "bench_table.h"

using namespace toka_bench;

namespace {

const int kPlugins = 100;
std::string gRoot;
std::vector<std::string> gFiles;

void CopyFile(const std::string& from, const std::string& to) {
  std::ifstream in(from, std::ios::binary);
  std::ofstream out(to, std::ios::binary);
  out << in.rdbuf();
}

void MakeRoot() {
  char folder[] = "/tmp/toka-bench-XXXXXX";
  gRoot = std::string(mkdtemp(folder)) + "/";
  std::string plugins = gRoot + "Resources/plugins/";
  std::system(("mkdir -p '" + plugins + "'").c_str());
  for (int i = 0; i < kPlugins; ++i) {
    gFiles.push_back(plugins + "p" + std::to_string(1000 + i) + ".orv");
    CopyFile(TOKA_BENCH_PLUGIN, gFiles.back());
  }
}

void StartUp(benchmark::State& state) {
  for (auto _ : state) {
    TOKAInitializePlugins(gRoot.c_str(), NoopHost(), 0);
    TOKAShutdownPlugins();
  }
}

void DlopenDlsym(benchmark::State& state) {
  const char* entries[] = {"OrvanePluginStart", "OrvanePluginStop", "OrvanePluginEnable",
                           "OrvanePluginDisable", "OrvanePluginReceiveMessage"};
  std::vector<void*> modules(gFiles.size());
  for (auto _ : state) {
    for (size_t i = 0; i < gFiles.size(); ++i) {
      modules[i] = dlopen(gFiles[i].c_str(), RTLD_NOW | RTLD_GLOBAL);
      for (const char* entry : entries) benchmark::DoNotOptimize(dlsym(modules[i], entry));
    }
    for (void* module : modules) dlclose(module);
  }
}

}  // namespace

BENCHMARK(StartUp)->Unit(benchmark::kMicrosecond);
BENCHMARK(DlopenDlsym)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
  MakeRoot();
  int failing = RunAndPrintTable(argc, argv, {
      {"start-up to all enabled, vs dlopen + dlsym", "100 plugins", "StartUp", "DlopenDlsym", 1.2},
  });
  std::system(("rm -rf '" + gRoot + "'").c_str());
  return failing;
}
