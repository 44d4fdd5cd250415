// What IOsCommand adds to the program it starts: `true` run through it, as
// the program runs the reduction code (waiting without end, with the wait
// hook that keeps the windows alive) and without the hook, beside the same
// shell started directly (`sh -c true`: posix_spawn and waitpid, nothing
// else). The three are interleaved in every round so that the machine's load
// falls on all alike; medians and the 10th and 90th percentiles, in
// microseconds.
//
// Left out: the hook's own work in the program (serving X events, the status
// bar's clock), which depends on what the screen does meanwhile, and the
// cost of a big parent process, whose page tables fork copies.
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "toolkit/os/command.h"

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

double micros(const std::function<void()>& f) {
  const auto t0 = Clock::now();
  f();
  return std::chrono::duration<double, std::micro>(Clock::now() - t0).count();
}

void shell_directly() {
  pid_t pid = 0;
  const char* argv[] = {"sh", "-c", "true", nullptr};
  if (posix_spawn(&pid, "/bin/sh", nullptr, nullptr, const_cast<char* const*>(argv), environ) != 0) std::abort();
  int status = 0;
  waitpid(pid, &status, 0);
}

int g_hook_calls = 0;

void report(const char* name, std::vector<double> v) {
  std::sort(v.begin(), v.end());
  const auto at = [&](double q) { return v[static_cast<std::size_t>(q * static_cast<double>(v.size() - 1))]; };
  std::printf("%-34s median %8.0f us   p10 %8.0f   p90 %8.0f\n", name, at(0.5), at(0.1), at(0.9));
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 300;
  std::vector<double> direct, plain, hooked;
  for (int i = 0; i < rounds; ++i) {
    direct.push_back(micros(shell_directly));
    plain.push_back(micros([] { IOsCommand("true", kCmdWait); }));
    yyossetcommandwaithook([](int) { ++g_hook_calls; });
    hooked.push_back(micros([] { IOsCommand("true", kCmdWait); }));
    yyossetcommandwaithook(nullptr);
  }
  std::printf("%d rounds, interleaved\n", rounds);
  report("sh -c true (posix_spawn, waitpid)", direct);
  report("IOsCommand, plain wait", plain);
  report("IOsCommand, wait hook (as Run)", hooked);
  std::printf("hook calls per command: %.1f\n", static_cast<double>(g_hook_calls) / rounds);
  return 0;
}
