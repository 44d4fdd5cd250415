// Writers of a raster page as PNG, BMP and PCX, coded here byte by byte.
#include "toolkit/graphics/image_files.h"
#include "toolkit/graphics/image_private.h"
#include "toolkit/graphics/graphics_private.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>

namespace zg = zelvy_graph;

namespace {

constexpr int kErrorOpen = 1, kErrorWrite = 2, kErrorZlib = 1044;
constexpr double kInchMetres = 0.0254;

// A file that remembers its first failing write.
struct Out {
  std::unique_ptr<std::FILE, zg::FileCloser> f;
  int error = 0;
  explicit Out(const std::string& name) : f(std::fopen(name.c_str(), "wb")) {
    if (!f) error = errno ? errno : EIO;
  }
  void write(const void* data, size_t n) {
    if (error == 0 && n > 0 && std::fwrite(data, 1, n, f.get()) != n) error = errno ? errno : EIO;
  }
  void write(const std::vector<uint8_t>& v) { write(v.data(), v.size()); }
  zg::ImageResult finish() {
    if (error == 0 && std::fflush(f.get()) != 0) error = errno ? errno : EIO;
    return error ? zg::ImageResult{kErrorWrite, error} : zg::ImageResult{};
  }
};

void put16(std::vector<uint8_t>& v, size_t at, uint32_t x) {
  v[at] = static_cast<uint8_t>(x);
  v[at + 1] = static_cast<uint8_t>(x >> 8);
}
void put32(std::vector<uint8_t>& v, size_t at, uint32_t x) {
  put16(v, at, x);
  put16(v, at + 2, x >> 16);
}
void yypngwrd(std::vector<uint8_t>& v, uint32_t x) {
  for (int s = 24; s >= 0; s -= 8) v.push_back(static_cast<uint8_t>(x >> s));
}

uint32_t per_metre(int dpi) { return static_cast<uint32_t>(dpi / kInchMetres); }

// The colour indexes of one page row packed to bytes, first pixel high.
void packed_row(const zg::RasterPage& page, int py, std::vector<uint8_t>& out) {
  const int w = page.nrxpix;
  if (page.nbitpx == 8) {
    out.resize(static_cast<size_t>(w));
    const uint32_t* src = page.irbuff.data() + static_cast<size_t>(py) * static_cast<size_t>(page.lenrrow);
    for (int x = 0; x < w; ++x) out[static_cast<size_t>(x)] = static_cast<uint8_t>(src[x >> 2] >> ((x & 3) * 8));
    return;
  }
  const int per = page.nbitpx == 1 ? 8 : 2;
  out.assign(static_cast<size_t>((w + per - 1) / per), 0);
  for (int x = 0; x < w; ++x) {
    const uint32_t v = page.get(x, py);
    if (per == 8) out[static_cast<size_t>(x / 8)] |= static_cast<uint8_t>(v << (7 - x % 8));
    else out[static_cast<size_t>(x / 2)] |= static_cast<uint8_t>(v << (x % 2 ? 0 : 4));
  }
}

void palette_rgb(const zg::RasterPage& page, std::vector<int>& pal) {
  switch (page.nbitpx) {
    case 1: pal = {0xFFFFFF, 0}; break;
    case 4: pal.assign(page.irgb16.begin(), page.irgb16.end()); break;
    case 8: pal.assign(page.irgb256.begin(), page.irgb256.end()); break;
    default: pal.clear();
  }
}

void png_chunk(Out& out, const char* type, const std::vector<uint8_t>& data) {
  std::vector<uint8_t> head;
  yypngwrd(head, static_cast<uint32_t>(data.size()));
  head.insert(head.end(), type, type + 4);
  out.write(head);
  out.write(data);
  uint32_t crc = yyPNGcrc(0, std::span<const uint8_t>(head).subspan(4));
  crc = yyPNGcrc(crc, data);
  std::vector<uint8_t> tail;
  yypngwrd(tail, crc);
  out.write(tail);
}

// A PCX line: runs of like bytes up to 63; a run, or a byte of 192 and
// above, goes as a count byte and the value.
void yypcx2(const std::vector<uint8_t>& line, std::vector<uint8_t>& out) {
  constexpr size_t kMaxRun = 63;
  constexpr uint8_t kCount = 192;
  for (size_t i = 0; i < line.size();) {
    size_t n = 1;
    while (i + n < line.size() && n < kMaxRun && line[i + n] == line[i]) ++n;
    if (n > 1 || line[i] >= kCount) out.push_back(static_cast<uint8_t>(kCount + n));
    out.push_back(line[i]);
    i += n;
  }
}

}  // namespace

