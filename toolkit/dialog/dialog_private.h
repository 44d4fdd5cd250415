// The dialog engine inside the toolkit: the registry of loaded dialogs, their
// field records, and the entry points the kernel calls.
#pragma once

#include <X11/Intrinsic.h>
#include <Xm/Xm.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/base/check.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/kernel/window_private.h"

// Per-font metrics of dialog text; dialog units are measured in them.
struct DialogFontMetrics {
  int charWidth = 1, charHeight = 1;
  int defaultTabWidth = 1, spaceWidth = 1, controlHeight = 1;
  float averageWidth = 1.0f;
};

// Value model of string and numeric fields.
struct TextFieldData {
  int kind = 0;  // 0 plain, 1 upper, 2 lower, 3 integer, 4 real, 5 double
  int charLimit = 0, pixelLimit = 0;
  double minimum = 1.0, maximum = -1.0;  // maximum below minimum: no range
  bool defined = false, edited = false, valid = false;
  double value = 0.0;
  std::string hiddenText, format;
  // The bytes last stored by the program and the UTF-8 shown for them, so an
  // unedited text goes back exactly as it came.
  std::string storedBytes, storedShown;
};

struct DialogRecord;

// One page of a tab field: the page dialog's widget and identifier, its
// label and button, and its state (0 disabled).
struct TabRecord {
  Widget page = nullptr, button = nullptr;
  int pageId = 0;
  std::string label;
  int state = 1;
};

struct FieldRecord {
  int identifier = 0;
  Widget widget = nullptr;
  int type = 0;
  int x = 0, y = 0, width = 0, height = 0;
  std::uint32_t style = 0, extendedStyle = 0, extraFlags = 0;
  int fontIndex = 0;
  std::string text;
  int textKind = 0;
  long mnemonicKeysym = 0;
  std::uint32_t capabilities = 0;
  Widget valueWidget = nullptr;
  int radioGroup = 0;
  int itemSelect = 0;  // combo: the option last selected, from 1
  Widget imageWidget = nullptr;
  Pixmap image = 2;
  bool defaultBackground = true, defaultForeground = true;
  int imageResourceId = 0;
  Pixel pictureBackground = 0;  // behind a picture's image
  TextFieldData data;  // string and numeric fields only
  int lastState = 1;
  Widget outerWidget = nullptr;
  bool reportEveryChange = false, allowClear = false;
  int rightGap = 0, bottomGap = 0;
  std::uint32_t edgeFlags = 0;
  std::string tooltip;
  bool tooltipHandler = false;  // yyDialogTooltipEH is on the widget
  bool drawnOn = false;         // a picture the program draws on
  std::vector<TabRecord> tabs;  // a tab field's pages, in order
  int selectedPage = -1;        // identifier of the page in view
  Widget tabBar = nullptr;      // the row of page buttons
  std::vector<Widget> parts;  // widgets of the simple compound forms (arrows, cells)
  // A disabled text widget's shadows (and its combo box's), to give back when
  // it is enabled again.
  Pixel enabledShadows[4] = {0, 0, 0, 0};
  bool shadowsSaved = false;
};

struct DialogRecord {
  int identifier = -1;  // -1: free entry
  int resourceId = 0;
  Widget widget = nullptr, shell = nullptr;
  int shownMode = -1;  // -1 hidden, 2 modeless, 3 semi-modeless
  int width = 0, height = 0, minWidth = 0, minHeight = 0;
  std::uint32_t style = 0, layoutFlags = 0;
  int anchorFieldId = 0;
  int fontIndex = 0;
  std::string title;
  std::vector<FieldRecord> fields;
  int radioGroupCount = 0;
  int focusField = -1, previousFocusField = -1;  // indices into fields
  int defaultButton = -1;
  // The button that carries the default mark now (the focused button, else
  // the declared default), and the frame that draws the mark.
  int shownDefaultButton = -1;
  Widget defaultFrame = nullptr;
  Widget embeddingParent = nullptr, parentWidget = nullptr;
  int kind = 0;  // 0/2 own shell, 1 tab page, 3 combined with a window
  int parentWindow = -1;
  Widget focusShell = nullptr;  // the shell whose focus moves we follow
  int messageMode = 2;
  int lastButton = -1;
  int lastCellCode = -1;
  // The program draws on the dialog itself, or on one of its pictures.
  bool drawnOn = false, fieldDrawnOn = false;
  // The kept picture of a dialog drawn on, while a modal level freezes it.
  FrozenPicture freeze;
  int freezeCount = 0;
};

