// A grid leaving the screen: as an HTML table (a whole document or a piece
// of one) and as a PostScript table for the printer. Both walk a rectangle of
// cells and take each cell's text, alignment and colours. Rows and columns
// of the public routines count from 1.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/base/zelvy_data.h"
#include "toolkit/kernel/comdlg_attach.h"

// Options of WGridSaveHTML.
namespace grid_html {
inline constexpr int kFragment = 0x1;     // no document frame, styles inline
inline constexpr int kCentre = 0x2;       // the table in the middle of the page
inline constexpr int kCheckYesNo = 0x4;   // check boxes as "Y" and "N"
inline constexpr int kNoColours = 0x8;
inline constexpr int kCheckTick = 0x10;   // check boxes as a tick mark
// Error codes.
inline constexpr int kOpenError = 1, kWriteError = 2;
}  // namespace grid_html

// Writes cells of a grid field as HTML; limits default to the whole grid,
// `background` is red + 256 green + 65536 blue. Open and write failures go to
// the error state as codes 1 and 2.
void WGridSaveHTML(int fieldid, std::string_view filename, std::optional<int> firstColumn = {},
                   std::optional<int> lastColumn = {}, std::optional<int> firstRow = {},
                   std::optional<int> lastRow = {}, std::optional<int> options = {},
                   std::optional<std::string_view> title = {}, std::optional<int> border = {},
                   std::optional<int> background = {});

// What the writers need of a grid, taken from it once: free of X so that the
// documents can be made and checked without a display.
struct GridTableCell {
  std::string text;  // as the cell shows it; for a combo the option's text
  bool set = false;  // a check box that is on
  int foreground = -1, background = -1;  // 0xRRGGBB, -1 none of its own
};
struct GridTableColumn {
  std::string label;
  int cellType = 0;
  int align = 0;        // 0 left, 1 centre, 2 right
  int widthChars = 10;  // the column's width in characters of the field's font
};
struct GridTable {
  std::vector<GridTableColumn> columns;
  std::vector<std::string> rowLabels;    // one per row taken
  std::vector<std::vector<GridTableCell>> rows;  // rows of cells
  bool columnLabels = false, rowLabelBar = false;
  std::string cornerLabel;
  int rowLabelChars = 0;  // the row label column's width in characters
  int lineColour = 0xC0C0C0;  // red + 256 green + 65536 blue
  int fontIndex = 0;
};

// A rectangle of a grid widget, from 0, inclusive and inside the grid.
struct _WidgetRec;
GridTable yyGridTableOf(_WidgetRec* grid, int firstColumn, int firstRow, int lastColumn, int lastRow);
// A cell's alignment by its column's type and template style: 0 left, 1 centre, 2 right.
int yygridgetalign_(int cellType, std::uint32_t style);

// The HTML of a table, one line per entry, without line ends.
std::vector<std::string> yyGridHtmlLines(const GridTable& table, int options, std::optional<std::string_view> title,
                                         int border, std::optional<int> background);

// ---- Printing --------------------------------------------------------------------------
// Entry 0 serves grids of dialogs, entry 1 grid windows.
inline constexpr int kGridPrintDialog = 0, kGridPrintWindow = 1;

// Items of yygridprintoptions_ and yyinfogridprint_.
namespace grid_print_item {
inline constexpr int kWidth = 1, kHeight = 2, kXOffset = 3, kYOffset = 4, kOrientation = 5, kRowLines = 6,
                     kColumnLines = 7, kLabelsEachPage = 8, kColour = 9, kScale = 10, kPaper = 33,
                     kLeftMargin = 34, kTopMargin = 35, kRightMargin = 36, kBottomMargin = 37, kCopies = 38;
}

void yygridprintoptions_(int item, int value, int entry);
void yyinfogridprint_(int item, int& value, int entry);
GridPrintOptions& yyGridPrintOptions(int entry);

// The page setup dialog on the grid's page record of `entry`; 1 when confirmed.
int yygridpagesetup_(int window, int entry);

// The PostScript document of a table for one page record; false when a write failed.
bool yyGridPostScript(std::FILE* out, const GridTable& table, const GridPrintOptions& options,
                      const zelvy_data::PageSetup& page, std::optional<std::string_view> title);

// Prints cells of a grid (field 0: the grid of `window`). Without a file the
// page record decides: the print command on a temporary file, or its file.
// A file "before @ after" runs the command "before temporary-file after".
// `ok` 0 when the file couldn't be opened or written.
void yygridprint_(int window, int fieldid, int& ok, int firstRow, int lastRow, int firstColumn, int lastColumn,
                  int entry, std::optional<std::string_view> file = {},
                  std::optional<std::string_view> title = {});

// ---- Grid windows ------------------------------------------------------------------------
// Save As HTML of a grid window: its dialog, then the file. A rectangle of 0
// takes the whole grid. `ok` 1 when a file was written.
void yygridwinsavehtml_(int window, int firstColumn, int firstRow, int lastColumn, int lastRow, int& ok,
                        int options = 0, std::string_view filename = {});
// Print of a grid window: its dialog, then the printer. A rectangle of 0
// takes the whole grid.
void yygridwinprint_(int window, int firstColumn, int firstRow, int lastColumn, int lastRow);