zg::ImageResult yypng1(const zg::RasterPage& page, const std::string& file) {
  Out out(file);
  if (!out.f) return {kErrorOpen, out.error};
  const int w = page.nrxpix, h = page.nrypix;
  const bool paletted = page.nbitpx == 1 || page.nbitpx == 4 || page.nbitpx == 8;
  const bool alpha = !paletted && page.brtrans;
  const int depth = paletted ? page.nbitpx : 8;
  const int ctype = paletted ? 3 : alpha ? 6 : 2;
  out.write("\x89PNG\r\n\x1a\n", 8);
  std::vector<uint8_t> d;
  yypngwrd(d, static_cast<uint32_t>(w));
  yypngwrd(d, static_cast<uint32_t>(h));
  d.insert(d.end(), {static_cast<uint8_t>(depth), static_cast<uint8_t>(ctype), 0, 0, 0});
  png_chunk(out, "IHDR", d);
  d.clear();
  yypngwrd(d, per_metre(page.dpi));
  yypngwrd(d, per_metre(page.dpi));
  d.push_back(1);
  png_chunk(out, "pHYs", d);
  if (paletted) {
    std::vector<int> pal;
    palette_rgb(page, pal);
    d.clear();
    for (const int c : pal) d.insert(d.end(), {static_cast<uint8_t>(c), static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c >> 16)});
    png_chunk(out, "PLTE", d);
  }
  // Every row with filter 0, top row of the picture first.
  const size_t px = alpha ? 4 : 3;
  const size_t rowbytes = paletted ? (static_cast<size_t>(w) * static_cast<size_t>(depth) + 7) / 8 : static_cast<size_t>(w) * px;
  std::vector<uint8_t> raw((rowbytes + 1) * static_cast<size_t>(h));
  std::vector<uint8_t> row;
  for (int y = 0; y < h; ++y) {
    const int py = h - 1 - y;
    uint8_t* dst = raw.data() + static_cast<size_t>(y) * (rowbytes + 1);
    *dst++ = 0;
    if (paletted) {
      packed_row(page, py, row);
      std::copy(row.begin(), row.end(), dst);
    } else if (page.nbitpx == 24) {
      const uint32_t* src = page.irbuff.data() + static_cast<size_t>(py) * static_cast<size_t>(page.lenrrow);
      for (int x = 0; x < w; ++x) {
        const uint32_t c = src[x];
        *dst++ = static_cast<uint8_t>(c);
        *dst++ = static_cast<uint8_t>(c >> 8);
        *dst++ = static_cast<uint8_t>(c >> 16);
        if (alpha) *dst++ = static_cast<uint8_t>(c >> 24);
      }
    } else {
      for (int x = 0; x < w; ++x) {
        const int c = page.rgb(x, py);
        *dst++ = static_cast<uint8_t>(c);
        *dst++ = static_cast<uint8_t>(c >> 8);
        *dst++ = static_cast<uint8_t>(c >> 16);
      }
    }
  }
  std::vector<uint8_t> packed(raw.size() + raw.size() / 1000 + 22);
  const int n = WCompress(raw, packed);
  if (n == 0) return {kErrorZlib, 0};
  packed.resize(static_cast<size_t>(n));
  png_chunk(out, "IDAT", packed);
  png_chunk(out, "IEND", {});
  return out.finish();
}

