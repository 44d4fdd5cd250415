// Dialog fields after their creation: the common tail, field states, text
// in and out, and the focus and change reporting that turns widget events
// into FieldChanged messages.
#include <X11/keysym.h>
#include <Xm/Text.h>
#include <Xm/ToggleB.h>
#include <Xm/XmP.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "toolkit/kernel/resources.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/tooltip_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/format.h"

// The dialog engine's state.
static zelvy_dialog::State& ds = zelvy_dialog::state();

using namespace zelvy_dialog;

namespace {

// Focus bookkeeping across dialogs: the field that failed validation when it
// lost the focus, to get the focus back to it.
bool bValid = true;
FieldRecord* pStoredItem = nullptr;

// ---- Change reporting ------------------------------------------------------

void send_state_change(DialogRecord& d, FieldRecord& f) {
  yyDialogSendMessage(&d, FieldChanged, f.identifier, f.identifier, 1, -1, -1, -1, d.identifier);
}

// Radio buttons of one group are the adjacent ones with the same number.
void radio_group_range(DialogRecord& d, const FieldRecord& f, std::size_t& first, std::size_t& last) {
  const std::size_t i = static_cast<std::size_t>(&f - d.fields.data());
  first = last = i;
  while (first > 0 && d.fields[first - 1].type == kRadio && d.fields[first - 1].radioGroup == f.radioGroup) --first;
  while (last + 1 < d.fields.size() && d.fields[last + 1].type == kRadio &&
         d.fields[last + 1].radioGroup == f.radioGroup)
    ++last;
}

void set_toggle(FieldRecord& f, bool on) {
  if (f.widget) XmToggleButtonSetState(f.widget, on ? True : False, False);
}

}  // namespace

void yyDialogFieldChangedStateCB(Widget w, XtPointer, XtPointer) {
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  if (!d || !f) return;
  if (ds.bInvalidField) {
    // An invalid number elsewhere holds the dialog: the click is taken back.
    if (f->type == kCheckbox || f->type == kRadio)
      set_toggle(*f, !XmToggleButtonGetState(f->widget));
    return;
  }
  if (f->type == kRadio) {
    std::size_t a = 0, b = 0;
    radio_group_range(*d, *f, a, b);
    for (std::size_t k = a; k <= b; ++k) set_toggle(d->fields[k], &d->fields[k] == f);
  }
  send_state_change(*d, *f);
}

namespace {

// Numbers typed by the user are written back in the field's format when they leave it.
void reformat(FieldRecord& f) {
  std::string text = yyDialogGetText(f).substr(0, 51);
  if (text.find_first_not_of(' ') == std::string::npos) return;
  const std::string fmt = f.data.format.empty() ? std::string(ds.cNumDefFormat) : f.data.format;
  std::string out;
  if (f.type == kInteger) {
    int v = 0;
    int good = 0;
    double dv = 0;
    yyst2dblcheck_(dv, good, text);
    if (!good) return;
    v = static_cast<int>(dv);
    out.assign(12, ' ');
    yyint2st(v, out);
  } else {
    double v = 0;
    int good = 0;
    yyst2dblcheck_(v, good, text);
    if (!good) return;
    out.assign(51, ' ');
    if (f.type == kReal) yyrea2st(static_cast<float>(v), out, fmt);
    else yydbl2st(v, out, fmt);
  }
  while (!out.empty() && (out.back() == ' ' || out.back() == '\0')) out.pop_back();
  const std::size_t lead = out.find_first_not_of(' ');
  out = lead == std::string::npos ? std::string{} : out.substr(lead);
  const int limit = f.data.charLimit, pixels = f.data.pixelLimit;
  f.data.charLimit = f.data.pixelLimit = 0;
  ds.bNumericIgnoreChange = true;
  XmTextSetString(f.valueWidget, const_cast<char*>(out.c_str()));
  ds.bNumericIgnoreChange = false;
  f.data.charLimit = limit;
  f.data.pixelLimit = pixels;
  f.data.defined = true;
}

void focus_out(FieldRecord* f) {
  if (ds.pFieldInputFocus != f) return;
  ds.pFieldInputFocus = nullptr;
  if (ds.bNumericFieldChanged && yyDialogIsNumeric(*f)) reformat(*f);
  ds.bNumericFieldChanged = false;
  if (!ds.bFocusChange) {
    bValid = yyDialogFieldValidate(f, true);
    pStoredItem = bValid ? nullptr : f;
    if (bValid && (f->capabilities & field_capability::kCursorWhenFocused)) XtVaSetValues(f->valueWidget, XmNcursorPositionVisible, False, nullptr);
  } else {
    bValid = true;
  }
}

void focus_in(DialogRecord* d, FieldRecord* f) {
  if (ds.pFieldInputFocus == f) return;
  ds.pFieldInputFocus = f;
  ds.bNumericFieldChanged = false;
  if (!bValid && pStoredItem && pStoredItem != f) {
    if (f->type != kButton || f->identifier == 1) {
      // Only a button other than the first may leave an invalid number.
      yyDialogSound(pStoredItem->valueWidget);
      XtAppAddTimeOut(zelvy_x::state().ixContext, 0, yyDialogFocusCB, pStoredItem->valueWidget);
      return;
    }
    yyDialogRestoreValid(*pStoredItem);
    ds.bInvalidField = false;
  }
  bValid = true;
  pStoredItem = nullptr;
  ds.bInvalidField = !yyDialogFieldValidate(f, true);
  if (f->capabilities & field_capability::kCursorWhenFocused) XtVaSetValues(f->valueWidget, XmNcursorPositionVisible, True, nullptr);
  if (d->focusField < 0) {
    d->focusField = static_cast<int>(f - d->fields.data());
    yyDialogDefButProc(*d);
  } else {
    yyDialogFieldChangedMessage(*d, *f);
  }
  yyDialogFocusWindow(f->valueWidget);
}

}  // namespace

