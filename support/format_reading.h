// Format-driven field reading of lorx_string_utilities.
//
// findfmt scans a free-layout data line against a short field template and
// writes a fixed-column format text whose widths fit that very line, so that
// the line can then be read by the ordinary fixed-format reader. A malformed
// line is reported with a caret under the offending character.
//
// Template characters, either case: I integer, F real, 1 to 9 a text of at
// most that many characters, A to E a text of at most 10 to 14 characters.
#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "support/lorx_string_utilities.h"
#include "toolkit/base/fixed_text.h"

namespace lorx_string_utilities {

// Result of the last findfmt: 0 good, -1 end of file, below -1 a read fault
// (-100 minus the read status), 1 to 12 a fault of the line or the template.
inline int ierr_fmt = 0;

// Message lines of the last findfmt fault, for the caller to print.
struct FindfmtMessages {
  int nlines = 0;
  std::array<Fixed<132>, 5> txt;
};
inline FindfmtMessages mess_findfmt;

// line_nb becomes `first_line` (0 without it); the messages are emptied.
void init_findfmt(int first_line = 0);

// Builds `format` for `line` by `field_template`. With `unit` null the line
// as given is the data line; otherwise lines are read from `unit` into `line`
// until one is neither blank nor a comment ("!" or "#" first), each echoed to
// `echo` when given. A record is cut to the line's width as it arrives; an
// empty line takes the record whole. A tab that separates two numbers is
// turned into a blank in the line. `cut_comments` cuts a trailing "#" or "!" comment when the
// template ends in a numeric field. The result is in ierr_fmt.
void findfmt(std::FILE* unit, std::string& line, std::string_view field_template,
             std::string& format, std::FILE* echo = nullptr, bool cut_comments = false);

// Total number of columns spanned by a numeric format such as "(3F10.4,2X,I5)";
// 0 and err_string when the text has an item without a numeric edit letter.
void numcol_from_numfmt(std::string_view format, int& columns);

}  // namespace lorx_string_utilities
