// The page setup dialog's preview: the paper scaled into the picture field,
// drawn once into a pixmap that the field shows as its background, so that
// the server repaints it without our help.
#include <X11/Intrinsic.h>
#include <X11/Xlib.h>

#include <algorithm>

#include "toolkit/comdlg/page_setup.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"

namespace {
Pixmap g_preview = 0;
constexpr unsigned long kGround = 0x909090, kPaper = 0xFFFFFF, kEdge = 0x000000, kMargin = 0x4060C0;
constexpr int kBorder = 4;
}  // namespace

void yycomdlgpagesetuppreview(int field, const zelvy_data::PageSetup& page) {
  Display* d = xdisplay();
  FieldRecord* f = yyDialogGetField(field, zelvy_dialog::state().iDlgCur);
  if (!d || !f) return;
  // The picture's own widget, inside the frame that draws its border.
  const Widget pic = f->valueWidget ? f->valueWidget : f->widget;
  if (!pic || !XtIsRealized(pic)) return;
  const Window w = XtWindow(pic);
  XWindowAttributes at{};
  if (!XGetWindowAttributes(d, w, &at) || at.width <= 2 * kBorder || at.height <= 2 * kBorder) return;
  if (g_preview) XFreePixmap(d, g_preview);
  g_preview = XCreatePixmap(d, w, static_cast<unsigned>(at.width), static_cast<unsigned>(at.height),
                            static_cast<unsigned>(at.depth));
  GC gc = XCreateGC(d, g_preview, 0, nullptr);
  const auto& paper = zelvy_data::paper_size(page.Paper);
  const double pw = page.Orientation == 1 ? paper.height : paper.width;
  const double ph = page.Orientation == 1 ? paper.width : paper.height;
  const double scale = std::min((at.width - 2 * kBorder) / pw, (at.height - 2 * kBorder) / ph);
  const int sw = static_cast<int>(pw * scale), sh = static_cast<int>(ph * scale);
  const int x0 = (at.width - sw) / 2, y0 = (at.height - sh) / 2;
  XSetForeground(d, gc, kGround);
  XFillRectangle(d, g_preview, gc, 0, 0, static_cast<unsigned>(at.width), static_cast<unsigned>(at.height));
  XSetForeground(d, gc, kPaper);
  XFillRectangle(d, g_preview, gc, x0, y0, static_cast<unsigned>(sw), static_cast<unsigned>(sh));
  XSetForeground(d, gc, kEdge);
  XDrawRectangle(d, g_preview, gc, x0, y0, static_cast<unsigned>(sw), static_cast<unsigned>(sh));
  const int left = x0 + static_cast<int>(page.LeftMargin * scale), top = y0 + static_cast<int>(page.TopMargin * scale);
  const int right = x0 + sw - static_cast<int>(page.RightMargin * scale);
  const int bottom = y0 + sh - static_cast<int>(page.BottomMargin * scale);
  if (right > left && bottom > top) {
    XSetForeground(d, gc, kMargin);
    XSetLineAttributes(d, gc, 1, LineOnOffDash, CapButt, JoinMiter);
    XDrawRectangle(d, g_preview, gc, left, top, static_cast<unsigned>(right - left), static_cast<unsigned>(bottom - top));
  }
  XFreeGC(d, gc);
  XSetWindowBackgroundPixmap(d, w, g_preview);
  XClearWindow(d, w);
}

void yycomdlgpagesetuppreviewfree() {
  if (g_preview && xdisplay()) XFreePixmap(xdisplay(), g_preview);
  g_preview = 0;
}
