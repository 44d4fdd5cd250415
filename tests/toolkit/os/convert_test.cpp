// Text to number, the word-by-word readers and the C-layer forms.
#include <string>
#include <tuple>
#include <utility>

#include "tests/toolkit/os/os_test_support.h"
#include "toolkit/base/fixed_text.h"
#include "toolkit/base/format.h"

namespace {

using OsConvertTest = OsTest;

TEST_F(OsConvertTest, IntegerFromText) {
  const std::tuple<const char*, int, int> cases[] = {
      {"2147483647", 2147483647, 0}, {"2147483648", 0, 4},  {"3000000000", 0, 4}, {"12345678901", 0, 4},
      {"-12", -12, 0},               {" 7 8", 7, 0},        {"+5", 5, 0},         {"12a", 0, 12},
      {"1.0", 0, 12},                {"   ", 0, 10},        {"", 0, 10},          {"-2147483647", -2147483647, 0},
  };
  for (auto [text, value, err] : cases) {
    int v = 99;
    IStringToInteger(text, v);
    EXPECT_EQ(v, value) << text;
    EXPECT_EQ(error(), err) << text;
  }
}

using RealCase = std::tuple<const char*, double, int>;

TEST_F(OsConvertTest, RealFromText) {
  const RealCase cases[] = {
      {"1,5", 1.5, 0},       {"1.2.3", 0, 11},      {"1E39", 0, 4},        {"1E-50", 0, 0},
      {"1D3", 0, 12},        {"1.5+003", 1500, 0},  {"2.5-002", 0.025, 0}, {"-1.5e2", -150, 0},
      {" 2.5 7", 2.5, 0},    {"3.5E38", 0, 4},      {"1E2.5", 0, 12},      {"0E99", 0, 0},
      {"", 0, 10},           {"1x", 0, 12},         {"+.5", 0.5, 0},       {"1E+38", 1e38, 0},
  };
  for (auto [text, value, err] : cases) {
    float v = 99;
    IStringToReal(text, v);
    EXPECT_EQ(v, static_cast<float>(value)) << text;
    EXPECT_EQ(error(), err) << text;
  }
}

TEST_F(OsConvertTest, DoubleFromText) {
  const RealCase cases[] = {
      {"1D3", 1000, 0},          {"1.5d-1", 0.15, 0},     {"0.1", 0.1, 0},          {"123.456", 123.456, 0},
      {"1.7E308", 1.7e308, 0},   {"1.8E308", 0, 4},       {"1E309", 0, 4},          {"1E-400", 0, 0},
      {"-2.5E-300", -2.5e-300, 0}, {"1E39", 1e39, 0},
  };
  for (auto [text, value, err] : cases) {
    double v = 99;
    istringtodouble(text, v);
    EXPECT_EQ(v, value) << text;  // correctly rounded: exactly the nearest double
    EXPECT_EQ(error(), err) << text;
  }
  // An integer part longer than the limit, without exponent.
  double v = 1;
  istringtodouble(std::string(309, '9'), v);
  EXPECT_EQ(v, 0);
  EXPECT_EQ(error(), 4);
}

TEST_F(OsConvertTest, DecimalCharacterIsAcceptedWhenSet) {
  float v = 0;
  IStringToReal("1;25", v);
  EXPECT_EQ(error(), 12);
  zelvy_data::data().idecimal = 1;
  zelvy_data::data().cdecimal = ';';
  IStringToReal("1;25", v);
  EXPECT_EQ(v, 1.25f);
  EXPECT_EQ(error(), 0);
}

TEST_F(OsConvertTest, NextWordReadsAndBlanksOneWordAtATime) {
  std::string text = "  12 -3  x";
  auto next_int = [&] {
    int v = 99;
    INextInteger(text, v);
    return std::pair{v, error()};
  };
  EXPECT_EQ(next_int(), std::pair(12, 0));
  EXPECT_EQ(text, "     -3  x");
  EXPECT_EQ(next_int(), std::pair(-3, 0));
  EXPECT_EQ(next_int(), std::pair(0, 12));
  EXPECT_TRUE(is_blank(text));
  EXPECT_EQ(next_int().second, 10);

  std::string reals = "1.5 2,5";
  auto next_real = [&] {
    float r = 99;
    INextReal(reals, r);
    return std::pair{r, error()};
  };
  EXPECT_EQ(next_real(), std::pair(1.5f, 0));
  EXPECT_EQ(next_real(), std::pair(2.5f, 0));
  EXPECT_EQ(next_real(), std::pair(0.0f, 10));
}

// Number to C text: the text arrives with `width` characters (0: unbounded).
template <class T, class F>
std::string to_text(F convert, T value, std::size_t width, std::string_view format = {}) {
  std::string text = padded("", width);
  convert(value, text, format);
  return text;
}

TEST_F(OsConvertTest, IntegerToCText) {
  EXPECT_EQ(trimmed(to_text(yyint2st, 42, 5)), "42");  // room for I4 and the terminator
  EXPECT_EQ(trimmed(to_text(yyint2st, -1234, 5)), "****");
  EXPECT_EQ(error(), 18);
  EXPECT_EQ(to_text(yyint2st, -2147483647, 0), "-2147483647");  // unbounded: I11
  EXPECT_EQ(error(), 0);
  EXPECT_EQ(to_text(yyint2st, 7, 12), padded("7", 12));
}

TEST_F(OsConvertTest, RealToCText) {
  EXPECT_EQ(to_text(yyrea2st, 1.5f, 0, "(F8.3)"), "1.500");
  EXPECT_EQ(to_text(yyrea2st, 1.5f, 0, ""), "1.5000");  // the default (G15.5E2), left-adjusted
  EXPECT_EQ(to_text(yydbl2st, 0.1, 0, " "), "0.100000000000000");
  zelvy_data::data().idecimal = 1;
  zelvy_data::data().cdecimal = ',';
  EXPECT_EQ(to_text(yydbl2st, -2.25, 0, "(F6.2)"), "-2,25");
  EXPECT_EQ(to_text(yyrea2st, 1.5f, 4, "(F8.3)"), "*** ");  // three characters of room
  EXPECT_EQ(error(), 18);
}

TEST_F(OsConvertTest, CTextToNumberLeavesTheErrorStateAlone) {
  zelvy_data::data().ierr = 77;
  zelvy_data::data().idbug = 2;
  // "1E20": no int has this value.
  for (auto [text, want] : {std::pair<std::string, int>{"abc", 0}, {"-12.7", -12}, {{"42\0 99", 6}, 42}, {"1E20", 0}}) {
    int i = 5;
    yyst2int(i, text);
    EXPECT_EQ(i, want) << text;
  }
  float r = 0;
  yyst2rea(r, "2.5  ");
  EXPECT_EQ(r, 2.5f);
  double d = 0;
  int valid = -1;
  yyst2dblcheck_(d, valid, "1D2");
  EXPECT_EQ(d, 100.0);
  EXPECT_EQ(valid, 1);
  yyst2dblcheck_(d, valid, "1..2");
  EXPECT_EQ(valid, 0);
  EXPECT_EQ(zelvy_data::data().ierr, 77);
  EXPECT_EQ(zelvy_data::data().idbug, 2);
  zelvy_data::data().idbug = 0;
}

TEST_F(OsConvertTest, FormNormalisesTextThroughItsNumber) {
  zelvy_data::data().ierr = 3;
  std::string text = padded(" 1.5", 20);
  float r = 0;
  yyformr(r, text, "(F8.3)");
  EXPECT_EQ(r, 1.5f);
  EXPECT_EQ(trimmed(text), "1.500");
  double d = 0;
  text = padded("2.5E1", 20);
  yyformd(d, text, "(G12.4)");
  EXPECT_EQ(d, 25.0);
  EXPECT_EQ(trimmed(text), "25.00");
  int i = 0;
  text = padded("+0012", 12);
  yyformi(i, text, "");
  EXPECT_EQ(i, 12);
  EXPECT_EQ(text, padded("12", 12));
  EXPECT_EQ(zelvy_data::data().ierr, 3);
}

}  // namespace
