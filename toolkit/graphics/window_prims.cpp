// The pixel routines: Xlib drawing on the present drawable with one graphics
// context, whose colour, line, clip and function state lasts across drawables.
#include "toolkit/graphics/window_prims.h"

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/graphics/bitmap.h"
#include "toolkit/graphics/bitmap_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/window_private.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace zg = zelv_graphics;
using namespace zelvy_bmp;

namespace {

constexpr unsigned long kFreeEntry = 99999999;  // a palette entry without a pixel yet
constexpr int kArcUnits = 64;                    // X arcs count in 64ths of a degree
constexpr int kFullCircle = 360 * kArcUnits;
constexpr int kMaxRequestPoints = 16000;
constexpr int kCoordLimit = std::numeric_limits<short>::max();

struct FontFactors {
  const char* family;
  double factor;  // cell height over the font's pixel size
};
constexpr std::array<FontFactors, 4> kFonts = {{
    {"Monospace", 1.7}, {"Sans", 1.55}, {"Serif", 1.6}, {"Symbol", 1.8}}};

struct DrawState {
  Drawable wDrawable = 0;
  int iDrawableType = zg::kDrawableNone;
  int iDrawableID = -1;
  GcHandle gGC;
  unsigned long gCurrentPixel = 0, gPreviousPixel = 0, gBackPixel = 0;
  int gCurrentRgb = 0, gBackRgb = 0xFFFFFF;
  int gLineWidth = 0, gLineType = 0, gLineCap = 0, gLineJoin = 0, gPlotmode = 0;
  std::array<unsigned long, zg::kPaletteEntries> gColor = [] {
    std::array<unsigned long, zg::kPaletteEntries> a{};
    a.fill(kFreeEntry);
    return a;
  }();
  std::array<int, zg::kPaletteEntries> paletteRgb{};
  std::vector<XPoint> polygon;
  XftFont* xft = nullptr;  // closed when another is chosen, and at shutdown
  XFontStruct* core = nullptr;
  XftDrawPtr xftDraw;
  Drawable xftDrawable = 0;
};
DrawState& ds() {
  static DrawState s;
  return s;
}

Display* dpy() { return xdisplay(); }

short clampc(long v) { return static_cast<short>(std::clamp<long>(v, -kCoordLimit, kCoordLimit)); }
unsigned dim(long v) { return static_cast<unsigned>(std::clamp<long>(v, 0, kCoordLimit)); }

// The GC and a drawable, or false when there is nothing to draw on.
bool ready() { return dpy() && ds().wDrawable && draw_gc(); }

int arc_angle(float degrees) { return static_cast<int>(std::lround(degrees * kArcUnits)); }

}  // namespace

