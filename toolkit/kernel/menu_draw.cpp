// Menus on the screen: fonts, colours and measures, the X windows of the
// bar and the pop-ups, drawing, opening and closing pop-ups, the highlight.
#include "toolkit/kernel/menu_private.h"


#include <algorithm>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/statusbar_private.h"
#include "toolkit/kernel/window_private.h"

// This module's state.
static zelvy_menu::State& ms = zelvy_menu::state();

using namespace menu_detail;

// ---- Fonts, colours, measures ---------------------------------------------

namespace {

// What drawing needs, made once for all menus, and what an open menu keeps.
struct Look {
  XftFont* xftMenuFont = nullptr;
  XFontStruct* coreMenuFont = nullptr;
  GC menuGC = nullptr;
  XftDraw* menuDraw = nullptr;
  XftColor colFore{}, colSel{}, colGrey{}, colWhite{};
  bool focusSaved = false;  // the focus to give back when the menu closes
  Window savedFocus = None;
  int savedRevert = RevertToParent;
  int promptBar = -1;  // the window whose status bar shows the prompt line, -1 none
  std::vector<std::pair<Pixel, XftColor>> knownColours;
  bool measured = false;  // the row height, with the font of a display; until then nominal
};
Look look;

bool drawing_ready() { return xdisplay() && look.menuGC; }

// Asking the server for a pixel's colour is a round trip: each pixel value is
// asked once and kept for the life of the display.
XftColor xft_colour(Pixel p) {
  for (const auto& [pixel, colour] : look.knownColours)
    if (pixel == p) return colour;
  XColor c{};
  c.pixel = p;
  XQueryColor(xdisplay(), zelvy_x::state().iCmapMain, &c);
  XRenderColor rc{c.red, c.green, c.blue, 0xffff};
  XftColor out{};
  XftColorAllocValue(xdisplay(), DefaultVisual(xdisplay(), zelvy_x::state().iScreen), zelvy_x::state().iCmapMain, &rc, &out);
  look.knownColours.emplace_back(p, out);
  return out;
}

void prepare_drawing() {
  if (!xdisplay() || look.menuGC) return;
  yyMenuRowHeight();
  const Window root = RootWindow(xdisplay(), zelvy_x::state().iScreen);
  look.menuGC = XCreateGC(xdisplay(), root, 0, nullptr);
  if (look.coreMenuFont) XSetFont(xdisplay(), look.menuGC, look.coreMenuFont->fid);
  if (look.xftMenuFont) {
    look.menuDraw = XftDrawCreate(xdisplay(), root, DefaultVisual(xdisplay(), zelvy_x::state().iScreen), zelvy_x::state().iCmapMain);
    const ZelvAppData& a = zelvy_x::state().appData;
    look.colFore = xft_colour(a.menuForeColor);
    look.colSel = xft_colour(a.menuselForeColor);
    look.colGrey = xft_colour(a.grayTextColor);
    look.colWhite = xft_colour(WhitePixel(xdisplay(), zelvy_x::state().iScreen));
  }
}

int text_width(std::string_view text) {
  if (text.empty() || !xdisplay()) return 0;
  if (look.xftMenuFont) {
    int type = 0;
    const std::string utf8 = yyConvertEncoding(text, zelvy_x::state().iDialogEncoding, type);
    XGlyphInfo ext{};
    XftTextExtentsUtf8(xdisplay(), look.xftMenuFont, reinterpret_cast<const FcChar8*>(utf8.data()),
                       static_cast<int>(utf8.size()), &ext);
    return ext.xOff;
  }
  if (look.coreMenuFont) return XTextWidth(look.coreMenuFont, text.data(), static_cast<int>(text.size()));
  return 0;
}

void draw_text(Window w, int x, int y, std::string_view text, Pixel core, const XftColor& xft) {
  if (text.empty()) return;
  if (look.xftMenuFont && look.menuDraw) {
    int type = 0;
    const std::string utf8 = yyConvertEncoding(text, zelvy_x::state().iDialogEncoding, type);
    XftDrawChange(look.menuDraw, w);
    XftDrawStringUtf8(look.menuDraw, &xft, look.xftMenuFont, x, y, reinterpret_cast<const FcChar8*>(utf8.data()),
                      static_cast<int>(utf8.size()));
  } else {
    XSetForeground(xdisplay(), look.menuGC, core);
    XDrawString(xdisplay(), w, look.menuGC, x, y, text.data(), static_cast<int>(text.size()));
  }
}

// The text in front of the accelerator, and the accelerator text.
std::pair<std::string_view, std::string_view> split_text(std::string_view t) {
  const auto cut = t.find_first_of("\t\b");
  if (cut == std::string_view::npos) return {t, {}};
  return {t.substr(0, cut), t.substr(cut + 1)};
}

}  // namespace

