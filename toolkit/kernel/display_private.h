// Display services, the toolkit's side: the X connection, application resources, fonts, scheme
// colours, colour-to-pixel, cursors and text encoding for widgets.
#pragma once

#include "toolkit/kernel/display.h"

#include <X11/Intrinsic.h>
#include <X11/Xft/Xft.h>
#include <X11/Xutil.h>
#include <Xm/Xm.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The application resources of class Zelv, with the fallback values of the look.
struct ZelvAppData {
  Pixel foreground, background, menuselForeColor, menuselBackColor, topShadowColor,
      bottomShadowColor, tooltipForeColor, tooltipBackColor, darkColor, grayTextColor,
      menuForeColor, menuBackColor, menuDropColor, editForeColor, editBackColor, altForeColor,
      altBackColor, armColor, selectColor;
  Boolean xft;
  String xftName, xftNameMenu, xftNameStatus;
  int xftSize, xftSizeMenu, xftSizeStatus;
  String dialogFont;  // name; loaded into dialogFontStruct
};

namespace zelvy_x {
struct State {
  Display* ixDisplay = nullptr;
  XtAppContext ixContext = nullptr;
  Widget rootWidget = nullptr;
  int iScreen = 0;
  int iDispDepthMain = 0, iDispDepth = 0, iDispWidth = 0, iDispHeight = 0;
  Colormap iCmapMain = 0;
  Visual* iVisual = nullptr;
  bool BestMap = false;
  XStandardColormap best_map_info{};
  std::vector<unsigned long> gColtab;  // the colour cache, 64 levels a component
  int nColtabEntries = 0;
  int gColError = 0;
  int iKCReturn = 0, iKCKPEnter = 0;
  int iMultiClickTime = 500;
  bool bXft = false;
  bool bFlatStyle = true;
  int iFontFound = 0;
  int iMsgBoxRule = 0;
  unsigned int AltMask = Mod1Mask;
  KeySym AltKeySym = 0;
  unsigned int NumLockMask = 0;
  int iXError = 0;
  int iDialogEncoding = 0;  // 1: texts handed to the toolkit are UTF-8, else ISO 8859-1
  int iClipboardMethod = 1;
  ZelvAppData appData{};
  std::string cDialogFont;   // the core font found for the dialog font size
  std::string fallbackFontLine;  // Xt keeps a pointer to it as a fallback resource
  XFontStruct* dialogFontStruct = nullptr;
  std::array<XColor, 20> wSchemeCol{};
  std::array<Cursor, 13> ixCursor{};
  int iCursor = 0;           // shape of the global cursor
  Cursor cCursor = 0;        // the global cursor as defined
  Cursor resourceCursor = 0; // the last cursor made from a resource image
  Pixmap pProgramIcon = 2;   // 2: no program icon
  int programIconWidth = 0, programIconHeight = 0;
  // Icon windows and pixmaps given to shells, freed when replaced.
  struct ShellIcon {
    Widget shell;
    Window window;
    Pixmap pixmap;
  };
  std::vector<ShellIcon> shellIcons;
  // The default palette of the graphics layer as 16-bit red, green, blue;
  // empty on displays of more than 8 bits.
  std::vector<std::array<unsigned short, 3>> defaultPalette;
  // Render tables by font index, for measuring widget text.
  std::vector<void*> measureTables;
  // The graphics layer's own start for a new root window, once it is attached.
  void (*graphicsInit)() = nullptr;
  // And its end, when the root window closes: the bitmaps and their viewer go.
  void (*graphicsShutdown)() = nullptr;
  bool bSchemeDone = false;  // scheme colours, masks and cursors made at the first root window
};

// The one instance, defined in display.cpp.
State& state();

}  // namespace zelvy_x

// The X connection, null before the display opens.
inline Display* xdisplay() { return zelvy_x::state().ixDisplay; }