namespace zelvy_dialog {
constexpr int kDialogs = 100;
struct State {
  zelv::Slots<DialogRecord, kDialogs> wDialogInfo{};
  int iDlgCur = -1;
  int bdlgloaded = 0;
  std::vector<DialogFontMetrics> DlgFontInfo;
  bool bInvalidField = false, bNumericFieldChanged = false, bNumericIgnoreChange = false;
  FieldRecord* pFieldInputFocus = nullptr;
  bool bRangeClear = false;
  bool bFocusChange = false;
  int iFixedTextOffset = 10;
  // Last modal show: dialog, button, field.
  int iModalDialog = 0, iModalButton = 0, iModalField = 0;
  const char* cNumDefFormat = "(G15.5E2)";
};

// The one instance, defined in dialog.cpp.
State& state();
}  // namespace zelvy_dialog

// Entry points for the kernel, attached to it by yyDialogAttach.
// Fonts and the registry, once the display is open; later calls do nothing.
void yyDialogInit();
inline void yyDialogEngineInit() { yyDialogInit(); }
// WindowOpen / WindowOpenChild with a dialog: load it into the window's
// client area and show it there; the dialog becomes current.
void yywindowdialog(int handle, int dialogid);
// Before a window goes away: unload the dialog combined with it, if any.
void yywindowdialogclose(int handle);
// Size in pixels of a dialog resource, for a window that is to carry it;
// false when the resource doesn't exist.
bool yyDialogPixelSize(int resid, int& width, int& height);
// Unloads everything; at WindowClose of the root window.
void yyDialogShutdown();

// Field options: 3 report every edit, 4 an empty number is valid, 5 the
// right button selects too; error 0, 1005 or 1006.
void yydialogfieldoptions_(int fieldid, int option, int value, int& error);

// The C layer under the public routines: the same work on the current
// dialog, with the error code (0 none) handed back instead of reported.
void yydialogload_(int resid, int dialogid, int parent, int& error);
void yydialogshow_(int x, int y, int fieldid, int mode, int& error);
void yydialogtitle_(int icon, bool haveTitle, int& error, std::string_view title);
// Program sizing of the current dialog; unit 0 dialog units, else pixels;
// below 1 keeps that side.
void yydialogsize_(int width, int height, int unit, int& error);
// 1 texts handed to the dialogs are UTF-8, 0 ISO 8859-1.
void yydialogencoding_(int encoding);
int yyinfodialog_(int item);
void yydialogputstring_(int fieldid, std::string_view text, int& error);
void yydialoggetstring_(int fieldid, std::string& text, int& error);
void yydialoggetstringlength_(int fieldid, int& length, int& error);
// A number with the text it is shown as: 1009 outside the field's range.
void yydialogputnumeric_(int fieldid, std::string_view text, double number, std::string_view format, int& error);
void yydialoggetnumeric_(int fieldid, double& value, int& error);
void yydialogputcheckbox_(int fieldid, int state, int& error);
void yydialoggetcheckbox_(int fieldid, int& state, int& error);
void yydialogputradiobutton_(int fieldid, int& error);
void yydialoggetradiobutton_(int fieldid, int& position, int& error);
void yydialogclearfield_(int fieldid, int& error);
void yydialograngenumeric_(int fieldid, double minimum, double maximum, int& error);
// 1009 when the number lies outside the numeric field's range.
void yydialograngecheck_(int fieldid, double number, int& error);
// The field's own number format, empty for the default.
void yydialoggetformat_(int fieldid, std::string& format, int& error);

