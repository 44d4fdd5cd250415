// The demonstration dialog driven from the user's hand: lists chosen with
// mouse and keys, the trackbar stepped, pages turned by click and Ctrl+Tab,
// tree branches opened and closed, the progress bar filled; the values are
// read back through the public routines each time.
#include <gtest/gtest.h>

#include <X11/IntrinsicP.h>
#include <Xm/Container.h>
#include <Xm/List.h>
#include <Xm/Scale.h>

#include <array>
#include <cstdint>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <poll.h>
#include <string>
#include <vector>

#include "tools/zelvdemo/demo_form.h"
#include "tools/zelvdemo/zelvdemo_ids.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/list_fields.h"
#include "toolkit/dialog/small_widgets.h"
#include "toolkit/dialog/tree_view.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/window_private.h"

namespace {

namespace form = zelvdemo_ids::demo;
namespace ids = zelvdemo_ids;

constexpr int kPastDoubleClickMs = 450;

class Widgets : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { zelvdemo_start(); }
  void SetUp() override {
    ASSERT_NE(xdisplay(), nullptr);
    zelvdemo_open();
    for (int type : {FieldChanged, TabChanged}) WMessageEnable(type, 1);
    settle();
    XSetInputFocus(xdisplay(), zelvy_win::state().wShell[0], RevertToParent, CurrentTime);
    settle();
    zelvy_data::data().ierr = 0;
  }
  void TearDown() override {
    zelvdemo_close();
    zelvy_data::data().ierr = 0;
  }

  static void pump(int ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (std::chrono::steady_clock::now() < end)
      if (XtAppPending(zelvy_x::state().ixContext)) XtAppProcessEvent(zelvy_x::state().ixContext, XtIMAll);
      else poll(nullptr, 0, 5);
  }
  // The messages that arrive while the server and the widgets catch up.
  static std::vector<std::array<int, 5>> settle(int ms = 150) {
    std::vector<std::array<int, 5>> seen;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (std::chrono::steady_clock::now() < end) {
      XSync(xdisplay(), False);
      int type = 0;
      MessageRecord m;
      WMessagePeek(type, m);
      if (type == FieldChanged || type == TabChanged) seen.push_back({type, m.Value1, m.Value2, m.Value3, m.Value4});
      if (type == -1) poll(nullptr, 0, 5);
    }
    return seen;
  }
  static void xdotool(const std::string& args) {
    XSync(xdisplay(), False);
    ASSERT_EQ(std::system(("xdotool " + args).c_str()), 0) << args;
  }
  // Root position of a point of a widget.
  static std::string at(Widget w, int x, int y) {
    int rx = 0, ry = 0;
    Window child = 0;
    XTranslateCoordinates(xdisplay(), XtWindow(w), DefaultRootWindow(xdisplay()), x, y, &rx, &ry, &child);
    return "mousemove " + std::to_string(rx) + " " + std::to_string(ry);
  }
  static std::string centre(Widget w) { return at(w, w->core.width / 2, w->core.height / 2); }
  // Clicks far enough apart in time not to make a double click.
  static void click(const std::string& where, const std::string& modifiers = {}) {
    settle(kPastDoubleClickMs);
    xdotool(where);
    if (!modifiers.empty()) xdotool("keydown " + modifiers);
    xdotool("click 1");
    if (!modifiers.empty()) xdotool("keyup " + modifiers);
  }
  static std::string list_item(Widget list, int position) {
    Position x = 0, y = 0;
    Dimension w = 0, h = 0;
    EXPECT_TRUE(XmListPosToBounds(list, position, &x, &y, &w, &h)) << position;
    return at(list, x + w / 2, y + h / 2);
  }
  static FieldRecord& field(int id, int dialog = ids::dialog::demo) {
    auto& d = zelvy_dialog::state().wDialogInfo[yyDialogFind(dialog)];
    return d.fields[static_cast<std::size_t>(yyDialogFindField(id, yyDialogFind(dialog)))];
  }
  static int error() {
    const int e = zelvy_data::data().ierr;
    zelvy_data::data().ierr = 0;
    return e;
  }
  static std::vector<int> states(int id) {
    std::vector<int> s(8, 0);
    WDialogGetMenu(id, s);
    return s;
  }
  static bool saw(const std::vector<std::array<int, 5>>& seen, std::array<int, 5> m) {
    for (const auto& s : seen)
      if (s == m) return true;
    return false;
  }
};

