// Tab fields: a row of page buttons over the page area, each page a dialog
// of its own loaded as a tab page (kind 1) inside the field. Only the button
// look is built; the selected page is the one managed.
#include <Xm/PushB.h>
#include <Xm/RowColumn.h>
#include <Xm/Xm.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"

using namespace zelvy_dialog;

namespace {

constexpr int kButtonRowExtra = 15;  // a row of buttons is the font's height and this
constexpr int kLabelBarGap = 2;

TabRecord* find_page(FieldRecord& tab, int pageId) {
  for (TabRecord& r : tab.tabs)
    if (r.pageId == pageId) return &r;
  return nullptr;
}

int row_height(const FieldRecord& tab) {
  return static_cast<int>(yyDialogFontMetrics(tab.fontIndex).charHeight) + kLabelBarGap + kButtonRowExtra;
}

// The label bar sits at the top of the field; pages fill the rest.
Widget label_bar(FieldRecord& tab) {
  if (!tab.tabBar) {
    tab.tabBar = XtVaCreateManagedWidget("TabButContainer", xmRowColumnWidgetClass, tab.valueWidget, XmNorientation,
                                         XmHORIZONTAL, XmNpacking, XmPACK_TIGHT, XmNisAligned, False, XmNmarginWidth, 0,
                                         XmNmarginHeight, 0, XtNx, 0, XtNy, 0, XtNbackground, yyDialogScheme(3),
                                         nullptr);
  }
  return tab.tabBar;
}

void place_page(FieldRecord& tab, Widget page) {
  Dimension w = 1, h = 1;
  XtVaGetValues(tab.valueWidget, XtNwidth, &w, XtNheight, &h, nullptr);
  const int bar = row_height(tab);
  XtVaSetValues(page, XtNx, 0, XtNy, bar, XtNwidth, std::max(1, static_cast<int>(w)), XtNheight,
                std::max(1, static_cast<int>(h) - bar), nullptr);
}

void button_cb(Widget button, XtPointer data, XtPointer) {
  XtPointer ud = nullptr;
  XtVaGetValues(button, XmNuserData, &ud, nullptr);
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(static_cast<Widget>(ud), f);
  if (!d || !f || f->type != kTab) return;
  const int old = f->selectedPage;
  const int now = static_cast<int>(reinterpret_cast<std::intptr_t>(data));
  if (old == now || !yyTabWidgetSelectX(*f, now)) return;
  yyDialogTabChangedCB(*d, *f, old, now);
}

}  // namespace

bool yyTabWidgetSelectX(FieldRecord& tab, int pageId) {
  TabRecord* next = find_page(tab, pageId);
  if (!next || next->state == 0 || pageId == tab.selectedPage) return false;
  if (TabRecord* old = find_page(tab, tab.selectedPage); old && old->page) XtUnmanageChild(old->page);
  if (next->page && (tab.style & field_style::kVisible)) XtManageChild(next->page);
  tab.selectedPage = pageId;
  return true;
}

void yyTabWidgetAddDataX(FieldRecord& tab, Widget page, int pageId, std::string_view label) {
  TabRecord r;
  r.page = page;
  r.pageId = pageId;
  r.label.assign(label.empty() ? std::string_view(" ") : label);
  r.button = XtVaCreateManagedWidget("TabButton", xmPushButtonWidgetClass, label_bar(tab), XmNrecomputeSize, True,
                                     XmNalignment, XmALIGNMENT_CENTER, XmNuserData, tab.widget, XtNheight,
                                     row_height(tab) - kLabelBarGap, nullptr);
  yyDialogSetLabel(r.button, r.label);
  XtAddCallback(r.button, XmNactivateCallback, button_cb,
                reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(pageId)));
  if (page) {
    place_page(tab, page);
    XtUnmanageChild(page);
  }
  tab.tabs.push_back(r);
  if (tab.selectedPage == -1) yyTabWidgetSelectX(tab, pageId);
}

void yyTabWidgetChangeLabelX(FieldRecord& tab, int pageId, std::string_view label) {
  TabRecord* r = find_page(tab, pageId);
  if (!r) return;
  r->label.assign(label.empty() ? std::string_view(" ") : label);
  if (r->button) yyDialogSetLabel(r->button, r->label);
}

void yyTabWidgetVisibleX(FieldRecord& tab, bool show) {
  TabRecord* r = find_page(tab, tab.selectedPage);
  if (!r || !r->page) return;
  if (show) XtManageChild(r->page);
  else XtUnmanageChild(r->page);
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
  // Loading a page makes it the current dialog; the caller's stays current.
  const int current = zelvy_dialog::state().iDlgCur;
  for (int i = 0; i < count; ++i) {
    const int id = ids[static_cast<std::size_t>(i)];
    if (const int old = yyDialogFind(id); old >= 0) yyDialogUnload(old);
    int error = 0;
    yyDialogLoad(id, id, true, 1, tab.valueWidget, 2, error);
    const int page = yyDialogFind(id);
    if (error || page < 0) continue;
    const int at = pos[static_cast<std::size_t>(i)];
    yyTabWidgetAddDataX(tab, zelvy_dialog::state().wDialogInfo[static_cast<std::size_t>(page)].widget, id,
                        at >= 0 ? std::string_view(text.data() + at) : std::string_view{});
  }
  zelvy_dialog::state().iDlgCur = current;
  if (selected >= 0) yyTabWidgetSelectX(tab, selected);
}
