#!/bin/sh
# The program from the user's hand: started on a twinned job, the main form
# shows the job; Help > About opens the About box, OK closes it, twice; Exit
# from the File menu ends the program with status 0. Screenshots stay in OUTDIR.
#   main_form_e2e.sh GOMBREL EXAMPLES XHELPER OUTDIR
gombrel=$1; examples=$2; xhelper=$3; out=$4
title="GUI Ombrel Program"
dir=$(mktemp -d)
pid=""
trap '[ -n "$pid" ] && kill $pid 2>/dev/null; rm -rf "$dir"' EXIT
fail() { echo "FAIL: $*"; cat "$dir/out.txt" 2>/dev/null; exit 1; }
mkdir -p "$out"
cp "$examples"/k2so4_twin/* "$dir"/ || fail "no twinned example"
cd "$dir" || exit 1

"$gombrel" k2so4.omb > out.txt 2>&1 & pid=$!
"$xhelper" wait "$title" 20 > /dev/null || fail "no window titled '$title'"
geometry=$("$xhelper" geometry "$title")
w=${geometry%%x*}; rest=${geometry#*x}; h=${rest%%+*}; rest=${rest#*+}; x=${rest%%+*}; y=${rest#*+}
# The root window takes the form's size: it is far larger than an empty window's minimum.
[ "$w" -gt 500 ] && [ "$h" -gt 500 ] || fail "root window of ${w}x${h} cannot hold the form"
sleep 0.5
import -window root "$out/main_form.png" 2>/dev/null

about() {
  xdotool mousemove $((x + w / 2)) $((y + 200)) key alt+h Down Down Return
  "$xhelper" wait "About..." 10 > /dev/null || fail "About did not open ($1)"
  g=$("$xhelper" geometry "About...")
  aw=${g%%x*}; r=${g#*x}; ah=${r%%+*}; r=${r#*+}; ax=${r%%+*}; ay=${r#*+}
  sleep 0.3
  [ "$1" = first ] && import -window root "$out/about.png" 2>/dev/null
  # OK sits at about (240, 59) of the box's 271 by 88 dialog units.
  xdotool mousemove $((ax + aw * 240 / 271)) $((ay + ah * 59 / 88)) click 1
  sleep 0.5
  if "$xhelper" wait "About..." 1 > /dev/null 2>&1; then fail "OK left the About box open ($1)"; fi
  kill -0 $pid 2>/dev/null || fail "the program ended after About ($1)"
}
about first
about second

xdotool mousemove $((x + w / 2)) $((y + 200)) key alt+f Up Return
i=0
while kill -0 $pid 2>/dev/null; do
  i=$((i + 1)); [ $i -gt 50 ] && fail "still running after Exit"
  sleep 0.1
done
wait $pid; rc=$?; pid=""
[ $rc -eq 0 ] || fail "exit status $rc after Exit"
echo "PASS"
