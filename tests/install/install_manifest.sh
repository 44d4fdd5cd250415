#!/bin/sh
# An installation into a scratch DESTDIR holds exactly the files of the
# manifest; the desktop entry is valid; both manual pages render without a
# warning; the icons are PNGs of their sizes; the program and the stand-in
# carry no path into the source or build tree.
#   install_manifest.sh BUILD SOURCE
build=$1; src=$2
dest=$(mktemp -d)
trap 'rm -rf "$dest"' EXIT
fail() { echo "FAIL: $*"; exit 1; }

DESTDIR="$dest" cmake --install "$build" --prefix /usr --strip > "$dest.log" 2>&1 || { cat "$dest.log"; fail "cmake --install"; }
rm -f "$dest.log"
(cd "$dest" && find . \( -type f -o -type l \) | sed 's|^\./||' | LC_ALL=C sort) > "$dest/../manifest.$$"
LC_ALL=C sort "$src/tests/install/manifest.txt" | diff - "$dest/../manifest.$$" > /dev/null ||
  { diff "$src/tests/install/manifest.txt" "$dest/../manifest.$$"; rm -f "$dest/../manifest.$$"; fail "the installed files differ from the manifest (< expected, > installed)"; }
rm -f "$dest/../manifest.$$"

out=$(desktop-file-validate "$dest/usr/share/applications/gombrel.desktop" 2>&1) || fail "desktop-file-validate: $out"
[ -z "$out" ] || fail "desktop-file-validate has remarks: $out"
grep -q '^MimeType=application/x-ombrel-job;$' "$dest/usr/share/applications/gombrel.desktop" || fail "no MIME type in the desktop entry"
grep -q 'pattern="\*\.omb"' "$dest/usr/share/mime/packages/gombrel.xml" || fail "the MIME type does not claim *.omb"

for page in gombrel ombrel; do
  gz="$dest/usr/share/man/man1/$page.1.gz"
  warnings=$(zcat "$gz" | LC_ALL=C.UTF-8 groff -ww -man -Tutf8 -z 2>&1)
  [ -z "$warnings" ] || fail "groff warns on $page.1: $warnings"
  warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man -l "$gz" 2>&1 > "$dest/page.txt")
  [ -z "$warnings" ] || fail "man -l warns on $page.1: $warnings"
  grep -q "EXIT STATUS" "$dest/page.txt" || fail "$page.1 has no exit statuses"
done
rm -f "$dest/page.txt"
for s in OPTIONS zelvy.ini TARNHOLD ENVIRONMENT FILES; do
  zcat "$dest/usr/share/man/man1/gombrel.1.gz" | grep -q "$s" || fail "gombrel.1 says nothing of $s"
done

for size in 16 24 32 48 64 128 256; do
  got=$(identify -format '%m %wx%h' "$dest/usr/share/icons/hicolor/${size}x$size/apps/gombrel.png" 2>&1)
  [ "$got" = "PNG ${size}x$size" ] || fail "icon $size: $got"
done

for exe in usr/bin/gombrel usr/libexec/gombrel/ombrel; do
  for tree in "$src" "$build"; do
    strings "$dest/$exe" | grep -qF "$tree" && fail "$exe names $tree"
  done
done
echo PASS
