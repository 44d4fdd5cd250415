#include "job_reader.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <span>

namespace stand_in {

namespace {

// A line is looked at up to this column; the rest is ignored.
constexpr std::size_t kColumns = 132;
constexpr std::size_t kMaxDomains = 24;

// Widths of the texts as the front-end keeps them.
constexpr std::size_t kTitleWidth = 80, kNameWidth = 256, kSpaceGroupWidth = 60;
constexpr std::size_t kTwinNameWidth = 80, kMachineWidth = 20, kTwinSpaceGroupWidth = 40;

std::string cut(std::string_view s, std::size_t width) {
  return std::string(strip_right(s.substr(0, std::min(s.size(), width))));
}

// ---- numbers, as a free-format read takes them

bool separator(char c) { return c == ' ' || c == ',' || c == '\t'; }

// The values of a text, split at runs of blanks, commas and tabs.
class Values {
 public:
  explicit Values(std::string_view text) : rest_(text) {}
  std::string_view next() {
    std::size_t i = 0;
    while (i < rest_.size() && separator(rest_[i])) ++i;
    std::size_t j = i;
    while (j < rest_.size() && !separator(rest_[j])) ++j;
    const std::string_view word = rest_.substr(i, j - i);
    rest_ = rest_.substr(j);
    return word;
  }

 private:
  std::string_view rest_;
};

bool digit(char c) { return c >= '0' && c <= '9'; }

// [sign] mantissa with at least one digit and at most one point, then
// optionally an exponent: a letter E or D in either case with an optional
// sign, or a sign alone; the exponent needs digits. The word is rewritten
// for the C library's conversion, which would take more (hex, "inf").
std::optional<std::string> real_text(std::string_view word) {
  std::string out;
  std::size_t i = 0;
  if (i < word.size() && (word[i] == '+' || word[i] == '-')) out += word[i++];
  int mantissa_digits = 0;
  bool point = false;
  for (; i < word.size(); ++i) {
    const char c = word[i];
    if (digit(c)) ++mantissa_digits;
    else if (c == '.' && !point) point = true;
    else break;
    out += c;
  }
  if (mantissa_digits == 0) return std::nullopt;
  if (i == word.size()) return out;
  switch (word[i]) {
    case 'E': case 'e': case 'D': case 'd': ++i; break;
    case '+': case '-': break;
    default: return std::nullopt;
  }
  out += 'e';
  if (i < word.size() && (word[i] == '+' || word[i] == '-')) out += word[i++];
  if (i == word.size()) return std::nullopt;
  for (; i < word.size(); ++i) {
    if (!digit(word[i])) return std::nullopt;
    out += word[i];
  }
  return out;
}

// Correctly rounded to a 32-bit real; beyond its range no value, below it zero.
std::optional<float> to_real(std::string_view word) {
  const auto text = real_text(word);
  if (!text) return std::nullopt;
  errno = 0;
  const float v = std::strtof(text->c_str(), nullptr);
  if (std::isinf(v)) return std::nullopt;
  return v;
}

// A free-format integer has neither point nor exponent.
std::optional<int> to_integer(std::string_view word) {
  std::size_t i = word.size() > 0 && (word[0] == '+' || word[0] == '-') ? 1 : 0;
  if (i == word.size()) return std::nullopt;
  for (std::size_t k = i; k < word.size(); ++k)
    if (!digit(word[k])) return std::nullopt;
  errno = 0;
  const long long v = std::strtoll(std::string(word).c_str(), nullptr, 10);
  if (errno == ERANGE || v < INT_MIN || v > INT_MAX) return std::nullopt;
  return static_cast<int>(v);
}

template <std::size_t N>
bool reals(std::string_view text, std::array<float, N>& out) {
  Values values(text);
  std::array<float, N> got{};
  for (auto& x : got) {
    const auto v = to_real(values.next());
    if (!v) return false;
    x = *v;
  }
  out = got;
  return true;
}

bool matrix(std::string_view text, Matrix& m) {
  std::array<float, 9> v{};
  if (!reals(text, v)) return false;
  for (std::size_t k = 0; k < 9; ++k) m[k / 3][k % 3] = v[k];  // row by row
  return true;
}

std::optional<int> integer(std::string_view text) { return to_integer(Values(text).next()); }

// ---- lines

class Lines {
 public:
  explicit Lines(const std::string& path) : in_(path, std::ios::binary) {}
  bool opened() const { return static_cast<bool>(in_); }

