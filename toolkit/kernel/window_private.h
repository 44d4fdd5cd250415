// The window table shared by the kernel's modules: records, widgets and X
// windows by handle (0 the root window, 1..50 children).
#pragma once

#include "toolkit/base/check.h"
#include "toolkit/kernel/dialog_attach.h"

#include <X11/Intrinsic.h>

#include <array>
#include <span>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

// A window's picture kept while it is frozen, and the window that shows it.
struct FrozenPicture {
  Window cover = 0;
  Pixmap pixmap = 0;
};

struct WindowRecord {
  int Visible = 1;
  int Kind = 0;  // 0 plain, 1 editor, 2 bitmap viewer, 3 with a dialog, 4 grid, 5 split
  int SavedObject = 0, SavedObjectKind = 0;
  int Mode = 2;  // 1 modal, 2 modeless, 3 semi-modeless
  unsigned char Locked = 0;
  unsigned int Flags = 7;
  std::optional<std::string> Title;
  Widget TitleLabel = nullptr;
  Widget Content = nullptr;
  void* KindData = nullptr;
  int Keep = 0;
  Colormap Colormap_ = 0;
  int Depth = 0;
  int FrameWidth = 0, FrameHeight = 0;
  int ClientWidth = 0, ClientHeight = 0;
  int ClientX = 0, ClientY = 0;
  int DialogIndex = 0;
  int Parent = -1;
  // Geometry as opened, for WInfoWindow's restore items.
  int RestoreX = 0, RestoreY = 0, RestoreWidth = 0, RestoreHeight = 0;
  int X = 0, Y = 0;  // position as WInfoWindow reports it
  // What a converted window's kind (editor, viewer, grid) leaves behind: the
  // routine that frees KindData when the window reverts or closes.
  void (*KindShutdown)(int handle) = nullptr;
  // The kept picture a window shows while a modal level freezes it.
  FrozenPicture Freeze;
  int FreezeCount = 0;
};

// A window split into two panes. Split flags: 1 the panes lie above each
// other (else side by side), 2 keep the proportions on resize, 4 the second
// pane keeps its size. A pane with flag 64 can't be resized by the sash.
inline constexpr unsigned kSplitAbove = 1, kSplitProportional = 2, kSplitKeepSecond = 4;
inline constexpr unsigned kPaneFixed = 64, kPaneNoTitle = 1024;
inline constexpr int kSashWidth = 4;
inline constexpr int kPaneTitleHeight = 18;
struct SplitRecord {
  Widget Sash = nullptr;
  int Parent = -1;
  std::array<int, 2> Pane{-1, -1};
  unsigned Flags = 0;
  std::array<unsigned, 2> PaneFlags{};
  double Proportion = 0.5;  // share of the first pane in what the sash leaves
  int SashPos = 0;          // extent of the first pane in pixels
  int LastWidth = 0, LastHeight = 0;
  Widget FocusWidget = nullptr;
  int MenuPane = -1;        // the pane whose menu the bar shows, -1 none
  bool Dragging = false;
};

namespace zelvy_win {
constexpr int kSlots = zelvy_data::kMaxWindow + 1;
struct State {
  zelv::Slots<WindowRecord, kSlots> WinInfo{};
  zelv::Slots<Widget, kSlots> wtShell{}, wtWindow{}, wtClient{};
  zelv::Slots<Window, kSlots> wShell{}, wWindow{}, wClient{};
  zelv::Slots<int, kSlots> iWinColour = [] {
    zelv::Slots<int, kSlots> a{};
    a.fill(-1);
    return a;
  }();
  zelv::Slots<Cursor, kSlots> hCursorWin{};
  zelv::Slots<int, kSlots> iCursorWin{};
  int iWinMax = -1;
  int iWinCur = 0;
  Atom aWMProtocols = 0, aWMDeleteWindow = 0;
  // The attributes the client windows are created with, one set per window for its background.
  zelv::Slots<XSetWindowAttributes, kSlots> iWinAttributes{};
  DialogEngineHooks dialogEngine;  // what the dialog engine attached, if anything
};

// The one instance, defined in window.cpp.
State& state();

}  // namespace zelvy_win


// The bodies of WindowOpen and WindowOpenChild; handle -1 on failure.
void yywindowopen(int flags, int x, int y, int width, int height, int menuid,
                  std::span<const int> toolbarids, int dialogid, std::string_view title, int colour,
                  int colourcount);
void yywindowopenchild(int& handle, int flags, int x, int y, int width, int height, int menuid,
                       std::span<const int> toolbarids, int dialogid, std::string_view title,
                       int parent, int colour);
