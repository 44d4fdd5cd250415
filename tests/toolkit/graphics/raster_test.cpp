// The raster device: printer streams read back to the page they came from,
// the image driver's pictures, dither patterns.
#include "graphics_fixture.h"

#include "toolkit/graphics/image_files.h"
#include "toolkit/graphics/image_private.h"
#include "toolkit/graphics/raster_private.h"

#include <bit>
#include <cctype>
#include <random>

namespace zg = zelvy_graph;

namespace {

// Ink of a page as the paper sees it (portrait or turned), the form the
// decoders give back.
struct Sheet {
  int w = 0, h = 0;
  std::vector<uint32_t> ink;
  uint32_t& at(int c, int r) { return ink[static_cast<size_t>(r) * static_cast<size_t>(w) + static_cast<size_t>(c)]; }
};

Sheet sheet_of(const zg::RasterPage& page, bool turned) {
  Sheet s{turned ? page.nrypix : page.nrxpix, turned ? page.nrxpix : page.nrypix, {}};
  s.ink.resize(static_cast<size_t>(s.w) * static_cast<size_t>(s.h));
  for (int r = 0; r < s.h; ++r)
    for (int c = 0; c < s.w; ++c) s.at(c, r) = turned ? page.get(r, c) : page.get(c, page.nrypix - 1 - r);
  return s;
}

zg::RasterPage random_page(int w, int h, int bits, unsigned seed) {
  zg::RasterPage page;
  page.allocate(w, h, bits);
  std::mt19937 random(seed);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      // Runs and noise, so that both compressions are tried.
      const uint32_t v = x < w / 3 ? static_cast<uint32_t>(y / 5) : static_cast<uint32_t>(random());
      page.set(x, y, v & (bits == 1 ? 1u : 7u));
    }
  return page;
}

std::string unpack_bits(std::string_view in, size_t want) {
  std::string out;
  for (size_t i = 0; i < in.size() && out.size() < want;) {
    const int n = static_cast<signed char>(in[i++]);
    if (n >= 0) {
      out.append(in.substr(i, static_cast<size_t>(n) + 1));
      i += static_cast<size_t>(n) + 1;
    } else if (n != -128 && i < in.size()) {
      out.append(static_cast<size_t>(1 - n), in[i++]);
    }
  }
  return out;
}

void set_row(Sheet& s, int r, std::string_view bytes, uint32_t value) {
  for (int c = 0; c < s.w && static_cast<size_t>(c / 8) < bytes.size(); ++c)
    if ((static_cast<uint8_t>(bytes[static_cast<size_t>(c / 8)]) >> (7 - c % 8)) & 1) s.at(c, r) |= value;
}

Sheet read_pcl(const std::string& in, int w, int h) {
  Sheet s{w, h, std::vector<uint32_t>(static_cast<size_t>(w) * static_cast<size_t>(h))};
  int method = 0, row = 0, plane = 0;
  for (size_t i = 0; i < in.size();) {
    EXPECT_EQ(in[i], '\x1b') << "at " << i;
    if (in[i++] != '\x1b') break;
    if (in[i] == 'E') { ++i; continue; }
    const std::string group = in.substr(i, 2);
    i += 2;
    for (;;) {
      size_t used = 0;
      const bool digits = std::isdigit(static_cast<unsigned char>(in[i])) || in[i] == '-';
      const int n = digits ? std::stoi(in.substr(i), &used) : 0;
      i += used;
      const char c = in[i++];
      if (group == "*b" && (c == 'V' || c == 'W')) {
        std::string data = in.substr(i, static_cast<size_t>(n));
        i += static_cast<size_t>(n);
        const size_t want = static_cast<size_t>((w + 7) / 8);
        if (method == 1) {
          std::string out;
          for (size_t k = 0; k + 1 < data.size(); k += 2) out.append(static_cast<size_t>(static_cast<uint8_t>(data[k])) + 1, data[k + 1]);
          data = out;
        } else if (method == 2) {
          data = unpack_bits(data, want);
        }
        set_row(s, row, data, 1u << plane);
        if (c == 'W') { ++row; plane = 0; } else { ++plane; }
      }
      if (group == "*b" && c == 'M') method = n;
      if (c >= 'A' && c <= 'Z') break;
    }
  }
  EXPECT_EQ(row, h);
  return s;
}

// Colour bands by their selector: black inks all three planes.
uint32_t band_value(int colour, bool planes) {
  if (!planes) return 1;
  switch (colour) {
    case 4: return 4;
    case 1: return 2;
    case 2: return 1;
    default: return 7;
  }
}

