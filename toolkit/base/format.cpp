#include "toolkit/base/format.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/text.h"

namespace {

// ---------------------------------------------------------------------------
// Descriptor parsing

enum class Kind { Int, Fixed, Exp, General, Text, Skip, Literal };

struct Item {
  Kind kind = Kind::Skip;
  int w = 0;   // width; 0 for A without width
  int d = 0;   // decimals, or minimum digits of Iw.m (-1: none)
  int e = 0;   // exponent digits of Ew.dEe / Gw.dEe, 0: the default form
  std::string literal;
};

// Guards against descriptors that would expand without bound.
constexpr int kMaxNumber = 1000;
constexpr std::size_t kMaxItems = 10000;

char upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

class DescriptorParser {
 public:
  explicit DescriptorParser(std::string_view s) {
    // Blanks outside quotes carry no meaning.
    char quote = 0;
    for (char c : s) {
      if (quote) {
        text_ += c;
        if (c == quote) quote = 0;
      } else if (c == '\'' || c == '"') {
        quote = c;
        text_ += c;
      } else if (c != ' ' && c != '\t' && c != '\0') {
        text_ += upper(c);
      }
    }
  }

  bool parse(std::vector<Item>& items) {
    if (text_.empty()) return false;
    if (!list(items, /*bracketed=*/false)) return false;
    return pos_ == text_.size();
  }

 private:
  bool at_end() const { return pos_ >= text_.size(); }
  char peek() const { return at_end() ? '\0' : text_[pos_]; }

  bool number(int& n) {
    if (!is_digit(peek())) return false;
    n = 0;
    while (is_digit(peek())) {
      n = n * 10 + (text_[pos_++] - '0');
      if (n > kMaxNumber) return false;
    }
    return true;
  }

  // A comma-separated list up to ")" (bracketed) or the end.
  bool list(std::vector<Item>& items, bool bracketed) {
    for (;;) {
      if (!element(items)) return false;
      if (items.size() > kMaxItems) return false;
      if (peek() == ',') {
        ++pos_;
        continue;
      }
      if (bracketed) {
        if (peek() != ')') return false;
        ++pos_;
        return true;
      }
      return at_end();
    }
  }

  bool element(std::vector<Item>& items) {
    int repeat = 1;
    const bool counted = number(repeat);
    if (counted && repeat == 0) return false;
    const char c = peek();
    if (c == '(') {
      ++pos_;
      std::vector<Item> group;
      if (!list(group, /*bracketed=*/true)) return false;
      for (int i = 0; i < repeat; ++i) {
        items.insert(items.end(), group.begin(), group.end());
        if (items.size() > kMaxItems) return false;
      }
      return true;
    }
    if (c == '\'' || c == '"') {
      if (counted) return false;
      return literal(items, c);
    }
    if (at_end()) return false;
    ++pos_;
    Item item;
    switch (c) {
      case 'X':  // nX is n blanks, not n repeats of an item
        item.w = repeat;
        items.push_back(item);
        return true;
      case 'I':
        item.kind = Kind::Int;
        item.d = -1;
        if (!number(item.w) || item.w == 0) return false;
        if (peek() == '.') {
          ++pos_;
          if (!number(item.d)) return false;
        }
        break;
      case 'F':
      case 'E':
      case 'G':
        item.kind = c == 'F' ? Kind::Fixed : c == 'E' ? Kind::Exp : Kind::General;
        if (!number(item.w) || item.w == 0) return false;
        if (peek() != '.') return false;
        ++pos_;
        if (!number(item.d)) return false;
        if (item.kind != Kind::Fixed && item.d == 0) return false;
        if (item.kind != Kind::Fixed && peek() == 'E') {
          ++pos_;
          if (!number(item.e) || item.e == 0) return false;
        }
        break;
      case 'A':
        item.kind = Kind::Text;
        if (is_digit(peek()) && (!number(item.w) || item.w == 0)) return false;
        break;
      default:
        return false;
    }
    items.insert(items.end(), static_cast<std::size_t>(repeat), item);
    return true;
  }

  // A quoted text; a doubled quote stands for one.
  bool literal(std::vector<Item>& items, char quote) {
    ++pos_;
    Item item;
    item.kind = Kind::Literal;
    for (;;) {
      if (at_end()) return false;
      const char c = text_[pos_++];
      if (c == quote) {
        if (peek() != quote) break;
        ++pos_;
      }
      item.literal += c;
    }
    items.push_back(std::move(item));
    return true;
  }

