// The dialog registry and lifecycle: fonts and units, load, show in its
// three modes, hide, unload, titles, queries, and the messages of dialogs.
#include <X11/IntrinsicP.h>
#include <X11/Xatom.h>
#include <X11/Xft/Xft.h>
#include <X11/keysym.h>
#include <Xm/DialogS.h>
#include <Xm/VendorSEP.h>
#include <Xm/DrawingA.h>
#include <Xm/Protocols.h>
#include <Xm/Xm.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "toolkit/kernel/resources.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/kernel/dialog_attach.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

// This module's state.
static zelvy_dialog::State& ds = zelvy_dialog::state();

using namespace zelvy_dialog;

namespace {

// One render table per font index, with the font as default rendition.
struct RenderTables {
  std::vector<XmRenderTable> tables;
  void clear() {
    for (XmRenderTable t : tables) XmRenderTableFree(t);
    tables.clear();
  }
  ~RenderTables() { clear(); }
};
RenderTables renderTables;
bool engineReady = false;

DialogFontMetrics measure_xft(const char* family, int size) {
  DialogFontMetrics m;
  XftFont* font = yyXftOpen(family, size);
  if (!font) return m;
  XGlyphInfo sample{}, blank{};
  XftTextExtents8(xdisplay(), font, reinterpret_cast<const FcChar8*>(kDialogSample.data()),
                  static_cast<int>(kDialogSample.size()), &sample);
  XftTextExtents8(xdisplay(), font, reinterpret_cast<const FcChar8*>(" "), 1, &blank);
  m = yyDialogMetricsFromSample(sample.xOff, font->ascent + font->descent, blank.xOff);
  XftFontClose(xdisplay(), font);
  return m;
}

DialogFontMetrics measure_core(XFontStruct* fs) {
  if (!fs) return DialogFontMetrics{};
  const int w = XTextWidth(fs, kDialogSample.data(), static_cast<int>(kDialogSample.size()));
  DialogFontMetrics m = yyDialogMetricsFromSample(w, 1, XTextWidth(fs, " ", 1));
  m.charHeight = std::max(1, static_cast<int>((fs->ascent + fs->descent) * 1.1));
  int unused = 0;
  yyDialogUnitsToPixels(m, 0, 14, unused, m.controlHeight);
  return m;
}

// Family and size of a font index; the resource families are kept simple.
void font_of(int index, std::string& family, int& size) {
  const ZelvAppData& a = zelvy_x::state().appData;
  family = a.xftName && *a.xftName ? a.xftName : "Sans";
  size = a.xftSize > 0 ? a.xftSize : 8;
  if (index <= 0) return;
  int type = -1, points = -1;
  yyrcfontlist(index, type, points);
  if (points > 0) size = points;
  if (type == 2) family = "Serif";
  else if (type == 3 || type == 4) family = "Monospace";
}

XmRenderTable make_table(int index) {
  Arg args[4];
  int n = 0;
  std::string family;
  int size = 8;
  font_of(index, family, size);
  if (zelvy_x::state().bXft) {
    XtSetArg(args[n], XmNfontType, XmFONT_IS_XFT); ++n;
    XtSetArg(args[n], XmNfontName, const_cast<char*>(family.c_str())); ++n;
    XtSetArg(args[n], XmNfontSize, size); ++n;
  } else {
    XtSetArg(args[n], XmNfontType, XmFONT_IS_FONT); ++n;
    XtSetArg(args[n], XmNfont, zelvy_x::state().dialogFontStruct); ++n;
  }
  XmRendition r = XmRenditionCreate(zelvy_x::state().rootWidget, const_cast<char*>(XmFONTLIST_DEFAULT_TAG), args, n);
  XmRenderTable t = XmRenderTableAddRenditions(nullptr, &r, 1, XmMERGE_REPLACE);
  XmRenditionFree(r);
  return t;
}

void yyDialogFontInfo() {
  int count = 0;
  yyrcfontcount(count);
  if (!zelvy_x::state().bXft) count = 0;
  ds.DlgFontInfo.clear();
  renderTables.clear();
  for (int i = 0; i <= std::max(0, count); ++i) {
    std::string family;
    int size = 8;
    font_of(i, family, size);
    ds.DlgFontInfo.push_back(zelvy_x::state().bXft ? measure_xft(family.c_str(), size)
                                        : measure_core(zelvy_x::state().dialogFontStruct));
    renderTables.tables.push_back(make_table(i));
  }
}

Widget default_parent() { return zelvy_x::state().rootWidget; }

void wm_close_cb(Widget, XtPointer data, XtPointer) {
  const int idx = static_cast<int>(reinterpret_cast<std::intptr_t>(data));
  if (idx >= 0 && idx < kDialogs && ds.wDialogInfo[idx].identifier != -1)
    yyDialogButtonMessage(ds.wDialogInfo[idx], 2);
}

void free_record(DialogRecord& d) {
  yyDialogForgetFields(d);
  for (FieldRecord& f : d.fields)
    if (f.image != 2 && xdisplay()) XFreePixmap(xdisplay(), f.image);
  d = DialogRecord{};
}

// A dialog whose widget goes with its window, without an unload, leaves the registry too.
void destroy_cb(Widget w, XtPointer data, XtPointer) {
  const int idx = static_cast<int>(reinterpret_cast<std::intptr_t>(data));
  if (idx < 0 || idx >= kDialogs || ds.wDialogInfo[idx].widget != w) return;
  if (ds.iDlgCur == idx) {
    ds.iDlgCur = -1;
    zelvy_data::data().icurdialog = 0;
  }
  if (ds.wDialogInfo[idx].shownMode == 3) yyMsgSemiModelessStack(-1, 2, idx);
  free_record(ds.wDialogInfo[idx]);
}

bool yyDialogCreate(int idx, Widget parent, int kind) {
  DialogRecord& d = ds.wDialogInfo[idx];
  Display* dpy = xdisplay();
  d.kind = kind;
  d.parentWidget = parent;
  const Pixel bg = zelvy_x::state().wSchemeCol[3].pixel;
  Widget under = parent;
  if (kind == 0 || kind == 2) {
    if (!under) under = default_parent();
    Arg a[12];
    int n = 0;
    XtSetArg(a[n], XmNdeleteResponse, XmDO_NOTHING); ++n;
    XtSetArg(a[n], XmNminWidth, d.width); ++n;
    XtSetArg(a[n], XmNminHeight, d.height); ++n;
    if (d.anchorFieldId == 0) {
      XtSetArg(a[n], XmNmaxWidth, d.width); ++n;
      XtSetArg(a[n], XmNmaxHeight, d.height); ++n;
    }
    XtSetArg(a[n], XmNoverrideRedirect, (d.style & ::dialog_style::kTitleBar) ? False : True); ++n;
    XtSetArg(a[n], XmNtitle, d.title.empty() ? " " : d.title.c_str()); ++n;
    XtSetArg(a[n], XmNcolormap, zelvy_x::state().iCmapMain ? zelvy_x::state().iCmapMain : DefaultColormap(dpy, zelvy_x::state().iScreen)); ++n;
    XtSetArg(a[n], XmNautoUnmanage, False); ++n;
    d.shell = XtCreatePopupShell("DialogShell", xmDialogShellWidgetClass, under, a, n);
    under = d.shell;
  } else {
    d.embeddingParent = parent;
  }
  d.widget = XtVaCreateWidget("ZelvDialog", xmDrawingAreaWidgetClass, under, XmNmarginWidth, 0, XmNmarginHeight,
                              0, XmNresizePolicy, XmRESIZE_NONE, XtNwidth, d.width, XtNheight, d.height,
                              XtNbackground, bg, XmNuserData, static_cast<XtPointer>(nullptr), XtNx, 0, XtNy, 0,
                              nullptr);
  XtVaSetValues(d.widget, XmNuserData, reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(idx + 1)), nullptr);
  if (d.shell) {
    Atom del = XmInternAtom(dpy, const_cast<char*>("WM_DELETE_WINDOW"), False);
    XmAddWMProtocolCallback(d.shell, del, wm_close_cb, reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(idx)));
  }
  XtAddEventHandler(d.widget, KeyPressMask, False, yyDialogEscapeEH, nullptr);
  XtAddCallback(d.widget, XtNdestroyCallback, destroy_cb, reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(idx)));
  d.focusShell = d.widget;
  while (d.focusShell && !XtIsVendorShell(d.focusShell)) d.focusShell = XtParent(d.focusShell);
  if (d.focusShell) XmeAddFocusChangeCallback(d.focusShell, yyDialogFocusMovedCB, nullptr);
  yyDialogFieldCreate(d);
  return true;
}

