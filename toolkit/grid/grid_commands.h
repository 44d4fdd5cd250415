// Sorting rows and finding text in a grid's values, apart from any widget.
// Rows and columns count from 0 here.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/grid/grid_model.h"

// Options of sorting.
namespace grid_sort {
inline constexpr int kDescending = 1, kIgnoreCase = 2, kMoveLabels = 4;
}
// Options of finding.
namespace grid_find {
inline constexpr int kFromCurrent = 1, kIgnoreCase = 2, kNumbersToo = 4, kByRows = 8;
}

// A row's sort key: the text of a string cell (upper case with kIgnoreCase),
// else the number (check boxes 0 or 1, combos the option). An empty cell
// gets a key that sorts after all others in the direction asked for: the
// byte 0xFF or a blank, the largest number of its type or minus that.
struct GridSortKey {
  std::string text;
  double number = 0.0;
};
GridSortKey yygridgetany(const GridColumn& c, int row, int options);
// Orders rows by keys: keys[i] is row first + i, and `order` gets the rows
// with their keys ascending (or descending). Rows with equal keys keep their
// order. Texts compare byte by byte, the shorter padded with blanks.
void yygridsort_(std::vector<int>& order, const std::vector<double>& keys, int first, bool descending);
void yygridsort_(std::vector<int>& order, const std::vector<std::string_view>& keys, int first, bool descending);
// Two rows trade places with everything they hold; the labels too with `labels`.
void yyGridModelSwapRows(GridModel& m, int row1, int row2, bool labels);

// Sorts rows first..last (inclusive) by one column. Empty cells go last in
// either direction; strings compare byte by byte as if the shorter were
// padded with blanks. Rows with equal keys keep their order. The cells move
// with their values, states and colours, the row labels with kMoveLabels.
void yyGridModelSort(GridModel& m, int column, int options, int first, int last);

// Searches the cells of columns c1..c2 and rows r1..r2 for `text` as a
// substring of each cell's text, column by column unless kByRows. With
// kFromCurrent the search starts after the cell (column, row) and goes on to
// the end, without wrapping. True and the cell found in column, row.
bool yyGridModelFind(const GridModel& m, std::string_view text, int options, int c1, int c2, int r1, int r2,
                     int& column, int& row);

// Deletes `count` rows from `row` on: the rows below move up with their
// values, states and colours. Without shrink the freed rows at the end are
// emptied; with it the grid loses them (one row always stays). The row labels
// move with `labels`; the freed rows' labels are emptied either way.
void yyGridModelDeleteRows(GridModel& m, int row, int count, bool shrink, bool labels);
// Inserts `count` empty rows before `row`; the rows from there move down.
// With grow the grid gains rows up to its limit; what no longer fits falls off
// the end. The labels move with `labels`.
void yyGridModelInsertRows(GridModel& m, int row, int count, bool grow, bool labels);
