// The software rasteriser and the two drivers that draw into a page in
// memory: the image driver, which writes a picture file per page, and the
// printer driver, which writes a printer's bit-image stream.
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/graphics/image_files.h"
#include "toolkit/graphics/image_private.h"
#include "toolkit/graphics/raster_private.h"

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace zg = zelvy_graph;
using zg::state;

namespace {

constexpr int kDriverPrinter = 4, kDriverImage = 6;
constexpr int kOptBits = 23, kOptFormat = 26, kOptQuality = 31, kOptDpi = 32;
constexpr int kOptResolution = 13, kOptPageFlags = 19, kOptCompression = 24;
constexpr int kOptOffsetX = 3, kOptOffsetY = 4;
constexpr int kFormatPcx = 0, kFormatBmp = 1, kFormatBmpRle = 2, kFormatPng = 3, kFormatJpeg = 4,
              kFormatPngAlpha = 5;
constexpr int kErrorMemory = 1;
constexpr int kPointsPerInch = 72;
constexpr int kWidthUnitsPerInch = 720;
// Line types: pattern bits and length.
constexpr std::array<std::pair<uint32_t, int>, 8> kLinePatterns = {
    {{0xFFF, 12}, {0x104, 12}, {0xE07, 12}, {0x1E1, 12}, {0x3C9, 12}, {0xCE7, 12}, {0x8E3, 12}, {0x19CE7, 17}}};
// 4-bit page values of the 16 palette rows.
constexpr std::array<int, 16> kIexint16 = {0, 9, 1, 11, 3, 10, 2, 14, 6, 12, 4, 13, 5, 15, 7, 8};

struct Pen {
  uint32_t value = 1, previous = 1;      // colour in the page's form
  std::array<uint32_t, 3> dith{}, dithprev{};  // ink patterns, grey in [0] for one bit
  bool mixfill = false, scanlines = false, drawn = false;
  int xmin = 0, xmax = 0, ymin = 0, ymax = 0;  // clip box in pixels
  int width = 0, half = 0;                      // brush less one, and half of it
  uint32_t dots = 0xFFF;
  int dotlen = 12, dotpos = 0, dotstep = 1, dotrun = 0;
  int driver = kDriverImage;
  int pageno = 0;
  std::string firstfile;
};
Pen& pen() {
  static Pen p;
  return p;
}

int to_page_x(float x) { return yytrunc(x * state().xscale); }
int to_page_y(float y) { return yytrunc(y * state().yscale); }

// One pixel in value v, inside the clip box only.
void yyvra1(uint32_t v, int x, int y) {
  const auto& p = pen();
  if (x < p.xmin || x > p.xmax || y < p.ymin || y > p.ymax) return;
  zg::yyrasterpage().set(x, y, v);
}

// Ink patterns of the 16 x 16 x 16 colours by the high four bits of red,
// green and blue, for pictures drawn on the bit-plane pages: made once, at the
// first picture, so that no pixel needs a division.
std::vector<std::array<uint32_t, 3>>& dither_tables() {
  static std::vector<std::array<uint32_t, 3>> tables;
  return tables;
}

void yydith2() {
  auto& t = dither_tables();
  if (!t.empty()) return;
  constexpr int kSteps = 16;
  const int colours = zg::yyrasterpage().nbitpx == 1 ? 2 : 8;
  t.resize(kSteps * kSteps * kSteps);
  for (int r = 0; r < kSteps; ++r)
    for (int g = 0; g < kSteps; ++g)
      for (int b = 0; b < kSteps; ++b) {
        auto& e = t[static_cast<size_t>((r * kSteps + g) * kSteps + b)];
        // The middle of each step.
        yydith(1, colours, r * 17, g * 17, b * 17, e[0], e[1], e[2]);
      }
}

void yydithfree() { dither_tables() = {}; }

// A picture's pixel in the page's form.
void yyvra5(int x, int y, int rgb) {
  const auto& page = zg::yyrasterpage();
  switch (page.nbitpx) {
    case 1:
    case 3: {
      const auto& e = dither_tables()[static_cast<size_t>(((rgb >> 4) & 0xF) << 8 | ((rgb >> 12) & 0xF) << 4 | ((rgb >> 20) & 0xF))];
      const int place = (y % 4) * 8 + x % 8;
      uint32_t v = 0;
      for (int k = 0; k < page.nrapln; ++k) v |= ((e[static_cast<size_t>(k)] >> place) & 1u) << k;
      yyvra1(v, x, y);
      return;
    }
    case 4:
    case 8: {
      const int index = yyrgbto8(rgb);
      yyvra1(page.nbitpx == 8 ? static_cast<uint32_t>(index) : static_cast<uint32_t>(kIexint16[static_cast<size_t>(index / 16)]), x, y);
      return;
    }
    default:
      yyvra1(static_cast<uint32_t>(rgb & 0xFFFFFF) | (page.brtrans ? 0xFF000000u : 0u), x, y);
  }
}

// An image the program handed over, stretched over its box, its top row at
// the top, cut at the clip box.
void draw_image(const zg::ImageData& image) {
  const auto& s = state();
  auto& p = pen();
  const int x1 = to_page_x(std::min(s.grx[0], s.grx[1])), x2 = to_page_x(std::max(s.grx[0], s.grx[1]));
  const int y1 = to_page_y(std::min(s.gry[0], s.gry[1])), y2 = to_page_y(std::max(s.gry[0], s.gry[1]));
  const int bw = x2 - x1 + 1, bh = y2 - y1 + 1;
  if (bw <= 0 || bh <= 0) return;
  const auto& page = zg::yyrasterpage();
  if (page.nbitpx == 1 || page.nbitpx == 3) yydith2();
  p.drawn = state().bdopause = true;
  for (int j = 0; j < bh; ++j) {
    const int y = y2 - j;
    if (y < p.ymin || y > p.ymax) continue;
    const int sy = static_cast<int>(static_cast<int64_t>(j) * image.height / bh);
    for (int i = 0; i < bw; ++i) {
      const int x = x1 + i;
      if (x < p.xmin || x > p.xmax) continue;
      yyvra5(x, y, image.at(static_cast<int>(static_cast<int64_t>(i) * image.width / bw), sy));
    }
  }
}

// The picture file named by copsys, stretched over the clip box, its top row
// at the top.
void draw_picture() {
  auto& s = state();
  auto& p = pen();
  if (s.image) return draw_image(*s.image);
  std::vector<int> data;
  int info[3] = {};
  IGrLoadImageData(s.copsys, data, 0, info);
  const int w = info[1], h = info[2];
  if (data.empty() || w <= 0 || h <= 0) return;
  const auto& page = zg::yyrasterpage();
  if (page.nbitpx == 1 || page.nbitpx == 3) yydith2();
  const int bw = p.xmax - p.xmin + 1, bh = p.ymax - p.ymin + 1;
  if (bw <= 0 || bh <= 0) return;
  p.drawn = s.bdopause = true;
  for (int j = 0; j < bh; ++j) {
    const int sy = static_cast<int>(static_cast<int64_t>(j) * h / bh);
    const int* row = data.data() + static_cast<size_t>(sy) * static_cast<size_t>(w);
    const int y = p.ymax - j;
    for (int i = 0; i < bw; ++i) yyvra5(p.xmin + i, y, row[static_cast<int64_t>(i) * w / bw]);
  }
}

// A span of one row in value v, cut to the clip box.
void yyvra4(uint32_t v, int x1, int y, int x2) {
  const auto& p = pen();
  if (y < p.ymin || y > p.ymax) return;
  x1 = std::max(x1, p.xmin);
  x2 = std::min(x2, p.xmax);
  auto& page = zg::yyrasterpage();
  if (page.nbitpx == 24) {
    std::fill(page.irbuff.begin() + static_cast<std::ptrdiff_t>(y) * page.lenrrow + x1,
              page.irbuff.begin() + static_cast<std::ptrdiff_t>(y) * page.lenrrow + x2 + 1, v);
    return;
  }
  for (int x = x1; x <= x2; ++x) page.set(x, y, v);
}

// A fill span: half-tone patterns on the bit-plane pages, mixed colours on the others.
void yyvra2(int x1, int x2, int y) {
  auto& page = zg::yyrasterpage();
  const auto& p = pen();
  if (x1 > x2) std::swap(x1, x2);
  if (y < p.ymin || y > p.ymax) return;
  x1 = std::max(x1, p.xmin);
  x2 = std::min(x2, p.xmax);
  if (page.nbitpx == 1 || page.nbitpx == 3) {
    for (int x = x1; x <= x2; ++x) {
      const int place = (y % 4) * 8 + x % 8;
      const auto& pat = p.mixfill && (x + y) % 2 ? p.dithprev : p.dith;
      uint32_t v = 0;
      for (int k = 0; k < page.nrapln; ++k) v |= ((pat[static_cast<size_t>(k)] >> place) & 1u) << k;
      page.set(x, y, v);
    }
    return;
  }
  if (!p.mixfill) {
    yyvra4(p.value, x1, y, x2);
    return;
  }
  for (int x = x1; x <= x2; ++x) page.set(x, y, (x + y) % 2 ? p.previous : p.value);
}

// The brush at a point: width by width pixels.
void brush(int x, int y) {
  const auto& p = pen();
  for (int dy = -p.half; dy <= p.width - p.half; ++dy) yyvra4(p.value, x - p.half, y + dy, x + p.width - p.half);
}

// A line by integer steps along the longer axis; `skip` leaves out the first
// pixel, shared with the end of the line before.
void yyvra3(int x1, int y1, int x2, int y2, bool skip) {
  auto& p = pen();
  const bool solid = p.dotlen == 12 && p.dots == 0xFFF;
  if (solid && y1 == y2) {
    const int a = std::min(x1, x2) + (skip && x1 < x2 ? 1 : 0), b = std::max(x1, x2) - (skip && x1 > x2 ? 1 : 0);
    for (int dy = -p.half; dy <= p.width - p.half; ++dy) yyvra4(p.value, a - p.half, y1 + dy, b + p.width - p.half);
    return;
  }
  const int dx = std::abs(x2 - x1), dy = std::abs(y2 - y1), sx = x1 < x2 ? 1 : -1, sy = y1 < y2 ? 1 : -1;
  int err = dx - dy, x = x1, y = y1;
  bool first = true;
  while (true) {
    if (!(first && skip)) {
      const bool on = solid || ((p.dots >> (p.dotlen - 1 - p.dotpos)) & 1u);
      if (on) brush(x, y);
      if (++p.dotrun >= p.dotstep) {
        p.dotrun = 0;
        p.dotpos = (p.dotpos + 1) % p.dotlen;
      }
    }
    first = false;
    if (x == x2 && y == y2) break;
    const int e2 = 2 * err;
    if (e2 > -dy) { err -= dy; x += sx; }
    if (e2 < dx) { err += dx; y += sy; }
  }
}

uint32_t page_colour(int rgb, int index) {
  const auto& s = state();
  auto& page = zg::yyrasterpage();
  const int r = rgb & 0xFF, g = (rgb >> 8) & 0xFF, b = (rgb >> 16) & 0xFF;
  switch (page.nbitpx) {
    case 1: return rgb == 0xFFFFFF ? 0 : 1;
    case 3: {
      uint32_t v = (r <= 127 ? 1 : 0) | (g <= 127 ? 2 : 0) | (b <= 127 ? 4 : 0);
      if (s.ihcopt[zelv_graphics::kOptColourHandling] == 2 && (v == 0 || v == 7)) v ^= 7;
      return v;
    }
    case 4: return static_cast<uint32_t>(kIexint16[static_cast<size_t>(index / 16)]);
    case 8: return static_cast<uint32_t>(index);
    default: return static_cast<uint32_t>(rgb) | (page.brtrans ? 0xFF000000u : 0u);
  }
}

void set_colour() {
  auto& s = state();
  auto& p = pen();
  p.previous = p.value;
  p.dithprev = p.dith;
  const int rgb = yycolourrgb(s.ichnalgl) & 0xFFFFFF;
  const int index = s.icmodel == 1 ? std::clamp(s.ichnalgl, 0, 255) : yyrgbto8(rgb);
  p.value = page_colour(rgb, index);
  const int colours = zg::yyrasterpage().nbitpx == 1 ? 2 : 8;
  yydith(1, colours, rgb & 0xFF, (rgb >> 8) & 0xFF, (rgb >> 16) & 0xFF, p.dith[0], p.dith[1], p.dith[2]);
  // Outline text is drawn solid.
  if (s.inoutstr != 0) p.dith = {p.value & 1 ? ~0u : 0u, p.value & 2 ? ~0u : 0u, p.value & 4 ? ~0u : 0u};
}

void set_width() {
  const auto& s = state();
  auto& p = pen();
  const auto& page = zg::yyrasterpage();
  const int dots = s.ihcopt[zelv_graphics::kOptLineWidth] * page.dpi / kWidthUnitsPerInch;
  p.width = std::max(dots - 1, 0);
  p.half = p.width / 2;
}

void set_line_type() {
  auto& p = pen();
  const auto& [bits, len] = kLinePatterns[static_cast<size_t>(std::clamp(state().lintyp, 0, 7))];
  p.dots = bits;
  p.dotlen = len;
  p.dotpos = 0;
  p.dotrun = 0;
  p.dotstep = std::max(1, zg::yyrasterpage().dpi / 50);
}

void set_clip() {
  const auto& s = state();
  auto& p = pen();
  const auto& page = zg::yyrasterpage();
  p.xmin = std::max(to_page_x(s.xminpx), 0);
  p.xmax = std::min(to_page_x(s.xmaxpx), page.nrxpix - 1);
  p.ymin = std::max(to_page_y(s.yminpx), 0);
  p.ymax = std::min(to_page_y(s.ymaxpx), page.nrypix - 1);
}

// A fresh page of `bits`, shrunk by the square root of the lack while the
// memory isn't there.
bool open_page(int width, int height, int bits) {
  auto& page = zg::yyrasterpage();
  while (!page.allocate(width, height, bits)) {
    yyerror(kErrorMemory, state().cerrsub);
    constexpr double kShrink = 0.9;
    width = static_cast<int>(width * std::sqrt(kShrink));
    height = static_cast<int>(height * std::sqrt(kShrink));
    if (width < 1 || height < 1) return false;
  }
  return true;
}

void scale_to_page() {
  auto& s = state();
  const auto& page = zg::yyrasterpage();
  s.xscale = static_cast<float>(page.nrxpix) / static_cast<float>(s.nxgraf);
  s.yscale = static_cast<float>(page.nrypix) / static_cast<float>(s.nygraf);
}

void palettes() {
  auto& page = zg::yyrasterpage();
  const auto& s = state();
  page.irgb256 = s.irgb256;
  for (size_t k = 0; k < 16; ++k) page.irgb16[static_cast<size_t>(kIexint16[k])] = s.irgb256[16 * k];
}

// What every page starts with, whichever driver holds it: palettes, scale,
// clip, pen and a cleared page.
void begin_page() {
  palettes();
  scale_to_page();
  set_clip();
  set_width();
  set_line_type();
  set_colour();
  yyvras(zg::OpClear);
}

uint32_t background() {
  const auto& page = zg::yyrasterpage();
  if (page.nbitpx == 24 && !page.brtrans) return 0xFFFFFF;
  return 0;
}

std::string page_file(const std::string& first, int pageno) {
  if (pageno <= 1) return first;
  const std::filesystem::path p(first);
  return (p.parent_path() / (p.stem().string() + std::to_string(pageno) + p.extension().string())).string();
}

void write_picture() {
  auto& s = state();
  auto& p = pen();
  const auto& page = zg::yyrasterpage();
  ++p.pageno;
  const std::string file = page_file(p.firstfile, p.pageno);
  zg::ImageResult r;
  switch (s.ihcopt[kOptFormat]) {
    case kFormatPcx: r = yypcx1(page, file); break;
    case kFormatBmp: r = yybmp1(page, file, false); break;
    case kFormatBmpRle: r = yybmp1(page, file, true); break;
    case kFormatJpeg: r = yyjpeg1(page, file, s.ihcopt[kOptQuality]); break;
    default: r = yypng1(page, file);
  }
  if (r.error != 0) {
    s.bhcerr = true;
    if (r.error <= 2) {
      zelvy_data::data().istat = r.status;
      zelvy_data::data().ioetype = 2;
    } else {
      zelvy_data::data().iapierr = r.status;
    }
    yyerror(r.error, s.cerrsub);
  }
}

// Where the edge from (x1, y1) to (x2, y2) crosses the row at y, if it does.
bool yyxini(float x1, float y1, float x2, float y2, float y, float& x) {
  if ((y < y1 && y < y2) || (y > y1 && y > y2) || y1 == y2) return false;
  x = x1 + (x2 - x1) * (y - y1) / (y2 - y1);
  return true;
}

// Rectangles, parallelograms and triangles filled here: each pixel row of
// the shape from its left-most to its right-most edge crossing, pixels by
// their centres.
void convex_fill(int op) {
  const auto& s = state();
  std::vector<float> x, y;
  if (op == zg::OpRectHalf) {
    x = {s.grx[0], s.grx[1], s.grx[1], s.grx[0]};
    y = {s.gry[0], s.gry[0], s.gry[1], s.gry[1]};
  } else {
    const size_t n = std::min<size_t>(op == zg::OpTriHalf ? 3 : 4, s.xwork.size());
    x.assign(s.xwork.begin(), s.xwork.begin() + static_cast<std::ptrdiff_t>(n));
    y.assign(s.ywork.begin(), s.ywork.begin() + static_cast<std::ptrdiff_t>(n));
  }
  if (x.size() < 3) return;
  for (size_t i = 0; i < x.size(); ++i) {
    x[i] *= s.xscale;
    y[i] *= s.yscale;
  }
  const auto& p = pen();
  const int top = std::min(yytrunc(*std::max_element(y.begin(), y.end())), p.ymax);
  for (int row = std::max(yytrunc(*std::min_element(y.begin(), y.end())), p.ymin); row <= top; ++row) {
    const float centre = static_cast<float>(row) + 0.5f;
    float lo = 1.0e9f, hi = -1.0e9f, cross;
    for (size_t i = 0; i < x.size(); ++i) {
      const size_t j = (i + 1) % x.size();
      if (!yyxini(x[i], y[i], x[j], y[j], centre, cross)) continue;
      lo = std::min(lo, cross);
      hi = std::max(hi, cross);
    }
    if (lo > hi) continue;
    const int a = static_cast<int>(std::ceil(lo - 0.5f)), b = static_cast<int>(std::ceil(hi - 0.5f)) - 1;
    if (a <= b) yyvra2(a, b, row);
  }
}

void fill_bracket(int op) {
  auto& s = state();
  auto& p = pen();
  if (s.igpar1 == -1) {
    p.scanlines = false;
    p.mixfill = false;
    return;
  }
  p.drawn = s.bdopause = true;
  if (s.ifstyl < 3) {
    if (op == zg::OpEllipseHalf || op == zg::OpPieHalf) yygrhcshape(op);
    s.igpar1 = -1;
    return;
  }
  p.mixfill = s.ifstyl == zelv_graphics::kFillHalfTone && p.previous != p.value;
  s.yhstep = s.yngraf / static_cast<float>(zg::yyrasterpage().nrypix);
  if (op == zg::OpRectHalf || op == zg::OpParallelHalf || op == zg::OpTriHalf) {
    convex_fill(op);
    return;
  }
  if (op == zg::OpEllipseHalf || op == zg::OpPieHalf) {
    p.scanlines = true;
    yygrhcshape(op);
    p.scanlines = false;
    return;
  }
  // The shape comes back as scan lines, one a pixel row.
  p.scanlines = true;
  s.igpar1 = -1;
}

}  // namespace

