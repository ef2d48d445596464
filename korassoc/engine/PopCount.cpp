#include "korassoc/engine/PopCount.h"

#include <bit>

#if (defined(__GNUC__) || defined(__clang__)) && (defined(__x86_64__) || defined(__i386__))
#define KORASSOC_HAS_POPCNT_FORM 1
#endif

namespace korassoc::detail {

namespace {

// Four sums at once: each addition would otherwise wait for the one before.
#define KORASSOC_INTERSECT_AND_COUNT(countBits)             \
  int sums[4] = {0, 0, 0, 0};                               \
  std::size_t i = 0;                                        \
  for (; i + 4 <= words; i += 4) {                          \
    for (std::size_t lane = 0; lane < 4; ++lane) {          \
      const std::uint64_t both = a[i + lane] & b[i + lane]; \
      out[i + lane] = both;                                 \
      sums[lane] += countBits(both);                        \
    }                                                       \
  }                                                         \
  for (; i < words; ++i) {                                  \
    const std::uint64_t both = a[i] & b[i];                 \
    out[i] = both;                                          \
    sums[0] += countBits(both);                             \
  }                                                         \
  return sums[0] + sums[1] + sums[2] + sums[3]

#ifdef KORASSOC_HAS_POPCNT_FORM
// The builtin becomes the machine's instruction only inside a function that is compiled for it.
__attribute__((target("popcnt"))) int intersectAndCountByInstruction(const std::uint64_t* a,
                                                                     const std::uint64_t* b,
                                                                     std::uint64_t* out, std::size_t words) {
  KORASSOC_INTERSECT_AND_COUNT(__builtin_popcountll);
}
#endif

}  // namespace

int portableIntersectAndCount(const std::uint64_t* a, const std::uint64_t* b, std::uint64_t* out,
                              std::size_t words) {
  KORASSOC_INTERSECT_AND_COUNT(std::popcount);
}

#undef KORASSOC_INTERSECT_AND_COUNT

IntersectAndCount bestIntersectAndCount() {
#ifdef KORASSOC_HAS_POPCNT_FORM
  if (__builtin_cpu_supports("popcnt")) return intersectAndCountByInstruction;
#endif
  return portableIntersectAndCount;
}

}  // namespace korassoc::detail
