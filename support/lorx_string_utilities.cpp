// Text scanning of the crystallographic support library.
#include "support/lorx_string_utilities.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <set>

#include "toolkit/base/fixed_text.h"
#include "toolkit/base/format.h"

namespace lorx_string_utilities {

namespace {

constexpr std::string_view kNotANumber = "The variable cannot be computed as a number in GETNUM ";
constexpr std::string_view kDigitLimits = "Limits of digit variable exceeded in GETNUM";

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Ten to an integer power in single precision by square and multiply, the
// reciprocal for a negative power. Done here rather than by a library power so
// that a text reads to the same float on every platform.
float pow10f(int n) {
  float base = 10.0f;
  float r = 1.0f;
  for (unsigned m = n < 0 ? -static_cast<unsigned>(n) : static_cast<unsigned>(n); m != 0; m >>= 1) {
    if (m & 1u) r *= base;
    base *= base;
  }
  return n < 0 ? 1.0f / r : r;
}

// Stores into an array element only when the array has it.
template <typename T>
void store(std::span<T> a, int index1, T value) {
  if (index1 >= 1 && static_cast<std::size_t>(index1) <= a.size()) a[index1 - 1] = value;
}

// Reads one word as a number. Returns false with the module's error set.
bool scan_number(std::string_view word, float& real, int& integer) {
  const std::size_t len = word.size();
  const std::size_t start = (len > 0 && word[0] == '-') ? 1 : 0;  // 0-based
  const std::size_t dot = word.find('.');
  const std::size_t e = word.find('E');
  const std::size_t mant_end = e == std::string_view::npos ? len : e;

  // Power of ten of the first mantissa digit.
  const std::size_t units = dot != std::string_view::npos ? dot : mant_end;
  int power = static_cast<int>(units) - static_cast<int>(start) - 1;
  float sum = 0.0f;
  std::uint32_t isum = 0;  // wraps like a 32-bit register on absurdly long integers
  for (std::size_t i = start; i < mant_end; ++i) {
    const char c = word[i];
    if (c == '.') continue;
    if (!is_digit(c)) {  // only '-' can get here
      err_string = true;
      err_string_mess = kDigitLimits;
      return false;
    }
    const int d = c - '0';
    sum += static_cast<float>(d) * pow10f(power);
    if (power >= 0) isum = isum * 10u + static_cast<std::uint32_t>(d);
    --power;
  }

  bool has_exp = e != std::string_view::npos;
  int exponent = 0;
  if (has_exp) {
    std::string_view ex = word.substr(e + 1);
    bool neg = false;
    if (!ex.empty() && ex[0] == '-') {
      neg = true;
      ex.remove_prefix(1);
    }
    for (char c : ex) {
      if (!is_digit(c)) {
        err_string = true;
        err_string_mess = kDigitLimits;
        return false;
      }
      // Far beyond the range of a real already; stop growing to stay defined.
      if (exponent < 100000) exponent = exponent * 10 + (c - '0');
    }
    if (neg) exponent = -exponent;
  }

  const bool negative = start == 1;
  real = negative ? -sum : sum;
  if (has_exp) real *= pow10f(exponent);
  integer = static_cast<int>(negative ? 0u - isum : isum);
  return true;
}

}  // namespace

void init_err_string() {
  err_string = false;
  err_string_mess.clear();
}

void inc_linenum(int increment) { line_nb += increment; }

std::string u_case(std::string_view text) {
  std::string r(text);
  for (char& c : r)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return r;
}

std::string l_case(std::string_view text) {
  std::string r(text);
  for (char& c : r)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return r;
}

void ucase(std::string& text) { text = u_case(text); }
void lcase(std::string& text) { text = l_case(text); }

void cutst(std::string& text, int* rest_length, std::string* word, int* word_length) {
  if (word) assign_out(*word, {});
  if (word_length) *word_length = 0;
  if (rest_length) *rest_length = 0;

  const std::size_t width = text.size();
  text = padded(left_trimmed(text), width);
  if (is_blank(text)) return;

  std::string cut;
  const std::size_t blank = width == 1 ? std::string::npos : text.find(' ');
  if (blank == std::string::npos) {
    cut = text;
    text.assign(width, ' ');
  } else {
    cut = text.substr(0, blank);
    text = padded(left_trimmed(std::string_view(text).substr(blank)), width);
  }
  if (word) {
    assign_out(*word, cut);
    if (word_length) *word_length = static_cast<int>(trimmed(*word).size());
  } else if (word_length) {
    *word_length = static_cast<int>(cut.size());
  }
  if (rest_length) *rest_length = static_cast<int>(trimmed(text).size());
}

void getnum(std::string_view text, std::span<float> reals, std::span<int> ints, int& count) {
  std::fill(reals.begin(), reals.end(), 0.0f);
  std::fill(ints.begin(), ints.end(), 0);
  count = 0;
  init_err_string();

  std::string work = u_case(text);
  std::string word;
  while (!is_blank(work)) {
    int wlen = 0;
    word.clear();
    cutst(work, nullptr, &word, &wlen);
    if (wlen == 0) break;
    if (word.find_first_not_of("E0123456789.-") != std::string::npos) {
      err_string = true;
      err_string_mess = kNotANumber;
      return;
    }
    float r = 0.0f;
    int n = 0;
    if (!scan_number(word, r, n)) return;
    ++count;
    store(reals, count, r);
    store(ints, count, n);
  }
}

void getword(std::string_view text, std::span<std::string> words, int& count) {
  init_err_string();
  count = 0;
  std::string work(text);
  const std::size_t width = work.size();
  for (;;) {
    work = padded(left_trimmed(work), width);
    std::string word;
    if (!work.empty() && work[0] == '"') {
      const std::size_t close = work.find('"', 1);
      if (close == std::string::npos) {
        err_string = true;
        err_string_mess = "Non balanced quotes!";
        return;
      }
      word = work.substr(1, close - 1);
      work = padded(std::string_view(work).substr(close + 1), width);
    } else {
      cutst(work, nullptr, &word);
    }
    if (word.empty()) return;  // no word left, or an empty pair of quotes
    ++count;
    if (static_cast<std::size_t>(count) > words.size()) {
      err_string = true;
      err_string_mess = "Dimension of DIRE exceeded";
      return;
    }
    assign_out(words[count - 1], word);
  }
}

namespace {

// getnum on a piece that must hold exactly one number.
bool single_number(std::string_view piece, float& value) {
  float r[1] = {0.0f};
  int n[1] = {0};
  int found = 0;
  getnum(piece, r, n, found);
  value = r[0];
  return found == 1 && !err_string;
}

}  // namespace

void getnum_std(std::string_view text, std::span<float> values, std::span<float> sigmas, int& count) {
  std::fill(values.begin(), values.end(), 0.0f);
  std::fill(sigmas.begin(), sigmas.end(), 0.0f);
  count = 0;
  init_err_string();
  if (is_blank(text)) {
    err_string = true;
    err_string_mess = "Blank line";
    return;
  }
  auto fail = [](std::string_view why) {
    err_string = true;
    err_string_mess = why;
  };

  std::size_t cut = text.find('!');
  if (cut == std::string_view::npos) cut = text.find('#');
  std::string work = padded(left_trimmed(text.substr(0, cut)), text.size());
  std::string word;
  for (;;) {
    int wlen = 0;
    word.clear();
    cutst(work, nullptr, &word, &wlen);
    if (wlen == 0) return;
    const std::size_t i = word.find('(');
    const std::size_t j = word.find(')');
    const bool has_i = i != std::string::npos, has_j = j != std::string::npos;
    if (has_i != has_j || (has_i && j < i)) {
      fail("Wrong format using Standard values");
      return;
    }
    float value = 0.0f;
    if (!has_i) {
      if (!single_number(word, value)) {
        fail("Bad format");
        return;
      }
      ++count;
      store(values, count, value);
      continue;
    }
    const std::string_view w(word);
    if (!single_number(w.substr(0, i), value)) {
      fail("Bad format");
      return;
    }
    ++count;
    store(values, count, value);
    float u = 0.0f;
    if (!single_number(w.substr(i + 1, j - i - 1), u)) {
      fail("Bad format");
      return;
    }
    // The digits in brackets count in the last places of the value.
    const std::size_t k = w.substr(0, i).find('.');
    if (k != std::string_view::npos) u /= pow10f(static_cast<int>(i - k - 1));
    store(sigmas, count, u);
  }
}

namespace {

// One real through a descriptor in w columns; asterisks when the formatter
// refuses the descriptor.
std::string format_one(float value, char kind, int w, int d) {
  if (w <= 0) return {};
  const std::string descriptor =
      std::string("(") + kind + std::to_string(w) + "." + std::to_string(d) + ")";
  const FormatArg arg = value;
  std::string out;
  if (!format_record(descriptor, std::span<const FormatArg>(&arg, 1), out))
    out.assign(static_cast<std::size_t>(w), '*');
  return out;
}

}  // namespace

std::string rformat(float value, int width) {
  constexpr int kLen = 40;
  const int w = std::clamp(width, 0, kLen);
  std::string field;
  if (std::isnan(value) || std::isinf(value)) {
    const std::string tag = std::isnan(value) ? "NaN" : "Inf";
    field = w >= 3 ? std::string(static_cast<std::size_t>(w - 3), ' ') + tag
                   : tag.substr(0, static_cast<std::size_t>(w));
  } else {
    const float a = value + 0.001f;
    const bool positive = a > 0.0f;
    const double limit = std::pow(10.0, positive ? w - 1 : w - 2) - 1.0;
    float v = positive ? a : std::fabs(a);
    if (v > limit) {
      int d = w - 6 - (positive ? 0 : 1);
      if (d < 0) d = 1;
      field = format_one(value, 'E', w, d);
    } else {
      int k = 2;
      while (v > 1.0f) {
        v /= 10.0f;
        ++k;
      }
      int d = w - k - (positive ? 0 : 1);
      if (d < 0) d = 0;
      field = format_one(value, 'F', w, d);
    }
  }
  return padded(field, kLen);
}

void setnum_std(float value, float sigma, std::string& text) {
  if (sigma < 0.0f) {
    assign_out(text, {});
    err_string = true;
    err_string_mess = "A negative standard deviation was passed on SetNum_Std procedure!";
    return;
  }
  std::string result;
  if (std::fabs(sigma) < 1.0e-7f || !std::isfinite(sigma)) {
    result = std::string(left_trimmed(trimmed(rformat(value, 8))));
  } else {
    // Scale the uncertainty until it reads as a bracket number of at least 2.
    // The tolerance lets a decimal such as 0.02, stored a hair below, count as 2.
    int n = 0;
    double s = sigma;
    while (s < 2.0 * (1.0 - 1.0e-6)) {
      s *= 10.0;
      ++n;
    }
    const long long bracket = std::llround(s);
    // The value with n decimals. Its field is always wide enough for the
    // value, so no overflow asterisks and no blanks remain to be removed.
    char buf[512];
    auto r = std::to_chars(buf, buf + sizeof buf, static_cast<double>(value),
                           std::chars_format::fixed, n);
    std::string num(buf, r.ptr);
    if (!num.empty() && num.back() == '.') num.pop_back();
    const std::string br = std::to_string(bracket);
    const std::size_t lead = value < 0.0f ? 0 : 1;  // the blank in front of a positive value
    if (!text.empty() && lead + num.size() + br.size() + 2 > text.size() && !num.empty())
      num.pop_back();
    result = num + "(" + br + ")";
  }
  std::erase(result, ' ');
  if (!result.starts_with('-')) result.insert(0, 1, ' ');
  assign_out(text, result);
}

std::string pack_string(std::string_view text) {
  std::string r(text);
  std::erase(r, ' ');
  return r;
}

std::string strip_string(std::string_view text, std::string_view ending) {
  const std::string_view end = is_blank(ending) ? ending : trimmed(ending);
  if (end.empty()) return std::string(text);
  const std::size_t pos = text.rfind(end);
  return std::string(pos == std::string_view::npos ? text : text.substr(0, pos));
}

void get_separator_pos(std::string_view text, char separator, std::span<int> positions, int& count) {
  count = 0;
  const std::string_view t = trimmed(text);
  for (std::size_t i = 0; i < t.size(); ++i) {
    if (t[i] == '"') {
      const std::size_t close = t.find('"', i + 1);
      if (close == std::string_view::npos) break;
      i = close;
      continue;
    }
    if (t[i] == separator) {
      ++count;
      store(positions, count, static_cast<int>(i + 1));
    }
  }
}

void get_substring_positions(std::string_view text, std::string_view substring,
                             std::span<int> positions, int& count) {
  count = 0;
  if (substring.empty()) return;
  for (std::size_t p = text.find(substring); p != std::string_view::npos;
       p = text.find(substring, p + substring.size())) {
    ++count;
    store(positions, count, static_cast<int>(p + 1));
  }
}

int string_count(std::string_view text, std::string_view substring) {
  const std::string_view sub = trimmed(substring);
  if (sub.empty()) return 0;
  int n = 0;
  for (std::size_t p = text.find(sub); p != std::string_view::npos; p = text.find(sub, p + sub.size()))
    ++n;
  return n;
}

void sstring_replace(std::string& text, std::string_view old_text, std::string_view new_text,
                     std::string& warning) {
  constexpr std::size_t kPiece = 1024;
  assign_out(warning, {});
  const std::string_view t = trimmed(text);
  int n = 0;
  get_substring_positions(t, old_text, {}, n);
  if (n == 0) return;
  std::vector<int> pos(static_cast<std::size_t>(n));
  get_substring_positions(t, old_text, pos, n);

  std::string out;
  std::size_t from = 0;
  auto add_piece = [&](std::size_t begin, std::size_t end) {
    std::string_view piece = t.substr(begin, end - begin);
    if (piece.size() > kPiece) {
      assign_out(warning, " => Warning! ... string too long to be fetch into the splitted_string " +
                              std::to_string(piece.size()));
      piece = piece.substr(0, kPiece);
    }
    out += piece;
  };
  for (int p : pos) {
    add_piece(from, static_cast<std::size_t>(p - 1));
    out += new_text;
    from = static_cast<std::size_t>(p - 1) + old_text.size();
  }
  add_piece(from, t.size());
  assign_out(text, out);
}

bool equal_sets_text(std::span<const std::string> a, int na, std::span<const std::string> b, int nb) {
  if (na != nb || na < 0) return false;
  const auto n = std::min({static_cast<std::size_t>(na), a.size(), b.size()});
  std::multiset<std::string_view> sa, sb;
  for (std::size_t i = 0; i < n; ++i) {
    sa.insert(trimmed(a[i]));
    sb.insert(trimmed(b[i]));
  }
  return sa == sb;
}

void get_basename(std::string_view path, std::string_view separator, std::string& base) {
  const std::string_view p = trimmed(path);
  const std::size_t pos = separator.empty() ? std::string_view::npos : p.rfind(separator);
  assign_out(base, pos == std::string_view::npos ? p : p.substr(pos + separator.size()));
}

void get_dirname(std::string_view path, std::string& directory) {
  const std::string_view p = trimmed(path);
  const std::size_t pos = p.rfind('/');
  assign_out(directory, pos == std::string_view::npos ? std::string_view{} : p.substr(0, pos));
}

void get_extension(std::string_view path, std::string& extension, std::optional<bool> with_dot) {
  const std::string_view p = trimmed(path);
  const std::size_t pos = p.rfind('.');
  if (pos == std::string_view::npos) {
    assign_out(extension, {});
    return;
  }
  assign_out(extension, p.substr(with_dot.value_or(true) ? pos : pos + 1));
}

namespace {

// The shared scan of the read_key_* routines: on a hit, the index (1-based)
// of the line and the rest of it behind the keyword; 0 without a hit.
int find_key(std::span<const std::string> lines, int first, int last, std::string_view keyword,
             std::optional<char> comment, std::string& rest) {
  last = std::min(last, static_cast<int>(lines.size()));
  const char cc = comment.value_or(' ');
  const std::string key = l_case(trimmed(left_trimmed(keyword)));
  if (key.empty()) return 0;
  for (int i = std::max(first, 1); i <= last; ++i) {
    const std::string_view line = left_trimmed(lines[static_cast<std::size_t>(i - 1)]);
    if (line.empty() || line[0] == '!' || line[0] == cc) continue;
    const std::size_t hit = l_case(line).find(key);
    if (hit == std::string::npos) continue;
    rest = line.substr(hit);
    cutst(rest);  // drops the keyword itself
    rest = std::string(trimmed(rest));
    return i;
  }
  return 0;
}

}  // namespace

void read_key_str(std::span<const std::string> lines, int& first, int last, std::string_view keyword,
                  std::string& text, std::optional<char> comment) {
  assign_out(text, {});
  std::string rest;
  const int hit = find_key(lines, first, last, keyword, comment, rest);
  if (hit == 0) return;
  assign_out(text, rest);
  first = hit;
}

void read_key_strval(std::span<const std::string> lines, int& first, int last,
                     std::string_view keyword, std::string& text, std::span<float> reals,
                     std::span<int> ints, int* count, std::optional<char> comment) {
  read_key_str(lines, first, last, keyword, text, comment);
  if (reals.empty() || ints.empty() || count == nullptr) return;
  std::fill(reals.begin(), reals.end(), 0.0f);
  std::fill(ints.begin(), ints.end(), 0);
  *count = 0;
  if (!is_blank(text)) getnum(text, reals, ints, *count);
}

void read_key_value(std::span<const std::string> lines, int& first, int last,
                    std::string_view keyword, std::span<float> reals, std::span<int> ints,
                    int& count, std::optional<char> comment, std::string* text) {
  std::fill(reals.begin(), reals.end(), 0.0f);
  std::fill(ints.begin(), ints.end(), 0);
  count = 0;
  if (text) assign_out(*text, {});
  std::string rest;
  const int hit = find_key(lines, first, last, keyword, comment, rest);
  if (hit == 0) return;
  if (text) assign_out(*text, rest);
  getnum(rest, reals, ints, count);
  if (!err_string) first = hit;
}

void read_key_valuestd(std::span<const std::string> lines, int& first, int last,
                       std::string_view keyword, std::span<float> values,
                       std::span<float> sigmas, int& count) {
  std::fill(values.begin(), values.end(), 0.0f);
  std::fill(sigmas.begin(), sigmas.end(), 0.0f);
  count = 0;
  std::string rest;
  const int hit = find_key(lines, first, last, keyword, {}, rest);
  if (hit == 0) return;
  getnum_std(rest, values, sigmas, count);
  if (!err_string) first = hit;
}

void number_lines(std::string_view filename, int& count, std::optional<std::string_view> stop) {
  count = 0;
  std::ifstream in{std::string(trimmed(filename))};
  if (!in) return;
  // A blank stop text would stop at the first line; it is taken as no stop.
  const std::string key = stop ? u_case(trimmed(left_trimmed(*stop))) : std::string{};
  std::string line;
  while (std::getline(in, line)) {
    if (!key.empty()) {
      const std::string_view head = left_trimmed(line).substr(0, 256);
      if (u_case(head).starts_with(key)) break;
    }
    ++count;
  }
}

void reading_lines(std::string_view filename, int count, std::vector<std::string>& lines) {
  init_err_string();
  lines.clear();
  const std::string name(trimmed(left_trimmed(filename)));
  std::ifstream in{name};
  if (!in) {
    err_string = true;
    err_string_mess = "The file " + name + " does not exist ";
    return;
  }
  std::string line;
  while (static_cast<int>(lines.size()) < count && std::getline(in, line)) lines.push_back(line);
}

void get_logunit(int& unit) {
  for (int u = kFirstLogunit; u < kLogunitLimit; ++u) {
    if (units_in_use.insert(u).second) {
      unit = u;
      return;
    }
  }
  unit = -1;
}

void free_logunit(int unit) { units_in_use.erase(unit); }

}  // namespace lorx_string_utilities
