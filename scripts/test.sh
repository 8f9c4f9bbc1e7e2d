#!/usr/bin/env bash
# Builds Toka twice, plainly and with AddressSanitizer + UndefinedBehaviorSanitizer,
# and runs the whole test suite in each build. Exits non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

jobs=$(nproc 2>/dev/null || echo 2)
run_suite() {
  local dir=$1; shift
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Debug "$@" >/dev/null
  cmake --build "$dir" -j "$jobs"
  (cd "$dir" && ctest --output-on-failure -j "$jobs" --timeout 120)
}

echo "== plain build =="
run_suite build/plain
echo "== sanitizer build =="
run_suite build/sanitize -DTOKA_SANITIZE=ON