void yyDialogFieldChangedFocusEH(Widget w, XtPointer, XEvent* ev, Boolean*) {
  if (ev->type != FocusIn && ev->type != FocusOut) return;
  yyTooltipDestroy();
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  if (!d || !f) return;
  if (ev->type == FocusOut) focus_out(f);
  else focus_in(d, f);
}

namespace {

// The typed-text filter: limits, case, numeric characters, password echo.
}  // namespace

void yyDialogStringCB(Widget w, XtPointer, XtPointer call) {
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  if (!d || !f || (!yyDialogIsText(*f) && f->type != kCombo)) return;
  auto* cbs = static_cast<XmTextVerifyCallbackStruct*>(call);
  if (cbs->reason == XmCR_MODIFYING_TEXT_VALUE) {
    if (ds.bNumericIgnoreChange || !cbs->text) return;
    XmTextBlock b = cbs->text;
    TextFieldData& t = f->data;
    if (b->ptr && b->length > 0) {
      const bool multi = f->type == kString && (f->style & field_style::kMultiLine);
      const std::string in(b->ptr, static_cast<std::size_t>(b->length));
      std::string kept = yyDialogStrFilterInsert(in, t.kind, multi, -1);
      if (!kept.empty() && (t.charLimit > 0 || t.pixelLimit > 0)) {
        char* present = XmTextGetString(w);
        const std::string_view all = present ? present : "";
        // Positions count characters, the text holds UTF-8 bytes.
        auto offset = [&all](long chars) {
          std::size_t i = 0;
          for (; i < all.size() && chars > 0; ++i)
            if (i + 1 == all.size() || (static_cast<unsigned char>(all[i + 1]) & 0xC0) != 0x80) --chars;
          return i;
        };
        const std::size_t start = offset(cbs->startPos), end = offset(cbs->endPos);
        kept = yyDialogStringLimit(kept, t.charLimit, t.pixelLimit, all.substr(0, start), all.substr(end),
                                   [f](std::string_view line) { return yyDialogTextWidth(f->fontIndex, line); });
        XtFree(present);
      }
      // Nothing left, as from a control key: the selection stays as it was.
      if (kept.empty()) {
        cbs->doit = False;
        return;
      }
      yyDialogStrCase(t.kind, kept);
      std::memcpy(b->ptr, kept.data(), kept.size());
      b->length = static_cast<int>(kept.size());
      // One typed character is checked, also one of several bytes, which is
      // never part of a number.
      const std::string_view typed(b->ptr, static_cast<std::size_t>(b->length));
      if (t.kind >= 3 && yyIsUtf8(typed) && yyUtf8Length(typed) == 1 &&
          (b->length > 1 || !yyDialogStrValidNum(t.kind, b->ptr[0]))) {
        cbs->doit = False;
        return;
      }
      if ((f->style & field_style::kPassword) && f->type == kString) {
        std::string& h = t.hiddenText;
        const auto s = static_cast<std::size_t>(std::min<long>(cbs->startPos, static_cast<long>(h.size())));
        const auto e = static_cast<std::size_t>(std::min<long>(cbs->endPos, static_cast<long>(h.size())));
        h.replace(s, e - s, std::string(b->ptr, static_cast<std::size_t>(b->length)));
        std::memset(b->ptr, '*', static_cast<std::size_t>(b->length));
      }
    } else if ((f->style & field_style::kPassword) && f->type == kString) {
      std::string& h = f->data.hiddenText;
      const auto s = static_cast<std::size_t>(std::min<long>(cbs->startPos, static_cast<long>(h.size())));
      const auto e = static_cast<std::size_t>(std::min<long>(cbs->endPos, static_cast<long>(h.size())));
      h.erase(s, e - s);
    }
    f->data.edited = true;
    return;
  }
  // Value changed: only the user's edits in the focused field count.
  if (f != ds.pFieldInputFocus) return;
  if (f->reportEveryChange) yyDialogFieldChangedValue(*d, *f);
  if (f->type != kString && f->type != kCombo) {
    if (!ds.bNumericIgnoreChange) ds.bNumericFieldChanged = true;
    if (yyDialogIsNumeric(*f)) ds.bInvalidField = !yyDialogFieldValidate(f, false);
    f->data.edited = true;
  }
}

