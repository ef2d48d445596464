// What leaves a full memory, in what order, and what becomes of its count: worked out by hand, step by step.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>

#include "tests/dictionary/EvictionFixture.h"
#include "tests/support/Raised.h"
#include "tests/support/StreamCapture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

// The same for the sets of a host and for those that phase I adds, which live in blocks of the dictionary's
// own.
class GivingUp : public Eviction, public ::testing::WithParamInterface<bool> {
 protected:
  GivingUp() { asPhaseI_ = GetParam(); }
};
INSTANTIATE_TEST_SUITE_P(ByHostAndPhaseI, GivingUp, ::testing::Bool());

TEST_P(GivingUp, TakesTheHeadOfTheQueueWithItsCount) {
  make(4, 3, false);
  EXPECT_EQ(add({1}), 0);
  EXPECT_EQ(add({2}), 0);
  EXPECT_EQ(add({3}), 0);
  EXPECT_EQ(dictionary_->inStoreCount(), 4);
  EXPECT_THAT(queue(), ElementsAre(Items{1}, Items{2}, Items{3}));
  EXPECT_EQ(dictionary_->queueTopCount(), 1);

  EXPECT_EQ(increment({1}), 2);  // above the top count 1: to the tail
  EXPECT_THAT(queue(), ElementsAre(Items{2}, Items{3}, Items{1}));
  EXPECT_EQ(dictionary_->queueTopCount(), 2);
  EXPECT_EQ(increment({2}), 2);  // not above the top count 2: stays
  EXPECT_THAT(queue(), ElementsAre(Items{2}, Items{3}, Items{1}));

  EXPECT_EQ(add({1, 2}), 0);  // {2} and its count of 2 are given up
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1}, 2), Pair(Items{3}, 1), Pair(Items{1, 2}, 1)));
  EXPECT_THAT(queue(), ElementsAre(Items{3}, Items{1}, Items{1, 2}));
  EXPECT_EQ(dictionary_->queueTopCount(), 1);
  EXPECT_EQ(dictionary_->inStoreCount(), 4);
  EXPECT_EQ(dictionary_->setsGivenUp(), 1);
  EXPECT_EQ(increment({2}), 0);
  EXPECT_FALSE(contains({2}));

  EXPECT_EQ(increment({3}), 2);  // above the top count 1 again: to the tail
  EXPECT_EQ(increment({3}), 3);
  EXPECT_THAT(queue(), ElementsAre(Items{1}, Items{1, 2}, Items{3}));
  EXPECT_EQ(dictionary_->queueTopCount(), 3);
  EXPECT_EQ(increment({3}), 4);  // above the 3 that may leave: out of the queue for good
  EXPECT_THAT(queue(), ElementsAre(Items{1}, Items{1, 2}));
  EXPECT_EQ(dictionary_->queueTopCount(), 3);

  for (const int item : {4, 5, 6, 7}) EXPECT_EQ(add({item}), 0);
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{3}, 4), Pair(Items{6}, 1), Pair(Items{7}, 1)));
  EXPECT_THAT(queue(), ElementsAre(Items{6}, Items{7}));
  EXPECT_EQ(dictionary_->inStoreCount(), 4);
  EXPECT_EQ(dictionary_->setsGivenUp(), 5);
  EXPECT_EQ(dictionary_->setsSpilled(), 0);
  EXPECT_EQ(dictionary_->spillStore(), nullptr);
}

TEST_P(GivingUp, NeverSubtractsAPoppedSetFromTheQueuesCount) {
  make(3, 3, false);
  add({1});
  add({2});
  EXPECT_EQ(pushedLessUnlinked(), 2);
  increment({1});  // unlinked and pushed
  EXPECT_EQ(pushedLessUnlinked(), 2);
  add({3});  // {2} popped, {3} pushed
  EXPECT_EQ(pushedLessUnlinked(), 3);
  increment({1});
  increment({1});  // unlinked at count 4
  EXPECT_EQ(pushedLessUnlinked(), 2);
  EXPECT_THAT(queue(), ElementsAre(Items{3}));
}

TEST_F(Eviction, QueuesNothingInMemoryWithRoomWhenNothingMayLeave) {
  make(3, 0, false);
  EXPECT_EQ(add({1}), 0);
  EXPECT_EQ(add({2}), 0);
  EXPECT_THAT(queue(), IsEmpty());
  EXPECT_EQ(dictionary_->queueTopCount(), 0);
  for (const int item : {3, 4}) EXPECT_EQ(add({item}), 3);
  EXPECT_EQ(dictionary_->inStoreCount(), 3);
  EXPECT_EQ(dictionary_->setsGivenUp(), 0);
}

