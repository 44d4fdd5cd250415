// The dialog engine on a real X server: the main form in the root window,
// free-standing dialogs, values, validation and change messages.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Xlib.h>
#include <X11/keysym.h>
#include <Xm/Xm.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "toolkit/kernel/resources.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "app/resources/gombrel_resources.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/dialog/dialog.h"

#include "tests/toolkit/dialog/form_fixture.h"

namespace {

// The pointer and keyboard are driven from outside, as a user would.
void xdotool(const std::string& args) {
  XSync(xdisplay(), False);
  ASSERT_EQ(std::system(("xdotool " + args).c_str()), 0) << args;
}

void click(Widget w) {
  int x = 0, y = 0;
  Window child = 0;
  XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), 4, 4, &x, &y, &child);
  xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
}

constexpr int kAbout = gombrel_ids::dialog::about;

class DialogDisplay : public MainFormTest {
 protected:
  void SetUp() override {
    MainFormTest::SetUp();
    WMessageEnable(FieldChanged, 1);
  }

  // The next message other than an exposure, with a timer as a guard.
  static int next_message(MessageRecord& m, int guard_ms = 2000) {
    WMessageTimer(guard_ms, 999, 0);
    int type = 0;
    do WMessage(type, m);
    while (type == ExposeMessage || type == Resize);
    WMessageTimer(0, 999);
    if (type == TimerExpired && m.Value1 == 999) return 0;
    return type;
  }


  static void focus_window() {
    XSetInputFocus(xdisplay(), zelvy_win::state().wShell[0], RevertToParent, CurrentTime);
    settle();
  }

  // For the clicks whose messages don't matter.
  static void click_and_settle(Widget w) {
    click(w);
    settle();
  }

  static void type_text(std::string_view text) { xdotool("type --delay 20 '" + std::string(text) + "'"); }

  static std::string get_string(int id) {
    std::string s;
    WDialogGetString(id, s);
    return s;
  }
  static int get_int(int id) {
    int n = 0;
    WDialogGetInteger(id, n);
    return n;
  }
  static float get_real(int id) {
    float r = 0;
    WDialogGetReal(id, r);
    return r;
  }
  static int get_check(int id) {
    int on = -1;
    WDialogGetCheckBox(id, on);
    return on;
  }
  static std::vector<int> values(const MessageRecord& m) { return {m.Value1, m.Value2, m.Value3, m.Value4}; }
};
using V = std::vector<int>;

TEST_F(DialogDisplay, MainFormHasItsFieldsWhereTheUnitsPutThem) {
  int w = 0, h = 0;
  ASSERT_TRUE(yyDialogPixelSize(kForm, w, h));
  EXPECT_EQ(std::pair(WInfoDialog(12), WInfoDialog(13)), std::pair(w, h));
  EXPECT_EQ(zelvy_win::state().WinInfo[0].Kind, 3);
  RcDialog rc;
  int status = 0;
  yyrcdialogget(kForm, rc, status);
  ASSERT_EQ(rc.fields.size(), 44u);
  const DialogFontMetrics& fm = yyDialogFontMetrics(0);
  for (const RcField& r : rc.fields) {
    SCOPED_TRACE(r.id);
    int x = 0, y = 0, w = 0, h = 0;
    yyDialogUnitsToPixels(fm, r.x, r.y, x, y);
    yyDialogUnitsToPixels(fm, r.width, r.height, w, h);
    if (r.type == 11) h = fm.controlHeight;  // a closed combo
    V got;
    for (int item = 1; item <= 6; ++item) got.push_back(winfodialogfield(r.id, item));
    EXPECT_EQ(got, (V{x, y, w, h, r.type, 1}));  // enabled
  }
  EXPECT_EQ(winfodialogfield(9999, 5), 0);
  EXPECT_EQ((V{WInfoDialog(3), WInfoDialog(10), WInfoDialog(11)}), (V{kForm, 4, 99}));
}

