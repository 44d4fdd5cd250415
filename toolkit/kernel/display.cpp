// Display services: opening the X connection, resources, colours, cursors.
#include "toolkit/kernel/display_private.h"

#include <X11/Shell.h>
#include <X11/StringDefs.h>
#include <X11/Xatom.h>
#include <X11/Xcms.h>
#include <X11/Xmu/StdCmap.h>
#include <X11/cursorfont.h>
#include <Xm/Xm.h>

#include <langinfo.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdint>
#include <optional>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "toolkit/kernel/resources.h"
#include "toolkit/kernel/widgets_private.h"
#include "toolkit/kernel/window_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

// This module's state.
static zelvy_x::State& xs = zelvy_x::state();

namespace {

char* S(const char* s) { return const_cast<char*>(s); }

// Slot 0 is the dialog font found at run time.
const char* fallback[] = {
    nullptr,
    "Zelv*foreground: #000000",
    "Zelv*background: #E0DCD0",
    "Zelv*menuselForeColor: #FFFFFF",
    "Zelv*menuselBackColor: #316AC5",
    "Zelv*topShadowColor: #FAFAFA",
    "Zelv*bottomShadowColor: #ACA899",
    "Zelv*tooltipForeColor: #000000",
    "Zelv*tooltipBackColor: #FFFFE1",
    "Zelv*darkColor: #716F64",
    "Zelv*grayTextColor: #ACA899",
    "Zelv*menuForeColor: #000000",
    "Zelv*menuBackColor: #E0DCD0",
    "Zelv*menuDropColor: #FFFFFF",
    "Zelv*editForeColor: #000000",
    "Zelv*editBackColor: #FFFFFF",
    "Zelv*altForeColor: #0046D5",
    "Zelv*altBackColor: #F4F4EC",
    "Zelv*armColor: #BFBBB1",
    "Zelv*selectColor: #BFBBB1",
    "Zelv*XmText.background: #FFFFFF",
    "Zelv*XmList.background: #FFFFFF",
    "Zelv*borderWidth: 0",
    "Zelv*XmLabel.marginWidth:  0",
    "Zelv*XmLabel.marginHeight: 0",
    "*multiClickTime: 500",
    "Zelv*xft: 1",
    // The layouts were made for the metrics of the common sans faces, which
    // this one shares; the fontconfig default is wider. The status bar's
    // parts are fractions of a window that the dialog font sizes, so its
    // captions fit only in a face narrower than the dialogs'.
    "Zelv*xftName: Liberation Sans",
    "Zelv*xftSize: 10",
    "Zelv*xftNameMenu: Liberation Sans",
    "Zelv*xftNameStatus: Liberation Sans Narrow",
    nullptr,
};

#define ZRES_PIXEL(name, cls, field, def)                                                   \
  {S(name), S(cls), S(XtRPixel), sizeof(Pixel), XtOffsetOf(ZelvAppData, field), S(XtRString), \
   S(def)}

XtResource app_resources[] = {
    ZRES_PIXEL("foreground", "Foreground", foreground, "XtDefaultForeground"),
    ZRES_PIXEL("background", "Background", background, "XtDefaultBackground"),
    ZRES_PIXEL("menuselForeColor", "MenuselForeColor", menuselForeColor, "XtDefaultForeground"),
    ZRES_PIXEL("menuselBackColor", "MenuselBackColor", menuselBackColor, "XtDefaultBackground"),
    ZRES_PIXEL("topShadowColor", "TopShadowColor", topShadowColor, "XtDefaultBackground"),
    ZRES_PIXEL("bottomShadowColor", "BottomShadowColor", bottomShadowColor, "XtDefaultBackground"),
    ZRES_PIXEL("tooltipForeColor", "TooltipForeColor", tooltipForeColor, "XtDefaultForeground"),
    ZRES_PIXEL("tooltipBackColor", "TooltipBackColor", tooltipBackColor, "XtDefaultBackground"),
    ZRES_PIXEL("darkColor", "DarkColor", darkColor, "XtDefaultBackground"),
    ZRES_PIXEL("grayTextColor", "GrayTextColor", grayTextColor, "XtDefaultBackground"),
    ZRES_PIXEL("menuForeColor", "MenuForeColor", menuForeColor, "XtDefaultForeground"),
    ZRES_PIXEL("menuBackColor", "menuBackColor", menuBackColor, "XtDefaultBackground"),
    ZRES_PIXEL("menuDropColor", "menuDropColor", menuDropColor, "XtDefaultBackground"),
    ZRES_PIXEL("editForeColor", "EditForeColor", editForeColor, "XtDefaultForeground"),
    ZRES_PIXEL("editBackColor", "EditBackColor", editBackColor, "XtDefaultBackground"),
    ZRES_PIXEL("altForeColor", "AltForeColor", altForeColor, "XtDefaultForeground"),
    ZRES_PIXEL("altBackColor", "AltBackColor", altBackColor, "XtDefaultBackground"),
    ZRES_PIXEL("armColor", "ArmColor", armColor, "XtDefaultBackground"),
    ZRES_PIXEL("selectColor", "SelectColor", selectColor, "XtDefaultBackground"),
    {S("xft"), S("Xft"), S(XtRBoolean), sizeof(Boolean), XtOffsetOf(ZelvAppData, xft), S(XtRImmediate),
     reinterpret_cast<XtPointer>(1)},
    {S("xftName"), S("XftName"), S(XtRString), sizeof(String), XtOffsetOf(ZelvAppData, xftName),
     S(XtRString), S("Sans")},
    {S("xftNameMenu"), S("XftNameMenu"), S(XtRString), sizeof(String),
     XtOffsetOf(ZelvAppData, xftNameMenu), S(XtRString), S("Sans")},
    {S("xftNameStatus"), S("XftNameStatus"), S(XtRString), sizeof(String),
     XtOffsetOf(ZelvAppData, xftNameStatus), S(XtRString), S("Sans")},
    {S("xftSize"), S("XftSize"), S(XtRInt), sizeof(int), XtOffsetOf(ZelvAppData, xftSize),
     S(XtRImmediate), reinterpret_cast<XtPointer>(8)},
    {S("xftSizeMenu"), S("XftSizeMenu"), S(XtRInt), sizeof(int), XtOffsetOf(ZelvAppData, xftSizeMenu),
     S(XtRImmediate), reinterpret_cast<XtPointer>(8)},
    {S("xftSizeStatus"), S("XftSizeStatus"), S(XtRInt), sizeof(int),
     XtOffsetOf(ZelvAppData, xftSizeStatus), S(XtRImmediate), reinterpret_cast<XtPointer>(8)},
    {S("dialogFont"), S("DialogFont"), S(XtRString), sizeof(String),
     XtOffsetOf(ZelvAppData, dialogFont), S(XtRString), S("")},
};

struct Family {
  const char* pattern;
};
constexpr Family kFamilies[6] = {
    {"-monotype-arial-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1"},
    {"-urw-nimbus sans l-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1"},
    {"-b&h-luxi sans-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1"},
    {"-unknown-freesans-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1"},
    {"-bitstream-bitstream vera sans-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1"},
    {"-adobe-helvetica-%s-%s-normal--%s-%s-*-*-p-%s-iso8859-1"},
};

// The dialog font of the family table for a size in tenths of a point.
std::string find_dialog_font(Display* dpy, int tenths) {
  char size[16], name[256];
  std::snprintf(size, sizeof size, "%d", tenths);
  for (int entry : {5, 0, 1, 2, 3, 4}) {
    std::snprintf(name, sizeof name, kFamilies[entry].pattern, "medium", "r", "*", size, "*");
    // Listing first spares the server a font load for every family it lacks.
    int n = 0;
    if (char** names = XListFonts(dpy, name, 1, &n)) {
      XFreeFontNames(names);
      if (XFontStruct* fs = XLoadQueryFont(dpy, name)) {
        XFreeFont(dpy, fs);
        xs.iFontFound = 1;
        return name;
      }
    }
  }
  xs.iFontFound = 0;
  std::snprintf(name, sizeof name, "-*-*-medium-r-normal-*-*-%s-*-*-p-*-iso8859-1", size);
  return name;
}

}  // namespace

