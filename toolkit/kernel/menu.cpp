// The menu engine: menus loaded from the resources into item trees, drawn on
// plain X windows, driven by pointer and keyboard inside the toolkit's own
// event pass, so that the application gets nothing but MenuSelect.
//
// The navigation works on the item tree alone and touches X only when the
// menu has windows (MenuRecord::Created), so that it runs without a display.
#include "toolkit/kernel/menu.h"

#include <X11/Xft/Xft.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "app/resources/yyrc.h"
#include "toolkit/kernel/display.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/statusbar.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_table.h"
#include "toolkit/kernel/zelvy_data.h"

using namespace zelvy_menu;

// ---- The item tree ---------------------------------------------------------

int MenuRecord::find(int id) const {
  if (id <= 0) return -1;
  for (int i = 0; i < ItemCount(); ++i)
    if (ItemIds[i] == id) return i;
  return -1;
}

namespace {

// The items of a pop-up in order; the walk is bounded so that a broken link
// cannot hang the toolkit.
std::vector<int> items_of(const MenuRecord& m, int popup) {
  std::vector<int> out;
  if (popup < 0 || popup >= m.PopupCount) return out;
  for (int i = m.PopupFirstItem[popup]; i >= 0 && i < m.ItemCount() && static_cast<int>(out.size()) < m.ItemCount();
       i = m.ItemNext[i])
    if (m.live(i)) out.push_back(i);
  return out;
}

bool is_open(const MenuRecord& m, int popup) {
  return std::find(m.OpenPopups.begin(), m.OpenPopups.end(), popup) != m.OpenPopups.end();
}

// The top-level item above an item.
int top_ancestor(const MenuRecord& m, int item) {
  for (int guard = 0; item >= 0 && guard < m.ItemCount(); ++guard) {
    const int p = m.ItemPopup[item];
    if (p <= 0) return item;
    item = m.PopupParentItem[p];
  }
  return item;
}

int upper_key(unsigned long keysym) {
  if (keysym < 0x20 || keysym > 0xff) return 0;
  return std::toupper(static_cast<unsigned char>(keysym));
}

}  // namespace

void yyMenuBuildPopups(MenuRecord& m) {
  const int n = m.ItemCount();
  const int top = m.PopupFirstItem.empty() ? (n > 0 ? 0 : -1) : m.PopupFirstItem[0];
  m.PopupFirstItem.assign(1, top);
  m.PopupParentItem.assign(1, -1);
  m.ItemPopup.assign(n, -1);
  m.ItemSubPopup.assign(n, -1);
  for (int i = 0; i < n; ++i) {
    if (!m.live(i) || m.ItemChild[i] < 0) continue;
    m.ItemSubPopup[i] = static_cast<int>(m.PopupFirstItem.size());
    m.PopupFirstItem.push_back(m.ItemChild[i]);
    m.PopupParentItem.push_back(i);
  }
  m.PopupCount = static_cast<int>(m.PopupFirstItem.size());
  for (int p = 0; p < m.PopupCount; ++p)
    for (int i : items_of(m, p)) m.ItemPopup[i] = p;
  m.PopupKind.assign(m.PopupCount, kPopupCascade);
  if (!m.Floating) m.PopupKind[0] = kPopupBar;
  for (int p = 1; p < m.PopupCount; ++p)
    if (!m.Floating && m.ItemPopup[m.PopupParentItem[p]] == 0) m.PopupKind[p] = kPopupDrop;
  for (int i = 0; i < n; ++i) {
    if (m.ItemSubPopup[i] >= 0) m.ItemFlags[i] |= kMenuHasSub;
    else m.ItemFlags[i] &= ~kMenuHasSub;
  }
  m.PopupWindows.assign(m.PopupCount, 0);
  m.PopupWidth.assign(m.PopupCount, 0);
  m.PopupTextWidth.assign(m.PopupCount, 0);
  m.PopupHeight.assign(m.PopupCount, 0);
  m.ItemWindows.assign(n, 0);
  m.ItemX.assign(n, 0);
  m.ItemY.assign(n, 0);
  m.ItemWidth.assign(n, 0);
  m.ItemPrompts.resize(n);
  m.OpenPopups.clear();
  m.OpenDirections.clear();
}

void yyMenuLoad(int menuid, MenuRecord& m, int& status) {
  RcMenu rc;
  yyrcmenuget(menuid, rc, status);
  if (status != 0) return;
  m = MenuRecord{};
  m.MenuId = menuid;
  const std::size_t n = rc.ids.size();
  m.ItemIds = rc.ids;
  m.ItemFlags.resize(n);
  for (std::size_t i = 0; i < n; ++i) m.ItemFlags[i] = static_cast<std::uint32_t>(rc.flags[i]);
  m.ItemNext = rc.next;
  m.ItemChild = rc.child;
  m.ItemMnemonic = rc.mnemonic;
  for (std::size_t i = 0; i < n; ++i) m.ItemText.push_back(rc.item_text(i));
  int prompts = -1, bytes = -1;
  yyrchelpcheck(menuid, prompts, bytes);
  if (prompts > 0) {
    std::vector<int> ids(prompts), pos(prompts);
    std::vector<char> pool(std::max(bytes, 1));
    yyrchelpload(menuid, ids, pos, pool);
    for (int k = 0; k < prompts; ++k)
      if (pos[k] >= 0 && pos[k] < static_cast<int>(pool.size())) m.Prompts[ids[k]] = pool.data() + pos[k];
  }
  // States set before the menu existed hold in it.
  for (std::size_t i = 0; i < n; ++i) {
    auto it = itemstates.find(m.ItemIds[i]);
    if (it != itemstates.end() && m.ItemIds[i] > 0) m.ItemFlags[i] |= static_cast<std::uint32_t>(it->second);
  }
  yyMenuBuildPopups(m);
}

std::unique_ptr<MenuRecord> yyMenuLoadDynamicMenu(std::span<const MenuDescriptor> items) {
  auto m = std::make_unique<MenuRecord>();
  int lastTop = -1, lastInSub = -1, opener = -1;
  for (const MenuDescriptor& d : items) {
    if (!d.include) continue;
    const int i = m->ItemCount();
    m->ItemIds.push_back(std::max(0, d.id));
    m->ItemFlags.push_back((d.flags & ~kMenuHasSub) | (d.id <= 0 ? kMenuSeparator : 0));
    m->ItemNext.push_back(-1);
    m->ItemChild.push_back(-1);
    m->ItemText.push_back(d.text);
    m->ItemMnemonic.push_back(d.mnemonic);
    if (!d.prompt.empty() && d.id > 0) m->Prompts[d.id] = d.prompt;
    const bool opens = (d.flags & kMenuHasSub) != 0;
    if (opens || opener < 0) {
      if (lastTop >= 0) m->ItemNext[lastTop] = i;
      lastTop = i;
      if (opens) {
        opener = i;
        lastInSub = -1;
      }
    } else {
      if (lastInSub >= 0) m->ItemNext[lastInSub] = i;
      else m->ItemChild[opener] = i;
      lastInSub = i;
    }
  }
  yyMenuBuildPopups(*m);
  return m;
}

AccelTable yyMenuLoadDynamicAccel(std::span<const MenuDescriptor> items) {
  AccelTable t;
  for (const MenuDescriptor& d : items) {
    if (!d.include || d.id <= 0) continue;
    for (int ks : {d.keysym, d.keysym2}) {
      if (ks == 0) continue;
      t.keysyms.push_back(ks);
      t.ids.push_back(d.id);
      t.modifiers.push_back(d.modifiers);
    }
  }
  return t;
}

