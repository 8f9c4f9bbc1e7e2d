// Whether a plugin file loads, found out in a child process: a broken build
// loaded into the host itself could end it (a static constructor that
// crashes) before the host had said why.
#ifndef TOKA_HOST_LIVE_PROBE_H
#define TOKA_HOST_LIVE_PROBE_H

#include <string>

namespace toka_host {

// The child's hidden command line: toka-host --probe-plugin FILE --library LIB.
bool IsPluginProbe(int argc, char** argv);
// The child: loads the library as the host does, then the file as the
// library would, and exits with the answer as its last line of output.
[[noreturn]] void ProbePlugin(const std::string& file, const std::string& library);

enum class PluginFile {
  kLoads,       // or the child could not tell: the library's reload has the last word
  kDoesNotLoad, // the library turns it away and goes on
  kEndsTheHost, // loading it ended the child or never finished: so would the library's
};

// Runs this same program as the child on file. With the reason, as a plugin
// author reads it, when the file does not load ("no start entry
// OrvanePluginStart", the dynamic loader's text for an undefined symbol,
// "loading it crashed (Segmentation fault)", "loading it ended the process
// (exit status 1)").
PluginFile ProbePluginFile(const std::string& file, const std::string& library, std::string& reason);

}  // namespace toka_host

#endif