  std::string text_;
  std::size_t pos_ = 0;
};

// ---------------------------------------------------------------------------
// Items

std::string stars(int w) { return std::string(static_cast<std::size_t>(w), '*'); }

std::string right(std::string s, int w) {
  if (static_cast<int>(s.size()) > w) return stars(w);
  return std::string(static_cast<std::size_t>(w) - s.size(), ' ') + s;
}

// Drops the zero of "0." or "-0." when that is what it takes to fit.
void drop_leading_zero(std::string& s, int w) {
  if (static_cast<int>(s.size()) <= w) return;
  const std::size_t z = (!s.empty() && s[0] == '-') ? 1 : 0;
  if (s.size() > z + 1 && s[z] == '0' && s[z + 1] == '.') s.erase(z, 1);
}

std::string not_finite(double v, int w) {
  if (std::isnan(v)) return right("NaN", w);
  return right(v < 0 ? "-Inf" : "Inf", w);
}

std::string format_int(long long v, int w, int m) {
  if (m == 0 && v == 0) return std::string(static_cast<std::size_t>(w), ' ');
  const unsigned long long mag = v < 0 ? 0ULL - static_cast<unsigned long long>(v) : static_cast<unsigned long long>(v);
  std::string digits = std::to_string(mag);
  if (m > 0 && static_cast<int>(digits.size()) < m) digits.insert(0, static_cast<std::size_t>(m) - digits.size(), '0');
  if (v < 0) digits.insert(0, 1, '-');
  return right(std::move(digits), w);
}

// Fixed point text of v with d decimals, correctly rounded.
std::string fixed_text(double v, int d) {
  std::string buf(static_cast<std::size_t>(330 + d), '\0');
  auto res = std::to_chars(buf.data(), buf.data() + buf.size(), v, std::chars_format::fixed, d);
  buf.resize(static_cast<std::size_t>(res.ptr - buf.data()));
  if (d == 0) buf += '.';
  return buf;
}

std::string format_fixed(double v, int w, int d) {
  if (!std::isfinite(v)) return not_finite(v, w);
  std::string s = fixed_text(v, d);
  if (d > 0) drop_leading_zero(s, w);
  return right(std::move(s), w);
}

// The d significant digits of v, correctly rounded, and the decimal exponent X
// of the rounded value d.ddd x 10^X. Zero gives zeros and X = 0.
void significant(double v, int d, std::string& digits, int& x) {
  digits.assign(static_cast<std::size_t>(d), '0');
  x = 0;
  if (v == 0) return;
  std::string buf(static_cast<std::size_t>(d + 32), '\0');
  auto res = std::to_chars(buf.data(), buf.data() + buf.size(), std::fabs(v), std::chars_format::scientific, d - 1);
  std::string_view s(buf.data(), static_cast<std::size_t>(res.ptr - buf.data()));
  const auto epos = s.find('e');
  std::size_t k = 0;
  for (char c : s.substr(0, epos))
    if (is_digit(c) && k < digits.size()) digits[k++] = c;
  std::string_view ex = s.substr(epos + 1);
  if (!ex.empty() && ex[0] == '+') ex.remove_prefix(1);
  std::from_chars(ex.data(), ex.data() + ex.size(), x);
}

std::string format_exp(double v, int w, int d, int e) {
  if (!std::isfinite(v)) return not_finite(v, w);
  std::string digits;
  int x = 0;
  significant(v, d, digits, x);
  const int ex = v == 0 ? 0 : x + 1;  // 0.ddd form
  const int mag = ex < 0 ? -ex : ex;
  std::string exp_digits = std::to_string(mag);
  std::string exponent;
  const char sign = ex < 0 ? '-' : '+';
  if (e == 0) {
    if (mag <= 99) exponent = std::string("E") + sign + (mag < 10 ? "0" : "") + exp_digits;
    else if (mag <= 999) exponent = std::string(1, sign) + exp_digits;  // no room for the letter
    else return stars(w);
  } else {
    if (static_cast<int>(exp_digits.size()) > e) return stars(w);
    exponent = std::string("E") + sign + std::string(static_cast<std::size_t>(e) - exp_digits.size(), '0') + exp_digits;
  }
  std::string s = std::signbit(v) ? "-0." : "0.";
  s += digits + exponent;
  drop_leading_zero(s, w);
  return right(std::move(s), w);
}

std::string format_general(double v, int w, int d, int e) {
  if (!std::isfinite(v)) return not_finite(v, w);
  const int n = e > 0 ? e + 2 : 4;
  int decimals = d - 1;
  bool fixed = v == 0;
  if (!fixed) {
    // The choice follows the value as rounded to d digits: 9999.6 in G12.4 is
    // 0.1000E+05, not 10000.
    std::string digits;
    int x = 0;
    significant(v, d, digits, x);
    const int k = x + 1;
    fixed = k >= 0 && k <= d;
    decimals = d - k;
  }
  if (!fixed) return format_exp(v, w, d, e);
  if (w - n < 1) return stars(w);
  std::string f = format_fixed(v, w - n, decimals);
  if (f.find('*') != std::string::npos) return stars(w);
  return f + std::string(static_cast<std::size_t>(n), ' ');
}

std::string format_text(std::string_view s, int w) {
  if (w == 0) return std::string(s);
  if (static_cast<int>(s.size()) >= w) return std::string(s.substr(0, static_cast<std::size_t>(w)));
  return std::string(static_cast<std::size_t>(w) - s.size(), ' ') + std::string(s);
}

bool format_item(const Item& item, const FormatArg& value, std::string& out) {
  if (const auto* s = std::get_if<std::string_view>(&value)) {
    if (item.kind != Kind::Text) return false;
    out += format_text(*s, item.w);
    return true;
  }
  if (const auto* i = std::get_if<int>(&value)) {
    if (item.kind != Kind::Int && item.kind != Kind::General) return false;
    out += format_int(*i, item.w, item.kind == Kind::Int ? item.d : -1);
    return true;
  }
  const double v = std::holds_alternative<float>(value) ? static_cast<double>(std::get<float>(value)) : std::get<double>(value);
  switch (item.kind) {
    case Kind::Fixed: out += format_fixed(v, item.w, item.d); return true;
    case Kind::Exp: out += format_exp(v, item.w, item.d, item.e); return true;
    case Kind::General: out += format_general(v, item.w, item.d, item.e); return true;
    default: return false;
  }
}

bool descriptor_has_star(std::string_view format) { return format.find('*') != std::string_view::npos; }

// One number through a descriptor into a text of the convention of fixed_text.h.
// Fails on a bad descriptor, a number that did not fit, or a record wider than
// the text.
bool number_to_text(const FormatArg& value, std::string_view format, std::string& record, std::size_t width) {
  const FormatArg args[] = {value};
  if (!format_record(format, args, record)) return false;
  if (record.find('*') != std::string::npos && !descriptor_has_star(format)) return false;
  return width == 0 || record.size() <= width;
}

void put_decimal(std::string& s) {
  if (zelvy_data::data().idecimal != 1) return;
  for (char& c : s)
    if (c == '.') c = zelvy_data::data().cdecimal;
}

void write_number(const FormatArg& value, std::string& text, std::string_view format, std::string_view routine, bool real) {
  std::string record;
  if (!number_to_text(value, format, record, text.size())) {
    assign_out(text, "**********");
    yyerror(18, routine);
    return;
  }
  if (real) put_decimal(record);
  assign_out(text, record);
}

// ---------------------------------------------------------------------------
// Text to number

std::string_view first_word(std::string_view text) {
  int first = 0, last = 0;
  ilocatestring(text, first, last);
  if (first == 0) return {};
  return text.substr(static_cast<std::size_t>(first - 1), static_cast<std::size_t>(last - first + 1));
}

int string_to_integer(std::string_view text, int& value) {
  value = 0;
  std::string_view w = first_word(text);
  if (w.empty()) return 10;
  const bool negative = w[0] == '-';
  if (w[0] == '-' || w[0] == '+') w.remove_prefix(1);
  for (char c : w)
    if (!is_digit(c)) return 12;
  if (w.size() > 10 || (w.size() == 10 && w[0] >= '3')) return 4;
  std::int64_t sum = 0;
  for (char c : w) sum = sum * 10 + (c - '0');
  if (sum > std::numeric_limits<int>::max()) return 4;
  value = static_cast<int>(negative ? -sum : sum);
  return 0;
}

bool is_decimal_char(char c) {
  return c == '.' || c == ',' || (zelvy_data::data().idecimal == 1 && c == zelvy_data::data().cdecimal);
}

// The text a C-layer caller means: up to its first zero character, trimmed.
std::string_view c_text(std::string_view text) {
  const auto nul = text.find('\0');
  if (nul != std::string_view::npos) text = text.substr(0, nul);
  return trimmed(text);
}

// Runs a conversion with the error state and debug level cleared, and puts them
// back afterwards. Returns whether the conversion left no error.
template <typename F>
bool quietly(F&& convert) {
  const int saved_err = zelvy_data::data().ierr, saved_dbug = zelvy_data::data().idbug;
  zelvy_data::data().ierr = 0;
  zelvy_data::data().idbug = 0;
  convert();
  const bool ok = zelvy_data::data().ierr == 0;
  zelvy_data::data().ierr = saved_err;
  zelvy_data::data().idbug = saved_dbug;
  return ok;
}

constexpr std::string_view kRealDefault = "(G15.5E2)";
constexpr std::string_view kDoubleDefault = "(G24.15E3)";

// C-layer number to text: left-adjusted; the size of a non-empty text counts a
// terminator.
void c_number_to_text(const FormatArg& value, std::string& text, std::string_view format, std::string_view routine,
                      bool real) {
  const std::size_t room = text.empty() ? 0 : text.size() - 1;
  std::string record;
  bool ok = number_to_text(value, format, record, 0);
  std::string_view adjusted = left_trimmed(trimmed(record));
  if (ok && !text.empty() && adjusted.size() > room) ok = false;
  if (!ok) {
    assign_out(text, std::string_view("**********").substr(0, text.empty() ? 10 : std::min<std::size_t>(10, room)));
    yyerror(18, routine);
    return;
  }
  std::string result(adjusted);
  if (real) put_decimal(result);
  assign_out(text, result);
}

}  // namespace

