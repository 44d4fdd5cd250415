#include "support/linear_algebra.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

namespace lorx_math_general {

namespace {

template <class T>
struct Limits;

template <>
struct Limits<float> {
  static constexpr float pivot = 1.0e-7f;
  static constexpr float smallest_det = 1.0e-36f;
  static constexpr float zero = std::numeric_limits<float>::min();
  static constexpr const char* suffix = "sp";
};

template <>
struct Limits<double> {
  static constexpr double pivot = 1.0e-35;
  // The single-precision value widened, so both members agree on what is singular.
  static constexpr double smallest_det = static_cast<double>(1.0e-36f);
  static constexpr double zero = std::numeric_limits<double>::min();
  static constexpr const char* suffix = "dp";
};

constexpr int svd_max_iterations = 500;

template <class T>
int order(const Matrix<T>& a) {
  return std::min(a.rows(), a.cols());
}

// Bytes of one vector register, and of the eight of them that the inner
// loops keep their running values in. The loops run over fixed counts of
// elements so that the compiler issues vector instructions for them.
constexpr std::size_t vector_bytes = 16;
constexpr std::size_t register_block_bytes = 8 * vector_bytes;

template <class T>
constexpr int strip = static_cast<int>(4 * vector_bytes / sizeof(T));

// y -= s x over len elements; the two never overlap.
template <class T>
void sub_scaled(T* __restrict y, const T* __restrict x, T s, int len) {
  int i = 0;
  for (; i + strip<T> <= len; i += strip<T>)
#pragma GCC unroll 16
    for (int q = 0; q < strip<T>; ++q) y[i + q] -= s * x[i + q];
  for (; i < len; ++i) y[i] -= s * x[i];
}

// y[i] -= u[0] x[0][i], then u[1] x[1][i], and so on, for i from start while
// a whole block of `width` fits before len; returns where it stopped.
template <int width, class T>
int sub_scaled_columns_by(T* __restrict y, std::span<const T* const> x, std::span<const T> u, int start, int len) {
  int i = start;
  for (; i + width <= len; i += width) {
    T acc[width];
#pragma GCC unroll 32
    for (int q = 0; q < width; ++q) acc[q] = y[i + q];
    for (std::size_t c = 0; c < u.size(); ++c) {
      const T s = u[c];
      const T* __restrict xc = x[c] + i;
#pragma GCC unroll 32
      for (int q = 0; q < width; ++q) acc[q] -= s * xc[q];
    }
#pragma GCC unroll 32
    for (int q = 0; q < width; ++q) y[i + q] = acc[q];
  }
  return i;
}

// The same for i from start to len: each y[i] is stored once, after all terms.
template <class T>
void sub_scaled_columns(T* __restrict y, std::span<const T* const> x, std::span<const T> u, int start, int len) {
  int i = sub_scaled_columns_by<static_cast<int>(register_block_bytes / sizeof(T))>(y, x, u, start, len);
  i = sub_scaled_columns_by<static_cast<int>(vector_bytes / sizeof(T))>(y, x, u, i, len);
  for (; i < len; ++i)
    for (std::size_t c = 0; c < u.size(); ++c) y[i] -= u[c] * x[c][i];
}

// Columns eliminated together in the LU decomposition: each later column
// takes the updates from all of them in one visit.
constexpr int lu_panel = 16;

// Right-looking elimination by panels of columns. The storage is by columns,
// so every inner loop runs down a column. Each element still takes the same
// operations in the same order as when eliminating one column at a time:
// a later column takes the panel's row exchanges first, which only moves
// rows, then the steps in order. Earlier columns of multipliers take the
// exchanges of later panels at the end.
template <class T>
void lu_decomp_t(Matrix<T>& a, T& d, bool& singular, std::vector<int>* indx) {
  const int n = order(a);
  singular = false;
  d = T(1);
  if (indx) {
    indx->resize(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) (*indx)[static_cast<std::size_t>(i)] = i + 1;
  }
  // Implicit row scaling: each row is weighed by its largest element.
  std::vector<T> vv(static_cast<std::size_t>(n), T(0));
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) vv[static_cast<std::size_t>(i)] = std::max(vv[static_cast<std::size_t>(i)], std::abs(a(i, j)));
  for (T v : vv)
    if (v <= Limits<T>::pivot) {
      singular = true;
      return;
    }
  for (T& v : vv) v = T(1) / v;

