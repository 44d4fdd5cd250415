// The clipboard over the Motif clipboard: text, bitmaps and CGM pictures.
#include "toolkit/kernel/clipboard_private.h"

#include <X11/Xlib.h>
#include <Xm/CutPaste.h>
#include <Xm/Text.h>
#include <Xm/Xm.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

constexpr const char* kText = "STRING";
constexpr const char* kTextUtf8 = "UTF8_STRING";
constexpr const char* kBitmap = "PIXMAP";
constexpr const char* kCgm = "Zelvane CGM";
constexpr int kCgmHeader = 8;  // width and height, four bytes each
constexpr int kCgmFormatBits = 8;
constexpr std::size_t kFormatNameLength = 256;

char* name(const char* format) { return const_cast<char*>(format); }

bool ok(int answer) { return answer == ClipboardSuccess; }
bool ok_read(int answer) { return answer == ClipboardSuccess || answer == ClipboardTruncate; }

Widget realized(Widget w) {
  while (w && !XtIsRealized(w)) w = XtParent(w);
  return w;
}

// The widget and window that own what this client puts on the clipboard.
Widget owner_widget(Widget fallback = nullptr) {
  const auto& ws = zelvy_win::state();
  if (yywindowexists(0) && ws.wtWindow[0] && XtIsRealized(ws.wtWindow[0])) return ws.wtWindow[0];
  return realized(fallback);
}

Window owner_window(Widget fallback = nullptr) {
  Widget w = owner_widget(fallback);
  return w ? XtWindow(w) : None;
}

// The CGM format carries its bytes as they are; registered once a display is there.
void register_formats(Display* dpy) {
  static Display* done = nullptr;
  if (done == dpy) return;
  XmClipboardRegisterFormat(dpy, name(kCgm), kCgmFormatBits);
  done = dpy;
}

struct Item {
  const char* label;
  const char* format;
};

// One item of one format, its data in one or more pieces; only the last
// piece's answer decides.
int put(Widget owner, Time time, const Item& item, std::initializer_list<std::pair<const void*, std::size_t>> pieces) {
  Display* dpy = xdisplay();
  Widget w = owner_widget(owner);
  if (!dpy || !w) return kClipError;
  register_formats(dpy);
  const Window win = XtWindow(w);
  XmString label = XmStringCreateLocalized(name(item.label));
  long id = 0;
  int answer = yyClipboardRetry([&] { return XmClipboardStartCopy(dpy, win, label, time, w, nullptr, &id); });
  XmStringFree(label);
  if (!ok(answer)) return kClipError;
  for (const auto& [data, size] : pieces) {
    answer = yyClipboardRetry([&] {
      return XmClipboardCopy(dpy, win, id, name(item.format), const_cast<void*>(data),
                             static_cast<unsigned long>(size), 0, nullptr);
    });
  }
  if (!ok(answer)) {
    yyClipboardRetry([&] { return XmClipboardCancelCopy(dpy, win, id); });
    return kClipError;
  }
  return ok(yyClipboardRetry([&] { return XmClipboardEndCopy(dpy, win, id); })) ? 0 : kClipError;
}

bool length_of(Window win, const char* format, unsigned long& length) {
  length = 0;
  return ok(yyClipboardRetry([&] { return XmClipboardInquireLength(xdisplay(), win, name(format), &length); }));
}

bool retrieve(Window win, const char* format, void* buffer, unsigned long size, unsigned long& got) {
  got = 0;
  long privateid = 0;
  return ok_read(yyClipboardRetry(
      [&] { return XmClipboardRetrieve(xdisplay(), win, name(format), buffer, size, &got, &privateid); }));
}

