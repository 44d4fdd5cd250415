// A grid window against Python's csv module and sort(1) on the same file of
// 100,000 rows by ten columns: load and save (time, resident memory), and
// sorting the rows by their first column. The rounds alternate which side
// goes first, so both see the same machine; medians and spread are printed.
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "toolkit/base/zelvy_data.h"
#include "toolkit/dialog/dialog.h"
#include "toolkit/dialog/dialog_private.h"
#include "toolkit/grid/grid.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/startup.h"
#include "toolkit/kernel/window.h"

const zelv_rc::ResourceTables& grid_window_bench_resource_tables();

namespace {

constexpr int kForm = 960, kGrid = 3201;
constexpr int kRows = 100000;
constexpr int kFrameWithStatusBar = 39;

using Clock = std::chrono::steady_clock;
double ms_since(Clock::time_point t) { return std::chrono::duration<double, std::milli>(Clock::now() - t).count(); }

long rss_kb() {
  std::ifstream in("/proc/self/status");
  for (std::string line; std::getline(in, line);)
    if (line.rfind("VmRSS:", 0) == 0) return std::atol(line.c_str() + 6);
  return 0;
}

void write_file(const std::string& name) {
  std::ofstream out(name, std::ios::binary);
  unsigned seed = 12345;
  auto next = [&] { return seed = seed * 1103515245u + 12345u, (seed >> 8) & 0xFFFFF; };
  const char* kinds[] = {"obs", "rej", "\"weak\"", "sat, high"};
  char buf[256];
  for (int r = 0; r < kRows; ++r) {
    const unsigned a = next(), b = next();
    std::snprintf(buf, sizeof buf, "\"refl %06u\",\"%s\",%d,%d,%d,%.4f,%.4f,%.3f,\"%s\",\"%c\"\n", a % 1000000,
                  kinds[b % 4][0] == '"' ? "\"\"weak\"\"" : kinds[b % 4], static_cast<int>(a % 41) - 20,
                  static_cast<int>(b % 31) - 15, static_cast<int>((a ^ b) % 21) - 10, (a % 100000) / 7.0,
                  (b % 1000) / 13.0, (a % 18000) / 100.0, r % 7 ? "" : "check, twice", "YN"[r % 2]);
    out << buf;
  }
}

struct Series {
  std::vector<double> v;
  void add(double x) { v.push_back(x); }
  std::string text() const {
    std::vector<double> s = v;
    std::sort(s.begin(), s.end());
    char buf[96];
    std::snprintf(buf, sizeof buf, "%9.1f  (%.1f .. %.1f)", s[s.size() / 2], s.front(), s.back());
    return buf;
  }
};

void settle() {
  int type = 0;
  MessageRecord m;
  for (int i = 0; i < 200; ++i) {
    WMessagePeek(type, m);
    if (type == -1) break;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
  const std::string dir = "/tmp/grid_window_bench_" + std::to_string(::getpid());
  std::system(("mkdir -p " + dir).c_str());
  const std::string file = dir + "/reflections.csv", ours = dir + "/ours.csv", theirs = dir + "/python.csv";
  write_file(file);
  const std::string py = dir + "/judge.py";
  std::ofstream(py) << "import csv, sys, time\n"
                       "def rss():\n"
                       "    for line in open('/proc/self/status'):\n"
                       "        if line.startswith('VmRSS:'): return int(line.split()[1])\n"
                       "r0 = rss(); t0 = time.perf_counter()\n"
                       "rows = list(csv.reader(open(sys.argv[1], newline='')))\n"
                       "t1 = time.perf_counter(); r1 = rss()\n"
                       "with open(sys.argv[2], 'w', newline='') as f: csv.writer(f, lineterminator='\\n').writerows(rows)\n"
                       "t2 = time.perf_counter()\n"
                       "print((t1 - t0) * 1000, (t2 - t1) * 1000, r1 - r0, len(rows))\n";

  yyrcinstall(grid_window_bench_resource_tables());
  yyDialogAttach();
  yyGridAttach();
  WInitialise();
  yyDialogEngineInit();
  WindowOpen(0, 0, 0, {}, {}, {}, {}, kForm);
  WDialogSelect(kForm);
  WGridRows(kGrid, 1);
  settle();

  Series load, save, both, pyRead, pyWrite, pyBoth, rss, pyRss, sortOurs, sortTool;
  int rowsOurs = 0, rowsPython = 0;
  auto run_ours = [&] {
    int h = -1;
    WindowOpenChild(h, kFrameWithStatusBar, 40, 40, 600, 400, 0, {}, 0, "bench");
    WDialogSelect(kForm);
    yygridedit_(kGrid, 2, 0, grid_window::kMenu | grid_window::kRowsFollow, {});
    if (zelvy_data::data().ierr) std::printf("open error %d\n", zelvy_data::data().ierr);
    settle();
    malloc_trim(0);
    const long r0 = rss_kb();
    auto t = Clock::now();
    WGridLoad(0, file, 1);
    const double l = ms_since(t);
    rss.add((rss_kb() - r0) / 1024.0);
    int value = 0, error = 0;
    yyinfogrid_(0, 3, value, error);
    rowsOurs = value;
    t = Clock::now();
    WGridSave(0, ours);
    const double s = ms_since(t);
    load.add(l);
    save.add(s);
    both.add(l + s);
    t = Clock::now();
    WGridSort(0, 1, 0);
    sortOurs.add(ms_since(t));
    if (zelvy_data::data().ierr) std::printf("error %d\n", zelvy_data::data().ierr);
    WindowCloseChild(h);
    settle();
    malloc_trim(0);
  };
  auto run_python = [&] {
    FILE* p = popen(("/usr/bin/python3 " + py + " " + file + " " + theirs).c_str(), "r");
    double r = 0, w = 0, m = 0;
    if (p && std::fscanf(p, "%lf %lf %lf %d", &r, &w, &m, &rowsPython) == 4) {
      pyRead.add(r);
      pyWrite.add(w);
      pyBoth.add(r + w);
      pyRss.add(m / 1024.0);
    }
    if (p) pclose(p);
    const auto t = Clock::now();
    std::system(("LC_ALL=C sort -t, -k1,1 " + file + " > /dev/null").c_str());
    sortTool.add(ms_since(t));
  };
  for (int i = 0; i < rounds; ++i) {
    if (i % 2 == 0) {
      run_ours();
      run_python();
    } else {
      run_python();
      run_ours();
    }
  }
  std::printf("%d rows by 10 columns, %d rounds, alternating; median (min .. max)\n", kRows, rounds);
  std::printf("rows read: grid window %d, Python csv %d\n", rowsOurs, rowsPython);
  std::printf("load, ms        grid window %s   Python csv read  %s\n", load.text().c_str(), pyRead.text().c_str());
  std::printf("save, ms        grid window %s   Python csv write %s\n", save.text().c_str(), pyWrite.text().c_str());
  std::printf("load+save, ms   grid window %s   Python csv       %s\n", both.text().c_str(), pyBoth.text().c_str());
  std::printf("resident, MiB   grid window %s   Python csv       %s\n", rss.text().c_str(), pyRss.text().c_str());
  std::printf("sort by col 1   grid window %s   sort -t, -k1,1   %s\n", sortOurs.text().c_str(), sortTool.text().c_str());
  WindowClose();
  std::system(("rm -rf " + dir).c_str());
  return 0;
}
