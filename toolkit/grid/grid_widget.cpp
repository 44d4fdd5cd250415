// The grid widget: a Motif manager whose viewport of reused cell fields
// slides over the column arrays. Scrolling loads other rows' values into the
// same cell widgets; only the visible cells have widgets.
#include <X11/IntrinsicP.h>
#include <X11/keysym.h>
#include <Xm/DrawingA.h>
#include <Xm/DrawingAP.h>
#include <Xm/Frame.h>
#include <Xm/ManagerP.h>
#include <Xm/PushB.h>
#include <Xm/ScrollBar.h>
#include <Xm/ScrolledW.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>
#include <Xm/VendorSEP.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "toolkit/base/format.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/combo_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/grid/grid_window_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"

using namespace zelvy_dialog;

namespace {

// The option a combo cell shows, 1 when none is selected.
int combo_option(const FieldRecord& f) {
  int option = 0;
  XtVaGetValues(f.widget, XmNitemSelect, &option, nullptr);
  return std::max(1, option);
}

struct GridRec {
  CorePart core;
  CompositePart composite;
  ConstraintPart constraint;
  XmManagerPart manager;
  XmDrawingAreaPart drawing_area;
  GridPart grid;
};

struct GridClassPart {
  XtPointer extension;
};

struct GridClassRec {
  CoreClassPart core_class;
  CompositeClassPart composite_class;
  ConstraintClassPart constraint_class;
  XmManagerClassPart manager_class;
  XmDrawingAreaClassPart drawing_area_class;
  GridClassPart grid_class;
};

char* S(const char* s) { return const_cast<char*>(s); }

// Bits of the flag words of the label buttons' event state.
constexpr unsigned kShiftState = ShiftMask;
// Scheme colours cells are shown in.
constexpr int kSchemeDialog = 3, kSchemeFieldText = 14, kSchemeFieldBack = 15, kSchemeButton = 17;
// Row heights of a dialog-unit row: 13 units, the height of a text field.
constexpr int kCellHeightUnits = 13;
constexpr double kRowLabelShrink = 0.8333;
// A font's line height is its character cell less the leading between lines.
constexpr float kLineLeading = 1.07f;

#define GOFF(field) static_cast<Cardinal>(offsetof(GridRec, grid.field))
#define INT_RES(name, cls, field, def) \
  {S(name), S(cls), S(XtRInt), sizeof(int), GOFF(field), S(XtRImmediate), reinterpret_cast<XtPointer>(def)}
#define BOOL_RES(name, cls, field) \
  {S(name), S(cls), S(XtRBoolean), sizeof(Boolean), GOFF(field), S(XtRImmediate), reinterpret_cast<XtPointer>(False)}
XtResource resources[] = {
    INT_RES(grid_resource::kNcol, "Ncol", ncol, 0),
    INT_RES(grid_resource::kNrow, "Nrow", nrow, 0),
    INT_RES("ncolOrig", "NcolOrig", ncolOrig, 0),
    INT_RES("nrowOrig", "NrowOrig", nrowOrig, 0),
    INT_RES(grid_resource::kMaxNrow, "MaxNrow", maxNrow, 0),
    INT_RES(grid_resource::kNrowVis, "NrowVis", nrowVis, 0),
    BOOL_RES(grid_resource::kColLabel, "ColLabel", colLabel),
    BOOL_RES(grid_resource::kRowLabel, "RowLabel", rowLabel),
    INT_RES(grid_resource::kRowWidth, "RowWidth", rowWidth, 30),
    INT_RES(grid_resource::kRowHeight, "RowHeight", rowHeight, 20),
    BOOL_RES(grid_resource::kScrollBarH, "ScrollBarH", scrollBarH),
    BOOL_RES(grid_resource::kScrollBarV, "ScrollBarV", scrollBarV),
    INT_RES("icol", "Icol", icol, 0),
    INT_RES("irow", "Irow", irow, 0),
    INT_RES("icolOld", "IcolOld", icolOld, 0),
    INT_RES("irowOld", "IrowOld", irowOld, 0),
    {S("currentCellWidget"), S("CurrentCellWidget"), S(XtRWidget), sizeof(Widget), GOFF(currentCellWidget),
     S(XtRImmediate), nullptr},
    INT_RES(grid_resource::kTemplateIdent, "TemplateIdent", templateIdent, 0),
    INT_RES(grid_resource::kXftFont, "XftFont", xftFont, 0),
    BOOL_RES(grid_resource::kRowWrap, "RowWrap", rowWrap),
    BOOL_RES(grid_resource::kWantReturn, "WantReturn", wantReturn),
    BOOL_RES(grid_resource::kWantTab, "WantTab", wantTab),
    BOOL_RES(grid_resource::kReadOnly, "ReadOnly", readOnly),
    BOOL_RES(grid_resource::kReadOnlyColour, "ReadOnlyColour", readOnlyColour),
    BOOL_RES(grid_resource::kIntegerRows, "IntegerRows", integerRows),
    {S(grid_resource::kReportClipCallback), S(XtCCallback), S(XtRCallback), sizeof(XtCallbackList),
     GOFF(reportClipCallback), S(XtRCallback), nullptr},
};
#undef BOOL_RES
#undef INT_RES
#undef GOFF

GridPart& part(Widget w) { return reinterpret_cast<GridRec*>(w)->grid; }
GridState& st(Widget w) { return *part(w).st; }
std::size_t at(int i) { return static_cast<std::size_t>(i); }

Pixel scheme(int i) { return zelvy_x::state().wSchemeCol[at(i)].pixel; }

// ---- Translations ------------------------------------------------------------

const char* const kArrowTable =
    "<Key>osfLeft: yyGridWidgetKeyTrans(l)\n<Key>osfRight: yyGridWidgetKeyTrans(r)\n"
    "<Key>osfUp: yyGridWidgetKeyTrans(u)\n<Key>osfDown: yyGridWidgetKeyTrans(d)";
const char* const kReturnTable = "<Key>Return: yyGridWidgetKeyTrans(d)";
const char* const kTabTable = "Shift<Key>Tab: yyGridWidgetKeyTrans(L)\n<Key>Tab: yyGridWidgetKeyTrans(R)";
const char* const kClipTable =
    "Ctrl<Key>x: yyGridWidgetKeyTrans(x)\nCtrl<Key>c: yyGridWidgetKeyTrans(c)\nCtrl<Key>v: yyGridWidgetKeyTrans(v)\n"
    "<Key>osfDelete: yyGridWidgetKeyTrans(D)";
const char* const kLabelTable = "<Btn3Up>: yyGridWidgetKeyTrans(m)";
const char* const kPagingTable =
    "Shift<Btn1Down>: yyGridWidgetKeyTrans(s)\nShift<Btn1Up>: yyGridWidgetKeyTrans(n)\n"
    "Ctrl<Key>osfPageUp: yyGridWidgetKeyTrans(p,U)\nCtrl<Key>osfPageDown: yyGridWidgetKeyTrans(p,D)\n"
    "Ctrl<Key>osfBeginLine: yyGridWidgetKeyTrans(p,L)\nCtrl<Key>osfEndLine: yyGridWidgetKeyTrans(p,R)\n"
    "<Btn4Down>: yyGridWidgetKeyTrans(p,4)\n<Btn5Down>: yyGridWidgetKeyTrans(p,5)\n"
    "<Key>osfPageUp: yyGridWidgetKeyTrans(p,u)\n<Key>osfPageDown: yyGridWidgetKeyTrans(p,d)";

struct Tables {
  XtTranslations arrows = nullptr, ret = nullptr, tab = nullptr, clip = nullptr, paging = nullptr, label = nullptr;
};
Tables& tables() {
  static Tables t;
  return t;
}

void yyGridWidgetKeyTrans(Widget w, XEvent* ev, String* params, Cardinal* count);

void register_class_actions(XtAppContext app) {
  static bool done = false;
  if (done) return;
  done = true;
  static XtActionsRec actions[] = {{S("yyGridWidgetKeyTrans"), yyGridWidgetKeyTrans}};
  XtAppAddActions(app, actions, XtNumber(actions));
  Tables& t = tables();
  t.arrows = XtParseTranslationTable(kArrowTable);
  t.ret = XtParseTranslationTable(kReturnTable);
  t.tab = XtParseTranslationTable(kTabTable);
  t.clip = XtParseTranslationTable(kClipTable);
  t.paging = XtParseTranslationTable(kPagingTable);
  t.label = XtParseTranslationTable(kLabelTable);
}

// ---- Finding things --------------------------------------------------------

Widget grid_of(Widget w) {
  for (; w; w = XtParent(w))
    if (XtClass(w) == gridWidgetClass) return w;
  return nullptr;
}

// Column and viewport row of a cell's widget (any of its widgets).
bool cell_of(Widget grid, Widget w, int& column, int& vrow) {
  GridState& s = st(grid);
  for (Widget x = w; x && x != grid; x = XtParent(x))
    for (std::size_t c = 0; c < s.views.size(); ++c)
      for (std::size_t r = 0; r < s.views[c].cells.size(); ++r) {
        const FieldRecord& f = s.views[c].cells[r];
        if (f.widget == x || f.valueWidget == x) {
          column = static_cast<int>(c);
          vrow = static_cast<int>(r);
          return true;
        }
      }
  return false;
}

DialogRecord* dialog_of(Widget grid) {
  GridState& s = st(grid);
  if (s.dialogIndex < 0) return nullptr;
  DialogRecord& d = state().wDialogInfo[at(s.dialogIndex)];
  return d.identifier == -1 ? nullptr : &d;
}

int cell_code(int column, int row) { return yyDialogCellCode(column, row); }

int total_width(const GridState& s, int upTo = -1) {
  int sum = 0;
  const int n = upTo < 0 ? s.model.columnCount() : std::min(upTo, s.model.columnCount());
  for (int c = 0; c < n; ++c) sum += s.model.columns[at(c)].width;
  return sum;
}

Dimension width_of(Widget w) {
  Dimension v = 0;
  if (w) XtVaGetValues(w, XtNwidth, &v, nullptr);
  return v;
}
Dimension height_of(Widget w) {
  Dimension v = 0;
  if (w) XtVaGetValues(w, XtNheight, &v, nullptr);
  return v;
}

Widget value_widget(const FieldRecord& f) { return f.valueWidget ? f.valueWidget : f.widget; }

bool text_kind(const FieldRecord& f) { return f.textKind == 2 && f.valueWidget && XmIsText(f.valueWidget); }

// ---- Showing values ------------------------------------------------------------

// The background a viewport cell shows: the selection, read-only, own
// colours, the column's, the grid's, the scheme.
Pixel cell_background(Widget grid, int column, int row) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  const GridColumn& c = s.model.columns[at(column)];
  if (s.selectionOn && column >= s.selC1 && column <= s.selC2 && row >= s.selR1 && row <= s.selR2)
    return zelvy_x::state().wSchemeCol[at(kSchemeFieldText)].pixel == scheme(kSchemeFieldBack) ? scheme(kSchemeDialog)
                                                                                                : scheme(16);
  if (s.colourState == 0 && grid_type::textual(c.cellType)) return scheme(kSchemeDialog);
  const std::uint32_t flag = c.cellFlags[at(row)];
  if (((flag & grid_cell::kReadOnly) || g.readOnly) && !g.readOnlyColour) return scheme(kSchemeDialog);
  auto pick = [](const GridColour& col) -> std::optional<Pixel> {
    if (col[3] < 0 || col[3] > 255) return std::nullopt;
    return yyAllocPixel(col[3], col[4], col[5]);
  };
  if ((flag & grid_cell::kOwnColours) && !c.cellColours.empty())
    if (auto p = pick(c.cellColours[at(row)])) return *p;
  if (c.columnColour)
    if (auto p = pick(*c.columnColour)) return *p;
  if (s.gridColour)
    if (auto p = pick(*s.gridColour)) return *p;
  return scheme(s.colourState == 2 && grid_type::textual(c.cellType) ? kSchemeDialog : kSchemeFieldBack);
}

