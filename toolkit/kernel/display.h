// Display services: screen facts and the mouse cursor.
#pragma once

#include <optional>

// Screen facts: 1, 2 size, 3 colours, 6..26 scheme colours as 0xBBGGRR, ...
int WInfoScreen(int item);
// Mouse cursor shape 0..11 (12 and up: resource cursors); scope 0 all, 1 the
// graphics target only, 2 where no own cursor is set.
void WCursorShape(int shape, std::optional<int> scope = {});
// The graphics state to its defaults for the selected window, as a root
// window opens; the graphics layer does the work once it is attached.
void IGrInit();