void yyDialogButtonCB(Widget w, XtPointer, XtPointer) {
  yyTooltipDestroy();
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  if (d && f) yyDialogButtonMessage(*d, f->identifier);
}

namespace {

}  // namespace

// The engine forgets a field whose widgets go.
void yyDialogDestroyFieldCB(Widget, XtPointer data, XtPointer) {
  auto* f = static_cast<FieldRecord*>(data);
  if (f && ds.pFieldInputFocus == f) ds.pFieldInputFocus = nullptr;
  if (f && pStoredItem == f) {
    pStoredItem = nullptr;
    bValid = true;
    ds.bInvalidField = false;
  }
}

// The common tail of creation (1): record, handlers, colours, initial state;
// and of destruction (0): what creation added.
void yyDialogFieldProps(int operation, DialogRecord& d, FieldRecord& f) {
  if (!f.widget) return;
  if (operation == 0) {
    XtRemoveCallback(f.widget, XtNdestroyCallback, yyDialogDestroyFieldCB, &f);
    if (f.valueWidget && (f.capabilities & field_capability::kTakesFocus)) {
      XtRemoveEventHandler(f.valueWidget, FocusChangeMask, False, yyDialogFieldChangedFocusEH, nullptr);
      XtRemoveEventHandler(f.valueWidget, KeyPressMask, False, yyDialogEscapeEH, nullptr);
    }
    if (f.image != 2 && xdisplay()) XFreePixmap(xdisplay(), f.image);
    f.image = 2;
    return;
  }
  XtVaSetValues(f.widget, XmNuserData, static_cast<XtPointer>(&f), nullptr);
  XtAddCallback(f.widget, XtNdestroyCallback, yyDialogDestroyFieldCB, &f);
  if (!f.valueWidget) f.valueWidget = f.widget;
  if (f.capabilities & field_capability::kTakesFocus) {
    XtAddEventHandler(f.valueWidget, FocusChangeMask, False, yyDialogFieldChangedFocusEH, nullptr);
    XtAddEventHandler(f.valueWidget, KeyPressMask, False, yyDialogEscapeEH, nullptr);
  }
  yyDialogKeyTranslations(d, &f);
  if ((f.capabilities & field_capability::kValueChangedCallback) && (f.type == kCheckbox || f.type == kRadio))
    XtAddCallback(f.widget, XmNvalueChangedCallback, yyDialogFieldChangedStateCB, nullptr);
  std::array<int, 6> col{256, 256, 256, 256, 256, 256};
  yyrcfieldcolour(d.resourceId, f.identifier, col);
  // The resource gives 256 for a colour of the scheme.
  if (col[0] != 256 || col[3] != 256)
    yyDialogColour(f, col[0] == 256 ? -1 : col[0], col[1], col[2], col[3] == 256 ? -1 : col[3], col[4], col[5], false);
  int state = 1;
  if (f.style & field_style::kDisabled) {
    f.style &= ~field_style::kDisabled;
    state = 0;
  } else if ((f.capabilities & field_capability::kReadOnlyState) && (f.style & field_style::kReadOnly)) {
    f.style &= ~field_style::kReadOnly;
    state = 2;
  } else {
    f.style |= field_style::kDisabled;  // forces the transition
  }
  const bool visible = f.style & field_style::kVisible;
  f.style &= ~field_style::kVisible;
  if (visible) {
    f.style |= field_style::kVisible;
    XtManageChild(f.outerWidget ? f.outerWidget : f.widget);
  }
  yyDialogFieldStateX(state, d, f);
}

namespace {

bool type_treats_readonly_as_disabled(int type) {
  switch (type) {
    case kLabel: case kGroup: case kButton: case kCheckbox: case kRadio: case kCombo: case kList: case kTab:
    case kTrackbar: case kTreeview: return true;
    default: return false;
  }
}

}  // namespace

// ---- Field routines shared by the engine -----------------------------------

