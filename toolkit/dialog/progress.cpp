// The progress bar class and progress bar fields: a sunken frame two pixels
// deep, and inside it a bar whose width is the position's share of the range.
#include <X11/IntrinsicP.h>
#include <X11/CoreP.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/small_widgets_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/resources.h"

using namespace zelvy_dialog;

namespace {

constexpr int kDefaultMax = 1000;
constexpr int kGrow = 10;   // a new bar is this much larger than asked
constexpr int kFrame = 2;   // frame depth on each side

struct ProgressPart {
  int barPos, barMin, barMax;
  GC bar, light, dark;
};

struct ProgressRec {
  CorePart core;
  ProgressPart progress;
};

struct ProgressClassPart {
  XtPointer extension;
};

struct ProgressClassRec {
  CoreClassPart core_class;
  ProgressClassPart progress_class;
};

char* S(const char* s) { return const_cast<char*>(s); }

#define POFF(field) static_cast<Cardinal>(offsetof(ProgressRec, progress.field))
std::array<XtResource, 3> resources{{
    {S(XtNbarPos), S("BarPos"), S(XtRInt), sizeof(int), POFF(barPos), S(XtRImmediate), nullptr},
    {S(XtNbarMin), S("BarMin"), S(XtRInt), sizeof(int), POFF(barMin), S(XtRImmediate), nullptr},
    {S(XtNbarMax), S("BarMax"), S(XtRInt), sizeof(int), POFF(barMax), S(XtRImmediate),
     reinterpret_cast<XtPointer>(kDefaultMax)},
}};
#undef POFF

ProgressPart& part(Widget w) { return reinterpret_cast<ProgressRec*>(w)->progress; }

GC scheme_gc(Widget w, int colour) {
  XGCValues v;
  v.foreground = yyDialogScheme(colour);
  v.background = yyDialogScheme(3);
  return XtGetGC(w, GCForeground | GCBackground, &v);
}

void initialize(Widget, Widget w, ArgList, Cardinal*) {
  ProgressPart& p = part(w);
  if (p.barMax <= p.barMin) {
    p.barMin = 0;
    p.barMax = kDefaultMax;
  }
  if (p.barPos < p.barMin || p.barPos > p.barMax) p.barPos = 0;
  w->core.width = static_cast<Dimension>(w->core.width + kGrow);
  w->core.height = static_cast<Dimension>(w->core.height + kGrow);
  w->core.background_pixel = yyDialogScheme(3);
  p.bar = scheme_gc(w, 16);
  p.light = scheme_gc(w, 2);
  p.dark = scheme_gc(w, 4);
}

void destroy(Widget w) {
  ProgressPart& p = part(w);
  XtReleaseGC(w, p.bar);
  XtReleaseGC(w, p.light);
  XtReleaseGC(w, p.dark);
}

Boolean set_values(Widget old, Widget, Widget w, ArgList, Cardinal*) {
  ProgressPart& o = part(old);
  ProgressPart& p = part(w);
  if (o.barPos == p.barPos && o.barMin == p.barMin && o.barMax == p.barMax) return False;
  if (p.barMax <= p.barMin) {
    p.barPos = o.barPos;
    p.barMin = o.barMin;
    p.barMax = o.barMax;
    return False;
  }
  p.barPos = std::clamp(p.barPos, p.barMin, p.barMax);
  return True;
}

ProgressClassRec progressClassRec = {
    {
        reinterpret_cast<WidgetClass>(&widgetClassRec),  // superclass
        S("Progress"), sizeof(ProgressRec), nullptr, nullptr, False, initialize, nullptr, XtInheritRealize,
        nullptr, 0, resources.data(), static_cast<Cardinal>(resources.size()), NULLQUARK, True, XtExposeCompressMultiple,
        True, False, destroy, nullptr, yyProgressWidgetRedisplay, set_values, nullptr, XtInheritSetValuesAlmost,
        nullptr, nullptr, XtVersion, nullptr, nullptr, nullptr, nullptr, nullptr,
    },
    {nullptr},
};

}  // namespace

WidgetClass progressWidgetClass = reinterpret_cast<WidgetClass>(&progressClassRec);

