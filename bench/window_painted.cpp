// Starts a program and measures, from outside, what a user waits for: the
// seconds until a window whose title holds NAME is on the screen with text
// drawn down its left side, and the program's resident memory then and after
// SETTLE seconds. Prints "seconds kB-at-paint kB-after-settle" and ends the
// program. Usage: window_painted NAME SETTLE COMMAND [ARGS...]
//
// "Text drawn" means that a share of the pixel rows of the window's left
// strip holds dark pixels beside light ones: menus and bars alone stay far
// below it, a page of text lines passes it, and a window not yet painted
// (one colour throughout) never does.
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

namespace {

constexpr int kStripWidth = 240;       // pixels from the left edge that are looked at
constexpr double kPaintedShare = 0.3;  // share of rows with ink that counts as a page
constexpr int kDarkSum = 3 * 100;      // red + green + blue below this is ink
constexpr int kLightSum = 3 * 180;     // and above this paper: a row of text holds both
constexpr auto kPoll = std::chrono::milliseconds(5);
constexpr double kGiveUp = 60.0;  // seconds

using Clock = std::chrono::steady_clock;

double since(Clock::time_point t0) { return std::chrono::duration<double>(Clock::now() - t0).count(); }

long resident_kb(pid_t pid) {
  std::ifstream f("/proc/" + std::to_string(pid) + "/status");
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

// The program's window may vanish or move while it is looked at.
int ignore_errors(Display*, XErrorEvent*) { return 0; }

// A viewable window below `w` (itself included) whose name holds `name`; 0 when none.
Window find_window(Display* d, Window w, const std::string& name, int depth) {
  char* title = nullptr;
  if (XFetchName(d, w, &title) && title) {
    const bool match = std::strstr(title, name.c_str()) != nullptr;
    XFree(title);
    XWindowAttributes a;
    if (match && XGetWindowAttributes(d, w, &a) && a.map_state == IsViewable) return w;
  }
  if (depth == 0) return 0;
  Window root = 0, parent = 0, *kids = nullptr;
  unsigned n = 0;
  if (!XQueryTree(d, w, &root, &parent, &kids, &n)) return 0;
  Window found = 0;
  for (unsigned i = 0; i < n && !found; ++i) found = find_window(d, kids[i], name, depth - 1);
  if (kids) XFree(kids);
  return found;
}

// One colour of a true-colour pixel, 0..255 for the usual eight bits a colour.
unsigned long channel(unsigned long pixel, unsigned long mask) {
  return mask ? (pixel & mask) >> std::countr_zero(mask) : 0;
}

// Share of the rows of the window's left strip that hold a dark pixel.
double inked_share(Display* d, Window w) {
  XWindowAttributes a;
  if (!XGetWindowAttributes(d, w, &a) || a.map_state != IsViewable || a.height <= 0) return 0;
  const int width = std::min(kStripWidth, a.width);
  XImage* img = XGetImage(d, w, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(a.height), AllPlanes, ZPixmap);
  if (!img) return 0;
  int inked = 0;
  for (int y = 0; y < a.height; ++y) {
    bool dark = false, light = false;
    for (int x = 0; x < width && !(dark && light); ++x) {
      const unsigned long p = XGetPixel(img, x, y);
      const int sum = static_cast<int>(channel(p, img->red_mask) + channel(p, img->green_mask) + channel(p, img->blue_mask));
      dark |= sum < kDarkSum;
      light |= sum > kLightSum;
    }
    inked += dark && light ? 1 : 0;
  }
  XDestroyImage(img);
  return static_cast<double>(inked) / a.height;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: window_painted NAME SETTLE COMMAND [ARGS...]\n");
    return 2;
  }
  const std::string name = argv[1];
  const double settle = std::atof(argv[2]);
  // A server still closing the connections of the run before may refuse for a moment.
  Display* d = XOpenDisplay(nullptr);
  for (int tries = 0; !d && tries < 100; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    d = XOpenDisplay(nullptr);
  }
  if (!d) {
    std::fprintf(stderr, "window_painted: no display\n");
    return 1;
  }
  XSetErrorHandler(ignore_errors);
  const bool trace = std::getenv("WINDOW_PAINTED_TRACE") != nullptr;  // the share at each look
  const Clock::time_point t0 = Clock::now();
  const pid_t pid = fork();
  if (pid == 0) {
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, 1);
    dup2(null, 2);
    execvp(argv[3], argv + 3);
    _exit(127);
  }
  double seconds = -1;
  long painted_kb = 0;
  while (since(t0) < kGiveUp) {
    if (waitpid(pid, nullptr, WNOHANG) == pid) break;
    const Window w = find_window(d, DefaultRootWindow(d), name, 3);
    const double share = w ? inked_share(d, w) : 0;
    if (trace && w) std::fprintf(stderr, "%.3f %.2f\n", since(t0), share);
    if (share >= kPaintedShare) {
      seconds = since(t0);
      painted_kb = resident_kb(pid);
      break;
    }
    std::this_thread::sleep_for(kPoll);
  }
  int status = 0;
  if (seconds < 0) {
    kill(pid, SIGTERM);
    waitpid(pid, &status, 0);
    std::fprintf(stderr, "window_painted: no painted window named %s\n", name.c_str());
    XCloseDisplay(d);
    return 1;
  }
  std::this_thread::sleep_for(std::chrono::duration<double>(settle));
  const long settled_kb = resident_kb(pid);
  kill(pid, SIGTERM);
  waitpid(pid, &status, 0);
  std::printf("%.3f %ld %ld\n", seconds, painted_kb, settled_kb);
  XCloseDisplay(d);
  return 0;
}
