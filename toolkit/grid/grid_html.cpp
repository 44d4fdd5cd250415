// A grid as an HTML 4.01 table: the cells of a rectangle with their
// alignment and colours, as a document with a style sheet or as a piece to
// paste into another page with the styles inline.
#include "toolkit/grid/grid_output.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "toolkit/base/error.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/grid/grid_window_private.h"
#include "toolkit/kernel/message.h"

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

bool blank(std::string_view s) { return s.find_first_not_of(' ') == std::string_view::npos; }

std::string cell_text(const GridTableColumn& col, const GridTableCell& cell, int options) {
  using namespace grid_html;
  if (col.cellType == grid_type::kCheckbox) {
    if (options & kCheckTick) return cell.set ? "&#10003;" : std::string(kEmpty);
    if (options & kCheckYesNo) return cell.set ? "Y" : "N";
    return cell.set ? "&bull;" : std::string(kEmpty);
  }
  return cell.text.empty() ? std::string(kEmpty) : cell.text;
}

// The cell's colours as style declarations, background first.
std::string colour_style(const GridTableCell& cell) {
  std::string s;
  if (cell.background >= 0) s += "background-color:#" + hex_of(cell.background) + ';';
  if (cell.foreground >= 0) s += "color:#" + hex_of(cell.foreground) + ';';
  return s;
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
        if (cell.foreground < 0) cell.foreground = yyGridColourPacked(*src, GridColourSide::foreground);
        if (cell.background < 0) cell.background = yyGridColourPacked(*src, GridColourSide::background);
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
  const std::string titleText = title ? std::string(*title) : std::string();
  if (!fragment) {
    out.emplace_back("<!doctype html public \"-//w3c//dtd html 4.01//en\">");
    out.emplace_back("<html>");
    out.emplace_back("<head>");
    if (title) out.push_back("<title>" + titleText + "</title>");
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
  if (title && !blank(*title)) out.push_back("<h2>" + titleText + "</h2>");
  out.push_back(fragment ? "<table border=" + borderText + " cellpadding=" + kPadding +
                               " style=\"border-collapse: collapse;\">"
                         : "<table>");
  if (t.columnLabels) {
    out.emplace_back("<tr>");
    if (t.rowLabelBar) out.emplace_back("<td></td>");
    for (const GridTableColumn& c : t.columns)
      out.push_back(std::string(fragment ? "<th style=\"text-align:center;\">" : "<th>") +
                    (c.label.empty() ? std::string(kEmpty) : c.label) + "</th>");
    out.emplace_back("</tr>");
  }
  static constexpr const char* kClass[3] = {"cl", "cc", "cr"};
  static constexpr const char* kWord[3] = {"left", "center", "right"};
  for (std::size_t r = 0; r < t.rows.size(); ++r) {
    out.emplace_back("<tr>");
    if (t.rowLabelBar) {
      const std::string label = r < t.rowLabels.size() ? t.rowLabels[r] : std::string();
      out.push_back(std::string(fragment ? "<td style=\"text-align:left; font-weight: bold;\">" : "<td class=\"rl\">") +
                    (label.empty() ? std::string(kEmpty) : label) + "</td>");
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

namespace {

// Writes the HTML of a rectangle from 0; 0 or the error code.
int write_html(Widget grid, std::string_view filename, int c1, int r1, int c2, int r2, int options,
               std::optional<std::string_view> title, int border, std::optional<int> background) {
  const GridTable table = yyGridTableOf(grid, c1, r1, c2, r2);
  const auto lines = yyGridHtmlLines(table, options, title, border, background);
  std::FILE* f = std::fopen(std::string(filename).c_str(), "w");
  if (!f) return grid_html::kOpenError;
  bool ok = true;
  for (const std::string& line : lines)
    if (!(ok = yywrite(f, line))) break;
  if (std::fclose(f) != 0) ok = false;
  return ok ? 0 : grid_html::kWriteError;
}

// A rectangle from 1 with 0 or a missing end for the grid's edge; false when empty.
bool rectangle(const GridModel& m, std::optional<int> fc, std::optional<int> lc, std::optional<int> fr,
               std::optional<int> lr, int& c1, int& r1, int& c2, int& r2) {
  c1 = std::max(fc.value_or(1), 1) - 1;
  r1 = std::max(fr.value_or(1), 1) - 1;
  const int lastc = lc.value_or(0), lastr = lr.value_or(0);
  c2 = std::min(lastc > 0 ? lastc : m.columnCount(), m.columnCount()) - 1;
  r2 = std::min(lastr > 0 ? lastr : m.rows, m.rows) - 1;
  return c1 <= c2 && r1 <= r2;
}

}  // namespace

void WGridSaveHTML(int fieldid, std::string_view filename, std::optional<int> firstColumn,
                   std::optional<int> lastColumn, std::optional<int> firstRow, std::optional<int> lastRow,
                   std::optional<int> options, std::optional<std::string_view> title, std::optional<int> border,
                   std::optional<int> background) {
  constexpr const char* kRoutine = "WGridSaveHTML";
  int error = 0;
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return yyerror(error, kRoutine);
  int c1 = 0, r1 = 0, c2 = 0, r2 = 0;
  if (!rectangle(yyGridPart(grid).st->model, firstColumn, lastColumn, firstRow, lastRow, c1, r1, c2, r2))
    return yyerror(kBadCell, kRoutine);
  const int code = write_html(grid, filename, c1, r1, c2, r2, options.value_or(0), title, border.value_or(0),
                              background);
  if (code != 0) yyerror(code, kRoutine);
}

// ---- Save As HTML of a grid window --------------------------------------------------------

namespace {

constexpr int kHtmlDialog = 32114;
namespace field {
constexpr int kFile = 1002, kBrowse = 1003, kTitle = 1005, kFragment = 1006, kCentre = 1007, kNoColours = 1008,
              kCheckBullet = 1010, kCheckYesNo = 1011, kCheckTick = 1012, kBorder = 1014;
}
constexpr int kOkButton = 1, kCancelButton = 2;
constexpr int kButtonsOk = 0, kButtonsYesNo = 3, kIconError = 1, kIconQuestion = 2, kAnswerYes = 6;

// What the dialog showed last, for the next time.
struct HtmlChoices {
  bool started = false;
  std::string title;
  int options = 0;
  int border = 1;
};
HtmlChoices& choices() {
  static HtmlChoices c;
  return c;
}

void tell(std::string_view text, std::string_view title) { yyComdlgAsk(kButtonsOk, kIconError, 1, text, title); }

// The name with its extension (if any) replaced by ".htm".
std::string html_name(std::string_view name) {
  if (name.empty()) return {};
  std::filesystem::path p{std::string(name)};
  p.replace_extension(".htm");
  return p.string();
}

// The error state as it was before a step that may fail on its own.
struct KeepError {
  int kept = zelvy_data::data().ierr;
  ~KeepError() { zelvy_data::data().ierr = kept; }
};

// Runs the dialog until a usable name is chosen; false when cancelled.
bool run_html_dialog(std::string& name) {
  HtmlChoices& c = choices();
  WDialogPutString(field::kFile, name);
  WDialogPutString(field::kTitle, c.title);
  WDialogPutCheckBox(field::kFragment, (c.options & grid_html::kFragment) ? 1 : 0);
  WDialogPutCheckBox(field::kCentre, (c.options & grid_html::kCentre) ? 1 : 0);
  WDialogPutCheckBox(field::kNoColours, (c.options & grid_html::kNoColours) ? 1 : 0);
  WDialogPutRadioButton((c.options & grid_html::kCheckTick)    ? field::kCheckTick
                        : (c.options & grid_html::kCheckYesNo) ? field::kCheckYesNo
                                                               : field::kCheckBullet);
  WDialogRangeInteger(field::kBorder, 0, 100);
  WDialogPutInteger(field::kBorder, c.border);
  wdialogshowcommon(field::kFile, 3, 0);
  int type = 0;
  MessageRecord m;
  for (;;) {
    WMessage(type, m);
    if (m.Win != kHtmlDialog) continue;
    WDialogSelect(kHtmlDialog);
    if (type == CloseRequest || (type == PushButton && m.Value1 == kCancelButton)) return false;
    if (type != PushButton) continue;
    if (m.Value1 == field::kBrowse) {
      std::string current;
      WDialogGetString(field::kFile, current);
      constexpr int kSaveFlags = 2;
      const auto chosen = yyComdlgChooseFile("HTML Files|*.htm;*.html|All Files|*.*|", kSaveFlags, current,
                                             "Select File");
      WDialogSelect(kHtmlDialog);
      if (chosen) WDialogPutString(field::kFile, *chosen);
      continue;
    }
    if (m.Value1 != kOkButton) continue;
    WDialogGetString(field::kFile, name);
    while (!name.empty() && name.back() == ' ') name.pop_back();
    if (name.empty()) {
      tell("Filename required", "Save As HTML");
      WDialogSelect(kHtmlDialog);
      continue;
    }
    std::error_code ec;
    if (std::filesystem::exists(name, ec) &&
        yyComdlgAsk(kButtonsYesNo, kIconQuestion, 2,
                    "File already exists:\r" + name + "\r\rDo you want to replace it?", "Save As HTML") != kAnswerYes) {
      WDialogSelect(kHtmlDialog);
      continue;
    }
    break;
  }
  WDialogGetString(field::kTitle, c.title);
  int fragment = 0, centre = 0, noColours = 0, check = 1;
  WDialogGetCheckBox(field::kFragment, fragment);
  WDialogGetCheckBox(field::kCentre, centre);
  WDialogGetCheckBox(field::kNoColours, noColours);
  WDialogGetRadioButton(field::kCheckBullet, check);
  WDialogGetInteger(field::kBorder, c.border);
  c.border = std::max(c.border, 0);
  c.options = (fragment ? grid_html::kFragment : 0) | (centre ? grid_html::kCentre : 0) |
              (noColours ? grid_html::kNoColours : 0) |
              (check == 2 ? grid_html::kCheckYesNo : check == 3 ? grid_html::kCheckTick : 0);
  return true;
}

}  // namespace

void yygridwinsavehtml_(int window, int firstColumn, int firstRow, int lastColumn, int lastRow, int& ok,
                        int options, std::string_view filename) {
  ok = 0;
  GridWindowData* w = yyGridWindowData(window);
  Widget grid = yyGridWindowGridOf(window);
  if (!w || !grid) return;
  HtmlChoices& c = choices();
  if (!c.started) {
    c.started = true;
    c.options = options;
  }
  std::string name = filename.empty() ? html_name(w->fileName) : std::string(filename);
  auto& zd = zelvy_data::data();
  const int previous = zd.icurdialog;
  {
    KeepError kept;
    zd.ierr = 0;
    WDialogLoad(kHtmlDialog);
    if (zd.ierr != 0 || zd.icurdialog != kHtmlDialog) {
      tell("Unable to load grid save HTML dialog", "Error");
      return;
    }
  }
  const bool chosen = run_html_dialog(name);
  WDialogUnload();
  if (previous != 0) {
    KeepError kept;
    WDialogSelect(previous);
  }
  if (!chosen) return;

  std::error_code ec;
  if ((w->options & grid_window::kBackup) && std::filesystem::exists(name, ec))
    std::filesystem::copy_file(name, name + ".bak", std::filesystem::copy_options::overwrite_existing, ec);
  int c1 = 0, r1 = 0, c2 = 0, r2 = 0;
  const GridModel& m = yyGridPart(grid).st->model;
  if (!rectangle(m, firstColumn, lastColumn, firstRow, lastRow, c1, r1, c2, r2)) return;
  const std::optional<std::string_view> title =
      c.title.empty() ? std::nullopt : std::optional<std::string_view>(c.title);
  switch (write_html(grid, name, c1, r1, c2, r2, c.options, title, c.border, std::nullopt)) {
    case 0: ok = 1; break;
    case grid_html::kOpenError: tell("Error opening file", "File Error"); break;
    default: tell("Error writing file", "File Error"); break;
  }
}
