// Split windows: two panes in a window's client area with a sash between
// them; reverting a converted window; a window's components; pane focus.
#include <X11/IntrinsicP.h>
#include <X11/StringDefs.h>
#include <Xm/DrawingA.h>
#include <Xm/Label.h>
#include <Xm/Xm.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/widgets_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

namespace {

zelvy_win::State& ws = zelvy_win::state();

// The split records, owned here; a split window's KindData points at its own.
zelv::Slots<std::unique_ptr<SplitRecord>, zelvy_win::kSlots>& records() {
  static zelv::Slots<std::unique_ptr<SplitRecord>, zelvy_win::kSlots> r;
  return r;
}

constexpr const char* kSashTranslations =
    "<Enter>: yyWindowSplitProc()\n"
    "<Btn1Down>: yyWindowSplitProc()\n"
    "<MouseMoved>: yyWindowSplitProc()\n"
    "<Btn1Up>: yyWindowSplitProc()";

bool above(const SplitRecord& s) { return (s.Flags & kSplitAbove) != 0; }

bool any_fixed(const SplitRecord& s) {
  return ((s.PaneFlags[0] | s.PaneFlags[1]) & kPaneFixed) != 0;
}

// The extent along the split's axis of the parent's client area.
int axis_extent(const SplitRecord& s) {
  const WindowRecord& p = ws.WinInfo[s.Parent];
  return above(s) ? p.ClientHeight : p.ClientWidth;
}

// The sash stays where both panes keep at least nothing and the sash itself fits.
int clamp_sash(const SplitRecord& s, int pos) { return std::clamp(pos, 0, std::max(0, axis_extent(s) - 5)); }

int free_handle(int after) {
  for (int h = after + 1; h <= zelvy_data::kMaxWindow; ++h)
    if (!ws.wWindow[h]) return h;
  return -1;
}

void register_actions() {
  static bool done = false;
  if (done) return;
  done = true;
  static XtActionsRec actions[] = {{const_cast<char*>("yyWindowSplitProc"), yyWindowSplitProc}};
  XtAppAddActions(zelvy_x::state().ixContext, actions, XtNumber(actions));
}

// One pane: a frame in the parent's client area, a title bar unless the pane
// asks for none, and a client area of its own.
void make_pane(int p, int parent, unsigned flags, std::string_view title) {
  const auto& xs = zelvy_x::state();
  Display* dpy = xdisplay();
  WindowRecord& r = ws.WinInfo[p];
  r = WindowRecord{};
  r.Flags = flags;
  r.Parent = parent;
  r.Colormap_ = ws.WinInfo[parent].Colormap_;
  r.Depth = ws.WinInfo[parent].Depth;
  Widget frame = XtVaCreateManagedWidget("MainWindow", xmDrawingAreaWidgetClass, ws.wtClient[parent],
                                         XmNmarginWidth, 0, XmNmarginHeight, 0, XmNresizePolicy,
                                         XmRESIZE_NONE, XtNwidth, 1, XtNheight, 1, XtNborderWidth, 0,
                                         nullptr);
  if (!(flags & kPaneNoTitle)) {
    r.TitleLabel = XtVaCreateManagedWidget("TitleLabel", xmLabelWidgetClass, frame, XmNalignment,
                                           XmALIGNMENT_BEGINNING, XmNmarginHeight, 0, XmNrecomputeSize,
                                           False, XtNheight, kPaneTitleHeight, XtNborderWidth, 0,
                                           XmNtraversalOn, False, nullptr);
  }
  XSetWindowAttributes& at = ws.iWinAttributes[p];
  at = ws.iWinAttributes[parent];
  at.background_pixel = WhitePixel(dpy, xs.iScreen);
  Widget client = XtVaCreateManagedWidget(
      "ClientWindow", windWidgetClass, frame, XmNmarginWidth, 0, XmNmarginHeight, 0, XmNresizePolicy,
      XmRESIZE_NONE, XtNwidth, 1, XtNheight, 1, XtNborderWidth, 0, XtNbackground, at.background_pixel,
      XmNtraversalOn, False, XtNwinAttributes, &at, XtNwinMask,
      static_cast<long>(CWBackPixel | CWBorderPixel | CWBitGravity | CWBackingStore | CWCursor | CWEventMask),
      nullptr);
  XtRealizeWidget(frame);
  ws.wtShell[p] = nullptr;
  ws.wShell[p] = 0;
  ws.wtWindow[p] = frame;
  ws.wtClient[p] = client;
  ws.wWindow[p] = XtWindow(frame);
  ws.wClient[p] = XtWindow(client);
  ws.iWinColour[p] = -1;
  ws.hCursorWin[p] = 0;
  ws.iWinMax = std::max(ws.iWinMax, p);
  zelvy_data::data().iwflags[p] = static_cast<int>(flags);
  yyWindowTitle(p, title);
}

SplitRecord* split_of_sash(Widget sash) {
  for (auto& s : records())
    if (s && s->Sash == sash) return s.get();
  return nullptr;
}

Pixel title_pixel(int scheme) { return zelvy_x::state().wSchemeCol[static_cast<std::size_t>(scheme)].pixel; }

}  // namespace

