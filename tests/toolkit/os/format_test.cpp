// Number format descriptors, against hand-checked records.
#include <string>
#include <vector>

#include "tests/toolkit/os/os_test_support.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/format.h"

namespace {

// The record of one value, or "<bad>" when the descriptor or value is refused.
std::string fmt(std::string_view descriptor, FormatArg value) {
  std::string out;
  const FormatArg args[] = {value};
  return format_record(descriptor, args, out) ? out : "<bad>";
}

struct Row {
  std::string_view descriptor;
  FormatArg value;
  std::string_view record;
};

void expect_records(std::initializer_list<Row> rows) {
  for (const Row& r : rows) EXPECT_EQ(fmt(r.descriptor, r.value), r.record) << r.descriptor;
}

using OsFormatTest = OsTest;

TEST_F(OsFormatTest, ExamplesOfTheDescriptorTable) {
  expect_records({{"(F12.5)", 1.0, "     1.00000"}, {"(G12.4)", 1.0, "   1.000    "},
                  {"(G12.4)", 0.05, "  0.5000E-01"}, {"(G12.4)", 12345.6, "  0.1235E+05"},
                  {"(F5.1)", -1.5, " -1.5"}, {"(F5.1)", 123456.0, "*****"},
                  // Lower case and without brackets mean the same.
                  {"f12.5", 1.0f, "     1.00000"}, {" ( g12.4 ) ", 1.0f, "   1.000    "}});
}

TEST_F(OsFormatTest, FixedPointRoundsCorrectlyAndDropsZeroOnlyToFit) {
  expect_records({{"(F5.3)", 0.5, "0.500"}, {"(F4.3)", 0.5, ".500"}, {"(F5.3)", -0.5, "-.500"},
                  {"(F4.3)", -0.5, "****"}, {"(F6.3)", -0.5, "-0.500"},
                  {"(F6.2)", 2.675, "  2.67"},  // stored just below the tie; a careless formatter gives 2.68
                  {"(F13.10)", 0.1f, " 0.1000000015"},  // a float is written as the float it is
                  {"(F6.0)", 42.7, "   43."}, {"(F8.1)", 1e300, "********"}});
}

TEST_F(OsFormatTest, NegativeZeroNeverWidensTheField) {
  expect_records({{"(F5.1)", -0.0, " -0.0"}, {"(F3.1)", -0.0, "-.0"}, {"(F2.1)", -0.0, "**"},
                  {"(F5.2)", -0.001, "-0.00"}, {"(F4.2)", -0.001, "-.00"}});
}

TEST_F(OsFormatTest, GeneralSwitchesOnTheRoundedValue) {
  expect_records({{"(G12.4)", 0.0, "   0.000    "}, {"(G12.4)", 0.1, "  0.1000    "},
                  {"(G12.4)", 0.099996, "  0.1000    "},  // rounds up into fixed range
                  {"(G12.4)", 0.0999949, "  0.9999E-01"},
                  {"(G12.4)", 9.99996, "   10.00    "},  // 10.00 keeps 4 digits
                  {"(G12.4)", 9999.4, "   9999.    "},
                  {"(G12.4)", 9999.6, "  0.1000E+05"},  // 10000 needs 5 digits
                  {"(G12.4)", -123.456, "  -123.5    "}, {"(G6.4)", 1.0, "******"},
                  {"(G12.4)", 5, "           5"}});  // an integer through G is Iw
}

TEST_F(OsFormatTest, ExponentForms) {
  expect_records({{"(E12.4)", 0.0, "  0.0000E+00"}, {"(E12.4)", -1234.56, " -0.1235E+04"},
                  {"(E10.4)", -1234.56, "-.1235E+04"}, {"(E9.4)", -1234.56, "*********"},
                  {"(E12.4)", 1e-150, "  0.1000-149"},  // three exponent digits take the letter's place
                  {"(G15.5E2)", 1.0, "     1.0000    "}, {"(G15.5E2)", 1.0e-3f, "    0.10000E-02"},
                  {"(G15.5E2)", 1e100, "***************"}, {"(G12.4E3)", 1e100, " 0.1000E+101"},
                  {"(G12.4E3)", 1.0, "  1.000     "}, {"(E12.4E1)", 1e10, "************"}});
}

TEST_F(OsFormatTest, IntegerItems) {
  expect_records({{"(I4)", 42, "  42"}, {"(I4)", -123, "-123"}, {"(I4)", 12345, "****"},
                  {"(I4.3)", 7, " 007"}, {"(I5.3)", -7, " -007"}, {"(I2.2)", 5, "05"},
                  {"(I3.0)", 0, "   "}, {"(I11)", -2147483647 - 1, "-2147483648"}});
}

TEST_F(OsFormatTest, RecordsOfSeveralValues) {
  const std::vector<FormatArg> six = {1.0, 2.0, 3.0, 0.5f, -0.25f, 100.0};
  std::string out;
  ASSERT_TRUE(format_record("(3F12.6,2X,3F12.4)", six, out));
  EXPECT_EQ(out.size(), 74u);
  EXPECT_EQ(out.substr(0, 12), "    1.000000");
  EXPECT_EQ(out.substr(36, 2), "  ");
  EXPECT_EQ(out.substr(62), "    100.0000");

  const std::vector<FormatArg> mixed = {std::string_view("ab"), 5, 1.5};
  ASSERT_TRUE(format_record("(A,I3,1X,F4.1)", mixed, out));
  EXPECT_EQ(out, "ab  5  1.5");
  ASSERT_TRUE(format_record("2(I2,'|')", std::vector<FormatArg>{1, 2}, out));
  EXPECT_EQ(out, " 1| 2|");
  // Formatting stops at the first item without a value.
  ASSERT_TRUE(format_record("(2I3)", std::vector<FormatArg>{1}, out));
  EXPECT_EQ(out, "  1");
  expect_records({{"(A5)", std::string_view("abc"), "  abc"}, {"(A2)", std::string_view("abc"), "ab"}});
}

TEST_F(OsFormatTest, RefusesBadDescriptorsAndWrongValues) {
  for (std::string_view bad : {"", "()", "(F8)", "(Q4)", "(I4", "(E8.0)", "(I0)", "(0I4)", "('open)", "(I4,)"})
    EXPECT_EQ(fmt(bad, 1), "<bad>") << bad;
  expect_records({
      {"(I4)", 1.0f, "<bad>"}, {"(F8.2)", 1, "<bad>"},
      {"(F8.2)", std::string_view("x"), "<bad>"}
  });
  std::string out;
  EXPECT_FALSE(format_record("(I3)", std::vector<FormatArg>{1, 2}, out));  // values left over
}

TEST_F(OsFormatTest, NumberToTextReportsOverflowAsError18) {
  std::string text;
  IntegerToString(123456, text, "(I5)");
  EXPECT_EQ(text, "**********");
  EXPECT_EQ(error(), 18);
  text.clear();
  IntegerToString(123456, text, "(I6)");
  EXPECT_EQ(text, "123456");
  EXPECT_EQ(error(), 0);
  // A literal asterisk in the descriptor is no overflow.
  text.clear();
  IntegerToString(5, text, "('*',I3)");
  EXPECT_EQ(text, "*  5");
  EXPECT_EQ(error(), 0);
  // The text's width: padded, and a record wider than it fails.
  text = padded("", 8);
  IntegerToString(42, text, "(I4)");
  EXPECT_EQ(text, "  42    ");
  text = padded("", 4);
  IntegerToString(42, text, "(I6)");
  EXPECT_EQ(text, "****");
  EXPECT_EQ(error(), 18);
  text.clear();
  IRealToString(1.5f, text, "(F8)");
  EXPECT_EQ(text, "**********");
  EXPECT_EQ(error(), 18);
}

TEST_F(OsFormatTest, RealTextUsesTheDecimalCharacter) {
  zelvy_data::data().idecimal = 1;
  zelvy_data::data().cdecimal = ',';
  std::string text;
  IRealToString(1.5f, text, "(F6.2)");
  EXPECT_EQ(text, "  1,50");
  text.clear();
  IDoubleToString(-0.25, text, "(G12.4)");
  EXPECT_EQ(text, " -0,2500    ");
  EXPECT_EQ(error(), 0);
}

}  // namespace
