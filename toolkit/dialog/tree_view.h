// Tree view fields: an outline of items the program names by identifier.
// All routines work on the current dialog and hand back their error code
// (0 none, 1005 no dialog, 1006 not a tree view, 1010 nothing selected, 1011
// an unknown item, 1048 an identifier in use, 1049 a leaf asked for its open
// state). Free of X.
#pragma once

#include <string>
#include <string_view>

// With a flag other than 0, an insert first checks that the identifier is unused.
void WDialogTreeviewCheck(int flag);

// Relation 1 before, 3 last child of, others after the relative item; into
// an empty tree the relative item is ignored.
inline constexpr int kTreeBefore = 1, kTreeAfter = 2, kTreeLastChild = 3;
void yydialoginserttreeviewitem_(int fieldid, int relative, int relation, int identifier, int& error,
                                 std::string_view text);
void yydialogdeletetreeviewitem_(int fieldid, int item, int& error);
// Opens the item's parents, selects it and scrolls it into view.
void yydialogputtreeview_(int fieldid, int item, int& error);
void yydialoggettreeview_(int fieldid, int& item, bool wantText, int& error, std::string& text);
// 2 open, 1 closed.
void yydialoggettreeviewstate_(int fieldid, int item, int& state, int& error);
// 1 closes, other states open.
void yydialogsettreeviewstate_(int fieldid, int item, int state, int& error);
void yydialogsettreeviewstring_(int fieldid, int item, int& error, std::string_view text);
// The item's rectangle in root window coordinates.
void yydialoggettreeviewrect_(int fieldid, int item, int& left, int& top, int& right, int& bottom, int& error);
// Fills the tree from a menu of the resources (its items become the tree's,
// sub-menus branches, checked items open); `selected` is an item or -1.
void yydialogtreeviewmenu_(int fieldid, int menuId, int selected, int& error);
