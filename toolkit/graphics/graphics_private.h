// The graphics state shared by the drawing routines, the fill and the drivers.
// No X here: the screen driver keeps its X resources in its own source.
#pragma once

#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelvy_graph {

constexpr int kOptions = 40;
constexpr int kUnits = 3;
constexpr int kPaletteSize = 256;

// Operation numbers heard by the drivers.
enum Op : int {
  OpInit = 1, OpLine = 2, OpColour = 3, OpCircle = 4, OpEllipseHalf = 5, OpEllipseSolid = 6,
  OpParallelHalf = 7, OpParallelSolid = 8, OpRectHalf = 9, OpRectSolid = 10, OpTriHalf = 11,
  OpTriSolid = 12, OpPieHalf = 13, OpPieSolid = 14, OpPolyHalf = 15, OpPolySolid = 16, OpClear = 17,
  OpStart = 18, OpClose = 19, OpEndPage = 20, OpFont = 21, OpText = 22, OpClip = 24, OpMeasure = 25,
  OpPoint = 26, OpPlotMode = 27, OpLineType = 29, OpLineWidth = 30, OpPolyline = 32,
  OpTextRotate = 33, OpArc = 34, OpBackColour = 35, OpJoin = 36, OpCap = 37, OpImage = 38,
  OpGradient = 40,
};
constexpr int kAskDriver = -999;
constexpr int kKeepPage = -998;
constexpr float kUnknownPoint = -9999.0f;

// A software font: glyphs as runs of grid characters, located per character.
struct SoftFont {
  float xspace = 7.68f, yspace = 11.88f, xgridc = 6, ygridc = 11;
  int ichset = 8, ichspa = 0, icheuro = 0, ichvec = 1, ichwgt = 0;
  std::string cchdata;
  std::array<int, 96> icloc7{};  // 0-based starts of characters 33..127, then the end
  std::array<int, 96> icloc8{};  // the same for 161..255
  std::string cswfontfile;
  int ichtyp = 0;
};

// An image in memory, as the image-file loaders deliver it and the image
// operation draws it: `height` rows from the top, each `width` RGB integers
// (red in the low byte).
struct ImageData {
  int width = 0, height = 0;
  std::vector<int> rgb;
  bool valid() const {
    return width > 0 && height > 0 && rgb.size() == static_cast<size_t>(width) * static_cast<size_t>(height);
  }
  int at(int x, int y) const { return rgb[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)]; }
};

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};

struct State {
  // Units, area, raster, clip box, test box, drawable.
  float xmin = 0, xmax = 1, ymin = 0, ymax = 1, xunlen = 1, yunlen = 1;
  float xgamin = 0, xgamax = 1, ygamin = 0, ygamax = 1, xgalen = 1, ygalen = 1;
  int nxgraf = 1000, nygraf = 1000;
  float xngraf = 999.99f, yngraf = 999.99f;
  float xminpx = 0, xmaxpx = 999.99f, yminpx = 0, ymaxpx = 999.99f, xpxlen = 999.99f, ypxlen = 999.99f;
  int ixmnpx = 0, ixmxpx = 999, iymnpx = 0, iymxpx = 999, ixpxlen = 1000, iypxlen = 1000;
  float xminp2 = -0.001f, xmaxp2 = 999.991f, yminp2 = -0.001f, ymaxp2 = 999.991f;
  int nxpixl = 1000, nypixl = 1000;
  float xgminpx = 0, xgmaxpx = 999.99f, ygminpx = 0, ygmaxpx = 999.99f, xgpxlen = 999.99f, ygpxlen = 999.99f;
  int igxmnpx = 0, igxmxpx = 999, igymnpx = 0, igymxpx = 999, igxpxlen = 1000, igypxlen = 1000;
  float xscale = 1, yscale = 1;
  int igurot = 0;
  float asprath = 1.4f, asprat = 1.0f;
  float xcur = 0, ycur = 0;

