// The memory bitmap table: server pixmaps by handle, copied to and from the
// present drawable, and their pixel operations done on client-side images.
#include "toolkit/graphics/bitmap.h"

#include "toolkit/base/error.h"
#include "toolkit/graphics/bitmap_private.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/graphics/window_prims.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/window_private.h"

#include <algorithm>
#include <cstdint>

namespace zg = zelv_graphics;
using namespace zelvy_bmp;

namespace {

constexpr int kWhite = 0xFFFFFF;
constexpr int kBitmapTarget = 2;  // the graphics state's target kind of a bitmap

struct BitmapEntry {
  PixmapHandle hBitmap;
  int width = 0, height = 0;
  int iBitmapDepth = 0;
  Colormap BitmapColourmap = 0;
};

struct Table {
  std::vector<BitmapEntry> entries;  // index 0 is handle 1
  int iBmpRop = GXcopy;
  int iBmpStretch = zg::kStretchAverage;
  GcHandle bmpGC;
};
Table& table() {
  static Table t;
  return t;
}

Display* dpy() { return xdisplay(); }

// Records an error under the routine's name and hands it back.
void fail(int code, std::string_view routine, int& error) {
  error = code;
  yyerror(code, routine);
}

BitmapEntry* entry(int handle) {
  auto& e = table().entries;
  if (handle < 1 || static_cast<size_t>(handle) > e.size()) return nullptr;
  return &e[static_cast<size_t>(handle) - 1];
}

// The entry of a handle that holds a bitmap, else error 1021.
BitmapEntry* used(int handle, std::string_view routine, int& error) {
  error = 0;
  BitmapEntry* e = entry(handle);
  if (!e || !e->hBitmap || !dpy()) {
    fail(zg::kErrorBitmapHandle, routine, error);
    return nullptr;
  }
  return e;
}

GC bitmap_gc() {
  auto& t = table();
  if (!t.bmpGC && dpy()) {
    Display* d = dpy();
    t.bmpGC = GcHandle(d, XCreateGC(d, RootWindow(d, DefaultScreen(d)), 0, nullptr));
    XSetFunction(d, t.bmpGC.get(), t.iBmpRop);
    XSetGraphicsExposures(d, t.bmpGC.get(), False);
  }
  return t.bmpGC.get();
}

// A pixmap of the screen's depth; its failure shows only on a round trip.
PixmapHandle make_pixmap(int width, int height) {
  Display* d = dpy();
  if (!d || width < 1 || height < 1 || width > zg::kMaxBitmapSide || height > zg::kMaxBitmapSide) return {};
  auto& xs = zelvy_x::state();
  const int before = xs.iXError;
  xs.iXError = 0;
  PixmapHandle pm(d, XCreatePixmap(d, RootWindow(d, DefaultScreen(d)), static_cast<unsigned>(width),
                                   static_cast<unsigned>(height),
                                   static_cast<unsigned>(DefaultDepth(d, DefaultScreen(d)))));
  XSync(d, False);
  Window root = 0;
  int x = 0, y = 0;
  unsigned w = 0, h = 0, border = 0, depth = 0;
  const bool made = xs.iXError == 0 && XGetGeometry(d, pm.get(), &root, &x, &y, &w, &h, &border, &depth);
  xs.iXError = made ? before : xs.iXError;
  if (!made) {
    // The id names nothing on the server.
    pm.release();
    XSync(d, False);
    xs.iXError = before;
    return {};
  }
  return pm;
}

void fill(Drawable d, int width, int height, int rgb) {
  GC gc = bitmap_gc();
  XGCValues old;
  XGetGCValues(dpy(), gc, GCFunction, &old);
  XSetFunction(dpy(), gc, GXcopy);
  XSetForeground(dpy(), gc, rgb_pixel(rgb));
  XFillRectangle(dpy(), d, gc, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height));
  XSetFunction(dpy(), gc, old.function);
}

