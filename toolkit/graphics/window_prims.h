// Pixel drawing on one drawable at a time: a window's client area, a memory
// bitmap or a picture field of the current dialog. Coordinates are the
// drawable's pixels with Y downward; colours are RGB integers with red in the
// low byte. The graphics state's screen path and the bitmap routines draw
// through these.
#pragma once

#include <string_view>

namespace zelv_graphics {
// Kinds of drawable.
constexpr int kDrawableNone = 0, kDrawableWindow = 1, kDrawableBitmap = 2, kDrawablePicture = 3;
// Plot modes of yywinplotmode and yybitmapplotmode.
constexpr int kPlotCopy = 0, kPlotOr = 1, kPlotAnd = 2, kPlotXor = 3;
// Colour index that asks for a pixel of its own rather than a palette entry.
constexpr int kColourDirect = -1;
constexpr int kPaletteEntries = 256;
constexpr int kErrorColour = 39;
}  // namespace zelv_graphics

// Makes a drawable the present one: a window handle, a bitmap handle, or the
// identifier of a picture field of the current dialog. False, and no
// drawable in force, when there is no such thing.
bool yywindrawable(int type, int id);
// The present drawable's kind and identifier, and its size in pixels.
int yywindrawabletype();
int yywindrawableid();
void yywindrawablesize(int& width, int& height);

void yywinline(int x1, int y1, int x2, int y2);
void yywinpoint(int x, int y);
// The vertex buffer of yywinpolyline and yywinpolygon: room for `count`
// points, point `index` (0-based) set, the buffer given back.
void yypolalloc(int count);
void yypolpoint(int index, int x, int y);
void yypolfree();
// The first `count` points of the buffer.
void yywinpolyline(int count);
void yywinpolygon(int count);
// Corners are inclusive: a rectangle from 2, 2 to 4, 4 covers nine pixels.
void yywinrectangle(int x1, int y1, int x2, int y2, bool fill);
// Centre and radii; an outline or a filled shape.
void yywinellipse(int x, int y, int radiusx, int radiusy, bool fill);
// A filled pie segment and an open arc; degrees counter-clockwise from three o'clock.
void yywinarc(int x, int y, int radiusx, int radiusy, float startdeg, float enddeg);
void yywinoutlinearc(int x, int y, int radiusx, int radiusy, float startdeg, float enddeg);
void yywinclear();
// Index kColourDirect takes the RGB's own pixel; 0..255 the palette entry's
// colour (allocated when first used). A bad index or a failed allocation
// leaves the colour as it was and gives error 39.
void yywincolour(int index, int rgb, int& error);
void yywinbackcolour(int rgb);
// Sets palette entries from `first` on; their pixels are allocated afresh at next use.
void yywinpalette(int first, int count, const int* rgb);
void yywinlinetype(int type);
void yywinlinecap(int cap);
void yywinlinejoin(int join);
void yywinlinewidth(int width);
// Applies the line state: solid, or the dashes of the line type.
void yywinLineStyles(bool dashed);
// Clip rectangle, corners inclusive; x2 below x1 removes the clip.
void yywinclip(int x1, int y1, int x2, int y2);
// 0 copy, 1 or, 2 and, 3 exclusive or; other modes are refused (false).
bool yywinplotmode(int mode);
// Family 1 fixed, 2 sans, 3 serif, 4 symbol; style bits 1 bold, 2 italic;
// size the cell height in pixels. The cell's width and height come back.
void yywinselectfont(int family, int style, int size, int& width, int& height);
// Text with its baseline at y, starting at x.
void yywindrawstring(int x, int y, std::string_view text);
int yywintextlength(std::string_view text);
// Copies a rectangle of another drawable into the present one at dx, dy.
void yywinblit(int type, int id, int sx, int sy, int width, int height, int dx, int dy);
// -1 outside the drawable.
int yywingetpixelrgb(int x, int y);
void yywinpointrgb(int x, int y, int rgb);

// The X function of a plot mode on a display of `depth` bits whose black
// pixel is `black`; -1 for a mode that isn't one.
int yyplotfunction(int mode, int depth, unsigned long black);
