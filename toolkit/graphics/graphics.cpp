// The graphics state: units, area, clip box, rotation, colours, the two output
// paths and the hardcopy driver table.
#include "toolkit/graphics/graphics.h"

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/os/command.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

namespace zelvy_graph {
State& state() {
  static State s;
  return s;
}
}  // namespace zelvy_graph

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {

constexpr int kErrorWrite = 2;
constexpr int kErrorUnits = 16;
constexpr int kErrorArea = 44;
constexpr float kRasterMargin = 0.01f;
constexpr float kTestWiden = 0.001f;
constexpr int kDefaultRaster = 1000;
constexpr int kFileBuffer = 1 << 16;

struct DriverEntry {
  int number;
  void (*routine)(int);  // null: not built yet, and not selectable
  const char* file;
};
constexpr DriverEntry kDrivers[] = {
    {zelv_graphics::kDriverHpgl, xxhpgl, "zelvplot.plt"},
    {zelv_graphics::kDriverPostScript, xxpost, "zelvplot.ps"},
    {zelv_graphics::kDriverSvg, xxsvg, "zelvplot.svg"},
    {4, xxrast, "zelvplot.prn"},
    {zelv_graphics::kDriverImage, xximag, "zelvplot.png"},
    {zelv_graphics::kDriverDxf, xxdxf, "zelvplot.dxf"},
    {zelv_graphics::kDriverCgm, xxcgm, "zelvplot.cgm"},
    {zelv_graphics::kDriverHpgl2, xxhpgl2, "zelvplot.plt"},
};
constexpr int kFlagPaper = 2, kFlagPrintCommand = 8;
constexpr std::string_view kPrintMark = " @ ";

const DriverEntry* driver_entry(int number) {
  for (const auto& d : kDrivers)
    if (d.number == number && d.routine) return &d;
  return nullptr;
}

// The temporary file a print command prints, made once per process.
const std::string& temporary_file() {
  auto& f = state().cdeffile[4];
  if (f.empty()) f = (std::filesystem::temp_directory_path() / ("zelvplot" + std::to_string(getpid()) + ".tmp")).string();
  return f;
}

// Runs a waiting print command on the temporary file, then removes the file.
void run_print_command() {
  auto& s = state();
  if (s.cprintcmd.empty()) return;
  const auto at = s.cprintcmd.find('@');
  const std::string command = s.cprintcmd.substr(0, at) + temporary_file() + s.cprintcmd.substr(at + 1);
  s.cprintcmd.clear();
  IOsCommand(command, kCmdWait);
  std::error_code ec;
  std::filesystem::remove(temporary_file(), ec);
}

void set_raster(int width, int height) {
  auto& s = state();
  s.nxgraf = std::max(width, 1);
  s.nygraf = std::max(height, 1);
  s.xngraf = static_cast<float>(s.nxgraf) - kRasterMargin;
  s.yngraf = static_cast<float>(s.nygraf) - kRasterMargin;
}

// The aspect of the hardcopy page, turned with the units.
void yyasprath() {
  auto& s = state();
  const int w = s.ihcopt[1], h = s.ihcopt[2];
  s.asprath = (w > 0 && h > 0) ? static_cast<float>(w) / static_cast<float>(h) : 1.0f;
  if (s.igurot == 90 || s.igurot == 270) s.asprath = 1.0f / s.asprath;
  s.asprat = s.igscrn > 0 ? static_cast<float>(s.nxpixl) / static_cast<float>(std::max(s.nypixl, 1)) : s.asprath;
}

}  // namespace

void yygrareadrawable() {
  auto& s = state();
  const float fx = static_cast<float>(s.nxpixl) / static_cast<float>(s.nxgraf);
  const float fy = static_cast<float>(s.nypixl) / static_cast<float>(s.nygraf);
  s.xgminpx = s.xminpx * fx;
  s.xgmaxpx = std::min(s.xmaxpx * fx, static_cast<float>(s.nxpixl) - kRasterMargin);
  s.ygminpx = s.yminpx * fy;
  s.ygmaxpx = std::min(s.ymaxpx * fy, static_cast<float>(s.nypixl) - kRasterMargin);
  s.igxmnpx = static_cast<int>(s.xgminpx);
  s.igxmxpx = static_cast<int>(s.xgmaxpx);
  s.igymnpx = static_cast<int>(s.ygminpx);
  s.igymxpx = static_cast<int>(s.ygmaxpx);
  s.xgpxlen = s.xgmaxpx - s.xgminpx;
  s.ygpxlen = s.ygmaxpx - s.ygminpx;
  s.igxpxlen = s.igxmxpx - s.igxmnpx + 1;
  s.igypxlen = s.igymxpx - s.igymnpx + 1;
}

