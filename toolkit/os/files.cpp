#include "toolkit/os/files.h"

#include <dirent.h>
#include <fnmatch.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/wait.h>
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
#include "toolkit/base/zelvy_data.h"
#include "toolkit/os/datetime.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/text.h"

extern char** environ;

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

// Runs a command through /bin/sh, its error output discarded, and waits for it.
// The exit code is the command's business; only a failure to run it or its death
// by a signal is an error (13, with the error number in iapierr).
int run_shell(const std::string& command) {
  const std::string line = command + " 2> /dev/null";
  std::fflush(nullptr);
  const pid_t pid = ::fork();
  if (pid < 0) {
    zelvy_data::data().iapierr = errno;
    return 13;
  }
  if (pid == 0) {
    const char* argv[] = {"sh", "-c", line.c_str(), nullptr};
    ::execve("/bin/sh", const_cast<char* const*>(argv), environ);
    ::_exit(127);  // no exit handlers in the child: they belong to the parent
  }
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) {
      zelvy_data::data().iapierr = errno;
      return 13;
    }
  }
  if (!WIFEXITED(status)) {
    zelvy_data::data().iapierr = 0;
    return 13;
  }
  return 0;
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

// The glob patterns of a pattern text: separated by blanks, or in double quotes.
std::vector<std::string> split_patterns(std::string_view text) {
  std::vector<std::string> out;
  std::size_t i = 0;
  while (i < text.size()) {
    if (text[i] == ' ' || text[i] == '\0') {
      ++i;
    } else if (text[i] == '"') {
      const auto end = text.find('"', i + 1);
      out.emplace_back(text.substr(i + 1, end == std::string_view::npos ? std::string_view::npos : end - i - 1));
      i = end == std::string_view::npos ? text.size() : end + 1;
    } else {
      const auto end = std::min(text.find_first_of(std::string_view(" \0", 2), i), text.size());
      out.emplace_back(text.substr(i, end - i));
      i = end;
    }
  }
  return out;
}

struct DirEntry {
  std::string name;
  int date = 0;
  int size = 0;
};

struct DirCloser {
  void operator()(DIR* d) const { ::closedir(d); }
};

int clamp_int(long long v) { return v > INT_MAX ? INT_MAX : v < INT_MIN ? INT_MIN : static_cast<int>(v); }

// The entries a listing takes, in directory order, at most `limit` of them.
std::vector<DirEntry> list_entries(std::string_view dir, std::string_view pattern, int flags, std::size_t limit) {
  std::vector<DirEntry> out;
  std::string base = plain(dir);
  if (base.empty()) base = ".";
  std::unique_ptr<DIR, DirCloser> d(::opendir(base.c_str()));
  if (!d) return out;
  const std::vector<std::string> patterns = split_patterns(trimmed(pattern));
  const int match_flags = (flags & kDirMatchPeriod) ? FNM_PERIOD : 0;
  const int info = zelvy_data::data().idirinfo;
  while (out.size() < limit) {
    const dirent* e = ::readdir(d.get());
    if (!e) break;
    const std::string name = e->d_name;
    const bool dots = name == "." || name == "..";
    if (name[0] == '.' && !(flags & kDirHidden)) continue;
    long long size = 0, mtime = 0;
    int mode = 0;
    const bool exists = yyosstat(base + "/" + name, size, mtime, mode) == 0;
    const int type = !exists ? kPathNone : S_ISDIR(mode) ? kPathDirectory : kPathFile;
    if (type == kPathFile && !(info & 1)) continue;
    if (type == kPathDirectory && (!(info & 2) || (dots && (flags & kDirNoDots)))) continue;
    if (type == kPathNone) continue;
    if (!patterns.empty()) {
      bool matched = false;
      for (const auto& p : patterns)
        if (::fnmatch(p.c_str(), name.c_str(), match_flags) == 0) {
          matched = true;
          break;
        }
      if (!matched) continue;
    }
    out.push_back({name, clamp_int(mtime), clamp_int(size)});
  }
  return out;
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
  iosfiledate(stamp, y, mo, d);
  iosfiletime(stamp, h, mi, s);
  return {yyjulianday(y, mo, d), h * 3600 + mi * 60 + s};
}

