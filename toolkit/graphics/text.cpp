// Text: size, family, alignment and angle; device text handed to a path's
// driver, or software text drawn as strokes or filled outlines from the font in
// force. Each path may end up with a different kind.
#include "toolkit/base/error.h"
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"

#include <algorithm>
#include <cmath>
#include <vector>

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {
constexpr float kDefaultWidth = 0.0133333f, kDefaultHeight = 0.0333333f;
constexpr double kRadian = 0.017453292519943295;
constexpr size_t kMaxText = 1024;
constexpr float kAllSizes = 1.7E38f;
constexpr int kAllAngles = 360;
constexpr float kItalicSlant = 0.4663f;
constexpr float kUnderlineDrop = 0.45f;
constexpr float kEuroWidth = 0.74f;
constexpr int kPathScreen = 1, kPathHardcopy = 2;
constexpr int kStyleBold = 1, kStyleItalic = 2, kStyleUnderline = 4, kStyleBackground = 8;
constexpr int kErrorSpacing = 66;  // invalid character code
constexpr size_t kPropCapability = 26;  // position 27: proportional device text

// Character code as drawn: control and unused codes are blanks.
int drawn_code(unsigned char c) {
  const auto& f = state().font;
  if (c < 32 || c == 127 || (c >= 129 && c <= 160)) return 32;
  if (c == 128) return f.icheuro != 0 ? 127 : 32;
  if (c >= 161 && f.ichset == 7) return 32;
  return c;
}

float width_of(int code) {
  const auto& s = state();
  if (code >= 32 && code <= 127) return s.chspac7[static_cast<size_t>(code - 32)];
  if (code >= 161 && code <= 255) return s.chspac8[static_cast<size_t>(code - 161)];
  return s.chspac7[0];
}

// Width factor of a character in cells: 1 at fixed pitch.
float factor(unsigned char c) { return state().ichprop == 0 ? 1.0f : width_of(drawn_code(c)); }

// Runs a drawing on one path with the other switched off for the while.
template <typename F>
void on_path(int path, F&& draw) {
  auto& s = state();
  const int screen = s.igscrn, hard = s.ighcpy;
  if (path == kPathScreen) s.ighcpy = 0;
  else s.igscrn = 0;
  draw();
  s.igscrn = screen;
  s.ighcpy = hard;
}

void hear_both(int op) {
  yygdrv(op);
  yyhdrv(op);
}

void cell_vectors(float w, float h) {
  auto& s = state();
  s.coswid = w * s.chrotc;
  s.coshgt = h * s.chrotc;
  s.sinwid = w * s.chrotx;
  s.sinhgt = h * s.chroty;
}

}  // namespace

// Half a cell below and above the middle line; stacked text as wide as its
// widest character.
void yygrtextstringfillback(float sx, float sy, float length, float w, float h) {
  auto& s = state();
  const int colour = s.ichnalgl, model = s.icmodel, style = s.ifstyl, previous = s.iprevcol;
  // The path in hand takes the background colour; a path switched off
  // for this pass keeps its own.
  const int path = s.igscrn > 0 && s.ighcpy > 0 ? kBothPaths : s.igscrn > 0 ? kPathOfScreen : kPathOfHardcopy;
  yygrcolourn(path, s.ibackcol, 0);
  s.ifstyl = zelv_graphics::kFillSolid;
  float ax, ay, bx, by;  // along and across
  if (s.ichdir == 0) {
    ax = length * s.chrotc; ay = length * s.chrotx;
    bx = -h * s.chroty; by = h * s.chrotc;
    const float x[] = {sx - bx / 2, sx - bx / 2 + ax, sx + bx / 2 + ax, sx + bx / 2};
    const float y[] = {sy - by / 2, sy - by / 2 + ay, sy + by / 2 + ay, sy + by / 2};
    yygrpolygoncomplex(x, y, 4, 1);
  } else {
    ax = w * s.chrotc; ay = w * s.chrotx;
    bx = length * s.chroty; by = -length * s.chrotc;
    const float x[] = {sx - ax / 2, sx + ax / 2, sx + ax / 2 + bx, sx - ax / 2 + bx};
    const float y[] = {sy - ay / 2, sy + ay / 2, sy + ay / 2 + by, sy - ay / 2 + by};
    yygrpolygoncomplex(x, y, 4, 1);
  }
  s.ifstyl = style;
  yygrcolourn(path, colour, model);
  s.iprevcol = previous;
}

