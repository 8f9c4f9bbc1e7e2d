// toka-host: a headless stand-in for the simulator. It loads libtoka.so as
// the simulator does, hands it the host services of a small simulated world,
// runs a number of frames and shuts the plugins down, so that plugins can be
// run, watched and tested against a scenario without the simulator.
#include <cstdio>
#include <cstring>
#include <string>

#include "host/crash.h"
#include "host/library.h"
#include "host/live/probe.h"
#include "host/run.h"

namespace {

// From here on the crash report names the library's dispatched plugin.
void ReportCrashesOfPlugins() {
  toka_host::CrashReportLibrary library;
  library.GetMyID = toka_host::gLibrary.GetMyID;
  library.CountPlugins = toka_host::gLibrary.CountPlugins;
  library.GetPluginInfo = toka_host::gLibrary.GetPluginInfo;
  toka_host::InstallCrashReport("toka-host", library);
}

}  // namespace

int main(int argc, char** argv) {
  // --watch asks a child of its own whether a rebuilt plugin loads. The
  // child keeps the default crash handling: the host reports how it ended.
  if (toka_host::IsPluginProbe(argc, argv)) toka_host::ProbePlugin(argv[2], argv[4]);
  // Until the library is loaded a crash is the simulator's own.
  toka_host::InstallCrashReport("toka-host", toka_host::CrashReportLibrary());
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
  if (options.printFlightGearOptions) {
    std::string text;
    if (!toka_host::FlightGearOptionsText(text, error)) {
      std::fprintf(stderr, "toka-host: %s\n", error.c_str());
      return toka_host::kCannotRunStatus;
    }
    std::fputs(text.c_str(), stdout);
    return 0;
  }
  if (!toka_host::LoadScenario(options, error)) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return toka_host::kCannotRunStatus;
  }
  options.libraryLoaded = ReportCrashesOfPlugins;
  return toka_host::RunHost(options);
}
