#!/usr/bin/env bash
# Applies the deliberate faults of tests/mutants.txt one at a time, rebuilds
# incrementally (native 64-bit, plain) and runs the suite, stopping at its
# first failure; prints for each fault which test caught it, or MISSED, and
# last "N caught, M missed". A fault whose line is no longer in its file (or
# is there twice) is reported STALE; one that does not compile, UNBUILT: fix
# the list. The sources are restored after each fault, and on any exit.
#
#   bash scripts/mutants.sh [PATTERN]    (only the faults whose header matches)
#
# MUTANTS_CTEST_ARGS adds arguments to ctest, to learn what a part of the
# suite catches alone (e.g. MUTANTS_CTEST_ARGS="-E ^Host").
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
source scripts/machine.sh
build=build/mutants64
list=tests/mutants.txt
pattern=${1:-}

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DTOKA_ARCH=64 -DTOKA_BUILD_BENCH=OFF \
  -DCMAKE_LINK_DEPENDS_NO_SHARED=ON >/dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" >/dev/null

backup=$(mktemp)
current=""
restore() {
  if [ -n "$current" ]; then cp "$backup" "$current"; current=""; fi
}
trap 'restore; rm -f "$backup"' EXIT

# Replaces the one line of file whose text, without surrounding blanks, is
# old by new, keeping the line's indentation. Fails unless exactly one line
# matches.
apply_fault() {
  local file=$1 old=$2 new=$3
  local count
  # Through the environment: awk -v would read backslashes as escapes.
  count=$(OLD=$old awk '{ t = $0; gsub(/^[ \t]+|[ \t]+$/, "", t); if (t == ENVIRON["OLD"]) n++ }
                        END { print n + 0 }' "$file")
  [ "$count" -eq 1 ] || return 1
  OLD=$old NEW=$new awk '{
      t = $0; gsub(/^[ \t]+|[ \t]+$/, "", t)
      if (t == ENVIRON["OLD"]) { match($0, /^[ \t]*/); print substr($0, 1, RLENGTH) ENVIRON["NEW"] }
      else print
    }' "$file" >"$file.mutant" && mv "$file.mutant" "$file"
}

caught=0
missed=0
broken=0
run_fault() {
  local file=$1 behaviour=$2 old=$3 new=$4
  [ -z "$pattern" ] || [[ "$file: $behaviour" == *$pattern* ]] || return 0
  local label="$file: $behaviour"
  cp "$file" "$backup"
  current=$file
  if ! apply_fault "$file" "$old" "$new"; then
    restore
    echo "STALE   $label"
    broken=$((broken + 1))
    return 0
  fi
  if ! cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" >/dev/null 2>&1; then
    restore
    echo "UNBUILT $label"
    broken=$((broken + 1))
    return 0
  fi
  local failed
  # Tests that skipped themselves caught nothing: ctest lists them too.
  failed=$(cd "$build" && with_display ctest -j "$(nproc 2>/dev/null || echo 2)" --timeout 60 --stop-on-failure \
    ${MUTANTS_CTEST_ARGS:-} 2>&1 |
    sed -n -e '/(Skipped)$/d' -e 's/^[[:space:]]*[0-9]* - \(.*\) (.*)$/\1/p' | paste -sd, - || true)
  restore
  if [ -n "$failed" ]; then
    echo "caught  $label  <- $failed"
    caught=$((caught + 1))
  else
    echo "MISSED  $label"
    missed=$((missed + 1))
  fi
}

file="" behaviour="" old="" have_old=no
while IFS= read -r line || [ -n "$line" ]; do
  case "$line" in
    "@ "*)
      file=${line#@ }
      behaviour=${file#*: }
      file=${file%%: *}
      have_old=no
      ;;
    "- "*)
      old=${line#- }
      have_old=yes
      ;;
    "+ "* | "+")
      [ "$have_old" = yes ] || { echo "mutants: a '+' line without its '-' line under $file" >&2; exit 2; }
      new=${line#+}
      new=${new# }
      run_fault "$file" "$behaviour" "$old" "$new"
      have_old=no
      ;;
  esac
done <"$list"

# Rebuild the unchanged sources, so that the build folder is left as it was.
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" >/dev/null
[ "$broken" -eq 0 ] || echo "$broken fault(s) stale or not building: fix $list"
echo "$caught caught, $missed missed"
