// Hardcopy driver 8: an ASCII DXF drawing of one page, an entity per
// primitive, in inches.
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {

constexpr int kUnit = 1;
constexpr int kOptOffsetX = 3, kOptOffsetY = 4, kOptFillStep = 12, kOptColourDepth = 23, kOptOldPolyline = 40;
constexpr int kPageWidth = 756, kPageHeight = 540;
constexpr float kPointsPerInch = 72.0f;
constexpr float kTextDrop = 0.22f;
constexpr const char* kCapability = "00000111111111100010011011110";
constexpr std::array<float, 3> kHeightFactor = {0.78f, 0.63f, 0.63f};
constexpr std::array<int, 16> kColour16 = {8, 1, 9, 2, 2, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15, 8};

struct LineType {
  const char* name;
  const char* pattern;
  float total;
  std::array<float, 6> dashes;
  int count;
};
constexpr std::array<LineType, 7> kLineTypes = {{
    {"DOT", ".", 0.25f, {0, -0.25f}, 2},
    {"DASHED", "__ ", 0.75f, {0.5f, -0.25f}, 2},
    {"DASHDOT", "__ . ", 1, {0.5f, -0.25f, 0, -0.25f}, 4},
    {"DIVIDE", "__ . . ", 1.25f, {0.5f, -0.25f, 0, -0.25f, 0, -0.25f}, 6},
    {"CENTER", "____ _ ", 2, {1.25f, -0.25f, 0.25f, -0.25f}, 4},
    {"HIDDEN", "_ ", 0.25f, {0.12f, -0.12f}, 2},
    {"PHANTOM", "____ _ _ ", 2.5f, {1.25f, -0.25f, 0.25f, -0.25f, 0.25f, -0.25f}, 6},
}};
constexpr size_t kPatternWidth = 46;

struct DxfState {
  int icoldxf = 7;
  int lastrgb = -1, lastcol = 7;
  bool scanning = false;  // inside a fill bracket: lines are scan lines
};
DxfState& dx() {
  static DxfState v;
  return v;
}

// The standard colour table: seven primaries, two greys, 24 hues in five
// shades each at full and half saturation, six greys.
const std::array<int, 256>& idxfpal() {
  static const std::array<int, 256> table = [] {
    std::array<int, 256> t{};
    auto rgb = [](int r, int g, int b) { return r * 65536 + g * 256 + b; };
    t[1] = rgb(255, 0, 0); t[2] = rgb(255, 255, 0); t[3] = rgb(0, 255, 0); t[4] = rgb(0, 255, 255);
    t[5] = rgb(0, 0, 255); t[6] = rgb(255, 0, 255); t[7] = rgb(255, 255, 255); t[8] = rgb(65, 65, 65);
    t[9] = rgb(128, 128, 128);
    constexpr std::array<float, 5> kShade = {1.0f, 0.65f, 0.5f, 0.3f, 0.15f};
    for (int i = 10; i < 250; ++i) {
      const float hue = static_cast<float>((i - 10) / 10) * 15.0f;
      const float v = kShade[static_cast<size_t>((i % 10) / 2)] * 255.0f;
      const float sat = (i % 2) == 0 ? 1.0f : 0.5f;
      const float h6 = hue / 60.0f;
      const float f = h6 - std::floor(h6);
      const float p = v * (1 - sat), q = v * (1 - sat * f), u = v * (1 - sat * (1 - f));
      float r = v, g = u, b = p;
      switch (static_cast<int>(h6) % 6) {
        case 0: r = v; g = u; b = p; break;
        case 1: r = q; g = v; b = p; break;
        case 2: r = p; g = v; b = u; break;
        case 3: r = p; g = q; b = v; break;
        case 4: r = u; g = p; b = v; break;
        default: r = v; g = p; b = q;
      }
      t[static_cast<size_t>(i)] = rgb(static_cast<int>(r + 0.5f), static_cast<int>(g + 0.5f), static_cast<int>(b + 0.5f));
    }
    constexpr std::array<int, 6> kGrey = {51, 91, 132, 173, 214, 255};
    for (size_t i = 0; i < kGrey.size(); ++i) t[250 + i] = rgb(kGrey[i], kGrey[i], kGrey[i]);
    return t;
  }();
  return table;
}

int wrgbnearest(int r, int g, int b) {
  const auto& t = idxfpal();
  int best = 1;
  long bestd = -1;
  for (int i = 1; i < 256; ++i) {
    const int c = t[static_cast<size_t>(i)];
    const long dr = ((c >> 16) & 0xFF) - r, dg = ((c >> 8) & 0xFF) - g, db = (c & 0xFF) - b;
    const long d = dr * dr + dg * dg + db * db;
    if (bestd < 0 || d < bestd) {
      bestd = d;
      best = i;
    }
  }
  return best;
}

}  // namespace

