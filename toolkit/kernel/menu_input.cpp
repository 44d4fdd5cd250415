// Menus driven by the user: keys, accelerators and buttons, and the first
// look at every X event that the message loop gives the menus.
#include "toolkit/kernel/menu_private.h"


#include <algorithm>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/window_private.h"

// This module's state.
static zelvy_menu::State& ms = zelvy_menu::state();

using namespace menu_detail;

// ---- Keyboard, accelerators, buttons ---------------------------------------

bool yyMenuProcessKey(unsigned long ks, unsigned int state, int window, int& type, int& value1, int& value2) {
  type = 0;
  const bool shift = state & ShiftMask, ctrl = state & ControlMask, alt = state & zelvy_x::state().AltMask;
  if (!ms.pwActiveMenu) {
    const int h = bar_window(window);
    MenuRecord* m = h >= 0 ? ms.pwRootMenuAct[h] : nullptr;
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
      ms.bMenuAutoPop = m->has_sub(it);
      yyMenuActivate(it, *m, h);
      if (ms.bMenuAutoPop && !m->greyed(it)) open_sub(*m, it);
      return true;
    }
    if (ks == XK_F10 && !shift) {
      ms.bMenuAutoPop = false;
      yyMenuActivate(yyMenuEdgeItem(*m, 0, false), *m, h);
      return true;
    }
    return false;
  }

  MenuRecord& m = *ms.pwActiveMenu;
  if ((ks == XK_F10 && !shift) || ks == XK_Escape || is_alt_key(ks)) {
    yyMenuDeactivate();
    return true;
  }
  const int c = ms.iCurMenuItem;
  const bool live = m.live(c);
  const int newest = m.OpenPopups.empty() ? 0 : m.OpenPopups.back();
  const int p = live ? m.ItemPopup[c] : newest;
  const bool onbar = !m.Floating && p == 0;
  const int sub = live ? m.ItemSubPopup[c] : -1;
  const bool subopen = sub >= 0 && is_open(m, sub);
  switch (ks) {
    case XK_Up: case XK_KP_Up:
      if (!live) go(yyMenuEdgeItem(m, newest, true));
      else if (onbar) drop_down(m, c, ms.bMenuAutoPop);
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
        yyMenuDrawItem(m, c);
      } else if (m.PopupKind[p] == kPopupCascade && p != 0) {
        close_above(m, p);
        close_newest(m);
        go(m.PopupParentItem[p]);
      } else if (m.PopupKind[p] == kPopupDrop) {
        ms.bMenuAutoPop = true;
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
        ms.bMenuAutoPop = true;
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
  if (ms.pwActiveMenu || window < 0 || window >= zelvy_menu::kMenuSlots) return false;
  int h = window;
  for (int guard = 0; !ms.pwRootMenuSub[h] && zelvy_win::state().WinInfo[h].Parent >= 0 && guard < zelvy_menu::kMenuSlots; ++guard) h = zelvy_win::state().WinInfo[h].Parent;
  if (!ms.pwRootMenuSub[h]) h = 0;
  int mods = ((state & ShiftMask) ? 1 : 0) + ((state & ControlMask) ? 4 : 0) + ((state & zelvy_x::state().AltMask) ? 8 : 0);
  if (ks == XK_ISO_Left_Tab) {
    ks = XK_Tab;
    mods |= 1;
  }
  const int id = yyMenuMatchAccel(ms.pwAccelTable[h], ks, mods);
  if (id == 0) return false;
  if (const MenuRecord* m = ms.pwRootMenuSub[h].get()) {
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
  if (!ms.pwActiveMenu) {
    if (!press || !onbar || m.separator(item)) return;
    ms.bMenuAutoPop = m.has_sub(item);
    yyMenuActivate(item, m, m.Owner);
    if (ms.bMenuAutoPop && !m.greyed(item)) open_sub(m, item);
    ms.iTopItemPress = -1;
    return;
  }
  if (press) {
    if (onbar) {
      ms.iTopItemPress = item;
      ms.iTopWinPress = m.Owner;
    }
    return;
  }
  const int c = ms.iCurMenuItem;
  if (m.selectable(c)) {
    choose(m, c, type, value1, value2);
    return;
  }
  if (onbar && ms.iTopItemPress == item) {
    ms.iTopItemPress = -1;
    if (!ms.bMenuAutoPop) {
      ms.bMenuAutoPop = true;
      if (!m.greyed(item)) open_sub(m, item);
      yyMenuDrawItem(m, item);
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
  if (look(ms.pwActiveMenu)) return ms.pwActiveMenu;
  if (look(ms.pwFloatMenu.get())) return ms.pwFloatMenu.get();
  for (auto& m : ms.pwRootMenuSub)
    if (look(m.get())) return m.get();
  return nullptr;
}

void yyMenuDrawRoot(int h) {
  if (h < 0 || h >= zelvy_menu::kMenuSlots || !ms.pwRootMenuAct[h]) return;
  MenuRecord& m = *ms.pwRootMenuAct[h];
  draw_popup(m, 0);
}

int yyMenuBarHeight(int h) {
  if (h < 0 || h >= zelvy_menu::kMenuSlots || !ms.pwRootMenuAct[h] || ms.pwRootMenuAct[h]->Floating) return 0;
  MenuRecord& m = *ms.pwRootMenuAct[h];
  if (!m.Created) yyMenuCreateItems(m, kMenuKindBar, h);
  const int width = std::max(1, zelvy_win::state().WinInfo[h].FrameWidth);
  const int rows = yyMenuResize(m, width);
  if (m.Created) {
    XMoveResizeWindow(xdisplay(), m.PopupWindows[0], 0, 0, width, rows * ms.iMenuHeight);
    for (int i : items_of(m, 0))
      XMoveResizeWindow(xdisplay(), m.ItemWindows[i], m.ItemX[i], m.ItemY[i], std::max(1, m.ItemWidth[i]),
                        ms.iMenuHeight);
  }
  return rows * yyMenuRowHeight();
}

bool yyMenuIsOpen() { return ms.pwActiveMenu != nullptr; }

namespace {

MenuMessage* outMessage = nullptr;  // where the event pass puts what it makes

void send(int type, int value1, int value2, int x, int y, int win, Time time) {
  if (type == 0 || !outMessage) return;
  *outMessage = MenuMessage{type, value1, value2, x, y, win, static_cast<int>(time & 0x7fffffffUL)};
}

int select_window() {
  if (ms.iActiveMenuWin >= 0) return ms.iActiveMenuWin;
  return ms.pwActiveMenu ? std::max(0, ms.pwActiveMenu->Owner) : 0;
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
  if (!xdisplay()) return false;
  int code = -1, index = -1;
  switch (ev.type) {
    case Expose: {
      MenuRecord* m = yyMenuFind(ev.xexpose.window, code, index);
      if (!m) return false;
      if (code == 6) yyMenuDrawItem(*m, index);
      else draw_popup_frame(*m, index);
      XEvent more;
      while (XCheckTypedWindowEvent(xdisplay(), ev.xexpose.window, Expose, &more)) {}
      return true;
    }
    case ButtonPress:
    case ButtonRelease: {
      const bool press = ev.type == ButtonPress;
      const unsigned button = ev.xbutton.button;
      MenuRecord* m = yyMenuFind(ev.xbutton.window, code, index);
      if (m && code == 6) {
        if (button == 1) {
          if (!ms.pwActiveMenu || ms.pwActiveMenu == m) {
            const int win = ms.pwActiveMenu ? select_window() : std::max(0, m->Owner);
            int type = 0, v1 = 0, v2 = 0;
            yyMenuProcessButton(*m, index, press, type, v1, v2);
            send(type, v1, v2, 0, 0, win, ev.xbutton.time);
          } else {
            yyMenuDeactivate();
          }
        }
      } else if ((!m || code == 4) && ms.pwActiveMenu && (button == 1 || button == 3)) {
        yyMenuDeactivate();
      }
      yyMenuGrabMaintain();
      return m != nullptr;
    }
    case EnterNotify:
    case LeaveNotify: {
      MenuRecord* m = yyMenuFind(ev.xcrossing.window, code, index);
      if (m && m == ms.pwActiveMenu && code == 6 && ev.xcrossing.mode == NotifyNormal)
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
      if (ms.pwActiveMenu) {
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
      return ms.pwActiveMenu != nullptr;
    default:
      return false;
  }
}