// The format of the contents; nothing when the clipboard could not be asked.
std::optional<int> format_code() {
  const Window win = owner_window();
  if (!xdisplay() || win == None) return std::nullopt;
  register_formats(xdisplay());
  int count = 0;
  unsigned long longest = 0;
  if (!ok(yyClipboardRetry([&] { return XmClipboardInquireCount(xdisplay(), win, &count, &longest); })))
    return std::nullopt;
  if (count == 0) return kClipEmpty;
  for (int n = 1; n <= count; ++n) {
    char buf[kFormatNameLength] = {};
    unsigned long copied = 0;
    if (!ok_read(yyClipboardRetry(
            [&] { return XmClipboardInquireFormat(xdisplay(), win, n, buf, sizeof buf - 1, &copied); })))
      continue;
    const std::string_view f(buf, std::min<std::size_t>(copied, sizeof buf - 1));
    if (f == kText || f == kTextUtf8) return kClipText;
    if (f == kBitmap) return kClipBitmap;
    if (f == kCgm) return kClipCgm;
  }
  return kClipUnknown;
}

bool read_pixmap(Pixmap& pixmap) {
  std::uint64_t id = 0;
  unsigned long got = 0;
  if (!retrieve(owner_window(), kBitmap, &id, sizeof id, got) || got < sizeof id) return false;
  pixmap = static_cast<Pixmap>(id);
  return pixmap != 0;
}

bool pixmap_size(Pixmap p, unsigned& width, unsigned& height) {
  Window root = 0;
  int x = 0, y = 0;
  unsigned border = 0, depth = 0;
  return XGetGeometry(xdisplay(), p, &root, &x, &y, &width, &height, &border, &depth) != 0;
}

bool read_cgm_header(std::int32_t& width, std::int32_t& height) {
  std::int32_t head[2] = {0, 0};
  unsigned long got = 0;
  // Outside an incremental retrieve: one truncated read of the start, which
  // leaves no reading position behind for the next retrieve.
  const bool read = retrieve(owner_window(), kCgm, head, sizeof head, got) && got == sizeof head;
  width = head[0];
  height = head[1];
  return read;
}

}  // namespace

int yyClipboardPutString(std::string_view text, Time time, std::string_view label, Widget owner) {
  const std::string l(label);
  return put(owner, time, {l.c_str(), kText}, {{text.data(), text.size()}});
}

bool yyClipboardGetText(std::string& text, Widget owner) {
  text.clear();
  const Window win = owner_window(owner);
  if (!xdisplay() || win == None) return false;
  unsigned long length = 0;
  if (!length_of(win, kText, length) || length == 0) return false;
  std::string buffer(length, '\0');
  unsigned long got = 0;
  if (!retrieve(win, kText, buffer.data(), length, got)) return false;
  buffer.resize(std::min(got, length));
  text = std::move(buffer);
  return true;
}

void yyinfoclipboard(int item, int& value) {
  if (!xdisplay()) return;
  if (item == 1) {
    if (const auto code = format_code()) value = *code;
    return;
  }
  value = 0;
  const int code = format_code().value_or(kClipUnknown);
  const Window win = owner_window();
  if (item == 2) {
    unsigned long length = 0;
    if (code == kClipText && length_of(win, kText, length)) value = static_cast<int>(length);
    if (code == kClipCgm && length_of(win, kCgm, length) && length >= kCgmHeader)
      value = static_cast<int>(length) - kCgmHeader;
  } else if (item == 3 || item == 4) {
    if (code == kClipBitmap) {
      Pixmap p = 0;
      unsigned w = 0, h = 0;
      if (read_pixmap(p) && pixmap_size(p, w, h)) value = static_cast<int>(item == 3 ? w : h);
    } else if (code == kClipCgm) {
      std::int32_t w = 0, h = 0;
      if (read_cgm_header(w, h)) value = item == 3 ? w : h;
    }
  }
}

void yyclipboardputstring(int& status, std::string_view text, int length) {
  const std::size_t n = std::min(text.size(), static_cast<std::size_t>(std::max(0, length - 1)));
  status = yyClipboardPutString(text.substr(0, n), CurrentTime);
}

void yyclipboardgetstring(int& length, int& status, std::span<char> buffer) {
  length = 0;
  status = 0;
  const Window win = owner_window();
  if (!xdisplay() || win == None) {
    status = kClipError;
    return;
  }
  unsigned long size = 0;
  if (!length_of(win, kText, size)) {
    status = kClipError;
    return;
  }
  if (size > buffer.size()) {
    size = buffer.size();
    status = kClipTruncated;
  }
  if (size < 1) return;
  unsigned long got = 0;
  if (!retrieve(win, kText, buffer.data(), size, got)) {
    status = kClipError;
    return;
  }
  length = static_cast<int>(std::min(got, size));
}