void yygrcolourn(int path, int colour, int model) {
  auto& s = state();
  s.icmodel = model == 1 ? 1 : 0;
  s.iprevcol = yycolourrgb(s.ichnalgl);
  s.ichnalgl = colour;
  if (path != kPathOfHardcopy) yygdrv(zg::OpColour);
  if (path != kPathOfScreen) yyhdrv(zg::OpColour);
}

namespace {

void draw_glyph(int code, float px, float py, float xs, float ys, float shear) {
  auto& s = state();
  const auto& f = s.font;
  size_t index;
  if (code >= 33 && code <= 127) index = static_cast<size_t>(code - 33);
  else if (code >= 161 && code <= 255) index = static_cast<size_t>(code - 161);
  else return;
  const auto& loc = code <= 127 ? f.icloc7 : f.icloc8;
  if (index + 1 >= loc.size()) return;
  const size_t begin = static_cast<size_t>(std::max(loc[index], 0));
  const size_t end = std::min(static_cast<size_t>(std::max(loc[index + 1], 0)), f.cchdata.size());
  static constexpr std::string_view kGrid = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrst";
  std::vector<float> x, y;
  auto flush = [&] {
    if (f.ichvec != 0) {
      if (x.size() == 2) yylini(x[0], y[0], x[1], y[1]);
      else if (x.size() > 2) yygrpolyline(x.data(), y.data(), static_cast<int>(x.size()), 1);
    } else if (x.size() > 2) {
      yygrpolygoncomplex(x.data(), y.data(), static_cast<int>(x.size()), 1);
    }
    x.clear();
    y.clear();
  };
  for (size_t i = begin; i < end;) {
    const auto gx = kGrid.find(f.cchdata[i]);
    const auto gy = i + 1 < end ? kGrid.find(f.cchdata[i + 1]) : std::string_view::npos;
    if (gx == std::string_view::npos || gy == std::string_view::npos) {
      flush();
      ++i;
      continue;
    }
    const float yv = static_cast<float>(gy) * ys;
    const float xv = static_cast<float>(gx) * xs + shear * yv;
    x.push_back(px - yv * s.chroty + s.chrotc * xv);
    y.push_back(py + yv * s.chrotc + s.chrotx * xv);
    i += 2;
  }
  flush();
}

// Software text from the start point (alignment already applied) on the paths
// that are on.
void software(float sx, float sy, std::string_view text, float w, float h) {
  auto& s = state();
  const auto& f = s.font;
  const int n = static_cast<int>(text.size());
  cell_vectors(w, h);
  const float length = s.ichdir == 0 ? w * (s.ichprop == 1 ? WGrTextLength(text, 1) : static_cast<float>(n))
                                     : h * static_cast<float>(n);
  if (s.ichstyl & kStyleBackground) {
    float widest = 0;
    for (char c : text) widest = std::max(widest, factor(static_cast<unsigned char>(c)));
    yygrtextstringfillback(sx, sy, length, w * widest, h);
  }
  float ys = h / f.yspace, xs = w / f.xspace;
  if (s.ichprop != 0 && f.xgridc < 8) xs *= 0.75f;
  const float shear = h > 0 ? s.chslnt * w / h : 0;
  const int style = s.ifstyl, width = s.linwid, hwidth = s.ihcopt[zelv_graphics::kOptLineWidth];
  const bool bold = f.ichvec != 0 && (s.ichstyl & kStyleBold) != 0;
  if (f.ichvec == 0) {
    s.ifstyl = zelv_graphics::kFillSolid;
    s.inoutstr = 1;
  }
  if (bold) {
    s.linwid = width * 2;
    s.ihcopt[zelv_graphics::kOptLineWidth] = hwidth * 2;
    hear_both(zg::OpLineWidth);
  }
  const float gridw = f.xgridc * xs;
  float px, py;
  if (s.ichdir == 0) {
    const float f0 = n > 0 ? factor(static_cast<unsigned char>(text[0])) : 1.0f;
    px = sx + (f0 * s.coswid + s.sinhgt - s.chrotc * gridw) / 2;
    py = sy + (f0 * s.sinwid - s.coshgt - s.chrotx * gridw) / 2;
  } else {
    px = sx + (s.chroty * f.ygridc * ys + s.sinhgt - s.chrotc * gridw) / 2;
    py = sy - (s.chrotc * f.ygridc * ys + s.coshgt + s.chroty * gridw) / 2;
  }
  for (int i = 0; i < n; ++i) {
    const auto c = static_cast<unsigned char>(text[static_cast<size_t>(i)]);
    const int code = drawn_code(c);
    const float fc = factor(c);
    const float cx = fc * s.coswid, cy = fc * s.sinwid;
    const float dx = s.coswid * (1 - fc) / 2, dy = s.sinwid * (1 - fc) / 2;
    if (s.ichdir == 0 && i > 0) {
      px -= dx;
      py -= dy;
    }
    if (code != 32) draw_glyph(code, px, py, xs, ys, shear);
    if (s.ichdir == 0) {
      px += dx + cx;
      py += dy + cy;
    } else {
      px += s.sinhgt;
      py -= s.coshgt;
    }
  }
  if ((s.ichstyl & kStyleUnderline) && s.ichdir == 0) {
    const float ux = sx + s.sinhgt * kUnderlineDrop, uy = sy - s.coshgt * kUnderlineDrop;
    yylini(ux, uy, ux + length * s.chrotc, uy + length * s.chrotx);
  }
  s.ifstyl = style;
  s.inoutstr = 0;
  if (bold) {
    s.linwid = width;
    s.ihcopt[zelv_graphics::kOptLineWidth] = hwidth;
    hear_both(zg::OpLineWidth);
  }
}

// Device text on one path: whole characters that leave the area are dropped.
void device(int path, float sx, float sy, std::string_view text, float w, float h) {
  auto& s = state();
  cell_vectors(w, h);
  std::vector<float> widths;
  for (char c : text) widths.push_back(w * factor(static_cast<unsigned char>(c)));
  size_t first = 0, last = text.size();
  float ox = sx, oy = sy;
  if (s.ichdir == 0) {
    // A character's cell corners: its left end half a cell below the middle
    // line, its right end half a cell above.
    auto inside = [&](float x, float y, float cw) {
      const float hx = -h / 2 * s.chroty, hy = h / 2 * s.chrotc;
      return yygrinbox(x - hx, y - hy) && yygrinbox(x + cw * s.chrotc + hx, y + cw * s.chrotx + hy);
    };
    while (first < last && !inside(ox, oy, widths[first])) {
      ox += widths[first] * s.chrotc;
      oy += widths[first] * s.chrotx;
      ++first;
    }
    float ex = ox, ey = oy;
    for (size_t i = first; i < last; ++i) {
      ex += widths[i] * s.chrotc;
      ey += widths[i] * s.chrotx;
    }
    while (last > first) {
      const float cw = widths[last - 1];
      if (inside(ex - cw * s.chrotc, ey - cw * s.chrotx, cw)) break;
      ex -= cw * s.chrotc;
      ey -= cw * s.chrotx;
      --last;
    }
  } else if (!yygrinbox(sx, sy)) {
    return;
  }
  if (first >= last) return;
  const std::string_view shown = text.substr(first, last - first);
  float length = 0;
  for (size_t i = first; i < last; ++i) length += widths[i];
  if (s.ichdir != 0) length = h * static_cast<float>(shown.size());
  on_path(path, [&] {
    if (s.ichstyl & kStyleBackground) yygrtextstringfillback(ox, oy, length, w, h);
    const bool single = !(s.ichprop == 1 || (s.ichprop == 2 && path == kPathHardcopy && s.ipropcap[2] == 0));
    if (single || s.ichdir != 0) {
      s.cgrstr.assign(shown);
      s.grx = {ox, w, ox + length * s.chrotc};
      s.gry = {oy, h, oy + length * s.chrotx};
      s.igrx = {static_cast<int>(shown.size()), 3};
      s.igry = {yytrunc(oy), 0};
      hear_both(zg::OpText);
    } else {
      float x = ox, y = oy;
      for (size_t i = 0; i < shown.size(); ++i) {
        const float cw = widths[first + i];
        s.cgrstr.assign(1, shown[i]);
        s.grx = {x, cw, x + cw * s.chrotc};
        s.gry = {y, h, y + cw * s.chrotx};
        s.igrx = {1, (i == 0 ? 1 : 0) | (i + 1 == shown.size() ? 2 : 0)};
        s.igry = {yytrunc(y), 0};
        hear_both(zg::OpText);
        x += cw * s.chrotc;
        y += cw * s.chrotx;
      }
    }
    if ((s.ichstyl & kStyleUnderline) && s.ichdir == 0) {
      float dy = length * s.chrotx;
      if (path == kPathHardcopy && s.asprat != 0) dy *= s.asprath / s.asprat;
      const float ux = ox + s.sinhgt * kUnderlineDrop, uy = oy - s.coshgt * kUnderlineDrop;
      yylini(ux, uy, ux + length * s.chrotc, uy + dy);
    }
  });
}

void substitute(int path, float sx, float sy, std::string_view text, float w, float h) {
  auto& s = state();
  const bool keep = s.ichsubs[3] != 0;
  if (!keep) yygrtextfontsave(true);
  switch (s.ichfam2) {
    case 1: WGrOFontFixed(); break;
    case 3: WGrOFontRoman(); break;
    case 4: WGrOFontSymbol(); break;
    default: WGrOFontSwiss();
  }
  const float slant = s.chslnt;
  s.ichtyp = 1;
  s.chslnt = (s.ichstyl & kStyleItalic) ? kItalicSlant : 0.0f;
  on_path(path, [&] { software(sx, sy, text, w, h); });
  s.chslnt = slant;
  s.ichtyp = 0;
  if (!keep) yygrtextfontsave(false);
}

}  // namespace

