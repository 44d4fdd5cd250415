// Comma- and tab-separated grid files against the grid's values.
#include "toolkit/grid/grid_csv.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include "toolkit/base/format.h"

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
      const auto hit = std::find(c.options.begin(), c.options.end(), t);
      if (hit == c.options.end()) {
        yyGridModelClear(c, row);
        return kNoOption;
      }
      yyGridModelStoreNumber(c, row, static_cast<double>(hit - c.options.begin() + 1));
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

void yyGridSplitFields(std::string_view text, char separator,
                       const std::function<void(std::string_view field, bool endOfLine)>& field) {
  const bool quotes = separator == ',';
  const char* p = text.data();
  const char* const end = p + text.size();
  const char* start = p;
  bool open = false;  // inside an odd number of quotes
  auto emit = [&](const char* stop, bool eol) {
    std::string_view f(start, static_cast<std::size_t>(stop - start));
    if (!f.empty() && f.back() == '\r') f.remove_suffix(1);
    field(f, eol);
  };
  for (; p < end; ++p) {
    const char ch = *p;
    if (quotes && ch == kQuote) {
      open = !open;
    } else if (!open && (ch == separator || ch == '\n')) {
      emit(p, ch == '\n');
      start = p + 1;
    }
  }
  if (start < end) emit(end, true);
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
        value = yycompressquotes(raw);
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
  std::string out;
  if (c2 < c1 || r2 < r1) return out;
  out.reserve(at(r2 - r1 + 1) * at(c2 - c1 + 1) * 12);
  const char sep = o.separator;
  const bool quote = sep == ',' && !o.noQuotes;
  auto put_string = [&](std::string_view s) {
    if (quote) {
      out += kQuote;
      out += yyexpandquotes(s);
      out += kQuote;
    } else if (sep == '\t') {
      // A tab-separated file has no quotes: a tab or line end inside a cell
      // would split it, so it goes out as a blank.
      for (char ch : s) out += (ch == '\t' || ch == '\n' || ch == '\r') ? ' ' : ch;
    } else {
      out += s;
    }
  };
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
          if (has) out += yyGridNumberText(col, col.numbers[at(r)]).substr(0, 50);
          else if (o.undefinedValues)
            out += yyGridNumberText(col, col.cellType == grid_type::kReal ? o.realUndefined : o.doubleUndefined)
                       .substr(0, 50);
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
  }
  return out;
}
