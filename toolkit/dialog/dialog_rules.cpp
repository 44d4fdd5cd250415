// The display-free rules of the dialog engine: dialog units, number
// validation, mnemonic marks, line wrapping, radio groups.
#include <cctype>
#include <algorithm>
#include <cmath>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/format.h"
#include "toolkit/base/text.h"

namespace {

// Half away from zero, then truncated: the same rounding both ways.
int round_units(double v) { return static_cast<int>(v < 0 ? v - 0.5 : v + 0.5); }

}  // namespace

void yyDialogUnitsToPixels(const DialogFontMetrics& font, int x, int y, int& px, int& py) {
  px = round_units(static_cast<float>(x) * font.averageWidth / 4.0f);
  py = round_units(static_cast<float>(y) * static_cast<float>(font.charHeight) / 8.0f);
}

void yyDialogUnitsFromPixels(const DialogFontMetrics& font, int x, int y, int& ux, int& uy) {
  ux = round_units(x * 4.0 / static_cast<double>(font.averageWidth));
  uy = round_units(y * 8.0 / static_cast<double>(font.charHeight));
}

DialogFontMetrics yyDialogMetricsFromSample(int sampleWidth, int sampleHeight, int spaceWidth) {
  DialogFontMetrics m;
  m.averageWidth = std::max(1.0f, static_cast<float>(sampleWidth) * 1.07f / 52.0f);
  m.charWidth = std::max(1, static_cast<int>(m.averageWidth + 0.5f));
  m.charHeight = std::max(1, static_cast<int>(static_cast<float>(sampleHeight) * 1.07f + 0.5f));
  m.spaceWidth = std::max(1, spaceWidth);
  int unused = 0;
  yyDialogUnitsToPixels(m, 32, 14, m.defaultTabWidth, unused);
  yyDialogUnitsToPixels(m, 0, 14, unused, m.controlHeight);
  return m;
}

bool yyDialogNumericOutOfRange(double minimum, double maximum, double number) {
  if (maximum < minimum) return false;
  return number < minimum || number > maximum;
}

bool yyDialogStrValidNum(int kind, char& c) {
  if (std::isdigit(static_cast<unsigned char>(c)) || c == '+' || c == '-') return true;
  const char point = zelvy_data::data().idecimal == 1 ? zelvy_data::data().cdecimal : '.';
  // An integer takes no fraction, but dropping the mark would turn 1,5 into
  // 15: it stays, and the field refuses the number as it is.
  if (kind < 4) return c == '.' || c == ',';
  if (c == point) return true;
  // Where the point is the mark, a comma typed for it is read as one.
  if (c == ',' && point == '.') {
    c = '.';
    return true;
  }
  if (c == 'E' || c == 'e') {
    c = 'E';
    return true;
  }
  if (kind == 5 && (c == 'D' || c == 'd')) {
    c = 'D';
    return true;
  }
  return false;
}

std::string yyDialogStrFilterInsert(std::string_view text, int kind, bool multiLine, int allowed) {
  std::string out;
  out.reserve(text.size());
  const char point = zelvy_data::data().idecimal == 1 ? zelvy_data::data().cdecimal : '.';
  int chars = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    // Control characters, C0, DEL and the C1 range in UTF-8, never enter a field;
    // only a multi-line text keeps its line ends.
    if ((c < 0x20 && !(multiLine && c == '\n')) || c == 0x7F) continue;
    if (c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      ++i;
      continue;
    }
    if ((c & 0xC0) != 0x80) {
      if (allowed >= 0 && chars == allowed) break;
      ++chars;
    }
    out += (kind >= 4 && c == ',' && point == '.') ? '.' : static_cast<char>(c);
  }
  return out;
}

std::string yyDialogStrGetMnemonic(std::string_view text, char& mnemonic) {
  mnemonic = 0;
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] != '&') continue;
    if (text[i + 1] != '&') mnemonic = text[i + 1];
    ++i;  // a pair is never the start of another
  }
  return yyStrDeAmpersand(text);
}

