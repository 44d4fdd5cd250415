// Plain text and scrolling in a window's client area, with core fonts.
#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/window_private.h"

namespace {

struct TextState {
  XFontStruct* font = nullptr;
  GC gc = nullptr;
  int underline_thickness = 1;
  bool underline = false;
  Pixel fore = 0, back = 0;
  bool colours_set = false;
};
TextState text;

// The default sixteen colours as 16-bit red, green, blue.
constexpr std::array<std::array<unsigned, 3>, 16> kPalette = {{
    {0xFFFF, 0xFFFF, 0xFFFF}, {0, 0, 0xBFFF}, {0, 0xBFFF, 0}, {0, 0xBFFF, 0xBFFF},
    {0xBFFF, 0, 0}, {0xBFFF, 0, 0xBFFF}, {0xBFFF, 0xBFFF, 0}, {0x3FFF, 0x3FFF, 0x3FFF},
    {0xBFFF, 0xBFFF, 0xBFFF}, {0, 0, 0xFFFF}, {0, 0xFFFF, 0}, {0, 0xFFFF, 0xFFFF},
    {0xFFFF, 0, 0}, {0xFFFF, 0, 0xFFFF}, {0xFFFF, 0xFFFF, 0}, {0, 0, 0},
}};

Pixel palette_pixel(int index) {
  const auto& c = kPalette[std::clamp(index, 0, 15)];
  return yyAllocPixel(static_cast<int>(c[0] >> 8), static_cast<int>(c[1] >> 8), static_cast<int>(c[2] >> 8));
}

Pixel rgb_pixel(int packed) { return yyAllocPixel(packed & 255, (packed >> 8) & 255, (packed >> 16) & 255); }

// The names a family tries, in order; "6x13" is the last resort of every family.
std::vector<std::string> family_names(int family, bool bold, bool italic, int pixels, int tenths) {
  const char* weight = bold ? "bold" : "medium";
  char px[16] = "*", pt[16] = "*";
  if (pixels > 0) std::snprintf(px, sizeof px, "%d", pixels);
  if (tenths > 0) std::snprintf(pt, sizeof pt, "%d", tenths);
  struct Face {
    const char* foundry_family;
    const char* italic;
    const char* spacing;
    const char* encoding;
  };
  std::vector<Face> faces;
  switch (family) {
    case 1: return {"6x13"};
    case 2:
      faces = {{"monotype-times new roman", "i", "p", "iso8859-1"}, {"bitstream-charter", "i", "p", "iso8859-1"},
               {"b&h-luxi serif", "o", "p", "iso8859-1"}, {"unknown-freeserif", "o", "p", "iso8859-1"},
               {"adobe-times", "i", "p", "iso8859-1"}};
      break;
    case 3:
      faces = {{"monotype-arial", "o", "p", "iso8859-1"}, {"bitstream-bitstream vera sans", "o", "p", "iso8859-1"},
               {"b&h-luxi sans", "o", "p", "iso8859-1"}, {"unknown-freesans", "o", "p", "iso8859-1"},
               {"adobe-helvetica", "o", "p", "iso8859-1"}};
      break;
    case 4:
      faces = {{"ibm-courier", "i", "m", "iso8859-1"}, {"monotype-courier new", "i", "m", "iso8859-1"},
               {"bitstream-courier 10 pitch", "i", "m", "iso8859-1"}, {"b&h-luxi mono", "o", "m", "iso8859-1"},
               {"unknown-freemono", "o", "m", "iso8859-1"}, {"adobe-courier", "o", "m", "iso8859-1"}};
      break;
    case 5: faces = {{"adobe-symbol", "o", "p", "adobe-fontspecific"}}; break;
    case 6: faces = {{"urw-dingbats", "o", "p", "adobe-fontspecific"}}; break;
    default:
      return {"-*-lucida-bold-r-normal-sans-12-*-*-*-p-*-iso8859-1",
              "-*-lucida-bold-r-normal-sans-14-*-*-*-p-*-iso8859-1",
              "-*-lucida-medium-r-normal-sans-*-*-*-*-p-*-iso8859-1", "6x13"};
  }
  std::vector<std::string> names;
  for (const Face& f : faces) {
    char name[256];
    std::snprintf(name, sizeof name, "-%s-%s-%s-normal--%s-*-*-*-%s-%s-%s", f.foundry_family, weight,
                  italic ? f.italic : "r", px, f.spacing, pt, f.encoding);
    names.push_back(name);
  }
  names.push_back("6x13");
  return names;
}

// The family's font; sizes 0 take any.
XFontStruct* yyWindowTextFont(int family, bool bold, bool italic, int pixels, int tenths) {
  for (const std::string& name : family_names(family, bold, italic, pixels, tenths)) {
    int n = 0;
    if (char** found = XListFonts(xdisplay(), name.c_str(), 1, &n)) {
      XFreeFontNames(found);
      if (XFontStruct* fs = XLoadQueryFont(xdisplay(), name.c_str())) return fs;
    }
  }
  return XLoadQueryFont(xdisplay(), "fixed");
}

bool ready() {
  const int h = zelvy_win::state().iWinCur;
  if (!xdisplay() || !yywindowexists(h)) return false;
  if (!text.gc) text.gc = XCreateGC(xdisplay(), zelvy_win::state().wClient[h], 0, nullptr);
  if (!text.colours_set) {
    text.fore = BlackPixel(xdisplay(), zelvy_x::state().iScreen);
    text.back = WhitePixel(xdisplay(), zelvy_x::state().iScreen);
    text.colours_set = true;
  }
  if (!text.font) {
    int w = 0, ht = 0;
    yywindowfontcreate(0, 0, 0, w, ht);
  }
  return text.font != nullptr;
}

}  // namespace

