#!/usr/bin/env bash
# The size of the test suite against the code it tests, in lines: every
# source and build file below tests/ (harness and fixture plugins included)
# against the library's folders, its public headers, the reference host, the
# plugin validator and what builds and installs them (the top CMakeLists.txt and the CMake package
# plugin authors use, cmake/). The fuzzer (fuzz/) is on neither side.
set -euo pipefail
cd "$(dirname "$0")/.."
lines() { find "$@" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.cmake' -o -name '*.cmake.in' -o -name CMakeLists.txt \) -print0 | xargs -0 cat | wc -l; }
tests=$(lines tests)
code=$(($(lines loader data processing display menus utilities world forwarders include host validate cmake) + $(wc -l <CMakeLists.txt)))
echo "tests: $tests lines, code: $code lines, ratio $(awk -v t="$tests" -v c="$code" 'BEGIN { printf "%.2f", t / c }')"
