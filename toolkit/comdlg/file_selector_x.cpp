// The file selector's glue to the widgets: its list and its prompt boxes.

#include <X11/Intrinsic.h>
#include <Xm/List.h>
#include <Xm/MessageB.h>
#include <Xm/Protocols.h>
#include <Xm/Xm.h>

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/base/zelvy_data.h"
#include "toolkit/comdlg/file_selector_private.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"

namespace {

constexpr int kOkButton = 1;
constexpr int kListType = 12;
constexpr int kBoxOk = 0, kBoxYesNo = 3;
constexpr int kAnswerOk = 1, kAnswerYes = 6, kAnswerNo = 7;

Widget list_widget(int fieldid, const char* routine) {
  FieldRecord* f = yyDialogCurrentField(fieldid, routine);
  return (f && f->type == kListType) ? f->widget : nullptr;
}

// The dialog and list identifier of a list widget.
bool list_owner(Widget w, DialogRecord*& d, int& fieldid) {
  FieldRecord* f = nullptr;
  d = yyDialogFromWidget(w, &f);
  if (!d || !f) return false;
  fieldid = f->identifier;
  return true;
}

void double_click_cb(Widget w, XtPointer, XtPointer) {
  DialogRecord* d = nullptr;
  int id = 0;
  if (!list_owner(w, d, id)) return;
  yyDialogSendMessage(d, PushButton, kOkButton, id, -1, -1, -1, -1, d->identifier);
}

// Return in a text field presses OK, with that field as the one that had the focus.
void return_cb(Widget w, XtPointer, XtPointer) {
  FieldRecord* f = nullptr;
  DialogRecord* d = yyDialogFromWidget(w, &f);
  if (!d) return;
  const int id = f ? f->identifier : 0;
  yyDialogSendMessage(d, PushButton, kOkButton, id, -1, -1, -1, -1, d->identifier);
}

// The option under the last right-button press, selected on the press and
// reported on the release.
int pressed_option = 0;

void right_button_eh(Widget w, XtPointer, XEvent* ev, Boolean*) {
  if (ev->xbutton.button != Button3) return;
  if (ev->type == ButtonPress) {
    int count = 0;
    XtVaGetValues(w, XmNitemCount, &count, nullptr);
    const int pos = XmListYToPos(w, static_cast<Position>(ev->xbutton.y));
    pressed_option = (pos >= 1 && pos <= count) ? pos : 0;
    if (pressed_option && !XmListPosSelected(w, pressed_option)) {
      unsigned char policy = 0;
      XtVaGetValues(w, XmNselectionPolicy, &policy, nullptr);
      if (policy == XmBROWSE_SELECT || policy == XmSINGLE_SELECT) XmListDeselectAllItems(w);
      XmListSelectPos(w, pressed_option, False);
    }
    return;
  }
  DialogRecord* d = nullptr;
  int id = 0;
  if (!list_owner(w, d, id)) return;
  yyDialogSendMessage(d, ContextClick, pressed_option, 0, kListType, id, ev->xbutton.x_root, ev->xbutton.y_root,
                      d->identifier);
}

struct Box {
  int result = 0;
  int escapeValue = kAnswerOk;
  bool ended = false;
};

void box_end(Box& b, int value) {
  if (b.ended) return;
  b.result = value;
  b.ended = true;
  yyMsgModalEnd();
}

void box_ok_cb(Widget, XtPointer data, XtPointer) {
  Box& b = *static_cast<Box*>(data);
  box_end(b, b.escapeValue == kAnswerNo ? kAnswerYes : kAnswerOk);
}
void box_no_cb(Widget, XtPointer data, XtPointer) { box_end(*static_cast<Box*>(data), kAnswerNo); }
void box_escape_cb(Widget, XtPointer data, XtPointer) {
  Box& b = *static_cast<Box*>(data);
  box_end(b, b.escapeValue);
}

XmString xm(std::string_view text) { return yyDialogXmString(text); }

// Without a window manager nothing gives the question the keyboard: it takes
// it once it is on the screen, on its default button.
void prompt_mapped_eh(Widget w, XtPointer data, XEvent* ev, Boolean*) {
  if (ev->type != MapNotify) return;
  XSetInputFocus(XtDisplay(w), XtWindow(w), RevertToParent, CurrentTime);
  if (Widget button = static_cast<Widget>(data)) XmProcessTraversal(button, XmTRAVERSE_CURRENT);
}

}  // namespace

void yyselectfile_putlist(int fieldid, const std::vector<std::string>& shown) {
  Widget list = list_widget(fieldid, "WDialogPutMenu");
  if (!list) return;
  XmListDeselectAllItems(list);
  XmListDeleteAllItems(list);
  if (shown.empty()) return;
  std::vector<XmString> items;
  items.reserve(shown.size());
  for (const std::string& s : shown) items.push_back(xm(s));
  XmListAddItemsUnselected(list, items.data(), static_cast<int>(items.size()), 0);
  for (XmString s : items) XmStringFree(s);
  XmListSetPos(list, 1);
}

std::vector<int> yyselectfile_listselection(int fieldid) {
  std::vector<int> out;
  Widget list = list_widget(fieldid, "WDialogGetMenu");
  if (!list) return out;
  int* positions = nullptr;
  int n = 0;
  if (XmListGetSelectedPos(list, &positions, &n) && n > 0) {
    out.assign(positions, positions + n);
    XtFree(reinterpret_cast<char*>(positions));
  }
  return out;
}

