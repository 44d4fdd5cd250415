// The keyboard of dialogs: Return presses the default button, Tab walks the
// toolkit's own field order, arrows move within a radio group, and text
// widgets get the clipboard keys. All of it runs through the one action
// "yyDialogKeyTrans", whose argument letters say what to do.
#include <X11/IntrinsicP.h>
#include <X11/keysym.h>
#include <Xm/List.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>

#include <string_view>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/tooltip_private.h"

using namespace zelvy_dialog;

namespace {

struct Tables {
  XtTranslations dialog = nullptr;   // the dialog widget
  XtTranslations field = nullptr;    // value widgets that don't keep Return
  XtTranslations radio = nullptr;    // radio buttons
  XtTranslations text = nullptr;     // text widgets
  XtTranslations multi = nullptr;    // multi-line texts
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

// The button that Return (or a double click) presses: the default button,
// else with `withOk` the field with identifier 1. Null when there is none.
FieldRecord* default_target(DialogRecord& d, bool withOk) {
  if (d.defaultButton >= 0 && static_cast<std::size_t>(d.defaultButton) < d.fields.size())
    return &d.fields[static_cast<std::size_t>(d.defaultButton)];
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

// One step of the tab order, cyclic within the dialog; the start itself
// when nothing else can take the focus.
void next_field(DialogRecord& d, int start, int direction) {
  const int n = static_cast<int>(d.fields.size());
  if (n == 0) return;
  if (start < 0) start = direction > 0 ? n - 1 : 0;
  for (int i = (start + direction + n) % n; i != start; i = (i + direction + n) % n) {
    FieldRecord& f = d.fields[static_cast<std::size_t>(i)];
    if (!usable(f) || !(f.style & field_style::kTabStop) || !(f.capabilities & field_capability::kTabReach)) continue;
    // A radio group is one stop: its set button.
    if (f.type == kRadio && !XmToggleButtonGetState(f.widget)) continue;
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
    for (int k = first; k <= last; ++k)
      XmToggleButtonSetState(d.fields[static_cast<std::size_t>(k)].widget, k == i, False);
    yyDialogFocus(f, -1);
    yyDialogSendMessage(&d, FieldChanged, f.identifier, f.identifier, 1, -1, -1, -1, d.identifier);
    return;
  }
}

void text_action(Widget w, char letter, Time time) {
  if (!XmIsText(w)) return;
  switch (letter) {
    case 'x': XmTextCut(w, time); break;
    case 'c': XmTextCopy(w, time); break;
    case 'v': XmTextPaste(w); break;
    case 'a': XmTextSetSelection(w, 0, XmTextGetLastPosition(w), time); break;
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

DialogRecord* page_owner(int pageId) {
  for (DialogRecord& owner : zelvy_dialog::state().wDialogInfo)
    for (const FieldRecord& f : owner.fields)
      for (const TabRecord& r : f.tabs)
        if (r.pageId == pageId && owner.identifier != -1) return &owner;
  return nullptr;
}

XtActionsRec actions[] = {{const_cast<char*>("yyDialogKeyTrans"), yyDialogKeyTrans}};

}  // namespace

void yyDialogKeyTrans(Widget w, XEvent* ev, String* params, Cardinal* count) {
  yyTooltipDestroy();
  if (!count || *count == 0 || !params[0] || !params[0][0]) return;
  const char letter = params[0][0];
  const char way = *count > 1 && params[1] ? params[1][0] : 'f';
  const int direction = way == 'b' ? -1 : 1;
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  const int at = d && f ? static_cast<int>(f - d->fields.data()) : -1;
  switch (letter) {
    case 'r': if (d) press_default(*d, true); break;
    case 't': if (d) next_field(*d, at, direction); break;
    case 'C': if (d) next_radio(*d, at, direction); break;
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
  t.multi = XtParseTranslationTable("Ctrl<Key>Return: yyDialogKeyTrans(R)\nCtrl<Key>Tab: yyDialogKeyTrans(T)");
}

void yyDialogKeyTranslations(DialogRecord& d, FieldRecord* f) {
  Tables& t = tables();
  if (!t.dialog) return;
  if (!f) {
    if (d.widget) XtOverrideTranslations(d.widget, t.dialog);
    return;
  }
  Widget value = f->valueWidget ? f->valueWidget : f->widget;
  if (!value || !(f->capabilities & field_capability::kTakesFocus)) return;
  if (f->type == kRadio) XtOverrideTranslations(value, t.radio);
  if (!(f->capabilities & field_capability::kReturnToWidget)) XtOverrideTranslations(value, t.field);
  // Motif puts its own traversal keys over a widget's table when it takes the
  // focus; Tab is therefore taken before any table sees it.
  XtInsertEventHandler(value, KeyPressMask, False, tab_key, nullptr, XtListHead);
  if (XmIsText(value)) yyDialogXmTextProps2(value, f->type == kString && (f->style & field_style::kMultiLine));
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