  // The next line with leading blanks removed, blank-padded to kColumns.
  bool next(std::string& line) {
    if (!std::getline(in_, line)) return false;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.size() > kColumns) line.resize(kColumns);
    line.erase(0, line.find_first_not_of(' ') == std::string::npos ? line.size() : line.find_first_not_of(' '));
    line.resize(kColumns, ' ');
    return true;
  }

 private:
  std::ifstream in_;
};

// Columns `first` (1-based) to the end.
std::string_view columns(std::string_view line, std::size_t first) { return line.substr(first - 1); }

// The twin block, up to its end line or the end of the file. False on a fault,
// with the reason in the job.
bool read_twin(Lines& lines, JobFile& job) {
  Twin& t = job.twin;
  t.domains.clear();
  std::string line;
  while (lines.next(line)) {
    const char first = line[0];
    if (first == '!' || first == '#' || first == ' ') continue;
    const std::string_view l(line);
    // Values stop at a "!" comment.
    const std::size_t bang = l.find('!');
    const std::size_t end = bang == std::string_view::npos ? strip_right(l).size() : bang;
    const std::string_view value = end > 8 ? l.substr(8, end - 8) : std::string_view{};
    const std::string_view keyword = l.substr(0, 8);
    auto fault = [&job](const char* item) {
      job.problem = std::string("Error reading the TWIN law file, item: ") + item;
      return false;
    };

    if (keyword == "TWIN_end") return true;
    if (keyword == "TWIN_nam") {
      t.name = cut(l.substr(8), kTwinNameWidth);
    } else if (keyword == "TWIN_typ") {
      const auto v = integer(value);
      if (!v) return fault("TWIN_typ");
      t.type = *v;
      if (t.type < 1 || t.type > 3) {
        job.problem = "Illegal TWIN_typ: It should be 1,2 or 3!";
        return false;
      }
    } else if (keyword == "TWIN_trf") {
      t.has_transform = true;
      if (!matrix(value, t.transform)) return fault("TWIN_trf");
    } else if (keyword == "TWIN_mat") {
      if (t.domains.size() == kMaxDomains) return fault("TWIN_mat (more than 24 domains)");
      t.domains.emplace_back();
      if (!matrix(value, t.domains.back())) return fault("TWIN_mat");
    } else if (keyword == "TWIN_ubm") {
      t.has_ub = true;
      if (!matrix(value, t.ub)) return fault("TWIN_ubm");
    } else if (keyword == "TWIN_mac") {
      t.machine = cut(value, kMachineWidth);
    } else if (keyword == "TWIN_spg") {
      t.space_group = cut(strip_left(value), kTwinSpaceGroupWidth);
      t.has_space_group = true;
    }
  }
  return true;
}

// The file name of INPFIL and OUTFIL: all behind the keyword, whatever its length.
std::string name_after_keyword(std::string_view line) {
  const std::size_t blank = line.find(' ');
  if (blank == std::string_view::npos) return {};
  return cut(strip_left(line.substr(blank + 1)), kNameWidth);
}

std::string upper(std::string_view s) {
  std::string u(s);
  for (char& c : u)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return u;
}

// One line of the main part. False stops the reading, with the reason in the job.
bool read_key(std::string_view line, Lines& lines, JobFile& job) {
  const std::string key = upper(line.substr(0, 5));
  auto fault = [&job](const char* what) {
    job.problem = what;
    return false;
  };
  auto one_real = [&](std::size_t column, float& target, bool& given, const char* what) {
    std::array<float, 1> v{};
    if (!reals(columns(line, column), v)) return fault(what);
    target = v[0];
    given = true;
    return true;
  };
  bool unused = false;

  if (key == "TITLE") job.title = cut(strip_left(columns(line, 6)), kTitleWidth);
  else if (key == "INPFI") job.data_file = name_after_keyword(line);
  else if (key == "OUTFI") job.result_name = name_after_keyword(line);
  else if (key == "SPGR ") job.space_group = cut(strip_left(columns(line, 6)), kSpaceGroupWidth);
  else if (key == "NFRDL") job.friedel = false;
  else if (key == "POWDE") job.powder = true;
  else if (key == "DOMAI") job.domains_averaged = true;
  else if (key == "WAVE ") return one_real(6, job.wavelength, job.has_wavelength, "Error reading the wavelength!");
  else if (key == "SCALE") return one_real(7, job.scale, job.has_scale, "Error reading the scale factor!");
  else if (key == "EPSIL") return one_real(7, job.epsil, job.has_epsil, "Error reading the EPSIL value!");
  else if (key == "WARN ") return one_real(7, job.warn, unused, "Error reading the WARN value!");
  else if (key == "KVEC ") {
    if (!reals(columns(line, 6), job.kvec)) return fault("Error reading the propagation vector!");
    job.has_kvec = true;
  } else if (key == "CELL ") {
    if (!reals(columns(line, 6), job.cell)) return fault("Error reading the cell parameters!");
    job.has_cell = true;
  } else if (key == "TRANS") {
    // The matrix stands behind the keyword, whatever its length.
    const std::size_t blank = line.find(' ');
    if (blank == std::string_view::npos || !matrix(line.substr(blank), job.transform))
      return fault("Error reading the transformation matrix!");
    job.has_transform = true;
  } else if (key == "HKL_T") {
    const auto v = integer(columns(line, 6));
    if (!v) return fault("Error reading the type of the reflection file!");
    job.hkl_type = *v;
  } else if (key == "TWIN ") {
    if (!read_twin(lines, job)) return false;
    job.twinned = true;
  }
  return true;
}

// A line of the listing: the name, whether the value is given, the numbers.
std::string numbers(const char* name, bool given, std::span<const float> values) {
  std::string s = name;
  s += given ? " yes" : " no";
  char buf[32];
  for (const float v : values) {
    std::snprintf(buf, sizeof buf, " %.9g", static_cast<double>(v));
    s += buf;
  }
  return s + "\n";
}

std::array<float, 9> cells(const Matrix& m) {
  std::array<float, 9> v{};
  for (std::size_t k = 0; k < 9; ++k) v[k] = m[k / 3][k % 3];
  return v;
}

std::string text(const char* name, std::string_view value) {
  return std::string(name) + " [" + std::string(value) + "]\n";
}

}  // namespace

