// The kernel on a real X server: root and child windows, the status bar, the
// message queue, timers, the close protocol, compression and colours.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <string>
#include <vector>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/message_private.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/widgets_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "app/resources/gombrel_resources.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/dialog_attach.h"
#include "toolkit/kernel/menu_private.h"

namespace {

class DisplayTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    WInitialise();
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    zelvy_data::data().ierr = 0;
  }
  void TearDown() override {
    WindowClose();
    zelvy_data::data().idbug = 0;
  }

  // The next message, with a timer as a guard so that a missing message fails
  // instead of hanging.
  static int next_message(MessageRecord& m, int guard_ms = 3000) {
    WMessageTimer(guard_ms, 999, 0);
    int type = 0;
    WMessage(type, m);
    WMessageTimer(0, 999);
    if (type == TimerExpired && m.Value1 == 999) return 0;
    return type;
  }
  // Skips the exposures of mapping.
  static int next_non_expose(MessageRecord& m, int guard_ms = 3000) {
    int t;
    while ((t = next_message(m, guard_ms)) == ExposeMessage) {}
    return t;
  }
  static void send_close(int h) {
    XEvent ev{};
    ev.xclient.type = ClientMessage;
    ev.xclient.window = zelvy_win::state().wShell[h];
    ev.xclient.message_type = XInternAtom(xdisplay(), "WM_PROTOCOLS", False);
    ev.xclient.format = 32;
    ev.xclient.data.l[0] = static_cast<long>(XInternAtom(xdisplay(), "WM_DELETE_WINDOW", False));
    ev.xclient.data.l[1] = CurrentTime;
    XSendEvent(xdisplay(), zelvy_win::state().wShell[h], False, NoEventMask, &ev);
    XFlush(xdisplay());
  }
  // Lets the exposures of mapping pass.
  static void drain() {
    XSync(xdisplay(), False);
    MessageRecord m;
    while (next_message(m, 200) == ExposeMessage) {}
  }
  static XWindowAttributes attributes(Window w) {
    XWindowAttributes at{};
    XGetWindowAttributes(xdisplay(), w, &at);
    return at;
  }
  static std::vector<int> winfo(std::initializer_list<int> items) {
    std::vector<int> v;
    for (int i : items) v.push_back(WInfoWindow(i));
    return v;
  }
  static std::string title(Window w) {
    char* name = nullptr;
    if (!XFetchName(xdisplay(), w, &name)) return "(none)";
    std::string s = name;
    XFree(name);
    return s;
  }
  static unsigned long pixel(Drawable d, int x, int y) {
    XImage* img = XGetImage(xdisplay(), d, x, y, 1, 1, AllPlanes, ZPixmap);
    if (!img) return ~0ul;
    const unsigned long p = XGetPixel(img, 0, 0);
    XDestroyImage(img);
    return p;
  }
  // Watches the queue for 200 ms: nothing of the type may come out.
  static void expect_none(int type) {
    MessageRecord m;
    for (int i = 0, t = -1; i < 20; ++i) {
      usleep(10000);
      WMessagePeek(t, m);
      EXPECT_NE(t, type);
    }
  }
};
using V = std::vector<int>;

TEST_F(DisplayTest, DefaultRootWindowIsCentredAtEightyPercent) {
  EXPECT_EQ(WInfoWindow(16), 0);
  WindowOpen();
  EXPECT_EQ(WInfoWindow(16), 1);
  EXPECT_TRUE(zelvy_data::data().brootopen);
  const int w = zelvy_data::data().iscwid * 8 / 10, h = zelvy_data::data().ischgt * 8 / 10;
  EXPECT_EQ(winfo({1, 2, 3, 4, 9, 15}), (V{w, h, 7, 0, 1, 50}));
  XSync(xdisplay(), False);
  EXPECT_EQ(winfo({5, 6}), (V{(zelvy_data::data().iscwid - w) / 2, (zelvy_data::data().ischgt - h) / 2}));
  WindowOpen(7, 0, 0, 100, 100);  // a second root window is refused silently
  EXPECT_EQ(WInfoWindow(1), w);
  EXPECT_EQ(zelvy_data::data().ierr, 0);
  WindowClose();
  EXPECT_EQ(WInfoWindow(16), 0);
  EXPECT_EQ(zelvy_data::data().iwflags[0], -1);
}

