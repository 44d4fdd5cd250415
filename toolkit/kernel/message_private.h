// The message loop, the toolkit's side: window-type codes, modal levels and
// the points where the loop hands events and messages to the subsystems
// above the kernel (dialog engine, editor, grid), which attach themselves.
#pragma once

#include <X11/Intrinsic.h>

#include "toolkit/kernel/message.h"

// What an X window is to the loop: 1 a window's frame, 2 its client area, 3
// its status bar or a part of it, 4 a menu bar, 5 a menu pop-up, 6 a menu
// item, 8 a window's shell, 11 a pane's title bar, 12 a dialog combined with
// a window or a child of it, 10 a toolbar or one of its buttons; -1 none of
// these. The window's handle comes back in `handle` (-1 for menus).
int yyMsgWindowType(Window xwin, int& handle);
int yyMsgWindowType(Window xwin);

// Throws away the keyboard and pointer events already queued, so that what
// was typed or clicked before a modal level changed hands reaches no one.
void yyMsgClearEvents();
// Modifier bits of a mouse message from an X event state.
int yyMsgMouseModifiers(unsigned state);
// Modifier bits of a key or context click, 1 Ctrl and 2 Shift, from an X
// event state.
int yyMsgModifierState(unsigned state);
// Where a ContextClick comes from when it isn't a field: its Value3.
inline constexpr int kContextToolbar = 101, kContextStatusBar = 102;
// Bit of ContextClick's modifiers for a click made from the keyboard.
inline constexpr int kContextFromKeyboard = 0x40;
// One of the explicit focus moves that a message wait allows (true), which
// it then counts; false when they are used up, so that two windows that
// keep taking the focus from each other can't go on for ever.
bool yyMsgTakeFocusCount();
// The type of the message waiting to be taken, 0 none.
int yyMsgPendingType();

// Modal levels of dialogs and boxes: direction 1 pushes one whose widget
// (the dialog's shell) alone takes input from then on; other values pop the
// newest. While a level is up, every other window keeps the picture it
// showed and takes no key or button.
void yymessagemodal(int direction, Widget level = nullptr);
// The number of modal levels up.
int yyMsgModalDepth();

// One X event through the toolkit: its menus and accelerators, its own
// translation, the editor and viewers, the dialog engine, then the widgets.
// Returns the type of the message it made, 0 none.
int yyMsgProcessMessage(XEvent& event);

// The subsystems above the kernel join the loop here.
struct LoopHooks {
  // An event the dialog engine may handle before the widgets; true when it did.
  bool (*dialogEvent)(XEvent& event) = nullptr;
  // Events for an editor's text and for bitmap viewers; true when consumed.
  bool (*editEvent)(XEvent& event) = nullptr;
  bool (*viewerEvent)(XEvent& event) = nullptr;
  // A message made for an editor (kind 1) or grid window (kind 4), which may
  // change it or turn it into type 0.
  void (*editMessage)(int& type, MessageRecord& record) = nullptr;
  void (*gridMessage)(int& type, MessageRecord& record) = nullptr;
  // The choice in a text menu: owner 1 dialog, 2 grid, 3 editor.
  void (*textMenu)(int owner, int item) = nullptr;
};
// Sets the hooks given (non-null) and keeps those attached before: the
// dialog engine's yyDialogProcessEvent, the editor's yyEditProcessMessage and
// the grid window's yyGridProcessMessage. A hook not attached does nothing.
void yyAttachLoopHooks(const LoopHooks& hooks);

// The screen kept alive while a started command is waited for: events other
// than input are served, input is dropped, the status bar shows the time.
void yyMsgCommandWait(int elapsed_ms);