// The present drawable, or error 1021 when there is none; 1037 when it is
// the bitmap itself.
Drawable target(int handle, std::string_view routine, int& error) {
  const int type = yywindrawabletype();
  if (type == zg::kDrawableNone) {
    fail(zg::kErrorBitmapHandle, routine, error);
    return 0;
  }
  if (type == zg::kDrawableBitmap && yywindrawableid() == handle) {
    fail(zg::kErrorBitmapInUse, routine, error);
    return 0;
  }
  return drawable_of(type, yywindrawableid());
}

void refresh_if_viewed(int handle) {
  if (yyBitmapViewHandle() == handle) yyBitmapViewRefresh();
}

// Replaces a bitmap by new pixels of a new size.
void replace(BitmapEntry& e, int width, int height, const std::vector<int>& rgb, std::string_view routine,
             int& error) {
  PixmapHandle pm = make_pixmap(width, height);
  if (!pm || !write_rgb(pm.get(), 0, 0, width, height, rgb)) {
    fail(zg::kErrorBitmapCreate, routine, error);
    return;
  }
  e.hBitmap = std::move(pm);
  e.width = width;
  e.height = height;
}

int mean_of(const std::vector<int>& rgb, int width, int x0, int x1, int y0, int y1) {
  std::uint64_t r = 0, g = 0, b = 0, n = 0;
  for (int y = y0; y < y1; ++y)
    for (int x = x0; x < x1; ++x) {
      const int c = rgb[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
      r += static_cast<std::uint64_t>(c & 0xFF);
      g += static_cast<std::uint64_t>((c >> 8) & 0xFF);
      b += static_cast<std::uint64_t>((c >> 16) & 0xFF);
      ++n;
    }
  if (n == 0) return 0;
  return static_cast<int>((r + n / 2) / n) | static_cast<int>((g + n / 2) / n) << 8 |
         static_cast<int>((b + n / 2) / n) << 16;
}

}  // namespace

Drawable zelvy_bmp::bitmap_drawable(int handle) {
  const BitmapEntry* e = entry(handle);
  return e ? e->hBitmap.get() : 0;
}

std::vector<int> yybitmapstretch(std::span<const int> rgb, int width, int height, int towidth, int toheight,
                                 int rule) {
  std::vector<int> out;
  if (width < 1 || height < 1 || towidth < 1 || toheight < 1 ||
      rgb.size() < static_cast<size_t>(width) * static_cast<size_t>(height))
    return out;
  out.resize(static_cast<size_t>(towidth) * static_cast<size_t>(toheight));
  const std::vector<int> src(rgb.begin(), rgb.end());
  for (int y = 0; y < toheight; ++y) {
    const int sy0 = static_cast<int>(static_cast<long long>(y) * height / toheight);
    const int sy1 = std::max(static_cast<int>(static_cast<long long>(y + 1) * height / toheight), sy0 + 1);
    for (int x = 0; x < towidth; ++x) {
      const int sx0 = static_cast<int>(static_cast<long long>(x) * width / towidth);
      const int sx1 = std::max(static_cast<int>(static_cast<long long>(x + 1) * width / towidth), sx0 + 1);
      out[static_cast<size_t>(y) * static_cast<size_t>(towidth) + static_cast<size_t>(x)] =
          rule == zg::kStretchAverage ? mean_of(src, width, sx0, sx1, sy0, sy1)
                                      : src[static_cast<size_t>(sy0) * static_cast<size_t>(width) + static_cast<size_t>(sx0)];
    }
  }
  return out;
}

std::vector<int> yybitmapturn(std::span<const int> rgb, int width, int height, int degrees) {
  std::vector<int> out(rgb.begin(), rgb.end());
  if (rgb.size() != static_cast<size_t>(width) * static_cast<size_t>(height)) return {};
  const auto at = [&](int x, int y) { return rgb[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)]; };
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      switch (degrees) {
        case 90:  // the top row becomes the left column, read upward
          out[static_cast<size_t>(width - 1 - x) * static_cast<size_t>(height) + static_cast<size_t>(y)] = at(x, y);
          break;
        case 180:
          out[static_cast<size_t>(height - 1 - y) * static_cast<size_t>(width) + static_cast<size_t>(width - 1 - x)] = at(x, y);
          break;
        case 270:
          out[static_cast<size_t>(x) * static_cast<size_t>(height) + static_cast<size_t>(height - 1 - y)] = at(x, y);
          break;
        default:
          break;
      }
    }
  return out;
}

