#include "support/special_functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace lmg = lorx_math_general;

namespace {

// J_n(x) by its power series, summed in long double: an independent reference.
long double bessel_series(int n, long double x) {
  long double term = 1.0L;
  for (int k = 1; k <= n; ++k) term *= (x / 2.0L) / k;
  long double sum = term;
  const long double q = -(x * x) / 4.0L;
  for (int k = 1; k < 200; ++k) {
    term *= q / (static_cast<long double>(k) * (k + n));
    sum += term;
    if (std::fabs(term) < 1.0E-22L * std::fabs(sum) && k > x) break;
  }
  return sum;
}

// The Debye integral by composite Simpson's rule in long double.
long double debye_integral(int n, long double x) {
  const int steps = 20000;
  const long double h = x / steps;
  auto f = [n](long double t) {
    if (t == 0.0L) return n == 1 ? 1.0L : 0.0L;
    return std::pow(t, n) / std::expm1(t);
  };
  long double s = f(0.0L) + f(x);
  for (int i = 1; i < steps; ++i) s += f(i * h) * (i % 2 ? 4.0L : 2.0L);
  return n / std::pow(x, n) * s * h / 3.0L;
}

// sum a(i) T_i(t) with a(0) halved, T_i by its three-term recurrence.
double chebyshev_direct(const std::vector<double>& a, double t) {
  double tm = 1.0, tc = t, sum = a[0] / 2.0 + (a.size() > 1 ? a[1] * t : 0.0);
  for (std::size_t i = 2; i < a.size(); ++i) {
    const double tn = 2.0 * t * tc - tm;
    sum += a[i] * tn;
    tm = tc;
    tc = tn;
  }
  return sum;
}

}  // namespace

TEST(BesselFunctions, AgreeWithPowerSeriesAcrossAllRanges) {
  // Points inside, at and beyond the switch between the rational and far-field forms.
  for (float x : {1.0E-4f, 0.1f, 1.0f, 2.404825f, 5.0f, 7.99f, 8.0f, 8.01f, 12.5f, 19.0f}) {
    for (float s : {1.0f, -1.0f}) {
      const float xs = s * x;
      EXPECT_NEAR(lmg::bessj0(xs), static_cast<double>(bessel_series(0, xs)), 2.0E-7) << xs;
      EXPECT_NEAR(lmg::bessj1(xs), static_cast<double>(bessel_series(1, xs)), 2.0E-7) << xs;
      for (int n : {2, 3, 5, 10}) {
        EXPECT_NEAR(lmg::bessj(n, xs), static_cast<double>(bessel_series(n, xs)), 1.0E-6)
            << "n=" << n << " x=" << xs;
      }
    }
  }
}

TEST(BesselFunctions, SmallArgumentsAndSymmetry) {
  EXPECT_EQ(lmg::bessj0(0.0f), 1.0f);
  EXPECT_EQ(lmg::bessj0(1.0E-6f), 1.0f);
  EXPECT_EQ(lmg::bessj1(0.0f), 0.0f);
  EXPECT_EQ(lmg::bessj1(9.0E-6f), 0.0f);  // below the cut-off J1 is taken as 0
  EXPECT_GT(lmg::bessj1(1.1E-5f), 5.0E-6f);
  EXPECT_EQ(lmg::bessj(2, 0.0f), 0.0f);
  EXPECT_EQ(lmg::bessj(2, -1.0f), lmg::bessj(2, 1.0f));
  EXPECT_EQ(lmg::bessj(3, -1.0f), -lmg::bessj(3, 1.0f));
  EXPECT_EQ(lmg::bessj(-3, 2.0f), -lmg::bessj(3, 2.0f));
  EXPECT_EQ(lmg::bessj(0, 3.0f), lmg::bessj0(3.0f));
  // Deep in the downward-recurrence region the values are tiny but relative accuracy holds.
  EXPECT_NEAR(lmg::bessj(20, 1.0f) / bessel_series(20, 1.0L), 1.0, 1.0E-5);
}

TEST(ChebyshevSeries, AllThreeFormsMatchDirectSum) {
  const std::vector<double> a{1.5, -0.75, 0.3, 0.125, -0.05, 0.02, 0.001};
  for (double t : {-1.0, -0.8, -0.6, -0.59, 0.0, 0.3, 0.59, 0.6, 0.9, 1.0, 1.7}) {
    EXPECT_NEAR(lmg::cheval(6, a, t), chebyshev_direct(a, t), 1.0E-13) << t;
  }
  EXPECT_DOUBLE_EQ(lmg::cheval(0, a, 0.7), 0.75);
  // A shorter n uses only the leading coefficients.
  EXPECT_NEAR(lmg::cheval(2, a, -0.7), chebyshev_direct({1.5, -0.75, 0.3}, -0.7), 1.0E-14);
}

