// The main menu bar on a real X server: drawn in the root window's frame,
// opened by pointer and keyboard, walked, chosen. Input comes through
// xdotool, so that it passes the server's pointer grab like a user's would.
// Screenshots are left in the build directory (shots/) to be looked at.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Intrinsic.h>
#include <X11/Xlib.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "app/resources/gombrel_resources.h"
#include "toolkit/kernel/resources.h"

namespace {

class MenuDisplay : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    WInitialise();
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    zelvy_data::data().ierr = 0;
    zelvy_menu::state().itemstates.clear();
    WindowOpen(7 | 32, 20, 20, 640, 400, 30001, {}, {}, "Menu test");
    int status = -1;
    yymenu(30001, 0, status);  // replaces what the window may have made itself
    ASSERT_EQ(status, 0);
    ASSERT_NE(zelvy_menu::state().pwRootMenuSub[0], nullptr);
    ASSERT_TRUE(zelvy_menu::state().pwRootMenuSub[0]->Created);
    pump(300);
    messages.clear();
  }
  void TearDown() override {
    yyMenuDeactivate();
    yyMenuWindowClosed(0);
    WindowClose();
    pump(100);
  }

  MenuRecord& menu() { return *zelvy_menu::state().pwRootMenuSub[0]; }

  // Runs the events that arrive within the time given through the menu pass
  // and on to the widgets, keeping what the pass makes.
  void pump(int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (std::chrono::steady_clock::now() < end) {
      XSync(xdisplay(), False);
      while (XtAppPending(zelvy_x::state().ixContext) & XtIMXEvent) {
        XEvent ev;
        XtAppNextEvent(zelvy_x::state().ixContext, &ev);
        MenuMessage made;
        if (!yyMenuProcessEvent(ev, made)) XtDispatchEvent(&ev);
        if (made.type != 0) messages.push_back(made);
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }

  static void xdotool(const std::string& args) {
    XFlush(xdisplay());
    const std::string cmd = "xdotool " + args + " >/dev/null 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd;
  }

  static XWindowAttributes attributes(Window w) {
    XWindowAttributes at{};
    XGetWindowAttributes(xdisplay(), w, &at);
    return at;
  }
  // Moves the pointer to a point of a window, then does what `then` says.
  void pointer_to(Window w, int x, int y, const std::string& then = "") {
    Window child;
    XTranslateCoordinates(xdisplay(), w, DefaultRootWindow(xdisplay()), x, y, &x, &y, &child);
    xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + then);
    pump(250);
  }
  // To the middle of an item's window.
  void pointer_to(int id, const std::string& then = "") {
    const int i = menu().find(id);
    ASSERT_GE(i, 0) << id;
    const Window w = menu().ItemWindows[i];
    const XWindowAttributes at = attributes(w);
    pointer_to(w, at.width / 2, at.height / 2, then);
  }
  void click(int id) { pointer_to(id, " click 1"); }
  void keys(const std::string& names) {
    xdotool("key --delay 40 " + names);
    pump(250);
  }
  // The pointer over the client area, where keys go without a window manager.
  void point_at_client() { pointer_to(zelvy_win::state().wClient[0], 300, 250); }

  bool popup_shown(int parent_id) {
    return attributes(menu().PopupWindows[menu().ItemSubPopup[menu().find(parent_id)]]).map_state == IsViewable;
  }
  unsigned long pixel_in_item(int id, int x, int y) {
    XImage* img = XGetImage(xdisplay(), menu().ItemWindows[menu().find(id)], x, y, 1, 1, AllPlanes, ZPixmap);
    const unsigned long p = img ? XGetPixel(img, 0, 0) : 0;
    if (img) XDestroyImage(img);
    return p;
  }
  static void screenshot(const std::string& name) {
    XSync(xdisplay(), False);
    const std::string dir = std::string(ZELV_BINARY_DIR) + "/shots";
    std::filesystem::create_directories(dir);
    const std::string cmd = "import -window root " + dir + "/" + name + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(cmd.c_str()), 0);
  }
  int chosen() const { return messages.size() == 1 && messages[0].type == MenuSelect ? messages[0].value1 : 0; }

  std::vector<MenuMessage> messages;
};

