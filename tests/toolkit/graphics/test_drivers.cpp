// The PostScript and SVG drivers: file layout, number output, path merging,
// colours and their options, text escapes, style groups.
#include "graphics_fixture.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>

namespace {

using namespace zelv_graphics;

class PostTest : public GraphicsTest {};
class SvgTest : public GraphicsTest {};

TEST_F(PostTest, DocumentSetUpAndEmptyPage) {
  open(kDriverPostScript, false);
  const auto lines = close();
  ASSERT_GT(lines.size(), 20u);
  EXPECT_EQ(lines[0], "%!PS-Adobe-3.0");
  EXPECT_EQ(count(lines, "%%Orientation: Landscape"), 1);
  EXPECT_EQ(count(lines, "%%DocumentMedia: A4    595    842 0 () ()"), 1);
  EXPECT_EQ(count(lines, "<< /PageSize [   595    842] /Orientation 0 >> setpagedevice"), 1);
  EXPECT_EQ(count(lines, "90.0 ro"), 1);
  // The 640 by 480 page keeps the left and top margins (43, 28); the bottom
  // margin follows (595 - 28 - 480 = 87), less the paper width.
  EXPECT_EQ(count(lines, "43.0 -508.0 translate"), 1);
  EXPECT_EQ(count(lines, "definefont pop"), 13);
  // Nothing drawn: one page mark and one showpage.
  EXPECT_EQ(count(lines, "%%Page:"), 1);
  EXPECT_EQ(count(lines, "showpage"), 1);
  EXPECT_EQ(lines[lines.size() - 2], "%%EOF");
  EXPECT_EQ(lines.back(), "initgraphics \x04");
}

TEST_F(PostTest, EncapsulatedHasBoxAndNoPageOperators) {
  open(kDriverPostScript, true, 500, 300);
  IGrArea(0.1f, 0.1f, 0.9f, 0.9f);
  IGrFillPattern(kFillSolid);
  IGrRectangle(-1, -1, 2, 2);  // cut to the area: EPS has no clip path
  const auto lines = close();
  EXPECT_EQ(lines[0], "%!PS-Adobe-3.0 EPSF-3.0");
  EXPECT_EQ(lines[1], "%%BoundingBox: 0 0   500   300");
  EXPECT_EQ(count(lines, "showpage"), 0);
  EXPECT_EQ(count(lines, "%%BeginSetup"), 0);
  EXPECT_EQ(count(lines, "clip"), 0);
  EXPECT_EQ(count(lines, "50.0 30.0 m"), 1);
  EXPECT_EQ(count(lines, "450.0"), 2);  // the right corners, at the area's edge
}

TEST_F(PostTest, NumbersAndMergedPaths) {
  open(kDriverPostScript, true, 640, 480);
  // Raster and page are the same size with the screen off: units are points.
  IGrUnits(0, 0, 639.99f, 479.99f);
  IGrJoin(100, 12.34f, 200, 12.5f);
  IGrLineTo(300, 40);  // continues: one "l", no "m"
  IGrJoin(10, 10, 20, 20);  // a new start
  const auto body = after(close(), "%%Page: 1 1");
  const std::vector<std::string> expect{"100.0 12.34 m", "200.0 12.5 l", "300.0 40.0 l", "10.0 10.0 m", "20.0 20.0 l"};
  std::vector<std::string> moves;
  for (const auto& l : body)
    if (l.ends_with(" m") || l.ends_with(" l")) moves.push_back(l);
  EXPECT_EQ(moves, expect);
  EXPECT_EQ(std::count(body.begin(), body.end(), "s"), 1);  // painted as one path
}

TEST_F(PostTest, PathLimitPaints) {
  open(kDriverPostScript);
  IGrHardcopyOptions(kOptPathLimit, 10);
  for (int i = 0; i < 25; ++i) IGrLineTo(0.01f * static_cast<float>(i + 1), 0.5f);
  const auto body = after(close(), "%%Page: 1 1");
  EXPECT_EQ(count(body, " m"), 3);  // a fresh move after each paint
}

TEST_F(PostTest, ColourOptions) {
  auto colour_lines = [&](int option, int value, std::initializer_list<int> colours) {
    open(kDriverPostScript);
    IGrHardcopyOptions(option, value);
    std::vector<std::string> out;
    for (int c : colours) {
      IGrColourN(c);
      IGrJoin(0.1f, 0.1f, 0.2f, 0.2f);
      IGrJoin(0.3f, 0.1f, 0.2f, 0.3f);
    }
    for (const auto& l : close())
      if (l.ends_with(" g")) out.push_back(l);
    return out;
  };
  // Monochrome: palette 0 stays white, every other colour becomes black.
  EXPECT_EQ(colour_lines(kOptMonochrome, 1, {0, 31, 0}),
            (std::vector<std::string>{"1.0 1.0 1.0 g", "0.0 0.0 0.0 g", "1.0 1.0 1.0 g"}));
  // Readable on paper: black and white trade places, a mid grey stays.
  EXPECT_EQ(colour_lines(kOptColourHandling, 2, {223, 0, 224}),
            (std::vector<std::string>{"1.0 1.0 1.0 g", "0.0 0.0 0.0 g", "0.49 0.49 0.49 g"}));
  EXPECT_EQ(colour_lines(kOptColourHandling, 1, {31}), (std::vector<std::string>{"0.0 1.0 1.0 g"}));
}

TEST_F(PostTest, TextEscapesAndFont) {
  open(kDriverPostScript);
  IGrCharFont(3, 1);
  IGrCharOut(0.5f, 0.5f, "a\\b(c)");
  IGrCharRotate(90);
  IGrCharAlign(2);
  IGrCharOut(0.5f, 0.5f, "z");
  const auto body = after(close(), "%%Page: 1 1");
  EXPECT_EQ(count(body, "(a\\\\b\\(c\\)) lsh"), 1);
  EXPECT_EQ(count(body, "/Times-2 ff ["), 1);  // selected once
  EXPECT_EQ(count(body, "(z) rsh"), 1);
  EXPECT_EQ(count(body, "90 ro"), 1);
  EXPECT_EQ(count(body, "270 ro"), 1);
}

TEST_F(SvgTest, HeaderNumbersAndClose) {
  open(kDriverSvg, false, 640, 480);
  IGrUnits(0, 0, 639.99f, 479.99f);
  IGrJoin(1.5f, 479.99f, 100, 0);
  const auto lines = close();
  ASSERT_GE(lines.size(), 5u);
  EXPECT_EQ(lines[0], "<?xml version=\"1.0\" standalone=\"no\"?>");
  EXPECT_EQ(lines[2], "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"640\" height=\"480\" "
                      "Viewbox=\"0 0 640 480\">");
  EXPECT_EQ(count(lines, "<line x1=\"1.50\" y1=\"0.00\" x2=\"100.00\" y2=\"480.00\"/>"), 1);
  EXPECT_EQ(lines.back(), "</g></svg>");
}

TEST_F(SvgTest, StyleGroupOnlyOnChange) {
  open(kDriverSvg);
  IGrColourN(31);
  IGrColourN(31);  // the colour of the open group
  IGrLineType(0);  // unchanged
  IGrLineType(2);
  const auto lines = close();
  EXPECT_EQ(count(lines, "<g style=\"fill:none;stroke:#"), 3);
  EXPECT_EQ(count(lines, "stroke:#FF0000;stroke-dasharray:6 6;stroke-width:1;stroke-linejoin:miter;stroke-linecap:butt"), 1);
}

TEST_F(SvgTest, OutlineEllipseButNoOutlineRectangle) {
  open(kDriverSvg);
  IGrFillPattern(kFillOutline);
  IGrRectangle(0.1f, 0.1f, 0.3f, 0.3f);
  IGrCircle(0.5f, 0.5f, 0.1f);
  auto lines = close();
  EXPECT_EQ(count(lines, "<polygon"), 0);
  EXPECT_EQ(count(lines, "<ellipse"), 1);
  EXPECT_EQ(count(lines, "fill:#"), 0);
  open(kDriverSvg);
  IGrFillPattern(kFillSolid);
  IGrArea(0.2f, 0.2f, 0.8f, 0.8f);
  IGrRectangle(0.1f, 0.1f, 0.3f, 0.3f);
  lines = close();
  EXPECT_EQ(count(lines, "<clipPath id=\"clip1\">"), 1);
  EXPECT_EQ(count(lines, "<g style=\"stroke:none;fill:#000000;clip-path:url(#clip1)\">"), 1);
}

TEST_F(SvgTest, TextEscapesAndFamilies) {
  open(kDriverSvg);
  IGrCharFont(4, 3);  // Symbol takes neither bold nor italic
  IGrCharOut(0.1f, 0.5f, "a&b<c>d\xE9");
  IGrCharFont(2, 3);
  IGrCharAlign(1);
  IGrCharOut(0.1f, 0.3f, "x");
  gs().ichprop = 1;  // proportional text was aligned before it came here
  IGrCharOut(0.1f, 0.2f, "y");
  const auto lines = close();
  EXPECT_EQ(count(lines, ">a&#38;b&#60;c>d&#233;</text>"), 1);
  EXPECT_EQ(count(lines, "font-family:Symbol;font-size:"), 1);
  EXPECT_EQ(count(lines, "Arial,Helvetica;font-weight:bold;font-style:italic;text-anchor:middle;"), 1);
  EXPECT_EQ(count(lines, "Arial,Helvetica;font-weight:bold;font-style:italic;font-size:"), 1);
}

TEST_F(SvgTest, LongPolylineWrapsInsideOneElement) {
  open(kDriverSvg);
  std::vector<float> x, y;
  for (int i = 0; i < 200; ++i) {
    x.push_back(0.001f + 0.004f * static_cast<float>(i));
    y.push_back(i % 2 ? 0.6f : 0.4f);
  }
  IGrPolyLine(x, y);
  const auto lines = close();
  EXPECT_EQ(count(lines, "<polyline points=\""), 1);
  int wrapped = 0;
  for (const auto& l : lines) {
    EXPECT_LE(l.size(), 259u);
    if (!l.empty() && std::isdigit(static_cast<unsigned char>(l[0]))) ++wrapped;
  }
  EXPECT_GT(wrapped, 5);
}

}  // namespace

