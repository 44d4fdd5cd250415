// Sorting and finding on a grid's values.
#include "toolkit/grid/grid_commands.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

// Byte-wise, the shorter side padded with blanks: <0, 0, >0.
int compare_padded(std::string_view a, std::string_view b) {
  const std::size_t n = std::min(a.size(), b.size());
  if (n > 0) {
    if (const int c = std::memcmp(a.data(), b.data(), n)) return c < 0 ? -1 : 1;
  }
  // The longer side's tail against the blanks of the shorter.
  const bool aLonger = a.size() > b.size();
  for (const char ch : (aLonger ? a : b).substr(n)) {
    const auto u = static_cast<unsigned char>(ch);
    if (u != ' ') return (u > ' ') == aLonger ? 1 : -1;
  }
  return 0;
}

std::string upper(std::string_view s) {
  std::string out(s);
  for (char& ch : out) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
  return out;
}

// Every per-row array of a column, and the row labels, in the new order.
template <typename T>
void permute(std::vector<T>& v, const std::vector<int>& order, int first, std::vector<T>& scratch) {
  if (v.empty()) return;
  scratch.clear();
  scratch.reserve(order.size());
  for (int src : order) scratch.push_back(std::move(v[at(src)]));
  std::move(scratch.begin(), scratch.end(), v.begin() + first);
}

// Empty cells sort after all others: these keys stand for them.
constexpr std::string_view kEmptyAscending = "\xFF", kEmptyDescending = " ";

double empty_number(int cellType, bool descending) {
  double top = std::numeric_limits<double>::max();
  if (cellType == grid_type::kInteger) top = std::numeric_limits<int>::max();
  else if (cellType == grid_type::kReal) top = std::numeric_limits<float>::max();
  return descending ? -top : top;
}

}  // namespace

GridSortKey yygridgetany(const GridColumn& c, int row, int options) {
  GridSortKey key;
  const bool descending = options & grid_sort::kDescending;
  const bool has = c.cellFlags[at(row)] & grid_cell::kHasValue;
  switch (c.cellType) {
    case grid_type::kString: {
      const std::string& s = c.strings[at(row)];
      if (s.empty()) key.text = std::string(descending ? kEmptyDescending : kEmptyAscending);
      else key.text = (options & grid_sort::kIgnoreCase) ? upper(s) : s;
      break;
    }
    case grid_type::kCheckbox: key.number = has ? 1.0 : 0.0; break;
    case grid_type::kCombo: key.number = has ? c.numbers[at(row)] : 1.0; break;
    default: key.number = has ? c.numbers[at(row)] : empty_number(c.cellType, descending); break;
  }
  return key;
}

void yygridsort_(std::vector<int>& order, const std::vector<double>& keys, int first, bool descending) {
  // Key and row side by side: the sort reads no other memory, and the row
  // breaks ties, so equal keys keep their order.
  std::vector<std::pair<double, int>> rows(keys.size());
  for (std::size_t i = 0; i < keys.size(); ++i) rows[i] = {descending ? -keys[i] : keys[i], first + static_cast<int>(i)};
  std::sort(rows.begin(), rows.end());
  order.resize(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) order[i] = rows[i].second;
}

void yygridsort_(std::vector<int>& order, const std::vector<std::string_view>& keys, int first, bool descending) {
  // The first sixteen bytes, blank-padded, as two big-endian numbers decide
  // most comparisons without touching the texts.
  struct Row {
    std::uint64_t head1, head2;
    std::string_view tail;
    int row;
  };
  constexpr std::size_t kWord = 8, kHead = 2 * kWord;
  auto word = [](std::string_view k, std::size_t from) {
    std::uint64_t w = 0;
    for (std::size_t b = from; b < from + kWord; ++b)
      w = (w << 8) | (b < k.size() ? static_cast<unsigned char>(k[b]) : static_cast<unsigned char>(' '));
    return w;
  };
  std::vector<Row> rows(keys.size());
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const std::string_view k = keys[i];
    rows[i] = {word(k, 0), word(k, kWord), k.size() > kHead ? k.substr(kHead) : std::string_view{},
               first + static_cast<int>(i)};
  }
  std::sort(rows.begin(), rows.end(), [descending](const Row& a, const Row& b) {
    if (a.head1 != b.head1) return descending ? a.head1 > b.head1 : a.head1 < b.head1;
    if (a.head2 != b.head2) return descending ? a.head2 > b.head2 : a.head2 < b.head2;
    const int c = a.tail.empty() && b.tail.empty() ? 0 : compare_padded(a.tail, b.tail);
    if (c != 0) return descending ? c > 0 : c < 0;
    return a.row < b.row;
  });
  order.resize(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) order[i] = rows[i].row;
}

