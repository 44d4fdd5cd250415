#include "support/eigen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace lmg = lorx_math_general;
using lmg::complex_sp;
using lmg::Matrix;

namespace {

Matrix<float> random_symmetric(int n, std::mt19937& rng) {
  std::uniform_real_distribution<float> u(-1.0f, 1.0f);
  Matrix<float> a(n, n);
  for (int j = 0; j < n; ++j)
    for (int i = j; i < n; ++i) a(i, j) = a(j, i) = u(rng);
  return a;
}

Matrix<complex_sp> random_hermitian(int n, std::mt19937& rng) {
  std::uniform_real_distribution<float> u(-1.0f, 1.0f);
  Matrix<complex_sp> a(n, n);
  for (int j = 0; j < n; ++j) {
    a(j, j) = u(rng);
    for (int i = j + 1; i < n; ++i) {
      a(i, j) = complex_sp(u(rng), u(rng));
      a(j, i) = std::conj(a(i, j));
    }
  }
  return a;
}

bool falling(const std::vector<float>& v) {
  return std::is_sorted(v.begin(), v.end(), std::greater<float>());
}

TEST(EigenSymmetric, RandomMatricesGiveOrthonormalEigenvectors) {
  std::mt19937 rng(21);
  for (int n = 1; n <= 60; ++n) {
    const Matrix<float> a = random_symmetric(n, rng);
    std::vector<float> val(n, -9.0f);
    Matrix<float> vec;
    lmg::diagonalize_symm(a, n, val, &vec);
    ASSERT_FALSE(lmg::err_mathgen) << lmg::err_mathgen_mess;
    ASSERT_EQ(vec.rows(), n);
    ASSERT_EQ(vec.cols(), n);
    EXPECT_TRUE(falling(val)) << "n=" << n;
    const float tol = 2e-6f * n * 10;
    for (int k = 0; k < n; ++k) {
      for (int i = 0; i < n; ++i) {
        float av = 0;
        for (int j = 0; j < n; ++j) av += a(i, j) * vec(j, k);
        ASSERT_NEAR(av, val[k] * vec(i, k), tol) << "n=" << n << " k=" << k;
      }
      for (int l = 0; l <= k; ++l) {
        float dot = 0;
        for (int i = 0; i < n; ++i) dot += vec(i, k) * vec(i, l);
        ASSERT_NEAR(dot, k == l ? 1.0f : 0.0f, tol) << "n=" << n;
      }
    }
    // The values alone come out the same without the vectors.
    std::vector<float> alone(n);
    lmg::diagonalize_symm(a, n, alone);
    for (int k = 0; k < n; ++k) EXPECT_NEAR(alone[k], val[k], tol);
  }
}

TEST(EigenSymmetric, SmallCasesAndSortTies) {
  std::vector<float> val(3);
  Matrix<float> vec;
  lmg::diagonalize_symm(Matrix<float>::from_rows({{1, 0, 0}, {0, 3, 0}, {0, 0, 2}}), 3, val, &vec);
  EXPECT_EQ(val, (std::vector<float>{3, 2, 1}));
  EXPECT_EQ(vec, Matrix<float>::from_rows({{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}));

  val.assign(2, 0);
  lmg::diagonalize_symm(Matrix<float>::from_rows({{2, 1}, {1, 2}}), 2, val, &vec);
  EXPECT_NEAR(val[0], 3.0f, 1e-6f);
  EXPECT_NEAR(val[1], 1.0f, 1e-6f);
  EXPECT_NEAR(std::abs(vec(0, 0)), std::sqrt(0.5f), 1e-6f);
  EXPECT_NEAR(vec(0, 0), vec(1, 0), 1e-6f);
  EXPECT_NEAR(vec(0, 1), -vec(1, 1), 1e-6f);

  std::vector<float> one(1);
  lmg::diagonalize_symm(Matrix<float>::from_rows({{-4.5f}}), 1, one, &vec);
  EXPECT_EQ(one[0], -4.5f);
  EXPECT_EQ(vec, Matrix<float>::from_rows({{1}}));

  // Off-diagonal elements at or below ep_ss count as zero.
  val.assign(2, 0);
  lmg::diagonalize_symm(Matrix<float>::from_rows({{1, 1e-13f}, {1e-13f, 2}}), 2, val, &vec);
  EXPECT_EQ(val, (std::vector<float>{2, 1}));
  EXPECT_EQ(vec, Matrix<float>::from_rows({{0, 1}, {1, 0}}));

  // Equal values: a later one takes the place, and its column moves with it.
  std::vector<float> d{1, 2, 2};
  Matrix<float> v = Matrix<float>::from_rows({{1, 2, 3}, {1, 2, 3}});
  lmg::eigsrt(d, v, 3, 1);
  EXPECT_EQ(d, (std::vector<float>{2, 2, 1}));
  EXPECT_EQ(v, Matrix<float>::from_rows({{3, 2, 1}, {3, 2, 1}}));
  d = {1, 2, 2};
  lmg::eigsrt(d, v, 3, 0);
  EXPECT_EQ(v, Matrix<float>::from_rows({{3, 2, 1}, {3, 2, 1}}));
}

TEST(EigenSymmetric, OrderAboveTheMatrixIsRefused) {
  std::vector<float> val{5, 5, 5};
  Matrix<float> vec = Matrix<float>::from_rows({{7}});
  lmg::diagonalize_symm(Matrix<float>::identity(2), 3, val, &vec);
  EXPECT_TRUE(lmg::err_mathgen);
  EXPECT_EQ(lmg::err_mathgen_mess, " Diagonalize_SYMM: Error in dimension of input matrix: A(m,m) with m < n ");
  EXPECT_EQ(val, (std::vector<float>{0, 0, 0}));
  EXPECT_EQ(vec, Matrix<float>::from_rows({{7}}));
  std::vector<float> hval{5, 5, 5};
  lmg::diagonalize_herm(Matrix<complex_sp>(3, 2), 3, hval);
  EXPECT_TRUE(lmg::err_mathgen);
  EXPECT_EQ(lmg::err_mathgen_mess, " Diagonalize_HERM: Error in dimension of input matrix: A(m,m) with m < n ");
  EXPECT_EQ(hval, (std::vector<float>{0, 0, 0}));
  // A later good call clears the state.
  lmg::diagonalize_symm(Matrix<float>::identity(3), 3, val);
  EXPECT_FALSE(lmg::err_mathgen);
  EXPECT_TRUE(lmg::err_mathgen_mess.empty());
}

TEST(EigenHermitian, RandomMatricesGiveUnitEigenvectors) {
  std::mt19937 rng(22);
  for (int n = 1; n <= 30; ++n) {
    const Matrix<complex_sp> a = random_hermitian(n, rng);
    std::vector<float> val(n);
    Matrix<complex_sp> vec;
    lmg::diagonalize_herm(a, n, val, &vec);
    ASSERT_FALSE(lmg::err_mathgen) << lmg::err_mathgen_mess;
    EXPECT_TRUE(falling(val)) << "n=" << n;
    const float tol = 2e-6f * n * 20;
    for (int k = 0; k < n; ++k) {
      float norm = 0;
      for (int i = 0; i < n; ++i) {
        complex_sp av = 0;
        for (int j = 0; j < n; ++j) av += a(i, j) * vec(j, k);
        ASSERT_LE(std::abs(av - val[k] * vec(i, k)), tol) << "n=" << n << " k=" << k;
        norm += std::norm(vec(i, k));
      }
      EXPECT_NEAR(norm, 1.0f, tol);
    }
  }
}

TEST(EigenHermitian, SmallCases) {
  std::vector<float> val(2);
  Matrix<complex_sp> vec;
  const auto a = Matrix<complex_sp>::from_rows({{{2, 0}, {0, 1}}, {{0, -1}, {2, 0}}});
  lmg::diagonalize_herm(a, 2, val, &vec);
  EXPECT_NEAR(val[0], 3.0f, 1e-6f);
  EXPECT_NEAR(val[1], 1.0f, 1e-6f);
}

}  // namespace
