// The main form's grid of twin matrices and its text fields with the
// clipboard of other programs: a copied selection read back with xclip, text
// put there with xclip pasted into cells and into a text field.
#include "tests/toolkit/dialog/form_fixture.h"

#include <X11/Intrinsic.h>
#include <Xm/Text.h>

#include <string>

#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/kernel/clipboard_private.h"
#include "tests/toolkit/kernel/clipboard_peer.h"

namespace {

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
    WGridRows(kGrid, 3);
    for (int row = 1; row <= 3; ++row) WGridStateCell(kGrid, 1, row, kEditable);
  }
  static Widget grid() { return yyGridOfField(field(kGrid)); }
  static std::string cell(int row) {
    std::string text;
    WGridGetCellString(kGrid, 1, row, text);
    return text;
  }
  ClipboardPeer peer;
};

TEST_F(GridClipboardTest, ACopiedSelectionReachesOtherProgramsAsLinesOfText) {
  WGridPutCellString(kGrid, 1, 1, "1 0 0 0 1 0 0 0 1");
  WGridPutCellString(kGrid, 1, 2, "-1 0 0 0 -1 0 0 0 1");
  int e = 0;
  yygridsetselection_(kGrid, 0, 0, 0, 1, e);
  ASSERT_EQ(e, 0);
  ASSERT_TRUE(yyGridWidgetSelCellCopyX(grid()));
  EXPECT_EQ(peer.read(), "1 0 0 0 1 0 0 0 1\n-1 0 0 0 -1 0 0 0 1\n");
}

TEST_F(GridClipboardTest, TextFromAnotherProgramPastesIntoCellsAndIntoATextField) {
  ASSERT_TRUE(peer.write("0 1 0 1 0 0 0 0 -1\n0 0 1 0 1 0 1 0 0\n"));
  int e = 0;
  yygridsetcell_(kGrid, 0, 0, e);
  ASSERT_TRUE(yyGridCanPaste(grid()));
  ASSERT_TRUE(yyGridWidgetSelCellPasteX(grid()));
  EXPECT_EQ(cell(1), "0 1 0 1 0 0 0 0 -1");
  EXPECT_EQ(cell(2), "0 0 1 0 1 0 1 0 0");

  ASSERT_TRUE(peer.write("Quartz"));
  Widget title = field(kTitle).widget;
  XmTextSetString(title, const_cast<char*>("Low "));
  XmTextSetInsertionPosition(title, 4);
  ASSERT_TRUE(yyXmTextPaste(title));
  char* s = XmTextGetString(title);
  EXPECT_STREQ(s, "Low Quartz");
  XtFree(s);
}

}  // namespace
