// Comma- and tab-separated grid files against the grid's values.
#include "toolkit/grid/grid_csv.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "toolkit/base/format.h"
#include "toolkit/base/zelvy_data.h"

namespace {

constexpr int kNoWord = 10, kNotNumber = 12, kOverflow = 4, kOutOfRange = 1009, kTooManyRows = 1054,
              kNoOption = 1055;
constexpr char kQuote = '"';

std::size_t at(int i) { return static_cast<std::size_t>(i); }

std::string_view trim_right(std::string_view t) {
  while (!t.empty() && (t.back() == ' ' || t.back() == '\0')) t.remove_suffix(1);
  return t;
}

std::string_view trim(std::string_view t) {
  t = trim_right(t);
  while (!t.empty() && t.front() == ' ') t.remove_prefix(1);
  return t;
}

// An integer from the first word of the text: 10 none, 12 not digits, 4 too large.
int parse_integer(std::string_view text, int& value) {
  value = 0;
  std::string_view w = trim(text);
  w = w.substr(0, w.find(' '));
  if (w.empty()) return kNoWord;
  const bool negative = w[0] == '-';
  if (w[0] == '-' || w[0] == '+') w.remove_prefix(1);
  if (w.empty()) return kNotNumber;
  std::int64_t sum = 0;
  for (char c : w) {
    if (c < '0' || c > '9') return kNotNumber;
    sum = sum * 10 + (c - '0');
    if (sum > std::numeric_limits<int>::max()) return kOverflow;
  }
  value = static_cast<int>(negative ? -sum : sum);
  return 0;
}

// A number in the plain form most files hold, [sign] digits [. digits]
// [E [sign] digits], read at once; anything else takes the general reader.
bool plain_number(std::string_view t, double& value) {
  std::size_t i = 0;
  auto digits = [&] {
    const std::size_t from = i;
    while (i < t.size() && t[i] >= '0' && t[i] <= '9') ++i;
    return i - from;
  };
  if (i < t.size() && (t[i] == '-' || t[i] == '+')) ++i;
  std::size_t count = digits();
  if (i < t.size() && t[i] == '.') {
    ++i;
    count += digits();
  }
  if (count == 0 || count > 17) return false;
  if (i < t.size() && (t[i] == 'E' || t[i] == 'e')) {
    ++i;
    if (i < t.size() && (t[i] == '-' || t[i] == '+')) ++i;
    if (digits() == 0) return false;
  }
  if (i != t.size()) return false;
  const char* first = t.data() + (t[0] == '+' ? 1 : 0);
  const auto r = std::from_chars(first, t.data() + t.size(), value);
  return r.ec == std::errc{} && r.ptr == t.data() + t.size() && std::abs(value) < 1e300;
}

void fold(std::string& s, int caseMode) {
  if (caseMode == 0) return;
  for (char& ch : s)
    ch = static_cast<char>(caseMode == 1 ? std::toupper(static_cast<unsigned char>(ch))
                                         : std::tolower(static_cast<unsigned char>(ch)));
}

// One field into a cell by the column's type; returns the failure, 0 none.
int store_cell(GridColumn& c, int row, std::string_view v) {
  switch (c.cellType) {
    case grid_type::kString: {
      std::string& s = c.strings[at(row)];
      s.assign(v.substr(0, at(std::max(c.charLimit, 0))));
      fold(s, c.caseMode);
      if (s.empty()) c.cellFlags[at(row)] &= ~grid_cell::kHasValue;
      else c.cellFlags[at(row)] |= grid_cell::kHasValue;
      return 0;
    }
    case grid_type::kCheckbox: {
      std::string t(trim(v));
      fold(t, 1);
      yyGridModelStoreNumber(c, row, t == "YES" ? 1.0 : 0.0);
      return 0;
    }
    case grid_type::kCombo: {
      const std::string_view t = trim(v);
      if (t.empty()) {
        yyGridModelClear(c, row);
        return 0;
      }
      const int option = yyGridModelMenuOption(c, t);
      if (option == 0) {
        yyGridModelClear(c, row);
        return kNoOption;
      }
      yyGridModelStoreNumber(c, row, option);
      return 0;
    }
    case grid_type::kNone: return 0;
    default: break;
  }
  if (trim(v).empty()) {
    yyGridModelClear(c, row);
    return 0;
  }
  double number = 0.0;
  int error = 0;
  if (c.cellType == grid_type::kInteger) {
    int i = 0;
    error = parse_integer(v, i);
    number = i;
  } else if (!plain_number(trim(v), number)) {
    error = yystringtofloat(v, c.cellType == grid_type::kDouble, number);
    if (!error && c.cellType == grid_type::kReal) number = static_cast<float>(number);
  }
  if (!error && !yyGridModelInRange(c, number)) error = kOutOfRange;
  if (error) {
    yyGridModelClear(c, row);
    return error;
  }
  yyGridModelStoreNumber(c, row, number);
  return 0;
}

void append_integer(std::string& out, long long v) {
  char buf[24];
  const auto r = std::to_chars(buf, buf + sizeof buf, v);
  out.append(buf, r.ptr);
}

// A string field as the file holds it: quoted with its quotes doubled, bare,
// or in a tab-separated file with tabs and line ends as blanks (there are no
// quotes to keep them in the field).
void append_string(std::string& out, std::string_view s, char separator, bool quote) {
  if (quote) {
    out += kQuote;
    for (std::size_t from = 0;;) {
      const std::size_t q = s.find(kQuote, from);
      if (q == std::string_view::npos) {
        out.append(s.substr(from));
        break;
      }
      out.append(s.substr(from, q + 1 - from));
      out += kQuote;
      from = q + 1;
    }
    out += kQuote;
  } else if (separator == '\t') {
    for (char ch : s) out += (ch == '\t' || ch == '\n' || ch == '\r') ? ' ' : ch;
  } else {
    out.append(s);
  }
}

// Quotes of a raw field undone into `out` (reused, so no field allocates).
void compress_into(std::string_view text, std::string& out) {
  if (text.size() >= 2 && text.front() == kQuote && text.back() == kQuote) text = text.substr(1, text.size() - 2);
  out.clear();
  for (std::size_t i = 0; i < text.size(); ++i) {
    out += text[i];
    if (text[i] == kQuote && i + 1 < text.size() && text[i + 1] == kQuote) ++i;
  }
}

}  // namespace

