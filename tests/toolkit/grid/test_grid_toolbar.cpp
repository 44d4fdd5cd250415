// The grid window's toolbar on screen: which buttons the mode word gives, the
// room the window makes for them, their grey state following the items, and
// a click that runs its command. Then the grid routines that need a widget:
// combo cells by text, a cell's own colours, swapping rows.
#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <Xm/Xm.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "grid_test_ids.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/grid/grid_window_private.h"
#include "toolkit/kernel/comdlg_attach.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/toolbar.h"
#include "toolkit/kernel/toolbar_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

const zelv_rc::ResourceTables& grid_test_resource_tables();

namespace fs = std::filesystem;

namespace {

constexpr int kWindowForm = grid_test_ids::dialog::window_form, kScratch = grid_test_ids::dialog::scratch_form;
constexpr int kSheet = 2401, kTyped = 2101;
constexpr int kFrameWithStatusBar = 39;
constexpr int kModeless = 2;
constexpr int kGreyed = 2, kNoPixmap = 2;
using namespace grid_window;
using namespace grid_item;

std::deque<std::string>& files() {
  static std::deque<std::string> f;
  return f;
}
bool choose(std::string_view, int, std::string& filename, std::string_view, int*) {
  if (files().empty()) return false;
  filename = files().front();
  files().pop_front();
  return true;
}
int ask(int buttonSet, int, int, std::string_view, std::string_view) { return buttonSet == 0 ? 1 : 7; }

void settle() {
  XSync(xdisplay(), False);
  int type = 0;
  MessageRecord m;
  for (int i = 0; i < 400; ++i) {
    WMessagePeek(type, m);
    if (type == -1) {
      XSync(xdisplay(), False);
      WMessagePeek(type, m);
      if (type == -1) break;
    }
  }
}

// xdotool while the toolkit goes on taking events; `later` runs first in the
// background, to answer a modal dialog that the action opens.
void xdotool(const std::string& args, const std::string& later = {}) {
  if (!later.empty()) {
    ASSERT_EQ(std::system(("(sleep 0.5; " + later + ") >/dev/null 2>&1 &").c_str()), 0);
  }
  XSync(xdisplay(), False);
  FILE* p = popen(("LC_ALL=C.UTF-8 xdotool " + args + "; echo done").c_str(), "r");
  ASSERT_NE(p, nullptr);
  pollfd pfd{fileno(p), POLLIN, 0};
  while (poll(&pfd, 1, 5) == 0) settle();
  EXPECT_EQ(pclose(p), 0) << args;
  for (int i = 0; i < 20; ++i) {
    settle();
    ::usleep(20000);
  }
}

class GridToolbar : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(grid_test_resource_tables());
    yyDialogAttach();
    yyGridAttach();
    WInitialise();
    yyDialogEngineInit();
    yyAttachComdlg(ComdlgHooks{choose, ask});
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    dir = fs::temp_directory_path() / ("grid_toolbar_" + std::to_string(::getpid()));
    fs::create_directories(dir);
    WindowOpen(0, 0, 0, {}, {}, {}, {}, kWindowForm);
    WDialogSelect(kWindowForm);
    WGridRows(kSheet, 3);
    zelvy_data::data().ierr = 0;
  }
  void TearDown() override {
    if (handle > 0 && yywindowexists(handle)) WindowCloseChild(handle);
    yywindowdialogclose(0);
    WindowClose();
    fs::remove_all(dir);
    zelvy_data::data().ierr = 0;
  }
  void open(int options) {
    if (handle > 0 && yywindowexists(handle)) WindowCloseChild(handle);
    WindowOpenChild(handle, kFrameWithStatusBar, 60, 60, 560, 360, 0, {}, 0, "Sheet");
    ASSERT_GT(handle, 0);
    WDialogSelect(kWindowForm);
    yygridedit_(kSheet, kModeless, 0, options, {});
    ASSERT_EQ(WInfoError(1), 0);
    settle();
  }
  ToolbarRecord* bar() const {
    return zelvy_toolbar::state().pwToolbar[handle][static_cast<std::size_t>(kToolbarTop)].get();
  }
  std::vector<int> buttons() const {
    return bar() ? bar()->ButtonIds : std::vector<int>{};
  }
  void click_button(int item, const std::string& later = {}) {
    ToolbarRecord* b = bar();
    ASSERT_NE(b, nullptr);
    Widget w = nullptr;
    for (int i = 0; i < b->ButtonCount(); ++i)
      if (b->ButtonIds[static_cast<std::size_t>(i)] == item) w = b->ButtonWidgets[static_cast<std::size_t>(i)];
    ASSERT_NE(w, nullptr);
    int x = 0, y = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), 6, 6, &x, &y, &child);
    xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1", later);
  }
  static std::string cell(int column, int row) {
    std::string s;
    WGridGetCellString(0, column, row, s);
    return s;
  }
  static int info(int item) {
    int value = 0, error = 0;
    yyinfogrid_(0, item, value, error);
    return value;
  }

  fs::path dir;
  int handle = -1;
};

