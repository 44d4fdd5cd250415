#!/bin/sh
# grid_window.sh BUILD [ROUNDS]: a 100,000-row, 10-column CSV file loaded into
# a grid window and saved back, beside Python's csv module reading and writing
# the same file; sorting the rows by one column beside sort(1). On an Xvfb of
# its own.
build=$1
bin=$(cd "$build" && pwd)/bin
[ -x "$bin/grid_window_bench" ] || { echo "grid_window: $bin/grid_window_bench is missing"; exit 1; }
exec xvfb-run -a -s "-screen 0 1280x1024x24" "$bin/grid_window_bench" "${2:-7}"
