// The toolkit's widget classes: Zelv, the hidden application shell at the
// root of the widget tree, which holds the default font; and WinComponent, the
// client area of a window, a drawing area that creates its window with the
// toolkit's visual, colour map and attributes and redraws itself from a saved
// image or pixmap when it has one.
#pragma once

#include <X11/Intrinsic.h>

// Resource names of the class.
inline constexpr const char* XtNwinAttributes = "winAttributes";
inline constexpr const char* XtNwinMask = "winMask";
inline constexpr const char* XtNsavedImage = "savedImage";
inline constexpr const char* XtNsavedPixmap = "savedPixmap";
inline constexpr const char* XtNcolourMap = "colourMap";
inline constexpr const char* XtNwinVisual = "visual";

inline constexpr const char* XtNfastRefresh = "fastRefresh";
inline constexpr const char* XtNfontPointer = "fontPointer";

extern WidgetClass zelvWidgetClass;
extern WidgetClass windWidgetClass;

// Redraws the whole surface from its saved image or pixmap at once.
void yyWindowWidgetBlitAllNowX(Widget w);
