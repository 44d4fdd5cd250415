// Message boxes: a question or a notice before the user, and the answer.
// The call returns once a button has answered; WInfoDialog(15) gives the
// button, WInfoDialog(4) what it amounts to.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>

// Answers, as WInfoDialog(15) gives them.
enum : int {
  kAnswerOk = 1,
  kAnswerCancel = 2,
  kAnswerAbort = 3,
  kAnswerRetry = 4,
  kAnswerIgnore = 5,
  kAnswerYes = 6,
  kAnswerNo = 7,
};

// Button sets: 0 OK; 1 OK, Cancel; 2 Retry, Cancel; 3 Yes, No;
// 4 Yes, No, Cancel; 5 Abort, Retry, Ignore.
// Icons: 0 none, 1 error, 2 question, 3 warning, 4 information.
// Default: 1, 2 or 3 picks the first, second or third button of the set (in
// set 5 in the order Retry, Abort, Ignore); out of range, the last one.
// Trailing blanks of text and title are dropped; a carriage return in the
// text ends a line.
void WMessageBox(int buttonSet, int icon, int defaultButton, std::string_view text,
                 std::string_view title = {});

// Joins the common dialogs to the layers that report through them: the
// support library's messages, the library error box of the error state, and the
// file and box calls of the editor and the grid window (kernel/comdlg_attach.h).
// Called once by the program; a later call does nothing more.
void yyComdlgAttach();

// Internal to the toolkit.

// The box itself; result is the answer, -1 when none came.
void yyComDlgMessageBox(int buttonSet, int icon, int defaultButton, int& result, std::string_view text,
                        std::string_view title);

// What a button set puts in the box's three places (the visual order, left to
// right): the answer of each place, 0 for a place not shown; the answer of
// Escape and of the window manager's close; the place (0..2) of the default.
struct MessageBoxLayout {
  std::array<int, 3> places{};
  int escape = kAnswerOk;
  int defaultPlace = 0;
};
// A set outside 0..5 is taken as set 0.
MessageBoxLayout yyComDlgLayout(int buttonSet, int defaultButton);
// The label of an answer ("OK", "Cancel", ...).
std::string_view yyComDlgLabel(int answer);
// Carriage returns become line feeds; a line whose measured width exceeds
// `width` is broken at its last blank. A word wider than `width` stays whole.
std::string yyComDlgStrConvert(std::string_view text, int width,
                               const std::function<int(std::string_view)>& measure);
// The widest a line of a box may be, in pixels: 280 dialog units of the
// default dialog font, or with the wide rule 5/8 of the screen less 50.
int yyComDlgLineLimit();
