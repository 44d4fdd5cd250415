// lorx_math_general: angles in degrees, tolerances, integer arithmetic,
// tests on vectors and matrices, and exchanges of values.
//
// Member suffixes tell the type: _sp and _r 32-bit real, _dp 64-bit real,
// _i 32-bit integer, _c complex of two 32-bit reals. Generic names pick the
// member by argument type. Positions returned are counted from 1.
#pragma once

#include <complex>
#include <optional>
#include <span>
#include <vector>

#include "support/lorx_math_general.h"

namespace lorx_math_general {

inline constexpr double deg_per_rad = 57.29577951308232;
inline constexpr double rad_per_deg = 0.017453292519943295;

// ---- Tolerances
void set_epsg_sp(float eps);
void set_epsg_dp(double eps);
inline void set_epsg(float eps) { set_epsg_sp(eps); }
inline void set_epsg(double eps) { set_epsg_dp(eps); }
void set_epsg_default();  // epss back to 1.0E-5; ep_ss unchanged
float epss_val();
double ep_ss_val();

bool negligibler(float v);
bool negligiblec(complex_sp z);
bool zbelongn(float v);
bool zbelongn_dp(double v);
inline bool zbelongn(double v) { return zbelongn_dp(v); }
bool zbelongv(std::span<const float> v);
bool zbelongv_dp(std::span<const double> v);
inline bool zbelongv(std::span<const double> v) { return zbelongv_dp(v); }
bool zbelongm(const Matrix<float>& m);
bool zbelongm_dp(const Matrix<double>& m);
inline bool zbelongm(const Matrix<double>& m) { return zbelongm_dp(m); }

// ---- Angles in degrees
float sind_sp(float x);
double sind_dp(double x);
float cosd_sp(float x);
double cosd_dp(double x);
float tand_sp(float x);
double tand_dp(double x);
float asind_sp(float x);
double asind_dp(double x);
float acosd_sp(float x);
double acosd_dp(double x);
float atand_sp(float x);
double atand_dp(double x);
float atan2d_sp(float y, float x);
double atan2d_dp(double y, double x);
// Angle of the point (x, y), accurate near the axes; radians unless `degrees`.
void rtan_sp(float y, float x, float& angle, bool degrees = false);
void rtan_dp(double y, double x, double& angle, bool degrees = false);

inline float sind(float x) { return sind_sp(x); }
inline double sind(double x) { return sind_dp(x); }
inline float cosd(float x) { return cosd_sp(x); }
inline double cosd(double x) { return cosd_dp(x); }
inline float tand(float x) { return tand_sp(x); }
inline double tand(double x) { return tand_dp(x); }
inline float asind(float x) { return asind_sp(x); }
inline double asind(double x) { return asind_dp(x); }
inline float acosd(float x) { return acosd_sp(x); }
inline double acosd(double x) { return acosd_dp(x); }
inline float atand(float x) { return atand_sp(x); }
inline double atand(double x) { return atand_dp(x); }
inline float atan2d(float y, float x) { return atan2d_sp(y, x); }
inline double atan2d(double y, double x) { return atan2d_dp(y, x); }
inline void rtan(float y, float x, float& angle, bool degrees = false) { rtan_sp(y, x, angle, degrees); }
inline void rtan(double y, double x, double& angle, bool degrees = false) { rtan_dp(y, x, angle, degrees); }

// ---- Integers
int factorial(int n);  // 0 above 12, where it no longer fits
float factorial_sp(int n);
double factorial_dp(int n);
int pgcd(int a, int b);
int ppcm(int a, int b);
bool co_prime(std::span<const int> v, std::optional<int> largest_prime = {});
void co_prime_vector(std::span<const int> v, std::vector<int>& out, int* factor = nullptr);
bool co_linear_i(std::span<const int> a, std::span<const int> b, int n);
bool co_linear_r(std::span<const float> a, std::span<const float> b, int n);
bool co_linear_c(std::span<const complex_sp> a, std::span<const complex_sp> b, int n);
inline bool co_linear(std::span<const int> a, std::span<const int> b, int n) { return co_linear_i(a, b, n); }
inline bool co_linear(std::span<const float> a, std::span<const float> b, int n) { return co_linear_r(a, b, n); }
inline bool co_linear(std::span<const complex_sp> a, std::span<const complex_sp> b, int n) {
  return co_linear_c(a, b, n);
}

// ---- Search and range
int imaxloc_i(std::span<const int> a);
int imaxloc_sp(std::span<const float> a);
int imaxloc_dp(std::span<const double> a);
int iminloc_i(std::span<const int> a);
int iminloc_sp(std::span<const float> a);
int iminloc_dp(std::span<const double> a);
inline int imaxloc(std::span<const int> a) { return imaxloc_i(a); }
inline int imaxloc(std::span<const float> a) { return imaxloc_sp(a); }
inline int imaxloc(std::span<const double> a) { return imaxloc_dp(a); }
inline int iminloc(std::span<const int> a) { return iminloc_i(a); }
inline int iminloc(std::span<const float> a) { return iminloc_sp(a); }
inline int iminloc(std::span<const double> a) { return iminloc_dp(a); }

// limits is 2 by n: lower bounds in row 0, upper bounds in row 1.
bool in_limits_int(int n, const Matrix<int>& limits, std::span<const int> v);
bool in_limits_sp(int n, const Matrix<float>& limits, std::span<const float> v);
bool in_limits_dp(int n, const Matrix<double>& limits, std::span<const double> v);
inline bool in_limits(int n, const Matrix<int>& l, std::span<const int> v) { return in_limits_int(n, l, v); }
inline bool in_limits(int n, const Matrix<float>& l, std::span<const float> v) { return in_limits_sp(n, l, v); }
inline bool in_limits(int n, const Matrix<double>& l, std::span<const double> v) { return in_limits_dp(n, l, v); }

// j such that x lies between a(j) and a(j+1) of a monotonic array, from 1.
int locate_i(std::span<const int> a, int n, int x);
int locate_r(std::span<const float> a, int n, float x);
int locate_ib(std::span<const int> a, int x);
int locate_rb(std::span<const float> a, float x);
inline int locate(std::span<const int> a, int n, int x) { return locate_i(a, n, x); }
inline int locate(std::span<const float> a, int n, float x) { return locate_r(a, n, x); }
inline int locate(std::span<const int> a, int x) { return locate_ib(a, x); }
inline int locate(std::span<const float> a, float x) { return locate_rb(a, x); }

// ---- Vector and matrix tests
bool equal_vector_i(std::span<const int> a, std::span<const int> b, int n);
bool equal_vector_r(std::span<const float> a, std::span<const float> b, int n);
bool equal_vector_ind(std::span<const int> a, std::span<const int> b);
bool equal_vector_rnd(std::span<const float> a, std::span<const float> b);
inline bool equal_vector(std::span<const int> a, std::span<const int> b, int n) { return equal_vector_i(a, b, n); }
inline bool equal_vector(std::span<const float> a, std::span<const float> b, int n) {
  return equal_vector_r(a, b, n);
}
inline bool equal_vector(std::span<const int> a, std::span<const int> b) { return equal_vector_ind(a, b); }
inline bool equal_vector(std::span<const float> a, std::span<const float> b) { return equal_vector_rnd(a, b); }

bool equal_matrix_i(const Matrix<int>& a, const Matrix<int>& b, int n);
bool equal_matrix_r(const Matrix<float>& a, const Matrix<float>& b, int n);
// Over the extents of a; a b smaller than a compares unequal.
bool equal_matrix_ind(const Matrix<int>& a, const Matrix<int>& b);
bool equal_matrix_rnd(const Matrix<float>& a, const Matrix<float>& b);
inline bool equal_matrix(const Matrix<int>& a, const Matrix<int>& b, int n) { return equal_matrix_i(a, b, n); }
inline bool equal_matrix(const Matrix<float>& a, const Matrix<float>& b, int n) { return equal_matrix_r(a, b, n); }
inline bool equal_matrix(const Matrix<int>& a, const Matrix<int>& b) { return equal_matrix_ind(a, b); }
inline bool equal_matrix(const Matrix<float>& a, const Matrix<float>& b) { return equal_matrix_rnd(a, b); }

bool is_null_vector_i(std::span<const int> v);
bool is_null_vector_r(std::span<const float> v);
bool is_null_vector_dp(std::span<const double> v);
inline bool is_null_vector(std::span<const int> v) { return is_null_vector_i(v); }
inline bool is_null_vector(std::span<const float> v) { return is_null_vector_r(v); }
inline bool is_null_vector(std::span<const double> v) { return is_null_vector_dp(v); }
bool is_diagonal_matrix_i(const Matrix<int>& m);
bool is_diagonal_matrix_r(const Matrix<float>& m);
bool is_diagonal_matrix_dp(const Matrix<double>& m);
inline bool is_diagonal_matrix(const Matrix<int>& m) { return is_diagonal_matrix_i(m); }
inline bool is_diagonal_matrix(const Matrix<float>& m) { return is_diagonal_matrix_r(m); }
inline bool is_diagonal_matrix(const Matrix<double>& m) { return is_diagonal_matrix_dp(m); }

// ---- Arithmetic on vectors and matrices
float trace_r(const Matrix<float>& m);
int trace_i(const Matrix<int>& m);
complex_sp trace_c(const Matrix<complex_sp>& m);
inline float trace(const Matrix<float>& m) { return trace_r(m); }
inline int trace(const Matrix<int>& m) { return trace_i(m); }
inline complex_sp trace(const Matrix<complex_sp>& m) { return trace_c(m); }

Matrix<int> lower_triangular_i(const Matrix<int>& m, int n);
Matrix<float> lower_triangular_r(const Matrix<float>& m, int n);
Matrix<int> upper_triangular_i(const Matrix<int>& m, int n);
Matrix<float> upper_triangular_r(const Matrix<float>& m, int n);
inline Matrix<int> lower_triangular(const Matrix<int>& m, int n) { return lower_triangular_i(m, n); }
inline Matrix<float> lower_triangular(const Matrix<float>& m, int n) { return lower_triangular_r(m, n); }
inline Matrix<int> upper_triangular(const Matrix<int>& m, int n) { return upper_triangular_i(m, n); }
inline Matrix<float> upper_triangular(const Matrix<float>& m, int n) { return upper_triangular_r(m, n); }

// Each element brought into [0, 1) by its lattice translation (for x above -10).
std::vector<float> modulo_lat(std::span<const float> v);

// Length of a lattice vector and scalar product in the metric g (n by n for
// vectors of n). Extents that do not fit give the smallest normal real.
float norm_i(std::span<const int> x, const Matrix<float>& g);
float norm_r(std::span<const float> x, const Matrix<float>& g);
float scalar_i(std::span<const int> x, std::span<const int> y, const Matrix<float>& g);
float scalar_r(std::span<const float> x, std::span<const float> y, const Matrix<float>& g);
inline float norm(std::span<const int> x, const Matrix<float>& g) { return norm_i(x, g); }
inline float norm(std::span<const float> x, const Matrix<float>& g) { return norm_r(x, g); }
inline float scalar(std::span<const int> x, std::span<const int> y, const Matrix<float>& g) {
  return scalar_i(x, y, g);
}
inline float scalar(std::span<const float> x, std::span<const float> y, const Matrix<float>& g) {
  return scalar_r(x, y, g);
}

float euclidean_norm(int n, std::span<const float> x);
// Median of the first n elements, found by partial selection: reorders x.
void am_median(std::span<float> x, int n, float& median);

// ---- Exchanges
void swap_i(int& a, int& b);
void swap_sp(float& a, float& b);
void swap_dp(double& a, double& b);
void swap_c(complex_sp& a, complex_sp& b);
// Vectors exchange element by element, over the shorter of the two.
void swap_iv(std::span<int> a, std::span<int> b);
void swap_spv(std::span<float> a, std::span<float> b);
void swap_dpv(std::span<double> a, std::span<double> b);
void swap_cv(std::span<complex_sp> a, std::span<complex_sp> b);
void swap_im(Matrix<int>& a, Matrix<int>& b);
void swap_spm(Matrix<float>& a, Matrix<float>& b);
void swap_dpm(Matrix<double>& a, Matrix<double>& b);
void swap_cm(Matrix<complex_sp>& a, Matrix<complex_sp>& b);
void masked_swap_r(float& a, float& b, bool mask);
void masked_swap_rv(std::span<float> a, std::span<float> b, const std::vector<bool>& mask);
void masked_swap_rm(Matrix<float>& a, Matrix<float>& b, const Matrix<bool>& mask);

inline void swap(int& a, int& b) { swap_i(a, b); }
inline void swap(float& a, float& b) { swap_sp(a, b); }
inline void swap(double& a, double& b) { swap_dp(a, b); }
inline void swap(complex_sp& a, complex_sp& b) { swap_c(a, b); }
inline void swap(std::span<int> a, std::span<int> b) { swap_iv(a, b); }
inline void swap(std::span<float> a, std::span<float> b) { swap_spv(a, b); }
inline void swap(std::span<double> a, std::span<double> b) { swap_dpv(a, b); }
inline void swap(std::span<complex_sp> a, std::span<complex_sp> b) { swap_cv(a, b); }
inline void swap(Matrix<int>& a, Matrix<int>& b) { swap_im(a, b); }
inline void swap(Matrix<float>& a, Matrix<float>& b) { swap_spm(a, b); }
inline void swap(Matrix<double>& a, Matrix<double>& b) { swap_dpm(a, b); }
inline void swap(Matrix<complex_sp>& a, Matrix<complex_sp>& b) { swap_cm(a, b); }
inline void masked_swap(float& a, float& b, bool mask) { masked_swap_r(a, b, mask); }
inline void masked_swap(std::span<float> a, std::span<float> b, const std::vector<bool>& mask) {
  masked_swap_rv(a, b, mask);
}
inline void masked_swap(Matrix<float>& a, Matrix<float>& b, const Matrix<bool>& mask) {
  masked_swap_rm(a, b, mask);
}

}  // namespace lorx_math_general
