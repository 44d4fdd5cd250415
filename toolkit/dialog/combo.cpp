// The combo widget class: a Motif manager holding a text widget, a list and,
// in the drop-down forms, an arrow button and an override shell that carries
// the list under the text. The dialog engine reads the text and the selected
// option (itemSelect) and listens on valueChangedCallback.
#include <X11/Shell.h>
#include <X11/cursorfont.h>
#include <X11/keysym.h>
#include <Xm/ArrowB.h>
#include <Xm/List.h>
#include <Xm/PushB.h>
#include <Xm/ScrolledW.h>
#include <Xm/Text.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "toolkit/dialog/combo_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"

bool bInComboDropdown = false;
int iPopDown = 0;

using zelvy_dialog::yyDialogScheme;

namespace {

// Scheme colours the widget is drawn in.
constexpr int kSchemeFace = 3, kSchemeDark = 9, kSchemeDisabled = 10, kSchemeListFg = 14, kSchemeListBg = 15,
              kSchemeArrow = 16, kSchemeArmed = 18;
// Rows of the list are one pixel apart more than Motif's default: each row
// paints its background over the row above, which would hide underscores.
constexpr int kListSpacing = 2;
constexpr unsigned kPullCursor = XC_top_left_arrow;
constexpr int kSelectNotify = 1, kSelectQuiet = 2;  // how an option becomes selected

ComboPart& part(Widget w) { return reinterpret_cast<ComboWidget>(w)->combo; }
bool drop_form(const ComboPart& p) { return p.comboType != kComboTypeSimple; }

// The combo whose list is open, at most one at a time.
Widget gDropped = nullptr;
bool gSwallowRelease = false;
XtEventDispatchProc gPrevPress = nullptr, gPrevRelease = nullptr;
// The flat arrow's pictures, normal, armed and disabled, made once for one side.
std::array<Pixmap, 3> pComboArrowImage{0, 0, 0};
int gArrowSide = 0;
// The last right-button press on a combo, for its release.
struct RightPress {
  int position = 0;
  unsigned state = 0;
  int x = 0, y = 0;
} gRightPress;

#define COMBO_RES(name, cls, type, field, deftype, def)                                                         \
  {                                                                                                             \
    const_cast<char*>(name), const_cast<char*>(cls), const_cast<char*>(type),                                  \
        sizeof(reinterpret_cast<ComboRec*>(0)->combo.field), XtOffsetOf(ComboRec, combo.field),               \
        const_cast<char*>(deftype), reinterpret_cast<XtPointer>(def)                                          \
  }

XtResource resources[] = {
    COMBO_RES(XmNcomboType, "ComboType", XtRInt, comboType, XtRImmediate, kComboTypeSimple),
    COMBO_RES(XmNcomboDropSize, "ComboDropSize", XtRInt, comboDropSize, XtRImmediate, 10),
    COMBO_RES(XmNcomboItemCount, "ComboItemCount", XtRInt, comboItemCount, XtRImmediate, 0),
    COMBO_RES(XmNcomboItems, "ComboItems", XmRXmStringTable, comboItems, XtRImmediate, 0),
    COMBO_RES(XmNtextHeight, "TextHeight", XtRInt, textHeight, XtRImmediate, 14),
    COMBO_RES(XmNscrollBarDisplayPolicy, XmCScrollBarDisplayPolicy, XtRUnsignedChar, scrollBarDisplayPolicy,
              XtRImmediate, XmAS_NEEDED),
    COMBO_RES(XmNcaseConv, "CaseConv", XtRInt, caseConv, XtRImmediate, 0),
    COMBO_RES(XmNcursorPositionVisible, XmCCursorPositionVisible, XtRBoolean, cursorPositionVisible, XtRImmediate,
              False),
    COMBO_RES(XmNtextWidget, "TextWidget", XtRWidget, textWidget, XtRImmediate, 0),
    COMBO_RES(XmNlengthCharacter, "LengthCharacter", XtRInt, lengthCharacter, XtRImmediate, 0),
    COMBO_RES(XmNautoHScroll, "AutoHScroll", XtRBoolean, autoHScroll, XtRImmediate, False),
    COMBO_RES(XmNtextPixelUnused, "TextPixelUnused", XtRInt, textPixelUnused, XtRImmediate, 10),
    COMBO_RES(XmNitemSelect, "ItemSelect", XtRInt, itemSelect, XtRImmediate, 0),
    COMBO_RES(XmNvalueChangedCallback, XtCCallback, XtRCallback, valueChangedCallback, XtRImmediate, 0),
    COMBO_RES(XmNshadowThick, "ShadowThick", XtRShort, shadowThick, XtRImmediate, 2),
    COMBO_RES(XmNhighlightThickness, XmCHighlightThickness, XtRShort, highlightThickness, XtRImmediate, 2),
    COMBO_RES(XmNmarginWidth, XmCMarginWidth, XtRShort, marginWidth, XtRImmediate, 1),
    COMBO_RES(XmNmarginHeight, XmCMarginHeight, XtRShort, marginHeight, XtRImmediate, 1),
    COMBO_RES(XmNxftFont, "XftFont", XtRInt, xftFont, XtRImmediate, 0),
};

#undef COMBO_RES

// ---- Small services ----------------------------------------------------------

int text_pixel_height(const ComboPart& p) {
  int unused = 0, py = 0;
  yyDialogUnitsToPixels(yyDialogFontMetrics(p.xftFont), 0, p.textHeight, unused, py);
  return std::max(1, py - 1);
}

// Writes the text as the widget itself: the verify and change callbacks stay silent.
void set_text_quiet(ComboPart& p, const std::string& text) {
  p.textGuard = 0;
  XmTextSetString(p.textWidget, const_cast<char*>(text.c_str()));
  p.textGuard = 1;
}

std::string text_of(const ComboPart& p) {
  char* s = XmTextGetString(p.textWidget);
  std::string out = s ? s : "";
  XtFree(s);
  return out;
}

std::string unparse(XmString s) {
  char* text = static_cast<char*>(
      XmStringUnparse(s, nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, nullptr, 0, XmOUTPUT_ALL));
  std::string out = text ? text : "";
  XtFree(text);
  return out;
}

std::vector<std::string> lower_options(const ComboPart& p) {
  XmStringTable items = nullptr;
  int n = 0;
  XtVaGetValues(p.listWidget, XmNitems, &items, XmNitemCount, &n, nullptr);
  std::vector<std::string> out;
  out.reserve(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) out.push_back(yyComboWidgetFold(unparse(items[k]), kComboCaseLower));
  return out;
}

void rebuild_first_letters(ComboPart& p) {
  XtFree(p.firstLetters);
  p.firstLetters = nullptr;
  if (p.comboType != kComboTypeDropDownList) return;
  const std::vector<std::string> options = lower_options(p);
  p.firstLetters = XtMalloc(static_cast<Cardinal>(options.size() + 1));
  for (std::size_t k = 0; k < options.size(); ++k) p.firstLetters[k] = options[k].empty() ? '\0' : options[k][0];
  p.firstLetters[options.size()] = '\0';
}

void notify(Widget w, int position) {
  ComboPart& p = part(w);
  if (!p.valueChangedCallback) return;
  XtCallCallbacks(w, XmNvalueChangedCallback, reinterpret_cast<XtPointer>(static_cast<long>(position)));
}

// Brings an option into view and, with `select`, selects it. Mode 2 moves the
// list as little as possible; mode 1 puts the option at the top, as far as
// the list's end allows. A program's selection (kSelectQuiet) calls no callback.
void yyComboWidgetListScroll(Widget w, int position, int select, int mode) {
  ComboPart& p = part(w);
  Widget list = p.listWidget;
  if (position == 0) {
    if (select) set_text_quiet(p, "");
    XmListDeselectAllItems(list);
    if (p.comboItemCount > 0) XmListSetPos(list, 1);
    return;
  }
  int top = 1, visible = 1, count = 0;
  XtVaGetValues(list, XmNtopItemPosition, &top, XmNvisibleItemCount, &visible, XmNitemCount, &count, nullptr);
  visible = std::max(1, visible);
  if (mode == 2 || p.comboType == kComboTypeSimple) {
    if (position < top) top = position;
    else if (position >= top + visible) top = std::max(1, position - visible + 1);
  } else {
    top = position;
    if (count <= visible) top = 1;
    else if (position > count - visible + 1) top = count - visible + 1;
  }
  XmListSetPos(list, top);
  if (select) {
    XmListDeselectAllItems(list);
    XmListSelectPos(list, position, False);
    if (select == kSelectNotify) notify(w, position);
  } else {
    XmListDeselectAllItems(list);
  }
}

// The option equal to the text, ignoring case, becomes the selected one.
void yyComboWidgetMatchAndScroll(Widget w, bool quiet) {
  ComboPart& p = part(w);
  const std::vector<std::string> options = lower_options(p);
  const int found = yyComboWidgetMatchOption(1, options, 0, text_of(p));
  if (found >= 0) {
    p.itemSelect = found + 1;
    yyComboWidgetListScroll(w, found + 1, quiet ? kSelectQuiet : kSelectNotify, 1);
  } else {
    XmListDeselectAllItems(p.listWidget);
  }
}

// Zero-delay timers still to run, so that a combo destroyed first takes them along.
struct PendingTimer {
  Widget combo;
  XtIntervalId id;
};
std::vector<PendingTimer> gTimers;

void forget_timer(XtIntervalId* id) {
  std::erase_if(gTimers, [id](const PendingTimer& t) { return id && t.id == *id; });
}

void add_timer(Widget w, XtTimerCallbackProc proc) {
  gTimers.push_back({w, XtAppAddTimeOut(XtWidgetToApplicationContext(w), 0, proc, w)});
}

// Back to the text once the pop-up is gone: focus, all of it selected.
void yyComboWidgetFocusTimer(XtPointer data, XtIntervalId* id) {
  forget_timer(id);
  Widget w = static_cast<Widget>(data);
  if (!w || w->core.being_destroyed) return;
  ComboPart& p = part(w);
  XmProcessTraversal(p.textWidget, XmTRAVERSE_CURRENT);
  XmTextSetSelection(p.textWidget, 0, XmTextGetLastPosition(p.textWidget), CurrentTime);
  if (p.comboType != kComboTypeDropDownList) XtVaSetValues(p.textWidget, XmNcursorPositionVisible, True, nullptr);
}

void focus_later(Widget w) { add_timer(w, yyComboWidgetFocusTimer); }

// A drop-down list's letter: the option it picked, shown after the keystroke.
struct LetterPick {
  Widget combo;
  int option;
};
std::vector<LetterPick> gLetterPicks;

void letter_timer(XtPointer data, XtIntervalId* id) {
  forget_timer(id);
  Widget w = static_cast<Widget>(data);
  auto it = std::find_if(gLetterPicks.begin(), gLetterPicks.end(), [w](const LetterPick& l) { return l.combo == w; });
  if (it == gLetterPicks.end()) return;
  const int option = it->option;
  gLetterPicks.erase(it);
  ComboPart& p = part(w);
  if (option < 1 || option > p.comboItemCount) return;
  p.itemSelect = option;
  set_text_quiet(p, yyComboWidgetItemTextX(w, option));
  yyComboWidgetListScroll(w, option, kSelectNotify, 2);
  yyComboWidgetFocusTimer(w, nullptr);
}

// ---- The pop-up --------------------------------------------------------------

// Height of the open list: its rows, at most comboDropSize.
void yyComboWidgetListHeightResize(Widget w) {
  ComboPart& p = part(w);
  Widget sw = XtParent(p.listWidget);
  const Dimension width = std::max<Dimension>(1, w->core.width);
  XtWidgetGeometry want{}, pref{};
  want.request_mode = CWWidth;
  want.width = width;
  XtQueryGeometry(sw, &want, &pref);
  int height = (pref.request_mode & CWHeight) ? pref.height : sw->core.height;
  if (p.comboDropSize > 0) height = std::min(height, p.comboDropSize);
  height = std::max(1, height);
  XtConfigureWidget(sw, 0, 0, width, static_cast<Dimension>(height), 0);
  XtResizeWidget(p.pullShell, width, static_cast<Dimension>(height), p.pullShell->core.border_width);
}

// Rows the list shows: all options, as far as comboDropSize holds them.
void visible_rows(ComboPart& p) {
  XmRenderTable rt = yyDialogRenderTable(p.xftFont);
  int row = 16;
  if (rt) {
    XmString s = XmStringGenerate(const_cast<char*>("Xg_"), nullptr, XmCHARSET_TEXT, nullptr);
    row = XmStringHeight(rt, s) + kListSpacing;
    XmStringFree(s);
  }
  int rows = std::max(1, p.comboItemCount);
  if (p.comboDropSize > 0) rows = std::min(rows, std::max(1, p.comboDropSize / std::max(1, row)));
  XtVaSetValues(p.listWidget, XmNvisibleItemCount, rows, nullptr);
}

void pop_down(Widget w) {
  ComboPart& p = part(w);
  if (!p.dropped) return;
  iPopDown = 3;
  p.dropped = 0;
  if (gDropped == w) gDropped = nullptr;
  XtRemoveGrab(p.listWidget);
  XtRemoveGrab(p.textWidget);
  XtRemoveGrab(p.buttonWidget);
  XtUngrabPointer(p.listWidget, CurrentTime);
  XtUngrabKeyboard(p.textWidget, CurrentTime);
  XtPopdown(p.pullShell);
  focus_later(w);
}

void pop_up(Widget w) {
  ComboPart& p = part(w);
  if (p.dropped || !XtIsRealized(w)) return;
  if (gDropped) pop_down(gDropped);
  XmProcessTraversal(p.textWidget, XmTRAVERSE_CURRENT);
  Position rx = 0, ry = 0;
  XtTranslateCoords(p.textWidget, 0, 0, &rx, &ry);
  yyComboWidgetListHeightResize(w);
  // Under the text; above it when the screen ends first (a grid cell low down).
  int y = ry + p.textWidget->core.height - 1;
  const int below = HeightOfScreen(XtScreen(w)) - y, height = p.pullShell->core.height + 2;
  if (below < height && ry - height + 1 >= 0) y = ry - height + 1;
  XtMoveWidget(p.pullShell, static_cast<Position>(rx - 1), static_cast<Position>(y));
  p.dropped = 1;
  gDropped = w;
  XtPopup(p.pullShell, XtGrabExclusive);
  static Cursor cursor = None;
  if (cursor == None) cursor = XCreateFontCursor(XtDisplay(w), kPullCursor);
  XDefineCursor(XtDisplay(w), XtWindow(p.pullShell), cursor);
  XmListDeselectAllItems(p.listWidget);
  bInComboDropdown = true;
  yyComboWidgetMatchAndScroll(w, true);
  bInComboDropdown = false;
  XtAddGrab(p.buttonWidget, False, False);
  XtGrabKeyboard(p.textWidget, False, GrabModeAsync, GrabModeAsync, CurrentTime);
  XtAddGrab(p.textWidget, False, False);
  XtGrabPointer(p.listWidget, True, ButtonPressMask | ButtonReleaseMask | PointerMotionMask, GrabModeAsync,
                GrabModeAsync, None, None, CurrentTime);
  XtAddGrab(p.listWidget, False, False);
}

bool inside(Widget w, const XButtonEvent& e) {
  Position x = 0, y = 0;
  XtTranslateCoords(w, 0, 0, &x, &y);
  return e.x_root >= x && e.y_root >= y && e.x_root < x + static_cast<int>(w->core.width) &&
         e.y_root < y + static_cast<int>(w->core.height);
}

// Button events while a list is open: a press or release away from the list
// and its arrow closes the list and reaches nothing underneath.
Boolean combo_dispatch(XEvent* ev) {
  XtEventDispatchProc prev = ev->type == ButtonPress ? gPrevPress : gPrevRelease;
  if (Widget w = gDropped) {
    ComboPart& p = part(w);
    Widget target = XtWindowToWidget(ev->xany.display, ev->xbutton.window);
    const bool onButton = target == p.buttonWidget;
    if (!onButton && !inside(p.pullShell, ev->xbutton)) {
      pop_down(w);
      if (ev->type == ButtonPress) gSwallowRelease = true;
      else yyComboWidgetMatchAndScroll(w, false);
      return True;
    }
  } else if (ev->type == ButtonRelease && gSwallowRelease) {
    gSwallowRelease = false;
    return True;
  }
  return prev ? prev(ev) : False;
}

void install_dispatcher(Display* dpy) {
  static Display* installed = nullptr;
  if (installed == dpy) return;
  installed = dpy;
  gPrevPress = XtSetEventDispatcher(dpy, ButtonPress, combo_dispatch);
  gPrevRelease = XtSetEventDispatcher(dpy, ButtonRelease, combo_dispatch);
}

// ---- Callbacks and handlers of the children ------------------------------------

Widget combo_of(Widget child) {
  for (Widget w = child; w; w = XtParent(w))
    if (XtIsSubclass(w, comboWidgetClass)) return w;
  return nullptr;
}

// Typed text: length limit and case; in a drop-down list a letter picks the
// next option starting with it, and nothing else may change the text.
void yyComboWidgetTextCB(Widget text, XtPointer, XtPointer call) {
  Widget w = combo_of(text);
  if (!w) return;
  ComboPart& p = part(w);
  auto* cbs = static_cast<XmTextVerifyCallbackStruct*>(call);
  cbs->doit = True;
  if (!p.textGuard) return;
  // The program's own writes pass unchanged.
  if (zelvy_dialog::state().bNumericIgnoreChange) return;
  XmTextBlock b = cbs->text;
  const bool inserting = b && b->ptr && b->length > 0;
  if (p.comboType == kComboTypeDropDownList) {
    cbs->doit = False;
    if (!inserting || !p.firstLetters) return;
    const std::vector<std::string> options = lower_options(p);
    const int found = yyComboWidgetMatchOption(2, options, p.itemSelect - 1, std::string(b->ptr, 1));
    if (found < 0 || found + 1 == p.itemSelect) return;
    gLetterPicks.push_back({w, found + 1});
    add_timer(w, letter_timer);
    return;
  }
  if (!inserting) return;
  const int present = static_cast<int>(XmTextGetLastPosition(text));
  const int replaced = static_cast<int>(cbs->endPos - cbs->startPos);
  const int allowed = p.lengthCharacter > 0 ? std::max(0, p.lengthCharacter - (present - replaced)) : -1;
  std::string kept = yyDialogStrFilterInsert(std::string_view(b->ptr, static_cast<std::size_t>(b->length)), 0,
                                             false, allowed);
  if (!p.autoHScroll && p.usableWidth > 0) {
    // Without sideways scrolling the text stops at the widget's width.
    const std::string old = text_of(p);
    const auto s = static_cast<std::size_t>(std::min<long>(cbs->startPos, static_cast<long>(old.size())));
    const auto e = static_cast<std::size_t>(std::min<long>(cbs->endPos, static_cast<long>(old.size())));
    while (!kept.empty() &&
           yyDialogTextWidth(p.xftFont, old.substr(0, s) + kept + old.substr(e)) > p.usableWidth) {
      kept.pop_back();
      while (!kept.empty() && (static_cast<unsigned char>(kept.back()) & 0xC0) == 0x80) kept.pop_back();
      if (!kept.empty() && (static_cast<unsigned char>(kept.back()) & 0xC0) == 0xC0) kept.pop_back();
    }
  }
  if (kept.empty()) {
    cbs->doit = False;
    return;
  }
  kept = yyComboWidgetFold(kept, p.caseConv);
  std::memcpy(b->ptr, kept.data(), kept.size());
  b->length = static_cast<int>(kept.size());
}

void yyComboWidgetTextChangedCB(Widget text, XtPointer, XtPointer) {
  Widget w = combo_of(text);
  if (!w || !part(w).textGuard) return;
  yyComboWidgetMatchAndScroll(w, zelvy_dialog::state().bNumericIgnoreChange);
}

void yyComboWidgetListCB(Widget list, XtPointer, XtPointer call) {
  Widget w = combo_of(list);
  if (!w) return;
  ComboPart& p = part(w);
  const int position = static_cast<XmListCallbackStruct*>(call)->item_position;
  p.itemSelect = position;
  const std::string text = yyComboWidgetItemTextX(w, position);
  set_text_quiet(p, text);
  XmTextSetSelection(p.textWidget, 0, XmTextGetLastPosition(p.textWidget), CurrentTime);
  if (p.dropped) pop_down(w);
  notify(w, position);
}

void yyComboWidgetButtonCB(Widget button, XtPointer, XtPointer) {
  Widget w = combo_of(button);
  if (!w || zelvy_dialog::state().bInvalidField) return;
  yyComboWidgetPopUpDown(w, 0);
}

// Escape, Return and keypad Enter close an open list and go no further; so
// does a button released on the list, on an option or below the last.
void yyComboWidgetActiveEH(Widget child, XtPointer, XEvent* ev, Boolean* cont) {
  Widget w = combo_of(child);
  if (!w || !part(w).dropped) return;
  if (ev->type == ButtonRelease) {
    // After the list's own handling, which may pick an option.
    add_timer(w, [](XtPointer data, XtIntervalId* id) {
      forget_timer(id);
      yyComboWidgetDeactivateComboX(static_cast<Widget>(data));
    });
    return;
  }
  if (ev->type != KeyPress) return;
  const KeySym ks = XLookupKeysym(&ev->xkey, 0);
  if (ks == XK_Escape || ks == XK_Return || ks == XK_KP_Enter) {
    pop_down(w);
    *cont = False;
  }
}

// Modifiers of a context click: 1 Ctrl, 2 Shift, and a mark for the keyboard's menu key.
constexpr int kFromKeyboard = 0x40;
int key_modifiers(unsigned state) { return ((state & ControlMask) ? 1 : 0) + ((state & ShiftMask) ? 2 : 0); }

void context_click(Widget w, int position, int modifiers, int x, int y) {
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFromWidget(w, &f);
  if (!d || !f) return;
  yyDialogSendMessage(d, ContextClick, position, modifiers, f->type, f->identifier, x, y, d->identifier);
}

// Keys and the right button, bound in the children's translations.
void yyComboWidgetKeyAction(Widget child, XEvent* ev, String* params, Cardinal* count) {
  if (!count || *count == 0) return;
  Widget w = combo_of(child);
  if (!w) return;
  ComboPart& p = part(w);
  const char op = params[0][0];
  switch (op) {
    case 'f': case 'F': yyComboWidgetPopUpDown(w, 0); break;
    case 'u': case 'd': {
      const int next = p.itemSelect + (op == 'u' ? -1 : 1);
      if (next < 1 || next > p.comboItemCount) break;
      p.itemSelect = next;
      yyComboWidgetListScroll(w, next, kSelectNotify, 2);
      set_text_quiet(p, yyComboWidgetItemTextX(w, next));
      focus_later(w);
      break;
    }
    case 'm':
      if (*count < 2) break;
      if (params[1][0] == 'd' && (ev->type == ButtonPress || ev->type == ButtonRelease)) {
        int position = p.itemSelect;
        if (*count >= 3 && params[2][0] == 's') {
          position = XmListYToPos(p.listWidget, static_cast<Position>(ev->xbutton.y));
          FieldRecord* f = nullptr;
          if (yyDialogFromWidget(w, &f) && f && (f->extraFlags & zelvy_dialog::field_extra::kRightSelects) &&
              position >= 1 && position <= p.comboItemCount)
            XmListSelectPos(p.listWidget, position, True);
        }
        gRightPress = {position, ev->xbutton.state, ev->xbutton.x_root, ev->xbutton.y_root};
      } else if (params[1][0] == 'u' && ev->type == ButtonRelease) {
        context_click(w, gRightPress.position, key_modifiers(gRightPress.state), gRightPress.x, gRightPress.y);
      }
      break;
    case 'M': {
      Position x = 0, y = 0;
      XtTranslateCoords(w, static_cast<Position>(w->core.width / 2), static_cast<Position>(w->core.height / 2), &x, &y);
      const unsigned state = ev->type == KeyPress ? ev->xkey.state : 0;
      context_click(w, p.itemSelect, key_modifiers(state) | kFromKeyboard, x, y);
      break;
    }
    default: break;
  }
}

XtActionsRec actions[] = {{const_cast<char*>("yyComboWidgetKeyAction"), yyComboWidgetKeyAction}};

constexpr char kTextTranslations[] =
    "<Key>osfUp: yyComboWidgetKeyAction(u)\n"
    "<Key>osfDown: yyComboWidgetKeyAction(d)\n"
    "<Key>osfMenu: yyComboWidgetKeyAction(M)\n"
    "<Btn3Down>: yyComboWidgetKeyAction(m,d)\n"
    "<Btn3Up>: yyComboWidgetKeyAction(m,u)\n"
    "<Btn4Down>: yyComboWidgetKeyAction(u)\n"
    "<Btn5Down>: yyComboWidgetKeyAction(d)";
constexpr char kTextF4[] = "<Key>F4: yyComboWidgetKeyAction(f)";
constexpr char kListF4[] = "<Key>F4: yyComboWidgetKeyAction(F)";
constexpr char kSimpleListTranslations[] =
    "<Btn3Down>: yyComboWidgetKeyAction(m,d,s)\n"
    "<Btn3Up>: yyComboWidgetKeyAction(m,u,s)";

// Each table is parsed once: Xt never frees a parsed table.
void override(Widget w, const char* table) {
  static std::vector<std::pair<const char*, XtTranslations>> parsed;
  auto it = std::find_if(parsed.begin(), parsed.end(), [table](const auto& e) { return e.first == table; });
  if (it == parsed.end()) it = parsed.insert(parsed.end(), {table, XtParseTranslationTable(table)});
  XtOverrideTranslations(w, it->second);
}

// ---- Children, geometry and layout ---------------------------------------------

// The flat arrow: a square in the face colour (armed: scheme 18) with a dark
// frame and a filled triangle pointing down; disabled, frame and triangle take
// the colour of disabled text, as the text beside them does.
void make_arrow_images(Widget w, int side, int fullHeight) {
  if (pComboArrowImage[0] && gArrowSide == side) return;
  Display* dpy = XtDisplay(w);
  for (Pixmap& pm : pComboArrowImage)
    if (pm) XFreePixmap(dpy, pm);
  gArrowSide = side;
  const auto s = static_cast<unsigned>(std::max(1, side));
  const Window root = RootWindowOfScreen(XtScreen(w));
  const int inset = fullHeight / 6;
  for (int k = 0; k < 3; ++k) {
    const bool disabled = k == 2;
    Pixmap pm = XCreatePixmap(dpy, root, s, s, static_cast<unsigned>(w->core.depth));
    GC gc = XCreateGC(dpy, pm, 0, nullptr);
    XSetForeground(dpy, gc, yyDialogScheme(k == 1 ? kSchemeArmed : kSchemeFace));
    XFillRectangle(dpy, pm, gc, 0, 0, s, s);
    XSetForeground(dpy, gc, yyDialogScheme(disabled ? kSchemeDisabled : kSchemeDark));
    if (side > 3) XDrawRectangle(dpy, pm, gc, 1, 1, s - 3, s - 3);
    XSetForeground(dpy, gc, yyDialogScheme(disabled ? kSchemeDisabled : kSchemeArrow));
    const int left = std::min(inset, side / 2), right = std::max(side - 1 - inset, side / 2);
    const int top = std::min(inset + 1, side / 2), bottom = std::max(side - 1 - inset, top);
    XPoint tri[3] = {{static_cast<short>(left), static_cast<short>(top)},
                     {static_cast<short>(right + 1), static_cast<short>(top)},
                     {static_cast<short>(side / 2), static_cast<short>(bottom)}};
    XFillPolygon(dpy, pm, gc, tri, 3, Convex, CoordModeOrigin);
    XFreeGC(dpy, gc);
    pComboArrowImage[static_cast<std::size_t>(k)] = pm;
  }
}

void yyComboWidgetChildGeometry(Widget w) {
  ComboPart& p = part(w);
  p.textPixelHeight = text_pixel_height(p);
  int unused = 0, reduced = 0;
  yyDialogUnitsToPixels(yyDialogFontMetrics(p.xftFont), 0, std::max(0, p.textHeight - 4), unused, reduced);
  p.buttonSize = std::max(1, zelvy_x::state().bFlatStyle ? p.textPixelHeight - 2 : reduced);
  p.textWidth = static_cast<int>(w->core.width) - (drop_form(p) ? p.buttonSize : 0);
}

void yyComboWidgetChildPositionResize(Widget w) {
  ComboPart& p = part(w);
  if (!p.textWidget) return;
  yyComboWidgetChildGeometry(w);
  const auto tw = static_cast<Dimension>(std::max(1, p.textWidth));
  const auto th = static_cast<Dimension>(p.textPixelHeight);
  XtConfigureWidget(p.textWidget, 0, 0, tw, th, 0);
  // The margin leaves the whole line inside the box, what hangs below the
  // baseline too (an underscore, a "g"): the widget clips at its margins.
  if (XmRenderTable rt = yyDialogRenderTable(p.xftFont)) {
    int height = 0, ascent = 0, descent = 0;
    XmRenderTableGetDefaultFontExtents(rt, &height, &ascent, &descent);
    const int room = static_cast<int>(th) - 2 * (p.shadowThick + p.highlightThickness) - (ascent + descent);
    if (room >= 0) XtVaSetValues(p.textWidget, XmNmarginHeight, room / 2, nullptr);
  }
  p.usableWidth = p.textWidth - p.textPixelUnused;
  if (!drop_form(p)) {
    const int rest = std::max(1, static_cast<int>(w->core.height) - p.textPixelHeight);
    XtConfigureWidget(XtParent(p.listWidget), 0, static_cast<Position>(p.textPixelHeight), tw,
                      static_cast<Dimension>(rest), 0);
    return;
  }
  if (p.pullShell && p.comboDropSize > 0)
    XtResizeWidget(p.pullShell, std::max<Dimension>(1, w->core.width), static_cast<Dimension>(p.comboDropSize), 1);
  const auto bs = static_cast<Dimension>(p.buttonSize);
  XtConfigureWidget(p.buttonWidget, static_cast<Position>(p.textWidth),
                    static_cast<Position>((p.textPixelHeight - p.buttonSize) / 2), bs, bs, 0);
}

void list_colours(Widget list, const ComboPart& p) {
  XtVaSetValues(list, XtNforeground, yyDialogScheme(kSchemeListFg), XtNbackground, yyDialogScheme(kSchemeListBg),
                XmNlistSpacing, kListSpacing, nullptr);
  if (XmRenderTable rt = yyDialogRenderTable(p.xftFont)) XtVaSetValues(list, XmNrenderTable, rt, nullptr);
  yyStyleScrollbar(list, 3);
  yyStyleScrollbar(list, 4);
}

// Creates the children, or on destruction lets go of what the widget owns
// beside them (the children go with the widget).
void yyComboWidgetChildCreateDestroy(Widget w, bool create) {
  ComboPart& p = part(w);
  if (!create) {
    if (p.dropped) pop_down(w);
    if (gDropped == w) gDropped = nullptr;
    std::erase_if(gLetterPicks, [w](const LetterPick& l) { return l.combo == w; });
    for (const PendingTimer& t : gTimers)
      if (t.combo == w) XtRemoveTimeOut(t.id);
    std::erase_if(gTimers, [w](const PendingTimer& t) { return t.combo == w; });
    XtFree(p.firstLetters);
    p.firstLetters = nullptr;
    return;
  }
  const zelvy_x::State& xs = zelvy_x::state();
  Arg a[16];
  Cardinal n = 0;
  XtSetArg(a[n], XmNshadowThickness, p.shadowThick); ++n;
  XtSetArg(a[n], XtNborderWidth, 0); ++n;
  XtSetArg(a[n], XmNhighlightThickness, p.highlightThickness); ++n;
  XtSetArg(a[n], XmNmarginWidth, p.marginWidth); ++n;
  XtSetArg(a[n], XmNmarginHeight, p.marginHeight); ++n;
  XtSetArg(a[n], XmNeditMode, XmSINGLE_LINE_EDIT); ++n;
  XtSetArg(a[n], XmNcursorPositionVisible, p.cursorPositionVisible); ++n;
  XtSetArg(a[n], XmNverifyBell, False); ++n;
  XtSetArg(a[n], XtNbackground, yyDialogScheme(kSchemeListBg)); ++n;
  XtSetArg(a[n], XtNforeground, yyDialogScheme(kSchemeListFg)); ++n;
  if (XmRenderTable rt = yyDialogRenderTable(p.xftFont)) {
    XtSetArg(a[n], XmNrenderTable, rt); ++n;
  }
  if (xs.bFlatStyle) {
    XtSetArg(a[n], XmNtopShadowColor, yyDialogScheme(kSchemeDark)); ++n;
    XtSetArg(a[n], XmNbottomShadowColor, yyDialogScheme(kSchemeDark)); ++n;
  }
  p.textWidget = XtCreateManagedWidget("ComboText", xmTextWidgetClass, w, a, n);
  XtAddCallback(p.textWidget, XmNmodifyVerifyCallback, yyComboWidgetTextCB, nullptr);
  if (p.comboType != kComboTypeDropDownList) XtAddCallback(p.textWidget, XmNvalueChangedCallback, yyComboWidgetTextChangedCB, nullptr);
  override(p.textWidget, kTextTranslations);

  if (!drop_form(p)) {
    n = 0;
    XtSetArg(a[n], XmNselectionPolicy, XmSINGLE_SELECT); ++n;
    XtSetArg(a[n], XmNscrollBarDisplayPolicy, p.scrollBarDisplayPolicy); ++n;
    XtSetArg(a[n], XmNlistSizePolicy, XmCONSTANT); ++n;
    XtSetArg(a[n], XmNborderWidth, 1); ++n;
    XtSetArg(a[n], XmNhighlightThickness, 0); ++n;
    p.listWidget = XmCreateScrolledList(w, const_cast<char*>("ComboList"), a, n);
    list_colours(p.listWidget, p);
    XtAddCallback(p.listWidget, XmNsingleSelectionCallback, yyComboWidgetListCB, nullptr);
    override(p.listWidget, kSimpleListTranslations);
    XtManageChild(p.listWidget);
    return;
  }
  XtInsertEventHandler(p.textWidget, KeyPressMask, False, yyComboWidgetActiveEH, nullptr, XtListHead);
  n = 0;
  XtSetArg(a[n], XtNcolormap, xs.iCmapMain ? xs.iCmapMain : w->core.colormap); ++n;
  XtSetArg(a[n], XtNdepth, w->core.depth); ++n;
  if (xs.iVisual) {
    XtSetArg(a[n], XtNvisual, xs.iVisual); ++n;
  }
  XtSetArg(a[n], XtNallowShellResize, True); ++n;
  XtSetArg(a[n], XtNborderWidth, 1); ++n;
  XtSetArg(a[n], XmNnavigationType, XmNONE); ++n;
  XtSetArg(a[n], XmNtraversalOn, False); ++n;
  p.pullShell = XtCreatePopupShell("ComboPull", overrideShellWidgetClass, w, a, n);
  n = 0;
  XtSetArg(a[n], XmNselectionPolicy, XmBROWSE_SELECT); ++n;
  XtSetArg(a[n], XmNlistSizePolicy, XmCONSTANT); ++n;
  XtSetArg(a[n], XmNscrollingPolicy, XmAPPLICATION_DEFINED); ++n;
  XtSetArg(a[n], XmNvisualPolicy, XmVARIABLE); ++n;
  XtSetArg(a[n], XmNnavigationType, XmNONE); ++n;
  XtSetArg(a[n], XmNtraversalOn, False); ++n;
  XtSetArg(a[n], XmNscrollBarDisplayPolicy, p.scrollBarDisplayPolicy); ++n;
  XtSetArg(a[n], XmNhighlightThickness, 0); ++n;
  p.listWidget = XmCreateScrolledList(p.pullShell, const_cast<char*>("ComboList"), a, n);
  list_colours(p.listWidget, p);
  XtAddCallback(p.listWidget, XmNbrowseSelectionCallback, yyComboWidgetListCB, nullptr);
  XtAddEventHandler(p.listWidget, ButtonReleaseMask, False, yyComboWidgetActiveEH, nullptr);
  override(p.listWidget, kListF4);
  XtManageChild(p.listWidget);

  n = 0;
  XtSetArg(a[n], XmNtraversalOn, False); ++n;
  XtSetArg(a[n], XmNhighlightThickness, 0); ++n;
  XtSetArg(a[n], XtNborderWidth, 0); ++n;
  if (!xs.bFlatStyle) {
    XtSetArg(a[n], XmNarrowDirection, XmARROW_DOWN); ++n;
    XtSetArg(a[n], XmNshadowThickness, 1); ++n;
    XtSetArg(a[n], XtNforeground, yyDialogScheme(kSchemeArrow)); ++n;
    p.buttonWidget = XtCreateManagedWidget("ComboButton", xmArrowButtonWidgetClass, w, a, n);
  } else {
    make_arrow_images(w, std::max(1, text_pixel_height(p) + 1 - 3), text_pixel_height(p) + 1);
    XtSetArg(a[n], XmNfillOnArm, True); ++n;
    XtSetArg(a[n], XmNshadowThickness, 0); ++n;
    XtSetArg(a[n], XmNmarginWidth, 0); ++n;
    XtSetArg(a[n], XmNmarginHeight, 0); ++n;
    XtSetArg(a[n], XmNlabelType, XmPIXMAP); ++n;
    XtSetArg(a[n], XmNlabelPixmap, pComboArrowImage[0]); ++n;
    XtSetArg(a[n], XmNarmPixmap, pComboArrowImage[1]); ++n;
    XtSetArg(a[n], XmNlabelInsensitivePixmap, pComboArrowImage[2]); ++n;
    XtSetArg(a[n], XtNbackground, yyDialogScheme(kSchemeFace)); ++n;
    XtSetArg(a[n], XmNrecomputeSize, False); ++n;
    p.buttonWidget = XtCreateManagedWidget("ComboButton", xmPushButtonWidgetClass, w, a, n);
  }
  XtAddCallback(p.buttonWidget, XmNactivateCallback, yyComboWidgetButtonCB, nullptr);
  override(p.textWidget, kTextF4);
  install_dispatcher(XtDisplay(w));
}

// New options: folded by caseConv, handed to the list, nothing selected.
void yyComboWidgetSetValues2(Widget w, XmStringTable items, int count) {
  ComboPart& p = part(w);
  XmListDeselectAllItems(p.listWidget);
  XmListDeleteAllItems(p.listWidget);
  std::vector<XmString> folded;
  for (int k = 0; k < count && items; ++k) {
    if (p.caseConv) {
      const std::string t = yyComboWidgetFold(unparse(items[k]), p.caseConv);
      folded.push_back(XmStringGenerate(const_cast<char*>(t.c_str()), nullptr, XmCHARSET_TEXT, nullptr));
    } else {
      folded.push_back(XmStringCopy(items[k]));
    }
  }
  // An empty string alone stands for no options.
  if (folded.size() == 1 && unparse(folded[0]).empty()) {
    XmStringFree(folded[0]);
    folded.clear();
  }
  if (!folded.empty()) XmListAddItems(p.listWidget, folded.data(), static_cast<int>(folded.size()), 0);
  for (XmString s : folded) XmStringFree(s);
  p.comboItemCount = static_cast<int>(folded.size());
  p.comboItems = nullptr;  // the list keeps its own copies
  rebuild_first_letters(p);
  visible_rows(p);
  p.itemSelect = 0;
  yyComboWidgetListScroll(w, 0, 1, 2);
}

void put_item_select(Widget w, int value) {
  ComboPart& p = part(w);
  if (value < 0 || value > p.comboItemCount) {
    p.itemSelect = 0;
    return;
  }
  p.itemSelect = value;
  if (value > 0) set_text_quiet(p, yyComboWidgetItemTextX(w, value));
  yyComboWidgetListScroll(w, value, value > 0 ? kSelectQuiet : 1, 2);
}

// ---- Class methods ---------------------------------------------------------------

void yyComboWidgetInitialize(Widget, Widget w, ArgList, Cardinal*) {
  ComboPart& p = part(w);
  p.comboType = std::clamp(p.comboType, kComboTypeSimple, kComboTypeDropDownList);
  p.textWidget = p.listWidget = p.buttonWidget = p.pullShell = nullptr;
  p.firstLetters = nullptr;
  p.dropped = 0;
  p.textGuard = 1;
  const int select = p.itemSelect;
  p.itemSelect = 0;
  w->core.width = static_cast<Dimension>(std::max(1, static_cast<int>(w->core.width)) + 1);
  yyComboWidgetChildGeometry(w);
  if (drop_form(p)) w->core.height = static_cast<Dimension>(p.textPixelHeight);
  else w->core.height = static_cast<Dimension>(std::max(static_cast<int>(w->core.height) + 1, p.textPixelHeight + 1));
  yyComboWidgetChildCreateDestroy(w, true);
  const int count = p.comboItemCount;
  yyComboWidgetSetValues2(w, p.comboItems, count);
  put_item_select(w, select);
  yyComboWidgetChildPositionResize(w);
}

void yyComboWidgetDestroy(Widget w) { yyComboWidgetChildCreateDestroy(w, false); }

void yyComboWidgetResize(Widget w) { yyComboWidgetChildPositionResize(w); }

Boolean yyComboWidgetSetValues(Widget old, Widget, Widget w, ArgList, Cardinal*) {
  ComboPart& o = part(old);
  ComboPart& p = part(w);
  if (p.comboItemCount != o.comboItemCount || p.comboItems != o.comboItems) {
    yyComboWidgetSetValues2(w, p.comboItems, p.comboItemCount);
    o.itemSelect = 0;
  }
  if (p.itemSelect != o.itemSelect) put_item_select(w, p.itemSelect);
  if (p.scrollBarDisplayPolicy != o.scrollBarDisplayPolicy)
    XtVaSetValues(p.listWidget, XmNscrollBarDisplayPolicy, p.scrollBarDisplayPolicy, nullptr);
  if (p.cursorPositionVisible != o.cursorPositionVisible)
    XtVaSetValues(p.textWidget, XmNcursorPositionVisible, p.cursorPositionVisible, nullptr);
  if (p.comboDropSize != o.comboDropSize) visible_rows(p);
  if (p.textHeight != o.textHeight && drop_form(p)) {
    yyComboWidgetChildGeometry(w);
    w->core.height = static_cast<Dimension>(p.textPixelHeight);
  }
  return False;
}

void yyComboWidgetChangeManaged(Widget w) { yyComboWidgetChildPositionResize(w); }

// The widget places its children itself.
XtGeometryResult yyComboWidgetGeometryManager(Widget, XtWidgetGeometry*, XtWidgetGeometry*) { return XtGeometryNo; }

}  // namespace