TEST_F(Eviction, CountsOfASetThatWasGivenUpStartAnew) {
  make(3, 5, false);
  add({1});
  add({2});
  increment({1});
  increment({2});  // queue {2}, {1}: the top count is 2
  EXPECT_THAT(queue(), ElementsAre(Items{2}, Items{1}));
  add({3});
  EXPECT_EQ(increment({2}), 0);
  EXPECT_EQ(add({2}), 0);  // {1} makes room
  EXPECT_EQ(increment({2}), 2);
  EXPECT_EQ(increment({1}), 0);
}

TEST_F(Eviction, WithSpillMovesOneItemSetsToTheDiskWithTheirCounts) {
  make(3, 2, true);
  add({1});
  add({2});
  EXPECT_EQ(increment({1}), 2);
  EXPECT_THAT(queue(), ElementsAre(Items{2}, Items{1}));
  EXPECT_EQ(dictionary_->spillStore(), nullptr) << "made by the first eviction";
  EXPECT_FALSE(std::filesystem::exists(file_.name()));

  EXPECT_EQ(add({3}), 0);
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1}, 2), Pair(Items{3}, 1)));
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{2}, 1)));
  EXPECT_THAT(queue(), ElementsAre(Items{1}, Items{3}));
  EXPECT_EQ(dictionary_->queueTopCount(), 1);
  EXPECT_EQ(dictionary_->inStoreCount(), 3);

  EXPECT_EQ(increment({2}), 2);  // on the disk
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{2}, 2)));
  EXPECT_THAT(queue(), ElementsAre(Items{1}, Items{3}));

  EXPECT_EQ(add({1, 3}), 0);
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{3}, 1), Pair(Items{1, 3}, 1)));
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{1}, 2), Pair(Items{2}, 2)));
  EXPECT_THAT(queue(), ElementsAre(Items{3}, Items{1, 3}));
  EXPECT_TRUE(contains({1}));
  EXPECT_TRUE(contains({2}));
  EXPECT_EQ(dictionary_->getCount(2), 2);
  EXPECT_EQ(dictionary_->getLevelSize(1), 3);
  EXPECT_EQ(dictionary_->getTotalSetCount(), 5);
  EXPECT_EQ(dictionary_->getSizeAboveLevel(0), 2) << "memory only";
  EXPECT_EQ(dictionary_->setsSpilled(), 2);
  EXPECT_EQ(dictionary_->setsGivenUp(), 0);
}

TEST_F(Eviction, ASetThatTheDiskRefusesStaysAndLeavesTheQueue) {
  make(3, 2, true);
  add({1, 2});
  add({3});
  EXPECT_EQ(add({4}), 0);  // {1, 2} is refused, {4} itself goes to the disk
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1, 2}, 1), Pair(Items{3}, 1)));
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{4}, 1)));
  EXPECT_THAT(queue(), ElementsAre(Items{3}));
  EXPECT_TRUE(contains({1, 2}));

  EXPECT_EQ(add({3, 4}), 0);  // {3} goes
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1, 2}, 1), Pair(Items{3, 4}, 1)));
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{3}, 1), Pair(Items{4}, 1)));

  EXPECT_EQ(add({3, 5}), 2);  // neither {3, 4} nor {3, 5} can go: refused with the store's answer
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1, 2}, 1), Pair(Items{3, 4}, 1)));
  EXPECT_THAT(queue(), IsEmpty());

  EXPECT_EQ(add({6}), 0);  // an empty queue: straight to the disk
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{3}, 1), Pair(Items{4}, 1), Pair(Items{6}, 1)));
  EXPECT_EQ(increment({1, 2}), 2);
  EXPECT_EQ(dictionary_->inStoreCount(), 3);
  EXPECT_EQ(dictionary_->setsSpilled(), 3);
}