void yyDialogAllocLoad(int idx, int resid, const RcDialog& rc) {
  DialogRecord& d = ds.wDialogInfo[idx];
  d = DialogRecord{};
  d.identifier = resid;  // while building; the dialog identifier comes after
  d.resourceId = resid;
  d.lastButton = -1;
  d.title = rc.title;
  d.style = rc.style;
  d.layoutFlags = rc.layout;
  d.anchorFieldId = rc.anchor_field;
  d.fontIndex = zelvy_x::state().bXft ? rc.font_index : 0;
  const DialogFontMetrics& fm = yyDialogFontMetrics(d.fontIndex);
  yyDialogUnitsToPixels(fm, rc.width, rc.height, d.width, d.height);
  d.minWidth = d.width;
  d.minHeight = d.height;
  d.fields.resize(rc.fields.size());
  for (std::size_t i = 0; i < rc.fields.size(); ++i) {
    const RcField& r = rc.fields[i];
    FieldRecord& f = d.fields[i];
    f.identifier = r.id;
    f.type = r.type;
    f.style = r.style;
    f.extendedStyle = r.style2;
    f.extraFlags = r.extra;
    f.text = r.text;
    f.allowClear = ds.bRangeClear;
    int font = d.fontIndex;
    if (zelvy_x::state().bXft) yyrcfieldfont(resid, r.id, font);
    f.fontIndex = (font >= 0 && font < static_cast<int>(ds.DlgFontInfo.size())) ? font : 0;
    const DialogFontMetrics& m = yyDialogFontMetrics(d.fontIndex);
    yyDialogUnitsToPixels(m, r.x, r.y, f.x, f.y);
    yyDialogUnitsToPixels(m, r.width, r.height, f.width, f.height);
    f.rightGap = d.width - f.x - f.width;
    f.bottomGap = d.height - f.y - f.height;
  }
}

