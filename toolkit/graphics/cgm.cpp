// Hardcopy driver 9: a binary metafile, one picture per page. The same
// elements can go to a memory metafile instead of a file, chosen as the screen
// target, and a memory metafile can be written out or replayed.
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"

#include "toolkit/base/error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdint>
#include <map>
#include <vector>
#include <string>

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {

constexpr int kUnit = 1;
constexpr int kLongForm = 31;
constexpr size_t kLongPart = 32766;  // even, below the 15-bit limit
constexpr int kMaxVdc = 32767;
constexpr int kOptFontList = 28;
constexpr int kPageWidth = 756, kPageHeight = 540, kDpi = 600;
constexpr int kErrorOpen = 1, kErrorFull = 2, kErrorShort = 2;  // opening, writing, reading
constexpr const char* kCapability = "00000111111111111110011111111";
constexpr std::array<int, 8> kLineTypes = {1, 3, 2, 4, 5, 10, 12, 13};
constexpr const char* kDefaultTitle = "KQD CGM File";

constexpr std::array<std::array<const char*, 16>, 3> kFonts = {{
    {"COURIER", "COURIER_BOLD", "COURIER_ITALIC", "COURIER_BOLD_ITALIC", "HELVETICA", "HELVETICA_BOLD",
     "HELVETICA_OBLIQUE", "HELVETICA_BOLD_OBLIQUE", "TIMES_ROMAN", "TIMES_BOLD", "TIMES_ITALIC", "TIMES_BOLD_ITALIC",
     "SYMBOL", "SYMBOL", "SYMBOL", "SYMBOL"},
    {"Courier", "Courier-Bold", "Courier-Oblique", "Courier-BoldOblique", "Helvetica", "Helvetica-Bold",
     "Helvetica-Oblique", "Helvetica-BoldOblique", "Times-Roman", "Times-Bold", "Times-Italic", "Times-BoldItalic",
     "Symbol", "Symbol", "Symbol", "Symbol"},
    {"Courier New", "Courier New Bold", "Courier New Italic", "Courier New Bold Italic", "Arial", "Arial Bold",
     "Arial Italic", "Arial Bold Italic", "Times New Roman", "Times New Roman Bold", "Times New Roman Italic",
     "Times New Roman Bold Italic", "Symbol", "Symbol Italic", "Symbol Bold", "Symbol Bold Italic"},
}};

enum Class { kDelimiter = 0, kMetafile = 1, kPicture = 2, kControl = 3, kPrimitive = 4, kAttribute = 5 };

struct CgmState {
  bool memory = false;  // writing to the memory metafile of the screen target
  float xscale = 1, yscale = 1;
  int ixcgm = 6300, iycgm = 4500;
  int icurrcol = 0, ilinecol = -1, itextcol = -1, ifillcol = -1, iedgecol = -1, iauxcol = -1;
  int iedgetyp = -1, iedgewid = -1, ioldali = -1, ioldfont = -1, ioldhgt = -1, ioldjoi = 0, ioldcap = 0;
  int interior = -1;
  bool picture = false;  // a picture is open
  std::string title;
};
bool memory_mode = false;
// The file and the memory metafile each remember their own attributes.
CgmState& cg() {
  static CgmState file, memory;
  return memory_mode ? memory : file;
}

struct MetaRecord {
  std::string buffer;
  size_t capacity = 0;
};
std::map<int, MetaRecord>& metainfo() {
  static std::map<int, MetaRecord> m;
  return m;
}

// Bytes go to the file, or to the memory metafile.
void emit(const std::string& bytes) {
  if (!cg().memory) {
    yygrhcwrite(kUnit, bytes);
    return;
  }
  yygcgm1(bytes);
}

void word(std::string& out, int v) {
  const auto u = static_cast<unsigned>(v) & 0xFFFFu;
  out.push_back(static_cast<char>(u >> 8));
  out.push_back(static_cast<char>(u & 0xFF));
}

}  // namespace

// A header word; lengths from 31 up take the long form.
std::string yycgm2(int cls, int id, size_t length) {
  std::string out;
  if (length < static_cast<size_t>(kLongForm)) {
    word(out, cls * 4096 + id * 32 + static_cast<int>(length));
  } else {
    word(out, cls * 4096 + id * 32 + kLongForm);
    word(out, static_cast<int>(length));
  }
  return out;
}

void yycgm5(std::string& out, int value) { word(out, value); }

void yycgm6(std::string& out, int a, int b) {
  word(out, a);
  word(out, b);
}

void yycgm3(std::string& out, float x, float y) {
  word(out, yytrunc(x * cg().xscale));
  word(out, yytrunc(y * cg().yscale));
}

// A string with its count byte; the pad byte that evens the element is added
// by the element writer and not counted.
void yycgm7(std::string& out, std::string_view text) {
  const auto n = std::min<size_t>(text.size(), 254);
  out.push_back(static_cast<char>(n));
  out.append(text.substr(0, n));
}

