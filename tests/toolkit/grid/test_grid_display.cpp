// The grid field on screen: the main form's twin matrices and a scratch form
// with a column of every cell type, driven through the routines, the widgets
// and the keyboard and mouse of the X server.
#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <Xm/ComboBox.h>
#include <Xm/ScrollBar.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>
#include <poll.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "grid_test_ids.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/combo_private.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

const zelv_rc::ResourceTables& grid_test_resource_tables();

namespace {

constexpr int kMainForm = grid_test_ids::dialog::main_form;
constexpr int kScratch = grid_test_ids::dialog::scratch_form;
constexpr int kTwin = 1038, kTitle = 1002;
constexpr int kTyped = 2101, kSmall = 2102;
// Columns of the scratch grid, from 1.
constexpr int kCount = 1, kAngle = 2, kActive = 4, kKind = 5, kNote = 6;
constexpr const char* kMatrix = "1 0 0  0 -1 0  0 0 -1";

class GridTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    yyrcinstall(grid_test_resource_tables());
    yyDialogAttach();
    yyGridAttach();
    WInitialise();
    yyDialogEngineInit();
  }
  void open(int form) {
    ASSERT_NE(xdisplay(), nullptr);
    WindowOpen(0, 0, 0, {}, {}, {}, {}, form);
    WDialogSelect(form);
    settle();
    opened = true;
    zelvy_data::data().ierr = 0;
  }
  void TearDown() override {
    if (!opened) return;
    yywindowdialogclose(0);
    WindowClose();
    zelvy_data::data().ierr = 0;
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
  static void xdotool(const std::string& args) {
    XSync(xdisplay(), False);
    FILE* p = popen(("LC_ALL=C.UTF-8 xdotool " + args + "; echo done").c_str(), "r");
    ASSERT_NE(p, nullptr);
    pollfd pfd{fileno(p), POLLIN, 0};
    while (poll(&pfd, 1, 5) == 0) settle();
    EXPECT_EQ(pclose(p), 0) << args;
    settle();
  }
  static void click(Widget w, const std::string& modifiers = {}) {
    int x = 0, y = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), 4, 4, &x, &y, &child);
    const std::string press = modifiers.empty() ? "click 1" : "keydown " + modifiers + " click 1 keyup " + modifiers;
    xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " " + press);
  }

  static Widget grid(int id) {
    auto& d = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur];
    return yyGridOfField(d.fields[static_cast<std::size_t>(yyDialogFindField(id, zelvy_dialog::state().iDlgCur))]);
  }
  static std::string shown(Widget w) {
    char* s = XmTextGetString(w);
    std::string out = s ? s : "";
    XtFree(s);
    return out;
  }
  static std::string cell(int id, int column, int row) {
    std::string s;
    WGridGetCellString(id, column, row, s);
    return s;
  }
  static int info(int id, int item) {
    int value = 0, error = 0;
    yyinfogrid_(id, item, value, error);
    return value;
  }
  // The vertical bar moved as by the user's drag.
  static void drag_bar(Widget g, int value) {
    Widget bar = yyGridPart(g).st->scrollBarV;
    int slider = 0, inc = 0, page = 0, old = 0;
    XmScrollBarGetValues(bar, &old, &slider, &inc, &page);
    XmScrollBarSetValues(bar, value, slider, inc, page, True);
    settle();
  }
  static int error() { return WInfoError(1); }
  // Runs xdotool, then takes the messages its events make until one of `type`.
  static bool message_after(const std::string& args, int type, MessageRecord& m) {
    XSync(xdisplay(), False);
    if (std::system(("xdotool " + args).c_str()) != 0) return false;
    for (int i = 0; i < 400; ++i) {
      int t = 0;
      XSync(xdisplay(), False);
      WMessagePeek(t, m);
      if (t == type) return true;
    }
    return false;
  }

  bool opened = false;
};

