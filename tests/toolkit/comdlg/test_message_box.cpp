// Message boxes on a real X server, answered from outside as a user would:
// keys, clicks and the window manager's close, while the box's own loop runs.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <Xm/MessageB.h>
#include <Xm/Xm.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "support/lorx_io_messages.h"
#include "tests/toolkit/dialog/form_fixture.h"
#include "toolkit/base/error.h"
#include "toolkit/comdlg/message_box.h"
#include "toolkit/comdlg/message_box_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

constexpr unsigned long kPollMs = 30;
constexpr int kGuardPolls = 200;  // about six seconds, then the box is ended without an answer

void xdotool(const std::string& args) {
  XSync(xdisplay(), False);
  ASSERT_EQ(std::system(("xdotool " + args).c_str()), 0) << args;
}

// What to do once the box is on the screen; it runs inside the box's loop.
struct Pending {
  std::function<void(Widget)> act;
  int polls = 0;
  bool done = false;
};

bool viewable(Widget w) {
  if (!w || !XtIsRealized(w)) return false;
  XWindowAttributes at{};
  return XGetWindowAttributes(xdisplay(), XtWindow(w), &at) && at.map_state == IsViewable;
}

void poll(XtPointer data, XtIntervalId*) {
  auto* p = static_cast<Pending*>(data);
  Widget box = yyComDlgBoxWidget();
  if (!p->done && box && viewable(XtParent(box))) {
    XSync(xdisplay(), False);
    p->done = true;
    p->act(box);
    return;
  }
  if (++p->polls > kGuardPolls) {
    yyMsgModalEnd();  // never hang the suite: the box ends unanswered
    return;
  }
  XtAppAddTimeOut(zelvy_x::state().ixContext, kPollMs, poll, p);
}

// Shows a box and answers it with `act`; returns WInfoDialog(15), or -1 when
// the box ended unanswered.
int box_answered(int set, int icon, int def, std::string_view text, std::function<void(Widget)> act,
                 std::string_view title = "Test") {
  Pending p{std::move(act)};
  zelvy_comdlg::data().icdlgbut = 0;
  zelvy_data::data().ierr = 0;
  XtAppAddTimeOut(zelvy_x::state().ixContext, kPollMs, poll, &p);
  WMessageBox(set, icon, def, text, title);
  if (WInfoError(1) == 1004) return -1;
  return WInfoDialog(15);
}

// The text of a compound string, its line breaks as line feeds.
std::string text_of(XmString s) {
  XmString separator = XmStringSeparatorCreate();
  Arg a[4];
  int n = 0;
  XtSetArg(a[n], XmNpattern, const_cast<char*>("\n")); ++n;
  XtSetArg(a[n], XmNpatternType, XmCHARSET_TEXT); ++n;
  XtSetArg(a[n], XmNsubstitute, separator); ++n;
  XtSetArg(a[n], XmNincludeStatus, XmINSERT); ++n;
  XmParseMapping newline = XmParseMappingCreate(a, n);
  XmStringFree(separator);
  char* c = static_cast<char*>(XmStringUnparse(s, nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, &newline, 1, XmOUTPUT_ALL));
  XmParseMappingFree(newline);
  std::string out = c ? c : "";
  XtFree(c);
  return out;
}

std::string label_of(Widget w) {
  XmString s = nullptr;
  XtVaGetValues(w, XmNlabelString, &s, nullptr);
  std::string out = text_of(s);
  XmStringFree(s);
  return out;
}

struct Rect {
  int x = 0, y = 0, w = 0, h = 0;
};

Rect on_screen(Widget w) {
  XWindowAttributes at{};
  XGetWindowAttributes(xdisplay(), XtWindow(w), &at);
  Rect r{0, 0, at.width, at.height};
  Window child = 0;
  XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), 0, 0, &r.x, &r.y, &child);
  return r;
}

// A button of the box, which may be a gadget without a window of its own.
Rect button_on_screen(Widget b) {
  const Rect box = on_screen(XtParent(b));
  Position x = 0, y = 0;
  Dimension w = 0, h = 0;
  XtVaGetValues(b, XtNx, &x, XtNy, &y, XtNwidth, &w, XtNheight, &h, nullptr);
  return Rect{box.x + x, box.y + y, w, h};
}