Pixel cell_foreground(Widget grid, int column, int row) {
  GridState& s = st(grid);
  const GridColumn& c = s.model.columns[at(column)];
  auto pick = [](const GridColour& col) -> std::optional<Pixel> {
    if (col[0] < 0 || col[0] > 255) return std::nullopt;
    return yyAllocPixel(col[0], col[1], col[2]);
  };
  if (s.selectionOn && column >= s.selC1 && column <= s.selC2 && row >= s.selR1 && row <= s.selR2)
    return scheme(8);
  if ((c.cellFlags[at(row)] & grid_cell::kOwnColours) && !c.cellColours.empty())
    if (auto p = pick(c.cellColours[at(row)])) return *p;
  if (c.columnColour)
    if (auto p = pick(*c.columnColour)) return *p;
  if (s.gridColour)
    if (auto p = pick(*s.gridColour)) return *p;
  return scheme(kSchemeFieldText);
}

void set_colours(Widget grid, int column, int vrow, int row) {
  GridState& s = st(grid);
  GridColumnWidgets& v = s.views[at(column)];
  FieldRecord& f = v.cells[at(vrow)];
  const Pixel bg = row < s.model.rows ? cell_background(grid, column, row) : scheme(kSchemeFieldBack);
  const Pixel fg = row < s.model.rows ? cell_foreground(grid, column, row) : scheme(kSchemeFieldText);
  if (v.shownBackground[at(vrow)] == bg + 1 && v.shownForeground[at(vrow)] == fg + 1) return;
  v.shownBackground[at(vrow)] = bg + 1;
  v.shownForeground[at(vrow)] = fg + 1;
  Widget w = value_widget(f);
  if (f.type == kCheckbox) XtVaSetValues(w, XtNbackground, bg, nullptr);
  else XtVaSetValues(w, XtNbackground, bg, XtNforeground, fg, nullptr);
}

// One cell widget shows row `row` of its column.
void show_cell(Widget grid, int column, int vrow, int row) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  GridColumn& c = s.model.columns[at(column)];
  FieldRecord& f = s.views[at(column)].cells[at(vrow)];
  const bool real = row < s.model.rows;
  const std::uint32_t flag = real ? c.cellFlags[at(row)] : 0;
  const bool has = flag & grid_cell::kHasValue;
  switch (c.cellType) {
    case grid_type::kCheckbox: {
      const bool on = has && c.numbers[at(row)] != 0.0;
      if (XmToggleButtonGetState(f.widget) != on) XmToggleButtonSetState(f.widget, on ? True : False, False);
      break;
    }
    case grid_type::kCombo: {
      const int option = has ? static_cast<int>(c.numbers[at(row)]) : 1;
      if (combo_option(f) != option) yyDialogPutOptionX(f, option);
      break;
    }
    default: {
      if (!text_kind(f)) break;
      std::string text;
      if (has) text = c.cellType == grid_type::kString ? c.strings[at(row)] : yyGridNumberText(c, c.numbers[at(row)]);
      // Writing a text costs a redraw: only a change is written.
      if (text != f.data.storedBytes || XmTextGetLastPosition(f.valueWidget) != static_cast<XmTextPosition>(f.data.storedShown.size()))
        yyDialogPutText(f, text, has ? (c.cellType == grid_type::kString ? 0.0 : c.numbers[at(row)]) : 0.0,
                        c.format, !has);
      if (grid_type::numeric(c.cellType)) {
        f.data.defined = (flag & grid_cell::kHadNumber) != 0 && has;
        f.data.valid = has;
        f.data.edited = false;
      }
      const bool editable = real && !(flag & grid_cell::kReadOnly) && !g.readOnly;
      if (XmTextGetEditable(f.valueWidget) != editable) XmTextSetEditable(f.valueWidget, editable ? True : False);
      if ((flag & grid_cell::kReadOnly) != 0) f.style |= field_style::kReadOnly;
      else f.style &= ~field_style::kReadOnly;
      break;
    }
  }
  set_colours(grid, column, vrow, row);
}

void set_row_label(Widget grid, int vrow) {
  GridState& s = st(grid);
  if (vrow >= static_cast<int>(s.rowLabelWidgets.size())) return;
  const int row = s.firstRow + vrow;
  const std::string text = row < s.model.rows ? s.model.rowLabels[at(row)] : std::string{};
  std::string& shown = s.shownRowLabels[at(vrow)];
  if (shown == text && s.shownRowLabelsValid) return;
  shown = text;
  yyDialogSetLabel(s.rowLabelWidgets[at(vrow)], text);
}

// ---- Messages --------------------------------------------------------------------

void send_field_changed(Widget grid, int v3, int x, int y) {
  GridState& s = st(grid);
  DialogRecord* d = dialog_of(grid);
  if (d) yyDialogSendMessage(d, FieldChanged, s.fieldId, s.fieldId, v3, -1, x, y, d->identifier);
  else if (s.gridWindow) {
    yyDialogSendMessage(nullptr, FieldChanged, 0, 0, v3, -1, x, y, s.gridWindow);
    yyGridWindowNotice(s.gridWindow, v3 == 0 ? y : -1);  // its status bar and menu follow
  }
}

// ---- Layout ----------------------------------------------------------------------

int view_width(Widget grid) {
  GridPart& g = part(grid);
  return std::max(0, static_cast<int>(width_of(g.st->viewport)) - (g.rowLabel ? g.rowWidth : 1));
}

int slide_x(Widget grid) {
  GridState& s = st(grid);
  return s.wideMode ? 0 : -total_width(s, s.firstColumn);
}

void yyGridWidgetMainPositionResize(Widget grid) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (!s.viewport) return;
  const int vw = width_of(s.viewport), vh = height_of(s.viewport);
  const int view = view_width(grid);
  // The largest useful first column: the columns from it to the last fill the view.
  s.lastLeft = s.model.columnCount() - 1;
  for (int sum = 0; s.lastLeft >= 0; --s.lastLeft) {
    sum += s.model.columns[at(s.lastLeft)].width;
    if (sum > view) break;
  }
  s.lastLeft = std::max(0, s.lastLeft + 1);
  if (s.lastLeft >= s.model.columnCount()) s.lastLeft = std::max(0, s.model.columnCount() - 1);
  if (total_width(s) <= view) s.lastLeft = 0;
  s.firstColumn = std::clamp(s.firstColumn, 0, s.lastLeft);
  const int top = g.colLabel ? g.rowHeight : 1;
  const int left = g.rowLabel ? g.rowWidth : 1;
  const int total = total_width(s) + vw + 10;
  XtConfigureWidget(s.clipWin, static_cast<Position>(left), 0, static_cast<Dimension>(std::max(1, vw - left)),
                    static_cast<Dimension>(std::max(1, vh)), 0);
  XtConfigureWidget(s.slideH, static_cast<Position>(slide_x(grid)), 0, static_cast<Dimension>(std::max(1, total)),
                    static_cast<Dimension>(std::max(1, vh)), 0);
  XtConfigureWidget(s.slideV, 0, static_cast<Position>(top), static_cast<Dimension>(std::max(1, total_width(s))),
                    static_cast<Dimension>(std::max(1, g.rowHeight * std::max(1, g.nrowVis))), 0);
  XtConfigureWidget(s.colLabelBar, 0, 0, static_cast<Dimension>(std::max(1, total)),
                    static_cast<Dimension>(g.rowHeight), 0);
  XtConfigureWidget(s.rowLabelBar, 0, static_cast<Position>(top), static_cast<Dimension>(std::max(1, g.rowWidth)),
                    static_cast<Dimension>(std::max(1, vh - top)), 0);
  XtConfigureWidget(s.selectAll, 0, 0, static_cast<Dimension>(std::max(1, g.rowWidth - 1)),
                    static_cast<Dimension>(std::max(1, g.rowHeight - 1)), 0);
  int x = 0;
  for (std::size_t c = 0; c < s.views.size(); ++c) {
    const int w = s.model.columns[c].width;
    if (s.views[c].labelWidget)
      XtConfigureWidget(s.views[c].labelWidget, static_cast<Position>(x), 0, static_cast<Dimension>(std::max(1, w - 1)),
                        static_cast<Dimension>(std::max(1, g.rowHeight - 1)), 0);
    x += w;
  }
  if (s.colEmpty)
    XtConfigureWidget(s.colEmpty, static_cast<Position>(x), 0, static_cast<Dimension>(std::max(1, vw + 10)),
                      static_cast<Dimension>(std::max(1, g.rowHeight - 1)), 0);
  auto manage = [](Widget w, bool on) {
    if (!w) return;
    if (on && !XtIsManaged(w)) XtManageChild(w);
    if (!on && XtIsManaged(w)) XtUnmanageChild(w);
  };
  manage(s.colLabelBar, g.colLabel);
  manage(s.rowLabelBar, g.rowLabel);
  manage(s.selectAll, g.colLabel && g.rowLabel);
}

