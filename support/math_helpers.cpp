#include "support/math_helpers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numbers>
#include <utility>

namespace lorx_math_general {

namespace {

// Fixed limits of the null tests, deliberately independent of epss and ep_ss.
constexpr float null_limit_sp = 1.0e-5f;
constexpr double null_limit_dp = 1.0e-8;

template <class T>
bool within_of_integer(T v, T eps) {
  return std::abs(v - std::round(v)) <= eps;
}

}  // namespace

// ---------------------------------------------------------------- tolerances

void set_epsg_sp(float eps) { epss = eps; }
void set_epsg_dp(double eps) { ep_ss = eps; }
void set_epsg_default() { epss = 1.0e-5f; }
float epss_val() { return epss; }
double ep_ss_val() { return ep_ss; }

bool negligibler(float v) { return std::abs(v) <= epss; }
bool negligiblec(complex_sp z) { return std::abs(z) <= epss; }
bool zbelongn(float v) { return within_of_integer(v, epss); }
bool zbelongn_dp(double v) { return within_of_integer(v, ep_ss); }

bool zbelongv(std::span<const float> v) {
  return std::all_of(v.begin(), v.end(), [](float x) { return zbelongn(x); });
}
bool zbelongv_dp(std::span<const double> v) {
  return std::all_of(v.begin(), v.end(), [](double x) { return zbelongn_dp(x); });
}
bool zbelongm(const Matrix<float>& m) { return zbelongv({m.data(), m.size()}); }
bool zbelongm_dp(const Matrix<double>& m) { return zbelongv_dp({m.data(), m.size()}); }

// ---------------------------------------------------------------- angles

namespace {

template <class T>
T asind_t(T x) {
  if (std::abs(x) > T(1)) return x > T(0) ? T(90) : T(-90);
  return static_cast<T>(std::asin(x) * T(deg_per_rad));
}

template <class T>
T acosd_t(T x) {
  if (std::abs(x) > T(1)) return x > T(0) ? T(0) : T(180);
  return static_cast<T>(std::acos(x) * T(deg_per_rad));
}

template <class T>
void rtan_t(T y, T x, T& angle, bool degrees) {
  // A fixed limit: the point is on an axis whatever the module tolerance.
  constexpr T limit = T(1.0e-5);
  constexpr T pi = std::numbers::pi_v<T>;
  T ax = std::abs(x), ay = std::abs(y);
  if (ax < limit && ay < limit) {
    angle = T(0);
    return;
  }
  T a;
  if (ax < limit) {
    a = pi / T(2);
  } else if (ax <= ay) {
    T t = std::atan(ax / ay);
    a = x < T(0) ? pi / T(2) + t : pi / T(2) - t;
  } else {
    T t = std::atan(ay / ax);
    a = x < T(0) ? pi - t : t;
  }
  if (y < T(0)) a = -a;
  angle = degrees ? static_cast<T>(a * T(deg_per_rad)) : a;
}

}  // namespace

float sind_sp(float x) { return std::sin(x * static_cast<float>(rad_per_deg)); }
double sind_dp(double x) { return std::sin(x * rad_per_deg); }
float cosd_sp(float x) { return std::cos(x * static_cast<float>(rad_per_deg)); }
double cosd_dp(double x) { return std::cos(x * rad_per_deg); }
float tand_sp(float x) { return std::tan(x * static_cast<float>(rad_per_deg)); }
double tand_dp(double x) { return std::tan(x * rad_per_deg); }
float asind_sp(float x) { return asind_t(x); }
double asind_dp(double x) { return asind_t(x); }
float acosd_sp(float x) { return acosd_t(x); }
double acosd_dp(double x) { return acosd_t(x); }
float atand_sp(float x) { return std::atan(x) * static_cast<float>(deg_per_rad); }
double atand_dp(double x) { return std::atan(x) * deg_per_rad; }
float atan2d_sp(float y, float x) { return std::atan2(y, x) * static_cast<float>(deg_per_rad); }
double atan2d_dp(double y, double x) { return std::atan2(y, x) * deg_per_rad; }
void rtan_sp(float y, float x, float& angle, bool degrees) { rtan_t(y, x, angle, degrees); }
void rtan_dp(double y, double x, double& angle, bool degrees) { rtan_t(y, x, angle, degrees); }

// ---------------------------------------------------------------- integers

int factorial(int n) {
  if (n > 12) return 0;
  int f = 1;
  for (int i = 2; i <= n; ++i) f *= i;
  return f;
}

float factorial_sp(int n) {
  float f = 1.0f;
  for (int i = 2; i <= n; ++i) f *= static_cast<float>(i);
  return f;
}

double factorial_dp(int n) {
  double f = 1.0;
  for (int i = 2; i <= n; ++i) f *= static_cast<double>(i);
  return f;
}

int pgcd(int a, int b) {
  // In 64 bits, so that no remainder of extreme negative values overflows.
  long long u = std::max(a, b), v = std::min(a, b);
  while (v != 0) {
    const long long r = u % v;
    u = v;
    v = r;
  }
  return static_cast<int>(u);
}

// The true least common multiple; a smaller value below 2 gives the larger.
int ppcm(int a, int b) {
  int u = std::max(a, b), v = std::min(a, b);
  if (v < 2) return u;
  // Factors are looked for only up to the square root of the larger value; what
  // remains of u and v behind that limit does not enter the result, so this is
  // the true least common multiple only when no larger prime factor is left.
  const int limit = static_cast<int>(std::sqrt(static_cast<double>(u))) + 1;
  long long result = 1;
  for (int i = 2; i <= limit; ++i) {
    while (u % i == 0 || v % i == 0) {
      result *= i;
      if (u % i == 0) u /= i;
      if (v % i == 0) v /= i;
    }
  }
  return static_cast<int>(result);
}

bool co_prime(std::span<const int> v, std::optional<int> largest_prime) {
  if (v.empty()) return false;
  long m = 0;
  for (int x : v) m = std::max(m, std::labs(static_cast<long>(x)));
  if (m == 1) return true;
  if (m == 0) return false;
  long limit = largest_prime ? *largest_prime : m;
  for (int p : primes) {
    if (std::all_of(v.begin(), v.end(), [p](int x) { return x % p == 0; })) return false;
    if (p >= limit) break;
  }
  return true;
}

void co_prime_vector(std::span<const int> v, std::vector<int>& out, int* factor) {
  out.assign(v.begin(), v.end());
  if (factor) *factor = 1;
  long m = 0;
  for (int x : v) m = std::max(m, std::labs(static_cast<long>(x)));
  if (m <= 1 || m >= primes.back()) return;
  int f = 1;
  for (int p : primes) {
    while (std::all_of(out.begin(), out.end(), [p](int x) { return x % p == 0; })) {
      f *= p;
      for (int& x : out) x /= p;
    }
    if (p > m) break;
  }
  if (factor) *factor = f;
}

namespace {

// First position of the first n whose element is not null, or n.
template <class T, class Null>
std::size_t first_not_null(std::span<const T> a, std::size_t n, Null is_null) {
  for (std::size_t i = 0; i < n; ++i)
    if (!is_null(a[i])) return i;
  return n;
}

// Two null vectors count as proportional: each is zero times the other.
template <class T, class R, class Null>
bool co_linear_t(std::span<const T> a, std::span<const T> b, int n, Null is_null) {
  std::size_t len = std::min({a.size(), b.size(), static_cast<std::size_t>(std::max(n, 0))});
  std::size_t ka = first_not_null(a, len, is_null), kb = first_not_null(b, len, is_null);
  if (ka != kb) return false;
  if (ka == len) return true;
  R c = static_cast<R>(a[ka]) / static_cast<R>(b[kb]);
  for (std::size_t i = 0; i < len; ++i)
    if (std::abs(static_cast<R>(a[i]) - c * static_cast<R>(b[i])) > epss) return false;
  return true;
}

}  // namespace

bool co_linear_i(std::span<const int> a, std::span<const int> b, int n) {
  return co_linear_t<int, float>(a, b, n, [](int x) { return x == 0; });
}
bool co_linear_r(std::span<const float> a, std::span<const float> b, int n) {
  return co_linear_t<float, float>(a, b, n, [](float x) { return std::abs(x) <= epss; });
}
bool co_linear_c(std::span<const complex_sp> a, std::span<const complex_sp> b, int n) {
  return co_linear_t<complex_sp, complex_sp>(a, b, n, [](complex_sp x) { return std::abs(x) <= epss; });
}

// ---------------------------------------------------------------- search and range

namespace {

template <class T>
int maxloc(std::span<const T> a) {
  if (a.empty()) return 1;
  return static_cast<int>(std::max_element(a.begin(), a.end()) - a.begin()) + 1;
}

template <class T>
int minloc(std::span<const T> a) {
  if (a.empty()) return 1;
  return static_cast<int>(std::min_element(a.begin(), a.end()) - a.begin()) + 1;
}

template <class T>
bool in_limits_t(int n, const Matrix<T>& limits, std::span<const T> v) {
  int len = std::min({n, limits.cols(), static_cast<int>(v.size())});
  if (n > len || (n >= 1 && limits.rows() < 2)) return false;
  for (int i = 0; i < n; ++i)
    if (!(limits(0, i) <= v[i] && v[i] <= limits(1, i))) return false;
  return true;
}

template <class T>
int locate_t(std::span<const T> a, int n, T x) {
  n = std::min(n, static_cast<int>(a.size()));
  if (n < 1) return 0;
  if (x <= a[0]) return 1;
  if (x >= a[n - 1]) return n;
  bool rising = a[n - 1] >= a[0];
  int lower = 0, upper = n + 1;
  while (upper - lower > 1) {
    int mid = (lower + upper) / 2;
    if ((x > a[mid - 1]) == rising) lower = mid;
    else upper = mid;
  }
  return lower;
}

}  // namespace

int imaxloc_i(std::span<const int> a) { return maxloc(a); }
int imaxloc_sp(std::span<const float> a) { return maxloc(a); }
int imaxloc_dp(std::span<const double> a) { return maxloc(a); }
int iminloc_i(std::span<const int> a) { return minloc(a); }
int iminloc_sp(std::span<const float> a) { return minloc(a); }
int iminloc_dp(std::span<const double> a) { return minloc(a); }

bool in_limits_int(int n, const Matrix<int>& limits, std::span<const int> v) { return in_limits_t(n, limits, v); }
bool in_limits_sp(int n, const Matrix<float>& limits, std::span<const float> v) {
  return in_limits_t(n, limits, v);
}
bool in_limits_dp(int n, const Matrix<double>& limits, std::span<const double> v) {
  return in_limits_t(n, limits, v);
}

int locate_i(std::span<const int> a, int n, int x) { return locate_t(a, n, x); }
int locate_r(std::span<const float> a, int n, float x) { return locate_t(a, n, x); }
int locate_ib(std::span<const int> a, int x) { return locate_t(a, static_cast<int>(a.size()), x); }
int locate_rb(std::span<const float> a, float x) { return locate_t(a, static_cast<int>(a.size()), x); }

// ---------------------------------------------------------------- vector and matrix tests

namespace {

bool same_i(int a, int b) { return a == b; }
bool same_r(float a, float b) { return std::abs(a - b) <= epss; }

template <class T, class Same>
bool equal_first(std::span<const T> a, std::span<const T> b, int n, Same same) {
  if (n < 1) return true;
  auto len = static_cast<std::size_t>(n);
  if (a.size() < len || b.size() < len) return false;
  for (std::size_t i = 0; i < len; ++i)
    if (!same(a[i], b[i])) return false;
  return true;
}

template <class T, class Same>
bool equal_block(const Matrix<T>& a, const Matrix<T>& b, int nr, int nc, Same same) {
  if (nr < 1 || nc < 1) return true;
  if (a.rows() < nr || a.cols() < nc || b.rows() < nr || b.cols() < nc) return false;
  for (int j = 0; j < nc; ++j)
    for (int i = 0; i < nr; ++i)
      if (!same(a(i, j), b(i, j))) return false;
  return true;
}

template <class T>
bool all_null(std::span<const T> v, T limit) {
  return std::all_of(v.begin(), v.end(), [limit](T x) { return std::abs(x) <= limit; });
}

template <class T>
bool diagonal(const Matrix<T>& m, T limit) {
  for (int j = 0; j < m.cols(); ++j)
    for (int i = 0; i < m.rows(); ++i)
      if (i != j && std::abs(m(i, j)) > limit) return false;
  return true;
}

}  // namespace

bool equal_vector_i(std::span<const int> a, std::span<const int> b, int n) { return equal_first(a, b, n, same_i); }
bool equal_vector_r(std::span<const float> a, std::span<const float> b, int n) {
  return equal_first(a, b, n, same_r);
}
bool equal_vector_ind(std::span<const int> a, std::span<const int> b) {
  return a.size() == b.size() && equal_first(a, b, static_cast<int>(a.size()), same_i);
}
bool equal_vector_rnd(std::span<const float> a, std::span<const float> b) {
  return a.size() == b.size() && equal_first(a, b, static_cast<int>(a.size()), same_r);
}

bool equal_matrix_i(const Matrix<int>& a, const Matrix<int>& b, int n) { return equal_block(a, b, n, n, same_i); }
bool equal_matrix_r(const Matrix<float>& a, const Matrix<float>& b, int n) {
  return equal_block(a, b, n, n, same_r);
}
bool equal_matrix_ind(const Matrix<int>& a, const Matrix<int>& b) {
  return equal_block(a, b, a.rows(), a.cols(), same_i);
}
bool equal_matrix_rnd(const Matrix<float>& a, const Matrix<float>& b) {
  return equal_block(a, b, a.rows(), a.cols(), same_r);
}

bool is_null_vector_i(std::span<const int> v) { return all_null(v, 0); }
bool is_null_vector_r(std::span<const float> v) { return all_null(v, null_limit_sp); }
bool is_null_vector_dp(std::span<const double> v) { return all_null(v, null_limit_dp); }
bool is_diagonal_matrix_i(const Matrix<int>& m) { return diagonal(m, 0); }
bool is_diagonal_matrix_r(const Matrix<float>& m) { return diagonal(m, null_limit_sp); }
bool is_diagonal_matrix_dp(const Matrix<double>& m) { return diagonal(m, null_limit_dp); }

// ---------------------------------------------------------------- arithmetic

namespace {

template <class T>
T trace_t(const Matrix<T>& m) {
  T s{};
  for (int i = 0; i < std::min(m.rows(), m.cols()); ++i) s += m(i, i);
  return s;
}

template <class T>
Matrix<T> triangular(const Matrix<T>& m, int n, bool lower) {
  Matrix<T> r(n, n);
  int nr = std::min(n, m.rows()), nc = std::min(n, m.cols());
  for (int j = 0; j < nc; ++j)
    for (int i = 0; i < nr; ++i)
      if (lower ? i >= j : i <= j) r(i, j) = m(i, j);
  return r;
}

// x . (g y), or the smallest normal real when the extents do not fit.
template <class T>
float metric_product(std::span<const T> x, std::span<const T> y, const Matrix<float>& g) {
  std::size_t n = x.size();
  if (y.size() != n || n * n != g.size() || g.rows() != static_cast<int>(n))
    return std::numeric_limits<float>::min();
  float s = 0.0f;
  for (std::size_t j = 0; j < n; ++j) {
    float gy = 0.0f;
    for (std::size_t i = 0; i < n; ++i)
      gy += g(static_cast<int>(i), static_cast<int>(j)) * static_cast<float>(x[i]);
    s += gy * static_cast<float>(y[j]);
  }
  return s;
}

template <class T>
float metric_norm(std::span<const T> x, const Matrix<float>& g) {
  float s = metric_product(x, x, g);
  if (s == std::numeric_limits<float>::min()) return s;
  return std::sqrt(s);
}

}  // namespace

float trace_r(const Matrix<float>& m) { return trace_t(m); }
int trace_i(const Matrix<int>& m) { return trace_t(m); }
complex_sp trace_c(const Matrix<complex_sp>& m) { return trace_t(m); }

Matrix<int> lower_triangular_i(const Matrix<int>& m, int n) { return triangular(m, n, true); }
Matrix<float> lower_triangular_r(const Matrix<float>& m, int n) { return triangular(m, n, true); }
Matrix<int> upper_triangular_i(const Matrix<int>& m, int n) { return triangular(m, n, false); }
Matrix<float> upper_triangular_r(const Matrix<float>& m, int n) { return triangular(m, n, false); }

std::vector<float> modulo_lat(std::span<const float> v) {
  std::vector<float> r(v.begin(), v.end());
  for (float& x : r) {
    float y = x + 10.0f;
    x = y - std::floor(y);
  }
  return r;
}

float norm_i(std::span<const int> x, const Matrix<float>& g) { return metric_norm(x, g); }
float norm_r(std::span<const float> x, const Matrix<float>& g) { return metric_norm(x, g); }
float scalar_i(std::span<const int> x, std::span<const int> y, const Matrix<float>& g) {
  return metric_product(x, y, g);
}
float scalar_r(std::span<const float> x, std::span<const float> y, const Matrix<float>& g) {
  return metric_product(x, y, g);
}

float euclidean_norm(int n, std::span<const float> x) {
  constexpr float rdwarf = 3.834e-20f;
  constexpr float rgiant = 1.304e+19f;
  n = std::min(n, static_cast<int>(x.size()));
  if (n < 1) return 0.0f;
  float s1 = 0.0f, s2 = 0.0f, s3 = 0.0f, x1max = 0.0f, x3max = 0.0f;
  const float agiant = rgiant / static_cast<float>(n);
  for (int i = 0; i < n; ++i) {
    float xabs = std::abs(x[i]);
    if (xabs > rdwarf && xabs < agiant) {
      s2 += xabs * xabs;
    } else if (xabs <= rdwarf) {
      if (xabs > x3max) {
        float r = x3max / xabs;
        s3 = 1.0f + s3 * r * r;
        x3max = xabs;
      } else if (xabs != 0.0f) {
        float r = xabs / x3max;
        s3 += r * r;
      }
    } else {
      if (xabs > x1max) {
        float r = x1max / xabs;
        s1 = 1.0f + s1 * r * r;
        x1max = xabs;
      } else {
        float r = xabs / x1max;
        s1 += r * r;
      }
    }
  }
  if (s1 != 0.0f) return x1max * std::sqrt(s1 + (s2 / x1max) / x1max);
  if (s2 != 0.0f) {
    if (s2 >= x3max) return std::sqrt(s2 * (1.0f + (x3max / s2) * (x3max * s3)));
    return std::sqrt(x3max * ((s2 / x3max) + (x3max * s3)));
  }
  return x3max * std::sqrt(s3);
}

void am_median(std::span<float> x, int n, float& median) {
  n = std::min(n, static_cast<int>(x.size()));
  if (n < 1) {
    median = 0.0f;
    return;
  }
  if (n == 1) {
    median = x[0];
    return;
  }
  if (n == 2) {
    median = 0.5f * (x[0] + x[1]);
    return;
  }
  const bool odd = n % 2 == 1;
  // 0-based positions of the middle (odd) or of the two middle elements (even).
  const int k1 = odd ? n / 2 : n / 2 - 1;
  const int k2 = n / 2;
  int l = 0, ir = n - 1;
  for (;;) {
    if (ir <= l + 1) {
      if (ir == l + 1 && x[ir] < x[l]) std::swap(x[l], x[ir]);
      median = odd ? x[k1] : 0.5f * (x[k1] + x[k2]);
      return;
    }
    // Median of first, middle and last as pivot, kept at l + 1 with sentinels at l and ir.
    int mid = (l + ir) / 2;
    std::swap(x[mid], x[l + 1]);
    if (x[l] > x[ir]) std::swap(x[l], x[ir]);
    if (x[l + 1] > x[ir]) std::swap(x[l + 1], x[ir]);
    if (x[l] > x[l + 1]) std::swap(x[l], x[l + 1]);
    int i = l + 1, j = ir;
    const float a = x[l + 1];
    for (;;) {
      do ++i; while (x[i] < a);
      do --j; while (x[j] > a);
      if (j < i) break;
      std::swap(x[i], x[j]);
    }
    x[l + 1] = x[j];
    x[j] = a;
    // Now x[l..j-1] <= a = x[j] <= x[j+1..ir].
    if (odd) {
      if (j == k1) {
        median = a;
        return;
      }
    } else if (j == k1) {
      median = 0.5f * (a + *std::min_element(x.begin() + j + 1, x.begin() + ir + 1));
      return;
    } else if (j == k2) {
      median = 0.5f * (*std::max_element(x.begin() + l, x.begin() + j) + a);
      return;
    }
    if (j > k2) ir = j - 1;
    else l = j + 1;
  }
}

// ---------------------------------------------------------------- exchanges

void swap_i(int& a, int& b) { std::swap(a, b); }
void swap_sp(float& a, float& b) { std::swap(a, b); }
void swap_dp(double& a, double& b) { std::swap(a, b); }
void swap_c(complex_sp& a, complex_sp& b) { std::swap(a, b); }

namespace {
template <class T>
void swap_elements(std::span<T> a, std::span<T> b) {
  std::size_t n = std::min(a.size(), b.size());
  std::swap_ranges(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(n), b.begin());
}
}  // namespace

void swap_iv(std::span<int> a, std::span<int> b) { swap_elements(a, b); }
void swap_spv(std::span<float> a, std::span<float> b) { swap_elements(a, b); }
void swap_dpv(std::span<double> a, std::span<double> b) { swap_elements(a, b); }
void swap_cv(std::span<complex_sp> a, std::span<complex_sp> b) { swap_elements(a, b); }
void swap_im(Matrix<int>& a, Matrix<int>& b) { std::swap(a, b); }
void swap_spm(Matrix<float>& a, Matrix<float>& b) { std::swap(a, b); }
void swap_dpm(Matrix<double>& a, Matrix<double>& b) { std::swap(a, b); }
void swap_cm(Matrix<complex_sp>& a, Matrix<complex_sp>& b) { std::swap(a, b); }

void masked_swap_r(float& a, float& b, bool mask) {
  if (mask) std::swap(a, b);
}

void masked_swap_rv(std::span<float> a, std::span<float> b, const std::vector<bool>& mask) {
  std::size_t n = std::min({a.size(), b.size(), mask.size()});
  for (std::size_t i = 0; i < n; ++i)
    if (mask[i]) std::swap(a[i], b[i]);
}

void masked_swap_rm(Matrix<float>& a, Matrix<float>& b, const Matrix<bool>& mask) {
  int nr = std::min({a.rows(), b.rows(), mask.rows()});
  int nc = std::min({a.cols(), b.cols(), mask.cols()});
  for (int j = 0; j < nc; ++j)
    for (int i = 0; i < nr; ++i)
      if (mask(i, j)) std::swap(a(i, j), b(i, j));
}

}  // namespace lorx_math_general
