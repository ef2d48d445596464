// Intersecting bit sets and counting what is left, with the machine's own instruction where it has one.

#pragma once

#include <cstddef>
#include <cstdint>

namespace korassoc::detail {

// Writes a AND b, words 64-bit words each, to out (which may be a or b) and returns the number of bits set in
// it.
using IntersectAndCount = int (*)(const std::uint64_t* a, const std::uint64_t* b, std::uint64_t* out,
                                  std::size_t words);

// The fastest form that this machine runs; portableIntersectAndCount() where it has no instruction for it.
// All forms give the same answers.
IntersectAndCount bestIntersectAndCount();
int portableIntersectAndCount(const std::uint64_t* a, const std::uint64_t* b, std::uint64_t* out,
                              std::size_t words);

}  // namespace korassoc::detail