// ---- Numbers written fast -----------------------------------------------------
//
// Saving writes every real and double cell in its column's format. The
// general formatter parses the format and builds several strings per number;
// here the usual one-item formats are parsed once per column and each number
// goes straight into a buffer. Anything else, and every case that the general
// formatter would star or report, takes the general one, so the text is the
// same byte for byte.

GridFastFormat yyGridFastFormat(std::string_view format) {
  GridFastFormat f;
  std::string_view t = format;
  if (t.size() < 5 || t.front() != '(' || t.back() != ')') return f;
  t = t.substr(1, t.size() - 2);
  const char kind = t[0];
  if (kind != 'F' && kind != 'E' && kind != 'G') return f;
  std::size_t i = 1;
  auto number = [&](int& v) {
    const auto r = std::from_chars(t.data() + i, t.data() + t.size(), v);
    if (r.ec != std::errc{} || r.ptr == t.data() + i) return false;
    i = static_cast<std::size_t>(r.ptr - t.data());
    return true;
  };
  int w = 0, d = 0, e = 0;
  if (!number(w) || i >= t.size() || t[i] != '.') return f;
  ++i;
  if (!number(d)) return f;
  if (i < t.size()) {
    if (kind == 'F' || t[i] != 'E') return f;
    ++i;
    if (!number(e) || e < 1) return f;
  }
  if (i != t.size() || w < 1 || w > kGridNumberWidth || d < 1 || d > 30) return f;
  f.kind = kind;
  f.width = w;
  f.decimals = d;
  f.exponent = e;
  return f;
}

namespace {

// Fixed point with d decimals: the "0" before the point goes when that makes
// it fit. False when it doesn't fit at all.
bool fast_fixed(double v, int w, int d, char* out, std::size_t& len) {
  char buf[400];
  const auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::fixed, d);
  if (r.ec != std::errc{}) return false;
  std::size_t n = static_cast<std::size_t>(r.ptr - buf);
  const char* s = buf;
  if (static_cast<int>(n) > w) {
    const std::size_t z = buf[0] == '-' ? 1 : 0;
    if (n > z + 1 && buf[z] == '0' && buf[z + 1] == '.') {
      // "-0.5" -> "-.5": the sign moves onto the dropped zero.
      if (z) buf[1] = '-';
      s = buf + 1;
      --n;
    }
  }
  if (static_cast<int>(n) > w) return false;
  std::memcpy(out, s, n);
  len = n;
  return true;
}

