#include "support/fractions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace lsu = lorx_string_utilities;
using lorx_math_general::Matrix;
using Rows = std::array<std::array<int, 3>, 3>;

namespace {

std::string fraction1(float v) {
  std::string t;
  lsu::get_fraction_1dig(v, t);
  return t;
}

std::string fraction2(float v) {
  std::string t;
  lsu::get_fraction_2dig(v, t);
  return t;
}

float fract(std::string_view text) {
  float v = -99.0f;
  lsu::read_fract(text, v);
  return v;
}

std::array<float, 3> linear_form(std::string_view text, std::string_view code = "abc") {
  std::array<float, 3> v{9, 9, 9};
  lsu::get_num_string(text, v, code);
  return v;
}

Matrix<float> matrix_of(const Rows& r) {
  Matrix<float> m(3, 3);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) m(i, j) = static_cast<float>(r[i][j]);
  return m;
}

std::string symbol_of(const Matrix<float>& m, std::string_view code) {
  std::string t;
  lsu::get_symb_from_mat(m, t, code);
  return t;
}

// A symmetry operation as printed in the tables: its text, the rotation part by
// hand, and the translation.
struct Operation {
  const char* text;
  const char* rotation;
  Rows r;
  std::array<float, 3> t;
};

void expect_round_trip(const Operation& op) {
  SCOPED_TRACE(op.text);
  Matrix<float> m;
  lsu::get_mat_from_symb(op.text, m, "xyz");
  EXPECT_FALSE(lsu::err_string) << lsu::err_string_mess;
  EXPECT_EQ(m, matrix_of(op.r));
  EXPECT_EQ(symbol_of(m, "xyz"), op.rotation);

  // Rotation and translation as a setting text, in both orders.
  const std::string shift = lsu::frac_trans_1dig(op.t);
  const std::string origin = shift.substr(1, shift.size() - 2);
  for (const std::string& setting :
       {std::string(op.rotation) + ";" + origin, "(" + origin + ";" + op.rotation + ")"}) {
    Matrix<float> m2;
    std::array<float, 3> t{};
    lsu::get_transf(setting, m2, t, "xyz;");
    EXPECT_FALSE(lsu::err_string) << setting << ": " << lsu::err_string_mess;
    EXPECT_EQ(m2, matrix_of(op.r)) << setting;
    EXPECT_EQ(t, op.t) << setting;
  }
}

}  // namespace

TEST(Fractions, SmallRationalsAreWrittenAsFractions) {
  EXPECT_EQ(fraction1(1.5f), "+3/2");
  EXPECT_EQ(fraction1(-0.25f), "-1/4");
  EXPECT_EQ(fraction1(0.0f), "0");
  EXPECT_EQ(fraction1(2.0f), "+2");
  EXPECT_EQ(fraction1(-3.0f), "-3");
  EXPECT_EQ(fraction1(0.5f), "+1/2");
  EXPECT_EQ(fraction1(2.0f / 3.0f), "+2/3");
  EXPECT_EQ(fraction1(0.123f), "+0.123");
  EXPECT_EQ(fraction1(-0.123f), "-0.1230");
  EXPECT_EQ(fraction1(1.0f + 5.0E-6f), "+1");  // within the tolerance of an integer
  EXPECT_EQ(fraction1(5.0f / 24.0f), "+0.208");
  EXPECT_EQ(fraction2(5.0f / 24.0f), "+5/24");
  EXPECT_EQ(fraction2(-0.123f), "-0.1230");
  EXPECT_EQ(fraction2(0.123f), "+0.1230");
  EXPECT_EQ(fraction2(-12.0f), "-12");
  // An integer too wide for its columns is starred, as the fixed format does.
  EXPECT_EQ(fraction1(150.0f), "+**");

  // A text of declared width comes back padded to it.
  std::string field(6, 'x');
  lsu::get_fraction_1dig(0.75f, field);
  EXPECT_EQ(field, "+3/4  ");

  EXPECT_EQ(lsu::frac_trans_1dig(std::array<float, 3>{0.5f, 0.0f, -0.25f}), "(1/2,0,-1/4)");
  EXPECT_EQ(lsu::frac_trans_2dig(std::array<float, 3>{1.0f / 12.0f, 2.0f, -7.0f / 24.0f}),
            "(1/12,2,-7/24)");
}

TEST(Fractions, ReadingNumbersAndFractions) {
  lsu::err_string = false;
  EXPECT_EQ(fract("   "), 1.0f);
  EXPECT_EQ(fract("+"), 1.0f);
  EXPECT_EQ(fract(" - "), -1.0f);
  EXPECT_EQ(fract("1/4"), 0.25f);
  EXPECT_EQ(fract("-3/2"), -1.5f);
  EXPECT_EQ(fract("0.75"), 0.75f);
  EXPECT_EQ(fract("2.5d0"), 2.5f);
  EXPECT_FALSE(lsu::err_string);

  EXPECT_EQ(fract("x"), 0.0f);
  EXPECT_TRUE(lsu::err_string);
  EXPECT_EQ(lsu::err_string_mess, " The provided symbol is illegal: x");
  EXPECT_EQ(fract("1/q"), 0.0f);
  EXPECT_EQ(lsu::err_string_mess, " The provided symbol is illegal: q");
  EXPECT_EQ(fract("1/"), 0.0f);
}

