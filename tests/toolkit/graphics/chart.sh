#!/bin/sh
# The test chart as PostScript, EPS and SVG, read back by Ghostscript and
# rsvg-convert, and as a PNG page; the EPS and SVG renderings must agree
# within a tolerance, and the image in the chart must show the same in all.
# Usage: chart.sh GRCHART SHOTS_DIR
set -e
grchart=$1
shots=$2
mkdir -p "$shots"
cd "$shots"
rm -f chart.ps chart.eps chart.svg chart-*.png
"$grchart" --ps chart.ps --eps chart.eps --svg chart.svg --png chart-page.png

gs_png() {
  out=$(gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=png16m -dTextAlphaBits=4 -dGraphicsAlphaBits=4 -r72 "$@" 2>&1)
  if [ -n "$out" ]; then echo "ghostscript: $out"; exit 1; fi
}
gs_png -sOutputFile=chart-ps.png chart.ps
gs_png -dEPSCrop -sOutputFile=chart-eps.png chart.eps
rsvg-convert -b white -o chart-svg.png chart.svg

# The EPS box is the page, and Ghostscript sizes the image by it.
grep -qx '%%BoundingBox: 0 0   640   480' chart.eps || { echo "bad bounding box"; exit 1; }
[ "$(identify -format '%wx%h' chart-eps.png)" = 640x480 ] || { echo "EPS rendered at the wrong size"; exit 1; }
[ "$(identify -format '%wx%h' chart-ps.png)" = 595x842 ] || { echo "PS page is not A4"; exit 1; }
python3 -c "import sys, xml.dom.minidom; xml.dom.minidom.parse(sys.argv[1])" chart.svg

# Pixels that differ by more than a fifth of full scale: fonts and line
# widths differ a little between the two renderers, the drawing must not.
differ=$(compare -metric AE -fuzz 20% chart-eps.png chart-svg.png chart-diff.png 2>&1 || true)
total=$((640 * 480))
echo "differing pixels: $differ of $total"
[ "$differ" -lt $((total * 4 / 100)) ] || { echo "renderings disagree"; exit 1; }
# Each rendering shows the chart at all: many colours, not a blank page.
for f in chart-ps.png chart-eps.png chart-svg.png; do
  colours=$(identify -format '%k' "$f")
  [ "$colours" -gt 256 ] || { echo "$f: only $colours colours"; exit 1; }
done
[ "$(identify -format '%wx%h' chart-page.png)" = 640x480 ] || { echo "PNG page at the wrong size"; exit 1; }

# Three cells of the chart's image, its bottom right, bottom left and top
# right, by the colour of each: a turned, mirrored or shifted image fails.
pixel() {
  convert "$1" -crop "1x1+$2+$3" -depth 8 txt:- | tail -1 | grep -o '#[0-9A-F]\{6\}'
}
near() {  # two hexadecimal colours within 40 a component
  python3 -c "import sys; a, b = (bytes.fromhex(v[1:]) for v in sys.argv[1:]); sys.exit(max(abs(x - y) for x, y in zip(a, b)) > 40)" "$1" "$2"
}
for f in chart-eps.png chart-svg.png chart-page.png; do
  for cell in "236 313 #00FFFF" "187 313 #FFFF00" "236 283 #0000FF"; do
    set -- $cell
    got=$(pixel "$f" "$1" "$2")
    near "$got" "$3" || { echo "$f: image cell at $1,$2 is $got, not $3"; exit 1; }
  done
done
echo "chart ok"
