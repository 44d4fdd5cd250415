// Image files: pictures written here are read alike by two stock readers,
// pictures written by two stock tools are read alike here, and damaged files
// give an error, never a crash.
#include "toolkit/base/error.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/graphics/image_files.h"
#include "toolkit/graphics/image_private.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

namespace zg = zelvy_graph;
namespace fs = std::filesystem;
using namespace zelv_graphics;

namespace {

const std::string kSamples = std::string(ZELV_SOURCE_DIR) + "/tests/toolkit/graphics/image_samples.py";

fs::path scratch_root() { return fs::temp_directory_path() / ("zelv_images_" + std::to_string(getpid())); }

fs::path scratch(const std::string& name) {
  const fs::path d = scratch_root() / name;
  fs::create_directories(d);
  return d;
}

// The samples go when the tests are done.
struct Scratch {
  ~Scratch() {
    std::error_code ec;
    fs::remove_all(scratch_root(), ec);
  }
} scratch_cleanup;

std::vector<uint8_t> bytes_of(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A stock reading: width, height, RGBA.
struct Reading {
  int w = 0, h = 0;
  std::vector<uint8_t> rgba;
};
Reading reading(const fs::path& p) {
  const auto b = bytes_of(p);
  Reading r;
  if (b.size() < 8) return r;
  std::memcpy(&r.w, b.data(), 4);
  std::memcpy(&r.h, b.data() + 4, 4);
  r.rgba.assign(b.begin() + 8, b.end());
  return r;
}

// Largest channel difference between our pixels and a reading; alpha is
// compared only when `alpha` is set.
int difference(const std::vector<int>& ours, int w, int h, const Reading& ref, bool alpha) {
  if (ref.w != w || ref.h != h || ref.rgba.size() != static_cast<size_t>(w) * static_cast<size_t>(h) * 4) return 1000;
  int worst = 0;
  for (size_t i = 0; i < ours.size(); ++i) {
    const int c = ours[i];
    const int a = 255 - ((c >> 24) & 0xFF);
    // Fully clear pixels may carry any colour.
    if (alpha && ref.rgba[4 * i + 3] == 0 && a == 0) continue;
    for (int k = 0; k < 3; ++k) worst = std::max(worst, std::abs(((c >> (8 * k)) & 0xFF) - ref.rgba[4 * i + static_cast<size_t>(k)]));
    if (alpha) worst = std::max(worst, std::abs(a - ref.rgba[4 * i + 3]));
  }
  return worst;
}

int run(const std::string& command) { return std::system(command.c_str()); }

// A page of each kind with a pattern that tries every run length and colour.
zg::RasterPage page_of(int bits, bool alpha = false, int w = 45, int h = 29) {
  zg::RasterPage page;
  page.allocate(w, h, bits);
  page.brtrans = alpha;
  page.dpi = 96;
  for (size_t i = 0; i < 256; ++i) page.irgb256[i] = static_cast<int>((i * 37) % 256 | ((i * 91) % 256) << 8 | ((i * 13) % 256) << 16);
  for (size_t i = 0; i < 16; ++i) page.irgb16[i] = page.irgb256[i * 16 + 3];
  const uint32_t colours = bits == 24 ? 0 : 1u << bits;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      // Long runs on the left, noise on the right.
      const uint32_t v = x < w / 2 ? static_cast<uint32_t>(y / 3 + x / 9) : static_cast<uint32_t>(x * 7 + y * 13 + x * y);
      if (bits == 24) {
        const uint32_t smooth = static_cast<uint32_t>(x * 255 / w) | static_cast<uint32_t>(y * 255 / h) << 8 | 0x400000u;
        page.set(x, y, (alpha ? static_cast<uint32_t>((x * 5 + 40) % 256) << 24 : 0) | (x < w / 2 ? smooth : (v * 2654435761u) & 0xFFFFFF));
      } else {
        page.set(x, y, v % colours);
      }
    }
  return page;
}

// The page as the reader sees it: top row first, 255 - alpha on top.
std::vector<int> expected(const zg::RasterPage& page) {
  std::vector<int> out;
  for (int y = page.nrypix - 1; y >= 0; --y)
    for (int x = 0; x < page.nrxpix; ++x) {
      int c = page.rgb(x, y);
      if (page.brtrans) c |= static_cast<int>(255 - (page.get(x, y) >> 24)) << 24;
      out.push_back(c);
    }
  return out;
}

struct Written {
  std::string name;
  int bits;
  bool alpha;
  int tolerance;
};

zg::ImageResult write(const zg::RasterPage& page, const fs::path& p) {
  const auto ext = p.extension().string();
  if (ext == ".png") return yypng1(page, p.string());
  if (ext == ".pcx") return yypcx1(page, p.string());
  if (ext == ".jpg") return yyjpeg1(page, p.string(), 95);
  return yybmp1(page, p.string(), p.stem().string().find("rle") != std::string::npos);
}

const std::vector<Written> kWritten = {
    {"w1.png", 1, false, 0},   {"w4.png", 4, false, 0},   {"w8.png", 8, false, 0},     {"w24.png", 24, false, 0},
    {"w32.png", 24, true, 0},  {"w1.bmp", 1, false, 0},   {"w4.bmp", 4, false, 0},     {"w8.bmp", 8, false, 0},
    {"w24.bmp", 24, false, 0}, {"w4rle.bmp", 4, false, 0}, {"w8rle.bmp", 8, false, 0}, {"w1.pcx", 1, false, 0},
    {"w4.pcx", 4, false, 0},   {"w8.pcx", 8, false, 0},   {"w24.pcx", 24, false, 0},   {"w24.jpg", 24, false, 40},
};

}  // namespace