TEST_F(GridToolbar, ShownAboveTheGridWithPicturesAndTips) {
  open(kMenu | kRowCommands | kRowsFollow);
  ASSERT_NE(bar(), nullptr);
  EXPECT_EQ(buttons(), (std::vector<int>{kNew, kOpen, kSave, kPrint, 0, kCut, kCopy, kPaste, 0, kSort,
                                         kInsertBefore, kInsertAfter, kDeleteRow, 0, kFind, kGotoCell}));
  EXPECT_EQ(bar()->Thickness, 16 + 12);
  for (int i = 0; i < bar()->ButtonCount(); ++i) {
    if (bar()->ButtonIds[static_cast<std::size_t>(i)] == 0) continue;
    EXPECT_NE(bar()->ButtonPixmaps[static_cast<std::size_t>(i)], static_cast<Pixmap>(kNoPixmap)) << i;
    EXPECT_FALSE(bar()->ButtonTexts[static_cast<std::size_t>(i)].value_or("").empty()) << i;
  }
  // The grid starts where the bar ends, and both span the client's width.
  Position barY = 0, clientY = 0;
  Dimension barWidth = 0, gridWidth = 0;
  XtVaGetValues(bar()->Bar, XmNy, &barY, XmNwidth, &barWidth, nullptr);
  XtVaGetValues(zelvy_win::state().wtClient[handle], XmNy, &clientY, nullptr);
  XtVaGetValues(yyGridWindowGridOf(handle), XmNwidth, &gridWidth, nullptr);
  EXPECT_EQ(clientY, barY + bar()->Thickness);
  EXPECT_EQ(zelvy_win::state().WinInfo[handle].ClientY, clientY);
  EXPECT_NEAR(barWidth, gridWidth, 4);  // the grid keeps a thin frame

  WindowSelect(handle);
  yywindowraise();
  settle();
  const fs::path shots = fs::path(ZELV_BINARY_DIR) / "shots";
  fs::create_directories(shots);
  EXPECT_EQ(std::system(("import -window root " + (shots / "grid_toolbar.png").string()).c_str()), 0);
}

