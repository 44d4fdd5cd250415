# What the end-to-end tests of the program share: starting it, finding its
# windows, the menus by position, reading the editor, answering boxes.
# Sourced with gombrel, xhelper and out set.
title="GUI Ombrel Program"
dir=$(mktemp -d)
pid=""
trap '[ -n "$pid" ] && kill $pid 2>/dev/null; rm -rf "$dir"' EXIT
fail() { echo "FAIL: $*"; cat "$dir/out.txt" 2>/dev/null; exit 1; }
mkdir -p "$out"
alive() { kill -0 $pid 2>/dev/null || fail "the program ended ($1)"; }
# A top-level window whose title starts with the text, for up to SECONDS.
window_like() {
  i=0
  while [ $i -lt $(($2 * 10)) ]; do
    w=$(xdotool search --onlyvisible --name "^$1" 2>/dev/null | head -1)
    [ -n "$w" ] && { xdotool getwindowname "$w"; return 0; }
    i=$((i + 1)); sleep 0.1
  done
  return 1
}
start() {
  (cd "${workdir:-$dir}" && exec $runas "$gombrel" "$@" > "$dir/out.txt" 2>&1) & pid=$!
  "$xhelper" wait "$title" 20 > /dev/null || fail "no window titled '$title'"
  sleep 0.5
  area=$("$xhelper" area "$title" 383 351) || fail "no form in the window"
  fw=${area%%x*}; rest=${area#*x}; fh=${rest%%+*}; rest=${rest#*+}; fx=${rest%%+*}; fy=${rest#*+}
  geometry=$("$xhelper" geometry "$title")
  rest=${geometry#*+}; wx=${rest%%+*}; wy=${rest#*+}
}
px() { echo $((fx + fw * $1 / 383)); }
py() { echo $((fy + fh * $1 / 351)); }
menu_run() { xdotool mousemove $((wx + 47)) $((wy + 9)) click 1; }
# The View menu's item N (1 output, 2 input, 3 intensities, 4 rejected).
menu_view() {
  xdotool mousemove $((wx + 82)) $((wy + 9)) click 1
  sleep 0.3
  n=$1; keys=""
  while [ $n -gt 0 ]; do keys="$keys Down"; n=$((n - 1)); done
  xdotool key $keys Return
}
# Waits for the editor, checks its text against a file, closes it.
editor_shows() {
  name=$(window_like "Ombrel Text Editor" 15) || fail "no editor for $1"
  sleep 0.5
  if [ -n "$2" ]; then
    # All of the editor's text selected, and read back as the selection.
    eg=$("$xhelper" geometry "$name")
    ew=${eg%%x*}; r=${eg#*x}; eh=${r%%+*}; r=${r#*+}; ex=${r%%+*}; ey=${r#*+}
    xdotool mousemove $((ex + ew / 2)) $((ey + eh / 2)) click 1
    xdotool key ctrl+slash
    sleep 0.3
    [ "$(xclip -o -selection primary 2>/dev/null)" = "$(cat "$2")" ] ||
      fail "the editor does not show $2: $(xclip -o -selection primary 2>/dev/null | head -3)"
  fi
  [ -n "$3" ] && import -window root "$out/$3" 2>/dev/null
  "$xhelper" close "$name"
  sleep 0.5
  if window_like "Ombrel Text Editor" 1 > /dev/null; then fail "the editor stayed open ($1)"; fi
  alive "after closing the editor ($1)"
}
box() {
  "$xhelper" wait "$1" 10 > /dev/null || fail "no box titled '$1' for $2"
  sleep 0.3
  [ -n "$3" ] && import -window root "$out/$3" 2>/dev/null
  xdotool key Return
  sleep 0.3
  alive "$2"
}
exit_program() {
  xdotool mousemove $((wx + 300)) $((wy + 300)) key alt+f Up Return
  i=0
  while kill -0 $pid 2>/dev/null; do
    i=$((i + 1)); [ $i -gt 50 ] && fail "still running after Exit"
    sleep 0.1
  done
  wait $pid; rc=$?; pid=""
  [ $rc -eq 0 ] || fail "exit status $rc after Exit"
}

# The selector's own question over the selector, which bears the same title:
# the smaller of the two windows. The pointer goes over it, since without a
# window manager the keys go where the pointer is.
prompt_window() {
  i=0
  while [ $i -lt 50 ]; do
    for w in $(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null); do
      g=$(xdotool getwindowgeometry "$w" | awk '/Position/ {split($2, p, ","); print p[1], p[2]} /Geometry/ {split($2, s, "x"); print s[1], s[2]}' | tr '\n' ' ')
      set -- "$1" $g
      [ "$5" -lt 200 ] && { echo "$2 $3 $4 $5"; return 0; }
    done
    i=$((i + 1)); sleep 0.1
  done
  return 1
}
