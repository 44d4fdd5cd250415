// Status bar: plain X windows for the bar and its parts, drawn with the
// status-bar font.
#include "toolkit/kernel/statusbar.h"

#include <X11/Xatom.h>

#include <algorithm>

#include "toolkit/kernel/display.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_table.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/fixed_text.h"

namespace {

using namespace zelvy_sbar;
using zelvy_x::ixDisplay;

GC sbarGC = nullptr;
XftDraw* sbarDraw = nullptr;
XftColor sbarColour{};
bool stage2 = false;

StatusBarRecord* bar_of(int h) {
  if (h < 0 || h >= static_cast<int>(psbarInfo.size())) return nullptr;
  return psbarInfo[h].get();
}

int text_width(const std::string& utf8) {
  if (xftSBarFont) {
    XGlyphInfo ext{};
    XftTextExtentsUtf8(ixDisplay, xftSBarFont, reinterpret_cast<const FcChar8*>(utf8.data()),
                       static_cast<int>(utf8.size()), &ext);
    return ext.xOff;
  }
  if (coreSBarFont) return XTextWidth(coreSBarFont, utf8.data(), static_cast<int>(utf8.size()));
  return 0;
}

void draw_text(Window w, int x, const std::string& text) {
  if (text.empty()) return;
  int type = 0;
  const std::string utf8 = yyConvertEncoding(text, zelvy_x::iDialogEncoding, type);
  if (xftSBarFont && sbarDraw) {
    XftDrawChange(sbarDraw, w);
    XftDrawStringUtf8(sbarDraw, &sbarColour, xftSBarFont, x, iSBarYText,
                      reinterpret_cast<const FcChar8*>(utf8.data()), static_cast<int>(utf8.size()));
  } else {
    XSetForeground(ixDisplay, sbarGC, zelvy_x::appData.foreground);
    XDrawString(ixDisplay, w, sbarGC, x, iSBarYText, text.data(), static_cast<int>(text.size()));
  }
}

int part_width(const StatusBarRecord& b, int i, int framewidth) {
  const int w = i == b.StretchPart ? framewidth - b.FixedWidth : b.PartWidths[i];
  return std::max(1, w);
}

void line(Window w, Pixel colour, int x1, int y1, int x2, int y2) {
  XSetForeground(ixDisplay, sbarGC, colour);
  XDrawLine(ixDisplay, w, sbarGC, x1, y1, x2, y2);
}

void draw_part(const StatusBarRecord& b, int i, int framewidth) {
  const Window w = b.PartWindows[i];
  const int width = part_width(b, i, framewidth), height = iSBarHeight;
  XClearWindow(ixDisplay, w);
  const ZelvAppData& a = zelvy_x::appData;
  if (b.PartTexts[i]) {
    const std::string& t = *b.PartTexts[i];
    int x = 5;
    if (b.PartAlign[i] != 0) {
      int type = 0;
      const int tw = text_width(yyConvertEncoding(t, zelvy_x::iDialogEncoding, type));
      x = b.PartAlign[i] == 1 ? (width - tw) / 2 : width - 5 - tw;
    }
    draw_text(w, x, t);
  }
  if (zelvy_x::bFlatStyle) {
    line(w, a.bottomShadowColor, 0, 0, width - 1, 0);
    if (b.PartStyles[i] != 0 && i != b.StretchPart) {
      line(w, a.bottomShadowColor, width - 3, 3, width - 3, iSBarHeight - 2);
      line(w, a.topShadowColor, width - 2, 3, width - 2, iSBarHeight - 2);
    }
  } else if (b.PartStyles[i] != 0) {
    const Pixel first = b.PartStyles[i] == 1 ? a.darkColor : a.topShadowColor;
    const Pixel second = b.PartStyles[i] == 1 ? a.topShadowColor : a.darkColor;
    XPoint p1[3] = {{1, static_cast<short>(height - 1)}, {1, 3}, {static_cast<short>(width - 3), 3}};
    XPoint p2[3] = {{1, static_cast<short>(height - 1)},
                    {static_cast<short>(width - 2), static_cast<short>(height - 1)},
                    {static_cast<short>(width - 2), 3}};
    XSetForeground(ixDisplay, sbarGC, first);
    XDrawLines(ixDisplay, w, sbarGC, p1, 3, CoordModeOrigin);
    XSetForeground(ixDisplay, sbarGC, second);
    XDrawLines(ixDisplay, w, sbarGC, p2, 3, CoordModeOrigin);
  }
}

void draw_bar_line(const StatusBarRecord& b, int framewidth) {
  XClearWindow(ixDisplay, b.BarWindow);
  if (!zelvy_x::bFlatStyle) return;
  int end = b.StartOffset;
  for (int i = 0; i < b.PartCount; ++i) end += part_width(b, i, framewidth);
  if (end < framewidth) line(b.BarWindow, zelvy_x::appData.bottomShadowColor, end, 0, framewidth, 0);
}

void draw_prompt(const StatusBarRecord& b) {
  XClearWindow(ixDisplay, b.PromptWindow);
  draw_text(b.PromptWindow, 5, std::string(b.PromptText));
}

// The part texts, one a line, on the shell: readable by tools outside the program.
void publish_texts(int h, const StatusBarRecord& b) {
  const Window shell = zelvy_win::wShell[h];
  if (!shell) return;
  std::string all;
  for (int i = 0; i < b.PartCount; ++i) {
    if (i) all += '\n';
    if (b.PartTexts[i]) all += *b.PartTexts[i];
  }
  static Atom prop = XInternAtom(ixDisplay, "_ZELV_STATUSBAR", False);
  XChangeProperty(ixDisplay, shell, prop, XA_STRING, 8, PropModeReplace,
                  reinterpret_cast<const unsigned char*>(all.data()), static_cast<int>(all.size()));
}

XSetWindowAttributes bar_attributes(unsigned long& mask) {
  XSetWindowAttributes at{};
  at.background_pixel = zelvy_x::appData.background;
  at.border_pixel = zelvy_x::appData.background;
  at.bit_gravity = StaticGravity;
  at.win_gravity = SouthWestGravity;
  at.backing_store = WhenMapped;
  at.event_mask = ExposureMask | ButtonPressMask | ButtonReleaseMask;
  mask = CWBackPixel | CWBorderPixel | CWBitGravity | CWWinGravity | CWBackingStore | CWEventMask;
  return at;
}

void destroy_parts(StatusBarRecord& b) {
  for (Window w : b.PartWindows) XDestroyWindow(ixDisplay, w);
  b.PartWindows.clear();
}

// Places and maps the part windows for the present widths.
void update(int h, StatusBarRecord& b) {
  const int framewidth = zelvy_win::WinInfo[h].FrameWidth;
  b.StartOffset = zelvy_x::bFlatStyle ? 0 : -1;
  b.FixedWidth = b.StartOffset;
  b.StretchPart = -1;
  for (int i = 0; i < b.PartCount; ++i) {
    if (b.PartWidths[i] == -1) b.StretchPart = i;
    else b.FixedWidth += b.PartWidths[i];
  }
  destroy_parts(b);
  unsigned long mask = 0;
  XSetWindowAttributes at = bar_attributes(mask);
  at.win_gravity = NorthWestGravity;
  int x = b.StartOffset;
  for (int i = 0; i < b.PartCount; ++i) {
    const int w = part_width(b, i, framewidth);
    b.PartWindows.push_back(XCreateWindow(ixDisplay, b.BarWindow, x, b.StartOffset, w, iSBarHeight,
                                          0, CopyFromParent, InputOutput, CopyFromParent, mask, &at));
    x += w;
  }
  XMapSubwindows(ixDisplay, b.BarWindow);
  if (b.DisplayMode == 1) XUnmapWindow(ixDisplay, b.PromptWindow);
  else XRaiseWindow(ixDisplay, b.PromptWindow);
  yyWindowStatusBarDraw(h);
}

}  // namespace

