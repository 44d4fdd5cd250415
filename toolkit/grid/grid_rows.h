// Rows of a grid moved as a whole: deleting and inserting rows, with their
// values, cell states and, on request, their labels. Rows count from 1.
#pragma once

#include <optional>

// The rows below move up over the deleted ones. Without `shrink` the grid
// keeps its size and the rows freed at the end are emptied; with it the grid
// loses them. `labels` moves the row labels with their rows.
void WGridDeleteRows(int fieldid, int row, std::optional<int> count = {}, std::optional<int> shrink = {},
                     std::optional<int> labels = {});
// Empty rows before `row`; the rows from there move down. With `grow` the grid
// gains rows, up to its limit; without it the last rows fall off.
void WGridInsertRows(int fieldid, int row, std::optional<int> count = {}, std::optional<int> grow = {},
                     std::optional<int> labels = {});