std::vector<int> yybitmapflip(std::span<const int> rgb, int width, int height, int axis) {
  std::vector<int> out(rgb.begin(), rgb.end());
  if (rgb.size() != static_cast<size_t>(width) * static_cast<size_t>(height)) return {};
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const int sx = axis == zg::kMirrorLeftRight ? width - 1 - x : x;
      const int sy = axis == zg::kMirrorTopBottom ? height - 1 - y : y;
      out[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)] =
          rgb[static_cast<size_t>(sy) * static_cast<size_t>(width) + static_cast<size_t>(sx)];
    }
  return out;
}

void yybitmapalloc(int count) {
  yyBitmapViewClose();
  auto& t = table();
  t.entries.clear();
  if (count < 0 || count > zg::kMaxBitmaps) {
    yyerror(zg::kErrorBitmapCreate, "yybitmapalloc");
    count = std::clamp(count, 0, zg::kMaxBitmaps);
  }
  t.entries.resize(static_cast<size_t>(count));
  zelvy_x::state().graphicsShutdown = yyBitmapShutdown;
}

void yybitmapcreate(int handle, int width, int height, int& error) {
  error = 0;
  BitmapEntry* e = entry(handle);
  if (!e) return fail(zg::kErrorBitmapHandle, "yybitmapcreate", error);
  if (e->hBitmap) return fail(zg::kErrorBitmapInUse, "yybitmapcreate", error);
  PixmapHandle pm = make_pixmap(width, height);
  if (!pm) return fail(zg::kErrorBitmapCreate, "yybitmapcreate", error);
  Display* d = dpy();
  e->hBitmap = std::move(pm);
  e->width = width;
  e->height = height;
  e->iBitmapDepth = DefaultDepth(d, DefaultScreen(d));
  e->BitmapColourmap = DefaultColormap(d, DefaultScreen(d));
  fill(e->hBitmap.get(), width, height, kWhite);
}

void yybitmapdestroy(int handle, int& error) {
  BitmapEntry* e = used(handle, "yybitmapdestroy", error);
  if (!e) return;
  if (yyBitmapViewHandle() == handle) return fail(zg::kErrorBitmapViewed, "yybitmapdestroy", error);
  if (yywindrawabletype() == zg::kDrawableBitmap && yywindrawableid() == handle) yywindrawable(0, -1);
  *e = BitmapEntry{};
}

void yybitmapclear(int handle, int rgb, int& error) {
  BitmapEntry* e = used(handle, "yybitmapclear", error);
  if (!e) return;
  fill(e->hBitmap.get(), e->width, e->height, rgb);
  refresh_if_viewed(handle);
}

bool yybitmapsize(int handle, int& width, int& height) {
  const BitmapEntry* e = entry(handle);
  width = e && e->hBitmap ? e->width : 0;
  height = e && e->hBitmap ? e->height : 0;
  return e && e->hBitmap;
}

void yybitmapget(int handle, int x, int y, int& error) {
  const BitmapEntry* e = used(handle, "yybitmapget", error);
  if (e) yybitmapgetpart(handle, x, y, e->width, e->height, 0, 0, error);
}

void yybitmapgetpart(int handle, int sx, int sy, int width, int height, int dx, int dy, int& error) {
  BitmapEntry* e = used(handle, "yybitmapgetpart", error);
  if (!e) return;
  const Drawable from = target(handle, "yybitmapgetpart", error);
  if (!from || width < 1 || height < 1) return;
  GC gc = bitmap_gc();
  XGCValues old;
  XGetGCValues(dpy(), gc, GCFunction, &old);
  XSetFunction(dpy(), gc, GXcopy);
  XCopyArea(dpy(), from, e->hBitmap.get(), gc, sx, sy, static_cast<unsigned>(width), static_cast<unsigned>(height),
            dx, dy);
  XSetFunction(dpy(), gc, old.function);
  refresh_if_viewed(handle);
}

