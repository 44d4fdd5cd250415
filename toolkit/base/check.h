// Checks of handles and indices that hold in a correct program. A debug build
// stops at the first one that fails, naming the place and the condition; a
// release build does not look.
#pragma once

#include <array>
#include <cstddef>

[[noreturn]] void zelv_check_failed(const char* condition, const char* file, int line);

#ifdef NDEBUG
#define ZELV_CHECK(condition) ((void)0)
#else
#define ZELV_CHECK(condition) ((condition) ? (void)0 : zelv_check_failed(#condition, __FILE__, __LINE__))
#endif

namespace zelv {

// A table sized by a toolkit limit (windows, dialogs), indexed by handle: an
// index outside it is caught in a debug build instead of reaching memory.
template <class T, std::size_t N>
struct Slots : std::array<T, N> {
  constexpr T& operator[](std::size_t i) {
    ZELV_CHECK(i < N);
    return std::array<T, N>::operator[](i);
  }
  constexpr const T& operator[](std::size_t i) const {
    ZELV_CHECK(i < N);
    return std::array<T, N>::operator[](i);
  }
};

}  // namespace zelv