TEST_F(DisplayTest, StatusBarPartsAndTexts) {
  WindowOpen(7 | 32, 0, 0, 400, 100);
  const int widths[3] = {2500, -1, 2500};
  const int styles[3] = {0, 1, 2};
  WindowStatusBarParts(3, widths, styles);
  const StatusBarRecord& bar = *zelvy_sbar::state().psbarInfo[0];
  ASSERT_EQ(bar.PartCount, 3);
  EXPECT_EQ(std::pair(bar.PartWidths[0], bar.StretchPart), std::pair(99, 1));  // units of the 400-pixel client
  XSync(xdisplay(), False);
  EXPECT_EQ(attributes(bar.PartWindows[1]).width, 400 - 99 - 99);

  WindowOutStatusBar(1, "left   ");
  WindowOutStatusBar(3, "\t\tright");
  WindowOutStatusBar(4, "dropped");  // beyond the parts
  WindowOutStatusBar(2, "\t");  // an empty centred text
  EXPECT_EQ(yyWindowStatusBarText(0, 1), "left");
  EXPECT_EQ(yyWindowStatusBarText(0, 2), "");
  EXPECT_EQ(yyWindowStatusBarText(0, 3), "right");
  EXPECT_EQ(std::pair(bar.PartAlign[1], bar.PartAlign[2]), std::pair(1, 2));
  WindowOutStatusBar(1, "");
  EXPECT_EQ(yyWindowStatusBarText(0, 1), "");
  EXPECT_EQ(zelvy_data::data().ierr, 0);

  const int two_stretching[2] = {-1, -1};
  WindowStatusBarParts(2, two_stretching);  // ignored altogether
  EXPECT_EQ(zelvy_sbar::state().psbarInfo[0]->PartCount, 3);
  std::vector<int> many(300, 10);
  WindowStatusBarParts(300, many, {}, 1);
  const StatusBarRecord& cut = *zelvy_sbar::state().psbarInfo[0];
  EXPECT_EQ(std::pair(cut.PartCount, cut.PartWidths[0]), std::pair(255, 10));  // pixels with flag 1

  WindowOutStatusBar(1, "x", 7);
  EXPECT_EQ(WInfoError(1), 1003);
}

TEST_F(DisplayTest, StatusBarIsPublishedAndTakesLibraryErrorsAtLevelThree) {
  WindowOpen(7 | 32, 0, 0, 600, 100);
  const int widths[2] = {8000, -1};
  WindowStatusBarParts(2, widths);
  // The texts are published on the shell for outside tools.
  WindowOutStatusBar(1, "Code File:");
  WindowOutStatusBar(2, "si");
  Atom type;
  int format;
  unsigned long n, after;
  unsigned char* data = nullptr;
  ASSERT_EQ(XGetWindowProperty(xdisplay(), zelvy_win::state().wShell[0], XInternAtom(xdisplay(), "_ZELV_STATUSBAR", False),
                               0, 1024, False, XA_STRING, &type, &format, &n, &after, &data),
            Success);
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(data), n), "Code File:\nsi");
  XFree(data);

  int child = -1;
  WindowOpenChild(child, 7 | 128, 0, 0, 50, 50);
  ASSERT_EQ(child, 1);
  IDebugLevel(3);
  WindowSelect(9);
  EXPECT_EQ(yyWindowStatusBarText(0, 1), "Internal routine:YYWindowSelect Error=1003:Invalid window handle");
  EXPECT_EQ(WInfoWindow(4), 1);  // the selection stays where it was
  EXPECT_EQ(WInfoError(1), 1003);
}

