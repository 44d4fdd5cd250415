// Windows: the table of open windows, opening and closing, selection,
// geometry, units and the close protocol.
#include "toolkit/kernel/window.h"

#include <X11/IntrinsicP.h>
#include <X11/Shell.h>
#include <X11/StringDefs.h>
#include <X11/Xatom.h>
#include <Xm/DrawingA.h>
#include <Xm/Protocols.h>
#include <Xm/Xm.h>

#include <algorithm>
#include <cstdlib>
#include <cstdint>
#include <string>

#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/dialog_attach.h"
#include "toolkit/kernel/editor_attach.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/toolbar_private.h"
#include "toolkit/kernel/widgets_private.h"
#include "toolkit/kernel/window_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

// This module's state.
static zelvy_win::State& ws = zelvy_win::state();

namespace {

constexpr int kDefault = -999999;

int menu_height(int h) { return yyMenuBarHeight(h); }

DialogEngineHooks& dialog_engine() { return ws.dialogEngine; }

int sbar_height(int h) {
  const bool bar = zelvy_sbar::state().psbarInfo.size() > static_cast<size_t>(h) && zelvy_sbar::state().psbarInfo[h];
  return bar ? zelvy_sbar::state().iSBarHeight + 1 : 0;
}

// What the frame adds to the client: menu bar, status bar and toolbars.
int extra_height(int h) {
  return menu_height(h) + sbar_height(h) + yyMenuToolbarThickness(h, kToolbarTop) +
         yyMenuToolbarThickness(h, kToolbarBottom);
}
int extra_width(int h) { return yyMenuToolbarThickness(h, kToolbarLeft) + yyMenuToolbarThickness(h, kToolbarRight); }

void yyWindowWMCloseCB(Widget, XtPointer client, XtPointer) {
  const int h = static_cast<int>(reinterpret_cast<std::intptr_t>(client));
  if (!yywindowexists(h) || ws.WinInfo[h].Locked) return;
  // A split window asks its panes first; editors, viewers and grid windows
  // handle their own close when they exist.
  if (ws.WinInfo[h].Kind == 5 && !yyWindowSplitClose(h)) return;
  yyMsgSend(CloseRequest, 0, 0, 0, 0, 0, 0, h, 0);
}

int free_handle() {
  for (int h = 1; h <= zelvy_data::kMaxWindow; ++h)
    if (!ws.wWindow[h]) return h;
  return -1;
}

struct OpenRequest {
  int flags = 7;
  int x = kDefault, y = kDefault;
  int width = 0, height = 0;  // client size in pixels; below 1 means the default
  int menuid = 0;
  std::span<const int> toolbars;
  int dialogid = 0;
  std::string_view title;
  int parent = -1;
  int colour = -1;
  int colourcount = 16;
};

// Dialogs, menus and toolbars come from the resource tables; an identifier
// they do not hold is reported and the window opens without it. Showing them
// is the business of the dialog, menu and toolbar engines.
// Returns true when the window carries the dialog.
bool check_resources(const OpenRequest& q, const char* routine) {
  bool dialog = false;
  if (q.dialogid > 0) {
    int fields = -1, titlelength = -1;
    yyrcdialogcheck(q.dialogid, fields, titlelength);
    if (fields < 0) {
      yyerror(1007, routine);
    } else {
      int w = 0, hgt = 0, anchor = 0, font = 0, bytes = 0;
      std::uint32_t style = 0, layout = 0;
      std::string title;
      yyrcdialogload(q.dialogid, w, hgt, style, layout, anchor, font, bytes, title);
      const bool child_style = dialog_style::can_be_carried(style);
      if (!child_style) yyerror(1045, routine);
      dialog = child_style;
    }
  }
  for (int id : q.toolbars) {
    if (id <= 0) continue;
    int count = -1, w = 0, hgt = 0;
    yyrctoolbarcheck(id, count, w, hgt);
    if (count < 0) yyerror(1002, routine);
  }
  return dialog;
}

// Where and how large a window is to be, worked out before anything exists.
struct Geometry {
  int flags = 7;
  bool with_dialog = false, with_menu = false;
  int cw = 0, ch = 0;  // client size
  int fw = 0, fh = 0;  // frame size: client, menu bar and status bar
  int x = 0, y = 0;    // frame position on the screen
};

Geometry plan_window(const OpenRequest& q, const char* routine) {
  Geometry g;
  g.flags = q.flags;
  g.with_dialog = check_resources(q, routine) && dialog_engine().pixels;
  int width = q.width, height = q.height;
  if (g.with_dialog) {
    // The window takes the dialog's size; a dialog that can't be resized fixes it.
    bool resizable = true;
    dialog_engine().pixels(q.dialogid, width, height, resizable);
    if (!resizable) g.flags = (g.flags | 64) & ~12;
  }
  const auto& zd = zelvy_data::data();
  g.cw = width >= 1 ? width : zd.iscwid * 8 / 10;
  g.ch = height >= 1 ? height : zd.ischgt * 8 / 10;
  // Toolbars lie around the client, each as deep as its buttons make it.
  auto bar = [&q](int slot) {
    return static_cast<int>(q.toolbars.size()) > slot ? yyMenuToolbarResourceThickness(q.toolbars[slot], slot) : 0;
  };
  g.fw = g.cw + bar(kToolbarLeft) + bar(kToolbarRight);
  // A window inside its parent has no menu bar of its own.
  g.with_menu = q.menuid > 0 && !(q.flags & 16);
  const int menu_rows = g.with_menu ? yyMenuRowHeight() : 0;
  g.fh = g.ch + menu_rows + ((q.flags & 32) ? zelvy_sbar::state().iSBarHeight + 1 : 0) + bar(kToolbarTop) +
         bar(kToolbarBottom);

  g.x = q.x;
  g.y = q.y;
  if ((q.flags & 16) && q.parent >= 0) {
    // Inside the parent: relative to its client area on the screen.
    int px = 0, py = 0;
    yyWindowGetPos(q.parent, px, py);
    const WindowRecord& p = ws.WinInfo[q.parent];
    if (g.x == kDefault) g.x = (p.ClientWidth - g.fw) / 2;
    if (g.y == kDefault) g.y = (p.ClientHeight - g.fh) / 2;
    g.x += px;
    g.y += py;
  } else {
    if (g.x == kDefault) g.x = (zd.iscwid - g.fw) / 2;
    if (g.y == kDefault) g.y = (zd.ischgt - g.fh) / 2;
  }
  return g;
}

void init_record(int h, const OpenRequest& q, const Geometry& g) {
  WindowRecord& r = ws.WinInfo[h];
  r = WindowRecord{};
  r.Flags = static_cast<unsigned>(g.flags);
  if (g.flags & 64) r.Flags &= ~12u;
  r.Visible = (q.flags & 128) ? 0 : 1;
  r.Parent = q.parent;
  r.Colormap_ = zelvy_x::state().iCmapMain;
  r.Depth = zelvy_x::state().iDispDepth;
  r.FrameWidth = g.fw;
  r.FrameHeight = g.fh;
  r.RestoreWidth = g.cw;
  r.RestoreHeight = g.ch;
}

// The shell, the frame that holds menu bar, client and status bar, and the
// client window, realised but not yet mapped.
void create_widgets(int h, const OpenRequest& q, const Geometry& g) {
  Display* dpy = xdisplay();
  const auto& xs = zelvy_x::state();
  const std::string title(q.title);
  Arg args[16];
  int n = 0;
  XtSetArg(args[n], XmNdeleteResponse, XmDO_NOTHING); ++n;
  XtSetArg(args[n], XtNborderWidth, 0); ++n;
  XtSetArg(args[n], XtNmappedWhenManaged, False); ++n;
  XtSetArg(args[n], XtNx, g.x); ++n;
  XtSetArg(args[n], XtNy, g.y); ++n;
  XtSetArg(args[n], XtNwidth, g.fw); ++n;
  XtSetArg(args[n], XtNheight, g.fh); ++n;
  XtSetArg(args[n], XtNtitle, title.c_str()); ++n;
  XtSetArg(args[n], XtNiconName, title.c_str()); ++n;
  const bool own_map = xs.iCmapMain != DefaultColormap(dpy, xs.iScreen);
  if (own_map) {
    XtSetArg(args[n], XtNcolormap, xs.iCmapMain); ++n;
    XtSetArg(args[n], XtNvisual, xs.iVisual); ++n;
    XtSetArg(args[n], XtNdepth, xs.iDispDepth); ++n;
  }
  WidgetClass shellclass = applicationShellWidgetClass;
  if (h != 0) {
    shellclass = topLevelShellWidgetClass;
    if (q.parent >= 0 && (q.flags & (256 | 16))) {
      // The window manager keeps such a child above its parent.
      shellclass = transientShellWidgetClass;
      XtSetArg(args[n], XtNtransientFor, ws.wtShell[q.parent]); ++n;
    }
  }
  Widget shell = XtAppCreateShell("Zelv", "Zelv", shellclass, dpy, args, n);
  Widget frame = XtVaCreateManagedWidget("MainWindow", xmDrawingAreaWidgetClass, shell,
                                         XmNmarginWidth, 0, XmNmarginHeight, 0, XmNresizePolicy,
                                         XmRESIZE_NONE, XtNwidth, g.fw, XtNheight, g.fh, nullptr);
  // A window that carries a form shows the form's background where the
  // window is larger than the form.
  constexpr std::size_t kDialogBackground = 3;
  Pixel clientbg = g.with_dialog ? xs.wSchemeCol[kDialogBackground].pixel : WhitePixel(dpy, xs.iScreen);
  if (q.colour >= 0)
    clientbg = yyAllocPixel(q.colour & 255, (q.colour >> 8) & 255, (q.colour >> 16) & 255);
  XSetWindowAttributes& at = ws.iWinAttributes[h];
  at = XSetWindowAttributes{};
  at.background_pixel = clientbg;
  at.border_pixel = BlackPixel(dpy, xs.iScreen);
  at.bit_gravity = StaticGravity;
  at.backing_store = WhenMapped;
  at.cursor = xs.ixCursor[xs.iCursor];
  at.event_mask = StructureNotifyMask | ButtonPressMask | ButtonReleaseMask | PropertyChangeMask;
  Widget client = XtVaCreateManagedWidget(
      "ClientWindow", windWidgetClass, frame, XmNmarginWidth, 0, XmNmarginHeight, 0,
      XmNresizePolicy, XmRESIZE_NONE, XtNx, 0, XtNy, 0, XtNwidth, g.cw, XtNheight, g.ch, XtNborderWidth,
      0, XtNbackground, clientbg, XmNtraversalOn, False, XtNwinAttributes, &at, XtNwinMask,
      static_cast<long>(CWBackPixel | CWBorderPixel | CWBitGravity | CWBackingStore | CWCursor |
                        CWEventMask),
      XtNcolourMap, own_map ? xs.iCmapMain : 0, XtNwinVisual, own_map ? xs.iVisual : nullptr, nullptr);
  if (q.colour >= 0) {
    XtVaSetValues(frame, XtNbackground, clientbg, nullptr);
    XtVaSetValues(shell, XtNbackground, clientbg, nullptr);
  }
  XtRealizeWidget(shell);

  ws.wtShell[h] = shell;
  ws.wtWindow[h] = frame;
  ws.wtClient[h] = client;
  ws.wShell[h] = XtWindow(shell);
  ws.wWindow[h] = XtWindow(frame);
  ws.wClient[h] = XtWindow(client);
  ws.iWinColour[h] = q.colour;
  ws.hCursorWin[h] = 0;
  ws.iWinMax = std::max(ws.iWinMax, h);
}

// Hints and protocols for the window manager, then the parts that live in
// the frame: status bar, menu bar, the dialog; then the window is shown.
void finish_window(int h, const OpenRequest& q, const Geometry& g, const char* routine) {
  Display* dpy = xdisplay();
  XSizeHints hints{};
  hints.flags = USPosition | USSize;
  hints.x = g.x;
  hints.y = g.y;
  hints.width = g.fw;
  hints.height = g.fh;
  XSetWMNormalHints(dpy, ws.wShell[h], &hints);
  yyWindowSizeHints(h);
  yyWindowTitle(h, q.title);

  if (!ws.aWMProtocols) {
    ws.aWMProtocols = XInternAtom(dpy, "WM_PROTOCOLS", False);
    ws.aWMDeleteWindow = XInternAtom(dpy, "WM_DELETE_WINDOW", False);
  }
  XmAddWMProtocolCallback(ws.wtShell[h], ws.aWMDeleteWindow, yyWindowWMCloseCB,
                          reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(h)));

