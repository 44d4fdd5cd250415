#include "toolkit/os/files.h"

#include <dirent.h>
#include <fnmatch.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "toolkit/base/error.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/text.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/os/command.h"
#include "toolkit/os/datetime.h"

namespace {

// A name from its first to its last non-blank character.
std::string plain(std::string_view s) { return std::string(left_trimmed(trimmed(s))); }

void os_error(int err, std::string_view routine) {
  zelvy_data::data().iapierr = err;
  yyerror(13, routine);
}

std::vector<std::string> command_line() {
  std::ifstream in("/proc/self/cmdline", std::ios::binary);
  std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::vector<std::string> args;
  std::size_t start = 0;
  while (start < all.size()) {
    const auto end = all.find('\0', start);
    args.push_back(all.substr(start, end - start));
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return args;
}

// Runs a command through the shell, waiting for it, its error output discarded.
// The exit code is the command's business; a failure to run it is raised under
// the caller's name, error 13 with the system's number in iapierr.
void run_shell(std::string_view command, std::string_view routine) {
  CommandStatus status;
  const int err = yyoscommand(command, kCmdWait | kCmdDiscardErrors, -1, status);
  if (err == 13) os_error(status.os_error, routine);
  else if (err != 0) yyerror(err, routine);
}

// A name with an unescaped blank goes to the shell in double quotes.
std::string shell_word(const std::string& name) {
  if (!name.empty() && name.front() == '"') return name;
  for (std::size_t i = 0; i < name.size(); ++i)
    if (name[i] == ' ' && (i == 0 || name[i - 1] != '\\')) return '"' + name + '"';
  return name;
}

// Blanks escaped one by one, so that wildcards in the name still expand.
std::string shell_pattern(const std::string& name) {
  if (!name.empty() && name.front() == '"') return name;
  std::string out;
  for (std::size_t i = 0; i < name.size(); ++i) {
    if (name[i] == ' ' && (i == 0 || name[i - 1] != '\\')) out += '\\';
    out += name[i];
  }
  return out;
}

// The glob patterns of a pattern text, parsed once for a whole listing.
std::vector<std::string> split_patterns(std::string_view text) {
  std::vector<std::string> out;
  std::size_t pos = 0;
  for (std::string p; yylocatevalue(text, pos, p);) out.push_back(std::move(p));
  return out;
}

struct DirEntry {
  std::string name;
  int date = 0;
  int size = 0;
};

int clamp_int(long long v) { return v > INT_MAX ? INT_MAX : v < INT_MIN ? INT_MIN : static_cast<int>(v); }

bool matches_any(const std::vector<std::string>& patterns, const std::string& name, bool period) {
  if (patterns.empty()) return true;
  for (const auto& p : patterns)
    if (yyosdirmatch(name, p, period)) return true;
  return false;
}

// The entries a listing takes, in directory order, at most `limit` of them.
// Returns the system's error number of a failed open or read.
int list_entries(std::string_view dir, std::string_view pattern, int flags, std::size_t limit,
                 std::vector<DirEntry>& out) {
  out.clear();
  std::string base = plain(dir);
  if (base.empty()) base = ".";
  OsDir d;
  if (int err = yyosdiropen(base, d)) return err;
  const std::vector<std::string> patterns = split_patterns(trimmed(pattern));
  const bool period = flags & kDirMatchPeriod;
  const int info = zelvy_data::data().idirinfo;
  std::string name;
  while (out.size() < limit) {
    if (int err = yyosdirread(d, name)) return err;
    if (name.empty()) break;
    if (name[0] == '.' && !(flags & kDirHidden)) continue;
    long long size = 0, mtime = 0;
    int mode = 0;
    // A link that leads nowhere has no type and is no entry of either kind.
    if (yyosstat(base + "/" + name, size, mtime, mode) != 0) continue;
    if (S_ISDIR(mode)) {
      const bool dots = name == "." || name == "..";
      if (!(info & 2) || (dots && (flags & kDirNoDots))) continue;
    } else if (!(info & 1)) {
      continue;
    }
    if (!matches_any(patterns, name, period)) continue;
    out.push_back({name, clamp_int(mtime), clamp_int(size)});
  }
  return 0;
}

std::string lowered(std::string s) {
  ilowercase(s);
  return s;
}

std::string extension_of(const std::string& name, bool no_case) {
  std::string ext;
  wfileextension(name, ext, no_case ? 1 : 0);
  return ext;
}

// Day and second of a time stamp in local time, for ordering by date.
std::pair<int, int> day_and_second(int stamp) {
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
  yyosfiledate(stamp, y, mo, d);
  yyosfiletime(stamp, h, mi, s);
  return {yyjulianday(y, mo, d), h * 3600 + mi * 60 + s};
}

// Selection sort: each step swaps the first best of the rest into place, which
// fixes the order of equal keys. A tournament tree over the positions finds that
// entry in logarithmic time, so a directory of thousands of files sorts at once
// with the same outcome.
template <class Better>
std::vector<std::size_t> selection_order(std::size_t n, const Better& better) {
  constexpr std::size_t kNone = SIZE_MAX;
  std::vector<std::size_t> at(n);  // entry standing at each position
  for (std::size_t i = 0; i < n; ++i) at[i] = i;
  std::size_t leaves = 1;
  while (leaves < n) leaves *= 2;
  // Node: the position of its range's first best entry, kNone when empty.
  std::vector<std::size_t> tree(2 * leaves, kNone);
  const auto winner = [&](std::size_t left, std::size_t right) {
    if (left == kNone) return right;
    if (right == kNone) return left;
    return better(at[right], at[left]) ? right : left;  // a tie keeps the earlier position
  };
  const auto replay = [&](std::size_t pos) {
    for (std::size_t node = (leaves + pos) / 2; node >= 1; node /= 2)
      tree[node] = winner(tree[2 * node], tree[2 * node + 1]);
  };
  for (std::size_t i = 0; i < n; ++i) tree[leaves + i] = i;
  for (std::size_t node = leaves - 1; node >= 1; --node) tree[node] = winner(tree[2 * node], tree[2 * node + 1]);
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t pick = tree[1];
    if (pick != i) {
      std::swap(at[i], at[pick]);
      replay(pick);
    }
    tree[leaves + i] = kNone;
    replay(i);
  }
  return at;
}

void sort_entries(std::vector<DirEntry>& v, int flags) {
  const int key = (flags & kDirSortName) ? kDirSortName
                  : (flags & kDirSortDate) ? kDirSortDate
                  : (flags & kDirSortSize) ? kDirSortSize
                  : (flags & kDirSortExtension) ? kDirSortExtension
                                                : kDirSortName;
  const bool no_case = flags & kDirNoCase;
  const bool reverse = flags & kDirReverse;
  // Keys are made once per entry, not once per comparison.
  struct Keys {
    std::string name, extension;
    std::pair<int, int> when;
  };
  std::vector<Keys> k;
  k.reserve(v.size());
  for (const auto& e : v) {
    Keys x{no_case ? lowered(e.name) : e.name, {}, {}};
    if (key == kDirSortExtension) x.extension = extension_of(e.name, no_case);
    if (key == kDirSortDate) x.when = day_and_second(e.date);
    k.push_back(std::move(x));
  }
  const auto less = [&](std::size_t a, std::size_t b) {
    switch (key) {
      case kDirSortDate: return k[a].when < k[b].when;
      case kDirSortSize: return v[a].size < v[b].size;
      case kDirSortExtension:
        return k[a].extension != k[b].extension ? k[a].extension < k[b].extension : k[a].name < k[b].name;
      default: return k[a].name < k[b].name;
    }
  };
  const auto order =
      selection_order(v.size(), [&](std::size_t a, std::size_t b) { return reverse ? less(b, a) : less(a, b); });
  std::vector<DirEntry> sorted;
  sorted.reserve(v.size());
  for (const std::size_t i : order) sorted.push_back(std::move(v[i]));
  v = std::move(sorted);
}

std::tm local_time(long long stamp) {
  const auto t = static_cast<std::time_t>(stamp);
  std::tm tm{};
  localtime_r(&t, &tm);
  return tm;
}

[[noreturn]] void exit_with_line(std::string_view message, const std::string& code_field, int code) {
  if (!is_blank(message)) {
    std::printf("Abnormal exit (code %s) : %.*s\n", code_field.c_str(), static_cast<int>(trimmed(message).size()),
                trimmed(message).data());
  }
  yyosexitprogram(code);
}

}  // namespace