namespace zelvy_graph {
RasterPage& yyrasterpage() {
  static RasterPage page;
  return page;
}
}  // namespace zelvy_graph

uint32_t yydithlevel(int level, int channel) {
  constexpr int kPlaces = 32;
  if (level <= 0) return 0;
  if (level >= static_cast<int>(0.975 * kPlaces) + 1) return ~0u;
  const int run = std::max(level / (kPlaces - level), 1), gap = std::max((kPlaces - level) / level, 1);
  int pos = (channel + 3) * (level / (channel + 2)) % kPlaces;
  uint32_t pattern = 0;
  int count = 0, walked = 0;
  while (count < level && walked < kPlaces) {
    for (int r = 0; r < run && count < level; ++r) {
      if (!((pattern >> pos) & 1u)) {
        pattern |= 1u << pos;
        ++count;
      }
      pos = (pos + 1) % kPlaces;
      ++walked;
    }
    pos = (pos + gap) % kPlaces;
    walked += gap;
  }
  // Bits still to go fill the free places from both ends inwards.
  for (int lo = 0, hi = kPlaces - 1; count < level && lo <= hi;) {
    if (!((pattern >> lo) & 1u)) { pattern |= 1u << lo; ++count; }
    ++lo;
    if (count < level && !((pattern >> hi) & 1u)) { pattern |= 1u << hi; ++count; }
    --hi;
  }
  return pattern;
}