void yycgm8(std::string& out, std::string_view text) { yycgm7(out, text); }

// A string of any length: up to 254 characters as yycgm7; longer ones take the
// count 255 and then their length in 16-bit parts of at most 32767, the top
// bit of a part telling that another follows.
void yycgm9(std::string& out, std::string_view text) {
  constexpr size_t kShort = 254, kPart = 32767;
  if (text.size() <= kShort) {
    yycgm7(out, text);
    return;
  }
  out.push_back(static_cast<char>(0xFF));
  size_t at = 0;
  do {
    const size_t part = std::min(kPart, text.size() - at);
    const bool more = at + part < text.size();
    word(out, static_cast<int>(part) | (more ? 0x8000 : 0));
    out.append(text.substr(at, part));
    at += part;
  } while (at < text.size());
}

// A whole element: short or long form, the parameters cut into parts of the
// long form when too many, and a pad byte to an even length.
std::string yycgmelement(int cls, int id, const std::string& params, bool longform) {
  std::string out;
  if (!longform && params.size() < static_cast<size_t>(kLongForm)) {
    out = yycgm2(cls, id, params.size());
    out += params;
  } else {
    word(out, cls * 4096 + id * 32 + kLongForm);
    size_t at = 0;
    do {
      const size_t part = std::min(kLongPart, params.size() - at);
      const bool more = at + part < params.size();
      word(out, static_cast<int>(part) | (more ? 0x8000 : 0));
      out.append(params, at, part);
      at += part;
    } while (at < params.size());
  }
  if (out.size() % 2) out.push_back('\0');
  return out;
}

void yycgm1(int& r, int& g, int& b) {
  const int handling = state().ihcopt[zelv_graphics::kOptColourHandling];
  const bool dark = r < 10 && g < 10 && b < 10, light = r >= 246 && g >= 246 && b >= 246;
  if (handling == 1 || (handling == 2 && (dark || light))) {
    r = 255 - r;
    g = 255 - g;
    b = 255 - b;
  }
}

std::string yycgm4(int cls, int id, int rgb) {
  std::string p;
  p.push_back(static_cast<char>(rgb & 0xFF));
  p.push_back(static_cast<char>((rgb >> 8) & 0xFF));
  p.push_back(static_cast<char>((rgb >> 16) & 0xFF));
  return yycgmelement(cls, id, p, false);
}

// Points of the work arrays as one polygon or polyline element.
void yycgm10(int id, size_t from, size_t to) {
  if (cg().memory) {
    yygcgm10(id, from, to);
    return;
  }
  const auto& s = state();
  std::string p;
  for (size_t i = from; i < to && i < s.xwork.size(); ++i) yycgm3(p, s.xwork[i], s.ywork[i]);
  emit(yycgmelement(kPrimitive, id, p, true));
}

