// Toolbars of windows: the bars and their buttons, their images and grey
// images, the states mirrored from the menus, and their tooltips.
#include "toolkit/kernel/toolbar_private.h"

#include <X11/IntrinsicP.h>
#include <X11/StringDefs.h>
#include <Xm/DrawingA.h>
#include <Xm/ToggleB.h>
#include <Xm/Xm.h>

#include <algorithm>

#include "toolkit/base/error.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/tooltip_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

constexpr int kStripType = 1;  // image type of a button strip
constexpr int kSchemeBackground = 3, kSchemeTopShadow = 2, kSchemeBottomShadow = 4;
// Room around the images: the bar's depth beyond a button's image, the
// button beyond its image, the first button's offset, separators.
constexpr int kAcrossTopBottom = 12, kAcrossSides = 10;
constexpr int kButtonFrame = 6;
constexpr int kFirstX = 2, kFirstY = 4;
constexpr int kSeparatorAlong = 8, kSeparatorDown = 5;
// Hover delays: before the first tooltip, and before the next one when the
// pointer moves on from a button whose tooltip showed.
constexpr unsigned long kButtonTipDelay = 500, kButtonTipDelayInstant = 100;

zelvy_toolbar::State& tb() { return zelvy_toolbar::state(); }

bool horizontal(int slot) { return slot == kToolbarTop || slot == kToolbarBottom; }

int thickness_for(int slot, int buttonwidth, int buttonheight) {
  return horizontal(slot) ? buttonheight + kAcrossTopBottom : buttonwidth + kAcrossSides;
}

bool valid_window(int h) { return h >= 0 && h < zelvy_toolbar::kSlots; }

Pixel scheme(int k) { return zelvy_x::state().wSchemeCol[static_cast<std::size_t>(k)].pixel; }

bool has_toolbar(int h) {
  if (!valid_window(h)) return false;
  for (const auto& b : tb().pwToolbar[h])
    if (b) return true;
  return false;
}

// The state the menus hold for an item: the window's menu, or the root
// window's when the window has none; then a state set for the identifier alone.
std::optional<int> menu_state(int h, int id) {
  auto& ms = zelvy_menu::state();
  const MenuRecord* m = nullptr;
  if (h >= 0 && h < zelvy_menu::kMenuSlots && ms.pwRootMenuSub[h]) m = ms.pwRootMenuSub[h].get();
  else if (ms.pwRootMenuSub[0]) m = ms.pwRootMenuSub[0].get();
  const int i = m ? m->find(id) : -1;
  if (i >= 0) return static_cast<int>(m->ItemFlags[i] & (kMenuGreyed | kMenuChecked));
  if (auto it = ms.itemstates.find(id); it != ms.itemstates.end()) return it->second;
  return std::nullopt;
}

void mirror_menu_states(ToolbarRecord& bar) {
  for (int k = 0; k < bar.ButtonCount(); ++k)
    if (bar.ButtonIds[k] != 0)
      if (auto s = menu_state(bar.Window, bar.ButtonIds[k])) yyMenuSetToolbarItem(bar, k, *s);
}

void yyMenuToolbarDrawCB(Widget w, XtPointer, XtPointer) {
  if (!XtIsRealized(w)) return;
  Display* dpy = XtDisplay(w);
  Dimension width = 0;
  XtVaGetValues(w, XtNwidth, &width, nullptr);
  GC gc = XCreateGC(dpy, XtWindow(w), 0, nullptr);
  XSetForeground(dpy, gc, scheme(kSchemeBottomShadow));
  XDrawLine(dpy, XtWindow(w), gc, 0, 0, width, 0);
  XSetForeground(dpy, gc, scheme(kSchemeTopShadow));
  XDrawLine(dpy, XtWindow(w), gc, 0, 1, width, 1);
  XFreeGC(dpy, gc);
}

void set_shadow(Widget w, bool on) { XtVaSetValues(w, XmNshadowThickness, on ? 1 : 0, nullptr); }

bool checked(const ToolbarRecord& bar, int k) { return (bar.ButtonStates[k] & kMenuChecked) != 0; }

