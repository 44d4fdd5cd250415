// The toolkit's error state. Every toolkit routine that fails records its error
// with yyerror under its own public name and returns normally; callers poll
// WInfoError. The texts of the error codes are those of WInfoErrorMessage
// category 1.
#pragma once

#include <string>
#include <string_view>

// Records Code in ierr and, with a debug level above 0, reports it in the form
// "Routine:WDialogLoad Error=1007:Dialog not present in resource".
void yyerror(int code, std::string_view routine);
// Stores Code in ierr and does nothing else.
void yyseterror(int code);
// The report text yyerror would deliver for this code and routine.
std::string yyerrortext(int code, std::string_view routine);

// Returns an item of the error state; items 1, 2, 3 and 6 are cleared by reading.
int WInfoError(int item);
// The text of an error code in a category (1 toolkit table, 2/6 system error
// text, 3 zlib, 4 OpenGL, 5 SQL, 7 sound, 8 JPEG, 9 blank). Other categories
// leave the text as it was. The result is blank-padded to text's size on entry,
// or unpadded when text is empty on entry.
void WInfoErrorMessage(int code, std::string& text, int category = 1);
// Sets the debug level; a level outside 0..4 is ignored.
void IDebugLevel(int level);

// Delivery of reports at debug levels 3 (the root window's status bar) and 4
// (a modal box). The layers that can show them install these when they come
// up; until then, and after a reset to nullptr, the report is printed. The box
// returns true when the user chose Cancel, which ends the program.
using ErrorStatusSink = void (*)(std::string_view text);
using ErrorBoxSink = bool (*)(std::string_view text);
void yySetErrorStatusSink(ErrorStatusSink sink);
void yySetErrorBoxSink(ErrorBoxSink sink);

