#!/bin/sh
# run_gombrel.sh SOURCE_DIR GOMBREL: tools/run-gombrel without a display, on a
# job whose path has blanks, a quote and non-ASCII letters, on a missing job, and
# with a program that fails. A screenshot left from an earlier run must never survive.
src=$1; gombrel=$(cd "$(dirname "$2")" && pwd)/$(basename "$2")
script=$src/tools/run-gombrel
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
failures=0; passes=0
check() {  # check NAME CONDITION...
  name=$1; shift
  if "$@"; then passes=$((passes+1)); else echo "FAIL: $name"; failures=$((failures+1)); fi
}
# A build directory of its own, so that the real one's screenshot is untouched.
build="$tmp/build dir"
mkdir -p "$build/bin"
ln -s "$gombrel" "$build/bin/gombrel"
shot="$build/screenshot.png"
stale() { echo stale > "$shot"; }
is_png() { [ "$(head -c 4 "$shot" | tail -c 3)" = "PNG" ]; }

jobdir="$tmp/job dir/it's ü"
mkdir -p "$jobdir"
cp "$src"/examples/silicon/* "$jobdir/"

stale
out=$(env -u DISPLAY sh "$script" "$build" "$jobdir/si.omb" 2>&1); rc=$?
echo "$out"
check "job under blanks, quote and non-ASCII runs" [ $rc -eq 0 ]
check "a fresh screenshot is written" is_png

stale
out=$(env -u DISPLAY sh "$script" "$build" "$tmp/no such/job.omb" 2>&1); rc=$?
echo "$out"
check "missing job fails" [ $rc -ne 0 ]
check "missing job is named in the message" sh -c 'printf "%s" "$1" | grep -q "no such job file"' sh "$out"
check "missing job leaves no screenshot" [ ! -e "$shot" ]

# A program that dies at once, with a failure status.
rm "$build/bin/gombrel"
printf '#!/bin/sh\nexit 3\n' > "$build/bin/gombrel"
chmod +x "$build/bin/gombrel"
stale
out=$(env -u DISPLAY sh "$script" "$build" "$jobdir/si.omb" 2>&1); rc=$?
echo "$out"
check "failing program fails" [ $rc -ne 0 ]
check "its status is reported" sh -c 'printf "%s" "$1" | grep -q "status 3"' sh "$out"
check "failing program leaves no screenshot" [ ! -e "$shot" ]

# One that ends cleanly without ever showing a window is no success either.
printf '#!/bin/sh\nexit 0\n' > "$build/bin/gombrel"
stale
env -u DISPLAY sh "$script" "$build" "$jobdir/si.omb"; rc=$?
check "program without a window fails" [ $rc -ne 0 ]
check "program without a window leaves no screenshot" [ ! -e "$shot" ]

echo "$passes passed, $failures failed"
[ $failures -eq 0 ]
