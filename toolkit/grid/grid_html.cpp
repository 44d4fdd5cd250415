// A grid as an HTML 4.01 table: the cells of a rectangle with their
// alignment and colours, as a document with a style sheet or as a piece to
// paste into another page with the styles inline.
#include "toolkit/grid/grid_output.h"

#include <algorithm>
#include <cstdio>

#include "toolkit/base/error.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_private.h"

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }

constexpr int kBadCell = 1007;
constexpr const char* kPadding = "5";
constexpr std::string_view kEmpty = "&nbsp;";
// Style bits of a text field's alignment.
constexpr std::uint32_t kStyleCentre = 0x1, kStyleRight = 0x2;

// Six lower-case hex digits of red + 256 green + 65536 blue.
std::string hex_of(int colour) {
  char b[8];
  std::snprintf(b, sizeof b, "%02x%02x%02x", colour & 0xFF, (colour >> 8) & 0xFF, (colour >> 16) & 0xFF);
  return b;
}

// Cell text may hold markup characters of its own; they must stay text.
std::string escaped(std::string_view s) {
  std::string out;
  out.reserve(s.size());
  for (const char c : s) {
    switch (c) {
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '&': out += "&amp;"; break;
      case '"': out += "&quot;"; break;
      default: out.push_back(c);
    }
  }
  return out;
}

bool blank(std::string_view s) { return s.find_first_not_of(' ') == std::string_view::npos; }

std::string cell_text(const GridTableColumn& col, const GridTableCell& cell, int options) {
  using namespace grid_html;
  if (col.cellType == grid_type::kCheckbox) {
    if (options & kCheckTick) return cell.set ? "&#10003;" : std::string(kEmpty);
    if (options & kCheckYesNo) return cell.set ? "Y" : "N";
    return cell.set ? "&bull;" : std::string(kEmpty);
  }
  return cell.text.empty() ? std::string(kEmpty) : escaped(cell.text);
}

// The cell's colours as style declarations, background first.
std::string colour_style(const GridTableCell& cell) {
  std::string s;
  if (cell.background >= 0) s += "background-color:#" + hex_of(cell.background) + ';';
  if (cell.foreground >= 0) s += "color:#" + hex_of(cell.foreground) + ';';
  return s;
}

// Red + 256 green + 65536 blue from a colour of the model, -1 for the scheme's.
int packed(int r, int g, int b) {
  if (r < 0 || r > 255) return -1;
  return r + 256 * g + 65536 * b;
}

}  // namespace

// The alignment of a column's cells: 0 left, 1 centre, 2 right.
int yygridgetalign_(int cellType, std::uint32_t style) {
  if (grid_type::textual(cellType)) {
    if (style & kStyleRight) return 2;
    if (style & kStyleCentre) return 1;
    return 0;
  }
  return cellType == grid_type::kCheckbox ? 1 : 0;
}

GridTable yyGridTableOf(_WidgetRec* grid, int c1, int r1, int c2, int r2) {
  const GridPart& g = yyGridPart(grid);
  const GridState& s = *g.st;
  const GridModel& m = s.model;
  GridTable t;
  t.columnLabels = g.colLabel;
  t.rowLabelBar = g.rowLabel;
  t.lineColour = s.lineColour;
  t.fontIndex = s.fontIndex;
  t.rowLabelChars = g.rowWidth;
  const int charWidth = std::max(1, yyDialogFontMetrics(s.fontIndex).charWidth);
  for (int c = c1; c <= c2; ++c) {
    const GridColumn& mc = m.columns[at(c)];
    GridTableColumn col;
    col.label = mc.label;
    col.cellType = mc.cellType;
    const std::uint32_t style = at(c) < s.views.size() ? s.views[at(c)].templateField.style : 0;
    col.align = yygridgetalign_(col.cellType, style);
    col.widthChars = std::max(1, mc.width / charWidth);
    t.columns.push_back(col);
  }
  for (int r = r1; r <= r2; ++r) {
    t.rowLabels.push_back(at(r) < m.rowLabels.size() ? m.rowLabels[at(r)] : std::string());
    std::vector<GridTableCell> row;
    for (int c = c1; c <= c2; ++c) {
      const GridColumn& mc = m.columns[at(c)];
      GridTableCell cell;
      const bool has = mc.cellFlags[at(r)] & grid_cell::kHasValue;
      if (mc.cellType == grid_type::kCheckbox) {
        cell.set = has;
      } else if (mc.cellType == grid_type::kCombo) {
        const int option = has ? static_cast<int>(mc.numbers[at(r)]) : 1;
        if (option >= 1 && option <= static_cast<int>(mc.options.size())) cell.text = mc.options[at(option - 1)];
      } else {
        cell.text = yyGridModelText(mc, r);
      }
      // The cell's own colours, else its column's, else the grid's.
      const GridColour* sources[3] = {
          (mc.cellFlags[at(r)] & grid_cell::kOwnColours) && !mc.cellColours.empty() ? &mc.cellColours[at(r)] : nullptr,
          mc.columnColour ? &*mc.columnColour : nullptr, s.gridColour ? &*s.gridColour : nullptr};
      for (const GridColour* src : sources) {
        if (!src) continue;
        if (cell.foreground < 0) cell.foreground = packed((*src)[0], (*src)[1], (*src)[2]);
        if (cell.background < 0) cell.background = packed((*src)[3], (*src)[4], (*src)[5]);
      }
      row.push_back(std::move(cell));
    }
    t.rows.push_back(std::move(row));
  }
  return t;
}

