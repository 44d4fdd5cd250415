// Find Next and Replace All in the editor on a large file, as the Search menu
// runs them, timed inside the program.
// Usage: find_replace FILE FIND REPLACEMENT; prints the seconds of Find Next
// from the start of the text to the first match of FIND, the seconds of
// Replace All of FIND by REPLACEMENT, and the number of characters after it.
#include <chrono>
#include <cstdio>
#include <string>

#include "app/resources/gombrel_resources.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/editor/editor.h"
#include "toolkit/editor/editor_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

namespace {

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

template <typename F>
double seconds(F&& f) {
  const auto t0 = std::chrono::steady_clock::now();
  f();
  XSync(xdisplay(), False);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: find_replace FILE FIND REPLACEMENT\n");
    return 2;
  }
  // The common dialogs stay unattached: the message at the end of the text
  // answers at once instead of waiting for a hand.
  yyrcinstall(gombrel_resource_tables());
  yyDialogAttach();
  yyEditAttach();
  WInitialise();
  if (!xdisplay()) return 1;
  WindowOpen(0, 0, 0, 200, 100, {}, {}, {}, "bench");
  int handle = -1;
  WindowOpenChild(handle, 39, 20, 20, 800, 600, 0, {}, 0, "Ombrel Text Editor");
  WEditFile(argv[1], 3, 0, 0, 4);
  WindowSelect(handle);
  WInfoEditor(handle, 2);  // the whole text in the widget
  drain();
  EditRecord& r = *yyEditRecordOf(handle);
  int error = 0;
  yyeditfindstring(1, error, argv[2]);
  yyeditfindstring(2, error, argv[3]);
  yyeditfindflags(0, error);  // match case, downwards
  WEditSetPos(1);
  const double find = seconds([&] { yyEditSearchFindReplace(edit_id::kFindNext, r); });
  const double replace = seconds([&] { yyEditFindReplace(1, r); });
  drain();
  std::printf("%.3f %.3f %d\n", find, replace, WInfoEditor(handle, 2));
  WindowCloseChild(handle);
  WindowClose();
  return 0;
}