void yydith(int mode, int colours, int red, int green, int blue, uint32_t& pr, uint32_t& pg, uint32_t& pb) {
  constexpr double kLevels = 32;
  if (mode == 2 && colours > 2) {
    red = 255 - red;
    green = 255 - green;
    blue = 255 - blue;
  }
  auto level = [&](double light) { return static_cast<int>((255.0 - light) / 255.0 * kLevels + 0.5); };
  if (colours <= 2) {
    const double grey = 0.35 * red + 0.59 * green + 0.11 * blue;
    pr = pg = pb = yydithlevel(level(std::min(grey, 255.0)), 0);
    return;
  }
  pr = yydithlevel(level(red), 0);
  pg = yydithlevel(level(green), 1);
  pb = yydithlevel(level(blue), 2);
}

bool yyvra7(int x1, int x2, int y, int rgb) {
  const auto& s = state();
  auto& p = pen();
  auto& page = zg::yyrasterpage();
  if (s.ighcpy <= 0 || (s.ihcdrv != kDriverImage && s.ihcdrv != kDriverPrinter) || page.irbuff.empty()) return false;
  // Bit-plane pages mix their inks by pattern, as any other fill.
  if (page.nbitpx == 1 || page.nbitpx == 3) return false;
  p.drawn = state().bdopause = true;
  // Raster units to pixels: the run covers every pixel whose raster cell it covers.
  const int px1 = to_page_x(static_cast<float>(std::min(x1, x2)));
  const int px2 = std::max(to_page_x(static_cast<float>(std::max(x1, x2) + 1)) - 1, px1);
  const int py1 = to_page_y(static_cast<float>(y));
  const int py2 = std::max(to_page_y(static_cast<float>(y + 1)) - 1, py1);
  for (int row = py1; row <= py2; ++row) {
    if (row < p.ymin || row > p.ymax) continue;
    if (page.nbitpx == 24) {
      yyvra4(static_cast<uint32_t>(rgb & 0xFFFFFF) | (page.brtrans ? 0xFF000000u : 0u), px1, row, px2);
    } else {
      const int index = yyrgbto8(rgb);
      yyvra4(page.nbitpx == 8 ? static_cast<uint32_t>(index) : static_cast<uint32_t>(kIexint16[static_cast<size_t>(index / 16)]),
             px1, row, px2);
    }
  }
  return true;
}

