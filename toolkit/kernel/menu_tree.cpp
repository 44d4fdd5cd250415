// Menus as item trees: loading from the resources and from descriptors,
// pop-up numbering, stepping, mnemonics, accelerators. Nothing here needs a
// display, so the navigation is tested without one.
#include "toolkit/kernel/menu_private.h"


#include <algorithm>

#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/window_private.h"

// This module's state.
static zelvy_menu::State& ms = zelvy_menu::state();

// ---- The item tree ---------------------------------------------------------

int MenuRecord::find(int id) const {
  if (id <= 0) return -1;
  for (int i = 0; i < ItemCount(); ++i)
    if (ItemIds[i] == id) return i;
  return -1;
}

namespace menu_detail {

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

}  // namespace menu_detail

using namespace menu_detail;

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
    auto it = ms.itemstates.find(m.ItemIds[i]);
    if (it != ms.itemstates.end() && m.ItemIds[i] > 0) m.ItemFlags[i] |= static_cast<std::uint32_t>(it->second);
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
      y += ms.iMenuHeight;
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

// ---- Record upkeep and merging ----------------------------------------------

void yyMenuUnload(MenuRecord& m) {
  const int owner = m.Owner;
  const bool floating = m.Floating;
  m = MenuRecord{};
  m.Owner = owner;
  m.Floating = floating;
}

void yyMenuReAlloc(MenuRecord& m, int count) {
  if (count <= m.ItemCount()) return;
  const auto n = static_cast<std::size_t>(count);
  // New slots are free (identifier -1) until an insert takes them.
  m.ItemIds.resize(n, -1);
  m.ItemFlags.resize(n, 0);
  m.ItemNext.resize(n, -1);
  m.ItemChild.resize(n, -1);
  m.ItemText.resize(n);
  m.ItemMnemonic.resize(n, -1);
  m.ItemPopup.resize(n, -1);
  m.ItemSubPopup.resize(n, -1);
  m.ItemWindows.resize(n, 0);
  m.ItemX.resize(n, 0);
  m.ItemY.resize(n, 0);
  m.ItemWidth.resize(n, 0);
  m.ItemPrompts.resize(n);
}

namespace {

// Copies a chain of siblings with everything below them; items whose
// identifier `skip` holds are left out with their sub-menus. Returns the
// first copied item in `dst`, -1 when none.
int copy_chain(const MenuRecord& src, int item, MenuRecord& dst, const std::vector<int>& skip, int depth) {
  int first = -1, prev = -1;
  if (depth > src.ItemCount()) return -1;
  for (int guard = 0; item >= 0 && item < src.ItemCount() && guard < src.ItemCount(); ++guard, item = src.ItemNext[item]) {
    if (!src.live(item)) continue;
    const int id = src.ItemIds[item];
    if (id > 0 && std::find(skip.begin(), skip.end(), id) != skip.end()) continue;
    const int n = dst.ItemCount();
    dst.ItemIds.push_back(id);
    dst.ItemFlags.push_back(src.ItemFlags[item]);
    dst.ItemNext.push_back(-1);
    dst.ItemChild.push_back(-1);
    dst.ItemText.push_back(src.ItemText[item]);
    dst.ItemMnemonic.push_back(src.ItemMnemonic[item]);
    const int child = copy_chain(src, src.ItemChild[item], dst, skip, depth + 1);
    dst.ItemChild[static_cast<std::size_t>(n)] = child;
    if (prev >= 0) dst.ItemNext[static_cast<std::size_t>(prev)] = n;
    else first = n;
    prev = n;
  }
  return first;
}

int top_of(const MenuRecord& m) {
  if (!m.PopupFirstItem.empty()) return m.PopupFirstItem[0];
  return m.ItemCount() > 0 ? 0 : -1;
}

}  // namespace

std::unique_ptr<MenuRecord> yyMenuMergeMenus(const MenuRecord& first, const MenuRecord& second) {
  auto out = std::make_unique<MenuRecord>();
  out->MenuId = first.MenuId;
  out->Floating = first.Floating;
  out->TextMenu = first.TextMenu;
  std::vector<int> taken;
  for (int i = 0; i < first.ItemCount(); ++i)
    if (first.live(i) && first.ItemIds[i] > 0) taken.push_back(first.ItemIds[i]);
  const int a = copy_chain(first, top_of(first), *out, {}, 0);
  const int b = copy_chain(second, top_of(second), *out, taken, 0);
  if (a >= 0 && b >= 0) {
    int last = a;
    for (int guard = 0; out->ItemNext[static_cast<std::size_t>(last)] >= 0 && guard < out->ItemCount(); ++guard)
      last = out->ItemNext[static_cast<std::size_t>(last)];
    out->ItemNext[static_cast<std::size_t>(last)] = b;
  }
  out->PopupFirstItem.assign(1, a >= 0 ? a : b);
  out->Prompts = first.Prompts;
  for (const auto& [id, text] : second.Prompts) out->Prompts.emplace(id, text);
  yyMenuBuildPopups(*out);
  // Prompts set at run time travel with their items.
  for (const MenuRecord* src : {&first, &second})
    for (int i = 0; i < src->ItemCount(); ++i) {
      if (!src->live(i) || static_cast<std::size_t>(i) >= src->ItemPrompts.size() || !src->ItemPrompts[static_cast<std::size_t>(i)]) continue;
      const int j = out->find(src->ItemIds[i]);
      if (j >= 0 && !out->ItemPrompts[static_cast<std::size_t>(j)]) {
        out->ItemPrompts[static_cast<std::size_t>(j)] = src->ItemPrompts[static_cast<std::size_t>(i)];
        ++out->DynamicPromptCount;
      }
    }
  return out;
}

AccelTable yyMenuMergeAccel(const AccelTable& first, const AccelTable& second) {
  AccelTable out = first;
  for (std::size_t k = 0; k < second.keysyms.size(); ++k) {
    bool clash = false;
    for (std::size_t j = 0; j < first.keysyms.size() && !clash; ++j)
      clash = first.keysyms[j] == second.keysyms[k] && first.modifiers[j] == second.modifiers[k];
    if (clash) continue;
    out.keysyms.push_back(second.keysyms[k]);
    out.ids.push_back(second.ids[k]);
    out.modifiers.push_back(second.modifiers[k]);
  }
  return out;
}