SplitRecord* yyWindowSplitRecord(int h) {
  if (!yywindowexists(h) || ws.WinInfo[h].Kind != 5) return nullptr;
  return records()[h].get();
}

void yywindowsplit(unsigned splitflags, unsigned flags1, unsigned flags2, int position,
                   std::string_view title1, std::string_view title2, int& pane1, int& pane2,
                   int& status) {
  pane1 = pane2 = -1;
  status = 0;
  const int h = ws.iWinCur;
  if (!yywindowexists(h) || !xdisplay()) {
    status = 1003;
    return;
  }
  const WindowRecord& r = ws.WinInfo[h];
  if (r.Kind != 0) {
    status = r.Kind == 3 ? 1046 : 1038;
    return;
  }
  for (int c = 1; c <= ws.iWinMax; ++c)
    if (ws.wWindow[c] && ws.WinInfo[c].Parent == h && (ws.WinInfo[c].Flags & 16)) {
      status = 1038;
      return;
    }
  const int a = free_handle(0);
  const int b = a < 0 ? -1 : free_handle(a);
  if (b < 0) {
    status = 1121;
    return;
  }
  register_actions();
  // A failure of the server while the client is rebuilt is expected to be
  // possible here, and only here: the error handler records it.
  auto& xs = zelvy_x::state();
  xs.iXError = 0;
  auto rec = std::make_unique<SplitRecord>();
  SplitRecord& s = *rec;
  s.Parent = h;
  s.Flags = splitflags;
  s.PaneFlags = {flags1, flags2};
  s.Pane = {a, b};
  make_pane(a, h, flags1, title1);
  make_pane(b, h, flags2, title2);
  s.Sash = XtVaCreateManagedWidget("Sash", widgetClass, ws.wtClient[h], XtNwidth, 1, XtNheight, 1,
                                   XtNborderWidth, 0, XtNbackground, title_pixel(3), nullptr);
  XtOverrideTranslations(s.Sash, XtParseTranslationTable(kSashTranslations));
  XtRealizeWidget(s.Sash);
  WindowRecord& pr = ws.WinInfo[h];
  pr.Kind = 5;
  pr.KindData = rec.get();
  pr.KindShutdown = [](int handle) { records()[handle].reset(); };
  pr.Content = nullptr;
  s.LastWidth = pr.ClientWidth;
  s.LastHeight = pr.ClientHeight;
  const int free = std::max(0, axis_extent(s) - kSashWidth);
  s.SashPos = clamp_sash(s, position >= 0 ? position : free / 2);
  s.Proportion = free > 0 ? static_cast<double>(s.SashPos) / free : 0.5;
  records()[h] = std::move(rec);
  yyWindowSplitLayout(h);
  XSync(xdisplay(), False);
  if (xs.iXError != 0) {
    yyWindowSplitUndo(h);
    status = 1122;
    return;
  }
  pane1 = a;
  pane2 = b;
  yyWindowFocusSub(a);
}