TEST_F(GridToolbar, ModeWordChoosesButtonsAndPictureSize) {
  open(kMenu | kNoToolbar);
  EXPECT_EQ(bar(), nullptr);
  EXPECT_EQ(yyMenuToolbarThickness(handle, kToolbarTop), 0);

  // Without New, Open, Save and Print the bar begins with Cut; without the
  // row commands only Sort of them stays; 32-pixel pictures.
  open(kMenu | kNoNewOpen | kNoSave | kNoPrint | kNoGoto | kLargeToolbar);
  ASSERT_NE(bar(), nullptr);
  EXPECT_EQ(buttons(), (std::vector<int>{kCut, kCopy, kPaste, 0, kSort, 0, kFind}));
  EXPECT_EQ(bar()->Thickness, 32 + 12);
  EXPECT_EQ(bar()->ButtonWidth, 32);
  for (std::size_t i = 0; i < bar()->ButtonPixmaps.size(); ++i)
    if (bar()->ButtonIds[i] != 0) {
      EXPECT_NE(bar()->ButtonPixmaps[i], static_cast<Pixmap>(kNoPixmap));
    }
  // Without a menu the bar is there all the same.
  open(kRowCommands);
  EXPECT_EQ(buttons().size(), 16u);
}

TEST_F(GridToolbar, ButtonsFollowTheGreyStateOfTheirItems) {
  for (int options : {kMenu | kRowCommands, kRowCommands}) {
    open(options);
    SCOPED_TRACE(options);
    int error = 0;
    // A copied cell can be pasted over a cell that can be written, not over
    // a read-only one: Paste follows the current cell.
    yygridsetcell_(0, 0, 0, error);
    WGridPutCellString(0, 1, 1, "copied");
    yygridsetselection_(0, 0, 0, 0, 0, error);
    ASSERT_TRUE(yyGridWindowCommand(handle, kCopy));
    yygridclearselection_(0, error);
    WGridStateCell(0, 1, 2, 0);
    yygridsetcell_(0, 0, 1, error);
    settle();
    EXPECT_TRUE(yyMenuToolbarButtonState(handle, kPaste) & kGreyed);
    if (options & kMenu) {
      EXPECT_FALSE(yyGridWindowItemEnabled(handle, kPaste));
    }
    yygridsetcell_(0, 0, 0, error);
    settle();
    EXPECT_FALSE(yyMenuToolbarButtonState(handle, kPaste) & kGreyed);
    if (options & kMenu) {
      EXPECT_TRUE(yyGridWindowItemEnabled(handle, kPaste));
    }
    EXPECT_FALSE(yyMenuToolbarButtonState(handle, kSort) & kGreyed);
  }
}

TEST_F(GridToolbar, ClickedButtonsRunTheirCommands) {
  open(kMenu | kRowCommands | kRowsFollow);
  const fs::path file = dir / "four.csv";
  std::ofstream(file) << "\"delta\",4,4.0,\"d\"\n\"alpha\",1,1.0,\"a\"\n\"charlie\",3,3.0,\"c\"\n\"bravo\",2,2.0,\"b\"\n";
  WindowSelect(handle);
  yywindowraise();
  settle();
  files() = {file.string()};
  click_button(kOpen);
  ASSERT_EQ(info(3), 4);
  EXPECT_EQ(cell(1, 1), "delta");

  // Delete Row takes the current row, the first.
  click_button(kDeleteRow);
  EXPECT_EQ(info(3), 3);
  EXPECT_EQ(cell(1, 1), "alpha");

  // Sort opens its dialog; OK sorts by the current column.
  const std::string sort = "xdotool search --sync --name '^Sort$' windowfocus --sync key Return";
  click_button(kSort, sort);
  EXPECT_EQ(cell(1, 1), "alpha");
  EXPECT_EQ(cell(1, 2), "bravo");
  EXPECT_EQ(cell(1, 3), "charlie");
}

class GridRoutines : public GridToolbar {
 protected:
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    dir = fs::temp_directory_path() / ("grid_routines_" + std::to_string(::getpid()));
    fs::create_directories(dir);
    WindowOpen(0, 0, 0, {}, {}, {}, {}, kScratch);
    WDialogSelect(kScratch);
    zelvy_data::data().ierr = 0;
  }
};

