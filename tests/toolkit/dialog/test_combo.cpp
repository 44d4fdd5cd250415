// The combo widget on the main form and on its own: options picked with the
// mouse and the keyboard, the messages that follow, drop-down lists that pick
// by first letter, case folding, many options and unusual option texts.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/Xlib.h>
#include <Xm/DrawingA.h>
#include <Xm/List.h>
#include <Xm/Text.h>
#include <Xm/Xm.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "toolkit/base/error.h"
#include "toolkit/dialog/combo_private.h"
#include "toolkit/dialog/field_styles.h"
#include "tests/toolkit/dialog/form_fixture.h"

namespace {

constexpr int kFormat = gombrel_ids::main_form::reflection_format;
constexpr int kTwinType = gombrel_ids::main_form::twin_type;
constexpr int kBrowse = gombrel_ids::main_form::browse_reflection_file;

TEST(ComboRules, MatchingIgnoresCaseAndLettersGoRound) {
  const std::vector<std::string> fruit{"apple", "avocado", "banana"};
  EXPECT_EQ(yyComboWidgetMatchOption(1, fruit, 0, "AVOCADO"), 1);
  EXPECT_EQ(yyComboWidgetMatchOption(1, fruit, 0, "avoca"), -1);  // only whole texts
  EXPECT_EQ(yyComboWidgetMatchOption(1, fruit, 0, ""), -1);
  // From Apple, a goes to Avocado and then back round to Apple.
  EXPECT_EQ(yyComboWidgetMatchOption(2, fruit, 0, "a"), 1);
  EXPECT_EQ(yyComboWidgetMatchOption(2, fruit, 1, "A"), 0);
  EXPECT_EQ(yyComboWidgetMatchOption(2, fruit, -1, "b"), 2);
  EXPECT_EQ(yyComboWidgetMatchOption(2, fruit, 2, "b"), 2);  // the same option: the caller ignores it
  EXPECT_EQ(yyComboWidgetMatchOption(2, fruit, 0, "z"), -1);
  EXPECT_EQ(yyComboWidgetMatchOption(2, {}, 0, "a"), -1);
}

TEST(ComboRules, FoldingTouchesAsciiLettersOnly) {
  EXPECT_EQ(yyComboWidgetFold("HKL_T=0 äb", kComboCaseLower), "hkl_t=0 äb");
  EXPECT_EQ(yyComboWidgetFold("hkl_t=0 Äb", kComboCaseUpper), "HKL_T=0 ÄB");
  EXPECT_EQ(yyComboWidgetFold("MiXed", 0), "MiXed");
}

struct Message {
  int type = 0;
  MessageRecord r;
};

class Combo : public MainFormTest {
 protected:
  // As the program asks for them.
  void SetUp() override {
    MainFormTest::SetUp();
    WMessageEnable(FieldChanged, 1);
  }
  // Every message that arrives while the widgets catch up.
  static std::vector<Message> drain() {
    std::vector<Message> out;
    for (int i = 0; i < 300; ++i) {
      XSync(xdisplay(), False);
      Message m;
      WMessagePeek(m.type, m.r);
      if (m.type == -1) {
        XSync(xdisplay(), False);
        WMessagePeek(m.type, m.r);
        if (m.type == -1) break;
      }
      out.push_back(m);
    }
    return out;
  }
  static bool changed(const std::vector<Message>& ms, int id) {
    for (const Message& m : ms)
      if (m.type == FieldChanged && m.r.Value1 == id && m.r.Value2 == id) return true;
    return false;
  }
  static bool pushed(const std::vector<Message>& ms) {
    for (const Message& m : ms)
      if (m.type == PushButton) return true;
    return false;
  }
  static void xdo(const std::string& args) {
    XSync(xdisplay(), False);
    ASSERT_EQ(std::system(("xdotool " + args).c_str()), 0) << args;
  }
  static void click(Widget w, int x, int y) {
    Position rx = 0, ry = 0;
    XtTranslateCoords(w, static_cast<Position>(x), static_cast<Position>(y), &rx, &ry);
    xdo("mousemove " + std::to_string(rx) + " " + std::to_string(ry) + " click 1");
  }
  static void click_centre(Widget w) { click(w, w->core.width / 2, w->core.height / 2); }
  static Widget list_of(Widget combo) { return XtNameToWidget(combo, "*ComboList"); }
  static bool viewable(Widget w) {
    if (!w || !XtIsRealized(w)) return false;
    XWindowAttributes at{};
    XGetWindowAttributes(xdisplay(), XtWindow(w), &at);
    return at.map_state == IsViewable;
  }
  static int option(int id, std::string* text = nullptr) {
    int o = 0;
    std::string t;
    WDialogGetMenu(id, o, t);
    if (text) *text = t;
    return o;
  }
  static std::string text_of(Widget combo) {
    Widget text = nullptr;
    XtVaGetValues(combo, XmNtextWidget, &text, nullptr);
    char* s = XmTextGetString(text);
    std::string out = s ? s : "";
    XtFree(s);
    return out;
  }
  static int selected_row(Widget list) {
    int* pos = nullptr;
    int n = 0;
    if (!XmListGetSelectedPos(list, &pos, &n)) return 0;
    const int first = pos[0];
    XtFree(reinterpret_cast<char*>(pos));
    return first;
  }
  // Clicks a row of an open list.
  static void click_row(Widget list, int row) {
    Position x = 0, y = 0;
    Dimension w = 0, h = 0;
    ASSERT_TRUE(XmListPosToBounds(list, row, &x, &y, &w, &h)) << "row " << row << " not in view";
    click(list, x + 20, y + h / 2);
  }
  // A combo made straight from the class in the form, away from its fields.
  static Widget scratch(int type, std::vector<std::string> options, int caseConv = 0, int limit = 0) {
    Widget parent = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur].widget;
    std::vector<XmString> items;
    for (const std::string& o : options)
      items.push_back(XmStringGenerate(const_cast<char*>(o.c_str()), nullptr, XmCHARSET_TEXT, nullptr));
    Widget w = XtVaCreateManagedWidget(
        "Scratch", comboWidgetClass, parent, XtNx, 4, XtNy, 4, XtNwidth, 160, XtNheight, type == 1 ? 120 : 20,
        XmNcomboType, type, XmNcomboDropSize, type == 1 ? -1 : 100, XmNcaseConv, caseConv, XmNlengthCharacter, limit,
        XmNautoHScroll, True, XmNcomboItemCount, static_cast<int>(items.size()), XmNcomboItems, items.data(),
        XmNcursorPositionVisible, True, nullptr);
    for (XmString s : items) XmStringFree(s);
    XtAddCallback(w, XmNvalueChangedCallback, count_cb, nullptr);
    calls.clear();
    settle();
    return w;
  }
  static void count_cb(Widget, XtPointer, XtPointer call) {
    calls.push_back(static_cast<int>(reinterpret_cast<long>(call)));
  }
  static Widget text_widget(Widget combo) {
    Widget text = nullptr;
    XtVaGetValues(combo, XmNtextWidget, &text, nullptr);
    return text;
  }
  static inline std::vector<int> calls;
};