namespace zelvy_bmp {

GC draw_gc() {
  auto& s = ds();
  if (!s.gGC && dpy()) {
    Display* d = dpy();
    s.gGC = GcHandle(d, XCreateGC(d, RootWindow(d, DefaultScreen(d)), 0, nullptr));
    s.gCurrentPixel = BlackPixel(d, DefaultScreen(d));
    s.gBackPixel = WhitePixel(d, DefaultScreen(d));
    XSetForeground(d, s.gGC.get(), s.gCurrentPixel);
    XSetBackground(d, s.gGC.get(), s.gBackPixel);
    XSetFillRule(d, s.gGC.get(), EvenOddRule);
  }
  return s.gGC.get();
}

int pixel_rgb(unsigned long pixel) {
  Display* d = dpy();
  if (!d) return 0;
  Visual* v = DefaultVisual(d, DefaultScreen(d));
  if (v->c_class == TrueColor || v->c_class == DirectColor) {
    auto part = [pixel](unsigned long mask) {
      int shift = 0;
      while (mask && !(mask & 1)) {
        mask >>= 1;
        ++shift;
      }
      return mask ? static_cast<int>(((pixel >> shift) & mask) * 255 / mask) : 0;
    };
    return part(v->red_mask) | part(v->green_mask) << 8 | part(v->blue_mask) << 16;
  }
  XColor c{};
  c.pixel = pixel;
  XQueryColor(d, DefaultColormap(d, DefaultScreen(d)), &c);
  return (c.red >> 8) | (c.green >> 8) << 8 | (c.blue >> 8) << 16;
}

unsigned long rgb_pixel(int rgb) { return yyAllocPixel(rgb & 0xFF, (rgb >> 8) & 0xFF, (rgb >> 16) & 0xFF); }

std::vector<int> read_rgb(Drawable drawable, int x, int y, int width, int height) {
  std::vector<int> out;
  if (!dpy() || !drawable || width < 1 || height < 1) return out;
  ImagePtr im(XGetImage(dpy(), drawable, x, y, static_cast<unsigned>(width), static_cast<unsigned>(height),
                        AllPlanes, ZPixmap));
  if (!im) return out;
  out.resize(static_cast<size_t>(width) * static_cast<size_t>(height));
  for (int row = 0; row < height; ++row)
    for (int col = 0; col < width; ++col)
      out[static_cast<size_t>(row) * static_cast<size_t>(width) + static_cast<size_t>(col)] =
          pixel_rgb(XGetPixel(im.get(), col, row));
  return out;
}

bool write_rgb(Drawable drawable, int x, int y, int width, int height, const std::vector<int>& rgb) {
  if (!dpy() || !drawable || width < 1 || height < 1 ||
      rgb.size() < static_cast<size_t>(width) * static_cast<size_t>(height))
    return false;
  Display* d = dpy();
  const int depth = DefaultDepth(d, DefaultScreen(d));
  const int pad = depth > 16 ? 32 : depth > 8 ? 16 : 8;
  ImagePtr im(XCreateImage(d, DefaultVisual(d, DefaultScreen(d)), static_cast<unsigned>(depth), ZPixmap, 0,
                           nullptr, static_cast<unsigned>(width), static_cast<unsigned>(height), pad, 0));
  if (!im) return false;
  // XDestroyImage frees the data with free().
  im->data = static_cast<char*>(std::calloc(static_cast<size_t>(im->bytes_per_line) * static_cast<size_t>(height), 1));
  if (!im->data) return false;
  for (int row = 0; row < height; ++row)
    for (int col = 0; col < width; ++col)
      XPutPixel(im.get(), col, row, rgb_pixel(rgb[static_cast<size_t>(row) * static_cast<size_t>(width) + static_cast<size_t>(col)]));
  GcHandle gc(d, XCreateGC(d, drawable, 0, nullptr));
  XPutImage(d, drawable, gc.get(), im.get(), 0, 0, x, y, static_cast<unsigned>(width), static_cast<unsigned>(height));
  return true;
}

Drawable drawable_of(int type, int id) {
  switch (type) {
    case zg::kDrawableWindow:
      return yywindowexists(id) ? zelvy_win::state().wClient[id] : 0;
    case zg::kDrawableBitmap:
      return bitmap_drawable(id);
    case zg::kDrawablePicture: {
      auto& dl = zelvy_dialog::state();
      if (dl.iDlgCur < 0) return 0;
      const int fi = yyDialogFindField(id, dl.iDlgCur);
      if (fi < 0) return 0;
      const FieldRecord& f = dl.wDialogInfo[static_cast<size_t>(dl.iDlgCur)].fields[static_cast<size_t>(fi)];
      // The shown part is the inner widget, where there is one.
      const Widget w = f.valueWidget ? f.valueWidget : f.widget;
      if (f.type != zelvy_dialog::kPicture || !w || !XtIsRealized(w)) return 0;
      return XtWindow(w);
    }
    default:
      return 0;
  }
}

void release_draw_state() {
  auto& s = ds();
  s.xftDraw.reset();
  s.xftDrawable = 0;
  if (dpy() && s.xft) XftFontClose(dpy(), s.xft);
  if (dpy() && s.core) XFreeFont(dpy(), s.core);
  s.xft = nullptr;
  s.core = nullptr;
  s.gGC.reset();
  s.wDrawable = 0;
  s.iDrawableType = zg::kDrawableNone;
  s.iDrawableID = -1;
  s.gColor.fill(kFreeEntry);
  s.polygon.clear();
  s.polygon.shrink_to_fit();
}

}  // namespace zelvy_bmp