// The shown buttons left to right, the default in brackets.
std::string buttons_of(Widget box) {
  Widget def = nullptr;
  XtVaGetValues(box, XmNdefaultButton, &def, nullptr);
  std::vector<std::pair<int, std::string>> shown;
  for (unsigned char c : {XmDIALOG_OK_BUTTON, XmDIALOG_CANCEL_BUTTON, XmDIALOG_HELP_BUTTON}) {
    Widget b = XmMessageBoxGetChild(box, c);
    if (!XtIsManaged(b)) continue;
    const std::string l = label_of(b);
    shown.emplace_back(button_on_screen(b).x, b == def ? "[" + l + "]" : l);
  }
  std::sort(shown.begin(), shown.end());
  std::string out;
  for (const auto& s : shown) out += (out.empty() ? "" : " ") + s.second;
  return out;
}

void press(Widget box, const std::string& label) {
  for (unsigned char c : {XmDIALOG_OK_BUTTON, XmDIALOG_CANCEL_BUTTON, XmDIALOG_HELP_BUTTON}) {
    Widget b = XmMessageBoxGetChild(box, c);
    if (!XtIsManaged(b) || label_of(b) != label) continue;
    const Rect r = button_on_screen(b);
    xdotool("mousemove " + std::to_string(r.x + r.w / 2) + " " + std::to_string(r.y + r.h / 2) + " click 1");
    return;
  }
  ADD_FAILURE() << "no button " << label;
}

// The window manager's close, as a window manager sends it.
void wm_close(Widget box) {
  Display* dpy = xdisplay();
  XEvent ev{};
  ev.xclient.type = ClientMessage;
  ev.xclient.window = XtWindow(XtParent(box));
  ev.xclient.message_type = XInternAtom(dpy, "WM_PROTOCOLS", False);
  ev.xclient.format = 32;
  ev.xclient.data.l[0] = static_cast<long>(XInternAtom(dpy, "WM_DELETE_WINDOW", False));
  ev.xclient.data.l[1] = CurrentTime;
  XSendEvent(dpy, ev.xclient.window, False, NoEventMask, &ev);
  XFlush(dpy);
}

std::vector<unsigned long> picture(Window w, int width, int height) {
  XImage* im = XGetImage(xdisplay(), w, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height), AllPlanes,
                         ZPixmap);
  std::vector<unsigned long> px;
  if (!im) return px;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) px.push_back(XGetPixel(im, x, y));
  XDestroyImage(im);
  return px;
}

// What a box shows.
struct Seen {
  std::string title, text, buttons;
  unsigned char type = 0;
};

Seen look_at(Widget box) {
  Seen seen;
  char* t = nullptr;
  XtVaGetValues(XtParent(box), XmNtitle, &t, nullptr);
  seen.title = t ? t : "";
  XmString s = nullptr;
  XtVaGetValues(box, XmNmessageString, &s, XmNdialogType, &seen.type, nullptr);
  seen.text = text_of(s);
  XmStringFree(s);
  seen.buttons = buttons_of(box);
  return seen;
}

// Runs a report that comes up in a box, and answers with Return.
Seen reported(const std::function<void()>& report) {
  Seen seen;
  Pending p{[&](Widget box) {
    seen = look_at(box);
    xdotool("key Return");
  }};
  XtAppAddTimeOut(zelvy_x::state().ixContext, kPollMs, poll, &p);
  report();
  return seen;
}

class MessageBoxTest : public MainFormTest {
 protected:
  static const FieldRecord& first_text_field() {
    const auto& d = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur];
    for (const FieldRecord& f : d.fields)
      if (f.type == zelvy_dialog::kString && f.widget) return f;
    return d.fields.front();
  }
};

}  // namespace