void yyWindowSplitLayout(int h) {
  SplitRecord* sp = yyWindowSplitRecord(h);
  if (!sp) return;
  SplitRecord& s = *sp;
  const WindowRecord& pr = ws.WinInfo[h];
  const int total = axis_extent(s);
  const int free = std::max(0, total - kSashWidth);
  // A new size of the parent: the proportions hold, or the second pane keeps
  // its size, or the first does. A fixed pane always keeps its size.
  const int oldtotal = above(s) ? s.LastHeight : s.LastWidth;
  if (oldtotal != total && oldtotal > 0) {
    const int second = std::max(0, oldtotal - kSashWidth - s.SashPos);
    if (s.PaneFlags[0] & kPaneFixed) {
      // the first pane's extent stays
    } else if ((s.PaneFlags[1] & kPaneFixed) || (s.Flags & kSplitKeepSecond)) {
      s.SashPos = free - second;
    } else if (s.Flags & kSplitProportional) {
      s.SashPos = static_cast<int>(std::lround(s.Proportion * free));
    }
    s.SashPos = clamp_sash(s, s.SashPos);
  }
  s.LastWidth = pr.ClientWidth;
  s.LastHeight = pr.ClientHeight;
  const int first = s.SashPos;
  const int second = std::max(1, total - first - kSashWidth);
  const int across = above(s) ? pr.ClientWidth : pr.ClientHeight;
  auto place = [&](Widget w, int along, int extent) {
    if (above(s)) XtConfigureWidget(w, 0, static_cast<Position>(along), std::max(1, across), std::max(1, extent), 0);
    else XtConfigureWidget(w, static_cast<Position>(along), 0, std::max(1, extent), std::max(1, across), 0);
  };
  const std::array<int, 2> at{0, first + kSashWidth}, extent{first, second};
  for (int i = 0; i < 2; ++i) {
    const int p = s.Pane[static_cast<std::size_t>(i)];
    if (!yywindowexists(p)) continue;
    WindowRecord& r = ws.WinInfo[p];
    r.FrameWidth = above(s) ? across : extent[static_cast<std::size_t>(i)];
    r.FrameHeight = above(s) ? extent[static_cast<std::size_t>(i)] : across;
    r.RestoreWidth = r.FrameWidth;
    r.RestoreHeight = r.FrameHeight;
    place(ws.wtWindow[p], at[static_cast<std::size_t>(i)], extent[static_cast<std::size_t>(i)]);
    yyWindowResize(p);
  }
  place(s.Sash, first, kSashWidth);
}

void yyWindowSplitProc(Widget sash, XEvent* event, String*, Cardinal*) {
  SplitRecord* sp = split_of_sash(sash);
  if (!sp || !event) return;
  SplitRecord& s = *sp;
  Display* dpy = xdisplay();
  const auto& xs = zelvy_x::state();
  switch (event->type) {
    case EnterNotify: {
      // A fixed pane can't be dragged: the sash shows the ordinary cursor then.
      const int shape = any_fixed(s) ? 0 : above(s) ? 7 : 8;
      XDefineCursor(dpy, XtWindow(sash), xs.ixCursor[static_cast<std::size_t>(shape)]);
      break;
    }
    case ButtonPress:
      s.Dragging = !any_fixed(s) && !ws.WinInfo[s.Parent].Locked;
      break;
    case MotionNotify: {
      if (!s.Dragging) break;
      Position sx = 0, sy = 0;
      XtVaGetValues(sash, XtNx, &sx, XtNy, &sy, nullptr);
      // The pointer within the parent's client area, less the grip offset
      // of the sash's middle.
      const int along = above(s) ? sy + event->xmotion.y : sx + event->xmotion.x;
      const int pos = clamp_sash(s, along - kSashWidth / 2);
      if (pos == s.SashPos) break;
      s.SashPos = pos;
      const int free = std::max(1, axis_extent(s) - kSashWidth);
      s.Proportion = static_cast<double>(pos) / free;
      yyWindowSplitLayout(s.Parent);
      break;
    }
    case ButtonRelease:
      s.Dragging = false;
      break;
    default:
      break;
  }
}

