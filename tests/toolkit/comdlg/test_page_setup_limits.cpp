// Page setup limits: how far each margin may go on every paper and in every
// unit, which margin fields stay enabled, every paper chosen in the dialog
// and kept in the record; the default paper and the registry file the
// toolkit's system queries give.
#include "tests/toolkit/dialog/form_fixture.h"
#include "toolkit/comdlg/file_selector.h"
#include "toolkit/comdlg/page_setup.h"
#include "toolkit/kernel/startup.h"

#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <Xm/Xm.h>

#include <cstdlib>
#include <functional>
#include <optional>
#include <string>

namespace {

// An environment variable set for one scope, put back after it.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, std::optional<std::string> value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    if (value) ::setenv(name, value->c_str(), 1);
    else ::unsetenv(name);
  }
  ~ScopedEnv() {
    if (old_) ::setenv(name_, old_->c_str(), 1);
    else ::unsetenv(name_);
  }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  const char* name_;
  std::optional<std::string> old_;
};

// The limit of each margin is the last value a confirmed entry takes: at it
// the entry is accepted, a point beyond it refused, on every paper, both ways
// round and in every unit.
TEST(PageSetupLimits, EachMarginGoesUpToTheLastAcceptedValue) {
  for (int paper = 1; paper <= zelvy_data::kPaperCount; ++paper) {
    for (int orientation : {0, 1}) {
      for (int unit = kUnitPoints; unit < kUnitCount; ++unit) {
        SCOPED_TRACE(std::string(zelvy_data::paper_size(paper).name) + " orientation " +
                     std::to_string(orientation) + " unit " + std::to_string(unit));
        const float per = yypageunitpoints(unit);
        PageSetupEntry e;
        e.paper = paper;
        e.orientation = orientation;
        e.unit = unit;
        e.command = "lpr";
        e.margins = {20 / per, 30 / per, 40 / per, 50 / per};
        const MarginLimits limits = yycomdlgpagesetupscale(paper, orientation, e.margins, per);
        for (std::size_t i = 0; i < 4; ++i) {
          EXPECT_EQ(limits.lower[i], 0.0f);
          PageSetupEntry at = e;
          at.margins[i] = limits.upper[i];
          zelvy_data::PageSetup r;
          std::string message, title;
          EXPECT_TRUE(yypagesetupaccept(at, r, message, title)) << "margin " << i;
          EXPECT_EQ(i % 2 == 0 ? r.Width : r.Height, 1) << "margin " << i;
          at.margins[i] = limits.upper[i] + 1 / per;
          EXPECT_FALSE(yypagesetupaccept(at, r, message, title)) << "margin " << i;
        }
      }
    }
  }
}

TEST(PageSetupLimits, MarginsPastThePaperLeaveTheOppositeNoRoom) {
  // A4 upright in points: a right margin wider than the paper.
  const MarginLimits limits = yycomdlgpagesetupscale(5, 0, {10, 10, 700, 10}, 1.0f);
  EXPECT_EQ(limits.upper[0], 0.0f);
  EXPECT_EQ(limits.upper[2], 595.0f - 10 - 1);
  // Landscape turns the paper: left and right share its 842 points.
  EXPECT_EQ(yycomdlgpagesetupscale(5, 1, {10, 10, 10, 10}, 1.0f).upper[0], 842.0f - 11);
  // Negative margins count as none against the opposite one.
  EXPECT_EQ(yycomdlgpagesetupscale(5, 0, {0, -50, 0, 0}, 1.0f).upper[3], 842.0f - 1);
  // No unit: no room for anything.
  EXPECT_EQ(yycomdlgpagesetupscale(5, 0, {10, 10, 10, 10}, 0.0f).upper[0], 0.0f);
}

TEST(PageSetupLimits, FieldsAtTheirLimitAloneAreDisabled) {
  PageSetupEntry e;  // A4 upright, in points
  e.margins = {28, 43, 28, 43};
  EXPECT_EQ(yycomdlgpagesetupscalestate(e), (std::array<bool, 4>{true, true, true, true}));
  // Left and right leaving one point between them: neither can grow.
  e.margins[2] = 595 - 28 - 1;
  EXPECT_EQ(yycomdlgpagesetupscalestate(e), (std::array<bool, 4>{false, true, false, true}));
  e.margins[2] += 50;  // beyond: must stay open to be brought back
  EXPECT_TRUE(yycomdlgpagesetupscalestate(e)[2]);
  // In inches, within half a point of the limit counts as on it.
  e.unit = kUnitInches;
  e.margins = {1, 1, (595.0f - 72 - 1 - 0.3f) / 72, 1};
  EXPECT_FALSE(yycomdlgpagesetupscalestate(e)[2]);
}

