#include "support/linear_algebra.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace lmg = lorx_math_general;
using lmg::Matrix;

namespace {

// What differs between the two precisions.
template <class T>
struct Prec {
  static constexpr T pivot = sizeof(T) == 4 ? T(1.0e-7f) : T(1.0e-35);
  static constexpr T eps = sizeof(T) == 4 ? T(1.0e-5f) : T(1.0e-13);  // residual scale
  static constexpr const char* name = sizeof(T) == 4 ? "sp" : "dp";
};

template <class T>
Matrix<T> random_matrix(int m, int n, std::mt19937& rng) {
  std::uniform_real_distribution<T> u(T(-1), T(1));
  Matrix<T> a(m, n);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < m; ++i) a(i, j) = u(rng);
  return a;
}

template <class T>
Matrix<T> product(const Matrix<T>& a, const Matrix<T>& b) {
  Matrix<T> c(a.rows(), b.cols());
  for (int j = 0; j < b.cols(); ++j)
    for (int k = 0; k < a.cols(); ++k)
      for (int i = 0; i < a.rows(); ++i) c(i, j) += a(i, k) * b(k, j);
  return c;
}

template <class T>
T max_abs(const Matrix<T>& a) {
  T m = 0;
  for (int j = 0; j < a.cols(); ++j)
    for (int i = 0; i < a.rows(); ++i) m = std::max(m, std::abs(a(i, j)));
  return m;
}

template <class T>
T max_diff(const Matrix<T>& a, const Matrix<T>& b) {
  T m = 0;
  for (int j = 0; j < a.cols(); ++j)
    for (int i = 0; i < a.rows(); ++i) m = std::max(m, std::abs(a(i, j) - b(i, j)));
  return m;
}

template <class T>
class LinearAlgebra : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(LinearAlgebra, Precisions);

TYPED_TEST(LinearAlgebra, LuFactorsSolveAndInvert) {
  using T = TypeParam;
  std::mt19937 rng(11);
  for (int n = 1; n <= 60; ++n) {
    const Matrix<T> a = random_matrix<T>(n, n, rng);
    Matrix<T> lu = a;
    T d = 0;
    bool singular = true;
    std::vector<int> p;
    lmg::lu_decomp(lu, d, singular, &p);
    ASSERT_FALSE(singular);
    ASSERT_EQ(static_cast<int>(p.size()), n);
    // Apply the recorded exchanges to A, and count their parity.
    Matrix<T> pa = a;
    T parity = 1;
    for (int j = 0; j < n; ++j) {
      ASSERT_GE(p[j], j + 1);
      ASSERT_LE(p[j], n);
      if (p[j] != j + 1) {
        parity = -parity;
        for (int k = 0; k < n; ++k) std::swap(pa(j, k), pa(p[j] - 1, k));
      }
    }
    EXPECT_EQ(d, parity);
    Matrix<T> l = Matrix<T>::identity(n), u(n, n);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        (i > j ? l(i, j) : u(i, j)) = lu(i, j);
        // Scaled partial pivoting bounds the multipliers.
        ASSERT_LE(i > j ? std::abs(lu(i, j)) : T(0), T(1) * n);
      }
    EXPECT_LE(max_diff(product(l, u), pa), Prec<T>::eps * 10 * n) << "n=" << n;

    // One right-hand side through the same factors.
    std::vector<T> x(n), b(n, T(0));
    for (int i = 0; i < n; ++i) x[i] = T(i % 5) - T(2);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) b[i] += a(i, j) * x[j];
    lmg::lu_backsub(lu, p, b);
    Matrix<T> c;
    singular = true;
    lmg::invert_matrix(a, c, singular);
    ASSERT_FALSE(singular);
    const T bound = Prec<T>::eps * 10 * n * max_abs(a) * max_abs(c);
    for (int i = 0; i < n; ++i) EXPECT_NEAR(b[i], x[i], bound) << "n=" << n;
    EXPECT_LE(max_diff(product(a, c), Matrix<T>::identity(n)), bound) << "n=" << n;
    EXPECT_LE(max_diff(product(c, a), Matrix<T>::identity(n)), bound) << "n=" << n;
  }
}

