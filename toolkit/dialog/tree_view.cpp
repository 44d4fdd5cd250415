// Tree view fields on the Motif container. Each item is an icon gadget with a
// small record in its userData holding the links the engine walks: the first
// child and both siblings. The container's own idea of order is only used for
// layout.
#include "toolkit/dialog/tree_view.h"

#include <X11/IntrinsicP.h>
#include <Xm/Container.h>
#include <Xm/IconG.h>
#include <Xm/ScrolledW.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <vector>

#include "toolkit/base/fixed_text.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/tree_view_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"

using namespace zelvy_dialog;

namespace {

constexpr int kOpen = 2, kClosed = 1;
constexpr int kChangeSelected = 1, kChangeOpened = 3, kChangeClosed = 4;
constexpr int kIndentation = 20;
constexpr int kMenuChecked = 4;  // a menu row's checked flag opens its branch
constexpr int kStateImageSize = 9;

struct TreeviewItem {
  int identifier = 0;
  Widget firstChild = nullptr, nextSibling = nullptr, previousSibling = nullptr;
};

struct TreeviewData {
  int itemCount = 0;
  Widget selectedItem = nullptr, firstItem = nullptr;
  int pressItem = 0, pressState = 0, pressX = 0, pressY = 0;
};

int iTreeCheck = 0;
Pixmap pTreeImage1 = 2, pTreeImage2 = 2;

std::map<Widget, TreeviewData>& trees() {
  static std::map<Widget, TreeviewData> data;
  return data;
}

void forget_tree_cb(Widget w, XtPointer, XtPointer) { trees().erase(w); }

TreeviewItem* item_of(Widget g) {
  XtPointer ud = nullptr;
  if (g) XtVaGetValues(g, XmNuserData, &ud, nullptr);
  return static_cast<TreeviewItem*>(ud);
}

Widget parent_of(Widget g) {
  Widget p = nullptr;
  XtVaGetValues(g, XmNentryParent, &p, nullptr);
  return p;
}

FieldRecord* tree_field(int fieldid, int& error) {
  error = 0;
  State& ds = zelvy_dialog::state();
  if (ds.iDlgCur < 0 || ds.wDialogInfo[ds.iDlgCur].identifier == -1) {
    error = 1005;
    return nullptr;
  }
  FieldRecord* f = yyDialogGetField(fieldid, ds.iDlgCur);
  if (!f || f->type != kTreeview) {
    error = 1006;
    return nullptr;
  }
  return f;
}

// Depth first, a node before its children.
template <typename Visit>
Widget walk(Widget from, Visit visit) {
  for (Widget g = from; g;) {
    TreeviewItem* r = item_of(g);
    if (!r) return nullptr;
    if (visit(g, *r)) return g;
    if (Widget hit = walk(r->firstChild, visit)) return hit;
    g = r->nextSibling;
  }
  return nullptr;
}

bool in_subtree(Widget root, Widget g) {
  for (Widget p = g; p; p = parent_of(p))
    if (p == root) return true;
  return false;
}

// Takes an item out of the links of its siblings, its parent and the head.
void unlink(TreeviewData& t, Widget g, TreeviewItem& r) {
  if (r.previousSibling) {
    if (TreeviewItem* p = item_of(r.previousSibling)) p->nextSibling = r.nextSibling;
  } else if (Widget parent = parent_of(g)) {
    if (TreeviewItem* p = item_of(parent); p && p->firstChild == g) p->firstChild = r.nextSibling;
  } else if (t.firstItem == g) {
    t.firstItem = r.nextSibling;
  }
  if (r.nextSibling)
    if (TreeviewItem* n = item_of(r.nextSibling)) n->previousSibling = r.previousSibling;
  r.nextSibling = r.previousSibling = nullptr;
}

void send_change(Widget container, int kind, int identifier) {
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(container, f);
  if (d && f) yyDialogSendMessage(d, FieldChanged, f->identifier, f->identifier, kind, identifier, -1, -1, d->identifier);
}

void select_gadget(Widget container, TreeviewData& t, Widget g) {
  WidgetList one = &g;
  XtVaSetValues(container, XmNselectedObjects, g ? one : nullptr, XmNselectedObjectCount, g ? 1 : 0, nullptr);
  t.selectedItem = g;
  if (g) {
    Widget sw = XtParent(XtParent(container));
    if (XmIsScrolledWindow(sw) && XtIsRealized(container)) XmScrollVisible(sw, g, 0, 0);
  }
}

Pixmap state_image(bool plus) {
  Display* dpy = xdisplay();
  const int screen = zelvy_x::state().iScreen;
  const int depth = zelvy_x::state().iDispDepth > 0 ? zelvy_x::state().iDispDepth : DefaultDepth(dpy, screen);
  Pixmap pm = XCreatePixmap(dpy, RootWindow(dpy, screen), kStateImageSize, kStateImageSize, static_cast<unsigned>(depth));
  if (!pm) return 2;
  GC gc = XCreateGC(dpy, pm, 0, nullptr);
  XSetForeground(dpy, gc, yyDialogScheme(3));
  XFillRectangle(dpy, pm, gc, 0, 0, kStateImageSize, kStateImageSize);
  XSetForeground(dpy, gc, yyDialogScheme(0));
  XDrawLine(dpy, pm, gc, 1, 4, 7, 4);
  if (plus) XDrawLine(dpy, pm, gc, 4, 1, 4, 7);
  XFreeGC(dpy, gc);
  return pm;
}

Widget new_gadget(FieldRecord& f, Widget parent, int position, int identifier, std::string_view text, bool selected) {
  char name[16];
  std::snprintf(name, sizeof name, "%010d", identifier);
  auto* r = new TreeviewItem{identifier, nullptr, nullptr, nullptr};
  XmString label = yyDialogXmString(text);
  Arg a[16];
  Cardinal n = 0;
  XtSetArg(a[n], XmNentryParent, parent); ++n;
  XtSetArg(a[n], XmNlabelString, label); ++n;
  XtSetArg(a[n], XmNuserData, r); ++n;
  XtSetArg(a[n], XmNmarginWidth, 0); ++n;
  XtSetArg(a[n], XmNmarginHeight, 0); ++n;
  XtSetArg(a[n], XmNspacing, 0); ++n;
  XtSetArg(a[n], XmNvisualEmphasis, selected ? XmSELECTED : XmNOT_SELECTED); ++n;
  XtSetArg(a[n], XtNbackground, yyDialogScheme(15)); ++n;
  XtSetArg(a[n], XmNhighlightThickness, 1); ++n;
  if (position >= 0) {
    XtSetArg(a[n], XmNpositionIndex, position); ++n;
  }
  yyDialogFont(a, n, f.fontIndex);
  Widget g = XtCreateManagedWidget(name, xmIconGadgetClass, f.widget, a, n);
  XmStringFree(label);
  // Shadows in the item's own colour keep a flat look; given at creation they
  // upset the gadget's colour cache.
  XtVaSetValues(g, XmNtopShadowColor, yyDialogScheme(15), XmNbottomShadowColor, yyDialogScheme(15), nullptr);
  XtAddCallback(g, XmNdestroyCallback, yyDialogTreeviewDeleteCB, nullptr);
  return g;
}

int position_of(Widget g) {
  int p = 0;
  XtVaGetValues(g, XmNpositionIndex, &p, nullptr);
  return p;
}

}  // namespace

