// Memory bitmaps and the pixel routines on the test fixture's X server: each
// shape drawn into a bitmap and read back pixel by pixel, the table's limits
// and bad handles, the pixel operations, resource images, the image writers,
// and the viewer.
#include <gtest/gtest.h>

#include "app/resources/gombrel_resources.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/graphics/bitmap.h"
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/graphics/image_files.h"
#include "toolkit/graphics/image_private.h"
#include "toolkit/graphics/window_prims.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

#include <unistd.h>
// X last: its macros collide with the test framework's names.
#include <X11/Xlib.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;
namespace zg = zelv_graphics;

namespace {

constexpr int kWhite = 0xFFFFFF, kBlack = 0, kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000;
constexpr int kW = 40, kH = 30;

void settle() {
  XSync(xdisplay(), False);
  int type = 0;
  MessageRecord m;
  for (int i = 0; i < 300; ++i) {
    WMessagePeek(type, m);
    if (type == -1) {
      XSync(xdisplay(), False);
      WMessagePeek(type, m);
      if (type == -1) break;
    }
  }
}

class Bitmaps : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    yyDialogAttach();
    WInitialise();
    yyDialogEngineInit();
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    WindowOpen(0, 0, 0, 300, 200, {}, {}, {}, "bitmaps");
    settle();
    yybitmapalloc(4);
    int error = -1;
    yybitmapcreate(1, kW, kH, error);
    ASSERT_EQ(error, 0);
    ASSERT_TRUE(yywindrawable(zg::kDrawableBitmap, 1));
    colour(kBlack);
    yywinbackcolour(kWhite);
    yywinplotmode(zg::kPlotCopy);
    yywinclip(0, 0, -1, -1);
    yywinlinewidth(0);
    yywinlinetype(0);
    yywinLineStyles(false);
    zelvy_data::data().ierr = 0;
  }
  void TearDown() override { WindowClose(); }

  static void colour(int rgb) {
    int error = -1;
    yywincolour(zg::kColourDirect, rgb, error);
    ASSERT_EQ(error, 0);
  }
  // The error a call hands back.
  template <typename Call>
  static int err(Call call) {
    int e = -1;
    call(e);
    return e;
  }
  static int at(int x, int y) { return yywingetpixelrgb(x, y); }
  struct Px {
    int x, y, rgb;
  };
  static void expect(std::initializer_list<Px> pixels) {
    for (const Px& p : pixels) EXPECT_EQ(at(p.x, p.y), p.rgb) << p.x << "," << p.y;
  }
  static void polygon(std::initializer_list<std::pair<int, int>> points) {
    yypolalloc(static_cast<int>(points.size()));
    int i = 0;
    for (auto [x, y] : points) yypolpoint(i++, x, y);
  }
  static std::vector<int> data(int handle) {
    std::vector<int> rgb;
    EXPECT_EQ(err([&](int& e) { yybitmapgetdata(handle, rgb, e); }), 0);
    return rgb;
  }
  static std::vector<int> pattern(int w, int h) {
    std::vector<int> rgb(static_cast<size_t>(w * h));
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) rgb[static_cast<size_t>(y * w + x)] = (x * 6) | (y * 8) << 8 | ((x + y) * 3) << 16;
    return rgb;
  }
};

TEST_F(Bitmaps, LinesPointsAndOutlinesHitTheirPixels) {
  EXPECT_EQ(at(5, 5), kWhite);  // a new bitmap is white
  yywinline(2, 3, 20, 3);
  // thin lines end on their end point
  expect({{2, 3, kBlack}, {20, 3, kBlack}, {11, 3, kBlack}, {11, 4, kWhite}, {21, 3, kWhite}});

  colour(kRed);
  yywinpoint(30, 20);
  expect({{30, 20, kRed}, {31, 20, kWhite}});

  yywinpointrgb(1, 1, kGreen);
  EXPECT_EQ(at(1, 1), kGreen);
  yywinpoint(0, 0);  // the point by RGB left the colour in force alone
  EXPECT_EQ(at(0, 0), kRed);

  polygon({{5, 10}, {15, 10}, {15, 20}});
  yypolpoint(7, 0, 0);  // beyond the buffer: ignored
  yywinpolyline(3);
  // a polyline doesn't close
  expect({{10, 10, kRed}, {15, 15, kRed}, {10, 15, kWhite}});
  yypolfree();

  colour(kBlue);
  yywinrectangle(25, 2, 35, 8, false);
  // an outline leaves its inside
  expect({{25, 2, kBlue}, {35, 8, kBlue}, {30, 5, kWhite}});

  expect({{-1, 0, -1}, {kW, 0, -1}});
}

