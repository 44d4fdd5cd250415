#!/bin/sh
# startup.sh BUILD: start-up of gombrel on an example job against "xterm -e true",
# the floor of an X client, on an Xvfb of its own.
#
# Time: from the fork to the last drawing on the screen that QUIET_MS (default
# 500) of stillness follow, seen from outside through the server's DAMAGE
# extension: the job has been read, the form filled and painted. xterm's clock
# stops at its last drawing before its window goes. Runs are paired, each
# gombrel run with one xterm run, the order turning from pair to pair; the
# figure is the median of the per-pair ratios with its quartiles. An xterm run
# that ends before it maps is started again within its pair, up to three times.
#
# Requests and round trips: one run of each under the bench/xcount.cpp shim,
# counted up to the moment the program first waits 250 ms for input (xterm,
# which never idles, up to its exit).
#
# Left out: the window manager (there is none), the text cursor's blinking
# (switched off through the X resources, else the screen never goes still),
# a cold start (files are in the page cache after the first run), the cost of
# the QUIET_MS wait itself, and a real display's latency.
#
# Run it as an ordinary user: for root the X library keeps no compose cache,
# so gombrel parses its UTF-8 locale's compose table at every start (xterm
# parses it in any case), which is not what a user's start costs.
build=$1
runs=${RUNS:-15}
quiet=${QUIET_MS:-500}
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$(cd "$build" && pwd)/bin
xhelper=$bin/zelv_xhelper
shim=$bin/libzelv_xcount.so
job=$root/examples/silicon/si.omb
for f in "$bin/gombrel" "$xhelper" "$shim"; do
  [ -e "$f" ] || { echo "startup: $f is missing (build with tests and benchmarks on)"; exit 1; }
done
for t in Xvfb xterm xrdb; do
  command -v $t >/dev/null || { echo "startup: no $t (tools/install-deps installs it)"; exit 1; }
done

dir=$(mktemp -d)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -ac -noreset 3>"$dir/display" >"$dir/xvfb.log" 2>&1 &
xvfb=$!
trap 'kill $xvfb 2>/dev/null; rm -rf "$dir"' EXIT
i=0
while [ ! -s "$dir/display" ]; do
  i=$((i+1)); [ $i -gt 100 ] && { echo "startup: Xvfb did not start"; exit 1; }
  sleep 0.1
done
DISPLAY=":$(cat "$dir/display")"; export DISPLAY
# -noreset keeps these between clients.
echo "*blinkRate: 0" | xrdb -load -

# paint CMD...: appends "paint_ms map_ms" to $out; false when it never mapped.
paint() { (cd "$dir" && "$xhelper" painttime "$quiet" "$@" 2>/dev/null) >> "$out"; }
gombrel() { out=$dir/gombrel.txt; paint "$bin/gombrel" "$job"; }
xterm_run() {
  out=$dir/xterm.txt
  for try in 1 2 3; do
    paint xterm -e true && return 0
    retries=$((retries+1))
  done
  echo "startup: xterm never mapped in three tries"; exit 1
}

retries=0
n=0
while [ $n -lt "$runs" ]; do
  if [ $((n % 2)) -eq 0 ]; then
    gombrel || { echo "startup: gombrel did not map"; exit 1; }
    xterm_run
  else
    xterm_run
    gombrel || { echo "startup: gombrel did not map"; exit 1; }
  fi
  n=$((n+1))
done

(cd "$dir" && "$xhelper" painttime "$quiet" env LD_PRELOAD="$shim" XCOUNT_OUT="$dir/gombrel.count" \
  "$bin/gombrel" "$job" >/dev/null 2>&1)
(cd "$dir" && "$xhelper" painttime "$quiet" env LD_PRELOAD="$shim" XCOUNT_OUT="$dir/xterm.count" \
  xterm -e true >/dev/null 2>&1)

# quartiles FILE COLUMN: first quartile, median, third quartile.
quartiles() {
  awk -v c="$2" '{ print $c }' "$1" | sort -n | awk '
    { v[NR] = $1 }
    function q(p,  h, l) { h = (NR - 1) * p + 1; l = int(h); return l >= NR ? v[NR] : v[l] + (h - l) * (v[l + 1] - v[l]) }
    END { printf "%.1f %.1f %.1f", q(0.25), q(0.5), q(0.75) }'
}
paste -d ' ' "$dir/gombrel.txt" "$dir/xterm.txt" | awk '{ printf "%.4f\n", $1 / $3 }' > "$dir/ratio.txt"
set -- $(quartiles "$dir/gombrel.txt" 1); g1=$1 g=$2 g3=$3
set -- $(quartiles "$dir/xterm.txt" 1); x1=$1 x=$2 x3=$3
gm=$(quartiles "$dir/gombrel.txt" 2 | cut -d' ' -f2)
xm=$(quartiles "$dir/xterm.txt" 2 | cut -d' ' -f2)
set -- $(awk '{ print $1 * 100 }' "$dir/ratio.txt" > "$dir/ratio100.txt"; quartiles "$dir/ratio100.txt" 1)
r1=$1 r=$2 r3=$3
echo "start-up to the last paint before ${quiet} ms of stillness, $runs paired runs ($retries xterm runs repeated: ended before mapping)"
printf 'gombrel %s: median %.1f ms (quartiles %.1f, %.1f); first map at %.1f ms\n' "$(basename "$job")" "$g" "$g1" "$g3" "$gm"
printf 'xterm -e true:  median %.1f ms (quartiles %.1f, %.1f); first map at %.1f ms\n' "$x" "$x1" "$x3" "$xm"
awk -v r="$r" -v a="$r1" -v b="$r3" 'BEGIN { printf "paired ratio gombrel / xterm: median %.2f (quartiles %.2f, %.2f); aim 1.0 or less\n", r / 100, a / 100, b / 100 }'
for p in gombrel xterm; do
  if [ -s "$dir/$p.count" ]; then
    read -r req trips when < "$dir/$p.count"
    printf 'X traffic of %s until %s: %d requests, %d round trips\n' "$p" "$when" "$req" "$trips"
  else
    echo "X traffic of $p: not counted"
  fi
done