// Returns true when the dialog was already loaded; `error` 0 or the code.
bool yyDialogLoad(int resid, int dialogid, bool forceNew, int kind, Widget parent, int messageMode, int& error) {
  error = 0;
  int count = -1, titleLength = -1;
  yyrcdialogcheck(resid, count, titleLength);
  int idx = forceNew ? -1 : yyDialogFind(dialogid);
  bool existed = idx >= 0;
  if (!existed) {
    idx = -1;
    for (int i = 0; i < kDialogs && idx < 0; ++i)
      if (ds.wDialogInfo[i].identifier == -1) idx = i;
    if (idx < 0) {
      error = 1087;
      return false;
    }
    if (count < 0) {
      error = 1007;
      return false;
    }
    RcDialog rc;
    int status = 0;
    yyrcdialogget(resid, rc, status);
    if (status != 0) {
      error = status;
      return false;
    }
    yyDialogAllocLoad(idx, resid, rc);
    ds.wDialogInfo[idx].messageMode = messageMode;
    yyDialogCreate(idx, parent, kind);
    ds.wDialogInfo[idx].identifier = dialogid;
  }
  ds.iDlgCur = idx;
  for (FieldRecord& f : ds.wDialogInfo[idx].fields) f.lastState = yyinfodialogfieldstate(f);
  return existed;
}