// Every writer against both stock readers and our own loader, at even and
// odd widths (rows padded differently).
TEST(ImageFiles, WrittenPicturesReadAlikeEverywhere) {
  for (const int width : {45, 64}) {
    const auto dir = scratch("written" + std::to_string(width));
    for (const auto& w : kWritten) {
      SCOPED_TRACE(w.name + " width " + std::to_string(width));
      auto page = page_of(w.bits, w.alpha, width);
      if (w.name.ends_with(".jpg")) {
        // Lossy: a smooth picture, so the loss stays small.
        for (int y = 0; y < page.nrypix; ++y)
          for (int x = 0; x < page.nrxpix; ++x) page.set(x, y, static_cast<uint32_t>(x * 4 | (y * 6) << 8 | 0x600000));
      }
      const auto path = dir / w.name;
      ASSERT_EQ(write(page, path).error, 0);
      const auto want = expected(page);
      std::vector<int> ours;
      std::array<int, 13> info{};
      IGrLoadImageData(path.string(), ours, w.alpha ? kImageKeepAlpha : 0, info);
      ASSERT_EQ(WInfoError(1), 0);
      ASSERT_EQ(ours.size(), want.size());
      int worst = 0;
      for (size_t i = 0; i < ours.size(); ++i)
        for (int k = 0; k < 4; ++k) worst = std::max(worst, std::abs(((ours[i] >> (8 * k)) & 0xFF) - ((want[i] >> (8 * k)) & 0xFF)));
      EXPECT_LE(worst, w.tolerance);
      ASSERT_EQ(run("/usr/bin/python3 " + kSamples + " read " + path.string()), 0);
      EXPECT_LE(difference(want, page.nrxpix, page.nrypix, reading(path.string() + ".pil.ref"), w.alpha), w.tolerance) << "PIL";
      // That reader takes a set bit of a one-bit PCX for black, the other for white.
      auto theirs = want;
      if (w.name == "w1.pcx")
        for (auto& c : theirs) c ^= 0xFFFFFF;
      EXPECT_LE(difference(theirs, page.nrxpix, page.nrypix, reading(path.string() + ".im.ref"), w.alpha), w.tolerance) << "convert";
    }
  }
}

