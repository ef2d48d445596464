#include "korassoc/mining/FlatLattice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <vector>

#include "korassoc/mining/ItemsetSorter.h"
#include "korassoc/mining/RuleOrder.h"
#include "tests/mining/CountedSets.h"
#include "tests/mining/ExpectError.h"

namespace korassoc::detail {
namespace {

using Node = FlatLattice::Node;
constexpr Node kNone = FlatLattice::kNone;

Items itemsOf(const FlatLattice& lattice, Node node) {
  return listOf(lattice.items(node, lattice.lengthOf(node)));
}

Items without(Items items, std::size_t position) {
  items.erase(items.begin() + static_cast<std::ptrdiff_t>(position));
  return items;
}

// Every answer of a lattice of these sets, by the sets themselves.
void expectLatticeOf(const oracle::brute::Counts& counts, const FlatLattice& lattice) {
  std::map<Items, Node> nodeOf;
  for (Node node = 0; node < lattice.size(); ++node) {
    const Items items = itemsOf(lattice, node);
    ASSERT_TRUE(nodeOf.emplace(items, node).second);
    ASSERT_TRUE(counts.contains(items));
    EXPECT_EQ(lattice.count(node), counts.at(items));
    EXPECT_EQ(lattice.find(items), node);
    if (node > 0) {
      EXPECT_LT(compareItemsets(itemsOf(lattice, node - 1), items), 0);
    }
  }
  ASSERT_EQ(nodeOf.size(), counts.size());
  const auto nodeOrNone = [&nodeOf](const Items& items) {
    const auto place = nodeOf.find(items);
    return place != nodeOf.end() ? place->second : kNone;
  };
  bool regular = true;
  std::map<Node, std::vector<Node>> up;
  for (const auto& [items, node] : nodeOf) {
    const std::span<const Node> down = lattice.down(node, items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
      const Node smaller = nodeOrNone(without(items, i));
      ASSERT_EQ(down[i], smaller);
      regular = regular && smaller != kNone && lattice.count(smaller) >= lattice.count(node);
      if (smaller != kNone) up[smaller].push_back(node);
    }
  }
  EXPECT_EQ(lattice.isRegular(), regular);
  for (const auto& [items, node] : nodeOf) {
    std::vector<Node> nodes;
    Item last = std::numeric_limits<Item>::min();
    for (const FlatLattice::UpLink& link : lattice.up(node)) {
      EXPECT_GE(link.item, last);
      last = link.item;
      nodes.push_back(link.node);
      Items larger = items;
      larger.insert(std::upper_bound(larger.begin(), larger.end(), link.item), link.item);
      EXPECT_EQ(nodeOrNone(larger), link.node);
    }
    std::sort(nodes.begin(), nodes.end());
    EXPECT_EQ(nodes, up[node]);
  }
  for (const auto& [whole, wholeNode] : nodeOf) {
    for (const auto& [part, partNode] : nodeOf) {
      if (!std::includes(whole.begin(), whole.end(), part.begin(), part.end())) continue;
      Items rest;
      std::set_difference(whole.begin(), whole.end(), part.begin(), part.end(), std::back_inserter(rest));
      ASSERT_EQ(lattice.difference(wholeNode, whole.size(), partNode, part.size()), nodeOrNone(rest));
    }
  }
}

FlatLattice latticeOf(const oracle::brute::Counts& counts, Dice& dice) {
  return FlatLattice(ItemsetSorter::sorted(tableOf(counts, dice)), counts.at({}));
}

TEST(FlatLattice, LinksAllFrequentSets) {
  for (std::uint64_t seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSets sets(seed);
    const FlatLattice lattice = latticeOf(sets.counts, sets.dice);
    EXPECT_TRUE(lattice.isRegular());
    expectLatticeOf(sets.counts, lattice);
    if (HasFatalFailure()) return;
  }
}

TEST(FlatLattice, LinksSetsSomeOfWhichAreMissing) {
  int odd = 0;
  for (std::uint64_t seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSets sets(seed);
    // Every tenth set, so that some have their prefix and some do not; or singles alone, as an eviction takes
    // them.
    const bool singles = seed % 2 == 0;
    std::erase_if(sets.counts, [&](const auto& set) {
      return !set.first.empty() && (!singles || set.first.size() == 1) && sets.dice.chance(singles ? 40 : 10);
    });
    const FlatLattice lattice = latticeOf(sets.counts, sets.dice);
    odd += lattice.isRegular() ? 0 : 1;
    expectLatticeOf(sets.counts, lattice);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(odd, 20);
}

TEST(FlatLattice, IsNotRegularWhereASetIsCountedMoreOftenThanItsSubset) {
  Dice dice(1);
  EXPECT_TRUE(latticeOf({{{}, 9}, {{1}, 5}, {{2}, 4}, {{1, 2}, 4}}, dice).isRegular());
  EXPECT_FALSE(latticeOf({{{}, 9}, {{1}, 5}, {{2}, 4}, {{1, 2}, 5}}, dice).isRegular());
  EXPECT_FALSE(latticeOf({{{}, 4}, {{1}, 5}}, dice).isRegular());
}

TEST(FlatLattice, OfNoSetsHasTheEmptyOne) {
  const FlatLattice lattice(ItemsetTable(), 7);
  EXPECT_EQ(lattice.size(), 1U);
  EXPECT_EQ(lattice.longest(), 0U);
  EXPECT_EQ(lattice.count(0), 7);
  EXPECT_TRUE(lattice.isRegular());
  EXPECT_EQ(lattice.find({}), 0U);
  EXPECT_EQ(lattice.find(Items{3}), kNone);
  EXPECT_TRUE(lattice.up(0).empty());
}

TEST(FlatLattice, FindsNothingAmongItemsFarApart) {
  Dice dice(1);
  constexpr Item kMost = std::numeric_limits<Item>::max();
  constexpr Item kLeast = std::numeric_limits<Item>::min();
  const FlatLattice lattice =
      latticeOf({{{}, 9}, {{kLeast}, 5}, {{0}, 5}, {{kMost}, 4}, {{kLeast, kMost}, 3}}, dice);
  EXPECT_NE(lattice.find(Items{kLeast, kMost}), kNone);
  for (const Items& items :
       {Items{kLeast, 0}, Items{1}, Items{kLeast + 1}, Items{kMost - 1}, Items{kLeast, 0, kMost}}) {
    EXPECT_EQ(lattice.find(items), kNone);
  }
}

}  // namespace
}  // namespace korassoc::detail