zg::ImageResult yybmp1(const zg::RasterPage& page, const std::string& file, bool compress) {
  Out out(file);
  if (!out.f) return {kErrorOpen, out.error};
  const int w = page.nrxpix, h = page.nrypix;
  const int bits = page.nbitpx == 3 ? 24 : page.nbitpx;
  const bool rle = compress && (bits == 4 || bits == 8);
  std::vector<int> pal;
  if (page.nbitpx != 3) palette_rgb(page, pal);
  const size_t offset = 54 + 4 * pal.size();
  const size_t stride = (static_cast<size_t>(w) * static_cast<size_t>(bits) + 31) / 32 * 4;
  std::vector<uint8_t> body;
  body.reserve(stride * static_cast<size_t>(h));
  std::vector<uint8_t> row;
  for (int py = 0; py < h; ++py) {
    if (bits == 24) {
      row.assign(stride, 0);
      for (int x = 0; x < w; ++x) {
        const int c = page.rgb(x, py);
        row[3 * static_cast<size_t>(x)] = static_cast<uint8_t>(c >> 16);
        row[3 * static_cast<size_t>(x) + 1] = static_cast<uint8_t>(c >> 8);
        row[3 * static_cast<size_t>(x) + 2] = static_cast<uint8_t>(c);
      }
      body.insert(body.end(), row.begin(), row.end());
      continue;
    }
    packed_row(page, py, row);
    if (!rle) {
      row.resize(stride, 0);
      body.insert(body.end(), row.begin(), row.end());
      continue;
    }
    // Groups of up to four bytes: a run goes on while the groups repeat its
    // value, otherwise an absolute group. Three pixels or more make an
    // absolute group; fewer go as runs of their own.
    const bool four = bits == 4;
    const int step = four ? 8 : 4, limit = four ? 247 : 251;
    size_t runat = std::string::npos;
    int left = w;
    for (size_t i = 0; i < row.size(); i += 4) {
      const size_t g = std::min<size_t>(4, row.size() - i);
      const int pixels = std::min(left, four ? static_cast<int>(2 * g) : static_cast<int>(g));
      left -= pixels;
      const bool same = std::all_of(row.begin() + static_cast<std::ptrdiff_t>(i),
                                    row.begin() + static_cast<std::ptrdiff_t>(i + g),
                                    [&](uint8_t v) { return v == row[i]; });
      if (same && pixels == step && runat != std::string::npos && body[runat + 1] == row[i] && body[runat] < limit) {
        body[runat] = static_cast<uint8_t>(body[runat] + step);
      } else if (same) {
        runat = body.size();
        body.insert(body.end(), {static_cast<uint8_t>(pixels), row[i]});
      } else if (pixels >= (four && pixels % 2 ? 5 : 3)) {
        // Some readers misplace an odd last nibble of an absolute group: it
        // goes as a run of one after the group.
        const bool odd = four && pixels % 2;
        const size_t n = odd ? g - 1 : g;
        runat = std::string::npos;
        if (n > 0) {
          body.insert(body.end(), {0, static_cast<uint8_t>(odd ? pixels - 1 : pixels)});
          body.insert(body.end(), row.begin() + static_cast<std::ptrdiff_t>(i), row.begin() + static_cast<std::ptrdiff_t>(i + n));
          if (n & 1) body.push_back(0);
        }
        if (odd) body.insert(body.end(), {1, row[i + g - 1]});
      } else {
        runat = std::string::npos;
        for (size_t k = 0; k < g; ++k) {
          const int p = four ? std::min(2, pixels - 2 * static_cast<int>(k)) : 1;
          if (p > 0) body.insert(body.end(), {static_cast<uint8_t>(p), row[i + k]});
        }
      }
    }
    body.insert(body.end(), {0, 0});
  }
  if (rle) body.insert(body.end(), {0, 1});
  std::vector<uint8_t> head(offset, 0);
  head[0] = 'B';
  head[1] = 'M';
  put32(head, 2, static_cast<uint32_t>(offset + body.size()));
  put32(head, 10, static_cast<uint32_t>(offset));
  put32(head, 14, 40);
  put32(head, 18, static_cast<uint32_t>(w));
  put32(head, 22, static_cast<uint32_t>(h));
  put16(head, 26, 1);
  put16(head, 28, static_cast<uint32_t>(bits));
  if (rle) put32(head, 30, bits == 8 ? 1 : 2);
  put32(head, 34, static_cast<uint32_t>(body.size()));
  put32(head, 38, per_metre(page.dpi));
  put32(head, 42, per_metre(page.dpi));
  for (size_t i = 0; i < pal.size(); ++i) {
    const int c = pal[i];
    head[54 + 4 * i] = static_cast<uint8_t>(c >> 16);
    head[55 + 4 * i] = static_cast<uint8_t>(c >> 8);
    head[56 + 4 * i] = static_cast<uint8_t>(c);
  }
  out.write(head);
  out.write(body);
  return out.finish();
}