TEST_F(Bitmaps, FilledShapesCoverTheirInsideOnly) {
  yywinrectangle(2, 2, 4, 4, true);
  // corners inclusive
  expect({{2, 2, kBlack}, {4, 4, kBlack}, {5, 4, kWhite}, {1, 2, kWhite}});

  colour(kRed);
  polygon({{10, 2}, {30, 2}, {10, 22}});
  yywinpolygon(3);
  // beyond the hypotenuse
  expect({{12, 4, kRed}, {28, 20, kWhite}});
  yywinpolygon(2);                 // too few points: nothing
  yypolfree();

  yywinclear();
  colour(kGreen);
  yywinellipse(20, 15, 10, 6, true);
  // the bounding box's corner
  expect({{20, 15, kGreen}, {28, 15, kGreen}, {20, 10, kGreen}, {11, 8, kWhite}, {20, 5, kWhite}});

  yywinclear();
  colour(kBlue);
  // The quarter from three to twelve o'clock: up and to the right on the screen.
  yywinarc(20, 15, 10, 10, 0, 90);
  expect({{24, 11, kBlue}, {16, 11, kWhite}, {24, 19, kWhite}});
  yywinclear();
  yywinoutlinearc(20, 15, 10, 10, 0, 180);
  // the top of the arc; no fill; the lower half isn't drawn
  expect({{20, 5, kBlue}, {20, 15, kWhite}, {20, 25, kWhite}});
}

TEST_F(Bitmaps, ClipAndClearKeepTheirBounds) {
  yywinclip(5, 5, 9, 9);
  yywinrectangle(0, 0, kW - 1, kH - 1, true);
  expect({{5, 5, kBlack}, {9, 9, kBlack}, {4, 5, kWhite}, {10, 9, kWhite}});
  yywinclip(0, 0, -1, -1);
  yywinbackcolour(kGreen);
  yywinclear();
  expect({{0, 0, kGreen}, {kW - 1, kH - 1, kGreen}});
  yywinrectangle(0, 0, 0, 0, true);
  EXPECT_EQ(at(0, 0), kBlack);  // the colour in force survives the clear
}

TEST_F(Bitmaps, PlotModesCombineWithWhatIsThere) {
  colour(0x0000F0);
  yywinrectangle(0, 0, 9, 9, true);
  colour(0x00000F);
  ASSERT_TRUE(yywinplotmode(zg::kPlotOr));
  yywinrectangle(0, 0, 4, 9, true);
  EXPECT_EQ(at(2, 2), 0x0000FF);
  ASSERT_TRUE(yywinplotmode(zg::kPlotAnd));
  colour(0x00003C);
  yywinrectangle(0, 0, 9, 4, true);
  // 0xFF and 0x3C; 0xF0 and 0x3C
  expect({{2, 2, 0x00003C}, {7, 2, 0x000030}});
  ASSERT_TRUE(yywinplotmode(zg::kPlotXor));
  colour(0x123456);
  yywinrectangle(20, 20, 25, 25, true);
  EXPECT_EQ(at(22, 22), kWhite ^ 0x123456);
  yywinrectangle(20, 20, 25, 25, true);
  EXPECT_EQ(at(22, 22), kWhite);  // twice is nothing
  yywinclear();
  EXPECT_EQ(at(22, 22), kWhite);  // clearing ignores the mode
  EXPECT_FALSE(yywinplotmode(4));
  EXPECT_FALSE(yywinplotmode(-1));

  // Exclusive or on a one-bit display whose black is 0 must still draw black.
  EXPECT_EQ(yyplotfunction(zg::kPlotXor, 1, 0), GXequiv);
  EXPECT_EQ(yyplotfunction(zg::kPlotXor, 1, 1), GXxor);
  EXPECT_EQ(yyplotfunction(zg::kPlotXor, 24, 0), GXxor);
  EXPECT_EQ(yyplotfunction(zg::kPlotOr, 24, 0), GXor);
  EXPECT_EQ(yyplotfunction(zg::kPlotAnd, 24, 0), GXand);
}

