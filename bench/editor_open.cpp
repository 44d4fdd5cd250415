// Opens a text file in the editor as the program opens its result files and
// reports the time until the first page is painted (a round trip to the X
// server after the window has drawn) and the resident memory after it.
// Usage: editor_open FILE [--hold]; prints seconds to the first page, resident
// kB then and the kB the editor added, seconds until the whole text is in the
// widget and resident kB then. With --hold it stays open until closed.
#include <X11/Intrinsic.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

#include "app/resources/gombrel_resources.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/editor/editor.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

namespace {

long resident_kb() {
  std::ifstream f("/proc/self/status");
  std::string key;
  long value = 0;
  while (f >> key) {
    if (key == "VmRSS:") {
      f >> value;
      return value;
    }
    f.ignore(1 << 12, '\n');
  }
  return 0;
}

// Runs until nothing is pending any more, then makes sure the server has done
// everything asked of it.
void drain() {
  int type = 0;
  MessageRecord m;
  for (;;) {
    XSync(xdisplay(), False);
    WMessagePeek(type, m);
    if (type == -1) {
      XSync(xdisplay(), False);
      WMessagePeek(type, m);
      if (type == -1) return;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: editor_open FILE\n");
    return 2;
  }
  yyrcinstall(gombrel_resource_tables());
  yyDialogAttach();
  yyEditAttach();
  WInitialise();
  if (!xdisplay()) return 1;
  WindowOpen(0, 0, 0, 200, 100, {}, {}, {}, "bench");
  drain();
  const long before = resident_kb();
  const auto t0 = std::chrono::steady_clock::now();
  int handle = -1;
  WindowOpenChild(handle, 39, 20, 20, 800, 600, 0, {}, 0, "Ombrel Text Editor");
  WEditFile(argv[1], 3, 0, 0, 4);
  drain();
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  const long first_kb = resident_kb();
  // A large file goes on arriving after the first page: this asks for all of it.
  WindowSelect(handle);
  WInfoEditor(handle, 2);
  drain();
  const double all = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  std::printf("%.3f %ld %ld %.3f %ld\n", seconds, first_kb, first_kb - before, all, resident_kb());
  std::fflush(stdout);
  if (argc > 2 && std::string(argv[2]) == "--hold") {
    int type = 0;
    MessageRecord m;
    do WMessage(type, m);
    while (type != CloseRequest);
  }
  WindowCloseChild(handle);
  WindowClose();
  return 0;
}
