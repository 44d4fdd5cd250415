// Hardcopy driver 2: PostScript documents and Encapsulated PostScript files.
#include "toolkit/base/zelvy_data.h"
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {

constexpr int kUnit = 0;
constexpr int kOptOffsetX = 3, kOptOffsetY = 4, kOptCtrlD = 15, kOptPaper = 33, kOptLeft = 34, kOptTop = 35, kOptRight = 36, kOptBottom = 37;
constexpr int kMaxText = 2044;
constexpr float kTextDrop = 0.27f;
constexpr float kRadian = 0.017453292f;
constexpr const char* kCapability = "00000111111111100010011011110";

struct PostState {
  int nelem = 0;
  float red = -1, green = -1, blue = -1;           // in the file
  float pred = 0, pgreen = 0, pblue = 0;           // wanted for the next paint
  int ipscol = 0;
  int lintyp = 0, lthick = 0;
  bool setfont = true;
  int pageno = 1;
  bool shown = false;  // a showpage has been written
};
PostState& ps() {
  static PostState p;
  return p;
}

constexpr std::array<const char*, 8> kDash = {"[] 0", "[1 5] 4", "[6 6] 3", "[1 3 4 4] 0", "[1 2 1 2 4 2] 0",
                                              "[5 2 3 2] 2", "[3 3] 1", "[5 2 3 2 3 2] 0"};
constexpr std::array<const char*, 3> kFontBase = {"Courier", "Helvetica", "Times"};
constexpr std::array<std::array<const char*, 4>, 3> kFontNames = {{
    {"/Courier ff", "/Courier-Bold ff", "/Courier-Oblique ff", "/Courier-BoldOblique ff"},
    {"/Helvetica ff", "/Helvetica-Bold ff", "/Helvetica-Oblique ff", "/Helvetica-BoldOblique ff"},
    {"/Times-Roman ff", "/Times-Bold ff", "/Times-Italic ff", "/Times-BoldItalic ff"},
}};
constexpr std::array<float, 3> kFontScaleX = {1.65f, 1.33f, 1.72f};
constexpr std::array<float, 3> kFontScaleY = {1.0f, 0.82f, 0.82f};

bool eps() { return state().ihcopt[zelv_graphics::kOptEncapsulated] == 1; }
bool landscape() { return state().ihcopt[zelv_graphics::kOptOrientation] == 1; }

// One F9.2 field with its final zero blanked.
void append_number(std::string& line, float value) {
  char buf[32];
  int n = std::snprintf(buf, sizeof buf, "%9.2f", static_cast<double>(value));
  if (n > 9) {
    std::snprintf(buf, sizeof buf, "*********");
    n = 9;
  }
  if (buf[8] == '0') buf[8] = ' ';
  line.append(buf, static_cast<size_t>(n));
  line.push_back(' ');
}

// Leading blanks go and each run of blanks becomes one.
void write_clean(std::string_view raw) {
  std::string out;
  out.reserve(raw.size());
  bool blank = true;
  for (char c : raw) {
    if (c == ' ') {
      if (!blank) out.push_back(' ');
      blank = true;
    } else {
      out.push_back(c);
      blank = false;
    }
  }
  yygrhcwriteline(kUnit, out);
}

void yypost3(float a, float b, float c, std::string_view text) {
  std::string line;
  append_number(line, a);
  append_number(line, b);
  append_number(line, c);
  line.append(text);
  write_clean(line);
}

void yypost4(float x, float y, std::string_view text) {
  const auto& s = state();
  std::string line;
  append_number(line, x * s.xscale);
  append_number(line, y * s.yscale);
  line.append(text);
  write_clean(line);
}

// As yypost4 with the scales exchanged: for boxes in a frame turned by 90
// or 270 degrees, where X runs along the page's Y.
void yypost4a(float a, float b, std::string_view text) {
  const auto& s = state();
  std::string line;
  append_number(line, a * s.yscale);
  append_number(line, b * s.xscale);
  line.append(text);
  write_clean(line);
}

void yypost5(float a, std::string_view text) {
  std::string line;
  append_number(line, a);
  line.append(text);
  write_clean(line);
}

void yypost6(std::string_view text) { write_clean(text); }

void yypost1(int index, float& red, float& green, float& blue) {
  const auto& s = state();
  if (index == -1) {
    red = green = blue = 0;
  } else {
    const int rgb = yycolourrgb(index);
    red = static_cast<float>(rgb & 0xFF) / 255.0f;
    green = static_cast<float>((rgb >> 8) & 0xFF) / 255.0f;
    blue = static_cast<float>((rgb >> 16) & 0xFF) / 255.0f;
  }
  const int handling = s.ihcopt[zelv_graphics::kOptColourHandling];
  const bool dark = red < 0.04f && green < 0.04f && blue < 0.04f;
  const bool light = red > 0.96f && green > 0.96f && blue > 0.96f;
  if (handling == 1 || (handling == 2 && (dark || light))) {
    red = 1 - red;
    green = 1 - green;
    blue = 1 - blue;
  }
}

void write_colour_if_changed() {
  auto& p = ps();
  if (p.pred == p.red && p.pgreen == p.green && p.pblue == p.blue) return;
  yypost3(p.pred, p.pgreen, p.pblue, "g");
  p.red = p.pred;
  p.green = p.pgreen;
  p.blue = p.pblue;
}

void yypost2(int mode) {
  auto& p = ps();
  if (p.nelem == 0 && mode < 3) return;
  write_colour_if_changed();
  if (mode == 1) yypost6("s");
  if (mode == 2) yypost6("cf");
  if (mode < 3) p.nelem = 0;
}

void current_colour() {
  const auto& s = state();
  auto& p = ps();
  p.ipscol = s.ichnalgl;
  if (s.ihcopt[zelv_graphics::kOptMonochrome] != 0 && !(s.icmodel == 1 && s.ichnalgl == 0)) p.ipscol = -1;
}

// The paper of option 33 upright, in points: the size yypaper stored with
// it, or the table's when none was stored.
void paper_size(int& width, int& height) {
  const auto& s = state();
  const auto& p = zelvy_data::paper_size(s.ihcopt[kOptPaper]);
  const bool stored = s.ihcpaper[0] > 0 && s.ihcpaper[1] > 0;
  width = stored ? s.ihcpaper[0] : p.width;
  height = stored ? s.ihcpaper[1] : p.height;
}

std::string media_line(std::string_view name, int width, int height) {
  std::string n;
  for (char c : name) n.push_back(c == '(' || c == ' ' ? '_' : c == ')' ? ' ' : c);
  while (!n.empty() && n.back() == ' ') n.pop_back();
  char buf[64];
  std::snprintf(buf, sizeof buf, " %6d %6d 0 () ()", width, height);
  return "%%DocumentMedia: " + n + buf;
}

void move_or_line(float x1, float y1, float x2, float y2) {
  auto& s = state();
  auto& p = ps();
  s.bdopause = true;
  if (p.nelem >= s.ihcopt[zelv_graphics::kOptPathLimit]) yypost2(1);
  if (x1 != s.plotx || y1 != s.ploty || p.nelem == 0) yypost4(x1, y1, "m");
  yypost4(x2, y2, "l");
  ++p.nelem;
  s.plotx = x2;
  s.ploty = y2;
}

void open_file() {
  auto& s = state();
  auto& p = ps();
  yygrhcopen(kUnit);
  if (s.bhcerr) {
    s.ighcpy = 0;
    return;
  }
  p = PostState{};
  s.plotx = s.ploty = zg::kUnknownPoint;
  const bool encapsulated = eps();
  const auto& o = s.ihcopt;
  char buf[160];
  yygrhcwriteline(kUnit, encapsulated ? "%!PS-Adobe-3.0 EPSF-3.0" : "%!PS-Adobe-3.0");
  if (encapsulated) {
    int w = o[zelv_graphics::kOptPageWidth], h = o[zelv_graphics::kOptPageHeight];
    if (landscape()) std::swap(w, h);
    std::snprintf(buf, sizeof buf, "%%%%BoundingBox: 0 0 %5d %5d", w, h);
    yygrhcwriteline(kUnit, buf);
  }
  if (s.igrx[0] == 1) yygrhcwriteline(kUnit, "%%Title: " + s.cwrkstr);
  yygrhcwriteline(kUnit, "%%Creator: Zelvane PostScript driver");
  yygrhcwriteline(kUnit, landscape() ? "%%Orientation: Landscape" : "%%Orientation: Portrait");
  int pw = 0, ph = 0;
  paper_size(pw, ph);
  if (encapsulated)
    yygrhcwriteline(kUnit, media_line("-", o[zelv_graphics::kOptPageWidth], o[zelv_graphics::kOptPageHeight]));
  else
    yygrhcwriteline(kUnit, media_line(zelvy_data::paper_size(o[kOptPaper]).name, pw, ph));
  yygrhcwriteline(kUnit, "%%EndComments");
  yygrhcwriteline(kUnit, "/l {lineto} def/m {moveto} def/g {setrgbcolor} def/w {setlinewidth} def");
  yygrhcwriteline(kUnit, "/d {setdash} def/cf {closepath fill} def/s {stroke} def/ff {findfont} def");
  yygrhcwriteline(kUnit, "/ms {makefont setfont} def/ro {rotate} def/cs {closepath stroke} def");
  yygrhcwriteline(kUnit, "/lsh {show} def/rsh {dup stringwidth pop 0 exch sub 0 rmoveto show} def");
  yygrhcwriteline(kUnit, "/csh {dup stringwidth pop 2 div 0 exch sub 0 rmoveto show} def");
  yygrhcwriteline(kUnit, "%%EndProlog");
  if (!encapsulated) {
    yygrhcwriteline(kUnit, "%%BeginSetup");
    std::snprintf(buf, sizeof buf, "<< /PageSize [%6d %6d] /Orientation 0 >> setpagedevice", pw, ph);
    yygrhcwriteline(kUnit, buf);
    yygrhcwriteline(kUnit, "%%EndSetup");
  }
  for (size_t f = 0; f < kFontBase.size(); ++f) {
    for (size_t st = 0; st < 4; ++st) {
      yygrhcwriteline(kUnit, kFontNames[f][st]);
      yygrhcwriteline(kUnit, "dup length dict begin");
      yygrhcwriteline(kUnit, "{1 index /FID ne {def} {pop pop} ifelse} forall");
      yygrhcwriteline(kUnit, "/Encoding ISOLatin1Encoding def");
      yygrhcwriteline(kUnit, std::string("currentdict end /") + kFontBase[f] + "-" + std::to_string(st + 1) +
                                 " exch definefont pop");
    }
  }
  yygrhcwriteline(kUnit, "/Symbol ff");
  yygrhcwriteline(kUnit, "dup length dict begin");
  yygrhcwriteline(kUnit, "{1 index /FID ne {def} {pop pop} ifelse} forall");
  yygrhcwriteline(kUnit, "currentdict end /Symbol exch definefont pop");
  yygrhcwriteline(kUnit, "%%BeginPageSetup");
  if (landscape()) yygrhcwriteline(kUnit, "90.0 ro");
  float tx = 0, ty = 0;
  if (!encapsulated) {
    tx = static_cast<float>(o[kOptLeft]);
    ty = static_cast<float>(o[kOptBottom] - (landscape() ? pw : 0));
  } else if (landscape()) {
    ty = -static_cast<float>(o[zelv_graphics::kOptPageHeight]);
  }
  std::snprintf(buf, sizeof buf, "%8.1f%8.1f translate", static_cast<double>(tx), static_cast<double>(ty));
  write_clean(buf);
  yygrhcwriteline(kUnit, "%%EndPageSetup");
  yygrhcwriteline(kUnit, "newpath");
  yygrhcwriteline(kUnit, "%%Page: 1 1");
}

void end_page() {
  auto& s = state();
  auto& p = ps();
  s.bdopause = false;
  yypost2(1);
  if (eps()) return;
  char buf[64];
  std::snprintf(buf, sizeof buf, "/#copies %3d def", std::min(s.ihcopt[zelv_graphics::kOptCopies], 999));
  yygrhcwriteline(kUnit, buf);
  yygrhcwriteline(kUnit, "gsave showpage grestore");
  p.shown = true;
  if (s.igpar2 == 0) {
    ++p.pageno;
    std::snprintf(buf, sizeof buf, "%%%%Page: %4d%4d", p.pageno, p.pageno);
    yygrhcwriteline(kUnit, buf);
  }
}

void close_file() {
  auto& s = state();
  // A document with nothing on it still has its one page.
  if (!eps() && !ps().shown) {
    s.igpar2 = 1;
    end_page();
  }
  yygrhcwriteline(kUnit, "%%EOF");
  if (!eps()) {
    if (s.ihcopt[kOptCtrlD] != 0) yygrhcwrite(kUnit, "initgraphics \x04");
    else yygrhcwriteline(kUnit, "initgraphics");
  }
  yygrhcclose(kUnit);
}

// The image of the present arguments, upright in the turned units: the frame
// turns by the rotation, and the box is placed and sized in it.
void image() {
  auto& s = state();
  if (!s.image || !s.image->valid()) return;
  const auto& img = *s.image;
  yypost2(1);
  s.bdopause = true;
  const float x1 = s.grx[0], x2 = s.grx[1], y1 = s.gry[0], y2 = s.gry[1];
  char buf[64];
  yypost6("gsave");
  std::snprintf(buf, sizeof buf, "/picstr %10d string def", img.width * 3);
  yypost6(buf);
  yypost5(static_cast<float>(s.igurot), "ro");
  switch (s.igurot) {
    case 90:
      yypost4a(y1, -x2, "translate");
      yypost4a(y2 - y1, x2 - x1, "scale");
      break;
    case 180:
      yypost4(-x2, -y2, "translate");
      yypost4(x2 - x1, y2 - y1, "scale");
      break;
    case 270:
      yypost4a(-y2, x1, "translate");
      yypost4a(y2 - y1, x2 - x1, "scale");
      break;
    default:
      yypost4(x1, y1, "translate");
      yypost4(x2 - x1, y2 - y1, "scale");
  }
  std::snprintf(buf, sizeof buf, "%d %d 8 [%d 0 0 -%d 0 %d]", img.width, img.height, img.width, img.height,
                img.height);
  yypost6(buf);
  yypost6("{currentfile picstr readhexstring pop}");
  yypost6("false 3");
  yypost6("colorimage");
  constexpr size_t kLine = 240;
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string line;
  line.reserve(kLine);
  for (int c : img.rgb) {
    for (int shift : {0, 8, 16}) {
      const int byte = (c >> shift) & 0xFF;
      line.push_back(kHex[byte >> 4]);
      line.push_back(kHex[byte & 0xF]);
    }
    if (line.size() >= kLine) {
      yygrhcwriteline(kUnit, line);
      line.clear();
    }
  }
  if (!line.empty()) yygrhcwriteline(kUnit, line);
  yypost6("grestore");
  s.plotx = s.ploty = zg::kUnknownPoint;
}

void text() {
  auto& s = state();
  auto& p = ps();
  yypost2(3);
  if (p.setfont) {
    const size_t prop = static_cast<size_t>(std::clamp(s.ichprop, 0, 2));
    const float sx = std::clamp(s.chsizx * s.xpxlen * s.xscale, 1.0f, 999.0f) * kFontScaleX[prop];
    const float sy = std::clamp(s.chsizy * s.ypxlen * s.yscale, 1.0f, 999.0f) * kFontScaleY[prop];
    static constexpr std::array<const char*, 4> kNames = {"/Courier-", "/Helvetica-", "/Times-", "/Symbol"};
    const int fam = std::clamp(s.ichfam2, 1, 4);
    std::string name = kNames[static_cast<size_t>(fam - 1)];
    if (fam != 4) name += std::to_string(s.ichstyl % 4 + 1);
    char buf[96];
    std::snprintf(buf, sizeof buf, " ff [%5.1f 0 0 %5.1f 0 0] ms", static_cast<double>(sx), static_cast<double>(sy));
    yygrhcwriteline(kUnit, name + buf);
    p.setfont = false;
  }
  std::string line = "(";
  const size_t len = std::min(static_cast<size_t>(std::max(s.igrx[0], 0)), s.cgrstr.size());
  for (size_t i = 0; i < len && line.size() < kMaxText; ++i) {
    const char c = s.cgrstr[i];
    if (c == '\\' || c == '(' || c == ')') line.push_back('\\');
    line.push_back(c);
  }
  const int align = s.ichprop == 1 ? 0 : s.ichali;
  line += align == 1 ? ") csh" : align == 2 ? ") rsh" : ") lsh";
  float x = s.grx[0] + s.sinhgt * kTextDrop, y = s.gry[0] - s.coshgt * kTextDrop;
  const float ex = s.grx[2] + s.sinhgt * kTextDrop, ey = s.gry[2] - s.coshgt * kTextDrop;
  if (align == 1) {
    x = (x + ex) / 2;
    y = (y + ey) / 2;
  } else if (align == 2) {
    x = ex;
    y = ey;
  }
  yypost4(x, y, "m");
  const int rot = static_cast<int>(s.chrota);
  if (rot != 0) yygrhcwriteline(kUnit, std::to_string(rot) + " ro");
  yygrhcwriteline(kUnit, line);
  if (rot != 0) yygrhcwriteline(kUnit, std::to_string(360 - rot) + " ro");
  s.plotx = s.ploty = zg::kUnknownPoint;
}

void clip() {
  const auto& s = state();
  if (eps()) return;
  yypost2(1);
  yypost6("initclip");
  const float lx = std::trunc(s.xminpx), ly = std::trunc(s.yminpx);
  const float hx = std::trunc(s.xmaxpx + 0.99f), hy = std::trunc(s.ymaxpx + 0.99f);
  yypost4(lx, ly, "m");
  yypost4(hx, ly, "l");
  yypost4(hx, hy, "l");
  yypost4(lx, hy, "l");
  yypost6("clip");
  yypost6("newpath");
  state().plotx = state().ploty = zg::kUnknownPoint;
}

// The vertical squeeze of ellipses and pies: round shapes on a page whose
// raster units are not square.
float squeeze_ellipse() {
  const auto& s = state();
  const float o1 = static_cast<float>(s.ihcopt[1]), o2 = static_cast<float>(s.ihcopt[2]);
  if (s.igurot == 90 || s.igurot == 270) return s.ygalen / (s.grx[2] * s.xgalen) * s.asprath / (o2 / o1);
  return s.grx[2] * s.ygalen / s.xgalen * s.asprath / (o1 / o2);
}

float squeeze_pie() {
  const auto& s = state();
  const float o1 = static_cast<float>(s.ihcopt[1]), o2 = static_cast<float>(s.ihcopt[2]);
  float f = o2 * s.asprath / o1;
  if (s.igurot == 90 || s.igurot == 270) f = 1.0f / f;
  return f * s.ygalen / s.xgalen;
}

void begin_scaled(float f) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "gsave 1.0 %8.4f scale newpath", static_cast<double>(f));
  write_clean(buf);
}

