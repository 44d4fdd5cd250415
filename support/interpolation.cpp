#include "support/interpolation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "support/math_helpers.h"

namespace lorx_math_general {

namespace {

constexpr float natural_end = 1.0E+30f;

// The spline solve shared by spline() and second_derivative(): the end rows
// are given as (y2(1), u(1)) and (qn, un).
void solve_spline(std::span<const float> x, std::span<const float> y, int n, float y2first,
                  float ufirst, float qn, float un, std::span<float> y2) {
  std::vector<float> u(static_cast<std::size_t>(n));
  y2[0] = y2first;
  u[0] = ufirst;
  for (int i = 1; i < n - 1; ++i) {
    const float sig = (x[i] - x[i - 1]) / (x[i + 1] - x[i - 1]);
    const float p = sig * y2[i - 1] + 2.0f;
    y2[i] = (sig - 1.0f) / p;
    u[i] = (6.0f *
                ((y[i + 1] - y[i]) / (x[i + 1] - x[i]) - (y[i] - y[i - 1]) / (x[i] - x[i - 1])) /
                (x[i + 1] - x[i - 1]) -
            sig * u[i - 1]) /
           p;
  }
  y2[n - 1] = (un - qn * u[n - 2]) / (qn * y2[n - 2] + 1.0f);
  for (int k = n - 2; k >= 0; --k) y2[k] = y2[k] * y2[k + 1] + u[k];
}

// The part of n that all three tables can serve.
int usable(int n, std::size_t a, std::size_t b, std::size_t c) {
  return std::min<int>(n, static_cast<int>(std::min({a, b, c})));
}

// Index quicksort on 1-based indices, with insertion sort for short ranges.
template <typename T>
void index_sort(std::span<const T> arr, int n, std::span<int> index) {
  constexpr int small_range = 6;
  constexpr int stack_size = 50;
  init_err_mathgen();
  n = std::min({n, static_cast<int>(arr.size()), static_cast<int>(index.size())});
  if (n < 1) return;
  auto key = [&](int pos) { return arr[index[pos - 1] - 1]; };
  auto idx = [&](int pos) -> int& { return index[pos - 1]; };
  for (int j = 1; j <= n; ++j) idx(j) = j;

  int stack[stack_size];
  int top = 0;
  int lower = 1, upper = n;
  for (;;) {
    if (upper - lower <= small_range) {
      for (int j = lower + 1; j <= upper; ++j) {
        const int moving = idx(j);
        const T a = arr[moving - 1];
        int i = j - 1;
        for (; i >= lower; --i) {
          if (key(i) <= a) break;
          idx(i + 1) = idx(i);
        }
        idx(i + 1) = moving;
      }
      if (top == 0) return;
      upper = stack[--top];
      lower = stack[--top];
      continue;
    }
    // Median of three, the middle moved behind the first, serves as pivot and sentinels.
    const int k = (lower + upper) / 2;
    std::swap(idx(k), idx(lower + 1));
    if (key(lower) > key(upper)) std::swap(idx(lower), idx(upper));
    if (key(lower + 1) > key(upper)) std::swap(idx(lower + 1), idx(upper));
    if (key(lower) > key(lower + 1)) std::swap(idx(lower), idx(lower + 1));
    int i = lower + 1;
    int j = upper;
    const int pivot_index = idx(lower + 1);
    const T pivot = arr[pivot_index - 1];
    for (;;) {
      do ++i; while (key(i) < pivot);
      do --j; while (key(j) > pivot);
      if (j < i) break;
      std::swap(idx(i), idx(j));
    }
    idx(lower + 1) = idx(j);
    idx(j) = pivot_index;
    if (top + 2 > stack_size) {
      err_mathgen = true;
      err_mathgen_mess = " NSTACK too small in SORT";
      return;
    }
    if (upper - i + 1 >= j - lower) {
      stack[top++] = i;
      stack[top++] = upper;
      upper = j - 1;
    } else {
      stack[top++] = lower;
      stack[top++] = j - 1;
      lower = i;
    }
  }
}

// Ordering of blank-padded texts: a shorter text reads as if padded with blanks.
int compare_padded(const std::string& a, const std::string& b) {
  const std::size_t len = std::max(a.size(), b.size());
  for (std::size_t i = 0; i < len; ++i) {
    const unsigned char ca = i < a.size() ? static_cast<unsigned char>(a[i]) : ' ';
    const unsigned char cb = i < b.size() ? static_cast<unsigned char>(b[i]) : ' ';
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  return 0;
}

}  // namespace

void spline(std::span<const float> x, std::span<const float> y, int n, float yp1, float ypn,
            std::span<float> y2) {
  n = usable(n, x.size(), y.size(), y2.size());
  if (n < 2) return;
  float y2first = 0.0f, ufirst = 0.0f, qn = 0.0f, un = 0.0f;
  if (!(yp1 > natural_end)) {
    y2first = -0.5f;
    ufirst = (3.0f / (x[1] - x[0])) * ((y[1] - y[0]) / (x[1] - x[0]) - yp1);
  }
  if (!(ypn > natural_end)) {
    const float h = x[n - 1] - x[n - 2];
    qn = 0.5f;
    un = (3.0f / h) * (ypn - (y[n - 1] - y[n - 2]) / h);
  }
  solve_spline(x, y, n, y2first, ufirst, qn, un, y2);
}

void second_derivative(std::span<const float> x, std::span<const float> y, int n,
                       std::span<float> y2) {
  n = usable(n, x.size(), y.size(), y2.size());
  if (n < 2) return;
  solve_spline(x, y, n, -0.5f, 0.0f, 0.5f, 0.0f, y2);
}

void splint(std::span<const float> x, std::span<const float> y, std::span<const float> y2, int n,
            float position, float& value) {
  n = usable(n, x.size(), y.size(), y2.size());
  if (n < 1) return;
  if (n == 1) {
    value = y[0];
    return;
  }
  int lower = 1, upper = n;
  while (upper - lower > 1) {
    const int middle = (upper + lower) / 2;
    if (x[middle - 1] <= position) lower = middle;
    else upper = middle;
  }
  const int lo = lower - 1, hi = upper - 1;
  const float h = x[hi] - x[lo];
  if (h == 0.0f) {  // repeated abscissa: no interval to interpolate in
    value = y[lo];
    return;
  }
  const float a = (x[hi] - position) / h;
  const float b = (position - x[lo]) / h;
  value = a * y[lo] + b * y[hi] +
          ((a * a * a - a) * y2[lo] + (b * b * b - b) * y2[hi]) * (h * h) / 6.0f;
}

void first_derivative(std::span<const float> x, std::span<const float> y, int n,
                      std::span<const float> y2, std::span<float> d1) {
  n = std::min(usable(n, x.size(), y.size(), y2.size()), static_cast<int>(d1.size()));
  if (n < 2) return;
  for (int i = 0; i < n; ++i) {
    const float h = i < n - 1 ? x[i + 1] - x[i] : x[n - 1] - x[n - 2];
    float above = 0.0f, below = 0.0f;
    splint(x, y, y2, n, x[i] + h / 2.0f, above);
    splint(x, y, y2, n, x[i] - h / 2.0f, below);
    d1[i] = (above - below) / h;
  }
}

void linear_interpolation(std::span<const float> x, std::span<const float> y, float position,
                          float& value) {
  const int n = std::min(x.size(), y.size());
  if (n < 1) return;
  if (n == 1) {
    value = y[0];
    return;
  }
  // From the last point on there is no interval behind it: the last one serves.
  const int j = std::min(locate_r(x, n, position), n - 1) - 1;
  value = y[j] + (position - x[j]) * (y[j + 1] - y[j]) / (x[j + 1] - x[j]);
}

void smoothingvec(std::span<float> y, int n, int passes, std::optional<std::span<float>> result) {
  n = std::min(n, static_cast<int>(y.size()));
  if (result) n = std::min(n, static_cast<int>(result->size()));
  if (n < 1) return;
  if (n < 7) {  // too short for the filter: left as it is
    if (result) std::copy_n(y.begin(), n, result->begin());
    return;
  }
  std::vector<float> t(static_cast<std::size_t>(n));
  for (int pass = 0; pass < passes; ++pass) {
    auto v = [&](int i) { return y[i - 1]; };  // 1-based view of y
    t[0] = (10.0f * v(2) + 5.0f * v(3) + v(4)) / 16.0f;
    t[1] = (10.0f * (v(1) + v(3)) + 5.0f * v(4) + v(5)) / 26.0f;
    t[2] = (10.0f * (v(2) + v(4)) + 5.0f * (v(1) + v(5)) + v(6)) / 31.0f;
    for (int i = 4; i <= n - 3; ++i) {
      t[i - 1] = (10.0f * (v(i - 1) + v(i + 1)) + 5.0f * (v(i - 2) + v(i + 2)) + v(i - 3) +
                  v(i + 3)) /
                 32.0f;
    }
    t[n - 3] = (10.0f * (v(n - 1) + v(n - 3)) + 5.0f * (v(n) + v(n - 4)) + v(n - 5)) / 31.0f;
    t[n - 2] = (10.0f * (v(n) + v(n - 2)) + 5.0f * v(n - 3) + v(n - 4)) / 26.0f;
    t[n - 1] = (10.0f * v(n - 1) + 5.0f * v(n - 2) + v(n - 3)) / 16.0f;
    if (result) std::copy(t.begin(), t.end(), result->begin());
    else std::copy(t.begin(), t.end(), y.begin());
  }
}

void points_in_line2d(std::array<float, 2> start, std::array<float, 2> end, int n,
                      Matrix<float>& points) {
  constexpr float tiny = 1.0E-4f;
  if (points.rows() != 2 || points.cols() < n) points = Matrix<float>(2, n);
  points.fill(0.0f);
  auto set = [&](int i, float x, float y) {
    points(0, i) = x;
    points(1, i) = y;
  };
  const float dx = end[0] - start[0];
  const float dy = end[1] - start[1];
  const float length = std::sqrt(dx * dx + dy * dy);
  if (n < 2 || length <= tiny) return;
  set(0, start[0], start[1]);
  set(n - 1, end[0], end[1]);
  if (n == 2) return;
  const float steps = static_cast<float>(n - 1);
  if (std::abs(dy) <= tiny) {
    const float step = std::abs(dx) / steps;
    const float dir = dx >= 0.0f ? 1.0f : -1.0f;
    for (int i = 1; i < n - 1; ++i) set(i, start[0] + dir * step * i, start[1]);
    return;
  }
  if (std::abs(dx) <= tiny) {
    const float step = std::abs(dy) / steps;
    const float dir = dy >= 0.0f ? 1.0f : -1.0f;
    for (int i = 1; i < n - 1; ++i) set(i, start[0], start[1] + dir * step * i);
    return;
  }
  // Each inner point is where the line meets a circle around the start.
  const float m = dy / dx;
  const float b = start[1] - m * start[0];
  const float a2 = m * m + 1.0f;
  const float b2 = 2.0f * ((b - start[1]) * m - start[0]);
  for (int i = 1; i < n - 1; ++i) {
    const float r = length * static_cast<float>(i) / steps;
    const float c2 = start[0] * start[0] + (b - start[1]) * (b - start[1]) - r * r;
    const float root = std::sqrt(std::max(0.0f, b2 * b2 - 4.0f * a2 * c2));
    float x = (-b2 + root) / (2.0f * a2);
    if (x < start[0] || x > end[0]) x = (-b2 - root) / (2.0f * a2);
    set(i, x, m * x + b);
  }
}

void sort_i(std::span<const int> array, int n, std::span<int> index) {
  index_sort(array, n, index);
}

void sort_r(std::span<const float> array, int n, std::span<int> index) {
  index_sort(array, n, index);
}

void in_sort(std::span<const int> key, int n, std::span<const int> p, std::span<int> q) {
  n = std::min({n, static_cast<int>(p.size()), static_cast<int>(q.size())});
  if (key.empty() || n < 1) return;  // no keys: nothing to order by
  const auto [lo, hi] = std::minmax_element(key.begin(), key.end());
  const int kmin = *lo;
  const std::size_t span = static_cast<std::size_t>(static_cast<long long>(*hi) - kmin) + 1;
  for (int i = 0; i < n; ++i) {
    if (p[i] < 1 || p[i] > static_cast<int>(key.size())) {
      err_mathgen = true;
      err_mathgen_mess = " Permutation index outside the key array in IN_SORT";
      return;
    }
  }
  std::vector<int> start(span + 1, 0);
  for (int i = 0; i < n; ++i) ++start[static_cast<std::size_t>(key[p[i] - 1] - kmin) + 1];
  for (std::size_t k = 1; k <= span; ++k) start[k] += start[k - 1];
  for (int i = 0; i < n; ++i) {
    q[start[static_cast<std::size_t>(key[p[i] - 1] - kmin)]++] = p[i];
  }
}

void partition(std::span<std::string> array, int& marker) {
  const int n = static_cast<int>(array.size());
  if (n <= 1) return;
  const std::string pivot = array[0];
  int i = 0, j = n + 1;  // 1-based scan positions, starting outside the array
  for (;;) {
    do --j; while (compare_padded(array[j - 1], pivot) > 0);
    do ++i; while (compare_padded(array[i - 1], pivot) < 0);
    if (i < j) {
      std::swap(array[i - 1], array[j - 1]);
    } else {
      marker = (i == j) ? i + 1 : i;
      return;
    }
  }
}

void sort_strings(std::span<std::string> array) {
  // Recurse on the shorter side and loop on the longer, so that sorted input
  // does not need a call depth of the array's size.
  while (array.size() > 1) {
    int marker = 1;
    partition(array, marker);
    auto front = array.first(static_cast<std::size_t>(marker - 1));
    auto back = array.subspan(static_cast<std::size_t>(marker - 1));
    if (front.size() < back.size()) {
      sort_strings(front);
      array = back;
    } else {
      sort_strings(back);
      array = front;
    }
  }
}

}  // namespace lorx_math_general
