// Toolbars on a real X server: where the bars lie in a window, a button
// clicked with the pointer, buttons that follow their menu items, tooltips
// read back from the screen, and a slot set and reset at run time.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Intrinsic.h>
#include <X11/Xft/Xft.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <Xm/ToggleB.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "app/resources/gombrel_ids.h"
#include "app/resources/gombrel_resources.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/toolbar_private.h"
#include "toolkit/kernel/tooltip_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

namespace {

constexpr int kMainToolbar = gombrel_ids::toolbar::main;
constexpr int kNew = 40002, kOpen = 40003, kSave = 40005, kRun = 40008, kExit = 40007;
constexpr int kButton = 16;                // the main toolbar's images are 16 by 16
constexpr int kAcross = kButton + 12;      // a top bar's depth
constexpr int kSideAcross = kButton + 10;  // a side bar's depth
constexpr int kWithStatusBar = 32, kResizable = 7;

using Clock = std::chrono::steady_clock;

class ToolbarTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    WInitialise();
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    zelvy_data::data().ierr = 0;
    const int bars[4] = {kMainToolbar, 0, 0, 0};
    WindowOpen(kResizable | kWithStatusBar, 20, 20, 500, 300, gombrel_ids::menu::main, bars, {}, "Toolbar test");
    pump(300);
    // Tooltips show only for the window that has the focus.
    XSetInputFocus(xdisplay(), zelvy_win::state().wShell[0], RevertToParent, CurrentTime);
    pump(100);
  }
  void TearDown() override {
    yyTooltipDestroy();
    WindowClose();
    pump(100);
  }

  static void pump(int ms, int* until_type = nullptr, MessageRecord* got = nullptr) {
    const auto end = Clock::now() + std::chrono::milliseconds(ms);
    int type = 0;
    MessageRecord m;
    while (Clock::now() < end) {
      XSync(xdisplay(), False);
      do {
        WMessagePeek(type, m);
        if (until_type && type == *until_type) {
          if (got) *got = m;
          return;
        }
      } while (type != -1);
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    if (until_type) *until_type = 0;
  }
  static void xdotool(const std::string& args) {
    XFlush(xdisplay());
    const std::string cmd = "xdotool " + args + " >/dev/null 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd;
  }
  static ToolbarRecord& bar(int slot = kToolbarTop) {
    return *zelvy_toolbar::state().pwToolbar[0][static_cast<std::size_t>(slot)];
  }
  static Widget button(int id) {
    ToolbarRecord& b = bar();
    for (int k = 0; k < b.ButtonCount(); ++k)
      if (b.ButtonIds[k] == id) return b.ButtonWidgets[k];
    return nullptr;
  }
  static XWindowAttributes attributes(Window w) {
    XWindowAttributes at{};
    XGetWindowAttributes(xdisplay(), w, &at);
    return at;
  }
  // The pointer to the middle of a widget, on the screen.
  static void point_at(Widget w) {
    Window child = 0;
    int x = 0, y = 0;
    const XWindowAttributes at = attributes(XtWindow(w));
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), at.width / 2, at.height / 2, &x,
                          &y, &child);
    xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y));
  }
  static void park_pointer() { xdotool("mousemove 0 0"); }
  // Clicks a button; the MenuSelect it made, type 0 when none came.
  static int click(int id, MessageRecord& m) {
    point_at(button(id));
    xdotool("click 1");
    int type = MenuSelect;
    pump(1000, &type, &m);
    return type;
  }
};