int yyMenuRowHeight() {
  if (look.measured || (ms.iMenuHeight > 0 && !xdisplay())) return ms.iMenuHeight;
  int height = 13;
  if (xdisplay()) {
    look.measured = true;
    const ZelvAppData& a = zelvy_x::state().appData;
    if (zelvy_x::state().bXft) look.xftMenuFont = yyXftOpen(a.xftNameMenu, a.xftSizeMenu > 0 ? a.xftSizeMenu : 8);
    if (!look.xftMenuFont) look.coreMenuFont = zelvy_x::state().dialogFontStruct;
    if (look.xftMenuFont || look.coreMenuFont) height = yySampleTextHeight(look.xftMenuFont, look.coreMenuFont);
  }
  ms.iMenuHeight = height + 8;
  ms.iMenuYText = height + 4;
  ms.iVertUnd = height + 6;
  return ms.iMenuHeight;
}

// ---- Windows ---------------------------------------------------------------

namespace menu_detail {

void measure(MenuRecord& m) {
  yyMenuRowHeight();
  for (int p = 0; p < m.PopupCount; ++p) {
    const std::vector<int> items = items_of(m, p);
    if (p == 0 && !m.Floating) {
      for (int i : items) m.ItemWidth[i] = m.separator(i) ? 1 : text_width(m.ItemText[i]) + 11;
      continue;
    }
    int textwidth = 0, rows = 0, seps = 0;
    for (int i : items) {
      if (m.separator(i)) {
        ++seps;
        continue;
      }
      ++rows;
      const auto [label, accel] = split_text(m.ItemText[i]);
      textwidth = std::max(textwidth, 10 + text_width(label) + (accel.empty() ? 0 : text_width(accel) + 15));
    }
    m.PopupTextWidth[p] = textwidth;
    m.PopupWidth[p] = textwidth + 19;
    m.PopupHeight[p] = rows * ms.iMenuHeight + seps * zelvy_menu::iSeparHeight + 6;
    int y = 3;
    for (int i : items) {
      m.ItemX[i] = 3;
      m.ItemY[i] = y;
      m.ItemWidth[i] = m.PopupWidth[p];
      y += m.separator(i) ? zelvy_menu::iSeparHeight : ms.iMenuHeight;
    }
  }
}

int item_height(const MenuRecord& m, int i) {
  return (m.separator(i) && !(m.ItemPopup[i] == 0 && !m.Floating)) ? zelvy_menu::iSeparHeight : ms.iMenuHeight;
}

constexpr long kItemEvents = ExposureMask | ButtonPressMask | ButtonReleaseMask;

}  // namespace menu_detail

void yyMenuCreateItems(MenuRecord& m, int kind, int window) {
  // Every pop-up of a floating menu is an override window on the root, the first one too.
  if (kind == kMenuKindFloating) m.Floating = true;
  if (!xdisplay() || m.Created) return;
  const int host = m.BarHost >= 0 ? m.BarHost : window >= 0 ? window : m.Owner;
  if (!m.Floating && !yywindowexists(host)) return;
  prepare_drawing();
  measure(m);
  Display* dpy = xdisplay();
  const ZelvAppData& a = zelvy_x::state().appData;
  const Window root = RootWindow(dpy, zelvy_x::state().iScreen);
  for (int p = 0; p < m.PopupCount; ++p) {
    XSetWindowAttributes at{};
    at.event_mask = kItemEvents;
    at.border_pixel = a.foreground;
    unsigned long mask = CWBackPixel | CWBorderPixel | CWEventMask;
    Window w = 0;
    if (p == 0 && !m.Floating) {
      at.background_pixel = a.menuBackColor;
      const int width = std::max(1, zelvy_win::state().WinInfo[host].FrameWidth);
      yyMenuResize(m, width);
      w = XCreateWindow(dpy, zelvy_win::state().wWindow[host], 0, 0, width, m.BarRows * ms.iMenuHeight, 0, CopyFromParent,
                        InputOutput, CopyFromParent, mask, &at);
    } else {
      at.background_pixel = a.menuDropColor;
      at.override_redirect = True;
      at.save_under = True;
      at.backing_store = Always;
      at.cursor = zelvy_x::state().ixCursor[0];
      mask |= CWOverrideRedirect | CWSaveUnder | CWBackingStore | (at.cursor ? CWCursor : 0);
      w = XCreateWindow(dpy, root, 0, 0, m.PopupWidth[p] + 6, std::max(1, m.PopupHeight[p]), 0,
                        CopyFromParent, InputOutput, CopyFromParent, mask, &at);
    }
    m.PopupWindows[p] = w;
    for (int i : items_of(m, p)) {
      XSetWindowAttributes ia{};
      ia.background_pixel = at.background_pixel;
      ia.event_mask = kItemEvents;
      const int width = std::max(1, m.ItemWidth[i]);
      m.ItemWindows[i] = XCreateWindow(dpy, w, m.ItemX[i], m.ItemY[i], width, item_height(m, i), 0,
                                       CopyFromParent, InputOutput, CopyFromParent,
                                       CWBackPixel | CWEventMask, &ia);
    }
    XMapSubwindows(dpy, w);
    if (p == 0 && !m.Floating) XMapWindow(dpy, w);
  }
  m.Created = true;
}

