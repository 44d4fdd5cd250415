// Tab fields: a strip of tabs (or buttons) the field draws itself, in one or
// more rows, over a stack of pages. Each page is a dialog of its own, loaded
// as a tab page (kind 1) inside the field; the one in view is the field's
// value. The strip's geometry lives beside the field, keyed by its widget.
#include <X11/IntrinsicP.h>
#include <X11/keysym.h>
#include <Xm/ArrowB.h>
#include <Xm/DrawingA.h>
#include <Xm/PushB.h>
#include <Xm/Xm.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/dialog/small_widgets_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"

using namespace zelvy_dialog;

namespace {

constexpr int kTabRowExtra = 2 + 7;      // a row of tabs: the font's height and this
constexpr int kButtonRowExtra = 2 + 15;  // a row of buttons
constexpr int kTabMargin = 12, kButtonMargin = 30;
constexpr int kFixedUnits = 63, kMinimumUnits = 29;
constexpr int kButtonGap = 2;
constexpr int kLabelInset = 3;  // room for the outline around a tab's label
constexpr int kKeyboardContext = 0x40;  // a context click raised from the keyboard

struct TabGeometry {
  int x = 0, width = 0, row = 0;
  int textWidth = 0;  // the label's natural width in its own font
  Widget tabArea = nullptr, labelWidget = nullptr;
};

struct TabStrip {
  bool buttons = false, multiLine = false;
  int alignment = 0, focusBehavior = 0;
  int rowHeight = 1, fixedWidth = 1, minimumWidth = 1;
  int rowCount = 1, labelBarHeight = 1, scrollOffset = 0;
  std::vector<int> rowOrder{0};
  std::vector<TabGeometry> geometry;  // beside the field's TabRecords
  Widget border = nullptr, tabContainer = nullptr, buttonContainer = nullptr;
  Widget leftArrow = nullptr, rightArrow = nullptr;
  GC gcLight = nullptr, gcDark = nullptr, gcAccent = nullptr;
  bool pagesRaised = false;  // the page windows lie above the border
};

std::map<Widget, TabStrip>& strips() {
  static std::map<Widget, TabStrip> data;
  return data;
}

TabStrip* strip_of(const FieldRecord& tab) {
  auto it = strips().find(tab.widget);
  return it == strips().end() ? nullptr : &it->second;
}

int index_of(const FieldRecord& tab, int pageId) {
  for (std::size_t i = 0; i < tab.tabs.size(); ++i)
    if (tab.tabs[i].pageId == pageId) return static_cast<int>(i);
  return -1;
}

TabRecord* find_page(FieldRecord& tab, int pageId) {
  const int i = index_of(tab, pageId);
  return i < 0 ? nullptr : &tab.tabs[static_cast<std::size_t>(i)];
}

int usable_width(const FieldRecord& tab) {
  Dimension w = 1;
  XtVaGetValues(tab.widget, XtNwidth, &w, nullptr);
  return std::max(1, static_cast<int>(w) - 2);
}

int core_height(const FieldRecord& tab) {
  Dimension h = 1;
  XtVaGetValues(tab.widget, XtNheight, &h, nullptr);
  return h;
}

GC scheme_gc(Widget w, int colour) {
  XGCValues v;
  v.foreground = yyDialogScheme(colour);
  v.background = yyDialogScheme(3);
  return XtGetGC(w, GCForeground | GCBackground, &v);
}

void configure(Widget w, int x, int y, int width, int height) {
  XtConfigureWidget(w, static_cast<Position>(x), static_cast<Position>(y), static_cast<Dimension>(std::max(1, width)),
                    static_cast<Dimension>(std::max(1, height)), 0);
}

// Rows by order: the front row (order 0) lies next to the pages.
int row_y(const TabStrip& s, int row) {
  const int order = row < static_cast<int>(s.rowOrder.size()) ? s.rowOrder[static_cast<std::size_t>(row)] : 0;
  return (s.rowCount - order - 1) * s.rowHeight;
}

void place_tab(const FieldRecord& tab, TabStrip& s, std::size_t i) {
  TabGeometry& g = s.geometry[i];
  if (!g.tabArea) return;
  const bool selected = tab.tabs[i].pageId == tab.selectedPage;
  const int y = row_y(s, g.row);
  if (selected) configure(g.tabArea, g.x, y, g.width, s.rowHeight + 2);
  else configure(g.tabArea, g.x + 1, y + 2, g.width - 2, s.rowHeight - 3);
  // The label fills the tab inside its outline, its text centred.
  const int width = selected ? g.width : g.width - 2;
  configure(g.labelWidget, kLabelInset, kLabelInset, width - 2 * kLabelInset, s.rowHeight - 2 - 2 * kLabelInset);
  if (selected && XtIsRealized(g.tabArea)) XRaiseWindow(XtDisplay(g.tabArea), XtWindow(g.tabArea));
  if (XtIsRealized(g.tabArea)) XClearArea(XtDisplay(g.tabArea), XtWindow(g.tabArea), 0, 0, 0, 0, True);
}

void place_pages(FieldRecord& tab, const TabStrip& s) {
  const int h = core_height(tab) - s.labelBarHeight - 3;
  for (TabRecord& r : tab.tabs)
    if (r.page) configure(r.page, 1, s.labelBarHeight + 1, usable_width(tab), h);
}

void yyTabWidgetVisibleComponents(FieldRecord& tab, TabStrip& s) {
  int right = 0;
  for (const TabGeometry& g : s.geometry) right = std::max(right, g.x + g.width);
  Dimension w = 1;
  XtVaGetValues(tab.widget, XtNwidth, &w, nullptr);
  const bool arrows = !s.multiLine && right > static_cast<int>(w) - 2;
  const int side = std::max(1, s.labelBarHeight - 2 - (s.buttons ? 0 : 1));
  const int left = usable_width(tab) - 2 * side + 2, y = s.buttons ? 1 : 2;
  configure(s.leftArrow, left, y, side, side);
  configure(s.rightArrow, left + side, y, side, side);
  for (Widget a : {s.leftArrow, s.rightArrow}) {
    if (arrows) XtManageChild(a);
    else XtUnmanageChild(a);
    if (arrows && XtIsRealized(a)) XRaiseWindow(XtDisplay(a), XtWindow(a));
  }
  if (s.buttons) {
    XtManageChild(s.buttonContainer);
    XtUnmanageChild(s.tabContainer);
  } else {
    XtManageChild(s.tabContainer);
    XtUnmanageChild(s.buttonContainer);
  }
}

// Lays out the strip from the labels, then places rows, tabs and pages.
void yyTabWidgetChildPositionResize(FieldRecord& tab) {
  TabStrip* sp = strip_of(tab);
  if (!sp) return;
  TabStrip& s = *sp;
  std::vector<TabPlace> places;
  for (std::size_t i = 0; i < tab.tabs.size(); ++i)
    places.push_back({0, yyTabWidgetSize(s.geometry[i].textWidth, s.alignment, s.buttons, s.fixedWidth, s.minimumWidth), 0});
  const int rows = yyTabWidgetLayout(places, usable_width(tab), s.multiLine, s.alignment, s.buttons);
  if (rows != s.rowCount) {
    s.rowCount = rows;
    s.rowOrder.resize(static_cast<std::size_t>(rows));
    for (int r = 0; r < rows; ++r) s.rowOrder[static_cast<std::size_t>(r)] = r;
  }
  for (std::size_t i = 0; i < places.size(); ++i) {
    s.geometry[i].x = places[i].x;
    s.geometry[i].width = places[i].width;
    s.geometry[i].row = places[i].row;
  }
  // The selected tab's row stays in front.
  if (const int sel = index_of(tab, tab.selectedPage); sel >= 0) {
    const int row = s.geometry[static_cast<std::size_t>(sel)].row;
    const int order = s.rowOrder[static_cast<std::size_t>(row)];
    for (int& o : s.rowOrder)
      if (o < order) ++o;
    s.rowOrder[static_cast<std::size_t>(row)] = 0;
  }
  s.labelBarHeight = std::max(1, s.rowHeight * s.rowCount);
  place_pages(tab, s);
  const int usable = usable_width(tab);
  configure(s.border, 0, s.labelBarHeight, usable + 2, core_height(tab) - s.labelBarHeight - 1);
  s.scrollOffset = 0;
  int rightmost = 1;
  for (const TabGeometry& g : s.geometry) rightmost = std::max(rightmost, g.x + g.width + 2);
  Dimension w = 1;
  XtVaGetValues(tab.widget, XtNwidth, &w, nullptr);
  configure(s.tabContainer, 0, 0, w + rightmost, s.labelBarHeight + 2);
  configure(s.buttonContainer, 0, 0, rightmost, s.labelBarHeight);
  for (std::size_t i = 0; i < s.geometry.size(); ++i) {
    place_tab(tab, s, i);
    if (Widget b = tab.tabs[i].button)
      configure(b, s.geometry[i].x, s.geometry[i].row * s.rowHeight, s.geometry[i].width, s.rowHeight - 2);
  }
  yyTabWidgetVisibleComponents(tab, s);
}

FieldRecord* field_of(Widget w, DialogRecord*& d) {
  FieldRecord* f = nullptr;
  d = yyDialogFieldInfo(w, f);
  return d && f && f->type == kTab ? f : nullptr;
}

// The tab field a strip widget belongs to (its userData is the field's widget).
FieldRecord* owner_of(Widget w, DialogRecord*& d, int& index) {
  XtPointer ud = nullptr;
  XtVaGetValues(w, XmNuserData, &ud, nullptr);
  d = nullptr;
  index = -1;
  if (!ud) return nullptr;
  FieldRecord* f = field_of(static_cast<Widget>(ud), d);
  TabStrip* s = f ? strip_of(*f) : nullptr;
  if (!s) return nullptr;
  for (std::size_t i = 0; i < f->tabs.size(); ++i)
    if (f->tabs[i].button == w || s->geometry[i].tabArea == w || s->geometry[i].labelWidget == w)
      index = static_cast<int>(i);
  return f;
}

void yyTabWidgetDrawCB(Widget w, XtPointer data, XtPointer) {
  auto* owner = static_cast<Widget>(data);
  auto it = strips().find(owner);
  if (it == strips().end() || !XtIsRealized(w)) return;
  TabStrip& s = it->second;
  Display* dpy = XtDisplay(w);
  Window win = XtWindow(w);
  Dimension wd = 1, ht = 1;
  XtVaGetValues(w, XtNwidth, &wd, XtNheight, &ht, nullptr);
  const int width = wd, height = ht;
  if (w == s.border) {
    // Pages loaded before the field was realized may lie under the border.
    if (!s.pagesRaised) {
      FieldRecord* f = nullptr;
      if (yyDialogFieldInfo(owner, f) && f) yyTabWidgetRealize(*f);
      s.pagesRaised = true;
    }
    if (s.buttons) return;
    XDrawLine(dpy, win, s.gcLight, 0, 0, 0, height - 1);
    XDrawLine(dpy, win, s.gcDark, width - 1, 1, width - 1, height - 1);
    XDrawLine(dpy, win, s.gcDark, 1, height - 1, width - 1, height - 1);
    return;
  }
  if (w == s.tabContainer) {
    XDrawLine(dpy, win, s.gcLight, 0, s.labelBarHeight - 1, width - 1, s.labelBarHeight - 1);
    return;
  }
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(owner, f);
  if (!d || !f) return;
  for (std::size_t i = 0; i < s.geometry.size(); ++i) {
    if (s.geometry[i].tabArea != w) continue;
    const bool selected = f->tabs[i].pageId == f->selectedPage;
    const int h = s.rowHeight - 2, tw = selected ? s.geometry[i].width : s.geometry[i].width - 2;
    XPoint light[] = {{0, static_cast<short>(h + 1)}, {0, 2}, {2, 0}, {static_cast<short>(tw - 3), 0}};
    XDrawLines(dpy, win, s.gcLight, light, 4, CoordModeOrigin);
    if (selected) {
      XDrawLine(dpy, win, s.gcAccent, 3, 0, tw - 4, 0);
      XDrawLine(dpy, win, s.gcAccent, 2, 1, tw - 3, 1);
    }
    XPoint dark[] = {{static_cast<short>(tw - 1), static_cast<short>(h + 1)}, {static_cast<short>(tw - 1), 2},
                     {static_cast<short>(tw - 2), 1}};
    XDrawLines(dpy, win, s.gcDark, dark, 3, CoordModeOrigin);
  }
}

void focus_page(FieldRecord& tab, TabStrip& s, int index) {
  if (s.focusBehavior == 1) {
    Widget target = s.buttons ? tab.tabs[static_cast<std::size_t>(index)].button
                              : s.geometry[static_cast<std::size_t>(index)].labelWidget;
    if (target) XmProcessTraversal(target, XmTRAVERSE_CURRENT);
    return;
  }
  const int page = yyDialogFind(tab.selectedPage);
  if (page >= 0) yyDialogFocusFirst(zelvy_dialog::state().wDialogInfo[static_cast<std::size_t>(page)]);
}

// The next enabled tab from `index` in a direction; -1 when there is none.
int next_enabled(const FieldRecord& tab, int index, int direction, bool wrap) {
  const int n = static_cast<int>(tab.tabs.size());
  for (int step = 1; step < n || (step == n && !wrap); ++step) {
    int k = index + direction * step;
    if (wrap) k = ((k % n) + n) % n;
    if (k < 0 || k >= n) return -1;
    if (tab.tabs[static_cast<std::size_t>(k)].state) return k;
  }
  return -1;
}

void context_click(DialogRecord& d, FieldRecord& tab, int index, XEvent* ev, bool keyboard) {
  int x = 0, y = 0, modifiers = 0;
  Time time = 0;
  if (!keyboard && ev && (ev->type == ButtonPress || ev->type == ButtonRelease)) {
    x = ev->xbutton.x_root;
    y = ev->xbutton.y_root;
    time = ev->xbutton.time;
    modifiers = static_cast<int>(ev->xbutton.state & (ShiftMask | ControlMask | Mod1Mask));
  } else {
    Position rx = 0, ry = 0;
    Dimension w = 0, h = 0;
    XtVaGetValues(tab.widget, XtNwidth, &w, XtNheight, &h, nullptr);
    if (XtIsRealized(tab.widget)) XtTranslateCoords(tab.widget, static_cast<Position>(w / 2), static_cast<Position>(h / 2), &rx, &ry);
    x = rx;
    y = ry;
    if (ev && ev->type == KeyPress) time = ev->xkey.time;
    modifiers = kKeyboardContext;
  }
  yyMsgSend(ContextClick, tab.tabs[static_cast<std::size_t>(index)].pageId, modifiers, kTab, tab.identifier, x, y,
            d.identifier, static_cast<int>(time));
}

XtActionsRec actions[] = {{const_cast<char*>("yyTabWidgetButtonAT"), yyTabWidgetButtonAT}};

XtTranslations translations(bool button) {
  static XtTranslations forButton = nullptr, forLabel = nullptr;
  XtTranslations& t = button ? forButton : forLabel;
  if (!t) {
    XtAppAddActions(zelvy_x::state().ixContext, actions, XtNumber(actions));
    std::string table =
        "<Btn1Down>: yyTabWidgetButtonAT(d)\n<Btn1Up>: yyTabWidgetButtonAT(n)\n<Btn3Up>: yyTabWidgetButtonAT(m,m)\n"
        "<Key>osfMenu: yyTabWidgetButtonAT(m,k)\n<Key>space: yyTabWidgetButtonAT(d)\n"
        "<Key>osfSelect: yyTabWidgetButtonAT(d)\n";
    table += button ? "<Key>osfLeft: yyTabWidgetButtonAT(C,l)\n<Key>osfRight: yyTabWidgetButtonAT(C,r)\n"
                    : "<Key>osfLeft: yyTabWidgetButtonAT(c,l)\n<Key>osfRight: yyTabWidgetButtonAT(c,r)\n";
    table +=
        "Ctrl Shift<Key>Tab: yyTabWidgetButtonAT(p,b)\nCtrl<Key>Tab: yyTabWidgetButtonAT(p,f)\n"
        "Shift<Key>Tab: yyTabWidgetButtonAT(t,b)\n<Key>Tab: yyTabWidgetButtonAT(t,f)\n"
        "<LeaveWindow>: yyTabWidgetButtonAT(n)\n<EnterWindow>: yyTabWidgetButtonAT(n)";
    t = XtParseTranslationTable(table.c_str());
  }
  return t;
}

// Ctrl+Tab and Ctrl+Shift+Tab anywhere on a page turn the pages, wrapping.
void page_key_eh(Widget, XtPointer data, XEvent* ev, Boolean* cont) {
  if (ev->type != KeyPress || !(ev->xkey.state & ControlMask)) return;
  const KeySym k = XLookupKeysym(&ev->xkey, 0);
  if (k != XK_Tab && k != XK_ISO_Left_Tab && k != XK_KP_Tab) return;
  DialogRecord* d = nullptr;
  FieldRecord* f = field_of(static_cast<Widget>(data), d);
  if (!f) return;
  const bool back = (ev->xkey.state & ShiftMask) || k == XK_ISO_Left_Tab;
  const int next = next_enabled(*f, index_of(*f, f->selectedPage), back ? -1 : 1, true);
  if (next >= 0) {
    yyTabWidgetSelect(*f, f->tabs[static_cast<std::size_t>(next)].pageId);
    if (TabStrip* s = strip_of(*f)) focus_page(*f, *s, next);
  }
  *cont = False;
}

void watch_page_keys(Widget tabWidget, Widget w) {
  if (!w) return;
  XtInsertEventHandler(w, KeyPressMask, False, page_key_eh, tabWidget, XtListHead);
  if (XtIsComposite(w)) {
    WidgetList kids = nullptr;
    Cardinal n = 0;
    XtVaGetValues(w, XtNchildren, &kids, XtNnumChildren, &n, nullptr);
    for (Cardinal i = 0; i < n; ++i) watch_page_keys(tabWidget, kids[i]);
  }
}

void yyTabWidgetButtonCB(Widget w, XtPointer, XtPointer) {
  XtPointer ud = nullptr;
  XtVaGetValues(w, XmNuserData, &ud, nullptr);
  DialogRecord* d = nullptr;
  if (FieldRecord* f = field_of(static_cast<Widget>(ud), d))
    if (TabStrip* s = strip_of(*f)) yyTabWidgetMove(*f, w == s->rightArrow ? 1 : -1);
}

void forget_strip_cb(Widget w, XtPointer, XtPointer) {
  auto it = strips().find(w);
  if (it == strips().end()) return;
  for (GC gc : {it->second.gcLight, it->second.gcDark, it->second.gcAccent})
    if (gc) XtReleaseGC(w, gc);
  strips().erase(it);
}

}  // namespace