TYPED_TEST(LinearAlgebra, DeterminantEdges) {
  using T = TypeParam;
  auto det_of = [](const Matrix<T>& m, int n) {
    T det = -7;
    lmg::determinant(m, n, det);
    return det;
  };
  T d = 0;
  bool singular = true;
  auto id = Matrix<T>::identity(4);
  EXPECT_EQ(det_of(id, 4), T(1));
  Matrix<T> lu = id;
  lmg::lu_decomp(lu, d, singular, nullptr);
  EXPECT_EQ(d, T(1));
  EXPECT_FALSE(singular);
  Matrix<T> c;
  lmg::invert_matrix(id, c, singular);
  EXPECT_EQ(c, id);

  // A null row is singular at once and leaves the matrix as it was.
  auto nullrow = Matrix<T>::from_rows({{1, 2, 3}, {0, 0, 0}, {4, 5, 7}});
  lu = nullrow;
  lmg::lu_decomp(lu, d, singular, nullptr);
  EXPECT_TRUE(singular);
  EXPECT_EQ(lu, nullrow);
  EXPECT_EQ(det_of(nullrow, 3), T(0));
  lmg::invert_matrix(nullrow, c, singular);
  EXPECT_TRUE(singular);
  EXPECT_EQ(c, nullrow);

  // Equal rows: the second pivot is replaced by the pivot limit.
  auto twins = Matrix<T>::from_rows({{1, 2}, {1, 2}});
  lu = twins;
  std::vector<int> p;
  lmg::lu_decomp(lu, d, singular, &p);
  EXPECT_FALSE(singular);
  EXPECT_EQ(p, (std::vector<int>{1, 2}));
  EXPECT_EQ(lu(1, 1), Prec<T>::pivot);
  EXPECT_NEAR(det_of(twins, 2) / Prec<T>::pivot, T(1), T(1e-5));
  EXPECT_NEAR(det_of(Matrix<T>::from_rows({{0, 1, 0}, {1, 0, 0}, {0, 0, 1}}), 3), T(-1), T(1e-6));
  EXPECT_NEAR(det_of(Matrix<T>::from_rows({{2, 1}, {1, 3}, {9, 9}}), 2), T(5), T(1e-5));  // leading block only

  // The logarithmic sum keeps a representable result though the running
  // product would overflow.
  const T big = sizeof(T) == 4 ? T(1e30) : T(1e200);
  const T small = sizeof(T) == 4 ? T(1e-6) : T(1e-30);
  Matrix<T> diag(7, 7);
  diag(0, 0) = big;
  diag(1, 1) = big;
  for (int i = 2; i < 7; ++i) diag(i, i) = small;
  const T det = det_of(diag, 7), want = big * (big * small * small * small * small * small);
  EXPECT_TRUE(std::isfinite(det));
  EXPECT_NEAR(det / want, T(1), T(1e-4));
}

TYPED_TEST(LinearAlgebra, NearSingularInverseFollowsTheDeterminantLimit) {
  using T = TypeParam;
  // A matrix of ones: every pivot after the first is replaced by the limit,
  // so the determinant reached is the limit to the power n - 1.
  const int reported = sizeof(T) == 4 ? 7 : 3;  // first order at which it is at most 1.0E-36
  for (int n = 2; n <= reported; ++n) {
    Matrix<T> ones(n, n, T(1)), c;
    bool singular = false;
    std::vector<int> p;
    lmg::invert_matrix(ones, c, singular, &p);
    EXPECT_EQ(singular, n == reported) << "n=" << n;
    EXPECT_EQ(static_cast<int>(p.size()), n);
    if (singular) {
      EXPECT_EQ(c(0, 0), T(1));  // the LU work matrix comes back
      EXPECT_EQ(c(n - 1, n - 1), Prec<T>::pivot);
    }
  }
}

// The inverse against the columns of the identity solved one at a time
// through the same factors: the same values, element for element. NaN counts
// as equal to NaN, so that non-finite data is held to the same result too.
template <class T>
::testing::AssertionResult same_as_column_solves(const Matrix<T>& a) {
  const int n = a.rows();
  Matrix<T> c, lu = a;
  bool singular = true;
  std::vector<int> p;
  lmg::invert_matrix(a, c, singular, &p);
  if (singular) return ::testing::AssertionFailure() << "singular at order " << n;
  T d = 0;
  lmg::lu_decomp(lu, d, singular, nullptr);
  for (int j = 0; j < n; ++j) {
    std::vector<T> e(n, T(0));
    e[j] = T(1);
    lmg::lu_backsub(lu, p, e);
    for (int i = 0; i < n; ++i)
      if (!(c(i, j) == e[i] || (std::isnan(c(i, j)) && std::isnan(e[i]))))
        return ::testing::AssertionFailure() << "order " << n << ": (" << i << "," << j << ") " << c(i, j)
                                             << " against " << e[i];
  }
  return ::testing::AssertionSuccess();
}

