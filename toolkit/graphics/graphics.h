// Drawing: one graphics state feeding two output paths, the screen (a window of
// ours) and the hardcopy (the selected file driver). Coordinates are the
// caller's units; colours are RGB integers with red in the low byte, or palette
// indexes 0..255 under the palette model.
#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace zelv_graphics {
// Hardcopy driver numbers.
constexpr int kDriverPostScript = 2;
constexpr int kDriverSvg = 3;
constexpr int kDriverImage = 6;  // the page as a PNG file
constexpr int kDriverHpgl = 1, kDriverDxf = 8, kDriverCgm = 9, kDriverHpgl2 = 12;
// Fill styles.
constexpr int kFillOutline = 0, kFillHatch = 1, kFillCrossHatch = 2, kFillHalfTone = 3, kFillSolid = 4;
// Hardcopy option numbers used by callers.
constexpr int kOptPageWidth = 1, kOptPageHeight = 2, kOptOrientation = 5, kOptColourHandling = 6,
              kOptMonochrome = 7, kOptLineWidth = 9, kOptJoin = 10, kOptCap = 11, kOptPathLimit = 16,
              kOptEncapsulated = 22, kOptCopies = 38;
constexpr int kPaletteBlack = 223;
}  // namespace zelv_graphics

// Start of graphics. Options: "H" keeps the screen path off, "P" keeps the
// hardcopy options and default names of the selected driver.
void IGrInit(std::string_view options = {});
// Screen target: 1 window (handle, default the current one), 4 memory
// metafile (its number); others fall back to the window.
void IGrSelect(int targettype, int targetid = -1);
// Draws memory metafile `id` again on the paths in force, its picture
// stretched over the whole raster.
void IGrReplay(int id);
// Part of the target in use, as fractions 0..1; error 44 on a bad pair.
void IGrArea(float x1, float y1, float x2, float y2);
// The caller's numbers over the area; error 16 on an empty range.
void IGrUnits(float x1, float y1, float x2, float y2);
// 0, 90, 180 or 270 degrees; other values are ignored.
void IGrUnitsRotate(int angle);
void IGrMoveTo(float x, float y);
void IGrLineTo(float x, float y);
void IGrJoin(float x1, float y1, float x2, float y2);
void IGrPoint(float x, float y);
void IGrPolyLine(std::span<const float> x, std::span<const float> y);
// Filled or outlined by the fill style in force.
void IGrPolygonComplex(std::span<const float> x, std::span<const float> y);
void IGrRectangle(float x1, float y1, float x2, float y2);
// Circle (ellipse by the ratio of its height to width) and pie segment, angles
// in degrees counter-clockwise from the X axis.
void IGrCircle(float x, float y, float radius, float ratio = 1.0f);
void IGrPie(float x, float y, float radius, float startdeg, float enddeg);
void IGrArc(float x, float y, float radius, float startdeg, float enddeg);
// Polygon shaded between vertex colours (RGB each); steps above 0 give bands
// of that many colours instead of a smooth shade.
void IGrGradient(std::span<const float> x, std::span<const float> y, std::span<const int> rgb, int steps = 0);
// An image of width by height RGB pixels, rows from the top, stretched over the
// box between two corners in units.
void IGrImagePut(float x1, float y1, float x2, float y2, int width, int height, std::span<const int> rgb);
// Outlines the clip box; clears the area.
void IGrBorder();
void IGrAreaClear();

// Attributes.
void IGrLineType(int type);
void IGrLineWidth(int screenwidth, int hardcopywidth = -1);
void IGrColourN(int colour);
void IGrColourModel(int model);  // 1 palette index, otherwise RGB
void IGrBackColour(int colour);
// Style 0..4, density 1.., angle 1..4 (diagonals, horizontal, vertical).
void IGrFillPattern(int style, int density = 1, int angle = 1);
void igrplotmode2(int mode = 0);
// Device text: size as fractions of the area, family 1 fixed, 2 sans, 3 serif,
// style bits 1 bold, 2 italic; alignment 0 left, 1 centre, 2 right; angle in degrees.
void IGrCharSize(float width, float height);
void IGrCharFont(int family, int style = 0);
// Keeps width and height in a ratio (height over width, in raster units):
// 0 none, 1 height follows width, 2 width follows height, 3 the smaller wins.
void IGrCharRatio(int rule, float ratio = 1.0f);
void IGrCharAlign(int alignment);
void IGrCharRotate(float degrees);
void IGrCharOut(float x, float y, std::string_view text);
// 0 device text where the path can draw it, 1 software text on both paths.
void IGrCharType(int type);
// 0 fixed pitch, 1 proportional by the software font's widths, 2 by the device's.
void IGrCharSpacing(int spacing);
// 0 along the text direction, 1 stacked downward.
void IGrCharDirection(int direction);
// Text at a point (the current point when absent), device or software text per
// path; the point is the left end of the text's middle line before alignment.
void WGrTextString(std::optional<float> x, std::optional<float> y, std::string_view text);
// Length of a text in character cells; mode 1 never asks the device.
float WGrTextLength(std::string_view text, int mode = 0);
// The software fonts: the stroke font, and the outline fonts by family.
void WGrVFontStandard();
void WGrOFontFixed();
void WGrOFontRoman();
void WGrOFontSwiss();
void WGrOFontSymbol();

// Hardcopy. Option 1 records the driver and runs its set-up.
void IGrHardcopySelect(int option, int driver);
void IGrHardcopyOptions(int option, int value);
// Opens the hardcopy on a file (blank: the driver's default); "S" closes it.
// A PostScript name holding " @ " is a print command: the drawing goes to a
// temporary file, printed by the command ("@" standing for its name) on "S".
void IGrHardcopy(std::string_view filename = {}, std::string_view title = {});
void IGrEndPage(std::string_view options = {});
// Prints a text file as graphics text through the selected driver, on the
// grid of hardcopy options 101..110 (columns, lines, page range, style, wrap,
// carriage control, tab step; bit 1 of 110 opens the hardcopy on
// `outputfile`, bit 2 closes it).
void IGrHardcopyTextFile(std::string_view filename, std::string_view outputfile = {}, std::string_view title = {});
// Screen dumps: 2 PostScript, 4 printer.
void IGrPrintImageSelect(int mode);

// Crossing of two segments; status 5 on both, 4 second only, 3 first only,
// 2 neither, 1 parallel, 0 on one line.
void IGrIntersectLine(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4, float& x,
                      float& y, int& status);

// Nearest palette index of an RGB colour.
int yyrgbto8(int rgb);