void yychsfont(float xspace, float yspace, float xgrid, float ygrid, int set, int flags, int spacing, int target,
               std::string_view name, std::string_view data, const std::array<int, 96>& loc7,
               const std::array<int, 96>& loc8) {
  if (target == 1) return;  // the 3-D text's font has no reader here
  auto& f = state().font;
  f.xspace = xspace; f.yspace = yspace; f.xgridc = xgrid; f.ygridc = ygrid;
  f.ichset = set;
  f.ichvec = (flags & 1) != 0 ? 1 : 0;
  f.icheuro = (flags & 2) != 0 ? 1 : 0;
  f.ichspa = spacing;
  f.cswfontfile.assign(name);
  f.cchdata.assign(data);
  f.icloc7 = loc7;
  if (f.icheuro == 0) f.icloc7[95] = f.icloc7[94];  // no glyph in 127's place
  f.icloc8 = loc8;
  f.ichwgt = 0;
}

bool yygrtextspacing(int character, float spacing7, float spacing8) {
  auto& s = state();
  if (character == 0) {
    yygrdefaultspacing(s.chspac7, s.chspac8);
    s.chspac7[127 - 32] = kEuroWidth;
    return true;
  }
  if (character >= 32 && character <= 126) {
    s.chspac7[static_cast<size_t>(character - 32)] = spacing7;
    return true;
  }
  if (character == 128) {
    s.chspac7[127 - 32] = kEuroWidth;
    return true;
  }
  if (character >= 161 && character <= 255) {
    s.chspac8[static_cast<size_t>(character - 161)] = spacing8;
    return true;
  }
  yyerror(kErrorSpacing, s.cerrsub);
  return false;
}

