// Loading and unloading the main form many times: time per cycle and the
// growth of resident memory, which must stay flat (a leak is a bug).
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "toolkit/dialog/dialog.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"
#include "app/resources/gombrel_resources.h"
#include "toolkit/kernel/resources.h"

namespace {

long resident_kb() {
  std::ifstream in("/proc/self/status");
  std::string line;
  while (std::getline(in, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::atol(line.c_str() + 6);
  return 0;
}

// Takes what the X server and the toolkit have pending, as the program's loop would.
void settle() {
  int type = 0;
  MessageRecord m;
  do WMessagePeek(type, m);
  while (type > 0);
}

}  // namespace

int main(int argc, char** argv) {
  const int cycles = argc > 1 ? std::atoi(argv[1]) : 1000;
  yyrcinstall(gombrel_resource_tables());
  yyDialogAttach();
  WInitialise();
  WindowOpen(0, 0, 0, 400, 300);
  auto cycle = [](int n) {
    for (int i = 0; i < n; ++i) {
      WDialogLoad(102, 7000);
      WDialogUnload();
      settle();
    }
  };
  cycle(300);  // caches of the widget set and the font library fill first
  const long before = resident_kb();
  const auto start = std::chrono::steady_clock::now();
  cycle(cycles);
  const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
  const long after = resident_kb();
  std::printf("dialog 102 load+unload: %d cycles, %.3f ms/cycle, resident %ld kB -> %ld kB (growth %ld kB)\n",
              cycles, took.count() / cycles, before, after, after - before);
  WindowClose();
  return 0;
}
