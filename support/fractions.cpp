#include "support/fractions.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <vector>

#include "support/math_helpers.h"
#include "toolkit/base/fixed_text.h"

namespace lorx_string_utilities {

using lorx_math_general::Matrix;

namespace {

constexpr std::size_t message_width = 150;
constexpr std::string_view illegal_symbol = " The provided symbol is illegal: ";

void set_error(std::string message) {
  err_string = true;
  if (message.size() > message_width) message.resize(message_width);
  err_string_mess = std::move(message);
}

std::string without_blanks(std::string_view text) {
  std::string r;
  for (char c : text)
    if (c != ' ') r.push_back(c);
  return r;
}

std::string_view both_trimmed(std::string_view text) { return left_trimmed(trimmed(text)); }

// Iw: right-justified, all asterisks when it does not fit.
std::string fixed_integer(long value, int width) {
  std::string s = std::to_string(value);
  if (static_cast<int>(s.size()) > width) return std::string(static_cast<std::size_t>(width), '*');
  return std::string(static_cast<std::size_t>(width) - s.size(), ' ') + s;
}

// Fw.d: the leading zero goes first when room is short, then asterisks.
std::string fixed_real(float value, int width, int decimals) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.*f", decimals, static_cast<double>(value));
  std::string s = buf;
  if (static_cast<int>(s.size()) > width) {
    const std::size_t zero = s[0] == '-' ? 1 : 0;
    if (s.size() > zero + 1 && s[zero] == '0' && s[zero + 1] == '.') s.erase(zero, 1);
  }
  if (static_cast<int>(s.size()) > width) return std::string(static_cast<std::size_t>(width), '*');
  return std::string(static_cast<std::size_t>(width) - s.size(), ' ') + s;
}

// The first blank- or comma-separated item of a free-format record, if any.
std::string_view first_item(std::string_view text) {
  const std::size_t start = text.find_first_not_of(' ');
  if (start == std::string_view::npos) return {};
  text.remove_prefix(start);
  return text.substr(0, text.find_first_of(" ,"));
}

// Free-format reading of one real: digits with optional sign, point and exponent.
bool read_real(std::string_view text, float& value) {
  std::string token(first_item(text));
  if (!token.empty() && token[0] == '+') token.erase(0, 1);
  if (token.empty()) return false;
  std::size_t i = token[0] == '-' ? 1 : 0;
  bool digits = false;
  while (i < token.size() && std::isdigit(static_cast<unsigned char>(token[i]))) ++i, digits = true;
  if (i < token.size() && token[i] == '.') ++i;
  while (i < token.size() && std::isdigit(static_cast<unsigned char>(token[i]))) ++i, digits = true;
  if (!digits) return false;
  if (i < token.size()) {
    char& e = token[i];
    if (e != 'e' && e != 'E' && e != 'd' && e != 'D') return false;
    e = 'e';
    ++i;
    if (i < token.size() && token[i] == '+') token.erase(i, 1);
    else if (i < token.size() && token[i] == '-') ++i;
    const std::size_t exp_start = i;
    while (i < token.size() && std::isdigit(static_cast<unsigned char>(token[i]))) ++i;
    if (i == exp_start || i != token.size()) return false;
  }
  float v = 0.0f;
  const auto r = std::from_chars(token.data(), token.data() + token.size(), v);
  if (r.ec == std::errc::result_out_of_range) return false;
  value = v;
  return r.ptr == token.data() + token.size();
}

// Free-format reading of one integer.
bool read_integer(std::string_view text, long& value) {
  std::string_view token = first_item(text);
  if (!token.empty() && token[0] == '+') token.remove_prefix(1);
  const auto r = std::from_chars(token.data(), token.data() + token.size(), value);
  return !token.empty() && r.ec == std::errc{} && r.ptr == token.data() + token.size();
}

struct FractionStyle {
  int limit;
  int positive_integer_width, other_integer_width;
  int positive_width, positive_decimals;
  int negative_width, negative_decimals;
};

constexpr FractionStyle one_digit{9, 2, 3, 7, 3, 8, 4};
constexpr FractionStyle two_digits{24, 3, 4, 9, 4, 10, 4};

std::string fraction_text(float value, const FractionStyle& style) {
  if (lorx_math_general::zbelongn(value)) {
    // Beyond any column count the value only needs to be too wide.
    const long n = std::abs(value) < 1.0E9f ? std::lround(value) : (value > 0.0f ? 1000000000L : -1000000000L);
    return without_blanks(n > 0 ? "+" + fixed_integer(n, style.positive_integer_width)
                                : fixed_integer(n, style.other_integer_width));
  }
  const float magnitude = std::abs(value);
  // Smallest numerator first, so that 0.5 is 1/2 and never 2/4.
  for (int n = 1; n <= style.limit; ++n) {
    for (int d = 2; d <= style.limit; ++d) {
      if (lorx_math_general::negligibler(static_cast<float>(n) / static_cast<float>(d) - magnitude)) {
        return (value < 0.0f ? "-" : "+") + std::to_string(n) + "/" + std::to_string(d);
      }
    }
  }
  return without_blanks(value > 0.0f
                            ? "+" + fixed_real(value, style.positive_width, style.positive_decimals)
                            : fixed_real(value, style.negative_width, style.negative_decimals));
}

std::string frac_trans(std::span<const float, 3> v, const FractionStyle& style, std::size_t field) {
  std::string r = "(";
  for (std::size_t i = 0; i < 3; ++i) {
    std::string f = padded(fraction_text(v[i], style), field);
    const std::size_t plus = f.find('+');
    if (plus != std::string::npos) f[plus] = ' ';
    r += f;
    r += i < 2 ? ',' : ')';
  }
  return without_blanks(r);
}

void replace_first(std::string& text, std::string_view what, std::string_view with) {
  const std::size_t at = text.find(what);
  if (at != std::string::npos) text.replace(at, what.size(), with);
}

}  // namespace

