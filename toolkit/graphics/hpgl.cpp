// Hardcopy drivers 1 and 12: pen-plotter language, and its second edition.
// The raster maps onto user units 0 to 32760 in both directions; replay
// records carry what the plotter language can't (colours, fills) for a later
// reader of the file.
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
constexpr float kUserRange = 32760.0f;
constexpr const char* kScale = "SC0 32760 0 32760";
constexpr int kOptOffsetX = 3, kOptOffsetY = 4, kOptFillStep = 12, kOptReplay = 18, kOptDeviceControl = 19,
              kOptTerminator = 21, kOptPlotterFill = 24;
constexpr char kEscape = 27;
constexpr const char* kCapability1 = "00000111111111100010011011100";
constexpr const char* kCapability2 = "00000111111111100010011011110";

// First edition, by model 1 to 10.
constexpr std::array<int, 10> kUnitsPerInch = {1016, 1021, 1021, 1016, 1016, 1016, 1016, 1016, 1016, 1016};
constexpr std::array<int, 10> kPens = {4, 6, 6, 4, 6, 8, 8, 8, 6, 6};
constexpr std::array<int, 10> kLeft = {400, 400, 400, 400, 400, 0, 0, 0, 400, 400};
constexpr std::array<int, 10> kRight = {10870, 11040, 16158, 10900, 10880, 10880, 10869, 15970, 10960, 15880};
constexpr std::array<int, 10> kTop = {7480, 7721, 11040, 7650, 7640, 7640, 7600, 10870, 7480, 10960};
constexpr std::array<int, 8> kPenOrder = {0, 2, 4, 1, 5, 3, 6, 7};
constexpr std::array<const char*, 8> kLineTypes1 = {"", "1", "2 2", "4 3", "6 2", "5 3", "3 1", "6 4"};
constexpr std::array<const char*, 8> kLineTypes2 = {"", "1 .3", "2 2", "4 3", "7 2", "5 3", "3 1", "6 3"};
constexpr std::array<float, 3> kTextX1 = {1.0f, 1.007f, 1.007f}, kTextY = {1.0f, 1.211f, 1.211f};
constexpr std::array<float, 3> kTextX2 = {1.0f, 0.932f, 1.06f};

// Second edition, by model 1 to 5.
constexpr std::array<int, 5> kRight2 = {10860, 10860, 10860, 15836, 10860};
constexpr std::array<int, 5> kTop2 = {7918, 7918, 7918, 10860, 7918};
constexpr std::array<int, 5> kPens2 = {2, 256, 2, 256, 256};
constexpr float kStepsPerPoint2 = 14.111111f;

constexpr int kRecordRgb = 1, kRecordColourHandling = 2, kRecordPage = 3, kRecordEndFill = 7, kRecordModel = 13;

constexpr int kRasterHalfTone = 1, kRasterCross = 2;
constexpr int kRasterWidth = 8, kRasterHeight = 4;

struct HpglState {
  bool second = false;
  int model = 1;
  int pen = -1, penafterpage = -1;
  bool newpage = true;
  std::array<int, 4> ip{};  // left, bottom, right, top in steps
  float stepsperpoint = 1016.0f / 72.0f;
  std::array<bool, 256> palset{};
  std::string size, direction;
};
HpglState& hp() {
  static HpglState v;
  return v;
}

bool replay() { return state().ihcopt[kOptReplay] != 0; }

}  // namespace

// One line of the file: the command's two letters, then the rest with runs of
// blanks folded to one and no blank right behind the command.
void yyhpglwrite(std::string_view text) {
  std::string out(text.substr(0, 2));
  bool blank = false;
  for (size_t i = 2; i < text.size(); ++i) {
    const char c = text[i];
    if (c == ' ') {
      blank = true;
      continue;
    }
    if (blank && out.size() > 2) out.push_back(' ');
    blank = false;
    out.push_back(c);
  }
  yygrhcwriteline(kUnit, out);
}

void yyhpglwritetrim(std::string_view text) {
  const auto end = text.find_last_not_of(' ');
  yyhpglwrite(text.substr(0, end == std::string_view::npos ? 0 : end + 1));
}

