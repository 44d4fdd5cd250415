#include "support/interpolation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace lmg = lorx_math_general;

namespace {

float cubic(float x) { return 0.5f * x * x * x - 2.0f * x * x + x - 3.0f; }
float cubic_slope(float x) { return 1.5f * x * x - 4.0f * x + 1.0f; }

float spline_at(const std::vector<float>& x, const std::vector<float>& y,
                const std::vector<float>& y2, float at) {
  float v = -1.0f;
  lmg::splint(x, y, y2, static_cast<int>(x.size()), at, v);
  return v;
}

}  // namespace

TEST(CubicSpline, ClampedSplineReproducesACubic) {
  const std::vector<float> x{-1.0f, -0.4f, 0.3f, 1.0f, 2.2f, 2.5f, 4.0f};
  std::vector<float> y(x.size()), y2(x.size()), d1(x.size());
  std::transform(x.begin(), x.end(), y.begin(), cubic);
  lmg::spline(x, y, static_cast<int>(x.size()), cubic_slope(x.front()), cubic_slope(x.back()), y2);
  for (std::size_t i = 0; i < x.size(); ++i) EXPECT_NEAR(y2[i], 3.0f * x[i] - 4.0f, 1.0E-4f);
  for (float at = -1.0f; at <= 4.0f; at += 0.125f) EXPECT_NEAR(spline_at(x, y, y2, at), cubic(at), 1.0E-4f);
  // The cubic continues outside the table: the end pieces extrapolate it.
  EXPECT_NEAR(spline_at(x, y, y2, -1.5f), cubic(-1.5f), 1.0E-3f);
  EXPECT_NEAR(spline_at(x, y, y2, 4.5f), cubic(4.5f), 1.0E-3f);
  // A central difference over h of a cubic is off by h^2/24 times its third derivative (3).
  lmg::first_derivative(x, y, static_cast<int>(x.size()), y2, d1);
  for (std::size_t i = 0; i + 1 < x.size(); ++i) {
    const float h = x[i + 1] - x[i];
    EXPECT_NEAR(d1[i], cubic_slope(x[i]) + h * h / 8.0f, 1.0E-3f) << i;
  }
}

TEST(CubicSpline, NaturalSplineThroughALineIsTheLine) {
  const std::vector<float> x{0.0f, 1.0f, 1.5f, 3.0f, 7.0f};
  std::vector<float> y(x.size()), y2(x.size(), 9.0f), d1(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) y[i] = 2.0f - 0.75f * x[i];
  lmg::spline(x, y, 5, 2.0E+30f, 2.0E+30f, y2);
  for (float v : y2) EXPECT_NEAR(v, 0.0f, 1.0E-6f);
  EXPECT_NEAR(spline_at(x, y, y2, 2.2f), 2.0f - 0.75f * 2.2f, 1.0E-6f);
  lmg::first_derivative(x, y, 5, y2, d1);
  for (float v : d1) EXPECT_NEAR(v, -0.75f, 1.0E-5f);
  // Fixed ends are the end-interval slopes, which a line meets too.
  lmg::second_derivative(x, y, 5, y2);
  for (float v : y2) EXPECT_NEAR(v, 0.0f, 1.0E-6f);
}

TEST(CubicSpline, FixedEndsEqualClampingToTheEndSecants) {
  const std::vector<float> x{0.0f, 0.7f, 1.1f, 2.0f, 3.4f, 4.0f};
  const std::vector<float> y{1.0f, 2.5f, 0.3f, -1.0f, 0.8f, 2.0f};
  std::vector<float> fixed(6), clamped(6);
  lmg::second_derivative(x, y, 6, fixed);
  lmg::spline(x, y, 6, (y[1] - y[0]) / (x[1] - x[0]), (y[5] - y[4]) / (x[5] - x[4]), clamped);
  for (int i = 0; i < 6; ++i) EXPECT_NEAR(fixed[i], clamped[i], 1.0E-4f);
  // And the spline interpolates its nodes.
  for (int i = 0; i < 6; ++i) EXPECT_NEAR(spline_at(x, y, fixed, x[i]), y[i], 1.0E-5f);
}