TEST_F(DialogDisplay, LabelsGroupsAndResourceValuesShow) {
  const std::pair<int, const char*> texts[] = {{1001, "Title:"},    {1028, "General Information"},
                                               {1041, "UB-Matrix Transformation:"},
                                               {1012, "Browse..."}, {1037, "0"},
                                               {1045, "1.0000"}};
  for (const auto& [id, text] : texts) EXPECT_EQ(get_string(id), text) << id;
  EXPECT_EQ(std::pair(get_check(1017), get_check(1024)), std::pair(1, 0));
  EXPECT_EQ(get_int(1037), 0);
  EXPECT_FLOAT_EQ(get_real(1045), 1.0f);
  EXPECT_EQ(std::pair(winfodialogfield(1014, 9), winfodialogfield(1030, 9)), std::pair(11, 3));  // options
  EXPECT_EQ(WInfoError(1), 0);

  // A fixed-width output comes back blank-padded.
  std::string fixed(10, ' ');
  WDialogGetString(1001, fixed);
  EXPECT_EQ(fixed, "Title:    ");
}

TEST_F(DialogDisplay, PutThenGetOfEveryKind) {
  WDialogPutString(1002, "Silicon at 300 K   ");
  EXPECT_EQ(get_string(1002), "Silicon at 300 K");
  int len = 0;
  WDialogGetStringLength(1002, len);
  EXPECT_EQ(len, 16);
  WDialogPutString(1001, "Name:");
  EXPECT_EQ(get_string(1001), "Name:");
  WDialogPutString(1009, "");
  EXPECT_EQ(get_string(1009), "");

  WDialogPutInteger(1037, 7);
  EXPECT_EQ(get_int(1037), 7);
  EXPECT_EQ(get_string(1037), "7");

  WDialogPutReal(1016, 0.7107f, "(F8.4)");
  EXPECT_FLOAT_EQ(get_real(1016), 0.7107f);
  EXPECT_EQ(get_string(1016), "0.7107");
  // A put without format returns to the default one.
  WDialogPutInteger(1016, 2);
  WDialogPutReal(1016, 1.5f);
  EXPECT_EQ(get_string(1016), "1.5000");

  // A number written as text keeps its value.
  WDialogPutString(1045, "2.25");
  EXPECT_FLOAT_EQ(get_real(1045), 2.25f);

  WDialogPutCheckBox(1024, 1);
  EXPECT_EQ(get_check(1024), 1);
  WDialogPutCheckBox(1024, 2);  // anything but 1 clears
  EXPECT_EQ(get_check(1024), 0);

  WDialogPutString(1014, "h, k, l");
  EXPECT_EQ(get_string(1014), "h, k, l");
  EXPECT_EQ(WInfoError(1), 0);
}

TEST_F(DialogDisplay, ComboOptions) {
  int option = 0;
  std::string text;
  WDialogGetMenu(1014, option, text);  // the resource selects nothing
  EXPECT_EQ(WInfoError(1), 1010);
  EXPECT_EQ(option, -999);
  WDialogPutOption(1014, 3);
  WDialogGetMenu(1014, option, text);
  EXPECT_EQ(option, 3);
  EXPECT_EQ(text, "Numor, h, k, l, Int, Sigma, Gamma, Nu, Phi (C5 - D23,Two lines/reflection, HKL_T=2)");
  WDialogPutOption(1030, 2);
  WDialogGetMenu(1030, option);
  EXPECT_EQ(option, 2);
  EXPECT_EQ(get_string(1030), "Type 2");
  WDialogPutOption(1030, 4);
  EXPECT_EQ(WInfoError(1), 1011);
  WDialogPutOption(1002, 1);
  EXPECT_EQ(WInfoError(1), 1006);

  const std::vector<std::string> kinds{"Twin A   ", "Twin B"};
  WDialogPutMenu(1030, kinds, 2, 2);
  EXPECT_EQ(winfodialogfield(1030, 9), 2);
  text.clear();  // unbounded; a text that arrives sized comes back padded
  WDialogGetMenu(1030, option, text);
  EXPECT_EQ(option, 2);
  EXPECT_EQ(text, "Twin B");
  WDialogPutMenu(1030, kinds, 2, 0, "free text");  // a drop-down takes any text
  EXPECT_EQ(get_string(1030), "free text");
  WDialogClearField(1030);
  EXPECT_EQ(winfodialogfield(1030, 9), 0);
  WDialogGetMenu(1030, option);
  EXPECT_EQ(WInfoError(1), 1010);
}

