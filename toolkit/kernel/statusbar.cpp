// Status bar: plain X windows for the bar and its parts, drawn with the
// status-bar font.
#include "toolkit/kernel/statusbar_private.h"

#include <X11/Xatom.h>

#include <algorithm>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/window.h"
#include "toolkit/kernel/window_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"
#include "toolkit/base/fixed_text.h"

// This module's state.
static zelvy_sbar::State& sb = zelvy_sbar::state();

namespace {

StatusBarRecord* bar_of(int h) {
  if (h < 0 || h >= static_cast<int>(sb.psbarInfo.size())) return nullptr;
  return sb.psbarInfo[h].get();
}

int text_width(const std::string& utf8) {
  if (sb.xftSBarFont) {
    XGlyphInfo ext{};
    XftTextExtentsUtf8(xdisplay(), sb.xftSBarFont, reinterpret_cast<const FcChar8*>(utf8.data()),
                       static_cast<int>(utf8.size()), &ext);
    return ext.xOff;
  }
  if (sb.coreSBarFont) return XTextWidth(sb.coreSBarFont, utf8.data(), static_cast<int>(utf8.size()));
  return 0;
}

void draw_text(Window w, int x, const std::string& text) {
  if (text.empty()) return;
  int type = 0;
  const std::string utf8 = yyConvertEncoding(text, zelvy_x::state().iDialogEncoding, type);
  if (sb.xftSBarFont && sb.sbarDraw) {
    XftDrawChange(sb.sbarDraw, w);
    XftDrawStringUtf8(sb.sbarDraw, &sb.sbarColour, sb.xftSBarFont, x, sb.iSBarYText,
                      reinterpret_cast<const FcChar8*>(utf8.data()), static_cast<int>(utf8.size()));
  } else {
    XSetForeground(xdisplay(), sb.sbarGC, zelvy_x::state().appData.foreground);
    XDrawString(xdisplay(), w, sb.sbarGC, x, sb.iSBarYText, text.data(), static_cast<int>(text.size()));
  }
}

int part_width(const StatusBarRecord& b, int i, int framewidth) {
  const int w = i == b.StretchPart ? framewidth - b.FixedWidth : b.PartWidths[i];
  return std::max(1, w);
}

void line(Window w, Pixel colour, int x1, int y1, int x2, int y2) {
  XSetForeground(xdisplay(), sb.sbarGC, colour);
  XDrawLine(xdisplay(), w, sb.sbarGC, x1, y1, x2, y2);
}

void draw_part(const StatusBarRecord& b, int i, int framewidth) {
  const Window w = b.PartWindows[i];
  const int width = part_width(b, i, framewidth), height = sb.iSBarHeight;
  XClearWindow(xdisplay(), w);
  const ZelvAppData& a = zelvy_x::state().appData;
  if (b.PartTexts[i]) {
    const std::string& t = *b.PartTexts[i];
    int x = 5;
    if (b.PartAlign[i] != 0) {
      int type = 0;
      const int tw = text_width(yyConvertEncoding(t, zelvy_x::state().iDialogEncoding, type));
      x = b.PartAlign[i] == 1 ? (width - tw) / 2 : width - 5 - tw;
    }
    draw_text(w, x, t);
  }
  if (zelvy_x::state().bFlatStyle) {
    line(w, a.bottomShadowColor, 0, 0, width - 1, 0);
    if (b.PartStyles[i] != 0 && i != b.StretchPart) {
      line(w, a.bottomShadowColor, width - 3, 3, width - 3, sb.iSBarHeight - 2);
      line(w, a.topShadowColor, width - 2, 3, width - 2, sb.iSBarHeight - 2);
    }
  } else if (b.PartStyles[i] != 0) {
    const Pixel first = b.PartStyles[i] == 1 ? a.darkColor : a.topShadowColor;
    const Pixel second = b.PartStyles[i] == 1 ? a.topShadowColor : a.darkColor;
    XPoint p1[3] = {{1, static_cast<short>(height - 1)}, {1, 3}, {static_cast<short>(width - 3), 3}};
    XPoint p2[3] = {{1, static_cast<short>(height - 1)},
                    {static_cast<short>(width - 2), static_cast<short>(height - 1)},
                    {static_cast<short>(width - 2), 3}};
    XSetForeground(xdisplay(), sb.sbarGC, first);
    XDrawLines(xdisplay(), w, sb.sbarGC, p1, 3, CoordModeOrigin);
    XSetForeground(xdisplay(), sb.sbarGC, second);
    XDrawLines(xdisplay(), w, sb.sbarGC, p2, 3, CoordModeOrigin);
  }
}

void draw_bar_line(const StatusBarRecord& b, int framewidth) {
  XClearWindow(xdisplay(), b.BarWindow);
  if (!zelvy_x::state().bFlatStyle) return;
  int end = b.StartOffset;
  for (int i = 0; i < b.PartCount; ++i) end += part_width(b, i, framewidth);
  if (end < framewidth) line(b.BarWindow, zelvy_x::state().appData.bottomShadowColor, end, 0, framewidth, 0);
}

void draw_prompt(const StatusBarRecord& b) {
  XClearWindow(xdisplay(), b.PromptWindow);
  draw_text(b.PromptWindow, 5, b.PromptText);
}

// The part texts, one a line, on the shell: readable by tools outside the program.
void publish_texts(int h, const StatusBarRecord& b) {
  const Window shell = zelvy_win::state().wShell[h];
  if (!shell) return;
  std::string all;
  for (int i = 0; i < b.PartCount; ++i) {
    if (i) all += '\n';
    if (b.PartTexts[i]) all += *b.PartTexts[i];
  }
  static Atom prop = XInternAtom(xdisplay(), "_ZELV_STATUSBAR", False);
  XChangeProperty(xdisplay(), shell, prop, XA_STRING, 8, PropModeReplace,
                  reinterpret_cast<const unsigned char*>(all.data()), static_cast<int>(all.size()));
}

XSetWindowAttributes bar_attributes(unsigned long& mask) {
  XSetWindowAttributes at{};
  at.background_pixel = zelvy_x::state().appData.background;
  at.border_pixel = zelvy_x::state().appData.background;
  at.bit_gravity = StaticGravity;
  at.win_gravity = SouthWestGravity;
  at.backing_store = WhenMapped;
  at.event_mask = ExposureMask | ButtonPressMask | ButtonReleaseMask;
  mask = CWBackPixel | CWBorderPixel | CWBitGravity | CWWinGravity | CWBackingStore | CWEventMask;
  return at;
}

void destroy_parts(StatusBarRecord& b) {
  for (Window w : b.PartWindows) XDestroyWindow(xdisplay(), w);
  b.PartWindows.clear();
}

// Places and maps the part windows for the present widths.
void update(int h, StatusBarRecord& b) {
  const int framewidth = zelvy_win::state().WinInfo[h].FrameWidth;
  b.StartOffset = zelvy_x::state().bFlatStyle ? 0 : -1;
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
    b.PartWindows.push_back(XCreateWindow(xdisplay(), b.BarWindow, x, b.StartOffset, w, sb.iSBarHeight,
                                          0, CopyFromParent, InputOutput, CopyFromParent, mask, &at));
    x += w;
  }
  XMapSubwindows(xdisplay(), b.BarWindow);
  if (b.DisplayMode == 1) XUnmapWindow(xdisplay(), b.PromptWindow);
  else XRaiseWindow(xdisplay(), b.PromptWindow);
  yyWindowStatusBarDraw(h);
}

}  // namespace