void yyWindowStatusBarInit(int stage) {
  Display* dpy = ixDisplay;
  if (!dpy) return;
  if (stage == 1) {
    if (iSBarHeight) return;
    const ZelvAppData& a = zelvy_x::appData;
    if (zelvy_x::bXft) xftSBarFont = yyXftOpen(a.xftNameStatus, a.xftSizeStatus > 0 ? a.xftSizeStatus : 8);
    int height = 0;
    if (xftSBarFont) {
      XGlyphInfo ext{};
      XftTextExtents8(dpy, xftSBarFont, reinterpret_cast<const FcChar8*>("Wy@"), 3, &ext);
      height = ext.height;
    } else {
      coreSBarFont = zelvy_x::dialogFontStruct;
      if (coreSBarFont) {
        int dir = 0, asc = 0, desc = 0;
        XCharStruct all{};
        XTextExtents(coreSBarFont, "Wy@", 3, &dir, &asc, &desc, &all);
        height = all.ascent + all.descent;
      }
    }
    iSBarHeight = height + 12;
    iSBarYText = height + 6;
    return;
  }
  if (stage2) return;
  stage2 = true;
  const Window root = RootWindow(dpy, zelvy_x::iScreen);
  sbarGC = XCreateGC(dpy, root, 0, nullptr);
  if (coreSBarFont) XSetFont(dpy, sbarGC, coreSBarFont->fid);
  if (xftSBarFont) {
    sbarDraw = XftDrawCreate(dpy, root, zelvy_x::iVisual, zelvy_x::iCmapMain);
    const XColor& c = zelvy_x::wSchemeCol[0];
    XRenderColor rc{c.red, c.green, c.blue, 0xffff};
    XftColorAllocValue(dpy, zelvy_x::iVisual, zelvy_x::iCmapMain, &rc, &sbarColour);
  }
}

