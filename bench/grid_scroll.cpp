// The grid of 100,000 rows by nine reals against a plain scrolled list of the
// widget set holding the same rows as text: time to fill, resident memory per
// cell, time from a scroll request to the redrawn view (through a round trip
// to the X server), and time to jump to the last row. Steps of the two are
// taken in turn, so that both see the same server and machine.
#include <X11/Intrinsic.h>
#include <X11/Shell.h>
#include <Xm/List.h>
#include <Xm/ScrollBar.h>
#include <Xm/Xm.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "toolkit/dialog/dialog.h"
#include "toolkit/grid/grid.h"
#include "toolkit/grid/grid_private.h"
#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

const zelv_rc::ResourceTables& grid_bench_resource_tables();

namespace {

constexpr int kForm = 950, kGrid = 3001;
constexpr int kRows = 100000, kColumns = 9;
constexpr int kListRowsShown = 15;

using Clock = std::chrono::steady_clock;
double ms_since(Clock::time_point t) { return std::chrono::duration<double, std::milli>(Clock::now() - t).count(); }

// Processor time of this process: the rest of a step is the X server's.
double cpu_ms() {
  timespec ts{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) * 1e3 + static_cast<double>(ts.tv_nsec) / 1e6;
}

long resident_kb() {
  std::ifstream in("/proc/self/status");
  std::string line;
  while (std::getline(in, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::atol(line.c_str() + 6);
  return 0;
}

// Everything the server and the widgets have to do, done: the events taken,
// then a round trip, then what the round trip brought.
void settle() {
  XtAppContext app = XtDisplayToApplicationContext(xdisplay());
  for (int pass = 0; pass < 2; ++pass) {
    while (XtAppPending(app)) XtAppProcessEvent(app, XtIMAll);
    XSync(xdisplay(), False);
  }
}

double value(int row, int column) { return (row % 97) * 0.25 + column * 1.5 + row * 1e-3; }

struct Stats {
  double median, p10, p90, min, max;
};
Stats stats(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  auto q = [&](double f) { return v[static_cast<std::size_t>(f * static_cast<double>(v.size() - 1) + 0.5)]; };
  return {q(0.5), q(0.1), q(0.9), v.front(), v.back()};
}

void row(const char* what, const char* unit, const Stats& g, const Stats& l) {
  std::printf("%-26s %-4s %9.3f [%7.3f..%7.3f]  %9.3f [%7.3f..%7.3f]\n", what, unit, g.median, g.p10, g.p90, l.median,
              l.p10, l.p90);
}

void move_bar(Widget bar, int to) {
  int v = 0, slider = 0, inc = 0, page = 0;
  XmScrollBarGetValues(bar, &v, &slider, &inc, &page);
  XmScrollBarSetValues(bar, to, slider, inc, page, True);
}

}  // namespace

int main(int argc, char** argv) {
  const int steps = std::max(20, argc > 1 ? std::atoi(argv[1]) : 40);
  yyrcinstall(grid_bench_resource_tables());
  yyDialogAttach();
  yyGridAttach();
  WInitialise();
  WindowOpen(0, 0, 0, 200, 100);
  settle();

  // The grid: creation holds the arrays, the fill writes every cell through
  // the public routine, as an application would.
  const long gridBefore = resident_kb();
  WDialogLoad(kForm);
  WDialogShow(10, 10, 0, 2);
  settle();
  Clock::time_point t = Clock::now();
  for (int r = 1; r <= kRows; ++r)
    for (int c = 1; c <= kColumns; ++c) WGridPutCellReal(kGrid, c, r, static_cast<float>(value(r, c)));
  settle();
  const double gridFill = ms_since(t);
  const long gridAfter = resident_kb();
  int error = 0;
  Widget grid = yyGridFind(kGrid, error);
  if (!grid) {
    std::printf("grid_scroll: the bench form has no grid (error %d)\n", error);
    return 1;
  }
  GridState& gs = *yyGridPart(grid).st;
  Widget bar = gs.scrollBarV;
  const int full = std::max(1, gs.fullRows);

  // The list: one text line per row, made and added as a list is filled.
  const long listBefore = resident_kb();
  Widget shell = XtVaAppCreateShell("ListBench", "ListBench", topLevelShellWidgetClass, xdisplay(), XtNx, 600, XtNy,
                                    10, XtNwidth, 600, XtNheight, 400, nullptr);
  Arg a[4];
  XtSetArg(a[0], XmNvisibleItemCount, kListRowsShown);
  XtSetArg(a[1], XmNscrollBarDisplayPolicy, XmSTATIC);
  Widget list = XmCreateScrolledList(shell, const_cast<char*>("List"), a, 2);
  XtManageChild(list);
  XtRealizeWidget(shell);
  settle();
  t = Clock::now();
  {
    std::vector<XmString> items(kRows);
    char line[256];
    for (int r = 0; r < kRows; ++r) {
      int n = 0;
      for (int c = 1; c <= kColumns; ++c)
        n += std::snprintf(line + n, sizeof line - static_cast<std::size_t>(n), "%12.5G", value(r + 1, c));
      items[static_cast<std::size_t>(r)] = XmStringCreateLocalized(line);
    }
    XmListAddItemsUnselected(list, items.data(), kRows, 0);
    for (XmString s : items) XmStringFree(s);
  }
  settle();
  const double listFill = ms_since(t);
  const long listAfter = resident_kb();

  // Scroll steps, one row down each, the grid's and the list's in turn.
  std::vector<double> gridStep, listStep, gridJump, listJump, gridCpu, listCpu, gridRequests, listRequests;
  for (int i = 1; i <= steps; ++i) {
    t = Clock::now();
    double cpu = cpu_ms();
    unsigned long requests = NextRequest(xdisplay());
    move_bar(bar, i);
    settle();
    gridStep.push_back(ms_since(t));
    gridCpu.push_back(cpu_ms() - cpu);
    gridRequests.push_back(static_cast<double>(NextRequest(xdisplay()) - requests));
    t = Clock::now();
    cpu = cpu_ms();
    requests = NextRequest(xdisplay());
    XmListSetPos(list, i + 1);
    settle();
    listStep.push_back(ms_since(t));
    listCpu.push_back(cpu_ms() - cpu);
    listRequests.push_back(static_cast<double>(NextRequest(xdisplay()) - requests));
  }
  // Jumps from the top to the last row, each side put back to the top untimed.
  for (int i = 0; i < steps; ++i) {
    move_bar(bar, 0);
    XmListSetPos(list, 1);
    settle();
    t = Clock::now();
    move_bar(bar, kRows - full);
    settle();
    gridJump.push_back(ms_since(t));
    t = Clock::now();
    XmListSetBottomPos(list, 0);
    settle();
    listJump.push_back(ms_since(t));
  }
  std::string last;
  WGridGetCellString(kGrid, kColumns, kRows, last);

  const double cells = static_cast<double>(kRows) * kColumns;
  std::printf("grid %d rows x %d real columns against a scrolled list of %d rows; %d steps each, interleaved\n", kRows,
              kColumns, kRows, steps);
  std::printf("%-26s %-4s %-31s  %s\n", "", "", "grid median [p10..p90]", "list median [p10..p90]");
  std::printf("%-26s %-4s %9.1f %21s  %9.1f\n", "fill", "ms", gridFill, "", listFill);
  std::printf("%-26s %-4s %9.2f %21s  %9.2f\n", "resident memory per cell", "B",
              static_cast<double>(gridAfter - gridBefore) * 1024.0 / cells, "",
              static_cast<double>(listAfter - listBefore) * 1024.0 / cells);
  row("scroll step to redrawn", "ms", stats(gridStep), stats(listStep));
  row("  of it in this process", "ms", stats(gridCpu), stats(listCpu));
  row("  X requests per step", "", stats(gridRequests), stats(listRequests));
  row("jump to last row", "ms", stats(gridJump), stats(listJump));
  const Stats gs1 = stats(gridStep), ls1 = stats(listStep);
  std::printf("step extremes: grid %.3f..%.3f ms, list %.3f..%.3f ms; grid rows shown %d, last cell \"%s\"\n", gs1.min,
              gs1.max, ls1.min, ls1.max, full, last.c_str());
  std::printf("a cell's value takes %zu bytes (number and flag word)\n", sizeof(double) + sizeof(std::uint32_t));
  XtDestroyWidget(shell);
  WDialogUnload();
  WindowClose();
  return 0;
}