// The format list opened with the mouse: a click on an entry picks it, closes
// the list and reports a change of the field in place.
TEST_F(Combo, MouseOpensTheFormatListAndPicksAnEntry) {
  const FieldRecord& f = field(kFormat);
  Widget list = list_of(f.widget);
  ASSERT_NE(list, nullptr);
  drain();
  click_centre(XtNameToWidget(f.widget, "ComboButton"));
  drain();
  ASSERT_TRUE(viewable(list));
  int top = 0;
  XtVaGetValues(list, XmNtopItemPosition, &top, nullptr);
  EXPECT_EQ(top, 1);
  EXPECT_EQ(selected_row(list), 0) << "an empty text selects nothing";
  // The list hangs under the text, unclipped by the form.
  Position lx = 0, ly = 0, tx = 0, ty = 0;
  XtTranslateCoords(list, 0, 0, &lx, &ly);
  XtTranslateCoords(f.valueWidget, 0, 0, &tx, &ty);
  EXPECT_NEAR(ly, ty + f.valueWidget->core.height, 3);
  const std::string dir = std::string(ZELV_BINARY_DIR) + "/shots";
  std::filesystem::create_directories(dir);
  EXPECT_EQ(std::system(("import -window root " + dir + "/format-list-open.png").c_str()), 0);

  click_row(list, 3);
  const auto ms = drain();
  EXPECT_FALSE(viewable(list));
  EXPECT_TRUE(changed(ms, kFormat));
  std::string text;
  EXPECT_EQ(option(kFormat, &text), 3);
  EXPECT_EQ(text, "Numor, h, k, l, Int, Sigma, Gamma, Nu, Phi (C5 - D23,Two lines/reflection, HKL_T=2)");
  EXPECT_EQ(WInfoError(1), 0);
}