bool yywindrawable(int type, int id) {
  auto& s = ds();
  const Drawable d = drawable_of(type, id);
  s.wDrawable = d;
  s.iDrawableType = d ? type : zg::kDrawableNone;
  s.iDrawableID = d ? id : -1;
  return d != 0;
}

int yywindrawabletype() {
  // A bitmap destroyed since it was selected is no drawable any more.
  auto& s = ds();
  if (s.iDrawableType == zg::kDrawableBitmap && !bitmap_drawable(s.iDrawableID)) yywindrawable(0, -1);
  return s.iDrawableType;
}
int yywindrawableid() { return yywindrawabletype() == zg::kDrawableNone ? -1 : ds().iDrawableID; }

void yywindrawablesize(int& width, int& height) {
  width = height = 0;
  if (!dpy() || yywindrawabletype() == zg::kDrawableNone) return;
  Window root = 0;
  int x = 0, y = 0;
  unsigned w = 0, h = 0, border = 0, depth = 0;
  if (XGetGeometry(dpy(), ds().wDrawable, &root, &x, &y, &w, &h, &border, &depth)) {
    width = static_cast<int>(w);
    height = static_cast<int>(h);
  }
}

void yywinline(int x1, int y1, int x2, int y2) {
  if (!ready()) return;
  XDrawLine(dpy(), ds().wDrawable, draw_gc(), clampc(x1), clampc(y1), clampc(x2), clampc(y2));
}

void yywinpoint(int x, int y) {
  if (!ready()) return;
  XDrawPoint(dpy(), ds().wDrawable, draw_gc(), clampc(x), clampc(y));
}

void yypolalloc(int count) { ds().polygon.assign(static_cast<size_t>(std::max(count, 0)), XPoint{0, 0}); }

void yypolpoint(int index, int x, int y) {
  auto& p = ds().polygon;
  if (index < 0 || static_cast<size_t>(index) >= p.size()) return;
  p[static_cast<size_t>(index)] = {clampc(x), clampc(y)};
}

void yypolfree() {
  ds().polygon.clear();
  ds().polygon.shrink_to_fit();
}

void yywinpolyline(int count) {
  if (!ready()) return;
  auto& p = ds().polygon;
  const size_t n = std::min(p.size(), static_cast<size_t>(std::max(count, 0)));
  // Long lines go in pieces that share their joining vertex.
  for (size_t i = 0; i + 1 < n; i += kMaxRequestPoints - 1)
    XDrawLines(dpy(), ds().wDrawable, draw_gc(), p.data() + i,
               static_cast<int>(std::min<size_t>(kMaxRequestPoints, n - i)), CoordModeOrigin);
}

void yywinpolygon(int count) {
  if (!ready()) return;
  auto& p = ds().polygon;
  const size_t n = std::min(p.size(), static_cast<size_t>(std::max(count, 0)));
  if (n < 3) return;
  XFillPolygon(dpy(), ds().wDrawable, draw_gc(), p.data(), static_cast<int>(n), Complex, CoordModeOrigin);
}

void yywinrectangle(int x1, int y1, int x2, int y2, bool fill) {
  if (!ready()) return;
  if (x2 < x1) std::swap(x1, x2);
  if (y2 < y1) std::swap(y1, y2);
  if (fill)
    XFillRectangle(dpy(), ds().wDrawable, draw_gc(), clampc(x1), clampc(y1), dim(x2 - x1 + 1), dim(y2 - y1 + 1));
  else
    XDrawRectangle(dpy(), ds().wDrawable, draw_gc(), clampc(x1), clampc(y1), dim(x2 - x1), dim(y2 - y1));
}

