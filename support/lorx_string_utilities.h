// lorx_string_utilities: text scanning of the crystallographic support library.
//
// Texts are fixed-width and blank-padded as the callers hold them: a text
// argument's length is its declared width. Outputs follow the convention of
// toolkit/base/fixed_text.h (size on entry is the width; empty means unbounded).
// Arrays are filled from their first element and never written past their end.
#pragma once

#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lorx_string_utilities {

// Module state shared by the routines that report errors.
inline bool err_string = false;
inline std::string err_string_mess;  // text 150
inline int line_nb = 0;

// Unit numbers handed out by get_logunit and not yet given back.
inline constexpr int kFirstLogunit = 7;
inline constexpr int kLogunitLimit = 500;
inline std::set<int> units_in_use;

void init_err_string();
void inc_linenum(int increment);

std::string u_case(std::string_view text);
std::string l_case(std::string_view text);
void ucase(std::string& text);
void lcase(std::string& text);

// Cuts the first blank-separated word off `text` (whose size is its width).
void cutst(std::string& text, int* rest_length = nullptr, std::string* word = nullptr,
           int* word_length = nullptr);
// All words of a text; a word in double quotes may hold blanks.
void getword(std::string_view text, std::span<std::string> words, int& count);
// All numbers of a text. `count` counts every number read, also those that no
// longer fit into the arrays, so that a caller can tell a text with too many.
// Reading stops at the first word that is no number, with err_string set.
void getnum(std::string_view text, std::span<float> reals, std::span<int> ints, int& count);
// Numbers with an optional uncertainty in brackets: 1.234(5) is 1.234 and 0.005.
void getnum_std(std::string_view text, std::span<float> values, std::span<float> sigmas, int& count);
void setnum_std(float value, float sigma, std::string& text);
std::string rformat(float value, int width);  // 40 characters, the number in the first `width`
std::string pack_string(std::string_view text);
std::string strip_string(std::string_view text, std::string_view ending);
void get_separator_pos(std::string_view text, char separator, std::span<int> positions, int& count);
void get_substring_positions(std::string_view text, std::string_view substring,
                             std::span<int> positions, int& count);
int string_count(std::string_view text, std::string_view substring);
void sstring_replace(std::string& text, std::string_view old_text, std::string_view new_text,
                     std::string& warning);
bool equal_sets_text(std::span<const std::string> a, int na, std::span<const std::string> b, int nb);
void get_basename(std::string_view path, std::string_view separator, std::string& base);
void get_dirname(std::string_view path, std::string& directory);
void get_extension(std::string_view path, std::string& extension, std::optional<bool> with_dot = {});

// Keyword scanning over arrays of lines; `first` is 1-based in and out.
void read_key_str(std::span<const std::string> lines, int& first, int last, std::string_view keyword,
                  std::string& text, std::optional<char> comment = {});
void read_key_strval(std::span<const std::string> lines, int& first, int last,
                     std::string_view keyword, std::string& text, std::span<float> reals = {},
                     std::span<int> ints = {}, int* count = nullptr,
                     std::optional<char> comment = {});
void read_key_value(std::span<const std::string> lines, int& first, int last,
                    std::string_view keyword, std::span<float> reals, std::span<int> ints,
                    int& count, std::optional<char> comment = {}, std::string* text = nullptr);
void read_key_valuestd(std::span<const std::string> lines, int& first, int last,
                       std::string_view keyword, std::span<float> values,
                       std::span<float> sigmas, int& count);

void number_lines(std::string_view filename, int& count, std::optional<std::string_view> stop = {});
void reading_lines(std::string_view filename, int count, std::vector<std::string>& lines);
// There are no numbered file units in C++: get_logunit hands out the lowest
// unit number from 7 up that is not in use and reserves it for the caller's
// own file table, -1 when all below 500 are taken. free_logunit gives it back.
void get_logunit(int& unit);
void free_logunit(int unit);

}  // namespace lorx_string_utilities
