// Grid windows: a grid field moved into a child window of its own, with a
// menu and a status bar, edited there as a small spreadsheet. The window sees
// each of its messages before the application; a command it handles in full
// never reaches the application.
#include <X11/IntrinsicP.h>
#include <X11/keysym.h>
#include <Xm/Text.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_commands.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/grid/grid_rows.h"
#include "toolkit/grid/grid_window_private.h"
#include "toolkit/grid/grid_output.h"
#include "toolkit/kernel/comdlg_attach.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/message_private.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/toolbar.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"
#include "toolkit/os/files.h"

namespace {

constexpr int kGridKind = 4;
constexpr int kNoWindow = 1022, kConverted = 1038, kMenuInParent = 1051, kBadMode = 1052, kInitFailed = 1053,
              kInsideChildren = 1057, kNoDialog = 1005, kNotGrid = 1006;
constexpr std::uint32_t kWantReturnAndTab = 0x5000;
constexpr int kToolbarGreyed = 2;
// Message box buttons, icons and answers.
constexpr int kButtonsOk = 0, kButtonsYesNoCancel = 4;
constexpr int kIconError = 1, kIconQuestion = 2, kIconInfo = 4;
constexpr int kAnswerYes = 6, kAnswerNo = 7;
// File selector flags.
constexpr int kSelectSave = 1, kSelectPrompt = 2;
constexpr int kOkButton = 1;
// Modes of going to a cell.
constexpr int kGoCell = 1, kGoRow = 2, kGoColumn = 3;
constexpr std::string_view kDefaultFilter =
    "Comma separated value (CSV) files|*.csv|Tab separated value (TSV) files|*.tsv|All files|*.*|";

using namespace grid_item;

std::array<std::unique_ptr<GridWindowData>, zelvy_win::kSlots>& records() {
  static std::array<std::unique_ptr<GridWindowData>, zelvy_win::kSlots> r;
  return r;
}

// What the last modal grid window left behind (items 6, 7 and 14).
struct LastResult {
  int saved = 1, changed = 0, mode = 0;
};
LastResult& last_result() {
  static LastResult r;
  return r;
}

// The grid window a field id of 0 names when the selected window is no grid
// window: the one the user worked in last.
int& active_window() {
  static int h = 0;
  return h;
}

Widget grid_of(GridWindowData& w) { return yyGridOfField(w.gridField); }
GridPart& part_of(GridWindowData& w) { return yyGridPart(grid_of(w)); }
GridModel& model_of(GridWindowData& w) { return part_of(w).st->model; }

void clear_flags(GridWindowData& w) { model_of(w).modified = model_of(w).changed = false; }

bool has(int options, int bit) { return (options & bit) != 0; }

// The error state as it stood, put back after a command that looked at it.
struct KeptError {
  int ierr = zelvy_data::data().ierr;
  ~KeptError() { zelvy_data::data().ierr = ierr; }
};

void tell(int icon, std::string_view text, std::string_view title) { yyComdlgAsk(kButtonsOk, icon, 1, text, title); }

// ---- Menu ------------------------------------------------------------------------

std::vector<MenuDescriptor> menu_items(int o, bool readOnly) {
  using namespace grid_window;
  constexpr int ctrl = 4, shift = 1;
  auto head = [](bool inc, const char* t, const char* tip, int id) {
    return MenuDescriptor{inc, t, 0, tip, id, kMenuHasSub, 0, 0, 0};
  };
  auto item = [](bool inc, std::string t, int mn, const char* tip, int id, int mods = 0, int k = 0, int k2 = 0) {
    return MenuDescriptor{inc, std::move(t), mn, tip, id, 0, mods, k, k2};
  };
  auto sep = [](bool inc) { return MenuDescriptor{inc, "", -1, "", 0, kMenuSeparator, 0, 0, 0}; };
  const bool save = !has(o, kNoSave), saveAs = save && !has(o, kNoSaveAs), html = save && !has(o, kNoHtml);
  const bool print = !has(o, kNoPrint), newOpen = !has(o, kNoNewOpen);
  const bool rows = has(o, kRowCommands) && !readOnly;
  const bool find = !has(o, kNoFind), go = !has(o, kNoGoto);
  return {
      head(true, "File", "Commands to Load and Save files", kFile),
      item(newOpen && !readOnly, "New\bCtrl+N", 0, "Clears the grid", kNew, ctrl, 'n', 'N'),
      item(newOpen, "Open\bCtrl+O", 0, "Loads an existing grid", kOpen, ctrl, 'o', 'O'),
      item(save && !readOnly, "Save\bCtrl+S", 0, "Saves the grid", kSave, ctrl, 's', 'S'),
      item(saveAs, "Save As\bF12", 5, "Saves the grid with a new name", kSaveAs, 0, XK_F12),
      item(saveAs, "Save Selection", 6, "Saves the selected cells", kSaveSelection),
      item(html, "Save As HTML", 8, "Saves the grid as an HTML document", kSaveHtml),
      sep(newOpen || save),
      item(print, "Print\bCtrl+P", 0, "Prints the grid", kPrint, ctrl, 'p', 'P'),
      item(print, "Print Selection", 4, "Prints the selected cells", kPrintSelection),
      sep(print),
      item(true, "Exit", 1, "Closes the grid; prompts you to save changes", kExit),
      head(true, "Edit", "Commands for editing and sorting cells", kEdit),
      // Cut, Copy, Paste and Delete stay with the cell being edited: no accelerator.
      item(!readOnly, "Cut\bCtrl+X", 2, "Cuts the selected cells and places them on the clipboard", kCut),
      item(true, "Copy\bCtrl+C", 0, "Copies the selected cells and places them on the clipboard", kCopy),
      item(!readOnly, "Paste\bCtrl+V", 0, "Inserts clipboard contents", kPaste),
      item(!readOnly, "Delete\bDel", 0, "Clears the selected cells", kDelete),
      sep(true),
      item(true, "Select All\bCtrl+A", 7, "Selects the entire grid", kSelectAll, ctrl, 'a', 'A'),
      sep(!readOnly),
      item(!readOnly, "Sort", 0, "Sorts the rows of the grid", kSort),
      item(rows, "Insert Row Before Current\bCtrl+I", 0, "Inserts a row into the grid, before the current row",
           kInsertBefore, ctrl, 'i', 'I'),
      item(rows, "Insert Row After Current\bCtrl+Shift+I", 0, "Inserts a row into the grid, after the current row",
           kInsertAfter, ctrl + shift, 'i', 'I'),
      item(rows, "Delete Row\bCtrl+E", 1, "Deletes a row from the grid", kDeleteRow, ctrl, 'e', 'E'),
      head(find || go, "Search", "Commands for searching and navigation", kSearch),
      item(find, "Find\bCtrl+F", 0, "Finds the specified string value", kFind, ctrl, 'f', 'F'),
      item(find, "Find Next\bF3", 5, "Repeats the last find", kFindNext, 0, XK_F3, XK_KP_F3),
      sep(find && go),
      item(go, "Goto Cell\bCtrl+G", 0, "Moves to the specified cell", kGotoCell, ctrl, 'g', 'G'),
      item(go, "Goto Row", 7, "Moves to the specified row", kGotoRow),
      item(go, "Goto Column", 5, "Moves to the specified column", kGotoColumn),
  };
}

MenuRecord* menu_of(int h) { return zelvy_menu::state().pwRootMenuSub[static_cast<std::size_t>(h)].get(); }

// An item greyed or enabled; a toolbar button of the item follows, menu or not.
void set_item(int h, int id, bool on) {
  MenuRecord* m = menu_of(h);
  const int i = m ? m->find(id) : -1;
  if (i < 0) {
    const int state = yyMenuToolbarButtonState(h, id);
    if (state >= 0) yyMenuSetToolbarIdent(h, id, on ? state & ~kToolbarGreyed : state | kToolbarGreyed);
    return;
  }
  std::uint32_t& fl = m->ItemFlags[static_cast<std::size_t>(i)];
  const std::uint32_t before = fl;
  fl = on ? (fl & ~kMenuGreyed) : (fl | kMenuGreyed);
  if (fl != before && m->Created) menu_detail::yyMenuDrawItem(*m, i);
  if (fl != before) yyMenuSetToolbarIdent(h, id, static_cast<int>(fl & (kMenuGreyed | kMenuChecked)));
}

// ---- Toolbar ----------------------------------------------------------------------

// The buttons by the same rules as their menu items; every row keeps its
// picture's place in the strip whether it is shown or not.
std::vector<ToolbarDescriptor> toolbar_rows(int o, bool readOnly) {
  using namespace grid_window;
  const bool newOpen = !has(o, kNoNewOpen), save = !has(o, kNoSave) && !readOnly, print = !has(o, kNoPrint);
  const bool rows = has(o, kRowCommands) && !readOnly;
  const bool find = !has(o, kNoFind), go = !has(o, kNoGoto);
  const bool files = newOpen || save || print;
  return {
      {newOpen && !readOnly, "New", kNew},
      {newOpen, "Open", kOpen},
      {save, "Save", kSave},
      {print, "Print", kPrint},
      {files, "", 0},
      {!readOnly, "Cut", kCut},
      {true, "Copy", kCopy},
      {!readOnly, "Paste", kPaste},
      {!readOnly, "", 0},
      {!readOnly, "Sort", kSort},
      {rows, "Insert Row Before Current", kInsertBefore},
      {rows, "Insert Row After Current", kInsertAfter},
      {rows, "Delete Row", kDeleteRow},
      {find || go, "", 0},
      {find, "Find", kFind},
      {go, "Goto Cell", kGotoCell},
  };
}

void build_toolbar(GridWindowData& w) {
  const int h = w.windowHandle;
  const bool large = has(w.options, grid_window::kLargeToolbar);
  constexpr int kSmallStrip = 32110, kLargeStrip = 32118, kSmall = 16, kLarge = 32;
  const std::vector<ToolbarDescriptor> rows = toolbar_rows(w.options, part_of(w).readOnly);
  yyMenuLoadDynamicToolbar(rows, h, large ? kLargeStrip : kSmallStrip, large ? kLarge : kSmall);
  w.toolbar = yyMenuToolbarThickness(h, kToolbarTop) > 0 ? 1 : 0;
  if (!w.toolbar) return;
  // The buttons start as their items stand.
  MenuRecord* m = menu_of(h);
  for (const ToolbarDescriptor& row : rows) {
    const int i = row.include && row.id != 0 && m ? m->find(row.id) : -1;
    if (i >= 0)
      yyMenuSetToolbarIdent(h, row.id,
                            static_cast<int>(m->ItemFlags[static_cast<std::size_t>(i)] & (kMenuGreyed | kMenuChecked)));
  }
}

void build_menu(GridWindowData& w, int menuid) {
  const int h = w.windowHandle;
  const bool readOnly = part_of(w).readOnly;
  const std::vector<MenuDescriptor> items = menu_items(w.options, readOnly);
  std::unique_ptr<MenuRecord> menu = yyMenuLoadDynamicMenu(items);
  AccelTable accel = yyMenuLoadDynamicAccel(items);
  if (menuid > 0) {
    MenuRecord app;
    int status = 0;
    yyMenuLoad(menuid, app, status);
    if (status == 0) menu = yyMenuMergeMenus(*menu, app);
  }
  yyMenuKindPush(h, std::move(menu), std::move(accel));
  set_item(h, kFindNext, false);
  if (readOnly)
    for (int id : {kCut, kCopy, kPaste, kDelete}) set_item(h, id, false);
}

// ---- Layout and status -------------------------------------------------------------

void fit(GridWindowData& w) {
  const WindowRecord& r = zelvy_win::state().WinInfo[w.windowHandle];
  if (w.gridField.widget)
    XtConfigureWidget(w.gridField.widget, 0, 0, static_cast<Dimension>(std::max(1, r.ClientWidth)),
                      static_cast<Dimension>(std::max(1, r.ClientHeight)), 0);
}

void client_configured(Widget, XtPointer client, XEvent* ev, Boolean*) {
  if (ev->type != ConfigureNotify) return;
  if (GridWindowData* w = yyGridWindowData(static_cast<int>(reinterpret_cast<std::intptr_t>(client)))) fit(*w);
}

// The status bar's row and column, and the items that need a selection. A
// cell code given is the cell about to become current.
void refresh(GridWindowData& w, int cellCode = -1) {
  Widget grid = grid_of(w);
  if (!grid) return;
  const GridPart& g = yyGridPart(grid);
  constexpr int kRowsPerCode = 262144;
  const int row = cellCode > 0 ? (cellCode % kRowsPerCode) - 1 : g.irow;
  const int column = cellCode > 0 ? cellCode / kRowsPerCode - 1 : g.icol;
  if (w.statusBar && (row != w.shownRow || column != w.shownColumn)) {
    w.shownRow = row;
    w.shownColumn = column;
    WindowOutStatusBar(2, "\t\t" + std::to_string(row + 1), w.windowHandle);
    WindowOutStatusBar(4, "\t\t" + std::to_string(column + 1), w.windowHandle);
  }
  const bool sel = g.st->selectionOn;
  for (int id : {kSaveSelection, kPrintSelection}) set_item(w.windowHandle, id, sel);
  // Paste is judged where it would go: at the cell becoming current.
  GridPart& gp = yyGridPart(grid);
  const int oldColumn = gp.icol, oldRow = gp.irow;
  if (g.st->model.inside(column, row)) {
    gp.icol = column;
    gp.irow = row;
  }
  const bool paste = yyGridCanPaste(grid);
  gp.icol = oldColumn;
  gp.irow = oldRow;
  set_item(w.windowHandle, kPaste, paste);
}

void shutdown(int h) {
  auto& slot = records()[static_cast<std::size_t>(h)];
  if (!slot) return;
  if (slot->mode == 1) {
    const GridModel& m = model_of(*slot);
    last_result() = LastResult{m.modified ? 0 : 1, m.changed ? 1 : 0, slot->options};
  }
  if (slot->mode == 3) yyMsgSemiModelessStack(-1, 1, h);
  if (Widget client = zelvy_win::state().wtClient[h])
    XtRemoveEventHandler(client, StructureNotifyMask, False, client_configured,
                         reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(h)));
  slot.reset();
}