bool format_record(std::string_view descriptor, std::span<const FormatArg> values, std::string& out) {
  out.clear();
  std::vector<Item> items;
  if (!DescriptorParser(descriptor).parse(items)) return false;
  std::size_t next = 0;
  for (const Item& item : items) {
    if (item.kind == Kind::Skip) {
      out.append(static_cast<std::size_t>(item.w), ' ');
    } else if (item.kind == Kind::Literal) {
      out += item.literal;
    } else {
      if (next == values.size()) return true;
      if (!format_item(item, values[next++], out)) return false;
    }
  }
  return next == values.size();
}

void IntegerToString(int value, std::string& text, std::string_view format) {
  write_number(value, text, format, "IntegerToString", false);
}

void IRealToString(float value, std::string& text, std::string_view format) {
  write_number(value, text, format, "IRealToString", true);
}

void IDoubleToString(double value, std::string& text, std::string_view format) {
  write_number(value, text, format, "IDoubleToString", true);
}

int yystringtofloat(std::string_view text, bool is_double, double& value) {
  value = 0;
  const std::string_view w = first_word(text);
  if (w.empty()) return 10;
  const int limit = is_double ? 308 : 38;

  // The exponent mark: a letter anywhere, else a sign three places before the end.
  std::size_t mark = std::string_view::npos;
  bool letter = false;
  for (char c : is_double ? std::string_view("EeDd") : std::string_view("Ee")) {
    mark = w.find(c);
    if (mark != std::string_view::npos) {
      letter = true;
      break;
    }
  }
  if (!letter && w.size() >= 5 && (w[w.size() - 4] == '+' || w[w.size() - 4] == '-')) mark = w.size() - 4;
  const bool has_exponent = mark != std::string_view::npos;
  const std::string_view mantissa = w.substr(0, mark);
  const std::string_view exponent = has_exponent ? w.substr(mark + (letter ? 1 : 0)) : std::string_view{};

  std::size_t i = 0;
  bool negative = false;
  if (!mantissa.empty() && (mantissa[0] == '+' || mantissa[0] == '-')) {
    negative = mantissa[0] == '-';
    i = 1;
  }
  std::string int_digits, frac_digits;
  bool point = false;
  for (; i < mantissa.size(); ++i) {
    const char c = mantissa[i];
    if (is_digit(c)) (point ? frac_digits : int_digits) += c;
    else if (is_decimal_char(c)) {
      if (point) return 11;
      point = true;
    } else {
      return 12;
    }
  }

  long long exp_value = 0;
  if (has_exponent) {
    std::size_t j = 0;
    bool exp_negative = false;
    if (!exponent.empty() && (exponent[0] == '+' || exponent[0] == '-')) {
      exp_negative = exponent[0] == '-';
      j = 1;
    }
    for (; j < exponent.size(); ++j) {
      if (!is_digit(exponent[j])) return 12;
      if (exp_value < 100000) exp_value = exp_value * 10 + (exponent[j] - '0');
    }
    if (exp_negative) exp_value = -exp_value;
  }

  int_digits.erase(0, std::min(int_digits.find_first_not_of('0'), int_digits.size()));
  if (static_cast<int>(int_digits.size()) > limit) return 4;
  if (static_cast<int>(frac_digits.size()) > limit) frac_digits.resize(static_cast<std::size_t>(limit));
  const auto frac_lead = frac_digits.find_first_not_of('0');
  if (int_digits.empty() && frac_lead == std::string::npos) return 0;  // zero, with or without exponent

  long long power = int_digits.empty() ? -static_cast<long long>(frac_lead) - 1 : static_cast<long long>(int_digits.size()) - 1;
  if (has_exponent) {
    power += exp_value;
    if (power > limit) return 4;
    if (power < -limit) return 0;
  }

  std::string number = (int_digits.empty() ? "0" : int_digits) + "." + frac_digits + "e" + std::to_string(exp_value);
  double parsed = 0;
  const auto res = std::from_chars(number.data(), number.data() + number.size(), parsed);
  if (res.ec == std::errc::result_out_of_range) {
    if (power > 0) return 4;
    parsed = 0;
  }
  if (!is_double && parsed > 3.4028234663852886E+38) return 4;
  value = negative ? -parsed : parsed;
  return 0;
}

