#!/bin/sh
# The manual from the user's hand, with a stand-in HTML viewer that the
# initialisation file names: without a suite directory Help > Manual and F1
# do nothing; with one, both start the viewer on the suite's manual; a viewer
# that isn't there brings up a message, and the program goes on.
#   manual_e2e.sh GOMBREL EXAMPLES XHELPER
gombrel=$1; examples=$2; xhelper=$3
title="GUI Ombrel Program"
dir=$(mktemp -d)
pid=""
trap '[ -n "$pid" ] && kill $pid 2>/dev/null; [ -f "$dir/viewer.pid" ] && kill $(cat "$dir/viewer.pid") 2>/dev/null; rm -rf "$dir"' EXIT
fail() { echo "FAIL: $*"; cat "$dir/out.txt" 2>/dev/null; exit 1; }
cp "$examples"/k2so4_twin/* "$dir"/ || fail "no twinned example"
mkdir -p "$dir/suite dir/Html"
echo "<html></html>" > "$dir/suite dir/Html/ombrel.html"
cat > "$dir/viewer" <<VIEWER
#!/bin/sh
echo \$\$ > "$dir/viewer.pid"
printf '%s\n' "\$1" >> "$dir/seen"
exec sleep 60
VIEWER
chmod +x "$dir/viewer"
cd "$dir" || exit 1

# Starts the program with a viewer command and a suite directory ("" none).
start() {
  printf 'BROWSER = %s\n' "$1" > zelvy.ini
  if [ -n "$2" ]; then TARNHOLD="$2" ZELVINIT="$dir/zelvy.ini" "$gombrel" k2so4.omb > out.txt 2>&1 & pid=$!
  else env -u TARNHOLD ZELVINIT="$dir/zelvy.ini" "$gombrel" k2so4.omb > out.txt 2>&1 & pid=$!; fi
  "$xhelper" wait "$title" 20 > /dev/null || fail "no window titled '$title'"
  g=$("$xhelper" geometry "$title")
  w=${g%%x*}; r=${g#*x}; r=${r#*+}; x=${r%%+*}; y=${r#*+}
  sleep 0.5
}
stop() { kill $pid 2>/dev/null; wait $pid 2>/dev/null; pid=""; }
manual_menu() { xdotool mousemove $((x + w / 2)) $((y + 200)) key alt+h Down Return; sleep 1; }
f1() { xdotool mousemove $((x + w / 2)) $((y + 200)) key F1; sleep 1; }

start "$dir/viewer" ""
manual_menu
f1
[ -f seen ] && fail "a viewer started without a suite directory"
if "$xhelper" wait "Information Message" 1 > /dev/null 2>&1; then fail "a message without a suite directory"; fi
kill -0 $pid 2>/dev/null || fail "the program ended"
stop

start "$dir/viewer" "$dir/suite dir"
manual_menu
[ "$(cat seen 2>/dev/null)" = "file://$dir/suite%20dir/Html/ombrel.html" ] || fail "viewer saw '$(cat seen 2>/dev/null)'"
kill "$(cat viewer.pid)"; rm -f seen viewer.pid
f1
[ "$(cat seen 2>/dev/null)" = "file://$dir/suite%20dir/Html/ombrel.html" ] || fail "F1: viewer saw '$(cat seen 2>/dev/null)'"
kill "$(cat viewer.pid)"; rm -f seen viewer.pid
stop

start "$dir/no-such-viewer" "$dir/suite dir"
manual_menu
"$xhelper" wait "Information Message" 10 > /dev/null || fail "no message for a missing viewer"
xdotool key Return
sleep 0.5
kill -0 $pid 2>/dev/null || fail "the program ended after the message"
stop
echo "PASS"
