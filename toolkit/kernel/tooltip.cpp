#include "toolkit/kernel/tooltip_private.h"

#include <X11/Xft/Xft.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <string>
#include <vector>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/menu_private.h"

namespace {

constexpr int kPadding = 3;      // text to border, each side
constexpr int kLineGap = 2;      // between lines
constexpr int kPointerGap = 15;  // pointer to tooltip
constexpr int kTipBackground = 6, kTipForeground = 7;
constexpr int kDefaultTipSize = 8;

struct State {
  Window wTooltip = 0;
  Widget wtTooltip = nullptr;
  bool bDisplayedTooltip = false;
  bool bDisplayTooltipInst = false;
  XtIntervalId idTooltipUp = 0, idTooltipDown = 0, idTooltipVisible = 0;
  XftFont* xftTipFont = nullptr;
  XtTimerCallbackProc show = nullptr;  // what the up timer runs, and with what
  XtPointer showData = nullptr;
};

State& tip() {
  static State s;
  return s;
}

void cancel(XtIntervalId& id) {
  if (id) XtRemoveTimeOut(id);
  id = 0;
}

std::vector<std::string_view> lines_of(std::string_view text) {
  std::vector<std::string_view> out;
  for (;;) {
    const auto br = text.find("\r\n");
    out.push_back(text.substr(0, br));
    if (br == std::string_view::npos) return out;
    text.remove_prefix(br + 2);
  }
}

XftFont* tip_font() {
  State& t = tip();
  if (!t.xftTipFont) {
    const ZelvAppData& a = zelvy_x::state().appData;
    t.xftTipFont = yyXftOpen(a.xftNameStatus ? a.xftNameStatus : "Sans",
                             a.xftSizeStatus > 0 ? a.xftSizeStatus : kDefaultTipSize);
  }
  return t.xftTipFont;
}

// Beside the pointer, on the far side when the near one runs off the screen.
int place(int pointer, int extent, int screen) {
  int p = pointer + kPointerGap;
  if (p + extent > screen) p = pointer - kPointerGap - extent;
  if (p < 0) p = pointer + kPointerGap;
  return p;
}

// The tooltip has been up long enough; a newer one is left alone.
void yyTooltipCB(XtPointer data, XtIntervalId*) {
  State& t = tip();
  t.idTooltipVisible = 0;
  if (t.bDisplayedTooltip && reinterpret_cast<Window>(data) == t.wTooltip) yyTooltipDestroy();
}

void delay_over(XtPointer, XtIntervalId*) {
  State& t = tip();
  t.idTooltipUp = 0;
  XtIntervalId self = 0;
  if (t.show) t.show(t.showData, &self);
}

void instant_over(XtPointer, XtIntervalId*) {
  tip().idTooltipDown = 0;
  tip().bDisplayTooltipInst = false;
}

}  // namespace