  if (q.flags & 32) yyWindowStatusBarCreate(h);
  if (g.with_menu) {
    int status = 0;
    yymenu(q.menuid, h, status);
    if (status != 0) yyerror(status, routine);
  }
  for (int slot = 0; slot < kToolbarSlots && slot < static_cast<int>(q.toolbars.size()); ++slot) {
    if (q.toolbars[slot] <= 0) continue;
    int error = 0;
    yyMenuToolbarCreate(q.toolbars[slot], h, slot, {}, error);
  }
  yyWindowResize(h);
  yyMsgApplyMasks(h);
  if (g.with_dialog) yyWindowDialog(h, q.dialogid);
  if (h == 0) {
    yyDefaultPalette(zelvy_x::state().iDispDepth, q.colourcount);
    yyResourceProgramIconShow(ws.wtShell[h]);
  }

  if (!(q.flags & 128)) XtMapWidget(ws.wtShell[h]);
  XFlush(dpy);
}

bool open_window(int h, const OpenRequest& q, const char* routine) {
  yyDisplayRootOpen();
  // The status bar's font sets its height, which the frame size counts.
  if (q.flags & 32) yyWindowStatusBarInit(1);
  const Geometry g = plan_window(q, routine);
  init_record(h, q, g);
  create_widgets(h, q, g);
  finish_window(h, q, g, routine);
  return true;
}

}  // namespace

