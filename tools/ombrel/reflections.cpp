#include "reflections.h"

#include "big_buffer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace stand_in {

namespace {

// Longest piece of a line kept in the .rej file.
constexpr std::size_t kShownColumns = 160;
// No line of any format is longer than this.
constexpr std::size_t kMaxLineLength = 1024;
// A file with a NUL byte in its first block is not a text file.
constexpr std::size_t kSniffBytes = 4096;
// A reflection line is rarely shorter than this (h k l I sigma, blank separated).
constexpr std::size_t kShortestLine = 20;
// Fixed layout of HKL_T 0 and 10: 3I4, 2F8.2 and, for 10, I4.
constexpr std::size_t kIndexWidth = 4, kValueWidth = 8, kCodeWidth = 4;
constexpr double kImpliedScale = 100;  // the two decimals of F8.2
constexpr double kIntegerTolerance = 1e-4;

struct Layout {
  int first_index;  // position of h among the values of a line
  int needed;       // values a reflection needs
  bool two_lines;
};

Layout layout(int hkl_type) {
  switch (hkl_type) {
    case 2: return {1, 6, true};           // numor h k l I sigma ... over two lines
    case 4: case 5: case 6: case 9: return {1, 6, false};  // numor first
    default: return {0, 5, false};         // h k l I sigma first
  }
}

std::string shown(std::string_view line) {
  std::string s(line.substr(0, std::min(line.size(), kShownColumns)));
  for (char& c : s)
    if (static_cast<unsigned char>(c) < ' ' && c != '\t') c = '?';
  if (line.size() > kShownColumns) s += "...";
  return s;
}

bool parse_real(std::string_view w, double& v) {
  if (!w.empty() && w[0] == '+') w.remove_prefix(1);
  std::string fortran;  // a D exponent as Fortran writes it
  if (w.find_first_of("dD") != std::string_view::npos) {
    fortran.assign(w);
    std::replace(fortran.begin(), fortran.end(), 'd', 'e');
    std::replace(fortran.begin(), fortran.end(), 'D', 'e');
    w = fortran;
  }
  const auto [end, ec] = std::from_chars(w.data(), w.data() + w.size(), v);
  return ec == std::errc{} && end == w.data() + w.size() && std::isfinite(v);
}

// Why the indices can't be used, or empty.
const char* check_indices(const double (&hkl)[3], bool real_indices) {
  for (double x : hkl) {
    if (!(std::fabs(x) <= kMaxIndex)) return "index beyond the range +-9999";
    if (!real_indices && std::fabs(x - std::nearbyint(x)) > kIntegerTolerance) return "index is not an integer";
  }
  return nullptr;
}

const char* check_values(double sigma) {
  // A weighted mean needs a weight.
  return sigma > 0 ? nullptr : "sigma is not positive";
}

// A Fortran I field: blanks count as nothing, an all-blank field is 0.
bool fixed_int(std::string_view f, long& v) {
  long value = 0;
  bool negative = false, sign_seen = false, digits = false;
  for (char c : f) {
    if (c == ' ') continue;
    if ((c == '-' || c == '+') && !sign_seen && !digits) {
      negative = c == '-';
      sign_seen = true;
    } else if (c >= '0' && c <= '9') {
      value = value * 10 + (c - '0');  // four columns: no overflow
      digits = true;
    } else {
      return false;
    }
  }
  if (sign_seen && !digits) return false;
  v = negative ? -value : value;
  return true;
}

// A Fortran F8.2 field: without a decimal point the last two digits are
// decimals. Plain fields are converted here; exponents go to the library.
bool fixed_real(std::string_view f, double& v, bool& empty) {
  const auto first = f.find_first_not_of(' ');
  empty = first == std::string_view::npos;
  if (empty) { v = 0; return true; }
  const auto last = f.find_last_not_of(' ');
  const std::string_view t = f.substr(first, last - first + 1);
  std::size_t i = 0;
  bool negative = false;
  if (t[0] == '-' || t[0] == '+') negative = t[0] == '-', ++i;
  long long whole = 0, fraction = 0, scale = 1;
  bool point = false, digits = false;
  for (; i < t.size(); ++i) {
    const char c = t[i];
    if (c >= '0' && c <= '9') {
      digits = true;
      if (point) fraction = fraction * 10 + (c - '0'), scale *= 10;
      else whole = whole * 10 + (c - '0');
    } else if (c == '.' && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (i == t.size()) {
    if (!digits) return false;
    double x = static_cast<double>(whole) + static_cast<double>(fraction) / static_cast<double>(scale);
    if (!point) x /= kImpliedScale;
    v = negative ? -x : x;
    return true;
  }
  if (!parse_real(t, v)) return false;  // exponent, or not a number
  if (!point && t.find_first_of("eEdD") == std::string_view::npos) v /= kImpliedScale;
  return true;
}

std::string_view field(std::string_view line, std::size_t start, std::size_t width) {
  if (start >= line.size()) return {};
  return line.substr(start, width);
}

class Reader {
 public:
  Reader(int hkl_type, bool real_indices, ReadResult& r)
      : type_(hkl_type), real_(real_indices), layout_(layout(hkl_type)), r_(r) {}

  void line(std::string_view text) {
    ++r_.lines;
    if (!text.empty() && text.back() == '\r') text.remove_suffix(1);
    if (text.size() > kMaxLineLength)
      return reject(r_.lines, "line of " + std::to_string(text.size()) + " characters or more: no reflection line", text);
    if (ended_) return reject(r_.lines, "after the line 0 0 0 that ends the data", text);
    if (type_ == 0 && plain_fixed(text)) return;
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos || text[first] == '!' || text[first] == '#') {
      ++r_.comments;
      return;
    }
    if (type_ == 0 || type_ == 10) return fixed(text);
    if (layout_.two_lines && !pending_) {
      pending_ = true;
      pending_line_ = r_.lines;
      pending_text_.assign(text.substr(0, std::min(text.size(), kShownColumns)));
      return;
    }
    if (pending_) {
      pending_ = false;
      std::string joined = pending_text_ + " " + std::string(text.substr(0, std::min(text.size(), kShownColumns)));
      free(joined, pending_line_, text.size() > kShownColumns);
    } else {
      free(text, r_.lines, false);
    }
  }

  bool ended() const { return ended_; }

  void finish() {
    if (pending_) reject(pending_line_, "the second line of the reflection is missing", pending_text_);
  }

 private:
  void reject(long line, std::string reason, std::string_view text) {
    r_.rejected.push_back({line, std::move(reason), shown(text)});
  }

  // The usual line of HKL_T 0, as a program writes it: right-aligned fields
  // of digits, a decimal point in both values, a positive sigma. Anything
  // else (comments, the end line, blanks within a field, exponents, errors)
  // is left to the general reader; nothing is changed then.
  bool plain_fixed(std::string_view text) {
    constexpr std::size_t kValuesAt = 3 * kIndexWidth, kEnd = kValuesAt + 2 * kValueWidth;
    if (text.size() < kEnd || text.size() > kEnd + kShownColumns) return false;
    const char* p = text.data();
    int index[3];
    for (int i = 0; i < 3; ++i, p += kIndexWidth) {
      std::size_t j = 0;
      while (j < kIndexWidth && p[j] == ' ') ++j;
      const bool negative = j < kIndexWidth && p[j] == '-';
      if (negative) ++j;
      if (j == kIndexWidth) return false;
      int value = 0;
      for (; j < kIndexWidth; ++j) {
        const unsigned digit = static_cast<unsigned char>(p[j]) - '0';
        if (digit > 9) return false;
        value = value * 10 + static_cast<int>(digit);
      }
      index[i] = negative ? -value : value;
    }
    if (index[0] == 0 && index[1] == 0 && index[2] == 0) return false;
    double v[2];
    for (int i = 0; i < 2; ++i, p += kValueWidth) {
      std::size_t j = 0;
      while (j < kValueWidth && p[j] == ' ') ++j;
      const bool negative = j < kValueWidth && p[j] == '-';
      if (negative) ++j;
      long long whole = 0, fraction = 0, scale = 1;
      bool point = false, digits = false;
      for (; j < kValueWidth; ++j) {
        const unsigned digit = static_cast<unsigned char>(p[j]) - '0';
        if (digit <= 9) {
          digits = true;
          if (point) fraction = fraction * 10 + digit, scale *= 10;
          else whole = whole * 10 + digit;
        } else if (p[j] == '.' && !point) {
          point = true;
        } else {
          return false;
        }
      }
      if (!point || !digits) return false;
      // The same sum as the general reader's, for the same bits.
      const double part = scale == kCents ? cents_[static_cast<std::size_t>(fraction)]
                                          : static_cast<double>(fraction) / static_cast<double>(scale);
      const double x = static_cast<double>(whole) + part;
      v[i] = negative ? -x : x;
    }
    if (!(v[1] > 0)) return false;
    r_.observations.push_back({{static_cast<double>(index[0]), static_cast<double>(index[1]), static_cast<double>(index[2])},
                               v[0], v[1], static_cast<std::int32_t>(r_.lines), 0});
    return true;
  }

  void fixed(std::string_view text) {
    long index[3];
    for (int i = 0; i < 3; ++i)
      if (!fixed_int(field(text, i * kIndexWidth, kIndexWidth), index[i]))
        return reject(r_.lines, "index in columns " + std::to_string(i * kIndexWidth + 1) + "-" +
                                    std::to_string((i + 1) * kIndexWidth) + " is not an integer", text);
    if (index[0] == 0 && index[1] == 0 && index[2] == 0) {
      ended_ = true;
      ++r_.comments;
      return;
    }
    const std::size_t values_at = 3 * kIndexWidth;
    double v[2];
    for (int i = 0; i < 2; ++i) {
      bool empty = false;
      const std::size_t at = values_at + i * kValueWidth;
      if (!fixed_real(field(text, at, kValueWidth), v[i], empty))
        return reject(r_.lines, std::string(i == 0 ? "intensity" : "sigma") + " in columns " +
                                    std::to_string(at + 1) + "-" + std::to_string(at + kValueWidth) +
                                    " is not a number (fixed columns 3I4,2F8.2)", text);
      if (empty && i == 1) return reject(r_.lines, "sigma missing in columns 21-28", text);
    }
    long code = 0;
    if (type_ == 10 && !fixed_int(field(text, values_at + 2 * kValueWidth, kCodeWidth), code))
      return reject(r_.lines, "domain code in columns 29-32 is not an integer", text);
    if (type_ == 10 && code == 0) return reject(r_.lines, "domain code missing or 0", text);
    if (text.size() > values_at + 2 * kValueWidth + (type_ == 10 ? kCodeWidth : 0) + kShownColumns)
      return reject(r_.lines, "line too long for the fixed layout", text);
    store({static_cast<double>(index[0]), static_cast<double>(index[1]), static_cast<double>(index[2])}, v[0], v[1],
          r_.lines, static_cast<std::int32_t>(code), text);
  }

  void free(std::string_view text, long line, bool cut) {
    if (cut) return reject(line, "line too long", text);
    double v[6];
    int n = 0;
    std::size_t i = 0;
    while (n < layout_.needed) {
      while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == ',')) ++i;
      if (i >= text.size()) break;
      std::size_t j = i;
      while (j < text.size() && text[j] != ' ' && text[j] != '\t' && text[j] != ',') ++j;
      const std::string_view w = text.substr(i, j - i);
      if (!parse_real(w, v[n])) {
        const int at = n - layout_.first_index;
        const char* what = at < 0 ? "numor" : at < 3 ? "index" : at == 3 ? "intensity" : "sigma";
        return reject(line, std::string(what) + " \"" + shown(w.substr(0, 20)) + "\" is not a number", text);
      }
      ++n;
      i = j;
    }
    if (n < layout_.needed)
      return reject(line, "fewer than " + std::to_string(layout_.needed) + " values", text);
    const int f = layout_.first_index;
    store({v[f], v[f + 1], v[f + 2]}, v[f + 3], v[f + 4], line, 0, text);
  }