ComboClassRec comboClassRec = {
    {
        reinterpret_cast<WidgetClass>(&xmManagerClassRec),  // superclass
        const_cast<char*>("ComboBox"),                       // class_name
        sizeof(ComboRec),                                    // widget_size
        nullptr,                                             // class_initialize
        nullptr,                                             // class_part_initialize
        False,                                               // class_inited
        yyComboWidgetInitialize,                             // initialize
        nullptr,                                             // initialize_hook
        XtInheritRealize,                                    // realize
        actions,                                             // actions
        XtNumber(actions),                                   // num_actions
        resources,                                           // resources
        XtNumber(resources),                                 // num_resources
        NULLQUARK,                                           // xrm_class
        True,                                                // compress_motion
        XtExposeCompressMaximal,                             // compress_exposure
        True,                                                // compress_enterleave
        False,                                               // visible_interest
        yyComboWidgetDestroy,                                // destroy
        yyComboWidgetResize,                                 // resize
        XtInheritExpose,                                     // expose
        yyComboWidgetSetValues,                              // set_values
        nullptr,                                             // set_values_hook
        XtInheritSetValuesAlmost,                            // set_values_almost
        nullptr,                                             // get_values_hook
        nullptr,                                             // accept_focus
        XtVersion,                                           // version
        nullptr,                                             // callback_private
        XtInheritTranslations,                               // tm_table
        nullptr,                                             // query_geometry
        nullptr,                                             // display_accelerator
        nullptr,                                             // extension
    },
    {
        yyComboWidgetGeometryManager,  // geometry_manager
        yyComboWidgetChangeManaged,    // change_managed
        XtInheritInsertChild,          // insert_child
        XtInheritDeleteChild,          // delete_child
        nullptr,                       // extension
    },
    {
        nullptr,                          // resources
        0,                                // num_resources
        sizeof(XmManagerConstraintRec),   // constraint_size
        nullptr,                          // initialize
        nullptr,                          // destroy
        nullptr,                          // set_values
        nullptr,                          // extension
    },
    {
        XtInheritTranslations,   // translations
        nullptr,                 // syn_resources
        0,                       // num_syn_resources
        nullptr,                 // syn_constraint_resources
        0,                       // num_syn_constraint_resources
        XmInheritParentProcess,  // parent_process
        nullptr,                 // extension
    },
    {
        nullptr,  // extension
    },
};

