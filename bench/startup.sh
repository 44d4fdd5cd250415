#!/bin/sh
# startup.sh BUILD: time from starting gombrel on an example job to its mapped
# root window, on an Xvfb of its own, and beside it the start of "xterm -e true"
# as the floor of an X client. Prints the medians over RUNS runs (default 15).
build=$1
runs=${RUNS:-15}
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$(cd "$build" && pwd)/bin
xhelper=$bin/zelv_xhelper
job=$root/examples/silicon/si.omb
for f in "$bin/gombrel" "$xhelper"; do
  [ -x "$f" ] || { echo "startup: $f is missing (build with tests on)"; exit 1; }
done
command -v Xvfb >/dev/null || { echo "startup: no Xvfb"; exit 1; }

dir=$(mktemp -d)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -ac 3>"$dir/display" >"$dir/xvfb.log" 2>&1 &
xvfb=$!
trap 'kill $xvfb 2>/dev/null; rm -rf "$dir"' EXIT
i=0
while [ ! -s "$dir/display" ]; do
  i=$((i+1)); [ $i -gt 100 ] && { echo "startup: Xvfb did not start"; exit 1; }
  sleep 0.1
done
DISPLAY=":$(cat "$dir/display")"; export DISPLAY

median() {
  sort -n "$1" | awk '{ v[NR] = $1 } END { if (NR % 2) print v[(NR + 1) / 2]; else print (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

# Alternating, so that both see the same machine load.
n=0
while [ $n -lt "$runs" ]; do
  (cd "$dir" && "$xhelper" maptime "$bin/gombrel" "$job") >> "$dir/gombrel.txt"
  (cd "$dir" && "$xhelper" maptime xterm -e true 2>/dev/null) >> "$dir/xterm.txt"
  n=$((n+1))
done
g=$(median "$dir/gombrel.txt"); x=$(median "$dir/xterm.txt")
printf 'gombrel %s to its mapped root window: median %.1f ms over %d runs\n' "$(basename "$job")" "$g" "$(wc -l < "$dir/gombrel.txt")"
printf 'xterm -e true to its mapped window:  median %.1f ms over %d runs\n' "$x" "$(wc -l < "$dir/xterm.txt")"
awk -v g="$g" -v x="$x" 'BEGIN { printf "ratio gombrel / xterm: %.2f (aim: 1.5 or less)\n", g / x }'