int yyProgressFilledWidth(int width, int position, int minimum, int maximum) {
  if (maximum <= minimum) return 0;
  const float share = static_cast<float>(std::clamp(position, minimum, maximum) - minimum) /
                      static_cast<float>(maximum - minimum);
  return std::max(0, static_cast<int>(static_cast<float>(width - 2 * kFrame) * share));
}

void yyProgressWidgetRedisplay(Widget w, XEvent*, Region) {
  if (!XtIsRealized(w)) return;
  ProgressPart& p = part(w);
  Display* dpy = XtDisplay(w);
  Window win = XtWindow(w);
  const int width = w->core.width, height = w->core.height;
  const int r = width - 1, b = height - 1;
  if (zelvy_x::state().bFlatStyle) {
    XDrawRectangle(dpy, win, p.dark, 0, 0, static_cast<unsigned>(r), static_cast<unsigned>(b));
  } else {
    XPoint d1[] = {{0, static_cast<short>(b)}, {0, 0}, {static_cast<short>(r), 0}};
    XPoint d2[] = {{1, static_cast<short>(b - 1)}, {1, 1}, {static_cast<short>(r - 1), 1}};
    XPoint l1[] = {{1, static_cast<short>(b)}, {static_cast<short>(r), static_cast<short>(b)}, {static_cast<short>(r), 1}};
    XPoint l2[] = {{2, static_cast<short>(b - 1)}, {static_cast<short>(r - 1), static_cast<short>(b - 1)},
                   {static_cast<short>(r - 1), 2}};
    XDrawLines(dpy, win, p.dark, d1, 3, CoordModeOrigin);
    XDrawLines(dpy, win, p.dark, d2, 3, CoordModeOrigin);
    XDrawLines(dpy, win, p.light, l1, 3, CoordModeOrigin);
    XDrawLines(dpy, win, p.light, l2, 3, CoordModeOrigin);
  }
  const int filled = yyProgressFilledWidth(width, p.barPos, p.barMin, p.barMax);
  const int inner = height - 2 * kFrame;
  if (inner <= 0) return;
  if (filled > 0) XFillRectangle(dpy, win, p.bar, kFrame, kFrame, static_cast<unsigned>(filled), static_cast<unsigned>(inner));
  const int rest = width - 2 * kFrame - filled;
  if (rest > 0) XClearArea(dpy, win, kFrame + filled, kFrame, static_cast<unsigned>(rest), static_cast<unsigned>(inner), False);
}

void yyDialogProgressCreate(DialogRecord& d, FieldRecord& f) {
  int value = 0, lo = 0, hi = kDefaultMax;
  yyrcfieldprogressbar(d.resourceId, f.identifier, value, lo, hi);
  f.capabilities = field_capability::kProgress;
  // The class grows what it is given; the field keeps its own size.
  f.widget = XtVaCreateWidget("ZelvField", progressWidgetClass, d.widget, XtNx, f.x, XtNy, f.y, XtNwidth,
                              std::max(1, f.width - kGrow), XtNheight, std::max(1, f.height - kGrow), XtNbarMin, lo,
                              XtNbarMax, hi, XtNbarPos, value, XtNborderWidth, 0, nullptr);
}

namespace {

FieldRecord* progress_field(int fieldid, int& error) {
  error = 0;
  State& ds = zelvy_dialog::state();
  if (ds.iDlgCur < 0 || ds.wDialogInfo[ds.iDlgCur].identifier == -1) {
    error = 1005;
    return nullptr;
  }
  FieldRecord* f = yyDialogGetField(fieldid, ds.iDlgCur);
  if (!f || f->type != kProgress) {
    error = 1006;
    return nullptr;
  }
  return f;
}

}  // namespace

void yydialogputprogress_(int fieldid, int value, int mode, int& error) {
  FieldRecord* f = progress_field(fieldid, error);
  if (!f) return;
  const int now = part(f->widget).barPos;
  XtVaSetValues(f->widget, XtNbarPos, mode == 1 ? now + value : value, nullptr);
}

void yydialoggetprogressbar_(int fieldid, int& value, int& error) {
  value = 0;
  if (FieldRecord* f = progress_field(fieldid, error)) value = part(f->widget).barPos;
}

void yydialograngeprogressbar_(int fieldid, int minimum, int maximum, int& error) {
  if (FieldRecord* f = progress_field(fieldid, error)) XtVaSetValues(f->widget, XtNbarMin, minimum, XtNbarMax, maximum, nullptr);
}
