// Pictures and the screen: an area of the screen target saved as a picture
// file, and a picture put into an area of it, turned and stretched on request.
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/graphics/image_files.h"
#include "toolkit/graphics/image_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/window_private.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <map>

namespace zg = zelvy_graph;
using namespace zelv_graphics;

namespace {

constexpr int kErrorOpen = 1, kErrorWrite = 2, kErrorFormat = 27, kErrorClipboard = 1094;
constexpr int kTypeClipboard = 0;
constexpr int kPaletteMax = 256;

struct Target {
  Display* display = nullptr;
  Window window = 0;
  XWindowAttributes attr{};
};

bool target(Target& t) {
  t.display = xdisplay();
  const int h = zg::state().itargid;
  if (!t.display || !yywindowexists(h)) return false;
  t.window = zelvy_win::state().wClient[h];
  return t.window && XGetWindowAttributes(t.display, t.window, &t.attr);
}

int shift_of(unsigned long mask) {
  int n = 0;
  while (mask && !(mask & 1)) {
    mask >>= 1;
    ++n;
  }
  return n;
}

// A pixel of the server as an RGB integer.
struct PixelReader {
  const Target& t;
  std::map<unsigned long, int> cache;
  int operator()(unsigned long pixel) {
    const Visual* v = t.attr.visual;
    if (v->c_class == TrueColor || v->c_class == DirectColor) {
      auto part = [&](unsigned long mask) {
        const int sh = shift_of(mask);
        const unsigned long top = mask >> sh;
        return top ? static_cast<int>(((pixel & mask) >> sh) * 255 / top) : 0;
      };
      return part(v->red_mask) | part(v->green_mask) << 8 | part(v->blue_mask) << 16;
    }
    if (auto it = cache.find(pixel); it != cache.end()) return it->second;
    XColor c{};
    c.pixel = pixel;
    XQueryColor(t.display, t.attr.colormap, &c);
    const int rgb = (c.red >> 8) | (c.green >> 8) << 8 | (c.blue >> 8) << 16;
    cache.emplace(pixel, rgb);
    return rgb;
  }
};

}  // namespace

// Whether the box must be copied to a pixmap first: it isn't wholly on a
// mapped window that lies wholly on the screen.
bool yyImageUsePixmap(int x1, int y1, int x2, int y2) {
  Target t;
  if (!target(t)) return true;
  if (t.attr.map_state != IsViewable) return true;
  if (x1 < 0 || y1 < 0 || x2 >= t.attr.width || y2 >= t.attr.height) return true;
  int rx = 0, ry = 0;
  Window child;
  XTranslateCoordinates(t.display, t.window, t.attr.root, 0, 0, &rx, &ry, &child);
  const Screen* s = t.attr.screen;
  return rx + x1 < 0 || ry + y1 < 0 || rx + x2 >= WidthOfScreen(s) || ry + y2 >= HeightOfScreen(s);
}

void yysaveimage(int type, int x1, int y1, int x2, int y2, int quality, int dpi, int& error, int& status,
                 const std::string& file) {
  error = status = 0;
  if (type == kTypeClipboard) {
    error = kErrorClipboard;
    return;
  }
  if (type != kFileBmp && type != kFilePcx && type != kFilePng && type != kFileJpeg) {
    error = kErrorFormat;
    return;
  }
  Target t;
  if (!target(t)) {
    error = kErrorWrite;
    return;
  }
  if (x1 > x2) std::swap(x1, x2);
  if (y1 > y2) std::swap(y1, y2);
  const int w = x2 - x1 + 1, h = y2 - y1 + 1;
  Drawable source = t.window;
  Pixmap copy = 0;
  int ox = x1, oy = y1;
  if (yyImageUsePixmap(x1, y1, x2, y2)) {
    // The server's own copy of what stands there.
    copy = XCreatePixmap(t.display, t.window, static_cast<unsigned>(w), static_cast<unsigned>(h),
                         static_cast<unsigned>(t.attr.depth));
    GC gc = XCreateGC(t.display, copy, 0, nullptr);
    XCopyArea(t.display, t.window, copy, gc, x1, y1, static_cast<unsigned>(w), static_cast<unsigned>(h), 0, 0);
    XFreeGC(t.display, gc);
    source = copy;
    ox = oy = 0;
  }
  zg::RasterPage page;
  const bool paletted = t.attr.depth <= 8 && type != kFileJpeg;
  page.allocate(w, h, paletted ? 8 : 24);
  page.dpi = dpi;
  PixelReader reader{t, {}};
  std::map<int, int> palette;
  for (int j = 0; j < h; ++j) {
    XImage* row = XGetImage(t.display, source, ox, oy + j, static_cast<unsigned>(w), 1, AllPlanes, ZPixmap);
    if (!row) continue;
    for (int i = 0; i < w; ++i) {
      const int rgb = reader(XGetPixel(row, i, 0));
      if (!paletted) {
        page.set(i, h - 1 - j, static_cast<uint32_t>(rgb));
        continue;
      }
      // Colours in the order found; once 256 stand, others take index 0.
      auto it = palette.find(rgb);
      if (it == palette.end() && static_cast<int>(palette.size()) < kPaletteMax) {
        it = palette.emplace(rgb, static_cast<int>(palette.size())).first;
        page.irgb256[static_cast<size_t>(it->second)] = rgb;
      }
      page.set(i, h - 1 - j, it == palette.end() ? 0u : static_cast<uint32_t>(it->second));
    }
    XDestroyImage(row);
  }
  if (copy) XFreePixmap(t.display, copy);
  zg::ImageResult r;
  switch (type) {
    case kFileBmp: r = yybmp1(page, file, false); break;
    case kFilePcx: r = yypcx1(page, file); break;
    case kFileJpeg: r = yyjpeg1(page, file, quality); break;
    default: r = yypng1(page, file);
  }
  error = r.error;
  status = r.status;
}