  void store(std::array<double, 3> hkl, double intensity, double sigma, long line, std::int32_t code,
             std::string_view text) {
    Observation o{{hkl[0], hkl[1], hkl[2]}, intensity, sigma, static_cast<std::int32_t>(line), code};
    const char* why = check_indices(o.hkl, real_);
    if (why == nullptr) why = check_values(sigma);
    if (why != nullptr) return reject(line, why, text);
    if (!real_)
      for (double& x : o.hkl) x = std::nearbyint(x);
    r_.observations.push_back(o);
  }

  // Two decimals are the rule: their quotients, divided once.
  static constexpr long long kCents = 100;
  static std::array<double, kCents> cents() {
    std::array<double, kCents> t{};
    for (std::size_t i = 0; i < t.size(); ++i) t[i] = static_cast<double>(i) / static_cast<double>(kCents);
    return t;
  }
  const std::array<double, kCents> cents_ = cents();

  int type_;
  bool real_;
  Layout layout_;
  ReadResult& r_;
  bool ended_ = false;
  bool pending_ = false;
  long pending_line_ = 0;
  std::string pending_text_;
};

}  // namespace

bool reads_format(int hkl_type) { return hkl_type >= 0 && hkl_type <= 10 && hkl_type != 8; }

std::string format_description(int hkl_type) {
  switch (hkl_type) {
    case 0: return "h k l F^2 sigma in fixed columns (3I4,2F8.2); a line 0 0 0 ends the data";
    case 10: return "h k l F^2 sigma domain-code in fixed columns (3I4,2F8.2,I4)";
    case 2: return "two lines per reflection: numor h k l I sigma gamma nu phi, free format";
    case 4: case 5: case 6: return "numor h k l I sigma theta omega chi phi, free format";
    case 9: return "numor h k l F^2 sigma gamma omega chi phi, free format";
    case 1: return "h k l I sigma, free format";
    case 3: return "h k l I sigma code 2theta omega chi phi, free format";
    case 7: return "h k l F^2 sigma code lambda 2theta absorption tbar, free format";
    case 8: return "flipping ratios: the columns are not known, the file is not read";
    default: return "not a known format, the file is not read";
  }
}

