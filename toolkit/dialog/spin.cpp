// The spinner classes: a Motif manager holding the "SpinText" text and two
// "SpinButton" arrows. The three classes share every routine; the class part
// tells the numeric width (integer, real, double), which decides where the
// present value comes from, whether steps snap, and how the text is written.
#include "toolkit/dialog/spin_private.h"

#include <X11/IntrinsicP.h>
#include <Xm/ArrowB.h>
#include <Xm/ManagerP.h>
#include <Xm/Text.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>

#include "toolkit/base/error.h"
#include "toolkit/base/format.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/dialog_private.h"

using namespace zelvy_dialog;

namespace {

// Width in dialog units of the arrow column.
constexpr int kButtonUnits = 8;
// Room for the text of a real or double step, as the value model keeps it.
constexpr std::size_t kRealTextWidth = 51;
constexpr double kIntMin = std::numeric_limits<std::int32_t>::min();
constexpr double kIntMax = std::numeric_limits<std::int32_t>::max();

struct SpinPart {
  // Resources.
  Widget textWidget;
  Dimension shadowThick, highlightThickness, marginWidth, marginHeight;
  Boolean editable;
  int xftFont;
  // Private.
  int textWidth, buttonWidth;
  double minimum, maximum;
  double smallStep, largeStep, currentStep;
  int stepOrigin;
  int repeatCount;
  XtIntervalId timerId;
  Widget upButton, downButton;
  int pressed;  // the arrow held down, -1 none
};

struct SpinRec {
  CorePart core;
  CompositePart composite;
  ConstraintPart constraint;
  XmManagerPart manager;
  SpinPart spin;
};

// The numeric width of a class: the text kinds of the value model, 3 integer,
// 4 real, 5 double.
struct SpinClassPart {
  int kind;
  XtPointer extension;
};

struct SpinClassRec {
  CoreClassPart core_class;
  CompositeClassPart composite_class;
  ConstraintClassPart constraint_class;
  XmManagerClassPart manager_class;
  SpinClassPart spin_class;
};

constexpr int kKindInteger = 3, kKindReal = 4, kKindDouble = 5;

char* S(const char* s) { return const_cast<char*>(s); }

#define SOFF(field) static_cast<Cardinal>(offsetof(SpinRec, spin.field))
constexpr std::size_t kResources = 7;
// Xt compiles a class's list in place: each class takes a copy of its own.
std::array<XtResource, kResources> resource_list() {
  return {{
    {S(XtNtextWidget), S("TextWidget"), S(XtRWidget), sizeof(Widget), SOFF(textWidget), S(XtRImmediate), nullptr},
    {S(XtNshadowThick), S("ShadowThick"), S(XtRShort), sizeof(Dimension), SOFF(shadowThick), S(XtRImmediate),
     reinterpret_cast<XtPointer>(2)},
    {S(XmNhighlightThickness), S(XmCHighlightThickness), S(XtRShort), sizeof(Dimension), SOFF(highlightThickness),
     S(XtRImmediate), reinterpret_cast<XtPointer>(2)},
    {S(XmNmarginWidth), S(XmCMarginWidth), S(XtRShort), sizeof(Dimension), SOFF(marginWidth), S(XtRImmediate),
     reinterpret_cast<XtPointer>(1)},
    {S(XmNmarginHeight), S(XmCMarginHeight), S(XtRShort), sizeof(Dimension), SOFF(marginHeight), S(XtRImmediate),
     reinterpret_cast<XtPointer>(1)},
    {S(XtNspinEditable), S("Editable"), S(XtRBoolean), sizeof(Boolean), SOFF(editable), S(XtRImmediate),
     reinterpret_cast<XtPointer>(False)},
    {S(XtNxftFont), S("XftFont"), S(XtRInt), sizeof(int), SOFF(xftFont), S(XtRImmediate), nullptr},
  }};
}
#undef SOFF
std::array<XtResource, kResources> integerResources = resource_list(), realResources = resource_list(),
                                   doubleResources = resource_list();

SpinPart& part(Widget w) { return reinterpret_cast<SpinRec*>(w)->spin; }
int kind_of(Widget w) { return reinterpret_cast<SpinClassRec*>(XtClass(w))->spin_class.kind; }

// The step in the class's width.
double class_width(int kind, double v) {
  if (kind == kKindInteger) return static_cast<double>(static_cast<std::int32_t>(std::clamp(v, kIntMin, kIntMax)));
  if (kind == kKindReal) return static_cast<double>(static_cast<float>(v));
  return v;
}

// The field of a spinner in a dialog, from its userData; null standing alone.
FieldRecord* spin_field(Widget w) {
  XtPointer ud = nullptr;
  XtVaGetValues(w, XmNuserData, &ud, nullptr);
  return static_cast<FieldRecord*>(ud);
}

// The range in force: the field's when there is one, so that a range set on
// the field later holds at once.
void spin_range(Widget w, double& lo, double& hi) {
  if (const FieldRecord* f = spin_field(w)) {
    lo = f->data.minimum;
    hi = f->data.maximum;
  } else {
    lo = part(w).minimum;
    hi = part(w).maximum;
  }
}

std::string text_of(Widget text) {
  char* s = XmTextGetString(text);
  std::string out = s ? s : "";
  XtFree(s);
  return out;
}

std::string trimmed(std::string s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\0')) s.pop_back();
  const std::size_t lead = s.find_first_not_of(' ');
  return lead == std::string::npos ? std::string{} : s.substr(lead);
}

XtTranslations text_translations() {
  static XtTranslations table = XtParseTranslationTable(
      "<Key>osfUp: yyIntegerSpinWidgetKeyAction(u)\n"
      "<Key>osfDown: yyIntegerSpinWidgetKeyAction(d)\n"
      "<Key>osfPageUp: yyIntegerSpinWidgetKeyAction(U)\n"
      "<Key>osfPageDown: yyIntegerSpinWidgetKeyAction(D)\n"
      "<Btn4Down>: yyIntegerSpinWidgetKeyAction(u)\n"
      "<Btn5Down>: yyIntegerSpinWidgetKeyAction(d)");
  return table;
}

void register_actions(XtAppContext app) {
  static XtAppContext registered = nullptr;
  if (registered == app) return;
  static XtActionsRec actions[] = {{S("yyIntegerSpinWidgetKeyAction"), yyIntegerSpinWidgetKeyAction}};
  XtAppAddActions(app, actions, XtNumber(actions));
  registered = app;
}

void stop_repeat(SpinPart& p) {
  if (p.timerId) XtRemoveTimeOut(p.timerId);
  p.timerId = 0;
  p.repeatCount = 0;
  p.currentStep = p.smallStep;
  p.pressed = -1;
}

Widget create_button(Widget w, unsigned char direction) {
  Pixel background = w->core.background_pixel;
  Arg a[12];
  Cardinal n = 0;
  XtSetArg(a[n], XmNarrowDirection, direction); ++n;
  XtSetArg(a[n], XmNtraversalOn, False); ++n;
  XtSetArg(a[n], XmNhighlightThickness, 0); ++n;
  XtSetArg(a[n], XmNshadowThickness, 0); ++n;
  XtSetArg(a[n], XtNborderWidth, 0); ++n;
  XtSetArg(a[n], XtNforeground, yyDialogScheme(16)); ++n;
  XtSetArg(a[n], XtNbackground, background); ++n;
  if (zelvy_x::state().bFlatStyle) {
    XtSetArg(a[n], XmNdetailShadowThickness, 1); ++n;
  }
  Widget b = XtCreateManagedWidget("SpinButton", xmArrowButtonWidgetClass, w, a, n);
  XtAddCallback(b, XmNarmCallback, yyIntegerSpinWidgetButtonCB, nullptr);
  XtAddCallback(b, XmNdisarmCallback, yyIntegerSpinWidgetButtonCB, nullptr);
  return b;
}

void yyIntegerSpinWidgetInitialize(Widget, Widget w, ArgList, Cardinal*) {
  SpinPart& p = part(w);
  w->core.width = std::max<Dimension>(w->core.width, 1);
  w->core.height = std::max<Dimension>(w->core.height, 1);
  const int kind = kind_of(w);
  p.editable = True;
  p.textWidth = p.buttonWidth = 1;
  // The integer class starts without a range, as a minimum above the maximum.
  p.minimum = kind == kKindInteger ? 2.0 : 1.0;
  p.maximum = 1.0;
  p.smallStep = p.currentStep = 1.0;
  p.largeStep = 5.0;
  p.stepOrigin = 0;
  p.repeatCount = 0;
  p.timerId = 0;
  p.pressed = -1;
  yyIntegerSpinWidgetChildGeometry(w);
  register_actions(XtWidgetToApplicationContext(w));
  Arg a[12];
  Cardinal n = 0;
  XtSetArg(a[n], XmNshadowThickness, p.shadowThick); ++n;
  XtSetArg(a[n], XtNborderWidth, 0); ++n;
  XtSetArg(a[n], XmNhighlightThickness, p.highlightThickness); ++n;
  XtSetArg(a[n], XmNmarginWidth, p.marginWidth); ++n;
  XtSetArg(a[n], XmNmarginHeight, p.marginHeight); ++n;
  XtSetArg(a[n], XmNeditMode, XmSINGLE_LINE_EDIT); ++n;
  if (XmRenderTable rt = yyDialogRenderTable(p.xftFont)) {
    XtSetArg(a[n], XmNrenderTable, rt); ++n;
  }
  p.textWidget = XtCreateManagedWidget("SpinText", xmTextWidgetClass, w, a, n);
  if (zelvy_x::state().bFlatStyle)
    XtVaSetValues(p.textWidget, XmNshadowThickness, 1, XmNtopShadowColor, yyDialogScheme(9), XmNbottomShadowColor,
                  yyDialogScheme(9), nullptr);
  XtOverrideTranslations(p.textWidget, text_translations());
  p.upButton = create_button(w, XmARROW_UP);
  p.downButton = create_button(w, XmARROW_DOWN);
  yyIntegerSpinWidgetChildPositionResize(w);
}

void yyIntegerSpinWidgetDestroy(Widget w) {
  SpinPart& p = part(w);
  if (p.timerId) XtRemoveTimeOut(p.timerId);
  p.timerId = 0;
}

void yyIntegerSpinWidgetResize(Widget w) {
  yyIntegerSpinWidgetChildGeometry(w);
  yyIntegerSpinWidgetChildPositionResize(w);
}

void yyIntegerSpinWidgetChangeManaged(Widget w) { yyIntegerSpinWidgetChildPositionResize(w); }

// The children have their places from the spinner; they get no say.
XtGeometryResult yyIntegerSpinWidgetGeometryManager(Widget, XtWidgetGeometry*, XtWidgetGeometry*) { return XtGeometryNo; }

Boolean yyIntegerSpinWidgetSetValues(Widget old, Widget, Widget w, ArgList, Cardinal*) {
  SpinPart& p = part(w);
  if (part(old).editable != p.editable) {
    XtVaSetValues(p.textWidget, XmNeditable, p.editable, nullptr);
    XtSetSensitive(p.upButton, p.editable);
    XtSetSensitive(p.downButton, p.editable);
  }
  if (old->core.background_pixel != w->core.background_pixel)
    for (Widget b : {p.upButton, p.downButton}) XtVaSetValues(b, XtNbackground, w->core.background_pixel, nullptr);
  return False;
}

SpinClassRec make_class(const char* name, int kind, std::array<XtResource, kResources>& resources) {
  SpinClassRec c{};
  CoreClassPart& core = c.core_class;
  core.superclass = reinterpret_cast<WidgetClass>(&xmManagerClassRec);
  core.class_name = S(name);
  core.widget_size = sizeof(SpinRec);
  core.initialize = yyIntegerSpinWidgetInitialize;
  core.realize = XtInheritRealize;
  core.resources = resources.data();
  core.num_resources = static_cast<Cardinal>(resources.size());
  core.xrm_class = NULLQUARK;
  core.compress_motion = True;
  core.compress_exposure = XtExposeCompressMaximal;
  core.compress_enterleave = True;
  core.destroy = yyIntegerSpinWidgetDestroy;
  core.resize = yyIntegerSpinWidgetResize;
  core.expose = XtInheritExpose;
  core.set_values = yyIntegerSpinWidgetSetValues;
  core.accept_focus = nullptr;
  core.version = XtVersion;
  core.tm_table = XtInheritTranslations;
  core.query_geometry = XtInheritQueryGeometry;
  core.display_accelerator = XtInheritDisplayAccelerator;
  c.composite_class.geometry_manager = yyIntegerSpinWidgetGeometryManager;
  c.composite_class.change_managed = yyIntegerSpinWidgetChangeManaged;
  c.composite_class.insert_child = XtInheritInsertChild;
  c.composite_class.delete_child = XtInheritDeleteChild;
  c.constraint_class.constraint_size = sizeof(XmManagerConstraintRec);
  c.manager_class.translations = XtInheritTranslations;
  c.manager_class.parent_process = XmInheritParentProcess;
  c.spin_class.kind = kind;
  return c;
}

SpinClassRec integerSpinClassRec = make_class("IntegerSpinner", kKindInteger, integerResources);
SpinClassRec realSpinClassRec = make_class("RealSpinner", kKindReal, realResources);
SpinClassRec doubleSpinClassRec = make_class("DoubleSpinner", kKindDouble, doubleResources);

}  // namespace

