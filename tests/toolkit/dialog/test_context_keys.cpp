// The right button and the context keys on the demonstration dialog, as a
// user gives them: what the program hears of a click on a list, a tree view
// and a button, with and without a modifier held; arrows within a radio
// group; the text menu opened and chosen from the keyboard; the X keyboard
// following the focus; and a grid copy that a locked clipboard refuses.
#include <gtest/gtest.h>

#include <X11/IntrinsicP.h>
#include <X11/Shell.h>
#include <Xm/CutPaste.h>
#include <Xm/List.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <poll.h>
#include <string>
#include <unistd.h>

#include "tools/zelvdemo/demo_form.h"
#include "tools/zelvdemo/zelvdemo_ids.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/dialog/tree_view_private.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/message_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

namespace form = zelvdemo_ids::demo;
namespace ids = zelvdemo_ids;
using zelvy_dialog::FieldType;

constexpr int kPastDoubleClickMs = 450;
constexpr int kCtrl = 1, kShift = 2;

class ContextKeys : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zelvdemo_start(); }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    zelvdemo_open();
    for (int type : {FieldChanged, ContextClick}) WMessageEnable(type, 1);
    drain(150);
    XSetInputFocus(xdisplay(), zelvy_win::state().wShell[0], RevertToParent, CurrentTime);
    drain(150);
  }
  void TearDown() override {
    yyMenuDeactivate();
    zelvdemo_close();
    zelvy_data::data().ierr = 0;
  }

  // Runs the loop for a while; the last message of type `wanted` it let through.
  static std::optional<MessageRecord> drain(int ms, int wanted = -2) {
    std::optional<MessageRecord> got;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (std::chrono::steady_clock::now() < end) {
      XSync(xdisplay(), False);
      int type = 0;
      MessageRecord m;
      WMessagePeek(type, m);
      if (type == wanted) got = m;
      if (type == -1) poll(nullptr, 0, 5);
    }
    return got;
  }
  static void xdotool(const std::string& args) {
    XSync(xdisplay(), False);
    ASSERT_EQ(std::system(("xdotool " + args).c_str()), 0) << args;
  }
  static std::pair<int, int> root_of(Widget w, int x, int y) {
    int rx = 0, ry = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), x, y, &rx, &ry, &child);
    return {rx, ry};
  }
  // A right click at a point of a widget, with keys held around it.
  static std::optional<MessageRecord> right_click(Widget w, int x, int y, const std::string& held = {}) {
    drain(kPastDoubleClickMs);
    const auto [rx, ry] = root_of(w, x, y);
    xdotool("mousemove " + std::to_string(rx) + " " + std::to_string(ry));
    if (!held.empty()) xdotool("keydown " + held);
    xdotool("click 3");
    auto got = drain(250, ContextClick);
    if (!held.empty()) xdotool("keyup " + held);
    return got;
  }
  static FieldRecord& field(int id) {
    auto& d = zelvy_dialog::state().wDialogInfo[yyDialogFind(ids::dialog::demo)];
    return d.fields[static_cast<std::size_t>(yyDialogFindField(id, yyDialogFind(ids::dialog::demo)))];
  }
  static void focus(int id) {
    yyDialogFocus(field(id), -1);
    drain(150);
  }
  static std::string selected_text(Widget text) {
    char* s = XmTextGetSelection(text);
    std::string out = s ? s : "";
    XtFree(s);
    return out;
  }
};

TEST_F(ContextKeys, RightClickOnAListNamesTheOptionUnderThePointer) {
  Widget list = field(form::single).widget;
  Position x = 0, y = 0;
  Dimension w = 0, h = 0;
  ASSERT_TRUE(XmListPosToBounds(list, 3, &x, &y, &w, &h));
  auto m = right_click(list, x + w / 2, y + h / 2);
  ASSERT_TRUE(m);
  EXPECT_EQ(m->Value1, 3);
  EXPECT_EQ(m->Value2, 0);
  EXPECT_EQ(m->Value3, FieldType::kList);
  EXPECT_EQ(m->Value4, form::single);
  EXPECT_EQ(m->Win, ids::dialog::demo);
  const auto [rx, ry] = root_of(list, x + w / 2, y + h / 2);
  EXPECT_EQ(std::make_pair(m->X, m->Y), std::make_pair(rx, ry));

  // The modifiers are those held at the press; below the last option no item.
  Widget many = field(form::many).widget;
  ASSERT_TRUE(XmListPosToBounds(many, 6, &x, &y, &w, &h));
  ASSERT_LT(y + h + 3, static_cast<int>(many->core.height)) << "the list shows room below its last option";
  m = right_click(many, x + w / 2, y + h + 2, "shift");
  ASSERT_TRUE(m);
  EXPECT_EQ(m->Value1, 0);
  EXPECT_EQ(m->Value2, kShift);
  m = right_click(many, x + w / 2, y + h / 2, "ctrl");
  ASSERT_TRUE(m);
  EXPECT_EQ(m->Value1, 6);
  EXPECT_EQ(m->Value2, kCtrl);

  // From the keyboard: the selected option, flagged as a key's.
  focus(form::single);
  xdotool("key Menu");
  m = drain(250, ContextClick);
  ASSERT_TRUE(m);
  EXPECT_EQ(m->Value1, 2);  // the resource selects the second
  EXPECT_EQ(m->Value2, kContextFromKeyboard);
  EXPECT_EQ(m->Value4, form::single);
}

