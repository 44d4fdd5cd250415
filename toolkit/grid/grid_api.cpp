// The grid routines of the application and the layer beneath them: checks of
// field, column and row, then the storage and the widget.
#include <algorithm>
#include <cctype>
#include <string>

#include <X11/IntrinsicP.h>

#include "toolkit/base/error.h"
#include "toolkit/base/format.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/grid_attach.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_commands.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/grid/grid_window_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/window_private.h"
#include "toolkit/kernel/message_private.h"
#include "toolkit/kernel/message.h"

using namespace zelvy_dialog;

namespace {

constexpr int kNoDialog = 1005, kNotGrid = 1006, kOutOfRange = 1009, kBadCell = 1017, kTooLarge = 1018;
constexpr int kTypeMismatch = 1111, kBadRows = 1113, kNoOption = 1055;

std::size_t at(int i) { return static_cast<std::size_t>(i); }

// The grid, column and row checked; `error` 0 or the code.
Widget checked(int fieldid, int column, int row, int& error) {
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return nullptr;
  const GridState& s = *yyGridPart(grid).st;
  if (column < 0 || column >= s.model.columnCount() || row < 0 || row >= s.model.rows) {
    error = kBadCell;
    return nullptr;
  }
  return grid;
}

Widget checked_column(int fieldid, int column, int& error) {
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return nullptr;
  if (column < 0 || column >= yyGridPart(grid).st->model.columnCount()) {
    error = kBadCell;
    return nullptr;
  }
  return grid;
}

GridColumn& column_of(Widget grid, int column) { return yyGridPart(grid).st->model.columns[at(column)]; }

void report(int error, const char* routine) {
  if (error) yyerror(error, routine);
}

std::string trim_right(std::string_view t) {
  while (!t.empty() && (t.back() == ' ' || t.back() == '\0')) t.remove_suffix(1);
  return std::string(t);
}

// A number into a cell of a text column: a string column takes its text.
void put_number(int fieldid, int column, int row, double value, std::optional<std::string_view> format,
                const char* routine) {
  int error = 0;
  Widget grid = checked(fieldid, column - 1, row - 1, error);
  if (!grid) return report(error, routine);
  GridColumn& c = column_of(grid, column - 1);
  if (!grid_type::textual(c.cellType)) return report(kTypeMismatch, routine);
  if (!yyGridModelInRange(c, value)) return report(kOutOfRange, routine);
  yyGridWidgetSetNumberX(grid, column - 1, row - 1, value, format.value_or(std::string_view{}));
}

}  // namespace

Widget yyGridFind(int fieldid, int& error) {
  error = 0;
  if (fieldid == 0) {
    Widget grid = yyGridWindowGrid();
    if (!grid) error = kNotGrid;
    return grid;
  }
  if (zelvy_data::data().icurdialog == 0 || state().iDlgCur < 0 ||
      state().wDialogInfo[at(state().iDlgCur)].identifier == -1) {
    error = kNoDialog;
    return nullptr;
  }
  const int fi = yyDialogFindField(fieldid, state().iDlgCur);
  if (fi < 0) {
    error = kNotGrid;
    return nullptr;
  }
  Widget grid = yyGridOfField(state().wDialogInfo[at(state().iDlgCur)].fields[at(fi)]);
  if (!grid) error = kNotGrid;
  return grid;
}

void yyGridAttach() {
  LoopHooks loop;
  loop.gridMessage = yyGridProcessMessage;
  yyAttachLoopHooks(loop);
  GridFieldHooks hooks;
  hooks.create = yyDialogGrid;
  hooks.colour = [](FieldRecord& f, int fieldState) {
    if (Widget grid = yyGridOfField(f)) yyGridColour(grid, fieldState);
  };
  hooks.focus = [](FieldRecord& f) {
    Widget grid = yyGridOfField(f);
    if (!grid) return;
    const GridPart& g = yyGridPart(grid);
    yyGridWidgetSetCellFocusX(grid, std::max(0, g.icol), std::max(0, g.irow), -1);
  };
  yyAttachGridField(hooks);
}

// ---- Public routines --------------------------------------------------------------