TEST(DebyeFunctions, OrdersOneToFourAgreeWithTheIntegral) {
  using Fn = double (*)(double);
  const Fn fns[4] = {lmg::debye1, lmg::debye2, lmg::debye3, lmg::debye4};
  // Small form, Chebyshev range up to 4, exponential sums, and the closed form above 35.35.
  for (double x : {1.0E-3, 0.5, 1.0, 3.99, 4.0, 4.01, 10.0, 35.0, 36.0, 60.0}) {
    for (int n = 1; n <= 4; ++n) {
      const double ref = static_cast<double>(debye_integral(n, x));
      EXPECT_NEAR(fns[n - 1](x), ref, 1.0E-12 + 1.0E-12 * ref) << "n=" << n << " x=" << x;
    }
  }
  EXPECT_DOUBLE_EQ(lmg::debye1(0.0), 1.0);
  EXPECT_NEAR(lmg::debye1(1.0E-9), 1.0 - 1.0E-9 / 4.0, 1.0E-15);
  // Far tail: only the leading term is left.
  EXPECT_DOUBLE_EQ(lmg::debye1(1000.0), 1.0 / (0.6079271018540267 * 1000.0));
  EXPECT_EQ(lmg::debye4(1.0E+78), 0.0);
  EXPECT_GT(lmg::debye1(1.0E+300), 0.0);
}

TEST(DebyeFunctions, SeriesAndDispatchAgreeWithTheIntegral) {
  // The twelve-term series is accurate well inside its radius of 2 pi.
  for (int n : {1, 3, 5, 7}) {
    for (double x : {-3.0, -2.0, 0.5, 2.0, 3.0}) {
      const double ref = static_cast<double>(debye_integral(n, x));
      EXPECT_NEAR(lmg::debyen(n, x), ref, 1.0E-8) << "n=" << n << " x=" << x;
      EXPECT_NEAR(lmg::debye_dp(n, x), ref, 1.0E-8) << "n=" << n << " x=" << x;
      EXPECT_FALSE(lmg::err_mathgen);
      EXPECT_NEAR(lmg::debye_sp(n, static_cast<float>(x)),
                  static_cast<double>(debye_integral(n, static_cast<float>(x))), 1.0E-6);
    }
  }
  // Orders up to 4 use their own forms for positive x, the series for negative x.
  EXPECT_DOUBLE_EQ(lmg::debye_dp(2, 1.5), lmg::debye2(1.5));
  EXPECT_DOUBLE_EQ(lmg::debye_dp(2, -1.5), lmg::debyen(2, -1.5));
  EXPECT_DOUBLE_EQ(lmg::debye(3, 5.0), lmg::debye3(5.0));
  EXPECT_FLOAT_EQ(lmg::debye(3, 5.0f), static_cast<float>(lmg::debye3(5.0)));
  EXPECT_DOUBLE_EQ(lmg::debye_dp(6, 6.0), lmg::debyen(6, 6.0));
}

TEST(DebyeFunctions, FaultsSetTheErrorStateAndGiveZero) {
  auto expect_fault = [](double value, const char* message) {
    EXPECT_EQ(value, 0.0);
    EXPECT_TRUE(lmg::err_mathgen);
    EXPECT_EQ(lmg::err_mathgen_mess, message);
  };
  lmg::init_err_mathgen();
  expect_fault(lmg::debye2(-1.0), "DEBYE2 doesn't work with negative Argument");
  expect_fault(lmg::debye_dp(0, 1.0), "The order for Debye function was ZERO!");
  expect_fault(lmg::debye_dp(3, -7.0), "The argument is negative and less than 2Pi");
  expect_fault(lmg::debye_dp(5, 7.0), "The argument was greater then 2Pi and the order >= 5!");
  expect_fault(lmg::debyen(2, 6.3),
               "The absolute value of argument for DEBYEN was greater than 2PI ");
  expect_fault(lmg::debye_sp(0, 1.0f), "The order for Debye function was ZERO!");

  // A good call clears what an earlier one left.
  EXPECT_NE(lmg::debye_dp(5, 6.0), 0.0);
  EXPECT_FALSE(lmg::err_mathgen);
  // The single-precision guard lets the rounded 2 pi through to the series,
  // whose own limit then turns it away.
  expect_fault(lmg::debye_sp(2, -6.2831855f),
               "The absolute value of argument for DEBYEN was greater than 2PI ");
  expect_fault(lmg::debye_dp(2, -6.2831855), "The argument is negative and less than 2Pi");
}

TEST(ErrorFunction, AgreesWithReferenceInEveryRange) {
  for (float x : {1.0E-4f, 0.25f, 0.5f, 0.5001f, 1.0f, 2.5f, 4.0f, 4.001f, 5.0f, 5.79f, 5.8f}) {
    EXPECT_NEAR(lmg::erf(x), std::erf(static_cast<double>(x)), 3.0E-7) << x;
    EXPECT_NEAR(lmg::erf(-x), -std::erf(static_cast<double>(x)), 3.0E-7) << x;
  }
  EXPECT_EQ(lmg::erf(0.0f), 0.0f);
  EXPECT_EQ(lmg::erf(6.0f), 1.0f);
  EXPECT_EQ(lmg::erf(-6.0f), -1.0f);
}