void yyWindowCloseChild2(int h) {
  if (!yywindowexists(h)) return;
  for (int c = 1; c <= ws.iWinMax; ++c)
    if (c != h && ws.wWindow[c] && ws.WinInfo[c].Parent == h) yyWindowCloseChild2(c);
  Display* dpy = xdisplay();
  WindowRecord& r = ws.WinInfo[h];
  // A pane has no shell: its frame lives in the parent's client area.
  Widget top = ws.wtShell[h] ? ws.wtShell[h] : ws.wtWindow[h];
  while (r.FreezeCount > 0) yyWindowRedraw(h);
  if (!r.Keep) XtUnmapWidget(top);
  if (r.Kind == 1 && yyEditorHooks().shutdown) yyEditorHooks().shutdown(h);
  yyWindowStatusBarShutdown(h);
  yyMenuToolbarWindowClosed(h);
  yyMenuWindowClosed(h);
  if (r.KindShutdown) r.KindShutdown(h);
  if (ws.wtShell[h]) yyResourceIconForget(ws.wtShell[h]);
  if (ws.wtShell[h])
    XmRemoveWMProtocolCallback(ws.wtShell[h], ws.aWMDeleteWindow, yyWindowWMCloseCB,
                               reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(h)));
  XtDestroyWidget(top);
  ws.WinInfo[h] = WindowRecord{};
  ws.wtShell[h] = ws.wtWindow[h] = ws.wtClient[h] = nullptr;
  ws.wShell[h] = ws.wWindow[h] = ws.wClient[h] = 0;
  ws.iWinColour[h] = -1;
  ws.hCursorWin[h] = 0;
  zelvy_data::data().iwflags[h] = -1;
  XSync(dpy, False);
}

