// WGridSort and WGridFind: the checks and the widget around the value rules.
#include <algorithm>

#include "toolkit/base/error.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_commands.h"
#include "toolkit/grid/grid_private.h"

namespace {
constexpr int kBadCell = 1017;
}

void WGridSort(int fieldid, int column, std::optional<int> options, std::optional<int> firstRow,
               std::optional<int> lastRow) {
  int error = 0;
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return yyerror(error, "WGridSort");
  GridState& s = *yyGridPart(grid).st;
  const int rows = s.model.rows;
  const int first = firstRow.value_or(1), last = std::min(lastRow.value_or(rows), rows);
  if (column < 1 || column > s.model.columnCount() || first < 1 || first > rows) return yyerror(kBadCell, "WGridSort");
  if (s.selectionOn) yyGridWidgetSelectX(grid, false, 0, 0, 0, 0);
  yygridcellredrawoff(grid);
  yyGridModelSort(s.model, column - 1, options.value_or(0), first - 1, last - 1);
  yygridcellredrawon(grid);
}

void WGridFind(int fieldid, std::string_view text, std::optional<int> options, bool* found,
               std::optional<int> firstColumn, std::optional<int> lastColumn, std::optional<int> firstRow,
               std::optional<int> lastRow) {
  if (found) *found = false;
  int error = 0;
  Widget grid = yyGridFind(fieldid, error);
  if (!grid) return yyerror(error, "WGridFind");
  GridPart& g = yyGridPart(grid);
  const GridModel& m = g.st->model;
  int column = g.icol, row = g.irow;
  const bool hit = yyGridModelFind(m, text, options.value_or(0), firstColumn.value_or(1) - 1,
                                   lastColumn.value_or(m.columnCount()) - 1, firstRow.value_or(1) - 1,
                                   lastRow.value_or(m.rows) - 1, column, row);
  if (!hit) return;
  yyGridWidgetSetCellFocusX(grid, column, row, -1);
  if (found) *found = true;
}
