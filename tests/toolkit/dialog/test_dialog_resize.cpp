// Dialogs that follow their size, on a display: the free-standing dialog
// sized by the program and by its shell, the dialog a window carries, a
// fixed dialog cut smaller; and focus, values and clearing by program.
#include <gtest/gtest.h>

#include <X11/Intrinsic.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include <array>
#include <map>
#include <string>

#include "tests/toolkit/dialog/generated/anchored_ids.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

const zelv_rc::ResourceTables& anchored_resource_tables();

namespace {

using Rect = std::array<int, 4>;  // x, y, width, height as the field reports them

class AnchoredForms : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(anchored_resource_tables());
    yyDialogAttach();
    WInitialise();
    yyDialogInit();
  }
  void TearDown() override {
    if (zelvy_data::data().icurdialog != 0 && WInfoDialog(10) == 1) WDialogUnload();
    yywindowdialogclose(0);
    WindowClose();
    zelvy_data::data().ierr = 0;
  }

  static void settle() {
    int type = 0;
    MessageRecord m;
    for (int i = 0; i < 400; ++i) {
      XSync(xdisplay(), False);
      WMessagePeek(type, m);
      if (type == -1 && !XPending(xdisplay())) break;
    }
  }

  static Rect rect(int id) {
    return {winfodialogfield(id, 1), winfodialogfield(id, 2), winfodialogfield(id, 3), winfodialogfield(id, 4)};
  }
  static std::map<int, Rect> rects(std::initializer_list<int> ids) {
    std::map<int, Rect> out;
    for (int id : ids) out[id] = rect(id);
    return out;
  }
  static DialogRecord& current() { return zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur]; }

  // Opens the free-standing anchored dialog, shown.
  static void show_anchored() {
    WindowOpen(0, 0, 0, 300, 200);
    WDialogLoad(anchored_ids::dialog::anchored);
    WDialogShow();
    settle();
  }
};

// How a field of the anchored form follows a change of dw, dh: which of its
// edges go with the width (left, right) and with the height (top, bottom).
struct Follows {
  int id;
  bool left, right, top, bottom;
};
constexpr Follows kAnchoredRules[] = {
    {10, false, true, false, true},  // the anchor stretches
    {11, false, true, false, true},  // the frame around it grows with it
    {12, true, true, false, false},  // beside it: moves across
    {13, false, false, true, true},  // below it: moves down
    {14, true, true, true, true},    // beside and below: moves both ways
    {15, false, false, true, true},  // a line below keeps its thickness
    {16, true, true, false, false},
};

Rect expected(const Rect& r, const Follows& f, int dw, int dh) {
  const int left = r[0] + (f.left ? dw : 0), right = r[0] + r[2] + (f.right ? dw : 0);
  const int top = r[1] + (f.top ? dh : 0), bottom = r[1] + r[3] + (f.bottom ? dh : 0);
  return {left, top, right - left, bottom - top};
}

void expect_layout(const std::map<int, Rect>& before, int dw, int dh, const char* what) {
  for (const Follows& f : kAnchoredRules) {
    const Rect now = {winfodialogfield(f.id, 1), winfodialogfield(f.id, 2), winfodialogfield(f.id, 3),
                      winfodialogfield(f.id, 4)};
    EXPECT_EQ(now, expected(before.at(f.id), f, dw, dh)) << what << ", field " << f.id;
  }
}

TEST_F(AnchoredForms, ProgramSizingMovesAndStretchesByTheAnchorRulesBothWays) {
  show_anchored();
  const DialogRecord& d = current();
  const int w = d.width, h = d.height;
  const auto before = rects({10, 11, 12, 13, 14, 15, 16});
  int err = 0;
  yydialogsize_(w + 40, h + 30, 1, err);
  settle();
  ASSERT_EQ(err, 0);
  expect_layout(before, 40, 30, "larger");
  EXPECT_EQ(WInfoDialog(12), w + 40);
  EXPECT_EQ(WInfoDialog(13), h + 30);
  // Back down to the size it was made for: everything where it began.
  yydialogsize_(w, h, 1, err);
  settle();
  expect_layout(before, 0, 0, "back");
  // Below that size the dialog is cut, its fields keep the first layout.
  yydialogsize_(w - 50, h - 40, 1, err);
  settle();
  expect_layout(before, 0, 0, "smaller than made");
  yydialogsize_(w + 7, 0, 1, err);  // a side below 1 keeps its size
  settle();
  expect_layout(before, 7, 0, "wider only");
}

TEST_F(AnchoredForms, AResizedShellResizesTheFormOnceToItsLastSize) {
  show_anchored();
  DialogRecord& d = current();
  ASSERT_NE(d.shell, nullptr);
  const int w = d.width, h = d.height;
  const auto before = rects({10, 11, 12, 13, 14, 15, 16});
  // What a window manager does: several sizes in a row, the last one counts.
  XResizeWindow(xdisplay(), XtWindow(d.shell), static_cast<unsigned>(w + 5), static_cast<unsigned>(h + 5));
  XResizeWindow(xdisplay(), XtWindow(d.shell), static_cast<unsigned>(w + 60), static_cast<unsigned>(h + 25));
  settle();
  expect_layout(before, 60, 25, "shell");
  EXPECT_EQ(d.width, w + 60);
  EXPECT_EQ(d.height, h + 25);
}