// ---- Callbacks ---------------------------------------------------------------

void yyDialogTreeviewDeleteCB(Widget g, XtPointer, XtPointer) {
  TreeviewItem* r = item_of(g);
  if (!r) return;
  Widget container = XtParent(g);
  // When the whole container goes the links no longer matter.
  if (!container->core.being_destroyed) {
    if (auto it = trees().find(container); it != trees().end()) {
      unlink(it->second, g, *r);
      if (it->second.selectedItem == g) it->second.selectedItem = nullptr;
    }
  }
  XtVaSetValues(g, XmNuserData, nullptr, nullptr);
  delete r;
}

void yyDialogTreeviewSelectCB(Widget container, XtPointer, XtPointer call) {
  auto it = trees().find(container);
  if (it == trees().end() || !it->second.firstItem) return;
  TreeviewData& t = it->second;
  auto* cb = static_cast<XmContainerSelectCallbackStruct*>(call);
  if (!cb || cb->selected_item_count == 0) {
    select_gadget(container, t, t.selectedItem);  // the user can't deselect
    return;
  }
  Widget g = cb->selected_items[0];
  if (g == t.selectedItem) return;
  t.selectedItem = g;
  FieldRecord* f = nullptr;
  yyDialogFieldInfo(container, f);
  TreeviewItem* r = item_of(g);
  if (!r) return;
  if (f && (f->extraFlags & field_extra::kTreeToggleOnSelect) && r->firstChild) {
    unsigned char state = XmCOLLAPSED;
    XtVaGetValues(g, XmNoutlineState, &state, nullptr);
    XtVaSetValues(g, XmNoutlineState, state == XmEXPANDED ? XmCOLLAPSED : XmEXPANDED, nullptr);
  }
  send_change(container, kChangeSelected, r->identifier);
}

