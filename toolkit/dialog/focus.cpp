// Where the keyboard goes in a dialog: the tab order, which walks the fields
// of a tab field's page where the tab field stands; the report of a focus
// move; the default mark, which follows a focused button; and the keyboard
// for a dialog shell that maps.
#include <X11/IntrinsicP.h>
#include <Xm/DrawingA.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include <cstdint>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/message_private.h"

using namespace zelvy_dialog;

namespace {

State& ds = zelvy_dialog::state();

bool live(int index) { return index >= 0 && index < kDialogs && ds.wDialogInfo[index].identifier != -1; }

// The dialog and field of the tab field whose page is dialog `page`.
bool page_owner(int page, int& owner, int& tabField) {
  const DialogRecord& p = ds.wDialogInfo[page];
  if (p.kind != 1) return false;
  for (int i = 0; i < kDialogs; ++i) {
    if (i == page || !live(i)) continue;
    const DialogRecord& o = ds.wDialogInfo[i];
    for (std::size_t k = 0; k < o.fields.size(); ++k)
      for (const TabRecord& r : o.fields[k].tabs)
        if (r.pageId == p.identifier && (!r.page || r.page == p.widget)) {
          owner = i;
          tabField = static_cast<int>(k);
          return true;
        }
  }
  return false;
}

// The page dialog in view under a tab field, -1 when it has none with fields.
int selected_page(const FieldRecord& tab) {
  if (tab.type != kTab || tab.selectedPage < 0) return -1;
  Widget pageWidget = nullptr;
  for (const TabRecord& r : tab.tabs)
    if (r.pageId == tab.selectedPage) pageWidget = r.page;
  for (int i = 0; i < kDialogs; ++i) {
    const DialogRecord& p = ds.wDialogInfo[i];
    if (live(i) && p.kind == 1 && p.identifier == tab.selectedPage && (!pageWidget || p.widget == pageWidget))
      return p.fields.empty() ? -1 : i;
  }
  return -1;
}

int field_count(int dialogIndex) { return static_cast<int>(ds.wDialogInfo[dialogIndex].fields.size()); }

const FieldRecord& field_at(int dialogIndex, int field) {
  return ds.wDialogInfo[dialogIndex].fields[static_cast<std::size_t>(field)];
}

// The frame's own shadow colours give the sunken look; the flat look a line.
void yyDialogDefButDrawCB(Widget w, XtPointer, XtPointer) {
  if (!XtIsRealized(w)) return;
  Display* dpy = XtDisplay(w);
  Dimension width = 0, height = 0;
  Pixel top = 0, bottom = 0;
  XtVaGetValues(w, XtNwidth, &width, XtNheight, &height, XmNtopShadowColor, &top, XmNbottomShadowColor, &bottom,
                nullptr);
  const int wd = width, ht = height;
  if (wd < 2 || ht < 2) return;
  GC gc = XCreateGC(dpy, XtWindow(w), 0, nullptr);
  if (zelvy_x::state().bFlatStyle) {
    constexpr std::size_t kFrameColour = 16;
    XSetForeground(dpy, gc, zelvy_x::state().wSchemeCol[kFrameColour].pixel);
    XDrawRectangle(dpy, XtWindow(w), gc, 0, 0, static_cast<unsigned>(wd - 1), static_cast<unsigned>(ht - 1));
  } else {
    XSetForeground(dpy, gc, top);
    XPoint light[] = {{static_cast<short>(wd - 1), 1}, {static_cast<short>(wd - 1), static_cast<short>(ht - 1)},
                      {1, static_cast<short>(ht - 1)}};
    XDrawLines(dpy, XtWindow(w), gc, light, 3, CoordModeOrigin);
    XSetForeground(dpy, gc, bottom);
    XPoint dark[] = {{0, static_cast<short>(ht - 1)}, {0, 0}, {static_cast<short>(wd - 1), 0}};
    XDrawLines(dpy, XtWindow(w), gc, dark, 3, CoordModeOrigin);
  }
  XFreeGC(dpy, gc);
}

void mapped_cb(Widget shell, XtPointer, XEvent* ev, Boolean*) {
  if (ev->type != MapNotify || !XtIsRealized(shell)) return;
  Display* dpy = XtDisplay(shell);
  Window focus = 0;
  int revert = 0;
  XGetInputFocus(dpy, &focus, &revert);
  // Only a keyboard the program holds, or nobody does, is handed on;
  // another program's stays where it is.
  const bool ours = focus == PointerRoot || focus == None || focus == DefaultRootWindow(dpy) ||
                    XtWindowToWidget(dpy, focus) != nullptr;
  XWindowAttributes at{};
  if (ours && XGetWindowAttributes(dpy, XtWindow(shell), &at) && at.map_state == IsViewable)
    XSetInputFocus(dpy, XtWindow(shell), RevertToParent, CurrentTime);
}

}  // namespace

