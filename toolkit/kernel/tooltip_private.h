// Tooltips: one small window of text near the pointer, shared by the toolbar
// buttons and the dialog fields.
#pragma once

#include <X11/Intrinsic.h>

#include <string_view>

// Delays in milliseconds for dialog fields: before a tooltip shows; before
// the next one shows, when the last was left a moment ago; how long that
// moment lasts; how long a tooltip stays.
inline constexpr unsigned long kTooltipDelay = 2000, kTooltipDelayInstant = 0, kTooltipInstantWindow = 3000,
                               kTooltipVisible = 5000;

// Shows `text` beside the pointer for `owner` (lines broken at CR LF) and
// removes it again after kTooltipVisible; replaces a tooltip showing.
void yyTooltipCreate(Widget owner, std::string_view text);
// Removes a tooltip and cancels what was about to show or expire.
void yyTooltipDestroy();
// The pointer entered a widget with a tooltip: `show` runs with `data` after
// the delay (at once within the instant window). Nothing while a menu is open.
void yyTooltipArm(XtTimerCallbackProc show, XtPointer data);
// The same with delays of its own (toolbar buttons answer sooner).
void yyTooltipArm(XtTimerCallbackProc show, XtPointer data, unsigned long delay, unsigned long instantdelay);
// The pointer left it: a tooltip showing goes and opens the instant window;
// else the pending one is cancelled.
void yyTooltipLeave();
// The tooltip's X window, 0 when none shows; and the widget it belongs to.
Window yyTooltipWindow();
Widget yyTooltipOwner();