TEST_F(DisplayTest, ChildWindowsUpToTheLimit) {
  WindowOpen(7, 0, 0, 200, 200);
  int h = -1;
  for (int i = 1; i <= 50; ++i) {
    WindowOpenChild(h, 7 | 128, 0, 0, 20, 20);
    ASSERT_EQ(h, i);
  }
  EXPECT_EQ(winfo({15, 4, 9}), (V{0, 50, 3}));  // the last selected, opened hidden
  WindowOpenChild(h, 7, 0, 0, 20, 20);
  EXPECT_EQ(std::pair(h, WInfoError(1)), std::pair(-1, 1121));

  WindowCloseChild(50);
  EXPECT_EQ(std::pair(WInfoWindow(4), zelvy_data::data().iwflags[50]), std::pair(0, -1));  // back to the root
  WindowCloseChild(7);
  EXPECT_EQ(WInfoWindow(15), 2);
  WindowOpenChild(h, 7 | 128, 0, 0, 20, 20);
  EXPECT_EQ(h, 7);  // the lowest free handle
  WindowSelect(50);
  EXPECT_EQ(std::pair(WInfoError(1), WInfoWindow(4)), std::pair(1003, 7));
  WindowCloseChild(50);
  EXPECT_EQ(WInfoError(1), 1003);
}

TEST_F(DisplayTest, ChildrenInsideTheirParent) {
  WindowOpen(7, 100, 100, 400, 300);
  XSync(xdisplay(), False);
  int h = -1;
  WindowOpenChild(h, 7 | 16, 2500, 5000, 5000, 5000, std::nullopt, {}, std::nullopt, "inside", 0);
  ASSERT_EQ(h, 1);
  EXPECT_EQ(winfo({1, 2}), (V{199, 149}));  // 5000 units of the 400 x 300 parent
  XSync(xdisplay(), False);
  EXPECT_EQ(winfo({7, 5}), (V{100 + 99, yyunitsfrompixels(99, 400)}));

  int g = -1;
  WindowOpenChild(g, 7 | 16, 0, 0, 100, 100, std::nullopt, {}, std::nullopt, "", 33);
  EXPECT_EQ(std::pair(g, WInfoError(1)), std::pair(-1, 1003));
  WindowOpenChild(g, 7 | 128, 0, 0, 20, 20);
  WindowOpenChild(h, 7 | 16, 0, 0, 100, 100, std::nullopt, {}, std::nullopt, "", g);
  EXPECT_EQ(std::pair(h, WInfoError(1)), std::pair(-1, 1016));  // the parent is hidden

  // Closing a parent closes what lies inside it.
  WindowCloseChild(1);
  EXPECT_EQ(WInfoWindow(15), 49);
}

TEST_F(DisplayTest, FilterPushedAndDeferredMessages) {
  WindowOpen(7, 0, 0, 100, 100);
  const int expected[18] = {1, 1, 1, 1, 0, 0, 1, 1, 1, 0, 0, 0, 1, 1, 0, 0, 0, 0};
  for (int t = 1; t <= 18; ++t) EXPECT_EQ(WInfoMessage(t), expected[t - 1]) << t;
  WMessageEnable(19, 1);
  EXPECT_EQ(WInfoMessage(19), 0);

  MessageRecord in, m;
  in.Win = 3;
  in.Value1 = 11;
  in.X = 12345;
  in.PixelX = 7;
  in.GX = 1.5f;
  WMessagePush(MouseDown, in);
  int type = 0;
  WMessage(type, m);
  EXPECT_EQ(type, MouseDown);
  EXPECT_EQ((V{m.Win, m.Value1, m.X, m.PixelX}), (V{3, 11, 12345, 7}));  // X without unit conversion
  EXPECT_EQ(m.GX, 1.5f);

  yyMsgPostFieldChanged(1004, 3, 4, 102);
  EXPECT_EQ(next_non_expose(m, 300), 0);  // filtered by default
  WMessageEnable(FieldChanged, 1);
  EXPECT_EQ(WInfoMessage(FieldChanged), 1);
  yyMsgPostFieldChanged(1004, 3, 4, 102);
  ASSERT_EQ(next_non_expose(m), FieldChanged);
  EXPECT_EQ((V{m.Value1, m.Value2, m.Value3, m.Value4}), (V{1004, 1004, 1, -1}));
  EXPECT_EQ((V{m.X, m.Y, m.Win}), (V{3, 4, 102}));  // no unit conversion for this type
  WindowClose();
  WindowOpen(7, 0, 0, 100, 100);
  EXPECT_EQ(WInfoMessage(FieldChanged), 0);  // each root window starts from the defaults
}

