#!/bin/sh
# The test chart drawn by the raster device, against Ghostscript's rendering
# of the same chart as EPS: the two pictures must agree within a tolerance.
# Both, and a picture of where they differ, stay in the shots folder.
# Usage: raster_chart.sh GRCHART SHOTS_DIR
set -e
grchart=$1
shots=$2
mkdir -p "$shots"
cd "$shots"
rm -f raster-chart.png raster-chart.eps raster-chart-gs.png raster-chart-diff.png
"$grchart" --png raster-chart.png --eps raster-chart.eps
gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=png16m -r72 -dEPSCrop -sOutputFile=raster-chart-gs.png raster-chart.eps

[ "$(identify -format '%wx%h' raster-chart.png)" = 640x480 ] || { echo "raster chart at the wrong size"; exit 1; }
# Text goes through the stroke font here and through device fonts there, and
# the edges of fills fall a pixel apart: the drawing itself must agree.
differ=$(compare -metric AE -fuzz 20% raster-chart.png raster-chart-gs.png raster-chart-diff.png 2>&1 || true)
total=$((640 * 480))
echo "differing pixels: $differ of $total"
[ "$differ" -lt $((total * 7 / 100)) ] || { echo "raster chart disagrees"; exit 1; }
colours=$(identify -format '%k' raster-chart.png)
[ "$colours" -gt 256 ] || { echo "raster chart: only $colours colours"; exit 1; }
echo "raster chart ok"