// ---- Checks of the row commands ------------------------------------------------------

// Any read-only cell in rows first..last (0-based) refuses a command that moves them.
bool rows_locked(GridWindowData& w, int first, int last) {
  if (has(w.options, grid_window::kNoReadOnlyCheck)) return false;
  for (const GridColumn& c : model_of(w).columns)
    for (int r = std::max(first, 0); r <= last && r < static_cast<int>(c.cellFlags.size()); ++r)
      if (c.cellFlags[static_cast<std::size_t>(r)] & grid_cell::kReadOnly) return true;
  return false;
}

bool row_command_allowed(GridWindowData& w, int item) {
  const GridPart& g = part_of(w);
  if (g.readOnly) return false;
  const int rows = g.st->model.rows, current = g.irow;
  switch (item) {
    case kSort: return !rows_locked(w, 0, rows - 1);
    case kInsertBefore:
    case kDeleteRow: return !rows_locked(w, current, rows - 1);
    case kInsertAfter:
      if (current + 1 >= g.maxNrow) return false;
      if (current == rows - 1 && !has(w.options, grid_window::kRowsFollow)) return false;
      return !rows_locked(w, current + 1, rows - 1);
    default: return true;
  }
}

// ---- Small dialogs -----------------------------------------------------------------

// Loads one of the window's dialogs; false, after telling the user, when it
// isn't in the resources.
bool load_dialog(int id, std::string_view failure) {
  KeptError kept;
  zelvy_data::data().ierr = 0;
  WDialogLoad(id);
  if (zelvy_data::data().ierr != 0) {
    tell(kIconError, failure, "Error");
    return false;
  }
  return true;
}

