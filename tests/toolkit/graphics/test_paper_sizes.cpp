// The PostScript document on every paper of the table, portrait and
// landscape: the page size it asks for and where its printed area lands,
// both read back by the PostScript interpreter; the page size and margins
// following each other as options change.
#include "graphics_fixture.h"
#include "toolkit/base/zelvy_data.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace {

using namespace zelv_graphics;
namespace fs = std::filesystem;

constexpr int kOptOffsetX = 3, kOptOffsetY = 4, kOptPaper = 33, kOptLeft = 34, kOptTop = 35, kOptRight = 36,
              kOptBottom = 37;
constexpr int kRgb = 0, kBlack = 0;
// The driver's own margins: left, top, right, bottom in points.
constexpr std::array<int, 4> kDriverMargins{43, 28, 43, 27};

// What the interpreter makes of a document: the box round the marks on its
// page (left, bottom, right, top, in points) and the page size it was set to.
struct ReadBack {
  std::array<int, 4> box{-1, -1, -1, -1};
  int width = 0, height = 0;
};
ReadBack read_back(const std::string& ps) {
  const std::string cmd = "gs -q -dNOPAUSE -dBATCH -dSAFER -sDEVICE=bbox " + ps +
                          " -c 'currentpagedevice /PageSize get ==' 2>&1";
  ReadBack r;
  if (FILE* p = ::popen(cmd.c_str(), "r")) {
    std::array<char, 256> buf{};
    while (std::fgets(buf.data(), buf.size(), p)) {
      std::sscanf(buf.data(), "%%%%BoundingBox: %d %d %d %d", &r.box[0], &r.box[1], &r.box[2], &r.box[3]);
      std::sscanf(buf.data(), "[%d %d]", &r.width, &r.height);
    }
    ::pclose(p);
  }
  return r;
}