namespace {

class OutputTest : public GraphicsTest {};

TEST_F(OutputTest, PrintCommandGetsTheTemporaryFile) {
  const auto dest = std::filesystem::temp_directory_path() / "zelv_graphics_printed.ps";
  std::filesystem::remove(dest);
  IGrHardcopySelect(1, kDriverPostScript);
  IGrHardcopy("cp @ " + dest.string());
  const std::string temporary = gs().copsys;
  EXPECT_NE(temporary.find("zelvplot"), std::string::npos);
  IGrJoin(0.1f, 0.1f, 0.9f, 0.9f);
  IGrHardcopy("S");
  std::ifstream in(dest);
  std::string first;
  std::getline(in, first);
  EXPECT_EQ(first, "%!PS-Adobe-3.0");
  EXPECT_FALSE(std::filesystem::exists(temporary));
  std::filesystem::remove(dest);
}

TEST_F(OutputTest, DriverDefaultsAndKeptOptions) {
  IGrHardcopySelect(1, kDriverSvg);
  EXPECT_EQ(gs().cdeffile[2], "zelvplot.svg");
  EXPECT_EQ(gs().ihcopt[kOptPageWidth], 640);
  IGrHardcopySelect(1, 5);  // no such driver: the selection stands
  EXPECT_EQ(gs().ihcdrv, kDriverSvg);
  IGrHardcopySelect(1, kDriverPostScript);
  EXPECT_EQ(gs().cdeffile[2], "zelvplot.ps");
  EXPECT_EQ(gs().ihcopt[kOptPageWidth], 842 - 86);  // A4 landscape less the margins
  EXPECT_EQ(gs().ihcopt[kOptPageHeight], 595 - 55);
  IGrHardcopyOptions(kOptCopies, 3);
  IGrInit("HP");
  EXPECT_EQ(gs().ihcopt[kOptCopies], 3);
  IGrInit("H");
  EXPECT_EQ(gs().ihcopt[kOptCopies], 1);
}

}  // namespace

