// The grid widget inside the toolkit: its class, its instance part, and the
// X-layer routines the public grid routines and the tests reach it through.
#pragma once

#include <X11/Intrinsic.h>
#include <Xm/Xm.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/grid/grid_model.h"

extern WidgetClass gridWidgetClass;

// Resource names of the class.
namespace grid_resource {
inline constexpr const char* kNcol = "ncol";
inline constexpr const char* kNrow = "nrow";
inline constexpr const char* kMaxNrow = "maxNrow";
inline constexpr const char* kNrowVis = "nrowVis";
inline constexpr const char* kColLabel = "colLabel";
inline constexpr const char* kRowLabel = "rowLabel";
inline constexpr const char* kRowWidth = "rowWidth";
inline constexpr const char* kRowHeight = "rowHeight";
inline constexpr const char* kScrollBarH = "scrollBarH";
inline constexpr const char* kScrollBarV = "scrollBarV";
inline constexpr const char* kTemplateIdent = "templateIdent";
inline constexpr const char* kXftFont = "xftFont";
inline constexpr const char* kRowWrap = "rowWrap";
inline constexpr const char* kWantReturn = "wantReturn";
inline constexpr const char* kWantTab = "wantTab";
inline constexpr const char* kReadOnly = "readOnly";
inline constexpr const char* kReadOnlyColour = "readOnlyColour";
inline constexpr const char* kIntegerRows = "integerRows";
inline constexpr const char* kReportClipCallback = "reportClipCallback";
}  // namespace grid_resource

// The widget side of one column: its label button, the record its cells are
// made from, and one cell field per viewport row.
struct GridColumnWidgets {
  Widget labelWidget = nullptr;
  FieldRecord templateField;
  std::vector<FieldRecord> cells;  // sized once per build: cell widgets keep pointers to them
  // What each cell shows (pixel + 1, 0 unknown), to set only changes.
  std::vector<Pixel> shownBackground, shownForeground;
};

// Everything of a grid that isn't a plain resource value.
struct GridState {
  GridModel model;
  std::vector<GridColumnWidgets> views;
  // The selection, inclusive, from 0.
  bool selectionOn = false;
  int selC1 = 0, selR1 = 0, selC2 = 0, selR2 = 0;
  int firstColumn = 0, firstRow = 0;
  bool wideMode = false, refreshing = false, redrawOff = false;
  int gridWindow = 0;
  std::optional<GridColour> gridColour;
  int colourState = 1;  // the field's state as its cells show it: 0 disabled, 1 enabled, 2 read-only
  int lineColour = 0xC0C0C0;  // red + 256 green + 65536 blue
  // Viewport geometry.
  int fullRows = 0, builtRows = 0, builtColumns = 0, lastLeft = 0;
  bool forceRebuild = true;
  Widget window = nullptr, scrollBarH = nullptr, scrollBarV = nullptr, viewport = nullptr, clipWin = nullptr;
  Widget slideH = nullptr, slideV = nullptr, colLabelBar = nullptr, rowLabelBar = nullptr, partRow = nullptr;
  Widget selectAll = nullptr, colEmpty = nullptr;
  Widget focusShell = nullptr;  // tells the grid which cell takes the keyboard
  std::vector<Widget> rowLabelWidgets;
  std::vector<std::string> shownRowLabels;
  bool shownRowLabelsValid = false;
  // Where a Shift+click selection starts: the cell last made current by the
  // user, kept while scrolling.
  int anchorColumn = 0, anchorRow = 0;
  // The field the grid is: dialog slot and identifier, its styles.
  int dialogIndex = -1, fieldId = 0;
  std::uint32_t fieldStyle = 0, fieldExtra = 0;
  int fontIndex = 0;
};

// The instance part of the class.
struct GridPart {
  int ncol, nrow, ncolOrig, nrowOrig, maxNrow, nrowVis;
  Boolean colLabel, rowLabel;
  int rowWidth, rowHeight;
  Boolean scrollBarH, scrollBarV;
  int icol, irow, icolOld, irowOld;
  Widget currentCellWidget;
  int templateIdent, xftFont;
  Boolean rowWrap, wantReturn, wantTab, readOnly, readOnlyColour, integerRows;
  XtCallbackList reportClipCallback;
  GridState* st;
};

GridPart& yyGridPart(Widget grid);
// The grid widget of a dialog field, or null.
Widget yyGridOfField(const FieldRecord& f);
// The grid of the current dialog's field `fieldid` (0: the current grid
// window's), with 1005 / 1006 into `error`; null on error.
Widget yyGridFind(int fieldid, int& error);