namespace menu_detail {

void destroy_windows(MenuRecord& m) {
  if (!m.Created) return;
  if (xdisplay()) {
    for (Window w : m.PopupWindows)
      if (w) XDestroyWindow(xdisplay(), w);  // items go with their pop-up
  }
  std::fill(m.PopupWindows.begin(), m.PopupWindows.end(), 0);
  std::fill(m.ItemWindows.begin(), m.ItemWindows.end(), 0);
  m.Created = false;
}

// The window whose status bar shows the prompts: the nearest one up the chain with a bar.
int yyMenuGetPromptWindow(int h) {
  for (int guard = 0; h >= 0 && h < zelvy_menu::kMenuSlots && guard < zelvy_menu::kMenuSlots; ++guard) {
    if (h < static_cast<int>(zelvy_sbar::state().psbarInfo.size()) && zelvy_sbar::state().psbarInfo[h]) return h;
    h = zelvy_win::state().WinInfo[h].Parent;
  }
  return -1;
}

bool has_prompts(const MenuRecord& m) { return !m.Prompts.empty() || m.DynamicPromptCount > 0; }

// A floating menu also shows the prompts of the window's own menu.
bool prompts_for(const MenuRecord& m, int win) {
  if (has_prompts(m)) return true;
  return m.Floating && yywindowexists(win) && ms.pwRootMenuSub[win] && has_prompts(*ms.pwRootMenuSub[win]);
}


const std::string* prompt_of(const MenuRecord& m, int id) {
  const int i = m.find(id);
  if (i >= 0 && m.ItemPrompts[i]) return &*m.ItemPrompts[i];
  auto it = m.Prompts.find(id);
  return it == m.Prompts.end() ? nullptr : &it->second;
}

void show_prompt() {
  MenuRecord* m = ms.pwActiveMenu;
  if (!m || !m->Created || look.promptBar < 0) return;
  const int win = ms.iActiveMenuWin >= 0 ? ms.iActiveMenuWin : m->Owner;
  const int h = look.promptBar;
  const std::string* text = nullptr;
  if (m->live(ms.iCurMenuItem) && !m->separator(ms.iCurMenuItem)) {
    const int id = m->ItemIds[ms.iCurMenuItem];
    if (m->Floating && yywindowexists(win) && ms.pwRootMenuSub[win]) text = prompt_of(*ms.pwRootMenuSub[win], id);
    if (!text) text = prompt_of(*m, id);
  }
  yyWindowStatusBarPrompt(h, true, text ? *text : std::string());
}

// ---- Drawing ---------------------------------------------------------------

bool highlighted(const MenuRecord& m, int i) {
  if (ms.pwActiveMenu != &m || m.separator(i)) return false;
  return i == ms.iCurMenuItem || (m.ItemSubPopup[i] >= 0 && is_open(m, m.ItemSubPopup[i]));
}

void yyMenuDrawItem(const MenuRecord& m, int i) {
  if (!m.Created || !drawing_ready() || !m.live(i) || !m.ItemWindows[i]) return;
  Display* dpy = xdisplay();
  const ZelvAppData& a = zelvy_x::state().appData;
  const Window w = m.ItemWindows[i];
  const bool onbar = m.ItemPopup[i] == 0 && !m.Floating;
  const bool hi = highlighted(m, i);
  const Pixel back = hi ? a.menuselBackColor : onbar ? a.menuBackColor : a.menuDropColor;
  XSetWindowBackground(dpy, w, back);
  XClearWindow(dpy, w);
  const int width = m.ItemWidth[i];
  if (m.separator(i)) {
    if (onbar) return;
    XSetForeground(dpy, look.menuGC, a.bottomShadowColor);
    XDrawLine(dpy, w, look.menuGC, 0, 4, width, 4);
    XSetForeground(dpy, look.menuGC, WhitePixel(dpy, zelvy_x::state().iScreen));
    XDrawLine(dpy, w, look.menuGC, 0, 5, width, 5);
    return;
  }
  const bool grey = m.greyed(i);
  const Pixel fore = grey ? a.grayTextColor : hi ? a.menuselForeColor : a.menuForeColor;
  const XftColor& xfore = grey ? look.colGrey : hi ? look.colSel : look.colFore;
  const Pixel white = WhitePixel(dpy, zelvy_x::state().iScreen);
  const bool etched = grey && !hi;
  if (!onbar && (m.ItemFlags[i] & kMenuChecked)) {
    static constexpr int kTick[7] = {-1, 0, 1, 0, -1, -2, -3};
    const int c = ms.iMenuHeight / 2 - 1;
    for (int pass = etched ? 0 : 1; pass < 2; ++pass) {
      XSetForeground(dpy, look.menuGC, pass == 0 ? white : fore);
      const int d = pass == 0 ? 1 : 0;
      for (int k = 0; k < 7; ++k) XDrawLine(dpy, w, look.menuGC, 2 + k + d, c + kTick[k] + d, 2 + k + d, c + kTick[k] + 2 + d);
    }
  }
  const int tx = onbar ? 6 : 13;
  const auto [label, accel] = onbar ? std::pair<std::string_view, std::string_view>{m.ItemText[i], {}}
                                    : split_text(m.ItemText[i]);
  const int ax = accel.empty() ? 0 : m.PopupTextWidth[m.ItemPopup[i]] - text_width(accel);
  if (etched) {
    draw_text(w, tx + 1, ms.iMenuYText + 1, label, white, look.colWhite);
    if (!accel.empty()) draw_text(w, ax + 1, ms.iMenuYText + 1, accel, white, look.colWhite);
  }
  draw_text(w, tx, ms.iMenuYText, label, fore, xfore);
  if (!accel.empty()) draw_text(w, ax, ms.iMenuYText, accel, fore, xfore);
  if (!onbar && m.has_sub(i)) {
    const int s = ms.iMenuHeight < 24 ? ms.iMenuHeight / 4 : 6;
    const int x = m.PopupWidth[m.ItemPopup[i]] - s - 4, mid = ms.iMenuHeight / 2;
    for (int pass = etched ? 0 : 1; pass < 2; ++pass) {
      const int d = pass == 0 ? 0 : -1;
      XPoint pts[3] = {{static_cast<short>(x + d), static_cast<short>(mid - s + d)},
                       {static_cast<short>(x + d), static_cast<short>(mid + s + d)},
                       {static_cast<short>(x + s + d), static_cast<short>(mid + d)}};
      XSetForeground(dpy, look.menuGC, pass == 0 ? white : fore);
      XFillPolygon(dpy, w, look.menuGC, pts, 3, Convex, CoordModeOrigin);
    }
  }
  const int mn = m.ItemMnemonic[i];
  if (mn >= 0 && mn < static_cast<int>(label.size())) {
    const int ux = tx + text_width(label.substr(0, mn));
    const int uw = text_width(label.substr(mn, 1));
    XSetForeground(dpy, look.menuGC, fore);
    XFillRectangle(dpy, w, look.menuGC, ux, ms.iVertUnd, std::max(1, uw), 1);
  }
}

void draw_popup_frame(const MenuRecord& m, int p) {
  if (!m.Created || !drawing_ready() || !m.PopupWindows[p]) return;
  if (p == 0 && !m.Floating) {
    XClearWindow(xdisplay(), m.PopupWindows[0]);
    return;
  }
  XSetForeground(xdisplay(), look.menuGC, zelvy_x::state().appData.bottomShadowColor);
  XDrawRectangle(xdisplay(), m.PopupWindows[p], look.menuGC, 0, 0, m.PopupWidth[p] + 5, m.PopupHeight[p] - 1);
}

void draw_popup(const MenuRecord& m, int p) {
  draw_popup_frame(m, p);
  for (int i : items_of(m, p)) yyMenuDrawItem(m, i);
}

// ---- Opening and closing pop-ups -------------------------------------------

void open_popup_at(MenuRecord& m, int p, int x, int y) {
  m.OpenPopups.push_back(p);
  m.OpenDirections.push_back(ms.iMenuDir);
  if (!m.Created) return;
  XMoveWindow(xdisplay(), m.PopupWindows[p], x, y);
  XMapRaised(xdisplay(), m.PopupWindows[p]);
  draw_popup(m, p);
}

void open_sub(MenuRecord& m, int item) {
  const int p = m.live(item) ? m.ItemSubPopup[item] : -1;
  if (p < 0 || is_open(m, p)) return;
  int x = 0, y = 0;
  if (m.Created) {
    int ix = 0, iy = 0;
    Window child;
    XTranslateCoordinates(xdisplay(), m.ItemWindows[item], RootWindow(xdisplay(), zelvy_x::state().iScreen), 0, 0, &ix,
                          &iy, &child);
    yyMenuGetPos(ix, iy, m.ItemWidth[item], item_height(m, item), m.PopupWidth[p] + 6, m.PopupHeight[p],
                 m.PopupKind[p], zelvy_x::state().iDispWidth, zelvy_x::state().iDispHeight, ms.iMenuDir, x, y);
  }
  open_popup_at(m, p, x, y);
  yyMenuDrawItem(m, item);
}

void close_newest(MenuRecord& m) {
  if (m.OpenPopups.empty()) return;
  const int p = m.OpenPopups.back();
  m.OpenPopups.pop_back();
  m.OpenDirections.pop_back();
  ms.iMenuDir = m.OpenDirections.empty() ? 1 : m.OpenDirections.back();
  if (m.Created) XUnmapWindow(xdisplay(), m.PopupWindows[p]);
  const int parent = m.PopupParentItem[p];
  if (parent >= 0) yyMenuDrawItem(m, parent);
}

// Closes the pop-ups opened after the one given; for the bar (pop-up 0 of a bar
// menu, never in the open list) that is all of them.
void close_above(MenuRecord& m, int popup) {
  while (!m.OpenPopups.empty() && m.OpenPopups.back() != popup) close_newest(m);
}

void choose(MenuRecord& m, int item, int& type, int& value1, int& value2) {
  const int id = m.ItemIds[item], owner = m.TextMenu;
  yyMenuDeactivate();
  type = MenuSelect;
  value1 = id;
  value2 = owner;
}

void go(int item) {
  if (item >= 0) yyMenuInvert(item, 7, false);
}

// Moves along the bar; an open drop-down follows when automatic opening is on.
void go_top(int item) {
  if (item >= 0) yyMenuInvert(item, 7, true);
}

// Drops down the pop-up of a bar item and goes to its first or last item.
void drop_down(MenuRecord& m, int item, bool last) {
  if (!m.has_sub(item) || m.greyed(item)) return;
  ms.bMenuAutoPop = true;
  open_sub(m, item);
  go(yyMenuEdgeItem(m, m.ItemSubPopup[item], last));
}

int bar_window(int h) {
  for (int guard = 0; h >= 0 && h < zelvy_menu::kMenuSlots && guard < zelvy_menu::kMenuSlots; ++guard) {
    if (!(zelvy_win::state().WinInfo[h].Flags & 16) || zelvy_win::state().WinInfo[h].Parent < 0) return h;
    h = zelvy_win::state().WinInfo[h].Parent;
  }
  return -1;
}

bool is_alt_key(unsigned long ks) {
  return ks == XK_Alt_L || ks == XK_Alt_R || ks == XK_Meta_L || ks == XK_Meta_R ||
         (zelvy_x::state().AltKeySym != 0 && ks == zelvy_x::state().AltKeySym);
}

void select_crossing(MenuRecord& m, bool on) {
  if (!m.Created) return;
  const long mask = kItemEvents | (on ? EnterWindowMask | LeaveWindowMask : 0);
  for (Window w : m.ItemWindows)
    if (w) XSelectInput(xdisplay(), w, mask);
}

}  // namespace menu_detail

