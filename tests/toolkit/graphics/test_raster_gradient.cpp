// Gradients on the raster pages: runs written straight into pages of 8 and
// 24 bits cover the area without gaps and shade from one side to the other;
// a one-bit page still gets its ink through the fill patterns.
#include "graphics_fixture.h"
#include "toolkit/graphics/image_files.h"

#include <array>
#include <vector>

namespace {

constexpr int kWidth = 40, kHeight = 30;
constexpr int kRed = 0x0000FF, kBlue = 0xFF0000, kWhite = 0xFFFFFF;
constexpr int kBitsOption = 23, kFormatOption = 26, kPng = 3;

int red(int c) { return c & 0xFF; }
int blue(int c) { return (c >> 16) & 0xFF; }

class RasterGradient : public GraphicsTest {
 protected:
  // The page as a picture, rows from the top: red on the left, blue on the right.
  std::vector<int> shaded(int bits) {
    options_ = {{kBitsOption, bits}, {kFormatOption, kPng}};
    open(zelv_graphics::kDriverImage, false, kWidth, kHeight);
    IGrUnits(0, 0, kWidth, kHeight);
    const std::array<float, 4> x{0, kWidth, kWidth, 0}, y{0, 0, kHeight, kHeight};
    const std::array<int, 4> c{kRed, kBlue, kBlue, kRed};
    IGrGradient(x, y, c);
    close();
    std::vector<int> data;
    IGrLoadImageData(path_, data);
    return data;
  }
  static int at(const std::vector<int>& data, int x, int y) { return data[static_cast<size_t>(y * kWidth + x)]; }
};

TEST_F(RasterGradient, FullColourPageShadesAcrossWithoutGaps) {
  const auto data = shaded(24);
  ASSERT_EQ(data.size(), static_cast<size_t>(kWidth * kHeight));
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) ASSERT_NE(at(data, x, y), kWhite) << x << "," << y;
    // Red falls and blue rises from left to right, on every row nearly alike
    // (the area is shaded as two triangles).
    for (int x = 1; x < kWidth; ++x) {
      EXPECT_LE(red(at(data, x, y)), red(at(data, x - 1, y))) << x << "," << y;
      EXPECT_GE(blue(at(data, x, y)), blue(at(data, x - 1, y))) << x << "," << y;
    }
    EXPECT_NEAR(red(at(data, kWidth / 2, y)), red(at(data, kWidth / 2, 0)), 8) << y;
  }
  EXPECT_GT(red(at(data, 0, 0)), 230);
  EXPECT_GT(blue(at(data, kWidth - 1, 0)), 230);
  const int middle = at(data, kWidth / 2, kHeight / 2);
  EXPECT_NEAR(red(middle), 128, 24);
  EXPECT_NEAR(blue(middle), 128, 24);
}

TEST_F(RasterGradient, PalettePageTakesTheNearestColoursAndOneBitPageItsPatterns) {
  const auto palette = shaded(8);
  ASSERT_EQ(palette.size(), static_cast<size_t>(kWidth * kHeight));
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) ASSERT_NE(at(palette, x, y), kWhite) << x << "," << y;
  EXPECT_GT(red(at(palette, 0, kHeight / 2)), blue(at(palette, 0, kHeight / 2)));
  EXPECT_GT(blue(at(palette, kWidth - 1, kHeight / 2)), red(at(palette, kWidth - 1, kHeight / 2)));

  IGrHardcopy("S");
  const auto mono = shaded(1);
  ASSERT_EQ(mono.size(), static_cast<size_t>(kWidth * kHeight));
  int ink = 0;
  for (int c : mono) ink += c != kWhite;
  EXPECT_GT(ink, kWidth * kHeight / 4);
}

}  // namespace