TEST_F(Widgets, ListsTakeMouseAndKeys) {
  // One selection: a click, then the arrow key.
  Widget single = field(form::single).widget;
  click(list_item(single, 3));
  EXPECT_TRUE(saw(settle(), {FieldChanged, form::single, form::single, 1, -1}));
  int option = 0;
  std::string text;
  WDialogGetMenu(form::single, option, text);
  EXPECT_EQ(option, 3);
  EXPECT_EQ(text, "Gamma");
  xdotool("key Down");
  settle();
  WDialogGetMenu(form::single, option, text);
  EXPECT_EQ(option, 4);
  EXPECT_EQ(text, "Delta");

  // Many: each click toggles its option.
  Widget many = field(form::many).widget;
  click(list_item(many, 1));
  click(list_item(many, 3));
  settle();
  EXPECT_EQ(states(form::many), (std::vector<int>{1, 0, 1, 0, 0, 0, 0, 0}));
  click(list_item(many, 1));
  settle();
  EXPECT_EQ(states(form::many), (std::vector<int>{0, 0, 1, 0, 0, 0, 0, 0}));
  WDialogGetMenu(form::many, option);
  EXPECT_EQ(error(), 1006);  // a list of many answers only with states

  // Ranges: the program's selection, Ctrl adds, a plain click replaces.
  Widget columns = field(form::columns).widget;
  EXPECT_EQ(states(form::columns), (std::vector<int>{0, 1, 0, 1, 0, 0, 0, 0}));
  click(list_item(columns, 3), "ctrl");
  settle();
  EXPECT_EQ(states(form::columns), (std::vector<int>{0, 1, 1, 1, 0, 0, 0, 0}));
  click(list_item(columns, 1));
  click(list_item(columns, 3), "shift");
  settle();
  EXPECT_EQ(states(form::columns), (std::vector<int>{1, 1, 1, 0, 0, 0, 0, 0}));
}

TEST_F(Widgets, ListOptionsByProgram) {
  // Option 0 and no text on a list: 1011, filled, nothing selected.
  const std::vector<std::string> greek{"Alpha", "Beta"};
  WDialogPutMenu(form::single, greek, 2, 0);
  EXPECT_EQ(error(), 1011);
  int option = 0;
  WDialogGetMenu(form::single, option);
  EXPECT_EQ(error(), 1010);
  EXPECT_EQ(option, zelvy_data::data().iundef);
  int count = 0;
  yydialoggetmenuoptioncount_(form::single, 4, count);
  EXPECT_EQ(count, 2);

  // Editing by position, and the top line.
  yydialoginsertmenuitem_(4, form::single, 1, "Omega");
  yydialogputmenuitem_(4, form::single, 2, "Alpha prime");
  yydialogdeletemenuitem_(4, form::single, 3);
  std::string text;
  yydialoggetmenuitem_(2, form::single, 4, text);
  EXPECT_EQ(text, "Alpha prime");
  yydialoggetmenuoptioncount_(form::single, 4, count);
  EXPECT_EQ(count, 2);

  // Ranges keep what they have while the program adds to them.
  yydialogputoptionstates_(form::columns, 5, 6, 1);
  yydialogputoptionstate_(form::columns, 2, 0);
  yydialogputoptionstate_(form::columns, 1, 7);  // neither 0 nor 1: no change
  EXPECT_EQ(states(form::columns), (std::vector<int>{0, 0, 0, 1, 1, 1, 0, 0}));
  int state = 0;
  yydialoggetmenuoptionstate_(form::columns, 5, state);
  EXPECT_EQ(state, 1);

  // Tab-expanded rows: no tabs left, and the columns line up to a blank's width.
  const DialogFontMetrics& fm = yyDialogFontMetrics(field(form::columns).fontIndex);
  std::string head, row;
  yydialoggetmenuitem_(1, form::columns, 6, head);
  yydialoggetmenuitem_(2, form::columns, 6, row);
  EXPECT_EQ(head.find('\t'), std::string::npos);
  const auto column = [&](const std::string& s, char c) {
    return yyDialogTextWidth(field(form::columns).fontIndex, s.substr(0, s.find(c, 1)));
  };
  EXPECT_NEAR(column(head, 'k'), column(row, '0'), fm.spaceWidth);
  int error_code = 0;
  yydialogtabstops_(form::choice, std::vector<int>{10}, error_code);
  EXPECT_EQ(error_code, 1006);

  // A combo: replacing the selected option empties the text, the number stays.
  WDialogPutOption(form::choice, 2);
  yydialogputmenuitem_(3, form::choice, 2, "Trigonal");
  WDialogGetMenu(form::choice, option);
  EXPECT_EQ(error(), 1010);
  int selected = 0;
  XtVaGetValues(field(form::choice).widget, "itemSelect", &selected, nullptr);
  EXPECT_EQ(selected, 2);
  text.clear();
  yydialoggetmenuitem_(2, form::choice, 3, text);
  EXPECT_EQ(text, "Trigonal");
}