TEST_F(DisplayTest, TimersOneShotRepeatingAndFiltered) {
  WindowOpen(7, 0, 0, 100, 100);
  MessageRecord m;
  WMessageTimer(20, 5, 1);
  ASSERT_EQ(next_non_expose(m), TimerExpired);
  EXPECT_EQ(std::pair(m.Value1, m.Win), std::pair(5, 0));
  ASSERT_EQ(next_non_expose(m), TimerExpired);  // it repeats
  EXPECT_EQ(m.Value1, 5);
  WMessageTimer(0, 5);
  WMessageTimer(0, 77);  // unknown: no error
  EXPECT_EQ(zelvy_data::data().ierr, 0);

  WMessageEnable(TimerExpired, 0);
  WMessageTimer(10, 6, 0);
  expect_none(TimerExpired);
  WMessageEnable(TimerExpired, 1);
}

TEST_F(DisplayTest, CloseProtocolBecomesCloseRequestUnlessLocked) {
  WindowOpen(7, 0, 0, 100, 100);
  send_close(0);
  MessageRecord m;
  ASSERT_EQ(next_non_expose(m), CloseRequest);
  EXPECT_EQ(m.Win, 0);
  EXPECT_EQ(WInfoWindow(16), 1);  // nothing closes by itself
  int h = -1;
  WindowOpenChild(h, 7, 200, 0, 50, 50);
  yyMsgSemiModelessStack(1, 1, h);  // only the child may take input now
  send_close(0);
  EXPECT_EQ(next_non_expose(m, 300), 0);
  send_close(h);
  ASSERT_EQ(next_non_expose(m), CloseRequest);
  EXPECT_EQ(m.Win, h);
  yyMsgSemiModelessStack(-1, 1, h);
  send_close(0);
  ASSERT_EQ(next_non_expose(m), CloseRequest);
  EXPECT_EQ(m.Win, 0);
}

TEST_F(DisplayTest, ACloseRequestThatComesWhileACommandIsWaitedForIsKept) {
  WindowOpen(7, 0, 0, 100, 100);
  drain();
  send_close(0);
  XSync(xdisplay(), False);
  yyMsgCommandWait(0);
  yyMsgCommandWait(-1);
  MessageRecord m;
  ASSERT_EQ(next_non_expose(m), CloseRequest);
  EXPECT_EQ(m.Win, 0);
}

TEST_F(DisplayTest, ExposeBurstGivesOneBoundingBox) {
  WindowOpen(7, 0, 0, 400, 300);
  drain();
  MessageRecord m;
  const Window client = zelvy_win::state().wClient[0];
  XClearArea(xdisplay(), client, 10, 20, 30, 40, True);
  XClearArea(xdisplay(), client, 100, 50, 10, 10, True);
  XClearArea(xdisplay(), client, 60, 5, 5, 5, True);
  XSync(xdisplay(), False);
  ASSERT_EQ(next_message(m), ExposeMessage);
  EXPECT_EQ((V{m.PixelX, m.PixelY, m.PixelWidth, m.PixelHeight}), (V{10, 5, 100, 55}));
  EXPECT_EQ(m.X, yyunitsfrompixels(10, 400));
  EXPECT_EQ(m.Value1, yyunitsfrompixels(110, 400) - yyunitsfrompixels(10, 400));
  EXPECT_EQ(next_message(m, 200), 0);  // nothing more from the burst
}