TEST_F(Bitmaps, PaletteColoursAndTheirFailures) {
  const int rgb[] = {kRed, kGreen};
  yywinpalette(10, 2, rgb);
  int error = -1;
  EXPECT_EQ(err([&](int& e) { yywincolour(11, 0, e); }), 0);
  yywinpoint(3, 3);
  EXPECT_EQ(at(3, 3), kGreen);
  EXPECT_EQ(err([&](int& e) { yywincolour(zg::kPaletteEntries, 0, e); }), zg::kErrorColour);
  EXPECT_EQ(err([&](int& e) { yywincolour(-2, 0, e); }), zg::kErrorColour);
  yywinpoint(4, 4);
  EXPECT_EQ(at(4, 4), kGreen);  // a failure keeps the colour
  // A palette entry set again gives its new colour, not the pixel kept before.
  const int blue[] = {kBlue};
  yywinpalette(11, 1, blue);
  yywincolour(11, 0, error);
  yywinpoint(5, 5);
  EXPECT_EQ(at(5, 5), kBlue);
}

TEST_F(Bitmaps, DashedLinesLeaveGapsAndTypeZeroNone) {
  yywinlinetype(2);  // six on, six off
  yywinLineStyles(true);
  yywinline(0, 5, 35, 5);
  int drawn = 0;
  for (int x = 0; x < 36; ++x) drawn += at(x, 5) == kBlack;
  EXPECT_GT(drawn, 10);
  EXPECT_LT(drawn, 26);
  yywinLineStyles(false);  // solid whatever the type
  yywinline(0, 10, 35, 10);
  yywinlinetype(0);
  yywinLineStyles(true);  // type 0 has no dashes
  yywinline(0, 15, 35, 15);
  for (int x = 0; x < 36; ++x) {
    EXPECT_EQ(at(x, 10), kBlack) << x;
    EXPECT_EQ(at(x, 15), kBlack) << x;
  }
  yywinlinewidth(5);
  yywinLineStyles(false);
  yywinline(5, 25, 30, 25);
  expect({{15, 23, kBlack}, {15, 27, kBlack}, {15, 29, kWhite}});
}

TEST_F(Bitmaps, TextAndBlitsReachTheDrawable) {
  int cw = 0, chh = 0;
  yywinselectfont(2, 0, 20, cw, chh);
  EXPECT_GT(yywintextlength("WWW"), yywintextlength("W"));
  yywindrawstring(2, 20, "W");
  int dark = 0;
  for (int y = 0; y < kH; ++y)
    for (int x = 0; x < kW; ++x) dark += at(x, y) != kWhite;
  EXPECT_GT(dark, 10);
  const int after = 2 + yywintextlength("W") + 2;
  ASSERT_LT(after, kW);
  for (int y = 0; y < kH; ++y) EXPECT_EQ(at(after, y), kWhite);

  // A blit copies the other bitmap's pixels, here into this one.
  int error = -1;
  yybitmapcreate(2, 10, 10, error);
  ASSERT_TRUE(yywindrawable(zg::kDrawableBitmap, 2));
  colour(kRed);
  yywinrectangle(0, 0, 4, 4, true);
  ASSERT_TRUE(yywindrawable(zg::kDrawableBitmap, 1));
  yywinclear();
  yywinblit(zg::kDrawableBitmap, 2, 0, 0, 10, 10, 30, 20);
  expect({{30, 20, kRed}, {34, 24, kRed}, {35, 25, kWhite}, {29, 20, kWhite}});
  EXPECT_FALSE(yywindrawable(zg::kDrawableBitmap, 3));  // no bitmap there
  EXPECT_EQ(yywindrawabletype(), zg::kDrawableNone);
  EXPECT_EQ(yywingetpixelrgb(0, 0), -1);
}