void yygrtextinit() {
  auto& s = state();
  s.ichtyp = 0;
  s.ichdir = 0;
  s.ichsubs = {0, 1, 1, 0};
  s.inoutstr = 0;
  s.chslnt = 0;
  s.ichratio = 0;
  s.chratio = 1;
  s.chsizxreq = s.chsizx;
  s.chsizyreq = s.chsizy;
  // The screen's fonts come in every size but don't turn.
  s.igcset[1] = 8;
  s.sizemin[1] = kAllSizes;
  s.icsrot[1] = 1;
  s.ipropcap[1] = 0;
  yygrtextspacing(0, 0, 0);
  WGrVFontStandard();
  s.font.ichtyp = 0;
  yygrtextrotate(0);
}

void yygrtextrotate(float angle) {
  auto& s = state();
  s.chrotar = std::fmod(angle + static_cast<float>((static_cast<int>(std::abs(angle)) / 360 + 1) * 360), 360.0f);
  s.chrota = std::fmod(static_cast<float>(s.igurot) + s.chrotar, 360.0f);
  const float a = (s.igurot % 180 == 0) ? static_cast<float>(s.nxgraf) / static_cast<float>(s.nygraf)
                                        : static_cast<float>(s.nygraf) / static_cast<float>(s.nxgraf);
  const float f = (s.xpxlen > 0 && s.ygalen > 0) ? a * (s.ypxlen / s.xpxlen) * (s.xgalen / s.ygalen) : 1.0f;
  auto set = [f](float deg, float& c, float& x, float& y) {
    const double r = deg * kRadian;
    c = static_cast<float>(std::cos(r));
    const float sn = static_cast<float>(std::sin(r));
    x = f * sn;
    y = f != 0 ? sn / f : sn;
  };
  set(s.chrota, s.chrotc, s.chrotx, s.chroty);
  set(s.chrotar, s.chrotcr, s.chrotxr, s.chrotyr);
}

