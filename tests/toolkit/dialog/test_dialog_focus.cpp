// The keyboard in free-standing dialogs, typed through the X server: Alt
// with a letter, the default mark and Return, a number that keeps the focus
// until it holds or Escape takes it back, and the tab order through a page.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Xlib.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/toolkit/dialog/generated/anchored_ids.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

const zelv_rc::ResourceTables& anchored_resource_tables();

namespace {

namespace ids = anchored_ids;
constexpr int kName = 51, kCount = 52, kSecond = 54, kApply = 56, kAgain = 57, kOk = 1;

class DialogFocus : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(anchored_resource_tables());
    yyDialogAttach();
    WInitialise();
    yyDialogInit();
  }
  void SetUp() override {
    WindowOpen(0, 0, 0, 300, 200);
    settle();
  }
  void TearDown() override {
    for (int id : {ids::dialog::keyed, ids::dialog::tab_between, ids::dialog::page_one})
      if (yyDialogFind(id) >= 0) {
        WDialogSelect(id);
        WDialogUnload();
      }
    WindowClose();
    zelvy_data::data().ierr = 0;
  }

  // Lets the server, the widgets and their timers catch up; keeps what the
  // dialogs sent.
  static std::vector<MessageRecord> settle(int wanted = 0) {
    std::vector<MessageRecord> kept;
    for (int i = 0; i < 30; ++i) {
      XSync(xdisplay(), False);
      int type = 0;
      MessageRecord m;
      do {
        WMessagePeek(type, m);
        if (type == wanted && wanted != 0) kept.push_back(m);
      } while (type != -1);
      usleep(5000);
    }
    return kept;
  }
  static void key(const std::string& keys) { ASSERT_EQ(std::system(("xdotool key " + keys).c_str()), 0) << keys; }

  static DialogRecord& dialog(int id) { return zelvy_dialog::state().wDialogInfo[yyDialogFind(id)]; }
  static FieldRecord& field(int dialogId, int id) {
    return dialog(dialogId).fields[static_cast<std::size_t>(yyDialogFindField(id, yyDialogFind(dialogId)))];
  }
  // The field whose widget has the keyboard in the dialog's shell.
  static int focused(int dialogId) {
    FieldRecord* f = nullptr;
    Widget w = XmGetFocusWidget(dialog(dialogId).widget);
    return w && yyDialogFieldInfo(w, f) && f ? f->identifier : 0;
  }
  static void show_keyed() {
    WDialogLoad(ids::dialog::keyed);
    WDialogShow(20, 20, kName, 2);
    settle();
    ASSERT_EQ(focused(ids::dialog::keyed), kName) << "the dialog didn't get the keyboard";
  }
  static std::string text(int id) {
    std::string t;
    WDialogGetString(id, t);
    return t;
  }
};

TEST_F(DialogFocus, AltWithALetterFindsItsFieldAndPressesOnlyAnUnsharedButton) {
  show_keyed();
  yyDialogFocus(field(ids::dialog::keyed, kCount), -1);
  settle();
  key("alt+n");  // a label's key: the field after it
  EXPECT_TRUE(settle(PushButton).empty());
  EXPECT_EQ(focused(ids::dialog::keyed), kName);
  key("alt+s");
  settle();
  EXPECT_EQ(focused(ids::dialog::keyed), kSecond);
  EXPECT_TRUE(XmToggleButtonGetState(field(ids::dialog::keyed, kSecond).widget));
  // Two buttons share A: each press goes on to the next, neither is pressed.
  key("alt+a");
  EXPECT_TRUE(settle(PushButton).empty());
  EXPECT_EQ(focused(ids::dialog::keyed), kApply);
  key("alt+a");
  EXPECT_TRUE(settle(PushButton).empty());
  EXPECT_EQ(focused(ids::dialog::keyed), kAgain);
}

