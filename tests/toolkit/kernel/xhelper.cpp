// X helper for the tests and the start-up benchmark:
//   xhelper wait NAME [SECONDS]     waits for a mapped top-level window of that title
//   xhelper close NAME              asks it to close through the window manager protocol
//   xhelper prop NAME PROPERTY      prints a text property of it
//   xhelper geometry NAME           prints its size and position, WxH+X+Y
//   xhelper area NAME W H           prints WxH+X+Y (root co-ordinates) of the largest window
//                                   inside it whose sides are in the ratio W:H, such as a
//                                   form of W by H dialog units
//   xhelper maptime CMD ARGS...     runs CMD and prints the milliseconds until its first
//                                   top-level window is mapped; then closes it
//   xhelper painttime QUIET_MS CMD ARGS...
//                                   runs CMD and prints the milliseconds until the last
//                                   drawing on the screen that QUIET_MS of stillness
//                                   follow, and until its first map; then closes it
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xdamage.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace {

Display* dpy = nullptr;

// Windows of other clients come and go while the tree is walked; a window that
// vanished between listing and asking is no error for a test helper.
int ignore_x_errors(Display*, XErrorEvent*) { return 0; }

Window find_window(const char* name) {
  Window root = DefaultRootWindow(dpy), parent = 0, *children = nullptr;
  unsigned n = 0;
  Window found = 0;
  if (!XQueryTree(dpy, root, &root, &parent, &children, &n)) return 0;
  for (unsigned i = 0; i < n && !found; ++i) {
    char* title = nullptr;
    XWindowAttributes at{};
    if (XFetchName(dpy, children[i], &title) && title) {
      if (!std::strcmp(title, name) && XGetWindowAttributes(dpy, children[i], &at) &&
          at.map_state == IsViewable)
        found = children[i];
      XFree(title);
    }
  }
  if (children) XFree(children);
  return found;
}

// The largest descendant of `top` whose width to height is that of w:h within
// two and a half per cent, in root co-ordinates: dialog units across and down
// come from different measures of the font, so a form's proportions follow
// the font a little.
bool find_area(Window top, double w, double h, XWindowAttributes& best, int& bx, int& by) {
  Window root = 0, parent = 0, *children = nullptr;
  unsigned n = 0;
  bool found = false;
  if (!XQueryTree(dpy, top, &root, &parent, &children, &n)) return false;
  for (unsigned i = 0; i < n; ++i) {
    XWindowAttributes at{};
    if (XGetWindowAttributes(dpy, children[i], &at) && at.map_state == IsViewable && at.height > 0) {
      const double ratio = (at.width / static_cast<double>(at.height)) / (w / h);
      if (ratio > 0.975 && ratio < 1.025 && (!found || at.width > best.width)) {
        Window child = 0;
        XTranslateCoordinates(dpy, children[i], root, 0, 0, &bx, &by, &child);
        best = at;
        found = true;
      }
      XWindowAttributes inner{};
      int ix = 0, iy = 0;
      if (find_area(children[i], w, h, inner, ix, iy) && (!found || inner.width > best.width)) {
        best = inner;
        bx = ix;
        by = iy;
        found = true;
      }
    }
  }
  if (children) XFree(children);
  return found;
}

void send_delete(Window w) {
  XEvent ev{};
  ev.xclient.type = ClientMessage;
  ev.xclient.window = w;
  ev.xclient.message_type = XInternAtom(dpy, "WM_PROTOCOLS", False);
  ev.xclient.format = 32;
  ev.xclient.data.l[0] = static_cast<long>(XInternAtom(dpy, "WM_DELETE_WINDOW", False));
  ev.xclient.data.l[1] = CurrentTime;
  XSendEvent(dpy, w, False, NoEventMask, &ev);
  XSync(dpy, False);  // delivered before this helper's connection goes
}

int maptime(char** argv) {
  const Window root = DefaultRootWindow(dpy);
  XSelectInput(dpy, root, SubstructureNotifyMask);
  XSync(dpy, False);
  const auto start = std::chrono::steady_clock::now();
  const pid_t pid = fork();
  if (pid == 0) {
    execvp(argv[0], argv);
    _exit(127);
  }
  Window mapped = 0;
  const auto limit = start + std::chrono::seconds(20);
  while (!mapped && std::chrono::steady_clock::now() < limit) {
    while (XPending(dpy)) {
      XEvent ev;
      XNextEvent(dpy, &ev);
      if (ev.type == MapNotify && !ev.xmap.override_redirect) {
        mapped = ev.xmap.window;
        break;
      }
    }
    if (!mapped) std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  const double ms =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  if (mapped) send_delete(mapped);
  int status = 0;
  for (int i = 0; i < 100; ++i) {
    if (waitpid(pid, &status, WNOHANG) == pid) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    if (i == 99) {
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
    }
  }
  if (!mapped) return 1;
  std::printf("%.1f\n", ms);
  return 0;
}

// Closes the window (when there is one) and reaps the child, killing it when it
// does not go within five seconds.
void close_and_reap(pid_t pid, Window w) {
  if (w) send_delete(w);
  int status = 0;
  for (int i = 0; i < 100; ++i) {
    if (waitpid(pid, &status, WNOHANG) == pid) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  kill(pid, SIGKILL);
  waitpid(pid, &status, 0);
}

// Painting is done when nothing has been drawn on the screen for QUIET_MS.
// Damage on the root window sees every window's drawing, since the server
// composites nothing and the screen belongs to the program under test.
int painttime(int quiet_ms, char** argv) {
  using clock = std::chrono::steady_clock;
  int damage_event = 0, damage_error = 0;
  if (!XDamageQueryExtension(dpy, &damage_event, &damage_error)) {
    std::fprintf(stderr, "xhelper: the server has no DAMAGE extension\n");
    return 2;
  }
  const Window root = DefaultRootWindow(dpy);
  XSelectInput(dpy, root, SubstructureNotifyMask);
  const Damage damage = XDamageCreate(dpy, root, XDamageReportRawRectangles);
  XSync(dpy, False);
  while (XPending(dpy)) {  // what was drawn before the start is not the program's
    XEvent ev;
    XNextEvent(dpy, &ev);
  }
  XSync(dpy, False);
  const auto start = clock::now();
  const pid_t pid = fork();
  if (pid == 0) {
    execvp(argv[0], argv);
    _exit(127);
  }
  const auto quiet = std::chrono::milliseconds(quiet_ms);
  const auto limit = start + std::chrono::seconds(30);
  Window mapped = 0;
  clock::time_point map_time{}, last_paint{};
  bool gone = false;  // the window went away or the program ended by itself
  auto ms = [&](clock::time_point t) { return std::chrono::duration<double, std::milli>(t - start).count(); };
  while (!gone && clock::now() < limit) {
    while (XPending(dpy)) {
      XEvent ev;
      XNextEvent(dpy, &ev);
      const auto now = clock::now();
      if (ev.type == damage_event + XDamageNotify) {
        if (mapped) last_paint = now;
      } else if (ev.type == MapNotify && !ev.xmap.override_redirect && !mapped) {
        mapped = ev.xmap.window;
        map_time = last_paint = now;
      } else if ((ev.type == UnmapNotify && ev.xunmap.window == mapped) ||
                 (ev.type == DestroyNotify && ev.xdestroywindow.window == mapped)) {
        gone = true;  // what follows is the screen behind it, not the program's drawing
        break;
      }
    }
    if (gone) break;
    if (mapped && clock::now() - last_paint >= quiet) break;
    int status = 0;
    if (waitpid(pid, &status, WNOHANG) == pid) {
      if (!mapped) return 1;
      gone = true;
      break;
    }
    // Wake for the next event, the end of the quiet period, or a look at the child.
    pollfd fd{ConnectionNumber(dpy), POLLIN, 0};
    int wait_ms = 20;
    if (mapped) {
      const auto left = quiet - (clock::now() - last_paint);
      wait_ms = std::max(1, static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(left).count()));
      wait_ms = std::min(wait_ms, 20);
    }
    XFlush(dpy);
    poll(&fd, 1, wait_ms);
  }
  XDamageDestroy(dpy, damage);
  if (!gone) close_and_reap(pid, mapped);
  else close_and_reap(pid, 0);
  if (!mapped) return 1;
  std::printf("%.1f %.1f\n", ms(last_paint), ms(map_time));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: xhelper wait|close|prop|geometry NAME ... | maptime CMD... | painttime QUIET_MS CMD...\n");
    return 2;
  }
  // A busy server may refuse a connection for a moment: try again.
  for (int attempt = 0; attempt < 20 && !dpy; ++attempt) {
    dpy = XOpenDisplay(nullptr);
    if (dpy) XSetErrorHandler(ignore_x_errors);
    if (!dpy) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  if (!dpy) {
    std::fprintf(stderr, "xhelper: no display\n");
    return 2;
  }
  const std::string cmd = argv[1];
  if (cmd == "maptime") return maptime(argv + 2);
  if (cmd == "painttime" && argc > 3) return painttime(std::atoi(argv[2]), argv + 3);
  if (cmd == "wait") {
    const double seconds = argc > 3 ? std::atof(argv[3]) : 10.0;
    const auto limit = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < limit) {
      if (Window w = find_window(argv[2])) {
        std::printf("0x%lx\n", w);
        return 0;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return 1;
  }
  const Window w = find_window(argv[2]);
  if (!w) {
    std::fprintf(stderr, "xhelper: no window \"%s\"\n", argv[2]);
    return 1;
  }
  if (cmd == "close") {
    send_delete(w);
    return 0;
  }
  if (cmd == "geometry") {
    XWindowAttributes at{};
    XGetWindowAttributes(dpy, w, &at);
    std::printf("%dx%d+%d+%d\n", at.width, at.height, at.x, at.y);
    return 0;
  }
  if (cmd == "area" && argc > 4) {
    XWindowAttributes at{};
    int x = 0, y = 0;
    if (!find_area(w, std::atof(argv[3]), std::atof(argv[4]), at, x, y)) return 1;
    std::printf("%dx%d+%d+%d\n", at.width, at.height, x, y);
    return 0;
  }
  if (cmd == "prop" && argc > 3) {
    Atom type;
    int format;
    unsigned long n, after;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(dpy, w, XInternAtom(dpy, argv[3], False), 0, 65536, False, AnyPropertyType,
                           &type, &format, &n, &after, &data) != Success || !data) {
      return 1;
    }
    std::fwrite(data, 1, n, stdout);
    std::printf("\n");
    XFree(data);
    return 0;
  }
  return 2;
}