bool yyWindowSplitClose(int h) {
  const SplitRecord* s = yyWindowSplitRecord(h);
  if (!s) return true;
  for (int p : s->Pane)
    if (yywindowexists(p) && ws.WinInfo[p].Locked) return false;
  return true;
}

void yyWindowSplitUndo(int h) {
  SplitRecord* s = yyWindowSplitRecord(h);
  if (!s) return;
  const std::array<int, 2> panes = s->Pane;
  Widget sash = s->Sash;
  for (int p : panes) {
    if (!yywindowexists(p)) continue;
    yyWindowCloseChild2(p);
    zelvy_data::data().iwflags[p] = -1;
  }
  if (sash) XtDestroyWidget(sash);
  WindowRecord& r = ws.WinInfo[h];
  r.Kind = 0;
  r.KindData = nullptr;
  r.KindShutdown = nullptr;
  records()[h].reset();
  // The parent's bar shows its own menu again, and the client takes the room.
  yyMenuShowOnBar(h, h);
  yyMenuPositionRoot(h);
  if (!yywindowexists(ws.iWinCur)) yywindowselect_(h);
  XSync(xdisplay(), False);
}

void yywindowrevert(int& status) {
  status = 0;
  const int h = ws.iWinCur;
  if (!yywindowexists(h)) {
    status = 1003;
    return;
  }
  WindowRecord& r = ws.WinInfo[h];
  if (r.Kind != 1 && r.Kind != 2 && r.Kind != 4) {
    status = 1096;
    return;
  }
  if (r.Mode == 3) yyMsgSemiModelessStack(-1, 1, h);
  if (r.KindShutdown) r.KindShutdown(h);
  r.KindShutdown = nullptr;
  r.KindData = nullptr;
  if (r.Content) XtDestroyWidget(r.Content);
  r.Content = nullptr;
  r.Kind = 0;
  r.Mode = 2;
  yyMenuKindPop(h);
  yyWindowResize(h);
}

Widget yyWindowComponent(int h, int component) {
  if (!yywindowexists(h)) return nullptr;
  switch (component) {
    case kCompShell: return ws.wtShell[h];
    case kCompFrame: return ws.wtWindow[h];
    case kCompClient: return ws.wtClient[h];
    case kCompContent: return ws.WinInfo[h].Content;
    case kCompTitle: return ws.WinInfo[h].TitleLabel;
    case kCompSash: {
      const SplitRecord* s = yyWindowSplitRecord(h);
      return s ? s->Sash : nullptr;
    }
    default: return nullptr;
  }
}

void yyWindowFocusSub(int h) {
  if (!yywindowexists(h) || !xdisplay()) return;
  // The active pane and its ancestors take the active colours, all other
  // panes the inactive ones.
  for (int p = 1; p <= ws.iWinMax; ++p) {
    const Widget label = ws.wWindow[p] ? ws.WinInfo[p].TitleLabel : nullptr;
    if (!label) continue;
    bool active = false;
    for (int a = h, guard = 0; yywindowexists(a) && guard < zelvy_win::kSlots; a = ws.WinInfo[a].Parent, ++guard)
      if (a == p) active = true;
    XtVaSetValues(label, XtNforeground, title_pixel(active ? 1 : 3), XtNbackground,
                  title_pixel(active ? 5 : 4), nullptr);
  }
  // The parent's bar shows the menu of the active pane: its own, else the
  // first one found up the chain.
  const int parent = ws.WinInfo[h].Parent;
  SplitRecord* s = yyWindowSplitRecord(parent);
  if (!s || ws.wtShell[h]) return;
  int m = h;
  while (yywindowexists(m) && !zelvy_menu::state().pwRootMenuSub[m]) m = ws.WinInfo[m].Parent;
  if (!yywindowexists(m)) return;
  s->MenuPane = m == parent ? -1 : m;
  yyMenuShowOnBar(parent, m);
}