int yyChooseVisual(XVisualInfo* v, int n, int cls, int want) {
  int best = -1;
  for (int i = 0; i < n; ++i) {
    if (v[i].c_class != cls) continue;
    if (want && v[i].depth == want) return i;
    if (best < 0 || v[i].depth > v[best].depth) best = i;
  }
  return want ? -1 : best;
}

namespace {

// TrueColor 24, DirectColor 24, deepest TrueColor, then PseudoColor, DirectColor, StaticColor.
int yyGetBestVisual(XVisualInfo* v, int n) {
  int i = yyChooseVisual(v, n, TrueColor, 24);
  if (i < 0) i = yyChooseVisual(v, n, DirectColor, 24);
  if (i < 0) i = yyChooseVisual(v, n, TrueColor, 0);
  if (i >= 0) return i;
  const int direct = yyChooseVisual(v, n, DirectColor, 0);
  const int pseudo = yyChooseVisual(v, n, PseudoColor, 0);
  if (pseudo >= 0) {
    if (direct < 0) return pseudo;
    const unsigned long masks = v[direct].red_mask | v[direct].green_mask | v[direct].blue_mask;
    if (static_cast<unsigned long>(v[pseudo].colormap_size) >= masks + 1) return pseudo;
  }
  if (direct >= 0) return direct;
  return yyChooseVisual(v, n, StaticColor, 0);
}

bool usable(const XStandardColormap& m) {
  return m.red_max >= 255 && m.green_max >= 255 && m.blue_max >= 255;
}

void find_best_map(Display* dpy) {
  const Window root = RootWindow(dpy, xs.iScreen);
  XStandardColormap* maps = nullptr;
  int count = 0;
  bool found = false;
  if (XGetRGBColormaps(dpy, root, &maps, &count, XA_RGB_BEST_MAP) && count > 0) {
    found = usable(maps[0]);
    if (found) xs.best_map_info = maps[0];
    XFree(maps);
  } else {
    XVisualInfo tmpl{};
    tmpl.screen = xs.iScreen;
    int n = 0;
    XVisualInfo* v = XGetVisualInfo(dpy, VisualScreenMask, &tmpl, &n);
    if (v) {
      const int i = yyGetBestVisual(v, n);
      if (i >= 0 &&
          XmuLookupStandardColormap(dpy, xs.iScreen, v[i].visualid, v[i].depth, XA_RGB_BEST_MAP, False,
                                    True) &&
          XGetRGBColormaps(dpy, root, &maps, &count, XA_RGB_BEST_MAP) && count > 0) {
        found = usable(maps[0]);
        if (found) xs.best_map_info = maps[0];
        XFree(maps);
      }
      XFree(v);
    }
  }
  if (!found) return;
  xs.BestMap = true;
  xs.iCmapMain = xs.best_map_info.colormap;
  // A map on the default visual converts colours as the default colour map
  // does: telling the colour management so spares it a round trip to the
  // server for every colour name it converts on the map.
  if (xs.best_map_info.visualid == XVisualIDFromVisual(DefaultVisual(dpy, xs.iScreen)))
    XcmsSetCCCOfColormap(dpy, xs.iCmapMain, XcmsDefaultCCC(dpy, xs.iScreen));
  XVisualInfo tmpl{};
  tmpl.visualid = xs.best_map_info.visualid;
  int n = 0;
  if (XVisualInfo* v = XGetVisualInfo(dpy, VisualIDMask, &tmpl, &n)) {
    xs.iVisual = v[0].visual;
    xs.iDispDepth = v[0].depth;
    XFree(v);
  }
}

// The drawn cursors, 16 by 16: '#' black; the mask is the shape grown by one pixel.
struct CursorArt {
  int shape, hotx, hoty;
  const char* rows[16];
};
const CursorArt kCursorArt[] = {
    {1, 8, 8, {"################", "################", ".#............#.", ".#............#.",
               "..#..........#..", "...#..####..#...", "....#..##..#....", ".....#....#.....",
               ".....#....#.....", "....#......#....", "...#...##...#...", "..#...####...#..",
               ".#...######...#.", ".#..########..#.", "################", "################"}},
    {2, 0, 0, {"#...............", "##..............", "#.#.............", "#..#............",
               "#...#...........", "#....#..........", "#.....#.........", "#......#........",
               "#...####........", "#..#.#..........", "##..#.#..#####..", "#...#..#..###...",
               ".....#.#...#....", ".......#...#....", "..........###...", ".........#####.."}},
    {3, 8, 8, {"........#.......", "........#.......", "........#.......", "........#.......",
               "........#.......", "........#.......", "........#.......", "........#.......",
               "################", "........#.......", "........#.......", "........#.......",
               "........#.......", "........#.......", "........#.......", "........#......."}},
    {5, 8, 8, {"................", ".....######.....", "...##......##...", "..#..........#..",
               ".#..........##..", ".#.........#.#..", "#.........#...#.", "#........#....#.",
               "#.......#.....#.", "#......#......#.", ".#....#......#..", ".#..##.......#..",
               "..##........#...", "...##......##...", ".....######.....", "................"}},
    {6, 8, 8, {"........#.......", ".......###......", "......#####.....", "........#.......",
               "...#....#....#..", "..##....#....##.", ".###############", "..##....#....##.",
               "...#....#....#..", "........#.......", "........#.......", "......#####.....",
               ".......###......", "........#.......", "................", "................"}},
    {9, 8, 8, {"................", "..........######", "...........#####", "............####",
               "...........#####", "..........###.##", ".........###...#", "........###.....",
               ".......###......", "#.....###.......", "##...###........", "#####.#.........",
               "####............", "#####...........", "######..........", "................"}},
};

Cursor art_cursor(Display* dpy, Window root, const CursorArt& art, XColor& fg, XColor& bg,
                  bool mirror) {
  unsigned char src[32]{}, mask[32]{};
  auto on = [&](int x, int y) {
    if (x < 0 || y < 0 || x > 15 || y > 15) return false;
    return art.rows[y][mirror ? 15 - x : x] == '#';
  };
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 16; ++x) {
      const int bit = y * 2 + x / 8, b = 1 << (x % 8);
      if (on(x, y)) src[bit] |= b;
      for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
          if (on(x + dx, y + dy)) mask[bit] |= b;
    }
  Pixmap ps = XCreateBitmapFromData(dpy, root, reinterpret_cast<char*>(src), 16, 16);
  Pixmap pm = XCreateBitmapFromData(dpy, root, reinterpret_cast<char*>(mask), 16, 16);
  Cursor c = XCreatePixmapCursor(dpy, ps, pm, &fg, &bg, mirror ? 15 - art.hotx : art.hotx, art.hoty);
  XFreePixmap(dpy, ps);
  XFreePixmap(dpy, pm);
  return c;
}