// ---- Opening, closing, highlight ------------------------------------------

void yyMenuActivate(int item, MenuRecord& m, int window) {
  if (item != -1) ms.iCurMenuItem = item;
  ms.iActiveMenuWin = window;
  ms.pwActiveMenu = &m;
  if (m.Created) {
    Display* dpy = xdisplay();
    const int win = window >= 0 ? window : m.Owner;
    if (look.promptBar < 0 && prompts_for(m, win) && (look.promptBar = yyMenuGetPromptWindow(win)) >= 0)
      yyWindowStatusBarSwitch(2, look.promptBar);
    if (yywindowexists(window) && zelvy_win::state().WinInfo[window].Visible) {
      if (!look.focusSaved) {
        XGetInputFocus(dpy, &look.savedFocus, &look.savedRevert);
        look.focusSaved = look.savedFocus != None;
      }
      // Keys reach the menu through the frame while it is open.
      XWindowAttributes wa{};
      XGetWindowAttributes(dpy, zelvy_win::state().wWindow[window], &wa);
      XSelectInput(dpy, zelvy_win::state().wWindow[window], wa.your_event_mask | KeyPressMask);
      XSetInputFocus(dpy, zelvy_win::state().wWindow[window], RevertToParent, CurrentTime);
      if (XGrabPointer(dpy, zelvy_win::state().wWindow[window], True, ButtonPressMask | ButtonReleaseMask | EnterWindowMask | LeaveWindowMask,
                       GrabModeSync, GrabModeAsync, None, None, CurrentTime) == GrabSuccess) {
        XAllowEvents(dpy, SyncPointer, CurrentTime);
        ms.bGrabPointer = true;
      }
    }
    select_crossing(m, true);
  }
  if (m.live(ms.iCurMenuItem)) yyMenuDrawItem(m, ms.iCurMenuItem);
  show_prompt();
}