void WGridPutCellString(int fieldid, int column, int row, std::string_view text) {
  int error = 0;
  Widget grid = checked(fieldid, column - 1, row - 1, error);
  if (!grid) return report(error, "WGridPutCellString");
  const GridColumn& c = column_of(grid, column - 1);
  if (!grid_type::textual(c.cellType)) return report(kTypeMismatch, "WGridPutCellString");
  std::string t = trim_right(text);
  if (c.cellType == grid_type::kString && c.caseMode != 0)
    for (char& ch : t)
      ch = static_cast<char>(c.caseMode == 1 ? std::toupper(static_cast<unsigned char>(ch))
                                             : std::tolower(static_cast<unsigned char>(ch)));
  yygridputcellstring_(fieldid, column - 1, row - 1, 0.0, t, grid_type::numeric(c.cellType) ? c.format : "", error);
  report(error, "WGridPutCellString");
}

void WGridGetCellString(int fieldid, int column, int row, std::string& text) {
  int error = 0;
  yygridgetcellstring_(fieldid, column - 1, row - 1, text, error);
  report(error, "WGridGetCellString");
}

void WGridPutCellInteger(int fieldid, int column, int row, int value) {
  put_number(fieldid, column, row, value, {}, "WGridPutCellInteger");
}

void WGridPutCellReal(int fieldid, int column, int row, float value, std::optional<std::string_view> format) {
  put_number(fieldid, column, row, value, format, "WGridPutCellReal");
}

void WGridPutCellDouble(int fieldid, int column, int row, double value, std::optional<std::string_view> format) {
  put_number(fieldid, column, row, value, format, "WGridPutCellDouble");
}

void WGridRows(int fieldid, int rows) {
  int error = 0;
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return report(error, "WGridRows");
  if (rows < 1) return report(kBadRows, "WGridRows");
  const int limit = yyGridPart(grid).maxNrow;
  yygridrows_(fieldid, std::min(rows, limit), error);
  report(rows > limit ? kTooLarge : error, "WGridRows");
}

void WGridLabelRow(int fieldid, int row, std::string_view text) {
  int error = 0;
  yygridlabelrow_(fieldid, row - 1, text, error);
  report(error, "WGridLabelRow");
}

void WGridStateCell(int fieldid, int column, int row, int state) {
  int error = 0;
  yygridstatecell_(fieldid, column - 1, row - 1, state, error);
  report(error, "WGridStateCell");
}

// ---- The layer below ----------------------------------------------------------------

void yygridputcellstring_(int fieldid, int column, int row, double number, std::string_view text,
                          std::string_view format, int& error) {
  Widget grid = checked(fieldid, column, row, error);
  if (!grid) return;
  GridState& s = *yyGridPart(grid).st;
  yyGridWidgetSetSingleCellDataX(number, grid, column, row, text, format, false);
  s.model.modified = s.model.changed = true;
}

void yygridgetcellstring_(int fieldid, int column, int row, std::string& text, int& error) {
  text.clear();
  Widget grid = checked(fieldid, column, row, error);
  if (!grid) return;
  const GridColumn& c = column_of(grid, column);
  if (!grid_type::textual(c.cellType)) {
    error = kTypeMismatch;
    return;
  }
  double number = 0.0;
  bool defined = false;
  yyGridWidgetGetSingleCellDataX(grid, column, row, false, text, number, defined);
}

void yygridgetcellnumeric_(int fieldid, int column, int row, double& number, int& undefined, int& error) {
  number = 0.0;
  undefined = 1;
  Widget grid = checked(fieldid, column, row, error);
  if (!grid) return;
  bool defined = false;
  std::string text;
  yyGridWidgetGetSingleCellDataX(grid, column, row, true, text, number, defined);
  undefined = defined ? 0 : 1;
}

void yygridgetcellcheckbox_(int fieldid, int column, int row, int& state, int& error) {
  state = 0;
  Widget grid = checked(fieldid, column, row, error);
  if (!grid) return;
  const GridColumn& c = column_of(grid, column);
  if (c.cellType != grid_type::kCheckbox) {
    error = kTypeMismatch;
    return;
  }
  state = (c.cellFlags[at(row)] & grid_cell::kHasValue) ? 1 : 0;
}

void yygridgetcellmenu_(int fieldid, int column, int row, int& option, int& error) {
  option = 1;
  Widget grid = checked(fieldid, column, row, error);
  if (!grid) return;
  const GridColumn& c = column_of(grid, column);
  if (c.cellType != grid_type::kCombo) {
    error = kTypeMismatch;
    return;
  }
  if (c.cellFlags[at(row)] & grid_cell::kHasValue) option = static_cast<int>(c.numbers[at(row)]);
}