// ---- Pure layout ---------------------------------------------------------------

int yyTabWidgetSize(int textWidth, int alignment, bool buttons, int fixedWidth, int minimumWidth) {
  if (alignment == 1) return fixedWidth;
  return std::max(minimumWidth, textWidth + (buttons ? kButtonMargin : kTabMargin));
}

void yyTabWidgetJustify(std::vector<TabPlace>& tabs, std::size_t first, std::size_t last, int usableWidth) {
  if (first > last || last >= tabs.size()) return;
  const int count = static_cast<int>(last - first + 1);
  const int extra = usableWidth - (tabs[last].x + tabs[last].width);
  const int per = extra / count;
  if (per > 0)
    for (std::size_t i = first; i <= last; ++i) {
      tabs[i].width += per;
      tabs[i].x += per * static_cast<int>(i - first);
    }
  int rest = extra - std::max(0, per) * count;
  for (std::size_t i = first; rest > 0 && i <= last; ++i, --rest) {
    tabs[i].width += 1;
    for (std::size_t k = i + 1; k <= last; ++k) tabs[k].x += 1;
  }
}

int yyTabWidgetLayout(std::vector<TabPlace>& tabs, int usableWidth, bool multiLine, int alignment, bool buttons) {
  const int gap = buttons ? kButtonGap : 0;
  int x = 0, row = 0;
  bool firstInRow = true;
  for (TabPlace& t : tabs) {
    if (multiLine && !firstInRow && x + t.width > usableWidth) {
      ++row;
      x = 0;
    }
    t.x = x;
    t.row = row;
    x += t.width + gap;
    firstInRow = false;
  }
  const int rows = tabs.empty() ? 1 : row + 1;
  if (multiLine && alignment == 0 && rows > 1)
    for (int r = 0; r < rows; ++r) {
      std::size_t first = tabs.size(), last = 0;
      for (std::size_t i = 0; i < tabs.size(); ++i)
        if (tabs[i].row == r) {
          first = std::min(first, i);
          last = i;
        }
      if (first < tabs.size()) yyTabWidgetJustify(tabs, first, last, usableWidth);
    }
  return rows;
}