// The text box of each combo of the form holds the whole line of its font,
// what hangs below the baseline too: the widget clips at its margins, and a
// format's "HKL_T" lost its underscore.
TEST_F(Combo, TextBoxHoldsTheWholeLine) {
  for (int id : {kFormat, kTwinType}) {
    Widget text = field(id).valueWidget;
    ASSERT_NE(text, nullptr);
    XmRenderTable rt = nullptr;
    Dimension height = 0, shadow = 0, highlight = 0, margin = 0;
    XtVaGetValues(text, XmNrenderTable, &rt, XtNheight, &height, XmNshadowThickness, &shadow, XmNhighlightThickness,
                  &highlight, XmNmarginHeight, &margin, nullptr);
    ASSERT_NE(rt, nullptr);
    int line = 0, ascent = 0, descent = 0;
    XmRenderTableGetDefaultFontExtents(rt, &line, &ascent, &descent);
    EXPECT_GE(height - 2 * (shadow + highlight + margin), ascent + descent) << "field " << id;
  }
}

// A press beside an open list closes it and goes nowhere else; the next
// press on the same spot does reach the button there.
TEST_F(Combo, PressOutsideClosesTheListOnly) {
  const FieldRecord& f = field(kFormat);
  WDialogPutOption(kFormat, 2);
  click_centre(XtNameToWidget(f.widget, "ComboButton"));
  drain();
  Widget list = list_of(f.widget);
  ASSERT_TRUE(viewable(list));
  EXPECT_EQ(selected_row(list), 2);
  click_centre(field(kBrowse).widget);
  auto ms = drain();
  EXPECT_FALSE(viewable(list));
  EXPECT_FALSE(pushed(ms));
  EXPECT_FALSE(changed(ms, kFormat));
  EXPECT_EQ(option(kFormat), 2);
  click_centre(field(kBrowse).widget);
  ms = drain();
  EXPECT_TRUE(pushed(ms));
}

