#!/usr/bin/env bash
# Builds Toka and runs the reference host on the example plugins.
# Extra arguments go to toka-host (see `toka-host --help`).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build/plain -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build build/plain -j "$(nproc 2>/dev/null || echo 2)"
exec build/plain/host/toka-host --root build/plain/examples/root/ --library build/plain/libtoka.so "$@"