void yyWindowStatusBarCreate(int h) {
  if (!ixDisplay) return;
  yyWindowStatusBarInit(2);
  if (psbarInfo.size() < zelvy_win::kSlots) psbarInfo.resize(zelvy_win::kSlots);
  auto b = std::make_unique<StatusBarRecord>();
  const WindowRecord& r = zelvy_win::WinInfo[h];
  b->PartCount = 1;
  b->PartWidths = {r.FrameWidth};
  b->PartStyles = {1};
  b->PartAlign = {0};
  b->PartTexts.resize(1);
  unsigned long mask = 0;
  XSetWindowAttributes at = bar_attributes(mask);
  b->BarWindow = XCreateWindow(ixDisplay, zelvy_win::wWindow[h], 0, r.FrameHeight - iSBarHeight - 1,
                               std::max(1, r.FrameWidth), iSBarHeight + 1, 0, CopyFromParent,
                               InputOutput, CopyFromParent, mask, &at);
  at.win_gravity = NorthWestGravity;
  b->PromptWindow = XCreateWindow(ixDisplay, b->BarWindow, 0, 0, std::max(1, r.FrameWidth),
                                  iSBarHeight + 1, 0, CopyFromParent, InputOutput, CopyFromParent,
                                  mask, &at);
  b->PartWidths[0] = -1;  // the first part stretches until parts are given
  psbarInfo[h] = std::move(b);
  update(h, *psbarInfo[h]);
  XMapWindow(ixDisplay, psbarInfo[h]->BarWindow);
  if (h == 0) {
    // Library errors at debug level 3 go to part 1 of the root window's bar.
    yySetErrorStatusSink([](std::string_view text) { WindowOutStatusBar(1, text, 0); });
  }
}

void yyWindowStatusBarDraw(int h) {
  StatusBarRecord* b = bar_of(h);
  if (!b || !ixDisplay) return;
  const int fw = zelvy_win::WinInfo[h].FrameWidth;
  if (b->DisplayMode == 2) {
    draw_prompt(*b);
    return;
  }
  draw_bar_line(*b, fw);
  for (int i = 0; i < b->PartCount; ++i) draw_part(*b, i, fw);
}

bool yyWindowStatusBarExpose(int h, Window xwin) {
  StatusBarRecord* b = bar_of(h);
  if (!b) return false;
  const int fw = zelvy_win::WinInfo[h].FrameWidth;
  if (xwin == b->PromptWindow) {
    if (b->DisplayMode == 2) draw_prompt(*b);
    return true;
  }
  for (int i = 0; i < b->PartCount; ++i)
    if (b->PartWindows[i] == xwin) {
      if (b->DisplayMode == 1) draw_part(*b, i, fw);
      return true;
    }
  if (xwin == b->BarWindow) {
    if (b->DisplayMode == 1) draw_bar_line(*b, fw);
    return true;
  }
  return false;
}

bool yyWindowStatusBarOwns(int h, Window xwin) {
  StatusBarRecord* b = bar_of(h);
  if (!b || !xwin) return false;
  if (xwin == b->BarWindow || xwin == b->PromptWindow) return true;
  return std::find(b->PartWindows.begin(), b->PartWindows.end(), xwin) != b->PartWindows.end();
}

void yyWindowStatusBarPrompt(int h, bool show, std::string_view text) {
  StatusBarRecord* b = bar_of(h);
  if (!b) return;
  b->PromptText = show ? text : std::string_view{};
  yyWindowStatusBarDraw(h);
}

void yyWindowStatusBarSwitch(int direction, int h) {
  if (direction == 2) {
    StatusBarRecord* b = bar_of(h);
    if (!b || b->DisplayMode != 1) return;
    b->PromptText = {};
    b->DisplayMode = 2;
    XMapRaised(ixDisplay, b->PromptWindow);
    yyWindowStatusBarDraw(h);
    return;
  }
  for (auto& b : psbarInfo) {
    if (!b || b->DisplayMode != 2) continue;
    XUnmapWindow(ixDisplay, b->PromptWindow);
    b->DisplayMode = 1;
  }
}