void yyDialogDestroy(int idx) {
  DialogRecord& d = ds.wDialogInfo[idx];
  if (!d.widget) {
    free_record(d);
    return;
  }
  if (d.shell) {
    Atom del = XmInternAtom(xdisplay(), const_cast<char*>("WM_DELETE_WINDOW"), False);
    XmRemoveWMProtocolCallback(d.shell, del, wm_close_cb, reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(idx)));
  }
  XtRemoveEventHandler(d.widget, KeyPressMask, False, yyDialogEscapeEH, nullptr);
  if (d.focusShell && !d.focusShell->core.being_destroyed)
    XmeRemoveFocusChangeCallback(d.focusShell, yyDialogFocusMovedCB, nullptr);
  if (XtIsManaged(d.widget)) XtUnmanageChild(d.widget);
  Widget top = d.shell ? d.shell : d.widget;
  free_record(d);  // first, so that the destroy callback finds nothing left to do
  XtDestroyWidget(top);
}

void yyDialogHide(int idx) {
  DialogRecord& d = ds.wDialogInfo[idx];
  if (d.shownMode == -1) return;
  if (d.shownMode == 3) yyMsgSemiModelessStack(-1, 2, idx);
  if (d.widget) XtUnmanageChild(d.widget);
  d.shownMode = -1;
}

// Motif frames and scrolled parents renegotiate their size when managed;
// the resource size wins.
void yyDialogSizeFix(DialogRecord& d) {
  for (FieldRecord& f : d.fields) {
    Widget w = f.outerWidget ? f.outerWidget : f.widget;
    if (!w) continue;
    if ((f.capabilities & field_capability::kGeometryNotOnMain) && !(f.capabilities & field_capability::kGeometryOnParent)) continue;
    if (f.capabilities & field_capability::kGeometryOnParent) w = XtParent(f.widget);
    Dimension bw = 0;
    XtVaGetValues(w, XtNborderWidth, &bw, nullptr);
    XtConfigureWidget(w, static_cast<Position>(f.x), static_cast<Position>(f.y),
                      static_cast<Dimension>(std::max(1, f.width)), static_cast<Dimension>(std::max(1, f.height)), bw);
  }
}

void focus_first(DialogRecord& d) {
  for (FieldRecord& f : d.fields) {
    if (!(f.capabilities & field_capability::kTabReach) || !f.widget || !XtIsManaged(f.widget) || !XtIsSensitive(f.widget)) continue;
    Widget target = f.valueWidget ? f.valueWidget : f.widget;
    XmProcessTraversal(target, XmTRAVERSE_CURRENT);
    return;
  }
}

// Shows the current dialog; returns the error code, 0 on success.
int yyDialogShow(int x, int y, int mode, int fieldid) {
  DialogRecord& d = ds.wDialogInfo[ds.iDlgCur];
  Display* dpy = xdisplay();
  if (d.kind == 3) return 1047;
  if (d.shownMode != -1) {
    if (d.shell && XtIsRealized(d.shell)) XRaiseWindow(dpy, XtWindow(d.shell));
    return 0;
  }
  if (d.shell) {
    // Window units of a free-standing dialog run over the screen.
    x = x == -1 ? (zelvy_data::data().iscwid - d.width) / 2 : yyunitstopixels(x, zelvy_data::data().iscwid);
    y = y == -1 ? (zelvy_data::data().ischgt - d.height) / 2 : yyunitstopixels(y, zelvy_data::data().ischgt);
    XtVaSetValues(d.shell, XmNsaveUnder, True, XtNx, x, XtNy, y, nullptr);
  } else {
    mode = 2;
  }
  XtManageChild(d.widget);
  if (d.shell && XtIsRealized(d.shell)) {
    XSizeHints h{};
    // A dialog without an anchor field keeps its size.
    h.flags = USPosition | USSize | PMinSize | (d.anchorFieldId == 0 ? PMaxSize : 0);
    h.x = x;
    h.y = y;
    h.width = h.min_width = h.max_width = d.minWidth;
    h.height = h.min_height = h.max_height = d.minHeight;
    XSetWMNormalHints(dpy, XtWindow(d.shell), &h);
    XMoveWindow(dpy, XtWindow(d.shell), x, y);
  }
  yyDialogSizeFix(d);
  d.shownMode = mode;
  d.focusField = -1;
  const int fi = fieldid != 0 ? yyDialogFindField(fieldid, ds.iDlgCur) : -1;
  if (fi >= 0 && d.fields[fi].widget)
    XmProcessTraversal(d.fields[fi].valueWidget ? d.fields[fi].valueWidget : d.fields[fi].widget,
                       XmTRAVERSE_CURRENT);
  else
    focus_first(d);
  if (mode == 3) yyMsgSemiModelessStack(1, 2, ds.iDlgCur);
  return 0;
}