  auto column = [&a](int k) { return a.column(k).data(); };
  std::vector<int> exchanged(static_cast<std::size_t>(n));
  // The panel's steps that change a later column: its nonzero elements in
  // the panel's rows, and the columns of multipliers they go with.
  std::array<T, lu_panel> steps;
  std::array<const T*, lu_panel> multipliers;
  for (int j0 = 0; j0 < n; j0 += lu_panel) {
    const int j1 = std::min(n, j0 + lu_panel);
    for (int j = j0; j < j1; ++j) {
      T* cj = column(j);
      int imax = j;
      T big = vv[static_cast<std::size_t>(j)] * std::abs(cj[j]);
      for (int i = j + 1; i < n; ++i) {
        T t = vv[static_cast<std::size_t>(i)] * std::abs(cj[i]);
        if (t > big) {  // the first of equal candidates wins
          big = t;
          imax = i;
        }
      }
      exchanged[static_cast<std::size_t>(j)] = imax;
      if (imax != j) {
        for (int k = j0; k < j1; ++k) std::swap(column(k)[j], column(k)[imax]);
        d = -d;
        vv[static_cast<std::size_t>(imax)] = vv[static_cast<std::size_t>(j)];
      }
      if (indx) (*indx)[static_cast<std::size_t>(j)] = imax + 1;
      if (std::abs(cj[j]) <= Limits<T>::pivot) cj[j] = Limits<T>::pivot;
      const T pivot = cj[j];
      for (int i = j + 1; i < n; ++i) cj[i] /= pivot;
      for (int k = j + 1; k < j1; ++k) {
        T* ck = column(k);
        const T akj = ck[j];
        if (akj != T(0)) sub_scaled(ck + j + 1, cj + j + 1, akj, n - j - 1);
      }
    }
    for (int k = j1; k < n; ++k) {
      T* ck = column(k);
      for (int j = j0; j < j1; ++j) {
        const int i = exchanged[static_cast<std::size_t>(j)];
        if (i != j) std::swap(ck[j], ck[i]);
      }
      // The panel's rows first, then all the rows below it together.
      std::size_t count = 0;
      if (j1 - j0 == lu_panel) {
        // Held in registers: the loops have fixed bounds once unrolled.
        T head[lu_panel];
#pragma GCC unroll 16
        for (int p = 0; p < lu_panel; ++p) head[p] = ck[j0 + p];
#pragma GCC unroll 16
        for (int p = 0; p < lu_panel; ++p) {
          const T akj = head[p];
          if (akj == T(0)) continue;
          const T* cj = column(j0 + p);
#pragma GCC unroll 16
          for (int q = p + 1; q < lu_panel; ++q) head[q] -= akj * cj[j0 + q];
          steps[count] = akj;
          multipliers[count++] = cj;
        }
#pragma GCC unroll 16
        for (int p = 0; p < lu_panel; ++p) ck[j0 + p] = head[p];
      } else {
        for (int j = j0; j < j1; ++j) {
          const T akj = ck[j];
          if (akj == T(0)) continue;
          const T* cj = column(j);
          for (int i = j + 1; i < j1; ++i) ck[i] -= akj * cj[i];
          steps[count] = akj;
          multipliers[count++] = cj;
        }
      }
      sub_scaled_columns<T>(ck, std::span<const T* const>(multipliers.data(), count),
                            std::span<const T>(steps.data(), count), j1, n);
    }
  }
  // The exchanges still owed: those of later panels in each column of
  // multipliers, and all of them in the columns beyond the square block.
  for (int k = 0; k < a.cols(); ++k) {
    T* ck = column(k);
    for (int j = k < n ? (k / lu_panel + 1) * lu_panel : 0; j < n; ++j) {
      const int i = exchanged[static_cast<std::size_t>(j)];
      if (i != j) std::swap(ck[j], ck[i]);
    }
  }
}

template <class T>
void lu_backsub_t(const Matrix<T>& a, std::span<const int> indx, std::span<T> b) {
  const int n = order(a);
  if (static_cast<int>(indx.size()) < n || static_cast<int>(b.size()) < n) return;
  // Forward substitution; leading zeros of the right-hand side are skipped.
  int first = -1;
  for (int i = 0; i < n; ++i) {
    const int ll = indx[static_cast<std::size_t>(i)] - 1;
    T sum = b[static_cast<std::size_t>(ll)];
    b[static_cast<std::size_t>(ll)] = b[static_cast<std::size_t>(i)];
    if (first >= 0) {
      for (int k = first; k < i; ++k) sum -= a(i, k) * b[static_cast<std::size_t>(k)];
    } else if (sum != T(0)) {
      first = i;
    }
    b[static_cast<std::size_t>(i)] = sum;
  }
  for (int i = n - 1; i >= 0; --i) {
    T sum = b[static_cast<std::size_t>(i)];
    for (int k = i + 1; k < n; ++k) sum -= a(i, k) * b[static_cast<std::size_t>(k)];
    b[static_cast<std::size_t>(i)] = sum / a(i, i);
  }
}

// Determinant from LU factors: sign times the exponential of the summed
// logarithms, so that a large order does not overflow in the product.
template <class T>
T det_from_lu(const Matrix<T>& lu, T d) {
  T sign = d;
  T logsum = T(0);
  for (int i = 0; i < order(lu); ++i) {
    const T x = lu(i, i);
    if (x < T(0)) sign = -sign;
    logsum += std::log(std::abs(x));
  }
  return sign * std::exp(logsum);
}

template <class T>
Matrix<T> leading_block(const Matrix<T>& a, int n) {
  n = std::max(0, std::min({n, a.rows(), a.cols()}));
  Matrix<T> w(n, n);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) w(i, j) = a(i, j);
  return w;
}

