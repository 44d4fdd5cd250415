// Printer bit-image streams of a raster page: PCL, ESC/P2 and the 8- and
// 24-pin ESC/P. The page is read as the paper sees it: rows from the top,
// turned a quarter for orientation 1 (paper row r is picture column r, paper
// column c picture row c).
#include "toolkit/graphics/raster_private.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>
#include <string>

namespace zg = zelvy_graph;

namespace {

constexpr char kEsc = '\x1b';
constexpr int kUnitsPerInch = 3600;
constexpr int kPassesApart = 1;

uint32_t ink_at(const zg::RasterPage& page, int c, int r, bool turned) {
  return turned ? page.get(r, c) : page.get(c, page.nrypix - 1 - r);
}

}  // namespace

// Page readers: a dot of paper column c, row r, by the page's storage and
// orientation. One plane, turned and portrait.
bool yyras1(const zg::RasterPage& page, int c, int r, int) { return ink_at(page, c, r, true) & 1; }
bool yyras5(const zg::RasterPage& page, int c, int r, int) { return ink_at(page, c, r, false) & 1; }
// A plane with all its ink, turned and portrait.
bool yyras2(const zg::RasterPage& page, int c, int r, int plane) { return (ink_at(page, c, r, true) >> plane) & 1; }
bool yyras7(const zg::RasterPage& page, int c, int r, int plane) { return (ink_at(page, c, r, false) >> plane) & 1; }
// Three planes with black taken out: a dot inked in all three prints on the
// black band (plane -1) and on no colour band. Portrait and turned.
bool yyras8(const zg::RasterPage& page, int c, int r, int plane) {
  const uint32_t v = ink_at(page, c, r, false);
  return plane < 0 ? v == 7 : v != 7 && ((v >> plane) & 1);
}
bool yyras9(const zg::RasterPage& page, int c, int r, int plane) {
  const uint32_t v = ink_at(page, c, r, true);
  return plane < 0 ? v == 7 : v != 7 && ((v >> plane) & 1);
}
// The black-extracting reader of an orientation.
RasterReader yyras3(bool turned) { return turned ? yyras9 : yyras8; }

namespace {
constexpr auto kReversed = [] {
  std::array<uint8_t, 256> t{};
  for (int i = 0; i < 256; ++i)
    for (int b = 0; b < 8; ++b)
      if (i & (1 << b)) t[static_cast<size_t>(i)] = static_cast<uint8_t>(t[static_cast<size_t>(i)] | (0x80 >> b));
  return t;
}();
}  // namespace

// A whole paper row of a one-plane page, first dot high: portrait rows are
// the page's words turned byte by byte; turned rows take one bit of each
// page row, the word read once for each.
void yyras6(const zg::RasterPage& page, int r, std::string& out) {
  const int w = page.nrxpix;
  out.assign(static_cast<size_t>((w + 7) / 8), '\0');
  const uint32_t* words = page.irbuff.data() + static_cast<size_t>(page.nrypix - 1 - r) * static_cast<size_t>(page.lenrrow);
  for (size_t k = 0; k < out.size(); ++k) out[k] = static_cast<char>(kReversed[(words[k / 4] >> (8 * (k % 4))) & 0xFF]);
  if (w % 8) out.back() = static_cast<char>(out.back() & (0xFF00 >> (w % 8)));
}
void yyras4(const zg::RasterPage& page, int r, std::string& out) {
  const int w = page.nrypix;
  out.assign(static_cast<size_t>((w + 7) / 8), '\0');
  const size_t word = static_cast<size_t>(r >> 5);
  const uint32_t bit = 1u << (r & 31);
  for (int c = 0; c < w; ++c)
    if (page.irbuff[static_cast<size_t>(c) * static_cast<size_t>(page.lenrrow) + word] & bit)
      out[static_cast<size_t>(c / 8)] = static_cast<char>(out[static_cast<size_t>(c / 8)] | (0x80 >> (c % 8)));
}

