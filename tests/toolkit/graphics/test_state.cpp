// Units, area, clipping, rotation, palette and the nearest-colour rule, on
// hand-computed cases.
#include "graphics_fixture.h"

#include <cmath>

namespace {

constexpr float kTol = 1e-3f;

class StateTest : public GraphicsTest {};

TEST_F(StateTest, AreaAndUnitsMapToTheRaster) {
  // Default raster with the screen off: 1000 by 1000, top bound 999.99.
  IGrArea(0.25f, 0.5f, 0.75f, 1.0f);
  EXPECT_EQ(WInfoError(1), 0);
  EXPECT_NEAR(gs().xminpx, 250, kTol);
  EXPECT_NEAR(gs().xmaxpx, 750, kTol);
  EXPECT_NEAR(gs().yminpx, 500, kTol);
  EXPECT_NEAR(gs().ymaxpx, 999.99f, kTol);  // kept 0.01 inside the raster
  EXPECT_EQ(gs().iymxpx, 999);
  EXPECT_NEAR(gs().xminp2, 249.999f, kTol);
  IGrUnits(0, 0, 10, 10);
  float rx, ry;
  yye2i(5, 5, rx, ry);
  EXPECT_NEAR(rx, 500, kTol);
  EXPECT_NEAR(ry, 749.995f, kTol);
  float x, y;
  yyi2e(rx, ry, x, y);
  EXPECT_NEAR(x, 5, kTol);
  EXPECT_NEAR(y, 5, kTol);
}

TEST_F(StateTest, RotationTurnsTheMapping) {
  IGrArea(0, 0, 0.5f, 0.5f);  // raster box 0..500 both ways
  IGrUnits(0, 0, 10, 20);
  struct Case {
    int angle;
    float rx, ry;
  };
  // The point (2, 5) of units 10 by 20 on a 500 by 500 box.
  for (const Case c : {Case{0, 100, 125}, Case{90, 375, 100}, Case{180, 400, 375}, Case{270, 125, 400}}) {
    IGrUnitsRotate(c.angle);
    float rx, ry, x, y;
    yye2i(2, 5, rx, ry);
    EXPECT_NEAR(rx, c.rx, kTol) << c.angle;
    EXPECT_NEAR(ry, c.ry, kTol) << c.angle;
    yyi2e(rx, ry, x, y);
    EXPECT_NEAR(x, 2, kTol) << c.angle;
    EXPECT_NEAR(y, 5, kTol) << c.angle;
  }
  IGrUnitsRotate(45);  // not taken
  EXPECT_EQ(gs().igurot, 270);
}

TEST_F(StateTest, BadRangesResetTheirPairAndReport) {
  IGrArea(0.3f, 0.2f, 0.3f, 0.6f);
  EXPECT_EQ(WInfoError(1), 44);
  EXPECT_EQ(gs().xgamin, 0);
  EXPECT_EQ(gs().xgamax, 1);
  EXPECT_FLOAT_EQ(gs().ygamin, 0.2f);  // Y stands as given
  EXPECT_FLOAT_EQ(gs().ygamax, 0.6f);
  IGrArea(0, 0, 1.5f, 1);
  EXPECT_EQ(WInfoError(1), 44);
  IGrUnits(0, 5, 1, 2);
  EXPECT_EQ(WInfoError(1), 16);
  EXPECT_EQ(gs().ymin, 0);
  EXPECT_EQ(gs().ymax, 1);
}

TEST_F(StateTest, LinesAreClippedToTheBox) {
  IGrArea(0.1f, 0.1f, 0.5f, 0.5f);  // raster 100..500
  struct Case {
    float x1, y1, x2, y2;
    bool visible;
    float cx1, cy1, cx2, cy2;
  };
  const Case cases[] = {
      {200, 200, 300, 300, true, 200, 200, 300, 300},  // inside: unchanged
      {0, 0, 600, 600, true, 100, 100, 500, 500},      // both ends outside, through the box
      {300, 300, 700, 300, true, 300, 300, 500, 300},  // horizontal, one end out
      {300, 50, 300, 900, true, 300, 100, 300, 500},   // vertical across
      {300, 300, 900, 600, true, 300, 300, 500, 400},  // leaves through the right side
      {0, 600, 50, 0, false, 0, 0, 0, 0},              // wholly outside
      {600, 0, 900, 300, false, 0, 0, 0, 0},           // corner miss
  };
  for (const auto& c : cases) {
    float x1 = c.x1, y1 = c.y1, x2 = c.x2, y2 = c.y2;
    bool visible = false;
    yygrclip(x1, y1, x2, y2, visible);
    ASSERT_EQ(visible, c.visible) << c.x1 << "," << c.y1 << " " << c.x2 << "," << c.y2;
    if (!visible) continue;
    EXPECT_NEAR(x1, c.cx1, 0.01f);
    EXPECT_NEAR(y1, c.cy1, 0.01f);
    EXPECT_NEAR(x2, c.cx2, 0.01f);
    EXPECT_NEAR(y2, c.cy2, 0.01f);
  }
}

TEST_F(StateTest, PaletteIsTheTable) {
  yygrpaletteinit();
  const auto& p = gs().irgb256;
  // First entry and step of each row of sixteen.
  const int rows[16][2] = {{0xFFFFFF, -0x040404}, {0xC3, 4},          {0x83, 4},           {0xC3C3, 0x0404},
                           {0x8383, 0x0404},      {0xC300, 0x0400},   {0x8300, 0x0400},    {0xC3C300, 0x040400},
                           {0x838300, 0x040400},  {0xC30000, 0x040000}, {0x830000, 0x040000}, {0xC300C3, 0x040004},
                           {0x830083, 0x040004},  {0x3C3C3C, -0x040404}, {0x7C7C7C, -0x040404}, {0xBFBFBF, -0x040404}};
  for (int r = 0; r < 16; ++r)
    for (int i = 0; i < 16; ++i) ASSERT_EQ(p[static_cast<size_t>(16 * r + i)], rows[r][0] + i * rows[r][1]) << r << " " << i;
  // Landmarks: white first, reds end in full red, 223 black, 255 a mid grey.
  EXPECT_EQ(p[0], 0xFFFFFF);
  EXPECT_EQ(p[31], 0x0000FF);
  EXPECT_EQ(p[zelv_graphics::kPaletteBlack], 0x000000);
  EXPECT_EQ(p[159], 0xFF0000);
  EXPECT_EQ(p[255], 0x838383);
}

TEST_F(StateTest, NearestColourInTheCone) {
  EXPECT_EQ(yyrgbto8(0xFFFFFF), 0);      // exact, first of equals
  EXPECT_EQ(yyrgbto8(0x000000), 223);
  EXPECT_EQ(yyrgbto8(0x0000C4), 16);     // just above the first red
  EXPECT_EQ(yyrgbto8(0x0000FE), 31);     // just below full red
  EXPECT_EQ(yyrgbto8(0x414141), 239);    // beside the grey 404040
  EXPECT_EQ(yyrgbto8(0x00E400), 88);     // between greens E300 and E700, nearer the first
  EXPECT_EQ(yyrgbto8(0x858300), 128);    // beside the first dark cyan
  EXPECT_EQ(yyrgbto8(0xC4C4C4), 15);     // a light grey stays grey, not a pale colour
  // Hue matters: an orange between red and yellow lands in the red or yellow rows.
  const int orange = yyrgbto8(0x0060FF);
  EXPECT_TRUE(orange >= 16 && orange < 80) << orange;
}

TEST_F(StateTest, SegmentCrossings) {
  float x, y;
  int status;
  IGrIntersectLine(0, 0, 2, 2, 0, 2, 2, 0, x, y, status);
  EXPECT_EQ(status, 5);
  EXPECT_FLOAT_EQ(x, 1);
  EXPECT_FLOAT_EQ(y, 1);
  IGrIntersectLine(0, 0, 1, 0, 3, -1, 3, 1, x, y, status);
  EXPECT_EQ(status, 4);  // on the second only
  EXPECT_FLOAT_EQ(x, 3);
  IGrIntersectLine(0, -1, 0, 1, 1, 0, 2, 0, x, y, status);
  EXPECT_EQ(status, 3);  // on the first only
  IGrIntersectLine(0, 0, 1, 1, 5, 0, 6, -2, x, y, status);
  EXPECT_EQ(status, 2);
  IGrIntersectLine(0, 0, 1, 1, 0, 1, 1, 2, x, y, status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(x, 0);
  IGrIntersectLine(0, 0, 1, 1, 2, 2, 3, 3, x, y, status);
  EXPECT_EQ(status, 0);
}

TEST_F(StateTest, FillStepSizes) {
  auto& s = gs();
  s.nxgraf = s.nygraf = 1000;
  s.ifstyl = zelv_graphics::kFillHatch;
  float xs, ys, inset;
  int xi, yi;
  bool diagonal;
  yygrfillstepsize(1, 1, xs, ys, xi, yi, inset, diagonal);
  EXPECT_EQ(yi, 33);
  yygrfillstepsize(1, 2, xs, ys, xi, yi, inset, diagonal);
  EXPECT_EQ(yi, 25);
  EXPECT_FALSE(diagonal);
  s.nxgraf = s.nygraf = 20;
  s.xngraf = s.yngraf = 19.99f;
  yygrfillstepsize(1, 3, xs, ys, xi, yi, inset, diagonal);
  EXPECT_EQ(yi, 2);  // screen minimum
  EXPECT_EQ(xi, 2);
  yygrfillstepsize(2, 3, xs, ys, xi, yi, inset, diagonal);
  EXPECT_EQ(yi, 1);  // hardcopy minimum
  EXPECT_TRUE(diagonal);
  s.ifstyl = zelv_graphics::kFillSolid;
  yygrfillstepsize(1, 1, xs, ys, xi, yi, inset, diagonal);
  EXPECT_EQ(yi, 1);
}

}  // namespace