TEST_F(DialogDisplay, ErrorsUndefinedValuesAndRanges) {
  WDialogPutString(1037, "");
  EXPECT_EQ(get_int(1037), -999);
  EXPECT_EQ(WInfoError(1), 1010);
  WDialogClearField(1016);
  EXPECT_FLOAT_EQ(get_real(1016), -999.0f);
  EXPECT_EQ(WInfoError(1), 1010);

  WDialogPutInteger(1037, 5);
  WDialogPutInteger(1037, 25);  // the resource range is 0 to 24
  EXPECT_EQ(WInfoError(1), 1009);
  EXPECT_EQ(get_string(1037), "5");
  WDialogRangeInteger(1037, 3, 3);
  WDialogPutInteger(1037, 3);
  EXPECT_EQ(WInfoError(1), 0);
  WDialogPutInteger(1037, 4);
  EXPECT_EQ(WInfoError(1), 1009);
  WDialogRangeInteger(1037);
  WDialogPutInteger(1037, 1000000);
  EXPECT_EQ(WInfoError(1), 0);

  WDialogPutInteger(1002, 1);  // a string field isn't numeric
  EXPECT_EQ(WInfoError(1), 1006);
  WDialogPutString(4242, "x");
  EXPECT_EQ(WInfoError(1), 1006);
  get_check(1002);
  EXPECT_EQ(WInfoError(1), 1006);
  std::string s(6, 'x');
  WDialogGetString(1038, s);  // a grid has no text
  EXPECT_EQ(WInfoError(1), 1006);
  EXPECT_EQ(s, "      ");
}

TEST_F(DialogDisplay, FieldStates) {
  // {field, state set, state read}: a label treats read-only as disabled; 3 hides.
  const int cases[][3] = {{1002, 0, 0}, {1002, 2, 2}, {1001, 2, 0}, {1012, 3, 3}, {1012, 1, 1}, {1002, 1, 1}};
  for (const auto& c : cases) {
    WDialogFieldState(c[0], c[1]);
    EXPECT_EQ(winfodialogfield(c[0], 6), c[2]) << c[0] << " to " << c[1];
    EXPECT_EQ(XtIsManaged(field(c[0]).widget), c[2] != 3) << c[0] << " to " << c[1];
  }
}

TEST_F(DialogDisplay, FocusMovesAndCheckBoxFlipsReportFieldChanged) {
  focus_window();
  click_and_settle(field(1002).widget);  // first focus of the dialog may report from the field focused at show
  click(field(1006).widget);
  MessageRecord m;
  ASSERT_EQ(next_message(m), FieldChanged);
  EXPECT_EQ(values(m), (V{1002, 1006, 0, -1}));
  EXPECT_EQ(m.Win, kForm);
  settle();

  click(field(1024).widget);
  ASSERT_EQ(next_message(m), FieldChanged);  // focus first
  EXPECT_EQ(std::pair(m.Value1, m.Value2), std::pair(1006, 1024));
  ASSERT_EQ(next_message(m), FieldChanged);  // then the flip
  EXPECT_EQ(values(m), (V{1024, 1024, 1, -1}));
  EXPECT_EQ(get_check(1024), 1);

  // Program stores send nothing.
  WDialogPutString(1002, "quiet");
  WDialogPutCheckBox(1024, 0);
  EXPECT_EQ(next_message(m, 300), 0);
}

TEST_F(DialogDisplay, SpinnerStepsInsideItsRange) {
  FieldRecord& spin = field(1037);
  ASSERT_EQ(spin.parts.size(), 2u);  // up, down
  WDialogPutInteger(1037, 23);
  focus_window();
  click(spin.parts[0]);
  MessageRecord m;
  int type = 0;
  while ((type = next_message(m)) == FieldChanged && m.Value3 == 0) {}  // focus moves come first
  ASSERT_EQ(type, FieldChanged);
  EXPECT_EQ((V{m.Value1, m.Value2, m.Value3}), (V{1037, 1037, 1}));
  click_and_settle(spin.parts[0]);
  EXPECT_EQ(get_int(1037), 24);  // the top of the range holds
  click_and_settle(spin.parts[1]);
  EXPECT_EQ(get_int(1037), 23);
}

