#!/bin/sh
# Without a display the toolkit stops at once with its message and status 9.
probe=$1
out=$(env -u DISPLAY "$probe"); rc=$?
expected="Abnormal exit (code 9) : Cannot open X display. Check DISPLAY environment variable."
[ "$rc" -eq 9 ] || { echo "exit status $rc, expected 9"; exit 1; }
[ "$out" = "$expected" ] || { echo "output: '$out'"; exit 1; }
out=$(DISPLAY=:7791.0 "$probe"); rc=$?  # a display that isn't there
[ "$rc" -eq 9 ] && [ "$out" = "$expected" ] || { echo "DISPLAY=:7791: status $rc, output '$out'"; exit 1; }
echo "ok"