void yyvras(int op) {
  auto& s = state();
  auto& p = pen();
  switch (op) {
    case zg::OpInit:
      s.lwcap[2] = 2;
      s.i24cap[2] = 1;
      s.igradcap[2] = 1;
      s.ipropcap[2] = 0;
      s.imgcap[2] = 1;
      s.igcset[2] = 0;
      s.sizemin[2] = 0;
      s.icsrot[2] = 0;
      s.ifmeth[1] = 0;
      return;
    case zg::OpLine: {
      p.drawn = s.bdopause = true;
      const int x1 = to_page_x(s.grx[0]), y1 = to_page_y(s.gry[0]), x2 = to_page_x(s.grx[1]),
                y2 = to_page_y(s.gry[1]);
      if (p.scanlines) {
        yyvra2(std::min(x1, x2), std::max(x1, x2), y1);
        return;
      }
      yyvra3(x1, y1, x2, y2, false);
      return;
    }
    case zg::OpPoint:
      p.drawn = s.bdopause = true;
      brush(to_page_x(s.grx[0]), to_page_y(s.gry[0]));
      return;
    case zg::OpPolyline: {
      p.drawn = s.bdopause = true;
      const size_t n = std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size());
      for (size_t i = 1; i < n; ++i)
        yyvra3(to_page_x(s.xwork[i - 1]), to_page_y(s.ywork[i - 1]), to_page_x(s.xwork[i]), to_page_y(s.ywork[i]),
               i > 1);
      return;
    }
    case zg::OpColour:
      set_colour();
      return;
    case zg::OpEllipseHalf:
    case zg::OpParallelHalf:
    case zg::OpRectHalf:
    case zg::OpTriHalf:
    case zg::OpPieHalf:
    case zg::OpPolyHalf:
      fill_bracket(op);
      return;
    case zg::OpArc:
      p.drawn = s.bdopause = true;
      yygrhcshape(zg::OpArc);
      return;
    case zg::OpClear:
      zg::yyrasterpage().clear(background());
      p.drawn = false;
      return;
    case zg::OpClip:
      set_clip();
      return;
    case zg::OpLineType:
      set_line_type();
      return;
    case zg::OpLineWidth:
      set_width();
      return;
    case zg::OpImage:
      draw_picture();
      return;
    case zg::OpClose:
      zg::yyrasterpage().irbuff = {};
      yydithfree();
      return;
    default:
      return;
  }
}