TEST_F(GridTest, RowCountsAndAddressingErrors) {
  open(kMainForm);
  WGridRows(kTwin, 5);
  EXPECT_EQ(error(), 0);
  EXPECT_EQ(info(kTwin, 3), 5);
  WGridRows(kTwin, 101);
  EXPECT_EQ(error(), 1018);
  EXPECT_EQ(info(kTwin, 3), 100);
  WGridRows(kTwin, 0);
  EXPECT_EQ(error(), 1113);
  EXPECT_EQ(info(kTwin, 3), 100);
  WGridPutCellString(kTwin, 2, 1, kMatrix);
  EXPECT_EQ(error(), 1017);
  WGridPutCellString(kTwin, 1, 101, kMatrix);
  EXPECT_EQ(error(), 1017);
  WGridPutCellString(kTitle, 1, 1, kMatrix);
  EXPECT_EQ(error(), 1006);
  const int current = zelvy_data::data().icurdialog;
  zelvy_data::data().icurdialog = 0;
  WGridRows(kTwin, 3);
  EXPECT_EQ(error(), 1005);
  zelvy_data::data().icurdialog = current;
}

TEST_F(GridTest, ShrinkKeepsSurvivorsAndLabelsShow) {
  open(kMainForm);
  WGridRows(kTwin, 5);
  WGridPutCellString(kTwin, 1, 2, kMatrix);
  WGridPutCellString(kTwin, 1, 5, "gone   ");
  WGridLabelRow(kTwin, 2, "Twin B");
  EXPECT_EQ(cell(kTwin, 1, 5), "gone");  // blanks cut from the end
  WGridRows(kTwin, 3);
  WGridRows(kTwin, 5);
  EXPECT_EQ(cell(kTwin, 1, 2), kMatrix);
  EXPECT_EQ(cell(kTwin, 1, 5), "");
  Widget g = grid(kTwin);
  EXPECT_EQ(shown(yyGridCellWidget(g, 0, 1)), kMatrix);
  XmString label = nullptr;
  XtVaGetValues(yyGridPart(g).st->rowLabelWidgets[1], XmNlabelString, &label, nullptr);
  char* text = static_cast<char*>(XmStringUnparse(label, nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, nullptr, 0, XmOUTPUT_ALL));
  EXPECT_STREQ(text, "Twin B");
  XtFree(text);
  XmStringFree(label);
}

TEST_F(GridTest, ValuesSurviveScrollingByBarAndKeys) {
  open(kMainForm);
  WGridRows(kTwin, 5);
  WGridPutCellString(kTwin, 1, 4, kMatrix);
  Widget g = grid(kTwin);
  const GridPart& p = yyGridPart(g);
  ASSERT_GE(p.st->fullRows, 2);
  ASSERT_LT(p.st->fullRows, 4) << "row 4 must start out of view";
  drag_bar(g, 2);
  EXPECT_EQ(info(kTwin, 9), 3);
  EXPECT_EQ(shown(yyGridCellWidget(g, 0, 1)), kMatrix);
  drag_bar(g, 0);
  EXPECT_EQ(info(kTwin, 9), 1);
  for (int r = 0; r < p.nrowVis; ++r) EXPECT_NE(shown(yyGridCellWidget(g, 0, r)), kMatrix);
  // Down from row 1 three times reaches row 4, scrolling it into view.
  click(yyGridCellWidget(g, 0, 0));
  EXPECT_EQ(info(kTwin, 5), 1);
  xdotool("key Down Down Down");
  EXPECT_EQ(info(kTwin, 5), 4);
  EXPECT_GT(info(kTwin, 9), 1);
  ASSERT_GE(3 - p.st->firstRow, 0);
  EXPECT_EQ(shown(yyGridCellWidget(g, 0, 3 - p.st->firstRow)), kMatrix);
  xdotool("key Up Up Up");
  EXPECT_EQ(info(kTwin, 9), 1);
  EXPECT_EQ(cell(kTwin, 1, 4), kMatrix);
}