TEST_F(Widgets, TrackbarStepsAndClamps) {
  int value = 0, lo = 0, hi = 0, e = 0;
  yyinfodialogfieldtrackrange_(form::track, lo, hi, e);
  EXPECT_EQ((std::array{lo, hi, e}), (std::array{0, 100, 0}));
  EXPECT_EQ(yyDialogTrackbarTickCount(form::track), 11);
  yydialogputtrackbar_(form::track, 150, e);
  yydialoggettrackbar_(form::track, value, e);
  EXPECT_EQ(value, 100);
  yydialogputtrackbar_(form::track, -5, e);
  yydialoggettrackbar_(form::track, value, e);
  EXPECT_EQ(value, 0);

  // A click in the trough right of the slider moves it a page up; keys a line.
  yydialogputtrackbar_(form::track, 50, e);
  settle();
  Widget scale = field(form::track).widget;
  click(at(scale, scale->core.width - 6, scale->core.height / 2));
  auto seen = settle(400);
  yydialoggettrackbar_(form::track, value, e);
  EXPECT_EQ(value, 60);
  EXPECT_TRUE(saw(seen, {FieldChanged, form::track, form::track, 1, -1}));
  xdotool("key Left Left");
  settle();
  yydialoggettrackbar_(form::track, value, e);
  EXPECT_EQ(value, 58);

  // A narrower range clamps the value and rebuilds the ticks; a reversed one is ignored.
  yydialograngetrackbar_(form::track, 0, 40, 5, e);
  yydialoggettrackbar_(form::track, value, e);
  EXPECT_EQ(value, 40);
  EXPECT_EQ(yyDialogTrackbarTickCount(form::track), 9);
  yydialograngetrackbar_(form::track, 10, 10, 5, e);
  yyinfodialogfieldtrackrange_(form::track, lo, hi, e);
  EXPECT_EQ((std::array{lo, hi}), (std::array{0, 40}));
  EXPECT_EQ(winfodialogfield(form::track, 8), 40);
  yydialogputtrackbar_(form::progress, 1, e);
  EXPECT_EQ(e, 1006);
}

