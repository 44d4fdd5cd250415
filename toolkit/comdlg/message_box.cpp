// Message boxes: a question or a notice, and the answer.
#include "toolkit/comdlg/message_box.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>
#include <Xm/MessageB.h>
#include <Xm/Protocols.h>
#include <Xm/PushB.h>
#include <Xm/Xm.h>

#include <cstdint>
#include <cstdio>
#include <vector>

#include "support/lorx_io_messages.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/comdlg/file_selector.h"
#include "toolkit/comdlg/grid_print_dialog.h"
#include "toolkit/comdlg/message_box_private.h"
#include "toolkit/comdlg/page_setup.h"
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/comdlg_attach.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/message_private.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/window_private.h"

namespace {

constexpr int kNoAnswer = -1;
constexpr int kLineLimitUnits = 280;  // dialog units across
constexpr int kFirstIconImage = 32190;  // images 32191..32194 stand for icons 1..4
constexpr int kImageBitmap = 1;
constexpr int kSchemeDark = 9, kSchemeAltBack = 17;
constexpr const char* kRoutine = "WMessageBox";

// The Motif type of each icon and the child that holds each place.
constexpr unsigned char kDialogTypes[] = {XmDIALOG_MESSAGE, XmDIALOG_ERROR, XmDIALOG_QUESTION, XmDIALOG_WARNING,
                                          XmDIALOG_INFORMATION};
constexpr unsigned char kPlaceChild[] = {XmDIALOG_OK_BUTTON, XmDIALOG_CANCEL_BUTTON, XmDIALOG_HELP_BUTTON};
const char* const kPlaceCallback[] = {XmNokCallback, XmNcancelCallback, XmNhelpCallback};

// One box on show; boxes nest, each over the one before.
struct Box {
  Widget box = nullptr, shell = nullptr;
  int result = kNoAnswer;
  int escape = kAnswerOk;
  Widget defaultWidget = nullptr;
  Box* below = nullptr;
};

struct State {
  Box* top = nullptr;
};

State& state() {
  static State s;
  return s;
}

void answer(Box& b, int value) {
  if (b.result != kNoAnswer) return;
  b.result = value;
  yyMsgModalEnd();
}

void place_cb(Widget, XtPointer data, XtPointer) {
  Box* b = state().top;
  if (b) answer(*b, static_cast<int>(reinterpret_cast<std::intptr_t>(data)));
}

void close_cb(Widget, XtPointer, XtPointer) {
  if (Box* b = state().top) answer(*b, b->escape);
}

// Escape answers wherever the focus is in the box, before the buttons' own
// translations, which would take it for the Cancel place.
void escape_eh(Widget, XtPointer, XEvent* ev, Boolean* cont) {
  if (ev->type != KeyPress || XLookupKeysym(&ev->xkey, 0) != XK_Escape) return;
  Box* b = state().top;
  if (!b) return;
  *cont = False;
  answer(*b, b->escape);
}

// Without a window manager nothing gives the box the keyboard: it takes it
// once it is on the screen.
void mapped_eh(Widget w, XtPointer, XEvent* ev, Boolean*) {
  if (ev->type != MapNotify) return;
  XSetInputFocus(XtDisplay(w), XtWindow(w), RevertToParent, CurrentTime);
  if (Box* b = state().top; b && b->defaultWidget) XmProcessTraversal(b->defaultWidget, XmTRAVERSE_CURRENT);
}

// ---- Building the box ------------------------------------------------------

// The widget of what holds the keyboard: a dialog's widget, or a window's
// client area; null when the focus is elsewhere.
Widget focus_holder() {
  Display* dpy = xdisplay();
  Window focus = 0;
  int revert = 0;
  XGetInputFocus(dpy, &focus, &revert);
  if (focus == None || focus == PointerRoot) return nullptr;
  Widget w = XtWindowToWidget(dpy, focus);
  if (!w) return nullptr;
  // The focus may sit on a dialog's shell rather than inside the dialog.
  if (XtIsShell(w)) {
    WidgetList kids = nullptr;
    Cardinal count = 0;
    XtVaGetValues(w, XtNchildren, &kids, XtNnumChildren, &count, nullptr);
    if (count > 0) w = kids[0];
  }
  if (DialogRecord* d = yyDialogFromWidget(w); d && d->widget && XtIsRealized(d->widget)) return d->widget;
  const auto& ws = zelvy_win::state();
  for (; w; w = XtParent(w))
    for (int h = 0; h <= ws.iWinMax; ++h)
      if (ws.wWindow[h] && (ws.wtShell[h] == w || ws.wtClient[h] == w)) return ws.wtClient[h];
  return nullptr;
}

// The widget the box hangs on: what holds the keyboard, else the root
// window's shell while it is on the screen, else the invisible root.
Widget box_parent() {
  if (Widget w = focus_holder()) return w;
  Widget root = zelvy_win::state().wtShell[0];
  if (root && XtIsRealized(root)) {
    XWindowAttributes at{};
    if (XGetWindowAttributes(xdisplay(), XtWindow(root), &at) && at.map_state == IsViewable) return root;
  }
  return zelvy_x::state().rootWidget;
}

// A resource image for the icon, on the symbol's background; 2 when there is none.
Pixmap icon_pixmap(int icon, Pixel background) {
  std::vector<std::uint8_t> rgba;
  int w = 0, h = 0, status = 0;
  yyrcimagepixels(kFirstIconImage + icon, kImageBitmap, w, h, rgba, status);
  if (status != 0 || w <= 0 || h <= 0) return 2;
  Display* dpy = xdisplay();
  const zelvy_x::State& xs = zelvy_x::state();
  const int depth = xs.iDispDepth > 0 ? xs.iDispDepth : DefaultDepth(dpy, xs.iScreen);
  Pixmap pm = XCreatePixmap(dpy, RootWindow(dpy, xs.iScreen), static_cast<unsigned>(w), static_cast<unsigned>(h),
                            static_cast<unsigned>(depth));
  GC gc = XCreateGC(dpy, pm, 0, nullptr);
  XSetForeground(dpy, gc, background);
  XFillRectangle(dpy, pm, gc, 0, 0, static_cast<unsigned>(w), static_cast<unsigned>(h));
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const std::uint8_t* p = &rgba[static_cast<std::size_t>((y * w + x) * 4)];
      if (p[3] >= 128) continue;  // transparent
      XSetForeground(dpy, gc, yyAllocPixel(p[0], p[1], p[2]));
      XDrawPoint(dpy, pm, gc, x, y);
    }
  XFreeGC(dpy, gc);
  return pm;
}

