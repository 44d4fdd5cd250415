// Software text: where the glyphs land for size, angle and alignment, the
// advance and widths, blanks for codes without glyphs, and the fall-back from
// device text per path. Lines are read back from a DXF page whose raster is
// one unit a point, so the user units below are raster units.
#include "graphics_fixture.h"

#include <cmath>
#include <cstdlib>

namespace {

using namespace zelv_graphics;

struct Segment {
  float x1, y1, x2, y2;
};

class SoftTextTest : public GraphicsTest {
 protected:
  static constexpr float kSide = 719.99f;
  void SetUp() override {
    GraphicsTest::SetUp();
    open(kDriverDxf, false, 720, 720);
    IGrUnits(0, 0, kSide, kSide);
    IGrCharSize(0.01f, 0.02f);
    IGrCharType(1);
    w_ = gs().xpxlen * 0.01f;
    h_ = gs().ypxlen * 0.02f;
    xs_ = w_ / 7.68f;
    ys_ = h_ / 11.88f;
  }
  // Every straight piece of LINE and LWPOLYLINE entities, in raster units.
  std::vector<Segment> segments() {
    const float fx = gs().xscale, fy = gs().yscale;
    const auto lines = after(close(), "ENTITIES");
    std::vector<Segment> out;
    for (size_t i = 0; i < lines.size(); ++i) {
      if (lines[i] != "LINE" && lines[i] != "LWPOLYLINE") continue;
      std::vector<float> xs, ys;
      float ex = 0, ey = 0;
      size_t j = i + 1;
      for (; j + 1 < lines.size() && lines[j] != "0"; j += 2) {
        const float v = std::strtof(lines[j + 1].c_str(), nullptr);
        if (lines[j] == "10") xs.push_back(v / fx);
        else if (lines[j] == "20") ys.push_back(v / fy);
        else if (lines[j] == "11") ex = v / fx;
        else if (lines[j] == "21") ey = v / fy;
      }
      if (lines[i] == "LINE") out.push_back({xs[0], ys[0], ex, ey});
      for (size_t k = 0; lines[i] != "LINE" && k + 1 < xs.size(); ++k) out.push_back({xs[k], ys[k], xs[k + 1], ys[k + 1]});
      i = j - 1;
    }
    return out;
  }
  static bool has(const std::vector<Segment>& segs, float x1, float y1, float x2, float y2) {
    constexpr float kTol = 0.01f;
    for (const auto& s : segs)
      if (std::abs(s.x1 - x1) < kTol && std::abs(s.y1 - y1) < kTol && std::abs(s.x2 - x2) < kTol &&
          std::abs(s.y2 - y2) < kTol)
        return true;
    return false;
  }
  static float min_x(const std::vector<Segment>& segs) {
    float m = 1e9f;
    for (const auto& s : segs) m = std::min({m, s.x1, s.x2});
    return m;
  }
  float w_ = 0, h_ = 0, xs_ = 0, ys_ = 0;
};

TEST_F(SoftTextTest, GlyphSitsCentredInItsCellAndTurnsWithTheAngle) {
  // "I": top bar 2A-4A, stem 3A-32, foot 22-42 on the 6 by 11 grid.
  WGrTextString(100, 200, "I");
  IGrCharRotate(90);
  WGrTextString(300, 200, "I");
  const auto segs = segments();
  const float px = 100 + (w_ - 6 * xs_) / 2, py = 200 - h_ / 2;
  EXPECT_TRUE(has(segs, px + 3 * xs_, py + 10 * ys_, px + 3 * xs_, py + 2 * ys_));
  EXPECT_TRUE(has(segs, px + 2 * xs_, py + 10 * ys_, px + 4 * xs_, py + 10 * ys_));
  // A quarter turn: grid X runs up, grid Y runs left, the cell's foot on the right.
  const float qx = 300 + h_ / 2, qy = 200 + (w_ - 6 * xs_) / 2;
  EXPECT_TRUE(has(segs, qx - 10 * ys_, qy + 3 * xs_, qx - 2 * ys_, qy + 3 * xs_));
  EXPECT_TRUE(has(segs, qx - 10 * ys_, qy + 2 * xs_, qx - 10 * ys_, qy + 4 * xs_));
}

TEST_F(SoftTextTest, AlignmentMovesStartAndCurrentPoint) {
  const float cell = (w_ - 6 * xs_) / 2;
  for (int align : {0, 1, 2}) {
    IGrCharAlign(align);
    WGrTextString(100, 300 + 40 * static_cast<float>(align), "ABC");
    // Left: after the text; centre: half on plus half a cell; right: one cell on.
    const float expect[] = {100 + 3 * w_, 100 + 2 * w_, 100 + w_};
    EXPECT_NEAR(gs().xcur, expect[align], 1e-3) << align;
    EXPECT_NEAR(gs().ycur, 300 + 40 * static_cast<float>(align), 1e-3);
  }
  IGrCharAlign(0);
  WGrTextString(std::nullopt, std::nullopt, "A");  // at the current point
  EXPECT_NEAR(gs().xcur, 100 + 2 * w_, 1e-3);
  const auto segs = segments();
  // The A of the right-aligned text starts three cells back.
  std::vector<Segment> right;
  for (const auto& s : segs)
    if (std::abs(s.y1 - 380) < h_ && s.x1 < 100 && s.x2 < 100) right.push_back(s);
  EXPECT_NEAR(min_x(right), 100 - 3 * w_ + cell, 1e-2);
}

TEST_F(SoftTextTest, ProportionalWidthsAndCodesWithoutGlyphs) {
  EXPECT_FLOAT_EQ(WGrTextLength("AB C", 1), 4.0f);  // fixed pitch: the count
  IGrCharSpacing(1);
  EXPECT_NEAR(WGrTextLength("A", 1), 1.11f, 1e-5);
  EXPECT_NEAR(WGrTextLength(" \x01\x7F", 1), 2.1f, 1e-5);  // control and 127 are blanks
  EXPECT_NEAR(WGrTextLength("\x80", 1), 0.74f, 1e-5);  // the euro has its glyph
  EXPECT_TRUE(yygrtextspacing(200, 0, 1.25f));
  EXPECT_NEAR(WGrTextLength("\xC8", 1), 1.25f, 1e-5);
  gs().font.ichset = 7;  // no upper half: a blank
  EXPECT_NEAR(WGrTextLength("\xC8", 1), 0.7f, 1e-5);
  EXPECT_FALSE(yygrtextspacing(300, 1, 1));
  EXPECT_FALSE(yygrtextspacing(127, 1, 1));
  WGrTextString(100, 100, "AA");
  EXPECT_NEAR(gs().xcur, 100 + 2.22f * w_, 1e-3);
  WGrTextString(100, 500, "\xC8 \x80");  // the euro alone draws
  gs().font.icheuro = 0;
  WGrTextString(400, 500, "\x80");  // no euro glyph: nothing
  const auto segs = segments();
  int euro = 0, far = 0;
  for (const auto& s : segs) {
    if (std::abs(s.y1 - 500) < h_ && s.x1 < 200) ++euro;
    if (std::abs(s.y1 - 500) < h_ && s.x1 > 300) ++far;
  }
  EXPECT_GT(euro, 0);
  EXPECT_EQ(far, 0);
}

TEST_F(SoftTextTest, BoldStrokesDrawTwiceAsWide) {
  WGrTextString(100, 100, "I");
  IGrCharFont(2, 1);
  WGrTextString(100, 200, "I");
  const auto lines = after(close(), "ENTITIES");
  std::vector<std::string> widths;
  for (size_t i = 0; i + 1 < lines.size(); ++i)
    if (lines[i] == "39") widths.push_back(lines[i + 1]);
  ASSERT_EQ(widths.size(), 6u);
  EXPECT_EQ(widths.front(), "0.006944");
  EXPECT_EQ(widths.back(), "0.013889");
  EXPECT_EQ(gs().ihcopt[kOptLineWidth], 5);  // put back
}

TEST_F(SoftTextTest, StackedTextRunsDownFromThePoint) {
  IGrCharDirection(1);
  WGrTextString(100, 400, "II");
  EXPECT_NEAR(gs().xcur, 100, 1e-3);
  EXPECT_NEAR(gs().ycur, 400 - 2 * h_, 1e-3);
  const auto segs = segments();
  // The second stem hangs one cell under the first.
  const float px = 100 - 3 * xs_, py = 400 - (11 * ys_ + h_) / 2;
  EXPECT_TRUE(has(segs, px + 3 * xs_, py + 10 * ys_, px + 3 * xs_, py + 2 * ys_));
  EXPECT_TRUE(has(segs, px + 3 * xs_, py - h_ + 10 * ys_, px + 3 * xs_, py - h_ + 2 * ys_));
}

TEST_F(SoftTextTest, RatioRulesAndDefaultSize) {
  const float xp = gs().xpxlen, yp = gs().ypxlen;
  IGrCharRatio(2, 2.0f);  // width follows height: half of it
  IGrCharSize(0.01f, 0.04f);
  EXPECT_NEAR(gs().chsizx * xp, 0.04f * yp / 2, 1e-3);
  IGrCharRatio(3, 2.0f);  // the height asked is more than the width allows: width rule
  EXPECT_NEAR(gs().chsizx, 0.01f, 1e-6);
  EXPECT_NEAR(gs().chsizy * yp, 2 * 0.01f * xp, 1e-3);
  IGrCharSize(0.03f, 0.02f);  // now the height is the smaller
  EXPECT_NEAR(gs().chsizy, 0.02f, 1e-6);
  EXPECT_NEAR(gs().chsizx * xp, 0.02f * yp / 2, 1e-3);
  IGrCharRatio(0);
  IGrCharSize(0, -1);  // at or below 0: the defaults
  EXPECT_FLOAT_EQ(gs().chsizx, 0.0133333f);
  EXPECT_FLOAT_EQ(gs().chsizy, 0.0333333f);
}

class DeviceTextTest : public GraphicsTest {};

TEST_F(DeviceTextTest, UnturnableDeviceFallsBackAndClipsWholeCharacters) {
  open(kDriverHpgl, false, 720, 720);
  IGrUnits(0, 0, 719.99f, 719.99f);
  const float w = gs().xpxlen * gs().chsizx;
  WGrTextString(100, 100, "Device");
  WGrTextString(719.99f - 3.5f * w, 200, "ABCDEFGH");  // three whole characters fit
  gs().icsrot[2] = 0;
  IGrCharRotate(45);
  WGrTextString(100, 300, "Turned");
  const auto lines = close();
  EXPECT_EQ(count(lines, "LBDevice\x04"), 1);
  EXPECT_EQ(count(lines, "LBABC\x04"), 1);
  EXPECT_EQ(count(lines, "LBTurned"), 0);
  // The turned text came as filled outlines: many pen strokes after the label.
  size_t at = 0;
  for (size_t i = 0; i < lines.size(); ++i)
    if (lines[i] == "LBABC\x04") at = i;
  EXPECT_GT(std::count_if(lines.begin() + static_cast<std::ptrdiff_t>(at), lines.end(),
                          [](const std::string& l) { return l.rfind("PD", 0) == 0; }),
            50);
}

}  // namespace