void yyWindowStatusBarInit(int stage) {
  Display* dpy = xdisplay();
  if (!dpy) return;
  if (stage == 1) {
    if (sb.iSBarHeight) return;
    const ZelvAppData& a = zelvy_x::state().appData;
    if (zelvy_x::state().bXft) sb.xftSBarFont = yyXftOpen(a.xftNameStatus, a.xftSizeStatus > 0 ? a.xftSizeStatus : 8);
    int height = 0;
    if (!sb.xftSBarFont) sb.coreSBarFont = zelvy_x::state().dialogFontStruct;
    height = yySampleTextHeight(sb.xftSBarFont, sb.coreSBarFont);
    sb.iSBarHeight = height + 12;
    sb.iSBarYText = height + 6;
    return;
  }
  if (sb.stage2) return;
  sb.stage2 = true;
  const Window root = RootWindow(dpy, zelvy_x::state().iScreen);
  sb.sbarGC = XCreateGC(dpy, root, 0, nullptr);
  if (sb.coreSBarFont) XSetFont(dpy, sb.sbarGC, sb.coreSBarFont->fid);
  if (sb.xftSBarFont) {
    sb.sbarDraw = XftDrawCreate(dpy, root, zelvy_x::state().iVisual, zelvy_x::state().iCmapMain);
    const XColor& c = zelvy_x::state().wSchemeCol[0];
    XRenderColor rc{c.red, c.green, c.blue, 0xffff};
    XftColorAllocValue(dpy, zelvy_x::state().iVisual, zelvy_x::state().iCmapMain, &rc, &sb.sbarColour);
  }
}

