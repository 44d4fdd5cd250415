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

// Reals in free format: blanks or commas between values. Fails with fewer
// values than wanted, or one that no 32-bit real holds.
bool read_reals(std::string_view text, std::span<float> out) {
  std::string work(text);
  std::replace(work.begin(), work.end(), ',', ' ');
  std::array<float, kMaxValues> reals{};
  std::array<int, kMaxValues> ints{};
  int count = 0;
  lorx_string_utilities::getnum(work, std::span(reals).first(out.size()),
                                std::span(ints).first(out.size()), count);
  if (count < static_cast<int>(out.size())) return false;
  for (std::size_t i = 0; i < out.size(); ++i)
    if (!std::isfinite(reals[i])) return false;
  std::copy_n(reals.begin(), out.size(), out.begin());
  return true;
}

bool read_matrix(std::string_view text, Mat3& m) {
  std::array<float, 9> v{};
  if (!read_reals(text, v)) return false;
  for (int i = 0; i < 9; ++i) m[i / 3][i % 3] = v[i];
  return true;
}

// The first word as a 32-bit integer: a fraction, an exponent or a value out
// of range is no integer.
std::optional<int> read_integer(std::string_view text) {
  const auto start = text.find_first_not_of(" ,");
  if (start == std::string_view::npos) return std::nullopt;
  auto word = text.substr(start, text.find_first_of(" ,", start) - start);
  if (word.size() > 1 && word[0] == '+' && word[1] != '-') word.remove_prefix(1);
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