std::string yyDialogStrConvert(int crMode, bool wrap, int width, std::string_view text,
                               const std::function<int(std::string_view)>& measure) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (c == '\r' && crMode == 0) out += '\n';
    else if (c == '\r' && crMode == 1) continue;
    else out += c;
  }
  if (!wrap || !measure) return out;
  std::size_t lineStart = 0, lastBlank = std::string::npos;
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (out[i] == '\n') {
      lineStart = i + 1;
      lastBlank = std::string::npos;
      continue;
    }
    if (out[i] == ' ') lastBlank = i;
    if (lastBlank != std::string::npos &&
        measure(std::string_view(out).substr(lineStart, i + 1 - lineStart)) > width) {
      out[lastBlank] = '\n';
      lineStart = lastBlank + 1;
      lastBlank = std::string::npos;
    }
  }
  return out;
}

namespace {

// The number reader stops at a comma or, for an integer, takes a fraction:
// a text it would read only in part is no number of the field.
bool read_whole(int kind, std::string_view text) {
  if (text.find(',') != std::string_view::npos) return false;
  return kind != 3 || text.find_first_not_of(" +-0123456789") == std::string_view::npos;
}

}  // namespace

bool yyDialogValidateText(TextFieldData& d, std::string_view text, bool store, bool allowClear) {
  if (d.kind < 3) return true;
  if (text.find_first_not_of(' ') == std::string_view::npos) {
    const bool ok = d.maximum < d.minimum || !d.defined || allowClear;
    if (ok && store) d.valid = d.edited = false;
    return ok;
  }
  double v = 0;
  int good = 0;
  yyst2dblcheck_(v, good, text);
  if (!good || !read_whole(d.kind, text) || yyDialogNumericOutOfRange(d.minimum, d.maximum, v)) return false;
  if (store) {
    d.valid = true;
    d.value = v;
    d.edited = false;
  }
  return true;
}

int yyDialogNumericValue(const TextFieldData& d, std::string_view text, double& value) {
  if (d.edited) {
    if (text.find_first_not_of(' ') == std::string_view::npos) return 1010;
    int good = 0;
    yyst2dblcheck_(value, good, text);
    return good && read_whole(d.kind, text) ? 0 : 1010;
  }
  if (!d.valid) return 1010;
  value = d.value;
  return 0;
}

void yyDialogNumericStored(TextFieldData& d, std::string_view text, double number, std::string_view format,
                           bool clearDefined) {
  d.edited = false;
  if (!text.empty()) {
    d.defined = d.valid = true;
    d.value = number;
    if (number == 0.0) {
      double parsed = 0;
      int good = 0;
      yyst2dblcheck_(parsed, good, text);
      if (good) d.value = parsed;
    }
  } else {
    d.valid = false;
    if (clearDefined) d.defined = false;
  }
  d.format.assign(format.find_first_not_of(' ') == std::string_view::npos ? std::string_view{} : format);
}

int yyDialogRadioGroups(const std::vector<int>& types, const std::vector<std::uint32_t>& styles,
                        std::vector<int>& groups) {
  using namespace zelvy_dialog;
  groups.assign(types.size(), 0);
  int group = 1, count = 0;
  for (std::size_t k = types.size(); k-- > 0;) {
    if (types[k] != kRadio) continue;
    groups[k] = group;
    count = group;
    if (k == 0 || types[k - 1] != kRadio || (styles[k] & field_style::kGroupStart)) ++group;
  }
  return count;
}

