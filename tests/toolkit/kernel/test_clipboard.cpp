// The clipboard with other programs on the test display: text both ways
// through xclip, text widgets cutting and pasting, a clipboard held locked,
// bitmaps and CGM pictures back from the clipboard as they went in.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Intrinsic.h>
#include <X11/Xlib.h>
#include <Xm/CutPaste.h>
#include <Xm/Text.h>

#include <string>
#include <vector>

#include "app/resources/gombrel_resources.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/kernel/clipboard_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"
#include "tests/toolkit/kernel/clipboard_peer.h"

namespace {

TEST(ClipboardRetry, ALockedClipboardIsAskedAgainUntilItAnswers) {
  int calls = 0;
  EXPECT_EQ(yyClipboardRetry([&] { return ++calls < 4 ? kClipboardLockedAnswer : 1; }), 1);
  EXPECT_EQ(calls, 4);
  calls = 0;
  EXPECT_EQ(yyClipboardRetry([&] { return ++calls, kClipboardLockedAnswer; }), kClipboardLockedAnswer);
  EXPECT_EQ(calls, kClipboardTries) << "and then given up";
  calls = 0;
  EXPECT_EQ(yyClipboardRetry([&] { return ++calls, 0; }), 0);
  EXPECT_EQ(calls, 1) << "a refusal is not asked again";
}

class ClipboardTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    WInitialise();
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    WindowOpen(7, 30, 30, 400, 200, {}, {}, {}, "Clipboard test");
    peer.pump(200);
  }
  void TearDown() override {
    WindowClose();
    peer.pump(100);
  }
  static Widget text_widget(const char* value, bool editable = true) {
    Widget t = XtVaCreateManagedWidget("ClipText", xmTextWidgetClass, zelvy_win::state().wtClient[0], XmNvalue, value,
                                       XmNeditable, editable ? True : False, nullptr);
    ClipboardPeer::pump(50);
    return t;
  }
  static std::string value(Widget t) {
    char* s = XmTextGetString(t);
    std::string v(s);
    XtFree(s);
    return v;
  }
  ClipboardPeer peer;
};

TEST_F(ClipboardTest, TextGoesToOtherProgramsAndComesFromThem) {
  int status = -1;
  const std::string text = "a\tb\n1.5\n";
  yyclipboardputstring(status, text, static_cast<int>(text.size()) + 1);
  ASSERT_EQ(status, 0);
  int code = -9, size = -9;
  yyinfoclipboard(1, code);
  yyinfoclipboard(2, size);
  EXPECT_EQ(code, kClipText);
  EXPECT_EQ(size, static_cast<int>(text.size()));
  EXPECT_EQ(peer.read(), text);

  ASSERT_TRUE(peer.write("from elsewhere"));
  yyinfoclipboard(1, code);
  EXPECT_EQ(code, kClipText);
  std::vector<char> buffer(64);
  int length = 0;
  yyclipboardgetstring(length, status, buffer);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(std::string(buffer.data(), static_cast<std::size_t>(length)), "from elsewhere");
  // A buffer too small takes what fits and says so.
  std::vector<char> small(4);
  yyclipboardgetstring(length, status, small);
  EXPECT_EQ(status, kClipTruncated);
  EXPECT_EQ(std::string(small.data(), static_cast<std::size_t>(length)), "from");
}

TEST_F(ClipboardTest, TextOfferedOnlyAsUtf8IsStillText) {
  ASSERT_TRUE(peer.write("unicode", "UTF8_STRING"));
  int code = -9;
  yyinfoclipboard(1, code);
  EXPECT_EQ(code, kClipText);
}