TEST_F(ContextKeys, RightClickOnATreeViewAndAButton) {
  FieldRecord& tree = field(form::tree);
  // The item shown first, whatever its identifier.
  Widget top = nullptr;
  Position best = 32767;
  WidgetList kids = nullptr;
  Cardinal count = 0;
  XtVaGetValues(tree.widget, XmNchildren, &kids, XmNnumChildren, &count, nullptr);
  for (Cardinal k = 0; k < count; ++k)
    // Items of closed branches wait out of sight, above and left of the origin.
    if (XtIsManaged(kids[k]) && yyDialogTreeviewItemId(kids[k]) != 0 && kids[k]->core.x >= 0 &&
        kids[k]->core.y >= 0 && kids[k]->core.y < best) {
      best = kids[k]->core.y;
      top = kids[k];
    }
  ASSERT_NE(top, nullptr);
  auto m = right_click(tree.widget, top->core.x + top->core.width / 2, top->core.y + top->core.height / 2);
  ASSERT_TRUE(m);
  EXPECT_EQ(m->Value1, yyDialogTreeviewItemId(top));
  EXPECT_EQ(m->Value3, FieldType::kTreeview);
  EXPECT_EQ(m->Value4, form::tree);
  EXPECT_EQ(m->Win, ids::dialog::demo);
  // Below every item: none.
  m = right_click(tree.widget, 4, tree.widget->core.height - 3);
  ASSERT_TRUE(m);
  EXPECT_EQ(m->Value1, 0);

  Widget press = field(form::press).widget;
  m = right_click(press, press->core.width / 2, press->core.height / 2);
  ASSERT_TRUE(m);
  EXPECT_EQ(m->Value1, -1);
  EXPECT_EQ(m->Value3, FieldType::kButton);
  EXPECT_EQ(m->Value4, form::press);
}

TEST_F(ContextKeys, ArrowsMoveWithinARadioGroupAndWrap) {
  Widget one = field(form::radio_one).widget, two = field(form::radio_two).widget;
  auto& d = zelvy_dialog::state().wDialogInfo[yyDialogFind(ids::dialog::demo)];
  yyDialogPutRadioButton(d, field(form::radio_one));
  ASSERT_TRUE(XmToggleButtonGetState(one));
  ASSERT_FALSE(XmToggleButtonGetState(two));
  // Tab from the check box before the group lands on its button that is set.
  focus(form::check);
  xdotool("key Tab");
  drain(150);
  EXPECT_EQ(XmGetFocusWidget(one), one);

  xdotool("key Right");
  auto m = drain(250, FieldChanged);
  EXPECT_TRUE(XmToggleButtonGetState(two));
  EXPECT_FALSE(XmToggleButtonGetState(one));
  EXPECT_EQ(XmGetFocusWidget(two), two);
  ASSERT_TRUE(m);
  EXPECT_EQ(m->Value1, form::radio_two);
  EXPECT_EQ(m->Value2, form::radio_two);
  EXPECT_EQ(m->Value3, 1);

  // Past the end of the run it wraps, either way.
  xdotool("key Down");
  drain(200);
  EXPECT_TRUE(XmToggleButtonGetState(one));
  xdotool("key Up");
  drain(200);
  EXPECT_TRUE(XmToggleButtonGetState(two));
  EXPECT_FALSE(XmToggleButtonGetState(one));
}

TEST_F(ContextKeys, TheTextMenuIsChosenFromTheKeyboard) {
  Widget text = field(form::text).valueWidget;
  focus(form::text);
  XmTextClearSelection(text, CurrentTime);
  XmTextSetInsertionPosition(text, 0);
  xdotool("key shift+F10");
  drain(200);
  ASSERT_TRUE(yyMenuIsOpen());
  // Nothing highlighted yet: Up goes to the last item, Select All.
  xdotool("key Up Return");
  drain(250);
  EXPECT_FALSE(yyMenuIsOpen());
  EXPECT_EQ(selected_text(text), "Some text");

  // The menu key opens it too; Escape closes it without a choice.
  XmTextClearSelection(text, CurrentTime);
  xdotool("key Menu");
  drain(200);
  ASSERT_TRUE(yyMenuIsOpen());
  xdotool("key Escape");
  drain(200);
  EXPECT_FALSE(yyMenuIsOpen());
  char* now = XmTextGetString(text);
  EXPECT_STREQ(now, "Some text");
  XtFree(now);
}