TEST_F(DisplayTest, ResizeOnlyWhenTheClientSizeChanges) {
  WindowOpen(7 | 32, 0, 0, 300, 200);
  const int widths[2] = {3000, -1};
  WindowStatusBarParts(2, widths);
  drain();
  MessageRecord m;
  const int frame_h = 200 + zelvy_sbar::state().iSBarHeight + 1;
  XResizeWindow(xdisplay(), zelvy_win::state().wShell[0], 300, frame_h);  // the same size
  XFlush(xdisplay());
  EXPECT_EQ(next_non_expose(m, 300), 0);
  XResizeWindow(xdisplay(), zelvy_win::state().wShell[0], 360, frame_h + 40);
  XFlush(xdisplay());
  ASSERT_EQ(next_non_expose(m), Resize);
  EXPECT_EQ((V{m.Value1, m.Value2, m.PixelWidth, WInfoWindow(1), zelvy_data::data().iwinwid}), (V{360, 240, 360, 360, 360}));
  XSync(xdisplay(), False);
  // The bar follows: the stretching part takes the new width.
  const StatusBarRecord& bar = *zelvy_sbar::state().psbarInfo[0];
  EXPECT_EQ(attributes(bar.PartWindows[1]).width, 360 - bar.PartWidths[0]);
  EXPECT_EQ(attributes(bar.BarWindow).y, 240);
}

TEST_F(DisplayTest, SchemeColoursPixelsAndCursors) {
  WindowOpen(7, 0, 0, 100, 100);
  // Antialiased client-side fonts; foreground, background #E0DCD0 as 0xBBGGRR,
  // menu selection text and background #316AC5, edit background.
  const int item_value[][2] = {{1, zelvy_data::data().iscwid}, {33, 1},         {8, 0x000000}, {9, 0xD0DCE0},
                               {15, 0xFFFFFF},          {16, 0xC56A31}, {7, 0xFFFFFF}};
  for (const auto& c : item_value) EXPECT_EQ(WInfoScreen(c[0]), c[1]) << c[0];
  if (zelvy_x::state().BestMap) {
    const XStandardColormap& b = zelvy_x::state().best_map_info;
    EXPECT_EQ(yyAllocPixel(255, 255, 255),
              b.base_pixel + b.red_max * b.red_mult + b.green_max * b.green_mult + b.blue_max * b.blue_mult);
  } else {
    EXPECT_EQ(yyAllocPixel(200, 100, 50), yyAllocPixel(201, 102, 51));  // the cache's 64 levels
  }
  for (int shape = 0; shape < 12; ++shape) EXPECT_NE(zelvy_x::state().ixCursor[shape], 0u) << shape;
  WCursorShape(-1);
  EXPECT_EQ(WInfoError(1), 1015);
  WCursorShape(3, 1);
  EXPECT_EQ(zelvy_win::state().hCursorWin[0], zelvy_x::state().ixCursor[3]);
  WCursorShape(1, 2);  // a window's own cursor stays
  EXPECT_EQ(zelvy_win::state().hCursorWin[0], zelvy_x::state().ixCursor[3]);
  WCursorShape(1, 0);  // and goes with scope 0
  EXPECT_EQ(zelvy_win::state().hCursorWin[0], 0u);
  EXPECT_EQ(zelvy_data::data().ierr, 0);
}