void yydxf3(int code, std::string_view text) {
  yygrhcwriteline(kUnit, std::to_string(code));
  yygrhcwriteline(kUnit, text);
}

// A real with six decimals, leading blanks and trailing zeros gone, but one
// digit kept after the point.
std::string yydxfreal(float value) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%15.6f", static_cast<double>(value));
  std::string t(buf);
  t.erase(0, t.find_first_not_of(' '));
  const auto dot = t.find('.');
  if (dot != std::string::npos) {
    while (t.size() > dot + 2 && t.back() == '0') t.pop_back();
  }
  return t;
}

void yydxf4(int code, float value) { yydxf3(code, yydxfreal(value)); }

void yydxf5(int code, int value) { yydxf3(code, std::to_string(value)); }

void yydxf2(int codex, int codey, float x, float y) {
  const auto& s = state();
  yydxf4(codex, static_cast<float>(s.ihcopt[kOptOffsetX]) / kPointsPerInch + x * s.xscale);
  yydxf4(codey, static_cast<float>(s.ihcopt[kOptOffsetY]) / kPointsPerInch + y * s.yscale);
}

void yydxf1(std::string_view name) {
  const auto& s = state();
  // The light polyline is read only with its class markers.
  const bool marked = name == "LWPOLYLINE";
  yydxf3(0, name);
  if (marked) yydxf3(100, "AcDbEntity");
  yydxf3(8, "1");
  if (s.ihcopt[kOptColourDepth] == 24) yydxf5(420, dx().icoldxf);
  else yydxf5(62, dx().icoldxf);
  if (marked) yydxf3(100, "AcDbPolyline");
}

namespace {

void line_type() {
  const auto& s = state();
  if (s.lintyp > 0 && s.lintyp <= 7 && !dx().scanning) yydxf3(6, kLineTypes[static_cast<size_t>(s.lintyp - 1)].name);
}

void thickness() { yydxf4(39, static_cast<float>(state().ihcopt[zelv_graphics::kOptLineWidth]) / 720.0f); }

void open_file() {
  auto& s = state();
  yygrhcopen(kUnit);
  if (s.bhcerr) {
    s.ighcpy = 0;
    return;
  }
  dx() = DxfState{};
  const int depth = s.ihcopt[kOptColourDepth];
  if (depth < 8) {
    s.i24cap[2] = 0;
    s.ihcolours = depth == 4 ? 14 : 7;
  } else {
    s.i24cap[2] = 1;
    s.ihcolours = 255;
  }
  const float w = static_cast<float>(s.ihcopt[1]) / kPointsPerInch, h = static_cast<float>(s.ihcopt[2]) / kPointsPerInch;
  yydxf3(0, "SECTION");
  yydxf3(2, "HEADER");
  yydxf3(9, "$MEASUREMENT");
  yydxf5(70, 0);
  yydxf3(9, "$EXTMIN");
  yydxf3(10, "0.0");
  yydxf3(20, "0.0");
  yydxf3(9, "$EXTMAX");
  yydxf4(10, w);
  yydxf4(20, h);
  yydxf3(9, "$CECOLOR");
  yydxf3(62, "7");
  yydxf3(9, "$CELTYPE");
  yydxf3(6, "DASHDOT");
  yydxf3(9, "$VIEWCTR");
  yydxf4(10, w / 2);
  yydxf4(20, h / 2);
  yydxf3(9, "$LIMMIN");
  yydxf3(10, "0.0");
  yydxf3(20, "0.0");
  yydxf3(9, "$LIMMAX");
  yydxf4(10, w);
  yydxf4(20, h);
  yydxf3(0, "ENDSEC");
  yydxf3(0, "SECTION");
  yydxf3(2, "TABLES");
  yydxf3(0, "TABLE");
  yydxf3(2, "LTYPE");
  yydxf3(70, "9");
  for (const auto& lt : kLineTypes) {
    yydxf3(0, "LTYPE");
    yydxf3(2, lt.name);
    yydxf5(70, 0);
    std::string text;
    while (text.size() < kPatternWidth) text += lt.pattern;
    text.resize(kPatternWidth);
    yydxf3(3, text);
    yydxf3(72, "65");
    yydxf5(73, lt.count);
    yydxf4(40, lt.total);
    for (int i = 0; i < lt.count; ++i) yydxf4(49, lt.dashes[static_cast<size_t>(i)]);
  }
  yydxf3(0, "ENDTAB");
  yydxf3(0, "TABLE");
  yydxf3(2, "STYLE");
  yydxf3(70, "1");
  yydxf3(0, "STYLE");
  yydxf3(2, "STANDARD");
  yydxf5(70, 0);
  yydxf5(40, 0);
  yydxf3(41, "1");
  yydxf5(50, 0);
  yydxf5(71, 0);
  yydxf5(42, 0);
  yydxf3(3, "txt");
  yydxf3(0, "ENDTAB");
  yydxf3(0, "TABLE");
  yydxf3(2, "LAYER");
  yydxf3(70, "1");
  yydxf3(0, "LAYER");
  yydxf3(2, "1");
  yydxf5(70, 0);
  yydxf3(62, "7");
  yydxf3(6, "CONTINUOUS");
  yydxf3(0, "ENDTAB");
  yydxf3(0, "ENDSEC");
  yydxf3(0, "SECTION");
  yydxf3(2, "ENTITIES");
}

void colour() {
  auto& s = state();
  auto& v = dx();
  int r, g, b;
  yypalrgb(r, g, b);
  const int depth = s.ihcopt[kOptColourDepth];
  const int index = s.icmodel == 1 ? s.ichnalgl : yyrgbto8(yycolourrgb(s.ichnalgl));
  if (depth == 24) {
    v.icoldxf = r * 65536 + g * 256 + b;
  } else if (depth == 8) {
    const int rgb = r * 65536 + g * 256 + b;
    if (rgb != v.lastrgb) {
      v.lastrgb = rgb;
      v.lastcol = wrgbnearest(r, g, b);
    }
    v.icoldxf = v.lastcol;
  } else if (depth == 4) {
    v.icoldxf = kColour16[static_cast<size_t>(std::clamp(index / 16, 0, 15))];
  } else {
    v.icoldxf = ((index + 16) / 32) % 8;
    if (v.icoldxf == 0) v.icoldxf = 7;
  }
}

void polyline() {
  const auto& s = state();
  const size_t n = std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size());
  if (n < 2) return;
  const bool old = (s.ihcopt[kOptOldPolyline] & 1) != 0;
  yydxf1(old ? "POLYLINE" : "LWPOLYLINE");
  line_type();
  thickness();
  const bool closed = n > 2 && s.xwork[0] == s.xwork[n - 1] && s.ywork[0] == s.ywork[n - 1];
  const size_t count = closed ? n - 1 : n;
  yydxf5(70, closed ? 1 : 0);
  if (!old) {
    yydxf5(90, static_cast<int>(count));
    for (size_t i = 0; i < count; ++i) yydxf2(10, 20, s.xwork[i], s.ywork[i]);
    return;
  }
  yydxf3(66, "1");
  for (size_t i = 0; i < count; ++i) {
    yydxf3(0, "VERTEX");
    yydxf3(8, "1");
    yydxf2(10, 20, s.xwork[i], s.ywork[i]);
  }
  yydxf3(0, "SEQEND");
}