TEST_F(ToolbarTest, TheBarTakesItsRoomBetweenMenuAndClientAndNothingOverlaps) {
  const auto& ws = zelvy_win::state();
  const WindowRecord& r = ws.WinInfo[0];
  EXPECT_EQ(r.ClientWidth, 500);
  EXPECT_EQ(r.ClientHeight, 300);
  EXPECT_EQ(bar().Thickness, kAcross);
  const XWindowAttributes barat = attributes(XtWindow(bar().Bar));
  const XWindowAttributes client = attributes(ws.wClient[0]);
  const XWindowAttributes frame = attributes(ws.wWindow[0]);
  EXPECT_EQ(barat.width, frame.width);
  EXPECT_EQ(barat.height, kAcross);
  EXPECT_EQ(client.y, barat.y + barat.height) << "the client starts where the bar ends";
  EXPECT_EQ(barat.y, yyMenuBarHeight(0)) << "the bar sits right under the menu bar";
  EXPECT_EQ(frame.height, yyMenuBarHeight(0) + kAcross + r.ClientHeight + zelvy_sbar::state().iSBarHeight + 1)
      << "the frame grew by the bar";
  EXPECT_LE(client.y + client.height, frame.height - zelvy_sbar::state().iSBarHeight)
      << "the status bar keeps its place below the client";
  // Nine positions, two of them separators, with 22-pixel buttons from x 2.
  ASSERT_EQ(bar().ButtonCount(), 9);
  EXPECT_EQ(bar().ButtonWidgets[4], nullptr);
  EXPECT_EQ(attributes(XtWindow(button(kNew))).x, 2);
  EXPECT_EQ(attributes(XtWindow(button(kOpen))).x, 2 + kButton + 6);
  EXPECT_EQ(attributes(XtWindow(button(kRun))).x, 2 + 4 * (kButton + 6) + 8);
  EXPECT_EQ(attributes(XtWindow(button(kExit))).width, kButton + 6);
  for (Pixmap p : bar().ButtonPixmaps) EXPECT_NE(p, 0u);
  EXPECT_NE(bar().ButtonPixmaps[0], kNoPixmap) << "the images come from the resource strip";
}

TEST_F(ToolbarTest, AClickedButtonSendsItsMenuItem) {
  MessageRecord m;
  ASSERT_EQ(click(kOpen, m), MenuSelect);
  EXPECT_EQ(m.Value1, kOpen);
  EXPECT_EQ(m.Win, 0);
  ASSERT_EQ(click(kExit, m), MenuSelect);
  EXPECT_EQ(m.Value1, kExit);
}

TEST_F(ToolbarTest, ButtonsFollowTheGreyAndCheckStatesOfTheirMenuItems) {
  WMenuSetState(kSave, 1, 0);
  pump(100);
  EXPECT_FALSE(XtIsSensitive(button(kSave)));
  EXPECT_EQ(WMenuGetState(kSave, 1), 0);
  MessageRecord m;
  EXPECT_EQ(click(kSave, m), 0) << "a greyed button sends nothing";
  WMenuSetState(kSave, 1, 1);
  pump(100);
  EXPECT_TRUE(XtIsSensitive(button(kSave)));
  EXPECT_EQ(click(kSave, m), MenuSelect);

  // A checked button stays checked when clicked: only the menu changes it.
  WMenuSetState(kRun, 2, 1);
  EXPECT_TRUE(XmToggleButtonGetState(button(kRun)));
  ASSERT_EQ(click(kRun, m), MenuSelect);
  EXPECT_TRUE(XmToggleButtonGetState(button(kRun)));
  WMenuSetState(kRun, 2, 0);
  EXPECT_FALSE(XmToggleButtonGetState(button(kRun)));
  ASSERT_EQ(click(kRun, m), MenuSelect);
  EXPECT_FALSE(XmToggleButtonGetState(button(kRun))) << "nor does a click check it";
}

// What a tooltip window of that text shows: the text drawn as the toolkit
// draws it, in the tooltip font and colours, on a pixmap of the same size.
XImage* expected_tooltip(const std::string& text, int width, int height) {
  Display* dpy = xdisplay();
  const auto& xs = zelvy_x::state();
  const ZelvAppData& a = xs.appData;
  XftFont* font = yyXftOpen(a.xftNameStatus ? a.xftNameStatus : "Sans", a.xftSizeStatus > 0 ? a.xftSizeStatus : 8);
  const Pixmap p = XCreatePixmap(dpy, DefaultRootWindow(dpy), static_cast<unsigned>(width),
                                 static_cast<unsigned>(height), static_cast<unsigned>(DefaultDepth(dpy, xs.iScreen)));
  GC gc = XCreateGC(dpy, p, 0, nullptr);
  XSetForeground(dpy, gc, xs.wSchemeCol[6].pixel);
  XFillRectangle(dpy, p, gc, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height));
  XFreeGC(dpy, gc);
  Visual* visual = DefaultVisual(dpy, xs.iScreen);
  const Colormap cmap = xs.iCmapMain ? xs.iCmapMain : DefaultColormap(dpy, xs.iScreen);
  XftDraw* draw = XftDrawCreate(dpy, p, visual, cmap);
  XRenderColor rc{static_cast<unsigned short>(xs.wSchemeCol[7].red), static_cast<unsigned short>(xs.wSchemeCol[7].green),
                  static_cast<unsigned short>(xs.wSchemeCol[7].blue), 0xffff};
  XftColor colour{};
  XftColorAllocValue(dpy, visual, cmap, &rc, &colour);
  XftDrawString8(draw, &colour, font, 3, 3 + font->ascent, reinterpret_cast<const FcChar8*>(text.data()),
                 static_cast<int>(text.size()));
  XftColorFree(dpy, visual, cmap, &colour);
  XftDrawDestroy(draw);
  XImage* im = XGetImage(dpy, p, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height), AllPlanes, ZPixmap);
  XFreePixmap(dpy, p);
  return im;
}