void yyclipboardputbitmap(std::uint64_t pixmap, int& status) {
  status = put(nullptr, CurrentTime, {"Bitmap", kBitmap}, {{&pixmap, sizeof pixmap}});
}

void yyclipboardgetbitmap(std::uint64_t pixmap, int& status) {
  status = kClipError;
  Pixmap from = 0;
  unsigned w = 0, h = 0;
  if (!xdisplay() || !read_pixmap(from) || !pixmap_size(from, w, h)) return;
  Display* dpy = xdisplay();
  GC gc = XCreateGC(dpy, static_cast<Pixmap>(pixmap), 0, nullptr);
  XCopyArea(dpy, from, static_cast<Pixmap>(pixmap), gc, 0, 0, w, h, 0, 0);
  XFreeGC(dpy, gc);
  XSync(dpy, False);
  status = 0;
}

void yyclipboardputbitmapdata(int width, int height, std::span<const std::int32_t> pixels, int& status) {
  status = kClipError;
  Display* dpy = xdisplay();
  if (!dpy || width < 1 || height < 1 || pixels.size() < static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    return;
  const auto& xs = zelvy_x::state();
  const unsigned depth = static_cast<unsigned>(DefaultDepth(dpy, xs.iScreen));
  const Pixmap p = XCreatePixmap(dpy, RootWindow(dpy, xs.iScreen), static_cast<unsigned>(width),
                                 static_cast<unsigned>(height), depth);
  XImage* im = XGetImage(dpy, p, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height), AllPlanes, ZPixmap);
  if (!im) {
    XFreePixmap(dpy, p);
    return;
  }
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const std::int32_t c = pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
      XPutPixel(im, x, y, yyAllocPixel(c & 0xff, (c >> 8) & 0xff, (c >> 16) & 0xff));
    }
  GC gc = XCreateGC(dpy, p, 0, nullptr);
  XPutImage(dpy, p, gc, im, 0, 0, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height));
  XFreeGC(dpy, gc);
  XDestroyImage(im);
  // The pixmap stays: the clipboard hands out its identifier, not its pixels.
  yyclipboardputbitmap(static_cast<std::uint64_t>(p), status);
}

void yyclipboardgetbitmapdata(std::vector<std::int32_t>& pixels, int& status) {
  status = kClipError;
  pixels.clear();
  Display* dpy = xdisplay();
  Pixmap from = 0;
  unsigned w = 0, h = 0;
  if (!dpy || !read_pixmap(from) || !pixmap_size(from, w, h) || w == 0 || h == 0) return;
  const auto& xs = zelvy_x::state();
  const Pixmap copy = XCreatePixmap(dpy, RootWindow(dpy, xs.iScreen), w, h,
                                    static_cast<unsigned>(DefaultDepth(dpy, xs.iScreen)));
  GC gc = XCreateGC(dpy, copy, 0, nullptr);
  XCopyArea(dpy, from, copy, gc, 0, 0, w, h, 0, 0);
  XFreeGC(dpy, gc);
  XImage* im = XGetImage(dpy, copy, 0, 0, w, h, AllPlanes, ZPixmap);
  XFreePixmap(dpy, copy);
  if (!im) return;
  const Colormap cmap = xs.iCmapMain ? xs.iCmapMain : DefaultColormap(dpy, xs.iScreen);
  pixels.reserve(static_cast<std::size_t>(w) * h);
  std::vector<XColor> row(w);
  for (unsigned y = 0; y < h; ++y) {
    for (unsigned x = 0; x < w; ++x) row[x].pixel = XGetPixel(im, static_cast<int>(x), static_cast<int>(y));
    XQueryColors(dpy, cmap, row.data(), static_cast<int>(w));
    for (const XColor& c : row)
      pixels.push_back(static_cast<std::int32_t>((c.red >> 8) | ((c.green >> 8) << 8) | ((c.blue >> 8) << 16)));
  }
  XDestroyImage(im);
  status = 0;
}