TEST(LinearInterpolation, StraightLineBetweenBracketingPoints) {
  const std::vector<float> x{1.0f, 2.0f, 4.0f, 8.0f};
  const std::vector<float> y{10.0f, 20.0f, 0.0f, 4.0f};
  float v = 0.0f;
  lmg::linear_interpolation(x, y, 1.5f, v);
  EXPECT_FLOAT_EQ(v, 15.0f);
  lmg::linear_interpolation(x, y, 3.0f, v);
  EXPECT_FLOAT_EQ(v, 10.0f);
  lmg::linear_interpolation(x, y, 2.0f, v);
  EXPECT_FLOAT_EQ(v, 20.0f);
  lmg::linear_interpolation(x, y, 7.0f, v);
  EXPECT_FLOAT_EQ(v, 3.0f);
  lmg::linear_interpolation(x, y, 8.0f, v);  // the last point itself stays within reach
  EXPECT_FLOAT_EQ(v, 4.0f);
}

TEST(Smoothing, WeightsAndPassModes) {
  std::vector<float> c(9, 2.5f);
  lmg::smoothingvec(c, 9, 3);
  for (float v : c) EXPECT_FLOAT_EQ(v, 2.5f);

  std::vector<float> spike{1, 0, 0, 0, 0, 0, 0};
  lmg::smoothingvec(spike, 7, 1);
  EXPECT_FLOAT_EQ(spike[0], 0.0f);
  EXPECT_FLOAT_EQ(spike[1], 10.0f / 26.0f);
  EXPECT_FLOAT_EQ(spike[2], 5.0f / 31.0f);
  EXPECT_FLOAT_EQ(spike[3], 1.0f / 32.0f);
  EXPECT_FLOAT_EQ(spike[4], 0.0f);

  // With a result, y stays and repeated passes equal one pass.
  std::vector<float> y{3, 1, 4, 1, 5, 9, 2, 6, 5, 3};
  const std::vector<float> original = y;
  std::vector<float> once(10), thrice(10);
  lmg::smoothingvec(y, 10, 1, std::span<float>(once));
  lmg::smoothingvec(y, 10, 3, std::span<float>(thrice));
  EXPECT_EQ(y, original);
  EXPECT_EQ(once, thrice);
  // Without it the passes accumulate.
  std::vector<float> acc = y;
  lmg::smoothingvec(acc, 10, 2);
  std::vector<float> twice = once;
  lmg::smoothingvec(twice, 10, 1);
  EXPECT_EQ(acc, twice);
}

TEST(PointsInLine, AxisParallelAndSlantedSegments) {
  lmg::Matrix<float> p(2, 5, 7.0f);
  auto point = [&](int i) { return std::array<float, 2>{p(0, i), p(1, i)}; };
  lmg::points_in_line2d({0, 0}, {2, 0}, 3, p);
  EXPECT_EQ(point(1), (std::array<float, 2>{1, 0}));
  EXPECT_EQ(point(2), (std::array<float, 2>{2, 0}));
  EXPECT_EQ(point(3), (std::array<float, 2>{0, 0}));  // cleared behind the n points

  lmg::points_in_line2d({0, 0}, {0, -2}, 3, p);
  EXPECT_EQ(point(1), (std::array<float, 2>{0, -1}));

  lmg::points_in_line2d({0, 0}, {3, 3}, 4, p);
  EXPECT_NEAR(p(0, 1), 1.0f, 1e-5f);
  EXPECT_NEAR(p(1, 1), 1.0f, 1e-5f);
  EXPECT_NEAR(p(0, 2), 2.0f, 1e-5f);
  EXPECT_NEAR(p(1, 2), 2.0f, 1e-5f);

  // Right to left along a slope: the other root must be taken.
  lmg::points_in_line2d({4, 1}, {0, -1}, 5, p);
  for (int i = 0; i < 5; ++i) {
    EXPECT_NEAR(p(0, i), 4.0f - i, 1e-4f) << i;
    EXPECT_NEAR(p(1, i), 1.0f - 0.5f * i, 1e-4f) << i;
  }

  lmg::points_in_line2d({1, 1}, {1, 1}, 3, p);  // no length: all cleared
  EXPECT_EQ(p, lmg::Matrix<float>(2, 5));

  lmg::Matrix<float> small;
  lmg::points_in_line2d({0, 0}, {1, 0}, 3, small);
  EXPECT_EQ(small.cols(), 3);
  EXPECT_FLOAT_EQ(small(0, 1), 0.5f);
}