// A gsave pair leaves the file's colour as it stood before; forget ours.
void end_scaled() {
  auto& p = ps();
  yypost6("grestore");
  p.red = p.green = p.blue = -1;
  state().plotx = state().ploty = zg::kUnknownPoint;
}

void ellipse() {
  const auto& s = state();
  const float f = squeeze_ellipse();
  begin_scaled(f);
  yypost3(s.grx[0] * s.xscale, s.gry[0] * s.yscale / f, s.grx[1] * s.xscale, "90. 450. arc");
  write_colour_if_changed();
  yypost6(s.ifstyl < 3 ? "s" : "cf");
  end_scaled();
}

void pie(int op) {
  const auto& s = state();
  const float f = squeeze_pie();
  begin_scaled(f);
  const bool throughcentre = op == zg::OpPieHalf || s.ifstyl != 0 || s.ifdens < 3;
  if (throughcentre) yypost4(s.grx[0], s.gry[0] / f, "m");
  char buf[48];
  std::snprintf(buf, sizeof buf, "%8.1f%8.1f arc", static_cast<double>(s.grx[2] / kRadian),
                static_cast<double>(s.gry[2] / kRadian));
  std::string line;
  append_number(line, s.grx[0] * s.xscale);
  append_number(line, s.gry[0] * s.yscale / f);
  append_number(line, s.grx[1] * s.xscale);
  write_clean(line + buf);
  write_colour_if_changed();
  if (op == zg::OpPieHalf) yypost6("cf");
  else if (s.ifstyl == 0 && s.ifdens > 2) yypost6("s");
  else yypost6("cs");
  end_scaled();
}