template <class T>
T determinant_of(Matrix<T> w) {
  T d;
  bool singular;
  lu_decomp_t(w, d, singular, nullptr);
  return singular ? T(0) : det_from_lu(w, d);
}

// Columns of the inverse solved together, a panel of them at a time, held
// row by row so that the inner loops run along the panel's rows with their
// running values in registers. Each element still takes the operations of a
// solve by lu_backsub, in the same order, and so gets the same value.
//
// One panel of `width` columns from t0 on (those past n are padding, never
// read back). `rows` holds the factors by rows, `panel` room for n rows.
template <int width, class T>
void solve_panel(const std::vector<T>& rows, int n, int t0, T* panel) {
  const auto un = static_cast<std::size_t>(n);
  auto factor_row = [&rows, un](int i) { return rows.data() + static_cast<std::size_t>(i) * un; };
  auto panel_row = [panel](int i) { return panel + static_cast<std::size_t>(i) * width; };
  // Forward substitution with the unit lower triangle. Rows above t0 stay
  // zero. A column takes no term before its unit, as in lu_backsub; the full
  // strip may add such terms only as a finite multiplier times zero, taken
  // from zero, which leaves zero. A multiplier that is not finite takes
  // exactly the terms lu_backsub takes.
  std::fill(panel, panel_row(t0), T(0));
  for (int i = t0; i < n; ++i) {
    const T* l = factor_row(i);
    T acc[width] = {};
    const int square_end = std::min(i, t0 + width);
    for (int k = t0; k < square_end; ++k) {
      const T lik = l[k];
      const T* pk = panel_row(k);
      if (std::isfinite(lik)) {
#pragma GCC unroll 32
        for (int q = 0; q < width; ++q) acc[q] -= lik * pk[q];
      } else {
#pragma GCC unroll 32
        for (int q = 0; q < width; ++q)
          if (q <= k - t0) acc[q] -= lik * pk[q];
      }
    }
    for (int k = square_end; k < i; ++k) {
      const T lik = l[k];
      const T* pk = panel_row(k);
#pragma GCC unroll 32
      for (int q = 0; q < width; ++q) acc[q] -= lik * pk[q];
    }
    T* pi = panel_row(i);
#pragma GCC unroll 32
    for (int q = 0; q < width; ++q) pi[q] = t0 + q < i ? acc[q] : T(t0 + q == i ? 1 : 0);
  }
  // Back substitution with the upper triangle, from the last row up.
  for (int i = n - 1; i >= 0; --i) {
    const T* u = factor_row(i);
    T* pi = panel_row(i);
    T acc[width];
#pragma GCC unroll 32
    for (int q = 0; q < width; ++q) acc[q] = pi[q];
    for (int k = i + 1; k < n; ++k) {
      const T uik = u[k];
      const T* pk = panel_row(k);
#pragma GCC unroll 32
      for (int q = 0; q < width; ++q) acc[q] -= uik * pk[q];
    }
    const T uii = u[i];
#pragma GCC unroll 32
    for (int q = 0; q < width; ++q) pi[q] = acc[q] / uii;
  }
}

