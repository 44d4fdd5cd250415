#!/bin/sh
# Start-up on a display: a version line in zelvy.ini ends the program after
# start-up, found directly or through ZELVINIT; a two-letter keyword does not;
# ZELVDEBUG with one digit prints the toolkit's reports, a longer value doesn't.
probe=$1; xhelper=$2
dir=$(mktemp -d); trap 'rm -rf "$dir"' EXIT
cd "$dir" || exit 1
fail() { echo "FAIL: $*"; exit 1; }
version="Abnormal exit (code 0) : Zelvane version 12.0e"

for line in "VER=" "verbose = anything"; do
  printf 'BROWSER=x\n%s\n' "$line" > zelvy.ini
  out=$("$probe"); rc=$?
  [ "$rc" -eq 0 ] && [ "$out" = "$version" ] || fail "'$line': status $rc, output '$out'"
done
printf 'VER=1\n' > other.ini
rm zelvy.ini
out=$(ZELVINIT="$dir/other.ini" "$probe"); rc=$?
[ "$rc" -eq 0 ] && [ "$out" = "$version" ] || fail "ZELVINIT: status $rc, output '$out'"

# Runs the probe until it is closed through the window manager protocol.
run() {
  title=$1; shift
  "$@" --title "$title" > out.txt & pid=$!
  "$xhelper" wait "$title" 10 >/dev/null || { kill $pid; fail "$title: no window"; }
  # One request, sent as soon as the window shows, is enough.
  "$xhelper" close "$title" || { kill $pid; fail "$title: close request not sent"; }
  i=0
  while kill -0 $pid 2>/dev/null; do
    i=$((i + 1)); [ $i -gt 100 ] && { kill $pid; fail "$title: still running after the close request"; }
    sleep 0.1
  done
  wait $pid; rc=$?
  [ "$rc" -eq 0 ] || fail "$title: status $rc"
  grep -q "^CloseRequest win=0" out.txt || fail "$title: no CloseRequest"
}

printf 've=1\nVersion\n' > zelvy.ini
run "Two Letters" "$probe"
rm zelvy.ini

run "Debug One" env ZELVDEBUG=1 "$probe" --select 9
grep -qx "Internal routine:YYWindowSelect Error=1003:Invalid window handle" out.txt || fail "no report at level 1"
run "Debug Twelve" env ZELVDEBUG=12 "$probe" --select 9
grep -q "Error=" out.txt && fail "a report at level 12"

# The input method's compose table is kept parsed in the user's cache folder,
# one only the user may enter; a folder the user names already is left alone.
mkdir home
run "Compose Cache" env -u XCOMPOSECACHE -u XDG_CACHE_HOME HOME="$dir/home" "$probe"
[ "$(stat -c %a "$dir/home/.cache/zelvane/compose" 2>/dev/null)" = 700 ] || fail "no private compose cache folder"
run "Own Cache" env XCOMPOSECACHE="$dir/mine" HOME="$dir/home2" "$probe"
[ -e "$dir/home2" ] && fail "a cache folder made beside the user's own choice"
echo ok