TEST_F(Widgets, TabsTurnByClickAndCtrlTab) {
  int page = 0, e = 0;
  yydialoggettab_(form::pages, page, e);
  EXPECT_EQ(page, ids::dialog::page_cell);
  EXPECT_EQ(yyDialogTabPageFields(form::pages), (std::vector<int>{9031, 9032, 9033}));

  // A click on the second tab reports the change.
  FieldRecord& tab = field(form::pages);
  WidgetList kids = nullptr;
  Cardinal n = 0;
  Widget strip = XtNameToWidget(tab.widget, "TabTabContainer");
  ASSERT_NE(strip, nullptr);
  XtVaGetValues(strip, XtNchildren, &kids, XtNnumChildren, &n, nullptr);
  ASSERT_EQ(n, 3u);
  Widget second = kids[1];
  click(centre(second));
  auto seen = settle(300);
  EXPECT_TRUE(saw(seen, {TabChanged, ids::dialog::page_cell, ids::dialog::page_options, -1, -1}));
  yydialoggettab_(form::pages, page, e);
  EXPECT_EQ(page, ids::dialog::page_options);
  EXPECT_TRUE(XtIsManaged(zelvy_dialog::state().wDialogInfo[yyDialogFind(page)].widget));
  EXPECT_EQ(second->core.y, 0);  // the selected tab stands up to the top

  // Ctrl+Tab on a page turns to the next, Ctrl+Shift+Tab back; past the end wraps.
  XmProcessTraversal(field(9036, ids::dialog::page_options).valueWidget, XmTRAVERSE_CURRENT);
  settle();
  xdotool("key ctrl+Tab");
  seen = settle(300);
  yydialoggettab_(form::pages, page, e);
  EXPECT_EQ(page, ids::dialog::page_notes);
  EXPECT_TRUE(saw(seen, {TabChanged, ids::dialog::page_options, ids::dialog::page_notes, -1, -1}));
  xdotool("key ctrl+Tab");
  settle();
  yydialoggettab_(form::pages, page, e);
  EXPECT_EQ(page, ids::dialog::page_cell);
  xdotool("key ctrl+shift+Tab");
  settle();
  yydialoggettab_(form::pages, page, e);
  EXPECT_EQ(page, ids::dialog::page_notes);

  // By program: no message; a disabled page is refused and skipped.
  yydialogsettab_(form::pages, ids::dialog::page_options, e);
  EXPECT_EQ(e, 0);
  EXPECT_TRUE(settle().empty());
  yydialogtabstate_(form::pages, ids::dialog::page_notes, 0, e);
  yydialogsettab_(form::pages, ids::dialog::page_notes, e);
  EXPECT_EQ(e, 1012);
  yydialogsettab_(form::pages, 4711, e);
  EXPECT_EQ(e, 1012);
  XmProcessTraversal(field(9036, ids::dialog::page_options).valueWidget, XmTRAVERSE_CURRENT);
  settle();
  xdotool("key ctrl+Tab");
  settle();
  yydialoggettab_(form::pages, page, e);
  EXPECT_EQ(page, ids::dialog::page_cell);
  yydialogsettab_(form::tree, ids::dialog::page_cell, e);
  EXPECT_EQ(e, 1006);
}

TEST_F(Widgets, TreeBranchesOpenAndClose) {
  constexpr int kSystems = 9051, kCubic = 9052, kLower = 9054, kTriclinic = 9057, kNotes = 9061;
  int state = 0, e = 0, item = 0;
  std::string text;
  yydialoggettreeview_(form::tree, item, false, e, text);
  EXPECT_EQ(e, 1010);
  yydialoggettreeviewstate_(form::tree, kSystems, state, e);
  EXPECT_EQ((std::array{state, e}), (std::array{1, 0}));
  yydialoggettreeviewstate_(form::tree, kNotes, state, e);
  EXPECT_EQ(e, 1049);

  // The outline button left of a branch opens it.
  int left = 0, top = 0, right = 0, bottom = 0;
  yydialoggettreeviewrect_(form::tree, kSystems, left, top, right, bottom, e);
  auto screen = [](int x, int y) { return "mousemove " + std::to_string(x) + " " + std::to_string(y); };
  click(screen(left - 8, (top + bottom) / 2));
  auto seen = settle(300);
  yydialoggettreeviewstate_(form::tree, kSystems, state, e);
  EXPECT_EQ(state, 2);
  EXPECT_TRUE(saw(seen, {FieldChanged, form::tree, form::tree, 3, kSystems}));

  // A click on an item selects it.
  yydialoggettreeviewrect_(form::tree, kCubic, left, top, right, bottom, e);
  click(screen((left + right) / 2, (top + bottom) / 2));
  seen = settle(300);
  yydialoggettreeview_(form::tree, item, true, e, text);
  EXPECT_EQ(item, kCubic);
  EXPECT_EQ(text, "Cubic");
  EXPECT_TRUE(saw(seen, {FieldChanged, form::tree, form::tree, 1, kCubic}));

  // Closing the branch around the selection moves it up to the branch.
  yydialoggettreeviewrect_(form::tree, kSystems, left, top, right, bottom, e);
  click(screen(left - 8, (top + bottom) / 2));
  seen = settle(300);
  yydialoggettreeview_(form::tree, item, false, e, text);
  EXPECT_EQ(item, kSystems);
  EXPECT_TRUE(saw(seen, {FieldChanged, form::tree, form::tree, 4, kSystems}));

  // By program: open to a deep item, delete the selected last child.
  yydialogputtreeview_(form::tree, kTriclinic, e);
  yydialoggettreeviewstate_(form::tree, kLower, state, e);
  EXPECT_EQ(state, 2);
  yydialogdeletetreeviewitem_(form::tree, kTriclinic, e);
  yydialoggettreeview_(form::tree, item, false, e, text);
  EXPECT_EQ(item, kLower);  // no next sibling: the parent
}

