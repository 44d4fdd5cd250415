// lorx_math_general: the numerical module of the crystallographic support library.
// This header holds the module state; the routines are declared in the headers
// of their groups, which include this one.
#pragma once

#include <string>

namespace lorx_math_general {

inline float epss = 1.0e-5f;    // tolerance of single-precision tests
inline double ep_ss = 1.0e-12;  // tolerance of double-precision tests
inline bool err_mathgen = false;
inline std::string err_mathgen_mess;  // text 150

inline void init_err_mathgen() {
  err_mathgen = false;
  err_mathgen_mess.clear();
}

}  // namespace lorx_math_general