template <class T>
void inverse_from_lu(const Matrix<T>& lu, std::span<const int> indx, Matrix<T>& c) {
  constexpr int widest = static_cast<int>(register_block_bytes / sizeof(T));
  constexpr int narrowest = static_cast<int>(vector_bytes / sizeof(T));
  const int n = order(lu);
  const auto un = static_cast<std::size_t>(n);
  // The factors by rows: each substitution step reads one row of them.
  std::vector<T> rows(un * un);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) rows[static_cast<std::size_t>(i) * un + static_cast<std::size_t>(j)] = lu(i, j);
  // The exchanges move the unit of each column of the identity: the one
  // that lands in row t is column source[t]. Taken in that order, the forward
  // substitution of column t starts at row t.
  std::vector<int> source(un);
  for (int i = 0; i < n; ++i) source[static_cast<std::size_t>(i)] = i;
  for (int i = 0; i < n; ++i)
    std::swap(source[static_cast<std::size_t>(i)], source[static_cast<std::size_t>(indx[static_cast<std::size_t>(i)] - 1)]);

  std::vector<T> panel(un * widest);
  for (int t0 = 0; t0 < n;) {
    // The narrowest panel that takes all the columns left, up to the widest.
    const int left = n - t0;
    int width = widest;
    if (left <= narrowest)
      width = narrowest;
    else if (left <= widest / 4)
      width = widest / 4;
    else if (left <= widest / 2)
      width = widest / 2;
    switch (width) {
      case widest: solve_panel<widest>(rows, n, t0, panel.data()); break;
      case widest / 2: solve_panel<widest / 2>(rows, n, t0, panel.data()); break;
      case widest / 4: solve_panel<widest / 4>(rows, n, t0, panel.data()); break;
      default: solve_panel<narrowest>(rows, n, t0, panel.data()); break;
    }
    const int used = std::min(width, left);
    const auto stride = static_cast<std::size_t>(width);
    for (int q = 0; q < used; ++q) {
      std::span<T> col = c.column(source[static_cast<std::size_t>(t0 + q)]);
      const T* from = panel.data() + q;
      for (std::size_t i = 0; i < un; ++i) col[i] = from[i * stride];
    }
    t0 += width;
  }
}

template <class T>
void invert_t(const Matrix<T>& a, Matrix<T>& c, bool& singular, std::vector<int>* indx) {
  const int n = order(a);
  Matrix<T> w = leading_block(a, n);
  std::vector<int> perm;
  T d;
  lu_decomp_t(w, d, singular, &perm);
  if (indx) *indx = perm;
  if (singular) {
    c = std::move(w);
    return;
  }
  if (std::abs(det_from_lu(w, d)) <= Limits<T>::smallest_det) {
    singular = true;
    c = std::move(w);
    return;
  }
  c = Matrix<T>(n, n);
  inverse_from_lu<T>(w, perm, c);
}

template <class T>
T pythag_t(T a, T b) {
  const T absa = std::abs(a), absb = std::abs(b);
  if (absa > absb) {
    const T r = absb / absa;
    return absa * std::sqrt(T(1) + r * r);
  }
  if (absb >= Limits<T>::zero) {
    const T r = absa / absb;
    return absb * std::sqrt(T(1) + r * r);
  }
  return T(0);
}

template <class T>
T with_sign(T a, T b) {
  return b >= T(0) ? std::abs(a) : -std::abs(a);
}

