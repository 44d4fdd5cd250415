#!/bin/sh
# The program's menu bar from the user's hand: each menu dropped down with the
# keyboard and walked with the arrow keys, File opened by a click, Exit chosen.
# Screenshots stay in OUTDIR to be looked at.
#   gombrel_menus.sh GOMBREL JOB XHELPER OUTDIR
gombrel=$1; job=$2; xhelper=$3; out=$4
title="GUI Ombrel Program"
highlight="rgb(49,106,197)"  # the selected item's background in the default look
dir=$(mktemp -d)
pid=""
trap '[ -n "$pid" ] && kill $pid 2>/dev/null; rm -rf "$dir"' EXIT
fail() { echo "FAIL: $*"; [ -f "$dir/out.txt" ] && cat "$dir/out.txt"; exit 1; }
mkdir -p "$out"

if [ ! -f "$job" ]; then
  mkdir -p "$dir/job"
  job="$dir/job/menus.omb"
  printf 'TITLE Menu walk\nINPFIL m.hkl\nOUTFIL m\nSPGR P 1\nWAVE 1.5418\nHKL_T 1\n' > "$job"
fi
cd "$dir" || exit 1
"$gombrel" "$job" > out.txt 2>&1 & pid=$!
"$xhelper" wait "$title" 20 > /dev/null || fail "no window titled '$title'"
geometry=$("$xhelper" geometry "$title")
w=${geometry%%x*}; rest=${geometry#*x}; rest=${rest#*+}; x=${rest%%+*}; y=${rest#*+}

# Pixels of the highlight colour in a rectangle of the screen.
lit() {
  import -window root "$dir/s.png" 2>/dev/null || return 1
  convert "$dir/s.png" -crop "$1" +repage -fill black +opaque "$highlight" -fill white -opaque "$highlight" \
    -format '%[fx:int(mean*w*h+0.5)]' info:
}
bar="${w}x12+$x+$((y + 4))"
below="300x200+$x+$((y + 28))"

xdotool mousemove $((x + w / 2)) $((y + 200))
sleep 0.3
[ "$(lit "$bar")" -eq 0 ] || fail "an item is highlighted before any menu is open"
for m in f v h; do
  xdotool key alt+$m
  sleep 0.3
  [ "$(lit "$bar")" -gt 0 ] || fail "alt+$m highlights nothing on the bar"
  xdotool key --delay 60 Down Down Up
  sleep 0.3
  [ "$(lit "$below")" -gt 0 ] || fail "alt+$m: no highlighted item under the bar"
  cp "$dir/s.png" "$out/gombrel_menu_$m.png"
  xdotool key Escape
  sleep 0.3
  [ "$(lit "$bar")" -eq 0 ] || fail "Escape left the menu of alt+$m open"
done

# File by a click; the shot is kept as the picture of the open File menu.
xdotool mousemove $((x + 20)) $((y + 10)) click 1
sleep 0.4
import -window root "$out/gombrel_file_menu.png" 2>/dev/null
[ "$(lit "$below")" -eq 0 ] || fail "a File item is highlighted before the pointer reaches it"
xdotool key Escape

# Exit ends the program with status 0.
xdotool mousemove $((x + w / 2)) $((y + 200)) key alt+f Up Return
i=0
while kill -0 $pid 2>/dev/null && [ $i -lt 200 ]; do sleep 0.05; i=$((i+1)); done
kill -0 $pid 2>/dev/null && fail "still running after Exit"
wait $pid; rc=$?; pid=""
[ "$rc" -eq 0 ] || fail "exit status $rc"
echo ok
