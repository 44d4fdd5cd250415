// Sorting and finding on a grid's values.
#include "toolkit/grid/grid_commands.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

// Byte-wise, the shorter side padded with blanks: <0, 0, >0.
int compare_padded(std::string_view a, std::string_view b) {
  const std::size_t n = std::max(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    const auto ca = static_cast<unsigned char>(i < a.size() ? a[i] : ' ');
    const auto cb = static_cast<unsigned char>(i < b.size() ? b[i] : ' ');
    if (ca != cb) return ca < cb ? -1 : 1;
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
void permute(std::vector<T>& v, const std::vector<int>& order, int first) {
  if (v.empty()) return;
  std::vector<T> moved;
  moved.reserve(order.size());
  for (int src : order) moved.push_back(std::move(v[at(src)]));
  std::move(moved.begin(), moved.end(), v.begin() + first);
}

}  // namespace

void yyGridModelSort(GridModel& m, int column, int options, int first, int last) {
  if (column < 0 || column >= m.columnCount()) return;
  first = std::max(first, 0);
  last = std::min(last, m.rows - 1);
  if (last <= first) return;
  const GridColumn& key = m.columns[at(column)];
  const bool descending = options & grid_sort::kDescending;
  const bool fold = options & grid_sort::kIgnoreCase;
  const int n = last - first + 1;
  std::vector<int> order(at(n));
  std::iota(order.begin(), order.end(), first);
  auto empty = [&](int r) {
    if (key.cellType == grid_type::kCheckbox || key.cellType == grid_type::kCombo) return false;
    if (key.cellType == grid_type::kString) return key.strings[at(r)].empty();
    return !(key.cellFlags[at(r)] & grid_cell::kHasValue);
  };
  // Check boxes and combos sort by their state and option.
  auto number = [&](int r) {
    const bool has = key.cellFlags[at(r)] & grid_cell::kHasValue;
    if (key.cellType == grid_type::kCheckbox) return has ? 1.0 : 0.0;
    if (key.cellType == grid_type::kCombo) return has ? key.numbers[at(r)] : 1.0;
    return key.numbers[at(r)];
  };
  if (key.cellType == grid_type::kString) {
    std::vector<std::string> folded;
    if (fold) {
      folded.resize(at(n));
      for (int i = 0; i < n; ++i) folded[at(i)] = upper(key.strings[at(first + i)]);
    }
    auto text = [&](int r) -> std::string_view {
      return fold ? std::string_view(folded[at(r - first)]) : std::string_view(key.strings[at(r)]);
    };
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
      const bool ea = empty(a), eb = empty(b);
      if (ea || eb) return !ea && eb;
      const int c = compare_padded(text(a), text(b));
      return descending ? c > 0 : c < 0;
    });
  } else {
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
      const bool ea = empty(a), eb = empty(b);
      if (ea || eb) return !ea && eb;
      return descending ? number(a) > number(b) : number(a) < number(b);
    });
  }
  for (GridColumn& c : m.columns) {
    permute(c.cellFlags, order, first);
    permute(c.numbers, order, first);
    permute(c.strings, order, first);
    permute(c.cellColours, order, first);
  }
  if (options & grid_sort::kMoveLabels) {
    permute(m.rowLabels, order, first);
    permute(m.rowLabelFlags, order, first);
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
