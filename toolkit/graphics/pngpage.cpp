// Hardcopy driver 6: the page drawn into memory, 24 bits a pixel, and written
// as a PNG file at the end of the page. Text arrives as strokes and outlines
// (no device text here), fills as scan lines.
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"

#include "toolkit/base/error.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {

constexpr int kUnit = 2;
constexpr int kPageWidth = 1024, kPageHeight = 768;
constexpr int kOptDepth = 23, kOptFormat = 26, kOptQuality = 31, kOptDpi = 32;
constexpr int kFormatPng = 3, kFormatPngAlpha = 5;
constexpr int kErrorFormat = 27, kErrorPageTooLarge = 34;
constexpr double kMaxPixels = 16.0 * 1024 * 1024;
constexpr int kWhite = 0xFFFFFF;
constexpr const char* kCapability = "00000111111111110010011111000";
// Line types as bit patterns, a set bit drawn: 12 bits each, the last 17.
constexpr std::array<int, 8> kDots = {0xFFF, 0x104, 0xE07, 0x1E1, 0x3C9, 0xCE7, 0x8E3, 0x19CE7};
constexpr std::array<int, 8> kDotBits = {12, 12, 12, 12, 12, 12, 12, 17};

struct Page {
  zg::ImageData image;
  int colour = 0;
  int xmin = 0, xmax = -1, ymin = 0, ymax = -1;  // clip box in pixels, rows from the top
  int width = 1;                                 // pen width in pixels
  int dotpos = 0;                                // place in the line type's pattern
  bool filling = false;                          // inside a fill bracket: lines are scan lines
};
Page& page() {
  static Page p;
  return p;
}

int pixel_x(float x) { return yytrunc(x * state().xscale); }
int pixel_y(float y) { return page().image.height - 1 - yytrunc(y * state().yscale); }

void plot(int x, int y) {
  auto& p = page();
  if (x < p.xmin || x > p.xmax || y < p.ymin || y > p.ymax) return;
  p.image.rgb[static_cast<size_t>(y) * static_cast<size_t>(p.image.width) + static_cast<size_t>(x)] = p.colour;
}

void dab(int x, int y) {
  const int w = page().width;
  if (w <= 1) {
    plot(x, y);
    return;
  }
  for (int dy = -w / 2; dy < w - w / 2; ++dy)
    for (int dx = -w / 2; dx < w - w / 2; ++dx) plot(x + dx, y + dy);
}

// A line between pixel centres; the pattern of the line type runs on from
// one line to the next, a bit a pen width long.
void line(int x1, int y1, int x2, int y2, bool skipfirst) {
  auto& p = page();
  const auto& s = state();
  const size_t t = static_cast<size_t>(std::clamp(s.lintyp, 0, 7));
  const bool solid = t == 0 || p.filling;
  const int bitlength = 3 * std::max(p.width, 1);
  const int dx = std::abs(x2 - x1), dy = -std::abs(y2 - y1), sx = x1 < x2 ? 1 : -1, sy = y1 < y2 ? 1 : -1;
  int err = dx + dy;
  bool first = true;
  for (;;) {
    const int bit = (p.dotpos / bitlength) % kDotBits[t];
    if (!(first && skipfirst) && (solid || ((kDots[t] >> (kDotBits[t] - 1 - bit)) & 1))) dab(x1, y1);
    first = false;
    ++p.dotpos;
    if (x1 == x2 && y1 == y2) break;
    const int e2 = 2 * err;
    if (e2 >= dy) {
      err += dy;
      x1 += sx;
    }
    if (e2 <= dx) {
      err += dx;
      y1 += sy;
    }
  }
}

void clear() {
  auto& p = page();
  std::fill(p.image.rgb.begin(), p.image.rgb.end(), kWhite);
}

void clip() {
  auto& p = page();
  const auto& s = state();
  p.xmin = std::max(pixel_x(s.xminpx), 0);
  p.xmax = std::min(pixel_x(s.xmaxpx), p.image.width - 1);
  p.ymin = std::max(pixel_y(s.ymaxpx), 0);
  p.ymax = std::min(pixel_y(s.yminpx), p.image.height - 1);
}

void open_page() {
  auto& s = state();
  auto& p = page();
  p = Page{};
  p.image.width = std::max(s.ihcopt[1], 1);
  p.image.height = std::max(s.ihcopt[2], 1);
  // A page beyond the buffer's limit is shrunk, both sides alike, to fit it.
  const double pixels = static_cast<double>(p.image.width) * static_cast<double>(p.image.height);
  if (pixels > kMaxPixels) {
    yyerror(kErrorPageTooLarge, "xximag");
    const double f = std::sqrt(kMaxPixels / pixels);
    p.image.width = std::max(static_cast<int>(p.image.width * f), 1);
    p.image.height = std::max(static_cast<int>(p.image.height * f), 1);
  }
  p.image.rgb.assign(static_cast<size_t>(p.image.width) * static_cast<size_t>(p.image.height), kWhite);
  p.xmax = p.image.width - 1;
  p.ymax = p.image.height - 1;
  s.xscale = static_cast<float>(p.image.width) / static_cast<float>(s.nxgraf);
  s.yscale = static_cast<float>(p.image.height) / static_cast<float>(s.nygraf);
}

void write_page() {
  auto& s = state();
  const int format = s.ihcopt[kOptFormat];
  if (format != kFormatPng && format != kFormatPngAlpha) {
    yyerror(kErrorFormat, "xximag");
    return;
  }
  yygrhcwrite(kUnit, yypngencode(page().image));
}

