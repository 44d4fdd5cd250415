// Toolbars: rows of image buttons on the edges of a window, each standing for
// a menu item. Pressing one sends the item's MenuSelect; the item's grey and
// check states show on the button.
#pragma once

#include <span>
#include <string>
#include <string_view>

// Edges, by slot; buttons run left to right on 0 and 3, top to bottom on 1 and 2.
inline constexpr int kToolbarTop = 0, kToolbarLeft = 1, kToolbarRight = 2, kToolbarBottom = 3;
inline constexpr int kToolbarSlots = 4;

// Sets a slot of a window to a toolbar of the resources; id 0 removes what
// the slot holds. A non-empty `ids` picks those buttons of the resource
// toolbar, in that order, 0 for a separator. The new client size comes back
// when it changed, else -1 in both. Errors: 1003 no such window, 1002 no such
// toolbar (the slot keeps its own), 1001 an id of `ids` not on the toolbar
// (that button has no image, the rest is made).
void yymenutoolbar(int toolbarid, int window, int slot, int& clientwidth, int& clientheight,
                   std::span<const int> ids, int& error);
// The tooltip of a button of the selected window's toolbars, set at run time;
// error 1001 when no toolbar of the window has that item.
void yymenutooltip(int itemid, int& error, std::string_view text);
// Gives the buttons with that item on a window's toolbars a state: bit 2
// greyed, bit 4 checked, as menu items carry them.
void yyMenuSetToolbarIdent(int window, int itemid, int state);

// One button of a toolbar that the toolkit builds for its own windows (the
// editor's, the grid's). Rows with `include` false are left out, but a row
// with an item keeps its place in the image strip all the same.
struct ToolbarDescriptor {
  bool include = true;
  std::string text;  // the tooltip
  int id = 0;        // 0 a separator
};
// Such a toolbar in slot 0 of a window, from image strip `imageid` of square
// buttons of `size` pixels; no included row removes the slot's toolbar.
void yyMenuLoadDynamicToolbar(std::span<const ToolbarDescriptor> rows, int window, int imageid, int size);

// What the window layout needs: the depth of a slot's bar across its edge, 0
// without one; and the thickness that a resource toolbar would have there.
int yyMenuToolbarThickness(int window, int slot);
int yyMenuToolbarResourceThickness(int toolbarid, int slot);
// The state of a window's button with that item (bits 2 and 4), -1 when no
// toolbar of the window has it.
int yyMenuToolbarButtonState(int window, int itemid);
