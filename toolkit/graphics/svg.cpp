// Hardcopy driver 3: one SVG document of one page.
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {

constexpr int kUnit = 1;
constexpr size_t kLineLimit = 256;
constexpr int kPageWidth = 640, kPageHeight = 480;
constexpr float kTextDrop = 0.2f;
constexpr float kHalfTurn = 3.1415927f;
constexpr const char* kCapability = "00000111111111100010011011110";
constexpr std::array<const char*, 8> kDash = {"none", "1 5", "6 6", "1 3 4 4", "1 2 1 2 4 2", "5 2 3 2", "3 3",
                                              "5 2 3 2 3 2"};
constexpr std::array<const char*, 3> kJoin = {"miter", "round", "bevel"};
constexpr std::array<const char*, 3> kCap = {"butt", "round", "square"};
constexpr std::array<float, 3> kFontScale = {1.65f, 1.33f, 1.72f};

struct SvgState {
  int r = -1, g = -1, b = -1, lw = -1, lt = -1, lj = -1, lc = -1;
  std::string colour = "000000", fill = "000000";
  bool clip = false;
  int nclip = 0;
  bool group = false;
};
SvgState& sv() {
  static SvgState v;
  return v;
}

float yysvgx(float v) { return v * state().xscale; }
float yysvgy(float v) { return (state().yngraf - v) * state().yscale; }

// A number with two decimals and no leading blanks; too wide gives the
// descriptor's asterisks.
void yysvg1(float value, std::string& out) {
  char buf[32];
  const int n = std::snprintf(buf, sizeof buf, "%8.2f", static_cast<double>(value));
  if (n > 8) {
    out += "********";
    return;
  }
  const char* p = buf;
  while (*p == ' ') ++p;
  out += p;
}

void point(std::string& out, float x, float y) {
  yysvg1(yysvgx(x), out);
  out.push_back(',');
  yysvg1(yysvgy(y), out);
}

void colour_bytes(int& r, int& g, int& b) {
  yypalrgb(r, g, b);
  const int handling = state().ihcopt[zelv_graphics::kOptColourHandling];
  const bool dark = r < 10 && g < 10 && b < 10, light = r >= 246 && g >= 246 && b >= 246;
  if (handling == 1 || (handling == 2 && (dark || light))) {
    r = 255 - r;
    g = 255 - g;
    b = 255 - b;
  }
}

void style_group() {
  const auto& s = state();
  auto& v = sv();
  int r, g, b;
  yypalrgb(r, g, b);
  const int width = std::max(static_cast<int>(static_cast<float>(s.ihcopt[zelv_graphics::kOptLineWidth]) * 150.0f / 720.0f + 0.5f), 1);
  colour_bytes(r, g, b);
  const int lt = std::clamp(s.lintyp, 0, 7), lj = std::clamp(s.ihcopt[zelv_graphics::kOptJoin], 0, 2),
            lc = std::clamp(s.ihcopt[zelv_graphics::kOptCap], 0, 2);
  if (r == v.r && g == v.g && b == v.b && width == v.lw && lt == v.lt && lj == v.lj && lc == v.lc) return;
  v.colour = yyrgbhex(r, g, b);
  if (v.group) yygrhcwriteline(kUnit, "</g>");
  v.group = true;
  yygrhcwriteline(kUnit, "<g style=\"fill:none;stroke:#" + v.colour + ";stroke-dasharray:" +
                             kDash[static_cast<size_t>(lt)] + ";stroke-width:" + std::to_string(width) +
                             ";stroke-linejoin:" + kJoin[static_cast<size_t>(lj)] +
                             ";stroke-linecap:" + kCap[static_cast<size_t>(lc)] + "\">");
  v.r = r; v.g = g; v.b = b; v.lw = width; v.lt = lt; v.lj = lj; v.lc = lc;
}

// Points of the work arrays in lines of at most 256 characters.
void points_element(std::string line, size_t count) {
  const auto& s = state();
  std::string pair;
  for (size_t i = 0; i < count; ++i) {
    pair.clear();
    point(pair, s.xwork[i], s.ywork[i]);
    if (line.size() + pair.size() + 1 > kLineLimit) {
      if (!line.empty() && line.back() == ' ') line.pop_back();
      yygrhcwriteline(kUnit, line);
      line.clear();
    }
    line += pair;
    line.push_back(' ');
  }
  if (!line.empty() && line.back() == ' ') line.pop_back();
  if (line.size() > 253) {
    yygrhcwriteline(kUnit, line);
    line.clear();
  }
  yygrhcwriteline(kUnit, line + "\"/>");
}

void open_file() {
  auto& s = state();
  yygrhcopen(kUnit);
  if (s.bhcerr) {
    s.ighcpy = 0;
    return;
  }
  const std::string w = std::to_string(s.ihcopt[1]), h = std::to_string(s.ihcopt[2]);
  yygrhcwriteline(kUnit, "<?xml version=\"1.0\" standalone=\"no\"?>");
  yygrhcwriteline(kUnit, "<!DOCTYPE svg PUBLIC \"-//W3C//DTD SVG 1.1//EN\" "
                         "\"http://www.w3.org/Graphics/SVG/1.1/DTD/svg11.dtd\">");
  yygrhcwriteline(kUnit, "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"" + w + "\" height=\"" + h +
                             "\" Viewbox=\"0 0 " + w + " " + h + "\">");
  sv() = SvgState{};
}

void close_file() {
  yygrhcwriteline(kUnit, "</g></svg>");
  yygrhcclose(kUnit);
}

void yysvg2(int op) {
  const auto& s = state();
  const float cx = s.grx[0], cy = s.gry[0], rx = s.grx[1], ry = s.gry[1], a0 = s.grx[2], a1 = s.gry[2];
  auto at = [&](std::string& out, float a) {
    yysvg1((std::cos(a) * rx + cx) * s.xscale, out);
    out.push_back(',');
    yysvg1((s.yngraf - (std::sin(a) * ry + cy)) * s.yscale, out);
  };
  std::string line = "<path d=\"M ";
  at(line, a0);
  line += " A ";
  yysvg1(rx * s.xscale, line);
  line.push_back(',');
  yysvg1(ry * s.yscale, line);
  line += " 0 ";
  line += (a1 - a0 < kHalfTurn) ? "0 0" : "1 0";
  line.push_back(' ');
  at(line, a1);
  if (op == zg::OpPieHalf || s.ifstyl != 0 || s.ifdens < 3) {
    line += " L ";
    point(line, cx, cy);
    line += " L ";
    at(line, a0);
  }
  yygrhcwriteline(kUnit, line.substr(0, kLineLimit - 3) + "\"/>");
}

void fill(int op) {
  auto& s = state();
  auto& v = sv();
  if (s.igpar1 == -1) {
    if (s.ifstyl >= 3) yygrhcwriteline(kUnit, "</g>");
    return;
  }
  s.bdopause = true;
  if (s.ifstyl < 3) {
    if (op != zg::OpEllipseHalf) return;
  } else {
    int r, g, b;
    yypalrgb(r, g, b);
    if (s.ifstyl == zelv_graphics::kFillHalfTone) {
      r = (r + (s.iprevcol & 0xFF)) / 2;
      g = (g + ((s.iprevcol >> 8) & 0xFF)) / 2;
      b = (b + ((s.iprevcol >> 16) & 0xFF)) / 2;
    }
    const int handling = s.ihcopt[zelv_graphics::kOptColourHandling];
    const bool dark = r < 10 && g < 10 && b < 10, light = r >= 246 && g >= 246 && b >= 246;
    if (handling == 1 || (handling == 2 && (dark || light))) {
      r = 255 - r;
      g = 255 - g;
      b = 255 - b;
    }
    v.fill = yyrgbhex(r, g, b);
    std::string line = "<g style=\"stroke:none;fill:#" + v.fill;
    if (v.clip) line += ";clip-path:url(#clip" + std::to_string(v.nclip) + ")";
    yygrhcwriteline(kUnit, line + "\">");
  }
  std::string line;
  switch (op) {
    case zg::OpEllipseHalf:
      line = "<ellipse cx=\"";
      yysvg1(yysvgx(s.grx[0]), line);
      line += "\" cy=\"";
      yysvg1(yysvgy(s.gry[0]), line);
      line += "\" rx=\"";
      yysvg1(yysvgx(s.grx[1]), line);
      line += "\" ry=\"";
      yysvg1(yysvgy(s.gry[0] - s.gry[1]) - yysvgy(s.gry[0]), line);
      yygrhcwriteline(kUnit, line + "\"/>");
      return;
    case zg::OpRectHalf:
      line = "<polygon points=\"";
      point(line, s.grx[0], s.gry[0]);
      line.push_back(' ');
      point(line, s.grx[1], s.gry[0]);
      line.push_back(' ');
      point(line, s.grx[1], s.gry[1]);
      line.push_back(' ');
      point(line, s.grx[0], s.gry[1]);
      yygrhcwriteline(kUnit, line + "\"/>");
      return;
    case zg::OpPieHalf:
      yysvg2(op);
      return;
    default:
      points_element("<polygon points=\"",
                     std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size()));
  }
}

