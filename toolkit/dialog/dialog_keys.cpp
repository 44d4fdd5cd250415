// The keyboard of dialogs: Return presses the default button, Tab walks the
// toolkit's own field order, Alt with a letter finds a mnemonic, arrows move
// within a radio group, and text widgets get the clipboard keys and their
// context menu. All of it runs through the one action "yyDialogKeyTrans",
// whose argument letters say what to do.
#include <X11/IntrinsicP.h>
#include <X11/keysym.h>
#include <Xm/Label.h>
#include <Xm/List.h>
#include <Xm/ScrolledW.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include <string>
#include <string_view>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/dialog/list_fields_private.h"
#include "toolkit/dialog/tree_view_private.h"
#include "toolkit/kernel/clipboard_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/message_private.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/tooltip_private.h"

using namespace zelvy_dialog;

namespace {

struct Tables {
  XtTranslations dialog = nullptr;   // the dialog widget
  XtTranslations field = nullptr;    // value widgets that don't keep Return
  XtTranslations radio = nullptr;    // radio buttons
  XtTranslations text = nullptr;     // text widgets
  XtTranslations multi = nullptr;    // multi-line texts
  XtTranslations menu = nullptr;     // the context menu of texts
  XtTranslations items = nullptr;    // context clicks on lists and tree views
  XtTranslations button = nullptr;   // context clicks on push buttons
};

Tables& tables() {
  static Tables t;
  return t;
}

bool usable(const FieldRecord& f) {
  return f.widget && (f.style & field_style::kVisible) && !(f.style & field_style::kDisabled);
}

void arm_and_activate(Widget w) {
  // The button reacts as to a key, not a click.
  XEvent ev{};
  ev.xkey.type = KeyPress;
  ev.xkey.send_event = True;
  ev.xkey.display = XtDisplay(w);
  ev.xkey.window = XtWindow(w);
  ev.xkey.time = XtLastTimestampProcessed(XtDisplay(w));
  XtCallActionProc(w, "ArmAndActivate", &ev, nullptr, 0);
}

int field_id(const DialogRecord& d, int index) {
  return index >= 0 && static_cast<std::size_t>(index) < d.fields.size()
             ? d.fields[static_cast<std::size_t>(index)].identifier
             : -1;
}

// The button that Return (or a double click) presses: the one with the
// default mark, else the default button, else with `withOk` the field with
// identifier 1. Null when there is none.
FieldRecord* default_target(DialogRecord& d, bool withOk) {
  for (int at : {d.shownDefaultButton, d.defaultButton})
    if (at >= 0 && static_cast<std::size_t>(at) < d.fields.size()) return &d.fields[static_cast<std::size_t>(at)];
  if (withOk)
    for (FieldRecord& f : d.fields)
      if (f.identifier == 1) return &f;
  return nullptr;
}

void press_default(DialogRecord& d, bool withOk) {
  if (FieldRecord* target = default_target(d, withOk)) {
    if (usable(*target)) arm_and_activate(target->valueWidget ? target->valueWidget : target->widget);
    return;
  }
  // No button to press: the program hears of Return as an OK from the field in focus.
  int from = field_id(d, d.focusField);
  if (from == 1 && d.previousFocusField >= 0) from = field_id(d, d.previousFocusField);
  yyDialogSendMessage(&d, PushButton, 1, from, -1, -1, -1, -1, d.identifier);
}

// The next field in the tab order that takes the focus, through the pages of
// tab fields; the focus stays when the walk comes back to where it began.
void next_field(DialogRecord& d, int start, int direction) {
  const int startDialog = yyDialogIndexOf(d);
  int dialog = startDialog, field = start;
  // Every field of every dialog at most once, with room for the page steps.
  for (int steps = 0; steps < 4 * kDialogs * 64; ++steps) {
    if (!yyDialogFindNextPrev(direction, dialog, field)) return;
    if (dialog == startDialog && field == start) return;
    FieldRecord& f = zelvy_dialog::state().wDialogInfo[dialog].fields[static_cast<std::size_t>(field)];
    if (!yyDialogTabStop(f)) continue;
    yyDialogFocus(f, -1);
    return;
  }
}

// The neighbour within the run of adjacent buttons of the same group, wrapping.
void next_radio(DialogRecord& d, int at, int direction) {
  const int n = static_cast<int>(d.fields.size());
  if (at < 0 || at >= n || d.fields[static_cast<std::size_t>(at)].type != kRadio) return;
  const int group = d.fields[static_cast<std::size_t>(at)].radioGroup;
  auto in_run = [&](int i) {
    return i >= 0 && i < n && d.fields[static_cast<std::size_t>(i)].type == kRadio &&
           d.fields[static_cast<std::size_t>(i)].radioGroup == group;
  };
  int first = at, last = at;
  while (in_run(first - 1)) --first;
  while (in_run(last + 1)) ++last;
  const int size = last - first + 1;
  for (int step = 1; step < size; ++step) {
    const int i = first + ((at - first + direction * step) % size + size) % size;
    FieldRecord& f = d.fields[static_cast<std::size_t>(i)];
    if (!usable(f)) continue;
    yyDialogPutRadioButton(d, f);
    yyDialogFocus(f, -1);
    // A page change made meanwhile speaks for itself.
    if (yyMsgPendingType() != TabChanged)
      yyDialogSendMessage(&d, FieldChanged, f.identifier, f.identifier, 1, -1, -1, -1, d.identifier);
    return;
  }
}

void text_action(Widget w, char letter, Time time) {
  if (!XmIsText(w)) return;
  switch (letter) {
    case 'x': yyXmTextCut(w, time); break;
    case 'c': yyXmTextCopy(w, time); break;
    case 'v': yyXmTextPaste(w); break;
    case 'a': yyDialogSelectAll(w); break;
    case 'R': XmTextInsert(w, XmTextGetInsertionPosition(w), const_cast<char*>("\n")); break;
    case 'T': XmTextInsert(w, XmTextGetInsertionPosition(w), const_cast<char*>("\t")); break;
    default: break;
  }
}

Time event_time(const XEvent* ev) {
  if (!ev) return CurrentTime;
  switch (ev->type) {
    case KeyPress: case KeyRelease: return ev->xkey.time;
    case ButtonPress: case ButtonRelease: return ev->xbutton.time;
    default: return CurrentTime;
  }
}

// Tab and Shift+Tab (the left-tab keysym on most keyboards) as action t;
// Ctrl+Tab is left to the text keys.
void tab_key(Widget w, XtPointer, XEvent* ev, Boolean* cont) {
  if (ev->type != KeyPress || (ev->xkey.state & ControlMask)) return;
  const KeySym plain = XLookupKeysym(&ev->xkey, 0), shifted = XLookupKeysym(&ev->xkey, 1);
  if (plain != XK_Tab && plain != XK_ISO_Left_Tab) return;
  const bool back = (ev->xkey.state & ShiftMask) || plain == XK_ISO_Left_Tab || (shifted == XK_ISO_Left_Tab && (ev->xkey.state & ShiftMask));
  String params[] = {const_cast<char*>("t"), const_cast<char*>(back ? "b" : "f")};
  Cardinal count = 2;
  yyDialogKeyTrans(w, ev, params, &count);
  *cont = False;
}

// The field of the dialog that holds a widget, such as a grid's cell.
FieldRecord* enclosing_field(DialogRecord& d, Widget w) {
  for (; w && w != d.widget; w = XtParent(w))
    for (FieldRecord& f : d.fields)
      if (f.widget == w || f.outerWidget == w) return &f;
  return nullptr;
}

// The middle of a widget, or of a part of it, on the screen.
void middle_of(Widget w, int left, int top, int width, int height, int& x, int& y) {
  Position rx = 0, ry = 0;
  XtTranslateCoords(w, static_cast<Position>(left + width / 2), static_cast<Position>(top + height / 2), &rx, &ry);
  x = rx;
  y = ry;
}

void middle_of(Widget w, int& x, int& y) {
  Dimension width = 0, height = 0;
  XtVaGetValues(w, XtNwidth, &width, XtNheight, &height, nullptr);
  middle_of(w, 0, 0, width, height, x, y);
}

// The context menu at the pointer (a button release) or at the middle of
// the widget (the keyboard): a grid's cell, a dialog's field, or a text
// outside dialogs each have their own owner of the choice.
void text_menu(Widget w, const XEvent* ev, bool fromKeyboard) {
  if (!XmIsText(w)) return;
  int x = 0, y = 0;
  if (!fromKeyboard) {
    if (!ev || ev->type != ButtonRelease) return;
    x = ev->xbutton.x_root;
    y = ev->xbutton.y_root;
  } else {
    middle_of(w, x, y);
  }
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  if (d && !f) f = enclosing_field(*d, w);
  if (d && f && f->type == kGrid) yyGridTextMenu(w, x, y);
  else if (d) yyDialogTextMenu(w, x, y);
  else yyEditTextMenu(w, x, y);
}

// A right press on a list or tree view, held for its release.
struct RightPress {
  Widget widget = nullptr;
  int item = 0, x = 0, y = 0;
  unsigned state = 0;
};
RightPress& right_press() {
  static RightPress p;
  return p;
}

int list_item_at(Widget list, int y) {
  int count = 0;
  XtVaGetValues(list, XmNitemCount, &count, nullptr);
  const int at = XmListYToPos(list, static_cast<Position>(y));
  return at >= 1 && at <= count ? at : 0;
}

void press_item(FieldRecord& f, Widget w, const XButtonEvent& b) {
  int item = 0;
  const bool selects = (f.extraFlags & field_extra::kRightSelects) != 0;
  if (f.type == kList) {
    item = list_item_at(w, b.y);
    if (item > 0 && selects && !XmListPosSelected(w, item)) XmListSelectPos(w, item, True);
  } else {
    Widget g = yyDialogTreeviewFindXY(f, b.x, b.y);
    item = g ? yyDialogTreeviewItemId(g) : 0;
    if (g && selects) {
      yyDialogTreeviewSelect(f, g);
      XmProcessTraversal(g, XmTRAVERSE_CURRENT);
    }
  }
  right_press() = {w, item, b.x_root, b.y_root, b.state};
}

// The item a context key names, and where its menu would stand: the
// selected one, shown, at its middle; otherwise none at the middle of the field.
int keyboard_item(FieldRecord& f, Widget w, int& x, int& y) {
  if (f.type == kList) {
    int* positions = nullptr;
    int count = 0;
    if (XmListGetSelectedPos(w, &positions, &count) && count == 1) {
      const int at = positions[0];
      XtFree(reinterpret_cast<char*>(positions));
      yyDialogListScroll(w, at);
      Position bx = 0, by = 0;
      Dimension bw = 0, bh = 0;
      if (XmListPosToBounds(w, at, &bx, &by, &bw, &bh)) {
        middle_of(w, bx, by, bw, bh, x, y);
        return at;
      }
    } else if (positions) {
      XtFree(reinterpret_cast<char*>(positions));
    }
    middle_of(w, x, y);
    return 0;
  }
  if (f.type == kTreeview) {
    if (Widget g = yyDialogTreeviewSelected(f)) {
      if (f.outerWidget && XmIsScrolledWindow(f.outerWidget)) XmScrollVisible(f.outerWidget, g, 0, 0);
      Position gx = 0, gy = 0;
      Dimension gw = 0, gh = 0;
      XtVaGetValues(g, XtNx, &gx, XtNy, &gy, XtNwidth, &gw, XtNheight, &gh, nullptr);
      middle_of(w, gx, gy, gw, gh, x, y);
      return yyDialogTreeviewItemId(g);
    }
    middle_of(f.outerWidget ? f.outerWidget : w, x, y);
    return 0;
  }
  middle_of(w, x, y);
  return -1;
}

// Action m (with d a press, u a release, nothing a button's release) and M.
void context_click(DialogRecord& d, FieldRecord& f, Widget w, char letter, char way, const XEvent* ev) {
  auto send = [&](int item, int modifiers, int x, int y, Time time) {
    yyMsgSend(ContextClick, item, modifiers, f.type, f.identifier, x, y, d.identifier, static_cast<int>(time));
  };
  if (letter == 'M') {
    int x = 0, y = 0;
    const int item = keyboard_item(f, w, x, y);
    const unsigned state = ev && ev->type == KeyPress ? ev->xkey.state : 0;
    send(item, yyMsgModifierState(state) | kContextFromKeyboard, x, y, event_time(ev));
    return;
  }
  if (!ev || (ev->type != ButtonPress && ev->type != ButtonRelease)) return;
  const XButtonEvent& b = ev->xbutton;
  if (way == 'd') {
    press_item(f, w, b);
  } else if (way == 'u') {
    RightPress& p = right_press();
    // A release whose press another widget had says nothing.
    if (p.widget != w) return;
    p.widget = nullptr;
    send(p.item, yyMsgModifierState(p.state), p.x, p.y, b.time);
  } else {
    send(-1, yyMsgModifierState(b.state), b.x_root, b.y_root, b.time);
  }
}

// Alt with a key, and nothing else held but the locks, looks for a mnemonic.
void alt_key(Widget w, XtPointer, XEvent* ev, Boolean* cont) {
  if (ev->type != KeyPress) return;
  const auto& xs = zelvy_x::state();
  const unsigned held = ev->xkey.state & ~(LockMask | xs.NumLockMask);
  if (held == 0 || (held & ~xs.AltMask) != 0) return;
  DialogRecord* d = yyDialogFindFromWgt(w);
  if (d && yyDialogShortcut(*d, *ev)) *cont = False;
}

bool yyDialogMatchMnemonic(const FieldRecord& f, unsigned keycode) {
  if (!f.mnemonicKeysym || (f.style & field_style::kDisabled)) return false;
  return XKeysymToKeycode(xdisplay(), static_cast<KeySym>(f.mnemonicKeysym)) == keycode;
}

DialogRecord* page_owner(int pageId) {
  for (DialogRecord& owner : zelvy_dialog::state().wDialogInfo)
    for (const FieldRecord& f : owner.fields)
      for (const TabRecord& r : f.tabs)
        if (r.pageId == pageId && owner.identifier != -1) return &owner;
  return nullptr;
}

XtActionsRec actions[] = {{const_cast<char*>("yyDialogKeyTrans"), yyDialogKeyTrans}};

void forget_press(Widget w, XtPointer, XtPointer) {
  if (right_press().widget == w) right_press().widget = nullptr;
}

}  // namespace