void yyDialogTreeviewExpandCB(Widget container, XtPointer, XtPointer call) {
  auto* cb = static_cast<XmContainerOutlineCallbackStruct*>(call);
  auto it = trees().find(container);
  if (!cb || !cb->item || it == trees().end()) return;
  TreeviewItem* r = item_of(cb->item);
  if (!r || !r->firstChild) return;
  TreeviewData& t = it->second;
  const bool closing = cb->reason == XmCR_COLLAPSED;
  if (closing && t.selectedItem && t.selectedItem != cb->item && in_subtree(cb->item, t.selectedItem))
    select_gadget(container, t, cb->item);
  send_change(container, closing ? kChangeClosed : kChangeOpened, r->identifier);
}

void yyDialogTreeviewScrollCB(Widget sw, XtPointer, XtPointer call) {
  auto* cb = static_cast<XmTraverseObscuredCallbackStruct*>(call);
  if (cb && cb->traversal_destination) XmScrollVisible(sw, cb->traversal_destination, 0, 0);
}

// ---- The engine's routines ---------------------------------------------------

void yyDialogTreeviewCreate(DialogRecord& d, FieldRecord& f) {
  if (pTreeImage1 == 2 && xdisplay()) {
    pTreeImage1 = state_image(true);
    pTreeImage2 = pTreeImage1 == 2 ? 2 : state_image(false);
    if (pTreeImage2 == 2) pTreeImage1 = 2;
  }
  f.capabilities = field_capability::kTreeview;
  Widget sw = XtVaCreateWidget("ZelvField", xmScrolledWindowWidgetClass, d.widget, XtNx, f.x, XtNy, f.y, XtNwidth,
                               std::max(1, f.width), XtNheight, std::max(1, f.height), XmNscrollingPolicy,
                               XmAUTOMATIC, XmNspacing, 0, XtNbackground, yyDialogScheme(3), nullptr);
  yyDialogBorderStyle(sw, 1);
  XtAddCallback(sw, XmNtraverseObscuredCallback, yyDialogTreeviewScrollCB, nullptr);
  Arg a[16];
  Cardinal n = 0;
  XtSetArg(a[n], XmNlayoutType, XmOUTLINE); ++n;
  XtSetArg(a[n], XmNentryViewType, XmSMALL_ICON); ++n;
  XtSetArg(a[n], XmNselectionPolicy, XmSINGLE_SELECT); ++n;
  XtSetArg(a[n], XmNoutlineButtonPolicy, XmOUTLINE_BUTTON_PRESENT); ++n;
  XtSetArg(a[n], XmNoutlineLineStyle, XmSINGLE); ++n;
  XtSetArg(a[n], XmNautomaticSelection, XmAUTO_SELECT); ++n;
  XtSetArg(a[n], XmNoutlineIndentation, kIndentation); ++n;
  XtSetArg(a[n], XtNbackground, yyDialogScheme(15)); ++n;
  if (pTreeImage1 != 2) {
    XtSetArg(a[n], XmNcollapsedStatePixmap, pTreeImage1); ++n;
    XtSetArg(a[n], XmNexpandedStatePixmap, pTreeImage2); ++n;
  }
  f.widget = XtCreateManagedWidget("ZelvField", xmContainerWidgetClass, sw, a, n);
  f.outerWidget = sw;
  // The space below the last item shows the items' own background.
  Widget clip = nullptr;
  XtVaGetValues(sw, XmNclipWindow, &clip, nullptr);
  if (clip) XtVaSetValues(clip, XtNbackground, yyDialogScheme(15), nullptr);
  trees()[f.widget] = TreeviewData{};
  XtAddCallback(f.widget, XmNdestroyCallback, forget_tree_cb, nullptr);
  XtAddCallback(f.widget, XmNselectionCallback, yyDialogTreeviewSelectCB, nullptr);
  XtAddCallback(f.widget, XmNoutlineChangedCallback, yyDialogTreeviewExpandCB, nullptr);
  if (!(f.extraFlags & field_extra::kNoDoubleClick))
    XtAddCallback(f.widget, XmNdefaultActionCallback, yyDialogDblClickCB, nullptr);
}