void style_button(Widget button) {
  XmRenderTable font = yyDialogRenderTable(0);
  if (font) XtVaSetValues(button, XmNrenderTable, font, nullptr);
  if (!zelvy_x::state().bFlatStyle) return;
  const Pixel dark = zelvy_x::state().wSchemeCol[kSchemeDark].pixel;
  XtVaSetValues(button, XmNfillOnArm, True, XtNborderWidth, 0, XmNhighlightThickness, 0, XtNbackground,
                zelvy_x::state().wSchemeCol[kSchemeAltBack].pixel, XmNshadowThickness, 1, XmNtopShadowColor, dark,
                XmNbottomShadowColor, dark, nullptr);
}

// Manages the box unmapped, centres it on the screen, then maps it.
void show_centred(Box& b) {
  Display* dpy = xdisplay();
  XtVaSetValues(b.shell, XtNmappedWhenManaged, False, nullptr);
  XtManageChild(b.box);
  Dimension w = 0, h = 0;
  XtVaGetValues(b.shell, XtNwidth, &w, XtNheight, &h, nullptr);
  const int x = (WidthOfScreen(XtScreen(b.shell)) - w) / 2;
  const int y = (HeightOfScreen(XtScreen(b.shell)) - h) / 2;
  XtVaSetValues(b.shell, XtNx, static_cast<Position>(x), XtNy, static_cast<Position>(y), nullptr);
  XSizeHints hints{};
  hints.flags = USPosition | PPosition;
  hints.x = x;
  hints.y = y;
  XSetWMNormalHints(dpy, XtWindow(b.shell), &hints);
  XMoveWindow(dpy, XtWindow(b.shell), x, y);
  XtMapWidget(b.shell);
  XtVaSetValues(b.shell, XtNmappedWhenManaged, True, nullptr);
}

std::string_view trim_right(std::string_view s) {
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

}  // namespace

// ---- Rules -----------------------------------------------------------------

MessageBoxLayout yyComDlgLayout(int buttonSet, int defaultButton) {
  MessageBoxLayout l;
  const int one = defaultButton == 1, two = defaultButton == 2;
  switch (buttonSet) {
    case 1: l = {{kAnswerOk, kAnswerCancel, 0}, kAnswerCancel, one ? 0 : 1}; break;
    case 2: l = {{kAnswerRetry, kAnswerCancel, 0}, kAnswerCancel, one ? 0 : 1}; break;
    case 3: l = {{kAnswerYes, 0, kAnswerNo}, kAnswerNo, one ? 0 : 2}; break;
    case 4: l = {{kAnswerYes, kAnswerNo, kAnswerCancel}, kAnswerCancel, one ? 0 : two ? 1 : 2}; break;
    // Defaults run Retry, Abort, Ignore; the buttons stand Abort, Retry, Ignore.
    case 5: l = {{kAnswerAbort, kAnswerRetry, kAnswerIgnore}, kAnswerIgnore, one ? 1 : two ? 0 : 2}; break;
    default: l = {{kAnswerOk, 0, 0}, kAnswerOk, 0}; break;
  }
  return l;
}

