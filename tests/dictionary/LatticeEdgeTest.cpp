// The links of the lattice in its smallest forms, and what pruning and resetting leave of them.

#include <gtest/gtest.h>

#include <iostream>
#include <memory>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/DictionaryComparison.h"
#include "tests/support/StreamCapture.h"

namespace {

using oracle::Items;

class LatticeEdge : public testing::Test {
 protected:
  LatticeEdge() : dictionary_(6, &settings_, true) {
    dictionary_.addEmptySet(new CarmaSetDescriptor(9, 0, 0));
  }

  void add(const Items& items, int count, int tid = 1, int missed = 0) {
    ASSERT_EQ(dictionary_.addSet(items.data(), static_cast<int>(items.size()),
                                 new CarmaSetDescriptor(count, tid, missed)),
              0);
  }
  // {1, 2, 3} with all its subsets; {1, 2, 3} counted twice, the others more often.
  void addCube() {
    for (const Items& items : {Items{1}, Items{2}, Items{3}}) add(items, 5);
    for (const Items& items : {Items{1, 2}, Items{1, 3}, Items{2, 3}}) add(items, 3);
    add({1, 2, 3}, 2);
  }
  const LatticeSetDescriptor& at(const Items& items) {
    return dynamic_cast<LatticeSetDescriptor&>(
        *dictionary_.getDescriptor(items.data(), static_cast<int>(items.size())));
  }
  Items adjacent(const Items& items) {
    const OrderedArray& list = at(items).adjacent;
    return Items(list.data, list.data + list.count);
  }

  DictionarySettings settings_;
  SetDictionary dictionary_;
};

TEST_F(LatticeEdge, OneItemSetsHangBelowTheEmptySetAlone) {
  add({7}, 1);
  add({-3}, 2);
  add({5}, 1);
  EXPECT_FALSE(dictionary_.isLatticeBuilt());
  dictionary_.buildLattice();
  EXPECT_TRUE(dictionary_.isLatticeBuilt());
  EXPECT_EQ(adjacent({}), Items({-3, 5, 7}));
  EXPECT_EQ(adjacent({5}), Items());
  EXPECT_EQ(adjacent({-3}), Items());
}

TEST_F(LatticeEdge, DescriptorsKeepWhatWasCounted) {
  add({7}, 4, 3, 2);
  dictionary_.buildLattice();
  EXPECT_EQ(at({7}).count, 4);
  EXPECT_EQ(at({7}).getTID(), 3);
  EXPECT_EQ(at({7}).getMaxMissed(), 2);
  EXPECT_EQ(at({}).count, 9);
}

TEST_F(LatticeEdge, PairLinksItsItemsToEachOther) {
  add({1}, 2);
  add({2}, 2);
  add({1, 2}, 1);
  dictionary_.buildLattice();
  EXPECT_EQ(adjacent({1}), Items({2}));
  EXPECT_EQ(adjacent({2}), Items({1}));
  EXPECT_EQ(adjacent({1, 2}), Items());
}

TEST_F(LatticeEdge, PruningAThreeItemSetUnlinksItsPairs) {
  addCube();
  dictionary_.buildLattice();
  EXPECT_EQ(adjacent({1, 2}), Items({3}));
  EXPECT_EQ(adjacent({1, 3}), Items({2}));
  EXPECT_EQ(adjacent({2, 3}), Items({1}));
  EXPECT_EQ(dictionary_.removeSmallSets(3), 1);
  EXPECT_EQ(adjacent({1, 2}), Items());
  EXPECT_EQ(adjacent({1, 3}), Items());
  EXPECT_EQ(adjacent({2, 3}), Items());
  EXPECT_EQ(adjacent({2}), Items({1, 3}));
  EXPECT_EQ(adjacent({}), Items({1, 2, 3}));
}

TEST_F(LatticeEdge, ResettingTheCountsLeavesTheLinks) {
  addCube();
  dictionary_.buildLattice();
  EXPECT_EQ(dictionary_.resetAllCounts(), 8);
  EXPECT_EQ(at({}).count, 0);
  EXPECT_EQ(at({1, 2, 3}).count, 0);
  EXPECT_EQ(at({2}).getMaxMissed(), 0);
  EXPECT_EQ(adjacent({}), Items({1, 2, 3}));
  EXPECT_EQ(adjacent({2}), Items({1, 3}));
  EXPECT_EQ(adjacent({1, 2}), Items({3}));
}

TEST_F(LatticeEdge, MissingSubsetIsReportedAndTheWalkGoesOn) {
  add({1}, 5);
  add({2}, 5);
  add({2, 3}, 3);  // {3} is not there
  const StreamCapture out(std::cout);
  dictionary_.buildLattice();
  EXPECT_EQ(out.text(),
            "Error during buildLattice! Not found subset:  3 End of Set \n of the set  2 3 End of Set \n"
            "z=0, i=2\nError building lattice level 2\n");
  EXPECT_EQ(adjacent({2}), Items({3}));
  EXPECT_TRUE(dictionary_.isLatticeBuilt());
}

TEST_F(LatticeEdge, ASetThatIsNotStoredHasNoCounterToPrune) {
  add({1}, 5);
  dictionary_.buildLattice();
  const StreamCapture out(std::cout);
  const ItemSet stranger(9);
  dictionary_.pruneAdjacent(&stranger);
  EXPECT_EQ(out.text(), " 9 End of Set \nSet Has No Counter\n");
}

TEST_F(LatticeEdge, ResettingReportsASetWithoutDescriptorAndGoesOn) {
  add({1}, 5);
  dictionary_.buildLattice();
  const Items items = {4, 7};
  ASSERT_EQ(dictionary_.addSet(items.data(), 2, nullptr), 0);
  const StreamCapture out(std::cout);
  EXPECT_EQ(dictionary_.resetAllCounts(), 2);
  EXPECT_EQ(out.text(), "Error in resetAllCounts: null descriptor for set:  4 7 End of Set \nin level 2\n");
  EXPECT_EQ(at({1}).count, 0);
}

TEST_F(LatticeEdge, TheEmptySetKeepsTIDAndMaxMissedOnlyWhileTheItemBitsAreOff) {
  for (const bool bitsetOff : {true, false}) {
    SetDictionary dictionary(3, &settings_, true);
    dictionary.setBitsetOff(bitsetOff);
    dictionary.addEmptySet(new CarmaSetDescriptor(9, 4, 2));
    dictionary.buildLattice();
    const SetCounter& empty = *dictionary.getDescriptor(nullptr, 0);
    EXPECT_EQ(empty.count, 9);
    EXPECT_EQ(empty.getTID(), bitsetOff ? 4 : 0);
    EXPECT_EQ(empty.getMaxMissed(), bitsetOff ? 2 : 0);
  }
}

TEST_F(LatticeEdge, DictionaryWithoutEmptySetGetsOneInEveryTransaction) {
  SetDictionary bare(3, &settings_, true);
  const int item = 4;
  ASSERT_EQ(bare.addSet(&item, 1, new CarmaSetDescriptor(2, 1, 0)), 0);
  bare.buildLattice();
  EXPECT_EQ(bare.getEmptySetCount(), 2147483647);
}

}  // namespace