// The image of the present arguments, each page pixel taking the source pixel
// under its centre.
void image() {
  const auto& s = state();
  auto& p = page();
  if (!s.image || !s.image->valid()) return;
  const auto& img = *s.image;
  const int x1 = pixel_x(s.grx[0]), x2 = pixel_x(s.grx[1]), y1 = pixel_y(s.gry[1]), y2 = pixel_y(s.gry[0]);
  const int w = x2 - x1 + 1, h = y2 - y1 + 1;
  if (w <= 0 || h <= 0) return;
  const int colour = p.colour;
  for (int y = std::max(y1, p.ymin); y <= std::min(y2, p.ymax); ++y)
    for (int x = std::max(x1, p.xmin); x <= std::min(x2, p.xmax); ++x) {
      p.colour = img.at((x - x1) * img.width / w, (y - y1) * img.height / h);
      plot(x, y);
    }
  p.colour = colour;
}

}  // namespace

void xximag(int op) {
  auto& s = state();
  auto& p = page();
  switch (op) {
    case zg::OpInit:
      if (s.igpar2 == zg::kAskDriver) {
        s.igpar2 = zelv_graphics::kDriverImage;
        return;
      }
      s.ihcdrv = zelv_graphics::kDriverImage;
      s.ihcdrvflags = 0;
      yydefh();
      s.ihcopt[1] = kPageWidth;
      s.ihcopt[2] = kPageHeight;
      s.ihcopt[kOptDepth] = 8;
      s.ihcopt[kOptFormat] = kFormatPng;
      s.ihcopt[kOptQuality] = 80;
      s.ihcopt[kOptDpi] = 150;
      s.ihcolours = 256;
      s.ihcres = {0, 150, 150};
      s.cgcapab[2] = kCapability;
      s.lwcap[2] = 2;
      s.i24cap[2] = 1;
      s.igradcap[2] = 0;
      s.ipropcap[2] = 0;
      s.imgcap[2] = 1;
      s.igcset[2] = 0;
      s.sizemin[2] = 0;
      s.icsrot[2] = 0;
      s.ifmeth[1] = 0;
      s.cdeffile[2] = "zelvplot.png";
      return;
    case zg::OpStart:
      if (s.igpar1 <= 0) {
        s.xscale = static_cast<float>(p.image.width) / static_cast<float>(s.nxgraf);
        s.yscale = static_cast<float>(p.image.height) / static_cast<float>(s.nygraf);
        return;
      }
      yygrhcopen(kUnit);
      if (s.bhcerr) {
        s.ighcpy = 0;
        return;
      }
      s.ihcres = {0, s.ihcopt[kOptDpi], s.ihcopt[kOptDpi]};
      open_page();
      return;
    case zg::OpClose:
      yygrhcclose(kUnit);
      p.image.rgb.clear();
      p.image.rgb.shrink_to_fit();
      return;
    case zg::OpEndPage:
      if (!s.bdopause) return;
      write_page();
      s.bdopause = false;
      clear();
      return;
    case zg::OpClear:
      clear();
      return;
    case zg::OpColour:
    case zg::OpBackColour:
      p.colour = yycolourrgb(s.ichnalgl);
      return;
    case zg::OpLineWidth: {
      // Tenths of a point at the page's resolution.
      const float points = static_cast<float>(s.ihcopt[zelv_graphics::kOptLineWidth]) / 10.0f;
      p.width = std::max(1, static_cast<int>(points * static_cast<float>(std::max(s.ihcres[1], 1)) / 72.0f / 2.0f));
      return;
    }
    case zg::OpLineType:
      p.dotpos = 0;
      return;
    case zg::OpClip:
      clip();
      return;
    case zg::OpLine:
      s.bdopause = true;
      line(pixel_x(s.grx[0]), pixel_y(s.gry[0]), pixel_x(s.grx[1]), pixel_y(s.gry[1]), false);
      return;
    case zg::OpPoint:
      s.bdopause = true;
      dab(pixel_x(s.grx[0]), pixel_y(s.gry[0]));
      return;
    case zg::OpPolyline: {
      s.bdopause = true;
      const size_t n = std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size());
      for (size_t i = 1; i < n; ++i)
        line(pixel_x(s.xwork[i - 1]), pixel_y(s.ywork[i - 1]), pixel_x(s.xwork[i]), pixel_y(s.ywork[i]), i > 1);
      return;
    }
    case zg::OpEllipseHalf:
    case zg::OpParallelHalf:
    case zg::OpRectHalf:
    case zg::OpTriHalf:
    case zg::OpPieHalf:
    case zg::OpPolyHalf:
      if (s.igpar1 == -1) {
        p.filling = false;
        return;
      }
      s.bdopause = true;
      s.yhstep = 1.0f;
      if (op == zg::OpEllipseHalf || op == zg::OpPieHalf) {
        p.filling = s.ifstyl >= zelv_graphics::kFillHalfTone;
        yygrhcshape(op);
        p.filling = false;
        return;
      }
      // Scan lines come back through the line operation, solid.
      p.filling = true;
      s.igpar1 = -1;
      return;
    case zg::OpArc:
      s.bdopause = true;
      yygrhcshape(zg::OpArc);
      return;
    case zg::OpImage:
      s.bdopause = true;
      image();
      return;
    default:
      return;
  }
}
