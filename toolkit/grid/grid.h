// Grid fields: a spreadsheet-like field whose columns take their cell type,
// width, range and format from the fields of a template dialog. The public
// routines count columns and rows from 1; the yy* layer below from 0 and ends
// in an error code out-argument. Field id 0 means the grid of the current
// grid window. Failures go to the error state (WInfoError).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Joins the grid to the dialog engine so that grid fields get their widget;
// called once before the first window opens, beside yyDialogAttach.
void yyGridAttach();

void WGridPutCellString(int fieldid, int column, int row, std::string_view text);
void WGridGetCellString(int fieldid, int column, int row, std::string& text);
void WGridPutCellInteger(int fieldid, int column, int row, int value);
void WGridPutCellReal(int fieldid, int column, int row, float value, std::optional<std::string_view> format = {});
void WGridPutCellDouble(int fieldid, int column, int row, double value, std::optional<std::string_view> format = {});
void WGridRows(int fieldid, int rows);
void WGridLabelRow(int fieldid, int row, std::string_view text);
// 1 makes the cell editable, anything else read-only.
void WGridStateCell(int fieldid, int column, int row, int state);

// Sorts rows by a column. Options: 1 descending, 2 ignore case, 4 row labels
// move with their rows. Empty cells go last either way.
void WGridSort(int fieldid, int column, std::optional<int> options = {}, std::optional<int> firstRow = {},
               std::optional<int> lastRow = {});
// Finds `text` in a cell and makes that cell current. Options: 1 start after
// the current cell, 2 ignore case, 4 numeric columns too, 8 row by row
// (default column by column). Limits default to the whole grid.
void WGridFind(int fieldid, std::string_view text, std::optional<int> options = {}, bool* found = nullptr,
               std::optional<int> firstColumn = {}, std::optional<int> lastColumn = {},
               std::optional<int> firstRow = {}, std::optional<int> lastRow = {});
// Reads a comma-separated file, or tab-separated for a name ending in ".tsv".
// grow 1 lets the rows rise to the grid's limit. Options: 2 the first line
// and column are labels, 8 string cells keep trailing blanks.
void WGridLoad(int fieldid, std::string_view filename, std::optional<int> grow = {},
               std::optional<int> options = {});
// Writes one. Options: 1 no quotes around strings, 2 with labels, 4 empty
// numeric cells as the undefined values.
void WGridSave(int fieldid, std::string_view filename, std::optional<int> firstColumn = {},
               std::optional<int> lastColumn = {}, std::optional<int> firstRow = {},
               std::optional<int> lastRow = {}, std::optional<int> options = {});

// A colour red + 256 green + 65536 blue into its parts.
void WRGBSplit(int rgb, int& red, int& green, int& blue);

// ---- Grid windows -------------------------------------------------------------
// Moves grid field `fieldid` of the current dialog into the current child
// window, which becomes a small spreadsheet with its own menu and status bar.
// `mode` 1 modal, 2 modeless, 3 semi-modeless; `menuid` an application menu
// merged behind the grid's (0 none); `options` the mode word below; a file
// name given is loaded at once. Errors: 1022, 1038, 1051, 1052, 1057, 1005,
// 1006, 1053.
namespace grid_window {
inline constexpr int kNoToolbar = 0x20, kNoNewOpen = 0x100, kNoSaveAs = 0x200, kNoPrint = 0x400,
                     kMoveLabels = 0x800, kNoFind = 0x1000, kNoSave = 0x2000, kBackup = 0x20000,
                     kNoHtml = 0x40000, kNoReadOnlyCheck = 0x80000, kRowsFollow = 0x100000,
                     kRowCommands = 0x200000, kMenu = 0x800000, kLargeToolbar = 0x4000000,
                     kNoGoto = 0x8000000, kNoPrompt = 0x10000000;
}
void yygridedit_(int fieldid, int mode, int menuid, int options, std::string_view filename,
                 std::optional<std::string_view> filter = {});

// ---- The layer below: columns and rows from 0 --------------------------------
// `number` 0 makes a numeric column parse the text; `format` for real and double.
void yygridputcellstring_(int fieldid, int column, int row, double number, std::string_view text,
                          std::string_view format, int& error);
