// The picture freeze behind a modal level: a window is covered by a child of
// its frame whose background is the picture the window showed, so that the
// server repaints it from that picture when it is uncovered, without asking
// the toolkit, and no pointer event gets through to the widgets below.
#include <X11/Xlib.h>

#include <algorithm>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/tooltip_private.h"
#include "toolkit/kernel/widgets_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

// Only device events may be kept from propagating.
constexpr long kInputEvents = KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask |
                              PointerMotionMask | ButtonMotionMask;
constexpr int kErrorPicture = 1042;

}  // namespace

bool yyFreezePicture(Window target, FrozenPicture& out) {
  Display* dpy = xdisplay();
  if (!dpy || !target) return true;
  XSync(dpy, False);
  XWindowAttributes wa{};
  if (!XGetWindowAttributes(dpy, target, &wa) || wa.map_state != IsViewable) return true;
  const auto w = static_cast<unsigned>(std::max(1, wa.width));
  const auto ht = static_cast<unsigned>(std::max(1, wa.height));
  const Pixmap pm = XCreatePixmap(dpy, target, w, ht, static_cast<unsigned>(wa.depth));
  // A pixmap the server could not allocate shows only when asked about.
  Window root = 0;
  int gx = 0, gy = 0;
  unsigned gw = 0, gh = 0, gb = 0, gd = 0;
  if (!pm || !XGetGeometry(dpy, pm, &root, &gx, &gy, &gw, &gh, &gb, &gd)) return false;
  XGCValues gv{};
  gv.subwindow_mode = IncludeInferiors;
  gv.graphics_exposures = False;
  GC gc = XCreateGC(dpy, target, GCSubwindowMode | GCGraphicsExposures, &gv);
  XCopyArea(dpy, target, pm, gc, 0, 0, w, ht, 0, 0);
  XFreeGC(dpy, gc);
  XSetWindowAttributes at{};
  at.background_pixmap = pm;
  at.do_not_propagate_mask = kInputEvents;
  at.event_mask = NoEventMask;
  out.cover = XCreateWindow(dpy, target, 0, 0, w, ht, 0, CopyFromParent, InputOutput, CopyFromParent,
                            CWBackPixmap | CWDontPropagate | CWEventMask, &at);
  out.pixmap = pm;
  XMapRaised(dpy, out.cover);
  XFlush(dpy);
  return true;
}

void yyFreezeRelease(FrozenPicture& picture) {
  Display* dpy = xdisplay();
  // What lay under the cover is exposed again and repaints as usual.
  if (dpy && picture.cover) XDestroyWindow(dpy, picture.cover);
  if (dpy && picture.pixmap) XFreePixmap(dpy, picture.pixmap);
  picture = FrozenPicture{};
  if (dpy) XFlush(dpy);
}

bool yyWindowFreeze(int h) {
  auto& ws = zelvy_win::state();
  if (!yywindowexists(h) || !ws.wtShell[h] || !xdisplay()) return true;
  WindowRecord& r = ws.WinInfo[h];
  if (r.FreezeCount++ > 0) return true;
  return yyFreezePicture(ws.wWindow[h], r.Freeze);
}

void yyWindowRedraw(int h) {
  auto& ws = zelvy_win::state();
  if (!yywindowexists(h)) return;
  WindowRecord& r = ws.WinInfo[h];
  if (r.FreezeCount == 0 || --r.FreezeCount > 0) return;
  yyFreezeRelease(r.Freeze);
  // The client's own drawing comes back at once rather than at the next expose.
  yyWindowWidgetBlitAllNowX(ws.wtClient[h]);
}

void yygetwindowbitmap_(int on, int exceptWindow, int& error) {
  auto& ws = zelvy_win::state();
  error = 0;
  Display* dpy = xdisplay();
  if (!dpy) return;
  yyTooltipDestroy();
  XSync(dpy, False);
  for (int h = 0; h <= ws.iWinMax; ++h) {
    if (h == exceptWindow || !ws.wWindow[h] || !ws.wtShell[h]) continue;
    if (on == 1) {
      if (!yyWindowFreeze(h)) error = kErrorPicture;
    } else if (ws.WinInfo[h].FreezeCount > 0) {
      yyWindowRedraw(h);
    }
  }
  if (ws.dialogEngine.freeze && !ws.dialogEngine.freeze(on)) error = kErrorPicture;
  XSync(dpy, False);
}