void dialog_metrics_ready() {
  if (!engineReady && xdisplay()) yyDialogEngineInit();
}

// How the windows reach the engine: the size of the dialog a window is to
// carry, then the dialog put into its client area.
void window_dialog_pixels(int dialogid, int& width, int& height, bool& resizable) {
  resizable = false;
  if (!yyDialogPixelSize(dialogid, width, height)) return;
  int w = 0, h = 0, anchor = 0, font = 0, bytes = 0;
  std::uint32_t style = 0, layout = 0;
  std::string title;
  yyrcdialogload(dialogid, w, h, style, layout, anchor, font, bytes, title);
  resizable = anchor != 0;
}

void window_dialog_combine(int dialogid, int handle) { yywindowdialog(handle, dialogid); }

}  // namespace

// ---- Engine internals ------------------------------------------------------

void yyDialogEngineInit() {
  if (engineReady || !xdisplay()) return;  // once; loaded dialogs stay
  for (DialogRecord& d : ds.wDialogInfo) d = DialogRecord{};
  ds.iDlgCur = -1;
  yyDialogFontInfo();
  engineReady = true;
}

bool yyDialogPixelSize(int resid, int& width, int& height) {
  dialog_metrics_ready();
  int count = -1, titleLength = -1;
  yyrcdialogcheck(resid, count, titleLength);
  if (count < 0) return false;
  int w = 0, h = 0, anchor = 0, font = 0, bytes = 0;
  std::uint32_t style = 0, layout = 0;
  std::string title;
  yyrcdialogload(resid, w, h, style, layout, anchor, font, bytes, title);
  yyDialogUnitsToPixels(yyDialogFontMetrics(zelvy_x::state().bXft ? font : 0), w, h, width, height);
  return true;
}

void yyDialogShutdown() {
  for (int i = 0; i < kDialogs; ++i)
    if (ds.wDialogInfo[i].identifier != -1) yyDialogDestroy(i);
  ds.iDlgCur = -1;
  zelvy_data::data().icurdialog = 0;
}

const DialogFontMetrics& yyDialogFontMetrics(int fontIndex) {
  static const DialogFontMetrics fallback = yyDialogMetricsFromSample(52 * 6, 13, 3);
  if (ds.DlgFontInfo.empty()) return fallback;
  if (fontIndex < 0 || fontIndex >= static_cast<int>(ds.DlgFontInfo.size())) return ds.DlgFontInfo[0];
  return ds.DlgFontInfo[fontIndex];
}

XmRenderTable yyDialogRenderTable(int fontIndex) {
  const auto& t = renderTables.tables;
  if (t.empty()) return nullptr;
  if (fontIndex < 0 || fontIndex >= static_cast<int>(t.size())) return t[0];
  return t[static_cast<std::size_t>(fontIndex)];
}

int yyDialogFind(int dialogid) {
  for (int i = 0; i < kDialogs; ++i)
    if (ds.wDialogInfo[i].identifier == dialogid && ds.wDialogInfo[i].widget) return i;
  return -1;
}

int yyDialogFindField(int fieldid, int dialogIndex) {
  if (dialogIndex < 0 || dialogIndex >= kDialogs) return -1;
  const auto& fields = ds.wDialogInfo[dialogIndex].fields;
  for (std::size_t i = 0; i < fields.size(); ++i)
    if (fields[i].identifier == fieldid) return static_cast<int>(i);
  return -1;
}

int yyDialogIndexOf(const DialogRecord& d) { return static_cast<int>(&d - ds.wDialogInfo.data()); }

