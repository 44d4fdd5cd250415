#include "support/special_functions.h"

#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "support/math_helpers.h"

namespace lorx_math_general {

namespace {

constexpr double two_pi = 6.283185307179586;

// Polynomial with coefficients lowest power first.
template <std::size_t N>
double poly_low_first(const std::array<double, N>& c, double y) {
  double r = 0.0;
  for (std::size_t i = N; i-- > 0;) r = r * y + c[i];
  return r;
}

// Polynomial with coefficients highest power first.
template <std::size_t N>
double poly_high_first(const std::array<double, N>& c, double y) {
  double r = 0.0;
  for (double v : c) r = r * y + v;
  return r;
}

struct BesselCoefficients {
  std::array<double, 6> p, q;
  double phase;
  std::array<double, 5> a, b;
};

constexpr BesselCoefficients j0c{
    {57568490574.0, -13362590354.0, 651619640.7, -11214424.18, 77392.33017, -184.9052456},
    {57568490411.0, 1029532985.0, 9494680.718, 59272.64853, 267.8532712, 1.0},
    0.7853982,
    {1.0, -0.0010986286, 2.7345104E-05, -2.0733708E-06, 2.0938872E-07},
    {-0.015625, 0.00014304888, -6.9111475E-06, 7.621095E-07, -9.349451E-08}};

constexpr BesselCoefficients j1c{
    {72362614232.0, -7895059235.0, 242396853.1, -2972611.439, 15704.4826, -30.16036606},
    {144725228442.0, 2300535178.0, 18583304.74, 99447.43394, 376.9991397, 1.0},
    2.3561945,
    {1.0, 0.00183105, -3.5163965E-05, 2.4575202E-06, -2.4033702E-07},
    {0.046875, -0.00020026909, 8.449199E-06, -8.822899E-07, 1.05787414E-07}};

// The far-field form shared by J0 and J1, for |x| from 8 on.
double bessel_asymptotic(const BesselCoefficients& c, double ax) {
  const double z = 8.0 / ax;
  const double y = z * z;
  const double w = ax - c.phase;
  return std::sqrt(0.63661975 / ax) *
         (std::cos(w) * poly_low_first(c.a, y) - z * std::sin(w) * poly_low_first(c.b, y));
}

void set_error(const char* message) {
  err_mathgen = true;
  err_mathgen_mess = message;
}

// What tells the four Debye orders apart; the rest of the method is shared.
struct DebyeOrder {
  int n;
  const std::array<double, 19>* table;
  double small_form(double x) const;
  double linear_term(double x) const;
  double upper_limit;  // 0: none
  double leading(double x) const;
  double p(double z) const;
  double closed_sum(double x) const;
  const char* message;
};

constexpr std::array<double, 19> adeb1{
    2.400659719038141,     0.19372130421893602, -0.006232912455489577, 0.000351117477020648,
    -2.28222466701231E-05, 1.580546787503E-06,  -1.1353781970719E-07,  8.35833611875E-09,
    -6.2644247872E-10,     4.76033489E-11,      -3.6574154E-12,        2.835431E-13,
    -2.214729E-14,         1.74092E-15,         -1.3759E-16,           1.093E-17,
    -8.7E-19,              7.0E-20,             -1.0E-20};
constexpr std::array<double, 19> adeb2{
    2.594381023257077,      0.286335720453072, -0.010206265615804672, 0.0006049109775346843,
    -4.052576589502104E-05, 2.86338263288107E-06, -2.0863943030651E-07, 1.552378758264E-08,
    -1.17312800866E-09,     8.973585888E-11,   -6.93176137E-12,       5.3980568E-13,
    -4.232405E-14,          3.33778E-15,       -2.6455E-16,           2.106E-17,
    -1.68E-18,              1.3E-19,           -1.0E-20};
constexpr std::array<double, 19> adeb3{
    2.707737068327441,      0.34006813521109175, -0.012945150184440868, 0.0007963755380173816,
    -5.463600095908238E-05, 3.92430195988049E-06, -2.8940328235386E-07,  2.173176139625E-08,
    -1.65420999498E-09,     1.2727961892E-10,    -9.87963459E-12,        7.725074E-13,
    -6.077972E-14,          4.80759E-15,         -3.8204E-16,            3.048E-17,
    -2.44E-18,              2.0E-19,             -2.0E-20};
constexpr std::array<double, 19> adeb4{
    2.7818694150205237,     0.37497678352689284, -0.014940907399031584, 0.0009456798114370427,
    -6.613291613893255E-05, 4.81563298214449E-06, -3.5880839587593E-07,  2.71601187416E-08,
    -2.08070991223E-09,     1.6093838692E-10,    -1.254709791E-11,       9.8472647E-13,
    -7.772369E-14,          6.16483E-15,         -4.9107E-16,            3.927E-17,
    -3.15E-18,              2.5E-19,             -2.0E-20};

double DebyeOrder::small_form(double x) const {
  switch (n) {
    case 1: return ((x - 9.0) * x + 36.0) / 36.0;
    case 2: return ((x - 8.0) * x + 24.0) / 24.0;
    case 3: return ((x - 7.5) * x + 20.0) / 20.0;
    default: return ((2.5 * x - 18.0) * x + 45.0) / 45.0;
  }
}

double DebyeOrder::linear_term(double x) const {
  switch (n) {
    case 1: return x / 4.0;
    case 2: return x / 3.0;
    case 3: return 3.0 * x / 8.0;
    default: return 2.0 * x / 5.0;
  }
}

double DebyeOrder::leading(double x) const {
  switch (n) {
    case 1: return 1.0 / (0.6079271018540267 * x);
    case 2: return 4.808227612638377 / (x * x);
    case 3: return 1.0 / (0.05132991127342167 * x * x * x);
    default: return 99.54506449376352 / (x * x * x * x);
  }
}

double DebyeOrder::p(double z) const {
  switch (n) {
    case 1: return 1.0 + z;
    case 2: return 1.0 + 2.0 * z + 2.0 * z * z;
    case 3: return ((6.0 * z + 6.0) * z + 3.0) * z + 1.0;
    default: return (((24.0 * z + 24.0) * z + 12.0) * z + 4.0) * z + 1.0;
  }
}

double DebyeOrder::closed_sum(double x) const {
  switch (n) {
    case 1: return 1.0 + 1.0 / x;
    case 2: return ((x + 2.0) * x + 2.0) / (x * x);
    case 3: return (((x + 3.0) * x + 6.0) * x + 6.0) / (x * x * x);
    default: return ((((x + 4.0) * x + 12.0) * x + 24.0) * x + 24.0) / (x * x * x * x);
  }
}

constexpr DebyeOrder debye_orders[4] = {
    {1, &adeb1, 0.0, "DEBYE1 doesn't work with negative Argument"},
    {2, &adeb2, 1.4700100144297856E+154, "DEBYE2 doesn't work with negative Argument"},
    {3, &adeb3, 9.566689641864409E+102, "DEBYE3 doesn't work with negative Argument"},
    {4, &adeb4, 2.586240004747969E+77, "DEBYE4 doesn't work with negative Argument"}};

double debye_low_order(const DebyeOrder& d, double x) {
  constexpr double small_limit = 4.2146848510894035E-8;
  constexpr double exp_limit = 708.3964185322641;
  constexpr double series_limit = 35.35050620855721;
  constexpr double negligible = 2.220446049250313E-18;
  if (x < 0.0) {
    set_error(d.message);
    return 0.0;
  }
  const auto& table = *d.table;
  int nterms = 18;
  while (nterms > 0 && std::abs(table[nterms]) <= negligible) --nterms;

  if (x <= 4.0) {
    if (x < small_limit) return d.small_form(x);
    const double t = (x * x / 8.0 - 0.5) - 0.5;
    return cheval(nterms, table, t) - d.linear_term(x);
  }
  if (d.upper_limit > 0.0 && x > d.upper_limit) return 0.0;
  const double lead = d.leading(x);
  if (x >= exp_limit) return lead;
  const double e = std::exp(-x);
  double sum = 0.0;
  if (x <= series_limit) {
    const int nexp = static_cast<int>(exp_limit / x);
    double xk = nexp * x;
    for (int rk = nexp; rk >= 1; --rk) {
      sum = sum * e + d.p(1.0 / xk) / rk;
      xk -= x;
    }
  } else {
    sum = d.closed_sum(x);
  }
  return lead - d.n * e * sum;
}

}  // namespace

float bessj0(float x) {
  const double ax = std::abs(static_cast<double>(x));
  if (ax < 1.0E-5) return 1.0f;
  if (ax < 8.0) {
    const double y = static_cast<double>(x) * x;
    return static_cast<float>(poly_low_first(j0c.p, y) / poly_low_first(j0c.q, y));
  }
  return static_cast<float>(bessel_asymptotic(j0c, ax));
}

float bessj1(float x) {
  const double ax = std::abs(static_cast<double>(x));
  if (ax < 1.0E-5) return 0.0f;
  if (ax < 8.0) {
    const double y = static_cast<double>(x) * x;
    return static_cast<float>(x * poly_low_first(j1c.p, y) / poly_low_first(j1c.q, y));
  }
  const double r = bessel_asymptotic(j1c, ax);
  return static_cast<float>(x < 0.0f ? -r : r);
}

float bessj(int n, float x) {
  if (n < 0) {
    const float r = bessj(-n, x);
    return (n % 2 != 0) ? -r : r;
  }
  if (n == 0) return bessj0(x);
  if (n == 1) return bessj1(x);
  if (x == 0.0f) return 0.0f;

  const double ax = std::abs(static_cast<double>(x));
  const double tox = 2.0 / ax;
  double result;
  if (ax > n) {
    double previous = bessj0(static_cast<float>(ax));
    double current = bessj1(static_cast<float>(ax));
    for (int j = 1; j < n; ++j) {
      const double next = j * tox * current - previous;
      previous = current;
      current = next;
    }
    result = current;
  } else {
    // Downward recurrence is stable here; the sum J0 + 2 J2 + 2 J4 + ... = 1 normalises it.
    constexpr double big = 1.0E+10;
    constexpr double small = 1.0E-10;
    const int m = 2 * ((n + static_cast<int>(std::sqrt(40.0 * n))) / 2);
    bool even = false;
    double previous = 0.0, current = 1.0, sum = 0.0;
    result = 0.0;
    for (int j = m; j >= 1; --j) {
      double next = j * tox * current - previous;
      if (std::abs(next) > big) {
        next *= small;
        current *= small;
        result *= small;
        sum *= small;
      }
      if (even) sum += next;
      even = !even;
      if (j == n) result = current;
      previous = current;
      current = next;
    }
    result /= 2.0 * sum - current;
  }
  if (x < 0.0f && n % 2 == 1) result = -result;
  return static_cast<float>(result);
}

double cheval(int n, std::span<const double> a, double t) {
  if (n < 0 || a.empty()) return 0.0;
  if (static_cast<std::size_t>(n) >= a.size()) n = static_cast<int>(a.size()) - 1;
  if (std::abs(t) < 0.6) {
    const double tt = t + t;
    double u0 = 0.0, u1 = 0.0, u2 = 0.0;
    for (int i = n; i >= 0; --i) {
      u2 = u1;
      u1 = u0;
      u0 = tt * u1 + a[i] - u2;
    }
    return (u0 - u2) / 2.0;
  }
  // Near the ends of [-1, 1] Clenshaw loses accuracy; these forms keep it.
  double d1 = 0.0, d2 = 0.0, u = 0.0;
  if (t >= 0.6) {
    const double tt = (t - 0.5) - 0.5;
    const double tt2 = tt + tt;
    for (int i = n; i >= 0; --i) {
      d2 = d1;
      d1 = tt2 * u + a[i] + d2;
      u += d1;
    }
    return (d1 + d2) / 2.0;
  }
  const double tt = (t + 0.5) + 0.5;
  const double tt2 = tt + tt;
  for (int i = n; i >= 0; --i) {
    d2 = d1;
    d1 = tt2 * u + a[i] - d2;
    u = d1 - u;
  }
  return (d1 - d2) / 2.0;
}

double debye1(double x) { return debye_low_order(debye_orders[0], x); }
double debye2(double x) { return debye_low_order(debye_orders[1], x); }
double debye3(double x) { return debye_low_order(debye_orders[2], x); }
double debye4(double x) { return debye_low_order(debye_orders[3], x); }

double debyen(int n, double x) {
  // Bernoulli numbers B2 .. B24.
  static constexpr std::array<double, 12> b2k{
      1.0 / 6.0,          -1.0 / 30.0,        1.0 / 42.0,           -1.0 / 30.0,
      5.0 / 66.0,         -691.0 / 2730.0,    7.0 / 6.0,            -3617.0 / 510.0,
      43867.0 / 798.0,    -174611.0 / 330.0,  854513.0 / 138.0,     -236364091.0 / 2730.0};
  init_err_mathgen();
  if (std::abs(x) > two_pi) {
    set_error("The absolute value of argument for DEBYEN was greater than 2PI ");
    return 0.0;
  }
  double s = 0.0;
  for (int k = 1; k <= 12; ++k) {
    s += b2k[k - 1] * std::pow(x, 2 * k) / (factorial_dp(2 * k) * (n + 2 * k));
  }
  return 1.0 - x * n / (2.0 * n + 2.0) + n * s;
}

namespace {

double debye_dispatch(int n, double x, double negative_limit) {
  init_err_mathgen();
  if (n < 1) {
    set_error("The order for Debye function was ZERO!");
    return 0.0;
  }
  if (x < 0.0) {
    if (std::abs(x) > negative_limit) {
      set_error("The argument is negative and less than 2Pi");
      return 0.0;
    }
    return debyen(n, x);
  }
  switch (n) {
    case 1: return debye1(x);
    case 2: return debye2(x);
    case 3: return debye3(x);
    case 4: return debye4(x);
    default: break;
  }
  if (x > two_pi) {
    set_error("The argument was greater then 2Pi and the order >= 5!");
    return 0.0;
  }
  return debyen(n, x);
}

}  // namespace

double debye_dp(int n, double x) { return debye_dispatch(n, x, two_pi); }

float debye_sp(int n, float x) {
  const double r = debye_dispatch(n, static_cast<double>(x), static_cast<double>(6.2831855f));
  if (r > 3.4028234663852886E+38) {
    set_error("The value is greater than huge value for real case! in Debye Function");
    return std::numeric_limits<float>::max();
  }
  return static_cast<float>(r);
}

float erf(float x) {
  static constexpr std::array<double, 5> a{7.7105849500132E-05, -0.00133733772997339,
                                           0.0323076579225834, 0.0479137145607681,
                                           0.128379167095513};
  static constexpr std::array<double, 3> b{0.00301048631703895, 0.0538971687740286,
                                           0.375795757275549};
  static constexpr std::array<double, 8> p{-1.36864857382717E-07, 0.564195517478974,
                                           7.21175825088309,      43.1622272220567,
                                           152.98928504694,       339.320816734344,
                                           451.918953711873,      300.459261020162};
  static constexpr std::array<double, 8> q{1.0,              12.7827273196294, 77.0001529352295,
                                           277.585444743988, 638.980264465631, 931.35409485061,
                                           790.950925327898, 300.459260956983};
  static constexpr std::array<double, 5> r{2.10144126479064, 26.2370141675169, 21.3688200555087,
                                           4.6580782871847, 0.282094791773523};
  static constexpr std::array<double, 4> s{94.153775055546, 187.11481179959, 99.0191814623914,
                                           18.0124575948747};
  const double xd = x;
  const double ax = std::abs(xd);
  const double x2 = xd * xd;
  double result;
  if (ax <= 0.5) {
    const double top = poly_high_first(a, x2) + 1.0;
    const double bot = poly_high_first(b, x2) * x2 + 1.0;
    return static_cast<float>(xd * (top / bot));
  }
  if (ax <= 4.0) {
    result = 1.0 - std::exp(-x2) * poly_high_first(p, ax) / poly_high_first(q, ax);
  } else if (ax < 5.8) {
    const double t = 1.0 / x2;
    const double top = poly_high_first(r, t);
    const double bot = poly_high_first(s, t) * t + 1.0;
    result = 1.0 - std::exp(-x2) * (0.564189612865448 - top / (x2 * bot)) / ax;
  } else {
    result = 1.0;
  }
  return static_cast<float>(xd < 0.0 ? -result : result);
}

}  // namespace lorx_math_general
