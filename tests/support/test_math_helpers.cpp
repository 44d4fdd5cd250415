#include "support/math_helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <tuple>
#include <vector>

namespace lmg = lorx_math_general;
using lmg::Matrix;

namespace {

// Restores the module tolerances whatever a test did to them.
class MathHelpers : public ::testing::Test {
 protected:
  void TearDown() override {
    lmg::epss = 1.0e-5f;
    lmg::ep_ss = 1.0e-12;
  }
};

TEST_F(MathHelpers, FactorialsAtTheirLimits) {
  EXPECT_EQ(lmg::factorial(0), 1);
  EXPECT_EQ(lmg::factorial(-3), 1);
  EXPECT_EQ(lmg::factorial(5), 120);
  EXPECT_EQ(lmg::factorial(12), 479001600);
  EXPECT_EQ(lmg::factorial(13), 0);
  EXPECT_EQ(lmg::factorial_dp(-1), 1.0);
  EXPECT_DOUBLE_EQ(lmg::factorial_dp(20), 2432902008176640000.0);
  EXPECT_FLOAT_EQ(lmg::factorial_sp(13), 6227020800.0f);
}

TEST_F(MathHelpers, GcdLcmAndPrimeTable) {
  for (auto [a, b, g] : {std::array{12, 18, 6}, {18, 12, 6}, {17, 5, 1}, {7, 0, 7}})
    EXPECT_EQ(lmg::pgcd(a, b), g) << a << ' ' << b;
  // Prime factors beyond the square root of the larger value are left out.
  for (auto [a, b, l] : {std::array{4, 6, 12}, {12, 18, 36}, {2, 3, 2}, {3, 5, 3}, {21, 6, 6}, {1, 7, 7}})
    EXPECT_EQ(lmg::ppcm(a, b), l) << a << ' ' << b;

  EXPECT_EQ(lmg::primes.front(), 2);
  EXPECT_EQ(lmg::primes[999], 7919);
  EXPECT_TRUE(std::is_sorted(lmg::primes.begin(), lmg::primes.end()));
  for (int p : lmg::primes)
    for (int d = 2; d * d <= p; ++d) ASSERT_NE(p % d, 0) << p;
}

TEST_F(MathHelpers, CoPrimeAndCommonFactors) {
  using V = std::vector<int>;
  // {values, limit (0: default), co-prime}; only the primes up to the first one
  // not below the limit are tried.
  const std::tuple<V, int, bool> cases[] = {
      {{2, 4, 6}, 0, false}, {{2, 3}, 0, true},  {{0, 0}, 0, false},  {{0, 1, -1}, 0, true},       {{}, 0, false},
      {{0, -14, 21}, 0, false}, {{9, 15}, 2, true}, {{9, 15}, 3, false}, {{7919 * 2, 7919}, 8000, false}};
  for (const auto& [v, limit, want] : cases)
    EXPECT_EQ(limit ? lmg::co_prime(v, limit) : lmg::co_prime(v), want) << ::testing::PrintToString(v) << limit;

  // {values, reduced, factor}; from the last prime of the table on, nothing is tried.
  const std::tuple<V, V, int> vectors[] = {{{2, 4, 6}, {1, 2, 3}, 2}, {{24, -36, 0}, {2, -3, 0}, 12},
                                           {{0, 0}, {0, 0}, 1},       {{7, 7}, {1, 1}, 7},
                                           {{7919, 0}, {7919, 0}, 1}};
  for (const auto& [v, want, want_factor] : vectors) {
    V out;
    int factor = 0;
    lmg::co_prime_vector(v, out, &factor);
    EXPECT_EQ(out, want);
    EXPECT_EQ(factor, want_factor) << ::testing::PrintToString(v);
  }
}

TEST_F(MathHelpers, CoLinearVectors) {
  using V = std::vector<int>;
  const std::tuple<V, V, int, bool> cases[] = {{{0, 1, 2}, {0, 2, 4}, 3, true}, {{1, 2}, {2, 4}, 2, true},
                                               {{1, 2}, {2, 5}, 2, false},      {{1, 2}, {2, 5}, 1, true},
                                               {{0, 1}, {1, 1}, 2, false},      {{0, 0}, {0, 0}, 2, true}};
  for (const auto& [a, b, n, want] : cases)
    EXPECT_EQ(lmg::co_linear_i(a, b, n), want) << ::testing::PrintToString(a) << ::testing::PrintToString(b) << n;
  EXPECT_TRUE(lmg::co_linear_r(std::vector<float>{1.5f, -3.0f}, std::vector<float>{-0.5f, 1.0f}, 2));
  EXPECT_FALSE(lmg::co_linear_r(std::vector<float>{1.5f, -3.0f}, std::vector<float>{-0.5f, 1.1f}, 2));
  using C = lmg::complex_sp;
  EXPECT_TRUE(lmg::co_linear_c(std::vector<C>{{1, 1}, {0, 2}}, std::vector<C>{{1, 0}, {1, 1}}, 2));
  EXPECT_FALSE(lmg::co_linear_c(std::vector<C>{{1, 1}, {0, 2}}, std::vector<C>{{1, 0}, {1, -1}}, 2));
}

TEST_F(MathHelpers, TolerancesAndIntegerTests) {
  EXPECT_TRUE(lmg::zbelongn(2.000001f));
  EXPECT_FALSE(lmg::zbelongn(2.1f));
  EXPECT_TRUE(lmg::zbelongn_dp(5.0 + 1.0e-13));
  EXPECT_FALSE(lmg::zbelongn_dp(5.0 + 1.0e-9));
  EXPECT_TRUE(lmg::zbelongv(std::vector<float>{}));
  EXPECT_FALSE(lmg::zbelongv(std::vector<float>{1.0f, 0.5f}));
  EXPECT_TRUE(lmg::zbelongm(Matrix<float>::from_rows({{1, -2}, {0, 4}})));
  EXPECT_FALSE(lmg::zbelongm_dp(Matrix<double>::from_rows({{1, -2}, {0, 4.25}})));

  lmg::set_epsg_sp(0.2f);
  lmg::set_epsg_dp(1.0e-3);
  EXPECT_TRUE(lmg::zbelongn(2.1f));
  EXPECT_TRUE(lmg::zbelongn_dp(5.0005));
  lmg::set_epsg_default();
  EXPECT_FLOAT_EQ(lmg::epss_val(), 1.0e-5f);
  EXPECT_DOUBLE_EQ(lmg::ep_ss_val(), 1.0e-3);  // the double tolerance stays
}

TEST_F(MathHelpers, DegreeTrigonometry) {
  EXPECT_NEAR(lmg::sind_sp(30.0f), 0.5f, 1e-6f);
  EXPECT_NEAR(lmg::atan2d_dp(1.0, -1.0), 135.0, 1e-12);
  EXPECT_NEAR(lmg::asind_dp(0.5), 30.0, 1e-12);
  EXPECT_EQ(lmg::acosd_sp(1.5f), 0.0f);
  EXPECT_EQ(lmg::acosd_dp(-2.0), 180.0);
  EXPECT_EQ(lmg::asind_sp(2.0f), 90.0f);
  EXPECT_EQ(lmg::asind_dp(-2.0), -90.0);

  constexpr double pi = std::numbers::pi;
  auto rtan = [](double y, double x, bool degrees = false) {
    double a = 7;
    lmg::rtan_dp(y, x, a, degrees);
    return a;
  };
  EXPECT_DOUBLE_EQ(rtan(1.0, 0.0), pi / 2);
  EXPECT_DOUBLE_EQ(rtan(-1.0, -1.0), -0.75 * pi);
  EXPECT_NEAR(rtan(-1.0, -1.0, true), -135.0, 1e-12);
  EXPECT_EQ(rtan(1.0e-6, -1.0e-6), 0.0);
  EXPECT_DOUBLE_EQ(rtan(-2.0, 1.0e-6), -pi / 2);
  float f = 0;
  lmg::rtan_sp(1.0f, -2.0f, f, true);
  EXPECT_NEAR(f, 180.0f - 26.565051f, 1e-4f);
  // Away from the axes the result agrees with atan2 in every quadrant.
  for (double y : {-3.0, -0.5, 0.25, 2.0})
    for (double x : {-4.0, -0.1, 0.3, 5.0}) EXPECT_NEAR(rtan(y, x), std::atan2(y, x), 1e-14) << y << ' ' << x;
}

TEST_F(MathHelpers, SearchAndLocate) {
  EXPECT_EQ(lmg::imaxloc_i(std::vector<int>{1, 3, 3}), 2);  // the first of equals
  EXPECT_EQ(lmg::iminloc_sp(std::vector<float>{2, -1, 5, -1}), 2);
  EXPECT_EQ(lmg::imaxloc_dp(std::vector<double>{}), 1);
  EXPECT_EQ(lmg::iminloc_i(std::vector<int>{}), 1);

  const std::vector<float> rising{1, 2, 3, 4};
  const std::tuple<int, float, int> locate[] = {{4, 2.5f, 2}, {4, 0.0f, 1}, {4, 9.0f, 4},
                                                {4, 3.0f, 2}, {0, 2.5f, 0}, {3, 3.5f, 3}};
  for (auto [n, x, want] : locate) EXPECT_EQ(lmg::locate_r(rising, n, x), want) << n << ' ' << x;
  EXPECT_EQ(lmg::locate_rb(rising, 3.5f), 3);
  const std::vector<int> steps{0, 10, 20, 30, 40, 50, 60};
  for (int x = 1; x < 60; ++x) EXPECT_EQ(lmg::locate_ib(steps, x), (x - 1) / 10 + 1) << x;
  EXPECT_EQ(lmg::locate_i(steps, 3, 15), 2);

  Matrix<int> limits = Matrix<int>::from_rows({{0, -5, 1}, {10, 5, 1}});
  EXPECT_TRUE(lmg::in_limits_int(3, limits, std::vector<int>{10, -5, 1}));
  EXPECT_FALSE(lmg::in_limits_int(3, limits, std::vector<int>{10, -5, 2}));
  EXPECT_TRUE(lmg::in_limits_int(2, limits, std::vector<int>{10, -5, 2}));
  EXPECT_TRUE(lmg::in_limits_int(0, limits, std::vector<int>{}));
  Matrix<double> dl = Matrix<double>::from_rows({{0.0}, {1.0}});
  EXPECT_FALSE(lmg::in_limits_dp(1, dl, std::vector<double>{1.0001}));
}

TEST_F(MathHelpers, EqualityAndNullTests) {
  EXPECT_FALSE(lmg::equal_vector_ind(std::vector<int>{1, 2}, std::vector<int>{1, 2, 3}));
  EXPECT_TRUE(lmg::equal_vector_i(std::vector<int>{1, 2}, std::vector<int>{1, 2, 3}, 2));
  EXPECT_TRUE(lmg::equal_vector_i(std::vector<int>{1}, std::vector<int>{2}, 0));
  EXPECT_TRUE(lmg::equal_vector_rnd(std::vector<float>{1.0f, 2.0f}, std::vector<float>{1.000005f, 2.0f}));
  EXPECT_FALSE(lmg::equal_vector_r(std::vector<float>{1.0f}, std::vector<float>{1.0001f}, 1));

  auto a = Matrix<int>::from_rows({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
  auto b = Matrix<int>::from_rows({{1, 2, 0}, {4, 5, 0}, {0, 0, 0}});
  EXPECT_TRUE(lmg::equal_matrix_i(a, b, 2));
  EXPECT_FALSE(lmg::equal_matrix_i(a, b, 3));
  EXPECT_FALSE(lmg::equal_matrix_ind(a, b));
  EXPECT_TRUE(lmg::equal_matrix_ind(Matrix<int>::from_rows({{1, 2}}), a));  // over a's extents
  EXPECT_TRUE(lmg::equal_matrix_rnd(Matrix<float>::from_rows({{1.0f}}), Matrix<float>::from_rows({{1.000001f}})));

  EXPECT_TRUE(lmg::is_null_vector_r(std::vector<float>{1.0e-5f, -1.0e-5f}));
  EXPECT_FALSE(lmg::is_null_vector_r(std::vector<float>{2.0e-5f}));
  EXPECT_TRUE(lmg::is_null_vector_dp(std::vector<double>{1.0e-8}));
  EXPECT_FALSE(lmg::is_null_vector_dp(std::vector<double>{1.1e-8}));
  EXPECT_TRUE(lmg::is_diagonal_matrix_i(Matrix<int>::from_rows({{1, 0, 0}, {0, 0, 0}})));
  EXPECT_FALSE(lmg::is_diagonal_matrix_i(Matrix<int>::from_rows({{1, 0, 0}, {0, 0, 1}})));
  EXPECT_TRUE(lmg::is_diagonal_matrix_dp(Matrix<double>::from_rows({{3, 1e-9}, {0, 2}})));
  EXPECT_FALSE(lmg::is_diagonal_matrix_r(Matrix<float>::from_rows({{3, 1e-4f}, {0, 2}})));
}

TEST_F(MathHelpers, MatrixArithmetic) {
  auto a = Matrix<int>::from_rows({{1, 2, 3}, {4, 5, 6}});
  EXPECT_EQ(lmg::trace_i(a), 6);
  EXPECT_EQ(lmg::lower_triangular_i(a, 3), Matrix<int>::from_rows({{1, 0, 0}, {4, 5, 0}, {0, 0, 0}}));
  EXPECT_EQ(lmg::upper_triangular_i(a, 2), Matrix<int>::from_rows({{1, 2}, {0, 5}}));
  EXPECT_EQ(lmg::upper_triangular_r(Matrix<float>::from_rows({{1, 2}, {3, 4}}), 0).size(), 0u);

  auto m = lmg::modulo_lat(std::vector<float>{-0.25f, 1.5f, 3.0f, -9.5f});
  EXPECT_EQ(m, (std::vector<float>{0.75f, 0.5f, 0.0f, 0.5f}));

  // Hexagonal metric with a = 2, c = 5.
  auto g = Matrix<float>::from_rows({{4, -2, 0}, {-2, 4, 0}, {0, 0, 25}});
  EXPECT_FLOAT_EQ(lmg::norm_i(std::vector<int>{1, 1, 0}, g), 2.0f);
  EXPECT_FLOAT_EQ(lmg::norm_r(std::vector<float>{0, 0, 0.5f}, g), 2.5f);
  EXPECT_FLOAT_EQ(lmg::scalar_i(std::vector<int>{1, 0, 0}, std::vector<int>{0, 1, 1}, g), -2.0f);
  const float tiny = std::numeric_limits<float>::min();
  EXPECT_EQ(lmg::norm_i(std::vector<int>{1, 1}, g), tiny);
  EXPECT_EQ(lmg::scalar_r(std::vector<float>{1, 1, 1}, std::vector<float>{1, 1}, g), tiny);
}

TEST_F(MathHelpers, EuclideanNormAvoidsOverflowAndUnderflow) {
  // Only the first n count.
  const std::tuple<int, std::vector<float>, float> cases[] = {
      {2, {3, -4}, 5.0f},                        {0, {3}, 0.0f},
      {2, {1e30f, -1e30f}, 1.41421356e30f},      {3, {1e-25f, 1e-25f, 0.0f}, 1.41421356e-25f},
      {3, {3e-25f, 3.0f, 4.0f}, 5.0f},           {3, {4e25f, 1.0f, 3e25f}, 5e25f},
      {1, {3, 4}, 3.0f}};
  for (const auto& [n, v, want] : cases) EXPECT_FLOAT_EQ(lmg::euclidean_norm(n, v), want) << want;
}

TEST_F(MathHelpers, MedianBySelection) {
  float med = -1;
  std::vector<float> v;
  for (auto [values, want] : {std::pair<std::vector<float>, float>{{}, 0.0f}, {{4}, 4.0f}, {{4, 1}, 2.5f}}) {
    v = values;
    lmg::am_median(v, static_cast<int>(v.size()), med);
    EXPECT_EQ(med, want);
  }

  std::mt19937 rng(7);
  std::uniform_int_distribution<int> pick(-20, 20);  // many ties
  for (int n = 3; n <= 41; ++n)
    for (int rep = 0; rep < 5; ++rep) {
      v.resize(static_cast<std::size_t>(n));
      for (float& x : v) x = static_cast<float>(pick(rng)) * (rep == 4 ? 0.0f : 0.5f);
      std::vector<float> sorted = v;
      std::sort(sorted.begin(), sorted.end());
      const auto h = static_cast<std::size_t>(n / 2);
      const float want = n % 2 ? sorted[h] : 0.5f * (sorted[h - 1] + sorted[h]);
      lmg::am_median(v, n, med);
      ASSERT_EQ(med, want) << "n=" << n << " rep=" << rep;
      std::sort(v.begin(), v.end());
      ASSERT_EQ(v, sorted);  // reordered, nothing lost
    }
}

}  // namespace
