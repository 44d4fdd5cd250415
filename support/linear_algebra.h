// lorx_math_general: dense real and complex matrices. LU decomposition with
// scaled partial pivoting, determinant, inverse, singular value decomposition
// and numerical rank, each in a 32-bit (_sp) and a 64-bit (_dp) member.
//
// Square matrices are taken over their leading order-n block, n being the
// smaller extent. Permutation vectors hold row numbers counted from 1.
// Only the SVD (and rank through it) uses err_mathgen; a failed LU is
// reported by its `singular` output.
#pragma once

#include <span>
#include <vector>

#include "support/lorx_math_general.h"

namespace lorx_math_general {

// Replaces a by its LU factors (unit lower triangle implied). d is +1 or -1
// by the parity of the row exchanges. A row with no element above the pivot
// limit makes singular true and leaves a unchanged; a small pivot is replaced
// by the pivot limit and the decomposition goes on.
void lu_decomp_sp(Matrix<float>& a, float& d, bool& singular, std::vector<int>* indx = nullptr);
void lu_decomp_dp(Matrix<double>& a, double& d, bool& singular, std::vector<int>* indx = nullptr);
// Solves a x = b in place for factors from lu_decomp; b and indx need the
// matrix's order, otherwise nothing is done.
void lu_backsub_sp(const Matrix<float>& a, std::span<const int> indx, std::span<float> b);
void lu_backsub_dp(const Matrix<double>& a, std::span<const int> indx, std::span<double> b);

// Determinant of the leading n by n block, 0 when singular; summed in logarithms.
void determinant_sp(const Matrix<float>& a, int n, float& det);
void determinant_dp(const Matrix<double>& a, int n, double& det);
// Square of the modulus of the complex determinant, through the real form.
void determinant_c(const Matrix<complex_sp>& a, int n, float& det);

// Inverse by LU. When singular, c holds the work matrix instead.
void invert_matrix_sp(const Matrix<float>& a, Matrix<float>& c, bool& singular, std::vector<int>* indx = nullptr);
void invert_matrix_dp(const Matrix<double>& a, Matrix<double>& c, bool& singular,
                      std::vector<int>* indx = nullptr);

// In-place inverse of the leading n by n block by Gauss-Jordan with full
// pivoting. No failure report: a null pivot leaves infinities or NaN.
void matinv(Matrix<float>& a, int n);

// a (m by n) becomes U; w (n) the singular values, unsorted; v (n by n) V,
// so that a = U diag(w) V^T. Sets err_mathgen on incompatible extents or
// when a value does not converge within 500 iterations.
void svdcmp_sp(Matrix<float>& a, std::span<float> w, Matrix<float>& v);
void svdcmp_dp(Matrix<double>& a, std::span<double> w, Matrix<double>& v);

// Number of singular values strictly above tol; 0 after an SVD failure.
void rank_sp(const Matrix<float>& a, float tol, int& rank);
void rank_dp(const Matrix<double>& a, double tol, int& rank);

float pythag_sp(float a, float b);
double pythag_dp(double a, double b);

Matrix<float> outerprod_sp(std::span<const float> a, std::span<const float> b);
Matrix<double> outerprod_dp(std::span<const double> a, std::span<const double> b);

inline void lu_decomp(Matrix<float>& a, float& d, bool& singular, std::vector<int>* indx = nullptr) {
  lu_decomp_sp(a, d, singular, indx);
}
inline void lu_decomp(Matrix<double>& a, double& d, bool& singular, std::vector<int>* indx = nullptr) {
  lu_decomp_dp(a, d, singular, indx);
}
inline void lu_backsub(const Matrix<float>& a, std::span<const int> indx, std::span<float> b) {
  lu_backsub_sp(a, indx, b);
}
inline void lu_backsub(const Matrix<double>& a, std::span<const int> indx, std::span<double> b) {
  lu_backsub_dp(a, indx, b);
}
inline void determinant(const Matrix<float>& a, int n, float& det) { determinant_sp(a, n, det); }
inline void determinant(const Matrix<double>& a, int n, double& det) { determinant_dp(a, n, det); }
inline void determinant(const Matrix<complex_sp>& a, int n, float& det) { determinant_c(a, n, det); }
inline void invert_matrix(const Matrix<float>& a, Matrix<float>& c, bool& singular,
                          std::vector<int>* indx = nullptr) {
  invert_matrix_sp(a, c, singular, indx);
}
inline void invert_matrix(const Matrix<double>& a, Matrix<double>& c, bool& singular,
                          std::vector<int>* indx = nullptr) {
  invert_matrix_dp(a, c, singular, indx);
}
inline void svdcmp(Matrix<float>& a, std::span<float> w, Matrix<float>& v) { svdcmp_sp(a, w, v); }
inline void svdcmp(Matrix<double>& a, std::span<double> w, Matrix<double>& v) { svdcmp_dp(a, w, v); }
inline void rank(const Matrix<float>& a, float tol, int& r) { rank_sp(a, tol, r); }
inline void rank(const Matrix<double>& a, double tol, int& r) { rank_dp(a, tol, r); }
inline float pythag(float a, float b) { return pythag_sp(a, b); }
inline double pythag(double a, double b) { return pythag_dp(a, b); }
inline Matrix<float> outerprod(std::span<const float> a, std::span<const float> b) { return outerprod_sp(a, b); }
inline Matrix<double> outerprod(std::span<const double> a, std::span<const double> b) {
  return outerprod_dp(a, b);
}

}  // namespace lorx_math_general
