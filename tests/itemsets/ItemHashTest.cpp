// The hash code of raw items: hand-made values, and the wrap-around modulo 2^32.

#include "korassoc/itemsets/ItemHash.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <vector>

namespace korassoc::detail {
namespace {

int hashOf(const std::vector<int>& items) { return hashItems(items.data(), static_cast<int>(items.size())); }

bool isPrime(std::uint32_t n) {
  for (std::uint32_t d = 2; d * d <= n; ++d) {
    if (n % d == 0) return false;
  }
  return n > 1;
}

TEST(ItemHash, TakesThe47PrimesFrom7To229) {
  std::vector<std::uint32_t> primes;
  for (std::uint32_t n = 7; n <= 229; ++n) {
    if (isPrime(n)) primes.push_back(n);
  }
  EXPECT_EQ(primes, std::vector<std::uint32_t>(kHashPrimes.begin(), kHashPrimes.end()));
  EXPECT_EQ(primes.size(), 47U);
}

TEST(ItemHash, OfNoItemsIsZero) { EXPECT_EQ(hashItems(nullptr, 0), 0); }

TEST(ItemHash, OfOneItemIsSevenTimesTheItem) {
  EXPECT_EQ(hashOf({5}), 35);
  EXPECT_EQ(hashOf({-5}), -35);
  EXPECT_EQ(hashOf({0}), 0);
}

TEST(ItemHash, IsTheXorOfItemTimesPrime) {
  EXPECT_EQ(hashOf({1, 2}), 17);       // 7 xor 22
  EXPECT_EQ(hashOf({1, 2, 3}), 54);    // 17 xor 39
  EXPECT_EQ(hashOf({2, 1}), 14 ^ 11);  // positions matter
}

TEST(ItemHash, TakesTheFirstPrimeAgainAtPosition47) {
  std::vector<int> items(48, 0);
  items[47] = 3;
  EXPECT_EQ(hashOf(items), 21);
  items[47] = 0;
  items[46] = 3;
  EXPECT_EQ(hashOf(items), 687);
}

TEST(ItemHash, WrapsModulo2To32) {
  struct Case {
    const char* what;
    std::vector<int> items;
    int hash;
  };
  const Case cases[] = {
      // 7 * 2147483647 = 3 * 2^32 + 2147483641
      {"largest item", {INT_MAX}, 2147483641},
      // 7 * 2^31 = 3 * 2^32 + 2^31
      {"smallest item", {INT_MIN}, INT_MIN},
      // 7 * 1000000000 = 2^32 + 2705032704, which is negative as a signed number
      {"a sum beyond 2^31", {1000000000}, static_cast<int>(2705032704U)},
      // -1 * 7 = 0xFFFFFFF9, -1 * 11 = 0xFFFFFFF5; xor 0x0C
      {"two negative items", {-1, -1}, 12},
  };
  for (const Case& c : cases) EXPECT_EQ(hashOf(c.items), c.hash) << c.what;
}

TEST(ItemHash, AgreesWith64BitArithmeticOnRandomItems) {
  std::mt19937 random(20);
  for (int round = 0; round < 500; ++round) {
    std::vector<int> items(random() % 120);
    std::uint64_t expected = 0;
    for (std::size_t i = 0; i < items.size(); ++i) {
      items[i] = static_cast<int>(random());
      expected ^= std::uint64_t{kHashPrimes[i % 47]} * static_cast<std::uint32_t>(items[i]);
    }
    EXPECT_EQ(hashOf(items), static_cast<int>(static_cast<std::uint32_t>(expected))) << "round " << round;
  }
}

TEST(ItemHash, OfAnExtensionIsTheXorWithTheLastPart) {
  const std::vector<int> items = {3, 14, 15, 92};
  EXPECT_EQ(hashItems(items.data(), 3) ^ hashPart(92, 3), hashOf(items));
}

}  // namespace
}  // namespace korassoc::detail