// Shows the loaded dialog modally; true when it ended with OK.
bool run_dialog() {
  WDialogShow(-1, -1, 0, 1);
  return zelvy_dialog::state().iModalButton == kOkButton;
}

// Unloads the window's dialog, and the dialog that was current before comes back.
struct DialogScope {
  int previous = zelvy_data::data().icurdialog;
  ~DialogScope() {
    WDialogUnload();
    if (previous != 0) {
      KeptError kept;
      WDialogSelect(previous);
    }
  }
};

}  // namespace

// ---- Shared with the grid's other sources ---------------------------------------------

GridWindowData* yyGridWindowData(int handle) {
  if (handle < 1 || handle >= zelvy_win::kSlots) return nullptr;
  return records()[static_cast<std::size_t>(handle)].get();
}

Widget yyGridWindowGridOf(int handle) {
  GridWindowData* w = yyGridWindowData(handle);
  return w ? grid_of(*w) : nullptr;
}

Widget yyGridWindowGrid() {
  if (Widget grid = yyGridWindowGridOf(zelvy_win::state().iWinCur)) return grid;
  return yyGridWindowGridOf(active_window());
}

int yyGridWindowMode(int handle) {
  GridWindowData* w = yyGridWindowData(handle);
  return w ? w->options : 0;
}

