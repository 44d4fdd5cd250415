// Number format descriptors and the conversions between numbers and text.
//
// A descriptor is a list of items, optionally in round brackets, case-insensitive:
// Iw, Iw.m, Fw.d, Ew.d, Ew.dEe, Gw.d, Gw.dEe, A, Aw, nX, quoted literal text,
// a repeat count in front of an item or of a bracketed group. A number that does
// not fit its w columns is written as w asterisks.
//
// Text outputs follow the convention of fixed_text.h: a non-empty output has its
// size as declared width and comes back blank-padded to it; an empty one is
// unbounded. Failures are reported through the toolkit's error state.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <variant>

using FormatArg = std::variant<int, float, double, std::string_view>;

// Writes the values through the descriptor into `out` (exactly the record, not
// padded). Values fill the data items in turn; formatting stops at the first data
// item without a value. False on a bad descriptor, a value of the wrong kind for
// its item, or values left over when the descriptor is used up.
bool format_record(std::string_view descriptor, std::span<const FormatArg> values, std::string& out);

// Number to text through a descriptor. A bad descriptor, a number that does not
// fit, or a record longer than the text give "**********" and error 18. The real
// forms write the decimal character `cdecimal` for "." when `idecimal` is 1.
void IntegerToString(int value, std::string& text, std::string_view format);
void IRealToString(float value, std::string& text, std::string_view format);
void IDoubleToString(double value, std::string& text, std::string_view format);

// Text to number from the first word of the text; errors 4, 10, 11, 12 under the
// routine's name, the value 0 on failure.
void IStringToInteger(std::string_view text, int& value);
void IStringToReal(std::string_view text, float& value);
void istringtodouble(std::string_view text, double& value);

// Converts the first word of the text and blanks it, so that the next call reads
// the next word. No word: value 0 and error 10.
void INextInteger(std::string& text, int& value);
void INextReal(std::string& text, float& value);

// C-layer forms. Number to left-adjusted text: `yyint2st` uses I(width-1) for a
// text narrower than 12 and I11 otherwise; the real forms use `format`, or
// "(G15.5E2)" / "(G24.15E3)" when it is blank. A text's size counts its
// terminator, so it holds one character less. Failure: asterisks and error 18.
void yyint2st(int value, std::string& text, std::string_view format = {});
void yyrea2st(float value, std::string& text, std::string_view format = {});
void yydbl2st(double value, std::string& text, std::string_view format = {});

// Text (up to a zero character or its trimmed end) to number; never leaves an
// error behind: the error state and debug level are as they were on entry.
void yyst2int(int& value, std::string_view text);
void yyst2rea(float& value, std::string_view text);
void yyst2dbl(double& value, std::string_view text);
// As yyst2dbl; `valid` is 1 when the text was a number, else 0.
void yyst2dblcheck_(double& value, int& valid, std::string_view text);

// Parse the text and write the number back into it in the format (a blank format
// gives the defaults of yyint2st, yyrea2st, yydbl2st), error state kept.
void yyformi(int& value, std::string& text, std::string_view format);
void yyformr(float& value, std::string& text, std::string_view format);
void yyformd(double& value, std::string& text, std::string_view format);

// The conversion behind IStringToReal and istringtodouble. Returns the error code
// (0 for success) without raising it; `value` is 0 on failure.
int yystringtofloat(std::string_view text, bool is_double, double& value);
