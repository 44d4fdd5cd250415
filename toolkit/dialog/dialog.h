// Dialogs as the application sees them: load by resource identifier, which
// makes the dialog current, then address its fields by identifier. Failures
// go to the error state (WInfoError), never to a return code.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

// Joins the dialog engine to the windows, so that a window can carry a dialog;
// called once before the first window opens.
void yyDialogAttach();

// Lifecycle. Parent 0: no parent; -1: whatever holds the keyboard focus; else a window handle.
void WDialogLoad(int resid, std::optional<int> dialogid = {}, std::optional<int> parent = {});
void WDialogSelect(int dialogid);
// x, y in window units (-1 centres); mode 1 modal, 2 modeless, 3 semi-modeless.
void WDialogShow(std::optional<int> x = {}, std::optional<int> y = {}, std::optional<int> fieldid = {},
                 std::optional<int> mode = {});
// Shows the current dialog at the place the common dialogs take for its
// size and the position code; the lower-case name is the same routine.
void WDialogShowCommon(std::optional<int> fieldid = {}, std::optional<int> mode = {},
                       std::optional<int> poscode = {});
void wdialogshowcommon(std::optional<int> fieldid = {}, std::optional<int> mode = {},
                       std::optional<int> poscode = {});
void WDialogHide();
void WDialogUnload(std::optional<int> option = {});
void WDialogTitle(std::optional<std::string_view> title = {}, std::optional<int> iconid = {});
void wdialogunitstopixels(int x, int y, int& px, int& py);
void wdialogunitsfrompixels(int x, int y, int& ux, int& uy);
int WInfoDialog(int item);
// The same, under the name the application's commands read it by.
inline int winfodialog(int item) { return WInfoDialog(item); }

// Fields: 0 disabled, 1 enabled, 2 read-only, 3 hidden.
void WDialogFieldState(int fieldid, int state);
void WDialogTooltip(int fieldid, std::optional<std::string_view> text = {});
// Focus to a field; the cursor goes to a position from 1, absent selects all.
void WDialogSetField(int fieldid, std::optional<int> position = {});
// 1 x, 2 y, 3 width, 4 height (pixels), 5 type, 6 state, 7/8 trackbar range, 9/10 options.
int winfodialogfield(int fieldid, int item);

// Values.
void WDialogPutString(int fieldid, std::optional<std::string_view> text = {});
void WDialogGetString(int fieldid, std::string& text);
void WDialogGetStringLength(int fieldid, int& length);
void WDialogPutInteger(int fieldid, int value);
void WDialogGetInteger(int fieldid, int& value);
void WDialogPutReal(int fieldid, float value, std::string_view format = {});
void WDialogGetReal(int fieldid, float& value);
void WDialogPutCheckBox(int fieldid, int state);
void WDialogGetCheckBox(int fieldid, int& state);
void WDialogPutRadioButton(int fieldid);
void WDialogGetRadioButton(int fieldid, int& position);
void WDialogClearField(int fieldid);
void WDialogRangeInteger(int fieldid, std::optional<int> minimum = {}, std::optional<int> maximum = {});
void WDialogSpinnerStep(int fieldid, float smallStep, std::optional<float> largeStep = {});
void wdialograngeoptions(int option, int value);

// Options of combos and lists, counted from 1.
void WDialogPutMenu(int fieldid, std::span<const std::string> options, int count, int option,
                    std::optional<std::string_view> text = {});
void WDialogPutOption(int fieldid, int option);
void WDialogGetMenu(int fieldid, int& option);
void WDialogGetMenu(int fieldid, int& option, std::string& text);
