#!/bin/sh
# The CGM chart read by the office suite's importer, a reader this project did
# not write: it must load the file, and its rendering must hold the chart's
# solid fills and gradients. Its importer refuses text whose base line is
# turned (a case shown below, so that the day it takes it is seen), so the
# chart goes to it with the device texts upright.
# Usage: cgm_office.sh GRCHART SHOTS_DIR
grchart=$1; shots=$2
command -v soffice > /dev/null || { echo "SKIP: no office suite (soffice) installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*"; exit 1; }
mkdir -p "$shots" "$work/home"
cd "$work"

office_pdf() {
  rm -f "${1%.cgm}.pdf"
  HOME="$work/home" timeout 180 soffice --headless --norestore --convert-to pdf --outdir "$work" "$1" > office.log 2>&1
  [ -s "${1%.cgm}.pdf" ]
}

"$grchart" --device-text-angles 0 --cgm chart-upright.cgm || fail "grchart"
office_pdf chart-upright.cgm || { cat office.log; fail "the office suite does not load the chart"; }
out=$(gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=png16m -r72 -sOutputFile="$shots/chart-cgm-office.png" chart-upright.pdf 2>&1)
[ -z "$out" ] || fail "ghostscript on the office suite's PDF: $out"
colours=$(identify -format '%k' "$shots/chart-cgm-office.png")
[ "$colours" -gt 200 ] || fail "the office suite's rendering has only $colours colours: the gradients are lost"
# The solid magenta and yellow boxes of the fill row, and the cyan frame.
for c in '#C000C0' '#F0F000' '#00E0E0'; do
  n=$(convert "$shots/chart-cgm-office.png" -fuzz 12% -fill white -opaque "$c" -fill black +opaque white \
      -format '%[fx:int(mean*w*h)]' info:)
  [ "$n" -gt 200 ] || fail "no fill of colour $c in the office suite's rendering ($n pixels)"
done

"$grchart" --cgm chart-turned.cgm || fail "grchart"
if office_pdf chart-turned.cgm; then
  echo "note: the office suite now loads turned text too"
else
  echo "note: the office suite still refuses the chart's turned device text"
fi
echo PASS
