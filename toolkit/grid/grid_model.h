// The values of a grid, apart from any widget: one array entry per cell,
// column by column, so a column's type decides which arrays it has. Free of
// X, so the value rules and their tests need no display. Rows and columns
// count from 0 here.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Bits of a cell's flag word.
namespace grid_cell {
inline constexpr std::uint32_t kHasValue = 0x1;
inline constexpr std::uint32_t kReadOnly = 0x2;
inline constexpr std::uint32_t kOwnColours = 0x4;
inline constexpr std::uint32_t kHadNumber = 0x8;  // feeds the defined flag of a numeric cell widget
}  // namespace grid_cell

// Cell types of a column: the field types its cells are made of.
namespace grid_type {
inline constexpr int kNone = 0, kString = 4, kInteger = 5, kReal = 6, kDouble = 7, kCheckbox = 9, kCombo = 11;
constexpr bool numeric(int t) { return t >= kInteger && t <= kDouble; }
constexpr bool textual(int t) { return t >= kString && t <= kDouble; }
}  // namespace grid_type

inline constexpr std::string_view kGridDefaultFormat = "(G15.5E2)";
// A string column whose resource gives no length takes this many characters.
inline constexpr int kGridDefaultCharLimit = 1024;
// Widest text a number of a cell is written into.
inline constexpr int kGridNumberWidth = 51;
// One paste item is cut to this many bytes.
inline constexpr std::size_t kGridPasteItem = 32767;

// Foreground red, green, blue, background red, green, blue; 256 in red: the scheme's.
using GridColour = std::array<int, 6>;
enum class GridColourSide { foreground = 0, background = 3 };

// One side as red + 256 green + 65536 blue; -1 when it keeps the scheme's colour.
inline int yyGridColourPacked(const GridColour& c, GridColourSide side) {
  const auto i = static_cast<std::size_t>(side);
  if (c[i] < 0 || c[i] > 255) return -1;
  return c[i] + 256 * c[i + 1] + 65536 * c[i + 2];
}

struct GridColumn {
  int cellType = grid_type::kNone;
  int width = 10;  // pixels
  std::optional<GridColour> columnColour;
  std::string format;  // real and double; empty: kGridDefaultFormat
  std::vector<std::string> options;  // combo option texts
  int charLimit = kGridDefaultCharLimit;
  int caseMode = 0;  // 0 as typed, 1 upper, 2 lower
  double minimum = 1.0, maximum = -1.0;  // maximum below minimum: no range
  int integerSmallStep = 0, integerLargeStep = 0, integerStepExtra = 0;
  float realSmallStep = 1.0f, realLargeStep = 5.0f;
  double doubleSmallStep = 1.0, doubleLargeStep = 5.0;
  std::vector<std::uint32_t> cellFlags;
  std::vector<double> numbers;        // all types but string
  std::vector<std::string> strings;   // string columns only
  std::vector<GridColour> cellColours;  // allocated at the first cell colour
  std::string label;

  const std::string& effectiveFormat() const;
};

struct GridModel {
  std::vector<GridColumn> columns;
  int rows = 0;
  int maxRows = 0;
  std::vector<std::uint8_t> rowLabelFlags;
  std::vector<std::string> rowLabels;
  bool modified = false, changed = false;

  int columnCount() const { return static_cast<int>(columns.size()); }
  bool inside(int column, int row) const { return column >= 0 && column < columnCount() && row >= 0 && row < rows; }
};

// Sets the rows of every column, keeping the values of the rows that survive;
// new rows are empty.
void yyGridModelResize(GridModel& m, int rows);
// Stores a cell as the program or the user writes it: a numeric column with
// `number` exactly 0 parses the text, and a text that is no number empties
// the cell; a string column keeps the text (an empty one empties the cell);
// a check box stores 1 or 0; a combo the option number, option 1 as no value.
void yyGridModelStore(GridColumn& c, int row, std::string_view text, double number);
// Stores a number without making text, as writes to rows off screen do.
void yyGridModelStoreNumber(GridColumn& c, int row, double number);
void yyGridModelClear(GridColumn& c, int row);  // the had-a-number bit stays
// A number of the column as text in its format (integers left-justified).
std::string yyGridNumberText(const GridColumn& c, double number, std::string_view format = {});
// The cell as text: string as stored; numbers in the column's format, empty
// when the cell has no value; check box "0"/"1"; combo the option number.
std::string yyGridModelText(const GridColumn& c, int row);
// The cell's number and whether it is defined; a string cell is parsed.
void yyGridModelNumber(const GridColumn& c, int row, double& number, bool& defined);
bool yyGridModelInRange(const GridColumn& c, double number);
// The option of a combo column with that text (trailing blanks aside), from
// 1; 0 when no option has it.
int yyGridModelMenuOption(const GridColumn& c, std::string_view text);

// The text form of a rectangle for the clipboard: cells separated by TAB,
// every row ended by LF.
std::string yyGridClipText(const GridModel& m, int c1, int r1, int c2, int r2);
// Rows and columns a clipboard text would cover.
void yyGridClipCount(std::string_view text, int& rows, int& columns);
// Writes a clipboard text from the cell (column, row) on; what falls outside
// the grid is skipped. Cells with the read-only bit are left alone. Returns
// false when nothing was written; else the last cell written.
bool yyGridModelPaste(GridModel& m, int column, int row, std::string_view text, int& lastColumn, int& lastRow);