TEST_F(MenuDisplay, BarSitsInTheFrame) {
  const MenuRecord& m = menu();
  const XWindowAttributes bar = attributes(m.PopupWindows[0]);
  EXPECT_EQ(bar.map_state, IsViewable);
  EXPECT_EQ((std::vector{bar.x, bar.y, bar.width, bar.height}), (std::vector{0, 0, 640, zelvy_menu::state().iMenuHeight}));
  EXPECT_EQ(yyMenuBarHeight(0), zelvy_menu::state().iMenuHeight);
  int x = 0;
  for (int id : {40001, 40008, 40009, 40004}) {
    const XWindowAttributes at = attributes(m.ItemWindows[m.find(id)]);
    EXPECT_EQ(at.x, x) << id;
    EXPECT_EQ(at.height, zelvy_menu::state().iMenuHeight);
    EXPECT_GT(at.width, 11);
    x += at.width;
  }
  screenshot("menu_bar.png");

  // Too narrow for one row: the bar wraps.
  zelvy_win::state().WinInfo[0].FrameWidth = 60;
  EXPECT_GE(yyMenuBarHeight(0), 2 * zelvy_menu::state().iMenuHeight);
}

TEST_F(MenuDisplay, ClickOpensFileAndChoosesOpen) {
  click(40001);
  ASSERT_TRUE(yyMenuIsOpen());
  EXPECT_TRUE(popup_shown(40001));
  EXPECT_EQ(pixel_in_item(40001, 2, 2), zelvy_x::state().appData.menuselBackColor);
  // The drop-down hangs from the item's bottom edge.
  int ix = 0, iy = 0;
  Window child;
  XTranslateCoordinates(xdisplay(), menu().ItemWindows[menu().find(40001)], DefaultRootWindow(xdisplay()), 0, 0, &ix,
                        &iy, &child);
  const XWindowAttributes pop = attributes(menu().PopupWindows[menu().ItemSubPopup[menu().find(40001)]]);
  EXPECT_EQ(std::pair(pop.x, pop.y), std::pair(ix, iy + zelvy_menu::state().iMenuHeight - 1));
  screenshot("menu_file_open.png");
  EXPECT_TRUE(messages.empty());  // nothing comes out while it is open

  click(40003);
  EXPECT_EQ(chosen(), 40003);
  EXPECT_EQ(messages[0].win, 0);
  EXPECT_FALSE(yyMenuIsOpen());
  EXPECT_FALSE(popup_shown(40001));
}

TEST_F(MenuDisplay, PointerMovesAlongTheBarAndRunActsWhenClicked) {
  click(40001);
  pointer_to(40009);
  EXPECT_FALSE(popup_shown(40001));
  EXPECT_TRUE(popup_shown(40009));
  click(40009);  // a second click on the open top item closes the menu
  EXPECT_FALSE(yyMenuIsOpen());
  EXPECT_TRUE(messages.empty());
  click(40008);
  EXPECT_EQ(chosen(), 40008);
  EXPECT_FALSE(yyMenuIsOpen());
}

TEST_F(MenuDisplay, KeyboardWalk) {
  point_at_client();
  keys("F10");
  ASSERT_TRUE(yyMenuIsOpen());
  EXPECT_FALSE(popup_shown(40001));
  keys("Right Right Down");
  EXPECT_TRUE(popup_shown(40009));
  keys("Down");
  screenshot("menu_view_keyboard.png");
  keys("Return");
  EXPECT_EQ(chosen(), 40013);
  EXPECT_FALSE(yyMenuIsOpen());
  EXPECT_FALSE(popup_shown(40009));
}

