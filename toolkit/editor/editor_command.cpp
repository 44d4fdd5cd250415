// The editor's command line, plain or with a history of the commands given,
// which hands each line to the program; and the editor's toolbar.
#include <X11/IntrinsicP.h>
#include <X11/keysym.h>
#include <Xm/ComboBox.h>
#include <Xm/Label.h>
#include <Xm/List.h>
#include <Xm/PushB.h>
#include <Xm/Text.h>
#include <Xm/TextF.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "toolkit/base/error.h"
#include "toolkit/editor/editor.h"
#include "toolkit/editor/editor_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/toolbar.h"
#include "toolkit/kernel/toolbar_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

constexpr int kGoImage = 32137, kGoImageType = 2;  // an icon image
constexpr int kSmallStrip = 32109, kLargeStrip = 32117, kSmallButton = 16, kLargeButton = 32;
constexpr int kLineRightGap = 15;  // the command line stops short of the window's right edge
constexpr int kGoShadow = 2;

XtPointer as_client(int h) { return reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(h)); }
int as_handle(XtPointer p) { return static_cast<int>(reinterpret_cast<std::intptr_t>(p)); }
Time now() { return XtLastTimestampProcessed(xdisplay()); }

// The combo box's entry field is a text field, the plain line a text widget.
std::string line_text(Widget w) {
  char* s = XmIsTextField(w) ? XmTextFieldGetString(w) : XmTextGetString(w);
  std::string t = s ? s : "";
  XtFree(s);
  return t;
}

void set_line_text(Widget w, const std::string& text) {
  if (XmIsTextField(w)) {
    XmTextFieldSetString(w, const_cast<char*>(text.c_str()));
    XmTextFieldSetInsertionPosition(w, XmTextFieldGetLastPosition(w));
  } else {
    XmTextSetString(w, const_cast<char*>(text.c_str()));
    XmTextSetInsertionPosition(w, XmTextGetLastPosition(w));
  }
}

Widget history_list(const EditRecord& r) {
  return r.CommandKind == 2 && r.CommandWidget ? XtNameToWidget(r.CommandWidget, "*List") : nullptr;
}

std::string list_item(Widget list, int index) {
  XmStringTable items = nullptr;
  int count = 0;
  XtVaGetValues(list, XmNitems, &items, XmNitemCount, &count, nullptr);
  if (index < 0 || index >= count) return {};
  char* s = static_cast<char*>(XmStringUnparse(items[index], nullptr, XmCHARSET_TEXT, XmCHARSET_TEXT, nullptr, 0,
                                               XmOUTPUT_ALL));
  std::string t = s ? s : "";
  XtFree(s);
  return t;
}

// A history item at 0-based `index`; beyond the limit the oldest goes.
void insert_history(Widget list, int index, const std::string& text) {
  int count = 0;
  XtVaGetValues(list, XmNitemCount, &count, nullptr);
  XmString s = XmStringCreateLocalized(const_cast<char*>(text.c_str()));
  XmListAddItemUnselected(list, s, std::clamp(index, 0, count) + 1);
  XmStringFree(s);
  if (count + 1 > kEditHistoryLimit) XmListDeletePos(list, 0);
}

// The record of the current editor and its command line; the error otherwise.
EditRecord* command_editor(int& error) {
  error = 0;
  EditRecord* r = yyEditCurrent(nullptr);
  if (!r) error = 1028;
  else if (r->CommandKind == 0) error = 1032;
  return error ? nullptr : r;
}

Dimension preferred_height(Widget w) {
  XtWidgetGeometry want{};
  XtQueryGeometry(w, nullptr, &want);
  Dimension h = want.height;
  if (!(want.request_mode & CWHeight)) XtVaGetValues(w, XmNheight, &h, nullptr);
  return h;
}

Dimension width_of(Widget w) {
  if (!w) return 0;
  XtWidgetGeometry want{};
  XtQueryGeometry(w, nullptr, &want);
  Dimension wd = want.width;
  if (!(want.request_mode & CWWidth)) XtVaGetValues(w, XmNwidth, &wd, nullptr);
  return wd;
}

// The editor whose main text or command line this is.
EditRecord* editor_of(Widget w) {
  for (int h = 1; h < zelvy_win::kSlots; ++h)
    if (EditRecord* r = yyEditRecordOf(h); r && (r->Text == w || r->CommandText == w)) return r;
  return nullptr;
}