XmString yyDialogXmString(std::string_view text) {
  int type = 0;
  const std::string utf8 = yyConvertEncoding(text, zelvy_x::state().iDialogEncoding, type);
  return XmStringGenerate(const_cast<char*>(utf8.c_str()), nullptr, XmCHARSET_TEXT, nullptr);
}

void yyDialogSetLabel(Widget w, std::string_view text) {
  XmString s = yyDialogXmString(text);
  XtVaSetValues(w, XmNlabelString, s, nullptr);
  XmStringFree(s);
}

int yyDialogTextWidth(int fontIndex, std::string_view text) {
  XmRenderTable rt = yyDialogRenderTable(fontIndex);
  if (!rt) return static_cast<int>(text.size()) * 6;
  XmString s = yyDialogXmString(text);
  const int w = XmStringWidth(rt, s);
  XmStringFree(s);
  return w;
}

// A label's text starts at its top, as a text field's line is placed, so
// that a label beside a field reads level with the field's text.
void yyDialogLabelSetText(const FieldRecord& f, std::string_view text) {
  const std::string wrapped = yyDialogLabelText(f, text);
  yyDialogSetLabel(f.valueWidget, wrapped);
  XmRenderTable rt = yyDialogRenderTable(f.fontIndex);
  Dimension frameShadow = 0;
  XtVaGetValues(f.widget, XmNshadowThickness, &frameShadow, nullptr);
  const int height = f.height - 2 * frameShadow;
  int textHeight = 0;
  if (rt && !wrapped.empty()) {
    XmString s = yyDialogXmString(wrapped);
    textHeight = XmStringHeight(rt, s);
    XmStringFree(s);
  }
  XtVaSetValues(f.valueWidget, XmNmarginBottom, std::max(0, height - textHeight), nullptr);
}

// Labels wrap at blanks to their width unless they ask not to.
std::string yyDialogLabelText(const FieldRecord& f, std::string_view text) {
  const bool wrap = (f.style & field_style::kLabelKindMask) != field_style::kLabelNoWrap;
  return yyDialogStrConvert(1, wrap, f.width, text,
                            [&](std::string_view line) { return yyDialogTextWidth(f.fontIndex, line); });
}

void yyDialogEscapeEH(Widget w, XtPointer, XEvent* ev, Boolean* cont) {
  if (ev->type != KeyPress) return;
  if (XLookupKeysym(&ev->xkey, 0) != XK_Escape) return;
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  if (!d) return;
  if (cont) *cont = False;  // once, from the field or else from the dialog
  // Only a value that doesn't hold is taken back: text that does is the
  // user's, which a string field would otherwise lose.
  if (ds.pFieldInputFocus && !yyDialogFieldValidate(ds.pFieldInputFocus, false))
    yyDialogRestoreValid(*ds.pFieldInputFocus);
  ds.bInvalidField = false;
  bValid = true;
  pStoredItem = nullptr;
  yyDialogButtonMessage(*d, 2);
}

// The shell reports every move of the keyboard focus among its widgets, also
// those that the widgets take without an X focus event of their own.
void yyDialogFocusMovedCB(Widget, XtPointer, XtPointer call) {
  auto* cbs = static_cast<XmFocusMovedCallbackStruct*>(call);
  if (!cbs) return;
  FieldRecord* f = nullptr;
  if (cbs->old_focus && yyDialogFieldInfo(cbs->old_focus, f) && f) focus_out(f);
  f = nullptr;
  DialogRecord* d = cbs->new_focus ? yyDialogFieldInfo(cbs->new_focus, f) : nullptr;
  if (d && f && (f->capabilities & field_capability::kTakesFocus)) focus_in(d, f);
}

void yyDialogFieldCreate(DialogRecord& d) {
  std::vector<int> types, groups;
  std::vector<std::uint32_t> styles;
  for (const FieldRecord& f : d.fields) {
    types.push_back(f.type);
    styles.push_back(f.style);
  }
  d.radioGroupCount = yyDialogRadioGroups(types, styles, groups);
  for (std::size_t i = 0; i < d.fields.size(); ++i) d.fields[i].radioGroup = groups[i];
  auto framing = [](const FieldRecord& f) {
    using namespace field_style;
    const std::uint32_t k = f.style & kPictureKindMask;
    return f.type == kPicture &&
           (k == kPictureFrameDark || k == kPictureFrameGrey || k == kPictureFrameWhite || k == kPictureEtchedFrame);
  };
  // Later fields first, frames and groups last, so that they stack under what they enclose.
  for (int pass = 1; pass <= 3; ++pass)
    for (std::size_t k = d.fields.size(); k-- > 0;) {
      FieldRecord& f = d.fields[k];
      const int p = f.type == kGroup ? 3 : framing(f) ? 2 : 1;
      if (p != pass) continue;
      yyDialogField(1, d, f);
    }
}

