// toka-host: a headless stand-in for the simulator. It loads libtoka.so as
// the simulator does, hands it the host services of a small simulated world,
// runs a number of frames and shuts the plugins down, so that plugins can be
// run, watched and tested against a scenario without the simulator.
#include <cstdio>
#include <cstring>
#include <string>

#include "host/live/probe.h"
#include "host/run.h"

int main(int argc, char** argv) {
  // --watch asks a child of its own whether a rebuilt plugin loads.
  if (toka_host::IsPluginProbe(argc, argv)) toka_host::ProbePlugin(argv[2], argv[4]);
  for (int i = 1; i < argc; ++i)
    if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h")) {
      std::fputs(toka_host::HostUsage().c_str(), stdout);
      return 0;
    }
  toka_host::HostOptions options;
  std::string error;
  if (!toka_host::ParseHostOptions(argc, argv, options, error)) {
    std::fprintf(stderr, "toka-host: %s\n\n%s", error.c_str(), toka_host::HostUsage().c_str());
    return toka_host::kCannotRunStatus;
  }
  if (!toka_host::LoadScenario(options, error)) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return toka_host::kCannotRunStatus;
  }
  return toka_host::RunHost(options);
}
