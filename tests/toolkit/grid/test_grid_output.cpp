// A grid on screen leaving it: the HTML of a form's grid and its errors, and
// the Save As HTML and Print of a grid window with the messages they give.
// Message boxes and the print dialog are stand-ins that record what was
// asked; the HTML dialog itself is answered through the X server.
#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/resources/gombrel_resources.h"
#include "grid_test_ids.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/comdlg/grid_print_dialog.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_output.h"
#include "toolkit/grid/grid_window_private.h"
#include "toolkit/kernel/comdlg_attach.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

const zelv_rc::ResourceTables& grid_test_resource_tables();

namespace fs = std::filesystem;

namespace {

constexpr int kForm = grid_test_ids::dialog::window_form;
constexpr int kSheet = 2401;
constexpr int kFrameWithStatusBar = 39;
constexpr int kModeless = 2;
constexpr int kName = 1, kCount = 2, kNote = 4;
constexpr int kAnswerYes = 6;
using namespace grid_window;

struct Stand {
  std::deque<int> answers;         // answers of the boxes; OK / No when empty
  std::vector<std::string> boxes;  // "title: text" of each box
  int printAnswer = 1;             // of the print dialog
  int printShown = 0;
};
Stand& stand() {
  static Stand s;
  return s;
}

int ask(int buttonSet, int, int, std::string_view text, std::string_view title) {
  stand().boxes.push_back(std::string(title) + ": " + std::string(text));
  if (stand().answers.empty()) return buttonSet == 0 ? 1 : 7;
  const int a = stand().answers.front();
  stand().answers.pop_front();
  return a;
}

int print_dialog(GridPrintOptions&, zelvy_data::PageSetup&) {
  ++stand().printShown;
  return stand().printAnswer;
}

std::string read(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

bool contains(const std::vector<std::string>& boxes, const std::string& text) {
  for (const auto& b : boxes)
    if (b.find(text) != std::string::npos) return true;
  return false;
}

class GridOutput : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(grid_test_resource_tables());
    yyDialogAttach();
    yyGridAttach();
    WInitialise();
    yyDialogEngineInit();
    ComdlgHooks hooks;
    hooks.message_box = ask;
    hooks.grid_print = print_dialog;
    yyAttachComdlg(hooks);
  }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    dir = fs::temp_directory_path() / ("grid_output_" + std::to_string(::getpid()));
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
  void open(int options) {
    WindowOpenChild(handle, kFrameWithStatusBar, 60, 60, 560, 360, 0, {}, 0, "Sheet");
    ASSERT_GT(handle, 0);
    WDialogSelect(kForm);
    yygridedit_(kSheet, kModeless, 0, options, {});
    ASSERT_EQ(WInfoError(1), 0);
  }
  static void fill(int fieldid) {
    WGridPutCellString(fieldid, kName, 1, "Quartz");
    WGridPutCellString(fieldid, kName, 2, "Fe<sub>2</sub> &amp; Ö");
    WGridPutCellInteger(fieldid, kCount, 1, 42);
    WGridPutCellString(fieldid, kNote, 3, "last");
    WGridLabelRow(fieldid, 2, "second");
    int error = 0;
    yygridlabelcolumn_(fieldid, 0, "Mineral", error);
    yygridcolourcell_(fieldid, 0, 0, 0, 0, 255, 255, 255, 0, error);
  }
  // Starts shell commands that type `keys` into the dialog of that title
  // once it is up, while the test runs the dialog's own message loop.
  static void later(const std::string& title, const std::string& keys) {
    const std::string cmd = "(xdotool search --sync --name '^" + title + "$' windowfocus --sync; sleep 0.3; " +
                            keys + ") >/dev/null 2>&1 &";
    ASSERT_EQ(std::system(cmd.c_str()), 0);
  }
  fs::path dir;
  int handle = -1;
};