// Pure rules, also used by the tests.

// A field's rectangle in pixels, relative to its dialog.
struct DialogRect {
  int x = 0, y = 0, width = 0, height = 0;
  int right() const { return x + width; }
  int bottom() const { return y + height; }
  bool encloses(const DialogRect& o) const {
    return x <= o.x && y <= o.y && right() >= o.right() && bottom() >= o.bottom();
  }
  bool operator==(const DialogRect&) const = default;
};
// Which edges of a field follow a size change of a resizable dialog.
namespace anchor_edge {
inline constexpr std::uint32_t kLeft = 1, kRight = 2, kTop = 4, kBottom = 8;
inline constexpr std::uint32_t kMoveX = kLeft | kRight, kMoveY = kTop | kBottom;
// Dialog layout flag: a field ending where the anchor ends follows that edge.
inline constexpr std::uint32_t kLayoutFollowEdge = 2;
}  // namespace anchor_edge
// Edge bits of every field, given their rectangles (closed combos at their
// closed height), types and styles, the anchor's index and the layout flags.
std::vector<std::uint32_t> yyDialogEdgeFlags(const std::vector<DialogRect>& rects, const std::vector<int>& types,
                                             const std::vector<std::uint32_t>& styles, int anchor,
                                             std::uint32_t layoutFlags);
// A field's rectangle after its dialog took the size width x height; the gaps
// are its distances to the right and bottom edge at the present layout.
DialogRect yyDialogAnchorRect(const DialogRect& r, std::uint32_t edges, int rightGap, int bottomGap, int width,
                              int height);
// 1 the rectangle lies inside width x height, 2 it overlaps the edge, 0 it is outside.
int yyDialogFieldInRect(const DialogRect& r, int width, int height);
// What of an insertion may enter a text field: at most charLimit characters
// in all (0 no limit) and, with a pixel limit, no wider than it, measured on
// the whole line (before + insertion + after). Empty: refuse the change.
std::string yyDialogStringLimit(std::string_view insertion, int charLimit, int pixelLimit, std::string_view before,
                                std::string_view after, const std::function<int(std::string_view)>& measure);
// Case folding of ASCII letters only: kind 1 upper, 2 lower, others untouched.
void yyDialogStrCase(int kind, std::string& text);
void yyDialogUnitsToPixels(const DialogFontMetrics& font, int x, int y, int& px, int& py);
void yyDialogUnitsFromPixels(const DialogFontMetrics& font, int x, int y, int& ux, int& uy);
// Metrics from the rendered width and height of the 52-letter sample.
DialogFontMetrics yyDialogMetricsFromSample(int sampleWidth, int sampleHeight, int spaceWidth);
inline constexpr std::string_view kDialogSample = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
// Packed grid cell code of a 0-based column and row.
constexpr int yyDialogCellCode(int column, int row) { return ((column + 1) * 262144) | (row + 1); }
// What a common dialog's answer amounts to: 1 for OK, Retry or Yes (1, 4, 6),
// 2 for Abort or No (3, 7), 0 for Cancel, Ignore or nothing.
constexpr int yyComDlgResultClass(int button) {
  return (button == 1 || button == 4 || button == 6) ? 1 : (button == 3 || button == 7) ? 2 : 0;
}
bool yyDialogNumericOutOfRange(double minimum, double maximum, double number);
// Whether a typed character is allowed in a numeric field of kind 3..5; may
// change the character (lower-case exponent letters become upper case).
bool yyDialogStrValidNum(int kind, char& c);
// What of an insertion into a text field of the given kind may enter: no
// control characters, a decimal comma read as the point, at most ALLOWED
// characters (negative: no bound), never cut inside a UTF-8 sequence.
std::string yyDialogStrFilterInsert(std::string_view text, int kind, bool multiLine, int allowed);
// Text without mnemonic marks, and the mnemonic character (0 none).
std::string yyDialogStrGetMnemonic(std::string_view text, char& mnemonic);
// crMode -1 copy, 0 CR to LF, 1 drop CR; wrap at blanks where the measured
// width of a line exceeds `width`.
std::string yyDialogStrConvert(int crMode, bool wrap, int width, std::string_view text,
                               const std::function<int(std::string_view)>& measure);
