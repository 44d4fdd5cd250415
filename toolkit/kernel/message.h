// The message loop: every user action reaches the application as one
// MessageRecord with a message type, returned by WMessage.
#pragma once

#include <string_view>

// Message types; the numbers are part of the interface. The X headers define
// Expose as a macro: the type is also ExposeMessage, for sources that see both.
#pragma push_macro("Expose")
#undef Expose
enum : int {
  KeyDown = 1,
  MenuSelect = 2,
  PushButton = 3,
  MouseDown = 4,
  MouseUp = 5,
  MouseMove = 6,
  Expose = 7,
  Resize = 8,
  CloseRequest = 9,
  FieldChanged = 10,
  TabChanged = 11,
  TimerExpired = 13,
  EditorCommand = 14,
  BitmapScrolled = 15,
  MouseDoubleClick = 16,
  EditorChanged = 17,
  ContextClick = 18,
};
inline constexpr int ExposeMessage = Expose;
#pragma pop_macro("Expose")

struct MessageRecord {
  int Win = 0;
  int Value1 = 0, Value2 = 0, Value3 = 0, Value4 = 0;
  int X = 0, Y = 0;
  float GWidth = 0, GHeight = 0, GX = 0, GY = 0;
  int Time = 0;
  int PixelX = 0, PixelY = 0, PixelWidth = 0, PixelHeight = 0;
};

// Blocks until a message the application may see exists, and returns it.
void WMessage(int& type, MessageRecord& record);
// As WMessage, but type -1 at once when nothing is pending.
void WMessagePeek(int& type, MessageRecord& record);
// Turns a message type on (1) or off (0); types outside 1..18 are ignored.
void WMessageEnable(int type, int enable);
// The filter entry of a type, 0 outside 1..18.
int WInfoMessage(int type);
// Stores one message that the next WMessage returns unchanged.
void WMessagePush(int type, const MessageRecord& record);
// Starts (milliseconds > 0) or stops a timer; its expiry is TimerExpired with Value1 the identifier.
void WMessageTimer(int milliseconds, int identifier, int repeat = 0);

// Internal to the toolkit.

// Queues a message for the present WMessage call (one-deep, plus one behind it).
void yyMsgSend(int type, int value1, int value2, int value3, int value4, int x, int y, int win,
               int time);
// The filter as a root window opens it, and back as it was when it closes.
void yyMsgResetFilter();
void yyMsgRestoreFilter();
// Selects the X events that the filter asks for on a window's client area.
void yyMsgApplyMasks(int handle);
// A field change that reaches the application after the present event:
// FieldChanged with Value1 = Value2 = field, Value3 1, and X, Y as given.
void yyMsgPostFieldChanged(int field, int x, int y, int win);
// Runs events until the modal level that this pushes is ended by yyMsgModalEnd.
// levelWindow, when given, is the X window of a shell that belongs to the
// level though it is no toolkit window (a message box): its input passes.
void yyMsgModalLoop(int win, unsigned long levelWindow = 0);
void yyMsgModalEnd();
// Semi-modeless stack: direction 1 push, -1 pop; kind 1 window, 2 dialog.
void yyMsgSemiModelessStack(int direction, int kind, int handle);

// The key translation: a keysym, the modifiers, and what the lookup produced.
struct KeyMessage {
  bool made = false;  // false for modifier keys and the like
  int value1 = 0, value2 = 0, value4 = 0;
};
KeyMessage yyMsgProcessKey(unsigned long keysym, bool ctrl, bool shift, std::string_view chars);