zg::ImageResult yypcx1(const zg::RasterPage& page, const std::string& file) {
  Out out(file);
  if (!out.f) return {kErrorOpen, out.error};
  const int w = page.nrxpix, h = page.nrypix;
  const int bits = page.nbitpx == 3 ? 24 : page.nbitpx;
  size_t bpl = bits == 1 || bits == 4 ? (static_cast<size_t>(w) + 7) / 8 : static_cast<size_t>(w);
  bpl += bpl & 1;
  std::vector<uint8_t> head(128, 0);
  head[0] = 10;
  head[1] = bits == 1 ? 3 : 5;
  head[2] = 1;
  head[3] = bits == 1 || bits == 4 ? 1 : 8;
  put16(head, 8, static_cast<uint32_t>(w - 1));
  put16(head, 10, static_cast<uint32_t>(h - 1));
  put16(head, 12, static_cast<uint32_t>(page.dpi));
  put16(head, 14, static_cast<uint32_t>(page.dpi));
  if (bits == 4)
    for (size_t i = 0; i < 16; ++i)
      for (size_t k = 0; k < 3; ++k) head[16 + 3 * i + k] = static_cast<uint8_t>(page.irgb16[i] >> (8 * k));
  head[65] = bits == 24 ? 3 : bits == 4 ? 4 : 1;
  put16(head, 66, static_cast<uint32_t>(bpl));
  put16(head, 70, static_cast<uint32_t>(bpl));
  put16(head, 72, static_cast<uint32_t>(h));
  out.write(head);
  std::vector<uint8_t> line(bpl), coded;
  coded.reserve(2 * bpl * 3);
  for (int py = h - 1; py >= 0; --py) {
    coded.clear();
    if (bits == 24) {
      for (int k = 0; k < 3; ++k) {
        std::fill(line.begin(), line.end(), 0);
        for (int x = 0; x < w; ++x) line[static_cast<size_t>(x)] = static_cast<uint8_t>(page.rgb(x, py) >> (8 * k));
        yypcx2(line, coded);
      }
    } else if (bits == 8) {
      std::fill(line.begin(), line.end(), 0);
      for (int x = 0; x < w; ++x) line[static_cast<size_t>(x)] = static_cast<uint8_t>(page.get(x, py));
      yypcx2(line, coded);
    } else {
      // Plane k holds bit k of the colour; one bit is set for white.
      const int planes = bits == 4 ? 4 : 1;
      for (int k = 0; k < planes; ++k) {
        std::fill(line.begin(), line.end(), 0);
        for (int x = 0; x < w; ++x) {
          uint32_t v = (page.get(x, py) >> k) & 1;
          if (bits == 1) v ^= 1;
          if (v) line[static_cast<size_t>(x / 8)] |= static_cast<uint8_t>(0x80 >> (x % 8));
        }
        yypcx2(line, coded);
      }
    }
    out.write(coded);
  }
  if (bits == 8) {
    std::vector<uint8_t> pal{12};
    for (const int c : page.irgb256)
      pal.insert(pal.end(), {static_cast<uint8_t>(c), static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c >> 16)});
    out.write(pal);
  }
  return out.finish();
}

zg::ImageResult yybmp2(const std::string& file, int palette) {
  std::unique_ptr<std::FILE, zg::FileCloser> f(std::fopen(file.c_str(), "r+b"));
  if (!f) return {kErrorOpen, errno};
  if (std::fseek(f.get(), 0, SEEK_END) != 0) return {kErrorWrite, errno};
  const long size = std::ftell(f.get());
  constexpr long kHeader = 54;
  std::vector<uint8_t> word(4);
  auto stamp = [&](long at, uint32_t v) {
    put32(word, 0, v);
    return std::fseek(f.get(), at, SEEK_SET) == 0 && std::fwrite(word.data(), 1, 4, f.get()) == 4;
  };
  if (!stamp(2, static_cast<uint32_t>(size)) || !stamp(34, static_cast<uint32_t>(size - kHeader - 4 * palette)) ||
      std::fflush(f.get()) != 0)
    return {kErrorWrite, errno};
  return {};
}
