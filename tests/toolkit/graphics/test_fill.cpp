// Polygon fill: holes and self-crossings by the even-odd rule, degenerate
// shapes, the active-edge limit, very large polygons, gradients.
#include "graphics_fixture.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <set>

namespace {

struct Segment {
  float x1, y1, x2, y2;
};

// The <line> elements of an SVG file, in raster coordinates (Y up again).
std::vector<Segment> svg_lines(const std::vector<std::string>& lines, float pageheight) {
  std::vector<Segment> out;
  for (const auto& l : lines) {
    Segment s{};
    if (std::sscanf(l.c_str(), "<line x1=\"%f\" y1=\"%f\" x2=\"%f\" y2=\"%f\"", &s.x1, &s.y1, &s.x2, &s.y2) == 4) {
      s.y1 = pageheight - s.y1;
      s.y2 = pageheight - s.y2;
      out.push_back(s);
    }
  }
  return out;
}

// Horizontal segments on the row nearest to y, as sorted x ranges.
std::vector<std::pair<float, float>> row(const std::vector<Segment>& segs, float y) {
  float best = 1e9f;
  for (const auto& s : segs)
    if (s.y1 == s.y2 && std::abs(s.y1 - y) < std::abs(best - y)) best = s.y1;
  std::vector<std::pair<float, float>> out;
  for (const auto& s : segs)
    if (s.y1 == s.y2 && s.y1 == best) out.emplace_back(std::min(s.x1, s.x2), std::max(s.x1, s.x2));
  std::sort(out.begin(), out.end());
  return out;
}

class FillTest : public GraphicsTest {
 protected:
  // Horizontal hatch without the outline, so that only scan lines are written.
  void rows_only(int density = 1) {
    IGrFillPattern(zelv_graphics::kFillHatch, density, 3);
    gs().ifbord = 0;
  }
  void poly(const std::vector<float>& x, const std::vector<float>& y) {
    yygrpolygoncomplex(x.data(), y.data(), static_cast<int>(x.size()), 1);
  }
};

TEST_F(FillTest, HoleStaysEmpty) {
  open(zelv_graphics::kDriverSvg);
  rows_only();
  // One outline: the outer square, a bridge in, the hole the other way round.
  poly({100, 300, 300, 100, 100, 150, 150, 250, 250, 150}, {100, 100, 300, 300, 100, 150, 250, 250, 150, 150});
  const auto segs = svg_lines(close(), 480);
  const auto mid = row(segs, 200);
  ASSERT_EQ(mid.size(), 2u);
  EXPECT_NEAR(mid[0].first, 100, 0.1);
  EXPECT_NEAR(mid[0].second, 150, 0.1);
  EXPECT_NEAR(mid[1].first, 250, 0.1);
  EXPECT_NEAR(mid[1].second, 300, 0.1);
  // Above the hole the row runs across.
  const auto top = row(segs, 290);
  ASSERT_FALSE(top.empty());
  EXPECT_NEAR(top.front().first, 100, 0.1);
  EXPECT_NEAR(top.back().second, 300, 0.1);
}

TEST_F(FillTest, SelfCrossingStarLeavesItsCoreEmpty) {
  open(zelv_graphics::kDriverSvg);
  rows_only(3);
  std::vector<float> x, y;
  for (int k = 0; k < 5; ++k) {
    const double a = M_PI / 2 + k * 4 * M_PI / 5;
    x.push_back(320 + 150 * static_cast<float>(std::cos(a)));
    y.push_back(240 + 150 * static_cast<float>(std::sin(a)));
  }
  poly(x, y);
  const auto segs = svg_lines(close(), 480);
  const auto mid = row(segs, 240);
  ASSERT_GE(mid.size(), 2u);
  for (const auto& [a, b] : mid) EXPECT_FALSE(a < 320 && b > 320) << a << ".." << b;
}

TEST_F(FillTest, RepeatedFirstVertexChangesNothing) {
  const std::vector<float> x{100, 300, 200}, y{100, 120, 300};
  open(zelv_graphics::kDriverSvg);
  IGrFillPattern(zelv_graphics::kFillCrossHatch, 2, 1);
  poly(x, y);
  const auto open_form = close();
  open(zelv_graphics::kDriverSvg);
  IGrFillPattern(zelv_graphics::kFillCrossHatch, 2, 1);
  poly({100, 300, 200, 100}, {100, 120, 300, 100});
  EXPECT_EQ(close(), open_form);
}

TEST_F(FillTest, FlatPolygonIsOneLine) {
  open(zelv_graphics::kDriverSvg);
  rows_only();
  poly({100, 250, 180}, {200, 200, 200});
  const auto segs = svg_lines(close(), 480);
  ASSERT_EQ(segs.size(), 1u);
  EXPECT_NEAR(segs[0].x1, 100, 0.1);
  EXPECT_NEAR(segs[0].x2, 250, 0.1);
}

TEST_F(FillTest, OutsideShapesSendNothing) {
  open(zelv_graphics::kDriverSvg);
  IGrArea(0, 0, 0.5f, 0.5f);
  IGrUnits(0, 0, 1, 1);
  IGrFillPattern(zelv_graphics::kFillSolid);
  IGrRectangle(1.5f, 1.5f, 1.8f, 1.9f);
  poly({500, 600, 550}, {400, 400, 470});
  const auto lines = close();
  EXPECT_EQ(count(lines, "fill:#"), 0);
  EXPECT_EQ(count(lines, "<polygon"), 0);
}

TEST_F(FillTest, ActiveEdgeLimit) {
  // A saw of n teeth crosses its middle row with 2n edges.
  auto saw = [&](int teeth) {
    std::vector<float> x, y;
    for (int i = 0; i < teeth; ++i) {
      x.insert(x.end(), {10.0f + 6.0f * static_cast<float>(i), 13.0f + 6.0f * static_cast<float>(i)});
      y.insert(y.end(), {100, 400});
    }
    x.push_back(10.0f + 6.0f * static_cast<float>(teeth));
    y.push_back(100);
    return std::pair{x, y};
  };
  open(zelv_graphics::kDriverSvg);
  rows_only();
  auto [x49, y49] = saw(49);
  poly(x49, y49);
  EXPECT_EQ(WInfoError(1), 0);
  auto [x50, y50] = saw(50);
  poly(x50, y50);
  EXPECT_EQ(WInfoError(1), 49);
  // The bracket was closed: the file ends well.
  const auto lines = close();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), "</g></svg>");
}