XColor named_colour(Display* dpy, Colormap cmap, const char* name, const char* spec,
                    unsigned long fallback) {
  XColor c{};
  if ((XParseColor(dpy, cmap, name, &c) || XParseColor(dpy, cmap, spec, &c)) &&
      XAllocColor(dpy, cmap, &c))
    return c;
  c.pixel = fallback;
  XQueryColor(dpy, cmap, &c);
  return c;
}

void make_cursors(Display* dpy) {
  const Window root = RootWindow(dpy, xs.iScreen);
  const Colormap cmap = DefaultColormap(dpy, xs.iScreen);
  XColor black = named_colour(dpy, cmap, "Black", "#000000000000", BlackPixel(dpy, xs.iScreen));
  XColor white = named_colour(dpy, cmap, "White", "#FFFFFFFFFFFF", WhitePixel(dpy, xs.iScreen));
  xs.ixCursor[0] = XCreateFontCursor(dpy, XC_top_left_arrow);
  xs.ixCursor[4] = XCreateFontCursor(dpy, XC_xterm);
  xs.ixCursor[7] = XCreateFontCursor(dpy, XC_sb_v_double_arrow);
  xs.ixCursor[8] = XCreateFontCursor(dpy, XC_sb_h_double_arrow);
  xs.ixCursor[11] = XCreateFontCursor(dpy, XC_sb_up_arrow);
  for (const CursorArt& art : kCursorArt) {
    xs.ixCursor[art.shape] = art_cursor(dpy, root, art, black, white, false);
    if (art.shape == 9) xs.ixCursor[10] = art_cursor(dpy, root, art, black, white, true);
  }
  xs.ixCursor[12] = 0;
}

void find_modifiers(Display* dpy) {
  XModifierKeymap* map = XGetModifierMapping(dpy);
  if (!map) return;
  auto find = [&](KeySym sym) -> int {
    const KeyCode code = XKeysymToKeycode(dpy, sym);
    if (!code) return -1;
    for (int row = Mod1MapIndex; row <= Mod5MapIndex; ++row)
      for (int k = 0; k < map->max_keypermod; ++k)
        if (map->modifiermap[row * map->max_keypermod + k] == code) return row;
    return -1;
  };
  for (KeySym sym : {XK_Alt_L, XK_Mode_switch, XK_Meta_L, XK_Alt_R, XK_Meta_R}) {
    const int row = find(sym);
    if (row >= 0) {
      xs.AltMask = 1u << row;
      xs.AltKeySym = sym;
      break;
    }
  }
  const int num = find(XK_Num_Lock);
  xs.NumLockMask = num >= 0 ? 1u << num : 0;
  XFreeModifiermap(map);
}

// A server under load may refuse a connection for a moment (its listen queue
// full, or reset); that is no missing display, so such a refusal is retried.
Display* open_display() {
  for (int attempt = 0;; ++attempt) {
    errno = 0;
    if (Display* dpy = XOpenDisplay(nullptr)) return dpy;
    if ((errno != EAGAIN && errno != ECONNRESET) || attempt == 20) return nullptr;
    ::usleep(20000);
  }
}

}  // namespace

int yyXlibErrorEH(Display*, XErrorEvent* event) {
  xs.iXError = event->request_code;
  return 0;
}

