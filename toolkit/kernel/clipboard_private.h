// The clipboard, the toolkit's side: the text widgets' cut, copy and paste,
// and text under a label of the caller's.
#pragma once

#include <X11/Intrinsic.h>

#include <string>
#include <string_view>

#include "toolkit/kernel/clipboard.h"

// Every clipboard call meets a clipboard that another program may hold
// locked; it is asked this many times, with no pause, before giving up.
inline constexpr int kClipboardTries = 100;
inline constexpr int kClipboardLockedAnswer = 4;

template <typename Call>
int yyClipboardRetry(Call call) {
  int answer = kClipboardLockedAnswer;
  for (int k = 0; k < kClipboardTries && answer == kClipboardLockedAnswer; ++k) answer = call();
  return answer;
}

// Puts text as "STRING" under an item label; 0 or kClipError. The owner is
// the root window's frame, or `owner` while no root window is open.
int yyClipboardPutString(std::string_view text, Time time, std::string_view label = "Text", Widget owner = nullptr);
// The whole text on the clipboard; false when it holds none.
bool yyClipboardGetText(std::string& text, Widget owner = nullptr);

bool yyXmTextCopy(Widget text, Time time);
bool yyXmTextCut(Widget text, Time time);
bool yyXmTextPaste(Widget text);
