// Datarefs: the typed accessors through the owner's dispatch context against
// a direct call of the same accessor; handle checks and name lookups at
// growing numbers of datarefs. Records are never freed, so the sizes only
// grow within the run: every benchmark first registers up to its size, and
// they run smallest first.
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "bench_table.h"
#include "floor.h"
#include "toka/TOKAData.h"

using namespace toka_bench;

namespace {

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
// inline the accessor: one indirect call against the library's whole path.
float (*volatile gReadFloat)(void*) = ReadFloat;
void (*volatile gWriteFloat)(void*, float) = WriteFloat;
int (*volatile gReadFloats)(void*, float*, int, int) = ReadFloats;

void Raw_GetDataf(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(gReadFloat(&gValue));
}
// The same accessor through a shared library's function that does nothing
// but check its record and call it: what any library call costs.
FloorRecord gFloorRecord = {ReadFloat, &gValue};
void Floor_GetDataf(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(TokaBenchFloorGet(&gFloorRecord));
}
void Toka_GetDataf(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(TOKAGetDataf(gFloat));
}
void Raw_SetDataf(benchmark::State& state) {
  float value = 0;
  for (auto _ : state) gWriteFloat(&gValue, value += 1.0f);
  benchmark::DoNotOptimize(gValue);
}
void Toka_SetDataf(benchmark::State& state) {
  float value = 0;
  for (auto _ : state) TOKASetDataf(gFloat, value += 1.0f);
  benchmark::DoNotOptimize(gValue);
}
void Raw_GetDatavf(benchmark::State& state) {
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

// The registry: "bench/ref/N" for N from 0, each an int dataref.
std::vector<std::string> gNames;
std::vector<TOKADataRef> gRefs;

int ReadInt(void*) { return 1; }

void RegisterUpTo(size_t count) {
  while (gRefs.size() < count) {
    gNames.push_back("bench/ref/" + std::to_string(gRefs.size()));
    gRefs.push_back(TOKARegisterDataAccessor(gNames.back().c_str(), DataTypeInt, 0, ReadInt,
                                             nullptr, nullptr, nullptr, nullptr, nullptr,
                                             nullptr, nullptr, nullptr, nullptr, nullptr,
                                             nullptr, nullptr, nullptr));
  }
}

// The newest handle is the one furthest down the chain of record blocks.
void IsDataRefGood(benchmark::State& state) {
  RegisterUpTo((size_t)state.range(0));
  TOKADataRef ref = gRefs.back();
  for (auto _ : state) benchmark::DoNotOptimize(TOKAIsDataRefGood(ref));
}

// 1,024 names spread over the registry, looked up in turn, by the library
// and by a std::map<std::string> holding the same names.
std::vector<size_t> Probes(size_t count) {
  std::vector<size_t> probes;
  for (size_t i = 0; i < 1024; ++i) probes.push_back((i * 7919u) % count);
  return probes;
}

void FindDataRef(benchmark::State& state) {
  RegisterUpTo((size_t)state.range(0));
  std::vector<const char*> names;
  for (size_t i : Probes(gNames.size())) names.push_back(gNames[i].c_str());
  size_t next = 0;
  long allocations = AllocationCount();
  for (auto _ : state) {
    benchmark::DoNotOptimize(TOKAFindDataRef(names[next]));
    next = (next + 1) & 1023;
  }
  state.counters["allocs"] = (double)(AllocationCount() - allocations) / (double)state.iterations();
}

void StdMapFind(benchmark::State& state) {
  RegisterUpTo((size_t)state.range(0));
  std::map<std::string, TOKADataRef> map;
  for (size_t i = 0; i < gNames.size(); ++i) map.emplace(gNames[i], gRefs[i]);
  std::vector<std::string> names;
  for (size_t i : Probes(gNames.size())) names.push_back(gNames[i]);
  size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(map.find(names[next]));
    next = (next + 1) & 1023;
  }
}

}  // namespace

BENCHMARK(Raw_GetDataf);
BENCHMARK(Floor_GetDataf);
BENCHMARK(Toka_GetDataf);
BENCHMARK(Raw_SetDataf);
BENCHMARK(Toka_SetDataf);
BENCHMARK(Raw_GetDatavf);
BENCHMARK(Toka_GetDatavf);
BENCHMARK(IsDataRefGood)->Arg(32)->Arg(1000);
BENCHMARK(FindDataRef)->Arg(10000);
BENCHMARK(StdMapFind)->Arg(10000);
BENCHMARK(IsDataRefGood)->Arg(100000);
BENCHMARK(FindDataRef)->Arg(100000);
BENCHMARK(StdMapFind)->Arg(100000);

int main(int argc, char** argv) {
  TOKAInitializePlugins("/nonexistent/toka-bench/", NoopHost(), 0);
  // Registered by the simulator itself, which is always enabled.
  gFloat = TOKARegisterDataAccessor("bench/float", DataTypeFloat, 1, nullptr, nullptr, ReadFloat,
                                    WriteFloat, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr, &gValue, &gValue);
  gFloats = TOKARegisterDataAccessor("bench/floats", DataTypeFloatArray, 0, nullptr, nullptr,
                                     nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     ReadFloats, nullptr, nullptr, nullptr, gArray, nullptr);
  int failing = RunAndPrintTable(argc, argv, {
      {"floor: a shared library's forwarding call vs raw accessor call", "1", "Floor_GetDataf",
       "Raw_GetDataf", 0},
      {"TOKAGetDataf vs raw accessor call", "1", "Toka_GetDataf", "Raw_GetDataf", 1.8},
      {"TOKASetDataf vs raw accessor call", "1", "Toka_SetDataf", "Raw_SetDataf", 1.8},
      {"TOKAGetDatavf vs raw accessor call", "1", "Toka_GetDatavf", "Raw_GetDatavf", 1.8},
      {"TOKAIsDataRefGood vs at 32 datarefs", "1000", "IsDataRefGood/1000", "IsDataRefGood/32", 4},
      {"TOKAIsDataRefGood vs at 32 datarefs", "100000", "IsDataRefGood/100000", "IsDataRefGood/32", 4},
      {"TOKAFindDataRef vs std::map find", "10000", "FindDataRef/10000", "StdMapFind/10000", 1},
      {"TOKAFindDataRef vs std::map find", "100000", "FindDataRef/100000", "StdMapFind/100000", 1},
  });
  TOKAShutdownPlugins();
  return failing;
}
