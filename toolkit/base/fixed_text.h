// Blank-padded text of a declared width, as the public routines and the job
// state hold it.
//
// Convention for text results of public routines: an output argument
// `std::string& text` that arrives non-empty has its size as declared width;
// the routine leaves it blank-padded (or cut) to exactly that size, and a
// routine that reports "Variable too small to receive text" compares against
// it. An output that arrives empty has no width limit and receives the text
// as produced, without padding.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

// The text without its trailing blanks.
inline std::string_view trimmed(std::string_view s) {
  auto end = s.find_last_not_of(' ');
  return end == std::string_view::npos ? std::string_view{} : s.substr(0, end + 1);
}

// The text without leading blanks (left-adjusted, not padded).
inline std::string_view left_trimmed(std::string_view s) {
  auto start = s.find_first_not_of(' ');
  return start == std::string_view::npos ? std::string_view{} : s.substr(start);
}

inline bool is_blank(std::string_view s) { return s.find_first_not_of(' ') == std::string_view::npos; }

// The text padded with blanks or cut to width.
inline std::string padded(std::string_view s, std::size_t width) {
  std::string r(s.substr(0, std::min(s.size(), width)));
  r.resize(width, ' ');
  return r;
}

// Stores a result into an output text by the convention above.
inline void assign_out(std::string& out, std::string_view value) {
  if (out.empty()) out.assign(value);
  else out = padded(value, out.size());
}

// A text field of N characters: assignment pads or cuts.
template <std::size_t N>
class Fixed {
 public:
  Fixed() { buf_.fill(' '); }
  Fixed(std::string_view s) { assign(s); }  // NOLINT: assignment from text is the point
  Fixed& operator=(std::string_view s) { assign(s); return *this; }
  void assign(std::string_view s) {
    buf_.fill(' ');
    std::copy_n(s.begin(), std::min(s.size(), N), buf_.begin());
  }
  static constexpr std::size_t width() { return N; }
  std::string_view view() const { return {buf_.data(), N}; }   // full width, padded
  std::string_view trim() const { return trimmed(view()); }     // without trailing blanks
  std::string str() const { return std::string(trim()); }
  bool blank() const { return is_blank(view()); }
  char& operator[](std::size_t i) { return buf_[i]; }
  char operator[](std::size_t i) const { return buf_[i]; }
  friend bool operator==(const Fixed& a, const Fixed& b) { return a.buf_ == b.buf_; }

 private:
  std::array<char, N> buf_;
};
