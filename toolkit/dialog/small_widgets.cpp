// Images on fields, and the frame that borders labels, pictures and grids:
// its thickness from the edge flags, and keeping frame and child in step.
#include <X11/IntrinsicP.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/PushB.h>

#include <algorithm>
#include <vector>

#include "toolkit/base/error.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/small_widgets_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/resources.h"

using namespace zelvy_dialog;

namespace {

constexpr int kImageBitmap = 1, kImageIcon = 2, kImageHandle = 3;
constexpr int kOpaqueBits = 1;  // option bit: keep the image's own background
constexpr int kAlphaOpaque = 128;

FieldRecord* image_field(int fieldid, int& error) {
  error = 0;
  State& ds = zelvy_dialog::state();
  if (ds.iDlgCur < 0 || ds.wDialogInfo[ds.iDlgCur].identifier == -1) {
    error = 1005;
    return nullptr;
  }
  FieldRecord* f = yyDialogGetField(fieldid, ds.iDlgCur);
  if (!f || !(f->capabilities & field_capability::kShowsImage)) {
    error = 1006;
    return nullptr;
  }
  return f;
}

Pixel image_background(const FieldRecord& f) {
  if (f.type == kPicture) return f.pictureBackground;
  return yyDialogScheme(f.type == kButton ? 17 : 3);
}

// The widget that shows a field's image, made for pictures that have none.
Widget image_widget(FieldRecord& f, Widget& retired) {
  if (f.imageWidget) return f.imageWidget;
  if (f.type != kPicture) {
    f.imageWidget = f.valueWidget ? f.valueWidget : f.widget;
    return f.imageWidget;
  }
  if (f.capabilities & field_capability::kPictureNoLabel) {
    f.capabilities &= ~field_capability::kPictureNoLabel;
    retired = f.valueWidget;
  }
  const bool keep = f.style & field_style::kPictureKeepSize;
  if (keep) f.capabilities |= field_capability::kPictureRecomputes;
  if (!f.valueWidget || retired) {
    f.valueWidget = XtVaCreateManagedWidget("Picture", xmLabelWidgetClass, f.widget, XmNrecomputeSize, keep ? False : True,
                                            XmNmarginWidth, 0, XmNmarginHeight, 0, XtNbackground, f.pictureBackground,
                                            XmNtraversalOn, False, nullptr);
  }
  f.imageWidget = f.valueWidget;
  return f.imageWidget;
}

}  // namespace

Pixmap yyDialogCreatePixmapFromData(const unsigned char* rgba, int width, int height, Pixel background) {
  if (!rgba || width <= 0 || height <= 0) return 2;
  Display* dpy = xdisplay();
  const int screen = zelvy_x::state().iScreen;
  const int depth = zelvy_x::state().iDispDepth > 0 ? zelvy_x::state().iDispDepth : DefaultDepth(dpy, screen);
  Pixmap pm = XCreatePixmap(dpy, RootWindow(dpy, screen), static_cast<unsigned>(width), static_cast<unsigned>(height),
                            static_cast<unsigned>(depth));
  if (!pm) return 2;
  GC gc = XCreateGC(dpy, pm, 0, nullptr);
  XSetForeground(dpy, gc, background);
  XFillRectangle(dpy, pm, gc, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height));
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const unsigned char* p = rgba + static_cast<std::size_t>((y * width + x) * 4);
      if (p[3] < kAlphaOpaque) continue;
      XSetForeground(dpy, gc, yyAllocPixel(p[0], p[1], p[2]));
      XDrawPoint(dpy, pm, gc, x, y);
    }
  XFreeGC(dpy, gc);
  return pm;
}

void yyDialogPutImage(FieldRecord& f, Pixmap pixmap, Pixmap armed, int width, int height) {
  Widget retired = nullptr;
  Widget w = image_widget(f, retired);
  const Pixmap grey = yyCreateGreyPixmap(pixmap, width, height, image_background(f));
  XtVaSetValues(w, XmNlabelPixmap, XmUNSPECIFIED_PIXMAP, nullptr);
  XtVaSetValues(w, XmNlabelType, XmPIXMAP, XmNlabelPixmap, pixmap, XmNlabelInsensitivePixmap, grey, nullptr);
  if (armed != 2 && XmIsPushButton(w)) XtVaSetValues(w, XmNarmPixmap, armed, nullptr);
  if (f.capabilities & field_capability::kPictureRecomputes) yyBorderWidgetUpdateParent(f.widget);
  if (retired) XtDestroyWidget(retired);
  // The pixmaps stay with the widget until it is given new ones.
  if (f.image != 2 && f.image != pixmap) XFreePixmap(xdisplay(), f.image);
  f.image = pixmap;
}