// The d significant digits of |v| and the exponent x of d.ddd x 10^x.
bool fast_significant(double v, int d, char* digits, int& x) {
  x = 0;
  if (v == 0) {
    std::memset(digits, '0', static_cast<std::size_t>(d));
    return true;
  }
  char buf[64];
  const auto r = std::to_chars(buf, buf + sizeof buf, std::fabs(v), std::chars_format::scientific, d - 1);
  if (r.ec != std::errc{}) return false;
  std::size_t k = 0;
  const char* p = buf;
  for (; p < r.ptr && *p != 'e'; ++p)
    if (*p >= '0' && *p <= '9' && k < static_cast<std::size_t>(d)) digits[k++] = *p;
  while (k < static_cast<std::size_t>(d)) digits[k++] = '0';
  if (p == r.ptr) return false;
  ++p;
  if (p < r.ptr && *p == '+') ++p;
  return std::from_chars(p, r.ptr, x).ec == std::errc{};
}

bool fast_exp(double v, int w, int d, int e, char* out, std::size_t& len) {
  char digits[40];
  int x = 0;
  if (!fast_significant(v, d, digits, x)) return false;
  const int ex = v == 0 ? 0 : x + 1;
  const int mag = ex < 0 ? -ex : ex;
  char ed[12];
  const auto er = std::to_chars(ed, ed + sizeof ed, mag);
  const int nd = static_cast<int>(er.ptr - ed);
  const char sign = ex < 0 ? '-' : '+';
  char s[96];
  std::size_t n = 0;
  if (std::signbit(v)) s[n++] = '-';
  s[n++] = '0';
  s[n++] = '.';
  std::memcpy(s + n, digits, static_cast<std::size_t>(d));
  n += static_cast<std::size_t>(d);
  if (e == 0) {
    if (mag <= 99) {
      s[n++] = 'E';
      s[n++] = sign;
      if (mag < 10) s[n++] = '0';
    } else if (mag <= 999) {
      s[n++] = sign;
    } else {
      return false;
    }
  } else {
    if (nd > e) return false;
    s[n++] = 'E';
    s[n++] = sign;
    for (int k = nd; k < e; ++k) s[n++] = '0';
  }
  std::memcpy(s + n, ed, static_cast<std::size_t>(nd));
  n += static_cast<std::size_t>(nd);
  const char* from = s;
  if (static_cast<int>(n) > w) {
    const std::size_t z = s[0] == '-' ? 1 : 0;
    if (s[z] == '0') {
      if (z) s[1] = '-';
      from = s + 1;
      --n;
    }
  }
  if (static_cast<int>(n) > w) return false;
  std::memcpy(out, from, n);
  len = n;
  return true;
}

}  // namespace

bool yyGridFastNumber(const GridFastFormat& f, double v, char* out, std::size_t& len) {
  if (f.kind == 0 || !std::isfinite(v)) return false;
  switch (f.kind) {
    case 'F': return fast_fixed(v, f.width, f.decimals, out, len);
    case 'E': return fast_exp(v, f.width, f.decimals, f.exponent, out, len);
    default: break;
  }
  const int n = f.exponent > 0 ? f.exponent + 2 : 4;
  int decimals = f.decimals - 1;
  bool fixed = v == 0;
  if (!fixed) {
    // Fixed or exponent form by the value as rounded to its digits.
    char digits[40];
    int x = 0;
    if (!fast_significant(v, f.decimals, digits, x)) return false;
    const int k = x + 1;
    fixed = k >= 0 && k <= f.decimals;
    decimals = f.decimals - k;
  }
  if (!fixed) return fast_exp(v, f.width, f.decimals, f.exponent, out, len);
  if (f.width - n < 1) return false;
  if (decimals > 0) return fast_fixed(v, f.width - n, decimals, out, len);
  // No decimals: the point stands alone, and there is no zero to drop.
  char buf[400];
  const auto r = std::to_chars(buf, buf + sizeof buf - 1, v, std::chars_format::fixed, 0);
  if (r.ec != std::errc{}) return false;
  std::size_t m = static_cast<std::size_t>(r.ptr - buf);
  buf[m++] = '.';
  if (static_cast<int>(m) > f.width - n) return false;
  std::memcpy(out, buf, m);
  len = m;
  return true;
}

