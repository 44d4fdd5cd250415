// Display services: the X connection, application resources, fonts, scheme
// colours, colour-to-pixel, cursors and text encoding for widgets.
#pragma once

#include <X11/Intrinsic.h>
#include <X11/Xft/Xft.h>
#include <X11/Xutil.h>

#include <array>
#include <optional>
#include <string>
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

inline Display* ixDisplay = nullptr;
inline XtAppContext ixContext = nullptr;
inline Widget rootWidget = nullptr;
inline int iScreen = 0;
inline int iDispDepthMain = 0, iDispDepth = 0, iDispWidth = 0, iDispHeight = 0;
inline Colormap iCmapMain = 0;
inline Visual* iVisual = nullptr;
inline bool BestMap = false;
inline XStandardColormap best_map_info{};
inline std::vector<unsigned long> gColtab;  // the colour cache, 64 levels a component
inline int nColtabEntries = 0;
inline int gColError = 0;
inline int iKCReturn = 0, iKCKPEnter = 0;
inline int iMultiClickTime = 500;
inline bool bXft = false;
inline bool bFlatStyle = true;
inline int iFontFound = 0;
inline int iMsgBoxRule = 0;
inline unsigned int AltMask = Mod1Mask;
inline KeySym AltKeySym = 0;
inline unsigned int NumLockMask = 0;
inline int iXError = 0;
inline int iDialogEncoding = 0;  // 1: texts handed to the toolkit are UTF-8, else ISO 8859-1
inline int iClipboardMethod = 1;
inline ZelvAppData appData{};
inline std::string cDialogFont;   // the core font found for the dialog font size
inline XFontStruct* dialogFontStruct = nullptr;
inline std::array<XColor, 20> wSchemeCol{};
inline std::array<Cursor, 13> ixCursor{};
inline int iCursor = 0;           // shape of the global cursor
inline bool bSchemeDone = false;  // scheme colours, masks and cursors made at the first root window

}  // namespace zelvy_x

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
// Screen facts: 1, 2 size, 3 colours, 6..26 scheme colours as 0xBBGGRR, ...
int WInfoScreen(int item);
// Mouse cursor shape 0..11 (12 and up: resource cursors); scope 0 all, 1 the
// graphics target only, 2 where no own cursor is set.
void WCursorShape(int shape, std::optional<int> scope = {});
// The X server's time in milliseconds, top bit clear; 0 without a root window.
int yycurrenttime();
int yysystime();
int yymotifversion();
int yyvendorrelease();
// An Xft font by family and size in points ("Sans", 8).
XftFont* yyXftOpen(const char* family, int size);
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