bool same_pixels(XImage* a, XImage* b, int width, int height) {
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (XGetPixel(a, x, y) != XGetPixel(b, x, y)) return false;
  return true;
}

// Waits for a tooltip to come up, at most `ms`.
Window wait_tooltip(int ms) {
  const auto end = Clock::now() + std::chrono::milliseconds(ms);
  while (Clock::now() < end) {
    int type = 0;
    MessageRecord m;
    XSync(xdisplay(), False);
    do WMessagePeek(type, m);
    while (type != -1);
    if (Window w = yyTooltipWindow()) return w;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return 0;
}

TEST_F(ToolbarTest, HoveringAButtonShowsItsTooltipWhichGoesAgainByItself) {
  park_pointer();
  point_at(button(kSave));
  const auto start = Clock::now();
  const Window tip = wait_tooltip(2000);
  ASSERT_NE(tip, 0u) << "no tooltip over Save";
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(400)) << "it waits for the pointer to rest";
  pump(100);
  const XWindowAttributes at = attributes(tip);
  XImage* shown = XGetImage(xdisplay(), tip, 0, 0, static_cast<unsigned>(at.width), static_cast<unsigned>(at.height),
                            AllPlanes, ZPixmap);
  ASSERT_NE(shown, nullptr);
  XImage* want = expected_tooltip("Save a Ombrel File", at.width, at.height);
  XImage* other = expected_tooltip("Print a Ombrel File", at.width, at.height);
  EXPECT_TRUE(same_pixels(shown, want, at.width, at.height)) << "the tooltip reads \"Save a Ombrel File\"";
  EXPECT_FALSE(same_pixels(shown, other, at.width, at.height));
  XDestroyImage(shown);
  XDestroyImage(want);
  XDestroyImage(other);

  // Beside the pointer, below and to the right of it.
  Window child = 0;
  int bx = 0, by = 0;
  XTranslateCoordinates(xdisplay(), XtWindow(button(kSave)), DefaultRootWindow(xdisplay()), 0, 0, &bx, &by, &child);
  EXPECT_GT(at.x, bx);
  EXPECT_GT(at.y, by);

  pump(5300);
  EXPECT_EQ(yyTooltipWindow(), 0u) << "a tooltip goes after five seconds";
}

TEST_F(ToolbarTest, TheNextButtonsTooltipComesQuicklyAndOpenHasNone) {
  park_pointer();
  point_at(button(kNew));
  ASSERT_NE(wait_tooltip(2000), 0u);
  point_at(button(kSave));
  const auto start = Clock::now();
  ASSERT_NE(wait_tooltip(2000), 0u);
  EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(400)) << "moving on within three seconds is quick";
  point_at(button(kOpen));
  EXPECT_EQ(wait_tooltip(1200), 0u) << "Open has no tooltip text";
}

TEST_F(ToolbarTest, AWindowWithoutTheFocusShowsNoTooltip) {
  park_pointer();
  const Window elsewhere = XCreateSimpleWindow(xdisplay(), DefaultRootWindow(xdisplay()), 600, 600, 20, 20, 0, 0, 0);
  XMapWindow(xdisplay(), elsewhere);
  pump(100);
  XSetInputFocus(xdisplay(), elsewhere, RevertToParent, CurrentTime);
  point_at(button(kSave));
  EXPECT_EQ(wait_tooltip(1200), 0u);
  XDestroyWindow(xdisplay(), elsewhere);
}