// Householder bidiagonalisation, accumulation of both sides,
// then implicit-shift QR on the bidiagonal form.
template <class T>
void svdcmp_t(Matrix<T>& mat, std::span<T> wv, Matrix<T>& vm) {
  init_err_mathgen();
  const std::string name = std::string("SVDcmp_") + Limits<T>::suffix;
  const int m = mat.rows(), n = mat.cols();
  if (static_cast<int>(wv.size()) != n || vm.rows() != n || vm.cols() != n) {
    err_mathgen = true;
    err_mathgen_mess = " => Physical dimensions of arguments in " + name + " are not compatible ";
    return;
  }
  // The algorithm is written with indices from 1.
  auto a = [&mat](int i, int j) -> T& { return mat(i - 1, j - 1); };
  auto v = [&vm](int i, int j) -> T& { return vm(i - 1, j - 1); };
  auto w = [&wv](int i) -> T& { return wv[static_cast<std::size_t>(i - 1)]; };
  std::vector<T> rv1_store(static_cast<std::size_t>(n) + 1, T(0));
  auto rv1 = [&rv1_store](int i) -> T& { return rv1_store[static_cast<std::size_t>(i)]; };
  const T zero = Limits<T>::zero;

  T g = 0, scale = 0, anorm = 0, s, f, h, c, x, y, z;
  int l = 1, nm = 0;
  for (int i = 1; i <= n; ++i) {
    l = i + 1;
    rv1(i) = scale * g;
    g = s = scale = 0;
    if (i <= m) {
      for (int k = i; k <= m; ++k) scale += std::abs(a(k, i));
      if (scale > zero) {
        for (int k = i; k <= m; ++k) {
          a(k, i) /= scale;
          s += a(k, i) * a(k, i);
        }
        f = a(i, i);
        g = -with_sign(std::sqrt(s), f);
        h = f * g - s;
        a(i, i) = f - g;
        for (int j = l; j <= n; ++j) {
          s = 0;
          for (int k = i; k <= m; ++k) s += a(k, i) * a(k, j);
          f = s / h;
          for (int k = i; k <= m; ++k) a(k, j) += f * a(k, i);
        }
        for (int k = i; k <= m; ++k) a(k, i) *= scale;
      }
    }
    w(i) = scale * g;
    g = s = scale = 0;
    if (i <= m && i != n) {
      for (int k = l; k <= n; ++k) scale += std::abs(a(i, k));
      if (scale > zero) {
        for (int k = l; k <= n; ++k) {
          a(i, k) /= scale;
          s += a(i, k) * a(i, k);
        }
        f = a(i, l);
        g = -with_sign(std::sqrt(s), f);
        h = f * g - s;
        a(i, l) = f - g;
        for (int k = l; k <= n; ++k) rv1(k) = a(i, k) / h;
        for (int j = l; j <= m; ++j) {
          s = 0;
          for (int k = l; k <= n; ++k) s += a(j, k) * a(i, k);
          for (int k = l; k <= n; ++k) a(j, k) += s * rv1(k);
        }
        for (int k = l; k <= n; ++k) a(i, k) *= scale;
      }
    }
    anorm = std::max(anorm, std::abs(w(i)) + std::abs(rv1(i)));
  }

  // Right-hand transformations.
  for (int i = n; i >= 1; --i) {
    if (i < n) {
      if (g != T(0)) {
        // Double division avoids a possible underflow.
        for (int j = l; j <= n; ++j) v(j, i) = (a(i, j) / a(i, l)) / g;
        for (int j = l; j <= n; ++j) {
          s = 0;
          for (int k = l; k <= n; ++k) s += a(i, k) * v(k, j);
          for (int k = l; k <= n; ++k) v(k, j) += s * v(k, i);
        }
      }
      for (int j = l; j <= n; ++j) v(i, j) = v(j, i) = 0;
    }
    v(i, i) = 1;
    g = rv1(i);
    l = i;
  }

  // Left-hand transformations.
  for (int i = std::min(m, n); i >= 1; --i) {
    l = i + 1;
    g = w(i);
    for (int j = l; j <= n; ++j) a(i, j) = 0;
    if (g != T(0)) {
      g = T(1) / g;
      for (int j = l; j <= n; ++j) {
        s = 0;
        for (int k = l; k <= m; ++k) s += a(k, i) * a(k, j);
        f = (s / a(i, i)) * g;
        for (int k = i; k <= m; ++k) a(k, j) += f * a(k, i);
      }
      for (int j = i; j <= m; ++j) a(j, i) *= g;
    } else {
      for (int j = i; j <= m; ++j) a(j, i) = 0;
    }
    a(i, i) += T(1);
  }

  // Diagonalisation of the bidiagonal form.
  for (int k = n; k >= 1; --k) {
    for (int its = 1;; ++its) {
      bool cancel = true;
      for (l = k; l >= 1; --l) {
        nm = l - 1;
        // rv1(1) is always zero; the explicit stop also holds for NaN data.
        if (l == 1 || std::abs(rv1(l)) + anorm == anorm) {
          cancel = false;
          break;
        }
        if (std::abs(w(nm)) + anorm == anorm) break;
      }
      if (cancel) {
        c = 0;
        s = 1;
        for (int i = l; i <= k; ++i) {
          f = s * rv1(i);
          rv1(i) = c * rv1(i);
          if (std::abs(f) + anorm == anorm) break;
          g = w(i);
          h = pythag_t(f, g);
          w(i) = h;
          h = T(1) / h;
          c = g * h;
          s = -f * h;
          for (int j = 1; j <= m; ++j) {
            y = a(j, nm);
            z = a(j, i);
            a(j, nm) = y * c + z * s;
            a(j, i) = z * c - y * s;
          }
        }
      }
      z = w(k);
      if (l == k) {
        if (z < T(0)) {
          w(k) = -z;
          for (int j = 1; j <= n; ++j) v(j, k) = -v(j, k);
        }
        break;
      }
      if (its == svd_max_iterations) {
        err_mathgen = true;
        err_mathgen_mess = " => " + name + ": convergence not reached ! ";
        return;
      }
      // Shift from the bottom 2 by 2 minor.
      x = w(l);
      nm = k - 1;
      y = w(nm);
      g = rv1(nm);
      h = rv1(k);
      f = ((y - z) * (y + z) + (g - h) * (g + h)) / (T(2) * h * y);
      g = pythag_t(f, T(1));
      f = ((x - z) * (x + z) + h * ((y / (f + with_sign(g, f))) - h)) / x;
      c = s = 1;
      for (int j = l; j <= nm; ++j) {
        const int i = j + 1;
        g = rv1(i);
        y = w(i);
        h = s * g;
        g = c * g;
        z = pythag_t(f, h);
        rv1(j) = z;
        c = f / z;
        s = h / z;
        f = x * c + g * s;
        g = g * c - x * s;
        h = y * s;
        y *= c;
        for (int jj = 1; jj <= n; ++jj) {
          x = v(jj, j);
          z = v(jj, i);
          v(jj, j) = x * c + z * s;
          v(jj, i) = z * c - x * s;
        }
        z = pythag_t(f, h);
        w(j) = z;
        if (z != T(0)) {  // otherwise the rotation is arbitrary
          z = T(1) / z;
          c = f * z;
          s = h * z;
        }
        f = c * g + s * y;
        x = c * y - s * g;
        for (int jj = 1; jj <= m; ++jj) {
          y = a(jj, j);
          z = a(jj, i);
          a(jj, j) = y * c + z * s;
          a(jj, i) = z * c - y * s;
        }
      }
      rv1(l) = 0;
      rv1(k) = f;
      w(k) = x;
    }
  }
}

