// Memory bitmaps: a table of server pixmaps by handle (1 to the count the
// table was made for), copied from and to the present drawable, read and
// written as RGB integers (red in the low byte, rows from the top), turned,
// mirrored and resized; and a scrolling viewer of one bitmap.
// Every routine hands its error back in `error` (0 when done) and records it
// in the toolkit's error state.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace zelv_graphics {
constexpr int kErrorBitmapCreate = 1020, kErrorBitmapHandle = 1021, kErrorBitmapViewed = 1036,
              kErrorBitmapInUse = 1037, kErrorBitmapMode = 1043;
constexpr int kMaxBitmaps = 4096;
constexpr int kMaxBitmapSide = 32767;
// Stretch rules of yybitmapstretchmode's result.
constexpr int kStretchSample = 3, kStretchAverage = 4;
// Mirror axes.
constexpr int kMirrorLeftRight = 1, kMirrorTopBottom = 2;
}  // namespace zelv_graphics

// A table of `count` empty entries; the old table and its bitmaps go.
void yybitmapalloc(int count);
// The bitmap `handle`, width by height, white.
void yybitmapcreate(int handle, int width, int height, int& error);
void yybitmapdestroy(int handle, int& error);
void yybitmapclear(int handle, int rgb, int& error);
// Size of a bitmap; false for a handle without one.
bool yybitmapsize(int handle, int& width, int& height);
// The present drawable at x, y into the whole bitmap, or a part of it into
// the bitmap at dx, dy.
void yybitmapget(int handle, int x, int y, int& error);
void yybitmapgetpart(int handle, int sx, int sy, int width, int height, int dx, int dy, int& error);
// The bitmap onto the present drawable at x, y, stretched to width by height
// when `scale` is set; or a part of it.
void yybitmapput(int handle, int x, int y, bool scale, int width, int height, int& error);
void yybitmapputpart(int handle, int sx, int sy, int width, int height, int dx, int dy, int& error);
void yybitmapgetdata(int handle, std::vector<int>& rgb, int& error);
// Pixels beyond the data stay as they were.
void yybitmapputdata(int handle, std::span<const int> rgb, int& error);
void yybitmapresize(int handle, int width, int height, int& error);
// 90, 180 or 270 degrees counter-clockwise.
void yybitmaprotate(int handle, int degrees, int& error);
void yybitmapmirror(int handle, int axis, int& error);
// Copy function of yybitmapput: 0 copy, 1 or, 2 and, 3 exclusive or.
void yybitmapplotmode(int mode, int& error);
// 0 and 4 average, 1 to 3 sample.
void yybitmapstretchmode(int mode, int& error);
int yybitmapstretchrule();
// Makes the bitmap the drawable of the pixel routines and of the graphics state.
void yybitmapgrselect(int handle, int& error);
// An image of the resources (type 1 bitmap, 2 icon, 3 cursor) into the
// bitmap `handle`, made at the image's size; transparent pixels take `background`.
void yybitmaploadresource(int handle, int imageid, int type, int background, int& error);

// A window that shows the bitmap, with scroll bars, as large as the bitmap
// within the screen; a viewer already open shows the new handle instead.
void yybitmapview(int handle, std::string_view title, int& error);
// The viewer's window handle, -1 when none is open, and the bitmap it shows.
int yyBitmapViewWindow();
int yyBitmapViewHandle();
// Shows the bitmap's present contents in the viewer.
void yyBitmapViewRefresh();
void yyBitmapViewClose();
// Around a modal dialog: on 1 every window but `exceptwindow` (-1 none) keeps
// the picture it shows now, on 0 one such freeze ends. The error (1041,
// 1042) is the caller's to raise under its own name.
void yygetwindowbitmap(int on, int exceptwindow, int& error);

// Closes the viewer and frees every bitmap and drawing resource.
void yyBitmapShutdown();

// Pixel operations on RGB arrays, rows from the top: the sampling or averaging
// stretch, turning counter-clockwise and mirroring.
std::vector<int> yybitmapstretch(std::span<const int> rgb, int width, int height, int towidth, int toheight,
                                 int rule);
std::vector<int> yybitmapturn(std::span<const int> rgb, int width, int height, int degrees);
std::vector<int> yybitmapflip(std::span<const int> rgb, int width, int height, int axis);