TEST_F(GridTest, TypingIntoCellsStoresWhatTheColumnTakes) {
  open(kScratch);
  Widget g = grid(kTyped);
  click(yyGridCellWidget(g, kNote - 1, 1));
  EXPECT_EQ(info(kTyped, 4), kNote);
  EXPECT_EQ(info(kTyped, 5), 2);
  xdotool("type --delay 40 'twin law'");
  EXPECT_EQ(cell(kTyped, kNote, 2), "twin law");
  // Letters never enter a numeric cell.
  click(yyGridCellWidget(g, kCount - 1, 2));
  xdotool("type --delay 40 '12ab3'");
  EXPECT_EQ(cell(kTyped, kCount, 3), "123");
  EXPECT_EQ(info(kTyped, 7), 1);
  // A number typed is shown in the column's format once the cell is left.
  click(yyGridCellWidget(g, kAngle - 1, 0));
  xdotool("type --delay 40 '2.5'");
  xdotool("key Down");
  EXPECT_EQ(info(kTyped, 5), 2);
  EXPECT_EQ(shown(yyGridCellWidget(g, kAngle - 1, 0)), "2.5000");
  EXPECT_EQ(cell(kTyped, kAngle, 1), "2.5000");
  // The program's "abc" empties it, and an empty numeric cell reads empty.
  WGridPutCellString(kTyped, kCount, 3, "abc");
  EXPECT_EQ(error(), 0);
  EXPECT_EQ(cell(kTyped, kCount, 3), "");
  EXPECT_EQ(shown(yyGridCellWidget(g, kCount - 1, 2)), "");
  EXPECT_EQ(cell(kTyped, kAngle, 5), "");
}

TEST_F(GridTest, ColumnTypeRangeAndLabelRules) {
  open(kScratch);
  WGridPutCellString(kTyped, kActive, 1, "1");
  EXPECT_EQ(error(), 1111);
  WGridPutCellInteger(kTyped, kCount, 1, 500);  // outside 0..100
  EXPECT_EQ(error(), 1009);
  EXPECT_EQ(cell(kTyped, kCount, 1), "");
  WGridPutCellInteger(kTyped, kCount, 1, 42);
  WGridPutCellReal(kTyped, kAngle, 30, 1.25f, "(F8.3)");  // off screen: no widget touched
  WGridPutCellDouble(kTyped, 3, 1, 0.5);
  EXPECT_EQ(error(), 0);
  EXPECT_EQ(cell(kTyped, kCount, 1), "42");
  EXPECT_EQ(cell(kTyped, kAngle, 30), "1.250");
  EXPECT_EQ(cell(kTyped, 3, 1), "0.50000");
  // The small grid has no row labels: a label is ignored, silently.
  WGridLabelRow(kSmall, 1, "ignored");
  EXPECT_EQ(error(), 0);
  std::string label = "x";
  int e = 0;
  yygridgetrowlabel_(kSmall, 0, label, e);
  EXPECT_EQ(label, "");
  WGridStateCell(kTyped, kNote, 1, 2);
  EXPECT_FALSE(XmTextGetEditable(yyGridCellWidget(grid(kTyped), kNote - 1, 0)));
  WGridStateCell(kTyped, kNote, 1, 1);
  EXPECT_TRUE(XmTextGetEditable(yyGridCellWidget(grid(kTyped), kNote - 1, 0)));
}

// The option a combo cell's widget shows.
int shown_option(const FieldRecord& f) {
  int option = 0;
  XtVaGetValues(f.widget, XmNitemSelect, &option, nullptr);
  return option;
}

