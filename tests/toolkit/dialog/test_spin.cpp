// Spinners on a real X server: the number of domains of the main form driven
// by mouse and keyboard, and spinners made directly for the width, format,
// snapping and range rules.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/IntrinsicP.h>
#include <Xm/Text.h>

#include <poll.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/spin_private.h"
#include "toolkit/kernel/window_private.h"
#include "tests/toolkit/dialog/form_fixture.h"

namespace {

using S = std::vector<std::string>;
constexpr int kDomains = gombrel_ids::main_form::domain_count;

class Spin : public MainFormTest {
 protected:
  void SetUp() override {
    MainFormTest::SetUp();
    WMessageEnable(FieldChanged, 1);
    XSetInputFocus(xdisplay(), zelvy_win::state().wShell[0], RevertToParent, CurrentTime);
    settle();
  }
  static void xdotool(const std::string& args) {
    XSync(xdisplay(), False);
    ASSERT_EQ(std::system(("xdotool " + args).c_str()), 0) << args;
  }
  static std::string at(Widget w) {
    int x = 0, y = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), w->core.width / 2,
                          w->core.height / 2, &x, &y, &child);
    return "mousemove " + std::to_string(x) + " " + std::to_string(y);
  }
  static Widget arrow(int which) {
    Widget up = nullptr, down = nullptr;
    yySpinWidgetButtons(field(kDomains).widget, up, down);
    return which == kSpinUp ? up : down;
  }
  // The step messages of the domain count until `quiet_ms` pass without one;
  // focus moves are passed over.
  static int step_messages(int quiet_ms = 400) {
    for (int steps = 0;;) {
      WMessageTimer(quiet_ms, 999, 0);
      int type = 0;
      MessageRecord m;
      do WMessage(type, m);
      while (type == ExposeMessage || type == Resize);
      WMessageTimer(0, 999);
      if (type == TimerExpired && m.Value1 == 999) return steps;
      if (type == FieldChanged && m.Value3 == 1) {
        EXPECT_EQ((std::pair(m.Value1, m.Value2)), std::pair(kDomains, kDomains));
        ++steps;
      }
    }
  }
  // Events handled for a while, as while a button is held.
  static void pump(int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (std::chrono::steady_clock::now() < end)
      if (XtAppPending(zelvy_x::state().ixContext)) XtAppProcessEvent(zelvy_x::state().ixContext, XtIMAll);
      else poll(nullptr, 0, 5);
  }
  // Typed into the emptied field; xdotool maps a spare key for a character
  // the keyboard lacks only while it runs, so events are taken meanwhile.
  static void retype(const std::string& text) {
    Widget t = field(kDomains).valueWidget;
    XmTextSetSelection(t, 0, XmTextGetLastPosition(t), CurrentTime);
    xdotool("key BackSpace");
    FILE* p = popen(("LC_ALL=C.UTF-8 xdotool type --delay 40 -- '" + text + "'; echo done").c_str(), "r");
    ASSERT_NE(p, nullptr);
    pollfd pfd{fileno(p), POLLIN, 0};
    while (poll(&pfd, 1, 5) == 0) pump(5);
    pclose(p);
    settle();
  }
  static void key(const std::string& keys) {
    xdotool("key " + keys);
    settle();
  }
  static std::string text() {
    std::string s;
    WDialogGetString(kDomains, s);
    return s;
  }
  static int value() {
    int n = 0;
    WDialogGetInteger(kDomains, n);
    return n;
  }
};

TEST_F(Spin, ArrowClicksStepToTheLimitAndReportEachRealStep) {
  WDialogPutInteger(kDomains, 0);
  xdotool(at(arrow(kSpinUp)) + " click --repeat 25 --delay 30 1");
  EXPECT_EQ(step_messages(), 24);
  EXPECT_EQ(text(), "24");
  xdotool("click 1");  // at the limit: no change, nothing said
  EXPECT_EQ(step_messages(300), 0);
  EXPECT_EQ(value(), 24);
  xdotool(at(arrow(kSpinDown)) + " click --repeat 3 --delay 30 1");
  EXPECT_EQ(step_messages(), 3);
  EXPECT_EQ(value(), 21);
  EXPECT_FALSE(yySpinWidgetRepeating(field(kDomains).widget));
}