WidgetClass comboWidgetClass = reinterpret_cast<WidgetClass>(&comboClassRec);

// ---- Routines on the widget -------------------------------------------------------

std::string yyComboWidgetItemTextX(Widget w, int position) {
  ComboPart& p = part(w);
  XmStringTable items = nullptr;
  int n = 0;
  XtVaGetValues(p.listWidget, XmNitems, &items, XmNitemCount, &n, nullptr);
  if (position < 1 || position > n || !items) return {};
  return unparse(items[position - 1]);
}

void yyComboWidgetListAddItemX(Widget w, XmString item, int position) {
  ComboPart& p = part(w);
  XmListAddItemUnselected(p.listWidget, item, position);
  ++p.comboItemCount;
  if (position > 0 && position <= p.itemSelect) ++p.itemSelect;
  rebuild_first_letters(p);
  visible_rows(p);
}

void yyComboWidgetListAddItemsX(Widget w, std::span<const XmString> items) {
  ComboPart& p = part(w);
  if (items.empty()) return;
  std::vector<XmString> copy(items.begin(), items.end());
  XmListAddItemsUnselected(p.listWidget, copy.data(), static_cast<int>(copy.size()), 0);
  XtVaGetValues(p.listWidget, XmNitemCount, &p.comboItemCount, nullptr);
  rebuild_first_letters(p);
  visible_rows(p);
}