Sheet read_escp2(const std::string& in, int w, int h, bool planes) {
  Sheet s{w, h, std::vector<uint32_t>(static_cast<size_t>(w) * static_cast<size_t>(h))};
  int row = 0, colour = 0;
  for (size_t i = 0; i < in.size();) {
    const char c = in[i++];
    if (c == '\r' || c == '\f') continue;
    EXPECT_EQ(c, '\x1b');
    const char k = in[i++];
    if (k == '@') continue;
    if (k == '(') {
      const char what = in[i++];
      const size_t n = static_cast<uint8_t>(in[i]) | static_cast<uint8_t>(in[i + 1]) << 8;
      if (what == 'v') row += static_cast<uint8_t>(in[i + 2]) | static_cast<uint8_t>(in[i + 3]) << 8;
      i += 2 + n;
    } else if (k == 'r') {
      colour = in[i++];
    } else if (k == '\\') {
      i += 2;
    } else if (k == '.') {
      const bool packed = in[i] == 1;
      const int width = static_cast<uint8_t>(in[i + 4]) | static_cast<uint8_t>(in[i + 5]) << 8;
      i += 6;
      const size_t want = static_cast<size_t>((width + 7) / 8);
      std::string data;
      if (packed) {
        // Walk the packed bytes to find where they end.
        size_t got = 0, j = i;
        while (got < want) {
          const int n = static_cast<signed char>(in[j++]);
          if (n >= 0) { got += static_cast<size_t>(n) + 1; j += static_cast<size_t>(n) + 1; }
          else { got += static_cast<size_t>(1 - n); ++j; }
        }
        data = unpack_bits(in.substr(i, j - i), want);
        i = j;
      } else {
        data = in.substr(i, want);
        i += want;
      }
      set_row(s, row, data, band_value(colour, planes));
    } else {
      ADD_FAILURE() << "unknown sequence " << static_cast<int>(k);
      break;
    }
  }
  EXPECT_EQ(row, h);
  return s;
}

Sheet read_escp(const std::string& in, int w, int h, bool planes, int pins, int interl) {
  Sheet s{w, h, std::vector<uint32_t>(static_cast<size_t>(w) * static_cast<size_t>(h))};
  int units = 0, feed = 0, colour = 0;
  bool started = false;
  const int per = pins / 8;
  auto columns = [&](size_t at, int n) {
    const int base = (units / feed) * pins * interl + units % feed;
    for (int c = 0; c < n && c < w; ++c)
      for (int k = 0; k < per; ++k)
        for (int bit = 0; bit < 8; ++bit)
          if ((static_cast<uint8_t>(in[at + static_cast<size_t>(c * per + k)]) >> (7 - bit)) & 1) {
            const int r = base + (k * 8 + bit) * interl;
            if (r < h) s.at(c, r) |= band_value(colour, planes);
          }
  };
  for (size_t i = 0; i < in.size();) {
    const char c = in[i++];
    if (c == '\r' || c == '\f') continue;
    if (c == '\n') { units += feed; continue; }
    EXPECT_EQ(c, '\x1b');
    const char k = in[i++];
    auto count = [&] { const int n = static_cast<uint8_t>(in[i]) | static_cast<uint8_t>(in[i + 1]) << 8; i += 2; return n; };
    switch (k) {
      case 'U': ++i; break;
      case 'J': if (started) units += static_cast<uint8_t>(in[i]); ++i; break;
      case '3': feed = static_cast<uint8_t>(in[i++]); started = true; break;
      case 'r': colour = in[i++]; break;
      case '*': { ++i; const int n = count(); columns(i, n); i += static_cast<size_t>(n * per); break; }
      case '[': { ++i; const int n = count() - 1; ++i; columns(i, n / per); i += static_cast<size_t>(n); break; }
      default: { const int n = count(); columns(i, n); i += static_cast<size_t>(n * per); }
    }
  }
  return s;
}

}  // namespace

