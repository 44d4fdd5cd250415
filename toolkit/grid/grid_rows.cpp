// Deleting and inserting grid rows, cell by cell through the grid's own
// routines, so every cell type keeps its rules.
#include "toolkit/grid/grid_rows.h"

#include <algorithm>
#include <string>

#include "toolkit/base/error.h"
#include "toolkit/grid/grid.h"

namespace {

constexpr int kNotGrid = 1006, kBadCell = 1017, kBadRows = 1113;
constexpr int kInfoColumns = 1, kInfoMaxRows = 2, kInfoRows = 3;
// Cell types whose values pass as text.
constexpr int kString = 4, kInteger = 5, kReal = 6, kDouble = 7, kCheckbox = 9, kCombo = 11;

struct GridShape {
  int columns = 0, rows = 0, maxRows = 0;
};

// The grid's size, or an error code (1005, 1006) in `error`.
GridShape shape(int fieldid, int& error) {
  GridShape g;
  yyinfogrid_(fieldid, kInfoColumns, g.columns, error);
  if (error) return g;
  yyinfogrid_(fieldid, kInfoRows, g.rows, error);
  yyinfogrid_(fieldid, kInfoMaxRows, g.maxRows, error);
  return g;
}

// Cell (column, to) takes the value and state of cell (column, from); 0-based.
void copy_cell(int fieldid, int column, int from, int to) {
  int error = 0;
  switch (yygridgetcelltypenv_(fieldid, column)) {
    case kString: case kInteger: case kReal: case kDouble: {
      std::string text;
      yygridgetcellstring_(fieldid, column, from, text, error);
      if (text.empty()) yygridclearcell_(fieldid, column, to, error);
      else yygridputcellstring_(fieldid, column, to, 0.0, text, {}, error);
      break;
    }
    case kCheckbox: {
      int state = 0;
      yygridgetcellcheckbox_(fieldid, column, from, state, error);
      yygridputcellcheckbox_(fieldid, column, to, state, error);
      break;
    }
    case kCombo: {
      int option = 1;
      yygridgetcellmenu_(fieldid, column, from, option, error);
      yygridputcelloption_(fieldid, column, to, option, error);
      break;
    }
    default: break;
  }
  yygridcopycellstate_(fieldid, column, from, column, to, error);
}

void clear_row(int fieldid, int columns, int row, bool label) {
  int error = 0;
  for (int c = 0; c < columns; ++c) {
    if (yygridgetcelltypenv_(fieldid, c) == kCombo) yygridputcelloption_(fieldid, c, row, 1, error);
    else yygridclearcell_(fieldid, c, row, error);
  }
  if (label) yygridlabelrow_(fieldid, row, "", error);
}

void copy_label(int fieldid, int from, int to) {
  int error = 0;
  std::string text;
  yygridgetrowlabel_(fieldid, from, text, error);
  yygridlabelrow_(fieldid, to, text, error);
}

// The checks both routines share; false when an error was reported.
bool check(int fieldid, int row, int& count, GridShape& g, const char* routine) {
  int error = 0;
  g = shape(fieldid, error);
  if (error) {
    yyerror(error == kNotGrid || error < 0 ? kNotGrid : error, routine);
    return false;
  }
  if (row < 1 || row > g.rows) {
    yyerror(kBadCell, routine);
    return false;
  }
  if (count < 1) {
    yyerror(kBadRows, routine);
    return false;
  }
  return true;
}

}  // namespace

void WGridDeleteRows(int fieldid, int row, std::optional<int> count, std::optional<int> shrink,
                     std::optional<int> labels) {
  int n = count.value_or(1);
  GridShape g;
  if (!check(fieldid, row, n, g, "WGridDeleteRows")) return;
  n = std::min(n, g.rows - row + 1);
  const bool moveLabels = labels.value_or(0) != 0;
  int error = 0;
  yygridcellredrawoff_(fieldid, error);
  for (int r = row - 1; r + n < g.rows; ++r) {
    for (int c = 0; c < g.columns; ++c) copy_cell(fieldid, c, r + n, r);
    if (moveLabels) copy_label(fieldid, r + n, r);
  }
  if (shrink.value_or(0) != 0) {
    yygridrows_(fieldid, std::max(1, g.rows - n), error);
  } else {
    // The freed rows at the end are emptied, their labels with them: they no
    // longer hold what the labels named.
    for (int r = g.rows - n; r < g.rows; ++r) clear_row(fieldid, g.columns, r, true);
  }
  yygridcellredrawon_(fieldid, error);
}

void WGridInsertRows(int fieldid, int row, std::optional<int> count, std::optional<int> grow,
                     std::optional<int> labels) {
  int n = count.value_or(1);
  GridShape g;
  if (!check(fieldid, row, n, g, "WGridInsertRows")) return;
  int error = 0;
  int rows = g.rows;
  if (grow.value_or(0) != 0) {
    rows = std::min(g.rows + n, g.maxRows);
    if (rows != g.rows) yygridrows_(fieldid, rows, error);
  }
  n = std::min(n, rows - row + 1);
  const bool moveLabels = labels.value_or(0) != 0;
  yygridcellredrawoff_(fieldid, error);
  for (int r = rows - 1; r >= row - 1 + n; --r) {
    for (int c = 0; c < g.columns; ++c) copy_cell(fieldid, c, r - n, r);
    if (moveLabels) copy_label(fieldid, r - n, r);
  }
  for (int r = row - 1; r < row - 1 + n; ++r) clear_row(fieldid, g.columns, r, moveLabels);
  yygridcellredrawon_(fieldid, error);
}
