// The icons of boxes and dialogs as pixmaps: each load mode read back from
// the X server, pixel by pixel, against the image's own data.
#include "tests/toolkit/dialog/form_fixture.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/resources.h"

#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdint>
#include <vector>

namespace {

constexpr int kIconId = 2001, kIconType = 2, kMissingId = 999999;
constexpr int kNoPixmap = 2, kBadImage = 1015, kOpaque = 0, kClear = 255;

struct Rgb {
  int r, g, b;
};

// The server's pixmap as colours, by the default colour map.
std::vector<Rgb> pixmap_colours(Pixmap pm, int width, int height) {
  Display* d = xdisplay();
  XImage* im = XGetImage(d, pm, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height), AllPlanes, ZPixmap);
  std::vector<Rgb> out;
  if (!im) return out;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      XColor c{};
      c.pixel = XGetPixel(im, x, y);
      XQueryColor(d, DefaultColormap(d, DefaultScreen(d)), &c);
      out.push_back({c.red >> 8, c.green >> 8, c.blue >> 8});
    }
  XDestroyImage(im);
  return out;
}

class IconImages : public MainFormTest {};

TEST_F(IconImages, EachModeTreatsTransparencyAsItSays) {
  std::vector<std::uint8_t> rgba;
  int w = 0, h = 0, status = 0;
  yyrcimagepixels(kIconId, kIconType, w, h, rgba, status);
  ASSERT_EQ(status, 0);
  ASSERT_GT(w * h, 0);
  const Rgb ground{0, 0, 255};
  const Pixel background = yyAllocPixel(ground.r, ground.g, ground.b);

  int lw = 0, lh = 0;
  const Pixmap mixed = yyResourceLoadImage(kIconId, kIconType, kImageOnBackground, background, lw, lh, status);
  ASSERT_EQ(status, 0);
  ASSERT_EQ(lw, w);
  ASSERT_EQ(lh, h);
  const Pixmap plain = yyResourceLoadImage(kIconId, kIconType, kImageAsIs, background, lw, lh, status);
  const auto onground = pixmap_colours(mixed, w, h), asis = pixmap_colours(plain, w, h);
  XFreePixmap(xdisplay(), mixed);
  XFreePixmap(xdisplay(), plain);
  ASSERT_EQ(onground.size(), static_cast<size_t>(w * h));

  int clear = 0, opaque = 0;
  for (int i = 0; i < w * h; ++i) {
    const std::uint8_t* p = &rgba[static_cast<size_t>(i) * 4];
    const Rgb& m = onground[static_cast<size_t>(i)];
    const Rgb& a = asis[static_cast<size_t>(i)];
    // As it stands: the image's colour whatever its transparency.
    EXPECT_EQ(a.r, p[0]) << "pixel " << i;
    if (p[3] == kClear) {
      ++clear;
      EXPECT_EQ(m.b, ground.b) << "pixel " << i;
      EXPECT_EQ(m.r, ground.r) << "pixel " << i;
    } else if (p[3] == kOpaque) {
      ++opaque;
      EXPECT_EQ(m.r, p[0]) << "pixel " << i;
      EXPECT_EQ(m.g, p[1]) << "pixel " << i;
    } else {
      // Mixed by the transparency, in integers.
      EXPECT_EQ(m.r, (p[3] * ground.r + (kClear - p[3]) * p[0]) / kClear) << "pixel " << i;
    }
  }
  // The icon has both, or the test proves nothing.
  EXPECT_GT(clear, 0);
  EXPECT_GT(opaque, 0);
}

TEST_F(IconImages, KeyColourIsLeftOutAndMissingImagesHaveNoPixmap) {
  std::vector<std::uint8_t> rgba;
  int w = 0, h = 0, status = 0;
  yyrcimagepixels(kIconId, kIconType, w, h, rgba, status);
  ASSERT_EQ(status, 0);
  // The colour of the first pixel, as three bytes: every pixel of it is left
  // on the ground of 0, every other drawn.
  const int key = rgba[0] | rgba[1] << 8 | rgba[2] << 16;
  const Pixmap pm = yyResourceLoadImage(kIconId, kIconType, kImageKeyColour, static_cast<Pixel>(key), w, h, status);
  const auto got = pixmap_colours(pm, w, h);
  XFreePixmap(xdisplay(), pm);
  ASSERT_EQ(got.size(), static_cast<size_t>(w * h));
  for (int i = 0; i < w * h; ++i) {
    const std::uint8_t* p = &rgba[static_cast<size_t>(i) * 4];
    const bool keyed = p[0] == rgba[0] && p[1] == rgba[1] && p[2] == rgba[2];
    EXPECT_EQ(got[static_cast<size_t>(i)].r, keyed ? 0 : p[0]) << "pixel " << i;
  }

  int mw = 5, mh = 5;
  EXPECT_EQ(yyResourceLoadImage(kMissingId, kIconType, kImageAsIs, 0, mw, mh, status), static_cast<Pixmap>(kNoPixmap));
  EXPECT_EQ(status, kBadImage);
  EXPECT_EQ(mw, 0);
}

}  // namespace