std::vector<std::uint32_t> yyDialogEdgeFlags(const std::vector<DialogRect>& rects, const std::vector<int>& types,
                                             const std::vector<std::uint32_t>& styles, int anchor,
                                             std::uint32_t layoutFlags) {
  using namespace anchor_edge;
  const std::size_t n = rects.size();
  std::vector<std::uint32_t> flags(n, 0);
  if (anchor < 0 || static_cast<std::size_t>(anchor) >= n) return flags;
  const DialogRect& a = rects[static_cast<std::size_t>(anchor)];
  const bool followEdge = layoutFlags & kLayoutFollowEdge;
  // One axis: the field's working span [gLo, gHi], its own low edge, the anchor's span.
  auto axis = [&](int gLo, int gHi, int oLo, int aLo, int aHi, std::uint32_t lo, std::uint32_t hi) -> std::uint32_t {
    if (followEdge && gHi == aHi) {
      if (gLo == aLo && oLo != aLo) return 0;
      return hi | (oLo != aLo ? lo : 0);
    }
    return aHi <= gLo ? (lo | hi) : 0;
  };
  for (std::size_t i = 0; i < n; ++i) {
    const DialogRect& o = rects[i];
    DialogRect g = o;
    const bool isAnchor = static_cast<int>(i) == anchor;
    // A field inside a frame moves with the frame, unless the frame also holds the anchor.
    for (std::size_t j = 0; j < n; ++j) {
      if (j == i || !rects[j].encloses(g)) continue;
      if (isAnchor) flags[j] |= kRight | kBottom;
      else if (!rects[j].encloses(a)) g = rects[j];
    }
    if (isAnchor) {
      flags[i] |= kRight | kBottom;
    } else {
      flags[i] |= axis(g.x, g.right(), o.x, a.x, a.right(), kLeft, kRight);
      flags[i] |= axis(g.y, g.bottom(), o.y, a.y, a.bottom(), kTop, kBottom);
    }
  }
  // Lines keep their thickness: a line stretches only along its length.
  for (std::size_t i = 0; i < n; ++i) {
    if (types[i] != zelvy_dialog::kPicture) continue;
    const std::uint32_t kind = styles[i] & 0xFF;
    if (kind == zelvy_dialog::field_style::kPictureLineHorizontal && !(flags[i] & kTop)) flags[i] &= ~kBottom;
    if (kind == zelvy_dialog::field_style::kPictureLineVertical && !(flags[i] & kLeft)) flags[i] &= ~kRight;
  }
  return flags;
}

DialogRect yyDialogAnchorRect(const DialogRect& r, std::uint32_t edges, int rightGap, int bottomGap, int width,
                              int height) {
  using namespace anchor_edge;
  const int dx = width - r.right() - rightGap, dy = height - r.bottom() - bottomGap;
  int left = r.x, right = r.right(), top = r.y, bottom = r.bottom();
  if (edges & kLeft) left += dx;
  if (edges & kRight) right += dx;
  if (edges & kTop) top += dy;
  if (edges & kBottom) bottom += dy;
  return {left, top, std::max(1, right - left), std::max(1, bottom - top)};
}

int yyDialogFieldInRect(const DialogRect& r, int width, int height) {
  const DialogRect dialog{0, 0, width, height};
  if (dialog.encloses(r)) return 1;
  const bool apart = r.x >= width || r.y >= height || r.right() <= 0 || r.bottom() <= 0;
  return apart ? 0 : 2;
}

namespace {

std::size_t utf8_chars(std::string_view s) {
  std::size_t n = 0;
  for (char c : s)
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++n;
  return n;
}

// Drops the last character, never half of one.
void drop_last_char(std::string& s) {
  while (!s.empty()) {
    const auto c = static_cast<unsigned char>(s.back());
    s.pop_back();
    if ((c & 0xC0) != 0x80) break;
  }
}

}  // namespace

std::string yyDialogStringLimit(std::string_view insertion, int charLimit, int pixelLimit, std::string_view before,
                                std::string_view after, const std::function<int(std::string_view)>& measure) {
  std::string out(insertion);
  if (charLimit > 0) {
    const long present = static_cast<long>(utf8_chars(before) + utf8_chars(after));
    const long allowed = std::max(0L, charLimit - present);
    while (static_cast<long>(utf8_chars(out)) > allowed) drop_last_char(out);
  }
  if (pixelLimit > 0 && measure) {
    auto line = [&] { return std::string(before) + out + std::string(after); };
    while (!out.empty() && measure(line()) > pixelLimit) drop_last_char(out);
  }
  return out;
}

void yyDialogStrCase(int kind, std::string& text) {
  for (char& c : text) {
    if (kind == 1 && c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    else if (kind == 2 && c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
}
