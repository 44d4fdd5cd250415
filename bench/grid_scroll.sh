#!/bin/sh
# grid_scroll.sh BUILD: the grid of 100,000 rows by nine reals against a plain
# list of the same rows, on an Xvfb of its own: fill, memory, scroll steps.
build=$1
bin=$(cd "$build" && pwd)/bin
[ -x "$bin/grid_scroll" ] || { echo "grid_scroll: $bin/grid_scroll is missing"; exit 1; }
exec xvfb-run -a -s "-screen 0 1280x1024x24" "$bin/grid_scroll" "${2:-40}"