namespace {

// Longest piece of an overlong line looked at: enough to say why it is refused.
constexpr std::size_t kLongLine = 1 << 16;
// Texts from this size on are read by two threads.
constexpr std::size_t kSplitBytes = 4 << 20;

void scan(Reader& reader, std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    const auto* nl = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at)));
    const char* stop = nl != nullptr ? nl : end;
    const auto size = static_cast<std::size_t>(stop - at);
    reader.line(std::string_view(at, std::min(size, kLongLine)));
    at = nl != nullptr ? nl + 1 : end;
  }
}

// Where a large text is cut in two for two threads: after the line that
// holds its middle. Zero when the text is small, or its reflections take two
// lines (one of them could fall on each side).
std::size_t second_half(std::string_view text, int hkl_type) {
  if (text.size() < kSplitBytes || layout(hkl_type).two_lines) return 0;
  const std::size_t nl = text.find('\n', text.size() / 2);
  return nl == std::string_view::npos || nl + 1 == text.size() ? 0 : nl + 1;
}

// The second half is read on a thread of its own, and its results, their
// lines numbered on from those of the first, are appended to the first's:
// the same results, in the same order, as one pass over the whole.
bool read_halves(std::string_view text, std::size_t cut, int hkl_type, bool real_indices, ReadResult& r) {
  const std::string_view first = text.substr(0, cut), second = text.substr(cut);
  ReadResult rest;
  reserve_big(rest.observations, second.size() / kShortestLine + 1);
  auto read_second = [&] {
    Reader reader(hkl_type, real_indices, rest);
    scan(reader, second);
  };
  std::thread helper;
  try {
    helper = std::thread(read_second);
  } catch (...) {
    return false;  // no thread to be had: one pass then
  }
  Reader reader(hkl_type, real_indices, r);
  scan(reader, first);
  helper.join();
  if (reader.ended()) {
    // Whatever follows the end of the data is refused line by line.
    scan(reader, second);
  } else {
    const long offset = r.lines;
    r.lines += rest.lines;
    r.comments += rest.comments;
    r.observations.reserve(r.observations.size() + rest.observations.size());
    for (Observation o : rest.observations) {
      o.line += static_cast<std::int32_t>(offset);
      r.observations.push_back(o);
    }
    for (RejectedLine& line : rest.rejected) {
      line.line += offset;
      r.rejected.push_back(std::move(line));
    }
  }
  reader.finish();
  return true;
}