void xximag(int op) {
  auto& s = state();
  auto& p = pen();
  switch (op) {
    case zg::OpInit:
      if (s.igpar2 == zg::kAskDriver) {
        s.igpar2 = kDriverImage;
        return;
      }
      yydefh();
      s.ihcdrvflags = 0;
      yyvras(zg::OpInit);
      s.ihcopt[1] = 1024;
      s.ihcopt[2] = 768;
      s.ihcolours = 256;
      s.ihcopt[kOptBits] = 8;
      s.ihcopt[kOptFormat] = kFormatPng;
      s.ihcopt[kOptQuality] = 80;
      s.ihcopt[kOptDpi] = 150;
      s.cgcapab[2] = "00000111111111100010011011110";
      s.cdeffile[2] = "zelvplot.png";
      s.ihcdrv = kDriverImage;
      return;
    case zg::OpStart: {
      if (s.igpar1 <= 0) return;
      p = Pen{};
      p.driver = kDriverImage;
      p.firstfile = s.copsys;
      const int format = s.ihcopt[kOptFormat];
      int bits = s.ihcopt[kOptBits];
      if (format == kFormatJpeg || format == kFormatPngAlpha || !(bits == 1 || bits == 4 || bits == 8)) bits = 24;
      s.i24cap[2] = bits == 24 ? 1 : 0;
      s.ihcopt[zelv_graphics::kOptColourHandling] = 0;
      if (!open_page(std::max(s.ihcopt[1], 1), std::max(s.ihcopt[2], 1), bits)) {
        s.ighcpy = 0;
        return;
      }
      auto& page = zg::yyrasterpage();
      page.brtrans = format == kFormatPngAlpha && bits == 24;
      page.dpi = s.ihcopt[kOptDpi] > 0 ? s.ihcopt[kOptDpi] : 150;
      begin_page();
      return;
    }
    case zg::OpEndPage:
      if (p.drawn) {
        write_picture();
        s.bdopause = false;
        yyvras(zg::OpClear);
      }
      return;
    case zg::OpClose: {
      // A run-length BMP learns its real sizes at the end.
      const auto& page = zg::yyrasterpage();
      if (s.ihcopt[kOptFormat] == kFormatBmpRle && p.pageno > 0 && (page.nbitpx == 4 || page.nbitpx == 8)) {
        const auto r = yybmp2(page_file(p.firstfile, p.pageno), 1 << page.nbitpx);
        if (r.error) yyerror(r.error, s.cerrsub);
      }
      yyvras(zg::OpClose);
      return;
    }
    default:
      yyvras(op);
  }
}