TYPED_TEST(LinearAlgebra, InverseOfLargeOrdersIsExactColumnSolve) {
  using T = TypeParam;
  std::mt19937 rng(16);
  // Orders on both sides of the widths the columns are solved together in.
  for (int n : {1, 2, 15, 16, 17, 31, 32, 33, 63, 64, 65, 100, 129, 200}) {
    const Matrix<T> a = random_matrix<T>(n, n, rng);
    EXPECT_TRUE(same_as_column_solves(a));
    if (n < 100) continue;  // smaller orders: LuFactorsSolveAndInvert
    Matrix<T> c;
    bool singular = true;
    lmg::invert_matrix(a, c, singular);
    const T bound = Prec<T>::eps * 10 * n * max_abs(a) * max_abs(c);
    EXPECT_LE(max_diff(product(a, c), Matrix<T>::identity(n)), bound) << "n=" << n;
    EXPECT_LE(max_diff(product(c, a), Matrix<T>::identity(n)), bound) << "n=" << n;
  }
  // A multiplier that is not finite takes the same path through both.
  Matrix<T> inf = random_matrix<T>(40, 40, rng);
  inf(39, 0) = std::numeric_limits<T>::infinity();
  EXPECT_TRUE(same_as_column_solves(inf));
}

TYPED_TEST(LinearAlgebra, InverseNeedsAndHonoursRowExchanges) {
  using T = TypeParam;
  // Zeros on the diagonal: no inverse without exchanges, an exact one with them.
  auto perm = Matrix<T>::from_rows({{0, 2, 0}, {0, 0, 3}, {4, 0, 0}});
  Matrix<T> c;
  bool singular = true;
  std::vector<int> p;
  lmg::invert_matrix(perm, c, singular, &p);
  ASSERT_FALSE(singular);
  EXPECT_EQ(p, (std::vector<int>{3, 3, 3}));
  EXPECT_EQ(c, Matrix<T>::from_rows({{0, 0, T(1) / 4}, {T(1) / 2, 0, 0}, {0, T(1) / 3, 0}}));

  // A dominant diagonal with its rows reversed and scaled over twelve
  // decades: the inverse is that of the unscrambled matrix, its columns
  // reversed and scaled back.
  std::mt19937 rng(17);
  for (int n : {7, 50, 200}) {
    Matrix<T> b = random_matrix<T>(n, n, rng);
    for (int i = 0; i < n; ++i) b(i, i) += T(n);
    Matrix<T> a(n, n);
    std::vector<T> scale(n);
    for (int i = 0; i < n; ++i) {
      scale[i] = std::pow(T(10), T(i % 13 - 6));
      for (int j = 0; j < n; ++j) a(i, j) = scale[i] * b(n - 1 - i, j);
    }
    Matrix<T> cb, ca;
    lmg::invert_matrix(b, cb, singular);
    ASSERT_FALSE(singular);
    lmg::invert_matrix(a, ca, singular, &p);
    ASSERT_FALSE(singular);
    EXPECT_NE(p[0], 1) << "n=" << n;
    const T tol = Prec<T>::eps * 10 * max_abs(cb);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) ASSERT_NEAR(ca(i, j) * scale[j], cb(i, n - 1 - j), tol) << "n=" << n;
  }
}

TYPED_TEST(LinearAlgebra, LuExchangesReachColumnsBeyondTheSquare) {
  using T = TypeParam;
  std::mt19937 rng(18);
  const Matrix<T> a = random_matrix<T>(5, 8, rng);
  Matrix<T> lu = a;
  T d = 0;
  bool singular = true;
  std::vector<int> p;
  lmg::lu_decomp(lu, d, singular, &p);
  ASSERT_FALSE(singular);
  Matrix<T> pa = a;
  for (int j = 0; j < 5; ++j)
    for (int k = 0; k < 8; ++k) std::swap(pa(j, k), pa(p[j] - 1, k));
  for (int k = 5; k < 8; ++k)
    for (int i = 0; i < 5; ++i) EXPECT_EQ(lu(i, k), pa(i, k));
}

TYPED_TEST(LinearAlgebra, SvdReproducesTheMatrix) {
  using T = TypeParam;
  std::mt19937 rng(13);
  for (int n = 1; n <= 60; n += (n < 12 ? 1 : 7)) {
    for (int m : {n, n + 3, std::max(1, n - 1)}) {
      const Matrix<T> a = random_matrix<T>(m, n, rng);
      Matrix<T> u = a, v(n, n);
      std::vector<T> w(n);
      lmg::svdcmp(u, w, v);
      ASSERT_FALSE(lmg::err_mathgen) << lmg::err_mathgen_mess;
      Matrix<T> uw = u;
      for (int j = 0; j < n; ++j) {
        EXPECT_GE(w[j], T(0));
        for (int i = 0; i < m; ++i) uw(i, j) *= w[j];
      }
      const T tol = Prec<T>::eps * 20 * (m + n);
      EXPECT_LE(max_diff(product(uw, v.transposed()), a), tol) << m << "x" << n;
      EXPECT_LE(max_diff(product(v.transposed(), v), Matrix<T>::identity(n)), tol) << m << "x" << n;
      if (m >= n) {
        EXPECT_LE(max_diff(product(u.transposed(), u), Matrix<T>::identity(n)), tol) << m << "x" << n;
      }
    }
  }
}

