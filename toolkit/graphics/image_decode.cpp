// Loaders of BMP, icon, cursor, PCX and PNG pictures from a file's bytes. Every
// read is bounds-checked: a short or damaged file ends with error 2.
#include "toolkit/graphics/image_files.h"
#include "toolkit/graphics/image_private.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace zg = zelvy_graph;
using namespace zelv_graphics;

namespace {

constexpr int kErrorRead = 2, kErrorFormat = 27;
// Pictures beyond this many pixels are refused rather than allocated.
constexpr uint64_t kMaxPixels = uint64_t{1} << 28;
constexpr int kOpaque = 0, kClear = 255;

struct Bytes {
  std::span<const uint8_t> b;
  bool ok(size_t at, size_t n) const { return at <= b.size() && n <= b.size() - at; }
  uint32_t u8(size_t at) const { return at < b.size() ? b[at] : 0; }
  uint32_t le16(size_t at) const { return ok(at, 2) ? static_cast<uint32_t>(b[at] | b[at + 1] << 8) : 0; }
  uint32_t le32(size_t at) const {
    return ok(at, 4) ? static_cast<uint32_t>(b[at] | b[at + 1] << 8 | b[at + 2] << 16) | uint32_t{b[at + 3]} << 24 : 0;
  }
  uint32_t be32(size_t at) const {
    return ok(at, 4) ? uint32_t{b[at]} << 24 | static_cast<uint32_t>(b[at + 1] << 16 | b[at + 2] << 8 | b[at + 3]) : 0;
  }
};

int pack(int r, int g, int b, int transparency) {
  return (r & 0xFF) | (g & 0xFF) << 8 | (b & 0xFF) << 16 | (transparency & 0xFF) << 24;
}

bool size_ok(int64_t w, int64_t h) {
  return w > 0 && h > 0 && static_cast<uint64_t>(w) * static_cast<uint64_t>(h) <= kMaxPixels;
}

zg::ImageResult fail(int code = kErrorRead) { return {code, 0}; }

// ---- BMP, icon, cursor ----------------------------------------------------

int mask_shift(uint32_t mask) {
  int s = 0;
  while (mask && !(mask & 1)) {
    mask >>= 1;
    ++s;
  }
  return s;
}
int mask_value(uint32_t v, uint32_t mask) {
  if (!mask) return 0;
  const int s = mask_shift(mask);
  const uint32_t m = mask >> s, x = (v & mask) >> s;
  return static_cast<int>(m == 255 ? x : x * 255 / m);
}

// The device-independent bitmap at `dib`; pixels at `data`, `height` rows
// (an icon's header counts its mask too), palette of `colours` entries.
zg::ImageResult decode_dib(Bytes in, size_t dib, size_t data, int palette_count, bool icon, int icon_height,
                           bool alpha, zg::Picture& pic) {
  const uint32_t hs = in.le32(dib);
  if (!in.ok(dib, std::max<uint32_t>(hs, 12))) return fail();
  int64_t w, h;
  int bits;
  uint32_t comp = 0;
  size_t entry = 4;
  if (hs < 40) {
    w = in.le16(dib + 4);
    h = static_cast<int16_t>(in.le16(dib + 6));
    bits = static_cast<int>(in.le16(dib + 10));
    entry = 3;
  } else {
    w = static_cast<int32_t>(in.le32(dib + 4));
    h = static_cast<int32_t>(in.le32(dib + 8));
    bits = static_cast<int>(in.le16(dib + 14));
    comp = in.le32(dib + 16);
  }
  const bool topdown = h < 0;
  h = std::abs(h);
  if (icon) h = icon_height > 0 ? icon_height : h / 2;
  if (!size_ok(w, h)) return fail();
  if (!(bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32)) return fail(kErrorFormat);
  if (comp == 1 && bits != 8) return fail();
  if (comp == 2 && bits != 4) return fail();
  if (comp > 3) return fail(kErrorFormat);
  // Colour masks: after a 40-byte header, or inside a longer one.
  uint32_t masks[4] = {0xFF0000, 0xFF00, 0xFF, 0};
  if (bits == 16) {
    masks[0] = 0x7C00; masks[1] = 0x03E0; masks[2] = 0x001F;
  }
  size_t palette_at = dib + hs;
  if (comp == 3) {
    for (int i = 0; i < 3; ++i) masks[i] = in.le32(dib + 40 + 4 * static_cast<size_t>(i));
    if (hs >= 56) masks[3] = in.le32(dib + 52);
    if (hs == 40) palette_at += 12;
  }
  std::array<int, 256> pal{};
  if (bits <= 8) {
    const int n = std::clamp(palette_count, 0, 1 << bits);
    for (int i = 0; i < n; ++i) {
      const size_t at = palette_at + static_cast<size_t>(i) * entry;
      if (!in.ok(at, 3)) return fail();
      pal[static_cast<size_t>(i)] = pack(in.b[at + 2], in.b[at + 1], in.b[at], 0);
    }
  }
  pic.width = static_cast<int>(w);
  pic.height = static_cast<int>(h);
  pic.pixels.assign(static_cast<size_t>(w * h), 0);
  auto put = [&](int64_t x, int64_t fy, int v) {
    // File rows count from the bottom unless the height was negative.
    if (x < 0 || x >= w || fy < 0 || fy >= h) return;
    const int64_t y = topdown ? fy : h - 1 - fy;
    pic.pixels[static_cast<size_t>(y * w + x)] = v;
  };
  const size_t stride = (static_cast<size_t>(w) * static_cast<size_t>(bits) + 31) / 32 * 4;
  if (comp == 1 || comp == 2) {
    size_t at = data;
    int64_t x = 0, y = 0;
    const bool four = comp == 2;
    while (true) {
      if (!in.ok(at, 2)) {
        if (y >= h - 1) break;  // the end-of-picture code may be left out
        return fail();
      }
      const uint32_t n = in.b[at], v = in.b[at + 1];
      at += 2;
      if (n > 0) {
        for (uint32_t i = 0; i < n; ++i, ++x)
          put(x, y, pal[four ? (i & 1 ? v & 15 : v >> 4) : v]);
      } else if (v == 0) {
        x = 0;
        ++y;
      } else if (v == 1) {
        break;
      } else if (v == 2) {
        if (!in.ok(at, 2)) return fail();
        x += in.b[at];
        y += in.b[at + 1];
        at += 2;
      } else {
        const size_t bytes = four ? (v + 1) / 2 : v;
        if (!in.ok(at, bytes)) return fail();
        for (uint32_t i = 0; i < v; ++i, ++x) {
          const uint32_t c = four ? (i & 1 ? in.b[at + i / 2] & 15 : in.b[at + i / 2] >> 4) : in.b[at + i];
          put(x, y, pal[c]);
        }
        at += bytes + (bytes & 1);
      }
      if (y > h) break;
    }
  } else {
    if (!in.ok(data, stride * static_cast<size_t>(h))) return fail();
    for (int64_t y = 0; y < h; ++y) {
      const uint8_t* row = in.b.data() + data + static_cast<size_t>(y) * stride;
      for (int64_t x = 0; x < w; ++x) {
        int v;
        switch (bits) {
          case 1: v = pal[(row[x >> 3] >> (7 - (x & 7))) & 1]; break;
          case 4: v = pal[(row[x >> 1] >> (x & 1 ? 0 : 4)) & 15]; break;
          case 8: v = pal[row[x]]; break;
          case 16: {
            const uint32_t p = static_cast<uint32_t>(row[2 * x] | row[2 * x + 1] << 8);
            v = pack(mask_value(p, masks[0]), mask_value(p, masks[1]), mask_value(p, masks[2]), 0);
            break;
          }
          case 24: v = pack(row[3 * x + 2], row[3 * x + 1], row[3 * x], 0); break;
          default: {
            const uint8_t* q = row + 4 * x;
            const uint32_t p = static_cast<uint32_t>(q[0] | q[1] << 8 | q[2] << 16) | uint32_t{q[3]} << 24;
            const int a = icon ? (comp == 3 ? mask_value(p, masks[3] ? masks[3] : 0xFF000000u) : q[3]) : kClear;
            v = pack(mask_value(p, masks[0]), mask_value(p, masks[1]), mask_value(p, masks[2]),
                     alpha && icon ? kClear - a : kOpaque);
          }
        }
        put(x, y, v);
      }
    }
    // Icons below 32 bits carry an AND mask after the colours: set means clear.
    if (icon && alpha && bits < 32) {
      const size_t mstride = (static_cast<size_t>(w) + 31) / 32 * 4;
      const size_t mat = data + stride * static_cast<size_t>(h);
      if (in.ok(mat, mstride * static_cast<size_t>(h)))
        for (int64_t y = 0; y < h; ++y)
          for (int64_t x = 0; x < w; ++x)
            if ((in.b[mat + static_cast<size_t>(y) * mstride + static_cast<size_t>(x >> 3)] >> (7 - (x & 7))) & 1) {
              const int64_t ty = topdown ? y : h - 1 - y;
              pic.pixels[static_cast<size_t>(ty * w + x)] |= kClear << 24;
            }
    }
  }
  return {};
}

zg::ImageResult decode_bmp(Bytes in, bool alpha, zg::Picture& pic) {
  const uint32_t offset = in.le32(10), hs = in.le32(14);
  if (!in.ok(0, 26) || offset < 14 + hs) return fail();
  const int entry = hs == 12 ? 3 : 4;
  const int colours = static_cast<int>((offset - hs - 14) / static_cast<uint32_t>(entry));
  return decode_dib(in, 14, offset, colours, false, 0, alpha, pic);
}

zg::ImageResult decode_png_bytes(Bytes in, bool alpha, zg::Picture& pic);

zg::ImageResult decode_icon(Bytes in, bool alpha, zg::Picture& pic) {
  // The first image of the directory.
  if (!in.ok(0, 22) || in.le16(4) == 0) return fail();
  const uint32_t size = in.le32(14), at = in.le32(18);
  if (!in.ok(at, 4)) return fail();
  if (in.ok(at, 8) && std::memcmp(in.b.data() + at, "\x89PNG", 4) == 0)
    return decode_png_bytes(Bytes{in.b.subspan(at, std::min<size_t>(size, in.b.size() - at))}, alpha, pic);
  const int h = in.u8(7) ? static_cast<int>(in.u8(7)) : 256;
  const uint32_t hs = in.le32(at);
  if (hs < 40) return fail();
  const int bits = static_cast<int>(in.le16(at + 14));
  int colours = static_cast<int>(in.le32(at + 32));
  if (colours == 0 && bits <= 8) colours = 1 << bits;
  const size_t data = at + hs + (bits <= 8 ? static_cast<size_t>(colours) * 4 : 0);
  return decode_dib(in, at, data, colours, true, h, alpha, pic);
}

// ---- PCX --------------------------------------------------------------------

zg::ImageResult decode_pcx(Bytes in, zg::Picture& pic) {
  if (!in.ok(0, 128)) return fail();
  const int bpp = in.b[3], planes = in.b[65];
  const int64_t w = static_cast<int64_t>(in.le16(8)) - in.le16(4) + 1, h = static_cast<int64_t>(in.le16(10)) - in.le16(6) + 1;
  const size_t bpl = in.le16(66);
  if (!size_ok(w, h)) return fail();
  const bool mono = bpp == 1 && planes == 1, sixteen = bpp == 1 && planes == 4, indexed = bpp == 8 && planes == 1,
             rgb = bpp == 8 && (planes == 3 || planes == 4);
  if (!(mono || sixteen || indexed || rgb)) return fail(kErrorFormat);
  if (bpl * 8 < static_cast<size_t>(w) * static_cast<size_t>(bpp)) return fail();
  std::array<int, 256> pal{};
  if (sixteen)
    for (size_t i = 0; i < 16; ++i) pal[i] = pack(in.b[16 + 3 * i], in.b[17 + 3 * i], in.b[18 + 3 * i], 0);
  size_t end = in.b.size();
  if (indexed) {
    if (in.b.size() < 128 + 769 || in.b[in.b.size() - 769] != 12) return fail();
    const size_t at = in.b.size() - 768;
    for (size_t i = 0; i < 256; ++i) pal[i] = pack(in.b[at + 3 * i], in.b[at + 3 * i + 1], in.b[at + 3 * i + 2], 0);
    end = in.b.size() - 769;
  }
  pic.width = static_cast<int>(w);
  pic.height = static_cast<int>(h);
  pic.pixels.assign(static_cast<size_t>(w * h), 0);
  const size_t line = bpl * static_cast<size_t>(planes);
  std::vector<uint8_t> row(line);
  size_t at = 128;
  size_t run = 0;
  uint8_t value = 0;
  for (int64_t y = 0; y < h; ++y) {
    // A run may go on across the planes of a line, and across lines.
    for (size_t i = 0; i < line; ++i) {
      if (run == 0) {
        if (at >= end) return fail();
        const uint8_t c = in.b[at++];
        if (c >= 192) {
          if (at >= end) return fail();
          run = c - 192u;
          value = in.b[at++];
          if (run == 0) {
            --i;
            continue;
          }
        } else {
          run = 1;
          value = c;
        }
      }
      row[i] = value;
      --run;
    }
    int* out = pic.pixels.data() + y * w;
    for (int64_t x = 0; x < w; ++x) {
      const size_t byte = static_cast<size_t>(x >> 3);
      const int bit = 7 - static_cast<int>(x & 7);
      if (mono) {
        out[x] = (row[byte] >> bit) & 1 ? 0xFFFFFF : 0;
      } else if (sixteen) {
        int v = 0;
        for (size_t p = 0; p < 4; ++p) v |= ((row[p * bpl + byte] >> bit) & 1) << p;
        out[x] = pal[static_cast<size_t>(v)];
      } else if (indexed) {
        out[x] = pal[row[static_cast<size_t>(x)]];
      } else {
        const size_t i = static_cast<size_t>(x);
        out[x] = pack(row[i], row[bpl + i], row[2 * bpl + i], 0);
      }
    }
  }
  return {};
}

// ---- PNG --------------------------------------------------------------------

int channels_of(int ctype) {
  switch (ctype) {
    case 0: return 1;
    case 2: return 3;
    case 3: return 1;
    case 4: return 2;
    case 6: return 4;
    default: return 0;
  }
}

}  // namespace

