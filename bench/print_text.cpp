// A 50 MB text file printed to PostScript by the editor's Print (file read,
// document written, word wrap on, Courier 10 on A4) beside enscript on the
// same file with the same font, wrap and no page headers. Both run in every
// round, their order alternating, so that the machine's load falls on both
// alike; the median and the spread (fastest, slowest) of each, in seconds,
// and the median of the paired ratios.
//
//   bench_print_text [ROUNDS] [MEGABYTES]
#include "toolkit/editor/editor_print.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// Lines of words of varied length, a long one now and then, tabs and form feeds.
void make_text(const fs::path& path, std::size_t bytes) {
  std::ofstream out(path, std::ios::binary);
  std::string buf;
  unsigned seed = 12345;
  const auto next = [&] { return seed = seed * 1103515245u + 12345u, (seed >> 16) & 0x7fff; };
  std::size_t written = 0;
  for (long line = 1; written < bytes; ++line) {
    std::string l;
    const unsigned words = next() % 12 + (line % 97 == 0 ? 40 : 1);
    for (unsigned w = 0; w < words; ++w) {
      if (w) l += (next() % 20 == 0) ? '\t' : ' ';
      const unsigned len = next() % 9 + 1;
      for (unsigned k = 0; k < len; ++k) l += static_cast<char>('a' + next() % 26);
    }
    if (line % 5000 == 0) l = "\f" + l;
    l += '\n';
    buf += l;
    written += l.size();
    if (buf.size() > (1u << 20)) {
      out << buf;
      buf.clear();
    }
  }
  out << buf;
}

double seconds_of(Clock::time_point t0) { return std::chrono::duration<double>(Clock::now() - t0).count(); }

double ours(const fs::path& in, const fs::path& out) {
  const auto t0 = Clock::now();
  std::ifstream f(in, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
  std::FILE* o = std::fopen(out.c_str(), "wb");
  if (!o || !yyeditprintps(o, text, {}, {kPrintCourier, 10}, true)) std::abort();
  std::fclose(o);
  return seconds_of(t0);
}

double enscript(const fs::path& in, const fs::path& out) {
  const std::string cmd =
      "enscript -q -B -M A4 -f Courier10 --word-wrap -p '" + out.string() + "' '" + in.string() + "'";
  const auto t0 = Clock::now();
  if (std::system(cmd.c_str()) != 0) std::abort();
  return seconds_of(t0);
}

double median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  const std::size_t n = v.size();
  return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

std::size_t pages_of(const fs::path& ps) {
  std::ifstream in(ps);
  std::size_t n = 0;
  for (std::string l; std::getline(in, l);) n += l.rfind("%%Page: ", 0) == 0;
  return n;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
  const std::size_t megabytes = argc > 2 ? static_cast<std::size_t>(std::max(1, std::atoi(argv[2]))) : 50;
  const fs::path dir = fs::temp_directory_path() / "zelv_bench_print";
  fs::create_directories(dir);
  const fs::path text = dir / "text.txt", a = dir / "ours.ps", b = dir / "enscript.ps";
  make_text(text, megabytes << 20);
  std::vector<double> ta, tb, ratio;
  for (int r = 0; r < rounds; ++r) {
    double x = 0, y = 0;
    if (r % 2 == 0) {
      x = ours(text, a);
      y = enscript(text, b);
    } else {
      y = enscript(text, b);
      x = ours(text, a);
    }
    ta.push_back(x);
    tb.push_back(y);
    ratio.push_back(y / x);
  }
  std::printf("text: %zu MB, %d rounds, order alternating\n", megabytes, rounds);
  std::printf("%-10s median %7.3f s  fastest %7.3f  slowest %7.3f  output %6.1f MB, %zu pages\n", "ours",
              median(ta), *std::min_element(ta.begin(), ta.end()), *std::max_element(ta.begin(), ta.end()),
              static_cast<double>(fs::file_size(a)) / (1 << 20), pages_of(a));
  std::printf("%-10s median %7.3f s  fastest %7.3f  slowest %7.3f  output %6.1f MB, %zu pages\n", "enscript",
              median(tb), *std::min_element(tb.begin(), tb.end()), *std::max_element(tb.begin(), tb.end()),
              static_cast<double>(fs::file_size(b)) / (1 << 20), pages_of(b));
  std::printf("enscript / ours, paired: median %.2f  range %.2f .. %.2f\n", median(ratio),
              *std::min_element(ratio.begin(), ratio.end()), *std::max_element(ratio.begin(), ratio.end()));
  fs::remove_all(dir);
  return 0;
}
