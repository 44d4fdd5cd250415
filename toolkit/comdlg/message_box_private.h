// The message box on show, for those that must reach its widgets.
#pragma once

#include <X11/Intrinsic.h>

// The innermost message box on show (the Motif message box; its shell is its
// parent), null when none is up.
Widget yyComDlgBoxWidget();