bool yyDialogTabStop(const FieldRecord& f) {
  if (!f.widget || !(f.style & field_style::kTabStop) || !(f.capabilities & field_capability::kTabReach)) return false;
  if (!(f.style & field_style::kVisible) || (f.style & field_style::kDisabled)) return false;
  // A radio group is one stop: its button that is set.
  return f.type != kRadio || XmToggleButtonGetState(f.widget);
}

bool yyDialogFindNextPrev(int direction, int& dialogIndex, int& field) {
  if (!live(dialogIndex) || field_count(dialogIndex) == 0) return false;
  if (direction > 0) {
    // Into the page of a tab field, at its first field.
    if (field >= 0 && field < field_count(dialogIndex)) {
      const int page = selected_page(field_at(dialogIndex, field));
      if (page >= 0) {
        dialogIndex = page;
        field = 0;
        return true;
      }
    }
    // Past a page's last field the walk goes on after its tab field.
    int owner = -1, tab = -1;
    while (field + 1 >= field_count(dialogIndex) && page_owner(dialogIndex, owner, tab)) {
      dialogIndex = owner;
      field = tab;
    }
    field = field + 1 >= field_count(dialogIndex) ? 0 : field + 1;
    return true;
  }
  if (field - 1 < 0 || field > field_count(dialogIndex)) {
    int owner = -1, tab = -1;
    if (field >= 0 && page_owner(dialogIndex, owner, tab)) {
      // Before a page's first field stands its tab field.
      dialogIndex = owner;
      field = tab;
      return true;
    }
    field = field_count(dialogIndex) - 1;
  } else {
    --field;
  }
  // Onto a tab field from behind: the last field of its page.
  for (int page = selected_page(field_at(dialogIndex, field)); page >= 0;
       page = selected_page(field_at(dialogIndex, field))) {
    dialogIndex = page;
    field = field_count(page) - 1;
  }
  return true;
}

void yyDialogDefButAddRemove(int direction, DialogRecord& d) {
  if (direction < 0) {
    if (d.defaultFrame && !d.defaultFrame->core.being_destroyed) XtDestroyWidget(d.defaultFrame);
    d.defaultFrame = nullptr;
    return;
  }
  if (d.defaultFrame || !d.widget) return;
  d.defaultFrame = XtVaCreateWidget("DefBut", xmDrawingAreaWidgetClass, d.widget, XmNresizePolicy, XmRESIZE_NONE,
                                    XmNmarginWidth, 0, XmNmarginHeight, 0, XmNtraversalOn, False, XtNbackground,
                                    zelvy_x::state().wSchemeCol[3].pixel, nullptr);
  XtAddCallback(d.defaultFrame, XmNexposeCallback, yyDialogDefButDrawCB, nullptr);
}