namespace {

void element(int cls, int id, const std::string& params = {}) { emit(yycgmelement(cls, id, params, false)); }

void element1(int cls, int id, int value) {
  std::string p;
  yycgm5(p, value);
  element(cls, id, p);
}

void picture_start() {
  auto& v = cg();
  std::string p;
  yycgm7(p, "KQD CGM Data");
  element(kDelimiter, 3, p);
  element1(kPicture, 3, 0);
  element1(kPicture, 5, 0);
  element1(kPicture, 2, 1);
  element1(kControl, 1, 16);
  p.clear();
  yycgm6(p, 0, 0);
  yycgm6(p, v.ixcgm, v.iycgm);
  element(kPicture, 6, p);
  element(kDelimiter, 4);
  p.clear();
  yycgm6(p, 1, 5);
  yycgm6(p, 0, 0);
  yycgm6(p, 0, 0);
  element(kAttribute, 18, p);
  v.ilinecol = v.itextcol = v.ifillcol = v.iedgecol = v.iauxcol = -1;
  v.iedgetyp = v.iedgewid = v.ioldali = v.ioldfont = v.ioldhgt = v.interior = -1;
  v.picture = true;
}

// Drawing after a page end opens the next picture.
void drawing() {
  state().bdopause = true;
  if (!cg().picture) picture_start();
}

void extent() {
  auto& s = state();
  auto& v = cg();
  if (v.memory) {
    // The memory metafile keeps the raster as it is.
    v.ixcgm = std::min(s.nxgraf, kMaxVdc);
    v.iycgm = std::min(s.nygraf, kMaxVdc);
    v.xscale = static_cast<float>(v.ixcgm) / s.xngraf;
    v.yscale = static_cast<float>(v.iycgm) / s.yngraf;
    return;
  }
  const int dpi = s.ihcres[1] > 0 ? s.ihcres[1] : kDpi;
  double x = static_cast<double>(s.ihcopt[1]) * dpi / 72.0, y = static_cast<double>(s.ihcopt[2]) * dpi / 72.0;
  const double big = std::max(x, y);
  if (big > kMaxVdc) {
    x = x * kMaxVdc / big;
    y = y * kMaxVdc / big;
  }
  v.ixcgm = static_cast<int>(x);
  v.iycgm = static_cast<int>(y);
  s.xscale = v.xscale = static_cast<float>(v.ixcgm) / s.xngraf;
  s.yscale = v.yscale = static_cast<float>(v.iycgm) / s.yngraf;
}

void metafile_start() {
  const auto& s = state();
  auto& v = cg();
  std::string p;
  yycgm7(p, v.title.empty() ? kDefaultTitle : v.title);
  element(kDelimiter, 1, p);
  element1(kMetafile, 1, 1);
  p.clear();
  yycgm7(p, "Zelvane CGM driver v4");
  element(kMetafile, 2, p);
  element1(kMetafile, 3, 0);
  element1(kMetafile, 4, 16);
  p.clear();
  yycgm5(p, 1);
  yycgm6(p, 16, 16);
  element(kMetafile, 5, p);
  element1(kMetafile, 6, 16);
  p.clear();
  const auto list = static_cast<size_t>(std::clamp(s.ihcopt[kOptFontList], 0, 2));
  for (const char* name : kFonts[list]) yycgm8(p, name);
  // The list's length is fixed by its choice; a short list is padded.
  constexpr std::array<size_t, 3> kListLength = {204, 204, 260};
  p.resize(std::max(p.size(), kListLength[list]), '\0');
  emit(yycgmelement(kMetafile, 13, p, true));
  element1(kMetafile, 7, 8);
  p.assign("\0\0\0\xFF\xFF\xFF", 6);
  element(kMetafile, 10, p);
  picture_start();
}

void colour() {
  auto& s = state();
  int r, g, b;
  yypalrgb(r, g, b);
  yycgm1(r, g, b);
  cg().icurrcol = r + 256 * g + 65536 * b;
  (void)s;
}

void line_colour() {
  auto& v = cg();
  if (v.icurrcol == v.ilinecol) return;
  v.ilinecol = v.icurrcol;
  emit(yycgm4(kAttribute, 4, v.icurrcol));
}

void interior(int style) {
  auto& v = cg();
  if (v.interior == style) return;
  v.interior = style;
  element1(kAttribute, 22, style);
}

void fill(int op) {
  auto& s = state();
  auto& v = cg();
  if (s.igpar1 == -1) return;
  drawing();
  if (s.ifstyl < 3 && op != zg::OpEllipseHalf) return;
  int fillcol = v.icurrcol;
  if (s.ifstyl == zelv_graphics::kFillHalfTone) {
    int r = (fillcol & 0xFF), g = (fillcol >> 8) & 0xFF, b = (fillcol >> 16) & 0xFF;
    r = (r + (s.iprevcol & 0xFF)) / 2;
    g = (g + ((s.iprevcol >> 8) & 0xFF)) / 2;
    b = (b + ((s.iprevcol >> 16) & 0xFF)) / 2;
    fillcol = r + 256 * g + 65536 * b;
  }
  if (fillcol != v.ifillcol) {
    v.ifillcol = fillcol;
    emit(yycgm4(kAttribute, 23, fillcol));
  }
  std::string p;
  switch (op) {
    case zg::OpEllipseHalf: {
      const bool outline = s.ifstyl < 3;
      if (outline) {
        element1(kAttribute, 30, 1);
        if (v.iedgecol != v.icurrcol) {
          v.iedgecol = v.icurrcol;
          emit(yycgm4(kAttribute, 29, v.icurrcol));
        }
        const int type = kLineTypes[static_cast<size_t>(std::clamp(s.lintyp, 0, 7))];
        if (type != v.iedgetyp) {
          v.iedgetyp = type;
          element1(kAttribute, 27, type);
        }
        const int width = s.ihcopt[zelv_graphics::kOptLineWidth] * v.ixcgm / std::max(s.ihcopt[1] * 10, 1);
        if (width != v.iedgewid) {
          v.iedgewid = width;
          element1(kAttribute, 28, width);
        }
        interior(4);
      } else {
        interior(1);
      }
      yycgm3(p, s.grx[0], s.gry[0]);
      yycgm3(p, s.grx[0] + s.grx[1], s.gry[0]);
      yycgm3(p, s.grx[0], s.gry[0] + s.gry[1]);
      element(kPrimitive, 17, p);
      if (outline) element1(kAttribute, 30, 0);
      return;
    }
    case zg::OpRectHalf:
      interior(1);
      yycgm3(p, s.grx[0], s.gry[0]);
      yycgm3(p, s.grx[1], s.gry[1]);
      element(kPrimitive, 11, p);
      return;
    case zg::OpPieHalf: {
      interior(1);
      constexpr int kSteps = 72;
      const float a0 = s.grx[2], a1 = s.gry[2];
      const int n = std::max(2, static_cast<int>(std::ceil((a1 - a0) / 6.2831853f * kSteps)));
      for (int i = 0; i <= n; ++i) {
        const float a = a0 + (a1 - a0) * static_cast<float>(i) / static_cast<float>(n);
        yycgm3(p, s.grx[0] + s.grx[1] * std::cos(a), s.gry[0] + s.gry[1] * std::sin(a));
      }
      yycgm3(p, s.grx[0], s.gry[0]);
      emit(yycgmelement(kPrimitive, 7, p, true));
      return;
    }
    default:
      interior(1);
      yycgm10(7, 0, std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size()));
  }
}

