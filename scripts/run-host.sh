#!/usr/bin/env bash
# Builds Toka and runs the reference host on the example plugins: each
# example's scenario (examples/*/*.scenario) in a run of its own, with a
# screenshot of its last frame whose path it prints. Without scenarios it
# makes one plain run. Extra arguments go to toka-host (see `toka-host --help`).
# Exits non-zero when a scenario fails.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build/plain -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build build/plain -j "$(nproc 2>/dev/null || echo 2)"

host=(build/plain/host/toka-host --root build/plain/examples/root/ --library build/plain/libtoka.so)
shots="$PWD/build/plain/screenshots"
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
  "${host[@]}" --scenario "$scenario" --screenshot "$picture" "$@" || status=$?
  [ -f "$picture" ] && echo "screenshot: $picture"
  [ "$status" -eq 0 ] || failed=1
done
exit "$failed"
