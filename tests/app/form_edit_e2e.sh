#!/bin/sh
# Editing a job in the form from the user's hand, on the silicon job: bad
# numbers stop a Save with their message and leave the file alone; ticking Twin
# brings the twin group alive, the spinner makes five domains, a matrix typed
# into row 4 survives scrolling away and back, and Save writes it.
#   form_edit_e2e.sh GOMBREL EXAMPLES XHELPER OUTDIR
gombrel=$1; examples=$2; xhelper=$3; out=$4
title="GUI Ombrel Program"
dir=$(mktemp -d)
pid=""
trap '[ -n "$pid" ] && kill $pid 2>/dev/null; rm -rf "$dir"' EXIT
fail() { echo "FAIL: $*"; cat "$dir/out.txt" 2>/dev/null; exit 1; }
mkdir -p "$out"
cp "$examples"/silicon/* "$dir"/ || fail "no silicon example"
cd "$dir" || exit 1
cp si.omb original.omb

"$gombrel" si.omb > out.txt 2>&1 & pid=$!
"$xhelper" wait "$title" 20 > /dev/null || fail "no window titled '$title'"
sleep 0.5
# The form is 383 by 351 dialog units; positions below are taken from its layout.
area=$("$xhelper" area "$title" 383 351) || fail "no form in the window"
fw=${area%%x*}; rest=${area#*x}; fh=${rest%%+*}; rest=${rest#*+}; fx=${rest%%+*}; fy=${rest#*+}
px() { echo $((fx + fw * $1 / 383)); }
py() { echo $((fy + fh * $1 / 351)); }
alive() { kill -0 $pid 2>/dev/null || fail "the program ended ($1)"; }

# Click into a field at (x, y) in dialog units and replace its text.
retype() {
  xdotool mousemove "$(px "$1")" "$(py "$2")" click 1
  sleep 0.1
  xdotool key End shift+Home BackSpace
  [ -n "$3" ] && xdotool type --delay 5 "$3"
  sleep 0.1
}
save() {
  xdotool key alt+f Down Down Down Return
  sleep 0.3
  alive "$1"
}
# A bad field answers a Save with an error box; the box goes with Return.
error_box() {
  "$xhelper" wait "Error Message" 10 > /dev/null || fail "no error box for $1"
  sleep 0.3
  [ -n "$2" ] && import -window root "$out/$2" 2>/dev/null
  xdotool key Return
  sleep 0.3
  if "$xhelper" wait "Error Message" 0.5 > /dev/null 2>&1; then fail "the error box stayed open ($1)"; fi
  alive "$1"
}

# A cell of five numbers.
retype 200 66 "5.4307 5.4307 5.4307 90 90"
save "cell of five numbers"
error_box "a cell of five numbers" form_bad_cell_message.png
cmp -s si.omb original.omb || fail "a bad cell changed the job file"
retype 200 66 "5.4307 5.4307 5.4307 90 90 90"

# A transformation matrix of eight numbers.
retype 200 154 "1 0 0 0 1 0 0 0"
save "matrix of eight numbers"
error_box "a matrix of eight numbers"
cmp -s si.omb original.omb || fail "a bad matrix changed the job file"
retype 200 154 ""

# Letters don't enter a real field: the wavelength keeps only its digits.
retype 266 83 "abc1.5"

# Twin on, five domains, a matrix in row 4.
xdotool mousemove "$(px 17)" "$(py 227)" click 1
sleep 0.3
retype 150 226 "merohedral"
for i in 1 2 3 4 5; do
  xdotool mousemove "$(px 345)" "$(py 245)" click 1
  sleep 0.15
done
sleep 0.3
import -window root "$out/form_twin_grid.png" 2>/dev/null
# Into the first cell, down to row 4, type, move away and back.
xdotool mousemove "$(px 150)" "$(py 282)" click 1
sleep 0.2
xdotool key Down Down Down
xdotool type --delay 5 "0 1 0 1 0 0 0 0 -1"
xdotool key Return Up Up Up Down Down Down Down Up Up Up
sleep 0.2
import -window root "$out/form_twin_grid_scrolled.png" 2>/dev/null
# Focus out of the grid first: without a window manager, a dialog opened
# while a grid cell holds the focus does not get the keyboard.
xdotool mousemove "$(px 150)" "$(py 50)" click 1
save "twin job"
# The selector proposes the job's name; the twinned job goes into a new file.
"$xhelper" wait "Save Ombrel Files" 10 > /dev/null || fail "no file selector for Save"
sleep 0.3
xdotool type --delay 5 "twin.omb"
xdotool key Return
sleep 0.8
alive "after saving the twin job"
[ -f twin.omb ] || fail "the twin job was not saved"
grep -q "merohedral" twin.omb || fail "the twin name was not saved"
n=$(grep -c "^TWIN_mat" twin.omb)
[ "$n" -eq 5 ] || fail "$n matrices saved, not 5"
grep "^TWIN_mat" twin.omb | sed -n 4p | grep -q "0.0000 *1.0000 *0.0000 *1.0000" || fail "row 4 lost its matrix: $(grep '^TWIN_mat' twin.omb | sed -n 4p)"
grep -q "^WAVE *1.5" twin.omb || fail "the wavelength took letters: $(grep '^WAVE' twin.omb)"
cmp -s si.omb original.omb || fail "saving under a new name changed the old job file"

xdotool key alt+f Up Return
i=0
while kill -0 $pid 2>/dev/null; do
  i=$((i + 1)); [ $i -gt 50 ] && fail "still running after Exit"
  sleep 0.1
done
echo "PASS"