void font() {
  auto& s = state();
  auto& v = cg();
  const int family = std::clamp(s.ichfam2, 1, 4);
  const int index = s.ichstyl % 4 + 1 + 4 * (family - 1);
  if (index != v.ioldfont) {
    v.ioldfont = index;
    element1(kAttribute, 10, index);
  }
  const int height = yytrunc(s.chsizy * s.ypxlen * v.yscale);
  if (height != v.ioldhgt) {
    v.ioldhgt = height;
    element1(kAttribute, 15, height);
  }
}

void text() {
  auto& s = state();
  auto& v = cg();
  drawing();
  font();
  if (v.icurrcol != v.itextcol) {
    v.itextcol = v.icurrcol;
    emit(yycgm4(kAttribute, 14, v.icurrcol));
  }
  constexpr float kUnitVector = 1000.0f;
  const double a = s.chrota * 0.017453292519943295;
  std::string p;
  yycgm6(p, yytrunc(static_cast<float>(-std::sin(a)) * kUnitVector), yytrunc(static_cast<float>(std::cos(a)) * kUnitVector));
  yycgm6(p, yytrunc(static_cast<float>(std::cos(a)) * kUnitVector), yytrunc(static_cast<float>(std::sin(a)) * kUnitVector));
  element(kAttribute, 16, p);
  // Proportional text comes a character at a time, already placed.
  const int align = s.ichprop == 1 ? 0 : s.ichali;
  if (align != v.ioldali) {
    v.ioldali = align;
    p.clear();
    yycgm6(p, align + 1, 5);
    yycgm6(p, 0, 0);
    yycgm6(p, 0, 0);
    element(kAttribute, 18, p);
  }
  float x = s.grx[0], y = s.gry[0];
  if (align == 1) {
    x = (s.grx[0] + s.grx[2]) / 2;
    y = (s.gry[0] + s.gry[2]) / 2;
  } else if (align == 2) {
    x = s.grx[2];
    y = s.gry[2];
  }
  // The anchor is the bottom of the cell, half a cell under the middle line.
  x += s.sinhgt * 0.5f;
  y -= s.coshgt * 0.5f;
  const size_t n = std::min(static_cast<size_t>(std::max(s.igrx[0], 0)), s.cgrstr.size());
  const float length = std::hypot(s.grx[2] - s.grx[0], s.gry[2] - s.gry[0]);
  const bool back = (s.ichstyl & 8) != 0;
  if (back) {
    element1(kControl, 4, 0);
    int r = s.ibackcol & 0xFF, g = (s.ibackcol >> 8) & 0xFF, b = (s.ibackcol >> 16) & 0xFF;
    yycgm1(r, g, b);
    emit(yycgm4(kControl, 3, r + 256 * g + 65536 * b));
  }
  p.clear();
  yycgm5(p, yytrunc(length * v.xscale));
  yycgm5(p, yytrunc(s.chsizy * s.ypxlen * v.yscale));
  yycgm3(p, x, y);
  yycgm5(p, 1);
  yycgm9(p, std::string_view(s.cgrstr).substr(0, n));
  emit(yycgmelement(kPrimitive, 5, p, true));
  if (back) element1(kControl, 4, 1);
}

// CELL ARRAY: corners of the first cell, the last cell and the first row's
// last cell; the counts; local colour precision 8; packed cells, three bytes
// each, rows evened to whole words.
void image() {
  auto& s = state();
  if (!s.image || !s.image->valid()) return;
  const auto& img = *s.image;
  drawing();
  std::string p;
  yycgm3(p, s.grx[0], s.gry[1]);
  yycgm3(p, s.grx[1], s.gry[0]);
  yycgm3(p, s.grx[1], s.gry[1]);
  yycgm6(p, img.width, img.height);
  constexpr int kLocalPrecision = 8, kPacked = 1;
  yycgm6(p, kLocalPrecision, kPacked);
  for (int y = 0; y < img.height; ++y) {
    for (int x = 0; x < img.width; ++x) {
      int c = img.at(x, y), r = c & 0xFF, g = (c >> 8) & 0xFF, b = (c >> 16) & 0xFF;
      yycgm1(r, g, b);
      p += {static_cast<char>(r), static_cast<char>(g), static_cast<char>(b)};
    }
    if ((img.width * 3) % 2) p.push_back('\0');
  }
  emit(yycgmelement(kPrimitive, 9, p, true));
}