int yyGridWindowLastResult(int item) {
  switch (item) {
    case 6: return last_result().saved;
    case 7: return last_result().changed;
    case 14: return last_result().mode;
    default: return 0;
  }
}

void yyGridWindowNotice(int handle, int cellCode) {
  GridWindowData* w = yyGridWindowData(handle);
  if (!w) return;
  refresh(*w, cellCode);
}

bool yyGridWindowHasItem(int handle, int item) {
  MenuRecord* m = menu_of(handle);
  return m && m->find(item) >= 0;
}

bool yyGridWindowItemEnabled(int handle, int item) {
  MenuRecord* m = menu_of(handle);
  const int i = m ? m->find(item) : -1;
  return i >= 0 && !m->greyed(i);
}

void yyGridTitle(GridWindowData& w) {
  std::string t = w.savedTitle;
  if (!w.fileName.empty()) t += " - [" + w.fileName + "]";
  auto& r = zelvy_win::state().WinInfo[w.windowHandle];
  if (r.Title == t) return;
  r.Title = t;
  yyWindowTitle(w.windowHandle, t);
}

// ---- Files --------------------------------------------------------------------------

void yygridwinload_(GridWindowData& w, int mode, std::string_view filename) {
  std::string name(filename);
  if (mode == 1) {
    const std::string filter = w.fileFilter.empty() ? std::string(kDefaultFilter) : w.fileFilter;
    auto chosen = yyComdlgChooseFile(filter, 0, w.fileName, "Open", &w.fileTypeIndex);
    if (!chosen) return;
    name = *chosen;
  }
  if (name.empty()) return;
  KeptError kept;
  zelvy_data::data().ierr = 0;
  WGridLoad(0, name, has(w.options, grid_window::kRowsFollow) ? 1 : 0, 0);
  const int error = zelvy_data::data().ierr;
  switch (error) {
    case 1: tell(kIconError, "Error opening file", "File Error"); break;
    case 2: tell(kIconError, "Error reading file", "File Error"); break;
    case 11: case 12: tell(kIconError, "Non-numeric data found for numeric cell", "Data Error"); break;
    case 4: case 1009: tell(kIconError, "Out of range value found for numeric cell", "Data Error"); break;
    case 1054: tell(kIconError, "File contains too many rows/columns", "Data Error"); break;
    case 1055: tell(kIconError, "Non-matching data found for menu cell", "Data Error"); break;
    default: break;
  }
  // A file that couldn't be read leaves the grid and its name as they were.
  if (error != 1 && error != 2) {
    w.fileName = name;
    yyGridTitle(w);
  }
  int e = 0;
  if (model_of(w).rows > 0 && model_of(w).columnCount() > 0) yygridsetcell_(0, 0, 0, e);
}

