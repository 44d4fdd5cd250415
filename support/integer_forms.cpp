#include "support/integer_forms.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

#include "support/linear_algebra.h"
#include "support/math_helpers.h"

namespace lorx_math_general {

namespace {

void exchange_rows(Matrix<int>& m, int r1, int r2) {
  if (r1 == r2) return;
  for (int j = 0; j < m.cols(); ++j) std::swap(m(r1, j), m(r2, j));
}

void negate_row(Matrix<int>& m, int r) {
  for (int j = 0; j < m.cols(); ++j) m(r, j) = -m(r, j);
}

// row k -= q * row r
void subtract_row(Matrix<int>& m, int k, int r, int q) {
  for (int j = 0; j < m.cols(); ++j) m(k, j) -= q * m(r, j);
}

void row_echelon(Matrix<int>& m, Matrix<int>* t) {
  if (t && t->rows() != m.rows()) t = nullptr;
  auto exchange = [&](int r1, int r2) {
    exchange_rows(m, r1, r2);
    if (t) exchange_rows(*t, r1, r2);
  };
  const int nr = m.rows(), nc = m.cols();
  int r = 0, c = 0;
  while (r < nr && c < nc) {
    int i = r;
    while (i < nr && m(i, c) == 0) ++i;
    if (i == nr) {
      ++c;
      continue;
    }
    exchange(r, i);
    // The smallest nonzero magnitude becomes the pivot.
    for (int k = r + 1; k < nr; ++k)
      if (m(k, c) != 0 && std::abs(m(k, c)) < std::abs(m(r, c))) exchange(k, r);
    if (m(r, c) < 0) {
      negate_row(m, r);
      if (t) negate_row(*t, r);
    }
    for (int k = r + 1; k < nr; ++k) {
      const int q = m(k, c) / m(r, c);  // truncated toward zero
      if (q != 0) {
        subtract_row(m, k, r, q);
        if (t) subtract_row(*t, k, r, q);
      }
    }
    bool cleared = true;
    for (int k = r + 1; k < nr && cleared; ++k) cleared = m(k, c) == 0;
    // Otherwise the remainders are smaller than the pivot: go again on this column.
    if (cleared) {
      ++r;
      ++c;
    }
  }
}

enum class Side { row, column };

// Dimension checks shared by the three members; false when the result is
// already decided (true), with err_mathgen telling why if it was a fault.
bool dependence_setup(int size_a, int na, int brows, int bcols, int nb, int mb, char kind, Side& side) {
  init_err_mathgen();
  const std::string name = std::string(" Linear_Dependent") + kind + ": ";
  if (nb < 0 || mb < 0 || na < 0 || brows < nb || bcols < mb || size_a < na) {
    err_mathgen = true;
    err_mathgen_mess = name + "Error in dimension of input matrix or vector";
    return false;
  }
  if (na == mb) {
    side = Side::row;
  } else if (na == nb) {
    side = Side::column;
  } else {
    err_mathgen = true;
    err_mathgen_mess = name + "input dimension of vector incompatible with matrix";
    return false;
  }
  return true;
}

template <class T>
void linear_dependent_real(std::span<const T> a, int na, const Matrix<T>& b, int nb, int mb, char kind,
                           bool& dependent) {
  dependent = true;
  Side side;
  if (!dependence_setup(static_cast<int>(a.size()), na, b.rows(), b.cols(), nb, mb, kind, side)) return;
  // More vectors than their length: always dependent.
  if (side == Side::row ? mb < nb + 1 : nb < mb + 1) return;
  const int order = std::max(nb, mb) + 1;
  Matrix<double> work(order, order);
  for (int j = 0; j < mb; ++j)
    for (int i = 0; i < nb; ++i) work(i, j) = static_cast<double>(b(i, j));
  for (int k = 0; k < na; ++k) {
    const auto x = static_cast<double>(a[static_cast<std::size_t>(k)]);
    if (side == Side::row) work(nb, k) = x;
    else work(k, mb) = x;
  }
  int r = 0;
  rank_dp(work, 1.0e-6, r);
  const int full = side == Side::row ? std::min(nb + 1, mb) : std::min(nb, mb + 1);
  if (r == full) dependent = false;
}

}  // namespace

void rowechelonformm(Matrix<int>& m) { row_echelon(m, nullptr); }
void rowechelonformt(Matrix<int>& m, Matrix<int>& t) { row_echelon(m, &t); }

void smithnormalform(const Matrix<int>& m, Matrix<int>& d, Matrix<int>& p, Matrix<int>& q) {
  p = Matrix<int>::identity(m.rows());
  q = Matrix<int>::identity(m.cols());
  d = m;
  // Row steps on d and on its transpose in turn, until d is diagonal.
  Matrix<int> work;
  for (int pass = 0;; ++pass) {
    if (pass % 2 == 0) {
      rowechelonformt(d, p);
      work = d.transposed();
    } else {
      rowechelonformt(work, q);
      d = work.transposed();
    }
    if (is_diagonal_matrix_i(d)) break;
  }
  q = q.transposed();
}

void linear_dependenti(std::span<const int> a, int na, const Matrix<int>& b, int nb, int mb, bool& dependent) {
  linear_dependent_real(a, na, b, nb, mb, 'I', dependent);
}

void linear_dependentr(std::span<const float> a, int na, const Matrix<float>& b, int nb, int mb,
                       bool& dependent) {
  linear_dependent_real(a, na, b, nb, mb, 'R', dependent);
}

void linear_dependentc(std::span<const complex_sp> a, int na, const Matrix<complex_sp>& b, int nb, int mb,
                       bool& dependent) {
  dependent = true;
  Side side;
  if (!dependence_setup(static_cast<int>(a.size()), na, b.rows(), b.cols(), nb, mb, 'C', side)) return;
  if (side == Side::row ? 2 * mb <= 2 * nb + 1 : 2 * nb <= 2 * mb + 1) return;
  // Real form [[Re, -Im], [Im, Re]] of the enlarged matrix: twice its rank.
  const int order = std::max(nb, mb) + 1;
  Matrix<complex_sp> big(order, order);
  for (int j = 0; j < mb; ++j)
    for (int i = 0; i < nb; ++i) big(i, j) = b(i, j);
  for (int k = 0; k < na; ++k) {
    if (side == Side::row) big(nb, k) = a[static_cast<std::size_t>(k)];
    else big(k, mb) = a[static_cast<std::size_t>(k)];
  }
  Matrix<double> work(2 * order, 2 * order);
  for (int j = 0; j < order; ++j)
    for (int i = 0; i < order; ++i) {
      const double re = big(i, j).real(), im = big(i, j).imag();
      work(i, j) = re;
      work(i + order, j + order) = re;
      work(i + order, j) = im;
      work(i, j + order) = -im;
    }
  int r = 0;
  rank_dp(work, 1.0e-6, r);
  const int full = side == Side::row ? std::min(2 * nb + 2, 2 * mb) : std::min(2 * mb + 2, 2 * nb);
  if (r == full) dependent = false;
}

}  // namespace lorx_math_general
