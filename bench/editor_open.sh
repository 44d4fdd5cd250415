#!/bin/bash
# Opening a large result file: the editor against a peer text editor, paired
# and interleaved on one X server. For each run: seconds from the start of the
# process until its window shows the file's name and answers a round trip, and
# the resident memory 2 s later, when both hold the whole text. The editor's
# own figures (first page, whole text in the widget, memory) come from
# editor_open without --hold, run beside them.
# Usage: bench/editor_open.sh BUILD_DIR [RUNS] [FILE]
# Without FILE a 1,000,000-line reflection listing of 60 MB is made.
set -euo pipefail
build=${1:?build directory}
runs=${2:-5}
file=${3:-}
ours="$build/bin/editor_open"
peer=$(command -v nedit || true)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if [ -z "$file" ]; then
  file="$work/big.int"
  awk 'BEGIN { for (i = 1; i <= 1000000; i++)
    printf "%8d %4d %4d %4d %12.3f %10.3f  reflection\n", i, i%40-20, i%30-15, i%20-10, i*0.5, i*0.01 }' >"$file"
fi
name=$(basename "$file")

now() { date +%s.%N; }

# Waits for a visible window whose title holds the file name; prints the seconds since $1.
wait_window() {
  local t0=$1
  until xdotool search --onlyvisible --name "$name" >/dev/null 2>&1; do sleep 0.01; done
  xdotool search --onlyvisible --name "$name" | head -1 | xargs -r xwininfo -id >/dev/null
  echo "$(now) - $t0" | bc -l
}

rss_kb() { awk '/^VmRSS:/ { print $2 }' "/proc/$1/status"; }

one() {  # one run: command..., prints "seconds rss"
  local t0 pid s r
  t0=$(now)
  "$@" >/dev/null 2>&1 &
  pid=$!
  s=$(wait_window "$t0")
  sleep 2
  r=$(rss_kb "$pid")
  kill "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
  printf '%.3f %s\n' "$s" "$r"
}

stats() {  # median, min and max of column $1 of stdin
  sort -n -k"$1" | awk -v c="$1" '{ v[NR] = $c } END {
    m = NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2
    printf "median %s  min %s  max %s", m, v[1], v[NR] }'
}

: >"$work/ours"; : >"$work/peer"; : >"$work/inside"
for i in $(seq "$runs"); do
  "$ours" "$file" >>"$work/inside"
  one "$ours" "$file" --hold >>"$work/ours"
  [ -n "$peer" ] && one "$peer" -xrm 'nedit*autoSave: False' "$file" >>"$work/peer"
done
echo "file: $file ($(wc -l <"$file") lines, $(($(stat -c %s "$file") / 1024)) kB), $runs paired runs"
echo "editor   seconds: $(stats 1 <"$work/ours")   rss kB: $(stats 2 <"$work/ours")"
echo "editor, measured inside: first page s: $(stats 1 <"$work/inside")   rss kB then: $(stats 2 <"$work/inside")"
echo "                         whole text s: $(stats 4 <"$work/inside")   rss kB then: $(stats 5 <"$work/inside")"
if [ -n "$peer" ]; then
  echo "nedit    seconds: $(stats 1 <"$work/peer")   rss kB: $(stats 2 <"$work/peer")"
else
  echo "no peer editor installed"
fi
