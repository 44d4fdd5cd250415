#!/bin/sh
# The support library stands on the ground floor: its test programs load no X
# or Motif library.
status=0
for exe in "$@"; do
  libs=$(ldd "$exe") || { echo "ldd failed on $exe"; exit 1; }
  if echo "$libs" | grep -E 'lib(X11|Xt|Xm|Xft|Xmu|Xext|xcb)\.so'; then
    echo "$exe loads X libraries"; status=1
  fi
done
exit $status
