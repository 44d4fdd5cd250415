// Small text routines on blank-padded text. Positions are counted from 1.
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Position of the first character that is neither a blank nor a zero; 0 if none.
int ilocatechar(std::string_view text);
// Positions of the first and last character of the first word (a run of
// characters other than blank and zero); both 0 if there is none.
void ilocatestring(std::string_view text, int& first, int& last);
// The text less its mnemonic marks: an ampersand before any character but
// another ampersand is dropped; everything else, "&&" included, is kept.
std::string yyStrDeAmpersand(std::string_view text);
// Conversions of A-Z and a-z only.
void ilowercase(std::string& text);
void iuppercase(std::string& text);
// Moves the non-blank part inside the field: a side text containing "L" left,
// "R" right (either case), anything else centres.
void ijustifystring(std::string& text, std::string_view side);
// What follows the last "." of the path when that is inside the last path
// component and not its last character; else blank. Case: 0 as it stands, 2
// upper, anything else (also absent) lower.
void wfileextension(std::string_view path, std::string& extension, std::optional<int> letter_case = {});