void IStringToInteger(std::string_view text, int& value) {
  if (int err = string_to_integer(text, value)) yyerror(err, "IStringToInteger");
}

void IStringToReal(std::string_view text, float& value) {
  double d = 0;
  int err = yystringtofloat(text, false, d);
  value = static_cast<float>(d);
  if (err) yyerror(err, "IStringToReal");
}

void istringtodouble(std::string_view text, double& value) {
  if (int err = yystringtofloat(text, true, value)) yyerror(err, "IStringToDouble");
}

namespace {

// Converts the first word with `convert` and blanks it in the text.
template <typename T, typename Convert>
void next_word(std::string& text, T& value, std::string_view routine, Convert convert) {
  int first = 0, last = 0;
  ilocatestring(text, first, last);
  value = 0;
  if (first == 0) {
    yyerror(10, routine);
    return;
  }
  const std::size_t pos = static_cast<std::size_t>(first - 1), len = static_cast<std::size_t>(last - first + 1);
  const int err = convert(std::string_view(text).substr(pos, len), value);
  text.replace(pos, len, len, ' ');
  if (err) yyerror(err, routine);
}

}  // namespace

void INextInteger(std::string& text, int& value) {
  next_word(text, value, "INextInteger", [](std::string_view w, int& v) { return string_to_integer(w, v); });
}