TEST_F(MessageBoxTest, EachSetShowsItsButtonsAndReturnGivesTheDefault) {
  struct Case {
    int set, def;
    const char* buttons;
    int answer, answerClass;  // WInfoDialog(15), (4)
  };
  const Case cases[] = {
      {0, 1, "[OK]", kAnswerOk, 1},
      {1, 1, "[OK] Cancel", kAnswerOk, 1},
      {1, 3, "OK [Cancel]", kAnswerCancel, 0},
      {2, 1, "[Retry] Cancel", kAnswerRetry, 1},
      {2, 2, "Retry [Cancel]", kAnswerCancel, 0},
      {3, 1, "[Yes] No", kAnswerYes, 1},
      {3, 2, "Yes [No]", kAnswerNo, 2},
      {4, 1, "[Yes] No Cancel", kAnswerYes, 1},
      {4, 2, "Yes [No] Cancel", kAnswerNo, 2},
      {4, 3, "Yes No [Cancel]", kAnswerCancel, 0},
      {5, 1, "Abort [Retry] Ignore", kAnswerRetry, 1},
      {5, 2, "[Abort] Retry Ignore", kAnswerAbort, 2},
      {5, 3, "Abort Retry [Ignore]", kAnswerIgnore, 0},
  };
  for (const Case& c : cases) {
    std::string seen;
    const int got = box_answered(c.set, 2, c.def, "Go on?", [&](Widget box) {
      seen = buttons_of(box);
      xdotool("key Return");
    });
    EXPECT_EQ(seen, c.buttons) << "set " << c.set << " default " << c.def;
    EXPECT_EQ(got, c.answer) << "set " << c.set << " default " << c.def;
    EXPECT_EQ(WInfoDialog(4), c.answerClass);
  }
}

TEST_F(MessageBoxTest, EscapeAndCloseGiveTheSameAnswer) {
  const int escape[] = {kAnswerOk, kAnswerCancel, kAnswerCancel, kAnswerNo, kAnswerCancel, kAnswerIgnore, 0};
  for (int set = 0; set < 6; ++set) {
    EXPECT_EQ(box_answered(set, 3, 1, "Escape", [](Widget) { xdotool("key Escape"); }), escape[set]) << set;
    EXPECT_EQ(box_answered(set, 3, 1, "Close", wm_close), escape[set]) << set;
  }
}

TEST_F(MessageBoxTest, ClickedButtonsAnswer) {
  EXPECT_EQ(box_answered(5, 1, 1, "Disk?", [](Widget b) { press(b, "Ignore"); }), kAnswerIgnore);
  EXPECT_EQ(box_answered(5, 1, 1, "Disk?", [](Widget b) { press(b, "Abort"); }), kAnswerAbort);
}

TEST_F(MessageBoxTest, TitleIconAndCentre) {
  Seen seen;
  Rect r;
  box_answered(4, 4, 1, "First line\rSecond line   ", [&](Widget box) {
    seen = look_at(box);
    r = on_screen(XtParent(box));
    std::filesystem::create_directories(ZELV_BINARY_DIR "/shots");
    ASSERT_EQ(std::system("xwd -root -silent | convert xwd:- png:" ZELV_BINARY_DIR "/shots/message-box.png"), 0);
    xdotool("key Escape");
  }, "Save changes   ");
  EXPECT_EQ(seen.title, "Save changes");
  EXPECT_EQ(seen.text, "First line\nSecond line");
  EXPECT_EQ(seen.type, XmDIALOG_INFORMATION);
  const Screen* sc = DefaultScreenOfDisplay(xdisplay());
  EXPECT_NEAR(r.x, (WidthOfScreen(sc) - r.w) / 2, 1);
  EXPECT_NEAR(r.y, (HeightOfScreen(sc) - r.h) / 2, 1);

  box_answered(0, 0, 1, "No title", [&](Widget box) {
    seen = look_at(box);
    xdotool("key Escape");
  }, "");
  EXPECT_EQ(seen.title, " ");
  EXPECT_EQ(seen.type, XmDIALOG_MESSAGE);
}

TEST_F(MessageBoxTest, LongMessageIsWrappedAndStaysOnScreen) {
  std::string message;
  for (int i = 0; message.size() < 2000; ++i) message += "reflection" + std::to_string(i) + " ";
  message.resize(2000);
  std::vector<std::string> lines;
  Rect r;
  box_answered(0, 3, 1, message, [&](Widget box) {
    XmString s = nullptr;
    XtVaGetValues(box, XmNmessageString, &s, nullptr);
    std::istringstream in(text_of(s));
    XmStringFree(s);
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    r = on_screen(XtParent(box));
    xdotool("key Return");
  });
  ASSERT_GT(lines.size(), 10u);
  const int limit = yyComDlgLineLimit();
  for (const std::string& l : lines) EXPECT_LE(yyDialogTextWidth(0, l), limit) << l;
  const Screen* sc = DefaultScreenOfDisplay(xdisplay());
  EXPECT_GE(r.x, 0);
  EXPECT_GE(r.y, 0);
  EXPECT_LE(r.x + r.w, WidthOfScreen(sc));
  EXPECT_LE(r.y + r.h, HeightOfScreen(sc));
}

