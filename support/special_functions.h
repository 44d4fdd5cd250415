// Special functions of lorx_math_general: Bessel functions of the first kind,
// Chebyshev series, Debye functions and the error function.
//
// Each works by fixed rational or series approximations; faults are reported
// through err_mathgen / err_mathgen_mess.
#pragma once

#include <span>

#include "support/lorx_math_general.h"

namespace lorx_math_general {

float bessj0(float x);
float bessj1(float x);
// J_n(x). A negative order uses J_-n = (-1)^n J_n.
float bessj(int n, float x);

// Sum of a(i) T_i(t) for i = 0..n with a(0) halved; `a` holds at least n + 1 values.
double cheval(int n, std::span<const double> a, double t);

// Debye functions n / x^n * integral_0^x t^n / (exp(t) - 1) dt.
double debye1(double x);
double debye2(double x);
double debye3(double x);
double debye4(double x);
double debyen(int n, double x);  // series, for |x| up to 2 pi
double debye_dp(int n, double x);
float debye_sp(int n, float x);
inline double debye(int n, double x) { return debye_dp(n, x); }
inline float debye(int n, float x) { return debye_sp(n, x); }

// Error function. Qualify the call (lorx_math_general::erf) next to <cmath>.
float erf(float x);

}  // namespace lorx_math_general
