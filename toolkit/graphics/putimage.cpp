// Images on the page: an in-memory picture put into a box on both paths, and
// the PNG form in which a file driver can embed it.
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"

#include "toolkit/base/error.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

using zelvy_graph::state;
namespace zg = zelvy_graph;

namespace {

constexpr int kErrorEmptyBox = 22;
constexpr int kErrorBadImage = 27;

void put32(std::string& out, uint32_t v) {
  out.push_back(static_cast<char>(v >> 24));
  out.push_back(static_cast<char>((v >> 16) & 0xFF));
  out.push_back(static_cast<char>((v >> 8) & 0xFF));
  out.push_back(static_cast<char>(v & 0xFF));
}

void chunk(std::string& out, const char* type, const std::string& data) {
  put32(out, static_cast<uint32_t>(data.size()));
  const std::string body = std::string(type, 4) + data;
  out += body;
  put32(out, static_cast<uint32_t>(
                 crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()))));
}

}  // namespace

std::string yypngencode(const zg::ImageData& image) {
  if (!image.valid()) return {};
  constexpr std::array<unsigned char, 8> kSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  constexpr int kBitDepth = 8, kColourRgb = 2;
  std::string png(kSignature.begin(), kSignature.end());
  std::string header;
  put32(header, static_cast<uint32_t>(image.width));
  put32(header, static_cast<uint32_t>(image.height));
  header += {static_cast<char>(kBitDepth), static_cast<char>(kColourRgb), 0, 0, 0};
  chunk(png, "IHDR", header);
  // Each row: filter type 0, then the bytes as they stand.
  std::string raw;
  raw.reserve(static_cast<size_t>(image.height) * (static_cast<size_t>(image.width) * 3 + 1));
  for (int y = 0; y < image.height; ++y) {
    raw.push_back(0);
    for (int x = 0; x < image.width; ++x) {
      const int c = image.at(x, y);
      raw += {static_cast<char>(c & 0xFF), static_cast<char>((c >> 8) & 0xFF), static_cast<char>((c >> 16) & 0xFF)};
    }
  }
  uLongf size = compressBound(static_cast<uLong>(raw.size()));
  std::string packed(size, '\0');
  if (compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(raw.data()),
               static_cast<uLong>(raw.size())) != Z_OK)
    return {};
  packed.resize(size);
  chunk(png, "IDAT", packed);
  chunk(png, "IEND", {});
  return png;
}

void yygrimage(const zg::ImageData& image, float x1, float y1, float x2, float y2) {
  auto& s = state();
  const auto grx = s.grx, gry = s.gry;
  s.grx[0] = std::min(x1, x2);
  s.grx[1] = std::max(x1, x2);
  s.gry[0] = std::min(y1, y2);
  s.gry[1] = std::max(y1, y2);
  s.image = &image;
  s.igpar1 = 0;
  s.igpar2 = 0;
  yygdrv(zg::OpImage);
  yyhdrv(zg::OpImage);
  s.image = nullptr;
  s.grx = grx;
  s.gry = gry;
}

void IGrImagePut(float x1, float y1, float x2, float y2, int width, int height, std::span<const int> rgb) {
  zg::ImageData image;
  image.width = width;
  image.height = height;
  image.rgb.assign(rgb.begin(), rgb.end());
  if (!image.valid()) {
    yyerror(kErrorBadImage, "IGrImagePut");
    return;
  }
  float rx1, ry1, rx2, ry2;
  yye2i(x1, y1, rx1, ry1);
  yye2i(x2, y2, rx2, ry2);
  if (rx1 == rx2 || ry1 == ry2) {
    yyerror(kErrorEmptyBox, "IGrImagePut");
    return;
  }
  yygrimage(image, rx1, ry1, rx2, ry2);
}
