// What every benchmark program of bench/ shares: a simulator whose services
// do nothing, and the table of figures. Each figure is a library path's time
// over its baseline's, both measured in the same run, against the target
// ratio. There are no thresholds in the tests: the figures depend on the
// machine, and only a table printed by one run compares them.
#ifndef TOKA_BENCH_TABLE_H
#define TOKA_BENCH_TABLE_H

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "toka/TOKAHost.h"

namespace toka_bench {

// A host services table whose 69 services do nothing and answer 0.
TOKAHostServices* NoopHost();

// One line of the table: the benchmark that times the path and the one that
// times its baseline (names as Google Benchmark reports them, arguments
// included), each divided by its count of calls per iteration; the ratio
// holds when it is at most target (and, where allocations are counted, when
// the path allocated nothing). A row without a target (0) is a figure for
// reference: it is printed, and holds whatever it is.
struct Row {
  std::string path;
  std::string size;
  std::string measured;
  std::string baseline;
  double target;  // 0: for reference
  double measuredCalls = 1;
  double baselineCalls = 1;
};

// Runs the benchmarks registered so far (Google Benchmark's console output
// goes to standard error) and prints one line per row on standard output,
// fields separated by '|': path, size, ns, baseline ns, ratio, target,
// "yes"/"no". Returns the number of rows that do not hold.
int RunAndPrintTable(int argc, char** argv, const std::vector<Row>& rows);

// Heap allocations made by the process so far (operator new), for paths that
// must not allocate. Benchmarks report allocations per iteration in the
// counter "allocs"; a row whose measured benchmark has one holds only at 0.
long AllocationCount();

}  // namespace toka_bench

#endif