int yyMenuItemTextProc(std::string& text) {
  std::string out;
  int mnemonic = -1;
  std::size_t i = 0;
  for (; i < text.size() && text[i] != '\t' && text[i] != '\b'; ++i) {
    if (text[i] != '&') {
      out += text[i];
    } else if (i + 1 < text.size() && text[i + 1] == '&') {
      out += '&';
      ++i;
    } else if (i + 1 < text.size() && text[i + 1] != '\t' && text[i + 1] != '\b') {
      mnemonic = static_cast<int>(out.size());
    }
  }
  out.append(text, i, std::string::npos);
  text = std::move(out);
  return mnemonic;
}

int yyMenuStep(const MenuRecord& m, int item, int dir) {
  if (!m.live(item)) return -1;
  const std::vector<int> sib = items_of(m, m.ItemPopup[item]);
  const int n = static_cast<int>(sib.size());
  const int at = static_cast<int>(std::find(sib.begin(), sib.end(), item) - sib.begin());
  for (int k = 1; k <= n; ++k) {
    const int j = sib[((at + dir * k) % n + n) % n];
    if (!m.separator(j)) return j;
  }
  return -1;
}

int yyMenuEdgeItem(const MenuRecord& m, int popup, bool last) {
  std::vector<int> sib = items_of(m, popup);
  if (last) std::reverse(sib.begin(), sib.end());
  for (int i : sib)
    if (!m.separator(i)) return i;
  return -1;
}

int yyMenuKeyToItem(const MenuRecord& m, int popup, int current, int key, int& count) {
  count = 0;
  const std::vector<int> sib = items_of(m, popup);
  const int n = static_cast<int>(sib.size());
  if (n == 0 || key == 0) return -1;
  key = std::toupper(key);
  const auto pos = std::find(sib.begin(), sib.end(), current);
  const int start = pos == sib.end() ? 0 : static_cast<int>(pos - sib.begin()) + 1;
  int first = -1;
  for (int pass = 1; pass <= 2 && count == 0; ++pass) {
    for (int k = 0; k < n; ++k) {
      const int i = sib[(start + k) % n];
      if (m.separator(i)) continue;
      const std::string& t = m.ItemText[i];
      int letter = 0;
      if (pass == 1 && m.ItemMnemonic[i] >= 0 && m.ItemMnemonic[i] < static_cast<int>(t.size())) {
        letter = t[m.ItemMnemonic[i]];
      } else if (pass == 2 && m.ItemMnemonic[i] < 0) {
        const auto nb = t.find_first_not_of(' ');
        if (nb != std::string::npos) letter = t[nb];
      }
      if (letter && std::toupper(static_cast<unsigned char>(letter)) == key) {
        if (first < 0) first = i;
        ++count;
      }
    }
  }
  return first;
}

int yyMenuResize(MenuRecord& m, int width) {
  int x = 0, y = 0, rows = 1;
  for (int i : items_of(m, 0)) {
    if (m.separator(i)) {
      m.ItemX[i] = -20;
      m.ItemY[i] = y;
      m.ItemWidth[i] = 1;
      continue;
    }
    if (x > 0 && x + m.ItemWidth[i] > width) {
      ++rows;
      x = 0;
      y += iMenuHeight;
    }
    m.ItemX[i] = x;
    m.ItemY[i] = y;
    x += m.ItemWidth[i];
  }
  m.BarRows = rows;
  return rows;
}

void yyMenuGetPos(int ix, int iy, int iw, int ih, int pw, int ph, int kind, int sw, int sh,
                  int& dir, int& x, int& y) {
  const bool drop = kind == kPopupDrop;
  bool cascade = !drop;
  const int below = drop ? iy + ih - 1 : iy - 3;
  if (below + ph <= sh) {
    y = below;
  } else {
    const int above = drop ? iy - ph : iy + ih - ph;
    if (above >= 0) {
      y = above;
    } else {
      y = std::max(0, sh - ph);
      cascade = true;
    }
  }
  if (!cascade) {
    x = std::max(0, std::min(ix, sw - pw));
    return;
  }
  const int right = ix + iw + 3, left = ix - pw - 3;
  if (dir == 1 && right + pw <= sw) {
    x = right;
  } else if (left >= 0) {
    dir = -1;
    x = left;
  } else {
    dir = 1;
    x = right + pw <= sw ? right : 0;
  }
}

int yyMenuMatchAccel(const AccelTable& t, unsigned long keysym, int modifiers) {
  auto norm = [](unsigned long k) { return (k >= XK_a && k <= XK_z) ? k - XK_a + XK_A : k; };
  for (std::size_t i = 0; i < t.keysyms.size() && i < t.ids.size() && i < t.modifiers.size(); ++i)
    if (norm(static_cast<unsigned long>(t.keysyms[i])) == norm(keysym) && t.modifiers[i] == modifiers)
      return t.ids[i];
  return 0;
}

// ---- Fonts, colours, measures ---------------------------------------------

