// The main form's grid of twin matrices and its text fields with the
// clipboard of other programs: a copied selection read back with xclip, text
// put there with xclip pasted into cells and into a text field.
#include "tests/toolkit/dialog/form_fixture.h"

#include <X11/Intrinsic.h>
#include <Xm/Text.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include <unistd.h>

#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/kernel/clipboard_private.h"

namespace {

namespace fs = std::filesystem;
constexpr int kGrid = gombrel_ids::main_form::twin_matrices;
constexpr int kTitle = gombrel_ids::main_form::title;
constexpr int kEditable = 1;

class GridClipboardTest : public MainFormTest {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(gombrel_resource_tables());
    yyDialogAttach();
    yyGridAttach();
    WInitialise();
    yyDialogEngineInit();
  }
  void SetUp() override {
    MainFormTest::SetUp();
    dir_ = fs::temp_directory_path() / ("zelv_gridclip_" + std::to_string(::getpid()));
    fs::create_directories(dir_);
    WGridRows(kGrid, 3);
    for (int row = 1; row <= 3; ++row) WGridStateCell(kGrid, 1, row, kEditable);
  }
  void TearDown() override {
    fs::remove_all(dir_);
    MainFormTest::TearDown();
  }
  static void pump(int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    int type = 0;
    MessageRecord m;
    while (std::chrono::steady_clock::now() < end) {
      XSync(xdisplay(), False);
      do WMessagePeek(type, m);
      while (type != -1);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  std::string xclip_out() {
    const fs::path out = dir_ / "out", done = dir_ / "done";
    fs::remove(done);
    const std::string cmd =
        "(xclip -o -selection clipboard > '" + out.string() + "' 2>/dev/null; touch '" + done.string() + "') &";
    EXPECT_EQ(std::system(cmd.c_str()), 0);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!fs::exists(done) && std::chrono::steady_clock::now() < end) pump(20);
    std::ifstream in(out, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }
  void xclip_in(const std::string& text) {
    const fs::path in = dir_ / "in";
    std::ofstream(in, std::ios::binary) << text;
    const std::string cmd = "xclip -i -selection clipboard '" + in.string() + "' >/dev/null 2>&1";
    ASSERT_EQ(std::system(cmd.c_str()), 0);
    pump(100);
  }
  static Widget grid() { return yyGridOfField(field(kGrid)); }
  static std::string cell(int row) {
    std::string text;
    WGridGetCellString(kGrid, 1, row, text);
    return text;
  }
  fs::path dir_;
};

TEST_F(GridClipboardTest, ACopiedSelectionReachesOtherProgramsAsLinesOfText) {
  WGridPutCellString(kGrid, 1, 1, "1 0 0 0 1 0 0 0 1");
  WGridPutCellString(kGrid, 1, 2, "-1 0 0 0 -1 0 0 0 1");
  int e = 0;
  yygridsetselection_(kGrid, 0, 0, 0, 1, e);
  ASSERT_EQ(e, 0);
  ASSERT_TRUE(yyGridWidgetSelCellCopyX(grid()));
  EXPECT_EQ(xclip_out(), "1 0 0 0 1 0 0 0 1\n-1 0 0 0 -1 0 0 0 1\n");
}

TEST_F(GridClipboardTest, TextFromAnotherProgramPastesIntoCellsAndIntoATextField) {
  xclip_in("0 1 0 1 0 0 0 0 -1\n0 0 1 0 1 0 1 0 0\n");
  int e = 0;
  yygridsetcell_(kGrid, 0, 0, e);
  ASSERT_TRUE(yyGridCanPaste(grid()));
  ASSERT_TRUE(yyGridWidgetSelCellPasteX(grid()));
  EXPECT_EQ(cell(1), "0 1 0 1 0 0 0 0 -1");
  EXPECT_EQ(cell(2), "0 0 1 0 1 0 1 0 0");

  xclip_in("Quartz");
  Widget title = field(kTitle).widget;
  XmTextSetString(title, const_cast<char*>("Low "));
  XmTextSetInsertionPosition(title, 4);
  ASSERT_TRUE(yyXmTextPaste(title));
  char* s = XmTextGetString(title);
  EXPECT_STREQ(s, "Low Quartz");
  XtFree(s);
}

}  // namespace
