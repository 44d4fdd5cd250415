// Menus of windows and the public menu routines.
#include "toolkit/kernel/menu_private.h"


#include <algorithm>

#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/toolbar.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

// This module's state.
static zelvy_menu::State& ms = zelvy_menu::state();

using namespace menu_detail;

// ---- Menus of windows ------------------------------------------------------

void yyMenuInstall(int h, std::unique_ptr<MenuRecord> menu) {
  if (h < 0 || h >= zelvy_menu::kMenuSlots) return;
  if (ms.pwActiveMenu && ms.pwActiveMenu == ms.pwRootMenuSub[h].get()) yyMenuDeactivate();
  if (ms.pwRootMenuSub[h]) destroy_windows(*ms.pwRootMenuSub[h]);
  ms.pwRootMenuSub[h] = std::move(menu);
  ms.pwRootMenuAct[h] = ms.pwRootMenuSub[h].get();
  ms.pwAccelTable[h] = AccelTable{};
  MenuRecord* m = ms.pwRootMenuSub[h].get();
  if (!m) return;
  m->Owner = h;
  // A pane has no bar of its own: its menu shows on its split's bar while it
  // is the active pane.
  const bool pane = yywindowexists(h) && !zelvy_win::state().wtShell[h] &&
                    yyWindowSplitRecord(zelvy_win::state().WinInfo[h].Parent);
  if (pane) ms.pwRootMenuAct[h] = nullptr;
  int count = -1;
  yyrcaccelcheck(m->MenuId, count);
  if (count > 0) {
    AccelTable& t = ms.pwAccelTable[h];
    t.ids.resize(count);
    t.keysyms.resize(count);
    t.modifiers.resize(count);
    yyrcaccelload(m->MenuId, t.ids, t.keysyms, t.modifiers);
  }
  if (yywindowexists(h) && !pane) yyMenuCreateItems(*m, kMenuKindBar, h);
}