void yybitmapput(int handle, int x, int y, bool scale, int width, int height, int& error) {
  BitmapEntry* e = used(handle, "yybitmapput", error);
  if (!e) return;
  if (!scale || (width == e->width && height == e->height)) {
    yybitmapputpart(handle, 0, 0, e->width, e->height, x, y, error);
    return;
  }
  const Drawable to = target(handle, "yybitmapput", error);
  if (!to) return;
  const auto src = read_rgb(e->hBitmap.get(), 0, 0, e->width, e->height);
  const auto scaled = yybitmapstretch(src, e->width, e->height, width, height, table().iBmpStretch);
  PixmapHandle pm = make_pixmap(width, height);
  if (scaled.empty() || !pm || !write_rgb(pm.get(), 0, 0, width, height, scaled))
    return fail(zg::kErrorBitmapCreate, "yybitmapput", error);
  XCopyArea(dpy(), pm.get(), to, bitmap_gc(), 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height), x, y);
}

void yybitmapputpart(int handle, int sx, int sy, int width, int height, int dx, int dy, int& error) {
  const BitmapEntry* e = used(handle, "yybitmapputpart", error);
  if (!e) return;
  const Drawable to = target(handle, "yybitmapputpart", error);
  if (!to || width < 1 || height < 1) return;
  XCopyArea(dpy(), e->hBitmap.get(), to, bitmap_gc(), sx, sy, static_cast<unsigned>(width),
            static_cast<unsigned>(height), dx, dy);
}

void yybitmapgetdata(int handle, std::vector<int>& rgb, int& error) {
  rgb.clear();
  const BitmapEntry* e = used(handle, "yybitmapgetdata", error);
  if (e) rgb = read_rgb(e->hBitmap.get(), 0, 0, e->width, e->height);
}

void yybitmapputdata(int handle, std::span<const int> rgb, int& error) {
  const BitmapEntry* e = used(handle, "yybitmapputdata", error);
  if (!e) return;
  std::vector<int> all = read_rgb(e->hBitmap.get(), 0, 0, e->width, e->height);
  std::copy_n(rgb.begin(), std::min(rgb.size(), all.size()), all.begin());
  write_rgb(e->hBitmap.get(), 0, 0, e->width, e->height, all);
  refresh_if_viewed(handle);
}

void yybitmapresize(int handle, int width, int height, int& error) {
  BitmapEntry* e = used(handle, "yybitmapresize", error);
  if (!e) return;
  if (width < 1 || height < 1 || width > zg::kMaxBitmapSide || height > zg::kMaxBitmapSide)
    return fail(zg::kErrorBitmapCreate, "yybitmapresize", error);
  const auto src = read_rgb(e->hBitmap.get(), 0, 0, e->width, e->height);
  replace(*e, width, height, yybitmapstretch(src, e->width, e->height, width, height, table().iBmpStretch),
          "yybitmapresize", error);
  refresh_if_viewed(handle);
}

void yybitmaprotate(int handle, int degrees, int& error) {
  BitmapEntry* e = used(handle, "yybitmaprotate", error);
  if (!e) return;
  degrees = ((degrees % 360) + 360) % 360;
  if (degrees != 90 && degrees != 180 && degrees != 270) {
    if (degrees != 0) fail(zg::kErrorBitmapMode, "yybitmaprotate", error);
    return;
  }
  const auto src = read_rgb(e->hBitmap.get(), 0, 0, e->width, e->height);
  const bool across = degrees != 180;
  replace(*e, across ? e->height : e->width, across ? e->width : e->height,
          yybitmapturn(src, e->width, e->height, degrees), "yybitmaprotate", error);
  refresh_if_viewed(handle);
}