// Shift+Tab in the text (Tab too in a viewer, which takes no tabs), and Tab
// or Shift+Tab in the line, move the keyboard between the two.
void add_focus_keys(EditRecord& r) {
  static bool registered = false;
  if (!registered) {
    XtActionsRec action{const_cast<char*>("zelv-edit-key"), yyEditKeyTrans};
    XtAppAddActions(zelvy_x::state().ixContext, &action, 1);
    registered = true;
  }
  const bool viewer = r.Flags & edit_flag::kViewer;
  XtOverrideTranslations(r.Text, XtParseTranslationTable(viewer ? "Shift<Key>Tab: zelv-edit-key(t)\n"
                                                                  "<Key>Tab: zelv-edit-key(t)"
                                                                : "Shift<Key>Tab: zelv-edit-key(t)"));
  XtOverrideTranslations(r.CommandText,
                         XtParseTranslationTable("Shift<Key>Tab: zelv-edit-key(t)\n<Key>Tab: zelv-edit-key(t)"));
}

}  // namespace

void yyEditKeyTrans(Widget w, XEvent*, String* params, Cardinal* count) {
  EditRecord* r = editor_of(w);
  if (!r || !count || *count < 1 || params[0][0] != 't' || !r->CommandText) return;
  // The X focus as well: the pointer would otherwise keep the keys where it is.
  yyEditFocus(w == r->Text ? r->CommandText : r->Text, 3);
}

// The line goes to the program as an editor command; a line with a history
// keeps it there, once, and is selected so that typing replaces it.
void yyEditSendCommand(EditRecord& r) {
  if (!r.CommandText) return;
  yyMsgSend(EditorCommand, -1, -1, -1, -1, -1, -1, r.Window_, 0);
  if (r.CommandKind != 2) return;
  const std::string text = line_text(r.CommandText);
  if (Widget list = history_list(r); list && !text.empty()) {
    XmString s = XmStringCreateLocalized(const_cast<char*>(text.c_str()));
    const bool known = XmListItemExists(list, s);
    XmStringFree(s);
    if (!known) insert_history(list, 0, text);
  }
  XmTextFieldSetSelection(r.CommandText, 0, XmTextFieldGetLastPosition(r.CommandText), now());
}

// Keys in the command line with no modifier but the locks: Escape clears
// it, Return and Enter send it.
void yyEditTextEH(Widget w, XtPointer client, XEvent* ev, Boolean*) {
  EditRecord* r = yyEditRecordOf(as_handle(client));
  if (!r || ev->type != KeyPress) return;
  if (ev->xkey.state & ~(LockMask | Mod2Mask)) return;
  const KeySym ks = XLookupKeysym(&ev->xkey, 0);
  if (ks == XK_Escape) set_line_text(w, "");
  else if (ks == XK_Return || ks == XK_KP_Enter) yyEditSendCommand(*r);
}

void yyEditCmdGoCB(Widget, XtPointer client, XtPointer) {
  if (EditRecord* r = yyEditRecordOf(as_handle(client))) yyEditSendCommand(*r);
}

