#include "support/fractions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <tuple>
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
  const std::pair<float, const char*> one_digit[] = {
      {1.5f, "+3/2"},     {-0.25f, "-1/4"},   {0.0f, "0"},       {2.0f, "+2"},          {-3.0f, "-3"},
      {0.5f, "+1/2"},     {2.0f / 3.0f, "+2/3"}, {0.123f, "+0.123"}, {-0.123f, "-0.1230"}, {5.0f / 24.0f, "+0.208"},
      {1.0f + 5.0E-6f, "+1"},  // within the tolerance of an integer
      {150.0f, "+**"}};        // too wide for its columns: starred, as the fixed format does
  for (auto [v, text] : one_digit) EXPECT_EQ(fraction1(v), text) << v;
  for (auto [v, text] : {std::pair{5.0f / 24.0f, "+5/24"}, {-0.123f, "-0.1230"}, {0.123f, "+0.1230"}, {-12.0f, "-12"}})
    EXPECT_EQ(fraction2(v), text) << v;
  std::string field(6, 'x');  // a text of declared width comes back padded to it
  lsu::get_fraction_1dig(0.75f, field);
  EXPECT_EQ(field, "+3/4  ");
  EXPECT_EQ(lsu::frac_trans_1dig(std::array<float, 3>{0.5f, 0.0f, -0.25f}), "(1/2,0,-1/4)");
  EXPECT_EQ(lsu::frac_trans_2dig(std::array<float, 3>{1.0f / 12.0f, 2.0f, -7.0f / 24.0f}), "(1/12,2,-7/24)");
}

TEST(Fractions, ReadingNumbersAndFractions) {
  lsu::err_string = false;
  const std::pair<const char*, float> good[] = {{"   ", 1.0f}, {"+", 1.0f},    {" - ", -1.0f},   {"1/4", 0.25f},
                                               {"-3/2", -1.5f}, {"0.75", 0.75f}, {"2.5d0", 2.5f}};
  for (auto [text, v] : good) EXPECT_EQ(fract(text), v) << text;
  EXPECT_FALSE(lsu::err_string);
  for (auto [text, bad] : {std::pair{"x", "x"}, {"1/q", "q"}}) {
    EXPECT_EQ(fract(text), 0.0f) << text;
    EXPECT_TRUE(lsu::err_string);
    EXPECT_EQ(lsu::err_string_mess, std::string(" The provided symbol is illegal: ") + bad);
  }
  EXPECT_EQ(fract("1/"), 0.0f);
}

TEST(Fractions, LinearFormsInThreeLetters) {
  lsu::init_err_string();
  using V = std::array<float, 3>;
  const std::tuple<const char*, const char*, V> cases[] = {
      {"a", "abc", {1, 0, 0}},          {"2a-b/3", "abc", {2, -1.0f / 3.0f, 0}}, {"-a/2+c", "abc", {-0.5f, 0, 1}},
      {"a+1/2", "abc", {1, 0, 0}},      {"-b+c+1/4", "abc", {0, -1, 1}},        {"3c/4", "abc", {0, 0, 0.75f}},
      {"x-y", "xyz", {1, -1, 0}},
      {"-a+b-c+1/2", "abc", {0, 0, 0}},  // four signs are more terms than the form holds: nothing is read
  };
  for (auto [text, code, v] : cases) EXPECT_EQ(linear_form(text, code), v) << text;
  EXPECT_FALSE(lsu::err_string);
  EXPECT_EQ(linear_form("a+a"), (V{1, 0, 0}));
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
  EXPECT_EQ(m, Matrix<float>::from_rows({{0.5f, -0.5f, 0}, {0, 0.5f, 1.0f / 3.0f}, {0, 0, -2}}));
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
  Matrix<float> m1;
  std::array<float, 3> o1{};
  const Matrix<float> id = Matrix<float>::identity(3), hex = matrix_of({{{1, 1, 0}, {-1, 1, 0}, {0, 0, 1}}});
  const std::tuple<const char*, const char*, const Matrix<float>*, std::array<float, 3>> settings[] = {
      {"a,b,c;1/2,0,0", "abc;", &id, {0.5f, 0, 0}},     {"1/2,0,0;a,b,c", "abc;", &id, {0.5f, 0, 0}},
      {"(A,B,C;1/2,0,0)", "abc;", &id, {0.5f, 0, 0}},   {"a,b,c;,0,0", "abc;", &id, {1, 0, 0}},  // blank reads as 1
      {"x+y,-x+y,z | 0,0,1/4", "xyz|", &hex, {0, 0, 0.25f}}};
  for (const auto& [text, code, m, o] : settings) {
    lsu::get_transf(text, m1, o1, code);
    EXPECT_FALSE(lsu::err_string) << text;
    EXPECT_EQ(m1, *m) << text;
    EXPECT_EQ(o1, o) << text;
  }
  const std::pair<const char*, const char*> faults[] = {
      {"a,b,c", " No appropriate separator (;) is present in the input string:a,b,c"},
      {"a,b,c;0,0", " Bad origin setting...: 0,0"},
      {"a,b,c;0,0,0,0", " Bad origin setting...: 0,0,0,0"},
      {"a+a,b,c;0,0,0", " Bad matrix setting...:  The provided symbol is illegal: a+a"},
      {"a,b,c;0,x,0",
       " Bad origing setting...:  The provided symbol is illegal: x :: 0,x,0"},
  };
  for (auto [text, message] : faults) {
    lsu::get_transf(text, m1, o1);
    EXPECT_TRUE(lsu::err_string) << text;
    EXPECT_EQ(lsu::err_string_mess, message);
  }
  // Messages are held to their 150 characters.
  lsu::get_transf(std::string(200, 'q'), m1, o1);
  EXPECT_EQ(lsu::err_string_mess.size(), 150u);
}
