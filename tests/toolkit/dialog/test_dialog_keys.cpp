// The keyboard, tooltips and placement of dialogs on the main form: Return
// and Tab through the toolkit's own tables, the whole tab order against the
// resource, Escape, the text context menu, the About box over a grid cell,
// tooltips that follow the pointer in and out of a field, common dialogs
// kept on the screen, and a grid that shows its field's state in its cells.
#include "tests/toolkit/dialog/form_fixture.h"

#include <X11/keysym.h>
#include <Xm/Text.h>
#include <Xm/Xm.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "toolkit/dialog/field_styles.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/tooltip_private.h"

namespace {

namespace ids = gombrel_ids::main_form;

class DialogKeys : public MainFormTest {
 protected:
  static void SetUpTestSuite() {
    yyGridAttach();
    MainFormTest::SetUpTestSuite();
  }

  // A key typed on the keyboard, into the window that has the focus.
  static void type(const std::string& keys) {
    XSetInputFocus(xdisplay(), zelvy_win::state().wShell[0], RevertToParent, CurrentTime);
    settle();
    ASSERT_EQ(std::system(("xdotool key " + keys).c_str()), 0) << keys;
    XSync(xdisplay(), False);
  }

  // The messages the form sent, in order.
  static std::vector<MessageRecord> messages(int wanted) {
    std::vector<MessageRecord> out;
    XSync(xdisplay(), False);
    for (int i = 0; i < 200; ++i) {
      int type = 0;
      MessageRecord m;
      WMessagePeek(type, m);
      if (type == wanted) out.push_back(m);
    }
    return out;
  }

  // Runs the timers and events due within `ms` milliseconds.
  static void run_for(int ms) {
    XtAppContext app = zelvy_x::state().ixContext;
    for (int i = 0; i < ms / 10; ++i) {
      XSync(xdisplay(), False);
      while (XtAppPending(app)) XtAppProcessEvent(app, XtIMAll);
      usleep(10000);
    }
  }

  static void crossing(Widget w, int type) {
    XEvent ev{};
    ev.xcrossing.type = type;
    ev.xcrossing.display = xdisplay();
    ev.xcrossing.window = XtWindow(w);
    ev.xcrossing.detail = NotifyAncestor;
    yyDialogTooltipEH(w, nullptr, &ev, nullptr);
  }
};

TEST_F(DialogKeys, ReturnWithoutADefaultButtonSendsOkFromTheFieldInFocus) {
  FieldRecord& title = field(ids::title);
  yyDialogFocus(title, -1);
  settle();
  type("Return");
  const auto sent = messages(PushButton);
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0].Value1, 1);
  EXPECT_EQ(sent[0].Value2, ids::title);
  EXPECT_EQ(sent[0].Win, kForm);
}

TEST_F(DialogKeys, TabFollowsTheFieldTableAndSkipsFieldsOutOfReach) {
  DialogRecord& d = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur];
  auto focused = [&] {
    Widget w = XmGetFocusWidget(d.widget);
    for (const FieldRecord& f : d.fields)
      if (f.valueWidget == w) return f.identifier;
    return 0;
  };
  FieldRecord& code = field(ids::code_file);
  yyDialogFocus(code, -1);
  settle();
  ASSERT_EQ(focused(), ids::code_file);
  type("Tab");
  settle();
  EXPECT_EQ(focused(), ids::title);
  // Backwards from the first field wraps to the last one in the table that
  // takes the focus: the Browse button, listed after the labels.
  type("shift+Tab");
  settle();
  EXPECT_EQ(focused(), ids::code_file);
  type("shift+Tab");
  settle();
  EXPECT_EQ(focused(), ids::browse_reflection_file);
}