void yyGridModelSort(GridModel& m, int column, int options, int first, int last) {
  if (column < 0 || column >= m.columnCount()) return;
  first = std::max(first, 0);
  last = std::min(last, m.rows - 1);
  if (last <= first) return;
  const GridColumn& key = m.columns[at(column)];
  const bool descending = options & grid_sort::kDescending;
  const std::size_t n = at(last - first + 1);
  std::vector<int> order;
  if (key.cellType == grid_type::kString) {
    // Views of the cells themselves; only folded texts need keys of their own.
    std::vector<std::string> folded;
    std::vector<std::string_view> keys(n);
    if (options & grid_sort::kIgnoreCase) folded.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
      const int r = first + static_cast<int>(i);
      const std::string& s = key.strings[at(r)];
      if (s.empty()) {
        keys[i] = descending ? kEmptyDescending : kEmptyAscending;
      } else if (!folded.empty()) {
        folded[i] = yygridgetany(key, r, options).text;
        keys[i] = folded[i];
      } else {
        keys[i] = s;
      }
    }
    yygridsort_(order, keys, first, descending);
  } else {
    std::vector<double> keys(n);
    for (std::size_t i = 0; i < n; ++i) keys[i] = yygridgetany(key, first + static_cast<int>(i), options).number;
    yygridsort_(order, keys, first, descending);
  }
  std::vector<std::uint32_t> flags;
  std::vector<double> numbers;
  std::vector<std::string> strings;
  std::vector<GridColour> colours;
  for (GridColumn& c : m.columns) {
    permute(c.cellFlags, order, first, flags);
    permute(c.numbers, order, first, numbers);
    permute(c.strings, order, first, strings);
    permute(c.cellColours, order, first, colours);
  }
  if (options & grid_sort::kMoveLabels) {
    std::vector<std::uint8_t> labelFlags;
    permute(m.rowLabels, order, first, strings);
    permute(m.rowLabelFlags, order, first, labelFlags);
  }
  m.modified = m.changed = true;
}

void yyGridModelSwapRows(GridModel& m, int row1, int row2, bool labels) {
  if (!m.inside(0, row1) || !m.inside(0, row2) || row1 == row2) return;
  for (GridColumn& c : m.columns) {
    std::swap(c.cellFlags[at(row1)], c.cellFlags[at(row2)]);
    if (!c.numbers.empty()) std::swap(c.numbers[at(row1)], c.numbers[at(row2)]);
    if (!c.strings.empty()) std::swap(c.strings[at(row1)], c.strings[at(row2)]);
    if (!c.cellColours.empty()) std::swap(c.cellColours[at(row1)], c.cellColours[at(row2)]);
  }
  if (labels) {
    std::swap(m.rowLabels[at(row1)], m.rowLabels[at(row2)]);
    std::swap(m.rowLabelFlags[at(row1)], m.rowLabelFlags[at(row2)]);
  }
  m.modified = m.changed = true;
}

bool yyGridModelFind(const GridModel& m, std::string_view text, int options, int c1, int c2, int r1, int r2,
                     int& column, int& row) {
  c1 = std::max(c1, 0);
  r1 = std::max(r1, 0);
  c2 = std::min(c2, m.columnCount() - 1);
  r2 = std::min(r2, m.rows - 1);
  if (c2 < c1 || r2 < r1 || text.empty()) return false;
  const bool fold = options & grid_find::kIgnoreCase;
  const bool byRows = options & grid_find::kByRows;
  const std::string needle = fold ? upper(text) : std::string(text);
  const long long cols = c2 - c1 + 1, rows = r2 - r1 + 1, total = cols * rows;
  auto cell_of = [&](long long i, int& c, int& r) {
    c = static_cast<int>(byRows ? c1 + i % cols : c1 + i / rows);
    r = static_cast<int>(byRows ? r1 + i / cols : r1 + i % rows);
  };
  long long start = 0;
  if (options & grid_find::kFromCurrent) {
    const long long cc = std::clamp(column, c1 - 1, c2 + 1) - c1, rr = std::clamp(row, r1 - 1, r2 + 1) - r1;
    start = (byRows ? rr * cols + cc : cc * rows + rr) + 1;
    start = std::max(start, 0LL);
  }
  std::string cell;
  for (long long i = start; i < total; ++i) {
    int c = 0, r = 0;
    cell_of(i, c, r);
    const GridColumn& col = m.columns[at(c)];
    const bool searchable = col.cellType == grid_type::kString ||
                            ((options & grid_find::kNumbersToo) && grid_type::numeric(col.cellType));
    if (!searchable) {
      if (!byRows) i = (c - c1 + 1) * rows - 1;  // the whole column is skipped
      continue;
    }
    if (col.cellType == grid_type::kString) cell = col.strings[at(r)];
    else cell = yyGridModelText(col, r);
    if (fold) cell = upper(cell);
    if (cell.find(needle) != std::string::npos) {
      column = c;
      row = r;
      return true;
    }
  }
  return false;
}