// ---------------------------------------------------------------------------
// The layer below

int yyosargument(int index, std::string& text) {
  const auto args = command_line();
  text.clear();
  if (index < 0 || static_cast<std::size_t>(index) >= args.size()) return EINVAL;
  text = args[static_cast<std::size_t>(index)];
  return 0;
}

int yyosargcount() {
  const auto n = command_line().size();
  return n == 0 ? 0 : static_cast<int>(n) - 1;
}

int yyosdirname(std::string& dir, std::size_t size) {
  std::string buf(size, '\0');
  if (!::getcwd(buf.data(), buf.size())) {
    dir.clear();
    return errno;
  }
  dir.assign(buf.c_str());
  return 0;
}

int yyosdirchange(std::string_view dir) { return ::chdir(std::string(dir).c_str()) == 0 ? 0 : errno; }
int yyosdirmake(std::string_view dir) { return ::mkdir(std::string(dir).c_str(), 0777) == 0 ? 0 : errno; }
int yyosdirdelete(std::string_view dir) { return ::rmdir(std::string(dir).c_str()) == 0 ? 0 : errno; }

int yyospathtype(std::string_view path) {
  struct stat st {};
  if (path.empty() || ::stat(std::string(path).c_str(), &st) != 0) return kPathNone;
  return S_ISDIR(st.st_mode) ? kPathDirectory : kPathFile;
}