WidgetClass integerspinWidgetClass = reinterpret_cast<WidgetClass>(&integerSpinClassRec);
WidgetClass realspinWidgetClass = reinterpret_cast<WidgetClass>(&realSpinClassRec);
WidgetClass doublespinWidgetClass = reinterpret_cast<WidgetClass>(&doubleSpinClassRec);

bool yySpinWidgetIs(Widget w) {
  if (!w) return false;
  const WidgetClass c = XtClass(w);
  return c == integerspinWidgetClass || c == realspinWidgetClass || c == doublespinWidgetClass;
}

Widget yySpinWidgetText(Widget w) { return yySpinWidgetIs(w) ? part(w).textWidget : nullptr; }

void yySpinWidgetButtons(Widget w, Widget& up, Widget& down) {
  up = down = nullptr;
  if (!yySpinWidgetIs(w)) return;
  up = part(w).upButton;
  down = part(w).downButton;
}

void yySpinWidgetSetRange(Widget w, double minimum, double maximum) {
  if (!yySpinWidgetIs(w)) return;
  part(w).minimum = minimum;
  part(w).maximum = maximum;
}

void yySpinWidgetSetSteps(Widget w, double small, double large, int origin) {
  if (!yySpinWidgetIs(w)) return;
  SpinPart& p = part(w);
  const int kind = kind_of(w);
  p.smallStep = p.currentStep = class_width(kind, small);
  p.largeStep = class_width(kind, large == 0.0 ? small : large);
  if (kind == kKindInteger) p.stepOrigin = origin;
}