void fill(int op) {
  auto& s = state();
  auto& p = ps();
  if (s.igpar1 == -1) {
    if (s.ifstyl > 0) yypost2(1);
    yypost1(p.ipscol, p.pred, p.pgreen, p.pblue);
    return;
  }
  s.bdopause = true;
  if (s.ifstyl >= 3 || (s.ifstyl >= 1 && s.ihcopt[zelv_graphics::kOptMonochrome] != 0)) {
    yypost2(1);
    yypost1(p.ipscol, p.pred, p.pgreen, p.pblue);
    if (s.ifstyl == zelv_graphics::kFillHalfTone && p.ipscol != -1) {
      const int prev = s.iprevcol;
      p.pred = (p.pred + static_cast<float>(prev & 0xFF) / 255.0f) / 2;
      p.pgreen = (p.pgreen + static_cast<float>((prev >> 8) & 0xFF) / 255.0f) / 2;
      p.pblue = (p.pblue + static_cast<float>((prev >> 16) & 0xFF) / 255.0f) / 2;
    }
  }
  if (op == zg::OpEllipseHalf) {
    ellipse();
    return;
  }
  if (s.ifstyl < 3) return;
  if (op == zg::OpPieHalf) {
    pie(op);
    return;
  }
  if (op == zg::OpRectHalf) {
    float x1 = s.grx[0], y1 = s.gry[0], x2 = s.grx[1], y2 = s.gry[1];
    if (eps()) {  // no clip path in EPS: cut the corners instead
      x1 = std::clamp(x1, s.xminpx, s.xmaxpx);
      x2 = std::clamp(x2, s.xminpx, s.xmaxpx);
      y1 = std::clamp(y1, s.yminpx, s.ymaxpx);
      y2 = std::clamp(y2, s.yminpx, s.ymaxpx);
    }
    yypost4(x1, y1, "m");
    yypost4(x2, y1, "l");
    yypost4(x2, y2, "l");
    yypost4(x1, y2, "l");
    p.nelem = 4;
    yypost2(2);
  } else {
    const size_t n = std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size());
    if (n == 0) return;
    yypost4(s.xwork[0], s.ywork[0], "m");
    for (size_t i = 1; i < n; ++i) yypost4(s.xwork[i], s.ywork[i], "l");
    p.nelem = static_cast<int>(n);
    yypost2(2);
  }
  s.plotx = s.ploty = zg::kUnknownPoint;
}

}  // namespace

