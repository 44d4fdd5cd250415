// Grid windows inside the toolkit: the record of each, and what the grid's
// other sources and the tests reach them by.
#pragma once

#include <X11/Intrinsic.h>

#include <string>

#include "toolkit/dialog/dialog_private.h"

// Menu items of a grid window; the window handles them before the application.
namespace grid_item {
inline constexpr int kFile = 32100, kNew = 32101, kOpen = 32102, kSave = 32103, kSaveAs = 32104, kPrint = 32105,
                     kPrintSelection = 32106, kExit = 32108, kSaveSelection = 32109, kSaveHtml = 32110;
inline constexpr int kEdit = 32120, kCut = 32122, kCopy = 32123, kPaste = 32124, kDelete = 32125,
                     kSelectAll = 32126, kSort = 32128, kInsertBefore = 32129, kInsertAfter = 32130,
                     kDeleteRow = 32131;
inline constexpr int kSearch = 32140, kFind = 32141, kFindNext = 32142, kGotoCell = 32144, kGotoRow = 32145,
                     kGotoColumn = 32146;
}  // namespace grid_item

// The toolkit's dialogs of a grid window, and their fields.
namespace grid_dialog {
inline constexpr int kFind = 32106, kGotoCell = 32107, kGotoOne = 32108, kSort = 32109;
inline constexpr int kFindText = 1002, kFindByRows = 1003, kFindNumbers = 1004, kFindMatchCase = 1007;
inline constexpr int kGotoColumn = 1002, kGotoRow = 1004, kGotoLabel = 1012, kGotoNumber = 1002;
inline constexpr int kSortColumn = 1002, kSortAscending = 1004, kSortDescending = 1005, kSortMatchCase = 1007;
}  // namespace grid_dialog

struct GridWindowData {
  FieldRecord gridField;  // the grid's own record, apart from the dialog it came from
  DialogRecord host;      // what the grid was built in: the window's client area
  int toolbar = 0;        // 1 while the window shows its toolbar
  int windowHandle = 0;
  int ownerDialog = 0;
  int options = 0;
  int mode = 2;
  int fileTypeIndex = 1;
  int fileFlags = 0;
  int findOptions = 2;
  std::string fileName, savedTitle, findText, fileFilter;
  bool modified = false, statusBar = false, canSave = false;
  // The sort dialog's last choices.
  int sortOrder = 1;  // 1 ascending, 2 descending
  int sortMatchCase = 0;
  int shownColumn = -1, shownRow = -1;  // what the status bar shows
};

// The widget follows a new row count of the values and what they hold; the
// current cell stays, with the keyboard if it had it.
void yyGridShowRows(Widget grid);

// The record of a grid window, null for any other window.
GridWindowData* yyGridWindowData(int handle);
// The grid of the current window when it is a grid window, else null.
Widget yyGridWindowGrid();
Widget yyGridWindowGridOf(int handle);
// The mode word of a grid window, 0 for others.
int yyGridWindowMode(int handle);
// Items 6, 7, 14 of the last modal grid window that closed.
int yyGridWindowLastResult(int item);

// The current cell or the selection of the window's grid changed: the status
// bar and the items that need a selection follow. `cellCode` is the packed
// code of the cell becoming current, -1 for a change of the selection.
void yyGridWindowNotice(int handle, int cellCode);
// A menu command of the window as the user's choice runs it; false when it
// is the application's to handle.
bool yyGridWindowCommand(int handle, int item);
// The state of a menu item of the window: true enabled, false greyed or absent.
bool yyGridWindowItemEnabled(int handle, int item);
bool yyGridWindowHasItem(int handle, int item);

// The commands behind the menu; `mode` 1 shows the dialog or file selector.
void yygridwinload_(GridWindowData& w, int mode, std::string_view filename = {});
// True when saved; `prompt` asks for a name, `selection` saves only it.
bool yygridwinsave_(GridWindowData& w, bool prompt, bool selection = false);
// False when the user cancelled.
bool yygridwinsaveprompt_(GridWindowData& w);
void yygridwinfind_(GridWindowData& w, int mode);
void yygridwingoto_(GridWindowData& w, int mode);
void yygridwinsort_(GridWindowData& w);
void yygridwininsertrow_(GridWindowData& w, int after);
void yygridwindeleterow_(GridWindowData& w);
// Closes the window after asking to save changes; false when the user cancelled.
bool yyGridWinClose(int handle);
void yyGridTitle(GridWindowData& w);