std::string_view strip_right(std::string_view s) {
  const std::size_t end = s.find_last_not_of(' ');
  return end == std::string_view::npos ? std::string_view{} : s.substr(0, end + 1);
}

std::string_view strip_left(std::string_view s) {
  const std::size_t start = s.find_first_not_of(' ');
  return start == std::string_view::npos ? std::string_view{} : s.substr(start);
}

JobFile read_job(const std::string& path) {
  JobFile job;
  Lines lines(path);
  if (!lines.opened()) {
    job.problem = "The job file " + path + " could not be opened.";
    return job;
  }
  std::string line;
  while (lines.next(line)) {
    if (line[0] == '!' || line[0] == ' ') continue;
    if (!read_key(line, lines, job)) break;
  }
  return job;
}

std::string listing(const JobFile& job) {
  const Twin& t = job.twin;
  std::string s = text("title", job.title) + text("data_file", job.data_file) +
                  text("result_name", job.result_name) + text("space_group", job.space_group) +
                  numbers("cell", job.has_cell, job.cell) +
                  numbers("wavelength", job.has_wavelength, {&job.wavelength, 1}) +
                  "hkl_type " + std::to_string(job.hkl_type) + "\n" +
                  numbers("transform", job.has_transform, cells(job.transform)) +
                  numbers("friedel", job.friedel, {}) + numbers("scale", job.has_scale, {&job.scale, 1}) +
                  numbers("powder", job.powder, {}) + numbers("epsil", job.has_epsil, {&job.epsil, 1}) +
                  numbers("kvec", job.has_kvec, job.kvec) +
                  numbers("domains_averaged", job.domains_averaged, {}) +
                  numbers("warn", true, {&job.warn, 1}) + numbers("twinned", job.twinned, {}) +
                  text("twin_name", t.name) + "twin_type " + std::to_string(t.type) + "\n" +
                  numbers("twin_transform", t.has_transform, cells(t.transform));
  for (const auto& m : t.domains) s += numbers("twin_domain", true, cells(m));
  s += numbers("twin_ub", t.has_ub, cells(t.ub)) + text("machine", t.machine) +
       numbers("twin_space_group", t.has_space_group, {}) + text("twin_space_group", t.space_group) +
       text("problem", job.problem);
  return s;
}

}  // namespace stand_in