int yyosstat(std::string_view path, long long& size, long long& mtime, int& mode) {
  struct stat st {};
  if (::stat(std::string(path).c_str(), &st) != 0) return errno;
  size = st.st_size;
  mtime = st.st_mtime;
  mode = static_cast<int>(st.st_mode);
  return 0;
}

// The handle is the system's stream itself under an opaque name: nothing to
// allocate, and the public header stays free of the system's types.
namespace {
DIR* stream_of(OsDirStream* s) { return reinterpret_cast<DIR*>(s); }
}  // namespace

void OsDirClose::operator()(OsDirStream* stream) const { ::closedir(stream_of(stream)); }

int yyosdiropen(std::string_view dir, OsDir& handle) {
  handle.reset();
  DIR* d = ::opendir(std::string(dir).c_str());
  if (!d) return errno;
  handle.reset(reinterpret_cast<OsDirStream*>(d));
  return 0;
}

int yyosdirread(OsDir& handle, std::string& name) {
  name.clear();
  if (!handle) return 0;
  errno = 0;  // readdir tells the end from a failure only by errno
  const dirent* e = ::readdir(stream_of(handle.get()));
  if (!e) return errno;
  name = e->d_name;
  return 0;
}

bool yyosdirmatch(std::string_view name, std::string_view pattern, bool period) {
  return ::fnmatch(std::string(pattern).c_str(), std::string(name).c_str(), period ? FNM_PERIOD : 0) == 0;
}

int yyosdirclose(OsDir& handle) {
  if (!handle) return 0;
  return ::closedir(stream_of(handle.release())) == 0 ? 0 : errno;
}

bool yylocatevalue(std::string_view text, std::size_t& pos, std::string& value) {
  value.clear();
  const auto separator = [](char c) { return c == ' ' || c == '\0'; };
  while (pos < text.size() && separator(text[pos])) ++pos;
  if (pos >= text.size()) return false;
  if (text[pos] == '"') {
    const auto end = text.find('"', pos + 1);
    const auto stop = end == std::string_view::npos ? text.size() : end;
    value = text.substr(pos + 1, stop - pos - 1);
    pos = end == std::string_view::npos ? text.size() : end + 1;
    return true;
  }
  const auto start = pos;
  while (pos < text.size() && !separator(text[pos])) ++pos;
  value = text.substr(start, pos - start);
  return true;
}

int yyosfileinfo(std::string_view path, std::array<int, kFileInfoCount>& values) {
  values.fill(0);
  values[0] = -1;
  long long size = 0, mtime = 0;
  int mode = 0;
  if (path.empty()) return ENOENT;
  if (int err = yyosstat(path, size, mtime, mode)) return err;
  const std::tm tm = local_time(mtime);
  values = {clamp_int(size),
            tm.tm_year + 1900,
            tm.tm_mon + 1,
            tm.tm_mday,
            tm.tm_hour,
            tm.tm_min,
            tm.tm_sec,
            mode,
            clamp_int((size + 1023) / 1024),
            S_ISDIR(mode) ? kPathDirectory : kPathFile};
  return 0;
}

void yyosfiledate(long long stamp, int& year, int& month, int& day) {
  const std::tm tm = local_time(stamp);
  year = tm.tm_year + 1900;
  month = tm.tm_mon + 1;
  day = tm.tm_mday;
}

void yyosfiletime(long long stamp, int& hour, int& minute, int& second) {
  const std::tm tm = local_time(stamp);
  hour = tm.tm_hour;
  minute = tm.tm_min;
  second = tm.tm_sec;
}