bool yygridwinsave_(GridWindowData& w, bool prompt, bool selection) {
  std::string name = w.fileName;
  if (prompt || name.empty()) {
    const std::string filter = w.fileFilter.empty() ? std::string(kDefaultFilter) : w.fileFilter;
    auto chosen = yyComdlgChooseFile(filter, kSelectSave | kSelectPrompt, name, "Save As", &w.fileTypeIndex);
    if (!chosen) return false;
    name = *chosen;
  }
  struct stat st {};
  if (has(w.options, grid_window::kBackup) && ::stat(name.c_str(), &st) == 0) IOsCopyFile(name, name + ".bak");
  KeptError kept;
  zelvy_data::data().ierr = 0;
  const GridState& s = *part_of(w).st;
  if (selection && s.selectionOn)
    WGridSave(0, name, s.selC1 + 1, s.selC2 + 1, s.selR1 + 1, s.selR2 + 1, 0);
  else
    WGridSave(0, name);
  const int error = zelvy_data::data().ierr;
  if (error == 1) tell(kIconError, "Error opening file", "File Error");
  if (error == 2) tell(kIconError, "Error writing file", "File Error");
  if (error) return false;
  if (!selection) {
    w.fileName = name;
    model_of(w).modified = false;
    yyGridTitle(w);
  }
  return true;
}

bool yygridwinsaveprompt_(GridWindowData& w) {
  if (!model_of(w).modified || has(w.options, grid_window::kNoPrompt)) return true;
  const std::string text = w.fileName.empty() ? std::string("Do you want to save changes?")
                                              : "Do you want to save changes to " + w.fileName + "?";
  const int answer = yyComdlgAsk(kButtonsYesNoCancel, kIconQuestion, 1, text, w.savedTitle);
  if (answer == kAnswerYes) return yygridwinsave_(w, w.fileName.empty());
  return answer == kAnswerNo;
}

// ---- Find, go to, sort -------------------------------------------------------------

void yygridwinfind_(GridWindowData& w, int mode) {
  bool strings = false, numbers = false;
  for (const GridColumn& c : model_of(w).columns) {
    strings = strings || c.cellType == grid_type::kString;
    numbers = numbers || grid_type::numeric(c.cellType);
  }
  if (!strings && !numbers) return tell(kIconInfo, "Grid contains no searchable columns", "Find");
  if (!strings) w.findOptions |= grid_find::kNumbersToo;
  if (!numbers) w.findOptions &= ~grid_find::kNumbersToo;
  if (mode == 1) {
    if (!load_dialog(grid_dialog::kFind, "Unable to load grid find dialog")) return;
    DialogScope scope;
    using namespace grid_dialog;
    WDialogPutString(kFindText, w.findText);
    WDialogPutCheckBox(kFindMatchCase, (w.findOptions & grid_find::kIgnoreCase) ? 0 : 1);
    WDialogPutCheckBox(kFindNumbers, (w.findOptions & grid_find::kNumbersToo) ? 1 : 0);
    WDialogPutCheckBox(kFindByRows, (w.findOptions & grid_find::kByRows) ? 1 : 0);
    if (!strings || !numbers) WDialogFieldState(kFindNumbers, 0);
    if (!run_dialog()) return;
    int matchCase = 0, searchNumbers = 0, byRows = 0;
    WDialogGetString(kFindText, w.findText);
    while (!w.findText.empty() && w.findText.back() == ' ') w.findText.pop_back();
    WDialogGetCheckBox(kFindMatchCase, matchCase);
    WDialogGetCheckBox(kFindNumbers, searchNumbers);
    WDialogGetCheckBox(kFindByRows, byRows);
    w.findOptions = (matchCase ? 0 : grid_find::kIgnoreCase) | (searchNumbers ? grid_find::kNumbersToo : 0) |
                    (byRows ? grid_find::kByRows : 0);
  }
  if (w.findText.empty()) return;
  set_item(w.windowHandle, kFindNext, true);
  bool found = false;
  WGridFind(0, w.findText, w.findOptions | grid_find::kFromCurrent, &found);
  if (!found) tell(kIconInfo, "End of grid reached", "Find");
}