TEST_F(DisplayTest, ClientRedrawsFromItsSavedPixmap) {
  WindowOpen(7, 0, 0, 120, 80);
  drain();
  MessageRecord m;
  Widget client = zelvy_win::state().wtClient[0];
  const Window win = zelvy_win::state().wClient[0];
  const int depth = attributes(win).depth;
  Pixmap pm = XCreatePixmap(xdisplay(), win, 120, 80, depth);
  GC gc = XCreateGC(xdisplay(), pm, 0, nullptr);
  XSetForeground(xdisplay(), gc, yyAllocPixel(255, 0, 0));
  XFillRectangle(xdisplay(), pm, gc, 0, 0, 120, 80);
  XtVaSetValues(client, XtNsavedPixmap, pm, nullptr);
  XClearArea(xdisplay(), win, 10, 10, 30, 30, True);
  ASSERT_EQ(next_message(m), ExposeMessage);  // the application still hears of it
  XSync(xdisplay(), False);
  EXPECT_EQ(pixel(win, 20, 20), yyAllocPixel(255, 0, 0));

  Pixmap bitmap = XCreatePixmap(xdisplay(), win, 8, 8, 1);  // another depth is refused
  XtVaSetValues(client, XtNsavedPixmap, bitmap, nullptr);
  Pixmap kept = 1;
  XtVaGetValues(client, XtNsavedPixmap, &kept, nullptr);
  EXPECT_EQ(kept, 0u);
  XFreePixmap(xdisplay(), bitmap);
  XFreeGC(xdisplay(), gc);
  XFreePixmap(xdisplay(), pm);
}

TEST_F(DisplayTest, ModalLevelLocksTheOtherWindows) {
  WindowOpen(7, 0, 0, 100, 100);
  int h = -1;
  WindowOpenChild(h, 7, 200, 0, 50, 50);
  static int checks = 0;
  static unsigned char root_locked = 0, child_locked = 1;
  checks = 0;
  // The modal level ends from a timeout, as a box's button callback would end it.
  XtAppAddTimeOut(zelvy_x::state().ixContext, 100, [](XtPointer, XtIntervalId*) {
    root_locked = zelvy_win::state().WinInfo[0].Locked;
    child_locked = zelvy_win::state().WinInfo[1].Locked;
    ++checks;
    yyMsgModalEnd();
  }, nullptr);
  send_close(0);  // ignored while the level is up
  yyMsgModalLoop(h);
  EXPECT_EQ((V{checks, root_locked, child_locked}), (V{1, 1, 0}));
  EXPECT_EQ(zelvy_win::state().WinInfo[0].Locked, 0);  // released when the level ends
  MessageRecord m;
  EXPECT_EQ(next_non_expose(m, 300), 0);
}

TEST_F(DisplayTest, RootShellHoldsTheDefaultFontAndGreyPixmaps) {
  XtPointer font = nullptr;
  Boolean fast = False;
  XtVaGetValues(zelvy_x::state().rootWidget, XtNfontPointer, &font, XtNfastRefresh, &fast, nullptr);
  EXPECT_EQ(font, static_cast<XtPointer>(zelvy_x::state().dialogFontStruct));
  EXPECT_TRUE(fast);
  EXPECT_EQ(XtClass(zelvy_x::state().rootWidget), zelvWidgetClass);

  WindowOpen(7, 0, 0, 100, 100);
  const Pixel bg = zelvy_x::state().wSchemeCol[3].pixel;
  const Window root = DefaultRootWindow(xdisplay());
  Pixmap pm = XCreatePixmap(xdisplay(), root, 4, 4, zelvy_x::state().iDispDepth);
  GC gc = XCreateGC(xdisplay(), pm, 0, nullptr);
  XSetForeground(xdisplay(), gc, bg);
  XFillRectangle(xdisplay(), pm, gc, 0, 0, 4, 4);
  XSetForeground(xdisplay(), gc, BlackPixel(xdisplay(), 0));
  XDrawPoint(xdisplay(), pm, gc, 1, 1);
  const Pixmap grey = yyCreateGreyPixmap(pm, 4, 4, bg);
  ASSERT_NE(grey, 2u);
  EXPECT_EQ(pixel(grey, 1, 1), zelvy_x::state().wSchemeCol[4].pixel);  // the shape in its place
  EXPECT_EQ(pixel(grey, 2, 2), zelvy_x::state().wSchemeCol[8].pixel);  // and its light copy
  EXPECT_EQ(pixel(grey, 3, 3), bg);
  EXPECT_EQ(yyCreateGreyPixmap(2, 4, 4, bg), 2u);
  XFreePixmap(xdisplay(), grey);
  XFreeGC(xdisplay(), gc);
  XFreePixmap(xdisplay(), pm);
}