// The kinds of PNG loaded here: every colour type at its allowed depths,
// deflate, the standard filters, plain or interlaced.
bool yypngchecksubtype(int ctype, int depth, int compression, int filter, int interlace) {
  if (compression != 0 || filter != 0 || interlace > 1) return false;
  switch (ctype) {
    case 0: return depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
    case 3: return depth == 1 || depth == 2 || depth == 4 || depth == 8;
    case 2: case 4: case 6: return depth == 8 || depth == 16;
    default: return false;
  }
}

namespace {

// Sample s of a row of `depth`-bit samples.
uint32_t sample(const uint8_t* row, size_t s, int depth) {
  switch (depth) {
    case 8: return row[s];
    case 16: return static_cast<uint32_t>(row[2 * s] << 8 | row[2 * s + 1]);
    default: {
      const size_t bit = s * static_cast<size_t>(depth);
      return (row[bit >> 3] >> (8 - depth - static_cast<int>(bit & 7))) & ((1u << depth) - 1);
    }
  }
}

// Undoes the filters of each pass in turn: (row bytes, rows) a pass.
bool yypngfilter(std::span<uint8_t> data, const std::vector<std::pair<size_t, size_t>>& passes, size_t distance) {
  size_t at = 0;
  for (const auto& [rowbytes, rows] : passes) {
    if (rows == 0) continue;
    const size_t n = rows * (rowbytes + 1);
    if (at + n > data.size() || !yyPNGfilter(data.subspan(at, n), rowbytes, rows, distance)) return false;
    at += n;
  }
  return true;
}

zg::ImageResult decode_png_bytes(Bytes in, bool alpha, zg::Picture& pic) {
  if (!in.ok(0, 33) || std::memcmp(in.b.data(), "\x89PNG\r\n\x1a\n", 8) != 0 ||
      std::memcmp(in.b.data() + 12, "IHDR", 4) != 0)
    return fail();
  const int64_t w = in.be32(16), h = in.be32(20);
  const int depth = in.b[24], ctype = in.b[25], interlace = in.b[28];
  if (!yypngchecksubtype(ctype, depth, in.b[26], in.b[27], interlace)) return fail(kErrorFormat);
  if (!size_ok(w, h)) return fail();
  std::array<int, 256> pal{};
  std::array<int, 256> palalpha;
  palalpha.fill(255);
  int transparent[3] = {-1, -1, -1};
  std::vector<uint8_t> idat;
  bool ended = false;
  for (size_t at = 8; !ended;) {
    if (!in.ok(at, 12)) return fail();
    const uint32_t len = in.be32(at);
    if (!in.ok(at + 8, len) || !in.ok(at + 8 + len, 4)) return fail();
    const auto chunk = in.b.subspan(at + 4, len + 4);
    if (yyPNGcrc(0, chunk) != in.be32(at + 8 + len)) return fail();
    const uint8_t* d = in.b.data() + at + 8;
    const std::string_view type(reinterpret_cast<const char*>(in.b.data() + at + 4), 4);
    if (type == "PLTE") {
      for (size_t i = 0; i < std::min<size_t>(len / 3, 256); ++i) pal[i] = pack(d[3 * i], d[3 * i + 1], d[3 * i + 2], 0);
    } else if (type == "tRNS") {
      if (ctype == 3)
        for (size_t i = 0; i < std::min<size_t>(len, 256); ++i) palalpha[i] = d[i];
      else if (ctype == 0 && len >= 2)
        transparent[0] = d[0] << 8 | d[1];
      else if (ctype == 2 && len >= 6)
        for (int i = 0; i < 3; ++i) transparent[i] = d[2 * i] << 8 | d[2 * i + 1];
    } else if (type == "IDAT") {
      idat.insert(idat.end(), d, d + len);
    } else if (type == "IEND") {
      ended = true;
    }
    at += 12 + len;
  }
  // The passes of the interlace, or the whole picture as one.
  struct Pass { int x0, y0, dx, dy; };
  static constexpr Pass kAdam7[7] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                     {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
  static constexpr Pass kWhole[1] = {{0, 0, 1, 1}};
  const std::span<const Pass> passes = interlace ? std::span<const Pass>(kAdam7) : std::span<const Pass>(kWhole);
  const int channels = channels_of(ctype);
  const size_t bitspx = static_cast<size_t>(channels * depth);
  const size_t distance = std::max<size_t>(bitspx / 8, 1);
  size_t raw = 0;
  auto pass_size = [&](const Pass& p, size_t& pw, size_t& ph) {
    pw = w > p.x0 ? static_cast<size_t>((w - p.x0 + p.dx - 1) / p.dx) : 0;
    ph = h > p.y0 ? static_cast<size_t>((h - p.y0 + p.dy - 1) / p.dy) : 0;
  };
  for (const auto& p : passes) {
    size_t pw, ph;
    pass_size(p, pw, ph);
    if (pw && ph) raw += ph * ((pw * bitspx + 7) / 8 + 1);
  }
  std::vector<uint8_t> data(raw);
  z_stream z{};
  if (inflateInit(&z) != Z_OK) return {1044, 0};
  z.next_in = idat.data();
  z.avail_in = static_cast<uInt>(idat.size());
  z.next_out = data.data();
  z.avail_out = static_cast<uInt>(data.size());
  const int rc = inflate(&z, Z_FINISH);
  const size_t got = data.size() - z.avail_out;
  inflateEnd(&z);
  if ((rc != Z_STREAM_END && rc != Z_BUF_ERROR && rc != Z_OK) || got != raw) return fail();
  std::vector<std::pair<size_t, size_t>> shapes;
  for (const auto& p : passes) {
    size_t pw, ph;
    pass_size(p, pw, ph);
    shapes.emplace_back(pw ? (pw * bitspx + 7) / 8 : 0, pw ? ph : 0);
  }
  if (!yypngfilter(data, shapes, distance)) return fail();
  pic.width = static_cast<int>(w);
  pic.height = static_cast<int>(h);
  pic.pixels.assign(static_cast<size_t>(w * h), 0);
  const bool keep = alpha && (ctype == 4 || ctype == 6 || transparent[0] >= 0 || ctype == 3);
  const int maxv = (1 << depth) - 1;
  size_t at = 0;
  for (const auto& p : passes) {
    size_t pw, ph;
    pass_size(p, pw, ph);
    if (!pw || !ph) continue;
    const size_t rowbytes = (pw * bitspx + 7) / 8;
    auto part = std::span<uint8_t>(data).subspan(at, ph * (rowbytes + 1));
    for (size_t ry = 0; ry < ph; ++ry) {
      const uint8_t* row = part.data() + ry * (rowbytes + 1) + 1;
      const size_t y = static_cast<size_t>(p.y0) + ry * static_cast<size_t>(p.dy);
      // Eight-bit colour, the common case, without the general sample walk.
      if (depth == 8 && (ctype == 2 || ctype == 6) && transparent[0] < 0) {
        int* out = pic.pixels.data() + y * static_cast<size_t>(w) + static_cast<size_t>(p.x0);
        const size_t step = static_cast<size_t>(p.dx), n = static_cast<size_t>(channels);
        for (size_t rx = 0; rx < pw; ++rx, row += n, out += step)
          *out = pack(row[0], row[1], row[2], keep && ctype == 6 ? kClear - row[3] : kOpaque);
        continue;
      }
      for (size_t rx = 0; rx < pw; ++rx) {
        const size_t x = static_cast<size_t>(p.x0) + rx * static_cast<size_t>(p.dx);
        int r, g, b, a = 255;
        const size_t s = rx * static_cast<size_t>(channels);
        auto eight = [&](uint32_t v) { return static_cast<int>(depth == 16 ? v >> 8 : depth == 8 ? v : v * 255 / static_cast<uint32_t>(maxv)); };
        switch (ctype) {
          case 0: {
            const uint32_t v = sample(row, s, depth);
            r = g = b = eight(v);
            if (static_cast<int>(v) == transparent[0]) a = 0;
            break;
          }
          case 2: {
            const uint32_t v0 = sample(row, s, depth), v1 = sample(row, s + 1, depth), v2 = sample(row, s + 2, depth);
            r = eight(v0); g = eight(v1); b = eight(v2);
            if (static_cast<int>(v0) == transparent[0] && static_cast<int>(v1) == transparent[1] &&
                static_cast<int>(v2) == transparent[2])
              a = 0;
            break;
          }
          case 3: {
            const uint32_t v = sample(row, s, depth);
            const int c = pal[v];
            r = c & 0xFF; g = (c >> 8) & 0xFF; b = (c >> 16) & 0xFF;
            a = palalpha[v];
            break;
          }
          case 4:
            r = g = b = eight(sample(row, s, depth));
            a = eight(sample(row, s + 1, depth));
            break;
          default:
            r = eight(sample(row, s, depth)); g = eight(sample(row, s + 1, depth)); b = eight(sample(row, s + 2, depth));
            a = eight(sample(row, s + 3, depth));
        }
        pic.pixels[y * static_cast<size_t>(w) + x] = pack(r, g, b, keep ? kClear - a : kOpaque);
      }
    }
    at += part.size();
  }
  return {};
}

}  // namespace

uint32_t yyPNGcrc(uint32_t crc, std::span<const uint8_t> bytes) {
  static const auto table = [] {
    std::array<uint32_t, 256> t{};
    for (uint32_t n = 0; n < 256; ++n) {
      uint32_t c = n;
      for (int k = 0; k < 8; ++k) c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
      t[n] = c;
    }
    return t;
  }();
  crc = ~crc;
  for (const uint8_t v : bytes) crc = table[(crc ^ v) & 0xFF] ^ (crc >> 8);
  return ~crc;
}

bool yyPNGfilter(std::span<uint8_t> data, size_t rowbytes, size_t rows, size_t distance) {
  uint8_t* prev = nullptr;
  for (size_t y = 0; y < rows; ++y) {
    uint8_t* line = data.data() + y * (rowbytes + 1);
    const uint8_t filter = line[0];
    uint8_t* row = line + 1;
    switch (filter) {
      case 0: break;
      case 1:
        for (size_t i = distance; i < rowbytes; ++i) row[i] = static_cast<uint8_t>(row[i] + row[i - distance]);
        break;
      case 2:
        if (prev)
          for (size_t i = 0; i < rowbytes; ++i) row[i] = static_cast<uint8_t>(row[i] + prev[i]);
        break;
      case 3:
        for (size_t i = 0; i < rowbytes; ++i) {
          const int left = i >= distance ? row[i - distance] : 0, up = prev ? prev[i] : 0;
          row[i] = static_cast<uint8_t>(row[i] + (left + up) / 2);
        }
        break;
      case 4:
        for (size_t i = 0; i < rowbytes; ++i) {
          const int a = i >= distance ? row[i - distance] : 0, b = prev ? prev[i] : 0,
                    c = prev && i >= distance ? prev[i - distance] : 0;
          const int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
          const int pred = pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
          row[i] = static_cast<uint8_t>(row[i] + pred);
        }
        break;
      default:
        return false;
    }
    prev = row;
  }
  return true;
}

zg::ImageResult yyjpegloaddata(std::span<const uint8_t> bytes, zg::Picture& picture);

zg::ImageResult yygrloadimagedata(std::span<const uint8_t> bytes, int type, bool alpha, zg::Picture& picture) {
  picture = {};
  zg::ImageResult r;
  switch (type) {
    case kFileBmp: r = decode_bmp(Bytes{bytes}, alpha, picture); break;
    case kFileIcon:
    case kFileCursor: r = decode_icon(Bytes{bytes}, alpha, picture); break;
    case kFilePcx: r = decode_pcx(Bytes{bytes}, picture); break;
    case kFilePng: r = decode_png_bytes(Bytes{bytes}, alpha, picture); break;
    case kFileJpeg: r = yyjpegloaddata(bytes, picture); break;
    default: r = fail(kErrorFormat);
  }
  if (r.error != 0) picture = {};
  return r;
}