void yygetdisplayinfo(int fontsize, int flags, int& width, int& height, int& widthmm,
                      int& heightmm, int& colours, int& greys) {
  if (xs.ixDisplay) {
    colours = -1;
    return;
  }
  colours = -1;
  xs.bFlatStyle = !(flags & 2);
  yyUseUtf8Locale();
  Display* dpy = open_display();
  if (!dpy) return;

  xs.cDialogFont = find_dialog_font(dpy, fontsize * 10);
  xs.fallbackFontLine = "Zelv*dialogFont: " + xs.cDialogFont;
  fallback[0] = xs.fallbackFontLine.c_str();

  XtToolkitInitialize();
  xs.ixContext = XtCreateApplicationContext();
  XtAppSetFallbackResources(xs.ixContext, const_cast<String*>(fallback));
  // The probed connection is handed to Xt rather than opening a second one.
  int argc = 1;
  char* argv[] = {S("Zelv"), nullptr};
  XtDisplayInitialize(xs.ixContext, dpy, "Zelv", "Zelv", nullptr, 0, &argc, argv);
  xs.ixDisplay = dpy;
  XSetErrorHandler(yyXlibErrorEH);

  Arg args[3];
  XtSetArg(args[0], XtNmappedWhenManaged, False);
  XtSetArg(args[1], XtNwidth, 1);
  XtSetArg(args[2], XtNheight, 1);
  xs.rootWidget = XtAppCreateShell("Zelv", "Zelv", zelvWidgetClass, dpy, args, 3);

  xs.iScreen = DefaultScreen(dpy);
  xs.iDispDepthMain = xs.iDispDepth = DefaultDepth(dpy, xs.iScreen);
  xs.iDispWidth = width = DisplayWidth(dpy, xs.iScreen);
  xs.iDispHeight = height = DisplayHeight(dpy, xs.iScreen);
  widthmm = DisplayWidthMM(dpy, xs.iScreen);
  heightmm = DisplayHeightMM(dpy, xs.iScreen);
  xs.iCmapMain = DefaultColormap(dpy, xs.iScreen);
  xs.iVisual = DefaultVisual(dpy, xs.iScreen);
  colours = xs.iDispDepthMain <= 24 ? 1 << xs.iDispDepthMain : 0x1000000;
  greys = xs.iDispDepthMain == 4 ? 8 : xs.iDispDepthMain == 8 ? 16 : xs.iDispDepthMain == 1 ? 2 : 256;

  if (xs.iDispDepthMain >= 9) find_best_map(dpy);

  XtGetApplicationResources(xs.rootWidget, &xs.appData, app_resources, XtNumber(app_resources), nullptr, 0);
  // Loaded here rather than by the resource converter, so that a last-resort
  // name the server lacks falls back quietly to its own default font.
  if (xs.appData.dialogFont && *xs.appData.dialogFont) xs.dialogFontStruct = XLoadQueryFont(dpy, xs.appData.dialogFont);
  if (!xs.dialogFontStruct) xs.dialogFontStruct = XLoadQueryFont(dpy, "fixed");
  XtVaSetValues(xs.rootWidget, XtNfontPointer, xs.dialogFontStruct, nullptr);

  xs.iKCReturn = XKeysymToKeycode(dpy, XK_Return);
  xs.iKCKPEnter = XKeysymToKeycode(dpy, XK_KP_Enter);
  xs.iMultiClickTime = XtGetMultiClickTime(dpy);
  xs.bXft = xmUseVersion >= 2003 && !(flags & 4) && xs.appData.xft;
  xs.iMsgBoxRule = (flags & 8) ? 1 : 0;
}

void yyDisplayRootOpen() {
  Display* dpy = xs.ixDisplay;
  if (!dpy) return;
  if (xs.iDispDepthMain > 8 && !xs.BestMap && xs.gColtab.empty()) {
    xs.gColtab.assign(64 * 64 * 64, 99999999UL);
    xs.gColtab.front() = BlackPixel(dpy, xs.iScreen);
    xs.gColtab.back() = WhitePixel(dpy, xs.iScreen);
    xs.nColtabEntries = static_cast<int>(xs.gColtab.size());
  }
  if (xs.bSchemeDone) return;
  xs.bSchemeDone = true;
  const ZelvAppData& a = xs.appData;
  const Pixel src[20] = {a.foreground,     a.menuselForeColor,  a.topShadowColor, a.background,
                         a.bottomShadowColor, a.menuselBackColor, a.tooltipBackColor,
                         a.tooltipForeColor, WhitePixel(dpy, xs.iScreen), a.darkColor,
                         a.grayTextColor,  a.menuForeColor,     a.menuDropColor,  a.menuBackColor,
                         a.editForeColor,  a.editBackColor,     a.altForeColor,   a.altBackColor,
                         a.armColor,       a.selectColor};
  for (int i = 0; i < 20; ++i) xs.wSchemeCol[i].pixel = src[i];
  XQueryColors(dpy, xs.iCmapMain, xs.wSchemeCol.data(), 20);
  find_modifiers(dpy);
  make_cursors(dpy);
}

unsigned long yyAllocPixel(int red, int green, int blue) {
  Display* dpy = xs.ixDisplay;
  if (!dpy) return 0;
  red = std::clamp(red, 0, 255);
  green = std::clamp(green, 0, 255);
  blue = std::clamp(blue, 0, 255);
  if (xs.BestMap) {
    const XStandardColormap& m = xs.best_map_info;
    return m.base_pixel + static_cast<unsigned long>(red) * m.red_max / 255 * m.red_mult +
           static_cast<unsigned long>(green) * m.green_max / 255 * m.green_mult +
           static_cast<unsigned long>(blue) * m.blue_max / 255 * m.blue_mult;
  }
  if (xs.nColtabEntries) {
    const int index = red / 4 + (green / 4 + (blue / 4) * 64) * 64;
    unsigned long& slot = xs.gColtab[index];
    if (slot == 99999999UL) {
      XColor c{};
      c.red = static_cast<unsigned short>((red / 4 * 4 + 3) << 8);
      c.green = static_cast<unsigned short>((green / 4 * 4 + 3) << 8);
      c.blue = static_cast<unsigned short>((blue / 4 * 4 + 3) << 8);
      c.flags = DoRed | DoGreen | DoBlue;
      if (XAllocColor(dpy, xs.iCmapMain, &c)) slot = c.pixel;
    }
    if (slot == 99999999UL) {
      xs.gColError = 1;
      return WhitePixel(dpy, xs.iScreen);
    }
    return slot;
  }
  if (red == 255 && green == 255 && blue == 255) return WhitePixel(dpy, xs.iScreen);
  if (red == 0 && green == 0 && blue == 0) return BlackPixel(dpy, xs.iScreen);
  XColor c{};
  c.red = static_cast<unsigned short>(red << 8);
  c.green = static_cast<unsigned short>(green << 8);
  c.blue = static_cast<unsigned short>(blue << 8);
  c.flags = DoRed | DoGreen | DoBlue;
  return XAllocColor(dpy, xs.iCmapMain, &c) ? c.pixel : WhitePixel(dpy, xs.iScreen);
}

bool yyIsUtf8(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    const auto c = static_cast<unsigned char>(text[i]);
    std::size_t n = 0;
    std::uint32_t cp = 0;
    if (c < 0x80) { ++i; continue; }
    if (c >= 0xC2 && c <= 0xDF) { n = 1; cp = c & 0x1Fu; }
    else if (c >= 0xE0 && c <= 0xEF) { n = 2; cp = c & 0x0Fu; }
    else if (c >= 0xF0 && c <= 0xF4) { n = 3; cp = c & 0x07u; }
    else return false;
    if (i + n >= text.size()) return false;
    for (std::size_t k = 1; k <= n; ++k) {
      const auto b = static_cast<unsigned char>(text[i + k]);
      if ((b & 0xC0) != 0x80) return false;
      cp = (cp << 6) | (b & 0x3Fu);
    }
    // Overlong forms, surrogates and code points past the last plane are no UTF-8.
    if ((n == 2 && cp < 0x800) || (n == 3 && (cp < 0x10000 || cp > 0x10FFFF)) || (cp >= 0xD800 && cp <= 0xDFFF))
      return false;
    i += n + 1;
  }
  return true;
}