TEST_F(DisplayTest, WindowTextAndScrolling) {
  WindowOpen(7, 0, 0, 200, 100);
  int w = 0, h = 0;
  yywindowfontcreate(1, 0, 0, w, h);  // "6x13"
  EXPECT_EQ(std::pair(w, h), std::pair(6, 13));
  EXPECT_EQ(yywindowstringlength("abcd"), 24);
  yywindowfontcolour(15, 12);  // black on bright red
  int x = 10;
  yywindowoutstring(x, 20, "ab");
  EXPECT_EQ(x, 22);
  XSync(xdisplay(), False);
  const Window client = zelvy_win::state().wClient[0];
  EXPECT_EQ(pixel(client, 10, 20), yyAllocPixel(255, 0, 0));  // the text's background cell
  yywindowscroll(50, 0, 0x00FF00);  // right by 50, the strip in green
  XSync(xdisplay(), False);
  EXPECT_EQ(pixel(client, 60, 20), yyAllocPixel(255, 0, 0));
  EXPECT_EQ(pixel(client, 10, 50), yyAllocPixel(0, 255, 0));
  yywindowclear(0, 0, 199, 99, -1);
  XSync(xdisplay(), False);
  EXPECT_EQ(pixel(client, 60, 20), WhitePixel(xdisplay(), 0));
}

TEST_F(DisplayTest, TitleSizePositionAndHiding) {
  // The title and the status bar give the frame its size.
  WindowOpen(7 | 32, 10, 20, 300, 200, std::nullopt, {}, std::nullopt, "Kernel Frame");
  XSync(xdisplay(), False);
  const XWindowAttributes shell = attributes(zelvy_win::state().wShell[0]);
  EXPECT_GT(zelvy_sbar::state().iSBarHeight, 12);
  EXPECT_EQ(std::pair(shell.width, shell.height), std::pair(300, 200 + zelvy_sbar::state().iSBarHeight + 1));
  EXPECT_EQ(title(zelvy_win::state().wShell[0]), "Kernel Frame");
  EXPECT_EQ(WInfoWindow(2), 200);
  int child = -1;
  WindowOpenChild(child, 7 | 16, 0, 0, 5000, 5000, std::nullopt, {}, std::nullopt, "in", 0);
  ASSERT_EQ(child, 1);
  WindowSelect(0);
  yywindowsizepos(30, 40, 260, 120, 1);
  XSync(xdisplay(), False);
  const XWindowAttributes at = attributes(zelvy_win::state().wShell[0]);
  EXPECT_EQ((V{at.x, at.y, at.width, at.height}), (V{30, 40, 260, 120 + zelvy_sbar::state().iSBarHeight + 1}));
  EXPECT_EQ(winfo({1, 2}), (V{260, 120}));
  yywindowsizepos(-999999, -999999, -999999, -999999, 3);  // hide, with what lies inside
  XSync(xdisplay(), False);
  EXPECT_EQ(WInfoWindow(9), 3);
  EXPECT_EQ(attributes(zelvy_win::state().wShell[1]).map_state, IsUnmapped);
  yywindowsizepos(-999999, -999999, -999999, -999999, 1);
  XSync(xdisplay(), False);
  EXPECT_EQ(attributes(zelvy_win::state().wShell[1]).map_state, IsViewable);
  EXPECT_EQ(attributes(zelvy_win::state().wShell[0]).x, 30);
  int exists1 = 0, exists2 = -1, status = -1;
  yywindowtest(1, exists1);
  yywindowtest(2, exists2);
  EXPECT_EQ(std::pair(exists1, exists2), std::pair(1, 0));
  yywindowtitle(0, 1, status, "Renamed");
  EXPECT_EQ(title(zelvy_win::state().wShell[0]), "Renamed");
}

