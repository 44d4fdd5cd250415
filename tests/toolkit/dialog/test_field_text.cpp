// Text fields from the user's hand on a real X server: keys that must not
// reach the text, long texts, other alphabets, decimal commas, and an idle
// form that does not wake up.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Xlib.h>
#include <Xm/Text.h>
#include <Xm/Xm.h>

#include <poll.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "app/resources/gombrel_resources.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"
#include "toolkit/base/zelvy_data.h"

#include "tests/toolkit/dialog/form_fixture.h"

namespace {


constexpr int kTitle = 1002, kMatrix = 1019, kUbMatrix = 1042, kWavelength = 1016, kDomains = 1037;

class FieldText : public MainFormTest {
 protected:

  static void xdotool(const std::string& args) {
    XSync(xdisplay(), False);
    ASSERT_EQ(std::system(("xdotool " + args).c_str()), 0) << args;
    settle();
  }

  static Widget text_widget(int id) {
    auto& d = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur];
    return d.fields[static_cast<std::size_t>(yyDialogFindField(id, zelvy_dialog::state().iDlgCur))].valueWidget;
  }

  // Clicks into the field, then puts the insertion at its end or selects it all.
  static void focus(int id, bool selectAll) {
    Widget w = text_widget(id);
    int x = 0, y = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), 4, 4, &x, &y, &child);
    xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
    const XmTextPosition last = XmTextGetLastPosition(w);
    if (selectAll) XmTextSetSelection(w, 0, last, CurrentTime);
    else {
      XmTextClearSelection(w, CurrentTime);
      XmTextSetInsertionPosition(w, last);
    }
    settle();
  }

  // xdotool reads the text in the character type of its environment, and
  // maps a spare key for a character the keyboard lacks only while it types:
  // the events are taken while it runs.
  static void type(const std::string& text) {
    XSync(xdisplay(), False);
    FILE* p = popen(("LC_ALL=C.UTF-8 xdotool type --delay 60 '" + text + "'; echo done").c_str(), "r");
    ASSERT_NE(p, nullptr);
    pollfd pfd{fileno(p), POLLIN, 0};
    while (poll(&pfd, 1, 5) == 0) settle();
    EXPECT_EQ(pclose(p), 0);
    settle();
  }

  static std::string get(int id) {
    std::string s;
    WDialogGetString(id, s);
    return s;
  }
  static std::string shown(int id) {
    char* s = XmTextGetString(text_widget(id));
    std::string out = s;
    XtFree(s);
    return out;
  }
};

TEST_F(FieldText, ControlKeysNeitherEnterNorDestroyText) {
  WDialogPutString(kTitle, "Silicon at 300 K");
  focus(kTitle, true);
  xdotool("key ctrl+c ctrl+x ctrl+v ctrl+z ctrl+a ctrl+b ctrl+k");
  EXPECT_EQ(get(kTitle), "Silicon at 300 K");  // the selection survives every one of them
  focus(kTitle, false);
  xdotool("key ctrl+c ctrl+e ctrl+w");
  type("!");
  EXPECT_EQ(get(kTitle), "Silicon at 300 K!");

  // Pasted text loses its control characters, keeps the rest.
  EXPECT_EQ(yyDialogStrFilterInsert("a\tb\x01" "c\x7f\xc2\x85" "d", 0, false, -1), "abcd");
  EXPECT_EQ(yyDialogStrFilterInsert("one\ntwo", 0, true, -1), "one\ntwo");
  EXPECT_EQ(yyDialogStrFilterInsert("\x03", 0, false, -1), "");
}

TEST_F(FieldText, FieldsScrollAndTakeTextUpToTheirLength) {
  std::string hundred;
  for (int i = 0; i < 100; ++i) hundred += static_cast<char>('0' + i % 10);
  focus(kMatrix, true);
  type(hundred);
  EXPECT_EQ(get(kMatrix), hundred);

  // A loaded text wider than its box still takes more.
  const std::string ub = "0.1503 -0.0497 0.0000 0.0868 0.0860 0.0000 0.0000 0.0000 0.1384";
  WDialogPutString(kUbMatrix, ub);
  focus(kUbMatrix, false);
  type(" 9");
  EXPECT_EQ(get(kUbMatrix), ub + " 9");

  // Without a length of its own a field takes 256 characters, whole ones.
  WDialogPutString(kTitle, std::string(250, 'x'));
  focus(kTitle, false);
  type("abcdefghij");
  EXPECT_EQ(get(kTitle), std::string(250, 'x') + "abcdef");
  EXPECT_EQ(yyDialogStrFilterInsert("\xc3\xa9t\xc3\xa9", 0, false, 2), "\xc3\xa9t");
}