void yygridwingoto_(GridWindowData& w, int mode) {
  const GridPart& g = part_of(w);
  const int ncol = g.st->model.columnCount(), nrow = g.st->model.rows;
  namespace gd = grid_dialog;
  int column = g.icol + 1, row = g.irow + 1;
  if (mode == kGoCell) {
    if (!load_dialog(gd::kGotoCell, "Unable to load grid go to dialog")) return;
    DialogScope scope;
    WDialogPutInteger(gd::kGotoColumn, column);
    WDialogPutInteger(gd::kGotoRow, row);
    WDialogRangeInteger(gd::kGotoColumn, 1, ncol);
    WDialogRangeInteger(gd::kGotoRow, 1, nrow);
    if (!run_dialog()) return;
    WDialogGetInteger(gd::kGotoColumn, column);
    WDialogGetInteger(gd::kGotoRow, row);
  } else {
    if (!load_dialog(gd::kGotoOne, "Unable to load grid go to dialog")) return;
    DialogScope scope;
    const bool byRow = mode == kGoRow;
    WDialogTitle(byRow ? "Goto Row" : "Goto Column");
    WDialogPutString(gd::kGotoLabel, byRow ? "&Row" : "&Column");
    WDialogPutInteger(gd::kGotoNumber, byRow ? row : column);
    WDialogRangeInteger(gd::kGotoNumber, 1, byRow ? nrow : ncol);
    if (!run_dialog()) return;
    WDialogGetInteger(gd::kGotoNumber, byRow ? row : column);
  }
  if (column < 1 || column > ncol || row < 1 || row > nrow) return;
  int e = 0;
  yygridsetcell_(0, column - 1, row - 1, e);
}

void yygridwinsort_(GridWindowData& w) {
  const GridPart& g = part_of(w);
  const GridModel& m = g.st->model;
  if (m.columnCount() < 1) return;
  if (!load_dialog(grid_dialog::kSort, "Unable to load grid sort dialog")) return;
  using namespace grid_dialog;
  int column = g.icol + 1, order = 1, matchCase = 0;
  {
    DialogScope scope;
    std::vector<std::string> names;
    for (int c = 0; c < m.columnCount(); ++c) {
      const std::string& label = m.columns[static_cast<std::size_t>(c)].label;
      names.push_back(label.empty() ? "Column " + std::to_string(c + 1) : label);
    }
    WDialogPutMenu(kSortColumn, names, static_cast<int>(names.size()), column);
    WDialogPutRadioButton(w.sortOrder == 2 ? kSortDescending : kSortAscending);
    WDialogPutCheckBox(kSortMatchCase, w.sortMatchCase);
    if (!run_dialog()) return;
    WDialogGetMenu(kSortColumn, column);
    WDialogGetRadioButton(kSortAscending, order);
    WDialogGetCheckBox(kSortMatchCase, matchCase);
  }
  w.sortOrder = order == 2 ? 2 : 1;
  w.sortMatchCase = matchCase ? 1 : 0;
  const int options = (w.sortOrder == 2 ? grid_sort::kDescending : 0) | (matchCase ? 0 : grid_sort::kIgnoreCase) |
                      (has(w.options, grid_window::kMoveLabels) ? grid_sort::kMoveLabels : 0);
  WGridSort(0, std::clamp(column, 1, m.columnCount()), options);
}

// ---- Rows ------------------------------------------------------------------------------

void yygridwininsertrow_(GridWindowData& w, int after) {
  const GridPart& g = part_of(w);
  const int rows = g.st->model.rows, target = g.irow + 1 + after;
  const bool follow = has(w.options, grid_window::kRowsFollow);
  if (target > rows) {
    // After the last row: the grid grows by an empty row, when it may.
    if (follow) WGridRows(0, rows + 1);
    return;
  }
  WGridInsertRows(0, target, 1, follow ? 1 : 0, has(w.options, grid_window::kMoveLabels) ? 1 : 0);
}

void yygridwindeleterow_(GridWindowData& w) {
  Widget grid = grid_of(w);
  GridPart& g = yyGridPart(grid);
  GridModel& m = g.st->model;
  const bool follow = has(w.options, grid_window::kRowsFollow);
  const bool labels = has(w.options, grid_window::kMoveLabels);
  if (follow && m.rows == 1) {
    // The last row stays, emptied.
    for (GridColumn& c : m.columns) yyGridModelClear(c, 0);
    if (labels) {
      m.rowLabels[0].clear();
      m.rowLabelFlags[0] = 0;
    }
    yyGridWidgetUpdateViewportData(grid, true);
    return;
  }
  WGridDeleteRows(0, g.irow + 1, 1, follow ? 1 : 0, labels ? 1 : 0);
}

// ---- Commands ---------------------------------------------------------------------------

bool yyGridWinClose(int handle) {
  GridWindowData* w = yyGridWindowData(handle);
  if (!w || !yygridwinsaveprompt_(*w)) return false;
  if (w->mode == 1) yyMsgModalEnd();
  WindowCloseChild(handle);
  return true;
}