TEST(Fractions, LinearFormsInThreeLetters) {
  lsu::init_err_string();
  EXPECT_EQ(linear_form("a"), (std::array<float, 3>{1, 0, 0}));
  EXPECT_EQ(linear_form("2a-b/3"), (std::array<float, 3>{2, -1.0f / 3.0f, 0}));
  EXPECT_EQ(linear_form("-a/2+c"), (std::array<float, 3>{-0.5f, 0, 1}));
  EXPECT_EQ(linear_form("a+1/2"), (std::array<float, 3>{1, 0, 0}));
  EXPECT_EQ(linear_form("-b+c+1/4"), (std::array<float, 3>{0, -1, 1}));
  EXPECT_EQ(linear_form("3c/4"), (std::array<float, 3>{0, 0, 0.75f}));
  EXPECT_EQ(linear_form("x-y", "xyz"), (std::array<float, 3>{1, -1, 0}));
  EXPECT_FALSE(lsu::err_string);
  // Four signs are more terms than the form holds: nothing is read.
  EXPECT_EQ(linear_form("-a+b-c+1/2"), (std::array<float, 3>{0, 0, 0}));
  EXPECT_FALSE(lsu::err_string);

  EXPECT_EQ(linear_form("a+a"), (std::array<float, 3>{1, 0, 0}));
  EXPECT_TRUE(lsu::err_string);
  EXPECT_EQ(lsu::err_string_mess, " The provided symbol is illegal: a+a");
}

TEST(SymmetrySymbols, MatrixAndSymbolOfAChangeOfAxes) {
  Matrix<float> m;
  lsu::get_mat_from_symb("a+b,a-b,c", m, "abc");
  EXPECT_EQ(m, matrix_of({{{1, 1, 0}, {1, -1, 0}, {0, 0, 1}}}));
  EXPECT_EQ(symbol_of(m, "abc"), "a+b,a-b,c");

  // Fractional coefficients, and a row that starts with a zero.
  lsu::get_mat_from_symb("a/2-b/2,b/2+c/3,-2c", m, "abc");
  Matrix<float> expected(3, 3);
  expected(0, 0) = 0.5f;
  expected(0, 1) = -0.5f;
  expected(1, 1) = 0.5f;
  expected(1, 2) = 1.0f / 3.0f;
  expected(2, 2) = -2.0f;
  EXPECT_EQ(m, expected);
  EXPECT_EQ(symbol_of(m, "abc"), "a/2-b/2,b/2+c/3,-2c");
  EXPECT_EQ(symbol_of(matrix_of({{{2, 0, 1}, {0, 3, 0}, {-1, 0, -1}}}), "abc"), "2a+c,3b,-a-c");
  // Only the first "+-" of the whole text loses its "+".
  EXPECT_EQ(symbol_of(matrix_of({{{1, 0, -1}, {-1, 0, -1}, {0, 1, 0}}}), "abc"), "a-c,-a+-c,b");
}

