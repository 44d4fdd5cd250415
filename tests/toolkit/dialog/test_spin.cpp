// Spinners on a real X server: the number of domains of the main form driven
// by the mouse and the keyboard, and real and double spinners made directly,
// with their formats, steps and range rules.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/IntrinsicP.h>
#include <X11/Xlib.h>
#include <Xm/Text.h>
#include <Xm/Xm.h>

#include <poll.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/spin_private.h"
#include "toolkit/kernel/window_private.h"
#include "tests/toolkit/dialog/form_fixture.h"

namespace {

using zelvy_dialog::kDouble;
using zelvy_dialog::kInteger;
using zelvy_dialog::kReal;

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
    Dimension wd = 0, ht = 0;
    XtVaGetValues(w, XtNwidth, &wd, XtNheight, &ht, nullptr);
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), wd / 2, ht / 2, &x, &y, &child);
    return "mousemove " + std::to_string(x) + " " + std::to_string(y);
  }

  static Widget arrow(int which) {
    Widget up = nullptr, down = nullptr;
    yySpinWidgetButtons(field(kDomains).widget, up, down);
    return which == kSpinUp ? up : down;
  }

  // The step messages of the domain count (Value1 == Value2) that arrive
  // within `quiet_ms` of each other; focus moves are passed over.
  static int step_messages(int quiet_ms = 400) {
    int steps = 0;
    for (;;) {
      WMessageTimer(quiet_ms, 999, 0);
      int type = 0;
      MessageRecord m;
      do WMessage(type, m);
      while (type == ExposeMessage || type == Resize);
      WMessageTimer(0, 999);
      if (type == TimerExpired && m.Value1 == 999) return steps;
      if (type == FieldChanged && m.Value3 == 1) {
        EXPECT_EQ(m.Value1, kDomains);
        EXPECT_EQ(m.Value2, kDomains);
        ++steps;
      }
    }
  }

  // Events handled for a while, as while a button is held.
  static void pump(int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (std::chrono::steady_clock::now() < end) {
      XtAppContext app = zelvy_x::state().ixContext;
      if (XtAppPending(app)) XtAppProcessEvent(app, XtIMAll);
      else poll(nullptr, 0, 5);
    }
  }

  // xdotool reads the text in the character type of its environment, and
  // maps a spare key for a character the keyboard lacks while it types.
  static void type(const std::string& text) {
    XSync(xdisplay(), False);
    FILE* p = popen(("LC_ALL=C.UTF-8 xdotool type --delay 40 -- '" + text + "'; echo done").c_str(), "r");
    ASSERT_NE(p, nullptr);
    pollfd pfd{fileno(p), POLLIN, 0};
    while (poll(&pfd, 1, 5) == 0) pump(5);
    EXPECT_EQ(pclose(p), 0);
    settle();
  }

  static void focus_domains() {
    xdotool(at(field(kDomains).valueWidget) + " click 1");
    settle();
  }
  static void clear_text() {
    Widget t = field(kDomains).valueWidget;
    XmTextSetSelection(t, 0, XmTextGetLastPosition(t), CurrentTime);
    xdotool("key BackSpace");
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
  EXPECT_EQ(value(), 24);
  EXPECT_EQ(text(), "24");
  // At the limit a click changes nothing and says nothing.
  xdotool("click 1");
  EXPECT_EQ(step_messages(300), 0);
  EXPECT_EQ(value(), 24);
  EXPECT_FALSE(yySpinWidgetRepeating(field(kDomains).widget));

  xdotool(at(arrow(kSpinDown)) + " click --repeat 3 --delay 30 1");
  EXPECT_EQ(step_messages(), 3);
  EXPECT_EQ(value(), 21);
}

TEST_F(Spin, HeldArrowRepeatsUntilReleased) {
  WDialogPutInteger(kDomains, 0);
  xdotool(at(arrow(kSpinUp)) + " mousedown 1");
  pump(1100);  // the first step, one after 500 ms, then one each 100 ms
  xdotool("mouseup 1");
  pump(50);
  const int reached = value();
  EXPECT_GE(reached, 3);
  EXPECT_FALSE(yySpinWidgetRepeating(field(kDomains).widget));
  pump(400);
  EXPECT_EQ(value(), reached);  // nothing left behind by the press
  settle();
}