void yymargins(int direction) {
  auto& s = state();
  auto& o = s.ihcopt;
  int pw = 0, ph = 0;
  paper_size(pw, ph);
  if (o[zelv_graphics::kOptOrientation] == 1) std::swap(pw, ph);
  if (direction == 1 || direction == 2) s.imargindir = direction;
  if (direction == 1) {
    o[kOptLeft] = std::max(o[kOptOffsetX], 0);
    o[kOptTop] = std::max(o[kOptOffsetY], 0);
    o[kOptRight] = std::max(pw - o[kOptLeft] - o[zelv_graphics::kOptPageWidth], 0);
    o[kOptBottom] = std::max(ph - o[kOptTop] - o[zelv_graphics::kOptPageHeight], 0);
  } else if (direction == 2) {
    // Never an empty page: margins that meet leave one point.
    o[zelv_graphics::kOptPageWidth] = std::max(pw - o[kOptLeft] - o[kOptRight], 1);
    o[zelv_graphics::kOptPageHeight] = std::max(ph - o[kOptTop] - o[kOptBottom], 1);
    o[kOptOffsetX] = o[kOptLeft];
    o[kOptOffsetY] = o[kOptTop];
  }
}

void yypaper(int which, int index) {
  auto& s = state();
  if (index < 1 || index > zelvy_data::kPaperCount) return;
  const auto& p = zelvy_data::paper_size(index);
  if (which == 1) {
    s.ihcopt[kOptPaper] = index;
    s.ihcpaper = {p.width, p.height};
  } else if (which == 2) {
    s.iprtimgpaper = index;
    s.idupaper = {p.width, p.height};
  }
}