TEST_F(Spin, HeldArrowRepeatsAndTakesLargeStepsFromTheSixth) {
  WDialogPutInteger(kDomains, 0);
  xdotool(at(arrow(kSpinUp)) + " mousedown 1");
  pump(1100);  // a step at once, one after 500 ms, then one each 100 ms
  xdotool("mouseup 1");
  pump(50);
  const int reached = value();
  EXPECT_GE(reached, 3);
  EXPECT_FALSE(yySpinWidgetRepeating(field(kDomains).widget));
  pump(400);
  EXPECT_EQ(value(), reached);  // nothing left behind by the press

  // The timer driven by hand, for an exact count of steps.
  WDialogRangeInteger(kDomains);
  WDialogPutInteger(kDomains, 0);
  Widget w = field(kDomains).widget;
  XmAnyCallbackStruct arm{XmCR_ARM, nullptr}, disarm{XmCR_DISARM, nullptr};
  yyIntegerSpinWidgetButtonCB(arrow(kSpinUp), nullptr, &arm);
  S seen{text()};
  for (int k = 0; k < 6; ++k) {
    ASSERT_TRUE(yySpinWidgetRepeating(w));
    yyIntegerSpinWidgetButtonTimeOutCB(w, nullptr);
    seen.push_back(text());
  }
  EXPECT_EQ(seen, (S{"1", "2", "3", "4", "5", "10", "15"}));
  yyIntegerSpinWidgetButtonCB(arrow(kSpinUp), nullptr, &disarm);
  EXPECT_FALSE(yySpinWidgetRepeating(w));
  double small = 0, large = 0, current = 0;
  yySpinWidgetGetSteps(w, small, large, current);
  EXPECT_EQ(current, small);
  settle();
}

TEST_F(Spin, KeysAndWheelStepUnlessReadOnly) {
  WDialogPutInteger(kDomains, 10);
  xdotool(at(field(kDomains).valueWidget) + " click 1");
  settle();
  S seen;
  for (const char* k : {"Up", "Down", "Down", "Prior", "Next", "Next", "Next"}) {
    key(k);
    seen.push_back(text());
  }
  // Page keys take a large step onto the step's grid, and stop at the limit.
  EXPECT_EQ(seen, (S{"11", "10", "9", "10", "5", "0", "0"}));
  xdotool(at(field(kDomains).valueWidget) + " click 4 click 4 click 5");
  EXPECT_EQ(step_messages(), 3);
  EXPECT_EQ(value(), 1);

  WDialogFieldState(kDomains, 2);
  settle();
  key("Up Prior");
  xdotool(at(arrow(kSpinUp)) + " click 1");
  EXPECT_EQ(step_messages(300), 0);
  EXPECT_EQ(value(), 1);
}

TEST_F(Spin, TypedTextFollowsTheNumericRules) {
  WDialogPutInteger(kDomains, 5);
  xdotool(at(field(kDomains).valueWidget) + " click 1");
  settle();
  retype("abc");  // letters refused; no number, so a step starts from 0
  EXPECT_EQ(text(), "");
  key("Up");
  EXPECT_EQ(text(), "1");

  retype("30");  // out of range: the dialog holds and the arrows don't act
  EXPECT_TRUE(zelvy_dialog::state().bInvalidField);
  xdotool(at(arrow(kSpinUp)) + " click 1");
  settle();
  EXPECT_EQ(text(), "30");
  xdotool(at(field(kDomains).valueWidget) + " click 1");
  key("Up");  // a key starts again from a number in range
  EXPECT_EQ(text(), "1");
  EXPECT_FALSE(zelvy_dialog::state().bInvalidField);

  S seen;
  for (const char* typed : {"-1", "1e3", "ä7ü"}) {
    retype(typed);
    seen.push_back(text());
    key(typed[0] == '-' ? "Down" : "Up");
    seen.push_back(text());
  }
  EXPECT_EQ(seen, (S{"-1", "0", "13", "14", "7", "8"}));
  EXPECT_EQ(zelvy_data::data().ierr, 0);

  int error = -1;
  wdialogspinnerstepreal(kDomains, 1.5f, 2.0f, error);  // an integer spinner
  EXPECT_EQ(error, 1006);
  yydialogspinnerstepinteger(1016, 2, 0, 0, error);  // a number without arrows
  EXPECT_EQ(error, 1006);
}

