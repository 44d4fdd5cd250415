// Menus: the menu bar in a window's frame, its drop-downs and cascades, and
// floating pop-ups, all drawn by the toolkit on plain X windows. The
// application sees nothing of them but MenuSelect with an item identifier.
#pragma once

#include <string_view>

// State 1 enabled (value 1 on, 0 greyed), state 2 checked (1 checked, 0 not).
void WMenuSetState(int itemid, int state, int value);
// The recorded state of an item: for state 1, 1 enabled; for state 2, 1 checked.
int WMenuGetState(int itemid, int state);
// Replaces an item's text; "&" marks the mnemonic letter, "&&" is a plain "&".
void WMenuSetString(int itemid, std::string_view text);
// Inserts a new item in front of (position 1) or behind (any other) an item;
// newid 0 makes a separator.
void WMenuItemInsert(int itemid, int position, int newid, std::string_view text);
// Removes an item that has no children.
void WMenuItemDelete(int itemid);
// Loads a menu as the floating menu; the routines above act on it until shown.
void WMenuFloatLoad(int menuid);
// Shows the floating menu at window units of the selected window, or at screen
// pixels with flag 1; flag 2 leaves pointer and focus alone.
void WMenuFloatShow(int x, int y, int flags = 0);