void yyTooltipCreate(Widget owner, std::string_view text) {
  Display* dpy = xdisplay();
  XftFont* font = dpy ? tip_font() : nullptr;
  if (!font || text.empty()) return;
  State& t = tip();
  if (t.wTooltip) {
    XDestroyWindow(dpy, t.wTooltip);
    t.wTooltip = 0;
  }
  cancel(t.idTooltipVisible);
  const auto lines = lines_of(text);
  int width = 0, lineHeight = 0;
  for (std::string_view l : lines) {
    XGlyphInfo g{};
    XftTextExtents8(dpy, font, reinterpret_cast<const FcChar8*>(l.data()), static_cast<int>(l.size()), &g);
    width = std::max(width, static_cast<int>(g.xOff));
    lineHeight = std::max(lineHeight, font->ascent + font->descent);
  }
  const int n = static_cast<int>(lines.size());
  const int w = width + 2 * kPadding, h = n * lineHeight + 2 * kPadding + (n - 1) * kLineGap;
  const zelvy_x::State& xs = zelvy_x::state();
  const Window root = RootWindow(dpy, xs.iScreen);
  Window rr = 0, cr = 0;
  int px = 0, py = 0, wx = 0, wy = 0;
  unsigned mask = 0;
  XQueryPointer(dpy, root, &rr, &cr, &px, &py, &wx, &wy, &mask);
  XSetWindowAttributes at{};
  at.background_pixel = xs.wSchemeCol[kTipBackground].pixel;
  at.border_pixel = xs.wSchemeCol[kTipForeground].pixel;
  at.override_redirect = True;
  at.save_under = True;
  at.colormap = xs.iCmapMain ? xs.iCmapMain : DefaultColormap(dpy, xs.iScreen);
  Visual* visual = xs.iVisual ? xs.iVisual : DefaultVisual(dpy, xs.iScreen);
  const int depth = xs.iDispDepth ? xs.iDispDepth : DefaultDepth(dpy, xs.iScreen);
  t.wTooltip = XCreateWindow(dpy, root, place(px, w, xs.iDispWidth), place(py, h, xs.iDispHeight),
                             static_cast<unsigned>(w), static_cast<unsigned>(h), 1, depth, InputOutput, visual,
                             CWBackPixel | CWBorderPixel | CWOverrideRedirect | CWSaveUnder | CWColormap, &at);
  XMapRaised(dpy, t.wTooltip);
  // Drawn once, now: the window keeps its contents under save-under and
  // override-redirect for the few seconds it lives.
  XSync(dpy, False);
  if (XftDraw* draw = XftDrawCreate(dpy, t.wTooltip, visual, at.colormap)) {
    XRenderColor rc{static_cast<unsigned short>(xs.wSchemeCol[kTipForeground].red),
                    static_cast<unsigned short>(xs.wSchemeCol[kTipForeground].green),
                    static_cast<unsigned short>(xs.wSchemeCol[kTipForeground].blue), 0xffff};
    XftColor colour{};
    XftColorAllocValue(dpy, visual, at.colormap, &rc, &colour);
    int baseline = kPadding + font->ascent;
    for (std::string_view l : lines) {
      XftDrawString8(draw, &colour, font, kPadding, baseline, reinterpret_cast<const FcChar8*>(l.data()),
                     static_cast<int>(l.size()));
      baseline += lineHeight + kLineGap;
    }
    XftColorFree(dpy, visual, at.colormap, &colour);
    XftDrawDestroy(draw);
  }
  XFlush(dpy);
  t.idTooltipVisible = XtAppAddTimeOut(xs.ixContext, kTooltipVisible, yyTooltipCB,
                                       reinterpret_cast<XtPointer>(t.wTooltip));
  t.bDisplayedTooltip = true;
  t.wtTooltip = owner;
}

void yyTooltipDestroy() {
  State& t = tip();
  if (t.wTooltip && xdisplay()) {
    XUnmapWindow(xdisplay(), t.wTooltip);
    XDestroyWindow(xdisplay(), t.wTooltip);
    XFlush(xdisplay());
  }
  t.wTooltip = 0;
  t.bDisplayedTooltip = false;
  t.bDisplayTooltipInst = false;
  cancel(t.idTooltipUp);
  cancel(t.idTooltipDown);
  cancel(t.idTooltipVisible);
  t.wtTooltip = nullptr;
}

void yyTooltipArm(XtTimerCallbackProc show, XtPointer data) {
  yyTooltipArm(show, data, kTooltipDelay, kTooltipDelayInstant);
}

void yyTooltipArm(XtTimerCallbackProc show, XtPointer data, unsigned long delay, unsigned long instantdelay) {
  State& t = tip();
  if (!xdisplay() || yyMenuIsOpen()) return;
  cancel(t.idTooltipUp);
  cancel(t.idTooltipDown);
  t.show = show;
  t.showData = data;
  t.idTooltipUp = XtAppAddTimeOut(zelvy_x::state().ixContext,
                                  t.bDisplayTooltipInst ? instantdelay : delay, delay_over, nullptr);
}

void yyTooltipLeave() {
  State& t = tip();
  if (!xdisplay()) return;
  if (t.bDisplayedTooltip) {
    yyTooltipDestroy();
    t.bDisplayTooltipInst = true;
    t.idTooltipDown = XtAppAddTimeOut(zelvy_x::state().ixContext, kTooltipInstantWindow, instant_over, nullptr);
  } else {
    cancel(t.idTooltipUp);
  }
}

Window yyTooltipWindow() { return tip().wTooltip; }
Widget yyTooltipOwner() { return tip().wtTooltip; }
