#!/usr/bin/env bash
# Builds the fuzzer of the whole interface (fuzz/, with clang's libFuzzer,
# AddressSanitizer and UndefinedBehaviorSanitizer) in build/fuzz and runs it
# for SECONDS seconds on one core, from the checked-in seeds (fuzz/corpus) and
# what earlier runs found (build/fuzz/corpus). Prints libFuzzer's last status
# line (executions, coverage) and exits non-zero when it found a crash, a
# leak or a failed check; the input that did it is written to build/fuzz/.
#
#   bash scripts/fuzz.sh SECONDS [SEED]     (SEED: 1 by default; 0 for a random one)
#
# Native x86-64 only. fuzz/README says how to reproduce a crash from its file.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:?usage: scripts/fuzz.sh SECONDS [SEED]}
seed=${2:-1}

if [ "$(uname -m)" != x86_64 ]; then
  echo "fuzz: skipped: the fuzzer runs on native x86-64 machines only (this one is $(uname -m))"
  exit 0
fi
compiler=$(command -v clang++ || command -v clang++-14 || true)
if [ -z "$compiler" ]; then
  echo "fuzz: clang++ is missing: run scripts/setup.sh (it installs clang and its libFuzzer)" >&2
  exit 1
fi

cmake -S fuzz -B build/fuzz -DCMAKE_CXX_COMPILER="$compiler" >/dev/null
cmake --build build/fuzz -j "$(nproc 2>/dev/null || echo 2)"
mkdir -p build/fuzz/corpus
log=build/fuzz/fuzz.log
status=0
# Inputs grow to 4 KiB (a few hundred operations); an input that runs for
# 20 s is a hang, and counts as a failure like a crash.
build/fuzz/toka_fuzz -max_total_time="$seconds" -seed="$seed" -max_len=4096 -timeout=20 \
  -rss_limit_mb=4096 -print_final_stats=1 -artifact_prefix=build/fuzz/ \
  build/fuzz/corpus fuzz/corpus >"$log" 2>&1 || status=$?
grep -E '^#[0-9]+' "$log" | tail -n 1
if [ "$status" -ne 0 ]; then
  grep -E 'check failed|ERROR|SUMMARY|Test unit written' "$log" >&2 || true
  echo "fuzz: FAILED after $(grep -oE '^#[0-9]+' "$log" | tail -n 1 | tr -d '#') executions; the log is $log" >&2
  exit 1
fi
echo "fuzz: no failure in $seconds s"
