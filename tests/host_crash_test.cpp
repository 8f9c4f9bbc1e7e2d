// toka-host's crash report: the built program run on plugins that crash it
// in different ways, its standard error read as a user would.
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "harness/host_program.h"
#include "harness/temp_tree.h"
#include "host/run.h"

using namespace toka_test;
using toka_host::kCrashStatus;

namespace {

const std::string kLibrary = TOKA_LIBRARY_FILE;
const std::string kEntry =
    "toka-host: last library entry point entered (the innermost call into the library still active "
    "when the signal came): ";
const std::string kElsewhere = "toka-host: the faulting code is not in the running plugin's file\n";

class CrashReport : public ::testing::Test {
protected:
  std::string plugin;  // the file of the last crasher

  // Runs the host on a fresh tree of the crashing fixture, in a folder of
  // its own playing each role, until it crashes.
  ProgramRun Crash(const std::vector<std::string>& roles) {
    TempTree tree;
    for (const std::string& role : roles) {
      tree.AddFile("Resources/plugins/" + role + "/crash", role);
      plugin = tree.AddPlugin("Resources/plugins/" + role + "/lin.orv", "crashes");
    }
    ProgramRun run = RunHost(tree.root(), "--render none --frames 3");
    EXPECT_EQ(kCrashStatus, run.status) << run.err;
    return run;
  }
  // "ID N \"role\" test.crash.role", N as the plugin logged it.
  static std::string Named(const ProgramRun& run, const std::string& role) {
    std::smatch id;
    std::regex logged("crashes: " + role + " is plugin (\\d+)\n");
    EXPECT_TRUE(std::regex_search(run.out, id, logged)) << run.out;
    return "ID " + id.str(1) + " \"" + role + "\" test.crash." + role;
  }
  // A frame of the backtrace lies in module; with first, the innermost one.
  static bool HasFrameIn(const std::string& err, const std::string& module, bool first = false) {
    size_t trace = err.find("toka-host: backtrace, innermost frame first:\n");
    std::string quoted = std::regex_replace(module, std::regex("[.+]"), "\\$&");
    std::string number = first ? "^[^\n]*\n  #0" : "\n  #\\d+";
    std::regex frame(number + " 0x[0-9a-f]+ " + quoted + " \\(");
    return trace != std::string::npos && std::regex_search(err.substr(trace), frame);
  }
};

}  // namespace

// Plugin A's flight loop reads B's dataref and B's reader dereferences null:
// B was running, in its own code, inside A's call to TOKAGetDataf.
TEST_F(CrashReport, ADatarefOwnersFaultIsTheOwnersInsideTheReadersCall) {
  ProgramRun run = Crash({"reader", "null-accessor"});
  const std::string& owner = plugin;
  ExpectInOrder(run.err, {"toka-host: crashed: SIGSEGV (invalid memory access) at address 0x0\n",
                          "toka-host: faulting code: " + owner + " (",
                          "toka-host: running plugin: " + Named(run, "null-accessor") + "\n",
                          "toka-host: running plugin's file: " + owner + "\n",
                          kEntry + "TOKAGetDataf\n",
                          "toka-host: backtrace, innermost frame first:\n"});
  EXPECT_EQ(std::string::npos, run.err.find(kElsewhere)) << run.err;
  EXPECT_EQ(std::string::npos, run.err.find("\"reader\"")) << run.err;
  EXPECT_TRUE(HasFrameIn(run.err, owner, true)) << run.err;
  EXPECT_TRUE(HasFrameIn(run.err, kLibrary)) << run.err;
  // The process ended there: no frame ran to its end, no plugin stopped.
  EXPECT_EQ(std::string::npos, run.out.find("reader: ")) << run.out;
}

// A fault outside the running plugin's file names both: a pointer to nothing
// the library writes through, and abort() in libc; outside any dispatch, the
// simulator is named.
TEST_F(CrashReport, FaultsOutsideTheRunningPluginNameBothModules) {
  ProgramRun run = Crash({"wild-pointer"});
  ExpectInOrder(run.err, {"toka-host: crashed: SIGSEGV (invalid memory access) at address 0x10\n",
                          "toka-host: faulting code: " + kLibrary + " (TOKAGetVersions+0x",
                          "toka-host: running plugin: " + Named(run, "wild-pointer") + "\n",
                          "toka-host: running plugin's file: " + plugin + "\n", kElsewhere,
                          kEntry + "TOKAGetVersions\n"});
  EXPECT_TRUE(HasFrameIn(run.err, kLibrary, true)) << run.err;
  EXPECT_TRUE(HasFrameIn(run.err, plugin)) << run.err;

  run = Crash({"abort"});
  ExpectInOrder(run.err, {"toka-host: crashed: SIGABRT (aborted, by abort() or a failed assertion)\n",
                          "toka-host: faulting code: ",
                          "toka-host: running plugin: " + Named(run, "abort") + "\n",
                          "toka-host: running plugin's file: " + plugin + "\n", kElsewhere,
                          kEntry + "TOKAEnablePlugin\n"});
  EXPECT_TRUE(HasFrameIn(run.err, plugin)) << run.err;

  // A thread of a plugin's own runs outside any dispatch: the simulator is
  // named, and its program is not where the fault is.
  run = Crash({"thread"});
  ExpectInOrder(run.err,
                {"toka-host: crashed: SIGSEGV (invalid memory access) at address 0x0\n",
                 "toka-host: faulting code: " + plugin + " (",
                 "toka-host: running: the simulator itself (plugin ID 0: no plugin's code was dispatched)\n"
                 "toka-host: the faulting code is not the simulator's own (" TOKA_HOST_BINARY ")\n" +
                     kEntry + "none\n"});
  EXPECT_TRUE(HasFrameIn(run.err, plugin)) << run.err;
}

// States the unwinder cannot start from by itself: a stack overflow, seen
// from the handler's own stack, and a call to no code, followed back to
// its caller.
TEST_F(CrashReport, OverflowsAndCallsToNothingAreFollowed) {
  ProgramRun run = Crash({"overflow"});
  ExpectInOrder(run.err, {"toka-host: crashed: SIGSEGV (invalid memory access) at address 0x",
                          "toka-host: faulting code: " + plugin + " (",
                          "toka-host: running plugin: " + Named(run, "overflow") + "\n",
                          kEntry + "none in the innermost 64 frames\n"});
  EXPECT_TRUE(HasFrameIn(run.err, plugin, true)) << run.err;

  run = Crash({"null-call"});
  ExpectInOrder(run.err, {"toka-host: crashed: SIGSEGV (invalid memory access) at address 0x0\n"
                          "toka-host: faulting code: 0x0, in no loaded module, called from " +
                              plugin + " (OrvanePluginEnable+0x",
                          "toka-host: running plugin: " + Named(run, "null-call") + "\n",
                          kEntry + "TOKAEnablePlugin\n",
                          "toka-host: backtrace, innermost frame first:\n  #0 0x0 no loaded module\n  #1 0x"});
  EXPECT_TRUE(HasFrameIn(run.err, plugin)) << run.err;
  EXPECT_TRUE(HasFrameIn(run.err, kLibrary)) << run.err;
}
