// The grid window on screen: a form's grid moved into a child window, its
// files, messages and errors, and its menu driven by the keyboard through the
// X server. File selector and message boxes are stand-ins that record what
// the window asked.
#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "grid_test_ids.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/grid/grid_window_private.h"
#include "toolkit/kernel/comdlg_attach.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

const zelv_rc::ResourceTables& grid_test_resource_tables();

namespace fs = std::filesystem;

namespace {

constexpr int kForm = grid_test_ids::dialog::window_form;
constexpr int kSheet = 2401;
constexpr int kFrameWithStatusBar = 39;
constexpr int kModeless = 2;
constexpr int kName = 1, kCount = 2, kValue = 3, kNote = 4;
constexpr int kAnswerCancel = 2, kAnswerNo = 7;
using namespace grid_window;

// What the window asked of the file selector and the message boxes.
struct Stand {
  std::deque<std::string> files;  // answers of the file selector, in turn
  std::deque<int> answers;        // answers of the boxes; OK / No when empty
  std::vector<std::string> boxes;  // "title: text" of each box
};
Stand& stand() {
  static Stand s;
  return s;
}

bool choose(std::string_view, int, std::string& filename, std::string_view, int*) {
  if (stand().files.empty()) return false;
  filename = stand().files.front();
  stand().files.pop_front();
  return true;
}

int ask(int buttonSet, int, int, std::string_view text, std::string_view title) {
  stand().boxes.push_back(std::string(title) + ": " + std::string(text));
  if (stand().answers.empty()) return buttonSet == 0 ? 1 : kAnswerNo;
  const int a = stand().answers.front();
  stand().answers.pop_front();
  return a;
}

class GridWindow : public ::testing::Test {
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
    dir = fs::temp_directory_path() / ("grid_window_" + std::to_string(::getpid()));
    fs::create_directories(dir);
    WindowOpen(0, 0, 0, {}, {}, {}, {}, kForm);
    WDialogSelect(kForm);
    WGridRows(kSheet, 3);
    stand() = Stand{};
    zelvy_data::data().ierr = 0;
  }
  void TearDown() override {
    if (handle > 0 && yywindowexists(handle)) WindowCloseChild(handle);
    yywindowdialogclose(0);
    WindowClose();
    fs::remove_all(dir);
    zelvy_data::data().ierr = 0;
  }