namespace {

class PageTest : public GraphicsTest {};

TEST_F(PageTest, PagesAreNumberedAndEndOnTheWholeRaster) {
  open(kDriverPostScript, false);
  IGrArea(0.5f, 0.5f, 1, 1);
  IGrJoin(0.1f, 0.1f, 0.9f, 0.9f);
  IGrEndPage();
  EXPECT_FLOAT_EQ(gs().xgamin, 0.5f);  // the area comes back after the page
  IGrJoin(0.1f, 0.9f, 0.9f, 0.1f);
  const auto lines = close();
  EXPECT_EQ(count(lines, "%%Page: "), 2);
  EXPECT_EQ(count(lines, "%%Page:    2   2"), 1);
  EXPECT_EQ(count(lines, "showpage"), 2);
  EXPECT_EQ(count(lines, "/#copies   1 def"), 2);
}

}  // namespace

namespace {

class ArcTest : public GraphicsTest {};

TEST_F(ArcTest, ArcsOpenPiesClosedThroughTheCentre) {
  for (int driver : {kDriverPostScript, kDriverSvg}) {
    open(driver);
    IGrFillPattern(kFillSolid);
    IGrArc(0.5f, 0.5f, 0.2f, 0, 90);  // open whatever the fill style
    IGrFillPattern(kFillOutline);
    IGrPie(0.5f, 0.5f, 0.2f, 90, 180);  // an outline through the centre
    IGrFillPattern(kFillSolid);
    IGrPie(0.5f, 0.5f, 0.2f, 180, -90);  // ends before its start: the way round
    const auto lines = close();
    if (driver == kDriverSvg) {
      ASSERT_EQ(count(lines, "<path d=\"M "), 3);
      std::vector<std::string> paths;
      for (const auto& l : lines)
        if (l.starts_with("<path")) paths.push_back(l);
      EXPECT_EQ(paths[0].find(" L "), std::string::npos);
      EXPECT_NE(paths[1].find(" L "), std::string::npos);
      EXPECT_NE(paths[2].find(" L "), std::string::npos);
      EXPECT_EQ(count(lines, "<g style=\"stroke:none;fill:#000000\">"), 1);
    } else {
      EXPECT_EQ(count(lines, "arc"), 3);
      EXPECT_EQ(count(lines, "180.0 270.0 arc"), 1);
      const auto body = after(lines, "%%Page: 1 1");
      EXPECT_EQ(std::count(body.begin(), body.end(), "cs"), 1);
      EXPECT_EQ(std::count(body.begin(), body.end(), "cf"), 1);
    }
  }
}

}  // namespace