void destroy_rows(Widget grid) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  for (GridColumnWidgets& v : s.views) {
    for (FieldRecord& f : v.cells) {
      Widget w = f.outerWidget ? f.outerWidget : f.widget;
      if (w) XtDestroyWidget(w);
    }
    v.cells.clear();
    v.shownBackground.clear();
    v.shownForeground.clear();
  }
  for (Widget w : s.rowLabelWidgets) XtDestroyWidget(w);
  s.rowLabelWidgets.clear();
  s.shownRowLabels.clear();
  g.currentCellWidget = nullptr;
  s.builtRows = 0;
}

void yyGridWidgetButtonPushCB(Widget w, XtPointer data, XtPointer call);
void yyGridWidgetCellChangedCBX(Widget w, XtPointer data, XtPointer call);
void cell_verify_cb(Widget w, XtPointer data, XtPointer call);

Widget label_button(Widget parent, const char* name, Widget grid) {
  GridState& s = st(grid);
  Widget b = XtVaCreateWidget(name, xmPushButtonWidgetClass, parent, XmNshadowThickness,
                              zelvy_x::state().bFlatStyle ? 0 : 2, XmNrecomputeSize, False, XmNhighlightThickness, 0,
                              XtNborderWidth, 0, XtNbackground, scheme(kSchemeButton), XmNtraversalOn, False,
                              XmNmarginHeight, 0, XmNmarginWidth, 2, nullptr);
  if (XmRenderTable rt = yyDialogRenderTable(s.fontIndex)) XtVaSetValues(b, XmNrenderTable, rt, nullptr);
  XtOverrideTranslations(b, tables().clip);
  XtOverrideTranslations(b, tables().label);
  yyDialogSetLabel(b, "");
  XtAddCallback(b, XmNactivateCallback, yyGridWidgetButtonPushCB, grid);
  return b;
}

void yyGridWidgetCreateColumn(Widget grid, int column) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  GridColumnWidgets& v = s.views[at(column)];
  GridColumn& c = s.model.columns[at(column)];
  v.cells.assign(at(g.nrowVis), FieldRecord{});
  v.shownBackground.assign(at(g.nrowVis), 0);
  v.shownForeground.assign(at(g.nrowVis), 0);
  const int x = total_width(s, column);
  const bool partial = g.nrowVis > s.fullRows;
  for (int r = 0; r < g.nrowVis; ++r) {
    FieldRecord& f = v.cells[at(r)];
    f = v.templateField;
    const bool inPart = partial && r == g.nrowVis - 1;
    f.x = x;
    f.y = inPart ? 0 : g.rowHeight * r;
    f.width = std::max(1, c.width - 1);
    f.height = std::max(1, g.rowHeight - 1);
    f.style &= ~(field_style::kBorder | field_style::kMultiLine);
    f.extendedStyle = 0;
    f.extraFlags &= ~field_extra::kSpinner;
    DialogRecord pseudo;
    pseudo.identifier = g.templateIdent;
    pseudo.resourceId = g.templateIdent;
    pseudo.widget = inPart ? s.partRow : s.slideV;
    pseudo.fontIndex = f.fontIndex;
    yyDialogFieldCreateType(pseudo, f);
    f.capabilities |= field_capability::kGridCell;
    if (!f.widget) continue;
    if (!f.valueWidget) f.valueWidget = f.widget;
    XtVaSetValues(f.widget, XmNuserData, static_cast<XtPointer>(&f), nullptr);
    Widget w = value_widget(f);
    if (text_kind(f) && w == f.widget) {
      // One line of the cell's font in the middle of the row.
      const int line = static_cast<int>(yyDialogFontMetrics(f.fontIndex).charHeight / kLineLeading);
      XtVaSetValues(w, XmNshadowThickness, 0, XmNhighlightThickness, 0, XmNmarginHeight,
                    std::max(0, (f.height - line) / 2), nullptr);
      // Thinner edges make the text ask for less: the cell keeps its row.
      XtConfigureWidget(w, static_cast<Position>(f.x), static_cast<Position>(f.y), static_cast<Dimension>(f.width),
                        static_cast<Dimension>(f.height), 0);
    }
    if (text_kind(f)) {
      XtAddCallback(w, XmNmodifyVerifyCallback, cell_verify_cb, grid);
      if (c.cellType != grid_type::kCombo) XtAddCallback(w, XmNvalueChangedCallback, yyGridWidgetCellChangedCBX, grid);
      f.data.charLimit = c.cellType == grid_type::kString ? c.charLimit : f.data.charLimit;
    }
    if (c.cellType == grid_type::kCheckbox) {
      XtVaSetValues(f.widget, XmNhighlightThickness, 0, nullptr);
      XtAddCallback(f.widget, XmNvalueChangedCallback, yyGridWidgetCellChangedCBX, grid);
    }
    if (c.cellType == grid_type::kCombo) {
      // A combo sizes itself for a dialog's line: here it takes the row.
      XtAddCallback(f.widget, XmNvalueChangedCallback, yyGridWidgetCellChangedCBX, grid);
    }
    XtOverrideTranslations(w, tables().arrows);
    XtOverrideTranslations(w, tables().paging);
    XtOverrideTranslations(w, tables().clip);
    if (g.wantReturn) XtOverrideTranslations(w, tables().ret);
    if (g.wantTab) XtOverrideTranslations(w, tables().tab);
    yyDialogCellKeys(w, !g.wantTab);  // the context menu and Tab of the dialog
    XtManageChild(f.outerWidget ? f.outerWidget : f.widget);
    if (c.cellType == grid_type::kCombo) {
      // A combo lays its parts out only when its size changes: it is given
      // one size and then the row's.
      XtConfigureWidget(f.widget, static_cast<Position>(f.x), static_cast<Position>(f.y), static_cast<Dimension>(f.width),
                        static_cast<Dimension>(f.height + 1), 0);
      XtResizeWidget(f.widget, static_cast<Dimension>(f.width), static_cast<Dimension>(f.height), 0);
    }
  }
}

void create_rows(Widget grid) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  for (int r = 0; r < g.nrowVis; ++r) {
    Widget b = label_button(s.rowLabelBar, "GridRowLabel", grid);
    XtConfigureWidget(b, 0, static_cast<Position>(g.rowHeight * r), static_cast<Dimension>(std::max(1, g.rowWidth - 1)),
                      static_cast<Dimension>(std::max(1, g.rowHeight - 1)), 0);
    XtVaSetValues(b, XmNalignment, XmALIGNMENT_BEGINNING, nullptr);
    XtManageChild(b);
    s.rowLabelWidgets.push_back(b);
  }
  s.shownRowLabels.assign(at(g.nrowVis), std::string{});
  s.shownRowLabelsValid = false;
  const bool partial = g.nrowVis > s.fullRows;
  XtConfigureWidget(s.partRow, 0, static_cast<Position>(g.rowHeight * std::max(0, g.nrowVis - 1)),
                    static_cast<Dimension>(std::max(1, total_width(s) + 10)), static_cast<Dimension>(g.rowHeight), 0);
  if (partial) XtManageChild(s.partRow);
  else XtUnmanageChild(s.partRow);
  for (int c = 0; c < s.model.columnCount(); ++c) yyGridWidgetCreateColumn(grid, c);
  XtResizeWidget(s.slideV, static_cast<Dimension>(std::max(1, total_width(s))),
                 static_cast<Dimension>(std::max(1, g.rowHeight * std::max(1, g.nrowVis))), 0);
  s.builtRows = g.nrowVis;
  s.builtColumns = s.model.columnCount();
  yyGridWidgetUpdateViewportData(grid, false);
}

// 1 builds the rows of the viewport, -1 destroys them; -2 only forgets them,
// for a widget tree that Xt is taking down itself.
void yyGridWidgetRowCreateDestroy(Widget grid, int mode) {
  GridState& s = st(grid);
  if (mode == 1) return create_rows(grid);
  if (mode == -1) return destroy_rows(grid);
  for (GridColumnWidgets& v : s.views) v.cells.clear();
  s.rowLabelWidgets.clear();
}

// ---- Scrolling and the current cell ----------------------------------------------

void set_bar(Widget bar, int minimum, int maximum, int value, int slider, int increment, int page) {
  if (!bar) return;
  XtVaSetValues(bar, XmNminimum, minimum, XmNmaximum, maximum, XmNvalue, value, XmNsliderSize, slider,
                XmNincrement, increment, XmNpageIncrement, page, nullptr);
}

// The cell widget that takes the keyboard for a cell: the text of text kinds.
Widget focus_widget(const FieldRecord& f) { return value_widget(f); }

void yyGridSelectCell(Widget w, int cursor) {
  if (!w) return;
  XmProcessTraversal(w, XmTRAVERSE_CURRENT);
  if (XmIsText(w)) {
    if (cursor < 0) XmTextSetSelection(w, 0, XmTextGetLastPosition(w), CurrentTime);
    else {
      XmTextClearSelection(w, CurrentTime);
      XmTextSetInsertionPosition(w, std::min<XmTextPosition>(cursor, XmTextGetLastPosition(w)));
    }
  }
}

// Whether a row has cell widgets now.
bool in_viewport(Widget grid, int row) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  return row >= s.firstRow && row < s.firstRow + g.nrowVis && row < s.model.rows;
}

Widget cell_widget_for(Widget grid, int column, int row) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (!in_viewport(grid, row) || column < 0 || column >= static_cast<int>(s.views.size())) return nullptr;
  const int vr = row - s.firstRow;
  if (vr >= static_cast<int>(s.views[at(column)].cells.size())) return nullptr;
  return focus_widget(s.views[at(column)].cells[at(vr)]);
}

// The vertical bar moved to `value`: the rows from it are shown, and the
// current cell kept in view unless a selection holds the keyboard.
void scroll_rows(Widget grid, int value) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (value >= s.model.rows || value < 0 || value == s.firstRow) return;
  s.firstRow = value;
  yyGridWidgetUpdateViewportData(grid, true);
  if (s.selectionOn) return;
  // The cell the user chose stays where a Shift+click selection starts.
  const int anchorColumn = s.anchorColumn, anchorRow = s.anchorRow;
  const int last = s.firstRow + std::max(1, s.fullRows) - 1;
  if (g.irow < s.firstRow) yyGridWidgetSetCellFocusX(grid, g.icol, s.firstRow, -1);
  else if (g.irow > last) yyGridWidgetSetCellFocusX(grid, g.icol, std::min(last, s.model.rows - 1), -1);
  else yyGridWidgetSetCellFocusX(grid, -1, -1, -1);
  s.anchorColumn = anchorColumn;
  s.anchorRow = anchorRow;
}

