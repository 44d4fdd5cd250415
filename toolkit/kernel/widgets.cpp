// The toolkit's widget classes: Zelv, the root shell, and WinComponent, the
// client area of every window.
#include "toolkit/kernel/widgets_private.h"

#include <X11/IntrinsicP.h>
#include <X11/ShellP.h>
#include <Xm/DrawingAP.h>
#include <Xm/ManagerP.h>

#include <cstddef>

namespace {

struct WinComponentPart {
  XSetWindowAttributes* winAttributes;
  long winMask;
  XImage* savedImage;
  Pixmap savedPixmap;
  Colormap colourMap;
  Visual* visual;
  GC gc;
};

struct WinComponentRec {
  CorePart core;
  CompositePart composite;
  ConstraintPart constraint;
  XmManagerPart manager;
  XmDrawingAreaPart drawing_area;
  WinComponentPart wind;
};

struct WinComponentClassPart {
  XtPointer extension;
};

struct WinComponentClassRec {
  CoreClassPart core_class;
  CompositeClassPart composite_class;
  ConstraintClassPart constraint_class;
  XmManagerClassPart manager_class;
  XmDrawingAreaClassPart drawing_area_class;
  WinComponentClassPart wind_class;
};

char* S(const char* s) { return const_cast<char*>(s); }

#define WOFF(field) static_cast<Cardinal>(offsetof(WinComponentRec, wind.field))
XtResource resources[] = {
    {S(XtNwinAttributes), S("WinAttributes"), S(XtRPointer), sizeof(XtPointer), WOFF(winAttributes),
     S(XtRImmediate), nullptr},
    {S(XtNwinMask), S("WinMask"), S("Long"), sizeof(long), WOFF(winMask), S(XtRImmediate), nullptr},
    {S(XtNsavedImage), S("SavedImage"), S(XtRPointer), sizeof(XtPointer), WOFF(savedImage),
     S(XtRImmediate), nullptr},
    {S(XtNsavedPixmap), S("SavedPixmap"), S(XtRPixmap), sizeof(Pixmap), WOFF(savedPixmap),
     S(XtRImmediate), nullptr},
    {S(XtNcolourMap), S("ColourMap"), S(XtRColormap), sizeof(Colormap), WOFF(colourMap),
     S(XtRImmediate), nullptr},
    {S(XtNwinVisual), S("Visual"), S(XtRVisual), sizeof(Visual*), WOFF(visual), S(XtRImmediate),
     nullptr},
};
#undef WOFF

WinComponentPart& part(Widget w) { return reinterpret_cast<WinComponentRec*>(w)->wind; }

int image_depth(Display* dpy, Drawable d) {
  Window root;
  int x, y;
  unsigned width, height, border, depth = 0;
  if (!XGetGeometry(dpy, d, &root, &x, &y, &width, &height, &border, &depth)) return -1;
  return static_cast<int>(depth);
}

void Initialize(Widget, Widget neww, ArgList, Cardinal*) {
  WinComponentPart& p = part(neww);
  p.gc = XtGetGC(neww, 0, nullptr);
}

void Destroy(Widget w) {
  if (part(w).gc) XtReleaseGC(w, part(w).gc);
}

void Realize(Widget w, XtValueMask* mask, XSetWindowAttributes* attrs) {
  WinComponentPart& p = part(w);
  if (p.winAttributes && p.winMask) {
    // The toolkit's shared attributes, on top of what Xt worked out (event mask, background).
    const XSetWindowAttributes& a = *p.winAttributes;
    const long m = p.winMask;
    if (m & CWBackPixel) attrs->background_pixel = a.background_pixel;
    if (m & CWBorderPixel) attrs->border_pixel = a.border_pixel;
    if (m & CWBitGravity) attrs->bit_gravity = a.bit_gravity;
    if (m & CWBackingStore) attrs->backing_store = a.backing_store;
    if (m & CWCursor) attrs->cursor = a.cursor;
    if (m & CWEventMask) attrs->event_mask |= a.event_mask;
    *mask |= static_cast<XtValueMask>(m & (CWBackPixel | CWBorderPixel | CWBitGravity | CWBackingStore |
                                           CWCursor | CWEventMask));
  }
  if (p.colourMap) {
    attrs->colormap = p.colourMap;
    *mask |= CWColormap;
  }
  attrs->do_not_propagate_mask = KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask |
                                 PointerMotionMask;
  *mask |= CWDontPropagate;
  XtCreateWindow(w, InputOutput, p.visual ? p.visual : CopyFromParent, *mask, attrs);
}

void Redisplay(Widget w, XEvent* event, Region region);

Boolean SetValues(Widget, Widget, Widget neww, ArgList, Cardinal*) {
  WinComponentPart& p = part(neww);
  Display* dpy = XtDisplay(neww);
  const int depth = neww->core.depth;
  if (p.savedImage && p.savedImage->depth != depth) p.savedImage = nullptr;
  if (p.savedPixmap && XtIsRealized(neww) && image_depth(dpy, p.savedPixmap) != depth) p.savedPixmap = 0;
  return False;
}

WinComponentClassRec windClassRec;
bool class_ready = false;

void init_class() {
  if (class_ready) return;
  class_ready = true;
  WinComponentClassRec& c = windClassRec;
  c = WinComponentClassRec{};
  CoreClassPart& core = c.core_class;
  core.superclass = reinterpret_cast<WidgetClass>(&xmDrawingAreaClassRec);
  core.class_name = S("WinComponent");
  core.widget_size = sizeof(WinComponentRec);
  core.initialize = Initialize;
  core.realize = Realize;
  core.resources = resources;
  core.num_resources = XtNumber(resources);
  core.xrm_class = NULLQUARK;
  core.compress_motion = True;
  core.compress_exposure = XtExposeCompressMaximal;
  core.compress_enterleave = True;
  core.destroy = Destroy;
  core.resize = XtInheritResize;
  core.expose = Redisplay;
  core.set_values = SetValues;
  core.accept_focus = nullptr;
  core.version = XtVersion;
  core.tm_table = XtInheritTranslations;
  core.query_geometry = XtInheritQueryGeometry;
  core.display_accelerator = XtInheritDisplayAccelerator;
  c.composite_class.geometry_manager = XtInheritGeometryManager;
  c.composite_class.change_managed = XtInheritChangeManaged;
  c.composite_class.insert_child = XtInheritInsertChild;
  c.composite_class.delete_child = XtInheritDeleteChild;
  c.constraint_class.constraint_size = sizeof(XmManagerConstraintRec);
  c.manager_class.translations = XtInheritTranslations;
  c.manager_class.parent_process = XmInheritParentProcess;
}

void Redisplay(Widget w, XEvent* event, Region region) {
  WinComponentPart& p = part(w);
  Display* dpy = XtDisplay(w);
  const Window win = XtWindow(w);
  XRectangle box{0, 0, w->core.width, w->core.height};
  if (region) XClipBox(region, &box);
  else if (event && event->type == Expose)
    box = XRectangle{static_cast<short>(event->xexpose.x), static_cast<short>(event->xexpose.y),
                     static_cast<unsigned short>(event->xexpose.width),
                     static_cast<unsigned short>(event->xexpose.height)};
  if (p.savedImage) {
    // Through a pixmap of the exposed size: one transfer, no partial repaint on screen.
    Pixmap tmp = XCreatePixmap(dpy, win, box.width, box.height, w->core.depth);
    XPutImage(dpy, tmp, p.gc, p.savedImage, box.x, box.y, 0, 0, box.width, box.height);
    XCopyArea(dpy, tmp, win, p.gc, 0, 0, box.width, box.height, box.x, box.y);
    XFreePixmap(dpy, tmp);
  } else if (p.savedPixmap) {
    if (region) XSetRegion(dpy, p.gc, region);
    XCopyArea(dpy, p.savedPixmap, win, p.gc, box.x, box.y, box.width, box.height, box.x, box.y);
    if (region) XSetClipMask(dpy, p.gc, None);
  } else {
    // Nothing kept: the application draws on its Expose message.
    XtExposeProc super = xmDrawingAreaClassRec.core_class.expose;
    if (super) super(w, event, region);
  }
}

// Zelv: an application shell with the default font of the toolkit.
struct ZelvPart {
  Boolean fastRefresh;
  XtPointer fontPointer;
};

struct ZelvRec {
  CorePart core;
  CompositePart composite;
  ShellPart shell;
  WMShellPart wm;
  VendorShellPart vendor;
  TopLevelShellPart topLevel;
  ApplicationShellPart application;
  ZelvPart zelv;
};

struct ZelvClassRec {
  CoreClassPart core_class;
  CompositeClassPart composite_class;
  ShellClassPart shell_class;
  WMShellClassPart wm_shell_class;
  VendorShellClassPart vendor_shell_class;
  TopLevelShellClassPart top_level_shell_class;
  ApplicationShellClassPart application_shell_class;
  XtPointer zelv_class_extension;
};

#define ZOFF(field) static_cast<Cardinal>(offsetof(ZelvRec, zelv.field))
XtResource zelv_resources[] = {
    {S(XtNfastRefresh), S("FastRefresh"), S(XtRBoolean), sizeof(Boolean), ZOFF(fastRefresh),
     S(XtRImmediate), reinterpret_cast<XtPointer>(True)},
    {S(XtNfontPointer), S("FontPointer"), S(XtRPointer), sizeof(XtPointer), ZOFF(fontPointer),
     S(XtRImmediate), nullptr},
};
#undef ZOFF

ZelvClassRec zelvClassRec;

void init_zelv_class() {
  ZelvClassRec& c = zelvClassRec;
  c = ZelvClassRec{};
  CoreClassPart& core = c.core_class;
  core.superclass = reinterpret_cast<WidgetClass>(&applicationShellClassRec);
  core.class_name = S("Zelv");
  core.widget_size = sizeof(ZelvRec);
  core.realize = XtInheritRealize;
  core.resources = zelv_resources;
  core.num_resources = XtNumber(zelv_resources);
  core.xrm_class = NULLQUARK;
  core.compress_motion = False;
  core.compress_exposure = True;
  core.compress_enterleave = False;
  core.visible_interest = False;
  core.resize = XtInheritResize;
  core.expose = nullptr;
  core.accept_focus = nullptr;
  core.version = XtVersion;
  core.tm_table = XtInheritTranslations;
  core.query_geometry = XtInheritQueryGeometry;
  core.display_accelerator = XtInheritDisplayAccelerator;
  c.composite_class.geometry_manager = XtInheritGeometryManager;
  c.composite_class.change_managed = XtInheritChangeManaged;
  c.composite_class.insert_child = XtInheritInsertChild;
  c.composite_class.delete_child = XtInheritDeleteChild;
}

}  // namespace

WidgetClass zelvWidgetClass = [] {
  init_zelv_class();
  return reinterpret_cast<WidgetClass>(&zelvClassRec);
}();

WidgetClass windWidgetClass = [] {
  init_class();
  return reinterpret_cast<WidgetClass>(&windClassRec);
}();

void yyWindowWidgetBlitAllNowX(Widget w) {
  if (!w || !XtIsRealized(w) || XtClass(w) != windWidgetClass) return;
  Redisplay(w, nullptr, nullptr);
  XFlush(XtDisplay(w));
}