void yywinellipse(int x, int y, int radiusx, int radiusy, bool fill) {
  if (!ready()) return;
  radiusx = std::abs(radiusx);
  radiusy = std::abs(radiusy);
  auto f = fill ? XFillArc : XDrawArc;
  f(dpy(), ds().wDrawable, draw_gc(), clampc(x - radiusx), clampc(y - radiusy), dim(2L * radiusx),
    dim(2L * radiusy), 0, kFullCircle);
}

void yywinarc(int x, int y, int radiusx, int radiusy, float startdeg, float enddeg) {
  if (!ready()) return;
  XSetArcMode(dpy(), draw_gc(), ArcPieSlice);
  XFillArc(dpy(), ds().wDrawable, draw_gc(), clampc(x - radiusx), clampc(y - radiusy), dim(2L * radiusx),
           dim(2L * radiusy), arc_angle(startdeg), arc_angle(enddeg - startdeg));
}

void yywinoutlinearc(int x, int y, int radiusx, int radiusy, float startdeg, float enddeg) {
  if (!ready()) return;
  XDrawArc(dpy(), ds().wDrawable, draw_gc(), clampc(x - radiusx), clampc(y - radiusy), dim(2L * radiusx),
           dim(2L * radiusy), arc_angle(startdeg), arc_angle(enddeg - startdeg));
}

void yywinclear() {
  if (!ready()) return;
  int w = 0, h = 0;
  yywindrawablesize(w, h);
  Display* d = dpy();
  GC gc = draw_gc();
  // The background is laid down whole, whatever the plot mode and clip.
  XGCValues old;
  XGetGCValues(d, gc, GCFunction, &old);
  XSetFunction(d, gc, GXcopy);
  XSetForeground(d, gc, ds().gBackPixel);
  XFillRectangle(d, ds().wDrawable, gc, 0, 0, dim(w), dim(h));
  XSetForeground(d, gc, ds().gCurrentPixel);
  XSetFunction(d, gc, old.function);
}

void yywincolour(int index, int rgb, int& error) {
  error = 0;
  auto& s = ds();
  if (!dpy() || !draw_gc() || index < zg::kColourDirect || index >= zg::kPaletteEntries) {
    error = zg::kErrorColour;
    return;
  }
  unsigned long pixel = 0;
  int colour = rgb;
  if (index == zg::kColourDirect) {
    pixel = rgb_pixel(rgb);
  } else {
    auto& entry = s.gColor[static_cast<size_t>(index)];
    colour = s.paletteRgb[static_cast<size_t>(index)];
    if (entry == kFreeEntry) entry = rgb_pixel(colour);
    pixel = entry;
  }
  s.gPreviousPixel = s.gCurrentPixel;
  s.gCurrentPixel = pixel;
  s.gCurrentRgb = colour & 0xFFFFFF;
  XSetForeground(dpy(), draw_gc(), pixel);
}

void yywinbackcolour(int rgb) {
  if (!dpy() || !draw_gc()) return;
  ds().gBackRgb = rgb & 0xFFFFFF;
  ds().gBackPixel = rgb_pixel(rgb);
  XSetBackground(dpy(), draw_gc(), ds().gBackPixel);
}

void yywinpalette(int first, int count, const int* rgb) {
  auto& s = ds();
  for (int i = 0; i < count && rgb; ++i) {
    const int at = first + i;
    if (at < 0 || at >= zg::kPaletteEntries) continue;
    s.paletteRgb[static_cast<size_t>(at)] = rgb[i] & 0xFFFFFF;
    s.gColor[static_cast<size_t>(at)] = kFreeEntry;
  }
}

