#!/bin/sh
# The layer check must fail on an include that goes up, and pass without it.
check=$1
dir=$(mktemp -d); trap 'rm -rf "$dir"' EXIT
mkdir -p "$dir/toolkit/base" "$dir/toolkit/kernel" "$dir/support"
printf '#include "toolkit/base/low.h"\n' > "$dir/toolkit/kernel/high.h"
printf '#pragma once\n' > "$dir/toolkit/base/low.h"
printf '#include "toolkit/base/low.h"\n#include <vector>\n' > "$dir/support/numbers.cpp"
/usr/bin/python3 "$check" "$dir" || { echo "a clean tree was refused"; exit 1; }
printf '#include "toolkit/kernel/high.h"\n' >> "$dir/toolkit/base/low.h"
out=$(/usr/bin/python3 "$check" "$dir") && { echo "an upward include passed"; exit 1; }
echo "$out" | grep -q 'toolkit/base/low.h:2: includes toolkit/kernel/high.h: an include that goes up a layer' ||
  { echo "unexpected report: $out"; exit 1; }
printf '#include <X11/Xlib.h>\n' >> "$dir/support/numbers.cpp"
out=$(/usr/bin/python3 "$check" "$dir") || true
echo "$out" | grep -q 'support/numbers.cpp:3: includes X11/Xlib.h: X headers stay above the kernel' ||
  { echo "an X header in the support library passed: $out"; exit 1; }
echo "planted faults caught"