void yygridgetmenustring_(int fieldid, int column, int option, std::string& text, int& error) {
  text.clear();
  Widget grid = checked_column(fieldid, column, error);
  if (!grid) return;
  const GridColumn& c = column_of(grid, column);
  if (option >= 1 && option <= static_cast<int>(c.options.size())) text = c.options[at(option - 1)];
}

void yygridputcellcheckbox_(int fieldid, int column, int row, int state, int& error) {
  Widget grid = checked(fieldid, column, row, error);
  if (!grid) return;
  if (column_of(grid, column).cellType != grid_type::kCheckbox) {
    error = kTypeMismatch;
    return;
  }
  yyGridWidgetSetNumberX(grid, column, row, state != 0 ? 1.0 : 0.0, {});
}

void yygridputcelloption_(int fieldid, int column, int row, int option, int& error) {
  Widget grid = checked(fieldid, column, row, error);
  if (!grid) return;
  const GridColumn& c = column_of(grid, column);
  if (c.cellType != grid_type::kCombo) {
    error = kTypeMismatch;
    return;
  }
  if (option < 1 || option > static_cast<int>(c.options.size())) {
    error = kOutOfRange;
    return;
  }
  yyGridWidgetSetNumberX(grid, column, row, option, {});
}

void yygridclearcell_(int fieldid, int column, int row, int& error) {
  Widget grid = checked(fieldid, column, row, error);
  if (grid) yyGridWidgetClearCellX(grid, column, row);
}

void yygridlabelcolumn_(int fieldid, int column, std::string_view text, int& error) {
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return;
  if (column < -1 || column >= yyGridPart(grid).st->model.columnCount()) {
    error = kBadCell;
    return;
  }
  yyGridWidgetSetColumnLabelX(grid, column, trim_right(text));
}

void yygridlabelrow_(int fieldid, int row, std::string_view text, int& error) {
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return;
  if (row < 0 || row >= yyGridPart(grid).st->model.rows) {
    error = kBadCell;
    return;
  }
  yyGridWidgetSetRowLabelDataX(grid, row, trim_right(text));
}

void yygridgetcolumnlabel_(int fieldid, int column, std::string& text, int& error) {
  text.clear();
  Widget grid = checked_column(fieldid, column, error);
  if (grid) text = column_of(grid, column).label;
}

void yygridgetrowlabel_(int fieldid, int row, std::string& text, int& error) {
  text.clear();
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return;
  const GridState& s = *yyGridPart(grid).st;
  if (row < 0 || row >= s.model.rows) {
    error = kBadCell;
    return;
  }
  text = s.model.rowLabels[at(row)];
}

namespace {
int rgb(int r, int g, int b) { return r < 0 ? -1 : r == 256 ? 256 : (r & 0xFF) | ((g & 0xFF) << 8) | ((b & 0xFF) << 16); }
}  // namespace

void yygridcolourcell_(int fieldid, int column, int row, int fgRed, int fgGreen, int fgBlue, int bgRed, int bgGreen,
                       int bgBlue, int& error) {
  Widget grid = checked(fieldid, column, row, error);
  if (grid) yyGridWidgetColourCellX(grid, column, row, rgb(fgRed, fgGreen, fgBlue), rgb(bgRed, bgGreen, bgBlue));
}

void yygridcolourcolumn_(int fieldid, int column, int fgRed, int fgGreen, int fgBlue, int bgRed, int bgGreen,
                         int bgBlue, int& error) {
  Widget grid = checked_column(fieldid, column, error);
  if (grid) yyGridWidgetColourCellX(grid, column, -1, rgb(fgRed, fgGreen, fgBlue), rgb(bgRed, bgGreen, bgBlue));
}

void yygridcolourlines_(int fieldid, int red, int green, int blue, int& error) {
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return;
  GridState& s = *yyGridPart(grid).st;
  s.lineColour = (red & 0xFF) | ((green & 0xFF) << 8) | ((blue & 0xFF) << 16);
  const Pixel p = yyAllocPixel(red & 0xFF, green & 0xFF, blue & 0xFF);
  for (Widget w : {s.slideV, s.partRow})
    if (w) XtVaSetValues(w, XtNbackground, p, nullptr);
}

