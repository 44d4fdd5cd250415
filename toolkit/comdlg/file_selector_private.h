// The file selector's glue to the widgets: the list of names filled in one
// go, its selection read and cleared, its double and right clicks turned into
// messages, and the prompt boxes.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// WSelectFile's work: splits the starting path, runs the dialog, reports its
// failure and copies its result.
void yyfileselector(std::string_view filter, std::optional<int> flags, std::string& filename,
                    std::optional<std::string_view> title, int* filterindex);

// Replaces the options of a list on the current dialog with `shown`, all
// unselected, in one call: a directory of thousands of names fills at once.
void yyselectfile_putlist(int fieldid, const std::vector<std::string>& shown);
// Positions (from 1) of the selected options of a list on the current dialog.
std::vector<int> yyselectfile_listselection(int fieldid);
// A double click on the list asks for OK with the list as the focus field; a
// right click selects the option under the pointer and sends ContextClick.
void yyselectfile_listhooks(int fieldid);
// Return in a text field on the current dialog presses OK.
void yyselectfile_returnhook(int fieldid);

// The one call point of the selector's prompts, so that they can move to the
// toolkit's message box in one place. Button sets 0 (OK) and 3 (Yes, No);
// returns 1 OK, 6 Yes or 7 No.
int yyselectfile_prompt(int buttonset, int icon, int defaultbutton, std::string_view text,
                        std::string_view title);
