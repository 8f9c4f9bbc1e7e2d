// The report a program that runs plugins prints when it crashes: which
// plugin's code was running, which module holds the faulting instruction,
// the last call into the library still active, and a backtrace.
#ifndef TOKA_HOST_CRASH_H
#define TOKA_HOST_CRASH_H

namespace toka_host {

// The library's functions the report asks who was running. A program that
// loads libtoka.so passes the ones it resolved; one that links the
// library's objects into itself passes its own. Any may be null (no library
// yet): the simulator is then taken to be running.
struct CrashReportLibrary {
  int (*GetMyID)() = nullptr;
  int (*CountPlugins)() = nullptr;
  void (*GetPluginInfo)(int, char*, char*, char*, char*) = nullptr;
};

// Handles SIGSEGV, SIGBUS, SIGFPE, SIGILL and SIGABRT on a stack of their
// own (so that a stack overflow is reported too): the report goes to
// standard error, every line starting with "program: ", and the process
// ends with kCrashStatus, or, with endBySignal, by the signal itself (for a
// parent that reads how its child ended). Installs once; a later call only
// changes the library the report asks.
void InstallCrashReport(const char* program, const CrashReportLibrary& library,
                        bool endBySignal = false);

}  // namespace toka_host

#endif