TEST_F(MenuDisplay, GreyedItemsCannotBeChosenAndEscapeOrAPressOutsideCloses) {
  WMenuSetState(40005, 1, 0);
  WMenuSetState(40006, 2, 1);
  click(40001);
  click(40005);
  EXPECT_TRUE(messages.empty());
  EXPECT_TRUE(yyMenuIsOpen());
  screenshot("menu_greyed.png");
  point_at_client();
  keys("Escape");
  EXPECT_FALSE(yyMenuIsOpen());

  // A press outside closes too.
  click(40004);
  ASSERT_TRUE(popup_shown(40004));
  pointer_to(zelvy_win::state().wClient[0], 300, 250, " click 1");
  EXPECT_FALSE(yyMenuIsOpen());
  EXPECT_FALSE(popup_shown(40004));
  EXPECT_TRUE(messages.empty());
}

TEST_F(MenuDisplay, PromptsShowInTheStatusBar) {
  int status = -1;
  yymenuprompt(40003, status, "Opens a job file");
  EXPECT_EQ(status, 0);
  click(40001);
  const StatusBarRecord& bar = *zelvy_sbar::state().psbarInfo[0];
  EXPECT_EQ(bar.DisplayMode, 2);
  EXPECT_TRUE(bar.PromptText.empty());  // File has no prompt
  point_at_client();
  keys("Down Down");
  EXPECT_EQ(bar.PromptText, "Opens a job file");
  screenshot("menu_prompt.png");
  keys("Escape");
  EXPECT_EQ(bar.DisplayMode, 1);
}

TEST_F(MenuDisplay, LongerTextWidensThePopup) {
  const int p = menu().ItemSubPopup[menu().find(40001)];
  const int before = menu().PopupWidth[p];
  WMenuSetString(40003, "&Open a job file from anywhere\tCtrl+O");
  EXPECT_GT(menu().PopupWidth[p], before + 50);
  click(40001);
  EXPECT_EQ(attributes(menu().ItemWindows[menu().find(40003)]).width, menu().PopupWidth[p]);
  screenshot("menu_long_text.png");
  keys("o");  // its new mnemonic
  EXPECT_EQ(chosen(), 40003);
}

TEST_F(MenuDisplay, FloatingMenuWithCascades) {
  WMenuFloatLoad(30001);
  ASSERT_NE(zelvy_menu::state().pwFloatMenu, nullptr);
  WMenuSetState(40012, 1, 0);  // acts on the floating menu until it is shown
  EXPECT_EQ(menu().greyed(menu().find(40012)), false);
  // Close to the right edge of the screen: the cascade opens to the left.
  const int sx = zelvy_x::state().iDispWidth - 150;
  WMenuFloatShow(sx, 200, 1);
  ASSERT_TRUE(yyMenuIsOpen());
  MenuRecord& f = *zelvy_menu::state().pwFloatMenu;
  EXPECT_EQ(f.OpenPopups, std::vector<int>{0});
  point_at_client();
  keys("Down Down Down Right");  // to View, and into its pop-up
  const int view = f.find(40009);
  ASSERT_EQ(f.OpenPopups.size(), 2u);
  const XWindowAttributes top = attributes(f.PopupWindows[0]), sub = attributes(f.PopupWindows[f.ItemSubPopup[view]]);
  EXPECT_LT(sub.x + sub.width, top.x + 5);
  EXPECT_EQ(zelvy_menu::state().iMenuDir, -1);
  EXPECT_EQ(f.ItemIds[zelvy_menu::state().iCurMenuItem], 40012);  // greyed, yet highlighted
  screenshot("menu_floating.png");
  keys("Return");
  EXPECT_TRUE(messages.empty());
  keys("Down Return");
  EXPECT_EQ(chosen(), 40013);
  EXPECT_EQ(zelvy_menu::state().pwFloatMenu, nullptr);  // gone once closed
  EXPECT_EQ(zelvy_menu::state().iMenuDir, 1);
}

}  // namespace