TEST_F(AnchoredForms, AWindowCarryingAResizableFormResizesItsFields) {
  WindowOpen(0, 0, 0, {}, {}, {}, {}, anchored_ids::dialog::carried);
  WDialogSelect(anchored_ids::dialog::carried);
  settle();
  ASSERT_EQ(WInfoDialog(14), 1);
  const Rect path = rect(20), browse = rect(21), hint = rect(22);
  auto& win = zelvy_win::state();
  const WindowRecord& r = win.WinInfo[0];
  const int grow = 80;
  XResizeWindow(xdisplay(), win.wShell[0], static_cast<unsigned>(r.FrameWidth + grow),
                static_cast<unsigned>(r.FrameHeight));
  settle();
  EXPECT_EQ(rect(20), (Rect{path[0], path[1], path[2] + grow, path[3]}));  // the anchor stretches
  EXPECT_EQ(rect(21), (Rect{browse[0] + grow, browse[1], browse[2], browse[3]}));
  EXPECT_EQ(rect(22), hint);  // below the anchor: the height didn't change
}

TEST_F(AnchoredForms, AFixedDialogCutSmallerPutsAwayFieldsAndGivesThemBack) {
  WindowOpen(0, 0, 0, 300, 200);
  WDialogLoad(anchored_ids::dialog::fixed);
  WDialogShow();
  settle();
  const int w = current().width, h = current().height;
  const Rect far = rect(31);
  int err = 0;
  yydialogsize_(far[0] - 1, h, 1, err);
  settle();
  EXPECT_EQ(winfodialogfield(31, 6), 3) << "a field the cut leaves outside is hidden";
  EXPECT_EQ(winfodialogfield(30, 6), 1);
  WDialogFieldState(31, 0);  // asked for while away: waits
  EXPECT_EQ(winfodialogfield(31, 6), 3);
  yydialogsize_(w, h, 1, err);
  settle();
  EXPECT_EQ(winfodialogfield(31, 6), 0) << "back with the state last asked for";
  EXPECT_EQ(WInfoDialog(14), 0);
}

TEST_F(AnchoredForms, SetFieldMovesTheFocusAndPlacesTheCursor) {
  WindowOpen(0, 0, 0, 300, 200);
  WDialogLoad(anchored_ids::dialog::fixed);
  WDialogShow();
  settle();
  WDialogPutString(30, "crystal");
  WDialogSetField(30);
  settle();
  Widget name = current().fields[static_cast<std::size_t>(yyDialogFindField(30, zelvy_dialog::state().iDlgCur))].valueWidget;
  XmTextPosition left = 0, right = 0;
  ASSERT_TRUE(XmTextGetSelectionPosition(name, &left, &right)) << "absent position: all selected";
  EXPECT_EQ(std::pair(left, right), std::pair(XmTextPosition{0}, XmTextPosition{7}));
  WDialogSetField(30, 3);
  settle();
  EXPECT_EQ(XmTextGetInsertionPosition(name), 2) << "positions count from 1";
  EXPECT_FALSE(XmTextGetSelectionPosition(name, &left, &right));
  WDialogSetField(99);
  EXPECT_EQ(zelvy_data::data().ierr, 1006);
}

TEST_F(AnchoredForms, ValuesGoThroughTheirRulesAndReportUnderThePublicName) {
  WindowOpen(0, 0, 0, 300, 200);
  WDialogLoad(anchored_ids::dialog::fixed);
  int value = 0;
  WDialogGetInteger(32, value);
  EXPECT_EQ(value, 5);
  WDialogPutInteger(32, 11);  // outside 0..10
  EXPECT_EQ(zelvy_data::data().ierr, 1009);
  WDialogGetInteger(32, value);
  EXPECT_EQ(value, 5) << "an out-of-range put leaves the field";
  zelvy_data::data().ierr = 0;
  WDialogRangeInteger(32, {}, 20);
  WDialogPutInteger(32, 11);
  EXPECT_EQ(zelvy_data::data().ierr, 0);
  // A put with a format keeps it for the field; one without goes back to the default.
  std::string format;
  int err = 0;
  WDialogPutReal(32, 2.5f, "(F8.3)");
  yydialoggetformat_(32, format, err);
  EXPECT_EQ(format, "(F8.3)");
  WDialogPutInteger(32, 3);
  yydialoggetformat_(32, format, err);
  EXPECT_EQ(format, "");
  yydialoggetformat_(36, format, err);
  EXPECT_EQ(err, 1006) << "a label has no number format";
  WDialogRangeInteger(32);  // no bounds: no range
  WDialogPutInteger(32, -400000);
  WDialogGetInteger(32, value);
  EXPECT_EQ(value, -400000);

  WDialogPutRadioButton(34);
  int position = 0, state = 0;
  WDialogGetRadioButton(33, position);
  EXPECT_EQ(position, 2);
  WDialogClearField(33);  // clears the whole group
  WDialogGetRadioButton(34, position);
  EXPECT_EQ(position, zelvy_data::data().iundef);
  EXPECT_EQ(zelvy_data::data().ierr, 1010);

  zelvy_data::data().ierr = 0;
  WDialogGetCheckBox(35, state);
  EXPECT_EQ(state, 1);
  WDialogPutCheckBox(35, 2);  // only 1 sets it
  WDialogGetCheckBox(35, state);
  EXPECT_EQ(state, 0);
  WDialogPutCheckBox(33, 1);
  EXPECT_EQ(zelvy_data::data().ierr, 1006) << "a radio button isn't a check box";

  zelvy_data::data().ierr = 0;
  WDialogPutString(36, "New caption  ");
  std::string text(20, 'x');
  WDialogGetString(36, text);
  EXPECT_EQ(text, "New caption         ");
  std::string shortText(5, ' ');
  WDialogGetString(36, shortText);
  EXPECT_EQ(shortText, "New c") << "cut to the variable";
  WDialogClearField(36);
  int length = -1;
  WDialogGetStringLength(36, length);
  EXPECT_EQ(length, 0);
  WDialogClearField(32);
  WDialogGetInteger(32, value);
  EXPECT_EQ(zelvy_data::data().ierr, 1010);
}

}  // namespace
