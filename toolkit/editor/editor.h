// The text editor: a child window turned into an editor or viewer of one
// text file, with its own menu, status bar and file handling. The menu
// commands run inside the toolkit before the application sees a message.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Joins the editor to the message loop and the windows; called once at start-up.
void yyEditAttach();

// Turns the current window into an editor (mode 1 modal, 2 modeless, 3
// semi-modeless) and loads a file; on an editor, loads the file into it.
// Flags: 1 word wrap, 2 the file must exist, 4 viewer, 8 a command line, 10
// one with a history, 20 no toolbar, 80 modified mark in the title, 2000 no
// Save, 4000 up to 35 buffers with a View menu (a file goes into a buffer of
// its own), 20000 backup on save, 80000 the command line above the text,
// 400000 no name in the title, 800000 no menu, 1000000 a missing file opens
// an empty editor quietly, 4000000 large toolbar images, 10000000 never
// prompt to save. Font types 0..4, 6..13 (3 by default).
void WEditFile(std::string_view filename = {}, std::optional<int> mode = {},
               std::optional<int> menuid = {}, std::optional<int> flags = {},
               std::optional<int> fonttype = {}, std::optional<int> fontsize = {},
               std::optional<std::string_view> filter = {}, std::optional<int> filterindex = {},
               std::optional<int> menuowner = {}, std::optional<std::string_view> fontname = {});

// The whole text; with a receiver size the text is cut to it (error 1023).
void WEditGetText(std::string& text, std::optional<int> count = {});
// text.size() characters from the 1-based start; empty past the end.
void WEditGetTextPart(std::string& text, int start);
// Replaces the whole text; carriage returns are dropped.
void WEditPutText(std::string_view text);
// Replaces 1-based start..end (inclusive), or inserts before start.
void WEditPutTextPart(std::string_view text, int start, std::optional<int> end = {});
// Direction 1: position to line number; 2: line number to its first position; 0 outside.
int WEditPos(int direction, int value);
// Moves the caret: flags 1 relative, 2 a line number, 32 the caret's line to the top.
void WEditSetPos(int value, std::optional<int> flags = {});
// About an editor window (-1 the last modal editor closed): 1 saved, 2 length,
// 3 changed since load, 4/5 selection, 6/7 buffers, 9 top line, 14 total
// lines, 15 caret line, 17 flags, ...
int WInfoEditor(int window, int code, std::optional<int> buffer = {});

// Save (0) or Save As (1) in the current editor; closing its buffer.
void yyeditsave(int saveas);
void yyeditclose(int force);

// The layer below, on the current editor, counting from 0.
void yyeditselection(int start, int end);
void yyeditsettop(int line);
void yyeditsetpos(int position);
// Saved 1: nothing unsaved; changed 1: changed since load.
void yyeditsetflags(int saved, int changed);
// 1 find text, 2 replacement, 3 file name, 4 window title; the length for 1 and 2.
int yyinfoeditorstring(int window, int code, std::string& text);
// Keeps (1) or stops keeping (0) a backup of the old file on each save.
void yyeditsetbackup(int on);
// The file type index of the current buffer in the file selector; error 1028 on no editor.
void yyeditfilterindex(int index, int& error);

// The search of the current editor: which 1 the find text (at most 1023
// characters; Find Next and Previous follow it), else the replacement; error 1028.
void yyeditfindstring(int which, int& error, std::string_view text);
// Search flags: 2 ignore case, 4 upwards, 16 whole words; error 1028.
void yyeditfindflags(int flags, int& error);
// The Goto Line dialog of an editor window.
void yyeditgotoline(int window);

// The layer under WEditFile, with the same arguments.
void yyeditfile(std::string_view filename = {}, std::optional<int> mode = {}, std::optional<int> menuid = {},
                std::optional<int> flags = {}, std::optional<int> fonttype = {}, std::optional<int> fontsize = {},
                std::optional<std::string_view> filter = {}, std::optional<int> filterindex = {},
                std::optional<int> menuowner = {}, std::optional<std::string_view> fontname = {});
// A new font for the current editor: -1 keeps the type or size; error 1028
// on no editor, 1116 for a type that doesn't exist.
void yyeditfont(int type, int size, int& error, std::optional<std::string_view> fontname = {});

// The buffers of a multi-buffer editor (option 4000), numbered from 1; up
// to 35. The one on show lives in the text widget, the others are parked
// with their selection, top line, saved and changed state and file name.
// Errors: 1028 no editor, 1067 no such buffer.
// Parks the text on show as buffer `buffer`; puts a parked buffer on show.
void yyeditstorebuffer(int window, int buffer);
void yyeditretrievebuffer(int window, int buffer);
// Parks `from` and shows `to`; nothing when they are the same.
void yyeditswap(int window, int from, int to);
// The file name kept with a parked buffer; empty when it has none.
void yyeditstorebuffername(int window, int buffer, std::string_view name);
void yyeditgetbuffername(int window, int buffer, std::string& name);
// 1 when the parked buffer has no unsaved changes.
void yyeditgetsave(int window, int buffer, int& saved);
// Drops an entry; the later ones move down one place.
void yyeditclosebuffer(int window, int buffer);
// Frees all parked buffers of a window going away.
void yyeditcleanup(int window);
// Shows buffer `buffer` of the current editor; error 1067 without it.
void yyeditselectbuffer(int buffer, int& error);

// The command line (option 8, or 10 with a history): errors 1028 no
// editor, 1032 no command line, 1092 no history, 1023 a text cut.
// An empty prompt removes the label in front of the line.
void yyeditprompt(int& error, std::string_view text);
void yyeditputcommand(int& error, std::string_view text);
// The line; with `room` the text is cut to it (error 1023).
void yyeditgetcommand(int& error, std::string& text, std::optional<int> room = {});
void yyeditcheckhistory(int& error);
void yyeditclearhistory(int& error);
// History items from 0, the newest first; the oldest go beyond the limit.
inline constexpr int kEditHistoryLimit = 100;
void yyeditputhistory(int index, std::string_view text);
void yyeditgethistory(int index, std::string& text);