namespace {

void adjust_winmax() {
  while (ws.iWinMax >= 0 && !ws.wWindow[ws.iWinMax]) --ws.iWinMax;
}

// The public side of a selection: size for unit conversion.
void take_selection(int h) {
  ws.iWinCur = h;
  zelvy_data::data().iwinhandle = h;
  zelvy_data::data().iwinwid = ws.WinInfo[h].ClientWidth;
  zelvy_data::data().iwinhgt = ws.WinInfo[h].ClientHeight;
  int status = 0;
  yymenuselect(h, -1, status);  // the menu routines act on the selected window's menu
}

}  // namespace

int yyunitstopixels(int unit, int size) {
  if (size < 1) return 0;
  return static_cast<int>(static_cast<long long>(size - 1) * unit / 9999);
}

int yyunitsfrompixels(int pixel, int size) {
  if (size < 2) return 0;
  return static_cast<int>((static_cast<float>(pixel) + 0.5f) * 9999.0f / static_cast<float>(size));
}

void yyWindowPositionOnScreen(int width, int height, int& x, int& y) {
  const int dw = zelvy_x::state().iDispWidth, dh = zelvy_x::state().iDispHeight;
  if (x + width > dw) x = dw - width;
  if (x < 0) x = 0;
  if (y + height > dh) y = dh - height;
  if (y < 0) y = 0;
}

bool yywindowexists(int h) { return h >= 0 && h <= ws.iWinMax && h < zelvy_win::kSlots && ws.wWindow[h] != 0; }

int yyGetWindowIndex(int code, Window xwin) {
  if (!xwin) return -1;
  for (int h = 0; h <= ws.iWinMax; ++h) {
    if (!ws.wWindow[h]) continue;
    if ((code == 0 || code == 8) && ws.wShell[h] == xwin) return h;
    if ((code == 0 || code == 1) && ws.wWindow[h] == xwin) return h;
    if ((code == 0 || code == 2) && ws.wClient[h] == xwin) return h;
    if ((code == 0 || code == 3) && yyWindowStatusBarOwns(h, xwin)) return h;
  }
  return -1;
}

