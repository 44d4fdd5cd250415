// The message loop: every user action reaches the application as one
// MessageRecord with a message type, returned by WMessage.
#pragma once

// Message types; the numbers are part of the interface.
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
// Turns a message type on (1) or off (0); types outside 1..18 are ignored.
void WMessageEnable(int type, int enable);