namespace {

void apply_area() {
  auto& s = state();
  yygrarea(s.xgamin * static_cast<float>(s.nxgraf), s.ygamin * static_cast<float>(s.nygraf),
           s.xgamax * static_cast<float>(s.nxgraf), s.ygamax * static_cast<float>(s.nygraf));
}

// Size of the screen target, 0 when there is none to draw on.
void screen_target_size(int& width, int& height) {
  width = WInfoWindow(1);
  height = WInfoWindow(2);
}

void rgb_to_cone(int rgb, double& cx, double& cy, double& cz) {
  const double r = (rgb & 0xFF) / 255.0, g = ((rgb >> 8) & 0xFF) / 255.0, b = ((rgb >> 16) & 0xFF) / 255.0;
  const double v = std::max({r, g, b}), mn = std::min({r, g, b});
  const double sat = v > 0 ? (v - mn) / v : 0;
  double hue = 0;
  if (v > mn) {
    const double d = v - mn;
    if (v == r) hue = (g - b) / d;
    else if (v == g) hue = 2 + (b - r) / d;
    else hue = 4 + (r - g) / d;
    hue *= M_PI / 3;
  }
  cx = v * sat * std::cos(hue);
  cy = v * sat * std::sin(hue);
  cz = v;
}

}  // namespace

// ---- Colour -------------------------------------------------------------

void yygrpaletteinit() {
  struct Row {
    int first, step;
  };
  static constexpr Row kRows[16] = {
      {0xFFFFFF, -0x040404}, {0xC3, 0x4},         {0x83, 0x4},         {0xC3C3, 0x0404},
      {0x8383, 0x0404},      {0xC300, 0x0400},    {0x8300, 0x0400},    {0xC3C300, 0x040400},
      {0x838300, 0x040400},  {0xC30000, 0x040000}, {0x830000, 0x040000}, {0xC300C3, 0x040004},
      {0x830083, 0x040004},  {0x3C3C3C, -0x040404}, {0x7C7C7C, -0x040404}, {0xBFBFBF, -0x040404},
  };
  auto& s = state();
  for (int row = 0; row < 16; ++row)
    for (int i = 0; i < 16; ++i) s.irgb256[static_cast<size_t>(row * 16 + i)] = kRows[row].first + i * kRows[row].step;
}

int yyrgbto8(int rgb) {
  const auto& s = state();
  rgb &= 0xFFFFFF;
  for (int i = 0; i < zg::kPaletteSize; ++i)
    if (s.irgb256[static_cast<size_t>(i)] == rgb) return i;
  double x0, y0, z0;
  rgb_to_cone(rgb, x0, y0, z0);
  int best = 0;
  double bestd = 1e30;
  for (int i = 0; i < zg::kPaletteSize; ++i) {
    double x, y, z;
    rgb_to_cone(s.irgb256[static_cast<size_t>(i)], x, y, z);
    const double d = (x - x0) * (x - x0) + (y - y0) * (y - y0) + (z - z0) * (z - z0);
    if (d < bestd) {
      bestd = d;
      best = i;
    }
  }
  return best;
}

int yycolourrgb(int colour) {
  const auto& s = state();
  if (s.icmodel == 1 && colour >= 0 && colour < zg::kPaletteSize) return s.irgb256[static_cast<size_t>(colour)];
  return colour & 0xFFFFFF;
}

void yypalrgb(int& red, int& green, int& blue) {
  const int rgb = yycolourrgb(state().ichnalgl);
  red = rgb & 0xFF;
  green = (rgb >> 8) & 0xFF;
  blue = (rgb >> 16) & 0xFF;
}

std::string yyrgbhex(int red, int green, int blue) {
  char buf[8];
  std::snprintf(buf, sizeof buf, "%02X%02X%02X", red & 0xFF, green & 0xFF, blue & 0xFF);
  return buf;
}

// ---- Mapping and clipping ---------------------------------------------

