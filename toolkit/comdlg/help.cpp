// The help launcher: the document's kind from its name, then the viewer that
// the initialisation file names, started as a process of its own.
#include "toolkit/comdlg/help.h"

#include <sys/wait.h>
#include <unistd.h>
#include <time.h>

#include <X11/Xlib.h>

#include <algorithm>
#include <cctype>
#include <cerrno>

#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/os/command.h"
#include "toolkit/os/files.h"

namespace {

constexpr int kNoFile = 1, kViewerFailed = 1030, kNoViewer = 1031;
// How long a viewer is watched for an early end: looks 100 ms apart, at most 5 s.
constexpr int kLooks = 51, kSettleLooks = 5, kLookInterval = 100;
constexpr int kHtmlViewer = 0, kPdfViewer = 1;

std::string lower(std::string_view s) {
  std::string out(s);
  std::transform(out.begin(), out.end(), out.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return out;
}

bool starts(std::string_view s, std::string_view head) { return s.substr(0, head.size()) == head; }
bool ends(std::string_view s, std::string_view tail) {
  return s.size() >= tail.size() && s.substr(s.size() - tail.size()) == tail;
}

// One word for the shell: the viewer's argument is never split.
std::string quoted(std::string_view s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

void sleep_ms(int ms) {
  timespec t{ms / 1000, static_cast<long>(ms % 1000) * 1000000L};
  while (::nanosleep(&t, &t) != 0 && errno == EINTR) {
  }
}

// The directory of the running program, with its last separator: the
// executable itself as the system knows it, else argument 0, which may be
// relative to a directory the process has left since.
std::string program_directory() {
  std::string path;
  char buf[4096];
  const ssize_t n = ::readlink("/proc/self/exe", buf, sizeof buf - 1);
  if (n > 0) {
    path.assign(buf, static_cast<std::size_t>(n));
  } else {
    std::string program;
    IOsArgument(0, program);
    if (program.empty()) return {};
    IOsFullPathName(program, path);
  }
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// The full path of a help file: where it is named, else beside the program.
std::optional<std::string> locate(std::string_view file) {
  std::string full;
  IOsFullPathName(file, full);
  if (IOsFileExists(full)) return full;
  const std::string dir = program_directory();
  if (dir.empty()) return std::nullopt;
  const std::string beside = dir + std::string(file);
  if (IOsFileExists(beside)) return beside;
  return std::nullopt;
}

}  // namespace

HelpKind yyhelpkind(std::string_view name, std::string& file) {
  const std::string low = lower(name);
  file = std::string(name);
  if (starts(low, "ms-its:")) {
    const auto at = low.find(".chm::/");
    if (at != std::string::npos) {
      file = std::string(name.substr(7, at + 4 - 7));
      return HelpKind::CompiledTopic;
    }
  }
  if (ends(low, ".hlp")) return HelpKind::OldHelp;
  if (ends(low, ".chm") || ends(low, ".col")) return HelpKind::Compiled;
  if (starts(low, "http://") || starts(low, "https://")) return HelpKind::WebAddress;
  if (ends(low, ".htm") || ends(low, ".html")) {
    if (starts(low, "file://")) file = std::string(name.substr(7));
    return HelpKind::Html;
  }
  if (ends(low, ".pdf")) return HelpKind::Pdf;
  return HelpKind::Unknown;
}

std::string yyhelpaddress(std::string_view fullpath, bool web, int topic) {
  std::string address = web ? std::string() : std::string("file://");
  for (char c : fullpath) {
    if (c == ' ') address += "%20";
    else address += c;
  }
  if (topic > 0) address += "#" + std::to_string(topic);
  return address;
}

int yyhelpfileany(std::string_view program, std::string_view argument) {
  // The viewer's command may carry options of its own; exec keeps the
  // identifier that is watched the viewer's.
  if (program.find_first_not_of(' ') == std::string_view::npos) return kViewerFailed;
  CommandStatus status;
  if (yyoscommand("exec " + std::string(program) + " " + quoted(argument), 0, -1, status) != 0) return kViewerFailed;
  if (Display* dpy = xdisplay()) XSync(dpy, False);
  // A viewer that isn't there, or can't show the document, ends within a
  // moment; one still running after kSettleLooks looks counts as up.
  const pid_t pid = status.process_id;
  for (int look = 0; look < kLooks; ++look) {
    int wait_status = 0;
    const pid_t got = ::waitpid(pid, &wait_status, WNOHANG);
    if (got == pid || (got < 0 && errno != EINTR)) return kViewerFailed;  // it ended already
    if (got == 0 && look >= kSettleLooks) return 0;
    sleep_ms(kLookInterval);
  }
  return kViewerFailed;
}

void WHelpFile(std::string_view filename, std::optional<int> topic, std::optional<int>) {
  const auto first = filename.find_first_not_of(std::string_view(" \0", 2));
  if (first == std::string_view::npos) return;
  auto last = filename.find_last_not_of(std::string_view(" \0", 2));
  const std::string_view name = filename.substr(first, last - first + 1);
  std::string file;
  const HelpKind kind = yyhelpkind(name, file);
  if (kind == HelpKind::Unknown) return yyerror(kNoViewer, "WHelpFile");
  std::string full = file;
  if (kind != HelpKind::WebAddress) {
    const std::optional<std::string> found = locate(file);
    if (!found) return yyerror(kNoFile, "WHelpFile");
    full = *found;
  }
  const auto& browsers = zelvy_data::data().cbrowser;
  int status = 0;
  switch (kind) {
    case HelpKind::WebAddress:
    case HelpKind::Html:
      status = yyhelpfileany(browsers[kHtmlViewer],
                             yyhelpaddress(full, kind == HelpKind::WebAddress, topic.value_or(-1)));
      break;
    case HelpKind::Pdf: status = yyhelpfileany(browsers[kPdfViewer], full); break;
    default: status = kNoViewer; break;
  }
  if (status != 0) yyerror(status, "WHelpFile");
}