void yySpinWidgetGetSteps(Widget w, double& small, double& large, double& current) {
  small = large = current = 0.0;
  if (!yySpinWidgetIs(w)) return;
  small = part(w).smallStep;
  large = part(w).largeStep;
  current = part(w).currentStep;
}

bool yySpinWidgetRepeating(Widget w) { return yySpinWidgetIs(w) && part(w).timerId != 0; }

void yyIntegerSpinWidgetChildGeometry(Widget w) {
  SpinPart& p = part(w);
  int across = 0, unused = 0;
  yyDialogUnitsToPixels(yyDialogFontMetrics(p.xftFont), kButtonUnits, 0, across, unused);
  p.buttonWidth = std::max(1, across);
  p.textWidth = std::max(1, static_cast<int>(w->core.width) - p.buttonWidth - 2);
}

void yyIntegerSpinWidgetChildPositionResize(Widget w) {
  SpinPart& p = part(w);
  const int height = std::max(1, static_cast<int>(w->core.height));
  if (p.textWidget) XtConfigureWidget(p.textWidget, 0, 0, static_cast<Dimension>(p.textWidth), static_cast<Dimension>(height), 0);
  // Odd, so that the arrows share their middle row.
  const int buttonHeight = (height / 4) * 2 + 1;
  const int downX = p.textWidth - (buttonHeight < p.buttonWidth ? 1 : 0);
  if (p.upButton)
    XtConfigureWidget(p.upButton, static_cast<Position>(p.textWidth), 0, static_cast<Dimension>(p.buttonWidth),
                      static_cast<Dimension>(buttonHeight), 0);
  if (p.downButton)
    XtConfigureWidget(p.downButton, static_cast<Position>(downX), static_cast<Position>(buttonHeight - 1),
                      static_cast<Dimension>(p.buttonWidth), static_cast<Dimension>(buttonHeight), 0);
}