// True when a circle of the raster is a circle on the page.
bool round_on_page(float rx, float ry) {
  const auto& s = state();
  const float a = rx * s.xscale, b = ry * s.yscale;
  return std::abs(a - b) <= 1e-3f * std::max(a, b);
}

void fill(int op) {
  auto& s = state();
  auto& v = dx();
  if (s.igpar1 == -1) {
    v.scanning = false;
    return;
  }
  s.bdopause = true;
  if (s.ifstyl == zelv_graphics::kFillSolid && op == zg::OpRectHalf) {
    float x1 = std::max(s.grx[0], s.xminpx), x2 = std::min(s.grx[1], s.xmaxpx);
    float y1 = std::max(s.gry[0], s.yminpx), y2 = std::min(s.gry[1], s.ymaxpx);
    yydxf1("SOLID");
    yydxf2(10, 20, x1, y1);
    yydxf2(11, 21, x1, y2);
    yydxf2(12, 22, x2, y1);
    yydxf2(13, 23, x2, y2);
    return;
  }
  if (op == zg::OpEllipseHalf && s.ifstyl < 3 && round_on_page(s.grx[1], s.gry[1])) {
    yydxf1("CIRCLE");
    thickness();
    yydxf2(10, 20, s.grx[0], s.gry[0]);
    yydxf4(40, s.grx[1] * s.xscale);
    return;
  }
  if (op == zg::OpEllipseHalf || op == zg::OpPieHalf) {
    yygrhcshape(op);
    return;
  }
  // Everything else comes back as scan lines.
  v.scanning = s.ifstyl >= zelv_graphics::kFillHatch;
  s.igpar1 = -1;
}

