#!/usr/bin/env bash
# The size of the test suite against the code it tests, in lines: every
# source file below tests/ (harness and fixture plugins included) against the
# library's folders, its public headers and the reference host.
set -euo pipefail
cd "$(dirname "$0")/.."
lines() { find "$@" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.cmake' -o -name CMakeLists.txt \) -print0 | xargs -0 cat | wc -l; }
tests=$(lines tests)
code=$(lines loader data processing display menus utilities world forwarders include host)
echo "tests: $tests lines, code: $code lines, ratio $(awk -v t="$tests" -v c="$code" 'BEGIN { printf "%.2f", t / c }')"