// The repeat timer driven by hand, so that the count of steps is exact: the
// sixth step of a press and those after it are large.
TEST_F(Spin, LongPressTakesLargeStepsFromTheSixth) {
  WDialogRangeInteger(kDomains);  // no range
  WDialogPutInteger(kDomains, 0);
  Widget w = field(kDomains).widget;
  XmAnyCallbackStruct arm{XmCR_ARM, nullptr}, disarm{XmCR_DISARM, nullptr};
  yyIntegerSpinWidgetButtonCB(arrow(kSpinUp), nullptr, &arm);
  std::vector<std::string> seen{text()};
  for (int k = 0; k < 6; ++k) {
    ASSERT_TRUE(yySpinWidgetRepeating(w));
    yyIntegerSpinWidgetButtonTimeOutCB(w, nullptr);
    seen.push_back(text());
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"1", "2", "3", "4", "5", "10", "15"}));
  yyIntegerSpinWidgetButtonCB(arrow(kSpinUp), nullptr, &disarm);
  EXPECT_FALSE(yySpinWidgetRepeating(w));
  double small = 0, large = 0, current = 0;
  yySpinWidgetGetSteps(w, small, large, current);
  EXPECT_EQ(current, small);
  settle();
}

TEST_F(Spin, KeysAndWheelStep) {
  WDialogPutInteger(kDomains, 10);
  focus_domains();
  xdotool("key Up");
  EXPECT_EQ(step_messages(), 1);
  EXPECT_EQ(value(), 11);
  xdotool("key Down Down");
  EXPECT_EQ(step_messages(), 2);
  EXPECT_EQ(value(), 9);
  xdotool("key Prior");  // a large step, onto the step's grid
  EXPECT_EQ(step_messages(), 1);
  EXPECT_EQ(value(), 10);
  xdotool("key Next Next Next");
  EXPECT_EQ(step_messages(), 2);  // the third is held at the limit
  EXPECT_EQ(value(), 0);
  xdotool(at(field(kDomains).valueWidget) + " click 4 click 4 click 5");
  EXPECT_EQ(step_messages(), 3);
  EXPECT_EQ(value(), 1);
}

TEST_F(Spin, TypedTextFollowsTheNumericRules) {
  WDialogPutInteger(kDomains, 5);
  focus_domains();
  clear_text();
  type("abc");  // refused letters
  EXPECT_EQ(text(), "");
  xdotool("key Up");  // no number: the step starts from 0
  settle();
  EXPECT_EQ(text(), "1");

  clear_text();
  type("30");  // out of range: the dialog holds
  EXPECT_TRUE(zelvy_dialog::state().bInvalidField);
  xdotool(at(arrow(kSpinUp)) + " click 1");
  settle();
  EXPECT_EQ(text(), "30");  // the arrows don't act
  focus_domains();
  xdotool("key Up");  // the key starts again from a number in range
  settle();
  EXPECT_EQ(text(), "1");
  EXPECT_FALSE(zelvy_dialog::state().bInvalidField);

  clear_text();
  type("-1");
  EXPECT_EQ(text(), "-1");
  xdotool("key Down");
  settle();
  EXPECT_EQ(text(), "0");  // held at the bottom

  clear_text();
  type("1e3");  // no exponent in an integer
  EXPECT_EQ(text(), "13");
  xdotool("key Up");
  settle();
  EXPECT_EQ(value(), 14);

  clear_text();
  type("ä7ü");
  EXPECT_EQ(text(), "7");
  xdotool("key Up");
  settle();
  EXPECT_EQ(value(), 8);
  EXPECT_EQ(zelvy_data::data().ierr, 0);
}

TEST_F(Spin, ReadOnlyFieldDoesNotStep) {
  WDialogPutInteger(kDomains, 4);
  WDialogFieldState(kDomains, 2);
  settle();
  xdotool(at(arrow(kSpinUp)) + " click 1");
  focus_domains();
  xdotool("key Up Prior");
  EXPECT_EQ(step_messages(300), 0);
  EXPECT_EQ(value(), 4);
  WDialogFieldState(kDomains, 1);
  settle();
  xdotool(at(arrow(kSpinDown)) + " click 1");
  EXPECT_EQ(step_messages(), 1);
  EXPECT_EQ(value(), 3);
}

TEST_F(Spin, StepSettingsCheckTheField) {
  int error = -1;
  yydialogspinnerstepinteger(kDomains, 2, 0, 0, error);
  EXPECT_EQ(error, 0);
  double small = 0, large = 0, current = 0;
  yySpinWidgetGetSteps(field(kDomains).widget, small, large, current);
  EXPECT_EQ((std::vector<double>{small, large, current}), (std::vector<double>{2, 2, 2}));
  yydialogspinnerstepreal(kDomains, 1.5f, 2.0f, error);  // an integer spinner
  EXPECT_EQ(error, 1006);
  yyfieldspinstepdouble(1016, 1.0, 2.0, error);  // a number without arrows
  EXPECT_EQ(error, 1006);
  WDialogSpinnerStep(kDomains, 0.5f);
  EXPECT_EQ(zelvy_data::data().ierr, 1006);
}

// Spinners made directly in the form's dialog, with a field record of their own.
class SpinDirect : public MainFormTest {
 protected:
  struct Made {
    FieldRecord record;
    Widget widget = nullptr;
  };

