#!/bin/sh
# The test chart on the screen path: drawn into a window, captured, and
# checked to show the chart's colours.
# Usage: screen.sh GRCHART SHOTS_DIR
set -e
grchart=$1
shots=$2
mkdir -p "$shots"
rm -f "$shots/chart-screen.png"
"$grchart" --screen 4 &
pid=$!
sleep 2
import -window root "$shots/chart-screen.png"
wait $pid
colours=$(identify -format '%k' "$shots/chart-screen.png")
echo "screen capture: $colours colours"
# The palette alone brings 256 colours, the gradients many more.
[ "$colours" -gt 300 ] || { echo "the chart is not on the screen"; exit 1; }