void yyDialogDefButMove(DialogRecord& d) {
  if (d.defaultButton < 0)
    for (std::size_t i = 0; i < d.fields.size(); ++i)
      if (d.fields[i].identifier == 1 && d.fields[i].type == kButton) d.defaultButton = static_cast<int>(i);
  if (d.shownDefaultButton < 0) d.shownDefaultButton = d.defaultButton;
  Widget frame = d.defaultFrame;
  if (!frame) return;
  const int at = d.shownDefaultButton;
  const FieldRecord* b = at >= 0 && at < static_cast<int>(d.fields.size()) ? &d.fields[static_cast<std::size_t>(at)] : nullptr;
  if (!b || !b->widget || !(b->style & field_style::kVisible)) {
    XtUnmanageChild(frame);
    return;
  }
  Position x = 0, y = 0;
  Dimension w = 0, h = 0;
  XtVaGetValues(b->widget, XtNx, &x, XtNy, &y, XtNwidth, &w, XtNheight, &h, nullptr);
  const int inset = zelvy_x::state().bFlatStyle ? 1 : 2;
  XtConfigureWidget(frame, static_cast<Position>(x - inset), static_cast<Position>(y - inset),
                    static_cast<Dimension>(w + 4), static_cast<Dimension>(h + 4), 0);
  XtManageChild(frame);
  if (!XtIsRealized(frame) || !XtIsRealized(b->widget)) return;
  Display* dpy = XtDisplay(frame);
  // Behind the button, which stands directly above it.
  XLowerWindow(dpy, XtWindow(frame));
  Window order[] = {XtWindow(b->widget), XtWindow(frame)};
  XRestackWindows(dpy, order, 2);
  XClearArea(dpy, XtWindow(frame), 0, 0, 0, 0, True);
}

void yyDialogDefButProc(DialogRecord& d) {
  const int f = d.focusField;
  if (f >= 0 && f < static_cast<int>(d.fields.size()) && d.fields[static_cast<std::size_t>(f)].type == kButton)
    d.shownDefaultButton = f;
  else
    d.shownDefaultButton = d.defaultButton;
  yyDialogDefButMove(d);
}

void yyDialogTakeFocusOnMap(DialogRecord& d) {
  if (!d.shell) return;
  XtRemoveEventHandler(d.shell, StructureNotifyMask, False, mapped_cb, nullptr);
  XtAddEventHandler(d.shell, StructureNotifyMask, False, mapped_cb, nullptr);
}

void yyDialogFocusCB(XtPointer data, XtIntervalId*) {
  Widget w = static_cast<Widget>(data);
  FieldRecord* f = nullptr;
  // The field may have gone before the timer ran.
  if (!w || !yyDialogFieldInfo(w, f) || !f) return;
  ds.bFocusChange = true;
  XmProcessTraversal(w, XmTRAVERSE_CURRENT);
  ds.bFocusChange = false;
}

void yyDialogFieldChangedMessage(DialogRecord& d, FieldRecord& f) {
  const int fi = static_cast<int>(&f - d.fields.data());
  if (fi == d.focusField) return;
  // A page change reports itself; the focus landing on the page says nothing more.
  if (yyMsgPendingType() != TabChanged) {
    const int left = d.focusField >= 0 ? d.fields[static_cast<std::size_t>(d.focusField)].identifier : 0;
    yyDialogSendMessage(&d, FieldChanged, left, f.identifier, 0, -1, d.lastCellCode, -1, d.identifier);
  }
  d.previousFocusField = d.focusField;
  d.focusField = fi;
  yyDialogDefButProc(d);
}

void yyDialogFocusWindow(Widget w) {
  // The keyboard goes to the field's top-level window; inside it the widget
  // set passes keys on to the field, which an X focus on the field's own
  // window would bypass.
  Widget shell = w;
  while (shell && !XtIsShell(shell)) shell = XtParent(shell);
  if (!shell || !XtIsRealized(shell)) return;
  Display* dpy = XtDisplay(shell);
  XWindowAttributes at{};
  // Only a window on the screen can take the keyboard; asking for it on
  // another would be an error of the server.
  if (!XGetWindowAttributes(dpy, XtWindow(shell), &at) || at.map_state != IsViewable) return;
  Window now = None;
  int revert = 0;
  XGetInputFocus(dpy, &now, &revert);
  // Only a keyboard that another of the program's windows holds is taken
  // over; one already within this window, nobody's, or another program's
  // stays, and uses up none of the wait's moves.
  Widget holder = now != None && now != PointerRoot ? XtWindowToWidget(dpy, now) : nullptr;
  if (!holder) return;
  for (Widget k = holder; k; k = XtParent(k))
    if (k == shell) return;
  if (yyMsgTakeFocusCount()) XSetInputFocus(dpy, XtWindow(shell), RevertToParent, CurrentTime);
}

void yyDialogSound(Widget w) {
  if (!w || !XmIsText(w)) return;
  Boolean bell = False;
  XtVaGetValues(w, XmNverifyBell, &bell, nullptr);
  if (bell) XBell(XtDisplay(w), 0);
}
