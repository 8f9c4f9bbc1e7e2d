#!/usr/bin/env bash
# Builds the benchmarks optimised (-O2), natively in 64-bit, runs every one
# five times and prints one table of the medians: path, size, time per call,
# the baseline's time, their ratio, the target and whether it holds. Google
# Benchmark's own report goes to build/release64/bench/report.txt. Arguments
# go to every benchmark program (for example --benchmark_repetitions=1).
# Then the reference host's frame rate (bench/host_frames.cpp). Exits
# non-zero when a row or the frame rate does not hold.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=build/release64
cmake -S . -B "$build" -DTOKA_ARCH=64 -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" -DCMAKE_C_FLAGS_RELEASE="-O2 -DNDEBUG" \
  -DTOKA_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --target toka_bench -j "$(nproc 2>/dev/null || echo 2)" >/dev/null

rows=$(mktemp)
trap 'rm -f "$rows"' EXIT
: >"$build/bench/report.txt"
failing=0
for area in datarefs flight_loops display loading; do
  "$build/bench/${area}_bench" --benchmark_repetitions=5 "$@" >>"$rows" 2>>"$build/bench/report.txt" || failing=$((failing + $?))
done
{
  echo "path|size|ns|baseline ns|ratio|target|holds"
  cat "$rows"
} | column -t -s '|'
echo "$(uname -m), $(nproc) cores, $(date -u +%Y-%m-%d): $failing row(s) missing the target"
echo
"$build/bench/host_frames" || failing=$((failing + 1))
[ "$failing" -eq 0 ]