namespace {

}  // namespace

char yyGridFileSeparator(std::string_view filename) {
  const std::size_t dot = filename.rfind('.');
  if (dot == std::string_view::npos || filename.size() - dot != 4) return ',';
  std::string ext(filename.substr(dot + 1));
  fold(ext, 2);
  return ext == "tsv" ? '\t' : ',';
}

std::string yyexpandquotes(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 2);
  for (char ch : text) {
    if (ch == kQuote) out += kQuote;
    out += ch;
  }
  return out;
}

std::string yycompressquotes(std::string_view text) {
  if (text.size() >= 2 && text.front() == kQuote && text.back() == kQuote) text = text.substr(1, text.size() - 2);
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    out += text[i];
    if (text[i] == kQuote && i + 1 < text.size() && text[i + 1] == kQuote) ++i;
  }
  return out;
}

GridLoadResult yyGridModelLoad(GridModel& m, std::string_view text, const GridLoadOptions& o) {
  GridLoadResult res;
  const int ncol = m.columnCount();
  const int firstCol = (o.labels && o.rowLabelBar) ? -1 : 0;
  const int originalRows = m.rows;
  int row = (o.labels && o.columnLabelBar) ? -1 : 0;
  int col = firstCol;
  int usedRows = 0;  // rows that a line reached
  bool stopped = false;
  auto note = [&](int e) {
    if (e && !res.error) res.error = e;
  };
  // The rest of a line: cells emptied, or on the label line the labels.
  auto finish_line = [&] {
    for (int c = std::max(col, 0); c < ncol; ++c) {
      if (row < 0) {
        if (!m.columns[at(c)].label.empty()) res.labelsChanged = true;
        m.columns[at(c)].label.clear();
      } else {
        yyGridModelClear(m.columns[at(c)], row);
      }
    }
    ++row;
    col = firstCol;
  };
  if (o.grow && m.rows < m.maxRows) {
    // Room for every line at once rather than step by step; the rows that no
    // line reaches are given back after.
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    const int wanted = static_cast<int>(std::min<std::size_t>(lines, static_cast<std::size_t>(m.maxRows)));
    if (wanted > m.rows) yyGridModelResize(m, wanted);
  }
  const bool quoted = o.separator == ',';
  std::string value;
  yyGridSplitFields(text, o.separator, [&](std::string_view raw, bool eol) {
    if (stopped) return;
    if (row >= m.rows) {
      if (!o.grow || m.rows >= m.maxRows) {
        res.error = kTooManyRows;
        stopped = true;
        return;
      }
      // Room is made in steps, and the rows not reached are given back after.
      yyGridModelResize(m, std::min(m.maxRows, std::max(row + 1, 2 * m.rows)));
    }
    if (row >= 0) usedRows = row + 1;
    if (col < ncol) {
      std::string_view v = raw;
      if (quoted && raw.find(kQuote) != std::string_view::npos) {
        compress_into(raw, value);
        v = value;
      }
      const bool blanks = o.keepBlanks && col >= 0 && m.columns[at(col)].cellType == grid_type::kString;
      if (!blanks) v = trim_right(v);
      if (row < 0 && col >= 0) {
        m.columns[at(col)].label.assign(v);
        res.labelsChanged = true;
      } else if (row >= 0 && col < 0) {
        m.rowLabels[at(row)].assign(v);
        m.rowLabelFlags[at(row)] = v.empty() ? 0 : 1;
        res.labelsChanged = true;
      } else if (row >= 0) {
        note(store_cell(m.columns[at(col)], row, v));
      }
    }
    ++col;
    if (eol) finish_line();
  });
  if (stopped) return res;
  if (m.rows > std::max(originalRows, usedRows)) yyGridModelResize(m, std::max(originalRows, usedRows));
  for (int r = std::max(row, 0); r < m.rows; ++r) {
    for (GridColumn& c : m.columns) yyGridModelClear(c, r);
    if (!m.rowLabels[at(r)].empty()) res.labelsChanged = true;
    m.rowLabels[at(r)].clear();
    m.rowLabelFlags[at(r)] = 0;
  }
  m.modified = m.changed = true;
  return res;
}