void yyMenuButtonPressedCB(Widget w, XtPointer client, XtPointer) {
  auto* bar = static_cast<ToolbarRecord*>(client);
  const auto it = std::find(bar->ButtonWidgets.begin(), bar->ButtonWidgets.end(), w);
  if (it == bar->ButtonWidgets.end()) return;
  const int k = static_cast<int>(it - bar->ButtonWidgets.begin());
  // The toggle only shows the item's check state: a click must not change it.
  XmToggleButtonSetState(w, checked(*bar, k) ? True : False, False);
  yyTooltipDestroy();
  set_shadow(w, checked(*bar, k));
  yyMsgSend(MenuSelect, bar->ButtonIds[k], zelvy_menu::state().iTextMenuType, 0, 0, 0, 0, bar->Window, 0);
  XmUpdateDisplay(w);
}

// The text a button shows as its tooltip: set at run time, else the string
// of the resources with the item's identifier, else a dynamic toolbar's own.
std::string tooltip_text(const ToolbarRecord& bar, int k) {
  const int id = bar.ButtonIds[k];
  for (const auto& [item, text] : tb().pTooltip[bar.Window])
    if (item == id) return text;
  int length = 0;
  yyrcstringcheck(id, length);
  if (length > 1) {
    std::string text;
    yyrcstringload(id, text);
    return text;
  }
  if (bar.ButtonTexts[k]) return *bar.ButtonTexts[k];
  return {};
}

// The window that holds the input focus; with the focus following the
// pointer, the one under it.
int focus_window(Widget under) {
  Window focus = 0;
  int revert = 0;
  XGetInputFocus(xdisplay(), &focus, &revert);
  if (focus == None) return -1;
  if (focus == PointerRoot) focus = XtWindow(under);
  int kind = 1;
  return yyGetParentHandle(kind, focus);
}

void yyMenuTooltipCB(XtPointer client, XtIntervalId*) {
  auto* bar = static_cast<ToolbarRecord*>(client);
  yyTooltipDestroy();
  if (!bar->LastButton || focus_window(bar->LastButton) != bar->Window) return;
  const auto it = std::find(bar->ButtonWidgets.begin(), bar->ButtonWidgets.end(), bar->LastButton);
  if (it == bar->ButtonWidgets.end()) return;
  const std::string text = tooltip_text(*bar, static_cast<int>(it - bar->ButtonWidgets.begin()));
  if (!text.empty()) yyTooltipCreate(bar->LastButton, text);
}

void yyMenuTooltipEH(Widget w, XtPointer client, XEvent* event, Boolean*) {
  auto* bar = static_cast<ToolbarRecord*>(client);
  if (event->type == EnterNotify) {
    if (yyMenuIsOpen()) return;
    set_shadow(w, true);
    bar->LastButton = w;
    yyTooltipArm(yyMenuTooltipCB, bar, kButtonTipDelay, kButtonTipDelayInstant);
  } else if (event->type == LeaveNotify) {
    int k = -1;
    yyMenuToolbarOf(w, k);
    set_shadow(w, k >= 0 && checked(*bar, k));
    yyTooltipLeave();
  }
}

void fill(Pixmap p, int x, int y, int w, int h, Pixel colour) {
  Display* dpy = xdisplay();
  GC gc = XCreateGC(dpy, p, 0, nullptr);
  XSetForeground(dpy, gc, colour);
  XFillRectangle(dpy, p, gc, x, y, static_cast<unsigned>(w), static_cast<unsigned>(h));
  XFreeGC(dpy, gc);
}

Pixmap new_pixmap(int w, int h) {
  Display* dpy = xdisplay();
  const auto& xs = zelvy_x::state();
  return XCreatePixmap(dpy, RootWindow(dpy, xs.iScreen), static_cast<unsigned>(std::max(1, w)),
                       static_cast<unsigned>(std::max(1, h)), static_cast<unsigned>(DefaultDepth(dpy, xs.iScreen)));
}

void free_pixmap(Pixmap& p) {
  if (p != kNoPixmap && p != 0 && xdisplay()) XFreePixmap(xdisplay(), p);
  p = kNoPixmap;
}

// Which toolbar of a window stands where: the slot, or -1.
std::unique_ptr<ToolbarRecord>* slot_of(int h, int slot) {
  if (!valid_window(h) || slot < 0 || slot >= kToolbarSlots) return nullptr;
  return &tb().pwToolbar[h][static_cast<std::size_t>(slot)];
}

