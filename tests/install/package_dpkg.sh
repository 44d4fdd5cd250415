#!/bin/sh
# The Debian package from end to end, as root: built with CPack, checked by
# lintian, installed with dpkg, the installed program started on an installed
# example from a directory with no build tree, the job run with the installed
# stand-in (no reduction code on the path), the window closed with status 0,
# the package removed, and no file of it left behind.
#   package_dpkg.sh BUILD XHELPER OUTDIR
build=$1; xhelper=$2; out=$3
skip() { echo "SKIP: $*"; exit 77; }
[ "$(id -u)" -eq 0 ] || skip "installing a package needs root"
command -v dpkg > /dev/null && command -v lintian > /dev/null || skip "dpkg or lintian missing"
dpkg-query -W -f='${Status}' gombrel 2>/dev/null | grep -q "install ok installed" &&
  skip "gombrel is installed on this machine already, and the test would remove it"

gombrel=/usr/bin/gombrel
. "$(dirname "$0")/../app/e2e_lib.sh"
installed=0
trap '[ -n "$pid" ] && kill $pid 2>/dev/null; [ $installed -eq 1 ] && dpkg -r gombrel > /dev/null 2>&1; rm -rf "$dir"' EXIT

(cd "$build" && cpack -G DEB -B "$dir/pkg" > "$dir/cpack.log" 2>&1) || { cat "$dir/cpack.log"; fail "cpack"; }
deb=$(ls "$dir"/pkg/gombrel_*.deb 2>/dev/null | head -1)
[ -n "$deb" ] || fail "no package built"
lintian "$deb" > "$dir/lintian.txt" 2>&1
grep -q "^E: " "$dir/lintian.txt" && { cat "$dir/lintian.txt"; fail "lintian finds errors"; }
dpkg-deb -f "$deb" Depends | grep -q "libxm4" || fail "the computed dependencies miss the widget library: $(dpkg-deb -f "$deb" Depends)"

dpkg -i "$deb" > "$dir/dpkg.log" 2>&1 || { cat "$dir/dpkg.log"; fail "dpkg -i"; }
installed=1
dpkg -L gombrel > "$dir/files.txt"

# From a directory of its own, the build tree out of the search path.
mkdir -p "$dir/job" "$dir/home"
cp /usr/share/gombrel/examples/silicon/* "$dir/job/"
PATH=/usr/sbin:/usr/bin:/sbin:/bin; export PATH
HOME="$dir/home"; export HOME
command -v ombrel > /dev/null && echo "note: a real ombrel is on the path; the stand-in is not what runs"
workdir="$dir/job"
start si.omb
menu_run
editor_shows "Run with the installed stand-in" "" package_installed_run.png
ls "$dir"/job/*.out > /dev/null 2>&1 || fail "the installed stand-in wrote no results"
"$xhelper" close "$title"
i=0
while kill -0 $pid 2>/dev/null; do
  i=$((i + 1)); [ $i -gt 100 ] && fail "still running after the close request"
  sleep 0.1
done
wait $pid; rc=$?; pid=""
[ $rc -eq 0 ] || fail "exit status $rc after the close request"

dpkg -r gombrel > "$dir/dpkg.log" 2>&1 || { cat "$dir/dpkg.log"; fail "dpkg -r"; }
installed=0
while read -r f; do
  [ -d "$f" ] && continue
  [ -e "$f" ] || [ -L "$f" ] && fail "dpkg -r left $f behind"
done < "$dir/files.txt"
for d in /usr/share/gombrel /usr/libexec/gombrel /usr/share/doc/gombrel; do
  [ -e "$d" ] && fail "dpkg -r left $d behind"
done
echo PASS