// Text that already is UTF-8 goes to the widgets as it is whatever the
// declared encoding, since a job written on another machine may well be; any
// other bytes are read as ISO 8859-1, as the widgets would cut them otherwise.
std::string yyConvertEncoding(std::string_view text, int encoding, int& texttype) {
  if (yyIsUtf8(text)) {
    texttype = encoding == 1 || std::any_of(text.begin(), text.end(), [](char c) { return c & 0x80; }) ? 1 : 0;
    return std::string(text);
  }
  std::string out;
  out.reserve(text.size());
  for (unsigned char c : text) {
    if (c < 128) {
      out += static_cast<char>(c);
    } else {
      out += static_cast<char>(c < 192 ? 194 : 195);
      out += static_cast<char>(128 + (c & 63));
    }
  }
  texttype = out.size() > text.size() ? 1 : 0;
  return out;
}

std::optional<std::string> yyUtf8ToLatin1(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if ((c == 0xC2 || c == 0xC3) && i + 1 < text.size()) {
      out += static_cast<char>(((c & 0x03) << 6) | (static_cast<unsigned char>(text[++i]) & 0x3F));
    } else {
      return std::nullopt;
    }
  }
  return out;
}

std::size_t yyUtf8Length(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::size_t yyUtf8Cut(std::string_view text, std::size_t bytes) {
  if (bytes >= text.size()) return text.size();
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) --bytes;
  return bytes;
}

namespace {

// The compose table of a UTF-8 locale is thousands of lines, which the input
// method would parse again at every start; the X library keeps it parsed in a
// cache folder when it is given one that the user owns. The user's own choice
// of folder stands.
void use_compose_cache() {
  if (std::getenv("XCOMPOSECACHE")) return;
  std::string base;
  if (const char* xdg = std::getenv("XDG_CACHE_HOME"); xdg && *xdg == '/') base = xdg;
  else if (const char* home = std::getenv("HOME"); home && *home == '/') base = std::string(home) + "/.cache";
  else return;
  const std::string dir = base + "/zelvane/compose";
  std::error_code ec;
  std::filesystem::create_directories(dir, ec);
  if (ec || ::chmod(dir.c_str(), 0700) != 0) return;
  ::setenv("XCOMPOSECACHE", dir.c_str(), 0);
}

}  // namespace

void yyUseUtf8Locale() {
  use_compose_cache();
  // Only the character type: numbers keep the C conventions.
  const char* got = std::setlocale(LC_CTYPE, "");
  if (got && std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0 && XSupportsLocale()) return;
  for (const char* name : {"C.UTF-8", "C.utf8", "en_US.UTF-8"})
    if (std::setlocale(LC_CTYPE, name) && XSupportsLocale()) break;
  XSetLocaleModifiers("");
}

int WInfoScreen(int item) {
  auto& d = zelvy_data::data();
  static constexpr int kSchemeOfItem[21] = {14, 15, 0, 3, 15, 14, 11, 13, 12, 1, 5,
                                            2,  2,  4, 4, 7,  6,  10, 9,  16, 17};
  switch (item) {
    case 1: return d.iscwid;
    case 2: return d.ischgt;
    case 3: return d.isccol;
    case 4: return (xs.BestMap || xs.iDispDepthMain <= 8) ? 1 : 0;
    case 5: return xs.ixDisplay && DoesBackingStore(ScreenOfDisplay(xs.ixDisplay, xs.iScreen)) != NotUseful;
    case 32: return xs.iFontFound;
    case 33: return xs.bXft ? 1 : 0;
    case 34: return d.iscwidmm;
    case 35: return d.ischgtmm;
    default:
      if (item >= 6 && item <= 26) {
        const XColor& c = xs.wSchemeCol[kSchemeOfItem[item - 6]];
        return (c.red >> 8) | ((c.green >> 8) << 8) | ((c.blue >> 8) << 16);
      }
      return 0;
  }
}

namespace {

// A cursor from a resource image: type 3 (a cursor, with its hot spot), else
// an icon (type 2) with the hot spot at its corner. 0 and 1015 when there is
// no such image; 0 and status 0 when the server offers no cursor of its size.
Cursor resource_cursor(Display* dpy, int imageid, int& status) {
  status = 0;
  int type = 3, w = -1, h = -1, hx = 0, hy = 0, bytes = 0;
  yyrcimagecheck(imageid, type, w, h, hx, hy, bytes);
  if (w < 1 || h < 1) {
    type = 2;
    yyrcimagecheck(imageid, type, w, h, hx, hy, bytes);
    hx = hy = 0;
  }
  if (w < 1 || h < 1) {
    status = 1015;
    return 0;
  }
  const Window root = RootWindow(dpy, xs.iScreen);
  unsigned bw = 0, bh = 0;
  if (!XQueryBestCursor(dpy, root, static_cast<unsigned>(w), static_cast<unsigned>(h), &bw, &bh) ||
      bw != static_cast<unsigned>(w) || bh != static_cast<unsigned>(h))
    return 0;
  std::vector<std::uint8_t> rgba;
  yyrcimagepixels(imageid, type, w, h, rgba, status);
  if (status != 0) return 0;
  // Dark pixels are the shape, opaque ones the mask; bits from the lowest up.
  const int row = (w + 7) / 8;
  std::vector<char> source(static_cast<std::size_t>(row * h), 0), mask(source.size(), 0);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const std::uint8_t* px = &rgba[static_cast<std::size_t>((y * w + x) * 4)];
      const std::size_t byte = static_cast<std::size_t>(y * row + x / 8);
      const char bit = static_cast<char>(1 << (x % 8));
      if (px[0] + px[1] + px[2] < 382) source[byte] = static_cast<char>(source[byte] | bit);
      if (px[3] == 0) mask[byte] = static_cast<char>(mask[byte] | bit);
    }
  const Pixmap src = XCreateBitmapFromData(dpy, root, source.data(), static_cast<unsigned>(w), static_cast<unsigned>(h));
  const Pixmap msk = XCreateBitmapFromData(dpy, root, mask.data(), static_cast<unsigned>(w), static_cast<unsigned>(h));
  XColor black{}, white{};
  white.red = white.green = white.blue = 0xFFFF;
  black.flags = white.flags = DoRed | DoGreen | DoBlue;
  const Cursor c = XCreatePixmapCursor(dpy, src, msk, &black, &white, static_cast<unsigned>(hx), static_cast<unsigned>(hy));
  XFreePixmap(dpy, src);
  XFreePixmap(dpy, msk);
  return c;
}

