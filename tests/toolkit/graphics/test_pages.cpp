// Pages read back by outside renderers: plotter arcs, images in PostScript and
// SVG. The memory metafile replayed onto another equals itself; character-set
// files load when sound and fall back to the built-in font when not.
#include "graphics_fixture.h"

#include "toolkit/base/zelvy_data.h"

#include <cstdlib>
#include <fstream>

namespace {

using namespace zelv_graphics;
namespace fs = std::filesystem;

struct Picture {
  int width = 0, height = 0;
  std::vector<unsigned char> rgb;
  int at(int x, int y) const {
    const size_t i = (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * 3;
    return rgb[i] | (rgb[i + 1] << 8) | (rgb[i + 2] << 16);
  }
  bool dark(int x, int y) const {
    const int c = at(x, y);
    return (c & 0xFF) + ((c >> 8) & 0xFF) + ((c >> 16) & 0xFF) < 3 * 128;
  }
};

// A binary portable pixmap, as the renderers are asked to write.
Picture read_ppm(const std::string& path) {
  Picture p;
  std::ifstream in(path, std::ios::binary);
  // Header words, with comment lines between them.
  auto number = [&] {
    while (in >> std::ws && in.peek() == '#') in.ignore(1 << 16, '\n');
    int v = 0;
    in >> v;
    return v;
  };
  std::string magic;
  in >> magic;
  p.width = number();
  p.height = number();
  number();
  in.get();
  if (magic != "P6" || p.width <= 0 || p.height <= 0) return {};
  p.rgb.resize(static_cast<size_t>(p.width) * static_cast<size_t>(p.height) * 3);
  in.read(reinterpret_cast<char*>(p.rgb.data()), static_cast<std::streamsize>(p.rgb.size()));
  return p;
}

int run(const std::string& command) { return std::system((command + " > /dev/null 2>&1").c_str()); }

bool near_colour(int a, int b) {
  for (int shift : {0, 8, 16})
    if (std::abs(((a >> shift) & 0xFF) - ((b >> shift) & 0xFF)) > 24) return false;
  return true;
}

class ReadBackTest : public GraphicsTest {
 protected:
  std::string rendered() { return path_ + ".ppm"; }
  void TearDown() override {
    GraphicsTest::TearDown();
    std::error_code ec;
    fs::remove(rendered(), ec);
    fs::remove(path_ + ".png", ec);
  }
};

// The arc is read by the plotter-file renderer: a circle nearly closed comes
// out round (not squeezed by the page's shape) and hollow.
TEST_F(ReadBackTest, PlotterArcsComeOutRound) {
  for (int driver : {kDriverHpgl, kDriverHpgl2}) {
    open(driver, false, 600, 400);
    IGrUnits(0, 0, 600, 400);
    IGrFillPattern(kFillOutline, 3);
    IGrArc(300, 200, 150, 0, 350);
    const auto lines = close();
    EXPECT_EQ(count(lines, "AA"), 1) << driver;
    EXPECT_EQ(lines.back().rfind("PU;SP0", 0), 0u) << driver;
    ASSERT_EQ(run("hp2xx -q -m png -f " + path_ + ".png " + path_), 0) << driver;
    ASSERT_EQ(run("convert " + path_ + ".png " + rendered()), 0);
    const auto pic = read_ppm(rendered());
    ASSERT_GT(pic.width, 0);
    int x0 = pic.width, x1 = -1, y0 = pic.height, y1 = -1;
    for (int y = 0; y < pic.height; ++y)
      for (int x = 0; x < pic.width; ++x)
        if (pic.dark(x, y)) {
          x0 = std::min(x0, x);
          x1 = std::max(x1, x);
          y0 = std::min(y0, y);
          y1 = std::max(y1, y);
        }
    ASSERT_GT(x1, x0 + 50) << driver;
    const float aspect = static_cast<float>(x1 - x0) / static_cast<float>(y1 - y0);
    EXPECT_NEAR(aspect, 1.0f, 0.05f) << driver;
    EXPECT_FALSE(pic.dark((x0 + x1) / 2, (y0 + y1) / 2)) << driver;
  }
}

TEST_F(ReadBackTest, SecondEditionFillsByRasterPatternWhenAllowed) {
  options_ = {{24, 1}};
  open(kDriverHpgl2, false, 400, 400);
  IGrUnits(0, 0, 1, 1);
  const float x[] = {0.1f, 0.5f, 0.3f}, y[] = {0.1f, 0.1f, 0.5f};
  IGrFillPattern(kFillHalfTone);
  IGrPolygonComplex(x, y);
  IGrFillPattern(kFillSolid);
  IGrRectangle(0.6f, 0.6f, 0.9f, 0.9f);
  const auto lines = close();
  std::string pattern;
  for (const auto& l : lines)
    if (l.rfind("RF1,8,4", 0) == 0) pattern = l;
  ASSERT_FALSE(pattern.empty());
  EXPECT_EQ(std::count(pattern.begin(), pattern.end(), ','), 2 + 32);  // 8 by 4 pens
  EXPECT_EQ(count(lines, "FT11,1;"), 1);
  EXPECT_EQ(count(lines, "PM0;"), 1);
  EXPECT_EQ(count(lines, "PM2;FP;"), 1);
  EXPECT_EQ(count(lines, "FT1;"), 1);
  EXPECT_EQ(count(lines, "RA"), 1);
  // Without the option, scan lines and no device fill at all.
  options_.clear();
  open(kDriverHpgl2, false, 400, 400);
  IGrFillPattern(kFillSolid);
  IGrRectangle(0.6f, 0.6f, 0.9f, 0.9f);
  const auto plain = close();
  EXPECT_EQ(count(plain, "RA"), 0);
  EXPECT_GT(count(plain, "PD"), 10);
}

// A 2 by 2 image of four colours over the middle of a 640 by 480 page.
constexpr int kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000, kYellow = 0x00FFFF;
void put_quadrants() {
  IGrUnits(0, 0, 640, 480);
  const int pixels[] = {kRed, kGreen, kBlue, kYellow};
  IGrImagePut(160, 120, 480, 360, 2, 2, pixels);
}

void expect_quadrants(const Picture& pic) {
  ASSERT_EQ(pic.width, 640);
  ASSERT_EQ(pic.height, 480);
  // Rows from the top: red and green above, blue and yellow below.
  EXPECT_TRUE(near_colour(pic.at(240, 180), kRed));
  EXPECT_TRUE(near_colour(pic.at(400, 180), kGreen));
  EXPECT_TRUE(near_colour(pic.at(240, 300), kBlue));
  EXPECT_TRUE(near_colour(pic.at(400, 300), kYellow));
  EXPECT_TRUE(near_colour(pic.at(100, 240), 0xFFFFFF));
  EXPECT_TRUE(near_colour(pic.at(540, 240), 0xFFFFFF));
  EXPECT_TRUE(near_colour(pic.at(320, 60), 0xFFFFFF));
}

TEST_F(ReadBackTest, ImageInPostScriptAndSvgRendersWhereItWasPut) {
  open(kDriverPostScript, true, 640, 480);
  put_quadrants();
  const auto ps = close();
  EXPECT_EQ(count(ps, "colorimage"), 1);
  EXPECT_EQ(count(ps, "FF000000FF00"), 1);  // the first row: red, green
  ASSERT_EQ(run("gs -q -dNOPAUSE -dBATCH -dSAFER -sDEVICE=ppmraw -r72 -g640x480 -sOutputFile=" + rendered() + " " +
                path_),
            0);
  expect_quadrants(read_ppm(rendered()));

  open(kDriverSvg, true, 640, 480);
  put_quadrants();
  const auto svg = close();
  EXPECT_EQ(count(svg, "<image x=\"160.00\" y=\"120.00\" width=\"320.00\" height=\"240.00\""), 1);
  EXPECT_EQ(count(svg, "data:image/png;base64,iVBORw0KGgo"), 1);
  ASSERT_EQ(run("rsvg-convert -b white -o " + path_ + ".png " + path_), 0);
  ASSERT_EQ(run("convert " + path_ + ".png " + rendered()), 0);
  expect_quadrants(read_ppm(rendered()));
}

// The page driver draws into memory and writes a PNG that an outside reader
// takes: lines, a solid fill, an image and software text where they were put.
TEST_F(ReadBackTest, PageAsPngHoldsWhatWasDrawn) {
  open(kDriverImage, false, 200, 100);
  IGrUnits(0, 0, 200, 100);
  IGrColourModel(0);
  IGrColourN(kRed);
  IGrJoin(10, 80, 190, 80);
  IGrColourN(kBlue);
  IGrFillPattern(kFillSolid);
  IGrRectangle(20, 10, 60, 40);
  const int pixels[] = {kRed, kGreen, kBlue, kYellow};
  IGrImagePut(120, 10, 180, 50, 2, 2, pixels);
  IGrColourN(0);
  IGrCharSize(0.1f, 0.2f);
  WGrTextString(70, 60, "H");
  close();
  ASSERT_EQ(run("convert png:" + path_ + " " + rendered()), 0);
  const auto pic = read_ppm(rendered());
  ASSERT_EQ(pic.width, 200);
  ASSERT_EQ(pic.height, 100);
  // Raster 80 of a 99.99 high clip box is pixel 79 up, row 20 down.
  EXPECT_TRUE(near_colour(pic.at(100, 20), kRed));
  EXPECT_TRUE(near_colour(pic.at(100, 25), 0xFFFFFF));
  EXPECT_TRUE(near_colour(pic.at(40, 74), kBlue));
  EXPECT_TRUE(near_colour(pic.at(135, 60), kRed));
  EXPECT_TRUE(near_colour(pic.at(165, 60), kGreen));
  EXPECT_TRUE(near_colour(pic.at(135, 80), kBlue));
  EXPECT_TRUE(near_colour(pic.at(165, 80), kYellow));
  int ink = 0;  // the letter, drawn as strokes, somewhere right of its point
  for (int y = 25; y < 55; ++y)
    for (int x = 70; x < 95; ++x) ink += pic.dark(x, y) ? 1 : 0;
  EXPECT_GT(ink, 10);
}

TEST_F(ReadBackTest, BadImagesDrawNothingAndReport) {
  open(kDriverPostScript, true, 640, 480);
  const int pixels[] = {kRed, kGreen, kBlue};
  IGrImagePut(0.1f, 0.1f, 0.5f, 0.5f, 2, 2, pixels);  // one pixel short
  EXPECT_EQ(WInfoError(1), 27);
  IGrImagePut(0.1f, 0.1f, 0.1f, 0.5f, 1, 1, std::span<const int>(pixels, 1));  // no width
  EXPECT_EQ(WInfoError(1), 22);
  EXPECT_EQ(count(close(), "colorimage"), 0);
}

// Elements of a binary metafile: class, id and parameters.
struct Element {
  int cls, id;
  std::string params;
  bool operator==(const Element&) const = default;
};
std::vector<Element> walk(const std::string& data) {
  std::vector<Element> out;
  size_t at = 0;
  auto word = [&](size_t i) { return (static_cast<unsigned char>(data[i]) << 8) | static_cast<unsigned char>(data[i + 1]); };
  while (at + 1 < data.size()) {
    const int head = word(at);
    at += 2;
    Element e{head >> 12, (head >> 5) & 0x7F, {}};
    size_t length = static_cast<size_t>(head & 0x1F);
    if (length == 31) {
      for (bool more = true; more && at + 1 < data.size();) {
        const int w = word(at);
        at += 2;
        more = (w & 0x8000) != 0;
        const size_t part = static_cast<size_t>(w & 0x7FFF);
        e.params.append(data, at, part);
        at += part + (part & 1);
      }
    } else {
      e.params.assign(data, at, length);
      at += length + (length & 1);
    }
    out.push_back(e);
  }
  return out;
}
std::vector<Element> drawing_of(const std::vector<Element>& all) {
  std::vector<Element> out;
  for (const auto& e : all)
    if (e.cls == 4) out.push_back(e);
  return out;
}

TEST_F(ReadBackTest, MemoryMetafileReplayedOntoAnotherIsTheSame) {
  yygcgmopen(21);
  IGrSelect(4, 21);
  IGrColourModel(0);
  IGrColourN(0x2040C0);
  IGrJoin(0.1f, 0.1f, 0.9f, 0.3f);
  const float x[] = {0.1f, 0.3f, 0.5f, 0.7f}, y[] = {0.5f, 0.8f, 0.5f, 0.8f};
  IGrPolyLine(x, y);
  IGrColourN(0x10E020);
  IGrFillPattern(kFillSolid);
  IGrPolygonComplex(x, y);
  IGrRectangle(0.2f, 0.2f, 0.4f, 0.3f);
  const int pixels[] = {kRed, kGreen, kBlue, kYellow, kRed, kGreen};
  IGrImagePut(0.6f, 0.1f, 0.9f, 0.4f, 3, 2, pixels);
  const auto first = drawing_of(walk(yygcgmdata(21)));
  ASSERT_EQ(first.size(), 5u);
  EXPECT_EQ(first[4].id, 9);  // the cell array
  yygcgmopen(22);
  IGrSelect(4, 22);
  IGrReplay(21);
  const auto second = drawing_of(walk(yygcgmdata(22)));
  ASSERT_EQ(second.size(), first.size());
  for (size_t i = 0; i < first.size(); ++i) {
    EXPECT_EQ(second[i].id, first[i].id) << i;
    // Points read back and written again land on the same VDC integers, give or take one.
    ASSERT_EQ(second[i].params.size(), first[i].params.size()) << i;
    const size_t coords = first[i].id == 9 ? 12 : first[i].params.size();
    for (size_t k = 0; k + 1 < coords; k += 2) {
      const auto v = [&](const std::string& p) {
        return static_cast<int16_t>((static_cast<unsigned char>(p[k]) << 8) | static_cast<unsigned char>(p[k + 1]));
      };
      EXPECT_NEAR(v(second[i].params), v(first[i].params), 1) << i << " " << k;
    }
    EXPECT_EQ(second[i].params.substr(coords), first[i].params.substr(coords)) << i;
  }
}

TEST_F(ReadBackTest, LongTextsAndTheMemoryWritersKeepElementsWhole) {
  std::string out;
  yycgm9(out, std::string(300, 'x'));
  ASSERT_EQ(out.size(), 1u + 2 + 300);
  EXPECT_EQ(static_cast<unsigned char>(out[0]), 255);
  EXPECT_EQ((static_cast<unsigned char>(out[1]) << 8) | static_cast<unsigned char>(out[2]), 300);
  out.clear();
  yycgm9(out, "short");
  EXPECT_EQ(out, std::string("\x05short"));

  IGrSelect(4, 23);
  yygcgmopen(23, 12);  // emptied after the metafile's start
  yygcgm2(4, 1, 8);
  yygcgm6(1, 2);
  yygcgm6(-1, 4);
  EXPECT_EQ(yygcgmdata(23), std::string("\x40\x28\x00\x01\x00\x02\xFF\xFF\x00\x04", 10));
  yygcgm4(5, 4, 0x030201);  // six bytes: no room, dropped whole
  EXPECT_EQ(yygcgmdata(23).size(), 10u);
  EXPECT_NE(WInfoError(1), 0);
  yygcgm5(7);
  EXPECT_EQ(yygcgmdata(23).size(), 12u);
}

// Character-set files of our own, in a directory of their own.
class CharFileTest : public GraphicsTest {
 protected:
  void SetUp() override {
    GraphicsTest::SetUp();
    dir_ = fs::temp_directory_path() /
           ("zelv_chr_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()));
    fs::create_directories(dir_);
    saved_dir_ = zelvy_data::data().cdefdir[0];
    saved_set_ = zelvy_data::data().cdeffile[2];
    zelvy_data::data().cdefdir[0] = dir_.string() + "/";
  }
  void TearDown() override {
    zelvy_data::data().cdefdir[0] = saved_dir_;
    zelvy_data::data().cdeffile[2] = saved_set_;
    WGrVFontStandard();
    std::error_code ec;
    fs::remove_all(dir_, ec);
    GraphicsTest::TearDown();
  }
  void write(const std::string& name, const std::string& text) {
    std::ofstream(dir_ / name, std::ios::binary) << text;
  }
  // A font whose "!" (33) and "\"" (34) are the two diagonals of the grid; the
  // rest have no glyphs.
  static std::string good_font(int datalength = 10, const std::string& data = "00AAv0AA0") {
    std::string loc7 = "loc7 1 5", loc8 = "loc8";
    for (int i = 2; i < 96; ++i) loc7 += " " + std::to_string(datalength + 1);
    for (int i = 0; i < 96; ++i) loc8 += " " + std::to_string(datalength + 1);
    return "ZCHR 1\n# ours\ncell 12 12\ngrid 10 10\nset 8\nflags 1\nspacing 0\n" + loc7 + "\n" + loc8 +
           "\ndata " + std::to_string(datalength) + "\n" + data.substr(0, 5) + "\n" + data.substr(5) + "\n";
  }
  fs::path dir_;
  std::string saved_dir_, saved_set_;
};

TEST_F(CharFileTest, SoundFileReplacesTheBuiltInFont) {
  write("mine.chr", good_font(9, "00AAv0AA0"));
  zelvy_data::data().cdeffile[2] = "mine.chr";
  WGrVFontStandard();
  const auto& f = gs().font;
  EXPECT_EQ(f.cswfontfile, "mine.chr");
  EXPECT_EQ(f.cchdata, "00AAv0AA0");
  EXPECT_EQ(f.icloc7[0], 0);
  EXPECT_EQ(f.icloc7[1], 4);
  EXPECT_EQ(f.xspace, 12.0f);
  EXPECT_EQ(f.xgridc, 10.0f);
  EXPECT_EQ(f.ichvec, 1);
  // An outline font of the same name in the directory wins over its table too.
  write("swiss.chr", good_font(9, "00AAv0AA0"));
  WGrOFontSwiss();
  EXPECT_EQ(gs().font.cswfontfile, "swiss.chr");
  EXPECT_EQ(gs().font.cchdata, "00AAv0AA0");
}

TEST_F(CharFileTest, BadFilesFallBackToTheBuiltInFontAndDrawSafely) {
  WGrVFontStandard();
  const std::string builtin = gs().font.cchdata;
  const std::string good = good_font(9, "00AAv0AA0");
  std::string decreasing = good;
  decreasing.replace(decreasing.find("loc7 1 5"), 8, "loc7 5 1");
  std::string beyond = good;
  beyond.replace(beyond.find("loc7 1 5"), 8, "loc7 1 99");
  std::string binary(700, '\0');
  for (size_t i = 0; i < binary.size(); ++i) binary[i] = static_cast<char>(i * 37);
  const std::vector<std::pair<std::string, std::string>> bad = {
      {"empty", ""},
      {"truncated header", good.substr(0, 60)},
      {"truncated data", good.substr(0, good.size() - 6)},
      {"locations falling", decreasing},
      {"location past the data", beyond},
      {"unknown keyword", "ZCHR 1\nwhat 1\n"},
      {"negative length", "ZCHR 1\ndata -5\n"},
      {"bytes", binary},
      {"other magic", "ZCHR 2\n" + good.substr(7)},
  };
  for (const auto& [why, text] : bad) {
    write("bad.chr", text);
    zelvy_data::data().cdeffile[2] = "bad.chr";
    WGrVFontStandard();
    EXPECT_EQ(gs().font.cswfontfile, "standard.chr") << why;
    EXPECT_EQ(gs().font.cchdata, builtin) << why;
  }
  // Data beyond a font's room is refused with its error; a missing file quietly.
  write("big.chr", good_font(17001, std::string(17001, '0')));
  zelvy_data::data().cdeffile[2] = "big.chr";
  WGrVFontStandard();
  EXPECT_EQ(WInfoError(1), 25);
  EXPECT_EQ(gs().font.cchdata, builtin);
  zelvy_data::data().cdeffile[2] = "none.chr";
  WGrVFontStandard();
  EXPECT_EQ(WInfoError(1), 0);
  EXPECT_EQ(gs().font.cswfontfile, "standard.chr");
  // A font of our own with glyphs only for two codes draws every code safely.
  zelvy_data::data().cdeffile[2] = "mine.chr";
  write("mine.chr", good);
  WGrVFontStandard();
  open(kDriverDxf, false, 720, 720);
  IGrCharType(1);
  std::string all;
  for (int c = 1; c < 256; ++c) all.push_back(static_cast<char>(c));
  WGrTextString(0.1f, 0.5f, all);
  const auto lines = close();
  EXPECT_EQ(count(lines, "LINE"), 2);  // the two diagonals, nothing else
}

}  // namespace