  static std::unique_ptr<Made> make(WidgetClass cls, int type, std::string format = {}) {
    auto m = std::make_unique<Made>();
    m->record.type = type;
    m->record.identifier = 9000 + type;
    m->record.data.kind = type - kInteger + 3;
    m->record.data.format = std::move(format);
    m->record.reportEveryChange = true;  // no message of its own
    Widget dialog = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur].widget;
    m->widget = XtVaCreateManagedWidget("ZelvField", cls, dialog, XtNx, 2, XtNy, 2, XtNwidth, 90, XtNheight, 22,
                                        XmNuserData, &m->record, nullptr);
    m->record.widget = m->widget;
    m->record.valueWidget = yySpinWidgetText(m->widget);
    return m;
  }
  static void put(Made& m, double value) {
    XmTextSetString(m.record.valueWidget, const_cast<char*>("ignored"));
    m.record.data.value = value;
    m.record.data.valid = true;
    m.record.data.edited = false;
  }
  static std::string shown(const Made& m) {
    char* s = XmTextGetString(m.record.valueWidget);
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
  auto real = make(realspinWidgetClass, kReal, "(F20.15)");
  auto dbl = make(doublespinWidgetClass, kDouble, "(F20.15)");
  made_ = {real->widget, dbl->widget};
  ASSERT_STREQ(XtClass(real->widget)->core_class.class_name, "RealSpinner");
  ASSERT_STREQ(XtClass(dbl->widget)->core_class.class_name, "DoubleSpinner");
  for (Made* m : {real.get(), dbl.get()}) {
    yySpinWidgetSetSteps(m->widget, 0.2, 1.0);
    put(*m, 0.1);  // the stored value counts, not the text
    yyIntegerSpinWidgetSpinSpinner(m->widget, kSpinUp);
    EXPECT_TRUE(m->record.data.valid);
    EXPECT_FALSE(m->record.data.edited);
  }
  EXPECT_EQ(shown(*real), "0.300000011920929");
  EXPECT_EQ(shown(*dbl), "0.300000000000000");

  // Edited, the text counts; the default format without one of the field's.
  dbl->record.data.format.clear();
  XmTextSetString(dbl->record.valueWidget, const_cast<char*>("2.5"));
  dbl->record.data.edited = true;
  yyIntegerSpinWidgetSpinSpinner(dbl->widget, kSpinDown);
  EXPECT_DOUBLE_EQ(dbl->record.data.value, 2.3);
  EXPECT_EQ(shown(*dbl), "2.3000");

  // A range on the field is the spinner's: steps land on the limits.
  real->record.data.minimum = -1.0;
  real->record.data.maximum = 0.35;
  put(*real, 0.3);
  yyIntegerSpinWidgetSpinSpinner(real->widget, kSpinUp);
  EXPECT_DOUBLE_EQ(real->record.data.value, 0.35);
  real->record.data.edited = true;
  XmTextSetString(real->record.valueWidget, const_cast<char*>("junk"));
  yyIntegerSpinWidgetSpinSpinner(real->widget, kSpinDown);
  EXPECT_NEAR(real->record.data.value, -0.2, 1e-6);  // from 0, which is in range
}

TEST_F(SpinDirect, IntegerStepsSnapToTheOriginInsideTheRange) {
  Widget w = XtVaCreateManagedWidget("Loose", integerspinWidgetClass,
                                     zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur].widget,
                                     XtNwidth, 60, XtNheight, 20, nullptr);
  made_ = {w};
  Widget t = yySpinWidgetText(w);
  auto step = [&](const char* from, int button) {
    XmTextSetString(t, const_cast<char*>(from));
    yyIntegerSpinWidgetSpinSpinner(w, button);
    char* s = XmTextGetString(t);
    std::string out = s;
    XtFree(s);
    return out;
  };
  yySpinWidgetSetSteps(w, 5, 0, 0);
  EXPECT_EQ(step("7", kSpinUp), "10");
  EXPECT_EQ(step("7", kSpinDown), "0");  // 2 truncates to 0, not to 5
  EXPECT_EQ(step("-7", kSpinDown), "-10");
  yySpinWidgetSetSteps(w, 5, 0, 1);
  EXPECT_EQ(step("7", kSpinUp), "11");
  yySpinWidgetSetRange(w, 0, 23);
  EXPECT_EQ(step("21", kSpinUp), "23");  // the limit, off the step's grid
  yySpinWidgetSetSteps(w, 1, 0, 0);
  yySpinWidgetSetRange(w, 1, 10);
  EXPECT_EQ(step("abc", kSpinUp), "2");  // from the nearer limit
  EXPECT_EQ(step("50", kSpinDown), "1");
  yySpinWidgetSetRange(w, -10, -3);
  EXPECT_EQ(step("", kSpinUp), "-3");  // 0 is out: from -3, held there
  yySpinWidgetSetRange(w, 5, 1);  // a minimum above the maximum: no range
  EXPECT_EQ(step("-40", kSpinDown), "-41");
}

}  // namespace
