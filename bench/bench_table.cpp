#include "bench_table.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <new>

namespace {

std::atomic<long> gAllocations{0};

}  // namespace

void* operator new(std::size_t size) {
  gAllocations.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace toka_bench {

namespace {

template <class F>
struct Noop;
template <class R, class... A>
struct Noop<R (*)(A...)> {
  static R Call(A...) { return R(); }
};
#define TOKA_NOOP(slot) table.slot = &Noop<decltype(table.slot)>::Call;

// Keeps each benchmark's time per iteration and its allocation counter: the
// median of the repetitions when it is repeated, else its one run.
class TableReporter : public benchmark::ConsoleReporter {
public:
  TableReporter() { SetOutputStream(&std::cerr); SetErrorStream(&std::cerr); }

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.error_occurred) continue;
      bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      if (run.run_type != Run::RT_Iteration && !median) continue;
      Figure& figure = mFigures[run.run_name.str()];
      figure.ns = run.GetAdjustedRealTime();
      auto allocs = run.counters.find("allocs");
      figure.allocs = allocs == run.counters.end() ? -1 : (double)allocs->second;
    }
  }

  struct Figure {
    double ns = 0;
    double allocs = -1;
  };
  const Figure* Find(const std::string& name) const {
    auto found = mFigures.find(name);
    return found == mFigures.end() ? nullptr : &found->second;
  }

private:
  std::map<std::string, Figure> mFigures;
};

}  // namespace

long AllocationCount() { return gAllocations.load(std::memory_order_relaxed); }

TOKAHostServices* NoopHost() {
  static TOKAHostServices table;
  table.revision = 4;
  table.version = 300;
  TOKA_NOOP(GetScreenSize) TOKA_NOOP(GetMouseLocation) TOKA_NOOP(SetGraphicsState)
  TOKA_NOOP(BindTexture2d) TOKA_NOOP(GenerateTextureNumbers) TOKA_NOOP(GetTexture)
  TOKA_NOOP(WorldToLocal) TOKA_NOOP(LocalToWorld) TOKA_NOOP(DrawTranslucentDarkBox)
  TOKA_NOOP(DrawString) TOKA_NOOP(DrawNumber) TOKA_NOOP(GetFontDimensions)
  TOKA_NOOP(GetElapsedTime) TOKA_NOOP(ReadCameraPosition) TOKA_NOOP(DrawAircraft)
  TOKA_NOOP(SetAircraftModel) TOKA_NOOP(GetNthAircraftModel) TOKA_NOOP(CountAircraft)
  TOKA_NOOP(PlaceUserAtAirport) TOKA_NOOP(SimulateKeyPress) TOKA_NOOP(SpeakString)
  TOKA_NOOP(CommandKeyStroke) TOKA_NOOP(CommandButton) TOKA_NOOP(GetSystemPath)
  TOKA_NOOP(GetPrefsPath) TOKA_NOOP(GetVersions) TOKA_NOOP(GetLanguage) TOKA_NOOP(DebugString)
  TOKA_NOOP(CreateMenu) TOKA_NOOP(AppendMenuItem) TOKA_NOOP(SetMenuItemName)
  TOKA_NOOP(DestroyMenu) TOKA_NOOP(ReinitUsersPlane) TOKA_NOOP(ReloadScenery)
  TOKA_NOOP(GetFirstNavAid) TOKA_NOOP(GetNextNavAid) TOKA_NOOP(FindFirstNavAidOfType)
  TOKA_NOOP(FindLastNavAidOfType) TOKA_NOOP(FindNavAid) TOKA_NOOP(GetNavAidInfo)
  TOKA_NOOP(CountFMSEntries) TOKA_NOOP(GetDisplayedFMSEntry) TOKA_NOOP(GetDestinationFMSEntry)
  TOKA_NOOP(SetDisplayedFMSEntry) TOKA_NOOP(SetDestinationFMSEntry) TOKA_NOOP(GetFMSEntryInfo)
  TOKA_NOOP(SetFMSEntryInfo) TOKA_NOOP(SetFMSEntryLatLon) TOKA_NOOP(ClearFMSEntry)
  TOKA_NOOP(GetGPSDestinationType) TOKA_NOOP(GetGPSDestination) TOKA_NOOP(ShowUserMessage)
  TOKA_NOOP(ShowLoadingProgress) TOKA_NOOP(CreateCommand) TOKA_NOOP(CommandBegin)
  TOKA_NOOP(CommandContinue) TOKA_NOOP(CommandEnd) TOKA_NOOP(CreateProbe)
  TOKA_NOOP(ProbeTerrain) TOKA_NOOP(FindSymbol) TOKA_NOOP(MeasureString)
  TOKA_NOOP(RemoveMenuItem) TOKA_NOOP(LoadObject) TOKA_NOOP(DrawObjectInstance)
  TOKA_NOOP(UnloadObject) TOKA_NOOP(LookupObjects) TOKA_NOOP(LoadDataFile)
  TOKA_NOOP(SaveDataFile) TOKA_NOOP(LoadObjectAsync)
  return &table;
}

int RunAndPrintTable(int argc, char** argv, const std::vector<Row>& rows) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  TableReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  int failing = 0;
  for (const Row& row : rows) {
    const TableReporter::Figure* measured = reporter.Find(row.measured);
    const TableReporter::Figure* baseline = reporter.Find(row.baseline);
    if (!measured || !baseline || baseline->ns <= 0) continue;  // filtered out
    double ns = measured->ns / row.measuredCalls, base = baseline->ns / row.baselineCalls;
    double ratio = ns / base;
    if (row.target <= 0) {
      std::printf("%s|%s|%.2f|%.2f|%.2fx|(for reference)|-\n", row.path.c_str(), row.size.c_str(),
                  ns, base, ratio);
      continue;
    }
    bool holds = ratio <= row.target && measured->allocs <= 0;
    failing += !holds;
    std::printf("%s|%s|%.2f|%.2f|%.2fx|<= %.1fx%s|%s\n", row.path.c_str(), row.size.c_str(), ns,
                base, ratio, row.target, measured->allocs >= 0 ? ", no allocation" : "",
                holds ? "yes" : "no");
  }
  benchmark::Shutdown();
  return failing;
}

}  // namespace toka_bench