void yyselectfile_listhooks(int fieldid) {
  Widget list = list_widget(fieldid, "WSelectFile");
  if (!list) return;
  // A dialog kept loaded between calls has them already.
  XtRemoveCallback(list, XmNdefaultActionCallback, double_click_cb, nullptr);
  XtAddCallback(list, XmNdefaultActionCallback, double_click_cb, nullptr);
  XtRemoveEventHandler(list, ButtonPressMask | ButtonReleaseMask, False, right_button_eh, nullptr);
  XtAddEventHandler(list, ButtonPressMask | ButtonReleaseMask, False, right_button_eh, nullptr);
}

void yyselectfile_returnhook(int fieldid) {
  FieldRecord* f = yyDialogCurrentField(fieldid, "WSelectFile");
  if (!f) return;
  Widget text = f->valueWidget ? f->valueWidget : f->widget;
  XtRemoveCallback(text, XmNactivateCallback, return_cb, nullptr);
  XtAddCallback(text, XmNactivateCallback, return_cb, nullptr);
}

int yyselectfile_prompt(int buttonset, int icon, int defaultbutton, std::string_view text, std::string_view title) {
  const auto& xs = zelvy_x::state();
  if (!xdisplay()) return buttonset == kBoxYesNo ? kAnswerNo : kAnswerOk;
  // Under the invisible root widget, so that the modal level below, which
  // holds back input to every window of the toolkit, lets the box's through.
  Widget parent = xs.rootWidget;
  // A line ends with a carriage return in the text.
  std::string body(text);
  for (char& ch : body)
    if (ch == '\r') ch = '\n';
  const unsigned char type = icon == 1 ? XmDIALOG_ERROR : icon == 2 ? XmDIALOG_QUESTION
                           : icon == 3 ? XmDIALOG_WARNING : icon == 4 ? XmDIALOG_INFORMATION : XmDIALOG_MESSAGE;
  Box b;
  b.escapeValue = buttonset == kBoxYesNo ? kAnswerNo : kAnswerOk;
  XmString msg = xm(body), ttl = xm(title.empty() ? " " : title);
  XmString yes = xm(buttonset == kBoxYesNo ? "Yes" : "OK"), no = xm("No");
  Widget box = XmCreateMessageDialog(parent, const_cast<char*>("messageBox"), nullptr, 0);
  XtVaSetValues(box, XmNmessageString, msg, XmNdialogTitle, ttl, XmNokLabelString, yes, XmNhelpLabelString, no,
                XmNdialogType, type, XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL, XmNnoResize, True,
                XmNdefaultButtonType,
                (buttonset == kBoxYesNo && defaultbutton != 1) ? XmDIALOG_HELP_BUTTON : XmDIALOG_OK_BUTTON, nullptr);
  if (XmRenderTable rt = yyDialogRenderTable(0)) {
    XtVaSetValues(XmMessageBoxGetChild(box, XmDIALOG_MESSAGE_LABEL), XmNrenderTable, rt, nullptr);
    XtVaSetValues(XmMessageBoxGetChild(box, XmDIALOG_OK_BUTTON), XmNrenderTable, rt, nullptr);
    XtVaSetValues(XmMessageBoxGetChild(box, XmDIALOG_HELP_BUTTON), XmNrenderTable, rt, nullptr);
  }
  XmStringFree(msg);
  XmStringFree(ttl);
  XmStringFree(yes);
  XmStringFree(no);
  XtUnmanageChild(XmMessageBoxGetChild(box, XmDIALOG_CANCEL_BUTTON));
  if (buttonset != kBoxYesNo) XtUnmanageChild(XmMessageBoxGetChild(box, XmDIALOG_HELP_BUTTON));
  XtAddCallback(box, XmNokCallback, box_ok_cb, &b);
  XtAddCallback(box, XmNhelpCallback, box_no_cb, &b);
  XtAddCallback(box, XmNcancelCallback, box_escape_cb, &b);
  Widget shell = XtParent(box);
  Atom wmDelete = XInternAtom(xdisplay(), "WM_DELETE_WINDOW", False);
  XmAddWMProtocolCallback(shell, wmDelete, box_escape_cb, &b);
  Widget defaultWidget = XmMessageBoxGetChild(
      box, (buttonset == kBoxYesNo && defaultbutton != 1) ? XmDIALOG_HELP_BUTTON : XmDIALOG_OK_BUTTON);
  XtAddEventHandler(shell, StructureNotifyMask, False, prompt_mapped_eh, defaultWidget);
  // The keyboard goes back where it was once the question is answered.
  Window focusBefore = None;
  int revertBefore = RevertToParent;
  XGetInputFocus(xdisplay(), &focusBefore, &revertBefore);
  XtManageChild(box);
  // Centred on the screen, once its size is known.
  Dimension bw = 0, bh = 0;
  XtVaGetValues(shell, XtNwidth, &bw, XtNheight, &bh, nullptr);
  const auto& zd = zelvy_data::data();
  XtVaSetValues(shell, XtNx, (zd.iscwid - bw) / 2, XtNy, (zd.ischgt - bh) / 2, nullptr);
  if (!b.ended) yyMsgModalLoop(-1);
  XmRemoveWMProtocolCallback(shell, wmDelete, box_escape_cb, &b);
  XtDestroyWidget(shell);
  if (focusBefore != None && focusBefore != PointerRoot)
    XSetInputFocus(xdisplay(), focusBefore, revertBefore, CurrentTime);
  XSync(xdisplay(), False);
  return b.ended ? b.result : b.escapeValue;
}