void yyDialogPutRadioButton(DialogRecord& d, FieldRecord& f) {
  if (f.type != kRadio) return;
  const int n = static_cast<int>(d.fields.size());
  const int at = static_cast<int>(&f - d.fields.data());
  auto in_run = [&](int i) {
    return i >= 0 && i < n && d.fields[static_cast<std::size_t>(i)].type == kRadio &&
           d.fields[static_cast<std::size_t>(i)].radioGroup == f.radioGroup;
  };
  int first = at, last = at;
  while (in_run(first - 1)) --first;
  while (in_run(last + 1)) ++last;
  for (int k = first; k <= last; ++k)
    if (Widget b = d.fields[static_cast<std::size_t>(k)].widget) XmToggleButtonSetState(b, k == at, False);
}

void yyDialogKeyTrans(Widget w, XEvent* ev, String* params, Cardinal* count) {
  yyTooltipDestroy();
  if (!count || *count == 0 || !params[0] || !params[0][0]) return;
  const char letter = params[0][0];
  const char way = *count > 1 && params[1] ? params[1][0] : 'f';
  const int direction = way == 'b' ? -1 : 1;
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  if (d && !f) f = enclosing_field(*d, w);
  const int at = d && f ? static_cast<int>(f - d->fields.data()) : -1;
  switch (letter) {
    case 'r': if (d) press_default(*d, true); break;
    case 't': if (d) next_field(*d, at, direction); break;
    case 'C': if (d) next_radio(*d, at, direction); break;
    case 'f': text_menu(w, ev, false); break;
    case 'F': text_menu(w, ev, true); break;
    case 'm': case 'M':
      if (d && f) context_click(*d, *f, w, letter, *count > 1 && params[1] ? params[1][0] : 0, ev);
      break;
    case 'i': break;  // swallows the other Ctrl keys, which Motif would act on
    default: text_action(w, letter, event_time(ev)); break;
  }
}

