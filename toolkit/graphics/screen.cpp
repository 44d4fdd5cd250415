// The screen path: the drawing operations on the client area of the selected
// window, straight through Xlib.
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/bitmap_private.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/window_private.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {

constexpr int kMaxPoints = 16000;  // points per request, well inside the protocol's limit
constexpr int kFullCircle = 360 * 64;
constexpr double kDegree = 57.29577951308232;

struct Screen {
  Display* display = nullptr;
  Drawable drawable = 0;
  GC gc = nullptr;
  unsigned long background = 0;
  std::map<int, unsigned long> pixels;
};
Screen& scr() {
  static Screen s;
  return s;
}

int shift_of(unsigned long mask) {
  int n = 0;
  while (mask && !(mask & 1)) {
    mask >>= 1;
    ++n;
  }
  return n;
}

unsigned long pixel_of(int rgb) {
  auto& sc = scr();
  if (auto it = sc.pixels.find(rgb); it != sc.pixels.end()) return it->second;
  const int r = rgb & 0xFF, g = (rgb >> 8) & 0xFF, b = (rgb >> 16) & 0xFF;
  Visual* v = DefaultVisual(sc.display, DefaultScreen(sc.display));
  unsigned long pixel = 0;
  if (v->c_class == TrueColor) {
    auto part = [](int value, unsigned long mask) {
      const int sh = shift_of(mask);
      const unsigned long top = mask >> sh;
      return (static_cast<unsigned long>(value) * top / 255) << sh;
    };
    pixel = part(r, v->red_mask) | part(g, v->green_mask) | part(b, v->blue_mask);
  } else {
    XColor c{};
    c.red = static_cast<unsigned short>(r * 257);
    c.green = static_cast<unsigned short>(g * 257);
    c.blue = static_cast<unsigned short>(b * 257);
    c.flags = DoRed | DoGreen | DoBlue;
    if (XAllocColor(sc.display, DefaultColormap(sc.display, DefaultScreen(sc.display)), &c)) pixel = c.pixel;
  }
  sc.pixels.emplace(rgb, pixel);
  return pixel;
}

// Pixel coordinates, kept inside what the protocol's 16-bit fields can carry.
constexpr float kCoordLimit = 30000.0f;
int px(float x) {
  const auto& s = state();
  const float v = x * static_cast<float>(s.nxpixl) / static_cast<float>(s.nxgraf);
  return static_cast<int>(std::lround(std::clamp(v, -kCoordLimit, kCoordLimit)));
}
int py(float y) {
  const auto& s = state();
  const float v = (s.yngraf - y) * static_cast<float>(s.nypixl) / static_cast<float>(s.nygraf);
  return static_cast<int>(std::lround(std::clamp(v, -kCoordLimit, kCoordLimit)));
}
int plen(float v) { return std::max(static_cast<int>(std::lround(v)), 0); }

// The target's drawable, or false when there is nothing to draw on.
bool target() {
  auto& sc = scr();
  sc.display = xdisplay();
  if (!sc.display) return false;
  const int h = state().itargid;
  constexpr int kBitmapTarget = 2;
  const Drawable d = state().itarg == kBitmapTarget ? zelvy_bmp::bitmap_drawable(h)
                     : yywindowexists(h)            ? zelvy_win::state().wClient[h]
                                                    : 0;
  if (!d) return false;
  if (d != sc.drawable || !sc.gc) {
    if (sc.gc) XFreeGC(sc.display, sc.gc);
    sc.drawable = d;
    sc.gc = XCreateGC(sc.display, d, 0, nullptr);
    XSetFillRule(sc.display, sc.gc, EvenOddRule);
    XSetArcMode(sc.display, sc.gc, ArcPieSlice);
  }
  return true;
}

void set_colour(int rgb) { XSetForeground(scr().display, scr().gc, pixel_of(rgb)); }

void line_attributes() {
  const auto& s = state();
  static constexpr std::array<std::array<char, 6>, 8> kDashes = {{
      {0}, {1, 5}, {6, 6}, {1, 3, 4, 4}, {1, 2, 1, 2, 4, 2}, {5, 2, 3, 2}, {3, 3}, {5, 2, 3, 2, 3, 2}}};
  static constexpr std::array<int, 8> kCount = {0, 2, 2, 4, 6, 4, 2, 6};
  static constexpr std::array<int, 3> kJoin = {JoinMiter, JoinRound, JoinBevel};
  static constexpr std::array<int, 3> kCap = {CapButt, CapRound, CapProjecting};
  const auto t = static_cast<size_t>(std::clamp(s.lintyp, 0, 7));
  const int width = s.linwid > 1 ? s.linwid : 0;
  XSetLineAttributes(scr().display, scr().gc, static_cast<unsigned>(width), t == 0 ? LineSolid : LineOnOffDash,
                     kCap[static_cast<size_t>(std::clamp(s.lincap, 0, 2))],
                     kJoin[static_cast<size_t>(std::clamp(s.linjoin, 0, 2))]);
  if (t != 0) {
    std::array<char, 6> scaled{};
    for (size_t i = 0; i < 6; ++i)
      scaled[i] = static_cast<char>(std::clamp(kDashes[t][i] * std::max(s.linwid, 1) * 2, 1, 127));
    XSetDashes(scr().display, scr().gc, 0, scaled.data(), kCount[t]);
  }
}

void points_from_work(std::vector<XPoint>& pts) {
  const auto& s = state();
  const size_t n = std::min(static_cast<size_t>(std::max(s.igpar2, 0)), s.xwork.size());
  pts.resize(n);
  for (size_t i = 0; i < n; ++i)
    pts[i] = {static_cast<short>(px(s.xwork[i])), static_cast<short>(py(s.ywork[i]))};
}

void arc(bool fill, bool pieslice) {
  const auto& s = state();
  const int rx = plen(s.grx[1]), ry = plen(s.gry[1]);
  const int cx = px(s.grx[0]), cy = py(s.gry[0]);
  int a0 = 0, extent = kFullCircle;
  if (pieslice) {
    a0 = static_cast<int>(s.grx[2] * kDegree * 64);
    extent = static_cast<int>((s.gry[2] - s.grx[2]) * kDegree * 64);
  }
  if (fill)
    XFillArc(scr().display, scr().drawable, scr().gc, cx - rx, cy - ry, static_cast<unsigned>(2 * rx),
             static_cast<unsigned>(2 * ry), a0, extent);
  else
    XDrawArc(scr().display, scr().drawable, scr().gc, cx - rx, cy - ry, static_cast<unsigned>(2 * rx),
             static_cast<unsigned>(2 * ry), a0, extent);
}

// The image of the present arguments, each source pixel a block of the box,
// runs of one colour along a row as one rectangle; the GC's clip box cuts it.
void image() {
  const auto& s = state();
  if (!s.image || !s.image->valid()) return;
  const auto& img = *s.image;
  const int left = px(s.grx[0]), right = px(s.grx[1]), top = py(s.gry[1]), bottom = py(s.gry[0]);
  const int w = right - left, h = bottom - top;
  if (w <= 0 || h <= 0) return;
  for (int y = 0; y < img.height; ++y) {
    const int y1 = top + y * h / img.height, y2 = top + (y + 1) * h / img.height;
    if (y2 <= y1) continue;
    for (int x = 0; x < img.width;) {
      const int c = img.at(x, y);
      int end = x + 1;
      while (end < img.width && img.at(end, y) == c) ++end;
      const int x1 = left + x * w / img.width, x2 = left + end * w / img.width;
      if (x2 > x1) {
        set_colour(c);
        XFillRectangle(scr().display, scr().drawable, scr().gc, x1, y1, static_cast<unsigned>(x2 - x1),
                       static_cast<unsigned>(y2 - y1));
      }
      x = end;
    }
  }
  set_colour(yycolourrgb(s.ichnalgl));
}

}  // namespace

