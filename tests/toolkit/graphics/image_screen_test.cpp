// Pictures and the screen, on the test fixture's X server: a picture put into
// an area comes back the same when the area is saved, turned and stretched as
// asked.
#include <gtest/gtest.h>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/image_files.h"
#include "toolkit/graphics/image_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

#include <unistd.h>
// X last: its macros collide with the test framework's names.
#include <X11/Xlib.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr int kW = 30, kH = 20;

class ScreenPictures : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { WInitialise(); }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    WindowOpen(0, 0, 0, 200, 150, {}, {}, {}, "pictures");
    settle();
    IGrInit("");
    zelvy_data::data().ierr = 0;
    for (int y = 0; y < kH; ++y)
      for (int x = 0; x < kW; ++x) picture[static_cast<size_t>(y * kW + x)] = x * 8 | (y * 12) << 8 | ((x + y) * 4) << 16;
  }
  void TearDown() override {
    WindowClose();
    std::error_code ec;
    fs::remove(file, ec);
  }
  static void settle() {
    XSync(xdisplay(), False);
    int type = 0;
    MessageRecord m;
    for (int i = 0; i < 200; ++i) {
      WMessagePeek(type, m);
      if (type == -1) {
        XSync(xdisplay(), False);
        WMessagePeek(type, m);
        if (type == -1) break;
      }
    }
  }
  // The area saved as a PNG and loaded again.
  std::vector<int> saved(int x1, int y1, int x2, int y2, int type = zelv_graphics::kFilePng) {
    XSync(xdisplay(), False);
    int error = -1, status = -1;
    yysaveimage(type, x1, y1, x2, y2, 95, 72, error, status, file);
    EXPECT_EQ(error, 0);
    std::vector<int> data;
    IGrLoadImageData(file, data);
    return data;
  }

  std::vector<int> picture = std::vector<int>(kW * kH);
  std::string file = (fs::temp_directory_path() / ("zelv_screen_" + std::to_string(getpid()) + ".img")).string();
};

TEST_F(ScreenPictures, PutAndSavedComeBackAlike) {
  int error = -1;
  yyloadimage(zelv_graphics::kFilePng, kW, kH, 10, 10, 10 + kW - 1, 10 + kH - 1, false, 0, 0, picture, error);
  ASSERT_EQ(error, 0);
  EXPECT_EQ(saved(10, 10, 10 + kW - 1, 10 + kH - 1), picture);
  // The other writers give the same pixels (JPEG within its loss).
  EXPECT_EQ(saved(10, 10, 10 + kW - 1, 10 + kH - 1, zelv_graphics::kFileBmp), picture);
  EXPECT_EQ(saved(10, 10, 10 + kW - 1, 10 + kH - 1, zelv_graphics::kFilePcx), picture);
  const auto jpeg = saved(10, 10, 10 + kW - 1, 10 + kH - 1, zelv_graphics::kFileJpeg);
  ASSERT_EQ(jpeg.size(), picture.size());
  // Outside the window the pixels come through a pixmap: no failure.
  EXPECT_EQ(saved(190, 140, 220, 160).size(), 31u * 21u);
}

TEST_F(ScreenPictures, TurnedAndStretched) {
  // A quarter turn: target columns follow source rows from the last; twice
  // the size by sampling repeats each pixel.
  int error = -1;
  yyloadimage(zelv_graphics::kFilePng, kW, kH, 0, 0, 2 * kH - 1, 2 * kW - 1, true, 1, 90, picture, error);
  ASSERT_EQ(error, 0);
  const auto got = saved(0, 0, 2 * kH - 1, 2 * kW - 1);
  ASSERT_EQ(got.size(), static_cast<size_t>(4 * kW * kH));
  for (int j = 0; j < 2 * kW; ++j)
    for (int i = 0; i < 2 * kH; ++i)
      ASSERT_EQ(got[static_cast<size_t>(j * 2 * kH + i)], picture[static_cast<size_t>((kH - 1 - i / 2) * kW + j / 2)])
          << i << "," << j;
  // Half the size by the mean of each two by two.
  yyloadimage(zelv_graphics::kFilePng, kW, kH, 0, 0, kW / 2 - 1, kH / 2 - 1, true, 0, 180, picture, error);
  const auto half = saved(0, 0, kW / 2 - 1, kH / 2 - 1);
  ASSERT_EQ(half.size(), static_cast<size_t>(kW * kH / 4));
  auto mean = [&](int shift, int i, int j) {
    int sum = 0;
    for (int dy = 0; dy < 2; ++dy)
      for (int dx = 0; dx < 2; ++dx)
        sum += (picture[static_cast<size_t>((kH - 1 - (2 * j + dy)) * kW + kW - 1 - (2 * i + dx))] >> shift) & 0xFF;
    return sum / 4;
  };
  EXPECT_EQ(half[0] & 0xFF, mean(0, 0, 0));
  EXPECT_EQ((half[static_cast<size_t>(3 * kW / 2 + 4)] >> 8) & 0xFF, mean(8, 4, 3));
}

TEST_F(ScreenPictures, FilesIntoTheWindow) {
  int width = 0, height = 0, error = -1, status = -1;
  yyloadimagetodrawable("/nonexistent/picture.png", 0, 0, 0, 9, 9, width, height, false, 0, error, status);
  EXPECT_EQ(error, 1);
  EXPECT_EQ(WInfoError(1), 0);  // held back from the error state
  yyloadimage(zelv_graphics::kFilePng, kW, kH, 0, 0, kW - 1, kH - 1, false, 0, 0, picture, error);
  saved(0, 0, kW - 1, kH - 1);
  yyloadimagetodrawable(file, 0, 50, 50, 50 + kW - 1, 50 + kH - 1, width, height, false, 0, error, status);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(width, kW);
  EXPECT_EQ(saved(50, 50, 50 + kW - 1, 50 + kH - 1), picture);
  yysaveimage(0, 0, 0, 9, 9, 80, 72, error, status, file);
  EXPECT_EQ(error, 1094);  // the clipboard isn't served here
}

}  // namespace