void yyhpglcmd(std::string_view text) { yyhpglwrite(text); }

void yyhpglcmdscaled(std::string_view command, float x, float y) {
  const auto& s = state();
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.2s%6d%6d", command.data(), yytrunc(x * s.xscale), yytrunc(y * s.yscale));
  yyhpglwrite(buf);
}

void yyhpglreplaydata(int kind, int a, int b, int c, int d) {
  if (!replay()) return;
  char buf[80];
  if (hp().second) {
    std::snprintf(buf, sizeof buf, "CO\"%d %d %d %d %d\"", kind, a, b, c, d);
  } else if (kind == kRecordRgb) {
    std::snprintf(buf, sizeof buf, "SC-%1d%9d%6d%6d", kind, a, b, c);
  } else if (kind < 10) {
    std::snprintf(buf, sizeof buf, "SC-%1d%6d%6d%6d", kind, a, b, c);
  } else {
    std::snprintf(buf, sizeof buf, "SC-%2d%6d%6d%6d", kind, a, b, c);
  }
  yyhpglwrite(buf);
  // The record's scale is nonsense to a plotter: the common one goes back.
  if (!hp().second) yyhpglwrite(kScale);
}

namespace {

std::string four(const std::array<int, 4>& v) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%7d%7d%7d%7d", v[0], v[1], v[2], v[3]);
  return buf;
}

void init(bool second) {
  auto& s = state();
  auto& v = hp();
  v = HpglState{};
  v.second = second;
  s.ihcdrvflags = 8;
  yydefh();
  const auto m = static_cast<size_t>(v.model - 1);
  s.ihcopt[zelv_graphics::kOptOrientation] = 1;
  s.ihcopt[kOptTerminator] = 4;
  s.ihcopt[kOptReplay] = second ? 0 : 1;
  if (!second) {
    v.stepsperpoint = static_cast<float>(kUnitsPerInch[m]) / 72.0f;
    s.ihcopt[kOptOffsetX] = static_cast<int>(static_cast<float>(kLeft[m]) / v.stepsperpoint);
    s.ihcopt[2] = static_cast<int>(static_cast<float>(kTop[m]) / v.stepsperpoint);
    s.ihcopt[1] = static_cast<int>(static_cast<float>(kRight[m]) / v.stepsperpoint) - s.ihcopt[kOptOffsetX];
    s.ihcolours = kPens[m];
    s.ihcres = {0, 90, 90};
    s.ihcopt[kOptFillStep] = 80;
    s.cgcapab[2] = kCapability1;
  } else {
    v.stepsperpoint = kStepsPerPoint2;
    s.ihcopt[2] = static_cast<int>(static_cast<float>(kTop2[m]) / v.stepsperpoint);
    s.ihcopt[1] = static_cast<int>(static_cast<float>(kRight2[m]) / v.stepsperpoint);
    s.ihcolours = kPens2[m];
    s.ihcres = {0, 300, 300};
    s.ihcopt[kOptFillStep] = 80;
    s.cgcapab[2] = kCapability2;
  }
  s.sizemin[2] = 1.7E38f;
  s.icsrot[2] = 360;
  s.lwcap[2] = 2;
  s.igcset[2] = 8;
  s.i24cap[2] = 0;
  s.igradcap[2] = 0;
  s.imgcap[2] = 0;
  s.ipropcap[2] = 0;
  s.ifmeth[1] = 0;
  s.cdeffile[2] = "zelvplot.plt";
  s.ihcdrv = second ? zelv_graphics::kDriverHpgl2 : zelv_graphics::kDriverHpgl;
}