void define_on_window(Display* dpy, int h, Cursor cur) {
  auto& ws = zelvy_win::state();
  XDefineCursor(dpy, ws.wClient[h], cur);
  const int kind = ws.WinInfo[h].Kind;
  if ((kind == 1 || kind == 2) && ws.WinInfo[h].Content && XtIsRealized(ws.WinInfo[h].Content))
    XDefineCursor(dpy, XtWindow(ws.WinInfo[h].Content), cur);
}

}  // namespace

void WCursorShape(int shape, std::optional<int> scope) {
  const int sc = scope.value_or(0);
  if (shape < 0) {
    yyerror(1015, "WCursorShape");
    return;
  }
  Display* dpy = xs.ixDisplay;
  if (!dpy || !xs.bSchemeDone) {
    if (shape >= 12) yyerror(1015, "WCursorShape");
    return;
  }
  auto& ws = zelvy_win::state();
  const int h = ws.iWinCur;
  if (sc == 1 && (h < 0 || h > ws.iWinMax || !ws.wWindow[h])) {
    yyerror(1097, "WCursorShape");
    return;
  }
  Cursor cur = 0;
  int kept = shape;
  if (shape < 12) {
    cur = xs.ixCursor[static_cast<std::size_t>(shape)];
  } else {
    int status = 0;
    cur = resource_cursor(dpy, shape, status);
    if (status != 0) {
      yyerror(status, "WCursorShape");
      return;
    }
    if (!cur) return;  // a size the server can't show: the cursor stays
    if (sc != 1) {
      // The global resource cursor replaces the last one.
      if (xs.resourceCursor) XFreeCursor(dpy, xs.resourceCursor);
      xs.resourceCursor = cur;
      xs.ixCursor[12] = cur;
      kept = 12;
    }
  }
  if (sc == 1) {
    ws.hCursorWin[h] = cur;
    ws.iCursorWin[h] = kept;
    define_on_window(dpy, h, cur);
  } else {
    xs.iCursor = kept;
    xs.cCursor = cur;
    for (int k = 0; k <= ws.iWinMax; ++k) {
      if (!ws.wWindow[k] || (sc == 2 && ws.hCursorWin[k])) continue;
      ws.hCursorWin[k] = 0;
      define_on_window(dpy, k, cur);
    }
  }
  XFlush(dpy);
}

// ---- Palette, icons, widget text ---------------------------------------------

std::vector<std::array<unsigned short, 3>> yyPaletteTable(int colours) {
  using Rgb = std::array<unsigned short, 3>;
  constexpr unsigned short F = 0xFFFF, B = 0xBFFF, D = 0x3FFF;
  if (colours == 2) return {Rgb{F, F, F}, Rgb{0, 0, 0}};
  if (colours == 8)
    return {Rgb{F, F, F}, Rgb{0, 0, F}, Rgb{0, F, 0}, Rgb{0, F, F},
            Rgb{F, 0, 0}, Rgb{F, 0, F}, Rgb{F, F, 0}, Rgb{0, 0, 0}};
  if (colours == 32 || colours == 64 || colours == 128) {
    // 256 steps through the waypoints, sampled at every (256 / colours)-th.
    constexpr std::array<Rgb, 8> way{Rgb{0x8000, 0x8000, 0x8000}, Rgb{F, 0, 0}, Rgb{F, F, 0},
                                     Rgb{0, F, 0},                Rgb{0, F, F}, Rgb{0, 0, F},
                                     Rgb{F, 0, F},                Rgb{0x8000, 0x8000, 0x8000}};
    std::vector<Rgb> out;
    const int stride = 256 / colours;
    for (int step = 0; step < 256; step += stride) {
      const double t = step * 7.0 / 256.0;
      const auto seg = static_cast<std::size_t>(t);
      const double f = t - static_cast<double>(seg);
      Rgb c{};
      for (std::size_t k = 0; k < 3; ++k)
        c[k] = static_cast<unsigned short>(way[seg][k] + (way[seg + 1][k] - way[seg][k]) * f);
      out.push_back(c);
    }
    return out;
  }
  return {Rgb{F, F, F}, Rgb{0, 0, B}, Rgb{0, B, 0}, Rgb{0, B, B}, Rgb{B, 0, 0}, Rgb{B, 0, B},
          Rgb{B, B, 0}, Rgb{D, D, D}, Rgb{B, B, B}, Rgb{0, 0, F}, Rgb{0, F, 0}, Rgb{0, F, F},
          Rgb{F, 0, 0}, Rgb{F, 0, F}, Rgb{F, F, 0}, Rgb{0, 0, 0}};
}

void yyDefaultPalette(int depth, int colourcount) {
  xs.defaultPalette.clear();
  if (depth > 8) return;  // 256 colours or more need no palette of their own
  int colours = colourcount;
  if (depth == 1) colours = 2;
  else if (depth <= 3) colours = 8;
  else if (depth < 8 || (colours != 32 && colours != 64 && colours != 128)) colours = 16;
  xs.defaultPalette = yyPaletteTable(colours);
}

