// A right click on a toolbar, as a user gives it: the message names the
// button under the pointer (0 for the bar between buttons), the toolbar, the
// screen position and the keys held; a left click still only presses.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/IntrinsicP.h>
#include <X11/Xlib.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>

#include "app/resources/gombrel_ids.h"
#include "app/resources/gombrel_resources.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/message_private.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/toolbar_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

namespace {

constexpr int kMainToolbar = gombrel_ids::toolbar::main;
constexpr int kOpen = 40003, kRun = 40008;
constexpr int kWithStatusBar = 32, kResizable = 7;
constexpr int kCtrl = 1, kShift = 2;

class ToolbarContext : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    WInitialise();
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    const int bars[4] = {kMainToolbar, 0, 0, 0};
    WindowOpen(kResizable | kWithStatusBar, 20, 20, 500, 300, gombrel_ids::menu::main, bars, {}, "Toolbar clicks");
    WMessageEnable(ContextClick, 1);
    drain(300);
  }
  void TearDown() override {
    WindowClose();
    drain(100);
    zelvy_data::data().ierr = 0;
  }

  // Runs the loop; the last message of type `wanted` it let through.
  static std::optional<MessageRecord> drain(int ms, int wanted = -2) {
    std::optional<MessageRecord> got;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (std::chrono::steady_clock::now() < end) {
      XSync(xdisplay(), False);
      int type = 0;
      MessageRecord m;
      do {
        WMessagePeek(type, m);
        if (type == wanted) got = m;
      } while (type != -1);
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return got;
  }
  static void xdotool(const std::string& args) {
    XFlush(xdisplay());
    ASSERT_EQ(std::system(("xdotool " + args + " >/dev/null 2>&1").c_str()), 0) << args;
  }
  static ToolbarRecord& bar() { return *zelvy_toolbar::state().pwToolbar[0][kToolbarTop]; }
  static Widget button(int id) {
    for (int k = 0; k < bar().ButtonCount(); ++k)
      if (bar().ButtonIds[static_cast<std::size_t>(k)] == id) return bar().ButtonWidgets[static_cast<std::size_t>(k)];
    return nullptr;
  }
  // Clicks a mouse button at a point of a widget's window, keys held around
  // it; the screen position clicked comes back.
  static std::pair<int, int> click(Widget w, int x, int y, int mouse, const std::string& held = {}) {
    int rx = 0, ry = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), x, y, &rx, &ry, &child);
    xdotool("mousemove " + std::to_string(rx) + " " + std::to_string(ry));
    if (!held.empty()) xdotool("keydown " + held);
    xdotool("click " + std::to_string(mouse));
    if (!held.empty()) xdotool("keyup " + held);
    return {rx, ry};
  }
};

TEST_F(ToolbarContext, ARightClickNamesTheButtonTheBarAndTheKeysHeld) {
  Widget open = button(kOpen);
  ASSERT_NE(open, nullptr);
  auto [x, y] = click(open, open->core.width / 2, open->core.height / 2, 3);
  auto m = drain(400, ContextClick);
  ASSERT_TRUE(m) << "no ContextClick from a toolbar button";
  EXPECT_EQ(m->Value1, kOpen);
  EXPECT_EQ(m->Value2, 0);
  EXPECT_EQ(m->Value3, kContextToolbar);
  EXPECT_EQ(m->Value4, kMainToolbar);
  EXPECT_EQ(std::make_pair(m->X, m->Y), std::make_pair(x, y));
  EXPECT_EQ(m->Win, 0);

  Widget run = button(kRun);
  ASSERT_NE(run, nullptr);
  click(run, 2, 2, 3, "ctrl+shift");
  m = drain(400, ContextClick);
  ASSERT_TRUE(m);
  EXPECT_EQ(m->Value1, kRun);
  EXPECT_EQ(m->Value2, kCtrl | kShift);

  // The bar beyond its last button.
  Widget strip = bar().Bar;
  std::tie(x, y) = click(strip, strip->core.width - 4, strip->core.height / 2, 3);
  m = drain(400, ContextClick);
  ASSERT_TRUE(m) << "no ContextClick from the bar itself";
  EXPECT_EQ(m->Value1, 0);
  EXPECT_EQ(m->Value4, kMainToolbar);
  EXPECT_EQ(std::make_pair(m->X, m->Y), std::make_pair(x, y));

  // The left button presses the button and says nothing of context.
  click(open, open->core.width / 2, open->core.height / 2, 1);
  EXPECT_FALSE(drain(400, ContextClick));
}

}  // namespace
