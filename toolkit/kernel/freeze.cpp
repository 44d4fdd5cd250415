// The picture freeze behind a modal level: a window is covered by a child of
// its frame whose background is the picture the window showed, so that the
// server repaints it from that picture when it is uncovered, without asking
// the toolkit, and no pointer event gets through to the widgets below.
#include <X11/Xlib.h>

#include <algorithm>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

// Only device events may be kept from propagating.
constexpr long kInputEvents = KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask |
                              PointerMotionMask | ButtonMotionMask;

}  // namespace

void yyWindowFreeze(int h) {
  auto& ws = zelvy_win::state();
  if (!yywindowexists(h) || !ws.wtShell[h] || !xdisplay()) return;
  WindowRecord& r = ws.WinInfo[h];
  if (r.FreezeCount++ > 0) return;
  Display* dpy = xdisplay();
  const Window frame = ws.wWindow[h];
  XSync(dpy, False);
  XWindowAttributes wa{};
  if (!XGetWindowAttributes(dpy, frame, &wa) || wa.map_state != IsViewable) return;
  const auto w = static_cast<unsigned>(std::max(1, wa.width));
  const auto ht = static_cast<unsigned>(std::max(1, wa.height));
  const Pixmap pm = XCreatePixmap(dpy, frame, w, ht, static_cast<unsigned>(wa.depth));
  XGCValues gv{};
  gv.subwindow_mode = IncludeInferiors;
  gv.graphics_exposures = False;
  GC gc = XCreateGC(dpy, frame, GCSubwindowMode | GCGraphicsExposures, &gv);
  XCopyArea(dpy, frame, pm, gc, 0, 0, w, ht, 0, 0);
  XFreeGC(dpy, gc);
  XSetWindowAttributes at{};
  at.background_pixmap = pm;
  at.do_not_propagate_mask = kInputEvents;
  at.event_mask = NoEventMask;
  r.FreezeWindow = XCreateWindow(dpy, frame, 0, 0, w, ht, 0, CopyFromParent, InputOutput, CopyFromParent,
                                 CWBackPixmap | CWDontPropagate | CWEventMask, &at);
  r.FreezePixmap = pm;
  XMapRaised(dpy, r.FreezeWindow);
  XFlush(dpy);
}

void yyWindowThaw(int h) {
  auto& ws = zelvy_win::state();
  if (!yywindowexists(h)) return;
  WindowRecord& r = ws.WinInfo[h];
  if (r.FreezeCount == 0 || --r.FreezeCount > 0) return;
  Display* dpy = xdisplay();
  if (!dpy) return;
  // The windows below are exposed again and repaint as usual.
  if (r.FreezeWindow) XDestroyWindow(dpy, r.FreezeWindow);
  if (r.FreezePixmap) XFreePixmap(dpy, r.FreezePixmap);
  r.FreezeWindow = 0;
  r.FreezePixmap = 0;
  XFlush(dpy);
}