TEST_F(DialogDisplay, EditsAreReportedWhenAsked) {
  int err = -1;
  yydialogfieldoptions_(1002, 3, 1, err);
  EXPECT_EQ(err, 0);
  yydialogfieldoptions_(1001, 4, 1, err);  // a label has no empty-number rule
  EXPECT_EQ(err, 1006);
  focus_window();
  click_and_settle(field(1002).widget);
  type_text("a");
  MessageRecord m;
  ASSERT_EQ(next_message(m), FieldChanged);
  EXPECT_EQ(values(m), (V{1002, 1002, 1, -1}));
  EXPECT_EQ(m.Win, kForm);
  EXPECT_EQ(get_string(1002), "a");
  // A narrow field scrolls and takes all that is typed.
  click_and_settle(field(1034).widget);
  type_text("D9-ZZZZZZZZZZZZZZZZZZZZZZZZZZZZZZ");
  settle();
  EXPECT_EQ(get_string(1034), "D9-ZZZZZZZZZZZZZZZZZZZZZZZZZZZZZZ");
  WDialogPutString(1034, std::string(40, 'Z'));
  EXPECT_EQ(get_string(1034).size(), 40u);
  // Without the option typing is silent.
  click_and_settle(field(1008).widget);
  type_text("P");
  EXPECT_EQ(next_message(m, 300), 0);
}

TEST_F(DialogDisplay, TypedNumbersAreFilteredAndValidated) {
  focus_window();
  click_and_settle(field(1045).widget);
  WDialogPutString(1045, "");
  type_text("1e5x");  // x is refused, e becomes E
  settle();
  EXPECT_EQ(get_string(1045), "1E5");
  EXPECT_FLOAT_EQ(get_real(1045), 100000.0f);

  // Out of range while typing: the dialog holds its messages until it's corrected.
  WDialogPutInteger(1037, 5);
  click_and_settle(field(1037).widget);
  xdotool("key End");
  type_text("99");
  settle();
  EXPECT_TRUE(zelvy_dialog::state().bInvalidField);
  click_and_settle(field(1024).widget);  // the click is taken back, nothing is reported
  EXPECT_EQ(get_check(1024), 0);
  // Escape takes back the last good value.
  focus_window();
  click_and_settle(field(1037).widget);
  xdotool("key Escape");
  settle();
  EXPECT_FALSE(zelvy_dialog::state().bInvalidField);
  EXPECT_EQ(get_string(1037), "5");
}

TEST_F(DialogDisplay, FreeStandingDialogLifecycle) {
  WDialogLoad(kAbout);
  EXPECT_EQ(WInfoDialog(3), kAbout);
  EXPECT_EQ(zelvy_dialog::state().bdlgloaded, 0);
  EXPECT_EQ(get_string(1047), "Version: Feb-2007");
  EXPECT_EQ(get_string(1001), "GUI Ombrel Program");
  WDialogShow(-1, -1, 0, 2);
  settle();
  EXPECT_EQ(WInfoDialog(10), 1);
  EXPECT_GT(WInfoDialog(12), 0);
  WDialogLoad(kAbout);  // only selects
  EXPECT_EQ(zelvy_dialog::state().bdlgloaded, -1);
  EXPECT_EQ(WInfoDialog(11), 98);

  // The other dialog's 1001 is a different field.
  WDialogSelect(kForm);
  EXPECT_EQ(get_string(1001), "Title:");
  WDialogHide();
  EXPECT_EQ(WInfoError(1), 1047);  // combined with the window
  WDialogSelect(kAbout);

  // OK sends PushButton 1.
  click(field(1).widget);
  MessageRecord m;
  ASSERT_EQ(next_message(m), PushButton);
  EXPECT_EQ(std::pair(m.Value1, m.Win), std::pair(1, kAbout));
  WDialogHide();
  WDialogUnload();
  EXPECT_EQ(std::pair(WInfoDialog(3), WInfoDialog(11)), std::pair(0, 99));
  WDialogHide();
  EXPECT_EQ(WInfoError(1), 1005);
  WDialogSelect(kAbout);
  EXPECT_EQ(WInfoError(1), 1008);
  WDialogLoad(4711);
  EXPECT_EQ(WInfoError(1), 1007);
}

TEST_F(DialogDisplay, AHundredDialogsAndNoMoreAndTheWindowTakesItsOwnAlong) {
  for (int i = 1; i <= 99; ++i) {
    WDialogLoad(kAbout, 5000 + i);
    ASSERT_EQ(WInfoError(1), 0) << i;
  }
  EXPECT_EQ(WInfoDialog(11), 0);
  WDialogLoad(kAbout, 6000);
  EXPECT_EQ(WInfoError(1), 1087);
  for (int i = 1; i <= 99; ++i) {
    WDialogSelect(5000 + i);
    WDialogUnload();
  }
  EXPECT_EQ(WInfoDialog(11), 99);

  // Closing the window takes its dialog along.
  WDialogSelect(kForm);
  ASSERT_EQ(WInfoDialog(3), kForm);
  WindowClose();
  settle();
  EXPECT_EQ(std::pair(WInfoDialog(3), WInfoDialog(11)), std::pair(0, 100));
  WDialogPutString(1002, "x");
  EXPECT_EQ(WInfoError(1), 1005);
  int w = 0, h = 0;
  EXPECT_FALSE(yyDialogPixelSize(4711, w, h));
}

