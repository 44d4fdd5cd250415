#!/bin/sh
# with-display.sh DIR cmd args...: runs cmd on the Xvfb whose number is in DIR/display.
dir=$1; shift
[ -s "$dir/display" ] || { echo "no X server: $dir/display missing"; exit 1; }
DISPLAY=":$(cat "$dir/display")"
export DISPLAY
exec "$@"