void yymenu(int menuid, int h, int& status) {
  status = 0;
  if (h < 0 || h >= zelvy_menu::kMenuSlots || (xdisplay() && !yywindowexists(h))) {
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
  if (h < 0 || h >= zelvy_menu::kMenuSlots) return;
  if (ms.pwActiveMenu && (ms.iActiveMenuWin == h || ms.pwActiveMenu == ms.pwRootMenuSub[h].get())) yyMenuDeactivate();
  // A bar that showed this window's menu (its split's) shows none until told again.
  for (int k = 0; k < zelvy_menu::kMenuSlots; ++k)
    if (k != h && ms.pwRootMenuSub[h] && ms.pwRootMenuAct[k] == ms.pwRootMenuSub[h].get()) ms.pwRootMenuAct[k] = nullptr;
  yyMenuDestroy(ms.pwRootMenuSub[h]);
  yyMenuDestroy(ms.pwKindSaved[h]);
  ms.kindPushed[h] = false;
  ms.accelKindSaved[h] = AccelTable{};
  ms.pwRootMenuAct[h] = nullptr;
  ms.pwAccelTable[h] = AccelTable{};
  if (ms.iWinMenu == h) ms.iWinMenu = 0;
}

void yymenuselect(int window, int floating, int& status) {
  status = 0;
  if (window >= 0) {
    if (window >= zelvy_menu::kMenuSlots) {
      status = 1003;
      return;
    }
    ms.iWinMenu = window;
  }
  if (floating >= 0) ms.iFloatMenu = floating != 0;
}

void yyMenuPositionRoot(int h) {
  if (!yywindowexists(h)) return;
  yyWindowResize(h);
  yyMenuDrawRoot(h);
  XFlush(xdisplay());
}

void yyMenuShowOnBar(int h, int from) {
  if (h < 0 || h >= zelvy_menu::kMenuSlots || from < 0 || from >= zelvy_menu::kMenuSlots) return;
  MenuRecord* want = ms.pwRootMenuSub[from].get();
  MenuRecord* cur = ms.pwRootMenuAct[h];
  if (want == cur) return;
  if (cur) {
    if (ms.pwActiveMenu == cur) yyMenuDeactivate();
    destroy_windows(*cur);
    if (cur->BarHost == h) cur->BarHost = -1;
  }
  ms.pwRootMenuAct[h] = want;
  if (want) {
    want->BarHost = from == h ? -1 : h;
    yyMenuCreateItems(*want, kMenuKindBar, -1);
  }
  yyMenuPositionRoot(h);
}

void yyMenuKindPush(int h, std::unique_ptr<MenuRecord> menu, AccelTable accel) {
  if (h < 0 || h >= zelvy_menu::kMenuSlots) return;
  if (!ms.kindPushed[h]) {
    if (ms.pwRootMenuSub[h]) destroy_windows(*ms.pwRootMenuSub[h]);
    ms.pwKindSaved[h] = std::move(ms.pwRootMenuSub[h]);
    ms.accelKindSaved[h] = std::move(ms.pwAccelTable[h]);
    ms.kindPushed[h] = true;
  }
  yyMenuInstall(h, std::move(menu));
  ms.pwAccelTable[h] = std::move(accel);
  yyMenuPositionRoot(h);
}

void yyMenuKindPop(int h) {
  if (h < 0 || h >= zelvy_menu::kMenuSlots || !ms.kindPushed[h]) return;
  if (ms.pwActiveMenu && ms.pwActiveMenu == ms.pwRootMenuSub[h].get()) yyMenuDeactivate();
  yyMenuDestroy(ms.pwRootMenuSub[h]);
  ms.pwRootMenuSub[h] = std::move(ms.pwKindSaved[h]);
  ms.pwRootMenuAct[h] = ms.pwRootMenuSub[h].get();
  ms.pwAccelTable[h] = std::move(ms.accelKindSaved[h]);
  ms.accelKindSaved[h] = AccelTable{};
  ms.kindPushed[h] = false;
  if (ms.pwRootMenuSub[h] && yywindowexists(h)) yyMenuCreateItems(*ms.pwRootMenuSub[h], kMenuKindBar, h);
  yyMenuPositionRoot(h);
}

void yyMenuDestroy(std::unique_ptr<MenuRecord>& menu) {
  if (!menu) return;
  if (ms.pwActiveMenu == menu.get()) yyMenuDeactivate();
  destroy_windows(*menu);
  yyMenuUnload(*menu);
  menu.reset();
}

void yyMenuGrabMaintain() {
  if (ms.bGrabPointer && xdisplay()) XAllowEvents(xdisplay(), SyncPointer, CurrentTime);
}

// ---- Public routines -------------------------------------------------------

namespace {

// The menu the public routines act on: the floating one while it is being
// prepared, else the selected window's, else the root window's.
MenuRecord* target_menu() {
  if (ms.iFloatMenu && ms.pwFloatMenu) return ms.pwFloatMenu.get();
  const int h = ms.iWinMenu;
  if (h >= 0 && h < zelvy_menu::kMenuSlots && ms.pwRootMenuSub[h]) return ms.pwRootMenuSub[h].get();
  return ms.pwRootMenuSub[0].get();
}

// Windows follow a change of the tree or of a text: new sizes, a new bar layout.
void rebuild(MenuRecord& m) {
  if (ms.pwActiveMenu == &m) yyMenuDeactivate();
  const bool had = m.Created;
  destroy_windows(m);
  yyMenuBuildPopups(m);
  if (!had) return;
  yyMenuCreateItems(m, m.Floating ? kMenuKindFloating : kMenuKindBar, -1);
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
  int& bits = ms.itemstates[itemid];
  bits = set ? (bits | static_cast<int>(bit)) : (bits & ~static_cast<int>(bit));
  MenuRecord* m = target_menu();
  const int i = m ? m->find(itemid) : -1;
  // The buttons of the window's toolbars (or the root window's, when the
  // window has neither menu nor toolbar) follow the item.
  if (!ms.iFloatMenu || !ms.pwFloatMenu) {
    const int h = std::clamp(ms.iWinMenu, 0, zelvy_menu::kMenuSlots - 1);
    const int w = (ms.pwRootMenuSub[h] || yyMenuToolbarButtonState(h, itemid) >= 0) ? h : 0;
    const int now = yyMenuToolbarButtonState(w, itemid);
    if (now >= 0) {
      const int flags = i >= 0 ? static_cast<int>(m->ItemFlags[i]) : now;
      const int want = set ? (flags | static_cast<int>(bit)) : (flags & ~static_cast<int>(bit));
      if (want != now) yyMenuSetToolbarIdent(w, itemid, want & static_cast<int>(kMenuGreyed | kMenuChecked));
    }
  }
  if (i < 0) return;
  const std::uint32_t now = set ? (m->ItemFlags[i] | bit) : (m->ItemFlags[i] & ~bit);
  if (now == m->ItemFlags[i]) return;
  m->ItemFlags[i] = now;
  yyMenuDrawItem(*m, i);
  if (m->Created) XFlush(xdisplay());
}

int WMenuGetState(int itemid, int state) {
  int bits = 0;
  const MenuRecord* m = target_menu();
  const int i = m ? m->find(itemid) : -1;
  if (i >= 0) {
    bits = static_cast<int>(m->ItemFlags[i]);
  } else {
    auto it = ms.itemstates.find(itemid);
    bits = it == ms.itemstates.end() ? 0 : it->second;
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
  if (n == m->ItemCount()) yyMenuReAlloc(*m, n + 1);
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
  m->Owner = zelvy_win::state().iWinCur;
  ms.pwFloatMenu = std::move(m);
  ms.iFloatMenu = true;
}

void WMenuFloatShow(int x, int y, int flags) {
  ms.iFloatMenu = false;
  if (!ms.pwFloatMenu) {
    yyerror(1001, "WMenuFloatShow");
    return;
  }
  MenuRecord& m = *ms.pwFloatMenu;
  const int h = yywindowexists(m.Owner) ? m.Owner : 0;
  int sx = x, sy = y;
  if (!(flags & 1) && yywindowexists(h)) {
    int px = 0, py = 0;
    WindowUnitsToPixels(x, y, px, py);
    if (yyWindowGetPos(h, px, py)) {
      sx = px;
      sy = py;
    }
  }
  yyMenuFloating(sx, sy, (flags & 2) ? -1 : h, m);
}

void yyMenuFloating(int x, int y, int window, MenuRecord& m) {
  if (!m.Created) yyMenuCreateItems(m, kMenuKindFloating, -1);
  if (m.Created) yyWindowPositionOnScreen(m.PopupWidth[0] + 6, m.PopupHeight[0], x, y);
  ms.bMenuAutoPop = true;
  ms.iCurMenuItem = -1;
  yyMenuActivate(-1, m, window);
  open_popup_at(m, 0, x, y);
  if (m.Created) XFlush(xdisplay());
}

void yymenufloating(int menuid, int x, int y, int flags, int& status) {
  status = 0;
  WMenuFloatLoad(menuid);
  if (!ms.pwFloatMenu) {
    status = 1002;
    return;
  }
  // Items that the window's menu also has take its states and texts.
  if (const MenuRecord* w = ms.pwRootMenuSub[std::clamp(ms.iWinMenu, 0, zelvy_menu::kMenuSlots - 1)].get()) {
    MenuRecord& f = *ms.pwFloatMenu;
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

namespace zelvy_menu {
State& state() {
  static State s;
  return s;
}
}  // namespace zelvy_menu
