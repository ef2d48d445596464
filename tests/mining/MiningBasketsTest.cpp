#include "korassoc/mining/Baskets.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "tests/mining/ExpectError.h"

namespace korassoc {
namespace {

using Lists = std::vector<std::vector<Item>>;

Lists listsOf(const Baskets& baskets) {
  Lists lists;
  for (std::size_t i = 0; i < baskets.size(); ++i) lists.emplace_back(baskets[i].begin(), baskets[i].end());
  return lists;
}

TEST(Baskets, HoldWhatTheListsHold) {
  const Lists lists = {{3, 7, 9}, {}, {7, 1, 7}, {-5}};
  const Baskets baskets = Baskets::fromLists(lists);
  EXPECT_EQ(listsOf(baskets), lists);
  EXPECT_EQ(baskets.transactions(), 4);
  EXPECT_EQ(baskets.occurrences(), 7U);
  EXPECT_FALSE(baskets.hasWeights());
  EXPECT_EQ(baskets.weight(2), 1);
}

TEST(Baskets, MayBeNone) {
  EXPECT_TRUE(Baskets().empty());
  EXPECT_EQ(Baskets().transactions(), 0);
  EXPECT_EQ(Baskets().occurrences(), 0U);
  EXPECT_TRUE(Baskets::fromLists({}).empty());
  EXPECT_TRUE(Baskets::fromColumns({}).empty());
}

TEST(Baskets, StandForAsManyTransactionsAsTheyWeigh) {
  const Baskets baskets = Baskets::fromColumns({{0, 2, 3, 3}, {1, 2, 2}, {5, 0, 2}});
  EXPECT_EQ(listsOf(baskets), (Lists{{1, 2}, {2}, {}}));
  EXPECT_EQ(baskets.transactions(), 7);
  EXPECT_TRUE(baskets.hasWeights());
  EXPECT_EQ(baskets.weight(0), 5);
  EXPECT_EQ(baskets.weight(1), 0);
}

TEST(Baskets, LookOnAtColumnsWithoutACopy) {
  const std::vector<std::int32_t> offsets = {1, 3, 3};
  const std::vector<Item> items = {8, 4, 5, 6};
  const Baskets baskets = Baskets::borrow(offsets, items, nullptr);
  EXPECT_EQ(listsOf(baskets), (Lists{{4, 5}, {}}));
  EXPECT_EQ(baskets[0].data(), items.data() + 1);
  EXPECT_EQ(baskets.occurrences(), 2U);
  const std::vector<std::int64_t> wide = {0, 4};
  EXPECT_EQ(listsOf(Baskets::borrow(wide, items, nullptr)), (Lists{{8, 4, 5, 6}}));
}

TEST(Baskets, HoldTheOwnerOfBorrowedColumnsAsLongAsACopyLives) {
  struct Columns {
    std::vector<std::int64_t> offsets = {0, 1};
    std::vector<Item> items = {7};
  };
  auto owner = std::make_shared<Columns>();
  const std::weak_ptr<Columns> watched = owner;
  Baskets copy;
  {
    const Baskets baskets =
        Baskets::borrow(std::span<const std::int64_t>(owner->offsets), owner->items, owner);
    owner.reset();
    copy = baskets;
  }
  EXPECT_FALSE(watched.expired());
  EXPECT_EQ(copy[0][0], 7);
  copy = Baskets();
  EXPECT_TRUE(watched.expired());
}

TEST(Baskets, RefuseColumnsThatDoNotFitTogether) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  const Labels labels({"bread", "milk"});
  struct Case {
    Baskets::Columns columns;
    Labels labels;
    const char* part;
  };
  const Case cases[] = {{{{}, {}, {}}, Labels(), "at least one"},
                        {{{-1, 0}, {}, {}}, Labels(), "the offset of basket 0 is -1"},
                        {{{0, 2, 1}, {1, 2}, {}}, Labels(), "the offset of basket 2 is 1, below 2"},
                        {{{0, 3}, {1, 2}, {}}, Labels(), "lead to item 3, and there are 2"},
                        {{{0, 2}, {1, 2}, {}}, labels, "item 2 has no label; there are 2"},
                        {{{0, 2}, {1, -1}, {}}, labels, "item -1 has no label"},
                        {{{0, 1, 2}, {1, 1}, {1}}, labels, "1 weights for 2 baskets"},
                        {{{0, 1}, {1}, {-1}}, labels, "the weight of basket 0 is -1"},
                        {{{0, 0, 0}, {}, {kMost, 1}}, labels, "more than 64 bits"}};
  for (const Case& c : cases) {
    EXPECT_ERROR(Baskets::fromColumns(c.columns, c.labels), Error::Kind::kInput, c.part);
  }
  EXPECT_NO_THROW(Baskets::fromColumns({{0, 2}, {1, 0}, {}}, labels));
}

TEST(Baskets, LookAtNoLabelsOfItemsOutsideTheOffsets) {
  const std::vector<std::int64_t> offsets = {1, 2};
  const std::vector<Item> items = {99, 0, 98};
  EXPECT_NO_THROW(Baskets::borrow(offsets, items, nullptr, Labels({"bread"})));
}

}  // namespace
}  // namespace korassoc
