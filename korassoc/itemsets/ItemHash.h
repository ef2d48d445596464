// The hash code of a sequence of items, for look-ups that have no ItemSet at hand.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace korassoc::detail {

// The 47 consecutive primes from 7 to 229. Position i of a sequence is multiplied by prime i mod 47.
inline constexpr std::array<std::uint32_t, 47> kHashPrimes = {
    7,   11,  13,  17,  19,  23,  29,  31,  37,  41,  43,  47,  53,  59,  61,  67,
    71,  73,  79,  83,  89,  97,  101, 103, 107, 109, 113, 127, 131, 137, 139, 149,
    151, 157, 163, 167, 173, 179, 181, 191, 193, 197, 199, 211, 223, 227, 229};

// The part that item contributes at position (0, 1, ...): the hash code of a sequence is the XOR of its
// parts.
constexpr int hashPart(int item, int position) {
  const std::uint32_t prime = kHashPrimes[static_cast<std::size_t>(position) % kHashPrimes.size()];
  return static_cast<int>(prime * static_cast<std::uint32_t>(item));  // wraps modulo 2^32
}

// The hash code of the n items as they stand: it depends on their positions, so it identifies a set only when
// they are sorted. 0 for none; items may be null then.
constexpr int hashItems(const int* items, int n) {
  int hash = 0;
  for (int i = 0; i < n; ++i) {
    hash ^= hashPart(items[i], i);
  }
  return hash;
}

}  // namespace korassoc::detail
