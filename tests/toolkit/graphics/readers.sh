#!/bin/sh
# The test chart as HP-GL, HP-GL/2, CGM and DXF, each read back by a reader
# of its own: hp2xx renders the plotter files, ezdxf audits the DXF, and the
# binary metafile is walked element by element; the chart replayed from a
# memory metafile is rendered too. Renderings stay in SHOTS_DIR.
# Usage: readers.sh GRCHART SHOTS_DIR TESTS_DIR
set -e
grchart=$1
shots=$2
here=$3
mkdir -p "$shots"
cd "$shots"
rm -f chart.plt chart2.plt chart.cgm chart.dxf chart-hpgl*.png chart-cgm.* chart-dxf.* chart-replay.*
"$grchart" --hpgl chart.plt --hpgl2 chart2.plt --cgm chart.cgm --dxf chart.dxf --replay-svg chart-replay.svg

# hp2xx draws every page; a chart that it can't read comes out blank.
for f in chart.plt chart2.plt; do
  png=chart-hpgl${f#chart}
  png=${png%.plt}.png
  hp2xx -q -m png -f "$png" "$f" > hp2xx.log 2>&1 || { cat hp2xx.log; echo "hp2xx failed on $f"; exit 1; }
  [ -s "$png" ] || { echo "hp2xx wrote no picture for $f"; exit 1; }
  ink=$(convert "$png" -colorspace gray -threshold 50% -format '%[fx:round((1-mean)*w*h)]' info:)
  echo "$f: $ink dark pixels"
  [ "$ink" -gt 5000 ] || { echo "$f renders nearly blank"; exit 1; }
done
grep -q "^LBStroke" chart.plt && { echo "software text reached the plotter as a label"; exit 1; }

/usr/bin/python3 "$here/chart_readers.py" dxf chart.dxf chart-dxf.svg
/usr/bin/python3 "$here/chart_readers.py" cgm chart.cgm chart-cgm.svg
rsvg-convert -b white -o chart-dxf.png chart-dxf.svg
rsvg-convert -b white -o chart-cgm.png chart-cgm.svg
# The chart kept in a memory metafile and replayed shows its colours again.
rsvg-convert -b white -o chart-replay.png chart-replay.svg
colours=$(identify -format '%k' chart-replay.png)
[ "$colours" -gt 256 ] || { echo "replayed chart: only $colours colours"; exit 1; }
echo "readers ok"