void yye2i(float x, float y, float& rx, float& ry) {
  const auto& s = state();
  switch (s.igurot) {
    case 90:
      rx = s.xmaxpx - (y - s.ymin) * s.xpxlen / s.yunlen;
      ry = (x - s.xmin) * s.ypxlen / s.xunlen + s.yminpx;
      break;
    case 180:
      rx = s.xmaxpx - (x - s.xmin) * s.xpxlen / s.xunlen;
      ry = s.ymaxpx - (y - s.ymin) * s.ypxlen / s.yunlen;
      break;
    case 270:
      rx = (y - s.ymin) * s.xpxlen / s.yunlen + s.xminpx;
      ry = s.ymaxpx - (x - s.xmin) * s.ypxlen / s.xunlen;
      break;
    default:
      rx = (x - s.xmin) * s.xpxlen / s.xunlen + s.xminpx;
      ry = (y - s.ymin) * s.ypxlen / s.yunlen + s.yminpx;
  }
}

void yyi2e(float rx, float ry, float& x, float& y) {
  const auto& s = state();
  switch (s.igurot) {
    case 90:
      y = (s.xgmaxpx - rx) * s.yunlen / s.xgpxlen + s.ymin;
      x = (ry - s.ygminpx) * s.xunlen / s.ygpxlen + s.xmin;
      break;
    case 180:
      x = (s.xgmaxpx - rx) * s.xunlen / s.xgpxlen + s.xmin;
      y = (s.ygmaxpx - ry) * s.yunlen / s.ygpxlen + s.ymin;
      break;
    case 270:
      y = (rx - s.xgminpx) * s.yunlen / s.xgpxlen + s.ymin;
      x = (s.ygmaxpx - ry) * s.xunlen / s.ygpxlen + s.xmin;
      break;
    default:
      x = (rx - s.xgminpx) * s.xunlen / s.xgpxlen + s.xmin;
      y = (ry - s.ygminpx) * s.yunlen / s.ygpxlen + s.ymin;
  }
}

void yygrarea(float x1, float y1, float x2, float y2) {
  auto& s = state();
  s.xminpx = std::max(x1, 0.0f);
  s.yminpx = std::max(y1, 0.0f);
  s.xmaxpx = std::min(x2, static_cast<float>(s.nxgraf) - kRasterMargin);
  s.ymaxpx = std::min(y2, static_cast<float>(s.nygraf) - kRasterMargin);
  s.ixmnpx = static_cast<int>(s.xminpx);
  s.ixmxpx = static_cast<int>(s.xmaxpx);
  s.iymnpx = static_cast<int>(s.yminpx);
  s.iymxpx = static_cast<int>(s.ymaxpx);
  s.xminp2 = s.xminpx - kTestWiden;
  s.xmaxp2 = s.xmaxpx + kTestWiden;
  s.yminp2 = s.yminpx - kTestWiden;
  s.ymaxp2 = s.ymaxpx + kTestWiden;
  s.xpxlen = s.xmaxpx - s.xminpx;
  s.ypxlen = s.ymaxpx - s.yminpx;
  s.ixpxlen = s.ixmxpx - s.ixmnpx + 1;
  s.iypxlen = s.iymxpx - s.iymnpx + 1;
  yygrareadrawable();
  yygdrv(zg::OpClip);
}

bool yygrinbox(float x, float y) {
  const auto& s = state();
  return x >= s.xminp2 && x <= s.xmaxp2 && y >= s.yminp2 && y <= s.ymaxp2;
}