void yybitmapmirror(int handle, int axis, int& error) {
  BitmapEntry* e = used(handle, "yybitmapmirror", error);
  if (!e) return;
  if (axis != zg::kMirrorLeftRight && axis != zg::kMirrorTopBottom)
    return fail(zg::kErrorBitmapMode, "yybitmapmirror", error);
  const auto src = read_rgb(e->hBitmap.get(), 0, 0, e->width, e->height);
  write_rgb(e->hBitmap.get(), 0, 0, e->width, e->height, yybitmapflip(src, e->width, e->height, axis));
  refresh_if_viewed(handle);
}

void yybitmapplotmode(int mode, int& error) {
  error = 0;
  const int function = dpy() ? yyplotfunction(mode, DefaultDepth(dpy(), DefaultScreen(dpy())),
                                              BlackPixel(dpy(), DefaultScreen(dpy())))
                             : yyplotfunction(mode, 24, 0);
  if (function < 0) return fail(zg::kErrorBitmapMode, "yybitmapplotmode", error);
  table().iBmpRop = function;
  if (table().bmpGC) XSetFunction(dpy(), table().bmpGC.get(), function);
}

void yybitmapstretchmode(int mode, int& error) {
  error = 0;
  if (mode == 0 || mode == 4) table().iBmpStretch = zg::kStretchAverage;
  else if (mode >= 1 && mode <= 3) table().iBmpStretch = zg::kStretchSample;
  else fail(zg::kErrorBitmapMode, "yybitmapstretchmode", error);
}

int yybitmapstretchrule() { return table().iBmpStretch; }

void yybitmapgrselect(int handle, int& error) {
  const BitmapEntry* e = used(handle, "yybitmapgrselect", error);
  if (!e) return;
  yywindrawable(zg::kDrawableBitmap, handle);
  // The graphics state draws on it too, over its own pixel size.
  auto& s = zelvy_graph::state();
  yygapiflush();
  s.itarg = kBitmapTarget;
  s.itargid = handle;
  yyresn(s.itarg, s.itargid, e->width, e->height);
  yygdrv(zelvy_graph::OpInit);
}

void yybitmaploadresource(int handle, int imageid, int type, int background, int& error) {
  error = 0;
  BitmapEntry* e = entry(handle);
  if (!e || !dpy()) return fail(zg::kErrorBitmapHandle, "yybitmaploadresource", error);
  if (e->hBitmap) return fail(zg::kErrorBitmapInUse, "yybitmaploadresource", error);
  int width = 0, height = 0, status = 0;
  std::vector<std::uint8_t> rgba;
  yyrcimagepixels(imageid, type, width, height, rgba, status);
  if (status != 0) return fail(status, "yybitmaploadresource", error);
  std::vector<int> rgb(static_cast<size_t>(width) * static_cast<size_t>(height));
  for (size_t i = 0; i < rgb.size(); ++i) {
    const std::uint8_t* p = &rgba[i * 4];
    // The fourth byte is the transparency, 0 for an opaque pixel.
    rgb[i] = p[3] != 0 ? background : p[0] | p[1] << 8 | p[2] << 16;
  }
  yybitmapcreate(handle, width, height, error);
  if (error != 0) return;
  write_rgb(e->hBitmap.get(), 0, 0, width, height, rgb);
}

void yygetwindowbitmap(int on, int exceptwindow, int& error) {
  error = 0;
  yygetwindowbitmap_(on, exceptwindow, error);
}

void yyBitmapShutdown() {
  yyBitmapViewClose();
  auto& t = table();
  t.entries.clear();
  t.entries.shrink_to_fit();
  t.bmpGC.reset();
  t.iBmpRop = GXcopy;
  t.iBmpStretch = zg::kStretchAverage;
  release_draw_state();
  auto& s = zelvy_graph::state();
  if (s.itarg == kBitmapTarget) s.itarg = 1;
}