void yywinlinetype(int type) { ds().gLineType = type; }
void yywinlinecap(int cap) { ds().gLineCap = cap; }
void yywinlinejoin(int join) { ds().gLineJoin = join; }
void yywinlinewidth(int width) { ds().gLineWidth = std::max(width, 0); }

void yywinLineStyles(bool dashed) {
  if (!dpy() || !draw_gc()) return;
  struct Dash {
    int offset;
    std::array<char, 6> pattern;
    int count;
  };
  static constexpr std::array<Dash, 8> kDashes = {{{0, {0}, 0},
                                                   {4, {1, 5}, 2},
                                                   {3, {6, 6}, 2},
                                                   {0, {1, 3, 4, 4}, 4},
                                                   {0, {1, 2, 1, 2, 4, 2}, 6},
                                                   {3, {6, 2, 3, 2}, 4},
                                                   {1, {3, 3}, 2},
                                                   {3, {6, 2, 3, 2, 3, 2}, 6}}};
  static constexpr std::array<int, 3> kCap = {CapButt, CapRound, CapProjecting};
  static constexpr std::array<int, 3> kJoin = {JoinMiter, JoinRound, JoinBevel};
  const auto& s = ds();
  const int cap = kCap[static_cast<size_t>(std::clamp(s.gLineCap, 0, 2))];
  const int join = kJoin[static_cast<size_t>(std::clamp(s.gLineJoin, 0, 2))];
  const auto width = static_cast<unsigned>(s.gLineWidth);
  const bool has_dashes = s.gLineType >= 1 && s.gLineType < static_cast<int>(kDashes.size());
  if (!dashed || !has_dashes) {
    XSetLineAttributes(dpy(), draw_gc(), width, LineSolid, cap, join);
    return;
  }
  const Dash& dash = kDashes[static_cast<size_t>(s.gLineType)];
  XSetLineAttributes(dpy(), draw_gc(), width, LineOnOffDash, cap, join);
  XSetDashes(dpy(), draw_gc(), dash.offset, dash.pattern.data(), dash.count);
}

void yywinclip(int x1, int y1, int x2, int y2) {
  if (!dpy() || !draw_gc()) return;
  if (x2 < x1 || y2 < y1) {
    XSetClipMask(dpy(), draw_gc(), None);
    return;
  }
  XRectangle r{clampc(x1), clampc(y1), static_cast<unsigned short>(dim(x2 - x1 + 1)),
               static_cast<unsigned short>(dim(y2 - y1 + 1))};
  XSetClipRectangles(dpy(), draw_gc(), 0, 0, &r, 1, Unsorted);
}

int yyplotfunction(int mode, int depth, unsigned long black) {
  switch (mode) {
    case zg::kPlotCopy: return GXcopy;
    case zg::kPlotOr: return GXor;
    case zg::kPlotAnd: return GXand;
    // With black 0 on one bit, exclusive or of black would change nothing:
    // its complement makes black draw.
    case zg::kPlotXor: return depth == 1 && black == 0 ? GXequiv : GXxor;
    default: return -1;
  }
}

bool yywinplotmode(int mode) {
  if (!dpy() || !draw_gc()) return false;
  Display* d = dpy();
  const int function = yyplotfunction(mode, DefaultDepth(d, DefaultScreen(d)), BlackPixel(d, DefaultScreen(d)));
  if (function < 0) return false;
  ds().gPlotmode = mode;
  XSetFunction(d, draw_gc(), function);
  return true;
}

void yywinselectfont(int family, int style, int size, int& width, int& height) {
  width = height = 0;
  auto& s = ds();
  if (!dpy()) return;
  const auto& f = kFonts[static_cast<size_t>(std::clamp(family, 1, static_cast<int>(kFonts.size())) - 1)];
  const int pixels = std::max(static_cast<int>(std::lround(std::max(size, 1) / f.factor)), 1);
  std::string pattern = std::string(f.family) + ":pixelsize=" + std::to_string(pixels);
  if (style & 1) pattern += ":bold";
  if (style & 2) pattern += ":italic";
  if (XftFont* font = XftFontOpenName(dpy(), DefaultScreen(dpy()), pattern.c_str())) {
    if (s.xft) XftFontClose(dpy(), s.xft);
    s.xft = font;
    width = font->max_advance_width;
    height = font->ascent + font->descent;
    return;
  }
  if (!s.core) s.core = XLoadQueryFont(dpy(), "fixed");
  if (s.core) {
    width = s.core->max_bounds.width;
    height = s.core->ascent + s.core->descent;
  }
}

