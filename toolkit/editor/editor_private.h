// The editor's records and the routines its sources share: the record on an
// editor window, the parked buffers, the line table.
#pragma once

#include "toolkit/base/check.h"

#include <X11/Intrinsic.h>
#include <X11/Xft/Xft.h>
#include <Xm/Xm.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

inline constexpr int kEditMaxBuffers = 35;

// Option bits of WEditFile.
namespace edit_flag {
constexpr std::uint32_t kWordWrap = 0x1, kMustExist = 0x2, kViewer = 0x4, kCommandLine = 0x8,
                        kHistory = 0x10, kNoToolbar = 0x20, kDirtyMark = 0x80, kNoNewOpen = 0x100,
                        kNoSaveAs = 0x200, kNoPrint = 0x400, kNoSave = 0x2000, kMultiBuffer = 0x4000,
                        kNoClose = 0x8000, kBackup = 0x20000, kCommandAbove = 0x80000,
                        kCoreFont = 0x100000, kNoNameInTitle = 0x400000, kNoMenu = 0x800000,
                        kQuietMissing = 0x1000000, kNeverPrompt = 0x10000000,
                        kHostPrint = 0x40000000, kLargeToolbar = 0x4000000, kCommandFont = 0x800;
}  // namespace edit_flag

// Bits of FindFlags; a fresh search ignores case.
namespace edit_find {
constexpr std::uint32_t kIgnoreCase = 0x2, kUp = 0x4, kWholeWord = 0x10;
}  // namespace edit_find

// Menu item identifiers of the editor.
namespace edit_id {
constexpr int kFile = 32100, kNew = 32101, kOpen = 32102, kSave = 32103, kSaveAs = 32104,
              kPrint = 32105, kPrintSelection = 32106, kClose = 32107, kExit = 32108,
              kEdit = 32120, kShowCaret = 32121, kCut = 32122, kCopy = 32123, kPaste = 32124,
              kDelete = 32125, kSelectAll = 32126, kSearch = 32140, kFind = 32141,
              kFindNext = 32142, kReplace = 32143, kGotoLine = 32144, kSetBookmark = 32147,
              kGotoBookmark = 32148, kFindPrevious = 32149, kView = 32180, kFirstBuffer = 32181,
              kLastBuffer = kFirstBuffer + kEditMaxBuffers - 1;
}  // namespace edit_id

struct EditRecord {
  Widget FocusWidget = nullptr;
  Widget CommandWidget = nullptr;
  Widget CommandText = nullptr;
  Widget PromptLabel = nullptr;
  Widget GoButton = nullptr;
  Window FindWindow = 0;
  XFontStruct* FontStruct = nullptr;
  XmFontList FontList = nullptr;
  XmRenderTable RenderTable = nullptr;
  void* Toolbar = nullptr;
  int Mode = 2;
  std::uint32_t Flags = 0;
  std::array<int, kEditMaxBuffers> FilterIndex{};
  int FontType = 3;
  int FontSize = 0;
  int CurrentBuffer = 1;
  int BufferCount = 1;
  std::array<std::int64_t, kEditMaxBuffers> Bookmark{};
  int InsertState = 0;
  int SelectionState = 0;
  int Window_ = 0;
  int WrapWidth = 1;
  std::vector<std::int32_t> LineStarts;  // size is the capacity
  int LineCount = 0;
  std::vector<std::int32_t> SpareStarts;
  int SpareCount = 0;
  int CommandKind = 0;
  int FindDialogId = 0;
  int FindDialog = -1;
  std::uint32_t FindFlags = 2;
  std::string FileName;
  std::string BaseTitle;
  std::string FileFilter;
  std::string FindString;
  std::string ReplaceString;
  unsigned char Dirty = 0;
  unsigned char Changed = 0;
  unsigned char HasStatusBar = 0;
  unsigned char UsesXft = 0;

  // Not in the table above: the text widget, and a guard that keeps loading
  // and buffer switches from counting as edits.
  Widget Text = nullptr;
  bool Replacing = false;
  XftFont* WrapFont = nullptr;           // widths for word wrap on the Xft path
  std::array<short, 128> AsciiWidth{};   // cached advance widths, 0 not yet measured
  std::string Pending;                   // a large text still going in, and how far it got
  std::size_t PendingFrom = 0;
  XtWorkProcId LoadProc = 0;
  int GotoLine = 1;  // last line asked for in Goto Line
  bool Narrow = false;  // the widget holds a byte a character: plain ASCII only
  std::string Retype;   // a refused non-ASCII change, made again once the widget is wide
  long RetypeFrom = 0, RetypeTo = 0;

  int LineCapacity() const { return static_cast<int>(LineStarts.size()); }
  int SpareCapacity() const { return static_cast<int>(SpareStarts.size()); }
};