std::string_view yyComDlgLabel(int answer) {
  static constexpr std::string_view labels[] = {"", "OK", "Cancel", "Abort", "Retry", "Ignore", "Yes", "No"};
  return answer >= 1 && answer <= 7 ? labels[answer] : std::string_view{};
}

std::string yyComDlgStrConvert(std::string_view text, int width,
                               const std::function<int(std::string_view)>& measure) {
  std::string out(text);
  for (char& c : out)
    if (c == '\r') c = '\n';
  std::size_t lineStart = 0, lastBlank = std::string::npos;
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (out[i] == '\n') {
      lineStart = i + 1;
      lastBlank = std::string::npos;
      continue;
    }
    if (out[i] == ' ') lastBlank = i;
    if (lastBlank != std::string::npos && measure(std::string_view(out).substr(lineStart, i + 1 - lineStart)) > width) {
      out[lastBlank] = '\n';
      lineStart = lastBlank + 1;
      lastBlank = std::string::npos;
    }
  }
  return out;
}

int yyComDlgLineLimit() {
  if (zelvy_x::state().iMsgBoxRule) return zelvy_data::data().iscwid * 5 / 8 - 50;
  int px = 0, py = 0;
  yyDialogUnitsToPixels(yyDialogFontMetrics(0), kLineLimitUnits, 0, px, py);
  return px;
}

// ---- The box ---------------------------------------------------------------

Widget yyComDlgBoxWidget() { return state().top ? state().top->box : nullptr; }

void yyComDlgMessageBox(int buttonSet, int icon, int defaultButton, int& result, std::string_view text,
                        std::string_view title) {
  result = kNoAnswer;
  Display* dpy = xdisplay();
  if (!dpy || !zelvy_x::state().rootWidget) {
    // Nowhere to show it: the user still reads it.
    std::fprintf(stderr, "%.*s: %.*s\n", static_cast<int>(title.size()), title.data(), static_cast<int>(text.size()),
                 text.data());
    return;
  }
  yyDialogEngineInit();  // the dialog fonts, once

  const MessageBoxLayout layout = yyComDlgLayout(buttonSet, defaultButton);
  if (icon < 0 || icon > 4) icon = 0;
  Box b;
  b.escape = layout.escape;
  b.below = state().top;

  const std::string wrapped =
      yyComDlgStrConvert(text, yyComDlgLineLimit(), [](std::string_view line) { return yyDialogTextWidth(0, line); });
  XmString message = yyDialogXmString(wrapped);
  XmString caption = yyDialogXmString(title.empty() ? std::string_view(" ") : title);
  Arg a[10];
  int n = 0;
  XtSetArg(a[n], XmNmessageString, message); ++n;
  XtSetArg(a[n], XmNdialogTitle, caption); ++n;
  XtSetArg(a[n], XmNnoResize, True); ++n;
  XtSetArg(a[n], XmNresizePolicy, XmRESIZE_NONE); ++n;
  XtSetArg(a[n], XmNdialogStyle, XmDIALOG_FULL_APPLICATION_MODAL); ++n;
  XtSetArg(a[n], XmNdefaultButtonType, kPlaceChild[layout.defaultPlace]); ++n;
  XtSetArg(a[n], XmNdefaultPosition, False); ++n;
  XtSetArg(a[n], XmNautoUnmanage, False); ++n;
  b.box = XmCreateMessageDialog(box_parent(), const_cast<char*>("messageBox"), a, n);
  b.shell = XtParent(b.box);
  // The creation routine sets the plain message type over ours.
  XtVaSetValues(b.box, XmNdialogType, kDialogTypes[icon], nullptr);
  XmStringFree(message);
  XmStringFree(caption);
  XtVaSetValues(b.shell, XmNdeleteResponse, XmDO_NOTHING, XmNtitle, title.empty() ? " " : std::string(title).c_str(),
                nullptr);

  Pixmap image = 2;
  if (icon > 0) {
    Widget symbol = XmMessageBoxGetChild(b.box, XmDIALOG_SYMBOL_LABEL);
    Pixel bg = 0;
    XtVaGetValues(symbol, XtNbackground, &bg, nullptr);
    image = icon_pixmap(icon, bg);
    if (image != 2) XtVaSetValues(b.box, XmNsymbolPixmap, image, nullptr);
  }

  for (int place = 0; place < 3; ++place) {
    Widget button = XmMessageBoxGetChild(b.box, kPlaceChild[place]);
    const int value = layout.places[static_cast<std::size_t>(place)];
    if (value == 0) {
      XtUnmanageChild(button);
      continue;
    }
    XmString label = yyDialogXmString(yyComDlgLabel(value));
    XtVaSetValues(button, XmNlabelString, label, nullptr);
    XmStringFree(label);
    XtAddCallback(b.box, kPlaceCallback[place], place_cb, reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(value)));
    style_button(button);
    if (place == layout.defaultPlace) b.defaultWidget = button;
  }
  if (XmRenderTable font = yyDialogRenderTable(0))
    XtVaSetValues(XmMessageBoxGetChild(b.box, XmDIALOG_MESSAGE_LABEL), XmNrenderTable, font, nullptr);

  XtInsertEventHandler(b.box, KeyPressMask, False, escape_eh, nullptr, XtListHead);
  const KeyCode escapeKey = XKeysymToKeycode(dpy, XK_Escape);
  XtGrabKey(b.box, escapeKey, 0, True, GrabModeAsync, GrabModeAsync);
  Atom del = XmInternAtom(dpy, const_cast<char*>("WM_DELETE_WINDOW"), False);
  XmAddWMProtocolCallback(b.shell, del, close_cb, nullptr);
  XtAddEventHandler(b.shell, StructureNotifyMask, False, mapped_eh, nullptr);

  state().top = &b;
  // Every other window keeps its picture, taken before the box covers it, and
  // takes no input until the answer.
  yymessagemodal(1, b.shell);
  show_centred(b);
  yyMsgModalLoop(-1, XtWindow(b.shell));
  state().top = b.below;

  XtUngrabKey(b.box, escapeKey, 0);
  XmRemoveWMProtocolCallback(b.shell, del, close_cb, nullptr);
  XtDestroyWidget(b.shell);
  if (image != 2) XFreePixmap(dpy, image);
  yymessagemodal(0);
  result = b.result;
}

