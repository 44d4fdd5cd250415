// Throughput of number formatting and parsing, the paths every written job file,
// form field and grid cell goes through.
#include <chrono>
#include <cstdio>
#include <string>

#include "toolkit/base/format.h"

namespace {

template <typename F>
void run(const char* what, int n, F&& body) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < n; ++i) body(i);
  const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - start;
  std::printf("%-28s %8.1f ns/call\n", what, took.count() / n);
}

}  // namespace

int main() {
  constexpr int n = 200000;
  std::string text;
  double sink = 0;
  run("IRealToString (G15.5E2)", n, [&](int i) {
    text.clear();
    IRealToString(static_cast<float>(i) * 0.37f, text, "(G15.5E2)");
  });
  run("IDoubleToString (F12.5)", n, [&](int i) {
    text.clear();
    IDoubleToString(i * 1.0e-3, text, "(F12.5)");
  });
  run("IntegerToString (I5)", n, [&](int i) {
    text.clear();
    IntegerToString(i % 99999, text, "(I5)");
  });
  const FormatArg row[6] = {1.5, 2.5, 3.5, 0.25, 0.5, 0.75};
  run("format_record 6 values", n, [&](int) { format_record("(3F12.6,3F12.4)", row, text); });
  run("istringtodouble", n, [&](int i) {
    double v = 0;
    istringtodouble(i % 2 ? "  12.3456789E-03" : "-1.5D+02", v);
    sink += v;
  });
  std::printf("(%g)\n", sink);
  return 0;
}
