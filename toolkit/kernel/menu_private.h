// Menus, the toolkit's side: menu records, the engine's state and the
// routines the windows and the message loop call.
#pragma once

#include "toolkit/base/check.h"

#include <X11/Xlib.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

#include "toolkit/kernel/menu.h"


// ---- Data ----------------------------------------------------------------

// Item flags.
inline constexpr std::uint32_t kMenuSeparator = 1, kMenuGreyed = 2, kMenuChecked = 4,
                               kMenuHasSub = 65536;
// Pop-up kinds.
inline constexpr int kPopupCascade = 0, kPopupDrop = 1, kPopupBar = 2;

struct MenuRecord {
  int MenuId = 0;
  int Owner = -1;         // window handle the menu belongs to; -1 floating
  int BarHost = -1;       // window whose frame holds the bar when not the owner (a split's pane menu)
  bool Floating = false;  // all pop-ups are override windows, pop-up 0 included
  int TextMenu = -1;      // owner of a text context menu (1 dialog, 2 grid, 3 editor), -1 none

  int PopupCount = 0;
  std::vector<Window> PopupWindows;
  std::vector<int> PopupFirstItem, PopupParentItem, PopupWidth, PopupTextWidth, PopupHeight,
      PopupKind;
  std::vector<int> OpenPopups, OpenDirections;  // open pop-ups, oldest first

  // Items; a deleted slot keeps identifier -1 until reused.
  std::vector<Window> ItemWindows;
  std::vector<int> ItemIds;
  std::vector<std::uint32_t> ItemFlags;
  std::vector<int> ItemNext, ItemChild;
  std::vector<std::string> ItemText;  // marks removed; a tab or backspace starts the accelerator text
  std::vector<int> ItemMnemonic;      // offset of the mnemonic letter, -1 none
  std::vector<int> ItemPopup;         // pop-up that shows the item
  std::vector<int> ItemSubPopup;      // pop-up the item opens, -1 none
  std::vector<int> ItemX, ItemY, ItemWidth;  // place in its pop-up or on the bar

  std::map<int, std::string> Prompts;                 // loaded, by identifier
  std::vector<std::optional<std::string>> ItemPrompts;  // set at run time; win over loaded ones
  int DynamicPromptCount = 0;

  int BarRows = 1;
  bool Created = false;  // X windows exist

  int ItemCount() const { return static_cast<int>(ItemIds.size()); }
  bool live(int i) const { return i >= 0 && i < ItemCount() && ItemIds[i] >= 0; }
  bool separator(int i) const { return (ItemFlags[i] & kMenuSeparator) != 0; }
  bool greyed(int i) const { return (ItemFlags[i] & kMenuGreyed) != 0; }
  bool has_sub(int i) const { return ItemSubPopup[i] >= 0; }
  // Plain, not greyed, not a separator: choosing it gives MenuSelect.
  bool selectable(int i) const { return live(i) && !separator(i) && !greyed(i) && !has_sub(i); }
  int find(int id) const;  // item index of an identifier, -1 none
};

// Accelerators of a window: keysym and modifiers (1 Shift, 4 Ctrl, 8 Alt) to an item.
struct AccelTable {
  std::vector<int> keysyms, ids, modifiers;
};

namespace zelvy_menu {
constexpr int kMenuSlots = zelvy_data::kMaxWindow + 1;
inline constexpr int iSeparHeight = 9;
struct State {
  // States set by identifier, kept for toolbar buttons and for menus loaded later.
  std::map<int, int> itemstates;
  zelv::Slots<std::unique_ptr<MenuRecord>, kMenuSlots> pwRootMenuSub;
  zelv::Slots<MenuRecord*, kMenuSlots> pwRootMenuAct{};
  zelv::Slots<AccelTable, kMenuSlots> pwAccelTable;
  std::unique_ptr<MenuRecord> pwFloatMenu;
  // The menus a converted window had before its kind's menu replaced them.
  zelv::Slots<std::unique_ptr<MenuRecord>, kMenuSlots> pwKindSaved;
  zelv::Slots<AccelTable, kMenuSlots> accelKindSaved;
  zelv::Slots<bool, kMenuSlots> kindPushed{};
  MenuRecord* pwActiveMenu = nullptr;
  int iActiveMenuWin = -1;
  int iCurMenuItem = -1;
  bool bMenuAutoPop = false;
  int iMenuDir = 1;
  bool bGrabPointer = false;
  int iTopItemPress = -1, iTopWinPress = -1;
  int iWinMenu = 0;
  bool iFloatMenu = false;
  int iTextMenuType = -1;
  int iMenuHeight = 0, iMenuYText = 0, iVertUnd = 0;
};

// The one instance, defined in menu.cpp.
State& state();
}  // namespace zelvy_menu