TEST_F(DisplayTest, MenuBarSitsAboveTheClient) {
  WindowOpen(7, 0, 0, 200, 100, 30001);
  XSync(xdisplay(), False);
  const int bar = yyMenuBarHeight(0);
  EXPECT_GT(bar, 0);
  EXPECT_EQ(attributes(zelvy_win::state().wShell[0]).height, 100 + bar);
  EXPECT_EQ(attributes(zelvy_win::state().wClient[0]).y, bar);
  EXPECT_EQ(WInfoWindow(2), 100);
  WindowClose();
}

TEST_F(DisplayTest, DialogEngineSizesTheWindowThatCarriesItsDialog) {
  static int combined = 0, combined_in = -1;
  DialogEngineHooks hooks;
  hooks.pixels = [](int, int& w, int& h, bool& resizable) {
    w = 321;
    h = 123;
    resizable = false;
  };
  hooks.combine = [](int dialogid, int h) {
    combined = dialogid;
    combined_in = h;
  };
  yyAttachDialogEngine(hooks);
  WindowOpen(7, 0, 0, std::nullopt, std::nullopt, std::nullopt, {}, 102);
  yyAttachDialogEngine({});
  EXPECT_EQ(WInfoError(1), 0);  // the main form is in the resources
  EXPECT_EQ(winfo({1, 2, 3}), (V{321, 123, 7}));  // the flags as given
  EXPECT_EQ(std::pair(combined, combined_in), std::pair(102, 0));
  XSizeHints hints{};
  long supplied = 0;
  XGetWMNormalHints(xdisplay(), zelvy_win::state().wShell[0], &hints, &supplied);
  EXPECT_TRUE(hints.flags & PMaxSize);  // not resizable: a fixed size
  EXPECT_EQ(hints.max_width, 321);
}

TEST_F(DisplayTest, ResourceIdentifiersThatDoNotExist) {
  IDebugLevel(1);
  testing::internal::CaptureStdout();
  const int toolbars[4] = {0, 4242, 0, 0};
  WindowOpen(7, 0, 0, 100, 100, 4241, toolbars, 4243);
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_NE(printed.find("Routine:WindowOpen Error=1007:Dialog not present in resource"), std::string::npos);
  EXPECT_NE(printed.find("Routine:WindowOpen Error=1002:Menu or toolbar not present in resource"),
            std::string::npos);
  EXPECT_EQ(WInfoWindow(16), 1);  // the window opens all the same
}

TEST_F(DisplayTest, SecondInitialisationAndDisplayOpeningChangeNothing) {
  IDebugLevel(2);
  yyrcinstall(gombrel_resource_tables());
  WInitialise();
  EXPECT_EQ(zelvy_data::data().idbug, 2);
  int w = 0, h = 0, wmm = 0, hmm = 0, colours = 0, greys = 0;
  Display* before = xdisplay();
  yygetdisplayinfo(10, 0, w, h, wmm, hmm, colours, greys);
  EXPECT_EQ(colours, -1);
  EXPECT_EQ(xdisplay(), before);
  EXPECT_GT(yysystime(), -1);
  WindowOpen(7, 0, 0, 50, 50);
  EXPECT_GT(WInfoSystem(15), 0);  // the server's time through the root window
}

}  // namespace