// The twin type by keyboard: F4 opens, arrows step and report, Return and
// Escape close without a button message; the ends of the options stop.
TEST_F(Combo, KeyboardStepsOpensAndClosesTheTwinTypes) {
  WDialogFieldState(kTwinType, 1);
  WDialogPutOption(kTwinType, 1);
  const FieldRecord& f = field(kTwinType);
  Widget list = list_of(f.widget);
  click(f.valueWidget, 5, f.valueWidget->core.height / 2);
  drain();
  xdo("key Up");
  auto ms = drain();
  EXPECT_EQ(option(kTwinType), 1);
  EXPECT_FALSE(changed(ms, kTwinType));

  xdo("key F4");
  drain();
  ASSERT_TRUE(viewable(list));
  EXPECT_EQ(selected_row(list), 1);
  xdo("key Down");
  ms = drain();
  EXPECT_TRUE(changed(ms, kTwinType));
  EXPECT_EQ(option(kTwinType), 2);
  EXPECT_EQ(selected_row(list), 2);
  xdo("key Return");
  ms = drain();
  EXPECT_FALSE(viewable(list));
  EXPECT_FALSE(pushed(ms));

  xdo("key F4");
  drain();
  ASSERT_TRUE(viewable(list));
  xdo("key Escape");
  ms = drain();
  EXPECT_FALSE(viewable(list));
  EXPECT_FALSE(pushed(ms)) << "Escape closed the form instead of the list";
  EXPECT_EQ(option(kTwinType), 2);

  xdo("key Down Down Down");
  drain();
  std::string text;
  EXPECT_EQ(option(kTwinType, &text), 3);
  EXPECT_EQ(text, "Type 3");
}

// The right button on a combo's text asks for its context menu, with the
// option shown and the field's type and identifier.
TEST_F(Combo, RightButtonSendsAContextClick) {
  WMessageEnable(ContextClick, 1);
  WDialogPutOption(kFormat, 4);
  const FieldRecord& f = field(kFormat);
  Position rx = 0, ry = 0;
  XtTranslateCoords(f.valueWidget, 10, 5, &rx, &ry);
  xdo("mousemove " + std::to_string(rx) + " " + std::to_string(ry) + " click 3");
  bool found = false;
  for (const Message& m : drain())
    if (m.type == ContextClick) {
      found = true;
      EXPECT_EQ(m.r.Value1, 4);
      EXPECT_EQ(m.r.Value3, 11);
      EXPECT_EQ(m.r.Value4, kFormat);
    }
  EXPECT_TRUE(found);
}

// After its list closed, the field still has the focus as far as the dialog
// knows: edits of a field that reports every change are reported.
TEST_F(Combo, EditsAfterTheListClosedAreReported) {
  WDialogFieldState(kTwinType, 1);
  WDialogPutOption(kTwinType, 1);
  int error = 0;
  yydialogfieldoptions_(kTwinType, 3, 1, error);
  ASSERT_EQ(error, 0);
  const FieldRecord& f = field(kTwinType);
  click(f.valueWidget, 5, f.valueWidget->core.height / 2);
  drain();
  xdo("key F4");
  drain();
  ASSERT_TRUE(viewable(list_of(f.widget)));
  xdo("key Escape");
  drain();
  EXPECT_EQ(zelvy_dialog::state().pFieldInputFocus, &f);
  xdo("key End");
  xdo("type --delay 20 z");
  EXPECT_TRUE(changed(drain(), kTwinType));
  std::string text;
  WDialogGetString(kTwinType, text);
  EXPECT_EQ(text, "Type 1z");
}

// Typed text equal to an option in another case selects it and stays as typed.
TEST_F(Combo, TypedTextSelectsItsOptionIgnoringCase) {
  WDialogFieldState(kTwinType, 1);
  WDialogPutOption(kTwinType, 1);
  const FieldRecord& f = field(kTwinType);
  click(f.valueWidget, 5, f.valueWidget->core.height / 2);
  drain();
  XmTextSetSelection(f.valueWidget, 0, XmTextGetLastPosition(f.valueWidget), CurrentTime);
  xdo("type --delay 20 'type 3'");
  const auto ms = drain();
  std::string text;
  EXPECT_EQ(option(kTwinType, &text), 3);
  EXPECT_EQ(text, "type 3");
  EXPECT_TRUE(changed(ms, kTwinType));
  // Free text keeps the option last selected; an open list then shows none.
  xdo("type --delay 20 x");
  drain();
  EXPECT_EQ(option(kTwinType, &text), 3);
  EXPECT_EQ(text, "type 3x");
  xdo("key F4");
  drain();
  EXPECT_EQ(selected_row(list_of(f.widget)), 0);
  xdo("key Escape");
  drain();
}