TYPED_TEST(LinearAlgebra, SvdRejectsIncompatibleExtents) {
  using T = TypeParam;
  auto a = Matrix<T>::from_rows({{1, 2}, {3, 4}, {5, 6}});
  const auto before = a;
  std::vector<T> w(3);
  Matrix<T> v(2, 2);
  lmg::svdcmp(a, w, v);
  EXPECT_TRUE(lmg::err_mathgen);
  EXPECT_EQ(lmg::err_mathgen_mess,
            std::string(" => Physical dimensions of arguments in SVDcmp_") + Prec<T>::name + " are not compatible ");
  EXPECT_EQ(a, before);
  w.resize(2);
  lmg::svdcmp(a, w, v);
  EXPECT_FALSE(lmg::err_mathgen);
}

TYPED_TEST(LinearAlgebra, RankOfMatricesWithKnownRank) {
  using T = TypeParam;
  std::mt19937 rng(14);
  int r = -1;
  lmg::rank(Matrix<T>(4, 3), T(1e-6), r);
  EXPECT_EQ(r, 0);
  lmg::rank(Matrix<T>::from_rows({{1, 2}, {2, 4}, {3, 6}}), T(1e-6), r);
  EXPECT_EQ(r, 1);
  for (int n = 2; n <= 30; n += 4)
    for (int k = 0; k <= n; k += 3) {
      const int m = n + 2;
      Matrix<T> a = product(random_matrix<T>(m, k, rng), random_matrix<T>(k, n, rng));
      if (k == 0) a = Matrix<T>(m, n);
      const T tol = sizeof(T) == 4 ? T(1e-3) : T(1e-9);
      lmg::rank(a, tol, r);
      EXPECT_EQ(r, k) << m << "x" << n;
    }
}

TEST(LinearAlgebraSp, MatinvWithFullPivoting) {
  std::mt19937 rng(15);
  for (int n = 1; n <= 40; ++n) {
    const Matrix<float> a = random_matrix<float>(n, n, rng);
    Matrix<float> c = a;
    lmg::matinv(c, n);
    const float bound = 1e-5f * 10 * n * max_abs(a) * max_abs(c);
    EXPECT_LE(max_diff(product(a, c), Matrix<float>::identity(n)), bound) << "n=" << n;
  }
  // Pivots away from the diagonal exercise every exchange and its undoing.
  auto perm = Matrix<float>::from_rows({{0, 2, 0}, {0, 0, 3}, {4, 0, 0}});
  Matrix<float> c = perm;
  lmg::matinv(c, 3);
  EXPECT_EQ(c, Matrix<float>::from_rows({{0, 0, 0.25f}, {0.5f, 0, 0}, {0, 1.0f / 3, 0}}));
  // Only the leading block is touched.
  auto big = Matrix<float>::from_rows({{0, 1, 7}, {1, 0, 7}, {7, 7, 7}});
  lmg::matinv(big, 2);
  EXPECT_EQ(big, Matrix<float>::from_rows({{0, 1, 7}, {1, 0, 7}, {7, 7, 7}}));
  // No failure report: a null pivot leaves values that are not finite.
  Matrix<float> zero(2, 2);
  lmg::matinv(zero, 2);
  EXPECT_FALSE(std::isfinite(zero(0, 0)));
}

TEST(LinearAlgebraComplex, DeterminantIsSquaredModulus) {
  using C = lmg::complex_sp;
  float det = 0;
  lmg::determinant_c(Matrix<C>::from_rows({{{3, 4}}}), 1, det);
  EXPECT_NEAR(det, 25.0f, 1e-4f);
  const auto a = Matrix<C>::from_rows({{{1, 2}, {0, -1}}, {{3, 0}, {2, 2}}});
  const C want = a(0, 0) * a(1, 1) - a(0, 1) * a(1, 0);
  lmg::determinant_c(a, 2, det);
  EXPECT_NEAR(det, std::norm(want), 1e-4f * std::norm(want));
}

TEST(LinearAlgebraHelpers, PythagAndOuterProduct) {
  EXPECT_EQ(lmg::pythag_sp(0.0f, 0.0f), 0.0f);
  EXPECT_EQ(lmg::pythag_dp(-4.0, 3.0), 5.0);
  EXPECT_FLOAT_EQ(lmg::pythag_sp(3e30f, 4e30f), 5e30f);
  EXPECT_FLOAT_EQ(lmg::pythag_sp(3e-30f, -4e-30f), 5e-30f);
  EXPECT_EQ(lmg::outerprod_dp(std::vector<double>{1, 2}, std::vector<double>{3, 4, 5}),
            Matrix<double>::from_rows({{3, 4, 5}, {6, 8, 10}}));
}

}  // namespace