TEST_F(ContextKeys, AFieldThatTakesTheFocusBringsItsWindowTheKeyboardTwicePerWait) {
  auto x_focus = [] {
    Window w = 0;
    int revert = 0;
    XGetInputFocus(xdisplay(), &w, &revert);
    return w;
  };
  Widget text = field(form::text).valueWidget;
  Widget shell = text;
  while (!XtIsShell(shell)) shell = XtParent(shell);
  // Another window of the program holds the keyboard before each move.
  Widget other = XtVaAppCreateShell("other", "Other", topLevelShellWidgetClass, xdisplay(), XtNwidth, 40,
                                    XtNheight, 30, nullptr);
  XtRealizeWidget(other);
  XMapWindow(xdisplay(), XtWindow(other));
  drain(200);
  const Window away = XtWindow(other);
  auto elsewhere = [away] { XSetInputFocus(xdisplay(), away, RevertToParent, CurrentTime); };
  elsewhere();
  drain(100);  // a fresh wait: two moves allowed
  yyDialogFocus(field(form::whole), -1);
  EXPECT_EQ(x_focus(), XtWindow(shell));
  elsewhere();
  yyDialogFocus(field(form::real_number), -1);
  EXPECT_EQ(x_focus(), XtWindow(shell));
  // A third move in the same wait leaves the X keyboard where it is, so that
  // two windows can't go on taking it from each other.
  elsewhere();
  yyDialogFocus(field(form::text), -1);
  EXPECT_EQ(x_focus(), away);
  EXPECT_EQ(XmGetFocusWidget(text), text);
  // The next wait may move it again.
  drain(100);
  yyDialogFocus(field(form::whole), -1);
  EXPECT_EQ(x_focus(), XtWindow(shell));
  // Nobody's keyboard is left alone.
  XSetInputFocus(xdisplay(), PointerRoot, RevertToPointerRoot, CurrentTime);
  drain(100);
  yyDialogFocus(field(form::real_number), -1);
  EXPECT_EQ(x_focus(), static_cast<Window>(PointerRoot));
  XtDestroyWidget(other);
}

// Another X client that holds the clipboard locked while it lives.
class ClipboardLocker {
 public:
  ClipboardLocker() {
    app_ = XtCreateApplicationContext();
    int argc = 0;
    dpy_ = XtOpenDisplay(app_, nullptr, "locker", "Locker", nullptr, 0, &argc, nullptr);
    if (!dpy_) return;
    win_ = XCreateSimpleWindow(dpy_, DefaultRootWindow(dpy_), 0, 0, 1, 1, 0, 0, 0);
    locked_ = XmClipboardLock(dpy_, win_) == XmClipboardSuccess;
    XSync(dpy_, False);
  }
  ~ClipboardLocker() {
    if (!dpy_) return;
    if (locked_) XmClipboardUnlock(dpy_, win_, True);
    XDestroyWindow(dpy_, win_);
    XtCloseDisplay(dpy_);
    XtDestroyApplicationContext(app_);
  }
  bool locked() const { return locked_; }

 private:
  XtAppContext app_ = nullptr;
  Display* dpy_ = nullptr;
  Window win_ = 0;
  bool locked_ = false;
};

TEST_F(ContextKeys, AGridCopyThatTheClipboardRefusesSaysSo) {
  Widget grid = yyGridOfField(field(form::table));
  ASSERT_NE(grid, nullptr);
  yyGridWidgetSelectX(grid, true, 0, 0, 1, 1);
  drain(100);
  const auto seen = std::filesystem::temp_directory_path() / ("zelv_cliperr_" + std::to_string(::getpid()));
  std::filesystem::remove(seen);
  {
    ClipboardLocker locker;
    ASSERT_TRUE(locker.locked());
    // The box is modal: a helper waits for it by its title, notes it, and answers it.
    const std::string answer = "(timeout 15 xdotool search --sync --name '^Clipboard error$' > '" + seen.string() +
                               "' && sleep 0.3 && xdotool search --name '^Clipboard error$' windowfocus --sync key "
                               "Return) >/dev/null 2>&1 &";
    ASSERT_EQ(std::system(answer.c_str()), 0);
    EXPECT_FALSE(yyGridWidgetSelCellCopyX(grid));
  }
  std::ifstream in(seen);
  std::string window;
  in >> window;
  EXPECT_FALSE(window.empty()) << "no box titled \"Clipboard error\" came up";
  std::filesystem::remove(seen);

  // Unlocked, the same copy goes through without a box.
  EXPECT_TRUE(yyGridWidgetSelCellCopyX(grid));
}

}  // namespace