void open_file() {
  auto& s = state();
  auto& v = hp();
  yygrhcopen(kUnit);
  if (s.bhcerr) {
    s.ighcpy = 0;
    return;
  }
  v.pen = -1;
  v.penafterpage = -1;
  v.newpage = true;
  v.palset.fill(false);
  v.size.clear();
  v.direction.clear();
  if (s.ihcopt[kOptDeviceControl] != 0)
    yygrhcwriteline(kUnit, std::string(1, kEscape) + (v.second ? "%0B" : ".Y"));
  const float p = v.stepsperpoint;
  v.ip = {static_cast<int>(static_cast<float>(s.ihcopt[kOptOffsetX]) * p),
          static_cast<int>(static_cast<float>(s.ihcopt[kOptOffsetY]) * p),
          static_cast<int>(static_cast<float>(s.ihcopt[1] + s.ihcopt[kOptOffsetX]) * p),
          static_cast<int>(static_cast<float>(s.ihcopt[2] + s.ihcopt[kOptOffsetY]) * p)};
  yyhpglcmd("IN; IP" + four(v.ip));
  const bool landscape = s.ihcopt[zelv_graphics::kOptOrientation] == 1;
  yyhpglcmd(std::string(landscape ? "      " : "RO 90;") + " IP" + four(v.ip));
  const char terminator = static_cast<char>(s.ihcopt[kOptTerminator]);
  yyhpglcmd(std::string("DT") + terminator);
  yyhpglcmd("DI1. 0.");
  if (!v.second) {
    yyhpglreplaydata(kRecordColourHandling, s.ihcopt[zelv_graphics::kOptColourHandling], 0, 0, 0);
    yyhpglreplaydata(kRecordModel, v.model, 0, 0, 0);
  } else {
    yyhpglcmd("TR0");
    if (v.model == 1) yyhpglcmd("AD1,14;SA");
    if (kPens2[static_cast<size_t>(v.model - 1)] == 256) yyhpglcmd("NP256");
    if (replay()) {
      yyhpglcmd("CO\"13 " + std::to_string(v.model) + (v.model == 1 ? " 1.5" : " 1.2") + " 0\"");
      yyhpglcmd("CO\"2 " + std::to_string(s.ihcopt[zelv_graphics::kOptColourHandling]) + "\"");
    }
  }
  yyhpglcmd(kScale);
}

void close_file() {
  const auto& s = state();
  if (s.ihcopt[kOptDeviceControl] != 0)
    yygrhcwriteline(kUnit, std::string(1, kEscape) + (hp().second ? "%0A" : ".Z"));
  yygrhcclose(kUnit);
}

void end_page() {
  auto& s = state();
  auto& v = hp();
  s.bdopause = false;
  if (!v.second) {
    yyhpglreplaydata(kRecordPage, s.igpar1, 0, 0, 0);
    yyhpglcmd(v.model == 7 || v.model == 8 ? "PU;SP0 ;PG;" : "PU;SP0 ;");
  } else {
    yyhpglcmd("PU;SP0;PG;");
  }
  v.penafterpage = v.pen;
  v.pen = 0;
  v.newpage = true;
  s.plotx = s.ploty = zg::kUnknownPoint;
}

}  // namespace

// A pen of the palette gets its colour at its first use.
void yyhpgl2pencolour(int index, int r, int g, int b) {
  auto& v = hp();
  const auto i = static_cast<size_t>(std::clamp(index, 0, 255));
  if (v.palset[i]) return;
  v.palset[i] = true;
  yyhpglcmd("PC" + std::to_string(index) + "," + std::to_string(r) + "," + std::to_string(g) + "," +
            std::to_string(b) + ";");
}

// A user raster pattern of 8 by 4 pens, defined and selected: 1 a half-tone,
// every other pixel in the pen of the fill and the rest white (pen 0); 2 a
// cross-hatch of the pen's diagonals.
void yyhpgl2rasterfill(int pattern) {
  const int ink = hp().pen > 0 ? hp().pen : 1;
  std::string cmd = "RF" + std::to_string(pattern) + "," + std::to_string(kRasterWidth) + "," +
                    std::to_string(kRasterHeight);
  for (int y = 0; y < kRasterHeight; ++y) {
    for (int x = 0; x < kRasterWidth; ++x) {
      const bool on = pattern == kRasterCross ? (x % kRasterHeight == y || (kRasterWidth - 1 - x) % kRasterHeight == y)
                                              : (x + y) % 2 == 0;
      cmd += on ? "," + std::to_string(ink) : ",0";
    }
  }
  // Longer than a command line: written as it stands, not folded.
  yygrhcwriteline(kUnit, cmd + ";");
  yyhpglcmd("FT11," + std::to_string(pattern) + ";");
}