void clip() {
  const auto& s = state();
  if (!cg().picture) return;
  element1(kControl, 6, 1);
  std::string p;
  yycgm3(p, s.xminpx, s.yminpx);
  yycgm3(p, s.xmaxpx, s.ymaxpx);
  element(kControl, 5, p);
}

void init() {
  auto& s = state();
  s.ihcdrvflags = 0;
  yydefh();
  s.ihcopt[1] = kPageWidth;
  s.ihcopt[2] = kPageHeight;
  s.ihcres = {0, kDpi, kDpi};
  s.igcset[2] = 8;
  s.icsrot[2] = 360;
  s.ihcolours = 256;
  s.sizemin[2] = 1.7E38f;
  s.lwcap[2] = 2;
  s.i24cap[2] = 1;
  s.igradcap[2] = 2;
  s.ipropcap[2] = 1;
  s.imgcap[2] = 1;
  s.cgcapab[2] = kCapability;
  s.ifmeth[1] = 0;
  s.ihcopt[kOptFontList] = 2;
  s.cdeffile[2] = "zelvplot.cgm";
  s.ihcdrv = zelv_graphics::kDriverCgm;
}

void driver(int op) {
  auto& s = state();
  auto& v = cg();
  switch (op) {
    case zg::OpStart:
      extent();
      if (s.igpar1 > 0) {
        if (!v.memory) {
          yygrhcopen(kUnit);
          if (s.bhcerr) {
            s.ighcpy = 0;
            return;
          }
        }
        v.title = s.igrx[0] != 0 ? s.cwrkstr : std::string();
        metafile_start();
      }
      return;
    case zg::OpClose:
      if (v.picture) element(kDelimiter, 5);
      v.picture = false;
      element(kDelimiter, 2);
      if (!v.memory) yygrhcclose(kUnit);
      return;
    case zg::OpEndPage:
      s.bdopause = false;
      if (v.picture) element(kDelimiter, 5);
      v.picture = false;
      return;
    case zg::OpColour:
    case zg::OpBackColour:
      colour();
      return;
    case zg::OpLine:
    case zg::OpPoint: {
      drawing();
      line_colour();
      std::string p;
      yycgm3(p, s.grx[0], s.gry[0]);
      if (op == zg::OpLine) yycgm3(p, s.grx[1], s.gry[1]);
      else yycgm3(p, s.grx[0], s.gry[0]);
      element(kPrimitive, 1, p);
      return;
    }
    case zg::OpPolyline:
      drawing();
      line_colour();
      yycgm10(1, 0, std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size()));
      return;
    case zg::OpLineType:
      if (v.picture) element1(kAttribute, 2, kLineTypes[static_cast<size_t>(std::clamp(s.lintyp, 0, 7))]);
      return;
    case zg::OpLineWidth:
      if (v.picture)
        element1(kAttribute, 3, s.ihcopt[zelv_graphics::kOptLineWidth] * v.ixcgm / std::max(s.ihcopt[1] * 10, 1));
      return;
    case zg::OpJoin:
      if (v.picture && s.ihcopt[zelv_graphics::kOptJoin] != v.ioldjoi) {
        v.ioldjoi = s.ihcopt[zelv_graphics::kOptJoin];
        element1(kAttribute, 38, v.ioldjoi);
      }
      return;
    case zg::OpCap:
      if (v.picture && s.ihcopt[zelv_graphics::kOptCap] != v.ioldcap) {
        v.ioldcap = s.ihcopt[zelv_graphics::kOptCap];
        std::string p;
        yycgm6(p, v.ioldcap, 1);
        element(kAttribute, 37, p);
      }
      return;
    case zg::OpClip:
      clip();
      return;
    case zg::OpFont:
      if (v.picture) font();
      return;
    case zg::OpText:
      text();
      return;
    case zg::OpEllipseHalf:
    case zg::OpParallelHalf:
    case zg::OpRectHalf:
    case zg::OpTriHalf:
    case zg::OpPieHalf:
    case zg::OpPolyHalf:
      fill(op);
      return;
    case zg::OpImage:
      image();
      return;
    case zg::OpArc:
      drawing();
      line_colour();
      yygrhcshape(zg::OpArc);
      return;
    default:
      return;
  }
}

}  // namespace

void xxcgm(int op) {
  auto& s = state();
  if (op == zg::OpInit) {
    if (s.igpar2 == zg::kAskDriver) {
      s.igpar2 = zelv_graphics::kDriverCgm;
      return;
    }
    init();
    return;
  }
  memory_mode = false;
  cg().memory = false;
  driver(op);
}

