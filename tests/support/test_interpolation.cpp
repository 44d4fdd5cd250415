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
  // The last point itself stays within reach.
  for (auto [at, want] : {std::pair{1.5f, 15.0f}, {3.0f, 10.0f}, {2.0f, 20.0f}, {7.0f, 3.0f}, {8.0f, 4.0f}}) {
    float v = 0.0f;
    lmg::linear_interpolation(x, y, at, v);
    EXPECT_FLOAT_EQ(v, want) << at;
  }
}

TEST(Smoothing, WeightsAndPassModes) {
  std::vector<float> c(9, 2.5f);
  lmg::smoothingvec(c, 9, 3);
  for (float v : c) EXPECT_FLOAT_EQ(v, 2.5f);

  std::vector<float> spike{1, 0, 0, 0, 0, 0, 0};
  lmg::smoothingvec(spike, 7, 1);
  const float want[] = {0.0f, 10.0f / 26.0f, 5.0f / 31.0f, 1.0f / 32.0f, 0.0f};
  for (int i = 0; i < 5; ++i) EXPECT_FLOAT_EQ(spike[i], want[i]) << i;

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
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(p(0, i), i, 1e-5f) << i;
    EXPECT_NEAR(p(1, i), i, 1e-5f) << i;
  }
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

// The index must be a permutation that orders the values, which stay put.
template <class T, class Sort>
void expect_index_sort(const std::vector<T>& values, Sort sort) {
  const int n = static_cast<int>(values.size());
  const auto before = values;
  std::vector<int> index(n);
  sort(values, n, index);
  EXPECT_EQ(values, before);
  std::vector<T> sorted, ref = values;
  for (int k : index) sorted.push_back(values[k - 1]);
  std::sort(ref.begin(), ref.end());
  EXPECT_EQ(sorted, ref) << n;
  std::sort(index.begin(), index.end());
  for (int k = 0; k < n; ++k) ASSERT_EQ(index[k], k + 1);
}

TEST(IndexSorts, MatchAReferenceSortOnRandomData) {
  std::mt19937 gen(12345);
  std::uniform_int_distribution<int> di(-50, 50);  // many ties
  std::uniform_real_distribution<float> dr(-1.0f, 1.0f);
  for (int n : {1, 2, 3, 7, 8, 50, 1000, 20000}) {
    std::vector<int> ai(n);
    std::vector<float> ar(n);
    for (auto& v : ai) v = di(gen);
    for (auto& v : ar) v = dr(gen);
    expect_index_sort(ai, [](auto&... a) { lmg::sort_i(a...); });
    expect_index_sort(ar, [](auto&... a) { lmg::sort_r(a...); });
    EXPECT_FALSE(lmg::err_mathgen);
  }
}

TEST(IndexSorts, CountingSortIsStable) {
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