// A made record goes into its slot, its widgets are made and its buttons
// take the menus' states.
void install(std::unique_ptr<ToolbarRecord> bar, int h, int slot, Pixmap strip, int stripheight) {
  auto& place = *slot_of(h, slot);
  yyMenuToolbarDestroy(place);
  bar->Window = h;
  bar->Slot = slot;
  bar->Thickness = thickness_for(slot, bar->ButtonWidth, bar->ButtonHeight);
  place = std::move(bar);
  yyMenuToolbarCreateItems(*place, strip, stripheight);
  mirror_menu_states(*place);
}

}  // namespace

ToolbarRecord* yyMenuToolbarOf(Widget w, int& index) {
  index = -1;
  if (!w) return nullptr;
  for (auto& slots : tb().pwToolbar)
    for (auto& bar : slots) {
      if (!bar) continue;
      if (bar->Bar == w) return bar.get();
      const auto it = std::find(bar->ButtonWidgets.begin(), bar->ButtonWidgets.end(), w);
      if (it != bar->ButtonWidgets.end()) {
        index = static_cast<int>(it - bar->ButtonWidgets.begin());
        return bar.get();
      }
    }
  return nullptr;
}

ToolbarRecord* yyMenuToolbarOfWindow(Window xwin, int& index) {
  index = -1;
  if (!xwin || !xdisplay()) return nullptr;
  return yyMenuToolbarOf(XtWindowToWidget(xdisplay(), xwin), index);
}

Pixmap yyMenuGetButtonImage(Pixmap strip, int index, int width, int height, int stripheight) {
  Display* dpy = xdisplay();
  if (!dpy || strip == kNoPixmap || width < 1 || height < 1) return kNoPixmap;
  const Pixmap p = new_pixmap(width, height);
  if (stripheight < height) fill(p, 0, 0, width, height, scheme(kSchemeBackground));
  GC gc = XCreateGC(dpy, p, 0, nullptr);
  XCopyArea(dpy, strip, p, gc, index * width, 0, static_cast<unsigned>(width),
            static_cast<unsigned>(std::min(height, stripheight)), 0, 0);
  XFreeGC(dpy, gc);
  return p;
}

std::unique_ptr<ToolbarRecord> yyMenuToolbarLoad(int toolbarid, std::span<const int> ids, Pixmap& strip,
                                                 int& stripheight, int& error) {
  strip = kNoPixmap;
  stripheight = 0;
  int count = -1, bw = 0, bh = 0;
  yyrctoolbarcheck(toolbarid, count, bw, bh);
  if (count < 0) {
    error = 1002;
    return nullptr;
  }
  std::vector<int> own(static_cast<std::size_t>(count));
  yyrctoolbarload(toolbarid, own);
  auto bar = std::make_unique<ToolbarRecord>();
  bar->ToolbarId = toolbarid;
  bar->ButtonWidth = bw;
  bar->ButtonHeight = bh;
  int sw = 0;
  if (xdisplay()) strip = yyResourceImagePixmap(toolbarid, kStripType, scheme(kSchemeBackground), sw, stripheight);
  // Where each of the resource's buttons has its image: separators take no room.
  auto image_of = [&own](int id) {
    int place = 0;
    for (int r : own) {
      if (r == id) return place;
      if (r != 0) ++place;
    }
    return -1;
  };
  if (ids.empty()) {
    bar->ButtonIds = own;
    for (int id : own) bar->ImageIndex.push_back(id != 0 ? image_of(id) : -1);
  } else {
    bar->ButtonIds.assign(ids.begin(), ids.end());
    for (int id : ids) {
      const int at = id != 0 ? image_of(id) : -1;
      if (id != 0 && at < 0) error = 1001;
      bar->ImageIndex.push_back(at);
    }
  }
  const std::size_t n = bar->ButtonIds.size();
  bar->ButtonStates.assign(n, 0);
  bar->ButtonTexts.assign(n, std::nullopt);
  return bar;
}