// The memory twin: the metafile of the present target id. Operations that
// go only to a hardcopy driver's own shapes (arcs) aren't kept.
void yygcgm(int op) {
  if (op == zg::OpInit || op == zg::OpClear) return;
  auto& s = state();
  if (op == zg::OpArc) {
    // Kept as a polyline: open, or closed through the centre.
    const auto xwork = s.xwork, ywork = s.ywork;
    const int igpar2 = s.igpar2;
    const float a0 = s.grx[2], a1 = s.gry[2], r = s.grx[1];
    constexpr int kSteps = 96;
    const int n = std::max(2, static_cast<int>(std::ceil((a1 - a0) / 6.2831853f * kSteps)));
    s.xwork.clear();
    s.ywork.clear();
    const bool open = s.ifstyl == 0 && s.ifdens >= 3;
    if (!open) {
      s.xwork.push_back(s.grx[0]);
      s.ywork.push_back(s.gry[0]);
    }
    for (int i = 0; i <= n; ++i) {
      const float a = a0 + (a1 - a0) * static_cast<float>(i) / static_cast<float>(n);
      s.xwork.push_back(s.grx[0] + r * std::cos(a));
      s.ywork.push_back(s.gry[0] + r * std::sin(a));
    }
    if (!open) {
      s.xwork.push_back(s.grx[0]);
      s.ywork.push_back(s.gry[0]);
    }
    s.igpar2 = static_cast<int>(s.xwork.size());
    yygcgm(zg::OpPolyline);
    s.xwork = xwork;
    s.ywork = ywork;
    s.igpar2 = igpar2;
    return;
  }
  // Its extent follows the raster; a hardcopy's scale stays untouched.
  const float xscale = s.xscale, yscale = s.yscale;
  memory_mode = true;
  cg().memory = true;
  // The screen path hears shapes once, without the hardcopy's bracket:
  // solid shapes by their own numbers, half-tones in their mean colour.
  const bool solid = op == zg::OpEllipseSolid || op == zg::OpParallelSolid || op == zg::OpRectSolid ||
                     op == zg::OpTriSolid || op == zg::OpPieSolid || op == zg::OpPolySolid;
  const bool half = op == zg::OpEllipseHalf || op == zg::OpParallelHalf || op == zg::OpRectHalf ||
                    op == zg::OpTriHalf || op == zg::OpPieHalf || op == zg::OpPolyHalf;
  if (solid || half || op == zg::OpCircle) {
    const int style = s.ifstyl, igpar1 = s.igpar1;
    s.ifstyl = op == zg::OpCircle ? zelv_graphics::kFillOutline : zelv_graphics::kFillSolid;
    s.igpar1 = 1;
    driver(op == zg::OpCircle ? zg::OpEllipseHalf : (solid ? op - 1 : op));
    s.ifstyl = style;
    s.igpar1 = igpar1;
  } else {
    driver(op);
  }
  memory_mode = false;
  s.xscale = xscale;
  s.yscale = yscale;
}

// The memory metafile's writers: what the file writers make, appended to the
// metafile of the present target. An element that doesn't fit is dropped
// whole, so the metafile stays readable.
void yygcgm1(std::string_view bytes) {
  auto& rec = metainfo()[state().itargid];
  if (rec.buffer.size() + bytes.size() > rec.capacity) {
    yyerror(kErrorFull, "YYGCGM1");
    return;
  }
  rec.buffer.append(bytes);
}

void yygcgm2(int cls, int id, size_t length) { yygcgm1(yycgm2(cls, id, length)); }

void yygcgm4(int cls, int id, int rgb) { yygcgm1(yycgm4(cls, id, rgb)); }

void yygcgm5(int value) {
  std::string out;
  yycgm5(out, value);
  yygcgm1(out);
}

void yygcgm6(int a, int b) {
  std::string out;
  yycgm6(out, a, b);
  yygcgm1(out);
}

void yygcgm9(std::string_view text) {
  std::string out;
  yycgm9(out, text);
  yygcgm1(out);
}

void yygcgm10(int id, size_t from, size_t to) {
  const bool was = memory_mode;
  memory_mode = true;
  const auto& s = state();
  std::string p;
  for (size_t i = from; i < to && i < s.xwork.size(); ++i) yycgm3(p, s.xwork[i], s.ywork[i]);
  memory_mode = was;
  yygcgm1(yycgmelement(kPrimitive, id, p, true));
}

void yygcgmopen(int id, size_t capacity) {
  constexpr size_t kDefaultCapacity = 1 << 20;
  auto& rec = metainfo()[id];
  rec.buffer.clear();
  if (capacity > 0) rec.capacity = capacity;
  else if (rec.capacity == 0) rec.capacity = kDefaultCapacity;
}

const std::string& yygcgmdata(int id) { return metainfo()[id].buffer; }