void yywindrawstring(int x, int y, std::string_view text) {
  if (!ready() || text.empty()) return;
  auto& s = ds();
  Display* d = dpy();
  if (s.xft) {
    if (!s.xftDraw || s.xftDrawable != s.wDrawable) {
      s.xftDraw.reset(XftDrawCreate(d, s.wDrawable, DefaultVisual(d, DefaultScreen(d)),
                                    DefaultColormap(d, DefaultScreen(d))));
      s.xftDrawable = s.wDrawable;
    }
    if (!s.xftDraw) return;
    XRenderColor rc{static_cast<unsigned short>((s.gCurrentRgb & 0xFF) * 257),
                    static_cast<unsigned short>(((s.gCurrentRgb >> 8) & 0xFF) * 257),
                    static_cast<unsigned short>(((s.gCurrentRgb >> 16) & 0xFF) * 257), 0xFFFF};
    XftColor colour{};
    if (!XftColorAllocValue(d, DefaultVisual(d, DefaultScreen(d)), DefaultColormap(d, DefaultScreen(d)), &rc,
                            &colour))
      return;
    XftDrawStringUtf8(s.xftDraw.get(), &colour, s.xft, x, y, reinterpret_cast<const FcChar8*>(text.data()),
                      static_cast<int>(text.size()));
    XftColorFree(d, DefaultVisual(d, DefaultScreen(d)), DefaultColormap(d, DefaultScreen(d)), &colour);
    return;
  }
  if (!s.core) s.core = XLoadQueryFont(d, "fixed");
  if (s.core) XSetFont(d, draw_gc(), s.core->fid);
  XDrawString(d, s.wDrawable, draw_gc(), x, y, text.data(), static_cast<int>(text.size()));
}

int yywintextlength(std::string_view text) {
  auto& s = ds();
  if (!dpy() || text.empty()) return 0;
  if (s.xft) {
    XGlyphInfo info{};
    XftTextExtentsUtf8(dpy(), s.xft, reinterpret_cast<const FcChar8*>(text.data()), static_cast<int>(text.size()),
                       &info);
    return info.xOff;
  }
  if (!s.core) s.core = XLoadQueryFont(dpy(), "fixed");
  return s.core ? XTextWidth(s.core, text.data(), static_cast<int>(text.size())) : 0;
}

void yywinblit(int type, int id, int sx, int sy, int width, int height, int dx, int dy) {
  if (!ready() || width < 1 || height < 1) return;
  const Drawable from = drawable_of(type, id);
  if (!from) return;
  XCopyArea(dpy(), from, ds().wDrawable, draw_gc(), sx, sy, dim(width), dim(height), dx, dy);
}

int yywingetpixelrgb(int x, int y) {
  if (!ready()) return -1;
  int w = 0, h = 0;
  yywindrawablesize(w, h);
  if (x < 0 || y < 0 || x >= w || y >= h) return -1;
  const auto px = read_rgb(ds().wDrawable, x, y, 1, 1);
  return px.empty() ? -1 : px[0];
}

void yywinpointrgb(int x, int y, int rgb) {
  if (!ready()) return;
  Display* d = dpy();
  XSetForeground(d, draw_gc(), rgb_pixel(rgb));
  XDrawPoint(d, ds().wDrawable, draw_gc(), clampc(x), clampc(y));
  XSetForeground(d, draw_gc(), ds().gCurrentPixel);
}