void scroll_columns(Widget grid, int value) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (value == s.firstColumn) return;
  s.firstColumn = std::clamp(value, 0, std::max(0, s.lastLeft));
  if (s.slideH) XtMoveWidget(s.slideH, static_cast<Position>(slide_x(grid)), 0);
  if (s.selectionOn) return;
  const int anchorColumn = s.anchorColumn, anchorRow = s.anchorRow;
  if (g.icol < s.firstColumn) {
    yyGridWidgetSetCellFocusX(grid, s.firstColumn, g.irow, -1);
    s.anchorColumn = anchorColumn;
    s.anchorRow = anchorRow;
    return;
  }
  int sum = 0, lastVisible = s.firstColumn;
  const int view = view_width(grid);
  for (int c = s.firstColumn; c < s.model.columnCount(); ++c) {
    sum += s.model.columns[at(c)].width;
    if (sum > view + 1) break;
    lastVisible = c;
  }
  if (g.icol > lastVisible) yyGridWidgetSetCellFocusX(grid, lastVisible, g.irow, -1);
  s.anchorColumn = anchorColumn;
  s.anchorRow = anchorRow;
}

void yyGridWidgetScrollCB(Widget bar, XtPointer data, XtPointer call) {
  Widget grid = static_cast<Widget>(data);
  GridState& s = st(grid);
  auto* cbs = static_cast<XmScrollBarCallbackStruct*>(call);
  if (state().bInvalidField) {
    // An invalid number holds its cell: the bar goes back.
    yyGridWidgetScrollBarUpdate(grid);
    yyGridWidgetSetCellFocusX(grid, -1, -1, -1);
    return;
  }
  if (bar == s.scrollBarV) scroll_rows(grid, cbs->value);
  else scroll_columns(grid, cbs->value);
}

// ---- Cells changed by the user ---------------------------------------------------

void cell_verify_cb(Widget w, XtPointer data, XtPointer call) {
  Widget grid = static_cast<Widget>(data);
  GridState& s = st(grid);
  if (s.refreshing || state().bNumericIgnoreChange) return;
  int column = 0, vrow = 0;
  if (!cell_of(grid, w, column, vrow)) return;
  FieldRecord& f = s.views[at(column)].cells[at(vrow)];
  auto* cbs = static_cast<XmTextVerifyCallbackStruct*>(call);
  XmTextBlock b = cbs->text;
  if (!b || !b->ptr || b->length <= 0) return;
  TextFieldData& t = f.data;
  const int present = static_cast<int>(XmTextGetLastPosition(w));
  const int allowed =
      t.charLimit > 0 ? std::max(0, t.charLimit - (present - static_cast<int>(cbs->endPos - cbs->startPos))) : -1;
  std::string kept = yyDialogStrFilterInsert(std::string(b->ptr, static_cast<std::size_t>(b->length)), t.kind, false, allowed);
  if (t.kind >= 3) {
    std::string numeric;
    for (char ch : kept)
      if (yyDialogStrValidNum(t.kind, ch)) numeric += ch;
    kept = numeric;
  }
  for (char& ch : kept) {
    if (t.kind == 1) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    if (t.kind == 2) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
  }
  if (kept.empty()) {
    cbs->doit = False;
    return;
  }
  std::memcpy(b->ptr, kept.data(), kept.size());
  b->length = static_cast<int>(kept.size());
}

void yyGridWidgetCellChangedCBX(Widget w, XtPointer data, XtPointer) {
  Widget grid = static_cast<Widget>(data);
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (s.refreshing || state().bNumericIgnoreChange) return;
  int column = 0, vrow = 0;
  if (!cell_of(grid, w, column, vrow)) return;
  const int row = s.firstRow + vrow;
  if (row >= s.model.rows) return;
  GridColumn& c = s.model.columns[at(column)];
  FieldRecord& f = s.views[at(column)].cells[at(vrow)];
  const bool locked = g.readOnly || (c.cellFlags[at(row)] & grid_cell::kReadOnly);
  s.model.modified = s.model.changed = true;
  switch (c.cellType) {
    case grid_type::kCheckbox:
    case grid_type::kCombo:
      if (locked) {
        // A read-only toggle or combo snaps back.
        s.refreshing = true;
        show_cell(grid, column, vrow, row);
        s.refreshing = false;
        return;
      }
      if (c.cellType == grid_type::kCheckbox) yyGridModelStoreNumber(c, row, XmToggleButtonGetState(f.widget) ? 1.0 : 0.0);
      else {
        yyGridModelStoreNumber(c, row, combo_option(f));
      }
      break;
    default: {
      char* raw = XmTextGetString(value_widget(f));
      std::string text = raw ? raw : "";
      XtFree(raw);
      f.data.storedBytes = f.data.storedShown = text;
      if (c.cellType == grid_type::kString) {
        yyGridModelStore(c, row, text, 0.0);
        break;
      }
      // A number being typed: stored when it parses, and the grid holds the
      // cell while it doesn't.
      const std::size_t lead = text.find_first_not_of(' ');
      if (lead == std::string::npos) {
        yyGridModelClear(c, row);
        state().bInvalidField = false;
        break;
      }
      int valid = 0;
      double v = 0.0;
      yyst2dblcheck_(v, valid, text);
      state().bInvalidField = !valid || !yyGridModelInRange(c, v);
      if (valid) yyGridModelStoreNumber(c, row, v);
      break;
    }
  }
  if (f.reportEveryChange || (dialog_of(grid) && s.fieldId && [&] {
        const int fi = yyDialogFindField(s.fieldId, s.dialogIndex);
        return fi >= 0 && dialog_of(grid)->fields[at(fi)].reportEveryChange;
      }()))
    send_field_changed(grid, 1, cell_code(column, row), cell_code(column, row));
}

// A cell took the keyboard: it becomes the current cell, and the grid the
// dialog's field in focus. The shell tells every move of the keyboard focus,
// also those that come without an X focus event.
void focus_moved_cb(Widget, XtPointer data, XtPointer call) {
  auto* cbs = static_cast<XmFocusMovedCallbackStruct*>(call);
  Widget grid = static_cast<Widget>(data);
  if (!cbs || grid->core.being_destroyed) return;
  Widget w = cbs->new_focus;
  GridPart& g = part(grid);
  int oldColumn = 0, oldRow = 0;
  // A cell that is going away (its rows being rebuilt) has nothing left to show.
  if (cbs->old_focus && cbs->old_focus != w && !cbs->old_focus->core.being_destroyed && grid_of(cbs->old_focus) == grid &&
      cell_of(grid, cbs->old_focus, oldColumn, oldRow) && g.st->firstRow + oldRow < g.st->model.rows) {
    // The cell left shows what it holds: a typed number in its format, and
    // text that was no number gives way to the value kept.
    g.st->refreshing = true;
    show_cell(grid, oldColumn, oldRow, g.st->firstRow + oldRow);
    g.st->refreshing = false;
    state().bInvalidField = false;
  }
  if (!w || grid_of(w) != grid) return;
  GridState& s = *g.st;
  int column = 0, vrow = 0;
  if (!cell_of(grid, w, column, vrow)) return;
  const int row = std::min(s.firstRow + vrow, std::max(0, s.model.rows - 1));
  if (s.selectionOn && zelvy_menu::state().iActiveMenuWin == -1) yyGridWidgetSelectX(grid, false, 0, 0, 0, 0);
  if (column != g.icol || row != g.irow) {
    const int oldCode = cell_code(g.icol, g.irow);
    g.icol = column;
    g.irow = row;
    s.anchorColumn = column;
    s.anchorRow = row;
    send_field_changed(grid, 0, oldCode, cell_code(column, row));
  }
  g.currentCellWidget = w;
  DialogRecord* d = dialog_of(grid);
  if (!d) return;
  const int fi = yyDialogFindField(s.fieldId, s.dialogIndex);
  if (fi < 0) return;
  const int code = cell_code(g.icol, g.irow);
  if (d->focusField != fi) {
    if (d->focusField >= 0 && g.irowOld != -1)
      yyDialogSendMessage(d, FieldChanged, d->fields[at(d->focusField)].identifier, s.fieldId, 0, -1, d->lastCellCode,
                          code, d->identifier);
    d->previousFocusField = d->focusField;
    d->focusField = fi;
  }
  g.icolOld = g.icol;
  g.irowOld = g.irow;
  d->lastCellCode = code;
}

// ---- Keyboard and mouse ---------------------------------------------------------

void ring(Widget grid) { XBell(XtDisplay(grid), 0); }

void page(Widget grid, char how) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  const int full = std::max(1, s.fullRows);
  switch (how) {
    case 'u': {
      const int top = std::max(s.firstRow - full, 0);
      yyGridWidgetScrollToCell(grid, g.icol, top);
      const int last = s.firstRow + full - 1;
      yyGridWidgetSetCellFocusX(grid, g.icol, g.irow > last ? last : g.irow, -1);
      break;
    }
    case 'd': {
      const int target = std::min(s.firstRow + 2 * full - 1, s.model.rows - 1);
      yyGridWidgetScrollToCell(grid, g.icol, target);
      yyGridWidgetSetCellFocusX(grid, g.icol, g.irow < s.firstRow ? s.firstRow : g.irow, -1);
      break;
    }
    case 'U': yyGridWidgetSetCellFocusX(grid, g.icol, 0, -1); break;
    case 'D': yyGridWidgetSetCellFocusX(grid, g.icol, std::max(0, s.model.rows - 1), -1); break;
    case 'L': yyGridWidgetSetCellFocusX(grid, 0, g.irow, -1); break;
    case 'R': yyGridWidgetSetCellFocusX(grid, std::max(0, s.model.columnCount() - 1), g.irow, -1); break;
    case '4': yyGridWidgetScrollRowsX(grid, std::max(s.firstRow - 1, 0)); break;
    case '5': yyGridWidgetScrollRowsX(grid, std::min(s.firstRow + 1, std::max(0, s.model.rows - full))); break;
    default: break;
  }
}