void arc() {
  auto& s = state();
  s.bdopause = true;
  if (!round_on_page(s.grx[1], s.gry[1])) {
    s.igpar1 = 2;
    yygrhcshape(zg::OpArc);
    return;
  }
  s.igpar1 = 1;
  constexpr float kDegree = 57.29578f;
  const float a0 = s.grx[2] * kDegree, a1 = s.gry[2] * kDegree;
  yydxf1("ARC");
  line_type();
  thickness();
  yydxf2(10, 20, s.grx[0], s.gry[0]);
  yydxf4(40, s.grx[1] * s.xscale);
  yydxf4(50, std::min(a0, a1));
  yydxf4(51, std::max(a0, a1));
  // An outlined pie closes through the centre.
  if (s.ifstyl != 0 || s.ifdens < 3) {
    for (float a : {s.grx[2], s.gry[2]}) {
      yydxf1("LINE");
      thickness();
      yydxf2(10, 20, s.grx[0], s.gry[0]);
      yydxf2(11, 21, s.grx[0] + s.grx[1] * std::cos(a), s.gry[0] + s.grx[1] * std::sin(a));
    }
  }
}

void text() {
  const auto& s = state();
  float w = s.chsizx * static_cast<float>(s.ihcopt[1]) / kPointsPerInch;
  float h = s.chsizy * static_cast<float>(s.ihcopt[2]) / kPointsPerInch;
  if (s.igurot == 90 || s.igurot == 270) std::swap(w, h);
  const float x = s.grx[0] + s.sinhgt * kTextDrop, y = s.gry[0] - s.coshgt * kTextDrop;
  yydxf1("TEXT");
  yydxf4(40, h * kHeightFactor[static_cast<size_t>(std::clamp(s.ichprop, 0, 2))]);
  yydxf4(41, h > 0 ? w * s.asprath / h : 1.0f);
  yydxf5(50, static_cast<int>(s.chrota));
  const size_t n = std::min(static_cast<size_t>(std::max(s.igrx[0], 0)), s.cgrstr.size());
  yydxf3(1, std::string_view(s.cgrstr).substr(0, n));
  yydxf3(7, "STANDARD");
  if (s.ichdir == 0) {
    yydxf5(72, 0);
    yydxf2(10, 20, x, y);
  } else {
    yydxf3(72, "1");
    yydxf2(10, 20, x, y);
    yydxf2(11, 21, x + s.grx[1] / 2 * s.chrotc, y + s.grx[1] / 2 * s.chroty);
  }
}

}  // namespace

void xxdxf(int op) {
  auto& s = state();
  switch (op) {
    case zg::OpInit:
      if (s.igpar2 == zg::kAskDriver) {
        s.igpar2 = zelv_graphics::kDriverDxf;
        return;
      }
      s.ihcdrvflags = 0;
      yydefh();
      s.ihcopt[1] = kPageWidth;
      s.ihcopt[2] = kPageHeight;
      s.ihcres = {0, 90, 90};
      s.ihcopt[kOptFillStep] = 80;
      s.ihcopt[kOptColourDepth] = 8;
      s.ihcolours = 255;
      s.cgcapab[2] = kCapability;
      s.icsrot[2] = 360;
      s.lwcap[2] = 2;
      s.sizemin[2] = 0.222f;
      s.igcset[2] = 8;
      s.i24cap[2] = 1;
      s.igradcap[2] = 0;
      s.ipropcap[2] = 1;
      s.imgcap[2] = 0;
      s.ifmeth[1] = 0;
      s.cdeffile[2] = "zelvplot.dxf";
      s.ihcdrv = zelv_graphics::kDriverDxf;
      return;
    case zg::OpStart:
      s.xscale = static_cast<float>(s.ihcopt[1]) / (s.xngraf * kPointsPerInch);
      s.yscale = static_cast<float>(s.ihcopt[2]) / (s.yngraf * kPointsPerInch);
      s.yhstep = static_cast<float>(s.ihcopt[kOptFillStep]) / 100.0f * s.yngraf /
                 static_cast<float>(std::max(s.ihcopt[2], 1));
      if (s.igpar1 > 0) open_file();
      return;
    case zg::OpClose:
      yydxf3(0, "ENDSEC");
      yydxf3(0, "EOF");
      yygrhcclose(kUnit);
      return;
    case zg::OpEndPage:
      s.bdopause = false;
      return;
    case zg::OpColour:
      colour();
      return;
    case zg::OpLine:
      s.bdopause = true;
      yydxf1("LINE");
      line_type();
      thickness();
      yydxf2(10, 20, s.grx[0], s.gry[0]);
      yydxf2(11, 21, s.grx[1], s.gry[1]);
      return;
    case zg::OpPoint:
      s.bdopause = true;
      yydxf1("POINT");
      yydxf2(10, 20, s.grx[0], s.gry[0]);
      return;
    case zg::OpPolyline:
      s.bdopause = true;
      polyline();
      return;
    case zg::OpEllipseHalf:
    case zg::OpParallelHalf:
    case zg::OpRectHalf:
    case zg::OpTriHalf:
    case zg::OpPieHalf:
    case zg::OpPolyHalf:
      fill(op);
      return;
    case zg::OpArc:
      arc();
      return;
    case zg::OpText:
      s.bdopause = true;
      text();
      return;
    default:
      return;
  }
}