TEST_F(MessageBoxTest, WindowBehindKeepsItsPictureAndTakesNoInput) {
  Widget shell0 = zelvy_win::state().wtShell[0];
  XMapRaised(xdisplay(), XtWindow(shell0));
  // No text field holds the keyboard before or after, so no caret blinks
  // into the pictures.
  const Screen* sc = DefaultScreenOfDisplay(xdisplay());
  const std::string away = "mousemove " + std::to_string(WidthOfScreen(sc) - 2) + " " + std::to_string(HeightOfScreen(sc) - 2);
  xdotool(away);
  XSetInputFocus(xdisplay(), DefaultRootWindow(xdisplay()), RevertToParent, CurrentTime);
  settle();
  const Window client = zelvy_win::state().wClient[0];
  const Rect main = on_screen(zelvy_win::state().wtClient[0]);
  const auto before = picture(client, main.w, main.h);
  ASSERT_FALSE(before.empty());

  std::string typed;
  WDialogGetString(first_text_field().identifier, typed);
  bool covered = false;
  box_answered(1, 2, 1, "Is the form frozen?", [&](Widget box) {
    const Rect b = on_screen(XtParent(box));
    covered = b.x < main.x + main.w && main.x < b.x + b.w && b.y < main.y + main.h && main.y < b.y + b.h;
    // A click on the menu bar and typing into the form go nowhere.
    const Rect frame = on_screen(shell0);
    xdotool("mousemove " + std::to_string(frame.x + 12) + " " + std::to_string(frame.y + 8) + " click 1");
    const Rect field = on_screen(first_text_field().widget);
    xdotool("mousemove " + std::to_string(field.x + 5) + " " + std::to_string(field.y + field.h / 2) +
            " click 1 type --delay 10 zz");
    EXPECT_FALSE(yyMenuIsOpen());
    xdotool(away + " key Escape");
  });
  EXPECT_TRUE(covered) << "the box should lie over the main window";
  std::string after_text;
  WDialogGetString(first_text_field().identifier, after_text);
  EXPECT_EQ(after_text, typed);
  EXPECT_EQ(WInfoDialog(15), kAnswerCancel);  // Escape still reached the box
  EXPECT_FALSE(yyMenuIsOpen());
  int type = 0;
  MessageRecord m;
  for (int i = 0; i < 50; ++i) {
    WMessagePeek(type, m);
    EXPECT_NE(type, MenuSelect);
    EXPECT_NE(type, MouseDown);
    EXPECT_NE(type, KeyDown);
    if (type == -1) break;
  }
  settle();
  EXPECT_TRUE(picture(client, main.w, main.h) == before) << "the form looks different after the box";
}

TEST_F(MessageBoxTest, DialogBesideTheBoxTakesNoClicks) {
  WDialogLoad(gombrel_ids::dialog::about);
  WDialogShow();
  const auto& ds = zelvy_dialog::state();
  const DialogRecord& d = ds.wDialogInfo[ds.iDlgCur];
  // At the top right, clear of the box in the middle.
  const Rect at = on_screen(d.shell);
  XMoveWindow(xdisplay(), XtWindow(d.shell), WidthOfScreen(XtScreen(d.shell)) - at.w - 4, 4);
  settle();
  Widget ok = field(1).widget;  // OK
  // Counted at the widget: the box's loop would drop the message anyway.
  static int activations;
  activations = 0;
  XtAddCallback(ok, XmNactivateCallback, [](Widget, XtPointer, XtPointer) { ++activations; }, nullptr);
  const Rect b = on_screen(ok);
  const std::string click = "mousemove " + std::to_string(b.x + 4) + " " + std::to_string(b.y + 4) + " click 1";
  EXPECT_EQ(box_answered(0, 4, 1, "The dialog waits", [&](Widget) { xdotool(click + " key Return"); }), kAnswerOk);
  EXPECT_EQ(activations, 0) << "the click reached the dialog behind the box";
  xdotool(click);
  settle();
  EXPECT_EQ(activations, 1) << "the same click once the box is gone";
  WDialogSelect(gombrel_ids::dialog::about);
  WDialogUnload();
}

