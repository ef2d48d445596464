#include "korassoc/dictionary/UsedSlots.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>

namespace {

using korassoc::detail::UsedSlots;

TEST(UsedSlots, AreNoneAtFirst) {
  for (const std::uint32_t slots : {1U, 63U, 64U, 65U, 737279U}) {
    const UsedSlots used(slots);
    EXPECT_EQ(used.next(0), slots);
    EXPECT_EQ(used.next(slots), slots);
    EXPECT_EQ(used.next(slots + 100), slots);
  }
}

TEST(UsedSlots, GoOnAtTheNextOneAsInAStdSet) {
  std::mt19937 random(5);
  const auto below = [&random](std::uint32_t bound) { return static_cast<std::uint32_t>(random() % bound); };
  for (const std::uint32_t slots : {1U, 64U, 65U, 1000U}) {
    UsedSlots used(slots);
    std::set<std::uint32_t> expected;
    for (int step = 0; step < 400; ++step) {
      const std::uint32_t slot = below(slots);
      if (below(3) != 0) {
        used.add(slot);
        expected.insert(slot);
      } else {
        used.remove(slot);
        expected.erase(slot);
      }
      const std::uint32_t from = below(slots + 2);
      const auto next = expected.lower_bound(from);
      ASSERT_EQ(used.next(from), next != expected.end() ? *next : slots) << slots << ", step " << step;
    }
  }
}

}  // namespace