// Validation of a numeric field's text (true for other kinds); with store the
// value model takes the result.
bool yyDialogValidateText(TextFieldData& d, std::string_view text, bool store, bool allowClear);
// The number of a numeric field: 0 and the value, or 1010 when undefined.
int yyDialogNumericValue(const TextFieldData& d, std::string_view text, double& value);
// Radio group numbers by the creation rule, 0 for other fields; returns the count.
int yyDialogRadioGroups(const std::vector<int>& types, const std::vector<std::uint32_t>& styles,
                        std::vector<int>& groups);
// The stored side of a put into a numeric field (text already in the widget).
void yyDialogNumericStored(TextFieldData& d, std::string_view text, double number, std::string_view format,
                           bool clearDefined);

// Engine internals shared by the sources of this folder.
int yyDialogFind(int dialogid);
// Common-dialog position: x, y relative to a reference become screen
// coordinates that keep a width by height rectangle on the screen. Code
// below 0: the current dialog, else window 0's client area; otherwise the
// dialog with identifier `code` (isDialog) or the client area of window `code`.
void yycomdlggetpos(int code, bool isDialog, int width, int height, int& x, int& y);
// The first free registry entry, -1 when all are taken.
int yyDialogNextFree();
void yyDialogUnload(int dialogIndex);
// A field's height for the layout: a drop-down combo counts closed.
int yyDialogFieldHeight(const DialogRecord& d, const FieldRecord& f);
// The dialog whose widget embeds this one (a tab page's owner), -1 none.
int yyDialogFindParent(int dialogIndex);
// The dialog a widget belongs to; with its field, when inside one.
DialogRecord* yyDialogFindFromWgt(Widget w);
DialogRecord* yyDialogFieldInfo(Widget w, FieldRecord*& field);
inline DialogRecord* yyDialogFromWidget(Widget w, FieldRecord** field = nullptr) {
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  if (field) *field = f;
  return d;
}
FieldRecord* yyDialogGetField(int fieldid, int dialogIndex);
bool yyDialogUserDrawn(const DialogRecord& d);
// The program draws on the current dialog (field 0) or on one of its
// pictures from now on; error 1006 for another field.
void yydialoggrselect_(int fieldid, int& error);
// One freeze of a dialog undone; the last shows it live and has it redrawn.
void yyDialogWidgetBlitAllNowX(DialogRecord& d);
// Lays out a resizable dialog's fields for a new size in pixels.
void yyDialogResize(int dialogIndex, int width, int height);
// The dialog engine's look at an X event; true when it was the engine's.
bool yyDialogProcessEvent(XEvent& ev);
void yyDialogConfigureEH(Widget w, XtPointer data, XEvent* event, Boolean* cont);
// Tooltips of fields: the enter and leave handler, and the timer that shows
// the text of the field whose widget it carries.
void yyDialogTooltipEH(Widget w, XtPointer data, XEvent* event, Boolean* cont);
void yyDialogTooltipCB(XtPointer widget, XtIntervalId* id);
// The keyboard: the action and its tables (made once), put on a dialog
// widget (field null) or a field's value widget; the clipboard keys of a
// text widget; a double click in a list, which presses the default button.
void yyDialogKeyTrans(Widget w, XEvent* event, String* params, Cardinal* count);
void yyDialogKeyInit();
void yyDialogKeyTranslations(DialogRecord& d, FieldRecord* f);
void yyDialogXmTextProps2(Widget text, bool multiLine);
void yyDialogDblClickCB(Widget w, XtPointer data, XtPointer call);
// The default mark: made (1) or dropped (-1), placed on the button that
// carries it, and moved after the focus (a focused button takes it, a text
// field gives it back to the declared default).
void yyDialogDefButAddRemove(int direction, DialogRecord& d);
void yyDialogDefButMove(DialogRecord& d);
void yyDialogDefButProc(DialogRecord& d);
// One step of the tab order from field `field` of dialog `dialogIndex`,
// through the pages of tab fields as if their fields stood at the tab;
// both are updated. False when the dialog has no fields.
bool yyDialogFindNextPrev(int direction, int& dialogIndex, int& field);
// Whether a field may take the focus from Tab, a mnemonic or the first focus.
bool yyDialogTabStop(const FieldRecord& f);
// Alt plus a key: the field whose mnemonic it is takes the focus, and a
// button that is the only one with that key is pressed.
bool yyDialogShortcut(DialogRecord& d, const XEvent& event);
// The mnemonic keys of a dialog's fields, from the resource.
void yyDialogMnemonics(DialogRecord& d);
// A dialog shell that maps gets the keyboard when the program has it, also
// without a window manager to give it.
void yyDialogTakeFocusOnMap(DialogRecord& d);
// The context menu of a text widget (a dialog field or a grid cell) at root
// x, y; and its choice.
void yyDialogTextMenu(Widget text, int x, int y);
// The same menu for a grid's text cell, and for a text outside dialogs.
void yyGridTextMenu(Widget cell, int x, int y);
void yyEditTextMenu(Widget text, int x, int y);
void yyDialogProcessTextMenu(int owner, int item);
// The dialog keys of a grid's text cell: its context menu and, unless the
// grid keeps Tab for itself, Tab and Shift+Tab on to the dialog's next field.
void yyDialogCellKeys(Widget text, bool tabLeaves);
// The keyboard to a grid field's current cell; false for other fields or
// without the grid layer.
bool yyDialogGridFocus(FieldRecord& f);
// Selects all of a text without moving its view.
void yyDialogSelectAll(Widget text);
// Tab fields. A page is added with its widget, identifier and label (a
// blank when empty); the first one added is selected. Selecting (no
// message) ignores an unknown, disabled or already selected page and
// answers whether it changed. Pages the resource names are loaded at creation.
void yyTabWidgetAddDataX(FieldRecord& tab, Widget page, int pageId, std::string_view label);
void yyTabWidgetChangeLabelX(FieldRecord& tab, int pageId, std::string_view label);
void yyTabWidgetVisibleX(FieldRecord& tab, bool show);
bool yyTabWidgetSelectX(FieldRecord& tab, int pageId);
void yyDialogTabPages(DialogRecord& d, FieldRecord& tab);
// The user chose another page: TabChanged, unless a field doesn't validate,
// in which case the old page comes back.
void yyDialogTabChangedCB(DialogRecord& d, FieldRecord& tab, int oldPage, int newPage);
// Loads dialog `resid` as `dialogid`: kind 0/2 with a shell, 1 a tab page,
// 3 a window's; true when it was loaded already; error 0 or the code.
bool yyDialogLoad(int resid, int dialogid, bool forceNew, int kind, Widget parent, int messageMode, int& error);
// Makes a treeview's container lay out the items under collapsed parents.
void yyDialogTreeviewFixState(FieldRecord& f);
// The widget of what holds the keyboard focus: a dialog, or a window's client.
Widget yyDialogBaseWidget();
// Focus to a field: position -1 selects all of a text, else the insertion
// goes there (from 0). The first field that takes focus; false when none.
void yyDialogFocus(FieldRecord& f, int position);
// Zero-delay timer: the focus back to a widget (the client data) where it
// can't be moved inside a focus event; the move itself doesn't validate.
void yyDialogFocusCB(XtPointer widget, XtIntervalId* id);
// The focus has moved to a field: FieldChanged from the field left to it,
// unless a TabChanged waits, then the field becomes the focus field.
void yyDialogFieldChangedMessage(DialogRecord& d, FieldRecord& f);
// The X keyboard to the window of a widget that took the focus, while the
// message wait allows explicit focus moves.
void yyDialogFocusWindow(Widget w);
// The bell, for a text that rings on a refused edit.
void yyDialogSound(Widget w);
// Sets a radio button and clears the others of its run.
void yyDialogPutRadioButton(DialogRecord& d, FieldRecord& f);
bool yyDialogFocusFirst(DialogRecord& d);
// Type routines: 0 destroy, 1 create, 2 clear, 3..6 state 0..3.
void yyDialogField(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogFieldProps(int operation, DialogRecord& d, FieldRecord& f);
void yyDialogFieldVisible(DialogRecord& d, FieldRecord& f, bool visible);
// Colours of a field, channels 0..255: red -1 leaves one alone, 256 gives it
// back to the colour scheme.
void yyDialogColour(FieldRecord& f, int fgRed, int fgGreen, int fgBlue, int bgRed, int bgGreen, int bgBlue,
                    bool forceScheme);
void yydialogcolour_(int fieldid, int fgRed, int fgGreen, int fgBlue, int bgRed, int bgGreen, int bgBlue,
                     int& error);
int yyDialogFindField(int fieldid, int dialogIndex);
// The current dialog's field of that identifier, with 1005 / 1006 reported
// under `routine`; null on error.
FieldRecord* yyDialogCurrentField(int fieldid, const char* routine);
DialogRecord* yyDialogCurrent(const char* routine);
const DialogFontMetrics& yyDialogFontMetrics(int fontIndex);
XmRenderTable yyDialogRenderTable(int fontIndex);
void yyDialogFieldCreate(DialogRecord& d);
void yyDialogFieldStateX(int state, DialogRecord& d, FieldRecord& f);
void yyDialogFieldState(int fieldid, int state, int dialogIndex);
void yyDialogSendMessage(DialogRecord* d, int type, int v1, int v2, int v3, int v4, int x, int y, int win);
void yyDialogButtonMessage(DialogRecord& d, int buttonId);
// Stores text into a field as the program (no change reported).
void yyDialogPutString(FieldRecord& f, double number, std::string_view text, std::string_view format,
                       bool clearDefined);
inline void yyDialogPutText(FieldRecord& f, std::string_view text, double number, std::string_view format,
                            bool clearDefined) {
  yyDialogPutString(f, number, text, format, clearDefined);
}
// Range of a numeric field; maximum below minimum switches it off.
void yyDialogRange(FieldRecord& f, double minimum, double maximum);
std::string yyDialogGetText(const FieldRecord& f);
bool yyDialogFieldValidate(FieldRecord* f, bool store);
void yyDialogRestoreValid(FieldRecord& f);
int yyDialogIndexOf(const DialogRecord& d);
void yyDialogFieldChangedValue(DialogRecord& d, FieldRecord& f);
int yyinfodialogfieldstate_(const FieldRecord& f);
// Escape in a dialog: the field takes back its value, the dialog answers as to button 2.
void yyDialogEscapeEH(Widget w, XtPointer data, XEvent* event, Boolean* cont);
// Focus moves inside a shell that holds dialogs.
void yyDialogFocusMovedCB(Widget shell, XtPointer data, XtPointer call);
// Drops the engine's focus memory of a dialog's fields before the record goes.
void yyDialogForgetFields(DialogRecord& d);
// Options: count (0 for other fields), option type 1..6 (0 none), select
// by program (0 or 1011), empty the options.
int yydialoggetmenuoptioncount(int fieldid);
int yydialoggetmenutype(const FieldRecord& f);
int yyDialogPutOptionX(FieldRecord& f, int option);
void yyDialogClearMenu(FieldRecord& f);
