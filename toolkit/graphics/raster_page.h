// A page drawn in memory: the raster device paints it, the image writers and
// the printer dumps read it. Row 0 is the bottom row of the picture. No X here.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace zelvy_graph {

struct RasterPage {
  std::vector<uint32_t> irbuff;
  int nbitpx = 24;  // 1, 3 (printer colour planes), 4, 8, 24
  int nrapln = 1;
  int nrxpix = 0, nrypix = 0;
  int lenrrow = 0, lenrpln = 0;
  bool brtrans = false;  // 24 bits with alpha in the top byte
  int dpi = 150;
  std::array<int, 16> irgb16{};
  std::array<int, 256> irgb256{};

  // Lays out and allocates a page; false when the words can't be had.
  bool allocate(int width, int height, int bits) {
    nbitpx = bits;
    nrxpix = width;
    nrypix = height;
    nrapln = bits == 3 ? 3 : bits == 4 ? 4 : 1;
    lenrrow = bits == 24 ? width : bits == 8 ? (width + 3) / 4 : (width + 31) / 32;
    lenrpln = lenrrow * height;
    try {
      irbuff.assign(static_cast<size_t>(lenrpln) * static_cast<size_t>(nrapln), 0u);
    } catch (...) {
      irbuff.clear();
      return false;
    }
    return true;
  }
  void clear(uint32_t value) {
    if (nbitpx == 24 || nbitpx == 8) {
      const uint32_t word = nbitpx == 8 ? (value & 0xFF) * 0x01010101u : value;
      std::fill(irbuff.begin(), irbuff.end(), word);
      return;
    }
    for (int p = 0; p < nrapln; ++p) {
      const uint32_t word = (value >> plane_bit(p)) & 1u ? 0xFFFFFFFFu : 0u;
      std::fill(irbuff.begin() + static_cast<std::ptrdiff_t>(p) * lenrpln,
                irbuff.begin() + static_cast<std::ptrdiff_t>(p + 1) * lenrpln, word);
    }
  }
  // The bit of a pixel's value that plane p holds: for 4 bits the planes
  // 0, 1, 2, 3 carry bits 2, 1, 0, 3; the three printer planes bits 0, 1, 2.
  int plane_bit(int p) const {
    if (nbitpx != 4) return p;
    constexpr int kBits[4] = {2, 1, 0, 3};
    return kBits[p];
  }
  uint32_t get(int x, int y) const {
    const size_t row = static_cast<size_t>(y) * static_cast<size_t>(lenrrow);
    switch (nbitpx) {
      case 24: return irbuff[row + static_cast<size_t>(x)];
      case 8: return (irbuff[row + static_cast<size_t>(x >> 2)] >> ((x & 3) * 8)) & 0xFF;
      default: {
        uint32_t v = 0;
        const size_t at = row + static_cast<size_t>(x >> 5);
        for (int p = 0; p < nrapln; ++p)
          v |= ((irbuff[at + static_cast<size_t>(p) * static_cast<size_t>(lenrpln)] >> (x & 31)) & 1u) << plane_bit(p);
        return v;
      }
    }
  }
  void set(int x, int y, uint32_t v) {
    const size_t row = static_cast<size_t>(y) * static_cast<size_t>(lenrrow);
    switch (nbitpx) {
      case 24: irbuff[row + static_cast<size_t>(x)] = v; return;
      case 8: {
        auto& w = irbuff[row + static_cast<size_t>(x >> 2)];
        const int sh = (x & 3) * 8;
        w = (w & ~(0xFFu << sh)) | ((v & 0xFF) << sh);
        return;
      }
      default: {
        const size_t at = row + static_cast<size_t>(x >> 5);
        const uint32_t bit = 1u << (x & 31);
        for (int p = 0; p < nrapln; ++p) {
          auto& w = irbuff[at + static_cast<size_t>(p) * static_cast<size_t>(lenrpln)];
          w = (v >> plane_bit(p)) & 1u ? (w | bit) : (w & ~bit);
        }
      }
    }
  }
  // The pixel as an RGB integer, red low: one bit is white 0 and black 1.
  int rgb(int x, int y) const {
    const uint32_t v = get(x, y);
    switch (nbitpx) {
      case 1: return v ? 0 : 0xFFFFFF;
      // The three printer planes hold ink: cyan, magenta, yellow.
      case 3: return (v & 1 ? 0 : 0xFF) | (v & 2 ? 0 : 0xFF00) | (v & 4 ? 0 : 0xFF0000);
      case 4: return irgb16[v & 15];
      case 8: return irgb256[v];
      default: return static_cast<int>(v & 0xFFFFFF);
    }
  }
};

}  // namespace zelvy_graph
