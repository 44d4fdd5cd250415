// The built-in software fonts. The stroke font is drawn on a grid 6 wide and
// 11 high, base line at 2, capitals up to 10, descenders down to 0. The
// outline fonts are made from it: each stroke becomes a closed band on the
// finer outline grid, so that they fill where the stroke font draws lines.
#include "toolkit/graphics/graphics.h"
#include "toolkit/graphics/graphics_private.h"
#include "toolkit/base/zelvy_data.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

using zelvy_graph::state;

namespace {

constexpr std::string_view kGridChars = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrst";

// Characters 33 to 126, then the euro sign in 127's place.
constexpr std::array<std::string_view, 95> kStrokeGlyphs = {
    "3A34v3233",                                  // !
    "2A28v4A48",                                  // "
    "2A22v4A42v1757v1555",                        // #
    "695A1A090716566563521203v3B31",              // $
    "026Av0A1A19090Av5363625253",                 // %
    "6217192A3A49480403123265",                   // &
    "3A38",                                       // '
    "4B292341",                                   // (
    "2B494321",                                   // )
    "3935v1856v1658",                             // *
    "3834v1656",                                  // +
    "333221",                                     // ,
    "1656",                                       // -
    "3233",                                       // .
    "026A",                                       // /
    "2A4A6864422204082Av1359",                    // 0
    "183A32v1252",                                // 1
    "091A5A69670262",                             // 2
    "091A5A69675626v566563521203",                // 3
    "525A0464",                                   // 4
    "6A0A06566563521203",                         // 5
    "5A2A0803125263655606",                       // 6
    "0A6A22",                                     // 7
    "1A5A6967561607091Av1605031252636556",        // 8
    "124264695A1A09071666",                       // 9
    "3637v3233",                                  // :
    "3637v333221",                                // ;
    "591653",                                     // <
    "1757v1555",                                  // =
    "195613",                                     // >
    "091A5A6967563634v3233",                      // ?
    "543425263747565364685A1A08031252",           // @
    "023A62v1555",                                // A
    "020A4A59584707v4756534202",                  // B
    "594A1A0903124253",                           // C
    "020A3A58543202",                             // D
    "6A0A0262v0646",                              // E
    "6A0A02v0646",                                // F
    "594A1A09031242535535",                       // G
    "0A02v6A62v0666",                             // H
    "2A4Av3A32v2242",                             // I
    "5A53422213",                                 // J
    "0A02v6A04v2662",                             // K
    "0A0262",                                     // L
    "020A356A62",                                 // M
    "020A626A",                                   // N
    "2A4A6864422204082A",                         // O
    "020A5A69675606",                             // P
    "2A4A6864422204082Av4462",                    // Q
    "020A5A69675606v3662",                        // R
    "695A1A090716566563521203",                   // S
    "0A6Av3A32",                                  // T
    "0A031252636A",                               // U
    "0A326A",                                     // V
    "0A1235526A",                                 // W
    "0A62v6A02",                                  // X
    "0A366Av3632",                                // Y
    "0A6A0262",                                   // Z
    "4B2B2141",                                   // [
    "0A62",                                       // backslash
    "2B4B4121",                                   // ]
    "173A57",                                     // ^
    "0060",                                       // _
    "2A38",                                       // `
    "17475652v55150403124253",                    // a
    "0A02v0617475653421203",                      // b
    "5647170603124253",                           // c
    "5A52v5647170603124253",                      // d
    "05555647170603124253",                       // e
    "5A3A2922v1747",                              // f
    "5751401001v5647170604134354",                // g
    "0A02v0617475652",                            // h
    "3732v393A",                                  // i
    "47413010v494A",                              // j
    "0A02v5704v2552",                             // k
    "2A3A334252",                                 // l
    "0702v0617273632v3647576662",                 // m
    "0702v0617475652",                            // n
    "174756534212030617",                         // o
    "0700v0617475653421203",                      // p
    "5750v5647170603124253",                      // q
    "0702v05274756",                              // r
    "56471706154453421203",                       // s
    "2A233242v1747",                              // t
    "0703124253v5752",                            // u
    "073267",                                     // v
    "0712355267",                                 // w
    "0752v5702",                                  // x
    "0733v672010",                                // y
    "07570252",                                   // z
    "4B3B2A271625223141",                         // {
    "3B31",                                       // |
    "2B3B4A475645423121",                         // }
    "182939485869",                               // ~
    "695A3A292333525263v0747v0545",               // euro
};

struct Table {
  std::string data;
  std::array<int, 96> loc7{}, loc8{};
};

// Lays a list of glyphs end to end; the upper half has no glyphs.
Table lay(const std::vector<std::string>& glyphs) {
  Table t;
  for (size_t i = 0; i < glyphs.size() && i < 95; ++i) {
    t.loc7[i] = static_cast<int>(t.data.size());
    t.data += glyphs[i];
  }
  t.loc7[95] = static_cast<int>(t.data.size());
  t.loc8.fill(static_cast<int>(t.data.size()));
  return t;
}

int grid_value(char c) {
  const auto p = kGridChars.find(c);
  return p == std::string_view::npos ? -1 : static_cast<int>(p);
}

// The strokes of one glyph as vertex lists.
std::vector<std::vector<std::array<int, 2>>> strokes_of(std::string_view glyph) {
  std::vector<std::vector<std::array<int, 2>>> out(1);
  for (size_t i = 0; i < glyph.size();) {
    const int gx = grid_value(glyph[i]);
    const int gy = i + 1 < glyph.size() ? grid_value(glyph[i + 1]) : -1;
    if (gx < 0 || gy < 0) {
      if (!out.back().empty()) out.emplace_back();
      ++i;
      continue;
    }
    out.back().push_back({gx, gy});
    i += 2;
  }
  if (out.back().empty()) out.pop_back();
  return out;
}

// Stroke grid to outline grid: the glyph spans about five sixths of the
// outline cell's width, the full height.
constexpr float kOutlineX0 = 4.0f, kOutlineXStep = 4.5f, kOutlineYStep = 5.0f;
// Band widths on the outline grid: wide enough to keep a pixel at small sizes.
constexpr float kBand = 5.0f, kBoldBand = 8.0f;

char grid_char(float v) {
  const int i = std::clamp(static_cast<int>(std::lround(v)), 0, static_cast<int>(kGridChars.size()) - 1);
  return kGridChars[static_cast<size_t>(i)];
}

// Each segment of each stroke becomes a closed band of the given thickness,
// lengthened by half of it at both ends so that joints are covered.
std::string outline_glyph(std::string_view glyph, float thick, float slant) {
  std::string out;
  for (const auto& stroke : strokes_of(glyph)) {
    for (size_t k = 0; k + 1 < stroke.size() || (stroke.size() == 1 && k == 0); ++k) {
      const auto& a = stroke[k];
      const auto& b = stroke.size() == 1 ? stroke[k] : stroke[k + 1];
      float ax = kOutlineX0 + static_cast<float>(a[0]) * kOutlineXStep, ay = static_cast<float>(a[1]) * kOutlineYStep;
      float bx = kOutlineX0 + static_cast<float>(b[0]) * kOutlineXStep, by = static_cast<float>(b[1]) * kOutlineYStep;
      ax += slant * ay;
      bx += slant * by;
      float dx = bx - ax, dy = by - ay;
      const float len = std::hypot(dx, dy);
      if (len > 0) {
        dx /= len;
        dy /= len;
      } else {
        dx = 1;
        dy = 0;
      }
      const float h = thick / 2;
      const float nx = -dy * h, ny = dx * h;
      ax -= dx * h; ay -= dy * h;
      bx += dx * h; by += dy * h;
      if (!out.empty()) out.push_back('v');
      const float px[] = {ax + nx, bx + nx, bx - nx, ax - nx, ax + nx};
      const float py[] = {ay + ny, by + ny, by - ny, ay - ny, ay + ny};
      for (int i = 0; i < 5; ++i) {
        out.push_back(grid_char(px[i]));
        out.push_back(grid_char(py[i]));
      }
    }
  }
  return out;
}

const Table& stroke_table() {
  static const Table t = [] {
    std::vector<std::string> g(kStrokeGlyphs.begin(), kStrokeGlyphs.end());
    return lay(g);
  }();
  return t;
}

enum class Outline { Fixed, FixedBold, Roman, RomanBold, Swiss, SwissBold, Symbol };

const Table& outline_table(Outline kind) {
  static std::array<Table, 7> tables;
  static std::array<bool, 7> made{};
  const auto i = static_cast<size_t>(kind);
  if (!made[i]) {
    const bool bold = kind == Outline::FixedBold || kind == Outline::RomanBold || kind == Outline::SwissBold;
    // The symbol face leans, so that it tells itself from the others.
    const float slant = kind == Outline::Symbol ? 0.2f : 0.0f;
    std::vector<std::string> g;
    for (auto glyph : kStrokeGlyphs) g.push_back(outline_glyph(glyph, bold ? kBoldBand : kBand, slant));
    tables[i] = lay(g);
    made[i] = true;
  }
  return tables[i];
}

constexpr int kFlagStrokes = 1, kFlagEuro = 2;

// A character-set file of the font's name stands in for the built-in table;
// a missing or damaged one leaves the table in force.
void load_outline(Outline kind, std::string_view name, int spacing, float xspace) {
  static constexpr std::array<std::string_view, 7> kRoutine = {
      "yygrofontfixed", "yygrofontfixedbold", "yygrofontroman", "yygrofontromanbold",
      "yygrofontswiss", "yygrofontswissbold", "WGrOFontSymbol"};
  if (yygrchrfont(name, kRoutine[static_cast<size_t>(kind)])) return;
  const auto& t = outline_table(kind);
  yychsfont(xspace, 55, 55, 55, 8, kind == Outline::Symbol ? 0 : kFlagEuro, spacing, 0, name, t.data, t.loc7, t.loc8);
}

}  // namespace

