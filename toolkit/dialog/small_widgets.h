// Progress bars, trackbars, images on fields and tab fields, addressed by
// field identifier on the current dialog. Each routine hands back its error
// code (0 none, 1005 no dialog, 1006 another field type). Free of X.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <cstddef>
#include <vector>

// Progress bar: mode 1 adds the value to the position, other modes set it.
void yydialogputprogress_(int fieldid, int value, int mode, int& error);
void yydialoggetprogressbar_(int fieldid, int& value, int& error);
void yydialograngeprogressbar_(int fieldid, int minimum, int maximum, int& error);

// Trackbar: values are clamped to the range; a range whose minimum isn't
// below its maximum is ignored.
void yydialogputtrackbar_(int fieldid, int value, int& error);
void yydialoggettrackbar_(int fieldid, int& value, int& error);
void yydialograngetrackbar_(int fieldid, int minimum, int maximum, int tickSpacing, int& error);
void yydialogtrackbarstep_(int fieldid, int lineStep, int pageStep, int& error);
void yyinfodialogfieldtrackrange_(int fieldid, int& minimum, int& maximum, int& error);
// Number of tick marks a trackbar shows (0 without ticks).
int yyDialogTrackbarTickCount(int fieldid);

// Images: type 1 bitmap resource, 2 icon resource, 3 bitmap handle.
void WDialogPutImage(int fieldid, int image, int type = 1, int options = 0);
void yydialogputimage_(int fieldid, int image, int type, int options, int width, int height, int& error);
// An image from raw RGBA bytes, width x height.
void yydialogputimageicon_(int fieldid, std::span<const std::uint8_t> rgba, int width, int height, int& error);

// Tab fields: the page in view without a message (1012 a disabled or
// unknown page), a page's state (1 enabled, 0 disabled).
void yydialogsettab_(int fieldid, int pageId, int& error);
void yydialoggettab_(int fieldid, int& pageId, int& error);
void yydialogtabstate_(int fieldid, int pageId, int state, int& error);
// Identifiers of the fields of the page in view of a tab field, in table
// order, so that a focus walk can pass through the page; empty for anything
// else.
std::vector<int> yyDialogTabPageFields(int fieldid);

// Filled width of a progress bar of `width` pixels (frame included).
int yyProgressFilledWidth(int width, int position, int minimum, int maximum);
// Ticks of a trackbar range: count, 0 for a spacing that isn't above 0.
int yyTrackbarTickCount(int minimum, int maximum, int spacing);

// Layout of a tab strip, in pixels: each tab comes with its width; x and
// row are filled in. Tabs wrap into rows only with multiLine; rows of tabs
// of alignment 0 are then stretched to the usable width. Returns the rows.
struct TabPlace {
  int x = 0, width = 0, row = 0;
};
int yyTabWidgetLayout(std::vector<TabPlace>& tabs, int usableWidth, bool multiLine, int alignment, bool buttons);
void yyTabWidgetJustify(std::vector<TabPlace>& tabs, std::size_t first, std::size_t last, int usableWidth);
// Width of one tab from its text width: the fixed width with alignment 1,
// else the text and its margin, at least the minimum width.
int yyTabWidgetSize(int textWidth, int alignment, bool buttons, int fixedWidth, int minimumWidth);
// Loads dialog `pageId` as a page of a tab field, under that label.
void yydialogaddtabpage_(int fieldid, int pageId, std::string_view label, int& error);
