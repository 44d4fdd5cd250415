// Split windows on a real X server: panes side by side and above each other,
// the sash dragged with the pointer to where it stops, a fixed pane that
// refuses; and the images of the resources as the pointer and the icon.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "app/resources/gombrel_resources.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/message_private.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

namespace {

constexpr int kGoCursor = 32138;  // a cursor image of the resources

struct Geometry {
  int x, y, w, h;
  bool operator==(const Geometry&) const = default;
};
std::ostream& operator<<(std::ostream& o, const Geometry& g) {
  return o << g.w << "x" << g.h << "+" << g.x << "+" << g.y;
}

class SplitTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    WInitialise();
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    zelvy_data::data().ierr = 0;
    WindowOpen(7, 10, 10, 600, 400, {}, {}, {}, "Split test");
    pump(200);
  }
  void TearDown() override {
    WindowClose();
    pump(100);
  }

  // Runs the loop for a while, through the toolkit's whole event path.
  static void pump(int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    int type = 0;
    MessageRecord m;
    while (std::chrono::steady_clock::now() < end) {
      XSync(xdisplay(), False);
      do WMessagePeek(type, m);
      while (type != -1);
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
  static void xdotool(const std::string& args) {
    XFlush(xdisplay());
    const std::string cmd = "xdotool " + args + " >/dev/null 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd;
  }
  static Geometry geometry(Window w) {
    XWindowAttributes at{};
    XGetWindowAttributes(xdisplay(), w, &at);
    return {at.x, at.y, at.width, at.height};
  }
  static void root_point(Window w, int x, int y, int& rx, int& ry) {
    Window child;
    XTranslateCoordinates(xdisplay(), w, DefaultRootWindow(xdisplay()), x, y, &rx, &ry, &child);
  }
  // Presses on the sash's middle and lets go at a point of the parent's client area.
  static void drag_sash(int h, int tox, int toy) {
    const Window sash = XtWindow(yyWindowComponent(h, kCompSash));
    const Geometry g = geometry(sash);
    int sx = 0, sy = 0, tx = 0, ty = 0;
    root_point(sash, g.w / 2, g.h / 2, sx, sy);
    root_point(zelvy_win::state().wClient[h], tox, toy, tx, ty);
    xdotool("mousemove " + std::to_string(sx) + " " + std::to_string(sy) + " mousedown 1");
    pump(100);
    xdotool("mousemove " + std::to_string((sx + tx) / 2) + " " + std::to_string((sy + ty) / 2));
    pump(100);
    xdotool("mousemove " + std::to_string(tx) + " " + std::to_string(ty) + " mouseup 1");
    pump(200);
  }
  static Geometry frame_of(int pane) { return geometry(zelvy_win::state().wWindow[pane]); }
  static void paint(int pane, int colour) {
    WindowSelect(pane);
    yywindowclear(0, 0, 2000, 2000, colour);
  }
  static void screenshot(const std::string& name) {
    XSync(xdisplay(), False);
    const std::string dir = std::string(ZELV_BINARY_DIR) + "/shots";
    std::filesystem::create_directories(dir);
    std::system(("import -window root " + dir + "/" + name + " >/dev/null 2>&1").c_str());
  }
};

TEST_F(SplitTest, SideBySideWithTheSashDraggedToItsLimits) {
  int a = -1, b = -1, status = -1;
  yywindowsplit(0, 0, 0, -1, "Left", "Right", a, b, status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(std::pair(a, b), std::pair(1, 2));
  EXPECT_EQ(WInfoWindow(10), 5);
  pump(200);
  // 600 pixels: two panes of 298 and a sash of 4 in the middle.
  EXPECT_EQ(frame_of(a), (Geometry{0, 0, 298, 400}));
  EXPECT_EQ(frame_of(b), (Geometry{302, 0, 298, 400}));
  EXPECT_EQ(geometry(XtWindow(yyWindowComponent(0, kCompSash))), (Geometry{298, 0, 4, 400}));
  // Each pane has its title bar above its client area, and its own handle.
  EXPECT_EQ(geometry(zelvy_win::state().wClient[b]), (Geometry{0, kPaneTitleHeight, 298, 400 - kPaneTitleHeight}));
  EXPECT_EQ(yyMsgWindowType(XtWindow(yyWindowComponent(a, kCompTitle))), 11);
  WindowSelect(b);
  EXPECT_EQ(WInfoWindow(1), 298);
  paint(a, 0x30c0f0);
  paint(b, 0xf0a040);
  screenshot("split_side_by_side.png");

  // A pane's menu shows on the split's bar while the pane is active.
  yymenu(30001, b, status);
  ASSERT_EQ(status, 0);
  auto& ms = zelvy_menu::state();
  EXPECT_EQ(ms.pwRootMenuAct[b], nullptr);
  EXPECT_FALSE(ms.pwRootMenuSub[b]->Created);
  int bx = 0, by = 0;
  root_point(zelvy_win::state().wClient[b], 40, 40, bx, by);
  xdotool("mousemove " + std::to_string(bx) + " " + std::to_string(by) + " click 1");
  pump(200);
  ASSERT_EQ(ms.pwRootMenuAct[0], ms.pwRootMenuSub[b].get());
  EXPECT_TRUE(ms.pwRootMenuSub[b]->Created);
  const int bar = ms.iMenuHeight;
  EXPECT_EQ(geometry(ms.pwRootMenuSub[b]->PopupWindows[0]).y, 0);
  EXPECT_EQ(geometry(zelvy_win::state().wClient[0]), (Geometry{0, bar, 600, 400 - bar}));
  EXPECT_EQ(frame_of(b).h, 400 - bar);
  screenshot("split_pane_menu.png");

  drag_sash(0, 150, 200);
  EXPECT_EQ(frame_of(a).w, 150 - kSashWidth / 2);
  EXPECT_EQ(frame_of(b).x, 150 - kSashWidth / 2 + kSashWidth);
  // Past the left edge the sash stops at 0, past the right at the width less 5.
  drag_sash(0, -10, 200);  // the screen's left edge
  EXPECT_EQ(yyWindowSplitRecord(0)->SashPos, 0);
  EXPECT_EQ(frame_of(b).x, kSashWidth);
  drag_sash(0, 900, 200);
  EXPECT_EQ(yyWindowSplitRecord(0)->SashPos, 600 - 5);
  EXPECT_EQ(frame_of(a).w, 595);

  // A pane closed takes the whole split with it.
  WindowCloseChild(a);
  EXPECT_EQ(WInfoWindow(10), 0);
  EXPECT_FALSE(yywindowexists(a));
  EXPECT_FALSE(yywindowexists(b));
  EXPECT_EQ(yyWindowComponent(0, kCompSash), nullptr);
  EXPECT_EQ(ms.pwRootMenuAct[0], nullptr);
  EXPECT_EQ(WInfoWindow(2), 400);
}

TEST_F(SplitTest, AboveEachOtherAFixedPaneAndWhatCannotBeSplit) {
  int child = -1;
  WindowOpenChild(child, 7, 300, 100, 300, 300, {}, {}, {}, "Split child");
  ASSERT_GT(child, 0);
  pump(200);
  int a = -1, b = -1, status = -1;
  yywindowsplit(kSplitAbove, kPaneNoTitle, kPaneFixed, 100, "", "Fixed", a, b, status);
  ASSERT_EQ(status, 0);
  pump(200);
  EXPECT_EQ(frame_of(a), (Geometry{0, 0, 300, 100}));
  EXPECT_EQ(frame_of(b), (Geometry{0, 104, 300, 196}));
  EXPECT_EQ(yyWindowComponent(a, kCompTitle), nullptr);
  paint(a, 0x40c040);
  paint(b, 0x4040c0);
  screenshot("split_above.png");
  // The fixed pane holds the sash where it is.
  drag_sash(child, 150, 250);
  EXPECT_EQ(yyWindowSplitRecord(child)->SashPos, 100);
  EXPECT_EQ(frame_of(b).y, 104);

  // A split window can't be split again, nor can a window with a form.
  WindowSelect(child);
  int c = -1, d = -1;
  yywindowsplit(0, 0, 0, -1, "", "", c, d, status);
  EXPECT_EQ(status, 1038);
  EXPECT_EQ(c, -1);
  WindowCloseChild(child);
  EXPECT_FALSE(yywindowexists(a));
  EXPECT_EQ(WInfoWindow(15), 50);
}

TEST_F(SplitTest, DraggingFollowsTheProportionsOnResize) {
  int a = -1, b = -1, status = -1;
  yywindowsplit(kSplitProportional, 0, 0, 149, "A", "B", a, b, status);
  ASSERT_EQ(status, 0);
  WindowSelect(0);
  yywindowsizepos(-999999, -999999, 1196, 400, 1);
  pump(300);
  // A quarter of what the sash leaves stays a quarter.
  EXPECT_EQ(frame_of(a).w, 298);
  EXPECT_EQ(frame_of(b).w, 1196 - 298 - kSashWidth);
}

TEST_F(SplitTest, CursorFromAResourceImageAndTheProgramIcon) {
  WCursorShape(kGoCursor);
  EXPECT_EQ(zelvy_data::data().ierr, 0);
  EXPECT_EQ(zelvy_x::state().iCursor, 12);
  EXPECT_NE(zelvy_x::state().ixCursor[12], 0u);
  // Scope 2 leaves a window's own cursor alone; scope 0 replaces it.
  int child = -1;
  WindowOpenChild(child, 7, 0, 0, 100, 100);
  WCursorShape(3, 1);
  EXPECT_EQ(zelvy_win::state().iCursorWin[child], 3);
  WCursorShape(kGoCursor, 2);
  EXPECT_NE(zelvy_win::state().hCursorWin[child], 0u);
  WCursorShape(0, 0);
  EXPECT_EQ(zelvy_win::state().hCursorWin[child], 0u);
  WCursorShape(-1);
  EXPECT_EQ(zelvy_data::data().ierr, 1015);
  zelvy_data::data().ierr = 0;
  WCursorShape(31999);  // no such image
  EXPECT_EQ(zelvy_data::data().ierr, 1015);

  // The root window's shell carries the program icon, 32 by 32.
  XWMHints* hints = XGetWMHints(xdisplay(), zelvy_win::state().wShell[0]);
  ASSERT_NE(hints, nullptr);
  EXPECT_TRUE(hints->flags & IconPixmapHint);
  EXPECT_TRUE(hints->flags & IconWindowHint);
  Window root;
  int x, y;
  unsigned w = 0, h = 0, border, depth;
  XGetGeometry(xdisplay(), hints->icon_pixmap, &root, &x, &y, &w, &h, &border, &depth);
  EXPECT_EQ(std::pair(w, h), std::pair(32u, 32u));
  XFree(hints);
}

int shutdowns = 0;
void count_shutdown(int) { ++shutdowns; }

TEST_F(SplitTest, AConvertedWindowRevertsToAPlainOneWithItsMenu) {
  auto& ws = zelvy_win::state();
  auto& ms = zelvy_menu::state();
  int status = -1;
  yymenu(30001, 0, status);
  ASSERT_EQ(status, 0);
  const MenuRecord* own = ms.pwRootMenuSub[0].get();
  // What an editor does to a window: its content, its menu and accelerators.
  WindowRecord& r = ws.WinInfo[0];
  r.Kind = 1;
  r.Content = XtVaCreateManagedWidget("Content", widgetClass, ws.wtClient[0], XtNwidth, 10, XtNheight, 10, nullptr);
  r.KindShutdown = count_shutdown;
  const std::vector<MenuDescriptor> editor = {{true, "Edit", 0, "", 501, kMenuHasSub, 0, 0, 0},
                                              {true, "Cut", 0, "", 502, 0, 4, XK_X, 0}};
  yyMenuKindPush(0, yyMenuLoadDynamicMenu(editor), yyMenuLoadDynamicAccel(editor));
  EXPECT_EQ(ms.pwRootMenuAct[0]->find(502), 1);
  EXPECT_EQ(yyMenuMatchAccel(ms.pwAccelTable[0], XK_x, 4), 502);

  int split = -1, other = -1;
  yywindowsplit(0, 0, 0, -1, "", "", split, other, status);
  EXPECT_EQ(status, 1038);  // only a plain window splits

  WindowSelect(0);
  shutdowns = 0;
  yywindowrevert(status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(shutdowns, 1);
  EXPECT_EQ(r.Kind, 0);
  EXPECT_EQ(r.Content, nullptr);
  EXPECT_EQ(ms.pwRootMenuSub[0].get(), own);
  EXPECT_EQ(ms.pwRootMenuAct[0], own);
  EXPECT_TRUE(own->Created);
  EXPECT_EQ(yyMenuMatchAccel(ms.pwAccelTable[0], XK_x, 4), 0);
  yywindowrevert(status);  // a plain window has nothing to revert
  EXPECT_EQ(status, 1096);
}

}  // namespace
