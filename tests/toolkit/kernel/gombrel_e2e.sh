#!/bin/sh
# The program on an example job: its root window with the six-part status bar,
# seen on a screenshot and through the window's properties, then closed through
# the window manager protocol with exit status 0.
gombrel=$1; job=$2; xhelper=$3
title="GUI Ombrel Program"
dir=$(mktemp -d)
pid=""
trap '[ -n "$pid" ] && kill $pid 2>/dev/null; rm -rf "$dir"' EXIT
fail() { echo "FAIL: $*"; [ -f "$dir/out.txt" ] && cat "$dir/out.txt"; exit 1; }

if [ ! -f "$job" ]; then
  # No example job in the tree: a small one of our own.
  mkdir -p "$dir/job"
  job="$dir/job/e2e.omb"
  printf 'TITLE End-to-end job\nINPFIL e2e.hkl\nOUTFIL e2e\nSPGR P 1\nWAVE 1.5418\nHKL_T 1\n' > "$job"
fi
jobdir=$(cd "$(dirname "$job")" && pwd)/
jobname=$(basename "$job"); codefile=${jobname%%.*}

cd "$dir" || exit 1
"$gombrel" "$job" > out.txt 2>&1 & pid=$!
win=$("$xhelper" wait "$title" 20) || fail "no window titled '$title'"
geometry=$("$xhelper" geometry "$title")
w=${geometry%%x*}; rest=${geometry#*x}; h=${rest%%+*}; rest=${rest#*+}; x=${rest%%+*}; y=${rest#*+}
[ "$w" -ge 300 ] && [ "$h" -ge 200 ] || fail "window too small: $geometry"
[ "$x" -eq 15 ] && [ "$y" -eq 15 ] || fail "window not at 15,15: $geometry"

# The status bar texts as the program wrote them.
"$xhelper" prop "$title" _ZELV_STATUSBAR > bar.txt || fail "no status bar property"
printf 'Work Directory:\n%s\nCode File:\n%s\nDate:\n%s\n' "$jobdir" "$codefile" "$(date +%d/%m/%Y)" > want.txt
diff want.txt bar.txt || fail "status bar texts differ"

# The screenshot shows the window: the bar's colour along its bottom edge, and
# the bar's text drawn in it.
sleep 0.3
import -window root shot.png 2>/dev/null || { sleep 0.2; import -window root shot.png; } || fail "no screenshot"
bar_pixel=$(convert shot.png -format "%[pixel:p{$((x + w - 5)),$((y + h - 4))}]" info:)
case "$bar_pixel" in
  "srgb(224,220,208)"|"rgb(224,220,208)"|"#E0DCD0") ;;
  *) fail "status bar colour at the bottom edge is $bar_pixel" ;;
esac
colours=$(convert shot.png -crop "200x20+$((x + 2))+$((y + h - 22))" +repage -format %k info:)
[ "$colours" -gt 10 ] || fail "no antialiased text in the status bar ($colours colours)"

"$xhelper" close "$title" || fail "close request not sent"
i=0
while kill -0 $pid 2>/dev/null && [ $i -lt 200 ]; do
  sleep 0.05; i=$((i+1))
done
kill -0 $pid 2>/dev/null && fail "still running after the close request"
wait $pid; rc=$?; pid=""
[ "$rc" -eq 0 ] || fail "exit status $rc"
echo ok