template <class T>
void rank_t(const Matrix<T>& a, T tol, int& rank) {
  Matrix<T> u = a;
  const int n = a.cols();
  std::vector<T> w(static_cast<std::size_t>(n));
  Matrix<T> v(n, n);
  svdcmp_t<T>(u, w, v);
  rank = 0;
  if (err_mathgen) return;
  for (T x : w)
    if (x > tol) ++rank;
}

template <class T>
Matrix<T> outerprod_t(std::span<const T> a, std::span<const T> b) {
  Matrix<T> r(static_cast<int>(a.size()), static_cast<int>(b.size()));
  for (int j = 0; j < r.cols(); ++j)
    for (int i = 0; i < r.rows(); ++i) r(i, j) = a[static_cast<std::size_t>(i)] * b[static_cast<std::size_t>(j)];
  return r;
}

}  // namespace

void lu_decomp_sp(Matrix<float>& a, float& d, bool& singular, std::vector<int>* indx) {
  lu_decomp_t(a, d, singular, indx);
}
void lu_decomp_dp(Matrix<double>& a, double& d, bool& singular, std::vector<int>* indx) {
  lu_decomp_t(a, d, singular, indx);
}
void lu_backsub_sp(const Matrix<float>& a, std::span<const int> indx, std::span<float> b) {
  lu_backsub_t(a, indx, b);
}
void lu_backsub_dp(const Matrix<double>& a, std::span<const int> indx, std::span<double> b) {
  lu_backsub_t(a, indx, b);
}

