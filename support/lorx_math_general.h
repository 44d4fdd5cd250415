// lorx_math_general: the numerical module of the crystallographic support library.
// This header holds the module state and the matrix type the routines share;
// the routines are declared in the headers of their groups, which include this one.
#pragma once

#include <algorithm>
#include <array>
#include <complex>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

namespace lorx_math_general {

inline float epss = 1.0e-5f;    // tolerance of single-precision tests
inline double ep_ss = 1.0e-12;  // tolerance of double-precision tests
inline bool err_mathgen = false;
inline std::string err_mathgen_mess;  // text 150

inline void init_err_mathgen() {
  err_mathgen = false;
  err_mathgen_mess.clear();
}

using complex_sp = std::complex<float>;

namespace detail {
constexpr std::array<int, 1000> first_primes() {
  std::array<int, 1000> p{};
  int count = 0;
  for (int c = 2; count < 1000; ++c) {
    bool prime = true;
    for (int k = 0; k < count && p[k] * p[k] <= c; ++k)
      if (c % p[k] == 0) { prime = false; break; }
    if (prime) p[count++] = c;
  }
  return p;
}
}  // namespace detail

// The first 1000 prime numbers, 2 up to 7919.
inline constexpr std::array<int, 1000> primes = detail::first_primes();

// A dense matrix stored by columns. Element access is (row, column) counted
// from 0; only permutation vectors and reported positions count from 1.
template <class T>
class Matrix {
 public:
  using value_type = T;
  using reference = typename std::vector<T>::reference;
  using const_reference = typename std::vector<T>::const_reference;

  Matrix() = default;
  Matrix(int rows, int cols, T fill = T{})
      : rows_(std::max(rows, 0)), cols_(std::max(cols, 0)),
        data_(static_cast<std::size_t>(rows_) * static_cast<std::size_t>(cols_), fill) {}

  // Written row by row, as matrices are read and printed.
  static Matrix from_rows(std::initializer_list<std::initializer_list<T>> rows) {
    int nr = static_cast<int>(rows.size());
    int nc = 0;
    for (const auto& r : rows) nc = std::max(nc, static_cast<int>(r.size()));
    Matrix m(nr, nc);
    int i = 0;
    for (const auto& r : rows) {
      int j = 0;
      for (const T& v : r) m(i, j++) = v;
      ++i;
    }
    return m;
  }

  static Matrix identity(int n) {
    Matrix m(n, n);
    for (int i = 0; i < n; ++i) m(i, i) = T{1};
    return m;
  }

  int rows() const { return rows_; }
  int cols() const { return cols_; }
  std::size_t size() const { return data_.size(); }
  bool empty() const { return data_.empty(); }

  reference operator()(int i, int j) { return data_[index(i, j)]; }
  const_reference operator()(int i, int j) const { return data_[index(i, j)]; }

  // Contiguous columns; not available for Matrix<bool>.
  T* data() { return data_.data(); }
  const T* data() const { return data_.data(); }
  std::span<T> column(int j) { return {data_.data() + index(0, j), static_cast<std::size_t>(rows_)}; }
  std::span<const T> column(int j) const {
    return {data_.data() + index(0, j), static_cast<std::size_t>(rows_)};
  }

  void fill(const T& v) { std::fill(data_.begin(), data_.end(), v); }

  Matrix transposed() const {
    Matrix t(cols_, rows_);
    for (int j = 0; j < cols_; ++j)
      for (int i = 0; i < rows_; ++i) t(j, i) = (*this)(i, j);
    return t;
  }

  friend bool operator==(const Matrix& a, const Matrix& b) {
    return a.rows_ == b.rows_ && a.cols_ == b.cols_ && a.data_ == b.data_;
  }

 private:
  std::size_t index(int i, int j) const {
    return static_cast<std::size_t>(j) * static_cast<std::size_t>(rows_) + static_cast<std::size_t>(i);
  }

  int rows_ = 0;
  int cols_ = 0;
  std::vector<T> data_;
};

}  // namespace lorx_math_general
