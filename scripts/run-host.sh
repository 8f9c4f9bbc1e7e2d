#!/usr/bin/env bash
# Builds Toka and runs the reference host on the example plugins: each
# example's scenario (examples/*/*.scenario) in a run of its own, with a
# screenshot of its last frame whose path it prints. Without scenarios it
# makes one plain run. `--arch 64`, given first, runs the 64-bit build
# (library, host and examples) instead of the 32-bit one. Other arguments go to toka-host
# (see `toka-host --help`). Exits non-zero when a scenario fails.
set -euo pipefail
cd "$(dirname "$0")/.."
arch=32
if [ "${1:-}" = --arch ]; then
  arch=${2:?"--arch takes 32 or 64"}
  shift 2
fi
case "$arch" in
  32) build=build/plain host=toka-host ;;
  64) build=build/plain64 host=toka-host64 ;;
  *) echo "run-host: --arch takes 32 or 64, not $arch" >&2; exit 2 ;;
esac
bash scripts/setup.sh
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DTOKA_ARCH="$arch" >/dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)"

host=("$build/host/$host" --root "$build/examples/root/" --library "$build/libtoka.so")
shots="$PWD/$build/screenshots"
shopt -s nullglob
scenarios=(examples/*/*.scenario)

if [ ${#scenarios[@]} -eq 0 ]; then
  mkdir -p "$shots"
  "${host[@]}" --screenshot "$shots/last-frame.png" "$@"
  echo "screenshot: $shots/last-frame.png"
  exit 0
fi

failed=0
for scenario in "${scenarios[@]}"; do
  example=$(basename "$(dirname "$scenario")")
  picture="$shots/$example/$(basename "$scenario" .scenario).png"
  mkdir -p "$(dirname "$picture")"
  echo "== $scenario"
  status=0
  # A scenario that flies in FlightGear says so on its first line.
  world=()
  [ "$(head -n 1 "$scenario")" = "# world: flightgear" ] && world=(--world flightgear)
  "${host[@]}" "${world[@]}" --scenario "$scenario" --screenshot "$picture" "$@" || status=$?
  [ -f "$picture" ] && echo "screenshot: $picture"
  [ "$status" -eq 0 ] || failed=1
done
exit "$failed"