TEST_F(Bitmaps, TheTableRefusesBadHandlesAndLimits) {
  int error = -1;
  EXPECT_EQ(err([&](int& e) { yybitmapcreate(0, 5, 5, e); }), zg::kErrorBitmapHandle);
  EXPECT_EQ(WInfoError(1), zg::kErrorBitmapHandle);
  yybitmapcreate(5, 5, 5, error);  // the table holds four
  EXPECT_EQ(error, zg::kErrorBitmapHandle);
  EXPECT_EQ(err([&](int& e) { yybitmapcreate(1, 5, 5, e); }), zg::kErrorBitmapInUse);
  for (auto [w, h] : {std::pair{0, 5}, {5, -1}, {zg::kMaxBitmapSide + 1, 1}}) {
    yybitmapcreate(2, w, h, error);
    EXPECT_EQ(error, zg::kErrorBitmapCreate) << w << "x" << h;
  }
  int w = -1, h = -1;
  EXPECT_FALSE(yybitmapsize(2, w, h));

  std::vector<int> rgb{1, 2, 3};
  for (int handle : {-1, 0, 2, 99}) {
    EXPECT_EQ(err([&](int& e) { yybitmapdestroy(handle, e); }), zg::kErrorBitmapHandle);
    EXPECT_EQ(err([&](int& e) { yybitmapgetdata(handle, rgb, e); }), zg::kErrorBitmapHandle);
    EXPECT_TRUE(rgb.empty());
    EXPECT_EQ(err([&](int& e) { yybitmaprotate(handle, 90, e); }), zg::kErrorBitmapHandle);
    EXPECT_EQ(err([&](int& e) { yybitmapput(handle, 0, 0, false, 0, 0, e); }), zg::kErrorBitmapHandle);
  }
  // A bitmap can't be copied onto itself while it is the drawable.
  EXPECT_EQ(err([&](int& e) { yybitmapput(1, 0, 0, false, 0, 0, e); }), zg::kErrorBitmapInUse);
  EXPECT_EQ(err([&](int& e) { yybitmapget(1, 0, 0, e); }), zg::kErrorBitmapInUse);

  for (int mode : {-1, 4}) EXPECT_EQ(err([&](int& e) { yybitmapplotmode(mode, e); }), zg::kErrorBitmapMode);
  yybitmapstretchmode(2, error);
  EXPECT_EQ(yybitmapstretchrule(), zg::kStretchSample);
  yybitmapstretchmode(0, error);
  EXPECT_EQ(err([&](int& e) { yybitmapstretchmode(5, e); }), zg::kErrorBitmapMode);
  EXPECT_EQ(yybitmapstretchrule(), zg::kStretchAverage);
  EXPECT_EQ(err([&](int& e) { yybitmapmirror(1, 3, e); }), zg::kErrorBitmapMode);
  EXPECT_EQ(err([&](int& e) { yybitmaprotate(1, 45, e); }), zg::kErrorBitmapMode);

  // Destroying the drawable's bitmap leaves no drawable; the handle is free again.
  EXPECT_EQ(err([&](int& e) { yybitmapdestroy(1, e); }), 0);
  EXPECT_EQ(yywindrawabletype(), zg::kDrawableNone);
  EXPECT_EQ(err([&](int& e) { yybitmapcreate(1, 3, 3, e); }), 0);
  // A new table forgets the old bitmaps.
  yybitmapalloc(2);
  EXPECT_FALSE(yybitmapsize(1, w, h));
  EXPECT_EQ(err([&](int& e) { yybitmapcreate(3, 3, 3, e); }), zg::kErrorBitmapHandle);
}