  void open(int options, const std::string& file = {}) {
    WindowOpenChild(handle, kFrameWithStatusBar, 60, 60, 560, 360, 0, {}, 0, "Sheet");
    ASSERT_GT(handle, 0);
    WDialogSelect(kForm);
    yygridedit_(kSheet, kModeless, 0, options, file);
    ASSERT_EQ(WInfoError(1), 0);
    settle();
  }
  fs::path write(const std::string& name, const std::string& data) {
    std::ofstream(dir / name, std::ios::binary) << data;
    return dir / name;
  }
  static std::string read(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }
  static void settle() {
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
  // Runs xdotool while the toolkit goes on taking events, so that a modal
  // dialog the keys open can be answered by the shell commands `later`,
  // started first in the background.
  static void xdotool(const std::string& args, const std::string& later = {}) {
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
  // Shell commands that wait for a dialog by its title, give it the keyboard,
  // type `keys` into it and press Return until it has gone.
  static std::string answer(const std::string& title, const std::string& keys) {
    const std::string find = "xdotool search --name '^" + title + "$'";
    return "xdotool search --sync --name '^" + title + "$' windowfocus --sync" + (keys.empty() ? "" : "; xdotool " + keys) +
           "; for i in 1 2 3 4 5 6 7 8; do " + find + " || break; " + find +
           " windowfocus --sync key Return; sleep 0.4; done";
  }
  Widget grid() const { return yyGridWindowGridOf(handle); }
  void click_cell(int column, int vrow) {
    Widget w = yyGridCellWidget(grid(), column, vrow);
    ASSERT_NE(w, nullptr);
    int x = 0, y = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), 5, 5, &x, &y, &child);
    xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
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
  std::vector<std::string> names() const {
    std::vector<std::string> v;
    for (int r = 1; r <= info(3); ++r) v.push_back(cell(kName, r));
    return v;
  }

  fs::path dir;
  int handle = -1;
};

const char* const kFive =
    "\"delta\",4,4.0000,\"d\"\n"
    "\"alpha\",1,1.0000,\"a, with comma\"\n"
    "\"echo\",5,5.0000,\"\"\n"
    "\"charlie\",3,3.0000,\"say \"\"c\"\"\"\n"
    "\"bravo\",2,2.0000,\"b\"\n";

TEST_F(GridWindow, TakesTheGridWithMenuStatusBarAndErrors) {
  open(kMenu | kRowCommands | kNoPrint);
  auto& r = zelvy_win::state().WinInfo[handle];
  EXPECT_EQ(r.Kind, 4);
  EXPECT_EQ(*r.Title, "Sheet");
  EXPECT_EQ(info(3), 3);  // the form's row count came along
  EXPECT_EQ(info(14), kMenu | kRowCommands | kNoPrint);
  EXPECT_EQ(yyWindowStatusBarText(handle, 1), "Row");
  EXPECT_EQ(yyWindowStatusBarText(handle, 3), "Column");
  EXPECT_TRUE(yyGridWindowHasItem(handle, grid_item::kInsertAfter));
  EXPECT_FALSE(yyGridWindowHasItem(handle, grid_item::kPrint));
  EXPECT_FALSE(yyGridWindowItemEnabled(handle, grid_item::kFindNext));
  EXPECT_TRUE(yyGridWindowItemEnabled(handle, grid_item::kSort));

  // Field id 0 is the window's grid; the form's own grid is another.
  WGridPutCellString(0, kNote, 2, "in the window");
  EXPECT_EQ(cell(kNote, 2), "in the window");
  std::string s;
  WGridGetCellString(kSheet, kNote, 2, s);
  EXPECT_EQ(s, "");
  // The status bar follows the current cell.
  int error = 0;
  yygridsetcell_(0, 2, 1, error);
  settle();
  EXPECT_EQ(yyWindowStatusBarText(handle, 2), "2");
  EXPECT_EQ(yyWindowStatusBarText(handle, 4), "3");

  yygridedit_(kSheet, kModeless, 0, kMenu, {});
  EXPECT_EQ(WInfoError(1), 1038);
  WindowSelect(0);
  yygridedit_(kSheet, kModeless, 0, kMenu, {});
  EXPECT_EQ(WInfoError(1), 1022);
}

TEST_F(GridWindow, FilesThroughTheMenuWithEveryMessage) {
  open(kMenu | kRowsFollow | kBackup);
  const fs::path five = write("five.csv", kFive);
  stand().files = {five.string()};
  EXPECT_TRUE(yyGridWindowCommand(handle, grid_item::kOpen));
  EXPECT_EQ(info(3), 5);  // grew with the file
  EXPECT_EQ(names(), (std::vector<std::string>{"delta", "alpha", "echo", "charlie", "bravo"}));
  EXPECT_EQ(cell(kNote, 4), "say \"c\"");
  EXPECT_EQ(*zelvy_win::state().WinInfo[handle].Title, "Sheet - [" + five.string() + "]");
  EXPECT_EQ(info(6), 1);  // nothing unsaved
  EXPECT_TRUE(stand().boxes.empty());

  // A change, then New: the prompt names the file; Cancel keeps everything.
  WGridPutCellString(0, kName, 1, "DELTA");
  stand().answers = {kAnswerCancel};
  yyGridWindowCommand(handle, grid_item::kNew);
  ASSERT_EQ(stand().boxes.size(), 1u);
  EXPECT_EQ(stand().boxes[0], "Sheet: Do you want to save changes to " + five.string() + "?");
  EXPECT_EQ(cell(kName, 1), "DELTA");

  // Save keeps a backup of what was there, and writes the grid back in the same form.
  yyGridWindowCommand(handle, grid_item::kSave);
  EXPECT_EQ(read(five.string() + ".bak"), kFive);
  std::string expected = kFive;
  expected.replace(1, 5, "DELTA");
  EXPECT_EQ(read(five), expected);
  EXPECT_EQ(info(6), 1);
  const fs::path tsv = dir / "five.tsv";
  stand().files = {tsv.string()};
  yyGridWindowCommand(handle, grid_item::kSaveAs);
  EXPECT_EQ(read(tsv).substr(0, 46), "DELTA\t4\t4.0000\td\nalpha\t1\t1.0000\ta, with comma\n");

  // Files that can't be loaded leave the grid as it was, with their message.
  const fs::path binary = write("binary.csv", std::string("a,1\n\0\x01\x02,2\n", 10));
  const fs::path words = write("words.csv", "x,abc,1,y\n");
  const fs::path range = write("range.csv", "x,5000000,1,y\n");
  stand().boxes.clear();
  for (const fs::path& f : {binary, dir / "missing.csv"}) {
    stand().files = {f.string()};
    yyGridWindowCommand(handle, grid_item::kOpen);
  }
  EXPECT_EQ(stand().boxes, (std::vector<std::string>{"File Error: Error reading file", "File Error: Error opening file"}));
  EXPECT_EQ(names(), (std::vector<std::string>{"DELTA", "alpha", "echo", "charlie", "bravo"}));
  EXPECT_EQ(*zelvy_win::state().WinInfo[handle].Title, "Sheet - [" + tsv.string() + "]");
  stand().boxes.clear();
  for (const fs::path& f : {words, range}) {
    stand().files = {f.string()};
    yyGridWindowCommand(handle, grid_item::kOpen);
  }
  EXPECT_EQ(stand().boxes, (std::vector<std::string>{"Data Error: Non-numeric data found for numeric cell",
                                                     "Data Error: Out of range value found for numeric cell"}));
  EXPECT_EQ(cell(kName, 1), "x");
  EXPECT_EQ(cell(kCount, 1), "");
  EXPECT_EQ(WInfoError(1), 0);  // the window puts the error state back
}

TEST_F(GridWindow, TooManyRowsFindAndMissingDialogs) {
  open(kMenu);
  const fs::path five = write("five.csv", kFive);
  stand().files = {five.string()};
  yyGridWindowCommand(handle, grid_item::kOpen);
  EXPECT_EQ(stand().boxes, (std::vector<std::string>{"Data Error: File contains too many rows/columns"}));
  EXPECT_EQ(info(3), 3);
  EXPECT_EQ(names(), (std::vector<std::string>{"delta", "alpha", "echo"}));

  // Find Next with a stored text: from the cell after the current one, no wrap.
  GridWindowData& w = *yyGridWindowData(handle);
  w.findText = "A";
  w.findOptions = 2;  // ignore case
  int error = 0;
  yygridsetcell_(0, 0, 0, error);
  stand().boxes.clear();
  yyGridWindowCommand(handle, grid_item::kFindNext);
  EXPECT_EQ(info(4), 1);
  EXPECT_EQ(info(5), 2);
  EXPECT_TRUE(yyGridWindowItemEnabled(handle, grid_item::kFindNext));
  yyGridWindowCommand(handle, grid_item::kFindNext);
  EXPECT_EQ(info(4), 4);  // "a, with comma" in the note column
  yyGridWindowCommand(handle, grid_item::kFindNext);
  EXPECT_EQ(stand().boxes, (std::vector<std::string>{"Find: End of grid reached"}));
}

TEST_F(GridWindow, MenuByKeyboardInsertsDeletesSortsAndGoes) {
  open(kMenu | kRowCommands | kRowsFollow | kMoveLabels);
  const fs::path five = write("five.csv", kFive);
  stand().files = {five.string()};
  yyGridWindowCommand(handle, grid_item::kOpen);
  ASSERT_EQ(info(3), 5);
  for (int r = 1; r <= 5; ++r) WGridLabelRow(0, r, "L" + std::to_string(r));
  settle();

  // The second row made current by the mouse, then the accelerators.
  WindowSelect(handle);
  yywindowraise();
  settle();
  click_cell(0, 1);
  EXPECT_EQ(info(5), 2);
  xdotool("key ctrl+i");
  EXPECT_EQ(names(), (std::vector<std::string>{"delta", "", "alpha", "echo", "charlie", "bravo"}));
  xdotool("key ctrl+shift+i");
  EXPECT_EQ(info(3), 7);
  xdotool("key ctrl+e");
  xdotool("key ctrl+e");
  EXPECT_EQ(names(), (std::vector<std::string>{"delta", "alpha", "echo", "charlie", "bravo"}));
  EXPECT_EQ(info(6), 1);  // row commands leave the grid unchanged in its flags

  // Edit > Sort through the menu's mnemonics; the dialog sorts by the current
  // column, ascending, ignoring case.
  xdotool("key alt+e s", answer("Sort", ""));
  EXPECT_EQ(names(), (std::vector<std::string>{"alpha", "bravo", "charlie", "delta", "echo"}));
  std::string label;
  int error = 0;
  yygridgetrowlabel_(0, 0, label, error);
  EXPECT_EQ(label, "L2");  // labels moved with their rows
  EXPECT_EQ(cell(kNote, 1), "a, with comma");

  // Search > Goto Cell: column 3, row 4.
  xdotool("key ctrl+g", answer("Goto Cell", "key End BackSpace type 3; xdotool key Tab End BackSpace type 4"));
  EXPECT_EQ(info(4), 3);
  EXPECT_EQ(info(5), 4);
  EXPECT_EQ(yyWindowStatusBarText(handle, 2), "4");

  fs::create_directories(fs::path(ZELV_BINARY_DIR) / "shots");
  EXPECT_EQ(std::system(("import -window root " + (fs::path(ZELV_BINARY_DIR) / "shots" / "grid_window.png").string()).c_str()), 0);
}

}  // namespace