void yygridgetcellstring_(int fieldid, int column, int row, std::string& text, int& error);
void yygridgetcellnumeric_(int fieldid, int column, int row, double& number, int& undefined, int& error);
void yygridgetcellcheckbox_(int fieldid, int column, int row, int& state, int& error);
void yygridgetcellmenu_(int fieldid, int column, int row, int& option, int& error);
void yygridgetmenustring_(int fieldid, int column, int option, std::string& text, int& error);
void yygridputcellcheckbox_(int fieldid, int column, int row, int state, int& error);
void yygridputcelloption_(int fieldid, int column, int row, int option, int& error);
void yygridclearcell_(int fieldid, int column, int row, int& error);
void yygridlabelcolumn_(int fieldid, int column, std::string_view text, int& error);
void yygridlabelrow_(int fieldid, int row, std::string_view text, int& error);
void yygridgetcolumnlabel_(int fieldid, int column, std::string& text, int& error);
void yygridgetrowlabel_(int fieldid, int row, std::string& text, int& error);
// Colours as red, green, blue (0..255) of foreground and background; a red of
// -1 leaves that colour alone, 256 gives back the scheme's.
void yygridcolourcell_(int fieldid, int column, int row, int fgRed, int fgGreen, int fgBlue, int bgRed,
                       int bgGreen, int bgBlue, int& error);
void yygridcolourcolumn_(int fieldid, int column, int fgRed, int fgGreen, int fgBlue, int bgRed, int bgGreen,
                         int bgBlue, int& error);
void yygridcolourlines_(int fieldid, int red, int green, int blue, int& error);
void yygridstatecell_(int fieldid, int column, int row, int state, int& error);
void yygridcopycellstate_(int fieldid, int fromColumn, int fromRow, int toColumn, int toRow, int& error);
// Cell type of a column; -1006 for a field that isn't a grid.
int yygridgetcelltype_(int fieldid, int column, int& error);
int yygridgetcelltypenv_(int fieldid, int column);
int yygridgetcelllength_(int fieldid, int column, int& error);
int yygridgetcase_(int fieldid, int column, int& error);
void yygridgetformat_(int fieldid, int column, std::string& format, int& error);
// 0 inside the column's range (or without one), 1009 outside.
int yygridrangecheck_(int fieldid, int column, double number, int& error);
void yygridrange_(int fieldid, int column, double minimum, double maximum, int& error);
void yygridrows_(int fieldid, int rows, int& error);
// Columns from template field numbers (from 1) and widths in dialog units;
// a first width of -1 takes the template's. Count 0 empties the grid.
void yygridcolumns_(int fieldid, int count, const std::vector<int>& templateFields, const std::vector<int>& widths,
                    int& error);
void yygridsetcell_(int fieldid, int column, int row, int& error);
void yygridsetselection_(int fieldid, int firstColumn, int firstRow, int lastColumn, int lastRow, int& error);
void yygridclearselection_(int fieldid, int& error);
void yygridspinnerstepinteger_(int fieldid, int column, int small, int large, int& error);
void yygridspinnerstepreal_(int fieldid, int column, float small, float large, int& error);
void yygridspinnerstepdouble_(int fieldid, int column, double small, double large, int& error);
// A combo cell set to the option with that text; 1055 when there is none.
void yygridputmenustring_(int fieldid, int column, int row, std::string_view text, int& error);
// The cell's own colours, each red + 256 green + 65536 blue, -1 for a side
// that has none (the column's, the grid's or the scheme's shows there).
void yygridgetcolour(int fieldid, int column, int row, int& foreground, int& background, int& error);
// Two rows trade places, values, states and colours; with `labels` 1 their
// row labels too. The selection goes, and both change flags are set.
void yygridsortswap_(int fieldid, int row1, int row2, int labels, int& error);
// Writes many cells without showing each: the viewport is brought up to date at "on".
void yygridcellredrawoff_(int fieldid, int& error);
void yygridcellredrawon_(int fieldid, int& error);
// Items 1..17 of the grid (columns, rows, current cell, selection, ...).
void yyinfogrid_(int fieldid, int item, int& value, int& error);
