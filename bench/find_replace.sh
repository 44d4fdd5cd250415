#!/bin/bash
# Find Next and Replace All in the editor on a 50 MB file, beside the command
# line: `grep -b` finding the same text, `sed` replacing the same 100,000
# occurrences. Paired and interleaved runs on one X server; median, min, max.
# Find Next runs from the start of the text to the one match at its end.
# Usage: bench/find_replace.sh BUILD_DIR [RUNS]
set -euo pipefail
build=${1:?build directory}
runs=${2:-5}
ours="$build/bin/find_replace"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
file="$work/big.out"
# 500,000 lines of 100 bytes; every fifth holds the word to replace.
awk 'BEGIN { for (i = 1; i <= 500000; i++) {
    w = i % 5 == 0 ? "TWINLAW" : "twinlaw"
    printf "%8d %4d %4d %4d %12.3f %10.3f %-7s  reflection list entry.....................\n", i, i%40-20, i%30-15, i%20-10, i*0.5, i*0.01, w }
  print "final marker" }' >"$file"

now() { date +%s.%N; }
timed() {  # seconds that the command takes
  local t0
  t0=$(now)
  "$@" >/dev/null
  echo "$(now) - $t0" | bc -l
}
stats() {  # median, min and max of column $1 of stdin
  sort -n -k"$1" | awk -v c="$1" '{ v[NR] = $c } END {
    m = NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2
    printf "median %.3f  min %.3f  max %.3f", m, v[1], v[NR] }'
}

: >"$work/ours_find"; : >"$work/ours_replace"; : >"$work/grep"; : >"$work/sed"
for i in $(seq "$runs"); do
  "$ours" "$file" "final marker" x >>"$work/ours_find"
  "$ours" "$file" TWINLAW twin_law_2 >>"$work/ours_replace"
  timed grep -b -o "final marker" "$file" >>"$work/grep"
  timed sed 's/TWINLAW/twin_law_2/g' "$file" >>"$work/sed"
done
expected=$(($(stat -c %s "$file") + 100000 * 3))
got=$(awk '{ print $3 }' "$work/ours_replace" | sort -u)
echo "file: $(($(stat -c %s "$file") / 1024)) kB, $(grep -c TWINLAW "$file") lines to change, $runs paired runs"
echo "Find Next to the end   editor: $(stats 1 <"$work/ours_find")   grep -b: $(stats 1 <"$work/grep")"
echo "Replace All 100,000    editor: $(stats 2 <"$work/ours_replace")   sed:     $(stats 1 <"$work/sed")"
[ "$got" = "$expected" ] && echo "the editor's text after Replace All has the expected length ($expected)" ||
  echo "LENGTH MISMATCH: editor $got, expected $expected"