// Feeds a whole text to the reader line by line, in place.
void read_lines(std::string_view text, int hkl_type, bool real_indices, ReadResult& r) {
  if (text.substr(0, kSniffBytes).find('\0') != std::string_view::npos) {
    r.problem = "the reflection file holds binary data, not lines of text; nothing was read";
    return;
  }
  const std::size_t cut = second_half(text, hkl_type);
  if (cut > 0 && read_halves(text, cut, hkl_type, real_indices, r)) return;
  Reader reader(hkl_type, real_indices, r);
  scan(reader, text);
  reader.finish();
}

// The whole file, mapped when it can be, read otherwise.
class FileText {
 public:
  explicit FileText(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return;
    struct stat st {};
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0) {
      void* p = ::mmap(nullptr, static_cast<std::size_t>(st.st_size), PROT_READ, MAP_PRIVATE | MAP_POPULATE, fd, 0);
      if (p != MAP_FAILED) {
        map_ = p;
        size_ = static_cast<std::size_t>(st.st_size);
      }
    }
    if (map_ == nullptr) {
      char buf[1 << 16];
      for (;;) {
        const ssize_t got = ::read(fd, buf, sizeof buf);
        if (got <= 0) break;
        copy_.append(buf, static_cast<std::size_t>(got));
      }
    }
    ::close(fd);
  }
  ~FileText() {
    if (map_ != nullptr) ::munmap(map_, size_);
  }
  FileText(const FileText&) = delete;
  FileText& operator=(const FileText&) = delete;

  std::string_view text() const {
    return map_ != nullptr ? std::string_view(static_cast<const char*>(map_), size_) : std::string_view(copy_);
  }

 private:
  void* map_ = nullptr;
  std::size_t size_ = 0;
  std::string copy_;
};

}  // namespace

ReadResult read_reflections(std::string_view text, int hkl_type, bool real_indices) {
  ReadResult r;
  r.opened = true;
  if (!reads_format(hkl_type)) {
    r.problem = "HKL_T " + std::to_string(hkl_type) + ": " + format_description(hkl_type);
    return r;
  }
  read_lines(text, hkl_type, real_indices, r);
  return r;
}

ReadResult read_reflection_file(const std::string& path, int hkl_type, bool real_indices) {
  ReadResult r;
  std::ifstream in(path, std::ios::binary);
  if (path.empty() || !in) {
    r.problem = "the reflection file \"" + path + "\" could not be opened";
    return r;
  }
  in.close();
  r.opened = true;
  if (!reads_format(hkl_type)) {
    r.problem = "HKL_T " + std::to_string(hkl_type) + ": " + format_description(hkl_type);
    return r;
  }
  const FileText file(path);
  const std::string_view text = file.text();
  // Room for as many reflections as the file can hold at the usual line
  // length: pages never written to cost nothing.
  reserve_big(r.observations, text.size() / kShortestLine + 1);
  read_lines(text, hkl_type, real_indices, r);
  return r;
}

}  // namespace stand_in