TEST_F(ClipboardTest, TextFieldsPasteOverTheSelectionOrAtTheCursorAndRespectReadOnly) {
  ASSERT_TRUE(peer.write("XY"));
  Widget t = text_widget("abcdef");
  XmTextSetSelection(t, 1, 3, CurrentTime);
  ASSERT_TRUE(yyXmTextPaste(t));
  EXPECT_EQ(value(t), "aXYdef") << "the selection is replaced";
  XmTextClearSelection(t, CurrentTime);
  XmTextSetInsertionPosition(t, 6);
  ASSERT_TRUE(yyXmTextPaste(t));
  EXPECT_EQ(value(t), "aXYdefXY") << "without one the text goes in at the cursor";

  Widget ro = text_widget("fixed", false);
  EXPECT_FALSE(yyXmTextPaste(ro));
  XmTextSetSelection(ro, 0, 3, CurrentTime);
  EXPECT_FALSE(yyXmTextCut(ro, CurrentTime));
  EXPECT_EQ(value(ro), "fixed");
  ASSERT_TRUE(yyXmTextCopy(ro, CurrentTime)) << "copying from a read-only field works";
  EXPECT_EQ(peer.read(), "fix");

  XmTextClearSelection(t, CurrentTime);
  EXPECT_FALSE(yyXmTextCut(t, CurrentTime)) << "nothing selected, nothing cut";
  EXPECT_EQ(value(t), "aXYdefXY");
  XmTextSetSelection(t, 0, 3, CurrentTime);
  ASSERT_TRUE(yyXmTextCut(t, CurrentTime));
  EXPECT_EQ(value(t), "defXY");
  EXPECT_EQ(peer.read(), "aXY");
}

TEST_F(ClipboardTest, BitmapDataOnTheClipboardIsNoTextToPaste) {
  const std::vector<std::int32_t> pixels = {0x0000ff, 0x00ff00, 0xff0000, 0xffffff, 0x000000, 0x808080};
  int status = -1;
  yyclipboardputbitmapdata(3, 2, pixels, status);
  ASSERT_EQ(status, 0);
  int code = 0, w = 0, h = 0;
  yyinfoclipboard(1, code);
  yyinfoclipboard(3, w);
  yyinfoclipboard(4, h);
  EXPECT_EQ(code, kClipBitmap);
  EXPECT_EQ(w, 3);
  EXPECT_EQ(h, 2);
  std::vector<std::int32_t> back;
  yyclipboardgetbitmapdata(back, status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(back, pixels);
  Widget t = text_widget("keep");
  EXPECT_FALSE(yyXmTextPaste(t));
  EXPECT_EQ(value(t), "keep");
}

TEST_F(ClipboardTest, ACgmPictureComesBackWithItsSize) {
  const std::vector<std::uint8_t> cgm = {0x00, 0x22, 'p', 'i', 'c', 0x00, 0x40, 0x00, 0xff};
  int status = -1;
  yyclipboardputcgm(static_cast<int>(cgm.size()), 640, 480, status, cgm);
  ASSERT_EQ(status, 0);
  int code = 0, size = 0, w = 0;
  yyinfoclipboard(1, code);
  yyinfoclipboard(2, size);
  yyinfoclipboard(3, w);
  EXPECT_EQ(code, kClipCgm);
  EXPECT_EQ(size, static_cast<int>(cgm.size()));
  EXPECT_EQ(w, 640);
  std::vector<std::uint8_t> back;
  int length = 0, width = 0, height = 0;
  yyclipboardgetcgm(back, length, width, height, status);
  ASSERT_EQ(status, 0);
  EXPECT_EQ(back, cgm);
  EXPECT_EQ(length, static_cast<int>(cgm.size()));
  EXPECT_EQ(height, 480);
}

TEST_F(ClipboardTest, AClipboardHeldLockedElsewhereFailsAfterTheRetriesAndWorksOnceFree) {
  // A window of its own stands for the other program that holds the lock.
  Display* dpy = xdisplay();
  const Window other = XCreateSimpleWindow(dpy, DefaultRootWindow(dpy), 0, 0, 1, 1, 0, 0, 0);
  ASSERT_EQ(XmClipboardLock(dpy, other), ClipboardSuccess);
  int status = -1;
  yyclipboardputstring(status, "held", 5);
  EXPECT_EQ(status, kClipError);
  XmClipboardUnlock(dpy, other, False);
  yyclipboardputstring(status, "free", 5);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(peer.read(), "free");
  XDestroyWindow(dpy, other);
}

}  // namespace