TEST_F(FieldText, OtherAlphabetsShowWholeAndComeBackAsTheyCame) {
  const std::string utf8 = "Gr\xc3\xb6\xc3\x9f" "e \xc3\xa9t\xc3\xa9 \xc3\x85 \xce\xb1-\xce\xb2";  // 15 characters
  WDialogPutString(kTitle, utf8);
  EXPECT_EQ(XmTextGetLastPosition(text_widget(kTitle)), 15);
  EXPECT_EQ(get(kTitle), utf8);
  int length = 0;
  WDialogGetStringLength(kTitle, length);
  EXPECT_EQ(length, 15);
  std::string fixed(3, ' ');  // room for "Gr" and half the o with umlaut
  WDialogGetString(kTitle, fixed);
  EXPECT_EQ(fixed, "Gr ");

  const std::string latin1 = "Gr\xf6\xdf" "e \xe9t\xe9 \xc5";
  WDialogPutString(kTitle, latin1);
  EXPECT_EQ(shown(kTitle), "Gr\xc3\xb6\xc3\x9f" "e \xc3\xa9t\xc3\xa9 \xc3\x85");
  EXPECT_EQ(get(kTitle), latin1);
  focus(kTitle, false);
  type("!");
  EXPECT_EQ(get(kTitle), latin1 + "!");  // still in its own encoding

  WDialogPutString(kTitle, "T");
  focus(kTitle, false);
  type("\xc3\xa9\xce\xb1");
  EXPECT_EQ(get(kTitle), "T\xc3\xa9\xce\xb1");
}

TEST_F(FieldText, TypedNumbersAreNeverSilentlyChanged) {
  focus(kWavelength, true);
  type("1,5");
  EXPECT_EQ(shown(kWavelength), "1.5");
  float r = 0;
  WDialogGetReal(kWavelength, r);
  EXPECT_FLOAT_EQ(r, 1.5f);

  // An integer keeps the mark and refuses the number.
  focus(kDomains, true);
  type("1,5");
  EXPECT_EQ(shown(kDomains), "1,5");
  int n = 0;
  WDialogGetInteger(kDomains, n);
  EXPECT_NE(WInfoError(1), 0);
  xdotool("key Escape");
}

TEST_F(FieldText, AnUnfocusedFormDoesNotWakeUp) {
  focus(kTitle, false);
  XSetInputFocus(xdisplay(), None, RevertToNone, CurrentTime);
  settle();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  settle();
  int wakeups = 0;
  for (int i = 0; i < 15; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    if (XtAppPending(zelvy_x::state().ixContext) & XtIMTimer) {
      ++wakeups;
      XtAppProcessEvent(zelvy_x::state().ixContext, XtIMTimer);
    }
  }
  EXPECT_EQ(wakeups, 0);
  XSetInputFocus(xdisplay(), PointerRoot, RevertToPointerRoot, CurrentTime);
}

}  // namespace

namespace {

TEST_F(FieldText, ComboListsFitTheirEntriesInTheDialogFont) {
  auto& d = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur];
  const FieldRecord& twin = d.fields[static_cast<std::size_t>(yyDialogFindField(1030, zelvy_dialog::state().iDlgCur))];
  const FieldRecord& format = d.fields[static_cast<std::size_t>(yyDialogFindField(1014, zelvy_dialog::state().iDlgCur))];
  int rows = 0;
  XtVaGetValues(XtNameToWidget(twin.widget, "*ComboList"), XmNvisibleItemCount, &rows, nullptr);
  EXPECT_EQ(rows, 3);
  XmRenderTable rt = nullptr;
  XtVaGetValues(XtNameToWidget(format.widget, "*ComboList"), XmNrenderTable, &rt, nullptr);
  EXPECT_NE(rt, nullptr);
}

}  // namespace