TEST_F(DialogFocus, TheDefaultMarkFollowsAFocusedButtonAndReturnPressesThatButton) {
  show_keyed();
  DialogRecord& d = dialog(ids::dialog::keyed);
  ASSERT_NE(d.defaultFrame, nullptr);
  const int inset = zelvy_x::state().bFlatStyle ? 1 : 2;
  auto marked = [&] {
    Position fx = 0, bx = 0, fy = 0, by = 0;
    XtVaGetValues(d.defaultFrame, XtNx, &fx, XtNy, &fy, nullptr);
    for (const FieldRecord& f : d.fields) {
      XtVaGetValues(f.widget, XtNx, &bx, XtNy, &by, nullptr);
      if (f.type == zelvy_dialog::kButton && bx - fx == inset && by - fy == inset) return f.identifier;
    }
    return 0;
  };
  EXPECT_TRUE(XtIsManaged(d.defaultFrame));
  EXPECT_EQ(marked(), kOk);
  yyDialogFocus(field(ids::dialog::keyed, kApply), -1);
  settle();
  EXPECT_EQ(marked(), kApply);
  key("Return");
  auto sent = settle(PushButton);
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0].Value1, kApply);
  // A text field gives the mark back to the declared default.
  yyDialogFocus(field(ids::dialog::keyed, kName), -1);
  settle();
  EXPECT_EQ(marked(), kOk);
  key("Return");
  sent = settle(PushButton);
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(std::pair(sent[0].Value1, sent[0].Value2), std::pair(kOk, kName));
}

TEST_F(DialogFocus, ANumberThatDoesNotHoldKeepsTheFocusUntilEscapeTakesItBack) {
  show_keyed();
  yyDialogFocus(field(ids::dialog::keyed, kCount), -1);
  settle();
  key("9 9");  // outside 0..10
  settle();
  EXPECT_TRUE(zelvy_dialog::state().bInvalidField);
  // Neither a text field nor OK may take the focus from it.
  key("shift+Tab");
  settle();
  EXPECT_EQ(focused(ids::dialog::keyed), kCount);
  yyDialogFocus(field(ids::dialog::keyed, kOk), -1);
  settle();
  EXPECT_EQ(focused(ids::dialog::keyed), kCount);
  key("Return");
  EXPECT_TRUE(settle(PushButton).empty());
  key("Escape");
  const auto sent = settle(PushButton);
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0].Value1, 2);
  EXPECT_EQ(text(kCount), "5");
  EXPECT_FALSE(zelvy_dialog::state().bInvalidField);
}

TEST_F(DialogFocus, EscapeAnswersCancelAndLeavesTheTextOfAStringField) {
  show_keyed();
  key("a b c");
  settle();
  key("Escape");
  const auto sent = settle(PushButton);
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0].Value1, 2);
  EXPECT_EQ(text(kName), "abc");
}

TEST_F(DialogFocus, TabWalksThePageWhereItsTabFieldStands) {
  WDialogLoad(ids::dialog::tab_between);
  WDialogShow(20, 20, 60, 2);
  settle();
  FieldRecord& tab = field(ids::dialog::tab_between, 61);
  int error = 0;
  yyDialogLoad(ids::dialog::page_one, ids::dialog::page_one, true, 1, tab.valueWidget, 2, error);
  ASSERT_EQ(error, 0);
  yyTabWidgetAddDataX(tab, dialog(ids::dialog::page_one).widget, ids::dialog::page_one, "First");
  const int outer = yyDialogFind(ids::dialog::tab_between), page = yyDialogFind(ids::dialog::page_one);
  using Stop = std::pair<int, int>;
  auto walk = [](int direction, Stop from, int steps) {
    std::vector<Stop> seen;
    for (int i = 0; i < steps; ++i) {
      EXPECT_TRUE(yyDialogFindNextPrev(direction, from.first, from.second));
      seen.push_back(from);
    }
    return seen;
  };
  // before, the tab, the page's field, after, and round again.
  EXPECT_EQ(walk(1, {outer, 0}, 4), (std::vector<Stop>{{outer, 1}, {page, 0}, {outer, 2}, {outer, 0}}));
  EXPECT_EQ(walk(-1, {outer, 2}, 4), (std::vector<Stop>{{page, 0}, {outer, 1}, {outer, 0}, {outer, 2}}));
  // From the page's last field the keyboard goes on after the tab field.
  WDialogSelect(ids::dialog::tab_between);
  yyDialogFocus(dialog(ids::dialog::page_one).fields[0], -1);
  settle();
  key("Tab");
  settle();
  EXPECT_EQ(focused(ids::dialog::tab_between), 62);
}

}  // namespace