TEST_F(Widgets, TreeItemsByProgram) {
  constexpr int kRadiation = 9058, kNeutrons = 9060, kFirst = 1;
  int e = 0, item = 0;
  std::string text;
  // Before the first top-level item: the new head.
  yydialoginserttreeviewitem_(form::tree, 9051, kTreeBefore, kFirst, e, "First");
  EXPECT_EQ(e, 0);
  yydialoginserttreeviewitem_(form::tree, kRadiation, kTreeLastChild, 2, e, "Electrons");
  yydialoginserttreeviewitem_(form::tree, 4711, kTreeAfter, 3, e, "Lost");
  EXPECT_EQ(e, 1011);
  WDialogTreeviewCheck(1);
  yydialoginserttreeviewitem_(form::tree, kFirst, kTreeAfter, kNeutrons, e, "Twice");
  EXPECT_EQ(e, 1048);
  WDialogTreeviewCheck(0);
  // Without the check a second identifier goes in; the first in depth order is found.
  yydialoginserttreeviewitem_(form::tree, kFirst, kTreeAfter, kNeutrons, e, "Twice");
  EXPECT_EQ(e, 0);
  yydialogputtreeview_(form::tree, kNeutrons, e);
  yydialoggettreeview_(form::tree, item, true, e, text);
  EXPECT_EQ(text, "Twice");
  int left = 0, top = 0, right = 0, bottom = 0, firstTop = 0;
  yydialoggettreeviewrect_(form::tree, kFirst, left, firstTop, right, bottom, e);
  yydialoggettreeviewrect_(form::tree, 9051, left, top, right, bottom, e);
  EXPECT_LT(firstTop, top);

  // The selected last child goes: its parent takes the selection.
  yydialogputtreeview_(form::tree, 2, e);
  yydialogdeletetreeviewitem_(form::tree, 2, e);
  yydialoggettreeview_(form::tree, item, false, e, text);
  EXPECT_EQ(item, kRadiation);
  yydialogsettreeviewstring_(form::tree, kRadiation, e, "Beams");
  yydialoggettreeview_(form::tree, item, true, e, text);
  EXPECT_EQ(text, "Beams");
  // Clearing empties the tree.
  WDialogClearField(form::tree);
  yydialoggettreeview_(form::tree, item, false, e, text);
  EXPECT_EQ(e, 1010);
  yydialogdeletetreeviewitem_(form::tree, kRadiation, e);
  EXPECT_EQ(e, 1011);
}

// Pixels of the bar's colour along the middle line of the progress bar.
int bar_pixels(Widget w) {
  XImage* img = XGetImage(xdisplay(), XtWindow(w), 0, w->core.height / 2, w->core.width, 1, AllPlanes, ZPixmap);
  int n = 0;
  const unsigned long bar = zelvy_x::state().wSchemeCol[16].pixel;
  for (int x = 0; x < static_cast<int>(w->core.width); ++x) n += XGetPixel(img, x, 0) == bar;
  XDestroyImage(img);
  return n;
}

