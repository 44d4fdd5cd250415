// A small program on the toolkit: opens a window with a three-part status bar
// and prints every message that WMessage returns as one line, until the window
// is asked to close. Options: --enable T,T  --disable T,T  --timer MS:ID:REPEAT
// --size WxH  --title TEXT  --select HANDLE.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "toolkit/kernel/message.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/statusbar.h"
#include "toolkit/kernel/window.h"

namespace {

const char* type_name(int type) {
  static const char* names[] = {"?",           "KeyDown",     "MenuSelect",    "PushButton",
                                "MouseDown",   "MouseUp",     "MouseMove",     "Expose",
                                "Resize",      "CloseRequest", "FieldChanged", "TabChanged",
                                "?",           "TimerExpired", "EditorCommand", "BitmapScrolled",
                                "MouseDoubleClick", "EditorChanged", "ContextClick"};
  return type >= 1 && type <= 18 ? names[type] : "?";
}

std::vector<int> numbers(const char* text) {
  std::vector<int> out;
  std::stringstream in(text);
  std::string item;
  while (std::getline(in, item, ',')) out.push_back(std::atoi(item.c_str()));
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> enable, disable;
  int timer_ms = 0, timer_id = 0, timer_repeat = 0, width = 400, height = 300, select_handle = -1;
  std::string title = "Zelv Probe";
  for (int i = 1; i + 1 < argc; i += 2) {
    if (!std::strcmp(argv[i], "--enable")) enable = numbers(argv[i + 1]);
    else if (!std::strcmp(argv[i], "--disable")) disable = numbers(argv[i + 1]);
    else if (!std::strcmp(argv[i], "--timer")) std::sscanf(argv[i + 1], "%d:%d:%d", &timer_ms, &timer_id, &timer_repeat);
    else if (!std::strcmp(argv[i], "--size")) std::sscanf(argv[i + 1], "%dx%d", &width, &height);
    else if (!std::strcmp(argv[i], "--title")) title = argv[i + 1];
    else if (!std::strcmp(argv[i], "--select")) select_handle = std::atoi(argv[i + 1]);
  }

  WInitialise();
  WindowOpen(7 | 32, 0, 0, width, height, std::nullopt, {}, std::nullopt, title);
  const int widths[3] = {3000, 3000, -1};
  WindowStatusBarParts(3, widths);
  WindowOutStatusBar(1, "one");
  WindowOutStatusBar(2, "two");
  WindowOutStatusBar(3, "three");
  for (int t : enable) WMessageEnable(t, 1);
  for (int t : disable) WMessageEnable(t, 0);
  if (timer_ms > 0) WMessageTimer(timer_ms, timer_id, timer_repeat);
  if (select_handle >= 0) WindowSelect(select_handle);
  std::printf("ready %d %d\n", WInfoWindow(1), WInfoWindow(2));
  std::fflush(stdout);

  for (;;) {
    int type = 0;
    MessageRecord m;
    WMessage(type, m);
    std::printf("%s win=%d v1=%d v2=%d v3=%d v4=%d x=%d y=%d px=%d py=%d\n", type_name(type), m.Win,
                m.Value1, m.Value2, m.Value3, m.Value4, m.X, m.Y, m.PixelX, m.PixelY);
    std::fflush(stdout);
    if (type == CloseRequest) break;
  }
  WindowClose();
  return 0;
}