namespace {

int s16(const std::string& p, size_t at) {
  if (at + 1 >= p.size()) return 0;
  return static_cast<int16_t>((static_cast<unsigned char>(p[at]) << 8) | static_cast<unsigned char>(p[at + 1]));
}

int rgb_of(const std::string& p) {
  if (p.size() < 3) return 0;
  return static_cast<unsigned char>(p[0]) | (static_cast<unsigned char>(p[1]) << 8) |
         (static_cast<unsigned char>(p[2]) << 16);
}

}  // namespace

void IGrReplay(int id) {
  auto& s = state();
  const auto found = metainfo().find(id);
  if (found == metainfo().end()) return;
  // A copy: replaying onto the same metafile must not read what it writes.
  const std::string data = found->second.buffer;
  const int model = s.icmodel, colour = s.ichnalgl, style = s.ifstyl, linetype = s.lintyp;
  const float chsizy = s.chsizy, chsizx = s.chsizx, angle = s.chrotar;
  const int align = s.ichali;
  float fx = 1, fy = 1;
  int line = 0, fill = 0, text = 0, interior = 1, height = 0;
  float textangle = 0;
  std::vector<float> x, y;
  auto points = [&](const std::string& p, size_t from) {
    x.clear();
    y.clear();
    for (size_t i = from; i + 3 < p.size(); i += 4) {
      x.push_back(static_cast<float>(s16(p, i)) * fx);
      y.push_back(static_cast<float>(s16(p, i + 2)) * fy);
    }
  };
  auto colour_to = [&](int rgb) {
    s.icmodel = 0;
    IGrColourN(rgb);
  };
  size_t at = 0;
  while (at + 1 < data.size()) {
    const int head = (static_cast<unsigned char>(data[at]) << 8) | static_cast<unsigned char>(data[at + 1]);
    at += 2;
    const int cls = head >> 12, eid = (head >> 5) & 0x7F;
    std::string p;
    size_t length = static_cast<size_t>(head & 0x1F);
    if (length == static_cast<size_t>(kLongForm)) {
      for (bool more = true; more && at + 1 < data.size();) {
        const int w = (static_cast<unsigned char>(data[at]) << 8) | static_cast<unsigned char>(data[at + 1]);
        at += 2;
        more = (w & 0x8000) != 0;
        const size_t part = static_cast<size_t>(w & 0x7FFF);
        p.append(data, at, part);
        at += part + (part & 1);
      }
    } else {
      p.assign(data, at, length);
      at += length + (length & 1);
    }
    switch (cls * 100 + eid) {
      case 206:  // the extent, onto the whole raster
        fx = s.xngraf / static_cast<float>(std::max(s16(p, 4), 1));
        fy = s.yngraf / static_cast<float>(std::max(s16(p, 6), 1));
        break;
      case 502:
        IGrLineType(static_cast<int>(std::find(kLineTypes.begin(), kLineTypes.end(), s16(p, 0)) - kLineTypes.begin()) % 8);
        break;
      case 504: line = rgb_of(p); break;
      case 514: text = rgb_of(p); break;
      case 523: fill = rgb_of(p); break;
      case 522: interior = s16(p, 0); break;
      case 515: height = s16(p, 0); break;
      case 516: textangle = static_cast<float>(std::atan2(s16(p, 6), s16(p, 4)) * 57.29577951308232); break;
      case 401:
        points(p, 0);
        colour_to(line);
        yygrpolyline(x.data(), y.data(), static_cast<int>(x.size()), 1);
        break;
      case 407:
      case 411:
      case 417: {
        points(p, 0);
        if (eid == 11 && x.size() == 2 && interior == 1) {
          // Rectangles stay rectangles, for drivers that have them.
          float ax, ay, bx, by;
          yyi2e(x[0], y[0], ax, ay);
          yyi2e(x[1], y[1], bx, by);
          colour_to(fill);
          s.ifstyl = zelv_graphics::kFillSolid;
          yygrrectangle(ax, ay, bx, by, false);
          break;
        }
        if (eid == 11 && x.size() == 2) {
          x = {x[0], x[1], x[1], x[0]};
          y = {y[0], y[0], y[1], y[1]};
        } else if (eid == 17 && x.size() == 3) {
          const float cx = x[0], cy = y[0], rx = std::abs(x[1] - cx), ry = std::abs(y[2] - cy);
          constexpr int kSteps = 96;
          x.clear();
          y.clear();
          for (int i = 0; i <= kSteps; ++i) {
            const double a = 2 * M_PI * i / kSteps;
            x.push_back(cx + rx * static_cast<float>(std::cos(a)));
            y.push_back(cy + ry * static_cast<float>(std::sin(a)));
          }
        }
        if (interior == 1) {
          colour_to(fill);
          s.ifstyl = zelv_graphics::kFillSolid;
          yygrpolygoncomplex(x.data(), y.data(), static_cast<int>(x.size()), 1);
        } else {
          colour_to(line);
          if (x.size() > 1) {
            x.push_back(x[0]);
            y.push_back(y[0]);
          }
          yygrpolyline(x.data(), y.data(), static_cast<int>(x.size()), 1);
        }
        break;
      }
      case 409: {
        // A cell array back as an image over its box.
        if (p.size() < 20) break;
        zg::ImageData img;
        img.width = s16(p, 12);
        img.height = s16(p, 14);
        const size_t row = static_cast<size_t>(std::max(img.width, 0)) * 3;
        const size_t rowlen = row + (row & 1);
        if (img.width <= 0 || img.height <= 0 || p.size() < 20 + rowlen * static_cast<size_t>(img.height)) break;
        for (int yy = 0; yy < img.height; ++yy)
          for (size_t i = 0; i < row; i += 3) {
            const size_t at = 20 + rowlen * static_cast<size_t>(yy) + i;
            img.rgb.push_back(rgb_of(p.substr(at, 3)));
          }
        yygrimage(img, static_cast<float>(s16(p, 0)) * fx, static_cast<float>(s16(p, 6)) * fy,
                  static_cast<float>(s16(p, 4)) * fx, static_cast<float>(s16(p, 2)) * fy);
        break;
      }
      case 405: {
        if (p.size() < 11) break;
        const size_t n = std::min(static_cast<size_t>(static_cast<unsigned char>(p[10])), p.size() - 11);
        const float h = static_cast<float>(height) * fy;
        colour_to(text);
        s.chsizy = s.ypxlen > 0 ? h / s.ypxlen : chsizy;
        s.chsizx = s.chsizy * 0.4f * s.ypxlen / std::max(s.xpxlen, 1.0f);
        s.ichali = 0;
        IGrCharRotate(textangle);
        // The anchor is the cell's foot; the text starts from its middle line.
        float ux, uy;
        const float rx = static_cast<float>(s16(p, 4)) * fx - s.sinhgt * 0.5f;
        const float ry = static_cast<float>(s16(p, 6)) * fy + s.coshgt * 0.5f;
        yyi2e(rx, ry, ux, uy);
        WGrTextString(ux, uy, std::string_view(p).substr(11, n));
        break;
      }
      default:
        break;
    }
  }
  s.chsizx = chsizx;
  s.chsizy = chsizy;
  s.ichali = align;
  IGrCharRotate(angle);
  s.ifstyl = style;
  IGrLineType(linetype);
  s.icmodel = model;
  IGrColourN(colour);
}

