#include "support/eigen.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace lorx_math_general {

namespace {

constexpr int ql_max_iterations = 200;

int usable_order(int n, const Matrix<float>& a, std::span<float> d, std::span<float> e) {
  return std::max(0, std::min({n, a.rows(), a.cols(), static_cast<int>(d.size()), static_cast<int>(e.size())}));
}

// Indices from 1 below, as the reduction is usually written.
template <bool Vectors>
void tred(Matrix<float>& am, int n, std::span<float> dv, std::span<float> ev) {
  n = usable_order(n, am, dv, ev);
  if (n < 1) return;
  auto a = [&am](int i, int j) -> float& { return am(i - 1, j - 1); };
  auto d = [&dv](int i) -> float& { return dv[static_cast<std::size_t>(i - 1)]; };
  auto e = [&ev](int i) -> float& { return ev[static_cast<std::size_t>(i - 1)]; };

  d(1) = 0.0f;
  for (int i = n; i >= 2; --i) {
    const int l = i - 1;
    float h = 0.0f;
    if (l > 1) {
      float scale = 0.0f;
      for (int k = 1; k <= l; ++k) scale += std::abs(a(i, k));
      if (std::abs(scale) <= ep_ss) {
        e(i) = a(i, l);  // nothing to reflect
      } else {
        for (int k = 1; k <= l; ++k) {
          a(i, k) /= scale;
          h += a(i, k) * a(i, k);
        }
        float f = a(i, l);
        float g = f >= 0.0f ? -std::sqrt(h) : std::sqrt(h);
        e(i) = scale * g;
        h -= f * g;
        a(i, l) = f - g;
        f = 0.0f;
        for (int j = 1; j <= l; ++j) {
          if constexpr (Vectors) a(j, i) = a(i, j) / h;
          g = 0.0f;
          for (int k = 1; k <= j; ++k) g += a(j, k) * a(i, k);
          for (int k = j + 1; k <= l; ++k) g += a(k, j) * a(i, k);
          e(j) = g / h;
          f += e(j) * a(i, j);
        }
        const float hh = f / (h + h);
        for (int j = 1; j <= l; ++j) {
          f = a(i, j);
          e(j) = g = e(j) - hh * f;
          for (int k = 1; k <= j; ++k) a(j, k) -= (f * e(k) + g * a(i, k));
        }
      }
    } else {
      e(i) = a(i, l);
    }
    d(i) = h;
  }
  e(1) = 0.0f;
  if constexpr (!Vectors) {
    for (int i = 1; i <= n; ++i) d(i) = a(i, i);
  } else {
    for (int i = 1; i <= n; ++i) {
      const int l = i - 1;
      if (std::abs(d(i)) > ep_ss) {
        for (int j = 1; j <= l; ++j) {
          float g = 0.0f;
          for (int k = 1; k <= l; ++k) g += a(i, k) * a(k, j);
          for (int k = 1; k <= l; ++k) a(k, j) -= g * a(k, i);
        }
      }
      d(i) = a(i, i);
      a(i, i) = 1.0f;
      for (int j = 1; j <= l; ++j) a(j, i) = a(i, j) = 0.0f;
    }
  }
}

template <bool Vectors>
void tqli(std::span<float> dv, std::span<float> ev, int n, Matrix<float>& z) {
  init_err_mathgen();
  n = std::min({n, static_cast<int>(dv.size()), static_cast<int>(ev.size())});
  if (n < 1) return;
  if constexpr (Vectors) n = std::min(n, z.cols());
  auto d = [&dv](int i) -> float& { return dv[static_cast<std::size_t>(i - 1)]; };
  auto e = [&ev](int i) -> float& { return ev[static_cast<std::size_t>(i - 1)]; };
  const int zrows = z.rows();

  for (int i = 2; i <= n; ++i) e(i - 1) = e(i);
  e(n) = 0.0f;
  for (int l = 1; l <= n; ++l) {
    int iter = 0;
    for (;;) {
      int m = l;
      while (m < n && std::abs(e(m)) > ep_ss) ++m;
      if (m == l) break;
      if (iter == ql_max_iterations) {
        err_mathgen = true;
        err_mathgen_mess = Vectors ? " Too many iterations in TQLI2" : " Too many iterations in TQLI1";
        break;
      }
      ++iter;
      float g = (d(l + 1) - d(l)) / (2.0f * e(l));
      float r = std::sqrt(g * g + 1.0f);
      g = d(m) - d(l) + e(l) / (g + (g >= 0.0f ? std::abs(r) : -std::abs(r)));
      float s = 1.0f, c = 1.0f, p = 0.0f;
      bool underflow = false;
      for (int i = m - 1; i >= l; --i) {
        float f = s * e(i);
        const float b = c * e(i);
        r = std::sqrt(f * f + g * g);
        e(i + 1) = r;
        if (std::abs(r) <= ep_ss) {
          // The rotation is void: deflate and start over for this l.
          d(i + 1) -= p;
          e(m) = 0.0f;
          underflow = true;
          break;
        }
        s = f / r;
        c = g / r;
        g = d(i + 1) - p;
        r = (d(i) - g) * s + 2.0f * c * b;
        p = s * r;
        d(i + 1) = g + p;
        g = c * r - b;
        if constexpr (Vectors) {
          for (int k = 0; k < zrows; ++k) {
            f = z(k, i);
            z(k, i) = s * z(k, i - 1) + c * f;
            z(k, i - 1) = c * z(k, i - 1) - s * f;
          }
        }
      }
      if (underflow) continue;
      d(l) -= p;
      e(l) = g;
      e(m) = 0.0f;
    }
  }
}

void eigen_chain(Matrix<float>& work, int n, std::span<float> d, bool vectors) {
  std::vector<float> e(static_cast<std::size_t>(n));
  if (vectors) {
    tred2(work, n, d, e);
    tqli2(d, e, n, work);
  } else {
    tred1(work, n, d, e);
    tqli1(d, e, n, work);
  }
  if (!err_mathgen) eigsrt(d, work, n, vectors ? 1 : 0);
}

}  // namespace