void yyDialogKeyInit() {
  Tables& t = tables();
  if (t.dialog) return;
  XtAppAddActions(zelvy_x::state().ixContext, actions, XtNumber(actions));
  t.dialog = XtParseTranslationTable("<Key>Return: yyDialogKeyTrans(r)\n<Key>KP_Enter: yyDialogKeyTrans(r)");
  t.field = XtParseTranslationTable("<Key>Return: yyDialogKeyTrans(r)\n<Key>KP_Enter: yyDialogKeyTrans(r)");
  t.radio = XtParseTranslationTable(
      "<Key>osfLeft: yyDialogKeyTrans(C,b)\n<Key>osfUp: yyDialogKeyTrans(C,b)\n"
      "<Key>osfRight: yyDialogKeyTrans(C,f)\n<Key>osfDown: yyDialogKeyTrans(C,f)");
  t.text = XtParseTranslationTable(
      "Ctrl<Key>x: yyDialogKeyTrans(x)\nCtrl<Key>c: yyDialogKeyTrans(c)\nCtrl<Key>v: yyDialogKeyTrans(v)\n"
      "Ctrl<Key>a: yyDialogKeyTrans(a)\nCtrl<Key>: yyDialogKeyTrans(i)");
  t.menu = XtParseTranslationTable(
      "<Btn3Up>: yyDialogKeyTrans(f)\n<Key>osfMenu: yyDialogKeyTrans(F)\nShift<Key>F10: yyDialogKeyTrans(F)");
  // The context menu's choice comes back through the loop.
  LoopHooks loop;
  loop.textMenu = yyDialogProcessTextMenu;
  yyAttachLoopHooks(loop);
  t.multi = XtParseTranslationTable("Ctrl<Key>Return: yyDialogKeyTrans(R)\nCtrl<Key>Tab: yyDialogKeyTrans(T)");
  t.items = XtParseTranslationTable(
      "<Btn3Down>: yyDialogKeyTrans(m,d)\n<Btn3Up>: yyDialogKeyTrans(m,u)\n<Key>osfMenu: yyDialogKeyTrans(M)");
  t.button = XtParseTranslationTable("<Btn3Up>: yyDialogKeyTrans(m)\n<Key>osfMenu: yyDialogKeyTrans(M)");
}