TEST(PageSetupLimits, SystemQueriesGiveTheDefaultPaperAndTheRegistryFile) {
  {
    ScopedEnv all("LC_ALL", std::nullopt), paper("LC_PAPER", "en_CA.UTF-8");
    EXPECT_EQ(yyinfosystem(kInfoDefaultPaper), 9);
  }
  {
    ScopedEnv all("LC_ALL", std::nullopt), paper("LC_PAPER", "de_DE.UTF-8");
    EXPECT_EQ(yyinfosystem(kInfoDefaultPaper), 5);
  }
  // Other codes are those of the public query.
  EXPECT_EQ(yyinfosystem(6), WInfoSystem(6));

  std::string file;
  {
    ScopedEnv config("XDG_CONFIG_HOME", "/srv/cfg");
    WInfoFilename(15, file);
    EXPECT_EQ(file, "/srv/cfg/zelvy.reg");
  }
  {
    ScopedEnv config("XDG_CONFIG_HOME", std::nullopt), home("HOME", "/home/someone");
    file.clear();
    WInfoFilename(15, file);
    EXPECT_EQ(file, "/home/someone/.config/zelvy.reg");
  }
}

// The dialog answered from a timer inside its own loop.
struct Answer {
  std::function<void()> act;
  int polls = 0;
};
void act_when_shown(XtPointer data, XtIntervalId*) {
  auto* a = static_cast<Answer*>(data);
  constexpr int kGuard = 200, kPageSetup = 1701;
  if (zelvy_data::data().icurdialog == kPageSetup || ++a->polls > kGuard) {
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

constexpr int kPaperField = 1002, kLeftField = 1011, kTopField = 1012, kRightField = 1013, kOk = 1;

class PageSetupPapers : public MainFormTest {};

// Each paper of the list is the one stored, and the printed area is worked
// out on it.
TEST_F(PageSetupPapers, EveryPaperOfTheListIsKeptInTheRecord) {
  for (int paper = 1; paper <= zelvy_data::kPaperCount; ++paper) {
    SCOPED_TRACE(zelvy_data::paper_size(paper).name);
    zelvy_data::PageSetup r;
    std::string shown;
    Answer a{[&] {
      WDialogSelect(1701);
      WDialogPutOption(kPaperField, paper);
      int option = 0;
      WDialogGetMenu(kPaperField, option, shown);
      press(kOk);
    }};
    XtAppAddTimeOut(zelvy_x::state().ixContext, 30, act_when_shown, &a);
    ASSERT_EQ(yycomdlgpagesetupps(r), 1);
    EXPECT_EQ(shown.substr(0, shown.find_last_not_of(' ') + 1), zelvy_data::paper_size(paper).name);
    EXPECT_EQ(r.Paper, paper);
    EXPECT_EQ(r.Width, zelvy_data::paper_size(paper).width - 56);
    EXPECT_EQ(r.Height, zelvy_data::paper_size(paper).height - 86);
  }
}

// A record whose left and right margins leave a single point of area shows
// those two fields disabled, top and bottom enabled.
TEST_F(PageSetupPapers, MarginAtItsLimitIsDisabledOnShow) {
  zelvy_data::PageSetup r;
  r.RightMargin = 595 - r.LeftMargin - 1;
  yymarginsps(r, 2);
  bool right = true, left = true, top = false;
  Answer a{[&] {
    WDialogSelect(1701);
    const int dlg = zelvy_dialog::state().iDlgCur;
    right = XtIsSensitive(yyDialogGetField(kRightField, dlg)->widget);
    left = XtIsSensitive(yyDialogGetField(kLeftField, dlg)->widget);
    top = XtIsSensitive(yyDialogGetField(kTopField, dlg)->widget);
    press(2);
  }};
  XtAppAddTimeOut(zelvy_x::state().ixContext, 30, act_when_shown, &a);
  EXPECT_EQ(yycomdlgpagesetupps(r), 2);
  EXPECT_FALSE(right);
  EXPECT_FALSE(left);
  EXPECT_TRUE(top);
}

}  // namespace
