#include "support/format_reading.h"

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <limits>

namespace lorx_string_utilities {

namespace {

constexpr int code_integer = -1;
constexpr int code_real = -2;
constexpr int code_text_base = 48;  // a text field's code is this plus its width

bool is_exponent_letter(char c) { return c == 'E' || c == 'e' || c == 'D' || c == 'd'; }
bool is_sign(char c) { return c == '+' || c == '-'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_gap(char c) { return c == ' ' || c == '\t'; }

// An integer right-justified in at least `width` columns.
std::string right_justified(long long value, std::size_t width) {
  std::string s = std::to_string(value);
  if (s.size() < width) s.insert(0, width - s.size(), ' ');
  return s;
}

std::string upper(std::string_view text) {
  std::string r(text);
  for (char& c : r)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return r;
}

void add_message(std::string_view text) {
  if (mess_findfmt.nlines >= static_cast<int>(mess_findfmt.txt.size())) return;
  mess_findfmt.txt[static_cast<std::size_t>(mess_findfmt.nlines++)] = text;
}

std::string fault_message(int code) {
  static constexpr const char* table[] = {
      "FindFMT: no error",
      "FindFMT: empty format descriptor (0 field) !",
      "FindFMT: data string, read error !",
      "FindFMT: integer field found real !",
      "FindFMT: begged dot, sign or 'e' character !",
      "FindFMT: invalid character in an integer field !",
      "FindFMT: invalid field in format descriptor !",
      "FindFMT: invalid character in a numeric field !",
      "FindFMT: 0 character in current field !",
      "FindFMT: format string length exceeded !",
      "FindFMT: separator missing !",
      "FindFMT: incomplete E or D format !",
      "FindFMT: incomplete number !"};
  if (code == -1) return "FindFMT: End of file !";
  if (code < -1) return "FindFMT: data line, system read error nber:" + right_justified(-100 - code, 2);
  if (code > 12) return "FMT decode error number:" + right_justified(code, 2);
  return table[code];
}

// The message lines for the fault in ierr_fmt, with a caret under `position`.
void findfmt_err(std::string_view line, int position) {
  if (ierr_fmt == 0 || ierr_fmt == -1) return;
  mess_findfmt = FindfmtMessages{};
  add_message(" " + fault_message(ierr_fmt));
  const std::size_t length = std::max<std::size_t>(trimmed(line).size(), 1);
  const std::string_view shown = line.substr(0, std::min(length, line.size()));
  const bool quoted = length < 130;
  if (quoted) add_message(" '" + std::string(shown) + "'");
  else add_message(" " + std::string(shown));
  if (position < 1) return;
  if (!quoted) add_message(" " + std::string(static_cast<std::size_t>(position - 1), '-') + "^");
  else if (position == 1) add_message("   ^----");
  else add_message(" " + std::string(static_cast<std::size_t>(position), '-') + "^");
}

void report(std::string_view line, int position) {
  findfmt_err(line, position);
  add_message(" => Please check your input file at line: " + right_justified(line_nb, 6) + " !");
}

// Next field code of the template; 0 past its end. Returns a fault code.
int sgetftmfield(std::string_view tpl, int& position, int& code) {
  ++position;
  code = 0;
  if (position > static_cast<int>(trimmed(tpl).size())) return 0;
  const char c = tpl[static_cast<std::size_t>(position - 1)];
  if (c == 'I') code = code_integer;
  else if (c == 'F') code = code_real;
  else if (c >= '1' && c <= '9') code = c;
  else if (c >= 'A' && c <= 'E') code = code_text_base + 10 + (c - 'A');
  else return 6;
  return 0;
}

// Scans one number from behind `position`. On return `position` is on the
// number's last character (or on the fault), `count` the columns taken.
int treatnumerfield(int code, std::string& line, int length, int& position, int& count) {
  const bool real = code == code_real;
  const int start = position + 1;
  auto at = [&](int k) -> char& { return line[static_cast<std::size_t>(k - 1)]; };
  auto end_before = [&](int k) {
    position = k - 1;
    count = k - start;
    return 0;
  };
  auto fault = [&](int k, int f) {
    position = k;
    count = k - start;
    return f;
  };
  count = 0;

  bool sign = false;
  int k = start;
  for (;; ++k) {
    if (k > length) return end_before(length + 1);
    char& c = at(k);
    if (c == '\t') {
      if (k == start && k > 1) {
        c = ' ';  // the tab was this field's separator
        continue;
      }
      return sign ? fault(k, 12) : end_before(k);
    }
    if (is_sign(c)) {
      sign = true;
      continue;
    }
    if (c == ' ') {
      if (sign) return fault(k, 12);
      continue;
    }
    break;
  }

  char previous = at(k);
  if (start > 1 && k == start) return fault(k, 10);
  bool dot = false;
  if (previous == '.') {
    if (!real) return fault(k, 3);
    dot = true;
  } else if (is_exponent_letter(previous)) {
    return fault(k, real ? 11 : 5);
  } else if (!is_digit(previous)) {
    return fault(k, 7);
  }

  for (++k;; ++k) {
    if (k > length) return end_before(length + 1);
    const char c = at(k);
    if (c == '.') {
      if (dot) return fault(k, 4);
      if (!real) return fault(k, 3);
      dot = true;
    } else if (is_gap(c)) {
      if (is_sign(previous)) return fault(k, 12);
      return end_before(k);
    } else if (is_sign(c)) {
      if (is_sign(previous)) return fault(k, 4);
      // Any other sign starts the next field: "1.5-2.5" is two numbers.
      if (!(real && is_exponent_letter(previous))) return end_before(k);
    } else if (is_exponent_letter(c)) {
      if (is_sign(previous)) return fault(k, 11);
      if (previous == c) return fault(k, 4);
    } else if (!is_digit(c)) {
      return fault(k, 7);
    }
    previous = c;
  }
}

// Takes one text field from behind `position`; `code` comes back as 48 plus
// the characters taken, `blanks` as the blanks in front of them.
int treatmcharfield(int& code, std::string& line, int length, int& position, int& blanks) {
  auto at = [&](int k) { return line[static_cast<std::size_t>(k - 1)]; };
  blanks = 0;
  if (position >= length) return 0;
  if (position > 1) {
    ++position;
    if (!is_gap(at(position))) return 10;
    blanks = 1;
  }
  while (position < length && at(position + 1) == ' ') {
    ++position;
    ++blanks;
  }
  if (position >= length) return 0;
  const int width = code - code_text_base;
  int taken = 0;
  while (position < length && taken < width && !is_gap(at(position + 1))) {
    ++position;
    ++taken;
  }
  if (taken == 0) {
    ++position;  // on the tab that stands where the text should start
    return 8;
  }
  code = code_text_base + taken;
  return 0;
}

// Appends one field to the format text; 9 when that would pass its width.
int buildfmt(int code, int count, int& format_position, std::string& format, std::size_t width) {
  std::string item;
  if (code == code_integer) {
    item = "i" + std::to_string(count);
  } else if (code == code_real) {
    item = "f" + std::to_string(count) + ".0";
  } else {
    const std::string a = "a" + std::to_string(code - code_text_base);
    item = count > 0 ? "tr" + std::to_string(count) + "," + a : a;
  }
  item += ',';
  for (char c : item) {
    const auto next = static_cast<std::size_t>(format_position) + 1;
    if (next > width) return 9;
    if (next <= format.size()) format[next - 1] = c;
    else format.push_back(c);
    ++format_position;
  }
  return 0;
}

// One record from `unit`: 0, EOF at its end, or the read status of a fault.
int read_record(std::FILE* unit, std::string& record) {
  record.clear();
  errno = 0;
  int c;
  while ((c = std::fgetc(unit)) != EOF && c != '\n') record.push_back(static_cast<char>(c));
  if (c == EOF) {
    if (std::ferror(unit)) {
      std::clearerr(unit);
      return errno > 0 ? errno : 1;
    }
    if (record.empty()) return EOF;
  }
  return 0;
}

void left_adjust(std::string& text) {
  const std::size_t width = text.size();
  text = padded(left_trimmed(text), width);
}

void cut_comment(std::string& line, char mark) {
  const std::size_t at = line.find(mark);
  if (at != std::string::npos && at > 0) std::fill(line.begin() + static_cast<std::ptrdiff_t>(at), line.end(), ' ');
}

}  // namespace

void init_findfmt(int first_line) {
  line_nb = first_line;
  mess_findfmt = FindfmtMessages{};
}

void findfmt(std::FILE* unit, std::string& line, std::string_view field_template,
             std::string& format, std::FILE* echo, bool cut_comments) {
  const std::size_t width =
      format.empty() ? std::numeric_limits<std::size_t>::max() : format.size();
  std::string fmt = "()";
  int format_position = 1;
  ierr_fmt = 0;
  ++line_nb;
  const std::string tpl = upper(field_template);
  const std::string_view tpl_used = trimmed(tpl);

  auto done = [&] { assign_out(format, fmt); };
  auto fail = [&](int code, int position) {
    ierr_fmt = code;
    report(line, position);
    done();
  };

  if (tpl_used.empty()) return fail(1, 0);

  int length = 0;
  if (unit == nullptr) {
    length = static_cast<int>(trimmed(line).size());
  } else {
    for (;;) {
      std::string record;
      const int status = read_record(unit, record);
      if (status == EOF) {
        add_message(" => Non FATAL End of file !,  logical unit: " + right_justified(fileno(unit), 4));
        ierr_fmt = -1;
        return done();
      }
      if (status > 0) return fail(-100 - status, 0);
      assign_out(line, record);
      left_adjust(line);
      const char last = tpl_used.back();
      if (cut_comments && (last == 'F' || last == 'I')) {
        cut_comment(line, '#');
        cut_comment(line, '!');
      }
      const std::string_view data = trimmed(line);
      length = static_cast<int>(data.size());
      if (echo) std::fprintf(echo, "%.*s\n", length, data.data());
      if (length == 0 || data.front() == '!' || data.front() == '#') {
        ++line_nb;
        continue;
      }
      break;
    }
  }

  int line_position = 0;
  int tpl_position = 0;
  for (;;) {
    int code = 0;
    if (int f = sgetftmfield(tpl, tpl_position, code)) return fail(f, line_position);
    if (code == 0) break;
    int count = 0;
    const int f = code < 0 ? treatnumerfield(code, line, length, line_position, count)
                           : treatmcharfield(code, line, length, line_position, count);
    if (f) return fail(f, line_position);
    if ((code < 0 ? count : code) == 0) {
      ierr_fmt = 8;  // nothing to read here at all: no message, the format left open
      return done();
    }
    if (int g = buildfmt(code, count, format_position, fmt, width)) return fail(g, line_position);
    if (line_position >= length) break;
  }
  // Fields that the line does not reach read blank, one column each.
  for (;;) {
    int code = 0;
    if (int f = sgetftmfield(tpl, tpl_position, code)) return fail(f, line_position);
    if (code == 0) break;
    if (int g = buildfmt(code, 1, format_position, fmt, width)) return fail(g, line_position);
  }
  fmt[static_cast<std::size_t>(format_position - 1)] = ')';
  done();
}

void numcol_from_numfmt(std::string_view format, int& columns) {
  columns = 0;
  std::string text;
  for (char c : upper(left_trimmed(format)))
    if (c != ' ') text.push_back(c);
  if (!text.empty()) text.erase(0, 1);  // the opening parenthesis
  if (!text.empty()) text.pop_back();   // the closing one

  // Free-format integers: blank-separated, each with an optional sign.
  auto read_ints = [](std::string_view s, int* values, int wanted) {
    std::size_t i = 0;
    for (int k = 0; k < wanted; ++k) {
      while (i < s.size() && s[i] == ' ') ++i;
      std::size_t j = i;
      while (j < s.size() && s[j] != ' ') ++j;
      std::string_view token = s.substr(i, j - i);
      if (!token.empty() && token[0] == '+') token.remove_prefix(1);
      const auto r = std::from_chars(token.data(), token.data() + token.size(), values[k]);
      if (token.empty() || r.ec != std::errc{} || r.ptr != token.data() + token.size()) return false;
      i = j;
    }
    return true;
  };

  long long total = 0;
  std::size_t begin = 0;
  for (;;) {
    const std::size_t comma = text.find(',', begin);
    std::string item = text.substr(begin, comma == std::string::npos ? std::string::npos : comma - begin);
    item = item.substr(0, 10);
    item = item.substr(0, item.find('.'));
    const std::size_t letter = item.find_first_of("FIGEX");
    if (letter == std::string::npos) {
      total = 0;
      break;
    }
    const bool skip = item[letter] == 'X';
    item[letter] = ' ';
    int values[2] = {0, 0};
    if (letter == 0 || skip) {
      if (read_ints(item, values, 1)) total += values[0];
    } else if (read_ints(item, values, 2)) {
      total += static_cast<long long>(values[0]) * values[1];
    }
    if (comma == std::string::npos) break;
    begin = comma + 1;
  }
  columns = static_cast<int>(total);
  if (columns == 0) {
    err_string = true;
    err_string_mess = "Illegal format string passed to subroutine:  NumCol_from_NumFmt";
  }
}

}  // namespace lorx_string_utilities