namespace {

// The page as the paper sees it, through the readers that fit its storage.
struct Reader {
  const zg::RasterPage& page;
  bool turned;
  RasterReader dotof = page.nrapln == 1 ? (turned ? yyras1 : yyras5) : yyras3(turned);
  RasterReader inkof = turned ? yyras2 : yyras7;
  int width() const { return turned ? page.nrypix : page.nrxpix; }
  int height() const { return turned ? page.nrxpix : page.nrypix; }
  bool dot(int c, int r, int plane) const {
    if (c < 0 || r < 0 || c >= width() || r >= height()) return false;
    return dotof(page, c, r, plane);
  }
  // One paper row of a plane packed to bytes, first dot high; without
  // `black` a plane holds all its ink.
  std::string row(int r, int plane, bool black = true) const {
    std::string out;
    if (page.nrapln == 1) {
      (turned ? yyras4 : yyras6)(page, r, out);
      return out;
    }
    out.assign(static_cast<size_t>((width() + 7) / 8), '\0');
    const RasterReader read = black ? dotof : inkof;
    for (int c = 0; c < width(); ++c)
      if (read(page, c, r, plane)) out[static_cast<size_t>(c / 8)] = static_cast<char>(out[static_cast<size_t>(c / 8)] | (0x80 >> (c % 8)));
    return out;
  }
};

// Colour bands of the dot-matrix streams by plane and selector: yellow,
// magenta, cyan, black; one black band for a plain page.
struct Band {
  int plane;
  char colour;
};
constexpr Band kColourBands[4] = {{2, 4}, {1, 1}, {0, 2}, {-1, 0}};
constexpr Band kBlackBand[1] = {{0, 0}};
std::span<const Band> bands_of(bool colour) {
  return colour ? std::span<const Band>(kColourBands) : std::span<const Band>(kBlackBand);
}

void le16(std::string& out, int v) {
  out.push_back(static_cast<char>(v & 0xFF));
  out.push_back(static_cast<char>((v >> 8) & 0xFF));
}

std::string number(int v, int digits) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%0*d", digits, v);
  return buf;
}

void dump_pcl(const Reader& rd, const zg::PrinterModel& m, const zg::PrinterPage& pp, std::string& out) {
  const int planes = rd.page.nrapln;
  const auto codes = yydumpprintercodes(m, pp, rd.width(), planes);
  out += codes.graini;
  for (int r = 0; r < rd.height(); ++r)
    for (int p = 0; p < planes; ++p) {
      // PCL colour planes print their own ink, black included.
      std::string bytes = rd.row(r, p, false);
      if (pp.compression) bytes = yydumpcompresspcl(bytes, pp.compression);
      // Planes before the last of a row don't move down.
      out += codes.bitimg + std::to_string(bytes.size()) + (p + 1 < planes ? "V" : "W") + bytes;
    }
  out += codes.graend;
}

void dump_escp2(const Reader& rd, const zg::PrinterModel& m, const zg::PrinterPage& pp, std::string& out) {
  const int step = kUnitsPerInch / pp.hdpi;
  const auto codes = yydumpprintercodes(m, pp, rd.width(), rd.page.nrapln);
  out += codes.graini;
  const bool colour = rd.page.nrapln > 1;
  const auto bands = bands_of(colour);
  const int width = rd.width();
  for (int r = 0; r < rd.height(); ++r) {
    for (const auto& b : bands) {
      std::string bytes = rd.row(r, b.plane);
      if (colour) out += std::string{kEsc, 'r', b.colour};
      out += std::string{kEsc, '\\'};
      le16(out, pp.left);
      std::string packed = yydumpcompressescp2(bytes);
      const bool shorter = packed.size() < bytes.size();
      out += std::string{kEsc, '.', static_cast<char>(shorter ? 1 : 0), static_cast<char>(step), static_cast<char>(step), 1};
      le16(out, width);
      out += shorter ? packed : bytes;
      out.push_back('\r');
    }
    out += codes.bitend;
  }
  out += codes.graend;
}

void dump_escp(const Reader& rd, const zg::PrinterModel& m, const zg::PrinterPage& pp, std::string& out) {
  const int pins = m.nprpin, bytespc = pins / 8;
  const int interl = pp.vdpi > m.nprpin * 216 / m.lfdhgt ? 2 : 1;
  const auto codes = yydumpprintercodes(m, pp, rd.width(), rd.page.nrapln);
  out += codes.graini;
  const int left = std::min(pp.left, 39999 / std::max(bytespc, 1));
  const int columns = left + rd.width();
  auto head = [&](std::string& o) {
    o += codes.bitimg;
    if (m.ipgraf == 4) {
      le16(o, columns * bytespc + 1);
      o.push_back(static_cast<char>(pp.hdpi == 60 ? 8 : pp.hdpi == 120 ? 9 : 11));
      return;
    }
    le16(o, columns);
  };
  const bool colour = rd.page.nrapln > 1;
  const auto bands = bands_of(colour);
  const int band_rows = pins * interl;
  for (int base = 0; base < rd.height(); base += band_rows) {
    for (int pass = 0; pass < interl; ++pass) {
      for (const auto& b : bands) {
        if (colour) out += std::string{kEsc, 'r', b.colour};
        head(out);
        out.append(static_cast<size_t>(left * bytespc), '\0');
        for (int c = 0; c < rd.width(); ++c)
          for (int k = 0; k < bytespc; ++k) {
            int byte = 0;
            for (int bit = 0; bit < 8; ++bit)
              if (rd.dot(c, base + pass + (k * 8 + bit) * interl, b.plane)) byte |= 0x80 >> bit;
            out.push_back(static_cast<char>(byte));
          }
        out.push_back('\r');
      }
      if (pass + 1 < interl) out += std::string{kEsc, 'J', static_cast<char>(kPassesApart)};
    }
    if (interl > 1) out += std::string{kEsc, 'J', static_cast<char>(m.lfdhgt - kPassesApart)};
    else out.push_back('\n');
  }
  out += codes.graend;
}

}  // namespace

