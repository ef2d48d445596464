#include "korassoc/engine/PopCount.h"

#include <gtest/gtest.h>

#include <bitset>
#include <cstdint>
#include <random>
#include <vector>

namespace {

using korassoc::detail::bestIntersectAndCount;
using korassoc::detail::portableIntersectAndCount;

TEST(IntersectAndCount, CountsTheCommonBitsInEveryForm) {
  std::mt19937_64 random(1);
  for (std::size_t words = 0; words < 40; ++words) {
    std::vector<std::uint64_t> a(words);
    std::vector<std::uint64_t> b(words);
    std::vector<std::uint64_t> expected(words);
    int bits = 0;
    for (std::size_t i = 0; i < words; ++i) {
      a[i] = random();
      b[i] = random() | random();
      expected[i] = a[i] & b[i];
      bits += static_cast<int>(std::bitset<64>(expected[i]).count());
    }
    for (const auto form : {portableIntersectAndCount, bestIntersectAndCount()}) {
      std::vector<std::uint64_t> out(words);
      EXPECT_EQ(form(a.data(), b.data(), out.data(), words), bits);
      EXPECT_EQ(out, expected);
    }
  }
}

TEST(IntersectAndCount, MayWriteOverAnOperand) {
  for (const auto form : {portableIntersectAndCount, bestIntersectAndCount()}) {
    std::vector<std::uint64_t> a = {7, 1, 2, 3, 4};
    const std::vector<std::uint64_t> b = {5, 1, 1, 1, ~std::uint64_t{0}};
    EXPECT_EQ(form(a.data(), b.data(), a.data(), a.size()), 2 + 1 + 0 + 1 + 1);
    EXPECT_EQ(a, (std::vector<std::uint64_t>{5, 1, 0, 1, 4}));
  }
}

}  // namespace