void yygridstatecell_(int fieldid, int column, int row, int state, int& error) {
  Widget grid = checked(fieldid, column, row, error);
  if (grid) yyGridWidgetSetCellStateX(grid, column, row, state);
}

void yygridcopycellstate_(int fieldid, int fromColumn, int fromRow, int toColumn, int toRow, int& error) {
  Widget grid = checked(fieldid, fromColumn, fromRow, error);
  if (!grid || !checked(fieldid, toColumn, toRow, error)) return;
  const bool readOnly = column_of(grid, fromColumn).cellFlags[at(fromRow)] & grid_cell::kReadOnly;
  yyGridWidgetSetCellStateX(grid, toColumn, toRow, readOnly ? 2 : 1);
}

int yygridgetcelltype_(int fieldid, int column, int& error) {
  Widget grid = checked_column(fieldid, column, error);
  if (!grid) return error == kNotGrid ? -kNotGrid : 0;
  return column_of(grid, column).cellType;
}

int yygridgetcelltypenv_(int fieldid, int column) {
  int error = 0;
  Widget grid = yyGridFind(fieldid, error);
  if (!grid || column < 0 || column >= yyGridPart(grid).st->model.columnCount()) return 0;
  return column_of(grid, column).cellType;
}

int yygridgetcelllength_(int fieldid, int column, int& error) {
  Widget grid = checked_column(fieldid, column, error);
  return grid ? column_of(grid, column).charLimit + 1 : 0;
}

int yygridgetcase_(int fieldid, int column, int& error) {
  Widget grid = checked_column(fieldid, column, error);
  return grid ? column_of(grid, column).caseMode : 0;
}

void yygridgetformat_(int fieldid, int column, std::string& format, int& error) {
  format.clear();
  Widget grid = checked_column(fieldid, column, error);
  if (grid) format = column_of(grid, column).format;
}

int yygridrangecheck_(int fieldid, int column, double number, int& error) {
  Widget grid = checked_column(fieldid, column, error);
  if (!grid) return error;
  return yyGridModelInRange(column_of(grid, column), number) ? 0 : kOutOfRange;
}

void yygridrange_(int fieldid, int column, double minimum, double maximum, int& error) {
  Widget grid = checked_column(fieldid, column, error);
  if (!grid) return;
  GridColumn& c = column_of(grid, column);
  c.minimum = minimum;
  c.maximum = maximum;
}

void yygridrows_(int fieldid, int rows, int& error) {
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return;
  if (rows < 0) {
    error = kBadRows;
    return;
  }
  if (rows > yyGridPart(grid).maxNrow) {
    error = kTooLarge;
    rows = yyGridPart(grid).maxNrow;
  }
  yyGridWidgetSetNRowX(grid, rows);
}

void yygridcolumns_(int fieldid, int count, const std::vector<int>& templateFields, const std::vector<int>& widths,
                    int& error) {
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return;
  if (!yyGridWidgetSetColumnsX(grid, std::max(count, 0), templateFields, widths)) error = kTooLarge;
}

void yygridsetcell_(int fieldid, int column, int row, int& error) {
  Widget grid = checked(fieldid, column, row, error);
  if (grid) yyGridWidgetSetCellFocusX(grid, column, row, -1);
}

void yygridsetselection_(int fieldid, int firstColumn, int firstRow, int lastColumn, int lastRow, int& error) {
  Widget grid = checked(fieldid, firstColumn, firstRow, error);
  if (!grid || !checked(fieldid, lastColumn, lastRow, error)) return;
  yyGridWidgetSelectX(grid, true, firstColumn, firstRow, lastColumn, lastRow);
}

void yygridclearselection_(int fieldid, int& error) {
  Widget grid = yyGridFind(fieldid, error);
  if (grid) yyGridWidgetSelectX(grid, false, 0, 0, 0, 0);
}

void yygridspinnerstepinteger_(int fieldid, int column, int small, int large, int& error) {
  Widget grid = checked_column(fieldid, column, error);
  if (!grid) return;
  column_of(grid, column).integerSmallStep = small;
  column_of(grid, column).integerLargeStep = large;
}

void yygridspinnerstepreal_(int fieldid, int column, float small, float large, int& error) {
  Widget grid = checked_column(fieldid, column, error);
  if (!grid) return;
  column_of(grid, column).realSmallStep = small;
  column_of(grid, column).realLargeStep = large;
}