void yyWindowStatusBarCreate(int h) {
  if (!xdisplay()) return;
  yyWindowStatusBarInit(2);
  if (sb.psbarInfo.size() < zelvy_win::kSlots) sb.psbarInfo.resize(zelvy_win::kSlots);
  auto b = std::make_unique<StatusBarRecord>();
  const WindowRecord& r = zelvy_win::state().WinInfo[h];
  b->PartCount = 1;
  b->PartWidths = {r.FrameWidth};
  b->PartStyles = {1};
  b->PartAlign = {0};
  b->PartTexts.resize(1);
  unsigned long mask = 0;
  XSetWindowAttributes at = bar_attributes(mask);
  b->BarWindow = XCreateWindow(xdisplay(), zelvy_win::state().wWindow[h], 0, r.FrameHeight - sb.iSBarHeight - 1,
                               std::max(1, r.FrameWidth), sb.iSBarHeight + 1, 0, CopyFromParent,
                               InputOutput, CopyFromParent, mask, &at);
  at.win_gravity = NorthWestGravity;
  b->PromptWindow = XCreateWindow(xdisplay(), b->BarWindow, 0, 0, std::max(1, r.FrameWidth),
                                  sb.iSBarHeight + 1, 0, CopyFromParent, InputOutput, CopyFromParent,
                                  mask, &at);
  b->PartWidths[0] = -1;  // the first part stretches until parts are given
  sb.psbarInfo[h] = std::move(b);
  update(h, *sb.psbarInfo[h]);
  XMapWindow(xdisplay(), sb.psbarInfo[h]->BarWindow);
  if (h == 0) {
    // Library errors at debug level 3 go to part 1 of the root window's bar.
    yySetErrorStatusSink([](std::string_view text) { WindowOutStatusBar(1, text, 0); });
  }
}

void yyWindowStatusBarDraw(int h) {
  StatusBarRecord* b = bar_of(h);
  if (!b || !xdisplay()) return;
  const int fw = zelvy_win::state().WinInfo[h].FrameWidth;
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
  const int fw = zelvy_win::state().WinInfo[h].FrameWidth;
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
  b->PromptText = show ? std::string(text) : std::string();
  yyWindowStatusBarDraw(h);
}

void yyWindowStatusBarSwitch(int direction, int h) {
  if (direction == 2) {
    StatusBarRecord* b = bar_of(h);
    if (!b || b->DisplayMode != 1) return;
    b->PromptText.clear();
    b->DisplayMode = 2;
    XMapRaised(xdisplay(), b->PromptWindow);
    yyWindowStatusBarDraw(h);
    return;
  }
  for (auto& b : sb.psbarInfo) {
    if (!b || b->DisplayMode != 2) continue;
    XUnmapWindow(xdisplay(), b->PromptWindow);
    b->DisplayMode = 1;
  }
}

void yyWindowStatusBarShutdown(int h) {
  StatusBarRecord* b = bar_of(h);
  if (!b) return;
  if (xdisplay()) XDestroyWindow(xdisplay(), b->BarWindow);  // parts and prompt go with it
  sb.psbarInfo[h].reset();
  if (h == 0) yySetErrorStatusSink(nullptr);
}

void yyWindowStatusBarResize(int h) {
  StatusBarRecord* b = bar_of(h);
  if (!b) return;
  const WindowRecord& r = zelvy_win::state().WinInfo[h];
  const int fw = std::max(1, r.FrameWidth);
  XMoveResizeWindow(xdisplay(), b->BarWindow, 0, r.FrameHeight - sb.iSBarHeight - 1, fw, sb.iSBarHeight + 1);
  XResizeWindow(xdisplay(), b->PromptWindow, fw, sb.iSBarHeight + 1);
  if (b->StretchPart >= 0) {
    int x = fw;
    for (int i = b->PartCount - 1; i > b->StretchPart; --i) {
      x -= part_width(*b, i, fw);
      XMoveWindow(xdisplay(), b->PartWindows[i], x, b->StartOffset);
    }
    XResizeWindow(xdisplay(), b->PartWindows[b->StretchPart], part_width(*b, b->StretchPart, fw),
                  sb.iSBarHeight);
  }
  yyWindowStatusBarDraw(h);
}

int yyWindowStatusBarPartAt(int h, int rootx, int rooty) {
  StatusBarRecord* b = bar_of(h);
  if (!b) return 0;
  for (int i = 0; i < b->PartCount; ++i) {
    int x = 0, y = 0;
    Window child;
    XTranslateCoordinates(xdisplay(), b->PartWindows[i], RootWindow(xdisplay(), zelvy_x::state().iScreen), 0,
                          0, &x, &y, &child);
    const int w = part_width(*b, i, zelvy_win::state().WinInfo[h].FrameWidth);
    if (rootx >= x && rootx < x + w && rooty >= y && rooty < y + sb.iSBarHeight) return i + 1;
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
  const int h = zelvy_win::state().iWinCur;
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
  XFlush(xdisplay());
}

void WindowOutStatusBar(int part, std::string_view text, std::optional<int> window) {
  if (part < 1 || part > 255) return;
  const int h = window.value_or(zelvy_win::state().iWinCur);
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
  if (b->DisplayMode == 1) draw_part(*b, part - 1, zelvy_win::state().WinInfo[h].FrameWidth);
  publish_texts(h, *b);
  XFlush(xdisplay());
}

namespace zelvy_sbar {
State& state() {
  static State s;
  return s;
}
}  // namespace zelvy_sbar