// The right button released on a label or the corner: the application
// hears which, with the modifiers and where.
void context_click(Widget grid, Widget w, XEvent* ev) {
  GridState& s = st(grid);
  if (!ev || ev->type != ButtonRelease) return;
  constexpr int kLabelItemFlag = 0x20, kGridFieldType = 15;
  const int modifiers = static_cast<int>(ev->xbutton.state & (ShiftMask | ControlMask | Mod1Mask));
  int item = -1, mods = modifiers;
  const int lastC = s.model.columnCount() - 1, lastR = s.model.rows - 1;
  if (w == s.selectAll) {
    item = 0;
    mods |= kLabelItemFlag;
    if ((s.fieldExtra & field_extra::kRightSelects) && lastC >= 0 && lastR >= 0) yyGridWidgetSelectX(grid, true, 0, 0, lastC, lastR);
  }
  for (int c = 0; c <= lastC && item < 0; ++c)
    if (s.views[at(c)].labelWidget == w) {
      item = c + 1;
      mods |= kLabelItemFlag;
      if ((s.fieldExtra & field_extra::kRightSelects) && lastR >= 0) yyGridWidgetSelectX(grid, true, c, 0, c, lastR);
    }
  for (std::size_t r = 0; r < s.rowLabelWidgets.size() && item < 0; ++r)
    if (s.rowLabelWidgets[r] == w && s.firstRow + static_cast<int>(r) <= lastR) {
      item = s.firstRow + static_cast<int>(r) + 1;
      if ((s.fieldExtra & field_extra::kRightSelects) && lastC >= 0) yyGridWidgetSelectX(grid, true, 0, item - 1, lastC, item - 1);
    }
  if (item < 0) return;
  DialogRecord* d = dialog_of(grid);
  const int win = d ? d->identifier : s.gridWindow;
  yyMsgSend(ContextClick, item, mods, kGridFieldType, d ? s.fieldId : 0, ev->xbutton.x_root, ev->xbutton.y_root, win,
            static_cast<int>(ev->xbutton.time));
}

void yyGridWidgetKeyTrans(Widget w, XEvent* ev, String* params, Cardinal* count) {
  Widget grid = grid_of(w);
  if (!grid || !count || *count < 1) return;
  GridPart& g = part(grid);
  GridState& s = *g.st;
  const char what = params[0][0];
  const bool invalid = state().bInvalidField;
  auto hold = [&] {
    if (XmIsText(w)) XmTextSetSelection(w, 0, XmTextGetLastPosition(w), CurrentTime);
  };
  switch (what) {
    case 'l': case 'r': {
      if (XmIsText(w)) {
        const XmTextPosition p = XmTextGetInsertionPosition(w), end = XmTextGetLastPosition(w);
        if (what == 'l' && p > 0) {
          XmTextClearSelection(w, CurrentTime);
          XmTextSetInsertionPosition(w, p - 1);
          return;
        }
        if (what == 'r' && p < end) {
          XmTextClearSelection(w, CurrentTime);
          XmTextSetInsertionPosition(w, p + 1);
          return;
        }
        if (invalid) return hold();
      }
      if (!yyGridWidgetMoveCurrentCellX(grid, what == 'l' ? 1 : 2)) ring(grid);
      return;
    }
    case 'L': case 'R':
      if (invalid) return hold();
      if (!yyGridWidgetMoveCurrentCellX(grid, what == 'L' ? 1 : 2)) ring(grid);
      return;
    case 'u': case 'd':
      if (invalid) return hold();
      if (!yyGridWidgetMoveCurrentCellX(grid, what == 'u' ? 3 : 4)) ring(grid);
      return;
    case 'x': yyGridWidgetSelCellCutX(grid); return;
    case 'c': yyGridWidgetSelCellCopyX(grid); return;
    case 'v': yyGridWidgetSelCellPasteX(grid); return;
    case 'D':
      if (s.selectionOn) yyGridWidgetSelCellDelX(grid, true);
      else if (XmIsText(w)) {
        // No cells selected: Delete edits the text as it always does.
        XtCallActionProc(w, S("delete-next-character"), ev, nullptr, 0);
      }
      return;
    case 's': {
      int column = 0, vrow = 0;
      if (!cell_of(grid, w, column, vrow)) return;
      const int row = std::min(s.firstRow + vrow, s.model.rows - 1);
      const int ac = s.anchorColumn, ar = s.anchorRow;
      yyGridWidgetSelectX(grid, true, std::min(ac, column), std::min(ar, row), std::max(ac, column), std::max(ar, row));
      return;
    }
    case 'm': context_click(grid, w, ev); return;
    case 'p':
      if (invalid) return hold();
      if (*count >= 2) page(grid, params[1][0]);
      return;
    default: return;
  }
}

void yyGridWidgetButtonPushCB(Widget w, XtPointer data, XtPointer call) {
  Widget grid = static_cast<Widget>(data);
  GridPart& g = part(grid);
  GridState& s = *g.st;
  auto* cbs = static_cast<XmAnyCallbackStruct*>(call);
  const bool shift = cbs && cbs->event && (cbs->event->xbutton.state & kShiftState);
  const int lastC = s.model.columnCount() - 1, lastR = s.model.rows - 1;
  if (lastC < 0 || lastR < 0) return;
  if (w == s.selectAll) return yyGridWidgetSelectX(grid, true, 0, 0, lastC, lastR);
  for (int c = 0; c <= lastC; ++c)
    if (s.views[at(c)].labelWidget == w) {
      const int from = shift ? g.icol : c;
      if (!shift) g.icol = c;
      return yyGridWidgetSelectX(grid, true, std::min(from, c), 0, std::max(from, c), lastR);
    }
  for (std::size_t r = 0; r < s.rowLabelWidgets.size(); ++r)
    if (s.rowLabelWidgets[r] == w) {
      const int row = s.firstRow + static_cast<int>(r);
      if (row > lastR) return;
      const int from = shift ? g.irow : row;
      if (!shift) g.irow = row;
      return yyGridWidgetSelectX(grid, true, 0, std::min(from, row), lastC, std::max(from, row));
    }
}

// The viewport's size changed: the lines between cells are the background
// showing through, so only the layout and the rows that fit are redone.
void yyGridWidgetCellDrawCB(Widget, XtPointer data, XtPointer) {
  Widget grid = static_cast<Widget>(data);
  yyGridWidgetMainPositionResize(grid);
  yyGridWidgetReCreateViewport(grid);
  yyGridWidgetScrollBarUpdate(grid);
}

// ---- The class --------------------------------------------------------------------

Widget plain_area(const char* name, Widget parent, Pixel background) {
  return XtVaCreateManagedWidget(name, xmDrawingAreaWidgetClass, parent, XmNmarginWidth, 0, XmNmarginHeight, 0,
                                 XmNresizePolicy, XmRESIZE_NONE, XtNbackground, background, XtNborderWidth, 0,
                                 nullptr);
}

void yyGridWidgetInitialize(Widget, Widget neww, ArgList, Cardinal*) {
  GridPart& g = part(neww);
  register_class_actions(XtWidgetToApplicationContext(neww));
  g.st = new GridState;  // Xt owns the instance record; Destroy deletes this
  GridState& s = *g.st;
  g.ncolOrig = g.ncol;
  g.nrowOrig = g.nrow;
  g.maxNrow = g.nrow;
  g.icol = g.irow = 0;
  g.icolOld = g.irowOld = -1;
  g.nrowVis = 0;
  g.currentCellWidget = nullptr;
  const Pixel lines = yyAllocPixel(s.lineColour & 0xFF, (s.lineColour >> 8) & 0xFF, (s.lineColour >> 16) & 0xFF);
  s.window = XtVaCreateManagedWidget("GridWindow", xmScrolledWindowWidgetClass, neww, XmNscrollingPolicy,
                                     XmAPPLICATION_DEFINED, XmNvisualPolicy, XmVARIABLE, XmNscrollBarDisplayPolicy,
                                     XmSTATIC, XmNspacing, 0, XmNshadowThickness, 0, XtNbackground,
                                     scheme(kSchemeDialog), XtNx, 0, XtNy, 0, XtNwidth,
                                     std::max<Dimension>(1, neww->core.width), XtNheight,
                                     std::max<Dimension>(1, neww->core.height), XmNtraversalOn, True, nullptr);
  for (int k = 0; k < 2; ++k) {
    Widget bar = XtVaCreateWidget("GridScroll", xmScrollBarWidgetClass, s.window, XmNorientation,
                                  k == 0 ? XmHORIZONTAL : XmVERTICAL, XmNincrement, 1, XmNminimum, 0, XmNmaximum, 10,
                                  XmNsliderSize, 1, XmNpageIncrement, 10, XmNtraversalOn, False,
                                  XmNhighlightThickness, 0, nullptr);
    XtAddCallback(bar, XmNvalueChangedCallback, yyGridWidgetScrollCB, neww);
    XtAddCallback(bar, XmNdragCallback, yyGridWidgetScrollCB, neww);
    (k == 0 ? s.scrollBarH : s.scrollBarV) = bar;
  }
  if (g.scrollBarH) XtManageChild(s.scrollBarH);
  if (g.scrollBarV) XtManageChild(s.scrollBarV);
  s.viewport = plain_area("GridViewport", s.window, scheme(kSchemeDialog));
  XtAddCallback(s.viewport, XmNresizeCallback, yyGridWidgetCellDrawCB, neww);
  XmScrolledWindowSetAreas(s.window, g.scrollBarH ? s.scrollBarH : nullptr, g.scrollBarV ? s.scrollBarV : nullptr,
                           s.viewport);
  // The lines between cells are the cells' parent showing through; around
  // the cells the dialog's colour.
  s.clipWin = plain_area("GridClipWin", s.viewport, scheme(kSchemeDialog));
  s.slideH = plain_area("GridScrollH", s.clipWin, scheme(kSchemeDialog));
  s.slideV = plain_area("GridScrollV", s.slideH, lines);
  s.colLabelBar = plain_area("GridLabel", s.slideH, scheme(kSchemeDialog));
  s.rowLabelBar = plain_area("GridLabel", s.viewport, scheme(kSchemeDialog));
  s.partRow = XtVaCreateWidget("GridPart", xmDrawingAreaWidgetClass, s.slideV, XmNmarginWidth, 0, XmNmarginHeight, 0,
                               XmNresizePolicy, XmRESIZE_NONE, XtNbackground, lines, XtNborderWidth, 0, nullptr);
  s.selectAll = label_button(s.viewport, "ButSelectAll", neww);
  XtVaSetValues(s.selectAll, XmNtraversalOn, True, nullptr);
  s.colEmpty = XtVaCreateManagedWidget("ButColEmpty", xmPushButtonWidgetClass, s.colLabelBar, XmNshadowThickness,
                                       zelvy_x::state().bFlatStyle ? 0 : 2, XmNrecomputeSize, False,
                                       XmNhighlightThickness, 0, XtNborderWidth, 0, XtNbackground, scheme(kSchemeButton),
                                       XmNtraversalOn, False, nullptr);
  XtSetSensitive(s.colEmpty, False);
  GridModel& m = s.model;
  m.columns.assign(at(std::max(0, g.ncol)), GridColumn{});
  s.views.assign(at(std::max(0, g.ncol)), GridColumnWidgets{});
  m.maxRows = g.maxNrow;
  yyGridModelResize(m, g.nrow);
}