TEST_F(Widgets, ProgressBarMovesImagesChangeAndTheDialogIsPhotographed) {
  Widget bar = field(form::progress).widget;
  const int width = bar->core.width;
  int value = 0, e = 0;
  yydialoggetprogressbar_(form::progress, value, e);
  EXPECT_EQ(value, 250);
  settle();
  EXPECT_EQ(bar_pixels(bar), yyProgressFilledWidth(width, 250, 0, 1000));
  for (int k = 0; k < 5; ++k) yydialogputprogress_(form::progress, 100, 1, e);
  settle();
  yydialoggetprogressbar_(form::progress, value, e);
  EXPECT_EQ(value, 750);
  EXPECT_EQ(bar_pixels(bar), yyProgressFilledWidth(width, 750, 0, 1000));
  yydialogputprogress_(form::progress, 5000, 0, e);  // clamped: a full bar
  settle();
  EXPECT_EQ(bar_pixels(bar), width - 4);
  yydialograngeprogressbar_(form::progress, 9, 9, e);  // refused: the old range stays
  yydialoggetprogressbar_(form::progress, value, e);
  EXPECT_EQ(value, 1000);
  WDialogClearField(form::progress);
  settle();
  EXPECT_EQ(bar_pixels(bar), 0);  // the lower end fills nothing
  yydialogputprogress_(form::progress, 600, 0, e);
  yydialogputprogress_(form::track, 1, 0, e);
  EXPECT_EQ(e, 1006);
  settle();

  // Images: an icon onto a button, raw pixels onto the picture.
  WDialogPutImage(form::press, 9015, 2);
  EXPECT_EQ(error(), 0);
  unsigned char type = 0;
  XtVaGetValues(field(form::press).widget, XmNlabelType, &type, nullptr);
  EXPECT_EQ(type, XmPIXMAP);
  WDialogPutImage(form::press, 4711, 1);
  EXPECT_NE(error(), 0);
  WDialogPutImage(form::press, 1, 3);
  EXPECT_EQ(error(), 1021);
  WDialogPutImage(form::text, 9015, 2);
  EXPECT_EQ(error(), 1006);
  const std::vector<std::uint8_t> red{255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255, 255, 0, 0, 255};
  yydialogputimageicon_(form::icon, red, 2, 2, e);
  EXPECT_EQ(e, 0);
  yydialogputimageicon_(form::icon, red, 4, 4, e);
  EXPECT_EQ(e, 1021);  // fewer pixels than the size asks for
  WDialogPutImage(form::icon, 9015, 2);  // the crystal back for the picture
  settle();

  const std::filesystem::path shots = std::filesystem::path(ZELV_BINARY_DIR) / "shots";
  std::filesystem::create_directories(shots);
  const std::string png = (shots / "zelvdemo.png").string();
  std::filesystem::remove(png);
  XSync(xdisplay(), False);
  ASSERT_EQ(std::system(("import -window root '" + png + "'").c_str()), 0);
  EXPECT_TRUE(std::filesystem::exists(png));
}

}  // namespace

namespace {

TEST_F(Widgets, TabsWrapIntoRowsAndTheChosenRowComesToTheFront) {
  zelvdemo_open_rows();
  settle(300);
  FieldRecord& tab = field(zelvdemo_ids::rows::row_pages, ids::dialog::rows);
  Widget strip = XtNameToWidget(tab.widget, "TabTabContainer");
  ASSERT_NE(strip, nullptr);
  WidgetList kids = nullptr;
  Cardinal n = 0;
  XtVaGetValues(strip, XtNchildren, &kids, XtNnumChildren, &n, nullptr);
  ASSERT_EQ(n, 5u);
  // Every row ends at the usable width, the field's less two pixels.
  const int usable = tab.widget->core.width - 2;
  std::vector<int> rowTops;
  for (Cardinal i = 0; i < n; ++i) {
    const int y = kids[i]->core.y - (i == 0 ? 0 : 2);  // the selected tab stands two higher
    if (rowTops.empty() || rowTops.back() != y) rowTops.push_back(y);
  }
  ASSERT_GE(rowTops.size(), 2u);
  auto right_edge = [&](int top) {
    int right = 0;
    for (Cardinal i = 0; i < n; ++i)
      if (kids[i]->core.y - (i == 0 ? 0 : 2) == top)
        right = std::max(right, kids[i]->core.x + kids[i]->core.width + (i == 0 ? 0 : 1));
    return right;
  };
  for (int top : rowTops) EXPECT_EQ(right_edge(top), usable) << top;
  // The first tab's row lies in front, next to the page, which is in view.
  EXPECT_GT(rowTops.front(), rowTops.back());
  DialogRecord& first = zelvy_dialog::state().wDialogInfo[yyDialogFind(ids::dialog::row_page_one)];
  EXPECT_TRUE(XtIsManaged(first.widget));
  EXPECT_TRUE(XtIsManaged(first.fields[0].widget));

  // A tab of the back row, chosen with the mouse, brings its row to the front.
  Widget last = kids[n - 1];
  const int backTop = last->core.y;
  click(centre(last));
  auto seen = settle(300);
  EXPECT_TRUE(saw(seen, {TabChanged, ids::dialog::row_page_one, ids::dialog::row_page_five, -1, -1}));
  EXPECT_GT(last->core.y + 2, backTop);
  EXPECT_LT(kids[0]->core.y, rowTops.front());
}

}  // namespace