void yyMenuDeactivate() {
  MenuRecord* mp = ms.pwActiveMenu;
  if (!mp) return;
  MenuRecord& m = *mp;
  const int old = ms.iCurMenuItem;
  ms.iCurMenuItem = -1;
  if (look.promptBar >= 0) {
    yyWindowStatusBarPrompt(look.promptBar, false, {});
    yyWindowStatusBarSwitch(1, look.promptBar);
    look.promptBar = -1;
  }
  while (!m.OpenPopups.empty()) close_newest(m);
  ms.iMenuDir = 1;
  if (m.Created) {
    select_crossing(m, false);
    if (ms.bGrabPointer) {
      XAllowEvents(xdisplay(), AsyncPointer, CurrentTime);
      XUngrabPointer(xdisplay(), CurrentTime);
    }
    if (look.focusSaved) XSetInputFocus(xdisplay(), look.savedFocus, look.savedRevert, CurrentTime);
    XFlush(xdisplay());
  }
  look.focusSaved = false;
  ms.bGrabPointer = false;
  ms.pwActiveMenu = nullptr;
  ms.iActiveMenuWin = -1;
  ms.bMenuAutoPop = false;
  ms.iTopItemPress = ms.iTopWinPress = -1;
  if (m.live(old)) yyMenuDrawItem(m, old);
  if (m.Floating && ms.pwFloatMenu.get() == &m) {
    destroy_windows(m);
    ms.pwFloatMenu.reset();
  }
}

void yyMenuInvert(int item, int event, bool open) {
  MenuRecord* mp = ms.pwActiveMenu;
  if (!mp || !mp->live(item)) return;
  MenuRecord& m = *mp;
  if (event == 7) {
    const int prev = ms.iCurMenuItem;
    ms.iCurMenuItem = item;
    close_above(m, m.ItemPopup[item]);
    if (m.live(prev) && prev != item) yyMenuDrawItem(m, prev);
    const int parent = m.PopupParentItem[m.ItemPopup[item]];
    if (parent >= 0) yyMenuDrawItem(m, parent);
    yyMenuDrawItem(m, item);
    if (open && ms.bMenuAutoPop && m.has_sub(item) && !m.greyed(item)) open_sub(m, item);
  } else if (event == 8) {
    ms.iCurMenuItem = m.OpenPopups.empty() ? -1 : m.PopupParentItem[m.OpenPopups.back()];
    yyMenuDrawItem(m, item);
    if (m.live(ms.iCurMenuItem)) yyMenuDrawItem(m, ms.iCurMenuItem);
  }
  show_prompt();
}
