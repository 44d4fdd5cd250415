#!/bin/sh
# dialog_load.sh BUILD: loads and unloads the main form a thousand times on an
# Xvfb of its own and prints the time per cycle and the growth of memory.
build=$1
bin=$(cd "$build" && pwd)/bin
[ -x "$bin/dialog_load" ] || { echo "dialog_load: $bin/dialog_load is missing"; exit 1; }
exec xvfb-run -a -s "-screen 0 1280x1024x24" "$bin/dialog_load" 1000
