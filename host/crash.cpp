// The crash report. The handler runs when the heap, stdio's locks or the
// stack itself may be broken: the text is formed by hand in buffers of its
// own and written with write(2), and the unwinder, which allocates on first
// use, was made ready when the handlers were installed. What it cannot
// avoid (the dynamic loader's lock in dladdr, the library's copy of a
// plugin's path) is left as late as the report allows, and a report stuck
// there is ended by a time limit, with the crash status all the same.
#include "host/crash.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>
#include <signal.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "host/run.h"

namespace toka_host {

namespace {

const int kCrashSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
// A report that has not finished by then is stuck (a lock that the crashed
// code held): the process ends with the crash status all the same.
constexpr unsigned kReportSeconds = 10;
constexpr int kMaxFrames = 64;

char gProgram[64] = "toka-host";
CrashReportLibrary gLibraryFunctions;
const void* gLibraryBase = nullptr;
const void* gProgramBase = nullptr;
char gProgramPath[4096] = "";
// The stack the handler runs on: the thread's own may be the one that
// overflowed. It serves the thread that installed the handlers, where the
// plugins' entry points and callbacks run; other threads report on their
// own stacks.
alignas(16) char gSignalStack[128 * 1024];
// What the library copies out for the report, prepared here rather than on
// a stack that may be exhausted.
char gName[256], gSignature[256], gPath[256];
void* gFrames[kMaxFrames];
// Where a call into no module came from (StepOutOfBadCall), or 0.
uintptr_t gCaller = 0;
bool gInstalled = false;
bool gEndBySignal = false;
// The thread reporting, 0 while none is.
long gReporter = 0;

// One line of the report, formed without allocating.
class Line {
public:
  Line& operator<<(const char* text) {
    while (*text && mLength < sizeof mText - 1) mText[mLength++] = *text++;
    return *this;
  }
  Line& Hex(uintptr_t value) {
    char digits[2 * sizeof value];
    int count = 0;
    do {
      digits[count++] = "0123456789abcdef"[value & 15];
      value >>= 4;
    } while (value);
    *this << "0x";
    while (count && mLength < sizeof mText - 1) mText[mLength++] = digits[--count];
    return *this;
  }
  Line& Decimal(long value) {
    char digits[24];
    int count = 0;
    unsigned long magnitude = value < 0 ? 0ul - (unsigned long)value : (unsigned long)value;
    do {
      digits[count++] = (char)('0' + magnitude % 10);
      magnitude /= 10;
    } while (magnitude);
    if (value < 0) *this << "-";
    while (count && mLength < sizeof mText - 1) mText[mLength++] = digits[--count];
    return *this;
  }
  // Writes the line, ended, to standard error.
  void Write() {
    mText[mLength++] = '\n';
    const char* next = mText;
    size_t left = mLength;
    while (left) {
      ssize_t written = write(STDERR_FILENO, next, left);
      if (written <= 0) break;
      next += written;
      left -= (size_t)written;
    }
    mLength = 0;
  }

private:
  char mText[4352];
  size_t mLength = 0;
};

Line& Start(Line& line) { return line << gProgram << ": "; }

const char* SignalText(int signal) {
  switch (signal) {
    case SIGSEGV: return "SIGSEGV (invalid memory access)";
    case SIGBUS: return "SIGBUS (bus error: memory that cannot be accessed as asked)";
    case SIGFPE: return "SIGFPE (arithmetic fault, such as an integer division by zero)";
    case SIGILL: return "SIGILL (illegal instruction)";
    case SIGABRT: return "SIGABRT (aborted, by abort() or a failed assertion)";
    default: return "an unexpected signal";
  }
}

#if defined(__x86_64__)
constexpr int kPcRegister = REG_RIP, kSpRegister = REG_RSP;
#else
constexpr int kPcRegister = REG_EIP, kSpRegister = REG_ESP;
#endif

// The instruction the signal interrupted.
uintptr_t FaultingInstruction(void* context) {
  return (uintptr_t) static_cast<ucontext_t*>(context)->uc_mcontext.gregs[kPcRegister];
}

// The module holding an address, and the symbol whose code covers it. A
// dynamic loader may answer with the nearest exported symbol before the
// address, which for code in a hidden function is some other function: the
// symbol's size says whether the address is its code.
struct Place {
  bool found = false;
  const char* module = nullptr;
  const void* base = nullptr;
  const char* symbol = nullptr;  // null when no symbol covers the address
  uintptr_t start = 0;           // the symbol's, else the module's
};

Place PlaceOf(uintptr_t address) {
  Place place;
  Dl_info info;
  const ElfW(Sym)* entry = nullptr;
  if (!dladdr1((void*)address, &info, (void**)&entry, RTLD_DL_SYMENT)) return place;
  place.found = true;
  place.base = info.dli_fbase;
  place.module = info.dli_fbase == gProgramBase && gProgramPath[0] ? gProgramPath : info.dli_fname;
  place.start = (uintptr_t)info.dli_fbase;
  uintptr_t symbol = (uintptr_t)info.dli_saddr;
  if (info.dli_sname && entry && address >= symbol && address < symbol + entry->st_size) {
    place.symbol = info.dli_sname;
    place.start = symbol;
  }
  return place;
}

// Code that jumped into no module (a call through a null or stale function
// pointer) leaves the unwinder nothing to go on, but the call has just
// pushed where it returns to. The interrupted state becomes that of the
// return, as if the function called had returned at once: the unwinder,
// which reads the state from the signal frame, goes on from the caller. The
// state is never resumed. The caller's address, or 0 when the top of the
// stack holds no address in a module.
uintptr_t StepOutOfBadCall(void* context) {
  greg_t* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  const uintptr_t* top = (const uintptr_t*)registers[kSpRegister];
  Dl_info info;
  if (!top || !dladdr((void*)*top, &info)) return 0;
  registers[kPcRegister] = (greg_t)*top;
  registers[kSpRegister] = (greg_t)(top + 1);
  return *top;
}

// "MODULE (SYMBOL+0xOFFSET)", or the offset in the module alone.
void AddPlace(Line& line, const Place& place, uintptr_t address) {
  if (!place.found) {
    line << "no loaded module";
    return;
  }
  line << place.module << " (" << (place.symbol ? place.symbol : "") << "+";
  line.Hex(address - place.start) << ")";
}

void ReportSignal(int signal, const siginfo_t* info) {
  Line line;
  Start(line) << "crashed: " << SignalText(signal);
  if (info->si_code == SI_KERNEL) {
    line << ", address unknown";
  } else if (info->si_code > 0 && signal != SIGABRT) {
    line << " at address ";
    line.Hex((uintptr_t)info->si_addr);
  } else if (signal != SIGABRT) {
    line << ", sent by process ";
    line.Decimal(info->si_pid);
  }
  line.Write();
}

// Names whose code was running, and says whether the faulting module is
// someone else's.
void ReportRunning(const Place& fault) {
  Line line;
  int id = gLibraryFunctions.GetMyID ? gLibraryFunctions.GetMyID() : 0;
  if (id == 0) {
    Start(line) << "running: the simulator itself (plugin ID 0: no plugin's code was dispatched)";
    line.Write();
    if (fault.found && fault.base != gProgramBase) {
      Start(line) << "the faulting code is not the simulator's own (" << gProgramPath << ")";
      line.Write();
    }
    return;
  }
  const CrashReportLibrary& library = gLibraryFunctions;
  if (!library.GetPluginInfo || (library.CountPlugins && (id < 0 || id >= library.CountPlugins()))) {
    Start(line) << "running: plugin ID ";
    line.Decimal(id) << ", which the library does not know";
    line.Write();
    return;
  }
  // The library's answers read the dispatched plugin (a thread-local) and
  // copy the record's strings into these buffers: name and signature
  // without allocating. The path goes through a temporary string of the
  // library's, the report's one allocation, so it is asked last: should the
  // crash have left the heap locked, the lines before it are out already
  // and the report's time limit ends the process.
  gName[0] = gSignature[0] = gPath[0] = 0;
  library.GetPluginInfo(id, gName, nullptr, gSignature, nullptr);
  Start(line) << "running plugin: ID ";
  line.Decimal(id) << " \"" << gName << "\" " << gSignature;
  line.Write();
  library.GetPluginInfo(id, nullptr, gPath, nullptr, nullptr);
  Start(line) << "running plugin's file: " << gPath;
  line.Write();
  if (fault.found && std::strcmp(fault.module, gPath) != 0) {
    Start(line) << "the faulting code is not in the running plugin's file";
    line.Write();
  }
}

// The frames from the interrupted instruction (or the bad call's caller)
// outwards, or all of them (the handler's own first) when the unwinder did
// not pass through the signal frame. first is the index of the innermost.
int CollectFrames(uintptr_t pc, int& first) {
  int count = backtrace(gFrames, kMaxFrames);
  uintptr_t innermost = gCaller ? gCaller : pc;
  first = -1;
  for (int i = 0; i < count; ++i)
    if ((uintptr_t)gFrames[i] == innermost) {
      first = i;
      break;
    }
  return count;
}

// Past the interrupted frame an address is where a call returns to, which
// may already be the next function's: the call itself is just before it.
uintptr_t CallSite(int index, int first) {
  uintptr_t address = (uintptr_t)gFrames[index];
  return index == first && !gCaller ? address : address - 1;
}

// The innermost frame in one of the library's exported functions: the last
// library entry point entered, whose call had not returned.
void ReportLibraryCall(int count, int first) {
  Line line;
  Start(line) << "last library entry point entered (the innermost call into the library still "
                 "active when the signal came): ";
  const char* name = nullptr;
  for (int i = first < 0 ? 0 : first; i < count && !name && gLibraryBase; ++i) {
    Place place = PlaceOf(CallSite(i, first));
    if (place.base == gLibraryBase && place.symbol && !std::strncmp(place.symbol, "TOKA", 4))
      name = place.symbol;
  }
  if (name) {
    line << name;
  } else if (count == kMaxFrames) {
    line << "none in the innermost ";
    line.Decimal(kMaxFrames) << " frames";
  } else {
    line << "none";
  }
  line.Write();
}

void ReportBacktrace(uintptr_t pc, int count, int first) {
  Line line;
  Start(line) << "backtrace, innermost frame first:";
  line.Write();
  int number = 0;
  if (first < 0 || gCaller) {
    line << "  #0 ";
    line.Hex(pc) << " ";
    AddPlace(line, PlaceOf(pc), pc);
    if (first < 0) line << " (the interrupted instruction; the frames below start in the handler)";
    line.Write();
    number = 1;
  }
  for (int i = first < 0 ? 0 : first; i < count; ++i) {
    uintptr_t address = (uintptr_t)gFrames[i];
    line << "  #";
    line.Decimal(number++) << " ";
    line.Hex(address) << " ";
    AddPlace(line, PlaceOf(CallSite(i, first)), address);
    line.Write();
  }
}

void EndReport(int) {
  Line line;
  Start(line) << "the crash report was cut short";
  line.Write();
  _exit(kCrashStatus);
}

void OnCrash(int signal, siginfo_t* info, void* context) {
  long self = syscall(SYS_gettid);
  long reporter = 0;
  if (!__atomic_compare_exchange_n(&gReporter, &reporter, self, false, __ATOMIC_SEQ_CST,
                                   __ATOMIC_SEQ_CST)) {
    // The report itself crashed: end it. Another thread's crash waits for
    // the first report, which ends the process.
    if (reporter == self) EndReport(signal);
    for (;;) pause();
  }
  struct sigaction timeout = {};
  timeout.sa_handler = EndReport;
  sigaction(SIGALRM, &timeout, nullptr);
  alarm(kReportSeconds);

  uintptr_t pc = FaultingInstruction(context);
  ReportSignal(signal, info);
  Place fault = PlaceOf(pc);
  Line line;
  Start(line) << "faulting code: ";
  if (fault.found)
    AddPlace(line, fault, pc);
  else
    line.Hex(pc) << ", in no loaded module";
  if (!fault.found && (gCaller = StepOutOfBadCall(context))) {
    line << ", called from ";
    AddPlace(line, PlaceOf(gCaller - 1), gCaller);
  }
  line.Write();
  ReportRunning(fault);
  int first;
  int count = CollectFrames(pc, first);
  ReportLibraryCall(count, first);
  ReportBacktrace(pc, count, first);
  if (gEndBySignal) {
    // The handler was reset on entry: the signal, raised again and let
    // through, ends the process by its default action.
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    raise(signal);
  }
  _exit(kCrashStatus);
}

void InstallHandlers() {
  stack_t stack = {};
  stack.ss_sp = gSignalStack;
  stack.ss_size = sizeof gSignalStack;
  sigaltstack(&stack, nullptr);
  // The first backtrace loads the unwinder, which allocates.
  backtrace(gFrames, 1);
  struct sigaction action = {};
  action.sa_sigaction = OnCrash;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESETHAND;
  sigemptyset(&action.sa_mask);
  for (int signal : kCrashSignals) sigaction(signal, &action, nullptr);
}

}  // namespace

void InstallCrashReport(const char* program, const CrashReportLibrary& library, bool endBySignal) {
  std::strncpy(gProgram, program, sizeof gProgram - 1);
  gEndBySignal = endBySignal;
  Dl_info info;
  gLibraryBase = library.GetMyID && dladdr((void*)library.GetMyID, &info) ? info.dli_fbase : nullptr;
  gLibraryFunctions = library;
  if (gInstalled) return;
  if (dladdr((void*)&InstallCrashReport, &info)) gProgramBase = info.dli_fbase;
  ssize_t length = readlink("/proc/self/exe", gProgramPath, sizeof gProgramPath - 1);
  gProgramPath[length > 0 ? length : 0] = 0;
  InstallHandlers();
  gInstalled = true;
}

}  // namespace toka_host