// ---- Toolkit side --------------------------------------------------------

// Replaces a window's menu (0 removes it); status 0, 1002 or 1003.
void yymenu(int menuid, int handle, int& status);
// The targets of the public routines: window (-1 keeps it) and floating (-1 keeps it).
void yymenuselect(int window, int floating, int& status);
// A run-time status bar prompt of an item; an empty text removes it.
void yymenuprompt(int itemid, int& status, std::string_view text);
// Loads a menu as the floating menu and shows it in one step.
void yymenufloating(int menuid, int x, int y, int flags, int& status);

// The height one bar row takes; opens the menu font on first use (0 without a display).
int yyMenuRowHeight();
// Pixels that a window's menu bar takes above the client area at the frame's
// present width, 0 without a bar. Lays the bar out on the way.
int yyMenuBarHeight(int handle);
// The toolkit's look at an X event before anyone else: expose of menu
// windows, pointer on them, keys for an open menu, mnemonics, F10 and the
// accelerators. True when the event was consumed.
bool yyMenuProcessEvent(XEvent& event);
// The same pass, handing back the message it made (type 0 none) instead of queueing it.
struct MenuMessage {
  int type = 0, value1 = 0, value2 = 0, x = 0, y = 0, win = 0, time = 0;
};
bool yyMenuProcessEvent(XEvent& event, MenuMessage& made);
// True while a menu is open: the message loop then lets no message through.
bool yyMenuIsOpen();
// Frees a window's menu and its accelerators with their X windows.
void yyMenuWindowClosed(int handle);
// Frees a record's arrays and prompts; the X windows must be gone.
void yyMenuUnload(MenuRecord& menu);
// Destroys a menu's X windows and frees it.
void yyMenuDestroy(std::unique_ptr<MenuRecord>& menu);
// Room for at least `count` items in every item array.
void yyMenuReAlloc(MenuRecord& menu, int count);
// While the menu holds the pointer grab, lets the next pointer event through.
void yyMenuGrabMaintain();
// Lays out a window's bar for its width and lets the client area follow.
void yyMenuPositionRoot(int handle);
// The bar of window `handle` shows the menu of window `from` (a pane of its split, or itself).
void yyMenuShowOnBar(int handle, int from);
// A window converted to an editor, viewer or grid takes the kind's menu and
// accelerators; the previous ones come back when it reverts.
void yyMenuKindPush(int handle, std::unique_ptr<MenuRecord> menu, AccelTable accel);
void yyMenuKindPop(int handle);
// One menu of two: the top level of the first followed by that of the second;
// items of the second whose identifier the first has are left out, with the
// sub-menus below them.
std::unique_ptr<MenuRecord> yyMenuMergeMenus(const MenuRecord& first, const MenuRecord& second);
// The accelerators of both; on the same key and modifiers the first wins.
AccelTable yyMenuMergeAccel(const AccelTable& first, const AccelTable& second);

// One item of a menu built at run time (editor, grid and text context menus).
// A false include flag skips the record. An item with kMenuHasSub opens a
// sub-menu of the plain items that follow it, up to the next such item.
struct MenuDescriptor {
  bool include = true;
  std::string text;    // without marks
  int mnemonic = -1;   // offset of the mnemonic letter in the text
  std::string prompt;  // may be empty
  int id = 0;          // 0 a separator
  std::uint32_t flags = 0;
  int modifiers = 0;   // accelerator: 1 Shift, 4 Ctrl, 8 Alt
  int keysym = 0, keysym2 = 0;
};
std::unique_ptr<MenuRecord> yyMenuLoadDynamicMenu(std::span<const MenuDescriptor> items);
AccelTable yyMenuLoadDynamicAccel(std::span<const MenuDescriptor> items);

