// The spinners: a numeric text with two small arrow buttons that step the
// number. Three manager classes, one design in three numeric widths (32-bit
// integer, 32-bit real, double). Inside a dialog a spinner is the main widget
// of an integer, real or double field and reaches that field's record through
// its userData, so that its number follows the field's value model.
#pragma once

#include <X11/Intrinsic.h>

#include <string>

extern WidgetClass integerspinWidgetClass;  // "IntegerSpinner"
extern WidgetClass realspinWidgetClass;     // "RealSpinner"
extern WidgetClass doublespinWidgetClass;   // "DoubleSpinner"

// Resource names of the three classes.
inline constexpr const char* XtNtextWidget = "textWidget";  // the "SpinText" child, read only
inline constexpr const char* XtNshadowThick = "shadowThick";
inline constexpr const char* XtNspinEditable = "editable";
inline constexpr const char* XtNxftFont = "xftFont";

// Delays of a held arrow: the first repeat, then each next one; and the
// repeat after which the steps become large.
inline constexpr unsigned long kSpinFirstDelayMs = 500;
inline constexpr unsigned long kSpinRepeatDelayMs = 100;
inline constexpr int kSpinRepeatsBeforeLarge = 5;

// Which arrow a step is for.
inline constexpr int kSpinUp = 0;
inline constexpr int kSpinDown = 1;

bool yySpinWidgetIs(Widget w);
Widget yySpinWidgetText(Widget w);
void yySpinWidgetButtons(Widget w, Widget& up, Widget& down);
// Range of a spinner standing alone; a minimum above the maximum means none.
// A spinner of a field takes the field's range instead.
void yySpinWidgetSetRange(Widget w, double minimum, double maximum);
// Small and large step (a large step of 0 is the small one) and, for the
// integer class, the origin values snap to. The steps take the class's width.
void yySpinWidgetSetSteps(Widget w, double small, double large, int origin = 0);
void yySpinWidgetGetSteps(Widget w, double& small, double& large, double& current);
// The repeat timer of a held arrow runs.
bool yySpinWidgetRepeating(Widget w);

// The routines of the design, named after the integer class, which the real
// and double classes share.
void yyIntegerSpinWidgetChildGeometry(Widget w);
void yyIntegerSpinWidgetChildPositionResize(Widget w);
void yyIntegerSpinWidgetButtonCB(Widget button, XtPointer data, XtPointer call);
void yyIntegerSpinWidgetButtonTimeOutCB(XtPointer data, XtIntervalId* id);
void yyIntegerSpinWidgetKeyAction(Widget w, XEvent* event, String* params, Cardinal* count);
void yyIntegerSpinWidgetSpinSpinner(Widget w, int button);
bool yyIntegerSpinWidgetNumberValid(Widget w, double value);
double yyIntegerSpinWidgetNumberZero(Widget w);
double yyIntegerSpinWidgetNumberLimit(Widget w, double value, double step);
// The text a step writes for a number: "%1d" for integers, the field's
// format (or the default one) for reals and doubles.
std::string yyIntegerSpinWidgetNumberText(Widget w, double value);

// Steps of a spinner field of the current dialog; error 0, 1005 or 1006 (a
// field of another type, or no spinner).
void yydialogspinnerstepinteger(int fieldid, int small, int large, int origin, int& error);
void wdialogspinnerstepreal(int fieldid, float small, float large, int& error);
void yyfieldspinstepdouble(int fieldid, double small, double large, int& error);
