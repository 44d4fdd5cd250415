// Opening the file selector on a directory of 10,000 files: the time from the
// call to the list painted (the first exposure of the list served, then a
// round trip to the server), beside `ls -l` of the same directory. The two run
// in pairs, interleaved, so that both see the same state of the caches.
// Without a DISPLAY it runs itself again on an Xvfb of its own.
#include <X11/Intrinsic.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "app/resources/gombrel_resources.h"
#include "toolkit/comdlg/file_selector.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kFiles = 10000;
constexpr int kRounds = 21, kWarmUp = 2;
constexpr int kSelector = 32110, kList = 1101, kCancel = 2;

Clock::time_point started;
double painted_ms = 0;
bool exposed = false;

void finish(XtPointer, XtIntervalId*) {
  XSync(xdisplay(), False);
  painted_ms = std::chrono::duration<double, std::milli>(Clock::now() - started).count();
  yyMsgSend(PushButton, kCancel, kCancel, -1, -1, -1, -1, kSelector, 0);
  // The message waits for the next event: send one.
  XEvent ev{};
  ev.xclient.type = ClientMessage;
  ev.xclient.window = zelvy_win::state().wWindow[0];
  ev.xclient.message_type = XInternAtom(xdisplay(), "BENCH_WAKE", False);
  ev.xclient.format = 32;
  XSendEvent(xdisplay(), ev.xclient.window, False, 0, &ev);
  XFlush(xdisplay());
}

// After the event that exposed the list has been served in full.
void list_exposed(Widget, XtPointer, XEvent* ev, Boolean*) {
  if (exposed || ev->type != Expose) return;
  exposed = true;
  XtAppAddTimeOut(zelvy_x::state().ixContext, 0, finish, nullptr);
}

// Runs once the selector waits for its first event: the dialog is up, nothing drawn yet.
void watch_list(XtPointer, XtIntervalId*) {
  auto& ds = zelvy_dialog::state();
  const int d = yyDialogFind(kSelector);
  if (d < 0) return;
  const int f = yyDialogFindField(kList, d);
  if (f < 0) return;
  XtAddEventHandler(ds.wDialogInfo[d].fields[static_cast<std::size_t>(f)].widget, ExposureMask, False, list_exposed,
                    nullptr);
}

double selector_ms(const fs::path& dir) {
  exposed = false;
  painted_ms = 0;
  std::string name = std::string(dir) + "/";
  name.resize(1024, ' ');
  XtAppAddTimeOut(zelvy_x::state().ixContext, 0, watch_list, nullptr);
  started = Clock::now();
  WSelectFile("Ombrel Input Files (*.omb) |*.omb|", 0, name, "Bench");
  return painted_ms;
}

double ls_ms(const fs::path& dir) {
  posix_spawn_file_actions_t fa;
  posix_spawn_file_actions_init(&fa);
  posix_spawn_file_actions_addopen(&fa, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  const std::string d = dir.string();
  char* argv[] = {const_cast<char*>("ls"), const_cast<char*>("-l"), const_cast<char*>(d.c_str()), nullptr};
  const auto t0 = Clock::now();
  pid_t pid = 0;
  int status = 0;
  if (posix_spawnp(&pid, "ls", &fa, nullptr, argv, environ) == 0) waitpid(pid, &status, 0);
  const auto t1 = Clock::now();
  posix_spawn_file_actions_destroy(&fa);
  return std::chrono::duration<double, std::milli>(t1 - t0).count();
}

struct Summary {
  double median, low, high, q1, q3;
};

Summary summary(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  auto at = [&](double q) { return v[static_cast<std::size_t>(q * static_cast<double>(v.size() - 1) + 0.5)]; };
  return {at(0.5), v.front(), v.back(), at(0.25), at(0.75)};
}

void print(const char* what, const Summary& s) {
  std::printf("  %-22s median %8.2f ms   quartiles %8.2f .. %8.2f   range %8.2f .. %8.2f\n", what, s.median, s.q1,
              s.q3, s.low, s.high);
}

}  // namespace

int main(int argc, char** argv) {
  if (!std::getenv("DISPLAY")) {
    std::fflush(stdout);
    execlp("xvfb-run", "xvfb-run", "-a", "-s", "-screen 0 1280x1024x24", argv[0], nullptr);
    std::perror("xvfb-run");
    return 1;
  }
  (void)argc;
  const fs::path dir = fs::temp_directory_path() / ("selector-bench-" + std::to_string(::getpid()));
  fs::create_directories(dir);
  for (int i = 0; i < kFiles; ++i) {
    char n[32];
    std::snprintf(n, sizeof n, "job_%05d.omb", i);
    std::ofstream(dir / n) << "TITLE bench\n";
  }

  yyrcinstall(gombrel_resource_tables());
  yyDialogAttach();
  WInitialise();
  WindowOpen(0, 0, 0, 400, 300);

  std::vector<double> sel, ls, ratio;
  for (int r = 0; r < kWarmUp + kRounds; ++r) {
    // Alternate which goes first, so neither always finds the caches warmed by the other.
    double a = 0, b = 0;
    if (r % 2 == 0) {
      a = selector_ms(dir);
      b = ls_ms(dir);
    } else {
      b = ls_ms(dir);
      a = selector_ms(dir);
    }
    if (r < kWarmUp) continue;
    sel.push_back(a);
    ls.push_back(b);
    ratio.push_back(a / b);
  }
  WindowClose();
  fs::remove_all(dir);

  std::printf("file selector on %d files, %d paired rounds (after %d warm-up):\n", kFiles, kRounds, kWarmUp);
  print("selector to painted", summary(sel));
  print("ls -l", summary(ls));
  const Summary q = summary(ratio);
  std::printf("  %-22s median %8.2f      quartiles %8.2f .. %8.2f\n", "selector / ls -l", q.median, q.q1, q.q3);
  return 0;
}