void WGrVFontStandard() {
  const auto& charset = zelvy_data::data().cdeffile[2];
  if (yygrchrfont(charset.empty() ? std::string_view("standard.chr") : std::string_view(charset), "WGrVFontStandard"))
    return;
  const auto& t = stroke_table();
  yychsfont(7.68f, 11.88f, 6, 11, 8, kFlagStrokes | kFlagEuro, 0, 0, "standard.chr", t.data, t.loc7, t.loc8);
}

void yygrofontfixed() { load_outline(Outline::Fixed, "fixed.chr", 0, 36.3f); }
void yygrofontfixedbold() { load_outline(Outline::FixedBold, "fixedbld.chr", 0, 36.3f); }
void yygrofontroman() { load_outline(Outline::Roman, "roman.chr", 1, 36.3f); }
void yygrofontromanbold() { load_outline(Outline::RomanBold, "romanbld.chr", 1, 36.3f); }
void yygrofontswiss() { load_outline(Outline::Swiss, "swiss.chr", 1, 36.3f); }
void yygrofontswissbold() { load_outline(Outline::SwissBold, "swissbld.chr", 1, 36.3f); }
void WGrOFontSymbol() { load_outline(Outline::Symbol, "symbol.chr", 1, 30.25f); }

namespace {
void bold_or_not(void (*bold)(), void (*normal)()) {
  const bool b = (state().ichstyl & 1) != 0;
  (b ? bold : normal)();
  state().font.ichwgt = b ? 1 : 0;
}
}  // namespace

void WGrOFontFixed() { bold_or_not(yygrofontfixedbold, yygrofontfixed); }
void WGrOFontRoman() { bold_or_not(yygrofontromanbold, yygrofontroman); }
void WGrOFontSwiss() { bold_or_not(yygrofontswissbold, yygrofontswiss); }

// Default widths in cells: from the stroke glyphs' extents, narrow letters
// narrower; the blank 0.7.
void yygrdefaultspacing(std::array<float, 96>& space7, std::array<float, 95>& space8) {
  constexpr float kBlank = 0.7f, kMinimum = 3.0f, kPad = 2.0f, kFull = 8.0f;
  space7[0] = kBlank;
  for (size_t i = 0; i < kStrokeGlyphs.size(); ++i) {
    int lo = 99, hi = -1;
    for (const auto& st : strokes_of(kStrokeGlyphs[i]))
      for (const auto& v : st) {
        lo = std::min(lo, v[0]);
        hi = std::max(hi, v[0]);
      }
    space7[i + 1] = hi < lo ? kBlank : std::max(kMinimum, static_cast<float>(hi - lo) + kPad) / kFull * 1.11f;
  }
  space8.fill(kBlank);
}
