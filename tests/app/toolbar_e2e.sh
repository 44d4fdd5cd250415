#!/bin/sh
# The main window's toolbar from the user's hand: the program starts with
# its toolbar under the menu bar; resting the pointer on Save brings up its
# tooltip; View does nothing; the Exit button ends the program with status 0. Screenshots stay
# in OUTDIR.
#   toolbar_e2e.sh GOMBREL EXAMPLES XHELPER OUTDIR
gombrel=$1; examples=$2; xhelper=$3; out=$4
title="GUI Ombrel Program"
dir=$(mktemp -d)
pid=""
trap '[ -n "$pid" ] && kill $pid 2>/dev/null; rm -rf "$dir"' EXIT
fail() { echo "FAIL: $*"; cat "$dir/out.txt" 2>/dev/null; exit 1; }
mkdir -p "$out"
cp "$examples"/silicon/* "$dir"/ || fail "no example"
cd "$dir" || exit 1

xdotool mousemove 0 0
"$gombrel" si.omb > out.txt 2>&1 & pid=$!
"$xhelper" wait "$title" 20 > /dev/null || fail "no window titled '$title'"
sleep 0.5
# The first button (New) stands 2 pixels in and 4 down in its bar, 22 pixels square.
new=$(xwininfo -root -tree | grep ' 22x22+2+4 ' | head -1)
[ -n "$new" ] || fail "no toolbar button on the screen"
abs=${new##* +}; bx=${abs%%+*}; by=${abs#*+}
import -window root "$out/main_toolbar.png" 2>/dev/null

# Save is the third button: 22 pixels each. Its tooltip is a window of its own on the screen.
xdotool mousemove 0 0
sleep 0.3
before=$(xwininfo -root -children | wc -l)
xdotool mousemove $((bx + 2 * 22 + 11)) $((by + 11))
sleep 1.2
after=$(xwininfo -root -children | wc -l)
import -window root "$out/main_toolbar_tooltip.png" 2>/dev/null
[ "$after" -gt "$before" ] || fail "no tooltip window over Save"

# View, after the first separator, is a menu title: its button does nothing.
xdotool mousemove $((bx + 5 * 22 + 8 + 11)) $((by + 11)) click 1
sleep 0.5
kill -0 $pid 2>/dev/null || fail "the program ended on the View button"

# Exit is the ninth position: six buttons and two separators of 8 before it.
xdotool mousemove $((bx + 6 * 22 + 2 * 8 + 11)) $((by + 11)) click 1
i=0
while kill -0 $pid 2>/dev/null; do
  i=$((i + 1)); [ $i -gt 50 ] && fail "still running after the Exit button"
  sleep 0.1
done
wait $pid; rc=$?; pid=""
[ $rc -eq 0 ] || fail "exit status $rc after the Exit button"
echo "PASS"