void yyWindowSizeHints(int h) {
  if (!yywindowexists(h)) return;
  const WindowRecord& r = ws.WinInfo[h];
  if (!ws.wShell[h]) return;  // a pane: the split sizes it
  XSizeHints hints{};
  long supplied = 0;
  XGetWMNormalHints(xdisplay(), ws.wShell[h], &hints, &supplied);
  hints.flags &= ~(PMinSize | PMaxSize);
  if (r.Locked || (r.Flags & 64)) {
    hints.flags |= PMinSize | PMaxSize;
    hints.min_width = hints.max_width = r.FrameWidth;
    hints.min_height = hints.max_height = r.FrameHeight;
  }
  XSetWMNormalHints(xdisplay(), ws.wShell[h], &hints);
}

void yyWindowResize(int h) {
  if (!yywindowexists(h)) return;
  WindowRecord& r = ws.WinInfo[h];
  const int title = r.TitleLabel ? kPaneTitleHeight : 0;
  if (r.TitleLabel) XtConfigureWidget(r.TitleLabel, 0, 0, std::max(1, r.FrameWidth), kPaneTitleHeight, 0);
  int left = 0, top = title + menu_height(h);
  int cw = r.FrameWidth, ch = r.FrameHeight - top - sbar_height(h);
  yyMenuToolbarLayout(h, left, top, cw, ch);
  cw = std::max(1, cw);
  ch = std::max(1, ch);
  XtConfigureWidget(ws.wtClient[h], left, top, cw, ch, 0);
  if (r.Content) XtConfigureWidget(r.Content, 0, 0, cw, ch, 0);
  if (r.Kind == 1 && yyEditorHooks().resize) yyEditorHooks().resize(h);
  yyWindowStatusBarResize(h);
  r.ClientX = left;
  r.ClientY = top;
  r.ClientWidth = cw;
  r.ClientHeight = ch;
  if (h == ws.iWinCur) {
    zelvy_data::data().iwinwid = cw;
    zelvy_data::data().iwinhgt = ch;
  }
  if (r.Kind == 5) yyWindowSplitLayout(h);
}

void yyWindowTitle(int h, std::string_view title) {
  WindowRecord& r = ws.WinInfo[h];
  r.Title = std::string(title);
  const std::string t(title);
  if (r.TitleLabel) {
    // A pane shows its title in its own bar, behind one blank.
    const std::string shown = " " + t;
    XmString xs = XmStringCreateLocalized(const_cast<char*>(shown.c_str()));
    XtVaSetValues(r.TitleLabel, XmNlabelString, xs, nullptr);
    XmStringFree(xs);
    return;
  }
  if (!ws.wShell[h]) return;
  XStoreName(xdisplay(), ws.wShell[h], t.c_str());
  XSetIconName(xdisplay(), ws.wShell[h], t.c_str());
}

void yyWindowDialog(int h, int dialogid) {
  if (dialog_engine().combine) dialog_engine().combine(dialogid, h);
}

bool yywindowselect_(int h) {
  if (!yywindowexists(h)) {
    yyerror(1003, "YYWindowSelect");
    return false;
  }
  take_selection(h);
  return true;
}

// The graphics side's name for the selection.
bool yywindowgrselect(int h) { return yywindowselect_(h); }

bool yyWindowGetPos(int h, int& x, int& y) {
  if (!yywindowexists(h) || !xdisplay()) return false;
  Window child = 0;
  int rx = 0, ry = 0;
  if (!XTranslateCoordinates(xdisplay(), ws.wClient[h], RootWindow(xdisplay(), zelvy_x::state().iScreen), x, y, &rx,
                             &ry, &child))
    return false;
  x = rx;
  y = ry;
  return true;
}