void yyloadimage(int type, int width, int height, int x1, int y1, int x2, int y2, bool scale, int mode, int rotation,
                 const std::vector<int>& data, int& error) {
  error = 0;
  if (type == kTypeClipboard) {
    error = kErrorClipboard;
    return;
  }
  Target t;
  if (!target(t) || width <= 0 || height <= 0 || data.size() < static_cast<size_t>(width) * static_cast<size_t>(height)) {
    error = kErrorWrite;
    return;
  }
  if (x1 > x2) std::swap(x1, x2);
  if (y1 > y2) std::swap(y1, y2);
  const int bw = x2 - x1 + 1, bh = y2 - y1 + 1;
  const bool across = rotation == 90 || rotation == 270;
  const int sw = across ? height : width, sh = across ? width : height;
  // The source pixel that stands at (i, j) of the turned picture.
  auto at = [&](int i, int j) {
    size_t k;
    switch (rotation) {
      case 90: k = static_cast<size_t>(height - 1 - i) * static_cast<size_t>(width) + static_cast<size_t>(j); break;
      case 180: k = static_cast<size_t>(height - 1 - j) * static_cast<size_t>(width) + static_cast<size_t>(width - 1 - i); break;
      case 270: k = static_cast<size_t>(i) * static_cast<size_t>(width) + static_cast<size_t>(width - 1 - j); break;
      default: k = static_cast<size_t>(j) * static_cast<size_t>(width) + static_cast<size_t>(i);
    }
    return data[k] & 0xFFFFFF;
  };
  Pixmap pm = XCreatePixmap(t.display, t.window, static_cast<unsigned>(bw), static_cast<unsigned>(bh),
                            static_cast<unsigned>(t.attr.depth));
  GC gc = XCreateGC(t.display, pm, 0, nullptr);
  const int cw = scale ? bw : std::min(bw, sw), ch = scale ? bh : std::min(bh, sh);
  // A picture smaller than the box leaves the rest as it was.
  if (!scale && (sw < bw || sh < bh))
    XCopyArea(t.display, t.window, pm, gc, x1, y1, static_cast<unsigned>(bw), static_cast<unsigned>(bh), 0, 0);
  XImage* img = XGetImage(t.display, pm, 0, 0, static_cast<unsigned>(bw), static_cast<unsigned>(bh), AllPlanes, ZPixmap);
  std::map<int, unsigned long> pixels;
  auto pixel = [&](int rgb) {
    auto it = pixels.find(rgb);
    if (it == pixels.end()) it = pixels.emplace(rgb, yyAllocPixel(rgb & 0xFF, (rgb >> 8) & 0xFF, (rgb >> 16) & 0xFF)).first;
    return it->second;
  };
  for (int j = 0; img && j < ch; ++j) {
    const int sy0 = scale ? static_cast<int>(static_cast<int64_t>(j) * sh / bh) : j;
    const int sy1 = scale ? std::max(static_cast<int>(static_cast<int64_t>(j + 1) * sh / bh), sy0 + 1) : j + 1;
    for (int i = 0; i < cw; ++i) {
      const int sx0 = scale ? static_cast<int>(static_cast<int64_t>(i) * sw / bw) : i;
      const int sx1 = scale ? std::max(static_cast<int>(static_cast<int64_t>(i + 1) * sw / bw), sx0 + 1) : i + 1;
      int rgb;
      if (!scale || (mode >= 1 && mode <= 3)) {
        rgb = at(sx0, sy0);
      } else {
        long r = 0, g = 0, b = 0, n = 0;
        for (int y = sy0; y < sy1; ++y)
          for (int x = sx0; x < sx1; ++x, ++n) {
            const int c = at(x, y);
            r += c & 0xFF;
            g += (c >> 8) & 0xFF;
            b += (c >> 16) & 0xFF;
          }
        rgb = static_cast<int>(r / n | (g / n) << 8 | (b / n) << 16);
      }
      XPutPixel(img, i, j, pixel(rgb));
    }
  }
  if (img) {
    XPutImage(t.display, pm, gc, img, 0, 0, 0, 0, static_cast<unsigned>(bw), static_cast<unsigned>(bh));
    XDestroyImage(img);
  }
  GC tgc = XCreateGC(t.display, t.window, 0, nullptr);
  XCopyArea(t.display, pm, t.window, tgc, 0, 0, static_cast<unsigned>(bw), static_cast<unsigned>(bh), x1, y1);
  XFreeGC(t.display, tgc);
  XFreeGC(t.display, gc);
  XFreePixmap(t.display, pm);
  XFlush(t.display);
}

void yyloadimagetodrawable(const std::string& file, int rotation, int x1, int y1, int x2, int y2, int& width,
                           int& height, bool scale, int mode, int& error, int& status) {
  // Loaded with its errors held back: they go to the caller alone.
  error = status = 0;
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    error = kErrorOpen;
    status = errno;
    return;
  }
  const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), {});
  std::array<int, 13> info{};
  yygrfileinfo(bytes, info, kFileInfoItems);
  zg::Picture pic;
  const auto r = yygrloadimagedata(bytes, info[0], false, pic);
  if (r.error) {
    error = r.error;
    status = r.status;
    return;
  }
  width = pic.width;
  height = pic.height;
  yyloadimage(info[0], pic.width, pic.height, x1, y1, x2, y2, scale, mode, rotation, pic.pixels, error);
}
