// The dialog engine's rules that need no display: units, cell codes,
// number validation, mnemonic marks, wrapping, radio groups.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "toolkit/dialog/dialog_private.h"
#include "toolkit/base/error.h"
#include "toolkit/base/zelvy_data.h"

namespace {

DialogFontMetrics metrics(float average, int height) {
  DialogFontMetrics m;
  m.averageWidth = average;
  m.charHeight = height;
  return m;
}

TEST(DialogUnits, ToPixelsRoundsHalfAwayFromZero) {
  const DialogFontMetrics m = metrics(6.0f, 14);
  int x = 0, y = 0;
  yyDialogUnitsToPixels(m, 383, 351, x, y);
  EXPECT_EQ(std::pair(x, y), std::pair(575, 614));  // 574.5 up, 614.25 down
  yyDialogUnitsToPixels(m, -3, -1, x, y);
  EXPECT_EQ(std::pair(x, y), std::pair(-5, -2));  // -4.5 away from zero, -1.75
  yyDialogUnitsToPixels(m, 0, 0, x, y);
  EXPECT_EQ(std::pair(x, y), std::pair(0, 0));
}

TEST(DialogUnits, FromPixelsInvertsToPixels) {
  const DialogFontMetrics m = metrics(5.3f, 13);
  for (int u : {0, 1, 7, 40, 383}) {
    int px = 0, py = 0, ux = 0, uy = 0;
    yyDialogUnitsToPixels(m, u, u, px, py);
    yyDialogUnitsFromPixels(m, px, py, ux, uy);
    EXPECT_NEAR(ux, u, 1) << u;
    EXPECT_NEAR(uy, u, 1) << u;
  }
}

TEST(DialogUnits, MetricsFromTheSample) {
  // 52 letters 312 pixels wide: 6.42 average; 12 high: 13 after the 1.07 margin.
  const DialogFontMetrics m = yyDialogMetricsFromSample(312, 12, 3);
  EXPECT_FLOAT_EQ(m.averageWidth, 312 * 1.07f / 52);
  // The control height is 14 units of 13/8.
  EXPECT_EQ((std::vector{m.charWidth, m.charHeight, m.controlHeight, m.defaultTabWidth}), (std::vector{6, 13, 23, 51}));
  const DialogFontMetrics tiny = yyDialogMetricsFromSample(0, 0, 0);
  EXPECT_EQ((std::vector{tiny.charWidth, tiny.charHeight, tiny.spaceWidth}), (std::vector{1, 1, 1}));
}

TEST(DialogCells, PackedCodes) {
  EXPECT_EQ(yyDialogCellCode(0, 0), 262144 | 1);
  EXPECT_EQ(yyDialogCellCode(2, 99), 3 * 262144 | 100);
  static_assert(yyDialogCellCode(0, 4) == 262149);
}

TEST(DialogNumbers, RangeAndCharacterFilter) {
  // {minimum, maximum, value, out of range}; the first has no range.
  const double ranges[][4] = {{1, -1, 1e9, 0}, {0, 24, 0, 0}, {0, 24, 24, 0},
                              {0, 24, 24.5, 1}, {3, 3, 3, 0},  {3, 3, 2.999, 1}};
  for (const auto& r : ranges) EXPECT_EQ(yyDialogNumericOutOfRange(r[0], r[1], r[2]), r[3] != 0) << r[2];

  auto ok = [](int kind, char c, char expect) {
    char k = c;
    const bool r = yyDialogStrValidNum(kind, k);
    EXPECT_EQ(k, expect);
    return r;
  };
  EXPECT_TRUE(ok(3, '7', '7'));
  EXPECT_TRUE(ok(3, '-', '-'));
  EXPECT_FALSE(ok(3, 'e', 'e'));  // no exponent in an integer
  EXPECT_TRUE(ok(3, '.', '.'));  // kept, so that the integer is refused, not changed
  EXPECT_TRUE(ok(3, ',', ','));
  EXPECT_TRUE(ok(4, 'e', 'E'));
  EXPECT_TRUE(ok(4, '.', '.'));
  EXPECT_TRUE(ok(4, ',', '.'));  // a decimal comma
  EXPECT_FALSE(ok(4, 'd', 'd'));  // D only in a double
  EXPECT_TRUE(ok(5, 'd', 'D'));
  EXPECT_FALSE(ok(5, 'x', 'x'));
  zelvy_data::data().idecimal = 1;
  zelvy_data::data().cdecimal = ',';
  EXPECT_TRUE(ok(4, ',', ','));
  EXPECT_FALSE(ok(4, '.', '.'));
  zelvy_data::data().idecimal = 0;
  zelvy_data::data().cdecimal = ' ';
}

TEST(DialogNumbers, ValidationFollowsTheValueModel) {
  TextFieldData d;
  d.kind = 3;
  d.minimum = 0;
  d.maximum = 24;
  // Never defined: may stay empty even with a range.
  EXPECT_TRUE(yyDialogValidateText(d, "", true, false));
  EXPECT_TRUE(yyDialogValidateText(d, "12", true, false));
  EXPECT_TRUE(d.valid);
  EXPECT_DOUBLE_EQ(d.value, 12);
  EXPECT_FALSE(yyDialogValidateText(d, "25", true, false));
  EXPECT_FALSE(yyDialogValidateText(d, "abc", true, false));
  EXPECT_DOUBLE_EQ(d.value, 12);
  d.defined = true;
  EXPECT_FALSE(yyDialogValidateText(d, "  ", true, false));  // once defined, not empty
  EXPECT_TRUE(yyDialogValidateText(d, "", true, true));      // unless clearing is allowed
  EXPECT_FALSE(d.valid);
  TextFieldData text;
  EXPECT_TRUE(yyDialogValidateText(text, "anything", true, false));
}

TEST(DialogNumbers, StoredValueAndUndefined) {
  TextFieldData d;
  d.kind = 4;
  double v = 0;
  EXPECT_EQ(yyDialogNumericValue(d, "", v), 1010);
  yyDialogNumericStored(d, "2.5", 2.5, "(F8.2)", false);
  EXPECT_TRUE(d.defined && d.valid);
  EXPECT_EQ(d.format, "(F8.2)");
  EXPECT_EQ(yyDialogNumericValue(d, "2.50", v), 0);
  EXPECT_DOUBLE_EQ(v, 2.5);
  // A text put with number 0 is parsed for its value.
  yyDialogNumericStored(d, "3.75", 0.0, "", false);
  EXPECT_DOUBLE_EQ(d.value, 3.75);
  EXPECT_TRUE(d.format.empty());
  // Edited text is read afresh; 3.9 typed gives 3.9, and empty is undefined.
  d.edited = true;
  EXPECT_EQ(yyDialogNumericValue(d, "3.9", v), 0);
  EXPECT_DOUBLE_EQ(v, 3.9);
  EXPECT_EQ(yyDialogNumericValue(d, "", v), 1010);
  yyDialogNumericStored(d, "", 0.0, "", false);
  EXPECT_TRUE(d.defined);
  EXPECT_FALSE(d.valid);
  yyDialogNumericStored(d, "", 0.0, "", true);
  EXPECT_FALSE(d.defined);
}

TEST(DialogTexts, MnemonicMarks) {
  char m = 0;
  EXPECT_EQ(yyDialogStrGetMnemonic("&Open", m), "Open");
  EXPECT_EQ(m, 'O');
  EXPECT_EQ(yyDialogStrGetMnemonic("Save &as &Copy", m), "Save as Copy");
  EXPECT_EQ(m, 'C');  // the last mark wins
  EXPECT_EQ(yyDialogStrGetMnemonic("Fish && Chips", m), "Fish && Chips");
  EXPECT_EQ(m, 0);
  EXPECT_EQ(yyDialogStrGetMnemonic("trailing&", m), "trailing&");
}

TEST(DialogTexts, LineConversionAndWrapping) {
  const auto width = [](std::string_view s) { return static_cast<int>(s.size()) * 5; };
  EXPECT_EQ(yyDialogStrConvert(0, false, 0, "a\rb", nullptr), "a\nb");
  EXPECT_EQ(yyDialogStrConvert(1, false, 0, "a\rb", nullptr), "ab");
  EXPECT_EQ(yyDialogStrConvert(-1, false, 0, "a\rb", nullptr), "a\rb");
  EXPECT_EQ(yyDialogStrConvert(1, true, 50, "UB-Matrix Transformation:", width), "UB-Matrix\nTransformation:");
  EXPECT_EQ(yyDialogStrConvert(1, true, 20, "Unbreakable", width), "Unbreakable");
  EXPECT_EQ(yyDialogStrConvert(1, true, 35, "one two\nthree four", width), "one two\nthree\nfour");
}

TEST(DialogFields, RadioGroups) {
  // label, radio, radio, string, radio, radio(group bit), radio
  const std::vector<int> types{1, 10, 10, 4, 10, 10, 10};
  const std::vector<std::uint32_t> styles{0, 0, 0, 0, 0, 0x20000, 0};
  std::vector<int> groups;
  const int count = yyDialogRadioGroups(types, styles, groups);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(groups[0], 0);
  EXPECT_EQ(groups[1], groups[2]);
  EXPECT_NE(groups[2], groups[4]);
  EXPECT_NE(groups[4], groups[5]);
  EXPECT_EQ(groups[5], groups[6]);
  EXPECT_EQ(groups[3], 0);
}

}  // namespace
