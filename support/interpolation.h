// Interpolation, sorting and smoothing of lorx_math_general: cubic splines,
// linear interpolation, numerical derivatives, smoothing of a measured curve,
// points along a segment, and index sorts.
//
// Counts `n` are those of the tables as the caller fills them; indices that
// the routines return are 1-based. Sort faults go to err_mathgen.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>

#include "support/lorx_math_general.h"

namespace lorx_math_general {

// Second derivatives y2 of the cubic spline through (x, y) with the given end
// slopes; a slope above 1.0E+30 asks for a natural end. x strictly rising.
void spline(std::span<const float> x, std::span<const float> y, int n, float yp1, float ypn,
            std::span<float> y2);
// The same with both ends fixed to the slope of their end interval.
void second_derivative(std::span<const float> x, std::span<const float> y, int n,
                       std::span<float> y2);
// Spline value at `position`; outside the table it extrapolates the end piece.
void splint(std::span<const float> x, std::span<const float> y, std::span<const float> y2, int n,
            float position, float& value);
// Slopes of the spline at the n points.
void first_derivative(std::span<const float> x, std::span<const float> y, int n,
                      std::span<const float> y2, std::span<float> d1);
void linear_interpolation(std::span<const float> x, std::span<const float> y, float position,
                          float& value);

// Smoothing over at least 7 points; fewer are left as they are (and copied to
// `result`). Without `result`, y is replaced after each pass; with it, y is
// kept and every pass gives the result of the first.
void smoothingvec(std::span<float> y, int n, int passes,
                  std::optional<std::span<float>> result = std::nullopt);

// n points from `start` to `end`, both included, as the columns of a 2 by n
// matrix. The output is cleared first; one too small is made 2 by n.
void points_in_line2d(std::array<float, 2> start, std::array<float, 2> end, int n,
                      Matrix<float>& points);

// Permutation (1-based) that orders the first n values ascending; the array is left as it is.
void sort_i(std::span<const int> array, int n, std::span<int> index);
void sort_r(std::span<const float> array, int n, std::span<int> index);
// Stable counting sort of the permutation p (1-based indices into key) by key.
// An empty key array leaves q as it is; an index outside it is a fault.
void in_sort(std::span<const int> key, int n, std::span<const int> p, std::span<int> q);

// Ascending sort of texts by character code, compared as if blank-padded.
void sort_strings(std::span<std::string> array);
// One partition step: elements before `marker` (1-based) are at most those from it on.
void partition(std::span<std::string> array, int& marker);

}  // namespace lorx_math_general