bool yygrtextsubstitution(int path, float width, float height) {
  const auto& s = state();
  const auto p = static_cast<size_t>(path == 1 ? kPathHardcopy : kPathScreen);
  // Screen text kept to the area's character count is taken as the right size.
  const bool scaled = false;
  bool sub = s.ichsubs[p] != 0 && scaled;
  bool u = false;
  if (s.igcset[p] == 0) {
    u = true;
  } else if (s.ichprop == 0) {
    if (s.sizemin[p] >= 0) {
      u = s.ichsubs[p] != 0 && width > s.sizemin[p] && height > s.sizemin[p];
      if (!u) sub = false;
    }
  } else {
    const auto& cap = s.cgcapab[p];
    u = cap.size() > kPropCapability && cap[kPropCapability] == '0';
  }
  bool v = false;
  if (s.icsrot[p] == 0) v = true;
  else if (s.icsrot[p] == 1) v = std::abs(s.chrota) > 1 && std::abs(s.chrota - 360.0f) > 1;
  return u || sub || v;
}

void yygrtextfontsave(bool save) {
  auto& s = state();
  if (save) {
    s.fontsaved = s.font;
    s.fontsaved.ichtyp = s.ichtyp;
  } else {
    s.font = s.fontsaved;
    s.ichtyp = s.fontsaved.ichtyp;
  }
}

float WGrTextLength(std::string_view text, int mode) {
  auto& s = state();
  text = text.substr(0, kMaxText);
  if (s.ichprop != 1 && s.ichtyp == 0 && mode != 1 && (s.igscrn > 0 || s.ighcpy > 0)) {
    s.igpar2 = 0;
    s.igpar1 = static_cast<int>(text.size());
    s.cgrstr.assign(text);
    if (s.igscrn > 0) yygdrv(zg::OpMeasure);
    else yyhdrv(zg::OpMeasure);
    const float w = s.xpxlen * s.chsizx;
    if (s.igpar2 != 0 && w > 0) return mode == 2 ? s.grx[0] : s.grx[0] / w;
  }
  if (s.ichprop == 0) return static_cast<float>(text.size());
  float sum = 0;
  for (char c : text) sum += width_of(drawn_code(static_cast<unsigned char>(c)));
  return sum;
}

void yygrtextvectors() {
  auto& s = state();
  const float h = s.ypxlen * s.chsizy;
  s.sinhgt = h * s.chroty;
  s.coshgt = h * s.chrotc;
}

void yygrtextsizeset(float x, float y) {
  auto& s = state();
  s.chsizx = s.chsizxreq = x > 0 ? x : kDefaultWidth;
  s.chsizy = s.chsizyreq = y > 0 ? y : kDefaultHeight;
}

void yygrtextsize(std::optional<float> x, std::optional<float> y) {
  auto& s = state();
  if (x && y) yygrtextsizeset(*x, *y);
  const float xp = s.xpxlen, yp = s.ypxlen;
  if (s.ichratio != 0 && xp > 0 && yp > 0 && s.chratio > 0) {
    const float r = s.chsizyreq * yp / s.chratio;
    const bool heightfollows = s.ichratio == 1 || (s.ichratio == 3 && s.chsizxreq * xp <= r);
    if (heightfollows) {
      s.chsizx = s.chsizxreq;
      s.chsizy = s.chratio * s.chsizxreq * xp / yp;
    } else {
      s.chsizy = s.chsizyreq;
      s.chsizx = r / xp;
    }
  }
  s.ichfam2 = s.ichfam != 0 ? s.ichfam : (s.ichprop == 0 ? 1 : 2);
  yygrtextvectors();
  yyhdrv(zg::OpFont);
  if (s.ichtyp == 0) yygdrv(zg::OpFont);
}