Widget yyDialogTreeviewFind(FieldRecord& f, int identifier) {
  auto it = trees().find(f.widget);
  if (it == trees().end()) return nullptr;
  return walk(it->second.firstItem, [identifier](Widget, TreeviewItem& r) { return r.identifier == identifier; });
}

Widget yyDialogTreeviewFindXY(FieldRecord& f, int x, int y) {
  auto it = trees().find(f.widget);
  if (it == trees().end()) return nullptr;
  return walk(it->second.firstItem, [x, y](Widget g, TreeviewItem&) {
    XtWidgetGeometry geo{};
    XtQueryGeometry(g, nullptr, &geo);
    Position gx = 0, gy = 0;
    Dimension w = 0, h = 0;
    XtVaGetValues(g, XtNx, &gx, XtNy, &gy, XtNwidth, &w, XtNheight, &h, nullptr);
    return XtIsManaged(g) && x >= gx && x < gx + w && y >= gy && y < gy + h;
  });
}

int yyDialogTreeviewItemId(Widget g) {
  const TreeviewItem* r = item_of(g);
  return r ? r->identifier : 0;
}

Widget yyDialogTreeviewSelected(FieldRecord& f) {
  auto it = trees().find(f.widget);
  return it == trees().end() ? nullptr : it->second.selectedItem;
}

void yyDialogTreeviewSelect(FieldRecord& f, Widget g) {
  auto it = trees().find(f.widget);
  if (it != trees().end() && g) select_gadget(f.widget, it->second, g);
}

bool yyDialogTreeviewCheckSel(Widget g, Widget selected) { return selected && in_subtree(g, selected); }

void yyDialogTreeviewColour(Widget g, Pixel colour) {
  XtVaSetValues(g, XtNbackground, colour, nullptr);
  if (TreeviewItem* r = item_of(g))
    for (Widget c = r->firstChild; c; c = item_of(c) ? item_of(c)->nextSibling : nullptr) yyDialogTreeviewColour(c, colour);
}

void yyDialogTreeviewDelete(FieldRecord& f, Widget g, bool withSelection) {
  auto it = trees().find(f.widget);
  if (it == trees().end() || !g) return;
  TreeviewData& t = it->second;
  TreeviewItem* r = item_of(g);
  if (!r) return;
  Widget next = nullptr;
  const bool selectionGoes = withSelection && t.selectedItem && in_subtree(g, t.selectedItem);
  if (selectionGoes) next = r->nextSibling ? r->nextSibling : parent_of(g) ? parent_of(g) : r->previousSibling;
  while (r->firstChild) yyDialogTreeviewDelete(f, r->firstChild, false);
  unlink(t, g, *r);
  if (t.selectedItem == g || selectionGoes) t.selectedItem = nullptr;
  XtDestroyWidget(g);
  if (selectionGoes) select_gadget(f.widget, t, next);
}

void yyDialogTreeviewClear(FieldRecord& f) {
  auto it = trees().find(f.widget);
  if (it == trees().end()) return;
  while (it->second.firstItem) yyDialogTreeviewDelete(f, it->second.firstItem, false);
  select_gadget(f.widget, it->second, nullptr);
}

namespace {

struct MenuRows {
  std::vector<int> ids, flags, next, child, textPos, mnemonic;
  std::vector<char> text;
};

}  // namespace

