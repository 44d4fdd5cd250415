// X resources of the pixel routines and the bitmap table, each owned by one
// object that frees it.
#pragma once

#include <X11/Xlib.h>
#include <X11/Xft/Xft.h>
#include <X11/Xutil.h>

#include <memory>
#include <vector>
#include <utility>

namespace zelvy_bmp {

// A server resource freed by `Free` on the display it came from.
template <typename T, int (*Free)(Display*, T)>
class XResource {
 public:
  XResource() = default;
  XResource(Display* display, T value) : display_(display), value_(value) {}
  XResource(const XResource&) = delete;
  XResource& operator=(const XResource&) = delete;
  XResource(XResource&& other) noexcept
      : display_(std::exchange(other.display_, nullptr)), value_(std::exchange(other.value_, T{})) {}
  XResource& operator=(XResource&& other) noexcept {
    if (this != &other) {
      reset();
      display_ = std::exchange(other.display_, nullptr);
      value_ = std::exchange(other.value_, T{});
    }
    return *this;
  }
  ~XResource() { reset(); }
  void reset() {
    if (display_ && value_) Free(display_, value_);
    display_ = nullptr;
    value_ = T{};
  }
  // Forgets the resource without freeing it: for an id the server refused.
  void release() {
    display_ = nullptr;
    value_ = T{};
  }
  T get() const { return value_; }
  explicit operator bool() const { return value_ != T{}; }

 private:
  Display* display_ = nullptr;
  T value_{};
};

using GcHandle = XResource<GC, XFreeGC>;
using PixmapHandle = XResource<Pixmap, XFreePixmap>;

struct ImageDeleter {
  void operator()(XImage* image) const { XDestroyImage(image); }
};
using ImagePtr = std::unique_ptr<XImage, ImageDeleter>;
struct XftDrawDeleter {
  void operator()(XftDraw* draw) const { XftDrawDestroy(draw); }
};
using XftDrawPtr = std::unique_ptr<XftDraw, XftDrawDeleter>;

// The drawable of a bitmap handle, 0 when it has none.
Drawable bitmap_drawable(int handle);
// The X drawable of a kind and identifier (window, bitmap, picture field), 0 when none.
Drawable drawable_of(int type, int id);
// The GC of the pixel routines, made at first use.
GC draw_gc();
// A pixel's colour as RGB, red in the low byte.
int pixel_rgb(unsigned long pixel);
unsigned long rgb_pixel(int rgb);
// A rectangle of a drawable as RGB integers, rows from the top; empty on failure.
std::vector<int> read_rgb(Drawable drawable, int x, int y, int width, int height);
// RGB integers into a rectangle of a drawable.
bool write_rgb(Drawable drawable, int x, int y, int width, int height, const std::vector<int>& rgb);
// Gives back what the pixel routines hold on the server.
void release_draw_state();

}  // namespace zelvy_bmp