void yyIntegerSpinWidgetButtonCB(Widget button, XtPointer, XtPointer call) {
  Widget w = XtParent(button);
  if (!yySpinWidgetIs(w) || !call) return;
  SpinPart& p = part(w);
  const int reason = static_cast<XmAnyCallbackStruct*>(call)->reason;
  if (reason == XmCR_DISARM) {
    // Whatever happened during the press, its timer ends with it.
    stop_repeat(p);
    return;
  }
  if (reason != XmCR_ARM || state().bInvalidField || !p.editable) return;
  stop_repeat(p);
  XmProcessTraversal(p.textWidget, XmTRAVERSE_CURRENT);
  p.pressed = button == p.upButton ? kSpinUp : kSpinDown;
  yyIntegerSpinWidgetSpinSpinner(w, p.pressed);
  p.timerId = XtAppAddTimeOut(XtWidgetToApplicationContext(w), kSpinFirstDelayMs, yyIntegerSpinWidgetButtonTimeOutCB, w);
}

void yyIntegerSpinWidgetButtonTimeOutCB(XtPointer data, XtIntervalId* id) {
  Widget w = static_cast<Widget>(data);
  SpinPart& p = part(w);
  // Called other than by its own timer, it takes that timer's place.
  if (p.timerId && (!id || *id != p.timerId)) XtRemoveTimeOut(p.timerId);
  p.timerId = 0;
  // An invalid number elsewhere, risen during the press, ends the repeat.
  if (p.pressed < 0 || state().bInvalidField) return;
  // The sixth step of a press and those after it are large.
  if (++p.repeatCount == kSpinRepeatsBeforeLarge) p.currentStep = p.largeStep;
  yyIntegerSpinWidgetSpinSpinner(w, p.pressed);
  p.timerId = XtAppAddTimeOut(XtWidgetToApplicationContext(w), kSpinRepeatDelayMs, yyIntegerSpinWidgetButtonTimeOutCB, w);
}