void yyMenuToolbarCreateItems(ToolbarRecord& bar, Pixmap strip, int stripheight) {
  const std::size_t n = bar.ButtonIds.size();
  bar.ButtonWidgets.assign(n, nullptr);
  bar.ButtonPixmaps.assign(n, kNoPixmap);
  bar.GreyPixmaps.assign(n, kNoPixmap);
  Widget frame = zelvy_win::state().wtWindow[bar.Window];
  if (!frame) {
    free_pixmap(strip);
    return;
  }
  bar.Bar = XtVaCreateWidget("Toolbar", xmDrawingAreaWidgetClass, frame, XmNresizePolicy, XmRESIZE_NONE,
                             XmNmarginWidth, 0, XmNmarginHeight, 0, XtNwidth, 1, XtNheight, 1,
                             // A bar is worked with the mouse; it must not take the keyboard from the text.
                             XmNtraversalOn, False, nullptr);
  XtAddCallback(bar.Bar, XmNexposeCallback, yyMenuToolbarDrawCB, nullptr);
  XtAddCallback(bar.Bar, XmNresizeCallback, yyMenuToolbarDrawCB, nullptr);
  const bool along = horizontal(bar.Slot);
  int x = kFirstX, y = kFirstY;
  for (std::size_t k = 0; k < n; ++k) {
    if (bar.ButtonIds[k] == 0) {
      (along ? x : y) += along ? kSeparatorAlong : kSeparatorDown;
      continue;
    }
    Widget b = XtVaCreateManagedWidget(
        "ToolbarButton", xmToggleButtonWidgetClass, bar.Bar, XmNshadowThickness, 0, XmNindicatorOn, False,
        XmNfillOnSelect, True, XmNrecomputeSize, False, XmNtraversalOn, False, XmNhighlightThickness, 0,
        XtNborderWidth, 0, XmNset, False, XtNx, x, XtNy, y, XtNwidth, bar.ButtonWidth + kButtonFrame, XtNheight,
        bar.ButtonHeight + kButtonFrame, nullptr);
    XmString empty = XmStringCreateLocalized(const_cast<char*>(""));
    XtVaSetValues(b, XmNlabelString, empty, nullptr);
    XmStringFree(empty);
    XtAddCallback(b, XmNvalueChangedCallback, yyMenuButtonPressedCB, &bar);
    XtAddEventHandler(b, EnterWindowMask | LeaveWindowMask, False, yyMenuTooltipEH, &bar);
    bar.ButtonWidgets[k] = b;
    if (strip != kNoPixmap && bar.ImageIndex[k] >= 0) {
      Pixmap image = yyMenuGetButtonImage(strip, bar.ImageIndex[k], bar.ButtonWidth, bar.ButtonHeight, stripheight);
      Pixmap grey = yyCreateGreyPixmap(image, bar.ButtonWidth, bar.ButtonHeight, scheme(kSchemeBackground));
      if (image == kNoPixmap || grey == kNoPixmap) {
        free_pixmap(image);
        free_pixmap(grey);
      } else {
        XtVaSetValues(b, XmNlabelType, XmPIXMAP, XmNlabelPixmap, image, XmNlabelInsensitivePixmap, grey, nullptr);
        bar.ButtonPixmaps[k] = image;
        bar.GreyPixmaps[k] = grey;
      }
    }
    (along ? x : y) += (along ? bar.ButtonWidth : bar.ButtonHeight) + kButtonFrame;
  }
  free_pixmap(strip);
}

void yyMenuToolbarResize(int x, int y, int width, int height, ToolbarRecord& bar) {
  if (!bar.Bar) return;
  XtConfigureWidget(bar.Bar, static_cast<Position>(x), static_cast<Position>(y),
                    static_cast<Dimension>(std::max(1, width)), static_cast<Dimension>(std::max(1, height)), 0);
  if (!XtIsRealized(bar.Bar)) {
    XtRealizeWidget(bar.Bar);
    // Context clicks on the bar reach the message loop.
    XSelectInput(xdisplay(), XtWindow(bar.Bar),
                 XtBuildEventMask(bar.Bar) | ButtonReleaseMask | ButtonPressMask);
  }
  if (!XtIsManaged(bar.Bar)) XtManageChild(bar.Bar);
  XRaiseWindow(xdisplay(), XtWindow(bar.Bar));
}