// A drop-down list: a letter picks the next option starting with it, nothing
// else changes the text.
TEST_F(Combo, DropDownListPicksByFirstLetter) {
  Widget w = scratch(kComboTypeDropDownList, {"Apple", "Avocado", "Banana"});
  XtVaSetValues(w, XmNitemSelect, 1, nullptr);
  EXPECT_TRUE(calls.empty()) << "the program's choice is no user's change";
  click(text_widget(w), 5, 5);
  drain();
  auto expect = [&](const char* keys, int option, const char* text) {
    xdo(std::string("key --delay 30 ") + keys);
    drain();
    int o = 0;
    XtVaGetValues(w, XmNitemSelect, &o, nullptr);
    EXPECT_EQ(o, option) << keys;
    EXPECT_EQ(text_of(w), text) << keys;
  };
  expect("a", 2, "Avocado");
  expect("A", 1, "Apple");
  expect("BackSpace Delete", 1, "Apple");
  expect("b", 3, "Banana");
  expect("b z", 3, "Banana");
  EXPECT_EQ(calls, (std::vector<int>{2, 1, 3}));
  XtDestroyWidget(w);
}

// A simple combo shows its list below the text; options and typed text are
// folded to upper case and the text stops at its length.
TEST_F(Combo, SimpleComboFoldsCaseAndLimitsLength) {
  Widget w = scratch(kComboTypeSimple, {"alpha", "beta"}, kComboCaseUpper, 6);
  Widget list = list_of(w);
  ASSERT_TRUE(viewable(list));
  EXPECT_EQ(yyComboWidgetItemTextX(w, 2), "BETA");
  click_row(list, 2);
  drain();
  EXPECT_EQ(text_of(w), "BETA");
  EXPECT_EQ(calls, std::vector<int>{2});
  Widget text = text_widget(w);
  click(text, text->core.width - 4, text->core.height / 2);
  xdo("key End");
  xdo("type --delay 20 xyz");
  drain();
  EXPECT_EQ(text_of(w), "BETAXY");
  // Setting no option empties the text and the list's selection.
  XtVaSetValues(w, XmNitemSelect, 0, nullptr);
  EXPECT_EQ(text_of(w), "");
  EXPECT_EQ(selected_row(list), 0);
  XtVaSetValues(w, XmNitemSelect, 7, nullptr);  // out of range: none
  int o = -1;
  XtVaGetValues(w, XmNitemSelect, &o, nullptr);
  EXPECT_EQ(o, 0);
  XtDestroyWidget(w);
}

// Options added and taken away one at a time keep the selection on its
// option; taking away the selected one empties the text.
TEST_F(Combo, OptionsAddedAndDeletedOneByOne) {
  Widget w = scratch(kComboTypeDropDown, {"one", "two"});
  XtVaSetValues(w, XmNitemSelect, 2, nullptr);
  XmString zero = XmStringGenerate(const_cast<char*>("zero"), nullptr, XmCHARSET_TEXT, nullptr);
  yyComboWidgetListAddItemX(w, zero, 1);
  EXPECT_EQ(yyComboWidgetListMatchItemX(w, zero, 1), 1);
  EXPECT_EQ(yyComboWidgetListMatchItemX(w, zero, 2), 0);
  XmStringFree(zero);
  int selected = 0, count = 0;
  XtVaGetValues(w, XmNitemSelect, &selected, XmNcomboItemCount, &count, nullptr);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(selected, 3);
  EXPECT_EQ(text_of(w), "two");
  yyComboWidgetListDeleteItemX(w, 1);
  XtVaGetValues(w, XmNitemSelect, &selected, nullptr);
  EXPECT_EQ(selected, 2);
  EXPECT_EQ(text_of(w), "two");
  yyComboWidgetListDeleteItemX(w, 2);
  EXPECT_EQ(text_of(w), "");
  XtVaGetValues(w, XmNcomboItemCount, &count, nullptr);
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(calls.empty());
  XtDestroyWidget(w);
}