void yyIntegerSpinWidgetKeyAction(Widget text, XEvent*, String* params, Cardinal* count) {
  Widget w = XtParent(text);
  if (!yySpinWidgetIs(w) || !part(w).editable || !count || *count < 1) return;
  SpinPart& p = part(w);
  switch (params[0][0]) {
    case 'u': yyIntegerSpinWidgetSpinSpinner(w, kSpinUp); break;
    case 'd': yyIntegerSpinWidgetSpinSpinner(w, kSpinDown); break;
    case 'U': case 'D': {
      // Page keys take one large step.
      const double rest = p.currentStep;
      p.currentStep = p.largeStep;
      yyIntegerSpinWidgetSpinSpinner(w, params[0][0] == 'U' ? kSpinUp : kSpinDown);
      p.currentStep = rest;
      break;
    }
    default: break;
  }
}

bool yyIntegerSpinWidgetNumberValid(Widget w, double value) {
  double lo = 0, hi = 0;
  spin_range(w, lo, hi);
  return hi < lo || (value >= lo && value <= hi);
}

double yyIntegerSpinWidgetNumberZero(Widget w) {
  if (yyIntegerSpinWidgetNumberValid(w, 0.0)) return 0.0;
  double lo = 0, hi = 0;
  spin_range(w, lo, hi);
  return std::fabs(lo) < std::fabs(hi) ? lo : hi;
}

double yyIntegerSpinWidgetNumberLimit(Widget w, double value, double step) {
  const int kind = kind_of(w);
  double next = 0;
  if (kind == kKindInteger) next = std::trunc(value) + step;
  else if (kind == kKindReal) next = static_cast<double>(static_cast<float>(value) + static_cast<float>(step));
  else next = value + step;
  double lo = 0, hi = 0;
  spin_range(w, lo, hi);
  if (hi >= lo) {
    // A step out of the range lands on the limit, on the step's grid or not.
    if (next < lo) return lo;
    if (next > hi) return hi;
  }
  if (kind != kKindInteger) return next;
  const SpinPart& p = part(w);
  const auto origin = static_cast<std::int64_t>(p.stepOrigin);
  const auto size = static_cast<std::int64_t>(std::fabs(step));
  auto snapped = static_cast<std::int64_t>(next);
  if (size > 0) snapped = ((snapped - origin) / size) * size + origin;
  return std::clamp(static_cast<double>(snapped), kIntMin, kIntMax);
}