namespace {

void pen() {
  auto& s = state();
  auto& v = hp();
  const int index = s.icmodel == 1 ? s.ichnalgl : yyrgbto8(yycolourrgb(s.ichnalgl));
  int r, g, b;
  yypalrgb(r, g, b);
  int next;
  if (!v.second) {
    const int numpen = kPens[static_cast<size_t>(v.model - 1)];
    next = kPenOrder[static_cast<size_t>(((index + 16) / 32) % 8)] % numpen + 1;
  } else if (kPens2[static_cast<size_t>(v.model - 1)] == 2) {
    const int background = s.ihcopt[zelv_graphics::kOptColourHandling] != 0 ? zelv_graphics::kPaletteBlack : 0;
    next = index == background ? 0 : 1;
  } else {
    next = index;
    yyhpgl2pencolour(index, r, g, b);
  }
  if (next != v.pen) {
    yyhpglcmd("PU;SP" + std::to_string(next) + ";");
    v.pen = next;
    v.newpage = false;
    s.plotx = s.ploty = zg::kUnknownPoint;
  }
  if (s.igpar1 != 1) yyhpglreplaydata(kRecordRgb, r + 256 * g + 65536 * b, 0, 0, 0);
}

// The first drawing of a page takes up the pen of the last one.
void first_drawing() {
  auto& v = hp();
  if (!v.newpage) return;
  v.newpage = false;
  if (v.penafterpage > 0) {
    yyhpglcmd("SP" + std::to_string(v.penafterpage) + ";");
    v.pen = v.penafterpage;
  }
}

void move_if_needed(float x, float y) {
  auto& s = state();
  if (yytrunc(x * s.xscale) == yytrunc(s.plotx * s.xscale) && yytrunc(y * s.yscale) == yytrunc(s.ploty * s.yscale))
    return;
  yyhpglcmdscaled("PU", x, y);
}

void draw_to(float x, float y) {
  auto& s = state();
  yyhpglcmdscaled("PD", x, y);
  s.plotx = x;
  s.ploty = y;
}

void clip() {
  const auto& s = state();
  const auto& v = hp();
  const float fx = static_cast<float>(v.ip[2] - v.ip[0]) / s.xngraf;
  const float fy = static_cast<float>(v.ip[3] - v.ip[1]) / s.yngraf;
  std::array<int, 4> box = {static_cast<int>(s.xminpx * fx) + v.ip[0], static_cast<int>(s.yminpx * fy) + v.ip[1],
                            std::min(static_cast<int>(s.xmaxpx * fx + 0.99f) + v.ip[0], v.ip[2]),
                            std::min(static_cast<int>(s.ymaxpx * fy + 0.99f) + v.ip[1], v.ip[3])};
  yyhpglcmd("SC");
  yyhpglcmd("IW" + four(box));
  yyhpglcmd(kScale);
}

void text() {
  auto& s = state();
  auto& v = hp();
  first_drawing();
  const size_t prop = static_cast<size_t>(std::clamp(s.ichprop, 0, 2));
  const float xpclen = s.xpxlen, ypclen = s.ypxlen;
  float sx = (v.second ? kTextX2 : kTextX1)[prop] * s.chsizx * xpclen * 100.0f / (s.xngraf * 1.5f);
  float sy = kTextY[prop] * s.chsizy * ypclen * 100.0f / (s.yngraf * 2.0f);
  if (s.igurot == 90 || s.igurot == 270) {
    sx *= s.asprath;
    sy /= s.asprath;
  }
  char buf[40];
  std::snprintf(buf, sizeof buf, "SR%8.2f%8.2f", static_cast<double>(sx), static_cast<double>(sy));
  if (v.size != buf) {
    v.size = buf;
    if (v.second) yyhpglcmd((s.ichstyl & 2) ? "SL.2" : "SL0.");
    yyhpglcmd(buf);
  }
  const float f = s.ichprop == 0 ? 0.22f : 0.0f, g = s.ichprop == 0 ? 0.22f : 0.3f;
  const float x = s.grx[0] + s.coswid * f + s.sinhgt * g, y = s.gry[0] + s.sinwid * f - s.coshgt * g;
  yyhpglcmdscaled("PU", x, y);
  const size_t n = std::min(static_cast<size_t>(std::max(s.igrx[0], 0)), s.cgrstr.size());
  yygrhcwriteline(kUnit, "LB" + s.cgrstr.substr(0, n) + static_cast<char>(s.ihcopt[kOptTerminator]));
  s.plotx = s.ploty = zg::kUnknownPoint;
}

void direction() {
  const auto& s = state();
  char buf[40];
  std::snprintf(buf, sizeof buf, "DI%6.3f %6.3f", static_cast<double>(s.chrotc), static_cast<double>(s.chrotx));
  if (hp().direction == buf) return;
  hp().direction = buf;
  yyhpglcmd(buf);
}

void fill(int op) {
  auto& s = state();
  if (s.igpar1 == -1) {
    yyhpglreplaydata(kRecordEndFill, -1, 0, 0, 0);
    return;
  }
  s.bdopause = true;
  first_drawing();
  s.yhstep = static_cast<float>(s.ihcopt[kOptFillStep]) / 100.0f * s.yngraf /
             static_cast<float>(std::max(s.ihcopt[2], 1));
  if (s.ifstyl == zelv_graphics::kFillHalfTone) s.yhstep *= 2;
  if (op == zg::OpEllipseHalf || op == zg::OpPieHalf) {
    yygrhcshape(op);
    return;
  }
  // The second edition fills polygons and rectangles by itself when the
  // user allows plotter fills; all others take scan lines.
  const bool device = hp().second && s.ihcopt[kOptPlotterFill] != 0 && s.ifstyl >= zelv_graphics::kFillHalfTone;
  if (!device) {
    s.igpar1 = -1;
    return;
  }
  if (s.ifstyl == zelv_graphics::kFillHalfTone) yyhpgl2rasterfill(kRasterHalfTone);
  else yyhpglcmd("FT1;");
  auto point = [&](std::string_view cmd, float x, float y) {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.2s%d,%d;", cmd.data(), yytrunc(x * s.xscale), yytrunc(y * s.yscale));
    yyhpglcmd(buf);
  };
  if (op == zg::OpRectHalf) {
    point("PU", s.grx[0], s.gry[0]);
    point("RA", s.grx[1], s.gry[1]);
  } else {
    const size_t n = std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size());
    if (n < 3) return;
    point("PU", s.xwork[0], s.ywork[0]);
    yyhpglcmd("PM0;");
    for (size_t i = 1; i < n; ++i) point("PD", s.xwork[i], s.ywork[i]);
    yyhpglcmd("PM2;FP;");
  }
  s.plotx = s.ploty = zg::kUnknownPoint;
}