void yyclipboardputcgm(int length, int width, int height, int& status, std::span<const std::uint8_t> data) {
  const std::int32_t w = width, h = height;
  const std::size_t n = std::min(data.size(), static_cast<std::size_t>(std::max(0, length)));
  status = put(nullptr, CurrentTime, {"CGM", kCgm}, {{&w, sizeof w}, {&h, sizeof h}, {data.data(), n}});
}

void yyclipboardgetcgm(std::vector<std::uint8_t>& data, int& length, int& width, int& height, int& status) {
  data.clear();
  length = width = height = 0;
  status = kClipError;
  Display* dpy = xdisplay();
  const Window win = owner_window();
  if (!dpy || win == None) return;
  register_formats(dpy);
  if (!ok(yyClipboardRetry([&] { return XmClipboardStartRetrieve(dpy, win, CurrentTime); }))) return;
  unsigned long total = 0;
  bool good = length_of(win, kCgm, total) && total >= kCgmHeader;
  std::int32_t head[2] = {0, 0};
  unsigned long got = 0;
  if (good) good = retrieve(win, kCgm, head, sizeof head, got) && got == sizeof head;
  if (good) {
    data.resize(total - kCgmHeader);
    good = data.empty() || retrieve(win, kCgm, data.data(), data.size(), got);
    if (good) data.resize(std::min<std::size_t>(got, data.size()));
  }
  const int end = yyClipboardRetry([&] { return XmClipboardEndRetrieve(dpy, win); });
  if (!good || !ok_read(end)) {
    data.clear();
    return;
  }
  width = head[0];
  height = head[1];
  length = static_cast<int>(data.size());
  status = 0;
}

void yyclipboardmethod(int method) { zelvy_x::state().iClipboardMethod = method != 0 ? 1 : 0; }

// ---- Text widgets ------------------------------------------------------------

namespace {

bool selected(Widget w, std::string& text) {
  text.clear();
  char* s = XmTextGetSelection(w);
  if (!s) return false;
  text = s;
  XtFree(s);
  return !text.empty();
}

}  // namespace

bool yyXmTextCopy(Widget w, Time time) {
  if (zelvy_x::state().iClipboardMethod == 0) return XmTextCopy(w, time) == True;
  std::string text;
  if (!selected(w, text)) return false;
  return yyClipboardPutString(text, time, "Text", w) == 0;
}

bool yyXmTextCut(Widget w, Time time) {
  if (zelvy_x::state().iClipboardMethod == 0) return XmTextCut(w, time) == True;
  if (!XmTextGetEditable(w)) return false;
  std::string text;
  if (!selected(w, text)) return false;
  const bool put_ok = yyClipboardPutString(text, time, "Text", w) == 0;
  // The selection goes even when the clipboard refused it.
  XmTextPosition left = 0, right = 0;
  if (XmTextGetSelectionPosition(w, &left, &right)) XmTextReplace(w, left, right, const_cast<char*>(""));
  return put_ok;
}

bool yyXmTextPaste(Widget w) {
  if (zelvy_x::state().iClipboardMethod == 0) return XmTextPaste(w) == True;
  if (!XmTextGetEditable(w)) return false;
  int code = kClipEmpty, size = 0;
  yyinfoclipboard(1, code);
  if (code != kClipText) return false;
  yyinfoclipboard(2, size);
  if (size <= 0) return false;
  std::vector<char> buffer(static_cast<std::size_t>(size) + 1, '\0');
  int length = 0, status = 0;
  yyclipboardgetstring(length, status, std::span<char>(buffer.data(), static_cast<std::size_t>(size)));
  if (status == kClipError || length <= 0) return false;
  buffer[static_cast<std::size_t>(length)] = '\0';
  XmTextPosition left = 0, right = 0;
  if (XmTextGetSelectionPosition(w, &left, &right) && left != right) {
    XmTextReplace(w, left, right, buffer.data());
  } else {
    XmTextInsert(w, XmTextGetInsertionPosition(w), buffer.data());
  }
  return true;
}