TEST_F(Bitmaps, CopiesBetweenTargetAndBitmap) {
  int error = -1;
  yybitmapputdata(1, pattern(kW, kH), error);
  ASSERT_EQ(error, 0);
  yybitmapcreate(2, 20, 20, error);
  ASSERT_TRUE(yywindrawable(zg::kDrawableBitmap, 2));
  EXPECT_EQ(err([&](int& e) { yybitmapput(1, 5, 5, false, 0, 0, e); }), 0);
  const auto p = pattern(kW, kH);
  expect({{5, 5, p[0]}, {19, 19, p[14 * kW + 14]}});
  yybitmapputpart(1, 10, 10, 3, 3, 0, 0, error);
  expect({{0, 0, p[10 * kW + 10]}, {2, 2, p[12 * kW + 12]}, {3, 3, kWhite}});

  // Stretched to twice its size, sampling repeats each pixel.
  yybitmapcreate(3, 4, 3, error);
  const std::vector<int> small{kRed, kGreen, kBlue, kBlack, kWhite, kRed, kGreen, kBlue, kBlack, kWhite, kRed, kGreen};
  yybitmapputdata(3, small, error);
  yybitmapstretchmode(1, error);
  yybitmapclear(2, kWhite, error);
  EXPECT_EQ(err([&](int& e) { yybitmapput(3, 0, 0, true, 8, 6, e); }), 0);
  for (int y = 0; y < 6; ++y)
    for (int x = 0; x < 8; ++x) EXPECT_EQ(at(x, y), small[static_cast<size_t>((y / 2) * 4 + x / 2)]) << x << "," << y;
  EXPECT_EQ(at(8, 0), kWhite);

  // Back from the target: the bitmap takes the area at the point.
  EXPECT_EQ(err([&](int& e) { yybitmapget(3, 2, 0, e); }), 0);
  const auto got = data(3);
  EXPECT_EQ(got[0], small[1]);
  EXPECT_EQ(got[1], small[1]);
  EXPECT_EQ(got[2], small[2]);
  yybitmapclear(3, kBlue, error);
  yybitmapgetpart(3, 0, 0, 2, 1, 1, 1, error);
  const auto part = data(3);
  EXPECT_EQ(part[0], kBlue);
  EXPECT_EQ(part[5], small[0]);
  EXPECT_EQ(part[6], small[0]);
  EXPECT_EQ(part[7], kBlue);

  // The copy function: exclusive or twice gives back what was there.
  const int before = at(10, 10);
  yybitmapplotmode(zg::kPlotXor, error);
  yybitmapput(1, 5, 5, false, 0, 0, error);
  EXPECT_EQ(at(10, 10), before ^ p[5 * kW + 5]);
  yybitmapput(1, 5, 5, false, 0, 0, error);
  EXPECT_EQ(at(10, 10), before);
  yybitmapplotmode(zg::kPlotCopy, error);
}

TEST_F(Bitmaps, TurnsMirrorsAndResizesRoundTrip) {
  int error = -1;
  const auto p = pattern(kW, kH);
  yybitmapputdata(1, p, error);
  int w = 0, h = 0;
  yybitmaprotate(1, 90, error);
  ASSERT_EQ(error, 0);
  ASSERT_TRUE(yybitmapsize(1, w, h));
  EXPECT_EQ(w, kH);
  EXPECT_EQ(h, kW);
  // Counter-clockwise: the top right corner comes to the top left.
  EXPECT_EQ(data(1)[0], p[kW - 1]);
  for (int i = 0; i < 3; ++i) yybitmaprotate(1, 90, error);
  EXPECT_EQ(data(1), p);
  yybitmaprotate(1, 180, error);
  EXPECT_EQ(data(1)[0], p.back());
  yybitmaprotate(1, -180, error);
  EXPECT_EQ(data(1), p);

  yybitmapmirror(1, zg::kMirrorLeftRight, error);
  EXPECT_EQ(data(1)[0], p[kW - 1]);
  yybitmapmirror(1, zg::kMirrorLeftRight, error);
  yybitmapmirror(1, zg::kMirrorTopBottom, error);
  EXPECT_EQ(data(1)[0], p[(kH - 1) * kW]);
  yybitmapmirror(1, zg::kMirrorTopBottom, error);
  EXPECT_EQ(data(1), p);

  yybitmapstretchmode(3, error);
  yybitmapresize(1, kW * 2, kH * 3, error);
  yybitmapsize(1, w, h);
  EXPECT_EQ(w, kW * 2);
  EXPECT_EQ(h, kH * 3);
  yybitmapresize(1, kW, kH, error);
  EXPECT_EQ(data(1), p);
  EXPECT_EQ(err([&](int& e) { yybitmapresize(1, 0, 5, e); }), zg::kErrorBitmapCreate);

  // Averaging takes the mean of the pixels that fall together.
  yybitmapstretchmode(4, error);
  yybitmapcreate(2, 2, 2, error);
  yybitmapputdata(2, std::vector<int>{0x000000, 0x0000FF, 0x00FF00, 0x3C0000}, error);
  yybitmapresize(2, 1, 1, error);
  EXPECT_EQ(data(2), std::vector<int>{0x0F4040});
}