void yyMenuToolbarDestroy(std::unique_ptr<ToolbarRecord>& bar) {
  if (!bar) return;
  yyTooltipDestroy();
  if (bar->Bar) {
    XtUnmanageChild(bar->Bar);
    for (std::size_t k = 0; k < bar->ButtonWidgets.size(); ++k) {
      Widget b = bar->ButtonWidgets[k];
      if (!b) continue;
      XtRemoveCallback(b, XmNvalueChangedCallback, yyMenuButtonPressedCB, bar.get());
      XtRemoveEventHandler(b, EnterWindowMask | LeaveWindowMask, False, yyMenuTooltipEH, bar.get());
      XtDestroyWidget(b);
    }
    XtDestroyWidget(bar->Bar);
  }
  // The pixmaps go after the widgets that show them.
  for (Pixmap& p : bar->ButtonPixmaps) free_pixmap(p);
  for (Pixmap& p : bar->GreyPixmaps) free_pixmap(p);
  bar.reset();
}

void yyMenuSetToolbarItem(ToolbarRecord& bar, int index, int state) {
  if (index < 0 || index >= bar.ButtonCount()) return;
  bar.ButtonStates[index] = state;
  Widget b = bar.ButtonWidgets[index];
  if (!b) return;
  XtSetSensitive(b, (state & kMenuGreyed) ? False : True);
  XmToggleButtonSetState(b, (state & kMenuChecked) ? True : False, False);
  set_shadow(b, (state & kMenuChecked) != 0);
}

void yyMenuSetToolbarIdent(int window, int itemid, int state) {
  if (!valid_window(window)) return;
  for (auto& bar : tb().pwToolbar[window]) {
    if (!bar) continue;
    for (int k = 0; k < bar->ButtonCount(); ++k)
      if (bar->ButtonIds[k] == itemid) yyMenuSetToolbarItem(*bar, k, state);
  }
}

int yyMenuToolbarButtonState(int window, int itemid) {
  if (!valid_window(window)) return -1;
  for (const auto& bar : tb().pwToolbar[window]) {
    if (!bar) continue;
    for (int k = 0; k < bar->ButtonCount(); ++k)
      if (bar->ButtonIds[k] == itemid) return bar->ButtonStates[k];
  }
  return -1;
}

void yyMenuToolbarCreate(int toolbarid, int window, int slot, std::span<const int> ids, int& error) {
  Pixmap strip = kNoPixmap;
  int stripheight = 0, loaderror = 0;
  auto bar = yyMenuToolbarLoad(toolbarid, ids, strip, stripheight, loaderror);
  if (loaderror) error = loaderror;
  if (!bar) return;
  install(std::move(bar), window, slot, strip, stripheight);
}

void yymenutoolbar(int toolbarid, int window, int slot, int& clientwidth, int& clientheight,
                   std::span<const int> ids, int& error) {
  clientwidth = clientheight = -1;
  error = 0;
  if (!yywindowexists(window)) {
    error = 1003;
    return;
  }
  if (!slot_of(window, slot)) {
    error = 1001;
    return;
  }
  WindowRecord& r = zelvy_win::state().WinInfo[window];
  const int oldw = r.ClientWidth, oldh = r.ClientHeight;
  if (toolbarid == 0) {
    yyMenuToolbarDestroy(*slot_of(window, slot));
    if (!has_toolbar(window)) yyMenuTooltipsDelRuntime(window);
  } else {
    int count = -1, bw = 0, bh = 0;
    yyrctoolbarcheck(toolbarid, count, bw, bh);
    if (count < 0) {
      error = 1002;
      return;
    }
    yyMenuToolbarCreate(toolbarid, window, slot, ids, error);
  }
  yyWindowResize(window);
  if (r.ClientWidth == oldw && r.ClientHeight == oldh) return;
  clientwidth = r.ClientWidth;
  clientheight = r.ClientHeight;
  // The ordinary resize path tells the application: it lays the window out
  // again and reports the client's new size.
  r.ClientWidth = oldw;
  r.ClientHeight = oldh;
  const auto& ws = zelvy_win::state();
  XEvent ev{};
  ev.xconfigure.type = ConfigureNotify;
  ev.xconfigure.display = xdisplay();
  ev.xconfigure.event = ev.xconfigure.window = ws.wWindow[window];
  ev.xconfigure.width = r.FrameWidth;
  ev.xconfigure.height = r.FrameHeight;
  XSendEvent(xdisplay(), ws.wWindow[window], False, NoEventMask, &ev);
  XFlush(xdisplay());
}