// Selection sort in place: the listings are small, and the order of equal keys
// is that of this sort.
void sort_entries(std::vector<DirEntry>& v, int flags) {
  const int key = (flags & kDirSortName) ? kDirSortName
                  : (flags & kDirSortDate) ? kDirSortDate
                  : (flags & kDirSortSize) ? kDirSortSize
                  : (flags & kDirSortExtension) ? kDirSortExtension
                                                : kDirSortName;
  const bool no_case = flags & kDirNoCase;
  const bool reverse = flags & kDirReverse;
  // Keys are made once per entry: the sort compares each pair.
  struct Keyed {
    DirEntry entry;
    std::string name, extension;
    std::pair<int, int> when;
  };
  std::vector<Keyed> k;
  k.reserve(v.size());
  for (auto& e : v) {
    Keyed x{std::move(e), {}, {}, {}};
    x.name = no_case ? lowered(x.entry.name) : x.entry.name;
    if (key == kDirSortExtension) x.extension = extension_of(x.entry.name, no_case);
    if (key == kDirSortDate) x.when = day_and_second(x.entry.date);
    k.push_back(std::move(x));
  }
  auto less = [&](const Keyed& a, const Keyed& b) {
    switch (key) {
      case kDirSortDate: return a.when < b.when;
      case kDirSortSize: return a.entry.size < b.entry.size;
      case kDirSortExtension: return a.extension != b.extension ? a.extension < b.extension : a.name < b.name;
      default: return a.name < b.name;
    }
  };
  for (std::size_t i = 0; i + 1 < k.size(); ++i) {
    std::size_t pick = i;
    for (std::size_t j = i + 1; j < k.size(); ++j)
      if (reverse ? less(k[pick], k[j]) : less(k[j], k[pick])) pick = j;
    if (pick != i) std::swap(k[i], k[pick]);
  }
  for (std::size_t i = 0; i < k.size(); ++i) v[i] = std::move(k[i].entry);
}

void split_stamp(int stamp, std::tm& tm) {
  const std::time_t t = stamp;
  tm = {};
  localtime_r(&t, &tm);
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
    std::unique_ptr<DIR, DirCloser> d(::opendir(root.c_str()));
    if (!d) {
      os_error(errno, "IOsDeleteTree");
      return;
    }
    std::vector<std::string> names;
    while (const dirent* e = ::readdir(d.get())) {
      const std::string name = e->d_name;
      if (name != "." && name != "..") names.push_back(name);
    }
    d.reset();
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
  count = static_cast<int>(list_entries(dir, pattern, flags.value_or(kDirSortName), SIZE_MAX).size());
}

void IOsDirInfo(std::string_view dir, std::string_view pattern, std::span<std::string> names, int& count,
                std::span<int> dates, std::span<int> sizes, std::optional<int> flags) {
  const int f = flags.value_or(kDirSortName);
  const std::size_t room = count <= 0 ? 0 : std::min(static_cast<std::size_t>(count), names.size());
  std::vector<DirEntry> entries = list_entries(dir, pattern, f, room);
  sort_entries(entries, f);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    assign_out(names[i], entries[i].name);
    if (i < dates.size()) dates[i] = entries[i].date;
    if (i < sizes.size()) sizes[i] = entries[i].size;
  }
  count = static_cast<int>(entries.size());
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
  if (int err = run_shell("cp " + shell_word(from) + " " + shell_word(to))) yyerror(err, "IOsCopyFile");
}

void IOsDeleteFile(std::string_view file, std::optional<int> flags) {
  const std::string name = plain(file);
  if (name.empty()) return;
  if (flags.value_or(0) & 1) {
    if (int err = yyosdeletefile(name)) os_error(err, "IOsDeleteFile");
    return;
  }
  if (int err = run_shell("rm " + shell_pattern(name))) yyerror(err, "IOsDeleteFile");
}

void iosfileinfo(std::string_view file, std::span<int> values, int count) {
  const std::size_t n = std::min<std::size_t>({values.size(), 10, static_cast<std::size_t>(std::max(count, 1))});
  if (n == 0) return;
  long long size = 0, mtime = 0;
  int mode = 0;
  const std::string path = plain(file);
  int out[10] = {-1, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  if (!path.empty() && yyosstat(path, size, mtime, mode) == 0) {
    std::tm tm{};
    const std::time_t t = static_cast<std::time_t>(mtime);
    localtime_r(&t, &tm);
    out[0] = clamp_int(size);
    out[1] = tm.tm_year + 1900;
    out[2] = tm.tm_mon + 1;
    out[3] = tm.tm_mday;
    out[4] = tm.tm_hour;
    out[5] = tm.tm_min;
    out[6] = tm.tm_sec;
    out[7] = mode;
    out[8] = clamp_int((size + 1023) / 1024);
    out[9] = S_ISDIR(mode) ? kPathDirectory : kPathFile;
  }
  std::copy_n(out, n, values.begin());
}

void iosfiledate(int stamp, int& year, int& month, int& day) {
  std::tm tm{};
  split_stamp(stamp, tm);
  year = tm.tm_year + 1900;
  month = tm.tm_mon + 1;
  day = tm.tm_mday;
}

void iosfiletime(int stamp, int& hour, int& minute, int& second) {
  std::tm tm{};
  split_stamp(stamp, tm);
  hour = tm.tm_hour;
  minute = tm.tm_min;
  second = tm.tm_sec;
}

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