void xxpost(int op) {
  auto& s = state();
  auto& p = ps();
  switch (op) {
    case zg::OpInit:
      if (s.igpar2 == zg::kAskDriver) {
        s.igpar2 = zelv_graphics::kDriverPostScript;
        return;
      }
      s.ihcdrv = zelv_graphics::kDriverPostScript;
      s.ihcdrvflags = 11;
      if (s.igpar1 != zg::kKeepPage) {
        yydefh();
        s.ihcopt[zelv_graphics::kOptOrientation] = 1;
        s.ihcopt[kOptLeft] = 43;
        s.ihcopt[kOptTop] = 28;
        s.ihcopt[kOptRight] = 43;
        s.ihcopt[kOptBottom] = 27;
        yypaper(1, zelvy_data::data().idefpapersize);
        yymargins(2);
      }
      s.ihcopt[zelv_graphics::kOptPathLimit] = 255;
      s.ihcopt[kOptCtrlD] = 1;
      s.ihcres = {0, 600, 600};
      s.ihcolours = 256;
      s.cgcapab[2] = kCapability;
      s.i24cap[2] = 1;
      s.igradcap[2] = 0;
      s.imgcap[2] = 1;
      s.ipropcap[2] = 1;
      // Device text in every size and at every angle: never software text.
      s.igcset[2] = 8;
      s.sizemin[2] = 1.7E38f;
      s.icsrot[2] = 360;
      s.yhstep = 1.0f;
      s.cdeffile[2] = "zelvplot.ps";
      return;
    case zg::OpLine:
      move_or_line(s.grx[0], s.gry[0], s.grx[1], s.gry[1]);
      return;
    case zg::OpPoint:
      move_or_line(s.grx[0], s.gry[0], s.grx[0], s.gry[0]);
      return;
    case zg::OpPolyline: {
      const size_t n = std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size());
      if (n < 2) return;
      s.bdopause = true;
      if (p.nelem >= s.ihcopt[zelv_graphics::kOptPathLimit]) yypost2(1);
      if (s.xwork[0] != s.plotx || s.ywork[0] != s.ploty || p.nelem == 0) yypost4(s.xwork[0], s.ywork[0], "m");
      for (size_t i = 1; i < n; ++i) {
        if (p.nelem >= s.ihcopt[zelv_graphics::kOptPathLimit]) {
          yypost2(1);
          yypost4(s.xwork[i - 1], s.ywork[i - 1], "m");
        }
        yypost4(s.xwork[i], s.ywork[i], "l");
        ++p.nelem;
      }
      s.plotx = s.xwork[n - 1];
      s.ploty = s.ywork[n - 1];
      return;
    }
    case zg::OpColour:
    case zg::OpBackColour: {
      current_colour();
      float r, g, b;
      yypost1(p.ipscol, r, g, b);
      if (r == p.pred && g == p.pgreen && b == p.pblue) return;
      yypost2(1);
      p.pred = r;
      p.pgreen = g;
      p.pblue = b;
      return;
    }
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
      yypost2(1);
      pie(op);
      return;
    case zg::OpStart:
      s.xscale = static_cast<float>(s.ihcopt[1]) / s.xngraf;
      s.yscale = static_cast<float>(s.ihcopt[2]) / s.yngraf;
      if (s.igpar1 > 0) open_file();
      return;
    case zg::OpClose:
      close_file();
      return;
    case zg::OpEndPage:
      end_page();
      return;
    case zg::OpFont:
      p.setfont = true;
      return;
    case zg::OpText:
      s.bdopause = true;
      text();
      return;
    case zg::OpClip:
      clip();
      return;
    case zg::OpImage:
      image();
      return;
    case zg::OpLineType:
      if (s.lintyp == p.lintyp) return;
      yypost2(1);
      p.lintyp = s.lintyp;
      yygrhcwriteline(kUnit, std::string(kDash[static_cast<size_t>(std::clamp(s.lintyp, 0, 7))]) + " d");
      return;
    case zg::OpLineWidth: {
      const int width = s.ihcopt[zelv_graphics::kOptLineWidth];
      if (width == p.lthick) return;
      yypost2(1);
      p.lthick = width;
      yypost5(static_cast<float>(width) / 10.0f, "w");
      return;
    }
    case zg::OpJoin:
      yypost2(1);
      yygrhcwriteline(kUnit, std::to_string(std::clamp(s.ihcopt[zelv_graphics::kOptJoin], 0, 2)) + " setlinejoin");
      if (s.ihcopt[zelv_graphics::kOptJoin] == 0) yygrhcwriteline(kUnit, "5.0 setmiterlimit");
      return;
    case zg::OpCap:
      yypost2(1);
      yygrhcwriteline(kUnit, std::to_string(std::clamp(s.ihcopt[zelv_graphics::kOptCap], 0, 2)) + " setlinecap");
      return;
    default:
      return;
  }
}