void yygrclip(float& x1, float& y1, float& x2, float& y2, bool& visible) {
  const auto& s = state();
  const bool in1 = yygrinbox(x1, y1), in2 = yygrinbox(x2, y2);
  visible = true;
  if (in1 && in2) return;
  const float lx = s.xminpx, hx = s.xmaxpx, ly = s.yminpx, hy = s.ymaxpx;
  if (yytrunc(x1) == yytrunc(x2) || yytrunc(y1) == yytrunc(y2)) {
    // Vertical or horizontal on the raster: cut directly.
    if (yytrunc(x1) == yytrunc(x2)) {
      if (x1 < s.xminp2 || x1 > s.xmaxp2) { visible = false; return; }
      if (std::max(y1, y2) < ly || std::min(y1, y2) > hy) { visible = false; return; }
      y1 = std::clamp(y1, ly, hy);
      y2 = std::clamp(y2, ly, hy);
    } else {
      if (y1 < s.yminp2 || y1 > s.ymaxp2) { visible = false; return; }
      if (std::max(x1, x2) < lx || std::min(x1, x2) > hx) { visible = false; return; }
      x1 = std::clamp(x1, lx, hx);
      x2 = std::clamp(x2, lx, hx);
    }
    return;
  }
  // Crossings of the line with the four sides, as parameters along it; in
  // double, since far-off ends would leave a float crossing pixels astray.
  const double dx = static_cast<double>(x2) - x1, dy = static_cast<double>(y2) - y1;
  double t0 = 0, t1 = 1;
  auto cut = [&](double p, double q) {
    if (p == 0) return q >= 0;
    const double r = q / p;
    if (p < 0) {
      if (r > t1) return false;
      t0 = std::max(t0, r);
    } else {
      if (r < t0) return false;
      t1 = std::min(t1, r);
    }
    return true;
  };
  if (!cut(-dx, x1 - lx) || !cut(dx, hx - x1) || !cut(-dy, y1 - ly) || !cut(dy, hy - y1) || t0 > t1) {
    visible = false;
    return;
  }
  const double ox = x1, oy = y1;
  auto inx = [&](double v) { return std::clamp(static_cast<float>(v), lx, hx); };
  auto iny = [&](double v) { return std::clamp(static_cast<float>(v), ly, hy); };
  if (!in2) { x2 = inx(ox + t1 * dx); y2 = iny(oy + t1 * dy); }
  if (!in1) { x1 = inx(ox + t0 * dx); y1 = iny(oy + t0 * dy); }
}

void yylini(float x1, float y1, float x2, float y2) {
  auto& s = state();
  bool visible = false;
  yygrclip(x1, y1, x2, y2, visible);
  if (!visible) return;
  s.grx[0] = x1; s.gry[0] = y1; s.grx[1] = x2; s.gry[1] = y2;
  s.igrx = {yytrunc(x1), yytrunc(x2)};
  s.igry = {yytrunc(y1), yytrunc(y2)};
  yygdrv(zg::OpLine);
  yyhdrv(zg::OpLine);
}

void yygrpolyline(const float* x, const float* y, int count, int raster) {
  auto& s = state();
  if (count < 2) return;
  std::vector<float> px(x, x + count), py(y, y + count);
  if (raster == 0)
    for (int i = 0; i < count; ++i) yye2i(x[i], y[i], px[static_cast<size_t>(i)], py[static_cast<size_t>(i)]);
  std::vector<float> runx, runy;
  auto flush = [&] {
    if (runx.size() >= 2) {
      s.xwork = runx;
      s.ywork = runy;
      s.igpar2 = static_cast<int>(runx.size());
      yygdrv(zg::OpPolyline);
      yyhdrv(zg::OpPolyline);
    }
    runx.clear();
    runy.clear();
  };
  for (int i = 0; i < count; ++i) {
    const float cx = px[static_cast<size_t>(i)], cy = py[static_cast<size_t>(i)];
    const bool in = yygrinbox(cx, cy);
    if (i == 0) {
      if (in) { runx.push_back(cx); runy.push_back(cy); }
      continue;
    }
    const float lx = px[static_cast<size_t>(i - 1)], ly = py[static_cast<size_t>(i - 1)];
    const bool lastin = yygrinbox(lx, ly);
    if (lastin && in) {
      runx.push_back(cx); runy.push_back(cy);
      continue;
    }
    float ax = lx, ay = ly, bx = cx, by = cy;
    bool visible = false;
    yygrclip(ax, ay, bx, by, visible);
    if (!visible) continue;
    if (lastin) {  // leaves the box: the run ends at the crossing
      runx.push_back(bx); runy.push_back(by);
      flush();
    } else {  // enters (or passes through): a run starts at the crossing
      flush();
      runx = {ax, bx};
      runy = {ay, by};
      if (!in) flush();
    }
  }
  flush();
}

// ---- Paths --------------------------------------------------------------

void yygdrv(int op) {
  const auto& s = state();
  if (s.igscrn <= 0) return;
  if (s.igdriver != 0) yygcgm(op);
  else yygapi(op);
}

void yyhdrv(int op) {
  if (state().ighcpy > 0) xxhcif(op);
}

void xxhcif(int op) {
  if (const auto* d = driver_entry(state().ihcdrv)) d->routine(op);
}