void yyEditCommandCreate(EditRecord& r) {
  if (!(r.Flags & edit_flag::kCommandLine)) return;
  if (r.Mode == 1) {
    yyerror(1033, "WEditFile");
    return;
  }
  const int h = r.Window_;
  Widget client = zelvy_win::state().wtClient[static_cast<std::size_t>(h)];
  const auto& ad = zelvy_x::state().appData;
  Arg a[8];
  int n = 0;
  if ((r.Flags & edit_flag::kCommandFont) && r.RenderTable) {
    XtSetArg(a[n], XmNrenderTable, r.RenderTable); ++n;
  }
  if (r.Flags & edit_flag::kHistory) {
    XtSetArg(a[n], XmNcomboBoxType, XmDROP_DOWN_COMBO_BOX); ++n;
    r.CommandWidget = XmCreateComboBox(client, const_cast<char*>("ComboBox"), a, n);
    r.CommandText = XtNameToWidget(r.CommandWidget, "*Text");
    r.CommandKind = 2;
    XtVaSetValues(r.CommandText, XmNcursorPositionVisible, False, nullptr);
    XtManageChild(r.CommandWidget);
    r.GoButton = XmCreatePushButton(client, const_cast<char*>("ButCmdGo"), nullptr, 0);
    XmString go = XmStringCreateLocalized(const_cast<char*>("Go"));
    XtVaSetValues(r.GoButton, XmNlabelString, go, XmNshadowThickness,
                  zelvy_x::state().bFlatStyle ? 0 : kGoShadow, nullptr);
    XmStringFree(go);
    int iw = 0, ih = 0;
    Pixel bg = 0;
    XtVaGetValues(r.GoButton, XmNbackground, &bg, nullptr);
    const Pixmap image = yyResourceImagePixmap(kGoImage, kGoImageType, bg, iw, ih);
    if (image != kNoPixmap) XtVaSetValues(r.GoButton, XmNlabelType, XmPIXMAP, XmNlabelPixmap, image, nullptr);
    XtAddCallback(r.GoButton, XmNactivateCallback, yyEditCmdGoCB, as_client(h));
    XtManageChild(r.GoButton);
  } else {
    XtSetArg(a[n], XmNmarginWidth, 1); ++n;
    XtSetArg(a[n], XmNmarginHeight, 1); ++n;
    XtSetArg(a[n], XmNcursorPositionVisible, False); ++n;
    XtSetArg(a[n], XmNeditMode, XmSINGLE_LINE_EDIT); ++n;
    r.CommandWidget = XmCreateText(client, const_cast<char*>("TextCommandLine"), a, n);
    r.CommandText = r.CommandWidget;
    r.CommandKind = 1;
    XtManageChild(r.CommandWidget);
  }
  XtVaSetValues(r.CommandText, XmNforeground, ad.editForeColor, XmNbackground, ad.editBackColor, nullptr);
  for (const char* cb : {XmNmotionVerifyCallback, XmNfocusCallback, XmNlosingFocusCallback})
    XtAddCallback(r.CommandText, cb, yyEditTextCallback(), as_client(h));
  XtAddEventHandler(r.CommandText, KeyPressMask, False, yyEditTextEH, as_client(h));
  add_focus_keys(r);
}

void yyEditCommandDestroy(EditRecord& r) {
  if (r.CommandText) {
    for (const char* cb : {XmNmotionVerifyCallback, XmNfocusCallback, XmNlosingFocusCallback})
      XtRemoveAllCallbacks(r.CommandText, cb);
    XtRemoveEventHandler(r.CommandText, KeyPressMask, False, yyEditTextEH, as_client(r.Window_));
  }
  Pixmap image = XmUNSPECIFIED_PIXMAP;
  if (r.GoButton) {
    XtRemoveAllCallbacks(r.GoButton, XmNactivateCallback);
    unsigned char type = 0;
    XtVaGetValues(r.GoButton, XmNlabelType, &type, XmNlabelPixmap, &image, nullptr);
    if (type != XmPIXMAP) image = XmUNSPECIFIED_PIXMAP;
  }
  for (Widget* w : {&r.PromptLabel, &r.GoButton, &r.CommandWidget})
    if (*w) XtDestroyWidget(*w);
  // The button's image is the editor's own; the widget never frees it.
  if (image != XmUNSPECIFIED_PIXMAP && image != kNoPixmap && xdisplay()) XFreePixmap(xdisplay(), image);
  r.PromptLabel = r.GoButton = r.CommandWidget = r.CommandText = nullptr;
  r.CommandKind = 0;
}

void yyEditCommandLayout(EditRecord& r, int width, int height) {
  if (!r.CommandWidget || !r.Text) return;
  const int cmd = std::max(1, static_cast<int>(preferred_height(r.CommandWidget)));
  const int texth = std::max(1, height - cmd);
  const bool above = r.Flags & edit_flag::kCommandAbove;
  XtConfigureWidget(XtParent(r.Text), 0, above ? cmd : 0, std::max(1, width), texth, 0);
  const int y = above ? 0 : texth;
  const int line = std::max(1, width - kLineRightGap);
  const int prompt = r.PromptLabel ? width_of(r.PromptLabel) : 0;
  const int go = r.GoButton ? width_of(r.GoButton) : 0;
  if (r.PromptLabel) XtConfigureWidget(r.PromptLabel, 0, y, std::max(1, prompt), cmd, 0);
  if (r.GoButton) XtConfigureWidget(r.GoButton, std::max(0, line - go), y, std::max(1, go), cmd, 0);
  XtConfigureWidget(r.CommandWidget, prompt, y, std::max(1, line - prompt - go), cmd, 0);
}