// Arcs in the pen's own geometry. A raster circle is a circle in user units
// only while X and Y have the same range per raster unit: the Y range is
// stretched for the while, or the X range shrunk when Y would leave the
// plotter's integer range.
struct ArcScale {
  float fx = 1, fy = 1;  // user units per raster unit
  std::string command;
};
ArcScale arc_scale() {
  const auto& s = state();
  ArcScale a;
  float xr = kUserRange, yr = kUserRange * s.yngraf / s.xngraf;
  if (yr > kUserRange) {
    xr = kUserRange * kUserRange / yr;
    yr = kUserRange;
  }
  a.fx = xr / s.xngraf;
  a.fy = yr / s.yngraf;
  char buf[48];
  std::snprintf(buf, sizeof buf, "SC0 %d 0 %d", static_cast<int>(xr), static_cast<int>(yr));
  a.command = buf;
  return a;
}

// An arc of the present arguments: centre 1, radius 2, start and end angles
// in radians in 3. Open or closed through the centre, as the other drivers.
void arc(bool second) {
  auto& s = state();
  const auto a = arc_scale();
  const float cx = s.grx[0], cy = s.gry[0], r = s.grx[1], a0 = s.grx[2], a1 = s.gry[2];
  const bool open = s.ifstyl == zelv_graphics::kFillOutline && s.ifdens >= 3;
  auto point = [&](std::string_view cmd, float x, float y) {
    char buf[48];
    std::snprintf(buf, sizeof buf, second ? "%.2s%d,%d;" : "%.2s%7d%7d", cmd.data(), yytrunc(x * a.fx),
                  yytrunc(y * a.fy));
    yyhpglcmd(buf);
  };
  const float sx = cx + r * std::cos(a0), sy = cy + r * std::sin(a0);
  yyhpglcmd(a.command);
  if (open) {
    point("PU", sx, sy);
  } else {
    point("PU", cx, cy);
    point("PD", sx, sy);
  }
  constexpr double kDegrees = 57.29577951308232;
  char buf[64];
  const double sweep = (a1 - a0) * kDegrees;
  std::snprintf(buf, sizeof buf, second ? "PD;AA%d,%d,%.2f;" : "PD;AA%7d%7d%9.2f", yytrunc(cx * a.fx),
                yytrunc(cy * a.fy), sweep);
  yyhpglcmd(buf);
  if (!open) point("PD", cx, cy);
  yyhpglcmd(kScale);
  s.plotx = s.ploty = zg::kUnknownPoint;
}