TEST(IndexSorts, MatchAReferenceSortOnRandomData) {
  std::mt19937 gen(12345);
  for (int n : {1, 2, 3, 7, 8, 50, 1000, 20000}) {
    std::uniform_int_distribution<int> di(-50, 50);  // many ties
    std::uniform_real_distribution<float> dr(-1.0f, 1.0f);
    std::vector<int> ai(n);
    std::vector<float> ar(n);
    for (auto& v : ai) v = di(gen);
    for (auto& v : ar) v = dr(gen);
    const auto ai0 = ai;
    const auto ar0 = ar;
    std::vector<int> index(n);
    lmg::sort_i(ai, n, index);
    EXPECT_EQ(ai, ai0);
    std::vector<int> sorted_i;
    for (int k : index) sorted_i.push_back(ai[k - 1]);
    auto ref_i = ai;
    std::sort(ref_i.begin(), ref_i.end());
    EXPECT_EQ(sorted_i, ref_i) << n;
    std::vector<int> perm = index;
    std::sort(perm.begin(), perm.end());
    for (int k = 0; k < n; ++k) ASSERT_EQ(perm[k], k + 1);

    lmg::sort_r(ar, n, index);
    EXPECT_EQ(ar, ar0);
    std::vector<float> sorted_r;
    for (int k : index) sorted_r.push_back(ar[k - 1]);
    auto ref_r = ar;
    std::sort(ref_r.begin(), ref_r.end());
    EXPECT_EQ(sorted_r, ref_r) << n;
    EXPECT_FALSE(lmg::err_mathgen);
  }
  const std::vector<float> small{3, 1, 2};
  std::vector<int> index(3);
  lmg::sort_r(small, 3, index);
  EXPECT_EQ(index, (std::vector<int>{2, 3, 1}));
}

TEST(IndexSorts, CountingSortIsStable) {
  std::vector<int> q(3);
  lmg::in_sort(std::vector<int>{2, 1, 2}, 3, std::vector<int>{1, 2, 3}, q);
  EXPECT_EQ(q, (std::vector<int>{2, 1, 3}));

  std::mt19937 gen(7);
  std::uniform_int_distribution<int> dk(-5, 20);
  std::vector<int> key(300);
  for (auto& k : key) k = dk(gen);
  std::vector<int> p(200);
  std::iota(p.begin(), p.end(), 50);
  std::shuffle(p.begin(), p.end(), gen);
  std::vector<int> out(200);
  lmg::in_sort(key, 200, p, out);
  auto ref = p;
  std::stable_sort(ref.begin(), ref.end(), [&](int a, int b) { return key[a - 1] < key[b - 1]; });
  EXPECT_EQ(out, ref);
}

TEST(StringSort, SortsLikeBlankPaddedTextCompare) {
  std::vector<std::string> s{"b", "a", "a"};
  lmg::sort_strings(s);
  EXPECT_EQ(s, (std::vector<std::string>{"a", "a", "b"}));

  std::mt19937 gen(3);
  std::uniform_int_distribution<int> len(0, 4), ch('a', 'd');
  std::vector<std::string> words(500);
  for (auto& w : words) {
    w.resize(static_cast<std::size_t>(len(gen)));
    for (auto& c : w) c = static_cast<char>(ch(gen));
    w.resize(4, ' ');  // as held in a field of 4
  }
  auto ref = words;
  std::sort(ref.begin(), ref.end());
  lmg::sort_strings(words);
  EXPECT_EQ(words, ref);

  // Already sorted input of some length must not exhaust the call stack.
  std::vector<std::string> many(3000);
  for (std::size_t i = 0; i < many.size(); ++i) many[i] = std::to_string(100000 + i);
  auto copy = many;
  lmg::sort_strings(many);
  EXPECT_EQ(many, copy);

  int marker = 0;
  std::vector<std::string> part{"m", "z", "a", "q", "b"};
  lmg::partition(part, marker);
  for (int i = 0; i < marker - 1; ++i)
    for (int j = marker - 1; j < 5; ++j) EXPECT_LE(part[i], part[j]);
}
