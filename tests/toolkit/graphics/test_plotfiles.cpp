// The plotter-language, metafile and DXF drivers: file set-up, pens and pen
// moves, binary element layout, number formats and entity forms.
#include "graphics_fixture.h"

#include <fstream>
#include <iterator>

namespace {

using namespace zelv_graphics;

class HpglTest : public GraphicsTest {};

TEST_F(HpglTest, SetUpWritesWindowScaleAndTerminator) {
  open(kDriverHpgl, false, 742, 530);
  const auto lines = close();
  ASSERT_GT(lines.size(), 6u);
  EXPECT_EQ(lines[0], "IN; IP 395 0 10865 7478");
  EXPECT_EQ(lines[1], "  IP 395 0 10865 7478");  // landscape: no turn
  EXPECT_EQ(lines[2], "DT\x04");
  EXPECT_EQ(lines[3], "DI1. 0.");
  EXPECT_EQ(lines[4], "SC-2 0 0 0");  // replay record of the colour handling
  EXPECT_EQ(count(lines, "SC0 32760 0 32760"), count(lines, "SC-") + count(lines, "IW") + 1);
  EXPECT_EQ(count(lines, "SC-13 1 0 0"), 1);
}

TEST_F(HpglTest, PenMovesOnlyWhereTheLineBreaks) {
  open(kDriverHpgl2, false, 400, 400);
  IGrUnits(0, 0, 399.99f, 399.99f);
  IGrJoin(0, 0, 100, 100);
  IGrLineTo(200, 100);  // continues: "PD" alone
  IGrEndPage();
  IGrJoin(0, 0, 100, 0);  // first line of the page: the pen again
  const auto body = after(close(), "SC0 32760 0 32760");
  std::vector<std::string> drawing;
  for (const auto& l : body)
    if (l.rfind("PU", 0) == 0 || l.rfind("PD", 0) == 0 || l.rfind("SP", 0) == 0) drawing.push_back(l);
  const std::vector<std::string> expect{"PU;SP1;", "PU0 0", "PD8190 8190", "PD16380 8190", "PU;SP0;PG;",
                                        "SP1;", "PU0 0", "PD8190 0", "PU;SP0;PG;"};
  EXPECT_EQ(drawing, expect);
}

TEST_F(HpglTest, FourPensTakeTheEightColourClasses) {
  open(kDriverHpgl, false, 400, 400);
  IGrColourModel(1);
  std::vector<int> pens;
  for (int cls = 0; cls < 8; ++cls) {
    IGrColourN(cls * 32 + 3);
    IGrJoin(0, 0, 0.5f, 0.5f);
  }
  for (const auto& l : close())
    if (l.rfind("PU;SP", 0) == 0) pens.push_back(l[5] - '0');
  // The opening colour first; classes 3 and 4 share pen 2; the page end puts the pen away.
  EXPECT_EQ(pens, (std::vector<int>{4, 1, 3, 1, 2, 4, 3, 4, 0}));
}

TEST_F(HpglTest, WriterFoldsBlanks) {
  open(kDriverHpgl, false);
  yyhpglwrite("PU   12     34  ");
  yyhpglwrite("LT  ");
  yyhpglwritetrim("DI 1.000  0.000   ");
  const auto body = after(close(), "SC0 32760 0 32760");
  ASSERT_GE(body.size(), 3u);
  EXPECT_EQ(body[body.size() - 3], "PU12 34");
  EXPECT_EQ(body[body.size() - 2], "LT");
  EXPECT_EQ(body[body.size() - 1], "DI1.000 0.000");
}

class CgmTest : public GraphicsTest {
 protected:
  std::string bytes() {
    IGrHardcopy("S");
    std::ifstream in(path_, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  // Elements as (class, id, parameters).
  struct Element {
    int cls, id;
    std::string params;
  };
  static std::vector<Element> walk(const std::string& b) {
    std::vector<Element> out;
    size_t at = 0;
    auto word = [&](size_t i) { return (static_cast<unsigned char>(b[i]) << 8) | static_cast<unsigned char>(b[i + 1]); };
    while (at + 1 < b.size()) {
      const int head = word(at);
      at += 2;
      size_t len = static_cast<size_t>(head & 31);
      if (len == 31) {
        len = static_cast<size_t>(word(at) & 0x7FFF);
        at += 2;
      }
      out.push_back({head >> 12, (head >> 5) & 127, b.substr(at, len)});
      at += len + (len & 1);
    }
    return out;
  }
  static int count_of(const std::vector<Element>& e, int cls, int id) {
    return static_cast<int>(std::count_if(e.begin(), e.end(), [&](const Element& x) { return x.cls == cls && x.id == id; }));
  }
};

TEST_F(CgmTest, MetafileFramesPicturesAndExtent) {
  open(kDriverCgm, false, 756, 540);
  IGrJoin(0.1f, 0.1f, 0.9f, 0.9f);
  IGrEndPage();
  IGrJoin(0.1f, 0.9f, 0.9f, 0.1f);
  const auto e = walk(bytes());
  ASSERT_GT(e.size(), 20u);
  EXPECT_EQ(e.front().cls * 100 + e.front().id, 1);
  EXPECT_EQ(e.front().params, std::string("\x0C" "KQD CGM File"));
  EXPECT_EQ(e.back().cls * 100 + e.back().id, 2);
  EXPECT_EQ(count_of(e, 0, 3), 2);  // a picture per page
  EXPECT_EQ(count_of(e, 0, 5), 2);
  for (const auto& x : e)
    if (x.cls == 2 && x.id == 6) {
      EXPECT_EQ(x.params, std::string("\0\0\0\0\x18\x9C\x11\x94", 8));
    }  // 6300 by 4500
  for (const auto& x : e)
    if (x.cls == 1 && x.id == 13) {
      EXPECT_EQ(x.params.size(), 260u);
    }
}

TEST_F(CgmTest, HeaderInfoReadBack) {
  open(kDriverCgm, false, 756, 540);
  IGrHardcopy("S");
  int colours = 0;
  float aspect = 0;
  ASSERT_TRUE(yyinfocgm(path_, colours, aspect));
  EXPECT_EQ(colours, 1 << 24);
  EXPECT_NEAR(aspect, 6300.0f / 4500.0f, 1e-5);
  {
    std::ofstream cut(path_, std::ios::binary | std::ios::trunc);
    cut << std::string("\x00\x2D\x0C", 3);  // a title that stops short
  }
  EXPECT_FALSE(yyinfocgm(path_, colours, aspect));
  EXPECT_EQ(colours, 1);
  EXPECT_EQ(WInfoError(1), 2);
}

TEST_F(CgmTest, BigPageScaledAndFontListsByOption) {
  options_ = {{28, 1}};
  open(kDriverCgm, false, 4000, 4000);
  const auto e = walk(bytes());
  for (const auto& x : e) {
    if (x.cls == 2 && x.id == 6) {
      EXPECT_EQ(x.params, std::string("\0\0\0\0\x7F\xFF\x7F\xFF", 8));
    }
    if (x.cls == 1 && x.id == 13) {
      EXPECT_EQ(x.params.size(), 204u);
    }
  }
}

TEST_F(CgmTest, ColourOnlyOnChangeAndStringsPadded) {
  open(kDriverCgm, false, 756, 540);
  IGrColourModel(0);
  IGrColourN(0x0000FF);
  IGrJoin(0.1f, 0.1f, 0.2f, 0.2f);
  IGrJoin(0.2f, 0.2f, 0.3f, 0.1f);  // same colour: no element
  IGrColourN(0x00FF00);
  IGrJoin(0.3f, 0.1f, 0.4f, 0.2f);
  IGrCharOut(0.5f, 0.5f, "Ab");
  const auto e = walk(bytes());
  EXPECT_EQ(count_of(e, 5, 4), 2);
  EXPECT_EQ(count_of(e, 4, 1), 3);
  for (const auto& x : e)
    if (x.cls == 4 && x.id == 5) {
      EXPECT_EQ(x.params.size(), 13u);  // width, height, point, flag, count, two letters
      EXPECT_EQ(x.params.substr(10), "\x02" "Ab");
    }
  // A string of odd total length gets a pad byte that isn't counted.
  std::string p;
  yycgm7(p, "Ab");
  EXPECT_EQ(yycgmelement(0, 3, p, false), std::string("\x00\x63" "\x02" "Ab" "\x00", 6));
  p.clear();
  yycgm3(p, -1, -2);
  EXPECT_EQ(static_cast<unsigned char>(p[0]), 0xFF);
  EXPECT_EQ(static_cast<unsigned char>(p[2]), 0xFF);
}

TEST_F(CgmTest, LongElementsComeInParts) {
  const std::string big(70000, 'x');
  const auto el = yycgmelement(4, 7, big, true);
  // Header, then parts of 32766 with the continuation bit, the last without.
  EXPECT_EQ(el.size(), 2 + 3 * 2 + big.size());
  EXPECT_EQ(static_cast<unsigned char>(el[2]) & 0x80, 0x80);
  EXPECT_EQ(static_cast<unsigned char>(el[2 + 2 + 32766]) & 0x80, 0x80);
  EXPECT_EQ(static_cast<unsigned char>(el[2 + 4 + 2 * 32766]) & 0x80, 0);
}

TEST_F(CgmTest, MemoryMetafileKeepsTheDrawingAndReplaysIt) {
  IGrSelect(4, 7);
  IGrJoin(0.1f, 0.1f, 0.9f, 0.9f);
  IGrFillPattern(kFillSolid);
  IGrRectangle(0.2f, 0.2f, 0.4f, 0.4f);
  IGrCharOut(0.5f, 0.5f, "kept");
  const auto e = walk(yygcgmdata(7));
  EXPECT_EQ(count_of(e, 0, 1), 1);
  EXPECT_EQ(count_of(e, 4, 1), 1);
  EXPECT_EQ(count_of(e, 4, 11), 1);
  EXPECT_EQ(count_of(e, 4, 5), 1);
  for (const auto& x : e) {
    if (x.cls == 2 && x.id == 6) {
      EXPECT_EQ(x.params, std::string("\0\0\0\0\x03\xE8\x03\xE8", 8));  // the raster, 1000 square
    }
  }
  IGrInit("H");  // the screen path leaves the metafile, which is ended
  EXPECT_EQ(walk(yygcgmdata(7)).back().cls * 100 + walk(yygcgmdata(7)).back().id, 2);
  open(kDriverDxf, false, 720, 720);
  IGrReplay(7);
  const auto body = after(close(), "ENTITIES");
  EXPECT_EQ(count(body, "SOLID"), 1);
  EXPECT_EQ(count(body, "TEXT"), 1);
  EXPECT_EQ(count(body, "kept"), 1);
  EXPECT_GE(count(body, "LWPOLYLINE"), 1);
}

TEST_F(CgmTest, FullMemoryMetafileDropsElements) {
  yygcgmopen(8, 100);
  IGrSelect(4, 8);
  for (int i = 0; i < 20; ++i) IGrJoin(0, 0, 0.5f, 0.5f);
  EXPECT_LE(yygcgmdata(8).size(), 100u);
  EXPECT_NE(WInfoError(1), 0);
}

class DxfTest : public GraphicsTest {};

TEST_F(DxfTest, RealsKeepOneDecimal) {
  EXPECT_EQ(yydxfreal(1.5f), "1.5");
  EXPECT_EQ(yydxfreal(2.0f), "2.0");
  EXPECT_EQ(yydxfreal(-0.125f), "-0.125");
  EXPECT_EQ(yydxfreal(0.0f), "0.0");
}

TEST_F(DxfTest, EntitiesAndClosedPolyline) {
  open(kDriverDxf, false, 720, 720);
  IGrUnits(0, 0, 719.99f, 719.99f);
  const std::array<float, 4> x{72, 144, 144, 72}, y{72, 72, 144, 72};
  IGrPolyLine(x, y);
  IGrFillPattern(kFillSolid);
  IGrRectangle(0, 0, 72, 36);
  IGrFillPattern(kFillOutline);
  IGrCircle(360, 360, 36);
  const auto lines = close();
  EXPECT_EQ(lines[1], "SECTION");
  EXPECT_EQ(lines[lines.size() - 1], "EOF");
  const auto body = after(lines, "ENTITIES");
  // Closed: three points, flag 1.
  const auto poly = std::find(body.begin(), body.end(), "LWPOLYLINE");
  ASSERT_NE(poly, body.end());
  const std::vector<std::string> head(poly, poly + 15);
  EXPECT_EQ(head[11], "70");
  EXPECT_EQ(head[12], "1");
  EXPECT_EQ(head[13], "90");
  EXPECT_EQ(head[14], "3");
  EXPECT_EQ(count(body, "SOLID"), 1);
  EXPECT_EQ(count(body, "CIRCLE"), 1);
  const auto circle = std::find(body.begin(), body.end(), "CIRCLE");
  EXPECT_NEAR(std::stof(*(circle + 12)), 0.5f, 1e-4);  // radius in inches
}

TEST_F(DxfTest, ColourDepthsAndOldPolylines) {
  options_ = {{40, 1}, {23, 3}};
  open(kDriverDxf, false, 720, 720);
  IGrColourModel(1);
  IGrColourN(40);  // class 1 of eight
  const std::array<float, 3> x{0.1f, 0.2f, 0.3f}, y{0.1f, 0.2f, 0.1f};
  IGrPolyLine(x, y);
  IGrColourN(0);  // class 0 is given as 7
  IGrJoin(0, 0, 0.5f, 0.5f);
  const auto body = after(close(), "ENTITIES");
  EXPECT_EQ(count(body, "VERTEX"), 3);
  EXPECT_EQ(count(body, "SEQEND"), 1);
  const auto poly = std::find(body.begin(), body.end(), "POLYLINE");
  ASSERT_NE(poly, body.end());
  EXPECT_EQ(*(poly + 4), "1");
  const auto line = std::find(body.begin(), body.end(), "LINE");
  ASSERT_NE(line, body.end());
  EXPECT_EQ(*(line + 4), "7");
}

}  // namespace