std::string yyGridModelSaveText(const GridModel& m, int c1, int c2, int r1, int r2, const GridSaveOptions& o) {
  std::string text;
  yyGridModelSaveChunks(m, c1, c2, r1, r2, o, [&text](std::string_view chunk) {
    text.append(chunk);
    return true;
  });
  return text;
}

bool yyGridModelSaveChunks(const GridModel& m, int c1, int c2, int r1, int r2, const GridSaveOptions& o,
                           const std::function<bool(std::string_view)>& sink) {
  if (c2 < c1 || r2 < r1) return true;
  // Whole rows go out in pieces of about this size: the text of a large grid
  // is never held at once, and the buffer stays warm.
  constexpr std::size_t kChunk = std::size_t{1} << 18;
  std::string out;
  out.reserve(kChunk + kChunk / 4);
  const char sep = o.separator;
  const bool quote = sep == ',' && !o.noQuotes;
  auto put_string = [&](std::string_view s) { append_string(out, s, sep, quote); };
  auto end_field = [&](int c) { out += c == c2 ? '\n' : sep; };
  if (o.labels && o.columnLabelBar) {
    if (o.rowLabelBar) {
      put_string("");
      out += sep;
    }
    for (int c = c1; c <= c2; ++c) {
      put_string(m.columns[at(c)].label);
      end_field(c);
    }
  }
  // A decimal comma is the general formatter's business.
  const bool fastAllowed = zelvy_data::data().idecimal != 1;
  std::vector<GridFastFormat> fast(at(c2 - c1 + 1));
  for (int c = c1; c <= c2; ++c) {
    const GridColumn& col = m.columns[at(c)];
    if (fastAllowed && (col.cellType == grid_type::kReal || col.cellType == grid_type::kDouble))
      fast[at(c - c1)] = yyGridFastFormat(col.effectiveFormat());
  }
  constexpr std::size_t kNumberField = 50;
  auto put_number = [&](const GridColumn& col, const GridFastFormat& f, double v) {
    if (col.cellType == grid_type::kReal) v = static_cast<float>(v);
    char buf[kGridNumberWidth + 8];
    std::size_t n = 0;
    if (yyGridFastNumber(f, v, buf, n)) out.append(buf, std::min(n, kNumberField));
    else out += yyGridNumberText(col, v).substr(0, kNumberField);
  };
  for (int r = r1; r <= r2; ++r) {
    if (o.labels && o.rowLabelBar) {
      put_string(m.rowLabels[at(r)]);
      out += sep;
    }
    for (int c = c1; c <= c2; ++c) {
      const GridColumn& col = m.columns[at(c)];
      const bool has = col.cellFlags[at(r)] & grid_cell::kHasValue;
      switch (col.cellType) {
        case grid_type::kString: put_string(col.strings[at(r)]); break;
        case grid_type::kInteger:
          if (has) append_integer(out, static_cast<long long>(col.numbers[at(r)]));
          else if (o.undefinedValues) append_integer(out, o.integerUndefined);
          break;
        case grid_type::kReal:
        case grid_type::kDouble:
          if (has) put_number(col, fast[at(c - c1)], col.numbers[at(r)]);
          else if (o.undefinedValues)
            put_number(col, fast[at(c - c1)], col.cellType == grid_type::kReal ? o.realUndefined : o.doubleUndefined);
          break;
        case grid_type::kCheckbox: out += has ? "Yes" : "No"; break;
        case grid_type::kCombo: {
          const int option = has ? static_cast<int>(col.numbers[at(r)]) : 1;
          if (option >= 1 && option <= static_cast<int>(col.options.size()))
            put_string(col.options[at(option - 1)]);
          break;
        }
        default: break;
      }
      end_field(c);
    }
    if (out.size() >= kChunk) {
      if (!sink(out)) return false;
      out.clear();
    }
  }
  return out.empty() || sink(out);
}