std::vector<std::string> yyGridHtmlLines(const GridTable& t, int options, std::optional<std::string_view> title,
                                         int border, std::optional<int> background) {
  using namespace grid_html;
  std::vector<std::string> out;
  const bool fragment = options & kFragment;
  const std::string borderText = std::to_string(std::max(border, 0));
  const std::string borderColour = (options & kNoColours) ? "000000" : hex_of(t.lineColour);
  const std::string safeTitle = title ? escaped(*title) : std::string();
  if (!fragment) {
    out.emplace_back("<!doctype html public \"-//w3c//dtd html 4.01//en\">");
    out.emplace_back("<html>");
    out.emplace_back("<head>");
    if (title) out.push_back("<title>" + safeTitle + "</title>");
    out.emplace_back("<style>");
    if (background) out.push_back("body {background-color:#" + hex_of(*background) + ";}");
    out.push_back("table, table td, table th {border-style:solid; border-width:" + borderText + "px; border-color:#" +
                  borderColour + "; padding: " + kPadding + "px; " +
                  ((options & kCentre) ? "margin-left:auto; margin-right:auto; " : "") + "border-collapse: collapse;}");
    out.emplace_back("table th {text-align:center; font-weight: bold;}");
    out.emplace_back(".rl {text-align:left; font-weight: bold;}");
    out.emplace_back(".cl {text-align:left;}");
    out.emplace_back(".cc {text-align:center;}");
    out.emplace_back(".cr {text-align:right;}");
    out.emplace_back("</style>");
    out.emplace_back("</head>");
    out.emplace_back("<body>");
  } else if (options & kCentre) {
    out.emplace_back("<center>");
  }
  if (title && !blank(*title)) out.push_back("<h2>" + safeTitle + "</h2>");
  out.push_back(fragment ? "<table border=" + borderText + " cellpadding=" + kPadding +
                               " style=\"border-collapse: collapse;\">"
                         : "<table>");
  if (t.columnLabels) {
    out.emplace_back("<tr>");
    if (t.rowLabelBar) out.emplace_back("<td></td>");
    for (const GridTableColumn& c : t.columns)
      out.push_back(std::string(fragment ? "<th style=\"text-align:center;\">" : "<th>") +
                    (c.label.empty() ? std::string(kEmpty) : escaped(c.label)) + "</th>");
    out.emplace_back("</tr>");
  }
  static constexpr const char* kClass[3] = {"cl", "cc", "cr"};
  static constexpr const char* kWord[3] = {"left", "center", "right"};
  for (std::size_t r = 0; r < t.rows.size(); ++r) {
    out.emplace_back("<tr>");
    if (t.rowLabelBar) {
      const std::string& label = t.rowLabels[r];
      out.push_back(std::string(fragment ? "<td style=\"text-align:left; font-weight: bold;\">" : "<td class=\"rl\">") +
                    (label.empty() ? std::string(kEmpty) : escaped(label)) + "</td>");
    }
    for (std::size_t c = 0; c < t.columns.size(); ++c) {
      const GridTableColumn& col = t.columns[c];
      const GridTableCell& cell = t.rows[r][c];
      const int a = std::clamp(col.align, 0, 2);
      const std::string colours = (options & kNoColours) ? std::string() : colour_style(cell);
      std::string line;
      if (fragment) {
        line = std::string("<td style=\"text-align:") + kWord[a] + ';' + colours + '"';
      } else {
        line = std::string("<td class=\"") + kClass[a] + '"';
        if (!colours.empty()) line += " style=\"" + colours + '"';
      }
      line += '>' + cell_text(col, cell, options) + "</td>";
      out.push_back(std::move(line));
    }
    out.emplace_back("</tr>");
  }
  out.emplace_back("</table>");
  if (!fragment) {
    out.emplace_back("</body>");
    out.emplace_back("</html>");
  }
  return out;
}

// One line of a text file; false when it couldn't be written.
bool yywrite(std::FILE* f, std::string_view line) {
  return std::fwrite(line.data(), 1, line.size(), f) == line.size() && std::fputc('\n', f) != EOF;
}

void WGridSaveHTML(int fieldid, std::string_view filename, std::optional<int> firstColumn,
                   std::optional<int> lastColumn, std::optional<int> firstRow, std::optional<int> lastRow,
                   std::optional<int> options, std::optional<std::string_view> title, std::optional<int> border,
                   std::optional<int> background) {
  constexpr const char* kRoutine = "WGridSaveHTML";
  int error = 0;
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return yyerror(error, kRoutine);
  const GridModel& m = yyGridPart(grid).st->model;
  const int c1 = firstColumn.value_or(1) - 1, r1 = firstRow.value_or(1) - 1;
  const int c2 = std::min(lastColumn.value_or(m.columnCount()), m.columnCount()) - 1;
  const int r2 = std::min(lastRow.value_or(m.rows), m.rows) - 1;
  if (c1 < 0 || r1 < 0 || c1 > c2 || r1 > r2) return yyerror(kBadCell, kRoutine);
  const GridTable table = yyGridTableOf(grid, c1, r1, c2, r2);
  const auto lines = yyGridHtmlLines(table, options.value_or(0), title, border.value_or(0), background);
  std::FILE* f = std::fopen(std::string(filename).c_str(), "w");
  if (!f) return yyerror(grid_html::kOpenError, kRoutine);
  bool ok = true;
  for (const std::string& line : lines)
    if (!(ok = yywrite(f, line))) break;
  if (std::fclose(f) != 0) ok = false;
  if (!ok) yyerror(grid_html::kWriteError, kRoutine);
}
