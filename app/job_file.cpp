// The job file: reading it, with its twin block, and writing it.
#include "app/job_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/data_param.h"
#include "app/data_proc.h"
#include "support/lorx_io_messages.h"
#include "support/lorx_string_utilities.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/format.h"

namespace {

using namespace data_param;
namespace fs = std::filesystem;

constexpr std::size_t kWidth = job_file::line_width;
constexpr int kMaxValues = 9;

job_file::MessageSink message_sink;

void show_error(std::string_view text) {
  if (message_sink) message_sink(text);
  else lorx_io_messages::error_message(text);
}

// Every failure of the reader and the writer: the message, then the program is to stop.
bool fail(std::string_view text) {
  show_error(text);
  data_proc::exit_code = -1;
  return false;
}

// ---------------------------------------------------------------- reading

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

// The job file being read, so that read_twinlaw can go on with it.
std::FILE* open_job = nullptr;

struct OpenJob {
  explicit OpenJob(std::FILE* f) { open_job = f; }
  ~OpenJob() { open_job = nullptr; }
  OpenJob(const OpenJob&) = delete;
  OpenJob& operator=(const OpenJob&) = delete;
};

// The next line, its first kWidth characters, without the line end. False at
// end of file and on a read error, which the reader takes for the end.
bool next_line(std::FILE* f, std::string& line) {
  line.clear();
  std::size_t length = 0;
  int last = 0;
  int c = 0;
  bool any = false;
  while ((c = std::getc(f)) != EOF) {
    any = true;
    if (c == '\n') break;
    if (line.size() < kWidth) line.push_back(static_cast<char>(c));
    ++length;
    last = c;
  }
  if (!any || std::ferror(f)) return false;
  // A carriage return before the newline is a line end written elsewhere, not text.
  if (last == '\r' && length <= kWidth) line.pop_back();
  return true;
}

// Leading blanks removed, then padded to the full width: columns are fixed from here on.
std::string adjusted(std::string_view raw) {
  std::string s(left_trimmed(raw));
  s.resize(kWidth, ' ');
  return s;
}

// Columns `first` to the end, 1-based.
std::string_view from_column(std::string_view line, std::size_t first) {
  return first - 1 < line.size() ? line.substr(first - 1) : std::string_view{};
}

// ---- free-format numbers
//
// The job file is also read by the reduction code with free-format reads, so
// its numbers follow those rules, not the stricter ones of the form fields:
// blanks, commas and tabs separate; a sign may lead the value and its exponent;
// the exponent letter is E or D in either case, and may be left out before a
// signed exponent ("1.5-3"). A word without a digit in its mantissa is no number.

constexpr std::string_view kSeparators = " ,\t";

// Cuts the next value off the text; empty when only separators are left.
std::string_view next_word(std::string_view& text) {
  const auto start = text.find_first_not_of(kSeparators);
  if (start == std::string_view::npos) {
    text = {};
    return {};
  }
  text.remove_prefix(start);
  const auto end = std::min(text.find_first_of(kSeparators), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(end);
  return word;
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

std::size_t digits_from(std::string_view s, std::size_t pos) {
  std::size_t n = 0;
  while (pos + n < s.size() && is_digit(s[pos + n])) ++n;
  return n;
}

// A real the size of which no 32-bit real holds (or a word that is no real) gives nothing;
// one too small for the smallest 32-bit real becomes zero, as a free-format read makes it.
std::optional<float> free_real(std::string_view word) {
  std::size_t pos = 0;
  const bool negative = !word.empty() && word[0] == '-';
  if (!word.empty() && (word[0] == '-' || word[0] == '+')) ++pos;
  const std::size_t int_start = pos, int_digits = digits_from(word, pos);
  pos += int_digits;
  std::size_t frac_start = pos, frac_digits = 0;
  if (pos < word.size() && word[pos] == '.') {
    frac_start = ++pos;
    frac_digits = digits_from(word, pos);
    pos += frac_digits;
  }
  if (int_digits + frac_digits == 0) return std::nullopt;
  const std::string_view mantissa = word.substr(int_start, pos - int_start);

  std::string_view exponent;  // sign and digits
  if (pos < word.size()) {
    const char c = word[pos];
    if (c == 'E' || c == 'e' || c == 'D' || c == 'd') ++pos;
    else if (c != '+' && c != '-') return std::nullopt;
    const std::size_t exp_start = pos;
    if (pos < word.size() && (word[pos] == '+' || word[pos] == '-')) ++pos;
    const std::size_t exp_digits = digits_from(word, pos);
    if (exp_digits == 0 || pos + exp_digits != word.size()) return std::nullopt;
    exponent = word.substr(exp_start);
  }

  std::string text(mantissa);
  if (!exponent.empty()) text.append("e").append(exponent[0] == '+' ? exponent.substr(1) : exponent);
  float value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end != text.data() + text.size()) return std::nullopt;
  if (ec == std::errc::result_out_of_range) {
    // Too large or too small: the decimal order of the leading digit tells which.
    const auto lead = mantissa.find_first_of("123456789");
    long order = lead < int_digits ? static_cast<long>(int_digits - lead - 1)
                                   : -static_cast<long>(lead - (frac_start - int_start) + 1);
    long power = 0;
    if (!exponent.empty()) {
      for (const char c : exponent)
        if (is_digit(c)) power = std::min(power * 10 + (c - '0'), 1'000'000L);
      if (exponent[0] == '-') power = -power;
    }
    if (order + power >= 0) return std::nullopt;
    value = 0;
  } else if (ec != std::errc{}) {
    return std::nullopt;
  }
  return negative ? -value : value;
}

// Reals in free format. Fails with fewer values than wanted or one that is no real;
// what follows the values wanted is not looked at.
bool read_reals(std::string_view text, std::span<float> out) {
  std::array<float, kMaxValues> values{};
  for (std::size_t i = 0; i < out.size(); ++i) {
    const auto v = free_real(next_word(text));
    if (!v) return false;
    values[i] = *v;
  }
  std::copy_n(values.begin(), out.size(), out.begin());
  return true;
}

bool read_matrix(std::string_view text, Mat3& m) {
  std::array<float, 9> v{};
  if (!read_reals(text, v)) return false;
  for (int i = 0; i < 9; ++i) m[i / 3][i % 3] = v[i];
  return true;
}

// The first value as a 32-bit integer. As in a free-format integer read, a
// decimal point or an exponent makes it no integer ("2.5", "1E2", "1.0" alike).
std::optional<int> read_integer(std::string_view text) {
  std::string_view word = next_word(text);
  if (!word.empty() && word[0] == '+') {
    word.remove_prefix(1);
    if (word.empty() || !is_digit(word[0])) return std::nullopt;
  }
  int value = 0;
  const auto [end, ec] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (ec != std::errc{} || end != word.data() + word.size()) return std::nullopt;
  return value;
}

// INPFIL and OUTFIL: the name stands behind the first blank, whatever the keyword's length.
std::string_view name_behind_keyword(std::string_view line) {
  const auto blank = line.find(' ');
  if (blank == std::string_view::npos) return {};
  return trimmed(left_trimmed(line.substr(blank + 1)));
}

bool read_twin_block(std::FILE* f) {
  nmat = 0;
  if (f == nullptr) return true;
  std::string raw;
  while (next_line(f, raw)) {
    const std::string line = adjusted(raw);
    if (line[0] == '!' || line[0] == '#' || line[0] == ' ') continue;

    // A value ends before a "!" comment, or at the last non-blank column.
    const auto bang = line.find('!');
    const std::size_t last = bang != std::string::npos ? bang : trimmed(line).size();
    const std::string_view all(line);
    const std::string_view value = last >= 9 ? all.substr(8, last - 8) : std::string_view{};
    const std::string_view keyword = all.substr(0, 8);

    if (keyword == "TWIN_nam") {
      twin_name = all.substr(8);
    } else if (keyword == "TWIN_typ") {
      const auto v = read_integer(value);
      if (!v) return fail("Error reading the TWIN law file, item: TWIN_typ");
      itwin = *v;
      if (itwin < 1 || itwin > 3) return fail("Illegal TWIN_typ: It should be 1,2 or 3!");
    } else if (keyword == "TWIN_trf") {
      itransf = true;
      if (!read_matrix(value, tr)) return fail("Error reading the TWIN law file, item: TWIN_trf");
    } else if (keyword == "TWIN_mat") {
      if (nmat >= max_domains)
        return fail("Error reading the TWIN law file, item: TWIN_mat (more than 24 domains)");
      ++nmat;
      if (!read_matrix(value, twin[nmat]))
        return fail("Error reading the TWIN law file, item: TWIN_mat");
    } else if (keyword == "TWIN_ubm") {
      iubm = true;
      if (!read_matrix(value, ubm)) return fail("Error reading the TWIN law file, item: TWIN_ubm");
    } else if (keyword == "TWIN_mac") {
      machine = value;
    } else if (keyword == "TWIN_spg") {
      twin_spg = left_trimmed(value);
      ispg = true;
    } else if (keyword == "TWIN_end") {
      return true;
    }
  }
  return true;  // a block cut short by the end of the file still counts
}

// One keyword line of the main part; false stops the reading.
bool apply_key(const std::string& line) {
  const std::string key = lorx_string_utilities::u_case(std::string_view(line).substr(0, 5));
  const std::string_view col6 = from_column(line, 6);
  const std::string_view col7 = from_column(line, 7);

  if (key == "TITLE") {
    title = left_trimmed(col6);
  } else if (key == "INPFI") {
    file_dat = name_behind_keyword(line);
  } else if (key == "OUTFI") {
    file_out = name_behind_keyword(line);
  } else if (key == "KVEC ") {
    Vec3 v{};
    if (!read_reals(col6, v)) return fail("Error reading the propagation vector!");
    kv = v;
    prop = true;
  } else if (key == "TRANS") {
    const auto blank = line.find(' ');
    Mat3 m{};
    if (blank == std::string::npos || !read_matrix(std::string_view(line).substr(blank), m))
      return fail("Error reading the transformation matrix!");
    transhkl = m;
    transf_ind = true;
  } else if (key == "SCALE") {
    std::array<float, 1> v{};
    if (!read_reals(col7, v)) return fail("Error reading the scale factor!");
    scal_fact = v[0];
    scale_given = true;
  } else if (key == "SPGR ") {
    spgr = left_trimmed(col6);
  } else if (key == "EPSIL") {
    std::array<float, 1> v{};
    if (!read_reals(col7, v)) return fail("Error reading the EPSIL value!");
    epsg = v[0];
    eps_given = true;
  } else if (key == "NFRDL") {
    friedel = false;
  } else if (key == "CELL ") {
    std::array<float, 6> v{};
    if (!read_reals(col6, v)) return fail("Error reading the cell parameters!");
    std::copy_n(v.begin(), 3, cel.begin());
    std::copy_n(v.begin() + 3, 3, ang.begin());
    cell_given = true;
  } else if (key == "WAVE ") {
    std::array<float, 1> v{};
    if (!read_reals(col6, v)) return fail("Error reading the wavelength!");
    wavel = v[0];
    wave_given = true;
  } else if (key == "HKL_T") {
    const auto v = read_integer(col6);
    if (!v) return fail("Error reading the type of the reflection file!");
    hkl_type = *v;
  } else if (key == "WARN ") {
    std::array<float, 1> v{};
    if (!read_reals(col7, v)) return fail("Error reading the WARN value!");
    warning = v[0];
  } else if (key == "POWDE") {
    powder = true;
  } else if (key == "TWIN ") {
    if (!read_twin_block(open_job)) return false;
    twinned = true;
  } else if (key == "DOMAI") {
    domain = true;
  }
  return true;
}

// ---------------------------------------------------------------- writing

// Values in a layout of fields `width` columns wide. A value that the layout
// can't show, too large, infinite or not a number, gives asterisks.
std::string numbers(std::string_view descriptor, std::span<const float> values, std::size_t width) {
  std::vector<FormatArg> args(values.begin(), values.end());
  std::string out;
  if (!format_record(descriptor, args, out)) out.assign(values.size() * width, '*');
  for (std::size_t i = 0; i < values.size(); ++i)
    if (!std::isfinite(values[i]) && out.size() >= (i + 1) * width)
      out.replace(i * width, width, width, '*');
  return out;
}

std::string integer4(int value) {
  const std::array<FormatArg, 1> args{value};
  std::string out;
  if (!format_record("(I4)", args, out)) out = "****";
  return out;
}

std::array<float, 9> row_by_row(const Mat3& m) {
  std::array<float, 9> v{};
  for (int i = 0; i < 9; ++i) v[i] = m[i / 3][i % 3];
  return v;
}

std::string matrix(const Mat3& m) {
  const auto v = row_by_row(m);
  return std::string(trimmed(numbers("(9F12.4)", v, 12)));
}

std::string job_text() {
  std::string t;
  auto line = [&t](std::string_view keyword, std::string_view rest = {}) {
    t.append(keyword).append(rest).push_back('\n');
  };
  line("TITLE ", title.trim());
  line("INPFIL ", file_dat.trim());
  line("OUTFIL ", codefile.trim());
  if (cell_given) {
    const std::array<float, 6> v{cel[0], cel[1], cel[2], ang[0], ang[1], ang[2]};
    line("CELL ", trimmed(numbers("(3F12.6,3F12.4)", v, 12)));
  }
  if (!spgr.blank()) line("SPGR ", spgr.trim());
  if (wave_given) line("WAVE ", trimmed(numbers("(F12.5)", std::array{wavel}, 12)));
  line("HKL_T ", integer4(hkl_type));
  if (transf_ind) line("TRANSF ", matrix(transhkl));
  if (!friedel) line("NFRDL ");
  if (scale_given) line("SCALE ", numbers("(G12.4)", std::array{scal_fact}, 12));
  if (powder) line("POWDER ");
  if (eps_given) line("EPSIL ", numbers("(F12.4)", std::array{epsg}, 12));
  if (prop) line("KVEC ", numbers("(3F12.4)", kv, 12));
  if (domain) line("DOMAIN ");
  if (twinned) {
    line("TWIN ");
    line("TWIN_nam ", twin_name.trim());
    line("TWIN_typ ", integer4(itwin));
    if (itransf) line("TWIN_trf ", matrix(tr));
    for (int i = 1; i <= std::min(nmat, max_domains); ++i) line("TWIN_mat ", matrix(twin[i]));
    if (iubm) line("TWIN_ubm ", matrix(ubm));
    line("TWIN_mac ", machine.trim());
    if (ispg) line("TWIN_spg ", twin_spg.trim());
    line("TWIN_end ");
  }
  return t;
}

bool write_all(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t n = ::write(fd, text.data(), text.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(n));
  }
  return true;
}

// Writes the text to a temporary file beside the target and renames it over
// the target only when all of it is on disk, so that a failed save leaves the
// old job file as it was.
bool save_whole(const std::string& name, std::string_view text) {
  if (name.empty()) return false;
  std::error_code ec;
  fs::path target(name);
  // Saving through a link replaces the file it points to, not the link.
  if (fs::is_symlink(target, ec)) {
    const fs::path real = fs::canonical(target, ec);
    if (!ec) target = real;
  }
  mode_t mode = 0;
  struct stat st{};
  if (::stat(target.c_str(), &st) == 0) {
    // A write-protected job file stays protected, as it would with a direct write.
    if (!S_ISREG(st.st_mode) || ::access(target.c_str(), W_OK) != 0) return false;
    mode = st.st_mode & 07777;
  } else {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    mode = 0666 & ~mask;
  }
  std::string temp = (target.parent_path() / ".omb-save-XXXXXX").string();
  const int fd = ::mkstemp(temp.data());
  if (fd < 0) return false;
  bool ok = write_all(fd, text) && ::fchmod(fd, mode) == 0 && ::fsync(fd) == 0;
  ok = ::close(fd) == 0 && ok;
  ok = ok && ::rename(temp.c_str(), target.c_str()) == 0;
  if (!ok) ::unlink(temp.c_str());
  return ok;
}

}  // namespace

namespace job_file {

void set_message_sink(MessageSink sink) { message_sink = std::move(sink); }

}  // namespace job_file

namespace data_proc {

void read_ombrel_file() {
  const std::string name(file_inp.trim());
  std::error_code ec;
  if (name.empty() || !fs::exists(name, ec)) {
    fail("Cannot Found the Input Ombrel File!");
    return;
  }
  FilePtr file(fs::is_directory(name, ec) ? nullptr : std::fopen(name.c_str(), "rb"));
  if (!file) {
    fail("Open procedure was impossible for the Input Ombrel File!");
    return;
  }
  const OpenJob job(file.get());
  std::string raw;
  while (next_line(file.get(), raw)) {
    const std::string line = adjusted(raw);
    if (line[0] == '!' || line[0] == ' ') continue;
    if (!apply_key(line)) break;
  }
}

void read_twinlaw() {
  // Without a job file being read there is nothing to go on with: an empty block.
  read_twin_block(open_job);
}

void write_ombrel_file() {
  if (!save_whole(file_inp.str(), job_text()))
    fail("Save procedure was impossible for the Input Ombrel File!");
}

}  // namespace data_proc