// ---- The strip ---------------------------------------------------------------

void yyTabWidgetInitialize(DialogRecord& d, FieldRecord& f) {
  f.capabilities = field_capability::kTab;
  f.widget = XtVaCreateWidget("ZelvField", xmDrawingAreaWidgetClass, d.widget, XtNx, f.x, XtNy, f.y, XtNwidth,
                              std::max(1, f.width), XtNheight, std::max(1, f.height), XmNmarginWidth, 0,
                              XmNmarginHeight, 0, XmNresizePolicy, XmRESIZE_NONE, XtNbackground, yyDialogScheme(3),
                              XmNshadowThickness, 0, nullptr);
  f.valueWidget = f.widget;
  TabStrip& s = strips()[f.widget];
  XtAddCallback(f.widget, XmNdestroyCallback, forget_strip_cb, nullptr);
  s.buttons = f.style & field_style::kTabButtons;
  s.multiLine = f.style & field_style::kTabMultiLine;
  s.alignment = (f.style & field_style::kTabAlignment1) ? 1 : (f.style & field_style::kTabAlignment2) ? 2 : 0;
  s.focusBehavior = (f.style & field_style::kTabFocus1) ? 1 : (f.style & field_style::kTabFocus2) ? 2 : 0;
  const DialogFontMetrics& fm = yyDialogFontMetrics(f.fontIndex);
  s.rowHeight = fm.charHeight + (s.buttons ? kButtonRowExtra : kTabRowExtra);
  int unused = 0;
  yyDialogUnitsToPixels(fm, kFixedUnits, 0, s.fixedWidth, unused);
  yyDialogUnitsToPixels(fm, kMinimumUnits, 0, s.minimumWidth, unused);
  s.labelBarHeight = s.rowHeight;
  s.gcLight = scheme_gc(f.widget, 2);
  s.gcDark = scheme_gc(f.widget, 4);
  s.gcAccent = scheme_gc(f.widget, 16);
  // The border first, so that the pages loaded later lie above it.
  auto area = [&](const char* name) {
    return XtVaCreateManagedWidget(name, xmDrawingAreaWidgetClass, f.widget, XmNmarginWidth, 0, XmNmarginHeight, 0,
                                   XmNresizePolicy, XmRESIZE_NONE, XtNbackground, yyDialogScheme(3), XtNwidth, 1,
                                   XtNheight, 1, nullptr);
  };
  s.border = area("TabBorder");
  XtVaSetValues(s.border, XmNtraversalOn, False, nullptr);
  XtAddCallback(s.border, XmNexposeCallback, yyTabWidgetDrawCB, f.widget);
  XtAddCallback(s.border, XmNresizeCallback, yyTabWidgetDrawCB, f.widget);
  s.tabContainer = area("TabTabContainer");
  XtAddCallback(s.tabContainer, XmNexposeCallback, yyTabWidgetDrawCB, f.widget);
  s.buttonContainer = area("TabButContainer");
  for (Widget* a : {&s.leftArrow, &s.rightArrow}) {
    *a = XtVaCreateWidget(a == &s.leftArrow ? "TabLArrow" : "TabRArrow", xmArrowButtonWidgetClass, f.widget,
                          XmNarrowDirection, a == &s.leftArrow ? XmARROW_LEFT : XmARROW_RIGHT, XtNforeground,
                          yyDialogScheme(16), XtNbackground, yyDialogScheme(3), XmNshadowThickness, 0,
                          XmNdetailShadowThickness, 1, XmNuserData, f.widget, XmNtraversalOn, False, nullptr);
    XtAddCallback(*a, XmNactivateCallback, yyTabWidgetButtonCB, nullptr);
  }
  yyTabWidgetChildPositionResize(f);
}