namespace {

// A text widget draws its text while insensitive in its shadow colour: that
// becomes the disabled text colour for the time, so that disabled text looks
// alike in every kind of field, labels included. A combo's box follows its text.
void disabled_text_look(FieldRecord& f, bool disabled) {
  Widget text = f.valueWidget;
  if (!text || !(XmIsText(text) || XmIsTextField(text))) return;
  Widget box = f.type == kCombo && f.widget != text ? f.widget : nullptr;
  if (disabled) {
    if (f.shadowsSaved) return;
    XtVaGetValues(text, XmNtopShadowColor, &f.enabledShadows[0], XmNbottomShadowColor, &f.enabledShadows[1], nullptr);
    if (box) XtVaGetValues(box, XmNtopShadowColor, &f.enabledShadows[2], XmNbottomShadowColor, &f.enabledShadows[3], nullptr);
    f.shadowsSaved = true;
    for (Widget w : {text, box})
      if (w) XtVaSetValues(w, XmNtopShadowColor, yyDialogScheme(10), XmNbottomShadowColor, yyDialogScheme(10), nullptr);
  } else if (f.shadowsSaved) {
    XtVaSetValues(text, XmNtopShadowColor, f.enabledShadows[0], XmNbottomShadowColor, f.enabledShadows[1], nullptr);
    if (box) XtVaSetValues(box, XmNtopShadowColor, f.enabledShadows[2], XmNbottomShadowColor, f.enabledShadows[3], nullptr);
    f.shadowsSaved = false;
  }
}

}  // namespace

void yyDialogFieldVisible(DialogRecord&, FieldRecord& f, bool visible) {
  Widget outer = f.outerWidget ? f.outerWidget : f.widget;
  if (!outer || visible == static_cast<bool>(f.style & field_style::kVisible)) return;
  if (f.type == kTab) yyTabWidgetVisibleX(f, visible);
  if (visible) {
    f.style |= field_style::kVisible;
    XtManageChild(outer);
  } else {
    f.style &= ~field_style::kVisible;
    XtUnmanageChild(outer);
  }
}

void yyDialogFieldStateX(int state, DialogRecord& d, FieldRecord& f) {
  if (!f.widget) return;
  Widget outer = f.outerWidget ? f.outerWidget : f.widget;
  if (type_treats_readonly_as_disabled(f.type) && state == 2) state = 0;
  if ((f.type == kPicture || f.type == kProgress) && state != 3) state = 1;
  auto show = [&] { yyDialogFieldVisible(d, f, true); };
  auto background = [&](int col) {
    if (!f.defaultBackground) return;
    XtVaSetValues(f.valueWidget, XtNbackground, yyDialogScheme(col), nullptr);
  };
  auto foreground = [&](int col) {
    if (f.defaultForeground && (f.capabilities & field_capability::kForegroundSettable)) XtVaSetValues(f.valueWidget, XtNforeground, yyDialogScheme(col), nullptr);
  };
  // A spinner passes the state on to its text and arrows.
  Widget editable = (f.capabilities & field_capability::kSpinner) ? f.widget : f.valueWidget;
  const int normalFg = f.type == kGroup ? 16 : (f.type == kButton || f.type == kTab || yyDialogPushLike(f)) ? 0 : 14;
  switch (state) {
    case 0:
      show();
      if ((f.capabilities & field_capability::kCanDisable) && !(f.style & field_style::kDisabled)) {
        f.style |= field_style::kDisabled;
        XtSetSensitive(outer, False);
      }
      if (f.capabilities & field_capability::kBackgroundFollowsState) background(3);
      foreground(10);
      disabled_text_look(f, true);
      break;
    case 1:
      show();
      if (f.capabilities & field_capability::kCanDisable) {
        f.style &= ~field_style::kDisabled;
        XtSetSensitive(outer, True);
      }
      if (f.capabilities & field_capability::kReadOnlyState) {
        f.style &= ~field_style::kReadOnly;
        if (yyDialogIsText(f) || f.type == kCombo) XtVaSetValues(editable, XmNeditable, True, nullptr);
      }
      if (f.type == kButton) background(17);
      else if (f.capabilities & field_capability::kBackgroundFollowsState) background(15);
      foreground(normalFg);
      disabled_text_look(f, false);
      break;
    case 2:
      show();
      if ((f.capabilities & field_capability::kCanDisable) && (f.capabilities & field_capability::kReadOnlyState)) {
        f.style &= ~field_style::kDisabled;
        XtSetSensitive(outer, True);
        f.style |= field_style::kReadOnly;
        if (yyDialogIsText(f) || f.type == kCombo) XtVaSetValues(editable, XmNeditable, False, nullptr);
      }
      if (f.capabilities & field_capability::kBackgroundFollowsState) background(3);
      foreground(f.type == kGroup ? 14 : normalFg);
      disabled_text_look(f, false);
      break;
    case 3: yyDialogFieldVisible(d, f, false); break;
    default: break;
  }
}