// A table that grew for a set which the disk then refuses would show its sets in another order from then on.
TEST_F(Eviction, ASetThatTheDiskRefusesLeavesItsTableAsItWas) {
  settings_.SetInitialHashtableSet23Size(3);  // grows at the third set
  make(5, 1, true);
  for (const Items& items : {Items{1, 2, 3}, Items{7}, Items{1, 2}, Items{1, 3}}) EXPECT_EQ(add(items), 0);
  const HashTable& pairs = dictionary_->levelTable(2);
  ASSERT_EQ(pairs.bucketCount(), 3);
  EXPECT_EQ(add({2, 3}), 2);  // {1, 2, 3} has to go for it, and the disk takes one-item sets only
  EXPECT_EQ(pairs.bucketCount(), 3);
  EXPECT_EQ(pairs.modCount(), 0);
  EXPECT_EQ(pairs.count(), 2);
  // The hash codes of {1, 2} and {1, 3} are 17 and 38: one bucket of three, the later arrival in front.
  const HashTable::Entry* chain = pairs.bucket(2);
  ASSERT_NE(chain, nullptr);
  EXPECT_EQ(chain->key->getItemAt(1), 3);
  ASSERT_NE(chain->next, nullptr);
  EXPECT_EQ(chain->next->key->getItemAt(1), 2);

  EXPECT_EQ(add({2, 3}), 0);  // now {7} is at the head of the queue, and goes
  EXPECT_EQ(pairs.bucketCount(), 7);
  EXPECT_EQ(pairs.count(), 3);
}

TEST_F(Eviction, AfterAPairWasRefusedItIsFoundAndAnEvictedOneItemSetToo) {
  // A pair that was evicted to the disk would not be found. The store takes no pairs, so they never are.
  make(3, 1, true);
  add({1});
  add({1, 2});
  add({3});
  EXPECT_TRUE(contains({1}));
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{1}, 1)));
  EXPECT_EQ(add({4}), 0);
  EXPECT_TRUE(contains({1, 2}));
  EXPECT_FALSE(contains({1, 3}));
}

TEST_F(Eviction, CountsMadeOnTheDiskComeBackWhenThereIsRoomAtThePruning) {
  make(3, 2, true);
  for (const int item : {1, 2, 3, 4, 5}) add({item});  // {1}, {2} and {3} go to the disk
  EXPECT_EQ(increment({1}), 2);
  EXPECT_EQ(increment({1}), 3);
  EXPECT_EQ(increment({2}), 2);
  EXPECT_EQ(increment({4}), 2);
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{1}, 3), Pair(Items{2}, 2), Pair(Items{3}, 1)));
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{4}, 2), Pair(Items{5}, 1)));

  // At 3: {4} and {5} leave memory, {2} and {3} the disk; {1} comes back.
  EXPECT_EQ(dictionary_->removeSmallSets(3.0), 4);
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1}, 3)));
  EXPECT_EQ(dictionary_->inStoreCount(), 2);
  EXPECT_EQ(dictionary_->spillStore(), nullptr);
  EXPECT_FALSE(std::filesystem::exists(file_.name()));
  EXPECT_TRUE(dictionary_->isMarked(1));
  EXPECT_EQ(increment({1}), 4);
  EXPECT_EQ(dictionary_->getDescriptor(1)->getTID(), 0) << "a plain counter without the former TID";
}

TEST_F(Eviction, ReadBackIntoAFullMemoryIsADictionaryFailureUntilTheLimitIsRaised) {
  make(3, 2, true);
  for (const int item : {1, 2, 3, 4, 5}) add({item});
  increment({3});
  for (const int item : {4, 5}) increment({item});  // memory: {4} 2, {5} 2; disk: {1} 1, {2} 1, {3} 2
  {
    const StreamCapture out(std::cout);
    EXPECT_EQ(raised([this] { dictionary_->removeSmallSets(2.0); }), "DictionaryFailure");
    EXPECT_EQ(out.text(), "Failed to reduce dictionary on disk.\n");
  }
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{3}, 2)));
  EXPECT_EQ(dictionary_->getTotalSetCount(), 4);
  dictionary_->setMaxInStoreSets(4);
  EXPECT_EQ(dictionary_->removeSmallSets(2.0), 0);
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{3}, 2), Pair(Items{4}, 2), Pair(Items{5}, 2)));
  EXPECT_FALSE(std::filesystem::exists(file_.name()));
}

TEST_F(Eviction, AHigherSupportMakesRoomForTheReadBackToo) {
  make(3, 2, true);
  for (const int item : {1, 2, 3}) add({item});
  increment({1});
  increment({1});  // disk: {1} 3; memory: {2} 1, {3} 1
  EXPECT_EQ(dictionary_->removeSmallSets(2.5), 2);
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{1}, 3)));
}

TEST_F(Eviction, ThresholdsAlmostAnIntegerAreRoundedInMemoryButNotOnDisk) {
  make(3, 9, true);
  for (const int item : {1, 2}) {
    add({item});
    increment({item});
    increment({item});
  }
  add({3});  // {1}, count 3, goes
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{1}, 3)));
  EXPECT_EQ(dictionary_->removeSmallSets(3.0000000000000004), 2);
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{2}, 3)));
}