void yyGridWidgetDestroy(Widget w) {
  GridPart& g = part(w);
  if (g.st->focusShell && !g.st->focusShell->core.being_destroyed)
    XmeRemoveFocusChangeCallback(g.st->focusShell, focus_moved_cb, w);
  // The cell widgets go with the tree; their records go here.
  delete g.st;
  g.st = nullptr;
}

void Resize(Widget w) {
  GridState& s = st(w);
  if (s.window) XtConfigureWidget(s.window, 0, 0, std::max<Dimension>(1, w->core.width),
                                  std::max<Dimension>(1, w->core.height), 0);
}

// Resources changed by the program: read-only reaches the cells shown, a
// cell widget named current makes its cell current, labels relayout.
Boolean yyGridWidgetSetValues(Widget old, Widget, Widget neww, ArgList, Cardinal*) {
  GridPart& was = part(old);
  GridPart& g = part(neww);
  GridState& s = *g.st;
  if (g.readOnly != was.readOnly) yyGridWidgetUpdateViewportData(neww, true);
  if (g.colLabel != was.colLabel || g.rowLabel != was.rowLabel) {
    s.forceRebuild = true;
    yyGridWidgetMainPositionResize(neww);
    yyGridWidgetReCreateViewport(neww);
    yyGridWidgetScrollBarUpdate(neww);
  }
  if (g.currentCellWidget != was.currentCellWidget && g.currentCellWidget) {
    int column = 0, vrow = 0;
    Widget w = g.currentCellWidget;
    g.currentCellWidget = was.currentCellWidget;
    if (cell_of(neww, w, column, vrow)) yyGridWidgetSetCellFocusX(neww, column, s.firstRow + vrow, -1);
  }
  return False;
}

XtGeometryResult GeometryManager(Widget, XtWidgetGeometry* request, XtWidgetGeometry* reply) {
  // The grid places its children itself; what they ask for they get.
  if (reply) *reply = *request;
  return XtGeometryYes;
}

void ChangeManaged(Widget w) { Resize(w); }

GridClassRec gridClassRec;

WidgetClass make_class() {
  GridClassRec& c = gridClassRec;
  c = GridClassRec{};
  CoreClassPart& core = c.core_class;
  core.superclass = reinterpret_cast<WidgetClass>(&xmDrawingAreaClassRec);
  core.class_name = S("Grid");
  core.widget_size = sizeof(GridRec);
  core.initialize = yyGridWidgetInitialize;
  core.realize = XtInheritRealize;
  core.resources = resources;
  core.num_resources = XtNumber(resources);
  core.xrm_class = NULLQUARK;
  core.compress_motion = True;
  core.compress_exposure = XtExposeCompressMaximal;
  core.compress_enterleave = True;
  core.destroy = yyGridWidgetDestroy;
  core.resize = Resize;
  core.expose = XtInheritExpose;
  core.set_values = yyGridWidgetSetValues;
  core.accept_focus = nullptr;
  core.version = XtVersion;
  core.tm_table = XtInheritTranslations;
  core.query_geometry = XtInheritQueryGeometry;
  core.display_accelerator = XtInheritDisplayAccelerator;
  c.composite_class.geometry_manager = GeometryManager;
  c.composite_class.change_managed = ChangeManaged;
  c.composite_class.insert_child = XtInheritInsertChild;
  c.composite_class.delete_child = XtInheritDeleteChild;
  c.constraint_class.constraint_size = sizeof(XmManagerConstraintRec);
  c.manager_class.translations = XtInheritTranslations;
  c.manager_class.parent_process = XmInheritParentProcess;
  return reinterpret_cast<WidgetClass>(&gridClassRec);
}

}  // namespace

WidgetClass gridWidgetClass = make_class();

GridPart& yyGridPart(Widget grid) { return part(grid); }

void yyGridReportClip(Widget grid, int c1, int r1, int c2, int r2) {
  GridPart& g = part(grid);
  int rect[4] = {c1, r1, c2, r2};
  if (g.reportClipCallback) XtCallCallbackList(grid, g.reportClipCallback, rect);
}

void yyGridReportClipCB(Widget grid, XtPointer, XtPointer call) {
  const int* rect = static_cast<const int*>(call);
  if (rect) send_field_changed(grid, 1, cell_code(rect[2], rect[3]), cell_code(rect[0], rect[1]));
}

Widget yyGridOfField(const FieldRecord& f) {
  if (f.type != kGrid || !f.valueWidget || XtClass(f.valueWidget) != gridWidgetClass) return nullptr;
  return f.valueWidget;
}

// ---- Viewport ------------------------------------------------------------------------

void yyGridWidgetReCreateViewport(Widget grid) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (!s.viewport) return;
  int remaining = static_cast<int>(height_of(s.viewport)) + 1 - (g.colLabel ? g.rowHeight : 0);
  int visible = 0, full = 0;
  while (remaining > 0 && g.rowHeight > 0) {
    ++visible;
    remaining -= g.rowHeight;
    if (remaining > 0) ++full;
  }
  visible = std::min(visible, s.model.rows);
  full = std::min(full, s.model.rows);
  if (!s.forceRebuild && visible == s.builtRows && full == s.fullRows && s.model.columnCount() == s.builtColumns) return;
  yyGridWidgetRowCreateDestroy(grid, -1);
  g.nrowVis = visible;
  s.fullRows = full;
  s.forceRebuild = false;
  // The first row may have to come back so the rows below fill the view.
  s.firstRow = std::clamp(s.firstRow, 0, std::max(0, s.model.rows - std::max(1, full)));
  yyGridWidgetRowCreateDestroy(grid, 1);
}

void yyGridWidgetCreateViewportX(Widget grid) {
  st(grid).forceRebuild = true;
  yyGridWidgetMainPositionResize(grid);
  yyGridWidgetReCreateViewport(grid);
  yyGridWidgetScrollBarUpdate(grid);
}

void yyGridWidgetUpdateViewportData(Widget grid, bool quiet) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (s.redrawOff) return;
  (void)quiet;  // cell writes never report, quiet or not: the refreshing guard holds them
  s.refreshing = true;
  for (int r = 0; r < static_cast<int>(s.rowLabelWidgets.size()); ++r) set_row_label(grid, r);
  s.shownRowLabelsValid = true;
  for (int c = 0; c < static_cast<int>(s.views.size()); ++c)
    for (int r = 0; r < static_cast<int>(s.views[at(c)].cells.size()); ++r)
      if (s.views[at(c)].cells[at(r)].widget) show_cell(grid, c, r, s.firstRow + r);
  s.refreshing = false;
  const bool partShown = s.firstRow + g.nrowVis - 1 < s.model.rows && g.nrowVis > s.fullRows;
  if (s.partRow && g.nrowVis > s.fullRows) {
    if (partShown && !XtIsManaged(s.partRow)) XtManageChild(s.partRow);
    if (!partShown && XtIsManaged(s.partRow)) XtUnmanageChild(s.partRow);
  }
  if (!s.rowLabelWidgets.empty() && g.nrowVis > s.fullRows) {
    Widget last = s.rowLabelWidgets.back();
    if (partShown && !XtIsManaged(last)) XtManageChild(last);
    if (!partShown && XtIsManaged(last)) XtUnmanageChild(last);
  }
}

void yyGridWidgetScrollBarUpdate(Widget grid) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  const int view = view_width(grid);
  if (total_width(s) < view || s.model.columnCount() == 0) {
    s.lastLeft = 0;
    set_bar(s.scrollBarH, 0, 1, 0, 1, 1, 1);
  } else {
    int fit = 0;
    for (int c = s.model.columnCount() - 1, sum = 0; c >= 0; --c) {
      sum += s.model.columns[at(c)].width;
      if (sum > view) break;
      ++fit;
    }
    s.lastLeft = s.model.columnCount() - std::max(fit, 1);
    const int maximum = std::max(s.model.columnCount() - 1, 1);
    const int slider = std::min(std::max(fit - 1, 1), maximum);
    set_bar(s.scrollBarH, 0, maximum, std::min(s.firstColumn, maximum - slider), slider, 1, slider);
  }
  if (s.fullRows < s.model.rows) {
    int pageRows = s.fullRows;
    if (s.model.rows - pageRows < s.firstRow) pageRows = s.model.rows - s.firstRow;
    pageRows = std::max(pageRows, 1);
    set_bar(s.scrollBarV, 0, s.model.rows, std::min(s.firstRow, s.model.rows - pageRows), pageRows, 1, pageRows);
  } else {
    set_bar(s.scrollBarV, 0, 1, 0, 1, 1, 1);
  }
}

void yyGridWidgetScrollToCell(Widget grid, int column, int row) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (column >= 0 && column < s.model.columnCount()) {
    int first = s.firstColumn;
    if (column < s.firstColumn) first = column;
    else {
      const int view = view_width(grid) + 1;
      first = column;
      for (int start = s.firstColumn; start <= column; ++start) {
        int sum = 0;
        for (int c = start; c <= column; ++c) sum += s.model.columns[at(c)].width;
        if (sum <= view) {
          first = start;
          break;
        }
      }
    }
    first = std::min(first, s.lastLeft);
    if (first != s.firstColumn) scroll_columns(grid, first);
  }
  if (row >= 0 && row < s.model.rows) {
    const int full = std::max(1, s.fullRows);
    int first = s.firstRow;
    if (row < s.firstRow) first = row;
    else if (row >= s.firstRow + full) first = row - full + 1;
    if (first != s.firstRow) {
      s.firstRow = first;
      yyGridWidgetUpdateViewportData(grid, true);
    }
  }
  yyGridWidgetScrollBarUpdate(grid);
}

void yyGridWidgetScrollRowsX(Widget grid, int value) {
  GridState& s = st(grid);
  const int full = std::max(1, s.fullRows);
  value = std::clamp(value, 0, std::max(0, s.model.rows - full));
  scroll_rows(grid, value);
  yyGridWidgetScrollBarUpdate(grid);
}

Widget yyGridCellWidget(Widget grid, int column, int vrow) {
  GridState& s = st(grid);
  if (column < 0 || column >= static_cast<int>(s.views.size())) return nullptr;
  const auto& cells = s.views[at(column)].cells;
  if (vrow < 0 || vrow >= static_cast<int>(cells.size())) return nullptr;
  return value_widget(cells[at(vrow)]);
}