TEST_F(MessageBoxTest, BoxOverAModalDialog) {
  // While the About dialog runs modal, a box comes up over it; the dialog
  // answers again once the box is gone.
  struct Run {
    int box = 0;
    Widget parent = nullptr;
    Widget aboutWidget = nullptr;
  } run;
  auto over = [](XtPointer data, XtIntervalId*) {
    auto* r = static_cast<Run*>(data);
    const auto& ds = zelvy_dialog::state();
    r->aboutWidget = ds.wDialogInfo[ds.iDlgCur].widget;
    // The keyboard goes to the dialog, as a window manager would give it.
    XSetInputFocus(xdisplay(), XtWindow(ds.wDialogInfo[ds.iDlgCur].shell), RevertToParent, CurrentTime);
    XSync(xdisplay(), False);
    r->box = box_answered(3, 2, 1, "Over the dialog", [r](Widget box) {
      r->parent = XtParent(XtParent(box));
      xdotool("key Escape");
    });
    // Then the dialog's own button ends its modal show.
    const auto& d = ds.wDialogInfo[ds.iDlgCur];
    for (const FieldRecord& f : d.fields)
      if (f.type == zelvy_dialog::kButton && f.widget) {
        const Rect b = on_screen(f.widget);
        xdotool("mousemove " + std::to_string(b.x + b.w / 2) + " " + std::to_string(b.y + b.h / 2) + " click 1");
        break;
      }
  };
  WDialogLoad(gombrel_ids::dialog::about);
  XtAppAddTimeOut(zelvy_x::state().ixContext, 300, over, &run);
  WDialogShow(-1, -1, 0, 1);
  EXPECT_EQ(run.box, kAnswerNo);
  EXPECT_EQ(run.parent, run.aboutWidget) << "the box hangs on the dialog";
  EXPECT_EQ(WInfoDialog(5), gombrel_ids::dialog::about);
  WDialogUnload();
}

TEST_F(MessageBoxTest, ReportsComeUpInBoxes) {
  yyComdlgAttach();
  Seen seen = reported([] { lorx_io_messages::error_message("The cell is missing"); });
  EXPECT_EQ(seen.title, "Error Message");
  EXPECT_EQ(seen.text, "The cell is missing");
  EXPECT_EQ(seen.type, XmDIALOG_WARNING);
  EXPECT_EQ(seen.buttons, "[OK]");

  seen = reported([] { lorx_io_messages::stop_message("Stop the run?"); });
  EXPECT_EQ(seen.title, " ");
  EXPECT_EQ(seen.type, XmDIALOG_ERROR);
  EXPECT_EQ(seen.buttons, "[Yes] No");
  EXPECT_EQ(WInfoDialog(15), kAnswerYes);

  // The toolkit's own error report at the box level; OK goes on.
  seen = reported([] {
    IDebugLevel(4);
    yyerror(1007, "WDialogLoad");
    IDebugLevel(0);
  });
  EXPECT_EQ(seen.title, "Library Error");
  EXPECT_EQ(seen.text, "Routine:WDialogLoad\nError=1007\nDialog not present in resource");
  EXPECT_EQ(seen.buttons, "[OK] Cancel");
  EXPECT_EQ(WInfoError(1), 1007);
  lorx_io_messages::message_box_hook = nullptr;
  yySetErrorBoxSink(nullptr);
}

namespace {

// No window open: the box hangs on the invisible root.
class BoxWithoutWindow : public MainFormTest {
 protected:
  void SetUp() override { ASSERT_EQ(zelvy_win::state().wWindow[0], 0u); }
  void TearDown() override {}
};

}  // namespace

TEST_F(BoxWithoutWindow, HangsOnTheRootWidgetAndIsCentred) {
  Widget parent = nullptr;
  Rect r;
  const int got = box_answered(1, 1, 1, "Before any window", [&](Widget box) {
    parent = XtParent(XtParent(box));
    r = on_screen(XtParent(box));
    press(box, "Cancel");
  });
  EXPECT_EQ(got, kAnswerCancel);
  EXPECT_EQ(parent, zelvy_x::state().rootWidget);
  const Screen* sc = DefaultScreenOfDisplay(xdisplay());
  EXPECT_NEAR(r.x, (WidthOfScreen(sc) - r.w) / 2, 1);
  EXPECT_NEAR(r.y, (HeightOfScreen(sc) - r.h) / 2, 1);
}
