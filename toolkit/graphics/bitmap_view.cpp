// The bitmap viewer: a child window whose client holds a scrolled area as
// large as the bitmap, the bitmap being the area's background so that the
// server repaints every exposure by itself.
#include "toolkit/graphics/bitmap.h"

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/graphics/bitmap_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

#include <X11/keysym.h>
#include <Xm/DrawingA.h>
#include <Xm/ScrollBar.h>
#include <Xm/ScrolledW.h>

#include <algorithm>

namespace zg = zelv_graphics;

namespace {

constexpr int kViewerKind = 2;
constexpr int kScreenMargin = 120;   // room the viewer leaves on the screen
constexpr int kFrameAllowance = 8;   // the scrolled window's shadow and spacing
constexpr int kLineStep = 16;        // pixels an arrow key scrolls

struct Viewer {
  int window = -1;
  int handle = -1;
  Widget scrolled = nullptr, area = nullptr;
};
Viewer& viewer() {
  static Viewer v;
  return v;
}

void forget(int) {
  auto& v = viewer();
  if (v.window >= 0 && yywindowexists(v.window)) {
    auto& r = zelvy_win::state().WinInfo[v.window];
    r.Content = nullptr;
    r.KindData = nullptr;
  }
  v = Viewer{};
}

// Moves a scroll bar by `delta`, or to an end for `toend` -1 / 1.
void scroll(Widget bar, int delta, int toend) {
  if (!bar || !XtIsManaged(bar)) return;
  int value = 0, slider = 0, increment = 0, page = 0, minimum = 0, maximum = 0;
  XmScrollBarGetValues(bar, &value, &slider, &increment, &page);
  XtVaGetValues(bar, XmNminimum, &minimum, XmNmaximum, &maximum, nullptr);
  const int last = std::max(maximum - slider, minimum);
  value = toend < 0 ? minimum : toend > 0 ? last : std::clamp(value + delta, minimum, last);
  XmScrollBarSetValues(bar, value, slider, increment, page, True);
}

// Arrow keys scroll by a step, the page keys by a page, Home and End to the ends.
bool viewer_event(XEvent& event) {
  auto& v = viewer();
  if (v.window < 0 || event.type != KeyPress) return false;
  int kind = 1;
  if (yyGetParentHandle(kind, event.xkey.window) != v.window) return false;
  Widget hbar = nullptr, vbar = nullptr;
  XtVaGetValues(v.scrolled, XmNhorizontalScrollBar, &hbar, XmNverticalScrollBar, &vbar, nullptr);
  int page = 0;
  if (vbar) XtVaGetValues(vbar, XmNpageIncrement, &page, nullptr);
  switch (XLookupKeysym(&event.xkey, 0)) {
    case XK_Left: scroll(hbar, -kLineStep, 0); return true;
    case XK_Right: scroll(hbar, kLineStep, 0); return true;
    case XK_Up: scroll(vbar, -kLineStep, 0); return true;
    case XK_Down: scroll(vbar, kLineStep, 0); return true;
    case XK_Prior: scroll(vbar, -page, 0); return true;
    case XK_Next: scroll(vbar, page, 0); return true;
    case XK_Home: scroll(vbar, 0, -1); scroll(hbar, 0, -1); return true;
    case XK_End: scroll(vbar, 0, 1); scroll(hbar, 0, 1); return true;
    default: return false;
  }
}

}  // namespace

int yyBitmapViewWindow() { return viewer().window; }
int yyBitmapViewHandle() { return viewer().handle; }

void yyBitmapViewRefresh() {
  auto& v = viewer();
  int width = 0, height = 0;
  if (!v.area || !yybitmapsize(v.handle, width, height)) return;
  // A resized or turned bitmap is a new pixmap of a new size; one drawn on
  // is the same pixmap, which the window shows anew only when cleared.
  XtVaSetValues(v.area, XmNwidth, width, XmNheight, height, XmNbackgroundPixmap,
                zelvy_bmp::bitmap_drawable(v.handle), nullptr);
  if (XtIsRealized(v.area)) XClearArea(xdisplay(), XtWindow(v.area), 0, 0, 0, 0, False);
}

void yybitmapview(int handle, std::string_view title, int& error) {
  error = 0;
  int width = 0, height = 0;
  if (!yybitmapsize(handle, width, height)) {
    error = zg::kErrorBitmapHandle;
    yyerror(error, "yybitmapview");
    return;
  }
  auto& v = viewer();
  if (v.window >= 0) {
    v.handle = handle;
    yyBitmapViewRefresh();
    yyWindowTitle(v.window, title);
    return;
  }
  const auto& xs = zelvy_x::state();
  const int cw = std::min(width + kFrameAllowance, std::max(xs.iDispWidth - kScreenMargin, 1));
  const int ch = std::min(height + kFrameAllowance, std::max(xs.iDispHeight - kScreenMargin, 1));
  const int before = WInfoWindow(4);
  int h = -1;
  WindowOpenChild(h, {}, -1, -1, cw, ch, {}, {}, {}, title);
  if (h < 0) {
    error = zelvy_data::data().ierr;
    return;
  }
  Widget client = zelvy_win::state().wtClient[h];
  v.window = h;
  v.handle = handle;
  v.scrolled = XtVaCreateManagedWidget("BitmapView", xmScrolledWindowWidgetClass, client, XmNscrollingPolicy,
                                       XmAUTOMATIC, XmNwidth, cw, XmNheight, ch, nullptr);
  yyStyleScrollbar(v.scrolled, 1);
  yyStyleScrollbar(v.scrolled, 2);
  v.area = XtVaCreateManagedWidget("BitmapArea", xmDrawingAreaWidgetClass, v.scrolled, XmNwidth, width,
                                   XmNheight, height, XmNmarginWidth, 0, XmNmarginHeight, 0, XmNbackgroundPixmap,
                                   zelvy_bmp::bitmap_drawable(handle), nullptr);
  auto& r = zelvy_win::state().WinInfo[h];
  r.Kind = kViewerKind;
  r.Content = v.scrolled;
  r.KindShutdown = forget;
  yyWindowResize(h);
  static const bool hooked = [] {
    LoopHooks hooks;
    hooks.viewerEvent = viewer_event;
    yyAttachLoopHooks(hooks);
    return true;
  }();
  (void)hooked;
  if (yywindowexists(before)) WindowSelect(before);
}

void yyBitmapViewClose() {
  const int h = viewer().window;
  if (h >= 0 && yywindowexists(h)) WindowCloseChild(h);
  viewer() = Viewer{};
}