void yydialogputimageicon_(int fieldid, std::span<const std::uint8_t> rgba, int width, int height, int& error) {
  FieldRecord* f = image_field(fieldid, error);
  if (!f) return;
  if (width <= 0 || height <= 0 || rgba.size() < static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4) {
    error = 1021;
    return;
  }
  const Pixmap pm = yyDialogCreatePixmapFromData(rgba.data(), width, height, image_background(*f));
  if (pm == 2) error = 1021;
  else yyDialogPutImage(*f, pm, 2, width, height);
}

void yydialogputimage_(int fieldid, int image, int type, int options, int, int, int& error) {
  FieldRecord* f = image_field(fieldid, error);
  if (!f || type < kImageBitmap || type > kImageHandle) return;
  if (type == kImageHandle) {
    error = 1021;  // bitmap handles belong to the graphics layer above this one
    return;
  }
  int w = 0, h = 0, status = 0;
  std::vector<std::uint8_t> rgba;
  const int id = type == kImageIcon && image == 0 ? -1 : image;
  yyrcimagepixels(id, type, w, h, rgba, status);
  if (status != 0 || w <= 0 || h <= 0) {
    error = status ? status : 1021;
    return;
  }
  Pixel background = image_background(*f);
  if (type == kImageBitmap && f->type != kPicture && (options & kOpaqueBits)) {
    for (std::size_t i = 3; i < rgba.size(); i += 4) rgba[i] = 255;
  }
  if (type == kImageIcon) f->imageResourceId = id;
  const Pixmap pm = yyDialogCreatePixmapFromData(rgba.data(), w, h, background);
  Pixmap armed = 2;
  if (f->type == kButton && (f->style & field_style::kButtonFlat))
    armed = yyDialogCreatePixmapFromData(rgba.data(), w, h, yyDialogScheme(18));
  if (pm == 2) error = 1021;
  else yyDialogPutImage(*f, pm, armed, w, h);
}

void WDialogPutImage(int fieldid, int image, int type, int options) {
  int error = 0;
  yydialogputimage_(fieldid, image, type, options, 0, 0, error);
  if (error) yyerror(error, "WDialogPutImage");
}

// The frame keeps its child inside its edge, and can take the child's size.
int yyBorderWidgetThickness(Widget border) {
  Dimension t = 0;
  XtVaGetValues(border, XmNshadowThickness, &t, nullptr);
  return t;
}

void yyBorderWidgetUpdateChild(Widget border) {
  WidgetList kids = nullptr;
  Cardinal n = 0;
  XtVaGetValues(border, XtNchildren, &kids, XtNnumChildren, &n, nullptr);
  if (n == 0) return;
  Dimension w = 1, h = 1;
  XtVaGetValues(border, XtNwidth, &w, XtNheight, &h, nullptr);
  const int t = yyBorderWidgetThickness(border);
  XtConfigureWidget(kids[0], static_cast<Position>(t), static_cast<Position>(t),
                    static_cast<Dimension>(std::max(1, w - 2 * t)), static_cast<Dimension>(std::max(1, h - 2 * t)), 0);
}

void yyBorderWidgetUpdateParent(Widget border) {
  WidgetList kids = nullptr;
  Cardinal n = 0;
  XtVaGetValues(border, XtNchildren, &kids, XtNnumChildren, &n, nullptr);
  if (n == 0) return;
  XtWidgetGeometry want{};
  XtQueryGeometry(kids[0], nullptr, &want);
  const int t = yyBorderWidgetThickness(border);
  XtVaSetValues(border, XtNwidth, std::max(1, want.width + 2 * t), XtNheight, std::max(1, want.height + 2 * t), nullptr);
}