// A thousand options, one of them far beyond the field's width, one with
// letters outside ASCII: all come back as they went in.
TEST_F(Combo, ManyLongAndNonAsciiOptions) {
  std::vector<std::string> options;
  for (int k = 1; k <= 1000; ++k) options.push_back("Option " + std::to_string(k));
  options[499] = "Zwilling ä ö ü – α β γ";
  options[500] = std::string(600, 'w') + " end";
  WDialogPutMenu(kFormat, options, 1000, 1000);
  EXPECT_EQ(WInfoError(1), 0);
  EXPECT_EQ(winfodialogfield(kFormat, 9), 1000);
  std::string text;
  EXPECT_EQ(option(kFormat, &text), 1000);
  EXPECT_EQ(text, "Option 1000");
  for (int k : {500, 501}) {
    WDialogPutOption(kFormat, k);
    EXPECT_EQ(option(kFormat, &text), k);
    EXPECT_EQ(text, options[static_cast<std::size_t>(k - 1)]);
  }
  WDialogPutOption(kFormat, 1000);
  EXPECT_FALSE(changed(drain(), kFormat)) << "options put by the program report nothing";
  // Opened on the last option, the list ends with it.
  const FieldRecord& f = field(kFormat);
  click_centre(XtNameToWidget(f.widget, "ComboButton"));
  drain();
  Widget list = list_of(f.widget);
  ASSERT_TRUE(viewable(list));
  int top = 0, visible = 0;
  XtVaGetValues(list, XmNtopItemPosition, &top, XmNvisibleItemCount, &visible, nullptr);
  EXPECT_EQ(top + visible - 1, 1000);
  EXPECT_EQ(selected_row(list), 1000);
  yyComboWidgetDeactivateComboX(f.widget);
  drain();
  EXPECT_FALSE(viewable(list));
}

// A combo made as a grid makes its cells: in a small parent that clips its
// children, with the resource's options; its list opens whole outside it.
TEST_F(Combo, CellComboOpensBeyondItsParent) {
  DialogRecord& d = zelvy_dialog::state().wDialogInfo[zelvy_dialog::state().iDlgCur];
  const int row = yyDialogFontMetrics(d.fontIndex).controlHeight;
  Widget cellParent = XtVaCreateManagedWidget("Cells", xmDrawingAreaWidgetClass, d.widget, XtNx, 10, XtNy, 10,
                                              XtNwidth, 120, XtNheight, row, XmNmarginWidth, 0, XmNmarginHeight, 0,
                                              XmNresizePolicy, XmRESIZE_NONE, nullptr);
  FieldRecord cell = field(kTwinType);
  cell.widget = cell.valueWidget = nullptr;
  cell.x = cell.y = 0;
  cell.width = 120;
  cell.height = 200;
  cell.capabilities = zelvy_dialog::field_capability::kGridCell;
  yyDialogComboIn(cellParent, d, cell);
  ASSERT_NE(cell.widget, nullptr);
  XtManageChild(cell.widget);
  settle();
  EXPECT_EQ(cell.valueWidget, text_widget(cell.widget));
  EXPECT_LE(static_cast<int>(cell.widget->core.height), row);
  yyComboWidgetPopUpDown(cell.widget, 1);
  drain();
  Widget list = list_of(cell.widget);
  ASSERT_TRUE(viewable(list));
  Widget pull = XtParent(XtParent(list));
  EXPECT_GT(static_cast<int>(pull->core.height), 2 * row) << "the list is no taller than the cell's parent";
  EXPECT_EQ(selected_row(list), 0);
  xdo("key Escape");
  drain();
  EXPECT_FALSE(viewable(list));
  XtDestroyWidget(cellParent);
  settle();
}

}  // namespace
