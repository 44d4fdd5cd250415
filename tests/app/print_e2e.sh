#!/bin/sh
# File > Print from the user's hand: with no print command on the search path
# the message says so and where the PostScript went, and the file stays; a
# print command that fails leaves the file too, with its exit code in the
# message; one that works gets a document Ghostscript reads, and the file goes.
#   print_e2e.sh GOMBREL EXAMPLES XHELPER OUTDIR
gombrel=$1; examples=$2; xhelper=$3; out=$4
. "$(dirname "$0")/e2e_lib.sh"

cp "$examples"/silicon/* "$dir/"
mkdir -p "$dir/nobin" "$dir/failing" "$dir/working"
printf '#!/bin/sh\necho "lpr: Error - no default destination available." >&2\nexit 1\n' > "$dir/failing/lpr"
printf '#!/bin/sh\ncp "$1" "%s/printed.ps"\n' "$dir" > "$dir/working/lpr"
chmod +x "$dir/failing/lpr" "$dir/working/lpr"
document="$dir/si.omb.ps"

print() { xdotool mousemove $((wx + 300)) $((wy + 300)) key alt+f Up Up Return; }
# The box's text, read from the screen.
box_text() {
  "$xhelper" wait "$1" 15 > /dev/null || fail "no box titled '$1' ($2)"
  sleep 0.5
  w=$(xdotool search --onlyvisible --name "^$1" | head -1)
  import -window "$w" -resize 200% "$out/print_$2.png" 2>/dev/null
  tesseract "$out/print_$2.png" - 2>/dev/null | tr '\n' ' '
}

runas="env PATH=$dir/nobin"
start si.omb
print
text=$(box_text "Information Message" missing)
echo "$text" | grep -q 'print command' || fail "no word of the print command: $text"
echo "$text" | grep -q 'not found' || fail "the box does not say it was not found: $text"
echo "$text" | grep -q 'si.omb.ps' || fail "the box does not say where the file is: $text"
xdotool key Return; sleep 0.3; alive "after the box"
[ -s "$document" ] || fail "no PostScript left at $document"
head -1 "$document" | grep -q '^%!PS' || fail "$document is not PostScript"
gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=nullpage "$document" > "$dir/gs.log" 2>&1 ||
  fail "Ghostscript refuses the job's document: $(cat "$dir/gs.log")"
grep -q 'CELL' "$document" || fail "the job's lines are not in the document"
exit_program
rm -f "$document"

runas="env PATH=$dir/failing:$PATH"
start si.omb
print
text=$(box_text "Error Message" failing)
echo "$text" | grep -q 'failed' || fail "the box does not say the command failed: $text"
xdotool key Return; sleep 0.3; alive "after the box"
[ -s "$document" ] || fail "a failed print command took the document with it"
exit_program
rm -f "$document"

runas="env PATH=$dir/working:$PATH"
start si.omb
print
sleep 2
alive "after printing"
if "$xhelper" wait "Message" 1 > /dev/null 2>&1; then fail "a box after a print that worked"; fi
[ -s "$dir/printed.ps" ] || fail "the print command got no document"
[ -e "$document" ] && fail "the document stayed after printing"
gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=nullpage "$dir/printed.ps" > "$dir/gs.log" 2>&1 ||
  fail "Ghostscript refuses the printed document: $(cat "$dir/gs.log")"
exit_program
echo "print e2e: ok"