void determinant_sp(const Matrix<float>& a, int n, float& det) { det = determinant_of(leading_block(a, n)); }
void determinant_dp(const Matrix<double>& a, int n, double& det) { det = determinant_of(leading_block(a, n)); }

void determinant_c(const Matrix<complex_sp>& a, int n, float& det) {
  // Real form [[Re, -Im], [Im, Re]]: its determinant is |det a| squared.
  n = std::max(0, std::min({n, a.rows(), a.cols()}));
  Matrix<float> w(2 * n, 2 * n);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) {
      const complex_sp z = a(i, j);
      w(i, j) = z.real();
      w(i + n, j + n) = z.real();
      w(i + n, j) = z.imag();
      w(i, j + n) = -z.imag();
    }
  det = determinant_of(std::move(w));
}

void invert_matrix_sp(const Matrix<float>& a, Matrix<float>& c, bool& singular, std::vector<int>* indx) {
  invert_t(a, c, singular, indx);
}
void invert_matrix_dp(const Matrix<double>& a, Matrix<double>& c, bool& singular, std::vector<int>* indx) {
  invert_t(a, c, singular, indx);
}

void matinv(Matrix<float>& a, int n) {
  n = std::max(0, std::min({n, a.rows(), a.cols()}));
  std::vector<int> prow(static_cast<std::size_t>(n)), pcol(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    // Column by column; a later element of equal magnitude takes over.
    int pi = k, pj = k;
    float big = -1.0f;
    for (int j = k; j < n; ++j)
      for (int i = k; i < n; ++i)
        if (std::abs(a(i, j)) >= big) {
          big = std::abs(a(i, j));
          pi = i;
          pj = j;
        }
    prow[static_cast<std::size_t>(k)] = pi;
    pcol[static_cast<std::size_t>(k)] = pj;
    const float pivot = a(pi, pj);
    if (pi != k)
      for (int j = 0; j < n; ++j) {
        const float hold = -a(k, j);
        a(k, j) = a(pi, j);
        a(pi, j) = hold;
      }
    if (pj != k)
      for (int i = 0; i < n; ++i) {
        const float hold = -a(i, k);
        a(i, k) = a(i, pj);
        a(i, pj) = hold;
      }
    for (int i = 0; i < n; ++i)
      if (i != k) a(i, k) /= -pivot;
    for (int j = 0; j < n; ++j) {
      if (j == k) continue;
      const float akj = a(k, j);
      for (int i = 0; i < n; ++i)
        if (i != k) a(i, j) += a(i, k) * akj;
    }
    for (int j = 0; j < n; ++j)
      if (j != k) a(k, j) /= pivot;
    a(k, k) = 1.0f / pivot;
  }
  // Undo the exchanges in reverse order: a row exchange becomes a column
  // exchange of the inverse and the other way round.
  for (int k = n - 1; k >= 0; --k) {
    const int i = prow[static_cast<std::size_t>(k)];
    if (i > k)
      for (int j = 0; j < n; ++j) {
        const float hold = a(j, k);
        a(j, k) = -a(j, i);
        a(j, i) = hold;
      }
    const int j = pcol[static_cast<std::size_t>(k)];
    if (j > k)
      for (int c = 0; c < n; ++c) {
        const float hold = a(k, c);
        a(k, c) = -a(j, c);
        a(j, c) = hold;
      }
  }
}

void svdcmp_sp(Matrix<float>& a, std::span<float> w, Matrix<float>& v) { svdcmp_t(a, w, v); }
void svdcmp_dp(Matrix<double>& a, std::span<double> w, Matrix<double>& v) { svdcmp_t(a, w, v); }

void rank_sp(const Matrix<float>& a, float tol, int& rank) { rank_t(a, tol, rank); }
void rank_dp(const Matrix<double>& a, double tol, int& rank) { rank_t(a, tol, rank); }

float pythag_sp(float a, float b) { return pythag_t(a, b); }
double pythag_dp(double a, double b) { return pythag_t(a, b); }

Matrix<float> outerprod_sp(std::span<const float> a, std::span<const float> b) { return outerprod_t(a, b); }
Matrix<double> outerprod_dp(std::span<const double> a, std::span<const double> b) { return outerprod_t(a, b); }

}  // namespace lorx_math_general