class PaperTest : public GraphicsTest {
 protected:
  void SetUp() override {
    GraphicsTest::SetUp();
    if (std::system("gs --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "no PostScript interpreter";
  }
  // A document on the paper, the printed area filled black from edge to edge.
  void print_filled(int paper, int orientation) {
    IGrHardcopySelect(1, kDriverPostScript);
    IGrHardcopyOptions(kOptOrientation, orientation);
    IGrHardcopyOptions(kOptPaper, paper);
    path_ = (fs::temp_directory_path() / ("zelv_paper_" + std::to_string(::getpid()) + "_" +
                                          std::to_string(paper) + "_" + std::to_string(orientation) + ".ps"))
                .string();
    IGrHardcopy(path_);
    IGrArea(0, 0, 1, 1);
    IGrUnits(0, 0, 1, 1);
    IGrFillPattern(kFillSolid);
    IGrColourModel(kRgb);
    IGrColourN(kBlack);
    IGrRectangle(0, 0, 1, 1);
    IGrHardcopy("S");
  }
  std::vector<std::string> lines() const {
    std::ifstream in(path_);
    std::vector<std::string> out;
    for (std::string l; std::getline(in, l);) out.push_back(l);
    return out;
  }
};

// Each paper keeps its upright size on the device; landscape turns the
// printed area on it: the area's left margin runs along the paper's bottom.
TEST_F(PaperTest, EveryPaperSetsItsPageAndPlacesTheAreaByOrientation) {
  for (int paper = 1; paper <= zelvy_data::kPaperCount; ++paper) {
    const auto& p = zelvy_data::paper_size(paper);
    for (int orientation : {0, 1}) {
      SCOPED_TRACE(std::string(p.name) + (orientation == 1 ? " landscape" : " portrait"));
      print_filled(paper, orientation);
      const auto text = lines();
      char media[96];
      std::snprintf(media, sizeof media, " %6d %6d 0 () ()", p.width, p.height);
      EXPECT_EQ(count(text, media), 1);
      EXPECT_EQ(count(text, orientation == 1 ? "%%Orientation: Landscape" : "%%Orientation: Portrait"), 1);
      const ReadBack page = read_back(path_);
      EXPECT_EQ(page.width, p.width);
      EXPECT_EQ(page.height, p.height);

      const auto [left, top, right, bottom] = kDriverMargins;
      std::array<int, 4> want{};
      if (orientation == 0) {
        want = {left, bottom, p.width - right, p.height - top};
      } else {
        // Turned a quarter to the left: top margin at the device's left,
        // left margin at its bottom.
        want = {top, left, p.width - bottom, p.height - right};
      }
      for (size_t i = 0; i < want.size(); ++i) EXPECT_NEAR(page.box[i], want[i], 2) << "side " << i;
    }
  }
}

// A page size of its own keeps the paper, the left and top margins; right
// and bottom follow, and the paper's name and size stay in the document.
TEST_F(PaperTest, OwnPageSizeSitsOnThePaperAtItsMargins) {
  constexpr int kLegal = 8, kWidth = 300, kHeight = 200;
  IGrHardcopySelect(1, kDriverPostScript);
  IGrHardcopyOptions(kOptOrientation, 0);
  IGrHardcopyOptions(kOptPaper, kLegal);
  IGrHardcopyOptions(kOptPageWidth, kWidth);
  IGrHardcopyOptions(kOptPageHeight, kHeight);
  auto& o = gs().ihcopt;
  EXPECT_EQ(o[kOptLeft], 43);
  EXPECT_EQ(o[kOptTop], 28);
  EXPECT_EQ(o[kOptRight], 612 - 43 - kWidth);
  EXPECT_EQ(o[kOptBottom], 1008 - 28 - kHeight);
  path_ = (fs::temp_directory_path() / ("zelv_paper_own_" + std::to_string(::getpid()) + ".ps")).string();
  IGrHardcopy(path_);
  IGrArea(0, 0, 1, 1);
  IGrUnits(0, 0, 1, 1);
  IGrFillPattern(kFillSolid);
  IGrColourModel(kRgb);
  IGrColourN(kBlack);
  IGrRectangle(0, 0, 1, 1);
  IGrHardcopy("S");
  EXPECT_EQ(count(lines(), "%%DocumentMedia: Legal    612   1008 0 () ()"), 1);
  const ReadBack page = read_back(path_);
  EXPECT_EQ(page.width, 612);
  const std::array<int, 4> want{43, 1008 - 28 - kHeight, 43 + kWidth, 1008 - 28};
  for (size_t i = 0; i < want.size(); ++i) EXPECT_NEAR(page.box[i], want[i], 2) << "side " << i;
}

// Options and the page: a paper outside the table changes nothing; margins
// give the size and offsets; offsets give the margins; a turn of the paper
// keeps the margins of the last conversion; a driver without paper stores
// the paper alone.
TEST_F(GraphicsTest, PaperAndMarginOptionsKeepThePageInStep) {
  IGrHardcopySelect(1, kDriverPostScript);
  auto& o = gs().ihcopt;
  IGrHardcopyOptions(kOptOrientation, 0);
  IGrHardcopyOptions(kOptPaper, 4);  // A3
  EXPECT_EQ(gs().ihcpaper, (std::array<int, 2>{842, 1190}));
  EXPECT_EQ(o[kOptPageWidth], 842 - 86);
  EXPECT_EQ(o[kOptPageHeight], 1190 - 55);
  for (int bad : {0, zelvy_data::kPaperCount + 1}) {
    IGrHardcopyOptions(kOptPaper, bad);
    EXPECT_EQ(o[kOptPaper], 4);
    EXPECT_EQ(gs().ihcpaper[0], 842);
  }
  IGrHardcopyOptions(kOptRight, 100);
  EXPECT_EQ(o[kOptPageWidth], 842 - 143);
  EXPECT_EQ(o[kOptOffsetX], 43);
  IGrHardcopyOptions(kOptOffsetX, 60);
  EXPECT_EQ(o[kOptLeft], 60);
  EXPECT_EQ(o[kOptRight], 842 - 60 - (842 - 143));
  // Turned after a size was set: the size stays, the margins follow it.
  const int width = o[kOptPageWidth], height = o[kOptPageHeight];
  IGrHardcopyOptions(kOptOrientation, 1);
  EXPECT_EQ(o[kOptPageWidth], width);
  EXPECT_EQ(o[kOptPageHeight], height);
  EXPECT_EQ(o[kOptBottom], 0);  // 1135 high doesn't fit 842: no negative margin
  // Margins meeting leave a page of one point, never none.
  IGrHardcopyOptions(kOptLeft, 1000);
  EXPECT_EQ(o[kOptPageWidth], 1);

  IGrHardcopySelect(1, kDriverSvg);
  IGrHardcopyOptions(kOptPageWidth, 400);
  IGrHardcopyOptions(kOptPaper, 9);
  EXPECT_EQ(o[kOptPaper], 9);
  EXPECT_EQ(o[kOptPageWidth], 400);
}

}  // namespace