void yydefh() {
  auto& s = state();
  s.ihcopt.fill(0);
  s.ihcopt[zelv_graphics::kOptLineWidth] = s.linwidh;
  s.ihcopt[zelv_graphics::kOptPathLimit] = 255;
  s.ihcopt[zelv_graphics::kOptCopies] = 1;
  zelvy_data::data().itxopt = zelvy_data::kTextOptionDefaults;
}

void yyresn(int /*type*/, int /*id*/, int width, int height) {
  auto& s = state();
  if (width <= 0 || height <= 0) return;
  s.nxpixl = width;
  s.nypixl = height;
  if (s.igscrn > 0) {
    set_raster(width, height);
    s.igpar1 = -1;
    yyhdrv(zg::OpStart);
    IGrArea(s.xgamin, s.ygamin, s.xgamax, s.ygamax);
  } else {
    yygrareadrawable();
    yygdrv(zg::OpClip);
  }
}

// ---- Output of the drivers ------------------------------------------------

void yygrhcopen(int unit) {
  auto& s = state();
  auto& f = s.units[static_cast<size_t>(unit)];
  f.reset(std::fopen(s.copsys.c_str(), "wb"));
  s.bhcerr = !f;
  if (!f) {
    zelvy_data::data().istat = errno;
    zelvy_data::data().ioetype = 2;
    yyerror(kErrorWrite, s.cerrsub);
    return;
  }
  auto& buffer = s.unitbuffers[static_cast<size_t>(unit)];
  buffer.resize(kFileBuffer);
  std::setvbuf(f.get(), buffer.data(), _IOFBF, buffer.size());
}

void yygrhcwrite(int unit, std::string_view text) {
  auto& s = state();
  auto& f = s.units[static_cast<size_t>(unit)];
  if (!f || s.bhcerr) return;
  if (std::fwrite(text.data(), 1, text.size(), f.get()) != text.size()) {
    s.bhcerr = true;
    zelvy_data::data().istat = errno;
    zelvy_data::data().ioetype = 2;
    yyerror(kErrorWrite, s.cerrsub);
  }
}

void yygrhcwriteline(int unit, std::string_view text) {
  yygrhcwrite(unit, text);
  yygrhcwrite(unit, "\n");
}

void yygrhcwritebuffer(int unit, std::string_view text, bool addend) {
  yygrhcwrite(unit, text);
  if (addend) yygrhcwrite(unit, "\r\n");
}

void yygrhcclose(int unit) {
  auto& s = state();
  auto& f = s.units[static_cast<size_t>(unit)];
  if (f && std::fflush(f.get()) != 0 && !s.bhcerr) {
    s.bhcerr = true;
    yyerror(kErrorWrite, s.cerrsub);
  }
  f.reset();
}

// ---- Public routines ----------------------------------------------------

void IGrInit(std::string_view options) {
  auto& s = state();
  const bool keep = options.find_first_of("Pp") != std::string_view::npos;
  const auto savedopt = s.ihcopt;
  const auto savedfile = s.cdeffile;
  yygrpaletteinit();
  s.xmin = s.ymin = 0; s.xmax = s.ymax = 1; s.xunlen = s.yunlen = 1;
  s.xgamin = s.ygamin = 0; s.xgamax = s.ygamax = 1; s.xgalen = s.ygalen = 1;
  s.igurot = 0;
  s.lintyp = 0; s.linwid = 1; s.linwidh = 5; s.lincap = 0; s.linjoin = 0; s.modepl = 0;
  s.ifstyl = 0; s.ifdens = 1; s.ifangl = 1; s.ifbord = 1; s.ifmeth = {0, 0};
  s.icmodel = zelvy_data::data().icmodeldef;
  s.ichnalgl = s.iprevcol = zelv_graphics::kPaletteBlack;
  s.ibackcol = 0xFFFFFF;
  s.chsizx = 0.0133333f; s.chsizy = 0.0333333f; s.chrota = 0;
  s.ichfam = s.ichfam2 = 2; s.ichstyl = 0; s.ichprop = 0; s.ichali = 0;
  s.xcur = s.ycur = 0;
  if (s.igdriver != 0 && s.igscrn > 0) yygcgm(zg::OpClose);
  s.igdriver = 0;
  s.igscrn = 0;
  set_raster(kDefaultRaster, kDefaultRaster);
  s.nxpixl = s.nypixl = kDefaultRaster;
  if (options.find_first_of("Hh") == std::string_view::npos) {
    int w = 0, h = 0;
    screen_target_size(w, h);
    s.itarg = 1;
    s.itargid = WInfoWindow(4);
    if (w > 0 && h > 0) {
      s.igscrn = 1;
      s.nxpixl = w;
      s.nypixl = h;
      set_raster(w, h);
    }
  }
  apply_area();
  yygrtextinit();
  yygrtextvectors();
  if (s.igscrn > 0) {
    yygdrv(zg::OpStart);
    yygdrv(zg::OpColour);
    yygdrv(zg::OpBackColour);
    for (int op : {zg::OpPlotMode, zg::OpLineType, zg::OpLineWidth, zg::OpJoin, zg::OpCap, zg::OpFont}) yygdrv(op);
  }
  s.ihcopt.fill(0);
  s.igpar1 = 0;
  s.igpar2 = 0;
  xxhcif(zg::OpInit);
  if (keep && s.ihcdrv != 0) {
    for (int i = 1; i <= zg::kOptions; ++i) IGrHardcopyOptions(i, savedopt[static_cast<size_t>(i)]);
    s.cdeffile = savedfile;
  }
  yyasprath();
}