// The default palette for a number of colours (2, 8, 16, or a ramp of 32,
// 64 or 128 through grey, red, yellow, green, cyan, blue, magenta and back),
// as 16-bit red, green, blue.
std::vector<std::array<unsigned short, 3>> yyPaletteTable(int colours);
// Sets up the default palette for a display of that depth: only with fewer
// than 256 colours; a colour count other than 32, 64 or 128 gives 16 (2 on a
// one-bit display, 8 on a three-bit one).
void yyDefaultPalette(int depth, int colourcount);
// A pixmap of a resource image, of the screen's depth; 2 (no pixmap) and
// status 1015 when there is no such image. By mode: kImageAsIs every pixel
// as it stands; kImageLeaveGrey the pixels of 192, 192, 192 left out;
// kImageOnBackground on a ground of `background`, fully transparent pixels
// left out and the others mixed into it by their transparency;
// kImageKeyColour the pixels of the RGB colour `background` left out.
enum ImageLoadMode : int { kImageAsIs = 0, kImageLeaveGrey = 1, kImageOnBackground = 2, kImageKeyColour = 3 };
Pixmap yyResourceLoadImage(int imageid, int type, int mode, Pixel background, int& width, int& height,
                           int& status);
// The same on a ground of `background`.
Pixmap yyResourceImagePixmap(int imageid, int type, Pixel background, int& width, int& height);
// The program icon (image -1) on a shell: its icon pixmap and icon window.
void yyResourceProgramIconShow(Widget shell);
// Icon 0 the program icon, others an icon image of the resources; 0 or 1015.
int yyResourceIconShow(Widget shell, int iconid);
// Frees what the icon of a shell holds.
void yyResourceIconForget(Widget shell);
// A compound string for a widget: with Xft the text converted to UTF-8 in the
// default rendition; without, kind 1 with line breaks, 2 localised, 0 simple.
XmString yyXmStringGenerate(std::string_view text, int kind, int font);
// Render tables of the resource fonts (index 0 the default) when Xft draws
// the text, made when widget text is first measured.
void yyDialogCreateRenditons();
// Width in pixels of a text as a widget of font index `font` shows it.
int yyXmStringWidth(std::string_view text, int length, int font);
// The visual of a class in a list, the deepest, or the one of depth `want`
// (-1 when there is none of that depth); -1 when the class is missing.
int yyChooseVisual(XVisualInfo* visuals, int count, int visualclass, int want);

// Opens the display once; colours -1 means failure (also on a second call).
void yygetdisplayinfo(int fontsize, int flags, int& width, int& height, int& widthmm,
                      int& heightmm, int& colours, int& greys);
// Scheme colours, modifier masks, cursors and the colour cache, made when a
// root window opens.
void yyDisplayRootOpen();
// A pixel for a 24-bit colour on any visual; components 0 to 255.
unsigned long yyAllocPixel(int red, int green, int blue);
// Text in the encoding the widgets take (UTF-8); type 1 multibyte, 0 plain.
std::string yyConvertEncoding(std::string_view text, int encoding, int& texttype);
// Encoding helpers of the widgets' UTF-8: a well-formed check, the way back to
// ISO 8859-1 when every character has one, characters counted, and the longest
// prefix of at most BYTES bytes that ends on a character boundary.
bool yyIsUtf8(std::string_view text);
std::optional<std::string> yyUtf8ToLatin1(std::string_view text);
std::size_t yyUtf8Length(std::string_view text);
std::size_t yyUtf8Cut(std::string_view text, std::size_t bytes);
// The widgets take and give UTF-8: the character type is set to a UTF-8 locale.
void yyUseUtf8Locale();
// The X server's time in milliseconds, top bit clear; 0 without a root window.
int yycurrenttime();
int yysystime();
int yymotifversion();
int yyvendorrelease();
// An Xft font by family and size in points ("Sans", 8).
XftFont* yyXftOpen(const char* family, int size);
// Height of the sample "Wy@" (cap height to descender) in an Xft font, else in
// a core font; 0 with neither.
int yySampleTextHeight(XftFont* xft, XFontStruct* core);
int yyXlibErrorEH(Display*, XErrorEvent* event);
// Flat look for a scroll bar: which 0 the widget, 1/2 its horizontal/vertical
// bar child, 3/4 those children of its parent.
void yyStyleScrollbar(Widget widget, int which);
// Part of a path made absolute: which 0 the directory without its last
// separator ("/" for a file in the root, empty when there is none), else the name.
std::string yyGetFilePart(int which, std::string_view path);
// The toolkit window an X window belongs to, searching up the window tree;
// kind in: 1 windows (dialogs come with the dialog engine), out: 1 or -1.
int yyGetParentHandle(int& kind, Window xwin);
// An engraved, disabled look of a pixmap: one pixel wider and higher, the shape
// (every pixel other than background) in scheme colour 8 moved by 1, 1 and in
// scheme colour 4 in its place. 2 means no pixmap, in and out.
Pixmap yyCreateGreyPixmap(Pixmap pixmap, int width, int height, Pixel background);