TEST_F(Bitmaps, TheGraphicsStateDrawsOnASelectedBitmap) {
  IGrInit("");
  int error = -1;
  yybitmapgrselect(1, error);
  ASSERT_EQ(error, 0);
  IGrUnits(0, 0, 1, 1);
  IGrFillPattern(zg::kFillSolid);
  IGrColourN(yyrgbto8(kRed));
  IGrRectangle(0.0f, 0.0f, 0.5f, 1.0f);
  yygapiflush();
  ASSERT_TRUE(yywindrawable(zg::kDrawableBitmap, 1));
  const int left = at(5, kH / 2), right = at(kW - 5, kH / 2);
  EXPECT_NE(left, kWhite);
  EXPECT_EQ(right, kWhite);
  IGrSelect(1, 0);
}

TEST_F(Bitmaps, ResourceImagesLoadAsTheyAreStored) {
  constexpr int kAboutIcon = 2001, kIconType = 2;
  int error = -1;
  yybitmaploadresource(2, kAboutIcon, kIconType, kGreen, error);
  ASSERT_EQ(error, 0);
  int w = 0, h = 0, status = -1;
  std::vector<std::uint8_t> rgba;
  yyrcimagepixels(kAboutIcon, kIconType, w, h, rgba, status);
  ASSERT_EQ(status, 0);
  const auto got = data(2);
  ASSERT_EQ(got.size(), static_cast<size_t>(w * h));
  for (size_t i = 0; i < got.size(); ++i) {
    const std::uint8_t* p = &rgba[i * 4];
    const int want = p[3] != 0 ? kGreen : p[0] | p[1] << 8 | p[2] << 16;
    ASSERT_EQ(got[i], want) << i;
  }
  EXPECT_EQ(err([&](int& e) { yybitmaploadresource(2, kAboutIcon, kIconType, kGreen, e); }), zg::kErrorBitmapInUse);
  EXPECT_NE(err([&](int& e) { yybitmaploadresource(3, 987654, kIconType, kGreen, e); }), 0);
  EXPECT_FALSE(yybitmapsize(3, w, h));
}

TEST_F(Bitmaps, WrittenByTheImageWritersAndReadBackAlike) {
  int error = -1;
  const auto p = pattern(kW, kH);
  yybitmapputdata(1, p, error);
  const auto pixels = data(1);
  zelvy_graph::RasterPage page;
  ASSERT_TRUE(page.allocate(kW, kH, 24));
  for (int y = 0; y < kH; ++y)  // the page's row 0 is the bottom row
    for (int x = 0; x < kW; ++x)
      page.set(x, kH - 1 - y, static_cast<uint32_t>(pixels[static_cast<size_t>(y * kW + x)]));
  const std::string base = (fs::temp_directory_path() / ("zelv_bitmap_" + std::to_string(getpid()))).string();
  for (const char* ext : {".png", ".bmp"}) {
    const std::string file = base + ext;
    const auto r = std::string(ext) == ".png" ? yypng1(page, file) : yybmp1(page, file, false);
    ASSERT_EQ(r.error, 0) << ext;
    std::vector<int> back;
    IGrLoadImageData(file, back);
    EXPECT_EQ(back, p) << ext;
    yybitmapcreate(2, kW, kH, error);
    yybitmapputdata(2, back, error);
    EXPECT_EQ(data(2), p) << ext;
    yybitmapdestroy(2, error);
    fs::remove(file);
  }
}

