// The toolkit's small widget classes and the field routines behind them.
#pragma once

#include <X11/Intrinsic.h>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/small_widgets.h"

// "Progress": a sunken frame with a bar filled from the left.
extern WidgetClass progressWidgetClass;
inline constexpr char XtNbarPos[] = "barPos";
inline constexpr char XtNbarMin[] = "barMin";
inline constexpr char XtNbarMax[] = "barMax";
void yyProgressWidgetRedisplay(Widget w, XEvent* event, Region region);

// Field creation of progress bars and trackbars.
void yyDialogProgressCreate(DialogRecord& d, FieldRecord& f);
void yyDialogTrackbarCreate(DialogRecord& d, FieldRecord& f);
void yyDialogRangeTrackbar(FieldRecord& f, int minimum, int maximum, int tickSpacing);
// The common tail of images: a pixmap (and an armed one, or 2) onto a field.
void yyDialogPutImage(FieldRecord& f, Pixmap pixmap, Pixmap armed, int width, int height);
Pixmap yyDialogCreatePixmapFromData(const unsigned char* rgba, int width, int height, Pixel background);

// Tabs: the pages, their state and focus.
void yyTabWidgetStateX(FieldRecord& tab, int pageId, int state);
int yyTabWidgetGetTabState(const FieldRecord& tab, int index);
int yyTabWidgetGetTabStateX(const FieldRecord& tab, int pageId);
std::vector<int> yyTabWidgetListDialogsX(const FieldRecord& tab);
void yyTabWidgetSelect(FieldRecord& tab, int pageId);
void yyTabWidgetTakeFocusX(FieldRecord& tab);
void yyTabWidgetInitialize(DialogRecord& d, FieldRecord& f);
void yyTabWidgetMove(FieldRecord& tab, int direction);
void yyTabWidgetRealize(FieldRecord& tab);
void yyTabWidgetButtonAT(Widget w, XEvent* event, String* params, Cardinal* count);
// Loads a page dialog into a tab field and adds it with its label.
void yydialogaddtabpage_(FieldRecord& tab, int pageId, std::string_view label, int& error);
// The frame around labels, pictures and grids.
int yyBorderWidgetThickness(Widget border);
void yyBorderWidgetUpdateChild(Widget border);
void yyBorderWidgetUpdateParent(Widget border);