void yyDialogFieldState(int fieldid, int state, int dialogIndex) {
  const int fi = yyDialogFindField(fieldid, dialogIndex);
  if (fi < 0) return;
  DialogRecord& d = ds.wDialogInfo[dialogIndex];
  FieldRecord& f = d.fields[static_cast<std::size_t>(fi)];
  f.lastState = state;
  // A fixed dialog cut smaller by the program keeps the fields it cut off
  // away; the request waits for the size that brings them back.
  if (d.anchorFieldId == 0 && yyDialogFieldInRect({f.x, f.y, f.width, f.height}, d.width, d.height) == 0) return;
  yyDialogField(state + 3, d, f);
}

FieldRecord* yyDialogGetField(int fieldid, int dialogIndex) {
  const int fi = yyDialogFindField(fieldid, dialogIndex);
  return fi < 0 ? nullptr : &ds.wDialogInfo[dialogIndex].fields[static_cast<std::size_t>(fi)];
}

int yyinfodialogfieldstate_(const FieldRecord& f) {
  if (!(f.style & field_style::kVisible)) return 3;
  if (f.style & field_style::kDisabled) return 0;
  if (f.type >= kString && f.type <= kDouble && (f.style & field_style::kReadOnly)) return 2;
  return 1;
}

void yyDialogFieldChangedValue(DialogRecord& d, FieldRecord& f) {
  if (!d.widget || !XtIsRealized(d.widget)) return;
  // Sent through the server, so the application sees it after this callback.
  Display* dpy = xdisplay();
  XEvent ev{};
  ev.xclient.type = ClientMessage;
  ev.xclient.window = XtWindow(d.widget);
  ev.xclient.message_type = XInternAtom(dpy, "_ZELV_MESSAGE", False);
  ev.xclient.format = 32;
  ev.xclient.data.l[0] = FieldChanged;
  ev.xclient.data.l[1] = f.identifier;
  ev.xclient.data.l[2] = -1;
  ev.xclient.data.l[3] = -1;
  ev.xclient.data.l[4] = d.identifier;
  XSendEvent(dpy, ev.xclient.window, False, 0, &ev);
  XFlush(dpy);
}

bool yyDialogFieldValidate(FieldRecord* f, bool store) {
  if (!f || !yyDialogIsNumeric(*f)) return true;
  return yyDialogValidateText(f->data, yyDialogGetText(*f), store, f->allowClear);
}

void yyDialogRestoreValid(FieldRecord& f) {
  if (!yyDialogIsText(f)) return;
  std::string text;
  if (yyDialogIsNumeric(f) && f.data.valid) {
    const std::string fmt = f.data.format.empty() ? std::string(ds.cNumDefFormat) : f.data.format;
    if (f.type == kInteger) {
      text.assign(12, ' ');
      yyint2st(static_cast<int>(f.data.value), text);
    } else {
      text.assign(51, ' ');
      if (f.type == kReal) yyrea2st(static_cast<float>(f.data.value), text, fmt);
      else yydbl2st(f.data.value, text, fmt);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
    const std::size_t lead = text.find_first_not_of(' ');
    text = lead == std::string::npos ? std::string{} : text.substr(lead);
  }
  const double v = f.data.value;
  const bool valid = f.data.valid;
  yyDialogPutString(f, v, text, f.data.format, false);
  f.data.valid = valid && !text.empty();
  f.data.value = v;
}

void yyDialogPutString(FieldRecord& f, double number, std::string_view text, std::string_view format,
                       bool clearDefined) {
  std::string t;
  for (char c : text)
    if (c != '\r') t += c;
  if (f.textKind == 1 || f.textKind == 3) {
    char mnemonic = 0;
    f.text = yyDialogStrGetMnemonic(t, mnemonic);
    Widget target = f.valueWidget ? f.valueWidget : f.widget;
    if (f.textKind == 3) {
      if (f.text.empty()) XtUnmanageChild(target);
      else XtManageChild(target);
    }
    if (f.type == kLabel) yyDialogLabelSetText(f, f.text);
    else yyDialogSetLabel(target, f.text);
    return;
  }
  if (f.textKind != 2) return;
  const bool numeric = yyDialogIsNumeric(f);
  const int limit = f.data.charLimit, pixels = f.data.pixelLimit;
  if (numeric) f.data.charLimit = f.data.pixelLimit = 0;
  int texttype = 0;
  std::string shown = yyConvertEncoding(t, zelvy_x::state().iDialogEncoding, texttype);
  if (f.type == kString && (f.style & field_style::kPassword)) {
    f.data.hiddenText = t;
    shown.assign(t.size(), '*');
  }
  f.data.storedBytes = t;
  f.data.storedShown = shown;
  const int savedLimit = f.data.charLimit;
  f.data.charLimit = 0;
  ds.bNumericIgnoreChange = true;
  XmTextSetString(f.valueWidget, const_cast<char*>(shown.c_str()));
  if (f.type == kString && (f.style & field_style::kPassword)) f.data.hiddenText = t;
  ds.bNumericIgnoreChange = false;
  f.data.charLimit = savedLimit;
  if (numeric) {
    f.data.charLimit = limit;
    f.data.pixelLimit = pixels;
    yyDialogNumericStored(f.data, t, number, format, clearDefined);
  }
}

std::string yyDialogGetText(const FieldRecord& f) {
  if (f.textKind == 1 || f.textKind == 3) return f.text;
  if (f.textKind != 2 || !f.valueWidget) return {};
  if (f.type == kString && (f.style & field_style::kPassword)) return f.data.hiddenText;
  char* s = XmTextGetString(f.valueWidget);
  std::string out = s ? s : "";
  XtFree(s);
  // Unedited, the text goes back byte for byte; edited, a text that came as
  // ISO 8859-1 stays in it when it can.
  if (out == f.data.storedShown) return f.data.storedBytes;
  if (f.data.storedBytes != f.data.storedShown)
    if (auto latin = yyUtf8ToLatin1(out)) return *latin;
  return out;
}

// ---- Public routines -------------------------------------------------------

void WDialogFieldState(int fieldid, int state) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogFieldState");
  if (!f) return;
  if (state < 0 || state > 3) return yyerror(1006, "WDialogFieldState");
  yyDialogFieldState(fieldid, state, ds.iDlgCur);
}