Pixmap yyResourceLoadImage(int imageid, int type, int mode, Pixel background, int& width, int& height,
                           int& status) {
  constexpr int kNoPixmap = 2, kBadImage = 1015, kTransparent = 255, kLeftOutGrey = 192;
  width = height = 0;
  status = 0;
  Display* dpy = xs.ixDisplay;
  std::vector<std::uint8_t> rgba;
  yyrcimagepixels(imageid, type, width, height, rgba, status);
  if (status != 0 || width < 1 || height < 1) {
    width = height = 0;
    status = kBadImage;
    return kNoPixmap;
  }
  if (!dpy) return kNoPixmap;
  // The colour left out in modes 1 and 3, and the ground mixed into in mode 2.
  int outr = kLeftOutGrey, outg = kLeftOutGrey, outb = kLeftOutGrey;
  if (mode == kImageKeyColour) {
    outr = static_cast<int>(background & 0xFF);
    outg = static_cast<int>((background >> 8) & 0xFF);
    outb = static_cast<int>((background >> 16) & 0xFF);
  }
  XColor ground{};
  if (mode == kImageOnBackground) {
    ground.pixel = background;
    XQueryColor(dpy, DefaultColormap(dpy, xs.iScreen), &ground);
  }
  const Window root = RootWindow(dpy, xs.iScreen);
  const int depth = DefaultDepth(dpy, xs.iScreen);
  const Pixmap pm = XCreatePixmap(dpy, root, static_cast<unsigned>(width), static_cast<unsigned>(height),
                                  static_cast<unsigned>(depth));
  GC gc = XCreateGC(dpy, pm, 0, nullptr);
  // A known ground under what is left out: the background in mode 2, else 0.
  XSetForeground(dpy, gc, mode == kImageOnBackground ? background : 0);
  XFillRectangle(dpy, pm, gc, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height));
  XImage* im = XGetImage(dpy, pm, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height), AllPlanes, ZPixmap);
  if (!im) {
    XFreeGC(dpy, gc);
    XFreePixmap(dpy, pm);
    status = kBadImage;
    return kNoPixmap;
  }
  // Runs of one colour, common in icons, cost one allocation.
  int lastrgb = -1;
  unsigned long lastpixel = 0;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const std::uint8_t* px = &rgba[static_cast<std::size_t>((y * width + x) * 4)];
      int r = px[0], g = px[1], b = px[2];
      const int t = px[3];
      if ((mode == kImageLeaveGrey || mode == kImageKeyColour) && r == outr && g == outg && b == outb) continue;
      if (mode == kImageOnBackground) {
        if (t == kTransparent) continue;
        r = (t * (ground.red >> 8) + (kTransparent - t) * r) / kTransparent;
        g = (t * (ground.green >> 8) + (kTransparent - t) * g) / kTransparent;
        b = (t * (ground.blue >> 8) + (kTransparent - t) * b) / kTransparent;
      }
      const int rgb = r | g << 8 | b << 16;
      if (rgb != lastrgb) {
        lastpixel = yyAllocPixel(r, g, b);
        lastrgb = rgb;
      }
      XPutPixel(im, x, y, lastpixel);
    }
  XPutImage(dpy, pm, gc, im, 0, 0, 0, 0, static_cast<unsigned>(width), static_cast<unsigned>(height));
  XFreeGC(dpy, gc);
  XDestroyImage(im);
  return pm;
}

Pixmap yyResourceImagePixmap(int imageid, int type, Pixel background, int& width, int& height) {
  int status = 0;
  return yyResourceLoadImage(imageid, type, kImageOnBackground, background, width, height, status);
}

namespace {

void give_icon(Widget shell, Pixmap pm, int width, int height, bool owned) {
  Display* dpy = xs.ixDisplay;
  yyResourceIconForget(shell);
  XSetWindowAttributes at{};
  at.background_pixmap = pm;
  const Window iw = XCreateWindow(dpy, RootWindow(dpy, xs.iScreen), 0, 0, static_cast<unsigned>(width),
                                  static_cast<unsigned>(height), 0, CopyFromParent, InputOutput,
                                  CopyFromParent, CWBackPixmap, &at);
  XtVaSetValues(shell, XtNiconPixmap, pm, XtNiconWindow, iw, nullptr);
  xs.shellIcons.push_back({shell, iw, owned ? pm : 0});
}

}  // namespace

void yyResourceProgramIconShow(Widget shell) {
  if (!xs.ixDisplay || !shell) return;
  if (xs.pProgramIcon == 2) {
    xs.pProgramIcon = yyResourceImagePixmap(-1, 2, xs.wSchemeCol[3].pixel, xs.programIconWidth,
                                            xs.programIconHeight);
  }
  if (xs.pProgramIcon == 2) return;
  give_icon(shell, xs.pProgramIcon, xs.programIconWidth, xs.programIconHeight, false);
}

int yyResourceIconShow(Widget shell, int iconid) {
  if (!xs.ixDisplay || !shell) return 0;
  if (iconid == 0) {
    yyResourceProgramIconShow(shell);
    return xs.pProgramIcon == 2 ? 1015 : 0;
  }
  int w = 0, h = 0;
  const Pixmap pm = yyResourceImagePixmap(iconid, 2, xs.wSchemeCol[3].pixel, w, h);
  if (pm == 2) return 1015;
  give_icon(shell, pm, w, h, true);
  return 0;
}

void yyResourceIconForget(Widget shell) {
  Display* dpy = xs.ixDisplay;
  auto it = std::find_if(xs.shellIcons.begin(), xs.shellIcons.end(),
                         [&](const auto& i) { return i.shell == shell; });
  if (it == xs.shellIcons.end()) return;
  if (dpy) {
    XDestroyWindow(dpy, it->window);
    if (it->pixmap) XFreePixmap(dpy, it->pixmap);
  }
  xs.shellIcons.erase(it);
}

void yyDialogCreateRenditons() {
  if (!xs.ixDisplay || !xs.bXft || !xs.rootWidget) return;
  for (void* t : xs.measureTables) XmRenderTableFree(static_cast<XmRenderTable>(t));
  xs.measureTables.clear();
  int count = 0;
  yyrcfontcount(count);
  // Index 0 is the default font of the resources; the others name a family
  // (2 serif, 3 and 4 fixed) and a size in points.
  for (int i = 0; i <= std::max(0, count); ++i) {
    std::string family = xs.appData.xftName && *xs.appData.xftName ? xs.appData.xftName : "Sans";
    int size = xs.appData.xftSize > 0 ? xs.appData.xftSize : 8;
    int type = -1, points = -1;
    if (i > 0) yyrcfontlist(i, type, points);
    if (points > 0) size = points;
    if (type == 2) family = "Serif";
    else if (type == 3 || type == 4) family = "Monospace";
    Arg args[3];
    Cardinal n = 0;
    XtSetArg(args[n], XmNfontType, XmFONT_IS_XFT); ++n;
    XtSetArg(args[n], XmNfontName, const_cast<char*>(family.c_str())); ++n;
    XtSetArg(args[n], XmNfontSize, size); ++n;
    XmRendition r = XmRenditionCreate(xs.rootWidget, const_cast<char*>(XmFONTLIST_DEFAULT_TAG), args, n);
    xs.measureTables.push_back(XmRenderTableAddRenditions(nullptr, &r, 1, XmMERGE_REPLACE));
    XmRenditionFree(r);
  }
}

void IGrInit() {
  if (xs.graphicsInit) xs.graphicsInit();
}