void yyGridWidgetSetCellFocusX(Widget grid, int column, int row, int cursor) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (column < 0 || row < 0) {
    if (s.model.inside(g.icol, g.irow)) {
      yyGridWidgetScrollToCell(grid, g.icol, g.irow);
      yyGridSelectCell(cell_widget_for(grid, g.icol, g.irow), cursor);
    }
    return;
  }
  if (!s.model.inside(column, row)) return;
  if (column != g.icol || row != g.irow) {
    const int oldCode = cell_code(g.icol, g.irow), newCode = cell_code(column, row);
    send_field_changed(grid, 0, oldCode, newCode);
    if (DialogRecord* d = dialog_of(grid)) d->lastCellCode = newCode;
    g.icol = column;
    g.irow = row;
    g.icolOld = column;
    g.irowOld = row;
  }
  s.anchorColumn = column;
  s.anchorRow = row;
  yyGridWidgetScrollToCell(grid, column, row);
  Widget w = cell_widget_for(grid, column, row);
  if (w) g.currentCellWidget = w;
  yyGridSelectCell(w, cursor);
}

bool yyGridWidgetMoveCurrentCellX(Widget grid, int direction) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  int c = g.icol, r = g.irow;
  const int lastC = s.model.columnCount() - 1, lastR = s.model.rows - 1;
  switch (direction) {
    case 1:
      if (c > 0) --c;
      else if (g.rowWrap && r > 0) { c = lastC; --r; }
      else return false;
      break;
    case 2:
      if (c < lastC) ++c;
      else if (g.rowWrap && r < lastR) { c = 0; ++r; }
      else return false;
      break;
    case 3:
      if (r <= 0) return false;
      --r;
      break;
    case 4:
      if (r >= lastR) return false;
      ++r;
      break;
    default: return false;
  }
  yyGridWidgetSetCellFocusX(grid, c, r, -1);
  return true;
}

// ---- Selection --------------------------------------------------------------------

void yyGridWidgetSelectX(Widget grid, bool on, int c1, int r1, int c2, int r2) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (on) {
    const int lastC = s.model.columnCount() - 1, lastR = s.model.rows - 1;
    if (lastC < 0 || lastR < 0) return;
    // No cell keeps the keyboard while cells are selected.
    if (s.selectAll && XtIsManaged(s.selectAll)) XmProcessTraversal(s.selectAll, XmTRAVERSE_CURRENT);
    s.selC1 = std::clamp(std::min(c1, c2), 0, lastC);
    s.selC2 = std::clamp(std::max(c1, c2), 0, lastC);
    s.selR1 = std::clamp(std::min(r1, r2), 0, lastR);
    s.selR2 = std::clamp(std::max(r1, r2), 0, lastR);
    s.selectionOn = true;
    send_field_changed(grid, 2, cell_code(s.selC1, s.selR1), cell_code(s.selC2, s.selR2));
  } else {
    if (!s.selectionOn) return;
    s.selectionOn = false;
    if (s.fieldStyle & field_style::kGridReportClipboard) send_field_changed(grid, 2, 0, 0);
  }
  yyGridWidgetUpdateViewportData(grid, true);
}

// ---- Storage through the widget ---------------------------------------------------

void yyGridWidgetSetNRowX(Widget grid, int rows) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  rows = std::clamp(rows, 0, g.maxNrow);
  if (s.selectionOn) s.selectionOn = false;
  yyGridModelResize(s.model, rows);
  g.nrow = rows;
  if (g.irow >= rows) g.irow = std::max(0, rows - 1);
  if (s.firstRow >= rows) s.firstRow = std::max(0, g.irow - g.nrowVis + 2);
  s.forceRebuild = true;
  yyGridWidgetReCreateViewport(grid);
  yyGridWidgetScrollBarUpdate(grid);
}

void yyGridWidgetSetSingleCellDataX(double number, Widget grid, int column, int row, std::string_view text,
                                    std::string_view format, bool) {
  GridState& s = st(grid);
  GridColumn& c = s.model.columns[at(column)];
  yyGridModelStore(c, row, text, number);
  if (grid_type::numeric(c.cellType) && c.cellType != grid_type::kInteger && !format.empty() &&
      format != c.effectiveFormat() && !(c.format.empty() && format == kGridDefaultFormat)) {
    c.format.assign(format);
    // Every shown value of the column takes the new format.
    yyGridWidgetUpdateViewportData(grid, true);
    return;
  }
  if (in_viewport(grid, row) && !s.redrawOff) {
    s.refreshing = true;
    show_cell(grid, column, row - s.firstRow, row);
    s.refreshing = false;
  }
}

void yyGridWidgetClearCellX(Widget grid, int column, int row) {
  GridState& s = st(grid);
  yyGridModelClear(s.model.columns[at(column)], row);
  if (in_viewport(grid, row) && !s.redrawOff) {
    s.refreshing = true;
    show_cell(grid, column, row - s.firstRow, row);
    s.refreshing = false;
  }
}

void yyGridWidgetSetRowLabelDataX(Widget grid, int row, std::string_view text) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (!g.rowLabel || row < 0 || row >= s.model.rows) return;
  s.model.rowLabels[at(row)].assign(text);
  s.model.rowLabelFlags[at(row)] = text.empty() ? 0 : 1;
  const int vr = row - s.firstRow;
  if (vr >= 0 && vr < static_cast<int>(s.rowLabelWidgets.size())) set_row_label(grid, vr);
}

void yyGridWidgetSetColumnLabelX(Widget grid, int column, std::string_view text) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  if (!g.colLabel) return;
  if (column == -1) {
    if (g.rowLabel && s.selectAll) yyDialogSetLabel(s.selectAll, text);
    return;
  }
  if (column < 0 || column >= s.model.columnCount()) return;
  s.model.columns[at(column)].label.assign(text);
  GridColumnWidgets& v = s.views[at(column)];
  if (!v.labelWidget) {
    v.labelWidget = label_button(s.colLabelBar, "GridColumnLabel", grid);
    XtManageChild(v.labelWidget);
    yyGridWidgetMainPositionResize(grid);
  }
  yyDialogSetLabel(v.labelWidget, text);
}

void yyGridWidgetSetCellStateX(Widget grid, int column, int row, int state) {
  GridState& s = st(grid);
  std::uint32_t& flag = s.model.columns[at(column)].cellFlags[at(row)];
  if (state == 1) flag &= ~grid_cell::kReadOnly;
  else flag |= grid_cell::kReadOnly;
  if (in_viewport(grid, row)) {
    s.refreshing = true;
    show_cell(grid, column, row - s.firstRow, row);
    s.refreshing = false;
  }
}

void yyGridColour(Widget grid, int state) {
  GridState& s = st(grid);
  s.colourState = state;
  for (std::size_t column = 0; column < s.views.size() && column < s.model.columns.size(); ++column) {
    if (!grid_type::textual(s.model.columns[column].cellType)) continue;
    for (std::size_t vrow = 0; vrow < s.views[column].cells.size(); ++vrow)
      set_colours(grid, static_cast<int>(column), static_cast<int>(vrow), s.firstRow + static_cast<int>(vrow));
  }
}

void yyGridWidgetColourCellX(Widget grid, int column, int row, int fg, int bg) {
  GridState& s = st(grid);
  auto split = [](int rgb, int* out) {
    if (rgb < 0 || rgb == 256) {  // -1 unset, 256 the scheme's again
      out[0] = rgb;
      return;
    }
    out[0] = rgb & 0xFF;
    out[1] = (rgb >> 8) & 0xFF;
    out[2] = (rgb >> 16) & 0xFF;
  };
  auto apply = [&](GridColour& col) {
    if (fg != -1) split(fg, &col[0]);
    if (bg != -1) split(bg, &col[3]);
  };
  if (column == -1 && row == -1) {
    if (!s.gridColour) s.gridColour = GridColour{256, 256, 256, 256, 256, 256};
    apply(*s.gridColour);
  } else if (row == -1) {
    GridColumn& c = s.model.columns[at(column)];
    if (!c.columnColour) c.columnColour = GridColour{256, 256, 256, 256, 256, 256};
    apply(*c.columnColour);
  } else {
    GridColumn& c = s.model.columns[at(column)];
    if (c.cellColours.empty()) c.cellColours.assign(c.cellFlags.size(), GridColour{256, 256, 256, 256, 256, 256});
    apply(c.cellColours[at(row)]);
    c.cellFlags[at(row)] |= grid_cell::kOwnColours;
  }
  yyGridWidgetUpdateViewportData(grid, true);
}

// ---- Creating the field ----------------------------------------------------------

namespace {

// The template dialog's fields as records with pixel geometry.
std::vector<FieldRecord> template_fields(int templateId, int& status) {
  std::vector<FieldRecord> out;
  RcDialog rc;
  yyrcdialogget(templateId, rc, status);
  if (status != 0) return out;
  const int dialogFont = zelvy_x::state().bXft ? rc.font_index : 0;
  for (const RcField& r : rc.fields) {
    FieldRecord f;
    f.identifier = r.id;
    f.type = r.type;
    f.style = r.style;
    f.extendedStyle = r.style2;
    f.extraFlags = r.extra;
    f.text = r.text;
    int font = dialogFont;
    if (zelvy_x::state().bXft) yyrcfieldfont(templateId, r.id, font);
    f.fontIndex = (font >= 0 && font < static_cast<int>(state().DlgFontInfo.size())) ? font : 0;
    const DialogFontMetrics& m = yyDialogFontMetrics(dialogFont);
    yyDialogUnitsToPixels(m, r.x, r.y, f.x, f.y);
    yyDialogUnitsToPixels(m, r.width, r.height, f.width, f.height);
    out.push_back(std::move(f));
  }
  return out;
}

}  // namespace