void yyComboWidgetListDeleteItemX(Widget w, int position) {
  ComboPart& p = part(w);
  if (position < 1 || position > p.comboItemCount) return;
  yyComboWidgetTextClearX(w, position);
  XmListDeletePos(p.listWidget, position);
  --p.comboItemCount;
  if (position < p.itemSelect) --p.itemSelect;
  rebuild_first_letters(p);
  visible_rows(p);
}

int yyComboWidgetListMatchItemX(Widget w, XmString item, int position) {
  int* positions = nullptr;
  int n = 0;
  int found = 0;
  if (XmListGetMatchPos(part(w).listWidget, item, &positions, &n)) {
    found = std::find(positions, positions + n, position) != positions + n ? 1 : 0;
    XtFree(reinterpret_cast<char*>(positions));
  }
  return found;
}

void yyComboWidgetTextClearX(Widget w, int position) {
  ComboPart& p = part(w);
  if (position == p.itemSelect) set_text_quiet(p, "");
}

void yyComboWidgetConfigureWidgetX(Widget w, int x, int y, int width, int height) {
  ComboPart& p = part(w);
  if (drop_form(p)) {
    p.comboDropSize = std::max(1, height - p.textPixelHeight);
    visible_rows(p);
    height = p.textPixelHeight;
  }
  XtConfigureWidget(w, static_cast<Position>(x), static_cast<Position>(y),
                    static_cast<Dimension>(std::max(1, width)), static_cast<Dimension>(std::max(1, height)),
                    w->core.border_width);
}