TEST_F(Eviction, PruningOneOtherLevelClosesTheStore) {
  make(3, 1, true);
  for (const int item : {1, 2, 3}) add({item});
  ASSERT_NE(dictionary_->spillStore(), nullptr);
  EXPECT_EQ(dictionary_->removeSmall(2, 1.0), 0);
  EXPECT_EQ(dictionary_->spillStore(), nullptr);
  EXPECT_FALSE(contains({1}));
}

TEST_F(Eviction, PruningNoLevelLeavesTheStoreAlone) {
  make(3, 1, true);
  for (const int item : {1, 2, 3}) add({item});
  EXPECT_EQ(dictionary_->removeSmall(0, 9.0), 0);
  EXPECT_EQ(dictionary_->removeSmall(-1, 9.0), 0);
  ASSERT_NE(dictionary_->spillStore(), nullptr);
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{1}, 1)));
  EXPECT_TRUE(contains({1}));
}

TEST_F(Eviction, PruningUnlinksQueuedSetsOnlyWhileTheItemBitsAreKept) {
  make(4, 5, false);
  for (const int item : {1, 2}) add({item});
  dictionary_->removeSmallSets(1.0);
  EXPECT_THAT(queue(), ElementsAre(Items{1}, Items{2}));
  dictionary_->setBitsetOff(false);
  dictionary_->removeSmallSets(1.0);
  EXPECT_THAT(queue(), IsEmpty());
}

TEST_F(Eviction, PrunedSetsAreNotInTheQueueAnyMore) {
  make(4, 5, false);
  for (const int item : {1, 2, 3}) add({item});
  increment({2});
  EXPECT_EQ(dictionary_->removeSmallSets(2.0), 2);
  EXPECT_THAT(queue(), ElementsAre(Items{2}));
  for (const int item : {4, 5, 6, 7}) add({item});
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{5}, 1), Pair(Items{6}, 1), Pair(Items{7}, 1)));
}

TEST_F(Eviction, ALoweredLimitGivesNothingUpAtOnceButKeepsOutWhatComes) {
  make(5, 9, false);
  for (const int item : {1, 2, 3, 4}) add({item});
  dictionary_->setMaxInStoreSets(2);
  EXPECT_EQ(memory().size(), 4U);
  EXPECT_EQ(add({5}), 0);
  EXPECT_EQ(dictionary_->inStoreCount(), 5);
  EXPECT_THAT(queue(), ElementsAre(Items{2}, Items{3}, Items{4}, Items{5}));
  dictionary_->setMaxInStoreSets(6);
  EXPECT_EQ(add({6}), 0);
  EXPECT_EQ(dictionary_->inStoreCount(), 6);
}

TEST_F(Eviction, ADuplicateIsRefusedInSilenceAndStillCountedAndQueued) {
  make(4, 5, false);
  add({1});
  increment({1});
  EXPECT_EQ(add({1}), 0);
  EXPECT_EQ(dictionary_->inStoreCount(), 3);
  EXPECT_EQ(dictionary_->getCount(1), 2);
  EXPECT_THAT(queue(), ElementsAre(Items{1}, Items{1}));
  EXPECT_EQ(add({2}), 0);
  EXPECT_EQ(add({3}), 0);  // the first {1} goes, with the set itself
  EXPECT_FALSE(contains({1}));
  EXPECT_EQ(add({4}), 0);  // its refused copy, which stands for nothing any more
  EXPECT_THAT(memory(), UnorderedElementsAre(Pair(Items{2}, 1), Pair(Items{3}, 1), Pair(Items{4}, 1)));
}

TEST_F(Eviction, ADuplicateInTheQueueOfASpillingDictionaryStandsForNothing) {
  make(4, 5, true);
  add({1});
  add({1});
  dictionary_->removeSmallSets(2.0);  // {1} is gone, its refused copy still queued
  EXPECT_THAT(queue(), ElementsAre(Items{1}));
  dictionary_->setMaxInStoreSets(2);
  EXPECT_EQ(add({2}), 0);
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{2}, 1)));
  EXPECT_FALSE(contains({1}));
}

TEST_F(Eviction, ASetWithoutDescriptorCountsAsNotFound) {
  make(4, 5, true);
  const int item = 1;
  EXPECT_EQ(dictionary_->addSet(&item, 1, nullptr), 0);
  EXPECT_EQ(increment({1}), 0);
  dictionary_->setMaxInStoreSets(1);
  EXPECT_EQ(add({2}), 0);  // {1} has no count to write: {2} goes to the disk itself
  EXPECT_THAT(disk(), UnorderedElementsAre(Pair(Items{2}, 1)));
  EXPECT_TRUE(contains({1}));
}

}  // namespace
