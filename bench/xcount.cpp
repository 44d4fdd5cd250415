// LD_PRELOAD shim for the start-up benchmark: counts the requests a program sends
// to the X server and the round trips it makes until it first goes idle, and
// writes them to the file named by XCOUNT_OUT as "requests round_trips when",
// where "when" is "idle" or, for a program that never idles, "exit".
//
// Requests: Xlib's request counter of the first display opened. Round trips:
// every wait for a reply, whoever asks (Xlib, Xft, the toolkit), counted at the
// one place they all pass, once for each request whose reply is awaited. Idle: the first wait for input outside a reply wait
// that lasts at least XCOUNT_IDLE_MS (default 250 ms); the figures are those
// from before that wait began.
#include <X11/Xlib.h>
#include <dlfcn.h>
#include <poll.h>
#include <sys/select.h>
#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

Display* display = nullptr;
unsigned long round_trips = 0;
int in_reply_wait = 0;  // nested waits inside a reply wait are not idleness
uint64_t last_waited = 0;  // Xlib may ask again for a reply it already waited for

void count_wait(uint64_t seq) {
  if (in_reply_wait || seq == last_waited) return;
  last_waited = seq;
  ++round_trips;
}
bool written = false;

template <typename F>
F next(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

unsigned long requests() { return display ? NextRequest(display) - 1 : 0; }

void write_counts(unsigned long req, unsigned long trips, const char* when) {
  if (written || !display) return;  // processes that never spoke X, such as xterm's child
  written = true;
  const char* path = std::getenv("XCOUNT_OUT");
  if (!path) return;
  if (std::FILE* f = std::fopen(path, "w")) {
    std::fprintf(f, "%lu %lu %s\n", req, trips, when);
    std::fclose(f);
  }
}

std::chrono::milliseconds idle_threshold() {
  const char* v = std::getenv("XCOUNT_IDLE_MS");
  return std::chrono::milliseconds(v ? std::atoi(v) : 250);
}

// Runs a wait for input and records the figures from before it when it was long.
template <typename Wait>
int timed_wait(Wait wait) {
  if (written || in_reply_wait || !display) return wait();
  const unsigned long req = requests(), trips = round_trips;
  const auto start = std::chrono::steady_clock::now();
  const int r = wait();
  if (std::chrono::steady_clock::now() - start >= idle_threshold()) write_counts(req, trips, "idle");
  return r;
}

struct AtExit {
  ~AtExit() { write_counts(requests(), round_trips, "exit"); }
} at_exit;

}  // namespace

extern "C" {

Display* XOpenDisplay(const char* name) {
  static auto real = next<Display* (*)(const char*)>("XOpenDisplay");
  Display* d = real(name);
  if (!display) display = d;
  return d;
}

void* xcb_wait_for_reply(xcb_connection_t* c, unsigned int seq, xcb_generic_error_t** e) {
  static auto real = next<void* (*)(xcb_connection_t*, unsigned int, xcb_generic_error_t**)>("xcb_wait_for_reply");
  count_wait(seq);
  ++in_reply_wait;
  void* r = real(c, seq, e);
  --in_reply_wait;
  return r;
}

void* xcb_wait_for_reply64(xcb_connection_t* c, uint64_t seq, xcb_generic_error_t** e) {
  static auto real = next<void* (*)(xcb_connection_t*, uint64_t, xcb_generic_error_t**)>("xcb_wait_for_reply64");
  count_wait(seq);
  ++in_reply_wait;
  void* r = real(c, seq, e);
  --in_reply_wait;
  return r;
}

int poll(pollfd* fds, nfds_t n, int timeout) {
  static auto real = next<int (*)(pollfd*, nfds_t, int)>("poll");
  return timed_wait([&] { return real(fds, n, timeout); });
}

int select(int n, fd_set* r, fd_set* w, fd_set* x, timeval* t) {
  static auto real = next<int (*)(int, fd_set*, fd_set*, fd_set*, timeval*)>("select");
  return timed_wait([&] { return real(n, r, w, x, t); });
}

}  // extern "C"