void yyMenuLoadDynamicToolbar(std::span<const ToolbarDescriptor> rows, int window, int imageid, int size) {
  auto* place = slot_of(window, kToolbarTop);
  if (!place || !yywindowexists(window)) return;
  auto bar = std::make_unique<ToolbarRecord>();
  bar->ToolbarId = kToolbarDynamic;
  bar->ButtonWidth = bar->ButtonHeight = size;
  int image = 0;  // every row with an item has its place in the strip
  for (const ToolbarDescriptor& row : rows) {
    const int at = row.id != 0 ? image++ : -1;
    if (!row.include) continue;
    bar->ButtonIds.push_back(row.id);
    bar->ImageIndex.push_back(at);
    bar->ButtonTexts.emplace_back(row.id != 0 ? std::optional<std::string>(row.text) : std::nullopt);
  }
  if (bar->ButtonIds.empty()) {
    yyMenuToolbarDestroy(*place);
    yyWindowResize(window);
    return;
  }
  bar->ButtonStates.assign(bar->ButtonIds.size(), 0);
  int sw = 0, sh = 0;
  const Pixmap strip = yyResourceImagePixmap(imageid, kStripType, scheme(kSchemeBackground), sw, sh);
  install(std::move(bar), window, kToolbarTop, strip, sh);
  yyWindowResize(window);
}

void yyMenuToolbarLayout(int window, int& x, int& y, int& width, int& height) {
  if (!valid_window(window)) return;
  auto& bars = tb().pwToolbar[window];
  auto depth = [&bars](int slot) { return bars[static_cast<std::size_t>(slot)] ? bars[static_cast<std::size_t>(slot)]->Thickness : 0; };
  if (auto& b = bars[kToolbarTop]) yyMenuToolbarResize(x, y, width, b->Thickness, *b);
  y += depth(kToolbarTop);
  height -= depth(kToolbarTop);
  if (auto& b = bars[kToolbarBottom]) yyMenuToolbarResize(x, y + height - b->Thickness, width, b->Thickness, *b);
  height -= depth(kToolbarBottom);
  if (auto& b = bars[kToolbarLeft]) yyMenuToolbarResize(x, y, b->Thickness, height, *b);
  x += depth(kToolbarLeft);
  width -= depth(kToolbarLeft);
  if (auto& b = bars[kToolbarRight]) yyMenuToolbarResize(x + width - b->Thickness, y, b->Thickness, height, *b);
  width -= depth(kToolbarRight);
}

int yyMenuToolbarThickness(int window, int slot) {
  auto* place = slot_of(window, slot);
  return place && *place ? (*place)->Thickness : 0;
}

int yyMenuToolbarResourceThickness(int toolbarid, int slot) {
  if (toolbarid <= 0 || slot < 0 || slot >= kToolbarSlots) return 0;
  int count = -1, bw = 0, bh = 0;
  yyrctoolbarcheck(toolbarid, count, bw, bh);
  return count < 0 ? 0 : thickness_for(slot, bw, bh);
}

void yyMenuToolbarWindowClosed(int window) {
  if (!valid_window(window)) return;
  for (auto& bar : tb().pwToolbar[window]) yyMenuToolbarDestroy(bar);
  yyMenuTooltipsDelRuntime(window);
}

void yyMenuTooltipsDelRuntime(int window) {
  if (valid_window(window)) tb().pTooltip[window].clear();
}

void yymenutooltip(int itemid, int& error, std::string_view text) {
  error = 0;
  const auto& ms = zelvy_menu::state();
  if (ms.iFloatMenu && ms.pwFloatMenu) return;
  int h = zelvy_win::state().iWinCur;
  const bool own = valid_window(h) && (has_toolbar(h) || (h < zelvy_menu::kMenuSlots && ms.pwRootMenuSub[h]));
  if (!own) h = 0;
  if (!has_toolbar(h) || yyMenuToolbarButtonState(h, itemid) < 0) {
    error = 1001;
    return;
  }
  auto& table = tb().pTooltip[h];
  for (auto& [item, t] : table)
    if (item == itemid) {
      t = std::string(text);
      return;
    }
  table.emplace_back(itemid, std::string(text));
}

namespace zelvy_toolbar {
State& state() {
  static State s;
  return s;
}
}  // namespace zelvy_toolbar