void yyDialogTreeviewInit2(FieldRecord& f, const void* rowsData, int row, Widget parent, int selected) {
  const auto& rows = *static_cast<const MenuRows*>(rowsData);
  TreeviewData& t = trees()[f.widget];
  Widget previous = nullptr;
  for (int i = row; i >= 0 && i < static_cast<int>(rows.ids.size()); i = rows.next[static_cast<std::size_t>(i)]) {
    const auto k = static_cast<std::size_t>(i);
    if (rows.ids[k] == 0) continue;  // separators have no place in a tree
    const int at = rows.textPos[k];
    std::string label = at >= 0 ? std::string(rows.text.data() + at) : std::string();
    label.erase(std::remove(label.begin(), label.end(), '&'), label.end());
    Widget g = new_gadget(f, parent, -1, rows.ids[k], label, rows.ids[k] == selected);
    TreeviewItem* r = item_of(g);
    r->previousSibling = previous;
    if (previous) item_of(previous)->nextSibling = g;
    else if (parent) item_of(parent)->firstChild = g;
    else t.firstItem = g;
    previous = g;
    ++t.itemCount;
    if (rows.ids[k] == selected) t.selectedItem = g;
    if (rows.child[k] >= 0) {
      yyDialogTreeviewInit2(f, rowsData, rows.child[k], g, selected);
      const bool open = (rows.flags[k] & kMenuChecked) || yyDialogTreeviewCheckSel(g, t.selectedItem);
      XtVaSetValues(g, XmNoutlineState, open ? XmEXPANDED : XmCOLLAPSED, nullptr);
    }
  }
}

// ---- Public and C-layer routines ---------------------------------------------

void WDialogTreeviewCheck(int flag) { iTreeCheck = flag; }

void yydialoginserttreeviewitem_(int fieldid, int relative, int relation, int identifier, int& error,
                                 std::string_view text) {
  FieldRecord* f = tree_field(fieldid, error);
  if (!f) return;
  TreeviewData& t = trees()[f->widget];
  Widget rel = t.firstItem ? yyDialogTreeviewFind(*f, relative) : nullptr;
  if (t.firstItem && !rel) {
    error = 1011;
    return;
  }
  if (iTreeCheck && yyDialogTreeviewFind(*f, identifier)) {
    error = 1048;
    return;
  }
  Widget parent = nullptr;
  int position = -1;
  if (rel && relation == kTreeLastChild) {
    parent = rel;
  } else if (rel) {
    parent = parent_of(rel);
    position = position_of(rel) + (relation == kTreeBefore ? 0 : 1);
  }
  Widget g = new_gadget(*f, parent, position, identifier, trimmed(text), false);
  TreeviewItem* r = item_of(g);
  if (!rel) {
    t.firstItem = g;
  } else if (relation == kTreeLastChild) {
    TreeviewItem* p = item_of(rel);
    if (!p->firstChild) {
      p->firstChild = g;
    } else {
      Widget last = p->firstChild;
      while (item_of(last)->nextSibling) last = item_of(last)->nextSibling;
      item_of(last)->nextSibling = g;
      r->previousSibling = last;
    }
  } else if (relation == kTreeBefore) {
    TreeviewItem* q = item_of(rel);
    r->nextSibling = rel;
    r->previousSibling = q->previousSibling;
    if (q->previousSibling) item_of(q->previousSibling)->nextSibling = g;
    else if (parent) item_of(parent)->firstChild = g;
    else t.firstItem = g;
    q->previousSibling = g;
  } else {
    TreeviewItem* q = item_of(rel);
    r->previousSibling = rel;
    r->nextSibling = q->nextSibling;
    if (q->nextSibling) item_of(q->nextSibling)->previousSibling = g;
    q->nextSibling = g;
  }
}

void yydialogdeletetreeviewitem_(int fieldid, int item, int& error) {
  FieldRecord* f = tree_field(fieldid, error);
  if (!f) return;
  Widget g = yyDialogTreeviewFind(*f, item);
  if (!g) error = 1011;
  else yyDialogTreeviewDelete(*f, g, true);
}

void yydialogputtreeview_(int fieldid, int item, int& error) {
  FieldRecord* f = tree_field(fieldid, error);
  if (!f) return;
  Widget g = yyDialogTreeviewFind(*f, item);
  if (!g) {
    error = 1011;
    return;
  }
  for (Widget p = parent_of(g); p; p = parent_of(p)) XtVaSetValues(p, XmNoutlineState, XmEXPANDED, nullptr);
  yyDialogTreeviewFixState(*f);
  select_gadget(f->widget, trees()[f->widget], g);
}

