// The value rules of grid cells: storage, text in and out, the clipboard form.
#include "toolkit/grid/grid_model.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "toolkit/base/format.h"

namespace {

std::string trimmed(std::string s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\0')) s.pop_back();
  const std::size_t lead = s.find_first_not_of(' ');
  return lead == std::string::npos ? std::string{} : s.substr(lead);
}

std::size_t at(int row) { return static_cast<std::size_t>(row); }

// An integer as the grid writes it: (I20), left-justified.
std::string integer_text(int value) {
  std::string text(21, ' ');
  yyint2st(value, text, "(I20)");
  return trimmed(text);
}

}  // namespace

const std::string& GridColumn::effectiveFormat() const {
  static const std::string fallback(kGridDefaultFormat);
  return format.empty() ? fallback : format;
}

void yyGridModelResize(GridModel& m, int rows) {
  rows = std::max(rows, 0);
  const std::size_t n = at(rows);
  for (GridColumn& c : m.columns) {
    c.cellFlags.resize(n, 0);
    if (c.cellType == grid_type::kString) {
      c.strings.resize(n);
      c.numbers.clear();
    } else {
      c.numbers.resize(n, 0.0);
      c.strings.clear();
    }
    if (!c.cellColours.empty()) c.cellColours.resize(n, GridColour{256, 256, 256, 256, 256, 256});
    // A column shrunk for good gives its memory back.
    if (c.cellFlags.capacity() > 2 * n + 16) {
      c.cellFlags.shrink_to_fit();
      c.numbers.shrink_to_fit();
      c.strings.shrink_to_fit();
    }
  }
  m.rowLabelFlags.resize(n, 0);
  m.rowLabels.resize(n);
  m.rows = rows;
}

void yyGridModelStoreNumber(GridColumn& c, int row, double number) {
  std::uint32_t& flag = c.cellFlags[at(row)];
  switch (c.cellType) {
    case grid_type::kString:
      c.strings[at(row)] = integer_text(static_cast<int>(number));
      flag |= grid_cell::kHasValue;
      break;
    case grid_type::kCheckbox:
      c.numbers[at(row)] = number != 0.0 ? 1.0 : 0.0;
      flag = number != 0.0 ? (flag | grid_cell::kHasValue) : (flag & ~grid_cell::kHasValue);
      break;
    case grid_type::kCombo:
      c.numbers[at(row)] = number;
      flag = number > 1.0 ? (flag | grid_cell::kHasValue) : (flag & ~grid_cell::kHasValue);
      break;
    default:
      c.numbers[at(row)] = c.cellType == grid_type::kInteger ? std::trunc(number) : number;
      flag |= grid_cell::kHasValue | grid_cell::kHadNumber;
      break;
  }
}

void yyGridModelStore(GridColumn& c, int row, std::string_view text, double number) {
  std::uint32_t& flag = c.cellFlags[at(row)];
  if (c.cellType == grid_type::kString) {
    std::string& s = c.strings[at(row)];
    s.assign(text);
    if (s.empty()) flag &= ~grid_cell::kHasValue;
    else flag |= grid_cell::kHasValue;
    return;
  }
  if (grid_type::numeric(c.cellType) && number == 0.0) {
    int valid = 0;
    double parsed = 0.0;
    const std::string t = trimmed(std::string(text));
    if (!t.empty()) yyst2dblcheck_(parsed, valid, t);
    if (!valid) {
      flag &= ~grid_cell::kHasValue;
      c.numbers[at(row)] = 0.0;
      return;
    }
    number = parsed;
  }
  yyGridModelStoreNumber(c, row, number);
}

void yyGridModelClear(GridColumn& c, int row) {
  c.cellFlags[at(row)] &= ~grid_cell::kHasValue;
  if (c.cellType == grid_type::kString) std::string().swap(c.strings[at(row)]);
  else c.numbers[at(row)] = c.cellType == grid_type::kCombo ? 1.0 : 0.0;
}

std::string yyGridNumberText(const GridColumn& c, double number, std::string_view format) {
  if (c.cellType == grid_type::kInteger || c.cellType == grid_type::kString) {
    std::string text(kGridNumberWidth + 1, ' ');
    yyint2st(static_cast<int>(number), text);
    return trimmed(text);
  }
  const std::string fmt = format.empty() ? c.effectiveFormat() : std::string(format);
  std::string text(kGridNumberWidth + 1, ' ');
  if (c.cellType == grid_type::kReal) yyrea2st(static_cast<float>(number), text, fmt);
  else yydbl2st(number, text, fmt);
  return trimmed(text);
}

std::string yyGridModelText(const GridColumn& c, int row) {
  const std::uint32_t flag = c.cellFlags[at(row)];
  switch (c.cellType) {
    case grid_type::kString: return c.strings[at(row)];
    case grid_type::kCheckbox: return (flag & grid_cell::kHasValue) ? "1" : "0";
    case grid_type::kCombo: return integer_text((flag & grid_cell::kHasValue) ? static_cast<int>(c.numbers[at(row)]) : 1);
    default: return (flag & grid_cell::kHasValue) ? yyGridNumberText(c, c.numbers[at(row)]) : std::string{};
  }
}