void tred1(Matrix<float>& a, int n, std::span<float> d, std::span<float> e) { tred<false>(a, n, d, e); }
void tred2(Matrix<float>& a, int n, std::span<float> d, std::span<float> e) { tred<true>(a, n, d, e); }
void tqli1(std::span<float> d, std::span<float> e, int n, Matrix<float>& z) { tqli<false>(d, e, n, z); }
void tqli2(std::span<float> d, std::span<float> e, int n, Matrix<float>& z) { tqli<true>(d, e, n, z); }

void eigsrt(std::span<float> d, Matrix<float>& v, int n, int flag) {
  n = std::min(n, static_cast<int>(d.size()));
  const bool vectors = flag == 1 && v.cols() >= n;
  for (int i = 0; i < n - 1; ++i) {
    int k = i;
    float p = d[static_cast<std::size_t>(i)];
    for (int j = i + 1; j < n; ++j)
      if (d[static_cast<std::size_t>(j)] >= p) {  // a later equal value takes over
        k = j;
        p = d[static_cast<std::size_t>(j)];
      }
    if (k != i) {
      std::swap(d[static_cast<std::size_t>(k)], d[static_cast<std::size_t>(i)]);
      if (vectors) {
        std::span<float> ci = v.column(i), ck = v.column(k);
        std::swap_ranges(ci.begin(), ci.end(), ck.begin());
      }
    }
  }
}

void diagonalize_symm(const Matrix<float>& a, int n, std::span<float> e_val, Matrix<float>* e_vect) {
  std::fill(e_val.begin(), e_val.end(), 0.0f);
  init_err_mathgen();
  if (a.rows() < n || a.cols() < n || static_cast<int>(e_val.size()) < n) {
    err_mathgen = true;
    err_mathgen_mess = " Diagonalize_SYMM: Error in dimension of input matrix: A(m,m) with m < n ";
    return;
  }
  n = std::max(n, 0);
  Matrix<float> work(n, n);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) work(i, j) = a(i, j);
  eigen_chain(work, n, e_val.first(static_cast<std::size_t>(n)), e_vect != nullptr);
  if (e_vect) *e_vect = std::move(work);
}

void diagonalize_herm(const Matrix<complex_sp>& a, int n, std::span<float> e_val, Matrix<complex_sp>* e_vect) {
  std::fill(e_val.begin(), e_val.end(), 0.0f);
  init_err_mathgen();
  if (a.rows() < n || a.cols() < n || static_cast<int>(e_val.size()) < n) {
    err_mathgen = true;
    err_mathgen_mess = " Diagonalize_HERM: Error in dimension of input matrix: A(m,m) with m < n ";
    return;
  }
  n = std::max(n, 0);
  // Real symmetric form [[Re, -Im], [Im, Re]]: each eigenvalue appears twice.
  const int n2 = 2 * n;
  Matrix<float> work(n2, n2);
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i) {
      const complex_sp z = a(i, j);
      work(i, j) = z.real();
      work(i + n, j + n) = z.real();
      work(i + n, j) = z.imag();
      work(i, j + n) = -z.imag();
    }
  std::vector<float> d(static_cast<std::size_t>(n2));
  eigen_chain(work, n2, d, e_vect != nullptr);
  for (int i = 0; i < n; ++i) e_val[static_cast<std::size_t>(i)] = d[static_cast<std::size_t>(2 * i)];
  if (e_vect) {
    *e_vect = Matrix<complex_sp>(n, n);
    for (int i = 0; i < n; ++i)
      for (int k = 0; k < n; ++k) (*e_vect)(k, i) = complex_sp(work(k, 2 * i), work(k + n, 2 * i));
  }
}

}  // namespace lorx_math_general