TEST_F(GridTest, ComboCellsShowAndTakeTheirOptions) {
  open(kScratch);
  Widget g = grid(kTyped);
  int e = 0;
  yygridputcelloption_(kTyped, kKind - 1, 0, 3, e);
  ASSERT_EQ(e, 0);
  auto& cellRecord = yyGridPart(g).st->views[kKind - 1].cells[0];
  EXPECT_EQ(shown_option(cellRecord), 3);
  yygridsetselection_(kTyped, kKind - 1, 0, kKind - 1, 1, e);
  ASSERT_TRUE(yyGridWidgetSelCellCopyX(g));
  std::string text;
  ASSERT_TRUE(yyGridClipboardGet(g, text));
  EXPECT_EQ(text, "gamma\nalpha\n");
  // Pasted option texts select their option; an unknown one the first.
  ASSERT_TRUE(yyGridClipboardPut(g, "beta\ndelta\n"));
  ASSERT_TRUE(yyGridWidgetSelCellPasteX(g));
  int option = 0;
  yygridgetcellmenu_(kTyped, kKind - 1, 0, option, e);
  EXPECT_EQ(option, 2);
  EXPECT_EQ(shown_option(yyGridPart(g).st->views[kKind - 1].cells[0]), 2);
  yygridgetcellmenu_(kTyped, kKind - 1, 1, option, e);
  EXPECT_EQ(option, 1);
}

TEST_F(GridTest, PasteOfABigBlockStopsAtTheGridsEdge) {
  open(kScratch);
  Widget g = grid(kSmall);
  std::string block;
  for (int r = 0; r < 1000; ++r) block += std::to_string(r) + "\t" + std::to_string(r) + ".5\n";
  ASSERT_TRUE(yyGridClipboardPut(g, block));
  int e = 0;
  yygridsetcell_(kSmall, 0, 1, e);
  settle();
  // The small grid reports what a paste wrote: its last cell, then its first.
  WMessageEnable(FieldChanged, 1);
  MessageRecord m;
  ASSERT_TRUE(message_after("key ctrl+v", FieldChanged, m));
  EXPECT_EQ(m.Value1, kSmall);
  EXPECT_EQ(m.Value3, 1);
  EXPECT_EQ(m.X, (2 * 262144) | 3);
  EXPECT_EQ(m.Y, 262144 | 2);
  settle();
  EXPECT_EQ(info(kSmall, 3), 3);
  EXPECT_EQ(cell(kSmall, 1, 1), "");
  EXPECT_EQ(cell(kSmall, 1, 2), "0");
  EXPECT_EQ(cell(kSmall, 2, 3), "1.5000");
  EXPECT_EQ(shown(yyGridCellWidget(g, 0, 2)), "1");
  EXPECT_EQ(WInfoError(1), 0);
}

TEST_F(GridTest, SelectionReachesAcrossAScroll) {
  open(kMainForm);
  Widget g = grid(kTwin);
  for (int r = 1; r <= 60; ++r) WGridPutCellString(kTwin, 1, r, "m" + std::to_string(r));
  click(yyGridCellWidget(g, 0, 0));
  drag_bar(g, 50);
  EXPECT_EQ(info(kTwin, 9), 51);
  click(yyGridCellWidget(g, 0, 1), "shift");
  EXPECT_EQ(info(kTwin, 10), 1);
  EXPECT_EQ(info(kTwin, 11), 1);
  EXPECT_EQ(info(kTwin, 13), 52);
  xdotool("key ctrl+c");
  std::string text;
  ASSERT_TRUE(yyGridClipboardGet(g, text));
  std::string expected;
  for (int r = 1; r <= 52; ++r) expected += "m" + std::to_string(r) + "\n";
  EXPECT_EQ(text, expected);
  // Scrolling back keeps it; a click into a cell ends it.
  drag_bar(g, 0);
  EXPECT_EQ(info(kTwin, 13), 52);
  click(yyGridCellWidget(g, 0, 1));
  EXPECT_EQ(info(kTwin, 10), 0);
}