void yyGridModelNumber(const GridColumn& c, int row, double& number, bool& defined) {
  const std::uint32_t flag = c.cellFlags[at(row)];
  number = 0.0;
  defined = false;
  if (c.cellType == grid_type::kString) {
    const std::string& s = c.strings[at(row)];
    int valid = 0;
    if (!s.empty()) yyst2dblcheck_(number, valid, s);
    defined = valid != 0;
    if (!defined) number = 0.0;
    return;
  }
  defined = (flag & grid_cell::kHasValue) != 0;
  if (c.cellType == grid_type::kCombo) number = defined ? c.numbers[at(row)] : 1.0;
  else if (defined) number = c.numbers[at(row)];
  if (c.cellType == grid_type::kCheckbox || c.cellType == grid_type::kCombo) defined = true;
}

bool yyGridModelInRange(const GridColumn& c, double number) {
  return c.maximum < c.minimum || (number >= c.minimum && number <= c.maximum);
}

int yyGridModelMenuOption(const GridColumn& c, std::string_view text) {
  while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.remove_suffix(1);
  const auto hit = std::find(c.options.begin(), c.options.end(), text);
  return hit == c.options.end() ? 0 : static_cast<int>(hit - c.options.begin()) + 1;
}

std::string yyGridClipText(const GridModel& m, int c1, int r1, int c2, int r2) {
  std::string out;
  for (int r = r1; r <= r2; ++r) {
    for (int col = c1; col <= c2; ++col) {
      if (col > c1) out += '\t';
      const GridColumn& c = m.columns[static_cast<std::size_t>(col)];
      const bool has = c.cellFlags[at(r)] & grid_cell::kHasValue;
      switch (c.cellType) {
        case grid_type::kString: out += c.strings[at(r)]; break;
        case grid_type::kCheckbox: out += has ? "Yes" : "No"; break;
        case grid_type::kCombo: {
          const int option = has ? static_cast<int>(c.numbers[at(r)]) : 1;
          if (option >= 1 && option <= static_cast<int>(c.options.size())) out += c.options[static_cast<std::size_t>(option - 1)];
          break;
        }
        default:
          if (has) out += yyGridNumberText(c, c.numbers[at(r)]).substr(0, kGridNumberWidth);
          break;
      }
    }
    out += '\n';
  }
  return out;
}

void yyGridClipCount(std::string_view text, int& rows, int& columns) {
  rows = 1;
  columns = 1;
  int tabs = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\t') columns = std::max(columns, ++tabs + 1);
    if (text[i] == '\n') {
      tabs = 0;
      if (i + 1 < text.size() && text[i + 1] != '\0') ++rows;
    }
  }
}

namespace {

// One pasted item into a cell by the column's rules; an item that is no
// valid number empties a numeric cell.
void paste_item(GridColumn& c, int row, std::string item) {
  if (!item.empty() && item.back() == '\r') item.pop_back();
  switch (c.cellType) {
    case grid_type::kString:
      if (c.charLimit > 0 && static_cast<int>(item.size()) > c.charLimit) item.resize(static_cast<std::size_t>(c.charLimit));
      yyGridModelStore(c, row, item, 0.0);
      return;
    case grid_type::kCheckbox: yyGridModelStoreNumber(c, row, item == "Yes" ? 1.0 : 0.0); return;
    case grid_type::kCombo: {
      const auto hit = std::find(c.options.begin(), c.options.end(), item);
      yyGridModelStoreNumber(c, row, hit == c.options.end() ? 1.0 : static_cast<double>(hit - c.options.begin() + 1));
      return;
    }
    default: break;
  }
  std::string t = trimmed(item);
  if (c.cellType == grid_type::kInteger) {
    if (t.find_first_of("Ee") != std::string::npos) t.clear();
    t = t.substr(0, t.find('.'));
  } else if (c.cellType == grid_type::kReal) {
    std::replace(t.begin(), t.end(), 'D', 'E');
    std::replace(t.begin(), t.end(), 'd', 'E');
  }
  int valid = 0;
  double v = 0.0;
  if (!t.empty()) yyst2dblcheck_(v, valid, t);
  if (!valid || !yyGridModelInRange(c, v)) {
    yyGridModelClear(c, row);
    return;
  }
  yyGridModelStoreNumber(c, row, v);
}

}  // namespace

bool yyGridModelPaste(GridModel& m, int column, int row, std::string_view text, int& lastColumn, int& lastRow) {
  bool wrote = false;
  int col = column, r = row;
  std::size_t pos = 0;
  while (pos < text.size() && text[pos] != '\0' && (r < m.rows || col < m.columnCount())) {
    std::size_t end = text.find_first_of("\t\n", pos);
    if (end == std::string_view::npos) end = text.size();
    std::string item(text.substr(pos, std::min(end - pos, kGridPasteItem)));
    if (m.inside(col, r)) {
      GridColumn& c = m.columns[static_cast<std::size_t>(col)];
      if (!(c.cellFlags[at(r)] & grid_cell::kReadOnly)) {
        paste_item(c, r, std::move(item));
        lastColumn = std::max(wrote ? lastColumn : col, col);
        lastRow = r;
        wrote = true;
      }
    }
    if (end >= text.size()) break;
    if (text[end] == '\n') {
      ++r;
      col = column;
    } else {
      ++col;
    }
    pos = end + 1;
  }
  if (wrote) m.modified = m.changed = true;
  return wrote;
}
