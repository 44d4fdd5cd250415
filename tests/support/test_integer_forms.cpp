#include "support/integer_forms.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <type_traits>
#include <vector>

#include "support/math_helpers.h"

namespace lmg = lorx_math_general;
using lmg::complex_sp;
using lmg::Matrix;

namespace {

// In 64 bits: unimodular transforms grow large elements quickly.
template <class A, class B>
Matrix<std::int64_t> product(const Matrix<A>& a, const Matrix<B>& b) {
  Matrix<std::int64_t> c(a.rows(), b.cols());
  for (int j = 0; j < b.cols(); ++j)
    for (int k = 0; k < a.cols(); ++k)
      for (int i = 0; i < a.rows(); ++i) c(i, j) += std::int64_t{a(i, k)} * b(k, j);
  return c;
}

Matrix<std::int64_t> widened(const Matrix<int>& a) {
  Matrix<std::int64_t> c(a.rows(), a.cols());
  for (int j = 0; j < a.cols(); ++j)
    for (int i = 0; i < a.rows(); ++i) c(i, j) = a(i, j);
  return c;
}

// Exact determinant by fraction-free elimination; the orders tested are small.
std::int64_t exact_det(const Matrix<int>& m) {
  const int n = m.rows();
  std::vector<std::int64_t> a(static_cast<std::size_t>(n * n));
  auto at = [&](int i, int j) -> std::int64_t& { return a[static_cast<std::size_t>(i * n + j)]; };
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) at(i, j) = m(i, j);
  std::int64_t sign = 1, prev = 1;
  for (int k = 0; k < n - 1; ++k) {
    if (at(k, k) == 0) {
      int r = k + 1;
      while (r < n && at(r, k) == 0) ++r;
      if (r == n) return 0;
      for (int j = 0; j < n; ++j) std::swap(at(k, j), at(r, j));
      sign = -sign;
    }
    for (int i = k + 1; i < n; ++i)
      for (int j = k + 1; j < n; ++j) {
        const __int128 num = static_cast<__int128>(at(i, j)) * at(k, k) - static_cast<__int128>(at(i, k)) * at(k, j);
        at(i, j) = static_cast<std::int64_t>(num / prev);
      }
    prev = at(k, k);
  }
  return n == 0 ? 1 : sign * at(n - 1, n - 1);
}

bool is_row_echelon(const Matrix<int>& m) {
  int last = -1;
  bool zero_seen = false;
  for (int i = 0; i < m.rows(); ++i) {
    int lead = 0;
    while (lead < m.cols() && m(i, lead) == 0) ++lead;
    if (lead == m.cols()) {
      zero_seen = true;
      continue;
    }
    if (zero_seen || lead <= last || m(i, lead) <= 0) return false;
    last = lead;
  }
  return true;
}

Matrix<int> random_int_matrix(int m, int n, std::mt19937& rng, int range) {
  std::uniform_int_distribution<int> u(-range, range);
  Matrix<int> a(m, n);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < m; ++i) a(i, j) = u(rng);
  return a;
}

TEST(IntegerForms, EchelonTransformIsUnimodularAndReduces) {
  std::mt19937 rng(31);
  for (int rep = 0; rep < 300; ++rep) {
    const int m = 1 + rep % 6, n = 1 + (rep / 6) % 6;
    const Matrix<int> a = random_int_matrix(m, n, rng, rep % 3 == 0 ? 2 : 9);
    Matrix<int> e = a, t = Matrix<int>::identity(m);
    lmg::rowechelonformt(e, t);
    ASSERT_TRUE(is_row_echelon(e)) << m << "x" << n << " rep " << rep;
    ASSERT_EQ(product(t, a), widened(e));
    ASSERT_EQ(std::abs(exact_det(t)), 1);
    Matrix<int> alone = a;
    lmg::rowechelonformm(alone);
    ASSERT_EQ(alone, e);
  }
}

TEST(IntegerForms, EchelonEdges) {
  auto echelon = [](Matrix<int> m) {
    lmg::rowechelonformm(m);
    return m;
  };
  EXPECT_EQ(echelon(Matrix<int>::from_rows({{2, 4}, {3, 5}})), Matrix<int>::from_rows({{1, 1}, {0, 2}}));
  EXPECT_EQ(echelon(Matrix<int>(3, 2)), Matrix<int>(3, 2));
  EXPECT_EQ(echelon(Matrix<int>::from_rows({{-3, 1}})), Matrix<int>::from_rows({{3, -1}}));
  // A leading zero column is passed over with the same row.
  auto skip = Matrix<int>::from_rows({{0, 0, 5}, {0, 2, 1}});
  Matrix<int> t = Matrix<int>::identity(2);
  lmg::rowechelonformt(skip, t);
  EXPECT_EQ(skip, Matrix<int>::from_rows({{0, 2, 1}, {0, 0, 5}}));
  EXPECT_EQ(t, Matrix<int>::from_rows({{0, 1}, {1, 0}}));
}