TEST(ImageFiles, StockPicturesReadAlikeHere) {
  const auto dir = scratch("stock");
  ASSERT_EQ(run("/usr/bin/python3 " + kSamples + " make " + dir.string()), 0);
  std::ifstream manifest(dir / "manifest");
  int count = 0;
  for (std::string name; manifest >> name;) {
    int tolerance = 0;
    manifest >> tolerance;
    SCOPED_TRACE(name);
    const auto ref = reading(dir / (name + ".ref"));
    std::vector<int> ours;
    IGrLoadImageData((dir / name).string(), ours, kImageKeepAlpha);
    EXPECT_EQ(WInfoError(1), 0);
    int info[3] = {};
    IGrFileInfo((dir / name).string(), info, 3);
    EXPECT_EQ(info[1], ref.w);
    EXPECT_EQ(info[2], ref.h);
    // A 32-bit BMP keeps no alpha here; the stock reading does.
    EXPECT_LE(difference(ours, ref.w, ref.h, ref, !name.ends_with(".bmp")), tolerance);
    ++count;
  }
  EXPECT_GE(count, 30);
}

// Cut and damaged files of each format: cuts well short of the end are
// errors, flipped bytes may load or fail but never crash.
TEST(ImageFiles, DamagedFilesFailCleanly) {
  const auto dir = scratch("damaged");
  std::mt19937 random(7);
  for (const auto& w : kWritten) {
    SCOPED_TRACE(w.name);
    const auto path = dir / w.name;
    ASSERT_EQ(write(page_of(w.bits, w.alpha), path).error, 0);
    const auto whole = bytes_of(path);
    std::array<int, 13> info{};
    yygrfileinfo(whole, info, 13);
    const int type = info[0];
    for (size_t cut = 0; cut < whole.size() * 9 / 10; cut += 1 + whole.size() / 97) {
      zg::Picture pic;
      const auto r = yygrloadimagedata(std::span<const uint8_t>(whole).first(cut), type, true, pic);
      EXPECT_NE(r.error, 0) << "cut at " << cut;
      EXPECT_TRUE(pic.pixels.empty());
    }
    for (int trial = 0; trial < 300; ++trial) {
      auto bad = whole;
      const int flips = 1 + trial % 8;
      for (int f = 0; f < flips; ++f)
        bad[std::uniform_int_distribution<size_t>(0, bad.size() - 1)(random)] = static_cast<uint8_t>(random());
      zg::Picture pic;
      const auto r = yygrloadimagedata(bad, type, true, pic);
      if (r.error == 0) {
        EXPECT_EQ(pic.pixels.size(), static_cast<size_t>(pic.width) * static_cast<size_t>(pic.height));
      }
    }
  }
  // Through the public routine: the error state names the loader.
  const auto cut = dir / "cut.png";
  {
    const auto whole = bytes_of(dir / "w24.png");
    std::ofstream(cut, std::ios::binary).write(reinterpret_cast<const char*>(whole.data()), static_cast<std::streamsize>(whole.size() / 2));
  }
  std::vector<int> data{1, 2, 3};
  IGrLoadImageData(cut.string(), data);
  EXPECT_EQ(WInfoError(1), 2);
  EXPECT_TRUE(data.empty());
  IGrLoadImageData((dir / "missing.png").string(), data);
  EXPECT_EQ(WInfoError(1), 1);
}

