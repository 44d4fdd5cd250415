// The editor windows' test fixture: a root window, an editor child window as
// the program opens its result viewers, the message loop run until idle, the
// user's hand through xdotool, and the common dialogs answered from a timer.
#pragma once

#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <sys/stat.h>
#include <unistd.h>

#include <X11/Intrinsic.h>
#include <Xm/MessageB.h>
#include <Xm/PushB.h>
#include <Xm/Text.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/resources/gombrel_resources.h"
#include "support/lorx_io_messages.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/comdlg/message_box.h"
#include "toolkit/comdlg/message_box_private.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/editor/editor.h"
#include "toolkit/editor/editor_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

namespace fs = std::filesystem;

namespace {

constexpr int kOmbrelView = 39;  // how the program opens its result viewers
constexpr int kSemiModeless = 3, kMonoFont = 4;

void write(const fs::path& p, const std::string& bytes) {
  std::ofstream(p, std::ios::binary) << bytes;
}

std::string read(const fs::path& p) {
  std::ifstream f(p, std::ios::binary);
  return {std::istreambuf_iterator<char>(f), {}};
}

class EditorWindow : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    yyDialogAttach();
    yyEditAttach();
    yyComdlgAttach();
    WInitialise();
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    dir = fs::temp_directory_path() / ("editor_test_" + std::to_string(::getpid()));
    fs::create_directories(dir);
    WindowOpen(0, 0, 0, 300, 200, {}, {}, {}, "root");
    zelvy_data::data().ierr = 0;
  }
  void TearDown() override {
    for (auto& p : pending)
      if (p->timer) XtRemoveTimeOut(p->timer);
    if (handle > 0 && yywindowexists(handle)) WindowCloseChild(handle);
    WindowClose();
    fs::permissions(dir, fs::perms::owner_all);
    fs::remove_all(dir);
  }

  // The viewer as the program opens it for a result file.
  void open(const std::string& name, int flags = 0) {
    WindowOpenChild(handle, kOmbrelView, 40, 40, 700, 480, 0, {}, 0, "Ombrel Text Editor");
    ASSERT_GT(handle, 0);
    WEditFile(name, kSemiModeless, 0, flags, kMonoFont);
    settle();
  }

  static void settle() {
    XSync(xdisplay(), False);
    int type = 0;
    MessageRecord m;
    for (int i = 0; i < 500; ++i) {
      WMessagePeek(type, m);
      if (type == -1) {
        XSync(xdisplay(), False);
        WMessagePeek(type, m);
        if (type == -1) break;
      }
    }
  }
  static void xdotool(const std::string& args) {
    XSync(xdisplay(), False);
    ASSERT_EQ(std::system(("xdotool " + args).c_str()), 0) << args;
    settle();
  }
  EditRecord& record() { return *yyEditRecordOf(handle); }
  std::string text() {
    WindowSelect(handle);
    std::string t;
    WEditGetText(t);
    return t;
  }
  void click_text() {
    int x = 0, y = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(record().Text), DefaultRootWindow(xdisplay()), 30, 10, &x, &y,
                          &child);
    xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
  }
  int messages() const { return yyEditLastMessage().count; }

  // ---- The user's answers to dialogs that run loops of their own ----------
  // Something done once a condition holds, polled from a timer of whatever
  // loop runs then; after some seconds without it the test fails.
  struct Pending {
    std::function<bool()> ready;
    std::function<void()> act;
    int polls = 0;
    bool done = false;
    XtIntervalId timer = 0;
  };
  static constexpr int kPollMs = 100, kGuardPolls = 100;
  void when(std::function<bool()> ready, std::function<void()> act) {
    pending.push_back(std::make_unique<Pending>(Pending{std::move(ready), std::move(act)}));
    pending.back()->timer = XtAppAddTimeOut(zelvy_x::state().ixContext, kPollMs, poll, pending.back().get());
  }
  static void poll(XtPointer data, XtIntervalId*) {
    auto* p = static_cast<Pending*>(data);
    p->timer = 0;
    if (p->ready()) {
      XSync(xdisplay(), False);
      p->done = true;
      p->act();
      return;
    }
    if (++p->polls > kGuardPolls) {
      ADD_FAILURE() << "a dialog the test waited for never showed";
      yyMsgModalEnd();  // never hang the suite: whatever loop runs ends unanswered
      return;
    }
    p->timer = XtAppAddTimeOut(zelvy_x::state().ixContext, kPollMs, poll, p);
  }
  static bool viewable(Widget w) {
    if (!w || !XtIsRealized(w)) return false;
    XWindowAttributes at{};
    return XGetWindowAttributes(xdisplay(), XtWindow(w), &at) && at.map_state == IsViewable;
  }
  // A common message box is up; its title is noted, then `keys` answer it.
  void answer_box(const std::string& keys) {
    when([] { return viewable(yyComDlgBoxWidget() ? XtParent(yyComDlgBoxWidget()) : nullptr); },
         [this, keys] {
           char* title = nullptr;
           XtVaGetValues(XtParent(yyComDlgBoxWidget()), XmNtitle, &title, nullptr);
           box_titles.emplace_back(title ? title : "");
           XSetInputFocus(xdisplay(), XtWindow(XtParent(yyComDlgBoxWidget())), RevertToParent, CurrentTime);
           xdotool_now("key " + keys);
         });
  }
  // The dialog with this resource is current and on show.
  static bool dialog_shown(int resid) {
    const int i = yyDialogFind(resid);
    return i >= 0 && viewable(zelvy_dialog::state().wDialogInfo[i].shell);
  }
  // The keyboard to a dialog that is loaded.
  static void focus_dialog(int resid) {
    DialogRecord& d = zelvy_dialog::state().wDialogInfo[yyDialogFind(resid)];
    XSetInputFocus(xdisplay(), XtWindow(d.shell), RevertToParent, CurrentTime);
    XSync(xdisplay(), False);
  }
  // The file selector is up: the name is typed into its name field and confirmed.
  void choose_in_selector(const std::string& name) {
    when([] { return dialog_shown(32110) || dialog_shown(32111); },
         [name] {
           auto& ds = zelvy_dialog::state();
           XSetInputFocus(xdisplay(), XtWindow(ds.wDialogInfo[ds.iDlgCur].shell), RevertToParent, CurrentTime);
           xdotool_now("key --clearmodifiers End shift+Home BackSpace");
           xdotool_now("type --delay 10 '" + name + "'");
           xdotool_now("key Return");
         });
  }
  // The user's hand inside a dialog's loop: no settling, that loop runs on.
  static void xdotool_now(const std::string& args) {
    XSync(xdisplay(), False);
    EXPECT_EQ(std::system(("xdotool " + args).c_str()), 0) << args;
  }
  // A click in the middle of a field of a loaded dialog.
  static void click_field(int resid, int fieldid) {
    DialogRecord& d = zelvy_dialog::state().wDialogInfo[yyDialogFind(resid)];
    for (FieldRecord& f : d.fields) {
      if (f.identifier != fieldid) continue;
      const Widget target = f.valueWidget ? f.valueWidget : f.widget;
      Dimension w = 0, h = 0;
      XtVaGetValues(target, XtNwidth, &w, XtNheight, &h, nullptr);
      int x = 0, y = 0;
      Window child = 0;
      XTranslateCoordinates(xdisplay(), XtWindow(XtIsWidget(target) ? target : XtParent(target)),
                            DefaultRootWindow(xdisplay()), w / 2, h / 2, &x, &y, &child);
      xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
      return;
    }
    ADD_FAILURE() << "no field " << fieldid;
  }
  // The selection of the text, as positions from 0; -1 -1 without one.
  std::pair<long, long> selection() {
    XmTextPosition a = 0, b = 0;
    if (!XmTextGetSelectionPosition(record().Text, &a, &b)) return {-1, -1};
    return {a, b};
  }

  std::vector<std::unique_ptr<Pending>> pending;
  std::vector<std::string> box_titles;

  fs::path dir;
  int handle = -1;
};

}  // namespace