// ---- The printer driver -----------------------------------------------------

namespace zelvy_graph {
PrinterModel& yyprintermodel() {
  static PrinterModel m;
  return m;
}
}  // namespace zelvy_graph

void IPrinter(int model) {
  struct Row {
    int first, last;
    const char* code;
  };
  static constexpr Row kRows[] = {
      {2, 2, "M1M0"}, {7, 8, "M1M0"}, {12, 12, "M1M0"}, {15, 16, "M1M0"}, {3, 6, "F1M0"}, {9, 9, "S1M0"},
      {10, 11, "L1M0"}, {13, 13, "P3R1"}, {14, 14, "D1M2"}, {22, 22, "D1M2"}, {17, 18, "Q1M0"}, {19, 20, "X1M0"},
      {21, 21, "D3R2"}, {23, 24, "F3C0"}, {25, 26, "Q3C0"}, {28, 28, "L1M22"}, {29, 29, "41M22"}, {30, 30, "33R13"},
      {31, 31, "D3C2"}, {32, 32, "D3C22"}, {33, 33, "51M2"}, {34, 34, "53C2"}, {35, 35, "L3C22"}, {36, 36, "21M1"},
      {37, 37, "23C1"}, {38, 38, "43C22"}};
  struct Class {
    std::array<int, 4> res;
    int pins, feed, fold;
  };
  static constexpr Class kClasses[12] = {
      {{240, 120, 60, 0}, 8, 23, 0},    {{240, 120, 90, 80}, 8, 23, 0}, {{160, 80, 0, 0}, 8, 22, 0},
      {{360, 180, 120, 60}, 24, 29, 0}, {{360, 180, 120, 90}, 24, 24, 0}, {{720, 360, 180, 0}, 1, 0, 0},
      {{300, 150, 100, 75}, 1, 0, 0},   {{300, 150, 100, 75}, 1, 0, 0},  {{180, 90, 0, 0}, 1, 0, 0},
      {{300, 150, 100, 75}, 1, 0, 0},   {{600, 300, 200, 150}, 1, 0, 7}, {{300, 150, 75, 0}, 1, 0, 8}};
  constexpr std::string_view kClassLetters = "MFSXQ2LDP345";
  if (model < 2 || model > 38 || model == 27) model = 28;
  const char* code = "L1M22";
  for (const auto& r : kRows)
    if (model >= r.first && model <= r.last) code = r.code;
  auto& m = zg::yyprintermodel();
  m.idevice = model;
  m.ipgraf = static_cast<int>(kClassLetters.find(code[0])) + 1;
  m.navpln = code[1] - '0';
  m.iprcol = code[2] == 'R' ? 1 : code[2] == 'C' ? 2 : 0;
  m.icmeth = code[3] - '0';
  // A trailing 2: the model waits for its second type from IPrinter2.
  m.itype2 = std::string_view(code).size() > 4 && code[4] == '2' ? 0 : 1;
  const auto& c = kClasses[static_cast<size_t>(m.ipgraf - 1)];
  m.ipresn = c.res;
  m.nresn = static_cast<int>(std::count_if(c.res.begin(), c.res.end(), [](int r) { return r > 0; }));
  m.nprpin = c.pins;
  m.lfdhgt = c.feed;
  if (c.fold) m.ipgraf = c.fold;
}