  // Primitive arguments.
  std::array<float, 3> grx{}, gry{};
  std::array<int, 2> igrx{}, igry{};
  std::vector<float> xwork, ywork;
  int igpar1 = 0, igpar2 = 0;
  std::string cgrstr;
  const ImageData* image = nullptr;  // the image of operation 38, box in grx, gry 1 and 2

  // Attributes.
  int lintyp = 0, linwid = 1, linwidh = 5, lincap = 0, linjoin = 0, modepl = 0;
  int ifstyl = 0, ifdens = 1, ifangl = 1, ifbord = 1;
  std::array<int, 2> ifmeth{0, 0};  // screen, hardcopy
  float yhstep = 1.0f;
  int icmodel = 1;
  int ichnalgl = 223;     // current colour
  int iprevcol = 223;     // colour before the latest change, for half-tones
  int ibackcol = 0xFFFFFF;
  std::array<int, kPaletteSize> irgb256{};

  // Device text.
  float chsizx = 0.0133333f, chsizy = 0.0333333f, chrota = 0;
  int ichfam = 2, ichfam2 = 2, ichstyl = 0, ichprop = 0, ichali = 0;
  float sinhgt = 0, coshgt = 0;
  // Software text.
  float chrotar = 0, chrotc = 1, chrotx = 0, chroty = 0, chrotcr = 1, chrotxr = 0, chrotyr = 0;
  float coswid = 0, sinwid = 0, chslnt = 0;
  int ichtyp = 0, ichdir = 0, inoutstr = 0;
  float chsizxreq = 0.0133333f, chsizyreq = 0.0333333f, chratio = 1;
  int ichratio = 0;
  std::array<int, 4> ichsubs{0, 1, 1, 0};  // 1-based: screen, hardcopy, keep font
  SoftFont font, fontsaved;
  std::array<float, 96> chspac7{};  // widths of 32..127
  std::array<float, 95> chspac8{};  // widths of 161..255

  // Gradient polygon.
  std::vector<int> ishadex, ishadey, ishadec;
  int nshvert = 0;

  // Paths and hardcopy.
  int igscrn = 0, ighcpy = 0, igdriver = 0, itarg = 1, itargid = 0, igaskip = 0, ivport = 0;
  bool bdopause = false, bhcerr = false;
  std::array<int, kOptions + 1> ihcopt{};  // 1-based
  int ihcdrv = 0, ihcdrvflags = 0;
  std::array<std::string, 6> cdeffile{};    // 1-based: 2 driver default output, 4/5 temporary
  std::array<std::string, 3> cgcapab{};     // 1 screen, 2 hardcopy
  std::array<int, 3> i24cap{}, igradcap{}, imgcap{}, lwcap{}, igcset{}, icsrot{}, ipropcap{};
  std::array<float, 3> sizemin{};
  int ihcolours = 256;
  std::array<int, 3> ihcres{};  // resolution x, y
  std::string copsys, cwrkstr, cerrsub;
  std::string cprintcmd;  // a print command waiting for the hardcopy to close
  // Screen dump choice.
  int iprtimg = 0, iprtimgflags = 0;
  std::string cprtimgfile;
  std::array<int, 4> iprtimgmargins{};
  std::array<int, 2> iprtimgpage{};
  int iprtimgpaper = 0;
  std::array<int, 2> ihcpaper{}, idupaper{};  // width, height in points of the papers chosen
  int imargindir = 0;                         // the direction yymargins last ran in
  float plotx = kUnknownPoint, ploty = kUnknownPoint;
  std::array<std::unique_ptr<std::FILE, FileCloser>, kUnits> units;
  std::array<std::vector<char>, kUnits> unitbuffers;
};

State& state();

}  // namespace zelvy_graph

// Truncation to an integer raster coordinate; far-off values are held at a
// bound instead of overflowing.
inline int yytrunc(float v) {
  constexpr float kBound = 1.0e9f;
  return static_cast<int>(v < -kBound ? -kBound : v > kBound ? kBound : v);
}

