// What a plugin pays to read or write a dataref through the library, next to
// calling the owner's accessor function directly through a pointer: the
// difference is the null test, the owner's dispatch context and the
// indirect call. The ratio of each library call to its baseline, both
// measured in this run, is printed at the end. There are no thresholds:
// the figures depend on the machine.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

#include "toka/TOKAData.h"
#include "toka/TOKAHost.h"

namespace {

// A simulator whose services all do nothing and answer 0: start-up runs as
// it does in the simulator (dispatch key, simulator record), with no plugins.
template <class F>
struct Noop;
template <class R, class... A>
struct Noop<R (*)(A...)> {
  static R Call(A...) { return R(); }
};
#define TOKA_NOOP(slot) table.slot = &Noop<decltype(table.slot)>::Call;

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

// The owner's accessors: a float and an array of eight floats.
float gValue = 1.0f;
float gArray[8] = {1, 2, 3, 4, 5, 6, 7, 8};

float ReadFloat(void* refcon) { return *static_cast<float*>(refcon); }
void WriteFloat(void* refcon, float value) { *static_cast<float*>(refcon) = value; }
int ReadFloats(void* refcon, float* values, int offset, int max) {
  const float* array = static_cast<const float*>(refcon);
  if (!values) return 8;
  int n = 0;
  for (int i = offset; i < 8 && n < max; ++i) values[n++] = array[i];
  return n;
}

TOKADataRef gFloat = nullptr;
TOKADataRef gFloats = nullptr;

// The baselines call through volatile pointers, so that the compiler cannot
// inline the accessor and the comparison is one indirect call against the
// library's whole path.
float (*volatile gReadFloat)(void*) = ReadFloat;
void (*volatile gWriteFloat)(void*, float) = WriteFloat;
int (*volatile gReadFloats)(void*, float*, int, int) = ReadFloats;

void Baseline_GetDataf(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(gReadFloat(&gValue));
}
void Toka_GetDataf(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(TOKAGetDataf(gFloat));
}

void Baseline_SetDataf(benchmark::State& state) {
  float value = 0;
  for (auto _ : state) gWriteFloat(&gValue, value += 1.0f);
  benchmark::DoNotOptimize(gValue);
}
void Toka_SetDataf(benchmark::State& state) {
  float value = 0;
  for (auto _ : state) TOKASetDataf(gFloat, value += 1.0f);
  benchmark::DoNotOptimize(gValue);
}

void Baseline_GetDatavf(benchmark::State& state) {
  float values[8];
  for (auto _ : state) {
    benchmark::DoNotOptimize(gReadFloats(gArray, values, 0, 8));
    benchmark::ClobberMemory();
  }
}
void Toka_GetDatavf(benchmark::State& state) {
  float values[8];
  for (auto _ : state) {
    benchmark::DoNotOptimize(TOKAGetDatavf(gFloats, values, 0, 8));
    benchmark::ClobberMemory();
  }
}

BENCHMARK(Baseline_GetDataf);
BENCHMARK(Toka_GetDataf);
BENCHMARK(Baseline_SetDataf);
BENCHMARK(Toka_SetDataf);
BENCHMARK(Baseline_GetDatavf);
BENCHMARK(Toka_GetDatavf);

// The console report, then each library call's time over its baseline's.
class RatioReporter : public benchmark::ConsoleReporter {
public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      Mean& mean = mTimes[run.benchmark_name()];
      mean.sum += run.GetAdjustedRealTime();
      mean.count += 1;
    }
  }

  void PrintRatios() const {
    std::printf("\nlibrary call / direct call (same run):\n");
    for (const auto& entry : mTimes) {
      const std::string& name = entry.first;
      if (name.rfind("Toka_", 0) != 0) continue;
      auto baseline = mTimes.find("Baseline_" + name.substr(5));
      if (baseline == mTimes.end() || baseline->second.Value() <= 0) continue;
      std::printf("  TOKA%-10s %6.2fx\n", name.substr(5).c_str(),
                  entry.second.Value() / baseline->second.Value());
    }
  }

private:
  struct Mean {
    double sum = 0;
    int count = 0;
    double Value() const { return count ? sum / count : 0; }
  };
  std::map<std::string, Mean> mTimes;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

  TOKAInitializePlugins("/nonexistent/toka-bench/", NoopHost(), 0);
  // Registered by the simulator itself, which is always enabled.
  gFloat = TOKARegisterDataAccessor("bench/float", DataTypeFloat, 1, nullptr, nullptr, ReadFloat,
                                    WriteFloat, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr, &gValue, &gValue);
  gFloats = TOKARegisterDataAccessor("bench/floats", DataTypeFloatArray, 0, nullptr, nullptr,
                                     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     ReadFloats, nullptr, nullptr, nullptr, gArray, nullptr);

  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  TOKAShutdownPlugins();
  benchmark::Shutdown();
  return 0;
}
