// lorx_math_general: eigenvalues and eigenvectors of real symmetric and
// complex Hermitian matrices, in 32-bit reals: Householder reduction to
// tridiagonal form, then QL iteration with implicit shifts. The tolerance is
// ep_ss; faults go to err_mathgen.
#pragma once

#include <span>

#include "support/lorx_math_general.h"

namespace lorx_math_general {

// Eigenvalues of the leading order-n block of a, in falling order; with
// e_vect, eigenvector k in column k (e_vect becomes n by n). A matrix (or
// eigenvalue output) smaller than n is an error: eigenvalues stay 0 and
// e_vect is untouched. Too many iterations leave the values unsorted.
void diagonalize_symm(const Matrix<float>& a, int n, std::span<float> e_val, Matrix<float>* e_vect = nullptr);
// The Hermitian problem through the real symmetric one of order 2n.
void diagonalize_herm(const Matrix<complex_sp>& a, int n, std::span<float> e_val,
                      Matrix<complex_sp>* e_vect = nullptr);

// Householder reduction of the symmetric work matrix a (order n, lower
// triangle used) to tridiagonal d (diagonal) and e (subdiagonal in e(2..n),
// e(1) = 0). tred2 leaves the accumulated transformation in a.
void tred1(Matrix<float>& a, int n, std::span<float> d, std::span<float> e);
void tred2(Matrix<float>& a, int n, std::span<float> d, std::span<float> e);
// QL iteration on the tridiagonal form; d becomes the eigenvalues. tqli2
// rotates the columns of z along, which makes them the eigenvectors.
void tqli1(std::span<float> d, std::span<float> e, int n, Matrix<float>& z);
void tqli2(std::span<float> d, std::span<float> e, int n, Matrix<float>& z);
// Sorts d into falling order; the columns of v follow when flag is 1.
void eigsrt(std::span<float> d, Matrix<float>& v, int n, int flag);

}  // namespace lorx_math_general