void yyTabWidgetAddDataX(FieldRecord& tab, Widget page, int pageId, std::string_view label) {
  TabStrip* s = strip_of(tab);
  if (!s) return;
  TabRecord r;
  r.page = page;
  r.pageId = pageId;
  r.label.assign(label.empty() ? std::string_view(" ") : label);
  r.button = XtVaCreateManagedWidget("TabButton", xmPushButtonWidgetClass, s->buttonContainer, XmNrecomputeSize, False,
                                     XmNalignment, XmALIGNMENT_CENTER, XmNuserData, tab.widget, nullptr);
  if (zelvy_x::state().bFlatStyle) XtVaSetValues(r.button, XmNshadowThickness, 0, XtNborderWidth, 1, nullptr);
  yyDialogSetLabel(r.button, r.label);
  XtOverrideTranslations(r.button, translations(true));
  TabGeometry g;
  g.tabArea = XtVaCreateManagedWidget("TabTab", xmDrawingAreaWidgetClass, s->tabContainer, XmNuserData, tab.widget,
                                      XmNmarginWidth, 0, XmNmarginHeight, 0, XmNresizePolicy, XmRESIZE_NONE,
                                      XtNbackground, yyDialogScheme(3), XtNwidth, 1, XtNheight, 1, nullptr);
  XtAddCallback(g.tabArea, XmNexposeCallback, yyTabWidgetDrawCB, tab.widget);
  XtOverrideTranslations(g.tabArea, XtParseTranslationTable("<Btn1Down>: yyTabWidgetButtonAT(d)"));
  Arg a[16];
  Cardinal n = 0;
  XtSetArg(a[n], XmNuserData, tab.widget); ++n;
  XtSetArg(a[n], XmNmarginWidth, 0); ++n;
  XtSetArg(a[n], XmNmarginHeight, 0); ++n;
  XtSetArg(a[n], XmNmarginLeft, 0); ++n;
  XtSetArg(a[n], XmNmarginRight, 0); ++n;
  XtSetArg(a[n], XmNmarginTop, 0); ++n;
  XtSetArg(a[n], XmNmarginBottom, 0); ++n;
  XtSetArg(a[n], XmNhighlightThickness, 1); ++n;
  XtSetArg(a[n], XmNshadowThickness, 0); ++n;
  XtSetArg(a[n], XtNborderWidth, 0); ++n;
  XtSetArg(a[n], XtNbackground, yyDialogScheme(3)); ++n;
  yyDialogFont(a, n, tab.fontIndex);
  g.labelWidget = XtCreateManagedWidget("TabTabLabel", xmPushButtonWidgetClass, g.tabArea, a, n);
  yyDialogSetLabel(g.labelWidget, r.label);
  XtWidgetGeometry natural{};
  XtQueryGeometry(g.labelWidget, nullptr, &natural);
  g.textWidth = natural.width;
  XtVaSetValues(g.labelWidget, XmNrecomputeSize, False, XmNalignment, XmALIGNMENT_CENTER, nullptr);
  XtOverrideTranslations(g.labelWidget, translations(false));
  XtAddEventHandler(g.labelWidget, FocusChangeMask, False, yyDialogFieldChangedFocusEH, nullptr);
  if (page) {
    watch_page_keys(tab.widget, page);
    XtUnmanageChild(page);
  }
  tab.tabs.push_back(r);
  s->geometry.push_back(g);
  yyTabWidgetChildPositionResize(tab);
  if (tab.selectedPage == -1) yyTabWidgetSelectX(tab, pageId);
}