void yydialoggettreeview_(int fieldid, int& item, bool wantText, int& error, std::string& text) {
  item = 0;
  FieldRecord* f = tree_field(fieldid, error);
  if (!f) return;
  Widget g = trees()[f->widget].selectedItem;
  TreeviewItem* r = item_of(g);
  if (!r) {
    error = 1010;
    return;
  }
  item = r->identifier;
  if (!wantText) return;
  XmString label = nullptr;
  XtVaGetValues(g, XmNlabelString, &label, nullptr);
  char* s = label ? static_cast<char*>(XmStringUnparse(label, nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, nullptr, 0, XmOUTPUT_ALL)) : nullptr;
  assign_out(text, s ? s : "");
  XtFree(s);
  if (label) XmStringFree(label);
}

void yydialoggettreeviewstate_(int fieldid, int item, int& state, int& error) {
  state = 0;
  FieldRecord* f = tree_field(fieldid, error);
  if (!f) return;
  Widget g = yyDialogTreeviewFind(*f, item);
  if (!g) error = 1011;
  else if (!item_of(g)->firstChild) error = 1049;
  if (error) return;
  unsigned char s = XmCOLLAPSED;
  XtVaGetValues(g, XmNoutlineState, &s, nullptr);
  state = s == XmEXPANDED ? kOpen : kClosed;
}

void yydialogsettreeviewstate_(int fieldid, int item, int state, int& error) {
  FieldRecord* f = tree_field(fieldid, error);
  if (!f) return;
  Widget g = yyDialogTreeviewFind(*f, item);
  if (!g) error = 1011;
  else if (!item_of(g)->firstChild) error = 1049;
  if (error) return;
  XtVaSetValues(g, XmNoutlineState, state == kClosed ? XmCOLLAPSED : XmEXPANDED, nullptr);
}

void yydialogsettreeviewstring_(int fieldid, int item, int& error, std::string_view text) {
  FieldRecord* f = tree_field(fieldid, error);
  if (!f) return;
  Widget g = yyDialogTreeviewFind(*f, item);
  if (!g) {
    error = 1011;
    return;
  }
  XmString label = yyDialogXmString(trimmed(text));
  XtVaSetValues(g, XmNlabelString, label, nullptr);
  XmStringFree(label);
}

void yydialoggettreeviewrect_(int fieldid, int item, int& left, int& top, int& right, int& bottom, int& error) {
  left = top = right = bottom = 0;
  FieldRecord* f = tree_field(fieldid, error);
  if (!f) return;
  Widget g = yyDialogTreeviewFind(*f, item);
  if (!g) {
    error = 1011;
    return;
  }
  Position gx = 0, gy = 0, rx = 0, ry = 0;
  Dimension w = 0, h = 0;
  XtVaGetValues(g, XtNx, &gx, XtNy, &gy, XtNwidth, &w, XtNheight, &h, nullptr);
  if (XtIsRealized(f->widget)) XtTranslateCoords(f->widget, gx, gy, &rx, &ry);
  left = rx;
  top = ry;
  right = rx + w;
  bottom = ry + h;
}

void yydialogtreeviewmenu_(int fieldid, int menuId, int selected, int& error) {
  FieldRecord* f = tree_field(fieldid, error);
  if (!f) return;
  int count = -1, bytes = 0;
  yyrcmenucheck(menuId, count, bytes);
  if (count <= 0) {
    error = 1011;
    return;
  }
  MenuRows rows;
  const auto n = static_cast<std::size_t>(count);
  rows.ids.resize(n);
  rows.flags.resize(n);
  rows.next.resize(n);
  rows.child.resize(n);
  rows.textPos.resize(n);
  rows.mnemonic.resize(n);
  rows.text.resize(static_cast<std::size_t>(std::max(bytes, 1)) + 1, '\0');
  yyrcmenuload(menuId, rows.ids, rows.flags, rows.next, rows.child, rows.textPos, rows.mnemonic, rows.text);
  yyDialogTreeviewClear(*f);
  yyDialogTreeviewInit2(*f, &rows, 0, nullptr, selected);
  TreeviewData& t = trees()[f->widget];
  if (t.selectedItem) select_gadget(f->widget, t, t.selectedItem);
  yyDialogTreeviewFixState(*f);
}