std::string yyIntegerSpinWidgetNumberText(Widget w, double value) {
  const int kind = kind_of(w);
  if (kind == kKindInteger) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%1d", static_cast<int>(value));
    return buffer;
  }
  const FieldRecord* f = spin_field(w);
  const std::string format = f && !f->data.format.empty() ? f->data.format : std::string(state().cNumDefFormat);
  std::string text(kRealTextWidth, ' ');
  if (kind == kKindReal) yyrea2st(static_cast<float>(value), text, format);
  else yydbl2st(value, text, format);
  return trimmed(text);
}

void yyIntegerSpinWidgetSpinSpinner(Widget w, int button) {
  SpinPart& p = part(w);
  const int kind = kind_of(w);
  FieldRecord* f = spin_field(w);
  const std::string shown = text_of(p.textWidget);
  // The present value: a real's unedited valid value, else the text, else a
  // value inside the range.
  double value = 0;
  bool known = false;
  if (kind != kKindInteger && f && !f->data.edited && f->data.valid) {
    value = f->data.value;
    known = true;
  }
  if (!known) {
    int good = 0;
    yyst2dblcheck_(value, good, shown);
    if (!good || !std::isfinite(value) || !yyIntegerSpinWidgetNumberValid(w, value))
      value = yyIntegerSpinWidgetNumberZero(w);
  }
  const double step = button == kSpinUp ? p.currentStep : -p.currentStep;
  const double next = yyIntegerSpinWidgetNumberLimit(w, value, step);
  const std::string text = yyIntegerSpinWidgetNumberText(w, next);
  // A step that changes nothing, as at a limit, is no change to report.
  if (text == shown) return;
  if (f && !f->reportEveryChange) {
    // Sent through the server: the application sees it after the text below.
    if (DialogRecord* d = yyDialogFromWidget(w)) yyDialogFieldChangedValue(*d, *f);
  }
  XmTextSetString(p.textWidget, const_cast<char*>(text.c_str()));
  XmTextSetInsertionPosition(p.textWidget, static_cast<XmTextPosition>(text.size()));
  if (f && kind != kKindInteger) {
    f->data.value = next;
    f->data.valid = true;
    f->data.edited = false;
  }
}

// ---- Steps of spinner fields -----------------------------------------------

namespace {

Widget spinner_of_field(int fieldid, int type, int& error) {
  error = 0;
  if (zelvy_data::data().icurdialog == 0 || state().iDlgCur < 0) {
    error = 1005;
    return nullptr;
  }
  const int fi = yyDialogFindField(fieldid, state().iDlgCur);
  if (fi < 0) {
    error = 1006;
    return nullptr;
  }
  FieldRecord& f = state().wDialogInfo[state().iDlgCur].fields[static_cast<std::size_t>(fi)];
  if (f.type != type || !(f.capabilities & field_capability::kSpinner) || !yySpinWidgetIs(f.widget)) {
    error = 1006;
    return nullptr;
  }
  return f.widget;
}

}  // namespace

void yydialogspinnerstepinteger(int fieldid, int small, int large, int origin, int& error) {
  if (Widget w = spinner_of_field(fieldid, kInteger, error)) yySpinWidgetSetSteps(w, small, large, origin);
}

void wdialogspinnerstepreal(int fieldid, float small, float large, int& error) {
  if (Widget w = spinner_of_field(fieldid, kReal, error)) yySpinWidgetSetSteps(w, small, large);
}

void yyfieldspinstepdouble(int fieldid, double small, double large, int& error) {
  if (Widget w = spinner_of_field(fieldid, kDouble, error)) yySpinWidgetSetSteps(w, small, large);
}

void WDialogSpinnerStep(int fieldid, float smallStep, std::optional<float> largeStep) {
  int error = 0;
  wdialogspinnerstepreal(fieldid, smallStep, largeStep.value_or(smallStep), error);
  if (error) yyerror(error, "WDialogSpinnerStep");
}