void IGrSelect(int targettype, int targetid) {
  auto& s = state();
  constexpr int kMetafileTarget = 4;
  if (targettype == kMetafileTarget) {
    // The screen path writes a memory metafile on a raster of the default size.
    yygapiflush();
    s.itarg = kMetafileTarget;
    s.itargid = std::max(targetid, 0);
    s.igdriver = kMetafileTarget;
    s.igscrn = 1;
    set_raster(kDefaultRaster, kDefaultRaster);
    s.nxpixl = s.nxgraf;
    s.nypixl = s.nygraf;
    yygcgmopen(s.itargid);
    s.igpar1 = 1;
    yygcgm(zg::OpStart);
    IGrArea(s.xgamin, s.ygamin, s.xgamax, s.ygamax);
    return;
  }
  if (s.igdriver != 0) {
    yygcgm(zg::OpClose);
    s.igdriver = 0;
  }
  s.itarg = 1;
  s.itargid = (targettype == 1 && targetid >= 0) ? targetid : WInfoWindow(4);
  if (targettype == 1 && targetid >= 0) WindowSelect(targetid);
  int w = 0, h = 0;
  screen_target_size(w, h);
  yyresn(s.itarg, s.itargid, w, h);
  yygdrv(zg::OpInit);
}

void IGrArea(float x1, float y1, float x2, float y2) {
  auto& s = state();
  bool bad = false;
  if (!(x1 >= 0 && x1 < x2 && x2 <= 1)) { x1 = 0; x2 = 1; bad = true; }
  if (!(y1 >= 0 && y1 < y2 && y2 <= 1)) { y1 = 0; y2 = 1; bad = true; }
  if (bad) yyerror(kErrorArea, "IGrArea");
  s.xgamin = x1; s.xgamax = x2; s.ygamin = y1; s.ygamax = y2;
  apply_area();
  if (s.igaskip == 0) yyhdrv(zg::OpClip);
  if (s.ivport == 0) {
    s.xgalen = x2 - x1;
    s.ygalen = y2 - y1;
  }
  yygrtextrotate(s.chrotar);
  yygrtextvectors();
}

void IGrUnits(float x1, float y1, float x2, float y2) {
  auto& s = state();
  bool bad = false;
  if (x2 <= x1) { x1 = 0; x2 = 1; bad = true; }
  if (y2 <= y1) { y1 = 0; y2 = 1; bad = true; }
  if (bad) yyerror(kErrorUnits, "IGrUnits");
  s.xmin = x1; s.xmax = x2; s.ymin = y1; s.ymax = y2;
  s.xunlen = x2 - x1;
  s.yunlen = y2 - y1;
}

void IGrUnitsRotate(int angle) {
  if (angle != 0 && angle != 90 && angle != 180 && angle != 270) return;
  state().igurot = angle;
  yyasprath();
}

void IGrMoveTo(float x, float y) {
  state().xcur = x;
  state().ycur = y;
}

void IGrJoin(float x1, float y1, float x2, float y2) {
  float ax, ay, bx, by;
  yye2i(x1, y1, ax, ay);
  yye2i(x2, y2, bx, by);
  yylini(ax, ay, bx, by);
  IGrMoveTo(x2, y2);
}

void IGrLineTo(float x, float y) { IGrJoin(state().xcur, state().ycur, x, y); }