DialogRecord* yyDialogCurrent(const char* routine) {
  if (zelvy_data::data().icurdialog == 0 || ds.iDlgCur < 0 || ds.wDialogInfo[ds.iDlgCur].identifier == -1) {
    yyerror(1005, routine);
    return nullptr;
  }
  return &ds.wDialogInfo[ds.iDlgCur];
}

FieldRecord* yyDialogCurrentField(int fieldid, const char* routine) {
  DialogRecord* d = yyDialogCurrent(routine);
  if (!d) return nullptr;
  const int fi = yyDialogFindField(fieldid, ds.iDlgCur);
  if (fi < 0) {
    yyerror(1006, routine);
    return nullptr;
  }
  return &d->fields[fi];
}

DialogRecord* yyDialogFromWidget(Widget w, FieldRecord** field) {
  if (field) *field = nullptr;
  Widget fieldWidget = nullptr;
  for (; w; w = XtParent(w)) {
    const char* name = XtName(w);
    if (!fieldWidget && std::string_view(name) == "ZelvField") fieldWidget = w;
    if (std::string_view(name) != "ZelvDialog") continue;
    XtPointer ud = nullptr;
    XtVaGetValues(w, XmNuserData, &ud, nullptr);
    const int idx = static_cast<int>(reinterpret_cast<std::intptr_t>(ud)) - 1;
    if (idx < 0 || idx >= kDialogs || ds.wDialogInfo[idx].widget != w) return nullptr;
    DialogRecord& d = ds.wDialogInfo[idx];
    if (field && fieldWidget)
      for (FieldRecord& f : d.fields)
        if (f.widget == fieldWidget || f.outerWidget == fieldWidget) *field = &f;
    return &d;
  }
  return nullptr;
}

void yyDialogSendMessage(DialogRecord* d, int type, int v1, int v2, int v3, int v4, int x, int y, int win) {
  const bool exempt = type == Resize || v1 == 9;
  if (ds.bInvalidField && !exempt) {
    if (d && type == PushButton) d->lastButton = v1;
    return;
  }
  bool send = true;
  if (d) {
    if (d->messageMode == 0) send = false;
    else if (d->messageMode == 1) send = type == PushButton;
  }
  if (send) yyMsgSend(type, v1, v2, v3, v4, x, y, win, 0);
  if (d && type == PushButton) d->lastButton = v1;
}

void yyDialogButtonMessage(DialogRecord& d, int buttonId) {
  if (ds.bInvalidField) return;
  int second = buttonId;
  auto id_of = [&](int fi) { return fi >= 0 && fi < static_cast<int>(d.fields.size()) ? d.fields[fi].identifier : 0; };
  if (d.focusField >= 0 && id_of(d.focusField) != buttonId) second = id_of(d.focusField);
  else if (d.previousFocusField >= 0) second = id_of(d.previousFocusField);
  int third = -1;
  if (d.messageMode == 1 && d.kind == 3) third = d.parentWindow;
  yyDialogSendMessage(&d, PushButton, buttonId, second, third, -1, -1, -1, d.identifier);
}

// ---- Kernel entry points ---------------------------------------------------

void yywindowdialog(int handle, int dialogid) {
  dialog_metrics_ready();
  if (!yywindowexists(handle) || !zelvy_win::state().wtClient[handle]) return;
  // Keyboard traversal has to reach the fields through the client area.
  XtVaSetValues(zelvy_win::state().wtClient[handle], XmNtraversalOn, True, nullptr);
  int err = 0;
  yyDialogLoad(dialogid, dialogid, true, 3, zelvy_win::state().wtClient[handle], 2, err);
  if (err) {
    yyerror(err, "WindowOpen");
    return;
  }
  DialogRecord& d = ds.wDialogInfo[ds.iDlgCur];
  d.parentWindow = handle;
  zelvy_data::data().icurdialog = dialogid;
  // The window now counts as one with a dialog: its keys belong to the fields.
  zelvy_win::state().WinInfo[handle].Kind = 3;
  zelvy_win::state().WinInfo[handle].DialogIndex = ds.iDlgCur;
  XtManageChild(d.widget);
  yyDialogSizeFix(d);
  d.shownMode = 2;
  focus_first(d);
}

