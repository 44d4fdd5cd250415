// Options of combo and list fields beyond the single-selection routines of
// dialog.h: lists of many selections, option editing by position, the top
// line of a list, and the tab stops of a list. Free of X.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

// Lists of many selections: one state per option, 1 selected.
void WDialogPutMenu(int fieldid, std::span<const std::string> options, int count, std::span<const int> states);
void WDialogGetMenu(int fieldid, std::span<int> states);

// The C layer, on the current dialog; `type` is the option type that
// yydialoggetmenutype_ gives (1..3 combos, 4 list of one, 5 and 6 of many).
void yydialoggetmenutype_(int fieldid, int& type, int& error);
void yydialogputmenustringsbegin_(int fieldid, int count);
void yydialogputmenustringsadd_(int index, int type, std::string_view text);
void yydialogputmenustringsend_(int count, int type);
void yydialogputmenustring_(int type, int fieldid, std::string_view text);
void yydialogputmenuitem_(int type, int fieldid, int position, std::string_view text);
void yydialoginsertmenuitem_(int type, int fieldid, int position, std::string_view text);
void yydialogdeletemenuitem_(int type, int fieldid, int position);
void yydialoggetmenuitem_(int position, int fieldid, int type, std::string& text);
void yydialoggetmenuoptioncount_(int fieldid, int type, int& count);
void yydialoggetmenuoptionstate_(int fieldid, int option, int& state);
void yydialogputoption_(int type, int fieldid, int option, int& error);
void yydialogputoptionstate_(int fieldid, int option, int state);
void yydialogputoptionstates_(int fieldid, int first, int last, int state);
void yydialogputoptionstateend_(int fieldid);
void yydialogputmenucombo_(int fieldid, std::string_view text);
void yydialoggetmenucombo_(int fieldid, int& option, std::string& text, int& error);
void yydialoggetmenulist_(int fieldid, int& option, std::string& text, int& error);
void yydialoggetmenutop_(int fieldid, int& position, int& error);
void yydialogsetmenutop_(int fieldid, int position, int& error);
// Stops in dialog units; lists only (else 1006).
void yydialogtabstops_(int fieldid, std::span<const int> stops, int& error);

// Text blank-padded or cut to the width of `out` (empty: as it is).
void yystrctof(std::string_view text, std::string& out);

// Tab expansion of list items, in pixels of the list's font.
int yyDialogStrTabsCount(std::string_view text);
std::string yyDialogStrTabsProc(std::string_view text, std::span<const int> stops, int defaultTabWidth,
                                int spaceWidth, const std::function<int(std::string_view)>& measure);