// Every printer class and compression, both orientations, read back pixel
// for pixel.
TEST(RasterPrinter, StreamsReadBackToThePage) {
  struct Case {
    int model;
    int compression;
  };
  // PCL plain, colour, both compressions; ESC/P2 plain and colour; 8- and
  // 24-pin ESC/P, one and two passes, colour.
  const Case cases[] = {{28, 0}, {28, 1}, {28, 2}, {35, 2}, {10, 0}, {36, 0}, {37, 0},
                        {2, 0},  {17, 0}, {19, 0}, {23, 0}, {25, 0}};
  for (const auto& cs : cases) {
    IPrinter(cs.model);
    const auto model = zg::yyprintermodel();
    for (const int resolution : {0, 1}) {
      if (resolution >= model.nresn) continue;
      for (const bool turned : {false, true}) {
        SCOPED_TRACE("model " + std::to_string(cs.model) + " resolution " + std::to_string(resolution) +
                     (turned ? " turned" : ""));
        zg::PrinterPage pp;
        pp.hdpi = model.ipresn[static_cast<size_t>(resolution)];
        pp.vdpi = model.ipgraf < 6 ? model.nprpin * 216 / model.lfdhgt * (pp.hdpi >= 100 ? 2 : 1) : pp.hdpi;
        if (model.ipgraf == 5) pp.vdpi = 180;
        pp.orientation = turned;
        pp.compression = cs.compression;
        const bool planes = model.navpln > 1;
        const int interl = model.ipgraf < 6 && pp.vdpi > model.nprpin * 216 / model.lfdhgt ? 2 : 1;
        const int band = model.nprpin * interl;
        const int w = 53, h = model.ipgraf < 6 ? 3 * band : 37;
        const auto page = random_page(turned ? h : w, turned ? w : h, planes ? 3 : 1, static_cast<unsigned>(cs.model));
        std::string out;
        yydump(page, model, pp, out);
        const auto want = sheet_of(page, turned);
        Sheet got;
        if (model.ipgraf >= 7) got = read_pcl(out, want.w, want.h);
        else if (model.ipgraf == 6) got = read_escp2(out, want.w, want.h, planes);
        else got = read_escp(out, want.w, want.h, planes, model.nprpin, interl);
        EXPECT_EQ(got.ink, want.ink);
      }
    }
  }
}

TEST(RasterPrinter, CompressionsKeepTheirLimits) {
  // A long run splits at 128 for the packed rule and 256 for byte pairs.
  const std::string run(300, 'a');
  const auto packed = yydumpcompressescp2(run);
  EXPECT_EQ(packed, std::string({static_cast<char>(-127), 'a', static_cast<char>(-127), 'a', static_cast<char>(-43), 'a'}));
  EXPECT_EQ(yydumpcompresspcl(run, 1), std::string({static_cast<char>(255), 'a', 43, 'a'}));
  EXPECT_EQ(unpack_bits(yydumpcompressescp2("abcdde"), 6), "abcdde");
}

TEST(RasterPrinter, ModelTable) {
  IPrinter(27);  // not a model: the default
  EXPECT_EQ(zg::yyprintermodel().idevice, 28);
  EXPECT_EQ(zg::yyprintermodel().ipgraf, 7);
  IPrinter(29);  // class 11 prints as PCL class 7 at 600 dpi
  EXPECT_EQ(zg::yyprintermodel().ipgraf, 7);
  EXPECT_EQ(zg::yyprintermodel().ipresn[0], 600);
  EXPECT_EQ(zg::yyprintermodel().itype2, 0);  // waits for its second type
  IPrinter2(3);
  EXPECT_EQ(zg::yyprintermodel().itype2, 3);
  IPrinter(13);
  EXPECT_EQ(zg::yyprintermodel().itype2, 1);
  EXPECT_EQ(zg::yyprintermodel().iprcol, 1);
  EXPECT_EQ(zg::yyprintermodel().navpln, 3);
}

TEST(RasterDither, LevelsFillTheirShare) {
  EXPECT_EQ(yydithlevel(32, 0), ~0u);
  EXPECT_EQ(yydithlevel(0, 1), 0u);
  for (int level = 1; level < 32; ++level)
    for (int channel = 0; channel < 3; ++channel) EXPECT_EQ(std::popcount(yydithlevel(level, channel)), level);
  uint32_t r, g, b;
  yydith(1, 2, 255, 255, 255, r, g, b);
  EXPECT_EQ(r, 0u);  // white takes no ink
  yydith(1, 8, 0, 255, 0, r, g, b);
  EXPECT_EQ(r, ~0u);
  EXPECT_EQ(g, 0u);
  EXPECT_EQ(b, ~0u);
}

class RasterDriver : public GraphicsTest {
 protected:
  std::vector<int> picture(int bits, int format = 3) {
    options_ = {{23, bits}, {26, format}};
    open(6, false, 40, 30);
    IGrUnits(0, 0, 40, 30);
    IGrColourModel(0);
    IGrColourN(0x0000FF);
    IGrFillPattern(zelv_graphics::kFillSolid);
    IGrRectangle(10, 10, 20, 20);
    close();
    std::vector<int> data;
    IGrLoadImageData(path_, data);
    return data;
  }
};

