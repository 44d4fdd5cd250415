// Toolkit start-up: the order of WInitialise, zelvy.ini, environment, system facts.
#include "toolkit/kernel/startup.h"
#include "toolkit/os/command.h"
#include "toolkit/kernel/message_private.h"

#include <langinfo.h>
#include <locale.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/os_bridge.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/fixed_text.h"

namespace {

constexpr const char* kVersion = "12.0e";
constexpr std::size_t kIniRecord = 1034;


std::string upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

// Whole-token integer reading: a value with anything else in it is no integer.
bool read_integer(std::string_view text, int& value) {
  text = trimmed(left_trimmed(text));
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty()) return false;
  auto [p, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  return ec == std::errc() && p == text.data() + text.size();
}

// First non-empty of the variables, for the locale fall-backs.
std::string first_set(std::initializer_list<const char*> names) {
  for (const char* n : names) {
    std::string v = kernel_os::env(n);
    if (!v.empty()) return v;
  }
  return {};
}

}  // namespace

void yyxkeysymdb() {
  if (kernel_os::file_exists(kernel_os::env("XKEYSYMDB"))) return;
  for (const char* path : {"/usr/share/X11/XKeysymDB", "/usr/X11R6/lib/X11/XKeysymDB",
                           "/usr/X11/share/X11/XKeysymDB"}) {
    if (kernel_os::file_exists(path)) {
      ::setenv("XKEYSYMDB", path, 1);
      return;
    }
  }
}

void yywinitialise() {
  auto& d = zelvy_data::data();
  d.cdirsep = '/';
  d.idecimal = 0;
  d.cdecimal = ' ';
  std::string base(trimmed(kernel_os::env("ZELVY")));
  if (!base.empty()) {
    if (base.back() != '/') base += '/';
  } else {
    base = trimmed(kernel_os::env("ZELVIDE"));
    if (!base.empty()) {
      auto at = upper(base).rfind("ZELVIDE");
      if (at != std::string::npos) base.resize(at);
    }
  }
  d.cdefdir[1] = base;
}

std::string yyinifilename() {
  std::string init = kernel_os::env("ZELVINIT");
  if (kernel_os::file_exists(init)) return init;
  if (kernel_os::file_exists("zelvy.ini")) return "zelvy.ini";
  const std::string& base = zelvy_data::data().cdefdir[1];
  if (!base.empty() && kernel_os::file_exists(base + "zelvy.ini")) return base + "zelvy.ini";
  return {};
}

void yyinireadline(std::string line) {
  auto& d = zelvy_data::data();
  if (line.size() > kIniRecord) line.resize(kIniRecord);
  while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
  const auto eq = line.find('=');
  if (eq == std::string::npos || eq == 0 || eq + 1 == kIniRecord) return;
  std::replace(line.begin(), line.end(), '\t', ' ');

  const std::string_view head(line.data(), eq);
  const auto kstart = head.find_first_not_of(' ');
  if (kstart == std::string_view::npos) return;
  auto kend = head.find(' ', kstart);
  if (kend == std::string_view::npos) kend = head.size();
  const std::string word(head.substr(kstart, kend - kstart));
  if (word.size() < 3) return;
  const std::string key = padded(upper(word), 8);
  if (key.compare(0, 3, "VER") == 0) d.bversionline = true;

  const auto vstart = line.find_first_not_of(' ', eq + 1);
  if (vstart == std::string::npos) return;
  const std::string value(trimmed(std::string_view(line).substr(vstart)));

  int number = 0;
  const bool is_int = read_integer(value, number);

  if (key == "BROWSER ") d.cbrowser[0] = value;
  else if (key == "CHARDIR ") d.cdefdir[0] = value;
  else if (key == "CHARSET ") d.cdeffile[2] = value;
  else if (key == "PDFREAD ") d.cbrowser[1] = value;
  else if (!is_int) return;
  else if (key == "DEBUG   ") IDebugLevel(number);
  else if (key == "HPGL2   ") d.ireqhw[2] = number;
  else if (key == "LFNGEN  ") { if (number != d.lfn[2]) d.lfn[0] = number; }
  else if (key == "LFNPLOTI") { if (number != d.lfn[0]) d.lfn[2] = number; }
  else if (key == "PLOTTER ") d.ireqhw[1] = number;
  else if (key == "PRINTER ") d.ireqhw[0] = number;
}

bool yyinireadfile(const std::string& path) {
  if (path.empty()) return false;
  std::ifstream in(path);
  if (!in) return false;
  std::string line;
  while (std::getline(in, line)) yyinireadline(line);
  return true;
}

void yytmpprn() {
  const long uid = std::clamp<long>(static_cast<long>(::getuid()), 0, 99999);
  const char* ext[2] = {".plt", ".dmp"};
  for (int k = 0; k < 2; ++k) {
    char name[64];
    for (int n = 0; n <= 99; ++n) {
      std::snprintf(name, sizeof name, "/tmp/kqd%02d%05ld%s", n, uid, ext[k]);
      if (::access(name, F_OK) != 0) break;
    }
    zelvy_data::data().ctmpfile[k] = name;
  }
}

int yydefpapersize() {
  const std::string v = first_set({"LC_ALL", "LC_PAPER", "LANG"});
  for (const char* c : {"_US", "_CA", "_PR"})
    if (v.find(c) != std::string::npos) return 9;
  return 5;
}