TEST_F(GridTest, CellMovesAndLabelClicksReachTheApplication) {
  open(kMainForm);
  WMessageEnable(FieldChanged, 1);
  WMessageEnable(ContextClick, 1);
  Widget g = grid(kTwin);
  click(yyGridCellWidget(g, 0, 1));
  MessageRecord m;
  ASSERT_TRUE(message_after("key Down", FieldChanged, m));
  EXPECT_EQ(m.Value1, kTwin);
  EXPECT_EQ(m.Value2, kTwin);
  EXPECT_EQ(m.Value3, 0);
  EXPECT_EQ(m.X, 262144 | 2);  // column 1, row 2, packed
  EXPECT_EQ(m.Y, 262144 | 3);
  EXPECT_EQ(m.Win, kMainForm);
  settle();
  // Up at the first row can't move: the current cell stays.
  int e = 0;
  yygridsetcell_(kTwin, 0, 0, e);
  settle();
  EXPECT_FALSE(yyGridWidgetMoveCurrentCellX(g, 3));
  EXPECT_EQ(info(kTwin, 5), 1);
  // The right button on the second row label names that row.
  Widget label = yyGridPart(g).st->rowLabelWidgets[1];
  int x = 0, y = 0;
  Window child = 0;
  XTranslateCoordinates(xdisplay(), XtWindow(label), DefaultRootWindow(xdisplay()), 4, 4, &x, &y, &child);
  ASSERT_TRUE(message_after("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 3", ContextClick, m));
  EXPECT_EQ(m.Value1, 2);
  EXPECT_EQ(m.Value3, 15);
  EXPECT_EQ(m.Value4, kTwin);
}

TEST_F(GridTest, AViewportTallerThanTheRowsHoldsJustThem) {
  open(kMainForm);
  WGridRows(kTwin, 1);
  Widget g = grid(kTwin);
  EXPECT_EQ(info(kTwin, 15), 1);
  EXPECT_EQ(yyGridPart(g).st->fullRows, 1);
  int value = -1, slider = 0, inc = 0, page = 0, lo = -1, hi = -1;
  XmScrollBarGetValues(yyGridPart(g).st->scrollBarV, &value, &slider, &inc, &page);
  XtVaGetValues(yyGridPart(g).st->scrollBarV, XmNminimum, &lo, XmNmaximum, &hi, nullptr);
  EXPECT_EQ(lo, 0);
  EXPECT_EQ(hi, 1);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(slider, 1);
  // Back to many rows: the viewport fills again, the bar covers them all.
  WGridRows(kTwin, 40);
  EXPECT_GT(info(kTwin, 15), 1);
  XtVaGetValues(yyGridPart(g).st->scrollBarV, XmNmaximum, &hi, nullptr);
  EXPECT_EQ(hi, 40);
}

TEST_F(GridTest, ArrowsMoveTheCaretBeforeTheCellAndStopAtTheEdge) {
  open(kScratch);
  Widget g = grid(kTyped);
  WGridPutCellString(kTyped, kNote, 1, "abc");
  Widget w = yyGridCellWidget(g, kNote - 1, 0);
  click(w);
  XmTextClearSelection(w, CurrentTime);
  XmTextSetInsertionPosition(w, 1);
  xdotool("key Right");
  EXPECT_EQ(XmTextGetInsertionPosition(w), 2);
  EXPECT_EQ(info(kTyped, 4), kNote);
  xdotool("key Right");  // at the end of the text
  EXPECT_EQ(info(kTyped, 4), kNote);
  xdotool("key Right");  // the last column, no row wrap: it stays
  EXPECT_EQ(info(kTyped, 4), kNote);
  EXPECT_EQ(info(kTyped, 5), 1);
  xdotool("key Left");  // the caret first
  EXPECT_EQ(info(kTyped, 4), kNote);
  xdotool("key Home Left");  // at the start of the text: the cell on the left
  EXPECT_EQ(info(kTyped, 4), kNote - 1);
}