void yyDialogKeyTranslations(DialogRecord& d, FieldRecord* f) {
  Tables& t = tables();
  if (!t.dialog) return;
  if (!f) {
    if (!d.widget) return;
    XtOverrideTranslations(d.widget, t.dialog);
    XtInsertEventHandler(d.widget, KeyPressMask, False, alt_key, nullptr, XtListHead);
    return;
  }
  if (f->capabilities & field_capability::kMnemonic) {
    int key = 0;
    yyrcfieldshortcut(d.resourceId, f->identifier, key);
    KeySym marked = NoSymbol;
    Widget labelled = f->type == kLabel ? f->valueWidget : f->widget;
    if (!key && labelled && XmIsLabel(labelled)) XtVaGetValues(labelled, XmNmnemonic, &marked, nullptr);
    if (key) f->mnemonicKeysym = static_cast<long>(XStringToKeysym(std::string(1, static_cast<char>(key)).c_str()));
    else if (marked != NoSymbol) f->mnemonicKeysym = static_cast<long>(marked);
  }
  Widget value = f->valueWidget ? f->valueWidget : f->widget;
  if (!value || !(f->capabilities & field_capability::kTakesFocus)) return;
  if (f->type == kRadio) XtOverrideTranslations(value, t.radio);
  if (!(f->capabilities & field_capability::kReturnToWidget)) XtOverrideTranslations(value, t.field);
  // Motif puts its own traversal keys over a widget's table when it takes the
  // focus; Tab is therefore taken before any table sees it.
  XtInsertEventHandler(value, KeyPressMask, False, tab_key, nullptr, XtListHead);
  XtInsertEventHandler(value, KeyPressMask, False, alt_key, nullptr, XtListHead);
  if (XmIsText(value)) yyDialogXmTextProps2(value, f->type == kString && (f->style & field_style::kMultiLine));
  if (f->type == kList || f->type == kTreeview) {
    XtOverrideTranslations(f->widget, t.items);
    XtAddCallback(f->widget, XtNdestroyCallback, forget_press, nullptr);
  } else if (f->type == kButton) {
    XtOverrideTranslations(f->widget, t.button);
  }
  // A combo's right button reports a context click of its own.
  if (XmIsText(value) && f->type != kCombo) XtOverrideTranslations(value, t.menu);
}

