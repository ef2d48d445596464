// The candidate tree by hand: what it expects, counts, borders on and hands on.

#include "korassoc/engine/CandidateTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace {

using korassoc::detail::CandidateTree;
using korassoc::detail::ItemsetSink;
using korassoc::detail::RankedRows;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Found = std::pair<std::vector<std::uint32_t>, int>;

// Keeps the sets and counts, up to a number of them.
class Sets final : public ItemsetSink {
 public:
  explicit Sets(std::size_t most = 100) : most_(most) {}
  bool take(const std::uint32_t* ranks, std::size_t n, int count) override {
    found.emplace_back(std::vector<std::uint32_t>(ranks, ranks + n), count);
    return found.size() < most_;
  }
  bool goesOn() override { return true; }

  std::vector<Found> found;

 private:
  std::size_t most_;
};

RankedRows rowsOf(const std::vector<std::vector<std::uint32_t>>& rows) {
  RankedRows ranked;
  for (const auto& row : rows) ranked.addRow(row);
  ranked.listOccurrences(4);
  return ranked;
}

std::vector<Found> treeOf(const CandidateTree& tree, int minCount) {
  Sets sets;
  EXPECT_TRUE(tree.handOn(minCount, sets));
  return sets.found;
}

std::vector<Found> borderOf(const CandidateTree& tree, int minCount) {
  Sets sets;
  EXPECT_TRUE(tree.handOnBorder(minCount, sets));
  return sets.found;
}

constexpr std::uint64_t kEnough = 1 << 20;
const CandidateTree::Cancelled kNever = [] { return false; };

TEST(CandidateTree, HoldsTheSetsOfTheSampleAndCountsThemAndTheirBorder) {
  CandidateTree tree(10, kEnough, kNever);
  ASSERT_TRUE(tree.grow(rowsOf({{0, 3}, {0, 3}, {2, 3}, {2, 3}, {1, 3}}), 4, 2));
  EXPECT_THAT(treeOf(tree, 1), ElementsAre(Found({3, 0}, 2), Found({3, 2}, 2)));
  EXPECT_THAT(borderOf(tree, 1), ElementsAre(Found({3, 1}, 1)));
  EXPECT_THAT(borderOf(tree, 0), ElementsAre(Found({1, 0}, 0), Found({2, 0}, 0), Found({2, 1}, 0),
                                             Found({3, 1}, 1), Found({3, 2, 0}, 0)));

  ASSERT_TRUE(tree.count(rowsOf({{0, 2, 3}, {0, 1}, {1, 2, 3}})));
  ASSERT_TRUE(tree.count(rowsOf({{0, 2, 3}})));
  EXPECT_THAT(treeOf(tree, 1), ElementsAre(Found({3, 0}, 4), Found({3, 2}, 5)));
  EXPECT_THAT(treeOf(tree, 5), ElementsAre(Found({3, 2}, 5)));
  EXPECT_THAT(borderOf(tree, 1), ElementsAre(Found({1, 0}, 1), Found({2, 0}, 2), Found({2, 1}, 1),
                                             Found({3, 1}, 2), Found({3, 2, 0}, 2)));
}

TEST(CandidateTree, HandsOnTheSetsOfAPathBeforeThoseThatGoOnFromThem) {
  CandidateTree tree(10, kEnough, kNever);
  ASSERT_TRUE(tree.grow(rowsOf({{0, 1, 2, 3}}), 4, 1));
  EXPECT_THAT(treeOf(tree, 1),
              ElementsAre(Found({1, 0}, 1), Found({2, 0}, 1), Found({2, 1}, 1), Found({2, 1, 0}, 1),
                          Found({3, 0}, 1), Found({3, 1}, 1), Found({3, 2}, 1), Found({3, 1, 0}, 1),
                          Found({3, 2, 0}, 1), Found({3, 2, 1}, 1), Found({3, 2, 1, 0}, 1)));
  EXPECT_THAT(borderOf(tree, 0), IsEmpty());
}

TEST(CandidateTree, CountsNoSetThatIsTooLong) {
  CandidateTree tree(2, kEnough, kNever);
  ASSERT_TRUE(tree.grow(rowsOf({{0, 1, 2}}), 3, 1));
  EXPECT_THAT(treeOf(tree, 1), ElementsAre(Found({1, 0}, 1), Found({2, 0}, 1), Found({2, 1}, 1)));
  EXPECT_THAT(borderOf(tree, 0), IsEmpty());
}

TEST(CandidateTree, RefusesToGrowBeyondItsBytes) {
  CandidateTree measured(10, kEnough, kNever);
  const RankedRows sample = rowsOf({{0, 1, 2, 3}});
  ASSERT_TRUE(measured.grow(sample, 4, 1));
  for (const std::uint64_t lacking : {0U, 1U}) {
    CandidateTree tree(10, measured.bytes() - lacking, kNever);
    EXPECT_EQ(tree.grow(sample, 4, 1), lacking == 0);
  }
}

TEST(CandidateTree, StopsWhenItIsCancelled) {
  bool now = true;
  const CandidateTree::Cancelled cancelled = [&now] { return now; };
  const RankedRows sample = rowsOf({{0, 1, 2, 3}});
  EXPECT_FALSE(CandidateTree(10, kEnough, cancelled).grow(sample, 4, 1));
  now = false;
  CandidateTree tree(10, kEnough, cancelled);
  EXPECT_TRUE(tree.grow(sample, 4, 1));
  now = true;
  EXPECT_FALSE(tree.count(sample));
}

TEST(CandidateTree, StopsHandingOnWhenTheSinkDoes) {
  CandidateTree tree(10, kEnough, kNever);
  ASSERT_TRUE(tree.grow(rowsOf({{0, 1, 2, 3}}), 4, 1));
  for (const std::size_t most : {1U, 4U, 11U}) {
    Sets sets(most);
    EXPECT_FALSE(tree.handOn(1, sets));
    EXPECT_EQ(sets.found.size(), most);
  }
}

}  // namespace
