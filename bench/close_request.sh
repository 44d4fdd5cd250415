#!/bin/sh
# close_request.sh BUILD [RUNS]: the window manager's close request, sent once
# the moment the probe's window maps, must end the probe every time. Starts
# the probe RUNS times (default 200) on an Xvfb of its own, with LOAD busy
# loops beside it (default 2) so that the request meets the program at every
# point of its start-up; prints the count of requests left unanswered within
# five seconds and exits 1 when there is any.
build=$1; runs=${2:-200}; load=${LOAD:-2}
bin=$(cd "$build" && pwd)/bin
[ -x "$bin/zelv_probe" ] && [ -x "$bin/zelv_xhelper" ] || { echo "usage: close_request.sh BUILD [RUNS]"; exit 2; }
dir=$(mktemp -d)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$dir/display" >/dev/null 2>&1 & xvfb=$!
i=0; while [ ! -s "$dir/display" ]; do i=$((i+1)); [ $i -gt 100 ] && exit 1; sleep 0.1; done
export DISPLAY=:$(cat "$dir/display")
busy=""
for k in $(seq 1 "$load"); do sh -c 'while :; do :; done' & busy="$busy $!"; done
trap 'kill $busy $xvfb 2>/dev/null; rm -rf "$dir"' EXIT
lost=0
for k in $(seq 1 "$runs"); do
  # maptime sends the request right after the map and kills what is left after 5 s.
  start=$(date +%s%N)
  "$bin/zelv_xhelper" maptime "$bin/zelv_probe" --title "Close $k" >/dev/null 2>&1
  ms=$(( ($(date +%s%N) - start) / 1000000 ))
  [ "$ms" -ge 4900 ] && { lost=$((lost + 1)); echo "run $k: unanswered"; }
done
echo "close requests unanswered: $lost of $runs"
[ "$lost" -eq 0 ]