// What is kept of a buffer while it isn't on show.
struct EditBuffer {
  int TextLength = 0, Length = 0;
  int SelectionStart = 0, SelectionEnd = 0;
  int Saved = 1, ChangedFlag = 0;
  int TopLine = 0, BottomLine = 0, TotalLines = 0;
  int GotoLine = 1;
  bool HasName = false, HasText = false;
  std::string Name;
  std::string Text;
};

// The parked buffers of an editor window: 35 entries for a multi-buffer
// editor, none for a single one.
struct EditInfo {
  int Capacity = 1;
  int GotoLine = 1;
  std::vector<EditBuffer> Buffers;  // entry i is buffer i + 1
};

// ---- Line table (line_table.cpp), free of the widget ----------------------

// The text as up to three pieces laid end to end: before a change, the new
// block, after it. Positions count characters: bytes that begin one.
struct EditPieces {
  std::array<std::string_view, 3> part{};
  std::size_t size() const { return part[0].size() + part[1].size() + part[2].size(); }
  char at(std::size_t i) const;
};

// Advance width of a character for word wrap; lead is its first byte.
using EditCharWidth = int (*)(EditRecord& record, std::string_view character);

// 0 clears both tables; 1 prepares the spare table for count entries; 2 swaps them.
void yyEditLineStartsMem(int op, int count, EditRecord& record);
// Character offset of the display line after the one at `offset` (in characters
// from the start of the pieces), -1 when the text ends first.
int yyEditGetLine(int offset, const EditPieces& text, EditRecord& record, EditCharWidth width);
int yyEditCountLines(const EditPieces& text, EditRecord& record, EditCharWidth width);
// Direction 1: position to line (0-based), 2: line to position, -1 outside.
int yyEditConvertPos(int direction, int value, const EditRecord& record);
// Rebuilds the whole table from the text.
void yyEditBuildLineStarts(const EditPieces& text, EditRecord& record, EditCharWidth width);
// A change of the text [start, end) (whole text lines around the replaced
// range startpos..endpos) into `replaced`: the old stretch as one piece, the
// new one as three; moves the tail of the table.
struct EditChange {
  int start = 0, end = 0;        // widened stretch, characters
  int startpos = 0, endpos = 0;  // replaced range
  std::string_view oldtext;      // the stretch start..end before the change
  std::string_view block;        // what replaces startpos..endpos
};
void yyEditApplyChange(const EditChange& change, EditRecord& record, EditCharWidth width);
// The new table after a change that adds delta lines: entries before the
// change kept, the changed lines rescanned, the rest moved by the growth.
void yyEditGenLineStarts(const EditChange& change, int delta, EditRecord& record, EditCharWidth width);
// Characters in a UTF-8 text.
int yyEditCharCount(std::string_view text);
// Byte offset of a character offset in a UTF-8 text.
std::size_t yyEditByteOffset(std::string_view text, int characters);
// Loaded bytes made fit for the text widget: CR LF pairs become LF, the text
// stops at a NUL, and bytes that are no UTF-8 are read as ISO 8859-1.
std::string yyEditTextForWidget(std::string_view bytes);
// True when that would change nothing: ASCII without CR and NUL.
bool yyEditTextIsPlain(std::string_view bytes);
// True when every byte is ASCII.
bool yyEditTextIsAscii(std::string_view bytes);

// ---- Editor windows (editor.cpp) -------------------------------------------

// The record of the current window, or null (error 1028 under `routine` when
// the routine is given).
EditRecord* yyEditCurrent(const char* routine);
EditRecord* yyEditRecordOf(int handle);
void yyEditTitle(EditRecord& record);
void yyEditUpdateStatusBar(EditRecord& record);
// Input focus to a widget: how 1 through the X server, 2 through traversal.
void yyEditFocus(Widget widget, int how);
// Replaces the whole text without counting it as an edit; the table follows.
// A large text goes in by pieces: the first page at once, the rest later.
void yyEditReplaceAll(EditRecord& record, std::string text);
// The text was changed by the editor itself: unsaved, title and application told.
void yyEditChanged(EditRecord& record);
// Greys the menu items whose condition fails (selection, find text, bookmark).
void yyEditGreyItems(EditRecord& record);
// Advance width of a character in the editor's font.
int yyEditWidth(EditRecord& record, std::string_view character);
// Makes a narrow widget wide when `incoming` holds anything but ASCII; the
// text, caret and top line stay.
void yyEditWiden(EditRecord& record, std::string_view incoming);
// Puts the rest of a text that is going in by pieces into the widget at once
// (append true), or drops it.
void yyEditFinishLoad(EditRecord& record, bool append);

// The byte at a character offset of the pieces, read across their seams.
char yyEditPosToCharacter(const EditPieces& text, std::size_t offset);

// ---- Parked buffers (editor_buffers.cpp) -------------------------------------