bool yyTabWidgetSelectX(FieldRecord& tab, int pageId) {
  TabRecord* next = find_page(tab, pageId);
  if (!next || next->state == 0 || pageId == tab.selectedPage) return false;
  TabStrip* s = strip_of(tab);
  const int oldIndex = index_of(tab, tab.selectedPage), newIndex = index_of(tab, pageId);
  if (oldIndex >= 0)
    if (Widget old = tab.tabs[static_cast<std::size_t>(oldIndex)].page) XtUnmanageChild(old);
  if (next->page && (tab.style & field_style::kVisible)) XtManageChild(next->page);
  tab.selectedPage = pageId;
  if (!s) return true;
  // The new tab's row comes to the front; those before it go one back.
  const int row = s->geometry[static_cast<std::size_t>(newIndex)].row;
  const int order = s->rowOrder[static_cast<std::size_t>(row)];
  if (order > 0) {
    for (int& o : s->rowOrder)
      if (o < order) ++o;
    s->rowOrder[static_cast<std::size_t>(row)] = 0;
  }
  for (std::size_t i = 0; i < s->geometry.size(); ++i) place_tab(tab, *s, i);
  if (s->buttons) {
    XEvent ev{};
    ev.type = KeyPress;
    if (oldIndex >= 0 && tab.tabs[static_cast<std::size_t>(oldIndex)].button && XtIsRealized(tab.widget)) {
      ev.xkey.display = XtDisplay(tab.widget);
      ev.xkey.window = XtWindow(tab.tabs[static_cast<std::size_t>(oldIndex)].button);
      XtCallActionProc(tab.tabs[static_cast<std::size_t>(oldIndex)].button, "Disarm", &ev, nullptr, 0);
    }
    if (Widget b = next->button; b && XtIsRealized(b)) {
      ev.xkey.display = XtDisplay(b);
      ev.xkey.window = XtWindow(b);
      XtVaSetValues(b, XmNtraversalOn, False, nullptr);
      XtCallActionProc(b, "Arm", &ev, nullptr, 0);
      XtVaSetValues(b, XmNtraversalOn, True, nullptr);
    }
  }
  return true;
}