void INextReal(std::string& text, float& value) {
  next_word(text, value, "INextReal", [](std::string_view w, float& v) {
    double d = 0;
    const int err = yystringtofloat(w, false, d);
    v = static_cast<float>(d);
    return err;
  });
}

void yyint2st(int value, std::string& text, std::string_view format) {
  if (!is_blank(format)) {
    c_number_to_text(value, text, format, "yyint2st", false);
    return;
  }
  const int w = (!text.empty() && text.size() < 12) ? static_cast<int>(text.size()) - 1 : 11;
  if (w < 1) {
    assign_out(text, "");
    yyerror(18, "yyint2st");
    return;
  }
  const std::string record = format_int(value, w, -1);
  if (record.find('*') != std::string::npos) {
    assign_out(text, record);
    yyerror(18, "yyint2st");
    return;
  }
  assign_out(text, left_trimmed(record));
}

void yyrea2st(float value, std::string& text, std::string_view format) {
  c_number_to_text(value, text, is_blank(format) ? kRealDefault : format, "yyrea2st", true);
}

void yydbl2st(double value, std::string& text, std::string_view format) {
  c_number_to_text(value, text, is_blank(format) ? kDoubleDefault : format, "yydbl2st", true);
}

void yyst2int(int& value, std::string_view text) {
  double d = 0;
  yyst2dbl(d, text);
  // Through the double, the fraction cut off; what has no int is no number.
  value = (d > -2147483649.0 && d < 2147483648.0) ? static_cast<int>(d) : 0;
}

void yyst2rea(float& value, std::string_view text) {
  quietly([&] { IStringToReal(c_text(text), value); });
}

void yyst2dbl(double& value, std::string_view text) {
  quietly([&] { istringtodouble(c_text(text), value); });
}

void yyst2dblcheck_(double& value, int& valid, std::string_view text) {
  valid = quietly([&] { istringtodouble(c_text(text), value); }) ? 1 : 0;
}

void yyformi(int& value, std::string& text, std::string_view format) {
  quietly([&] {
    yyst2int(value, text);
    yyint2st(value, text, format);
  });
}

void yyformr(float& value, std::string& text, std::string_view format) {
  quietly([&] {
    yyst2rea(value, text);
    yyrea2st(value, text, format);
  });
}

void yyformd(double& value, std::string& text, std::string_view format) {
  quietly([&] {
    yyst2dbl(value, text);
    yydbl2st(value, text, format);
  });
}