int yyosdeletefile(std::string_view file) { return ::unlink(std::string(file).c_str()) == 0 ? 0 : errno; }

int yyosrenamefile(std::string_view from, std::string_view to) {
  return std::rename(std::string(from).c_str(), std::string(to).c_str()) == 0 ? 0 : errno;
}

int yyosvariable(std::string_view name, std::string& value) {
  const char* v = std::getenv(std::string(name).c_str());
  value = v ? v : "";
  return v ? 0 : ENOENT;
}

int yyosvariableput(std::string_view name, std::string_view value) {
  return ::setenv(std::string(name).c_str(), std::string(value).c_str(), 1) == 0 ? 0 : errno;
}

std::string yyoserrorstr(int err) { return std::strerror(err); }

int yyosgethomedir(std::string& dir) {
  dir.clear();
  long n = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buf(n > 0 ? static_cast<std::size_t>(n) : 16384);
  passwd pw{};
  passwd* found = nullptr;
  const int err = ::getpwuid_r(::getuid(), &pw, buf.data(), buf.size(), &found);
  if (err != 0) return err;
  if (!found || !found->pw_dir) return ENOENT;
  dir = found->pw_dir;
  return 0;
}

int yyosregistryfile(std::string& file) {
  std::string dir;
  if (yyosvariable("XDG_CONFIG_HOME", dir) != 0 || dir.empty()) {
    if (yyosvariable("HOME", dir) != 0 || dir.empty()) {
      if (const int err = yyosgethomedir(dir); err != 0) {
        file.clear();
        return err;
      }
    }
    dir += "/.config";
  }
  file = dir + "/zelvy.reg";
  return 0;
}

int yyosuserid() { return static_cast<int>(::getuid()); }

int yyosversion(std::string& release) {
  utsname u{};
  if (::uname(&u) != 0) return errno;
  release = u.release;
  return 0;
}

void yyosexitprogram(int code) {
  std::fflush(stdout);
  std::_Exit(code);
}

// ---------------------------------------------------------------------------
// Public routines

void iosargument(int index, std::string& text) {
  std::string arg;
  yyosargument(index, arg);
  assign_out(text, arg);
}

void IOsDirName(std::string& dir) {
  std::string cwd;
  const bool bounded = !dir.empty();
  int err = 0;
  if (bounded) {
    err = yyosdirname(cwd, dir.size() + 1);
  } else {
    for (std::size_t size = 256;; size *= 2) {
      err = yyosdirname(cwd, size);
      if (err != ERANGE || size > (1u << 20)) break;
    }
  }
  if (err != 0) {
    assign_out(dir, "");
    if (err == ERANGE) yyerror(1023, "IOsDirName");
    else os_error(err, "IOsDirName");
    return;
  }
  if (cwd.size() > 1 && cwd.back() == '/') cwd.pop_back();
  assign_out(dir, cwd);
}

void IOsDirChange(std::string_view dir) {
  if (int err = yyosdirchange(plain(dir))) os_error(err, "IOsDirChange");
}

void IOsDirMake(std::string_view dir) {
  if (int err = yyosdirmake(plain(dir))) os_error(err, "IOsDirMake");
}

void IOsDirDelete(std::string_view dir) {
  if (int err = yyosdirdelete(plain(dir))) os_error(err, "IOsDirDelete");
}