void yyTabWidgetSelect(FieldRecord& tab, int pageId) {
  const int old = tab.selectedPage;
  // A field that doesn't validate keeps its page in view: asked before the
  // old page goes, since taking the focus from the field judges it anew.
  if (zelvy_dialog::state().bInvalidField) return;
  if (!yyTabWidgetSelectX(tab, pageId)) return;
  FieldRecord* f = nullptr;
  if (DialogRecord* d = yyDialogFieldInfo(tab.widget, f)) yyDialogTabChangedCB(*d, tab, old, pageId);
}

void yyTabWidgetMove(FieldRecord& tab, int direction) {
  TabStrip* s = strip_of(tab);
  if (!s || s->geometry.empty()) return;
  int offset = s->scrollOffset;
  if (direction > 0) {
    for (const TabGeometry& g : s->geometry)
      if (g.x > s->scrollOffset) {
        offset = g.x;
        break;
      }
  } else {
    for (auto it = s->geometry.rbegin(); it != s->geometry.rend(); ++it)
      if (it->x < s->scrollOffset) {
        offset = it->x;
        break;
      }
  }
  s->scrollOffset = offset;
  XtVaSetValues(s->buttons ? s->buttonContainer : s->tabContainer, XtNx, -offset, nullptr);
}

void yyTabWidgetChangeLabelX(FieldRecord& tab, int pageId, std::string_view label) {
  const int i = index_of(tab, pageId);
  if (i < 0) return;
  TabRecord& r = tab.tabs[static_cast<std::size_t>(i)];
  r.label.assign(label.empty() ? std::string_view(" ") : label);
  if (r.button) yyDialogSetLabel(r.button, r.label);
  if (TabStrip* s = strip_of(tab)) {
    TabGeometry& g = s->geometry[static_cast<std::size_t>(i)];
    yyDialogSetLabel(g.labelWidget, r.label);
    XmString text = yyDialogXmString(r.label);
    XmRenderTable rt = nullptr;
    XtVaGetValues(g.labelWidget, XmNrenderTable, &rt, nullptr);
    g.textWidth = rt ? static_cast<int>(XmStringWidth(rt, text)) : g.textWidth;
    XmStringFree(text);
    yyTabWidgetChildPositionResize(tab);
  }
}

