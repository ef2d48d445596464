// Storage for arrays of 32-bit integers whose length is an int.

#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <new>

namespace korassoc::detail {

// Room for n integers, not initialised; null for none. A negative n throws std::bad_array_new_length: the
// compilers disagree on whether a new-expression does that by itself.
inline std::unique_ptr<int[]> newInts(int n) {
  if (n < 0) {
    throw std::bad_array_new_length();
  }
  return std::unique_ptr<int[]>(n == 0 ? nullptr : new int[static_cast<std::size_t>(n)]);
}

// a + b for two lengths; std::bad_array_new_length when int cannot hold the sum.
inline int lengthSum(int a, int b) {
  if (a > std::numeric_limits<int>::max() - b) {
    throw std::bad_array_new_length();
  }
  return a + b;
}

}  // namespace korassoc::detail