// Creates the grid field's widgets (the dialog engine calls this for type 15).
void yyDialogGrid(DialogRecord& d, FieldRecord& f);

// Storage and rows.
void yyGridWidgetSetNRowX(Widget grid, int rows);
// A cell written as the program writes it (`number` 0: a numeric column
// parses the text); a shown cell's defined flag follows the stored bits, so
// clearDefined asks nothing more.
void yyGridWidgetSetSingleCellDataX(double number, Widget grid, int column, int row, std::string_view text,
                                    std::string_view format, bool clearDefined);
void yyGridWidgetSetRowLabelDataX(Widget grid, int row, std::string_view text);
void yyGridWidgetSetColumnLabelX(Widget grid, int column, std::string_view text);
void yyGridWidgetSetCellStateX(Widget grid, int column, int row, int state);
// The text cells in view take the colours of a field state: 0 disabled (the
// dialog's background), 1 enabled, 2 read-only (the dialog's background where
// no colour of cell, column or grid is set).
void yyGridColour(Widget grid, int state);
// A number stored as given, text made only for a cell on screen; a format
// other than the column's becomes the column's.
void yyGridWidgetSetNumberX(Widget grid, int column, int row, double number, std::string_view format);
// Cells written while redraw is off aren't shown one by one; "on" brings the
// cells in view up to date at once.
void yygridcellredrawoff(Widget grid);
void yygridcellredrawon(Widget grid);
// New columns from the template's fields (numbers from 1), widths in dialog
// units (-1 first: the template's); false when the template is missing.
bool yyGridWidgetSetColumnsX(Widget grid, int count, const std::vector<int>& templateFields,
                             const std::vector<int>& widths);
void yyGridWidgetClearCellX(Widget grid, int column, int row);
// Column -1 and row -1: the grid's colour; row -1: the column's.
void yyGridWidgetColourCellX(Widget grid, int column, int row, int fg, int bg);
void yyGridWidgetSetColumnDataX(Widget grid, int column, const FieldRecord& templateField, int templateId);

// The viewport.
void yyGridWidgetCreateViewportX(Widget grid);
void yyGridWidgetReCreateViewport(Widget grid);
void yyGridWidgetUpdateViewportData(Widget grid, bool quiet);
void yyGridWidgetScrollBarUpdate(Widget grid);
void yyGridWidgetScrollToCell(Widget grid, int column, int row);
void yyGridWidgetSetCellFocusX(Widget grid, int column, int row, int cursor);
// 1 left, 2 right, 3 up, 4 down; false when the move can't be made.
bool yyGridWidgetMoveCurrentCellX(Widget grid, int direction);
// The vertical bar is moved to `value` as the user would.
void yyGridWidgetScrollRowsX(Widget grid, int value);
// The cell widget (value widget) shown at viewport row `vrow` of `column`, or null.
Widget yyGridCellWidget(Widget grid, int column, int vrow);

// Selection and clipboard.
void yyGridWidgetSelectX(Widget grid, bool on, int c1, int r1, int c2, int r2);
bool yyGridWidgetSelCellCopyX(Widget grid);
bool yyGridWidgetSelCellCutX(Widget grid);
bool yyGridWidgetSelCellPasteX(Widget grid);
bool yyGridWidgetSelCellDelX(Widget grid, bool check);
bool yyGridCanCut(Widget grid);
// A rectangle written by delete or paste (first column, first row, last
// column, last row) to the report callbacks; a field with the report style
// has yyGridReportClipCB among them, which tells the application.
void yyGridReportClip(Widget grid, int c1, int r1, int c2, int r2);
void yyGridReportClipCB(Widget grid, XtPointer client, XtPointer call);
// The current cell's widget when it is a text kind, else null.
Widget yyGridGetEditCell(Widget grid);
// A cell as the routines read it: its text, its number and whether it has
// one (a string cell's text parsed with wantNumber).
void yyGridWidgetGetSingleCellDataX(Widget grid, int column, int row, bool wantNumber, std::string& text,
                                    double& number, bool& defined);
bool yyGridCanPaste(Widget grid);
// The text clipboard beneath: put a text, read the text there (false: none).
bool yyGridClipboardPut(Widget w, std::string_view text);
bool yyGridClipboardGet(Widget w, std::string& text);

// What a grid window does with a message before the application sees it:
// its exposures are its own, a new size is the grid's.
struct MessageRecord;
void yyGridProcessMessage(int& type, MessageRecord& record);