void yygridspinnerstepdouble_(int fieldid, int column, double small, double large, int& error) {
  Widget grid = checked_column(fieldid, column, error);
  if (!grid) return;
  column_of(grid, column).doubleSmallStep = small;
  column_of(grid, column).doubleLargeStep = large;
}

void yygridcellredrawoff(Widget grid) { yyGridPart(grid).st->redrawOff = true; }

void yygridcellredrawon(Widget grid) {
  yyGridPart(grid).st->redrawOff = false;
  yyGridWidgetUpdateViewportData(grid, true);
}

void yygridcellredrawoff_(int fieldid, int& error) {
  if (Widget grid = yyGridFind(fieldid, error)) yygridcellredrawoff(grid);
}

void yygridcellredrawon_(int fieldid, int& error) {
  if (Widget grid = yyGridFind(fieldid, error)) yygridcellredrawon(grid);
}

void yygridputmenustring_(int fieldid, int column, int row, std::string_view text, int& error) {
  Widget grid = checked(fieldid, column, row, error);
  if (!grid) return;
  const GridColumn& c = column_of(grid, column);
  if (c.cellType != grid_type::kCombo) {
    error = kTypeMismatch;
    return;
  }
  const int option = yyGridModelMenuOption(c, text);
  if (option == 0) {
    error = kNoOption;
    return;
  }
  yyGridWidgetSetNumberX(grid, column, row, option, {});
}

void yygridgetcolour(int fieldid, int column, int row, int& foreground, int& background, int& error) {
  foreground = background = -1;
  Widget grid = checked(fieldid, column, row, error);
  if (!grid) return;
  const GridColumn& c = column_of(grid, column);
  if (!(c.cellFlags[at(row)] & grid_cell::kOwnColours) || c.cellColours.empty()) return;
  const GridColour& col = c.cellColours[at(row)];
  foreground = yyGridColourPacked(col, GridColourSide::foreground);
  background = yyGridColourPacked(col, GridColourSide::background);
}

void WRGBSplit(int rgb, int& red, int& green, int& blue) {
  red = rgb & 0xFF;
  green = (rgb >> 8) & 0xFF;
  blue = (rgb >> 16) & 0xFF;
}

void yygridsortswap_(int fieldid, int row1, int row2, int labels, int& error) {
  Widget grid = checked(fieldid, 0, row1, error);
  if (grid && !yyGridPart(grid).st->model.inside(0, row2)) {
    error = kBadCell;
    grid = nullptr;
  }
  if (!grid) return;
  GridPart& g = yyGridPart(grid);
  GridState& s = *g.st;
  if (s.selectionOn) yyGridWidgetSelectX(grid, false, 0, 0, 0, 0);
  // The cells on screen are rewritten from the values, not edited one by one.
  s.refreshing = true;
  yyGridModelSwapRows(s.model, row1, row2, labels == 1 && g.rowLabel);
  yyGridWidgetUpdateViewportData(grid, true);
  s.refreshing = false;
  s.model.modified = s.model.changed = true;
}

void yyinfogrid_(int fieldid, int item, int& value, int& error) {
  value = 0;
  if (fieldid == -1) {
    error = 0;
    value = yyGridWindowLastResult(item);
    return;
  }
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return;
  const GridPart& g = yyGridPart(grid);
  const GridState& s = *g.st;
  const bool sel = s.selectionOn;
  switch (item) {
    case 1: value = s.model.columnCount(); break;
    case 2: value = g.maxNrow; break;
    case 3: value = s.model.rows; break;
    case 4: value = g.icol + 1; break;
    case 5: value = g.irow + 1; break;
    case 6: value = s.model.modified ? 0 : 1; break;
    case 7: value = s.model.changed ? 1 : 0; break;
    case 8: value = s.firstColumn + 1; break;
    case 9: value = s.firstRow + 1; break;
    case 10: value = sel ? s.selC1 + 1 : 0; break;
    case 11: value = sel ? s.selR1 + 1 : 0; break;
    case 12: value = sel ? s.selC2 + 1 : 0; break;
    case 13: value = sel ? s.selR2 + 1 : 0; break;
    case 14: value = yyGridWindowMode(s.gridWindow); break;
    case 15: value = g.nrowVis; break;
    case 16: value = g.ncolOrig; break;
    case 17: value = s.lineColour; break;
    default: error = kNotGrid; break;
  }
}