void yyDialogXmTextProps2(Widget text, bool multiLine) {
  Tables& t = tables();
  if (!t.text) return;
  XtOverrideTranslations(text, t.text);
  if (multiLine) XtOverrideTranslations(text, t.multi);
}

void yyDialogDblClickCB(Widget w, XtPointer, XtPointer call) {
  yyTooltipDestroy();
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  if (!d || !f) return;
  if (f->type == kList && call) {
    // A double click that ends over another item than it began on is no choice.
    const auto* cbs = static_cast<XmListCallbackStruct*>(call);
    if (cbs->event && cbs->event->type == ButtonRelease &&
        XmListYToPos(w, static_cast<Position>(cbs->event->xbutton.y)) != cbs->item_position)
      return;
  }
  // A tab page passes the choice to the dialog whose tab field holds it.
  while (d->kind == 1 && !default_target(*d, false)) {
    DialogRecord* owner = page_owner(d->identifier);
    if (!owner) break;
    d = owner;
  }
  press_default(*d, false);
}

void yyDialogCellKeys(Widget text, bool tabLeaves) {
  Tables& t = tables();
  if (!t.menu || !text || !XmIsText(text)) return;
  XtOverrideTranslations(text, t.menu);
  if (tabLeaves) XtInsertEventHandler(text, KeyPressMask, False, tab_key, nullptr, XtListHead);
}