TEST_F(GridOutput, FormGridAsHtmlAndItsErrors) {
  fill(kSheet);
  const fs::path doc = dir / "sheet.htm";
  WGridSaveHTML(kSheet, doc.string(), {}, {}, {}, {}, 0, "Sheet 1", 1);
  ASSERT_EQ(WInfoError(1), 0);
  const std::string html = read(doc);
  EXPECT_NE(html.find("<title>Sheet 1</title>"), std::string::npos);
  EXPECT_NE(html.find("<th>Mineral</th>"), std::string::npos);
  EXPECT_NE(html.find("<td class=\"rl\">second</td>"), std::string::npos);
  EXPECT_NE(html.find("<td class=\"cl\" style=\"background-color:#ffff00;color:#0000ff;\">Quartz</td>"),
            std::string::npos);
  EXPECT_NE(html.find(">Fe<sub>2</sub> &amp; Ö</td>"), std::string::npos);
  EXPECT_NE(html.find(">42</td>"), std::string::npos);
  const std::string tidy = "tidy -q -e -utf8 '" + doc.string() + "' 2>&1 | grep -v 'lacks \"summary\"'";
  FILE* p = popen(tidy.c_str(), "r");
  ASSERT_NE(p, nullptr);
  char buffer[512];
  std::string report;
  while (std::fgets(buffer, sizeof buffer, p)) report += buffer;
  pclose(p);
  EXPECT_EQ(report, "");

  // Part of the grid as a fragment.
  WGridSaveHTML(kSheet, doc.string(), 2, 2, 1, 1, grid_html::kFragment);
  EXPECT_EQ(read(doc), "<table border=0 cellpadding=5 style=\"border-collapse: collapse;\">\n<tr>\n<td></td>\n"
                       "<th style=\"text-align:center;\">Count</th>\n</tr>\n<tr>\n"
                       "<td style=\"text-align:left; font-weight: bold;\">&nbsp;</td>\n"
                       "<td style=\"text-align:left;\">42</td>\n</tr>\n</table>\n");

  WGridSaveHTML(kSheet, (dir / "no" / "such.htm").string());
  EXPECT_EQ(WInfoError(1), grid_html::kOpenError);
  if (fs::exists("/dev/full")) {
    WGridSaveHTML(kSheet, "/dev/full");
    EXPECT_EQ(WInfoError(1), grid_html::kWriteError);
  }
  WGridSaveHTML(kSheet, doc.string(), 9, 9);
  EXPECT_NE(WInfoError(1), 0);
}

TEST_F(GridOutput, SaveAsHtmlDialogAsksAndTells) {
  open(kMenu | kBackup);
  fill(0);
  int ok = 0;
  // A blank name is refused; Escape then leaves the dialog.
  later("Save As HTML", "xdotool key Return; sleep 0.5; xdotool key Escape");
  yygridwinsavehtml_(handle, 0, 0, 0, 0, ok);
  EXPECT_EQ(ok, 0);
  EXPECT_TRUE(contains(stand().boxes, "Save As HTML: Filename required")) << stand().boxes.size();

  // An existing file: the question, then a copy of what was there.
  const fs::path old = dir / "old.htm";
  std::ofstream(old) << "before\n";
  stand() = Stand{};
  stand().answers = {kAnswerYes};
  later("Save As HTML", "xdotool key Return");
  yygridwinsavehtml_(handle, 0, 0, 0, 0, ok, 0, old.string());
  EXPECT_EQ(ok, 1);
  ASSERT_EQ(stand().boxes.size(), 1u);
  EXPECT_EQ(stand().boxes[0], "Save As HTML: File already exists:\r" + old.string() + "\r\rDo you want to replace it?");
  EXPECT_EQ(read(old.string() + ".bak"), "before\n");
  EXPECT_NE(read(old).find("<td class=\"cl\" style=\"background-color:#ffff00;color:#0000ff;\">Quartz</td>"),
            std::string::npos);

  // A place that can't be written to.
  stand() = Stand{};
  later("Save As HTML", "xdotool key Return");
  yygridwinsavehtml_(handle, 0, 0, 0, 0, ok, 0, (dir / "no" / "such.htm").string());
  EXPECT_EQ(ok, 0);
  EXPECT_TRUE(contains(stand().boxes, "File Error: Error opening file"));

  // A program whose resources lack the dialog.
  stand() = Stand{};
  yyrcinstall(gombrel_resource_tables());
  yygridwinsavehtml_(handle, 0, 0, 0, 0, ok, 0, old.string());
  yyrcinstall(grid_test_resource_tables());
  EXPECT_EQ(ok, 0);
  EXPECT_TRUE(contains(stand().boxes, "Unable to load grid save HTML dialog"));
}