TEST(SymmetrySymbols, OperatorsOfMonoclinicAndCubicGroups) {
  const Operation p21c[] = {
      {"x,y,z", "x,y,z", {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, {0, 0, 0}},
      {"-x,y+1/2,-z+1/2", "-x,y,-z", {{{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}}}, {0, 0.5f, 0.5f}},
      {"-x,-y,-z", "-x,-y,-z", {{{-1, 0, 0}, {0, -1, 0}, {0, 0, -1}}}, {0, 0, 0}},
      {"x,-y+1/2,z+1/2", "x,-y,z", {{{1, 0, 0}, {0, -1, 0}, {0, 0, 1}}}, {0, 0.5f, 0.5f}},
  };
  for (const auto& op : p21c) expect_round_trip(op);

  // P m -3 m: three-fold axes and two-fold axes that swap two axes.
  const Operation pm3m[] = {
      {"z,x,y", "z,x,y", {{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}}, {0, 0, 0}},
      {"-y,-z,x", "-y,-z,x", {{{0, -1, 0}, {0, 0, -1}, {1, 0, 0}}}, {0, 0, 0}},
      {"y,x,-z", "y,x,-z", {{{0, 1, 0}, {1, 0, 0}, {0, 0, -1}}}, {0, 0, 0}},
      {"z,-y,-x", "z,-y,-x", {{{0, 0, 1}, {0, -1, 0}, {-1, 0, 0}}}, {0, 0, 0}},
  };
  for (const auto& op : pm3m) expect_round_trip(op);
}

TEST(SymmetrySymbols, HexagonalGroupReadBackIsClosed) {
  // All 24 operations of P 63/m m c as rotation and translation texts.
  const std::array<std::array<const char*, 2>, 24> ops{{
      {"x,y,z", "0,0,0"},          {"-y,x-y,z", "0,0,0"},        {"-x+y,-x,z", "0,0,0"},
      {"-x,-y,z", "0,0,1/2"},      {"y,-x+y,z", "0,0,1/2"},      {"x-y,x,z", "0,0,1/2"},
      {"y,x,-z", "0,0,0"},         {"x-y,-y,-z", "0,0,0"},       {"-x,-x+y,-z", "0,0,0"},
      {"-y,-x,-z", "0,0,1/2"},     {"-x+y,y,-z", "0,0,1/2"},     {"x,x-y,-z", "0,0,1/2"},
      {"-x,-y,-z", "0,0,0"},       {"y,-x+y,-z", "0,0,0"},       {"x-y,x,-z", "0,0,0"},
      {"x,y,-z", "0,0,1/2"},       {"-y,x-y,-z", "0,0,1/2"},     {"-x+y,-x,-z", "0,0,1/2"},
      {"-y,-x,z", "0,0,0"},        {"-x+y,y,z", "0,0,0"},        {"x,x-y,z", "0,0,0"},
      {"y,x,z", "0,0,1/2"},    {"x-y,-y,z", "0,0,1/2"},      {"-x,-x+y,z", "0,0,1/2"},
  }};
  struct Op {
    Matrix<float> r;
    std::array<float, 3> t;
  };
  std::vector<Op> group;
  for (const auto& [rotation, shift] : ops) {
    Op op;
    lsu::get_transf(std::string(rotation) + ";" + shift, op.r, op.t, "xyz;");
    ASSERT_FALSE(lsu::err_string) << rotation << ": " << lsu::err_string_mess;
    EXPECT_EQ(symbol_of(op.r, "xyz"), rotation);
    group.push_back(op);
  }
  // Every product of two operations, translations taken modulo 1, is one of them.
  auto same = [](const Op& a, const Op& b) {
    for (int i = 0; i < 3; ++i) {
      const float d = a.t[i] - b.t[i];
      if (std::abs(d - std::round(d)) > 1.0E-5f) return false;
      for (int j = 0; j < 3; ++j)
        if (a.r(i, j) != b.r(i, j)) return false;
    }
    return true;
  };
  for (const Op& a : group) {
    for (const Op& b : group) {
      Op ab{Matrix<float>(3, 3), {}};
      for (int i = 0; i < 3; ++i) {
        ab.t[i] = a.t[i];
        for (int j = 0; j < 3; ++j) {
          ab.t[i] += a.r(i, j) * b.t[j];
          for (int k = 0; k < 3; ++k) ab.r(i, j) += a.r(i, k) * b.r(k, j);
        }
      }
      EXPECT_EQ(std::count_if(group.begin(), group.end(), [&](const Op& g) { return same(g, ab); }), 1);
    }
  }
}

TEST(SymmetrySymbols, SettingTextsAndTheirFaults) {
  Matrix<float> m1, m2, m3;
  std::array<float, 3> o1{}, o2{}, o3{};
  lsu::get_transf("a,b,c;1/2,0,0", m1, o1);
  lsu::get_transf("1/2,0,0;a,b,c", m2, o2);
  lsu::get_transf("(A,B,C;1/2,0,0)", m3, o3);
  EXPECT_FALSE(lsu::err_string);
  EXPECT_EQ(m1, Matrix<float>::identity(3));
  EXPECT_EQ(m2, m1);
  EXPECT_EQ(m3, m1);
  EXPECT_EQ(o1, (std::array<float, 3>{0.5f, 0, 0}));
  EXPECT_EQ(o2, o1);
  EXPECT_EQ(o3, o1);

  lsu::get_transf("a,b,c;,0,0", m1, o1);  // a blank piece reads as 1
  EXPECT_FALSE(lsu::err_string);
  EXPECT_EQ(o1, (std::array<float, 3>{1, 0, 0}));

  lsu::get_transf("x+y,-x+y,z | 0,0,1/4", m1, o1, "xyz|");
  EXPECT_FALSE(lsu::err_string);
  EXPECT_EQ(m1, matrix_of({{{1, 1, 0}, {-1, 1, 0}, {0, 0, 1}}}));
  EXPECT_EQ(o1, (std::array<float, 3>{0, 0, 0.25f}));

  struct Fault {
    const char* text;
    const char* message;
  };
  const Fault faults[] = {
      {"a,b,c", " No appropriate separator (;) is present in the input string:a,b,c"},
      {"a,b,c;0,0", " Bad origin setting...: 0,0"},
      {"a,b,c;0,0,0,0", " Bad origin setting...: 0,0,0,0"},
      {"a+a,b,c;0,0,0", " Bad matrix setting...:  The provided symbol is illegal: a+a"},
      {"a,b,c;0,x,0",
       " Bad origing setting...:  The provided symbol is illegal: x :: 0,x,0"},
  };
  for (const Fault& f : faults) {
    lsu::get_transf(f.text, m1, o1);
    EXPECT_TRUE(lsu::err_string) << f.text;
    EXPECT_EQ(lsu::err_string_mess, f.message);
  }
  // Messages are held to their 150 characters.
  lsu::get_transf(std::string(200, 'q'), m1, o1);
  EXPECT_EQ(lsu::err_string_mess.size(), 150u);
}