namespace {

using zelvy_x::ixDisplay;

XftFont* xftMenuFont = nullptr;
XFontStruct* coreMenuFont = nullptr;
GC menuGC = nullptr;
XftDraw* menuDraw = nullptr;
XftColor colFore{}, colSel{}, colGrey{}, colWhite{};
bool focusSaved = false;  // the focus to give back when the menu closes
Window savedFocus = None;
int savedRevert = RevertToParent;
std::string shownPrompt;  // the status bar keeps a view of it while it shows

bool drawing_ready() { return ixDisplay && menuGC; }

// Asking the server for a pixel's colour is a round trip: each pixel value is
// asked once and kept for the life of the display.
XftColor xft_colour(Pixel p) {
  static std::vector<std::pair<Pixel, XftColor>> known;
  for (const auto& [pixel, colour] : known)
    if (pixel == p) return colour;
  XColor c{};
  c.pixel = p;
  XQueryColor(ixDisplay, zelvy_x::iCmapMain, &c);
  XRenderColor rc{c.red, c.green, c.blue, 0xffff};
  XftColor out{};
  XftColorAllocValue(ixDisplay, DefaultVisual(ixDisplay, zelvy_x::iScreen), zelvy_x::iCmapMain, &rc, &out);
  known.emplace_back(p, out);
  return out;
}

void prepare_drawing() {
  if (!ixDisplay || menuGC) return;
  yyMenuRowHeight();
  const Window root = RootWindow(ixDisplay, zelvy_x::iScreen);
  menuGC = XCreateGC(ixDisplay, root, 0, nullptr);
  if (coreMenuFont) XSetFont(ixDisplay, menuGC, coreMenuFont->fid);
  if (xftMenuFont) {
    menuDraw = XftDrawCreate(ixDisplay, root, DefaultVisual(ixDisplay, zelvy_x::iScreen), zelvy_x::iCmapMain);
    const ZelvAppData& a = zelvy_x::appData;
    colFore = xft_colour(a.menuForeColor);
    colSel = xft_colour(a.menuselForeColor);
    colGrey = xft_colour(a.grayTextColor);
    colWhite = xft_colour(WhitePixel(ixDisplay, zelvy_x::iScreen));
  }
}

int text_width(std::string_view text) {
  if (text.empty() || !ixDisplay) return 0;
  if (xftMenuFont) {
    int type = 0;
    const std::string utf8 = yyConvertEncoding(text, zelvy_x::iDialogEncoding, type);
    XGlyphInfo ext{};
    XftTextExtentsUtf8(ixDisplay, xftMenuFont, reinterpret_cast<const FcChar8*>(utf8.data()),
                       static_cast<int>(utf8.size()), &ext);
    return ext.xOff;
  }
  if (coreMenuFont) return XTextWidth(coreMenuFont, text.data(), static_cast<int>(text.size()));
  return 0;
}

void draw_text(Window w, int x, int y, std::string_view text, Pixel core, const XftColor& xft) {
  if (text.empty()) return;
  if (xftMenuFont && menuDraw) {
    int type = 0;
    const std::string utf8 = yyConvertEncoding(text, zelvy_x::iDialogEncoding, type);
    XftDrawChange(menuDraw, w);
    XftDrawStringUtf8(menuDraw, &xft, xftMenuFont, x, y, reinterpret_cast<const FcChar8*>(utf8.data()),
                      static_cast<int>(utf8.size()));
  } else {
    XSetForeground(ixDisplay, menuGC, core);
    XDrawString(ixDisplay, w, menuGC, x, y, text.data(), static_cast<int>(text.size()));
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
  static bool measured = false;  // with the font of a display; until then nominal
  if (measured || (iMenuHeight > 0 && !ixDisplay)) return iMenuHeight;
  int height = 13;
  if (ixDisplay) {
    measured = true;
    const ZelvAppData& a = zelvy_x::appData;
    if (zelvy_x::bXft) xftMenuFont = yyXftOpen(a.xftNameMenu, a.xftSizeMenu > 0 ? a.xftSizeMenu : 8);
    if (xftMenuFont) {
      XGlyphInfo ext{};
      XftTextExtents8(ixDisplay, xftMenuFont, reinterpret_cast<const FcChar8*>("Wy@"), 3, &ext);
      height = ext.height;
    } else if ((coreMenuFont = zelvy_x::dialogFontStruct)) {
      int dir = 0, asc = 0, desc = 0;
      XCharStruct all{};
      XTextExtents(coreMenuFont, "Wy@", 3, &dir, &asc, &desc, &all);
      height = all.ascent + all.descent;
    }
  }
  iMenuHeight = height + 8;
  iMenuYText = height + 4;
  iVertUnd = height + 6;
  return iMenuHeight;
}

// ---- Windows ---------------------------------------------------------------

namespace {

using namespace zelvy_win;

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
    m.PopupHeight[p] = rows * iMenuHeight + seps * iSeparHeight + 6;
    int y = 3;
    for (int i : items) {
      m.ItemX[i] = 3;
      m.ItemY[i] = y;
      m.ItemWidth[i] = m.PopupWidth[p];
      y += m.separator(i) ? iSeparHeight : iMenuHeight;
    }
  }
}

int item_height(const MenuRecord& m, int i) {
  return (m.separator(i) && !(m.ItemPopup[i] == 0 && !m.Floating)) ? iSeparHeight : iMenuHeight;
}

constexpr long kItemEvents = ExposureMask | ButtonPressMask | ButtonReleaseMask;

void create_windows(MenuRecord& m) {
  if (!ixDisplay || m.Created) return;
  if (!m.Floating && !yywindowexists(m.Owner)) return;
  prepare_drawing();
  measure(m);
  Display* dpy = ixDisplay;
  const ZelvAppData& a = zelvy_x::appData;
  const Window root = RootWindow(dpy, zelvy_x::iScreen);
  for (int p = 0; p < m.PopupCount; ++p) {
    XSetWindowAttributes at{};
    at.event_mask = kItemEvents;
    at.border_pixel = a.foreground;
    unsigned long mask = CWBackPixel | CWBorderPixel | CWEventMask;
    Window w = 0;
    if (p == 0 && !m.Floating) {
      at.background_pixel = a.menuBackColor;
      const int width = std::max(1, WinInfo[m.Owner].FrameWidth);
      yyMenuResize(m, width);
      w = XCreateWindow(dpy, wWindow[m.Owner], 0, 0, width, m.BarRows * iMenuHeight, 0, CopyFromParent,
                        InputOutput, CopyFromParent, mask, &at);
    } else {
      at.background_pixel = a.menuDropColor;
      at.override_redirect = True;
      at.save_under = True;
      at.backing_store = Always;
      at.cursor = zelvy_x::ixCursor[0];
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

void destroy_windows(MenuRecord& m) {
  if (!m.Created) return;
  if (ixDisplay) {
    for (Window w : m.PopupWindows)
      if (w) XDestroyWindow(ixDisplay, w);  // items go with their pop-up
  }
  std::fill(m.PopupWindows.begin(), m.PopupWindows.end(), 0);
  std::fill(m.ItemWindows.begin(), m.ItemWindows.end(), 0);
  m.Created = false;
}

// The window whose status bar shows the prompts: the nearest one up the chain with a bar.
int prompt_window(int h) {
  for (int guard = 0; h >= 0 && h < kMenuSlots && guard < kMenuSlots; ++guard) {
    if (h < static_cast<int>(zelvy_sbar::psbarInfo.size()) && zelvy_sbar::psbarInfo[h]) return h;
    h = WinInfo[h].Parent;
  }
  return -1;
}

bool has_prompts(const MenuRecord& m) { return !m.Prompts.empty() || m.DynamicPromptCount > 0; }

// A floating menu also shows the prompts of the window's own menu.
bool prompts_for(const MenuRecord& m, int win) {
  if (has_prompts(m)) return true;
  return m.Floating && yywindowexists(win) && pwRootMenuSub[win] && has_prompts(*pwRootMenuSub[win]);
}

int promptBar = -1;  // the window whose status bar shows the prompt line, -1 none

const std::string* prompt_of(const MenuRecord& m, int id) {
  const int i = m.find(id);
  if (i >= 0 && m.ItemPrompts[i]) return &*m.ItemPrompts[i];
  auto it = m.Prompts.find(id);
  return it == m.Prompts.end() ? nullptr : &it->second;
}

void show_prompt() {
  MenuRecord* m = pwActiveMenu;
  if (!m || !m->Created || promptBar < 0) return;
  const int win = iActiveMenuWin >= 0 ? iActiveMenuWin : m->Owner;
  const int h = promptBar;
  const std::string* text = nullptr;
  if (m->live(iCurMenuItem) && !m->separator(iCurMenuItem)) {
    const int id = m->ItemIds[iCurMenuItem];
    if (m->Floating && yywindowexists(win) && pwRootMenuSub[win]) text = prompt_of(*pwRootMenuSub[win], id);
    if (!text) text = prompt_of(*m, id);
  }
  shownPrompt = text ? *text : std::string();
  yyWindowStatusBarPrompt(h, true, shownPrompt);
}

// ---- Drawing ---------------------------------------------------------------

bool highlighted(const MenuRecord& m, int i) {
  if (pwActiveMenu != &m || m.separator(i)) return false;
  return i == iCurMenuItem || (m.ItemSubPopup[i] >= 0 && is_open(m, m.ItemSubPopup[i]));
}

void draw_item(const MenuRecord& m, int i) {
  if (!m.Created || !drawing_ready() || !m.live(i) || !m.ItemWindows[i]) return;
  Display* dpy = ixDisplay;
  const ZelvAppData& a = zelvy_x::appData;
  const Window w = m.ItemWindows[i];
  const bool onbar = m.ItemPopup[i] == 0 && !m.Floating;
  const bool hi = highlighted(m, i);
  const Pixel back = hi ? a.menuselBackColor : onbar ? a.menuBackColor : a.menuDropColor;
  XSetWindowBackground(dpy, w, back);
  XClearWindow(dpy, w);
  const int width = m.ItemWidth[i];
  if (m.separator(i)) {
    if (onbar) return;
    XSetForeground(dpy, menuGC, a.bottomShadowColor);
    XDrawLine(dpy, w, menuGC, 0, 4, width, 4);
    XSetForeground(dpy, menuGC, WhitePixel(dpy, zelvy_x::iScreen));
    XDrawLine(dpy, w, menuGC, 0, 5, width, 5);
    return;
  }
  const bool grey = m.greyed(i);
  const Pixel fore = grey ? a.grayTextColor : hi ? a.menuselForeColor : a.menuForeColor;
  const XftColor& xfore = grey ? colGrey : hi ? colSel : colFore;
  const Pixel white = WhitePixel(dpy, zelvy_x::iScreen);
  const bool etched = grey && !hi;
  if (!onbar && (m.ItemFlags[i] & kMenuChecked)) {
    static constexpr int kTick[7] = {-1, 0, 1, 0, -1, -2, -3};
    const int c = iMenuHeight / 2 - 1;
    for (int pass = etched ? 0 : 1; pass < 2; ++pass) {
      XSetForeground(dpy, menuGC, pass == 0 ? white : fore);
      const int d = pass == 0 ? 1 : 0;
      for (int k = 0; k < 7; ++k) XDrawLine(dpy, w, menuGC, 2 + k + d, c + kTick[k] + d, 2 + k + d, c + kTick[k] + 2 + d);
    }
  }
  const int tx = onbar ? 6 : 13;
  const auto [label, accel] = onbar ? std::pair<std::string_view, std::string_view>{m.ItemText[i], {}}
                                    : split_text(m.ItemText[i]);
  const int ax = accel.empty() ? 0 : m.PopupTextWidth[m.ItemPopup[i]] - text_width(accel);
  if (etched) {
    draw_text(w, tx + 1, iMenuYText + 1, label, white, colWhite);
    if (!accel.empty()) draw_text(w, ax + 1, iMenuYText + 1, accel, white, colWhite);
  }
  draw_text(w, tx, iMenuYText, label, fore, xfore);
  if (!accel.empty()) draw_text(w, ax, iMenuYText, accel, fore, xfore);
  if (!onbar && m.has_sub(i)) {
    const int s = iMenuHeight < 24 ? iMenuHeight / 4 : 6;
    const int x = m.PopupWidth[m.ItemPopup[i]] - s - 4, mid = iMenuHeight / 2;
    for (int pass = etched ? 0 : 1; pass < 2; ++pass) {
      const int d = pass == 0 ? 0 : -1;
      XPoint pts[3] = {{static_cast<short>(x + d), static_cast<short>(mid - s + d)},
                       {static_cast<short>(x + d), static_cast<short>(mid + s + d)},
                       {static_cast<short>(x + s + d), static_cast<short>(mid + d)}};
      XSetForeground(dpy, menuGC, pass == 0 ? white : fore);
      XFillPolygon(dpy, w, menuGC, pts, 3, Convex, CoordModeOrigin);
    }
  }
  const int mn = m.ItemMnemonic[i];
  if (mn >= 0 && mn < static_cast<int>(label.size())) {
    const int ux = tx + text_width(label.substr(0, mn));
    const int uw = text_width(label.substr(mn, 1));
    XSetForeground(dpy, menuGC, fore);
    XFillRectangle(dpy, w, menuGC, ux, iVertUnd, std::max(1, uw), 1);
  }
}

void draw_popup_frame(const MenuRecord& m, int p) {
  if (!m.Created || !drawing_ready() || !m.PopupWindows[p]) return;
  if (p == 0 && !m.Floating) {
    XClearWindow(ixDisplay, m.PopupWindows[0]);
    return;
  }
  XSetForeground(ixDisplay, menuGC, zelvy_x::appData.bottomShadowColor);
  XDrawRectangle(ixDisplay, m.PopupWindows[p], menuGC, 0, 0, m.PopupWidth[p] + 5, m.PopupHeight[p] - 1);
}

void draw_popup(const MenuRecord& m, int p) {
  draw_popup_frame(m, p);
  for (int i : items_of(m, p)) draw_item(m, i);
}

// ---- Opening and closing pop-ups -------------------------------------------

void open_popup_at(MenuRecord& m, int p, int x, int y) {
  m.OpenPopups.push_back(p);
  m.OpenDirections.push_back(iMenuDir);
  if (!m.Created) return;
  XMoveWindow(ixDisplay, m.PopupWindows[p], x, y);
  XMapRaised(ixDisplay, m.PopupWindows[p]);
  draw_popup(m, p);
}

void open_sub(MenuRecord& m, int item) {
  const int p = m.live(item) ? m.ItemSubPopup[item] : -1;
  if (p < 0 || is_open(m, p)) return;
  int x = 0, y = 0;
  if (m.Created) {
    int ix = 0, iy = 0;
    Window child;
    XTranslateCoordinates(ixDisplay, m.ItemWindows[item], RootWindow(ixDisplay, zelvy_x::iScreen), 0, 0, &ix,
                          &iy, &child);
    yyMenuGetPos(ix, iy, m.ItemWidth[item], item_height(m, item), m.PopupWidth[p] + 6, m.PopupHeight[p],
                 m.PopupKind[p], zelvy_x::iDispWidth, zelvy_x::iDispHeight, iMenuDir, x, y);
  }
  open_popup_at(m, p, x, y);
  draw_item(m, item);
}

void close_newest(MenuRecord& m) {
  if (m.OpenPopups.empty()) return;
  const int p = m.OpenPopups.back();
  m.OpenPopups.pop_back();
  m.OpenDirections.pop_back();
  iMenuDir = m.OpenDirections.empty() ? 1 : m.OpenDirections.back();
  if (m.Created) XUnmapWindow(ixDisplay, m.PopupWindows[p]);
  const int parent = m.PopupParentItem[p];
  if (parent >= 0) draw_item(m, parent);
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
  bMenuAutoPop = true;
  open_sub(m, item);
  go(yyMenuEdgeItem(m, m.ItemSubPopup[item], last));
}

int bar_window(int h) {
  for (int guard = 0; h >= 0 && h < kMenuSlots && guard < kMenuSlots; ++guard) {
    if (!(WinInfo[h].Flags & 16) || WinInfo[h].Parent < 0) return h;
    h = WinInfo[h].Parent;
  }
  return -1;
}

bool is_alt_key(unsigned long ks) {
  return ks == XK_Alt_L || ks == XK_Alt_R || ks == XK_Meta_L || ks == XK_Meta_R ||
         (zelvy_x::AltKeySym != 0 && ks == zelvy_x::AltKeySym);
}

void select_crossing(MenuRecord& m, bool on) {
  if (!m.Created) return;
  const long mask = kItemEvents | (on ? EnterWindowMask | LeaveWindowMask : 0);
  for (Window w : m.ItemWindows)
    if (w) XSelectInput(ixDisplay, w, mask);
}

}  // namespace

// ---- Opening, closing, highlight ------------------------------------------

void yyMenuActivate(int item, MenuRecord& m, int window) {
  if (item != -1) iCurMenuItem = item;
  iActiveMenuWin = window;
  pwActiveMenu = &m;
  if (m.Created) {
    Display* dpy = ixDisplay;
    const int win = window >= 0 ? window : m.Owner;
    if (promptBar < 0 && prompts_for(m, win) && (promptBar = prompt_window(win)) >= 0)
      yyWindowStatusBarSwitch(2, promptBar);
    if (yywindowexists(window) && WinInfo[window].Visible) {
      if (!focusSaved) {
        XGetInputFocus(dpy, &savedFocus, &savedRevert);
        focusSaved = savedFocus != None;
      }
      // Keys reach the menu through the frame while it is open.
      XWindowAttributes wa{};
      XGetWindowAttributes(dpy, wWindow[window], &wa);
      XSelectInput(dpy, wWindow[window], wa.your_event_mask | KeyPressMask);
      XSetInputFocus(dpy, wWindow[window], RevertToParent, CurrentTime);
      if (XGrabPointer(dpy, wWindow[window], True, ButtonPressMask | ButtonReleaseMask | EnterWindowMask | LeaveWindowMask,
                       GrabModeSync, GrabModeAsync, None, None, CurrentTime) == GrabSuccess) {
        XAllowEvents(dpy, SyncPointer, CurrentTime);
        bGrabPointer = true;
      }
    }
    select_crossing(m, true);
  }
  if (m.live(iCurMenuItem)) draw_item(m, iCurMenuItem);
  show_prompt();
}

void yyMenuDeactivate() {
  MenuRecord* mp = pwActiveMenu;
  if (!mp) return;
  MenuRecord& m = *mp;
  const int old = iCurMenuItem;
  iCurMenuItem = -1;
  if (promptBar >= 0) {
    yyWindowStatusBarPrompt(promptBar, false, {});
    yyWindowStatusBarSwitch(1, promptBar);
    promptBar = -1;
  }
  while (!m.OpenPopups.empty()) close_newest(m);
  iMenuDir = 1;
  if (m.Created) {
    select_crossing(m, false);
    if (bGrabPointer) {
      XAllowEvents(ixDisplay, AsyncPointer, CurrentTime);
      XUngrabPointer(ixDisplay, CurrentTime);
    }
    if (focusSaved) XSetInputFocus(ixDisplay, savedFocus, savedRevert, CurrentTime);
    XFlush(ixDisplay);
  }
  focusSaved = false;
  bGrabPointer = false;
  pwActiveMenu = nullptr;
  iActiveMenuWin = -1;
  bMenuAutoPop = false;
  iTopItemPress = iTopWinPress = -1;
  if (m.live(old)) draw_item(m, old);
  if (m.Floating && pwFloatMenu.get() == &m) {
    destroy_windows(m);
    pwFloatMenu.reset();
  }
}

void yyMenuInvert(int item, int event, bool open) {
  MenuRecord* mp = pwActiveMenu;
  if (!mp || !mp->live(item)) return;
  MenuRecord& m = *mp;
  if (event == 7) {
    const int prev = iCurMenuItem;
    iCurMenuItem = item;
    close_above(m, m.ItemPopup[item]);
    if (m.live(prev) && prev != item) draw_item(m, prev);
    const int parent = m.PopupParentItem[m.ItemPopup[item]];
    if (parent >= 0) draw_item(m, parent);
    draw_item(m, item);
    if (open && bMenuAutoPop && m.has_sub(item) && !m.greyed(item)) open_sub(m, item);
  } else if (event == 8) {
    iCurMenuItem = m.OpenPopups.empty() ? -1 : m.PopupParentItem[m.OpenPopups.back()];
    draw_item(m, item);
    if (m.live(iCurMenuItem)) draw_item(m, iCurMenuItem);
  }
  show_prompt();
}

// ---- Keyboard, accelerators, buttons ---------------------------------------

bool yyMenuProcessKey(unsigned long ks, unsigned int state, int window, int& type, int& value1, int& value2) {
  type = 0;
  const bool shift = state & ShiftMask, ctrl = state & ControlMask, alt = state & zelvy_x::AltMask;
  if (!pwActiveMenu) {
    const int h = bar_window(window);
    MenuRecord* m = h >= 0 ? pwRootMenuAct[h] : nullptr;
    if (!m) return false;
    if (alt && !shift && !ctrl) {
      int count = 0;
      const int it = yyMenuKeyToItem(*m, 0, -1, upper_key(ks), count);
      if (it < 0) return false;
      if (count == 1 && !m->has_sub(it)) {
        if (m->selectable(it)) {
          type = MenuSelect;
          value1 = m->ItemIds[it];
          value2 = m->TextMenu;
        }
        return true;
      }
      bMenuAutoPop = m->has_sub(it);
      yyMenuActivate(it, *m, h);
      if (bMenuAutoPop && !m->greyed(it)) open_sub(*m, it);
      return true;
    }
    if (ks == XK_F10 && !shift) {
      bMenuAutoPop = false;
      yyMenuActivate(yyMenuEdgeItem(*m, 0, false), *m, h);
      return true;
    }
    return false;
  }

  MenuRecord& m = *pwActiveMenu;
  if ((ks == XK_F10 && !shift) || ks == XK_Escape || is_alt_key(ks)) {
    yyMenuDeactivate();
    return true;
  }
  const int c = iCurMenuItem;
  const bool live = m.live(c);
  const int newest = m.OpenPopups.empty() ? 0 : m.OpenPopups.back();
  const int p = live ? m.ItemPopup[c] : newest;
  const bool onbar = !m.Floating && p == 0;
  const int sub = live ? m.ItemSubPopup[c] : -1;
  const bool subopen = sub >= 0 && is_open(m, sub);
  switch (ks) {
    case XK_Up: case XK_KP_Up:
      if (!live) go(yyMenuEdgeItem(m, newest, true));
      else if (onbar) drop_down(m, c, bMenuAutoPop);
      else if (subopen) go(yyMenuEdgeItem(m, sub, true));
      else go(yyMenuStep(m, c, -1));
      return true;
    case XK_Down: case XK_KP_Down:
      if (!live) go(yyMenuEdgeItem(m, newest, false));
      else if (onbar) drop_down(m, c, false);
      else if (subopen) go(yyMenuEdgeItem(m, sub, false));
      else go(yyMenuStep(m, c, 1));
      return true;
    case XK_Left: case XK_KP_Left:
      if (!live) return true;
      if (onbar) {
        go_top(yyMenuStep(m, c, -1));
      } else if (subopen) {
        close_above(m, p);
        draw_item(m, c);
      } else if (m.PopupKind[p] == kPopupCascade && p != 0) {
        close_above(m, p);
        close_newest(m);
        go(m.PopupParentItem[p]);
      } else if (m.PopupKind[p] == kPopupDrop) {
        bMenuAutoPop = true;
        go_top(yyMenuStep(m, m.PopupParentItem[p], -1));
      }
      return true;
    case XK_Right: case XK_KP_Right:
      if (!live) return true;
      if (onbar) {
        go_top(yyMenuStep(m, c, 1));
      } else if (m.has_sub(c) && !m.greyed(c)) {
        open_sub(m, c);
        go(yyMenuEdgeItem(m, sub, false));
      } else if (!m.Floating) {
        bMenuAutoPop = true;
        go_top(yyMenuStep(m, top_ancestor(m, c), 1));
      }
      return true;
    case XK_Return: case XK_KP_Enter:
      if (!live) return true;
      if (m.has_sub(c)) {
        if (onbar) drop_down(m, c, false);
        else if (!m.greyed(c)) {
          open_sub(m, c);
          go(yyMenuEdgeItem(m, sub, false));
        }
      } else if (m.selectable(c)) {
        choose(m, c, type, value1, value2);
      }
      return true;
    default: break;
  }
  const int key = upper_key(ks);
  if (!key || alt || ctrl) return true;
  const int where = subopen ? sub : p;
  const int parent = m.PopupParentItem[where];
  if (parent >= 0 && m.greyed(parent)) return true;
  int count = 0;
  const int it = yyMenuKeyToItem(m, where, c, key, count);
  if (it < 0) return true;
  if (where == 0 && !m.Floating) go_top(it);
  else go(it);
  if (count != 1) return true;
  if (m.has_sub(it)) {
    if (where == 0 && !m.Floating) drop_down(m, it, false);
    else if (!m.greyed(it)) {
      open_sub(m, it);
      go(yyMenuEdgeItem(m, m.ItemSubPopup[it], false));
    }
  } else if (m.selectable(it)) {
    choose(m, it, type, value1, value2);
  }
  return true;
}

bool yyMenuProcessAccel(unsigned long ks, unsigned int state, int window, int& type, int& value1, int& value2) {
  type = 0;
  if (pwActiveMenu || window < 0 || window >= kMenuSlots) return false;
  int h = window;
  for (int guard = 0; !pwRootMenuSub[h] && WinInfo[h].Parent >= 0 && guard < kMenuSlots; ++guard) h = WinInfo[h].Parent;
  if (!pwRootMenuSub[h]) h = 0;
  int mods = ((state & ShiftMask) ? 1 : 0) + ((state & ControlMask) ? 4 : 0) + ((state & zelvy_x::AltMask) ? 8 : 0);
  if (ks == XK_ISO_Left_Tab) {
    ks = XK_Tab;
    mods |= 1;
  }
  const int id = yyMenuMatchAccel(pwAccelTable[h], ks, mods);
  if (id == 0) return false;
  if (const MenuRecord* m = pwRootMenuSub[h].get()) {
    const int i = m->find(id);
    if (i >= 0 && m->greyed(i)) return true;  // a greyed item's accelerator is void
  }
  type = MenuSelect;
  value1 = id;
  value2 = -1;
  return true;
}

void yyMenuProcessButton(MenuRecord& m, int item, bool press, int& type, int& value1, int& value2) {
  type = 0;
  if (!m.live(item)) return;
  const bool onbar = !m.Floating && m.ItemPopup[item] == 0;
  if (!pwActiveMenu) {
    if (!press || !onbar || m.separator(item)) return;
    bMenuAutoPop = m.has_sub(item);
    yyMenuActivate(item, m, m.Owner);
    if (bMenuAutoPop && !m.greyed(item)) open_sub(m, item);
    iTopItemPress = -1;
    return;
  }
  if (press) {
    if (onbar) {
      iTopItemPress = item;
      iTopWinPress = m.Owner;
    }
    return;
  }
  const int c = iCurMenuItem;
  if (m.selectable(c)) {
    choose(m, c, type, value1, value2);
    return;
  }
  if (onbar && iTopItemPress == item) {
    iTopItemPress = -1;
    if (!bMenuAutoPop) {
      bMenuAutoPop = true;
      if (!m.greyed(item)) open_sub(m, item);
      draw_item(m, item);
    } else {
      yyMenuDeactivate();
    }
  }
}

// ---- Finding and drawing from the event side -------------------------------

MenuRecord* yyMenuFind(Window xwin, int& code, int& index) {
  code = -1;
  index = -1;
  if (!xwin) return nullptr;
  auto look = [&](MenuRecord* m) -> bool {
    if (!m || !m->Created) return false;
    for (int p = 0; p < m->PopupCount; ++p)
      if (m->PopupWindows[p] == xwin) {
        code = (p == 0 && !m->Floating) ? 4 : 5;
        index = p;
        return true;
      }
    for (int i = 0; i < m->ItemCount(); ++i)
      if (m->ItemWindows[i] == xwin) {
        code = 6;
        index = i;
        return true;
      }
    return false;
  };
  if (look(pwActiveMenu)) return pwActiveMenu;
  if (look(pwFloatMenu.get())) return pwFloatMenu.get();
  for (auto& m : pwRootMenuSub)
    if (look(m.get())) return m.get();
  return nullptr;
}

void yyMenuDrawRoot(int h) {
  if (h < 0 || h >= kMenuSlots || !pwRootMenuAct[h]) return;
  MenuRecord& m = *pwRootMenuAct[h];
  draw_popup(m, 0);
}

int yyMenuBarHeight(int h) {
  if (h < 0 || h >= kMenuSlots || !pwRootMenuAct[h] || pwRootMenuAct[h]->Floating) return 0;
  MenuRecord& m = *pwRootMenuAct[h];
  if (!m.Created) create_windows(m);
  const int width = std::max(1, WinInfo[h].FrameWidth);
  const int rows = yyMenuResize(m, width);
  if (m.Created) {
    XMoveResizeWindow(ixDisplay, m.PopupWindows[0], 0, 0, width, rows * iMenuHeight);
    for (int i : items_of(m, 0))
      XMoveResizeWindow(ixDisplay, m.ItemWindows[i], m.ItemX[i], m.ItemY[i], std::max(1, m.ItemWidth[i]),
                        iMenuHeight);
  }
  return rows * yyMenuRowHeight();
}

bool yyMenuIsOpen() { return pwActiveMenu != nullptr; }

namespace {

MenuMessage* outMessage = nullptr;  // where the event pass puts what it makes

void send(int type, int value1, int value2, int x, int y, int win, Time time) {
  if (type == 0 || !outMessage) return;
  *outMessage = MenuMessage{type, value1, value2, x, y, win, static_cast<int>(time & 0x7fffffffUL)};
}

int select_window() {
  if (iActiveMenuWin >= 0) return iActiveMenuWin;
  return pwActiveMenu ? std::max(0, pwActiveMenu->Owner) : 0;
}

}  // namespace

bool yyMenuProcessEvent(XEvent& ev) {
  MenuMessage made;
  const bool consumed = yyMenuProcessEvent(ev, made);
  if (made.type != 0)
    yyMsgSend(made.type, made.value1, made.value2, 0, 0, made.x, made.y, made.win, made.time);
  return consumed;
}

bool yyMenuProcessEvent(XEvent& ev, MenuMessage& made) {
  made = MenuMessage{};
  outMessage = &made;
  struct Reset {
    ~Reset() { outMessage = nullptr; }
  } reset;
  if (!ixDisplay) return false;
  int code = -1, index = -1;
  switch (ev.type) {
    case Expose: {
      MenuRecord* m = yyMenuFind(ev.xexpose.window, code, index);
      if (!m) return false;
      if (code == 6) draw_item(*m, index);
      else draw_popup_frame(*m, index);
      XEvent more;
      while (XCheckTypedWindowEvent(ixDisplay, ev.xexpose.window, Expose, &more)) {}
      return true;
    }
    case ButtonPress:
    case ButtonRelease: {
      const bool press = ev.type == ButtonPress;
      const unsigned button = ev.xbutton.button;
      MenuRecord* m = yyMenuFind(ev.xbutton.window, code, index);
      if (m && code == 6) {
        if (button == 1) {
          if (!pwActiveMenu || pwActiveMenu == m) {
            const int win = pwActiveMenu ? select_window() : std::max(0, m->Owner);
            int type = 0, v1 = 0, v2 = 0;
            yyMenuProcessButton(*m, index, press, type, v1, v2);
            send(type, v1, v2, 0, 0, win, ev.xbutton.time);
          } else {
            yyMenuDeactivate();
          }
        }
      } else if ((!m || code == 4) && pwActiveMenu && (button == 1 || button == 3)) {
        yyMenuDeactivate();
      }
      if (bGrabPointer) XAllowEvents(ixDisplay, SyncPointer, CurrentTime);
      return m != nullptr;
    }
    case EnterNotify:
    case LeaveNotify: {
      MenuRecord* m = yyMenuFind(ev.xcrossing.window, code, index);
      if (m && m == pwActiveMenu && code == 6 && ev.xcrossing.mode == NotifyNormal)
        yyMenuInvert(index, ev.type == EnterNotify ? 7 : 8, true);
      return m != nullptr;
    }
    case KeyPress: {
      char buf[21] = {};
      KeySym ks = 0;
      XLookupString(&ev.xkey, buf, 20, &ks, nullptr);
      if (ks == XK_Tab || ks == XK_KP_Tab || ks == XK_ISO_Left_Tab || ks == 0x1000FF74 || ks == 0x1000FF75)
        ks = XLookupKeysym(&ev.xkey, 0);
      int win = -1;
      if (pwActiveMenu) {
        win = select_window();
      } else {
        int kind = 1;
        win = yyGetParentHandle(kind, ev.xkey.window);
        if (win < 0) return false;
      }
      int type = 0, v1 = 0, v2 = 0;
      if (yyMenuProcessKey(ks, ev.xkey.state, win, type, v1, v2)) {
        send(type, v1, v2, 0, 0, win, ev.xkey.time);
        return true;
      }
      if (yyMenuProcessAccel(ks, ev.xkey.state, win, type, v1, v2)) {
        send(type, v1, v2, ev.xkey.x, ev.xkey.y, win, ev.xkey.time);
        return true;
      }
      return false;
    }
    case KeyRelease:
      return pwActiveMenu != nullptr;
    default:
      return false;
  }
}

// ---- Menus of windows ------------------------------------------------------

void yyMenuInstall(int h, std::unique_ptr<MenuRecord> menu) {
  if (h < 0 || h >= kMenuSlots) return;
  if (pwActiveMenu && pwActiveMenu == pwRootMenuSub[h].get()) yyMenuDeactivate();
  if (pwRootMenuSub[h]) destroy_windows(*pwRootMenuSub[h]);
  pwRootMenuSub[h] = std::move(menu);
  pwRootMenuAct[h] = pwRootMenuSub[h].get();
  pwAccelTable[h] = AccelTable{};
  MenuRecord* m = pwRootMenuSub[h].get();
  if (!m) return;
  m->Owner = h;
  int count = -1;
  yyrcaccelcheck(m->MenuId, count);
  if (count > 0) {
    AccelTable& t = pwAccelTable[h];
    t.ids.resize(count);
    t.keysyms.resize(count);
    t.modifiers.resize(count);
    yyrcaccelload(m->MenuId, t.ids, t.keysyms, t.modifiers);
  }
  if (yywindowexists(h)) create_windows(*m);
}

void yymenu(int menuid, int h, int& status) {
  status = 0;
  if (h < 0 || h >= kMenuSlots || (ixDisplay && !yywindowexists(h))) {
    status = 1003;
    return;
  }
  std::unique_ptr<MenuRecord> m;
  if (menuid > 0) {
    m = std::make_unique<MenuRecord>();
    yyMenuLoad(menuid, *m, status);
    if (status != 0) return;
  }
  yyMenuInstall(h, std::move(m));
  if (yywindowexists(h)) {
    yyWindowResize(h);
    yyMenuDrawRoot(h);
  }
}

void yyMenuWindowClosed(int h) {
  if (h < 0 || h >= kMenuSlots) return;
  if (pwActiveMenu && (iActiveMenuWin == h || pwActiveMenu == pwRootMenuSub[h].get())) yyMenuDeactivate();
  if (pwRootMenuSub[h]) destroy_windows(*pwRootMenuSub[h]);
  pwRootMenuSub[h].reset();
  pwRootMenuAct[h] = nullptr;
  pwAccelTable[h] = AccelTable{};
  if (iWinMenu == h) iWinMenu = 0;
}

void yymenuselect(int window, int floating, int& status) {
  status = 0;
  if (window >= 0) {
    if (window >= kMenuSlots) {
      status = 1003;
      return;
    }
    iWinMenu = window;
  }
  if (floating >= 0) iFloatMenu = floating != 0;
}

// ---- Public routines -------------------------------------------------------

namespace {

// The menu the public routines act on: the floating one while it is being
// prepared, else the selected window's, else the root window's.
MenuRecord* target_menu() {
  if (iFloatMenu && pwFloatMenu) return pwFloatMenu.get();
  const int h = iWinMenu;
  if (h >= 0 && h < kMenuSlots && pwRootMenuSub[h]) return pwRootMenuSub[h].get();
  return pwRootMenuSub[0].get();
}

// Windows follow a change of the tree or of a text: new sizes, a new bar layout.
void rebuild(MenuRecord& m) {
  if (pwActiveMenu == &m) yyMenuDeactivate();
  const bool had = m.Created;
  destroy_windows(m);
  yyMenuBuildPopups(m);
  if (!had) return;
  create_windows(m);
  if (!m.Floating && yywindowexists(m.Owner)) {
    yyWindowResize(m.Owner);
    yyMenuDrawRoot(m.Owner);
  }
}

}  // namespace

void WMenuSetState(int itemid, int state, int value) {
  if (itemid <= 0) {
    yyerror(1001, "WMenuSetState");
    return;
  }
  if ((state != 1 && state != 2) || (value != 0 && value != 1)) {
    yyerror(1126, "WMenuSetState");
    return;
  }
  const std::uint32_t bit = state == 1 ? kMenuGreyed : kMenuChecked;
  const bool set = state == 1 ? value == 0 : value == 1;  // enabled is the absence of "greyed"
  int& bits = itemstates[itemid];
  bits = set ? (bits | static_cast<int>(bit)) : (bits & ~static_cast<int>(bit));
  MenuRecord* m = target_menu();
  const int i = m ? m->find(itemid) : -1;
  if (i < 0) return;
  const std::uint32_t now = set ? (m->ItemFlags[i] | bit) : (m->ItemFlags[i] & ~bit);
  if (now == m->ItemFlags[i]) return;
  m->ItemFlags[i] = now;
  draw_item(*m, i);
  if (m->Created) XFlush(ixDisplay);
}

int WMenuGetState(int itemid, int state) {
  int bits = 0;
  const MenuRecord* m = target_menu();
  const int i = m ? m->find(itemid) : -1;
  if (i >= 0) {
    bits = static_cast<int>(m->ItemFlags[i]);
  } else {
    auto it = itemstates.find(itemid);
    bits = it == itemstates.end() ? 0 : it->second;
  }
  return state == 1 ? ((bits & kMenuGreyed) ? 0 : 1) : ((bits & kMenuChecked) ? 1 : 0);
}

void WMenuSetString(int itemid, std::string_view text) {
  MenuRecord* m = target_menu();
  const int i = m ? m->find(itemid) : -1;
  if (i < 0) {
    yyerror(1001, "WMenuSetString");
    return;
  }
  std::string t(text);
  m->ItemMnemonic[i] = yyMenuItemTextProc(t);
  m->ItemText[i] = std::move(t);
  rebuild(*m);
}

void WMenuItemInsert(int itemid, int position, int newid, std::string_view text) {
  MenuRecord* m = target_menu();
  const int r = m ? m->find(itemid) : -1;
  if (r < 0) {
    yyerror(1001, "WMenuItemInsert");
    return;
  }
  int n = 0;
  for (; n < m->ItemCount() && m->ItemIds[n] >= 0; ++n) {}
  if (n == m->ItemCount()) {
    m->ItemIds.push_back(0);
    m->ItemFlags.push_back(0);
    m->ItemNext.push_back(-1);
    m->ItemChild.push_back(-1);
    m->ItemText.emplace_back();
    m->ItemMnemonic.push_back(-1);
    m->ItemPopup.push_back(-1);
    m->ItemSubPopup.push_back(-1);
  }
  std::string t(text);
  m->ItemIds[n] = std::max(0, newid);
  m->ItemFlags[n] = newid <= 0 ? kMenuSeparator : 0;
  m->ItemChild[n] = -1;
  m->ItemMnemonic[n] = newid <= 0 ? -1 : yyMenuItemTextProc(t);
  m->ItemText[n] = newid <= 0 ? std::string() : std::move(t);
  if (m->ItemPrompts.size() > static_cast<std::size_t>(n)) m->ItemPrompts[n].reset();
  const int p = m->ItemPopup[r];
  if (position == 1) {
    m->ItemNext[n] = r;
    if (m->PopupFirstItem[p] == r) {
      m->PopupFirstItem[p] = n;
      if (m->PopupParentItem[p] >= 0) m->ItemChild[m->PopupParentItem[p]] = n;
    } else {
      for (int i : items_of(*m, p))
        if (m->ItemNext[i] == r) m->ItemNext[i] = n;
    }
  } else {
    m->ItemNext[n] = m->ItemNext[r];
    m->ItemNext[r] = n;
  }
  rebuild(*m);
}

void WMenuItemDelete(int itemid) {
  MenuRecord* m = target_menu();
  const int i = m ? m->find(itemid) : -1;
  if (i < 0 || m->ItemChild[i] >= 0) {
    yyerror(1001, "WMenuItemDelete");
    return;
  }
  const int p = m->ItemPopup[i];
  if (m->PopupFirstItem[p] == i) {
    m->PopupFirstItem[p] = m->ItemNext[i];
    if (m->PopupParentItem[p] >= 0) m->ItemChild[m->PopupParentItem[p]] = m->ItemNext[i];
  } else {
    for (int j : items_of(*m, p))
      if (m->ItemNext[j] == i) m->ItemNext[j] = m->ItemNext[i];
  }
  m->ItemIds[i] = -1;
  m->ItemNext[i] = -1;
  m->ItemText[i].clear();
  if (m->ItemPrompts[i]) {
    m->ItemPrompts[i].reset();
    --m->DynamicPromptCount;
  }
  rebuild(*m);
}

void yymenuprompt(int itemid, int& status, std::string_view text) {
  status = 0;
  MenuRecord* m = target_menu();
  const int i = m ? m->find(itemid) : -1;
  if (i < 0) {
    status = 1001;
    return;
  }
  const bool had = m->ItemPrompts[i].has_value();
  if (text.empty()) m->ItemPrompts[i].reset();
  else m->ItemPrompts[i] = std::string(text);
  m->DynamicPromptCount += (m->ItemPrompts[i].has_value() ? 1 : 0) - (had ? 1 : 0);
}

void WMenuFloatLoad(int menuid) {
  yyMenuDeactivate();
  auto m = std::make_unique<MenuRecord>();
  m->Floating = true;
  int status = 0;
  yyMenuLoad(menuid, *m, status);
  if (status != 0) {
    yyerror(1002, "WMenuFloatLoad");
    return;
  }
  m->Floating = true;
  yyMenuBuildPopups(*m);
  m->Owner = zelvy_win::iWinCur;
  pwFloatMenu = std::move(m);
  iFloatMenu = true;
}

void WMenuFloatShow(int x, int y, int flags) {
  iFloatMenu = false;
  if (!pwFloatMenu) {
    yyerror(1001, "WMenuFloatShow");
    return;
  }
  MenuRecord& m = *pwFloatMenu;
  const int h = yywindowexists(m.Owner) ? m.Owner : 0;
  int sx = x, sy = y;
  if (!(flags & 1) && yywindowexists(h)) {
    int px = 0, py = 0;
    WindowUnitsToPixels(x, y, px, py);
    Window child;
    XTranslateCoordinates(ixDisplay, wClient[h], RootWindow(ixDisplay, zelvy_x::iScreen), px, py, &sx, &sy, &child);
  }
  create_windows(m);
  if (m.Created) yyWindowPositionOnScreen(m.PopupWidth[0] + 6, m.PopupHeight[0], sx, sy);
  bMenuAutoPop = true;
  iCurMenuItem = -1;
  yyMenuActivate(-1, m, (flags & 2) ? -1 : h);
  open_popup_at(m, 0, sx, sy);
  if (m.Created) XFlush(ixDisplay);
}

void yymenufloating(int menuid, int x, int y, int flags, int& status) {
  status = 0;
  WMenuFloatLoad(menuid);
  if (!pwFloatMenu) {
    status = 1002;
    return;
  }
  // Items that the window's menu also has take its states and texts.
  if (const MenuRecord* w = pwRootMenuSub[std::clamp(iWinMenu, 0, kMenuSlots - 1)].get()) {
    MenuRecord& f = *pwFloatMenu;
    for (int i = 0; i < f.ItemCount(); ++i) {
      const int j = f.live(i) ? w->find(f.ItemIds[i]) : -1;
      if (j < 0) continue;
      f.ItemFlags[i] = (f.ItemFlags[i] & ~(kMenuGreyed | kMenuChecked)) | (w->ItemFlags[j] & (kMenuGreyed | kMenuChecked));
      f.ItemText[i] = w->ItemText[j];
      f.ItemMnemonic[i] = w->ItemMnemonic[j];
    }
    for (const auto& [id, text] : w->Prompts) f.Prompts.emplace(id, text);
  }
  WMenuFloatShow(x, y, flags);
}

// ---- Joining the windows and the message loop ------------------------------

namespace {

// Windows reach their menu bars, and the message loop its first look at every
// event, through these hooks; they are set as soon as the engine is linked in.
[[maybe_unused]] const bool hooksSet = [] {
  zelvy_hooks::menu_row_height = yyMenuRowHeight;
  zelvy_hooks::menu_load = yymenu;
  zelvy_hooks::menu_bar_height = yyMenuBarHeight;
  zelvy_hooks::menu_closed = yyMenuWindowClosed;
  zelvy_hooks::menu_event = static_cast<bool (*)(XEvent&)>(yyMenuProcessEvent);
  zelvy_hooks::menu_open = yyMenuIsOpen;
  return true;
}();

}  // namespace
