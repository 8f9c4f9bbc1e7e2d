#!/usr/bin/env bash
# Builds Toka four times, 32-bit and 64-bit, each plainly and with
# AddressSanitizer + UndefinedBehaviorSanitizer (+ LeakSanitizer in 64-bit,
# where leaks fail the test), and runs the whole suite in each build; then
# installs both architectures side by side and builds and runs the plugin
# template against each; after the 64-bit builds it runs the fuzzer for two
# minutes (scripts/fuzz.sh) and flies a real FlightGear with the 64-bit
# host. Exits non-zero on any failure.
#
#   bash scripts/test.sh [32|64]     (default: both architectures)
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
source scripts/machine.sh

archs=(32 64)
[ $# -gt 0 ] && archs=("$@")

jobs=$(nproc 2>/dev/null || echo 2)
passed=0
failed=0
run_suite() {
  local name=$1 dir=$2; shift 2
  local start=$SECONDS status=0
  echo "== $name build =="
  # Called as a condition, where set -e does not hold: every step checks.
  # A build that fails counts as one failure.
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Debug "$@" >/dev/null || { failed=$((failed + 1)); return 1; }
  cmake --build "$dir" -j "$jobs" || { failed=$((failed + 1)); return 1; }
  (cd "$dir" && with_display ctest --output-on-failure --no-tests=error -j "$jobs" --timeout 120) |
    tee "$dir/ctest.log" || status=$?
  local counts
  counts=$(sed -n 's/.* tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$dir/ctest.log")
  if [ -n "$counts" ]; then
    set -- $counts
    passed=$((passed + $2 - $1))
    failed=$((failed + $1))
  fi
  echo "== $name build: $((SECONDS - start)) s =="
  return "$status"
}

overall=0
builds=()
for arch in "${archs[@]}"; do
  suffix=""
  [ "$arch" = 64 ] && suffix=64
  run_suite "$arch-bit plain" "build/plain$suffix" -DTOKA_ARCH="$arch" || overall=1
  builds+=("build/plain$suffix")
  asan_options=${ASAN_OPTIONS:-}
  if [ "$arch" = 32 ] && runs_32bit_emulated; then
    # LeakSanitizer stops the world with ptrace, which qemu's emulator does
    # not offer: under it every test would hang at exit. The 64-bit build
    # checks for leaks natively.
    echo "32-bit programs run under qemu here: leak detection is off in the 32-bit sanitizer build"
    export ASAN_OPTIONS=detect_leaks=0
  fi
  run_suite "$arch-bit sanitizer" "build/sanitize$suffix" -DTOKA_ARCH="$arch" -DTOKA_SANITIZE=ON ||
    overall=1
  if [ -n "$asan_options" ]; then export ASAN_OPTIONS=$asan_options; else unset ASAN_OPTIONS; fi
done

# The fuzzer of the whole interface, for two minutes with a fixed seed, after
# the 64-bit builds; it is a native x86-64 program.
if [[ " ${archs[*]} " == *" 64 "* ]]; then
  echo "== fuzzer: 120 s =="
  if [ "$(uname -m)" != x86_64 ]; then
    echo "fuzzer skipped: it runs on native x86-64 machines only (this one is $(uname -m))"
  elif bash scripts/fuzz.sh 120 1; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    overall=1
  fi
fi

# FlightGear itself, once, with the native 64-bit host: the heading hold's
# scenario and a bank of the yoke (a few minutes: FlightGear starts twice).
if [[ " ${archs[*]} " == *" 64 "* ]]; then
  echo "== FlightGear: the live world =="
  start=$SECONDS
  if TOKA_FLIGHTGEAR_TESTS=1 build/plain64/tests/host_flightgear_test --gtest_filter='FlightGearLive.*'; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    overall=1
  fi
  echo "== FlightGear: $((SECONDS - start)) s =="
fi

echo "== install: ${builds[*]} side by side =="
if cmake -DBUILD_DIRS="$(IFS=';'; echo "${builds[*]}")" -DSOURCE_DIR="$PWD" \
     -DWORK_DIR="$PWD/build/install-test" -P tests/install_test.cmake; then
  passed=$((passed + 1))
else
  failed=$((failed + 1))
  overall=1
fi

echo "$passed passed, $failed failed"
exit "$overall"