// Mapping and clipping.
void yye2i(float x, float y, float& rx, float& ry);
void yyi2e(float rx, float ry, float& x, float& y);
void yygrarea(float x1, float y1, float x2, float y2);
// The clip box on the screen target's own pixel size.
void yygrareadrawable();
bool yygrinbox(float x, float y);
void yygrclip(float& x1, float& y1, float& x2, float& y2, bool& visible);
void yylini(float x1, float y1, float x2, float y2);
void yygrpolyline(const float* x, const float* y, int count, int raster);

// The two paths and the driver dispatch.
void yygdrv(int op);
void yyhdrv(int op);
void xxhcif(int op);
void xxpost(int op);
void xxsvg(int op);
void xxhpgl(int op);
void xxhpgl2(int op);
void xxcgm(int op);
void xxdxf(int op);
void xxrast(int op);
void xximag(int op);
// DXF writers: group code and text, real, integer, a point's two groups, an
// entity head.
void yydxf1(std::string_view name);
void yydxf2(int codex, int codey, float x, float y);
void yydxf3(int code, std::string_view text);
void yydxf4(int code, float value);
void yydxf5(int code, int value);
std::string yydxfreal(float value);
// Plotter-language writers.
void yyhpglwrite(std::string_view text);
void yyhpglwritetrim(std::string_view text);
void yyhpglcmd(std::string_view text);
void yyhpglcmdscaled(std::string_view command, float x, float y);
void yyhpglreplaydata(int kind, int a, int b, int c, int d);
void yyhpgl2pencolour(int index, int r, int g, int b);
// Arcs (operation 34) of the two plotter editions, by the plotter's own arc.
void yyhpglarc();
void yyhpgl2arc();
// Defines user raster pattern 1 (half-tone) or 2 (cross-hatch) in the pen in
// force, and selects it as the fill type.
void yyhpgl2rasterfill(int pattern);
// Metafile writers: a header word, integers, a point, strings, whole elements.
std::string yycgm2(int cls, int id, size_t length);
void yycgm3(std::string& out, float x, float y);
std::string yycgm4(int cls, int id, int rgb);
void yycgm5(std::string& out, int value);
void yycgm6(std::string& out, int a, int b);
void yycgm7(std::string& out, std::string_view text);
void yycgm8(std::string& out, std::string_view text);
void yycgm1(int& r, int& g, int& b);
void yycgm10(int id, size_t from, size_t to);
std::string yycgmelement(int cls, int id, const std::string& params, bool longform);
// A string of any length, in the long form from 255 characters on.
void yycgm9(std::string& out, std::string_view text);
// The memory metafile's writers, twins of the file's: raw bytes (dropped
// whole, with an error, when the metafile is full), a header word, a colour
// element, integers, a long string, the work arrays as an element.
void yygcgm1(std::string_view bytes);
void yygcgm2(int cls, int id, size_t length);
void yygcgm4(int cls, int id, int rgb);
void yygcgm5(int value);
void yygcgm6(int a, int b);
void yygcgm9(std::string_view text);
void yygcgm10(int id, size_t from, size_t to);
// The memory metafile: the twin of the file driver on the screen path.
void yygcgm(int op);
// Makes (or empties) memory metafile `id`; writes beyond the capacity are
// dropped. A capacity of 0 keeps the one it has, or takes a megabyte.
void yygcgmopen(int id, size_t capacity = 0);
const std::string& yygcgmdata(int id);
// Colour count and aspect from a metafile's header.
bool yyinfocgm(const std::string& file, int& colours, float& aspect);
void yygapi(int op);
void yyresn(int type, int id, int width, int height);
void yydefh();
// The value rule of a hardcopy option: false when the value is refused or was
// stored elsewhere (copies, the text options); may adjust the value.
bool yyhcoptrule(int option, int& value);
// The page of a driver with paper: direction 1 the margins from the page size
// and offsets (options 1 to 4), 2 the size and offsets from the margins
// (options 34 to 37); the paper turned in landscape.
void yymargins(int direction);
// Which 1: the hardcopy's paper (option 33 and ihcpaper); 2: the screen
// dump's (iprtimgpaper, idupaper). An index outside the paper table is refused.
void yypaper(int which, int index);