// Loads a menu from the resources into a record (no windows); status 0 or 1002.
void yyMenuLoad(int menuid, MenuRecord& menu, int& status);
// Makes a loaded record the menu of a window, as its bar; creates its
// windows when the window exists.
void yyMenuInstall(int handle, std::unique_ptr<MenuRecord> menu);
// Strips "&" marks up to the first tab or backspace; the offset of the marked letter or -1.
int yyMenuItemTextProc(std::string& text);
// Re-derives the pop-ups from the item tree.
void yyMenuBuildPopups(MenuRecord& menu);
// Next (dir 1) or previous (-1) sibling, wrapping round, skipping separators
// and deleted slots; -1 when the pop-up has none.
int yyMenuStep(const MenuRecord& menu, int item, int dir);
// First or last (last true) item of a pop-up that is not a separator, -1 none.
int yyMenuEdgeItem(const MenuRecord& menu, int popup, bool last);
// Mnemonic search among the items of a pop-up, from the one after `current`;
// count is the number of matches, the result the first of them or -1.
int yyMenuKeyToItem(const MenuRecord& menu, int popup, int current, int key, int& count);
// Lays the top-level items side by side within a width; the number of rows.
int yyMenuResize(MenuRecord& menu, int width);
// Where a pop-up goes: below or above an item (drop-down) or beside it
// (cascade), kept on a screen of the given size; direction is iMenuDir and
// may turn.
void yyMenuGetPos(int itemx, int itemy, int itemw, int itemh, int popw, int poph, int kind,
                  int screenw, int screenh, int& direction, int& x, int& y);
// Accelerator lookup; the identifier of the item or 0.
int yyMenuMatchAccel(const AccelTable& table, unsigned long keysym, int modifiers);

// Key for a window's menu; true when taken. A choice comes out as type
// MenuSelect with value1 the item and value2 the text menu owner (-1).
bool yyMenuProcessKey(unsigned long keysym, unsigned int state, int window, int& type, int& value1,
                      int& value2);
// Accelerators of a window (or the first parent with a menu, else the root).
bool yyMenuProcessAccel(unsigned long keysym, unsigned int state, int window, int& type, int& value1,
                        int& value2);
// Button 1 on an item of a menu; press true for a press.
void yyMenuProcessButton(MenuRecord& menu, int item, bool press, int& type, int& value1, int& value2);
// Opens a menu with an item highlighted (-1 none) for a window (-1: no grab).
void yyMenuActivate(int item, MenuRecord& menu, int window);
// Closes the open menu, all of it.
void yyMenuDeactivate();
// Highlight change: event 7 the pointer entered the item, 8 it left.
void yyMenuInvert(int item, int event, bool open);
// The menu whose window an X window is: code 4 the bar, 5 a pop-up, 6 an item,
// with the pop-up or item index; nullptr when none.
MenuRecord* yyMenuFind(Window xwin, int& code, int& index);
// Redraws a window's bar.
void yyMenuDrawRoot(int handle);
// The X windows of a menu: kind kMenuKindBar a bar in the frame of its window
// with drop-downs, kMenuKindFloating override pop-ups only. A window of -1
// means the record's owner.
inline constexpr int kMenuKindBar = 4, kMenuKindFloating = 7;
void yyMenuCreateItems(MenuRecord& menu, int kind, int window);
// Shows a floating menu at screen pixels for a window (-1: no grab, no
// focus): sized, kept on the screen, opened with no item highlighted.
void yyMenuFloating(int x, int y, int window, MenuRecord& menu);

// Helpers the menu sources share: the item tree (menu_tree.cpp) and the
// windows and pop-ups (menu_draw.cpp).
namespace menu_detail {
// The items of a pop-up in order; the walk is bounded so that a broken link
// cannot hang the toolkit.
std::vector<int> items_of(const MenuRecord& m, int popup);
bool is_open(const MenuRecord& m, int popup);
// The top-level item above an item.
int top_ancestor(const MenuRecord& m, int item);
int upper_key(unsigned long keysym);
void destroy_windows(MenuRecord& m);
void yyMenuDrawItem(const MenuRecord& m, int i);
void draw_popup_frame(const MenuRecord& m, int p);
void draw_popup(const MenuRecord& m, int p);
void open_sub(MenuRecord& m, int item);
void open_popup_at(MenuRecord& m, int p, int x, int y);
void close_newest(MenuRecord& m);
// Closes the pop-ups opened after the one given; for the bar (pop-up 0 of a bar
// menu, never in the open list) that is all of them.
void close_above(MenuRecord& m, int popup);
void choose(MenuRecord& m, int item, int& type, int& value1, int& value2);
void go(int item);
// Moves along the bar; an open drop-down follows when automatic opening is on.
void go_top(int item);
// Drops down the pop-up of a bar item and goes to its first or last item.
void drop_down(MenuRecord& m, int item, bool last);
int bar_window(int h);
bool is_alt_key(unsigned long ks);
}  // namespace menu_detail