bool yyGridWindowCommand(int handle, int item) {
  GridWindowData* wp = yyGridWindowData(handle);
  if (!wp) return false;
  GridWindowData& w = *wp;
  active_window() = handle;
  Widget grid = grid_of(w);
  GridModel& m = model_of(w);
  switch (item) {
    case kNew:
      if (!yygridwinsaveprompt_(w)) return true;
      for (GridColumn& c : m.columns)
        for (int r = 0; r < m.rows; ++r) yyGridModelClear(c, r);
      yyGridWidgetUpdateViewportData(grid, true);
      w.fileName.clear();
      yyGridTitle(w);
      clear_flags(w);
      return true;
    case kOpen:
      if (!yygridwinsaveprompt_(w)) return true;
      yygridwinload_(w, 1);
      clear_flags(w);
      yyGridTitle(w);
      return true;
    case kSave: yygridwinsave_(w, false); return true;
    case kSaveAs: yygridwinsave_(w, true); return true;
    case kSaveSelection: yygridwinsave_(w, true, true); return true;
    case kExit: yyGridWinClose(handle); return true;
    case kCut:
      if (yyGridPart(grid).st->selectionOn) yyGridWidgetSelCellCutX(grid);
      else if (Widget cell = yyGridGetEditCell(grid); cell && yyGridCanCut(grid)) XmTextCut(cell, CurrentTime);
      return true;
    case kCopy:
      if (yyGridPart(grid).st->selectionOn) yyGridWidgetSelCellCopyX(grid);
      else if (Widget cell = yyGridGetEditCell(grid)) XmTextCopy(cell, CurrentTime);
      return true;
    case kPaste: yyGridWidgetSelCellPasteX(grid); return true;
    case kDelete:
      if (!yyGridCanCut(grid)) return true;
      if (yyGridPart(grid).st->selectionOn) yyGridWidgetSelCellDelX(grid, false);
      else if (Widget cell = yyGridGetEditCell(grid)) XmTextRemove(cell);
      return true;
    case kSelectAll:
      if (m.columnCount() > 0 && m.rows > 0) yyGridWidgetSelectX(grid, true, 0, 0, m.columnCount() - 1, m.rows - 1);
      return true;
    case kSort:
    case kInsertBefore:
    case kInsertAfter:
    case kDeleteRow:
      if (!row_command_allowed(w, item)) return true;
      if (item == kSort) yygridwinsort_(w);
      else if (item == kDeleteRow) yygridwindeleterow_(w);
      else yygridwininsertrow_(w, item == kInsertAfter ? 1 : 0);
      if (yyGridWindowData(handle)) clear_flags(w);
      return true;
    case kFind: yygridwinfind_(w, 1); return true;
    case kFindNext: yygridwinfind_(w, 2); return true;
    case kGotoCell: yygridwingoto_(w, kGoCell); return true;
    case kGotoRow: yygridwingoto_(w, kGoRow); return true;
    case kGotoColumn: yygridwingoto_(w, kGoColumn); return true;
    case kSaveHtml:
    case kPrint:
    case kPrintSelection: {
      // Rectangles from 1; 0 takes the whole grid.
      const GridState& gs = *yyGridPart(grid).st;
      const bool sel = item != kPrint && gs.selectionOn;
      const int c1 = sel ? gs.selC1 + 1 : 0, r1 = sel ? gs.selR1 + 1 : 0;
      const int c2 = sel ? gs.selC2 + 1 : 0, r2 = sel ? gs.selR2 + 1 : 0;
      int ok = 0;
      if (item == kSaveHtml) yygridwinsavehtml_(handle, c1, r1, c2, r2, ok);
      else yygridwinprint_(handle, c1, r1, c2, r2);
      return true;
    }
    default: return false;  // the application's own items
  }
}

void yyGridProcessMessage(int& type, MessageRecord& record) {
  const int h = record.Win;
  GridWindowData* w = yyGridWindowData(h);
  if (!w) return;
  // The grid draws itself: nothing to repaint for the application.
  if (type == ExposeMessage) {
    type = 0;
    return;
  }
  active_window() = h;
  if (type == Resize) fit(*w);
  if (type == MenuSelect && yyGridWindowCommand(h, record.Value1)) type = 0;
  if ((w = yyGridWindowData(h))) refresh(*w);
}

// ---- Opening -------------------------------------------------------------------------------