TEST_F(DialogKeys, TabAndShiftTabWalkTheFormInTheOrderOfItsResource) {
  using namespace zelvy_dialog;
  RcDialog rc;
  int status = 0;
  yyrcdialogget(kForm, rc, status);
  ASSERT_EQ(status, 0);
  std::vector<int> expected;
  for (const RcField& f : rc.fields)
    if ((f.style & field_style::kTabStop) && f.type != kLabel && f.type != kGroup && f.type != kPicture)
      expected.push_back(f.id);
  ASSERT_GT(expected.size(), 10u);
  DialogRecord& d = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur];
  auto walk = [&](const char* keys) {
    std::vector<int> seen;
    yyDialogFocus(field(expected.front()), -1);
    settle();
    for (std::size_t i = 0; i < expected.size(); ++i) {
      seen.push_back(d.fields[static_cast<std::size_t>(d.focusField)].identifier);
      type(keys);
      settle();
    }
    seen.push_back(d.fields[static_cast<std::size_t>(d.focusField)].identifier);
    return seen;
  };
  std::vector<int> forward = expected;
  forward.push_back(expected.front());
  EXPECT_EQ(walk("Tab"), forward);
  std::vector<int> backward{expected.front()};
  backward.insert(backward.end(), expected.rbegin(), expected.rend());
  EXPECT_EQ(walk("shift+Tab"), backward);
}

TEST_F(DialogKeys, EscapeAnswersCancelAndKeepsTheCellParameters) {
  WDialogPutString(ids::cell, "5.43 5.43 5.43 90 90 90");
  yyDialogFocus(field(ids::cell), -1);
  settle();
  type("Escape");
  const auto sent = messages(PushButton);
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(std::pair(sent[0].Value1, sent[0].Value2), std::pair(2, ids::cell));
  std::string text;
  WDialogGetString(ids::cell, text);
  EXPECT_EQ(text, "5.43 5.43 5.43 90 90 90");
}

TEST_F(DialogKeys, TheContextMenuOfATextCutsAndPastesThroughTheClipboard) {
  FieldRecord& title = field(ids::title);
  WDialogPutString(ids::title, "Silicon");
  yyDialogFocus(title, 0);  // no selection: nothing to cut, copy or delete
  settle();
  type("shift+F10");
  settle();
  const MenuRecord* menu = zelvy_menu::state().pwFloatMenu.get();
  ASSERT_NE(menu, nullptr);
  ASSERT_EQ(menu->ItemCount(), 6);
  std::vector<bool> greyed;
  for (int i = 0; i < menu->ItemCount(); ++i) greyed.push_back(menu->greyed(i));
  EXPECT_EQ(greyed, (std::vector<bool>{true, true, greyed[2], true, false, false}));
  type("Escape");
  settle();
  EXPECT_FALSE(yyMenuIsOpen());
  // Select All from the menu, then Cut and Paste by their letters.
  for (const char* letter : {"a", "t"}) {
    type("shift+F10");
    settle();
    type(letter);
    settle();
  }
  std::string text;
  WDialogGetString(ids::title, text);
  EXPECT_EQ(text, "");
  type("shift+F10");
  settle();
  EXPECT_FALSE(zelvy_menu::state().pwFloatMenu->greyed(2));  // Paste, now that the clipboard holds text
  type("p");
  settle();
  WDialogGetString(ids::title, text);
  EXPECT_EQ(text, "Silicon");
}

TEST_F(DialogKeys, AboutOpenedOverAGridCellTakesTheKeyboardAndAnswersReturnAndEscape) {
  for (const char* keys : {"Return", "Escape"}) {
    yyDialogFocus(field(ids::twin_matrices), -1);
    settle();
    const DialogRecord& form = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur];
    ASSERT_EQ(form.fields[static_cast<std::size_t>(form.focusField)].identifier, ids::twin_matrices);
    WDialogLoad(gombrel_ids::dialog::about);
    WDialogShow(-1, -1, 0, 2);
    settle();
    ASSERT_EQ(std::system((std::string("xdotool key ") + keys).c_str()), 0);
    const auto sent = messages(PushButton);
    ASSERT_EQ(sent.size(), 1u) << keys;
    EXPECT_EQ(std::pair(sent[0].Value1, sent[0].Win), std::pair(keys[0] == 'R' ? 1 : 2, gombrel_ids::dialog::about));
    WDialogUnload();
    WDialogSelect(kForm);
  }
}

TEST_F(DialogKeys, CtrlKeysOfATextFieldAreTheToolkitsOwn) {
  FieldRecord& title = field(ids::title);
  WDialogPutString(ids::title, "abc");
  yyDialogFocus(title, 0);
  settle();
  type("ctrl+a");
  settle();
  XmTextPosition left = 0, right = 0;
  ASSERT_TRUE(XmTextGetSelectionPosition(title.valueWidget, &left, &right));
  EXPECT_EQ(left, 0);
  EXPECT_EQ(right, 3);
  // Any other Ctrl key is swallowed rather than edited in.
  type("ctrl+k");
  settle();
  std::string text;
  WDialogGetString(ids::title, text);
  EXPECT_EQ(text, "abc");
}