// The store of a window (entry 0 keeps that of the last modal editor closed).
EditInfo* yyEditInfoOf(int window);
// A store for a new editor: 35 empty entries when multi-buffer.
void yyEditInfoCreate(int window, bool multi);
// A WInfoEditor answer about a parked buffer; false when the code isn't one of a buffer.
bool yyEditParkedInfo(int window, int buffer, int code, int& value);
// The View menu's caption of a buffer: "&1 " to "&9 ", then "&A " on.
std::string yyEditViewCaption(int buffer, std::string_view name);
// Multi-buffer commands: a new empty buffer; the file chooser into a new
// buffer (false when cancelled; `shown` the buffer of a file already open);
// a file into a new buffer, or the buffer that holds it already.
bool yyEditBufferNew(EditRecord& record);
bool yyEditBufferOpen(EditRecord& record, int& shown);
void yyEditBufferLoad(EditRecord& record, std::string_view filename);
// Closes the buffer on show (force skips the save prompt); false when cancelled.
bool yyEditCloseBuffer(EditRecord& record, bool force);
// Shows a buffer of the editor; false when there is no such buffer.
bool yyEditShowBuffer(EditRecord& record, int buffer);
// Save prompts for the buffers not on show, in order; false when one is cancelled.
bool yyEditCheckSaveAll(EditRecord& record);

// ---- Command line and toolbar (editor_command.cpp) ---------------------------

// The command line of option bits 8 and 10, under or above the text.
void yyEditCommandCreate(EditRecord& record);
void yyEditCommandDestroy(EditRecord& record);
// Places text and command line in the client area of that size.
void yyEditCommandLayout(EditRecord& record, int width, int height);
// The editor's toolbar in the top slot, images by option bit 4000000.
void yyEditToolbarCreate(EditRecord& record);
// Number of history items, 0 without a history.
int yyEditHistoryCount(const EditRecord& record);
// The command line's keys, the Go button, and the line sent to the program.
void yyEditTextEH(Widget widget, XtPointer client, XEvent* event, Boolean* go_on);
void yyEditCmdGoCB(Widget widget, XtPointer client, XtPointer call);
void yyEditSendCommand(EditRecord& record);
// Keys bound on the editor's text widgets: "t" moves the keyboard between
// the text and the command line.
void yyEditKeyTrans(Widget widget, XEvent* event, String* params, Cardinal* count);
// The callback the text widgets of an editor share (motion, focus, changes).
XtCallbackProc yyEditTextCallback();
// Prints the text or its selection unless the program prints for itself;
// false when nothing was printed.
bool yyEditFilePrint(EditRecord& record, bool selection);

// ---- Files (editor_file.cpp) -----------------------------------------------

std::string yyEditFullPathname(std::string_view name);
// Loads (write false) or saves the named file; true on success.
bool yyEditLoadSave(std::string_view name, bool write, EditRecord& record, bool quiet);
bool yyEditFileSave(EditRecord& record, bool saveas);
// Offers to save unsaved changes: true to go on, false when cancelled.
bool yyEditCheckSave(EditRecord& record);
void yyEditFileNew(EditRecord& record);
bool yyEditFileOpen(EditRecord& record);

// The one way messages leave the editor: a box with an OK button (icon 3 a
// warning, 4 a notice).
void yyEditMessage(std::string_view title, std::string_view text, int icon = 3);
// The one way questions leave it: 1 Yes, 2 No, 3 Cancel.
int yyEditQuestion(std::string_view title, std::string_view text);
// The last message shown, title and text, for a program that checks it.
struct EditLastMessage {
  std::string title, text;
  int count = 0;
};
EditLastMessage& yyEditLastMessage();

// ---- Search (editor_find.cpp) ------------------------------------------------

// One search of `what` in `text` from byte `start`: downwards from start,
// upwards from start - size of what. Flags as FindFlags: case and whole words
// (only letters A-Z, a-z and digits make words). The byte offset of the match.
std::optional<std::size_t> yyEditSearch(std::string_view text, std::string_view what, long start, bool up,
                                        std::uint32_t flags);
// The text with every match replaced, walking the unchanged text from its
// start; first and last are the bytes from the first match to the end of the
// last one, count the matches. Empty when nothing matched.
std::string yyEditReplaceEvery(std::string_view text, std::string_view what, std::string_view with,
                               std::uint32_t flags, std::size_t& first, std::size_t& last, int& count);
// One search for FindString in the copy; mode 2 next, 3 the other way, 0 and 1
// downwards. False after the message at the end of the text.
bool yyEditFindNext(long start, long& left, long& right, std::string_view text, int mode, EditRecord& record);
// Mode 0 replace, 1 replace all, 2 find next, 3 find in the opposite direction.
void yyEditFindReplace(int mode, EditRecord& record);
// The Search menu: Find and Replace open their dialogs, Find Next and Previous search.
void yyEditSearchFindReplace(int id, EditRecord& record);
// Closes the search dialog of an editor going away.
void yyEditSearchShutdown(EditRecord& record);