bool yyDialogShortcut(DialogRecord& dialog, const XEvent& ev) {
  if (ev.type != KeyPress) return false;
  // The field with the focus starts the search; the focus may be in a page.
  Widget focus = XmGetFocusWidget(dialog.widget);
  FieldRecord* ff = nullptr;
  DialogRecord* found = focus ? yyDialogFieldInfo(focus, ff) : &dialog;
  if (!found) return false;
  DialogRecord& d = *found;
  const int n = static_cast<int>(d.fields.size());
  if (n == 0) return false;
  const int at = ff ? static_cast<int>(ff - d.fields.data()) : 0;
  auto starts_group = [&](int i) { return (d.fields[static_cast<std::size_t>(i)].style & field_style::kGroupStart) != 0; };
  int first = at;
  while (first > 0 && !starts_group(first)) --first;
  int end = at + 1;
  while (end < n && !starts_group(end)) ++end;
  // After the focus within its group, the rest of the group, the fields
  // after the group, those before it, and the focus field last.
  const std::pair<int, int> ranges[] = {{at + 1, end}, {first, at}, {end, n}, {0, first}, {at, at + 1}};
  int match = -1;
  bool ambiguous = false;
  for (const auto& [from, to] : ranges) {
    for (int i = from; i < to && !ambiguous; ++i) {
      if (!yyDialogMatchMnemonic(d.fields[static_cast<std::size_t>(i)], ev.xkey.keycode)) continue;
      if (match < 0) match = i;
      else ambiguous = true;
    }
    if (ambiguous) break;
  }
  if (match < 0) return false;
  // A label's key lands on the next field that takes the focus.
  int target = -1;
  for (int k = 0; k < n; ++k) {
    const FieldRecord& f = d.fields[static_cast<std::size_t>((match + k) % n)];
    if (usable(f) && (f.capabilities & field_capability::kTakesFocus)) {
      target = (match + k) % n;
      break;
    }
  }
  if (target < 0) return true;
  FieldRecord& f = d.fields[static_cast<std::size_t>(target)];
  yyDialogFocus(f, -1);
  if (!ambiguous && (f.capabilities & field_capability::kMnemonicActivates)) arm_and_activate(f.widget);
  return true;
}