namespace {

// A freed or new cell: no value, but the state and colours that were at that
// place stay, as they do for a cleared cell.
constexpr std::uint32_t kPlaceBits = grid_cell::kReadOnly | grid_cell::kOwnColours;

// Moves the per-row arrays of a column: erase [from, from + count) and append
// as many at the end (delete), or insert before `from` and drop from the end
// (insert); the places keep their state bits and colours.
void shift_column(GridColumn& c, int from, int count, int rows, bool insert) {
  const std::vector<std::uint32_t> oldFlags = c.cellFlags;
  const std::vector<GridColour> oldColours = c.cellColours;
  auto shift = [&](auto& v, auto blank) {
    if (v.empty()) return;
    const auto pos = v.begin() + from;
    if (insert) {
      v.insert(pos, at(count), blank);
      v.resize(at(rows));
    } else {
      v.erase(pos, pos + count);
      v.resize(at(rows), blank);
    }
  };
  const double none = c.cellType == grid_type::kCombo ? 1.0 : 0.0;
  shift(c.cellFlags, std::uint32_t{0});
  shift(c.numbers, none);
  shift(c.strings, std::string{});
  const int firstNew = insert ? from : rows - count;
  const int lastNew = insert ? std::min(from + count, rows) : rows;
  for (int r = std::max(firstNew, 0); r < lastNew; ++r) {
    if (at(r) < oldFlags.size()) c.cellFlags[at(r)] = oldFlags[at(r)] & kPlaceBits;
  }
  // Colours follow their cells like the values do; the places emptied keep theirs.
  if (!c.cellColours.empty()) {
    std::vector<GridColour> moved = oldColours;
    if (insert) {
      for (int r = rows - 1; r >= from + count; --r) moved[at(r)] = oldColours[at(r - count)];
    } else {
      for (int r = from; r + count < rows; ++r) moved[at(r)] = oldColours[at(r + count)];
    }
    c.cellColours = std::move(moved);
  }
}

void shift_labels(GridModel& m, int from, int count, bool insert) {
  auto shift = [&](auto& v, auto blank) {
    const std::size_t n = v.size();
    if (insert) {
      v.insert(v.begin() + from, at(count), blank);
    } else {
      v.erase(v.begin() + from, v.begin() + from + count);
    }
    v.resize(n, blank);
  };
  shift(m.rowLabels, std::string{});
  shift(m.rowLabelFlags, std::uint8_t{0});
}

}  // namespace

void yyGridModelDeleteRows(GridModel& m, int row, int count, bool shrink, bool labels) {
  if (row < 0 || row >= m.rows || count < 1) return;
  count = std::min(count, m.rows - row);
  for (GridColumn& c : m.columns) shift_column(c, row, count, m.rows, false);
  if (labels) shift_labels(m, row, count, false);
  for (int r = m.rows - count; r < m.rows; ++r) {
    m.rowLabels[at(r)].clear();
    m.rowLabelFlags[at(r)] = 0;
  }
  if (shrink) yyGridModelResize(m, std::max(1, m.rows - count));
  m.modified = m.changed = true;
}

void yyGridModelInsertRows(GridModel& m, int row, int count, bool grow, bool labels) {
  if (row < 0 || row >= m.rows || count < 1) return;
  if (grow) yyGridModelResize(m, std::max(m.rows, std::min(m.rows + count, m.maxRows)));
  count = std::min(count, m.rows - row);
  // The rows added by growing are the ones the shift fills, from the end.
  for (GridColumn& c : m.columns) shift_column(c, row, count, m.rows, true);
  if (labels) shift_labels(m, row, count, true);
  m.modified = m.changed = true;
}