void yywindowdialogclose(int handle) {
  for (int i = 0; i < kDialogs; ++i) {
    DialogRecord& d = ds.wDialogInfo[i];
    if (d.identifier == -1 || d.kind != 3 || d.parentWindow != handle) continue;
    if (ds.iDlgCur == i) {
      ds.iDlgCur = -1;
      zelvy_data::data().icurdialog = 0;
    }
    yyDialogDestroy(i);
    if (yywindowexists(handle) && zelvy_win::state().WinInfo[handle].Kind == 3) zelvy_win::state().WinInfo[handle].Kind = 0;
  }
}

// ---- Public routines -------------------------------------------------------

void WDialogLoad(int resid, std::optional<int> dialogid, std::optional<int> parent) {
  dialog_metrics_ready();
  const int id = dialogid.value_or(resid);
  const int p = parent.value_or(0);
  int kind = 0;
  Widget pw = nullptr;
  if (p == -1) {
    kind = 2;
  } else if (p > 0) {
    kind = 2;
    if (yywindowexists(p)) pw = zelvy_win::state().wtShell[p];
  }
  int err = 0;
  const bool existed = yyDialogLoad(resid, id, false, kind, pw, 2, err);
  if (err) {
    yyerror(err, "WDialogLoad");
    return;
  }
  ds.bdlgloaded = existed ? -1 : 0;
  zelvy_data::data().icurdialog = id;
}

void WDialogSelect(int dialogid) {
  const int idx = yyDialogFind(dialogid);
  if (idx < 0) {
    yyerror(1008, "WDialogSelect");
    return;
  }
  ds.iDlgCur = idx;
  zelvy_data::data().icurdialog = dialogid;
}

void WDialogShow(std::optional<int> x, std::optional<int> y, std::optional<int> fieldid, std::optional<int> mode) {
  DialogRecord* d = yyDialogCurrent("WDialogShow");
  if (!d) return;
  int m = mode.value_or(2);
  int px = x.value_or(-1), py = y.value_or(-1);
  if (!d->shell && m != 2) {
    yyerror(1014, "WDialogShow");
    m = 2;
  }
  if (m < 1 || m > 3) {
    yyerror(1014, "WDialogShow");
    m = 2;
  }
  const bool modal = m == 1;
  const int err = yyDialogShow(px, py, modal ? 3 : m, fieldid.value_or(0));
  if (err) {
    yyerror(err, "WDialogShow");
    return;
  }
  if (!modal) return;
  const int idx = ds.iDlgCur;
  const int myId = d->identifier;
  int type = 0;
  MessageRecord rec;
  do {
    WMessage(type, rec);
    if (ds.wDialogInfo[idx].identifier != myId) return;  // unloaded underneath the loop
  } while (type != PushButton);
  ds.iModalDialog = rec.Win;
  ds.iModalButton = rec.Value1;
  ds.iModalField = rec.Value2;
  yyDialogHide(idx);
}

void wdialogshowcommon(std::optional<int> fieldid, std::optional<int> mode, std::optional<int>) {
  WDialogShow(zelvy_comdlg::data().wcomdlgpos[0], zelvy_comdlg::data().wcomdlgpos[1], fieldid, mode);
}

void WDialogHide() {
  DialogRecord* d = yyDialogCurrent("WDialogHide");
  if (!d) return;
  if (d->kind == 3) return yyerror(1047, "WDialogHide");
  if (d->kind == 1) return yyerror(1069, "WDialogHide");
  yyDialogHide(ds.iDlgCur);
}

void WDialogUnload(std::optional<int>) {
  DialogRecord* d = yyDialogCurrent("WDialogUnload");
  if (!d) return;
  if (d->kind == 3) return yyerror(1047, "WDialogUnload");
  if (d->kind == 1) return yyerror(1069, "WDialogUnload");
  yyDialogHide(ds.iDlgCur);
  yyDialogDestroy(ds.iDlgCur);
  zelvy_data::data().icurdialog = 0;
  ds.iDlgCur = -1;
}