void yygapispan(int x1, int x2, int y, int rgb) {
  if (!target()) return;
  set_colour(rgb);
  XDrawLine(scr().display, scr().drawable, scr().gc, px(static_cast<float>(x1)), py(static_cast<float>(y)),
            px(static_cast<float>(x2)), py(static_cast<float>(y)));
  set_colour(yycolourrgb(state().ichnalgl));
}

void yygapi(int op) {
  auto& s = state();
  if (!target()) return;
  Display* d = scr().display;
  const Drawable w = scr().drawable;
  GC gc = scr().gc;
  switch (op) {
    case zg::OpInit:
    case zg::OpStart:
      return;
    case zg::OpColour:
      set_colour(yycolourrgb(s.ichnalgl));
      return;
    case zg::OpBackColour:
      scr().background = pixel_of(s.ibackcol);
      return;
    case zg::OpLine:
      XDrawLine(d, w, gc, px(s.grx[0]), py(s.gry[0]), px(s.grx[1]), py(s.gry[1]));
      return;
    case zg::OpPoint:
      XDrawPoint(d, w, gc, px(s.grx[0]), py(s.gry[0]));
      return;
    case zg::OpPolyline: {
      std::vector<XPoint> pts;
      points_from_work(pts);
      for (size_t i = 0; i + 1 < pts.size(); i += kMaxPoints - 1)
        XDrawLines(d, w, gc, pts.data() + i, static_cast<int>(std::min<size_t>(kMaxPoints, pts.size() - i)),
                   CoordModeOrigin);
      return;
    }
    case zg::OpCircle:
      arc(false, false);
      return;
    case zg::OpEllipseHalf:
    case zg::OpEllipseSolid:
      arc(true, false);
      return;
    case zg::OpPieHalf:
    case zg::OpPieSolid:
      arc(true, true);
      return;
    case zg::OpArc:
      arc(false, true);
      if (s.ifstyl != 0 || s.ifdens < 3) {
        const int cx = px(s.grx[0]), cy = py(s.gry[0]);
        for (float a : {s.grx[2], s.gry[2]})
          XDrawLine(d, w, gc, cx, cy, px(s.grx[0] + s.grx[1] * std::cos(a)), py(s.gry[0] + s.gry[1] * std::sin(a)));
      }
      return;
    case zg::OpRectHalf:
    case zg::OpRectSolid:
    {
      const int x1 = px(s.grx[0]), x2 = px(s.grx[1]), y1 = py(s.gry[1]), y2 = py(s.gry[0]);
      XFillRectangle(d, w, gc, x1, y1, static_cast<unsigned>(x2 - x1 + 1), static_cast<unsigned>(y2 - y1 + 1));
      return;
    }
    case zg::OpPolyHalf:
    case zg::OpPolySolid:
    case zg::OpTriHalf:
    case zg::OpTriSolid:
    case zg::OpParallelHalf:
    case zg::OpParallelSolid:
    {
      std::vector<XPoint> pts;
      points_from_work(pts);
      if (pts.size() >= 3) XFillPolygon(d, w, gc, pts.data(), static_cast<int>(pts.size()), Complex, CoordModeOrigin);
      return;
    }
    case zg::OpClear: {
      XGCValues old;
      XGetGCValues(d, gc, GCForeground, &old);
      XSetForeground(d, gc, scr().background);
      XFillRectangle(d, w, gc, 0, 0, static_cast<unsigned>(s.nxpixl), static_cast<unsigned>(s.nypixl));
      XSetForeground(d, gc, old.foreground);
      return;
    }
    case zg::OpText: {
      const size_t n = std::min(static_cast<size_t>(std::max(s.igrx[0], 0)), s.cgrstr.size());
      // Core fonts don't turn: rotated text starts at its point, unturned.
      const float x = s.grx[0] + s.sinhgt * 0.27f, y = s.gry[0] - s.coshgt * 0.27f;
      XDrawString(d, w, gc, px(x), py(y), s.cgrstr.data(), static_cast<int>(n));
      return;
    }
    case zg::OpClip: {
      XRectangle r{static_cast<short>(s.igxmnpx), static_cast<short>(s.nypixl - 1 - s.igymxpx),
                   static_cast<unsigned short>(s.igxpxlen), static_cast<unsigned short>(s.igypxlen)};
      XSetClipRectangles(d, gc, 0, 0, &r, 1, Unsorted);
      return;
    }
    case zg::OpImage:
      image();
      return;
    case zg::OpPlotMode:
      XSetFunction(d, gc, s.modepl == 0 ? GXcopy : GXxor);
      return;
    case zg::OpLineType:
    case zg::OpLineWidth:
    case zg::OpJoin:
    case zg::OpCap:
      line_attributes();
      return;
    default:
      return;
  }
}

// Pushes what the screen path drew to the server.
void yygapiflush() {
  if (scr().display) XFlush(scr().display);
}