void yyTabWidgetVisibleX(FieldRecord& tab, bool show) {
  TabRecord* r = find_page(tab, tab.selectedPage);
  if (!r || !r->page) return;
  if (show) XtManageChild(r->page);
  else XtUnmanageChild(r->page);
}

void yyTabWidgetStateX(FieldRecord& tab, int pageId, int state) {
  const int i = index_of(tab, pageId);
  if (i < 0) return;
  TabRecord& r = tab.tabs[static_cast<std::size_t>(i)];
  r.state = state ? 1 : 0;
  if (r.button) XtSetSensitive(r.button, r.state != 0);
  if (TabStrip* s = strip_of(tab)) {
    XtSetSensitive(s->geometry[static_cast<std::size_t>(i)].tabArea, r.state != 0);
  }
}

int yyTabWidgetGetTabState(const FieldRecord& tab, int index) {
  return index >= 0 && index < static_cast<int>(tab.tabs.size()) ? tab.tabs[static_cast<std::size_t>(index)].state : 0;
}

int yyTabWidgetGetTabStateX(const FieldRecord& tab, int pageId) { return yyTabWidgetGetTabState(tab, index_of(tab, pageId)); }

std::vector<int> yyTabWidgetListDialogsX(const FieldRecord& tab) {
  std::vector<int> ids;
  for (const TabRecord& r : tab.tabs) ids.push_back(r.pageId);
  return ids;
}

void yyTabWidgetTakeFocusX(FieldRecord& tab) {
  TabStrip* s = strip_of(tab);
  const int i = index_of(tab, tab.selectedPage);
  if (!s || i < 0) return;
  Widget target = s->buttons ? tab.tabs[static_cast<std::size_t>(i)].button : s->geometry[static_cast<std::size_t>(i)].labelWidget;
  if (target) XmProcessTraversal(target, XmTRAVERSE_CURRENT);
}

void yyTabWidgetButtonAT(Widget w, XEvent* ev, String* params, Cardinal* count) {
  if (!count || *count == 0) return;
  DialogRecord* d = nullptr;
  int index = -1;
  FieldRecord* f = owner_of(w, d, index);
  TabStrip* s = f ? strip_of(*f) : nullptr;
  if (!s || index < 0) return;
  const char letter = params[0][0], way = *count > 1 ? params[1][0] : ' ';
  const int pageId = f->tabs[static_cast<std::size_t>(index)].pageId;
  switch (letter) {
    case 'd': {
      if (s->focusBehavior == 0 && pageId == f->selectedPage) s->focusBehavior = 1;
      yyTabWidgetSelect(*f, pageId);
      // A page kept in view by a field that doesn't validate keeps the focus too.
      if (f->selectedPage == pageId) focus_page(*f, *s, index);
      break;
    }
    case 'c': case 'C': {
      const int next = next_enabled(*f, index, way == 'l' ? -1 : 1, false);
      if (next < 0) break;
      Widget target = letter == 'C' ? f->tabs[static_cast<std::size_t>(next)].button
                                    : s->geometry[static_cast<std::size_t>(next)].labelWidget;
      if (target) XmProcessTraversal(target, XmTRAVERSE_CURRENT);
      if (letter == 'c') yyTabWidgetSelect(*f, f->tabs[static_cast<std::size_t>(next)].pageId);
      break;
    }
    case 'p': {
      const int next = next_enabled(*f, index_of(*f, f->selectedPage), way == 'b' ? -1 : 1, true);
      if (next < 0) break;
      yyTabWidgetSelect(*f, f->tabs[static_cast<std::size_t>(next)].pageId);
      yyTabWidgetTakeFocusX(*f);
      break;
    }
    case 't': {
      String tp[] = {const_cast<char*>("t"), const_cast<char*>(way == 'b' ? "b" : "f")};
      Cardinal tn = 2;
      const int page = yyDialogFind(f->selectedPage);
      if (way != 'b' && page >= 0 && yyDialogFocusFirst(zelvy_dialog::state().wDialogInfo[static_cast<std::size_t>(page)])) break;
      yyDialogKeyTrans(f->widget, ev, tp, &tn);
      break;
    }
    case 'm': {
      context_click(*d, *f, index, ev, way == 'k');
      if (f->extraFlags & field_extra::kTabContextSelects) {
        yyTabWidgetSelect(*f, pageId);
        if (f->selectedPage == pageId) focus_page(*f, *s, index);
      }
      break;
    }
    default: break;  // n: keeps Motif from acting on the event
  }
}