void yygridedit_(int fieldid, int mode, int menuid, int options, std::string_view filename,
                 std::optional<std::string_view> filter) {
  constexpr const char* kRoutine = "yygridedit_";
  auto& ws = zelvy_win::state();
  const int h = ws.iWinCur;
  if (h < 1 || h >= zelvy_win::kSlots || !yywindowexists(h) || !xdisplay()) return yyerror(kNoWindow, kRoutine);
  if (ws.WinInfo[h].Kind != 0) return yyerror(kConverted, kRoutine);
  for (int c = 1; c <= ws.iWinMax; ++c)
    if (c != h && ws.wWindow[c] && ws.WinInfo[c].Parent == h && !ws.wtShell[c]) return yyerror(kInsideChildren, kRoutine);
  const bool insideParent = !ws.wtShell[h];
  if (insideParent && has(options, grid_window::kMenu)) return yyerror(kMenuInParent, kRoutine);
  if (mode < 1 || mode > 3 || (insideParent && mode != 2)) {
    yyerror(kBadMode, kRoutine);
    mode = 2;
  }
  auto& ds = zelvy_dialog::state();
  if (zelvy_data::data().icurdialog == 0 || ds.iDlgCur < 0 || ds.wDialogInfo[ds.iDlgCur].identifier == -1)
    return yyerror(kNoDialog, kRoutine);
  DialogRecord& owner = ds.wDialogInfo[ds.iDlgCur];
  const int fi = yyDialogFindField(fieldid, ds.iDlgCur);
  Widget original = fi >= 0 ? yyGridOfField(owner.fields[static_cast<std::size_t>(fi)]) : nullptr;
  if (!original) return yyerror(kNotGrid, kRoutine);
  const FieldRecord& of = owner.fields[static_cast<std::size_t>(fi)];

  auto rec = std::make_unique<GridWindowData>();
  GridWindowData& w = *rec;
  w.windowHandle = h;
  w.ownerDialog = owner.identifier;
  w.options = options;
  w.mode = mode;
  w.fileFilter = std::string(filter.value_or(""));
  w.savedTitle = ws.WinInfo[h].Title.value_or("");
  w.host.resourceId = owner.resourceId;
  w.host.fontIndex = owner.fontIndex;
  w.host.widget = ws.wtClient[h];
  FieldRecord& f = w.gridField;
  f.identifier = of.identifier;
  f.type = of.type;
  f.style = of.style | kWantReturnAndTab;
  f.extendedStyle = of.extendedStyle;
  f.extraFlags = of.extraFlags;
  f.fontIndex = of.fontIndex;
  f.width = std::max(1, ws.WinInfo[h].ClientWidth);
  f.height = std::max(1, ws.WinInfo[h].ClientHeight);
  if (!w.host.widget) return yyerror(kInitFailed, kRoutine);
  // The cells take the keyboard as a form's fields do.
  XtVaSetValues(w.host.widget, XmNtraversalOn, True, nullptr);
  yyDialogGrid(w.host, f);
  Widget grid = yyGridOfField(f);
  if (!grid) return yyerror(kInitFailed, kRoutine);
  XtManageChild(f.widget);
  GridState& s = *yyGridPart(grid).st;
  s.gridWindow = h;
  s.fieldId = 0;
  yyGridWidgetSetNRowX(grid, yyGridPart(original).nrow);
  clear_flags(w);

  WindowRecord& r = ws.WinInfo[h];
  r.Kind = kGridKind;
  r.KindData = &w;
  r.KindShutdown = shutdown;
  r.Content = f.widget;
  records()[static_cast<std::size_t>(h)] = std::move(rec);
  active_window() = h;

  if (has(options, grid_window::kMenu)) build_menu(w, menuid);
  // The status bar: Row and Column with their numbers.
  w.statusBar = h < static_cast<int>(zelvy_sbar::state().psbarInfo.size()) && zelvy_sbar::state().psbarInfo[h];
  if (w.statusBar) {
    constexpr std::array<int, 4> widths = {30, 60, 50, 60};
    constexpr int kPixels = 1;
    WindowStatusBarParts(static_cast<int>(widths.size()), widths, {}, kPixels);
    WindowOutStatusBar(1, "Row", h);
    WindowOutStatusBar(3, "Column", h);
  }
  if (!has(options, grid_window::kNoToolbar)) {
    build_toolbar(w);
    if (!menu_of(h)) {
      // No menu to carry the states: the buttons take them from here.
      set_item(h, kFindNext, false);
      if (part_of(w).readOnly)
        for (int id : {kCut, kCopy, kPaste, kDelete}) set_item(h, id, false);
    }
  }
  yyWindowResize(h);
  fit(w);
  XtAddEventHandler(ws.wtClient[h], StructureNotifyMask, False, client_configured,
                    reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(h)));
  if (menu_of(h)) yyMenuDrawRoot(h);
  yyGridTitle(w);
  if (!filename.empty()) yygridwinload_(w, 0, filename);
  clear_flags(w);
  int e = 0;
  if (s.model.rows > 0 && s.model.columnCount() > 0) yygridsetcell_(0, 0, 0, e);
  refresh(w);
  if (mode == 3) yyMsgSemiModelessStack(1, 1, h);
  if (mode == 1) {
    yyMsgModalLoop(h);
    if (yywindowexists(0)) WindowSelect(0);
  }
}