void text() {
  const auto& s = state();
  const auto& v = sv();
  if (s.igrx[1] & 1) {
    static constexpr std::array<const char*, 4> kFamilies = {
        "'Courier New',Courier;", "Arial,Helvetica;", "'Times New Roman','Times Roman';", "Symbol;"};
    const int fam = std::clamp(s.ichfam2, 1, 4);
    std::string line = "<g style=\"fill:#" + v.colour + ";stroke:none;font-family:" +
                       kFamilies[static_cast<size_t>(fam - 1)];
    if (fam != 4) {
      if (s.ichstyl & 1) line += "font-weight:bold;";
      if (s.ichstyl & 2) line += "font-style:italic;";
    }
    if (s.ichprop != 1) {
      if (s.ichali == 1) line += "text-anchor:middle;";
      if (s.ichali == 2) line += "text-anchor:end;";
    }
    line += "font-size:";
    yysvg1(kFontScale[static_cast<size_t>(std::clamp(s.ichprop, 0, 2))] * s.chsizx * s.xpxlen * s.xscale, line);
    yygrhcwriteline(kUnit, line + "\">");
  }
  float x = s.grx[0], y = s.gry[0];
  if (s.ichprop != 1 && s.ichali == 1) {
    x = (x + s.grx[2]) / 2;
    y = (y + s.gry[2]) / 2;
  } else if (s.ichprop != 1 && s.ichali == 2) {
    x = s.grx[2];
    y = s.gry[2];
  }
  x += s.sinhgt * kTextDrop;
  y -= s.coshgt * kTextDrop;
  std::string body;
  const size_t len = std::min(static_cast<size_t>(std::max(s.igrx[0], 0)), s.cgrstr.size());
  for (size_t i = 0; i < len; ++i) {
    const auto c = static_cast<unsigned char>(s.cgrstr[i]);
    if (c == '&') body += "&#38;";
    else if (c == '<') body += "&#60;";
    else if (c == 128) body += "&#x20AC;";
    else if (c >= 161) {
      char buf[12];
      std::snprintf(buf, sizeof buf, "&#%3d;", c);
      body += buf;
    } else body.push_back(static_cast<char>(c));
  }
  std::string line = "<text transform=\"translate(";
  yysvg1(yysvgx(x), line);
  line.push_back(',');
  yysvg1(yysvgy(y), line);
  line.push_back(')');
  if (s.chrota != 0) {
    line += " rotate(";
    yysvg1(-s.chrota, line);
    line.push_back(')');
  }
  yygrhcwriteline(kUnit, line + "\">" + body + "</text>");
  if (s.igrx[1] & 2) yygrhcwriteline(kUnit, "</g>");
}