TEST_F(GridTest, PagingAndTheWheelMoveByViews) {
  open(kMainForm);
  Widget g = grid(kTwin);
  const int full = yyGridPart(g).st->fullRows;
  click(yyGridCellWidget(g, 0, 0));
  xdotool("key Next");
  EXPECT_EQ(info(kTwin, 9), 1 + full);
  xdotool("key ctrl+Next");
  EXPECT_EQ(info(kTwin, 5), 100);
  EXPECT_EQ(info(kTwin, 9), 100 - full + 1);
  xdotool("key ctrl+Prior");
  EXPECT_EQ(info(kTwin, 5), 1);
  EXPECT_EQ(info(kTwin, 9), 1);
  // The wheel at the first row keeps the view; down it moves.
  xdotool("click 4");
  EXPECT_EQ(info(kTwin, 9), 1);
  xdotool("click 5");
  EXPECT_EQ(info(kTwin, 9), 2);
}

TEST_F(GridTest, CutAndDeleteSpareNoReadOnlyCell) {
  open(kScratch);
  Widget g = grid(kTyped);
  for (int r = 1; r <= 3; ++r) WGridPutCellInteger(kTyped, kCount, r, r * 10);
  WGridStateCell(kTyped, kCount, 2, 2);
  int e = 0;
  yygridsetselection_(kTyped, kCount - 1, 0, kCount - 1, 2, e);
  EXPECT_FALSE(yyGridCanCut(g));
  EXPECT_FALSE(yyGridWidgetSelCellCutX(g));
  EXPECT_EQ(cell(kTyped, kCount, 1), "10");
  WGridStateCell(kTyped, kCount, 2, 1);
  yygridsetselection_(kTyped, kCount - 1, 0, kCount - 1, 1, e);
  ASSERT_TRUE(yyGridWidgetSelCellCutX(g));
  EXPECT_EQ(info(kTyped, 10), 0);  // the selection went with the cells
  EXPECT_EQ(cell(kTyped, kCount, 1), "");
  EXPECT_EQ(cell(kTyped, kCount, 2), "");
  EXPECT_EQ(cell(kTyped, kCount, 3), "30");
  std::string text;
  ASSERT_TRUE(yyGridClipboardGet(g, text));
  EXPECT_EQ(text, "10\n20\n");
  // A paste onto a read-only cell is refused before it starts.
  WGridStateCell(kTyped, kCount, 1, 2);
  yygridsetcell_(kTyped, kCount - 1, 0, e);
  EXPECT_FALSE(yyGridCanPaste(g));
}

TEST_F(GridTest, CheckBoxCellsFollowClicksUnlessReadOnly) {
  open(kScratch);
  Widget g = grid(kTyped);
  const FieldRecord& box = yyGridPart(g).st->views[kActive - 1].cells[1];
  int state = -1, e = 0;
  click(box.widget);
  yygridgetcellcheckbox_(kTyped, kActive - 1, 1, state, e);
  EXPECT_EQ(state, 1);
  WGridStateCell(kTyped, kActive, 2, 2);
  click(box.widget);
  yygridgetcellcheckbox_(kTyped, kActive - 1, 1, state, e);
  EXPECT_EQ(state, 1);
  EXPECT_TRUE(XmToggleButtonGetState(box.widget));
}

TEST_F(GridTest, AFormatGivenWithANumberBecomesTheColumns) {
  open(kScratch);
  Widget g = grid(kTyped);
  WGridPutCellReal(kTyped, kAngle, 1, 1.5f);
  EXPECT_EQ(shown(yyGridCellWidget(g, kAngle - 1, 0)), "1.5000");
  WGridPutCellReal(kTyped, kAngle, 2, 2.0f, "(F6.1)");
  EXPECT_EQ(shown(yyGridCellWidget(g, kAngle - 1, 0)), "1.5");
  EXPECT_EQ(shown(yyGridCellWidget(g, kAngle - 1, 1)), "2.0");
  std::string format;
  int e = 0;
  yygridgetformat_(kTyped, kAngle - 1, format, e);
  EXPECT_EQ(format, "(F6.1)");
}