void yywindowopen(int flags, int x, int y, int width, int height, int menuid,
                  std::span<const int> toolbarids, int dialogid, std::string_view title, int colour,
                  int colourcount) {
  if (zelvy_data::data().brootopen) return;
  if (!xdisplay()) {
    yyerror(1122, "WindowOpen");
    return;
  }
  ws.iWinMax = 0;
  yyMsgResetFilter();
  OpenRequest q;
  q.flags = flags;
  q.x = x;
  q.y = y;
  q.width = width;
  q.height = height;
  q.menuid = menuid;
  q.toolbars = toolbarids;
  q.dialogid = dialogid;
  q.title = title;
  q.colour = colour;
  q.colourcount = colourcount;
  if (dialog_engine().init) dialog_engine().init();
  open_window(0, q, "WindowOpen");
  zelvy_data::data().brootopen = true;
  zelvy_data::data().iwflags[0] = q.flags;
  // The dialog the root window carries is the selected one from here on.
  zelvy_data::data().icurdialog = ws.WinInfo[0].Kind == 3 ? q.dialogid : 0;
  take_selection(0);
  yyMsgApplyMasks(0);
  IGrInit();
}

void WindowOpen(std::optional<int> flags, std::optional<int> x, std::optional<int> y,
                std::optional<int> width, std::optional<int> height, std::optional<int> menuid,
                std::span<const int> toolbarids, std::optional<int> dialogid, std::string_view title,
                std::optional<int> colourcount, std::optional<int> colour) {
  int count = colourcount.value_or(16);
  if (count != 16 && count != 32 && count != 64 && count != 128) count = 16;
  yywindowopen(flags.value_or(7), x.value_or(kDefault), y.value_or(kDefault), width.value_or(0),
               height.value_or(0), menuid.value_or(0), toolbarids, dialogid.value_or(0), title,
               colour.value_or(-1), count);
}

void yywindowopenchild(int& handle, int flags, int x, int y, int width, int height, int menuid,
                       std::span<const int> toolbarids, int dialogid, std::string_view title,
                       int parent, int colour) {
  handle = -1;
  if (!xdisplay()) {
    yyerror(1122, "WindowOpenChild");
    return;
  }
  OpenRequest q;
  q.flags = flags;
  q.parent = parent;
  const int h = free_handle();
  if (h < 0) {
    yyerror(1121, "WindowOpenChild");
    return;
  }
  if (q.flags & 16) {
    if (!yywindowexists(q.parent)) {
      yyerror(1003, "WindowOpenChild");
      return;
    }
    if (!ws.WinInfo[q.parent].Visible) {
      yyerror(1016, "WindowOpenChild");
      return;
    }
    if (ws.WinInfo[q.parent].Kind != 0) {
      yyerror(ws.WinInfo[q.parent].Kind == 3 ? 1046 : 1056, "WindowOpenChild");
      return;
    }
  } else if (q.parent >= 0 && !yywindowexists(q.parent)) {
    q.parent = -1;
  }
  q.x = x;
  q.y = y;
  q.width = width;
  q.height = height;
  q.menuid = menuid;
  q.toolbars = toolbarids;
  q.dialogid = dialogid;
  q.title = title;
  q.colour = colour;
  if (ws.iWinMax < 0) ws.iWinMax = 0;
  if (!open_window(h, q, "WindowOpenChild")) {
    yyerror(1122, "WindowOpenChild");
    return;
  }
  handle = h;
  zelvy_data::data().iwflags[h] = q.flags;
  take_selection(h);
  yyMsgApplyMasks(h);
}

void WindowOpenChild(int& handle, std::optional<int> flags, std::optional<int> x,
                     std::optional<int> y, std::optional<int> width, std::optional<int> height,
                     std::optional<int> menuid, std::span<const int> toolbarids,
                     std::optional<int> dialogid, std::string_view title,
                     std::optional<int> parent, std::optional<int> colour) {
  const int f = flags.value_or(7);
  const int p = parent.value_or(-1);
  int px = x.value_or(kDefault), py = y.value_or(kDefault);
  int pw = width.value_or(0), ph = height.value_or(0);
  if ((f & 16) && yywindowexists(p)) {
    // Window units of the parent, with a default of 8000 units.
    const int cw = ws.WinInfo[p].ClientWidth, ch = ws.WinInfo[p].ClientHeight;
    px = x ? yyunitstopixels(*x, cw) : kDefault;
    py = y ? yyunitstopixels(*y, ch) : kDefault;
    pw = yyunitstopixels(width.value_or(8000), cw);
    ph = yyunitstopixels(height.value_or(8000), ch);
  }
  yywindowopenchild(handle, f, px, py, pw, ph, menuid.value_or(0), toolbarids, dialogid.value_or(0),
                    title, p, colour.value_or(-1));
}

