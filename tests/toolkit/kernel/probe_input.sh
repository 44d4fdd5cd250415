#!/bin/sh
# Real input through the X server: keys, buttons, double clicks, motion, the
# status bar's context click, resizing, a timer and the close protocol, each
# compared with the message that the probe prints for it.
probe=$1; xhelper=$2
dir=$(mktemp -d); out=$dir/out.txt
pid=""
trap '[ -n "$pid" ] && kill $pid 2>/dev/null; rm -rf "$dir"' EXIT
fail() { echo "FAIL: $*"; echo "--- probe output:"; cat "$out"; exit 1; }

# xdotool, tried again when a busy server refuses the connection.
xdo() {
  for i in 1 2 3 4 5 6 7 8 9; do
    xdotool "$@" 2>/dev/null && return 0
    sleep 0.05
  done
  xdotool "$@"
}

seen=0  # lines of the output already matched
# expect TEXT: waits for a line holding TEXT after the last matched one.
expect() {
  i=0
  while [ $i -lt 100 ]; do
    n=$(awk -v start="$seen" -v pat="$1" 'NR > start && index($0, pat) { print NR; exit }' "$out")
    if [ -n "$n" ]; then seen=$n; return 0; fi
    i=$((i+1)); sleep 0.05
  done
  fail "no line with '$1' after line $seen"
}
# nothing_new: no further line appears within a short while.
nothing_new() {
  sleep 0.3
  [ "$(wc -l < "$out")" -eq "$seen" ] || fail "unexpected: $(tail -n +$((seen+1)) "$out")"
}

# MouseUp, MouseMove, MouseDoubleClick and ContextClick on; a one-shot timer 7 after 300 ms.
"$probe" --enable 5,6,16,18 --timer 300:7:0 --size 400x300 > "$out" & pid=$!
expect "ready 400 300"
"$xhelper" wait "Zelv Probe" 10 >/dev/null || fail "no window"
expect "TimerExpired win=0 v1=7 "

# The client area lies at 0,0 of the screen: pixels are screen positions.
xdo mousemove 100 100
expect "MouseMove win=0 v1=0 v2=0 v3=0 v4=0 x=2512 y=3349 px=100 py=100"
xdo click 1
expect "MouseDown win=0 v1=1 v2=0 v3=0 v4=0 x=2512 y=3349 px=100 py=100"
expect "MouseUp win=0 v1=1 v2=4 v3=0"
sleep 0.6  # beyond the double-click time
xdo click --repeat 2 --delay 80 1
expect "MouseDown win=0 v1=1 v2=0"
expect "MouseUp win=0 v1=1 v2=4"
expect "MouseDoubleClick win=0 v1=1 v2=0"
expect "MouseUp win=0 v1=1 v2=4"
sleep 0.6
xdo click 3
expect "MouseDown win=0 v1=3 v2=0"
expect "MouseUp win=0 v1=3 v2=16"
xdo keydown ctrl click 2 keyup ctrl
expect "MouseDown win=0 v1=2 v2=1"
expect "MouseUp win=0 v1=2 v2=9"

# Keys: the clicks gave the client the focus.
for k in "shift+Tab:274 v2=2 v3=0 v4=9" "ctrl+Tab:9 v2=1 v3=0 v4=9" "ctrl+F1:341 v2=1 v3=0 v4=301" \
         "shift+F1:321 v2=2 v3=0 v4=301" "ctrl+q:17 v2=1 v3=0 v4=81" "KP_Enter:13 v2=0 v3=0 v4=13" \
         "Return:13 v2=0 v3=0 v4=13" "shift+Up:262 v2=2 v3=0 v4=258" "ctrl+Left:269 v2=1 v3=0 v4=261" \
         "Prior:262 v2=0 v3=0 v4=262" "Home:270 v2=0" "Delete:127 v2=0" "Escape:27 v2=0" "F12:312 v2=0" \
         "a:97 v2=0 v3=0 v4=97" "shift+a:65 v2=2 v3=0 v4=65" "BackSpace:8 v2=0"; do
  key=${k%%:*}; want=${k#*:}
  xdo key "$key"
  expect "KeyDown win=0 v1=$want"
done
xdo key Shift_L Control_L  # modifier keys alone make nothing
nothing_new
xdo mousemove 120 130 sleep 0.1 key x
expect "KeyDown win=0 v1=120 v2=0 v3=0 v4=120 x=3012 y=4349 px=120 py=130"

# The status bar below the client: a right click names the part under the pointer.
xdo mousemove 50 310 click 3
expect "ContextClick win=0 v1=-1 v2=0 v3=102 v4=1 x=50 y=310"
xdo mousemove 200 310 click 3
expect "ContextClick win=0 v1=-1 v2=0 v3=102 v4=2"
xdo mousemove 390 310 keydown shift click 3 keyup shift
expect "ContextClick win=0 v1=-1 v2=2 v3=102 v4=3"

# A new size reaches the application; the same size again does not.
win=$("$xhelper" wait "Zelv Probe" 5)
xdo windowsize "$win" 500 400
expect "Resize win=0 v1=500 "
xdo windowsize "$win" 500 400
sleep 0.3
grep -c "^Resize" "$out" | grep -qx 1 || fail "a second Resize"

# The window manager's close: the probe leaves its loop and ends with status 0.
"$xhelper" close "Zelv Probe"
expect "CloseRequest win=0 v1=0 v2=0 v3=0 v4=0"
wait $pid; rc=$?; pid=""
[ "$rc" -eq 0 ] || fail "probe status $rc"
echo ok
