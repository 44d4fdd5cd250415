// Large buffers written once from end to end: on huge pages they cost one
// page fault per 2 MiB instead of one per 4 KiB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <sys/mman.h>

namespace stand_in {

// A hint only: the kernel may ignore it, and the memory stays as it was.
inline void prefer_huge_pages(const void* data, std::size_t bytes) {
  constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;
  const auto at = reinterpret_cast<std::uintptr_t>(data);
  const std::uintptr_t begin = (at + kHugePage - 1) & ~(kHugePage - 1);
  const std::uintptr_t end = (at + bytes) & ~(kHugePage - 1);
  if (data != nullptr && end > begin) ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

template <class T>
void reserve_big(std::vector<T>& v, std::size_t n) {
  v.reserve(n);
  prefer_huge_pages(v.data(), n * sizeof(T));
}

template <class T>
std::vector<T> big_vector(std::size_t n, const T& value) {
  std::vector<T> v;
  reserve_big(v, n);
  v.assign(n, value);
  return v;
}

}  // namespace stand_in