namespace {

TEST_F(Widgets, ListTopFollowsTheSelectionAndOptionsArriveTogether) {
  Widget single = field(form::single).widget;
  int visible = 0, top = 0, e = 0;
  XtVaGetValues(single, XmNvisibleItemCount, &visible, nullptr);
  ASSERT_LT(visible, 8);
  yydialogsetmenutop_(form::single, 3, e);
  yydialoggetmenutop_(form::single, top, e);
  EXPECT_EQ(top, 3);
  WDialogPutOption(form::single, 1);  // above the top: it becomes the top
  yydialoggetmenutop_(form::single, top, e);
  EXPECT_EQ(top, 1);
  WDialogPutOption(form::single, 8);  // below the view: just into it
  yydialoggetmenutop_(form::single, top, e);
  EXPECT_EQ(top, 8 - visible + 1);
  WDialogPutOption(form::single, 9);
  EXPECT_EQ(error(), 1011);

  // Options gathered one by one go in at once, behind those there.
  yydialogputmenustringsbegin_(form::many, 2);
  yydialogputmenustringsadd_(1, 5, "White");
  yydialogputmenustringsadd_(0, 5, "Black");
  yydialogputmenustringsend_(2, 5);
  int count = 0;
  yydialoggetmenuoptioncount_(form::many, 5, count);
  EXPECT_EQ(count, 8);
  std::string text;
  yydialoggetmenuitem_(7, form::many, 5, text);
  EXPECT_EQ(text, "Black");
  int type = 0;
  yydialoggetmenutype_(form::columns, type, e);
  EXPECT_EQ(type, 6);
  yydialoggetmenutype_(form::track, type, e);
  EXPECT_EQ(e, 1006);
}

TEST_F(Widgets, TabArrowKeysStopAtTheEnds) {
  FieldRecord& tab = field(form::pages);
  Widget strip = XtNameToWidget(tab.widget, "TabTabContainer");
  WidgetList kids = nullptr;
  Cardinal n = 0;
  XtVaGetValues(strip, XtNchildren, &kids, XtNnumChildren, &n, nullptr);
  ASSERT_EQ(n, 3u);
  Widget firstLabel = XtNameToWidget(kids[0], "TabTabLabel");
  ASSERT_NE(firstLabel, nullptr);
  XmProcessTraversal(firstLabel, XmTRAVERSE_CURRENT);
  settle();
  int page = 0, e = 0;
  xdotool("key Left");
  EXPECT_TRUE(settle().empty());  // no wrap past the first tab
  yydialoggettab_(form::pages, page, e);
  EXPECT_EQ(page, ids::dialog::page_cell);
  xdotool("key Right");
  auto seen = settle(300);
  yydialoggettab_(form::pages, page, e);
  EXPECT_EQ(page, ids::dialog::page_options);
  EXPECT_TRUE(saw(seen, {TabChanged, ids::dialog::page_cell, ids::dialog::page_options, -1, -1}));
}

}  // namespace