TEST_F(FillTest, HundredThousandVertices) {
  constexpr int kVertices = 100000;
  std::vector<float> cx(kVertices), cy(kVertices), rx(kVertices), ry(kVertices);
  std::mt19937 random(7);
  std::uniform_real_distribution<float> coordinate(20, 460);
  for (int i = 0; i < kVertices; ++i) {
    const double a = 2 * M_PI * i / kVertices;
    const float r = 200 + 20 * static_cast<float>(std::sin(50 * a));
    cx[static_cast<size_t>(i)] = 320 + r * static_cast<float>(std::cos(a));
    cy[static_cast<size_t>(i)] = 240 + r * static_cast<float>(std::sin(a));
    rx[static_cast<size_t>(i)] = coordinate(random);
    ry[static_cast<size_t>(i)] = coordinate(random);
  }
  const auto start = std::chrono::steady_clock::now();
  open(zelv_graphics::kDriverPostScript);
  for (int style : {zelv_graphics::kFillSolid, zelv_graphics::kFillHatch}) {
    IGrFillPattern(style, 1, 3);
    poly(cx, cy);  // a wavy ring: few edges on any row
    EXPECT_EQ(WInfoError(1), 0) << style;
  }
  IGrFillPattern(zelv_graphics::kFillCrossHatch, 1, 1);
  poly(cx, cy);  // diagonal hatch, every hatch line against every edge
  IGrFillPattern(zelv_graphics::kFillHatch, 1, 3);
  poly(rx, ry);  // a random tangle: stops at the edge limit, without harm
  EXPECT_EQ(WInfoError(1), 49);
  const auto lines = close();
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_LT(seconds, 30.0);
  EXPECT_GT(lines.size(), static_cast<size_t>(kVertices));
  EXPECT_EQ(lines.back(), "%%EOF");
}

TEST_F(FillTest, FarOffShapesStayBounded) {
  // A triangle reaching far beyond the page: hatched and scanned only where
  // the box can show it.
  const auto start = std::chrono::steady_clock::now();
  open(zelv_graphics::kDriverSvg);
  IGrFillPattern(zelv_graphics::kFillCrossHatch, 4, 1);
  poly({-1e8f, 1e8f, 320}, {-1e8f, -1e8f, 1e8f});
  rows_only(4);
  poly({-1e8f, 1e8f, 320}, {-1e8f, -1e8f, 1e8f});
  IGrGradient(std::vector<float>{-1e9f, 1e9f, 0.5f}, std::vector<float>{-1e9f, -1e9f, 1e9f},
              std::vector<int>{0xFF, 0xFF00, 0xFF0000});
  const auto lines = close();
  EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 10.0);
  const auto segs = svg_lines(lines, 480);
  EXPECT_GT(segs.size(), 50u);
  for (const auto& sg : segs) {
    EXPECT_GE(std::min(sg.x1, sg.x2), -0.01f);
    EXPECT_LE(std::max(sg.x1, sg.x2), 640.01f);
  }
  // The page is covered: a row through the middle spans it.
  const auto mid = row(segs, 240);
  ASSERT_EQ(mid.size(), 1u);
  EXPECT_NEAR(mid[0].first, 0, 0.1);
  EXPECT_NEAR(mid[0].second, 640, 0.1);
}

