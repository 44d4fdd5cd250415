#!/bin/sh
# start DIR: starts an Xvfb on a free display, writes its number to DIR/display.
# stop DIR: ends it.
set -e
cmd=$1; dir=$2
mkdir -p "$dir"
case "$cmd" in
start)
  if [ -f "$dir/pid" ] && kill -0 "$(cat "$dir/pid")" 2>/dev/null; then exit 0; fi
  rm -f "$dir/display" "$dir/pid"
  exec 3>"$dir/display.tmp"
  Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -ac >"$dir/xvfb.log" 2>&1 &
  echo $! >"$dir/pid"
  exec 3>&-
  i=0
  while [ ! -s "$dir/display.tmp" ]; do
    i=$((i+1)); [ $i -gt 100 ] && { echo "Xvfb did not start"; cat "$dir/xvfb.log"; exit 1; }
    sleep 0.1
  done
  mv "$dir/display.tmp" "$dir/display"
  echo "Xvfb on :$(cat "$dir/display")"
  ;;
stop)
  if [ -f "$dir/pid" ]; then
    pid=$(cat "$dir/pid")
    kill "$pid" 2>/dev/null || true
    # Gone before its display number can be taken again.
    i=0; while kill -0 "$pid" 2>/dev/null && [ $i -lt 50 ]; do sleep 0.1; i=$((i+1)); done
  fi
  rm -f "$dir/pid" "$dir/display"
  ;;
esac