// Colour.
void yygrpaletteinit();
void yypalrgb(int& red, int& green, int& blue);
int yycolourrgb(int colour);  // an index or RGB value under the model in force, as RGB
std::string yyrgbhex(int red, int green, int blue);

// Sets the colour (under the model given: 1 palette, else RGB) and tells one
// path of it: 1 the screen, 2 the hardcopy, 0 both.
constexpr int kBothPaths = 0, kPathOfScreen = 1, kPathOfHardcopy = 2;
void yygrcolourn(int path, int colour, int model);

// Text measures for the device text routines.
void yygrtextvectors();
// Software text: font loading, widths, the angle, and the choice per path.
void yygrtextinit();
void yychsfont(float xspace, float yspace, float xgrid, float ygrid, int set, int flags, int spacing, int target,
               std::string_view name, std::string_view data, const std::array<int, 96>& loc7,
               const std::array<int, 96>& loc8);
bool yygrtextspacing(int character, float spacing7, float spacing8);
void yygrtextrotate(float angle);
void yygrtextsizeset(float x, float y);
void yygrtextsize(std::optional<float> x = std::nullopt, std::optional<float> y = std::nullopt);
// A parallelogram in the background colour behind a text from its start.
void yygrtextstringfillback(float sx, float sy, float length, float width, float height);
bool yygrtextsubstitution(int path, float width, float height);
void yygrtextfontsave(bool save);
// A software font read from a character-set file.
struct ChrFont {
  float xspace = 0, yspace = 0, xgrid = 0, ygrid = 0;
  int set = 8, flags = 0, spacing = 0;
  std::string name, data;
  std::array<int, 96> loc7{}, loc8{};
};
// The file's path: a name with a slash as it stands, else in the
// character-set directory; empty when there is no such file.
std::string yygrchrpath(std::string_view name);
// Reads a character-set file; false, and `font` untouched, when it is missing
// or not whole and sound. Data beyond the font's room raises error 25 under
// `routine`.
bool yygrchrload(std::string_view name, ChrFont& font, std::string_view routine);
// Makes the file's font the one in force; false leaves the font as it was.
bool yygrchrfont(std::string_view name, std::string_view routine);
void yygrofontfixed();
void yygrofontfixedbold();
void yygrofontroman();
void yygrofontromanbold();
void yygrofontswiss();
void yygrofontswissbold();
void yygrdefaultspacing(std::array<float, 96>& space7, std::array<float, 95>& space8);

// Output of the drivers.
void yygrhcopen(int unit);
void yygrhcwrite(int unit, std::string_view text);
void yygrhcwriteline(int unit, std::string_view text);
void yygrhcwritebuffer(int unit, std::string_view text, bool addend);
void yygrhcclose(int unit);

// Puts an image into a box on the raster (corners in raster units) on both
// paths. The screen clips it to the clip box; files get the whole image.
void yygrimage(const zelvy_graph::ImageData& image, float x1, float y1, float x2, float y2);
// An image as a PNG file's bytes: 8-bit RGB, one compressed data chunk.
std::string yypngencode(const zelvy_graph::ImageData& image);

// Fill.
void yygrpolygoncomplex(const float* x, const float* y, int count, int raster);
void yygrrectangle(float x1, float y1, float x2, float y2, bool report);
// An ellipse (5), pie (13) or arc (34) of the present arguments drawn as lines
// or a polygon on the hardcopy path, for drivers that lack the shape.
void yygrhcshape(int op);
void yygrfillstepsize(int path, int density, float& xstep, float& ystep, int& xint, int& yint, float& inset,
                      bool& diagonal);
void yygradientfill(int iymin, int iymax, int ixmin, int ixmax, int steps);
void yypolygondecompose(const std::vector<float>& x, const std::vector<float>& y, std::vector<int>& triangles);
// The screen path's writer of a run of gradient pixels on one raster row.
void yygapispan(int x1, int x2, int y, int rgb);
void yygapiflush();
