// Page setup: paper, margins and printed area kept consistent, what a
// confirmed entry may hold, and the dialog on the X server of the test
// fixture, filled from a record and confirmed or cancelled from outside.
#include "tests/toolkit/dialog/form_fixture.h"
#include "toolkit/comdlg/page_setup.h"
#include "toolkit/graphics/graphics.h"

#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <Xm/Xm.h>

#include <cstdlib>
#include <string>

#include <functional>

namespace {

TEST(PageSetupRules, MarginsAndAreaFollowEachOther) {
  zelvy_data::PageSetup r;  // A4 portrait, 28/43 margins
  yymarginsps(r, 2);
  EXPECT_EQ(r.Width, 595 - 56);
  EXPECT_EQ(r.Height, 842 - 86);
  EXPECT_EQ(r.XOffset, 28);
  // Landscape A4 turns the paper: 842 wide by 595 high, both ways round.
  r.Orientation = 1;
  yymarginsps(r, 2);
  EXPECT_EQ(r.Width, 842 - 56);
  EXPECT_EQ(r.Height, 595 - 86);
  yymarginsps(r, 1);
  EXPECT_EQ(r.RightMargin, 28);
  EXPECT_EQ(r.BottomMargin, 43);
  // An area wider than the paper leaves no right margin, never a negative one.
  r.Width = 5000;
  r.XOffset = -3;
  yymarginsps(r, 1);
  EXPECT_EQ(r.LeftMargin, 0);
  EXPECT_EQ(r.RightMargin, 0);
  // The table's rows by index; an index outside falls back to A4.
  EXPECT_STREQ(zelvy_data::paper_size(9).name, "Letter");
  EXPECT_EQ(zelvy_data::paper_size(22).height, 729);
  EXPECT_EQ(zelvy_data::paper_size(0).width, 595);
}

TEST(PageSetupRules, ConfirmedEntryIsCheckedThenStoredInPoints) {
  zelvy_data::PageSetup r;
  std::string message, title;
  PageSetupEntry e = yypagesetupentry(r, kUnitInches);
  EXPECT_NEAR(e.margins[0], 28.0f / 72.0f, 1e-6);
  // One inch each side on Letter, landscape.
  e.paper = 9;
  e.orientation = 1;
  e.margins = {1, 1, 1, 1};
  e.copies = 0;
  ASSERT_TRUE(yypagesetupaccept(e, r, message, title));
  EXPECT_EQ(r.LeftMargin, 72);
  EXPECT_EQ(r.Width, 792 - 144);
  EXPECT_EQ(r.Height, 612 - 144);
  EXPECT_EQ(r.Copies, 1);
  // Margins meeting across the paper, after rounding to whole points.
  const zelvy_data::PageSetup before = r;
  e.unit = kUnitMm;
  e.paper = 5;
  e.orientation = 0;
  e.margins = {150.0f, 10, 59.91f, 10};  // 425.2 + 169.8 points: 595 once rounded
  EXPECT_FALSE(yypagesetupaccept(e, r, message, title));
  EXPECT_EQ(message, "The margins overlap. Enter a different margin size.");
  EXPECT_EQ(title, "Page Setup");
  EXPECT_EQ(r.Width, before.Width);
  e.margins = {10, 10, 10, 10};
  e.command = "  ";
  EXPECT_FALSE(yypagesetupaccept(e, r, message, title));
  EXPECT_EQ(title, "Command");
  e.destination = 0;
  e.file.clear();
  EXPECT_FALSE(yypagesetupaccept(e, r, message, title));
  EXPECT_EQ(message, "Filename required");
}

TEST(PageSetupRules, DriverFilesFollowTheImageFormat) {
  EXPECT_EQ(yyhcformatfromname("plot.JPEG"), 4);
  EXPECT_EQ(yyhcformatfromname("dir.v2/plot"), -1);
  EXPECT_EQ(yyhcnamewithformat("out/plot.png", 1), "out/plot.bmp");
  EXPECT_EQ(yyhcnamewithformat("dir.v2/plot", 4), "dir.v2/plot.jpg");
}

// The dialog answered from a timer inside its own loop.
struct Answer {
  std::function<void()> act;
  int polls = 0;
  int dialog = 1701;
};
void act_when_shown(XtPointer data, XtIntervalId*) {
  auto* a = static_cast<Answer*>(data);
  constexpr int kGuard = 200;
  if (zelvy_data::data().icurdialog == a->dialog || ++a->polls > kGuard) {
    a->act();
    return;
  }
  XtAppAddTimeOut(zelvy_x::state().ixContext, 30, act_when_shown, a);
}
// A button clicked with the pointer, in its middle.
void press(int button) {
  FieldRecord* f = yyDialogGetField(button, zelvy_dialog::state().iDlgCur);
  ASSERT_NE(f, nullptr);
  Display* d = xdisplay();
  XSync(d, False);
  XWindowAttributes at{};
  XGetWindowAttributes(d, XtWindow(f->widget), &at);
  int x = 0, y = 0;
  Window child = 0;
  XTranslateCoordinates(d, XtWindow(f->widget), DefaultRootWindow(d), at.width / 2, at.height / 2, &x, &y, &child);
  const std::string cmd = "xdotool mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1";
  ASSERT_EQ(std::system(cmd.c_str()), 0);
}

class PageSetupDialog : public MainFormTest {};

TEST_F(PageSetupDialog, DriverOptionsGoToTheSelectedDriver) {
  IGrHardcopySelect(1, zelv_graphics::kDriverPostScript);
  int eps = -1, format = -1;
  Answer a{[&] {
    const int dlg = zelvy_dialog::state().iDlgCur;
    WDialogSelect(1702);
    eps = yyDialogGetField(1015, dlg)->widget && XtIsSensitive(yyDialogGetField(1015, dlg)->widget);
    format = XtIsSensitive(yyDialogGetField(1005, dlg)->widget);
    WDialogPutInteger(1007, 3);
    WDialogPutCheckBox(1015, 1);
    WDialogPutString(1002, "chart.eps");
    press(1);
  }};
  a.dialog = 1702;
  XtAppAddTimeOut(zelvy_x::state().ixContext, 30, act_when_shown, &a);
  EXPECT_EQ(yycomdlghcoptions(), 1);
  EXPECT_EQ(eps, 1);
  EXPECT_EQ(format, 0);
  HardcopyOptionsEntry e;
  ASSERT_TRUE(yyHardcopyHooks().get(e));
  EXPECT_EQ(e.copies, 3);
  EXPECT_TRUE(e.encapsulated);
  EXPECT_EQ(e.file, "chart.eps");
  EXPECT_EQ(zelvy_data::data().icurdialog, kForm);
}

TEST_F(PageSetupDialog, ShowsTheRecordAndStoresWhatIsConfirmed) {
  zelvy_data::PageSetup r;
  r.Command = "lp -d office";
  std::string command;
  float left = 0;
  int paper = 0;
  Answer a{[&] {
    WDialogSelect(1701);
    WDialogGetString(1021, command);
    WDialogGetReal(1011, left);
    WDialogGetMenu(1002, paper);
    WDialogPutRadioButton(1005);  // landscape
    WDialogPutReal(1013, 100.0f);  // right margin
    press(1);
  }};
  XtAppAddTimeOut(zelvy_x::state().ixContext, 30, act_when_shown, &a);
  EXPECT_EQ(yycomdlgpagesetupps(r, "Print setup"), 1);
  EXPECT_EQ(command, "lp -d office");
  EXPECT_FLOAT_EQ(left, 28.0f);
  EXPECT_EQ(paper, 5);
  EXPECT_EQ(r.Orientation, 1);
  EXPECT_EQ(r.RightMargin, 100);
  EXPECT_EQ(r.Width, 842 - 28 - 100);
  // The caller's dialog is current again.
  EXPECT_EQ(zelvy_data::data().icurdialog, kForm);
}

TEST_F(PageSetupDialog, CancelLeavesTheRecord) {
  zelvy_data::PageSetup r;
  Answer a{[&] {
    WDialogSelect(1701);
    WDialogPutReal(1011, 300.0f);
    press(2);
  }};
  XtAppAddTimeOut(zelvy_x::state().ixContext, 30, act_when_shown, &a);
  EXPECT_EQ(yycomdlgpagesetupps(r), 2);
  EXPECT_EQ(r.LeftMargin, 28);
  EXPECT_EQ(zelvy_data::data().icurdialog, kForm);
}

}  // namespace
