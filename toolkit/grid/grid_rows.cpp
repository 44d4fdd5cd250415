// Deleting and inserting grid rows. The values move as they are stored, not
// through their text, so numbers keep every digit and a grid of many rows
// moves in one pass per column; the cells on screen are redrawn once after.
#include "toolkit/grid/grid_rows.h"

#include <Xm/Xm.h>

#include <algorithm>

#include "toolkit/base/error.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_commands.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/grid/grid_window_private.h"

namespace {

constexpr int kBadCell = 1017, kBadRows = 1113;

// The grid of the checks both routines share; null when an error was reported.
Widget check(int fieldid, int row, int count, const char* routine) {
  int error = 0;
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) {
    yyerror(error, routine);
    return nullptr;
  }
  if (row < 1 || row > yyGridPart(grid).st->model.rows) {
    yyerror(kBadCell, routine);
    return nullptr;
  }
  if (count < 1) {
    yyerror(kBadRows, routine);
    return nullptr;
  }
  return grid;
}

}  // namespace

void yyGridShowRows(Widget grid) {
  GridPart& g = yyGridPart(grid);
  GridState& s = *g.st;
  if (s.selectionOn) yyGridWidgetSelectX(grid, false, 0, 0, 0, 0);
  if (s.model.rows == g.nrow) return yyGridWidgetUpdateViewportData(grid, true);
  // Rebuilding the rows moves the keyboard among the new cells: the current
  // cell stays where it was, and keeps the keyboard if it had it.
  bool focused = false;
  for (Widget w = XmGetFocusWidget(grid); w && !focused; w = XtParent(w)) focused = w == grid;
  const int column = g.icol, row = g.irow;
  yyGridWidgetSetNRowX(grid, s.model.rows);
  const int r = std::clamp(row, 0, std::max(0, s.model.rows - 1));
  if (focused && s.model.inside(column, r)) {
    yyGridWidgetSetCellFocusX(grid, column, r, -1);
  } else {
    g.icol = column;
    g.irow = r;
  }
}

void WGridDeleteRows(int fieldid, int row, std::optional<int> count, std::optional<int> shrink,
                     std::optional<int> labels) {
  const int n = count.value_or(1);
  Widget grid = check(fieldid, row, n, "WGridDeleteRows");
  if (!grid) return;
  GridState& s = *yyGridPart(grid).st;
  yyGridModelDeleteRows(s.model, row - 1, n, shrink.value_or(0) != 0, labels.value_or(0) != 0);
  yyGridShowRows(grid);
}

void WGridInsertRows(int fieldid, int row, std::optional<int> count, std::optional<int> grow,
                     std::optional<int> labels) {
  const int n = count.value_or(1);
  Widget grid = check(fieldid, row, n, "WGridInsertRows");
  if (!grid) return;
  GridPart& g = yyGridPart(grid);
  g.st->model.maxRows = g.maxNrow;
  yyGridModelInsertRows(g.st->model, row - 1, n, grow.value_or(0) != 0, labels.value_or(0) != 0);
  yyGridShowRows(grid);
}