void IGrPoint(float x, float y) {
  auto& s = state();
  float rx, ry;
  yye2i(x, y, rx, ry);
  IGrMoveTo(x, y);
  if (!yygrinbox(rx, ry)) return;
  s.grx[0] = s.grx[1] = rx;
  s.gry[0] = s.gry[1] = ry;
  s.igrx = {yytrunc(rx), yytrunc(rx)};
  s.igry = {yytrunc(ry), yytrunc(ry)};
  yygdrv(zg::OpPoint);
  yyhdrv(zg::OpPoint);
}

void IGrPolyLine(std::span<const float> x, std::span<const float> y) {
  const int n = static_cast<int>(std::min(x.size(), y.size()));
  yygrpolyline(x.data(), y.data(), n, 0);
  if (n > 0) IGrMoveTo(x[static_cast<size_t>(n - 1)], y[static_cast<size_t>(n - 1)]);
}

void IGrBorder() {
  const auto& s = state();
  const float x[] = {s.xminpx, s.xmaxpx, s.xmaxpx, s.xminpx, s.xminpx};
  const float y[] = {s.yminpx, s.yminpx, s.ymaxpx, s.ymaxpx, s.yminpx};
  yygrpolyline(x, y, 5, 1);
}

void IGrAreaClear() {
  auto& s = state();
  if (s.xgamin == 0 && s.ygamin == 0 && s.xgamax == 1 && s.ygamax == 1) {
    yygdrv(zg::OpClear);
    return;
  }
  const int mode = s.modepl, style = s.ifstyl, colour = s.ichnalgl, model = s.icmodel;
  s.modepl = 0;
  s.ifstyl = zelv_graphics::kFillSolid;
  s.icmodel = 0;
  s.ichnalgl = s.ibackcol;
  yygdrv(zg::OpColour);
  s.grx[0] = s.xminpx; s.gry[0] = s.yminpx; s.grx[1] = s.xmaxpx; s.gry[1] = s.ymaxpx;
  s.igrx = {s.ixmnpx, s.ixmxpx};
  s.igry = {s.iymnpx, s.iymxpx};
  yygdrv(zg::OpRectSolid);
  s.modepl = mode; s.ifstyl = style; s.icmodel = model; s.ichnalgl = colour;
  yygdrv(zg::OpColour);
}

void IGrLineType(int type) {
  auto& s = state();
  s.lintyp = (type >= 0 && type <= 7) ? type : 0;
  yygdrv(zg::OpLineType);
  yyhdrv(zg::OpLineType);
}

void IGrLineWidth(int screenwidth, int hardcopywidth) {
  auto& s = state();
  s.linwid = std::max(screenwidth, 1);
  if (hardcopywidth > 0) {
    s.linwidh = hardcopywidth;
    s.ihcopt[zelv_graphics::kOptLineWidth] = hardcopywidth;
  }
  yygdrv(zg::OpLineWidth);
  yyhdrv(zg::OpLineWidth);
}

void IGrColourN(int colour) {
  auto& s = state();
  if (colour < 0 || colour > (s.icmodel == 1 ? 255 : 0xFFFFFF)) return;
  s.iprevcol = yycolourrgb(s.ichnalgl);
  s.ichnalgl = colour;
  yygdrv(zg::OpColour);
  yyhdrv(zg::OpColour);
}

void IGrColourModel(int model) { state().icmodel = model == 1 ? 1 : 0; }

void IGrBackColour(int colour) {
  auto& s = state();
  s.ibackcol = yycolourrgb(colour);
  yygdrv(zg::OpBackColour);
}

void IGrFillPattern(int style, int density, int angle) {
  auto& s = state();
  s.ifstyl = std::clamp(style, 0, 4);
  s.ifdens = std::max(density, 1);
  s.ifangl = std::clamp(angle, 1, 4);
}

void igrplotmode2(int mode) {
  state().modepl = mode;
  yygdrv(zg::OpPlotMode);
}

void IGrHardcopySelect(int option, int driver) {
  auto& s = state();
  if (option != 1) return;
  const auto* d = driver_entry(driver);
  if (!d) return;
  s.ihcdrv = driver;
  s.igpar1 = 0;
  s.igpar2 = 0;
  xxhcif(zg::OpInit);
}