void WDialogTooltip(int fieldid, std::optional<std::string_view> text) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogTooltip");
  if (!f) return;
  f->tooltip.assign(text.value_or(std::string_view{}));
  while (!f->tooltip.empty() && f->tooltip.back() == ' ') f->tooltip.pop_back();
  // An emptied text keeps the handler, which then finds nothing to show.
  if (f->tooltip.empty() || f->tooltipHandler || !f->widget) return;
  XtAddEventHandler(f->widget, EnterWindowMask | LeaveWindowMask, False, yyDialogTooltipEH, nullptr);
  f->tooltipHandler = true;
}

void yyDialogTooltipEH(Widget w, XtPointer, XEvent* ev, Boolean*) {
  if (ev->type == EnterNotify) {
    yyTooltipArm(yyDialogTooltipCB, reinterpret_cast<XtPointer>(w));
  } else if (ev->type == LeaveNotify && ev->xcrossing.detail != NotifyInferior) {
    yyTooltipLeave();
  }
}

void yyDialogTooltipCB(XtPointer data, XtIntervalId*) {
  auto w = reinterpret_cast<Widget>(data);
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFieldInfo(w, f);
  if (d && f && !f->tooltip.empty()) yyTooltipCreate(w, f->tooltip);
}

int winfodialogfield(int fieldid, int item) {
  if (zelvy_data::data().icurdialog == 0 || ds.iDlgCur < 0) return 0;
  const int fi = yyDialogFindField(fieldid, ds.iDlgCur);
  if (fi < 0) return 0;
  const FieldRecord& f = ds.wDialogInfo[ds.iDlgCur].fields[static_cast<std::size_t>(fi)];
  Widget w = f.outerWidget ? f.outerWidget : f.widget;
  Position x = 0, y = 0;
  Dimension wd = 0, ht = 0;
  if (w) XtVaGetValues(w, XtNx, &x, XtNy, &y, XtNwidth, &wd, XtNheight, &ht, nullptr);
  switch (item) {
    case 1: return x;
    case 2: return y;
    case 3: return wd;
    case 4: return ht;
    case 5: return f.type;
    case 6: return yyinfodialogfieldstate_(f);
    case 7: case 8: {
      if (f.type != kTrackbar) return 0;
      int lo = 0, hi = 0;
      XtVaGetValues(f.widget, XmNminimum, &lo, XmNmaximum, &hi, nullptr);
      return item == 7 ? lo : hi;
    }
    case 9: return yydialoggetmenuoptioncount(fieldid);
    case 10: return yydialoggetmenutype(f);
    default: return 0;
  }
}

// The focus records of fields of a dialog about to go away.
void yyDialogForgetFields(DialogRecord& d) {
  for (FieldRecord& f : d.fields) {
    if (&f == ds.pFieldInputFocus) ds.pFieldInputFocus = nullptr;
    if (&f == pStoredItem) {
      pStoredItem = nullptr;
      bValid = true;
      ds.bInvalidField = false;
    }
  }
}