TEST_F(GridTest, ColumnsCanBeTakenAgainFromTheTemplate) {
  open(kScratch);
  Widget g = grid(kTyped);
  WGridLabelRow(kTyped, 2, "second");
  int e = 0;
  yygridcolumns_(kTyped, 2, {kNote, kCount}, {-1}, e);
  ASSERT_EQ(e, 0);
  EXPECT_EQ(info(kTyped, 1), 2);
  EXPECT_EQ(yygridgetcelltype_(kTyped, 0, e), 4);
  EXPECT_EQ(yygridgetcelltype_(kTyped, 1, e), 5);
  EXPECT_EQ(yygridgetcelltype_(kTitle, 0, e), -1006);
  std::string label;
  yygridgetrowlabel_(kTyped, 1, label, e);
  EXPECT_EQ(label, "second");
  WGridPutCellString(kTyped, 1, 1, "note");
  EXPECT_EQ(shown(yyGridCellWidget(g, 0, 0)), "note");
}

TEST_F(GridTest, ResourcesSetByTheProgramReachTheCells) {
  open(kScratch);
  Widget g = grid(kTyped);
  XtVaSetValues(g, grid_resource::kReadOnly, True, nullptr);
  EXPECT_FALSE(XmTextGetEditable(yyGridCellWidget(g, kNote - 1, 0)));
  XtVaSetValues(g, grid_resource::kReadOnly, False, nullptr);
  EXPECT_TRUE(XmTextGetEditable(yyGridCellWidget(g, kNote - 1, 0)));
  XtVaSetValues(g, "currentCellWidget", yyGridCellWidget(g, kAngle - 1, 2), nullptr);
  settle();
  EXPECT_EQ(info(kTyped, 4), kAngle);
  EXPECT_EQ(info(kTyped, 5), 3);
}

TEST_F(GridTest, EveryCellTypeOnTheScratchForm) {
  open(kScratch);
  WGridPutCellInteger(kTyped, kCount, 1, 7);
  WGridPutCellReal(kTyped, kAngle, 1, 90.0f);
  WGridPutCellDouble(kTyped, 3, 1, 1.0 / 3.0);
  int e = 0;
  yygridputcellcheckbox_(kTyped, kActive - 1, 0, 1, e);
  yygridputcelloption_(kTyped, kKind - 1, 0, 2, e);
  WGridPutCellString(kTyped, kNote, 1, "first");
  WGridLabelRow(kTyped, 1, "one");
  yygridsetselection_(kTyped, 0, 2, 2, 3, e);
  settle();
  EXPECT_EQ(e, 0);
  if (const char* path = std::getenv("GRID_SCREENSHOT_SCRATCH")) {
    EXPECT_EQ(std::system(("import -window root " + std::string(path)).c_str()), 0);
  }
}

TEST_F(GridTest, FiveRowsOnTheMainForm) {
  open(kMainForm);
  WGridRows(kTwin, 5);
  const char* matrices[] = {"1 0 0 0 1 0 0 0 1", "-1 0 0 0 -1 0 0 0 1", "0 1 0 1 0 0 0 0 -1", kMatrix,
                            "1 0 0 0 1 0 0 0 -1"};
  for (int r = 1; r <= 5; ++r) WGridPutCellString(kTwin, 1, r, matrices[r - 1]);
  WGridStateCell(kTwin, 1, 5, 2);
  settle();
  EXPECT_EQ(error(), 0);
  if (const char* path = std::getenv("GRID_SCREENSHOT")) {
    EXPECT_EQ(std::system(("import -window root " + std::string(path)).c_str()), 0);
  }
}

}  // namespace