void IGrHardcopyOptions(int option, int value) {
  auto& s = state();
  if (!yyhcoptrule(option, value)) return;
  if (option < 1 || option > zg::kOptions) return;
  s.ihcopt[static_cast<size_t>(option)] = value;
  if (option == zelv_graphics::kOptLineWidth) s.linwidh = value;
  // On a driver with paper, the page size and the margins follow each other:
  // the margins from a size or offset, the size from a paper or margin, and a
  // turn of the paper in the way last taken.
  constexpr int kOptOffsetY = 4, kOptPaper = 33, kOptLastMargin = 37;
  bool resized = option == zelv_graphics::kOptPageWidth || option == zelv_graphics::kOptPageHeight;
  if ((s.ihcdrvflags & kFlagPaper) != 0) {
    if (option == kOptPaper) yypaper(1, value);
    if (option <= kOptOffsetY) {
      yymargins(1);
    } else if (option >= kOptPaper && option <= kOptLastMargin) {
      yymargins(2);
      resized = true;
    } else if (option == zelv_graphics::kOptOrientation && s.imargindir != 0) {
      yymargins(s.imargindir);
      resized = true;
    }
  }
  if (resized) yyasprath();
}

void IGrHardcopy(std::string_view filename, std::string_view title) {
  auto& s = state();
  yygapiflush();
  s.cerrsub = "IGrHardcopy";
  if (s.ighcpy > 0) {
    if (s.bdopause) {
      s.igpar1 = 32;
      s.igpar2 = 1;
      xxhcif(zg::OpEndPage);
    }
    xxhcif(zg::OpClose);
    s.ighcpy = 0;
  }
  if (filename == "S" || filename == "s") {
    run_print_command();
    return;
  }
  s.igpar2 = zg::kAskDriver;
  xxhcif(zg::OpInit);
  if (s.ihcdrv == 0 || !driver_entry(s.ihcdrv)) return;
  s.copsys = filename.empty() ? s.cdeffile[2] : std::string(filename);
  if ((s.ihcdrvflags & kFlagPrintCommand) != 0 && s.copsys.find(kPrintMark) != std::string::npos) {
    s.cprintcmd = s.copsys;
    s.copsys = temporary_file();
  }
  s.cwrkstr = std::string(title.substr(0, 200));
  s.igrx[0] = title.empty() ? 0 : 1;
  if (s.igscrn <= 0) {
    set_raster(s.ihcopt[1], s.ihcopt[2]);
    s.nxpixl = s.nxgraf;
    s.nypixl = s.nygraf;
  }
  s.ighcpy = 1;
  s.igpar1 = 1;
  xxhcif(zg::OpStart);
  if (s.ighcpy <= 0) return;
  if (s.igscrn <= 0) {
    s.ivport = 0;
    apply_area();
  }
  yyasprath();
  yygrtextrotate(s.chrotar);
  yygrtextvectors();
  s.plotx = s.ploty = zg::kUnknownPoint;
  for (int op : {zg::OpLineWidth, zg::OpLineType, zg::OpJoin, zg::OpCap, zg::OpClip, zg::OpFont, zg::OpColour})
    xxhcif(op);
}

void IGrEndPage(std::string_view options) {
  auto& s = state();
  yygapiflush();
  constexpr int kFormFeed = 12;
  // The page ends on the whole raster; with "P" the screen keeps its area.
  const std::array<float, 4> area{s.xgamin, s.ygamin, s.xgamax, s.ygamax};
  const bool widen = area != std::array<float, 4>{0, 0, 1, 1};
  const int screen = s.igscrn;
  if (options.find_first_of("Pp") != std::string_view::npos) s.igscrn = 0;
  if (widen) IGrArea(0, 0, 1, 1);
  s.igpar1 = kFormFeed;
  s.igpar2 = 0;
  yyhdrv(zg::OpEndPage);
  if (widen) IGrArea(area[0], area[1], area[2], area[3]);
  s.igscrn = screen;
}

void IGrPrintImageSelect(int mode) {
  auto& s = state();
  constexpr int kPostScript = 2, kPrinter = 4;
  s.iprtimg = mode;
  if (mode == kPostScript) {
    s.cprtimgfile = "zelvdump.ps";
    yypaper(2, zelvy_data::data().idefpapersize);
    s.iprtimgmargins = {43, 28, 43, 27};
    s.iprtimgflags = 11;
  } else if (mode == kPrinter) {
    s.cprtimgfile = "zelvdump.prn";
    s.iprtimgpage = {576, 432};
    s.iprtimgmargins = {0, 0, 0, 0};
  }
}
