#!/bin/sh
# What goes wrong in the workflow, from the user's hand, each with its message
# and nothing lost: a job opened by double-clicking its name in the selector;
# Open of a binary file (refused, the form keeps the job it shows) and of a
# missing file (the selector asks, No goes back); Save into a read-only
# directory (the message, the old job file byte for byte as it was, no
# leftover). Root writes anywhere, so as root the last part runs the program
# as the user nobody.
#   workflow_failures_e2e.sh GOMBREL EXAMPLES XHELPER OUTDIR
gombrel=$1; examples=$2; xhelper=$3; out=$4
. "$(dirname "$0")/e2e_lib.sh"

open_selector() {
  xdotool mousemove $((wx + 300)) $((wy + 300)) key alt+f Down Down Return
  "$xhelper" wait "Open Ombrel Files" 10 > /dev/null || fail "no selector for Open ($1)"
  sleep 0.3
}
save_as() {
  xdotool mousemove $((wx + 300)) $((wy + 300)) key alt+f Down Down Down Return
  "$xhelper" wait "Save Ombrel Files" 10 > /dev/null || fail "no selector for Save ($2)"
  sleep 0.3
  xdotool type --delay 5 "$1"
  xdotool key Return
  sleep 0.8
}

chmod 755 "$dir"
mkdir -p "$dir/pick" "$dir/jobs"
cp "$examples"/silicon/* "$dir/jobs/"
cp "$examples"/silicon/si.omb "$dir/pick/"
head -c 5000 /dev/urandom > "$dir/jobs/junk.omb"
printf 'TITLE looks like a job\0but is not\n' >> "$dir/jobs/junk.omb"
start jobs/si.omb

# Double-click: into the directory by its typed path, then the only job there,
# on the list's first row.
open_selector "double-click"
xdotool type --delay 5 "$dir/pick/"
xdotool key Return
sleep 0.5
sg=$("$xhelper" geometry "Open Ombrel Files")
sh_=${sg#*x}; sh_=${sh_%%+*}
r=${sg#*+}; sx=${r%%+*}; sy=${r#*+}
# The list starts a fifth of the way down the dialog, whatever its font.
xdotool mousemove $((sx + 30)) $((sy + sh_ * 21 / 100 + 8)) click --repeat 2 --delay 80 1
sleep 0.8
window_like "Open Ombrel Files" 1 > /dev/null && fail "a double-click on the job did not open it"
alive "after the double-click"
# The job is now the one in pick/: Save proposes its name there.
save_as "picked.omb" "double-click"
[ -f "$dir/pick/picked.omb" ] || fail "the job opened by double-click is not saved beside it"
grep -q "^TITLE Silicon" "$dir/pick/picked.omb" || fail "the job opened by double-click is not the one shown"

# A binary file: refused with a message, the form keeps the job it showed.
open_selector "binary file"
xdotool type --delay 5 "$dir/jobs/junk.omb"
xdotool key Return
box "Error Message" "Open of a binary file" workflow_open_binary.png
save_as "$dir/jobs/kept.omb" "after the binary file"
[ -f "$dir/jobs/kept.omb" ] || fail "no job saved after the binary file was refused"
grep -q "^TITLE Silicon" "$dir/jobs/kept.omb" || fail "the form lost its job to the binary file: $(head -3 "$dir/jobs/kept.omb")"

# A missing file: the selector asks; No goes back to it, Escape leaves it.
open_selector "missing file"
xdotool type --delay 5 "$dir/jobs/nothere.omb"
xdotool key Return
p=$(prompt_window "Open Ombrel Files") || fail "no question for a missing file"
set -- $p
import -window root "$out/workflow_open_missing.png" 2>/dev/null
xdotool mousemove $(($1 + $3 / 2)) $(($2 + 20)) key Escape
sleep 0.5
prompt_window "Open Ombrel Files" > /dev/null 2>&1 && fail "the question stayed"
xdotool mousemove $((sx + 200)) $((sy + 200)) key Escape
sleep 0.5
window_like "Open Ombrel Files" 1 > /dev/null && fail "the selector stayed after Escape"
[ -e "$dir/jobs/nothere.omb" ] && fail "Open created the missing file"
alive "after the missing file"
exit_program

# Save into a read-only directory, over the job file that is there.
mkdir -p "$dir/ro" "$dir/home"
cp "$examples"/silicon/* "$dir/ro/"
cp "$dir/ro/si.omb" "$dir/si.before"
runas=""
if [ "$(id -u)" -eq 0 ]; then
  chown -R nobody "$dir/ro" "$dir/home"
  chown root "$dir/ro"
  runas="setpriv --reuid=nobody --regid=nogroup --clear-groups env HOME=$dir/home"
  $runas test -x "$gombrel" || { echo "SKIP read-only save: nobody cannot run $gombrel"; echo PASS; exit 0; }
fi
chmod 555 "$dir/ro"
workdir="$dir/ro"
HOME="$dir/home" start si.omb
xdotool mousemove "$(px 266)" "$(py 83)" click 1
xdotool key End shift+Home BackSpace
xdotool type --delay 5 "0.5555"
xdotool mousemove $((wx + 300)) $((wy + 300)) key alt+f Down Down Down Return
"$xhelper" wait "Save Ombrel Files" 10 > /dev/null || fail "no selector for Save (read-only)"
sleep 0.3
xdotool key Return
# Replace it? Yes, the left button.
p=$(prompt_window "Save Ombrel Files") || fail "no question before replacing the job file"
set -- $p
xdotool mousemove $(($1 + 35)) $(($2 + $4 - 32)) click 1
"$xhelper" wait "Error Message" 10 > /dev/null || fail "no message for a save into a read-only directory"
sleep 0.3
import -window root "$out/workflow_save_read_only.png" 2>/dev/null
xdotool key Return
# The failed save ends the program once the message is read.
i=0
while kill -0 $pid 2>/dev/null; do
  i=$((i + 1)); [ $i -gt 50 ] && fail "still running after the failed save"
  sleep 0.1
done
wait $pid; pid=""
cmp -s "$dir/si.before" "$dir/ro/si.omb" || fail "the job file changed in the failed save"
leftover=$(ls -A "$dir/ro" | grep -v '^si\.')
[ -z "$leftover" ] || fail "the failed save left files behind: $leftover"
chmod 755 "$dir/ro"
echo "PASS"