// Closes one window and, first, the windows whose parent it is.
void yyWindowCloseChild2(int h);
// Sets WM_NAME and WM_ICON_NAME of a shell, or a pane's title bar.
void yyWindowTitle(int h, std::string_view title);
// Shows a resource dialog as the content of a window's client area.
void yyWindowDialog(int h, int dialogid);
// Splits the selected window into two panes (handles out). position is the
// first pane's extent in pixels, below 0 the middle. status 0, 1038, 1046,
// 1121 or 1122.
void yywindowsplit(unsigned splitflags, unsigned flags1, unsigned flags2, int position,
                   std::string_view title1, std::string_view title2, int& pane1, int& pane2,
                   int& status);
// The sash's translations: <Enter>, <Btn1Down>, <MouseMoved> and <Btn1Up>.
void yyWindowSplitProc(Widget sash, XEvent* event, String* params, Cardinal* count);
// Closes both panes of a split window; the window turns plain again.
void yyWindowSplitUndo(int h);
// True when both panes of a split window agree to close.
bool yyWindowSplitClose(int h);
// Places the panes and the sash of a split window in its client area.
void yyWindowSplitLayout(int h);
// The split record of a split window (kind 5), null for others.
SplitRecord* yyWindowSplitRecord(int h);
// Turns the selected window of kind 1, 2 or 4 back into a plain one; status 0 or 1096.
void yywindowrevert(int& status);
// Components of a window that yyWindowComponent hands out.
enum WindowComponent { kCompShell = 1, kCompFrame, kCompClient, kCompContent, kCompTitle, kCompSash };
// A widget of a window, null when it has none.
Widget yyWindowComponent(int h, int component);
// A client got the focus: title bar colours of the panes, the active pane's menu.
void yyWindowFocusSub(int h);
// Modal freeze: the window keeps the picture it shows now and takes no input;
// false when the picture could not be kept. Freezes nest: each yyWindowFreeze
// is undone by one yyWindowRedraw, the last of which shows the window live
// again and redraws its client.
bool yyWindowFreeze(int h);
void yyWindowRedraw(int h);
// Every open window but exceptWindow (on 1) is frozen, or (on 0) counted down
// one freeze; so are the dialogs the program draws on. Error 1042 when a
// picture could not be kept (the freeze holds without it).
void yygetwindowbitmap_(int on, int exceptWindow, int& error);
// A picture over an X window: a cover window whose background is the copy.
bool yyFreezePicture(Window target, FrozenPicture& out);
void yyFreezeRelease(FrozenPicture& picture);

// True when h names an open window.
bool yywindowexists(int h);
// Lays a window out for its present frame size (menu, status bar, client).
void yyWindowResize(int h);
// Selects a window on both sides; error 1003 when it does not exist.
bool yywindowselect_(int h);
bool yywindowgrselect(int h);
// The handle of a toolkit window by one of its X windows, -1 when none.
// code: 1 frame, 2 client, 3 status bar, 8 shell, or 0 for any.
int yyGetWindowIndex(int code, Window xwin);
// Sets the minimum and maximum size hints of a window for its lock state.
void yyWindowSizeHints(int h);

// Position (-999999 keeps a value) and client size of the selected window;
// show 3 hides it with the windows inside it, other values show them.
void yywindowsizepos(int x, int y, int width, int height, int show);
// Sets the selected window's title (WM_NAME and WM_ICON_NAME) when settitle is 1.
void yywindowtitle(int iconid, int settitle, int& status, std::string_view title);
// Raises the top-level window that holds the selected one and gives it the focus.
void yywindowraise();
// Clears a rectangle of the client area in pixels; colour -1 is the window's background.
void yywindowclear(int x1, int y1, int x2, int y2, int colour);
// exists: 1 when the handle names an open window.
void yywindowtest(int handle, int& exists);
// Moves the client area's contents by deltas in pixels; the uncovered strips
// take a colour (packed red, green, blue; -1 the background).
void yywindowscroll(int deltax, int deltay, int colour);

// Text in the client area, in pixels, with a core font of a family: 0 the
// default sans, 1 "6x13", 2 serif, 3 sans, 4 fixed, 5 symbol, 6 dingbats.
// Returns the font's mean character width and its height.
void yywindowfontcreate(int family, int bold, int italic, int& width, int& height);
// Draws a text with background at x, y (top left); x moves on by its width.
void yywindowoutstring(int& x, int y, std::string_view text);
int yywindowstringlength(std::string_view text);
// Colours by index 0..15 of the default palette, or as packed red, green, blue.
void yywindowfontcolour(int fore, int back);
void yywindowfontcolourrgb(int fore, int back);
void yywindowfontunderline(int on);