bool yydoescopies(const zg::PrinterModel& model) { return model.ipgraf >= 7; }

PrinterCodes yydumpprintercodes(const zg::PrinterModel& m, const zg::PrinterPage& pp, int width, int planes) {
  PrinterCodes c;
  if (m.ipgraf >= 7) {
    if (pp.pageflags & 2) c.graini += std::string{kEsc, 'E'};
    c.graini += std::string{kEsc} + "&a" + number(pp.left, 4) + "h" + number(pp.top, 4) + "V";
    c.graini += std::string{kEsc} + "*t" + number(pp.hdpi, 3) + "R";
    c.graini += std::string{kEsc} + "*r";
    if (m.idevice > 11) {
      c.graini += number(width, 4) + "s";
      if (planes > 1) c.graini += (m.iprcol == 1 ? "" : "-") + std::to_string(planes) + "u";
    }
    c.graini += "1A";
    if (pp.compression) c.graini += std::string{kEsc} + "*b" + std::to_string(pp.compression) + "M";
    c.bitimg = std::string{kEsc} + "*b";
    if (pp.copies > 1 && yydoescopies(m)) c.graend += std::string{kEsc} + "&l" + number(pp.copies, 2) + "X";
    c.graend += std::string{kEsc} + "*rB";
    if (pp.pageflags & 1) c.graend += std::string{kEsc, 'E'};
  } else if (m.ipgraf == 6) {
    c.graini += std::string{kEsc, '@'};
    c.graini += std::string{kEsc, '(', 'G', 1, 0, 1};
    c.graini += std::string{kEsc, '(', 'U', 1, 0, static_cast<char>(kUnitsPerInch / pp.hdpi)};
    c.graini += std::string{kEsc, '(', 'V', 2, 0};
    le16(c.graini, pp.top);
    c.bitend = std::string{kEsc, '(', 'v', 2, 0, 1, 0};
    c.graend = "\f";
  } else {
    c.graini += std::string{kEsc, 'U', 1};
    if (pp.top > 0) {
      const int units = m.ipgraf == 5 ? static_cast<int>(pp.top * 2.5) : pp.top;
      c.graini += std::string{kEsc, 'J', static_cast<char>(std::min(units, 255))};
    }
    c.graini += std::string{kEsc, '3', static_cast<char>(m.lfdhgt)};
    switch (m.ipgraf) {
      case 4: c.bitimg = std::string{kEsc, '[', 'g'}; break;
      case 5: {
        const int mode = pp.hdpi == 90 ? 38 : pp.hdpi == 120 ? 33 : pp.hdpi == 180 ? 39 : 40;
        c.bitimg = std::string{kEsc, '*', static_cast<char>(mode)};
        break;
      }
      default:
        if (pp.hdpi == 60 || (pp.hdpi == 80 && m.ipgraf == 3)) c.bitimg = std::string{kEsc, 'K'};
        else if (pp.hdpi == 120) c.bitimg = std::string{kEsc, 'L'};
        else if (pp.hdpi == 240) c.bitimg = std::string{kEsc, 'Z'};
        else c.bitimg = std::string{kEsc, '*', 6};
    }
    c.graend = "\f";
  }
  return c;
}

std::string yydumpcompresspcl(std::string_view row, int method) {
  if (method == 2) return yydumpcompressescp2(row);
  constexpr size_t kMaxRepeat = 256;
  std::string out;
  for (size_t i = 0; i < row.size();) {
    size_t n = 1;
    while (i + n < row.size() && n < kMaxRepeat && row[i + n] == row[i]) ++n;
    out.push_back(static_cast<char>(n - 1));
    out.push_back(row[i]);
    i += n;
  }
  return out;
}

std::string yydumpcompressescp2(std::string_view row) {
  constexpr size_t kMax = 128;
  std::string out;
  for (size_t i = 0; i < row.size();) {
    size_t n = 1;
    while (i + n < row.size() && n < kMax && row[i + n] == row[i]) ++n;
    if (n >= 2) {
      out.push_back(static_cast<char>(1 - static_cast<int>(n)));
      out.push_back(row[i]);
      i += n;
      continue;
    }
    // A literal run up to the next pair of like bytes.
    size_t k = i;
    while (k < row.size() && k - i < kMax && !(k + 1 < row.size() && row[k] == row[k + 1])) ++k;
    out.push_back(static_cast<char>(k - i - 1));
    out.append(row.substr(i, k - i));
    i = k;
  }
  return out;
}

void yydump(const zg::RasterPage& page, const zg::PrinterModel& model, const zg::PrinterPage& printer,
            std::string& out) {
  const Reader rd{page, printer.orientation == 1};
  if (model.ipgraf >= 7) dump_pcl(rd, model, printer, out);
  else if (model.ipgraf == 6) dump_escp2(rd, model, printer, out);
  else dump_escp(rd, model, printer, out);
}