void yyEditToolbarCreate(EditRecord& r) {
  using namespace edit_flag;
  using namespace edit_id;
  const std::uint32_t f = r.Flags;
  if (f & kNoToolbar) return;
  const bool viewer = f & kViewer;
  const bool can_new = !(f & kNoNewOpen) && !viewer, can_open = !(f & kNoNewOpen);
  const bool can_save = !(f & kNoSave) && !viewer;
  const std::array<ToolbarDescriptor, 9> rows = {{
      {can_new, "New", kNew},
      {can_open, "Open", kOpen},
      {can_save, "Save", kSave},
      {!(f & kNoPrint), "Print", kPrint},
      {true, "Find", kFind},
      {can_new || can_open || can_save, "", 0},
      {!viewer, "Cut", kCut},
      {true, "Copy", kCopy},
      {!viewer, "Paste", kPaste},
  }};
  const bool large = f & kLargeToolbar;
  yyMenuLoadDynamicToolbar(rows, r.Window_, large ? kLargeStrip : kSmallStrip, large ? kLargeButton : kSmallButton);
  ToolbarRecord* bar = zelvy_toolbar::state().pwToolbar[static_cast<std::size_t>(r.Window_)][kToolbarTop].get();
  r.Toolbar = bar;
}

int yyEditHistoryCount(const EditRecord& r) {
  Widget list = history_list(r);
  int count = 0;
  if (list) XtVaGetValues(list, XmNitemCount, &count, nullptr);
  return count;
}

// ---- Public routines -------------------------------------------------------------

void yyeditprompt(int& error, std::string_view text) {
  EditRecord* r = command_editor(error);
  if (!r) return;
  if (text.empty()) {
    if (r->PromptLabel) XtDestroyWidget(r->PromptLabel);
    r->PromptLabel = nullptr;
  } else {
    if (!r->PromptLabel) {
      r->PromptLabel = XmCreateLabel(zelvy_win::state().wtClient[static_cast<std::size_t>(r->Window_)],
                                     const_cast<char*>("CommandPrompt"), nullptr, 0);
      XtManageChild(r->PromptLabel);
    }
    const std::string t(text);
    XmString s = XmStringCreateLocalized(const_cast<char*>(t.c_str()));
    XtVaSetValues(r->PromptLabel, XmNlabelString, s, nullptr);
    XmStringFree(s);
  }
  yyWindowResize(r->Window_);
}

void yyeditputcommand(int& error, std::string_view text) {
  if (EditRecord* r = command_editor(error)) set_line_text(r->CommandText, std::string(text));
}

void yyeditgetcommand(int& error, std::string& text, std::optional<int> room) {
  text.clear();
  EditRecord* r = command_editor(error);
  if (!r) return;
  text = line_text(r->CommandText);
  if (room && static_cast<int>(text.size()) > *room) {
    text.resize(static_cast<std::size_t>(std::max(0, *room)));
    error = 1023;
  }
}

void yyeditcheckhistory(int& error) {
  EditRecord* r = yyEditCurrent(nullptr);
  error = !r ? 1028 : (r->CommandKind == 2 ? 0 : 1092);
}

void yyeditclearhistory(int& error) {
  yyeditcheckhistory(error);
  if (error) return;
  XmListDeleteAllItems(history_list(*yyEditCurrent(nullptr)));
}

void yyeditputhistory(int index, std::string_view text) {
  int error = 0;
  yyeditcheckhistory(error);
  if (error) {
    yyerror(error, "yyeditputhistory");
    return;
  }
  insert_history(history_list(*yyEditCurrent(nullptr)), index, std::string(text));
}

void yyeditgethistory(int index, std::string& text) {
  text.clear();
  int error = 0;
  yyeditcheckhistory(error);
  if (error) {
    yyerror(error, "yyeditgethistory");
    return;
  }
  text = list_item(history_list(*yyEditCurrent(nullptr)), index);
}
