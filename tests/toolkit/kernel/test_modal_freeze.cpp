// A modal box over the main form: the form keeps the picture it showed, also
// after another client's window covered and uncovered it, takes neither keys
// nor buttons, and shows what changed below once the box is gone.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/toolkit/dialog/form_fixture.h"
#include "toolkit/kernel/message_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

namespace ids = gombrel_ids;

// A picture of a window as the screen shows it.
struct Picture {
  int width = 0, height = 0;
  std::vector<unsigned long> pixels;
  unsigned long at(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
};

Picture grab(Window w) {
  Picture p;
  XWindowAttributes at{};
  XGetWindowAttributes(xdisplay(), w, &at);
  XImage* img = XGetImage(xdisplay(), w, 0, 0, static_cast<unsigned>(at.width), static_cast<unsigned>(at.height),
                          AllPlanes, ZPixmap);
  if (!img) return p;
  p.width = at.width;
  p.height = at.height;
  for (int y = 0; y < at.height; ++y)
    for (int x = 0; x < at.width; ++x) p.pixels.push_back(XGetPixel(img, x, y));
  XDestroyImage(img);
  return p;
}

// A rectangle in the coordinates of another window.
struct Box {
  int x = 0, y = 0, w = 0, h = 0;
  bool holds(int px, int py) const { return px >= x && py >= y && px < x + w && py < y + h; }
};

Box box_in(Window w, Window in) {
  XWindowAttributes at{};
  XGetWindowAttributes(xdisplay(), w, &at);
  Box b{0, 0, at.width, at.height};
  Window child;
  XTranslateCoordinates(xdisplay(), w, in, 0, 0, &b.x, &b.y, &child);
  return b;
}

// Pixels that differ between two pictures outside a rectangle.
int differences(const Picture& a, const Picture& b, const Box& skip) {
  if (a.width != b.width || a.height != b.height) return -1;
  int n = 0;
  for (int y = 0; y < a.height; ++y)
    for (int x = 0; x < a.width; ++x)
      if (!skip.holds(x, y) && a.at(x, y) != b.at(x, y)) ++n;
  return n;
}

void xdotool(const std::string& args) {
  XFlush(xdisplay());
  const std::string cmd = "xdotool " + args + " >/dev/null 2>&1";
  EXPECT_EQ(std::system(cmd.c_str()), 0) << cmd;
}

void screenshot(const std::string& name) {
  XSync(xdisplay(), False);
  const std::string dir = std::string(ZELV_BINARY_DIR) + "/shots";
  std::filesystem::create_directories(dir);
  std::system(("import -window root " + dir + "/" + name + " >/dev/null 2>&1").c_str());
}

// Steps run one after the other from inside the modal loop, as timeouts.
std::vector<std::function<void()>> steps;
std::size_t next_step = 0;

void run_step(XtPointer, XtIntervalId*) {
  if (next_step >= steps.size()) return;
  steps[next_step++]();
  if (next_step < steps.size()) XtAppAddTimeOut(zelvy_x::state().ixContext, 300, run_step, nullptr);
}

class ModalFreeze : public MainFormTest {};

TEST_F(ModalFreeze, WindowsBehindAModalBoxKeepTheirPictureAndTakeNoInput) {
  auto& ws = zelvy_win::state();
  const Window frame = ws.wWindow[0];
  WDialogPutString(ids::main_form::title, "Silicon");
  settle();
  const Picture before = grab(frame);
  const Widget title = field(ids::main_form::title).widget;
  const Box titlebox = box_in(XtWindow(title), frame);

  WDialogLoad(ids::dialog::about);
  const int about = zelvy_dialog::state().iDlgCur;
  Display* other = XOpenDisplay(nullptr);
  ASSERT_NE(other, nullptr);
  Window cover = 0;
  Box dialog;
  Picture during;
  std::string typed_into_title;
  int depth = -1;
  Window freeze = 0;

  steps = {
      [&] {
        depth = yyMsgModalDepth();
        freeze = ws.WinInfo[0].Freeze.cover;
        dialog = box_in(XtWindow(zelvy_dialog::state().wDialogInfo[about].shell), frame);
        // Another client's window covers the form, and goes again.
        XWindowAttributes at{};
        XGetWindowAttributes(xdisplay(), frame, &at);
        int rx = 0, ry = 0;
        Window child;
        XTranslateCoordinates(xdisplay(), frame, DefaultRootWindow(xdisplay()), 0, 0, &rx, &ry, &child);
        XSetWindowAttributes ca{};
        ca.override_redirect = True;
        ca.background_pixel = BlackPixel(other, DefaultScreen(other));
        cover = XCreateWindow(other, DefaultRootWindow(other), rx, ry, static_cast<unsigned>(at.width),
                              static_cast<unsigned>(at.height), 0, CopyFromParent, InputOutput, CopyFromParent,
                              CWOverrideRedirect | CWBackPixel, &ca);
        XMapRaised(other, cover);
        XSync(other, False);
      },
      [&] {
        screenshot("modal_covered.png");
        XDestroyWindow(other, cover);
        XSync(other, False);
      },
      [&] {
        // The form's text changes below the picture; the screen must not show it.
        WDialogSelect(kForm);
        WDialogPutString(ids::main_form::title, "Germanium");
        XSync(xdisplay(), False);
      },
      [&] {
        during = grab(frame);
        screenshot("modal_uncovered.png");
        // A click into the form's title and keys typed there reach nothing.
        int rx = 0, ry = 0;
        Window child;
        XTranslateCoordinates(xdisplay(), XtWindow(title), DefaultRootWindow(xdisplay()), 4, 4, &rx, &ry, &child);
        xdotool("mousemove " + std::to_string(rx) + " " + std::to_string(ry) + " click 1");
        xdotool("type --delay 30 xyz");
        xdotool("key Delete BackSpace");
      },
      [&] {
        WDialogGetString(ids::main_form::title, typed_into_title);
        WDialogSelect(ids::dialog::about);
        // The box itself still takes the pointer: its OK button ends it.
        const FieldRecord& ok = zelvy_dialog::state().wDialogInfo[about].fields[static_cast<std::size_t>(
            yyDialogFindField(ids::about::ok, about))];
        int rx = 0, ry = 0;
        Window child;
        XTranslateCoordinates(xdisplay(), XtWindow(ok.widget), DefaultRootWindow(xdisplay()), 5, 5, &rx, &ry, &child);
        xdotool("mousemove " + std::to_string(rx) + " " + std::to_string(ry) + " click 1");
      },
  };
  next_step = 0;
  XtAppAddTimeOut(zelvy_x::state().ixContext, 400, run_step, nullptr);
  WDialogShow(-1, -1, 0, 1);  // returns when OK is pressed
  ASSERT_EQ(next_step, steps.size());
  XCloseDisplay(other);

  EXPECT_EQ(depth, 1);
  EXPECT_NE(freeze, 0u);
  EXPECT_EQ(WInfoDialog(1), ids::about::ok);
  // Outside the box the form showed the picture it had, not the new text.
  EXPECT_EQ(differences(before, during, dialog), 0);
  EXPECT_EQ(typed_into_title, "Germanium");

  WDialogUnload();
  WDialogSelect(kForm);
  EXPECT_EQ(yyMsgModalDepth(), 0);
  EXPECT_EQ(ws.WinInfo[0].Freeze.cover, 0u);
  EXPECT_EQ(ws.WinInfo[0].Locked, 0);
  settle();
  // Thawed, the form shows its own text again.
  const Picture after = grab(frame);
  int changed = 0;
  for (int y = titlebox.y; y < titlebox.y + titlebox.h; ++y)
    for (int x = titlebox.x; x < titlebox.x + titlebox.w; ++x) changed += before.at(x, y) != after.at(x, y);
  EXPECT_GT(changed, 0);
  screenshot("modal_after.png");
}

TEST_F(ModalFreeze, LevelsNestAndWindowTypesAreKnown) {
  auto& ws = zelvy_win::state();
  int handle = -1;
  EXPECT_EQ(yyMsgWindowType(ws.wWindow[0], handle), 1);
  EXPECT_EQ(handle, 0);
  EXPECT_EQ(yyMsgWindowType(ws.wClient[0]), 2);
  EXPECT_EQ(yyMsgWindowType(ws.wShell[0]), 8);
  // The form in the root window is a dialog combined with it.
  EXPECT_EQ(yyMsgWindowType(XtWindow(field(ids::main_form::title).widget), handle), 12);
  EXPECT_EQ(handle, 0);
  EXPECT_EQ(yyMsgWindowType(DefaultRootWindow(xdisplay())), -1);

  yymessagemodal(1);
  yymessagemodal(1);
  EXPECT_EQ(yyMsgModalDepth(), 2);
  EXPECT_EQ(ws.WinInfo[0].FreezeCount, 2);
  EXPECT_EQ(ws.WinInfo[0].Locked, 1);
  yymessagemodal(0);
  EXPECT_NE(ws.WinInfo[0].Freeze.cover, 0u);  // the outer level still holds it
  yymessagemodal(0);
  yymessagemodal(0);  // one pop too many changes nothing
  EXPECT_EQ(yyMsgModalDepth(), 0);
  EXPECT_EQ(ws.WinInfo[0].Freeze.cover, 0u);
  EXPECT_EQ(ws.WinInfo[0].Locked, 0);
}

// A dialog the program draws on keeps its picture under a modal level like a
// window does; the others need none, their widgets repaint themselves.
TEST_F(ModalFreeze, OnlyDialogsDrawnOnAreFrozen) {
  DialogRecord& form = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur];
  yymessagemodal(1);
  EXPECT_EQ(form.freezeCount, 0);
  yymessagemodal(0);

  int error = 0;
  yydialoggrselect_(ids::main_form::title, error);
  EXPECT_EQ(error, 1006);  // only pictures are drawn on
  yydialoggrselect_(0, error);
  EXPECT_EQ(error, 0);
  yymessagemodal(1);
  yymessagemodal(1);
  EXPECT_EQ(form.freezeCount, 2);
  EXPECT_NE(form.freeze.cover, 0u);
  yymessagemodal(0);
  EXPECT_NE(form.freeze.cover, 0u);
  yymessagemodal(0);
  EXPECT_EQ(form.freezeCount, 0);
  EXPECT_EQ(form.freeze.cover, 0u);
  EXPECT_EQ(form.freeze.pixmap, 0u);
}

}  // namespace