void clip() {
  const auto& s = state();
  auto& v = sv();
  if (s.xgamin > 0 || s.xgamax < 1 || s.ygamin > 0 || s.ygamax < 1) v.clip = true;
  if (!v.clip) return;
  ++v.nclip;
  std::string line = "<defs><clipPath id=\"clip" + std::to_string(v.nclip) + "\"><rect width=\"";
  const float x = yysvgx(s.xminpx), y = yysvgy(s.ymaxpx);
  yysvg1(yysvgx(s.xmaxpx) - x, line);
  line += "\" height=\"";
  yysvg1(yysvgy(s.yminpx) - y, line);
  line += "\" x=\"";
  yysvg1(x, line);
  line += "\" y=\"";
  yysvg1(y, line);
  yygrhcwriteline(kUnit, line + "\"/></clipPath></defs>");
}

std::string base64(const std::string& bytes) {
  static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t n = std::min<size_t>(3, bytes.size() - i);
    uint32_t v = 0;
    for (size_t k = 0; k < 3; ++k)
      v = (v << 8) | (k < n ? static_cast<unsigned char>(bytes[i + k]) : 0u);
    for (size_t k = 0; k < 4; ++k) out.push_back(k <= n ? kDigits[(v >> (18 - 6 * k)) & 0x3F] : '=');
  }
  return out;
}