TEST_F(ToolbarTest, RunTimeTooltipsWinAndBreakIntoLines) {
  int error = -1;
  yymenutooltip(kSave, error, "first\r\nsecond");
  EXPECT_EQ(error, 0);
  yymenutooltip(12345, error, "nowhere");
  EXPECT_EQ(error, 1001);
  park_pointer();
  point_at(button(kSave));
  const Window tip = wait_tooltip(2000);
  ASSERT_NE(tip, 0u);
  const XWindowAttributes at = attributes(tip);
  const ZelvAppData& a = zelvy_x::state().appData;
  XftFont* font = yyXftOpen(a.xftNameStatus ? a.xftNameStatus : "Sans", a.xftSizeStatus > 0 ? a.xftSizeStatus : 8);
  EXPECT_EQ(at.height, 2 * (font->ascent + font->descent) + 6 + 2) << "two lines";
}

TEST_F(ToolbarTest, SlotsSetAndResetAtRunTimeMoveTheClient) {
  int w = 0, h = 0, error = 0;
  const int before = zelvy_win::state().WinInfo[0].ClientWidth;
  yymenutoolbar(kMainToolbar, 0, kToolbarLeft, w, h, {}, error);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(w, before - kSideAcross);
  EXPECT_EQ(bar(kToolbarLeft).Thickness, kSideAcross);
  int type = Resize;
  MessageRecord m;
  pump(1000, &type, &m);
  EXPECT_EQ(type, Resize) << "the application hears of the new client size";
  EXPECT_EQ(m.Value1, before - kSideAcross);
  const XWindowAttributes side = attributes(XtWindow(bar(kToolbarLeft).Bar));
  EXPECT_EQ(attributes(zelvy_win::state().wClient[0]).x, side.width);
  // Buttons run downwards; states of the menu come with them.
  WMenuSetState(kSave, 1, 0);
  yymenutoolbar(0, 0, kToolbarLeft, w, h, {}, error);
  EXPECT_EQ(w, before);
  const int subset[3] = {kSave, 0, 99999};
  yymenutoolbar(kMainToolbar, 0, kToolbarBottom, w, h, subset, error);
  EXPECT_EQ(error, 1001) << "an item that the toolbar lacks";
  ASSERT_EQ(bar(kToolbarBottom).ButtonCount(), 3);
  EXPECT_NE(bar(kToolbarBottom).ButtonPixmaps[0], kNoPixmap);
  EXPECT_EQ(bar(kToolbarBottom).ButtonPixmaps[2], kNoPixmap) << "it has a button without an image";
  EXPECT_EQ(bar(kToolbarBottom).ButtonStates[0] & 2, 2) << "Save came greyed, as its menu item is";

  yymenutoolbar(4242, 0, kToolbarBottom, w, h, {}, error);
  EXPECT_EQ(error, 1002);
  EXPECT_EQ(bar(kToolbarBottom).ButtonCount(), 3) << "the slot keeps its toolbar";
  yymenutoolbar(kMainToolbar, 7, kToolbarTop, w, h, {}, error);
  EXPECT_EQ(error, 1003);
}

TEST_F(ToolbarTest, ADynamicToolbarKeepsStripPlacesOfLeftOutRows) {
  const ToolbarDescriptor rows[] = {{true, "New one", 1}, {false, "hidden", 2}, {true, "", 0}, {true, "Third", 3}};
  yyMenuLoadDynamicToolbar(rows, 0, kMainToolbar, kButton);
  ToolbarRecord& b = bar();
  ASSERT_EQ(b.ButtonCount(), 3);
  EXPECT_EQ(b.ToolbarId, -1);
  EXPECT_EQ(b.ImageIndex[0], 0);
  EXPECT_EQ(b.ImageIndex[2], 2) << "the left-out row keeps its image's place";
  ASSERT_TRUE(b.ButtonTexts[2].has_value());
  EXPECT_EQ(*b.ButtonTexts[2], "Third");
  const ToolbarDescriptor none[] = {{false, "x", 1}};
  yyMenuLoadDynamicToolbar(none, 0, kMainToolbar, kButton);
  EXPECT_EQ(zelvy_toolbar::state().pwToolbar[0][0], nullptr);
}

}  // namespace