void press_ok_later(XtPointer, XtIntervalId*) {
  auto& d = zelvy_dialog::state().wDialogInfo[static_cast<std::size_t>(yyDialogFind(kAbout))];
  for (FieldRecord& f : d.fields)
    if (f.identifier == 1) click(f.widget);
}

// What a window manager does when the user closes the dialog's window.
void close_box_later(XtPointer, XtIntervalId*) {
  const DialogRecord& d = zelvy_dialog::state().wDialogInfo[static_cast<std::size_t>(yyDialogFind(kAbout))];
  XEvent ev{};
  ev.xclient.type = ClientMessage;
  ev.xclient.window = XtWindow(d.shell);
  ev.xclient.message_type = XInternAtom(xdisplay(), "WM_PROTOCOLS", False);
  ev.xclient.format = 32;
  ev.xclient.data.l[0] = static_cast<long>(XInternAtom(xdisplay(), "WM_DELETE_WINDOW", False));
  ev.xclient.data.l[1] = CurrentTime;
  XSendEvent(xdisplay(), ev.xclient.window, False, NoEventMask, &ev);
  XFlush(xdisplay());
}

TEST_F(DialogDisplay, ModalShowWaitsForAButtonOrTheCloseBox) {
  WDialogLoad(kAbout);
  XtAppAddTimeOut(zelvy_x::state().ixContext, 300, close_box_later, nullptr);
  WDialogShow(-1, -1, 0, 1);  // the close box answers as button 2, which the dialog doesn't have
  EXPECT_EQ(std::pair(WInfoDialog(1), WInfoDialog(2)), std::pair(2, 1));  // the field with the focus: OK
  WDialogUnload();
  WDialogLoad(kAbout);
  XtAppAddTimeOut(zelvy_x::state().ixContext, 300, press_ok_later, nullptr);
  WDialogShow(-1, -1, 0, 1);
  EXPECT_EQ(WInfoError(1), 0);
  EXPECT_EQ(std::pair(WInfoDialog(1), WInfoDialog(5)), std::pair(1, kAbout));
  EXPECT_EQ(zelvy_dialog::state().wDialogInfo[static_cast<std::size_t>(zelvy_dialog::state().iDlgCur)].shownMode, -1);
  WDialogUnload();
  // The form belongs to the window: no modal show, and it returns at once.
  WDialogSelect(kForm);
  WDialogShow(-1, -1, 0, 1);
  EXPECT_EQ(WInfoError(1), 1047);
}

long resident_kb() {
  std::ifstream in("/proc/self/status");
  std::string line;
  while (std::getline(in, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::atol(line.c_str() + 6);
  return 0;
}

TEST_F(DialogDisplay, LoadAndUnloadWithoutGrowth) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "freed memory stays in quarantine; the leak checker watches this build";
#endif
  // Events are taken between loads, as the application's loop would.
  auto cycle = [](int n) {
    for (int i = 0; i < n; ++i) {
      WDialogLoad(kForm, 7000);
      WDialogUnload();
      settle();
    }
  };
  cycle(300);  // Motif's and the font library's caches fill first
  settle();
  const long before = resident_kb();
  cycle(1000);
  settle();
  const long growth = resident_kb() - before;
  EXPECT_LT(growth, 1024) << "kB after 1000 loads of the main form";
}

TEST_F(DialogDisplay, Screenshot) {
  WDialogPutString(1004, "si");
  WDialogPutString(1002, "Silicon, room temperature");
  WDialogPutString(1006, "5.4309 5.4309 5.4309 90.0 90.0 90.0");
  settle();
  const std::string dir = ZELV_BINARY_DIR;
  EXPECT_EQ(std::system(("import -window root " + dir + "/dialog_main_form.png").c_str()), 0);
  WDialogLoad(kAbout);
  WDialogShow(-1, -1, 0, 2);
  settle();
  EXPECT_EQ(std::system(("import -window root " + dir + "/dialog_about.png").c_str()), 0);
  WDialogUnload();
}

}  // namespace