// The image of the present arguments as one element, its pixels a PNG in the
// element itself, so that the file stays one file. Pixels stay square blocks
// when stretched: the picture is data, not a photograph to smooth.
void image() {
  auto& s = state();
  const auto& v = sv();
  if (!s.image || !s.image->valid()) return;
  const std::string png = yypngencode(*s.image);
  if (png.empty()) return;
  s.bdopause = true;
  std::string line = "<image x=\"";
  yysvg1(yysvgx(s.grx[0]), line);
  line += "\" y=\"";
  yysvg1(yysvgy(s.gry[1]), line);
  line += "\" width=\"";
  yysvg1(yysvgx(s.grx[1]) - yysvgx(s.grx[0]), line);
  line += "\" height=\"";
  yysvg1(yysvgy(s.gry[0]) - yysvgy(s.gry[1]), line);
  line += "\" preserveAspectRatio=\"none\" style=\"image-rendering:optimizeSpeed";
  if (v.clip) line += ";clip-path:url(#clip" + std::to_string(v.nclip) + ")";
  line += "\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" xlink:href=\"data:image/png;base64,";
  yygrhcwriteline(kUnit, line + base64(png) + "\"/>");
}

}  // namespace

void xxsvg(int op) {
  auto& s = state();
  switch (op) {
    case zg::OpInit:
      if (s.igpar2 == zg::kAskDriver) {
        s.igpar2 = zelv_graphics::kDriverSvg;
        return;
      }
      s.ihcdrvflags = 0;
      yydefh();
      s.ihcopt[1] = kPageWidth;
      s.ihcopt[2] = kPageHeight;
      s.ihcres = {0, 72, 72};
      s.ihcolours = 256;
      s.cgcapab[2] = kCapability;
      s.igcset[2] = 8;
      s.icsrot[2] = 360;
      s.sizemin[2] = 1.7E38f;
      s.ipropcap[2] = 1;
      s.lwcap[2] = 2;
      s.i24cap[2] = 1;
      s.igradcap[2] = 0;
      s.imgcap[2] = 1;
      s.yhstep = 1.0f;
      s.cdeffile[2] = "zelvplot.svg";
      s.ihcdrv = zelv_graphics::kDriverSvg;
      return;
    case zg::OpLine: {
      s.bdopause = true;
      std::string line = "<line x1=\"";
      yysvg1(yysvgx(s.grx[0]), line);
      line += "\" y1=\"";
      yysvg1(yysvgy(s.gry[0]), line);
      line += "\" x2=\"";
      yysvg1(yysvgx(s.grx[1]), line);
      line += "\" y2=\"";
      yysvg1(yysvgy(s.gry[1]), line);
      yygrhcwriteline(kUnit, line + "\"/>");
      return;
    }
    case zg::OpPoint: {
      s.bdopause = true;
      std::string x, y;
      yysvg1(yysvgx(s.grx[0]), x);
      yysvg1(yysvgy(s.gry[0]), y);
      yygrhcwriteline(kUnit, "<line x1=\"" + x + "\" y1=\"" + y + "\" x2=\"" + x + "\" y2=\"" + y + "\" />");
      return;
    }
    case zg::OpPolyline:
      s.bdopause = true;
      points_element("<polyline points=\"", std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size()));
      return;
    case zg::OpColour:
    case zg::OpLineType:
    case zg::OpLineWidth:
    case zg::OpJoin:
    case zg::OpCap:
      style_group();
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
      s.bdopause = true;
      yysvg2(op);
      return;
    case zg::OpStart:
      s.xscale = static_cast<float>(s.ihcopt[1]) / s.xngraf;
      s.yscale = static_cast<float>(s.ihcopt[2]) / s.yngraf;
      if (s.igpar1 >= 1) open_file();
      return;
    case zg::OpClose:
      close_file();
      return;
    case zg::OpText:
      s.bdopause = true;
      text();
      return;
    case zg::OpClip:
      clip();
      return;
    default:
      return;
  }
}
