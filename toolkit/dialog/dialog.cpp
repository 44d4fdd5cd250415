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
#include "toolkit/dialog/dialog_fields_private.h"
#include "toolkit/dialog/field_styles.h"
#include "toolkit/kernel/dialog_attach.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/tooltip_private.h"
#include "toolkit/kernel/message_private.h"
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

// Metrics of a font index, from the rendered sample.
DialogFontMetrics yyDialogPixelsPerChar(int index) {
  if (!zelvy_x::state().bXft) return measure_core(zelvy_x::state().dialogFontStruct);
  std::string family;
  int size = 8;
  font_of(index, family, size);
  return measure_xft(family.c_str(), size);
}

void yyDialogFontInfo() {
  int count = 0;
  yyrcfontcount(count);
  if (!zelvy_x::state().bXft) count = 0;
  ds.DlgFontInfo.clear();
  renderTables.clear();
  for (int i = 0; i <= std::max(0, count); ++i) {
    ds.DlgFontInfo.push_back(yyDialogPixelsPerChar(i));
    renderTables.tables.push_back(make_table(i));
  }
}

Widget default_parent() { return zelvy_x::state().rootWidget; }

// Closing the window is pressing button 2.
void yyDialogWMCloseCB(Widget, XtPointer data, XtPointer) {
  const int idx = static_cast<int>(reinterpret_cast<std::intptr_t>(data));
  if (idx >= 0 && idx < kDialogs && ds.wDialogInfo[idx].identifier != -1)
    yyDialogButtonMessage(ds.wDialogInfo[idx], 2);
}

void yyDialogFree(DialogRecord& d) {
  yyDialogForgetFields(d);
  for (FieldRecord& f : d.fields)
    if (f.image != 2 && xdisplay()) XFreePixmap(xdisplay(), f.image);
  // The cover window goes with the dialog's own; its picture doesn't.
  if (d.freeze.pixmap && xdisplay()) XFreePixmap(xdisplay(), d.freeze.pixmap);
  d = DialogRecord{};
}

// A dialog whose widget goes with its window, without an unload, leaves the registry too.
void yyDialogDestroyCB(Widget w, XtPointer data, XtPointer) {
  const int idx = static_cast<int>(reinterpret_cast<std::intptr_t>(data));
  if (idx < 0 || idx >= kDialogs || ds.wDialogInfo[idx].widget != w) return;
  if (ds.iDlgCur == idx) {
    ds.iDlgCur = -1;
    zelvy_data::data().icurdialog = 0;
  }
  if (ds.wDialogInfo[idx].shownMode == 3) yyMsgSemiModelessStack(-1, 2, idx);
  yyDialogFree(ds.wDialogInfo[idx]);
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
    XmAddWMProtocolCallback(d.shell, del, yyDialogWMCloseCB, reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(idx)));
  }
  XtAddEventHandler(d.widget, KeyPressMask, False, yyDialogEscapeEH, nullptr);
  yyDialogKeyTranslations(d, nullptr);
  XtAddCallback(d.widget, XtNdestroyCallback, yyDialogDestroyCB, reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(idx)));
  d.focusShell = d.widget;
  while (d.focusShell && !XtIsVendorShell(d.focusShell)) d.focusShell = XtParent(d.focusShell);
  if (d.focusShell) XmeAddFocusChangeCallback(d.focusShell, yyDialogFocusMovedCB, nullptr);
  // Whoever sizes a resizable dialog (its shell, the window carrying it, the
  // program) configures its widget; the fields follow from that event.
  if (d.anchorFieldId != 0) XtAddEventHandler(d.widget, StructureNotifyMask, False, yyDialogConfigureEH, nullptr);
  yyDialogFieldCreate(d);
  // The gaps to the edges as the fields came out (lines and closed combos
  // take their own height), so that an unchanged size moves nothing.
  for (FieldRecord& f : d.fields) {
    f.rightGap = d.width - f.x - f.width;
    f.bottomGap = d.height - f.y - f.height;
  }
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
    f.fontIndex = yyDialogFontCreate(d, f);
    const DialogFontMetrics& m = yyDialogFontMetrics(d.fontIndex);
    yyDialogUnitsToPixels(m, r.x, r.y, f.x, f.y);
    yyDialogUnitsToPixels(m, r.width, r.height, f.width, f.height);
    f.rightGap = d.width - f.x - f.width;
    f.bottomGap = d.height - f.y - f.height;
  }
  if (d.anchorFieldId != 0) {
    const int anchor = yyDialogFindField(d.anchorFieldId, idx);
    std::vector<DialogRect> rects;
    std::vector<int> types;
    std::vector<std::uint32_t> styles;
    for (const FieldRecord& f : d.fields) {
      rects.push_back({f.x, f.y, f.width, yyDialogFieldHeight(d, f)});
      types.push_back(f.type);
      styles.push_back(f.style);
    }
    const std::vector<std::uint32_t> edges = yyDialogEdgeFlags(rects, types, styles, anchor, d.layoutFlags);
    for (std::size_t i = 0; i < d.fields.size(); ++i) d.fields[i].edgeFlags = edges[i];
  }
}

}  // namespace