void driver(int op, bool second) {
  auto& s = state();
  switch (op) {
    case zg::OpInit:
      if (s.igpar2 == zg::kAskDriver) {
        s.igpar2 = second ? zelv_graphics::kDriverHpgl2 : zelv_graphics::kDriverHpgl;
        return;
      }
      init(second);
      return;
    case zg::OpStart:
      hp().second = second;
      s.xscale = kUserRange / s.xngraf;
      s.yscale = kUserRange / s.yngraf;
      if (s.igpar1 > 0) open_file();
      return;
    case zg::OpClose:
      close_file();
      return;
    case zg::OpEndPage:
      end_page();
      return;
    case zg::OpColour:
      pen();
      return;
    case zg::OpLine:
      s.bdopause = true;
      first_drawing();
      move_if_needed(s.grx[0], s.gry[0]);
      draw_to(s.grx[1], s.gry[1]);
      return;
    case zg::OpPoint:
      s.bdopause = true;
      first_drawing();
      move_if_needed(s.grx[0], s.gry[0]);
      draw_to(s.grx[0], s.gry[0]);
      return;
    case zg::OpPolyline: {
      s.bdopause = true;
      first_drawing();
      const size_t n = std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size());
      if (n < 2) return;
      move_if_needed(s.xwork[0], s.ywork[0]);
      for (size_t i = 1; i < n; ++i) draw_to(s.xwork[i], s.ywork[i]);
      return;
    }
    case zg::OpLineType:
      yyhpglcmd(std::string("LT") + (second ? kLineTypes2 : kLineTypes1)[static_cast<size_t>(std::clamp(s.lintyp, 0, 7))]);
      return;
    case zg::OpLineWidth:
      if (replay()) {
        const float w = std::clamp(static_cast<float>(s.ihcopt[zelv_graphics::kOptLineWidth]) * 0.4f / hp().stepsperpoint,
                                   0.1f, 5.0f);
        char buf[20];
        std::snprintf(buf, sizeof buf, "PW%5.3f", static_cast<double>(w));
        yyhpglcmd(buf);
      }
      return;
    case zg::OpClip:
      clip();
      return;
    case zg::OpText:
      s.bdopause = true;
      text();
      return;
    case zg::OpTextRotate:
      direction();
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
      s.bdopause = true;
      first_drawing();
      if (second) yyhpgl2arc();
      else yyhpglarc();
      return;
    default:
      return;
  }
}

}  // namespace

void yyhpglarc() { arc(false); }
void yyhpgl2arc() { arc(true); }

void xxhpgl(int op) { driver(op, false); }
void xxhpgl2(int op) { driver(op, true); }