void yyWindowStatusBarShutdown(int h) {
  StatusBarRecord* b = bar_of(h);
  if (!b) return;
  if (ixDisplay) XDestroyWindow(ixDisplay, b->BarWindow);  // parts and prompt go with it
  psbarInfo[h].reset();
  if (h == 0) yySetErrorStatusSink(nullptr);
}

void yyWindowStatusBarResize(int h) {
  StatusBarRecord* b = bar_of(h);
  if (!b) return;
  const WindowRecord& r = zelvy_win::WinInfo[h];
  const int fw = std::max(1, r.FrameWidth);
  XMoveResizeWindow(ixDisplay, b->BarWindow, 0, r.FrameHeight - iSBarHeight - 1, fw, iSBarHeight + 1);
  XResizeWindow(ixDisplay, b->PromptWindow, fw, iSBarHeight + 1);
  if (b->StretchPart >= 0) {
    int x = fw;
    for (int i = b->PartCount - 1; i > b->StretchPart; --i) {
      x -= part_width(*b, i, fw);
      XMoveWindow(ixDisplay, b->PartWindows[i], x, b->StartOffset);
    }
    XResizeWindow(ixDisplay, b->PartWindows[b->StretchPart], part_width(*b, b->StretchPart, fw),
                  iSBarHeight);
  }
  yyWindowStatusBarDraw(h);
}

int yyWindowStatusBarPartAt(int h, int rootx, int rooty) {
  StatusBarRecord* b = bar_of(h);
  if (!b) return 0;
  for (int i = 0; i < b->PartCount; ++i) {
    int x = 0, y = 0;
    Window child;
    XTranslateCoordinates(ixDisplay, b->PartWindows[i], RootWindow(ixDisplay, zelvy_x::iScreen), 0,
                          0, &x, &y, &child);
    const int w = part_width(*b, i, zelvy_win::WinInfo[h].FrameWidth);
    if (rootx >= x && rootx < x + w && rooty >= y && rooty < y + iSBarHeight) return i + 1;
  }
  return 0;
}

std::string yyWindowStatusBarText(int h, int part) {
  StatusBarRecord* b = bar_of(h);
  if (!b || part < 1 || part > b->PartCount || !b->PartTexts[part - 1]) return {};
  return *b->PartTexts[part - 1];
}

void WindowStatusBarParts(int count, std::span<const int> widths, std::span<const int> styles,
                          std::optional<int> flags) {
  const int h = zelvy_win::iWinCur;
  StatusBarRecord* b = bar_of(h);
  if (!b || count < 1) return;
  count = std::min(count, 255);
  if (static_cast<int>(widths.size()) < count) count = static_cast<int>(widths.size());
  if (count < 1) return;
  if (std::count(widths.begin(), widths.begin() + count, -1) > 1) return;
  const bool pixels = flags.value_or(0) & 1;
  b->PartCount = count;
  b->PartWidths.assign(count, 0);
  b->PartStyles.assign(count, 1);
  b->PartAlign.assign(count, 0);
  b->PartTexts.assign(count, std::nullopt);
  for (int i = 0; i < count; ++i) {
    int w = widths[i];
    if (w != -1 && !pixels) {
      int px = 0, py = 0;
      WindowUnitsToPixels(w, 0, px, py);
      w = px;
    }
    b->PartWidths[i] = w;
    if (i < static_cast<int>(styles.size())) b->PartStyles[i] = styles[i];
  }
  update(h, *b);
  publish_texts(h, *b);
  XFlush(ixDisplay);
}

void WindowOutStatusBar(int part, std::string_view text, std::optional<int> window) {
  if (part < 1 || part > 255) return;
  const int h = window.value_or(zelvy_win::iWinCur);
  if (!yywindowexists(h)) {
    yyerror(1003, "WindowOutStatusBar");
    return;
  }
  StatusBarRecord* b = bar_of(h);
  if (!b || part > b->PartCount) return;
  std::string_view t = trimmed(text);
  int align = 0;
  if (t.substr(0, 2) == "\t\t") {
    align = 2;
    t.remove_prefix(2);
  } else if (t.substr(0, 1) == "\t") {
    align = 1;
    t.remove_prefix(1);
  }
  b->PartAlign[part - 1] = align;
  b->PartTexts[part - 1] = t.empty() ? std::nullopt : std::optional<std::string>(t);
  if (b->DisplayMode == 1) draw_part(*b, part - 1, zelvy_win::WinInfo[h].FrameWidth);
  publish_texts(h, *b);
  XFlush(ixDisplay);
}