void get_fraction_1dig(float value, std::string& text) { assign_out(text, fraction_text(value, one_digit)); }
void get_fraction_2dig(float value, std::string& text) { assign_out(text, fraction_text(value, two_digits)); }

std::string frac_trans_1dig(std::span<const float, 3> v) { return frac_trans(v, one_digit, 8); }
std::string frac_trans_2dig(std::span<const float, 3> v) { return frac_trans(v, two_digits, 10); }

void read_fract(std::string_view text, float& value) {
  const std::string_view t = both_trimmed(text);
  if (t.empty() || t == "+") {
    value = 1.0f;
    return;
  }
  if (t == "-") {
    value = -1.0f;
    return;
  }
  auto fail = [&](std::string_view part) {
    value = 0.0f;
    set_error(std::string(illegal_symbol) + std::string(part));
  };
  const std::size_t slash = t.find('/');
  float a = 0.0f;
  if (slash == std::string_view::npos) {
    if (!read_real(t, a)) return fail(t);
    value = a;
    return;
  }
  float b = 0.0f;
  const std::string_view numerator = t.substr(0, slash);
  const std::string_view denominator = t.substr(slash + 1);
  if (!read_real(numerator, a)) return fail(numerator);
  if (!read_real(denominator, b)) return fail(denominator);
  value = a / b;
}

void get_num_string(std::string_view text, std::span<float, 3> v, std::string_view code) {
  std::fill(v.begin(), v.end(), 0.0f);
  std::array<int, 3> plus{}, minus{};
  int nplus = 0, nminus = 0;
  get_separator_pos(text, '+', plus, nplus);
  get_separator_pos(text, '-', minus, nminus);
  if (nplus + nminus > 3) return;

  std::vector<int> cuts(plus.begin(), plus.begin() + nplus);
  cuts.insert(cuts.end(), minus.begin(), minus.begin() + nminus);
  std::sort(cuts.begin(), cuts.end());
  const bool leading_sign = !cuts.empty() && cuts.front() == 1;
  if (!leading_sign && cuts.size() == 3) cuts.pop_back();  // at most three terms
  if (!leading_sign) cuts.insert(cuts.begin(), 0);         // a term without a sign in front

  const std::string_view body = trimmed(text);
  std::vector<std::string> terms;
  for (std::size_t k = 0; k < cuts.size(); ++k) {
    std::size_t from = static_cast<std::size_t>(cuts[k]);  // 1-based sign position, 0: none
    const std::size_t to = k + 1 < cuts.size() ? static_cast<std::size_t>(cuts[k + 1]) - 1 : body.size();
    if (from > 0 && body[from - 1] == '-') --from;  // the minus belongs to its term
    if (from >= to) {
      terms.emplace_back();
      continue;
    }
    terms.push_back(without_blanks(body.substr(from, to - from)));
  }

  std::array<bool, 3> used{};
  for (std::string& term : terms) {
    std::size_t at = std::string::npos;
    std::size_t j = 0;
    for (; j < 3 && j < code.size(); ++j) {
      at = term.find(code[j]);
      if (at != std::string::npos) break;
    }
    if (at == std::string::npos) continue;  // a constant: not part of the matrix
    if (used[j]) {
      set_error(std::string(illegal_symbol) + std::string(trimmed(text)));
      return;
    }
    used[j] = true;
    const bool alone = term.size() == 1;
    const bool unit_fraction =
        (at == 0 || term[at - 1] == '-') && at + 1 < term.size() && term[at + 1] == '/';
    term[at] = alone || unit_fraction ? '1' : ' ';
    read_fract(without_blanks(term), v[j]);
  }
}