void WindowCloseChild(int handle) {
  if (handle < 1 || !yywindowexists(handle)) {
    yyerror(1003, "WindowCloseChild");
    return;
  }
  // A pane goes with its whole split: the parent turns plain again.
  const int parent = ws.WinInfo[handle].Parent;
  if (yywindowexists(parent) && ws.WinInfo[parent].Kind == 5 && !ws.wtShell[handle]) {
    yyWindowSplitUndo(parent);
  } else {
    yyWindowCloseChild2(handle);
  }
  adjust_winmax();
  zelvy_data::data().iwflags[handle] = -1;
  if (!yywindowexists(ws.iWinCur) && yywindowexists(0)) take_selection(0);
}

void WindowClose() {
  if (!zelvy_data::data().brootopen) return;
  if (zelvy_x::state().graphicsShutdown) zelvy_x::state().graphicsShutdown();
  for (int h = ws.iWinMax; h >= 1; --h)
    if (ws.wWindow[h]) yyWindowCloseChild2(h);
  if (dialog_engine().shutdown) dialog_engine().shutdown();  // while the windows the dialogs live in still exist
  yyWindowCloseChild2(0);
  ws.iWinMax = -1;
  ws.iWinCur = 0;
  yyMsgRestoreFilter();
  zelvy_x::state().gColtab.clear();
  zelvy_x::state().gColtab.shrink_to_fit();
  zelvy_x::state().nColtabEntries = 0;
  zelvy_data::data().brootopen = false;
  zelvy_data::data().iwflags[0] = -1;
  zelvy_data::data().icurdialog = 0;
  zelvy_data::data().iwinhandle = 0;
}

void WindowSelect(int handle) { yywindowselect_(handle); }

namespace {

// Hides or shows a window and, recursively, the windows that lie inside it;
// showing leaves children that were hidden on their own as they are.
void yyWindowShowHide(int h, bool show) {
  WindowRecord& r = ws.WinInfo[h];
  if (!ws.wtShell[h]) return;
  if (show) {
    r.Visible = 1;
    XtMapWidget(ws.wtShell[h]);
  } else {
    XtUnmapWidget(ws.wtShell[h]);
  }
  for (int c = 1; c <= ws.iWinMax; ++c) {
    if (!ws.wWindow[c] || ws.WinInfo[c].Parent != h || !(ws.WinInfo[c].Flags & 16)) continue;
    if (!show) XtUnmapWidget(ws.wtShell[c]);
    else if (ws.WinInfo[c].Visible) yyWindowShowHide(c, true);
  }
  if (!show) r.Visible = 0;
}

}  // namespace

void yywindowsizepos(int x, int y, int width, int height, int show) {
  const int h = ws.iWinCur;
  if (!yywindowexists(h) || !ws.wtShell[h]) return;  // panes are placed by their split
  WindowRecord& r = ws.WinInfo[h];
  Display* dpy = xdisplay();
  Position sx = 0, sy = 0;
  XtVaGetValues(ws.wtShell[h], XtNx, &sx, XtNy, &sy, nullptr);
  int nx = x == kDefault ? sx : x, ny = y == kDefault ? sy : y;
  if ((r.Flags & 16) && ws.wShell[0] && h != 0) {
    Position rx = 0, ry = 0;
    XtVaGetValues(ws.wtShell[0], XtNx, &rx, XtNy, &ry, nullptr);
    if (x != kDefault) nx += rx;
    if (y != kDefault) ny += ry;
  }
  if (width != kDefault && width > 0) r.FrameWidth = width + extra_width(h);
  if (height != kDefault && height > 0) r.FrameHeight = height + extra_height(h);
  XtConfigureWidget(ws.wtShell[h], static_cast<Position>(nx), static_cast<Position>(ny),
                    static_cast<Dimension>(std::max(1, r.FrameWidth)),
                    static_cast<Dimension>(std::max(1, r.FrameHeight)), 0);
  XMoveResizeWindow(dpy, ws.wShell[h], nx, ny, std::max(1, r.FrameWidth), std::max(1, r.FrameHeight));
  yyWindowSizeHints(h);
  yyWindowResize(h);
  yyWindowShowHide(h, show != 3);
  XSync(dpy, False);
}

void yywindowtitle(int iconid, int settitle, int& status, std::string_view title) {
  status = 0;
  const int h = ws.iWinCur;
  if (!yywindowexists(h)) {
    status = 1003;
    return;
  }
  if (settitle == 1) yyWindowTitle(h, title);
  if (iconid != -1 && ws.wtShell[h]) status = yyResourceIconShow(ws.wtShell[h], iconid);
  XFlush(xdisplay());
}