XmString yyXmStringGenerate(std::string_view text, int kind, int font) {
  (void)font;  // widgets carry the render table of their font; the default tag reaches it
  if (xs.bXft) {
    int type = 0;
    const std::string t = yyConvertEncoding(text, xs.iDialogEncoding, type);
    return XmStringGenerate(const_cast<char*>(t.c_str()), const_cast<char*>("UTF-8"),
                            XmCHARSET_TEXT, const_cast<char*>(XmFONTLIST_DEFAULT_TAG));
  }
  std::string t(text);
  if (kind == 1) return XmStringCreateLtoR(t.data(), const_cast<char*>(XmFONTLIST_DEFAULT_TAG));
  if (kind == 2) return XmStringCreateLocalized(t.data());
  return XmStringCreateSimple(t.data());
}

int yyXmStringWidth(std::string_view text, int length, int font) {
  if (!xs.ixDisplay) return 0;
  const std::string_view part = text.substr(0, static_cast<std::size_t>(std::clamp<int>(length, 0, static_cast<int>(text.size()))));
  if (!xs.bXft) {
    if (!xs.dialogFontStruct) return 0;
    return XTextWidth(xs.dialogFontStruct, part.data(), static_cast<int>(part.size()));
  }
  if (xs.measureTables.empty()) yyDialogCreateRenditons();
  const auto index = static_cast<std::size_t>(std::max(0, font));
  if (index >= xs.measureTables.size()) return 0;
  XmString str = yyXmStringGenerate(part, 0, font);
  const int w = XmStringWidth(static_cast<XmRenderTable>(xs.measureTables[index]), str);
  XmStringFree(str);
  return w;
}

int yycurrenttime() {
  using namespace zelvy_win;
  Display* dpy = xs.ixDisplay;
  if (!dpy || !zelvy_win::state().wWindow[0] || !zelvy_win::state().wClient[0]) return 0;
  const Window w = zelvy_win::state().wClient[0];
  XChangeProperty(dpy, w, XA_WM_CLASS, XA_ATOM, 32, PropModeAppend, nullptr, 0);
  XEvent ev;
  XWindowEvent(dpy, w, PropertyChangeMask, &ev);
  return static_cast<int>(ev.xproperty.time & 0x7fffffffUL);
}

int yysystime() { return yycurrenttime(); }

int yymotifversion() { return xmUseVersion; }

int yyvendorrelease() { return xs.ixDisplay ? VendorRelease(xs.ixDisplay) : 0; }

XftFont* yyXftOpen(const char* family, int size) {
  char name[256];
  std::snprintf(name, sizeof name, "%s-%-d", family && *family ? family : "Sans", size);
  return XftFontOpenName(xs.ixDisplay, xs.iScreen, name);
}

void yyStyleScrollbar(Widget widget, int which) {
  if (!xs.bFlatStyle || !widget) return;
  Widget target = widget;
  if (which == 3 || which == 4) target = XtParent(widget);
  if (which >= 1 && which <= 4) {
    target = XtNameToWidget(target, (which == 1 || which == 3) ? "HorScrollBar" : "VertScrollBar");
    if (!target) return;
  }
  XtVaSetValues(target, XmNtopShadowColor, xs.wSchemeCol[9].pixel, XmNbottomShadowColor,
                xs.wSchemeCol[9].pixel, XmNshadowThickness, 1, XmNtroughColor, xs.wSchemeCol[17].pixel,
                XmNsliderMark, 2, nullptr);
}

std::string yyGetFilePart(int which, std::string_view path) {
  std::string full(path);
  if (full.empty() || full.front() != '/') {
    char cwd[4096];
    const std::string dir = ::getcwd(cwd, sizeof cwd) ? cwd : "";
    full = dir + (dir.empty() || dir.back() != '/' ? "/" : "") + full;
  }
  const auto sep = full.rfind('/');
  if (which == 0) {
    if (sep == std::string::npos) return {};
    return sep == 0 ? "/" : full.substr(0, sep);
  }
  return sep == std::string::npos ? full : full.substr(sep + 1);
}

int yyGetParentHandle(int& kind, Window xwin) {
  Display* dpy = xs.ixDisplay;
  while (dpy && xwin) {
    if (kind == 1 || kind == 3) {
      const int h = yyGetWindowIndex(0, xwin);
      if (h >= 0) {
        kind = 1;
        return h;
      }
    }
    Window root = 0, parent = 0, *children = nullptr;
    unsigned n = 0;
    if (!XQueryTree(dpy, xwin, &root, &parent, &children, &n)) break;
    if (children) XFree(children);
    if (parent == root) break;
    xwin = parent;
  }
  kind = -1;
  return -1;
}

Pixmap yyCreateGreyPixmap(Pixmap pixmap, int width, int height, Pixel background) {
  Display* dpy = xs.ixDisplay;
  if (!dpy || pixmap == 2 || width < 1 || height < 1) return 2;
  XImage* img = XGetImage(dpy, pixmap, 0, 0, width, height, AllPlanes, ZPixmap);
  if (!img) return 2;
  Region shape = XCreateRegion();
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (XGetPixel(img, x, y) != background) {
        XRectangle r{static_cast<short>(x), static_cast<short>(y), 1, 1};
        XUnionRectWithRegion(&r, shape, shape);
      }
  XDestroyImage(img);
  const Window root = RootWindow(dpy, xs.iScreen);
  Pixmap out = XCreatePixmap(dpy, root, width + 1, height + 1, xs.iDispDepth);
  GC gc = XCreateGC(dpy, out, 0, nullptr);
  XSetForeground(dpy, gc, background);
  XFillRectangle(dpy, out, gc, 0, 0, width + 1, height + 1);
  XOffsetRegion(shape, 1, 1);
  XSetRegion(dpy, gc, shape);
  XSetForeground(dpy, gc, xs.wSchemeCol[8].pixel);
  XFillRectangle(dpy, out, gc, 0, 0, width + 1, height + 1);
  XOffsetRegion(shape, -1, -1);
  XSetRegion(dpy, gc, shape);
  XSetForeground(dpy, gc, xs.wSchemeCol[4].pixel);
  XFillRectangle(dpy, out, gc, 0, 0, width + 1, height + 1);
  XFreeGC(dpy, gc);
  XDestroyRegion(shape);
  return out;
}

int yySampleTextHeight(XftFont* xft, XFontStruct* core) {
  if (xft) {
    XGlyphInfo ext{};
    XftTextExtents8(xs.ixDisplay, xft, reinterpret_cast<const FcChar8*>("Wy@"), 3, &ext);
    return ext.height;
  }
  if (!core) return 0;
  int dir = 0, asc = 0, desc = 0;
  XCharStruct all{};
  XTextExtents(core, "Wy@", 3, &dir, &asc, &desc, &all);
  return all.ascent + all.descent;
}

namespace zelvy_x {
State& state() {
  static State s;
  return s;
}
}  // namespace zelvy_x
