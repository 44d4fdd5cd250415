#!/bin/bash
# Opening a large result file: the editor against a peer text editor, paired
# and interleaved on one X server, the one that goes first alternating. For
# each run, measured from outside by window_painted: seconds from the start
# of the process until its window, titled with the file's name, shows a page
# of text; the resident memory then, and 2 s later, when both hold the whole
# text. The editor's own figures (first page, whole text in the widget,
# memory) come from editor_open without --hold, run beside them.
# Left out: the file is in the page cache (a cold read adds the same disk time
# to both); there is no window manager; each program draws in the fonts it
# finds on this server; "painted" means a page of text rows in the window's
# left strip (see window_painted), not every pixel final; the editor goes on
# taking the rest of a large text after its first page, which the inside
# "whole text" figure covers.
# Usage: bench/editor_open.sh BUILD_DIR [RUNS] [FILE]
# Without FILE a 1,000,000-line reflection listing of 60 MB is made.
set -euo pipefail
build=${1:?build directory}
runs=${2:-5}
file=${3:-}
ours="$build/bin/editor_open"
painted="$build/bin/window_painted"
peer=$(command -v nedit || true)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if [ -z "$file" ]; then
  file="$work/big.int"
  awk 'BEGIN { for (i = 1; i <= 1000000; i++)
    printf "%8d %4d %4d %4d %12.3f %10.3f  reflection\n", i, i%40-20, i%30-15, i%20-10, i*0.5, i*0.01 }' >"$file"
fi
name=$(basename "$file")
cat "$file" >/dev/null  # both start from a warm page cache

stats() {  # median, min and max of column $1 of stdin
  sort -n -k"$1" | awk -v c="$1" '{ v[NR] = $c } END {
    m = NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2
    printf "median %s  min %s  max %s", m, v[1], v[NR] }'
}

run_ours() { "$painted" "$name" 2 "$ours" "$file" --hold >>"$work/ours"; }
run_peer() { [ -z "$peer" ] || "$painted" "$name" 2 "$peer" -xrm 'nedit*autoSave: False' "$file" >>"$work/peer"; }

: >"$work/ours"; : >"$work/peer"; : >"$work/inside"
for i in $(seq "$runs"); do
  "$ours" "$file" >>"$work/inside"
  if [ $((i % 2)) -eq 1 ]; then run_ours; run_peer; else run_peer; run_ours; fi
done
echo "file: $file ($(wc -l <"$file") lines, $(($(stat -c %s "$file") / 1024)) kB), $runs paired runs"
echo "editor   to a painted page s: $(stats 1 <"$work/ours")"
echo "         rss kB then: $(stats 2 <"$work/ours")   2 s later: $(stats 3 <"$work/ours")"
echo "editor, measured inside: first page s: $(stats 1 <"$work/inside")   rss kB then: $(stats 2 <"$work/inside")"
echo "                         whole text s: $(stats 4 <"$work/inside")   rss kB then: $(stats 5 <"$work/inside")"
if [ -n "$peer" ]; then
  echo "peer     to a painted page s: $(stats 1 <"$work/peer")"
  echo "         rss kB then: $(stats 2 <"$work/peer")   2 s later: $(stats 3 <"$work/peer")"
  echo "editor minus peer, run by run, s: $(paste -d' ' "$work/ours" "$work/peer" |
    awk '{ printf "%.3f\n", $1 - $4 }' | stats 1)"
else
  echo "no peer editor installed"
fi