TEST_F(GridOutput, PrintWithoutAPrintCommandKeepsTheDocument) {
  open(kMenu);
  fill(0);
  auto& page = zelvy_data::data().psgrid[kGridPrintWindow];
  const zelvy_data::PageSetup kept = page;
  const std::string kepttmp = zelvy_data::data().ctmpfile[1];
  page.Destination = 1;
  page.Command = "no-such-print-command-here";
  const fs::path tmp = dir / "grid.ps";
  zelvy_data::data().ctmpfile[1] = tmp.string();
  yygridwinprint_(handle, 0, 0, 0, 0);
  EXPECT_EQ(stand().printShown, 1);
  ASSERT_EQ(stand().boxes.size(), 1u);
  EXPECT_NE(stand().boxes[0].find("\"no-such-print-command-here\" was not found"), std::string::npos);
  EXPECT_NE(stand().boxes[0].find(tmp.string()), std::string::npos);
  ASSERT_TRUE(fs::exists(tmp));
  EXPECT_NE(read(tmp).find("(Quartz) lsh"), std::string::npos);
  EXPECT_NE(read(tmp).find("%%Title: Untitled\n"), std::string::npos);  // a window without a file
  EXPECT_EQ(std::system(("gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=nullpage '" + tmp.string() + "' >/dev/null 2>&1").c_str()), 0);

  // To a file that exists: asked first, and No leaves it alone.
  stand() = Stand{};
  page.Destination = 2;
  page.File = (dir / "out.ps").string();
  std::ofstream(page.File) << "mine\n";
  yygridwinprint_(handle, 0, 0, 0, 0);
  ASSERT_EQ(stand().boxes.size(), 1u);
  EXPECT_EQ(stand().boxes[0], "Overwrite?: " + page.File + " already exists.\r\rDo you want to replace it?");
  EXPECT_EQ(read(page.File), "mine\n");

  // A command around the file: run, and the temporary file goes.
  int ok = 0;
  const fs::path copy = dir / "copy.ps";
  yygridprint_(handle, 0, ok, 2, 2, 1, 1, kGridPrintWindow, "cp @ '" + copy.string() + "'", "Title");
  EXPECT_EQ(ok, 1);
  EXPECT_FALSE(fs::exists(tmp));
  const std::string ps = read(copy);
  EXPECT_NE(ps.find("%%Title: Title\n"), std::string::npos);
  EXPECT_NE(ps.find("(second) lsh"), std::string::npos);
  EXPECT_EQ(ps.find("(Quartz) lsh"), std::string::npos);
  yygridprint_(handle, 0, ok, 0, 0, 0, 0, kGridPrintWindow, (dir / "no" / "such.ps").string());
  EXPECT_EQ(ok, 0);

  // The window's menu reaches the dialog; cancelled there, nothing is written.
  stand() = Stand{};
  stand().printAnswer = 2;
  fs::remove(page.File);
  EXPECT_TRUE(yyGridWindowCommand(handle, grid_item::kPrintSelection));
  EXPECT_EQ(stand().printShown, 1);
  EXPECT_FALSE(fs::exists(page.File));

  page = kept;
  zelvy_data::data().ctmpfile[1] = kepttmp;
}

TEST_F(GridOutput, PrintDialogShowsAndTakesTheOptions) {
  GridPrintOptions o;
  o.scale = 150;
  o.rowLines = false;
  o.labelsEachPage = true;
  o.colour = o.colourBackground = true;
  zelvy_data::PageSetup page;
  int ok = 0;
  later("Print", "xdotool key Return");
  yycomdlggridprint_(1, o, page, ok);
  EXPECT_EQ(ok, 1);
  EXPECT_EQ(o.scale, 150);
  EXPECT_FALSE(o.rowLines);
  EXPECT_TRUE(o.columnLines);
  EXPECT_TRUE(o.labelsEachPage);
  EXPECT_TRUE(o.colourBackground);
  EXPECT_EQ(zelvy_data::data().icurdialog, kForm);  // the caller's dialog is back

  later("Print", "xdotool key Escape");
  yycomdlggridprint_(1, o, page, ok);
  EXPECT_EQ(ok, 0);
  EXPECT_TRUE(stand().boxes.empty());

  yyrcinstall(gombrel_resource_tables());
  yycomdlggridprint_(1, o, page, ok);
  yyrcinstall(grid_test_resource_tables());
  EXPECT_EQ(ok, 0);
  EXPECT_TRUE(contains(stand().boxes, "Error: Unable to load grid print dialog"));
}

}  // namespace