void IGrCharSize(float width, float height) { yygrtextsize(width, height); }

void IGrCharRatio(int rule, float ratio) {
  auto& s = state();
  s.ichratio = std::clamp(rule, 0, 3);
  s.chratio = ratio > 0 ? ratio : 1.0f;
  yygrtextsize();
}

void IGrCharFont(int family, int style) {
  auto& s = state();
  s.ichfam = std::clamp(family, 0, 4);
  s.ichfam2 = s.ichfam != 0 ? s.ichfam : (s.ichprop == 0 ? 1 : 2);
  s.ichstyl = std::clamp(style, 0, 15);
  yygdrv(zg::OpFont);
  yyhdrv(zg::OpFont);
}

void IGrCharAlign(int alignment) { state().ichali = std::clamp(alignment, 0, 2); }

void IGrCharType(int type) { state().ichtyp = type == 1 ? 1 : 0; }

void IGrCharSpacing(int spacing) {
  auto& s = state();
  s.ichprop = std::clamp(spacing, 0, 2);
  if (s.ichfam == 0) s.ichfam2 = s.ichprop == 0 ? 1 : 2;
}

void IGrCharDirection(int direction) { state().ichdir = direction == 1 ? 1 : 0; }

void IGrCharRotate(float degrees) {
  yygrtextrotate(degrees);
  yygrtextvectors();
  yygdrv(zg::OpTextRotate);
  yyhdrv(zg::OpTextRotate);
}

void IGrCharOut(float x, float y, std::string_view text) { WGrTextString(x, y, text); }

void WGrTextString(std::optional<float> x, std::optional<float> y, std::string_view text) {
  auto& s = state();
  const float ux = x.value_or(s.xcur), uy = y.value_or(s.ycur);
  float rx, ry;
  yye2i(ux, uy, rx, ry);
  text = text.substr(0, kMaxText);
  const int n = static_cast<int>(text.size());
  const float w = s.xpxlen * s.chsizx, h = s.ypxlen * s.chsizy;
  cell_vectors(w, h);
  const float a = static_cast<float>(s.ichali) * 0.5f;
  float sx, sy, nx, ny;
  if (s.ichdir == 0) {
    const float l = w * (s.ichprop == 1 ? WGrTextLength(text, 1) : static_cast<float>(n));
    sx = rx - a * l * s.chrotc;
    sy = ry - a * l * s.chrotx;
    const float move = l - l * a + a * w;
    nx = rx + move * s.chrotc;
    ny = ry + move * s.chrotx;
  } else {
    const float l = h * static_cast<float>(n);
    sx = rx - a * l * s.chroty;
    sy = ry + a * l * s.chrotc;
    nx = sx + l * s.chroty;
    ny = sy - l * s.chrotc;
  }
  float cx, cy;
  yyi2e(nx, ny, cx, cy);
  IGrMoveTo(cx, cy);
  if (text.empty() || (s.igscrn <= 0 && s.ighcpy <= 0)) return;
  // Software text is drawn solid.
  const int linetype = s.lintyp;
  if (linetype != 0 && (s.ichtyp == 1 || (s.ichstyl & kStyleUnderline))) {
    s.lintyp = 0;
    hear_both(zg::OpLineType);
  }
  if (s.ichtyp == 1) {
    const float slant = s.chslnt;
    s.chslnt = (s.ichstyl & kStyleItalic) ? kItalicSlant : 0.0f;
    software(sx, sy, text, w, h);
    s.chslnt = slant;
  } else {
    for (int path : {kPathScreen, kPathHardcopy}) {
      if (path == kPathScreen ? s.igscrn <= 0 : s.ighcpy <= 0) continue;
      const auto p = static_cast<size_t>(path);
      bool soft = false;
      if (s.sizemin[p] < kAllSizes || s.icsrot[p] < kAllAngles) {
        const float sw = path == kPathHardcopy ? w * s.xscale : w, sh = path == kPathHardcopy ? h * s.yscale : h;
        soft = yygrtextsubstitution(path == kPathHardcopy ? 1 : 0, sw, sh);
      }
      if (soft) substitute(path, sx, sy, text, w, h);
      else device(path, sx, sy, text, w, h);
    }
  }
  if (s.lintyp != linetype) {
    s.lintyp = linetype;
    hear_both(zg::OpLineType);
  }
}