TEST_F(FillTest, PolylineRunsAreCutAtTheBox) {
  open(zelv_graphics::kDriverSvg, false, 640, 480);
  IGrArea(0.25f, 0, 0.75f, 1);  // raster X 160..480; points in raster units
  // In, out to the right, back in, out and back through without a point inside.
  const std::vector<float> x{200, 300, 600, 400, 700, 700, 0};
  const std::vector<float> y{100, 100, 100, 200, 200, 300, 300};
  yygrpolyline(x.data(), y.data(), static_cast<int>(x.size()), 1);
  yygrpolyline(x.data(), y.data(), 1, 1);  // one point: nothing
  std::vector<std::string> polylines;
  for (const auto& l : close())
    if (l.starts_with("<polyline")) polylines.push_back(l);
  ASSERT_EQ(polylines.size(), 3u) << ::testing::PrintToString(polylines);
  EXPECT_NE(polylines[0].find("=\"200.00,380.00 300.00,380.00 480.01,380.00\""), std::string::npos) << polylines[0];
  EXPECT_NE(polylines[1].find("=\"480.01,320.00 400.01,280.00 480.01,280.00\""), std::string::npos) << polylines[1];
  EXPECT_NE(polylines[2].find("=\"480.01,179.99 160.00,179.99\""), std::string::npos) << polylines[2];
}

TEST_F(FillTest, DecompositionCoversThePolygon) {
  auto area = [](const std::vector<float>& x, const std::vector<float>& y, const std::vector<int>& idx, size_t i) {
    const auto a = static_cast<size_t>(idx[i]), b = static_cast<size_t>(idx[i + 1]), c = static_cast<size_t>(idx[i + 2]);
    return std::abs((x[b] - x[a]) * (y[c] - y[a]) - (y[b] - y[a]) * (x[c] - x[a])) / 2;
  };
  // An L of area 3 and a convex pentagon, both windings.
  for (bool reverse : {false, true}) {
    std::vector<float> x{0, 2, 2, 1, 1, 0}, y{0, 0, 1, 1, 2, 2};
    if (reverse) {
      std::reverse(x.begin(), x.end());
      std::reverse(y.begin(), y.end());
    }
    std::vector<int> tri;
    yypolygondecompose(x, y, tri);
    ASSERT_EQ(tri.size(), 12u);
    float total = 0;
    for (size_t i = 0; i < tri.size(); i += 3) total += area(x, y, tri, i);
    EXPECT_FLOAT_EQ(total, 3);
  }
  std::vector<int> tri;
  yypolygondecompose({0, 1}, {0, 1}, tri);
  EXPECT_TRUE(tri.empty());
}

// Distinct fill colours of an SVG file.
std::set<std::string> fills(const std::vector<std::string>& lines) {
  std::set<std::string> out;
  for (const auto& l : lines)
    if (auto p = l.find("fill:#"); p != std::string::npos) out.insert(l.substr(p + 6, 6));
  return out;
}

TEST_F(FillTest, GradientsSmoothAndStepped) {
  const std::vector<float> x{0.1f, 0.4f, 0.4f, 0.1f}, y{0.1f, 0.1f, 0.4f, 0.4f};
  const std::vector<int> c{0x0000FF, 0x0000FF, 0xFF0000, 0xFF0000};  // red below, blue above
  open(zelv_graphics::kDriverSvg);
  IGrGradient(x, y, c, 4);
  const auto banded = fills(close());
  EXPECT_GE(banded.size(), 4u);
  EXPECT_LE(banded.size(), 8u);
  const std::set<std::string> levels{"00", "55", "AA", "FF"};
  for (const auto& f : banded)
    for (size_t k = 0; k < 6; k += 2) EXPECT_TRUE(levels.contains(f.substr(k, 2))) << f;
  open(zelv_graphics::kDriverSvg);
  IGrGradient(x, y, c);
  EXPECT_GT(fills(close()).size(), 100u);
  // Vertices on one spot become one, with the mean colour.
  IGrGradient(std::vector<float>{0.1f, 0.1f, 0.5f, 0.3f}, std::vector<float>{0.1f, 0.1f, 0.1f, 0.5f},
              std::vector<int>{0x0000FF, 0x000000, 0x00FF00, 0xFF0000});
  EXPECT_EQ(gs().nshvert, 3);
  EXPECT_EQ(gs().ishadec[0], 0x00007F);
}

}  // namespace