TEST_F(RasterDriver, PagesBecomePictures) {
  const auto data = picture(24);
  ASSERT_EQ(data.size(), 40u * 30u);
  // Inside the rectangle red, outside white; rows from the top.
  EXPECT_EQ(data[15 * 40 + 15], 0x0000FF);
  EXPECT_EQ(data[2 * 40 + 2], 0xFFFFFF);
  EXPECT_EQ(data[25 * 40 + 15], 0xFFFFFF);
  for (const int format : {0, 1, 2, 3, 4}) {
    const auto eight = picture(8, format);
    ASSERT_EQ(eight.size(), 40u * 30u) << format;
    EXPECT_NEAR(eight[15 * 40 + 15] & 0xFF, 0xFF, 40) << format;
    EXPECT_NEAR((eight[15 * 40 + 15] >> 8) & 0xFF, 0, 40) << format;
  }
}

TEST_F(RasterDriver, EmptyPagesAreNotWritten) {
  options_ = {{26, 3}};
  open(6, false, 40, 30);
  close();
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(RasterDriver, PrinterWritesItsStream) {
  IPrinter(28);
  open(4, false, 72, 36);
  IGrUnits(0, 0, 1, 1);
  IGrFillPattern(zelv_graphics::kFillSolid);
  IGrRectangle(0.2f, 0.2f, 0.8f, 0.8f);
  close();
  int info[5];
  IGrFileInfo(path_, info, 5);
  EXPECT_EQ(info[0], zelv_graphics::kFilePcl);
  EXPECT_EQ(info[4], 150);  // the second resolution by default
}

TEST_F(RasterDriver, PicturesFillTheClipBox) {
  zg::RasterPage source;
  source.allocate(20, 15, 24);
  for (int y = 0; y < 15; ++y)
    for (int x = 0; x < 20; ++x) source.set(x, y, static_cast<uint32_t>(x * 12 | (y * 16) << 8 | 0x500000));
  const auto picture_file = (std::filesystem::temp_directory_path() / "zelv_raster_source.png").string();
  ASSERT_EQ(yypng1(source, picture_file).error, 0);
  options_ = {{23, 24}, {26, 3}};
  open(6, false, 40, 30);
  const std::string output = gs().copsys;
  gs().copsys = picture_file;
  yyvras(zg::OpImage);
  gs().copsys = output;
  close();
  std::vector<int> data;
  IGrLoadImageData(path_, data);
  ASSERT_EQ(data.size(), 40u * 30u);
  // Twice the size: each source pixel twice each way, rows from the top.
  for (int y = 0; y < 30; ++y)
    for (int x = 0; x < 40; ++x)
      ASSERT_EQ(data[static_cast<size_t>(y * 40 + x)], source.rgb(x / 2, 14 - y / 2)) << x << "," << y;
  std::filesystem::remove(picture_file);
}

TEST_F(RasterDriver, PagesTakeTheirOwnFilesAndColours) {
  // A 4-bit page keeps palette row 16 as the value 9.
  options_ = {{23, 4}, {26, 2}};
  open(6, false, 16, 8);
  IGrColourModel(1);
  IGrColourN(16);
  IGrFillPattern(zelv_graphics::kFillSolid);
  IGrRectangle(0.1f, 0.1f, 0.9f, 0.9f);
  EXPECT_EQ(zg::yyrasterpage().get(8, 4), 9u);
  IGrEndPage();
  IGrRectangle(0.2f, 0.2f, 0.5f, 0.5f);
  close();
  const std::string second = path_ + "2";
  ASSERT_TRUE(std::filesystem::exists(second));
  std::vector<int> data;
  IGrLoadImageData(second, data);
  ASSERT_EQ(data.size(), 16u * 8u);
  EXPECT_EQ(data[4 * 16 + 5], gs().irgb256[16]);
  // The run-length file knows its size.
  int info[2];
  IGrFileInfo(second, info, 2);
  EXPECT_EQ(info[0], zelv_graphics::kFileBmp);
  std::ifstream in(second, std::ios::binary);
  std::vector<unsigned char> b((std::istreambuf_iterator<char>(in)), {});
  EXPECT_EQ(static_cast<size_t>(b[2] | b[3] << 8 | b[4] << 16), b.size());
  std::filesystem::remove(second);
}