TEST_F(DialogKeys, TooltipShowsItsLinesAndComesBackAtOnceWithinTheInstantWindow) {
  Widget browse = field(ids::browse_reflection_file).widget;
  WDialogTooltip(ids::browse_reflection_file, "Browse");
  yyDialogTooltipCB(browse, nullptr);
  ASSERT_NE(yyTooltipWindow(), 0u);
  EXPECT_EQ(yyTooltipOwner(), browse);
  XWindowAttributes one{};
  XGetWindowAttributes(xdisplay(), yyTooltipWindow(), &one);
  EXPECT_TRUE(one.override_redirect);
  EXPECT_EQ(one.map_state, IsViewable);

  WDialogTooltip(ids::browse_reflection_file, "Browse\r\nfor the file");
  yyDialogTooltipCB(browse, nullptr);
  XWindowAttributes two{};
  XGetWindowAttributes(xdisplay(), yyTooltipWindow(), &two);
  EXPECT_GT(two.height, one.height + one.height / 2);  // a second line and the gap

  // Leaving removes it; entering again soon shows it without the delay.
  crossing(browse, LeaveNotify);
  EXPECT_EQ(yyTooltipWindow(), 0u);
  crossing(browse, EnterNotify);
  run_for(100);
  EXPECT_NE(yyTooltipWindow(), 0u);

  // After a press the delay is back, and a leave before it cancels the show.
  yyTooltipDestroy();
  crossing(browse, EnterNotify);
  run_for(100);
  EXPECT_EQ(yyTooltipWindow(), 0u);
  crossing(browse, LeaveNotify);
  yyTooltipDestroy();

  // An emptied text shows nothing.
  WDialogTooltip(ids::browse_reflection_file, "");
  yyDialogTooltipCB(browse, nullptr);
  EXPECT_EQ(yyTooltipWindow(), 0u);
}

TEST_F(DialogKeys, CommonDialogsArePlacedFromTheWindowAndKeptOnTheScreen) {
  int cx = 20, cy = 30;
  ASSERT_TRUE(yyWindowGetPos(0, cx, cy));
  int x = 20, y = 30;
  yycomdlggetpos(0, false, 100, 50, x, y);
  EXPECT_EQ(x, cx);
  EXPECT_EQ(y, cy);
  const int dw = zelvy_x::state().iDispWidth, dh = zelvy_x::state().iDispHeight;
  x = dw;
  y = dh;
  yycomdlggetpos(0, false, 100, 50, x, y);
  EXPECT_EQ(x, dw - 100);
  EXPECT_EQ(y, dh - 50);
  // A window that isn't there leaves the position to the screen alone.
  x = 5;
  y = 6;
  yycomdlggetpos(7, false, 100, 50, x, y);
  EXPECT_EQ(x, 5);
  EXPECT_EQ(y, 6);
}

TEST_F(DialogKeys, AGridShowsItsFieldsStateInItsTextCells) {
  Widget grid = yyGridOfField(field(ids::twin_matrices));
  ASSERT_NE(grid, nullptr);
  auto background = [&] {
    Pixel bg = 0;
    FieldRecord& cell = yyGridPart(grid).st->views[0].cells[0];
    XtVaGetValues(cell.valueWidget ? cell.valueWidget : cell.widget, XtNbackground, &bg, nullptr);
    return bg;
  };
  const Pixel dialog = zelvy_x::state().wSchemeCol[3].pixel, fieldBack = zelvy_x::state().wSchemeCol[15].pixel;
  ASSERT_NE(dialog, fieldBack);
  WDialogFieldState(ids::twin_matrices, 0);
  EXPECT_EQ(background(), dialog);
  WDialogFieldState(ids::twin_matrices, 1);
  EXPECT_EQ(background(), fieldBack);
  // Read-only shows the dialog's background where no colour is set.
  WDialogFieldState(ids::twin_matrices, 2);
  EXPECT_EQ(background(), dialog);
  WDialogFieldState(ids::twin_matrices, 1);
}

}  // namespace