TEST_F(Bitmaps, PictureFieldsAreDrawables) {
  constexpr int kAbout = 104, kIconField = 2001;
  WDialogLoad(kAbout);
  WDialogShow(10, 10, {}, 2);
  settle();
  ASSERT_TRUE(yywindrawable(zg::kDrawablePicture, kIconField));
  colour(kRed);
  yywinrectangle(0, 0, 3, 3, true);
  XSync(xdisplay(), False);
  EXPECT_EQ(at(1, 1), kRed);
  EXPECT_FALSE(yywindrawable(zg::kDrawablePicture, 1001));  // a label is no picture
  WDialogUnload();
}

TEST_F(Bitmaps, TheViewerShowsItsBitmapAndGuardsIt) {
  int error = -1;
  yybitmapcreate(2, 200, 120, error);
  ASSERT_TRUE(yywindrawable(zg::kDrawableBitmap, 2));
  colour(kRed);
  yywinrectangle(0, 0, 99, 59, true);
  colour(kBlue);
  yywinellipse(150, 80, 30, 20, true);
  yybitmapview(2, "bitmap", error);
  ASSERT_EQ(error, 0);
  const int win = yyBitmapViewWindow();
  ASSERT_GT(win, 0);
  EXPECT_EQ(yyBitmapViewHandle(), 2);
  settle();
  usleep(200000);
  settle();

  // What the window shows, kept as a picture.
  Window client = zelvy_win::state().wClient[win];
  XWindowAttributes wa{};
  ASSERT_TRUE(XGetWindowAttributes(xdisplay(), client, &wa));
  ASSERT_TRUE(yywindrawable(zg::kDrawableWindow, win));
  zelvy_graph::ImageData shot;
  shot.width = wa.width;
  shot.height = wa.height;
  int reds = 0, blues = 0;
  for (int y = 0; y < wa.height; ++y)
    for (int x = 0; x < wa.width; ++x) {
      const int c = at(x, y);
      shot.rgb.push_back(c);
      reds += c == kRed;
      blues += c == kBlue;
    }
  fs::create_directories(ZELV_SHOTS_DIR);
  std::ofstream(std::string(ZELV_SHOTS_DIR) + "/bitmap-viewer.png", std::ios::binary) << yypngencode(shot);
  EXPECT_GT(reds, 100 * 60 / 2);
  EXPECT_GT(blues, 500);

  // Destroying what the viewer shows is refused and changes neither.
  EXPECT_EQ(err([&](int& e) { yybitmapdestroy(2, e); }), zg::kErrorBitmapViewed);
  int w = 0, h = 0;
  EXPECT_TRUE(yybitmapsize(2, w, h));
  EXPECT_EQ(yyBitmapViewWindow(), win);

  // Turned, the viewer follows; closed, the bitmap can go.
  EXPECT_EQ(err([&](int& e) { yybitmaprotate(2, 90, e); }), 0);
  settle();
  yyBitmapViewClose();
  EXPECT_EQ(yyBitmapViewWindow(), -1);
  EXPECT_FALSE(yywindowexists(win));
  EXPECT_EQ(err([&](int& e) { yybitmapdestroy(2, e); }), 0);

  // A viewer left open goes with the root window, and the table with it.
  yybitmapcreate(2, 20, 20, error);
  yybitmapview(2, "again", error);
  EXPECT_GT(yyBitmapViewWindow(), 0);
  WindowClose();
  EXPECT_EQ(yyBitmapViewWindow(), -1);
  EXPECT_FALSE(yybitmapsize(2, w, h));
  WindowOpen(0, 0, 0, 300, 200, {}, {}, {}, "bitmaps");
}

}  // namespace