void yywindowraise() {
  const int h = ws.iWinCur;
  if (!yywindowexists(h)) return;
  // Panes have no shell: the topmost window that holds them is raised.
  int top = h;
  while (!ws.wShell[top] && yywindowexists(ws.WinInfo[top].Parent)) top = ws.WinInfo[top].Parent;
  if (!ws.wShell[top]) return;
  XRaiseWindow(xdisplay(), ws.wShell[top]);
  XSetInputFocus(xdisplay(), ws.wShell[h] ? ws.wShell[h] : ws.wClient[h], RevertToParent, CurrentTime);
  XFlush(xdisplay());
}

void yywindowclear(int x1, int y1, int x2, int y2, int colour) {
  const int h = ws.iWinCur;
  if (!yywindowexists(h)) return;
  Display* dpy = xdisplay();
  const int x = std::min(x1, x2), y = std::min(y1, y2);
  const unsigned w = static_cast<unsigned>(std::abs(x2 - x1) + 1), ht = static_cast<unsigned>(std::abs(y2 - y1) + 1);
  if (colour < 0) {
    XClearArea(dpy, ws.wClient[h], x, y, w, ht, False);
  } else {
    GC gc = XCreateGC(dpy, ws.wClient[h], 0, nullptr);
    XSetForeground(dpy, gc, yyAllocPixel(colour & 255, (colour >> 8) & 255, (colour >> 16) & 255));
    XFillRectangle(dpy, ws.wClient[h], gc, x, y, w, ht);
    XFreeGC(dpy, gc);
  }
  XFlush(dpy);
}

void yywindowtest(int handle, int& exists) { exists = yywindowexists(handle) ? 1 : 0; }

int WInfoWindow(int item) {
  const int h = ws.iWinCur;
  const bool open = yywindowexists(h);
  const WindowRecord& r = ws.WinInfo[open ? h : 0];
  auto screen_pos = [&](Window w, bool wantx) {
    if (!open || !w) return 0;
    int sx = 0, sy = 0;
    Window child;
    XTranslateCoordinates(xdisplay(), w, RootWindow(xdisplay(), zelvy_x::state().iScreen), 0, 0, &sx, &sy,
                          &child);
    return wantx ? sx : sy;
  };
  auto position = [&](bool wantx) {
    int p = screen_pos(ws.wShell[h], wantx);
    if (open && (r.Flags & 16) && yywindowexists(r.Parent)) {
      const WindowRecord& pr = ws.WinInfo[r.Parent];
      p -= screen_pos(ws.wClient[r.Parent], wantx);
      p = yyunitsfrompixels(p, wantx ? pr.ClientWidth : pr.ClientHeight);
    }
    return p;
  };
  switch (item) {
    case 1: return open ? r.ClientWidth : 0;
    case 2: return open ? r.ClientHeight : 0;
    case 3: return open ? static_cast<int>(zelvy_data::data().iwflags[h]) : 0;
    case 4: return h;
    case 5: case 13: return position(true);
    case 6: case 14: return position(false);
    case 7: return screen_pos(ws.wClient[h], true);
    case 8: return screen_pos(ws.wClient[h], false);
    case 9: return open && r.Visible ? 1 : 3;
    case 10: return open ? r.Kind : 0;
    case 11: return open ? r.ClientWidth : 0;
    case 12: return open ? r.ClientHeight : 0;
    case 15: {
      int n = 0;
      for (int c = 1; c <= zelvy_data::kMaxWindow; ++c) n += ws.wWindow[c] == 0;
      return n;
    }
    case 16: return zelvy_data::data().brootopen ? 1 : 0;
    default: return 0;
  }
}

void WindowUnitsToPixels(int unitx, int unity, int& pixelx, int& pixely) {
  pixelx = yyunitstopixels(unitx, zelvy_data::data().iwinwid);
  pixely = yyunitstopixels(unity, zelvy_data::data().iwinhgt);
}

void WindowUnitsFromPixels(int pixelx, int pixely, int& unitx, int& unity) {
  unitx = yyunitsfrompixels(pixelx, zelvy_data::data().iwinwid);
  unity = yyunitsfrompixels(pixely, zelvy_data::data().iwinhgt);
}

void yyAttachDialogEngine(const DialogEngineHooks& hooks) { dialog_engine() = hooks; }

namespace zelvy_win {
State& state() {
  static State s;
  return s;
}
}  // namespace zelvy_win