TEST(ImageFiles, TypesAreToldByContent) {
  const auto dir = scratch("types");
  auto file = [&](const std::string& name, const std::string& text) {
    std::ofstream(dir / name, std::ios::binary) << text;
    int info[13];
    IGrFileInfo((dir / name).string(), info, 13);
    return std::vector<int>(info, info + 13);
  };
  EXPECT_EQ(file("short", "BM\0")[0], kFileUnreadable);
  int none[2] = {5, 5};
  IGrFileInfo((dir / "nothing-here").string(), none, 2);
  EXPECT_EQ(none[0], kFileUnreadable);
  EXPECT_EQ(none[1], 5);  // nothing else changed
  // "BM" alone isn't enough: the reserved word must be zero.
  EXPECT_EQ(file("bm", std::string("BM\0\0\0\0\1\0\0\0\0\0\0\0\x28\0\0\0", 18))[0], kFileUnknown);
  EXPECT_EQ(file("ps", "%!PS-Adobe-3.0\n%%BoundingBox: 0 0 200 100\n"), (std::vector<int>{10, 200, 100, 1, -1, -1, -1, -1, -1, -1, -1, -1, -1}));
  EXPECT_EQ(file("hpgl", "  IN;SP1;")[0], kFileHpgl);
  EXPECT_EQ(file("dxf", "0\nSECTION\n2\nHEADER\n")[0], kFileDxf);
  EXPECT_EQ(file("dxf2", "999\nmade here\n0\nSECTION\n")[0], kFileDxf);
  const auto svg = file("svg", "<?xml version=\"1.0\"?>\n<!DOCTYPE svg>\n<svg width=\"640\" height=\"480\">");
  EXPECT_EQ(svg[0], kFileSvg);
  EXPECT_EQ(svg[1], 640);
  EXPECT_EQ(svg[2], 480);
  EXPECT_EQ(file("pcl", std::string("\x1b" "E\x1b*t300R", 9))[0], kFilePcl);
  EXPECT_EQ(file("pcl", std::string("\x1b" "E\x1b*t300R", 9))[4], 300);
  EXPECT_EQ(file("escp", std::string("\x1b@\x1b(U\x01\x00\x0a", 9))[4], 360);
  // An icon of width byte 0 is 256 wide.
  EXPECT_EQ(file("ico", std::string("\0\0\1\0\1\0\0\x10", 8))[1], 256);
  // Values from our own writers.
  const auto png = dir / "p.png";
  auto page = page_of(8, false, 300, 200);
  page.dpi = 300;
  ASSERT_EQ(yypng1(page, png.string()).error, 0);
  int info[13];
  IGrFileInfo(png.string(), info, 13);
  EXPECT_EQ(std::vector<int>(info, info + 13), (std::vector<int>{15, 300, 200, 256, 0, 8, -1, -1, -1, 300, 300, -1, -1}));
  const auto bmp = dir / "p.bmp";
  ASSERT_EQ(yybmp1(page, bmp.string(), true).error, 0);
  IGrFileInfo(bmp.string(), info, 13);
  EXPECT_EQ(std::vector<int>(info, info + 13), (std::vector<int>{1, 300, 200, 256, 1, 8, 1, -1, -1, 300, 300, -1, 40}));
  const auto jpg = dir / "p.jpg";
  ASSERT_EQ(yyjpeg1(page_of(24, false, 30, 20), jpg.string(), 80).error, 0);
  IGrFileInfo(jpg.string(), info, 13);
  EXPECT_EQ(info[0], kFileJpeg);
  EXPECT_EQ(info[3], 1 << 24);
  EXPECT_EQ(info[9], 96);
}

TEST(ImageFiles, PngWriterKeepsItsForm) {
  // Eight bits: a 768-byte palette and filter byte 0 in every row.
  const auto path = scratch("form") / "p.png";
  ASSERT_EQ(yypng1(page_of(8, false, 10, 4), path.string()).error, 0);
  const auto b = bytes_of(path);
  const std::string text(b.begin(), b.end());
  const size_t plte = text.find("PLTE");
  ASSERT_NE(plte, std::string::npos);
  EXPECT_EQ((b[plte - 2] << 8) | b[plte - 1], 768);
  const size_t idat = text.find("IDAT");
  const size_t len = static_cast<size_t>(b[idat - 4] << 24 | b[idat - 3] << 16 | b[idat - 2] << 8 | b[idat - 1]);
  std::vector<unsigned char> raw(4 * 11);
  ASSERT_EQ(WUnCompress(std::span<const unsigned char>(b.data() + idat + 4, len), raw), 44);
  for (size_t row = 0; row < 4; ++row) EXPECT_EQ(raw[row * 11], 0);
  // Above eight bits the depth byte says 8.
  ASSERT_EQ(yypng1(page_of(24, false, 10, 4), path.string()).error, 0);
  EXPECT_EQ(bytes_of(path)[24], 8);
}
