#!/bin/sh
# The whole workflow from the user's hand, on a copy of each example: File >
# Open through the file selector (the path typed), a new wavelength, Save under
# a new name (the file checked line by line), Run with the stand-in reduction
# code (the editor shows the results, read back through the clipboard), each
# View item, New, Exit with status 0. Then what goes wrong: Run without the
# reduction code on the path, and a view of a result that does not exist.
#   workflow_e2e.sh GOMBREL EXAMPLES XHELPER OUTDIR
gombrel=$1; examples=$2; xhelper=$3; out=$4
bin=$(dirname "$gombrel")
. "$(dirname "$0")/e2e_lib.sh"

PATH="$bin:$PATH"; export PATH
first=1
for example in silicon/si mno_magnetic/mno k2so4_twin/k2so4; do
  job=${example#*/}
  rm -rf "$dir"/*
  mkdir -p "$dir/jobs"
  cp "$examples/$(dirname $example)"/* "$dir/jobs/"
  start

  # Open, by typing the job's path into the selector.
  xdotool mousemove $((wx + 300)) $((wy + 300)) key alt+f Down Down Return
  "$xhelper" wait "Open Ombrel Files" 10 > /dev/null || fail "no selector for Open ($job)"
  sleep 0.3
  [ $first -eq 1 ] && import -window root "$out/workflow_open_selector.png" 2>/dev/null
  xdotool type --delay 5 "$dir/jobs/$job.omb"
  xdotool key Return
  sleep 0.8
  alive "after Open ($job)"

  # A new wavelength, then Save under a new name.
  xdotool mousemove "$(px 266)" "$(py 83)" click 1
  xdotool key End shift+Home BackSpace
  xdotool type --delay 5 "0.8765"
  xdotool mousemove $((wx + 300)) $((wy + 300)) key alt+f Down Down Down Return
  "$xhelper" wait "Save Ombrel Files" 10 > /dev/null || fail "no selector for Save ($job)"
  sleep 0.3
  xdotool type --delay 5 "renamed.omb"
  xdotool key Return
  sleep 0.8
  saved="$dir/jobs/renamed.omb"
  [ -f "$saved" ] || fail "Save wrote no renamed.omb ($job)"
  grep -q "^WAVE *0.87650$" "$saved" || fail "the new wavelength is not saved: $(grep WAVE "$saved")"
  grep -q "^OUTFIL renamed$" "$saved" || fail "the saved job does not name its results: $(grep OUTFIL "$saved")"
  # Every other line of the job is as it was, but for the scale the form
  # always gives and the twin name and machine, which are read from column 9
  # with the blank in front of them.
  grep -v "^WAVE\|^OUTFIL\|^SCALE\|^!\|^TWIN_nam\|^TWIN_mac" "$dir/jobs/$job.omb" > "$dir/before.txt"
  grep -v "^WAVE\|^OUTFIL\|^SCALE\|^TWIN_nam\|^TWIN_mac" "$saved" > "$dir/after.txt"
  cmp -s "$dir/before.txt" "$dir/after.txt" || fail "Save changed other lines: $(diff "$dir/before.txt" "$dir/after.txt")"

  # Run: the results of the job just saved, in the editor.
  menu_run
  editor_shows "Run ($job)" "$dir/jobs/renamed.out" "$([ $first -eq 1 ] && echo workflow_run_editor.png)"
  [ -f "$dir/jobs/renamed.int" ] || fail "the reduction code left no renamed.int ($job)"

  if [ $first -eq 1 ]; then
    menu_view 1; editor_shows "View output" "$dir/jobs/renamed.out"
    menu_view 2; editor_shows "View input" "$saved"
    menu_view 3; editor_shows "View intensities" "$dir/jobs/renamed.int"
    menu_view 4; editor_shows "View rejected" "$dir/jobs/renamed.rej"
    # New empties the job: its results are named by their ending alone.
    xdotool mousemove $((wx + 300)) $((wy + 300)) key alt+f Down Return
    sleep 0.3
    menu_view 1
    box "Information Message" "a view of a result that does not exist" workflow_missing_result.png
  fi
  exit_program
  first=0
done

# Without the reduction code on the search path Run says so.
rm -rf "$dir"/*
cp "$examples"/silicon/* "$dir"/
PATH=/usr/bin:/bin; export PATH
start si.omb
menu_run
box "Error Message" "Run without the reduction code" workflow_no_reduction_code.png
[ -f "$dir/si.out" ] && fail "a run without the reduction code left results"
exit_program
echo "PASS"
