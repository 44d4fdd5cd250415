// Drives the file selector from outside while WSelectFile runs its own loop:
// a script of steps, each run from a timer of the toolkit's event loop, that
// click and type through xdotool as a user would and look at the widgets.
#pragma once

#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over
#include <X11/Xlib.h>
#include <Xm/List.h>
#include <Xm/MessageB.h>
#include <Xm/Xm.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "app/resources/gombrel_resources.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/comdlg/file_selector.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

namespace fs = std::filesystem;

inline constexpr int kSingle = 32110, kMultiple = 32111;
inline constexpr int kList = 1101, kListMany = 1102, kName = 1007, kDirField = 1001, kCombo = 1009;
inline constexpr const char* kOmbFilter = "Ombrel Input Files (*.omb) |*.omb|Text files (*.txt)|*.txt|All files|*|";

class SelectorTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    yyDialogAttach();
    WInitialise();
    yyDialogEngineInit();
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    WindowOpen(0, 0, 0, 400, 300);
    start_ = fs::current_path();
    dir_ = fs::temp_directory_path() / ("selector-" + std::to_string(::getpid()) + "-" +
                                        ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(dir_);
    fs::create_directories(dir_);
    zelvy_data::data().ierr = 0;
    steps_.clear();
    next_ = 0;
  }
  void TearDown() override {
    fs::current_path(start_);
    WindowClose();
    fs::remove_all(dir_);
    zelvy_data::data().ierr = 0;
  }

  void touch(const std::string& name, std::size_t bytes = 0) {
    std::ofstream out(dir_ / name, std::ios::binary);
    out << std::string(bytes, 'x');
  }

  // ---- the script ---------------------------------------------------------
  // Each step runs `delay_ms` after the one before; a guard cancels the dialog
  // when the script ends without ending it.
  void step(std::function<void()> f, int delay_ms = 250) { steps_.push_back({std::move(f), delay_ms}); }
  void run(std::string_view filter, int flags, std::string& filename, int* index = nullptr) {
    step([] {}, 300);
    selector_ = (flags & kSelectMultiple) && !(flags & kSelectSave) ? kMultiple : kSingle;
    finished_ = false;
    timer_ = XtAppAddTimeOut(zelvy_x::state().ixContext, 500, &SelectorTest::tick, this);
    WSelectFile(filter, flags, filename, "Choose", index);
    finished_ = true;
    if (timer_) XtRemoveTimeOut(timer_);
    timer_ = 0;
    steps_.clear();
    next_ = 0;
  }
  static void tick(XtPointer self, XtIntervalId*) {
    auto* t = static_cast<SelectorTest*>(self);
    t->timer_ = 0;
    if (t->finished_) return;
    if (t->next_ >= t->steps_.size()) {
      // Cancel whatever is current, a small dialog first, until the call returns.
      if (t->next_++ == t->steps_.size()) ADD_FAILURE() << "the script ended with the dialog still open";
      yyMsgSend(PushButton, 2, 2, -1, -1, -1, -1, zelvy_data::data().icurdialog, 0);
      wake();
      t->timer_ = XtAppAddTimeOut(zelvy_x::state().ixContext, 500, &SelectorTest::tick, self);
      return;
    }
    const auto& s = t->steps_[t->next_++];
    s.f();
    t->timer_ = XtAppAddTimeOut(zelvy_x::state().ixContext, static_cast<unsigned long>(s.delay), &SelectorTest::tick, self);
  }

  // ---- what a user does ---------------------------------------------------
  static void xdotool(const std::string& args) {
    XSync(xdisplay(), False);
    EXPECT_EQ(std::system(("xdotool " + args).c_str()), 0) << args;
  }
  static void click_at(int x, int y, int button = 1, int count = 1) {
    xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click --repeat " +
            std::to_string(count) + " --delay 60 " + std::to_string(button));
  }
  static void centre(Widget w, int& x, int& y) {
    Dimension wd = 0, ht = 0;
    Position gx = 0, gy = 0;
    XtVaGetValues(w, XtNwidth, &wd, XtNheight, &ht, XtNx, &gx, XtNy, &gy, nullptr);
    // A gadget draws in its parent's window.
    const bool gadget = !XtIsWidget(w);
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(gadget ? XtParent(w) : w), DefaultRootWindow(xdisplay()),
                          (gadget ? gx : 0) + wd / 2, (gadget ? gy : 0) + ht / 2, &x, &y, &child);
  }
  static void click_widget(Widget w, int button = 1) {
    int x = 0, y = 0;
    centre(w, x, y);
    click_at(x, y, button);
  }
  FieldRecord& field(int id) {
    WDialogSelect(selector_);
    auto& ds = zelvy_dialog::state();
    return ds.wDialogInfo[ds.iDlgCur].fields[static_cast<std::size_t>(yyDialogFindField(id, ds.iDlgCur))];
  }
  Widget list() { return field(selector_ == kSingle ? kList : kListMany).widget; }
  void click_field(int id, int button = 1) { click_widget(field(id).widget, button); }
  // Clicks (or double-clicks) the list's option at `pos`, from 1.
  void click_option(int pos, int count = 1, int button = 1) {
    XmListSetPos(list(), pos);
    XSync(xdisplay(), False);
    Position x = 0, y = 0;
    Dimension w = 0, h = 0;
    ASSERT_TRUE(XmListPosToBounds(list(), pos, &x, &y, &w, &h)) << pos;
    int rx = 0, ry = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(list()), DefaultRootWindow(xdisplay()), x + 10, y + h / 2, &rx, &ry,
                          &child);
    click_at(rx, ry, button, count);
  }
  // Adds an option to the selection of a list of several, as ctrl+click.
  void add_option(int pos) {
    xdotool("keydown ctrl");
    click_option(pos);
    xdotool("keyup ctrl");
  }
  int option_of(const std::string& shown) {
    const auto v = options();
    for (std::size_t i = 0; i < v.size(); ++i)
      if (v[i] == shown) return static_cast<int>(i + 1);
    return 0;
  }
  // Replaces the name field's text as typed, and presses Return.
  void type_name(const std::string& text) {
    click_field(kName);
    auto& ds = zelvy_dialog::state();
    XSetInputFocus(xdisplay(), XtWindow(ds.wDialogInfo[ds.iDlgCur].shell), RevertToParent, CurrentTime);
    xdotool("key --clearmodifiers End shift+Home BackSpace");
    xdotool("type --delay 15 '" + text + "'");
    xdotool("key Return");
  }
  // The text of a field of the selector.
  std::string text(int id) {
    WDialogSelect(selector_);
    std::string s;
    WDialogGetString(id, s);
    return std::string(trimmed(s));
  }
  std::vector<std::string> options() {
    std::vector<std::string> out;
    XmStringTable items = nullptr;
    int n = 0;
    XtVaGetValues(list(), XmNitems, &items, XmNitemCount, &n, nullptr);
    for (int i = 0; i < n; ++i) {
      char* s = static_cast<char*>(XmStringUnparse(items[i], nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, nullptr, 0, XmOUTPUT_ALL));
      out.emplace_back(s ? s : "");
      XtFree(s);
    }
    return out;
  }
  // The prompt box up at the moment, if any.
  Widget box() {
    for (Widget root : {field(kName).widget, zelvy_x::state().rootWidget}) {
      while (XtParent(root)) root = XtParent(root);
      if (Widget b = XtNameToWidget(root, "*messageBox"); b && XtIsManaged(b)) return b;
    }
    auto& ds = zelvy_dialog::state();
    for (auto& d : ds.wDialogInfo)
      if (d.identifier != -1 && d.shell)
        if (Widget b = XtNameToWidget(d.shell, "*messageBox"); b && XtIsManaged(b)) return b;
    return nullptr;
  }
  std::string box_text() {
    Widget b = box();
    if (!b) return "<no box>";
    XmString s = nullptr;
    XtVaGetValues(b, XmNmessageString, &s, nullptr);
    char* c = static_cast<char*>(XmStringUnparse(s, nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, nullptr, 0, XmOUTPUT_ALL));
    std::string r = c ? c : "";
    XtFree(c);
    XmStringFree(s);
    return r;
  }
  // Yes (or OK) and No, where the box puts them.
  void answer(bool yes) {
    Widget b = box();
    ASSERT_NE(b, nullptr);
    click_widget(XmMessageBoxGetChild(b, yes ? XmDIALOG_OK_BUTTON : XmDIALOG_HELP_BUTTON));
  }
  // Clicks an item of the floating menu that is up.
  static void choose(int item) {
    auto& m = zelvy_menu::state().pwFloatMenu;
    ASSERT_NE(m, nullptr) << "no floating menu for " << item;
    const int i = m->find(item);
    ASSERT_GE(i, 0) << item;
    XWindowAttributes a{};
    XGetWindowAttributes(xdisplay(), m->ItemWindows[static_cast<std::size_t>(i)], &a);
    int x = 0, y = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), m->ItemWindows[static_cast<std::size_t>(i)], DefaultRootWindow(xdisplay()),
                          a.width / 2, a.height / 2, &x, &y, &child);
    click_at(x, y);
  }
  // What the shortcut menu sends, without going through it.
  static void menu(int item) {
    yyMsgSend(MenuSelect, item, 0, 0, 0, 0, 0, 0, 0);
    wake();
  }
  // A message sent from a timer waits for the next event: give it one.
  static void wake() {
    XEvent ev{};
    ev.xclient.type = ClientMessage;
    ev.xclient.window = zelvy_win::state().wWindow[0];
    ev.xclient.message_type = XInternAtom(xdisplay(), "SELECTOR_TEST_WAKE", False);
    ev.xclient.format = 32;
    XSendEvent(xdisplay(), ev.xclient.window, False, 0, &ev);
    XFlush(xdisplay());
  }

  fs::path dir_, start_;
  int selector_ = kSingle;
  bool finished_ = false;

 private:
  struct Step {
    std::function<void()> f;
    int delay;
  };
  std::vector<Step> steps_;
  std::size_t next_ = 0;
  XtIntervalId timer_ = 0;
};