// Reads a metafile's descriptor and first picture's set-up, up to the body:
// colour count and the aspect of the VDC extent. False on a short file.
bool yyinfocgm(const std::string& file, int& colours, float& aspect) {
  colours = 1;
  aspect = 1.0f;
  std::FILE* f = std::fopen(file.c_str(), "rb");
  if (!f) {
    yyerror(kErrorOpen, "IGrFileInfo");
    return false;
  }
  int intprec = 16, ivdciprec = 16;
  bool ok = false;
  auto get = [&](size_t n, std::string& out) {
    out.resize(n);
    return n == 0 || std::fread(out.data(), 1, n, f) == n;
  };
  std::string head, p;
  while (get(2, head)) {
    const int h = (static_cast<unsigned char>(head[0]) << 8) | static_cast<unsigned char>(head[1]);
    size_t len = static_cast<size_t>(h & 31);
    if (len == static_cast<size_t>(kLongForm)) {
      if (!get(2, head)) break;
      len = static_cast<size_t>(((static_cast<unsigned char>(head[0]) << 8) | static_cast<unsigned char>(head[1])) & 0x7FFF);
    }
    if (!get(len + (len & 1), p)) break;
    const int cls = h >> 12, id = (h >> 5) & 127;
    auto value = [&](size_t at, int bits) {
      int v = 0;
      for (int b = 0; b < bits / 8 && at + static_cast<size_t>(b) < p.size(); ++b)
        v = (v << 8) | static_cast<unsigned char>(p[at + static_cast<size_t>(b)]);
      if (bits == 16 && v >= 0x8000) v -= 0x10000;
      return v;
    };
    if (cls == 1 && id == 4) intprec = value(0, 16);
    if (cls == 3 && id == 1) ivdciprec = value(0, intprec);
    if (cls == 1 && id == 7) colours = 1 << std::min(3 * value(0, intprec), 24);
    if (cls == 2 && id == 6) {
      const int step = ivdciprec / 8;
      const int x1 = value(0, ivdciprec), y1 = value(static_cast<size_t>(step), ivdciprec);
      const int x2 = value(static_cast<size_t>(2 * step), ivdciprec), y2 = value(static_cast<size_t>(3 * step), ivdciprec);
      if (y2 != y1) aspect = std::abs(static_cast<float>(x2 - x1) / static_cast<float>(y2 - y1));
    }
    if (cls == 0 && id == 4) {
      ok = true;
      break;
    }
  }
  std::fclose(f);
  if (!ok) yyerror(kErrorShort, "IGrFileInfo");
  return ok;
}