// Spinners made directly in the form's dialog, with field records of their own.
class SpinDirect : public MainFormTest {
 protected:
  Widget make(WidgetClass cls, FieldRecord* record) {
    Widget dialog = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur].widget;
    Widget w = XtVaCreateManagedWidget("ZelvField", cls, dialog, XtNwidth, 90, XtNheight, 22, XmNuserData,
                                       record, nullptr);
    made_.push_back(w);
    return w;
  }
  static std::string step(Widget w, const char* from, int button) {
    Widget t = yySpinWidgetText(w);
    if (from) XmTextSetString(t, const_cast<char*>(from));
    yyIntegerSpinWidgetSpinSpinner(w, button);
    char* s = XmTextGetString(t);
    std::string out = s;
    XtFree(s);
    return out;
  }
  void TearDown() override {
    for (Widget w : made_) XtDestroyWidget(w);
    MainFormTest::TearDown();
  }
  std::vector<Widget> made_;
};

TEST_F(SpinDirect, RealAndDoubleStepInTheirWidthAndFormat) {
  FieldRecord real, dbl;
  real.reportEveryChange = dbl.reportEveryChange = true;  // no message of their own
  real.data.format = dbl.data.format = "(F20.15)";
  Widget r = make(realspinWidgetClass, &real), d = make(doublespinWidgetClass, &dbl);
  EXPECT_EQ((S{XtClass(r)->core_class.class_name, XtClass(d)->core_class.class_name}), (S{"RealSpinner", "DoubleSpinner"}));
  S seen;
  for (auto [w, rec] : {std::pair(r, &real), std::pair(d, &dbl)}) {
    yySpinWidgetSetSteps(w, 0.2, 1.0);
    rec->data.value = 0.1;  // valid and unedited: the stored value counts, not the text
    rec->data.valid = true;
    seen.push_back(step(w, "junk", kSpinUp));
    EXPECT_TRUE(rec->data.valid && !rec->data.edited);
  }
  EXPECT_EQ(seen, (S{"0.300000011920929", "0.300000000000000"}));

  // Edited, the text counts; without a format of the field's, the default one.
  dbl.data.format.clear();
  dbl.data.edited = true;
  EXPECT_EQ(step(d, "2.5", kSpinDown), "2.3000");
  EXPECT_DOUBLE_EQ(dbl.data.value, 2.3);

  // The field's range is the spinner's: steps land on the limits, text out
  // of it starts from 0.
  real.data.minimum = -1.0;
  real.data.maximum = 0.35;
  real.data.edited = true;
  EXPECT_EQ(step(r, "0.3", kSpinUp), "0.349999994039536");
  real.data.edited = true;
  EXPECT_EQ(step(r, "7", kSpinDown), "-0.200000002980232");
}

TEST_F(SpinDirect, IntegerStepsSnapToTheOriginInsideTheRange) {
  Widget w = make(integerspinWidgetClass, nullptr);
  yySpinWidgetSetSteps(w, 5, 0, 0);
  EXPECT_EQ((S{step(w, "7", kSpinUp), step(w, "7", kSpinDown), step(w, "-7", kSpinDown)}),
            (S{"10", "0", "-10"}));  // 2 truncates to 0, not to 5
  yySpinWidgetSetSteps(w, 5, 0, 1);
  EXPECT_EQ(step(w, "7", kSpinUp), "11");
  yySpinWidgetSetRange(w, 0, 23);
  EXPECT_EQ(step(w, "21", kSpinUp), "23");  // the limit, off the step's grid
  yySpinWidgetSetSteps(w, 1, 0, 0);
  yySpinWidgetSetRange(w, 1, 10);
  EXPECT_EQ((S{step(w, "abc", kSpinUp), step(w, "50", kSpinDown)}), (S{"2", "1"}));  // from the nearer limit
  yySpinWidgetSetRange(w, -10, -3);
  EXPECT_EQ(step(w, "", kSpinUp), "-3");
  yySpinWidgetSetRange(w, 5, 1);  // a minimum above the maximum: no range
  EXPECT_EQ(step(w, "-40", kSpinDown), "-41");
}

}  // namespace