TEST(IntegerForms, SmithFormFromUnimodularSteps) {
  std::mt19937 rng(32);
  for (int rep = 0; rep < 200; ++rep) {
    const int m = 1 + rep % 4, n = 1 + (rep / 4) % 4;
    const Matrix<int> a = random_int_matrix(m, n, rng, 5);
    Matrix<int> d, p, q;
    lmg::smithnormalform(a, d, p, q);
    ASSERT_TRUE(lmg::is_diagonal_matrix_i(d)) << m << "x" << n;
    ASSERT_EQ(product(product(p, a), q), widened(d)) << m << "x" << n;
    ASSERT_EQ(std::abs(exact_det(p)), 1);
    ASSERT_EQ(std::abs(exact_det(q)), 1);
    if (m == n) {
      ASSERT_EQ(std::abs(exact_det(a)), std::abs(exact_det(d)));
    }
  }
  // A diagonal matrix is done after one pass.
  Matrix<int> d, p, q;
  lmg::smithnormalform(Matrix<int>::from_rows({{2, 0}, {0, 3}}), d, p, q);
  EXPECT_EQ(d, Matrix<int>::from_rows({{2, 0}, {0, 3}}));
  EXPECT_EQ(p, Matrix<int>::identity(2));
  EXPECT_EQ(q, Matrix<int>::identity(2));
}

// Whether v depends on the first nb vectors (rows, or columns when nb > 1 and mb == 1) of b.
template <class T>
bool dependent(std::vector<T> v, const Matrix<T>& b, int nb, int mb) {
  bool dep = false;
  const int n = static_cast<int>(v.size());
  if constexpr (std::is_same_v<T, int>) lmg::linear_dependenti(v, n, b, nb, mb, dep);
  else if constexpr (std::is_same_v<T, float>) lmg::linear_dependentr(v, n, b, nb, mb, dep);
  else lmg::linear_dependentc(v, n, b, nb, mb, dep);
  return dep;
}

TEST(LinearDependence, RowsAndColumns) {
  const auto row = Matrix<int>::from_rows({{1, 0}}), col = Matrix<int>::from_rows({{1}, {2}});
  EXPECT_FALSE(dependent<int>({1, 1}, row, 1, 2));
  EXPECT_FALSE(lmg::err_mathgen);
  EXPECT_TRUE(dependent<int>({2, 0}, row, 1, 2));
  EXPECT_TRUE(dependent<int>({-2, -4}, col, 2, 1));  // as a new column of a 2 by 1 matrix
  EXPECT_FALSE(dependent<int>({1, 0}, col, 2, 1));
  // As many vectors as their length: dependent without a look.
  EXPECT_TRUE(dependent<int>({0, 1}, Matrix<int>::identity(2), 2, 2));
  // Only the leading block of b counts.
  const auto wide = Matrix<float>::from_rows({{1, 0, 0}, {0, 1, 0}, {9, 9, 9}});
  EXPECT_FALSE(dependent<float>({0, 0, 1}, wide, 2, 3));
  EXPECT_TRUE(dependent<float>({0.5f, -2, 0}, wide, 2, 3));
}

TEST(LinearDependence, KnownRankInRealMatrices) {
  std::mt19937 rng(33);
  std::uniform_real_distribution<float> u(-1, 1);
  for (int nb = 1; nb <= 5; ++nb) {
    const int mb = nb + 2;
    Matrix<float> b(nb, mb);
    for (int j = 0; j < mb; ++j)
      for (int i = 0; i < nb; ++i) b(i, j) = u(rng);
    std::vector<float> in_span(mb, 0.0f), outside(mb);
    for (int j = 0; j < mb; ++j) {
      for (int i = 0; i < nb; ++i) in_span[j] += (i + 1) * b(i, j);
      outside[j] = u(rng);
    }
    EXPECT_TRUE(dependent(in_span, b, nb, mb)) << nb;
    EXPECT_FALSE(dependent(outside, b, nb, mb)) << nb;
  }
}

TEST(LinearDependence, ComplexMultiplesAreDependent) {
  using C = complex_sp;
  const auto row = Matrix<C>::from_rows({{{1, 0}, {0, 0}}}), col = Matrix<C>::from_rows({{{1, 1}}, {{0, 2}}});
  EXPECT_TRUE(dependent<C>({{0, 1}, {0, 0}}, row, 1, 2));
  EXPECT_FALSE(lmg::err_mathgen);
  EXPECT_FALSE(dependent<C>({{1, 0}, {1, 0}}, row, 1, 2));
  EXPECT_TRUE(dependent<C>({{2, 0}, {2, 2}}, col, 2, 1));  // (1 - i) times
  EXPECT_FALSE(dependent<C>({{2, 0}, {1, -1}}, col, 2, 1));
}

TEST(LinearDependence, DimensionFaultsLeaveTrue) {
  const auto row = Matrix<int>::from_rows({{1, 0}});
  bool dep = false;
  lmg::linear_dependenti(std::vector<int>{1, 1, 1}, 3, row, 1, 2, dep);
  EXPECT_TRUE(lmg::err_mathgen);
  EXPECT_TRUE(dep);
  EXPECT_EQ(lmg::err_mathgen_mess, " Linear_DependentI: input dimension of vector incompatible with matrix");
  dep = false;
  lmg::linear_dependentr(std::vector<float>{1, 1}, 2, Matrix<float>::from_rows({{1, 0}}), 2, 2, dep);
  EXPECT_TRUE(lmg::err_mathgen);
  EXPECT_TRUE(dep);
  EXPECT_EQ(lmg::err_mathgen_mess, " Linear_DependentR: Error in dimension of input matrix or vector");
  dep = false;
  lmg::linear_dependentc(std::vector<complex_sp>{{1, 0}}, 2, Matrix<complex_sp>(1, 2), 1, 2, dep);
  EXPECT_TRUE(dep);
  EXPECT_EQ(lmg::err_mathgen_mess, " Linear_DependentC: Error in dimension of input matrix or vector");
}

}  // namespace