void iosdeletetree(std::string_view dir) {
  const std::string root = plain(dir);
  struct stat st {};
  if (root.empty() || ::lstat(root.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return;
  {
    OsDir d;
    std::vector<std::string> names;
    int err = yyosdiropen(root, d);
    for (std::string name; err == 0;) {
      err = yyosdirread(d, name);
      if (name.empty()) break;
      if (name != "." && name != "..") names.push_back(name);
    }
    if (err != 0) {
      os_error(err, "IOsDeleteTree");
      return;
    }
    // Closed before the entries go: a deep tree holds no descriptor per level.
    yyosdirclose(d);
    for (const auto& name : names) {
      const std::string path = root + "/" + name;
      struct stat est {};
      if (::lstat(path.c_str(), &est) != 0) continue;
      if (S_ISDIR(est.st_mode)) iosdeletetree(path);
      else if (int err = yyosdeletefile(path)) os_error(err, "IOsDeleteTree");
    }
  }
  if (int err = yyosdirdelete(root)) os_error(err, "IOsDeleteTree");
}

bool iosdirexists(std::string_view path) {
  const std::string p = plain(path);
  if (p.empty()) return false;
  if (p == "/") return true;
  return yyospathtype(p) == kPathDirectory;
}

bool iosfileexists(std::string_view path) { return iospathtype(path) == kPathFile; }

int iospathtype(std::string_view path) { return yyospathtype(plain(path)); }

void iosdirentrytype(std::string_view options) {
  int info = 0;
  if (options.find_first_of("Ff") != std::string_view::npos) info |= 1;
  if (options.find_first_of("Dd") != std::string_view::npos) info |= 2;
  if (info != 0) zelvy_data::data().idirinfo = info;
}

void IOsDirCount(std::string_view dir, std::string_view pattern, int& count, std::optional<int> flags) {
  std::vector<DirEntry> entries;
  const int err = list_entries(dir, pattern, flags.value_or(kDirSortName), SIZE_MAX, entries);
  count = static_cast<int>(entries.size());
  if (err != 0) os_error(err, "IOsDirCount");
}

void IOsDirInfo(std::string_view dir, std::string_view pattern, std::span<std::string> names, int& count,
                std::span<int> dates, std::span<int> sizes, std::optional<int> flags) {
  const int f = flags.value_or(kDirSortName);
  const std::size_t room = count <= 0 ? 0 : std::min(static_cast<std::size_t>(count), names.size());
  std::vector<DirEntry> entries;
  const int err = list_entries(dir, pattern, f, room, entries);
  sort_entries(entries, f);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    assign_out(names[i], entries[i].name);
    if (i < dates.size()) dates[i] = entries[i].date;
    if (i < sizes.size()) sizes[i] = entries[i].size;
  }
  count = static_cast<int>(entries.size());
  if (err != 0) os_error(err, "IOsDirInfo");
}

void IOsCopyFile(std::string_view source, std::string_view target) {
  const std::string from = plain(source);
  if (from.empty()) return;
  std::string to = plain(target);
  if (to.empty() || to.back() == '/') {
    const auto sep = from.rfind('/');
    to += sep == std::string::npos ? from : from.substr(sep + 1);
  }
  if (from == to) {
    yyerror(55, "IOsCopyFile");
    return;
  }
  run_shell("cp " + shell_word(from) + " " + shell_word(to), "IOsCopyFile");
}

void IOsDeleteFile(std::string_view file, std::optional<int> flags) {
  const std::string name = plain(file);
  if (name.empty()) return;
  if (flags.value_or(0) & 1) {
    if (int err = yyosdeletefile(name)) os_error(err, "IOsDeleteFile");
    return;
  }
  run_shell("rm " + shell_pattern(name), "IOsDeleteFile");
}

void iosfileinfo(std::string_view file, std::span<int> values, int count) {
  std::array<int, kFileInfoCount> all{};
  yyosfileinfo(plain(file), all);
  const auto n = std::min({values.size(), all.size(), static_cast<std::size_t>(std::max(count, 1))});
  std::copy_n(all.begin(), n, values.begin());
}

void iosfiledate(int stamp, int& year, int& month, int& day) { yyosfiledate(stamp, year, month, day); }

void iosfiletime(int stamp, int& hour, int& minute, int& second) { yyosfiletime(stamp, hour, minute, second); }

void iosfullpathname(std::string_view path, std::string& full) {
  std::string p = plain(path);
  if (p.empty() || p.front() != '/') {
    std::string cwd;
    IOsDirName(cwd);
    p = cwd + "/" + p;
  }
  for (std::size_t pos; (pos = p.find("/./")) != std::string::npos;) p.erase(pos, 2);
  if (!full.empty() && p.size() > full.size()) {
    assign_out(full, "");
    yyerror(1023, "IOsFullPathName");
    return;
  }
  assign_out(full, p);
}

void IOsVariable(std::string_view name, std::string& value) {
  std::string v;
  yyosvariable(plain(name), v);
  if (!value.empty() && v.size() > value.size()) {
    assign_out(value, "");
    yyerror(1023, "IOsVariable");
    return;
  }
  assign_out(value, v);
}

void iosexitprogram(std::string_view message, int code) {
  std::string field = std::to_string(code);
  field = field.size() > 4 ? std::string(4, '*') : padded(field, 4);
  exit_with_line(message, field, code);
}

void IOsExitProgram(std::string_view message, int code) {
  std::string field = std::to_string(code);
  if (field.size() > 4) field = std::string(4, '*');
  exit_with_line(message, field, code);
}
