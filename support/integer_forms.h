// lorx_math_general: exact row reduction of integer matrices by unimodular
// steps, as used on lattices, and a test whether a vector depends linearly on
// the rows or columns of a matrix.
#pragma once

#include <span>

#include "support/lorx_math_general.h"

namespace lorx_math_general {

// Row echelon form by row exchanges, negations and subtraction of integer
// multiples of rows; each pivot is positive. No overflow test.
void rowechelonformm(Matrix<int>& m);
// The same, with every row step repeated on t (same row count; otherwise t
// is left alone). Started as the identity, t ends as the reducing matrix.
void rowechelonformt(Matrix<int>& m, Matrix<int>& t);
// Diagonal d = p m q with unimodular p and q. The diagonal elements are not
// made to divide one another.
void smithnormalform(const Matrix<int>& m, Matrix<int>& d, Matrix<int>& p, Matrix<int>& q);

// Whether a (its first na elements) depends on the rows (na = mb) or the
// columns (na = nb) of the leading nb by mb block of b. Both dimension faults
// set err_mathgen and leave the result true.
void linear_dependenti(std::span<const int> a, int na, const Matrix<int>& b, int nb, int mb, bool& dependent);
void linear_dependentr(std::span<const float> a, int na, const Matrix<float>& b, int nb, int mb, bool& dependent);
void linear_dependentc(std::span<const complex_sp> a, int na, const Matrix<complex_sp>& b, int nb, int mb,
                       bool& dependent);

inline void linear_dependent(std::span<const int> a, int na, const Matrix<int>& b, int nb, int mb, bool& dep) {
  linear_dependenti(a, na, b, nb, mb, dep);
}
inline void linear_dependent(std::span<const float> a, int na, const Matrix<float>& b, int nb, int mb, bool& dep) {
  linear_dependentr(a, na, b, nb, mb, dep);
}
inline void linear_dependent(std::span<const complex_sp> a, int na, const Matrix<complex_sp>& b, int nb, int mb,
                             bool& dep) {
  linear_dependentc(a, na, b, nb, mb, dep);
}

}  // namespace lorx_math_general