TEST_F(GridRoutines, ComboByTextColoursAndSwaps) {
  constexpr int kCount = 0, kAngle = 1, kCombo = 4, kNote = 5;
  int error = 0;
  yygridputmenustring_(kTyped, kCombo, 2, "gamma  ", error);
  EXPECT_EQ(error, 0);
  int option = 0;
  yygridgetcellmenu_(kTyped, kCombo, 2, option, error);
  EXPECT_EQ(option, 3);
  yygridputmenustring_(kTyped, kCombo, 2, "delta", error);
  EXPECT_EQ(error, 1055);
  yygridgetcellmenu_(kTyped, kCombo, 2, option, error);
  EXPECT_EQ(option, 3);  // a text that is no option changes nothing
  yygridputmenustring_(kTyped, kNote, 2, "gamma", error);
  EXPECT_EQ(error, 1111);
  yygridputmenustring_(kTyped, kCombo, 400, "gamma", error);
  EXPECT_EQ(error, 1017);

  // A cell's own colours, -1 for a side left to the column and the grid.
  int fg = 0, bg = 0;
  yygridgetcolour(kTyped, kNote, 1, fg, bg, error);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(fg, -1);
  EXPECT_EQ(bg, -1);
  yygridcolourcell_(kTyped, kNote, 1, 255, 128, 1, -1, 0, 0, error);
  yygridgetcolour(kTyped, kNote, 1, fg, bg, error);
  EXPECT_EQ(fg, 255 + 128 * 256 + 65536);
  EXPECT_EQ(bg, -1);
  int r = 0, g = 0, b = 0;
  WRGBSplit(fg, r, g, b);
  EXPECT_EQ(r, 255);
  EXPECT_EQ(g, 128);
  EXPECT_EQ(b, 1);
  // 256 gives the side back to the scheme.
  yygridcolourcell_(kTyped, kNote, 1, 256, 0, 0, 10, 20, 30, error);
  yygridgetcolour(kTyped, kNote, 1, fg, bg, error);
  EXPECT_EQ(fg, -1);
  EXPECT_EQ(bg, 10 + 20 * 256 + 30 * 65536);

  // Rows trade everything they hold; the labels only when asked.
  // (0-based row 1 holds the coloured cell.)
  WGridPutCellInteger(kTyped, kCount + 1, 2, 17);
  WGridPutCellReal(kTyped, kAngle + 1, 4, 2.5f);
  WGridPutCellString(kTyped, kNote + 1, 4, "fourth");
  yygridsortswap_(kTyped, 1, 3, 1, error);
  EXPECT_EQ(error, 0);
  double number = 0;
  int undefined = 0;
  yygridgetcellnumeric_(kTyped, kCount, 3, number, undefined, error);
  EXPECT_EQ(number, 17);
  yygridgetcellnumeric_(kTyped, kCount, 1, number, undefined, error);
  EXPECT_EQ(undefined, 1);
  yygridgetcellnumeric_(kTyped, kAngle, 1, number, undefined, error);
  EXPECT_EQ(number, 2.5);
  std::string text;
  yygridgetcellstring_(kTyped, kNote, 1, text, error);
  EXPECT_EQ(text, "fourth");
  yygridgetcolour(kTyped, kNote, 3, fg, bg, error);
  EXPECT_EQ(bg, 10 + 20 * 256 + 30 * 65536);  // the colours went along
  yygridgetcolour(kTyped, kNote, 1, fg, bg, error);
  EXPECT_EQ(bg, -1);
  int changed = 0;
  yyinfogrid_(kTyped, 7, changed, error);
  EXPECT_EQ(changed, 1);
  yygridsortswap_(kTyped, 0, 40, 0, error);
  EXPECT_EQ(error, 1017);

  // Cells written with redraw off show once it is back on.
  yygridcellredrawoff_(kTyped, error);
  WGridPutCellString(kTyped, kNote + 1, 1, "late");
  yygridcellredrawon_(kTyped, error);
  EXPECT_EQ(error, 0);
  yygridgetcellstring_(kTyped, kNote, 0, text, error);
  EXPECT_EQ(text, "late");
}

}  // namespace