void WDialogTitle(std::optional<std::string_view> title, std::optional<int>) {
  DialogRecord* d = yyDialogCurrent("WDialogTitle");
  if (!d || !title) return;
  std::string_view t = *title;
  while (!t.empty() && t.back() == ' ') t.remove_suffix(1);
  d->title.assign(t);
  if (d->shell) XtVaSetValues(d->shell, XmNtitle, d->title.empty() ? " " : d->title.c_str(), nullptr);
}

void wdialogunitstopixels(int x, int y, int& px, int& py) {
  const int font = (zelvy_data::data().icurdialog != 0 && ds.iDlgCur >= 0) ? ds.wDialogInfo[ds.iDlgCur].fontIndex : 0;
  yyDialogUnitsToPixels(yyDialogFontMetrics(font), x, y, px, py);
}

void wdialogunitsfrompixels(int x, int y, int& ux, int& uy) {
  const int font = (zelvy_data::data().icurdialog != 0 && ds.iDlgCur >= 0) ? ds.wDialogInfo[ds.iDlgCur].fontIndex : 0;
  yyDialogUnitsFromPixels(yyDialogFontMetrics(font), x, y, ux, uy);
}

int WInfoDialog(int item) {
  const bool have = zelvy_data::data().icurdialog != 0 && ds.iDlgCur >= 0 && ds.wDialogInfo[ds.iDlgCur].identifier != -1;
  const DialogRecord* d = have ? &ds.wDialogInfo[ds.iDlgCur] : nullptr;
  auto geometry = [&](Widget w, Position& x, Position& y, Dimension& wd, Dimension& ht) {
    x = y = 0;
    wd = ht = 0;
    if (w) XtVaGetValues(w, XtNx, &x, XtNy, &y, XtNwidth, &wd, XtNheight, &ht, nullptr);
  };
  switch (item) {
    case 1: return ds.iModalButton;
    case 2: return ds.iModalField;
    case 3: return zelvy_data::data().icurdialog;
    case 4: {
      // The last common dialog's answer in short: 1 went ahead, 0 held back, 2 refused.
      const int b = zelvy_comdlg::data().icdlgbut;
      return (b == 1 || b == 4 || b == 6) ? 1 : (b == 3 || b == 7) ? 2 : 0;
    }
    case 15: return zelvy_comdlg::data().icdlgbut;
    case 5: return ds.iModalDialog;
    case 10: return d ? (d->kind == 3 ? 4 : d->kind == 1 ? 3 : 1) : 0;
    case 11: return static_cast<int>(std::count_if(ds.wDialogInfo.begin(), ds.wDialogInfo.end(),
                                                   [](const DialogRecord& r) { return r.identifier == -1; }));
    case 6: case 7: case 16: case 17: {
      if (!d || !d->widget || !XtIsRealized(d->widget)) return 0;
      int rx = 0, ry = 0;
      Window child = 0;
      XTranslateCoordinates(xdisplay(), XtWindow(d->widget), DefaultRootWindow(xdisplay()), 0, 0,
                            &rx, &ry, &child);
      return (item == 6 || item == 16) ? rx : ry;
    }
    case 8: case 9: case 12: case 13: {
      if (!d) return 0;
      Position x, y;
      Dimension w, h;
      geometry(d->widget, x, y, w, h);
      const int extra = (d->shell && (item == 8 || item == 9)) ? (item == 8 ? 8 : 28) : 0;
      return ((item == 8 || item == 12) ? w : h) + extra;
    }
    case 14: return d && d->anchorFieldId != 0 ? 1 : 0;
    default: return 0;
  }
}

void yyDialogAttach() {
  DialogEngineHooks hooks;
  hooks.init = yyDialogEngineInit;
  hooks.shutdown = yyDialogShutdown;
  hooks.pixels = window_dialog_pixels;
  hooks.combine = window_dialog_combine;
  yyAttachDialogEngine(hooks);
}

namespace zelvy_dialog {
State& state() {
  static State s;
  return s;
}
}  // namespace zelvy_dialog