void yywindowfontcreate(int family, int bold, int italic, int& width, int& height) {
  width = height = 0;
  if (!xdisplay()) return;
  XFontStruct* fs = yyWindowTextFont(family, bold != 0, italic != 0, 0, 0);
  if (!fs) return;
  if (text.font) XFreeFont(xdisplay(), text.font);
  text.font = fs;
  unsigned long thickness = 0;
  text.underline_thickness = XGetFontProperty(fs, XA_UNDERLINE_THICKNESS, &thickness) && thickness > 0
                                 ? static_cast<int>(thickness)
                                 : 1;
  width = (fs->max_bounds.width + fs->min_bounds.width) / 2;
  height = fs->ascent + fs->descent;
}

void yywindowoutstring(int& x, int y, std::string_view s) {
  if (!ready()) return;
  const int h = zelvy_win::state().iWinCur;
  XSetFont(xdisplay(), text.gc, text.font->fid);
  XSetForeground(xdisplay(), text.gc, text.fore);
  XSetBackground(xdisplay(), text.gc, text.back);
  const int baseline = y + text.font->ascent;
  const int n = static_cast<int>(s.size());
  XDrawImageString(xdisplay(), zelvy_win::state().wClient[h], text.gc, x, baseline, s.data(), n);
  const int w = XTextWidth(text.font, s.data(), n);
  if (text.underline)
    XFillRectangle(xdisplay(), zelvy_win::state().wClient[h], text.gc, x, baseline + 2, static_cast<unsigned>(w),
                   static_cast<unsigned>(text.underline_thickness));
  x += w;
  XFlush(xdisplay());
}

int yywindowstringlength(std::string_view s) {
  if (!ready()) return 0;
  return XTextWidth(text.font, s.data(), static_cast<int>(s.size()));
}

void yywindowfontcolour(int fore, int back) {
  if (!xdisplay()) return;
  text.fore = palette_pixel(fore);
  text.back = palette_pixel(back);
  text.colours_set = true;
}

void yywindowfontcolourrgb(int fore, int back) {
  if (!xdisplay()) return;
  text.fore = rgb_pixel(fore);
  text.back = rgb_pixel(back);
  text.colours_set = true;
}

void yywindowfontunderline(int on) { text.underline = on != 0; }

void yywindowscroll(int deltax, int deltay, int colour) {
  const int h = zelvy_win::state().iWinCur;
  if (!xdisplay() || !yywindowexists(h)) return;
  const Window w = zelvy_win::state().wClient[h];
  const WindowRecord& r = zelvy_win::state().WinInfo[h];
  const int cw = r.ClientWidth, ch = r.ClientHeight;
  GC gc = XCreateGC(xdisplay(), w, 0, nullptr);
  XSetGraphicsExposures(xdisplay(), gc, False);
  XCopyArea(xdisplay(), w, w, gc, std::max(0, -deltax), std::max(0, -deltay),
            static_cast<unsigned>(std::max(0, cw - std::abs(deltax))),
            static_cast<unsigned>(std::max(0, ch - std::abs(deltay))), std::max(0, deltax), std::max(0, deltay));
  auto fill = [&](int x, int y, int fw, int fh) {
    if (fw <= 0 || fh <= 0) return;
    if (colour < 0) {
      XClearArea(xdisplay(), w, x, y, static_cast<unsigned>(fw), static_cast<unsigned>(fh), False);
    } else {
      XSetForeground(xdisplay(), gc, rgb_pixel(colour));
      XFillRectangle(xdisplay(), w, gc, x, y, static_cast<unsigned>(fw), static_cast<unsigned>(fh));
    }
  };
  fill(deltax > 0 ? 0 : cw + deltax, 0, std::abs(deltax), ch);
  fill(0, deltay > 0 ? 0 : ch + deltay, cw, std::abs(deltay));
  XFreeGC(xdisplay(), gc);
  XFlush(xdisplay());
}
