// Fractions and symmetry symbols of lorx_string_utilities: between a real
// 3 by 3 matrix with an origin shift and texts such as "a+b,a-b,c;1/2,0,0".
//
// Row i of a matrix is the i-th comma-separated item of a symbol; within an
// item the coefficient of the j-th letter of the three-letter code ("abc",
// "xyz", ...) is the element in column j. Faults go to err_string and
// err_string_mess; small rationals are found within the tolerance epss.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "support/lorx_math_general.h"
#include "support/lorx_string_utilities.h"

namespace lorx_string_utilities {

// The value as "+3/2", "-1/4", "0", "+2" or, failing a fraction, a decimal.
void get_fraction_1dig(float value, std::string& text);  // terms up to 9
void get_fraction_2dig(float value, std::string& text);  // terms up to 24

// "(1/2,0,-1/4)" for a vector of three values.
std::string frac_trans_1dig(std::span<const float, 3> v);
std::string frac_trans_2dig(std::span<const float, 3> v);

// The value of a number or a fraction; a blank text is 1, "+" 1 and "-" -1.
void read_fract(std::string_view text, float& value);

// Coefficients of one linear form in the three letters of `code`, such as "2a-b/3".
void get_num_string(std::string_view text, std::span<float, 3> v, std::string_view code);

// 3 by 3 matrix of a three-item symbol, and the symbol of a matrix.
void get_mat_from_symb(std::string_view text, lorx_math_general::Matrix<float>& matrix,
                       std::string_view code);
void get_symb_from_mat(const lorx_math_general::Matrix<float>& matrix, std::string& text,
                       std::string_view code);

// Matrix and origin of a setting text, either part first, e.g. "(a,b,c;1/2,0,0)".
// `code` holds the three letters and the separator.
void get_transf(std::string_view text, lorx_math_general::Matrix<float>& matrix,
                std::span<float, 3> origin, std::string_view code = "abc;");

}  // namespace lorx_string_utilities