void yyTabWidgetRealize(FieldRecord& tab) {
  for (TabRecord& r : tab.tabs)
    if (r.page && XtIsRealized(r.page)) XRaiseWindow(XtDisplay(r.page), XtWindow(r.page));
}

void yyDialogTabChangedCB(DialogRecord& d, FieldRecord& tab, int oldPage, int newPage) {
  // A field that doesn't validate keeps its page in view.
  if (zelvy_dialog::state().bInvalidField) {
    yyTabWidgetSelectX(tab, oldPage);
    return;
  }
  yyDialogSendMessage(&d, TabChanged, oldPage, newPage, -1, -1, -1, -1, d.identifier);
}

void yyDialogTabPages(DialogRecord& d, FieldRecord& tab) {
  int count = -1, bytes = 0;
  yyrcfieldtabcheck(d.resourceId, tab.identifier, count, bytes);
  if (count <= 0) return;
  int selected = -1;
  std::vector<int> ids(static_cast<std::size_t>(count)), pos(static_cast<std::size_t>(count));
  std::vector<char> text(static_cast<std::size_t>(std::max(bytes, 1)));
  yyrcfieldtabload(d.resourceId, tab.identifier, selected, ids, pos, text);
  for (int i = 0; i < count; ++i) {
    const int at = pos[static_cast<std::size_t>(i)];
    int error = 0;
    yydialogaddtabpage_(tab, ids[static_cast<std::size_t>(i)], at >= 0 ? std::string_view(text.data() + at) : std::string_view{}, error);
  }
  if (selected >= 0) yyTabWidgetSelectX(tab, selected);
}

void yydialogaddtabpage_(FieldRecord& tab, int pageId, std::string_view label, int& error) {
  error = 0;
  // Loading a page makes it the current dialog; the caller's stays current.
  const int current = zelvy_dialog::state().iDlgCur;
  if (const int old = yyDialogFind(pageId); old >= 0) yyDialogUnload(old);
  yyDialogLoad(pageId, pageId, true, 1, tab.valueWidget, 2, error);
  zelvy_dialog::state().iDlgCur = current;
  const int page = yyDialogFind(pageId);
  if (error || page < 0) {
    if (!error) error = 1007;
    return;
  }
  yyTabWidgetAddDataX(tab, zelvy_dialog::state().wDialogInfo[static_cast<std::size_t>(page)].widget, pageId, label);
}

// ---- By field identifier ---------------------------------------------------------

namespace {

FieldRecord* tab_field(int fieldid, int& error) {
  error = 0;
  State& ds = zelvy_dialog::state();
  if (ds.iDlgCur < 0 || ds.wDialogInfo[ds.iDlgCur].identifier == -1) {
    error = 1005;
    return nullptr;
  }
  FieldRecord* f = yyDialogGetField(fieldid, ds.iDlgCur);
  if (!f || f->type != kTab) {
    error = 1006;
    return nullptr;
  }
  return f;
}

}  // namespace

void yydialogsettab_(int fieldid, int pageId, int& error) {
  FieldRecord* f = tab_field(fieldid, error);
  if (!f) return;
  const TabRecord* r = find_page(*f, pageId);
  if (!r || r->state == 0) error = 1012;
  else yyTabWidgetSelectX(*f, pageId);
}

void yydialoggettab_(int fieldid, int& pageId, int& error) {
  pageId = 0;
  if (FieldRecord* f = tab_field(fieldid, error)) pageId = f->selectedPage;
}

void yydialogtabstate_(int fieldid, int pageId, int state, int& error) {
  FieldRecord* f = tab_field(fieldid, error);
  if (!f) return;
  if (!find_page(*f, pageId)) error = 1012;
  else yyTabWidgetStateX(*f, pageId, state);
}

void yydialogaddtabpage_(int fieldid, int pageId, std::string_view label, int& error) {
  if (FieldRecord* f = tab_field(fieldid, error)) yydialogaddtabpage_(*f, pageId, label, error);
}

std::vector<int> yyDialogTabPageFields(int fieldid) {
  int error = 0;
  FieldRecord* f = tab_field(fieldid, error);
  std::vector<int> ids;
  if (!f) return ids;
  const int page = yyDialogFind(f->selectedPage);
  if (page < 0) return ids;
  for (const FieldRecord& g : zelvy_dialog::state().wDialogInfo[static_cast<std::size_t>(page)].fields) ids.push_back(g.identifier);
  return ids;
}
