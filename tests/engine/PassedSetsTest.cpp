// Passed sets, and the filter that lets through what holds one of them.

#include "korassoc/engine/PassedFilter.h"
#include "korassoc/engine/PassedSets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using korassoc::detail::ItemsetSink;
using korassoc::detail::PassedFilter;
using korassoc::detail::PassedSets;
using Ranks = std::vector<std::uint32_t>;

void add(PassedSets& passed, const Ranks& ranks) { passed.take(ranks.data(), ranks.size(), 1); }

TEST(PassedSets, AreWithinTheSetsThatHoldOneOfThem) {
  PassedSets passed;
  EXPECT_EQ(passed.size(), 0U);
  EXPECT_FALSE(passed.isWithin(Ranks{0, 1, 2}));
  add(passed, {5});
  add(passed, {3, 1});  // in any order
  add(passed, {3, 2, 0});
  EXPECT_EQ(passed.size(), 3U);
  const struct {
    Ranks ranks;
    bool holds;
  } cases[] = {{{}, false},     {{5}, true},     {{0, 5, 9}, true},       {{3}, false}, {{1, 3}, true},
               {{1, 4}, false}, {{2, 3}, false}, {{0, 2, 3, 7, 8}, true}, {{9}, false}, {{0, 1, 2}, false},
               {{0, 3}, false}, {{4, 6}, false}, {{0, 1, 2, 3, 4}, true}};
  for (const auto& c : cases)
    EXPECT_EQ(passed.isWithin(c.ranks), c.holds) << ::testing::PrintToString(c.ranks);
}

TEST(PassedFilter, LetsThroughWhatHoldsAPassedSetAndStopsWhenItsSinkDoes) {
  class Last final : public ItemsetSink {
   public:
    bool take(const std::uint32_t* ranks, std::size_t n, int count) override {
      taken.emplace_back(ranks, ranks + n);
      lastCount = count;
      return false;
    }
    bool goesOn() override { return going; }
    std::vector<Ranks> taken;
    int lastCount = 0;
    bool going = true;
  };
  PassedSets passed;
  add(passed, {1, 3});
  Last sink;
  PassedFilter filter(passed, sink);
  const Ranks without = {4, 3, 2};
  const Ranks with = {4, 3, 1};
  EXPECT_TRUE(filter.take(without.data(), 3, 7));
  EXPECT_TRUE(sink.taken.empty());
  EXPECT_FALSE(filter.take(with.data(), 3, 8));
  EXPECT_EQ(sink.taken, std::vector<Ranks>{with});
  EXPECT_EQ(sink.lastCount, 8);
  EXPECT_TRUE(filter.goesOn());
  sink.going = false;
  EXPECT_FALSE(filter.goesOn());
}

}  // namespace