void IPrinter2(int type) { zg::yyprintermodel().itype2 = std::max(type, 1); }

namespace {

struct PrinterRun {
  zg::PrinterPage page;
  int idpiac = 1;
};
PrinterRun& run() {
  static PrinterRun r;
  return r;
}

void printer_init() {
  auto& s = state();
  const auto& m = zg::yyprintermodel();
  yydefh();
  s.ihcdrvflags = 8;
  yyvras(zg::OpInit);
  s.ihcopt[1] = 576;
  s.ihcopt[2] = 432;
  const bool pcl = m.ipgraf >= 6;
  s.ihcopt[kOptOffsetX] = pcl ? 100 : 0;
  s.ihcopt[kOptOffsetY] = pcl ? 70 : 0;
  s.ihcopt[zelv_graphics::kOptOrientation] = pcl ? 1 : 0;
  s.ihcopt[kOptResolution] = std::min(m.nresn, 2);
  s.ihcopt[kOptPageFlags] = 3;
  s.ihcopt[kOptCompression] = std::min(m.icmeth, 2);
  s.ihcolours = 1 << m.navpln;
  s.cgcapab[2] = "00000111111111100010011011110";
  s.cdeffile[2] = "zelvplot.prn";
  s.ihcdrv = kDriverPrinter;
}

bool printer_open() {
  auto& s = state();
  const auto& m = zg::yyprintermodel();
  auto& r = run();
  auto& pp = r.page;
  const bool mono = s.ihcopt[zelv_graphics::kOptColourHandling] == 1 || m.navpln == 1;
  const int bits = mono ? 1 : 3;
  pp.orientation = s.ihcopt[zelv_graphics::kOptOrientation] == 1 ? 1 : 0;
  pp.left = s.ihcopt[kOptOffsetX];
  pp.top = s.ihcopt[kOptOffsetY];
  pp.copies = std::max(s.ihcopt[zelv_graphics::kOptCopies], 1);
  pp.pageflags = s.ihcopt[kOptPageFlags];
  pp.compression = std::clamp(s.ihcopt[kOptCompression], 0, 2);
  for (r.idpiac = std::clamp(s.ihcopt[kOptResolution], 1, std::max(m.nresn, 1)); r.idpiac <= m.nresn; ++r.idpiac) {
    pp.hdpi = m.ipresn[static_cast<size_t>(r.idpiac - 1)];
    pp.vdpi = pp.hdpi;
    if (m.ipgraf < 6) {
      // Dot-matrix heads: the vertical pitch is the pins' own.
      pp.vdpi = m.nprpin * 216 / m.lfdhgt;
      if (pp.hdpi >= 100) pp.vdpi *= 2;
      if (m.ipgraf == 5) pp.vdpi = 180;
    }
    // Page in points, the picture turned on the paper for orientation 1.
    int w = s.ihcopt[1] * pp.hdpi / kPointsPerInch, h = s.ihcopt[2] * pp.vdpi / kPointsPerInch;
    if (m.nprpin > 1) h = (h + m.nprpin - 1) / m.nprpin * m.nprpin;
    if (zg::yyrasterpage().allocate(std::max(w, 1), std::max(h, 1), bits)) {
      auto& page = zg::yyrasterpage();
      page.dpi = pp.hdpi;
      return true;
    }
  }
  yyerror(kErrorMemory, s.cerrsub);
  s.ighcpy = 0;
  return false;
}

}  // namespace

void xxrast(int op) {
  auto& s = state();
  auto& p = pen();
  switch (op) {
    case zg::OpInit:
      if (s.igpar2 == zg::kAskDriver) {
        s.igpar2 = kDriverPrinter;
        return;
      }
      printer_init();
      return;
    case zg::OpStart:
      if (s.igpar1 <= 0) return;
      p = Pen{};
      p.driver = kDriverPrinter;
      if (!printer_open()) return;
      yygrhcopen(1);
      if (s.bhcerr) {
        s.ighcpy = 0;
        return;
      }
      begin_page();
      return;
    case zg::OpEndPage:
      if (p.drawn) {
        std::string out;
        yydump(zg::yyrasterpage(), zg::yyprintermodel(), run().page, out);
        yygrhcwrite(1, out);
        s.bdopause = false;
        yyvras(zg::OpClear);
      }
      return;
    case zg::OpClose:
      yygrhcclose(1);
      yyvras(zg::OpClose);
      return;
    default:
      yyvras(op);
  }
}