// A column takes its type, width, range, format and options from a template field.
void yyGridWidgetSetColumnDataX(Widget grid, int column, const FieldRecord& tf, int templateId) {
  GridState& s = st(grid);
  GridColumn& c = s.model.columns[at(column)];
  GridColumnWidgets& v = s.views[at(column)];
  v.templateField = tf;
  c.cellType = (tf.type >= kString && tf.type <= kDouble) || tf.type == kCheckbox || tf.type == kCombo ? tf.type : 0;
  c.width = std::max(1, tf.width);
  if (c.cellType == grid_type::kString) {
    int length = 0;
    yyrcfieldlength(templateId, tf.identifier, length);
    c.charLimit = length > 0 ? length : kGridDefaultCharLimit;
    c.caseMode = (tf.style & field_style::kUpperCase) ? 1 : (tf.style & field_style::kLowerCase) ? 2 : 0;
  } else if (grid_type::numeric(c.cellType)) {
    yyrcfieldrange(templateId, tf.identifier, c.minimum, c.maximum);
    if (c.cellType != grid_type::kInteger) {
      int length = 0;
      yyrcfieldformatcheck(templateId, tf.identifier, length);
      if (length > 0) {
        std::string fmt(static_cast<std::size_t>(length), ' ');
        yyrcfieldformatload(templateId, tf.identifier, fmt);
        while (!fmt.empty() && (fmt.back() == ' ' || fmt.back() == '\0')) fmt.pop_back();
        c.format = fmt;
      }
    }
  } else if (c.cellType == grid_type::kCombo) {
    int count = -1, bytes = 0;
    yyrcfieldmenucheck(templateId, tf.identifier, count, bytes);
    c.options.clear();
    if (count > 0) {
      std::vector<int> pos(at(count));
      std::vector<char> text(at(std::max(bytes, 1)));
      int selected = -1;
      yyrcfieldmenuload(templateId, tf.identifier, selected, pos, text);
      for (int p : pos) c.options.emplace_back(p >= 0 ? &text[at(p)] : "");
    }
  }
  s.model.columns[at(column)].cellFlags.assign(at(s.model.rows), 0);
  yyGridModelResize(s.model, s.model.rows);
  for (std::uint32_t& fl : c.cellFlags)
    if (tf.style & field_style::kReadOnly) fl |= grid_cell::kReadOnly;
  s.fontIndex = tf.fontIndex;
}

void yyDialogGrid(DialogRecord& d, FieldRecord& f) {
  f.capabilities = field_capability::kGrid;
  f.textKind = 0;
  const bool border = (f.style & (field_style::kBorder | field_style::kSunken)) || (f.extendedStyle & field_style2::kEdges);
  f.widget = XtVaCreateWidget("ZelvField", xmFrameWidgetClass, d.widget, XtNx, f.x, XtNy, f.y, XtNwidth,
                              std::max(1, f.width), XtNheight, std::max(1, f.height), XmNshadowThickness, border ? 1 : 0,
                              XmNshadowType, (f.style & field_style::kSunken) ? static_cast<int>(XmSHADOW_IN) : static_cast<int>(XmSHADOW_ETCHED_IN),
                              XmNmarginWidth, 0, XmNmarginHeight, 0, XtNbackground, scheme(kSchemeDialog), nullptr);
  if (border && zelvy_x::state().bFlatStyle)
    XtVaSetValues(f.widget, XmNtopShadowColor, scheme(9), XmNbottomShadowColor, scheme(9), nullptr);
  int columns = -1, rows = -1, tmpl = -1, labelWidth = -1, bytes = 0;
  yyrcfieldgridcheck(d.resourceId, f.identifier, columns, rows, tmpl, labelWidth, bytes);
  if (rows == -1) columns = rows = 0;
  int status = 1;
  std::vector<FieldRecord> templ = tmpl > 0 ? template_fields(tmpl, status) : std::vector<FieldRecord>{};
  if (status != 0) templ.clear();
  columns = std::clamp(columns, 0, static_cast<int>(templ.size()));
  const DialogFontMetrics& fm = yyDialogFontMetrics(d.fontIndex);
  int lw = 0, rh = 0;
  yyDialogUnitsToPixels(fm, std::max(0, labelWidth), kCellHeightUnits, lw, rh);
  const int rowWidth = static_cast<int>(lw * kRowLabelShrink);
  using namespace field_style;
  Arg a[20];
  Cardinal n = 0;
  auto add = [&](const char* name, XtArgVal v) {
    XtSetArg(a[n], const_cast<char*>(name), v);
    ++n;
  };
  add(grid_resource::kNcol, columns);
  add(grid_resource::kNrow, std::max(0, rows));
  add(grid_resource::kRowHeight, std::max(1, rh));
  add(grid_resource::kTemplateIdent, tmpl);
  add(grid_resource::kRowWidth, std::max(1, rowWidth));
  add(grid_resource::kScrollBarH, (f.style & kHorizontalScrollBar) != 0);
  add(grid_resource::kScrollBarV, (f.style & kVerticalScrollBar) != 0);
  add(grid_resource::kRowLabel, (f.style & kGridRowLabels) && labelWidth > 0);
  add(grid_resource::kColLabel, (f.style & kGridColumnLabels) != 0);
  add(grid_resource::kRowWrap, (f.style & kGridRowWrap) != 0);
  add(grid_resource::kWantReturn, (f.style & kGridWantsReturn) != 0);
  add(grid_resource::kWantTab, (f.style & kGridWantsTab) != 0);
  add(grid_resource::kReadOnly, (f.style & kGridReadOnly) != 0);
  add(grid_resource::kReadOnlyColour, (f.style & kGridReadOnlyColour) != 0);
  add(XtNbackground, static_cast<XtArgVal>(scheme(kSchemeDialog)));
  add(XmNmarginWidth, 0);
  add(XmNmarginHeight, 0);
  Widget grid = XtCreateManagedWidget("Grid", gridWidgetClass, f.widget, a, n);
  if (f.style & kGridReportClipboard) XtAddCallback(grid, grid_resource::kReportClipCallback, yyGridReportClipCB, nullptr);
  f.valueWidget = grid;
  GridState& s = st(grid);
  // A grid window builds its grid from a record of its own, outside the dialog table.
  s.dialogIndex = -1;
  for (int i = 0; i < zelvy_dialog::kDialogs; ++i)
    if (&state().wDialogInfo[at(i)] == &d) s.dialogIndex = i;
  s.fieldId = f.identifier;
  s.fieldStyle = f.style;
  s.fieldExtra = f.extraFlags;
  s.fontIndex = f.fontIndex;
  for (int c = 0; c < columns; ++c) {
    yyGridWidgetSetColumnDataX(grid, c, templ[at(c)], tmpl);
    yyGridWidgetSetColumnLabelX(grid, c, templ[at(c)].text);
  }
  // Row labels from the resource.
  if (bytes > 0 && rows > 0 && !(f.style & kLabelNoMnemonic)) {
    std::vector<int> pos(at(rows));
    std::vector<char> labels(at(std::max(bytes, 1)));
    yyrcfieldgridload(d.resourceId, f.identifier, pos, labels);
    for (int r = 0; r < rows; ++r)
      if (pos[at(r)] >= 0) yyGridWidgetSetRowLabelDataX(grid, r, &labels[at(pos[at(r)])]);
  }
  yyGridWidgetCreateViewportX(grid);
  for (Widget shell = grid; shell; shell = XtParent(shell))
    if (XtIsVendorShell(shell)) {
      s.focusShell = shell;
      XmeAddFocusChangeCallback(shell, focus_moved_cb, grid);
      break;
    }
}

void yyGridWidgetSetNumberX(Widget grid, int column, int row, double number, std::string_view format) {
  GridState& s = st(grid);
  GridColumn& c = s.model.columns[at(column)];
  yyGridModelStoreNumber(c, row, number);
  s.model.modified = s.model.changed = true;
  if ((c.cellType == grid_type::kReal || c.cellType == grid_type::kDouble) && !format.empty() &&
      format != c.effectiveFormat()) {
    c.format.assign(format);
    yyGridWidgetUpdateViewportData(grid, true);
    return;
  }
  if (in_viewport(grid, row) && !s.redrawOff) {
    s.refreshing = true;
    show_cell(grid, column, row - s.firstRow, row);
    s.refreshing = false;
  }
}

bool yyGridWidgetSetColumnsX(Widget grid, int count, const std::vector<int>& templateFields,
                             const std::vector<int>& widths) {
  GridPart& g = part(grid);
  GridState& s = *g.st;
  yyGridWidgetRowCreateDestroy(grid, -1);
  for (GridColumnWidgets& v : s.views)
    if (v.labelWidget) XtDestroyWidget(v.labelWidget);
  const int rows = s.model.rows;
  std::vector<std::string> labels = s.model.rowLabels;
  s.model.columns.clear();
  s.views.clear();
  s.selectionOn = false;
  s.firstColumn = 0;
  g.icol = 0;
  int status = 0;
  std::vector<FieldRecord> templ = count > 0 ? template_fields(g.templateIdent, status) : std::vector<FieldRecord>{};
  if (count > 0 && status != 0) {
    g.ncol = 0;
    yyGridWidgetCreateViewportX(grid);
    return false;
  }
  s.model.columns.assign(at(count), GridColumn{});
  s.views.assign(at(count), GridColumnWidgets{});
  g.ncol = count;
  yyGridModelResize(s.model, rows);
  const DialogFontMetrics& fm = yyDialogFontMetrics(0);
  for (int c = 0; c < count; ++c) {
    const int k = c < static_cast<int>(templateFields.size()) ? templateFields[at(c)] - 1 : c;
    if (k < 0 || k >= static_cast<int>(templ.size())) continue;
    FieldRecord tf = templ[at(k)];
    if (!widths.empty() && widths[0] != -1 && c < static_cast<int>(widths.size())) {
      int px = 0, unused = 0;
      yyDialogUnitsToPixels(fm, widths[at(c)], 0, px, unused);
      tf.width = px;
    }
    yyGridWidgetSetColumnDataX(grid, c, tf, g.templateIdent);
    yyGridWidgetSetColumnLabelX(grid, c, tf.text);
  }
  for (int r = 0; r < rows && r < static_cast<int>(labels.size()); ++r) yyGridWidgetSetRowLabelDataX(grid, r, labels[at(r)]);
  yyGridWidgetCreateViewportX(grid);
  return true;
}

Widget yyGridGetEditCell(Widget grid) {
  GridPart& g = part(grid);
  Widget w = cell_widget_for(grid, g.icol, g.irow);
  return w && XmIsText(w) ? w : nullptr;
}

void yyGridWidgetGetSingleCellDataX(Widget grid, int column, int row, bool wantNumber, std::string& text,
                                    double& number, bool& defined) {
  const GridColumn& c = st(grid).model.columns[at(column)];
  text = yyGridModelText(c, row);
  number = 0.0;
  defined = (c.cellFlags[at(row)] & grid_cell::kHasValue) != 0;
  if (wantNumber || c.cellType != grid_type::kString) yyGridModelNumber(c, row, number, defined);
}