void get_mat_from_symb(std::string_view text, Matrix<float>& matrix, std::string_view code) {
  init_err_string();
  matrix = Matrix<float>(3, 3);
  const std::string_view t = trimmed(text);
  const std::size_t first = t.find(',');
  const std::size_t last = t.rfind(',');
  std::array<std::string, 3> items;
  items[0] = without_blanks(t.substr(0, first));
  if (first != std::string_view::npos) {
    if (last > first) items[1] = without_blanks(t.substr(first + 1, last - first - 1));
    items[2] = without_blanks(t.substr(last + 1));
  }
  for (int i = 0; i < 3; ++i) {
    std::array<float, 3> row{};
    get_num_string(items[static_cast<std::size_t>(i)], row, code);
    for (int j = 0; j < 3; ++j) matrix(i, j) = row[static_cast<std::size_t>(j)];
  }
}

void get_symb_from_mat(const Matrix<float>& matrix, std::string& text, std::string_view code) {
  auto element = [&](int i, int j) {
    return i < matrix.rows() && j < matrix.cols() ? matrix(i, j) : 0.0f;
  };
  std::string all;
  for (int i = 0; i < 3; ++i) {
    const std::array<float, 3> row{element(i, 0), element(i, 1), element(i, 2)};
    std::string s = frac_trans_2dig(row);
    s = s.substr(1, s.size() - 2);
    std::array<std::string, 3> piece;
    const std::size_t c1 = s.find(',');
    const std::size_t c2 = s.find(',', c1 + 1);
    piece[0] = s.substr(0, c1);
    piece[1] = s.substr(c1 + 1, c2 - c1 - 1);
    piece[2] = s.substr(c2 + 1);
    // Room for the letter in front of the sign that joins the next term.
    if (row[1] >= 0.0f) piece[0] += "  +";
    if (row[2] >= 0.0f) piece[1] += "  +";
    for (std::size_t k = 0; k < 3; ++k) {
      std::string& p = piece[k];
      if (p == "0" || p == "0  +") {
        p.clear();
        continue;
      }
      const char letter = k < code.size() ? code[k] : ' ';
      const std::size_t slash = p.find('/');
      long n = 0;
      if (slash == std::string::npos) {
        if (read_integer(p, n) && (n == 1 || n == -1)) {
          p[p.find('1')] = letter;
        } else if (const std::size_t sign = p.find('+'); sign != std::string::npos) {
          p.insert(sign, 1, letter);
        } else {
          p.push_back(letter);
        }
      } else if (slash > 0 && p[slash - 1] == '1' && read_integer(p.substr(0, slash), n) &&
                 (n == 1 || n == -1)) {
        p[slash - 1] = letter;
      } else {
        p.insert(slash, 1, letter);
      }
    }
    std::string joined = without_blanks(piece[0] + piece[1] + piece[2]);
    if (!joined.empty() && joined.back() == '+') joined.pop_back();
    if (i > 0) all += ',';
    all += joined;
  }
  all = without_blanks(all);
  replace_first(all, "+-", "-");
  replace_first(all, "-+", "-");
  assign_out(text, without_blanks(all));
}

void get_transf(std::string_view text, Matrix<float>& matrix, std::span<float, 3> origin,
                std::string_view code) {
  init_err_string();
  matrix = Matrix<float>(3, 3);
  std::fill(origin.begin(), origin.end(), 0.0f);
  const std::string_view letters = code.substr(0, std::min<std::size_t>(3, code.size()));
  const char separator = code.size() > 3 ? code[3] : ';';

  std::string copy(text);
  if (const std::size_t open = copy.find('('); open != std::string::npos) copy[open] = ' ';
  if (const std::size_t close = copy.find(')'); close != std::string::npos) copy[close] = ' ';
  copy = l_case(both_trimmed(copy));

  const std::size_t sep = copy.find(separator);
  if (sep == std::string::npos) {
    set_error(" No appropriate separator (" + std::string(1, separator) +
              ") is present in the input string:" + std::string(trimmed(text)));
    return;
  }
  const std::string before = copy.substr(0, sep);
  const std::string after = copy.substr(sep + 1);
  const bool matrix_first = !letters.empty() && before.find(letters[0]) != std::string::npos;
  const std::string& matrix_part = matrix_first ? before : after;
  const std::string origin_part(both_trimmed(matrix_first ? after : before));

  get_mat_from_symb(matrix_part, matrix, letters);
  if (err_string) {
    set_error(" Bad matrix setting...: " + err_string_mess);
    return;
  }
  if (std::count(origin_part.begin(), origin_part.end(), ',') != 2) {
    set_error(" Bad origin setting...: " + origin_part);
    return;
  }
  const std::size_t c1 = origin_part.find(',');
  const std::size_t c2 = origin_part.find(',', c1 + 1);
  const std::array<std::string, 3> pieces{origin_part.substr(0, c1),
                                          origin_part.substr(c1 + 1, c2 - c1 - 1),
                                          origin_part.substr(c2 + 1)};
  for (std::size_t i = 0; i < 3; ++i) {
    read_fract(pieces[i], origin[i]);
    if (err_string) {
      set_error(" Bad origing setting...: " + err_string_mess + " :: " + origin_part);
      return;
    }
  }
}

}  // namespace lorx_string_utilities