void WMessageBox(int buttonSet, int icon, int defaultButton, std::string_view text, std::string_view title) {
  int result = kNoAnswer;
  yyComDlgMessageBox(buttonSet, icon, defaultButton, result, trim_right(text), trim_right(title));
  if (result == kNoAnswer) {
    yyerror(1004, kRoutine);
    return;
  }
  zelvy_comdlg::data().icdlgbut = result;
}

// ---- Joining the layers that report through boxes --------------------------

namespace {

// The library error box: the routine, the error number and the message on
// lines of their own. Cancel ends the program.
bool library_error_box(std::string_view report) {
  std::string text(report);
  const std::size_t error = text.find(" Error=");
  if (error != std::string::npos) {
    text[error] = '\r';
    const std::size_t colon = text.find(':', error);
    if (colon != std::string::npos) text[colon] = '\r';
  }
  WMessageBox(1, 3, 1, text, "Library Error");
  return zelvy_comdlg::data().icdlgbut == kAnswerCancel;
}

}  // namespace

void yyComdlgAttach() {
  lorx_io_messages::message_box_hook = WMessageBox;
  yySetErrorBoxSink(library_error_box);
  ComdlgHooks hooks;
  hooks.select_file = [](std::string_view filter, int flags, std::string& filename, std::string_view title,
                         int* filterindex) {
    std::string name = filename;
    WSelectFile(filter, flags, name, title.empty() ? std::optional<std::string_view>{} : title, filterindex);
    if (zelvy_comdlg::data().icdlgbut != kAnswerOk) return false;
    filename = name;
    return true;
  };
  hooks.message_box = [](int buttonSet, int icon, int defaultButton, std::string_view text,
                         std::string_view title) {
    zelvy_comdlg::data().icdlgbut = kAnswerCancel;
    WMessageBox(buttonSet, icon, defaultButton, text, title);
    return zelvy_comdlg::data().icdlgbut;
  };
  hooks.page_setup = [](zelvy_data::PageSetup& record, std::string_view title) {
    return yycomdlgpagesetupps(record, title);
  };
  hooks.grid_print = [](GridPrintOptions& options, zelvy_data::PageSetup& page) {
    int ok = 0;
    yycomdlggridprint_(1, options, page, ok);
    return ok == 1 ? 1 : 2;
  };
  yyAttachComdlg(hooks);
}
