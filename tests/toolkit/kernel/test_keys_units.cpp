// Display-free pieces of the message loop and the windows: key translation,
// window units, text encoding and file names.
#include <gtest/gtest.h>  // before the X headers, whose macros it would trip over

#include <X11/keysym.h>
#include <unistd.h>

#include <array>

#include "toolkit/kernel/display_private.h"
#include "toolkit/kernel/message.h"
#include "toolkit/kernel/window.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

namespace {

struct KeyCase {
  unsigned long keysym;
  bool ctrl, shift;
  const char* chars;
  int value1, value2, value4;
};

TEST(KeyTranslation, TableCodesWithModifierOffsets) {
  const KeyCase cases[] = {
      {XK_Tab, false, true, "\t", 274, 2, 9},       // Shift+Tab is back-tab
      {XK_Tab, true, false, "\t", 9, 1, 9},         // Ctrl+Tab stays Tab
      {XK_Tab, true, true, "\t", 9, 3, 9},
      {XK_KP_Tab, false, true, "", 9, 2, 9},        // keypad Tab has no back-tab
      {XK_F1, true, false, "", 341, 1, 301},
      {XK_F1, false, true, "", 321, 2, 301},
      {XK_F20, false, false, "", 320, 0, 320},
      {XK_KP_F4, true, false, "", 344, 1, 304},
      {XK_Help, false, true, "", 335, 2, 315},
      {XK_Up, false, true, "", 262, 2, 258},        // same Value1 as Page Up
      {XK_Prior, false, false, "", 262, 0, 262},
      {XK_Left, true, false, "", 269, 1, 261},
      {XK_KP_Down, false, false, "", 259, 0, 259},
      {XK_Return, false, false, "\r", 13, 0, 13},
      {XK_KP_Enter, false, false, "\r", 13, 0, 13},
      {XK_BackSpace, true, false, "\b", 8, 1, 8},
      {XK_Escape, false, false, "\x1b", 27, 0, 27},
      {XK_Delete, false, false, "", 127, 0, 127},
      {XK_EuroSign, false, false, "", 128, 0, 128},
      {XK_Home, true, false, "", 270, 1, 270},      // offsets only for arrows and function keys
      {XK_Select, false, false, "", 271, 0, 271},
      {XK_KP_Insert, false, false, "", 272, 0, 272},
      {0x1000FF72, false, false, "", 272, 0, 272},
      {0x1000FF73, false, false, "", 273, 0, 273},
      {XK_ISO_Left_Tab, false, true, "", 274, 2, 274},
      {XK_Menu, false, false, "", 275, 0, 275},
      {XK_KP_7, false, false, "7", 287, 0, 287},
      {XK_KP_Subtract, false, false, "-", 290, 0, 290},
      {XK_KP_Separator, false, false, "", 292, 0, 292},
      {XK_KP_Multiply, false, false, "*", 294, 0, 294},
      {XK_Print, false, false, "", 300, 0, 300},
      {XK_a, false, false, "a", 97, 0, 97},          // keys outside the table are their own code
      {XK_A, false, true, "A", 65, 2, 65},
      {XK_q, true, false, "\x11", 17, 1, 81},        // control letters give the control code
      {XK_Q, true, true, "\x11", 17, 3, 81},
      {XK_q, true, false, "q", 113, 1, 113},         // no control code from the lookup
  };
  for (const KeyCase& c : cases) {
    const KeyMessage m = yyMsgProcessKey(c.keysym, c.ctrl, c.shift, c.chars);
    SCOPED_TRACE(testing::Message() << std::hex << "keysym 0x" << c.keysym);
    EXPECT_TRUE(m.made);
    EXPECT_EQ(m.value1, c.value1);
    EXPECT_EQ(m.value2, c.value2);
    EXPECT_EQ(m.value4, c.value4);
  }
}

TEST(KeyTranslation, ModifierKeysMakeNoMessage) {
  for (unsigned long ks : {XK_Shift_L, XK_Control_R, XK_Alt_L, XK_Super_L, XK_Hyper_R, XK_Caps_Lock,
                           XK_Mode_switch, XK_Num_Lock, XK_ISO_Level3_Shift, XK_Scroll_Lock})
    EXPECT_FALSE(yyMsgProcessKey(ks, false, false, "").made) << std::hex << ks;
}

TEST(WindowUnits, ConversionAndItsRounding) {
  // {units or pixels, window size, result}
  const int to_pixels[][3] = {{9999, 100, 99}, {0, 100, 0}, {5000, 100, 49}, {9999, 1, 0}};
  for (const auto& c : to_pixels) EXPECT_EQ(yyunitstopixels(c[0], c[1]), c[2]) << c[0] << "/" << c[1];
  // No way back to 9999; a window of one pixel has only unit 0.
  const int from_pixels[][3] = {{99, 100, 9949}, {0, 100, 49}, {50, 400, 1262}, {0, 1, 0}, {5, 1, 0}};
  for (const auto& c : from_pixels) EXPECT_EQ(yyunitsfrompixels(c[0], c[1]), c[2]) << c[0] << "/" << c[1];
  // Through the selected window's size.
  zelvy_data::data().iwinwid = 1024;
  zelvy_data::data().iwinhgt = 819;
  int px = 0, py = 0, ux = 0, uy = 0;
  WindowUnitsToPixels(1000, 9999, px, py);
  EXPECT_EQ(std::pair(px, py), std::pair(102, 818));
  WindowUnitsFromPixels(px, py, ux, uy);
  EXPECT_EQ(std::pair(ux, uy), std::pair(1000, 9992));  // the round trip loses a unit
}

TEST(WindowUnits, PositionKeptOnTheScreen) {
  zelvy_x::state().iDispWidth = 1280;
  zelvy_x::state().iDispHeight = 1024;
  int x = 1200, y = -5;
  yyWindowPositionOnScreen(200, 100, x, y);
  EXPECT_EQ(std::pair(x, y), std::pair(1080, 0));
  x = 10, y = 2000;
  yyWindowPositionOnScreen(2000, 100, x, y);  // wider than the screen: the left edge wins
  EXPECT_EQ(std::pair(x, y), std::pair(0, 924));
}

TEST(TextEncoding, LatinOneBecomesUtf8) {
  int type = -1;
  EXPECT_EQ(yyConvertEncoding("plain", 0, type), "plain");
  EXPECT_EQ(type, 0);
  EXPECT_EQ(yyConvertEncoding("\xe9t\xa9", 0, type), "\xc3\xa9t\xc2\xa9");
  EXPECT_EQ(type, 1);
  EXPECT_EQ(yyConvertEncoding("\xc3\xa9", 1, type), "\xc3\xa9");  // already UTF-8
  EXPECT_EQ(type, 1);
}

TEST(FileParts, AbsoluteDirectoryAndName) {
  EXPECT_EQ(yyGetFilePart(0, "/data/run1/job.omb"), "/data/run1");
  EXPECT_EQ(yyGetFilePart(1, "/data/run1/job.omb"), "job.omb");
  EXPECT_EQ(yyGetFilePart(0, "/job.omb"), "/");
  EXPECT_EQ(yyGetFilePart(1, "/data/"), "");
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  EXPECT_EQ(yyGetFilePart(0, "job.omb"), std::string(cwd) == "/" ? "/" : std::string(cwd));
}

TEST(DefaultPalette, OnlyDisplaysOfFewColoursGetOne) {
  using Rgb = std::array<unsigned short, 3>;
  const auto sixteen = yyPaletteTable(16);
  ASSERT_EQ(sixteen.size(), 16u);
  EXPECT_EQ(sixteen.front(), (Rgb{0xFFFF, 0xFFFF, 0xFFFF}));
  EXPECT_EQ(sixteen[4], (Rgb{0xBFFF, 0, 0}));  // red at three quarters
  EXPECT_EQ(sixteen[7], (Rgb{0x3FFF, 0x3FFF, 0x3FFF}));
  EXPECT_EQ(sixteen[12], (Rgb{0xFFFF, 0, 0}));
  EXPECT_EQ(sixteen.back(), (Rgb{0, 0, 0}));
  EXPECT_EQ(yyPaletteTable(8)[1], (Rgb{0, 0, 0xFFFF}));
  EXPECT_EQ(yyPaletteTable(2).size(), 2u);
  // The ramps start in grey and head for red first.
  for (int n : {32, 64, 128}) {
    const auto ramp = yyPaletteTable(n);
    ASSERT_EQ(ramp.size(), static_cast<std::size_t>(n));
    EXPECT_EQ(ramp.front(), (Rgb{0x8000, 0x8000, 0x8000}));
  }
  const auto ramp = yyPaletteTable(32);
  EXPECT_GT(ramp[4][0], 0xE000);
  EXPECT_LT(ramp[4][1], 0x1100);
  EXPECT_EQ(ramp[4][1], ramp[4][2]);

  yyDefaultPalette(24, 64);
  EXPECT_TRUE(zelvy_x::state().defaultPalette.empty());
  yyDefaultPalette(8, 64);
  EXPECT_EQ(zelvy_x::state().defaultPalette.size(), 64u);
  yyDefaultPalette(8, 100);  // not a ramp: sixteen colours
  EXPECT_EQ(zelvy_x::state().defaultPalette.size(), 16u);
  yyDefaultPalette(1, 64);
  EXPECT_EQ(zelvy_x::state().defaultPalette.size(), 2u);
}

}  // namespace