int yymeasurement() {
  // Asked of the user's locale without switching the process's own locale,
  // which would change how numbers are written everywhere else.
  int system = 0;
  if (locale_t loc = ::newlocale(LC_MEASUREMENT_MASK, "", nullptr)) {
    const char* m = ::nl_langinfo_l(_NL_MEASUREMENT_MEASUREMENT, loc);
    if (m) system = m[0] == 2 ? 1 : m[0] == 1 ? 2 : 0;
    ::freelocale(loc);
  }
  if (system != 0) return system;
  return first_set({"LC_ALL", "LC_MEASUREMENT", "LANG"}).find("_US") != std::string::npos ? 1 : 2;
}

void WInitialise(std::string_view inifile, std::optional<int> flags, std::optional<int> fontsize) {
  auto& d = zelvy_data::data();
  if (zelvy_data::data().bdoneinit) return;
  zelvy_data::data().bdoneinit = true;

  int iflags = flags.value_or(0);
  if (!(iflags & 1)) yyxkeysymdb();
  if (kernel_os::env_char("ZELVXFT") == '0') iflags |= 4;
  const int size = fontsize.value_or(10);
  zelvy_x::state().iClipboardMethod = kernel_os::env_char("ZELVCLIPBOARD") == '0' ? 0 : 1;

  int greys = 0;
  yygetdisplayinfo(size, iflags, d.iscwid, d.ischgt, d.iscwidmm, d.ischgtmm, d.isccol, greys);
  if (d.isccol == -1)
    kernel_os::exit_program("Cannot open X display. Check DISPLAY environment variable.", 9);

  yywinitialise();
  // A command waited for keeps the windows painted.
  yyossetcommandwaithook(yyMsgCommandWait);

  d.ierr = d.istat = d.iapierr = d.ioetype = 0;
  zelvy_comdlg::data().icderr = 0;
  d.brootopen = false;
  d.icurdialog = 0;
  d.cdeffile = {"", "", "standard.chr"};
  d.ireqhw = {0, 0, 0};
  d.lfn = {40, 41, 42};
  d.cjusnum = 'R';
  d.ctagchr = ' ';
  d.idirinfo = 1;
  d.icmodeldef = 1;
  d.asprat = 1.32f;
  d.imgopt = {80, 75};
  d.iundef = d.iundefdb = -999;
  d.rundef = d.rundefdb = -999.0f;
  d.dundef = d.dundefdb = -999.0;
  d.maxbitmap = d.maxicon = d.maxmeta = 0;
  zelvy_comdlg::data().icdopt = {8, 25, 10};
  zelvy_comdlg::data().wcomdlgpos = {20, 20};
  d.idefpapersize = yyinfosystem(kInfoDefaultPaper);
  d.psedit = {};
  for (auto& page : d.psedit) page.Paper = d.idefpapersize;
  d.psgrid = d.psedit;
  d.bbell = true;

  d.cdefdir[0] = d.cdefdir[1].empty() ? std::string() : d.cdefdir[1] + "charsets";
  const std::string chosen = yyinifilename();
  yytmpprn();

  const char dbg = kernel_os::env_char("ZELVDEBUG");
  IDebugLevel(dbg - '0');
  d.ierr = 0;

  d.cbrowser = {"firefox", "evince"};

  bool read = false;
  if (!inifile.empty() && kernel_os::file_exists(std::string(trimmed(inifile))))
    read = yyinireadfile(std::string(trimmed(inifile)));
  if (!read) yyinireadfile(chosen);

  if (!d.cdefdir[0].empty() && d.cdefdir[0].back() != '/') d.cdefdir[0] += '/';

  if (d.bversionline) kernel_os::exit_program(std::string("Zelvane version ") + kVersion, 0);
}

int WInfoSystem(int item) {
  switch (item) {
    case 1: return 4;
    case 2: return kernel_os::arg_count();
    case 3: {
      struct utsname u {};
      if (::uname(&u) != 0) return 0;
      int major = 0, minor = 0;
      std::sscanf(u.release, "%d.%d", &major, &minor);
      return major * 100 + minor;
    }
    case 6: return 47;
    case 7: return 1;
    case 9: {
      char buf[8];
      return ::getcwd(buf, sizeof buf) && std::string_view(buf) == "/" ? 1 : 0;
    }
    case 15: return yysystime();
    case 16: return 0;
    case 18: return 8;
    case 19: return 14;
    case 20: {
      int mark = 46;
      if (locale_t loc = ::newlocale(LC_NUMERIC_MASK, "", nullptr)) {
        const char* r = ::nl_langinfo_l(RADIXCHAR, loc);
        if (r && r[0]) mark = static_cast<unsigned char>(r[0]);
        ::freelocale(loc);
      }
      return mark;
    }
    case 21: return -1;
    case 22: return yymotifversion();
    case 23: return yyvendorrelease();
    case 24: return yymeasurement();
    case 25: return 64;
    default:
      if (item >= 165 && item <= 190) return 1;
      return 0;
  }
}

int yyinfosystem(int code) { return code == kInfoDefaultPaper ? yydefpapersize() : WInfoSystem(code); }

void WInfoVersion(std::string& text) { assign_out(text, kVersion); }