void yyComboWidgetDeactivateComboX(Widget w) {
  if (drop_form(part(w))) pop_down(w);
}

void yyComboWidgetPopUpDown(Widget w, int request) {
  ComboPart& p = part(w);
  if (!drop_form(p)) return;
  if (request == 0) request = p.dropped ? -1 : 1;
  if (request > 0) pop_up(w);
  else pop_down(w);
}

int yyComboWidgetMatchOption(int kind, std::span<const std::string> lowerOptions, int index, std::string_view text) {
  const int n = static_cast<int>(lowerOptions.size());
  if (kind == 1) {
    const std::string want = yyComboWidgetFold(text, kComboCaseLower);
    for (int k = 0; k < n; ++k)
      if (lowerOptions[static_cast<std::size_t>(k)] == want) return k;
    return -1;
  }
  if (text.empty() || n == 0) return -1;
  const char letter = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
  for (int step = 1; step <= n; ++step) {
    const int k = ((index < 0 ? -1 : index) + step) % n;
    const std::string& o = lowerOptions[static_cast<std::size_t>(k)];
    if (!o.empty() && o[0] == letter) return k;
  }
  return -1;
}

std::string yyComboWidgetFold(std::string_view text, int caseConv) {
  std::string out(text);
  if (caseConv != kComboCaseUpper && caseConv != kComboCaseLower) return out;
  for (char& c : out) {
    const auto u = static_cast<unsigned char>(c);
    if (u >= 0x80) continue;
    c = static_cast<char>(caseConv == kComboCaseUpper ? std::toupper(u) : std::tolower(u));
  }
  return out;
}