// Returns true when the dialog was already loaded; `error` 0 or the code.
bool yyDialogLoad(int resid, int dialogid, bool forceNew, int kind, Widget parent, int messageMode, int& error) {
  error = 0;
  int count = -1, titleLength = -1;
  yyrcdialogcheck_(resid, count, titleLength);
  int idx = forceNew ? -1 : yyDialogFind(dialogid);
  bool existed = idx >= 0;
  if (!existed) {
    idx = yyDialogNextFree();
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
  for (FieldRecord& f : ds.wDialogInfo[idx].fields) f.lastState = yyinfodialogfieldstate_(f);
  return existed;
}

namespace {

void yyDialogDestroy(int idx) {
  yyTooltipDestroy();  // it may belong to one of the fields going
  DialogRecord& d = ds.wDialogInfo[idx];
  if (!d.widget) {
    yyDialogFree(d);
    return;
  }
  if (d.shell) {
    Atom del = XmInternAtom(xdisplay(), const_cast<char*>("WM_DELETE_WINDOW"), False);
    XmRemoveWMProtocolCallback(d.shell, del, yyDialogWMCloseCB, reinterpret_cast<XtPointer>(static_cast<std::intptr_t>(idx)));
  }
  XtRemoveEventHandler(d.widget, KeyPressMask, False, yyDialogEscapeEH, nullptr);
  if (d.focusShell && !d.focusShell->core.being_destroyed)
    XmeRemoveFocusChangeCallback(d.focusShell, yyDialogFocusMovedCB, nullptr);
  if (XtIsManaged(d.widget)) XtUnmanageChild(d.widget);
  Widget top = d.shell ? d.shell : d.widget;
  yyDialogFree(d);  // first, so that the destroy callback finds nothing left to do
  XtDestroyWidget(top);
}

void yyDialogHide(int idx) {
  yyTooltipDestroy();  // it may belong to one of the fields going
  DialogRecord& d = ds.wDialogInfo[idx];
  if (d.shownMode == -1) return;
  if (d.shownMode == 3) yyMsgSemiModelessStack(-1, 2, idx);
  if (d.widget) XtUnmanageChild(d.widget);
  d.shownMode = -1;
}

// The widget whose size stands for a field: the outermost one under the dialog.
Widget field_top_widget(const DialogRecord& d, const FieldRecord& f) {
  Widget w = f.outerWidget ? f.outerWidget : f.widget;
  while (w && XtParent(w) && XtParent(w) != d.widget) w = XtParent(w);
  return w;
}

void configure_field(const DialogRecord& d, const FieldRecord& f) {
  Widget w = field_top_widget(d, f);
  if (!w) return;
  Dimension bw = 0;
  XtVaGetValues(w, XtNborderWidth, &bw, nullptr);
  XtConfigureWidget(w, static_cast<Position>(f.x), static_cast<Position>(f.y),
                    static_cast<Dimension>(std::max(1, f.width)), static_cast<Dimension>(std::max(1, f.height)), bw);
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

// A dialog with a default button, declared or the one with identifier 1,
// shows the mark on it until the focus moves to another button.
void show_default_mark(DialogRecord& d) {
  bool ok = false;
  for (const FieldRecord& f : d.fields) ok = ok || (f.identifier == 1 && f.type == kButton);
  if (d.defaultButton < 0 && !ok) return;
  yyDialogDefButAddRemove(1, d);
  d.shownDefaultButton = -1;
  yyDialogDefButMove(d);
}

// Shows the current dialog; returns the error code, 0 on success. x and y
// in pixels, -1 centred.
int yyDialogShow(int x, int y, int mode, int fieldid) {
  DialogRecord& d = ds.wDialogInfo[ds.iDlgCur];
  Display* dpy = xdisplay();
  if (d.kind == 3) return 1047;
  if (d.shownMode != -1) {
    if (d.shell && XtIsRealized(d.shell)) XRaiseWindow(dpy, XtWindow(d.shell));
    return 0;
  }
  if (d.shell) {
    if (x == -1) x = (zelvy_data::data().iscwid - d.width) / 2;
    if (y == -1) y = (zelvy_data::data().ischgt - d.height) / 2;
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
    h.width = d.width;
    h.height = d.height;
    h.min_width = h.max_width = d.minWidth;
    h.min_height = h.max_height = d.minHeight;
    XSetWMNormalHints(dpy, XtWindow(d.shell), &h);
    XMoveWindow(dpy, XtWindow(d.shell), x, y);
  }
  yyDialogSizeFix(d);
  for (FieldRecord& f : d.fields)
    if (f.type == kTreeview) yyDialogTreeviewFixState(f);
  d.shownMode = mode;
  d.focusField = -1;
  show_default_mark(d);
  yyDialogTakeFocusOnMap(d);
  const int fi = fieldid != 0 ? yyDialogFindField(fieldid, ds.iDlgCur) : -1;
  if (fi >= 0 && d.fields[static_cast<std::size_t>(fi)].widget) yyDialogFocus(d.fields[static_cast<std::size_t>(fi)], -1);
  else yyDialogFocusFirst(d);
  if (mode == 3) yyMsgSemiModelessStack(1, 2, ds.iDlgCur);
  return 0;
}

void dialog_metrics_ready() {
  if (!engineReady && xdisplay()) yyDialogInit();
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

// Only dialogs the program draws on need their picture kept; the widgets of
// the others repaint themselves while the modal loop runs.
bool dialog_freeze(int on) {
  bool kept = true;
  for (DialogRecord& d : ds.wDialogInfo) {
    if (d.identifier == -1 || !d.widget) continue;
    if (on == 0) {
      yyDialogWidgetBlitAllNowX(d);
      continue;
    }
    if (d.shownMode == -1 || !yyDialogUserDrawn(d) || !XtIsRealized(d.widget)) continue;
    if (d.freezeCount++ == 0 && !yyFreezePicture(XtWindow(d.widget), d.freeze)) kept = false;
  }
  return kept;
}

}  // namespace

// ---- Engine internals ------------------------------------------------------

void yyDialogInit() {
  if (engineReady || !xdisplay()) return;  // once; loaded dialogs stay
  for (DialogRecord& d : ds.wDialogInfo) d = DialogRecord{};
  ds.iDlgCur = -1;
  yyDialogFontInfo();
  yyDialogKeyInit();
  engineReady = true;
}

bool yyDialogPixelSize(int resid, int& width, int& height) {
  dialog_metrics_ready();
  int count = -1, titleLength = -1;
  yyrcdialogcheck_(resid, count, titleLength);
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

void yyDialogUnload(int idx) {
  yyDialogHide(idx);
  yyDialogDestroy(idx);
  if (ds.iDlgCur == idx) {
    ds.iDlgCur = -1;
    zelvy_data::data().icurdialog = 0;
  }
}

int yyDialogNextFree() {
  for (int i = 0; i < kDialogs; ++i)
    if (ds.wDialogInfo[i].identifier == -1) return i;
  return -1;
}

int yyDialogFieldHeight(const DialogRecord& d, const FieldRecord& f) {
  // A drop-down combo counts with its closed height; the resource height is its list's.
  const std::uint32_t kind = f.style & field_style::kComboKindMask;
  if (f.type == kCombo && (kind == field_style::kComboDropDown || kind == field_style::kComboDropDownList))
    return yyDialogFontMetrics(f.fontIndex ? f.fontIndex : d.fontIndex).controlHeight;
  return f.height;
}

int yyDialogFindParent(int idx) {
  if (idx < 0 || idx >= kDialogs || !ds.wDialogInfo[idx].embeddingParent) return -1;
  for (int i = 0; i < kDialogs; ++i)
    if (i != idx && ds.wDialogInfo[i].identifier != -1 && ds.wDialogInfo[i].widget == ds.wDialogInfo[idx].embeddingParent)
      return i;
  return -1;
}

DialogRecord* yyDialogFindFromWgt(Widget w) {
  for (; w; w = XtParent(w)) {
    if (std::string_view(XtName(w)) != "ZelvDialog") continue;
    XtPointer ud = nullptr;
    XtVaGetValues(w, XmNuserData, &ud, nullptr);
    const int idx = static_cast<int>(reinterpret_cast<std::intptr_t>(ud)) - 1;
    if (idx < 0 || idx >= kDialogs || ds.wDialogInfo[idx].widget != w) return nullptr;
    return &ds.wDialogInfo[idx];
  }
  return nullptr;
}

DialogRecord* yyDialogFieldInfo(Widget w, FieldRecord*& field) {
  field = nullptr;
  Widget fieldWidget = w;
  while (fieldWidget && std::string_view(XtName(fieldWidget)) != "ZelvField") {
    if (std::string_view(XtName(fieldWidget)) == "ZelvDialog") fieldWidget = nullptr;
    else fieldWidget = XtParent(fieldWidget);
  }
  DialogRecord* d = yyDialogFindFromWgt(w);
  if (d && fieldWidget)
    for (FieldRecord& f : d->fields)
      if (f.widget == fieldWidget || f.outerWidget == fieldWidget) field = &f;
  return d;
}

bool yyDialogUserDrawn(const DialogRecord& d) { return d.drawnOn || d.fieldDrawnOn; }

void yydialoggrselect_(int fieldid, int& error) {
  error = 0;
  if (ds.iDlgCur < 0 || ds.wDialogInfo[static_cast<std::size_t>(ds.iDlgCur)].identifier == -1) {
    error = 1008;
    return;
  }
  DialogRecord& d = ds.wDialogInfo[static_cast<std::size_t>(ds.iDlgCur)];
  if (fieldid == 0) {
    d.drawnOn = true;
    return;
  }
  const int fi = yyDialogFindField(fieldid, ds.iDlgCur);
  if (fi < 0 || d.fields[static_cast<std::size_t>(fi)].type != kPicture) {
    error = 1006;
    return;
  }
  d.fields[static_cast<std::size_t>(fi)].drawnOn = true;
  d.fieldDrawnOn = true;
}

void yyDialogWidgetBlitAllNowX(DialogRecord& d) {
  if (d.freezeCount == 0 || --d.freezeCount > 0) return;
  yyFreezeRelease(d.freeze);
  // What the program drew comes back through its own expose messages.
  if (d.widget && XtIsRealized(d.widget)) XClearArea(xdisplay(), XtWindow(d.widget), 0, 0, 0, 0, True);
}

void yyDialogResize(int idx, int width, int height) {
  if (idx < 0 || idx >= kDialogs) return;
  DialogRecord& d = ds.wDialogInfo[idx];
  if (d.identifier == -1 || d.anchorFieldId == 0) return;
  // Below the size it was made for, the dialog is cut, not its fields squeezed.
  const int w = std::max(width, d.minWidth), h = std::max(height, d.minHeight);
  for (FieldRecord& f : d.fields) {
    if (!f.edgeFlags) continue;
    const DialogRect now{f.x, f.y, f.width, f.height};
    const DialogRect r = yyDialogAnchorRect(now, f.edgeFlags, f.rightGap, f.bottomGap, w, h);
    if (r == now) continue;
    f.x = r.x;
    f.y = r.y;
    f.width = r.width;
    f.height = r.height;
    configure_field(d, f);
    if (f.type == kLabel && f.valueWidget) yyDialogLabelSetText(f, f.text);
    if (yyDialogIsText(f) && f.data.pixelLimit > 0 && !(f.style & field_style::kAutoScroll))
      f.data.pixelLimit = std::max(1, f.width - ds.iFixedTextOffset);
  }
  d.width = width;
  d.height = height;
}

bool yyDialogProcessEvent(XEvent& ev) {
  if (ev.type == KeyPress) {
    // F1 in a dialog asks the program for help: PushButton 9, whatever the fields.
    const KeySym ks = XLookupKeysym(&ev.xkey, 0);
    if (ks != XK_F1 && ks != XK_KP_F1) return false;
    Widget w = XtWindowToWidget(ev.xkey.display, ev.xkey.window);
    DialogRecord* d = w ? yyDialogFindFromWgt(w) : nullptr;
    if (!d && w) d = yyDialogFindFromWgt(XmGetFocusWidget(w));  // a key sent to the shell
    if (!d) return false;
    yyDialogSendMessage(d, PushButton, 9, -1, -1, -1, -1, -1, d->identifier);
    return true;
  }
  if (ev.type != ConfigureNotify) return false;
  Widget w = XtWindowToWidget(ev.xconfigure.display, ev.xconfigure.window);
  DialogRecord* d = w ? yyDialogFindFromWgt(w) : nullptr;
  if (!d || d->widget != w || d->anchorFieldId == 0) return false;
  // A drag sends a stream of sizes: only the last one is laid out.
  XEvent more;
  while (XCheckTypedWindowEvent(ev.xconfigure.display, ev.xconfigure.window, ConfigureNotify, &more)) ev = more;
  if (ev.xconfigure.width != d->width || ev.xconfigure.height != d->height)
    yyDialogResize(yyDialogIndexOf(*d), ev.xconfigure.width, ev.xconfigure.height);
  return true;
}

void yyDialogConfigureEH(Widget, XtPointer, XEvent* ev, Boolean*) {
  if (ev) yyDialogProcessEvent(*ev);
}

Widget yyDialogBaseWidget() {
  Display* dpy = xdisplay();
  if (!dpy) return nullptr;
  Window focus = 0;
  int revert = 0;
  XGetInputFocus(dpy, &focus, &revert);
  Widget w = focus > PointerRoot ? XtWindowToWidget(dpy, focus) : nullptr;
  if (!w) return nullptr;
  if (DialogRecord* d = yyDialogFindFromWgt(w)) return d->widget;
  for (Widget s = w; s; s = XtParent(s)) {
    const auto& win = zelvy_win::state();
    for (int h = 0; h < zelvy_win::kSlots; ++h) {
      if (win.wtShell[h] != s || !yywindowexists(h)) continue;
      // A child window inside a split window hands over to its parent.
      int base = h;
      while (win.WinInfo[base].Parent >= 0 && yywindowexists(win.WinInfo[base].Parent) &&
             win.WinInfo[win.WinInfo[base].Parent].Kind == 5)
        base = win.WinInfo[base].Parent;
      return win.wtClient[base];
    }
  }
  return nullptr;
}

void yydialogload_(int resid, int dialogid, int parent, int& error) {
  error = 0;
  int kind = 0;
  Widget pw = nullptr;
  if (parent == -1) {
    kind = 2;
    pw = yyDialogBaseWidget();
  } else if (parent > 0) {
    kind = 2;
    if (yywindowexists(parent)) pw = zelvy_win::state().wtShell[parent];
  }
  const bool existed = yyDialogLoad(resid, dialogid, false, kind, pw, 2, error);
  if (error) return;
  ds.bdlgloaded = existed ? -1 : 0;
  zelvy_data::data().icurdialog = dialogid;
}

void yydialogshow_(int x, int y, int fieldid, int mode, int& error) {
  error = 0;
  const DialogRecord& d = ds.wDialogInfo[ds.iDlgCur];
  if (d.kind == 3) {
    error = 1047;
    return;
  }
  // Window units of a free-standing dialog run over the screen.
  const auto& zd = zelvy_data::data();
  const int px = x == -1 ? -1 : yyunitstopixels(x, zd.iscwid);
  const int py = y == -1 ? -1 : yyunitstopixels(y, zd.ischgt);
  error = yyDialogShow(px, py, mode, fieldid);
}

void yydialogtitle_(int icon, bool haveTitle, int& error, std::string_view title) {
  error = 0;
  (void)icon;  // dialogs show the program's icon
  if (!haveTitle) return;
  DialogRecord& d = ds.wDialogInfo[ds.iDlgCur];
  d.title.assign(title);
  if (d.shell) XtVaSetValues(d.shell, XmNtitle, d.title.empty() ? " " : d.title.c_str(), nullptr);
  // A tab page's title is its tab's label.
  if (d.kind == 1)
    for (DialogRecord& owner : ds.wDialogInfo)
      for (FieldRecord& f : owner.fields)
        if (f.type == kTab) yyTabWidgetChangeLabelX(f, d.identifier, d.title);
}

void yydialogencoding_(int encoding) { zelvy_x::state().iDialogEncoding = encoding; }

void yydialogsize_(int width, int height, int unit, int& error) {
  error = 0;
  if (zelvy_data::data().icurdialog == 0 || ds.iDlgCur < 0) {
    error = 1005;
    return;
  }
  DialogRecord& d = ds.wDialogInfo[ds.iDlgCur];
  if (d.kind == 3) {
    error = 1047;
    return;
  }
  int w = width, h = height;
  if (unit == 0) yyDialogUnitsToPixels(yyDialogFontMetrics(d.fontIndex), width, height, w, h);
  if (width < 1) w = d.width;
  if (height < 1) h = d.height;
  if (d.anchorFieldId == 0) {
    // Fields the new size cuts off are put away with their state kept, and
    // come back with it when the dialog grows again.
    for (FieldRecord& f : d.fields) {
      const DialogRect r{f.x, f.y, f.width, f.height};
      const bool before = yyDialogFieldInRect(r, d.width, d.height) != 0;
      const bool after = yyDialogFieldInRect(r, w, h) != 0;
      if (before && !after) {
        const int kept = f.lastState;
        yyDialogFieldStateX(3, d, f);
        f.lastState = kept;
      } else if (!before && after) {
        yyDialogFieldStateX(f.lastState, d, f);
      }
    }
    d.minWidth = std::min(d.minWidth, w);
    d.minHeight = std::min(d.minHeight, h);
    d.width = w;
    d.height = h;
    if (d.shell)
      XtVaSetValues(d.shell, XmNminWidth, w, XmNminHeight, h, XmNmaxWidth, w, XmNmaxHeight, h, XtNwidth, w,
                    XtNheight, h, nullptr);
    if (d.widget) XtVaSetValues(d.widget, XtNwidth, w, XtNheight, h, nullptr);
    return;
  }
  if (d.shell) XtVaSetValues(d.shell, XmNminWidth, d.minWidth, XmNminHeight, d.minHeight, XtNwidth, w, XtNheight, h, nullptr);
  // Laid out now; the configure event that follows finds the size taken.
  yyDialogResize(ds.iDlgCur, w, h);
  if (d.widget) XtVaSetValues(d.widget, XtNwidth, w, XtNheight, h, nullptr);
}

int yyinfodialog_(int item) {
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
    case 4: return yyComDlgResultClass(zelvy_comdlg::data().icdlgbut);
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
    case 15: return zelvy_comdlg::data().icdlgbut;
    case 18: return zelvy_x::state().iDialogEncoding;
    default: return 0;
  }
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
  // The window sizes its content to its client area; a resizable dialog follows.
  zelvy_win::state().WinInfo[handle].Content = d.widget;
  XtManageChild(d.widget);
  yyDialogSizeFix(d);
  d.shownMode = 2;
  show_default_mark(d);
  yyDialogFocusFirst(d);
}

void yywindowdialogclose(int handle) {
  for (int i = 0; i < kDialogs; ++i) {
    DialogRecord& d = ds.wDialogInfo[i];
    if (d.identifier == -1 || d.kind != 3 || d.parentWindow != handle) continue;
    if (ds.iDlgCur == i) {
      ds.iDlgCur = -1;
      zelvy_data::data().icurdialog = 0;
    }
    if (yywindowexists(handle) && zelvy_win::state().WinInfo[handle].Content == d.widget)
      zelvy_win::state().WinInfo[handle].Content = nullptr;
    yyDialogDestroy(i);
    if (yywindowexists(handle) && zelvy_win::state().WinInfo[handle].Kind == 3) zelvy_win::state().WinInfo[handle].Kind = 0;
  }
}

// ---- Public routines -------------------------------------------------------

void WDialogLoad(int resid, std::optional<int> dialogid, std::optional<int> parent) {
  dialog_metrics_ready();
  int err = 0;
  yydialogload_(resid, dialogid.value_or(resid), parent.value_or(0), err);
  if (err) yyerror(err, "WDialogLoad");
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
  if (!d->shell && m != 2) {
    yyerror(1014, "WDialogShow");
    m = 2;
  }
  if (m < 1 || m > 3) {
    yyerror(1014, "WDialogShow");
    m = 2;
  }
  const bool modal = m == 1;
  // Other windows keep their picture and take no input while the dialog runs;
  // the picture is taken before the dialog covers any of them.
  if (modal) yymessagemodal(1, d->shell);
  int err = 0;
  yydialogshow_(x.value_or(-1), y.value_or(-1), fieldid.value_or(0), modal ? 3 : m, err);
  if (err) {
    if (modal) yymessagemodal(0);
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
    if (ds.wDialogInfo[idx].identifier != myId) {  // unloaded underneath the loop
      yymessagemodal(0);
      return;
    }
  } while (type != PushButton);
  ds.iModalDialog = rec.Win;
  ds.iModalButton = rec.Value1;
  ds.iModalField = rec.Value2;
  yyDialogHide(idx);
  yymessagemodal(0);
}

void yycomdlggetpos(int code, bool isDialog, int width, int height, int& x, int& y) {
  // The reference's origin on the screen; a reference that isn't there
  // leaves x, y as given, then still kept on the screen.
  auto from_dialog = [&](const DialogRecord* d) {
    if (!d || !d->widget || !XtIsRealized(d->widget)) return false;
    Window child = 0;
    int rx = 0, ry = 0;
    if (!XTranslateCoordinates(xdisplay(), XtWindow(d->widget), DefaultRootWindow(xdisplay()), x, y, &rx, &ry, &child))
      return false;
    x = rx;
    y = ry;
    return true;
  };
  auto dialog_with_id = [](int id) -> const DialogRecord* {
    const int idx = yyDialogFind(id);
    return idx < 0 ? nullptr : &ds.wDialogInfo[static_cast<std::size_t>(idx)];
  };
  if (xdisplay()) {
    if (code < 0) {
      const DialogRecord* cur = ds.iDlgCur >= 0 && ds.wDialogInfo[static_cast<std::size_t>(ds.iDlgCur)].shownMode != -1
                                    ? &ds.wDialogInfo[static_cast<std::size_t>(ds.iDlgCur)]
                                    : nullptr;
      if (!from_dialog(cur)) yyWindowGetPos(0, x, y);
    } else if (isDialog) {
      from_dialog(dialog_with_id(code));
    } else {
      yyWindowGetPos(code, x, y);
    }
  }
  yyWindowPositionOnScreen(width, height, x, y);
}

void WDialogShowCommon(std::optional<int> fieldid, std::optional<int> mode, std::optional<int> code) {
  DialogRecord* d = yyDialogCurrent("WDialogShow");
  if (!d) return;
  int x = zelvy_comdlg::data().wcomdlgpos[0], y = zelvy_comdlg::data().wcomdlgpos[1];
  yycomdlggetpos(code.value_or(-1), false, d->width, d->height, x, y);
  WDialogShow(x, y, fieldid, mode);
}

void wdialogshowcommon(std::optional<int> fieldid, std::optional<int> mode, std::optional<int> code) {
  WDialogShowCommon(fieldid, mode, code);
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
  yyDialogUnload(ds.iDlgCur);
}

void WDialogTitle(std::optional<std::string_view> title, std::optional<int> iconid) {
  if (!yyDialogCurrent("WDialogTitle")) return;
  std::string_view t = title.value_or(std::string_view{});
  while (!t.empty() && t.back() == ' ') t.remove_suffix(1);
  int err = 0;
  yydialogtitle_(iconid.value_or(-1), title.has_value(), err, t);
  if (err) yyerror(err, "WDialogTitle");
}

void wdialogunitstopixels(int x, int y, int& px, int& py) {
  const int font = (zelvy_data::data().icurdialog != 0 && ds.iDlgCur >= 0) ? ds.wDialogInfo[ds.iDlgCur].fontIndex : 0;
  yyDialogUnitsToPixels(yyDialogFontMetrics(font), x, y, px, py);
}

void wdialogunitsfrompixels(int x, int y, int& ux, int& uy) {
  const int font = (zelvy_data::data().icurdialog != 0 && ds.iDlgCur >= 0) ? ds.wDialogInfo[ds.iDlgCur].fontIndex : 0;
  yyDialogUnitsFromPixels(yyDialogFontMetrics(font), x, y, ux, uy);
}

// The encoding's item is the C layer's alone.
int WInfoDialog(int item) { return item == 18 ? 0 : yyinfodialog_(item); }

void yyDialogAttach() {
  DialogEngineHooks hooks;
  hooks.init = yyDialogInit;
  hooks.shutdown = yyDialogShutdown;
  hooks.pixels = window_dialog_pixels;
  hooks.combine = window_dialog_combine;
  hooks.freeze = dialog_freeze;
  yyAttachDialogEngine(hooks);
  LoopHooks loop;
  loop.dialogEvent = yyDialogProcessEvent;
  yyAttachLoopHooks(loop);
}

namespace zelvy_dialog {
State& state() {
  static State s;
  return s;
}
}  // namespace zelvy_dialog