// ---- Focus by program ------------------------------------------------------

void yyDialogFocus(FieldRecord& f, int position) {
  if (yyDialogGridFocus(f)) return;
  Widget target = f.valueWidget ? f.valueWidget : f.widget;
  if (!target) return;
  XmProcessTraversal(target, XmTRAVERSE_CURRENT);
  if (!XmIsText(target)) return;
  const bool multi = f.type == kString && (f.style & field_style::kMultiLine);
  const XmTextPosition last = XmTextGetLastPosition(target);
  if (position >= 0) {
    XmTextClearSelection(target, XtLastTimestampProcessed(XtDisplay(target)));
    XmTextSetInsertionPosition(target, std::min<XmTextPosition>(position, last));
  } else if (multi) {
    XmTextClearSelection(target, XtLastTimestampProcessed(XtDisplay(target)));
    XmTextSetInsertionPosition(target, 0);
  } else {
    XmTextSetInsertionPosition(target, last);
    XmTextSetSelection(target, 0, last, XtLastTimestampProcessed(XtDisplay(target)));
  }
}

bool yyDialogFocusFirst(DialogRecord& d) {
  for (FieldRecord& f : d.fields) {
    if (!f.widget || !(f.style & field_style::kTabStop) || !(f.capabilities & field_capability::kTabReach)) continue;
    if (!(f.style & field_style::kVisible) || (f.style & field_style::kDisabled)) continue;
    // A radio group is entered at its button that is set.
    if (f.type == kRadio && !XmToggleButtonGetState(f.widget)) continue;
    yyDialogFocus(f, -1);
    return true;
  }
  return false;
}

void WDialogSetField(int fieldid, std::optional<int> position) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WDialogSetField");
  if (!f) return;
  // From 1 here, from 0 below; absent selects all.
  yyDialogFocus(*f, position && *position >= 1 ? *position - 1 : -1);
}

// ---- Colours ---------------------------------------------------------------

void yyDialogColour(FieldRecord& f, int fgRed, int fgGreen, int fgBlue, int bgRed, int bgGreen, int bgBlue,
                    bool forceScheme) {
  constexpr int kLeave = -1, kScheme = 256;
  Widget value = f.valueWidget ? f.valueWidget : f.widget;
  if (!value) return;
  if (f.type == kPicture) {
    if (bgRed == kLeave) return;
    f.pictureBackground = bgRed == kScheme ? yyDialogScheme(3) : yyAllocPixel(bgRed, bgGreen, bgBlue);
    f.defaultBackground = bgRed == kScheme;
    XtVaSetValues(value, XtNbackground, f.pictureBackground, nullptr);
    return;
  }
  if (fgRed != kLeave && (f.capabilities & field_capability::kForegroundSettable)) {
    const int scheme = f.type == kGroup ? 16 : (f.type == kButton || f.type == kTab || yyDialogPushLike(f)) ? 0 : 14;
    f.defaultForeground = fgRed == kScheme;
    XtVaSetValues(value, XtNforeground, f.defaultForeground ? yyDialogScheme(scheme) : yyAllocPixel(fgRed, fgGreen, fgBlue),
                  nullptr);
  }
  if (bgRed != kLeave && (f.capabilities & field_capability::kBackgroundSettable)) {
    int scheme = 15;
    const bool inactive = (f.style & field_style::kDisabled) || (f.style & field_style::kReadOnly);
    if (f.type == kButton) scheme = 17;
    else if (!(f.capabilities & field_capability::kBackgroundFollowsState)) scheme = 3;
    else if ((f.capabilities & field_capability::kReadOnlyState) && (inactive || forceScheme)) scheme = 3;
    f.defaultBackground = bgRed == kScheme;
    const Pixel p = f.defaultBackground ? yyDialogScheme(scheme) : yyAllocPixel(bgRed, bgGreen, bgBlue);
    XtVaSetValues(value, XtNbackground, p, nullptr);
    if (f.outerWidget) XtVaSetValues(f.outerWidget, XtNbackground, p, nullptr);
  }
}

void yydialogcolour_(int fieldid, int fgRed, int fgGreen, int fgBlue, int bgRed, int bgGreen, int bgBlue,
                     int& error) {
  error = 0;
  if (zelvy_data::data().icurdialog == 0 || ds.iDlgCur < 0) {
    error = 1005;
    return;
  }
  FieldRecord* f = yyDialogGetField(fieldid, ds.iDlgCur);
  if (!f) {
    error = 1006;
    return;
  }
  yyDialogColour(*f, fgRed, fgGreen, fgBlue, bgRed, bgGreen, bgBlue, false);
  // An image's transparent parts take the new background.
  if (f->imageResourceId) yyDialogInitImage(*f);
}
